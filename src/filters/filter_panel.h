// The arithmetic of Blur's and Sharpen's panels, kept from the widgets so
// that it can be checked without a screen: the parameter records the panels
// share with their modules, the sliders that carry a radius or a threshold
// on the 0 to 1024 scale, their texts, and which methods show them.
#pragma once

#include <cstdint>
#include <string>

#include "transform/registry.h"

namespace lv {

enum BlurMethod : int32_t {
    kBlurPlain = 0,  // "Blur"
    kBlurMore = 1,
    kBlurGaussian = 2,
    kBlurMedian3 = 3,
    kBlurMedian5 = 4,
};

enum SharpenMethod : int32_t {
    kSharpenPlain = 0,  // "Sharpen"
    kSharpenHeavy = 1,
    kSharpenUnsharp = 2,
};

inline constexpr int32_t kBlurRadiusMax = 128;
inline constexpr int32_t kSharpenRadiusMax = 20;
inline constexpr int32_t kSharpenThresholdMax = 50;

struct BlurParams : TransformParams {
    int32_t method = kBlurPlain;
    int32_t radius = 3;  // Gaussian only
};

struct SharpenParams : TransformParams {
    int32_t method = kSharpenPlain;
    int32_t radius = 3;     // Unsharp Mask only
    int32_t threshold = 0;  // Unsharp Mask only
};

// A value of 0..maximum on the slider: value * 1024 / maximum, truncating.
int32_t FilterSliderPosition(int32_t value, int32_t maximum);
// The slider's position as a value: position * maximum / 1024.0, rounded
// to the nearest (halves away from zero).
int32_t FilterSliderValue(int32_t position, int32_t maximum);

// "Radius: 3", "Threshold: 0".
std::string FilterRadiusText(int32_t radius);
std::string FilterThresholdText(int32_t threshold);

// Whether the method's radius (and for Sharpen the threshold) is shown.
inline bool BlurShowsRadius(int32_t method) { return method == kBlurGaussian; }
inline bool SharpenShowsRadius(int32_t method) { return method == kSharpenUnsharp; }

}  // namespace lv
