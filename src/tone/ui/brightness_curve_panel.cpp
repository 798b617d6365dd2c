// Brightness Curve's part of its panel: the Curve control over the input's
// histogram, and the colour-space list, shown for colour pictures only.
// Top to bottom the panel reads: input picker, Amount, curve, colour space.
#include <QVBoxLayout>

#include "image/image.h"
#include "image/ui/image_window.h"
#include "shell/errors.h"
#include "tone/brightness_curve.h"
#include "tone/curves/ui/curve_control.h"
#include "tone/histogram.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/popup_list.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr int32_t kCurveId = 102;
constexpr int32_t kCurveChanged = 1024;
constexpr size_t kColorSpaceParam = 1;  // the module's second parameter
constexpr int32_t kCurveHeight = 240;
const char* const kStateName = "brightness-curve-state";

// What the part keeps beside the panel: the histogram records the Curve
// control draws from, which must live as long as it does.
struct CurveState : QObject {
    explicit CurveState(QObject* parent) : QObject(parent)
    {
        setObjectName(QString::fromLatin1(kStateName));
    }
    HistogramRecord channels[3];
    CurveControl* curve = nullptr;
};

CurveState* StateOf(TransformPanel& panel)
{
    return static_cast<CurveState*>(
        panel.findChild<QObject*>(QString::fromLatin1(kStateName), Qt::FindDirectChildrenOnly));
}

BrightnessCurveParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<BrightnessCurveParams&>(*panel.state().params);
}

const Image* InputOf(TransformPanel& panel)
{
    ImageSubWindow* source = panel.sourceWindow();
    return source ? &source->record().image : nullptr;
}

int32_t Check(const Image* input)
{
    if (input && (input->kind < kImageBinary || input->kind > kImageColor)) return kErrImageType;
    return kOk;
}

// The histograms behind the curve: binary and gray pictures their own, and
// colour ones what the colour space acts on: the value, the lightness, or
// red, green and blue. The probe reads the same.
void TakeHistograms(TransformPanel& panel, CurveState& state)
{
    const Image* image = InputOf(panel);
    HistogramRecord* h = state.channels;
    if (!image || Check(image) != kOk) {
        state.curve->SetHistograms(0, nullptr, nullptr, nullptr);
        state.curve->SetProbeChannel(0);
        return;
    }
    const int32_t space = ParamsOf(panel).colorSpace;
    if (image->kind == kImageColor && space == kColorSpaceRgb) {
        histogram_rgb(*image, h[0], h[1], h[2], kHistogramBudget);
        state.curve->SetHistograms(2, &h[0], &h[1], &h[2]);
        state.curve->SetProbeChannel(5);
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
    state.curve->SetHistograms(1, &h[0], nullptr, nullptr);
    state.curve->SetProbeChannel(image->kind == kImageColor && space == kColorSpaceHsl ? 2 : 1);
}

void ShowColorSpace(TransformPanel& panel)
{
    if (QWidget* list = panel.paramControl(kColorSpaceParam)) {
        const Image* image = InputOf(panel);
        list->parentWidget()->setVisible(image && image->kind == kImageColor);
    }
}

void Build(TransformPanel& panel, QVBoxLayout& layout)
{
    auto* state = new CurveState(&panel);
    // The curve grows with the panel; its row passes its messages on.
    auto* row = new ControlRow(&panel);
    auto* rowLayout = new QVBoxLayout(row);
    rowLayout->setContentsMargins(0, 0, 0, 0);
    state->curve =
        new CurveControl(0, 0, 300, kCurveHeight, row, kCurveId, 0, nullptr, nullptr, nullptr);
    state->curve->setMinimumHeight(kCurveHeight);
    rowLayout->addWidget(state->curve);

    QWidget* list = panel.paramControl(kColorSpaceParam);
    QWidget* listRow = list ? list->parentWidget() : nullptr;
    if (listRow) layout.removeWidget(listRow);
    layout.addWidget(row, 1);
    if (listRow) layout.addWidget(listRow);
    TakeHistograms(panel, *state);
    ShowColorSpace(panel);
}

bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value)
{
    CurveState* state = StateOf(panel);
    if (!state) return false;
    if (controlId == kCurveId) {
        if (message == kCurveChanged) {
            state->curve->GetCurveTable(ParamsOf(panel).table);
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
            TakeHistograms(panel, *state);
            panel.ParamsChanged();
        }
        return true;
    }
    return false;
}

void InputChanged(TransformPanel& panel)
{
    if (CurveState* state = StateOf(panel)) {
        ShowColorSpace(panel);
        TakeHistograms(panel, *state);
    }
}

const PanelPartRegistration kPart({4050, Check, Build, Message, InputChanged});

}  // namespace
}  // namespace lv
