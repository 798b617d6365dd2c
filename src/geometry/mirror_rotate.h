// Mirror/Rotate: the eight exact orientations of a rectangle, the four turns
// and the four reflections. Nothing is resampled: every pixel moves whole.
//
// With (x, y) a source pixel in storage coordinates (row 0 at the bottom) and
// W, H the source's size, each orientation puts it at this output column and
// row:
//   200  W by H  (x, y)                  unchanged
//   201  H by W  (y, W - 1 - x)          quarter turn clockwise
//   202  W by H  (W - 1 - x, H - 1 - y)  half turn
//   203  H by W  (H - 1 - y, x)          quarter turn counter-clockwise
//   204  W by H  (W - 1 - x, y)          left and right exchanged
//   205  H by W  (H - 1 - y, W - 1 - x)  reflection in the diagonal from top left to bottom right
//   206  W by H  (x, H - 1 - y)          top and bottom exchanged
//   207  H by W  (y, x)                  reflection in the diagonal from bottom left to top right
#pragma once

#include <cstdint>

#include "image/image.h"

namespace lv {

enum Orientation : int32_t {
    kOrientCopy = 200,
    kOrientClockwise = 201,
    kOrientHalfTurn = 202,
    kOrientCounterClockwise = 203,
    kOrientLeftRight = 204,
    kOrientFallingDiagonal = 205,  // the diagonal from top left to bottom right
    kOrientTopBottom = 206,
    kOrientRisingDiagonal = 207,  // the diagonal from bottom left to top right
};

// Source pixels per side of the tiles in which rows and columns are exchanged.
inline constexpr int32_t kOrientTile = 64;

// True for the four that exchange rows and columns (201, 203, 205, 207).
bool mirror_rotate_transposes(int32_t orientation);

// The progress box's title: "Copy", "Rotate", "Reflect" or, for 207,
// "Rotate CW".
const char* mirror_rotate_title(int32_t orientation);

// The output's size for a source of width by height.
void mirror_rotate_size(int32_t orientation, int32_t width, int32_t height, int32_t& outWidth,
                        int32_t& outHeight);

// The number of tiles, and so the progress box's last step, of an exchanging
// orientation: ((W + 63) / 64) times ((H + 63) / 64).
int32_t mirror_rotate_tiles(int32_t width, int32_t height);

// Allocates `destination` with the orientation's size and the source's kind
// and resolution, and fills it. The orientations that keep rows go row by
// row with the progress range 0 to H - 1; the others go in tiles of 64 by 64
// source pixels (x in the outer loop, y in the next, the last tile of each
// run cut at the edge) with the range 0 to the tile count, a step after each
// tile. With `showProgress` the box opens from 10000 pixels, the wait cursor
// otherwise; without it nothing is shown (the panel's thumbnails). Large
// pictures are shared among the worker threads, with the same bytes.
// Result 0; 14 for a kind outside 1 to 3 (nothing allocated); 1 when memory
// is short; 11 after Cancel, the destination then partly filled. `source`
// and `destination` must be different records.
int32_t mirror_rotate(const Image& source, Image& destination, int32_t orientation,
                      bool showProgress);

}  // namespace lv
