// The TIFF, PNG and GIF codecs over libtiff, libpng and giflib.
#include <gif_lib.h>
#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "files/library.h"
#include "shell/errors.h"
#include "shell/text.h"

namespace lv {

std::string TiffVersion();
std::string PngVersion();
std::string GifVersion();

namespace {

namespace fs = std::filesystem;

struct Picture {
    LibraryHeader header;
    std::vector<std::vector<uint8_t>> rows;  // from the top
};

// What a reader delivered, and a row at which to stop with -999.
struct Sink {
    Picture picture;
    int32_t stopAt = -1;
    bool badRowBytes = false;
};

int32_t TakeHeader(const LibraryHeader& header, void* context)
{
    static_cast<Sink*>(context)->picture.header = header;
    return 0;
}

int32_t TakeRow(const uint8_t* data, void* context, int32_t row, int32_t rowBytes)
{
    auto* sink = static_cast<Sink*>(context);
    const LibraryHeader& h = sink->picture.header;
    const int32_t expected = h.bitsPerPixel == 1   ? (h.width + 7) / 8
                             : h.bitsPerPixel == 8 ? h.width
                                                   : h.width * 3;
    if (rowBytes != expected || row != static_cast<int32_t>(sink->picture.rows.size()))
        sink->badRowBytes = true;
    sink->picture.rows.emplace_back(data, data + rowBytes);
    return row == sink->stopAt ? kLibraryAbort : 0;
}

struct Source {
    const Picture* picture;
    int32_t stopAt = -1;
};

int32_t GiveRow(void* context, uint8_t* buffer, int32_t row)
{
    auto* source = static_cast<Source*>(context);
    const auto& bytes = source->picture->rows[static_cast<size_t>(row)];
    std::copy(bytes.begin(), bytes.end(), buffer);
    return row == source->stopAt ? kLibraryAbort : 0;
}

using ReadFn = int32_t (*)(File&, const LibraryReader&);
using WriteFn = int32_t (*)(File&, const LibraryWriter&);

struct Codec {
    const char* extension;
    ReadFn read;
    WriteFn write;
};
const Codec kTiff{".tif", TiffRead, TiffWrite};
const Codec kPng{".png", PngRead, PngWrite};
const Codec kGif{".gif", GifRead, GifWrite};

std::string TempPath(const char* extension)
{
    static int counter = 0;
    return (fs::temp_directory_path() / ("lv_codecs_" + std::to_string(::getpid()) + "_" +
                                         std::to_string(counter++) + extension))
        .string();
}

int32_t ReadPath(const Codec& codec, const std::string& path, Sink& sink)
{
    File file;
    if (FileOpenRead(path, file) != 0) return -100;
    return codec.read(file, LibraryReader{TakeHeader, TakeRow, &sink});
}

int32_t WritePath(const Codec& codec, const std::string& path, const Picture& picture,
                  int32_t stopAt = -1)
{
    File file;
    if (FileCreate(path, file) != 0) return -100;
    Source source{&picture, stopAt};
    const int32_t result = codec.write(file, LibraryWriter{&picture.header, GiveRow, &source});
    return FileClose(file) == 0 ? result : -101;
}

// A picture whose rows all differ, with the padding bits of 1-bit rows clear.
Picture MakePicture(int32_t bits, int32_t width, int32_t height, bool grayTable)
{
    Picture p;
    p.header.width = width;
    p.header.height = height;
    p.header.bitsPerPixel = bits;
    for (int i = 0; i < 256; ++i) {
        p.header.palette[i][0] = static_cast<uint8_t>(i);
        p.header.palette[i][1] = static_cast<uint8_t>(grayTable ? i : 255 - i);
        p.header.palette[i][2] = static_cast<uint8_t>(grayTable ? i : i * 7);
    }
    const int32_t bytes = bits == 1 ? (width + 7) / 8 : width * bits / 8;
    for (int32_t y = 0; y < height; ++y) {
        std::vector<uint8_t> row(static_cast<size_t>(bytes));
        for (int32_t i = 0; i < bytes; ++i) row[i] = static_cast<uint8_t>(y * 37 + i * 11 + 5);
        if (bits == 1 && width % 8) row[bytes - 1] &= static_cast<uint8_t>(0xFF00 >> (width % 8));
        p.rows.push_back(row);
    }
    return p;
}

TEST(LibraryCodecs, RoundTripsKeepRowsKindsAndResolution)
{
    struct Case {
        const Codec* codec;
        int32_t bits;
        bool grayTable;
        int32_t resolution;  // written, and expected back
    };
    const Case cases[] = {
        {&kTiff, 1, true, 300},  {&kTiff, 8, true, 150},  {&kTiff, 8, false, 0},
        {&kTiff, 24, true, 72},  {&kPng, 1, true, 0},     {&kPng, 8, true, 11811},
        {&kPng, 8, false, 2835}, {&kPng, 24, true, 3937}, {&kGif, 1, true, 0},
        {&kGif, 8, true, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.codec->extension) + " " + std::to_string(c.bits) + " bits");
        // Odd widths, and enough rows for several TIFF strips.
        Picture written = MakePicture(c.bits, 301, 97, c.grayTable);
        written.header.xResolution = written.header.yResolution = c.resolution;
        const std::string path = TempPath(c.codec->extension);
        ASSERT_EQ(WritePath(*c.codec, path, written), 0);
        Sink sink;
        EXPECT_EQ(ReadPath(*c.codec, path, sink), 0);
        fs::remove(path);
        const LibraryHeader& h = sink.picture.header;
        EXPECT_EQ(h.width, 301);
        EXPECT_EQ(h.height, 97);
        EXPECT_EQ(h.bitsPerPixel, c.bits);
        EXPECT_EQ(h.xResolution, c.resolution);
        EXPECT_FALSE(sink.badRowBytes);
        EXPECT_TRUE(sink.picture.rows == written.rows);
        if (c.bits == 8) {
            EXPECT_GT(h.colorsUsed, 0);
            for (int i = 0; i < h.colorsUsed; ++i) {
                EXPECT_EQ(h.palette[i][0], written.header.palette[i][0]) << i;
                EXPECT_EQ(h.palette[i][2], written.header.palette[i][2]) << i;
            }
        }
    }
}

TEST(LibraryCodecs, AbortFromACallbackStopsAndIsReturned)
{
    for (const Codec* codec : {&kTiff, &kPng, &kGif}) {
        SCOPED_TRACE(codec->extension);
        const Picture written = MakePicture(8, 20, 10, true);
        const std::string path = TempPath(codec->extension);
        EXPECT_EQ(WritePath(*codec, path, written, 4), kLibraryAbort);
        ASSERT_EQ(WritePath(*codec, path, written), 0);
        Sink sink;
        sink.stopAt = 3;
        EXPECT_EQ(ReadPath(*codec, path, sink), kLibraryAbort);
        EXPECT_EQ(sink.picture.rows.size(), 4u);
        fs::remove(path);
    }
    // Kinds a format cannot hold are refused.
    const Picture color = MakePicture(24, 4, 4, true);
    const std::string path = TempPath(".gif");
    EXPECT_EQ(WritePath(kGif, path, color), kLibraryFailed);
    EXPECT_EQ(ErrorDetail(), "GIF holds only 1 and 8-bit pictures");
    fs::remove(path);
}

// A refusal leaves the library's words, or ours, for what was wrong.
TEST(LibraryCodecs, RefusalsNameTheirReason)
{
    const std::string text = TempPath(".txt");
    {
        File file;
        ASSERT_EQ(FileCreate(text, file), 0);
        const std::string words = "this is no picture but a line of text\n";
        ASSERT_EQ(FileWrite(file, static_cast<int64_t>(words.size()), words.data()), 0);
    }
    const struct {
        const Codec* codec;
        const char* reason;
    } cases[] = {{&kPng, "not a PNG file"},
                 {&kGif, "data is not in GIF format"},
                 {&kTiff, "not a TIFF or MDI file, bad magic number 26740 (0x6874)"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.codec->extension);
        Sink sink;
        ClearErrorDetail();
        EXPECT_EQ(ReadPath(*c.codec, text, sink), kLibraryFailed);
        EXPECT_EQ(ErrorDetail(), c.reason);
    }
    fs::remove(text);

    // A PNG cut short inside its image data.
    const std::string path = TempPath(".png");
    ASSERT_EQ(WritePath(kPng, path, MakePicture(24, 64, 64, true)), 0);
    fs::resize_file(path, fs::file_size(path) / 2);
    Sink sink;
    ClearErrorDetail();
    EXPECT_EQ(ReadPath(kPng, path, sink), kLibraryFailed);
    EXPECT_EQ(ErrorDetail(), "truncated file");
    fs::remove(path);

    // A full disk gives the system's reason, once more bytes than a stream
    // buffer holds are written: noise, which does not compress. (TIFF seeks
    // about its file, which a device cannot do.)
    if (!fs::exists("/dev/full")) return;
    Picture picture = MakePicture(8, 300, 200, false);
    uint32_t noise = 12345;
    for (auto& row : picture.rows)
        for (uint8_t& byte : row)
            byte = static_cast<uint8_t>((noise = noise * 1103515245 + 12345) >> 16);
    for (const Codec* codec : {&kPng, &kGif}) {
        SCOPED_TRACE(codec->extension);
        Source source{&picture};
        File full;
        ASSERT_EQ(FileCreate("/dev/full", full), 0);
        ClearErrorDetail();
        EXPECT_EQ(codec->write(full, LibraryWriter{&picture.header, GiveRow, &source}),
                  kLibraryFailed);
        EXPECT_EQ(ErrorDetail(), "No space left on device");
    }
}

TEST(LibraryCodecs, VersionsNameTheLibraries)
{
    EXPECT_EQ(TiffVersion().rfind("libtiff 4.", 0), 0u) << TiffVersion();
    EXPECT_EQ(PngVersion(), std::string("libpng ") + PNG_LIBPNG_VER_STRING);
    EXPECT_EQ(GifVersion().rfind("giflib 5.", 0), 0u) << GifVersion();
}

#ifdef LUMIVUE_TESTDATA
const fs::path kData = LUMIVUE_TESTDATA;
#else
const fs::path kData;
#endif

const Codec* CodecFor(const fs::path& path)
{
    const std::string ext = path.extension().string();
    if (ext == ".tif" || ext == ".tiff") return &kTiff;
    if (ext == ".png") return &kPng;
    if (ext == ".gif") return &kGif;
    return nullptr;
}

TEST(LibraryCodecsFiles, SampleFilesOpenOrAreRefusedCleanly)
{
    if (kData.empty() || !fs::is_directory(kData / "tiff")) GTEST_SKIP() << "no test data";
    int opened = 0;
    for (const char* folder : {"tiff", "png", "gif"}) {
        for (const auto& entry : fs::directory_iterator(kData / folder)) {
            const Codec* codec = CodecFor(entry.path());
            if (!codec) continue;
            SCOPED_TRACE(entry.path().string());
            Sink sink;
            const int32_t result = ReadPath(*codec, entry.path().string(), sink);
            EXPECT_TRUE(result == 0 || result < 0);
            if (result != 0) continue;
            ++opened;
            EXPECT_FALSE(sink.badRowBytes);
            EXPECT_EQ(static_cast<int32_t>(sink.picture.rows.size()), sink.picture.header.height);
        }
    }
    EXPECT_GT(opened, 60);
}

Picture ReadData(const char* name)
{
    Sink sink;
    const fs::path path = kData / name;
    EXPECT_EQ(ReadPath(*CodecFor(path), path.string(), sink), 0) << name;
    return sink.picture;
}

TEST(LibraryCodecsFiles, SamplesGiveTheLibrariesSizesKindsAndResolutions)
{
    if (kData.empty() || !fs::is_directory(kData / "tiff")) GTEST_SKIP() << "no test data";
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);

