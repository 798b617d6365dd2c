// The progress box of a long job, as an MDI child of the workspace.
//
// While the box exists it is the only thing in the program that takes input:
// an application-wide event filter drops mouse, keyboard, wheel, shortcut,
// context-menu, close and timer events aimed at any other widget, so a job
// running on the caller's stack can serve events (for its Cancel button and
// for painting) without anything else re-entering the program. The box can
// be neither closed, moved nor resized by the user.
#pragma once

#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QRect>
#include <QString>
#include <cstdint>

#include "image/progress.h"

class QPushButton;

namespace lv {

class ProgressInputFilter;
class ProgressPanel;

class ProgressWindow : public QMdiSubWindow {
public:
    // Creates the box in `workspace`, placed and sized for `box`, and shows
    // and paints it at once. Input to everything else stops from here on.
    ProgressWindow(QMdiArea* workspace, const ProgressBox& box);
    ~ProgressWindow() override;

    // The box never agrees to be closed; ProgressHide destroys it.
    bool MayClose() const { return false; }

    // Paints the whole box and its button now.
    void PaintNow();
    // The bar is filled up to step `value`.
    void SetFilled(int32_t value);
    // The time line shows `text`.
    void SetTimeText(const QString& text);
    // Gives the Cancel button the keyboard, so Space or Enter cancel.
    void FocusCancel();
    // True when Cancel was clicked since the last call.
    bool TakeCancel();

    QPushButton* cancelButton() const { return cancel_; }
    // In the coordinates of the client area: the white area of the bar, the
    // outlined bar inside it, and the time line.
    QRect frameRect() const;
    QRect barRect() const;
    QRect timeRect() const;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    ProgressPanel* panel_ = nullptr;
    QPushButton* cancel_ = nullptr;
    ProgressInputFilter* filter_ = nullptr;
    QPointer<QMdiArea> workspace_;
    bool restoreMaximizeRule_ = false;  // the workspace maximised on activation before the box
    bool cancelled_ = false;
};

}  // namespace lv
