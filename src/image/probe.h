// Reading a colour off a picture, for the probes of the tone panels.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace lv {

// The colour at image point (x, y), row 0 the bottom, over a square of
// half size `half` (0 to 4 for 1x1 to 9x9). Rows y - half to y + half and
// columns x - half to x + half are clamped to the picture; each step of the
// two loops adds the pixel of its row at the centre column x, so the result
// is the centre column's average, weighted as the loops count. A set bit
// counts 255; each average is (sum + count / 2) / count. False, with r, g, b
// untouched, for a kind other than binary, gray or colour, and for a centre
// column or a square of rows outside the picture.
bool ProbeColor(const Image& image, int32_t x, int32_t y, int32_t half, int32_t& r, int32_t& g,
                int32_t& b);

}  // namespace lv
