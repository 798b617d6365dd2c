#include "shell/ui/progress_box.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMdiArea>
#include <QPainter>
#include <QPushButton>
#include <algorithm>
#include <cstdlib>

#include "shell/ui/metrics.h"

namespace lv {

namespace {

constexpr int32_t kClientWidth = 300;
const QColor kBoxGray(128, 128, 128);

// Rectangles kept as the box computes them: right and bottom exclusive.
struct Span {
    int32_t left = 0, top = 0, right = 0, bottom = 0;
    QRect rect() const { return QRect(left, top, right - left, bottom - top); }
};

bool IsMouse(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::NonClientAreaMouseButtonPress:
    case QEvent::NonClientAreaMouseButtonRelease:
    case QEvent::NonClientAreaMouseButtonDblClick:
    case QEvent::NonClientAreaMouseMove: return true;
    default: return false;
    }
}

// The events that mean the user acting on a widget, and timers.
bool IsHeldOff(QEvent::Type type)
{
    if (IsMouse(type)) return true;
    switch (type) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::Close:
    case QEvent::Timer:
    case QEvent::InputMethod:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::ToolTip:
    case QEvent::WhatsThis: return true;
    default: return false;
    }
}

}  // namespace

// The client area: the Cancel button, the bar and the time line on gray.
class ProgressPanel : public QWidget {
public:
    ProgressPanel(const ProgressBox& box, bool withButton, QWidget* parent)
        : QWidget(parent), record_(box)
    {
        const UiMetrics& m = Metrics();
        setFixedSize(kClientWidth, m.controlHeight + m.textHeight + 3 * m.margin);
        QPalette gray = palette();
        gray.setColor(QPalette::Window, kBoxGray);
        gray.setColor(QPalette::WindowText, Qt::black);
        gray.setColor(QPalette::ButtonText, Qt::black);
        setPalette(gray);
        setAutoFillBackground(true);

        int32_t barLeft = m.margin;
        if (withButton) {
            const int32_t buttonWidth =
                QFontMetrics(m.fontSystem).horizontalAdvance(QStringLiteral("Cancel")) +
                2 * m.margin;
            barLeft = m.margin + buttonWidth + m.margin;
        }
        frame_ = {barLeft, m.margin, kClientWidth - m.margin, m.margin + m.controlHeight};
        bar_ = {frame_.left + 2, frame_.top + 2, frame_.right - 2, frame_.bottom - 2};
        const int32_t timeTop = frame_.bottom + m.margin;
        time_ = {m.margin, timeTop, kClientWidth - m.margin, timeTop + m.textHeight};
    }

    Span frame_, bar_, time_;
    ProgressBox record_;
    QString timeText_;

    int32_t FillPixel(int32_t value) const
    {
        return ProgressBarPixel(record_, value, bar_.left, bar_.right);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), kBoxGray);
        painter.fillRect(frame_.rect(), Qt::white);
        painter.setPen(Qt::black);
        painter.drawRect(bar_.left, bar_.top, bar_.right - bar_.left - 1,
                         bar_.bottom - bar_.top - 1);
        // Tenths.
        const int32_t width = bar_.right - bar_.left;
        for (int32_t i = 1; i <= 9; ++i) {
            const int32_t x = bar_.left + i * width / 10;
            painter.drawLine(x, bar_.top, x, bar_.bottom - 1);
        }
        // The part done.
        const int32_t a = FillPixel(record_.first);
        const int32_t b = FillPixel(record_.current);
        if (a < b) painter.fillRect(QRect(a, bar_.top, b - a, bar_.bottom - bar_.top), Qt::black);
        if (!timeText_.isEmpty()) {
            painter.setFont(Metrics().fontSystem);
            painter.drawText(time_.rect(), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                             timeText_);
        }
    }
};

