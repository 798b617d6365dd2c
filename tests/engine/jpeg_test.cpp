#include "files/jpeg.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <jpeglib.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "shell/errors.h"
#include "shell/preferences.h"
#include "support/scripted_frontend.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;

using test::Contents;
using test::TempDir;

// Smooth ramps with a little texture, running up the picture from row 0 at
// the bottom, so a picture read upside down is far off.
Image Picture(int32_t kind, int32_t width, int32_t height)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, width, height, 300.0), 0);
    const int32_t channels = kind == kImageColor ? 3 : 1;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width * channels; ++x)
            image.rows[y][x] = static_cast<uint8_t>(x / 10 + y * 3 / 5 + (x * y) % 5);
    return image;
}

double MeanError(const Image& a, const Image& b)
{
    const int32_t bytes = a.width * (a.kind == kImageColor ? 3 : 1);
    double sum = 0;
    for (int32_t y = 0; y < a.height; ++y)
        for (int32_t i = 0; i < bytes; ++i) sum += std::abs(a.rows[y][i] - b.rows[y][i]);
    return sum / (static_cast<double>(bytes) * a.height);
}

TEST(Jpeg, RoundTripsKeepKindSizeAndOrientationWithinTolerance)
{
    TempDir dir;
    const std::string path = dir / "picture.jpg";
    const double savedResolution = CurrentPreferences().defaultResolution;
    CurrentPreferences().defaultResolution = 123.5;
    for (int32_t kind : {kImageGray, kImageColor}) {
        const Image original = Picture(kind, 333, 201);
        for (auto [quality, tolerance] : {std::pair{97, 1.0}, std::pair{50, 2.0}}) {
            ASSERT_EQ(JPEGWrite(path, original, quality, kJpegSampling444, nullptr), 0);
            Image read;
            ASSERT_EQ(JPEGRead(path, read, true), 0);
            EXPECT_EQ(read.kind, kind);
            ASSERT_TRUE(read.width == 333 && read.height == 201);
            EXPECT_EQ(read.resolution, 123.5);  // the file says 300 dpi; it is not read
            EXPECT_LT(MeanError(original, read), tolerance) << kind << " at " << quality;
        }
    }
    // The written JFIF density is the image's, in dots per inch.
    const std::string bytes = Contents(path);
    EXPECT_EQ(bytes.substr(6, 10), std::string("JFIF\0\1\1\1\1\x2C", 10));

    // Top half white, bottom half black: row 0 is the bottom row.
    Image halves;
    ASSERT_EQ(ImageAlloc(halves, kImageGray, 64, 64, 72.0), 0);
    for (int32_t y = 0; y < 64; ++y) std::memset(halves.rows[y], y < 32 ? 0 : 255, 64);
    ASSERT_EQ(JPEGWrite(path, halves, 90, 0, nullptr), 0);
    Image read;
    ASSERT_EQ(JPEGRead(path, read, false), 0);
    EXPECT_LT(read.rows[0][10], 10);
    EXPECT_GT(read.rows[63][10], 245);
    CurrentPreferences().defaultResolution = savedResolution;
}

TEST(Jpeg, QualityFactorTablesAndSampling)
{
    EXPECT_EQ(JpegFactor(100), 1);
    EXPECT_EQ(JpegFactor(97), 8);
    EXPECT_EQ(JpegFactor(0), 255);
    EXPECT_EQ(JpegScale(1), 0);
    EXPECT_EQ(JpegScale(JpegFactor(97)), 6);  // libjpeg's own curve
    EXPECT_EQ(JpegScale(255), 5000);

    TempDir dir;
    const Image picture = Picture(kImageColor, 333, 201);
    // Quality 100: every entry of the first quantisation table is 1.
    ASSERT_EQ(JPEGWrite(dir / "q100.jpg", picture, 100, 0, nullptr), 0);
    const std::string q100 = Contents(dir / "q100.jpg");
    EXPECT_EQ(q100.substr(q100.find("\xFF\xDB") + 5, 64), std::string(64, '\1'));

    uintmax_t sizes[3] = {};
    for (int32_t sampling = 0; sampling < 3; ++sampling) {
        ASSERT_EQ(JPEGWrite(dir / "sampled.jpg", picture, 90, sampling, nullptr), 0);
        sizes[sampling] = fs::file_size(dir / "sampled.jpg");
    }
    EXPECT_GT(sizes[0], sizes[1] * 11 / 10);
    EXPECT_GT(sizes[1], sizes[2]);
}

