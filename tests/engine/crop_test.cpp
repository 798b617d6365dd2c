// Crop and Add Border: refitting a box to proportions, the handles' hit
// areas, boxes at and past the edges, margins in every unit with their
// rounding, the kind of a bordered result, previews against full results,
// the box and Cancel, and the threads, through the modules as the command
// line runs them.
#include "geometry/crop.h"
#include "geometry/add_border.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "support/pictures.h"
#include "support/previews.h"
#include "support/scripted_frontend.h"
#include "transform/frame.h"
#include "transform/registry.h"

namespace lv {
namespace {

// Gray pixel (x, y) is 10 y + x; binary an irregular pattern; junk padding.
Image Make(int32_t kind, int32_t width, int32_t height, double resolution = 300.0)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, width, height, resolution), 0);
    for (int32_t y = 0; y < height; ++y) {
        std::memset(image.rows[y], 0x5A, static_cast<size_t>(image.stride));
        for (int32_t x = 0; x < width; ++x) {
            uint8_t* p = image.rows[y] + (kind == kImageColor ? 3 * x : x);
            if (kind == kImageBinary) {
                PutBit(image.rows[y], x, (x * 7 + y * 3 + x * y) % 5 < 2);
            } else {
                p[0] = static_cast<uint8_t>(10 * y + x);
                if (kind == kImageColor) p[1] = static_cast<uint8_t>(y), p[2] = 77;
            }
        }
    }
    return image;
}

using test::Bytes;
using test::Pixel;

using Options = std::vector<std::pair<const char*, const char*>>;

// The record of `lumivue-cli apply NAME --option value ...`.
std::unique_ptr<TransformParams> ParamsFor(const char* name, const Options& options)
{
    const TransformModule& module = *FindTransform(name);
    auto params = CreateParams(module);
    std::string problem;
    for (const auto& [option, value] : options) {
        EXPECT_EQ(ParamSetText(module, *FindParam(module, option), *params, value, problem), 0)
            << problem;
    }
    return params;
}

int32_t Apply(const char* name, const Image& source, const Options& options, Image& result)
{
    return RunTransformToImage(*FindTransform(name), *ParamsFor(name, options), &source, result);
}

void OutputSize(const char* name, const Image& source, const Options& options, int32_t& w,
                int32_t& h)
{
    TransformOutputSize(*FindTransform(name), &source, *ParamsFor(name, options), w, h);
}

// The full result on any number of threads and the previews that show it.
Image FullAndPreviews(const char* name, const Image& source, const Options& options)
{
    return test::FullAndPreviews(name, source, [&] { return ParamsFor(name, options); });
}

// ---- Crop ----------------------------------------------------------------------------

TEST(CropConstrain, KeepsTheDiagonalAndTheCornerOppositeTheHandle)
{
    auto is = [](const CropBox& b, std::vector<int32_t> v) {
        return std::vector<int32_t>{b.x1, b.y1, b.x2, b.y2} == v;
    };
    const CropBox box{10, 20, 40, 60};  // a diagonal of 50
    // Square: 50 / sqrt 2 = 35.36. 2 by 3 upright: 27.74, so 28, and 28 /
    // (2/3) = 42. Lying: 41.60, so 42, and 42 / 1.5 = 28.
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner22, 1.0), {10, 20, 45, 55}));
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner22, 2.0 / 3.0), {10, 20, 38, 62}));
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner22, 1.5), {10, 20, 52, 48}));
    // The dragged corner goes the way it lay from the one that stays.
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner11, 1.0), {5, 25, 40, 60}));
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner21, 1.0), {10, 25, 45, 60}));
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner12, 1.0), {5, 20, 40, 55}));
    // 3 by 4 on a diagonal of 25; the height from the rounded width (2 by
    // 5 on 13: 4.83 gives 5, and 5 / 0.4 = 12.5 goes to 13); at least 1.
    EXPECT_TRUE(is(crop_constrain({0, 0, 7, 24}, kCropCorner22, 4.0 / 3.0), {0, 0, 20, 15}));
    EXPECT_TRUE(is(crop_constrain({0, 0, 5, 12}, kCropCorner22, 0.4), {0, 0, 5, 13}));
    EXPECT_TRUE(is(crop_constrain({5, 5, 5, 5}, kCropCorner22, 1.0 / 3.0), {5, 5, 6, 8}));
    EXPECT_TRUE(is(crop_constrain(box, kCropCorner22, 0.0), {10, 20, 40, 60}));
    EXPECT_TRUE(is(crop_constrain(box, kCropCenter, 1.0), {10, 20, 40, 60}));

    // Each entry is the ratio of its first pair; Custom as given.
    EXPECT_EQ(crop_ratio(kProportionsArbitrary, kPortrait, 1, 1), 0.0);
    EXPECT_EQ(crop_ratio(kProportionsSquare, kLandscape, 4, 6), 1.0);
    EXPECT_EQ(crop_ratio(kProportionsCustom, kLandscape, 4, 6), 4.0 / 6.0);
    EXPECT_EQ(crop_ratio(3, kPortrait, 1, 1), 0.5);           // 1x2, 6x12
    EXPECT_EQ(crop_ratio(7, kLandscape, 1, 1), 3.5 / 2.5);    // 2.5x3.5, 5x7, ...
    EXPECT_EQ(crop_ratio(11, kPortrait, 1, 1), 0.35);         // 3.5x10
    EXPECT_EQ(crop_ratio(14, kLandscape, 1, 1), 11.0 / 8.5);  // 8.5x11, 17x22
    EXPECT_EQ(crop_ratio(18, kPortrait, 1, 1), 13.0 / 18.0);  // 13x18
    EXPECT_EQ(crop_ratio(kProportionsCount, kPortrait, 1, 1), 0.0);
}

