// TIFF through libtiff.
//
// Reading: strips and tiles, any compression libtiff decodes. Bilevel gray
// comes out as 1-bit rows (MinIsWhite inverted), other gray as 8-bit indices
// into a gray ramp, palette files as 8-bit indices with their colour table,
// RGB and CMYK as 24-bit blue, green, red. 16-bit samples give their high
// byte; CMYK becomes RGB by (255 - C) * (255 - K) / 255; extra samples
// (alpha) are ignored. Whatever this decoder does not take itself (YCbCr,
// separate planes, old-style JPEG, CIE Lab and the like) goes through
// libtiff's RGBA reader and comes out as 24-bit. Rows are handed over in the
// order they are stored; the Orientation tag is not applied.
//
// Writing: LZW, with the horizontal predictor for gray and colour. 1-bit as
// MinIsBlack bilevel, 8-bit with a gray ramp as MinIsBlack gray, other 8-bit
// as a palette file, 24-bit as RGB. Resolution in pixels per inch.
//
// libtiff's messages are never printed: every file gets handlers of its own,
// which keep the first error as the reason for a refusal and swallow the
// rest, and the process-wide handlers are cleared once, for the few messages
// that do not go through a file's handlers.
#include <tiffio.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>

#include "files/codec_io.h"
#include "files/formats.h"
#include "files/library.h"
#include "files/metadata.h"
#include "image/image.h"
#include "image/pixel.h"
#include "image/row_ops.h"

namespace lv {

std::string TiffVersion();
namespace {

using namespace codec;

// The largest picture accepted, in bytes of output rows, and the largest
// single buffer libtiff may allocate for one file.
// The size aimed at for each strip written.
constexpr int64_t kStripBytes = int64_t{1} << 20;
// What one band of the RGBA path holds at most; wider bands are cut into
// fewer rows. Not a limit on pictures.
constexpr int64_t kBandBytes = int64_t{256} << 20;
constexpr double kCentimetresPerInch = 2.540005;

// ---------------------------------------------------------------------------
// I/O over the program's file handle. Offsets are counted from where the file
// stood when the codec was called.

struct TiffStream {
    File* file;
    int64_t base;
    int writeError;  // errno of the first write the file refused, else 0
};

tmsize_t TiffReadProc(thandle_t handle, void* buffer, tmsize_t size)
{
    auto* io = static_cast<TiffStream*>(handle);
    if (size <= 0) return 0;
    return static_cast<tmsize_t>(
        std::fread(buffer, 1, static_cast<size_t>(size), io->file->stream));
}

tmsize_t TiffWriteProc(thandle_t handle, void* buffer, tmsize_t size)
{
    auto* io = static_cast<TiffStream*>(handle);
    if (size <= 0) return 0;
    const size_t written = std::fwrite(buffer, 1, static_cast<size_t>(size), io->file->stream);
    if (written != static_cast<size_t>(size) && io->writeError == 0)
        io->writeError = errno != 0 ? errno : EIO;
    return static_cast<tmsize_t>(written);
}

toff_t TiffSeekProc(thandle_t handle, toff_t offset, int whence)
{
    auto* io = static_cast<TiffStream*>(handle);
    const toff_t failed = static_cast<toff_t>(-1);
    int64_t target = 0;
    const auto delta = static_cast<int64_t>(offset);
    if (whence == SEEK_SET) {
        if (offset > static_cast<toff_t>(INT64_MAX / 2)) return failed;
        target = io->base + delta;
    } else if (whence == SEEK_CUR) {
        int64_t position = 0;
        if (FileTell(*io->file, position) != 0) return failed;
        target = position + delta;
    } else if (whence == SEEK_END) {
        int64_t size = 0;
        if (FileSize(*io->file, size) != 0) return failed;
        target = size + delta;
    } else {
        return failed;
    }
    if (target < io->base || FileSeek(*io->file, target) != 0) return failed;
    return static_cast<toff_t>(target - io->base);
}

int TiffCloseProc(thandle_t) { return 0; }  // the caller owns the file

toff_t TiffSizeProc(thandle_t handle)
{
    auto* io = static_cast<TiffStream*>(handle);
    int64_t size = 0;
    if (FileSize(*io->file, size) != 0 || size < io->base) return 0;
    return static_cast<toff_t>(size - io->base);
}

int TiffMapProc(thandle_t, void**, toff_t*) { return 0; }  // no mapping: reads go through I/O
void TiffUnmapProc(thandle_t, void*, toff_t) {}

// What libtiff's messages told about a file. Returning 1 keeps them from the
// process-wide handlers.
struct TiffMessages {
    bool loop = false;  // a directory chain that points back into itself
    std::string error;  // the first error, the one that names the cause
};

// The name libtiff knows the file by, which starts many of its messages.
constexpr char kStreamName[] = "image";

int TiffErrorHandler(TIFF*, void* data, const char*, const char* format, va_list arguments)
{
    auto* messages = static_cast<TiffMessages*>(data);
    if (!messages || !messages->error.empty()) return 1;
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    const char* start = text;
    const size_t name = sizeof kStreamName - 1;
    if (std::strncmp(start, kStreamName, name) == 0 && start[name] == ':' && start[name + 1] == ' ')
        start += name + 2;
    messages->error = LibraryReason(start, "damaged TIFF file");
    return 1;
}

// Refuses with libtiff's first error, or `fallback` when it gave none.
int32_t RefuseWith(const TiffMessages& messages, const char* fallback)
{
    return Refuse(messages.error.empty() ? std::string(fallback) : messages.error);
}

int TiffWarningHandler(TIFF*, void* data, const char*, const char* format, va_list arguments)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    if (data && std::strstr(text, "IFD loop")) static_cast<TiffMessages*>(data)->loop = true;
    return 1;
}

struct TiffCloser {
    void operator()(TIFF* tif) const { TIFFClose(tif); }
};
using TiffHandle = std::unique_ptr<TIFF, TiffCloser>;

struct TiffOptionsFree {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

TiffHandle OpenTiff(TiffStream& io, const char* mode, TiffMessages* messages)
{
    static std::once_flag quiet;
    std::call_once(quiet, [] {
        TIFFSetErrorHandler(nullptr);
        TIFFSetWarningHandler(nullptr);
    });
    std::unique_ptr<TIFFOpenOptions, TiffOptionsFree> options(TIFFOpenOptionsAlloc());
    if (!options) return nullptr;
    // libtiff may take as much as one picture may (a whole strip at once).
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), static_cast<tmsize_t>(ImageMemoryLimit()));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), TiffErrorHandler, messages);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), TiffWarningHandler, messages);
    return TiffHandle(TIFFClientOpenExt(kStreamName, mode, &io, TiffReadProc, TiffWriteProc,
                                        TiffSeekProc, TiffCloseProc, TiffSizeProc, TiffMapProc,
                                        TiffUnmapProc, options.get()));
}

