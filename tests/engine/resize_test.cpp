#include "geometry/resize.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "image/image.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "support/scripted_frontend.h"
#include "transform/registry.h"

namespace lv {
namespace {

using Bytes = std::vector<uint8_t>;

// Pictures are given row by row from the bottom (row 0) up; colour as blue,
// green, red.
Image Make(int32_t kind, int32_t w, int32_t h, const Bytes& values)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, w, h, 72.0), 0);
    const int32_t row = ResizeRowBytes(kind == kImageBinary ? kImageGray : kind, w);
    for (int32_t y = 0; y < h; ++y) {
        std::memset(image.rows[y], 0, static_cast<size_t>(image.stride));
        if (kind == kImageBinary) {
            for (int32_t x = 0; x < w; ++x) PutBit(image.rows[y], x, values[y * w + x]);
        } else {
            std::memcpy(image.rows[y], &values[static_cast<size_t>(y) * row], row);
        }
    }
    return image;
}

// Every level of a picture of any kind, bits as 0 and 1, bottom row first.
Bytes Levels(const Image& image)
{
    Bytes out;
    for (int32_t y = 0; y < image.height; ++y) {
        if (image.kind == kImageBinary) {
            for (int32_t x = 0; x < image.width; ++x) out.push_back(GetBit(image.rows[y], x));
        } else {
            const int32_t n = ResizeRowBytes(image.kind, image.width);
            out.insert(out.end(), image.rows[y], image.rows[y] + n);
        }
    }
    return out;
}

// A picture with no structure a filter could hide a fault behind.
Image Noise(int32_t kind, int32_t w, int32_t h, uint32_t seed)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, w, h, 72.0), 0);
    for (int32_t y = 0; y < h; ++y)
        for (int32_t i = 0; i < image.stride; ++i) {
            seed = seed * 1103515245u + 12345u;
            image.rows[y][i] = static_cast<uint8_t>(seed >> 16);
        }
    return image;
}

// Presses Cancel at the first step at or past `from`, which on several
// threads may come in a jump.
struct CancelFrom : test::ScriptedFrontEnd {
    int32_t from = 0;
    bool ProgressPump(const ProgressBox& box) override
    {
        ScriptedFrontEnd::ProgressPump(box);
        return box.current >= from;
    }
};

Bytes Resized(const Image& source, int32_t w, int32_t h, int32_t method = kResizeSmooth,
              int32_t kind = -1)
{
    Image out;
    EXPECT_EQ(resize_image(source, out, w, h, 150.0, method), 0);
    if (kind >= 0) {
        EXPECT_EQ(out.kind, kind);
    }
    return Levels(out);
}

TEST(ResizeTent, WeightsAreTheNonZeroTapsNormalisedTo255)
{
    // 5 to 3: s = 2, scale 5/3, so a neighbour one away weighs 0.4.
    EXPECT_EQ(ResizeTentWindow(5, 3), 5);
    EXPECT_EQ(ResizeTentWindow(3, 5), 0);
    uint8_t w[5];
    int32_t first = -1;
    ASSERT_EQ(ResizeTentTaps(5, 3, 0, w, first), 2);  // column -1 lies outside
    EXPECT_EQ(first, 0);
    EXPECT_EQ(Bytes(w, w + 2), (Bytes{182, 73}));
    ASSERT_EQ(ResizeTentTaps(5, 3, 1, w, first), 3);  // 57 + 142 + 57: the largest gives 1
    EXPECT_EQ(first, 1);
    EXPECT_EQ(Bytes(w, w + 3), (Bytes{57, 141, 57}));
    ASSERT_EQ(ResizeTentTaps(5, 3, 2, w, first), 2);
    EXPECT_EQ(first, 3);
    EXPECT_EQ(Bytes(w, w + 2), (Bytes{73, 182}));
    // One output sample sits on index 0; the tent still reaches its neighbour.
    ASSERT_EQ(ResizeTentTaps(5, 1, 0, w, first), 2);
    EXPECT_EQ(Bytes(w, w + 2), (Bytes{142, 113}));

    // 269 to 3: the rounded weights add up to 259, more than the largest
    // (the first 3, tap 53) can give back; it stops at 0.
    std::vector<uint8_t> many(static_cast<size_t>(ResizeTentWindow(269, 3)));
    ASSERT_EQ(ResizeTentTaps(269, 3, 1, many.data(), first), 137);
    EXPECT_EQ(first, 66);
    EXPECT_EQ(many[52], 2);
    EXPECT_EQ(many[53], 0);
    EXPECT_EQ(many[54], 3);
    int32_t total = 0;
    for (int32_t t = 0; t < 137; ++t) total += many[t];
    EXPECT_EQ(total, 256);
    // ... and the sums are clamped, so white stays white.
    EXPECT_EQ(Resized(Make(kImageGray, 269, 1, Bytes(269, 255)), 3, 1), (Bytes{255, 255, 255}));
}

