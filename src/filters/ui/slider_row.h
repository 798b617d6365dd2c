// What Blur's and Sharpen's panels share: a row of a static text ("Radius:
// 3") over a Slider, shown only for the methods that use it, and the panel
// taking the height of what it shows.
#pragma once

#include <QLabel>
#include <QMdiArea>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>
#include <cstdint>
#include <string>

#include "shell/ui/metrics.h"
#include "transform/controls/slider_math.h"
#include "transform/controls/ui/control_event.h"
#include "transform/controls/ui/slider.h"
#include "transform/ui/panel.h"

namespace lv {

struct SliderRow {
    QWidget* row = nullptr;
    QLabel* text = nullptr;
    SliderControl* slider = nullptr;
};

// A row with `text` above a slider at `position`, whose messages reach the
// panel with `sliderId`; inserted in `layout` at `at`.
inline SliderRow MakeSliderRow(TransformPanel& panel, QVBoxLayout& layout, int at,
                               const std::string& text, int32_t position, int32_t sliderId)
{
    constexpr int32_t kWidth = 360;
    SliderRow r;
    r.row = new ControlRow(&panel);
    r.text = new QLabel(QString::fromStdString(text), r.row);
    r.text->setGeometry(0, 0, kWidth, Metrics().textHeight);
    r.slider = new SliderControl(0, Metrics().textHeight, kWidth, r.row, sliderId);
    r.slider->SetValues(position, -1);
    r.row->setMinimumSize(kWidth, Metrics().textHeight + kSliderHeight);
    layout.insertWidget(at, r.row);
    return r;
}

// The panel's height follows the rows shown, as when it opened, and a panel
// that grew past the workspace's lower edge moves up to rest a margin above
// it.
inline void FitPanelHeight(TransformPanel& panel)
{
    QWidget* body = panel.widget();
    if (!body) return;
    if (body->layout()) body->layout()->activate();
    panel.resize(panel.width(), body->sizeHint().height() + Metrics().cyChildBorder);
    if (QMdiArea* area = panel.mdiArea()) {
        const int bottom = area->viewport()->height() - Metrics().margin;
        if (panel.geometry().bottom() + 1 > bottom)
            panel.move(panel.x(), std::max(0, bottom - panel.height()));
    }
}

}  // namespace lv
