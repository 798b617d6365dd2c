// Edge: the three gradients worked by hand on step edges and a lone bright
// pixel, Darken and Lighten, flat pictures, the value and lightness of colour
// (hue kept, a gray result at full strength), the Amount, pictures one pixel
// wide, previews against full results, and the threads.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "image/threads.h"
#include "support/pictures.h"
#include "support/previews.h"
#include "transform/frame.h"
#include "transform/registry.h"

namespace lv {
namespace edge_emboss_test {

using test::Bytes;
using test::Pixel;

using Options = std::vector<std::pair<const char*, const char*>>;

std::unique_ptr<TransformParams> FilterParams(const char* name, const Options& options)
{
    const TransformModule& module = *FindTransform(name);
    auto params = CreateParams(module);
    std::string problem;
    for (const auto& [option, value] : options)
        EXPECT_EQ(ParamSetText(module, *FindParam(module, option), *params, value, problem), 0)
            << problem;
    return params;
}

Image FilterApply(const char* name, const Image& source, const Options& options,
                  int32_t amount = 1024)
{
    auto params = FilterParams(name, options);
    params->amount.amount = amount;
    Image result;
    EXPECT_EQ(RunTransformToImage(*FindTransform(name), *params, &source, result), 0);
    return result;
}

// The full result on one thread and on two must be the same bytes, and the
// frame's previews must show it.
void ExpectPreviewsMatch(const char* name, const Image& source, const Options& options)
{
    test::FullAndPreviews(name, source, [&] { return FilterParams(name, options); });
}

// A gray picture from its rows, bottom row first.
Image GrayRows(const std::vector<std::vector<int32_t>>& rows)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kImageGray, static_cast<int32_t>(rows[0].size()),
                         static_cast<int32_t>(rows.size()), 72.0),
              0);
    for (size_t y = 0; y < rows.size(); ++y)
        for (size_t x = 0; x < rows[y].size(); ++x)
            image.rows[y][x] = static_cast<uint8_t>(rows[y][x]);
    return image;
}

std::vector<int32_t> Row(const Image& image, int32_t y)
{
    std::vector<int32_t> row;
    for (int32_t x = 0; x < image.width; ++x)
        row.push_back(static_cast<int32_t>(Pixel(image, x, y)));
    return row;
}

// A colour picture of w by h whose pixel is f(x, y) as 0xRRGGBB.
template <class F>
Image ColorPicture(int32_t w, int32_t h, F f)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kImageColor, w, h, 72.0), 0);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x) {
            const uint32_t c = f(x, y);
            uint8_t* p = image.rows[y] + 3 * x;
            p[0] = static_cast<uint8_t>(c), p[1] = static_cast<uint8_t>(c >> 8);
            p[2] = static_cast<uint8_t>(c >> 16);
        }
    ClearImagePadding(image);
    return image;
}

}  // namespace edge_emboss_test

