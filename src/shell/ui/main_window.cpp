#include "shell/ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QScrollBar>
#include <QToolBar>
#include <QUrl>
#include <algorithm>
#include <functional>

#include "files/formats.h"
#include "files/ui/file_commands.h"
#include "image/ui/image_window.h"
#include "image/ui/window_dialogs.h"
#include "image/window.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/preferences.h"
#include "shell/text.h"
#include "shell/ui/help_window.h"
#include "shell/ui/metrics.h"
#include "shell/ui/preferences_panel.h"
#include "shell/ui/ribbon_icons.h"
#include "shell/ui/workspace.h"
#include "shell/version.h"
#include "tone/histogram.h"
#include "transform/registry.h"
#include "transform/ui/panel.h"

namespace lv {

namespace {

KeyValueStore* gPreferencesStore = nullptr;

// Save and Save As do not report a cancelled dialog or an aborted write.
int32_t IgnoreAbort(int32_t code) { return code == kErrAborted ? kOk : code; }

// The keys of a command. A keypad key is taken with or without the keypad
// flag, since X11 and some keyboards deliver it without; the main row's key
// then does the same, except in an edit box, which keeps its characters.
QList<QKeySequence> ShortcutsOf(const char* text)
{
    const std::string s = text;
    for (const auto& [name, key] :
         {std::pair{"Num+*", Qt::Key_Asterisk}, std::pair{"Num++", Qt::Key_Plus},
          std::pair{"Num+-", Qt::Key_Minus}}) {
        if (s == name) return {QKeySequence(Qt::KeypadModifier | key), QKeySequence(key)};
    }
    if (s == "Ins") return {QKeySequence(Qt::Key_Insert)};
    return {QKeySequence(QString::fromLatin1(text))};
}

// The tool bar ("ribbon"): its buttons in order, with their tips; 0 is a
// gap before the tool group.
struct RibbonButton {
    int32_t command;
    const char* label;
    const char* tip;
};
constexpr RibbonButton kRibbon[] = {
    {kCmdOpenPhotoCd, "PCD", "Open PhotoCD"},
    {kCmdOpen, "Open", "Open"},
    {kCmdBrowse, "Browse", "Browse"},
    {kCmdSave, "Save", "Save"},
    {kCmdAcquire, "Acquire", "Acquire image via TWAIN driver"},
    {kCmdZoomIn, "In", "Zoom In"},
    {kCmdZoomInResize, "In+", "Zoom In and Expand Window"},
    {kCmdZoomActual, "1:1", "Zoom to 1:1"},
    {kCmdZoomOut, "Out", "Zoom Out"},
    {kCmdFit, "Fit", "Zoom Out to Fit Screen"},
    {kCmdNext, "Next", "Cycle Through Windows"},
    {0, nullptr, nullptr},
    {kCmdMaskNew, "Mask", "Mask Tool"},
    {kCmdZoomTool, "Zoom", "Zoom Tool"},
    {kCmdMagnifier, "Magnify", "Magnifier Tool"},
    {kCmdReadout, "Readout", "Readout Tool"},
    {kCmdClone, "Clone", "Clone Tool"},
    {kCmdPaint, "Paint", "Paint Tool"},
    {kCmdLineArrow, "Line", "Line and Arrow Tool"},
    {kCmdMisc, "Misc", "Miscellaneous Tools"},
};

}  // namespace

std::string HelpDirectory()
{
    // Beside the program when installed, else the source tree's copy.
    const QString program = QCoreApplication::applicationDirPath();
    for (const QString& candidate :
         {program + "/docs/help", program + "/../docs/help", program + "/../../docs/help",
          QStringLiteral(LUMIVUE_SOURCE_DIR "/docs/help")}) {
        if (QFileInfo::exists(candidate + "/index.html"))
            return QDir::cleanPath(candidate).toStdString();
    }
    return std::string();
}

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent), workspace_(new Workspace(this))
{
    setWindowTitle(QString::fromLatin1(kProgramTitle));
    setCentralWidget(workspace_);
    setAcceptDrops(true);
    BuildMenus();
    BuildToolBar(CurrentState().toolBarSide);
    ImageSubWindow::popupFunction = [this](ImageSubWindow* window, QPoint at) {
        ShowImagePopup(window, at);
    };
    ImageSubWindow::saveFunction = [this](ImageSubWindow* window) {
        return FileSave(this, window);
    };
}

