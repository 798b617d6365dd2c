// An image window: an MDI child that shows one picture from a record of the
// pool, zoomed, scrolled and centered by the engine's zoom arithmetic, and
// painted from its display copy.
#pragma once

#include <QAbstractScrollArea>
#include <QMdiSubWindow>
#include <functional>

#include "image/window.h"
#include "image/zoom.h"

class QMdiArea;

namespace lv {

class ImageSubWindow;

// The client area: paints the display copy and turns scroll bars, keys and
// the right button into the window's actions.
class ImageView : public QAbstractScrollArea {
public:
    explicit ImageView(ImageSubWindow* owner);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    // Called after a scroll bar's value changed.
    void scrollContentsBy(int dx, int dy) override;

private:
    ImageSubWindow* owner_;
};

class ImageSubWindow : public QMdiSubWindow {
public:
    // Makes a window with a new record (ImageWindowCreate): with no model and
    // no size, a 400 by 400 client; with a model and no size, the model's
    // outer size. Result 0 or 13 ("Too many images").
    static int32_t Create(QMdiArea* workspace, ImageSubWindow* model, int32_t width, int32_t height,
                          ImageSubWindow** created);
    ~ImageSubWindow() override;

    ImageWindow& record() const { return *record_; }
    ImageView* view() const { return view_; }
    WindowHandle handle() const { return static_cast<const QObject*>(this); }

    // What the front end measured for the zoom arithmetic.
    ZoomMetrics Metrics() const;
    // The stored position of the window, for placing the next one.
    QPoint storedPosition() const { return pos(); }

    void UpdateTitle();
    // The size, scroll and centering steps and a whole new display copy.
    // Result 0 or an error code (already reported by the caller).
    int32_t Rebuild(bool resize);
    // Zoom commands. `keep` names an image point to keep in view.
    void ZoomIn(bool resize, bool keep = false, int32_t x = 0, int32_t y = 0);
    void ZoomOut(bool resize);
    void ZoomActual(bool resize, bool keep = false, int32_t x = 0, int32_t y = 0);
    void ZoomSet(int32_t zoom, bool resize);
    // Ctrl and the wheel: one step in or out, the picture's point under the
    // client point (cx, cy) staying under it where the scrolling allows.
    void ZoomAbout(bool in, int32_t cx, int32_t cy);
    void Expand();
    void Fit();
    // The centering step and the scroll bars for the present view.
    void Recenter();
    // After any zoom command: title, repaint, users told.
    void ZoomDone();

    // Moves the view to new scroll positions (clamped, and snapped to whole
    // pixels above 1:1). Overlapping views shift the display copy and
    // recompute only the strip that came into view.
    void ScrollToPositions(int32_t x, int32_t y);

    // The close rules: a locking user refuses ("Window in use by %s - Cannot
    // close"), then the save question when the picture is modified. True
    // when the close goes on.
    bool MayClose();
    // Whether the picture may close without asking (the question only).
    bool SaveChanges();

    // Refreshes the display copy, all of it or the rectangle x0..x1, y0..y1
    // (display pixels, y from the top of the view).
    int32_t UpdateDisplay(bool whole, int32_t x0, int32_t y0, int32_t x1, int32_t y1);
    // A preview computes its display with its panel's worker instead of
    // copying a picture; the panel sets this.
    std::function<int32_t(bool whole, int32_t x0, int32_t y0, int32_t x1, int32_t y1)>
        displayFunction;
    // Called when the window is closed by hand (a preview tells its panel).
    std::function<void()> closedFunction;

    // What "Yes" to the save question runs; returns 0 when saved.
    static std::function<int32_t(ImageSubWindow*)> saveFunction;
    // Shows the right-button menu of a window at a screen point.
    static std::function<void(ImageSubWindow*, QPoint)> popupFunction;

protected:
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    ImageSubWindow(QMdiArea* workspace, int32_t slot, ImageWindow* record);
    void ApplyScrollBars();
    void ApplyZoom(int32_t zoom, bool resize, bool keep, int32_t x, int32_t y);
    ZoomSubject Subject() const { return ZoomSubjectOf(*record_); }
    QSize ClientSize() const;
    bool NormalState() const;

    QMdiArea* workspace_;
    int32_t slot_;
    ImageWindow* record_;
    ImageView* view_;
    bool rebuilding_ = false;
    bool closing_ = false;
};

// All image windows and previews of a workspace, first to last.
QList<ImageSubWindow*> ImageWindows(QMdiArea* workspace);

}  // namespace lv
