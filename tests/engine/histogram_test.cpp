#include "tone/histogram.h"

#include <gtest/gtest.h>

#include <cstring>

#include "image/pixel.h"
#include "shell/commands.h"
#include "support/scripted_frontend.h"
#include "synthesis/test_card.h"
#include "transform/registry.h"

namespace lv {
namespace {

TEST(Histogram, SamplingStaysWithinTheBudget)
{
    int32_t sx = 0, sy = 0;
    HistogramSteps(5000, 4000, kHistogramBudget, sx, sy);
    EXPECT_LE(int64_t{5000} * 4000 / (int64_t{sx} * sy), kHistogramBudget);
    EXPECT_TRUE((sx == 6 || sx == 7) && (sy == 6 || sy == 7));  // every sixth or seventh
    HistogramSteps(100, 100, kHistogramBudget, sx, sy);
    EXPECT_EQ(sx * sy, 1);

    // The peak is the largest count after sampling; a binary picture counts
    // into 0 and 255 only. The box cannot be aborted.
    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 0;
    ScopedFrontEnd installed(fe);
    Image bits;
    ASSERT_EQ(ImageAlloc(bits, kImageBinary, 10, 4, 72.0), 0);
    for (int32_t y = 0; y < 4; ++y) std::memset(bits.rows[y], y < 1 ? 0xFF : 0x00, bits.stride);
    HistogramRecord h;
    histogram_binary(bits, h, kHistogramBudget);
    EXPECT_EQ(h.counts[255], 10);
    EXPECT_EQ(h.counts[0], 30);
    EXPECT_EQ(h.peak, 30);
    EXPECT_EQ(fe.titles.back(), "Histogram");

    Image colour, hist;
    ASSERT_EQ(MakeTestCard(colour, kImageColor, 64, 48), 0);
    ASSERT_EQ(image_histogram(colour, hist), 0);
    EXPECT_EQ(hist.kind, kImageHistogram);
    int32_t sum = 0;
    const auto* words = reinterpret_cast<const int32_t*>(hist.rows[0]);
    for (int32_t i = 1; i <= 256; ++i) sum += words[i];
    EXPECT_EQ(sum, 64 * 48);
    Image solid;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(image_histogram(solid, hist), 14);
}

TEST(Histogram, EqualizeTableMatchesCumulativeSums)
{
    HistogramRecord flat, spike, target;
    for (int32_t& c : target.counts) c = 1;
    for (int32_t& c : flat.counts) c = 7;
    uint8_t table[256];
    equalize_table(flat, target, table);
    for (int32_t i = 0; i < 256; ++i) EXPECT_NEAR(table[i], i, 1) << i;  // close to the identity

    // All the mass in one level: below it near 0, from it on 255.
    spike.counts[100] = 1000;
    equalize_table(spike, target, table);
    EXPECT_EQ(table[0], 0);
    EXPECT_EQ(table[99], 0);
    EXPECT_EQ(table[100], 255);
    EXPECT_EQ(table[200], 255);
    for (int32_t i = 1; i < 256; ++i) EXPECT_GE(table[i], table[i - 1]);  // never falls

    HistogramRecord empty;
    equalize_table(empty, target, table);
    EXPECT_EQ(table[37], 37);  // nothing to match: the identity
}

}  // namespace
}  // namespace lv

namespace lv {
namespace {

TEST(Equalize, MapsTheInputsHistogramOntoAFlatOne)
{
    const TransformModule* equalize = FindTransform("equalize");
    ASSERT_NE(equalize, nullptr);
    EXPECT_EQ(PanelKindOf(equalize->commandId), 56);
    auto params = CreateParams(*equalize);

    // A gray picture of two levels: each half of the mass maps to its end.
    Image gray, result;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 40, 20, 72.0), 0);
    for (int32_t y = 0; y < 20; ++y) std::memset(gray.rows[y], y < 10 ? 60 : 90, gray.stride);
    ASSERT_EQ(RunTransformToImage(*equalize, *params, &gray, result), 0);
    EXPECT_LT(result.rows[0][0], 140);
    EXPECT_EQ(result.rows[19][0], 255);

