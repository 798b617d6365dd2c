#include "transform/controls/ui/pedit.h"

#include <QFocusEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>

#include "shell/ui/metrics.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

int32_t ControlLabelWidth(const QString& label)
{
    if (label.isEmpty()) return 0;
    return QFontMetrics(Metrics().fontSystem).horizontalAdvance(label) + Metrics().margin;
}

void ApplyPanelStyle(QWidget* control)
{
    QPalette palette = control->palette();
    palette.setColor(QPalette::Window, QColor(0x80, 0x80, 0x80));
    palette.setColor(QPalette::WindowText, Qt::black);
    palette.setColor(QPalette::Base, QColor(0xC0, 0xC0, 0xC0));
    palette.setColor(QPalette::Button, QColor(0xC0, 0xC0, 0xC0));
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::ButtonText, Qt::black);
    control->setPalette(palette);
    control->setFont(Metrics().fontSystem);
    control->setAutoFillBackground(true);
}

ControlLineEdit::ControlLineEdit(QWidget* control, int32_t controlId)
    : QLineEdit(control), control_(control), controlId_(controlId)
{
}

bool ControlLineEdit::event(QEvent* event)
{
    // Tab is taken here, before the widget would move the focus itself.
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab) {
            SendControlMessage(control_->parentWidget(),
                               key == Qt::Key_Tab ? kMsgTab : kMsgBackTab, controlId_, 0);
            return true;
        }
    }
    return QLineEdit::event(event);
}

void ControlLineEdit::focusInEvent(QFocusEvent* event)
{
    QLineEdit::focusInEvent(event);
    // A click places the caret where it falls; any other way in selects all.
    if (event->reason() != Qt::MouseFocusReason) selectAll();
}

PEditControl::PEditControl(int32_t x, int32_t y, int32_t editWidth, QWidget* parent,
                           const QString& label, const QString& text, int32_t controlId)
    : QWidget(parent),
      controlId_(controlId),
      labelWidth_(ControlLabelWidth(label)),
      edit_(new ControlLineEdit(this, controlId))
{
    ApplyPanelStyle(this);
    const int32_t height = Metrics().controlHeight;
    if (!label.isEmpty()) {
        auto* caption = new QLabel(label, this);
        caption->setGeometry(0, 0, labelWidth_, height);
    }
    edit_->setMaxLength(255);
    edit_->setText(text);
    edit_->setGeometry(labelWidth_, 0, editWidth, height);
    setGeometry(x, y, labelWidth_ + editWidth, height);
    setFocusProxy(edit_);
    QObject::connect(edit_, &QLineEdit::textChanged, this, [this] {
        if (!quiet_) SendControlMessage(parentWidget(), kMsgText, controlId_, 0);
    });
}

QString PEditControl::text() const { return edit_->text(); }

void PEditControl::SetText(const QString& text)
{
    quiet_ = true;
    edit_->setText(text);
    quiet_ = false;
}

}  // namespace lv
