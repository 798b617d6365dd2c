// The tone curve engine: a list of up to 64 control points that becomes a
// 256-entry lookup table, the ".crv" file that stores such a list, the edits
// the Curve control makes to it, and the histogram backdrop drawn behind it.
// Brightness Curve, Color Curves, the Mask Tool and the monitor calibration
// all build their tables here.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "tone/histogram.h"

namespace lv {

inline constexpr int32_t kCurveMaxPoints = 64;
inline constexpr int32_t kCurveMinPoints = 2;

// The code a curve list that cannot be built gives ("Error generating spline
// curve"). A legal list never gives it.
inline constexpr int32_t kErrCurveBuild = 41;

enum CurveStyle : int32_t {
    kCurveStep = 0,
    kCurveLinear = 1,
    kCurveSpline = 2,  // a power curve for three suitable points, else a monotone cubic
};

// One curve. `x` is strictly increasing, `x` and `y` are 0..255, `count` is
// 2..64; entries at `count` and beyond mean nothing. The default is the
// identity: (0, 0) and (255, 255) in spline style.
struct Curve {
    int32_t count = 2;
    int32_t x[kCurveMaxPoints] = {0, 255};
    int32_t y[kCurveMaxPoints] = {0, 255};
    int32_t style = kCurveSpline;
};

// True when `count`, `style`, the ranges and the order of `x` are as above.
bool CurveIsLegal(const Curve& curve);

// Fills `table` from the curve. Returns 0, or 41 for a list that is not
// legal (the table is then left as it was).
int32_t build_curve_table(const Curve& curve, uint8_t table[256]);

// ".crv" files: "Curve 1.0", "npts", "style", "point i x y", "end".
// CurveRead returns 0; 4 or 5 when the file cannot be opened or read; 16 for
// a file that is not a legal curve, including points missing, out of range
// or not increasing in x. On failure `curve` is left as it was.
int32_t CurveRead(const std::string& path, Curve& curve);
// Returns 0; 3, 6 or 37 from the writer (the old file then stays as it
// was); 16 when `curve` is not legal, with nothing written.
int32_t CurveWrite(const std::string& path, const Curve& curve);

// Edits made by the Curve control; each keeps the list legal.

// Back to the identity in spline style ("&Reset").
void CurveReset(Curve& curve);
// Each y becomes 255 - y; x stays ("&Invert").
void CurveInvert(Curve& curve);
// Inserts (x, y) in x order, y clamped to 0..255. Returns the new point's
// index, or -1 when refused: 64 points already, x outside 0..255, or a point
// already at x.
int32_t CurveInsertPoint(Curve& curve, int32_t x, int32_t y);
// The y a point inserted at x takes in the histogram view: 0 before the
// first point, 255 after the last, else the integer interpolation of the
// segment around x (truncating).
int32_t CurveInsertionY(const Curve& curve, int32_t x);
// Deletes point `index`. False (nothing changes) when only two points are
// left or the index is out of range.
bool CurveDeletePoint(Curve& curve, int32_t index);
// The x range point `index` may move in: from the left neighbour's x + 1 to
// the right neighbour's x - 1, 0 and 255 at the ends.
void CurvePointLimits(const Curve& curve, int32_t index, int32_t& low, int32_t& high);
// True when the point cannot move in x at all (neighbours one level away).
bool CurvePointWedged(const Curve& curve, int32_t index);
// Moves point `index` to (x, y), x held within CurvePointLimits and y within
// 0..255. A drag of y alone passes the point's own x, and the other way.
void CurveMovePoint(Curve& curve, int32_t index, int32_t x, int32_t y);

// The backdrop behind the curve: the input histogram and the input
// histogram pushed through the table. Channel records are not owned.
struct CurveHistograms {
    int32_t mode = 0;  // 0 none, 1 one channel, 2 three channels
    const HistogramRecord* channel[3] = {};
    int32_t input[256] = {};
    int32_t inputPeak = 0;
    int32_t output[256] = {};
    int32_t outputPeak = 0;
    int32_t outputChannel[3][256] = {};
};

// Takes new channel records: no `r` gives mode 0, no `g` or `b` mode 1 (only
// `r` counts), else mode 2. Fills `input` (a copy of `r` in mode 1, the
// largest of the three counts at each level in mode 2) and `inputPeak`, its
// largest entry.
void CurveSetHistograms(CurveHistograms& h, const HistogramRecord* r, const HistogramRecord* g,
                        const HistogramRecord* b);
// Pushes the input through `table`: each count of level i adds to
// output[table[i]] (per channel in mode 2, `output` then the largest of the
// three). Sums saturate at the 32-bit limit. Mode 0 does nothing.
void CurvePushHistograms(CurveHistograms& h, const uint8_t table[256]);

// The log scale for drawing counts: bit length b of n, n brought to 7 bits,
// then b * 128 + 1 + LogTable[that]. A count of 0 (or below) gives 1.
int32_t log_scale(int32_t n);
// LogTable[i] = RoundToInt(128 * log2(1 + i / 128)).
extern const std::array<uint8_t, 128> LogTable;

}  // namespace lv
