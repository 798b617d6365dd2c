// Halftone: a classic screen of round dots. The screen is a grid of square
// cells of the chosen size turned by the chosen angle; in each cell a round
// dot whose area is the cell's share of black, taken from the mean level of
// the input over a square of the cell's size at the cell's centre, so a flat
// area keeps its average. Up to half black the dot is black on white;
// beyond, a white dot on black, so the dots meet at the middle gray. Every
// output level is 0 or 255, and the kind stays the input's.
//
// Colour is screened channel by channel at the classic angles offset from
// the chosen one, which is the black screen's: red (its cyan ink) 30
// degrees below, green (magenta) 30 above, blue (yellow) 45 below; at the
// default of 45 degrees that is 15, 75 and 0.
//
// A pixel's level depends only on where it is and on the full input, read
// directly at full size, so a preview at any zoom shows exactly the pixels
// of the full result, and the rows can be computed in any order.
#include <algorithm>
#include <cmath>
#include <memory>

#include "image/lineio.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

struct HalftoneParams : TransformParams {
    int32_t cellSize;
    int32_t angle;  // degrees
};

constexpr double kDegree = 3.14159265358979323846 / 180.0;
constexpr double kPi = 3.14159265358979323846;

// One channel's screen.
struct Screen {
    double cosine = 1, sine = 0;
};

// The cell means already computed, by cell: a small table indexed by a hash
// of the cell, which rows near each other share. It only saves work; a
// missing cell is computed again with the same result.
struct MeanCache {
    struct Entry {
        int32_t i = 0, j = 0;
        bool valid = false;
        double mean = 0;
    };
    std::unique_ptr<Entry[]> entries;
    uint32_t mask = 0;
};

struct HalftoneJob {
    const Image* source = nullptr;
    int32_t size = 8;
    int32_t channels = 1;
    Screen screens[3];
    int32_t sourceX = 0, sourceY = 0, step = 1, width = 0;
};

// The level of one channel at picture pixel (x, y), clamped to the picture.
inline int32_t Level(const Image& image, int32_t x, int32_t y, int32_t channel)
{
    x = x < 0 ? 0 : (x >= image.width ? image.width - 1 : x);
    y = y < 0 ? 0 : (y >= image.height ? image.height - 1 : y);
    const uint8_t* row = image.rows[y];
    if (image.kind == kImageBinary) return GetBit(row, x) ? 255 : 0;
    return image.kind == kImageColor ? row[3 * x + channel] : row[x];
}

// The mean level over the square of the cell's size centred at (cx, cy),
// edges repeated.
double BoxMean(const HalftoneJob& job, double cx, double cy, int32_t channel)
{
    const int32_t s = job.size;
    const auto x0 = static_cast<int32_t>(std::floor(cx - 0.5 * s + 0.5));
    const auto y0 = static_cast<int32_t>(std::floor(cy - 0.5 * s + 0.5));
    int64_t sum = 0;
    for (int32_t y = y0; y < y0 + s; ++y)
        for (int32_t x = x0; x < x0 + s; ++x) sum += Level(*job.source, x, y, channel);
    return static_cast<double>(sum) / (static_cast<double>(s) * s);
}

int32_t CacheOpen(const HalftoneJob& job, MeanCache& cache)
{
    // Room for the cells of a few rows of cells across the output.
    uint32_t count = 1024;
    const int64_t wanted = 8 * (int64_t{job.width} * job.step / job.size + 2) * job.channels;
    while (count < wanted && count < (1u << 22)) count <<= 1;
    cache.entries.reset(new (std::nothrow) MeanCache::Entry[count]);
    cache.mask = count - 1;
    return cache.entries ? kOk : kErrOutOfMemory;
}

