// PCX, the ZSoft paintbrush file.
//
// The reader takes every version's header: 1 plane of 1 bit (set bits
// white); 1 to 4 planes of 1, 2 or 4 bits making indices of up to 4 bits
// into the 16-colour header palette (version 3 files carry none and get the
// standard 16 colours); 1 plane of 8 bits with the 256-colour palette at the
// end of the file (a gray ramp when it is missing); 3 or 4 planes of 8 bits,
// red, green, blue (and alpha, dropped). Lines are run-length encoded and
// may hold more bytes than the width needs. The dots per inch of the header
// go out as pixels per metre.
//
// The writer makes version 5 files, run-length encoded: 1 bit, 8 bits with
// the 256-colour palette of the header, or 24 bits as 3 planes.
#include <algorithm>
#include <cstring>

#include "files/codec_io.h"
#include "files/library.h"
#include "image/pixel.h"
#include "shell/errors.h"

namespace lv {

namespace {

using namespace codec;

constexpr int64_t kHeaderSize = 128;
constexpr uint8_t kManufacturer = 0x0A;
constexpr uint8_t kPaletteMarker = 0x0C;
constexpr int64_t kEndPaletteSize = 1 + 256 * 3;  // the marker and the entries
constexpr int32_t kLongestRun = 63;
constexpr uint8_t kRunFlags = 0xC0;
constexpr double kMetresPerInch = 0.02540005;

// The standard 16 colours (red, green, blue) for files that carry no palette.
constexpr uint8_t kStandardColours[16][3] = {
    {0, 0, 0},     {0, 0, 170},     {0, 170, 0},    {0, 170, 170},   {170, 0, 0},   {170, 0, 170},
    {170, 85, 0},  {170, 170, 170}, {85, 85, 85},   {85, 85, 255},   {85, 255, 85}, {85, 255, 255},
    {255, 85, 85}, {255, 85, 255},  {255, 255, 85}, {255, 255, 255},
};

// How the rows go out.
enum class RowForm { Bits, Indices, Colour };

// What the header says about the picture.
struct PcxInfo {
    int64_t fileSize = 0;
    int32_t version = 0;
    bool encoded = true;
    int32_t bitsPerPlane = 0;
    int32_t planes = 0;
    int64_t bytesPerLine = 0;
    int32_t width = 0;
    int32_t height = 0;
    int32_t xDpi = 0;
    int32_t yDpi = 0;
    int64_t dataEnd = 0;  // the lines end here, before any 256-colour palette
    RowForm form = RowForm::Bits;
    uint8_t headerPalette[16][3] = {};
};

bool ReadHeader(File& file, PcxInfo& info)
{
    uint8_t h[kHeaderSize];
    if (FileSize(file, info.fileSize) != kOk) return Reject(SystemReason("cannot size the file"));
    if (info.fileSize <= kHeaderSize) return Reject("truncated header");
    if (!ReadAt(file, 0, kHeaderSize, h, "truncated header")) return false;

    info.version = h[1];
    info.bitsPerPlane = h[3];
    info.planes = h[65];
    info.bytesPerLine = Get16(h + 66);
    info.xDpi = Get16(h + 12);
    info.yDpi = Get16(h + 14);
    std::memcpy(info.headerPalette, h + 16, sizeof info.headerPalette);
    if (h[0] != kManufacturer || h[2] > 1) return Reject("not a PCX file");
    if (info.version != 0 && (info.version < 2 || info.version > 5))
        return Reject(FormatText("unknown PCX version %d", info.version));
    info.encoded = h[2] == 1;

    const int32_t xMin = Get16(h + 4);
    const int32_t yMin = Get16(h + 6);
    const int32_t xMax = Get16(h + 8);
    const int32_t yMax = Get16(h + 10);
    if (xMax < xMin || yMax < yMin)
        return Reject(FormatText("bad picture bounds %d, %d to %d, %d", xMin, yMin, xMax, yMax));
    info.width = xMax - xMin + 1;
    info.height = yMax - yMin + 1;

    const int32_t bits = info.bitsPerPlane;
    const int32_t planes = info.planes;
    if (bits == 1 && planes == 1) {
        info.form = RowForm::Bits;
    } else if ((bits == 1 || bits == 2 || bits == 4) && planes >= 1 && bits * planes <= 4) {
        info.form = RowForm::Indices;
    } else if (bits == 8 && planes == 1) {
        info.form = RowForm::Indices;
    } else if (bits == 8 && (planes == 3 || planes == 4)) {
        info.form = RowForm::Colour;
    } else {
        return Reject(FormatText("unsupported layout of %d planes of %d bits", planes, bits));
    }
    if (info.bytesPerLine <= 0 || info.bytesPerLine < RowBytes(info.width, bits))
        return Reject(
            FormatText("line of %d bytes too short for %d pixels", info.bytesPerLine, info.width));
    return true;
}

// Fills the program's colour table for an indexed picture and finds where
// the lines end.
bool ReadPalette(File& file, PcxInfo& info, LibraryHeader& header)
{
    info.dataEnd = info.fileSize;
    if (info.form != RowForm::Indices) return true;
    if (info.bitsPerPlane * info.planes <= 4) {
        const uint8_t(*colours)[3] = info.version == 3 ? kStandardColours : info.headerPalette;
        for (int32_t i = 0; i < 16; ++i) {
            header.palette[i][0] = colours[i][2];
            header.palette[i][1] = colours[i][1];
            header.palette[i][2] = colours[i][0];
        }
        header.colorsUsed = 1 << (info.bitsPerPlane * info.planes);
        return true;
    }
    // 8 bits: the 256-colour palette follows its marker at the end of the file.
    header.colorsUsed = 256;
    uint8_t stored[kEndPaletteSize];
    if (info.fileSize >= kHeaderSize + kEndPaletteSize) {
        if (!ReadAt(file, info.fileSize - kEndPaletteSize, kEndPaletteSize, stored,
                    "truncated palette")) {
            return false;
        }
        if (stored[0] == kPaletteMarker) {
            for (int32_t i = 0; i < 256; ++i) {
                header.palette[i][0] = stored[1 + 3 * i + 2];
                header.palette[i][1] = stored[1 + 3 * i + 1];
                header.palette[i][2] = stored[1 + 3 * i];
            }
            info.dataEnd = info.fileSize - kEndPaletteSize;
            return true;
        }
    }
    for (int32_t i = 0; i < 256; ++i) std::memset(header.palette[i], i, 3);
    return true;
}

// The lines must fit in the file: run-length encoded, each pair of bytes
// gives at most 63 of them.
bool CheckDataSize(const PcxInfo& info)
{
    const int64_t total = info.bytesPerLine * info.planes * info.height;
    const int64_t dataBytes = info.dataEnd - kHeaderSize;
    const bool fits = info.encoded ? (total + kLongestRun - 1) / kLongestRun * 2 <= dataBytes
                                   : total <= dataBytes;
    return fits || Reject(FormatText("header claims %d x %d pixels", info.width, info.height));
}

// ---- Lines ----------------------------------------------------------------------------------

// The encoded lines and the run under way: a run may go on from one line
// into the next.
struct Decoder {
    ByteSource bytes;
    int32_t runLeft = 0;
    uint8_t runValue = 0;
};

// One line of all planes. A byte with its two high bits set counts a run
// (low 6 bits) of the byte after it; any other byte stands for itself.
bool DecodeLine(Decoder& in, bool encoded, uint8_t* line, int64_t size)
{
    for (int64_t i = 0; i < size; ++i) {
        while (in.runLeft == 0) {
            uint8_t byte;
            if (!NextByte(in.bytes, byte)) return false;
            if (!encoded || (byte & kRunFlags) != kRunFlags) {
                in.runValue = byte;
                in.runLeft = 1;
            } else if (!NextByte(in.bytes, in.runValue)) {
                return false;
            } else {
                in.runLeft = byte & ~kRunFlags;
            }
        }
        line[i] = in.runValue;
        --in.runLeft;
    }
    return true;
}

// Turns a decoded line into the form the program takes.
void ConvertLine(const PcxInfo& info, const uint8_t* line, uint8_t* out)
{
    const int32_t width = info.width;
    const int64_t plane = info.bytesPerLine;
    switch (info.form) {
    case RowForm::Bits: {
        const int32_t bytes = (width + 7) / 8;
        std::memcpy(out, line, static_cast<size_t>(bytes));
        if (width % 8 != 0) out[bytes - 1] &= static_cast<uint8_t>(0xFF00 >> width % 8);
        return;
    }
    case RowForm::Indices: {
        if (info.bitsPerPlane == 8) {
            std::memcpy(out, line, static_cast<size_t>(width));
            return;
        }
        // Each plane gives its bits of the index, the first plane the lowest.
        const int32_t bits = info.bitsPerPlane;
        const int32_t mask = (1 << bits) - 1;
        for (int32_t x = 0; x < width; ++x) {
            const int64_t bitPosition = int64_t{x} * bits;
            const int32_t shift = 8 - bits - static_cast<int32_t>(bitPosition % 8);
            int32_t index = 0;
            for (int32_t p = 0; p < info.planes; ++p) {
                int32_t value = (line[p * plane + bitPosition / 8] >> shift) & mask;
                index |= value << (p * bits);
            }
            out[x] = static_cast<uint8_t>(index);
        }
        return;
    }
    case RowForm::Colour:
        for (int32_t x = 0; x < width; ++x) {
            out[3 * x] = line[2 * plane + x];
            out[3 * x + 1] = line[plane + x];
            out[3 * x + 2] = line[x];
        }
        return;
    }
}

// ---- Writing --------------------------------------------------------------------------------

// Encodes `count` bytes into `out` (room for twice as many) and returns the
// encoded length. Runs stop at 63 bytes and at the end of the plane; a byte
// that looks like a run count is always written as a run of 1.
int64_t EncodePlane(const uint8_t* bytes, int64_t count, uint8_t* out)
{
    int64_t length = 0;
    for (int64_t i = 0; i < count;) {
        const uint8_t value = bytes[i];
        int32_t run = 1;
        while (i + run < count && run < kLongestRun && bytes[i + run] == value) ++run;
        if (run > 1 || (value & kRunFlags) == kRunFlags) {
            out[length++] = static_cast<uint8_t>(kRunFlags | run);
        }
        out[length++] = value;
        i += run;
    }
    return length;
}

}  // namespace

// ---- Reading and writing --------------------------------------------------------------------

bool LooksLikePcx(const uint8_t* bytes, size_t count)
{
    if (count < 4 || bytes[0] != kManufacturer || bytes[2] > 1) return false;
    const int32_t version = bytes[1];
    const int32_t bits = bytes[3];
    if (version != 0 && (version < 2 || version > 5)) return false;
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8) return false;
    return count < 66 || (bytes[65] >= 1 && bytes[65] <= 4);
}

