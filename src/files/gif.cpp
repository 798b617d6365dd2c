// GIF through giflib.
//
// Reading takes the first frame only and places it on the logical screen;
// where the frame does not cover the screen the background colour shows
// (index 0 without a global colour table). A frame reaching past the screen
// widens the picture rather than being cut. Transparency is ignored: a
// transparent index shows its own colour. A frame with a black-and-white
// table of two entries comes out as 1-bit rows; every other as 8-bit indices
// with the table. A file without any colour table reads as gray levels.
//
// Writing: 1-bit pictures as two-colour GIFs (0 black, 1 white), 8-bit as
// 256-colour GIFs with the header's table; nothing else.
#include <gif_lib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "files/codec_io.h"
#include "files/library.h"
#include "image/image.h"

namespace lv {

std::string GifVersion();
namespace {

using namespace codec;

int GifInput(GifFileType* gif, GifByteType* data, int length)
{
    if (length <= 0) return 0;
    auto* stream = static_cast<std::FILE*>(gif->UserData);
    return static_cast<int>(std::fread(data, 1, static_cast<size_t>(length), stream));
}

int GifOutput(GifFileType* gif, const GifByteType* data, int length)
{
    if (length <= 0) return 0;
    auto* stream = static_cast<std::FILE*>(gif->UserData);
    return static_cast<int>(std::fwrite(data, 1, static_cast<size_t>(length), stream));
}

struct GifReadCloser {
    void operator()(GifFileType* gif) const
    {
        int error = 0;
        DGifCloseFile(gif, &error);
    }
};
struct GifWriteCloser {
    void operator()(GifFileType* gif) const
    {
        int error = 0;
        EGifCloseFile(gif, &error);
    }
};
struct GifMapFree {
    void operator()(ColorMapObject* map) const { GifFreeMapObject(map); }
};

// giflib's text for an error code, as a reason.
std::string GifReason(int error)
{
    return LibraryReason(GifErrorString(error), "damaged GIF file");
}

// Leaves giflib's reason for the call on `gif` that has just failed.
bool GifFailed(const GifFileType* gif) { return Reject(GifReason(gif->Error)); }

// A failed write: the system's reason when the file refused the bytes,
// else giflib's.
std::string WriteReason(int error)
{
    return error == E_GIF_ERR_WRITE_FAILED || error == E_GIF_ERR_DISK_IS_FULL
               ? SystemReason("cannot write the file")
               : GifReason(error);
}

// Skips extensions up to the first image descriptor and reads it. False
// with the reason.
bool FindFirstFrame(GifFileType* gif)
{
    for (;;) {
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR) return GifFailed(gif);
        if (type == IMAGE_DESC_RECORD_TYPE)
            return DGifGetImageDesc(gif) != GIF_ERROR || GifFailed(gif);
        if (type != EXTENSION_RECORD_TYPE) return Reject("no picture in the file");
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return GifFailed(gif);
        while (block) {
            if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return GifFailed(gif);
        }
    }
}

// Skips the compressed data of the frame whose descriptor was just read.
bool SkipFrameData(GifFileType* gif)
{
    int codeSize = 0;
    GifByteType* block = nullptr;
    if (DGifGetCode(gif, &codeSize, &block) == GIF_ERROR) return GifFailed(gif);
    while (block) {
        if (DGifGetCodeNext(gif, &block) == GIF_ERROR) return GifFailed(gif);
    }
    return true;
}

// Walks the records after the first frame up to the trailer, skipping the
// data of later frames undecoded, so that a damaged or cut file is refused
// even when its first frame is whole. A file that simply ends where a record
// would start is taken as complete. False with the reason.
bool RestIsWellFormed(GifFileType* gif, File& file, int64_t end)
{
    for (;;) {
        int64_t position = 0;
        if (FileTell(file, position) != 0) return Reject(SystemReason("cannot read the file"));
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        if (DGifGetRecordType(gif, &type) == GIF_ERROR) return position == end || GifFailed(gif);
        if (type == TERMINATE_RECORD_TYPE) return true;
        GifByteType* block = nullptr;
        if (type == IMAGE_DESC_RECORD_TYPE) {
            if (DGifGetImageDesc(gif) == GIF_ERROR) return GifFailed(gif);
            if (!SkipFrameData(gif)) return false;
        } else if (type == EXTENSION_RECORD_TYPE) {
            int code = 0;
            if (DGifGetExtension(gif, &code, &block) == GIF_ERROR) return GifFailed(gif);
            while (block) {
                if (DGifGetExtensionNext(gif, &block) == GIF_ERROR) return GifFailed(gif);
            }
        } else {
            return Reject("damaged record after the first frame");
        }
    }
}

bool SameColor(const GifColorType& a, const GifColorType& b)
{
    return a.Red == b.Red && a.Green == b.Green && a.Blue == b.Blue;
}

}  // namespace

