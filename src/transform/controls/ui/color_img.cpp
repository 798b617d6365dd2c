#include "transform/controls/ui/color_img.h"

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "image/ui/display_painter.h"
#include "image/ui/image_window.h"
#include "shell/ui/events.h"
#include "shell/ui/metrics.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/image_menu.h"
#include "transform/controls/ui/pedit.h"
#include "shell/messages.h"

namespace lv {

namespace {

constexpr int32_t kBevel = 2;
const char* const kImageUserName = "Color Image Control";

int64_t PackColor(QColor c)
{
    return int64_t{c.red()} << 16 | int64_t{c.green()} << 8 | int64_t{c.blue()};
}

}  // namespace

std::function<void(ColorImgControl*, QColor)> ColorImgControl::openPickerFunction;

ColorImgControl::ColorImgControl(int32_t x, int32_t y, QWidget* parent, const QString& label,
                                 const QString& pickerTitle, QColor color, int32_t controlId,
                                 int32_t pickerAllowed, int32_t kinds, int32_t maskWidth,
                                 int32_t maskHeight, WindowHandle excluded, int32_t pickerMode,
                                 QMdiArea* workspace)
    : QWidget(parent),
      label_(label),
      pickerTitle_(pickerTitle),
      color_(color.red(), color.green(), color.blue()),
      controlId_(controlId),
      pickerAllowed_(pickerAllowed),
      kinds_(kinds),
      maskWidth_(maskWidth),
      maskHeight_(maskHeight),
      excluded_(excluded),
      pickerMode_(pickerMode),
      workspace_(FindWorkspace(workspace, parent, nullptr))
{
    ApplyPanelStyle(this);
    move(x, y);
    Layout();
}

ColorImgControl::~ColorImgControl()
{
    if (picker_) picker_->close();
    if (imageWindow_) UserRemove(HandleOf(this), imageWindow_);
}

void ColorImgControl::Layout()
{
    labelWidth_ = ControlLabelWidth(label_);
    resize(labelWidth_ + kColorImgSquare, std::max(kColorImgSquare, Metrics().controlHeight));
    update();
}

QRect ColorImgControl::SquareRect() const
{
    return QRect(labelWidth_, (height() - kColorImgSquare) / 2, kColorImgSquare, kColorImgSquare);
}

void ColorImgControl::GetColorImg(int32_t& red, int32_t& green, int32_t& blue,
                                  WindowHandle& window) const
{
    red = color_.red();
    green = color_.green();
    blue = color_.blue();
    window = imageWindow_;
}

void ColorImgControl::SetColorImg(QColor color, WindowHandle window)
{
    color_ = QColor(color.red(), color.green(), color.blue());
    Select(window && WindowRecord(window) ? window : nullptr);
}

void ColorImgControl::SetLabels(const QString& label, const QString& pickerTitle)
{
    label_ = label;
    pickerTitle_ = pickerTitle;
    Layout();
}

void ColorImgControl::SetLimits(int32_t pickerAllowed, int32_t kinds, int32_t maskWidth,
                                int32_t maskHeight, WindowHandle excluded, int32_t pickerMode)
{
    pickerAllowed_ = pickerAllowed;
    kinds_ = kinds;
    maskWidth_ = maskWidth;
    maskHeight_ = maskHeight;
    excluded_ = excluded;
    pickerMode_ = pickerMode;
}

void ColorImgControl::Select(WindowHandle window)
{
    if (imageWindow_) UserRemove(HandleOf(this), imageWindow_);
    imageWindow_ = window;
    // A failure to note the use is not reported.
    if (window) (void)UserAdd(HandleOf(this), window, kImageUserName, true);
    name_ = window ? ImageWindowName(window) : QString();
    UpdatePicture();
}

void ColorImgControl::UpdatePicture()
{
    picture_ = QImage();
    if (const ImageWindow* record = imageWindow_ ? WindowRecord(imageWindow_) : nullptr)
        picture_ = ThumbnailPicture(record->image, kColorImgSquare - 2 * kBevel);
    update();
}

void ColorImgControl::RebuildImageList()
{
    if (!workspace_) workspace_ = FindWorkspace(nullptr, this, nullptr);
    imageList_.clear();
    if (workspace_) {
        const bool anySize = maskWidth_ == -1 && maskHeight_ == -1;
        for (ImageSubWindow* window : ImageWindows(workspace_)) {
            const ImageWindow& record = window->record();
            const int32_t kind = record.image.kind;
            if (window->handle() == excluded_ || record.windowKind != kWindowImage) continue;
            if (kind < 0 || kind > 30 || !(kinds_ >> kind & 1)) continue;
            if (!anySize &&
                (record.image.width != maskWidth_ || record.image.height != maskHeight_))
                continue;
            imageList_.push_back(window->handle());
        }
    }
    selected_ = 0;
    if (!name_.isEmpty())
        for (size_t i = 0; i < imageList_.size(); ++i)
            if (ImageWindowName(imageList_[i]) == name_) {
                selected_ = static_cast<int32_t>(i) + 1;
                break;
            }
}

void ColorImgControl::OpenPicker()
{
    if (pickerAllowed_ == -1) return;
    if (picker_) {
        picker_->show();
        picker_->raise();
        if (auto* sub = qobject_cast<QMdiSubWindow*>(picker_.data()))
            if (QMdiArea* area = sub->mdiArea()) area->setActiveSubWindow(sub);
        return;
    }
    if (openPickerFunction) openPickerFunction(this, color_);
}

void ColorImgControl::Choose(int64_t index)
{
    if (index < 0 || index > static_cast<int64_t>(imageList_.size())) return;
    selected_ = static_cast<int32_t>(index);
    if (index == 0) {
        Select(nullptr);
        OpenPicker();
    } else {
        const WindowHandle window = imageList_[static_cast<size_t>(index - 1)];
        Select(WindowRecord(window) ? window : nullptr);
    }
    SendControlMessage(parentWidget(), kMsgImagePicker, controlId_, 0);
}

void ColorImgControl::PickerColorChanged(QColor color)
{
    color_ = QColor(color.red(), color.green(), color.blue());
    update();
    if (!imageWindow_)
        SendControlMessage(parentWidget(), kMsgImagePicker, controlId_, PackColor(color_));
}

bool ColorImgControl::event(QEvent* event)
{
    if (event->type() == ControlEvent::EventType()) {
        const auto* message = static_cast<ControlEvent*>(event);
        if (message->message == kMsgImageMenuChoice) {
            Choose(message->value);
        } else if (message->message == kMsgColor) {
            const auto v = static_cast<uint32_t>(message->value);
            PickerColorChanged(QColor(v >> 16 & 255, v >> 8 & 255, v & 255));
        } else if (message->message == kMsgPickerClosed) {
            picker_ = nullptr;
        }
        return true;
    }
    if (event->type() == UserMessageEvent::EventType()) {
        const auto* message = static_cast<UserMessageEvent*>(event);
        if (message->about && message->about == imageWindow_) {
            if (message->message == kMsgImageChanged) {
                UpdatePicture();
                SendControlMessage(parentWidget(), kMsgImagePicker, controlId_, 0);
            } else if (message->message == kMsgImageRenamed) {
                name_ = ImageWindowName(imageWindow_);
            }
        }
        return true;
    }
    return QWidget::event(event);
}

void ColorImgControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    if (!label_.isEmpty()) {
        painter.setPen(Qt::black);
        painter.drawText(QRect(0, 0, labelWidth_, height()), Qt::AlignVCenter | Qt::AlignLeft,
                         label_);
    }
    const QRect square = SquareRect();
    for (int32_t i = 0; i < kBevel; ++i) {
        const QRect ring = square.adjusted(i, i, -i - 1, -i - 1);
        painter.setPen(QColor(0x40, 0x40, 0x40));
        painter.drawLine(ring.topLeft(), ring.topRight());
        painter.drawLine(ring.topLeft(), ring.bottomLeft());
        painter.setPen(Qt::white);
        painter.drawLine(ring.bottomLeft() + QPoint(1, 0), ring.bottomRight());
        painter.drawLine(ring.topRight() + QPoint(0, 1), ring.bottomRight());
    }
    const QRect inner = square.adjusted(kBevel, kBevel, -kBevel, -kBevel);
    if (!imageWindow_) {
        FillColor(painter, inner, DisplayQColor(color_.red(), color_.green(), color_.blue()));
        return;
    }
    painter.fillRect(inner, QColor(0x80, 0x80, 0x80));
    if (!picture_.isNull())
        painter.drawImage(QPoint(inner.left() + (inner.width() - picture_.width()) / 2,
                                 inner.top() + (inner.height() - picture_.height()) / 2),
                          picture_);
}