namespace {

using edge_emboss_test::ColorPicture;
using edge_emboss_test::ExpectPreviewsMatch;
using edge_emboss_test::FilterApply;
using edge_emboss_test::GrayRows;
using edge_emboss_test::Row;

using V = std::vector<int32_t>;

TEST(Edge, StepEdgesThroughTheThreeGradients)
{
    // A vertical step 10 | 40: Roberts 30 + 30 on both sides, Sobel 4 * 30,
    // the Laplacian only on the bright side (-30 is cut to 0).
    const Image across = GrayRows({{10, 10, 40, 40}, {10, 10, 40, 40}, {10, 10, 40, 40}});
    EXPECT_EQ(Row(FilterApply("edge", across, {{"method", "roberts"}}), 1), (V{0, 60, 60, 0}));
    EXPECT_EQ(Row(FilterApply("edge", across, {{"method", "sobel"}}), 1), (V{0, 120, 120, 0}));
    EXPECT_EQ(Row(FilterApply("edge", across, {{"method", "laplacian"}}), 1), (V{0, 0, 30, 0}));
    // The same step between rows 1 and 2 (bottom-up), read down a column.
    const Image up = GrayRows({{10, 10, 10}, {10, 10, 10}, {40, 40, 40}, {40, 40, 40}});
    auto column = [](const Image& image) {
        V c;
        for (int32_t y = 0; y < image.height; ++y)
            c.push_back(static_cast<int32_t>(image.rows[y][1]));
        return c;
    };
    EXPECT_EQ(column(FilterApply("edge", up, {{"method", "roberts"}})), (V{0, 60, 60, 0}));
    EXPECT_EQ(column(FilterApply("edge", up, {{"method", "sobel"}})), (V{0, 120, 120, 0}));
    EXPECT_EQ(column(FilterApply("edge", up, {{"method", "laplacian"}})), (V{0, 0, 30, 0}));
    // Sobel past 255 is cut: 10 | 200 gives 4 * 190.
    const Image steep = GrayRows({{10, 10, 200, 200}, {10, 10, 200, 200}, {10, 10, 200, 200}});
    EXPECT_EQ(Row(FilterApply("edge", steep, {{"method", "sobel"}}), 1), (V{0, 255, 255, 0}));
}

TEST(Edge, RobertsLightsTheDiagonalNeighboursOfALonePixel)
{
    const Image dot = GrayRows({{0, 0, 0}, {0, 100, 0}, {0, 0, 0}});
    const Image r = FilterApply("edge", dot, {{"method", "roberts"}});
    EXPECT_EQ(Row(r, 0), (V{100, 0, 100}));
    EXPECT_EQ(Row(r, 1), (V{0, 0, 0}));
    EXPECT_EQ(Row(r, 2), (V{100, 0, 100}));
}

TEST(Edge, DarkenAndLightenMoveTheCentre)
{
    const Image across = GrayRows({{10, 10, 40, 40}, {10, 10, 40, 40}, {10, 10, 40, 40}});
    EXPECT_EQ(Row(FilterApply("edge", across, {{"method", "roberts"}, {"action", "lighten"}}), 1),
              (V{10, 70, 100, 40}));
    EXPECT_EQ(Row(FilterApply("edge", across, {{"method", "laplacian"}, {"action", "darken"}}), 1),
              (V{10, 10, 10, 40}));
    EXPECT_EQ(Row(FilterApply("edge", across, {{"method", "sobel"}, {"action", "darken"}}), 1),
              (V{10, 0, 0, 40}));
}

TEST(Edge, FlatPicturesGiveZeroOrStayAsTheyAre)
{
    const Image gray = GrayRows({{77, 77, 77}, {77, 77, 77}});
    const Image color = ColorPicture(3, 2, [](int32_t, int32_t) { return 0x4080C0u; });
    for (const char* method : {"roberts", "sobel", "laplacian"}) {
        for (const char* space : {"rgb", "hsv", "hsl"}) {
            const Image c =
                FilterApply("edge", color, {{"method", method}, {"color-space", space}});
            for (int32_t x = 0; x < 3; ++x) EXPECT_EQ(test::Pixel(c, x, 1), 0u) << method << space;
            // The HSL round trip of the lightness moves red and blue by one.
            const uint32_t kept = std::string(space) == "hsl" ? 0x3F80BFu : 0x4080C0u;
            for (const char* action : {"darken", "lighten"}) {
                const Image k =
                    FilterApply("edge", color,
                                {{"method", method}, {"action", action}, {"color-space", space}});
                for (int32_t x = 0; x < 3; ++x)
                    EXPECT_EQ(test::Pixel(k, x, 0), kept) << method << action << space;
            }
        }
        EXPECT_EQ(Row(FilterApply("edge", gray, {{"method", method}}), 0), (V{0, 0, 0}));
        EXPECT_EQ(Row(FilterApply("edge", gray, {{"method", method}, {"action", "lighten"}}), 1),
                  (V{77, 77, 77}));
    }
}

TEST(Edge, ValueAndLightnessKeepTheHue)
{
    // Orange 100,50,0 beside 200,100,0: value 100 | 200, Roberts 200.
    const Image color =
        ColorPicture(4, 3, [](int32_t x, int32_t) { return x < 2 ? 0x643200u : 0xC86400u; });
    const Image lit = FilterApply(
        "edge", color, {{"method", "roberts"}, {"action", "lighten"}, {"color-space", "hsv"}});
    ASSERT_EQ(lit.kind, kImageColor);
    // 100 + 200 is cut to 255; the channels scale by 255 / 100.
    EXPECT_EQ(test::Pixel(lit, 1, 1), 0xFF7F00u);
    EXPECT_EQ(test::Pixel(lit, 0, 1), 0x643200u);
    // Computing the value alone at full strength gives a gray picture.
    const Image g = FilterApply("edge", color, {{"method", "roberts"}, {"color-space", "hsv"}});
    ASSERT_EQ(g.kind, kImageGray);
    EXPECT_EQ(Row(g, 1), (V{0, 200, 200, 0}));
    // HSL lightness 50 | 100: Roberts 100, and lightness 100 at 1.
    const Image l = FilterApply("edge", color, {{"method", "roberts"}, {"color-space", "hsl"}});
    EXPECT_EQ(Row(l, 1), (V{0, 100, 100, 0}));
    // At half strength the gradient goes back into the colour, then blends:
    // value 200 is 200,100,0, halfway from 100,50,0 (k 128) is 150,75,0.
    const Image half =
        FilterApply("edge", color, {{"method", "roberts"}, {"color-space", "hsv"}}, 512);
    ASSERT_EQ(half.kind, kImageColor);
    EXPECT_EQ(test::Pixel(half, 1, 1), 0x964B00u);
}

TEST(Edge, AmountZeroCopiesAndOnePixelWideWorks)
{
    const Image color = ColorPicture(
        5, 4, [](int32_t x, int32_t y) { return static_cast<uint32_t>(x * 40 + y * 0x1300 + 7); });
    const Image copy = FilterApply("edge", color, {{"method", "sobel"}}, 0);
    EXPECT_EQ(test::Bytes(copy), test::Bytes(color));
    // One column: left and right repeat the centre, so only gy counts.
    const Image thin = GrayRows({{10}, {20}, {40}});
    auto column = [](const Image& image) {
        V c;
        for (int32_t y = 0; y < image.height; ++y) c.push_back(image.rows[y][0]);
        return c;
    };
    EXPECT_EQ(column(FilterApply("edge", thin, {{"method", "sobel"}})), (V{40, 120, 80}));
    EXPECT_EQ(column(FilterApply("edge", thin, {{"method", "laplacian"}})), (V{0, 0, 20}));
    EXPECT_EQ(column(FilterApply("edge", GrayRows({{9}}), {{"method", "sobel"}})), (V{0}));
}

TEST(Edge, PreviewsShowTheFullResultOnAnyThreads)
{
    // 640 by 420 reaches the threaded path; a binary picture reads as 0 and
    // 255 and gives gray.
    const Image color = ColorPicture(640, 420, [](int32_t x, int32_t y) {
        return static_cast<uint32_t>((x * 7 + y * 13) % 256 | (x * y % 251) << 8 |
                                     ((x ^ y) & 255) << 16);
    });
    ExpectPreviewsMatch("edge", color, {{"method", "sobel"}});
    ExpectPreviewsMatch("edge", color,
                        {{"method", "roberts"}, {"action", "lighten"}, {"color-space", "hsl"}});
    ExpectPreviewsMatch("edge", color, {{"method", "laplacian"}, {"color-space", "hsv"}});
    Image binary;
    ASSERT_EQ(ImageAlloc(binary, kImageBinary, 61, 37, 72.0), 0);
    for (int32_t y = 0; y < 37; ++y)
        for (int32_t x = 0; x < 61; ++x) PutBit(binary.rows[y], x, (x * x + 3 * y) % 7 < 3);
    ExpectPreviewsMatch("edge", binary, {{"method", "sobel"}, {"action", "darken"}});
}

}  // namespace
}  // namespace lv
