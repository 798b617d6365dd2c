#include "geometry/resize.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

#include "image/memory.h"
#include "image/pixel.h"
#include "image/progress.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {

namespace {

// From this many pixels, read or written, a job shares its rows among the
// threads; below it a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

template <class T>
std::unique_ptr<T[]> AllocArray(size_t count)
{
    return std::unique_ptr<T[]>(new (std::nothrow) T[count > 0 ? count : 1]);
}

int32_t Channels(int32_t kind) { return kind == kImageColor ? 3 : 1; }

// The distance in the source between the positions of two neighbouring
// output samples, so that the first and last output samples fall on the
// first and last source ones. A single output sample sits on source index 0.
double Step(int32_t srcSize, int32_t outSize)
{
    return outSize > 1 ? static_cast<double>(srcSize - 1) / static_cast<double>(outSize - 1) : 0.0;
}

int32_t HalfWindow(double step) { return static_cast<int32_t>(0.5 * step) + 1; }

// Index tables of the nearest engine: i (src - 1) / (out - 1), truncating.
void NearestIndices(int32_t srcSize, int32_t outSize, int32_t* table)
{
    for (int32_t i = 0; i < outSize; ++i)
        table[i] =
            outSize > 1 ? static_cast<int32_t>(int64_t{i} * (srcSize - 1) / (outSize - 1)) : 0;
}

void ExpandBits(const uint8_t* bits, uint8_t* out, int32_t width)
{
    for (int32_t x = 0; x < width; ++x) out[x] = GetBit(bits, x) ? 255 : 0;
}

// The row of the source's width that output row y is made from, in bytes of
// the work kind: the source row itself when it serves as it stands, else made
// in `into`. Mul8Table is symmetric, so a weight's own row of it serves as
// the products of every pixel with that weight.
const uint8_t* VerticalPass(const ResizeState& state, int32_t y, uint8_t* into,
                            ResizeRowBuffers& buffers)
{
    const Image& source = *state.source;
    const bool binary = state.srcKind == kImageBinary;
    const int32_t width = state.srcWidth;
    const int32_t bytes = width * Channels(state.workKind);
    auto asBytes = [&](int32_t r) -> const uint8_t* {
        if (!binary) return source.rows[r];
        ExpandBits(source.rows[r], into, width);
        return into;
    };

    if (state.outHeight == state.srcHeight) return asBytes(y);

    if (state.outHeight > state.srcHeight) {
        const double v = static_cast<double>(y) * Step(state.srcHeight, state.outHeight);
        const auto r = static_cast<int32_t>(v);
        if (r >= state.srcHeight - 1) return asBytes(state.srcHeight - 1);
        const auto f = static_cast<int32_t>((v - r) * 255.0 + 0.5);
        if (f == 0) return asBytes(r);
        const uint8_t* keep = Mul8Table[255 - f];
        const uint8_t* take = Mul8Table[f];
        const uint8_t* a = source.rows[r];
        const uint8_t* b = source.rows[r + 1];
        if (binary) {
            for (int32_t x = 0; x < width; ++x)
                into[x] = static_cast<uint8_t>(keep[GetBit(a, x) ? 255 : 0] +
                                               take[GetBit(b, x) ? 255 : 0]);
        } else {
            for (int32_t i = 0; i < bytes; ++i)
                into[i] = static_cast<uint8_t>(keep[a[i]] + take[b[i]]);
        }
        return into;
    }

    // Reducing: the tent of this row, made here; rows outside get no tap.
    int32_t first = 0;
    const uint8_t* weights = buffers.weights.get();
    const int32_t count =
        ResizeTentTaps(state.srcHeight, state.outHeight, y, buffers.weights.get(), first);
    int32_t* sums = buffers.sums.get();
    std::fill(sums, sums + bytes, 0);
    for (int32_t t = 0; t < count; ++t) {
        const uint8_t* p = source.rows[first + t];
        const uint8_t w = weights[t];
        if (binary) {
            // A set bit is 255, whose product with the weight is the weight.
            for (int32_t x = 0; x < width; ++x)
                if (GetBit(p, x)) sums[x] += w;
        } else {
            const uint8_t* product = Mul8Table[w];
            for (int32_t i = 0; i < bytes; ++i) sums[i] += product[p[i]];
        }
    }
    for (int32_t i = 0; i < bytes; ++i) into[i] = static_cast<uint8_t>(std::min(sums[i], 255));
    return into;
}

// Sharpens a resampled row in place, left to right: each pixel moves away from
// the mean of its neighbours by half the difference. The left neighbour has
// already moved when it enters the mean.
void Crispen(uint8_t* row, int32_t width, int32_t channels)
{
    for (int32_t i = 1; i < width - 1; ++i) {
        uint8_t* p = row + static_cast<size_t>(i) * channels;
        for (int32_t k = 0; k < channels; ++k) {
            const int32_t v = p[k];
            const int32_t mean = (p[k - channels] + p[k + channels]) >> 1;
            p[k] = static_cast<uint8_t>(Clamp8(v + (v - mean) / 2));
        }
    }
}

// The row of the source's width resampled across into `out`, then crispened.
void HorizontalPass(const ResizeState& state, const uint8_t* line, uint8_t* out)
{
    const int32_t channels = Channels(state.workKind);
    const int32_t last = state.srcWidth - 1;
    if (state.outWidth > state.srcWidth) {
        for (int32_t i = 0; i < state.outWidth; ++i) {
            const int32_t c = state.firstTap[i];
            const int32_t w = state.weights[i];
            uint8_t* o = out + static_cast<size_t>(i) * channels;
            if (c < last) {
                const uint8_t* a = line + static_cast<size_t>(c) * channels;
                const uint8_t* b = a + channels;
                for (int32_t k = 0; k < channels; ++k)
                    o[k] = static_cast<uint8_t>(Mul8Table[a[k]][255 - w] + Mul8Table[b[k]][w]);
            } else {
                const uint8_t* a = line + static_cast<size_t>(last) * channels;
                for (int32_t k = 0; k < channels; ++k) o[k] = a[k];
            }
        }
    } else {
        const uint8_t* w = state.weights.get();
        for (int32_t i = 0; i < state.outWidth; ++i) {
            const uint8_t* p = line + static_cast<size_t>(state.firstTap[i]) * channels;
            const int32_t n = state.tapCount[i];
            uint8_t* o = out + static_cast<size_t>(i) * channels;
            for (int32_t k = 0; k < channels; ++k) {
                int32_t sum = 0;
                for (int32_t t = 0; t < n; ++t) sum += Mul8Table[p[t * channels + k]][w[t]];
                o[k] = static_cast<uint8_t>(std::min(sum, 255));
            }
            w += n;
        }
    }
    Crispen(out, state.outWidth, channels);
}

void NearestRow(const ResizeState& state, int32_t y, uint8_t* row)
{
    const uint8_t* source = state.source->rows[state.sourceRows[y]];
    const int32_t* column = state.firstTap.get();
    switch (state.workKind) {
    case kImageBinary:
        std::memset(row, 0, static_cast<size_t>(ResizeRowBytes(kImageBinary, state.outWidth)));
        for (int32_t i = 0; i < state.outWidth; ++i)
            if (GetBit(source, column[i])) SetBit(row, i);
        break;
    case kImageGray:
        for (int32_t i = 0; i < state.outWidth; ++i) row[i] = source[column[i]];
        break;
    default:
        for (int32_t i = 0; i < state.outWidth; ++i) {
            const uint8_t* p = source + static_cast<size_t>(column[i]) * 3;
            row[3 * i] = p[0];
            row[3 * i + 1] = p[1];
            row[3 * i + 2] = p[2];
        }
        break;
    }
}

int32_t BuildNearest(ResizeState& state)
{
    state.firstTap = AllocArray<int32_t>(static_cast<size_t>(state.outWidth));
    state.sourceRows = AllocArray<int32_t>(static_cast<size_t>(state.outHeight));
    if (!state.firstTap || !state.sourceRows) return kErrOutOfMemory;
    NearestIndices(state.srcWidth, state.outWidth, state.firstTap.get());
    NearestIndices(state.srcHeight, state.outHeight, state.sourceRows.get());
    return kOk;
}

int32_t BuildSmooth(ResizeState& state)
{
    const int32_t out = state.outWidth, src = state.srcWidth;
    if (out > src) {
        state.firstTap = AllocArray<int32_t>(static_cast<size_t>(out));
        state.weights = AllocArray<uint8_t>(static_cast<size_t>(out));
        if (!state.firstTap || !state.weights) return kErrOutOfMemory;
        const double s = Step(src, out);
        for (int32_t i = 0; i < out; ++i) {
            const double x = static_cast<double>(i) * s;
            const auto c = static_cast<int32_t>(x);
            state.firstTap[i] = c;
            state.weights[i] = static_cast<uint8_t>(static_cast<int32_t>((x - c) * 255.0 + 0.5));
        }
    } else if (out < src) {
        const int64_t window = ResizeTentWindow(src, out);
        state.firstTap = AllocArray<int32_t>(static_cast<size_t>(out));
        state.tapCount = AllocArray<int32_t>(static_cast<size_t>(out));
        state.weights = AllocArray<uint8_t>(static_cast<size_t>(window * out));
        if (!state.firstTap || !state.tapCount || !state.weights) return kErrOutOfMemory;
        size_t at = 0;
        for (int32_t i = 0; i < out; ++i) {
            state.tapCount[i] =
                ResizeTentTaps(src, out, i, state.weights.get() + at, state.firstTap[i]);
            at += static_cast<size_t>(state.tapCount[i]);
        }
    }
    return ResizeRowBuffersAlloc(state, state.rowBuffer);
}

ResizeState& Engine()
{
    static ResizeState state;
    return state;
}

}  // namespace

