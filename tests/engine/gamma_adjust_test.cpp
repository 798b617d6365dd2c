// Gamma Adjust: the table worked by hand, the short way, the codes of a
// gamma out of range, and previews that show the full result.
#include <gtest/gtest.h>

#include <string>

#include "image/image.h"
#include "shell/errors.h"
#include "support/pictures.h"
#include "support/previews.h"
#include "transform/registry.h"

namespace lv {
namespace {

std::unique_ptr<TransformParams> Gammas(const char* from, const char* to)
{
    const TransformModule& module = *FindTransform("gamma-adjust");
    auto params = CreateParams(module);
    std::string problem;
    EXPECT_EQ(ParamSetText(*FindParam(module, "from"), *params, from, problem), 0) << problem;
    EXPECT_EQ(ParamSetText(*FindParam(module, "to"), *params, to, problem), 0) << problem;
    return params;
}

// A gray picture of one row holding the levels given.
Image Levels(std::initializer_list<uint8_t> levels)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kImageGray, static_cast<int32_t>(levels.size()), 1, 72.0), 0);
    int32_t x = 0;
    for (uint8_t v : levels) image.rows[0][x++] = v;
    return image;
}

TEST(GammaAdjust, TheTableTheShortWayAndTheRefusals)
{
    const TransformModule& module = *FindTransform("gamma-adjust");
    EXPECT_EQ(CheckModule(module), "");
    const Image levels = Levels({0, 1, 64, 128, 200, 255});
    Image out;
    // 2.22 to 1.11: the square root; 255 * sqrt(64 / 255) = 127.75.
    ASSERT_EQ(RunTransformToImage(module, *Gammas("2.22", "1.11"), &levels, out), 0);
    EXPECT_EQ(std::vector<uint8_t>(out.rows[0], out.rows[0] + 6),
              (std::vector<uint8_t>{0, 16, 128, 181, 226, 255}));
    // 1.11 to 2.22: the square; 255 * (128 / 255)^2 = 64.25.
    ASSERT_EQ(RunTransformToImage(module, *Gammas("1.11", "2.22"), &levels, out), 0);
    EXPECT_EQ(std::vector<uint8_t>(out.rows[0], out.rows[0] + 6),
              (std::vector<uint8_t>{0, 0, 16, 64, 157, 255}));
    // Equal gammas leave the picture as it is.
    ASSERT_EQ(RunTransformToImage(module, *Gammas("1.80", "1.80"), &levels, out), 0);
    EXPECT_EQ(test::Bytes(out), test::Bytes(levels));
    EXPECT_EQ(RunTransformToImage(module, *Gammas("0.05", "2.22"), &levels, out), kErrInputGamma);
    EXPECT_EQ(RunTransformToImage(module, *Gammas("2.22", "10.01"), &levels, out),
              kErrOutputGamma);
    Image binary;
    ASSERT_EQ(ImageAlloc(binary, kImageBinary, 8, 2, 72.0), 0);
    EXPECT_EQ(RunTransformToImage(module, *Gammas("2.22", "1.11"), &binary, out), kErrImageType);
}

TEST(GammaAdjust, PreviewsShowTheFullResult)
{
    for (int32_t kind : {kImageGray, kImageColor}) {
        Image source;
        ASSERT_EQ(ImageAlloc(source, kind, 37, 23, 72.0), 0);
        for (int32_t y = 0; y < 23; ++y)
            for (int32_t i = 0; i < 37 * (kind == kImageColor ? 3 : 1); ++i)
                source.rows[y][i] = static_cast<uint8_t>((i * 29 + y * 53) % 256);
        test::FullAndPreviews("gamma-adjust", source, [] { return Gammas("2.22", "1.50"); });
    }
}

}  // namespace
}  // namespace lv
