#include "transform/controls/ui/toolbar_grid.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "image/ui/display_painter.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/tip.h"

namespace lv {

ToolBarControl::ToolBarControl(QWidget* parent, int32_t x, int32_t y, int32_t kind, int32_t size,
                               int32_t columns, int32_t rows, const QList<QIcon>& icons,
                               const QStringList& tips, int32_t controlId)
    : QWidget(parent),
      controlId_(controlId),
      kind_(kind),
      size_(std::max(size, 1)),
      side_(std::max(size, 1) + 5),
      columns_(std::clamp(columns, 1, kToolBarMaxButtons)),
      rows_(std::clamp(rows, 1, kToolBarMaxButtons / std::clamp(columns, 1, kToolBarMaxButtons))),
      count_(columns_ * rows_),
      icons_(icons),
      tips_(tips)
{
    setMouseTracking(true);
    setFixedSize(columns_ * side_, rows_ * side_);
    move(x, y);
}

QRect ToolBarControl::ButtonRect(int32_t index) const
{
    if (index < 0 || index >= count_) return QRect();
    return QRect(index % columns_ * side_, index / columns_ * side_, side_, side_);
}

int32_t ToolBarControl::ButtonAt(QPoint p) const
{
    if (p.x() < 0 || p.y() < 0) return -1;
    const int32_t column = p.x() / side_, row = p.y() / side_;
    if (column >= columns_ || row >= rows_) return -1;
    return row * columns_ + column;
}

void ToolBarControl::PressButton(int32_t index)
{
    for (int32_t i = 0; i < count_; ++i) pressed_[i] = i == index;
    update();
}

bool ToolBarControl::ButtonPressed(int32_t index) const
{
    return index >= 0 && index < count_ && pressed_[index];
}

void ToolBarControl::SetButton(int32_t index, bool down)
{
    if (index < 0 || index >= count_) return;
    pressed_[index] = down;
    update(ButtonRect(index));
}

void ToolBarControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QColor face = DisplayQColor(0xC0, 0xC0, 0xC0);
    const QColor light = DisplayQColor(0xFF, 0xFF, 0xFF);
    const QColor shadow = DisplayQColor(0x80, 0x80, 0x80);
    for (int32_t i = 0; i < count_; ++i) {
        const QRect r = ButtonRect(i);
        const bool down = pressed_[i] || held_ == i;
        FillColor(painter, r, face);
        // A two-pixel bevel: light above and to the left when up, the other
        // way round when down, with a black outer edge at the shadowed sides.
        const int32_t x0 = r.left(), y0 = r.top(), x1 = r.right(), y1 = r.bottom();
        painter.setPen(down ? Qt::black : light);
        painter.drawLine(x0, y0, x1 - 1, y0);
        painter.drawLine(x0, y0, x0, y1 - 1);
        painter.setPen(down ? light : Qt::black);
        painter.drawLine(x0, y1, x1, y1);
        painter.drawLine(x1, y0, x1, y1);
        painter.setPen(shadow);
        if (down) {
            painter.drawLine(x0 + 1, y0 + 1, x1 - 1, y0 + 1);
            painter.drawLine(x0 + 1, y0 + 1, x0 + 1, y1 - 1);
        } else {
            painter.drawLine(x0 + 1, y1 - 1, x1 - 1, y1 - 1);
            painter.drawLine(x1 - 1, y0 + 1, x1 - 1, y1 - 1);
        }
        if (i < icons_.size() && !icons_[i].isNull()) {
            const int32_t shift = down ? 1 : 0;
            const QRect picture(x0 + 2 + shift, y0 + 2 + shift, size_, size_);
            icons_[i].paint(&painter, picture);
        }
    }
}

void ToolBarControl::SetHover(int32_t index)
{
    if (index == hover_) return;
    hover_ = index;
    HideTip();
    if (index >= 0)
        tipTimer_.start(kToolTipDelay, this);
    else
        tipTimer_.stop();
}

void ToolBarControl::mouseMoveEvent(QMouseEvent* event)
{
    SetHover(ButtonAt(event->position().toPoint()));
}

void ToolBarControl::leaveEvent(QEvent*)
{
    SetHover(-1);
    HideTip();
}

void ToolBarControl::hideEvent(QHideEvent*)
{
    if (hover_ >= 0) HideTip();
    hover_ = -1;
    tipTimer_.stop();
}

void ToolBarControl::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != tipTimer_.timerId()) return QWidget::timerEvent(event);
    tipTimer_.stop();
    if (hover_ < 0 || hover_ >= tips_.size()) return;
    const QRect r = ButtonRect(hover_);
    ShowTip(mapToGlobal(QPoint(r.left(), r.bottom() + 2)), this, tips_[hover_]);
}

void ToolBarControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) return;
    const int32_t index = ButtonAt(event->position().toPoint());
    tipTimer_.stop();
    HideTip();
    if (index < 0) return;
    if (kind_ == kToolBarRadio)
        PressButton(index);
    else if (kind_ == kToolBarToggles)
        SetButton(index, !pressed_[index]);
    else {
        held_ = index;
        update(ButtonRect(index));
    }
    SendControlMessage(parentWidget(), kMsgToolBar, controlId_, index);
}

void ToolBarControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || held_ < 0) return;
    const QRect r = ButtonRect(held_);
    held_ = -1;
    update(r);
}

}  // namespace lv
