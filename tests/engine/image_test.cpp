#include "image/image.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/tables.h"
#include "support/scripted_frontend.h"

namespace lv {
namespace {

// Fills every byte of every row, padding included, with a value that depends
// on the row and the byte, so misplaced rows show.
void Pattern(Image& image)
{
    for (int32_t y = 0; y < ImageRowCount(image); ++y)
        for (int32_t i = 0; i < image.stride; ++i)
            image.rows[y][i] = static_cast<uint8_t>(y * 31 + i * 7 + 3);
}

bool SameBytes(const Image& a, const Image& b)
{
    if (a.kind != b.kind || a.width != b.width || a.height != b.height || a.stride != b.stride)
        return false;
    for (int32_t y = 0; y < ImageRowCount(a); ++y)
        if (std::memcmp(a.rows[y], b.rows[y], static_cast<size_t>(a.stride)) != 0) return false;
    return true;
}

TEST(ImageAlloc, BlockLayoutAtTheLimit)
{
    Image image;
    // 100 colour pixels: 300 bytes a row, 216 rows a block.
    ASSERT_EQ(ImageAlloc(image, kImageColor, 100, 432, 72.0), 0);
    EXPECT_EQ(image.stride, 300);
    EXPECT_EQ(image.rowsPerBlock, 216);
    EXPECT_EQ(image.blockCount, 2);
    EXPECT_EQ(ImageBlockBytes(image, 1), 216 * 300);  // exact multiple: a full last block
    for (int32_t i = 0; i < image.height; ++i)
        EXPECT_EQ(image.rows[i], image.blocks[i / 216] + (i % 216) * 300) << i;

    ASSERT_EQ(ImageAlloc(image, kImageColor, 100, 433, 72.0), 0);
    EXPECT_EQ(image.blockCount, 3);
    EXPECT_EQ(ImageBlockBytes(image, 2), 300);
    EXPECT_LE(ImageBlockBytes(image, 0), kBlockBytes);

    // The widest rows that fit one block, and the first that do not.
    ASSERT_EQ(ImageAlloc(image, kImageGray, 65000, 3, 72.0), 0);
    EXPECT_EQ(image.rowsPerBlock, 1);
    EXPECT_EQ(image.blockCount, 3);
    EXPECT_EQ(ImageAlloc(image, kImageGray, 65001, 3, 72.0), kErrOutOfMemory);
    EXPECT_EQ(image.kind, 0);
    EXPECT_EQ(image.rows, nullptr);
    EXPECT_EQ(ImageAlloc(image, kImageColor, 21666, 2, 72.0), 0);
    EXPECT_EQ(ImageAlloc(image, kImageColor, 21667, 2, 72.0), kErrOutOfMemory);
    EXPECT_EQ(ImageAlloc(image, kImageBinary, 520000, 2, 72.0), 0);
    EXPECT_EQ(ImageAlloc(image, kImageBinary, 520001, 2, 72.0), kErrOutOfMemory);
    EXPECT_EQ(ImageAlloc(image, kImageColor, -5, 2, 72.0), kErrOutOfMemory);
    ImageFree(image);
    ImageFree(image);  // harmless on an empty record
}

TEST(ImageAlloc, StridesAndDegenerateShapes)
{
    Image image;
    ASSERT_EQ(ImageAlloc(image, kImageBinary, 1, 1, 72.0), 0);
    EXPECT_EQ(image.stride, 4);
    ASSERT_EQ(ImageAlloc(image, kImageBinary, 33, 1, 72.0), 0);
    EXPECT_EQ(image.stride, 8);
    ASSERT_EQ(ImageAlloc(image, kImageGray, 5, 1, 72.0), 0);
    EXPECT_EQ(image.stride, 8);
    ASSERT_EQ(ImageAlloc(image, kImageColor, 5, 1, 72.0), 0);
    EXPECT_EQ(image.stride, 16);

    // Zero-sized pictures are valid and hold no memory.
    ASSERT_EQ(ImageAlloc(image, kImageColor, 0, 10, 72.0), 0);
    EXPECT_EQ(image.kind, kImageColor);
    EXPECT_EQ(image.rows, nullptr);
    ASSERT_EQ(ImageAlloc(image, kImageGray, 10, 0, 72.0), 0);
    EXPECT_EQ(image.rows, nullptr);

    // A solid colour and a histogram hold one row whatever the height says,
    // and need a non-zero height to get it.
    ASSERT_EQ(ImageAlloc(image, kImageHistogram, 1, 200, 0.0), 0);
    EXPECT_EQ(image.stride, 1028);
    EXPECT_EQ(image.height, 200);
    EXPECT_EQ(ImageRowCount(image), 1);
    EXPECT_EQ(image.blockCount, 1);
    ASSERT_EQ(ImageAlloc(image, kImageSolid, 1, 0, 0.0), 0);
    EXPECT_EQ(image.stride, 4);
    EXPECT_EQ(image.rows, nullptr);

    // Unknown kinds are kept in the record with nothing allocated.
    ASSERT_EQ(ImageAlloc(image, 9, 10, 10, 0.0), 0);
    EXPECT_EQ(image.kind, 9);
    EXPECT_EQ(image.rows, nullptr);
    EXPECT_STREQ(ImageKindName(9), "Unknown");
    EXPECT_STREQ(ImageKindName(kImageGray), "Black and White Image");
}

TEST(ImageAlloc, SameShapeKeepsPixelsAndTakesTheNewResolution)
{
    Image image;
    ASSERT_EQ(ImageAlloc(image, kImageGray, 7, 3, 72.0), 0);
    Pattern(image);
    uint8_t* before = image.rows[2];
    const uint8_t value = image.rows[2][5];
    ASSERT_EQ(ImageAlloc(image, kImageGray, 7, 3, 300.0), 0);
    EXPECT_EQ(image.rows[2], before);
    EXPECT_EQ(image.rows[2][5], value);
    EXPECT_EQ(image.resolution, 300.0);
}

TEST(ImageCopies, NegativeInvertsEveryByteAndTwiceRestores)
{
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        Image source, once, twice;
        ASSERT_EQ(ImageAlloc(source, kind, 13, 9, 150.0), 0);
        Pattern(source);
        ASSERT_EQ(ImageNegative(source, once), 0);
        EXPECT_EQ(once.resolution, 150.0);
        EXPECT_EQ(once.rows[4][1], static_cast<uint8_t>(255 - source.rows[4][1]));
        // Padding is inverted too.
        EXPECT_EQ(once.rows[8][once.stride - 1],
                  static_cast<uint8_t>(255 - source.rows[8][source.stride - 1]));
        ASSERT_EQ(ImageNegative(once, twice), 0);
        EXPECT_TRUE(SameBytes(source, twice)) << kind;
    }
}

TEST(ImageCopies, KindsAndBoxRules)
{
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    Image source, destination;

    ASSERT_EQ(ImageAlloc(source, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(ImageCopy(source, destination), kErrImageType);
    EXPECT_EQ(ImageNegative(source, destination), kErrImageType);
    EXPECT_EQ(destination.kind, 0);  // refused before anything is allocated
    Pattern(source);
    ASSERT_EQ(ImageDuplicate(source, destination), 0);  // any kind, no box
    EXPECT_TRUE(SameBytes(source, destination));
    EXPECT_EQ(fe.opens + fe.waitCursors, 0);

    // 9999 pixels: only the wait cursor; 10000: the box.
    ASSERT_EQ(ImageAlloc(source, kImageGray, 99, 101, 72.0), 0);
    Pattern(source);
    ASSERT_EQ(ImageCopy(source, destination), 0);
    EXPECT_EQ(fe.opens, 0);
    EXPECT_EQ(fe.waitCursors, 1);
    EXPECT_TRUE(SameBytes(source, destination));
    ASSERT_EQ(ImageAlloc(source, kImageGray, 100, 100, 72.0), 0);
    Pattern(source);
    ASSERT_EQ(ImageNegative(source, destination), 0);
    ASSERT_EQ(ImageCopy(source, destination), 0);
    EXPECT_EQ(fe.opens, 2);
    EXPECT_EQ(fe.closes, 2);
    EXPECT_EQ(fe.titles, (std::vector<std::string>{"Negative", "Copy"}));

    // The boxed copy always shows its box.
    ASSERT_EQ(ImageAlloc(source, kImageColor, 2, 2, 72.0), 0);
    Pattern(source);
    ASSERT_EQ(ImageCopyBoxed(source, destination), 0);
    EXPECT_EQ(fe.opens, 3);
}

TEST(ImageCopies, AbortKeepsTheRowsAlreadyWritten)
{
    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 5;
    ScopedFrontEnd installed(fe);
    Image source, destination;
    ASSERT_EQ(ImageAlloc(source, kImageGray, 200, 60, 72.0), 0);
    Pattern(source);
    // Same shape: the allocation keeps these bytes, so unwritten rows show.
    ASSERT_EQ(ImageAlloc(destination, kImageGray, 200, 60, 72.0), 0);
    for (int32_t y = 0; y < 60; ++y) std::memset(destination.rows[y], 0x77, 200);

    EXPECT_EQ(ImageCopy(source, destination), kErrAborted);
    for (int32_t y = 0; y <= 5; ++y) EXPECT_EQ(destination.rows[y][10], source.rows[y][10]) << y;
    EXPECT_EQ(destination.rows[6][10], 0x77);
    EXPECT_EQ(fe.closes, 1);
    EXPECT_EQ(fe.arrowCursors, 1);
}

TEST(ImagePartCopies, RectanglesAndShifts)
{
    Image source, part;
    ASSERT_EQ(ImageAlloc(source, kImageBinary, 20, 4, 72.0), 0);
    for (int32_t y = 0; y < 4; ++y) {
        std::memset(source.rows[y], 0, 4);
        for (int32_t x = 0; x < 20; ++x)
            if ((x + y) % 3 == 0) SetBit(source.rows[y], x);
    }
    ASSERT_EQ(ImageCopyRect(source, 3, 1, 14, 2, part), 0);
    EXPECT_EQ(part.width, 12);
    EXPECT_EQ(part.height, 2);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 12; ++x)
            EXPECT_EQ(GetBit(part.rows[y], x), (x + 3 + y + 1) % 3 == 0);
    EXPECT_EQ(ImageCopyRect(source, 3, 1, 20, 2, part), 73);
    EXPECT_EQ(ImageCopyRect(source, 5, 1, 4, 2, part), 73);

    Image gray;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 6, 3, 72.0), 0);  // stride 8
    Pattern(gray);
    uint8_t row[8];
    std::memcpy(row, gray.rows[1], 8);
    ImageShiftLeft(gray, 2);
    // stride - 2 bytes move, padding with them; the last two stay as they were.
    EXPECT_EQ(0, std::memcmp(gray.rows[1], row + 2, 6));
    EXPECT_EQ(0, std::memcmp(gray.rows[1] + 6, row + 6, 2));
    Pattern(gray);
    ImageShiftRight(gray, 3);
    EXPECT_EQ(0, std::memcmp(gray.rows[1] + 3, row, 5));

    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 3, 5, 72.0), 0);
    Pattern(colour);
    Image original;
    ASSERT_EQ(ImageDuplicate(colour, original), 0);
    ImageShiftUp(colour, 2);
    for (int32_t y = 2; y < 5; ++y)
        EXPECT_EQ(0, std::memcmp(colour.rows[y], original.rows[y - 2], 12)) << y;
    EXPECT_EQ(0, std::memcmp(colour.rows[1], original.rows[1], 12));  // vacated rows untouched
    Pattern(colour);
    ImageShiftDown(colour, 1);
    for (int32_t y = 0; y < 4; ++y)
        EXPECT_EQ(0, std::memcmp(colour.rows[y], original.rows[y + 1], 12)) << y;

    ImageShiftLeft(source, 5);
    for (int32_t x = 0; x < 15; ++x) EXPECT_EQ(GetBit(source.rows[0], x), (x + 5) % 3 == 0) << x;
}

