#include "geometry/mirror_rotate.h"

#include <cstring>

#include "geometry/crop.h"
#include "image/pixel.h"
#include "image/progress.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {

namespace {

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

// The busy sign of one run: the box from 10000 pixels, else the wait
// cursor; nothing at all when no progress is wanted.
struct Busy {
    bool shown = false;
    bool boxed = false;

    void Open(bool showProgress, int64_t pixels, int32_t last, const char* title)
    {
        shown = showProgress;
        boxed = showProgress && pixels >= 10000;
        if (boxed)
            ProgressOpen(0, last, title, true);
        else if (shown)
            SetWaitCursor();
    }
    int32_t Step(int32_t value) const { return boxed ? ProgressStep(value) : kOk; }
    void Close() const
    {
        if (boxed)
            ProgressClose();
        else if (shown)
            SetArrowCursor();
    }
};

int32_t BytesPerPixel(int32_t kind) { return kind == kImageColor ? 3 : 1; }

// Normalises an unknown code to the plain copy.
int32_t Known(int32_t orientation)
{
    return orientation >= kOrientCopy && orientation <= kOrientRisingDiagonal ? orientation
                                                                              : kOrientCopy;
}

// One source row y of an orientation that keeps rows.
void OrientRow(const Image& source, Image& destination, int32_t orientation, int32_t y)
{
    const int32_t w = source.width, h = source.height;
    const bool upsideDown = orientation == kOrientHalfTurn || orientation == kOrientTopBottom;
    const bool reversed = orientation == kOrientHalfTurn || orientation == kOrientLeftRight;
    const uint8_t* in = source.rows[y];
    uint8_t* out = destination.rows[upsideDown ? h - 1 - y : y];
    if (source.kind == kImageBinary) {
        if (reversed) {
            std::memset(out, 0, static_cast<size_t>(destination.stride));
            for (int32_t x = 0; x < w; ++x)
                if (GetBit(in, x)) SetBit(out, w - 1 - x);
        } else {
            CopyBytes(in, out, static_cast<size_t>((w + 7) / 8));
        }
    } else if (!reversed) {
        CopyBytes(in, out, static_cast<size_t>(w) * BytesPerPixel(source.kind));
    } else if (source.kind == kImageGray) {
        for (int32_t x = 0; x < w; ++x) out[w - 1 - x] = in[x];
    } else {
        const uint8_t* p = in;
        uint8_t* q = out + static_cast<size_t>(w - 1) * 3;
        for (int32_t x = 0; x < w; ++x, p += 3, q -= 3) {
            q[0] = p[0];
            q[1] = p[1];
            q[2] = p[2];
        }
    }
    ClearRowPadding(out, destination.kind, destination.width, destination.stride);
}

// The tile of source columns x0..x1 and rows y0..y1 (inclusive) of an
// exchanging orientation, walked along destination rows: source column x
// becomes a destination row, source row y a destination column.
void OrientTile(const Image& source, Image& destination, int32_t orientation, int32_t x0,
                int32_t x1, int32_t y0, int32_t y1)
{
    const int32_t w = source.width, h = source.height;
    // Destination row of column x: W - 1 - x for 201 and 205, x otherwise.
    const bool rowsReversed =
        orientation == kOrientClockwise || orientation == kOrientFallingDiagonal;
    // Destination column of row y: y for 201 and 207, H - 1 - y otherwise.
    const bool columnsReversed =
        orientation == kOrientCounterClockwise || orientation == kOrientFallingDiagonal;
    for (int32_t x = x0; x <= x1; ++x) {
        uint8_t* out = destination.rows[rowsReversed ? w - 1 - x : x];
        switch (source.kind) {
        case kImageBinary:
            for (int32_t y = y0; y <= y1; ++y)
                PutBit(out, columnsReversed ? h - 1 - y : y, GetBit(source.rows[y], x));
            break;
        case kImageGray:
            if (columnsReversed)
                for (int32_t y = y0; y <= y1; ++y) out[h - 1 - y] = source.rows[y][x];
            else
                for (int32_t y = y0; y <= y1; ++y) out[y] = source.rows[y][x];
            break;
        default: {
            const size_t at = static_cast<size_t>(x) * 3;
            for (int32_t y = y0; y <= y1; ++y) {
                const uint8_t* p = source.rows[y] + at;
                uint8_t* q = out + static_cast<size_t>(columnsReversed ? h - 1 - y : y) * 3;
                q[0] = p[0];
                q[1] = p[1];
                q[2] = p[2];
            }
            break;
        }
        }
    }
}

// The destination rows that the source columns x0..x1 become: their
// padding is cleared once, before the tiles write their pixels.
void ClearStripPadding(Image& destination, int32_t orientation, int32_t sourceWidth, int32_t x0,
                       int32_t x1)
{
    const bool rowsReversed =
        orientation == kOrientClockwise || orientation == kOrientFallingDiagonal;
    for (int32_t x = x0; x <= x1; ++x)
        ClearRowPadding(destination.rows[rowsReversed ? sourceWidth - 1 - x : x], destination.kind,
                        destination.width, destination.stride);
}

int32_t OrientByRows(const Image& source, Image& destination, int32_t orientation, Busy& busy,
                     bool parallel)
{
    const int32_t h = source.height;
    if (parallel) {
        return ParallelRows(
            h, [&](int32_t y) { OrientRow(source, destination, orientation, y); },
            [&](int32_t done) { return busy.Step(done); });
    }
    for (int32_t y = 0; y < h; ++y) {
        OrientRow(source, destination, orientation, y);
        if (int32_t code = busy.Step(y)) return code;
    }
    return kOk;
}

int32_t OrientByTiles(const Image& source, Image& destination, int32_t orientation, Busy& busy,
                      bool parallel)
{
    const int32_t w = source.width, h = source.height;
    const int32_t strips = (w + kOrientTile - 1) / kOrientTile;
    const int32_t tilesPerStrip = (h + kOrientTile - 1) / kOrientTile;
    // One strip of 64 source columns: its tiles from the bottom up. A strip
    // alone writes the destination rows its columns become, so strips can
    // go to different threads.
    auto strip = [&](int32_t s, int32_t& tilesDone) -> int32_t {
        const int32_t x0 = s * kOrientTile;
        const int32_t x1 = x0 + kOrientTile - 1 < w ? x0 + kOrientTile - 1 : w - 1;
        ClearStripPadding(destination, orientation, w, x0, x1);
        for (int32_t y0 = 0; y0 < h; y0 += kOrientTile) {
            const int32_t y1 = y0 + kOrientTile - 1 < h ? y0 + kOrientTile - 1 : h - 1;
            OrientTile(source, destination, orientation, x0, x1, y0, y1);
            if (!parallel)
                if (int32_t code = busy.Step(++tilesDone)) return code;
        }
        return kOk;
    };
    if (parallel) {
        return ParallelRows(
            strips,
            [&](int32_t s) {
                int32_t unused = 0;
                strip(s, unused);
            },
            [&](int32_t done) { return busy.Step((done + 1) * tilesPerStrip); });
    }
    int32_t tilesDone = 0;
    for (int32_t s = 0; s < strips; ++s)
        if (int32_t code = strip(s, tilesDone)) return code;
    return kOk;
}

}  // namespace

