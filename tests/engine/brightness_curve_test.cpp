#include <gtest/gtest.h>

#include <unistd.h>
#include <cstring>
#include <filesystem>

#include "synthesis/test_card.h"
#include "tone/color_space.h"
#include "tone/curves/curve.h"
#include "transform/registry.h"

namespace lv {
namespace {

// Runs brightness-curve on a picture with a curve file and a colour space.
Image Apply(const Image& input, const Curve& curve, const char* space)
{
    const std::string path = (std::filesystem::temp_directory_path() /
                              ("lumivue-bc-" + std::to_string(::getpid()) + ".crv"))
                                 .string();
    EXPECT_EQ(CurveWrite(path, curve), 0);
    const TransformModule* module = FindTransform("brightness-curve");
    EXPECT_NE(module, nullptr);
    auto params = CreateParams(*module);
    std::string problem;
    EXPECT_EQ(ParamSetText(*FindParam(*module, "curve"), *params, path, problem), 0);
    EXPECT_EQ(ParamSetText(*FindParam(*module, "color-space"), *params, space, problem), 0);
    std::filesystem::remove(path);
    Image result;
    EXPECT_EQ(RunTransformToImage(*module, *params, &input, result), 0);
    return result;
}

TEST(BrightnessCurve, IdentityInvertAndHue)
{
    Image card;
    ASSERT_EQ(MakeTestCard(card, kImageColor, 61, 40), 0);
    Curve identity;  // (0, 0) and (255, 255), spline
    for (const char* space : {"hsv", "hsl", "rgb"}) {
        const Image same = Apply(card, identity, space);
        for (int32_t y = 0; y < 40; ++y)
            ASSERT_EQ(0, std::memcmp(same.rows[y], card.rows[y], 61 * 3)) << space;
    }
    Curve invert;
    invert.count = 2;
    invert.x[0] = 0, invert.y[0] = 255, invert.x[1] = 255, invert.y[1] = 0;
    invert.style = kCurveLinear;
    const Image negative = Apply(card, invert, "rgb");
    for (int32_t y = 0; y < 40; y += 3)
        for (int32_t i = 0; i < 61 * 3; i += 5)
            ASSERT_EQ(negative.rows[y][i], 255 - card.rows[y][i]);

    // In HSV the curve moves the value and keeps primaries on their hue.
    Curve darker;
    darker.count = 3;
    darker.x[0] = 0, darker.y[0] = 0, darker.x[1] = 128, darker.y[1] = 64;
    darker.x[2] = 255, darker.y[2] = 255;
    Image red;
    ASSERT_EQ(ImageAlloc(red, kImageColor, 4, 1, 72.0), 0);
    for (int32_t x = 0; x < 4; ++x) {
        red.rows[0][x * 3] = 0, red.rows[0][x * 3 + 1] = 0;
        red.rows[0][x * 3 + 2] = static_cast<uint8_t>(100 + x * 40);
    }
    const Image out = Apply(red, darker, "hsv");
    for (int32_t x = 0; x < 4; ++x) {
        EXPECT_EQ(out.rows[0][x * 3], 0);
        EXPECT_EQ(out.rows[0][x * 3 + 1], 0);
        EXPECT_LT(out.rows[0][x * 3 + 2], red.rows[0][x * 3 + 2]);
    }
}

}  // namespace
}  // namespace lv