TEST(CropConstrain, HandlesAreFiveByFiveAtTheCornersAndNineByNineAtTheCentre)
{
    const CropBox box{10, 20, 40, 60};                     // centre (25, 40)
    EXPECT_EQ(crop_handle_at(box, 8, 22), kCropCorner11);  // the square's edge counts
    EXPECT_EQ(crop_handle_at(box, 7, 20), kCropHandleNone);
    EXPECT_EQ(crop_handle_at(box, 42, 18), kCropCorner21);
    EXPECT_EQ(crop_handle_at(box, 41, 61), kCropCorner22);
    EXPECT_EQ(crop_handle_at(box, 12, 62), kCropCorner12);
    EXPECT_EQ(crop_handle_at(box, 21, 44), kCropCenter);
    EXPECT_EQ(crop_handle_at(box, 30, 40), kCropHandleNone);
    EXPECT_EQ(crop_handle_at({0, 0, 3, 3}, 3, 2), kCropCorner21);  // corners first, in order

    const CropMargins m = crop_margins({7, 1, 12, 3}, 40, 30);
    EXPECT_EQ(std::vector<int32_t>({m.left, m.right, m.top, m.bottom}),
              std::vector<int32_t>({7, 27, 26, 1}));
}

TEST(Crop, CopiesTheBoxRowsCountingFromTheTopInEitherOrder)
{
    const Image gray = Make(kImageGray, 6, 5);
    // Rows 1 and 2 from the top are rows 3 and 2 from the bottom.
    for (const Options& o : {Options{{"x1", "1"}, {"y1", "1"}, {"x2", "3"}, {"y2", "2"}},
                             Options{{"box", "3,2,1,1"}}}) {
        Image r;
        ASSERT_EQ(Apply("crop", gray, o, r), 0);
        ASSERT_EQ(r.width * 10 + r.height, 32);
        EXPECT_EQ(r.resolution, 300.0);
        EXPECT_EQ(std::vector<uint8_t>(r.rows[0], r.rows[0] + 3),
                  std::vector<uint8_t>({21, 22, 23}));
        EXPECT_EQ(std::vector<uint8_t>(r.rows[1], r.rows[1] + 3),
                  std::vector<uint8_t>({31, 32, 33}));
    }
}

TEST(Crop, ABoxGivenAtOnceIsCheckedWholeBeforeAnyCornerIsSet)
{
    const TransformModule& module = *FindTransform("crop");
    const ParamDecl& box = *FindParam(module, "box");
    EXPECT_EQ(ParamDefaultText(box, &module), "0,0,-1,-1");
    auto params = CreateParams(module);
    std::string problem;
    EXPECT_EQ(ParamSetText(module, box, *params, "1,2,3", problem), kParamRefused);
    EXPECT_EQ(problem, "'1,2,3' is not 4 values; allowed: 4 integers x1,y1,x2,y2 separated by "
                       "commas, each as its own option allows");
    EXPECT_EQ(ParamSetText(module, box, *params, "1,2,-2,4", problem), kParamRefused);
    EXPECT_EQ(problem, "'-2' for x2: '-2' is out of range; allowed: an integer from -1 to 999999");
    const auto& record = static_cast<const CropParams&>(*params);
    EXPECT_EQ(record.x1 * 1000 + record.y1 * 100 + record.x2 * 10 + record.y2, -11);
}