TEST(Jpeg, CancelStopsReadingAndWritingAndLeavesTheOldFile)
{
    TempDir dir;
    const std::string path = dir / "abort.jpg";
    const Image picture = Picture(kImageColor, 120, 300);
    ASSERT_EQ(JPEGWrite(path, picture, 80, 0, nullptr), 0);

    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 50;
    ScopedFrontEnd installed(fe);
    Image read;
    EXPECT_EQ(JPEGRead(path, read, true), kErrAborted);
    EXPECT_EQ(read.kind, kImageEmpty);
    EXPECT_EQ(fe.steps.back(), 50);
    EXPECT_EQ(fe.titles.at(0), "File Open (JPEG)");

    // An aborted save leaves the old file as it was, and no temporary.
    const std::string before = Contents(path);
    EXPECT_EQ(JPEGWrite(path, picture, 80, 0, nullptr), kErrAborted);
    EXPECT_EQ(Contents(path), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(fs::path(path).parent_path()),
                            fs::directory_iterator()),
              1);
    EXPECT_EQ(fe.titles.back(), "File Save (JPEG)");
    EXPECT_EQ(ProgressCurrent(), nullptr);
}

TEST(Jpeg, BadFilesAndImagesFailWithTheirCodes)
{
    TempDir dir;
    Image read;
    std::ofstream(dir / "text.jpg") << "not a picture at all";
    EXPECT_EQ(JPEGRead(dir / "text.jpg", read, true), 22);
    EXPECT_EQ(ErrorDetail(), "not a JPEG file");
    EXPECT_EQ(JPEGRead(dir / "missing.jpg", read, true), 22);
    EXPECT_EQ(ErrorDetail(), "No such file or directory");

    // One cut short is refused rather than shown with a gray remainder; a
    // header claiming 60000 by 60000 pixels over a few bytes is refused with
    // 1 when that picture does not fit in memory (here a budget of 64 MB),
    // before anything is allocated.
    const Image small = Picture(kImageGray, 200, 200);
    ASSERT_EQ(JPEGWrite(dir / "bomb.jpg", small, 90, 0, nullptr), 0);
    std::string bytes = Contents(dir / "bomb.jpg");
    std::ofstream(dir / "cut.jpg", std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    EXPECT_EQ(JPEGRead(dir / "cut.jpg", read, true), 22);
    EXPECT_EQ(read.kind, kImageEmpty);
    bytes.replace(bytes.find("\xFF\xC0") + 5, 4, "\xEA\x60\xEA\x60");
    std::ofstream(dir / "bomb.jpg", std::ios::binary) << bytes;
    SetImageMemoryLimit(64 << 20);
    EXPECT_EQ(JPEGRead(dir / "bomb.jpg", read, true), kErrOutOfMemory);
    EXPECT_EQ(ErrorDetail(), "a picture of 60000 x 60000 pixels does not fit in memory");
    SetImageMemoryLimit(0);

    Image binary;
    ASSERT_EQ(ImageAlloc(binary, kImageBinary, 64, 64, 72.0), 0);
    EXPECT_EQ(JPEGWrite(dir / "binary.jpg", binary, 90, 0, nullptr), 23);
    EXPECT_EQ(ErrorDetail(), "JPEG holds only gray and colour pictures");
    EXPECT_FALSE(fs::exists(dir / "binary.jpg"));
    EXPECT_EQ(JPEGWrite(dir / "no/such/folder.jpg", small, 90, 0, nullptr), 23);
    EXPECT_EQ(ErrorDetail(), "No such file or directory");
}

// A file that is complete but for its end marker opens with all its rows; one
// cut inside its scan is refused.
TEST(Jpeg, EndMarkerMayBeMissingButNotThePictureData)
{
    TempDir dir;
    for (int32_t kind : {kImageGray, kImageColor}) {
        SCOPED_TRACE(kind);
        ASSERT_EQ(
            JPEGWrite(dir / "whole.jpg", Picture(kind, 203, 151), 90, kJpegSampling422, nullptr),
            0);
        const std::string bytes = Contents(dir / "whole.jpg");
        ASSERT_EQ(bytes.substr(bytes.size() - 2), "\xFF\xD9");
        std::ofstream(dir / "no_end.jpg", std::ios::binary) << bytes.substr(0, bytes.size() - 2);
        std::ofstream(dir / "half.jpg", std::ios::binary) << bytes.substr(0, bytes.size() / 2);

        Image whole, unended, half;
        ASSERT_EQ(JPEGRead(dir / "whole.jpg", whole, false), 0);
        ASSERT_EQ(JPEGRead(dir / "no_end.jpg", unended, false), 0);
        EXPECT_EQ(MeanError(whole, unended), 0.0);
        ClearErrorDetail();
        EXPECT_EQ(JPEGRead(dir / "half.jpg", half, false), 22);
        EXPECT_EQ(ErrorDetail(), "premature end of JPEG file");
        EXPECT_EQ(half.kind, kImageEmpty);
    }
}

TEST(Jpeg, PaletteSummarisesTheColours)
{
    TempDir dir;
    Image two;
    ASSERT_EQ(ImageAlloc(two, kImageColor, 40, 30, 72.0), 0);
    const uint8_t bgr[2][3] = {{40, 30, 200}, {220, 120, 10}};
    for (int32_t y = 0; y < 30; ++y)
        for (int32_t x = 0; x < 40; ++x) std::memcpy(two.rows[y] + x * 3, bgr[x < 25], 3);
    uint8_t palette[768];
    ASSERT_EQ(JPEGWrite(dir / "two.jpg", two, 90, 0, palette), 0);
    // Red is the longest side of the first box; the part with less red comes
    // first. Entries are red, green, blue; the unused ones black.
    const uint8_t expected[6] = {10, 120, 220, 200, 30, 40};
    EXPECT_EQ(std::memcmp(palette, expected, 6), 0);
    EXPECT_EQ(std::count(palette + 6, palette + 768, 0), 762);

    ASSERT_EQ(JPEGWrite(dir / "gray.jpg", Picture(kImageGray, 20, 20), 90, 0, palette), 0);
    EXPECT_TRUE(palette[3 * 77] == 77 && palette[3 * 255 + 2] == 255);
}

#ifdef LUMIVUE_TESTDATA
const fs::path kData = LUMIVUE_TESTDATA;
#else
const fs::path kData;
#endif

TEST(Jpeg, SharedFilesOpenAndDamagedOnesFailCleanly)
{
    if (kData.empty() || !fs::exists(kData / "jpeg")) GTEST_SKIP() << "no test data";
    for (const auto& entry : fs::directory_iterator(kData / "jpeg")) {
        Image image;
        EXPECT_EQ(JPEGRead(entry.path().string(), image, true), 0) << entry.path();
        const bool gray = entry.path().filename() == "s_gray.jpg";
        EXPECT_EQ(image.kind, gray ? kImageGray : kImageColor) << entry.path();
    }
    // The Adobe YCCK file is the 4:4:4 picture separated: colours must agree.
    Image cmyk, rgb;
    ASSERT_EQ(JPEGRead((kData / "jpeg/s_cmyk.jpg").string(), cmyk, false), 0);
    ASSERT_EQ(JPEGRead((kData / "jpeg/s_baseline_444.jpg").string(), rgb, false), 0);
    EXPECT_LT(MeanError(cmyk, rgb), 6.0);

    // A progressive file without its end marker opens; one that stops
    // between two scans is refused, though libjpeg could show it coarser.
    // Arithmetic-coded data shows no sign of where it was cut, so such a
    // file must be whole.
    {
        const std::string progressive = Contents((kData / "jpeg/s_progressive.jpg").string());
        const std::string arithmetic = Contents((kData / "jpeg/s_arithmetic.jpg").string());
        ASSERT_EQ(progressive.substr(progressive.size() - 2), "\xFF\xD9");
        ASSERT_EQ(arithmetic.substr(arithmetic.size() - 2), "\xFF\xD9");
        TempDir dir;
        std::ofstream(dir / "no_end.jpg", std::ios::binary)
            << progressive.substr(0, progressive.size() - 2);
        std::ofstream(dir / "between.jpg", std::ios::binary)
            << progressive.substr(0, progressive.rfind("\xFF\xDA"));
        std::ofstream(dir / "arithmetic.jpg", std::ios::binary)
            << arithmetic.substr(0, arithmetic.size() - 2);
        Image whole, image;
        ASSERT_EQ(JPEGRead((kData / "jpeg/s_progressive.jpg").string(), whole, false), 0);
        ASSERT_EQ(JPEGRead(dir / "no_end.jpg", image, false), 0);
        EXPECT_EQ(MeanError(whole, image), 0.0);
        ClearErrorDetail();
        EXPECT_EQ(JPEGRead(dir / "between.jpg", image, false), 22);
        EXPECT_EQ(ErrorDetail(), "premature end of JPEG file");
        ClearErrorDetail();
        EXPECT_EQ(JPEGRead(dir / "arithmetic.jpg", image, false), 22);
        EXPECT_EQ(ErrorDetail(), "premature end of JPEG file");
    }

    // Truncated and random files fail; flipped bytes may still decode.
    for (const auto& entry : fs::directory_iterator(kData / "corrupt")) {
        if (entry.path().extension() != ".jpg") continue;
        const std::string name = entry.path().filename().string();
        Image image;
        const int32_t result = JPEGRead(entry.path().string(), image, true);
        EXPECT_TRUE(result == 22 || (result == 0 && name.starts_with("flipped"))) << name;
    }
}

}  // namespace
}  // namespace lv

