// Sharpen: the full and the mixed formulas worked by hand on a bump, the
// mask that always takes the mixed one, clamping, Unsharp Mask against
// Blur's Gaussian with its Threshold channel by channel, the copies,
// previews against the full result, and the same bytes on one or two
// threads.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "image/pixel.h"
#include "image/threads.h"
#include "support/pictures.h"
#include "transform/registry.h"

namespace lv {
namespace test {
// In blur_test.cpp.
void ExpectFilterPreviewsMatch(const char* name, const Image& source, TransformParams& params,
                               const Image& full, bool withStrip = true);
}  // namespace test

namespace {

using test::Bytes;
using test::Pixel;

// 100 in the middle of a 3 by 3 field of 50, `corner` at (0, 0).
Image Bump(int32_t corner = 50)
{
    return test::MakePicture(kImageGray, 3, 3, [=](int32_t x, int32_t y, int32_t) {
        return x == 1 && y == 1 ? 100 : (x == 0 && y == 0 ? corner : 50);
    });
}

Image Pattern(int32_t kind, int32_t width, int32_t height)
{
    return test::MakePicture(kind, width, height, [](int32_t x, int32_t y, int32_t c) {
        return (x * 37 + y * 91 + x * y * 13 + c * 71) % 256;
    });
}

std::unique_ptr<TransformParams> ParamsFor(const char* name,
                                           std::vector<std::pair<const char*, const char*>> options,
                                           int32_t amount = 1024)
{
    const TransformModule& module = *FindTransform(name);
    auto params = CreateParams(module);
    std::string problem;
    for (const auto& [option, value] : options)
        EXPECT_EQ(ParamSetText(module, *FindParam(module, option), *params, value, problem), 0);
    params->amount.amount = amount;
    return params;
}

Image Apply(const char* name, const Image& source, TransformParams& params)
{
    Image result;
    EXPECT_EQ(RunTransformToImage(*FindTransform(name), params, &source, result), 0);
    return result;
}

uint32_t Center(const char* method, const Image& source, int32_t amount = 1024)
{
    auto params = ParamsFor("sharpen", {{"method", method}}, amount);
    return Pixel(Apply("sharpen", source, *params), 1, 1);
}

const char* const kMethods[] = {"sharpen", "heavy", "unsharp"};

TEST(Sharpen, TheBumpByTheFullAndTheMixedFormulas)
{
    // Full: 2 * 100 - 200 / 4 and 3 * 100 - 400 / 4.
    EXPECT_EQ(Center("sharpen", Bump()), 150u);
    EXPECT_EQ(Center("heavy", Bump()), 200u);
    // Half (level 128): (383 * 100 - 128 * 50) / 255 = 125.1 and
    // (511 * 100 - 256 * 50) / 255 = 150.2.
    EXPECT_EQ(Center("sharpen", Bump(), 512), 125u);
    EXPECT_EQ(Center("heavy", Bump(), 512), 150u);
    // Clamped both ways.
    const Image bright = test::MakePicture(
        kImageGray, 3, 3, [](int32_t x, int32_t y, int32_t) { return x == 1 && y == 1 ? 250 : 0; });
    const Image dark = test::MakePicture(
        kImageGray, 3, 3, [](int32_t x, int32_t y, int32_t) { return x == 1 && y == 1 ? 0 : 250; });
    EXPECT_EQ(Center("heavy", bright), 255u);
    EXPECT_EQ(Center("sharpen", dark), 0u);
    EXPECT_EQ(Center("sharpen", dark, 700), 0u);
}

TEST(Sharpen, AMaskTakesTheMixedFormulaEvenWhereItIsWhite)
{
    // The eight neighbours sum to 407: full 300 - 101 = 199; mixed at k 255,
    // 3 * 100 - 2 * (407 >> 3) = 200.
    const Image bump = Bump(57);
    EXPECT_EQ(Center("heavy", bump), 199u);
    const Image white =
        test::MakePicture(kImageGray, 3, 3, [](int32_t, int32_t, int32_t) { return 255; });
    auto params = ParamsFor("sharpen", {{"method", "heavy"}});
    AmountSetMask(params->amount, &white, nullptr);  // 0% .. 100%
    EXPECT_EQ(Pixel(Apply("sharpen", bump, *params), 1, 1), 200u);
    // Both markers at full strength need no mixing: the full formula.
    params->amount.amount = 1024;
    EXPECT_EQ(Pixel(Apply("sharpen", bump, *params), 1, 1), 199u);
}

TEST(Sharpen, UnsharpMaskPushesAwayFromBlursGaussianPastTheThreshold)
{
    const Image source = Pattern(kImageColor, 11, 9);
    auto blur = ParamsFor("blur", {{"method", "gaussian"}, {"radius", "2"}});
    const Image blurred = Apply("blur", source, *blur);
    for (int32_t amount : {1024, 512}) {
        auto params = ParamsFor(
            "sharpen", {{"method", "unsharp"}, {"radius", "2"}, {"threshold", "20"}}, amount);
        const Image result = Apply("sharpen", source, *params);
        int32_t kept = 0, pushed = 0;
        for (int32_t y = 0; y < source.height; ++y)
            for (int32_t i = 0; i < source.width * 3; ++i) {
                const int32_t c = source.rows[y][i], b = blurred.rows[y][i];
                // k 128 at half strength; a difference of exactly 20 passes.
                const int32_t pushedTo =
                    Clamp8(amount == 1024 ? 2 * c - b : (383 * c - 128 * b) / 255);
                const bool keep = std::abs(c - b) < 20;
                (keep ? kept : pushed)++;
                ASSERT_EQ(result.rows[y][i], keep ? c : pushedTo) << y << " " << i;
            }
        EXPECT_GT(kept, 0);
        EXPECT_GT(pushed, 0);
    }
}

TEST(Sharpen, FlatPicturesAndCopiesAreExact)
{
    for (int32_t kind : {kImageGray, kImageColor}) {
        const Image flat =
            test::MakePicture(kind, 6, 5, [](int32_t, int32_t, int32_t c) { return 70 + c; });
        for (const char* method : kMethods)
            for (int32_t amount : {1024, 300}) {
                auto params = ParamsFor("sharpen", {{"method", method}}, amount);
                EXPECT_EQ(Bytes(Apply("sharpen", flat, *params)), Bytes(flat)) << method;
            }
    }
    const Image pattern = Pattern(kImageColor, 8, 7);
    for (const char* method : kMethods) {
        auto params = ParamsFor("sharpen", {{"method", method}}, 0);
        EXPECT_EQ(Bytes(Apply("sharpen", pattern, *params)), Bytes(pattern)) << method;
    }
    auto zero = ParamsFor("sharpen", {{"method", "unsharp"}, {"radius", "0"}}, 600);
    EXPECT_EQ(Bytes(Apply("sharpen", pattern, *zero)), Bytes(pattern));
    // One pixel wide: the edges repeat, so a column of one level stays.
    const Image thin =
        test::MakePicture(kImageGray, 1, 6, [](int32_t, int32_t, int32_t) { return 40; });
    for (const char* method : kMethods) {
        auto params = ParamsFor("sharpen", {{"method", method}});
        EXPECT_EQ(Bytes(Apply("sharpen", thin, *params)), Bytes(thin)) << method;
    }
}

TEST(Sharpen, PreviewsAtEveryZoomShowTheFullResult)
{
    for (int32_t kind : {kImageGray, kImageColor}) {
        const Image source = Pattern(kind, 12, 14);
        const Image mask = Pattern(kImageGray, 12, 14);
        for (const char* method : kMethods) {
            auto params =
                ParamsFor("sharpen", {{"method", method}, {"radius", "2"}, {"threshold", "9"}});
            test::ExpectFilterPreviewsMatch("sharpen", source, *params,
                                            Apply("sharpen", source, *params));
            AmountSetMask(params->amount, &mask, nullptr);
            test::ExpectFilterPreviewsMatch("sharpen", source, *params,
                                            Apply("sharpen", source, *params));
        }
    }
}

TEST(Sharpen, TheSameBytesOnOneAndTwoThreads)
{
    const Image source = Pattern(kImageColor, 640, 420);
    for (const char* method : kMethods)
        for (int32_t amount : {1024, 700}) {
            auto params = ParamsFor(
                "sharpen", {{"method", method}, {"radius", "6"}, {"threshold", "3"}}, amount);
            SetThreadCount(1);
            const Image one = Apply("sharpen", source, *params);
            SetThreadCount(2);
            const Image two = Apply("sharpen", source, *params);
            SetThreadCount(0);
            EXPECT_EQ(Bytes(one), Bytes(two)) << method;
        }
}

}  // namespace
}  // namespace lv