TEST(Crop, BoxesAtAndPastTheEdges)
{
    const Image colour = Make(kImageColor, 6, 5);
    Image r;
    // The top right pixel alone, -1 naming the last column.
    ASSERT_EQ(Apply("crop", colour, {{"x1", "5"}, {"x2", "-1"}, {"y2", "0"}}, r), 0);
    ASSERT_EQ(r.width * 10 + r.height, 11);
    EXPECT_EQ(Pixel(r, 0, 0), Pixel(colour, 5, 4));
    // Past the right and the bottom: cut at the edges.
    ASSERT_EQ(Apply("crop", colour, {{"x1", "4"}, {"y1", "3"}, {"x2", "99"}, {"y2", "99"}}, r), 0);
    ASSERT_EQ(r.width * 10 + r.height, 22);
    EXPECT_EQ(Pixel(r, 1, 1), Pixel(colour, 5, 1));
    // Wholly outside: refused as a rectangle copy refuses it, with the reason.
    int32_t w = -1, h = -1;
    OutputSize("crop", colour, {{"x1", "6"}, {"x2", "9"}}, w, h);
    EXPECT_EQ(w * 10 + h, 0);
    ClearErrorDetail();
    Image none;
    EXPECT_EQ(Apply("crop", colour, {{"x1", "6"}, {"x2", "9"}}, none), 73);
    EXPECT_EQ(ErrorDetail(), "the box from 6,0 to 9,-1 lies outside the 6 x 5 picture");
    EXPECT_EQ(none.kind, kImageEmpty);
    // The whole picture is the short way, a copy with its box.
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    ASSERT_EQ(Apply("crop", colour, {}, r), 0);
    EXPECT_EQ(Bytes(r), Bytes(colour));
    EXPECT_EQ(fe.titles, std::vector<std::string>{"Copy"});
    // A binary picture from column 3, its spare bits cleared.
    const Image binary = Make(kImageBinary, 21, 4);
    ASSERT_EQ(Apply("crop", binary, {{"x1", "3"}, {"y1", "1"}, {"x2", "13"}}, r), 0);
    ASSERT_EQ(r.kind, kImageBinary);
    ASSERT_EQ(r.width * 10 + r.height, 113);
    for (int32_t y = 0; y < 3; ++y) {
        for (int32_t x = 0; x < 11; ++x) EXPECT_EQ(Pixel(r, x, y), Pixel(binary, 3 + x, y));
        EXPECT_EQ(r.rows[y][1] & 0x1F, 0);
    }
}

TEST(Crop, ProportionsRefitTheBoxFromItsSecondCorner)
{
    const Image gray = Make(kImageGray, 40, 30);
    const Options box{{"x2", "20"}, {"y2", "20"}};  // a diagonal of 28.28
    auto size = [&](Options more) {
        more.insert(more.begin(), box.begin(), box.end());
        int32_t w = 0, h = 0;
        OutputSize("crop", gray, more, w, h);
        return std::vector<int32_t>{w, h};
    };
    // Lying 3 by 4: 22.63 gives 23 across, 17.25 gives 17 up: 24 by 18 pixels.
    EXPECT_EQ(size({{"proportions", "3x4"}, {"orientation", "landscape"}}),
              std::vector<int32_t>({24, 18}));
    EXPECT_EQ(size({{"proportions", "square"}}), std::vector<int32_t>({21, 21}));
    // Custom 1 by 2: 12.65 gives 13, and 26.
    EXPECT_EQ(size({{"proportions", "custom"}, {"custom-width", "1"}, {"custom-height", "2"}}),
              std::vector<int32_t>({14, 27}));
    Image r;
    ASSERT_EQ(
        Apply("crop", gray,
              {{"x2", "20"}, {"y2", "20"}, {"proportions", "3x4"}, {"orientation", "landscape"}},
              r),
        0);
    EXPECT_EQ(r.rows[0][0], 120);                          // row 17 from the top
    EXPECT_EQ(r.rows[17][23], static_cast<uint8_t>(313));  // the top row
    // Refitted past the picture, the box is cut at its edge: the whole
    // picture's diagonal of 48.6 gives 34 by 34 from the top left.
    int32_t w = 0, h = 0;
    OutputSize("crop", gray, {{"proportions", "square"}}, w, h);
    EXPECT_EQ(w * 100 + h, 3530);
}

