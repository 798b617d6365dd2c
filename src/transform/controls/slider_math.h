// The arithmetic behind the panel controls, kept apart from the widgets so
// that it can be checked without a screen: the slider's positions and tick
// marks, the integer field's rule for its text, and the packed text of a
// popup list.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lv {

// ---- Slider -------------------------------------------------------------------

inline constexpr int32_t kSliderMax = 1024;
// The slider's height: a marker at the top, the track, a marker at the bottom.
inline constexpr int32_t kSliderHeight = 18;
// With two markers, a press in a row above this takes the second (upper) one.
inline constexpr int32_t kSliderSplitRow = 9;
// The track runs from this pixel to the width less it.
inline constexpr int32_t kSliderInset = 4;

// The pixel of a value (clamped to 0..1024): ((width - 8) * v >> 10) + 4.
int32_t SliderPixel(int32_t width, int32_t value);
// The pointer's column kept on the track, 4 to width - 4.
int32_t SliderClampPixel(int32_t width, int32_t x);
// The value of a pixel: (p - 4) * 1024 / (width - 8) after clamping p to the
// track, within 0..1024. A slider of width 8 or less has no track: 0.
int32_t SliderValue(int32_t width, int32_t pixel);
// Which marker a press in `row` takes: 2 when a second marker is shown
// (value2 not -1) and the row is above the middle, otherwise 1.
int32_t SliderPickMarker(int32_t value2, int32_t row);

struct SliderTick {
    int32_t x = 0;       // column in the slider
    int32_t level = 0;   // 0 shortest; one more for each halving of the spacing
    int32_t length = 0;  // in pixels, 3 + level
};
// The tick marks of a slider of that width: over the track's width
// w = width - 8, 17 ticks below 128, 33 below 256, 65 below 512 and 129
// otherwise, the i-th at 4 + (w * i >> s) with 2^s intervals. The length
// level is the number of times 2 divides i, at most s - 2 (and the most for
// i = 0): with 17 ticks, multiples of 4 long, 2 modulo 4 medium, others
// short, and one more level with each doubling of the count. No track, no
// ticks.
std::vector<SliderTick> SliderTicks(int32_t width);

// ---- Integer field ------------------------------------------------------------

struct IntegerTextResult {
    int32_t value = 0;     // the field's value after the rule
    bool beep = false;     // the text was refused or clamped
    bool rewrite = false;  // the text must be replaced by `value`
    bool changed = false;  // `value` differs from the value before: tell the panel
};
// The rule applied at each change of an integer field's text: the first 10
// characters are parsed; text that isn't a number beeps and brings back
// `current`; a number outside minimum..maximum beeps and takes the limit.
IntegerTextResult IntegerTextRule(std::string_view text, int32_t current, int32_t minimum,
                                  int32_t maximum);

// ---- Popup list ---------------------------------------------------------------

// A popup list's packed text: NUL-ended strings, the label (maybe empty)
// first and then the entries, closed by a byte of value 1 where the next
// entry would start. An entry written with a leading "-" is disabled; the
// "-" is not shown.
struct PopupListText {
    std::string label;
    std::vector<std::string> entries;
    std::vector<bool> disabled;
};
// Reads packed text. Text that ends without the closing byte ends the list
// where it ends; an unended last string is taken as it stands.
PopupListText ParsePopupText(std::string_view packed);
// Builds packed text from a label and the entries ("-" first for disabled).
std::string PackPopupText(std::string_view label, const std::vector<std::string>& entries);
// The next enabled entry from `from` in steps of `step` (+1 or -1), or
// `from` when there is none. From -1 with +1 finds the first enabled entry,
// from the count with -1 the last.
int32_t PopupStep(const std::vector<bool>& disabled, int32_t from, int32_t step);

}  // namespace lv
