#include "filters/gaussian.h"

#include <algorithm>
#include <atomic>

#include "image/lineio.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "image/progress.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "transform/point_worker.h"

namespace lv {

namespace {

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;
// Columns gathered together, so that reading a source row touches a run of
// neighbouring bytes rather than one pixel.
constexpr int32_t kColumnGroup = 16;
// Groups a thread takes at once.
constexpr int32_t kGroupsPerRun = 8;

}  // namespace

void BoxPass(const uint8_t* in, uint8_t* out, int32_t n, int32_t r, int32_t channels)
{
    const int32_t w = 2 * r + 1;
    if (n < w) {
        // Too short to filter: every sample is margin.
        if (n > 1) CopyBytes(in, out, static_cast<size_t>(n - 1) * channels);
        return;
    }
    // S / w by a reciprocal: S is at most 255 * 257, far inside the range
    // where ceil(2^32 / w) gives the exact truncated quotient.
    const uint64_t reciprocal = ((uint64_t{1} << 32) + static_cast<uint64_t>(w) - 1) / w;
    const int32_t end = n - 1 - r;
    for (int32_t c = 0; c < channels; ++c) {
        const uint8_t* src = in + c;
        uint8_t* dst = out + c;
        uint32_t sum = 0;
        for (int32_t k = 0; k < w; ++k) sum += src[k * channels];
        for (int32_t k = 0; k < r; ++k) dst[k * channels] = src[k * channels];
        for (int32_t i = r; i < end; ++i) {
            dst[i * channels] = static_cast<uint8_t>((sum * reciprocal) >> 32);
            sum += src[(i + r + 1) * channels];
            sum -= src[(i - r) * channels];
        }
        for (int32_t k = end; k < end + r; ++k) dst[k * channels] = src[k * channels];
    }
}

int32_t ReflectIndex(int64_t c, int32_t size)
{
    if (c < 0) return static_cast<int32_t>(std::min<int64_t>(-c, size - 1));
    if (c >= size) return static_cast<int32_t>(std::max<int64_t>(2 * int64_t{size} - 2 - c, 0));
    return static_cast<int32_t>(c);
}

int32_t GaussianColumns(const Image& source, int32_t sourceX, int32_t sourceY, int32_t step,
                        int32_t width, int32_t height, int32_t radius, bool parallel,
                        GaussianScratch& scratch, const std::function<int32_t(int32_t)>& progress)
{
    const int32_t r = radius;
    const int32_t ch = source.kind == kImageColor ? 3 : 1;
    const int64_t rowLength = int64_t{width} * step + 4 * int64_t{r};
    const int64_t columnLength = int64_t{height} * step + 4 * int64_t{r};
    if (rowLength * ch > INT32_MAX || columnLength * ch > INT32_MAX) return kErrOutOfMemory;
    scratch.radius = r;
    scratch.step = step;
    scratch.rowLength = static_cast<int32_t>(rowLength);
    scratch.columnLength = static_cast<int32_t>(columnLength);
    scratch.channels = ch;
    if (int32_t code = ImageAlloc(scratch.image, ch == 3 ? kImageColor : kImageGray,
                                  scratch.rowLength, height, 0.0))
        return code;

    // Where each line position reads in the source, reflected once.
    const int32_t n = scratch.columnLength, columns = scratch.rowLength;
    auto rowIndex = std::unique_ptr<int32_t[]>(new (std::nothrow) int32_t[n]);
    auto columnIndex = std::unique_ptr<int32_t[]>(new (std::nothrow) int32_t[columns]);
    if (!rowIndex || !columnIndex) return kErrOutOfMemory;
    for (int32_t t = 0; t < n; ++t)
        rowIndex[t] = ReflectIndex(int64_t{sourceY} - 2 * r + t, source.height);
    for (int32_t x = 0; x < columns; ++x)
        columnIndex[x] = ReflectIndex(int64_t{sourceX} - 2 * r + x, source.width);

    const int32_t groups = (columns + kColumnGroup - 1) / kColumnGroup;
    const size_t line = static_cast<size_t>(n) * ch;
    // Working lines for one group: gathered side by side, and the second
    // line of the passes. One set serves many groups, so that large blocks
    // are not mapped afresh for each.
    struct Lines {
        std::unique_ptr<uint8_t[]> lines, other;
        bool Alloc(size_t line)
        {
            lines = AllocBytes(line * kColumnGroup);
            other = AllocBytes(line);
            if (!lines || !other) return false;
            std::fill_n(other.get(), line, uint8_t{0});
            return true;
        }
    };
    // One group of columns: gathered, each blurred and its shown rows kept.
    auto group = [&](int32_t g, Lines& work, const std::function<int32_t(int32_t)>* eachColumn) {
        const int32_t first = g * kColumnGroup;
        const int32_t count = std::min(kColumnGroup, columns - first);
        uint8_t* lines = work.lines.get();
        for (int32_t t = 0; t < n; ++t) {
            const uint8_t* row = source.rows[rowIndex[t]];
            for (int32_t k = 0; k < count; ++k) {
                const int32_t x = columnIndex[first + k];
                uint8_t* p = lines + static_cast<size_t>(k) * line + static_cast<size_t>(t) * ch;
                if (source.kind == kImageBinary)
                    p[0] = GetBit(row, x) ? 255 : 0;
                else if (ch == 1)
                    p[0] = row[x];
                else
                    p[0] = row[3 * x], p[1] = row[3 * x + 1], p[2] = row[3 * x + 2];
            }
        }
        for (int32_t k = 0; k < count; ++k) {
            uint8_t* a = lines + static_cast<size_t>(k) * line;
            BoxPass(a, work.other.get(), n, r, ch);
            BoxPass(work.other.get(), a, n, r, ch);
            const size_t at = static_cast<size_t>(first + k) * ch;
            for (int32_t j = 0; j < height; ++j) {
                const uint8_t* p = a + (static_cast<size_t>(2 * r) + size_t(j) * step) * ch;
                uint8_t* q = scratch.image.rows[j] + at;
                for (int32_t c = 0; c < ch; ++c) q[c] = p[c];
            }
            if (eachColumn) {
                if (int32_t code = (*eachColumn)(first + k)) return code;
            }
        }
        return int32_t{kOk};
    };

    if (!parallel) {
        Lines work;
        if (!work.Alloc(line)) return kErrOutOfMemory;
        for (int32_t g = 0; g < groups; ++g)
            if (int32_t code = group(g, work, &progress)) return code;
        return kOk;
    }
    // The threads take runs of groups, each run with lines of its own.
    const int32_t runs = (groups + kGroupsPerRun - 1) / kGroupsPerRun;
    const int32_t runColumns = kGroupsPerRun * kColumnGroup;
    std::atomic<bool> shortOfMemory{false};
    int32_t result = ParallelRows(
        runs,
        [&](int32_t run) {
            Lines work;
            if (!work.Alloc(line)) {
                shortOfMemory = true;
                return;
            }
            const int32_t last = std::min(groups, (run + 1) * kGroupsPerRun);
            for (int32_t g = run * kGroupsPerRun; g < last; ++g) group(g, work, nullptr);
        },
        [&](int32_t done) {
            if (shortOfMemory) return int32_t{kErrOutOfMemory};
            return progress(std::min(columns - 1, (done + 1) * runColumns - 1));
        });
    if (!result && shortOfMemory) result = kErrOutOfMemory;
    return result;
}

void GaussianRow(const GaussianScratch& scratch, int32_t j, int32_t width, uint8_t* a, uint8_t* b,
                 uint8_t* out)
{
    const int32_t r = scratch.radius, ch = scratch.channels;
    BoxPass(scratch.image.rows[j], a, scratch.rowLength, r, ch);
    BoxPass(a, b, scratch.rowLength, r, ch);
    const uint8_t* p = b + static_cast<size_t>(2 * r) * ch;
    const size_t stride = static_cast<size_t>(scratch.step) * ch;
    if (ch == 1) {
        for (int32_t i = 0; i < width; ++i) out[i] = p[i * stride];
        return;
    }
    for (int32_t i = 0; i < width; ++i, p += stride, out += 3)
        out[0] = p[0], out[1] = p[1], out[2] = p[2];
}

int32_t RunGaussianFilter(const TransformArgs& args, const char* title, int32_t radius,
                          const GaussianFinish& finish)
{
    const Image& source = *args.source;
    const AmountPass pass = AmountPassFor(args.params->amount);
    const Image* mask = pass.UsesMask() ? args.params->amount.mask : nullptr;
    const int32_t ch = source.kind == kImageColor ? 3 : 1;
    const int32_t kind = ch == 3 ? kImageColor : kImageGray;
    const int32_t step = args.zoom < 0 ? -args.zoom : 1;
    const int32_t r = std::max(radius, 1);
    const int32_t width = args.width, height = args.height;
    const int64_t rowLength = int64_t{width} * step + 4 * int64_t{r};
    const int64_t columnLength = int64_t{height} * step + 4 * int64_t{r};
    if (rowLength + height > INT32_MAX) return kErrOutOfMemory;

    LineInput center, maskIn;
    LineOutput out;
    LineInputReset(center);
    LineInputReset(maskIn);
    LineOutputReset(out);
    int32_t result = WorkerOutputOpen(args, kind, out);
    const bool boxed = int64_t{width} * height >= 10000;
    const auto lastColumn = static_cast<int32_t>(rowLength - 1);
    if (boxed)
        ProgressOpen(0, static_cast<int32_t>(rowLength + height - 1), title, true);
    else
        SetWaitCursor();
    const bool parallel = ThreadCount() > 1 && rowLength * columnLength >= kParallelPixels;
    GaussianScratch scratch;
    if (!result)
        result = GaussianColumns(
            source, args.sourceX, args.sourceY, step, width, height, r, parallel, scratch,
            [&](int32_t column) { return boxed ? ProgressStep(column) : int32_t{kOk}; });

    const size_t line = static_cast<size_t>(rowLength) * ch;
    const size_t pixels = static_cast<size_t>(width) * ch;
    // A full result made at once: each row straight into its place.
    const bool direct = !result && parallel && args.toImage && WholeOutput(args) &&
                        args.zoom == 1 && args.sourceX == 0 && args.sourceY == 0 &&
                        width == source.width && height == source.height &&
                        (!mask || mask->kind == kImageGray);
    if (direct) {
        std::atomic<bool> shortOfMemory{false};
        result = ParallelRows(
            height,
            [&](int32_t j) {
                auto a = AllocBytes(line), b = AllocBytes(line), blurred = AllocBytes(pixels);
                auto expanded = AllocBytes(source.kind == kImageBinary ? pixels : 0);
                if (!a || !b || !blurred || !expanded) {
                    shortOfMemory = true;
                    return;
                }
                GaussianRow(scratch, j, width, a.get(), b.get(), blurred.get());
                const uint8_t* c = source.rows[j];
                if (source.kind == kImageBinary) {
                    for (int32_t i = 0; i < width; ++i) expanded[i] = GetBit(c, i) ? 255 : 0;
                    c = expanded.get();
                }
                finish(blurred.get(), c, mask ? mask->rows[j] : nullptr, args.destination->rows[j],
                       width, ch);
            },
            [&](int32_t done) {
                if (shortOfMemory) return int32_t{kErrOutOfMemory};
                return boxed ? ProgressStep(lastColumn + 1 + done) : int32_t{kOk};
            });
        if (!result && shortOfMemory) result = kErrOutOfMemory;
    } else if (!result) {
        auto a = AllocBytes(line), b = AllocBytes(line), blurred = AllocBytes(pixels);
        if (!a || !b || !blurred) result = kErrOutOfMemory;
        if (!result)
            result = LineInputOpen(source, args.sourceX, args.sourceY, args.zoom, width, center);
        if (!result && mask)
            result = LineInputOpen(*mask, args.sourceX, args.sourceY, args.zoom, width, maskIn);
        if (!result) {
            std::fill_n(a.get(), line, uint8_t{0});
            std::fill_n(b.get(), line, uint8_t{0});
        }
        for (int32_t j = 0; j < height && !result; ++j) {
            GaussianRow(scratch, j, width, a.get(), b.get(), blurred.get());
            const uint8_t* c = LineInputNext(center);
            const uint8_t* m = mask ? LineInputNext(maskIn) : nullptr;
            finish(blurred.get(), c, m, LineOutputRow(out), width, ch);
            LineOutputFlush(out);
            if (boxed) result = ProgressStep(lastColumn + 1 + j);
        }
    }
    if (boxed)
        ProgressClose();
    else
        SetArrowCursor();
    LineInputClose(center);
    LineInputClose(maskIn);
    LineOutputClose(out);
    return result;
}

}  // namespace lv
