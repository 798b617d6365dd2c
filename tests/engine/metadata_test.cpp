// Camera files: pictures turned to stand as they were taken, and their
// EXIF, XMP, IPTC and ICC profile carried into the files saved from them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "files/formats.h"
#include "files/metadata.h"
#include "image/image.h"
#include "shell/errors.h"
#include "shell/text.h"
#include "support/pictures.h"
#include "support/temp_dir.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
const fs::path kData = LUMIVUE_TESTDATA;

// A 3 x 2 gray picture, as seen on the screen:
//   1 2 3
//   4 5 6
// (row 0 of the record is the bottom row).
Image Small()
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kImageGray, 3, 2, 72.0), 0);
    const uint8_t bottom[3] = {4, 5, 6}, top[3] = {1, 2, 3};
    for (int32_t x = 0; x < 3; ++x) image.rows[0][x] = bottom[x], image.rows[1][x] = top[x];
    return image;
}

// The picture's levels as the screen shows them, top row first.
std::vector<int32_t> OnScreen(const Image& image)
{
    std::vector<int32_t> levels;
    for (int32_t y = image.height - 1; y >= 0; --y)
        for (int32_t x = 0; x < image.width; ++x)
            levels.push_back(static_cast<int32_t>(test::Pixel(image, x, y)));
    return levels;
}

TEST(Metadata, EachOrientationTurnsThePictureToStandAsTaken)
{
    // What the camera stored, and the EXIF orientation that says how it was
    // held: the picture must come out as 1 2 3 / 4 5 6 in every case.
    struct Case {
        int32_t orientation, width;
        std::vector<uint8_t> stored;  // top row first
    };
    const Case cases[] = {
        {1, 3, {1, 2, 3, 4, 5, 6}}, {2, 3, {3, 2, 1, 6, 5, 4}}, {3, 3, {6, 5, 4, 3, 2, 1}},
        {4, 3, {4, 5, 6, 1, 2, 3}}, {5, 2, {1, 4, 2, 5, 3, 6}}, {6, 2, {3, 6, 2, 5, 1, 4}},
        {7, 2, {6, 3, 5, 2, 4, 1}}, {8, 2, {4, 1, 5, 2, 6, 3}},
    };
    for (const Case& c : cases) {
        const int32_t height = 6 / c.width;
        Image stored;
        ASSERT_EQ(ImageAlloc(stored, kImageGray, c.width, height, 72.0), 0);
        for (int32_t i = 0; i < 6; ++i)
            stored.rows[height - 1 - i / c.width][i % c.width] = c.stored[static_cast<size_t>(i)];
        ASSERT_EQ(ApplyOrientation(stored, c.orientation), 0);
        EXPECT_EQ(OnScreen(stored), OnScreen(Small())) << c.orientation;
        EXPECT_EQ(stored.resolution, 72.0);
    }
    Image image = Small();
    ASSERT_EQ(ApplyOrientation(image, 9), 0);  // not an orientation: left alone
    EXPECT_EQ(OnScreen(image), OnScreen(Small()));
}

// The mean difference of two pictures of one size, per byte.
double MeanDifference(const Image& a, const Image& b)
{
    const std::vector<uint8_t> x = test::Bytes(a), y = test::Bytes(b);
    double sum = 0;
    for (size_t i = 0; i < x.size(); ++i) sum += std::abs(int32_t{x[i]} - int32_t{y[i]});
    return sum / static_cast<double>(x.size());
}

TEST(Metadata, CameraFilesStandAsTheReferenceWhenTurned)
{
    const fs::path folder = kData / "extra/jpeg";
    if (!fs::exists(folder / "hopper.jpg")) GTEST_SKIP() << "no test pictures";
    Image reference;
    ASSERT_EQ(ReadImageFile(folder / "hopper.jpg", kTypeJpeg, reference, false), 0);
    for (int32_t orientation : {2, 3, 5, 6, 7}) {
        const std::string path = folder / FormatText("hopper_orientation_%d.jpg", orientation);
        Image image;
        PictureMetadata metadata;
        ASSERT_EQ(ReadImageFile(path, kTypeJpeg, image, false), 0);
        ASSERT_EQ(MetadataRead(path, metadata), 0);
        EXPECT_EQ(metadata.orientation, orientation);
        // Left as stored the pictures differ by a third of the scale; turned,
        // by what JPEG's own loss leaves.
        EXPECT_GT(MeanDifference(image, reference), 40.0) << orientation;
        ASSERT_EQ(ApplyOrientation(image, metadata.orientation), 0);
        EXPECT_LT(MeanDifference(image, reference), 8.0) << orientation;
    }
}

