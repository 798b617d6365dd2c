// Resampling a picture to a new size in pixels.
//
// Two engines. The smooth one is separable and goes row by row with no
// intermediate picture: each output row is first formed from source rows (a
// linear blend of two rows when enlarging, a tent over several when
// reducing), giving a row of the source's width, which is then resampled
// across straight into the output row (the same two filters by columns) and,
// when the width changed, lightly crispened. Only byte weights touch pixels,
// all through Mul8Table; floating point only builds the weights. The other
// engine is nearest neighbour, from integer index tables.
//
// Rows are storage rows (row 0 the bottom); the first and last output rows and
// columns fall on the first and last source ones.
#pragma once

#include <cstdint>
#include <memory>

#include "shell/errors.h"

#include "image/image.h"

namespace lv {

inline constexpr int32_t kResizeSmooth = 0;
inline constexpr int32_t kResizeNearest = 1;

// The working memory of one row of the smooth engine. A thread that computes
// rows of its own needs its own.
struct ResizeRowBuffers {
    std::unique_ptr<uint8_t[]> line;     // the vertical pass's row, when it makes one
    std::unique_ptr<uint8_t[]> weights;  // the vertical taps of the row, when reducing
    std::unique_ptr<int32_t[]> sums;     // their weighted sums, when reducing
};

// One engine: the sizes and the tables of the columns, built once; each output
// row is then computed on its own from them.
struct ResizeState {
    const Image* source = nullptr;
    int32_t method = kResizeSmooth;
    int32_t outWidth = 0, outHeight = 0;
    int32_t srcWidth = 0, srcHeight = 0, srcStride = 0, srcKind = 0;
    // The kind of the output rows: gray for a binary source under the smooth
    // method, otherwise the source's.
    int32_t workKind = 0;
    double scale = 0.0;  // srcWidth / outWidth
    // Smooth: the row of the vertical pass (present when the height changes
    // or the source is binary), with the vertical weights when reducing.
    ResizeRowBuffers rowBuffer;
    // Smooth: the first source column of each output pixel. Nearest: the
    // source column of each output pixel.
    std::unique_ptr<int32_t[]> firstTap;
    std::unique_ptr<int32_t[]> tapCount;  // smooth, reducing: the taps kept for each pixel
    // Smooth: reducing, the kept taps of all output pixels one after the
    // other; enlarging, the share of the right-hand pixel, one a pixel.
    std::unique_ptr<uint8_t[]> weights;
    std::unique_ptr<int32_t[]> sourceRows;  // nearest: the source row of each output row
};

// ---- The tent of the smooth reduction ---------------------------------------------------

// The taps of the window of a reduction from `srcSize` to `outSize` samples
// (2 * half-window + 1); 0 when srcSize is not above outSize.
int64_t ResizeTentWindow(int32_t srcSize, int32_t outSize);

// The byte weights of output sample `i` of a reduction: the non-zero taps of
// the tent, in order, adding up to 255 (the largest, the first of equals,
// takes up what rounding left over, and stays within 0..255). `weights` holds
// ResizeTentWindow bytes; `first` gets the source index of the first weight.
// Returns how many weights were written.
int32_t ResizeTentTaps(int32_t srcSize, int32_t outSize, int32_t i, uint8_t* weights,
                       int32_t& first);

// ---- An engine on a record of the caller's ----------------------------------------------

// Frees what the state holds; safe in any state.
void ResizeStateReset(ResizeState& state);
// Builds the tables for a `width` by `height` output of `source` (kinds 1 to
// 3, else 14) by `method` (kResizeNearest, anything else smooth). 0, 1 when
// memory is short (nothing is then held), 81 when a size is below 1.
int32_t ResizeStateOpen(ResizeState& state, const Image& source, int32_t width, int32_t height,
                        int32_t method);
// The bytes of one output row: (width + 7) / 8 for binary, width for gray,
// 3 width for colour.
int32_t ResizeRowBytes(int32_t kind, int32_t width);
// Whether a row of the smooth engine needs working memory, and that memory.
// 0 or 1.
bool ResizeRowBuffersNeeded(const ResizeState& state);
int32_t ResizeRowBuffersAlloc(const ResizeState& state, ResizeRowBuffers& buffers);
// Writes output row y (0 to outHeight - 1) into `row`, ResizeRowBytes of the
// work kind, with `buffers` from ResizeRowBuffersAlloc (unused by nearest).
// Touches only `row` and `buffers`, so rows may be computed side by side.
void ResizeStateRow(const ResizeState& state, int32_t y, uint8_t* row, ResizeRowBuffers& buffers);

// ---- The program's engine --------------------------------------------------------------

// Opens the one process-wide engine for callers that take the rows one at a
// time; as ResizeStateOpen. The source must outlive resize_close.
int32_t resize_open(const Image& source, int32_t width, int32_t height, int32_t method);
// Output row y into `row` (ResizeRowBytes of the output's kind: gray for a
// binary source under the smooth method, else the source's). A y outside the
// output is taken at its nearest row; with no engine open nothing is written.
void resize_row(int32_t y, uint8_t* row);
// Frees the process-wide engine.
void resize_close();
// The kind of the rows the open engine gives, 0 when none is open.
int32_t resize_work_kind();

// A nearest-neighbour copy at `width` by `height` into `destination`, which it
// allocates with the source's kind and a resolution of 100.0; no progress is
// shown. 0, 1, 14 or 81.
int32_t resize_nearest_copy(const Image& source, Image& destination, int32_t width, int32_t height);

// The whole resampling: `destination` becomes the source at `width` by
// `height` with `resolution`, by `method` (1 nearest neighbour, any other
// value smooth). The same size duplicates the picture and replaces only the
// resolution. The progress box "Resize" is shown from 10000 output pixels,
// the wait cursor below. Large jobs share their rows among the engine's
// threads; the bytes are the same whatever their count. 0, 1, 11 after
// Cancel (the rows written so far stay in `destination`), 14 or 81.
int32_t resize_image(const Image& source, Image& destination, int32_t width, int32_t height,
                     double resolution, int32_t method);

}  // namespace lv
