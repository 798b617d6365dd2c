// Negative as a transformation, so that it runs from the command line and
// through the frame like any other; the Negative command of the editor makes
// its window directly.
#include "shell/commands.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

void InvertRow(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
               const TransformParams&)
{
    for (int32_t i = 0; i < pixels * channels; ++i) out[i] = static_cast<uint8_t>(255 - in[i]);
}

int32_t NegativeWorker(const TransformArgs& args)
{
    return RunPointWorker(args, "Negative", InvertRow);
}

const TransformRegistration kNegative({
    .name = "negative",
    .title = "Negative",
    .commandId = kCmdNegative,
    .create = NewParams<TransformParams>,
    .worker = NegativeWorker,
    .help = "Each level becomes 255 minus itself.",
    .example = "--amount 50",
});

}  // namespace
}  // namespace lv
