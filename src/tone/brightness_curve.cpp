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

int32_t LoadCurve(TransformParams& p, const std::string& path)
{
    Curve curve;
    if (int32_t code = CurveRead(path, curve)) return code;
    return build_curve_table(curve, static_cast<BrightnessCurveParams&>(p).table);
}

// In the editor the curve comes from the Curve control (tone/ui), so the
// curve file is the command line's alone.
const TransformRegistration kBrightnessCurve({
    .name = "brightness-curve",
    .title = "Brightness Curve",
    .commandId = 4050,
    .params = {{
                   .name = "curve",
                   .type = ParamType::File,
                   .field = Loader(LoadCurve),
                   .fileKind = "Curve",
                   .fileExtension = ".crv",
                   .help = "the curve to apply (the identity when none)",
                   .inPanel = false,
               },
               {
                   .name = "color-space",
                   .type = ParamType::Choice,
                   .field = Field(&BrightnessCurveParams::colorSpace),
                   .defaultValue = kColorSpaceHsv,
                   .choiceLabels = "HSV|HSL|RGB",
                   .label = "Color Space:",
                   .help = "where the curve acts on colour: the value, the lightness, or each "
                           "channel",
               }},
    .create = NewParams<BrightnessCurveParams>,
    .worker = Worker,
    .help = "One curve, drawn or loaded from a .crv file, applied to the levels.",
    .example = "--curve lift.crv --color-space rgb",
});

}  // namespace
}  // namespace lv
