// High Contrast, Add Noise, Difference and Halftone: hand-worked levels,
// flat pictures, the same bytes on one and two threads, and previews at
// 1:1, enlarged and reduced against the full result, as the command line
// and the frame run them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "files/formats.h"
#include "filters/difference.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "support/pictures.h"
#include "support/previews.h"
#include "support/temp_dir.h"
#include "synthesis/random.h"
#include "transform/frame.h"
#include "transform/registry.h"

namespace lv {
namespace {

using test::Bytes;
using test::Pixel;
using Options = std::vector<std::pair<const char*, const char*>>;

// A flat picture of one level (colour: the same level on each channel).
Image Flat(int32_t kind, int32_t width, int32_t height, uint8_t level)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, width, height, 300.0), 0);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            if (kind == kImageBinary)
                PutBit(image.rows[y], x, level >= 128);
            else if (kind == kImageGray)
                image.rows[y][x] = level;
            else
                std::memset(image.rows[y] + 3 * x, level, 3);
        }
    return image;
}

// A busy picture: every level somewhere, colour channels unlike each other.
Image Busy(int32_t kind, int32_t width, int32_t height)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, width, height, 300.0), 0);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const auto v = static_cast<uint8_t>((x * 7 + y * 13 + x * y) & 255);
            if (kind == kImageBinary)
                PutBit(image.rows[y], x, (x * 3 + y * 5) % 7 < 3);
            else if (kind == kImageGray)
                image.rows[y][x] = v;
            else {
                uint8_t* p = image.rows[y] + 3 * x;
                p[0] = v, p[1] = static_cast<uint8_t>(x * 4), p[2] = static_cast<uint8_t>(255 - y);
            }
        }
    return image;
}

// The record of `lumivue-cli apply NAME --option value ...`.
std::unique_ptr<TransformParams> ParamsFor(const char* name, const Options& options)
{
    const TransformModule& module = *FindTransform(name);
    auto params = CreateParams(module);
    std::string problem;
    for (const auto& [option, value] : options)
        EXPECT_EQ(ParamSetText(module, *FindParam(module, option), *params, value, problem), 0)
            << problem;
    return params;
}

int32_t Apply(const char* name, const Image& source, const Options& options, Image& result,
              std::unique_ptr<TransformParams>* keep = nullptr)
{
    auto params = ParamsFor(name, options);
    const int32_t code = RunTransformToImage(*FindTransform(name), *params, &source, result);
    if (keep) *keep = std::move(params);
    return code;
}

// The full result on one thread and on two and the previews that show it;
// `prepare` may finish the record (a second picture) each time.
Image FullAndPreviews(const char* name, const Image& source, const Options& options,
                      void (*prepare)(TransformParams&) = nullptr)
{
    return test::FullAndPreviews(name, source, [&] {
        auto params = ParamsFor(name, options);
        if (prepare) prepare(*params);
        return params;
    });
}

// ---- High Contrast --------------------------------------------------------------------

TEST(HighContrast, TableAtTheMidpointAndTheEnds)
{
    // A ramp of every level, one a column.
    Image ramp;
    ASSERT_EQ(ImageAlloc(ramp, kImageGray, 256, 1, 300.0), 0);
    for (int32_t x = 0; x < 256; ++x) ramp.rows[0][x] = static_cast<uint8_t>(x);
    Image r;
    // 128 + (v - 128) * 2: 127 -> 126, 191 -> 254, 192 -> 256 clipped, 64 -> 0.
    ASSERT_EQ(Apply("high-contrast", ramp, {}, r), 0);
    EXPECT_EQ(r.kind, kImageGray);
    const std::vector<std::pair<int32_t, int32_t>> defaults = {
        {0, 0}, {64, 0}, {65, 2}, {127, 126}, {128, 128}, {191, 254}, {192, 255}, {255, 255}};
    for (const auto& [v, want] : defaults) EXPECT_EQ(r.rows[0][v], want) << v;
    // 100 + (v - 100) * 2.5 rounds halves away from zero: 101 -> 102.5 -> 103,
    // 99 -> 97.5 -> 98; 60 -> 0, 140 -> 200.
    ASSERT_EQ(Apply("high-contrast", ramp, {{"midpoint", "100"}, {"strength", "2.5"}}, r), 0);
    const std::vector<std::pair<int32_t, int32_t>> shifted = {
        {60, 0}, {99, 98}, {100, 100}, {101, 103}, {140, 200}, {142, 205}, {255, 255}};
    for (const auto& [v, want] : shifted) EXPECT_EQ(r.rows[0][v], want) << v;
    // At the ends of the midpoint's range one side is left alone.
    ASSERT_EQ(Apply("high-contrast", ramp, {{"midpoint", "0"}, {"strength", "3"}}, r), 0);
    EXPECT_EQ(r.rows[0][0], 0);
    EXPECT_EQ(r.rows[0][85], 255);
    EXPECT_EQ(r.rows[0][84], 252);
}

