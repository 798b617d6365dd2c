// The frame's workspace: the MDI area that holds image windows, previews,
// panels and the progress box. It paints its background in the preferred
// colour through the display tables, and the splash until the first click
// or menu.
#pragma once

#include <QIcon>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace lv {

class Workspace : public QMdiArea {
public:
    explicit Workspace(QWidget* parent = nullptr);

    void ShowSplash();
    void HideSplash();
    bool splashShown() const { return splashShown_; }
    // Takes the workspace colour of the preferences again.
    void UpdateBackground();

protected:
    void paintEvent(QPaintEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    bool splashShown_ = false;
};

// Takes the keys off a sub-window's system menu (Close's Ctrl+W and the
// like), keeping its items, so that every accelerator of the frame means one
// command whatever window has the focus.
void ClearSystemMenuKeys(QMdiSubWindow* window);

// The libraries this build is linked with, for the splash credit line and
// the About box: "Qt 6.4.2", ...
QString LinkedLibraries();

// The program's icon: the aperture of the splash.
QIcon ProgramIcon();

}  // namespace lv
