// The Slider: a track from 0 to 1024 with one marker, or two when a mask
// gives the strength at both ends. The first marker is the triangle under
// the track; the second is the one above it (with one marker both triangles
// stand at the same place). Dragging sends 1028 at each change of position
// and 1027 at release, with value in the low and value2 in the high half.
#pragma once

#include <QWidget>
#include <cstdint>

#include "shell/messages.h"

namespace lv {

class SliderControl : public QWidget {
public:
    // A slider at (x, y) of the given width and the fixed slider height, with
    // one marker at 0.
    SliderControl(int32_t x, int32_t y, int32_t width, QWidget* parent, int32_t controlId);

    // Places the markers (value2 -1 for one marker) without telling the parent.
    void SetValues(int32_t value, int32_t value2);
    int32_t value() const { return value_; }
    int32_t value2() const { return value2_; }
    int32_t pixel() const { return pixel_; }
    int32_t pixel2() const { return pixel2_; }
    int32_t controlId() const { return controlId_; }
    // 0 when no marker is held, 1 the first, 2 the second.
    int32_t dragging() const { return dragging_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // Moves the held marker to the pointer's column; 1028 when it moved.
    void DragTo(int32_t x);
    void Notify(int32_t message);

    int32_t value_ = 0;
    int32_t value2_ = -1;
    int32_t pixel_ = 4;
    int32_t pixel2_ = 4;
    int32_t controlId_;
    int32_t dragging_ = 0;
};

}  // namespace lv