// ---------------------------------------------------------------------------
// Reading

// What the rows become.
enum class Form { Bits, Gray, Palette, Rgb, Cmyk, Rgba };

struct TiffFields {
    uint32_t width = 0;
    uint32_t height = 0;
    uint16_t bits = 1;
    uint16_t samples = 1;
    uint16_t photometric = PHOTOMETRIC_MINISBLACK;
    uint16_t planar = PLANARCONFIG_CONTIG;
    uint16_t compression = COMPRESSION_NONE;
    uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    uint16_t inkSet = INKSET_CMYK;
    bool tiled = false;
    uint32_t tileWidth = 0;
    uint32_t tileLength = 0;
    uint32_t rowsPerStrip = 0;
};

void ReadFields(TIFF* tif, TiffFields& f)
{
    TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &f.width);
    TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &f.height);
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &f.bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &f.samples);
    if (!TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &f.photometric))
        f.photometric = f.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &f.planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &f.compression);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &f.sampleFormat);
    TIFFGetFieldDefaulted(tif, TIFFTAG_INKSET, &f.inkSet);
    f.tiled = TIFFIsTiled(tif) != 0;
    if (f.tiled) {
        TIFFGetField(tif, TIFFTAG_TILEWIDTH, &f.tileWidth);
        TIFFGetField(tif, TIFFTAG_TILELENGTH, &f.tileLength);
    } else {
        TIFFGetFieldDefaulted(tif, TIFFTAG_ROWSPERSTRIP, &f.rowsPerStrip);
    }
}