void MainWindow::SetPreferencesStore(KeyValueStore* store) { gPreferencesStore = store; }

QAction* MainWindow::action(int32_t id) const
{
    auto it = actions_.find(id);
    return it == actions_.end() ? nullptr : it->second;
}

// The workspace's current window, which stays current while another
// program has the focus (files dropped from a file manager arrive so).
ImageSubWindow* MainWindow::ActiveImage() const
{
    return dynamic_cast<ImageSubWindow*>(workspace_->currentSubWindow());
}

CommandState MainWindow::State() const
{
    CommandState s;
    QMdiSubWindow* active = workspace_->currentSubWindow();
    s.hasActiveChild = active != nullptr;
    if (auto* image = dynamic_cast<ImageSubWindow*>(active)) {
        const ImageWindow& r = image->record();
        s.activeKind = r.windowKind;
        s.activeImageKind = r.image.kind ? r.image.kind : r.display.kind;
        s.activeModified = r.modified;
        s.activeHasFileName = !r.fileName.empty();
    } else if (active) {
        s.activeKind = active->property("lvWindowKind").toInt();
    }
    if (TransformPanel* panel = TransformPanel::Current())
        s.panelKind = PanelKindOf(panel->module().commandId);
    s.undoAvailable = UndoAvailable();
    const Preferences& p = CurrentPreferences();
    const SessionState& state = CurrentState();
    s.recentCount = std::clamp(p.recentCount, 0, 10);
    for (int32_t i = 0; i < 10; ++i) s.recentPresent[i] = !state.recentFiles[i].empty();
    return s;
}

// ---- Menus ------------------------------------------------------------------

void MainWindow::BuildMenus()
{
    std::function<void(QMenu*, const std::vector<MenuItem>&)> fill =
        [&](QMenu* menu, const std::vector<MenuItem>& items) {
            for (const MenuItem& item : items) {
                switch (item.type) {
                case MenuItem::Type::Separator: menu->addSeparator(); break;
                case MenuItem::Type::Submenu: {
                    QMenu* sub = menu->addMenu(QString::fromLatin1(item.label));
                    submenus_.push_back({sub, item});
                    fill(sub, item.items);
                    break;
                }
                case MenuItem::Type::RecentFiles:
                    recentAnchor_ = menu->addSeparator();
                    recentAnchor_->setVisible(false);
                    break;
                case MenuItem::Type::MaskSources:
                case MenuItem::Type::WindowList: break;
                case MenuItem::Type::Command: {
                    const Command* c = FindCommand(item.id);
                    QAction* a = menu->addAction(QString::fromLatin1(c->label));
                    if (c->shortcut) {
                        a->setShortcuts(ShortcutsOf(c->shortcut));
                        a->setShortcutContext(Qt::ApplicationShortcut);
                    }
                    if (item.id >= kCmdNoToolBar && item.id <= kCmdToolBarLeft)
                        a->setCheckable(true);
                    const int32_t id = item.id;
                    connect(a, &QAction::triggered, this, [this, id] { Dispatch(id); });
                    actions_[id] = a;
                    break;
                }
                }
            }
        };
    const std::vector<Menu>& bar = MenuBar();
    for (size_t i = 0; i < bar.size(); ++i) {
        QMenu* menu = menuBar()->addMenu(QString::fromLatin1(bar[i].title));
        fill(menu, bar[i].items);
        if (i == 0) fileMenu_ = menu;
        if (bar[i].items.size() == 1 && bar[i].items[0].type == MenuItem::Type::MaskSources)
            maskMenu_ = menu;
        for (const MenuItem& item : bar[i].items)
            if (item.type == MenuItem::Type::WindowList) windowMenu_ = menu;
        // Opening any menu takes the splash away and brings the menus up to
        // date; closing it lets every shortcut through to Dispatch again,
        // which checks the rules as they stand at that moment.
        connect(menu, &QMenu::aboutToShow, this, [this] {
            workspace_->HideSplash();
            UpdateMenus();
        });
        connect(menu, &QMenu::aboutToHide, this, [this] {
            menuOpen_ = false;
            for (auto& [id, a] : actions_) a->setEnabled(true);
        });
    }
}

