// BMP, the Windows and OS/2 bitmap file.
//
// The reader takes the OS/2 core header (12 bytes), the OS/2 2.x header and
// the Windows headers of 40 to 124 bytes; 1, 2, 4 and 8-bit pixels through a
// colour table, uncompressed or run-length encoded (RLE4, RLE8); 16 and
// 32-bit pixels with the default 5-5-5 and 8-8-8 layouts or bit-field masks;
// 24-bit pixels; bottom-up and top-down row order. Rows go out from the top:
// 1 bit when the table is black and white, 8-bit indices for any other
// table, 24-bit blue, green, red otherwise.
//
// The writer makes an uncompressed bottom-up file with a 40-byte header.
#include <algorithm>
#include <cstring>

#include "files/codec_io.h"
#include "files/library.h"
#include "shell/errors.h"

namespace lv {

namespace {

using namespace codec;

constexpr int64_t kFileHeaderSize = 14;
constexpr int64_t kCoreHeaderSize = 12;
constexpr int64_t kInfoHeaderSize = 40;
constexpr int64_t kLargestHeaderSize = 124;

enum BmpCompression : uint32_t {
    kBmpRgb = 0,
    kBmpRle8 = 1,
    kBmpRle4 = 2,
    kBmpBitFields = 3,
    kBmpAlphaBitFields = 6,
};

// Colour space types of the 124-byte header that come with a profile.
constexpr uint32_t kProfileEmbedded = 0x4D424544;  // "MBED"
constexpr uint32_t kProfileLinked = 0x4C494E4B;    // "LINK"

// Bytes of a stored row: whole 32-bit words.
int64_t StoredRowBytes(int64_t width, int32_t bitCount) { return (width * bitCount + 31) / 32 * 4; }

// One colour of a 16 or 32-bit pixel: where its bits are and their largest
// value. A colour without bits reads as 0.
struct Channel {
    uint32_t mask = 0;
    int32_t shift = 0;
    uint32_t largest = 0;
};

Channel MakeChannel(uint32_t mask)
{
    Channel channel;
    if (mask == 0) return channel;
    channel.mask = mask;
    while (((mask >> channel.shift) & 1) == 0) ++channel.shift;
    channel.largest = mask >> channel.shift;
    return channel;
}

// The colour scaled to 0..255, rounded.
uint8_t ChannelValue(const Channel& channel, uint32_t pixel)
{
    if (channel.largest == 0) return 0;
    uint64_t value = (pixel & channel.mask) >> channel.shift;
    return static_cast<uint8_t>((value * 255 + channel.largest / 2) / channel.largest);
}

// What the headers say about the picture.
struct BmpInfo {
    int64_t fileSize = 0;
    bool core = false;  // OS/2 core header: colour table entries of 3 bytes
    int32_t width = 0;
    int32_t height = 0;  // rows; the sign of the stored height is in topDown
    bool topDown = false;
    int32_t bitCount = 0;
    uint32_t compression = kBmpRgb;
    int64_t dataOffset = 0;
    int32_t xPerMetre = 0;
    int32_t yPerMetre = 0;
    uint32_t colorsUsed = 0;
    uint32_t masks[3] = {};  // red, green, blue
    int64_t tableStart = 0;  // the colour table follows the headers and masks
    int64_t profileStart = 0;
    int64_t profileEnd = 0;  // 0 when no profile is stored in the file
    int32_t tableCount = 0;
    uint8_t table[256][4] = {};  // blue, green, red, spare
};

// The reason for a header whose picture the file cannot hold.
std::string ClaimedSize(const BmpInfo& info)
{
    return FormatText("header claims %d x %d pixels", info.width, info.height);
}

// How the rows go out.
enum class RowForm { Bits, Indices, Colour };

struct BmpRows {
    RowForm form = RowForm::Colour;
    bool invertBits = false;  // a 1-bit file whose entry 0 is white
    int64_t storedBytes = 0;
    int64_t outBytes = 0;
    Channel red, green, blue;
};

// ---- Headers ------------------------------------------------------------------------

bool ValidCompression(const BmpInfo& info)
{
    switch (info.compression) {
    case kBmpRgb: return true;
    case kBmpRle8: return info.bitCount == 8 && !info.topDown;
    case kBmpRle4: return info.bitCount == 4 && !info.topDown;
    case kBmpBitFields:
    case kBmpAlphaBitFields: return info.bitCount == 16 || info.bitCount == 32;
    default: return false;  // embedded JPEG or PNG, OS/2 Huffman and RLE24
    }
}

// Takes the fields of the bitmap header: the OS/2 core header has 16-bit
// sizes; the others 32-bit ones, a negative height for top-down rows, and
// from 20 bytes on the compression, resolution and colours used.
bool ParseBitmapHeader(const uint8_t* fields, int64_t headerSize, BmpInfo& info)
{
    if (headerSize == kCoreHeaderSize) {
        info.core = true;
        info.width = Get16(fields + 4);
        info.height = Get16(fields + 6);
        info.bitCount = Get16(fields + 10);
    } else {
        info.width = static_cast<int32_t>(Get32(fields + 4));
        int32_t height = static_cast<int32_t>(Get32(fields + 8));
        if (height == INT32_MIN) return Reject("header claims a height of -2147483648 pixels");
        info.topDown = height < 0;
        info.height = height < 0 ? -height : height;
        info.bitCount = Get16(fields + 14);
        info.compression = Get32(fields + 16);
        info.xPerMetre = std::max(0, static_cast<int32_t>(Get32(fields + 24)));
        info.yPerMetre = std::max(0, static_cast<int32_t>(Get32(fields + 28)));
        info.colorsUsed = Get32(fields + 32);
    }
    const int32_t bits = info.bitCount;
    if (info.width <= 0 || info.height <= 0) return Reject(ClaimedSize(info));
    if (bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32)
        return true;
    return Reject(FormatText("unsupported depth of %d bits", bits));
}

// The masks of 16 and 32-bit pixels: the defaults (5-5-5 and 8-8-8), or with
// bit fields those inside a header of 52 bytes or more, or after a 40-byte
// one (red, green, blue, and an alpha mask with alpha bit fields), which
// moves the colour table on.
bool TakeMasks(const uint8_t* bytes, int64_t count, const uint8_t* fields, int64_t headerSize,
               BmpInfo& info)
{
    const bool bitFields =
        info.compression == kBmpBitFields || info.compression == kBmpAlphaBitFields;
    if (bitFields && headerSize >= 52) {
        for (int32_t i = 0; i < 3; ++i) info.masks[i] = Get32(fields + 40 + 4 * i);
    } else if (bitFields) {
        int64_t maskBytes = info.compression == kBmpAlphaBitFields ? 16 : 12;
        if (info.tableStart + maskBytes > count) return Reject("truncated bit-field masks");
        for (int32_t i = 0; i < 3; ++i) info.masks[i] = Get32(bytes + info.tableStart + 4 * i);
        info.tableStart += maskBytes;
    } else if (info.bitCount == 16) {
        info.masks[0] = 0x7C00;
        info.masks[1] = 0x03E0;
        info.masks[2] = 0x001F;
    } else if (info.bitCount == 32) {
        info.masks[0] = 0xFF0000;
        info.masks[1] = 0x00FF00;
        info.masks[2] = 0x0000FF;
    }
    return true;
}

// Reads the file header, the bitmap header and any masks after it.
bool ReadHeaders(File& file, BmpInfo& info)
{
    if (FileSize(file, info.fileSize) != kOk) return Reject(SystemReason("cannot size the file"));
    uint8_t bytes[kFileHeaderSize + kLargestHeaderSize + 16] = {};
    int64_t count = std::min<int64_t>(sizeof bytes, info.fileSize);
    if (count < 2) return Reject("not a BMP file");
    if (!ReadAt(file, 0, count, bytes, "truncated header")) return false;
    if (bytes[0] != 'B' || bytes[1] != 'M') return Reject("not a BMP file");
    if (count < kFileHeaderSize + kCoreHeaderSize) return Reject("truncated header");
    info.dataOffset = Get32(bytes + 10);

    // Windows headers have 40, 52, 56, 108 or 124 bytes; OS/2 ones 12, or 16
    // to 64, where fields past the end read as 0.
    const int64_t headerSize = Get32(bytes + kFileHeaderSize);
    bool windows = headerSize == 40 || headerSize == 52 || headerSize == 56 || headerSize == 108 ||
                   headerSize == kLargestHeaderSize;
    bool os2 = headerSize == kCoreHeaderSize || (headerSize >= 16 && headerSize <= 64 && !windows);
    if (!windows && !os2) return Reject(FormatText("unknown header size of %d bytes", headerSize));
    if (kFileHeaderSize + headerSize > info.fileSize) return Reject("truncated header");
    uint8_t fields[kLargestHeaderSize] = {};
    std::memcpy(fields, bytes + kFileHeaderSize, static_cast<size_t>(headerSize));
    if (!ParseBitmapHeader(fields, headerSize, info)) return false;
    // OS/2 2.x numbers its compressions 3 and 4 differently (Huffman, RLE24).
    if ((os2 && info.compression > kBmpRle4) || !ValidCompression(info))
        return Reject(FormatText("unsupported compression %d with %d bits",
                                 static_cast<int64_t>(info.compression), info.bitCount));

    info.tableStart = kFileHeaderSize + headerSize;
    if (!TakeMasks(bytes, count, fields, headerSize, info)) return false;
    if (headerSize == kLargestHeaderSize) {
        uint32_t space = Get32(fields + 56);
        if (space == kProfileEmbedded || space == kProfileLinked) {
            info.profileStart = kFileHeaderSize + static_cast<int64_t>(Get32(fields + 112));
            info.profileEnd = info.profileStart + static_cast<int64_t>(Get32(fields + 116));
        }
    }
    if (info.dataOffset < info.tableStart || info.dataOffset >= info.fileSize)
        return Reject("pixel data offset outside the file");
    return true;
}

// Reads the colour table of a picture of 8 bits or fewer. The entries a
// header declares must lie between the headers and the pixels; a table that
// the pixel data leaves no room for becomes a gray ramp.
bool ReadColourTable(File& file, BmpInfo& info)
{
    if (info.bitCount > 8) return true;
    const int64_t entrySize = info.core ? 3 : 4;
    const int64_t entries = int64_t{1} << info.bitCount;
    const int64_t room = (info.dataOffset - info.tableStart) / entrySize;
    if (info.colorsUsed > room) return Reject("colour table overlaps the pixels");
    int64_t count = info.colorsUsed != 0 ? info.colorsUsed : entries;
    count = std::min({count, room, entries});

    if (count == 0) {
        for (int64_t i = 0; i < entries; ++i) {
            auto level = static_cast<uint8_t>(i * 255 / (entries - 1));
            std::memset(info.table[i], level, 3);
        }
        info.tableCount = static_cast<int32_t>(entries);
        return true;
    }
    uint8_t stored[256 * 4];
    if (!ReadAt(file, info.tableStart, count * entrySize, stored, "truncated colour table"))
        return false;
    for (int64_t i = 0; i < count; ++i) std::memcpy(info.table[i], stored + i * entrySize, 3);
    info.tableCount = static_cast<int32_t>(count);
    return true;
}

// Checks the pixel data against the file. Uncompressed rows must all be in
// the file, and the file must not hold a row or more beyond them (apart from
// a colour profile stored after them): such a file has a header that does
// not describe it. Run-length data can be any amount smaller than its
// picture (its end code leaves the rest blank), so it needs only a code.
bool CheckDataSize(const BmpInfo& info)
{
    const int64_t dataBytes = info.fileSize - info.dataOffset;
    if (info.compression == kBmpRle8 || info.compression == kBmpRle4)
        return dataBytes >= 2 || Reject("no pixel data");
    const int64_t rowBytes = StoredRowBytes(info.width, info.bitCount);
    if (rowBytes > dataBytes / info.height) return Reject(ClaimedSize(info));
    int64_t end = info.dataOffset + rowBytes * info.height;
    if (info.profileEnd > 0 && info.profileStart >= end && info.profileEnd <= info.fileSize) {
        end = info.profileEnd;
    }
    if (info.fileSize - end >= std::max<int64_t>(rowBytes, 16))
        return Reject("file holds more than its header describes");
    return true;
}

// Settles how the rows go out and fills in the program's header.
bool PlanRows(const BmpInfo& info, BmpRows& rows, LibraryHeader& header)
{
    rows.storedBytes = StoredRowBytes(info.width, info.bitCount);
    if (info.bitCount == 1 && info.tableCount == 2) {
        static const uint8_t kBlack[3] = {0, 0, 0};
        static const uint8_t kWhite[3] = {255, 255, 255};
        bool blackWhite =
            !std::memcmp(info.table[0], kBlack, 3) && !std::memcmp(info.table[1], kWhite, 3);
        bool whiteBlack =
            !std::memcmp(info.table[0], kWhite, 3) && !std::memcmp(info.table[1], kBlack, 3);
        if (blackWhite || whiteBlack) {
            rows.form = RowForm::Bits;
            rows.invertBits = whiteBlack;
        } else {
            rows.form = RowForm::Indices;
        }
    } else {
        rows.form = info.bitCount <= 8 ? RowForm::Indices : RowForm::Colour;
    }
    rows.red = MakeChannel(info.masks[0]);
    rows.green = MakeChannel(info.masks[1]);
    rows.blue = MakeChannel(info.masks[2]);

    header.width = info.width;
    header.height = info.height;
    header.xResolution = info.xPerMetre;
    header.yResolution = info.yPerMetre;
    switch (rows.form) {
    case RowForm::Bits:
        header.bitsPerPixel = 1;
        std::memset(header.palette[1], 255, 3);
        header.colorsUsed = 2;
        break;
    case RowForm::Indices:
        header.bitsPerPixel = 8;
        std::memcpy(header.palette, info.table, sizeof info.table);
        header.colorsUsed = info.tableCount;
        break;
    case RowForm::Colour: header.bitsPerPixel = 24; break;
    }
    rows.outBytes = RowBytes(info.width, header.bitsPerPixel);
    if (rows.outBytes > INT32_MAX) return Reject(ClaimedSize(info));
    int64_t imageSize = rows.outBytes * info.height;
    header.imageSize = imageSize <= INT32_MAX ? static_cast<int32_t>(imageSize) : 0;
    return true;
}

// ---- Uncompressed rows ----------------------------------------------------------------

// Turns one stored row into the form the program takes.
void ConvertRow(const BmpInfo& info, const BmpRows& rows, const uint8_t* in, uint8_t* out)
{
    const int32_t width = info.width;
    switch (info.bitCount) {
    case 1:
        if (rows.form == RowForm::Bits) {
            for (int64_t i = 0; i < rows.outBytes; ++i) {
                out[i] = rows.invertBits ? static_cast<uint8_t>(~in[i]) : in[i];
            }
            if (width % 8 != 0) out[rows.outBytes - 1] &= static_cast<uint8_t>(0xFF00 >> width % 8);
            return;
        }
        [[fallthrough]];
    case 2:
    case 4:
    case 8: {
        const int32_t bits = info.bitCount;
        const int32_t perByte = 8 / bits;
        const int32_t mask = (1 << bits) - 1;
        for (int32_t x = 0; x < width; ++x) {
            int32_t shift = 8 - bits * (x % perByte + 1);
            out[x] = static_cast<uint8_t>((in[x / perByte] >> shift) & mask);
        }
        return;
    }
    case 24: std::memcpy(out, in, static_cast<size_t>(width) * 3); return;
    default:
        for (int32_t x = 0; x < width; ++x) {
            uint32_t pixel = info.bitCount == 16 ? Get16(in + 2 * x) : Get32(in + 4 * x);
            out[3 * x] = ChannelValue(rows.blue, pixel);
            out[3 * x + 1] = ChannelValue(rows.green, pixel);
            out[3 * x + 2] = ChannelValue(rows.red, pixel);
        }
        return;
    }
}

int32_t DeliverStoredRows(File& file, const BmpInfo& info, const BmpRows& rows,
                          const LibraryReader& reader)
{
    ByteBuffer stored, out;
    if (!Allocate(stored, rows.storedBytes) || !Allocate(out, rows.outBytes)) {
        return kLibraryFailed;
    }
    for (int32_t r = 0; r < info.height; ++r) {
        int64_t fileRow = info.topDown ? r : info.height - 1 - r;
        if (!ReadAt(file, info.dataOffset + fileRow * rows.storedBytes, rows.storedBytes,
                    stored.get(), "truncated pixel data")) {
            return kLibraryFailed;
        }
        ConvertRow(info, rows, stored.get(), out.get());
        int32_t result =
            reader.row(out.get(), reader.context, r, static_cast<int32_t>(rows.outBytes));
        if (result != 0) return Stopped(result);
    }
    return 0;
}

// ---- Run-length rows --------------------------------------------------------------------

// Decodes RLE4 or RLE8 data into `pixels`, one index a byte, bottom row
// first. Runs and absolute stretches that pass the end of a row are clipped,
// as is a delta that leaves the picture; pixels never reached keep index 0.
// False, with the reason, when the data ends before the picture or its
// end-of-bitmap mark.
bool DecodeRunLengths(File& file, const BmpInfo& info, ByteBuffer& pixels)
{
    ByteSource in;
    if (!ByteSourceStart(in, file, info.dataOffset, info.fileSize)) return false;
    const char* const kTruncated = "truncated run-length data";

    const bool nibbles = info.compression == kBmpRle4;
    const int64_t width = info.width;
    const int64_t height = info.height;
    int64_t x = 0;
    int64_t y = 0;  // from the bottom
    auto put = [&](uint8_t index) {
        if (x < width && y < height) pixels[static_cast<size_t>(y * width + x)] = index;
        ++x;
    };
    while (y < height) {
        uint8_t count, value;
        if (!NextByte(in, count) || !NextByte(in, value)) return Reject(kTruncated);
        if (count > 0) {
            // A run: RLE8 repeats the byte, RLE4 alternates its two nibbles.
            for (int32_t i = 0; i < count && x < width; ++i) {
                put(nibbles ? static_cast<uint8_t>(i % 2 ? value & 15 : value >> 4) : value);
            }
            continue;
        }
        switch (value) {
        case 0:  // end of line
            x = 0;
            ++y;
            break;
        case 1: return true;  // end of bitmap
        case 2: {             // delta: move right and up
            uint8_t dx, dy;
            if (!NextByte(in, dx) || !NextByte(in, dy)) return Reject(kTruncated);
            x += dx;
            y += dy;
            break;
        }
        default: {  // absolute: `value` pixels follow, padded to an even byte count
            int32_t bytes = nibbles ? (value + 1) / 2 : value;
            for (int32_t i = 0; i < bytes; ++i) {
                uint8_t byte;
                if (!NextByte(in, byte)) return Reject(kTruncated);
                if (!nibbles) {
                    put(byte);
                    continue;
                }
                put(static_cast<uint8_t>(byte >> 4));
                if (2 * i + 1 < value) put(static_cast<uint8_t>(byte & 15));
            }
            uint8_t pad;
            if (bytes % 2 != 0 && !NextByte(in, pad)) return Reject(kTruncated);
            break;
        }
        }
    }
    return true;
}

int32_t DeliverRunLengthRows(File& file, const BmpInfo& info, const LibraryReader& reader)
{
    ByteBuffer pixels;
    if (!Allocate(pixels, int64_t{info.width} * info.height)) return kLibraryFailed;
    if (!DecodeRunLengths(file, info, pixels)) return kLibraryFailed;
    for (int32_t r = 0; r < info.height; ++r) {
        const uint8_t* row = pixels.get() + int64_t{info.height - 1 - r} * info.width;
        int32_t result = reader.row(row, reader.context, r, info.width);
        if (result != 0) return Stopped(result);
    }
    return 0;
}

}  // namespace

// ---- Reading and writing --------------------------------------------------------------------

bool LooksLikeBmp(const uint8_t* bytes, size_t count)
{
    if (count < 2 || bytes[0] != 'B' || bytes[1] != 'M') return false;
    if (count < 18) return true;
    uint32_t headerSize = Get32(bytes + 14);
    return headerSize == 12 || (headerSize >= 16 && headerSize <= 64) || headerSize == 108 ||
           headerSize == 124;
}

int32_t BmpRead(File& file, const LibraryReader& reader)
{
    BmpInfo info;
    if (!ReadHeaders(file, info) || !ReadColourTable(file, info) || !CheckDataSize(info)) {
        return kLibraryFailed;
    }
    BmpRows rows;
    LibraryHeader header;
    if (!PlanRows(info, rows, header)) return kLibraryFailed;
    int32_t result = reader.header(header, reader.context);
    if (result != 0) return Stopped(result);
    if (info.compression == kBmpRle8 || info.compression == kBmpRle4) {
        return DeliverRunLengthRows(file, info, reader);
    }
    return DeliverStoredRows(file, info, rows, reader);
}

int32_t BmpWrite(File& file, const LibraryWriter& writer)
{
    const LibraryHeader& header = *writer.header;
    if (int32_t refused = CheckWriteHeader(header)) return refused;
    const int32_t bits = header.bitsPerPixel;
    const int64_t width = header.width;
    const int64_t height = header.height;
    const int64_t rowBytes = StoredRowBytes(width, bits);
    const int64_t givenBytes = RowBytes(width, bits);
    const int32_t colours = bits == 1 ? 2 : (bits == 8 ? 256 : 0);
    const int64_t dataOffset = kFileHeaderSize + kInfoHeaderSize + 4 * colours;
    const int64_t fileSize = dataOffset + rowBytes * height;
    if (fileSize > UINT32_MAX) return Refuse("picture too large for a BMP file");

    // The file header, the 40-byte header and the colour table. A 1-bit
    // picture gets black and white, so that a set bit shows white.
    uint8_t head[kFileHeaderSize + kInfoHeaderSize + 4 * 256] = {};
    head[0] = 'B';
    head[1] = 'M';
    Put32(head + 2, static_cast<uint32_t>(fileSize));
    Put32(head + 10, static_cast<uint32_t>(dataOffset));
    uint8_t* info = head + kFileHeaderSize;
    Put32(info, kInfoHeaderSize);
    Put32(info + 4, static_cast<uint32_t>(width));
    Put32(info + 8, static_cast<uint32_t>(height));
    Put16(info + 12, 1);
    Put16(info + 14, static_cast<uint32_t>(bits));
    Put32(info + 16, kBmpRgb);
    Put32(info + 20, static_cast<uint32_t>(rowBytes * height));
    Put32(info + 24, static_cast<uint32_t>(std::max(0, header.xResolution)));
    Put32(info + 28, static_cast<uint32_t>(std::max(0, header.yResolution)));
    Put32(info + 32, static_cast<uint32_t>(colours));
    uint8_t* table = info + kInfoHeaderSize;
    if (bits == 1) {
        std::memset(table + 4, 255, 3);
    } else if (bits == 8) {
        for (int32_t i = 0; i < 256; ++i) std::memcpy(table + 4 * i, header.palette[i], 3);
    }
    if (!SeekTo(file, 0) || !WriteAll(file, dataOffset, head)) return kLibraryFailed;

    // Rows come from the top and are stored from the bottom.
    ByteBuffer row;
    if (!Allocate(row, rowBytes)) return kLibraryFailed;
    for (int64_t r = 0; r < height; ++r) {
        row.Clear();
        int32_t result = writer.row(writer.context, row.get(), static_cast<int32_t>(r));
        if (result != 0) return Stopped(result);
        std::memset(row.get() + givenBytes, 0, static_cast<size_t>(rowBytes - givenBytes));
        if (bits == 1 && width % 8 != 0) {
            row[static_cast<size_t>(givenBytes - 1)] &= static_cast<uint8_t>(0xFF00 >> width % 8);
        }
        if (!SeekTo(file, dataOffset + (height - 1 - r) * rowBytes) ||
            !WriteAll(file, rowBytes, row.get())) {
            return kLibraryFailed;
        }
    }
    return 0;
}

}  // namespace lv