// The form this decoder reads itself, or Rgba for libtiff's RGBA reader.
Form ChooseForm(const TiffFields& f)
{
    const bool unsignedSamples =
        f.sampleFormat == SAMPLEFORMAT_UINT || f.sampleFormat == SAMPLEFORMAT_VOID;
    const bool contig = f.samples == 1 || f.planar == PLANARCONFIG_CONTIG;
    const bool bytes = f.bits == 8 || f.bits == 16;
    if (!unsignedSamples || !contig || f.compression == COMPRESSION_OJPEG) return Form::Rgba;
    // Tiles are joined side by side into whole rows; that needs whole bytes.
    if (f.tiled && (static_cast<uint64_t>(f.tileWidth) * f.samples * f.bits) % 8 != 0)
        return Form::Rgba;
    switch (f.photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
        if (f.bits == 1 && f.samples == 1) return Form::Bits;
        if ((f.bits == 2 || f.bits == 4) && f.samples == 1) return Form::Gray;
        if (bytes) return Form::Gray;
        break;
    case PHOTOMETRIC_PALETTE:
        if (f.samples == 1 && (f.bits == 1 || f.bits == 2 || f.bits == 4 || f.bits == 8))
            return Form::Palette;
        break;
    case PHOTOMETRIC_RGB:
        if (bytes && f.samples >= 3) return Form::Rgb;
        break;
    case PHOTOMETRIC_SEPARATED:
        if (bytes && f.samples >= 4 && f.inkSet == INKSET_CMYK) return Form::Cmyk;
        break;
    default: break;
    }
    return Form::Rgba;
}

// Whether an uncompressed file holds the bytes its header claims. Compressed
// data can be any amount smaller than the picture (a flat page), so nothing
// is guessed for it: a damaged one fails where its data runs out.
bool SizeIsPlausible(TIFF* tif, const TiffFields& f, int64_t fileSize)
{
    uint64_t decoded = 0;
    if (f.tiled) {
        decoded = TIFFTileSize64(tif) * TIFFNumberOfTiles(tif);
    } else {
        decoded = TIFFVStripSize64(tif, f.height);
        if (f.planar == PLANARCONFIG_SEPARATE) decoded *= f.samples;
    }
    if (decoded == 0) return false;
    return f.compression != COMPRESSION_NONE || decoded <= static_cast<uint64_t>(fileSize);
}

// Some writers leave YCbCr weights that libtiff's converter refuses (all
// zero, for one); the standard weights take their place.
void RepairYCbCrWeights(TIFF* tif, const TiffFields& f)
{
    if (f.photometric != PHOTOMETRIC_YCBCR) return;
    float* weights = nullptr;
    if (!TIFFGetFieldDefaulted(tif, TIFFTAG_YCBCRCOEFFICIENTS, &weights) || !weights) return;
    if (std::isfinite(weights[0]) && std::isfinite(weights[2]) && weights[1] != 0.0f &&
        std::isfinite(weights[1]))
        return;
    static float standard[3] = {0.299f, 0.587f, 0.114f};
    TIFFSetField(tif, TIFFTAG_YCBCRCOEFFICIENTS, standard);
}

// Pixels per inch from the resolution tags; 0 when there are none or the
// unit is none.
int32_t ReadResolution(TIFF* tif, ttag_t tag)
{
    float value = 0.0f;
    if (!TIFFGetField(tif, tag, &value) || !(value > 0.0f)) return 0;
    uint16_t unit = RESUNIT_INCH;
    TIFFGetFieldDefaulted(tif, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit == RESUNIT_NONE) return 0;
    double inches = value;
    if (unit == RESUNIT_CENTIMETER) inches *= kCentimetresPerInch;
    return RoundToInt(inches);
}

// Sample `index` of a packed row, as stored (16-bit samples are in host order
// after libtiff's decoding).
uint32_t RawSample(const uint8_t* row, size_t index, int bits)
{
    if (bits == 8) return row[index];
    if (bits == 16) {
        uint16_t value = 0;
        std::memcpy(&value, row + index * 2, 2);
        return value;
    }
    const size_t bit = index * static_cast<size_t>(bits);
    const int shift = 8 - bits - static_cast<int>(bit & 7);
    return (row[bit >> 3] >> shift) & ((1u << bits) - 1);
}

// A sample scaled to 8 bits: the high byte of 16-bit samples, gray levels of
// 2 and 4 bits spread over 0..255.
uint8_t SampleByte(const uint8_t* row, size_t index, int bits)
{
    const uint32_t value = RawSample(row, index, bits);
    if (bits == 16) return static_cast<uint8_t>(value >> 8);
    if (bits == 8) return static_cast<uint8_t>(value);
    return static_cast<uint8_t>(value * 255 / ((1u << bits) - 1));
}

