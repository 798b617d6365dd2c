// EPS: the picture as encapsulated PostScript of language level 2, for
// placing in page layouts. One `image` operator draws it from hexadecimal
// data: 1-bit and 8-bit gray through DeviceGray, other colour tables through
// an Indexed colour space, 24-bit through DeviceRGB. The bounding box is the
// picture's size in points at its resolution (72 dots per inch when it has
// none).
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <utility>

#include "files/codec_io.h"
#include "files/library.h"
#include "shell/errors.h"

namespace lv {

namespace {

using namespace codec;

constexpr double kMetresPerInch = 0.02540005;
constexpr double kPointsPerInch = 72.0;
constexpr int32_t kHexPerLine = 64;
constexpr char kHexDigits[] = "0123456789ABCDEF";

bool WriteText(File& file, const char* text)
{
    return WriteAll(file, static_cast<int64_t>(std::strlen(text)), text);
}

// A length of `pixels` at `perMetre` pixels per metre (72 dots per inch when
// 0), in thousandths of a point. Integers keep the text free of the locale's
// decimal sign.
int64_t Thousandths(int32_t pixels, int32_t perMetre)
{
    double dpi = perMetre > 0 ? perMetre * kMetresPerInch : kPointsPerInch;
    return static_cast<int64_t>(pixels * kPointsPerInch / dpi * 1000.0 + 0.5);
}

// The colour space and the sample layout of the picture.
bool WriteProlog(File& file, const LibraryHeader& header)
{
    const int64_t width = Thousandths(header.width, header.xResolution);
    const int64_t height = Thousandths(
        header.height, header.yResolution > 0 ? header.yResolution : header.xResolution);
    char text[512];
    std::snprintf(text, sizeof text,
                  "%%!PS-Adobe-3.0 EPSF-3.0\n"
                  "%%%%Creator: Lumivue 2.0\n"
                  "%%%%BoundingBox: 0 0 %" PRId64 " %" PRId64
                  "\n"
                  "%%%%HiResBoundingBox: 0 0 %" PRId64 ".%03" PRId64 " %" PRId64 ".%03" PRId64
                  "\n"
                  "%%%%LanguageLevel: 2\n"
                  "%%%%Pages: 1\n"
                  "%%%%DocumentData: Clean7Bit\n"
                  "%%%%EndComments\n"
                  "%%%%Page: 1 1\n"
                  "gsave\n"
                  "%" PRId64 ".%03" PRId64 " %" PRId64 ".%03" PRId64 " scale\n",
                  (width + 999) / 1000, (height + 999) / 1000, width / 1000, width % 1000,
                  height / 1000, height % 1000, width / 1000, width % 1000, height / 1000,
                  height % 1000);
    if (!WriteText(file, text)) return false;

    const int32_t bits = header.bitsPerPixel;
    const char* decode = "[0 1]";
    if (bits == 24) {
        if (!WriteText(file, "/DeviceRGB setcolorspace\n")) return false;
        decode = "[0 1 0 1 0 1]";
    } else if (bits == 8 && !IsGrayRamp(header)) {
        // Red, green, blue of each table entry.
        if (!WriteText(file, "[/Indexed /DeviceRGB 255 <")) return false;
        for (int32_t i = 0; i < 256; ++i) {
            char entry[8];
            std::snprintf(entry, sizeof entry, "%02X%02X%02X%s", header.palette[i][2],
                          header.palette[i][1], header.palette[i][0], i % 8 == 7 ? "\n" : "");
            if (!WriteText(file, entry)) return false;
        }
        if (!WriteText(file, ">] setcolorspace\n")) return false;
        decode = "[0 255]";
    } else {
        if (!WriteText(file, "/DeviceGray setcolorspace\n")) return false;
    }
    // Rows go from the top, so the image matrix turns y over.
    std::snprintf(text, sizeof text,
                  "<<\n"
                  "/ImageType 1\n"
                  "/Width %d\n"
                  "/Height %d\n"
                  "/BitsPerComponent %d\n"
                  "/Decode %s\n"
                  "/ImageMatrix [%d 0 0 %d 0 %d]\n"
                  "/DataSource currentfile /ASCIIHexDecode filter\n"
                  ">>\n"
                  "image\n",
                  header.width, header.height, bits == 1 ? 1 : 8, decode, header.width,
                  -header.height, header.height);
    return WriteText(file, text);
}

}  // namespace

int32_t EpsWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header)) return refused;
    const int32_t bits = header.bitsPerPixel;
    const int64_t rowBytes = RowBytes(header.width, bits);
    if (!SeekTo(file, 0) || !WriteProlog(file, header)) return kLibraryFailed;

    // The samples as hexadecimal text, 64 digits a line, running on from row
    // to row; ">" ends them.
    ByteBuffer row, text;
    if (!Allocate(row, rowBytes) || !Allocate(text, 2 * rowBytes + rowBytes / 32 + 2)) {
        return kLibraryFailed;
    }
    int32_t column = 0;
    for (int32_t r = 0; r < header.height; ++r) {
        row.Clear();
        int32_t result = writer.row(writer.context, row.get(), r);
        if (result != 0) return Stopped(result);
        if (bits == 24) {
            // PostScript takes red, green, blue.
            for (int64_t i = 0; i + 2 < rowBytes; i += 3) std::swap(row[i], row[i + 2]);
        }
        int64_t length = 0;
        for (size_t i = 0; i < row.size; ++i) {
            const uint8_t byte = row[i];
            text[length++] = static_cast<uint8_t>(kHexDigits[byte >> 4]);
            text[length++] = static_cast<uint8_t>(kHexDigits[byte & 15]);
            column += 2;
            if (column == kHexPerLine) {
                text[length++] = '\n';
                column = 0;
            }
        }
        if (!WriteAll(file, length, text.get())) return kLibraryFailed;
    }
    if (!WriteText(file, column == 0 ? ">\n" : "\n>\n")) return kLibraryFailed;
    if (!WriteText(file, "grestore\nshowpage\n%%Trailer\n%%EOF\n")) return kLibraryFailed;
    return 0;
}

}  // namespace lv
