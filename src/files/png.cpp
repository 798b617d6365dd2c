// PNG through libpng.
//
// Reading: every bit depth, colour type and interlacing. 1-bit gray, and a
// 1-bit palette of black and white, come out as 1-bit rows; other gray as
// 8-bit levels (2- and 4-bit gray spread over 0..255) with a gray ramp;
// palette images as 8-bit indices with their table; colour as 24-bit blue,
// green, red. 16-bit samples give their high byte. Alpha and tRNS
// transparency are dropped; gamma and colour chunks are not applied. The
// resolution is the pHYs value in pixels per metre, 0 without one.
//
// Writing: 1-bit as 1-bit gray, 8-bit with a gray ramp as 8-bit gray, other
// 8-bit as a 256-entry palette image, 24-bit as RGB; not interlaced; pHYs in
// pixels per metre when the header has a resolution.
//
// libpng reports errors by longjmp. Every libpng call that can fail runs in a
// small function below that holds the setjmp and owns no C++ object, so the
// jump never passes a destructor; the buffers and the libpng structures are
// owned by the callers of those functions. The error function leaves
// libpng's message as the reason before it jumps.
#include <png.h>
#include <zlib.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <string>

#include "files/codec_io.h"
#include "files/library.h"
#include "image/image.h"

namespace lv {

std::string PngVersion();
namespace {

using namespace codec;

// The largest side the format allows.
constexpr png_uint_32 kMaxSide = 0x7FFFFFFF;

// ---------------------------------------------------------------------------
// Callbacks handed to libpng. The error function records the message and
// jumps back to the setjmp of the call that failed, without printing;
// warnings are dropped.

// A failed read or write leaves its own reason and jumps as an error does.
void PngReadData(png_structp png, png_bytep data, size_t length)
{
    auto* stream = static_cast<std::FILE*>(png_get_io_ptr(png));
    if (std::fread(data, 1, length, stream) == length) return;
    SetErrorDetail(std::ferror(stream) ? SystemReason("cannot read the file") : "truncated file");
    png_longjmp(png, 1);
}

void PngWriteData(png_structp png, png_bytep data, size_t length)
{
    auto* stream = static_cast<std::FILE*>(png_get_io_ptr(png));
    if (std::fwrite(data, 1, length, stream) == length) return;
    SetErrorDetail(SystemReason("cannot write the file"));
    png_longjmp(png, 1);
}

void PngFlushData(png_structp) {}

[[noreturn]] void PngFail(png_structp png, png_const_charp message)
{
    SetErrorDetail(LibraryReason(message, "damaged PNG file"));
    png_longjmp(png, 1);
}
void PngWarn(png_structp, png_const_charp) {}

// ---------------------------------------------------------------------------
// Reading

// What the header tells, filled inside the setjmp region: plain data only.
struct PngLayout {
    png_uint_32 width;
    png_uint_32 height;
    int bitDepth;
    int colorType;
    int interlaced;
    size_t storedRowBytes;  // as in the file, before the transformations
    size_t rowBytes;        // as delivered
    int outBits;            // 1, 8 or 24
    int passes;             // 7 when interlaced, else 1
    int invert;             // 1-bit palette with white first
    int colors;
    png_color palette[256];
    png_uint_32 xPerMetre;
    png_uint_32 yPerMetre;
};

bool IsLevel(const png_color& c, int level)
{
    return c.red == level && c.green == level && c.blue == level;
}

// Reads the chunks up to the image data and sets the transformations.
int PngReadLayout(png_structp png, png_infop info, PngLayout* out)
{
    if (setjmp(png_jmpbuf(png))) return -1;
    png_set_user_limits(png, kMaxSide, kMaxSide);
    png_set_chunk_malloc_max(png, 8u << 20);
    // Chunks this reader has no use for are skipped unread, so that no
    // length a damaged file claims for them is ever allocated.
    static const png_byte kIgnored[] =
        "bKGD\0cHRM\0eXIf\0gAMA\0hIST\0iCCP\0iTXt\0oFFs\0pCAL\0sCAL\0sBIT\0sPLT\0sRGB\0tEXt\0"
        "tIME\0zTXt";
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, kIgnored,
                                static_cast<int>(sizeof kIgnored / 5));
    png_read_info(png, info);

