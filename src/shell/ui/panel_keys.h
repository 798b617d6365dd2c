// The keyboard rules of panels, as one application event filter: Tab and
// Shift+Tab move among a panel's own controls and never leave it, Escape
// cancels the panel, and Enter accepts it unless a multi-line text box has
// the focus. A panel is a workspace child whose "lvWindowKind" property is 3
// or more; it receives the keys as private messages 1059 to 1062.
#pragma once

#include <QObject>

#include "shell/messages.h"

class QMdiArea;
class QWidget;

namespace lv {

// Cleared by panels while one of their multi-line text boxes has the focus.
extern bool enterAccepts;

// Moves the focus to the next (or previous) control of a panel that takes
// it, wrapping round, so that Tab never leaves the panel.
void FocusNextInPanel(QWidget* panel, bool forward);

class PanelKeyFilter : public QObject {
public:
    explicit PanelKeyFilter(QMdiArea* workspace);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QMdiArea* workspace_;
};

}  // namespace lv
