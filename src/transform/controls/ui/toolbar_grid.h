// The tool bar control: a fixed grid of square picture buttons with tips.
// Plain buttons only report a press; a radio group keeps exactly the pressed
// one down; toggles flip at each press. Every press sends 1050 with the
// button's index to the parent.
#pragma once

#include <QBasicTimer>
#include <QIcon>
#include <QList>
#include <QStringList>
#include <QWidget>
#include <array>
#include <cstdint>

#include "shell/messages.h"

namespace lv {

enum ToolBarKind : int32_t {
    kToolBarPlain = 0,
    kToolBarRadio = 1,
    kToolBarToggles = 2,
};

constexpr int32_t kToolBarMaxButtons = 64;
constexpr int32_t kToolTipDelay = 1000;  // milliseconds of hovering before the tip shows

class ToolBarControl : public QWidget {
public:
    // A grid of columns by rows buttons (at most 64 in all), each a square of
    // `size` plus 5 pixels holding the picture of `icons` at the same index
    // (drawn `size` square) and the tip of `tips`. The control is moved to
    // (x, y) of the parent and keeps its size.
    ToolBarControl(QWidget* parent, int32_t x, int32_t y, int32_t kind, int32_t size,
                   int32_t columns, int32_t rows, const QList<QIcon>& icons,
                   const QStringList& tips, int32_t controlId);

    // Puts the button down and all others up, without telling the parent; an
    // index out of range puts them all up.
    void PressButton(int32_t index);
    bool ButtonPressed(int32_t index) const;
    void SetButton(int32_t index, bool down);

    int32_t controlId() const { return controlId_; }
    int32_t count() const { return count_; }
    int32_t buttonSide() const { return side_; }
    // The button under the pointer, -1 for none.
    int32_t hover() const { return hover_; }
    QRect ButtonRect(int32_t index) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    int32_t ButtonAt(QPoint p) const;
    void SetHover(int32_t index);

    int32_t controlId_;
    int32_t kind_;
    int32_t size_;
    int32_t side_;
    int32_t columns_;
    int32_t rows_;
    int32_t count_;
    int32_t hover_ = -1;
    int32_t held_ = -1;  // a plain button shown down while the left button is held on it
    QList<QIcon> icons_;
    QStringList tips_;
    std::array<bool, kToolBarMaxButtons> pressed_{};
    QBasicTimer tipTimer_;
};

}  // namespace lv
