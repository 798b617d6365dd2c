// Crop's part of its panel, and the box it draws over the input window.
// Top to bottom the panel reads: input picker, "Size:" with the box's two
// sizes and the units, "Proportions:", the orientation, "Width/Height:" for
// Custom, then the four margins, each stepped a pixel at a time by its
// arrows. While the panel is open the crop tool takes the input window's
// mouse: a corner handle drags that corner, the centre's cross the whole
// box. The box's arithmetic is the engine's (geometry/crop_drag.h).
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPointer>
#include <QRegion>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "geometry/crop.h"
#include "geometry/crop_drag.h"
#include "image/image.h"
#include "image/ui/image_window.h"
#include "image/ui/tools.h"
#include "image/zoom.h"
#include "shell/errors.h"
#include "shell/messages.h"
#include "shell/text.h"
#include "shell/ui/metrics.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/pedit.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr int32_t kCropCommand = 4002;

// The panel's own controls. The margins' up-down controls are 102, 104,
// 106 and 108 in the order of CropSide.
constexpr int32_t kFirstMarginId = 102;
constexpr int32_t kUnitsId = 110;
constexpr int32_t kCustomWidthId = 111;
constexpr int32_t kCustomHeightId = 112;
constexpr int32_t kOrientationId = 113;

constexpr int32_t kFieldWidth = 64;  // the read-only values
constexpr int32_t kArrowWidth = 16;

constexpr int32_t kHandleHalf = 2;  // the corners' 5 by 5 squares
constexpr int32_t kCrossHalf = 4;   // the centre's 9 by 9 cross

CropParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<CropParams&>(*panel.state().params);
}

// The index of the module's parameter `name`; the list's size when absent.
size_t ParamIndex(const TransformModule& module, const char* name)
{
    for (size_t i = 0; i < module.params.size(); ++i)
        if (std::string(module.params[i].name) == name) return i;
    return module.params.size();
}

// The inverted box over a window's picture: its outline, a square at each
// corner and a cross at the centre, inverted with the gray pen so that it
// shows on any picture. It covers the window's client area, lets the mouse
// through to it, and is drawn again whenever the picture under it is.
class CropOverlay : public QWidget {
public:
    CropOverlay(ImageSubWindow* window, const CropBox* box)
        : QWidget(window->view()->viewport()), window_(window), box_(box)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
        setFocusPolicy(Qt::NoFocus);
        parentWidget()->installEventFilter(this);
        setGeometry(parentWidget()->rect());
        show();
        raise();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == parentWidget() && event->type() == QEvent::Resize)
            setGeometry(parentWidget()->rect());
        return QWidget::eventFilter(watched, event);
    }

    void paintEvent(QPaintEvent*) override
    {
        const CropScreen s =
            crop_on_screen(*box_, window_->record(), width(), height(), window_->Metrics());
        if (s.clipRight < s.clipLeft || s.clipBottom < s.clipTop) return;
        const CropBox& b = s.box;
        const int32_t left = std::min(b.x1, b.x2), right = std::max(b.x1, b.x2);
        const int32_t top = std::min(b.y1, b.y2), bottom = std::max(b.y1, b.y2);
        // Every pixel to invert, once: an inverted pixel inverted again
        // would vanish where the outline runs through a handle.
        QRegion marks;
        marks += QRect(left, top, right - left + 1, 1);
        marks += QRect(left, bottom, right - left + 1, 1);
        marks += QRect(left, top, 1, bottom - top + 1);
        marks += QRect(right, top, 1, bottom - top + 1);
        for (const auto& [x, y] : {std::pair{b.x1, b.y1}, std::pair{b.x2, b.y1},
                                   std::pair{b.x2, b.y2}, std::pair{b.x1, b.y2}})
            marks +=
                QRect(x - kHandleHalf, y - kHandleHalf, 2 * kHandleHalf + 1, 2 * kHandleHalf + 1);
        const int32_t cx = static_cast<int32_t>((int64_t{b.x1} + b.x2) / 2);
        const int32_t cy = static_cast<int32_t>((int64_t{b.y1} + b.y2) / 2);
        marks += QRect(cx - kCrossHalf, cy, 2 * kCrossHalf + 1, 1);
        marks += QRect(cx, cy - kCrossHalf, 1, 2 * kCrossHalf + 1);
        marks &= QRect(QPoint(s.clipLeft, s.clipTop), QPoint(s.clipRight, s.clipBottom));

        QPainter painter(this);
        painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
        for (const QRect& r : marks) painter.fillRect(r, QColor(128, 128, 128));
    }

private:
    ImageSubWindow* window_;
    const CropBox* box_;
};

