// Blur's part of its panel: under the generic "Method:" list, "Radius: 3"
// over a slider from 0 to 128 (carried as radius * 8 on the slider's 1024),
// shown only for Gaussian; the panel's height follows. The text follows the
// marker as it moves; the preview waits for its release. The generic
// Integer row of the radius stays hidden.
#include <QVBoxLayout>

#include "filters/filter_panel.h"
#include "filters/ui/slider_row.h"
#include "shell/messages.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr size_t kMethodParam = 0;  // the module's parameters, in order
constexpr size_t kRadiusParam = 1;
constexpr int32_t kRadiusSliderId = 102;

BlurParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<BlurParams&>(*panel.state().params);
}

class BlurPart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        if (QWidget* integer = panel.paramControl(kRadiusParam)) integer->parentWidget()->hide();
        QWidget* method = panel.paramControl(kMethodParam);
        const int at = method ? layout.indexOf(method->parentWidget()) + 1 : -1;
        const int32_t radius = ParamsOf(panel).radius;
        radius_ = MakeSliderRow(panel, layout, at, FilterRadiusText(radius),
                                FilterSliderPosition(radius, kBlurRadiusMax), kRadiusSliderId);
        radius_.row->setVisible(BlurShowsRadius(ParamsOf(panel).method));
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value) override
    {
        BlurParams& p = ParamsOf(panel);
        if (controlId == TransformPanel::ParamControlId(kMethodParam) &&
            message == kMsgValueChanged) {
            const auto method = static_cast<int32_t>(value);
            if (method == p.method) return true;
            p.method = method;
            panel.ParamsChanged();
            radius_.row->setVisible(BlurShowsRadius(method));
            FitPanelHeight(panel);
            return true;
        }
        if (controlId != kRadiusSliderId) return false;
        const int32_t radius = FilterSliderValue(LowHalf(value), kBlurRadiusMax);
        radius_.text->setText(QString::fromStdString(FilterRadiusText(radius)));
        if (message == kMsgSliderReleased && radius != p.radius) {
            p.radius = radius;
            panel.ParamsChanged();
        }
        return true;
    }

    void InputChanged(TransformPanel&) override {}

private:
    SliderRow radius_;
};

const PanelPartRegistration kPart({
    .commandId = 4020,
    .check = CheckPictureKind,
    .make = NewPanelPart<BlurPart>,
});

}  // namespace
}  // namespace lv