// Rows of a contiguous image, strips or tiles, in order from the top.
struct RowSource {
    TIFF* tif = nullptr;
    const TiffFields* fields = nullptr;
    ByteBuffer line;
    ByteBuffer tile;
    ByteBuffer band;  // one row of tiles joined side by side
    size_t tileRowBytes = 0;
    size_t bandRowBytes = 0;
    int64_t bandTop = -1;

    // False with the reason.
    bool Init(TIFF* handle, const TiffFields& f)
    {
        tif = handle;
        fields = &f;
        if (!f.tiled) {
            const uint64_t bytes = TIFFScanlineSize64(tif);
            if (bytes == 0 || bytes > static_cast<uint64_t>(ImageMemoryLimit()))
                return Reject(FormatText("unusable scanline of %d bytes", bytes));
            return Allocate(line, static_cast<int64_t>(bytes));
        }
        if (f.tileWidth == 0 || f.tileLength == 0) return Reject("tiles of no size");
        const uint64_t tileBytes = TIFFTileSize64(tif);
        tileRowBytes = TIFFTileRowSize64(tif);
        const uint64_t across = (static_cast<uint64_t>(f.width) + f.tileWidth - 1) / f.tileWidth;
        bandRowBytes = tileRowBytes * across;
        const uint64_t bandBytes = static_cast<uint64_t>(bandRowBytes) * f.tileLength;
        if (tileBytes == 0 || tileRowBytes == 0 ||
            tileBytes < static_cast<uint64_t>(tileRowBytes) * f.tileLength ||
            bandBytes > static_cast<uint64_t>(ImageMemoryLimit()))
            return Reject(
                FormatText("unusable tiles of %d x %d pixels", f.tileWidth, f.tileLength));
        return Allocate(tile, static_cast<int64_t>(tileBytes)) &&
               Allocate(band, static_cast<int64_t>(bandBytes));
    }

    // Row y, or null when it cannot be decoded.
    const uint8_t* Row(uint32_t y)
    {
        if (!fields->tiled) {
            return TIFFReadScanline(tif, line.get(), y, 0) < 0 ? nullptr : line.get();
        }
        const uint32_t length = fields->tileLength;
        const int64_t top = y - y % length;
        if (top != bandTop) {
            bandTop = -1;
            size_t column = 0;
            for (uint32_t x = 0; x < fields->width; x += fields->tileWidth, ++column) {
                if (TIFFReadTile(tif, tile.get(), x, static_cast<uint32_t>(top), 0, 0) < 0)
                    return nullptr;
                for (uint32_t r = 0; r < length; ++r) {
                    std::memcpy(band.get() + r * bandRowBytes + column * tileRowBytes,
                                tile.get() + r * tileRowBytes, tileRowBytes);
                }
            }
            bandTop = top;
        }
        return band.get() + static_cast<size_t>(y - bandTop) * bandRowBytes;
    }
};

void FillGrayRamp(LibraryHeader& header)
{
    for (int i = 0; i < 256; ++i) {
        header.palette[i][0] = header.palette[i][1] = header.palette[i][2] =
            static_cast<uint8_t>(i);
        header.palette[i][3] = 0;
    }
}

// Reads the colour table of a palette file into the header. Old writers put
// 8-bit values in the 16-bit table; a table with no value above 255 is taken
// as such. Returns whether the table is black and white, in either order, and
// sets `whiteFirst` for the inverted order.
bool ReadColorMap(TIFF* tif, int bits, LibraryHeader& header, bool& blackWhite, bool& whiteFirst)
{
    uint16_t* red = nullptr;
    uint16_t* green = nullptr;
    uint16_t* blue = nullptr;
    if (!TIFFGetField(tif, TIFFTAG_COLORMAP, &red, &green, &blue) || !red || !green || !blue)
        return false;
    const int count = 1 << bits;
    bool eightBit = true;
    for (int i = 0; i < count; ++i) {
        if (red[i] > 255 || green[i] > 255 || blue[i] > 255) eightBit = false;
    }
    const int shift = eightBit ? 0 : 8;
    for (int i = 0; i < count; ++i) {
        header.palette[i][0] = static_cast<uint8_t>(blue[i] >> shift);
        header.palette[i][1] = static_cast<uint8_t>(green[i] >> shift);
        header.palette[i][2] = static_cast<uint8_t>(red[i] >> shift);
        header.palette[i][3] = 0;
    }
    header.colorsUsed = header.colorsImportant = count;
    auto isLevel = [&](int i, uint8_t level) {
        return header.palette[i][0] == level && header.palette[i][1] == level &&
               header.palette[i][2] == level;
    };
    blackWhite = false;
    whiteFirst = false;
    if (bits == 1) {
        if (isLevel(0, 0) && isLevel(1, 255)) blackWhite = true;
        if (isLevel(0, 255) && isLevel(1, 0)) blackWhite = whiteFirst = true;
    }
    return true;
}

