#include "geometry/geometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "geometry/hit_tests.h"
#include "geometry/samplers.h"
#include "image/image.h"
#include "image/pixel.h"

namespace lv {
namespace {

using Bytes = std::vector<uint8_t>;
constexpr double kPi = 3.14159265358979323846;

// Pictures are given row by row from the bottom (row 0) up.
void MakeGray(Image& image, int32_t w, int32_t h, const Bytes& values)
{
    ASSERT_EQ(ImageAlloc(image, kImageGray, w, h, 72.0), 0);
    for (int32_t y = 0; y < h; ++y) std::memcpy(image.rows[y], &values[y * w], w);
}

void MakeColor(Image& image, int32_t w, int32_t h, const Bytes& bgr)
{
    ASSERT_EQ(ImageAlloc(image, kImageColor, w, h, 72.0), 0);
    for (int32_t y = 0; y < h; ++y) std::memcpy(image.rows[y], &bgr[y * w * 3], w * 3);
}

void MakeBinary(Image& image, int32_t w, int32_t h, const Bytes& bits)
{
    ASSERT_EQ(ImageAlloc(image, kImageBinary, w, h, 72.0), 0);
    for (int32_t y = 0; y < h; ++y) {
        std::memset(image.rows[y], 0, image.stride);
        for (int32_t x = 0; x < w; ++x) PutBit(image.rows[y], x, bits[y * w + x]);
    }
}

// --- Solver and perspective ------------------------------------------------

TEST(GeometrySolver, SolvesWithPivotingExactly)
{
    // Column 0 pivots on its last row; every multiplier is a power of two, so
    // the solution comes out exact.
    double a[9] = {1, 1, 2, 2, 1, 1, 4, 4, 4};
    double b[3] = {9, 7, 24};
    ASSERT_EQ(solve_linear(a, 3, b), 0);
    EXPECT_EQ(b[0], 1.0);
    EXPECT_EQ(b[1], 2.0);
    EXPECT_EQ(b[2], 3.0);

    double one[1] = {4};
    double r[1] = {10};
    ASSERT_EQ(solve_linear(one, 1, r), 0);
    EXPECT_EQ(r[0], 2.5);

    // Tiny pivots are not zero: only an exact zero is singular.
    double tiny[4] = {1e-300, 0, 0, 1e-300};
    double t[2] = {1e-300, 2e-300};
    ASSERT_EQ(solve_linear(tiny, 2, t), 0);
    EXPECT_EQ(t[0], 1.0);
    EXPECT_EQ(t[1], 2.0);
}

TEST(GeometrySolver, SingularMatricesGiveOne)
{
    double dependent[4] = {2, 4, 1, 2};  // the second pivot is exactly 0
    double b[2] = {1, 1};
    EXPECT_EQ(solve_linear(dependent, 2, b), 1);
    double emptyColumn[9] = {0, 1, 2, 0, 3, 4, 0, 5, 7};  // fails at the first pivot
    double c[3] = {1, 1, 1};
    EXPECT_EQ(solve_linear(emptyColumn, 3, c), 1);
    double zero[1] = {0};
    EXPECT_EQ(solve_linear(zero, 1, c), 1);
    EXPECT_EQ(solve_linear(zero, 0, c), 1);
}

TEST(GeometryPerspective, FitsASquareOntoAQuadrilateralAndBack)
{
    // The map (2x / (x + 1), y / (x + 1)) takes the unit square to this
    // trapezoid.
    const Point2d square[4] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    const double qx[4] = {0, 1, 1, 0}, qy[4] = {0, 0, 0.5, 1};
    PerspectiveCoeffs forward;
    ASSERT_EQ(perspective_fit(qx, qy, square, forward), 0);
    const double expected[8] = {2, 0, 0, 0, 1, 0, 1, 0};
    for (int k = 0; k < 8; ++k) EXPECT_NEAR(forward.c[k], expected[k], 1e-12) << k;
    double x, y;
    perspective_map(0.5, 0.5, forward, x, y);
    EXPECT_NEAR(x, 2.0 / 3.0, 1e-12);
    EXPECT_NEAR(y, 1.0 / 3.0, 1e-12);

    const Point2d quad[4] = {{0, 0}, {1, 0}, {1, 0.5}, {0, 1}};
    const double sx[4] = {0, 1, 1, 0}, sy[4] = {0, 0, 1, 1};
    PerspectiveCoeffs back;
    ASSERT_EQ(perspective_fit(sx, sy, quad, back), 0);
    for (int i = 0; i < 4; ++i) {
        perspective_map(quad[i].x, quad[i].y, back, x, y);
        EXPECT_NEAR(x, sx[i], 1e-12) << i;
        EXPECT_NEAR(y, sy[i], 1e-12) << i;
    }
    perspective_map(2.0 / 3.0, 1.0 / 3.0, back, x, y);
    EXPECT_NEAR(x, 0.5, 1e-12);
    EXPECT_NEAR(y, 0.5, 1e-12);
}

TEST(GeometryPerspective, CollinearSourcesAndTheVanishingLine)
{
    const Point2d line[4] = {{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    const double tx[4] = {0, 1, 1, 0}, ty[4] = {0, 0, 1, 1};
    PerspectiveCoeffs coeffs;
    coeffs.c[0] = 7.0;
    EXPECT_EQ(perspective_fit(tx, ty, line, coeffs), 80);
    EXPECT_EQ(coeffs.c[0], 7.0);  // left as it was

    PerspectiveCoeffs vanishing;
    vanishing.c[0] = 1.0;
    vanishing.c[4] = 1.0;
    vanishing.c[6] = 1.0;  // d = x + 1
    double x, y;
    perspective_map(-1.0, 5.0, vanishing, x, y);
    EXPECT_EQ(x, -1.0);
    EXPECT_EQ(y, -1.0);
    perspective_map(-1.0 + 5e-7, 5.0, vanishing, x, y);
    EXPECT_EQ(x, -1.0);
    EXPECT_EQ(y, -1.0);
    perspective_map(-3.0, 4.0, vanishing, x, y);  // d = -2 still maps
    EXPECT_EQ(x, 1.5);
    EXPECT_EQ(y, -2.0);
}

// --- Scan-line samplers ----------------------------------------------------

class GeometryScan : public ::testing::Test {
protected:
    void SetUp() override
    {
        MakeGray(gray, 3, 2, {10, 50, 90, 130, 170, 210});
        MakeColor(color, 2, 2, {0, 10, 200, 255, 50, 100, 0, 130, 0, 255, 170, 40});
        MakeBinary(binary, 3, 2, {1, 0, 1, 0, 1, 1});
    }
    Image gray, color, binary;
    int32_t first = 99, last = 99;
};

TEST_F(GeometryScan, GrayBlendsInsideAndFadesAcrossTheFringe)
{
    // Cells -2 (outside), -1 (fringe), 0, 1 (inside), 2 (fringe), 3 (outside).
    Bytes out(6);
    scan_gray(gray, -1.5, 0.5, 3.5, 0.5, out.data(), 6, 0, first, last);
    EXPECT_EQ(out, Bytes({0, 35, 90, 130, 75, 0}));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 4);
    scan_gray(gray, -1.5, 0.5, 3.5, 0.5, out.data(), 6, 200, first, last);
    EXPECT_EQ(out, Bytes({200, 135, 90, 130, 175, 200}));

    // Whole steps from the first pixel to the last column, which is on the
    // fringe and, with no fraction, exactly that pixel.
    Bytes five(5);
    scan_gray(gray, 0, 0, 2, 0, five.data(), 5, 0, first, last);
    EXPECT_EQ(five, Bytes({10, 30, 50, 70, 90}));
    EXPECT_EQ(last, 4);

    // One pixel: no step, the start is sampled.
    scan_gray(gray, 1, 0, 2, 1, out.data(), 1, 0, first, last);
    EXPECT_EQ(out[0], 50);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 0);
    scan_gray(gray, 2, 1, 0, 0, out.data(), 1, 0, first, last);
    EXPECT_EQ(out[0], 210);  // the top right corner
    // -0.25 is cell -1 with fraction 0xC000: a weight of 192 towards pixel 0.
    scan_gray(gray, -0.25, 0, 0, 0, out.data(), 1, 0, first, last);
    EXPECT_EQ(out[0], 8);
}

TEST_F(GeometryScan, GrayCoverageKeepsThePicturesOwnLevels)
{
    Bytes out(6), cover(6);
    scan_gray_alpha(gray, -1.5, 0.5, 3.5, 0.5, out.data(), cover.data(), 6, 0, first, last);
    EXPECT_EQ(out, Bytes({0, 70, 90, 130, 150, 0}));
    EXPECT_EQ(cover, Bytes({0, 128, 255, 255, 127, 0}));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 4);
    scan_gray_alpha(gray, 2, 1, 2, 1, out.data(), cover.data(), 1, 0, first, last);
    EXPECT_EQ(out[0], 210);
    EXPECT_EQ(cover[0], 255);  // on the fringe, but with no fraction
}

TEST_F(GeometryScan, ColorBlendsEachChannel)
{
    Bytes out(12);
    scan_color(color, 0, 0, 1.5, 0.75, out.data(), 4, 0, first, last);
    EXPECT_EQ(out, Bytes({0, 10, 200, 128, 60, 117, 255, 110, 70, 127, 70, 27}));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 3);

