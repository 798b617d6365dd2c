// The harness shared by the fuzz targets of whole-file reading. The bytes are
// written to a file with the type's extension and read by ReadImageFile as
// Open reads them (the codec over its library, our row conversion, the image
// record). What comes back must be a picture whose every row can be read, or
// a code that ReadImageFile gives for the type. Anything else aborts.
//
// When a library format was read, the codec runs a second time over the same
// bytes with the checks of reader_fuzz.h (header, rows in order and of the
// right size, all of them), and each of its rows must be what the picture
// holds in that row: the top row in the picture's last, indices through the
// colour table.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "files/formats.h"
#include "files/jpeg.h"
#include "files/library.h"
#include "image/image.h"
#include "reader_fuzz.h"
#include "scratch_file.h"
#include "shell/errors.h"
#include "shell/tables.h"
#include "shell/text.h"

namespace fuzz {

// Says which promise was broken, then stops as a crash does.
template <class... A>
[[noreturn]] void Fail(const char* format, const A&... args)
{
    std::fputs("fuzz: ", stderr);
    if constexpr (sizeof...(A) == 0)
        std::fputs(format, stderr);
    else
        std::fprintf(stderr, format, args...);
    std::fprintf(stderr, "\n");
    std::abort();
}

// A picture beyond the budget is refused by ImageAlloc with 1, so that a
// header claiming a huge picture costs nothing.
inline void StartOnce()
{
    static const bool started = [] {
        lv::InitEngineTables();
        lv::SetImageMemoryLimit(kFuzzPictureBudget);
        return true;
    }();
    (void)started;
}

inline int32_t BytesPerRow(int32_t kind, int32_t width)
{
    return kind == lv::kImageBinary ? (width + 7) / 8 : width * (kind == lv::kImageGray ? 1 : 3);
}

// Reads every byte of every row up to the stride, so that a row reaching
// outside the picture's memory shows under the address sanitizer.
inline void CheckPicture(const lv::Image& image, bool jpeg)
{
    if (image.kind < (jpeg ? lv::kImageGray : lv::kImageBinary) || image.kind > lv::kImageColor)
        Fail("a picture of kind %d", image.kind);
    if (image.width <= 0 || image.height <= 0 || !image.rows)
        Fail("a picture of %d x %d pixels", image.width, image.height);
    if (image.stride < BytesPerRow(image.kind, image.width))
        Fail("a stride of %d for %d pixels of kind %d", image.stride, image.width, image.kind);
    if (!std::isfinite(image.resolution) || image.resolution <= 0.0)
        Fail("a resolution of %g", image.resolution);
    uint32_t sum = 0;
    for (int32_t y = 0; y < image.height; ++y) {
        const uint8_t* row = image.rows[y];
        if (!row) Fail("no row %d", y);
        for (int32_t i = 0; i < image.stride; ++i) sum += row[i];
    }
    // Keeps the sum, and so the reads, from being optimised away.
    static volatile uint32_t sink;
    sink = sum;
}

// ---- The codec again, row against picture ------------------------------------

struct Compare {
    Check check;
    const lv::Image* image = nullptr;
};

inline int32_t CompareHeader(const lv::LibraryHeader& header, void* context)
{
    auto& c = *static_cast<Compare*>(context);
    const lv::Image& image = *c.image;
    if (OnHeader(header, &c.check) != 0)
        Fail("the codec again: %d x %d pixels refused", header.width, header.height);
    if (header.width != image.width || header.height != image.height)
        Fail("the codec again: %d x %d pixels for %d x %d", header.width, header.height,
             image.width, image.height);
    const int32_t bits = header.bitsPerPixel;
    if ((bits == 1 && image.kind != lv::kImageBinary) ||
        (bits == 8 && image.kind != lv::kImageGray && image.kind != lv::kImageColor) ||
        (bits == 24 && image.kind != lv::kImageColor))
        Fail("%d bits a pixel read as kind %d", bits, image.kind);
    return 0;
}

inline int32_t CompareRow(const uint8_t* data, void* context, int32_t row, int32_t bytes)
{
    auto& c = *static_cast<Compare*>(context);
    OnRow(data, &c.check, row, bytes);
    const lv::Image& image = *c.image;
    const lv::LibraryHeader& header = c.check.header;
    const uint8_t* out = image.rows[image.height - 1 - row];
    if (header.bitsPerPixel != 8) {
        if (std::memcmp(out, data, static_cast<size_t>(bytes)) != 0)
            Fail("row %d of the file is not row %d of the picture", row, image.height - 1 - row);
        return 0;
    }
    // What an index beyond the table's entries becomes is not promised.
    const int32_t entries = header.colorsUsed > 0 ? header.colorsUsed : 256;
    for (int32_t x = 0; x < image.width; ++x) {
        if (data[x] >= entries) continue;
        const uint8_t* e = header.palette[data[x]];
        const bool same = image.kind == lv::kImageGray
                              ? e[0] == e[1] && e[1] == e[2] && out[x] == e[0]
                              : std::memcmp(out + 3 * x, e, 3) == 0;
        if (!same) Fail("pixel %d of row %d is not colour %d of the table", x, row, data[x]);
    }
    return 0;
}

using CodecRead = int32_t (*)(lv::File&, const lv::LibraryReader&);

inline CodecRead CodecOf(int32_t format)
{
    switch (format) {
    case lv::kFormatTiff: return lv::TiffRead;
    case lv::kFormatBmp: return lv::BmpRead;
    case lv::kFormatPcx: return lv::PcxRead;
    case lv::kFormatTarga: return lv::TargaRead;
    case lv::kFormatGif: return lv::GifRead;
    case lv::kFormatPng: return lv::PngRead;
    default: return nullptr;
    }
}

// The codec that read the picture must read it again, whole and the same.
inline void CompareWithCodec(const std::string& path, const uint8_t* data, size_t size,
                             const lv::Image& image)
{
    const CodecRead read = CodecOf(lv::LibraryDetectFormat(path));
    if (!read) Fail("a picture from a file of no codec");
    lv::File file;
    if (!OpenBytes(data, size, file)) return;
    Compare compare;
    compare.image = &image;
    lv::LibraryReader reader{CompareHeader, CompareRow, &compare};
    const int32_t result = read(file, reader);
    if (result != 0 || compare.check.rows != image.height)
        Fail("the codec again: %d after %d of %d rows", result, compare.check.rows, image.height);
}

// ---- The target ----------------------------------------------------------------

// One input as a file of `fileType`. Results: 0 with a picture; 1 for a
// picture too large for memory (the budget above); else the read error of
// the type, which for JPEG contents is JPEG's whatever the name. Every
// failure leaves its reason. Never 11: nothing here can cancel.
inline int RunFile(int32_t fileType, const uint8_t* data, size_t size)
{
    StartOnce();
    const lv::FileTypeInfo* type = lv::FindFileType(fileType);
    if (!type || !type->defaultExtension) Fail("no file type %d", fileType);
    // One type a program, so one file.
    static const ScratchFile file("file-fuzz", std::string(".") + type->defaultExtension);
    if (!file.Write(data, size)) return 0;
    const std::string& path = file.path;

    const bool jpeg = lv::LooksLikeJpeg(data, size < 4 ? size : 4);
    lv::ClearErrorDetail();
    lv::Image image;
    const int32_t result = lv::ReadImageFile(path, fileType, image, false);
    if (result == lv::kOk) {
        CheckPicture(image, jpeg);
        if (!jpeg) CompareWithCodec(path, data, size, image);
        return 0;
    }
    const int32_t readError = jpeg ? lv::FindFileType(lv::kTypeJpeg)->readError : type->readError;
    const bool expected = result == readError || result == lv::kErrOutOfMemory;
    if (!expected) Fail("unexpected result %d (\"%s\")", result, lv::ErrorDetail().c_str());
    if (lv::ErrorDetail().empty()) Fail("result %d without a reason", result);
    // A JPEG that fails leaves the record empty.
    if (jpeg && (image.kind != lv::kImageEmpty || image.rows))
        Fail("result %d leaves a picture of kind %d", result, image.kind);
    return 0;
}

}  // namespace fuzz
