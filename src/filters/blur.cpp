// Blur: five methods from one popup. Blur and Blur More are the means of the
// plus-shaped five pixels and of the 3 by 3 block; Gaussian is two box passes
// each way over reflected edges; the medians take the middle of the 3 by 3
// block, and the 13th of 25 slots of which only 15 are filled afresh at each
// pixel. The Amount blends the input toward the result with Lerp8.
#include <algorithm>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "filters/filter_panel.h"
#include "filters/gaussian.h"
#include "filters/neighbourhood.h"
#include "image/pixel.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

// The pixel's own level: the Amount's, or between its two markers by the mask.
inline uint8_t LevelAt(const AmountPass& pass, const uint8_t* mask, int32_t i)
{
    return mask
               ? Lerp8(static_cast<uint8_t>(pass.level), static_cast<uint8_t>(pass.level2), mask[i])
               : static_cast<uint8_t>(pass.level);
}

inline void Order(uint8_t& a, uint8_t& b)
{
    if (b < a) std::swap(a, b);
}

// The middle of nine: what element 4 of the nine sorted would be.
inline uint8_t Median9(uint8_t* p)
{
    Order(p[1], p[2]), Order(p[4], p[5]), Order(p[7], p[8]);
    Order(p[0], p[1]), Order(p[3], p[4]), Order(p[6], p[7]);
    Order(p[1], p[2]), Order(p[4], p[5]), Order(p[7], p[8]);
    Order(p[0], p[3]), Order(p[5], p[8]), Order(p[4], p[7]);
    Order(p[3], p[6]), Order(p[1], p[4]), Order(p[2], p[5]);
    Order(p[4], p[7]), Order(p[4], p[2]), Order(p[6], p[4]);
    Order(p[4], p[2]);
    return p[4];
}

// Median 5x5's slots: `fresh` takes slots 0 to 14, the 25 are sorted and
// element 12 is the result; slots 15 to 24 keep the ten largest, rising.
// Only the order of the 25 counts, so the fresh 15 are sorted and merged
// with the ten held from the top down.
inline uint8_t Median25(uint8_t* slots, uint8_t* fresh)
{
    for (int32_t i = 1; i < 15; ++i) {
        const uint8_t v = fresh[i];
        int32_t k = i;
        for (; k > 0 && fresh[k - 1] > v; --k) fresh[k] = fresh[k - 1];
        fresh[k] = v;
    }
    uint8_t top[13];
    int32_t a = 14, b = 24;
    for (int32_t out = 12; out >= 0; --out)
        top[out] = b < 15 || fresh[a] >= slots[b] ? fresh[a--] : slots[b--];
    std::copy_n(top + 3, 10, slots + 15);
    return top[0];
}

#if defined(__SSE2__)
// The medians of a row whose neighbours lie side by side (no zoom step):
// output byte j is the middle of the nine bytes around byte j of the
// centre rows, by the same network as Median9 on sixteen bytes at a time.
// Returns how many bytes it did; the rest go the plain way.
int32_t Median3Side(const WindowRow& row, int32_t channels)
{
    const int32_t count = row.width * channels;
    const uint8_t* t = row.rows[0] + channels;
    const uint8_t* m = row.rows[1] + channels;
    const uint8_t* b = row.rows[2] + channels;
    auto at = [](const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); };
    auto order = [](__m128i& x, __m128i& y) {
        const __m128i low = _mm_min_epu8(x, y);
        y = _mm_max_epu8(x, y);
        x = low;
    };
    int32_t j = 0;
    for (; j + 16 <= count; j += 16) {
        __m128i p[9] = {at(t + j - channels), at(t + j), at(t + j + channels),
                        at(m + j - channels), at(m + j), at(m + j + channels),
                        at(b + j - channels), at(b + j), at(b + j + channels)};
        order(p[1], p[2]), order(p[4], p[5]), order(p[7], p[8]);
        order(p[0], p[1]), order(p[3], p[4]), order(p[6], p[7]);
        order(p[1], p[2]), order(p[4], p[5]), order(p[7], p[8]);
        order(p[0], p[3]), order(p[5], p[8]), order(p[4], p[7]);
        order(p[3], p[6]), order(p[1], p[4]), order(p[2], p[5]);
        order(p[4], p[7]), order(p[4], p[2]), order(p[6], p[4]);
        order(p[4], p[2]);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(row.out + j), p[4]);
    }
    return j;
}
#endif

template <int32_t C, int32_t Method>
void Radius1Row(const WindowRow& row, const AmountPass& pass)
{
    const bool blends = pass.Blends();
    int32_t first = 0;
#if defined(__SSE2__)
    if constexpr (Method == kBlurMedian3) {
        if (row.advance == C) {
            // Sixteen bytes at a time, then the Amount over the pixels they
            // made whole; the plain loop does the rest.
            const int32_t done = Median3Side(row, C) / C;
            if (blends) {
                const uint8_t* m = row.rows[1] + C;
                for (int32_t i = 0; i < done; ++i) {
                    const uint8_t k = LevelAt(pass, row.mask, i);
                    for (int32_t c = 0; c < C; ++c) {
                        uint8_t& out = row.out[i * C + c];
                        out = Lerp8(m[i * C + c], out, k);
                    }
                }
            }
            first = done;
        }
    }
#endif
    for (int32_t i = first; i < row.width; ++i) {
        const size_t base = static_cast<size_t>(i) * row.advance + C;
        const uint8_t* t = row.rows[0] + base;
        const uint8_t* m = row.rows[1] + base;
        const uint8_t* b = row.rows[2] + base;
        const uint8_t k = blends ? LevelAt(pass, row.mask, i) : 0;
        uint8_t* out = row.out + static_cast<size_t>(i) * C;
        for (int32_t c = 0; c < C; ++c) {
            int32_t f;
            if constexpr (Method == kBlurPlain) {
                f = (t[c] + m[c - C] + m[c] + m[c + C] + b[c]) / 5;
            } else if constexpr (Method == kBlurMore) {
                f = (t[c - C] + t[c] + t[c + C] + m[c - C] + m[c] + m[c + C] + b[c - C] + b[c] +
                     b[c + C]) /
                    9;
            } else {
                uint8_t v[9] = {t[c - C], t[c],     t[c + C], m[c - C], m[c],
                                m[c + C], b[c - C], b[c],     b[c + C]};
                f = Median9(v);
            }
            out[c] = blends ? Lerp8(m[c], static_cast<uint8_t>(f), k) : static_cast<uint8_t>(f);
        }
    }
}

