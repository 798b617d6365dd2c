// Resize: a new picture of a chosen size in pixels, resampled smoothly or by
// nearest neighbour (geometry/resize.h).
#include <algorithm>

#include "geometry/resize.h"
#include "image/display.h"
#include "image/lineio.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "shell/errors.h"
#include "transform/point_worker.h"
#include "transform/registry.h"

namespace lv {
namespace {

struct ResizeParams : TransformParams {
    int32_t width;      // pixels; 0 follows the height in the input's proportions
    int32_t height;     // pixels; 0 follows the width
    int32_t method;     // 0 smooth, 1 nearest neighbour
    double resolution;  // dots per inch of the result; 0 keeps the input's
};

// `given` times num / den in integer arithmetic, at least 1.
int32_t Proportional(int32_t given, int32_t num, int32_t den)
{
    if (den <= 0) return 0;
    const int64_t v = int64_t{given} * num / den;
    return static_cast<int32_t>(std::clamp<int64_t>(v, 1, INT32_MAX));
}

// The size of the result. A side of 0 follows the other in the input's
// proportions; both 0 keep the input's size.
void OutputSize(const Image* source, const TransformParams& p, int32_t& width, int32_t& height)
{
    const auto& params = static_cast<const ResizeParams&>(p);
    const int32_t w = source ? source->width : 0, h = source ? source->height : 0;
    width = params.width;
    height = params.height;
    if (width == 0 && height == 0) {
        width = w;
        height = h;
    } else if (height == 0) {
        height = Proportional(width, h, w);
    } else if (width == 0) {
        width = Proportional(height, w, h);
    }
}

// A preview, or any part of the output: each row of the result that the part
// shows is made whole by the engine, and its columns are picked at the
// preview's step. A binary result is shown as levels of 0 and 255.
int32_t PartWorker(const TransformArgs& args, const Image& source, int32_t width, int32_t height,
                   int32_t method)
{
    ResizeState state;
    if (int32_t code = ResizeStateOpen(state, source, width, height, method)) return code;
    const int32_t kind = state.workKind == kImageBinary ? kImageGray : state.workKind;
    const int32_t channels = kind == kImageColor ? 3 : 1;
    Image& destination = *args.destination;
    if (WholeOutput(args)) {
        if (int32_t code =
                ImageAlloc(destination, kind, args.outWidth, args.outHeight, source.resolution))
            return code;
    } else if (destination.kind != kind) {
        return kErrImageType;  // a strip of a display this output never made
    }
    std::unique_ptr<uint8_t[]> full =
        AllocBytes(static_cast<size_t>(ResizeRowBytes(state.workKind, width)));
    if (!full) return kErrOutOfMemory;
    LineOutput out;
    LineOutputReset(out);
    int32_t result = LineOutputOpen(destination, args.zoom, args.rectLeft, args.rectRight,
                                    args.rectTop, args.toImage ? 1 : 0, out);
    if (!result) {
        const int64_t step = args.zoom < 0 ? -int64_t{args.zoom} : 1;
        WorkerBusy busy;
        busy.Open(args, "Resize");
        for (int32_t line = 0; line < args.height && !result; ++line) {
            const auto y = static_cast<int32_t>(
                std::clamp<int64_t>(args.sourceY + line * step, 0, height - 1));
            ResizeStateRow(state, y, full.get(), state.rowBuffer);
            uint8_t* row = LineOutputRow(out);
            for (int32_t i = 0; i < args.width; ++i) {
                const auto x = static_cast<int32_t>(
                    std::clamp<int64_t>(args.sourceX + i * step, 0, width - 1));
                if (state.workKind == kImageBinary) {
                    row[i] = GetBit(full.get(), x) ? 255 : 0;
                } else {
                    for (int32_t k = 0; k < channels; ++k)
                        row[i * channels + k] = full[static_cast<size_t>(x) * channels + k];
                }
            }
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineOutputClose(out);
    return result;
}

int32_t Worker(const TransformArgs& args)
{
    const auto& params = static_cast<const ResizeParams&>(*args.params);
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    int32_t width = 0, height = 0;
    OutputSize(source, params, width, height);
    const double resolution = params.resolution > 0.0 ? params.resolution : source->resolution;

    if (width == source->width && height == source->height) {
        const int32_t code = RunShortWay(args);
        if (!code && args.toImage) args.destination->resolution = resolution;
        return code;
    }

    // The full result at zoom 1 is the engine's whole run.
    if (args.toImage && args.zoom == 1 && args.sourceX == 0 && args.sourceY == 0 &&
        args.rectLeft == 0 && args.rectTop == 0 && args.rectRight == width - 1 &&
        args.rectBottom == height - 1 && args.outWidth == width && args.outHeight == height &&
        args.width == width && args.height == height)
        return resize_image(*source, *args.destination, width, height, resolution, params.method);
    return PartWorker(args, *source, width, height, params.method);
}

const TransformRegistration kResize({
    .name = "resize",
    .title = "Resize",
    .commandId = 4003,
    .hasAmount = false,
    .params =
        {
            {
                .name = "width",
                .type = ParamType::Int,
                .field = Field(&ResizeParams::width),
                .minimum = 0,
                .maximum = 999999,
                .defaultValue = 0,
                .label = "Width",
                .help = "the new width in pixels; 0 follows the height in the input's proportions",
                .inPanel = false,  // the panel's table of Current and New
            },
            {
                .name = "height",
                .type = ParamType::Int,
                .field = Field(&ResizeParams::height),
                .minimum = 0,
                .maximum = 999999,
                .defaultValue = 0,
                .label = "Height",
                .help = "the new height in pixels; 0 follows the width in the input's proportions",
                .inPanel = false,
            },
            {
                .name = "method",
                .type = ParamType::Choice,
                .field = Field(&ResizeParams::method),
                .defaultValue = kResizeSmooth,
                .choiceLabels = "Smooth|Nearest Neighbor",
                .choices = "smooth|nearest",
                .label = "Interpolation Method:",
                .help = "smooth (a tent when reducing, a linear blend when enlarging, crispened "
                        "across) or the nearest source pixel",
            },
            {
                .name = "resolution",
                .type = ParamType::Real,
                .field = Field(&ResizeParams::resolution),
                .minimum = 0,
                .maximum = 999999,
                .defaultValue = 0,
                .decimals = 2,
                .label = "Resolution",
                .help = "the result's resolution in dots per inch; 0 keeps the input's",
                .inPanel = false,
            },
        },
    .create = NewParams<ResizeParams>,
    .outputSize = OutputSize,
    .worker = Worker,
    .help = "A new picture of the chosen size in pixels, resampled smoothly or by nearest "
            "neighbour.",
    .example = "--width 300 --method nearest",
});

}  // namespace
}  // namespace lv
