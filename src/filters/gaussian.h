// What Blur's Gaussian and Sharpen's Unsharp Mask share: the running-sum box
// pass, the reflection of coordinates past the picture's edges, and the
// two-stage scratch: every column of the area, with a margin of twice the
// radius, blurred twice and kept only at the rows that will be shown; then
// each kept row blurred twice along its length.
#pragma once

#include <cstdint>
#include <functional>

#include "image/image.h"
#include "transform/registry.h"

namespace lv {

// One box pass of radius r over a line of n pixels of `channels` bytes each,
// each byte channel on its own: out[i] = the truncated mean of in[i - r ..
// i + r] for i from r while i < n - 1 - r, a running sum. The first r pixels
// and the r pixels from n - 1 - r on are copied unchanged; the last pixel,
// out[n - 1], is left as it was.
void BoxPass(const uint8_t* in, uint8_t* out, int32_t n, int32_t r, int32_t channels);

// A coordinate of a line of `size` pixels reflected about its ends: -c
// below 0 (at most size - 1), 2 * size - 2 - c at or past the end (at least
// 0), otherwise c.
int32_t ReflectIndex(int64_t c, int32_t size);

// The kept rows of the first stage, for `height` output rows of `width`
// pixels read every `step` pixels from (sourceX, sourceY).
struct GaussianScratch {
    Image image;  // rowLength wide, one row per output row, gray or colour
    int32_t radius = 0, step = 1;
    int32_t rowLength = 0;     // width * step + 4 * radius
    int32_t columnLength = 0;  // height * step + 4 * radius
    int32_t channels = 1;
};

// Makes the scratch: each column from sourceX - 2r up to sourceX + width *
// step + 2r, read from rows sourceY - 2r up to sourceY + height * step + 2r
// through the reflection (a 1-bit picture as 0 and 255), box-passed twice,
// and stored at the rows 2r + j * step. `progress(column)` is told the
// columns done, from 0 to rowLength - 1; its non-zero result stops the work
// and is returned. `parallel` spreads the columns over the worker threads
// (the same bytes). 0, 1 for memory, or the progress code.
int32_t GaussianColumns(const Image& source, int32_t sourceX, int32_t sourceY, int32_t step,
                        int32_t width, int32_t height, int32_t radius, bool parallel,
                        GaussianScratch& scratch, const std::function<int32_t(int32_t)>& progress);

// Output row j of the second stage: the scratch row box-passed twice, read
// at 2r + i * step for the `width` pixels. `a` and `b` hold rowLength pixels.
void GaussianRow(const GaussianScratch& scratch, int32_t j, int32_t width, uint8_t* a, uint8_t* b,
                 uint8_t* out);

// What a filter does with the blurred row: `blurred`, `center` (the input
// pixels at the same places) and `mask` (the Amount mask's row, or null)
// hold `width` pixels of `channels` bytes; the result goes to `out`.
using GaussianFinish =
    std::function<void(const uint8_t* blurred, const uint8_t* center, const uint8_t* mask,
                       uint8_t* out, int32_t width, int32_t channels)>;

// The whole worker of a two-stage filter after its no-op test: the output
// opened, the progress box titled `title` over the columns and then the
// rows (0 to rowLength + height - 1), the scratch, and each row finished by
// `finish`. Full results of large pictures use the worker threads.
int32_t RunGaussianFilter(const TransformArgs& args, const char* title, int32_t radius,
                          const GaussianFinish& finish);

}  // namespace lv