std::string GifVersion()
{
    return "giflib " + std::to_string(GIFLIB_MAJOR) + "." + std::to_string(GIFLIB_MINOR) + "." +
           std::to_string(GIFLIB_RELEASE);
}

int32_t GifRead(File& file, const LibraryReader& reader)
{
    int64_t start = 0;
    int64_t fileSize = 0;
    if (!file.stream) return Refuse("no open file");
    if (FileTell(file, start) != 0 || FileSize(file, fileSize) != 0)
        return Refuse(SystemReason("cannot size the file"));
    fileSize -= start;
    if (fileSize < 13) return Refuse("not a GIF file");

    int error = 0;
    std::unique_ptr<GifFileType, GifReadCloser> gif(DGifOpen(file.stream, GifInput, &error));
    if (!gif) return Refuse(GifReason(error));
    if (!FindFirstFrame(gif.get())) return kLibraryFailed;

    const GifImageDesc& frame = gif->Image;
    if (frame.Left < 0 || frame.Top < 0 || frame.Width < 0 || frame.Height < 0)
        return Refuse("bad frame position");
    const int64_t width = std::max<int64_t>(gif->SWidth, int64_t{frame.Left} + frame.Width);
    const int64_t height = std::max<int64_t>(gif->SHeight, int64_t{frame.Top} + frame.Height);
    if (width <= 0 || height <= 0)
        return Refuse(FormatText("header claims %d x %d pixels", width, height));

    // The colour table: the frame's own, else the global one, else gray.
    GifColorType colors[256];
    int32_t colorCount = 0;
    const ColorMapObject* map = frame.ColorMap ? frame.ColorMap : gif->SColorMap;
    if (map && map->Colors && map->ColorCount > 0) {
        colorCount = std::min(map->ColorCount, 256);
        std::copy(map->Colors, map->Colors + colorCount, colors);
    } else {
        for (int i = 0; i < 256; ++i) {
            const auto level = static_cast<GifByteType>(i);
            colors[i] = GifColorType{level, level, level};
        }
        colorCount = 256;
    }
    // The background colour belongs to the global table; with a table of the
    // frame's own it is looked up there, or added when there is room.
    uint8_t background = 0;
    const ColorMapObject* global = gif->SColorMap;
    if (global && global->Colors && gif->SBackGroundColor >= 0 &&
        gif->SBackGroundColor < global->ColorCount) {
        const GifColorType wanted = global->Colors[gif->SBackGroundColor];
        int32_t found = static_cast<int32_t>(
            std::find_if(colors, colors + colorCount,
                         [&](const GifColorType& c) { return SameColor(c, wanted); }) -
            colors);
        if (found == colorCount && colorCount < 256) colors[colorCount++] = wanted;
        if (found < colorCount) background = static_cast<uint8_t>(found);
    }

    const GifColorType black{0, 0, 0};
    const GifColorType white{255, 255, 255};
    const bool bilevel =
        colorCount == 2 && ((SameColor(colors[0], black) && SameColor(colors[1], white)) ||
                            (SameColor(colors[0], white) && SameColor(colors[1], black)));
    const int64_t outBytes = RowBytes(width, bilevel ? 1 : 8);
    if (outBytes > kBlockBytes) return Refuse(FormatText("rows of %d pixels are too wide", width));

    LibraryHeader header;
    header.width = static_cast<int32_t>(width);
    header.height = static_cast<int32_t>(height);
    header.bitsPerPixel = bilevel ? 1 : 8;
    if (bilevel) {
        header.palette[1][0] = header.palette[1][1] = header.palette[1][2] = 255;
        header.colorsUsed = header.colorsImportant = 2;
    } else {
        for (int32_t i = 0; i < colorCount; ++i) {
            header.palette[i][0] = colors[i].Blue;
            header.palette[i][1] = colors[i].Green;
            header.palette[i][2] = colors[i].Red;
        }
        header.colorsUsed = header.colorsImportant = colorCount;
    }
    const int32_t started = reader.header(header, reader.context);
    if (started != 0) return Stopped(started);

    // Interlaced frames arrive in four passes, so they are read whole first;
    // others a line at a time as the rows go out.
    const auto frameWidth = static_cast<size_t>(frame.Width);
    const int32_t frameHeight = frame.Height;
    const bool hasPixels = frameWidth > 0 && frameHeight > 0;
    const bool interlaced = frame.Interlace && hasPixels;
    ByteBuffer pixels;
    if (!Allocate(pixels, static_cast<int64_t>(frameWidth) * (interlaced ? frameHeight : 1)))
        return kLibraryFailed;
    if (interlaced) {
        static constexpr int32_t kFirst[4] = {0, 4, 2, 1};
        static constexpr int32_t kStep[4] = {8, 8, 4, 2};
        for (int pass = 0; pass < 4; ++pass) {
            for (int32_t y = kFirst[pass]; y < frameHeight; y += kStep[pass]) {
                if (DGifGetLine(gif.get(), pixels.get() + static_cast<size_t>(y) * frameWidth,
                                frame.Width) == GIF_ERROR)
                    return Refuse(GifReason(gif->Error));
            }
        }
    }

    bool isWhite[256] = {};
    for (int32_t i = 0; i < colorCount; ++i) isWhite[i] = SameColor(colors[i], white);
    ByteBuffer line, bits;
    if (!Allocate(line, width) || !Allocate(bits, bilevel ? outBytes : 0)) return kLibraryFailed;
    for (int32_t y = 0; y < header.height; ++y) {
        std::memset(line.get(), background, line.size);
        const int32_t r = y - frame.Top;
        if (hasPixels && r >= 0 && r < frameHeight) {
            const GifPixelType* source = pixels.get();
            if (interlaced) {
                source += static_cast<size_t>(r) * frameWidth;
            } else if (DGifGetLine(gif.get(), pixels.get(), frame.Width) == GIF_ERROR) {
                return Refuse(GifReason(gif->Error));
            }
            std::memcpy(line.get() + frame.Left, source, frameWidth);
        }
        const uint8_t* row = line.get();
        if (bilevel) {
            bits.Clear();
            for (int32_t x = 0; x < header.width; ++x) {
                if (isWhite[line[x]]) bits[x >> 3] |= static_cast<uint8_t>(0x80 >> (x & 7));
            }
            row = bits.get();
        }
        const int32_t result = reader.row(row, reader.context, y, static_cast<int32_t>(outBytes));
        if (result != 0) return Stopped(result);
    }
    // A frame with no pixels leaves its image data unread.
    if (!hasPixels && !SkipFrameData(gif.get())) return kLibraryFailed;
    return RestIsWellFormed(gif.get(), file, start + fileSize) ? 0 : kLibraryFailed;
}