// Decodes the rows of the forms read here into output rows.
int32_t ReadOwnRows(TIFF* tif, const TiffFields& f, Form form, bool invert,
                    const LibraryReader& reader, int32_t outBytes, const TiffMessages& messages)
{
    RowSource source;
    ByteBuffer out;
    if (!source.Init(tif, f) || !Allocate(out, outBytes)) return kLibraryFailed;
    const int bits = f.bits;
    const size_t step = f.samples;
    const uint32_t width = f.width;
    for (uint32_t y = 0; y < f.height; ++y) {
        const uint8_t* row = source.Row(y);
        if (!row) return RefuseWith(messages, f.tiled ? "damaged tile" : "damaged strip");
        uint8_t* o = out.get();
        switch (form) {
        case Form::Bits: {
            const size_t bytes = (width + 7) / 8;
            for (size_t i = 0; i < bytes; ++i) o[i] = invert ? ~row[i] : row[i];
            if (width % 8) o[bytes - 1] &= static_cast<uint8_t>(0xFF00 >> (width % 8));
            break;
        }
        case Form::Gray:
            if (bits == 8 && step == 1 && !invert) {
                std::memcpy(o, row, width);
            } else if (bits == 8) {
                const uint8_t flip = invert ? 0xFF : 0x00;
                for (uint32_t x = 0; x < width; ++x) o[x] = row[x * step] ^ flip;
            } else {
                for (uint32_t x = 0; x < width; ++x) {
                    const uint8_t v = SampleByte(row, x * step, bits);
                    o[x] = invert ? static_cast<uint8_t>(255 - v) : v;
                }
            }
            break;
        case Form::Palette:
            for (uint32_t x = 0; x < width; ++x)
                o[x] = static_cast<uint8_t>(RawSample(row, x, bits));
            break;
        case Form::Rgb:
            if (bits == 8 && step == 3)
                SwapRedBlue(row, o, width);
            else if (bits == 8)
                for (uint32_t x = 0; x < width; ++x, o += 3) {
                    const uint8_t* p = row + x * step;
                    o[0] = p[2];
                    o[1] = p[1];
                    o[2] = p[0];
                }
            else
                for (uint32_t x = 0; x < width; ++x, o += 3) {
                    o[0] = SampleByte(row, x * step + 2, bits);
                    o[1] = SampleByte(row, x * step + 1, bits);
                    o[2] = SampleByte(row, x * step, bits);
                }
            break;
        case Form::Cmyk:
            for (uint32_t x = 0; x < width; ++x, o += 3) {
                const uint32_t k = 255u - SampleByte(row, x * step + 3, bits);
                o[0] = static_cast<uint8_t>(k * (255u - SampleByte(row, x * step + 2, bits)) / 255);
                o[1] = static_cast<uint8_t>(k * (255u - SampleByte(row, x * step + 1, bits)) / 255);
                o[2] = static_cast<uint8_t>(k * (255u - SampleByte(row, x * step, bits)) / 255);
            }
            break;
        case Form::Rgba: return Refuse("no decoder for this layout");
        }
        const int32_t result =
            reader.row(out.get(), reader.context, static_cast<int32_t>(y), outBytes);
        if (result != 0) return Stopped(result);
    }
    return 0;
}

struct RgbaImageEnd {
    void operator()(TIFFRGBAImage* image) const { TIFFRGBAImageEnd(image); }
};

