#include "tone/curves/curve.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/paramfile.h"
#include "shell/text.h"

namespace lv {

namespace {

constexpr double kTolerance = 1e-10;

// The normal coordinates of the points: t from 0 at the first x to 1 at the
// last, v = y / 255.
struct Normal {
    double t[kCurveMaxPoints];
    double v[kCurveMaxPoints];
};

void Normalize(const Curve& c, Normal& n)
{
    const double x0 = c.x[0];
    const double span = c.x[c.count - 1] - x0;
    for (int32_t i = 0; i < c.count; ++i) {
        n.t[i] = (c.x[i] - x0) / span;
        n.v[i] = c.y[i] / 255.0;
    }
}

uint8_t ToByte(double value) { return static_cast<uint8_t>(Clamp8(RoundToInt(value * 255.0))); }

// Step and broken line.
void BuildPiecewise(const Curve& c, uint8_t table[256])
{
    Normal n;
    Normalize(c, n);
    const int32_t last = c.count - 1;
    const double x0 = c.x[0];
    const double span = c.x[last] - x0;
    int32_t k = -1;  // the segment from point k to k + 1; -1 ends at the first point
    for (int32_t i = 0; i < 256; ++i) {
        if (i < c.x[0]) {
            table[i] = static_cast<uint8_t>(c.y[0]);
            continue;
        }
        // The last point holds from its own x on, in both styles.
        if (i >= c.x[last]) {
            table[i] = static_cast<uint8_t>(c.y[last]);
            continue;
        }
        const double t = (i - x0) / span;
        while (k + 2 <= last && t >= n.t[k + 1]) ++k;
        double value = n.v[k];
        if (c.style == kCurveLinear) {
            value = n.v[k] + (n.v[k + 1] - n.v[k]) * (t - n.t[k]) / (n.t[k + 1] - n.t[k]);
        }
        table[i] = ToByte(value);
    }
}

// Three points whose middle y lies strictly between the two different outer
// ones make a power curve through all three: one dragged point gives a gamma.
// A middle y equal to an end's would need an exponent of 0 or infinity, a
// jump at one end; such a list goes to the cubic, which keeps the segment
// between the equal points flat.
bool IsPowerCurve(const Curve& c)
{
    if (c.count != 3) return false;
    const int32_t lo = std::min(c.y[0], c.y[2]);
    const int32_t hi = std::max(c.y[0], c.y[2]);
    return lo != hi && c.y[1] > lo && c.y[1] < hi;
}

void BuildPower(const Curve& c, uint8_t table[256])
{
    const double a = static_cast<double>(c.y[1] - c.y[0]) / (c.y[2] - c.y[0]);
    const double b = static_cast<double>(c.x[1] - c.x[0]) / (c.x[2] - c.x[0]);
    const double e = std::log(a) / std::log(b);
    const double rise = c.y[2] - c.y[0];
    for (int32_t i = 0; i < 256; ++i) {
        int32_t value;
        if (i < c.x[0]) {
            value = c.y[0];
        } else if (i > c.x[2]) {
            value = c.y[2];
        } else {
            const double u = static_cast<double>(i - c.x[0]) / (c.x[2] - c.x[0]);
            value = c.y[0] + RoundToInt(std::pow(u, e) * rise);
        }
        table[i] = static_cast<uint8_t>(Clamp8(value));
    }
}

// The slopes of a monotone piecewise cubic through the normal points.
void SplineSlopes(const Normal& p, int32_t n, double m[])
{
    double s[kCurveMaxPoints] = {};
    for (int32_t i = 0; i + 1 < n; ++i) s[i] = (p.v[i + 1] - p.v[i]) / (p.t[i + 1] - p.t[i]);
    if (n == 2) {
        m[0] = m[1] = s[0];
        return;
    }
    m[0] = s[0];
    m[n - 1] = s[n - 2];
    for (int32_t i = 1; i < n - 1; ++i) m[i] = (s[i] + s[i - 1]) / 2.0;

    // Flat secants give flat ends; a change of direction gives a flat top.
    for (int32_t i = 0; i <= n - 3; ++i) {
        if (std::fabs(s[i]) > kTolerance) {
            if (s[i] * s[i + 1] < 0.0) m[i + 1] = 0.0;
        } else {
            m[i] = 0.0;
            m[i + 1] = 0.0;
        }
    }
    if (std::fabs(s[n - 2]) <= kTolerance) m[n - 2] = m[n - 1] = 0.0;

    // No slope may run against its secant.
    for (int32_t i = 0; i <= n - 2; ++i) {
        if (m[i] * s[i] < 0.0) m[i] = 0.0;
        if (m[i + 1] * s[i] < 0.0) m[i + 1] = 0.0;
    }
    if (m[n - 1] * s[n - 2] < 0.0) m[n - 1] = 0.0;

    // Scale the slopes down where a segment would overshoot its ends.
    double limit[kCurveMaxPoints];
    for (int32_t i = 0; i <= n - 2; ++i) {
        double a = 0.0;
        if (std::fabs(m[i]) + std::fabs(m[i + 1]) > kTolerance) {
            const double d = 3.0 * s[i];
            const double pp = (2.0 * m[i] + m[i + 1]) / d;
            const double q = (2.0 * m[i + 1] + m[i]) / d;
            if ((q - 1.0) * (1.0 - pp) < 0.0) a = std::min(pp, q);
        }
        double b = 0.0;
        if (std::fabs(s[i]) >= kTolerance) {
            const double d = 3.0 * s[i];
            b = (m[i] + m[i + 1]) / d - std::sqrt(std::max(0.0, m[i] * m[i + 1])) / std::fabs(d);
        }
        // Plain comparisons, so that 1 stands against anything not a number.
        limit[i] = 1.0;
        if (a > limit[i]) limit[i] = a;
        if (b > limit[i]) limit[i] = b;
    }
    m[0] /= limit[0];
    m[n - 1] /= limit[n - 2];
    for (int32_t i = 0; i + 2 < n; ++i) m[i + 1] /= std::max(limit[i], limit[i + 1]);
}

void BuildSpline(const Curve& c, uint8_t table[256])
{
    Normal p;
    Normalize(c, p);
    double m[kCurveMaxPoints];
    SplineSlopes(p, c.count, m);
    const int32_t last = c.count - 1;
    const double x0 = c.x[0];
    const double span = c.x[last] - x0;
    int32_t k = 0;
    for (int32_t i = 0; i < 256; ++i) {
        if (i < c.x[0]) {
            table[i] = static_cast<uint8_t>(c.y[0]);
            continue;
        }
        if (i > c.x[last]) {
            table[i] = static_cast<uint8_t>(c.y[last]);
            continue;
        }
        const double t = (i - x0) / span;
        while (t > p.t[k + 1] && k + 1 < last) ++k;
        const double tl = p.t[k];
        const double tr = p.t[k + 1];
        const double u = (tr - t) / (tr - tl);
        const double w = (t - tl) / (tr - tl);
        const double value =
            (3.0 - 2.0 * u) * u * u * p.v[k] + (3.0 - 2.0 * w) * w * w * p.v[k + 1] +
            (u - 1.0) * u * u * (tl - tr) * m[k] + (w - 1.0) * w * w * (tr - tl) * m[k + 1];
        table[i] = ToByte(value);
    }
}

const char* const kStyleNames[3] = {"step", "linear", "spline"};

bool ParseLevel(std::string_view text, int32_t& value)
{
    return ParseInt(text, value) == kOk && value >= 0 && value <= 255;
}

}  // namespace

bool CurveIsLegal(const Curve& c)
{
    if (c.count < kCurveMinPoints || c.count > kCurveMaxPoints) return false;
    if (c.style < kCurveStep || c.style > kCurveSpline) return false;
    for (int32_t i = 0; i < c.count; ++i) {
        if (c.x[i] < 0 || c.x[i] > 255 || c.y[i] < 0 || c.y[i] > 255) return false;
        if (i > 0 && c.x[i] <= c.x[i - 1]) return false;
    }
    return true;
}

int32_t build_curve_table(const Curve& curve, uint8_t table[256])
{
    if (!CurveIsLegal(curve)) return kErrCurveBuild;
    if (curve.style != kCurveSpline) {
        BuildPiecewise(curve, table);
    } else if (IsPowerCurve(curve)) {
        BuildPower(curve, table);
    } else {
        BuildSpline(curve, table);
    }
    return kOk;
}

int32_t CurveRead(const std::string& path, Curve& curve)
{
    ParamReader reader;
    if (int32_t code = ParamReadOpen(reader, path, "Curve", kErrCurveFile)) return code;
    Curve read;
    read.count = -1;
    bool seen[kCurveMaxPoints] = {};
    std::vector<std::string> tokens;
    for (;;) {
        int32_t code = ParamReadLine(reader, tokens);
        if (code == kErrEndOfFile) return kErrCurveFile;
        if (code != kOk) return code;
        const std::string& key = tokens[0];
        if (key == "end" && tokens.size() == 1) break;
        if (key == "npts" && tokens.size() == 2) {
            if (ParseInt(tokens[1], read.count) != kOk || read.count > kCurveMaxPoints) {
                return kErrCurveFile;
            }
        } else if (key == "style" && tokens.size() == 2) {
            const auto* name = std::find(std::begin(kStyleNames), std::end(kStyleNames), tokens[1]);
            if (name == std::end(kStyleNames)) return kErrCurveFile;
            read.style = static_cast<int32_t>(name - std::begin(kStyleNames));
        } else if (key == "point" && tokens.size() == 4) {
            int32_t index = 0;
            if (ParseInt(tokens[1], index) != kOk || index < 0 || index >= kCurveMaxPoints) {
                return kErrCurveFile;
            }
            if (!ParseLevel(tokens[2], read.x[index]) || !ParseLevel(tokens[3], read.y[index])) {
                return kErrCurveFile;
            }
            seen[index] = true;
        } else {
            return kErrCurveFile;
        }
    }
    // Only a complete, ordered list within the count is taken.
    if (read.count < kCurveMinPoints) return kErrCurveFile;
    for (int32_t i = 0; i < kCurveMaxPoints; ++i) {
        if (seen[i] != (i < read.count)) return kErrCurveFile;
    }
    if (!CurveIsLegal(read)) return kErrCurveFile;
    curve = read;
    return kOk;
}

int32_t CurveWrite(const std::string& path, const Curve& curve)
{
    if (!CurveIsLegal(curve)) return kErrCurveFile;
    ParamWriter writer;
    if (int32_t code = ParamWriteOpen(writer, path, "Curve")) return code;
    ParamWrite(writer, "npts %d", curve.count);
    ParamWrite(writer, "style %s", kStyleNames[curve.style]);
    for (int32_t i = 0; i < curve.count; ++i) {
        ParamWrite(writer, "point %d %d %d", i, curve.x[i], curve.y[i]);
    }
    ParamWrite(writer, "end");
    return ParamWriteCommit(writer);
}

void CurveReset(Curve& curve) { curve = Curve{}; }

void CurveInvert(Curve& curve)
{
    const int32_t count = std::clamp(curve.count, 0, kCurveMaxPoints);
    for (int32_t i = 0; i < count; ++i) curve.y[i] = 255 - curve.y[i];
}

int32_t CurveInsertPoint(Curve& curve, int32_t x, int32_t y)
{
    if (curve.count >= kCurveMaxPoints || curve.count < 0 || x < 0 || x > 255) return -1;
    int32_t k = 0;
    while (k < curve.count && curve.x[k] < x) ++k;
    if (k < curve.count && curve.x[k] == x) return -1;
    for (int32_t i = curve.count; i > k; --i) {
        curve.x[i] = curve.x[i - 1];
        curve.y[i] = curve.y[i - 1];
    }
    curve.x[k] = x;
    curve.y[k] = Clamp8(y);
    ++curve.count;
    return k;
}

int32_t CurveInsertionY(const Curve& curve, int32_t x)
{
    const int32_t count = std::clamp(curve.count, 0, kCurveMaxPoints);
    if (count == 0 || x < curve.x[0]) return 0;
    if (x > curve.x[count - 1]) return 255;
    int32_t k = 0;
    while (k + 2 < count && x >= curve.x[k + 1]) ++k;
    if (k + 1 >= count || curve.x[k + 1] == curve.x[k]) return curve.y[k];
    return curve.y[k] +
           (curve.y[k + 1] - curve.y[k]) * (x - curve.x[k]) / (curve.x[k + 1] - curve.x[k]);
}

bool CurveDeletePoint(Curve& curve, int32_t index)
{
    if (curve.count < 3 || curve.count > kCurveMaxPoints || index < 0 || index >= curve.count) {
        return false;
    }
    for (int32_t i = index; i + 1 < curve.count; ++i) {
        curve.x[i] = curve.x[i + 1];
        curve.y[i] = curve.y[i + 1];
    }
    --curve.count;
    return true;
}

void CurvePointLimits(const Curve& curve, int32_t index, int32_t& low, int32_t& high)
{
    const int32_t count = std::clamp(curve.count, 0, kCurveMaxPoints);
    low = index > 0 && index < count ? curve.x[index - 1] + 1 : 0;
    high = index >= 0 && index + 1 < count ? curve.x[index + 1] - 1 : 255;
}

bool CurvePointWedged(const Curve& curve, int32_t index)
{
    int32_t low = 0;
    int32_t high = 0;
    CurvePointLimits(curve, index, low, high);
    return low >= high;
}

void CurveMovePoint(Curve& curve, int32_t index, int32_t x, int32_t y)
{
    if (index < 0 || index >= std::min(curve.count, kCurveMaxPoints)) return;
    int32_t low = 0;
    int32_t high = 0;
    CurvePointLimits(curve, index, low, high);
    curve.x[index] = x < low ? low : (x > high ? high : x);
    curve.y[index] = Clamp8(y);
}

void CurveSetHistograms(CurveHistograms& h, const HistogramRecord* r, const HistogramRecord* g,
                        const HistogramRecord* b)
{
    h.mode = r == nullptr ? 0 : (g == nullptr || b == nullptr ? 1 : 2);
    h.channel[0] = r;
    h.channel[1] = h.mode == 2 ? g : nullptr;
    h.channel[2] = h.mode == 2 ? b : nullptr;
    h.inputPeak = 0;
    for (int32_t i = 0; i < 256; ++i) {
        int32_t v = 0;
        if (h.mode == 1) v = r->counts[i];
        if (h.mode == 2) v = std::max({r->counts[i], g->counts[i], b->counts[i]});
        h.input[i] = v;
        h.inputPeak = std::max(h.inputPeak, v);
    }
}

void CurvePushHistograms(CurveHistograms& h, const uint8_t table[256])
{
    if (h.mode == 0) return;
    const int32_t channels = h.mode == 2 ? 3 : 1;
    int64_t sums[3][256] = {};
    for (int32_t c = 0; c < channels; ++c) {
        const int32_t* counts = h.mode == 2 ? h.channel[c]->counts : h.input;
        for (int32_t i = 0; i < 256; ++i) sums[c][table[i]] += counts[i];
    }
    h.outputPeak = 0;
    for (int32_t i = 0; i < 256; ++i) {
        int64_t v = INT64_MIN;
        for (int32_t c = 0; c < channels; ++c) {
            const auto sum = static_cast<int32_t>(std::clamp<int64_t>(sums[c][i], 0, INT32_MAX));
            if (h.mode == 2) h.outputChannel[c][i] = sum;
            v = std::max<int64_t>(v, sum);
        }
        h.output[i] = static_cast<int32_t>(v);
        h.outputPeak = std::max(h.outputPeak, h.output[i]);
    }
}

const std::array<uint8_t, 128> LogTable = [] {
    std::array<uint8_t, 128> table{};
    for (int32_t i = 0; i < 128; ++i) {
        table[i] = static_cast<uint8_t>(RoundToInt(128.0 * std::log2(1.0 + i / 128.0)));
    }
    return table;
}();

int32_t log_scale(int32_t n)
{
    const uint32_t value = n > 0 ? static_cast<uint32_t>(n) : 0u;
    int32_t bits = 0;
    while (bits < 32 && (value >> bits) != 0) ++bits;
    const uint32_t seven = bits < 7 ? value << (7 - bits) : value >> (bits - 7);
    return bits * 128 + 1 + LogTable[seven & 127u];
}

}  // namespace lv