int32_t PcxRead(File& file, const LibraryReader& reader)
{
    PcxInfo info;
    LibraryHeader header;
    if (!ReadHeader(file, info) || !ReadPalette(file, info, header) || !CheckDataSize(info)) {
        return kLibraryFailed;
    }
    header.width = info.width;
    header.height = info.height;
    header.xResolution = RoundToInt(info.xDpi / kMetresPerInch);
    header.yResolution = RoundToInt(info.yDpi / kMetresPerInch);
    switch (info.form) {
    case RowForm::Bits:
        header.bitsPerPixel = 1;
        std::memset(header.palette[1], 255, 3);
        header.colorsUsed = 2;
        break;
    case RowForm::Indices: header.bitsPerPixel = 8; break;
    case RowForm::Colour: header.bitsPerPixel = 24; break;
    }
    const auto outBytes = static_cast<int32_t>(RowBytes(info.width, header.bitsPerPixel));
    const int64_t imageSize = int64_t{outBytes} * info.height;
    header.imageSize = imageSize <= INT32_MAX ? static_cast<int32_t>(imageSize) : 0;
    int32_t result = reader.header(header, reader.context);
    if (result != 0) return Stopped(result);

    Decoder in;
    const int64_t lineBytes = info.bytesPerLine * info.planes;
    ByteBuffer line, out;
    if (!ByteSourceStart(in.bytes, file, kHeaderSize, info.dataEnd) || !Allocate(line, lineBytes) ||
        !Allocate(out, outBytes)) {
        return kLibraryFailed;
    }
    for (int32_t r = 0; r < info.height; ++r) {
        if (!DecodeLine(in, info.encoded, line.get(), lineBytes))
            return Refuse("truncated pixel data");
        ConvertLine(info, line.get(), out.get());
        result = reader.row(out.get(), reader.context, r, outBytes);
        if (result != 0) return Stopped(result);
    }
    return 0;
}