    Bytes cover(4);
    scan_color_alpha(color, 0, 0, 1.5, 0.75, out.data(), cover.data(), 4, 0, first, last);
    EXPECT_EQ(out, Bytes({0, 10, 200, 128, 60, 117, 255, 110, 70, 255, 140, 55}));
    EXPECT_EQ(cover, Bytes({255, 255, 255, 127}));

    scan_color(color, 5, 5, 9, 9, out.data(), 1, 99, first, last);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 3), Bytes({99, 99, 99}));
    EXPECT_EQ(first, -1);
    EXPECT_EQ(last, -1);
    scan_color_alpha(color, -3, 0, -3, 0, out.data(), cover.data(), 1, 99, first, last);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 3), Bytes({99, 99, 99}));
    EXPECT_EQ(cover[0], 0);
    EXPECT_EQ(first, -1);
}

TEST_F(GeometryScan, BinaryNearestIntoBitsAndBytes)
{
    // Cells (-1, 0) outside, (0, 0), (1, 0) (a half rounds down), (2, 1), (3, 1)
    // outside. The bits past n keep their values.
    uint8_t bits[1] = {0x07};
    scan_nearest_binary(binary, -1, 0, 3, 1, bits, 5, 128, first, last);
    EXPECT_EQ(bits[0], 0xDF);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 3);
    bits[0] = 0x07;
    scan_nearest_binary(binary, -1, 0, 3, 1, bits, 5, 127, first, last);
    EXPECT_EQ(bits[0], 0x57);

    Bytes out(5);
    scan_nearest_binary_gray(binary, -1, 0, 3, 1, out.data(), 5, 77, first, last);
    EXPECT_EQ(out, Bytes({77, 255, 0, 255, 77}));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 3);
}