int32_t GifWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header, 65535)) return refused;
    const int32_t bitsPerPixel = header.bitsPerPixel;
    if (bitsPerPixel != 1 && bitsPerPixel != 8)
        return Refuse("GIF holds only 1 and 8-bit pictures");
    if (!file.stream) return Refuse("no open file");

    const int count = bitsPerPixel == 1 ? 2 : 256;
    std::unique_ptr<ColorMapObject, GifMapFree> map(GifMakeMapObject(count, nullptr));
    if (!map) return Refuse("out of memory");
    if (bitsPerPixel == 1) {
        map->Colors[0] = GifColorType{0, 0, 0};
        map->Colors[1] = GifColorType{255, 255, 255};
    } else {
        for (int i = 0; i < 256; ++i) {
            map->Colors[i] =
                GifColorType{header.palette[i][2], header.palette[i][1], header.palette[i][0]};
        }
    }

    int error = 0;
    std::unique_ptr<GifFileType, GifWriteCloser> gif(EGifOpen(file.stream, GifOutput, &error));
    if (!gif) return Refuse(GifReason(error));
    if (EGifPutScreenDesc(gif.get(), header.width, header.height, bitsPerPixel, 0, map.get()) ==
            GIF_ERROR ||
        EGifPutImageDesc(gif.get(), 0, 0, header.width, header.height, false, nullptr) == GIF_ERROR)
        return Refuse(WriteReason(gif->Error));

    const int64_t rowBytes = RowBytes(header.width, bitsPerPixel);
    ByteBuffer row, line;
    if (!Allocate(row, rowBytes) || !Allocate(line, header.width)) return kLibraryFailed;
    for (int32_t y = 0; y < header.height; ++y) {
        const int32_t result = writer.row(writer.context, row.get(), y);
        if (result != 0) return Stopped(result);
        if (bitsPerPixel == 1) {
            for (int32_t x = 0; x < header.width; ++x)
                line[x] = static_cast<GifPixelType>((row[x >> 3] >> (7 - (x & 7))) & 1);
        } else {
            std::memcpy(line.get(), row.get(), row.size);
        }
        if (EGifPutLine(gif.get(), line.get(), header.width) == GIF_ERROR)
            return Refuse(WriteReason(gif->Error));
    }
    if (EGifCloseFile(gif.release(), &error) == GIF_ERROR) return Refuse(WriteReason(error));
    if (std::ferror(file.stream)) return Refuse(SystemReason("cannot write the file"));
    return 0;
}

}  // namespace lv
