// High Contrast: the levels pushed away from a midpoint by a factor, a
// steep straight curve through (midpoint, midpoint) clipped at 0 and 255.
// Colour pictures take the curve on each channel, so neutral grays stay
// neutral while colours gain saturation, as a steep RGB curve does.
#include "image/pixel.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

struct HighContrastParams : TransformParams {
    int32_t midpoint;
    double strength;
    uint8_t table[256] = {};  // made at each run from the two above
};

// The level v becomes midpoint + (v - midpoint) * strength, rounded and
// clipped.
void BuildTable(int32_t midpoint, double strength, uint8_t table[256])
{
    for (int32_t v = 0; v < 256; ++v)
        table[v] = static_cast<uint8_t>(Clamp8(RoundToInt(midpoint + (v - midpoint) * strength)));
}

void Row(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
         const TransformParams& p)
{
    const uint8_t* table = static_cast<const HighContrastParams&>(p).table;
    for (int32_t i = 0; i < pixels * channels; ++i) out[i] = table[in[i]];
}

int32_t Worker(const TransformArgs& args)
{
    auto& params = static_cast<HighContrastParams&>(*args.params);
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    BuildTable(params.midpoint, params.strength, params.table);
    bool identity = true;
    for (int32_t v = 0; v < 256 && identity; ++v) identity = params.table[v] == v;
    const AmountBlock& a = params.amount;
    // No strength, a factor of 1, or a binary picture, whose two levels a
    // factor of 1 or more leaves where they are.
    const bool unchanged = (a.amount == 0 && (a.amount2 == -1 || a.amount2 == 0)) || identity ||
                           source->kind == kImageBinary;
    return RunPointWorker(args, "High Contrast", Row, unchanged);
}

const TransformRegistration kHighContrast({
    .name = "high-contrast",
    .title = "High Contrast",
    .commandId = 4008,
    .params = {{
                   .name = "midpoint",
                   .type = ParamType::Int,
                   .field = Field(&HighContrastParams::midpoint),
                   .minimum = 0,
                   .maximum = 255,
                   .defaultValue = 128,
                   .label = "Midpoint:",
                   .help = "the level that stays where it is; darker levels go darker, "
                           "lighter ones lighter",
               },
               {
                   .name = "strength",
                   .type = ParamType::Real,
                   .field = Field(&HighContrastParams::strength),
                   .minimum = 1.0,
                   .maximum = 10.0,
                   .defaultValue = 2.0,
                   .decimals = 2,
                   .label = "Strength:",
                   .help = "the factor by which levels move away from the midpoint",
               }},
    .create = NewParams<HighContrastParams>,
    .worker = Worker,
    .help = "Stretches the levels away from a midpoint by a factor, clipping at black and "
            "white; colour on each channel.",
    .example = "--midpoint 100 --strength 3",
});

}  // namespace
}  // namespace lv
