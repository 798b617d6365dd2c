// Curve files as a stranger could write them. Any bytes must give either a
// legal curve, which builds a table and comes back the same through a write
// and a read, or 16 with the caller's curve as it was; never a crash.
#include <cstdint>
#include <cstdlib>

#include "scratch_file.h"
#include "shell/errors.h"
#include "shell/tables.h"
#include "tone/curves/curve.h"

namespace {

bool Same(const lv::Curve& a, const lv::Curve& b)
{
    if (a.count != b.count || a.style != b.style) return false;
    for (int32_t i = 0; i < a.count; ++i)
        if (a.x[i] != b.x[i] || a.y[i] != b.y[i]) return false;
    return true;
}

// The caller's curve before the read: a legal one unlike the default, so
// that a failed read which touched it shows.
lv::Curve Before()
{
    lv::Curve curve;
    curve.count = 3;
    curve.style = lv::kCurveLinear;
    curve.x[0] = 10, curve.y[0] = 7;
    curve.x[1] = 100, curve.y[1] = 50;
    curve.x[2] = 240, curve.y[2] = 200;
    return curve;
}

// The rules of a legal curve, written out here rather than taken from
// CurveIsLegal, which is checked against them.
void CheckLegal(const lv::Curve& curve)
{
    if (curve.count < lv::kCurveMinPoints || curve.count > lv::kCurveMaxPoints) std::abort();
    if (curve.style < lv::kCurveStep || curve.style > lv::kCurveSpline) std::abort();
    for (int32_t i = 0; i < curve.count; ++i) {
        if (curve.x[i] < 0 || curve.x[i] > 255 || curve.y[i] < 0 || curve.y[i] > 255) std::abort();
        if (i > 0 && curve.x[i] <= curve.x[i - 1]) std::abort();
    }
    if (!lv::CurveIsLegal(curve)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool started = [] {
        lv::InitEngineTables();
        return true;
    }();
    (void)started;
    static const fuzz::ScratchFile file("curve-fuzz", ".crv");
    static const fuzz::ScratchFile again("curve-fuzz", "-again.crv");
    if (!file.Write(data, size)) return 0;

    const lv::Curve before = Before();
    lv::Curve curve = before;
    const int32_t result = lv::CurveRead(file.path, curve);
    if (result != lv::kOk) {
        if (result != lv::kErrCurveFile || !Same(curve, before)) std::abort();
        return 0;
    }
    CheckLegal(curve);
    uint8_t table[256];
    if (lv::build_curve_table(curve, table) != lv::kOk) std::abort();
    // What was read is written as it was read and reads back the same.
    lv::Curve back = before;
    if (lv::CurveWrite(again.path, curve) != lv::kOk ||
        lv::CurveRead(again.path, back) != lv::kOk || !Same(back, curve)) {
        std::abort();
    }
    return 0;
}
