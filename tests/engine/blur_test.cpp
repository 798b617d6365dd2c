// Blur: the five methods worked by hand on small pictures, the Gaussian's
// reflected edges and its last pixel, Median 5x5's carried slots, the
// Amount and mask, the copies, previews at several zooms against the full
// result, the progress box, and the same bytes on one or two threads.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "filters/filter_panel.h"
#include "filters/gaussian.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "support/pictures.h"
#include "support/previews.h"
#include "support/scripted_frontend.h"
#include "transform/frame.h"
#include "transform/registry.h"

namespace lv {
namespace test {
void ExpectFilterPreviewsMatch(const char* name, const Image& source, TransformParams& params,
                               const Image& full, bool withStrip = true);
}  // namespace test

namespace {

using test::Bytes;
using test::Pixel;

Image Impulse(int32_t kind, int32_t width, int32_t height, int32_t x0, int32_t y0)
{
    return test::MakePicture(kind, width, height, [=](int32_t x, int32_t y, int32_t) {
        return x == x0 && y == y0 ? 255 : 0;
    });
}

// An irregular picture over a white bottom row.
Image Pattern(int32_t kind, int32_t width, int32_t height)
{
    return test::MakePicture(kind, width, height, [](int32_t x, int32_t y, int32_t c) {
        return y == 0 ? 255 : (x * 37 + y * 91 + x * y * 13 + c * 71) % 256;
    });
}

using Options = std::vector<std::pair<const char*, const char*>>;

std::unique_ptr<TransformParams> ParamsFor(const Options& options, int32_t amount = 1024)
{
    const TransformModule& module = *FindTransform("blur");
    auto params = CreateParams(module);
    std::string problem;
    for (const auto& [option, value] : options)
        EXPECT_EQ(ParamSetText(module, *FindParam(module, option), *params, value, problem), 0)
            << problem;
    params->amount.amount = amount;
    return params;
}

Image Apply(const Image& source, const Options& options, TransformParams* params = nullptr)
{
    Image result;
    auto own = ParamsFor(options);
    EXPECT_EQ(RunTransformToImage(*FindTransform("blur"), params ? *params : *own, &source, result),
              0);
    return result;
}

std::vector<uint32_t> Row(const Image& image, int32_t y)
{
    std::vector<uint32_t> row;
    for (int32_t x = 0; x < image.width; ++x) row.push_back(Pixel(image, x, y));
    return row;
}

std::vector<uint32_t> Column(const Image& image, int32_t x)
{
    std::vector<uint32_t> column;
    for (int32_t y = 0; y < image.height; ++y) column.push_back(Pixel(image, x, y));
    return column;
}

const char* const kMethods[] = {"blur", "blur-more", "gaussian", "median3", "median5"};

TEST(Blur, TheImpulseWorkedByHand)
{
    // 255 / 5 and 255 / 9, truncated; a lone pixel never survives a median.
    const Image gray = Impulse(kImageGray, 3, 3, 1, 1);
    EXPECT_EQ(Pixel(Apply(gray, {{"method", "blur"}}), 1, 1), 51u);
    EXPECT_EQ(Pixel(Apply(gray, {{"method", "blur-more"}}), 1, 1), 28u);
    EXPECT_EQ(Pixel(Apply(gray, {{"method", "median3"}}), 1, 1), 0u);
    // The edges repeat: the pixel below the impulse sees it once in the
    // plus, the corner once in its block.
    EXPECT_EQ(Pixel(Apply(gray, {{"method", "blur"}}), 1, 0), 51u);
    EXPECT_EQ(Pixel(Apply(gray, {{"method", "blur"}}), 0, 0), 0u);
    EXPECT_EQ(Pixel(Apply(gray, {{"method", "blur-more"}}), 0, 0), 28u);

    // A binary impulse gives a gray picture of the same means.
    const Image binary = Impulse(kImageBinary, 3, 3, 1, 1);
    const Image fromBinary = Apply(binary, {{"method", "blur"}});
    EXPECT_EQ(fromBinary.kind, kImageGray);
    EXPECT_EQ(Pixel(fromBinary, 1, 1), 51u);

    // Colour: each channel alone.
    const Image color = test::MakePicture(kImageColor, 3, 3, [](int32_t x, int32_t y, int32_t c) {
        return x == 1 && y == 1 ? (c == 0 ? 255 : c == 1 ? 100 : 0) : 0;
    });
    EXPECT_EQ(Pixel(Apply(color, {{"method", "blur"}}), 1, 1), 51u | 20u << 8);
}

TEST(Blur, GaussianOfAnImpulseRowWorkedByHand)
{
    // Radius 1 over 0 0 255 0 0. Every column is its one pixel. The scratch
    // row reflects: 255 0 0 0 255 0 0 0 255. First pass, with the ends
    // copied: 255 85 0 85 85 85 0 0. Second: 255 113 56 56 85 56 28 0, read
    // from index 2. The last pixel meets the unfiltered 0 at index 7.
    const Image row = Impulse(kImageGray, 5, 1, 2, 0);
    EXPECT_EQ(Row(Apply(row, {{"method", "gaussian"}, {"radius", "1"}}), 0),
              std::vector<uint32_t>({56, 56, 85, 56, 28}));
    // The same standing up: the columns pass does the same sums.
    const Image column = Impulse(kImageGray, 1, 5, 0, 2);
    EXPECT_EQ(Column(Apply(column, {{"method", "gaussian"}, {"radius", "1"}}), 0),
              std::vector<uint32_t>({56, 56, 85, 56, 28}));

    // The pieces: the pass copies its margins and leaves the last sample.
    const uint8_t in[9] = {255, 0, 0, 0, 255, 0, 0, 0, 255};
    uint8_t out[9] = {0, 0, 0, 0, 0, 0, 0, 0, 7};
    BoxPass(in, out, 9, 1, 1);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 9),
              std::vector<uint8_t>({255, 85, 0, 85, 85, 85, 0, 0, 7}));
    EXPECT_EQ(ReflectIndex(-2, 5), 2);
    EXPECT_EQ(ReflectIndex(6, 5), 2);
    EXPECT_EQ(ReflectIndex(-9, 5), 4);  // limited to the line
    EXPECT_EQ(ReflectIndex(12, 5), 0);
    EXPECT_EQ(ReflectIndex(-3, 1), 0);
}

