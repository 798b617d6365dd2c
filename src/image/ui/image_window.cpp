#include "image/ui/image_window.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QMdiArea>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>

#include "image/display.h"
#include "image/ui/display_painter.h"
#include "image/ui/tools.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/preferences.h"
#include "shell/text.h"
#include "shell/ui/events.h"
#include "shell/ui/metrics.h"
#include "shell/ui/workspace.h"

namespace lv {

std::function<int32_t(ImageSubWindow*)> ImageSubWindow::saveFunction;
std::function<void(ImageSubWindow*, QPoint)> ImageSubWindow::popupFunction;

// ---- ImageView --------------------------------------------------------------

ImageView::ImageView(ImageSubWindow* owner) : QAbstractScrollArea(owner), owner_(owner)
{
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A thumb is acted on where it is dropped, not while it is dragged.
    horizontalScrollBar()->setTracking(false);
    verticalScrollBar()->setTracking(false);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

void ImageView::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    const QSize size = viewport()->size();
    PaintWindow(painter, owner_->record(), size.width(), size.height(), event->rect());
}

void ImageView::scrollContentsBy(int, int)
{
    owner_->ScrollToPositions(horizontalScrollBar()->value(), verticalScrollBar()->value());
}

void ImageView::keyPressEvent(QKeyEvent* event)
{
    ImageWindow& r = owner_->record();
    const bool control = event->modifiers() & Qt::ControlModifier;
    int32_t x = r.viewLeft, y = r.viewTop;
    auto moveX = [&](ScrollAction a) {
        x = ScrollTo(x, a, 0, r.viewWidth, r.scrollRangeX, r.zoom);
    };
    auto moveY = [&](ScrollAction a) {
        y = ScrollTo(y, a, 0, r.viewHeight, r.scrollRangeY, r.zoom);
    };
    switch (event->key()) {
    case Qt::Key_PageUp: moveY(ScrollAction::PageUp); break;
    case Qt::Key_PageDown: moveY(ScrollAction::PageDown); break;
    case Qt::Key_Left: moveX(ScrollAction::LineUp); break;
    case Qt::Key_Right: moveX(ScrollAction::LineDown); break;
    case Qt::Key_Up: moveY(ScrollAction::LineUp); break;
    case Qt::Key_Down: moveY(ScrollAction::LineDown); break;
    case Qt::Key_Home:
        if (control) {
            x = 0;
            y = 0;
        } else {
            moveX(ScrollAction::PageUp);
        }
        break;
    case Qt::Key_End:
        if (control) {
            x = r.scrollRangeX;
            y = r.scrollRangeY;
        } else {
            moveX(ScrollAction::PageDown);
        }
        break;
    default: QAbstractScrollArea::keyPressEvent(event); return;
    }
    owner_->ScrollToPositions(x, y);
}

void ImageView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::RightButton) {
        // The popup is the frame's: it turns its choices into frame commands.
        if (owner_->mdiArea()) owner_->mdiArea()->setActiveSubWindow(owner_);
        if (ImageSubWindow::popupFunction)
            ImageSubWindow::popupFunction(owner_, event->globalPosition().toPoint());
        return;
    }
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton &&
        ToolMouse(*owner_, at.x(), at.y(),
                  event->modifiers() & Qt::ShiftModifier ? kToolShiftDown : kToolDown))
        return;
    QAbstractScrollArea::mousePressEvent(event);
}

void ImageView::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (ToolMouse(*owner_, at.x(), at.y(),
                  event->modifiers() & Qt::ShiftModifier ? kToolShiftMove : kToolMove))
        return;
    QAbstractScrollArea::mouseMoveEvent(event);
}

void ImageView::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton && ToolMouse(*owner_, at.x(), at.y(), kToolUp)) return;
    QAbstractScrollArea::mouseReleaseEvent(event);
}

