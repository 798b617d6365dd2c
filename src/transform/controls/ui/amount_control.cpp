#include "transform/controls/ui/amount_control.h"

#include <QLabel>
#include <QMdiArea>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "image/ui/display_painter.h"
#include "image/ui/image_window.h"
#include "shell/ui/events.h"
#include "shell/ui/metrics.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/image_menu.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/slider.h"
#include "transform/controls/ui/tip.h"

namespace lv {

namespace {

constexpr int32_t kSliderId = 1001;
constexpr int32_t kSwatchInset = 3;
constexpr int32_t kHoverDelay = 1000;
const char* const kMaskUserName = "Amount Mask";

// A bevel `depth` pixels wide inside `r`: light above and left, dark below
// and right when raised, the other way round when sunken.
void DrawBevel(QPainter& painter, const QRect& r, int32_t depth, bool raised)
{
    const QColor light(Qt::white), dark(0x40, 0x40, 0x40);
    for (int32_t i = 0; i < depth; ++i) {
        const QRect ring = r.adjusted(i, i, -i - 1, -i - 1);
        painter.setPen(raised ? light : dark);
        painter.drawLine(ring.topLeft(), ring.topRight());
        painter.drawLine(ring.topLeft(), ring.bottomLeft());
        painter.setPen(raised ? dark : light);
        painter.drawLine(ring.bottomLeft() + QPoint(1, 0), ring.bottomRight());
        painter.drawLine(ring.topRight() + QPoint(0, 1), ring.bottomRight());
    }
}

}  // namespace

AmountControl::AmountControl(int32_t x, int32_t y, int32_t width, QWidget* panel, int32_t controlId,
                             WindowHandle sourceWindow, QMdiArea* workspace)
    : QWidget(panel),
      controlId_(controlId),
      panel_(panel),
      workspace_(FindWorkspace(workspace, panel, sourceWindow)),
      text_(new QLabel(this)),
      slider_(new SliderControl(0, Metrics().textHeight, 1, this, kSliderId))
{
    ApplyPanelStyle(this);
    setMouseTracking(true);
    if (const ImageWindow* source = sourceWindow ? WindowRecord(sourceWindow) : nullptr) {
        maskWidth_ = source->image.width;
        maskHeight_ = source->image.height;
    }
    hoverTimer_.setSingleShot(true);
    hoverTimer_.setInterval(kHoverDelay);
    QObject::connect(&hoverTimer_, &QTimer::timeout, this, [this] { ShowHoverTip(); });
    setGeometry(x, y, width, Metrics().textHeight + kSliderHeight);
    Layout();
    Refresh();
}

AmountControl::~AmountControl()
{
    EndHover();
    Unmark();
}

QRect AmountControl::SwatchRect() const
{
    const int32_t side = height();
    return QRect(width() - side, 0, side, side);
}

void AmountControl::Layout()
{
    // The text and the slider take what the swatch and a gap of 3 leave.
    const int32_t sliderWidth = std::max(width() - SwatchRect().width() - 3, 1);
    text_->setGeometry(0, 0, sliderWidth, Metrics().textHeight);
    slider_->setGeometry(0, Metrics().textHeight, sliderWidth, kSliderHeight);
}

void AmountControl::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    Layout();
    UpdatePicture();
}

QString AmountControl::text() const { return text_->text(); }

void AmountControl::UpdateText() { text_->setText(QString::fromStdString(AmountText(block_))); }

void AmountControl::UpdatePicture()
{
    picture_ = QImage();
    // Through the window's record rather than the block's pointer, so that a
    // mask that isn't held in use can never be read after its window closed.
    const ImageWindow* record = block_.maskWindow ? WindowRecord(block_.maskWindow) : nullptr;
    if (record) picture_ = ThumbnailPicture(record->image, SwatchRect().width() - 2 * kSwatchInset);
    update(SwatchRect());
}

void AmountControl::Refresh()
{
    slider_->SetValues(block_.amount, block_.amount2);
    UpdateText();
    UpdatePicture();
    update();
}

