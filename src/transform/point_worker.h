// The worker of every transformation that computes each output pixel from
// the input pixel at the same place (negative, curves, levels, ...): the
// readers, the line output, the busy sign, the Amount blend and the clean-up
// are here once; a module supplies only what it does to a row.
#pragma once

#include <cstdint>
#include <functional>

#include "image/lineio.h"
#include "transform/registry.h"

namespace lv {

// Computes `pixels` output pixels from input pixels; `channels` is 1 (gray,
// binary read as 0 and 255) or 3 (blue, green, red).
using RowFunction = void (*)(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
                             const TransformParams& params);

// The short way of any worker whose settings leave the picture as it is: a
// full result is a boxed copy ("Copy"), a preview shows the input at its
// zoom in the asked rectangle.
int32_t RunShortWay(const TransformArgs& args);

// Whether the rectangle to compute is the whole output (a full result, or a
// preview made afresh) rather than a scrolled strip.
inline bool WholeOutput(const TransformArgs& args)
{
    return args.rectLeft == 0 && args.rectTop == 0 && args.rectRight == args.outWidth - 1 &&
           args.rectBottom == args.outHeight - 1;
}

// Opens a worker's line output: when the rectangle is the whole output, the
// destination is first made (of `kind`, the output's size, the input's
// resolution, its row padding cleared); a scrolled strip reuses what is
// there. 0 or the allocation's code.
int32_t WorkerOutputOpen(const TransformArgs& args, int32_t kind, LineOutput& out);

// Runs the worker contract for a point transformation. Kinds 1 to 3 are
// taken (binary gives gray output); anything else gives 14.
// With `unchanged` (the settings leave the picture as it is) it takes the
// short way: a preview copies the input to its display, a full result is a
// boxed copy.
int32_t RunPointWorker(const TransformArgs& args, const char* title, RowFunction row,
                       bool unchanged = false);

// Where a row of a point worker lies in the input: its row as the record
// counts them, the column of its first pixel, and the step from one computed
// pixel (and row) to the next, 2 at 1:2. For a row function whose result
// depends on the place as well as on the pixels (Add Noise).
struct RowPlace {
    int32_t y = 0, x = 0, step = 1;
};
using PlacedRowFunction = std::function<void(const uint8_t* in, uint8_t* out, int32_t pixels,
                                             int32_t channels, const RowPlace& place)>;
int32_t RunPlacedPointWorker(const TransformArgs& args, const char* title,
                             const PlacedRowFunction& row, bool unchanged = false);

}  // namespace lv