int32_t PcxWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header, 0x10000)) return refused;
    const int32_t bits = header.bitsPerPixel;
    const int32_t width = header.width;
    const int32_t height = header.height;
    const int32_t planes = bits == 24 ? 3 : 1;
    const int64_t planeBytes = RowBytes(width, bits == 1 ? 1 : 8);
    const int64_t bytesPerLine = (planeBytes + 1) / 2 * 2;  // always even
    const bool gray = bits == 8 && IsGrayRamp(header);

    uint8_t head[kHeaderSize] = {};
    head[0] = kManufacturer;
    head[1] = 5;
    head[2] = 1;
    head[3] = bits == 1 ? 1 : 8;
    Put16(head + 8, static_cast<uint32_t>(width - 1));
    Put16(head + 10, static_cast<uint32_t>(height - 1));
    Put16(head + 12, static_cast<uint32_t>(
                         std::clamp(RoundToInt(header.xResolution * kMetresPerInch), 0, 0xFFFF)));
    Put16(head + 14, static_cast<uint32_t>(
                         std::clamp(RoundToInt(header.yResolution * kMetresPerInch), 0, 0xFFFF)));
    if (bits == 1) std::memset(head + 19, 255, 3);  // entry 1 white
    head[65] = static_cast<uint8_t>(planes);
    Put16(head + 66, static_cast<uint32_t>(bytesPerLine));
    Put16(head + 68, gray ? 2 : 1);
    if (!SeekTo(file, 0) || !WriteAll(file, kHeaderSize, head)) return kLibraryFailed;

    // Each row from the top: its planes padded to bytesPerLine, each plane
    // encoded on its own.
    ByteBuffer given, line, encoded;
    if (!Allocate(given, planeBytes * planes) || !Allocate(line, bytesPerLine * planes) ||
        !Allocate(encoded, 2 * bytesPerLine * planes)) {
        return kLibraryFailed;
    }
    for (int32_t r = 0; r < height; ++r) {
        given.Clear();
        int32_t result = writer.row(writer.context, given.get(), r);
        if (result != 0) return Stopped(result);
        if (bits == 24) {
            for (int32_t x = 0; x < width; ++x) {
                line[x] = given[3 * x + 2];
                line[bytesPerLine + x] = given[3 * x + 1];
                line[2 * bytesPerLine + x] = given[3 * x];
            }
        } else {
            std::memcpy(line.get(), given.get(), given.size);
            if (bits == 1 && width % 8 != 0) {
                line[planeBytes - 1] &= static_cast<uint8_t>(0xFF00 >> width % 8);
            }
        }
        int64_t length = 0;
        for (int32_t p = 0; p < planes; ++p) {
            length +=
                EncodePlane(line.get() + p * bytesPerLine, bytesPerLine, encoded.get() + length);
        }
        if (!WriteAll(file, length, encoded.get())) return kLibraryFailed;
    }

    if (bits == 8) {
        uint8_t palette[kEndPaletteSize];
        palette[0] = kPaletteMarker;
        for (int32_t i = 0; i < 256; ++i) {
            palette[1 + 3 * i] = header.palette[i][2];
            palette[1 + 3 * i + 1] = header.palette[i][1];
            palette[1 + 3 * i + 2] = header.palette[i][0];
        }
        if (!WriteAll(file, kEndPaletteSize, palette)) return kLibraryFailed;
    }
    return 0;
}

}  // namespace lv