TEST(Crop, TheSameBytesOnAnyNumberOfThreadsAndPreviewsThatShowTheResult)
{
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        const Image source = Make(kind, 800, 601);
        const Image r = FullAndPreviews("crop", source,
                                        {{"x1", "3"}, {"y1", "5"}, {"x2", "707"}, {"y2", "590"}});
        ASSERT_EQ(r.width * 1000 + r.height, 705586);
        for (int32_t y = 0; y < 586; y += 29)
            for (int32_t x = 0; x < 705; x += 13)
                ASSERT_EQ(Pixel(r, x, y), Pixel(source, 3 + x, 10 + y));
    }
}

// ---- Add Border ----------------------------------------------------------------------

TEST(AddBorder, LengthsBecomeWholePixelsWithTheProgramsInch)
{
    EXPECT_EQ(LengthToPixels(2.5, kUnitsPixels, 300), 3);  // halves away from zero
    EXPECT_EQ(LengthToPixels(2.49, kUnitsPixels, 300), 2);
    EXPECT_EQ(LengthToPixels(0.005, kUnitsInches, 300), 2);      // 1.5
    EXPECT_EQ(LengthToPixels(1, kUnitsMillimetres, 300), 12);    // 11.811
    EXPECT_EQ(LengthToPixels(0.5, kUnitsCentimetres, 300), 59);  // 59.055
    // Half a pixel with an inch of 25.4 mm, a hair less with 25.40005.
    EXPECT_EQ(LengthToPixels(0.05, kUnitsMillimetres, 254), 0);
    EXPECT_EQ(LengthToPixels(0.005, kUnitsCentimetres, 254), 0);
    EXPECT_EQ(LengthToPixels(3, kUnitsInches, 0), 0);
    EXPECT_EQ(PixelsToLength(150, kUnitsInches, 300), 0.5);
    EXPECT_DOUBLE_EQ(PixelsToLength(300, kUnitsMillimetres, 300), 25.40005);
    EXPECT_EQ(PixelsToLength(300, kUnitsCentimetres, 0), 0.0);

    // Through the module: each margin in the unit, at the picture's 300 dpi.
    const Image gray = Make(kImageGray, 10, 10);
    const struct {
        const char *units, *value;
        int32_t pixels;
    } cases[] = {{"pixels", "6.5", 7}, {"mm", "2.5", 30}, {"cm", "0.001", 0}};
    for (const auto& c : cases) {
        Image r;
        ASSERT_EQ(
            Apply("add-border", gray, {{"units", c.units}, {"left", c.value}, {"top", c.value}}, r),
            0);
        EXPECT_EQ(r.width, 10 + c.pixels) << c.units;
        EXPECT_EQ(r.height, 10 + c.pixels) << c.units;
    }
    // Too large for memory: refused before anything is made.
    Image r;
    EXPECT_EQ(Apply("add-border", gray, {{"units", "in"}, {"left", "999999"}}, r), kErrOutOfMemory);
    EXPECT_EQ(r.kind, kImageEmpty);
}

TEST(AddBorder, GrayPictureInAGrayBorderByHand)
{
    Image gray;
    ASSERT_EQ(ImageAlloc(gray, kImageGray, 3, 2, 72.0), 0);
    std::memcpy(gray.rows[0], "\x0A\x14\x1E", 3);  // 10 20 30
    std::memcpy(gray.rows[1], "\x28\x32\x3C", 3);  // 40 50 60
    Image r;
    ASSERT_EQ(Apply("add-border", gray,
                    {{"left", "1"},
                     {"right", "2"},
                     {"top", "1"},
                     {"color", "128,128,128"}},
                    r),
              0);
    ASSERT_EQ(r.kind, kImageGray);
    ASSERT_EQ(r.width * 10 + r.height, 63);
    const std::vector<uint8_t> rows[3] = {
        {128, 10, 20, 30, 128, 128}, {128, 40, 50, 60, 128, 128}, {128, 128, 128, 128, 128, 128}};
    for (int32_t y = 0; y < 3; ++y)
        EXPECT_EQ(std::vector<uint8_t>(r.rows[y], r.rows[y] + 6), rows[y]) << y;
}