// ---- Masks --------------------------------------------------------------------

void AmountControl::RebuildMaskList()
{
    if (!workspace_) workspace_ = FindWorkspace(nullptr, this, nullptr);
    maskList_.clear();
    if (workspace_) {
        const bool anySize = maskWidth_ == -1 && maskHeight_ == -1;
        for (ImageSubWindow* window : ImageWindows(workspace_)) {
            const ImageWindow& record = window->record();
            if (record.windowKind != kWindowImage || record.image.kind != kImageGray) continue;
            if (!anySize &&
                (record.image.width != maskWidth_ || record.image.height != maskHeight_))
                continue;
            maskList_.push_back(window->handle());
        }
    }
    maskIndex_ = FindMask(maskName_);
}

int32_t AmountControl::FindMask(const QString& name) const
{
    if (name.isEmpty()) return 0;
    for (size_t i = 0; i < maskList_.size(); ++i)
        if (ImageWindowName(maskList_[i]) == name) return static_cast<int32_t>(i) + 1;
    return 0;
}

void AmountControl::Mark(WindowHandle window)
{
    Unmark();
    // A failure to note the use is not reported: the control works on.
    if (UserAdd(HandleOf(this), window, kMaskUserName, true) == 0) marked_ = window;
}

void AmountControl::Unmark()
{
    if (marked_) UserRemove(HandleOf(this), marked_);
    marked_ = nullptr;
}

void AmountControl::SetAmount(const AmountBlock& block)
{
    block_ = block;
    Unmark();
    const ImageWindow* record = block.maskWindow ? WindowRecord(block.maskWindow) : nullptr;
    if (record) {
        maskName_ = ImageWindowName(block.maskWindow);
        block_.mask = &record->image;
        RebuildMaskList();
        if (maskIndex_ != 0) Mark(block.maskWindow);
    } else {
        // No mask, or one whose window is gone.
        if (block.maskWindow) AmountClearMask(block_);
        block_.mask = nullptr;
        maskName_.clear();
        maskIndex_ = 0;
    }
    Refresh();
}

void AmountControl::SetAmountMask(WindowHandle window)
{
    Unmark();
    const ImageWindow* record = window ? WindowRecord(window) : nullptr;
    if (!record) {
        maskIndex_ = 0;
        maskName_.clear();
        AmountClearMask(block_);
    } else {
        maskName_ = ImageWindowName(window);
        AmountSetMask(block_, &record->image, window);
        RebuildMaskList();
        if (maskIndex_ != 0) Mark(window);
    }
    Refresh();
}

void AmountControl::SetMaskSize(int32_t width, int32_t height)
{
    maskWidth_ = width;
    maskHeight_ = height;
}

void AmountControl::ChooseMask(int64_t index)
{
    if (index < 0 || index > static_cast<int64_t>(maskList_.size())) return;
    Unmark();
    maskIndex_ = static_cast<int32_t>(index);
    const WindowHandle window = index ? maskList_[static_cast<size_t>(index - 1)] : nullptr;
    const ImageWindow* record = window ? WindowRecord(window) : nullptr;
    if (!record) {
        maskIndex_ = 0;
        maskName_.clear();
        AmountClearMask(block_);
    } else {
        Mark(window);
        maskName_ = ImageWindowName(window);
        AmountSetMask(block_, &record->image, window);
    }
    Refresh();
    SendControlMessage(panel_, kMsgAmountChanged, controlId_, 0);
}

void AmountControl::OpenMenu()
{
    RebuildMaskList();
    if (maskList_.empty()) return;
    if (menu_) menu_->close();
    menu_ = new ImageMenu(this, controlId_, workspace_);
    // "No Mask" shows the strength it would leave: the current one without a
    // mask, full with one.
    const int32_t gray =
        block_.amount2 == -1 ? std::clamp(block_.amount * 255 / 1024, 0, 255) : 255;
    menu_->AddItem(0, nullptr, QStringLiteral("No Mask"), QColor(gray, gray, gray));
    for (size_t i = 0; i < maskList_.size(); ++i)
        menu_->AddItem(static_cast<int32_t>(i) + 1, maskList_[i], QString(), QColor());
    menu_->Open(mapToGlobal(QPoint(0, 0)), maskIndex_);
}