TEST_F(GeometryScan, NearestHalvesAndTheOnceRoundedStep)
{
    Image pair;
    MakeBinary(pair, 2, 1, {0, 1});
    const double tick = 1.0 / 65536.0;
    uint8_t v = 0;
    scan_nearest_binary_gray(pair, 0.5, 0, 0.5, 0, &v, 1, 9, first, last);
    EXPECT_EQ(v, 0);  // exactly one half stays
    scan_nearest_binary_gray(pair, 0.5 + tick, 0, 0.5 + tick, 0, &v, 1, 9, first, last);
    EXPECT_EQ(v, 255);
    scan_nearest_binary_gray(pair, -0.5, 0, -0.5, 0, &v, 1, 9, first, last);
    EXPECT_EQ(v, 9);
    scan_nearest_binary_gray(pair, -0.5 + tick, 0, 0, 0, &v, 1, 9, first, last);
    EXPECT_EQ(v, 0);  // cell -1, fraction 32769: rounds up into column 0

    // The end lies past the half, but the step 32799 / 100 truncates to 327
    // and the walk stops at 32700.
    Bytes out(101);
    scan_nearest_binary_gray(pair, 0, 0, 32799 * tick, 0, out.data(), 101, 9, first, last);
    EXPECT_EQ(out, Bytes(101, 0));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 100);
}

