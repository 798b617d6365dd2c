#include "transform/controls/ui/popup_list.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPolygon>
#include <QScreen>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>
#include <algorithm>

#include "shell/ui/metrics.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/pedit.h"

namespace lv {

namespace {

const QColor kFaceGray(0xC0, 0xC0, 0xC0);
const QColor kPanelGray(0x80, 0x80, 0x80);
const QColor kDisabledText(0x80, 0x80, 0x80);
const QColor kHighlight(0x00, 0x00, 0x80);

// A 1-pixel raised or sunken edge around a rectangle.
void DrawEdge(QPainter& painter, const QRect& r, bool raised)
{
    painter.setPen(raised ? Qt::white : QColor(0x40, 0x40, 0x40));
    painter.drawLine(r.topLeft(), r.topRight());
    painter.drawLine(r.topLeft(), r.bottomLeft());
    painter.setPen(raised ? QColor(0x40, 0x40, 0x40) : Qt::white);
    painter.drawLine(r.bottomLeft(), r.bottomRight());
    painter.drawLine(r.topRight(), r.bottomRight());
}

}  // namespace

// ---- Drop-down ----------------------------------------------------------------

PopupDrop::PopupDrop(PopupListControl* list, int32_t width)
    : QWidget(list, Qt::Popup | Qt::FramelessWindowHint),
      list_(list),
      autoScroll_(new QTimer(this)),
      highlight_(list->current())
{
    setAttribute(Qt::WA_DeleteOnClose);
    // A press on the list's own box closes the drop-down and nothing more.
    setAttribute(Qt::WA_NoMouseReplay);
    setMouseTracking(true);
    setFont(Metrics().fontSystem);
    const int32_t lines = VisibleLines();
    resize(width, lines * LineHeight() + 2);
    if (list->hasScroll()) {
        scroll_ = new QScrollBar(Qt::Vertical, this);
        const int32_t bar = Metrics().cxVScroll;
        scroll_->setGeometry(width - 1 - bar, 1, bar, height() - 2);
        scroll_->setRange(0, list->count() - kPopupVisibleLines);
        scroll_->setPageStep(kPopupVisibleLines);
        scroll_->setSingleStep(1);
        scroll_->setFocusPolicy(Qt::NoFocus);
        QObject::connect(scroll_, &QScrollBar::valueChanged, this, [this](int value) {
            top_ = value;
            update();
        });
    }
    autoScroll_->setInterval(60);
    QObject::connect(autoScroll_, &QTimer::timeout, this, [this] { ScrollTo(top_ + scrollStep_); });
    // The current entry in view, as near the top as the list allows.
    ScrollTo(highlight_);
}

int32_t PopupDrop::LineHeight() const { return Metrics().textHeight; }

int32_t PopupDrop::VisibleLines() const
{
    return std::clamp(list_->count(), 1, kPopupVisibleLines);
}

QRect PopupDrop::EntryRect(int32_t index) const
{
    const int32_t line = index - top_;
    if (index < 0 || index >= list_->count() || line < 0 || line >= VisibleLines()) return {};
    const int32_t right = scroll_ ? scroll_->x() : width() - 1;
    return QRect(1, 1 + line * LineHeight(), right - 1, LineHeight());
}

int32_t PopupDrop::EntryAt(QPoint at) const
{
    const int32_t right = scroll_ ? scroll_->x() : width() - 1;
    if (at.x() < 1 || at.x() >= right || at.y() < 1) return -1;
    const int32_t line = (at.y() - 1) / LineHeight();
    if (line >= VisibleLines()) return -1;
    const int32_t index = top_ + line;
    return index < list_->count() ? index : -1;
}

void PopupDrop::ScrollTo(int32_t top)
{
    const int32_t most = std::max(list_->count() - VisibleLines(), 0);
    top_ = std::clamp(top, 0, most);
    if (scroll_) scroll_->setValue(top_);
    update();
}

void PopupDrop::SetHighlight(int32_t index)
{
    if (index < 0 || index >= list_->count() || list_->IsDisabled(index)) return;
    highlight_ = index;
    if (index < top_)
        ScrollTo(index);
    else if (index >= top_ + VisibleLines())
        ScrollTo(index - VisibleLines() + 1);
    update();
}

void PopupDrop::Choose(int32_t index)
{
    if (index < 0 || index >= list_->count() || list_->IsDisabled(index)) return;
    PopupListControl* list = list_;
    close();
    SendControlMessage(list, kMsgDropChoice, list->controlId(), index);
}

void PopupDrop::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), kFaceGray);
    painter.setPen(Qt::black);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    const int32_t margin = Metrics().margin;
    for (int32_t line = 0; line < VisibleLines(); ++line) {
        const int32_t index = top_ + line;
        if (index >= list_->count()) break;
        const QRect r = EntryRect(index);
        QColor ink = list_->IsDisabled(index) ? kDisabledText : QColor(Qt::black);
        if (index == highlight_ && !list_->IsDisabled(index)) {
            painter.fillRect(r, kHighlight);
            ink = Qt::white;
        }
        painter.setPen(ink);
        painter.drawText(r.adjusted(margin, 0, -margin, 0), Qt::AlignVCenter | Qt::AlignLeft,
                         list_->entry(index));
    }
}