TEST(AddBorder, WhiteOrBlackKeepsBinaryAnotherGrayMakesGrayAnyColourColour)
{
    EXPECT_EQ(border_output_kind(kImageBinary, 1, 1, 1), kImageGray);
    EXPECT_EQ(border_output_kind(kImageBinary, 255, 255, 254), kImageColor);
    EXPECT_EQ(border_output_kind(kImageColor, 255, 255, 255), kImageColor);
    const Image binary = Make(kImageBinary, 13, 3);
    const Image gray = Make(kImageGray, 5, 4);
    const Image colour = Make(kImageColor, 4, 3);
    const struct {
        const Image& source;
        const char *r, *g, *b;
        int32_t kind;
        uint32_t border;  // as Pixel reads it: blue, green, red from the low byte
    } cases[] = {
        {binary, "255", "255", "255", kImageBinary, 1},
        {binary, "0", "0", "0", kImageBinary, 0},
        {binary, "100", "100", "100", kImageGray, 100},
        {binary, "255", "0", "0", kImageColor, 0xFF0000},
        {gray, "255", "255", "255", kImageGray, 255},
        {gray, "0", "128", "255", kImageColor, 0x0080FF},
        {colour, "0", "0", "0", kImageColor, 0},
    };
    for (const auto& c : cases) {
        Image r;
        ASSERT_EQ(Apply("add-border", c.source,
                        {{"left", "3"},
                         {"right", "1"},
                         {"top", "2"},
                         {"bottom", "1"},
                         {"red", c.r},
                         {"green", c.g},
                         {"blue", c.b}},
                        r),
                  0);
        const Image& s = c.source;
        ASSERT_EQ(r.kind, c.kind);
        ASSERT_EQ(r.width, s.width + 4);
        ASSERT_EQ(r.height, s.height + 3);
        for (int32_t y = 0; y < r.height; ++y) {
            for (int32_t x = 0; x < r.width; ++x) {
                const int32_t sx = x - 3, sy = y - 1;
                uint32_t want = c.border;
                if (sx >= 0 && sx < s.width && sy >= 0 && sy < s.height) {
                    // The source pixel raised: a bit to 0 or 255, a gray to three channels.
                    want = Pixel(s, sx, sy);
                    if (s.kind == kImageBinary && c.kind != kImageBinary) want = want ? 255 : 0;
                    if (s.kind != kImageColor && c.kind == kImageColor)
                        want = want | want << 8 | want << 16;
                }
                ASSERT_EQ(Pixel(r, x, y), want)
                    << c.r << " on kind " << s.kind << " at " << x << "," << y;
            }
        }
    }
    // No margin is a plain copy, whatever the colour.
    Image r;
    ASSERT_EQ(Apply("add-border", binary, {{"red", "10"}, {"left", "0.4"}}, r), 0);
    EXPECT_EQ(r.kind, kImageBinary);
    EXPECT_EQ(Bytes(r), Bytes(binary));
}

TEST(AddBorder, TheSameBytesOnAnyNumberOfThreadsAndPreviewsThatShowTheResult)
{
    const struct {
        int32_t kind;
        const char *r, *g, *b;
        int32_t resultKind;
    } cases[] = {{kImageBinary, "255", "255", "255", kImageBinary},
                 {kImageBinary, "0", "0", "0", kImageBinary},
                 {kImageBinary, "90", "90", "90", kImageGray},
                 {kImageBinary, "7", "200", "90", kImageColor},
                 {kImageColor, "7", "7", "90", kImageColor}};
    for (const auto& c : cases) {
        const Image r = FullAndPreviews("add-border", Make(c.kind, 701, 523),
                                        {{"left", "13"},
                                         {"right", "2"},
                                         {"top", "5"},
                                         {"bottom", "9"},
                                         {"red", c.r},
                                         {"green", c.g},
                                         {"blue", c.b}});
        EXPECT_EQ(r.kind, c.resultKind);
        EXPECT_EQ(r.width * 1000 + r.height, 716537);
    }
}

}  // namespace
}  // namespace lv