void MainWindow::UpdateMenus()
{
    menuOpen_ = true;
    const CommandState s = State();
    for (auto& [id, a] : actions_) a->setEnabled(CommandEnabled(id, s));
    for (auto& [menu, item] : submenus_)
        menu->setEnabled(ConditionHolds(item.condition, s) && !(item.panelGreys && s.panelKind));
    const bool shown = toolBar_ && toolBar_->isVisible();
    action(kCmdNoToolBar)->setChecked(!toolBar_);
    action(kCmdToolBarTop)->setChecked(shown && CurrentState().toolBarSide == 0);
    action(kCmdToolBarLeft)->setChecked(shown && CurrentState().toolBarSide == 1);
    RebuildRecentFiles(fileMenu_);
    RebuildMaskMenu(maskMenu_);
    RebuildWindowList(windowMenu_);
}

void MainWindow::RebuildRecentFiles(QMenu* menu)
{
    for (QAction* a : recentActions_) {
        menu->removeAction(a);
        actions_.erase(a->data().toInt());
        a->deleteLater();
    }
    recentActions_.clear();
    SessionState& state = CurrentState();
    const int32_t count = std::clamp(CurrentPreferences().recentCount, 0, 10);
    const CommandState s = State();
    for (int32_t i = 0; i < 10; ++i) {
        if (i >= count) {
            state.recentFiles[i].clear();  // a shorter list forgets the names past its end
            continue;
        }
        auto* a =
            new QAction(QString::fromStdString(RecentFileLabel(i, state.recentFiles[i])), menu);
        const int32_t id = kCmdRecentFirst + i;
        a->setData(id);
        a->setEnabled(CommandEnabled(id, s));
        connect(a, &QAction::triggered, this, [this, id] { Dispatch(id); });
        menu->insertAction(recentAnchor_, a);
        recentActions_.push_back(a);
        actions_[id] = a;
    }
    recentAnchor_->setVisible(!recentActions_.empty());
}

void MainWindow::RebuildMaskMenu(QMenu* menu)
{
    menu->clear();
    for (auto it = actions_.begin(); it != actions_.end();)
        it = it->first >= kCmdMaskNew && it->first <= kCmdMaskLast ? actions_.erase(it) : ++it;
    ImageSubWindow* active = ActiveImage();
    if (!active) return;
    const ImageWindow& r = active->record();
    std::vector<MaskCandidate> candidates;
    const QList<ImageSubWindow*> windows = ImageWindows(workspace_);
    for (ImageSubWindow* w : windows) {
        const ImageWindow& c = w->record();
        if (c.windowKind != kKindImage) continue;
        candidates.push_back({w->handle(), c.image.kind, c.image.width, c.image.height,
                              w->windowTitle().toStdString()});
    }
    const MaskMenu mask = BuildMaskMenu(false, r.windowKind, r.image.kind, r.image.width,
                                        r.image.height, active->handle(), candidates);
    const CommandState s = State();
    auto add = [&](int32_t id, const QString& text) {
        QAction* a = menu->addAction(text);
        a->setEnabled(CommandEnabled(id, s));
        connect(a, &QAction::triggered, this, [this, id] { Dispatch(id); });
        actions_[id] = a;
    };
    if (mask.offerNew) add(kCmdMaskNew, QStringLiteral("New"));
    for (size_t i = 0; i < mask.sources.size(); ++i) {
        if (i == 0) menu->addSeparator();
        add(kCmdMaskFirst + static_cast<int32_t>(i),
            QString::fromStdString(candidates[mask.sources[i]].title));
    }
}