TEST(HighContrast, ColourPerChannelBinaryAndFactorOneUnchanged)
{
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 1, 1, 300.0), 0);
    colour.rows[0][0] = 100, colour.rows[0][1] = 128, colour.rows[0][2] = 150;  // b, g, r
    Image r;
    ASSERT_EQ(Apply("high-contrast", colour, {}, r), 0);
    EXPECT_EQ(Pixel(r, 0, 0), 72u | 128u << 8 | 172u << 16);
    // A factor of 1 and a binary picture come back as they are, kind and all.
    const Image busy = Busy(kImageColor, 19, 7);
    ASSERT_EQ(Apply("high-contrast", busy, {{"strength", "1"}}, r), 0);
    EXPECT_EQ(Bytes(r), Bytes(busy));
    const Image bits = Busy(kImageBinary, 19, 7);
    ASSERT_EQ(Apply("high-contrast", bits, {{"strength", "5"}}, r), 0);
    EXPECT_EQ(r.kind, kImageBinary);
    EXPECT_EQ(Bytes(r), Bytes(bits));
    // The Amount at half blends towards the input: 150 -> 172 by 128 is 161.
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 1, 1, 300.0), 0);
    colour.rows[0][0] = 100, colour.rows[0][1] = 128, colour.rows[0][2] = 150;
    auto params = ParamsFor("high-contrast", {});
    params->amount.amount = 512;
    ASSERT_EQ(RunTransformToImage(*FindTransform("high-contrast"), *params, &colour, r), 0);
    EXPECT_EQ(Pixel(r, 0, 0), 86u | 128u << 8 | 161u << 16);
}

TEST(HighContrast, PreviewsShowTheResult)
{
    for (int32_t kind : {kImageGray, kImageColor})
        FullAndPreviews("high-contrast", Busy(kind, 613, 437), {{"strength", "3.5"}});
}

// ---- Add Noise ------------------------------------------------------------------------

TEST(AddNoise, TheGeneratorAndItsJumps)
{
    // 1 * 41358, then 41358 * 41358 = 1710484164, below the modulus.
    int32_t state = 1;
    EXPECT_EQ(random_next(state), 41358);
    EXPECT_EQ(random_next(state), 1710484164);
    EXPECT_EQ(RandomJump(1, RandomJumpMultiplier(2)), 1710484164);
    // A jump of n is n steps, and a whole period comes back.
    state = 987654321;
    const int32_t start = state;
    for (int32_t i = 0; i < 1000; ++i) random_next(state);
    EXPECT_EQ(RandomJump(start, RandomJumpMultiplier(1000)), state);
    EXPECT_EQ(RandomJump(start, RandomJumpMultiplier(int64_t{kRandomModulus} - 1)), start);
    EXPECT_NE(RandomStreamState(1, 0), RandomStreamState(1, 1));
    EXPECT_NE(RandomStreamState(1, 5), RandomStreamState(2, 5));
}

