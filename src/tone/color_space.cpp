#include "tone/color_space.h"

#include <cstring>

#include <array>
#include <memory>
#include <new>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "shell/errors.h"
#include "shell/tables.h"

namespace lv {

namespace {

inline int32_t Clamp12(int32_t v) { return v < 0 ? 0 : (v > 4096 ? 4096 : v); }

// Hue of a pixel on the 12-bit scale, with the channels ordered by
// OrderChannels; d = M - m is not 0. The first formula of each sector pair is
// the one the fixed order picks on ties, which puts a red with equal green and
// blue at 4096.
inline int32_t Hue12(ChannelOrder o, int32_t R, int32_t G, int32_t B, int32_t M, int32_t d)
{
    if (o.largest == 0)
        return o.smallest == 1 ? ((M - B) * 4096 / d + 20480) / 6 : (4096 - (M - G) * 4096 / d) / 6;
    if (o.largest == 1)
        return o.smallest == 2 ? ((M - R) * 4096 / d + 4096) / 6 : (12288 - (M - B) * 4096 / d) / 6;
    return o.smallest == 0 ? ((M - G) * 4096 / d + 12288) / 6 : (20480 - (M - R) * 4096 / d) / 6;
}

// The unchecked cores below take bytes, or 12-bit values in 0..4096.

inline void RgbToHsv12(int32_t r, int32_t g, int32_t b, int32_t& h, int32_t& s, int32_t& v)
{
    const ChannelOrder o = OrderChannels(r, g, b);
    const int32_t c[3] = {Level12[r], Level12[g], Level12[b]};
    const int32_t M = c[o.largest], d = M - c[o.smallest];
    v = M;
    if (M == 0 || d == 0) {
        h = 0;
        s = 0;
        return;
    }
    s = d * 4096 / M;
    h = Hue12(o, c[0], c[1], c[2], M, d);
}

inline void RgbToHsl12(int32_t r, int32_t g, int32_t b, int32_t& h, int32_t& s, int32_t& l)
{
    const ChannelOrder o = OrderChannels(r, g, b);
    const int32_t c[3] = {Level12[r], Level12[g], Level12[b]};
    const int32_t M = c[o.largest], m = c[o.smallest], d = M - m;
    l = (M + m) >> 1;
    if (d == 0) {
        h = 0;
        s = 0;
        return;
    }
    s = l <= 2048 ? d * 4096 / (M + m) : d * 4096 / (8192 - M - m);
    h = Hue12(o, c[0], c[1], c[2], M, d);
}

inline void Hsv12ToRgb(int32_t h, int32_t s, int32_t v, int32_t& r, int32_t& g, int32_t& b)
{
    if (v == 0) {
        r = g = b = 0;
        return;
    }
    if (s == 0) {
        r = g = b = Level8[v];
        return;
    }
    const int32_t sector = (h * 6) >> 12;
    const int32_t f = h * 6 - sector * 4096;
    const int32_t p = Level8[(v * (4096 - s)) >> 12];
    const int32_t q = Level8[(v * (4096 - ((s * f) >> 12))) >> 12];
    const int32_t t = Level8[(v * (4096 - ((s * (4096 - f)) >> 12))) >> 12];
    const int32_t V = Level8[v];
    switch (sector) {
    case 1: r = q, g = V, b = p; break;
    case 2: r = p, g = V, b = t; break;
    case 3: r = p, g = q, b = V; break;
    case 4: r = t, g = p, b = V; break;
    case 5: r = V, g = p, b = q; break;
    default: r = V, g = t, b = p; break;  // 0 or 6
    }
}

inline void Hsl12ToRgb(int32_t h, int32_t s, int32_t l, int32_t& r, int32_t& g, int32_t& b)
{
    if (l == 0) {
        r = g = b = 0;
        return;
    }
    if (l == 4096) {
        r = g = b = 255;
        return;
    }
    if (s == 0) {
        r = g = b = Level8[l];
        return;
    }
    const int32_t m2 = l <= 2048 ? (l * (s + 4096)) >> 12 : l + s - ((l * s) >> 12);
    if (m2 == 0) {
        r = g = b = 0;
        return;
    }
    const int32_t m1 = 2 * l - m2;
    const int32_t sector = (h * 6) >> 12;
    const int32_t f = h * 6 - sector * 4096;
    const int32_t t = ((m2 - m1) * f) >> 12;
    const int32_t lo = Level8[m1], hi = Level8[m2];
    switch (sector) {
    case 1: r = Level8[m2 - t], g = hi, b = lo; break;
    case 2: r = lo, g = hi, b = Level8[m1 + t]; break;
    case 3: r = lo, g = Level8[m2 - t], b = hi; break;
    case 4: r = Level8[m1 + t], g = lo, b = hi; break;
    case 5: r = hi, g = lo, b = Level8[m2 - t]; break;
    default: r = hi, g = Level8[m1 + t], b = lo; break;  // 0 or 6
    }
}

inline void SetHsvValue(int32_t& r, int32_t& g, int32_t& b, int32_t old_value, int32_t new_value)
{
    if (old_value == new_value) return;
    if (old_value == 0 || new_value == 0) {
        r = g = b = new_value;
        return;
    }
    r = r * new_value / old_value;
    g = g * new_value / old_value;
    b = b * new_value / old_value;
}

inline void SetHslLightness(int32_t& r, int32_t& g, int32_t& b, int32_t new_level)
{
    int32_t h, s, l;
    RgbToHsl12(r, g, b, h, s, l);
    Hsl12ToRgb(h, s, Level12[new_level], r, g, b);
}

// Entry v is ceil(2^32 / v): for x below 2^16 and v up to 255,
// (x * entry) >> 32 is exactly x / v, which spares the HSV row path three
// divisions a pixel.
constexpr std::array<uint64_t, 256> kReciprocal = [] {
    std::array<uint64_t, 256> t{};
    for (uint64_t v = 1; v < 256; ++v) t[v] = ((uint64_t{1} << 32) + v - 1) / v;
    return t;
}();

void RowHsv(const uint8_t* in, uint8_t* out, int32_t pixels, const uint8_t* table)
{
    // Each channel c becomes c * n / v, v the value and n its new level:
    // one multiplier per value, n times the reciprocal of v, so a pixel is
    // three multiplies and no branch. With n equal to v that gives c back
    // exactly, and with n 0 it gives 0; a black pixel (v 0, so every c 0)
    // takes the new level of black.
    uint64_t scale[256];
    scale[0] = 0;
    for (int32_t v = 1; v < 256; ++v) scale[v] = uint64_t{table[v]} * kReciprocal[v];
    const uint32_t black = table[0];
    for (int32_t x = 0; x < pixels; ++x, in += 3, out += 3) {
        const uint32_t b = in[0], g = in[1], r = in[2];
        uint32_t v = r > g ? r : g;
        v = b > v ? b : v;
        const uint64_t m = scale[v];
        const uint32_t lift = v == 0 ? black : 0;
        out[0] = static_cast<uint8_t>(((b * m) >> 32) + lift);
        out[1] = static_cast<uint8_t>(((g * m) >> 32) + lift);
        out[2] = static_cast<uint8_t>(((r * m) >> 32) + lift);
    }
}

#if defined(__x86_64__)
// Eight channel bytes c to trunc(c * m + h) + lift, as eight bytes.
__attribute__((target("avx2"))) inline __m128i HsvLevels(__m128i c8, __m256 m, __m256 h,
                                                         __m256i lift)
{
    const __m256 c = _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(c8));
    const __m256i lanes =
        _mm256_add_epi32(_mm256_cvttps_epi32(_mm256_add_ps(_mm256_mul_ps(c, m), h)), lift);
    const __m128i words =
        _mm_packus_epi32(_mm256_castsi256_si128(lanes), _mm256_extracti128_si256(lanes, 1));
    return _mm_packus_epi16(words, words);
}

// RowHsv eight pixels a step. c * n / v, truncated, is computed as
// c * (n / v) + 0.5 / v in single precision and truncated: the fraction of
// c * n / v is a multiple of 1 / v, so adding about half of 1 / v never
// reaches the next integer, and the rounding errors (about 3e-5 at most) are
// far smaller than that half; the bytes are those of the plain loop.
__attribute__((target("avx2"))) void RowHsvAvx2(const uint8_t* in, uint8_t* out, int32_t pixels,
                                                const uint8_t* table)
{
    alignas(32) float scale[256];
    scale[0] = 0.0f;
    for (int32_t v = 1; v < 256; ++v)
        scale[v] = static_cast<float>(table[v]) / static_cast<float>(v);
    const __m256i zero = _mm256_setzero_si256(), one = _mm256_set1_epi32(1);
    const __m256i black = _mm256_set1_epi32(table[0]);
    // Bytes 0-15 and 8-23 of eight pixels to blue, green and red (eight
    // bytes each), and back.
    const __m128i blueLow =
        _mm_setr_epi8(0, 3, 6, 9, 12, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i blueHigh =
        _mm_setr_epi8(-1, -1, -1, -1, -1, -1, 10, 13, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i greenLow =
        _mm_setr_epi8(1, 4, 7, 10, 13, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i greenHigh =
        _mm_setr_epi8(-1, -1, -1, -1, -1, 8, 11, 14, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i redLow =
        _mm_setr_epi8(2, 5, 8, 11, 14, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i redHigh =
        _mm_setr_epi8(-1, -1, -1, -1, -1, 9, 12, 15, -1, -1, -1, -1, -1, -1, -1, -1);
    // From blue (bytes 0-7), green (8-15) and red (16-23 of the second
    // half) to pixels: bytes 0-15, then bytes 16-23.
    const __m128i firstBG = _mm_setr_epi8(0, 8, -1, 1, 9, -1, 2, 10, -1, 3, 11, -1, 4, 12, -1, 5);
    const __m128i firstR = _mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1);
    const __m128i lastBG =
        _mm_setr_epi8(13, -1, 6, 14, -1, 7, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1);
    const __m128i lastR =
        _mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, -1, -1, -1, -1, -1, -1);
    int32_t x = 0;
    for (; x + 8 <= pixels; x += 8, in += 24, out += 24) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 8));
        const __m128i b8 =
            _mm_or_si128(_mm_shuffle_epi8(low, blueLow), _mm_shuffle_epi8(high, blueHigh));
        const __m128i g8 =
            _mm_or_si128(_mm_shuffle_epi8(low, greenLow), _mm_shuffle_epi8(high, greenHigh));
        const __m128i r8 =
            _mm_or_si128(_mm_shuffle_epi8(low, redLow), _mm_shuffle_epi8(high, redHigh));
        const __m256i v = _mm256_cvtepu8_epi32(_mm_max_epu8(b8, _mm_max_epu8(g8, r8)));
        const __m256 m = _mm256_i32gather_ps(scale, v, 4);
        // Half of 1 / v to the processor's 12 bits is well inside the room
        // it needs; a black pixel adds the new level of black instead.
        const __m256i isBlack = _mm256_cmpeq_epi32(v, zero);
        const __m256 h = _mm256_mul_ps(_mm256_set1_ps(0.5f),
                                       _mm256_rcp_ps(_mm256_cvtepi32_ps(_mm256_max_epi32(v, one))));
        const __m256i lift = _mm256_and_si256(isBlack, black);
        const __m128i bg = _mm_unpacklo_epi64(HsvLevels(b8, m, h, lift), HsvLevels(g8, m, h, lift));
        const __m128i r = HsvLevels(r8, m, h, lift);
        const __m128i first =
            _mm_or_si128(_mm_shuffle_epi8(bg, firstBG), _mm_shuffle_epi8(r, firstR));
        const __m128i last = _mm_or_si128(_mm_shuffle_epi8(bg, lastBG), _mm_shuffle_epi8(r, lastR));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out), first);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), last);
    }
    RowHsv(in, out, pixels - x, table);
}
#endif