int64_t ResizeTentWindow(int32_t srcSize, int32_t outSize)
{
    if (outSize < 1 || srcSize <= outSize) return 0;
    return 2 * int64_t{HalfWindow(Step(srcSize, outSize))} + 1;
}

int32_t ResizeTentTaps(int32_t srcSize, int32_t outSize, int32_t i, uint8_t* weights,
                       int32_t& first)
{
    first = 0;
    if (outSize < 1 || srcSize <= outSize) return 0;
    const double s = Step(srcSize, outSize);
    const double scale = static_cast<double>(srcSize) / static_cast<double>(outSize);
    const int32_t half = HalfWindow(s);
    const double x = static_cast<double>(i) * s;
    const auto c = static_cast<int64_t>(x);
    const double f = x - static_cast<double>(c);
    // tent(k - f), or 0 for a tap outside the source.
    auto value = [&](int32_t k) {
        const int64_t at = c + k;
        if (at < 0 || at >= srcSize) return 0.0;
        const double t = 1.0 - std::fabs(static_cast<double>(k) - f) / scale;
        return t < 0.0 ? 0.0 : t;
    };
    double sum = 0.0;
    for (int32_t k = -half; k <= half; ++k) sum += value(k);
    if (!(sum > 0.0)) return 0;

    int32_t count = 0, total = 0, largest = 0;
    for (int32_t k = -half; k <= half; ++k) {
        const double v = value(k);
        if (v == 0.0) continue;
        if (count == 0) first = static_cast<int32_t>(c + k);
        const auto w = static_cast<int32_t>(v * 255.0 / sum + 0.5);
        weights[count] = static_cast<uint8_t>(w);
        total += w;
        if (w > weights[largest]) largest = count;
        ++count;
    }
    // What rounding left over goes to the largest weight; a weight stays a
    // byte even when the excess is larger than it.
    if (count > 0) weights[largest] = static_cast<uint8_t>(Clamp8(weights[largest] + 255 - total));
    return count;
}