TEST(Blur, OnePixelWidePicturesInEveryMethod)
{
    const Image column = Impulse(kImageGray, 1, 5, 0, 2);
    auto run = [&](const char* method) {
        return Column(Apply(column, {{"method", method}, {"radius", "1"}}), 0);
    };
    // The columns repeat the one column: the plus holds the pixel three
    // times, the block three times.
    EXPECT_EQ(run("blur"), std::vector<uint32_t>({0, 51, 153, 51, 0}));
    EXPECT_EQ(run("blur-more"), std::vector<uint32_t>({0, 85, 85, 85, 0}));
    EXPECT_EQ(run("median3"), std::vector<uint32_t>({0, 0, 0, 0, 0}));
    // Median 5x5 reads its row and the two below. The slots kept from the
    // pixel before decide the top: after row 3 they hold ten 255s, so row 4
    // (five 255s and ten 0s fresh) takes 255.
    EXPECT_EQ(run("median5"), std::vector<uint32_t>({0, 0, 0, 0, 255}));
    // Its Amount mixes with the row below: at half strength row 3 keeps
    // half of row 2's 255, and row 4 half of row 3's 0.
    auto half = ParamsFor({{"method", "median5"}}, 512);
    EXPECT_EQ(Column(Apply(column, {}, half.get()), 0), std::vector<uint32_t>({0, 0, 0, 127, 128}));
    // One slot array serves blue, green and red in turn. A white pixel in
    // a 5 by 1 row: each channel puts three 255s and twelve 0s in the fresh
    // slots, and the ten kept grow by three 255s a channel (0, 3, 6, 9),
    // then ten at the second pixel's blue: from its green on the 13th of
    // the 25 is 255.
    const Image row = Impulse(kImageColor, 5, 1, 2, 0);
    EXPECT_EQ(Row(Apply(row, {{"method", "median5"}}), 0),
              std::vector<uint32_t>({0, 0xFFFF00, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF}));
}