void RowHsl(const uint8_t* in, uint8_t* out, int32_t pixels, const uint8_t* table)
{
    for (int32_t x = 0; x < pixels; ++x, in += 3, out += 3) {
        int32_t b = in[0], g = in[1], r = in[2];
        int32_t hi = r > g ? r : g, lo = r < g ? r : g;
        if (b > hi) hi = b;
        if (b < lo) lo = b;
        SetHslLightness(r, g, b, table[(hi + lo) >> 1]);
        out[0] = static_cast<uint8_t>(b), out[1] = static_cast<uint8_t>(g);
        out[2] = static_cast<uint8_t>(r);
    }
}

}  // namespace

void set_hsv_value(int32_t& r, int32_t& g, int32_t& b, int32_t old_value, int32_t new_value)
{
    r = Clamp8(r), g = Clamp8(g), b = Clamp8(b);
    SetHsvValue(r, g, b, Clamp8(old_value), Clamp8(new_value));
}

void set_hsl_lightness(int32_t& r, int32_t& g, int32_t& b, int32_t new_level)
{
    r = Clamp8(r), g = Clamp8(g), b = Clamp8(b);
    SetHslLightness(r, g, b, Clamp8(new_level));
}

void map_hsv_saturation(int32_t& r, int32_t& g, int32_t& b, const uint8_t table[256])
{
    int32_t c[3] = {Clamp8(r), Clamp8(g), Clamp8(b)};
    const ChannelOrder o = OrderChannels(c[0], c[1], c[2]);
    const int32_t M = c[o.largest], u = c[o.middle], m = c[o.smallest];
    if (M != 0) {
        const int32_t small = (255 - table[255 * (M - m) / M]) * M / 255;
        if (M != m) c[o.middle] = M - (M - small) * (M - u) / (M - m);
        c[o.smallest] = small;
    }
    r = c[0], g = c[1], b = c[2];
}

