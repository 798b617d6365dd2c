#include "geometry/hit_tests.h"

#include <cstdlib>

namespace lv {
namespace {

bool Between(double v, double a, double b) { return a <= b ? a <= v && v <= b : b <= v && v <= a; }

bool Between(int64_t v, int64_t a, int64_t b)
{
    return a <= b ? a <= v && v <= b : b <= v && v <= a;
}

double Distance2(double px, double py, double qx, double qy)
{
    const double dx = px - qx, dy = py - qy;
    return dx * dx + dy * dy;
}

// Whether the upward ray from p meets the edge a-b, ends included.
bool RayCrosses(double px, double py, double ax, double ay, double bx, double by)
{
    if (!Between(px, ax, bx)) return false;
    if (ax == bx) return Between(py, ay, by);
    const double y = ay + (px - ax) * (by - ay) / (bx - ax);
    return y >= py && Between(y, ay, by);
}

// a * b / c truncated towards zero, exact for differences of 32-bit values
// (each magnitude below 2^32, so the product of magnitudes fits 64 bits).
int64_t MulDivTruncate(int64_t a, int64_t b, int64_t c)
{
    const auto magnitude = [](int64_t v) { return static_cast<uint64_t>(v < 0 ? -v : v); };
    const auto q = static_cast<int64_t>(magnitude(a) * magnitude(b) / magnitude(c));
    return ((a < 0) != (b < 0)) != (c < 0) ? -q : q;
}

// Moves the end (u, v) that lies beyond the line u = limit onto it, along the
// segment towards (uo, vo). u is the coordinate being limited, v the other.
void Cut(double& u, double& v, double uo, double vo, double limit)
{
    v = v + (vo - v) * (limit - u) / (uo - u);
    u = limit;
}

// Clips against u >= low (below is true) or u <= high; false when both ends
// are beyond.
bool ClipSide(double& u0, double& v0, double& u1, double& v1, double limit, bool below)
{
    const bool out0 = below ? u0 < limit : u0 > limit;
    const bool out1 = below ? u1 < limit : u1 > limit;
    if (out0 && out1) return false;
    if (out0)
        Cut(u0, v0, u1, v1, limit);
    else if (out1)
        Cut(u1, v1, u0, v0, limit);
    return true;
}

}  // namespace

double distance2_to_segment(double px, double py, double ax, double ay, double bx, double by)
{
    const double dx = bx - ax, dy = by - ay;
    const double length2 = dx * dx + dy * dy;
    if (length2 == 0.0) return Distance2(px, py, ax, ay);
    // t runs from b (0) to a (1).
    const double t = (dx * (bx - px) + dy * (by - py)) / length2;
    if (t >= 0.0 && t <= 1.0)
        return Distance2(px, py, ax * t + bx * (1.0 - t), ay * t + by * (1.0 - t));
    const double toA = Distance2(px, py, ax, ay), toB = Distance2(px, py, bx, by);
    return toA < toB ? toA : toB;
}

bool near_segment(double px, double py, double ax, double ay, double bx, double by, double r)
{
    return distance2_to_segment(px, py, ax, ay, bx, by) < r * r;
}

bool near_point(int32_t px, int32_t py, int32_t qx, int32_t qy, int32_t r)
{
    const int64_t dx = std::llabs(static_cast<int64_t>(px) - qx);
    const int64_t dy = std::llabs(static_cast<int64_t>(py) - qy);
    const int64_t reach = std::llabs(static_cast<int64_t>(r));
    // Either offset alone at or past the radius misses; below it the squares
    // cannot overflow.
    if (dx >= reach || dy >= reach) return false;
    return dx * dx + dy * dy < reach * reach;
}

bool in_box(double px, double py, double ax, double ay, double bx, double by)
{
    return Between(px, ax, bx) && Between(py, ay, by);
}

bool in_quad(double px, double py, double x0, double y0, double x1, double y1, double x2, double y2,
             double x3, double y3)
{
    bool inside = false;
    if (RayCrosses(px, py, x0, y0, x1, y1)) inside = !inside;
    if (RayCrosses(px, py, x1, y1, x2, y2)) inside = !inside;
    if (RayCrosses(px, py, x2, y2, x3, y3)) inside = !inside;
    if (RayCrosses(px, py, x3, y3, x0, y0)) inside = !inside;
    return inside;
}

bool in_polygon(int32_t px, int32_t py, int32_t count, const int32_t* xs, const int32_t* ys)
{
    bool inside = false;
    for (int32_t i = 0; i < count; ++i) {
        const int32_t j = i + 1 < count ? i + 1 : 0;
        const int64_t xa = xs[i], ya = ys[i], xb = xs[j], yb = ys[j];
        if ((px < xa && px < xb) || (px > xa && px > xb)) continue;
        if (xa == xb) {
            if (Between(py, ya, yb)) inside = !inside;
            continue;
        }
        const int64_t y = ya + MulDivTruncate(px - xa, yb - ya, xb - xa);
        if (y >= py && Between(y, ya, yb)) inside = !inside;
    }
    return inside;
}

int32_t clip_line_to_box(double x0, double y0, double x1, double y1, double left, double bottom,
                         double right, double top, double& out_x0, double& out_y0, double& out_x1,
                         double& out_y1)
{
    if (right < left) {
        const double t = left;
        left = right;
        right = t;
    }
    if (top < bottom) {
        const double t = bottom;
        bottom = top;
        top = t;
    }
    if (!ClipSide(x0, y0, x1, y1, left, true)) return 0;
    if (!ClipSide(x0, y0, x1, y1, right, false)) return 0;
    if (!ClipSide(y0, x0, y1, x1, bottom, true)) return 0;
    if (!ClipSide(y0, x0, y1, x1, top, false)) return 0;
    out_x0 = x0;
    out_y0 = y0;
    out_x1 = x1;
    out_y1 = y1;
    return 1;
}

}  // namespace lv
