#include "synthesis/test_card.h"

#include "image/pixel.h"
#include "shell/errors.h"

namespace lv {

int32_t MakeTestCard(Image& image, int32_t kind, int32_t width, int32_t height)
{
    if (kind < kImageBinary || kind > kImageColor) return kErrImageType;
    if (int32_t code = ImageAlloc(image, kind, width, height, 300.0)) return code;
    for (int32_t y = 0; y < height; ++y) {
        uint8_t* row = image.rows[y];
        // From the top: a hue band, a gray ramp, eight gray steps, then a
        // grid of one-pixel lines every 16 pixels.
        const int32_t ty = height - 1 - y;
        const int32_t band = height >= 4 ? ty * 4 / height : 0;
        for (int32_t x = 0; x < width; ++x) {
            const int32_t t = width > 1 ? static_cast<int32_t>(int64_t{x} * 255 / (width - 1)) : 0;
            int32_t r = t, g = t, b = t;
            if (band == 0) {
                // Six hue sectors across, darkening toward the band's foot.
                const int32_t h = static_cast<int32_t>(int64_t{x} * 1530 / (width > 0 ? width : 1));
                const int32_t s = h % 255, sector = h / 255;
                const int32_t up = s, down = 255 - s;
                const int32_t table[6][3] = {{255, up, 0},   {down, 255, 0}, {0, 255, up},
                                             {0, down, 255}, {up, 0, 255},   {255, 0, down}};
                const int32_t* c = table[sector < 6 ? sector : 5];
                const int32_t fade = height >= 4 ? 255 - (ty * 4 % height) * 128 / height : 255;
                r = c[0] * fade / 255;
                g = c[1] * fade / 255;
                b = c[2] * fade / 255;
            } else if (band == 2) {
                r = g = b = (x * 8 / (width > 0 ? width : 1)) * 255 / 7;
            } else if (band == 3) {
                r = g = b = (x % 16 == 0 || ty % 16 == 0) ? 0 : 230;
            }
            if (kind == kImageColor) {
                row[x * 3] = static_cast<uint8_t>(b);
                row[x * 3 + 1] = static_cast<uint8_t>(g);
                row[x * 3 + 2] = static_cast<uint8_t>(r);
            } else {
                const uint8_t v = luminance(r, g, b);
                if (kind == kImageGray)
                    row[x] = v;
                else
                    PutBit(row, x, v >= 128);
            }
        }
    }
    return kOk;
}

}  // namespace lv
