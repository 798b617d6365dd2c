// The three small dialogs of the Window menu: Info, Grid and Zoom Factor.
#pragma once

#include <cstdint>

class QWidget;

namespace lv {

struct ImageWindow;
class ImageSubWindow;

// Window Info: read-only fields of the active image window, "N/A" in all of
// them with none.
void ShowWindowInfo(QWidget* parent, const ImageWindow* record);

// Window Grid: divisions 1 to 99 across each axis, applied as they are
// typed; Cancel puts back the value the dialog opened with.
void ShowWindowGrid(QWidget* parent, ImageSubWindow* window);

// Zoom Factor: the magnitude of the zoom and whether it is n:1 or 1:n.
// Returns the zoom chosen, or 0 when the dialog was cancelled or its value
// cannot be used.
int32_t AskZoomFactor(QWidget* parent, int32_t zoom);

}  // namespace lv
