#include "geometry/samplers.h"

#include <cmath>
#include <cstddef>

namespace lv {
namespace {

// Line ends are limited to 2^40 pixels either way, far beyond any picture,
// so that every position of the walk stays within 2^56 in fixed point: the
// truncated step never carries the walk past the far end.
constexpr double kFarEnd = 1099511627776.0;  // 2^40

double LimitEnd(double v) { return v > kFarEnd ? kFarEnd : (v < -kFarEnd ? -kFarEnd : v); }

// Walks the n positions of the line from (x0, y0) to (x1, y1) and hands each
// to `pixel(i, x, y)`, which writes output i and says whether it read the
// source.
template <class Pixel>
void WalkLine(double x0, double y0, double x1, double y1, int32_t n, int32_t& first, int32_t& last,
              Pixel&& pixel)
{
    first = last = -1;
    if (n <= 0) return;
    if (std::isnan(x0) || std::isnan(y0) || std::isnan(x1) || std::isnan(y1))
        x0 = y0 = x1 = y1 = -kFarEnd;  // no line: every pixel is the background
    x0 = LimitEnd(x0), y0 = LimitEnd(y0), x1 = LimitEnd(x1), y1 = LimitEnd(y1);
    auto x = static_cast<int64_t>(x0 * 65536.0);
    auto y = static_cast<int64_t>(y0 * 65536.0);
    int64_t dx = 0, dy = 0;
    if (n >= 2) {
        dx = static_cast<int64_t>((x1 - x0) * 65536.0 / (n - 1));
        dy = static_cast<int64_t>((y1 - y0) * 65536.0 / (n - 1));
    }
    for (int32_t i = 0; i < n; ++i) {
        if (pixel(i, x, y)) {
            if (first < 0) first = i;
            last = i;
        }
        x += dx;
        y += dy;
    }
}

bool Readable(const Image& image, int32_t kind)
{
    return image.kind == kind && image.rows && image.width > 0 && image.height > 0;
}

// The nearest cell of a fixed-point position: exactly one half rounds down.
int64_t NearestCell(int64_t v) { return (v >> 16) + ((v & 0xFFFF) > 32768 ? 1 : 0); }

// Walks a binary source by nearest cells; `put(i, bit)` gets the bit, or -1
// outside.
template <class Put>
void ScanNearest(const Image& image, double x0, double y0, double x1, double y1, int32_t n,
                 int32_t& first, int32_t& last, Put&& put)
{
    if (!Readable(image, kImageBinary)) {
        for (int32_t i = 0; i < n; ++i) put(i, -1);
        first = last = -1;
        return;
    }
    uint8_t* const* rows = image.rows.get();
    const int64_t w = image.width, h = image.height;
    WalkLine(x0, y0, x1, y1, n, first, last, [&](int32_t i, int64_t x, int64_t y) {
        const int64_t cx = NearestCell(x), cy = NearestCell(y);
        if (cx < 0 || cy < 0 || cx >= w || cy >= h) {
            put(i, -1);
            return false;
        }
        put(i, GetBit(rows[cy], static_cast<int32_t>(cx)));
        return true;
    });
}

// Pixel readers of the three picture kinds, a byte of channel c at (x, y).
struct BinaryReader {
    static constexpr int32_t kKind = kImageBinary;
    static constexpr int32_t kChannels = 1;
    uint8_t* const* rows;
    uint8_t operator()(int64_t x, int64_t y, int32_t) const
    {
        return GetBit(rows[y], static_cast<int32_t>(x)) ? 255 : 0;
    }
};

struct GrayReader {
    static constexpr int32_t kKind = kImageGray;
    static constexpr int32_t kChannels = 1;
    uint8_t* const* rows;
    uint8_t operator()(int64_t x, int64_t y, int32_t) const { return rows[y][x]; }
};

struct ColorReader {
    static constexpr int32_t kKind = kImageColor;
    static constexpr int32_t kChannels = 3;
    uint8_t* const* rows;
    uint8_t operator()(int64_t x, int64_t y, int32_t c) const { return rows[y][3 * x + c]; }
};

// The bilinear walk of every form. Inside (all four neighbours in the
// picture) the neighbours are blended; the binary form takes the nearest bit
// instead, and the colour forms copy a pixel met exactly. Beyond the one-pixel
// fringe the pixel is the background and the coverage 0. On the fringe the
// forms without coverage put the background in place of the missing
// neighbours; those with coverage clamp the neighbours into the picture and
// blend the coverage from 255 for each neighbour inside and 0 for each
// outside.
template <class Reader, bool kCoverage>
void ScanBilinear(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                  uint8_t* coverage, int32_t n, uint8_t background, int32_t& first, int32_t& last)
{
    constexpr int32_t channels = Reader::kChannels;
    constexpr bool nearestInside = Reader::kKind == kImageBinary;
    if (!Readable(image, Reader::kKind)) {
        for (int32_t i = 0; i < n; ++i) {
            for (int32_t c = 0; c < channels; ++c)
                out[static_cast<ptrdiff_t>(i) * channels + c] = background;
            if constexpr (kCoverage) coverage[i] = 0;
        }
        first = last = -1;
        return;
    }
    const Reader read{image.rows.get()};
    const int64_t w = image.width, h = image.height;
    WalkLine(x0, y0, x1, y1, n, first, last, [&](int32_t i, int64_t x, int64_t y) {
        uint8_t* o = out + static_cast<ptrdiff_t>(i) * channels;
        const int64_t ix = x >> 16, iy = y >> 16;
        const auto fx = static_cast<int32_t>(x & 0xFFFF), fy = static_cast<int32_t>(y & 0xFFFF);
        if (ix >= 0 && iy >= 0 && ix < w - 1 && iy < h - 1) {
            if constexpr (nearestInside) {
                o[0] = read(NearestCell(x), NearestCell(y), 0);
            } else if (channels == 3 && fx == 0 && fy == 0) {
                for (int32_t c = 0; c < channels; ++c) o[c] = read(ix, iy, c);
            } else {
                for (int32_t c = 0; c < channels; ++c)
                    o[c] = bilinear_level(read(ix, iy, c), read(ix + 1, iy, c), read(ix, iy + 1, c),
                                          read(ix + 1, iy + 1, c), fx, fy);
            }
            if constexpr (kCoverage) coverage[i] = 255;
            return true;
        }
        if (ix < -1 || iy < -1 || ix > w - 1 || iy > h - 1) {
            for (int32_t c = 0; c < channels; ++c) o[c] = background;
            if constexpr (kCoverage) coverage[i] = 0;
            return false;
        }
        // The fringe: ix lies in -1..w - 1 and iy in -1..h - 1.
        const bool left = ix >= 0, right = ix + 1 <= w - 1;
        const bool bottom = iy >= 0, top = iy + 1 <= h - 1;
        if constexpr (kCoverage) {
            coverage[i] = bilinear_level(left && bottom ? 255 : 0, right && bottom ? 255 : 0,
                                         left && top ? 255 : 0, right && top ? 255 : 0, fx, fy);
            const int64_t cx0 = left ? ix : 0, cx1 = right ? ix + 1 : w - 1;
            const int64_t cy0 = bottom ? iy : 0, cy1 = top ? iy + 1 : h - 1;
            for (int32_t c = 0; c < channels; ++c)
                o[c] = bilinear_level(read(cx0, cy0, c), read(cx1, cy0, c), read(cx0, cy1, c),
                                      read(cx1, cy1, c), fx, fy);
        } else {
            for (int32_t c = 0; c < channels; ++c)
                o[c] = bilinear_level(left && bottom ? read(ix, iy, c) : background,
                                      right && bottom ? read(ix + 1, iy, c) : background,
                                      left && top ? read(ix, iy + 1, c) : background,
                                      right && top ? read(ix + 1, iy + 1, c) : background, fx, fy);
        }
        return true;
    });
}

}  // namespace

void scan_nearest_binary(const Image& image, double x0, double y0, double x1, double y1,
                         uint8_t* out, int32_t n, uint8_t background, int32_t& first, int32_t& last)
{
    const int32_t outside = background >= 128 ? 1 : 0;
    ScanNearest(image, x0, y0, x1, y1, n, first, last,
                [&](int32_t i, int32_t bit) { PutBit(out, i, bit < 0 ? outside : bit); });
}

void scan_nearest_binary_gray(const Image& image, double x0, double y0, double x1, double y1,
                              uint8_t* out, int32_t n, uint8_t background, int32_t& first,
                              int32_t& last)
{
    ScanNearest(image, x0, y0, x1, y1, n, first, last,
                [&](int32_t i, int32_t bit) { out[i] = bit < 0 ? background : (bit ? 255 : 0); });
}

void scan_gray(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
               int32_t n, uint8_t background, int32_t& first, int32_t& last)
{
    ScanBilinear<GrayReader, false>(image, x0, y0, x1, y1, out, nullptr, n, background, first,
                                    last);
}

void scan_color(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                int32_t n, uint8_t background, int32_t& first, int32_t& last)
{
    ScanBilinear<ColorReader, false>(image, x0, y0, x1, y1, out, nullptr, n, background, first,
                                     last);
}

void scan_binary_alpha(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                       uint8_t* coverage, int32_t n, uint8_t background, int32_t& first,
                       int32_t& last)
{
    ScanBilinear<BinaryReader, true>(image, x0, y0, x1, y1, out, coverage, n, background, first,
                                     last);
}

void scan_gray_alpha(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                     uint8_t* coverage, int32_t n, uint8_t background, int32_t& first,
                     int32_t& last)
{
    ScanBilinear<GrayReader, true>(image, x0, y0, x1, y1, out, coverage, n, background, first,
                                   last);
}

void scan_color_alpha(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                      uint8_t* coverage, int32_t n, uint8_t background, int32_t& first,
                      int32_t& last)
{
    ScanBilinear<ColorReader, true>(image, x0, y0, x1, y1, out, coverage, n, background, first,
                                    last);
}

// The point samplers are the image record's own, which already follow these
// rules and guard the one-pixel picture.
int32_t sample_binary(const Image& image, double x, double y)
{
    return ImageSampleBit(image, x, y);
}

uint8_t sample_gray(const Image& image, double x, double y)
{
    return static_cast<uint8_t>(ImageSampleGray(image, x, y));
}

void sample_color(const Image& image, double x, double y, uint8_t& blue, uint8_t& green,
                  uint8_t& red)
{
    ImageSampleColor(image, x, y, &red, &green, &blue);
}

}  // namespace lv
