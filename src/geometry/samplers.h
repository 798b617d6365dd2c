// Reading a source picture at positions between its pixels.
//
// Scan-line samplers serve whatever maps an output row to a straight line in
// the source (bilinear Warp, Composite, Emboss): the line is walked in fixed
// point, two additions a pixel, with no floating point, division or call in
// the loop but the level blend. Point samplers serve whatever maps each pixel
// on its own (perspective Warp, Displace, Spiral, Kaleidoscope).
//
// Fixed point: 16 fractional bits. The integer part is the position shifted
// arithmetically right by 16 and the fraction its low 16 bits, so -0.25 is
// cell -1 with fraction 0xC000. Positions are held in 64 bits, so pictures
// wider or taller than 32767 pixels are walked like small ones; line ends are
// first limited to 2^40 pixels either way, and a line with a NaN end samples
// nothing.
//
// The line runs from (x0, y0) to (x1, y1) in storage coordinates (row 0 the
// bottom) over n output pixels: the start is trunc(x0 * 65536.0), the step
// trunc((x1 - x0) * 65536.0 / (n - 1)), or 0 for a single pixel, added n - 1
// times, so a long line may end a little short of (x1, y1).
//
// Every scan sampler sets `first` and `last` to the first and last output
// index that read the source, -1 when none did. A source of another kind
// than the sampler's, or one holding no pixels, reads as wholly outside.
#pragma once

#include <cstdint>

#include "image/image.h"
#include "image/pixel.h"

namespace lv {

// Bilinear blend of four levels by 16-bit fractions: along x first, then y,
// each by Lerp8 with the fraction's high byte.
inline uint8_t bilinear_level(uint8_t p00, uint8_t p10, uint8_t p01, uint8_t p11, int32_t fx,
                              int32_t fy)
{
    const auto wx = static_cast<uint8_t>(fx >> 8);
    const auto wy = static_cast<uint8_t>(fy >> 8);
    return Lerp8(Lerp8(p00, p10, wx), Lerp8(p01, p11, wx), wy);
}

// Nearest sampling of a binary source into the first n bits of a binary row
// (later bits of the last byte are kept). A cell is the integer part, plus 1
// when the fraction is above one half. Outside, a background of 128 or more
// sets the bit, below 128 clears it.
void scan_nearest_binary(const Image& image, double x0, double y0, double x1, double y1,
                         uint8_t* out, int32_t n, uint8_t background, int32_t& first,
                         int32_t& last);

// Nearest sampling of a binary source into gray bytes: 255 for a set bit, 0
// for a clear one, the background outside.
void scan_nearest_binary_gray(const Image& image, double x0, double y0, double x1, double y1,
                              uint8_t* out, int32_t n, uint8_t background, int32_t& first,
                              int32_t& last);

// Bilinear sampling of a gray source. Positions whose four neighbours lie in
// the picture blend them; on the one-pixel fringe around it the missing
// neighbours are the background, so the picture fades into it; beyond, the
// background.
void scan_gray(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
               int32_t n, uint8_t background, int32_t& first, int32_t& last);

// scan_gray for a colour source; `out` takes 3 n bytes blue, green, red, and
// the background is the level of all three channels.
void scan_color(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                int32_t n, uint8_t background, int32_t& first, int32_t& last);

// The forms with a coverage byte a pixel: 255 inside, 0 beyond the fringe
// (where the pixel is the background), and on the fringe the blend of 255
// for each neighbour in the picture and 0 for each outside. The fringe's
// pixel blends the neighbours clamped into the picture, so its colour stays
// the picture's own and only the coverage fades it. The binary form reads a
// set bit as 255 and, inside, takes the nearest bit instead of blending.
void scan_binary_alpha(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                       uint8_t* coverage, int32_t n, uint8_t background, int32_t& first,
                       int32_t& last);
void scan_gray_alpha(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                     uint8_t* coverage, int32_t n, uint8_t background, int32_t& first,
                     int32_t& last);
void scan_color_alpha(const Image& image, double x0, double y0, double x1, double y1, uint8_t* out,
                      uint8_t* coverage, int32_t n, uint8_t background, int32_t& first,
                      int32_t& last);

// Point samplers in floating point. Outside the picture (x below 0 or above
// width - 1, likewise y) the result is 0. The binary form gives the bit at the
// position rounded by RoundToInt. The others blend with fractions scaled by
// 256, return a pixel unblended when both fractions are 0, and on the last
// column or row blend towards it from the one before (staying on the only
// column or row of a picture one pixel wide or high).
int32_t sample_binary(const Image& image, double x, double y);
uint8_t sample_gray(const Image& image, double x, double y);
void sample_color(const Image& image, double x, double y, uint8_t& blue, uint8_t& green,
                  uint8_t& red);

}  // namespace lv
