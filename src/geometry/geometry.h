// Numeric tools of the commands that move pixels: the small dense linear
// solver, the perspective fit and its mapping, and polar coordinates for
// turning handles about a centre. The samplers are in samplers.h and the hit
// tests of handles and regions in hit_tests.h.
//
// Image coordinates are storage coordinates: column x from 0, row y from 0,
// row 0 the bottom of the picture.
#pragma once

#include <cstdint>

#include "shell/errors.h"

namespace lv {

struct Point2d {
    double x = 0.0;
    double y = 0.0;
};

// A plane perspective. With d = c[6] x + c[7] y + 1, the point (x, y) maps to
// ((c[0] x + c[1] y + c[2]) / d, (c[3] x + c[4] y + c[5]) / d).
struct PerspectiveCoeffs {
    double c[8] = {};
};

// Solves the n equations of `matrix` (n * n values, row after row) for the
// right-hand side `rhs`, which receives the solution; `matrix` is left holding
// its decomposition. Gaussian elimination with partial pivoting; only an exact
// zero pivot counts as singular. 0, or 1 when memory is short, the matrix is
// singular or n is below 1.
int32_t solve_linear(double* matrix, int32_t n, double* rhs);

// Fills `coeffs` so that sources[i] maps to (x_targets[i], y_targets[i]) for
// the four pairs. 0, or kErrPerspective when the system has no solution (four
// collinear sources, say); `coeffs` is then left as it was.
int32_t perspective_fit(const double x_targets[4], const double y_targets[4],
                        const Point2d sources[4], PerspectiveCoeffs& coeffs);

// Maps (x, y) through `coeffs`. A point on or next to the vanishing line
// (|d| at most 0.000001) gives (-1.0, -1.0), which every point sampler reads
// as outside.
void perspective_map(double x, double y, const PerspectiveCoeffs& coeffs, double& out_x,
                     double& out_y);

// The length of (dx, dy) and its direction from atan2, in radians.
void polar_of(double dx, double dy, double& radius, double& angle);

// Turns (x, y) about the centre (cx, cy) by `angle_offset` radians and scales
// its distance from the centre by `scale`; the offsets from the centre are
// rounded by RoundToInt. Results beyond the 32-bit range saturate.
void from_polar(int32_t x, int32_t y, int32_t cx, int32_t cy, double scale, double angle_offset,
                int32_t& out_x, int32_t& out_y);

}  // namespace lv
