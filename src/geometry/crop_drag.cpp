#include "geometry/crop_drag.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "image/pixel.h"
#include "shell/text.h"

namespace lv {

namespace {

int32_t Clamp(int64_t v, int64_t low, int64_t high)
{
    return static_cast<int32_t>(std::clamp(v, low, std::max(low, high)));
}

// The box put in order: left, bottom, right, top.
struct Edges {
    int32_t left, bottom, right, top;
};
Edges EdgesOf(const CropBox& b)
{
    return {std::min(b.x1, b.x2), std::min(b.y1, b.y2), std::max(b.x1, b.x2), std::max(b.y1, b.y2)};
}

// Edges back to a box with the corners in the order `like` has them.
CropBox BoxOf(const Edges& e, const CropBox& like)
{
    CropBox b;
    b.x1 = like.x1 <= like.x2 ? e.left : e.right;
    b.x2 = like.x1 <= like.x2 ? e.right : e.left;
    b.y1 = like.y1 <= like.y2 ? e.bottom : e.top;
    b.y2 = like.y1 <= like.y2 ? e.top : e.bottom;
    return b;
}

CropBox Inside(const CropBox& b, int32_t width, int32_t height)
{
    return {Clamp(b.x1, 0, width - 1), Clamp(b.y1, 0, height - 1), Clamp(b.x2, 0, width - 1),
            Clamp(b.y2, 0, height - 1)};
}

bool IsCorner(int32_t handle) { return handle >= kCropCorner11 && handle <= kCropCorner12; }

// Which of a box's coordinates a corner handle moves: x2 for corners 21 and
// 22, y2 for 22 and 12, else x1 and y1.
bool MovesX2(int32_t handle) { return handle == kCropCorner21 || handle == kCropCorner22; }
bool MovesY2(int32_t handle) { return handle == kCropCorner22 || handle == kCropCorner12; }

// The height that goes with a width at a ratio, as crop_constrain has it.
int32_t HeightFor(int64_t width, double ratio)
{
    return std::max(RoundToInt(std::min(width / ratio, 2e9)), 1);
}

// One axis of a fitted box: the corner that stays, the length the fit asks
// for, and the way the dragged corner lies. Turns to the other way when this
// one has no room, and says how much room there is.
int32_t Room(int32_t fixed, int32_t limit, int32_t& direction)
{
    const int32_t ahead = direction > 0 ? limit - 1 - fixed : fixed;
    const int32_t behind = direction > 0 ? fixed : limit - 1 - fixed;
    if (ahead > 0 || behind == 0) return ahead;
    direction = -direction;
    return behind;
}

}  // namespace

bool crop_drag_start(CropDrag& drag, const CropBox& box, int32_t handle, int32_t x, int32_t y)
{
    if (!IsCorner(handle) && handle != kCropCenter) return false;
    drag.handle = handle;
    drag.start = box;
    drag.fromX = x;
    drag.fromY = y;
    return true;
}

CropBox crop_drag_to(const CropDrag& drag, int32_t x, int32_t y, int32_t width, int32_t height,
                     double ratio)
{
    const CropBox& s = drag.start;
    const int64_t dx = int64_t{x} - drag.fromX, dy = int64_t{y} - drag.fromY;
    if (drag.handle == kCropCenter) {
        const Edges e = EdgesOf(s);
        const int64_t mx = std::clamp<int64_t>(dx, -int64_t{e.left}, int64_t{width} - 1 - e.right);
        const int64_t my = std::clamp<int64_t>(dy, -int64_t{e.bottom}, int64_t{height} - 1 - e.top);
        return {static_cast<int32_t>(s.x1 + mx), static_cast<int32_t>(s.y1 + my),
                static_cast<int32_t>(s.x2 + mx), static_cast<int32_t>(s.y2 + my)};
    }
    if (!IsCorner(drag.handle)) return s;
    CropBox moved = s;
    int32_t& cx = MovesX2(drag.handle) ? moved.x2 : moved.x1;
    int32_t& cy = MovesY2(drag.handle) ? moved.y2 : moved.y1;
    cx = Clamp(cx + dx, 0, width - 1);
    cy = Clamp(cy + dy, 0, height - 1);
    return ratio > 0.0 ? crop_fit(moved, drag.handle, ratio, width, height) : moved;
}

CropBox crop_fit(const CropBox& box, int32_t handle, double ratio, int32_t width, int32_t height)
{
    if (!(ratio > 0.0) || !IsCorner(handle) || width < 1 || height < 1)
        return Inside(box, width, height);
    const CropBox fitted = crop_constrain(Inside(box, width, height), handle, ratio);
    const bool x2 = MovesX2(handle), y2 = MovesY2(handle);
    const int32_t fixedX = x2 ? fitted.x1 : fitted.x2, fixedY = y2 ? fitted.y1 : fitted.y2;
    const int32_t dragX = x2 ? fitted.x2 : fitted.x1, dragY = y2 ? fitted.y2 : fitted.y1;
    int32_t wayX = dragX < fixedX ? -1 : 1, wayY = dragY < fixedY ? -1 : 1;
    int64_t w = std::abs(int64_t{dragX} - fixedX), h = std::abs(int64_t{dragY} - fixedY);
    const int32_t roomX = Room(fixedX, width, wayX), roomY = Room(fixedY, height, wayY);
    if (w > roomX || h > roomY) {
        // The widest box whose height still fits, found from an estimate.
        w = std::min<int64_t>(w, roomX);
        w = std::min<int64_t>(w, static_cast<int64_t>(std::min((roomY + 0.5) * ratio, 2e9)));
        while (w > 1 && HeightFor(w, ratio) > roomY) --w;
        h = HeightFor(std::max<int64_t>(w, 1), ratio);
        // A picture too narrow or too low for the ratio at all.
        w = std::min<int64_t>(w, roomX);
        h = std::min<int64_t>(h, roomY);
    }
    CropBox out = fitted;
    (x2 ? out.x2 : out.x1) = static_cast<int32_t>(fixedX + wayX * w);
    (y2 ? out.y2 : out.y1) = static_cast<int32_t>(fixedY + wayY * h);
    return out;
}

CropBox crop_step_side(const CropBox& box, int32_t side, int32_t step, int32_t width,
                       int32_t height, double ratio)
{
    const Edges old = EdgesOf(box);
    Edges e = old;
    switch (side) {
    case kCropLeft: e.left = Clamp(int64_t{e.left} + step, 0, e.right); break;
    case kCropRight: e.right = Clamp(int64_t{e.right} - step, e.left, width - 1); break;
    case kCropTop: e.top = Clamp(int64_t{e.top} - step, e.bottom, height - 1); break;
    case kCropBottom: e.bottom = Clamp(int64_t{e.bottom} + step, 0, e.top); break;
    default: return box;
    }
    if (ratio > 0.0) {
        if (side == kCropLeft || side == kCropRight) {
            // The width as stepped; the height follows below the top.
            const int32_t h = HeightFor(e.right - e.left, ratio);
            if (h > height - 1) return box;
            e.bottom = e.top - h;
            if (e.bottom < 0) {
                e.bottom = 0;
                e.top = h;
            }
        } else {
            const int32_t oldWidth = old.right - old.left;
            const int32_t wanted = e.top - e.bottom;
            int64_t w = std::max(RoundToInt(std::min(wanted * ratio, 2e9)), 1);
            if (w == oldWidth && wanted != old.top - old.bottom)
                w = std::max<int64_t>(oldWidth + (wanted > old.top - old.bottom ? 1 : -1), 1);
            const int32_t h = HeightFor(w, ratio);
            if (w > width - 1 || h > height - 1) return box;
            e.right = static_cast<int32_t>(e.left + w);
            if (e.right > width - 1) {
                e.right = width - 1;
                e.left = static_cast<int32_t>(e.right - w);
            }
            // The stepped side stays; the opposite one follows the height.
            if (side == kCropTop) {
                e.bottom = std::max(e.top - h, 0);
                e.top = e.bottom + h;
            } else {
                e.top = std::min(e.bottom + h, height - 1);
                e.bottom = e.top - h;
            }
        }
    }
    return BoxOf(e, box);
}

std::string crop_length_text(int32_t pixels, int32_t units, double resolution)
{
    if (units == kUnitsPixels) return FormatText("%d", pixels);
    return FormatText("%2f", PixelsToLength(pixels, units, resolution));
}

void crop_store_box(CropParams& params, const CropBox& box, int32_t height)
{
    params.x1 = box.x1;
    params.y1 = height - 1 - box.y1;
    params.x2 = box.x2;
    params.y2 = height - 1 - box.y2;
}

CropScreen crop_on_screen(const CropBox& box, const ImageWindow& record, int32_t clientWidth,
                          int32_t clientHeight, const ZoomMetrics& metrics)
{
    const ZoomSubject subject = ZoomSubjectOf(record);
    auto at = [&](int32_t x, int32_t y, int32_t& cx, int32_t& cy) {
        ImageToClient(record, subject, clientWidth, clientHeight, metrics, x, y, cx, cy);
    };
    CropScreen s;
    at(box.x1, box.y1, s.box.x1, s.box.y1);
    at(box.x2, box.y2, s.box.x2, s.box.y2);
    // Above 1:1 a pixel is a square of screen pixels: the right corner goes
    // to its last column and the lower corner (the smaller row) to its last
    // screen row.
    const int32_t extra = std::max(ZoomClamp(record.zoom), 1) - 1;
    (box.x2 >= box.x1 ? s.box.x2 : s.box.x1) += extra;
    (box.y2 <= box.y1 ? s.box.y2 : s.box.y1) += extra;
    int32_t left = 0, top = 0;
    at(record.sourceLeft, subject.height - 1 - record.sourceTop, left, top);
    s.clipLeft = left;
    s.clipTop = top;
    s.clipRight = left + record.viewWidth - 1;
    s.clipBottom = top + record.viewHeight - 1;
    return s;
}

}  // namespace lv
