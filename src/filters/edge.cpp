// Edge: the local gradient of each pixel by Roberts, Sobel or the Laplacian,
// shown as it is, taken from the pixel (Darken) or added to it (Lighten). A
// colour picture is worked channel by channel, or on its HSV value or HSL
// lightness alone, which keeps hue and saturation. Edges of the picture
// repeat its outermost rows and columns.
#include <algorithm>
#include <atomic>
#include <cstdlib>

#include "image/lineio.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "tone/color_space.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

enum EdgeMethod : int32_t { kRoberts = 0, kSobel = 1, kLaplacian = 2 };
enum EdgeAction : int32_t { kCompute = 0, kDarken = 1, kLighten = 2 };
// The order of Edge's own "Color Space:" list, which differs from the codes
// of the other tone tools.
enum EdgeSpace : int32_t { kEdgeRgb = 0, kEdgeHsv = 1, kEdgeHsl = 2 };

struct EdgeParams : TransformParams {
    int32_t method = kRoberts;
    int32_t action = kCompute;
    int32_t colorSpace = kEdgeRgb;
};

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

// The gradient at the centre of a 3 by 3 neighbourhood. `t`, `m` and `b` are
// the rows y - 1, y and y + 1 at the left neighbour; the centre is p bytes on
// and the right neighbour 2 p.
template <int32_t Method>
inline int32_t Gradient(const uint8_t* t, const uint8_t* m, const uint8_t* b, int32_t p)
{
    if constexpr (Method == kRoberts) {
        return Clamp8(std::abs(t[0] - b[2 * p]) + std::abs(t[2 * p] - b[0]));
    } else if constexpr (Method == kSobel) {
        const int32_t gx = t[2 * p] + 2 * m[2 * p] + b[2 * p] - t[0] - 2 * m[0] - b[0];
        const int32_t gy = b[2 * p] + 2 * b[p] + b[0] - t[2 * p] - 2 * t[p] - t[0];
        return Clamp8(std::abs(gx) + std::abs(gy));
    } else {
        // No absolute value: only the bright side of an edge shows.
        return Clamp8(4 * m[p] - t[p] - m[0] - m[2 * p] - b[p]);
    }
}

template <int32_t Action>
inline int32_t Act(int32_t centre, int32_t g)
{
    if constexpr (Action == kCompute) return g;
    if constexpr (Action == kDarken) return Clamp8(centre - g);
    return Clamp8(centre + g);
}

// One output row from the three window rows, each byte channel by itself:
// `Bpp` bytes a pixel, output position k reading from byte k * advance.
template <int32_t Method, int32_t Action, int32_t Bpp>
void ByteRow(const uint8_t* const* window, int32_t advance, int32_t width, uint8_t* out)
{
    const uint8_t* t = window[0];
    const uint8_t* m = window[1];
    const uint8_t* b = window[2];
    for (int32_t k = 0; k < width; ++k, t += advance, m += advance, b += advance, out += Bpp)
        for (int32_t c = 0; c < Bpp; ++c)
            out[c] = static_cast<uint8_t>(
                Act<Action>(m[Bpp + c], Gradient<Method>(t + c, m + c, b + c, Bpp)));
}

using ByteRowFunction = void (*)(const uint8_t* const*, int32_t, int32_t, uint8_t*);

template <int32_t Method, int32_t Bpp>
ByteRowFunction ByActionOf(int32_t action)
{
    switch (action) {
    case kDarken: return ByteRow<Method, kDarken, Bpp>;
    case kLighten: return ByteRow<Method, kLighten, Bpp>;
    default: return ByteRow<Method, kCompute, Bpp>;
    }
}