    out->width = png_get_image_width(png, info);
    out->height = png_get_image_height(png, info);
    out->bitDepth = png_get_bit_depth(png, info);
    out->colorType = png_get_color_type(png, info);
    out->interlaced = png_get_interlace_type(png, info) != PNG_INTERLACE_NONE;
    out->storedRowBytes = png_get_rowbytes(png, info);
    out->colors = 0;
    out->invert = 0;
    png_colorp entries = nullptr;
    int count = 0;
    if (png_get_PLTE(png, info, &entries, &count) && entries) {
        out->colors = count < 0 ? 0 : (count > 256 ? 256 : count);
        std::memcpy(out->palette, entries, sizeof(png_color) * static_cast<size_t>(out->colors));
    }
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = 0;
    out->xPerMetre = out->yPerMetre = 0;
    if (png_get_pHYs(png, info, &x, &y, &unit) && unit == PNG_RESOLUTION_METER) {
        out->xPerMetre = x;
        out->yPerMetre = y;
    }

    if (out->bitDepth == 16) png_set_strip_16(png);
    if (out->colorType & PNG_COLOR_MASK_ALPHA) png_set_strip_alpha(png);
    if (out->colorType == PNG_COLOR_TYPE_PALETTE) {
        const bool blackWhite = out->bitDepth == 1 && out->colors >= 2 &&
                                ((IsLevel(out->palette[0], 0) && IsLevel(out->palette[1], 255)) ||
                                 (IsLevel(out->palette[0], 255) && IsLevel(out->palette[1], 0)));
        if (blackWhite) {
            out->outBits = 1;
            out->invert = IsLevel(out->palette[0], 255);
        } else {
            out->outBits = 8;
            if (out->bitDepth < 8) png_set_packing(png);
        }
    } else if (out->colorType & PNG_COLOR_MASK_COLOR) {
        out->outBits = 24;
        png_set_bgr(png);
    } else if (out->bitDepth == 1) {
        out->outBits = 1;
    } else {
        out->outBits = 8;
        if (out->bitDepth < 8) png_set_expand_gray_1_2_4_to_8(png);
    }
    out->passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    out->rowBytes = png_get_rowbytes(png, info);
    return 0;
}

int PngReadRow(png_structp png, png_bytep row)
{
    if (setjmp(png_jmpbuf(png))) return -1;
    png_read_row(png, row, nullptr);
    return 0;
}

struct PngReadHandle {
    png_structp png = nullptr;
    png_infop info = nullptr;
    PngReadHandle() = default;
    PngReadHandle(const PngReadHandle&) = delete;
    PngReadHandle& operator=(const PngReadHandle&) = delete;
    ~PngReadHandle()
    {
        if (png) png_destroy_read_struct(&png, info ? &info : nullptr, nullptr);
    }
};

// ---------------------------------------------------------------------------
// Writing

struct PngWriteLayout {
    png_uint_32 width;
    png_uint_32 height;
    int bitDepth;
    int colorType;
    int bgr;
    png_color palette[256];
    png_uint_32 xPerMetre;
    png_uint_32 yPerMetre;
};

int PngWriteStart(png_structp png, png_infop info, const PngWriteLayout* layout)
{
    if (setjmp(png_jmpbuf(png))) return -1;
    // Photographs: each byte predicted from its neighbours (Paeth) and the
    // differences deflated as runs. About as small as libpng's adaptive
    // choice (5 % larger on a photograph) at a tenth of its time. Palette
    // and 1-bit rows, where prediction does not pay, go as they are.
    if (layout->colorType == PNG_COLOR_TYPE_PALETTE || layout->bitDepth < 8) {
        png_set_filter(png, 0, PNG_FILTER_NONE);
    } else {
        png_set_filter(png, 0, PNG_FILTER_PAETH);
        png_set_compression_strategy(png, Z_RLE);
    }
    png_set_IHDR(png, info, layout->width, layout->height, layout->bitDepth, layout->colorType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (layout->colorType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, layout->palette, 256);
    if (layout->xPerMetre > 0)
        png_set_pHYs(png, info, layout->xPerMetre, layout->yPerMetre, PNG_RESOLUTION_METER);
    png_write_info(png, info);
    if (layout->bgr) png_set_bgr(png);
    return 0;
}

int PngWriteRow(png_structp png, png_const_bytep row)
{
    if (setjmp(png_jmpbuf(png))) return -1;
    png_write_row(png, row);
    return 0;
}

int PngWriteEnd(png_structp png, png_infop info)
{
    if (setjmp(png_jmpbuf(png))) return -1;
    png_write_end(png, info);
    return 0;
}

struct PngWriteHandle {
    png_structp png = nullptr;
    png_infop info = nullptr;
    PngWriteHandle() = default;
    PngWriteHandle(const PngWriteHandle&) = delete;
    PngWriteHandle& operator=(const PngWriteHandle&) = delete;
    ~PngWriteHandle()
    {
        if (png) png_destroy_write_struct(&png, info ? &info : nullptr);
    }
};

}  // namespace

std::string PngVersion() { return std::string("libpng ") + png_get_libpng_ver(nullptr); }

int32_t PngRead(File& file, const LibraryReader& reader)
{
    int64_t start = 0;
    int64_t fileSize = 0;
    if (!file.stream) return Refuse("no open file");
    if (FileTell(file, start) != 0 || FileSize(file, fileSize) != 0)
        return Refuse(SystemReason("cannot size the file"));
    fileSize -= start;
    if (fileSize < 8) return Refuse("not a PNG file");

    PngReadHandle handle;
    handle.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, PngFail, PngWarn);
    if (!handle.png) return Refuse("out of memory");
    handle.info = png_create_info_struct(handle.png);
    if (!handle.info) return Refuse("out of memory");
    png_set_read_fn(handle.png, file.stream, PngReadData);