void ResizeStateReset(ResizeState& state) { state = ResizeState(); }

int32_t ResizeRowBytes(int32_t kind, int32_t width)
{
    if (kind == kImageBinary) return (width + 7) / 8;
    return width * Channels(kind);
}

bool ResizeRowBuffersNeeded(const ResizeState& state)
{
    return state.method != kResizeNearest &&
           (state.outHeight != state.srcHeight || state.srcKind == kImageBinary);
}

int32_t ResizeRowBuffersAlloc(const ResizeState& state, ResizeRowBuffers& buffers)
{
    buffers = ResizeRowBuffers();
    if (!ResizeRowBuffersNeeded(state)) return kOk;
    const auto bytes = static_cast<size_t>(state.srcWidth) * Channels(state.workKind);
    buffers.line = AllocBytes(bytes);
    if (!buffers.line) return kErrOutOfMemory;
    if (state.outHeight < state.srcHeight) {
        buffers.weights =
            AllocBytes(static_cast<size_t>(ResizeTentWindow(state.srcHeight, state.outHeight)));
        buffers.sums = AllocArray<int32_t>(bytes);
        if (!buffers.weights || !buffers.sums) {
            buffers = ResizeRowBuffers();
            return kErrOutOfMemory;
        }
    }
    return kOk;
}

int32_t ResizeStateOpen(ResizeState& state, const Image& source, int32_t width, int32_t height,
                        int32_t method)
{
    ResizeStateReset(state);
    if (source.kind < kImageBinary || source.kind > kImageColor) return kErrImageType;
    if (width < 1 || height < 1 || source.width < 1 || source.height < 1 || !source.rows)
        return kErrImageTooSmall;
    state.source = &source;
    state.method = method == kResizeNearest ? kResizeNearest : kResizeSmooth;
    state.outWidth = width;
    state.outHeight = height;
    state.srcWidth = source.width;
    state.srcHeight = source.height;
    state.srcStride = source.stride;
    state.srcKind = source.kind;
    state.workKind =
        source.kind == kImageBinary && state.method == kResizeSmooth ? kImageGray : source.kind;
    state.scale = static_cast<double>(source.width) / static_cast<double>(width);
    const int32_t code = state.method == kResizeNearest ? BuildNearest(state) : BuildSmooth(state);
    if (code) ResizeStateReset(state);
    return code;
}

