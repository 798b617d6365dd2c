// Difference's record, shared with its panel part: the second picture is
// the command line's file (--with), or in the editor the image chosen in the
// panel.
#pragma once

#include "image/image.h"
#include "transform/registry.h"

namespace lv {

struct DifferenceParams : TransformParams {
    Image loaded;                 // the picture --with read
    const Image* with = nullptr;  // the second picture: `loaded`, a window's, or none
};

// Code 77, the error table's answer when no image is named: the worker's
// answer when no second picture is given.
inline constexpr int32_t kErrNoImageGiven = 77;

}  // namespace lv
