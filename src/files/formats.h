// File types and save filters, their extension rules, and reading and
// writing whole pictures: the engine half of Open and Save, shared by the
// editor and lumivue-cli.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/image.h"
#include "shell/preferences.h"

namespace lv {

// The type of a window's file, and the position of a filter in the Open
// dialog.
enum FileType : int32_t {
    kTypeAll = 1,
    kTypeTiff = 2,
    kTypeJpeg = 3,
    kTypeBmp = 4,
    kTypeTarga = 5,
    kTypePcx = 6,
    kTypeGif = 7,
    kTypePhotoCd = 8,
    kTypePng = 9,
    kTypeFlashPix = 10,
};

struct FileTypeInfo {
    int32_t type;
    const char* filterName;        // "TIFF"
    const char* patterns;          // "*.tif;*.tiff"
    const char* defaultExtension;  // "tif", or null for All Files
    int32_t readError;
};
// Types 1 to 10 in order.
const std::vector<FileTypeInfo>& FileTypes();
const FileTypeInfo* FindFileType(int32_t type);

// The Save dialog's filters.
enum SaveFilter : int32_t {
    kSaveTiff = 1,
    kSaveJpeg = 2,
    kSaveBmp = 3,
    kSaveTarga = 4,
    kSavePcx = 5,
    kSaveGif = 6,
    kSaveEps = 7,
    kSavePng = 8,
};

struct SaveFilterInfo {
    int32_t filter;
    const char* filterName;
    const char* patterns;
    const char* extension;       // added when the name has none: "tif"
    const char* otherExtension;  // also accepted: "tiff", or null
    int32_t typeAfterSaving;     // the window's FileType after a save
    int32_t lowestKind, highestKind;
    int32_t badTypeError;
    int32_t writeError;
    int32_t format;                // the library's format code; -1 for JPEG
    const char* extensionMessage;  // "TIFF files must have an extension of .tif or .tiff"
};
// Filters 1 to 8 in order.
const std::vector<SaveFilterInfo>& SaveFilters();
const SaveFilterInfo* FindSaveFilter(int32_t filter);

// The FileType of a name by its extension (the text after the last "." of
// the last component, any case), or -1. A "/", ":" or "\" met first means no
// extension.
int32_t FileTypeFromName(const std::string& path);
// The filter a window of that type saves with directly; 0 for none, so that
// Photo CD, FlashPix and EPS windows always go to Save As.
int32_t SaveFilterOfType(int32_t fileType);
// The save filter a name's extension asks for, or 0.
int32_t SaveFilterFromName(const std::string& path);
// Whether a name has an extension at all, and the name with one added.
bool HasExtension(const std::string& path);
std::string WithExtension(const std::string& path, const char* extension);
// Whether the name ends in one of the filter's extensions (any case).
bool ExtensionFitsFilter(const std::string& path, int32_t filter);

// Reading. Reads the file into `image` (row 0 the bottom of the picture) as
// its type says: 0; 1 when the picture does not fit in memory (refused
// before anything is allocated); 4 for a folder, pipe or device; 11
// (aborted); or the type's read error, also for a file that cannot be
// opened (a missing "x.tif" gives 56).
// JPEG contents are read as JPEG whatever the name. `showBox` shows the
// progress box "File Open". Every failure leaves its reason in ErrorDetail():
// the system's ("No such file or directory") or the codec's ("header claims
// 100000 x 100000 pixels").
int32_t ReadImageFile(const std::string& path, int32_t fileType, Image& image, bool showBox);
// What the file's header says of its picture (kind, size, resolution),
// without reading its pixels; the same results as ReadImageFile.
int32_t ReadImageInfo(const std::string& path, int32_t fileType, PictureInfo& info);
// The library path of that: 0, 11, or 5 for a file that could not be opened
// or that the library could not read, with the reason.
int32_t ReadWithLibrary(const std::string& path, Image& image, bool showBox);

// Writing.
// How a TIFF's strips are packed: not at all (the editor's way, and every
// reader's), or losslessly by LZW or Deflate with horizontal prediction.
enum TiffCompression : int32_t { kTiffNone = 0, kTiffLzw = 1, kTiffDeflate = 2 };

struct SaveOptions {
    int32_t jpegQuality = 97;
    int32_t jpegSampling = 0;        // 0 "4:4:4", 1 "4:2:2", 2 "4:1:1"
    uint8_t* jpegPalette = nullptr;  // 768 bytes the Slide Show keeps, or null
    int32_t tiffCompression = 0;     // kTiffNone, kTiffLzw or kTiffDeflate
    // The metadata of the file the picture came from, written again into a
    // JPEG, TIFF or PNG (files/metadata.h); null or empty for none.
    const struct PictureMetadata* metadata = nullptr;
};
// The filter's bad-type error when it cannot take the picture's kind, else 0.
int32_t CheckSaveKind(int32_t filter, const Image& image);
// Writes the picture with a filter. The file is written beside the target
// under a temporary name and put in its place only when complete, so an
// abort (11) or a failure leaves any old file of that name as it was. Results:
// 0; the filter's bad-type error, before the disk is touched; 11; 1 when
// memory for the JPEG palette summary is short; and the filter's write error
// for everything else, whether the temporary file could not be created,
// written or renamed, with the reason in ErrorDetail().
int32_t WriteImageFile(const std::string& path, int32_t filter, const Image& image,
                       const SaveOptions& options);

// The recent-file list of the session: most recent first, at most `count`.
void RecentAdd(SessionState& state, int32_t count, const std::string& path);
void RecentRemove(SessionState& state, const std::string& path);

// Inches in a metre's terms: one inch is 0.02540005 metres.
inline constexpr double kMetresPerInch = 0.02540005;

}  // namespace lv
