#include "geometry/geometry.h"

#include <cmath>
#include <memory>
#include <new>

#include "image/pixel.h"
#include "shell/errors.h"

namespace lv {
namespace {

// Decomposes `a` in place into its multipliers (below the diagonal) and the
// upper triangle, recording the pivot row of each column. False when a pivot
// is exactly zero.
bool Decompose(double* a, int32_t n, int32_t* pivot)
{
    const size_t stride = static_cast<size_t>(n);
    auto at = [a, stride](int32_t row, int32_t column) -> double& {
        return a[static_cast<size_t>(row) * stride + static_cast<size_t>(column)];
    };
    // The last entry carries the sign of the determinant; nothing reads it.
    pivot[n - 1] = 1;
    for (int32_t k = 0; k < n; ++k) {
        if (k < n - 1) {
            int32_t m = k;
            for (int32_t i = k + 1; i < n; ++i)
                if (std::fabs(at(i, k)) > std::fabs(at(m, k))) m = i;
            pivot[k] = m;
            if (m != k) pivot[n - 1] = -pivot[n - 1];
            const double t = at(m, k);
            at(m, k) = at(k, k);
            at(k, k) = t;
            if (t != 0.0) {
                for (int32_t i = k + 1; i < n; ++i) at(i, k) /= -t;
                for (int32_t j = k + 1; j < n; ++j) {
                    const double t2 = at(m, j);
                    at(m, j) = at(k, j);
                    at(k, j) = t2;
                    if (t2 != 0.0)
                        for (int32_t i = k + 1; i < n; ++i) at(i, j) += at(i, k) * t2;
                }
            }
        }
        if (at(k, k) == 0.0) return false;
    }
    return true;
}

// Forward substitution through the multipliers and pivots, then back
// substitution through the upper triangle.
void Solve(const double* a, int32_t n, const int32_t* pivot, double* b)
{
    const size_t stride = static_cast<size_t>(n);
    auto at = [a, stride](int32_t row, int32_t column) {
        return a[static_cast<size_t>(row) * stride + static_cast<size_t>(column)];
    };
    if (n > 1) {
        for (int32_t k = 0; k < n - 1; ++k) {
            const int32_t m = pivot[k];
            const double t = b[m];
            b[m] = b[k];
            b[k] = t;
            for (int32_t i = k + 1; i < n; ++i) b[i] += at(i, k) * t;
        }
        for (int32_t k = n - 1; k >= 1; --k) {
            b[k] /= at(k, k);
            const double t = -b[k];
            for (int32_t i = 0; i < k; ++i) b[i] += at(i, k) * t;
        }
    }
    b[0] /= at(0, 0);
}

int32_t SaturatedSum(int32_t base, int32_t offset)
{
    const int64_t sum = static_cast<int64_t>(base) + offset;
    if (sum > INT32_MAX) return INT32_MAX;
    if (sum < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(sum);
}

}  // namespace

int32_t solve_linear(double* matrix, int32_t n, double* rhs)
{
    if (n < 1) return kErrOutOfMemory;
    std::unique_ptr<int32_t[]> pivot(new (std::nothrow) int32_t[static_cast<size_t>(n)]);
    if (!pivot) return kErrOutOfMemory;
    if (!Decompose(matrix, n, pivot.get())) return kErrOutOfMemory;
    Solve(matrix, n, pivot.get(), rhs);
    return kOk;
}

int32_t perspective_fit(const double x_targets[4], const double y_targets[4],
                        const Point2d sources[4], PerspectiveCoeffs& coeffs)
{
    double a[8][8] = {};
    double rhs[8];
    for (int32_t i = 0; i < 4; ++i) {
        const double s = sources[i].x, t = sources[i].y;
        const double X = x_targets[i], Y = y_targets[i];
        double* top = a[i];
        top[0] = s;
        top[1] = t;
        top[2] = 1.0;
        top[6] = -s * X;
        top[7] = -t * X;
        double* bottom = a[4 + i];
        bottom[3] = s;
        bottom[4] = t;
        bottom[5] = 1.0;
        bottom[6] = -s * Y;
        bottom[7] = -t * Y;
        rhs[i] = X;
        rhs[4 + i] = Y;
    }
    if (solve_linear(&a[0][0], 8, rhs) != kOk) return kErrPerspective;
    for (int32_t k = 0; k < 8; ++k) coeffs.c[k] = rhs[k];
    return kOk;
}

void perspective_map(double x, double y, const PerspectiveCoeffs& coeffs, double& out_x,
                     double& out_y)
{
    const double* c = coeffs.c;
    const double d = c[6] * x + c[7] * y + 1.0;
    if (std::fabs(d) <= 0.000001) {
        out_x = -1.0;
        out_y = -1.0;
        return;
    }
    out_x = (c[0] * x + c[1] * y + c[2]) / d;
    out_y = (c[3] * x + c[4] * y + c[5]) / d;
}

void polar_of(double dx, double dy, double& radius, double& angle)
{
    radius = std::sqrt(dx * dx + dy * dy);
    angle = std::atan2(dy, dx);
}

void from_polar(int32_t x, int32_t y, int32_t cx, int32_t cy, double scale, double angle_offset,
                int32_t& out_x, int32_t& out_y)
{
    double radius, angle;
    polar_of(static_cast<double>(x) - cx, static_cast<double>(y) - cy, radius, angle);
    radius *= scale;
    angle += angle_offset;
    out_x = SaturatedSum(cx, RoundToInt(radius * std::cos(angle)));
    out_y = SaturatedSum(cy, RoundToInt(radius * std::sin(angle)));
}

}  // namespace lv
