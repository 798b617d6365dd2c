// Our own BMP, Targa and PCX readers and writers and the EPS writer: pictures
// written and read back, hostile and damaged files, the abort path, run
// lengths at the edges of rows, and the shared test pictures.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "files/library.h"
#include "shell/errors.h"
#include "shell/text.h"

#ifndef LUMIVUE_TESTDATA
#define LUMIVUE_TESTDATA ""
#endif

namespace lv {
namespace {

namespace fs = std::filesystem;

using ReadFunction = int32_t (*)(File&, const LibraryReader&);
using WriteFunction = int32_t (*)(File&, const LibraryWriter&);

struct Codec {
    const char* name;
    ReadFunction read;
    WriteFunction write;
    bool (*looksLike)(const uint8_t*, size_t);
};

const Codec kCodecs[] = {
    {"bmp", BmpRead, BmpWrite, LooksLikeBmp},
    {"tga", TargaRead, TargaWrite, LooksLikeTarga},
    {"pcx", PcxRead, PcxWrite, LooksLikePcx},
};

// A picture as the program hands it over or takes it: the header and the
// rows from the top, with what the callbacks saw.
struct Picture {
    LibraryHeader header;
    std::vector<std::vector<uint8_t>> rows;
    int32_t abortAt = -1;  // the row callback returns -999 at this row
    int32_t headerResult = 0;
    int32_t headerCalls = 0;
    bool rowsInOrder = true;
};

int32_t RowBytes(const LibraryHeader& header)
{
    int32_t width = header.width;
    return header.bitsPerPixel == 1 ? (width + 7) / 8 : width * header.bitsPerPixel / 8;
}

enum class Kind { Bits, Gray, Palette, Colour };

Picture MakePicture(Kind kind, int32_t width, int32_t height, int32_t perMetre)
{
    Picture picture;
    LibraryHeader& header = picture.header;
    header.width = width;
    header.height = height;
    header.xResolution = header.yResolution = perMetre;
    header.bitsPerPixel = kind == Kind::Bits ? 1 : (kind == Kind::Colour ? 24 : 8);
    for (int32_t i = 0; i < 256; ++i) {
        uint8_t* entry = header.palette[i];
        entry[0] = static_cast<uint8_t>(i);
        entry[1] = static_cast<uint8_t>(kind == Kind::Palette ? 255 - i : i);
        entry[2] = static_cast<uint8_t>(kind == Kind::Palette ? i * 7 : i);
    }
    for (int32_t y = 0; y < height; ++y) {
        std::vector<uint8_t> row(static_cast<size_t>(RowBytes(header)), 0);
        if (kind == Kind::Bits) {
            for (int32_t x = 0; x < width; ++x) {
                if ((x + y) % 3 == 0) row[x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
            }
        } else {
            for (size_t i = 0; i < row.size(); ++i) {
                row[i] = static_cast<uint8_t>(i * 7 + y * 13 + i * y);
            }
        }
        picture.rows.push_back(row);
    }
    return picture;
}

int32_t ProvideRow(void* context, uint8_t* buffer, int32_t row)
{
    auto& picture = *static_cast<Picture*>(context);
    if (row == picture.abortAt) return kLibraryAbort;
    std::memcpy(buffer, picture.rows[row].data(), picture.rows[row].size());
    return 0;
}

int32_t TakeHeader(const LibraryHeader& header, void* context)
{
    auto& picture = *static_cast<Picture*>(context);
    picture.header = header;
    ++picture.headerCalls;
    return picture.headerResult;
}

int32_t TakeRow(const uint8_t* data, void* context, int32_t row, int32_t bytes)
{
    auto& picture = *static_cast<Picture*>(context);
    if (row != static_cast<int32_t>(picture.rows.size()) || bytes != RowBytes(picture.header)) {
        picture.rowsInOrder = false;
    }
    if (row == picture.abortAt) return kLibraryAbort;
    picture.rows.emplace_back(data, data + bytes);
    return 0;
}

// A fresh directory for one test, removed with everything in it afterwards.
class TempDir {
public:
    TempDir()
    {
        static int counter = 0;
        path_ = fs::temp_directory_path() /
                ("lv_codecs_" + std::to_string(::getpid()) + "_" + std::to_string(counter++));
        fs::create_directories(path_);
    }
    ~TempDir()
    {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    std::string File(const std::string& name) const { return (path_ / name).string(); }
    std::string Write(const std::string& name, const std::vector<uint8_t>& bytes) const
    {
        std::ofstream(File(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return File(name);
    }

private:
    fs::path path_;
};

std::vector<uint8_t> FileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int32_t WritePicture(WriteFunction write, const std::string& path, Picture& picture)
{
    File file;
    if (FileCreate(path, file) != 0) return -12345;
    LibraryWriter writer{&picture.header, ProvideRow, &picture};
    int32_t result = write(file, writer);
    EXPECT_EQ(FileClose(file), 0);
    return result;
}

int32_t ReadPicture(ReadFunction read, const std::string& path, Picture& picture)
{
    File file;
    if (FileOpenRead(path, file) != 0) return -12345;
    LibraryReader reader{TakeHeader, TakeRow, &picture};
    return read(file, reader);
}

// Little-endian fields for hand-made files.
void Add16(std::vector<uint8_t>& bytes, uint32_t v)
{
    bytes.push_back(static_cast<uint8_t>(v));
    bytes.push_back(static_cast<uint8_t>(v >> 8));
}

void Add32(std::vector<uint8_t>& bytes, uint32_t v)
{
    Add16(bytes, v);
    Add16(bytes, v >> 16);
}

std::vector<uint8_t> BmpHeaders(int32_t width, int32_t height, int32_t bits, int32_t compression,
                                int32_t colours)
{
    std::vector<uint8_t> bytes = {'B', 'M'};
    Add32(bytes, 0);
    Add32(bytes, 0);
    Add32(bytes, 54 + 4 * colours);
    Add32(bytes, 40);
    Add32(bytes, static_cast<uint32_t>(width));
    Add32(bytes, static_cast<uint32_t>(height));
    Add16(bytes, 1);
    Add16(bytes, static_cast<uint32_t>(bits));
    Add32(bytes, static_cast<uint32_t>(compression));
    for (int32_t i = 0; i < 5; ++i) Add32(bytes, 0);
    for (int32_t i = 0; i < colours; ++i) Add32(bytes, static_cast<uint32_t>(i * 0x010101));
    return bytes;
}

std::vector<uint8_t> TargaHeader(int32_t type, int32_t width, int32_t height, int32_t bits,
                                 uint8_t descriptor)
{
    std::vector<uint8_t> bytes(12, 0);
    bytes[2] = static_cast<uint8_t>(type);
    Add16(bytes, static_cast<uint32_t>(width));
    Add16(bytes, static_cast<uint32_t>(height));
    bytes.push_back(static_cast<uint8_t>(bits));
    bytes.push_back(descriptor);
    return bytes;
}

std::vector<uint8_t> PcxHeader(int32_t width, int32_t height, int32_t planes, int32_t bytesPerLine)
{
    std::vector<uint8_t> bytes(128, 0);
    bytes[0] = 0x0A;
    bytes[1] = 5;
    bytes[2] = 1;
    bytes[3] = 8;
    bytes[8] = static_cast<uint8_t>(width - 1);
    bytes[9] = static_cast<uint8_t>((width - 1) >> 8);
    bytes[10] = static_cast<uint8_t>(height - 1);
    bytes[11] = static_cast<uint8_t>((height - 1) >> 8);
    bytes[65] = static_cast<uint8_t>(planes);
    bytes[66] = static_cast<uint8_t>(bytesPerLine);
    bytes[67] = static_cast<uint8_t>(bytesPerLine >> 8);
    return bytes;
}

TEST(OwnCodecs, RoundTripsKeepRowsPalettesAndResolution)
{
    TempDir dir;
    const Kind kinds[] = {Kind::Bits, Kind::Gray, Kind::Palette, Kind::Colour};
    for (const Codec& codec : kCodecs) {
        for (Kind kind : kinds) {
            for (int32_t width : {13, 333}) {
                SCOPED_TRACE(std::string(codec.name) + " kind " +
                             std::to_string(static_cast<int>(kind)) + " width " +
                             std::to_string(width));
                Picture out = MakePicture(kind, width, 17, 11811);
                std::string path = dir.File(std::string("picture.") + codec.name);
                ASSERT_EQ(WritePicture(codec.write, path, out), 0);
                std::vector<uint8_t> bytes = FileBytes(path);
                EXPECT_TRUE(codec.looksLike(bytes.data(), bytes.size()));

                Picture in;
                ASSERT_EQ(ReadPicture(codec.read, path, in), 0);
                EXPECT_EQ(in.headerCalls, 1);
                EXPECT_TRUE(in.rowsInOrder);
                EXPECT_EQ(in.header.width, width);
                EXPECT_EQ(in.header.height, 17);
                // Targa stores no resolution; PCX goes through whole dots per inch.
                bool targa = codec.read == TargaRead;
                EXPECT_EQ(in.header.xResolution, targa ? 0 : 11811);

                std::vector<std::vector<uint8_t>> expected = out.rows;
                if (targa && kind == Kind::Bits) {
                    // A binary picture is stored as gray of 0 and 255.
                    for (auto& row : expected) {
                        std::vector<uint8_t> gray(static_cast<size_t>(width));
                        for (int32_t x = 0; x < width; ++x) {
                            gray[x] = (row[x / 8] >> (7 - x % 8)) & 1 ? 255 : 0;
                        }
                        row = gray;
                    }
                }
                EXPECT_EQ(in.header.bitsPerPixel, kind == Kind::Bits && !targa    ? 1
                                                  : out.header.bitsPerPixel == 24 ? 24
                                                                                  : 8);
                EXPECT_TRUE(in.rows == expected);
                if (kind == Kind::Palette) {
                    EXPECT_EQ(std::memcmp(in.header.palette, out.header.palette,
                                          sizeof out.header.palette),
                              0);
                }
            }
        }
    }
}

TEST(OwnCodecs, HeadersTheFileCannotHoldAreRefused)
{
    TempDir dir;
    auto start = std::chrono::steady_clock::now();

    std::vector<uint8_t> bmp = BmpHeaders(100000, 100000, 24, 0, 0);
    bmp.resize(bmp.size() + 16, 0x55);
    std::vector<uint8_t> bmpRle = BmpHeaders(3000, 3000, 8, 1, 256);
    bmpRle.resize(bmpRle.size() + 100, 0x01);
    std::vector<uint8_t> targa = TargaHeader(10, 65535, 65535, 24, 0);
    targa.resize(targa.size() + 30, 0xFF);
    std::vector<uint8_t> pcx = PcxHeader(65535, 65535, 3, 65535);
    pcx.resize(pcx.size() + 64, 0xFF);
    std::vector<uint8_t> bmpZeroWidth = BmpHeaders(0, 4, 8, 0, 256);
    bmpZeroWidth.resize(bmpZeroWidth.size() + 64, 0);

    // Uncompressed and PCX data must be in the file; run-length BMP data can
    // be any amount smaller than its picture, so its header is taken and the
    // file fails where the data runs out.
    const struct {
        const char* name;
        ReadFunction read;
        std::vector<uint8_t>& bytes;
        const char* reason;
        int32_t headerCalls;
    } cases[] = {{"huge.bmp", BmpRead, bmp, "header claims 100000 x 100000 pixels", 0},
                 {"rle.bmp", BmpRead, bmpRle, "truncated run-length data", 1},
                 {"huge.tga", TargaRead, targa, "header claims 65535 x 65535 pixels", 0},
                 {"huge.pcx", PcxRead, pcx, "header claims 65535 x 65535 pixels", 0},
                 {"zero.bmp", BmpRead, bmpZeroWidth, "header claims 0 x 4 pixels", 0}};
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        Picture in;
        ClearErrorDetail();
        EXPECT_EQ(ReadPicture(test.read, dir.Write(test.name, test.bytes), in), kLibraryFailed);
        EXPECT_EQ(ErrorDetail(), test.reason);
        EXPECT_EQ(in.headerCalls, test.headerCalls);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

// Each refusal leaves a reason that says what was wrong with the file.
TEST(OwnCodecs, RefusalsNameTheirReason)
{
    TempDir dir;
    std::vector<uint8_t> notBmp = BmpHeaders(4, 4, 8, 0, 256);
    notBmp[1] = 'X';
    std::vector<uint8_t> depth = BmpHeaders(4, 4, 7, 0, 0);
    depth.resize(depth.size() + 64, 0);
    std::vector<uint8_t> rleColour = BmpHeaders(4, 4, 24, 1, 0);
    rleColour.resize(rleColour.size() + 64, 0);
    std::vector<uint8_t> targaType = TargaHeader(5, 4, 4, 8, 0);
    targaType.resize(targaType.size() + 16, 0);
    std::vector<uint8_t> targaCut = TargaHeader(3, 4, 4, 8, 0);
    targaCut.resize(targaCut.size() + 16, 0);  // 16 pixels as they are
    targaCut.pop_back();
    std::vector<uint8_t> pcxVersion = PcxHeader(4, 4, 1, 4);
    pcxVersion[1] = 1;
    pcxVersion.resize(pcxVersion.size() + 16, 0);
    std::vector<uint8_t> pcxCut = PcxHeader(4, 4, 1, 4);
    for (uint8_t byte : {0xC8, 1, 0xC7, 2}) pcxCut.push_back(byte);  // 15 of 16 bytes

    const struct {
        const char* name;
        ReadFunction read;
        std::vector<uint8_t>& bytes;
        const char* reason;
    } cases[] = {
        {"not.bmp", BmpRead, notBmp, "not a BMP file"},
        {"depth.bmp", BmpRead, depth, "unsupported depth of 7 bits"},
        {"rle.bmp", BmpRead, rleColour, "unsupported compression 1 with 24 bits"},
        {"type.tga", TargaRead, targaType, "unsupported image type 5"},
        {"cut.tga", TargaRead, targaCut, "header claims 4 x 4 pixels"},
        {"version.pcx", PcxRead, pcxVersion, "unknown PCX version 1"},
        {"cut.pcx", PcxRead, pcxCut, "truncated pixel data"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        Picture in;
        ClearErrorDetail();
        EXPECT_EQ(ReadPicture(test.read, dir.Write(test.name, test.bytes), in), kLibraryFailed);
        EXPECT_EQ(ErrorDetail(), test.reason);
    }

    // Writers refuse what their format cannot hold, before writing a byte.
    Picture wide = MakePicture(Kind::Gray, 70000, 1, 0);
    ClearErrorDetail();
    EXPECT_EQ(WritePicture(TargaWrite, dir.File("wide.tga"), wide), kLibraryFailed);
    EXPECT_EQ(ErrorDetail(), "cannot write a picture of 70000 x 1 pixels");
    EXPECT_TRUE(FileBytes(dir.File("wide.tga")).empty());
    Picture nibbles = MakePicture(Kind::Gray, 8, 2, 0);
    nibbles.header.bitsPerPixel = 4;
    EXPECT_EQ(WritePicture(BmpWrite, dir.File("nibbles.bmp"), nibbles), kLibraryFailed);
    EXPECT_EQ(ErrorDetail(), "cannot write pictures of 4 bits a pixel");

    // A full disk gives the system's reason.
    if (!fs::exists("/dev/full")) return;
    Picture colour = MakePicture(Kind::Colour, 300, 200, 0);
    for (WriteFunction write : {BmpWrite, TargaWrite, PcxWrite, EpsWrite}) {
        File full;
        ASSERT_EQ(FileCreate("/dev/full", full), 0);
        ClearErrorDetail();
        EXPECT_EQ(write(full, LibraryWriter{&colour.header, ProvideRow, &colour}), kLibraryFailed);
        EXPECT_EQ(ErrorDetail(), "No space left on device");
    }
}

TEST(OwnCodecs, TruncatedFilesFail)
{
    TempDir dir;
    for (const Codec& codec : kCodecs) {
        for (Kind kind : {Kind::Palette, Kind::Colour}) {
            Picture out = MakePicture(kind, 333, 17, 0);
            std::string path = dir.File(std::string("whole.") + codec.name);
            ASSERT_EQ(WritePicture(codec.write, path, out), 0);
            std::vector<uint8_t> bytes = FileBytes(path);
            for (size_t keep : {size_t{10}, bytes.size() / 2, bytes.size() * 3 / 4}) {
                SCOPED_TRACE(std::string(codec.name) + " cut to " + std::to_string(keep));
                std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + keep);
                Picture in;
                EXPECT_EQ(ReadPicture(codec.read, dir.Write("cut", cut), in), kLibraryFailed);
            }
        }
    }
}

TEST(OwnCodecs, CallbacksStopReadingAndWriting)
{
    TempDir dir;
    for (const Codec& codec : kCodecs) {
        SCOPED_TRACE(codec.name);
        Picture out = MakePicture(Kind::Colour, 13, 9, 0);
        std::string path = dir.File("abort");
        ASSERT_EQ(WritePicture(codec.write, path, out), 0);

        Picture in;
        in.abortAt = 2;
        EXPECT_EQ(ReadPicture(codec.read, path, in), kLibraryAbort);
        EXPECT_EQ(in.rows.size(), 2u);

        Picture refused;
        refused.headerResult = kLibraryAbort;
        EXPECT_EQ(ReadPicture(codec.read, path, refused), kLibraryAbort);
        refused.headerResult = -5;
        EXPECT_EQ(ReadPicture(codec.read, path, refused), kLibraryFailed);
        EXPECT_TRUE(refused.rows.empty());

        out.abortAt = 3;
        EXPECT_EQ(WritePicture(codec.write, path, out), kLibraryAbort);
    }
    Picture eps = MakePicture(Kind::Gray, 13, 9, 0);
    eps.abortAt = 0;
    EXPECT_EQ(WritePicture(EpsWrite, dir.File("abort.eps"), eps), kLibraryAbort);
}

TEST(OwnCodecs, RunLengthsAtRowEdges)
{
    TempDir dir;
    // BMP RLE8, 4 by 3 from the bottom: a run past the row end (clipped), an
    // end of line, a delta over a row, an absolute stretch past the row end.
    std::vector<uint8_t> bmp = BmpHeaders(4, 3, 8, 1, 256);
    for (uint8_t byte : {6, 1, 0, 0, 0, 2, 2, 1, 0, 3, 5, 6, 7, 0, 0, 1}) bmp.push_back(byte);
    Picture rle;
    ASSERT_EQ(ReadPicture(BmpRead, dir.Write("rle.bmp", bmp), rle), 0);
    EXPECT_TRUE(rle.rows ==
                (std::vector<std::vector<uint8_t>>{{0, 0, 5, 6}, {0, 0, 0, 0}, {1, 1, 1, 1}}));

    // Targa gray RLE, 3 by 2, stored from the bottom and from the right: a
    // run that goes on into the next row, then raw pixels.
    std::vector<uint8_t> targa = TargaHeader(11, 3, 2, 8, 0x10);
    for (uint8_t byte : {0x83, 9, 0x01, 1, 2}) targa.push_back(byte);
    Picture gray;
    ASSERT_EQ(ReadPicture(TargaRead, dir.Write("rle.tga", targa), gray), 0);
    EXPECT_TRUE(gray.rows == (std::vector<std::vector<uint8_t>>{{2, 1, 9}, {9, 9, 9}}));

    // PCX 8-bit, 3 wide with 4 bytes a line: a run over the line end, and a
    // byte that looks like a count written as a run of 1.
    std::vector<uint8_t> pcx = PcxHeader(3, 2, 1, 4);
    for (uint8_t byte : {0xC5, 7, 0xC1, 0xC8, 2, 3}) pcx.push_back(byte);
    Picture lines;
    ASSERT_EQ(ReadPicture(PcxRead, dir.Write("lines.pcx", pcx), lines), 0);
    EXPECT_TRUE(lines.rows == (std::vector<std::vector<uint8_t>>{{7, 7, 7}, {7, 0xC8, 2}}));

    // An index outside the Targa colour map is refused.
    std::vector<uint8_t> mapped = TargaHeader(1, 2, 1, 8, 0);
    mapped[1] = 1;
    mapped[5] = 2;  // two entries
    mapped[7] = 24;
    for (uint8_t byte : {0, 0, 0, 255, 255, 255, 1, 2}) mapped.push_back(byte);
    Picture outside;
    EXPECT_EQ(ReadPicture(TargaRead, dir.Write("outside.tga", mapped), outside), kLibraryFailed);
}

TEST(EpsWrite, BoundingBoxAndSamples)
{
    TempDir dir;
    const struct {
        Kind kind;
        int32_t width, height, perMetre;
        const char* box;
        size_t digits;
    } cases[] = {
        {Kind::Gray, 333, 13, 11811, "%%BoundingBox: 0 0 80 4\n", 2 * 333 * 13},  // 300 dpi
        {Kind::Bits, 13, 5, 0, "%%BoundingBox: 0 0 13 5\n", 2 * 2 * 5},           // 72 dpi
        {Kind::Colour, 20, 10, 5906, "%%BoundingBox: 0 0 10 5\n", 2 * 60 * 10},   // 150 dpi
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.box);
        Picture picture = MakePicture(test.kind, test.width, test.height, test.perMetre);
        std::string path = dir.File("picture.eps");
        ASSERT_EQ(WritePicture(EpsWrite, path, picture), 0);
        std::vector<uint8_t> bytes = FileBytes(path);
        std::string text(bytes.begin(), bytes.end());
        EXPECT_EQ(text.rfind("%!PS-Adobe-3.0 EPSF-3.0\n", 0), 0u);
        EXPECT_NE(text.find("\n%%Creator: Lumivue 2.0\n"), std::string::npos);
        EXPECT_NE(text.find(test.box), std::string::npos);
        size_t start = text.find("image\n");
        size_t end = text.find('>', start);
        ASSERT_NE(start, std::string::npos);
        ASSERT_NE(end, std::string::npos);
        size_t digits = 0;
        for (size_t i = start + 6; i < end; ++i) digits += std::isxdigit(text[i]) ? 1 : 0;
        EXPECT_EQ(digits, test.digits);
        if (test.kind == Kind::Colour) {
            // Blue, green, red rows go out as red, green, blue.
            const std::vector<uint8_t>& row = picture.rows[0];
            char first[8];
            std::snprintf(first, sizeof first, "%02X%02X%02X", row[2], row[1], row[0]);
            EXPECT_EQ(text.substr(start + 6, 6), first);
        }
        EXPECT_NE(text.find("%%EOF"), std::string::npos);
    }
}

TEST(OwnCodecs, SharedTestFiles)
{
    const fs::path root = LUMIVUE_TESTDATA;
    if (!fs::is_directory(root)) GTEST_SKIP() << "no test pictures at " << root;
    const struct {
        const char* folder;
        const char* extension;
        ReadFunction read;
    } formats[] = {{"bmp", ".bmp", BmpRead}, {"tga", ".tga", TargaRead}, {"pcx", ".pcx", PcxRead}};
    for (const auto& format : formats) {
        for (const auto& entry : fs::directory_iterator(root / format.folder)) {
            if (entry.path().extension() != format.extension) continue;
            SCOPED_TRACE(entry.path().string());
            Picture in;
            int32_t result = ReadPicture(format.read, entry.path().string(), in);
            EXPECT_TRUE(result == 0 || result == kLibraryFailed);
            EXPECT_TRUE(in.rowsInOrder);
            if (entry.path().filename().string().rfind("s_", 0) != 0) continue;
            EXPECT_EQ(result, 0);
            bool odd = entry.path().filename() == "s_odd_width.pcx";
            EXPECT_EQ(in.header.width, odd ? 333 : 640);
            EXPECT_EQ(in.header.height, odd ? 211 : 400);
            EXPECT_EQ(in.rows.size(), static_cast<size_t>(in.header.height));
        }
        for (const auto& entry : fs::directory_iterator(root / "corrupt")) {
            if (entry.path().extension() != format.extension) continue;
            SCOPED_TRACE(entry.path().string());
            Picture in;
            int32_t result = ReadPicture(format.read, entry.path().string(), in);
            // The bytes flipped in this one fall on the header palette, which
            // 24-bit files do not use, and on literal pixel bytes: it is a
            // well-formed file with other pixels.
            if (entry.path().filename() == "flipped_s_gray8.pcx") {
                EXPECT_EQ(result, 0);
                continue;
            }
            EXPECT_LT(result, 0);
        }
    }
}

// Files that hold one picture stored two ways decode alike: bottom-up and
// top-down BMP, BMP and PCX (always top-down) of one photograph, Targa with
// its origin at the bottom and at the top.
TEST(OwnCodecs, SharedPicturesStoredTwoWaysDecodeAlike)
{
    const fs::path root = LUMIVUE_TESTDATA;
    if (!fs::is_directory(root)) GTEST_SKIP() << "no test pictures at " << root;
    const char* pairs[][2] = {
        {"bmp/Info_1_Bit.bmp", "bmp/Info_1_Bit_Top_Down.bmp"},
        {"bmp/V3_X4_R4_G4_B4.bmp", "bmp/V3_X4_R4_G4_B4_Top_Down.bmp"},
        {"bmp/s_im_bmp3_rgb24.bmp", "pcx/s_rgb24.pcx"},
        {"extra/tga/FLAG_B24.TGA", "extra/tga/FLAG_T32.TGA"},
        {"extra/tga/200x32_p_bl_rle.tga", "extra/tga/200x32_p_tl_raw.tga"},
    };
    auto read = [&](const fs::path& path, Picture& picture) {
        std::string extension = path.extension().string();
        ReadFunction function = extension == ".bmp"   ? BmpRead
                                : extension == ".pcx" ? PcxRead
                                                      : TargaRead;
        return ReadPicture(function, path.string(), picture);
    };
    for (const auto& pair : pairs) {
        if (!fs::exists(root / pair[0]) || !fs::exists(root / pair[1])) continue;
        SCOPED_TRACE(pair[0]);
        Picture first, second;
        ASSERT_EQ(read(root / pair[0], first), 0);
        ASSERT_EQ(read(root / pair[1], second), 0);
        EXPECT_FALSE(first.rows.empty());
        EXPECT_TRUE(first.rows == second.rows);
    }
}

}  // namespace
}  // namespace lv
