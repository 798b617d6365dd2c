// The crop box as the panel and the mouse change it: a drag of a corner or
// of the centre's cross, the refit to the proportions inside the picture,
// the one-pixel steps of the margins, the lengths the panel shows, and where
// the box stands in a window. Boxes are in image coordinates (row 0 at the
// bottom), inclusive, and always inside the picture.
#pragma once

#include <cstdint>
#include <string>

#include "geometry/crop.h"
#include "image/window.h"
#include "image/zoom.h"

namespace lv {

// One drag, from the press on a handle to the release.
struct CropDrag {
    int32_t handle = kCropHandleNone;  // what the press took; none while idle
    CropBox start;                     // the box at the press
    int32_t fromX = 0, fromY = 0;      // the press, in image coordinates
};

// Starts a drag of `handle` (what crop_handle_at found under the pointer) at
// the image point (x, y). A press on no handle starts nothing: false.
bool crop_drag_start(CropDrag& drag, const CropBox& box, int32_t handle, int32_t x, int32_t y);

// The box with the pointer at the image point (x, y). A corner moves by the
// pointer's travel since the press, kept inside the picture, and with a
// ratio above 0 the box is then refitted by crop_fit. The centre moves the
// whole box by that travel, stopped at the picture's edges. A drag of no
// handle leaves the box as it was at the press.
CropBox crop_drag_to(const CropDrag& drag, int32_t x, int32_t y, int32_t width, int32_t height,
                     double ratio);

// crop_constrain with `handle` as the dragged corner, then kept inside the
// width by height picture: when the dragged corner lands outside, the box
// shrinks about the corner that stays, to the largest width w whose height
// max(RoundToInt(w / ratio), 1) still fits; a corner with no room on its
// side goes to the other. The result is one that crop_constrain leaves as it
// is, so the module's own refit keeps it. A ratio not above 0 or a handle
// that is no corner only keeps the box inside the picture.
CropBox crop_fit(const CropBox& box, int32_t handle, double ratio, int32_t width, int32_t height);

// The sides of the box, as the margin fields name them.
enum CropSide : int32_t { kCropLeft = 0, kCropRight = 1, kCropTop = 2, kCropBottom = 3 };

// The box after one step of a margin's up-down control: `step` pixels more
// margin on `side` (negative for less), the side stopping at the picture's
// edge and at the opposite side. With a ratio above 0 the other dimension
// follows: after a left or right step the height becomes max(RoundToInt(w /
// ratio), 1) with the top kept; after a top or bottom step the width becomes
// max(RoundToInt(h * ratio), 1) (one more or less than before when that
// alone would bring the same width back) with the left kept, the height is
// derived again from it and the stepped side stays. A box that would no
// longer fit the picture is refused: the box comes back unchanged. The
// corners keep their order.
CropBox crop_step_side(const CropBox& box, int32_t side, int32_t step, int32_t width,
                       int32_t height, double ratio);

// A length of the panel: whole pixels as they are, other units with two
// decimals ("1.50"), by PixelsToLength at the picture's resolution.
std::string crop_length_text(int32_t pixels, int32_t units, double resolution);

// The record's corners from a box: columns as they are, rows counted from
// the top of a picture `height` rows high.
void crop_store_box(CropParams& params, const CropBox& box, int32_t height);

// Where the box stands in a window's client area: its corners in client
// pixels (above 1:1 the right and bottom corners on the last screen pixel of
// their picture pixel, so that the outline encloses the box), and the area
// the picture takes there, which the drawing is clipped to.
struct CropScreen {
    CropBox box;  // x1, y1 is the client point of the box's (x1, y1), and so on
    int32_t clipLeft = 0, clipTop = 0, clipRight = -1, clipBottom = -1;  // inclusive
};
CropScreen crop_on_screen(const CropBox& box, const ImageWindow& record, int32_t clientWidth,
                          int32_t clientHeight, const ZoomMetrics& metrics);

}  // namespace lv
