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

inline std::vector<uint8_t> Bytes(const Image& image)
{
    std::vector<uint8_t> bytes;
    for (int32_t y = 0; y < image.height; ++y)
        bytes.insert(bytes.end(), image.rows[y], image.rows[y] + image.stride);
    return bytes;
}

}  // namespace lv::test
