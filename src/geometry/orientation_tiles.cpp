#include "geometry/orientation_tiles.h"

#include "geometry/mirror_rotate.h"
#include "image/thumbnail.h"
#include "shell/errors.h"

namespace lv {

namespace {

constexpr int32_t kColumns = 4;
constexpr int32_t kRows = 2;

// From one square's left edge to the next: the square, its frame on both
// sides and the gap.
int32_t Pitch(int32_t frame) { return kOrientTileSide + 3 * frame; }

}  // namespace

void orientation_grid_size(int32_t frame, int32_t& width, int32_t& height)
{
    width = kColumns * Pitch(frame) - frame;
    height = kRows * Pitch(frame) - frame;
}

void orientation_tile_corner(int32_t orientation, int32_t frame, int32_t& left, int32_t& top)
{
    int32_t index = orientation - kOrientCopy;
    if (index < 0 || index >= kOrientTileCount) index = 0;
    left = frame + index % kColumns * Pitch(frame);
    top = frame + index / kColumns * Pitch(frame);
}

int32_t orientation_at(int32_t x, int32_t y, int32_t frame)
{
    const int32_t pitch = Pitch(frame);
    const int32_t dx = x - frame, dy = y - frame;
    if (dx < 0 || dy < 0) return 0;
    const int32_t column = dx / pitch, row = dy / pitch;
    if (column >= kColumns || row >= kRows) return 0;
    if (dx % pitch >= kOrientTileSide || dy % pitch >= kOrientTileSide) return 0;
    return kOrientCopy + row * kColumns + column;
}

void orientation_picture_offset(int32_t width, int32_t height, int32_t& x, int32_t& y)
{
    x = (kOrientTileSide - width) / 2;
    y = (kOrientTileSide - height) / 2;
}

int32_t make_orientation_pictures(const Image& source, Image (&pictures)[kOrientTileCount])
{
    for (Image& picture : pictures) ImageFree(picture);
    if (source.kind < kImageBinary || source.kind > kImageColor || !source.rows) return kOk;
    int32_t code =
        make_thumbnail(source, pictures[0], kOrientTileSide, kOrientTileSide, false, true);
    for (int32_t i = 1; i < kOrientTileCount && code == kOk; ++i)
        code = mirror_rotate(pictures[0], pictures[i], kOrientCopy + i, false);
    if (code != kOk)
        for (Image& picture : pictures) ImageFree(picture);
    return code;
}

}  // namespace lv