TEST(Blur, ConstantPicturesAndCopiesAreExact)
{
    for (int32_t kind : {kImageGray, kImageColor}) {
        const Image flat =
            test::MakePicture(kind, 7, 6, [](int32_t, int32_t, int32_t c) { return 90 + c; });
        for (const char* method : kMethods)
            EXPECT_EQ(Bytes(Apply(flat, {{"method", method}, {"radius", "2"}})), Bytes(flat))
                << method;
    }
    const Image white =
        test::MakePicture(kImageBinary, 9, 4, [](int32_t, int32_t, int32_t) { return 255; });
    const Image gray = Apply(white, {{"method", "gaussian"}});
    EXPECT_EQ(gray.kind, kImageGray);
    EXPECT_EQ(Pixel(gray, 8, 3), 255u);

    // Amount 0, and the Gaussian of radius 0 at any Amount: the input itself.
    const Image pattern = Pattern(kImageColor, 9, 8);
    for (const char* method : kMethods)
        EXPECT_EQ(Bytes(Apply(pattern, {}, ParamsFor({{"method", method}}, 0).get())),
                  Bytes(pattern));
    EXPECT_EQ(
        Bytes(Apply(pattern, {}, ParamsFor({{"method", "gaussian"}, {"radius", "0"}}, 400).get())),
        Bytes(pattern));
}

TEST(Blur, AmountAndMaskBlendTheInputTowardTheResult)
{
    const Image gray = Impulse(kImageGray, 3, 3, 1, 1);
    // 1020 is level 254: Lerp8(255, 51, 254) = 255 - 203.
    auto params = ParamsFor({{"method", "blur"}});
    params->amount.amount = 1020;
    EXPECT_EQ(Pixel(Apply(gray, {}, params.get()), 1, 1), 52u);

    // A mask black on the left, white on the right: the left keeps the
    // input, the right takes the result, the middle column (128) between.
    const Image mask = test::MakePicture(kImageGray, 3, 3,
                                         [](int32_t x, int32_t, int32_t) { return x * 255 / 2; });
    const Image image = test::MakePicture(
        kImageGray, 3, 3, [](int32_t x, int32_t y, int32_t) { return x == 1 && y == 1 ? 255 : 0; });
    AmountSetMask(params->amount, &mask, nullptr);
    const Image masked = Apply(image, {}, params.get());
    EXPECT_EQ(Pixel(masked, 1, 1), static_cast<uint32_t>(Lerp8(255, 51, 127)));
    EXPECT_EQ(Pixel(masked, 0, 1), 0u);
    EXPECT_EQ(Pixel(masked, 2, 1), 51u);
}

TEST(Blur, PreviewsAtEveryZoomShowTheFullResult)
{
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        const Image source = Pattern(kind, 12, 14);
        for (const char* method : kMethods) {
            SCOPED_TRACE(method);
            auto params = ParamsFor({{"method", method}, {"radius", "2"}});
            // Median 5x5's strip starts from empty slots where the full
            // result carries them from the rows below.
            test::ExpectFilterPreviewsMatch("blur", source, *params,
                                            Apply(source, {}, params.get()),
                                            std::strcmp(method, "median5") != 0);
        }
        // At part strength with a mask.
        const Image mask = Pattern(kImageGray, 12, 14);
        auto params = ParamsFor({{"method", "gaussian"}, {"radius", "3"}});
        AmountSetMask(params->amount, &mask, nullptr);
        test::ExpectFilterPreviewsMatch("blur", source, *params, Apply(source, {}, params.get()));
    }
}

