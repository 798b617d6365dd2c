#include "files/formats.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "files/codec_io.h"
#include "files/jpeg.h"
#include "files/library.h"
#include "files/metadata.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "image/progress.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/safe_write.h"
#include "shell/text.h"

namespace lv {

namespace {

using codec::Refuse;
using codec::RowBytes;

const std::vector<FileTypeInfo> kFileTypes = {
    {kTypeAll, "All Files", "*.tif;*.tiff;*.jpg;*.jpeg;*.bmp;*.tga;*.pcx;*.gif;*.pcd;*.png;*.fpx",
     nullptr, 0},
    {kTypeTiff, "TIFF", "*.tif;*.tiff", "tif", 56},
    {kTypeJpeg, "JPEG", "*.jpg;*.jpeg", "jpg", 22},
    {kTypeBmp, "BMP", "*.bmp", "bmp", 28},
    {kTypeTarga, "Targa", "*.tga", "tga", 25},
    {kTypePcx, "PCX", "*.pcx", "pcx", 50},
    {kTypeGif, "GIF", "*.gif", "gif", 53},
    {kTypePhotoCd, "PhotoCD", "*.pcd", "pcd", 90},
    {kTypePng, "PNG", "*.png", "png", 48},
    {kTypeFlashPix, "FlashPix", "*.fpx", "fpx", 45},
};

const std::vector<SaveFilterInfo> kSaveFilters = {
    {kSaveTiff, "TIFF", "*.tif;*.tiff", "tif", "tiff", kTypeTiff, 1, 3, 58, 57, kFormatTiff,
     "TIFF files must have an extension of .tif or .tiff"},
    {kSaveJpeg, "JPEG", "*.jpg;*.jpeg", "jpg", "jpeg", kTypeJpeg, 2, 3, 24, 23, -1,
     "JPEG files must have an extension of .jpg or .jpeg"},
    {kSaveBmp, "BMP", "*.bmp", "bmp", nullptr, kTypeBmp, 1, 3, 30, 29, kFormatBmp,
     "BMP files must have an extension of .bmp"},
    {kSaveTarga, "Targa", "*.tga", "tga", nullptr, kTypeTarga, 1, 3, 27, 26, kFormatTarga,
     "Targa files must have an extension of .tga"},
    {kSavePcx, "PCX", "*.pcx", "pcx", nullptr, kTypePcx, 1, 3, 52, 51, kFormatPcx,
     "PCX files must have an extension of .pcx"},
    {kSaveGif, "GIF", "*.gif", "gif", nullptr, kTypeGif, 1, 2, 55, 54, kFormatGif,
     "GIF files must have an extension of .gif"},
    {kSaveEps, "EPS", "*.eps", "eps", nullptr, 0, 1, 3, 60, 59, kFormatEps,
     "EPS files must have an extension of .eps"},
    {kSavePng, "PNG", "*.png", "png", nullptr, kTypePng, 1, 3, 47, 49, kFormatPng,
     "PNG files must have an extension of .png"},
};

// The extension of the last path component, upper case; empty when none.
std::string ExtensionOf(const std::string& path)
{
    for (size_t i = path.size(); i > 0; --i) {
        const char c = path[i - 1];
        if (c == '/' || c == '\\' || c == ':') return std::string();
        if (c == '.') {
            std::string ext = path.substr(i);
            for (char& e : ext)
                if (e >= 'a' && e <= 'z') e = static_cast<char>(e - 'a' + 'A');
            return ext;
        }
    }
    return std::string();
}

// ---- Reading through the library ------------------------------------------------

struct ReadContext {
    Image* image;
    bool palette = false;  // rows are indices into `table`
    int32_t depth = 0;
    uint8_t table[256][3] = {};  // blue, green, red
    int32_t rowCount = 0;
    bool showBox = false;
    bool boxOpen = false;
    int32_t format = 0;
    bool outOfMemory = false;     // the picture could not be made: code 1
    PictureInfo* info = nullptr;  // set: only the header is read, into it
};

// Formats whose header gives pixels per inch; the others give pixels per
// metre.
bool ResolutionInInches(int32_t format)
{
    switch (format) {
    case 0:
    case 7:
    case 8:
    case 9:
    case 10:
    case 16:
    case 17: return true;
    default: return false;
    }
}

// Whether rows of that kind and width fit in a block of the image record.
bool RowsFit(int32_t kind, int32_t width)
{
    const int32_t bits = kind == kImageBinary ? 1 : (kind == kImageGray ? 8 : 24);
    return ImageRowBytes64(RowBytes(width, bits)) <= kBlockBytes;
}

int32_t ReadHeader(const LibraryHeader& header, void* context)
{
    auto& c = *static_cast<ReadContext*>(context);
    if (header.width <= 0 || header.height <= 0)
        return Refuse(FormatText("header claims %d x %d pixels", header.width, header.height));
    c.depth = header.bitsPerPixel;
    int32_t kind = 0;
    if (c.depth == 1) {
        kind = kImageBinary;
    } else if (c.depth == 24) {
        kind = kImageColor;
    } else if (c.depth == 4 || c.depth == 8) {
        // A table whose entries are all gray gives a gray picture.
        int32_t entries = header.colorsUsed > 0 ? header.colorsUsed : (c.depth == 4 ? 16 : 256);
        entries = std::min(entries, 256);
        bool gray = true;
        for (int32_t i = 0; i < entries; ++i) {
            const uint8_t* e = header.palette[i];
            gray = gray && e[0] == e[1] && e[1] == e[2];
            c.table[i][0] = e[0];
            c.table[i][1] = e[1];
            c.table[i][2] = e[2];
        }
        c.palette = true;
        kind = gray ? kImageGray : kImageColor;
    } else {
        return Refuse(FormatText("unsupported depth of %d bits", c.depth));
    }
    double resolution = header.xResolution;
    if (!ResolutionInInches(c.format)) resolution *= kMetresPerInch;
    if (resolution <= 0.0) resolution = CurrentPreferences().defaultResolution;
    if (c.info) {
        *c.info = {kind, header.width, header.height, resolution};
        return kLibraryAbort;  // all that was wanted
    }
    if (!RowsFit(kind, header.width))
        return Refuse(FormatText("rows of %d pixels are too wide", header.width));
    // The record refuses a picture larger than the memory before taking any.
    if (ImageAlloc(*c.image, kind, header.width, header.height, resolution) || !c.image->rows) {
        c.outOfMemory = true;
        return Refuse(FormatText("a picture of %d x %d pixels does not fit in memory", header.width,
                                 header.height));
    }
    c.rowCount = 0;
    if (c.showBox) {
        ProgressOpen(0, header.height - 1, "File Open", true);
        c.boxOpen = true;
    }
    return 0;
}

int32_t ReadRow(const uint8_t* data, void* context, int32_t row, int32_t rowBytes)
{
    auto& c = *static_cast<ReadContext*>(context);
    Image& image = *c.image;
    if (!image.rows || row < 0 || row >= image.height)
        return Refuse(FormatText("row %d outside the picture", row));
    uint8_t* out = image.rows[image.height - 1 - row];
    const int32_t w = image.width;
    const int64_t need = RowBytes(w, c.depth);
    if (rowBytes < need) return Refuse(FormatText("row %d too short", row));
    if (!c.palette) {
        CopyBytes(data, out, static_cast<size_t>(need));
    } else {
        for (int32_t x = 0; x < w; ++x) {
            const uint8_t index = c.depth == 4 ? ((data[x / 2] >> (x % 2 ? 0 : 4)) & 15) : data[x];
            const uint8_t* e = c.table[index];
            if (image.kind == kImageGray) {
                out[x] = e[0];
            } else {
                out[x * 3] = e[0];
                out[x * 3 + 1] = e[1];
                out[x * 3 + 2] = e[2];
            }
        }
    }
    ++c.rowCount;
    if (c.boxOpen && ProgressStep(c.rowCount - 1)) return kLibraryAbort;
    return 0;
}

// ---- Writing through the library ------------------------------------------------

struct WriteContext {
    const Image* image;
    int32_t rowCount = 0;
};

int32_t WriteRow(void* context, uint8_t* buffer, int32_t row)
{
    auto& c = *static_cast<WriteContext*>(context);
    const Image& image = *c.image;
    if (row < 0 || row >= image.height)
        return Refuse(FormatText("row %d outside the picture", row));
    const int32_t bits = image.kind == kImageBinary ? 1 : (image.kind == kImageGray ? 8 : 24);
    CopyBytes(image.rows[image.height - 1 - row], buffer,
              static_cast<size_t>(RowBytes(image.width, bits)));
    ++c.rowCount;
    return ProgressStep(c.rowCount - 1) ? kLibraryAbort : 0;
}

// Writes the picture to `path` in a library format, in place of any old file
// only once complete (shell/safe_write.h): 0, 11, or 6 with the reason, for a
// file that could not be created or replaced as well as for a failed write.
int32_t WriteWithLibrary(const std::string& path, const Image& image, int32_t format,
                         const SaveOptions& options)
{
    const PictureMetadata* metadata = options.metadata;
    LibraryHeader header;
    for (int32_t i = 0; i < 256; ++i)
        header.palette[i][0] = header.palette[i][1] = header.palette[i][2] =
            static_cast<uint8_t>(i);
    switch (image.kind) {
    case kImageBinary:
        // Black and white, so that other programs show it as it looks here.
        header.bitsPerPixel = 1;
        header.colorsUsed = header.colorsImportant = 2;
        std::memset(header.palette[1], 255, 3);
        break;
    case kImageGray:
        header.bitsPerPixel = 8;
        header.colorsUsed = header.colorsImportant = 256;
        break;
    case kImageColor: header.bitsPerPixel = 24; break;
    default: SetErrorDetail("cannot write this kind of picture"); return kErrWriting;
    }
    header.width = image.width;
    header.height = image.height;
    const double resolution =
        ResolutionInInches(format) ? image.resolution : image.resolution / kMetresPerInch;
    header.xResolution = header.yResolution = RoundToInt(resolution);

    SafeWrite write;
    if (SafeWriteOpen(write, path) != kOk) return kErrWriting;
    // A TIFF takes its metadata as fields of its own; a PNG has it put in
    // once written.
    header.tiffCompression = options.tiffCompression;
    TiffMetadataTags tiffTags;
    if (format == kFormatTiff && metadata && MetadataTiffTags(*metadata, tiffTags))
        header.tiffTags = &tiffTags;
    const MetadataWrite withMetadata{format == kFormatPng ? metadata : nullptr, image.width,
                                     image.height};
    MetadataWriteInto(write, withMetadata);
    ProgressOpen(0, image.height - 1, "File Save", true);
    WriteContext context{&image};
    const int32_t result = LibraryWrite(write.file, header, format, WriteRow, &context);
    ProgressClose();
    if (result == kLibraryAbort) return kErrAborted;
    if (result != 0) return kErrWriting;
    // Buffered bytes that do not fit on the disk fail here.
    return SafeWriteCommit(write) == kOk ? kOk : kErrWriting;
}

// The library path of reading. `typeName` names the format the file is
// taken to hold ("PNG"), for the reason when no codec knows its contents.
// 0, 11, or 5 with the reason, for a file that could not be opened as well
// as for one the library could not read.
int32_t ReadLibraryFile(const std::string& path, Image& image, bool showBox, const char* typeName,
                        PictureInfo* info = nullptr)
{
    File file;
    if (FileOpenRead(path, file) != kOk) return kErrReading;
    const int32_t format = LibraryDetectFormat(path);
    if (format < 0) {
        SetErrorDetail(typeName ? FormatText("not a %s file", typeName)
                                : std::string("not a picture file of a known format"));
        return kErrReading;
    }
    ReadContext context;
    context.image = &image;
    context.showBox = showBox;
    context.format = format;
    context.info = info;
    const int32_t result = LibraryRead(file, format, ReadRow, &context, ReadHeader);
    FileClose(file);
    if (context.boxOpen) ProgressClose();
    if (info && info->kind != 0) return kOk;
    if (result == kLibraryAbort) return kErrAborted;
    if (result != 0 && context.outOfMemory) return kErrOutOfMemory;
    return result == 0 ? kOk : kErrReading;
}

}  // namespace

const std::vector<FileTypeInfo>& FileTypes() { return kFileTypes; }

const FileTypeInfo* FindFileType(int32_t type)
{
    for (const FileTypeInfo& t : kFileTypes)
        if (t.type == type) return &t;
    return nullptr;
}

const std::vector<SaveFilterInfo>& SaveFilters() { return kSaveFilters; }

const SaveFilterInfo* FindSaveFilter(int32_t filter)
{
    for (const SaveFilterInfo& f : kSaveFilters)
        if (f.filter == filter) return &f;
    return nullptr;
}

int32_t FileTypeFromName(const std::string& path)
{
    const std::string ext = ExtensionOf(path);
    if (ext == "TIF" || ext == "TIFF") return kTypeTiff;
    if (ext == "JPG" || ext == "JPEG") return kTypeJpeg;
    if (ext == "BMP") return kTypeBmp;
    if (ext == "TGA") return kTypeTarga;
    if (ext == "PCX") return kTypePcx;
    if (ext == "GIF") return kTypeGif;
    if (ext == "PCD") return kTypePhotoCd;
    if (ext == "PNG") return kTypePng;
    if (ext == "FPX") return kTypeFlashPix;
    return -1;
}

int32_t SaveFilterOfType(int32_t fileType)
{
    switch (fileType) {
    case kTypeTiff: return kSaveTiff;
    case kTypeJpeg: return kSaveJpeg;
    case kTypeBmp: return kSaveBmp;
    case kTypeTarga: return kSaveTarga;
    case kTypePcx: return kSavePcx;
    case kTypeGif: return kSaveGif;
    case kTypePng: return kSavePng;
    default: return 0;
    }
}

int32_t SaveFilterFromName(const std::string& path)
{
    for (const SaveFilterInfo& f : kSaveFilters)
        if (ExtensionFitsFilter(path, f.filter)) return f.filter;
    return 0;
}

bool HasExtension(const std::string& path) { return !ExtensionOf(path).empty(); }

std::string WithExtension(const std::string& path, const char* extension)
{
    if (!extension) return path;
    // A name that ends in "." gets only the extension after it.
    if (!path.empty() && path.back() == '.') return path + extension;
    return path + "." + extension;
}

bool ExtensionFitsFilter(const std::string& path, int32_t filter)
{
    const SaveFilterInfo* f = FindSaveFilter(filter);
    if (!f) return false;
    return !ExtensionDiffers(path, f->extension) ||
           (f->otherExtension && !ExtensionDiffers(path, f->otherExtension));
}

int32_t ReadWithLibrary(const std::string& path, Image& image, bool showBox)
{
    return ReadLibraryFile(path, image, showBox, nullptr);
}

namespace {

// Reads a picture, or with `info` only what its header says of it.
int32_t ReadFile(const std::string& path, int32_t fileType, Image& image, bool showBox,
                 PictureInfo* info)
{
    const FileTypeInfo* type = FindFileType(fileType);
    if (!type || fileType == kTypeAll) return kErrUnknownFileType;
    // Only regular files: a pipe or a device could hold the program forever.
    if (int32_t code = FileCheckRegular(path)) return code;
    // Contents first: slide files are JPEGs under other names. A file that
    // cannot be opened goes on to the reader of its type, which reports it.
    bool jpeg = fileType == kTypeJpeg;
    {
        File probe;
        if (FileOpenRead(path, probe) == kOk) {
            uint8_t bytes[4] = {};
            int64_t count = sizeof bytes;
            FileRead(probe, count, bytes);
            jpeg = jpeg || LooksLikeJpeg(bytes, static_cast<size_t>(count));
        }
    }
    if (jpeg) return info ? JPEGReadHeader(path, *info) : JPEGRead(path, image, showBox);
    if (fileType == kTypePhotoCd || fileType == kTypeFlashPix) {
        // No reader in this build.
        File file;
        if (FileOpenRead(path, file) == kOk)
            SetErrorDetail(FormatText("no reader for %s files", type->filterName));
        return type->readError;
    }
    const int32_t result = ReadLibraryFile(path, image, showBox, type->filterName, info);
    if (result == kOk || result == kErrAborted || result == kErrOutOfMemory) return result;
    return type->readError;
}

}  // namespace

int32_t ReadImageFile(const std::string& path, int32_t fileType, Image& image, bool showBox)
{
    return ReadFile(path, fileType, image, showBox, nullptr);
}

int32_t ReadImageInfo(const std::string& path, int32_t fileType, PictureInfo& info)
{
    info = PictureInfo();
    Image unused;
    return ReadFile(path, fileType, unused, false, &info);
}

int32_t CheckSaveKind(int32_t filter, const Image& image)
{
    const SaveFilterInfo* f = FindSaveFilter(filter);
    if (!f) return kErrUnknownFileType;
    if (image.kind < f->lowestKind || image.kind > f->highestKind) return f->badTypeError;
    return kOk;
}

int32_t WriteImageFile(const std::string& path, int32_t filter, const Image& image,
                       const SaveOptions& options)
{
    const SaveFilterInfo* f = FindSaveFilter(filter);
    if (!f) return kErrUnknownFileType;
    if (int32_t code = CheckSaveKind(filter, image)) return code;
    // Every writer puts its file in the target's place only when it is
    // complete (shell/safe_write.h); any failure is the format's write error,
    // with the reason left where it happened.
    int32_t result = filter == kSaveJpeg
                         ? JPEGWrite(path, image, options.jpegQuality, options.jpegSampling,
                                     options.jpegPalette, options.metadata)
                         : WriteWithLibrary(path, image, f->format, options);
    if (result != kOk && result != kErrAborted && result != kErrOutOfMemory) result = f->writeError;
    return result;
}

void RecentAdd(SessionState& state, int32_t count, const std::string& path)
{
    count = std::clamp(count, 0, kRecentFileSlots);
    if (count == 0) return;
    auto& names = state.recentFiles;
    int32_t found = -1;
    for (int32_t i = 0; i < count && !names[i].empty(); ++i)
        if (StringEqualNoCase(names[i], path)) {
            found = i;
            break;
        }
    if (found == 0) return;
    // A name found further on moves to the front as it is; a new one goes
    // in front and the last falls off.
    const std::string first = found > 0 ? names[found] : path;
    const int32_t from = found > 0 ? found : count - 1;
    for (int32_t i = from; i > 0; --i) names[i] = names[i - 1];
    names[0] = first;
}

void RecentRemove(SessionState& state, const std::string& path)
{
    auto& names = state.recentFiles;
    for (int32_t i = 0; i < kRecentFileSlots; ++i) {
        if (names[i].empty() || !StringEqualNoCase(names[i], path)) continue;
        for (int32_t j = i; j + 1 < kRecentFileSlots; ++j) names[j] = names[j + 1];
        names[kRecentFileSlots - 1].clear();
        return;
    }
}

}  // namespace lv