TEST(AddNoise, StrengthZeroIsACopyAndTheMeanStays)
{
    Image r;
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        const Image busy = Busy(kind, 37, 11);
        ASSERT_EQ(Apply("add-noise", busy, {{"strength", "0"}}, r), 0);
        EXPECT_EQ(r.kind, kind);
        EXPECT_EQ(Bytes(r), Bytes(busy));
    }
    // Flat 128, 200 by 200. Uniform over +-40: every level within 88..168,
    // both ends nearly reached, and the mean within 0.6 of 128 (its own
    // standard deviation is 40 / sqrt 3 / 200 = 0.12). Gaussian with a
    // deviation of 20: the mean as close, the deviation within 1 of 20.
    const Image flat = Flat(kImageGray, 200, 200, 128);
    for (const char* distribution : {"uniform", "gaussian"}) {
        ASSERT_EQ(Apply("add-noise", flat, {{"strength", "40"}, {"distribution", distribution}}, r),
                  0);
        double sum = 0, squares = 0;
        int32_t low = 255, high = 0;
        for (int32_t y = 0; y < 200; ++y)
            for (int32_t x = 0; x < 200; ++x) {
                const int32_t v = r.rows[y][x];
                sum += v, squares += (v - 128.0) * (v - 128.0);
                low = std::min(low, v), high = std::max(high, v);
            }
        const double mean = sum / 40000, deviation = std::sqrt(squares / 40000);
        EXPECT_NEAR(mean, 128.0, 0.6) << distribution;
        if (std::string(distribution) == "uniform") {
            EXPECT_GE(low, 88);
            EXPECT_LE(high, 168);
            EXPECT_LE(low, 90);
            EXPECT_GE(high, 166);
            EXPECT_NEAR(deviation, 40 / std::sqrt(3.0), 1.0);
        } else {
            EXPECT_NEAR(deviation, 20.0, 1.0);
        }
    }
}

TEST(AddNoise, SeedsChannelsAndPreviews)
{
    const Image flat = Flat(kImageColor, 64, 48, 100);
    Image a, b, c;
    ASSERT_EQ(Apply("add-noise", flat, {{"seed", "7"}}, a), 0);
    ASSERT_EQ(Apply("add-noise", flat, {{"seed", "7"}}, b), 0);
    ASSERT_EQ(Apply("add-noise", flat, {{"seed", "8"}}, c), 0);
    EXPECT_EQ(Bytes(a), Bytes(b));
    EXPECT_NE(Bytes(a), Bytes(c));
    // Per channel the three offsets differ somewhere; monochrome never.
    int32_t unequal = 0;
    for (int32_t x = 0; x < 64; ++x) unequal += a.rows[5][3 * x] != a.rows[5][3 * x + 2];
    EXPECT_GT(unequal, 40);
    ASSERT_EQ(Apply("add-noise", flat, {{"monochrome", ""}, {"distribution", "gaussian"}}, a), 0);
    for (int32_t y = 0; y < 48; ++y)
        for (int32_t x = 0; x < 64; ++x) {
            ASSERT_EQ(a.rows[y][3 * x], a.rows[y][3 * x + 1]);
            ASSERT_EQ(a.rows[y][3 * x], a.rows[y][3 * x + 2]);
        }
    // The same bytes on one and two threads, and the previews show them.
    for (int32_t kind : {kImageGray, kImageColor})
        for (const char* distribution : {"uniform", "gaussian"})
            FullAndPreviews("add-noise", Busy(kind, 211, 157),
                            {{"strength", "60"}, {"distribution", distribution}, {"seed", "3"}});
    const Image binary = FullAndPreviews("add-noise", Busy(kImageBinary, 50, 40), {});
    EXPECT_EQ(binary.kind, kImageGray);
}

// ---- Difference -----------------------------------------------------------------------

// Runs Difference of `a` against `b`, as the panel's choice sets it.
int32_t DifferenceOf(const Image& a, const Image* b, Image& result)
{
    auto params = ParamsFor("difference", {});
    static_cast<DifferenceParams&>(*params).with = b;
    return RunTransformToImage(*FindTransform("difference"), *params, &a, result);
}

