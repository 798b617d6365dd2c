#include "transform/controls/ui/color_control.h"

#include <QFontMetrics>
#include <QMdiArea>
#include <QMouseEvent>
#include <QPainter>

#include "image/ui/display_painter.h"
#include "shell/ui/metrics.h"
#include "transform/controls/ui/color_picker.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

QMdiArea* WorkspaceOf(QWidget* widget)
{
    if (!widget) return nullptr;
    for (QWidget* w = widget->parentWidget(); w; w = w->parentWidget())
        if (auto* area = qobject_cast<QMdiArea*>(w)) return area;
    return widget->window()->findChild<QMdiArea*>();
}

ColorControl::ColorControl(QWidget* parent, int32_t x, int32_t y, const QString& label,
                           const QString& pickerTitle, QColor color, int32_t controlId,
                           int32_t pickerMode, int32_t pickerFlags)
    : QWidget(parent),
      label_(label),
      pickerTitle_(pickerTitle),
      color_(color.red(), color.green(), color.blue()),
      pickerMode_(pickerMode),
      pickerFlags_(pickerFlags),
      controlId_(controlId)
{
    const UiMetrics& m = Metrics();
    setFont(m.fontSystem);
    labelWidth_ =
        label.isEmpty() ? 0 : QFontMetrics(m.fontSystem).horizontalAdvance(label) + m.margin;
    swatch_ = QRect(labelWidth_, 0, 2 * m.controlHeight, m.controlHeight);
    setFixedSize(labelWidth_ + swatch_.width(), m.controlHeight);
    move(x, y);
}

ColorControl::~ColorControl() { ClosePicker(); }

void ColorControl::SetColor(QColor color)
{
    color_ = QColor(color.red(), color.green(), color.blue());
    update();
    SetColorPicker(picker_, color_);
}

void ColorControl::ClosePicker()
{
    if (picker_) picker_->close();  // its 1030 clears picker_
    picker_ = nullptr;
}

void ColorControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (labelWidth_ > 0) {
        painter.setPen(Qt::black);
        painter.setFont(font());
        painter.drawText(QRect(0, 0, labelWidth_, height()), Qt::AlignLeft | Qt::AlignVCenter,
                         label_);
    }
    FillColor(painter, swatch_.adjusted(1, 1, -1, -1),
              DisplayQColor(color_.red(), color_.green(), color_.blue()));
    painter.setPen(Qt::black);
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(swatch_.adjusted(0, 0, -1, -1));
}

void ColorControl::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) return;
    if (picker_) {
        if (picker_->isMinimized()) picker_->showNormal();
        if (QMdiArea* area = picker_->mdiArea()) area->setActiveSubWindow(picker_);
        picker_->raise();
        return;
    }
    picker_ = OpenColorPicker(WorkspaceOf(this), 0, 0, pickerTitle_, this, controlId_, color_,
                              pickerMode_, pickerFlags_);
}

bool ColorControl::event(QEvent* event)
{
    if (event->type() != ControlEvent::EventType()) return QWidget::event(event);
    const auto* message = static_cast<ControlEvent*>(event);
    if (message->message == kMsgColor) {
        color_ = ColorFromValue(message->value);
        update();
        SendControlMessage(parentWidget(), kMsgColor, controlId_, ColorValue(color_));
    } else if (message->message == kMsgPickerClosed) {
        picker_ = nullptr;
    }
    return true;
}

}  // namespace lv
