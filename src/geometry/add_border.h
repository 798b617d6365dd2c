// Add Border: the picture grown by a coloured margin on each side. Its
// parameter record (shared by the module and its panel), the margins in
// pixels, the kind of the result, and the worker's rows.
#pragma once

#include <cstdint>

#include "image/image.h"
#include "transform/registry.h"

namespace lv {

// The record: the border colour, then the four margins as the panel's
// "Left:", "Right:", "Top:" and "Bottom:" fields and the command line give
// them, in `units` (LengthUnits of geometry/crop.h).
struct BorderParams : TransformParams {
    int32_t red, green, blue;
    double left, right, top, bottom;
    int32_t units;
};

// The margins in pixels.
struct BorderMargins {
    int32_t left = 0, right = 0, top = 0, bottom = 0;
};

// The record's margins at a picture's resolution, each by LengthToPixels;
// a negative value counts as 0.
BorderMargins border_margins(const BorderParams& params, double resolution);

// The result's kind: 1 for a border of gray 0 or 255, 2 for another gray, 3
// for a colour that is not gray, raised to the input's kind when that is
// higher.
int32_t border_output_kind(int32_t inputKind, int32_t red, int32_t green, int32_t blue);

// The result's size, the picture's plus its margins, saturated to the 32-bit
// range (a picture too large for memory is refused when allocated).
void border_output_size(int32_t width, int32_t height, const BorderMargins& margins,
                        int32_t& outWidth, int32_t& outHeight);

// The worker's rows. Output row j takes source row j - bottom and column i
// source column i - left; what lies outside the source takes the colour (in
// a 1-bit result a row outside is all ones when red is above 0, a column
// outside set when red is 128 or more); what lies inside is the source pixel
// raised to the result's kind (a bit to 0 or 255, a gray to three equal
// channels). All margins 0 is the short way, a plain copy. The box opens
// from 10000 pixels, titled "Add Border". Result 0, 1, 14 or 11 after
// Cancel.
int32_t border_run(const TransformArgs& args, const BorderMargins& margins, int32_t red,
                   int32_t green, int32_t blue);

}  // namespace lv
