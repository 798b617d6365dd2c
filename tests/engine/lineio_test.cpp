#include "image/lineio.h"

#include <gtest/gtest.h>

#include <cstring>

#include "image/pixel.h"
#include "shell/errors.h"

namespace lv {
namespace {

// A gray picture whose pixel (x, y) is x + 100 * y (mod 256), so a read row
// and column can be told from the value.
Image GrayRamp(int32_t width, int32_t height)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kImageGray, width, height, 72.0), 0);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) image.rows[y][x] = static_cast<uint8_t>(x + 100 * y);
    return image;
}

uint8_t At(int32_t x, int32_t y) { return static_cast<uint8_t>(x + 100 * y); }

TEST(LineInput, DecimatesAndRepeatsTheTopRow)
{
    Image image = GrayRamp(100, 100);
    LineInput input;
    LineInputReset(input);
    ASSERT_EQ(LineInputOpen(image, 0, 0, -3, 34, input), 0);
    for (int32_t line = 0; line < 35; ++line) {
        const uint8_t* row = LineInputNext(input);
        const int32_t y = line * 3 > 99 ? 99 : line * 3;  // 0, 3, ... 99, then 99 again
        EXPECT_EQ(row[0], At(0, y)) << line;
        EXPECT_EQ(row[33], At(99, y)) << line;
    }
    LineInputClose(input);
    LineInputClose(input);  // closing twice is harmless
}

TEST(LineInput, InPlaceRowsBitsAndClampedColumns)
{
    Image image = GrayRamp(10, 4);
    LineInput input;
    ASSERT_EQ(LineInputOpen(image, 2, 1, 1, 5, input), 0);
    EXPECT_EQ(input.buffer, nullptr);
    EXPECT_EQ(LineInputNext(input), image.rows[1] + 2);  // no copy at full size

    // A run reaching past the right edge is gathered with the edge repeated.
    ASSERT_EQ(LineInputOpen(image, 7, 0, 1, 5, input), 0);
    const uint8_t* row = LineInputNext(input);
    EXPECT_EQ(row[2], At(9, 0));
    EXPECT_EQ(row[4], At(9, 0));

    Image bits;
    ASSERT_EQ(ImageAlloc(bits, kImageBinary, 12, 1, 72.0), 0);
    std::memset(bits.rows[0], 0, bits.stride);
    SetBit(bits.rows[0], 1);
    SetBit(bits.rows[0], 11);
    ASSERT_EQ(LineInputOpen(bits, 0, 0, 1, 12, input), 0);
    row = LineInputNext(input);
    EXPECT_EQ(row[0], 0);
    EXPECT_EQ(row[1], 255);
    EXPECT_EQ(row[11], 255);

    Image solid;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(LineInputOpen(solid, 0, 0, 1, 1, input), kErrImageType);
}

