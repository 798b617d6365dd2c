#include "transform/controls/ui/integer_field.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>
#include <algorithm>
#include <string>

#include "shell/text.h"
#include "shell/ui/metrics.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/pedit.h"

namespace lv {

namespace {

constexpr int32_t kArrowWidth = 16;

}  // namespace

IntegerControl::IntegerControl(int32_t x, int32_t y, int32_t editWidth, QWidget* parent,
                               const QString& label, int32_t value, int32_t minimum,
                               int32_t maximum, int32_t controlId)
    : QWidget(parent),
      controlId_(controlId),
      minimum_(std::min(minimum, maximum)),
      maximum_(std::max(minimum, maximum)),
      value_(std::clamp(value, minimum_, maximum_)),
      labelWidth_(ControlLabelWidth(label)),
      edit_(new ControlLineEdit(this, controlId)),
      up_(new QToolButton(this)),
      down_(new QToolButton(this))
{
    ApplyPanelStyle(this);
    const int32_t height = Metrics().controlHeight;
    if (!label.isEmpty()) {
        auto* caption = new QLabel(label, this);
        caption->setGeometry(0, 0, labelWidth_, height);
    }
    edit_->setGeometry(labelWidth_, 0, editWidth, height);
    const int32_t half = height / 2;
    up_->setArrowType(Qt::UpArrow);
    down_->setArrowType(Qt::DownArrow);
    up_->setGeometry(labelWidth_ + editWidth, 0, kArrowWidth, half);
    down_->setGeometry(labelWidth_ + editWidth, half, kArrowWidth, height - half);
    for (QToolButton* arrow : {up_, down_}) {
        arrow->setAutoRepeat(true);
        arrow->setFocusPolicy(Qt::NoFocus);
    }
    QObject::connect(up_, &QToolButton::clicked, this, [this] { StepBy(1); });
    QObject::connect(down_, &QToolButton::clicked, this, [this] { StepBy(-1); });
    setGeometry(x, y, labelWidth_ + editWidth + kArrowWidth, height);
    setFocusProxy(edit_);
    edit_->installEventFilter(this);
    ShowValue();
    QObject::connect(edit_, &QLineEdit::textChanged, this, [this] { TextChanged(); });
}

void IntegerControl::ShowValue()
{
    std::string text;
    IntToText(value_, text);
    rewriting_ = true;
    edit_->setText(QString::fromStdString(text));
    rewriting_ = false;
}

void IntegerControl::SetValue(int32_t value)
{
    value_ = std::clamp(value, minimum_, maximum_);
    ShowValue();
}

void IntegerControl::StepBy(int32_t steps)
{
    const int64_t next = std::clamp<int64_t>(int64_t{value_} + steps, minimum_, maximum_);
    std::string text;
    IntToText(next, text);
    // Written into the edit like typing, so that the text rule runs.
    edit_->setText(QString::fromStdString(text));
}

bool IntegerControl::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == edit_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Up || key == Qt::Key_Down) {
            StepBy(key == Qt::Key_Up ? 1 : -1);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void IntegerControl::TextChanged()
{
    if (rewriting_) return;
    const IntegerTextResult result =
        IntegerTextRule(edit_->text().toStdString(), value_, minimum_, maximum_);
    if (result.beep) QApplication::beep();
    value_ = result.value;
    if (result.rewrite) ShowValue();
    if (result.changed) SendControlMessage(parentWidget(), kMsgInteger, controlId_, value_);
}

}  // namespace lv