    PngLayout layout{};
    if (PngReadLayout(handle.png, handle.info, &layout) != 0) return kLibraryFailed;

    // Refuse what the file cannot hold or the program cannot take before
    // anything is allocated.
    const int64_t width = layout.width;
    const int64_t height = layout.height;
    const std::string claimed = FormatText("header claims %d x %d pixels", width, height);
    if (width <= 0 || height <= 0) return Refuse(claimed);
    const int64_t outBytes = RowBytes(width, layout.outBits);
    if (static_cast<int64_t>(layout.rowBytes) != outBytes)
        return Refuse(FormatText("unexpected row of %d bytes", layout.rowBytes));
    if (outBytes > kBlockBytes) return Refuse(FormatText("rows of %d pixels are too wide", width));

    LibraryHeader header;
    header.width = static_cast<int32_t>(width);
    header.height = static_cast<int32_t>(height);
    header.bitsPerPixel = layout.outBits;
    header.xResolution = layout.xPerMetre > INT32_MAX ? 0 : static_cast<int32_t>(layout.xPerMetre);
    header.yResolution = layout.yPerMetre > INT32_MAX ? 0 : static_cast<int32_t>(layout.yPerMetre);
    if (layout.outBits == 1) {
        header.palette[1][0] = header.palette[1][1] = header.palette[1][2] = 255;
        header.colorsUsed = header.colorsImportant = 2;
    } else if (layout.outBits == 8 && layout.colorType == PNG_COLOR_TYPE_PALETTE) {
        for (int i = 0; i < layout.colors; ++i) {
            header.palette[i][0] = layout.palette[i].blue;
            header.palette[i][1] = layout.palette[i].green;
            header.palette[i][2] = layout.palette[i].red;
        }
        // Indices past the table read as black rather than as garbage.
        header.colorsUsed = header.colorsImportant = 1 << layout.bitDepth;
    } else if (layout.outBits == 8) {
        for (int i = 0; i < 256; ++i)
            header.palette[i][0] = header.palette[i][1] = header.palette[i][2] =
                static_cast<uint8_t>(i);
        header.colorsUsed = header.colorsImportant = 256;
    }
    const int32_t started = reader.header(header, reader.context);
    if (started != 0) return Stopped(started);

