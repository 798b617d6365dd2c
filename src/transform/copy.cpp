// Copy as a transformation: the picture as it is, with the Amount and mask
// having nothing to blend toward. From the command line it converts.
#include "shell/commands.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

void CopyRow(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
             const TransformParams&)
{
    for (int32_t i = 0; i < pixels * channels; ++i) out[i] = in[i];
}

int32_t CopyWorker(const TransformArgs& args) { return RunPointWorker(args, "Copy", CopyRow); }

const TransformRegistration kCopy({
    .name = "copy",
    .title = "Copy",
    .commandId = kCmdCopy,
    .hasAmount = false,
    .create = NewParams<TransformParams>,
    .worker = CopyWorker,
    .help = "The picture as it is; from the command line, a conversion.",
});

}  // namespace
}  // namespace lv
