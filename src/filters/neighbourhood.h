// The worker of the filters that read each pixel's neighbours through
// LineWindow (Blur, Blur More, the medians, Sharpen, Heavy Sharpen): the
// output, the readers, the Amount mask, the busy sign and the clean-up are
// here once, and full results of large pictures go to all the cores.
#pragma once

#include <cstdint>
#include <functional>

#include "transform/registry.h"

namespace lv {

// One output row as a filter sees it.
struct WindowRow {
    const uint8_t* const* rows = nullptr;  // 2 * radius + 1 rows; entry `radius` the center row
    int32_t advance = 0;                   // bytes from one output pixel's neighbours to the next
    const uint8_t* mask = nullptr;         // the Amount mask's row, or null
    uint8_t* out = nullptr;
    int32_t width = 0;
    int32_t channels = 1;  // 1 (gray, binary read as 0 and 255) or 3
    // Median 5x5's 25 slots, carried from pixel to pixel over the whole run:
    // slots 15 to 24 hold, in rising order, what the last sort left there.
    uint8_t* slots = nullptr;
};

struct WindowFilter {
    const char* title = "";
    int32_t radius = 1;
    std::function<void(const WindowRow&)> row;
    // For a filter that carries slots: adds every byte the row puts into
    // slots 0 to 14 to `counts`. A band of rows then starts from the ten
    // largest bytes put in before it, which is what the carried slots hold,
    // so the rows can be shared among threads.
    std::function<void(const WindowRow&, uint32_t counts[256])> loads = nullptr;
};

// Runs the filter over the rectangle that `args` asks for. The caller has
// already rejected other kinds and taken the short way.
int32_t RunWindowFilter(const TransformArgs& args, const WindowFilter& filter);

// The ten largest of the bytes counted in `counts` together with the ten in
// `held` (rising), written to `held` in rising order.
void KeepTenLargest(const uint32_t counts[256], uint8_t held[10]);

}  // namespace lv