void MainWindow::RebuildWindowList(QMenu* menu)
{
    for (QAction* a : windowListActions_) {
        menu->removeAction(a);
        a->deleteLater();
    }
    windowListActions_.clear();
    const QList<QMdiSubWindow*> windows = workspace_->subWindowList(QMdiArea::CreationOrder);
    for (int i = 0; i < windows.size() && i < 9; ++i) {
        QMdiSubWindow* w = windows[i];
        QAction* a = menu->addAction(QStringLiteral("&%1 %2").arg(i + 1).arg(w->windowTitle()));
        a->setCheckable(true);
        a->setChecked(w == workspace_->currentSubWindow());
        connect(a, &QAction::triggered, this, [this, w] { workspace_->setActiveSubWindow(w); });
        windowListActions_.push_back(a);
    }
}

MainWindow::~MainWindow()
{
    // Closing the frame hides the image windows, and the workspace may then
    // announce a new active window. By that time this window's members are
    // gone, so the ribbon must no longer listen.
    if (toolBar_) workspace_->disconnect(toolBar_);
}

void MainWindow::UpdateRibbon()
{
    const CommandState state = State();
    for (auto& [action, id] : ribbonActions_)
        if (action) action->setEnabled(CommandEnabled(id, state));
}

void MainWindow::BuildToolBar(int32_t side)
{
    ribbonActions_.clear();
    if (toolBar_) {
        removeToolBar(toolBar_);
        delete toolBar_;
        toolBar_ = nullptr;
    }
    if (side < 0) return;
    toolBar_ = new QToolBar(QStringLiteral("Tool Bar"), this);
    toolBar_->setMovable(false);
    toolBar_->setFloatable(false);
    toolBar_->setToolButtonStyle(Qt::ToolButtonIconOnly);
    toolBar_->setIconSize(QSize(24, 24));
    for (const RibbonButton& b : kRibbon) {
        if (!b.command) {
            toolBar_->addSeparator();
            continue;
        }
        QAction* a = toolBar_->addAction(RibbonIcon(b.command), QString::fromLatin1(b.label));
        a->setToolTip(QString::fromLatin1(b.tip));
        const int32_t id = b.command;
        connect(a, &QAction::triggered, this, [this, id] { Dispatch(id); });
        ribbonActions_.push_back({a, id});
    }
    // Buttons grey as their commands do, looked at whenever the active
    // window changes.
    connect(workspace_, &QMdiArea::subWindowActivated, toolBar_, [this] { UpdateRibbon(); });
    UpdateRibbon();
    // The open transformation panel stays above the pictures, its preview
    // and its results, whichever of them is active.
    // Raised once the activation is through, which raises the active one.
    connect(workspace_, &QMdiArea::subWindowActivated, this, [](QMdiSubWindow* window) {
        TransformPanel* panel = TransformPanel::Current();
        if (panel && panel != window)
            QMetaObject::invokeMethod(panel, "raise", Qt::QueuedConnection);
    });
    addToolBar(side == 1 ? Qt::LeftToolBarArea : Qt::TopToolBarArea, toolBar_);
}

// ---- Dispatch -----------------------------------------------------------------

