#include "geometry/add_border.h"

#include <algorithm>
#include <cstring>

#include "geometry/crop.h"
#include "image/display.h"
#include "image/lineio.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {

namespace {

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

int32_t Saturate(int64_t v)
{
    return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
}

// The smallest k with first + k * step >= limit (step above 0), within
// 0..count.
int32_t FirstAtOrPast(int64_t limit, int64_t first, int32_t step, int32_t count)
{
    const int64_t gap = limit - first;
    if (gap <= 0) return 0;
    const int64_t k = (gap + step - 1) / step;
    return static_cast<int32_t>(std::min<int64_t>(k, count));
}

// What one run needs to fill rows.
struct BorderJob {
    const Image* source = nullptr;
    int32_t kind = 0;  // the result's
    BorderMargins margins;
    uint8_t red = 0, green = 0, blue = 0;
};

// Fills `count` pixels of the result's row `row` (rows from the bottom of
// the whole result), the columns first, first + step, and so on; a 1-bit row
// is written as bits from `bitOffset`.
void BorderRow(const BorderJob& job, int64_t row, int64_t first, int32_t step, int32_t count,
               uint8_t* out, int32_t bitOffset)
{
    const Image& source = *job.source;
    const int64_t sy = row - job.margins.bottom;
    const bool inside = sy >= 0 && sy < source.height;
    // Output pixels [begin, end) fall on source columns; the rest is border.
    int32_t begin = count, end = count;
    if (inside) {
        begin = FirstAtOrPast(job.margins.left, first, step, count);
        end = FirstAtOrPast(int64_t{job.margins.left} + source.width, first, step, count);
    }
    const uint8_t* in = inside ? source.rows[sy] : nullptr;
    auto sourceColumn = [&](int32_t k) {
        return static_cast<int32_t>(first + int64_t{k} * step - job.margins.left);
    };

    if (job.kind == kImageBinary) {
        // A row wholly outside: all ones when red is above 0; a column
        // outside: set when red is 128 or more. Only 0 and 255 reach here.
        const int32_t rowBit = job.red > 0 ? 1 : 0;
        const int32_t columnBit = job.red >= 128 ? 1 : 0;
        if (!inside) {
            for (int32_t k = 0; k < count; ++k) PutBit(out, bitOffset + k, rowBit);
            return;
        }
        for (int32_t k = 0; k < begin; ++k) PutBit(out, bitOffset + k, columnBit);
        for (int32_t k = begin; k < end; ++k)
            PutBit(out, bitOffset + k, GetBit(in, sourceColumn(k)));
        for (int32_t k = end; k < count; ++k) PutBit(out, bitOffset + k, columnBit);
        return;
    }

    if (job.kind == kImageGray) {
        std::memset(out, job.red, static_cast<size_t>(begin));
        for (int32_t k = begin; k < end; ++k) {
            const int32_t sx = sourceColumn(k);
            out[k] = source.kind == kImageBinary ? (GetBit(in, sx) ? 255 : 0) : in[sx];
        }
        std::memset(out + end, job.red, static_cast<size_t>(count - end));
        return;
    }

    // Colour: blue, green, red.
    auto fill = [&](int32_t from, int32_t to) {
        for (int32_t k = from; k < to; ++k) {
            out[3 * k] = job.blue;
            out[3 * k + 1] = job.green;
            out[3 * k + 2] = job.red;
        }
    };
    fill(0, begin);
    if (source.kind == kImageColor && step == 1) {
        if (end > begin)
            CopyBytes(in + static_cast<size_t>(sourceColumn(begin)) * 3, out + 3 * begin,
                      static_cast<size_t>(end - begin) * 3);
    } else {
        for (int32_t k = begin; k < end; ++k) {
            const int32_t sx = sourceColumn(k);
            uint8_t* q = out + 3 * k;
            if (source.kind == kImageColor) {
                const uint8_t* p = in + static_cast<size_t>(sx) * 3;
                q[0] = p[0];
                q[1] = p[1];
                q[2] = p[2];
            } else {
                const uint8_t v = source.kind == kImageBinary ? (GetBit(in, sx) ? 255 : 0) : in[sx];
                q[0] = q[1] = q[2] = v;
            }
        }
    }
    fill(end, count);
}

// Where a 1-bit row handed out by the line output starts; see crop.cpp.
int32_t BitOffset(const LineOutput& out) { return out.row ? 0 : out.x0 & 7; }

}  // namespace