// A read-only value on the panel's edit colour.
QLineEdit* ValueField(QWidget* parent, int32_t x)
{
    auto* field = new QLineEdit(parent);
    field->setReadOnly(true);
    field->setFocusPolicy(Qt::NoFocus);
    field->setGeometry(x, 0, kFieldWidth, Metrics().controlHeight);
    return field;
}

// A row of the panel for controls placed side by side from the left.
ControlRow* NewRow(TransformPanel& panel)
{
    auto* row = new ControlRow(&panel);
    ApplyPanelStyle(row);
    row->setMinimumHeight(Metrics().controlHeight);
    return row;
}

// A caption at x, sized to its text; the x after it.
int32_t Caption(QWidget* row, const QString& text, int32_t x, int32_t width = 0)
{
    auto* label = new QLabel(text, row);
    const int32_t w = std::max(width, ControlLabelWidth(text));
    label->setGeometry(x, 0, w, Metrics().controlHeight);
    return x + w;
}

class CropPart;
CropPart* gPart = nullptr;  // the open panel's part while it holds the tool

void ToolHandle(ImageSubWindow& window, int32_t x, int32_t y, int32_t event);
void ToolEnd();

class CropPart : public PanelPart {
public:
    ~CropPart() override
    {
        if (gPart == this) {
            gPart = nullptr;
            if (CurrentTool() == kToolCrop) ToolSwitch(kToolNone);
        }
        delete overlay_;
    }

    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        panel_ = &panel;
        const TransformModule& m = panel.module();
        proportions_ = ParamIndex(m, "proportions");
        orientation_ = ParamIndex(m, "orientation");
        customWidth_ = ParamIndex(m, "custom-width");
        customHeight_ = ParamIndex(m, "custom-height");
        // The generic rows of the orientation and the custom sizes give way
        // to the panel's own; "Proportions:" stays where it is.
        for (size_t index : {orientation_, customWidth_, customHeight_})
            if (QWidget* control = panel.paramControl(index)) control->parentWidget()->hide();
        QWidget* list = panel.paramControl(proportions_);
        const int at = list ? layout.indexOf(list->parentWidget()) : -1;
        if (at >= 0) {
            layout.insertWidget(at, SizeRow(panel));
            layout.insertWidget(at + 2, OrientationRow(panel));
            layout.insertWidget(at + 3, CustomRow(panel));
        } else {
            for (QWidget* row : {SizeRow(panel), OrientationRow(panel), CustomRow(panel)})
                layout.addWidget(row);
        }
        int32_t labelWidth = 0;
        for (const char* label : kMarginLabels)
            labelWidth = std::max(labelWidth, ControlLabelWidth(QString::fromLatin1(label)));
        for (int32_t side = kCropLeft; side <= kCropBottom; ++side)
            layout.addWidget(MarginRow(panel, side, labelWidth));

        ResetBox();
        StartTool();
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value) override
    {
        CropParams& p = ParamsOf(panel);
        const TransformModule& m = panel.module();
        if (proportions_ < m.params.size() &&
            controlId == TransformPanel::ParamControlId(proportions_)) {
            if (message == kMsgValueChanged &&
                ParamSetInt(m.params[proportions_], p, static_cast<int32_t>(value)))
                Refit();
            return true;
        }
        if (controlId == kOrientationId) {
            if (message == kMsgValueChanged && orientation_ < m.params.size() &&
                ParamSetInt(m.params[orientation_], p, static_cast<int32_t>(value)))
                Refit();
            return true;
        }
        if (controlId == kCustomWidthId || controlId == kCustomHeightId) {
            const size_t index = controlId == kCustomWidthId ? customWidth_ : customHeight_;
            PEditControl* edit = controlId == kCustomWidthId ? customWidthEdit_ : customHeightEdit_;
            double number = 0.0;
            // A number half typed, or out of range, waits for the next key.
            if (message == kMsgText && index < m.params.size() &&
                ParseReal(edit->text().toStdString(), number) == kOk &&
                number >= m.params[index].minimum && number <= m.params[index].maximum &&
                ParamSetReal(m.params[index], p, number))
                Refit();
            return true;
        }
        if (controlId == kUnitsId) {
            if (message == kMsgValueChanged) {
                p.units = static_cast<int32_t>(value);
                ShowBox();
            }
            return true;
        }
        if (controlId >= kFirstMarginId && controlId <= kFirstMarginId + 2 * kCropBottom &&
            (controlId - kFirstMarginId) % 2 == 0) {
            const Image* image = Input();
            if (message == kMsgInteger && image) {
                const int32_t side = (controlId - kFirstMarginId) / 2;
                const CropBox stepped = crop_step_side(box_, side, static_cast<int32_t>(value),
                                                       image->width, image->height, Ratio());
                if (stepped.x1 != box_.x1 || stepped.y1 != box_.y1 || stepped.x2 != box_.x2 ||
                    stepped.y2 != box_.y2) {
                    box_ = stepped;
                    BoxChanged();
                }
            }
            return true;
        }
        return false;
    }

    void InputChanged(TransformPanel& panel) override
    {
        drag_ = CropDrag{};
        ResetBox();
        // The preview restarts after this, at the new box's size.
        TransformOutputSize(panel.module(), Input(), *panel.state().params,
                            panel.state().outputWidth, panel.state().outputHeight);
        delete overlay_;
        if (gPart == this && panel.sourceWindow())
            overlay_ = new CropOverlay(panel.sourceWindow(), &box_);
    }

    // The crop tool's events on an image window.
    void Mouse(ImageSubWindow& window, int32_t x, int32_t y, int32_t event)
    {
        if (&window != panel_->sourceWindow()) return;
        const Image& image = window.record().image;
        switch (event) {
        case kToolDown:
        case kToolShiftDown: {
            const QWidget* client = window.view()->viewport();
            const CropScreen s = crop_on_screen(box_, window.record(), client->width(),
                                                client->height(), window.Metrics());
            int32_t ix = 0, iy = 0;
            ToImage(window, x, y, ix, iy);
            crop_drag_start(drag_, box_, crop_handle_at(s.box, x, y), ix, iy);
            break;
        }
        case kToolMove:
        case kToolShiftMove:
        case kToolUp: {
            if (drag_.handle == kCropHandleNone) return;
            int32_t ix = 0, iy = 0;
            ToImage(window, x, y, ix, iy);
            box_ = crop_drag_to(drag_, ix, iy, image.width, image.height, Ratio());
            if (event != kToolUp) {
                ShowBox();
                return;
            }
            // The record, and with it the preview's size, follow once, at
            // the release.
            drag_ = CropDrag{};
            BoxChanged();
            break;
        }
        case kToolWindowGone: drag_ = CropDrag{}; break;
        default: break;
        }
    }

    // Another tool took the mouse: the box goes from the window.
    void ToolEnded()
    {
        gPart = nullptr;
        drag_ = CropDrag{};
        delete overlay_;
    }