bool MainWindow::Dispatch(int32_t id)
{
    if (!CommandEnabled(id, State())) return false;
    workspace_->HideSplash();
    ImageSubWindow* image = ActiveImage();
    switch (id) {
    case kCmdOpen: ReportError(FileOpen(this, QString(), 1)); break;
    case kCmdSave:
        if (image) ReportError(IgnoreAbort(FileSave(this, image)));
        break;
    case kCmdSaveAs:
        if (image) ReportError(IgnoreAbort(FileSaveAs(this, image)));
        break;
    case kCmdClose:
        if (image)
            ReportError(FileClose(this, image));
        else if (QMdiSubWindow* active = workspace_->currentSubWindow())
            active->close();
        break;
    case kCmdRevert:
        if (image) ReportError(FileRevert(this, image));
        break;
    case kCmdExit: close(); break;
    case kCmdPreferences: PreferencesPanel::Open(this, gPreferencesStore); break;
    case kCmdUndo: UndoGroup(); break;
    case kCmdUndoAll: UndoAll(); break;
    case kCmdInfo: ShowWindowInfo(this, image ? &image->record() : nullptr); break;
    case kCmdHistogram:
        if (image) ReportError(ShowHistogram(*image));
        break;
    case kCmdGrid:
        if (image) ShowWindowGrid(this, image);
        break;
    case kCmdExpand:
    case kCmdFit:
    case kCmdZoomIn:
    case kCmdZoomInResize:
    case kCmdZoomOut:
    case kCmdZoomActual:
    case kCmdZoomFactor: ZoomCommand(id); break;
    case kCmdNoToolBar: BuildToolBar(-1); break;
    case kCmdToolBarTop:
        CurrentState().toolBarSide = 0;
        BuildToolBar(0);
        break;
    case kCmdToolBarLeft:
        CurrentState().toolBarSide = 1;
        BuildToolBar(1);
        break;
    case kCmdNext:
        if (QMdiSubWindow* active = workspace_->currentSubWindow())
            if (active->isMinimized() || active->isMaximized()) active->showNormal();
        workspace_->activateNextSubWindow();
        break;
    case kCmdArrangeIcons: ArrangeIcons(); break;
    case kCmdCascade: Cascade(); break;
    case kCmdCloseAll:
        if (AbortPanels() && WindowsQuerySave()) CloseAllWindows();
        break;
    case kCmdCopy:
    case kCmdNegative: ReportError(DuplicateWindow(id)); break;
    case kCmdHelpContents: OpenHelp("index.html"); break;
    case kCmdHelpSearch:
        OpenHelp("index.html");
        if (HelpWindow* help = HelpWindow::Current()) help->searchBox()->setFocus();
        break;
    case kCmdHelpGlossary: OpenHelp("glossary.html"); break;
    case kCmdHelpContext: {
        QMdiSubWindow* active = workspace_->currentSubWindow();
        // A transformation's panel has a page of its own.
        if (auto* panel = dynamic_cast<TransformPanel*>(active)) {
            OpenHelp(std::string("module:") + panel->module().name);
            break;
        }
        const int32_t kind = image    ? image->record().windowKind
                             : active ? active->property("lvWindowKind").toInt()
                                      : -1;
        OpenHelp(HelpPageName(kind, HelpDirectory()));
        break;
    }
    case kCmdManual: OpenManual(); break;
    case kCmdAbout: ShowAbout(); break;
    default:
        if (const TransformModule* module = FindTransformByCommand(id); module && PanelKindOf(id)) {
            ReportError(TransformPanel::Open(this, *module, image));
            break;
        }
        if (id >= kCmdRecentFirst && id <= kCmdRecentLast) {
            const std::string name = CurrentState().recentFiles[id - kCmdRecentFirst];
            ReportError(FileOpen(this, QString::fromStdString(name), 1));
            break;
        }
        return false;
    }
    return true;
}

void MainWindow::ZoomCommand(int32_t id)
{
    // Image windows and previews zoom alike; a preview recomputes what it
    // shows with its panel's worker.
    ImageSubWindow* w = ActiveImage();
    if (!w || (w->record().windowKind != kKindImage && w->record().windowKind != kKindPreview))
        return;
    switch (id) {
    case kCmdExpand: w->Expand(); break;
    case kCmdFit: w->Fit(); break;
    case kCmdZoomIn: w->ZoomIn(false); break;
    case kCmdZoomInResize: w->ZoomIn(true); break;
    case kCmdZoomOut: w->ZoomOut(true); break;
    case kCmdZoomActual: w->ZoomActual(true); break;
    case kCmdZoomFactor: {
        const int32_t zoom = AskZoomFactor(this, w->record().zoom);
        if (zoom != 0 && zoom != w->record().zoom) {
            w->ZoomSet(zoom, true);
            w->ZoomDone();
        }
        break;
    }
    default: break;
    }
}

