#include "image/probe.h"

#include <algorithm>

#include "image/pixel.h"

namespace lv {

bool ProbeColor(const Image& image, int32_t x, int32_t y, int32_t half, int32_t& r, int32_t& g,
                int32_t& b)
{
    if (image.kind < kImageBinary || image.kind > kImageColor || !image.rows) return false;
    // The centre column is read for every step, so it must lie in the picture.
    if (x < 0 || x >= image.width) return false;
    const int32_t top = std::min(y + half, image.height - 1), bottom = std::max(y - half, 0);
    const int32_t right = std::min(x + half, image.width - 1), left = std::max(x - half, 0);
    if (bottom > top) return false;
    int64_t sum[3] = {}, count = 0;
    for (int32_t row = bottom; row <= top; ++row) {
        const uint8_t* line = image.rows[row];
        int32_t red, green, blue;
        switch (image.kind) {
        case kImageBinary: red = green = blue = GetBit(line, x) ? 255 : 0; break;
        case kImageGray: red = green = blue = line[x]; break;
        default:
            blue = line[3 * x];
            green = line[3 * x + 1];
            red = line[3 * x + 2];
            break;
        }
        for (int32_t column = left; column <= right; ++column) {
            sum[0] += red;
            sum[1] += green;
            sum[2] += blue;
            ++count;
        }
    }
    r = static_cast<int32_t>((sum[0] + count / 2) / count);
    g = static_cast<int32_t>((sum[1] + count / 2) / count);
    b = static_cast<int32_t>((sum[2] + count / 2) / count);
    return true;
}

}  // namespace lv