void ResizeStateRow(const ResizeState& state, int32_t y, uint8_t* row, ResizeRowBuffers& buffers)
{
    if (!state.source || y < 0 || y >= state.outHeight) return;
    if (state.method == kResizeNearest) {
        NearestRow(state, y, row);
        return;
    }
    if (state.outWidth == state.srcWidth) {
        // The vertical result is the output row.
        const uint8_t* line = VerticalPass(state, y, row, buffers);
        if (line != row)
            CopyBytes(line, row,
                      static_cast<size_t>(ResizeRowBytes(state.workKind, state.outWidth)));
        return;
    }
    HorizontalPass(state, VerticalPass(state, y, buffers.line.get(), buffers), row);
}

int32_t resize_open(const Image& source, int32_t width, int32_t height, int32_t method)
{
    return ResizeStateOpen(Engine(), source, width, height, method);
}

void resize_row(int32_t y, uint8_t* row)
{
    ResizeState& state = Engine();
    if (!state.source) return;
    ResizeStateRow(state, std::clamp(y, 0, state.outHeight - 1), row, state.rowBuffer);
}

void resize_close() { ResizeStateReset(Engine()); }

int32_t resize_work_kind() { return Engine().source ? Engine().workKind : 0; }

int32_t resize_nearest_copy(const Image& source, Image& destination, int32_t width, int32_t height)
{
    if (&source == &destination) {
        Image result;
        const int32_t code = resize_nearest_copy(source, result, width, height);
        if (!code) destination = std::move(result);
        return code;
    }
    ResizeState state;
    if (int32_t code = ResizeStateOpen(state, source, width, height, kResizeNearest)) return code;
    if (int32_t code = ImageAlloc(destination, source.kind, width, height, 100.0)) return code;
    for (int32_t y = 0; y < height; ++y)
        ResizeStateRow(state, y, destination.rows[y], state.rowBuffer);
    return kOk;
}

int32_t resize_image(const Image& source, Image& destination, int32_t width, int32_t height,
                     double resolution, int32_t method)
{
    if (source.kind < kImageBinary || source.kind > kImageColor) return kErrImageType;
    if (width < 1 || height < 1 || source.width < 1 || source.height < 1) return kErrImageTooSmall;
    if (width == source.width && height == source.height) {
        const int32_t code = ImageDuplicate(source, destination);
        if (!code) destination.resolution = resolution;
        return code;
    }
    if (&source == &destination) {
        // Made aside, since the source is read to the end.
        Image result;
        const int32_t code = resize_image(source, result, width, height, resolution, method);
        if (!code) destination = std::move(result);
        return code;
    }
    ResizeState state;
    if (int32_t code = ResizeStateOpen(state, source, width, height, method)) return code;
    if (int32_t code = ImageAlloc(destination, state.workKind, width, height, resolution))
        return code;

    const bool boxed = int64_t{width} * height >= 10000;
    if (boxed)
        ProgressOpen(0, height - 1, "Resize", true);
    else
        SetWaitCursor();

    int32_t result = kOk;
    const int64_t pixels = std::max(int64_t{width} * height, int64_t{source.width} * source.height);
    if (height >= 2 && pixels >= kParallelPixels && ThreadCount() > 1) {
        // Each row from the tables alone, with working memory of its own.
        const bool needed = ResizeRowBuffersNeeded(state);
        std::atomic<bool> shortOfMemory{false};
        result = ParallelRows(
            height,
            [&](int32_t y) {
                ResizeRowBuffers own;
                if (needed && ResizeRowBuffersAlloc(state, own)) {
                    shortOfMemory = true;
                    return;
                }
                ResizeStateRow(state, y, destination.rows[y], own);
            },
            [&](int32_t done) {
                if (shortOfMemory) return int32_t{kErrOutOfMemory};
                return boxed ? ProgressStep(done) : int32_t{kOk};
            });
        if (!result && shortOfMemory) result = kErrOutOfMemory;
    } else {
        for (int32_t y = 0; y < height && !result; ++y) {
            ResizeStateRow(state, y, destination.rows[y], state.rowBuffer);
            if (boxed) result = ProgressStep(y);
        }
    }

    if (boxed)
        ProgressClose();
    else
        SetArrowCursor();
    return result;
}

}  // namespace lv