TEST(LineWindow, ModesAndEdges)
{
    Image image = GrayRamp(40, 10);
    LineWindow window;
    LineWindowReset(window);

    // Inside the picture: rows straight from the image.
    ASSERT_EQ(LineWindowOpen(image, 5, 4, 1, 10, 2, window), 0);
    EXPECT_EQ(window.mode, 0);
    EXPECT_EQ(window.advance, 1);
    const uint8_t* const* rows = LineWindowNext(window);
    EXPECT_EQ(rows[2], image.rows[4] + 3);
    EXPECT_EQ(rows[0][0], At(3, 2));

    // At the left edge and the bottom: copied rows, columns and rows clamped.
    ASSERT_EQ(LineWindowOpen(image, 0, 0, 1, 10, 2, window), 0);
    EXPECT_EQ(window.mode, 1);
    EXPECT_EQ(window.rowBytes, 14);
    rows = LineWindowNext(window);
    EXPECT_EQ(rows[0][0], At(0, 0));  // row -2 and column -2 repeat the corner
    EXPECT_EQ(rows[1][1], At(0, 0));
    EXPECT_EQ(rows[4][2], At(0, 2));  // the center column of output pixel 0, two rows up
    EXPECT_EQ(rows[2][13], At(11, 0));

    // At the top: the top row repeats, and the window moves by step rows.
    ASSERT_EQ(LineWindowOpen(image, 10, 9, -2, 5, 1, window), 0);
    EXPECT_EQ(window.mode, 0);
    rows = LineWindowNext(window);
    EXPECT_EQ(rows[2][0], At(9, 9));
    EXPECT_EQ(window.y, 11);
    rows = LineWindowNext(window);
    EXPECT_EQ(rows[0][1], At(10, 8));  // center clamped to 9: rows 8, 9 and 9 again
    EXPECT_EQ(rows[2][0], At(9, 9));

    // Zoomed out beyond the window size: only the columns around each output
    // position are gathered.
    ASSERT_EQ(LineWindowOpen(image, 0, 5, -5, 8, 1, window), 0);
    EXPECT_EQ(window.mode, 2);
    EXPECT_EQ(window.advance, 3);
    EXPECT_EQ(window.rowBytes, 24);
    rows = LineWindowNext(window);
    for (int32_t k = 0; k < 8; ++k) {
        const int32_t c = k * 5;
        EXPECT_EQ(rows[1][k * 3 + 0], At(c - 1 < 0 ? 0 : c - 1, 5)) << k;
        EXPECT_EQ(rows[1][k * 3 + 1], At(c, 5)) << k;
        EXPECT_EQ(rows[1][k * 3 + 2], At(c + 1 > 39 ? 39 : c + 1, 5)) << k;
    }
    LineWindowClose(window);
}

TEST(LineWindow, ColourAndBitRows)
{
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 4, 3, 72.0), 0);
    for (int32_t y = 0; y < 3; ++y)
        for (int32_t i = 0; i < colour.stride; ++i)
            colour.rows[y][i] = static_cast<uint8_t>(i + 50 * y);
    LineWindow window;
    ASSERT_EQ(LineWindowOpen(colour, 0, 0, 1, 4, 1, window), 0);
    EXPECT_EQ(window.mode, 1);
    EXPECT_EQ(window.rowBytes, 18);
    EXPECT_EQ(window.advance, 3);
    const uint8_t* const* rows = LineWindowNext(window);
    EXPECT_EQ(rows[1][0], 0);    // column -1 is column 0, blue
    EXPECT_EQ(rows[1][3], 0);    // column 0
    EXPECT_EQ(rows[1][17], 11);  // column 4 is column 3, red
    EXPECT_EQ(rows[2][4], 51);

    Image bits;
    ASSERT_EQ(ImageAlloc(bits, kImageBinary, 8, 2, 72.0), 0);
    bits.rows[0][0] = 0x81;
    bits.rows[1][0] = 0x00;
    ASSERT_EQ(LineWindowOpen(bits, 1, 0, 1, 6, 1, window), 0);
    EXPECT_EQ(window.mode, 1);  // bits are always expanded to bytes
    rows = LineWindowNext(window);
    EXPECT_EQ(rows[1][0], 255);
    EXPECT_EQ(rows[1][1], 0);
    EXPECT_EQ(rows[1][7], 255);
    EXPECT_EQ(rows[2][0], 0);
}

TEST(LineOutput, ReplicatesPixelsAndRows)
{
    Image display;
    ASSERT_EQ(ImageAlloc(display, kImageGray, 11, 7, 72.0), 0);
    for (int32_t y = 0; y < 7; ++y) std::memset(display.rows[y], 0xEE, display.stride);
    LineOutput output;
    LineOutputReset(output);
    ASSERT_EQ(LineOutputOpen(display, 3, 1, 9, 0, 1, output), 0);
    EXPECT_EQ(output.replicate, 3);
    for (int32_t line = 0; line < 3; ++line) {
        uint8_t* row = LineOutputRow(output);
        for (int32_t i = 0; i < 3; ++i) row[i] = static_cast<uint8_t>(10 * line + i);
        LineOutputFlush(output);
    }
    // Row 0..2 from worker row 0, 3..5 from row 1, 6 from row 2 (cut at the top).
    const uint8_t expected[11] = {0xEE, 0, 0, 0, 1, 1, 1, 2, 2, 2, 0xEE};
    for (int32_t y = 0; y < 3; ++y) EXPECT_EQ(0, std::memcmp(display.rows[y], expected, 11)) << y;
    EXPECT_EQ(display.rows[4][4], 11);
    EXPECT_EQ(display.rows[6][9], 22);
    EXPECT_EQ(display.rows[6][10], 0xEE);

    // Past the last row a flush does nothing and the row pointer stays valid.
    EXPECT_EQ(output.y, 9);
    uint8_t* spill = LineOutputRow(output);
    spill[0] = 1;
    LineOutputFlush(output);
    EXPECT_EQ(output.y, 9);
    LineOutputClose(output);
}