TEST(ImageSampling, BilinearAndItsEdges)
{
    Image gray;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 3, 2, 72.0), 0);
    const uint8_t values[2][3] = {{0, 255, 100}, {40, 40, 200}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) gray.rows[y][x] = values[y][x];

    EXPECT_EQ(ImageSampleGray(gray, 1.0, 0.0), 255);
    EXPECT_EQ(ImageSampleGray(gray, 0.5, 0.0), 128);  // fraction 128 of 0..255
    EXPECT_EQ(ImageSampleGray(gray, 2.0, 1.0), 200);  // the far corner, nothing beyond it
    EXPECT_EQ(ImageSampleGray(gray, 2.0, 0.5), Lerp8(100, 200, 128));
    EXPECT_EQ(ImageSampleGray(gray, -0.01, 0.0), 0);
    EXPECT_EQ(ImageSampleGray(gray, 2.01, 0.0), 0);
    EXPECT_EQ(ImageSampleGray(gray, 0.0, 1.5), 0);

    // One pixel wide: the sample stays on the only column.
    Image thin;
    ASSERT_EQ(ImageAlloc(thin, kImageGray, 1, 3, 72.0), 0);
    thin.rows[0][0] = 0;
    thin.rows[1][0] = 200;
    thin.rows[2][0] = 0;
    EXPECT_EQ(ImageSampleGray(thin, 0.0, 0.5), Lerp8(0, 200, 128));

    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 2, 2, 72.0), 0);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) {
            uint8_t* p = colour.rows[y] + x * 3;
            p[0] = 10;                             // blue
            p[1] = 20;                             // green
            p[2] = static_cast<uint8_t>(x * 200);  // red
        }
    uint8_t r, g, b;
    ImageSampleColor(colour, 0.5, 0.25, &r, &g, &b);
    EXPECT_EQ(r, Lerp8(0, 200, 128));
    EXPECT_EQ(g, 20);
    EXPECT_EQ(b, 10);
    ImageSampleColor(colour, 5.0, 0.0, &r, &g, &b);
    EXPECT_EQ(r + g + b, 0);

    Image bits;
    ASSERT_EQ(ImageAlloc(bits, kImageBinary, 9, 1, 72.0), 0);
    std::memset(bits.rows[0], 0, bits.stride);
    SetBit(bits.rows[0], 8);
    EXPECT_EQ(ImageSampleBit(bits, 7.5, 0.0), 1);  // rounds half away from zero
    EXPECT_EQ(ImageSampleBit(bits, 7.49, 0.0), 0);
}

