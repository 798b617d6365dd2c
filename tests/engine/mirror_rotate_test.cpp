// Mirror/Rotate: the eight orientations pixel for pixel on binary, gray and
// colour pictures of awkward sizes, the tiles, the box and Cancel, the
// threads, and the module.
#include "geometry/mirror_rotate.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "support/pictures.h"
#include "support/scripted_frontend.h"
#include "transform/registry.h"

namespace lv {
namespace {

// A picture whose neighbouring pixels differ, with junk in its padding.
Image Make(int32_t kind, int32_t width, int32_t height)
{
    Image image;
    EXPECT_EQ(ImageAlloc(image, kind, width, height, 240.0), 0);
    for (int32_t y = 0; y < height; ++y) {
        std::memset(image.rows[y], 0xA5, static_cast<size_t>(image.stride));
        for (int32_t x = 0; x < width; ++x) {
            uint8_t* p = image.rows[y] + (kind == kImageColor ? 3 * x : x);
            if (kind == kImageBinary) {
                PutBit(image.rows[y], x, (x * 7 + y * 3 + x * y) % 5 < 2);
            } else if (kind == kImageGray) {
                p[0] = static_cast<uint8_t>(x * 13 + y * 101);
            } else {
                p[0] = static_cast<uint8_t>(x);
                p[1] = static_cast<uint8_t>(y);
                p[2] = static_cast<uint8_t>(x * 3 + y * 5);
            }
        }
    }
    return image;
}

using test::Bytes;
using test::Pixel;

// Every source pixel at the place the table gives, and the result's shape.
void ExpectOriented(const Image& s, const Image& out, int32_t o)
{
    const int32_t w = s.width, h = s.height;
    const bool exchanged = o % 2 == 1;
    ASSERT_EQ(out.kind, s.kind);
    ASSERT_EQ(out.width, exchanged ? h : w);
    ASSERT_EQ(out.height, exchanged ? w : h);
    EXPECT_EQ(out.resolution, s.resolution);
    for (int32_t y = 0; y < h; ++y) {
        for (int32_t x = 0; x < w; ++x) {
            const int32_t at[8][2] = {{x, y},         {y, w - 1 - x}, {w - 1 - x, h - 1 - y},
                                      {h - 1 - y, x}, {w - 1 - x, y}, {h - 1 - y, w - 1 - x},
                                      {x, h - 1 - y}, {y, x}};
            ASSERT_EQ(Pixel(out, at[o - 200][0], at[o - 200][1]), Pixel(s, x, y))
                << o << " kind " << s.kind << " " << w << "x" << h << " at " << x << "," << y;
        }
    }
}

TEST(MirrorRotate, EightOrientationsOfASmallGrayPictureByHand)
{
    // Bottom row 1 2 3, top row 4 5 6; each result's rows bottom first.
    Image source;
    ASSERT_EQ(ImageAlloc(source, kImageGray, 3, 2, 72.0), 0);
    std::memcpy(source.rows[0], "\1\2\3", 3);
    std::memcpy(source.rows[1], "\4\5\6", 3);
    const std::vector<std::vector<uint8_t>> expected[8] = {
        {{1, 2, 3}, {4, 5, 6}},
        {{3, 6}, {2, 5}, {1, 4}},  // clockwise: on screen 1 4 / 2 5 / 3 6
        {{6, 5, 4}, {3, 2, 1}},
        {{4, 1}, {5, 2}, {6, 3}},  // counter-clockwise: on screen 6 3 / 5 2 / 4 1
        {{3, 2, 1}, {6, 5, 4}},
        {{6, 3}, {5, 2}, {4, 1}},  // the top left 4 stays
        {{4, 5, 6}, {1, 2, 3}},
        {{1, 4}, {2, 5}, {3, 6}},  // the bottom left 1 stays
    };
    for (int32_t o = 200; o <= 207; ++o) {
        Image out;
        ASSERT_EQ(mirror_rotate(source, out, o, false), 0);
        const auto& rows = expected[o - 200];
        ASSERT_EQ(out.height, static_cast<int32_t>(rows.size())) << o;
        for (int32_t y = 0; y < out.height; ++y)
            EXPECT_EQ(std::vector<uint8_t>(out.rows[y], out.rows[y] + out.width), rows[y]) << o;
    }
}

TEST(MirrorRotate, EveryPixelOfEveryKindAndAwkwardSizeLandsWhereTheTableSays)
{
    // One pixel wide or high, odd, and past 64 without being a multiple of
    // it, so that the last tiles are cut short.
    const int32_t sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {7, 5}, {64, 64}, {65, 3}, {130, 67}};
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        for (const auto& size : sizes) {
            const Image source = Make(kind, size[0], size[1]);
            for (int32_t o = 200; o <= 207; ++o) {
                Image out;
                ASSERT_EQ(mirror_rotate(source, out, o, false), 0);
                ExpectOriented(source, out, o);
            }
        }
        // 201 then 203, and 207 twice, give the input again.
        const Image source = Make(kind, 70, 131);
        Image a, b, c;
        ASSERT_EQ(mirror_rotate(source, a, 201, false), 0);
        ASSERT_EQ(mirror_rotate(a, b, 203, false), 0);
        ExpectOriented(source, b, 200);
        ASSERT_EQ(mirror_rotate(source, a, 207, false), 0);
        ASSERT_EQ(mirror_rotate(a, c, 207, false), 0);
        ExpectOriented(source, c, 200);
    }
}

