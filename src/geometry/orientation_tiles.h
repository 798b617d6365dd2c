// The Mirror/Rotate panel's grid: the picture in each of the eight
// orientations, made from one small thumbnail, as tiles to click. Two rows
// of four squares of 128 by 128, 200 to 203 above and 204 to 207 below, each
// with a frame `frame` pixels wide around it and a gap of `frame` pixels
// between neighbouring frames. Grid coordinates run from the top left corner
// of the outermost frames, y downwards, as the panel's widget has them.
#pragma once

#include <cstdint>

#include "image/image.h"

namespace lv {

inline constexpr int32_t kOrientTileSide = 128;
inline constexpr int32_t kOrientTileCount = 8;

// The grid's size, frames included.
void orientation_grid_size(int32_t frame, int32_t& width, int32_t& height);

// The top left corner of an orientation's square (200 to 207), inside its
// frame; any other code gives the square of 200.
void orientation_tile_corner(int32_t orientation, int32_t frame, int32_t& left, int32_t& top);

// The orientation whose square holds the point; 0 over a frame, a gap or
// outside the grid.
int32_t orientation_at(int32_t x, int32_t y, int32_t frame);

// Where a picture of width by height sits in its square: centred, at
// ((128 - width) / 2, (128 - height) / 2).
void orientation_picture_offset(int32_t width, int32_t height, int32_t& x, int32_t& y);

// The tiles' pictures: [0] a thumbnail of `source` fitting 128 by 128 with
// its colours through the display tables, [i] that thumbnail in orientation
// 200 + i, made without progress. A kind outside 1 to 3 leaves all eight
// empty. Result 0, or 1 when memory is short (all eight then empty).
int32_t make_orientation_pictures(const Image& source, Image (&pictures)[kOrientTileCount]);

}  // namespace lv
