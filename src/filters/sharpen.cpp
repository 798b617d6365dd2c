// Sharpen: Sharpen and Heavy Sharpen push each pixel away from the mean of
// its four or eight neighbours; Unsharp Mask away from the Gaussian of the
// radius, where the difference reaches the Threshold. The Amount scales the
// push inside one integer expression instead of blending after it, so a
// partial Amount, and any mask, take a formula of their own.
#include <cstdlib>

#include "filters/filter_panel.h"
#include "filters/gaussian.h"
#include "filters/neighbourhood.h"
#include "image/pixel.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

inline int32_t LevelAt(const AmountPass& pass, const uint8_t* mask, int32_t i)
{
    return mask
               ? Lerp8(static_cast<uint8_t>(pass.level), static_cast<uint8_t>(pass.level2), mask[i])
               : pass.level;
}

template <int32_t C, bool Heavy>
void SharpenRow(const WindowRow& row, const AmountPass& pass)
{
    const bool mixed = pass.Blends();
    for (int32_t i = 0; i < row.width; ++i) {
        const size_t base = static_cast<size_t>(i) * row.advance + C;
        const uint8_t* t = row.rows[0] + base;
        const uint8_t* m = row.rows[1] + base;
        const uint8_t* b = row.rows[2] + base;
        const int32_t k = mixed ? LevelAt(pass, row.mask, i) : 0;
        uint8_t* out = row.out + static_cast<size_t>(i) * C;
        for (int32_t c = 0; c < C; ++c) {
            const int32_t center = m[c];
            int32_t v;
            if constexpr (Heavy) {
                const int32_t s8 =
                    t[c - C] + t[c] + t[c + C] + m[c - C] + m[c + C] + b[c - C] + b[c] + b[c + C];
                v = mixed ? ((2 * k + 255) * center - 2 * k * (s8 >> 3)) / 255
                          : 3 * center - s8 / 4;
            } else {
                const int32_t s4 = t[c] + m[c - C] + m[c + C] + b[c];
                v = mixed ? ((k + 255) * center - k * (s4 >> 2)) / 255 : 2 * center - s4 / 4;
            }
            out[c] = static_cast<uint8_t>(Clamp8(v));
        }
    }
}

int32_t Worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const auto& params = static_cast<const SharpenParams&>(*args.params);
    const AmountPass pass = AmountPassFor(params.amount);
    if ((params.method == kSharpenUnsharp && params.radius == 0) ||
        (pass.level == 0 && (pass.level2 == -1 || pass.level2 == 0)))
        return RunShortWay(args);

    if (params.method == kSharpenUnsharp) {
        const int32_t threshold = params.threshold;
        return RunGaussianFilter(
            args, "Sharpen", params.radius,
            [&pass, threshold](const uint8_t* blurred, const uint8_t* center, const uint8_t* mask,
                               uint8_t* out, int32_t width, int32_t channels) {
                const bool mixed = pass.Blends();
                for (int32_t i = 0; i < width; ++i) {
                    const int32_t k = mixed ? LevelAt(pass, mask, i) : 0;
                    for (int32_t ch = 0; ch < channels; ++ch) {
                        const size_t at = static_cast<size_t>(i) * channels + ch;
                        const int32_t c = center[at], b = blurred[at];
                        // Each channel alone; a difference equal to the
                        // threshold passes.
                        if (std::abs(c - b) < threshold) {
                            out[at] = static_cast<uint8_t>(c);
                            continue;
                        }
                        const int32_t v = mixed ? ((k + 255) * c - k * b) / 255 : 2 * c - b;
                        out[at] = static_cast<uint8_t>(Clamp8(v));
                    }
                }
            });
    }

    WindowFilter filter;
    filter.title = "Sharpen";
    filter.radius = 1;
    if (params.method == kSharpenHeavy)
        filter.row = [&](const WindowRow& r) {
            r.channels == 3 ? SharpenRow<3, true>(r, pass) : SharpenRow<1, true>(r, pass);
        };
    else
        filter.row = [&](const WindowRow& r) {
            r.channels == 3 ? SharpenRow<3, false>(r, pass) : SharpenRow<1, false>(r, pass);
        };
    return RunWindowFilter(args, filter);
}

const TransformRegistration kSharpen({
    .name = "sharpen",
    .title = "Sharpen",
    .commandId = 4019,
    .params =
        {
            {
                .name = "method",
                .type = ParamType::Choice,
                .field = Field(&SharpenParams::method),
                .defaultValue = kSharpenPlain,
                .choiceLabels = "Sharpen|Heavy Sharpen|Unsharp Mask",
                .choices = "sharpen|heavy|unsharp",
                .label = "Method:",
                .help = "away from the mean of the four or the eight neighbours, or an unsharp "
                        "mask of the radius and threshold",
            },
            {
                .name = "radius",
                .type = ParamType::Int,
                .field = Field(&SharpenParams::radius),
                .minimum = 0,
                .maximum = kSharpenRadiusMax,
                .defaultValue = 3,
                .label = "Radius:",
                .help = "Unsharp Mask's radius in pixels; 0 leaves the picture as it is",
            },
            {
                .name = "threshold",
                .type = ParamType::Int,
                .field = Field(&SharpenParams::threshold),
                .minimum = 0,
                .maximum = kSharpenThresholdMax,
                .defaultValue = 0,
                .label = "Threshold:",
                .help = "Unsharp Mask leaves a channel whose difference from the blur is below "
                        "this",
            },
        },
    .create = NewParams<SharpenParams>,
    .worker = Worker,
    .help = "Sharpens the picture by one of three neighbourhood methods; a binary picture gives "
            "a gray one.",
    .example = "--method unsharp --radius 5 --threshold 4",
});

}  // namespace
}  // namespace lv
