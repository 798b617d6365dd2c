#include "transform/controls/compass_math.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

namespace lv {
namespace {

using V = std::vector<int32_t>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(CompassMath, DirectionsCentreAndMasking)
{
    // Screen offsets, y down: below, left, above, right of the centre.
    EXPECT_EQ(
        V({CompassValue(0, 10), CompassValue(-10, 0), CompassValue(0, -10), CompassValue(10, 0)}),
        V({0, 1024, 2048, 3072}));
    // The exact centre is angle 0, which is the right-hand direction.
    EXPECT_EQ(CompassAngle(0, 0), 0.0);
    EXPECT_EQ(CompassValue(0, 0), 3072);
    // Diagonals, and a hair either side of straight down wraps to 4095 or 1.
    EXPECT_EQ(V({CompassValue(10, 10), CompassValue(-10, 10), CompassValue(-10, -10)}),
              V({3584, 512, 1536}));
    EXPECT_EQ(CompassValue(0.016, 10), 4095);
    EXPECT_EQ(CompassValue(-0.016, 10), 1);
    EXPECT_EQ(CompassValueFromAngle(kCompassQuarterTurn + kCompassFullTurn), 0);
    EXPECT_EQ(CompassValueFromAngle(kCompassQuarterTurn - 3 * kCompassFullTurn + 0.01), 7);
    // Nonsense never escapes the range.
    EXPECT_EQ(CompassValueFromAngle(1e300) & ~4095, 0);
    EXPECT_EQ(CompassValue(kNaN, 1.0), 3072);
}

TEST(CompassMath, StoredAngleRoundTripAndNeedle)
{
    for (int32_t v = 0; v < 4096; ++v)
        ASSERT_EQ(CompassValueFromAngle(CompassAngleFromValue(v)), v);
    EXPECT_EQ(CompassValueFromAngle(CompassAngleFromValue(4096)), 0);
    EXPECT_EQ(CompassValueFromAngle(CompassAngleFromValue(-1)), 4095);

    EXPECT_DOUBLE_EQ(CompassRadius(100, 60), 24.0);
    EXPECT_EQ(CompassRadius(-5, 60), 0.0);
    // Value 0 points down the screen, 1024 to the left.
    CompassPoint down = CompassNeedleEnd(50, 50, 40, CompassAngleFromValue(0));
    CompassPoint left = CompassNeedleEnd(50, 50, 40, CompassAngleFromValue(1024));
    EXPECT_NEAR(down.x, 50, 1e-6);
    EXPECT_NEAR(down.y, 90, 1e-6);
    EXPECT_NEAR(left.x, 10, 1e-6);
    EXPECT_NEAR(left.y, 50, 1e-6);
}

TEST(ColorMath, KnownColours)
{
    HsvColor c = RgbToHsv(255, 0, 0);
    EXPECT_EQ(V({int32_t(c.hue), int32_t(c.saturation * 100), int32_t(c.value * 100)}),
              V({0, 100, 100}));
    c = RgbToHsv(0, 128, 255);
    EXPECT_NEAR(c.hue, 209.88, 0.01);
    EXPECT_DOUBLE_EQ(c.saturation, 1.0);
    c = RgbToHsv(255, 0, 1);  // just short of a full turn
    EXPECT_GT(c.hue, 359.0);
    EXPECT_LT(c.hue, 360.0);
    c = RgbToHsv(128, 128, 128);
    EXPECT_EQ(c.hue, 0.0);
    EXPECT_EQ(c.saturation, 0.0);
    EXPECT_NEAR(c.value, 128 / 255.0, 1e-12);

    auto rgb = [](RgbColor x) { return V({x.red, x.green, x.blue}); };
    EXPECT_EQ(rgb(HsvToRgb(120, 1, 1)), V({0, 255, 0}));
    EXPECT_EQ(rgb(HsvToRgb(60, 0.5, 1)), V({255, 255, 128}));
    EXPECT_EQ(rgb(HsvToRgb(300, 1, 0.5)), V({128, 0, 128}));
    // Hue wraps, saturation and value clamp, NaN counts as 0.
    EXPECT_EQ(rgb(HsvToRgb(-240, 2, 1)), V({0, 255, 0}));
    EXPECT_EQ(rgb(HsvToRgb(720, 1, -1)), V({0, 0, 0}));
    EXPECT_EQ(rgb(HsvToRgb(kNaN, kNaN, 1)), V({255, 255, 255}));
    EXPECT_EQ(rgb(HsvToRgb(-1e-300, 1, 1)), V({255, 0, 0}));

    EXPECT_EQ(PackRgb(RgbColor{0x12, 0x34, 0x56}), 0x123456u);
    EXPECT_EQ(PackRgb(RgbColor{300, -4, 255}), 0xFF00FFu);
    EXPECT_EQ(rgb(UnpackRgb(0xAB123456u)), V({0x12, 0x34, 0x56}));
}

TEST(ColorMath, RoundTrips)
{
    int32_t worst = 0;
    for (int32_t r = 0; r < 256; r += 5)
        for (int32_t g = 0; g < 256; g += 3)
            for (int32_t b = 0; b < 256; b += 7) {
                const RgbColor back = HsvToRgb(RgbToHsv(r, g, b));
                worst = std::max({worst, std::abs(back.red - r), std::abs(back.green - g),
                                  std::abs(back.blue - b)});
            }
    EXPECT_LE(worst, 1);
    // The integer boxes of the picker: whole degrees and percents come back
    // to themselves through the bytes within a step for saturated colours.
    for (int32_t h = 0; h < 360; ++h) {
        const HsvColor back =
            RgbToHsv(HsvToRgb(h, 1, 1).red, HsvToRgb(h, 1, 1).green, HsvToRgb(h, 1, 1).blue);
        ASSERT_NEAR(back.hue, h, 0.5) << h;
    }
}

}  // namespace
}  // namespace lv
