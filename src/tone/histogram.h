// Histograms, taken on a sample of at most 500000 pixels so that a panel
// opens at once on a large picture, and the table that maps one histogram
// onto another (Equalize).
#pragma once

#include <cstdint>

#include "image/image.h"

namespace lv {

// The peak (the largest count) and the 256 counts: also the one row of a
// histogram Image (kind 5).
struct HistogramRecord {
    int32_t peak = 0;
    int32_t counts[256] = {};
};

inline constexpr int32_t kHistogramBudget = 500000;
// The size given to the record `image_histogram` makes, for its window.
inline constexpr int32_t kHistogramWindowWidth = 264;
inline constexpr int32_t kHistogramWindowHeight = 136;

// The sampling steps for a picture: every sy-th row from row 0 and every
// sx-th pixel of it from column 0, so that at most `budget` pixels are read.
void HistogramSteps(int32_t width, int32_t height, int32_t budget, int32_t& sx, int32_t& sy);

// The readers. Each shows the box "Histogram", which cannot be aborted.
void histogram_binary(const Image& image, HistogramRecord& h, int32_t budget);
void histogram_gray(const Image& image, HistogramRecord& h, int32_t budget);
void histogram_rgb(const Image& image, HistogramRecord& red, HistogramRecord& green,
                   HistogramRecord& blue, int32_t budget);
void histogram_average(const Image& image, HistogramRecord& h, int32_t budget);
void histogram_luminance(const Image& image, HistogramRecord& h, int32_t budget);

// Colour pictures: hue, saturation and value (HSV) or lightness (HSL) from
// the 12-bit conversions, each brought to 8 bits through `Level12To8`.
void histogram_hsv(const Image& image, HistogramRecord& hue, HistogramRecord& saturation,
                   HistogramRecord& value, int32_t budget);
void histogram_hsl(const Image& image, HistogramRecord& hue, HistogramRecord& saturation,
                   HistogramRecord& lightness, int32_t budget);

// Colour pictures, one channel of the 8-bit conversions: the HSV value and
// saturation, the HSL lightness and saturation.
void histogram_value(const Image& image, HistogramRecord& h, int32_t budget);
void histogram_hsv_saturation(const Image& image, HistogramRecord& h, int32_t budget);
void histogram_lightness(const Image& image, HistogramRecord& h, int32_t budget);
void histogram_hsl_saturation(const Image& image, HistogramRecord& h, int32_t budget);

// The 8-bit scale of a 12-bit channel: entry i is i times 255 shifted right
// by 12, for i from 0 to 4096.
struct Level12To8 {
    uint8_t level[4097];
};
void MakeLevel12To8(Level12To8& table);

// The histogram of a picture as a kind-5 image: by the source's kind,
// luminance for colour. 14 for kinds outside 1 to 3.
int32_t image_histogram(const Image& source, Image& destination);

// Fills `table` so that `histogram` is mapped onto `target`: cumulative
// sums matched from below, never falling, ties to the lower level.
void equalize_table(const HistogramRecord& histogram, const HistogramRecord& target,
                    uint8_t table[256]);

}  // namespace lv
