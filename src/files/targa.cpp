// Targa, the Truevision picture file.
//
// The reader takes colour-mapped (types 1 and 9), true-colour (2 and 10) and
// gray (3 and 11) pictures, uncompressed or run-length encoded: 8-bit
// indices into a map of 15, 16, 24 or 32-bit entries, 15, 16, 24 and 32-bit
// true colour (alpha dropped), 8-bit gray and 16-bit gray with alpha. Rows
// are stored from the bottom or the top and from the left or the right; they
// go out from the top, left to right: 8-bit indices with the map (or a gray
// ramp) as colour table, or 24-bit blue, green, red. Targa stores no
// resolution.
//
// The writer makes an uncompressed file with a bottom-left origin: gray as
// type 3, other colour tables as type 1, true colour as type 2, and 1-bit
// pictures as gray of 0 and 255.
#include <algorithm>
#include <cstring>

#include "files/codec_io.h"
#include "files/library.h"
#include "shell/errors.h"

namespace lv {

namespace {

using namespace codec;

constexpr int64_t kHeaderSize = 18;
constexpr int32_t kLargestRun = 128;  // pixels in one packet

enum TargaType : int32_t {
    kTargaMapped = 1,
    kTargaTrueColour = 2,
    kTargaGray = 3,
    kTargaMappedRle = 9,
    kTargaTrueColourRle = 10,
    kTargaGrayRle = 11,
};

// Image descriptor bits.
constexpr uint8_t kRightToLeft = 0x10;
constexpr uint8_t kTopToBottom = 0x20;

constexpr char kFooterSignature[] = "TRUEVISION-XFILE.";

// A 5-bit colour scaled to 0..255, rounded.
uint8_t Scale5(uint32_t value) { return static_cast<uint8_t>(((value & 31) * 255 + 15) / 31); }

// Blue, green, red of a 15 or 16-bit (5-5-5, attribute bit ignored), 24 or
// 32-bit stored colour.
void StoredColour(const uint8_t* p, int32_t bits, uint8_t* bgr)
{
    if (bits == 15 || bits == 16) {
        uint32_t v = Get16(p);
        bgr[0] = Scale5(v);
        bgr[1] = Scale5(v >> 5);
        bgr[2] = Scale5(v >> 10);
    } else {
        std::memcpy(bgr, p, 3);
    }
}

// What the header says about the picture.
struct TargaInfo {
    int64_t fileSize = 0;
    int32_t type = 0;
    bool runLengths = false;
    bool mapped = false;
    bool gray = false;
    int32_t mapFirst = 0;
    int32_t mapLength = 0;
    int32_t mapEntryBits = 0;
    int64_t mapStart = 0;
    int64_t dataStart = 0;
    int32_t width = 0;
    int32_t height = 0;
    int32_t pixelBits = 0;
    int32_t pixelBytes = 0;
    bool topDown = false;
    bool rightToLeft = false;
};

// The reason for a header whose picture is empty or that the file cannot
// hold.
std::string ClaimedSize(const TargaInfo& info)
{
    return FormatText("header claims %d x %d pixels", info.width, info.height);
}

bool ReadHeader(File& file, TargaInfo& info)
{
    uint8_t h[kHeaderSize];
    if (FileSize(file, info.fileSize) != kOk) return Reject(SystemReason("cannot size the file"));
    if (info.fileSize < kHeaderSize) return Reject("truncated header");
    if (!ReadAt(file, 0, kHeaderSize, h, "truncated header")) return false;

    const int32_t idLength = h[0];
    const int32_t mapType = h[1];
    info.type = h[2];
    info.mapFirst = Get16(h + 3);
    info.mapLength = Get16(h + 5);
    info.mapEntryBits = h[7];
    info.width = Get16(h + 12);
    info.height = Get16(h + 14);
    info.pixelBits = h[16];
    info.pixelBytes = (info.pixelBits + 7) / 8;
    info.rightToLeft = (h[17] & kRightToLeft) != 0;
    info.topDown = (h[17] & kTopToBottom) != 0;

    switch (info.type) {
    case kTargaMapped:
    case kTargaMappedRle:
        // 8-bit indices into a map that 8-bit indices can reach.
        info.mapped = true;
        if (mapType != 1 || info.mapLength == 0 || info.mapFirst + info.mapLength > 256)
            return Reject("bad colour map");
        if (info.pixelBits != 8)
            return Reject(FormatText("unsupported colour-mapped depth of %d bits", info.pixelBits));
        if (info.mapEntryBits != 15 && info.mapEntryBits != 16 && info.mapEntryBits != 24 &&
            info.mapEntryBits != 32) {
            return Reject(
                FormatText("unsupported colour map entries of %d bits", info.mapEntryBits));
        }
        break;
    case kTargaTrueColour:
    case kTargaTrueColourRle:
        if (info.pixelBits != 15 && info.pixelBits != 16 && info.pixelBits != 24 &&
            info.pixelBits != 32) {
            return Reject(FormatText("unsupported true-colour depth of %d bits", info.pixelBits));
        }
        break;
    case kTargaGray:
    case kTargaGrayRle:
        // 16 bits are gray and alpha.
        info.gray = true;
        if (info.pixelBits != 8 && info.pixelBits != 16)
            return Reject(FormatText("unsupported gray depth of %d bits", info.pixelBits));
        break;
    default: return Reject(FormatText("unsupported image type %d", info.type));
    }
    info.runLengths = info.type >= kTargaMappedRle;
    if (mapType > 1) return Reject(FormatText("unknown colour map type %d", mapType));
    if (info.width == 0 || info.height == 0) return Reject(ClaimedSize(info));

    // The image ID field, then the colour map (skipped when the pixels do not
    // use it), then the pixels.
    info.mapStart = kHeaderSize + idLength;
    int64_t mapBytes = mapType == 1 ? int64_t{info.mapLength} * ((info.mapEntryBits + 7) / 8) : 0;
    info.dataStart = info.mapStart + mapBytes;
    return info.dataStart < info.fileSize || Reject("no pixel data");
}

// Puts the colour map (or, for gray, a ramp) in the program's colour table.
bool ReadColourTable(File& file, const TargaInfo& info, LibraryHeader& header)
{
    if (info.gray) {
        for (int32_t i = 0; i < 256; ++i) std::memset(header.palette[i], i, 3);
        header.colorsUsed = 256;
        return true;
    }
    const int32_t entryBytes = (info.mapEntryBits + 7) / 8;
    uint8_t stored[256 * 4];
    if (!ReadAt(file, info.mapStart, int64_t{info.mapLength} * entryBytes, stored,
                "truncated colour map")) {
        return false;
    }
    for (int32_t i = 0; i < info.mapLength; ++i) {
        StoredColour(stored + i * entryBytes, info.mapEntryBits, header.palette[info.mapFirst + i]);
    }
    header.colorsUsed = info.mapFirst + info.mapLength;
    return true;
}

// The pixel data must be in the file: all of it when uncompressed, and when
// run-length encoded at least one packet for every 128 pixels.
bool CheckDataSize(const TargaInfo& info)
{
    const int64_t dataBytes = info.fileSize - info.dataStart;
    const int64_t pixels = int64_t{info.width} * info.height;
    const bool fits =
        info.runLengths
            ? (pixels + kLargestRun - 1) / kLargestRun * (1 + info.pixelBytes) <= dataBytes
            : pixels * info.pixelBytes <= dataBytes;
    return fits || Reject(ClaimedSize(info));
}

// ---- Pixels -------------------------------------------------------------------------------

// Sequential reading of the pixel data through a small buffer, with the
// state of the run-length packet under way. Packets may run on from one row
// into the next.
struct Input {
    ByteSource bytes;
    int32_t packetLeft = 0;  // pixels still to come from the packet
    bool packetIsRun = false;
    uint8_t runPixel[4] = {};
};

// Starts reading at `position`, up to `end`.
bool StartInput(Input& in, File& file, int64_t position, int64_t end)
{
    in.packetLeft = 0;
    return ByteSourceStart(in.bytes, file, position, end);
}

bool ReadBytes(Input& in, uint8_t* bytes, int32_t count)
{
    for (int32_t i = 0; i < count; ++i)
        if (!NextByte(in.bytes, bytes[i])) return false;
    return true;
}

// The next stored pixel, from a packet when the data is run-length encoded:
// a packet byte with its high bit set repeats the one pixel after it, one
// without gives that many pixels as they are (count in the low 7 bits, plus 1).
bool NextPixel(Input& in, const TargaInfo& info, uint8_t* pixel)
{
    if (!info.runLengths) return ReadBytes(in, pixel, info.pixelBytes);
    if (in.packetLeft == 0) {
        uint8_t packet;
        if (!ReadBytes(in, &packet, 1)) return false;
        in.packetLeft = (packet & 0x7F) + 1;
        in.packetIsRun = (packet & 0x80) != 0;
        if (in.packetIsRun && !ReadBytes(in, in.runPixel, info.pixelBytes)) return false;
    }
    --in.packetLeft;
    if (in.packetIsRun) {
        std::memcpy(pixel, in.runPixel, static_cast<size_t>(info.pixelBytes));
        return true;
    }
    return ReadBytes(in, pixel, info.pixelBytes);
}

// Reads the next stored row into `out`, left to right. An index outside the
// colour map makes the file unreadable. False with the reason.
bool ReadRow(Input& in, const TargaInfo& info, uint8_t* out)
{
    const int32_t outPixelBytes = info.mapped || info.gray ? 1 : 3;
    for (int32_t i = 0; i < info.width; ++i) {
        uint8_t pixel[4];
        if (!NextPixel(in, info, pixel)) return Reject("truncated pixel data");
        int32_t x = info.rightToLeft ? info.width - 1 - i : i;
        uint8_t* target = out + int64_t{x} * outPixelBytes;
        if (info.mapped) {
            if (pixel[0] < info.mapFirst || pixel[0] >= info.mapFirst + info.mapLength) {
                return Reject(FormatText("colour index %d outside the map", pixel[0]));
            }
            *target = pixel[0];
        } else if (info.gray) {
            *target = pixel[0];
        } else {
            StoredColour(pixel, info.pixelBits, target);
        }
    }
    return true;
}

int32_t DeliverRows(File& file, const TargaInfo& info, const LibraryReader& reader,
                    int32_t outBytes)
{
    Input in;
    if (!StartInput(in, file, info.dataStart, info.fileSize)) {
        return kLibraryFailed;
    }
    const int32_t height = info.height;
    ByteBuffer row;
    if (!Allocate(row, outBytes)) return kLibraryFailed;

    if (info.topDown) {
        for (int32_t r = 0; r < height; ++r) {
            if (!ReadRow(in, info, row.get())) return kLibraryFailed;
            int32_t result = reader.row(row.get(), reader.context, r, outBytes);
            if (result != 0) return Stopped(result);
        }
        return 0;
    }
    if (!info.runLengths) {
        // Stored from the bottom: each row is found where it lies.
        const int64_t storedBytes = int64_t{info.width} * info.pixelBytes;
        for (int32_t r = 0; r < height; ++r) {
            int64_t position = info.dataStart + (height - 1 - r) * storedBytes;
            if (!StartInput(in, file, position, position + storedBytes) ||
                !ReadRow(in, info, row.get())) {
                return kLibraryFailed;
            }
            int32_t result = reader.row(row.get(), reader.context, r, outBytes);
            if (result != 0) return Stopped(result);
        }
        return 0;
    }
    // Run-length rows stored from the bottom are decoded whole first.
    ByteBuffer picture;
    if (!Allocate(picture, int64_t{outBytes} * height)) return kLibraryFailed;
    for (int32_t i = 0; i < height; ++i) {
        if (!ReadRow(in, info, picture.get() + int64_t{height - 1 - i} * outBytes)) {
            return kLibraryFailed;
        }
    }
    for (int32_t r = 0; r < height; ++r) {
        int32_t result =
            reader.row(picture.get() + int64_t{r} * outBytes, reader.context, r, outBytes);
        if (result != 0) return Stopped(result);
    }
    return 0;
}

}  // namespace

// ---- Reading and writing --------------------------------------------------------------------

bool LooksLikeTarga(const uint8_t* bytes, size_t count)
{
    if (count < kHeaderSize) return false;
    const int32_t mapType = bytes[1];
    const int32_t mapBits = bytes[7];
    const int32_t pixelBits = bytes[16];
    if (mapType > 1 || Get16(bytes + 12) == 0 || Get16(bytes + 14) == 0) return false;
    switch (bytes[2]) {
    case kTargaMapped:
    case kTargaMappedRle:
        return mapType == 1 && pixelBits == 8 &&
               (mapBits == 15 || mapBits == 16 || mapBits == 24 || mapBits == 32);
    case kTargaTrueColour:
    case kTargaTrueColourRle:
        return pixelBits == 15 || pixelBits == 16 || pixelBits == 24 || pixelBits == 32;
    case kTargaGray:
    case kTargaGrayRle: return pixelBits == 8 || pixelBits == 16;
    default: return false;
    }
}

int32_t TargaRead(File& file, const LibraryReader& reader)
{
    TargaInfo info;
    if (!ReadHeader(file, info) || !CheckDataSize(info)) return kLibraryFailed;
    LibraryHeader header;
    header.width = info.width;
    header.height = info.height;
    const bool indexed = info.mapped || info.gray;
    header.bitsPerPixel = indexed ? 8 : 24;
    const auto outBytes = static_cast<int32_t>(RowBytes(info.width, header.bitsPerPixel));
    const int64_t imageSize = int64_t{outBytes} * info.height;
    header.imageSize = imageSize <= INT32_MAX ? static_cast<int32_t>(imageSize) : 0;
    if (indexed && !ReadColourTable(file, info, header)) return kLibraryFailed;
    int32_t result = reader.header(header, reader.context);
    if (result != 0) return Stopped(result);
    return DeliverRows(file, info, reader, outBytes);
}

int32_t TargaWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header, 0xFFFF)) return refused;
    const int32_t bits = header.bitsPerPixel;
    const int32_t width = header.width;
    const int32_t height = header.height;
    const bool mapped = bits == 8 && !IsGrayRamp(header);
    const int32_t type = bits == 24 ? kTargaTrueColour : (mapped ? kTargaMapped : kTargaGray);
    const int64_t storedBytes = int64_t{width} * (bits == 24 ? 3 : 1);
    const int64_t mapBytes = mapped ? 256 * 3 : 0;
    const int64_t dataStart = kHeaderSize + mapBytes;

    uint8_t head[kHeaderSize + 256 * 3] = {};
    head[1] = mapped ? 1 : 0;
    head[2] = static_cast<uint8_t>(type);
    if (mapped) {
        Put16(head + 5, 256);
        head[7] = 24;
        for (int32_t i = 0; i < 256; ++i)
            std::memcpy(head + kHeaderSize + 3 * i, header.palette[i], 3);
    }
    Put16(head + 12, static_cast<uint32_t>(width));
    Put16(head + 14, static_cast<uint32_t>(height));
    head[16] = bits == 24 ? 24 : 8;
    head[17] = 0;  // bottom-left origin, no attribute bits
    if (!SeekTo(file, 0) || !WriteAll(file, dataStart, head)) return kLibraryFailed;

    // Rows come from the top and are stored from the bottom.
    ByteBuffer given, stored;
    const int64_t givenBytes = RowBytes(width, bits);
    if (!Allocate(given, givenBytes) || !Allocate(stored, storedBytes)) return kLibraryFailed;
    for (int32_t r = 0; r < height; ++r) {
        given.Clear();
        int32_t result = writer.row(writer.context, given.get(), r);
        if (result != 0) return Stopped(result);
        if (bits == 1) {
            for (int32_t x = 0; x < width; ++x) {
                stored[x] = (given[x >> 3] >> (7 - (x & 7))) & 1 ? 255 : 0;
            }
        } else {
            std::memcpy(stored.get(), given.get(), given.size);
        }
        if (!SeekTo(file, dataStart + (height - 1 - r) * storedBytes) ||
            !WriteAll(file, storedBytes, stored.get())) {
            return kLibraryFailed;
        }
    }

    // The footer of the second version of the format, without extension area.
    uint8_t footer[26] = {};
    std::memcpy(footer + 8, kFooterSignature, sizeof kFooterSignature);
    if (!SeekTo(file, dataStart + storedBytes * height) || !WriteAll(file, sizeof footer, footer)) {
        return kLibraryFailed;
    }
    return 0;
}

}  // namespace lv
