// Brightness Curve's part of its panel: the Curve control over the input's
// histogram, and the colour-space list, shown for colour pictures only.
// Top to bottom the panel reads: input picker, Amount, curve, colour space.
#include <QVBoxLayout>

#include "image/image.h"
#include "image/ui/image_window.h"
#include "shell/errors.h"
#include "shell/messages.h"
#include "tone/brightness_curve.h"
#include "tone/curves/ui/curve_control.h"
#include "tone/histogram.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr int32_t kCurveId = 102;
constexpr size_t kColorSpaceParam = 1;  // the module's second parameter
constexpr int32_t kCurveHeight = 240;

BrightnessCurveParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<BrightnessCurveParams&>(*panel.state().params);
}

class CurvePart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        // The curve grows with the panel; its row passes its messages on.
        auto* row = new ControlRow(&panel);
        auto* rowLayout = new QVBoxLayout(row);
        rowLayout->setContentsMargins(0, 0, 0, 0);
        curve_ = new CurveControl(0, 0, 300, kCurveHeight, row, kCurveId, 0, nullptr, nullptr,
                                  nullptr);
        curve_->setMinimumHeight(kCurveHeight);
        rowLayout->addWidget(curve_);

        QWidget* list = panel.paramControl(kColorSpaceParam);
        QWidget* listRow = list ? list->parentWidget() : nullptr;
        if (listRow) layout.removeWidget(listRow);
        layout.addWidget(row, 1);
        if (listRow) layout.addWidget(listRow);
        TakeHistograms(panel);
        ShowColorSpace(panel);
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId,
                 int64_t value) override
    {
        if (controlId == kCurveId) {
            if (message == kMsgCurveChanged) {
                curve_->GetCurveTable(ParamsOf(panel).table);
                panel.ParamsChanged();
            }
            return true;
        }
        if (controlId == TransformPanel::ParamControlId(kColorSpaceParam) &&
            message == kMsgValueChanged) {
            // The list's order is the colour spaces' own: HSV, HSL, RGB.
            const auto space = static_cast<int32_t>(value);
            if (space != ParamsOf(panel).colorSpace) {
                ParamsOf(panel).colorSpace = space;
                TakeHistograms(panel);
                panel.ParamsChanged();
            }
            return true;
        }
        return false;
    }

    void InputChanged(TransformPanel& panel) override
    {
        ShowColorSpace(panel);
        TakeHistograms(panel);
    }

private:
    // The histograms behind the curve: binary and gray pictures their own,
    // and colour ones what the colour space acts on: the value, the
    // lightness, or red, green and blue. The probe reads the same.
    void TakeHistograms(TransformPanel& panel)
    {
        const Image* image = panel.input();
        HistogramRecord* h = channels_;
        if (!image || CheckPictureKind(image) != kOk) {
            curve_->SetHistograms(0, nullptr, nullptr, nullptr);
            curve_->SetProbeChannel(0);
            return;
        }
        const int32_t space = ParamsOf(panel).colorSpace;
        if (image->kind == kImageColor && space == kColorSpaceRgb) {
            histogram_rgb(*image, h[0], h[1], h[2], kHistogramBudget);
            curve_->SetHistograms(2, &h[0], &h[1], &h[2]);
            curve_->SetProbeChannel(5);
            return;
        }
        if (image->kind == kImageBinary)
            histogram_binary(*image, h[0], kHistogramBudget);
        else if (image->kind == kImageGray)
            histogram_gray(*image, h[0], kHistogramBudget);
        else if (space == kColorSpaceHsl)
            histogram_lightness(*image, h[0], kHistogramBudget);
        else
            histogram_value(*image, h[0], kHistogramBudget);
        curve_->SetHistograms(1, &h[0], nullptr, nullptr);
        curve_->SetProbeChannel(image->kind == kImageColor && space == kColorSpaceHsl ? 2 : 1);
    }

    static void ShowColorSpace(TransformPanel& panel) { panel.ShowRowForColour("color-space"); }

    // The records the Curve control draws from, which must live as long as
    // it does.
    HistogramRecord channels_[3];
    CurveControl* curve_ = nullptr;
};

const PanelPartRegistration kPart({
    .commandId = 4050,
    .check = CheckPictureKind,
    .make = NewPanelPart<CurvePart>,
});

}  // namespace
}  // namespace lv
