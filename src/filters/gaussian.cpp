#include "filters/gaussian.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

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

namespace {

// BoxPass for `C` channels at once: their running sums side by side, so
// that each step's additions do not wait on one another.
template <int32_t C>
void BoxPassOf(const uint8_t* in, uint8_t* out, int32_t n, int32_t r, uint64_t reciprocal)
{
    const int32_t w = 2 * r + 1, end = n - 1 - r;
    uint32_t sum[C] = {};
    for (int32_t k = 0; k < w; ++k)
        for (int32_t c = 0; c < C; ++c) sum[c] += in[k * C + c];
    for (int32_t k = 0; k < r * C; ++k) out[k] = in[k];
    for (int32_t i = r; i < end; ++i) {
        const uint8_t* add = in + (i + r + 1) * C;
        const uint8_t* drop = in + (i - r) * C;
        for (int32_t c = 0; c < C; ++c) {
            out[i * C + c] = static_cast<uint8_t>((sum[c] * reciprocal) >> 32);
            sum[c] += static_cast<uint32_t>(add[c] - drop[c]);
        }
    }
    for (int32_t k = end * C; k < (end + r) * C; ++k) out[k] = in[k];
}

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
    if (channels == 3)
        BoxPassOf<3>(in, out, n, r, reciprocal);
    else
        BoxPassOf<1>(in, out, n, r, reciprocal);
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

namespace {

// The second stage of one row: the first stage's row (`length` pixels)
// box-passed twice and read at 2r + i * step.
void HorizontalPasses(const uint8_t* line, int32_t length, int32_t r, int32_t ch, int32_t step,
                      int32_t width, uint8_t* a, uint8_t* b, uint8_t* out)
{
    BoxPass(line, a, length, r, ch);
    BoxPass(a, b, length, r, ch);
    const uint8_t* p = b + static_cast<size_t>(2 * r) * ch;
    const size_t stride = static_cast<size_t>(step) * ch;
    if (ch == 1) {
        for (int32_t i = 0; i < width; ++i) out[i] = p[i * stride];
        return;
    }
    for (int32_t i = 0; i < width; ++i, p += stride, out += 3)
        out[0] = p[0], out[1] = p[1], out[2] = p[2];
}

}  // namespace

void GaussianRow(const GaussianScratch& scratch, int32_t j, int32_t width, uint8_t* a, uint8_t* b,
                 uint8_t* out)
{
    HorizontalPasses(scratch.image.rows[j], scratch.rowLength, scratch.radius, scratch.channels,
                     scratch.step, width, a, b, out);
}

namespace {

// The first stage of a full result at 1:1 without the scratch: the two box
// passes down every column at once, row by row, with running sums across
// the whole row. Row j is the column passes' sample at 2r + j, exactly as
// GaussianColumns keeps it (the same sums, the same copied samples at the
// line's end), so the second stage cannot tell the two apart. The rows are
// asked in rising order; any other row starts the sums afresh.
class VerticalPasses {
public:
    bool Open(const Image& source, int32_t radius)
    {
        source_ = &source;
        r_ = radius;
        w_ = 2 * radius + 1;
        ch_ = source.kind == kImageColor ? 3 : 1;
        n_ = source.height + 4 * radius;
        end_ = n_ - 1 - radius;
        length_ = static_cast<size_t>(source.width + 4 * radius) * ch_;
        ring_ = 2 * radius + 2;
        // The quotient S / w as S * (1 / w) + 1 / (2 w), truncated: S / w
        // is a multiple of 1 / w, so the half never reaches the next
        // integer, and the rounding (below 1e-4) never crosses one.
        inverse_ = 1.0f / static_cast<float>(w_);
        half_ = 0.5f / static_cast<float>(w_);
        columns_ = std::unique_ptr<int32_t[]>(new (std::nothrow) int32_t[length_ / ch_]);
        a_ = AllocBytes(length_ * ring_);
        b_ = AllocBytes(length_ * ring_);
        out_ = AllocBytes(length_);
        s1_ = std::unique_ptr<uint32_t[]>(new (std::nothrow) uint32_t[length_]);
        s2_ = std::unique_ptr<uint32_t[]>(new (std::nothrow) uint32_t[length_]);
        if (!columns_ || !a_ || !b_ || !out_ || !s1_ || !s2_) return false;
        for (size_t x = 0; x < length_ / ch_; ++x)
            columns_[x] = ReflectIndex(static_cast<int64_t>(x) - 2 * r_, source.width);
        return true;
    }

