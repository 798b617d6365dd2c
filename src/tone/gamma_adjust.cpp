// Gamma Adjust: levels re-encoded from one gamma to another, each channel
// through one table, entry i being 255 (i / 255) ^ (to / from), rounded.
// The two gammas are read as they stand at each run: one below 0.1 or above
// 10 is refused then, with its own code, not while it is being typed.
#include <cmath>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/text.h"
#include "transform/point_worker.h"
#include "transform/registry.h"

namespace lv {
namespace {

struct GammaParams : TransformParams {
    double fromGamma = 2.22;
    double toGamma = 2.22;
    uint8_t table[256] = {};
};

constexpr double kLowestGamma = 0.1, kHighestGamma = 10.0;

void GammaRow(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
              const TransformParams& p)
{
    const uint8_t* table = static_cast<const GammaParams&>(p).table;
    for (int32_t i = 0; i < pixels * channels; ++i) out[i] = table[in[i]];
}

int32_t Worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || (source->kind != kImageGray && source->kind != kImageColor))
        return kErrImageType;
    auto& params = static_cast<GammaParams&>(*args.params);
    const double from = params.fromGamma, to = params.toGamma;
    if (!std::isfinite(from) || from < kLowestGamma || from > kHighestGamma) {
        SetErrorDetail(FormatText("%2f is not from 0.10 to 10.00", from));
        return kErrInputGamma;
    }
    if (!std::isfinite(to) || to < kLowestGamma || to > kHighestGamma) {
        SetErrorDetail(FormatText("%2f is not from 0.10 to 10.00", to));
        return kErrOutputGamma;
    }
    for (int32_t i = 0; i < 256; ++i)
        params.table[i] = static_cast<uint8_t>(RoundToInt(255.0 * std::pow(i / 255.0, to / from)));
    return RunPointWorker(args, "Gamma Adjust", GammaRow, from == to);
}

// The gammas are taken as typed and checked by the worker, so the record's
// range is wider than the one a run accepts.
ParamDecl Gamma(const char* name, double GammaParams::*field, const char* label,
                const char* help)
{
    return {.name = name,
            .type = ParamType::Real,
            .field = Field(field),
            .minimum = 0,
            .maximum = 999.99,
            .defaultValue = 2.22,
            .decimals = 2,
            .label = label,
            .help = help};
}

const TransformRegistration kGammaAdjust({
    .name = "gamma-adjust",
    .title = "Gamma Adjust",
    .commandId = 4029,
    .hasAmount = false,
    .params =
        {
            Gamma("from", &GammaParams::fromGamma, "Convert from gamma:",
                  "the gamma the levels are encoded with, from 0.10 to 10.00 (43 otherwise)"),
            Gamma("to", &GammaParams::toGamma, "To gamma:",
                  "the gamma to encode them with, from 0.10 to 10.00 (44 otherwise)"),
        },
    .create = NewParams<GammaParams>,
    .worker = Worker,
    .help = "Re-encodes the levels from one gamma to another: from 2.22 to 1.11 lightens "
            "the midtones, from 1.11 to 2.22 darkens them.",
    .example = "--from 2.22 --to 1.80",
});

}  // namespace
}  // namespace lv