    // Half strength blends toward the input; none takes the short way.
    params->amount.amount = 0;
    ASSERT_EQ(RunTransformToImage(*equalize, *params, &gray, result), 0);
    EXPECT_EQ(result.rows[19][0], 90);
    std::string problem;
    const ParamDecl* space = FindParam(*equalize, "color-space");
    ASSERT_NE(space, nullptr);
    EXPECT_EQ(ParamSetText(*space, *params, "hsl", problem), 0);
    EXPECT_EQ(ParamInt(*space, *params), 1);
    EXPECT_EQ(ParamSetText(*space, *params, "lab", problem), kParamRefused);
    EXPECT_EQ(problem, "'lab' is not a choice; allowed: one of hsv, hsl");
}

TEST(Histogram, ColourReadersTakeRedGreenBlueFromStoredOrder)
{
    // Every pixel red 200, green 100, blue 0: stored blue first. A reader
    // that swapped red and blue would count into another bin.
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 3, 2, 72.0), 0);
    for (int32_t y = 0; y < 2; ++y)
        for (int32_t x = 0; x < 3; ++x) {
            uint8_t* p = colour.rows[y] + x * 3;
            p[0] = 0;
            p[1] = 100;
            p[2] = 200;
        }
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    HistogramRecord h;
    histogram_average(colour, h, kHistogramBudget);
    EXPECT_EQ(h.counts[100], 6);
    histogram_luminance(colour, h, kHistogramBudget);
    EXPECT_EQ(h.counts[luminance(200, 100, 0)], 6);
    EXPECT_NE(luminance(200, 100, 0), luminance(0, 100, 200));
    histogram_value(colour, h, kHistogramBudget);
    EXPECT_EQ(h.counts[200], 6);
    EXPECT_EQ(h.peak, 6);
    histogram_lightness(colour, h, kHistogramBudget);
    EXPECT_EQ(h.counts[100], 6);
    HistogramRecord red, green, blue;
    histogram_rgb(colour, red, green, blue, kHistogramBudget);
    EXPECT_EQ(red.counts[200] + green.counts[100] + blue.counts[0], 18);
}

}  // namespace
}  // namespace lv

namespace lv {
namespace {

TEST(Histogram, TwelveBitChannelsAreScaledByTheTable)
{
    Level12To8 scale;
    MakeLevel12To8(scale);
    EXPECT_EQ(scale.level[0], 0);
    EXPECT_EQ(scale.level[17], 1);  // 17 * 255 = 4335, the first past 4096
    EXPECT_EQ(scale.level[16], 0);
    EXPECT_EQ(scale.level[2048], 127);
    EXPECT_EQ(scale.level[4096], 255);

    // Two colours, half the pixels each: pure red (hue 4096, full
    // saturation, value 255, lightness 2048) and a dark gray (no hue, no
    // saturation).
    Image colour;
    ASSERT_EQ(ImageAlloc(colour, kImageColor, 4, 2, 72.0), 0);
    for (int32_t x = 0; x < 4; ++x) {
        uint8_t* red = colour.rows[0] + x * 3;
        red[0] = 0, red[1] = 0, red[2] = 255;
        uint8_t* gray = colour.rows[1] + x * 3;
        gray[0] = gray[1] = gray[2] = 64;
    }
    HistogramRecord hue, saturation, value;
    histogram_hsv(colour, hue, saturation, value, kHistogramBudget);
    EXPECT_EQ(hue.counts[255], 4);
    EXPECT_EQ(hue.counts[0], 4);
    EXPECT_EQ(saturation.counts[255], 4);
    EXPECT_EQ(saturation.counts[0], 4);
    EXPECT_EQ(value.counts[255], 4);
    EXPECT_EQ(value.counts[scale.level[64 * 4096 / 255]], 4);
    EXPECT_EQ(value.peak, 4);
    HistogramRecord lightness;
    histogram_hsl(colour, hue, saturation, lightness, kHistogramBudget);
    EXPECT_EQ(hue.counts[255], 4);
    EXPECT_EQ(saturation.counts[255], 4);

    // The one-channel readers of saturation agree on the extremes.
    HistogramRecord hsv, hsl;
    histogram_hsv_saturation(colour, hsv, kHistogramBudget);
    histogram_hsl_saturation(colour, hsl, kHistogramBudget);
    EXPECT_EQ(hsv.counts[255], 4);
    EXPECT_EQ(hsv.counts[0], 4);
    EXPECT_EQ(hsl.counts[255], 4);
    EXPECT_EQ(hsl.counts[0], 4);
}

}  // namespace
}  // namespace lv
