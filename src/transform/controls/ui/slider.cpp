#include "transform/controls/ui/slider.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPolygon>

#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

namespace {

const QColor kPanelGray(0x80, 0x80, 0x80);
const QColor kFaceGray(0xC0, 0xC0, 0xC0);

// A marker: a small triangle with its point towards the track, under it
// (the first marker) or above it (the second).
void DrawMarker(QPainter& painter, int32_t x, bool above)
{
    QPolygon triangle;
    if (above)
        triangle << QPoint(x - 4, 0) << QPoint(x + 4, 0) << QPoint(x, 6);
    else
        triangle << QPoint(x - 4, kSliderHeight - 1) << QPoint(x + 4, kSliderHeight - 1)
                 << QPoint(x, kSliderHeight - 7);
    painter.setPen(Qt::black);
    painter.setBrush(kFaceGray);
    painter.drawPolygon(triangle);
}

}  // namespace

SliderControl::SliderControl(int32_t x, int32_t y, int32_t width, QWidget* parent,
                             int32_t controlId)
    : QWidget(parent), controlId_(controlId)
{
    setGeometry(x, y, width, kSliderHeight);
    setAttribute(Qt::WA_OpaquePaintEvent);
    SetValues(0, -1);
}

void SliderControl::SetValues(int32_t value, int32_t value2)
{
    value_ = value;
    value2_ = value2;
    pixel_ = SliderPixel(width(), value_);
    pixel2_ = value2_ == -1 ? pixel_ : SliderPixel(width(), value2_);
    update();
}

void SliderControl::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    SetValues(value_, value2_);
}

void SliderControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const int32_t w = width();
    painter.fillRect(rect(), kPanelGray);
    // The ticks, centred on the groove.
    painter.setPen(Qt::black);
    for (const SliderTick& tick : SliderTicks(w)) {
        const int32_t top = kSliderSplitRow - (tick.length + 1) / 2;
        painter.drawLine(tick.x, top, tick.x, top + tick.length - 1);
    }
    // The groove: a sunken line along the track.
    if (w > 2 * kSliderInset) {
        painter.setPen(QColor(0x40, 0x40, 0x40));
        painter.drawLine(kSliderInset, kSliderSplitRow - 1, w - kSliderInset, kSliderSplitRow - 1);
        painter.setPen(Qt::white);
        painter.drawLine(kSliderInset, kSliderSplitRow, w - kSliderInset, kSliderSplitRow);
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    DrawMarker(painter, pixel2_, true);
    DrawMarker(painter, pixel_, false);
}

void SliderControl::Notify(int32_t message)
{
    SendControlMessage(parentWidget(), message, controlId_, PackPair(value_, value2_));
}

void SliderControl::DragTo(int32_t x)
{
    const int32_t p = SliderClampPixel(width(), x);
    const int32_t v = SliderValue(width(), p);
    bool moved = false;
    if (dragging_ == 2) {
        moved = p != pixel2_;
        pixel2_ = p;
        value2_ = v;
    } else {
        moved = p != pixel_;
        pixel_ = p;
        value_ = v;
        if (value2_ == -1) pixel2_ = pixel_;
    }
    if (!moved) return;
    update();
    Notify(kMsgSliderMoved);
}

void SliderControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) return;
    const QPoint at = event->position().toPoint();
    dragging_ = SliderPickMarker(value2_, at.y());
    DragTo(at.x());
}

void SliderControl::mouseMoveEvent(QMouseEvent* event)
{
    if (dragging_) DragTo(event->position().toPoint().x());
}

void SliderControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !dragging_) return;
    DragTo(event->position().toPoint().x());
    dragging_ = 0;
    Notify(kMsgSliderReleased);
}

}  // namespace lv