TEST(ImageArea, SumsMaskValuesWithASilentBox)
{
    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 3;  // the Area box has no Cancel: nothing stops it
    ScopedFrontEnd installed(fe);
    Image mask;
    ASSERT_EQ(ImageAlloc(mask, kImageGray, 200, 50, 72.0), 0);
    for (int32_t y = 0; y < 50; ++y) std::memset(mask.rows[y], y < 25 ? 255 : 51, 200);
    EXPECT_DOUBLE_EQ(ImageArea(mask), 25 * 200 + 25 * 200 * 0.2);
    EXPECT_EQ(fe.titles, std::vector<std::string>{"Area"});
    EXPECT_EQ(fe.pumps, 50);
}

TEST(ImageDrawDisk, FillsInsideBlendsTheEdgeLeavesTheRest)
{
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 21, 21, 72.0), 0);
    for (int32_t y = 0; y < 21; ++y) std::memset(colour.rows[y], 0, colour.stride);
    const uint8_t red[3] = {250, 0, 0};
    ImageDrawDisk(colour, 10.0, 10.0, 5.0, red);
    const uint8_t* centre = colour.rows[10] + 30;
    EXPECT_EQ(centre[2], 250);
    EXPECT_EQ(centre[0], 0);
    EXPECT_EQ(colour.rows[10][0 + 2], 0);  // far outside
    // On the circle itself about half of the sample grid is inside.
    const uint8_t edge = colour.rows[10][15 * 3 + 2];
    EXPECT_GT(edge, 60);
    EXPECT_LT(edge, 190);
    // Symmetric about the centre.
    EXPECT_EQ(colour.rows[10][5 * 3 + 2], edge);
    EXPECT_EQ(colour.rows[15][10 * 3 + 2], edge);

    Image gray;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 8, 8, 72.0), 0);
    for (int32_t y = 0; y < 8; ++y) std::memset(gray.rows[y], 0, gray.stride);
    const uint8_t green[3] = {0, 255, 0};
    ImageDrawDisk(gray, 3.0, 3.0, 2.5, green);
    EXPECT_EQ(gray.rows[3][3], luminance(0, 255, 0));
    ImageDrawDisk(gray, -100.0, 3.0, 2.0, green);  // wholly outside: nothing
    ImageDrawDisk(gray, 7.0, 7.0, 1000.0, green);  // covers all, clipped
    EXPECT_EQ(gray.rows[0][0], luminance(0, 255, 0));
}