bool mirror_rotate_transposes(int32_t orientation)
{
    return orientation == kOrientClockwise || orientation == kOrientCounterClockwise ||
           orientation == kOrientFallingDiagonal || orientation == kOrientRisingDiagonal;
}

const char* mirror_rotate_title(int32_t orientation)
{
    switch (Known(orientation)) {
    case kOrientCopy: return "Copy";
    case kOrientLeftRight:
    case kOrientTopBottom: return "Reflect";
    case kOrientRisingDiagonal: return "Rotate CW";
    default: return "Rotate";
    }
}

void mirror_rotate_size(int32_t orientation, int32_t width, int32_t height, int32_t& outWidth,
                        int32_t& outHeight)
{
    const bool exchanged = mirror_rotate_transposes(orientation);
    outWidth = exchanged ? height : width;
    outHeight = exchanged ? width : height;
}

int32_t mirror_rotate_tiles(int32_t width, int32_t height)
{
    const int64_t tiles = ((int64_t{width} + kOrientTile - 1) / kOrientTile) *
                          ((int64_t{height} + kOrientTile - 1) / kOrientTile);
    return tiles > INT32_MAX ? INT32_MAX : static_cast<int32_t>(tiles);
}

int32_t mirror_rotate(const Image& source, Image& destination, int32_t orientation,
                      bool showProgress)
{
    if (source.kind < kImageBinary || source.kind > kImageColor) return kErrImageType;
    orientation = Known(orientation);
    int32_t outWidth = 0, outHeight = 0;
    mirror_rotate_size(orientation, source.width, source.height, outWidth, outHeight);
    if (int32_t code = ImageAlloc(destination, source.kind, outWidth, outHeight, source.resolution))
        return code;
    const int64_t pixels = int64_t{source.width} * source.height;
    if (pixels == 0) return kOk;
    const bool parallel = pixels >= kParallelPixels && ThreadCount() > 1;
    const bool tiles = mirror_rotate_transposes(orientation);
    Busy busy;
    busy.Open(showProgress, pixels,
              tiles ? mirror_rotate_tiles(source.width, source.height) : source.height - 1,
              mirror_rotate_title(orientation));
    const int32_t result = tiles ? OrientByTiles(source, destination, orientation, busy, parallel)
                                 : OrientByRows(source, destination, orientation, busy, parallel);
    busy.Close();
    return result;
}

}  // namespace lv
