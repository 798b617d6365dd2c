// Crop: a rectangle cut out of a picture. Here are its parameter record
// (shared by the module and its panel), the box's handles and their hit
// areas, the refitting of a dragged box to chosen proportions, the margins
// and lengths the panels show, and the worker's rows.
#pragma once

#include <cstdint>

#include "image/image.h"
#include "transform/registry.h"

namespace lv {

// The units of the "Size:" and margin fields of Crop and Add Border.
enum LengthUnits : int32_t {
    kUnitsPixels = 0,       // "pixels"
    kUnitsInches = 1,       // "in"
    kUnitsMillimetres = 2,  // "mm"
    kUnitsCentimetres = 3,  // "cm"
};

// A length in `units` as whole pixels at `resolution` (pixels per inch):
// RoundToInt of the value itself, of the value times the resolution (in), or
// of the value times the resolution divided by 25.40005 (mm) or by 2.540005
// (cm).
int32_t LengthToPixels(double value, int32_t units, double resolution);
// Pixels as a length in `units`: divided by the resolution (in), times
// 25.40005 or 2.540005 divided by it (mm, cm); 0 in a unit of length when
// the resolution is not above 0.
double PixelsToLength(int32_t pixels, int32_t units, double resolution);

// The entries of "Proportions:": Arbitrary, Custom, Square, then each named
// by the ratio of its first pair, "1x2, 6x12" to "13x18".
inline constexpr int32_t kProportionsArbitrary = 0;
inline constexpr int32_t kProportionsCustom = 1;
inline constexpr int32_t kProportionsSquare = 2;
inline constexpr int32_t kProportionsCount = 19;
// The orientation popup.
inline constexpr int32_t kPortrait = 0;
inline constexpr int32_t kLandscape = 1;

// The record. The box's corners are given as the command line and the panel
// show them: columns from the left, rows from the top of the picture, both
// from 0, inclusive, in either order; -1 stands for the last column or the
// bottom row.
struct CropParams : TransformParams {
    int32_t x1, y1, x2, y2;
    int32_t units = kUnitsPixels;      // of the panel's "Size:"
    int32_t proportions;               // an entry of "Proportions:"
    int32_t orientation;               // kPortrait or kLandscape
    double customWidth, customHeight;  // the ratio of Custom, "Width/Height:"
};

// A box in image coordinates (row 0 at the bottom), inclusive, in either
// order.
struct CropBox {
    int32_t x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

// The handles of the box: its four corners, and the cross at its centre,
// which moves the whole box.
enum CropHandle : int32_t {
    kCropHandleNone = -1,
    kCropCorner11 = 0,  // the corner (x1, y1)
    kCropCorner21 = 1,  // (x2, y1)
    kCropCorner22 = 2,  // (x2, y2)
    kCropCorner12 = 3,  // (x1, y2)
    kCropCenter = 4,    // the 9 by 9 cross at ((x1 + x2) / 2, (y1 + y2) / 2)
};

// The handle whose drawn area holds the point, in the box's own coordinates
// (image or window): the 5 by 5 square centred on a corner, corners first in
// the order above, else the 9 by 9 square of the centre's cross; edges
// included. kCropHandleNone elsewhere.
int32_t crop_handle_at(const CropBox& box, int32_t px, int32_t py);

// The ratio, width over height, of an entry of "Proportions:" in an
// orientation: a over b of its first pair in Portrait and b over a in
// Landscape; 1 for Square; the two "Width/Height:" values as given for
// Custom; 0 for Arbitrary (no ratio) and for anything unknown.
double crop_ratio(int32_t proportions, int32_t orientation, double customWidth,
                  double customHeight);

// Refits a dragged box to `ratio`, keeping the length of its diagonal. With
// d the distance between the two corners and r the ratio, the new width is
// RoundToInt(r * d / sqrt(r * r + 1)) and the new height RoundToInt(width /
// r), each at least 1, both as distances between the corners' coordinates.
// The corner opposite `handle` stays and the dragged one goes to that
// distance in the direction in which it lay (towards larger coordinates when
// it lay level). A ratio not above 0, or a handle that is no corner, leaves
// the box as it is.
CropBox crop_constrain(const CropBox& box, int32_t handle, double ratio);

// The box of a record for a picture of width by height: -1 resolved, rows
// turned to count from the bottom, and, unless the proportions are
// Arbitrary, refitted with (x2, y2) as the dragged corner. Not clipped.
CropBox crop_box_of(const CropParams& params, int32_t width, int32_t height);

// The box put in order and cut to the picture; false (and `inside` left
// alone) when no pixel of it lies in the picture.
bool crop_clip(const CropBox& box, int32_t width, int32_t height, CropBox& inside);

// The margins that an ordered box inside the picture leaves, in pixels.
struct CropMargins {
    int32_t left = 0, right = 0, top = 0, bottom = 0;
};
CropMargins crop_margins(const CropBox& box, int32_t width, int32_t height);

// The worker's rows for an ordered box that lies inside the source: the
// input read at (column + x1, row + y1), each row copied (a 1-bit picture's
// bytes below 128 clear the bit, others set it), the box titled "Crop" from
// 10000 pixels. The whole box is the short way, a copy. Result 0, 1, 14 or
// 11 after Cancel.
int32_t crop_run(const TransformArgs& args, const CropBox& box);

}  // namespace lv
