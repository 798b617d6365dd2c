// The Compass control: a round dial with a needle that sets a direction, 4096
// steps to a turn with 0 pointing down. A press or drag sends 1078 at every
// step, the release 1077, each with the value.
#pragma once

#include <QWidget>
#include <cstdint>

#include "shell/messages.h"

namespace lv {


class CompassControl : public QWidget {
public:
    // A dial of the given client size at (x, y) of the parent, showing
    // `value`.
    CompassControl(QWidget* parent, int32_t x, int32_t y, int32_t width, int32_t height,
                   int32_t value, int32_t controlId);

    // Stores the needle's angle for the value and repaints, without telling
    // the parent.
    void SetCompass(int32_t value);
    // The value 0..4095 of the stored angle.
    int32_t value() const;
    double angle() const { return angle_; }
    int32_t controlId() const { return controlId_; }
    // The centre the pointer is measured from.
    QPoint centre() const { return QPoint(width() / 2, height() / 2); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void Track(QPoint p);

    int32_t controlId_;
    double angle_ = 0.0;
    bool dragging_ = false;
};

}  // namespace lv