TEST(PixelArithmetic, SharedTablesAndRounding)
{
    EXPECT_EQ(Mul8Table[255][255], 255);
    EXPECT_EQ(Mul8Table[128][128], 64);
    EXPECT_EQ(Mul8Table[1][127], 0);
    EXPECT_EQ(Mul8Table[1][128], 1);
    EXPECT_EQ(Lerp8(200, 100, 255), 100);
    EXPECT_EQ(Lerp8(100, 200, 0), 100);
    EXPECT_EQ(Lerp8(200, 100, 128), 150);

    EXPECT_EQ(Cube3547(-128), -111);
    EXPECT_EQ(Cube4730(-128), -148);
    EXPECT_EQ(Cube3547(255), (255 * 3547 + 2048) >> 12);
    EXPECT_EQ(Cube4730(-255), -294);

    EXPECT_EQ(monitor_gamma, 2.2222222222222223);
    EXPECT_EQ(Level12[255], 4096);
    EXPECT_EQ(Level12[1], 16);
    EXPECT_EQ(Level8[4096], 255);
    EXPECT_EQ(Level8[4095], 254);
    EXPECT_EQ(GammaToLinear[0], 0);
    EXPECT_EQ(GammaToLinear[255], 4096);
    EXPECT_EQ(GammaToLinear[128],
              RoundToInt(std::pow(128 / 255.0, 1.0 / 2.2222222222222223) * 4096));
    EXPECT_EQ(LinearToGamma[4096], 255);
    EXPECT_EQ(LinearToGamma[2048], RoundToInt(std::pow(0.5, 2.2222222222222223) * 255));

    EXPECT_EQ(RoundToInt(2.5), 3);
    EXPECT_EQ(RoundToInt(-2.5), -3);
    EXPECT_EQ(RoundToInt(2.4999), 2);
    EXPECT_EQ(RoundToInt(1e300), INT32_MAX);
    EXPECT_EQ(RoundToInt(-1e300), INT32_MIN);
    EXPECT_EQ(RoundToInt(std::nan("")), 0);
    EXPECT_EQ(Clamp8(-3), 0);
    EXPECT_EQ(Clamp8(300), 255);

    uint8_t row[2] = {0, 0};
    SetBit(row, 0);
    SetBit(row, 9);
    EXPECT_EQ(row[0], 0x80);
    EXPECT_EQ(row[1], 0x40);
    FlipBit(row, 9);
    ClearBit(row, 0);
    EXPECT_EQ(row[0] | row[1], 0);

    uint8_t bytes[6] = {1, 2, 3, 4, 5, 6};
    CopyBytes(bytes, bytes + 2, 4);  // overlapping, source first
    EXPECT_EQ(bytes[5], 4);
    EXPECT_EQ(bytes[2], 1);
}

}  // namespace
}  // namespace lv
