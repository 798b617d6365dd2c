// Emboss: a step through the relief at 0 and 90 degrees with heights worked
// by hand (the background 128 entering at the borders, the arithmetic shift
// of a negative difference), Shadow, flat pictures, the value kept in hue,
// the Amount, one pixel wide, previews against full results, the threads.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/pictures.h"
#include "transform/registry.h"

namespace lv {
namespace edge_emboss_test {

// From edge_test.cpp.
using Options = std::vector<std::pair<const char*, const char*>>;
Image FilterApply(const char* name, const Image& source, const Options& options,
                  int32_t amount = 1024);
void ExpectPreviewsMatch(const char* name, const Image& source, const Options& options);
Image GrayRows(const std::vector<std::vector<int32_t>>& rows);
std::vector<int32_t> Row(const Image& image, int32_t y);

}  // namespace edge_emboss_test

namespace {

using edge_emboss_test::ExpectPreviewsMatch;
using edge_emboss_test::FilterApply;
using edge_emboss_test::GrayRows;
using edge_emboss_test::Options;
using edge_emboss_test::Row;
using V = std::vector<int32_t>;

TEST(Emboss, StepAcrossAtZeroDegrees)
{
    // d(x) = p(x + 1) - p(x - 1); beyond the picture the lines read 128.
    const Image step = GrayRows({{50, 50, 50, 139, 139, 139}, {50, 50, 50, 139, 139, 139}});
    const Options at0 = {{"angle", "0"}, {"radius", "1"}};
    // 50-128, 0, 89, 89, 0, 128-139, each plus 128.
    EXPECT_EQ(Row(FilterApply("emboss", step, at0), 1), (V{50, 128, 217, 217, 128, 117}));
    // Height 0.5: 512 / 1024 with an arithmetic shift, so -11 gives -6 and
    // -78 gives -39.
    Options half = at0;
    half.push_back({"height", "0.5"});
    EXPECT_EQ(Row(FilterApply("emboss", step, half), 0), (V{89, 128, 172, 172, 128, 122}));
    Options two = at0;
    two.push_back({"height", "2"});
    EXPECT_EQ(Row(FilterApply("emboss", step, two), 0), (V{0, 128, 255, 255, 128, 106}));
    // Shadow adds the difference to the pixel.
    Options shadow = at0;
    shadow.push_back({"method", "shadow"});
    EXPECT_EQ(Row(FilterApply("emboss", step, shadow), 0), (V{0, 50, 139, 228, 139, 128}));
    // 180 degrees turns the relief over.
    EXPECT_EQ(Row(FilterApply("emboss", step, {{"angle", "180"}}), 0),
              (V{206, 128, 39, 39, 128, 139}));
}

TEST(Emboss, StepUpAtNinetyDegrees)
{
    // 90 degrees turns clockwise from the right: the first line lies one
    // row below (row numbers count from the bottom).
    const Image step = GrayRows({{50, 50}, {50, 50}, {50, 50}, {150, 150}, {150, 150}, {150, 150}});
    const Image r = FilterApply("emboss", step, {{"angle", "90"}, {"radius", "1"}});
    V column;
    for (int32_t y = 0; y < r.height; ++y) column.push_back(r.rows[y][1]);
    // d(y) = p(y - 1) - p(y + 1): 128-50, 0, -100, -100, 0, 150-128.
    EXPECT_EQ(column, (V{206, 128, 28, 28, 128, 150}));
}

TEST(Emboss, FlatAndColourPictures)
{
    // Flat gives 128 in Normal away from the borders, and the picture in
    // Shadow; radius 0 gives 128 everywhere.
    const Image flat = GrayRows({{90, 90, 90, 90, 90}, {90, 90, 90, 90, 90}});
    EXPECT_EQ(Row(FilterApply("emboss", flat, {{"angle", "0"}}), 0), (V{90, 128, 128, 128, 166}));
    EXPECT_EQ(Row(FilterApply("emboss", flat, {{"radius", "0"}}), 1), (V{128, 128, 128, 128, 128}));
    EXPECT_EQ(Row(FilterApply("emboss", flat, {{"radius", "0"}, {"method", "shadow"}}), 1),
              (V{90, 90, 90, 90, 90}));
    // HSV: orange 100,50,0 | 200,100,0 has values 100 | 200; at the step
    // Normal puts 100 + 128 into the pixel along its line to black.
    Image color;
    ASSERT_EQ(ImageAlloc(color, kImageColor, 4, 1, 72.0), 0);
    for (int32_t x = 0; x < 4; ++x) {
        uint8_t* p = color.rows[0] + 3 * x;
        p[0] = 0, p[1] = x < 2 ? 50 : 100, p[2] = x < 2 ? 100 : 200;
    }
    const Image hsv = FilterApply("emboss", color, {{"angle", "0"}});
    EXPECT_EQ(test::Pixel(hsv, 1, 0), 0xE47200u);  // 228, 50 * 228 / 100, 0
    EXPECT_EQ(test::Pixel(hsv, 2, 0), 0xE47200u);  // 228, 100 * 228 / 200, 0
    // RGB works each channel: blue 0 - 0 gives 128.
    const Image rgb = FilterApply("emboss", color, {{"angle", "0"}, {"color-space", "rgb"}});
    EXPECT_EQ(test::Pixel(rgb, 1, 0), 0xE4B280u);  // 100 + 128, 50 + 128, 128
}

TEST(Emboss, AmountOnePixelWidePreviewsAndThreads)
{
    Image color;
    ASSERT_EQ(ImageAlloc(color, kImageColor, 600, 450, 72.0), 0);
    for (int32_t y = 0; y < 450; ++y)
        for (int32_t x = 0; x < 600; ++x) {
            uint8_t* p = color.rows[y] + 3 * x;
            p[0] = static_cast<uint8_t>(x * 3 + y), p[1] = static_cast<uint8_t>(x * y % 253);
            p[2] = static_cast<uint8_t>((x ^ y) * 5);
        }
    EXPECT_EQ(test::Bytes(FilterApply("emboss", color, {{"radius", "3"}}, 0)), test::Bytes(color));
    ExpectPreviewsMatch("emboss", color, {});
    ExpectPreviewsMatch("emboss", color,
                        {{"radius", "2.5"},
                         {"angle", "30"},
                         {"height", "3"},
                         {"method", "shadow"},
                         {"color-space", "hsl"}});
    ExpectPreviewsMatch("emboss", color, {{"angle", "300"}, {"color-space", "rgb"}});
    // One column at 90 degrees: the lines stay inside it.
    const Image thin = GrayRows({{10}, {20}, {40}, {80}});
    const Image r = FilterApply("emboss", thin, {{"angle", "90"}});
    V column;
    for (int32_t y = 0; y < r.height; ++y) column.push_back(r.rows[y][0]);
    EXPECT_EQ(column, (V{236, 98, 68, 40}));
}

}  // namespace
}  // namespace lv