TEST_F(GeometryScan, BinaryCoverageTakesTheNearestBitInside)
{
    Bytes out(4), cover(4);
    scan_binary_alpha(binary, -0.5, 0.5, 2.5, 0.5, out.data(), cover.data(), 4, 0, first, last);
    EXPECT_EQ(out, Bytes({127, 255, 0, 255}));
    EXPECT_EQ(cover, Bytes({128, 255, 255, 127}));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 3);
    scan_binary_alpha(binary, -2, 0, -2, 0, out.data(), cover.data(), 1, 60, first, last);
    EXPECT_EQ(out[0], 60);
    EXPECT_EQ(cover[0], 0);
    EXPECT_EQ(first, -1);
}

TEST_F(GeometryScan, OnePixelPicturesAndOtherKinds)
{
    Image dot;
    MakeGray(dot, 1, 1, {200});
    uint8_t v = 0;
    scan_gray(dot, 0.5, 0, 0.5, 0, &v, 1, 0, first, last);
    EXPECT_EQ(v, 100);
    // Cell -1 reads the picture with coverage 0 and still counts as touched.
    Bytes out(3), cover(3);
    scan_gray_alpha(dot, -1, 0, 1, 0, out.data(), cover.data(), 3, 0, first, last);
    EXPECT_EQ(out, Bytes({200, 200, 0}));
    EXPECT_EQ(cover, Bytes({0, 255, 0}));
    EXPECT_EQ(first, 0);
    EXPECT_EQ(last, 1);

    // A source of another kind reads as outside.
    scan_gray(binary, 0, 0, 1, 0, out.data(), 3, 44, first, last);
    EXPECT_EQ(out, Bytes({44, 44, 44}));
    EXPECT_EQ(first, -1);
    EXPECT_EQ(last, -1);
    scan_color_alpha(gray, 0, 0, 0, 0, out.data(), cover.data(), 1, 44, first, last);
    EXPECT_EQ(Bytes(out.begin(), out.begin() + 3), Bytes({44, 44, 44}));
    EXPECT_EQ(cover[0], 0);
    scan_gray(gray, std::nan(""), 0, 1, 0, out.data(), 3, 5, first, last);
    EXPECT_EQ(out, Bytes({5, 5, 5}));
    // A line of absurd length is walked without overflow; its middle is (0, 0).
    scan_gray(gray, -1e300, 0, 1e300, 0, out.data(), 3, 5, first, last);
    EXPECT_EQ(out, Bytes({5, 10, 5}));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(last, 1);
}

// --- Point samplers --------------------------------------------------------

// --- Hit tests and clipping ------------------------------------------------

TEST(GeometryHitTests, DistancesAndRadii)
{
    EXPECT_EQ(distance2_to_segment(2, 3, 0, 0, 10, 0), 9.0);
    EXPECT_EQ(distance2_to_segment(0, 4, 0, 0, 4, 4), 8.0);
    EXPECT_EQ(distance2_to_segment(13, 4, 0, 0, 10, 0), 25.0);  // past b
    EXPECT_EQ(distance2_to_segment(-1, 1, 0, 0, 10, 0), 2.0);   // before a
    EXPECT_EQ(distance2_to_segment(3, 4, 1, 1, 1, 1), 13.0);    // no length

    EXPECT_FALSE(near_segment(5, 4, 0, 0, 10, 0, 4));  // exactly 4 away
    EXPECT_TRUE(near_segment(5, 3.9, 0, 0, 10, 0, 4));
    EXPECT_FALSE(near_segment(-4, 0, 0, 0, 10, 0, 4));
    EXPECT_TRUE(near_segment(13, 2, 0, 0, 10, 0, 4));

    EXPECT_FALSE(near_point(14, 10, 10, 10, 4));
    EXPECT_TRUE(near_point(13, 12, 10, 10, 4));
    EXPECT_FALSE(near_point(13, 13, 10, 10, 4));
    EXPECT_TRUE(near_point(10, 7, 10, 10, 4));
    EXPECT_FALSE(near_point(10, 10, 10, 10, 0));
    EXPECT_FALSE(near_point(INT32_MIN, 0, INT32_MAX, 0, INT32_MAX));
    EXPECT_TRUE(near_point(INT32_MAX - 1, INT32_MAX - 1, INT32_MAX, INT32_MAX, 2));

    EXPECT_TRUE(in_box(0, 0, 5, 5, 0, 0));
    EXPECT_TRUE(in_box(5, 5, 5, 5, 0, 0));
    EXPECT_TRUE(in_box(5, 0, 0, 5, 5, 0));
    EXPECT_FALSE(in_box(5.001, 2, 0, 0, 5, 5));
    EXPECT_FALSE(in_box(2, -0.001, 0, 0, 5, 5));
}

