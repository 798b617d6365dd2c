// Brightness Curve's parameter record, shared by the module and its panel:
// the curve's 256-entry table and the colour space it acts in.
#pragma once

#include <cstdint>

#include "tone/color_space.h"
#include "transform/registry.h"

namespace lv {

struct BrightnessCurveParams : TransformParams {
    uint8_t table[256];
    int32_t colorSpace = 0;  // the ColorSpace: HSV, HSL or RGB
    BrightnessCurveParams()
    {
        for (int32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    }
};

}  // namespace lv
