#include "filters/filter_panel.h"

#include "image/pixel.h"
#include "shell/text.h"

namespace lv {

int32_t FilterSliderPosition(int32_t value, int32_t maximum) { return value * 1024 / maximum; }

int32_t FilterSliderValue(int32_t position, int32_t maximum)
{
    return RoundToInt(position * static_cast<double>(maximum) / 1024.0);
}

std::string FilterRadiusText(int32_t radius) { return FormatText("Radius: %d", radius); }

std::string FilterThresholdText(int32_t threshold)
{
    return FormatText("Threshold: %d", threshold);
}

}  // namespace lv