void ImageView::wheelEvent(QWheelEvent* event)
{
    if (!(event->modifiers() & Qt::ControlModifier) || event->angleDelta().y() == 0) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    const QPoint at = event->position().toPoint();
    owner_->ZoomAbout(event->angleDelta().y() > 0, at.x(), at.y());
    event->accept();
}

// ---- ImageSubWindow ---------------------------------------------------------

QList<ImageSubWindow*> ImageWindows(QMdiArea* workspace)
{
    QList<ImageSubWindow*> windows;
    for (QMdiSubWindow* sub : workspace->subWindowList(QMdiArea::CreationOrder))
        if (auto* image = dynamic_cast<ImageSubWindow*>(sub)) windows.push_back(image);
    return windows;
}

ImageSubWindow::ImageSubWindow(QMdiArea* workspace, int32_t slot, ImageWindow* record)
    : workspace_(workspace), slot_(slot), record_(record), view_(new ImageView(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    setWidget(view_);
    ClearSystemMenuKeys(this);
    record_->hWindow = handle();
    record_->windowKind = kWindowImage;
}

int32_t ImageSubWindow::Create(QMdiArea* workspace, ImageSubWindow* model, int32_t width,
                               int32_t height, ImageSubWindow** created)
{
    *created = nullptr;
    int32_t slot = -1;
    ImageWindow* record = nullptr;
    if (int32_t code = SlotAllocate(slot, record)) return code;
    auto* window = new ImageSubWindow(workspace, slot, record);
    workspace->addSubWindow(window);
    window->setWindowTitle(QStringLiteral("Untitled"));

    const ZoomMetrics m = window->Metrics();
    QSize outer;
    if (model && width < 0)
        outer = model->size();
    else
        outer = QSize((width < 0 ? 400 : width) + m.cxChildBorder,
                      (height < 0 ? 400 : height) + m.cyChildBorder);
    int32_t x = 0, y = 0;
    NextWindowPosition(model != nullptr, model ? model->storedPosition().x() : 0,
                       model ? model->storedPosition().y() : 0, m, x, y);
    window->setGeometry(x, y, outer.width(), outer.height());
    window->show();
    // A window that overhangs the workspace is moved back into view.
    const QRect area = workspace->viewport()->rect();
    QPoint pos = window->pos();
    if (window->geometry().right() > area.right())
        pos.setX(std::max(0, area.right() - window->width() - m.margin));
    if (window->geometry().bottom() > area.bottom())
        pos.setY(std::max(0, area.bottom() - window->height() - m.margin));
    window->move(pos);
    *created = window;
    return kOk;
}

ImageSubWindow::~ImageSubWindow()
{
    // A tool that holds on to this window lets go of it.
    ToolMouse(*this, 0, 0, kToolWindowGone);
    UndoPurge(record_);
    UserRemoveWindow(handle());
    SlotRelease(slot_);
}

ZoomMetrics ImageSubWindow::Metrics() const
{
    const UiMetrics& ui = lv::Metrics();
    ZoomMetrics m;
    const QSize area = workspace_->viewport()->size();
    m.workspaceWidth = area.width();
    m.workspaceHeight = area.height();
    m.cxChildBorder = ui.cxChildBorder;
    m.cyChildBorder = ui.cyChildBorder;
    m.cxVScroll = view_->verticalScrollBar()->sizeHint().width();
    m.cyHScroll = view_->horizontalScrollBar()->sizeHint().height();
    m.borderWidth = CurrentPreferences().borderWidth;
    m.margin = ui.margin;
    m.controlHeight = ui.controlHeight;
    return m;
}

QSize ImageSubWindow::ClientSize() const { return view_->size(); }

bool ImageSubWindow::NormalState() const { return !isMinimized() && !isMaximized(); }

void ImageSubWindow::UpdateTitle()
{
    setWindowTitle(QString::fromStdString(WindowTitle(*record_)));
}

void ImageSubWindow::ApplyScrollBars()
{
    ImageWindow& r = *record_;
    QScrollBar* h = view_->horizontalScrollBar();
    QScrollBar* v = view_->verticalScrollBar();
    const QSignalBlocker blockH(h), blockV(v);
    rebuilding_ = true;
    view_->setHorizontalScrollBarPolicy(r.scrollRangeX > 0 ? Qt::ScrollBarAlwaysOn
                                                           : Qt::ScrollBarAlwaysOff);
    view_->setVerticalScrollBarPolicy(r.scrollRangeY > 0 ? Qt::ScrollBarAlwaysOn
                                                         : Qt::ScrollBarAlwaysOff);
    h->setRange(0, r.scrollRangeX);
    v->setRange(0, r.scrollRangeY);
    h->setSingleStep(std::max(1, r.viewWidth / 8));
    v->setSingleStep(std::max(1, r.viewHeight / 8));
    h->setPageStep(std::max(1, r.viewWidth * 7 / 8));
    v->setPageStep(std::max(1, r.viewHeight * 7 / 8));
    h->setValue(r.viewLeft);
    v->setValue(r.viewTop);
    rebuilding_ = false;
}

int32_t ImageSubWindow::Rebuild(bool resize)
{
    ImageWindow& r = *record_;
    const ZoomSubject subject = Subject();
    if (subject.kind < kImageBinary || subject.kind > kImageColor) {
        view_->viewport()->update();
        return kOk;
    }
    rebuilding_ = true;
    const ZoomMetrics m = Metrics();
    const QSize client = ClientSize();
    const WindowPlacement place = ZoomSizeStep(r, subject, client.width(), client.height(), resize,
                                               NormalState(), x(), y(), m);
    if (place.resized) setGeometry(place.x, place.y, place.width, place.height);
    ZoomScrollStep(r, subject, false, 0, 0);
    const QSize now = ClientSize();
    ZoomCenterStep(r, now.width(), now.height(), m);
    rebuilding_ = false;
    ApplyScrollBars();
    const int32_t result = isMinimized() ? kOk : UpdateDisplay(true, 0, 0, 0, 0);
    view_->viewport()->update();
    return result;
}

void ImageSubWindow::Recenter()
{
    const QSize client = ClientSize();
    ZoomCenterStep(*record_, client.width(), client.height(), Metrics());
    ApplyScrollBars();
    view_->viewport()->update();
}

void ImageSubWindow::ZoomDone()
{
    UpdateTitle();
    view_->viewport()->update();
    UsersNotifyView(handle());
}

void ImageSubWindow::ApplyZoom(int32_t zoom, bool resize, bool keep, int32_t x, int32_t y)
{
    ImageWindow& r = *record_;
    r.zoom = zoom;
    ImageFree(r.display);
    if (!keep) {
        ReportError(Rebuild(resize));
        return;
    }
    // As a rebuild, but the scroll step centers on the image point.
    rebuilding_ = true;
    const ZoomMetrics m = Metrics();
    const QSize client = ClientSize();
    const WindowPlacement place = ZoomSizeStep(r, Subject(), client.width(), client.height(),
                                               resize, NormalState(), this->x(), this->y(), m);
    if (place.resized) setGeometry(place.x, place.y, place.width, place.height);
    ZoomScrollStep(r, Subject(), true, x, y);
    ZoomCenterStep(r, ClientSize().width(), ClientSize().height(), m);
    rebuilding_ = false;
    ApplyScrollBars();
    ReportError(UpdateDisplay(true, 0, 0, 0, 0));
    view_->viewport()->update();
}

void ImageSubWindow::ZoomIn(bool resize, bool keep, int32_t x, int32_t y)
{
    const int32_t zoom = ZoomStepUp(record_->zoom);
    if (zoom == record_->zoom) return;
    ApplyZoom(zoom, resize, keep, x, y);
    ZoomDone();
}

void ImageSubWindow::ZoomOut(bool resize)
{
    const int32_t zoom = ZoomStepDown(record_->zoom);
    if (zoom == record_->zoom) return;
    ApplyZoom(zoom, resize, false, 0, 0);
    ZoomDone();
}

void ImageSubWindow::ZoomAbout(bool in, int32_t cx, int32_t cy)
{
    const int32_t zoom = in ? ZoomStepUp(record_->zoom) : ZoomStepDown(record_->zoom);
    if (zoom == record_->zoom) return;
    ImageWindow& r = *record_;
    const ZoomMetrics m = Metrics();
    QSize client = ClientSize();
    int32_t x = 0, y = 0;
    ClientToImage(r, Subject(), client.width(), client.height(), m, cx, cy, x, y, true);
    // Centred on the point first, then scrolled back under the pointer.
    ApplyZoom(zoom, false, true, x, y);
    client = ClientSize();
    int32_t nowX = 0, nowY = 0;
    ImageToClient(r, Subject(), client.width(), client.height(), m, x, y, nowX, nowY);
    ScrollToPositions(r.viewLeft + nowX - cx, r.viewTop + nowY - cy);
    ZoomDone();
}

void ImageSubWindow::ZoomActual(bool resize, bool keep, int32_t x, int32_t y)
{
    if (record_->zoom == 1) return;
    ApplyZoom(1, resize, keep, x, y);
    ZoomDone();
}

void ImageSubWindow::ZoomSet(int32_t zoom, bool resize)
{
    ApplyZoom(ZoomClamp(zoom), resize, false, 0, 0);
}

void ImageSubWindow::Expand()
{
    ImageWindow& r = *record_;
    const int32_t zoom = ZoomToClient(Subject(), r.zoom, false, Metrics());
    if (zoom != r.zoom) {
        r.zoom = zoom;
        ImageFree(r.display);
    }
    ReportError(Rebuild(true));
    ZoomDone();
}

void ImageSubWindow::Fit()
{
    ImageWindow& r = *record_;
    const int32_t zoom = ZoomShrinkToClient(Subject(), r.zoom, Metrics());
    if (zoom != r.zoom) {
        r.zoom = zoom;
        ImageFree(r.display);
    }
    ReportError(Rebuild(true));
    ZoomDone();
}

void ImageSubWindow::ScrollToPositions(int32_t x, int32_t y)
{
    if (rebuilding_) return;
    ImageWindow& r = *record_;
    x = ScrollTo(x, ScrollAction::Thumb, x, r.viewWidth, r.scrollRangeX, r.zoom);
    y = ScrollTo(y, ScrollAction::Thumb, y, r.viewHeight, r.scrollRangeY, r.zoom);
    const int32_t dx = x - r.viewLeft, dy = y - r.viewTop;
    if (dx == 0 && dy == 0) {
        ApplyScrollBars();  // a snapped value goes back where it was
        return;
    }
    ScrollView(r, Subject(), x, y);
    Image& d = r.display;
    const bool overlap = d.rows && std::abs(dx) < r.viewWidth && std::abs(dy) < r.viewHeight &&
                         d.width == r.viewWidth && d.height == r.viewHeight;
    int32_t result = kOk;
    if (!overlap) {
        result = UpdateDisplay(true, 0, 0, 0, 0);
    } else {
        // Move what is already on show and compute only what came into view.
        // Display rows are bottom-up: scrolling down (dy > 0) moves content up
        // the screen, which is toward higher row numbers.
        if (dx > 0) ImageShiftLeft(d, dx);
        if (dx < 0) ImageShiftRight(d, -dx);
        if (dy > 0) ImageShiftUp(d, dy);
        if (dy < 0) ImageShiftDown(d, -dy);
        const int32_t w = r.viewWidth, h = r.viewHeight;
        if (dx > 0) result = UpdateDisplay(false, w - dx, 0, w - 1, h - 1);
        if (dx < 0 && !result) result = UpdateDisplay(false, 0, 0, -dx - 1, h - 1);
        if (dy > 0 && !result) result = UpdateDisplay(false, 0, h - dy, w - 1, h - 1);
        if (dy < 0 && !result) result = UpdateDisplay(false, 0, 0, w - 1, -dy - 1);
    }
    ReportError(result);
    ApplyScrollBars();
    view_->viewport()->update();
    UsersNotifyView(handle());
}

int32_t ImageSubWindow::UpdateDisplay(bool whole, int32_t x0, int32_t y0, int32_t x1, int32_t y1)
{
    ImageWindow& r = *record_;
    if (displayFunction) return displayFunction(whole, x0, y0, x1, y1);
    if (whole) return DisplayUpdateAll(r, nullptr);
    return DisplayUpdate(r.image, r, nullptr, x0, y0, x1, y1, true);
}

bool ImageSubWindow::SaveChanges()
{
    ImageWindow& r = *record_;
    if (UserFindLock(handle())) return false;
    if (!CurrentPreferences().confirmClose || !r.modified) return true;
    if (isMinimized()) showNormal();
    const std::string title = windowTitle().toStdString();
    switch (
        MessageBoxShow("Warning", kBoxYesNoCancel, FormatText("Save Modified Image: %s?", title))) {
    case kAnswerCancel: return false;
    case kAnswerYes: {
        const int32_t code = saveFunction ? saveFunction(this) : kErrUnknownFileType;
        ReportError(code == kErrAborted ? kOk : code);
        return code == kOk;
    }
    default: return true;
    }
}

bool ImageSubWindow::MayClose()
{
    if (const char* user = UserFindLock(handle())) {
        MessageBoxShow("Error", kBoxOk, FormatText("Window in use by %s - Cannot close", user));
        return false;
    }
    return SaveChanges();
}

void ImageSubWindow::closeEvent(QCloseEvent* event)
{
    // A window being torn down by Close All has already been asked.
    if (closing_ || MayClose()) {
        closing_ = true;
        if (closedFunction) closedFunction();
        QMdiSubWindow::closeEvent(event);
    } else {
        event->ignore();
    }
}

void ImageSubWindow::resizeEvent(QResizeEvent* event)
{
    QMdiSubWindow::resizeEvent(event);
    if (rebuilding_ || isMinimized() || event->size() == event->oldSize()) return;
    ImageWindow& r = *record_;
    const ZoomSubject subject = Subject();
    if (subject.kind < kImageBinary || subject.kind > kImageColor) return;
    // A window made larger may show the picture bigger; a preview keeps its
    // zoom and only recomputes what it shows.
    const QSize client = ClientSize();
    const int32_t zoom = r.windowKind == kWindowPreview
                             ? r.zoom
                             : ZoomGrowToWindow(subject, r.zoom, client.width(), client.height());
    if (zoom != r.zoom) {
        r.zoom = zoom;
        ImageFree(r.display);
    }
    ReportError(Rebuild(false));
    UpdateTitle();
    UsersNotifyView(handle());
}

void ImageSubWindow::changeEvent(QEvent* event)
{
    QMdiSubWindow::changeEvent(event);
    // A minimised window gives its display copy back.
    if (event->type() == QEvent::WindowStateChange && isMinimized()) ImageFree(record_->display);
}

bool ImageSubWindow::event(QEvent* event)
{
    if (event->type() == ImageRegionEvent::EventType()) {
        auto* e = static_cast<ImageRegionEvent*>(event);
        (void)e;
        // Simplest correct refresh: the whole view. Undo patches are small
        // and rare, and the display copy is only the visible part.
        ReportError(DisplayUpdateAll(*record_, nullptr));
        view_->viewport()->update();
        return true;
    }
    return QMdiSubWindow::event(event);
}

}  // namespace lv
