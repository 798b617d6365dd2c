#include "tone/histogram.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "image/pixel.h"
#include "image/progress.h"
#include "shell/errors.h"
#include "tone/color_space.h"

namespace lv {

namespace {

void Clear(HistogramRecord& h) { h = HistogramRecord(); }

void Peak(HistogramRecord& h)
{
    h.peak = 0;
    for (int32_t c : h.counts) h.peak = std::max(h.peak, c);
}

// Walks the sampled pixels of a picture under the box "Histogram", handing
// each sampled row and the column step to `visit`.
template <typename Visit>
void Sample(const Image& image, int32_t budget, Visit visit)
{
    if (!image.rows || image.width <= 0 || image.height <= 0) return;
    int32_t sx = 1, sy = 1;
    HistogramSteps(image.width, image.height, budget, sx, sy);
    ProgressOpen(0, (image.height - 1) / sy, "Histogram", false);
    for (int32_t y = 0, line = 0; y < image.height; y += sy, ++line) {
        visit(image.rows[y], sx);
        ProgressStep(line);
    }
    ProgressClose();
}

}  // namespace

void HistogramSteps(int32_t width, int32_t height, int32_t budget, int32_t& sx, int32_t& sy)
{
    sx = sy = 1;
    const int64_t pixels = int64_t{width} * height;
    while (pixels / (int64_t{sx} * sy) > budget) {
        if (sx == sy)
            ++sy;
        else
            ++sx;
    }
}

void histogram_binary(const Image& image, HistogramRecord& h, int32_t budget)
{
    Clear(h);
    Sample(image, budget, [&](const uint8_t* row, int32_t sx) {
        for (int32_t x = 0; x < image.width; x += sx) ++h.counts[GetBit(row, x) ? 255 : 0];
    });
    h.peak = std::max(h.counts[0], h.counts[255]);
}

void histogram_gray(const Image& image, HistogramRecord& h, int32_t budget)
{
    Clear(h);
    Sample(image, budget, [&](const uint8_t* row, int32_t sx) {
        for (int32_t x = 0; x < image.width; x += sx) ++h.counts[row[x]];
    });
    Peak(h);
}

void histogram_rgb(const Image& image, HistogramRecord& red, HistogramRecord& green,
                   HistogramRecord& blue, int32_t budget)
{
    Clear(red);
    Clear(green);
    Clear(blue);
    Sample(image, budget, [&](const uint8_t* row, int32_t sx) {
        for (int32_t x = 0; x < image.width; x += sx) {
            const uint8_t* p = row + static_cast<size_t>(x) * 3;
            ++blue.counts[p[0]];
            ++green.counts[p[1]];
            ++red.counts[p[2]];
        }
    });
    Peak(red);
    Peak(green);
    Peak(blue);
}

// One level for each sampled colour pixel, from its stored blue, green, red.
template <typename Level>
void ColourLevels(const Image& image, HistogramRecord& h, int32_t budget, Level level)
{
    Clear(h);
    Sample(image, budget, [&](const uint8_t* row, int32_t sx) {
        for (int32_t x = 0; x < image.width; x += sx) {
            const uint8_t* p = row + static_cast<size_t>(x) * 3;
            ++h.counts[level(p[0], p[1], p[2])];
        }
    });
    Peak(h);
}

void histogram_average(const Image& image, HistogramRecord& h, int32_t budget)
{
    ColourLevels(image, h, budget, [](int32_t b, int32_t g, int32_t r) { return (b + g + r) / 3; });
}

void histogram_luminance(const Image& image, HistogramRecord& h, int32_t budget)
{
    ColourLevels(image, h, budget,
                 [](int32_t b, int32_t g, int32_t r) { return luminance(r, g, b); });
}

void histogram_value(const Image& image, HistogramRecord& h, int32_t budget)
{
    ColourLevels(image, h, budget,
                 [](int32_t b, int32_t g, int32_t r) { return hsv_value(r, g, b); });
}

void histogram_lightness(const Image& image, HistogramRecord& h, int32_t budget)
{
    ColourLevels(image, h, budget,
                 [](int32_t b, int32_t g, int32_t r) { return hsl_lightness(r, g, b); });
}

void histogram_hsv_saturation(const Image& image, HistogramRecord& h, int32_t budget)
{
    ColourLevels(image, h, budget,
                 [](int32_t b, int32_t g, int32_t r) { return hsv_saturation(r, g, b); });
}

void histogram_hsl_saturation(const Image& image, HistogramRecord& h, int32_t budget)
{
    ColourLevels(image, h, budget,
                 [](int32_t b, int32_t g, int32_t r) { return hsl_saturation(r, g, b); });
}

void MakeLevel12To8(Level12To8& table)
{
    for (int32_t i = 0; i <= 4096; ++i) table.level[i] = static_cast<uint8_t>(i * 255 >> 12);
}

namespace {

// Three records from one 12-bit conversion of each sampled colour pixel.
template <typename Convert>
void ThreeLevels(const Image& image, HistogramRecord& first, HistogramRecord& second,
                 HistogramRecord& third, int32_t budget, Convert convert)
{
    Clear(first);
    Clear(second);
    Clear(third);
    Level12To8 scale;
    MakeLevel12To8(scale);
    Sample(image, budget, [&](const uint8_t* row, int32_t sx) {
        for (int32_t x = 0; x < image.width; x += sx) {
            const uint8_t* p = row + static_cast<size_t>(x) * 3;
            int32_t a = 0, b = 0, c = 0;
            convert(p[2], p[1], p[0], a, b, c);
            ++first.counts[scale.level[a]];
            ++second.counts[scale.level[b]];
            ++third.counts[scale.level[c]];
        }
    });
    Peak(first);
    Peak(second);
    Peak(third);
}

}  // namespace

void histogram_hsv(const Image& image, HistogramRecord& hue, HistogramRecord& saturation,
                   HistogramRecord& value, int32_t budget)
{
    ThreeLevels(image, hue, saturation, value, budget, rgb_to_hsv12);
}

void histogram_hsl(const Image& image, HistogramRecord& hue, HistogramRecord& saturation,
                   HistogramRecord& lightness, int32_t budget)
{
    ThreeLevels(image, hue, saturation, lightness, budget, rgb_to_hsl12);
}

int32_t image_histogram(const Image& source, Image& destination)
{
    HistogramRecord h;
    switch (source.kind) {
    case kImageBinary: histogram_binary(source, h, kHistogramBudget); break;
    case kImageGray: histogram_gray(source, h, kHistogramBudget); break;
    case kImageColor: histogram_luminance(source, h, kHistogramBudget); break;
    default: return kErrImageType;
    }
    // The one row holds the counts whatever the size; the size is what a
    // window shows: the 256 bins a pixel apart inside the 4-pixel inset.
    if (int32_t code = ImageAlloc(destination, kImageHistogram, kHistogramWindowWidth,
                                  kHistogramWindowHeight, 0.0))
        return code;
    std::memcpy(destination.rows[0], &h, sizeof h);
    return kOk;
}

void equalize_table(const HistogramRecord& histogram, const HistogramRecord& target,
                    uint8_t table[256])
{
    double total = 0.0, targetTotal = 0.0;
    for (int32_t i = 0; i < 256; ++i) {
        total += histogram.counts[i];
        targetTotal += target.counts[i];
    }
    if (total == 0.0 || targetTotal == 0.0) {
        for (int32_t i = 0; i < 256; ++i) table[i] = static_cast<uint8_t>(i);
        return;
    }
    double a[256], b[256], runA = 0.0, runB = 0.0;
    for (int32_t i = 0; i < 256; ++i) {
        runA += histogram.counts[i] * (1.0 / total);
        runB += target.counts[i] * (1.0 / targetTotal);
        a[i] = runA;
        b[i] = runB;
    }
    int32_t j0 = 0;
    for (int32_t i = 0; i < 256; ++i) {
        double best = 2.0;
        int32_t candidate = j0;
        for (int32_t j = j0; j < 256; ++j) {
            const double d = std::fabs(a[i] - b[j]);
            if (d < best) {
                best = d;
                candidate = j;
            }
        }
        table[i] = static_cast<uint8_t>(candidate);
        j0 = candidate;
    }
}

}  // namespace lv