// 0 or 255 for one channel of picture pixel (x, y).
uint8_t ScreenLevel(const HalftoneJob& job, MeanCache& cache, int32_t x, int32_t y, int32_t channel)
{
    const Screen& screen = job.screens[channel];
    const double s = job.size;
    const double px = x + 0.5, py = y + 0.5;
    const double u = px * screen.cosine + py * screen.sine;
    const double v = py * screen.cosine - px * screen.sine;
    const double fi = std::floor(u / s), fj = std::floor(v / s);
    const double cu = (fi + 0.5) * s, cv = (fj + 0.5) * s;
    const double du = u - cu, dv = v - cv;
    const auto i = static_cast<int32_t>(fi), j = static_cast<int32_t>(fj);
    const uint32_t key =
        (static_cast<uint32_t>(i) * 73856093u ^ static_cast<uint32_t>(j) * 19349663u ^
         static_cast<uint32_t>(channel) * 83492791u) &
        cache.mask;
    MeanCache::Entry& e = cache.entries[key];
    if (!e.valid || e.i != i || e.j != j) {
        e.i = i, e.j = j, e.valid = true;
        e.mean = BoxMean(job, cu * screen.cosine - cv * screen.sine,
                         cu * screen.sine + cv * screen.cosine, channel);
    }
    // The share of white; the dot is of the lesser colour and has its area.
    const double white = e.mean / 255.0;
    const double d2 = du * du + dv * dv;
    if (white >= 0.5) return d2 < (1.0 - white) * s * s / kPi ? 0 : 255;
    return d2 < white * s * s / kPi ? 255 : 0;
}

// Output row `line`: `width` pixels of `channels` bytes each, 0 or 255.
void ScreenRow(const HalftoneJob& job, MeanCache& cache, int32_t line, uint8_t* out)
{
    const int32_t y = job.sourceY + line * job.step;
    for (int32_t k = 0; k < job.width; ++k) {
        const int32_t x = job.sourceX + k * job.step;
        for (int32_t c = 0; c < job.channels; ++c)
            out[k * job.channels + c] = ScreenLevel(job, cache, x, y, c);
    }
}

// Writes a byte row as bits from `bitOffset`: 128 and above set.
void PackRow(const uint8_t* levels, uint8_t* out, int32_t pixels, int32_t bitOffset)
{
    for (int32_t k = 0; k < pixels; ++k) PutBit(out, bitOffset + k, levels[k] >= 128);
}

// The rows first .. first + count - 1 of the output, each handed to `emit`
// (line, row) with the Amount blended in; a non-zero result from it stops.
template <class Emit>
int32_t RunLines(const HalftoneJob& job, const TransformArgs& args, const AmountPass& pass,
                 int32_t first, int32_t count, Emit emit)
{
    MeanCache cache;
    LineInput in, mask;
    LineInputReset(in);
    LineInputReset(mask);
    std::unique_ptr<uint8_t[]> row = AllocBytes(static_cast<size_t>(job.width) * job.channels + 1);
    int32_t result = row ? CacheOpen(job, cache) : kErrOutOfMemory;
    const int32_t y = job.sourceY + first * job.step;
    if (!result && pass.Blends())
        result = LineInputOpen(*job.source, job.sourceX, y, args.zoom, job.width, in);
    if (!result && pass.UsesMask())
        result =
            LineInputOpen(*args.params->amount.mask, job.sourceX, y, args.zoom, job.width, mask);
    for (int32_t line = first; line < first + count && !result; ++line) {
        ScreenRow(job, cache, line, row.get());
        if (pass.Blends())
            AmountBlendRow(pass, LineInputNext(in), row.get(),
                           pass.UsesMask() ? LineInputNext(mask) : nullptr, job.width,
                           job.channels);
        result = emit(line, row.get());
    }
    LineInputClose(in);
    LineInputClose(mask);
    return result;
}

constexpr int32_t kBandLines = 32;