TEST(Difference, ItselfItsNegativeAndMixedKinds)
{
    Image r;
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        const Image busy = Busy(kind, 23, 9);
        ASSERT_EQ(DifferenceOf(busy, &busy, r), 0);
        EXPECT_EQ(r.kind, kind == kImageColor ? kImageColor : kImageGray);
        for (int32_t y = 0; y < 9; ++y)
            for (int32_t x = 0; x < 23; ++x) ASSERT_EQ(Pixel(r, x, y), 0u);
    }
    // Against its negative: |v - (255 - v)| = |2v - 255|.
    Image ramp, negative;
    ASSERT_EQ(ImageAlloc(ramp, kImageGray, 256, 1, 300.0), 0);
    ASSERT_EQ(ImageAlloc(negative, kImageGray, 256, 1, 300.0), 0);
    for (int32_t v = 0; v < 256; ++v)
        ramp.rows[0][v] = static_cast<uint8_t>(v),
        negative.rows[0][v] = static_cast<uint8_t>(255 - v);
    ASSERT_EQ(DifferenceOf(ramp, &negative, r), 0);
    const std::vector<std::pair<int32_t, int32_t>> levels = {{0, 255}, {100, 55},  {127, 1},
                                                             {128, 1}, {200, 145}, {255, 255}};
    for (const auto& [v, want] : levels) EXPECT_EQ(r.rows[0][v], want) << v;
    // Gray 100 against blue 10, green 100, red 250 is colour 90, 0, 150,
    // either way round; binary white against gray 200 is gray 55.
    const Image gray = Flat(kImageGray, 2, 1, 100);
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 2, 1, 300.0), 0);
    for (int32_t x = 0; x < 2; ++x)
        colour.rows[0][3 * x] = 10, colour.rows[0][3 * x + 1] = 100,
                           colour.rows[0][3 * x + 2] = 250;
    for (bool swapped : {false, true}) {
        ASSERT_EQ(swapped ? DifferenceOf(colour, &gray, r) : DifferenceOf(gray, &colour, r), 0);
        EXPECT_EQ(r.kind, kImageColor);
        EXPECT_EQ(Pixel(r, 1, 0), 90u | 0u << 8 | 150u << 16);
    }
    const Image white = Flat(kImageBinary, 3, 2, 255), gray200 = Flat(kImageGray, 3, 2, 200);
    ASSERT_EQ(DifferenceOf(white, &gray200, r), 0);
    EXPECT_EQ(r.kind, kImageGray);
    EXPECT_EQ(Pixel(r, 2, 1), 55u);
    // At half strength gray 100 moves towards 90, 0, 150 by 128: 95, 50, 125.
    auto params = ParamsFor("difference", {});
    static_cast<DifferenceParams&>(*params).with = &colour;
    params->amount.amount = 512;
    ASSERT_EQ(RunTransformToImage(*FindTransform("difference"), *params, &gray, r), 0);
    EXPECT_EQ(Pixel(r, 0, 0), 95u | 50u << 8 | 125u << 16);
}

TEST(Difference, RefusesAMissingOrMisfitSecondPicture)
{
    const Image busy = Busy(kImageGray, 20, 10);
    Image r;
    EXPECT_EQ(DifferenceOf(busy, nullptr, r), kErrNoImageGiven);
    const Image other = Busy(kImageGray, 20, 11);
    ClearErrorDetail();
    EXPECT_EQ(DifferenceOf(busy, &other, r), kErrImageType);
    EXPECT_EQ(ErrorDetail(), "the second picture is 20 x 11, the input 20 x 10");
}

TEST(Difference, WithReadsTheSecondPictureFromAFile)
{
    test::TempDir dir;
    const Image busy = Busy(kImageColor, 31, 17);
    const std::string path = dir / "second.png";
    ASSERT_EQ(WriteImageFile(path, SaveFilterFromName(path), busy, SaveOptions()), 0);
    Image r;
    ASSERT_EQ(Apply("difference", busy, {{"with", path.c_str()}}, r), 0);
    for (int32_t x = 0; x < 31; ++x) EXPECT_EQ(Pixel(r, x, 16), 0u);
    // A file that is not there gives the format's read error.
    const TransformModule& module = *FindTransform("difference");
    auto params = CreateParams(module);
    std::string problem;
    EXPECT_EQ(ParamSetText(module, *FindParam(module, "with"), *params, dir / "none.tif", problem),
              56);
}

