#include "shell/ui/panel_keys.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMdiArea>
#include <QMdiSubWindow>

#include "shell/ui/events.h"

namespace lv {

bool enterAccepts = true;

void FocusNextInPanel(QWidget* panel, bool forward)
{
    QList<QWidget*> chain;
    for (QWidget* w : panel->findChildren<QWidget*>())
        if ((w->focusPolicy() & Qt::TabFocus) && w->isVisibleTo(panel) && w->isEnabled() &&
            !w->focusProxy())
            chain.push_back(w);
    if (chain.isEmpty()) return;
    qsizetype at = chain.indexOf(QApplication::focusWidget());
    at = at < 0 ? (forward ? -1 : 0) : at;
    at = (at + (forward ? 1 : chain.size() - 1)) % chain.size();
    chain[at]->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
}

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
    case Qt::Key_Tab: message = kMsgTab; break;
    case Qt::Key_Backtab: message = kMsgBackTab; break;
    case Qt::Key_Escape: message = kMsgEscape; break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!enterAccepts) return false;
        message = kMsgEnter;
        break;
    default: return QObject::eventFilter(watched, event);
    }
    UserMessageEvent panelEvent(message, HandleOf(QApplication::focusWidget()));
    QApplication::sendEvent(active, &panelEvent);
    return true;
}

}  // namespace lv
