#include "shell/ui/qt_frontend.h"

#include <QApplication>
#include <QCoreApplication>
#include <QMdiArea>
#include <QThread>

#include "image/progress.h"
#include "image/window.h"
#include "shell/ui/events.h"
#include "shell/ui/message_box.h"
#include "shell/ui/progress_box.h"

namespace lv {

namespace {

QString FromEngine(const std::string& text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

QtFrontEnd::QtFrontEnd(QMdiArea* workspace) : workspace_(workspace) { clock_.start(); }

QtFrontEnd::~QtFrontEnd()
{
    DestroyBox();
    SetCursor(Cursor::Arrow);
}

void QtFrontEnd::ProgressShow(const ProgressBox& box)
{
    // Called when the box opens and again at the first step; the second
    // time it only paints.
    if (box_) {
        box_->PaintNow();
        return;
    }
    if (!workspace_) return;
    box_ = new ProgressWindow(workspace_, box);
}

void QtFrontEnd::ProgressFill(const ProgressBox& box, int32_t from, int32_t to)
{
    (void)box, (void)from;
    if (box_) box_->SetFilled(to);
}

void QtFrontEnd::ProgressTime(const ProgressBox& box, const std::string& text)
{
    (void)box;
    if (box_) box_->SetTimeText(FromEngine(text));
}

bool QtFrontEnd::ProgressPump(const ProgressBox& box)
{
    (void)box;
    if (!box_) return false;
    box_->FocusCancel();
    // LUMIVUE_SLOW_JOBS=N makes every step of a job take N more milliseconds,
    // so that the box can be looked at and cancelled on small pictures.
    const int slow = qEnvironmentVariableIntValue("LUMIVUE_SLOW_JOBS");
    if (slow > 0) QThread::msleep(static_cast<unsigned long>(slow));
    // Everything pending is served; the box's filter lets through only what
    // is the box's own, or what no user sent.
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    return box_ && box_->TakeCancel();
}

void QtFrontEnd::ProgressHide(const ProgressBox& box)
{
    (void)box;
    DestroyBox();
}

void QtFrontEnd::DestroyBox()
{
    if (!box_) return;
    std::unique_ptr<ProgressWindow> owned(box_.data());
    if (workspace_) workspace_->removeSubWindow(owned.get());
}

void QtFrontEnd::SetCursor(Cursor cursor)
{
    // The engine sets a state rather than pushing one, so at most one
    // override cursor is ever ours: wait twice and arrow once is the arrow.
    if (cursor == Cursor::Wait && !waiting_) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
        waiting_ = true;
    } else if (cursor == Cursor::Arrow && waiting_) {
        QApplication::restoreOverrideCursor();
        waiting_ = false;
    }
}

int32_t QtFrontEnd::MessageBox(const std::string& caption, int32_t mode, const std::string& text)
{
    return ShowMessageBox(workspace_, FromEngine(caption), mode, FromEngine(text));
}

void QtFrontEnd::SendToWindow(WindowHandle to, int32_t message, WindowHandle about)
{
    QObject* receiver = ObjectOf(to);
    if (!receiver) return;
    UserMessageEvent event(message, about);
    QCoreApplication::sendEvent(receiver, &event);
}

void QtFrontEnd::ImageRegionChanged(ImageWindow& record, int32_t x0, int32_t y0, int32_t x1,
                                    int32_t y1)
{
    QObject* receiver = ObjectOf(record.hWindow);
    if (!receiver) return;
    ImageRegionEvent event(&record, x0, y0, x1, y1);
    QCoreApplication::sendEvent(receiver, &event);
}

uint64_t QtFrontEnd::TickCount() { return static_cast<uint64_t>(clock_.elapsed()); }

}  // namespace lv