TEST(Blur, TheBoxCountsRowsAndForGaussianTheColumnsFirst)
{
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    SetThreadCount(1);
    const Image source = Pattern(kImageGray, 120, 100);
    Apply(source, {{"method", "blur"}});
    ASSERT_EQ(fe.titles, std::vector<std::string>({"Blur"}));
    EXPECT_EQ(fe.steps.back(), 99);
    Apply(source, {{"method", "gaussian"}, {"radius", "5"}});
    // 120 + 4 * 5 columns, then the 100 rows.
    EXPECT_EQ(fe.steps.back(), 140 + 99);
    fe.abortAtStep = 20;
    Image result;
    EXPECT_EQ(RunTransformToImage(*FindTransform("blur"), *ParamsFor({{"method", "gaussian"}}),
                                  &source, result),
              kErrAborted);
    // Below 10000 pixels only the wait cursor.
    const int32_t opens = fe.opens;
    Apply(Pattern(kImageGray, 99, 100), {{"method", "median5"}});
    EXPECT_EQ(fe.opens, opens);
    SetThreadCount(0);
}

TEST(Blur, TheSameBytesOnOneAndTwoThreads)
{
    for (int32_t kind : {kImageBinary, kImageColor}) {
        const Image source = Pattern(kind, 640, 420);
        const Image mask = Pattern(kImageGray, 640, 420);
        for (const char* method : kMethods) {
            auto params = ParamsFor({{"method", method}, {"radius", "4"}});
            if (kind == kImageColor) AmountSetMask(params->amount, &mask, nullptr);
            SetThreadCount(1);
            const Image one = Apply(source, {}, params.get());
            SetThreadCount(2);
            const Image two = Apply(source, {}, params.get());
            SetThreadCount(0);
            EXPECT_EQ(Bytes(one), Bytes(two)) << method << " kind " << kind;
        }
    }
}

TEST(FilterPanel, SlidersCarryTheRadiusAndThreshold)
{
    EXPECT_EQ(FilterSliderPosition(3, kBlurRadiusMax), 24);
    EXPECT_EQ(FilterSliderPosition(3, kSharpenRadiusMax), 153);
    EXPECT_EQ(FilterSliderPosition(7, kSharpenThresholdMax), 143);
    // 28 * 128 / 1024 = 3.5 goes up; 27 gives 3.375.
    EXPECT_EQ(FilterSliderValue(28, kBlurRadiusMax), 4);
    EXPECT_EQ(FilterSliderValue(27, kBlurRadiusMax), 3);
    EXPECT_EQ(FilterSliderValue(1024, kBlurRadiusMax), 128);
    EXPECT_EQ(FilterSliderValue(153, kSharpenRadiusMax), 3);     // 2.99
    EXPECT_EQ(FilterSliderValue(143, kSharpenThresholdMax), 7);  // 6.98
    EXPECT_EQ(FilterRadiusText(12), "Radius: 12");
    EXPECT_EQ(FilterThresholdText(0), "Threshold: 0");
}

}  // namespace

namespace test {

// The preview of the module `name` with the settings of `params`, whole at
// 1:3, 1:2, 2:1 and 1:1 and, with `withStrip`, as a strip at 1:1, against the
// full result `full` at the same places; Sharpen's tests use it too. The
// strip reaches the top and the right edge, where the box pass's margins
// fall as in the full result. The sizes are chosen so that no reduced
// preview samples the last row or column, where the full result's box
// pass takes in one unfiltered sample and the preview's does not.
void ExpectFilterPreviewsMatch(const char* name, const Image& source, TransformParams& params,
                               const Image& full, bool withStrip)
{
    // The frame gets a record of its own with the same choices and Amount.
    const TransformModule& module = *FindTransform(name);
    ExpectPreviewsShow(
        name, source,
        [&] {
            auto copy = CreateParams(module);
            copy->amount = params.amount;
            for (const ParamDecl& p : module.params)
                if (p.field.integer) ParamSetInt(p, *copy, ParamInt(p, params));
            return copy;
        },
        full, withStrip);
}

}  // namespace test
}  // namespace lv