int32_t MainWindow::DuplicateWindow(int32_t id)
{
    ImageSubWindow* source = ActiveImage();
    if (!source) return kOk;
    ImageSubWindow* window = nullptr;
    if (int32_t code = ImageSubWindow::Create(workspace_, source, -1, -1, &window)) return code;
    SetWaitCursor();
    int32_t result = kOk;
    if (id == kCmdCopy) result = ImageCopy(source->record().image, window->record().image);
    if (id == kCmdNegative) result = ImageNegative(source->record().image, window->record().image);
    SetArrowCursor();
    if (result) {
        delete window;  // the partial picture goes with its window
        return result == kErrAborted ? kErrAborted : result;
    }
    ImageWindow& r = window->record();
    r.metadata = source->record().metadata;  // the same photograph's
    r.zoom = source->record().zoom;
    r.modified = true;
    result = window->Rebuild(true);
    workspace_->setActiveSubWindow(window);
    window->show();
    window->UpdateTitle();
    return result;
}

int32_t MainWindow::ShowHistogram(ImageSubWindow& source)
{
    Image histogram;
    if (int32_t code = image_histogram(source.record().image, histogram)) return code;
    return ShowNewImage(std::move(histogram), QStringLiteral("Histogram"));
}

int32_t MainWindow::ShowNewImage(Image&& image, const QString& title)
{
    ImageSubWindow* window = nullptr;
    const int32_t width = image.width, height = image.height;
    // The window it is placed after: the current one before it came.
    ImageSubWindow* model = ActiveImage();
    const QPoint modelAt = model ? model->pos() : QPoint();
    if (int32_t code = ImageSubWindow::Create(workspace_, nullptr, 1, 1, &window)) return code;
    ImageWindow& r = window->record();
    r.image = std::move(image);
    const ZoomMetrics m = window->Metrics();
    r.zoom = ZoomForNewWindow(width, height, m);
    const int32_t w = ZoomedLength(width, r.zoom), h = ZoomedLength(height, r.zoom);
    int32_t x = 0, y = 0;
    NextWindowPosition(model != nullptr, modelAt.x(), modelAt.y(), m, x, y);
    window->setGeometry(x, y, w + m.cxChildBorder + 2 * m.borderWidth,
                        h + m.cyChildBorder + 2 * m.borderWidth);
    if (!title.isEmpty()) r.fileName = title.toStdString();
    const int32_t result = window->Rebuild(false);
    workspace_->setActiveSubWindow(window);
    window->UpdateTitle();
    return result;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) {
            event->acceptProposedAction();
            return;
        }
    }
}

void MainWindow::dropEvent(QDropEvent* event)
{
    workspace_->HideSplash();
    for (const QUrl& url : event->mimeData()->urls()) {
        if (!url.isLocalFile()) continue;
        const QString path = url.toLocalFile();
        if (QFileInfo(path).isDir()) {
            // A folder: the pictures in it whose type the program knows.
            const QDir folder(path);
            for (const QString& name : folder.entryList(QDir::Files, QDir::Name))
                if (FileTypeFromName(folder.filePath(name).toStdString()) >= 0)
                    ReportError(FileOpen(this, folder.filePath(name), -1));
            continue;
        }
        // A file of a type the program does not read says so, and the
        // others still open.
        ReportError(FileOpen(this, path, -1));
    }
    event->acceptProposedAction();
}

