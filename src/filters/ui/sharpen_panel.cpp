// Sharpen's part of its panel: under the generic "Method:" list, "Radius: 3"
// over a slider from 0 to 20 and "Threshold: 0" over one from 0 to 50, both
// on the slider's 1024, shown only for Unsharp Mask; the panel's height
// follows. The texts follow the markers as they move; the preview waits for
// their release. The generic Integer rows stay hidden.
#include <QVBoxLayout>

#include "filters/filter_panel.h"
#include "filters/ui/slider_row.h"
#include "shell/messages.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr size_t kMethodParam = 0;  // the module's parameters, in order
constexpr size_t kRadiusParam = 1;
constexpr size_t kThresholdParam = 2;
constexpr int32_t kRadiusSliderId = 102;
constexpr int32_t kThresholdSliderId = 104;

SharpenParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<SharpenParams&>(*panel.state().params);
}

class SharpenPart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        for (size_t hidden : {kRadiusParam, kThresholdParam})
            if (QWidget* integer = panel.paramControl(hidden)) integer->parentWidget()->hide();
        QWidget* method = panel.paramControl(kMethodParam);
        const int at = method ? layout.indexOf(method->parentWidget()) + 1 : -1;
        const SharpenParams& p = ParamsOf(panel);
        radius_ = MakeSliderRow(panel, layout, at, FilterRadiusText(p.radius),
                                FilterSliderPosition(p.radius, kSharpenRadiusMax), kRadiusSliderId);
        threshold_ = MakeSliderRow(
            panel, layout, at < 0 ? -1 : at + 1, FilterThresholdText(p.threshold),
            FilterSliderPosition(p.threshold, kSharpenThresholdMax), kThresholdSliderId);
        ShowSliders(p.method);
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value) override
    {
        SharpenParams& p = ParamsOf(panel);
        if (controlId == TransformPanel::ParamControlId(kMethodParam) &&
            message == kMsgValueChanged) {
            const auto method = static_cast<int32_t>(value);
            if (method == p.method) return true;
            p.method = method;
            panel.ParamsChanged();
            ShowSliders(method);
            FitPanelHeight(panel);
            return true;
        }
        const bool radius = controlId == kRadiusSliderId;
        if (!radius && controlId != kThresholdSliderId) return false;
        const int32_t v =
            FilterSliderValue(LowHalf(value), radius ? kSharpenRadiusMax : kSharpenThresholdMax);
        const std::string text = radius ? FilterRadiusText(v) : FilterThresholdText(v);
        (radius ? radius_ : threshold_).text->setText(QString::fromStdString(text));
        int32_t& field = radius ? p.radius : p.threshold;
        if (message == kMsgSliderReleased && v != field) {
            field = v;
            panel.ParamsChanged();
        }
        return true;
    }

    void InputChanged(TransformPanel&) override {}

private:
    void ShowSliders(int32_t method)
    {
        radius_.row->setVisible(SharpenShowsRadius(method));
        threshold_.row->setVisible(SharpenShowsRadius(method));
    }

    SliderRow radius_, threshold_;
};

const PanelPartRegistration kPart({
    .commandId = 4019,
    .check = CheckPictureKind,
    .make = NewPanelPart<SharpenPart>,
});

}  // namespace
}  // namespace lv