void map_hsl_saturation(int32_t& r, int32_t& g, int32_t& b, const uint8_t table[256])
{
    int32_t c[3] = {Clamp8(r), Clamp8(g), Clamp8(b)};
    const ChannelOrder o = OrderChannels(c[0], c[1], c[2]);
    const int32_t M = c[o.largest], u = c[o.middle], m = c[o.smallest];
    const int32_t s = M + m;
    if (s != 0 && s != 510) {
        int32_t large;
        if (s < 256) {
            const int32_t n = table[255 * (M - m) / s];
            large = (n + 255) * s / 510;
        } else {
            const int32_t n = table[255 * (M - m) / (510 - s)];
            large = n + (255 - n) * s / 510;
        }
        const int32_t small = s - large;
        if (M != m) c[o.middle] = large - (large - small) * (M - u) / (M - m);
        c[o.largest] = large;
        c[o.smallest] = small;
    }
    r = c[0], g = c[1], b = c[2];
}

void rgb_to_hsv12(int32_t r, int32_t g, int32_t b, int32_t& hue, int32_t& saturation,
                  int32_t& value)
{
    RgbToHsv12(Clamp8(r), Clamp8(g), Clamp8(b), hue, saturation, value);
}

void hsv12_to_rgb(int32_t hue, int32_t saturation, int32_t value, int32_t& r, int32_t& g,
                  int32_t& b)
{
    Hsv12ToRgb(Clamp12(hue), Clamp12(saturation), Clamp12(value), r, g, b);
}