TEST(ResizeSmooth, ReductionGoldenValuesWithCrispeningAcrossOnly)
{
    // One row: the centre tap 141, then crispened by half its difference
    // from the mean of its neighbours: 141 + 70.
    EXPECT_EQ(Resized(Make(kImageGray, 5, 1, {0, 0, 255, 0, 0}), 3, 1), (Bytes{0, 211, 0}));
    // 5 x 5 with a white centre: 141 down, then 78 across, crispened to
    // 117; the rows above and below get nothing, since rows are not crispened.
    Bytes dot(25, 0);
    dot[12] = 255;
    const Bytes expected{0, 0, 0, 0, 117, 0, 0, 0, 0};
    EXPECT_EQ(Resized(Make(kImageGray, 5, 5, dot), 3, 3, kResizeSmooth, kImageGray), expected);
    // A binary source gives gray, a set bit adding its weight.
    Bytes bits(25, 0);
    bits[12] = 1;
    EXPECT_EQ(Resized(Make(kImageBinary, 5, 5, bits), 3, 3, kResizeSmooth, kImageGray), expected);
    // Colour, channel by channel: red 100 gives 55, 30, then 45.
    Bytes color(75, 0);
    color[36] = 255, color[38] = 100;
    Bytes center(27, 0);
    center[12] = 117, center[14] = 45;
    EXPECT_EQ(Resized(Make(kImageColor, 5, 5, color), 3, 3, kResizeSmooth, kImageColor), center);
    // A width of 1: 142 of the first pixel and 113 of the second.
    EXPECT_EQ(Resized(Make(kImageGray, 5, 1, {0, 50, 100, 150, 200}), 1, 1), (Bytes{22}));
    EXPECT_EQ(Resized(Make(kImageGray, 1, 5, {0, 50, 100, 150, 200}), 1, 1), (Bytes{22}));
}

TEST(ResizeSmooth, EnlargementGoldenValuesAndTheInPlaceCrispening)
{
    // Weights 0, 128, 0, 128 and the last pixel: 0 100 200 100 0, then
    // crispened left to right, the left neighbour already changed: 200 rises
    // to 250, so the mean under the next is 125 and it falls to 88.
    EXPECT_EQ(Resized(Make(kImageGray, 3, 1, {0, 200, 0}), 5, 1), (Bytes{0, 100, 250, 88, 0}));
    // Upwards the same blend, without crispening.
    EXPECT_EQ(Resized(Make(kImageGray, 1, 3, {0, 200, 0}), 1, 5), (Bytes{0, 100, 200, 100, 0}));
    // Both ways: rows 1 and 3 are the blend 0 100 0 enlarged across.
    EXPECT_EQ(Resized(Make(kImageGray, 3, 3, {0, 0, 0, 0, 200, 0, 0, 0, 0}), 5, 5),
              (Bytes{0, 0,   0,   0,  0,  //
                     0, 50,  125, 44, 0,  //
                     0, 100, 250, 88, 0,  //
                     0, 50,  125, 44, 0,  //
                     0, 0,   0,   0,  0}));
    // The half difference truncates towards zero: 46 - 47 moves nothing.
    EXPECT_EQ(Resized(Make(kImageGray, 2, 1, {100, 20}), 4, 1), (Bytes{100, 74, 46, 20}));
    // Crispening clamps at both ends.
    EXPECT_EQ(Resized(Make(kImageGray, 3, 1, {0, 255, 0}), 5, 1), (Bytes{0, 128, 255, 127, 0}));
    EXPECT_EQ(Resized(Make(kImageGray, 3, 1, {255, 0, 255}), 5, 1), (Bytes{255, 127, 0, 128, 255}));
    // One pixel enlarged is that pixel everywhere; binary rows read as 0 and 255.
    EXPECT_EQ(Resized(Make(kImageColor, 1, 1, {1, 2, 3}), 3, 2),
              (Bytes{1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}));
    EXPECT_EQ(Resized(Make(kImageBinary, 1, 3, {0, 1, 0}), 1, 5, kResizeSmooth, kImageGray),
              (Bytes{0, 128, 255, 127, 0}));
}

