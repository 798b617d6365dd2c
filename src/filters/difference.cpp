// Difference: the absolute difference of the input and a second picture of
// the same size, channel by channel. A gray or binary picture against a
// colour one counts as three equal channels, and the result is colour; two
// gray or binary pictures give a gray result. A second picture of another
// size is refused with code 14, "Illegal input image type", with the two
// sizes in the detail the command line prints.
#include "filters/difference.h"

#include <cstdlib>
#include <string>

#include "files/formats.h"
#include "image/memory.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "shell/text.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

// out = |a - b| for each of `outChannels` channels; a one-channel row gives
// the same level to all three.
void DifferenceRow(const uint8_t* a, int32_t aChannels, const uint8_t* b, int32_t bChannels,
                   uint8_t* out, int32_t outChannels, int32_t pixels)
{
    for (int32_t i = 0; i < pixels; ++i)
        for (int32_t c = 0; c < outChannels; ++c) {
            const int32_t av = a[i * aChannels + (aChannels == 3 ? c : 0)];
            const int32_t bv = b[i * bChannels + (bChannels == 3 ? c : 0)];
            out[i * outChannels + c] = static_cast<uint8_t>(std::abs(av - bv));
        }
}

// A gray row as colour, for the Amount's blend against a colour result.
void ExpandRow(const uint8_t* gray, uint8_t* colour, int32_t pixels)
{
    for (int32_t i = 0; i < pixels; ++i)
        colour[3 * i] = colour[3 * i + 1] = colour[3 * i + 2] = gray[i];
}

bool IsPicture(const Image* image)
{
    return image && image->kind >= kImageBinary && image->kind <= kImageColor;
}

int32_t Worker(const TransformArgs& args)
{
    const auto& params = static_cast<const DifferenceParams&>(*args.params);
    const Image* source = args.source;
    const Image* with = params.with;
    if (!IsPicture(source)) return kErrImageType;
    if (!with) return kErrNoImageGiven;
    if (!IsPicture(with)) return kErrImageType;
    if (with->width != source->width || with->height != source->height) {
        SetErrorDetail(FormatText("the second picture is %d x %d, the input %d x %d", with->width,
                                  with->height, source->width, source->height));
        return kErrImageType;
    }
    const AmountBlock& a = params.amount;
    if (a.amount == 0 && (a.amount2 == -1 || a.amount2 == 0)) return RunShortWay(args);
    const AmountPass pass = AmountPassFor(a);
    const int32_t aChannels = source->kind == kImageColor ? 3 : 1;
    const int32_t bChannels = with->kind == kImageColor ? 3 : 1;
    const int32_t channels = aChannels == 3 || bChannels == 3 ? 3 : 1;
    const int32_t kind = channels == 3 ? kImageColor : kImageGray;

    // A full result with neither picture binary, and the input already of
    // the output's kind: the rows go to all the cores.
    if (args.toImage && WholeOutput(args) && args.zoom == 1 && source->kind != kImageBinary &&
        with->kind != kImageBinary && aChannels == channels && args.sourceX == 0 &&
        args.sourceY == 0 && args.width == source->width && args.height == source->height) {
        if (int32_t code = ImageAlloc(*args.destination, kind, args.outWidth, args.outHeight,
                                      source->resolution))
            return code;
        ClearImagePadding(*args.destination);
        const Image* mask = pass.UsesMask() ? a.mask : nullptr;
        WorkerBusy busy;
        busy.Open(args, "Difference");
        const int32_t result = ParallelRows(
            args.height,
            [&](int32_t y) {
                const uint8_t* input = source->rows[y];
                uint8_t* output = args.destination->rows[y];
                DifferenceRow(input, aChannels, with->rows[y], bChannels, output, channels,
                              args.width);
                if (pass.Blends())
                    AmountBlendRow(pass, input, output, mask ? mask->rows[y] : nullptr, args.width,
                                   channels);
            },
            [&](int32_t done) { return busy.Step(done); });
        busy.Close();
        return result;
    }

    LineInput in, second, mask;
    LineOutput out;
    LineInputReset(in);
    LineInputReset(second);
    LineInputReset(mask);
    LineOutputReset(out);
    std::unique_ptr<uint8_t[]> expanded;
    int32_t result = LineInputOpen(*source, args.sourceX, args.sourceY, args.zoom, args.width, in);
    if (!result)
        result = LineInputOpen(*with, args.sourceX, args.sourceY, args.zoom, args.width, second);
    if (!result && pass.UsesMask())
        result = LineInputOpen(*a.mask, args.sourceX, args.sourceY, args.zoom, args.width, mask);
    if (!result && pass.Blends() && aChannels != channels) {
        expanded = AllocBytes(static_cast<size_t>(args.width) * 3);
        if (!expanded) result = kErrOutOfMemory;
    }
    if (!result) result = WorkerOutputOpen(args, kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, "Difference");
        for (int32_t line = 0; line < args.height && !result; ++line) {
            const uint8_t* input = LineInputNext(in);
            const uint8_t* other = LineInputNext(second);
            uint8_t* output = LineOutputRow(out);
            DifferenceRow(input, aChannels, other, bChannels, output, channels, args.width);
            if (pass.Blends()) {
                if (expanded) {
                    ExpandRow(input, expanded.get(), args.width);
                    input = expanded.get();
                }
                AmountBlendRow(pass, input, output, pass.UsesMask() ? LineInputNext(mask) : nullptr,
                               args.width, channels);
            }
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineInputClose(in);
    LineInputClose(second);
    LineInputClose(mask);
    LineOutputClose(out);
    return result;
}

// --with: the second picture, read as Open reads it, by its extension.
int32_t LoadWith(TransformParams& p, const std::string& path)
{
    auto& params = static_cast<DifferenceParams&>(p);
    params.with = nullptr;
    const int32_t type = FileTypeFromName(path);
    if (type < 0) return kErrUnknownFileType;
    if (int32_t code = ReadImageFile(path, type, params.loaded, false)) return code;
    params.with = &params.loaded;
    return kOk;
}

// In the editor the second picture is chosen in the panel (filters/ui), so
// the file is the command line's alone.
const TransformRegistration kDifference({
    .name = "difference",
    .title = "Difference",
    .commandId = 4042,
    .params = {{
        .name = "with",
        .type = ParamType::File,
        .field = Loader(LoadWith),
        .fileKind = "picture",
        .help = "the second picture, of the input's size, in any format Open reads",
        .inPanel = false,
    }},
    .create = NewParams<DifferenceParams>,
    .worker = Worker,
    .help = "The absolute difference of the input and a second picture of the same size, "
            "channel by channel; gray against colour counts as three equal channels.",
    .example = "--with before.tif",
});

}  // namespace
}  // namespace lv
