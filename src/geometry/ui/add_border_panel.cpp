// Add Border's part of its panel: the border colour, a swatch that opens the
// colour picker. Top to bottom the panel reads: input picker, "Background
// Color:", the four margins "Left:", "Right:", "Top:", "Bottom:", "Units:".
#include <QFontMetrics>
#include <QLineEdit>
#include <QVBoxLayout>
#include <cstring>
#include <vector>

#include "geometry/add_border.h"
#include "shell/messages.h"
#include "shell/ui/metrics.h"
#include "transform/controls/ui/color_control.h"
#include "transform/controls/ui/color_picker.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/pedit.h"
#include "transform/registry.h"
#include "transform/ui/panel.h"

namespace lv {
namespace {

constexpr int32_t kColorId = 101;
const char* const kMargins[] = {"left", "right", "top", "bottom"};

BorderParams& ParamsOf(TransformPanel& panel)
{
    return static_cast<BorderParams&>(*panel.state().params);
}

// The row control of the module's parameter of that name, or null.
QWidget* ControlOf(TransformPanel& panel, const char* name)
{
    const std::vector<ParamDecl>& params = panel.module().params;
    for (size_t i = 0; i < params.size(); ++i)
        if (std::strcmp(params[i].name, name) == 0) return panel.paramControl(i);
    return nullptr;
}

class BorderPart : public PanelPart {
public:
    void Build(TransformPanel& panel, QVBoxLayout& layout) override
    {
        const BorderParams& p = ParamsOf(panel);
        auto* row = new ControlRow(&panel);
        auto* color = new ColorControl(row, 0, 0, QStringLiteral("Background Color:"),
                                       QStringLiteral("Background Color"),
                                       QColor(p.red, p.green, p.blue), kColorId);
        row->setMinimumSize(color->size());
        // Above the margins, right after the input picker.
        QWidget* first = ControlOf(panel, kMargins[0]);
        const int at = first ? layout.indexOf(first->parentWidget()) : -1;
        layout.insertWidget(at, row);
        SizeMarginEdits(panel);
    }

    bool Message(TransformPanel& panel, int32_t message, int32_t controlId, int64_t value) override
    {
        if (controlId != kColorId) return false;
        if (message == kMsgColor) {
            const QColor c = ColorFromValue(value);
            BorderParams& p = ParamsOf(panel);
            if (c.red() != p.red || c.green() != p.green || c.blue() != p.blue) {
                p.red = c.red();
                p.green = c.green();
                p.blue = c.blue();
                panel.ParamsChanged();
            }
        }
        return true;
    }

    void InputChanged(TransformPanel&) override {}

private:
    // The margins' edits hold six digits, as "999999".
    static void SizeMarginEdits(TransformPanel& panel)
    {
        const UiMetrics& m = Metrics();
        const int32_t width =
            QFontMetrics(m.fontSystem).horizontalAdvance(QStringLiteral("999999")) + 2 * m.margin;
        for (const char* name : kMargins) {
            auto* edit = dynamic_cast<PEditControl*>(ControlOf(panel, name));
            if (!edit) continue;
            QLineEdit* line = edit->edit();
            line->resize(width, line->height());
            edit->resize(line->x() + width, edit->height());
            edit->parentWidget()->setMinimumWidth(edit->width());
        }
    }
};

const PanelPartRegistration kPart({
    .commandId = 4022,
    .make = NewPanelPart<BorderPart>,
});

}  // namespace
}  // namespace lv
