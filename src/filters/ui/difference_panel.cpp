// Difference's part of its panel: the second picture, chosen among the open
// images of the input's size with an image menu ("Second Image:"). Until
// one is chosen the preview and Apply answer with code 77, no image. When the
// input changes to another size a chosen picture that no longer fits is
// dropped.
#include <QVBoxLayout>

#include "filters/difference.h"
#include "image/ui/image_window.h"
#include "shell/messages.h"
#include "shell/ui/main_window.h"
#include "shell/ui/workspace.h"
#include "transform/controls/ui/color_img.h"
#include "transform/controls/ui/control_event.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr int32_t kSecondImageId = 104;
constexpr int32_t kPictureKinds = 0b1110;  // binary, gray and colour

DifferenceParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<DifferenceParams&>(*panel.state().params);
}

class DifferencePart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        const Image* input = panel.input();
        auto* row = new ControlRow(&panel);
        picker_ = new ColorImgControl(0, 0, row, QStringLiteral("Second Image:"), QString(),
                                      Qt::black, kSecondImageId, -1, kPictureKinds,
                                      input ? input->width : -1, input ? input->height : -1,
                                      nullptr, 0, panel.mainWindow()->workspace());
        row->setMinimumHeight(picker_->height());
        row->setMinimumWidth(picker_->width());
        layout.addWidget(row);
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t) override
    {
        if (controlId != kSecondImageId) return false;
        if (message == kMsgImagePicker) {
            TakeChoice(panel);
            panel.ParamsChanged();
        }
        return true;
    }

    void InputChanged(TransformPanel& panel) override
    {
        const Image* input = panel.input();
        const int32_t width = input ? input->width : -1, height = input ? input->height : -1;
        picker_->SetLimits(-1, kPictureKinds, width, height, nullptr, 0);
        const Image* with = ParamsOf(panel).with;
        if (with && (with->width != width || with->height != height))
            picker_->SetColorImg(Qt::black, nullptr);
        TakeChoice(panel);
    }

private:
    void TakeChoice(TransformPanel& panel)
    {
        const ImageSubWindow* window = ImageWindowOf(picker_->imageWindow());
        ParamsOf(panel).with = window ? &window->record().image : nullptr;
    }

    ColorImgControl* picker_ = nullptr;
};

const PanelPartRegistration kPart({
    .commandId = 4042,
    .check = CheckPictureKind,
    .make = NewPanelPart<DifferencePart>,
});

}  // namespace
}  // namespace lv
