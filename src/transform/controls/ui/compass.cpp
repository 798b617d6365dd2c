#include "transform/controls/ui/compass.h"

#include <QMouseEvent>
#include <QPainter>
#include <cmath>

#include "image/ui/display_painter.h"
#include "transform/controls/compass_math.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

CompassControl::CompassControl(QWidget* parent, int32_t x, int32_t y, int32_t width, int32_t height,
                               int32_t value, int32_t controlId)
    : QWidget(parent), controlId_(controlId), angle_(CompassAngleFromValue(value))
{
    setGeometry(x, y, width, height);
}

void CompassControl::SetCompass(int32_t value)
{
    angle_ = CompassAngleFromValue(value);
    update();
}

int32_t CompassControl::value() const { return CompassValueFromAngle(angle_); }

void CompassControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPointF c = centre();
    const double radius = CompassRadius(width(), height());
    painter.setPen(QPen(Qt::black, 1));
    painter.setBrush(DisplayQColor(0xC0, 0xC0, 0xC0));
    painter.drawEllipse(c, radius, radius);
    // Ticks at the four quarters, just inside the rim.
    for (int32_t q = 0; q < 4; ++q) {
        const double a = CompassAngleFromValue(q * 1024);
        const CompassPoint outer = CompassNeedleEnd(c.x(), c.y(), radius, a);
        const CompassPoint inner = CompassNeedleEnd(c.x(), c.y(), radius * 0.85, a);
        painter.drawLine(QPointF(inner.x, inner.y), QPointF(outer.x, outer.y));
    }
    const CompassPoint end = CompassNeedleEnd(c.x(), c.y(), radius, angle_);
    painter.setPen(QPen(Qt::black, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(c, QPointF(end.x, end.y));
    painter.setBrush(Qt::black);
    painter.drawEllipse(c, 2.5, 2.5);
}

void CompassControl::Track(QPoint p)
{
    const QPoint c = centre();
    const int32_t v = CompassValue(p.x() - c.x(), p.y() - c.y());
    angle_ = CompassAngleFromValue(v);
    update();
    SendControlMessage(parentWidget(), kMsgCompassMoved, controlId_, v);
}

void CompassControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) return;
    dragging_ = true;
    Track(event->position().toPoint());
}

void CompassControl::mouseMoveEvent(QMouseEvent* event)
{
    if (dragging_) Track(event->position().toPoint());
}

void CompassControl::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !dragging_) return;
    dragging_ = false;
    SendControlMessage(parentWidget(), kMsgCompassReleased, controlId_, value());
}

}  // namespace lv