void rgb_to_hsl12(int32_t r, int32_t g, int32_t b, int32_t& hue, int32_t& saturation,
                  int32_t& lightness)
{
    RgbToHsl12(Clamp8(r), Clamp8(g), Clamp8(b), hue, saturation, lightness);
}

void hsl12_to_rgb(int32_t hue, int32_t saturation, int32_t lightness, int32_t& r, int32_t& g,
                  int32_t& b)
{
    Hsl12ToRgb(Clamp12(hue), Clamp12(saturation), Clamp12(lightness), r, g, b);
}

int32_t ProbeChannelLevel(int32_t channel, int32_t r, int32_t g, int32_t b)
{
    int32_t hue = 0, saturation = 0, level = 0;
    switch (channel) {
    case 1: return hsv_value(r, g, b);
    case 2: return hsl_lightness(r, g, b);
    case 3: return hsv_saturation(r, g, b);
    case 4: return hsl_saturation(r, g, b);
    case 6: rgb_to_hsv12(r, g, b, hue, saturation, level); return hue * 255 >> 12;
    case 7: rgb_to_hsl12(r, g, b, hue, saturation, level); return hue * 255 >> 12;
    case 8: return r;
    case 9: return g;
    case 10: return b;
    default: return -1;
    }
}

namespace {

// out[i] = table[in[i]], with the table copied where no write through
// `out` can change it, so that it stays in registers' reach, four bytes a
// step.
void LookUpRow(const uint8_t* in, uint8_t* out, int64_t count, const uint8_t* table)
{
    uint8_t t[256];
    std::memcpy(t, table, sizeof t);
    int64_t i = 0;
    for (; i + 4 <= count; i += 4) {
        const uint8_t a = t[in[i]], b = t[in[i + 1]], c = t[in[i + 2]], d = t[in[i + 3]];
        out[i] = a;
        out[i + 1] = b;
        out[i + 2] = c;
        out[i + 3] = d;
    }
    for (; i < count; ++i) out[i] = t[in[i]];
}

// The same table for two bytes at once: 65536 entries of two looked-up
// bytes, made once a thread for each new table (128 KiB, which the caches
// hold), so that a long row costs half the lookups. Null when memory is
// short; the caller then goes a byte at a time.
const uint16_t* PairTable(const uint8_t* table)
{
    struct Pairs {
        uint8_t of[256];
        std::unique_ptr<uint16_t[]> pairs;
    };
    thread_local Pairs cache;
    if (!cache.pairs) {
        cache.pairs.reset(new (std::nothrow) uint16_t[65536]);
        if (!cache.pairs) return nullptr;
    } else if (std::memcmp(cache.of, table, 256) == 0) {
        return cache.pairs.get();
    }
    std::memcpy(cache.of, table, 256);
    uint16_t* pairs = cache.pairs.get();
    for (int32_t second = 0; second < 256; ++second) {
        for (int32_t first = 0; first < 256; ++first) {
            // Keyed and filled as the two bytes lie in memory.
            const uint8_t key[2] = {static_cast<uint8_t>(first), static_cast<uint8_t>(second)};
            const uint8_t looked[2] = {table[first], table[second]};
            uint16_t index = 0;
            std::memcpy(&index, key, 2);
            std::memcpy(&pairs[index], looked, 2);
        }
    }
    return pairs;
}

// LookUpRow for long rows, eight bytes a step through the pair table.
void LookUpLongRow(const uint8_t* in, uint8_t* out, int64_t count, const uint8_t* table)
{
    const uint16_t* pairs = PairTable(table);
    if (!pairs) {
        LookUpRow(in, out, count, table);
        return;
    }
    int64_t i = 0;
    for (; i + 8 <= count; i += 8) {
        uint16_t a, b, c, d;
        std::memcpy(&a, in + i, 2);
        std::memcpy(&b, in + i + 2, 2);
        std::memcpy(&c, in + i + 4, 2);
        std::memcpy(&d, in + i + 6, 2);
        a = pairs[a], b = pairs[b], c = pairs[c], d = pairs[d];
        std::memcpy(out + i, &a, 2);
        std::memcpy(out + i + 2, &b, 2);
        std::memcpy(out + i + 4, &c, 2);
        std::memcpy(out + i + 6, &d, 2);
    }
    LookUpRow(in + i, out + i, count - i, table);
}

// Below this many bytes a row is not worth a new pair table.
constexpr int64_t kLongRow = 8192;

}  // namespace

int32_t ApplyCurveRow(const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
                      int32_t colorSpace, const uint8_t table[256])
{
    if ((channels != 1 && channels != 3) || colorSpace < kColorSpaceHsv ||
        colorSpace > kColorSpaceRgb)
        return kErrImageType;
    if (pixels <= 0) return kOk;
    if (!in || !out || !table) return kErrImageType;
    if (channels == 1 || colorSpace == kColorSpaceRgb) {
        const int64_t count = int64_t{pixels} * channels;
        if (count >= kLongRow)
            LookUpLongRow(in, out, count, table);
        else
            LookUpRow(in, out, count, table);
    } else if (colorSpace == kColorSpaceHsv) {
#if defined(__x86_64__)
        static const bool avx2 = __builtin_cpu_supports("avx2");
        if (avx2) {
            RowHsvAvx2(in, out, pixels, table);
            return kOk;
        }
#endif
        RowHsv(in, out, pixels, table);
    } else {
        RowHsl(in, out, pixels, table);
    }
    return kOk;
}

}  // namespace lv