TEST(GeometryHitTests, QuadrilateralsByTheUpwardRay)
{
    auto square = [](double x, double y) { return in_quad(x, y, 0, 0, 10, 0, 10, 10, 0, 10); };
    EXPECT_TRUE(square(5, 5));
    EXPECT_FALSE(square(5, 11));
    EXPECT_FALSE(square(11, 5));
    // On the rules' own edges: the top edge is inside, the bottom and the
    // sides are not; of the corners, the two bottom ones are inside.
    EXPECT_TRUE(square(5, 10));
    EXPECT_FALSE(square(5, 0));
    EXPECT_FALSE(square(0, 5));
    EXPECT_FALSE(square(10, 5));
    EXPECT_TRUE(square(0, 0));
    EXPECT_TRUE(square(10, 0));
    EXPECT_FALSE(square(0, 10));
    EXPECT_FALSE(square(10, 10));

    // A slanted top edge from (10, 10) to (0, 5) is at height 7 over x = 4.
    auto slanted = [](double x, double y) { return in_quad(x, y, 0, 0, 10, 0, 10, 10, 0, 5); };
    EXPECT_TRUE(slanted(4, 7));
    EXPECT_TRUE(slanted(4, 6.99));
    EXPECT_FALSE(slanted(4, 7.01));
}

TEST(GeometryHitTests, PolygonsInIntegers)
{
    auto in = [](int32_t x, int32_t y, std::vector<int32_t> xs, std::vector<int32_t> ys) {
        return in_polygon(x, y, static_cast<int32_t>(xs.size()), xs.data(), ys.data());
    };
    const std::vector<int32_t> sx{0, 10, 10, 0}, sy{0, 0, 10, 10};
    EXPECT_TRUE(in(5, 5, sx, sy));
    EXPECT_TRUE(in(5, 10, sx, sy));
    EXPECT_FALSE(in(5, 0, sx, sy));
    EXPECT_FALSE(in(0, 5, sx, sy));
    EXPECT_TRUE(in(0, 0, sx, sy));
    EXPECT_FALSE(in(10, 10, sx, sy));
    EXPECT_FALSE(in(11, 5, sx, sy));

    // The edge (0, 0)-(3, 2) is at 2 / 3 over x = 1, which truncates to 0.
    const std::vector<int32_t> ax{0, 3, 3, 0}, ay{0, 2, 10, 10};
    EXPECT_FALSE(in(1, 0, ax, ay));
    EXPECT_TRUE(in(1, 1, ax, ay));
    EXPECT_FALSE(in(2, 1, ax, ay));  // 4 / 3 truncates to 1: on the edge
    // (0, 2)-(3, 0) is at 2 - 2 / 3 over x = 1: towards zero, 2.
    const std::vector<int32_t> bx{0, 3, 3, 0}, by{2, 0, -10, -10};
    EXPECT_TRUE(in(1, 2, bx, by));
    EXPECT_FALSE(in(1, 3, bx, by));

    // Spans of the whole 32-bit range.
    const std::vector<int32_t> wx{INT32_MIN, INT32_MAX, INT32_MIN};
    const std::vector<int32_t> wy{INT32_MIN, INT32_MAX, INT32_MAX};
    EXPECT_TRUE(in(0, 1, wx, wy));
    EXPECT_FALSE(in(0, -1, wx, wy));
    EXPECT_FALSE(in(INT32_MAX, 0, wx, wy));
    EXPECT_TRUE(in(INT32_MAX - 1, INT32_MAX, wx, wy));
    EXPECT_FALSE(in(0, 0, {}, {}));
}

