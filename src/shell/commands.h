// The editor's commands: one table of ids, labels, shortcuts and enable
// rules, the menus built from it, and the one check that both greys the
// menus and refuses a command at dispatch, so that a shortcut can never run
// a greyed command.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lv {

// Kinds of the children of the workspace.
enum WindowKind : int32_t {
    kKindImage = 0,
    kKindPreview = 1,
    kKindCrop = 3,
    kKindBrightnessCurve = 4,
    kKindColorPicker = 9,
    kKindProgress = 12,
    kKindNew = 13,
    kKindCalibration = 14,
    kKindPreferences = 30,
    kKindMaskTool = 45,
};

// Command ids.
enum CommandId : int32_t {
    kCmdNew = 1001,
    kCmdOpen = 1002,
    kCmdOpenPhotoCd = 1003,
    kCmdSave = 1004,
    kCmdSaveAs = 1005,
    kCmdClose = 1006,
    kCmdRevert = 1007,
    kCmdPreferences = 1009,
    kCmdCalibrate = 1010,
    kCmdAcquire = 1011,
    kCmdSelectSource = 1012,
    kCmdExit = 1013,
    kCmdPrint = 1014,
    kCmdPrintSetup = 1015,
    kCmdSlideShow = 1017,
    kCmdRecentFirst = 1018,  // 1018..1027
    kCmdRecentLast = 1027,
    kCmdBrowse = 1028,
    kCmdUndo = 2001,
    kCmdUndoAll = 2002,
    kCmdEditCopy = 2003,
    kCmdPaste = 2004,
    kCmdInfo = 3001,
    kCmdGrid = 3002,
    kCmdExpand = 3003,
    kCmdFit = 3004,
    kCmdZoomIn = 3005,
    kCmdZoomInResize = 3006,
    kCmdZoomOut = 3007,
    kCmdZoomFactor = 3008,
    kCmdNoToolBar = 3009,
    kCmdToolBarTop = 3010,
    kCmdToolBarLeft = 3011,
    kCmdNext = 3012,
    kCmdArrangeIcons = 3013,
    kCmdCloseAll = 3014,
    kCmdZoomActual = 3015,
    kCmdCascade = 3016,
    kCmdHistogram = 3017,  // a histogram window of the active picture
    kCmdCopy = 4005,
    kCmdNegative = 4006,
    kCmdMaskNew = 4500,
    kCmdMaskFirst = 4501,  // 4501..4550
    kCmdMaskLast = 4550,
    kCmdReadout = 6001,
    kCmdZoomTool = 6002,
    kCmdClone = 6003,
    kCmdPaint = 6004,
    kCmdLineArrow = 6005,
    kCmdMisc = 6006,
    kCmdMagnifier = 6007,
    kCmdHelpContents = 7001,
    kCmdHelpSearch = 7002,
    kCmdHelpContext = 7003,
    kCmdHelpGlossary = 7004,
    kCmdAbout = 7005,
    kCmdManual = 7006,
    kCmdDuplicateEmpty = 8000,
};

// When a command is enabled, as the active window stands.
enum Condition : int32_t {
    kAlways = 0,
    kActiveChild = 1,
    kImageWindow = 2,
    kColorImage = 3,
    kGrayOrColorImage = 4,
    kBinaryOrGrayImage = 5,
    kImageOrPreview = 6,
    kGrayImage = 7,
    kSpecialRule = 8,  // worked out by its own rule (Revert, Undo, Paste, recent files)
};

// Who carries a command out, and so whether this build has it: the frame
// itself; a module of the registry (transform/registry.h), present once the
// module has registered under the command's id; or nobody yet.
enum class CommandOwner { Frame, Module, Later };

struct Command {
    int32_t id;
    const char* label;     // the menu text, "&" before the mnemonic
    int32_t condition;     // a Condition
    bool panelGreys;       // greyed while a transformation panel is open
    const char* shortcut;  // "Ctrl+W", "F1", "Ins", "Num+*"...; null for none
    int32_t panelKind;     // the WindowKind its panel has; 0 for none
    CommandOwner owner;
};

// The whole table, in menu order within each menu.
const std::vector<Command>& CommandTable();
// The entry of an id, or null.
const Command* FindCommand(int32_t id);

// What the enable rules look at.
struct CommandState {
    bool hasActiveChild = false;
    int32_t activeKind = -1;      // WindowKind of the active child
    int32_t activeImageKind = 0;  // ImageKind of its picture (image windows and previews)
    int32_t panelKind = 0;        // the open transformation, 0 for none
    bool activeModified = false;
    bool activeHasFileName = false;
    bool undoAvailable = false;
    bool clipboardHasImage = false;
    int32_t recentCount = 0;      // names the recent-file menu shows
    bool recentPresent[10] = {};  // a name is held in that place
};

bool ConditionHolds(int32_t condition, const CommandState& state);
// Whether this build carries the command out.
bool CommandBuilt(const Command& command);
// The panel kind of the window a command opens (a transformation's panel);
// 0 for none. The one place a module's panel kind is kept.
int32_t PanelKindOf(int32_t commandId);
// The one check of the menus and of dispatch.
bool CommandEnabled(int32_t id, const CommandState& state);

// The menu bar.
struct MenuItem {
    enum class Type { Command, Separator, Submenu, RecentFiles, MaskSources, WindowList };
    Type type;
    int32_t id;                   // Command: its id
    const char* label;            // Submenu: its title
    int32_t condition;            // Submenu: when it is enabled
    bool panelGreys;              // Submenu: greyed while a transformation is open
    std::vector<MenuItem> items;  // Submenu: its items
};
struct Menu {
    const char* title;
    std::vector<MenuItem> items;
};
const std::vector<Menu>& MenuBar();

// The recent-file item i (0..9): "&1: name" ... "1&0: name", or "&3:" when
// the place holds no name.
std::string RecentFileLabel(int32_t index, const std::string& name);

// The right-click menu of an image window: ids 200..204 and the frame
// commands they stand for.
struct PopupItem {
    int32_t id;
    const char* label;
    int32_t command;  // 0 for a separator
};
const std::vector<PopupItem>& ImageWindowPopup();

// Help: the topic number of a window kind, 0 when it has none, and the page
// that F1 opens for it ("topic-N.html" when shipped, else "index.html").
int32_t HelpTopic(int32_t windowKind);
std::string HelpPageName(int32_t windowKind, const std::string& helpDirectory);

// The Mask menu: the sources offered for a mask over the active image.
struct MaskCandidate {
    const void* window;
    int32_t imageKind, width, height;
    std::string title;
};
struct MaskMenu {
    bool offerNew = false;        // "New" (4500)
    std::vector<size_t> sources;  // indices into the candidates, ids 4501 on
};
MaskMenu BuildMaskMenu(bool maskToolBusy, int32_t activeKind, int32_t activeImageKind,
                       int32_t width, int32_t height, const void* activeWindow,
                       const std::vector<MaskCandidate>& candidates);

}  // namespace lv
