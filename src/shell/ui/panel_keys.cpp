#include "shell/ui/panel_keys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMdiArea>
#include <QMdiSubWindow>

#include "shell/ui/events.h"

namespace lv {

bool enterAccepts = true;

PanelKeyFilter::PanelKeyFilter(QMdiArea* workspace) : workspace_(workspace) {}

bool PanelKeyFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    QMdiSubWindow* active = workspace_->activeSubWindow();
    // Only key presses inside the active panel, on their way to a control.
    if (!active || active->property("lvWindowKind").toInt() < 3 || !QApplication::focusWidget() ||
        !active->isAncestorOf(QApplication::focusWidget()) ||
        watched != QApplication::focusWidget())
        return QObject::eventFilter(watched, event);
    auto* key = static_cast<QKeyEvent*>(event);
    int32_t message = 0;
    switch (key->key()) {
    case Qt::Key_Tab: message = kMsgPanelTab; break;
    case Qt::Key_Backtab: message = kMsgPanelBackTab; break;
    case Qt::Key_Escape: message = kMsgPanelCancel; break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!enterAccepts) return false;
        message = kMsgPanelAccept;
        break;
    default: return QObject::eventFilter(watched, event);
    }
    UserMessageEvent panelEvent(message, HandleOf(QApplication::focusWidget()));
    QApplication::sendEvent(active, &panelEvent);
    return true;
}

}  // namespace lv