namespace lv {
namespace {

// A blank page scanned at 600 dpi, arithmetic-coded: a few hundred bytes for
// 34 million pixels. No ratio of pixels to bytes is held against it.
TEST(Jpeg, AFlatArithmeticCodedPageOpens)
{
    test::TempDir dir;
    const std::string path = dir / "page.jpg";
    std::FILE* out = std::fopen(path.c_str(), "wb");
    ASSERT_NE(out, nullptr);
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_compress(&cinfo);
    jpeg_stdio_dest(&cinfo, out);
    cinfo.image_width = 5100;
    cinfo.image_height = 6600;
    cinfo.input_components = 1;
    cinfo.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&cinfo);
    cinfo.arith_code = TRUE;
    jpeg_start_compress(&cinfo, TRUE);
    std::vector<uint8_t> row(5100, 255);
    JSAMPROW rows[1] = {row.data()};
    while (cinfo.next_scanline < cinfo.image_height) jpeg_write_scanlines(&cinfo, rows, 1);
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    std::fclose(out);
    ASSERT_LT(std::filesystem::file_size(path), 4096u);

    Image page;
    ASSERT_EQ(JPEGRead(path, page, false), 0);
    EXPECT_EQ(page.width, 5100);
    EXPECT_EQ(page.height, 6600);
    EXPECT_EQ(page.rows[3300][2550], 255);
}

}  // namespace
}  // namespace lv