    // Row j of the first stage, `length` bytes.
    const uint8_t* Row(int32_t j)
    {
        const int32_t t = 2 * r_ + j;
        if (t != next_) {
            Start(t);
        } else {
            MakeB();  // B[t + r]
            Add(s2_.get(), B(t + r_), B(t - r_ - 1));
        }
        next_ = t + 1;
        Divide(s2_.get(), out_.get());
        return out_.get();
    }

private:
    uint8_t* A(int32_t v) const { return a_.get() + static_cast<size_t>(v % ring_) * length_; }
    uint8_t* B(int32_t u) const { return b_.get() + static_cast<size_t>(u % ring_) * length_; }

    // Line position v of every column: the source row reflected, and its
    // columns reflected about the picture's sides.
    void Gather(int32_t v)
    {
        const Image& s = *source_;
        const uint8_t* row = s.rows[ReflectIndex(int64_t{v} - 2 * r_, s.height)];
        uint8_t* out = A(v);
        const size_t count = length_ / ch_;
        if (s.kind == kImageBinary) {
            for (size_t x = 0; x < count; ++x) out[x] = GetBit(row, columns_[x]) ? 255 : 0;
        } else {
            // The picture's own columns in one copy, the reflected margins
            // pixel by pixel.
            const size_t margin = 2 * static_cast<size_t>(r_), inside = count - 2 * margin;
            CopyBytes(row, out + margin * ch_, inside * ch_);
            for (size_t x = 0; x < count; x = x + 1 == margin ? margin + inside : x + 1) {
                const uint8_t* p = row + static_cast<size_t>(columns_[x]) * ch_;
                for (int32_t c = 0; c < ch_; ++c) out[x * ch_ + c] = p[c];
            }
        }
    }

    void Divide(const uint32_t* sums, uint8_t* out) const
    {
        const float inverse = inverse_, half = half_;
        size_t i = 0;
#if defined(__SSE2__)
        const __m128 scale = _mm_set1_ps(inverse), offset = _mm_set1_ps(half);
        auto four = [&](size_t at) {
            const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(sums + at));
            return _mm_cvttps_epi32(_mm_add_ps(_mm_mul_ps(_mm_cvtepi32_ps(s), scale), offset));
        };
        for (; i + 16 <= length_; i += 16) {
            const __m128i low = _mm_packs_epi32(four(i), four(i + 4));
            const __m128i high = _mm_packs_epi32(four(i + 8), four(i + 12));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_packus_epi16(low, high));
        }
#endif
        for (; i < length_; ++i)
            out[i] = static_cast<uint8_t>(
                static_cast<int32_t>(static_cast<float>(sums[i]) * inverse + half));
    }

    static void Sum(uint32_t* sums, const uint8_t* row, size_t length, bool first)
    {
        for (size_t i = 0; i < length; ++i) sums[i] = (first ? 0 : sums[i]) + row[i];
    }

    // sums += in - out, byte by byte.
    void Add(uint32_t* sums, const uint8_t* in, const uint8_t* out) const
    {
        size_t i = 0;
#if defined(__SSE2__)
        const __m128i zero = _mm_setzero_si128();
        for (; i + 16 <= length_; i += 16) {
            const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + i));
            const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(out + i));
            // Sixteen differences as 16-bit words, then widened with their sign.
            const __m128i dLow =
                _mm_sub_epi16(_mm_unpacklo_epi8(a, zero), _mm_unpacklo_epi8(b, zero));
            const __m128i dHigh =
                _mm_sub_epi16(_mm_unpackhi_epi8(a, zero), _mm_unpackhi_epi8(b, zero));
            const __m128i d[4] = {_mm_srai_epi32(_mm_unpacklo_epi16(dLow, dLow), 16),
                                  _mm_srai_epi32(_mm_unpackhi_epi16(dLow, dLow), 16),
                                  _mm_srai_epi32(_mm_unpacklo_epi16(dHigh, dHigh), 16),
                                  _mm_srai_epi32(_mm_unpackhi_epi16(dHigh, dHigh), 16)};
            for (int k = 0; k < 4; ++k) {
                auto* at = reinterpret_cast<__m128i*>(sums + i + 4 * k);
                _mm_storeu_si128(at, _mm_add_epi32(_mm_loadu_si128(at), d[k]));
            }
        }