// Installed on the application for the life of a box.
class ProgressInputFilter : public QObject {
public:
    explicit ProgressInputFilter(ProgressWindow* box) : QObject(box), box_(box) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        if (type == QEvent::Shortcut || type == QEvent::ShortcutOverride) {
            // Menu and tool shortcuts go to actions, which are no widgets:
            // none of them belongs to the box.
            return !InBox(watched);
        }
        if (!IsHeldOff(type) || !watched->isWidgetType()) return false;
        if (watched == box_) {
            // The frame and title bar of the box itself: no moving, no
            // resizing, no maximising by mouse.
            return IsMouse(type);
        }
        if (InBox(watched)) return false;
        // A close swallowed here must also be refused, or the sender takes
        // the untouched event as consent.
        if (type == QEvent::Close) event->ignore();
        return true;
    }

private:
    bool InBox(QObject* object) const
    {
        if (!object->isWidgetType()) return false;
        const auto* widget = static_cast<QWidget*>(object);
        return widget == box_ || box_->isAncestorOf(widget);
    }

    ProgressWindow* box_;
};

ProgressWindow::ProgressWindow(QMdiArea* workspace, const ProgressBox& box)
{
    const UiMetrics& m = Metrics();
    // A caption and nothing else: no system menu, no buttons.
    setWindowFlags(Qt::SubWindow | Qt::CustomizeWindowHint | Qt::WindowTitleHint);
    setSystemMenu(nullptr);
    setWindowTitle(QString::fromUtf8(box.title.data(), static_cast<qsizetype>(box.title.size())));

    panel_ = new ProgressPanel(box, box.cancellable, this);
    if (box.cancellable) {
        cancel_ = new QPushButton(QStringLiteral("Cancel"), panel_);
        cancel_->setFont(m.fontSystem);
        cancel_->setAutoDefault(true);  // Enter clicks it as Space does
        cancel_->setGeometry(m.margin, m.margin, panel_->frame_.left - 2 * m.margin,
                             m.controlHeight);
        QObject::connect(cancel_, &QPushButton::clicked, this, [this] { cancelled_ = true; });
    }
    setWidget(panel_);
    // A maximised image window stays maximised under the box, and the box
    // keeps its own size: the workspace must not maximise it on activation.
    workspace_ = workspace;
    restoreMaximizeRule_ = !workspace->testOption(QMdiArea::DontMaximizeSubWindowOnActivation);
    workspace->setOption(QMdiArea::DontMaximizeSubWindowOnActivation, true);
    workspace->addSubWindow(this, windowFlags());
    resize(sizeHint());
    setFixedSize(size());

    const int32_t x = (workspace->viewport()->width() - width()) / 2;
    const int32_t y = (m.captionHeight + m.controlHeight + 2 * m.margin) / 2 + 8;
    move(x, y);

    filter_ = new ProgressInputFilter(this);
    qApp->installEventFilter(filter_);

    show();
    FocusCancel();
    PaintNow();
}

ProgressWindow::~ProgressWindow()
{
    qApp->removeEventFilter(filter_);
    if (workspace_ && restoreMaximizeRule_)
        workspace_->setOption(QMdiArea::DontMaximizeSubWindowOnActivation, false);
}

void ProgressWindow::PaintNow() { repaint(); }

void ProgressWindow::SetFilled(int32_t value)
{
    const int32_t before = panel_->FillPixel(panel_->record_.current);
    const int32_t after = panel_->FillPixel(value);
    panel_->record_.current = value;
    if (before == after) return;
    const Span& bar = panel_->bar_;
    panel_->repaint(
        QRect(std::min(before, after), bar.top, std::abs(after - before), bar.bottom - bar.top));
}

void ProgressWindow::SetTimeText(const QString& text)
{
    panel_->timeText_ = text;
    panel_->repaint(panel_->time_.rect());
}

void ProgressWindow::FocusCancel()
{
    if (cancel_ && !cancel_->hasFocus()) cancel_->setFocus(Qt::OtherFocusReason);
}

bool ProgressWindow::TakeCancel()
{
    const bool clicked = cancelled_;
    cancelled_ = false;
    return clicked;
}

QRect ProgressWindow::frameRect() const { return panel_->frame_.rect(); }
QRect ProgressWindow::barRect() const { return panel_->bar_.rect(); }
QRect ProgressWindow::timeRect() const { return panel_->time_.rect(); }

void ProgressWindow::closeEvent(QCloseEvent* event)
{
    if (MayClose())
        QMdiSubWindow::closeEvent(event);
    else
        event->ignore();
}

}  // namespace lv
