#include "transform/controls/slider_math.h"

#include <algorithm>

#include "shell/text.h"

namespace lv {

// ---- Slider -------------------------------------------------------------------

int32_t SliderPixel(int32_t width, int32_t value)
{
    const int64_t track = std::max<int64_t>(int64_t{width} - 2 * kSliderInset, 0);
    const int64_t v = std::clamp<int64_t>(value, 0, kSliderMax);
    return static_cast<int32_t>((track * v >> 10) + kSliderInset);
}

int32_t SliderClampPixel(int32_t width, int32_t x)
{
    const int32_t last = std::max(width - kSliderInset, kSliderInset);
    return std::clamp(x, kSliderInset, last);
}

int32_t SliderValue(int32_t width, int32_t pixel)
{
    const int64_t track = int64_t{width} - 2 * kSliderInset;
    if (track <= 0) return 0;
    const int64_t p = SliderClampPixel(width, pixel);
    const int64_t value = (p - kSliderInset) * kSliderMax / track;
    return static_cast<int32_t>(std::clamp<int64_t>(value, 0, kSliderMax));
}

int32_t SliderPickMarker(int32_t value2, int32_t row)
{
    return value2 != -1 && row < kSliderSplitRow ? 2 : 1;
}

std::vector<SliderTick> SliderTicks(int32_t width)
{
    std::vector<SliderTick> ticks;
    const int64_t w = int64_t{width} - 2 * kSliderInset;
    if (w <= 0) return ticks;
    const int32_t shift = w < 128 ? 4 : w < 256 ? 5 : w < 512 ? 6 : 7;
    const int32_t count = (1 << shift) + 1;
    const int32_t top = shift - 2;
    ticks.reserve(static_cast<size_t>(count));
    for (int32_t i = 0; i < count; ++i) {
        int32_t level = 0;
        if (i == 0) {
            level = top;
        } else {
            while (level < top && (i >> level & 1) == 0) ++level;
        }
        SliderTick tick;
        tick.x = static_cast<int32_t>((w * i >> shift) + kSliderInset);
        tick.level = level;
        tick.length = 3 + level;
        ticks.push_back(tick);
    }
    return ticks;
}

// ---- Integer field ------------------------------------------------------------

IntegerTextResult IntegerTextRule(std::string_view text, int32_t current, int32_t minimum,
                                  int32_t maximum)
{
    IntegerTextResult result;
    result.value = current;
    int32_t parsed = 0;
    if (ParseInt(text.substr(0, 10), parsed) != 0) {
        result.beep = true;
        result.rewrite = true;
        return result;
    }
    if (parsed < minimum || parsed > maximum) {
        parsed = parsed < minimum ? minimum : maximum;
        result.beep = true;
        result.rewrite = true;
    }
    result.value = parsed;
    result.changed = parsed != current;
    return result;
}

// ---- Popup list ---------------------------------------------------------------

PopupListText ParsePopupText(std::string_view packed)
{
    PopupListText list;
    size_t at = 0;
    auto next = [&]() {
        const size_t end = std::min(packed.find('\0', at), packed.size());
        std::string_view piece = packed.substr(at, end - at);
        at = end < packed.size() ? end + 1 : end;
        return piece;
    };
    list.label = std::string(next());
    while (at < packed.size() && packed[at] != '\x01') {
        std::string_view entry = next();
        const bool off = !entry.empty() && entry.front() == '-';
        if (off) entry.remove_prefix(1);
        list.entries.emplace_back(entry);
        list.disabled.push_back(off);
    }
    return list;
}

std::string PackPopupText(std::string_view label, const std::vector<std::string>& entries)
{
    std::string packed(label);
    packed.push_back('\0');
    for (const std::string& entry : entries) {
        packed += entry;
        packed.push_back('\0');
    }
    packed.push_back('\x01');
    return packed;
}

int32_t PopupStep(const std::vector<bool>& disabled, int32_t from, int32_t step)
{
    const auto count = static_cast<int32_t>(disabled.size());
    if (step == 0) return from;
    for (int64_t i = int64_t{from} + step; i >= 0 && i < count; i += step)
        if (!disabled[static_cast<size_t>(i)]) return static_cast<int32_t>(i);
    return from;
}

}  // namespace lv