TEST(ResizeNearest, IndexTablesAndKindsKept)
{
    // Columns i (3 - 1) / (5 - 1): 0 0 1 1 2; rows 0 0 1.
    EXPECT_EQ(Resized(Make(kImageGray, 3, 2, {10, 20, 30, 40, 50, 60}), 5, 3, kResizeNearest),
              (Bytes{10, 10, 20, 20, 30, 10, 10, 20, 20, 30, 40, 40, 50, 50, 60}));
    EXPECT_EQ(Resized(Make(kImageGray, 5, 1, {1, 2, 3, 4, 5}), 3, 1, kResizeNearest),
              (Bytes{1, 3, 5}));
    EXPECT_EQ(Resized(Make(kImageGray, 5, 1, {9, 2, 3, 4, 5}), 1, 1, kResizeNearest), (Bytes{9}));
    EXPECT_EQ(Resized(Make(kImageBinary, 3, 1, {1, 0, 1}), 5, 1, kResizeNearest, kImageBinary),
              (Bytes{1, 1, 0, 0, 1}));
    EXPECT_EQ(Resized(Make(kImageColor, 2, 1, {1, 2, 3, 4, 5, 6}), 3, 1, kResizeNearest),
              (Bytes{1, 2, 3, 1, 2, 3, 4, 5, 6}));

    // Layout's copy: the same tables, the source's kind, 100 dpi, no box.
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    const Image source = Noise(kImageBinary, 203, 101, 7);
    Image copy;
    ASSERT_EQ(resize_nearest_copy(source, copy, 97, 150), 0);
    EXPECT_EQ(fe.opens + fe.waitCursors, 0);
    EXPECT_EQ(copy.kind, kImageBinary);
    EXPECT_EQ(copy.resolution, 100.0);
    EXPECT_EQ(Levels(copy), Resized(source, 97, 150, kResizeNearest));
}

TEST(ResizeImage, SameSizeRefusalsBoxAndCancel)
{
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    const Image bits = Noise(kImageBinary, 13, 5, 3);
    Image out;
    ASSERT_EQ(resize_image(bits, out, 13, 5, 300.0, kResizeSmooth), 0);
    EXPECT_EQ(out.kind, kImageBinary);  // duplicated as it stands
    EXPECT_EQ(out.resolution, 300.0);
    EXPECT_EQ(Levels(out), Levels(bits));

    Image solid;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(resize_image(solid, out, 2, 2, 72.0, kResizeSmooth), kErrImageType);
    EXPECT_EQ(resize_image(bits, out, 0, 5, 72.0, kResizeSmooth), 81);
    EXPECT_EQ(resize_open(bits, 4, -1, kResizeSmooth), 81);
    EXPECT_EQ(resize_nearest_copy(solid, out, 2, 2), kErrImageType);
    EXPECT_EQ(fe.opens + fe.waitCursors, 0);

    // 9999 output pixels: the wait cursor; 10000: the box "Resize".
    const Image gray = Noise(kImageGray, 50, 50, 5);
    ASSERT_EQ(resize_image(gray, out, 99, 101, 72.0, kResizeSmooth), 0);
    EXPECT_EQ(fe.opens, 0);
    EXPECT_EQ(fe.waitCursors, 1);
    EXPECT_EQ(fe.arrowCursors, 1);
    ASSERT_EQ(resize_image(gray, out, 100, 100, 72.0, kResizeNearest), 0);
    EXPECT_EQ(fe.titles, (std::vector<std::string>{"Resize"}));
    EXPECT_EQ(fe.closes, 1);
    EXPECT_EQ(fe.steps.back(), 99);

    // Cancel stops at a row and closes the box, on one thread and on two.
    for (int32_t threads : {1, 2}) {
        SetThreadCount(threads);
        CancelFrom cancel;
        cancel.from = 5;
        ScopedFrontEnd scope(cancel);
        const Image big = Noise(kImageColor, 700, 500, 9);
        EXPECT_EQ(resize_image(big, out, 600, 450, 72.0, kResizeSmooth), kErrAborted) << threads;
        EXPECT_EQ(cancel.closes, 1);
    }
    SetThreadCount(0);
}

