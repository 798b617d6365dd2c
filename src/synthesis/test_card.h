// A test card: a picture made from nothing, with colour and gray ramps,
// steps and a fine grid, for looking at the display, zoom and scrolling
// before any file is opened, and for benchmarks and tests.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace lv {

// Fills `image` with a test card of the given kind (1 to 3) and size at 300
// dpi. Result 0, 1 or 14.
int32_t MakeTestCard(Image& image, int32_t kind, int32_t width, int32_t height);

}  // namespace lv