TEST(GeometryHitTests, ClipsLeftRightBottomTop)
{
    double a, b, c, d;
    auto clip = [&](double x0, double y0, double x1, double y1) {
        a = b = c = d = -99;
        return clip_line_to_box(x0, y0, x1, y1, 0, 0, 10, 10, a, b, c, d);
    };
    ASSERT_EQ(clip(1, 1, 9, 9), 1);
    EXPECT_EQ(std::vector<double>({a, b, c, d}), std::vector<double>({1, 1, 9, 9}));
    ASSERT_EQ(clip(-5, 0, 15, 10), 1);
    EXPECT_EQ(std::vector<double>({a, b, c, d}), std::vector<double>({0, 2.5, 10, 7.5}));
    ASSERT_EQ(clip(2, -10, 6, 30), 1);
    EXPECT_EQ(std::vector<double>({a, b, c, d}), std::vector<double>({3, 0, 4, 10}));
    ASSERT_EQ(clip(0, -5, 0, 5), 1);  // along the left edge
    EXPECT_EQ(std::vector<double>({a, b, c, d}), std::vector<double>({0, 0, 0, 5}));
    ASSERT_EQ(clip(-2, 8, 2, 12), 1);  // through the corner only
    EXPECT_EQ(std::vector<double>({a, b, c, d}), std::vector<double>({0, 10, 0, 10}));

    EXPECT_EQ(clip(-5, 1, -1, 9), 0);
    EXPECT_EQ(a, -99.0);                 // untouched
    EXPECT_EQ(clip(-5, 20, 15, 12), 0);  // crosses left and right, then above the top
    EXPECT_EQ(clip(-3, 8, 1, 14), 0);    // passes outside the corner

    // Limits given the other way round are the same box.
    ASSERT_EQ(clip_line_to_box(-5, 0, 15, 10, 10, 10, 0, 0, a, b, c, d), 1);
    EXPECT_EQ(std::vector<double>({a, b, c, d}), std::vector<double>({0, 2.5, 10, 7.5}));
}

// --- Polar coordinates -----------------------------------------------------

TEST(GeometryPolar, RoundTripsTurnsAndRounding)
{
    double radius, angle;
    polar_of(3, 4, radius, angle);
    EXPECT_EQ(radius, 5.0);
    polar_of(-1, 0, radius, angle);
    EXPECT_EQ(angle, kPi);
    polar_of(0, -2, radius, angle);
    EXPECT_EQ(radius, 2.0);
    EXPECT_EQ(angle, -kPi / 2);

    int32_t x, y;
    const int32_t points[][2] = {{7, -3}, {2, 5}, {-40, 100}, {2, -1000}};
    for (const auto& p : points) {
        from_polar(p[0], p[1], 2, 5, 1.0, 0.0, x, y);
        EXPECT_EQ(x, p[0]);
        EXPECT_EQ(y, p[1]);
    }
    from_polar(12, 5, 2, 5, 1.0, kPi / 2, x, y);  // a quarter turn
    EXPECT_EQ(x, 2);
    EXPECT_EQ(y, 15);
    from_polar(12, 5, 2, 5, 2.0, kPi, x, y);  // half a turn, twice as far
    EXPECT_EQ(x, -18);
    EXPECT_EQ(y, 5);
    // 1.5 either way rounds away from zero.
    from_polar(3, 0, 0, 0, 0.5, 0.0, x, y);
    EXPECT_EQ(x, 2);
    from_polar(-3, 0, 0, 0, 0.5, 0.0, x, y);
    EXPECT_EQ(x, -2);
    EXPECT_EQ(y, 0);
    from_polar(INT32_MAX, 0, 0, 0, 4.0, 0.0, x, y);
    EXPECT_EQ(x, INT32_MAX);
}

}  // namespace
}  // namespace lv
