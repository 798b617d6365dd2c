// Reading pictures back in tests: one pixel as a number, and all the bytes
// of every row, padding included.
#pragma once

#include <cstdint>
#include <vector>

#include "image/image.h"
#include "image/pixel.h"

namespace lv::test {

// A pixel as one number: the bit, the gray level, or blue | green << 8 |
// red << 16.
inline uint32_t Pixel(const Image& image, int32_t x, int32_t y)
{
    const uint8_t* row = image.rows[y];
    if (image.kind == kImageBinary) return static_cast<uint32_t>(GetBit(row, x));
    if (image.kind == kImageGray) return row[x];
    return uint32_t{row[3 * x]} | uint32_t{row[3 * x + 1]} << 8 | uint32_t{row[3 * x + 2]} << 16;
}

// A picture of `kind` whose levels are level(x, y, channel), row 0 at the
// bottom; a binary picture has its bit set where the level is above 127.
// Empty when memory is short.
template <class F>
Image MakePicture(int32_t kind, int32_t width, int32_t height, F level)
{
    Image image;
    if (ImageAlloc(image, kind, width, height, 72.0) != 0) return image;
    const int32_t channels = kind == kImageColor ? 3 : 1;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            if (kind == kImageBinary) {
                PutBit(image.rows[y], x, level(x, y, 0) > 127);
                continue;
            }
            for (int32_t c = 0; c < channels; ++c)
                image.rows[y][x * channels + c] = static_cast<uint8_t>(level(x, y, c));
        }
    ClearImagePadding(image);
    return image;
}

inline std::vector<uint8_t> Bytes(const Image& image)
{
    std::vector<uint8_t> bytes;
    for (int32_t y = 0; y < image.height; ++y)
        bytes.insert(bytes.end(), image.rows[y], image.rows[y] + image.stride);
    return bytes;
}

}  // namespace lv::test
