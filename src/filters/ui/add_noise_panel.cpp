// Add Noise's part of its panel: no control of its own, but the seed. The
// program's generator, which runs on and is never reseeded, draws one when
// the panel opens; the preview and every Apply of this panel use it, so the
// preview shows the grain that Apply makes, and each opening of the panel
// gives a fresh grain.
#include <QVBoxLayout>

#include "synthesis/random.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

class AddNoisePart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout&) override
    {
        if (const ParamDecl* seed = FindParam(panel.module(), "seed"))
            ParamSetInt(*seed, *panel.state().params, random_next());
    }
    bool Message(TransformPanel&, int32_t, int32_t, int64_t) override { return false; }
    void InputChanged(TransformPanel&) override {}
};

const PanelPartRegistration kPart({
    .commandId = 4043,
    .check = CheckPictureKind,
    .make = NewPanelPart<AddNoisePart>,
});

}  // namespace
}  // namespace lv
