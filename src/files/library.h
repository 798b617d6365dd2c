// The image file library: the four operations through which every format but
// JPEG is read and written, over libtiff, libpng and giflib and over our own
// readers and writers of BMP, Targa, PCX and EPS.
//
// A reader hands the program a header that describes the picture, then its
// rows from the top down, in one of three forms: 1 bit a pixel (most
// significant bit leftmost, a set bit white), 4 or 8 bits a pixel as indices
// into the header's colour table, or 24 bits a pixel as blue, green, red.
// Whatever the file holds (16-bit channels, alpha, CMYK, run lengths,
// bottom-up storage) the codec turns into one of those. A writer asks for
// rows in the same forms. A callback's -999 stops the work at once and is
// returned: it is the abort path.
#pragma once

#include <cstdint>
#include <string>

#include "shell/text.h"

namespace lv {

// Format codes of the library.
enum LibraryFormat : int32_t {
    kFormatTiff = 0,
    kFormatBmp = 1,
    kFormatPcx = 2,
    kFormatTarga = 3,
    kFormatGif = 4,
    kFormatEps = 14,
    kFormatPng = 43,
    kFormatFlashPix = 44,
};

inline constexpr int32_t kLibraryAbort = -999;
// The generic failure of a codec: a file it cannot read or write.
inline constexpr int32_t kLibraryFailed = -1;

// A bitmap header followed by its colour table: entries are blue, green,
// red, spare.
struct LibraryHeader {
    int32_t size = 40;
    int32_t width = 0;
    int32_t height = 0;
    int32_t planes = 1;
    int32_t bitsPerPixel = 0;  // 1, 4, 8 or 24
    int32_t compression = 0;
    int32_t imageSize = 0;
    int32_t xResolution = 0;  // as the format stores it (see below)
    int32_t yResolution = 0;
    int32_t colorsUsed = 0;
    int32_t colorsImportant = 0;
    uint8_t palette[256][4] = {};
    int32_t tiffCompression = 0;  // TIFF: kTiffNone, kTiffLzw or kTiffDeflate (files/formats.h)
    // TIFF: the metadata fields to set among the writer's own, or null.
    const struct TiffMetadataTags* tiffTags = nullptr;
};

// Resolutions in the header: TIFF gives pixels per inch; the other formats
// pixels per metre (0 when the file has none).

// Called once with the header; 0 to go on, -999 or another negative value
// to stop.
using LibraryHeaderCallback = int32_t (*)(const LibraryHeader& header, void* context);
// Called for each row from the top; `row` is 0 for the top row.
using LibraryRowCallback = int32_t (*)(const uint8_t* rowData, void* context, int32_t row,
                                       int32_t rowBytes);
// Fills `buffer` with row `row` (0 for the top) of the picture to write.
using LibraryWriteCallback = int32_t (*)(void* context, uint8_t* buffer, int32_t row);

// The format of a file from its first bytes, or a negative value when no
// codec knows it.
int32_t LibraryDetectFormat(const std::string& path);

// Reads an open file. With `format` 0 the library finds the format out.
// Returns 0, -999 or another negative value.
int32_t LibraryRead(File& file, int32_t format, LibraryRowCallback rowCallback, void* context,
                    LibraryHeaderCallback headerCallback);

// Writes a picture described by `header` (1, 8 or 24 bits) into a created
// file in `format`. Returns 0, -999 or another value.
int32_t LibraryWrite(File& file, const LibraryHeader& header, int32_t format,
                     LibraryWriteCallback rowCallback, void* context);

// The libraries behind the formats, with their versions, for the About box:
// "libtiff 4.5.0, libpng 1.6.39, giflib 5.2.1".
std::string LibraryVersions();

// ---- What each codec provides ---------------------------------------------------
//
// A reader is handed the open file at its start and a header and row callback;
// a writer the created file, the header and the row source. All return 0,
// -999 (a callback stopped them) or -1. They check every field of a file
// against its size before trusting it, never allocate more than the file can
// fill (a header claiming 100000 by 100000 pixels over a few bytes is
// refused), and read nothing outside their buffers.

struct LibraryReader {
    LibraryHeaderCallback header;
    LibraryRowCallback row;
    void* context;
};
struct LibraryWriter {
    const LibraryHeader* header;
    LibraryWriteCallback row;
    void* context;
};

int32_t BmpRead(File& file, const LibraryReader& reader);
int32_t BmpWrite(File& file, const LibraryWriter& writer);
int32_t TargaRead(File& file, const LibraryReader& reader);
int32_t TargaWrite(File& file, const LibraryWriter& writer);
int32_t PcxRead(File& file, const LibraryReader& reader);
int32_t PcxWrite(File& file, const LibraryWriter& writer);
int32_t EpsWrite(File& file, const LibraryWriter& writer);
int32_t TiffRead(File& file, const LibraryReader& reader);
int32_t TiffWrite(File& file, const LibraryWriter& writer);
int32_t PngRead(File& file, const LibraryReader& reader);
int32_t PngWrite(File& file, const LibraryWriter& writer);
int32_t GifRead(File& file, const LibraryReader& reader);
int32_t GifWrite(File& file, const LibraryWriter& writer);

// The versions of the libraries behind TIFF, PNG and GIF: "libtiff 4.5.0".
std::string TiffVersion();
std::string PngVersion();
std::string GifVersion();

// Whether the first bytes of a file (at least 32 of them, or the whole file
// when shorter) look like each format.
bool LooksLikeBmp(const uint8_t* bytes, size_t count);
bool LooksLikePcx(const uint8_t* bytes, size_t count);
bool LooksLikeTarga(const uint8_t* bytes, size_t count);  // weak: Targa has no signature

}  // namespace lv