TEST(ResizeImage, RowsOneAtATimeMatchTheWholeRun)
{
    struct Case {
        int32_t kind, w, h, method;
    };
    for (const Case c :
         {Case{kImageColor, 20, 41, kResizeSmooth}, Case{kImageColor, 50, 10, kResizeSmooth},
          Case{kImageGray, 37, 11, kResizeSmooth}, Case{kImageGray, 13, 23, kResizeSmooth},
          Case{kImageBinary, 37, 30, kResizeSmooth}, Case{kImageBinary, 20, 23, kResizeSmooth},
          Case{kImageBinary, 20, 30, kResizeNearest}, Case{kImageColor, 1, 1, kResizeSmooth}}) {
        const Image source = Noise(c.kind, 37, 23, 11);
        Image whole;
        ASSERT_EQ(resize_image(source, whole, c.w, c.h, 72.0, c.method), 0);
        ASSERT_EQ(resize_open(source, c.w, c.h, c.method), 0);
        EXPECT_EQ(resize_work_kind(), whole.kind);
        const int32_t n = ResizeRowBytes(whole.kind, c.w);
        Bytes row(static_cast<size_t>(n));
        for (int32_t y = 0; y < c.h; ++y) {
            resize_row(y, row.data());
            EXPECT_EQ(row, Bytes(whole.rows[y], whole.rows[y] + n))
                << c.kind << " " << c.w << " " << y;
        }
        resize_close();
        EXPECT_EQ(resize_work_kind(), 0);
        row.assign(row.size(), 77);
        resize_row(0, row.data());  // closed: nothing is written
        EXPECT_EQ(row, Bytes(row.size(), 77));
    }
}

TEST(ResizeImage, SameBytesWhateverTheThreadCount)
{
    struct Case {
        int32_t kind, sw, sh, w, h, method;
    };
    for (const Case c : {Case{kImageColor, 700, 500, 523, 391, kResizeSmooth},
                         Case{kImageGray, 300, 200, 900, 700, kResizeSmooth},
                         Case{kImageBinary, 1000, 600, 800, 400, kResizeSmooth},
                         Case{kImageBinary, 1000, 600, 800, 400, kResizeNearest},
                         Case{kImageColor, 600, 500, 300, 500, kResizeSmooth}}) {
        const Image source = Noise(c.kind, c.sw, c.sh, 21);
        SetThreadCount(1);
        const Bytes one = Resized(source, c.w, c.h, c.method);
        SetThreadCount(2);
        EXPECT_EQ(Resized(source, c.w, c.h, c.method), one) << c.kind << " " << c.w;
    }
    SetThreadCount(0);
}

// ---- The module ----------------------------------------------------------------------------

const TransformModule& Module()
{
    const TransformModule* module = FindTransform("resize");
    EXPECT_NE(module, nullptr);
    return *module;
}

std::unique_ptr<TransformParams> Params(const std::vector<std::pair<std::string, std::string>>& set)
{
    auto params = CreateParams(Module());
    std::string problem;
    for (const auto& [name, value] : set)
        EXPECT_EQ(ParamSetText(*FindParam(Module(), name), *params, value, problem), 0) << problem;
    return params;
}

