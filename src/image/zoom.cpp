// Zoom, scrolling, placement and coordinate arithmetic of image windows.
//
// All sizes are worked out in 64 bits and stored back saturated, so that no
// record field, however odd, can make the arithmetic overflow or divide by
// zero.
#include "image/zoom.h"

#include <algorithm>
#include <new>

#include "shell/errors.h"
#include "shell/text.h"

namespace lv {
namespace {

inline constexpr size_t kTitleBuffer = 260;

int32_t Saturate(int64_t v)
{
    return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
}

int64_t Clamp64(int64_t v, int64_t low, int64_t high)
{
    return v < low ? low : (v > high ? high : v);
}

bool IsPictureKind(int32_t kind) { return kind >= kImageBinary && kind <= kImageColor; }

// A zoomed length, at most the largest 32-bit value.
int64_t Zoomed(int64_t length, int32_t zoom)
{
    if (length <= 0) return 0;
    const int64_t z = ZoomClamp(zoom);
    if (z >= 1) return std::min<int64_t>(length * z, INT32_MAX);
    const int64_t m = -z;
    return (length + m - 1) / m;
}

struct Size64 {
    int64_t width = 0, height = 0;
};

// The subject's size at a zoom; nothing for what is not a picture.
Size64 ZoomedSize(const ZoomSubject& subject, int32_t zoom)
{
    if (!IsPictureKind(subject.kind)) return {};
    return {Zoomed(subject.width, zoom), Zoomed(subject.height, zoom)};
}

// The picture at this size, with a child window's frame and the border gap
// round it, fits the workspace.
bool FitsWorkspace(const Size64& size, const ZoomMetrics& metrics)
{
    const int64_t gap = 2 * static_cast<int64_t>(metrics.borderWidth);
    return size.width + metrics.cxChildBorder + gap <= metrics.workspaceWidth &&
           size.height + metrics.cyChildBorder + gap <= metrics.workspaceHeight;
}

// A picture already down to one pixel each way gets no smaller by a
// further reduction.
bool Smallest(const Size64& size) { return size.width <= 1 && size.height <= 1; }

// Steps down until the subject fits the workspace, or until going down
// cannot help any more.
int32_t ShrinkToFit(const ZoomSubject& subject, int32_t zoom, const ZoomMetrics& metrics)
{
    while (zoom > kMinZoom) {
        const Size64 size = ZoomedSize(subject, zoom);
        if (FitsWorkspace(size, metrics) || Smallest(size)) break;
        zoom = ZoomStepDown(zoom);
    }
    return zoom;
}

// Where a view of `view` pixels stands in a client of `client` pixels, less
// a scroll bar of `bar` pixels when it is shown.
int32_t CenterOrigin(int32_t client, int32_t bar, bool barShown, int32_t view)
{
    const int64_t room = static_cast<int64_t>(client) - (barShown ? bar : 0);
    return Saturate(std::max<int64_t>(0, (room - view) / 2));
}

void Origin(const ImageWindow& record, int32_t clientWidth, int32_t clientHeight,
            const ZoomMetrics& metrics, int64_t& originX, int64_t& originY)
{
    originX =
        CenterOrigin(clientWidth, metrics.cxVScroll, record.scrollRangeY > 0, record.viewWidth);
    originY =
        CenterOrigin(clientHeight, metrics.cyHScroll, record.scrollRangeX > 0, record.viewHeight);
}

// One axis of the scroll step.
int64_t AxisPosition(int64_t oldPosition, int64_t oldRange, int64_t range, bool keep,
                     int64_t keepZoomed, int64_t view, int32_t zoom)
{
    if (range <= 0) return 0;
    int64_t position;
    if (keep)
        position = keepZoomed - view / 2;
    else if (oldRange > 0)
        position = Clamp64(oldPosition, 0, oldRange) * range / oldRange;
    else
        position = range / 2;
    position = Clamp64(position, 0, range);
    if (zoom > 1) position -= position % zoom;
    return position;
}

// An image coordinate on the zoomed picture.
int64_t ZoomedCoordinate(int64_t v, int32_t zoom)
{
    const int64_t z = ZoomClamp(zoom);
    return z >= 1 ? v * z : v / -z;
}

}  // namespace

ZoomSubject ZoomSubjectOf(const ImageWindow& record)
{
    // A preview shows its output through `display`; the frame keeps the
    // output size in the preview's otherwise empty `image`.
    // Before its first run a preview has no display yet; its geometry is
    // that of a picture all the same.
    if (record.windowKind == kWindowPreview)
        return {record.display.kind ? record.display.kind : kImageColor, record.image.width,
                record.image.height};
    return {record.image.kind, record.image.width, record.image.height};
}

int32_t ZoomClamp(int32_t zoom)
{
    if (zoom == 0 || zoom == -1) return 1;
    return std::clamp(zoom, kMinZoom, kMaxZoom);
}

int32_t ZoomStepUp(int32_t zoom)
{
    int64_t next = static_cast<int64_t>(zoom) + 1;
    if (next == 0 || next == -1) next = 1;
    return static_cast<int32_t>(Clamp64(next, kMinZoom, kMaxZoom));
}

int32_t ZoomStepDown(int32_t zoom)
{
    int64_t next = static_cast<int64_t>(zoom) - 1;
    if (next == 0 || next == -1) next = -2;
    return static_cast<int32_t>(Clamp64(next, kMinZoom, kMaxZoom));
}

int32_t ZoomedLength(int32_t length, int32_t zoom) { return Saturate(Zoomed(length, zoom)); }

std::string ZoomTitle(const std::string& base, int32_t kind, int32_t zoom)
{
    std::string title = base;
    if (IsPictureKind(kind)) {
        if (zoom >= 0)
            title = FormatText("%s (%d:1)", base, zoom);
        else
            title = FormatText("%s (1:%d)", base, -static_cast<int64_t>(zoom));
    }
    // The window title buffer holds 259 characters.
    if (title.size() > kTitleBuffer - 1) title.resize(kTitleBuffer - 1);
    return title;
}

std::string WindowTitle(const ImageWindow& record)
{
    std::string base;
    if (record.windowKind == kWindowPreview)
        base = "Preview";
    else if (!record.fileName.empty())
        base = record.fileName;
    else
        base = FormatText("Untitled %d", static_cast<int64_t>(record.slot) + 1);
    return ZoomTitle(base, ZoomSubjectOf(record).kind, record.zoom);
}

WindowPlacement ZoomSizeStep(ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                             int32_t clientHeight, bool resize, bool normalState, int32_t windowX,
                             int32_t windowY, const ZoomMetrics& metrics)
{
    WindowPlacement placement;
    if (!IsPictureKind(subject.kind)) return placement;
    const Size64 zoomed = ZoomedSize(subject, record.zoom);
    const int64_t gap = 2 * static_cast<int64_t>(metrics.borderWidth);
    int64_t availableWidth = static_cast<int64_t>(clientWidth) - gap;
    int64_t availableHeight = static_cast<int64_t>(clientHeight) - gap;
    resize = resize && normalState;

    if (resize && zoomed.width == availableWidth && zoomed.height == availableHeight) {
        record.viewWidth = Saturate(zoomed.width);
        record.viewHeight = Saturate(zoomed.height);
        return placement;
    }
    const int64_t outerWidth = zoomed.width + metrics.cxChildBorder + gap;
    const int64_t outerHeight = zoomed.height + metrics.cyChildBorder + gap;
    if (resize && zoomed.width < availableWidth && zoomed.height < availableHeight) {
        // Smaller than the window: shrink the window round it where it stands.
        placement.resized = true;
        placement.x = windowX;
        placement.y = windowY;
    } else if (resize && FitsWorkspace(zoomed, metrics)) {
        // Larger than the window but within the workspace: grow it and
        // center it there.
        placement.resized = true;
        placement.moved = true;
        placement.x = Saturate((metrics.workspaceWidth - outerWidth) / 2);
        placement.y = Saturate((metrics.workspaceHeight - outerHeight) / 2);
    }
    if (placement.resized) {
        placement.width = Saturate(outerWidth);
        placement.height = Saturate(outerHeight);
        record.viewWidth = Saturate(zoomed.width);
        record.viewHeight = Saturate(zoomed.height);
        return placement;
    }

    // The window keeps its size; scroll bars take their room from the
    // client, and the vertical bar may make the horizontal one necessary.
    bool horizontalBar = zoomed.width > availableWidth;
    if (horizontalBar) availableHeight -= metrics.cyHScroll;
    if (zoomed.height > availableHeight) {
        availableWidth -= metrics.cxVScroll;
        if (!horizontalBar && zoomed.width > availableWidth) {
            horizontalBar = true;
            availableHeight -= metrics.cyHScroll;
        }
    }
    availableWidth = std::max<int64_t>(0, availableWidth);
    availableHeight = std::max<int64_t>(0, availableHeight);
    record.viewWidth = Saturate(std::min(zoomed.width, availableWidth));
    record.viewHeight = Saturate(std::min(zoomed.height, availableHeight));
    return placement;
}

void ZoomScrollStep(ImageWindow& record, const ZoomSubject& subject, bool keep, int32_t keepX,
                    int32_t keepY)
{
    const Size64 zoomed = ZoomedSize(subject, record.zoom);
    const int64_t viewWidth = std::max(0, record.viewWidth);
    const int64_t viewHeight = std::max(0, record.viewHeight);
    const int64_t rangeX = std::max<int64_t>(0, zoomed.width - viewWidth);
    const int64_t rangeY = std::max<int64_t>(0, zoomed.height - viewHeight);
    // The point is given bottom-up; the view runs from the top.
    const int64_t flippedY = static_cast<int64_t>(subject.height) - 1 - keepY;

    const int64_t left = AxisPosition(record.viewLeft, record.scrollRangeX, rangeX, keep,
                                      ZoomedCoordinate(keepX, record.zoom), viewWidth, record.zoom);
    const int64_t top =
        AxisPosition(record.viewTop, record.scrollRangeY, rangeY, keep,
                     ZoomedCoordinate(flippedY, record.zoom), viewHeight, record.zoom);
    record.scrollRangeX = Saturate(rangeX);
    record.scrollRangeY = Saturate(rangeY);
    record.viewLeft = Saturate(left);
    record.viewTop = Saturate(top);
    record.viewRight = Saturate(left + viewWidth - 1);
    record.viewBottom = Saturate(top + viewHeight - 1);
    DeriveSourceRect(record, subject);
}

void DeriveSourceRect(ImageWindow& record, const ZoomSubject& subject)
{
    const int64_t z = ZoomClamp(record.zoom);
    int64_t left, top, right, bottom;
    if (z >= 1) {
        left = record.viewLeft / z;
        top = record.viewTop / z;
        right = (static_cast<int64_t>(record.viewRight) + 1) / z - 1;
        bottom = (static_cast<int64_t>(record.viewBottom) + 1) / z - 1;
    } else {
        const int64_t m = -z;
        left = record.viewLeft * m;
        top = record.viewTop * m;
        right = (static_cast<int64_t>(record.viewRight) + 1) * m - 1;
        bottom = (static_cast<int64_t>(record.viewBottom) + 1) * m - 1;
    }
    right = std::min<int64_t>(right, static_cast<int64_t>(subject.width) - 1);
    bottom = std::min<int64_t>(bottom, static_cast<int64_t>(subject.height) - 1);
    record.sourceLeft = Saturate(left);
    record.sourceTop = Saturate(top);
    record.sourceRight = Saturate(right);
    record.sourceBottom = Saturate(bottom);
}

void ZoomCenterStep(ImageWindow& record, int32_t clientWidth, int32_t clientHeight,
                    const ZoomMetrics& metrics)
{
    int64_t originX, originY;
    Origin(record, clientWidth, clientHeight, metrics, originX, originY);
    record.originX = Saturate(originX);
    record.originY = Saturate(originY);
}

int32_t ZoomToClient(const ZoomSubject& subject, int32_t zoom, bool startAtOne,
                     const ZoomMetrics& metrics)
{
    zoom = ZoomClamp(zoom);
    if (!IsPictureKind(subject.kind) || subject.width <= 0 || subject.height <= 0) return zoom;
    if (startAtOne) {
        zoom = 1;
    } else {
        const int64_t gap = 2 * static_cast<int64_t>(metrics.borderWidth);
        while (zoom < kMaxZoom) {
            const Size64 size = ZoomedSize(subject, zoom);
            if (size.width + metrics.cxChildBorder + gap >= metrics.workspaceWidth ||
                size.height + metrics.cyChildBorder + gap >= metrics.workspaceHeight)
                break;
            zoom = ZoomStepUp(zoom);
        }
    }
    return ShrinkToFit(subject, zoom, metrics);
}

int32_t ZoomShrinkToClient(const ZoomSubject& subject, int32_t zoom, const ZoomMetrics& metrics)
{
    zoom = ZoomClamp(zoom);
    if (!IsPictureKind(subject.kind) || subject.width <= 0 || subject.height <= 0) return zoom;
    return ShrinkToFit(subject, zoom, metrics);
}

int32_t ZoomGrowToWindow(const ZoomSubject& subject, int32_t zoom, int32_t clientWidth,
                         int32_t clientHeight)
{
    zoom = ZoomClamp(zoom);
    if (!IsPictureKind(subject.kind) || subject.width <= 0 || subject.height <= 0) return zoom;
    auto smaller = [&](int32_t z) {
        const Size64 size = ZoomedSize(subject, z);
        return size.width < clientWidth && size.height < clientHeight;
    };
    auto fits = [&](int32_t z) {
        const Size64 size = ZoomedSize(subject, z);
        return size.width <= clientWidth && size.height <= clientHeight;
    };
    if (!smaller(zoom)) return zoom;
    while (zoom < kMaxZoom && smaller(zoom)) zoom = ZoomStepUp(zoom);
    while (zoom > kMinZoom && !fits(zoom)) zoom = ZoomStepDown(zoom);
    return zoom;
}

int32_t ZoomForNewWindow(int32_t width, int32_t height, const ZoomMetrics& metrics)
{
    if (width <= 0 || height <= 0) return 1;
    const ZoomSubject subject{kImageColor, width, height};
    for (int32_t m = 1; m < -kMinZoom; ++m) {
        const int32_t zoom = m >= 2 ? -m : 1;
        const Size64 size = ZoomedSize(subject, zoom);
        if (FitsWorkspace(size, metrics) || Smallest(size)) return zoom;
    }
    return kMinZoom;
}

int32_t ScrollTo(int32_t position, ScrollAction action, int32_t thumb, int32_t viewSize,
                 int32_t range, int32_t zoom)
{
    const int64_t view = std::max(0, viewSize);
    // A step never moves less than one zoomed pixel, or snapping to whole
    // pixels would undo it at high zooms (at 16:1 an eighth of a 100-pixel
    // view is 12, which snaps back to where it started).
    const int64_t unit = zoom > 1 ? zoom : 1;
    const int64_t line = std::max(view / 8, unit);
    const int64_t page = std::max(view * 7 / 8, unit);
    int64_t next = position;
    switch (action) {
    case ScrollAction::LineUp: next -= line; break;
    case ScrollAction::LineDown: next += line; break;
    case ScrollAction::PageUp: next -= page; break;
    case ScrollAction::PageDown: next += page; break;
    case ScrollAction::Thumb: next = thumb; break;
    case ScrollAction::Start: next = 0; break;
    case ScrollAction::End: next = range; break;
    }
    next = Clamp64(next, 0, std::max(0, range));
    if (zoom > 1) next -= next % zoom;
    return static_cast<int32_t>(next);
}

void ScrollView(ImageWindow& record, const ZoomSubject& subject, int32_t positionX,
                int32_t positionY)
{
    const int64_t left = Clamp64(positionX, 0, std::max(0, record.scrollRangeX));
    const int64_t top = Clamp64(positionY, 0, std::max(0, record.scrollRangeY));
    record.viewLeft = static_cast<int32_t>(left);
    record.viewTop = static_cast<int32_t>(top);
    record.viewRight = Saturate(left + std::max(0, record.viewWidth) - 1);
    record.viewBottom = Saturate(top + std::max(0, record.viewHeight) - 1);
    DeriveSourceRect(record, subject);
}

void ClientToImage(const ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                   int32_t clientHeight, const ZoomMetrics& metrics, int32_t cx, int32_t cy,
                   int32_t& x, int32_t& y, bool clamp)
{
    int64_t originX, originY;
    Origin(record, clientWidth, clientHeight, metrics, originX, originY);
    const int64_t z = ZoomClamp(record.zoom);
    const int64_t dx = cx - originX;
    const int64_t dy = cy - originY;
    int64_t ix, ty;
    if (z >= 1) {
        ix = record.sourceLeft + dx / z;
        ty = record.sourceTop + dy / z;
    } else {
        ix = record.sourceLeft - dx * z;
        ty = record.sourceTop - dy * z;
    }
    int64_t iy = static_cast<int64_t>(subject.height) - 1 - ty;
    if (clamp) {
        ix = std::max<int64_t>(0, std::min<int64_t>(ix, static_cast<int64_t>(subject.width) - 1));
        iy = std::max<int64_t>(0, std::min<int64_t>(iy, static_cast<int64_t>(subject.height) - 1));
    }
    x = Saturate(ix);
    y = Saturate(iy);
}

void ClientToImageReal(const ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                       int32_t clientHeight, const ZoomMetrics& metrics, int32_t cx, int32_t cy,
                       double& x, double& y, bool clamp)
{
    int64_t originX, originY;
    Origin(record, clientWidth, clientHeight, metrics, originX, originY);
    const double z = ZoomClamp(record.zoom);
    const double dx = static_cast<double>(cx - originX);
    const double dy = static_cast<double>(cy - originY);
    double rx, ty;
    if (z >= 1.0) {
        rx = record.sourceLeft + dx / z;
        ty = record.sourceTop + dy / z;
    } else {
        rx = record.sourceLeft - dx * z;
        ty = record.sourceTop - dy * z;
    }
    double ry = subject.height - 1.0 - ty;
    if (clamp) {
        rx = std::max(0.0, std::min(rx, subject.width - 1.0));
        ry = std::max(0.0, std::min(ry, subject.height - 1.0));
    }
    x = rx;
    y = ry;
}

void ImageToClient(const ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                   int32_t clientHeight, const ZoomMetrics& metrics, int32_t x, int32_t y,
                   int32_t& cx, int32_t& cy)
{
    int64_t originX, originY;
    Origin(record, clientWidth, clientHeight, metrics, originX, originY);
    int32_t dx = 0, dy = 0;
    ImageToDisplay(record, subject, x, y, dx, dy);
    cx = Saturate(originX + dx);
    cy = Saturate(originY + dy);
}

void ImageToDisplay(const ImageWindow& record, const ZoomSubject& subject, int32_t x, int32_t y,
                    int32_t& dx, int32_t& dy)
{
    if (record.zoom == 0) {
        // Cannot happen with a zoom that went through ZoomClamp; an internal
        // fault, and the coordinates pass through.
        ReportError(74);
        dx = x;
        dy = y;
        return;
    }
    const int64_t z = ZoomClamp(record.zoom);
    const int64_t ty = static_cast<int64_t>(subject.height) - 1 - y;
    const int64_t fromLeft = static_cast<int64_t>(x) - record.sourceLeft;
    const int64_t fromTop = ty - record.sourceTop;
    if (z >= 1) {
        dx = Saturate(fromLeft * z);
        dy = Saturate(fromTop * z);
    } else {
        dx = Saturate(fromLeft / -z);
        dy = Saturate(fromTop / -z);
    }
}

void NextWindowPosition(bool hasModel, int32_t modelX, int32_t modelY, const ZoomMetrics& metrics,
                        int32_t& x, int32_t& y)
{
    if (!hasModel) {
        x = metrics.margin;
        y = metrics.margin;
        return;
    }
    const int64_t nextX = static_cast<int64_t>(modelX) + metrics.controlHeight;
    const int64_t nextY = static_cast<int64_t>(modelY) + metrics.cyChildBorder;
    x = nextX >= metrics.workspaceWidth / 3 ? metrics.margin : Saturate(nextX);
    y = nextY >= metrics.workspaceHeight / 3 ? metrics.margin : Saturate(nextY);
}

std::vector<std::pair<int32_t, int32_t>> CascadePositions(int32_t count, const ZoomMetrics& metrics)
{
    std::vector<std::pair<int32_t, int32_t>> positions;
    if (count <= 0) return positions;
    try {
        positions.reserve(static_cast<size_t>(count));
    } catch (const std::bad_alloc&) {
        return positions;
    }
    int64_t x = metrics.margin;
    int64_t y = metrics.margin;
    for (int32_t i = 0; i < count; ++i) {
        positions.emplace_back(Saturate(x), Saturate(y));
        x = std::min<int64_t>(x + metrics.controlHeight, INT32_MAX);
        y = std::min<int64_t>(y + metrics.cyChildBorder, INT32_MAX);
        if (y >= metrics.workspaceHeight / 3) {
            y = metrics.margin;
            if (x >= metrics.workspaceWidth / 3) x = metrics.margin;
        }
    }
    return positions;
}

}  // namespace lv