void PopupDrop::mousePressEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (!rect().contains(at)) {
        close();
        return;
    }
    SetHighlight(EntryAt(at));
}

void PopupDrop::mouseMoveEvent(QMouseEvent* event)
{
    const QPoint at = event->position().toPoint();
    if (event->buttons() & Qt::LeftButton) {
        // Held above or below the list: scroll it while the button stays down.
        const int32_t step = at.y() < 0 ? -1 : at.y() >= height() ? 1 : 0;
        if (step != scrollStep_) {
            scrollStep_ = step;
            if (step)
                autoScroll_->start();
            else
                autoScroll_->stop();
        }
    }
    SetHighlight(EntryAt(at));
}

void PopupDrop::mouseReleaseEvent(QMouseEvent* event)
{
    autoScroll_->stop();
    scrollStep_ = 0;
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    if (!rect().contains(at)) return;
    Choose(EntryAt(at));
}

void PopupDrop::keyPressEvent(QKeyEvent* event)
{
    const std::vector<bool>& off = list_->disabled();
    switch (event->key()) {
    case Qt::Key_Escape: close(); break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space: Choose(highlight_); break;
    case Qt::Key_Home: SetHighlight(PopupStep(off, -1, 1)); break;
    case Qt::Key_End: SetHighlight(PopupStep(off, list_->count(), -1)); break;
    case Qt::Key_Up: SetHighlight(PopupStep(off, highlight_, -1)); break;
    case Qt::Key_Down: SetHighlight(PopupStep(off, highlight_, 1)); break;
    default: break;
    }
}

void PopupDrop::wheelEvent(QWheelEvent* event)
{
    const int32_t delta = event->angleDelta().y();
    if (delta) ScrollTo(top_ + (delta > 0 ? -3 : 3));
}

// ---- The list -----------------------------------------------------------------

PopupListControl::PopupListControl(int32_t x, int32_t y, QWidget* parent, int32_t value,
                                   const std::string& packedText, int32_t controlId)
    : QWidget(parent), controlId_(controlId)
{
    ApplyPanelStyle(this);
    setFocusPolicy(Qt::StrongFocus);
    const PopupListText text = ParsePopupText(packedText);
    label_ = QString::fromStdString(text.label);
    for (const std::string& entry : text.entries) entries_.push_back(QString::fromStdString(entry));
    disabled_ = text.disabled;
    current_ = value >= 0 && value < count() ? value : 0;
    labelWidth_ = ControlLabelWidth(label_);
    const QFontMetrics metrics(Metrics().fontSystem);
    int32_t widest = 0;
    for (const QString& entry : entries_)
        widest = std::max(widest, metrics.horizontalAdvance(entry));
    const int32_t height = Metrics().controlHeight;
    listWidth_ = widest + 2 * Metrics().margin + height + 2;
    setGeometry(x, y, labelWidth_ + listWidth_, height);
}

