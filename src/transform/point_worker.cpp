#include "transform/point_worker.h"

#include "image/display.h"
#include "image/lineio.h"
#include "image/threads.h"
#include "shell/errors.h"

namespace lv {

namespace {

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

}  // namespace

int32_t RunShortWay(const TransformArgs& args)
{
    if (args.toImage) return ImageCopyBoxed(*args.source, *args.destination);
    // The display copy takes its rectangle with y from the top of the view.
    const int32_t h = args.outHeight;
    return DisplayUpdate(*args.source, *args.outputTarget, nullptr, args.rectLeft,
                         h - 1 - args.rectBottom, args.rectRight, h - 1 - args.rectTop, true);
}

int32_t WorkerOutputOpen(const TransformArgs& args, int32_t kind, LineOutput& out)
{
    if (WholeOutput(args)) {
        if (int32_t code = ImageAlloc(*args.destination, kind, args.outWidth, args.outHeight,
                                      args.source->resolution))
            return code;
        ClearImagePadding(*args.destination);
    }
    return LineOutputOpen(*args.destination, args.zoom, args.rectLeft, args.rectRight, args.rectTop,
                          args.toImage ? 1 : 0, out);
}

int32_t RunPointWorker(const TransformArgs& args, const char* title, RowFunction row,
                       bool unchanged)
{
    const TransformParams& params = *args.params;
    return RunPlacedPointWorker(
        args, title,
        [row, &params](const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
                       const RowPlace&) { row(in, out, pixels, channels, params); },
        unchanged);
}

int32_t RunPlacedPointWorker(const TransformArgs& args, const char* title,
                             const PlacedRowFunction& row, bool unchanged)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    if (unchanged) return RunShortWay(args);
    const AmountPass pass = AmountPassFor(args.params->amount);
    const int32_t channels = source->kind == kImageColor ? 3 : 1;
    const int32_t kind = source->kind == kImageColor ? kImageColor : kImageGray;
    const bool whole = WholeOutput(args);
    // A full result of a gray or colour picture: each output row from the
    // input row of the same number, so the rows can go to all the cores.
    if (args.toImage && whole && args.zoom == 1 && source->kind != kImageBinary &&
        args.sourceX == 0 && args.sourceY == 0 && args.width == source->width &&
        args.height == source->height && int64_t{args.width} * args.height >= kParallelPixels &&
        ThreadCount() > 1) {
        if (int32_t code = ImageAlloc(*args.destination, kind, args.outWidth, args.outHeight,
                                      source->resolution))
            return code;
        // Padding bytes as the row-by-row path leaves them, so that the
        // bytes are the same on any number of threads.
        ClearImagePadding(*args.destination);
        const Image* mask = pass.UsesMask() ? args.params->amount.mask : nullptr;
        WorkerBusy busy;
        busy.Open(args, title);
        const int32_t result = ParallelRows(
            args.height,
            [&](int32_t y) {
                const uint8_t* input = source->rows[y];
                uint8_t* output = args.destination->rows[y];
                row(input, output, args.width, channels, RowPlace{y, 0, 1});
                if (pass.Blends())
                    AmountBlendRow(pass, input, output, mask ? mask->rows[y] : nullptr, args.width,
                                   channels);
            },
            [&](int32_t done) { return busy.Step(done); });
        busy.Close();
        return result;
    }

    LineInput in, mask;
    LineOutput out;
    LineInputReset(in);
    LineInputReset(mask);
    LineOutputReset(out);
    int32_t result = LineInputOpen(*source, args.sourceX, args.sourceY, args.zoom, args.width, in);
    if (!result && pass.UsesMask())
        result = LineInputOpen(*args.params->amount.mask, args.sourceX, args.sourceY, args.zoom,
                               args.width, mask);
    if (!result) result = WorkerOutputOpen(args, kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, title);
        const int32_t step = args.zoom < 0 ? -args.zoom : 1;
        for (int32_t line = 0; line < args.height && !result; ++line) {
            const uint8_t* input = LineInputNext(in);
            uint8_t* output = LineOutputRow(out);
            row(input, output, args.width, channels,
                RowPlace{args.sourceY + line * step, args.sourceX, step});
            if (pass.Blends())
                AmountBlendRow(pass, input, output, pass.UsesMask() ? LineInputNext(mask) : nullptr,
                               args.width, channels);
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineInputClose(in);
    LineInputClose(mask);
    LineOutputClose(out);
    return result;
}

}  // namespace lv