Image gSecond;
void WithSecond(TransformParams& params) { static_cast<DifferenceParams&>(params).with = &gSecond; }

TEST(Difference, PreviewsShowTheResult)
{
    for (int32_t kind : {kImageGray, kImageColor}) {
        gSecond = Busy(kImageGray, 613, 437);
        for (int32_t y = 0; y < 437; ++y)
            for (int32_t x = 0; x < 613; ++x) gSecond.rows[y][x] ^= static_cast<uint8_t>(x * y);
        FullAndPreviews("difference", Busy(kind, 613, 437), {}, WithSecond);
    }
    gSecond = Image();
}

// ---- Halftone -------------------------------------------------------------------------

// The share of set pixels (channel levels of 255, or bits) of a result.
double SetShare(const Image& image, int32_t channel)
{
    int64_t set = 0;
    for (int32_t y = 0; y < image.height; ++y)
        for (int32_t x = 0; x < image.width; ++x) {
            const uint32_t p = Pixel(image, x, y);
            const uint32_t v = image.kind == kImageColor ? (p >> (8 * channel)) & 255 : p;
            EXPECT_TRUE(v == 0 || v == (image.kind == kImageBinary ? 1u : 255u));
            set += v != 0;
        }
    return static_cast<double>(set) / (int64_t{image.width} * image.height);
}

TEST(Halftone, FlatPicturesKeepTheirAverage)
{
    Image r;
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        for (uint8_t level : {0, 255}) {
            ASSERT_EQ(Apply("halftone", Flat(kind, 40, 30, level), {}, r), 0);
            EXPECT_EQ(r.kind, kind);
            EXPECT_EQ(SetShare(r, 0), level ? 1.0 : 0.0) << kind;
        }
    }
    // Gray 128 is about half set; 64 about a quarter, as white dots on black.
    ASSERT_EQ(Apply("halftone", Flat(kImageGray, 256, 256, 128), {}, r), 0);
    EXPECT_NEAR(SetShare(r, 0), 0.5, 0.03);
    ASSERT_EQ(Apply("halftone", Flat(kImageGray, 256, 256, 64), {{"cell-size", "12"}}, r), 0);
    EXPECT_NEAR(SetShare(r, 0), 0.25, 0.03);
    // Each channel of a colour picture the same, on screens of their own.
    ASSERT_EQ(Apply("halftone", Flat(kImageColor, 256, 256, 128), {}, r), 0);
    int32_t unlike = 0;
    for (int32_t c = 0; c < 3; ++c) EXPECT_NEAR(SetShare(r, c), 0.5, 0.03) << c;
    for (int32_t x = 0; x < 256; ++x) unlike += r.rows[100][3 * x] != r.rows[100][3 * x + 2];
    EXPECT_GT(unlike, 40);
}

TEST(Halftone, AnUnturnedScreenByHand)
{
    // Cells of 4 at 0 degrees; level 64 is a white share of 0.251, so white
    // dots of radius squared 0.251 * 16 / pi = 1.28 about each cell's centre
    // (2, 2): the four pixel centres at 0.5 from it, and no others (the next
    // are at 2.5).
    Image r;
    ASSERT_EQ(
        Apply("halftone", Flat(kImageGray, 16, 12, 64), {{"cell-size", "4"}, {"angle", "0"}}, r),
        0);
    for (int32_t y = 0; y < 12; ++y)
        for (int32_t x = 0; x < 16; ++x) {
            const bool inside = (x % 4 == 1 || x % 4 == 2) && (y % 4 == 1 || y % 4 == 2);
            ASSERT_EQ(r.rows[y][x], inside ? 255 : 0) << x << "," << y;
        }
}

TEST(Halftone, PreviewsShowTheResult)
{
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor})
        FullAndPreviews("halftone", Busy(kind, 613, 437), {{"cell-size", "7"}, {"angle", "30"}});
}

}  // namespace
}  // namespace lv
