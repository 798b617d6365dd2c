// What a save guarantees: the temporary file is never opened through a link
// someone planted, the old file keeps its permissions and links, a read-only
// file is left alone, and every picture written can be read back.
#include "shell/safe_write.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tiffio.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "files/formats.h"
#include "image/image.h"
#include "shell/errors.h"
#include "support/temp_dir.h"
#include "synthesis/test_card.h"

namespace lv {
namespace {

namespace fs = std::filesystem;
using test::Contents;
using test::TempDir;

std::string Card(const TempDir& dir, const char* name, int32_t kind = kImageColor)
{
    Image card;
    EXPECT_EQ(MakeTestCard(card, kind, 64, 48), 0);
    const std::string path = dir / name;
    EXPECT_EQ(WriteImageFile(path, SaveFilterFromName(path), card, SaveOptions()), 0);
    return path;
}

uint32_t ModeOf(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

size_t EntryCount(const TempDir& dir)
{
    return static_cast<size_t>(
        std::distance(fs::directory_iterator(dir.path), fs::directory_iterator()));
}

TEST(SafeWrite, PlantedLinksAtEveryNameAreNeverFollowed)
{
    TempDir dir;
    const std::string victim = dir / "victim.txt";
    std::ofstream(victim) << "precious";
    Image picture;
    ASSERT_EQ(MakeTestCard(picture, kImageGray, 40, 30), 0);
    const std::string target = dir / "out.png";

    // A link at each of the first ten names the program will try: it steps
    // past them and writes under the eleventh.
    SafeWriteSeed(1234);
    std::vector<std::string> names;
    for (int32_t i = 0; i < 10; ++i) names.push_back(SafeWriteCandidate(target));
    for (const std::string& name : names) fs::create_symlink(victim, name);
    SafeWriteSeed(1234);
    ASSERT_EQ(WriteImageFile(target, SaveFilterFromName(target), picture, SaveOptions()), 0);
    EXPECT_EQ(Contents(victim), "precious");
    Image back;
    ASSERT_EQ(ReadImageFile(target, kTypePng, back, false), 0);
    EXPECT_EQ(back.width, 40);
    EXPECT_EQ(EntryCount(dir), 12u);  // victim, out.png and the ten links

    // Every name it could choose taken: the save fails with the format's
    // write error and nothing is touched.
    SafeWriteSeed(99);
    for (int32_t i = 0; i < kSafeWriteAttempts; ++i)
        fs::create_symlink(victim, SafeWriteCandidate(target));
    SafeWriteSeed(99);
    const std::string before = Contents(target);
    EXPECT_EQ(WriteImageFile(target, SaveFilterFromName(target), picture, SaveOptions()), 49);
    EXPECT_EQ(ErrorDetail(), "every temporary name tried was taken");
    EXPECT_EQ(Contents(victim), "precious");
    EXPECT_EQ(Contents(target), before);
    SafeWriteSeed(0);
}

TEST(SafeWrite, ReplacingKeepsModeAndLinksAndRefusesReadOnlyFiles)
{
    TempDir dir;
    Image picture;
    ASSERT_EQ(MakeTestCard(picture, kImageColor, 50, 20), 0);
    auto save = [&](const std::string& path) {
        return WriteImageFile(path, SaveFilterFromName(path), picture, SaveOptions());
    };

    // Private pictures stay private.
    const std::string secret = Card(dir, "secret.tif");
    ASSERT_EQ(::chmod(secret.c_str(), 0600), 0);
    ASSERT_EQ(save(secret), 0);
    EXPECT_EQ(ModeOf(secret), 0600u);

    // Through a link: the file it points to is replaced, the link stays.
    fs::create_directory(dir.path / "real");
    const std::string real = Card(dir, "real/photo.bmp");
    ASSERT_EQ(::chmod(real.c_str(), 0640), 0);
    const std::string link = dir / "link.bmp";
    fs::create_symlink("real/photo.bmp", link);
    const std::string old = Contents(real);
    ASSERT_EQ(save(link), 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_NE(Contents(real), old);
    EXPECT_EQ(ModeOf(real), 0640u);
    EXPECT_EQ(fs::read_symlink(link), "real/photo.bmp");
    // A link to a name not there yet makes the file it names.
    fs::create_symlink("real/new.bmp", dir / "ahead.bmp");
    ASSERT_EQ(save(dir / "ahead.bmp"), 0);
    EXPECT_TRUE(fs::is_regular_file(dir.path / "real" / "new.bmp"));

    // Read-only: refused with the format's write error, left as it was.
    const std::string locked = Card(dir, "locked.pcx");
    ASSERT_EQ(::chmod(locked.c_str(), 0444), 0);
    const std::string kept = Contents(locked);
    EXPECT_EQ(save(locked), 51);
    EXPECT_EQ(ErrorDetail(), "the file is read-only");
    EXPECT_EQ(Contents(locked), kept);
    EXPECT_EQ(ModeOf(locked), 0444u);

    // A hard link keeps the old picture under its other name.
    const std::string first = Card(dir, "first.tga");
    const std::string second = dir / "second.tga";
    fs::create_hard_link(first, second);
    const std::string shared = Contents(first);
    ASSERT_EQ(save(first), 0);
    EXPECT_NE(Contents(first), shared);
    EXPECT_EQ(Contents(second), shared);

    // A name as long as the system allows: the temporary's own is short.
    const std::string longest = dir / (std::string(251, 'n') + ".gif").c_str();
    Image gray;
    ASSERT_EQ(MakeTestCard(gray, kImageGray, 10, 10), 0);
    EXPECT_EQ(WriteImageFile(longest, SaveFilterFromName(longest), gray, SaveOptions()), 0);

    // Nothing left behind by any of it.
    for (const auto& entry : fs::recursive_directory_iterator(dir.path))
        EXPECT_NE(entry.path().extension(), ".tmp") << entry.path();
}

// Pictures of more than 1 GiB of rows, which the record can hold, go to TIFF
// and PNG and come back whole. Only where the machine has the memory.
TEST(SafeWrite, PicturesOverAGibibyteRoundTrip)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "too slow under the address sanitizer";
#endif
    long pages = sysconf(_SC_AVPHYS_PAGES), size = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || size <= 0 || int64_t{pages} * size < (int64_t{6} << 30))
        GTEST_SKIP() << "needs 6 GiB of free memory";
    TempDir dir;
    Image big;
    // 21000 colour pixels a row (63000 bytes, inside a block) by 17100 rows.
    ASSERT_EQ(ImageAlloc(big, kImageColor, 21000, 17100, 300.0), 0);
    ASSERT_GT(int64_t{big.stride} * big.height, int64_t{1} << 30);
    for (int32_t y = 0; y < big.height; ++y)
        for (int32_t x = 0; x < big.stride; ++x)
            big.rows[y][x] = static_cast<uint8_t>((y / 64 + x / 96) & 0xFF);
    for (const char* name : {"big.tif", "big.png"}) {
        SCOPED_TRACE(name);
        const std::string path = dir / name;
        ASSERT_EQ(WriteImageFile(path, SaveFilterFromName(path), big, SaveOptions()), 0);
        Image back;
        ASSERT_EQ(ReadImageFile(path, FileTypeFromName(path), back, false), 0);
        ASSERT_EQ(back.width, big.width);
        ASSERT_EQ(back.height, big.height);
        for (int32_t y : {0, 1, 8549, big.height - 1})
            EXPECT_EQ(std::memcmp(back.rows[y], big.rows[y], 63000), 0) << y;
        fs::remove(path);
    }
}

TEST(SafeWrite, BigTiffOpensThroughLibtiff)
{
    TempDir dir;
    const std::string path = dir / "big.tif";
    TIFF* tif = TIFFOpen(path.c_str(), "w8");  // BigTIFF
    ASSERT_NE(tif, nullptr);
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, 3);
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, 2);
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    uint8_t rows[2][3] = {{10, 20, 30}, {40, 50, 60}};
    for (uint32_t y = 0; y < 2; ++y) ASSERT_EQ(TIFFWriteScanline(tif, rows[y], y, 0), 1);
    TIFFClose(tif);
    Image image;
    ASSERT_EQ(ReadImageFile(path, kTypeTiff, image, false), 0);
    EXPECT_EQ(image.kind, kImageGray);
    EXPECT_EQ(image.rows[1][2], 30);  // the top row is the last of the record
    EXPECT_EQ(image.rows[0][0], 40);
}

}  // namespace
}  // namespace lv