void ColorImgControl::mousePressEvent(QMouseEvent* event)
{
    if (!SquareRect().contains(event->position().toPoint())) return;
    if (event->button() == Qt::RightButton) {
        if (imageWindow_) ActivateImageWindow(imageWindow_);
        return;
    }
    if (event->button() != Qt::LeftButton) return;
    RebuildImageList();
    if (imageList_.empty()) {
        OpenPicker();
        return;
    }
    if (menu_) menu_->close();
    menu_ = new ImageMenu(this, controlId_, workspace_);
    if (pickerAllowed_ != -1)
        menu_->AddItem(0, nullptr, QStringLiteral("Select Solid Color"), color_);
    for (size_t i = 0; i < imageList_.size(); ++i)
        menu_->AddItem(static_cast<int32_t>(i) + 1, imageList_[i], QString(), QColor());
    menu_->Open(mapToGlobal(SquareRect().topLeft()), selected_);
}

ColorImgControl* CreateInputPicker(QWidget* parent, int32_t controlId, int32_t kinds,
                                   WindowHandle sourceWindow, int32_t x, int32_t y,
                                   QMdiArea* workspace)
{
    auto* control =
        new ColorImgControl(x, y, parent, QStringLiteral("Input Image:"), QString(), Qt::black,
                            controlId, -1, kinds, -1, -1, nullptr, 0, workspace);
    control->SetColorImg(Qt::black, sourceWindow);
    return control;
}

}  // namespace lv