// Rows y - 2, y - 1 and y, five columns each, fill the fresh slots; the
// Amount's center is the pixel of row y - 1.
template <int32_t C>
void Median5Row(const WindowRow& row, const AmountPass& pass)
{
    const bool blends = pass.Blends();
    for (int32_t i = 0; i < row.width; ++i) {
        const size_t base = static_cast<size_t>(i) * row.advance;
        const uint8_t k = blends ? LevelAt(pass, row.mask, i) : 0;
        uint8_t* out = row.out + static_cast<size_t>(i) * C;
        for (int32_t c = 0; c < C; ++c) {
            uint8_t fresh[15];
            for (int32_t r = 0; r < 3; ++r)
                for (int32_t d = 0; d < 5; ++d) fresh[r * 5 + d] = row.rows[r][base + d * C + c];
            const uint8_t f = Median25(row.slots, fresh);
            out[c] = blends ? Lerp8(row.rows[1][base + 2 * C + c], f, k) : f;
        }
    }
}

void Median5Loads(const WindowRow& row, uint32_t counts[256])
{
    const int32_t c = row.channels;
    for (int32_t i = 0; i < row.width; ++i) {
        const size_t base = static_cast<size_t>(i) * row.advance;
        for (int32_t r = 0; r < 3; ++r)
            for (int32_t b = 0; b < 5 * c; ++b) ++counts[row.rows[r][base + b]];
    }
}

template <int32_t Method>
void MethodRow(const WindowRow& row, const AmountPass& pass)
{
    if constexpr (Method == kBlurMedian5) {
        row.channels == 3 ? Median5Row<3>(row, pass) : Median5Row<1>(row, pass);
    } else {
        row.channels == 3 ? Radius1Row<3, Method>(row, pass) : Radius1Row<1, Method>(row, pass);
    }
}

int32_t Worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const auto& params = static_cast<const BlurParams&>(*args.params);
    const AmountPass pass = AmountPassFor(params.amount);
    if ((params.method == kBlurGaussian && params.radius == 0) ||
        (pass.level == 0 && (pass.level2 == -1 || pass.level2 == 0)))
        return RunShortWay(args);

    if (params.method == kBlurGaussian) {
        return RunGaussianFilter(
            args, "Blur", params.radius,
            [&pass](const uint8_t* blurred, const uint8_t* center, const uint8_t* mask,
                    uint8_t* out, int32_t width, int32_t channels) {
                const size_t bytes = static_cast<size_t>(width) * channels;
                if (!pass.Blends()) {
                    std::copy_n(blurred, bytes, out);
                    return;
                }
                for (int32_t i = 0; i < width; ++i) {
                    const uint8_t k = LevelAt(pass, mask, i);
                    for (int32_t c = 0; c < channels; ++c) {
                        const size_t at = static_cast<size_t>(i) * channels + c;
                        out[at] = Lerp8(center[at], blurred[at], k);
                    }
                }
            });
    }

    WindowFilter filter;
    filter.title = "Blur";
    filter.radius = params.method == kBlurMedian5 ? 2 : 1;
    switch (params.method) {
    case kBlurPlain:
        filter.row = [&](const WindowRow& r) { MethodRow<kBlurPlain>(r, pass); };
        break;
    case kBlurMore: filter.row = [&](const WindowRow& r) { MethodRow<kBlurMore>(r, pass); }; break;
    case kBlurMedian3:
        filter.row = [&](const WindowRow& r) { MethodRow<kBlurMedian3>(r, pass); };
        break;
    default:
        filter.row = [&](const WindowRow& r) { MethodRow<kBlurMedian5>(r, pass); };
        filter.loads = Median5Loads;
        break;
    }
    return RunWindowFilter(args, filter);
}

const TransformRegistration kBlur({
    .name = "blur",
    .title = "Blur",
    .commandId = 4020,
    .params =
        {
            {
                .name = "method",
                .type = ParamType::Choice,
                .field = Field(&BlurParams::method),
                .defaultValue = kBlurPlain,
                .choiceLabels = "Blur|Blur More|Gaussian|Median 3x3|Median 5x5",
                .choices = "blur|blur-more|gaussian|median3|median5",
                .label = "Method:",
                .help = "the mean of the plus of five or of the 3 by 3 block, a Gaussian of the "
                        "radius, or a median of 3 by 3 or 5 by 5",
            },
            {
                .name = "radius",
                .type = ParamType::Int,
                .field = Field(&BlurParams::radius),
                .minimum = 0,
                .maximum = kBlurRadiusMax,
                .defaultValue = 3,
                .label = "Radius:",
                .help = "the Gaussian's radius in pixels; 0 leaves the picture as it is",
            },
        },
    .create = NewParams<BlurParams>,
    .worker = Worker,
    .help = "Softens the picture by one of five neighbourhood methods; a binary picture gives "
            "a gray one.",
    .example = "--method gaussian --radius 10",
});

}  // namespace
}  // namespace lv