#endif
        for (; i < length_; ++i) sums[i] = sums[i] + in[i] - out[i];
    }

    // B[u_], the first pass at u_: the mean of A[u_ - r .. u_ + r], or past
    // the computed part the sample itself; then the sums move one on.
    void MakeB()
    {
        if (u_ < end_)
            Divide(s1_.get(), B(u_));
        else
            CopyBytes(A(u_), B(u_), length_);
        if (u_ + r_ + 1 <= n_ - 1) {
            Gather(u_ + r_ + 1);
            Add(s1_.get(), A(u_ + r_ + 1), A(u_ - r_));
        }
        ++u_;
    }

    void Start(int32_t t)
    {
        u_ = t - r_;
        for (int32_t v = u_ - r_; v <= u_ + r_; ++v) {
            Gather(v);
            Sum(s1_.get(), A(v), length_, v == u_ - r_);
        }
        for (int32_t k = 0; k < w_; ++k) MakeB();  // B[t - r .. t + r]
        for (int32_t u = t - r_; u <= t + r_; ++u) Sum(s2_.get(), B(u), length_, u == t - r_);
    }

    const Image* source_ = nullptr;
    int32_t r_ = 1, w_ = 3, ch_ = 1, n_ = 0, end_ = 0, ring_ = 4;
    size_t length_ = 0;
    float inverse_ = 0, half_ = 0;
    int32_t next_ = -1, u_ = 0;
    std::unique_ptr<int32_t[]> columns_;
    std::unique_ptr<uint8_t[]> a_, b_, out_;
    std::unique_ptr<uint32_t[]> s1_, s2_;
};

}  // namespace

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
    // A full result made at once: the first stage row by row with running
    // sums (no scratch), each row then straight into its place, the rows
    // shared among the threads.
    const bool direct = !result && parallel && args.toImage && WholeOutput(args) &&
                        args.zoom == 1 && args.sourceX == 0 && args.sourceY == 0 &&
                        width == source.width && height == source.height &&
                        (!mask || mask->kind == kImageGray);
    GaussianScratch scratch;
    if (!result && !direct)
        result = GaussianColumns(
            source, args.sourceX, args.sourceY, step, width, height, r, parallel, scratch,
            [&](int32_t column) { return boxed ? ProgressStep(column) : int32_t{kOk}; });
    if (!result && direct && boxed) result = ProgressStep(lastColumn);

    const size_t line = static_cast<size_t>(rowLength) * ch;
    const size_t pixels = static_cast<size_t>(width) * ch;
    if (direct && !result) {
        // Each thread's own passes and lines, found by its thread.
        struct Worker {
            std::thread::id thread;
            VerticalPasses passes;
            std::unique_ptr<uint8_t[]> a, b, blurred, expanded;
        };
        std::mutex workersLock;
        std::vector<std::unique_ptr<Worker>> workers;
        auto workerOfThisThread = [&]() -> Worker* {
            const std::lock_guard<std::mutex> hold(workersLock);
            for (auto& w : workers)
                if (w->thread == std::this_thread::get_id()) return w.get();
            auto made = std::unique_ptr<Worker>(new (std::nothrow) Worker());
            if (!made) return nullptr;
            made->thread = std::this_thread::get_id();
            made->a = AllocBytes(line);
            made->b = AllocBytes(line);
            made->blurred = AllocBytes(pixels);
            made->expanded = AllocBytes(source.kind == kImageBinary ? pixels : 1);
            if (!made->a || !made->b || !made->blurred || !made->expanded ||
                !made->passes.Open(source, r))
                return nullptr;
            workers.push_back(std::move(made));
            return workers.back().get();
        };
        std::atomic<bool> shortOfMemory{false};
        result = ParallelRows(
            height,
            [&](int32_t j) {
                Worker* w = workerOfThisThread();
                if (!w) {
                    shortOfMemory = true;
                    return;
                }
                const uint8_t* first = w->passes.Row(j);
                HorizontalPasses(first, static_cast<int32_t>(rowLength), r, ch, 1, width,
                                 w->a.get(), w->b.get(), w->blurred.get());
                auto& blurred = w->blurred;
                auto& expanded = w->expanded;
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
