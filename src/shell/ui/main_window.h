// The editor's frame: a maximised main window with the menus and tool bar
// built from the command table, and the workspace that holds the image
// windows, previews, panels and the progress box. Every command goes
// through Dispatch, which refuses what the enable rules grey.
#pragma once

#include <QAction>
#include <QMainWindow>
#include <QPointer>
#include <map>

#include "image/image.h"
#include "shell/commands.h"
#include "shell/preferences.h"

class QAction;
class QMenu;
class QToolBar;

namespace lv {

class ImageSubWindow;
class Workspace;

class MainWindow : public QMainWindow {
public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    Workspace* workspace() const { return workspace_; }
    QToolBar* toolBar() const { return toolBar_; }

    // The state the enable rules look at, as the windows stand now.
    CommandState State() const;
    // Runs a command; false when it is greyed (and so refused) or unknown.
    bool Dispatch(int32_t id);
    // The active image window, or null.
    ImageSubWindow* ActiveImage() const;
    // Greys and ticks the menus, and rebuilds the recent files and the Mask
    // menu, as each menu opens.
    void UpdateMenus();
    QAction* action(int32_t id) const;
    // Where the Preferences panel saves the settings when asked to.
    static void SetPreferencesStore(KeyValueStore* store);

    // Shows a picture made elsewhere in a new window sized to fit the
    // workspace (the way Open and Paste place theirs); takes the image.
    // Result 0 or an error code, which the caller reports.
    int32_t ShowNewImage(Image&& image, const QString& title);
    // The Histogram command: a new window with the picture's sampled
    // histogram (luminance for colour). 0, or 14 for a window that holds no
    // picture.
    int32_t ShowHistogram(ImageSubWindow& source);
    // Asks every window whether it may close, in order; false as soon as one
    // refuses.
    bool WindowsQuerySave();
    // With a transformation open, asks "Abort transformation in progress?";
    // Yes closes it. False when the user keeps it.
    bool AbortPanels();
    void CloseAllWindows();

protected:
    void closeEvent(QCloseEvent* event) override;
    // Files dropped on the frame open as File > Open opens them.
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void BuildMenus();
    void BuildToolBar(int32_t side);
    void UpdateRibbon();
    void RebuildRecentFiles(QMenu* menu);
    void RebuildMaskMenu(QMenu* menu);
    void RebuildWindowList(QMenu* menu);
    void ZoomCommand(int32_t id);
    int32_t DuplicateWindow(int32_t id);
    void Cascade();
    void ArrangeIcons();
    void ShowImagePopup(ImageSubWindow* window, const QPoint& globalPosition);
    void OpenHelp(const std::string& page);
    void ShowAbout();
    void OpenManual();

    Workspace* workspace_;
    QToolBar* toolBar_ = nullptr;
    std::map<int32_t, QAction*> actions_;
    std::vector<std::pair<QMenu*, MenuItem>> submenus_;
    QMenu* fileMenu_ = nullptr;
    QMenu* maskMenu_ = nullptr;
    QMenu* windowMenu_ = nullptr;
    QAction* recentAnchor_ = nullptr;  // the recent files go before it
    std::vector<QAction*> recentActions_;
    std::vector<QAction*> windowListActions_;
    std::vector<std::pair<QPointer<QAction>, int32_t>> ribbonActions_;
    bool menuOpen_ = false;
};

// Opens the program's help page for a window kind (F1), or the index.
std::string HelpDirectory();

}  // namespace lv