void MainWindow::Cascade()
{
    const QList<QMdiSubWindow*> windows = workspace_->subWindowList(QMdiArea::CreationOrder);
    ZoomMetrics m;
    m.workspaceWidth = workspace_->viewport()->width();
    m.workspaceHeight = workspace_->viewport()->height();
    m.margin = Metrics().margin;
    m.controlHeight = Metrics().controlHeight;
    m.cyChildBorder = Metrics().cyChildBorder;
    const auto positions = CascadePositions(static_cast<int32_t>(windows.size()), m);
    // Taken from the last to the first, each keeps its size.
    for (int i = 0; i < windows.size(); ++i) {
        QMdiSubWindow* w = windows[windows.size() - 1 - i];
        if (w->isMinimized() || w->isMaximized()) w->showNormal();
        w->move(positions[static_cast<size_t>(i)].first, positions[static_cast<size_t>(i)].second);
        w->raise();
    }
    // The window on top is the one the next command acts on.
    if (!windows.isEmpty()) workspace_->setActiveSubWindow(windows.first());
}

void MainWindow::ArrangeIcons()
{
    // Minimised windows line up along the bottom of the workspace.
    int x = 0;
    for (QMdiSubWindow* w : workspace_->subWindowList(QMdiArea::CreationOrder)) {
        if (!w->isMinimized()) continue;
        w->move(x, workspace_->viewport()->height() - w->height());
        x += w->width();
    }
}

bool MainWindow::WindowsQuerySave()
{
    for (ImageSubWindow* w : ImageWindows(workspace_)) {
        if (const char* user = UserFindLock(w->handle())) {
            MessageBoxShow("Error", kBoxOk, FormatText("Window in use by %s - Cannot close", user));
            return false;
        }
        if (!w->SaveChanges()) return false;
    }
    return true;
}

void MainWindow::CloseAllWindows()
{
    // Hidden first, so that the windows do not repaint one by one as each
    // goes.
    workspace_->viewport()->setUpdatesEnabled(false);
    for (QMdiSubWindow* w : workspace_->subWindowList()) delete w;
    workspace_->viewport()->setUpdatesEnabled(true);
    workspace_->viewport()->update();
}

bool MainWindow::AbortPanels()
{
    TransformPanel* panel = TransformPanel::Current();
    if (!panel) return true;
    if (MessageBoxShow("", kBoxYesNo, "Abort transformation in progress?") != kAnswerYes)
        return false;
    panel->close();
    return true;
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!AbortPanels() || !WindowsQuerySave()) {
        event->ignore();
        return;
    }
    CloseAllWindows();
    event->accept();
}

void MainWindow::ShowImagePopup(ImageSubWindow* window, const QPoint& globalPosition)
{
    (void)window;
    QMenu popup(this);
    for (const PopupItem& item : ImageWindowPopup()) {
        if (!item.command) {
            popup.addSeparator();
            continue;
        }
        const int32_t command = item.command;
        QAction* a = popup.addAction(QString::fromLatin1(item.label));
        connect(a, &QAction::triggered, this, [this, command] { Dispatch(command); });
    }
    popup.exec(globalPosition);
}

// ---- Help -----------------------------------------------------------------------

void MainWindow::OpenHelp(const std::string& page)
{
    if (!HelpWindow::Show(this, QString::fromStdString(HelpDirectory()),
                          QString::fromStdString(page)))
        MessageBoxShow("Error", kBoxOk, "Cannot open the help pages");
}

void MainWindow::OpenManual()
{
    const QString manual = QCoreApplication::applicationDirPath() + "/docs/manual.pdf";
    if (!QFileInfo::exists(manual) || !QDesktopServices::openUrl(QUrl::fromLocalFile(manual)))
        MessageBoxShow("Error", kBoxOk, "Cannot load electronic manual");
}

void MainWindow::ShowAbout()
{
    MessageBoxShow("About Lumivue", kBoxOk,
                   FormatText("Lumivue 2.0\nAn image editor for photographers\n\nBuilt with %s",
                              LinkedLibraries().toStdString()));
}

}  // namespace lv