// Everything else, through libtiff's RGBA reader, a band of rows at a time.
int32_t ReadRgbaRows(TIFF* tif, const TiffFields& f, const LibraryReader& reader, int32_t outBytes,
                     const TiffMessages& messages)
{
    TIFFRGBAImage image{};
    char message[1024] = {};
    if (!TIFFRGBAImageBegin(&image, tif, 1, message))
        return Refuse(LibraryReason(message, "unsupported layout"));
    std::unique_ptr<TIFFRGBAImage, RgbaImageEnd> end(&image);
    image.req_orientation = image.orientation;  // rows as stored, no flipping

    // A band is one strip or one row of tiles, so each is decoded once,
    // unless that is too large to hold.
    uint32_t bandRows = f.tiled ? f.tileLength : f.rowsPerStrip;
    bandRows = std::clamp<uint32_t>(bandRows, 1, f.height);
    const uint64_t rowPixels = f.width;
    const uint64_t limit = static_cast<uint64_t>(kBandBytes) / 4 / rowPixels;
    if (limit == 0) return Refuse(FormatText("rows of %d pixels are too wide", f.width));
    bandRows = static_cast<uint32_t>(std::min<uint64_t>(bandRows, limit));
    // libtiff fills whole 32-bit pixels, so this one buffer is of those.
    std::unique_ptr<uint32_t[]> raster(new (std::nothrow) uint32_t[rowPixels * bandRows]);
    ByteBuffer out;
    if (!raster) return Refuse("out of memory");
    if (!Allocate(out, outBytes)) return kLibraryFailed;

    for (uint32_t top = 0; top < f.height; top += bandRows) {
        const uint32_t rows = std::min(bandRows, f.height - top);
        image.row_offset = static_cast<int>(top);
        image.col_offset = 0;
        if (!TIFFRGBAImageGet(&image, raster.get(), f.width, rows))
            return RefuseWith(messages, f.tiled ? "damaged tile" : "damaged strip");
        for (uint32_t r = 0; r < rows; ++r) {
            const uint32_t* pixel = raster.get() + r * rowPixels;
            uint8_t* o = out.get();
            for (uint32_t x = 0; x < f.width; ++x, o += 3) {
                o[0] = static_cast<uint8_t>(TIFFGetB(pixel[x]));
                o[1] = static_cast<uint8_t>(TIFFGetG(pixel[x]));
                o[2] = static_cast<uint8_t>(TIFFGetR(pixel[x]));
            }
            const int32_t result =
                reader.row(out.get(), reader.context, static_cast<int32_t>(top + r), outBytes);
            if (result != 0) return Stopped(result);
        }
    }
    return 0;
}

// ---------------------------------------------------------------------------
// Writing