int32_t Worker(const TransformArgs& args)
{
    const auto& params = static_cast<const HalftoneParams&>(*args.params);
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const AmountBlock& a = params.amount;
    if (a.amount == 0 && (a.amount2 == -1 || a.amount2 == 0)) return RunShortWay(args);
    const AmountPass pass = AmountPassFor(a);

    HalftoneJob job;
    job.source = source;
    job.size = params.cellSize;
    job.channels = source->kind == kImageColor ? 3 : 1;
    // Stored blue, green, red: yellow, magenta and cyan screens.
    const int32_t offsets[3] = {job.channels == 3 ? -45 : 0, 30, -30};
    for (int32_t c = 0; c < job.channels; ++c) {
        const double angle = (params.angle + offsets[c]) * kDegree;
        job.screens[c] = {std::cos(angle), std::sin(angle)};
    }
    job.sourceX = args.sourceX, job.sourceY = args.sourceY;
    job.step = args.zoom < 0 ? -args.zoom : 1;
    job.width = args.width;
    const bool binary = source->kind == kImageBinary;

    WorkerBusy busy;
    // A full result: bands of rows to all the cores, each written in place.
    if (args.toImage && WholeOutput(args) && args.zoom == 1 && args.sourceX == 0 &&
        args.sourceY == 0 && args.width == source->width && args.height == source->height) {
        Image& d = *args.destination;
        if (int32_t code =
                ImageAlloc(d, source->kind, args.outWidth, args.outHeight, source->resolution))
            return code;
        ClearImagePadding(d);
        const int32_t bands = (args.height + kBandLines - 1) / kBandLines;
        busy.Open(args, "Halftone");
        int32_t failure = kOk;  // the first band's failure, by band order
        std::unique_ptr<int32_t[]> codes(new (std::nothrow) int32_t[bands]());
        if (!codes) {
            busy.Close();
            return kErrOutOfMemory;
        }
        int32_t result = ParallelRows(
            bands,
            [&](int32_t band) {
                const int32_t first = band * kBandLines;
                codes[band] =
                    RunLines(job, args, pass, first, std::min(kBandLines, args.height - first),
                             [&](int32_t line, const uint8_t* row) {
                                 if (binary)
                                     PackRow(row, d.rows[line], args.width, 0);
                                 else
                                     CopyBytes(row, d.rows[line],
                                               static_cast<size_t>(args.width) * job.channels);
                                 return int32_t{kOk};
                             });
            },
            [&](int32_t done) {
                return busy.Step(std::min((done + 1) * kBandLines, args.height) - 1);
            });
        busy.Close();
        for (int32_t band = 0; band < bands && !failure; ++band) failure = codes[band];
        return result ? result : failure;
    }

    LineOutput out;
    LineOutputReset(out);
    int32_t result = WorkerOutputOpen(args, source->kind, out);
    if (!result) {
        busy.Open(args, "Halftone");
        const int32_t bitOffset = out.row ? 0 : out.x0 & 7;
        result = RunLines(job, args, pass, 0, args.height, [&](int32_t line, const uint8_t* row) {
            uint8_t* target = LineOutputRow(out);
            if (binary)
                PackRow(row, target, args.width, bitOffset);
            else
                CopyBytes(row, target, static_cast<size_t>(args.width) * job.channels);
            LineOutputFlush(out);
            return busy.Step(line);
        });
        busy.Close();
    }
    LineOutputClose(out);
    return result;
}

const TransformRegistration kHalftone({
    .name = "halftone",
    .title = "Halftone",
    .commandId = 4014,
    .params = {{
                   .name = "cell-size",
                   .type = ParamType::Int,
                   .field = Field(&HalftoneParams::cellSize),
                   .minimum = 2,
                   .maximum = 64,
                   .defaultValue = 8,
                   .label = "Cell Size:",
                   .help = "the distance between neighbouring dots, in pixels",
               },
               {
                   .name = "angle",
                   .type = ParamType::Int,
                   .field = Field(&HalftoneParams::angle),
                   .minimum = 0,
                   .maximum = 359,
                   .defaultValue = 45,
                   .label = "Angle:",
                   .help = "the screen's angle in degrees; for colour, the black screen's, with "
                           "red 30 below, green 30 above and blue 45 below",
               }},
    .create = NewParams<HalftoneParams>,
    .worker = Worker,
    .help = "A screen of round dots whose size follows the level; every output level is 0 or 255 "
            "and the kind stays the input's.",
    .example = "--cell-size 12 --angle 30",
});

}  // namespace
}  // namespace lv