ByteRowFunction ByteRowOf(int32_t method, int32_t action, int32_t bpp)
{
    switch (method) {
    case kSobel: return bpp == 3 ? ByActionOf<kSobel, 3>(action) : ByActionOf<kSobel, 1>(action);
    case kLaplacian:
        return bpp == 3 ? ByActionOf<kLaplacian, 3>(action) : ByActionOf<kLaplacian, 1>(action);
    default: return bpp == 3 ? ByActionOf<kRoberts, 3>(action) : ByActionOf<kRoberts, 1>(action);
    }
}

// What a run works out once.
struct EdgeJob {
    AmountPass pass;
    int32_t bpp = 1;  // source bytes a pixel in the window: 1, or 3 for colour
    int32_t space = kEdgeRgb;
    int32_t action = kCompute;
    bool grayOut = false;           // a colour source whose brightness alone is shown
    ByteRowFunction row = nullptr;  // channels, or levels when working by brightness
};

// Working rows of one output row: the three level rows of a window, the
// gradients and the centre pixels for the Amount.
struct EdgeScratch {
    std::unique_ptr<uint8_t[]> levels, gradients, centres;
};

int32_t ScratchOpen(const EdgeJob& job, int32_t windowPixels, int32_t width, EdgeScratch& s)
{
    const auto n = static_cast<size_t>(windowPixels);
    const auto w = static_cast<size_t>(width);
    if (job.bpp == 3 && job.space != kEdgeRgb) {
        if (!(s.levels = AllocBytes(3 * n)) || !(s.gradients = AllocBytes(w)))
            return kErrOutOfMemory;
    }
    if (job.pass.Blends() && !(s.centres = AllocBytes(w * static_cast<size_t>(job.bpp))))
        return kErrOutOfMemory;
    return kOk;
}

// The brightness of each pixel of a colour window row.
void Levels(const uint8_t* in, int32_t pixels, bool hsl, uint8_t* out)
{
    for (int32_t i = 0; i < pixels; ++i, in += 3)
        out[i] = static_cast<uint8_t>(hsl ? hsl_lightness(in[2], in[1], in[0])
                                          : hsv_value(in[2], in[1], in[0]));
}

// The action on the centre's brightness, which goes back into the centre
// pixel with its hue and saturation.
template <int32_t Action>
void LevelsBack(const EdgeJob& job, const uint8_t* mid, const uint8_t* centreLevels,
                const uint8_t* g, int32_t advance, int32_t width, uint8_t* out)
{
    const int32_t levelAdvance = advance / 3;
    const bool hsl = job.space == kEdgeHsl;
    for (int32_t k = 0; k < width; ++k, out += 3) {
        const uint8_t* c = mid + k * advance + 3;
        const int32_t old = centreLevels[k * levelAdvance + 1];
        const int32_t level = Act<Action>(old, g[k]);
        int32_t r = c[2], gr = c[1], b = c[0];
        if (hsl)
            set_hsl_lightness(r, gr, b, level);
        else
            set_hsv_value(r, gr, b, old, level);
        out[0] = static_cast<uint8_t>(b), out[1] = static_cast<uint8_t>(gr);
        out[2] = static_cast<uint8_t>(r);
    }
}

// One output row of `width` pixels from a window of three rows of
// `windowPixels` pixels, then the Amount against the centre pixels.
void EdgeRow(const EdgeJob& job, const uint8_t* const* window, int32_t windowPixels,
             int32_t advance, int32_t width, uint8_t* out, const uint8_t* maskRow, EdgeScratch& s)
{
    if (job.bpp == 1 || job.space == kEdgeRgb) {
        job.row(window, advance, width, out);
    } else {
        uint8_t* levels = s.levels.get();
        const auto n = static_cast<size_t>(windowPixels);
        for (int32_t r = 0; r < 3; ++r)
            Levels(window[r], windowPixels, job.space == kEdgeHsl,
                   levels + static_cast<size_t>(r) * n);
        const uint8_t* levelRows[3] = {levels, levels + n, levels + 2 * n};
        if (job.grayOut) {
            job.row(levelRows, advance / 3, width, out);
        } else {
            job.row(levelRows, advance / 3, width, s.gradients.get());
            const uint8_t* g = s.gradients.get();
            switch (job.action) {
            case kDarken:
                LevelsBack<kDarken>(job, window[1], levelRows[1], g, advance, width, out);
                break;
            case kLighten:
                LevelsBack<kLighten>(job, window[1], levelRows[1], g, advance, width, out);
                break;
            default: LevelsBack<kCompute>(job, window[1], levelRows[1], g, advance, width, out);
            }
        }
    }
    if (!job.pass.Blends()) return;
    uint8_t* centres = s.centres.get();
    const int32_t bpp = job.bpp;
    for (int32_t k = 0; k < width; ++k)
        for (int32_t c = 0; c < bpp; ++c) centres[k * bpp + c] = window[1][k * advance + bpp + c];
    AmountBlendRow(job.pass, centres, out, maskRow, width, bpp);
}

