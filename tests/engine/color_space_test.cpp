#include "tone/color_space.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "image/pixel.h"
#include "shell/errors.h"

namespace {

using namespace lv;
using Triple = std::array<int32_t, 3>;

// Any of the four conversions as a function of three values giving three.
template <void (*F)(int32_t, int32_t, int32_t, int32_t&, int32_t&, int32_t&)>
Triple To(int32_t a, int32_t b, int32_t c)
{
    Triple o;
    F(a, b, c, o[0], o[1], o[2]);
    return o;
}
constexpr auto Hsv = To<rgb_to_hsv12>;
constexpr auto Hsl = To<rgb_to_hsl12>;

TEST(ColorSpace, EightBitReaders)
{
    EXPECT_EQ(luminance(255, 0, 0), 76);
    EXPECT_EQ(hsv_saturation(100, 200, 50), 191);
    EXPECT_EQ(hsv_saturation(90, 90, 90), 0);
    EXPECT_EQ(hsl_lightness(255, 0, 0), 127);
    EXPECT_EQ(hsl_saturation(100, 200, 50), 153);   // sum 250: divided by the sum
    EXPECT_EQ(hsl_saturation(255, 200, 200), 255);  // sum 455: divided by 510 - sum
    EXPECT_EQ(hsv_value(300, -5, 0), 255);          // out of range is clamped
}

TEST(ColorSpace, TwelveBitGoldenValues)
{
    EXPECT_EQ(Hsv(255, 0, 0), (Triple{4096, 4096, 4096}));  // red sits on the seam
    EXPECT_EQ(Hsv(255, 1, 0)[0], 2);                        // just after it: 16 / 6
    EXPECT_EQ(Hsv(255, 0, 1)[0], 4093);                     // just before: (4080 + 20480) / 6
    EXPECT_EQ(Hsv(255, 255, 0)[0], 682);
    EXPECT_EQ(Hsv(0, 255, 0)[0], 1365);
    EXPECT_EQ(Hsv(0, 255, 255)[0], 2048);
    EXPECT_EQ(Hsv(0, 0, 255)[0], 2730);
    EXPECT_EQ(Hsv(255, 0, 255)[0], 3413);
    EXPECT_EQ(Hsv(255, 128, 0), (Triple{342, 4096, 4096}));
    EXPECT_EQ(Hsv(100, 200, 50), (Triple{1137, 3072, 3212}));
    EXPECT_EQ(Hsv(128, 128, 128), (Triple{0, 0, 2056}));
    EXPECT_EQ(Hsl(255, 0, 0), (Triple{4096, 4096, 2048}));
    EXPECT_EQ(Hsl(100, 200, 50), (Triple{1137, 2457, 2007}));
    EXPECT_EQ(Hsl(255, 200, 200), (Triple{4096, 4096, 3654}));  // lightness above half
    EXPECT_EQ(Hsl(128, 128, 128), (Triple{0, 0, 2056}));

    EXPECT_EQ(To<hsv12_to_rgb>(4096, 4096, 4096), (Triple{255, 0, 0}));
    EXPECT_EQ(To<hsv12_to_rgb>(1137, 3072, 3212), (Triple{100, 199, 49}));
    EXPECT_EQ(To<hsv12_to_rgb>(0, 0, 4095), (Triple{254, 254, 254}));  // only 4096 gives 255
    EXPECT_EQ(To<hsl12_to_rgb>(1137, 2457, 2007), (Triple{100, 199, 50}));
    EXPECT_EQ(To<hsl12_to_rgb>(4096, 4096, 2048), (Triple{255, 0, 0}));
    EXPECT_EQ(To<hsl12_to_rgb>(1000, 3000, 4096), (Triple{255, 255, 255}));

    for (int32_t c = 0; c < (1 << 24); c += 1021) {  // round trips lose at most one level
        const Triple p{c >> 16, (c >> 8) & 255, c & 255},
            v = Hsv(p[0], p[1], p[2]), l = Hsl(p[0], p[1], p[2]),
            a = To<hsv12_to_rgb>(v[0], v[1], v[2]), e = To<hsl12_to_rgb>(l[0], l[1], l[2]);
        for (int32_t i = 0; i < 3; ++i)
            ASSERT_TRUE(std::abs(a[i] - p[i]) <= 1 && std::abs(e[i] - p[i]) <= 1) << c;
    }
}

template <class F>
Triple Changed(Triple p, F f)
{
    f(p[0], p[1], p[2]);
    return p;
}

TEST(ColorSpace, OneChannelChanges)
{
    EXPECT_EQ(Changed({0, 0, 0}, [](auto&... c) { set_hsv_value(c..., 0, 90); }),
              (Triple{90, 90, 90}));
    EXPECT_EQ(Changed({200, 100, 50}, [](auto&... c) { set_hsv_value(c..., 200, 100); }),
              (Triple{100, 50, 25}));
    // The 12-bit round trip loses a level even at the same lightness.
    EXPECT_EQ(Changed({128, 128, 128}, [](auto&... c) { set_hsl_lightness(c..., 128); }),
              (Triple{127, 127, 127}));

    uint8_t table[256];
    for (int32_t i = 0; i < 256; ++i) table[i] = uint8_t(i);
    const auto hsv = [&](auto&... c) { map_hsv_saturation(c..., table); };
    const auto hsl = [&](auto&... c) { map_hsl_saturation(c..., table); };
    EXPECT_EQ(Changed({100, 200, 50}, hsv), (Triple{100, 200, 50}));
    table[0] = 51;  // a gray moves only the channels the order of tests ranks
    EXPECT_EQ(Changed({100, 100, 100}, hsv), (Triple{100, 80, 100}));
    EXPECT_EQ(Changed({100, 100, 100}, hsl), (Triple{120, 80, 100}));  // lightness kept
    std::fill_n(table, 256, uint8_t(0));
    EXPECT_EQ(Changed({100, 200, 50}, hsv), (Triple{200, 200, 200}));
    EXPECT_EQ(Changed({100, 200, 50}, hsl), (Triple{125, 125, 125}));
}

TEST(ColorSpace, ApplyCurveRow)
{
    uint8_t identity[256], invert[256], table[256];
    uint32_t seed = 12345;
    for (int32_t i = 0; i < 256; ++i) {
        identity[i] = uint8_t(i), invert[i] = uint8_t(255 - i);
        table[i] = uint8_t((seed = seed * 1103515245u + 12345u) >> 24);
    }
    std::vector<uint8_t> in;  // blue, green, red over a lattice, grays included
    for (int32_t r = 0; r < 256; r += 5)
        for (int32_t g = 0; g < 256; g += 5)
            for (int32_t b = 0; b < 256; b += 5)
                in.insert(in.end(), {uint8_t(b), uint8_t(g), uint8_t(r)});
    const int32_t n = int32_t(in.size() / 3);
    std::vector<uint8_t> out(in.size()), hsl(in.size());
    EXPECT_EQ(ApplyCurveRow(in.data(), out.data(), n, 2, kColorSpaceRgb, identity), kErrImageType);
    EXPECT_EQ(ApplyCurveRow(in.data(), out.data(), n, 3, 3, identity), kErrImageType);
    EXPECT_EQ(ApplyCurveRow(nullptr, out.data(), n, 3, kColorSpaceRgb, identity), kErrImageType);
    EXPECT_EQ(ApplyCurveRow(nullptr, nullptr, 0, 3, kColorSpaceRgb, identity), kOk);

    for (int32_t space : {kColorSpaceHsv, kColorSpaceRgb}) {
        ASSERT_EQ(ApplyCurveRow(in.data(), out.data(), n, 3, space, identity), kOk);
        EXPECT_EQ(out, in) << space;
    }
    for (int32_t channels : {1, 3}) {  // gray in any space, and colour in RGB: 255 - v
        const int32_t space = channels == 1 ? kColorSpaceHsl : kColorSpaceRgb;
        ASSERT_EQ(ApplyCurveRow(in.data(), out.data(), n * 3 / channels, channels, space, invert),
                  kOk);
        for (size_t i = 0; i < in.size(); ++i) ASSERT_EQ(out[i], 255 - in[i]);
    }
    // Long rows go two bytes a lookup through a table made for each new
    // curve: another curve, then the first again, over odd lengths.
    for (const uint8_t* curve : {table, invert, table}) {
        for (int32_t pixels : {2731, n - 1}) {
            std::fill(out.begin(), out.end(), 0);
            ASSERT_EQ(ApplyCurveRow(in.data(), out.data(), pixels, 3, kColorSpaceRgb, curve), kOk);
            for (size_t i = 0; i < size_t(pixels) * 3; ++i) ASSERT_EQ(out[i], curve[in[i]]) << i;
            ASSERT_EQ(out[size_t(pixels) * 3], 0);
        }
    }

    // Each pixel matches the one-pixel functions; HSL with the identity table
    // moves a channel by at most two levels; HSV keeps the hue up to the
    // truncation of the scaled channels.
    ASSERT_EQ(ApplyCurveRow(in.data(), hsl.data(), n, 3, kColorSpaceHsl, identity), kOk);
    ASSERT_EQ(ApplyCurveRow(in.data(), out.data(), n, 3, kColorSpaceHsv, table), kOk);
    for (size_t x = 0; x < in.size(); x += 3) {
        Triple p{in[x + 2], in[x + 1], in[x]}, q = p;
        set_hsl_lightness(p[0], p[1], p[2], hsl_lightness(p[0], p[1], p[2]));
        ASSERT_EQ(p, (Triple{hsl[x + 2], hsl[x + 1], hsl[x]})) << x;
        for (int32_t i = 0; i < 3; ++i) ASSERT_LE(std::abs(p[i] - q[i]), 2);
        p = q;
        set_hsv_value(p[0], p[1], p[2], hsv_value(p[0], p[1], p[2]),
                      table[hsv_value(p[0], p[1], p[2])]);
        ASSERT_EQ(p, (Triple{out[x + 2], out[x + 1], out[x]})) << x;
        const int32_t spread = hsv_value(p[0], p[1], p[2]) - std::min({p[0], p[1], p[2]});
        if (Hsv(q[0], q[1], q[2])[1] == 0 || spread == 0) continue;
        int32_t dh = std::abs(Hsv(p[0], p[1], p[2])[0] - Hsv(q[0], q[1], q[2])[0]);
        ASSERT_LE(std::min(dh, 4096 - dh) * spread, 2 * 4096 / 6) << x;  // two sectors' worth
        const int32_t M = hsv_value(q[0], q[1], q[2]);  // primaries, secondaries: exact
        const bool pure = std::all_of(q.begin(), q.end(), [M](int32_t c) { return !c || c == M; });
        ASSERT_TRUE(!pure || std::min(dh, 4096 - dh) == 0) << x;
    }

    // Rows of every length up to 70 (the vector steps and their tails) and
    // a row that starts at an odd byte, against the one-pixel rule.
    for (int32_t pixels = 1; pixels <= 70; ++pixels) {
        const size_t start = size_t(pixels % 5);
        std::vector<uint8_t> row(in.begin() + long(start * 997),
                                 in.begin() + long(start * 997) + pixels * 3 + 1);
        std::vector<uint8_t> changed(row.size() + 1, 7);
        ASSERT_EQ(ApplyCurveRow(row.data(), changed.data() + 1, pixels, 3, kColorSpaceHsv, table),
                  kOk);
        for (int32_t x = 0; x < pixels; ++x) {
            Triple p{row[x * 3 + 2], row[x * 3 + 1], row[x * 3]};
            const int32_t v = hsv_value(p[0], p[1], p[2]);
            set_hsv_value(p[0], p[1], p[2], v, table[v]);
            ASSERT_EQ(p, (Triple{changed[x * 3 + 3], changed[x * 3 + 2], changed[x * 3 + 1]}))
                << pixels;
        }
        ASSERT_EQ(changed[0], 7);
        ASSERT_EQ(changed[size_t(pixels) * 3 + 1], 7);  // nothing past the row
    }

    std::vector<uint8_t> inPlace = in;  // the output may be the input
    ASSERT_EQ(ApplyCurveRow(inPlace.data(), inPlace.data(), n, 3, kColorSpaceHsv, table), kOk);
    EXPECT_EQ(inPlace, out);
}

}  // namespace

