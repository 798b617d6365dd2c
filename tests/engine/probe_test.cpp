// Reading a colour off a picture: the square's rows at the centre column,
// the edges of the picture, and the level a curve's probe shows.
#include "image/probe.h"

#include <gtest/gtest.h>

#include "image/pixel.h"
#include "tone/color_space.h"

namespace lv {
namespace {

TEST(Probe, AveragesTheCentreColumnOverTheSquaresRows)
{
    // Columns 0 to 2 at 10 and 3 to 5 at 200: a vertical edge. Column 4
    // has a horizontal edge, 30 below row 3 and 90 from it.
    Image gray;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 6, 6, 72.0), 0);
    for (int32_t y = 0; y < 6; ++y)
        for (int32_t x = 0; x < 6; ++x)
            gray.rows[y][x] = x < 3 ? 10 : (x == 4 ? (y < 3 ? 30 : 90) : 200);
    int32_t r = -1, g = -1, b = -1;
    // Beside the vertical edge, a 3x3 probe sees the centre column alone.
    ASSERT_TRUE(ProbeColor(gray, 2, 2, 1, r, g, b));
    EXPECT_EQ(r, 10);
    EXPECT_EQ(g, 10);
    EXPECT_EQ(b, 10);
    // Across the horizontal edge the rows average: 30, 30, 90 give 50.
    ASSERT_TRUE(ProbeColor(gray, 4, 2, 1, r, g, b));
    EXPECT_EQ(r, 50);
    ASSERT_TRUE(ProbeColor(gray, 4, 3, 0, r, g, b));
    EXPECT_EQ(r, 90);
    // At the top the square is clamped: rows 4 and 5 of column 4.
    ASSERT_TRUE(ProbeColor(gray, 4, 5, 2, r, g, b));
    EXPECT_EQ(r, 90);
    // Off the picture nothing is read and nothing changes.
    r = -1;
    EXPECT_FALSE(ProbeColor(gray, 6, 2, 1, r, g, b));
    EXPECT_FALSE(ProbeColor(gray, -1, 2, 4, r, g, b));
    EXPECT_FALSE(ProbeColor(gray, 2, 9, 1, r, g, b));
    EXPECT_FALSE(ProbeColor(gray, 2, -3, 1, r, g, b));
    EXPECT_EQ(r, -1);

    // A set bit counts 255; colour is stored blue first.
    Image bits, colour;
    ASSERT_EQ(ImageAlloc(bits, kImageBinary, 9, 1, 72.0), 0);
    bits.rows[0][1] = 0x40;  // x = 9 set: the second byte's second bit
    ASSERT_TRUE(ProbeColor(bits, 8, 0, 0, r, g, b));
    EXPECT_EQ(r, 0);
    bits.rows[0][1] = 0x80;  // x = 8
    ASSERT_TRUE(ProbeColor(bits, 8, 0, 0, r, g, b));
    EXPECT_EQ(r, 255);
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 1, 1, 72.0), 0);
    colour.rows[0][0] = 0;
    colour.rows[0][1] = 100;
    colour.rows[0][2] = 200;
    ASSERT_TRUE(ProbeColor(colour, 0, 0, 4, r, g, b));
    EXPECT_EQ(r, 200);
    EXPECT_EQ(g, 100);
    EXPECT_EQ(b, 0);
    Image solid;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_FALSE(ProbeColor(solid, 0, 0, 0, r, g, b));
}

TEST(Probe, ChannelLevelsForTheCurvesInputAxis)
{
    EXPECT_EQ(ProbeChannelLevel(1, 200, 100, 0), 200);  // HSV value: the largest
    EXPECT_EQ(ProbeChannelLevel(2, 200, 100, 0), 100);  // HSL lightness: half of 200 + 0
    EXPECT_EQ(ProbeChannelLevel(6, 255, 0, 0), 255);    // red's hue, 4096, brought to 8 bits
    EXPECT_EQ(ProbeChannelLevel(7, 255, 0, 0), 255);
    EXPECT_EQ(ProbeChannelLevel(8, 200, 100, 0), 200);
    EXPECT_EQ(ProbeChannelLevel(9, 200, 100, 0), 100);
    EXPECT_EQ(ProbeChannelLevel(10, 200, 100, 7), 7);
    EXPECT_EQ(ProbeChannelLevel(5, 200, 100, 0), -1);  // three channels: the caller's
    EXPECT_EQ(ProbeChannelLevel(0, 200, 100, 0), -1);
}

}  // namespace
}  // namespace lv
