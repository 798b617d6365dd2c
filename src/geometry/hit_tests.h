// Plane geometry of the handles and regions that the mouse can grab: distances
// to points and segments, point-in-box, point-in-quadrilateral and
// point-in-polygon, and the clipping of overlay lines to a box. Coordinates
// are image or window coordinates, whichever the caller has.
#pragma once

#include <cstdint>

namespace lv {

// The squared distance from p to the segment a-b (to a when the segment has
// no length).
double distance2_to_segment(double px, double py, double ax, double ay, double bx, double by);

// True when p lies strictly closer than r to the segment a-b.
bool near_segment(double px, double py, double ax, double ay, double bx, double by, double r);

// True when p lies strictly closer than r to q, in exact integer arithmetic:
// with r of 4 a distance of exactly 4 misses.
bool near_point(int32_t px, int32_t py, int32_t qx, int32_t qy, int32_t r);

// True when p lies in the box with corners a and b, given in either order,
// edges included.
bool in_box(double px, double py, double ax, double ay, double bx, double by);

// True when p lies in the quadrilateral 0-1-2-3, by the parity of the edges
// that the upward ray from p meets. Points on an edge or corner fall on
// either side as the ray rule says (the top edge of an upright square is
// inside, its bottom and sides are not).
bool in_quad(double px, double py, double x0, double y0, double x1, double y1, double x2, double y2,
             double x3, double y3);

// The same rule for a polygon of `count` integer points, the last joined to
// the first; an edge's height above p is found by truncating division.
// False for no points.
bool in_polygon(int32_t px, int32_t py, int32_t count, const int32_t* xs, const int32_t* ys);

// Clips the segment (x0, y0)-(x1, y1) to the box, cutting against left, right,
// bottom and top in that order. 0 when the segment lies wholly beyond one of
// them (the out values are then untouched), otherwise 1 with the clipped
// ends. Each pair of limits may come in either order.
int32_t clip_line_to_box(double x0, double y0, double x1, double y1, double left, double bottom,
                         double right, double top, double& out_x0, double& out_y0, double& out_x1,
                         double& out_y1);

}  // namespace lv
