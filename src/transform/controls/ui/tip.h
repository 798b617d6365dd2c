// The floating tip: one small white box with a black outline and one line of
// black text, shared by the whole program. Showing a tip hides the one before.
#pragma once

#include <QPoint>
#include <QString>

class QWidget;

namespace lv {

// Shows `text` with the box's top-left corner at the global screen position
// `globalPos`, moved as needed to stay inside the top-level window that holds
// `reference` (the frame, for anything in the workspace). The box is as wide
// as the text plus a margin on either side, and one control high. Nothing is
// shown for an empty text or without a reference.
void ShowTip(QPoint globalPos, QWidget* reference, const QString& text);

// Hides the tip, if one is shown.
void HideTip();

// The tip's widget while it is shown, otherwise none.
QWidget* ShownTip();

}  // namespace lv