private:
    static constexpr const char* kMarginLabels[4] = {
        "Left Margin:", "Right Margin:", "Top Margin:", "Bottom Margin:"};

    const Image* Input() const
    {
        ImageSubWindow* source = panel_ ? panel_->sourceWindow() : nullptr;
        return source ? &source->record().image : nullptr;
    }

    double Ratio() const
    {
        const CropParams& p = ParamsOf(*panel_);
        return crop_ratio(p.proportions, p.orientation, p.customWidth, p.customHeight);
    }

    static void ToImage(ImageSubWindow& window, int32_t x, int32_t y, int32_t& ix, int32_t& iy)
    {
        const ImageWindow& record = window.record();
        const QWidget* client = window.view()->viewport();
        ClientToImage(record, ZoomSubjectOf(record), client->width(), client->height(),
                      window.Metrics(), x, y, ix, iy, false);
    }

    void StartTool()
    {
        static const bool registered = (RegisterTool(kToolCrop, ToolHandle, ToolEnd), true);
        (void)registered;
        if (gPart && gPart != this) gPart->ToolEnded();
        ToolSwitch(kToolCrop);
        gPart = this;
        if (panel_->sourceWindow()) overlay_ = new CropOverlay(panel_->sourceWindow(), &box_);
    }

    // The whole picture, refitted from its top left corner when proportions
    // are chosen.
    void ResetBox()
    {
        const Image* image = Input();
        if (!image || image->width < 1 || image->height < 1) {
            box_ = CropBox{};
            ShowBox();
            return;
        }
        box_ = {0, image->height - 1, image->width - 1, 0};
        box_ = crop_fit(box_, kCropCorner22, Ratio(), image->width, image->height);
        crop_store_box(ParamsOf(*panel_), box_, image->height);
        ShowBox();
    }

    // The proportions changed: the box takes them at once, its top left
    // corner (x1, y1) staying.
    void Refit()
    {
        if (const Image* image = Input())
            box_ = crop_fit(box_, kCropCorner22, Ratio(), image->width, image->height);
        BoxChanged();
    }

    void BoxChanged()
    {
        if (const Image* image = Input()) crop_store_box(ParamsOf(*panel_), box_, image->height);
        ShowBox();
        panel_->ParamsChanged();
    }

    // The texts of the box, and the box on the picture.
    void ShowBox()
    {
        const Image* image = Input();
        if (image && width_) {
            const int32_t units = ParamsOf(*panel_).units;
            const double resolution = image->resolution;
            auto show = [&](QLineEdit* field, int32_t pixels) {
                field->setText(QString::fromStdString(crop_length_text(pixels, units, resolution)));
            };
            show(width_, std::abs(box_.x2 - box_.x1) + 1);
            show(height_, std::abs(box_.y2 - box_.y1) + 1);
            const CropMargins m = crop_margins(box_, image->width, image->height);
            show(margins_[kCropLeft], m.left);
            show(margins_[kCropRight], m.right);
            show(margins_[kCropTop], m.top);
            show(margins_[kCropBottom], m.bottom);
        }
        if (overlay_) overlay_->update();
    }

    QWidget* SizeRow(TransformPanel& panel)
    {
        ControlRow* row = NewRow(panel);
        const int32_t gap = Metrics().margin;
        int32_t x = Caption(row, QStringLiteral("Size:"), 0);
        width_ = ValueField(row, x);
        x = Caption(row, QStringLiteral("by"), x + kFieldWidth + gap);
        height_ = ValueField(row, x);
        x += kFieldWidth + gap;
        units_ = new PopupListControl(x, 0, row, ParamsOf(panel).units,
                                      PackPopupText("", {"pixels", "in", "mm", "cm"}), kUnitsId);
        row->setMinimumWidth(x + units_->width());
        row->setMinimumHeight(std::max(row->minimumHeight(), units_->height()));
        return row;
    }

    QWidget* OrientationRow(TransformPanel& panel)
    {
        ControlRow* row = NewRow(panel);
        orientationList_ =
            new PopupListControl(0, 0, row, ParamsOf(panel).orientation,
                                 PackPopupText("", {"Portrait", "Landscape"}), kOrientationId);
        row->setMinimumWidth(orientationList_->width());
        row->setMinimumHeight(std::max(row->minimumHeight(), orientationList_->height()));
        return row;
    }

    QWidget* CustomRow(TransformPanel& panel)
    {
        ControlRow* row = NewRow(panel);
        const CropParams& p = ParamsOf(panel);
        auto text = [](double value) {
            std::string t;
            RealToText(value, t, 3, false, false);
            return QString::fromStdString(t);
        };
        customWidthEdit_ = new PEditControl(0, 0, kFieldWidth, row, QStringLiteral("Width/Height:"),
                                            text(p.customWidth), kCustomWidthId);
        customHeightEdit_ =
            new PEditControl(customWidthEdit_->width() + Metrics().margin, 0, kFieldWidth, row,
                             QString(), text(p.customHeight), kCustomHeightId);
        row->setMinimumWidth(customHeightEdit_->geometry().right() + 1);
        return row;
    }

    // "Left Margin:" and the others: the value and its up and down arrows,
    // which ask for one pixel more or less margin on that side.
    QWidget* MarginRow(TransformPanel& panel, int32_t side, int32_t labelWidth)
    {
        ControlRow* row = NewRow(panel);
        const int32_t id = kFirstMarginId + 2 * side;
        const int32_t x = Caption(row, QString::fromLatin1(kMarginLabels[side]), 0, labelWidth);
        margins_[side] = ValueField(row, x);
        const int32_t height = Metrics().controlHeight, half = height / 2;
        for (int32_t step : {1, -1}) {
            auto* arrow = new QToolButton(row);
            arrow->setArrowType(step > 0 ? Qt::UpArrow : Qt::DownArrow);
            arrow->setGeometry(x + kFieldWidth, step > 0 ? 0 : half, kArrowWidth,
                               step > 0 ? half : height - half);
            arrow->setAutoRepeat(true);
            arrow->setFocusPolicy(Qt::NoFocus);
            arrow->setObjectName(step > 0 ? QStringLiteral("up") : QStringLiteral("down"));
            QObject::connect(arrow, &QToolButton::clicked, row,
                             [row, id, step] { SendControlMessage(row, kMsgInteger, id, step); });
        }
        row->setMinimumWidth(x + kFieldWidth + kArrowWidth);
        return row;
    }

    TransformPanel* panel_ = nullptr;
    size_t proportions_ = 0, orientation_ = 0, customWidth_ = 0, customHeight_ = 0;
    CropBox box_;
    CropDrag drag_;
    QPointer<CropOverlay> overlay_;
    QLineEdit* width_ = nullptr;
    QLineEdit* height_ = nullptr;
    QLineEdit* margins_[4] = {};
    PopupListControl* units_ = nullptr;
    PopupListControl* orientationList_ = nullptr;
    PEditControl* customWidthEdit_ = nullptr;
    PEditControl* customHeightEdit_ = nullptr;
};

void ToolHandle(ImageSubWindow& window, int32_t x, int32_t y, int32_t event)
{
    if (gPart) gPart->Mouse(window, x, y, event);
}

void ToolEnd()
{
    if (gPart) gPart->ToolEnded();
}

const PanelPartRegistration kPart({
    .commandId = kCropCommand,
    .check = CheckPictureKind,
    .make = NewPanelPart<CropPart>,
});

}  // namespace
}  // namespace lv