// Row y of a picture with one repeated pixel at each end, binary read as 0
// and 255: what the window reads at full size.
void PaddedRow(const Image& image, int32_t y, uint8_t* out)
{
    const int32_t w = image.width;
    const uint8_t* row = image.rows[y];
    if (image.kind == kImageBinary) {
        for (int32_t x = 0; x < w; ++x) out[x + 1] = GetBit(row, x) ? 255 : 0;
        out[0] = out[1], out[w + 1] = out[w];
        return;
    }
    const int32_t bpp = image.kind == kImageColor ? 3 : 1;
    std::memcpy(out + bpp, row, static_cast<size_t>(w) * static_cast<size_t>(bpp));
    for (int32_t c = 0; c < bpp; ++c) {
        out[c] = out[bpp + c];
        out[(w + 1) * bpp + c] = out[w * bpp + c];
    }
}

// A full result with its rows spread over the threads, each made from three
// padded rows of its own.
int32_t ParallelEdge(const TransformArgs& args, const EdgeJob& job, int32_t kind)
{
    const Image& source = *args.source;
    if (int32_t code =
            ImageAlloc(*args.destination, kind, args.outWidth, args.outHeight, source.resolution))
        return code;
    ClearImagePadding(*args.destination);
    const Image* mask = job.pass.UsesMask() ? args.params->amount.mask : nullptr;
    const int32_t windowPixels = source.width + 2;
    const auto rowBytes = static_cast<size_t>(windowPixels) * static_cast<size_t>(job.bpp);
    std::atomic<bool> shortOfMemory{false};
    WorkerBusy busy;
    busy.Open(args, "Edge");
    int32_t result = ParallelRows(
        args.height,
        [&](int32_t y) {
            EdgeScratch s;
            std::unique_ptr<uint8_t[]> rows = AllocBytes(3 * rowBytes);
            if (!rows || ScratchOpen(job, windowPixels, args.width, s)) {
                shortOfMemory = true;
                return;
            }
            const uint8_t* window[3];
            for (int32_t r = 0; r < 3; ++r) {
                const int32_t sy = std::min(std::max(y - 1 + r, 0), source.height - 1);
                uint8_t* row = rows.get() + static_cast<size_t>(r) * rowBytes;
                PaddedRow(source, sy, row);
                window[r] = row;
            }
            EdgeRow(job, window, windowPixels, job.bpp, args.width, args.destination->rows[y],
                    mask ? mask->rows[y] : nullptr, s);
        },
        [&](int32_t done) {
            if (shortOfMemory) return int32_t{kErrOutOfMemory};
            return busy.Step(done);
        });
    busy.Close();
    if (!result && shortOfMemory) result = kErrOutOfMemory;
    return result;
}