BorderMargins border_margins(const BorderParams& params, double resolution)
{
    auto pixels = [&](double value) {
        return std::max(LengthToPixels(value, params.units, resolution), 0);
    };
    BorderMargins m;
    m.left = pixels(params.left);
    m.right = pixels(params.right);
    m.top = pixels(params.top);
    m.bottom = pixels(params.bottom);
    return m;
}

int32_t border_output_kind(int32_t inputKind, int32_t red, int32_t green, int32_t blue)
{
    int32_t kind = kImageColor;
    if (red == green && green == blue) kind = red == 0 || red == 255 ? kImageBinary : kImageGray;
    return std::max(kind, inputKind);
}

void border_output_size(int32_t width, int32_t height, const BorderMargins& margins,
                        int32_t& outWidth, int32_t& outHeight)
{
    outWidth = Saturate(int64_t{width} + margins.left + margins.right);
    outHeight = Saturate(int64_t{height} + margins.top + margins.bottom);
}

int32_t border_run(const TransformArgs& args, const BorderMargins& margins, int32_t red,
                   int32_t green, int32_t blue)
{
    const Image& source = *args.source;
    if (source.kind < kImageBinary || source.kind > kImageColor) return kErrImageType;
    if (margins.left == 0 && margins.right == 0 && margins.top == 0 && margins.bottom == 0) {
        if (args.toImage) return ImageCopy(source, *args.destination);
        const int32_t h = args.outHeight;
        return DisplayUpdate(source, *args.outputTarget, nullptr, args.rectLeft,
                             h - 1 - args.rectBottom, args.rectRight, h - 1 - args.rectTop, true);
    }
    BorderJob job;
    job.source = &source;
    job.kind = border_output_kind(source.kind, red, green, blue);
    job.margins = margins;
    job.red = static_cast<uint8_t>(Clamp8(red));
    job.green = static_cast<uint8_t>(Clamp8(green));
    job.blue = static_cast<uint8_t>(Clamp8(blue));
    const bool whole = WholeOutput(args);

    // A full result of a large picture: every row on its own, so the rows
    // can go to all the cores.
    if (args.toImage && whole && args.zoom == 1 && args.sourceX == 0 && args.sourceY == 0 &&
        args.width == args.outWidth && args.height == args.outHeight &&
        int64_t{args.width} * args.height >= kParallelPixels && ThreadCount() > 1) {
        if (int32_t code = ImageAlloc(*args.destination, job.kind, args.outWidth, args.outHeight,
                                      source.resolution))
            return code;
        Image& destination = *args.destination;
        WorkerBusy busy;
        busy.Open(args, "Add Border");
        const int32_t result = ParallelRows(
            args.height,
            [&](int32_t y) {
                BorderRow(job, y, 0, 1, args.width, destination.rows[y], 0);
                ClearRowPadding(destination.rows[y], job.kind, args.width, destination.stride);
            },
            [&](int32_t done) { return busy.Step(done); });
        busy.Close();
        return result;
    }

    // Rows and columns of the whole result that this run computes: from
    // (sourceX, sourceY), every step-th at a reduced preview.
    const int32_t step = args.zoom < 0 ? -args.zoom : 1;
    LineOutput out;
    LineOutputReset(out);
    int32_t result = WorkerOutputOpen(args, job.kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, "Add Border");
        const int32_t bitOffset = BitOffset(out);
        for (int32_t line = 0; line < args.height && !result; ++line) {
            BorderRow(job, int64_t{args.sourceY} + int64_t{line} * step, args.sourceX, step,
                      args.width, LineOutputRow(out), bitOffset);
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineOutputClose(out);
    return result;
}

}  // namespace lv
