// The sizes every window of the editor is laid out with: the system and small
// fonts, the heights of a text row and of a control, the standard gap, and
// the borders that MDI children and panels add around their client areas.
#pragma once

#include <QFont>
#include <cstdint>

namespace lv {

struct UiMetrics {
    QFont fontSystem;  // sans-serif, 13 pixels, normal weight: every panel's font
    QFont fontSmall;   // serif, 11 pixels, normal weight

    int32_t textHeight = 0;          // height of fontSystem plus 1
    int32_t textHeightSmall = 0;     // height of fontSmall plus 1
    int32_t controlHeight = 0;       // height of fontSystem plus twice the sizing frame
    int32_t controlHeightSmall = 0;  // the same with fontSmall
    int32_t margin = 0;              // controlHeight / 4: the standard gap between controls
    int32_t iconSize = 17;           // side of the small square controls

    int32_t cxVScroll = 0;  // width of a vertical scroll bar
    int32_t cyHScroll = 0;  // height of a horizontal scroll bar

    int32_t cxFrame = 0;        // the sizing frame of an MDI child, one side
    int32_t cyFrame = 0;        //
    int32_t captionHeight = 0;  // a child's title bar, without the frame above it

    int32_t cxChildBorder = 0;  // twice cxFrame
    int32_t cyChildBorder = 0;  // captionHeight plus twice cyFrame
    int32_t cxPanelBorder = 0;  // the same for panels, which are MDI children too
    int32_t cyPanelBorder = 0;

    int32_t cxScreen = 0;  // size of the primary screen
    int32_t cyScreen = 0;
};

// Computes the metrics from the fonts and the application's style. Needs the
// QApplication; does the work once, later calls do nothing.
void InitMetrics();

// The metrics; computes them on first use when InitMetrics has not run.
const UiMetrics& Metrics();

}  // namespace lv