int32_t Worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const auto& params = static_cast<const EdgeParams&>(*args.params);
    EdgeJob job;
    job.pass = AmountPassFor(params.amount);
    if (job.pass.level == 0 && (job.pass.level2 == -1 || job.pass.level2 == 0))
        return RunShortWay(args);
    const bool color = source->kind == kImageColor;
    job.bpp = color ? 3 : 1;
    job.space = color ? params.colorSpace : kEdgeRgb;
    job.action = params.action;
    // Only the brightness is computed: with nothing to mix it back into,
    // the result is a gray picture.
    job.grayOut = color && job.space != kEdgeRgb && job.action == kCompute && !job.pass.Blends();
    job.row = job.space == kEdgeRgb ? ByteRowOf(params.method, params.action, job.bpp)
                                    : ByteRowOf(params.method, kCompute, 1);
    const int32_t kind = color && !job.grayOut ? kImageColor : kImageGray;

    if (args.toImage && WholeOutput(args) && args.zoom == 1 && args.sourceX == 0 &&
        args.sourceY == 0 && args.width == source->width && args.height == source->height &&
        int64_t{args.width} * args.height >= kParallelPixels && ThreadCount() > 1)
        return ParallelEdge(args, job, kind);

    LineWindow window;
    LineInput mask;
    LineOutput out;
    EdgeScratch scratch;
    LineWindowReset(window);
    LineInputReset(mask);
    LineOutputReset(out);
    int32_t result =
        LineWindowOpen(*source, args.sourceX, args.sourceY, args.zoom, args.width, 1, window);
    const int32_t windowPixels = window.rowBytes / job.bpp;
    if (!result && job.pass.UsesMask())
        result = LineInputOpen(*args.params->amount.mask, args.sourceX, args.sourceY, args.zoom,
                               args.width, mask);
    if (!result) result = ScratchOpen(job, windowPixels, args.width, scratch);
    if (!result) result = WorkerOutputOpen(args, kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, "Edge");
        for (int32_t line = 0; line < args.height && !result; ++line) {
            const uint8_t* const* rows = LineWindowNext(window);
            uint8_t* output = LineOutputRow(out);
            EdgeRow(job, rows, windowPixels, window.advance, args.width, output,
                    job.pass.UsesMask() ? LineInputNext(mask) : nullptr, scratch);
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineWindowClose(window);
    LineInputClose(mask);
    LineOutputClose(out);
    return result;
}

const TransformRegistration kEdge({
    .name = "edge",
    .title = "Edge",
    .commandId = 4041,
    .params =
        {
            {
                .name = "method",
                .type = ParamType::Choice,
                .field = Field(&EdgeParams::method),
                .defaultValue = kRoberts,
                .choiceLabels = "Roberts|Sobel|Laplacian",
                .choices = "roberts|sobel|laplacian",
                .label = "Method:",
                .help = "the gradient: Roberts' diagonal differences, Sobel's 3 by 3 "
                        "differences, or the Laplacian (bright side of an edge only)",
            },
            {
                .name = "action",
                .type = ParamType::Choice,
                .field = Field(&EdgeParams::action),
                .defaultValue = kCompute,
                .choiceLabels = "Compute|Darken|Lighten",
                .choices = "compute|darken|lighten",
                .label = "Action:",
                .help = "what is shown: the gradient, the pixel less it, or the pixel plus it",
            },
            {
                .name = "color-space",
                .type = ParamType::Choice,
                .field = Field(&EdgeParams::colorSpace),
                .defaultValue = kEdgeRgb,
                .choiceLabels = "RGB|HSV|HSL",
                .choices = "rgb|hsv|hsl",
                .label = "Color Space:",
                .help = "for colour: each channel by itself, or the HSV value or HSL lightness "
                        "alone, keeping hue and saturation",
            },
        },
    .create = NewParams<EdgeParams>,
    .worker = Worker,
    .help = "Finds the edges of the picture: the local gradient, shown as it is or used to "
            "darken or lighten each pixel. Computing the value or lightness of a colour "
            "picture at full strength gives a gray picture.",
    .example = "--method sobel --action darken",
});

}  // namespace
}  // namespace lv
