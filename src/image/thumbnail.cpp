#include "image/thumbnail.h"

#include <algorithm>

#include "image/display_tables.h"
#include "image/pixel.h"
#include "shell/errors.h"

namespace lv {

int32_t make_thumbnail(const Image& source, Image& destination, int32_t maxWidth, int32_t maxHeight,
                       bool turned, bool displayMapped)
{
    if (source.kind == kImageSolid || source.kind == kImageHistogram) {
        if (int32_t code = ImageAlloc(destination, source.kind, 0, 1, 0.0)) return code;
        destination.width = 0;
        destination.height = 0;
        if (source.rows && destination.rows)
            CopyBytes(source.rows[0], destination.rows[0], static_cast<size_t>(source.stride));
        return kOk;
    }
    if (source.kind < kImageBinary || source.kind > kImageColor || !source.rows) {
        ImageFree(destination);
        return kOk;
    }
    const int64_t w = turned ? source.height : source.width;
    const int64_t h = turned ? source.width : source.height;
    int64_t outW, outH;
    if (w * maxHeight <= h * maxWidth) {
        outH = maxHeight;
        outW = maxHeight * w / h;
    } else {
        outW = maxWidth;
        outH = maxWidth * h / w;
    }
    outW = std::max<int64_t>(outW, 2);
    outH = std::max<int64_t>(outH, 2);
    if (int32_t code = ImageAlloc(destination, source.kind, static_cast<int32_t>(outW),
                                  static_cast<int32_t>(outH), 0.0))
        return code;
    destination.resolution = 0.0;
    const DisplayTables& t = CurrentDisplayTables();
    const int64_t sw = source.width, sh = source.height;
    for (int64_t r = 0; r < outH; ++r) {
        uint8_t* out = destination.rows[r];
        for (int64_t c = 0; c < outW; ++c) {
            int64_t sr, sc;
            if (!turned) {
                sr = r * (sh - 1) / (outH - 1);
                sc = c * (sw - 1) / (outW - 1);
            } else {
                sc = r * (sw - 1) / (outH - 1);
                sr = (sh - 1) - c * (sh - 1) / (outW - 1);
            }
            const uint8_t* in = source.rows[sr];
            switch (source.kind) {
            case kImageBinary:
                PutBit(out, static_cast<int32_t>(c), GetBit(in, static_cast<int32_t>(sc)));
                break;
            case kImageGray: out[c] = in[sc]; break;
            default: {
                const uint8_t* p = in + sc * 3;
                uint8_t* q = out + c * 3;
                if (displayMapped) {
                    q[0] = t.blue[p[0]];
                    q[1] = t.green[p[1]];
                    q[2] = t.red[p[2]];
                } else {
                    q[0] = p[0];
                    q[1] = p[1];
                    q[2] = p[2];
                }
            }
            }
        }
    }
    return kOk;
}

}  // namespace lv