// ---- Events -------------------------------------------------------------------

bool AmountControl::event(QEvent* event)
{
    if (event->type() == ControlEvent::EventType()) {
        const auto* message = static_cast<ControlEvent*>(event);
        const int32_t value = LowHalf(message->value), value2 = HighHalf(message->value);
        switch (message->message) {
        case kMsgSliderMoved:
            if (value != block_.amount || value2 != block_.amount2) {
                block_.amount = value;
                block_.amount2 = value2;
                UpdateText();
                if (!block_.maskWindow) update(SwatchRect());
            }
            break;
        case kMsgSliderReleased:
            block_.amount = value;
            block_.amount2 = value2;
            UpdateText();
            SendControlMessage(panel_, kMsgAmountChanged, controlId_, 0);
            if (!block_.maskWindow) update(SwatchRect());
            break;
        case kMsgImageMenuChoice: ChooseMask(message->value); break;
        default: break;
        }
        return true;
    }
    if (event->type() == UserMessageEvent::EventType()) {
        const auto* message = static_cast<UserMessageEvent*>(event);
        if (message->about && message->about == block_.maskWindow) {
            if (message->message == kMsgImageChanged) {
                SendControlMessage(panel_, kMsgAmountChanged, controlId_, 0);
                UpdatePicture();
                update();
            } else if (message->message == kMsgImageRenamed) {
                maskName_ = ImageWindowName(message->about);
            }
        }
        return true;
    }
    return QWidget::event(event);
}

void AmountControl::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRect swatch = SwatchRect();
    const bool masked = block_.maskWindow != nullptr;
    const QRect inner = swatch.adjusted(kSwatchInset, kSwatchInset, -kSwatchInset, -kSwatchInset);
    DrawBevel(painter, swatch, kSwatchInset, masked);
    if (!masked) {
        const int32_t level = std::clamp(amount_level(block_.amount), 0, 255);
        FillColor(painter, inner, DisplayQColor(level, level, level));
        return;
    }
    painter.fillRect(inner, QColor(0x80, 0x80, 0x80));
    if (!picture_.isNull()) {
        painter.drawImage(QPoint(inner.left() + (inner.width() - picture_.width()) / 2,
                                 inner.top() + (inner.height() - picture_.height()) / 2),
                          picture_);
    }
}

void AmountControl::mousePressEvent(QMouseEvent* event)
{
    EndHover();
    if (event->position().toPoint().x() < SwatchRect().left()) return;
    if (event->button() == Qt::LeftButton) {
        OpenMenu();
    } else if (event->button() == Qt::RightButton) {
        RebuildMaskList();
        if (!maskList_.empty() && maskIndex_ != 0)
            ActivateImageWindow(maskList_[static_cast<size_t>(maskIndex_ - 1)]);
    }
}

// ---- The tip ------------------------------------------------------------------

void AmountControl::mouseMoveEvent(QMouseEvent* event)
{
    const bool over = SwatchRect().contains(event->position().toPoint());
    if (over && !hovering_) {
        hovering_ = true;
        hoverTimer_.start();
    } else if (!over && hovering_) {
        EndHover();
    }
}

void AmountControl::leaveEvent(QEvent* event)
{
    EndHover();
    QWidget::leaveEvent(event);
}

void AmountControl::ShowHoverTip()
{
    const QRect swatch = SwatchRect();
    ShowTip(mapToGlobal(QPoint(swatch.left(), swatch.bottom() + 1)), this,
            QStringLiteral("Select Amount Mask"));
    tipShown_ = true;
}

void AmountControl::EndHover()
{
    hoverTimer_.stop();
    if (tipShown_) HideTip();
    tipShown_ = false;
    hovering_ = false;
}

}  // namespace lv