    // Sizes as the libraries' own readers report them.
    for (const char* name : {"tiff/s_rgb_none.tif", "tiff/s_bilevel_g4.tif", "tiff/s_cmyk.tif",
                             "tiff/s_rgb_jpeg.tif", "tiff/mandrill.tiff"}) {
        TIFF* tif = TIFFOpen((kData / name).c_str(), "r");
        ASSERT_NE(tif, nullptr) << name;
        uint32_t width = 0, height = 0;
        TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &height);
        TIFFClose(tif);
        const Picture p = ReadData(name);
        EXPECT_EQ(p.header.width, static_cast<int32_t>(width)) << name;
        EXPECT_EQ(p.header.height, static_cast<int32_t>(height)) << name;
    }
    for (const char* name : {"png/s_300dpi.png", "png/s_palette.png", "png/basi0g16.png"}) {
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        ASSERT_TRUE(png_image_begin_read_from_file(&image, (kData / name).c_str())) << name;
        png_image_free(&image);
        const Picture p = ReadData(name);
        EXPECT_EQ(p.header.width, static_cast<int32_t>(image.width)) << name;
        EXPECT_EQ(p.header.height, static_cast<int32_t>(image.height)) << name;
    }
    for (const char* name : {"gif/s_gray.gif", "gif/s_interlaced.gif"}) {
        int error = 0;
        GifFileType* gif = DGifOpenFileName((kData / name).c_str(), &error);
        ASSERT_NE(gif, nullptr) << name;
        const int width = gif->SWidth, height = gif->SHeight;
        DGifCloseFile(gif, &error);
        const Picture p = ReadData(name);
        EXPECT_EQ(p.header.width, width) << name;
        EXPECT_EQ(p.header.height, height) << name;
    }

    EXPECT_EQ(ReadData("tiff/s_rgb_300dpi.tif").header.xResolution, 300);
    EXPECT_NEAR(ReadData("tiff/s_rgb_118dpcm.tif").header.xResolution, 300, 1);
    EXPECT_EQ(ReadData("png/s_300dpi.png").header.xResolution, 11811);
    // The fax-coded MinIsWhite copy of an 8-bit black-and-white picture: a set
    // bit is a white pixel.
    const Picture fax = ReadData("tiff/s_bilevel_g4.tif");
    const Picture levels = ReadData("tiff/s_bilevel.tif");
    ASSERT_EQ(fax.header.bitsPerPixel, 1);
    ASSERT_EQ(fax.rows.size(), levels.rows.size());
    int differences = 0;
    for (size_t y = 0; y < fax.rows.size(); ++y) {
        for (int32_t x = 0; x < fax.header.width; ++x) {
            const bool white = (fax.rows[y][x >> 3] >> (7 - (x & 7))) & 1;
            differences += white != (levels.rows[y][x] >= 128);
        }
    }
    EXPECT_EQ(differences, 0);
    EXPECT_EQ(ReadData("tiff/s_gray8.tif").header.bitsPerPixel, 8);
    EXPECT_EQ(ReadData("tiff/s_palette8.tif").header.bitsPerPixel, 8);
    EXPECT_EQ(ReadData("tiff/s_cmyk.tif").header.bitsPerPixel, 24);
    EXPECT_EQ(ReadData("gif/s_bilevel.gif").header.bitsPerPixel, 1);

    // Rows come top first, in blue, green, red order, as the libraries' own
    // readers give them.
    {
        const Picture ours = ReadData("png/s_300dpi.png");
        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        ASSERT_TRUE(png_image_begin_read_from_file(&image, (kData / "png/s_300dpi.png").c_str()));
        image.format = PNG_FORMAT_BGR;
        std::vector<uint8_t> pixels(PNG_IMAGE_SIZE(image));
        ASSERT_TRUE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
        const size_t stride = PNG_IMAGE_ROW_STRIDE(image);
        ASSERT_EQ(ours.rows.size(), image.height);
        bool same = true;
        for (size_t y = 0; y < image.height; ++y)
            same =
                same && std::equal(ours.rows[y].begin(), ours.rows[y].end(), &pixels[y * stride]);
        EXPECT_TRUE(same);
    }
    {
        const Picture ours = ReadData("gif/s_interlaced.gif");
        int error = 0;
        GifFileType* gif = DGifOpenFileName((kData / "gif/s_interlaced.gif").c_str(), &error);
        ASSERT_NE(gif, nullptr);
        ASSERT_EQ(DGifSlurp(gif), GIF_OK);  // puts interlaced rows in order
        const SavedImage& frame = gif->SavedImages[0];
        const auto width = static_cast<size_t>(frame.ImageDesc.Width);
        bool same = ours.header.bitsPerPixel == 8 && frame.ImageDesc.Left == 0 &&
                    frame.ImageDesc.Top == 0 &&
                    ours.rows.size() == static_cast<size_t>(frame.ImageDesc.Height);
        for (size_t y = 0; same && y < ours.rows.size(); ++y)
            same =
                std::equal(ours.rows[y].begin(), ours.rows[y].end(), &frame.RasterBits[y * width]);
        DGifCloseFile(gif, &error);
        EXPECT_TRUE(same);
    }

    // The same picture stored every lossless way reads the same; 16-bit gives
    // its high bytes.
    const Picture plain = ReadData("tiff/s_rgb_none.tif");
    for (const char* name : {"tiff/s_rgb_lzw.tif", "tiff/s_rgb_packbits.tif", "tiff/s_rgb_zip.tif",
                             "tiff/s_rgb_tiled_lzw.tif", "tiff/s_rgb_bigendian.tif",
                             "tiff/s_rgb_lzw_predictor.tif", "tiff/s_rgb16.tif"}) {
        EXPECT_TRUE(ReadData(name).rows == plain.rows) << name;
    }
}

TEST(LibraryCodecsFiles, DamagedFilesAreRefusedQuickly)
{
    if (kData.empty() || !fs::is_directory(kData / "corrupt")) GTEST_SKIP() << "no test data";
    int checked = 0;
    for (const auto& entry : fs::directory_iterator(kData / "corrupt")) {
        const Codec* codec = CodecFor(entry.path());
        if (!codec) continue;
        SCOPED_TRACE(entry.path().string());
        const auto start = std::chrono::steady_clock::now();
        Sink sink;
        EXPECT_LT(ReadPath(*codec, entry.path().string(), sink), 0);
        const auto elapsed = std::chrono::steady_clock::now() - start;
        EXPECT_LT(std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count(), 2000);
        ++checked;
    }
    EXPECT_GE(checked, 10);
}

}  // namespace
}  // namespace lv