TEST(ResizeModule, SizeFromTheParametersAndTheFullResult)
{
    EXPECT_EQ(CheckModule(Module()), "");
    EXPECT_FALSE(Module().hasAmount);
    const Image source = Noise(kImageColor, 640, 427, 4);
    int32_t w = 0, h = 0;
    TransformOutputSize(Module(), &source, *Params({{"width", "300"}}), w, h);
    EXPECT_EQ(w * 10000 + h, 300 * 10000 + 200);  // 300 x 427 / 640, truncated
    TransformOutputSize(Module(), &source, *Params({{"height", "900"}}), w, h);
    EXPECT_EQ(w * 10000 + h, 1348 * 10000 + 900);
    TransformOutputSize(Module(), &source, *Params({{"width", "10"}, {"height", "20"}}), w, h);
    EXPECT_EQ(w * 10000 + h, 10 * 10000 + 20);
    TransformOutputSize(Module(), &source, *Params({}), w, h);
    EXPECT_EQ(w * 10000 + h, 640 * 10000 + 427);

    const Bytes nearestBytes = Resized(source, 300, 200, kResizeNearest);
    const Bytes smoothBytes = Resized(source, 300, 200);
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    Image result;
    auto nearest = Params({{"width", "300"},
                           {"height", "200"},
                           {"method", "nearest"},
                           {"resolution", "300"}});
    ASSERT_EQ(RunTransformToImage(Module(), *nearest, &source, result), 0);
    EXPECT_EQ(result.resolution, 300.0);
    EXPECT_EQ(Levels(result), nearestBytes);
    auto smooth = Params({{"width", "300"}});
    ASSERT_EQ(RunTransformToImage(Module(), *smooth, &source, result), 0);
    EXPECT_EQ(result.resolution, 72.0);
    EXPECT_EQ(Levels(result), smoothBytes);
    // Nothing to change: the boxed copy, with the resolution asked for.
    ASSERT_EQ(RunTransformToImage(Module(), *Params({{"resolution", "96"}}), &source, result), 0);
    EXPECT_EQ(Levels(result), Levels(source));
    EXPECT_EQ(result.resolution, 96.0);
    EXPECT_EQ(fe.titles, (std::vector<std::string>{"Resize", "Resize", "Copy"}));

    Image solid;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(RunTransformToImage(Module(), *smooth, &solid, result), kErrImageType);
}

TEST(ResizeModule, PreviewPicksTheResultsPixelsAtItsZoom)
{
    const Image source = Noise(kImageGray, 30, 21, 8);
    const Image bits = Noise(kImageBinary, 30, 21, 8);
    auto params = Params({{"width", "20"}, {"height", "14"}});
    auto nearest = Params({{"width", "20"}, {"height", "14"}, {"method", "nearest"}});
    Image full, fullBits;
    ASSERT_EQ(resize_image(source, full, 20, 14, 72.0, kResizeSmooth), 0);
    ASSERT_EQ(resize_image(bits, fullBits, 20, 14, 72.0, kResizeNearest), 0);

    auto run = [&](const Image& input, TransformParams& p, Image& display, int32_t zoom,
                   int32_t shownW, int32_t shownH, int32_t left, int32_t right) {
        TransformArgs args;
        args.source = &input;
        args.destination = &display;
        args.params = &p;
        args.outWidth = shownW;
        args.outHeight = shownH;
        args.zoom = zoom;
        args.rectLeft = left;
        args.rectRight = right;
        args.rectBottom = shownH - 1;
        args.width = zoom > 1 ? (right - left + zoom) / zoom : right - left + 1;
        args.height = zoom > 1 ? shownH / zoom : shownH;
        args.sourceX = zoom > 1 ? left / zoom : left * -zoom;
        return Module().worker(args);
    };
    // Zoom -2: every other pixel of every other row, the last repeated.
    Image display;
    ASSERT_EQ(run(source, *params, display, -2, 10, 7, 0, 9), 0);
    ASSERT_EQ(display.kind, kImageGray);
    for (int32_t j = 0; j < 7; ++j)
        for (int32_t i = 0; i < 10; ++i)
            ASSERT_EQ(display.rows[j][i], full.rows[2 * j][2 * i]) << i << " " << j;
    // A strip of it, as after a scroll, over a display spoilt first.
    for (int32_t j = 0; j < 7; ++j) std::memset(display.rows[j], 0, 10);
    ASSERT_EQ(run(source, *params, display, -2, 10, 7, 6, 9), 0);
    for (int32_t j = 0; j < 7; ++j) {
        EXPECT_EQ(display.rows[j][5], 0);
        EXPECT_EQ(display.rows[j][6], full.rows[2 * j][12]);
        EXPECT_EQ(display.rows[j][9], full.rows[2 * j][18]);
    }
    // Zoom 2: each pixel over two columns and two rows; bits as 0 and 255.
    ASSERT_EQ(run(bits, *nearest, display, 2, 40, 28, 0, 39), 0);
    ASSERT_EQ(display.kind, kImageGray);
    for (int32_t j = 0; j < 28; ++j)
        for (int32_t i = 0; i < 40; ++i)
            ASSERT_EQ(display.rows[j][i], GetBit(fullBits.rows[j / 2], i / 2) ? 255 : 0);
}

}  // namespace
}  // namespace lv