TEST(Metadata, ExifAndProfileSurviveEveryFormatWithTheOrientationReset)
{
    const fs::path camera = kData / "extra/photos_jpeg/camera_chandelier_orient6.jpg";
    const fs::path profiled = kData / "extra/jpeg/icc_profile_big.jpg";
    if (!fs::exists(camera) || !fs::exists(profiled)) GTEST_SKIP() << "no test pictures";
    PictureMetadata read;
    ASSERT_EQ(MetadataRead(camera, read), 0);
    EXPECT_EQ(read.orientation, 6);
    EXPECT_EQ(read.camera, "Canon PowerShot SX60 HS");
    EXPECT_EQ(read.taken, "2015:02:09 22:47:44");
    EXPECT_EQ(read.exposure, "1/60 s, F5.6, ISO 800");
    Image image;
    ASSERT_EQ(ReadImageFile(camera, kTypeJpeg, image, false), 0);
    ASSERT_EQ(ApplyOrientation(image, read.orientation), 0);

    test::TempDir dir;
    for (const char* name : {"out.jpg", "out.tif", "out.png"}) {
        const std::string out = dir / name;
        SaveOptions options;
        options.metadata = &read;
        ASSERT_EQ(WriteImageFile(out, SaveFilterFromName(out), image, options), 0) << name;
        PictureMetadata written;
        ASSERT_EQ(MetadataRead(out, written), 0);
        EXPECT_EQ(written.orientation, 1) << name;
        EXPECT_EQ(written.camera, read.camera) << name;
        EXPECT_EQ(written.taken, read.taken) << name;
        EXPECT_EQ(written.exposure, read.exposure) << name;
        Image back;
        ASSERT_EQ(ReadImageFile(out, FileTypeFromName(out), back, false), 0);
        EXPECT_EQ(back.width * 10000 + back.height, 1536 * 10000 + 2048) << name;
    }

    PictureMetadata profile;
    ASSERT_EQ(MetadataRead(profiled, profile), 0);
    EXPECT_EQ(profile.profileName, "TIFF RGB");
    for (const char* name : {"icc.jpg", "icc.tif", "icc.png"}) {
        const std::string out = dir / name;
        SaveOptions options;
        options.metadata = &profile;
        ASSERT_EQ(WriteImageFile(out, SaveFilterFromName(out), Small(), options), 0) << name;
        PictureMetadata written;
        ASSERT_EQ(MetadataRead(out, written), 0);
        EXPECT_EQ(written.profileName, "TIFF RGB") << name;
    }

    // A file that is no picture at all stays as it was: the picture is
    // worth more than its metadata.
    const std::string junk = dir / "junk.jpg";
    {
        std::FILE* f = std::fopen(junk.c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fputs("not a picture", f);
        std::fclose(f);
    }
    EXPECT_EQ(MetadataInsert(junk, read, 10, 10), 0);
    EXPECT_EQ(test::Contents(junk), "not a picture");
}

TEST(Metadata, FilesWithoutOrWithDamagedMetadataOpenWithNone)
{
    test::TempDir dir;
    const std::string plain = dir / "plain.png";
    ASSERT_EQ(WriteImageFile(plain, kSavePng, Small(), SaveOptions()), 0);
    PictureMetadata metadata;
    metadata.orientation = 5;
    EXPECT_EQ(MetadataRead(plain, metadata), 0);
    EXPECT_TRUE(metadata.Empty());
    EXPECT_EQ(metadata.orientation, 1);
    EXPECT_EQ(MetadataRead(dir / "missing.jpg", metadata), 0);
    EXPECT_TRUE(metadata.Empty());
    const fs::path invalid = kData / "extra/jpeg/invalid-exif.jpg";
    if (fs::exists(invalid)) {
        EXPECT_EQ(MetadataRead(invalid, metadata), 0);
        EXPECT_EQ(metadata.orientation, 1);
    }
}

}  // namespace
}  // namespace lv
