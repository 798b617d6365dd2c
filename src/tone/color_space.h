// Colour spaces of the tone and colour work: the 8-bit channel readers, the
// one-channel changes, the 12-bit fixed-point HSV and HSL conversions and the
// application of a 256-entry tone table to a row in a chosen space.
//
// Every function that takes three values takes them red, green, blue (a
// colour row holds blue, green, red). The arithmetic is exact and shared so
// that every tool that reads or changes a channel agrees to the last bit.
// On the 12-bit scale 4096 is 1.0; hue runs once around the circle over
// 0..4095 in six sectors (red, yellow, green, cyan, blue, magenta), and a red
// whose green and blue are equal sits on the seam at 4096.
//
// Inputs are expected in 0..255 (12-bit ones in 0..4096); the public
// functions clamp them into range first so that a wrong value can never read
// outside a table.
#pragma once

#include <cstdint>

#include "image/pixel.h"

namespace lv {

// The code that the "Color Space:" popups store.
enum ColorSpace : int32_t {
    kColorSpaceHsv = 0,  // value: the largest channel
    kColorSpaceHsl = 1,  // lightness: half the sum of the largest and smallest
    kColorSpaceRgb = 2,  // each channel by itself
};

// Which of red (0), green (1) and blue (2) is largest, middle and smallest.
// The tests run in one fixed order, and that order settles ties.
struct ChannelOrder {
    int32_t largest;
    int32_t middle;
    int32_t smallest;
};

inline ChannelOrder OrderChannels(int32_t r, int32_t g, int32_t b)
{
    if (r < g) {
        if (r < b) return b < g ? ChannelOrder{1, 2, 0} : ChannelOrder{2, 1, 0};
        return ChannelOrder{1, 0, 2};
    }
    if (r < b) return ChannelOrder{2, 0, 1};
    if (b < g) return ChannelOrder{0, 1, 2};
    return ChannelOrder{0, 2, 1};
}

// --- Channel readers, 8-bit ------------------------------------------------

inline int32_t hsv_value(int32_t r, int32_t g, int32_t b)
{
    int32_t m = r > g ? r : g;
    return Clamp8(m > b ? m : b);
}

// 255 * (largest - smallest) / largest; 0 for black.
inline int32_t hsv_saturation(int32_t r, int32_t g, int32_t b)
{
    r = Clamp8(r), g = Clamp8(g), b = Clamp8(b);
    int32_t hi = r > g ? r : g, lo = r < g ? r : g;
    if (b > hi) hi = b;
    if (b < lo) lo = b;
    return hi == 0 ? 0 : 255 * (hi - lo) / hi;
}

// (largest + smallest) / 2, truncating.
inline int32_t hsl_lightness(int32_t r, int32_t g, int32_t b)
{
    r = Clamp8(r), g = Clamp8(g), b = Clamp8(b);
    int32_t hi = r > g ? r : g, lo = r < g ? r : g;
    if (b > hi) hi = b;
    if (b < lo) lo = b;
    return (hi + lo) / 2;
}

inline int32_t hsl_saturation(int32_t r, int32_t g, int32_t b)
{
    r = Clamp8(r), g = Clamp8(g), b = Clamp8(b);
    int32_t hi = r > g ? r : g, lo = r < g ? r : g;
    if (b > hi) hi = b;
    if (b < lo) lo = b;
    int32_t s = hi + lo;
    if (s == 0 || s == 510) return 0;
    return 255 * (hi - lo) / (s < 256 ? s : 510 - s);
}

// --- One-channel changes, in place -----------------------------------------

// Scales the pixel along the line to black from old_value (its hsv_value) to
// new_value. Equal values leave it alone; either being 0 gives a gray of
// new_value.
void set_hsv_value(int32_t& r, int32_t& g, int32_t& b, int32_t old_value, int32_t new_value);

// Replaces the lightness by new_level through a 12-bit HSL round trip; hue
// and saturation pass through it too, so a channel can move by one level even
// when new_level is the old lightness.
void set_hsl_lightness(int32_t& r, int32_t& g, int32_t& b, int32_t new_level);

// Maps the saturation through a 256-byte table, keeping value and hue.
void map_hsv_saturation(int32_t& r, int32_t& g, int32_t& b, const uint8_t table[256]);

// Maps the saturation through a 256-byte table, keeping lightness.
void map_hsl_saturation(int32_t& r, int32_t& g, int32_t& b, const uint8_t table[256]);

// What a probe shows on a curve's input axis for its channel code: 1 HSV
// value, 2 HSL lightness, 3 HSV saturation, 4 HSL saturation, 6 HSV hue and
// 7 HSL hue (12 bits brought to 8: times 255, shifted right by 12), 8 red,
// 9 green, 10 blue. -1 for any other code (5, all three channels, is read
// as r, g, b by the caller).
int32_t ProbeChannelLevel(int32_t channel, int32_t r, int32_t g, int32_t b);

// --- Twelve-bit conversions ------------------------------------------------

void rgb_to_hsv12(int32_t r, int32_t g, int32_t b, int32_t& hue, int32_t& saturation,
                  int32_t& value);
void hsv12_to_rgb(int32_t hue, int32_t saturation, int32_t value, int32_t& r, int32_t& g,
                  int32_t& b);
void rgb_to_hsl12(int32_t r, int32_t g, int32_t b, int32_t& hue, int32_t& saturation,
                  int32_t& lightness);
void hsl12_to_rgb(int32_t hue, int32_t saturation, int32_t lightness, int32_t& r, int32_t& g,
                  int32_t& b);

// --- Tone table on a row ---------------------------------------------------

// Passes `pixels` pixels of `in` through `table` into `out` (which may be
// `in`). One channel: a plain lookup whatever the space. Three channels
// (blue, green, red): by value in HSV, by lightness in HSL, each channel by
// itself in RGB. Returns 0, or kErrImageType for a channel count other than
// 1 or 3, an unknown space or a missing buffer; no pixels is no work.
int32_t ApplyCurveRow(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
                      int32_t colorSpace, const uint8_t table[256]);

}  // namespace lv