bool SetWriteFields(TIFF* tif, const LibraryHeader& header)
{
    const int bits = header.bitsPerPixel;
    const bool palette = bits == 8 && !IsGrayRamp(header);
    const uint16_t photometric = bits == 24 ? PHOTOMETRIC_RGB
                                 : palette  ? PHOTOMETRIC_PALETTE
                                            : PHOTOMETRIC_MINISBLACK;
    bool ok = TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(header.width)) &&
              TIFFSetField(tif, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(header.height)) &&
              TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, bits == 1 ? 1 : 8) &&
              TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, bits == 24 ? 3 : 1) &&
              TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, photometric) &&
              TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
              TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT) &&
              // No compression unless asked: every reader takes it, and it is
              // the fastest. LZW and Deflate predict each sample from the
              // one to its left, which packs photographs far better.
              TIFFSetField(tif, TIFFTAG_COMPRESSION,
                           header.tiffCompression == kTiffLzw       ? COMPRESSION_LZW
                           : header.tiffCompression == kTiffDeflate ? COMPRESSION_ADOBE_DEFLATE
                                                                    : COMPRESSION_NONE);
    if (ok && header.tiffCompression != kTiffNone && bits != 1)
        ok = TIFFSetField(tif, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    // Strips of about a megabyte: a handful of large writes, where rows of
    // their own would cost a seek and a write each.
    const int64_t rowBytes = RowBytes(header.width, bits);
    const auto rowsPerStrip =
        static_cast<uint32_t>(std::clamp<int64_t>(kStripBytes / rowBytes, 1, header.height));
    if (ok) ok = TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    if (ok && header.xResolution > 0) {
        const int32_t y = header.yResolution > 0 ? header.yResolution : header.xResolution;
        ok = TIFFSetField(tif, TIFFTAG_XRESOLUTION, static_cast<double>(header.xResolution)) &&
             TIFFSetField(tif, TIFFTAG_YRESOLUTION, static_cast<double>(y)) &&
             TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    }
    if (ok && header.tiffTags) {
        // The picture's metadata: texts, the XMP packet, the profile, IPTC.
        const TiffMetadataTags& t = *header.tiffTags;
        const std::pair<uint32_t, const std::string*> texts[] = {
            {TIFFTAG_MAKE, &t.make},
            {TIFFTAG_MODEL, &t.model},
            {TIFFTAG_DATETIME, &t.dateTime},
            {TIFFTAG_ARTIST, &t.artist},
            {TIFFTAG_COPYRIGHT, &t.copyright},
            {TIFFTAG_SOFTWARE, &t.software},
            {TIFFTAG_IMAGEDESCRIPTION, &t.description}};
        for (const auto& [tag, text] : texts)
            if (ok && !text->empty()) ok = TIFFSetField(tif, tag, text->c_str());
        if (ok && !t.xmp.empty())
            ok = TIFFSetField(tif, TIFFTAG_XMLPACKET, static_cast<uint32_t>(t.xmp.size()),
                              t.xmp.data());
        if (ok && !t.icc.empty())
            ok = TIFFSetField(tif, TIFFTAG_ICCPROFILE, static_cast<uint32_t>(t.icc.size()),
                              t.icc.data());
        if (ok && !t.iptc.empty())
            ok = TIFFSetField(tif, TIFFTAG_RICHTIFFIPTC, static_cast<uint32_t>(t.iptc.size() / 4),
                              t.iptc.data());
    }
    if (ok && palette) {
        uint16_t red[256], green[256], blue[256];
        for (int i = 0; i < 256; ++i) {
            blue[i] = static_cast<uint16_t>(header.palette[i][0] * 257);
            green[i] = static_cast<uint16_t>(header.palette[i][1] * 257);
            red[i] = static_cast<uint16_t>(header.palette[i][2] * 257);
        }
        ok = TIFFSetField(tif, TIFFTAG_COLORMAP, red, green, blue);
    }
    return ok;
}

}  // namespace

std::string TiffVersion()
{
    // "LIBTIFF, Version 4.5.0\nCopyright ..."
    const std::string text = TIFFGetVersion();
    const std::string key = "Version ";
    const size_t start = text.find(key);
    if (start == std::string::npos) return "libtiff";
    const size_t from = start + key.size();
    const size_t stop = text.find_first_of("\r\n", from);
    return "libtiff " + text.substr(from, stop == std::string::npos ? stop : stop - from);
}

int32_t TiffRead(File& file, const LibraryReader& reader)
{
    TiffStream io{&file, 0, 0};
    int64_t fileSize = 0;
    if (!file.stream) return Refuse("no open file");
    if (FileTell(file, io.base) != 0 || FileSize(file, fileSize) != 0)
        return Refuse(SystemReason("cannot size the file"));
    fileSize -= io.base;
    if (fileSize < 8) return Refuse("not a TIFF file");
    TiffMessages messages;
    TiffHandle tif = OpenTiff(io, "rm", &messages);
    if (!tif) return RefuseWith(messages, "not a TIFF file");
    // Only the first picture is read, but a chain of directories that loops
    // marks a damaged file. Counting them walks the chain without leaving
    // the first directory.
    TIFFNumberOfDirectories(tif.get());
    if (messages.loop) return Refuse("directory chain loops");

    TiffFields f;
    ReadFields(tif.get(), f);
    const std::string claimed = FormatText("header claims %d x %d pixels", f.width, f.height);
    if (f.width == 0 || f.height == 0 || f.width > INT32_MAX || f.height > INT32_MAX)
        return Refuse(claimed);
    if (f.samples == 0 || f.bits == 0)
        return Refuse(FormatText("unsupported %d samples of %d bits", f.samples, f.bits));
    if (!SizeIsPlausible(tif.get(), f, fileSize)) return Refuse(claimed);

    Form form = ChooseForm(f);
    if (form == Form::Rgba) {
        RepairYCbCrWeights(tif.get(), f);
        char message[1024] = {};
        if (!TIFFRGBAImageOK(tif.get(), message))
            return Refuse(LibraryReason(message, "unsupported layout"));
    }
    LibraryHeader header;
    bool invert = f.photometric == PHOTOMETRIC_MINISWHITE;
    if (form == Form::Palette) {
        bool blackWhite = false;
        bool whiteFirst = false;
        if (!ReadColorMap(tif.get(), f.bits, header, blackWhite, whiteFirst))
            return Refuse("palette file without a colour map");
        if (blackWhite) {
            form = Form::Bits;
            invert = whiteFirst;
        }
    }
    if (form == Form::Bits) {
        header = LibraryHeader{};
        header.bitsPerPixel = 1;
        header.palette[1][0] = header.palette[1][1] = header.palette[1][2] = 255;
        header.colorsUsed = header.colorsImportant = 2;
    } else if (form == Form::Gray) {
        header.bitsPerPixel = 8;
        FillGrayRamp(header);
        header.colorsUsed = header.colorsImportant = 256;
    } else if (form == Form::Palette) {
        header.bitsPerPixel = 8;
    } else {
        header.bitsPerPixel = 24;
    }

    const int64_t outBytes = RowBytes(f.width, header.bitsPerPixel);
    if (outBytes > kBlockBytes)
        return Refuse(FormatText("rows of %d pixels are too wide", f.width));

    header.width = static_cast<int32_t>(f.width);
    header.height = static_cast<int32_t>(f.height);
    header.xResolution = ReadResolution(tif.get(), TIFFTAG_XRESOLUTION);
    header.yResolution = ReadResolution(tif.get(), TIFFTAG_YRESOLUTION);
    if (header.yResolution == 0) header.yResolution = header.xResolution;

    const int32_t started = reader.header(header, reader.context);
    if (started != 0) return Stopped(started);
    if (form == Form::Rgba)
        return ReadRgbaRows(tif.get(), f, reader, static_cast<int32_t>(outBytes), messages);
    return ReadOwnRows(tif.get(), f, form, invert, reader, static_cast<int32_t>(outBytes),
                       messages);
}

