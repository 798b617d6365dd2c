// Brightness Curve: one curve applied to the picture in HSV (value), HSL
// (lightness) or RGB (each channel), blended with the input by the Amount.
#include "tone/brightness_curve.h"

#include <cstring>

#include "shell/commands.h"
#include "shell/errors.h"
#include "tone/color_space.h"
#include "tone/curves/curve.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

bool IsIdentity(const uint8_t table[256])
{
    for (int32_t i = 0; i < 256; ++i)
        if (table[i] != i) return false;
    return true;
}

void CurveRow(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
              const TransformParams& p)
{
    const auto& params = static_cast<const BrightnessCurveParams&>(p);
    ApplyCurveRow(in, out, pixels, channels, channels == 3 ? params.colorSpace : kColorSpaceRgb,
                  params.table);
}

int32_t Worker(const TransformArgs& args)
{
    const auto& params = static_cast<const BrightnessCurveParams&>(*args.params);
    // The short way: no strength at all, or a curve that changes nothing
    // (looked at only when the Amount is not 0).
    const AmountBlock& a = params.amount;
    const bool noStrength = a.amount == 0 && (a.amount2 == -1 || a.amount2 == 0);
    const bool unchanged = noStrength || IsIdentity(params.table);
    return RunPointWorker(args, "Brightness Curve", CurveRow, unchanged);
}

std::unique_ptr<TransformParams> Create() { return std::make_unique<BrightnessCurveParams>(); }

int32_t Set(TransformParams& p, const std::string& name, const std::string& value)
{
    auto& params = static_cast<BrightnessCurveParams&>(p);
    if (name == "curve") {
        Curve curve;
        if (int32_t code = CurveRead(value, curve)) return code;
        return build_curve_table(curve, params.table);
    }
    if (name == "color-space") {
        if (value == "hsv")
            params.colorSpace = kColorSpaceHsv;
        else if (value == "hsl")
            params.colorSpace = kColorSpaceHsl;
        else if (value == "rgb")
            params.colorSpace = kColorSpaceRgb;
        else
            return kErrImageType;
        return kOk;
    }
    return kErrImageType;
}

// In the editor the curve comes from the Curve control (tone/ui), so the
// "curve" file is for the command line only.
const TransformRegistration kBrightnessCurve(
    {"brightness-curve",
     "Brightness Curve",
     4050,
     kKindBrightnessCurve,
     true,
     {{"curve", ParamType::File, 0, 0, "", "", "Curve", "the curve to apply (identity when none)",
       "", "", false},
      {"color-space", ParamType::Choice, 0, 0, "hsv", "hsv|hsl|rgb", "",
       "where the curve acts: value, lightness, or each channel", "Color Space:", "HSV|HSL|RGB"}},
     Create,
     Set,
     nullptr,
     Worker});

}  // namespace
}  // namespace lv