TEST(LineOutput, DisplayTablesApplyToColourPreviewsOnly)
{
    DisplayTables invert;
    for (int i = 0; i < 256; ++i) {
        invert.red[i] = static_cast<uint8_t>(255 - i);
        invert.green[i] = static_cast<uint8_t>(i / 2);
        invert.blue[i] = static_cast<uint8_t>(i);
    }
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 4, 2, 72.0), 0);
    LineOutput output;
    // Direct rows (zoom 1), not raw: converted in place, columns x0..x1 only.
    ASSERT_EQ(LineOutputOpen(colour, 1, 1, 2, 0, 0, output, &invert), 0);
    EXPECT_EQ(output.row, nullptr);
    std::memset(colour.rows[0], 100, colour.stride);
    LineOutputFlush(output);
    EXPECT_EQ(colour.rows[0][0], 100);  // column 0 untouched
    EXPECT_EQ(colour.rows[0][3], 100);  // blue
    EXPECT_EQ(colour.rows[0][4], 50);   // green
    EXPECT_EQ(colour.rows[0][5], 155);  // red
    EXPECT_EQ(colour.rows[0][9], 100);  // column 3 untouched

    // Replicated and raw: written as computed.
    ASSERT_EQ(LineOutputOpen(colour, 2, 0, 3, 0, 1, output, &invert), 0);
    uint8_t* row = LineOutputRow(output);
    for (int i = 0; i < 6; ++i) row[i] = static_cast<uint8_t>(i);
    LineOutputFlush(output);
    const uint8_t raw[12] = {0, 1, 2, 0, 1, 2, 3, 4, 5, 3, 4, 5};
    EXPECT_EQ(0, std::memcmp(colour.rows[0], raw, 12));
    EXPECT_EQ(0, std::memcmp(colour.rows[1], raw, 12));

    Image gray;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 4, 1, 72.0), 0);
    ASSERT_EQ(LineOutputOpen(gray, 1, 0, 3, 0, 0, output, &invert), 0);
    std::memset(LineOutputRow(output), 100, 4);
    LineOutputFlush(output);
    EXPECT_EQ(gray.rows[0][3], 100);  // gray goes to the screen through the palette
}

TEST(LineOutput, BitRowsReplicateBitByBit)
{
    Image bits;
    ASSERT_EQ(ImageAlloc(bits, kImageBinary, 12, 2, 72.0), 0);
    std::memset(bits.rows[0], 0, bits.stride);
    std::memset(bits.rows[1], 0, bits.stride);
    LineOutput output;
    ASSERT_EQ(LineOutputOpen(bits, 4, 2, 11, 0, 1, output), 0);
    uint8_t* row = LineOutputRow(output);
    row[0] = 0xA0;  // worker pixels 1, 0, 1
    LineOutputFlush(output);
    for (int32_t x = 0; x < 12; ++x) {
        const int32_t expected = x >= 2 && ((x - 2) / 4 == 0 || (x - 2) / 4 == 2);
        EXPECT_EQ(GetBit(bits.rows[0], x), expected) << x;
        EXPECT_EQ(GetBit(bits.rows[1], x), expected) << x;
    }
}

}  // namespace
}  // namespace lv
