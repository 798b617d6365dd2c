// Edge's part of its panel: the generic rows, with "Color Space:" shown for
// colour pictures only.
#include "transform/ui/panel.h"

namespace lv {
namespace {

class EdgePart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout&) override
    {
        panel.ShowRowForColour("color-space");
    }
    bool Message(TransformPanel&, int32_t, int32_t, int64_t) override { return false; }
    void InputChanged(TransformPanel& panel) override { panel.ShowRowForColour("color-space"); }
};

const PanelPartRegistration kPart({
    .commandId = 4041,
    .check = CheckPictureKind,
    .make = NewPanelPart<EdgePart>,
});

}  // namespace
}  // namespace lv
