// Equalize: the picture's histogram (of the whole input, gray or the HSV
// value or HSL lightness of colour) mapped onto a flat one.
#include "shell/errors.h"
#include "tone/color_space.h"
#include "tone/histogram.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

struct EqualizeParams : TransformParams {
    int32_t colorSpace = 0;  // 0 HSV value, 1 HSL lightness
    uint8_t table[256] = {};  // made at each run from the input
};

void Row(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
         const TransformParams& p)
{
    const auto& params = static_cast<const EqualizeParams&>(p);
    ApplyCurveRow(in, out, pixels, channels, channels == 3 ? params.colorSpace : kColorSpaceRgb,
                  params.table);
}

int32_t Worker(const TransformArgs& args)
{
    auto& params = static_cast<EqualizeParams&>(*args.params);
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const AmountBlock& a = params.amount;
    // No strength, or a binary picture, which the tables leave as it is.
    const bool unchanged =
        (a.amount == 0 && (a.amount2 == -1 || a.amount2 == 0)) || source->kind == kImageBinary;
    if (!unchanged) {
        // The histogram of the whole input, never of the preview's part.
        HistogramRecord histogram, flat;
        for (int32_t& c : flat.counts) c = 1;
        if (source->kind == kImageGray)
            histogram_gray(*source, histogram, kHistogramBudget);
        else if (params.colorSpace == kColorSpaceHsl)
            histogram_lightness(*source, histogram, kHistogramBudget);
        else
            histogram_value(*source, histogram, kHistogramBudget);
        equalize_table(histogram, flat, params.table);
    }
    return RunPointWorker(args, "Equalize", Row, unchanged);
}

const TransformRegistration kEqualize({
    .name = "equalize",
    .title = "Equalize",
    .commandId = 4044,
    .params = {{
        .name = "color-space",
        .type = ParamType::Choice,
        .field = Field(&EqualizeParams::colorSpace),
        .defaultValue = kColorSpaceHsv,
        .choiceLabels = "HSV V|HSL L",
        .choices = "hsv|hsl",
        .label = "Color Space:",
        .help = "for colour, what is flattened: the HSV value or the HSL lightness",
    }},
    .create = NewParams<EqualizeParams>,
    .worker = Worker,
    .help = "Spreads the levels so that the histogram of the whole input becomes flat.",
    .example = "--color-space hsl",
});

}  // namespace
}  // namespace lv
