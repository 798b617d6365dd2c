// The one maker of small copies of pictures, for swatches, image menus,
// Browse and printing.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace lv {

// Fills `destination` with a copy of `source` that fills the box of maxWidth
// by maxHeight on one side with its proportions kept (enlarging as readily
// as reducing; at least 2 pixels each way), sampling the nearest pixels.
// `turned` makes it a quarter turn counter-clockwise; `displayMapped` passes
// colour through the display tables. A solid colour or a histogram keeps its
// one row. The destination's resolution is 0. Result 0 or 1.
int32_t make_thumbnail(const Image& source, Image& destination, int32_t maxWidth, int32_t maxHeight,
                       bool turned, bool displayMapped);

}  // namespace lv
