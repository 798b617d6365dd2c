// The Color control: a label and a swatch of the colour. A left press opens
// the colour picker at the colour (or brings the open one forward); the
// picker's changes are kept and passed on to the parent as 1029 with the
// control's identifier and the colour as 0xRRGGBB.
#pragma once

#include <QColor>
#include <QPointer>
#include <QString>
#include <QWidget>
#include <cstdint>
#include "transform/controls/ui/color_picker.h"

class QMdiArea;

namespace lv {

class ColorControl : public QWidget {
public:
    // A control at (x, y) of the parent, as wide as the label plus the swatch
    // and one control high. `pickerTitle`, `pickerMode` and `pickerFlags` are
    // what the picker opens with.
    ColorControl(QWidget* parent, int32_t x, int32_t y, const QString& label,
                 const QString& pickerTitle, QColor color, int32_t controlId,
                 int32_t pickerMode = 0, int32_t pickerFlags = 0);
    ~ColorControl() override;

    // Stores the colour, repaints and moves an open picker, without telling
    // the parent.
    void SetColor(QColor color);
    QColor color() const { return color_; }
    // Closes the picker, if open.
    void ClosePicker();
    ColorPicker* picker() const { return picker_; }
    int32_t controlId() const { return controlId_; }
    // Where the swatch is drawn.
    QRect swatchRect() const { return swatch_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

private:
    QString label_;
    QString pickerTitle_;
    QColor color_;
    int32_t pickerMode_;
    int32_t pickerFlags_;
    int32_t controlId_;
    int32_t labelWidth_;
    QRect swatch_;
    QPointer<ColorPicker> picker_;
};

// The workspace a control's pickers open in: the MDI area that holds the
// widget, or else the one in its top-level window.
QMdiArea* WorkspaceOf(QWidget* widget);

}  // namespace lv
