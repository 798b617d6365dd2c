// The fast paths give the same bytes as the plain ones: vector row
// conversions, pictures from the page allocator, TIFF in large strips, and
// the header-only read behind `info`.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "files/formats.h"
#include "image/image.h"
#include "image/row_ops.h"
#include "support/temp_dir.h"
#include "synthesis/test_card.h"

namespace lv {
namespace {

TEST(RowOps, VectorSwapEqualsThePlainLoopAtEveryLength)
{
    std::mt19937 random(7);
    for (size_t pixels = 1; pixels <= 70; ++pixels) {
        std::vector<uint8_t> in(pixels * 3 + 16), fast(pixels * 3 + 16, 0xEE),
            plain(pixels * 3 + 16, 0xEE);
        for (uint8_t& b : in) b = static_cast<uint8_t>(random());
        SwapRedBlue(in.data(), fast.data(), pixels);
        SwapRedBluePlain(in.data(), plain.data(), pixels);
        // Every pixel swapped, and not a byte written past the row.
        EXPECT_EQ(fast, plain) << pixels;
        EXPECT_EQ(plain[0], in[2]);
        EXPECT_EQ(plain[pixels * 3 - 1], in[pixels * 3 - 3]);
        EXPECT_EQ(fast[pixels * 3], 0xEE) << pixels;
    }
}

TEST(PixelStore, LargePicturesComeFromPagesWithTheBlockLayoutKept)
{
    Image big;
    ASSERT_EQ(ImageAlloc(big, kImageColor, 3001, 2000, 300.0), 0);
    EXPECT_TRUE(big.store.mapped);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(big.store.base) % (2u << 20), 0u);
    EXPECT_EQ(big.stride, 9004);
    EXPECT_EQ(big.rowsPerBlock, 7);  // 65000 / 9004
    EXPECT_EQ(big.blockCount, 286);  // 2000 rows, the last block 5 of them
    for (int32_t i = 0; i < big.height; ++i)
        ASSERT_EQ(big.rows[i], big.blocks[i / 7] + (i % 7) * 9004) << i;
    EXPECT_LE(big.blocks[285] + 5 * 9004, big.store.base + big.store.size);
    // Every byte can be written and read back through the rows.
    for (int32_t y = 0; y < big.height; ++y) std::memset(big.rows[y], y & 0xFF, big.stride);
    Image copy, negative;
    ASSERT_EQ(ImageDuplicate(big, copy), 0);
    ASSERT_EQ(ImageNegative(copy, negative), 0);
    ASSERT_EQ(ImageNegative(negative, copy), 0);
    for (int32_t y = 0; y < big.height; y += 37)
        ASSERT_EQ(std::memcmp(copy.rows[y], big.rows[y], big.stride), 0) << y;

    // Small ones from the heap, the same layout.
    Image small;
    ASSERT_EQ(ImageAlloc(small, kImageGray, 100, 100, 72.0), 0);
    EXPECT_FALSE(small.store.mapped);
    EXPECT_EQ(small.rows[99], small.blocks[0] + 99 * 100);
    // Moving a record moves its memory with it.
    Image moved = std::move(big);
    EXPECT_EQ(big.store.base, nullptr);
    EXPECT_EQ(moved.rows[1999][0], 1999 & 0xFF);
}

TEST(TiffStrips, PicturesAreWrittenInStripsOfAboutAMegabyte)
{
    test::TempDir dir;
    Image card;
    ASSERT_EQ(MakeTestCard(card, kImageColor, 3000, 400), 0);
    const std::string path = dir / "card.tif";
    ASSERT_EQ(WriteImageFile(path, kSaveTiff, card, SaveOptions()), 0);
    TIFF* tif = TIFFOpen(path.c_str(), "r");
    ASSERT_NE(tif, nullptr);
    uint32_t rowsPerStrip = 0;
    TIFFGetField(tif, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    EXPECT_EQ(rowsPerStrip, 116u);  // 1048576 / 9000
    EXPECT_EQ(TIFFNumberOfStrips(tif), 4u);
    TIFFClose(tif);
    Image back;
    ASSERT_EQ(ReadImageFile(path, kTypeTiff, back, false), 0);
    for (int32_t y = 0; y < 400; ++y)
        ASSERT_EQ(std::memcmp(back.rows[y], card.rows[y], 9000), 0) << y;
}

TEST(ReadImageInfo, TheHeaderAloneGivesKindSizeAndResolution)
{
    test::TempDir dir;
    Image gray, colour;
    ASSERT_EQ(MakeTestCard(gray, kImageGray, 123, 45), 0);
    ASSERT_EQ(MakeTestCard(colour, kImageColor, 67, 89), 0);
    for (const char* name : {"a.tif", "a.png", "a.bmp", "a.tga", "a.pcx", "a.gif", "a.jpg"}) {
        SCOPED_TRACE(name);
        const std::string path = dir / name;
        const Image& picture = std::string(name) == "a.gif" ? gray : colour;
        ASSERT_EQ(WriteImageFile(path, SaveFilterFromName(path), picture, SaveOptions()), 0);
        Image whole;
        ASSERT_EQ(ReadImageFile(path, FileTypeFromName(path), whole, false), 0);
        PictureInfo info;
        ASSERT_EQ(ReadImageInfo(path, FileTypeFromName(path), info), 0);
        EXPECT_EQ(info.kind, whole.kind);
        EXPECT_EQ(info.width, whole.width);
        EXPECT_EQ(info.height, whole.height);
        EXPECT_EQ(info.resolution, whole.resolution);
    }
    // No pixel is decoded: a JPEG cut in half, which cannot be opened,
    // still tells its size.
    const std::string whole = test::Contents(dir / "a.jpg");
    const std::string cut = dir / "cut.jpg";
    std::FILE* f = std::fopen(cut.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(whole.data(), 1, whole.size() / 2, f);
    std::fclose(f);
    Image broken;
    EXPECT_EQ(ReadImageFile(cut, kTypeJpeg, broken, false), 22);
    PictureInfo info;
    ASSERT_EQ(ReadImageInfo(cut, kTypeJpeg, info), 0);
    EXPECT_EQ(info.width, 67);
    EXPECT_EQ(info.height, 89);
    EXPECT_EQ(ReadImageInfo(dir / "none.png", kTypePng, info), 48);
}

}  // namespace
}  // namespace lv
