// Emboss's part of its panel: the radius and the height on sliders from 0 to
// 10, each with its value above it, and the angle on a Compass. Top to
// bottom the panel reads: input picker, Amount, radius, method, angle,
// height, colour space (shown for colour pictures only).
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include "shell/messages.h"
#include "shell/text.h"
#include "transform/controls/ui/compass.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/slider.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

// The module's parameters, in their order.
constexpr size_t kRadiusParam = 0;
constexpr size_t kMethodParam = 1;
constexpr size_t kAngleParam = 2;
constexpr size_t kHeightParam = 3;
constexpr size_t kColorSpaceParam = 4;

constexpr int32_t kCompassId = 104;
constexpr int32_t kRadiusSliderId = 110;
constexpr int32_t kHeightSliderId = 111;
constexpr int32_t kCompassSize = 64;
constexpr int32_t kSliderWidth = 300;

// The sliders run 0 to 1024 for 0 to 10.
int32_t SliderPosition(double value) { return static_cast<int32_t>(value * 1024.0 / 10.0); }
double SliderValue(int32_t position) { return position * 10.0 / 1024.0; }

class EmbossPart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        QWidget* method = TakeRow(panel, layout, kMethodParam);
        QWidget* space = TakeRow(panel, layout, kColorSpaceParam);
        AddSlider(panel, layout, kRadiusParam, kRadiusSliderId, radiusText_, radius_);
        if (method) layout.addWidget(method);

        auto* row = new ControlRow(&panel);
        auto* rowLayout = new QHBoxLayout(row);
        rowLayout->setContentsMargins(0, 0, 0, 0);
        rowLayout->addWidget(new QLabel(QStringLiteral("Angle:"), row));
        const double angle = Real(panel, kAngleParam);
        compass_ = new CompassControl(row, 0, 0, kCompassSize, kCompassSize,
                                      static_cast<int32_t>(4096.0 * angle / 360.0), kCompassId);
        compass_->setFixedSize(kCompassSize, kCompassSize);
        rowLayout->addWidget(compass_);
        rowLayout->addStretch();
        layout.addWidget(row);

        AddSlider(panel, layout, kHeightParam, kHeightSliderId, heightText_, height_);
        if (space) layout.addWidget(space);
        ShowColorSpace(panel);
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value) override
    {
        if (controlId == kRadiusSliderId || controlId == kHeightSliderId) {
            const size_t param = controlId == kRadiusSliderId ? kRadiusParam : kHeightParam;
            const double v = SliderValue(static_cast<int16_t>(value & 0xFFFF));
            // The text follows the marker; the preview waits for its release.
            ShowValue(panel, param, v, param == kRadiusParam ? radiusText_ : heightText_);
            if (message == kMsgSliderReleased && Set(panel, param, v)) panel.ParamsChanged();
            return true;
        }
        if (controlId == kCompassId) {
            if (message == kMsgCompassReleased &&
                Set(panel, kAngleParam, static_cast<double>(value) * 360.0 / 4096.0))
                panel.ParamsChanged();
            return true;
        }
        return false;
    }

    void InputChanged(TransformPanel& panel) override { ShowColorSpace(panel); }

private:
    static const ParamDecl& Decl(TransformPanel& panel, size_t param)
    {
        return panel.module().params[param];
    }
    static double Real(TransformPanel& panel, size_t param)
    {
        return ParamReal(Decl(panel, param), *panel.state().params);
    }
    static bool Set(TransformPanel& panel, size_t param, double value)
    {
        return ParamSetReal(Decl(panel, param), *panel.state().params, value);
    }

    // A generic row taken out of the layout, to be put back in its place.
    static QWidget* TakeRow(TransformPanel& panel, QVBoxLayout& layout, size_t param)
    {
        QWidget* control = panel.paramControl(param);
        QWidget* row = control ? control->parentWidget() : nullptr;
        if (row) layout.removeWidget(row);
        return row;
    }

    // "Radius: 1.0" over its slider.
    static void ShowValue(TransformPanel& panel, size_t param, double value, QLabel* text)
    {
        std::string number;
        RealToText(value, number, Decl(panel, param).decimals, false, false);
        text->setText(QString::fromLatin1(Decl(panel, param).label) + QStringLiteral(" ") +
                      QString::fromStdString(number));
    }

    void AddSlider(TransformPanel& panel, QVBoxLayout& layout, size_t param, int32_t id,
                   QLabel*& text, SliderControl*& slider)
    {
        text = new QLabel(&panel);
        ShowValue(panel, param, Real(panel, param), text);
        layout.addWidget(text);
        auto* row = new ControlRow(&panel);
        slider = new SliderControl(0, 0, kSliderWidth, row, id);
        slider->SetValues(SliderPosition(Real(panel, param)), -1);
        row->setMinimumHeight(slider->height());
        row->setMinimumWidth(slider->width());
        layout.addWidget(row);
    }

    static void ShowColorSpace(TransformPanel& panel) { panel.ShowRowForColour("color-space"); }

    QLabel* radiusText_ = nullptr;
    QLabel* heightText_ = nullptr;
    SliderControl* radius_ = nullptr;
    SliderControl* height_ = nullptr;
    CompassControl* compass_ = nullptr;
};

const PanelPartRegistration kPart({
    .commandId = 4040,
    .check = CheckPictureKind,
    .make = NewPanelPart<EmbossPart>,
});

}  // namespace
}  // namespace lv