    const auto rowBytes = static_cast<size_t>(outBytes);
    // An interlaced image is complete only after its last pass, so it is
    // held whole, each pass filling in its pixels row by row; others go
    // through one row.
    ByteBuffer pixels, inverted;
    if (!Allocate(pixels, layout.interlaced ? outBytes * height : outBytes) ||
        !Allocate(inverted, layout.invert ? outBytes : 0))
        return kLibraryFailed;
    if (layout.interlaced) {
        for (int pass = 0; pass < layout.passes; ++pass) {
            for (png_uint_32 y = 0; y < layout.height; ++y) {
                if (PngReadRow(handle.png, pixels.get() + y * rowBytes) != 0) return kLibraryFailed;
            }
        }
    }
    for (png_uint_32 y = 0; y < layout.height; ++y) {
        uint8_t* row = layout.interlaced ? pixels.get() + y * rowBytes : pixels.get();
        if (!layout.interlaced && PngReadRow(handle.png, row) != 0) return kLibraryFailed;
        if (layout.outBits == 1 && layout.width % 8)
            row[rowBytes - 1] &= static_cast<uint8_t>(0xFF00 >> (layout.width % 8));
        if (layout.invert) {
            for (size_t i = 0; i < rowBytes; ++i) inverted[i] = static_cast<uint8_t>(~row[i]);
            if (layout.width % 8)
                inverted[rowBytes - 1] &= static_cast<uint8_t>(0xFF00 >> (layout.width % 8));
            row = inverted.get();
        }
        const int32_t result = reader.row(row, reader.context, static_cast<int32_t>(y),
                                          static_cast<int32_t>(rowBytes));
        if (result != 0) return Stopped(result);
    }
    return 0;
}

int32_t PngWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header)) return refused;
    if (!file.stream) return Refuse("no open file");
    const int32_t bits = header.bitsPerPixel;
    const int64_t rowBytes = RowBytes(header.width, bits);

    PngWriteLayout layout{};
    layout.width = static_cast<png_uint_32>(header.width);
    layout.height = static_cast<png_uint_32>(header.height);
    layout.bitDepth = bits == 1 ? 1 : 8;
    layout.colorType = bits == 24 ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY;
    if (bits == 8 && !IsGrayRamp(header)) {
        layout.colorType = PNG_COLOR_TYPE_PALETTE;
        for (int i = 0; i < 256; ++i) {
            layout.palette[i].red = header.palette[i][2];
            layout.palette[i].green = header.palette[i][1];
            layout.palette[i].blue = header.palette[i][0];
        }
    }
    layout.bgr = bits == 24;
    if (header.xResolution > 0) {
        layout.xPerMetre = static_cast<png_uint_32>(header.xResolution);
        layout.yPerMetre = static_cast<png_uint_32>(header.yResolution > 0 ? header.yResolution
                                                                           : header.xResolution);
    }

    PngWriteHandle handle;
    handle.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, PngFail, PngWarn);
    if (!handle.png) return Refuse("out of memory");
    handle.info = png_create_info_struct(handle.png);
    if (!handle.info) return Refuse("out of memory");
    png_set_write_fn(handle.png, file.stream, PngWriteData, PngFlushData);
    if (PngWriteStart(handle.png, handle.info, &layout) != 0) return kLibraryFailed;

    ByteBuffer row;
    if (!Allocate(row, rowBytes)) return kLibraryFailed;
    for (int32_t y = 0; y < header.height; ++y) {
        const int32_t result = writer.row(writer.context, row.get(), y);
        if (result != 0) return Stopped(result);
        if (PngWriteRow(handle.png, row.get()) != 0) return kLibraryFailed;
    }
    if (PngWriteEnd(handle.png, handle.info) != 0) return kLibraryFailed;
    if (std::ferror(file.stream)) return Refuse(SystemReason("cannot write the file"));
    return 0;
}

}  // namespace lv
