#include "shell/errors.h"

#include <utility>

#include "shell/frontend.h"

namespace lv {

namespace {

// Indexed by code. The spare codes have no text.
const char* const kErrorTexts[kErrorTableSize] = {
    "OK",
    "Out of memory",
    "Unexpected end of file",
    "Cannot create file",
    "Cannot open file",
    "Error reading file",
    "Error writing file (disk full?)",
    "Error getting file position",
    "Error setting file position",
    "Error closing file",
    "Error changing working directory",
    "Operation Aborted",
    "Error reading file header",
    "Too many images",
    "Illegal input image type",
    "Illegal color line file",
    "Illegal curve file",
    "Illegal monitor calibration file",
    "Warning - monitor calibration not loaded",
    "CD-ROM drive not found",
    "PhotoCD overview file not found",
    "Problem accessing Sequel System Calibrator",
    "Error reading JPEG file",
    "Error writing JPEG file (disk full?)",
    "Only grayscale or color images can be saved in JPEG format",
    "Error reading TARGA file",
    "Error writing TARGA file (disk full?)",
    "Only grayscale or color images can be saved in TARGA format",
    "Error reading BMP file",
    "Error writing BMP file (disk full?)",
    "Only binary, grayscale, or color images can be saved in BMP format",
    "Illegal color balance file",
    "Can't clone an image of this type",
    "Can't paint or draw on an image of this type",
    "Can't clone color over gray",
    "Can't retouch an image of this type",
    "Window in use - cannot close",
    "Can't create or delete file on read-only disk",
    "Error deleting file",
    "Photo CD drive not specified -- see File Preferences",
    "Cannot determine printer page size",
    "Error generating spline curve",
    "Illegal color curve file",
    "Illegal input gamma value",
    "Illegal output gamma value",
    "Problem reading FlashPix file",
    "",
    "Only binary, grayscale, or color images can be saved in PNG format",
    "Problem reading PNG file",
    "Problem writing PNG file",
    "Problem reading PCX file",
    "Problem writing PCX file",
    "Only binary, grayscale, or color images can be saved in PCX format",
    "Problem reading GIF file",
    "Problem writing GIF file",
    "Only binary or grayscale images can be saved in GIF format",
    "Problem reading TIFF file",
    "Problem writing TIFF file",
    "Only binary, grayscale, or color images can be saved in TIFF format",
    "Problem writing EPS file",
    "Only binary, grayscale, or color images can be saved in EPS format",
    "All alignment points must be distinct",
    "No halftone screen image specified",
    "",
    "Print area too small (check margins)",
    "Error checking directory",
    "No left image specified",
    "No right image specified",
    "",
    "Display adapter set to less than 256 colors",
    "Unsupported clipboard compression type",
    "Unknown file type",
    "This application requires Windows 3.1",
    "Internal Error 1",
    "Internal Error 2",
    "Internal Error 3",
    "Window in use - cannot save under a new name",
    "No image specified",
    "File of same name already open",
    "Error reading PhotoCD Image",
    "Cannot compute perspective transformation",
    "Image too small",
    "Tools/Probes don't work on preview windows",
    "Windows is not running in Enhanced Mode",
    "",
    "",
    "Display is set to 256 colors but palette is disabled",
    "Illegal color registration file",
    "Cannot find or create the temporary file directory",
    "Error scanning directory for matching files",
    "Error reading PhotoCD file",
    "Density value illegal or out of sequence",
    "Missing reference image file: refimg.jpg",
    "Illegal drive letter",
    "Printer not ready",
    "Illegal page layout file",
};

}  // namespace

const char* ErrorText(int32_t code)
{
    if (code < 0 || code >= kErrorTableSize) return "Unrecognized Error";
    return kErrorTexts[code];
}

namespace {
thread_local std::string tErrorDetail;
}  // namespace

void SetErrorDetail(std::string detail) { tErrorDetail = std::move(detail); }
const std::string& ErrorDetail() { return tErrorDetail; }
void ClearErrorDetail() { tErrorDetail.clear(); }

const char* ErrorCaption(int32_t code) { return code == kErrAborted ? "Attention" : "Error"; }

void ReportError(int32_t code)
{
    if (code == kOk) return;
    MessageBoxShow(ErrorCaption(code), kBoxOk, ErrorText(code));
}

}  // namespace lv