int32_t TiffWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header)) return refused;
    if (!file.stream) return Refuse("no open file");
    const int32_t bits = header.bitsPerPixel;
    const int64_t rowBytes = RowBytes(header.width, bits);

    TiffStream io{&file, 0, 0};
    if (FileTell(file, io.base) != 0) return Refuse(SystemReason("cannot write the file"));
    TiffMessages messages;
    // A write the file refused is told by the system's reason, not libtiff's.
    auto failed = [&](const char* fallback) {
        return io.writeError != 0 ? Refuse(std::strerror(io.writeError))
                                  : RefuseWith(messages, fallback);
    };
    TiffHandle tif = OpenTiff(io, "w", &messages);
    if (!tif || !SetWriteFields(tif.get(), header))
        return RefuseWith(messages, "cannot start the TIFF file");
    if (TIFFScanlineSize64(tif.get()) != static_cast<uint64_t>(rowBytes))
        return Refuse(FormatText("unexpected scanline of %d bytes", TIFFScanlineSize64(tif.get())));

    uint32_t rowsPerStrip = 0;
    if (!TIFFGetField(tif.get(), TIFFTAG_ROWSPERSTRIP, &rowsPerStrip) || rowsPerStrip == 0)
        return RefuseWith(messages, "cannot start the TIFF file");
    ByteBuffer row, strip;
    if (!Allocate(row, rowBytes) || !Allocate(strip, rowBytes * rowsPerStrip))
        return kLibraryFailed;
    for (int32_t top = 0, index = 0; top < header.height; top += rowsPerStrip, ++index) {
        const int32_t rows = std::min<int32_t>(rowsPerStrip, header.height - top);
        for (int32_t r = 0; r < rows; ++r) {
            uint8_t* line = strip.get() + static_cast<size_t>(r) * rowBytes;
            // Colour rows come blue first and go red first; the strip is the
            // encoder's to change, so each row is copied into it.
            const int32_t result =
                writer.row(writer.context, bits == 24 ? row.get() : line, top + r);
            if (result != 0) return Stopped(result);
            if (bits == 24) SwapRedBlue(row.get(), line, static_cast<size_t>(header.width));
        }
        if (TIFFWriteEncodedStrip(tif.get(), static_cast<uint32_t>(index), strip.get(),
                                  static_cast<tmsize_t>(rowBytes * rows)) < 0)
            return failed("cannot write the file");
    }
    if (!TIFFFlush(tif.get())) return failed("cannot write the file");
    tif.reset();  // writes the directory
    if (io.writeError != 0 || std::ferror(file.stream)) return failed("cannot write the file");
    return 0;
}

}  // namespace lv