PopupListControl::~PopupListControl()
{
    if (drop_) drop_->close();
}

bool PopupListControl::IsDisabled(int32_t index) const
{
    return index >= 0 && index < count() && disabled_[static_cast<size_t>(index)];
}

QRect PopupListControl::BoxRect() const { return QRect(labelWidth_, 0, listWidth_, height()); }

void PopupListControl::SetPopup(int32_t value)
{
    if (value < 0 || value >= count()) return;
    current_ = value;
    update();
    SendControlMessage(parentWidget(), kMsgValueChanged, controlId_, current_);
}

void PopupListControl::DisableEntry(int32_t index, bool disabled)
{
    if (index < 0 || index >= count()) return;
    disabled_[static_cast<size_t>(index)] = disabled;
    update();
    if (drop_) drop_->update();
}

void PopupListControl::OpenDrop()
{
    if (drop_ || entries_.empty()) return;
    drop_ = new PopupDrop(this, listWidth_);
    const QRect box = BoxRect();
    // Below the box, or above it where the screen ends first.
    QPoint at = mapToGlobal(QPoint(box.left(), box.bottom() + 1));
    if (const QScreen* shown = screen()) {
        const QRect room = shown->availableGeometry();
        if (at.y() + drop_->height() > room.bottom() + 1) {
            const QPoint above = mapToGlobal(QPoint(box.left(), box.top() - drop_->height()));
            if (above.y() >= room.top()) at = above;
        }
    }
    drop_->move(at);
    drop_->show();
}

bool PopupListControl::event(QEvent* event)
{
    if (event->type() == ControlEvent::EventType()) {
        const auto* message = static_cast<ControlEvent*>(event);
        if (message->message == kMsgDropChoice && message->value >= 0 && message->value < count()) {
            current_ = static_cast<int32_t>(message->value);
            update();
            SendControlMessage(parentWidget(), kMsgValueChanged, controlId_, current_);
        }
        return true;
    }
    return QWidget::event(event);
}

void PopupListControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), kPanelGray);
    const int32_t margin = Metrics().margin;
    if (!label_.isEmpty()) {
        painter.setPen(Qt::black);
        painter.drawText(QRect(0, 0, labelWidth_, height()), Qt::AlignVCenter | Qt::AlignLeft,
                         label_);
    }
    const QRect box = BoxRect().adjusted(0, 0, -1, -1);
    painter.fillRect(box, kFaceGray);
    painter.setPen(hasFocus() ? QColor(Qt::white) : QColor(Qt::black));
    painter.drawRect(box);
    const int32_t side = box.height() - 1;
    const QRect arrow(box.right() - side, box.top() + 1, side, side);
    if (current_ < count()) {
        painter.setPen(IsDisabled(current_) ? kDisabledText : QColor(Qt::black));
        painter.drawText(
            QRect(box.left() + margin, box.top(), arrow.left() - box.left() - margin, box.height()),
            Qt::AlignVCenter | Qt::AlignLeft, entries_[static_cast<size_t>(current_)]);
    }
    DrawEdge(painter, arrow.adjusted(0, 0, -1, -1), !drop_);
    const QPoint c = arrow.center();
    QPolygon triangle;
    triangle << QPoint(c.x() - 4, c.y() - 2) << QPoint(c.x() + 4, c.y() - 2)
             << QPoint(c.x(), c.y() + 2);
    painter.setPen(Qt::black);
    painter.setBrush(Qt::black);
    painter.drawPolygon(triangle);
}

void PopupListControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) OpenDrop();
}

void PopupListControl::keyPressEvent(QKeyEvent* event)
{
    const bool alt = event->modifiers() & Qt::AltModifier;
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_F4 ||
        (alt && event->key() == Qt::Key_Down)) {
        OpenDrop();
        return;
    }
    QWidget::keyPressEvent(event);
}

}  // namespace lv