TEST(MirrorRotate, TheSameBytesOnAnyNumberOfThreadsWithThePaddingCleared)
{
    for (int32_t kind : {kImageBinary, kImageGray, kImageColor}) {
        const Image source = Make(kind, 701, 523);
        for (int32_t o = 201; o <= 207; ++o) {
            Image one, four;
            SetThreadCount(1);
            ASSERT_EQ(mirror_rotate(source, one, o, true), 0);
            SetThreadCount(4);
            ASSERT_EQ(mirror_rotate(source, four, o, true), 0);
            SetThreadCount(0);
            EXPECT_EQ(Bytes(one), Bytes(four)) << o << " kind " << kind;
            ExpectOriented(source, four, o);
            const int32_t bits = one.width * (kind == kImageColor  ? 24
                                              : kind == kImageGray ? 8
                                                                   : 1);
            for (int32_t y = 0; y < one.height; y += 37)
                for (int32_t bit = bits; bit < one.stride * 8; ++bit)
                    ASSERT_EQ(GetBit(one.rows[y], bit), 0) << o << " kind " << kind;
        }
    }
}

TEST(MirrorRotate, TheModuleRunsFromItsNamesAndCodes)
{
    const TransformModule& module = *FindTransform("mirror-rotate");
    EXPECT_EQ(CheckModule(module), "");
    EXPECT_STREQ(module.title, "Mirror/Rotate");
    EXPECT_FALSE(module.hasAmount);
    const Image source = Make(kImageColor, 9, 4);
    const char* names[] = {"copy",            "cw",        "180",           "ccw",
                           "flip-horizontal", "transpose", "flip-vertical", "transverse"};
    const ParamDecl& orientation = *FindParam(module, "orientation");
    for (int32_t i = 0; i < 8; ++i) {
        auto params = CreateParams(module);
        std::string problem;
        ASSERT_EQ(ParamSetText(orientation, *params, std::to_string(200 + i), problem), 0);
        const int32_t byCode = ParamInt(orientation, *params);
        ASSERT_EQ(ParamSetText(orientation, *params, names[i], problem), 0);
        EXPECT_EQ(byCode, ParamInt(orientation, *params)) << names[i];
        EXPECT_EQ(byCode, i);
        int32_t w = 0, h = 0;
        TransformOutputSize(module, &source, *params, w, h);
        EXPECT_EQ(w * 10 + h, i % 2 ? 49 : 94) << names[i];
        test::ScriptedFrontEnd fe;
        ScopedFrontEnd installed(fe);
        Image result;
        ASSERT_EQ(RunTransformToImage(module, *params, &source, result), 0);
        ExpectOriented(source, result, 200 + i);
        if (i == 0) {
            EXPECT_EQ(fe.titles, std::vector<std::string>{"Copy"});  // the short way
        }
    }
    std::string problem;
    auto params = CreateParams(module);
    EXPECT_EQ(ParamSetText(orientation, *params, "208", problem), kParamRefused);
    EXPECT_EQ(ParamSetText(orientation, *params, "199", problem), kParamRefused);
    EXPECT_EQ(problem, "'199' is not a choice; allowed: one of copy (200), cw (201), 180 (202), "
                       "ccw (203), flip-horizontal (204), transpose (205), flip-vertical (206), "
                       "transverse (207), by name or code");
    Image solid, result;
    ASSERT_EQ(ImageAlloc(solid, kImageSolid, 1, 1, 0.0), 0);
    EXPECT_EQ(RunTransformToImage(module, *CreateParams(module), &solid, result), kErrImageType);
}

}  // namespace
}  // namespace lv