namespace lv {
namespace {

// The HSV row path, one multiplier per value and no branch, gives what the
// one-pixel rule gives (each channel times new over old value, truncated;
// black to the new level) for every value, every channel below it and
// several curves, the row's tail included.
TEST(ColorSpace, HsvRowEqualsThePixelRuleEverywhere)
{
    uint8_t tables[3][256];
    for (int32_t i = 0; i < 256; ++i) {
        tables[0][i] = static_cast<uint8_t>(255 - i);                // inverting
        tables[1][i] = static_cast<uint8_t>(i < 128 ? i * 2 : 255);  // brightening
        tables[2][i] = static_cast<uint8_t>((i * 37 + 11) % 256);    // anything
    }
    std::vector<uint8_t> in(256 * 3), out(256 * 3);
    for (const auto& table : tables) {
        for (int32_t v = 0; v < 256; ++v) {
            // Red is the value; green runs below it, blue takes another step.
            for (int32_t c = 0; c < 256; ++c) {
                in[c * 3 + 0] = static_cast<uint8_t>(v ? (c * 7) % (v + 1) : 0);
                in[c * 3 + 1] = static_cast<uint8_t>(v ? c % (v + 1) : 0);
                in[c * 3 + 2] = static_cast<uint8_t>(v);
            }
            const int32_t pixels = 256 - v % 7;  // tails of every length
            ASSERT_EQ(ApplyCurveRow(in.data(), out.data(), pixels, 3, kColorSpaceHsv, table), 0);
            for (int32_t c = 0; c < pixels; ++c) {
                int32_t r = in[c * 3 + 2], g = in[c * 3 + 1], b = in[c * 3];
                set_hsv_value(r, g, b, v, table[v]);
                ASSERT_EQ(out[c * 3 + 2], r) << v << " " << c;
                ASSERT_EQ(out[c * 3 + 1], g) << v << " " << c;
                ASSERT_EQ(out[c * 3], b) << v << " " << c;
            }
        }
    }
}

}  // namespace
}  // namespace lv
