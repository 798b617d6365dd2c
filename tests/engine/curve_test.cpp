#include "tone/curves/curve.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>

#include <unistd.h>

#include "shell/errors.h"

namespace lv {
namespace {

using Table = std::array<uint8_t, 256>;

Curve Make(std::initializer_list<std::pair<int32_t, int32_t>> points, int32_t style)
{
    Curve c;
    c.count = 0;
    for (auto [x, y] : points) {
        c.x[c.count] = x;
        c.y[c.count++] = y;
    }
    c.style = style;
    return c;
}

Table Build(std::initializer_list<std::pair<int32_t, int32_t>> points, int32_t style)
{
    Table t{};
    EXPECT_EQ(build_curve_table(Make(points, style), t.data()), 0);
    return t;
}

TEST(CurveTable, StepLinearAndTwoPointSpline)
{
    for (int32_t style : {kCurveLinear, kCurveSpline}) {
        Table t = Build({{0, 0}, {255, 255}}, style);
        for (int32_t i = 0; i < 256; ++i) ASSERT_EQ(t[i], i) << "style " << style;
    }
    // Step: the last point's y holds only from its own x.
    Table stair = Build({{0, 0}, {255, 255}}, kCurveStep);
    EXPECT_EQ(stair[254], 0);
    EXPECT_EQ(stair[255], 255);
    Table step = Build({{0, 10}, {100, 50}, {200, 90}}, kCurveStep);
    EXPECT_EQ(step[99], 10);
    EXPECT_EQ(step[100], 50);
    EXPECT_EQ(step[199], 50);

    // Flat outside the points, at the end points' y.
    for (int32_t style : {kCurveStep, kCurveLinear, kCurveSpline}) {
        Table t = Build({{50, 20}, {200, 220}}, style);
        EXPECT_EQ(t[0], 20);
        EXPECT_EQ(t[125], style == kCurveStep ? 20 : 120);
        EXPECT_EQ(t[199], style == kCurveStep ? 20 : 219);
        EXPECT_EQ(t[255], 220);
    }
}

TEST(CurveTable, PowerCurveAndItsFlatGuard)
{
    // a = 1/2, b = 1/4: exponent 1/2, entries round(sqrt(i / 252) * 254).
    Table up = Build({{0, 0}, {63, 127}, {252, 254}}, kCurveSpline);
    EXPECT_EQ(up[7], 42);
    EXPECT_EQ(up[28], 85);
    EXPECT_EQ(up[112], 169);
    EXPECT_EQ(up[255], 254);
    Table down = Build({{0, 254}, {63, 127}, {252, 0}}, kCurveSpline);
    EXPECT_EQ(down[28], 169);  // 254 - 84.67, rounded away from zero

    // Middle y equal to an end's: a flat segment, then the cubic 2w^2 - w^3,
    // not a jump at the far end.
    Table flat = Build({{0, 0}, {128, 0}, {255, 255}}, kCurveSpline);
    for (int32_t i = 0; i <= 128; ++i) ASSERT_EQ(flat[i], 0);
    EXPECT_EQ(flat[192], 97);
    EXPECT_EQ(flat[254], 253);
}

TEST(CurveTable, MonotoneSpline)
{
    // A middle y above both ends: the general cubic, flat at the peak.
    Table peak = Build({{0, 0}, {128, 255}, {255, 0}}, kCurveSpline);
    EXPECT_EQ(peak[64], 159);  // (1 - u)(1 + u - u^2) at u = 1/2
    EXPECT_EQ(peak[128], 255);
    for (int32_t i = 1; i <= 128; ++i) ASSERT_GE(peak[i], peak[i - 1]);

    Table plateau = Build({{0, 0}, {100, 100}, {150, 100}, {255, 255}}, kCurveSpline);
    for (int32_t i = 100; i <= 150; ++i) ASSERT_EQ(plateau[i], 100);

    // Sharp zigzags never leave the range of each segment's ends.
    Curve zig = Make({{0, 0}, {10, 255}, {20, 0}, {22, 255}, {40, 250}, {255, 0}}, kCurveSpline);
    Table z{};
    ASSERT_EQ(build_curve_table(zig, z.data()), 0);
    for (int32_t k = 0; k + 1 < zig.count; ++k) {
        for (int32_t i = zig.x[k]; i <= zig.x[k + 1]; ++i) {
            ASSERT_GE(z[i], std::min(zig.y[k], zig.y[k + 1])) << i;
            ASSERT_LE(z[i], std::max(zig.y[k], zig.y[k + 1])) << i;
        }
    }

    // Illegal lists give 41 and leave the table alone.
    Table keep{7};
    EXPECT_EQ(build_curve_table(Make({{0, 0}}, kCurveLinear), keep.data()), kErrCurveBuild);
    EXPECT_EQ(build_curve_table(Make({{10, 0}, {10, 5}}, kCurveSpline), keep.data()), 41);
    EXPECT_EQ(build_curve_table(Make({{0, 0}, {9, 300}}, kCurveStep), keep.data()), 41);
    EXPECT_EQ(keep[0], 7);
}

TEST(CurveEdit, PointsAndBackdrop)
{
    Curve c;
    EXPECT_EQ(CurveInsertPoint(c, 100, 300), 1);  // y clamped to 255
    EXPECT_EQ(CurveInsertPoint(c, 100, 5), -1);   // x taken
    EXPECT_EQ(CurveInsertionY(c, 50), 127);       // 255 * 50 / 100
    EXPECT_EQ(CurveInsertPoint(c, 101, 0), 2);
    CurveMovePoint(c, 1, 200, -4);  // held by the neighbour at 101
    EXPECT_EQ(c.x[1], 100);
    EXPECT_EQ(c.y[1], 0);
    EXPECT_EQ(CurveInsertPoint(c, 99, 0), 1);
    EXPECT_TRUE(CurvePointWedged(c, 2));
    while (c.count < kCurveMaxPoints) ASSERT_GE(CurveInsertPoint(c, 150 + c.count, 9), 0);
    EXPECT_EQ(CurveInsertPoint(c, 240, 9), -1);  // the 65th
    EXPECT_TRUE(CurveIsLegal(c));
    Curve two;
    EXPECT_FALSE(CurveDeletePoint(two, 0));

    HistogramRecord r, g, b;
    r.counts[10] = 5;
    g.counts[10] = 8;
    b.counts[200] = 3;
    CurveHistograms h;
    CurveSetHistograms(h, &r, &g, &b);
    EXPECT_EQ(h.inputPeak, 8);
    Table table;
    for (int32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
    table[200] = 10;  // blue's 200 joins the others at 10
    CurvePushHistograms(h, table.data());
    EXPECT_EQ(h.outputChannel[2][10], 3);
    EXPECT_EQ(h.output[10], 8);
    CurveSetHistograms(h, &r, nullptr, &b);
    CurvePushHistograms(h, table.data());
    EXPECT_EQ(h.mode, 1);
    EXPECT_EQ(h.output[10], 5);
    EXPECT_EQ(log_scale(0), 1);
    EXPECT_EQ(log_scale(1), 128 + 1 + 75);  // 128 log2(1.5) = 74.87
}

std::string TempPath(const std::string& name)
{
    return (std::filesystem::temp_directory_path() /
            ("lv_curve_" + std::to_string(::getpid()) + "_" + name))
        .string();
}

std::string WriteFile(const std::string& bytes)
{
    std::string path = TempPath("t.crv");
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

TEST(CurveFile, RoundTripAndAnyOrder)
{
    std::string path = TempPath("a.crv");
    ASSERT_EQ(CurveWrite(path, Make({{0, 255}, {40, 10}, {255, 3}}, kCurveLinear)), 0);
    std::stringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    EXPECT_EQ(text.str(),
              "Curve 1.0\r\nnpts 3\r\nstyle linear\r\npoint 0 0 255\r\npoint 1 40 10\r\n"
              "point 2 255 3\r\nend\r\n");
    // An illegal curve is not written: the old file stays.
    EXPECT_EQ(CurveWrite(path, Make({{9, 0}, {9, 1}}, kCurveStep)), kErrCurveFile);
    Curve back;
    ASSERT_EQ(CurveRead(path, back), 0);
    EXPECT_EQ(back.count, 3);
    EXPECT_EQ(back.style, kCurveLinear);
    EXPECT_EQ(back.x[1], 40);
    EXPECT_EQ(back.y[2], 3);
    std::filesystem::remove(path);

    ASSERT_EQ(CurveRead(WriteFile("Curve 1.0\n\npoint 1 9 9\nstyle step\npoint 0 1 2\nnpts 2\nend"
                                  "\n"),
                        back),
              0);
    EXPECT_EQ(back.style, kCurveStep);
    EXPECT_EQ(back.x[0], 1);
}

TEST(CurveFile, IllegalFilesAreRefused)
{
    const std::string body = "npts 2\nstyle spline\npoint 0 0 0\npoint 1 255 255\nend\n";
    const std::string files[] = {
        "Curv 1.0\n" + body,
        "Curve 1.1\n" + body,
        "Curve 1.0\ncolor 3\n" + body,
        "Curve 1.0\nstyle smooth\n" + body,
        "Curve 1.0\nnpts 65\n" + body,
        "Curve 1.0\npoint 64 1 1\n" + body,
        "Curve 1.0\npoint 2 1 1\n" + body,
        "Curve 1.0\nnpts 1\npoint 0 0 0\nend\n",
        "Curve 1.0\nnpts 3\npoint 0 0 0\npoint 1 9 9\nend\n",
        "Curve 1.0\nnpts 2\npoint 0 9 0\npoint 1 9 9\nend\n",
        "Curve 1.0\nnpts 2\npoint 0 0 0\npoint 1 9 256\nend\n",
        "Curve 1.0\nnpts 2\npoint 0 0 0\npoint 1 9 9\n",
    };
    for (const std::string& file : files) {
        Curve c = Make({{3, 4}, {5, 6}}, kCurveStep);
        EXPECT_EQ(CurveRead(WriteFile(file), c), kErrCurveFile) << file;
        EXPECT_EQ(c.x[0], 3);
    }
    std::filesystem::remove(TempPath("t.crv"));
}

}  // namespace
}  // namespace lv
