// Zoom, scrolling, window placement and coordinate arithmetic of image
// windows. Everything here is pure arithmetic on the record and on sizes the
// front end measures, so it is tested without a window system; the front end
// applies the results (moves and resizes windows, sets scroll bars, paints).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "image/window.h"

namespace lv {

// Zoom stays within these so that no zoomed size can overflow.
inline constexpr int32_t kMaxZoom = 64;    // 64 screen pixels a pixel
inline constexpr int32_t kMinZoom = -256;  // one screen pixel for 256 pixels

// What the front end measured: sizes in screen pixels.
struct ZoomMetrics {
    int32_t workspaceWidth = 0, workspaceHeight = 0;  // client size of the MDI area
    int32_t cxChildBorder = 0, cyChildBorder = 0;     // frame and caption of a child window
    int32_t cxVScroll = 0, cyHScroll = 0;             // scroll bar thickness
    int32_t borderWidth = 0;                          // the preference: gap round a picture
    int32_t margin = 0, controlHeight = 0;
};

// What a window shows: the image of an image window, or the output of a
// preview. Only kinds 1 to 3 are zoomed.
struct ZoomSubject {
    int32_t kind = 0, width = 0, height = 0;
};
ZoomSubject ZoomSubjectOf(const ImageWindow& record);

// One step up or down: 1:2 goes to 1:1 and 1:1 to 1:2 (0 and -1 never occur),
// within kMinZoom..kMaxZoom.
int32_t ZoomStepUp(int32_t zoom);
int32_t ZoomStepDown(int32_t zoom);
int32_t ZoomClamp(int32_t zoom);  // also turns 0 and -1 into 1
// A length at a zoom: L * n, or (L + m - 1) / m for zoom -m (rounded up).
int32_t ZoomedLength(int32_t length, int32_t zoom);

// " (n:1)" or " (1:n)" appended to `base` for pictures of kinds 1 to 3.
std::string ZoomTitle(const std::string& base, int32_t kind, int32_t zoom);
// The whole title of a window: "Preview", the file name, or "Untitled %d"
// with slot + 1, then the zoom.
std::string WindowTitle(const ImageWindow& record);

// Where the size step puts the window when it resizes it. Positions are in
// workspace coordinates of the window's outer frame.
struct WindowPlacement {
    bool resized = false;
    bool moved = false;  // centered in the workspace
    int32_t x = 0, y = 0, width = 0, height = 0;
};

// The size step. `clientWidth` and `clientHeight` are the window's client
// size now, `windowX`/`windowY` its outer position; `resize` is honoured only
// when `normalState` (neither minimised nor maximised). Sets viewWidth and
// viewHeight and says whether and where the window is resized.
WindowPlacement ZoomSizeStep(ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                             int32_t clientHeight, bool resize, bool normalState, int32_t windowX,
                             int32_t windowY, const ZoomMetrics& metrics);

// The scroll step: ranges, positions (keeping the old fraction, or centering
// on the image point (keepX, keepY) when keep is set, y bottom-up), snapping
// to whole pixels above 1:1, and the source rectangle.
void ZoomScrollStep(ImageWindow& record, const ZoomSubject& subject, bool keep, int32_t keepX,
                    int32_t keepY);
// The source rectangle from the view, limited to the picture.
void DeriveSourceRect(ImageWindow& record, const ZoomSubject& subject);
// The centering step: originX and originY for a client of that size (less a
// scroll bar whose range is above 0).
void ZoomCenterStep(ImageWindow& record, int32_t clientWidth, int32_t clientHeight,
                    const ZoomMetrics& metrics);

// The zoom at which the subject fits the workspace. With `startAtOne` it
// starts at 1:1; otherwise it first goes up while it still fits with room
// (Expand). Then it goes down until it fits.
int32_t ZoomToClient(const ZoomSubject& subject, int32_t zoom, bool startAtOne,
                     const ZoomMetrics& metrics);
// Fit: only goes down until the subject fits.
int32_t ZoomShrinkToClient(const ZoomSubject& subject, int32_t zoom, const ZoomMetrics& metrics);
// For a window made larger: up while the picture is smaller than the client
// in both axes, then down until it fits the client.
int32_t ZoomGrowToWindow(const ZoomSubject& subject, int32_t zoom, int32_t clientWidth,
                         int32_t clientHeight);
// The zoom a newly opened picture gets: the least reduction 1, 1:2, 1:3 ...
// at which it fits the workspace with its borders.
int32_t ZoomForNewWindow(int32_t width, int32_t height, const ZoomMetrics& metrics);

// Scroll bar actions.
enum class ScrollAction { LineUp, LineDown, PageUp, PageDown, Thumb, Start, End };
// The new position of one axis: a line is view / 8, a page view * 7 / 8; the
// result is clamped to 0..range and snapped down to a multiple of the zoom
// above 1:1.
int32_t ScrollTo(int32_t position, ScrollAction action, int32_t thumb, int32_t viewSize,
                 int32_t range, int32_t zoom);
// Moves the view to new scroll positions and derives the source rectangle.
void ScrollView(ImageWindow& record, const ZoomSubject& subject, int32_t positionX,
                int32_t positionY);

// Client point to image pixel (y bottom-up) and back, with the origin
// recomputed for a client of the given size.
void ClientToImage(const ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                   int32_t clientHeight, const ZoomMetrics& metrics, int32_t cx, int32_t cy,
                   int32_t& x, int32_t& y, bool clamp);
void ClientToImageReal(const ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                       int32_t clientHeight, const ZoomMetrics& metrics, int32_t cx, int32_t cy,
                       double& x, double& y, bool clamp);
void ImageToClient(const ImageWindow& record, const ZoomSubject& subject, int32_t clientWidth,
                   int32_t clientHeight, const ZoomMetrics& metrics, int32_t x, int32_t y,
                   int32_t& cx, int32_t& cy);
// Image pixel to a point of the display copy in screen orientation (x from
// the left, y from the top of the view): the client point less the origin.
void ImageToDisplay(const ImageWindow& record, const ZoomSubject& subject, int32_t x, int32_t y,
                    int32_t& dx, int32_t& dy);

// Placement of new windows: after the model's stored position by
// controlHeight across and cyChildBorder down, wrapping to the margin at a
// third of the workspace; at the margin with no model.
void NextWindowPosition(bool hasModel, int32_t modelX, int32_t modelY, const ZoomMetrics& metrics,
                        int32_t& x, int32_t& y);
// Cascade: the positions of `count` windows, for the windows taken from the
// last to the first; sizes are not changed.
std::vector<std::pair<int32_t, int32_t>> CascadePositions(int32_t count,
                                                          const ZoomMetrics& metrics);

}  // namespace lv
