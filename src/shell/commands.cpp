#include "shell/commands.h"

#include <algorithm>

#include "image/image.h"
#include "shell/text.h"
#include "transform/registry.h"

namespace lv {

namespace {

// Shorthands for the table: a command greyed while a panel is open, and who
// carries the command out.
constexpr bool P = true;
constexpr bool N = false;
constexpr CommandOwner Frame = CommandOwner::Frame;
constexpr CommandOwner Module = CommandOwner::Module;
constexpr CommandOwner Later = CommandOwner::Later;

const std::vector<Command> kCommands = {
    // File
    {kCmdNew, "&New...", kAlways, P, nullptr, kKindNew, Later},
    {kCmdOpen, "&Open...", kAlways, N, "Ctrl+O", 0, Frame},
    {kCmdOpenPhotoCd, "Open &PhotoCD...", kAlways, P, nullptr, 18, Later},
    {kCmdBrowse, "&Browse...", kAlways, N, nullptr, 59, Later},
    {kCmdSave, "&Save", kImageWindow, N, "Ctrl+S", 0, Frame},
    {kCmdSaveAs, "Save &As...", kImageWindow, N, "Ctrl+Shift+S", 0, Frame},
    {kCmdClose, "&Close", kActiveChild, N, nullptr, 0, Frame},
    {kCmdRevert, "&Revert", kSpecialRule, N, nullptr, 0, Frame},
    {kCmdPrint, "&Print...", kImageWindow, N, nullptr, 44, Later},
    {kCmdPrintSetup, "Print Se&tup...", kAlways, N, nullptr, 0, Later},
    {kCmdSlideShow, "Sli&de Show...", kAlways, N, nullptr, 15, Later},
    {kCmdAcquire, "Ac&quire...", kAlways, N, nullptr, 0, Later},
    {kCmdSelectSource, "Select Sour&ce...", kAlways, N, nullptr, 0, Later},
    {kCmdPreferences, "Pr&eferences...", kAlways, N, nullptr, kKindPreferences, Frame},
    {kCmdCalibrate, "Ca&librate...", kAlways, N, nullptr, kKindCalibration, Later},
    {kCmdExit, "E&xit", kAlways, N, nullptr, 0, Frame},
    // Edit
    {kCmdUndo, "&Undo", kSpecialRule, N, "Ctrl+Z", 0, Frame},
    {kCmdUndoAll, "Undo &All", kSpecialRule, N, nullptr, 0, Frame},
    {kCmdEditCopy, "&Copy", kImageWindow, N, nullptr, 0, Later},
    {kCmdPaste, "&Paste", kSpecialRule, N, nullptr, 0, Later},
    // Transformation: Geometry
    {4001, "&Mirror/Rotate...", kImageWindow, P, nullptr, 19, Module},
    {4002, "&Crop...", kImageWindow, P, nullptr, 3, Module},
    {4003, "&Resize...", kImageWindow, P, nullptr, 24, Module},
    {4004, "&Warp...", kImageWindow, P, nullptr, 23, Module},
    {4022, "&Add Border...", kImageWindow, P, nullptr, 46, Module},
    {4007, "&Tile...", kImageWindow, P, nullptr, 52, Module},
    {4010, "&Displace...", kImageWindow, P, nullptr, 35, Module},
    {4047, "&Spiral...", kGrayOrColorImage, P, nullptr, 54, Module},
    {4046, "&Kaleidoscope...", kGrayOrColorImage, P, nullptr, 48, Module},
    // Transformation: Gray
    {4052, "&Brightness...", kImageWindow, P, nullptr, 29, Module},
    {4050, "Brightness &Curve...", kImageWindow, P, nullptr, kKindBrightnessCurve, Module},
    {4054, "&Levels and Color...", kImageWindow, P, nullptr, 43, Module},
    {4044, "&Equalize...", kGrayOrColorImage, P, nullptr, 56, Module},
    {4029, "&Gamma Adjust...", kGrayOrColorImage, P, nullptr, 65, Module},
    {4027, "&Posterize...", kImageWindow, P, nullptr, 63, Module},
    {4008, "&High Contrast...", kGrayOrColorImage, P, nullptr, 53, Module},
    // Transformation: Color
    {4049, "&Curves...", kColorImage, P, nullptr, 28, Module},
    {4011, "&Balance...", kColorImage, P, nullptr, 22, Module},
    {4012, "&Saturation...", kColorImage, P, nullptr, 31, Module},
    {4051, "&Tint...", kImageWindow, P, nullptr, 11, Module},
    {4013, "&Monochrome...", kColorImage, P, nullptr, 5, Module},
    {4015, "&Extract Channel...", kColorImage, P, nullptr, 10, Module},
    {4023, "Com&bine Channels...", kGrayImage, P, nullptr, 49, Module},
    {4024, "&Registration...", kColorImage, P, nullptr, 50, Module},
    {4017, "&Filter...", kImageWindow, P, nullptr, 25, Module},
    {4053, "C&onvert...", kImageWindow, P, nullptr, 61, Module},
    // Transformation, direct items
    {kCmdCopy, "&Copy", kImageWindow, P, nullptr, 0, Module},
    {kCmdNegative, "&Negative", kImageWindow, P, nullptr, 0, Module},
    {4020, "B&lur...", kImageWindow, P, nullptr, 8, Module},
    {4019, "S&harpen...", kImageWindow, P, nullptr, 7, Module},
    {4041, "&Edge...", kImageWindow, P, nullptr, 40, Module},
    // Transformation: Special Effects
    {4040, "&Emboss...", kGrayOrColorImage, P, nullptr, 41, Module},
    {4042, "&Difference...", kImageWindow, P, nullptr, 42, Module},
    {4043, "Add &Noise...", kImageWindow, P, nullptr, 51, Module},
    {4014, "&Halftone...", kGrayOrColorImage, P, nullptr, 6, Module},
    {4045, "&Stereo...", kGrayOrColorImage, P, nullptr, 34, Module},
    {4048, "C&alendar...", kGrayOrColorImage, P, nullptr, 57, Module},
    // Transformation, making pictures
    {4018, "Co&mposite...", kImageWindow, P, nullptr, 38, Module},
    {4009, "La&yout...", kAlways, P, nullptr, 21, Module},
    {4021, "Te&xt...", kImageWindow, P, nullptr, 33, Module},
    {4016, "&Gradient...", kImageWindow, P, nullptr, 39, Module},
    {4025, "Te&xture...", kAlways, P, nullptr, 58, Module},
    {4028, "Gr&id...", kImageWindow, P, nullptr, 64, Module},
    // Mask
    {kCmdMaskNew, "&New", kImageWindow, N, nullptr, kKindMaskTool, Later},
    // Tools
    {kCmdReadout, "&Readout", kAlways, N, nullptr, 17, Later},
    {kCmdZoomTool, "&Zoom", kAlways, N, nullptr, 0, Later},
    {kCmdClone, "&Clone", kAlways, N, nullptr, 26, Later},
    {kCmdPaint, "&Paint", kAlways, N, nullptr, 27, Later},
    {kCmdLineArrow, "&Line and Arrow", kAlways, N, nullptr, 37, Later},
    {kCmdMisc, "&Miscellaneous", kAlways, N, nullptr, 32, Later},
    {kCmdMagnifier, "M&agnifier", kAlways, N, nullptr, 47, Later},
    // Window
    {kCmdInfo, "&Info...", kImageWindow, N, "Ctrl+W", 0, Frame},
    {kCmdHistogram, "&Histogram", kImageWindow, N, nullptr, 0, Frame},
    {kCmdGrid, "&Grid...", kImageWindow, N, nullptr, 0, Frame},
    {kCmdExpand, "&Expand", kImageOrPreview, N, nullptr, 0, Frame},
    {kCmdFit, "&Fit", kImageOrPreview, N, nullptr, 0, Frame},
    {kCmdZoomIn, "Zoom &In", kImageOrPreview, N, "Num+*", 0, Frame},
    {kCmdZoomInResize, "Zoom In and &Resize", kImageOrPreview, N, "Num++", 0, Frame},
    {kCmdZoomOut, "Zoom &Out", kImageOrPreview, N, "Num+-", 0, Frame},
    {kCmdZoomActual, "Zoom &1:1", kImageOrPreview, N, nullptr, 0, Frame},
    {kCmdZoomFactor, "Zoom Fa&ctor...", kImageOrPreview, N, nullptr, 0, Frame},
    {kCmdNoToolBar, "No &Tool Bar", kAlways, N, nullptr, 0, Frame},
    {kCmdToolBarTop, "Tool Bar at To&p", kAlways, N, nullptr, 0, Frame},
    {kCmdToolBarLeft, "Tool Bar at &Left", kAlways, N, nullptr, 0, Frame},
    {kCmdNext, "&Next", kActiveChild, N, "Ins", 0, Frame},
    {kCmdCascade, "C&ascade", kActiveChild, N, nullptr, 0, Frame},
    {kCmdArrangeIcons, "Arrange Ic&ons", kActiveChild, N, nullptr, 0, Frame},
    {kCmdCloseAll, "Close A&ll", kActiveChild, N, nullptr, 0, Frame},
    // Help
    {kCmdHelpContents, "&Contents", kAlways, N, nullptr, 0, Frame},
    {kCmdHelpSearch, "&Search", kAlways, N, nullptr, 0, Frame},
    {kCmdHelpContext, "Context (F&1)", kAlways, N, "F1", 0, Frame},
    {kCmdHelpGlossary, "&Glossary", kAlways, N, nullptr, 0, Frame},
    {kCmdManual, "Open Electronic &Manual", kAlways, N, nullptr, 0, Frame},
    {kCmdAbout, "&About...", kAlways, N, nullptr, 0, Frame},
};

MenuItem Cmd(int32_t id) { return {MenuItem::Type::Command, id, nullptr, 0, false, {}}; }
MenuItem Sep() { return {MenuItem::Type::Separator, 0, nullptr, 0, false, {}}; }
MenuItem Sub(const char* label, int32_t condition, bool panelGreys, std::vector<MenuItem> items)
{
    return {MenuItem::Type::Submenu, 0, label, condition, panelGreys, std::move(items)};
}
MenuItem Special(MenuItem::Type type) { return {type, 0, nullptr, 0, false, {}}; }

// The Window menu is the fifth place (counting from 0) and the submenus of
// Transformation are at places 0, 1, 2 and 10, where the enable rules look
// for them.
const std::vector<Menu> kMenuBar = {
    {"&File",
     {Cmd(kCmdNew),
      Cmd(kCmdOpen),
      Cmd(kCmdOpenPhotoCd),
      Cmd(kCmdBrowse),
      Sep(),
      Cmd(kCmdSave),
      Cmd(kCmdSaveAs),
      Cmd(kCmdClose),
      Cmd(kCmdRevert),
      Sep(),
      Cmd(kCmdPrint),
      Cmd(kCmdPrintSetup),
      Cmd(kCmdSlideShow),
      Sep(),
      Cmd(kCmdAcquire),
      Cmd(kCmdSelectSource),
      Sep(),
      Cmd(kCmdPreferences),
      Cmd(kCmdCalibrate),
      Sep(),
      Special(MenuItem::Type::RecentFiles),
      Sep(),
      Cmd(kCmdExit)}},
    {"&Edit", {Cmd(kCmdUndo), Cmd(kCmdUndoAll), Sep(), Cmd(kCmdEditCopy), Cmd(kCmdPaste)}},
    {"&Transformation",
     {Sub("&Geometry", kImageWindow, true,
          {Cmd(4001), Cmd(4002), Cmd(4003), Cmd(4004), Cmd(4022), Cmd(4007), Cmd(4010), Cmd(4047),
           Cmd(4046)}),
      Sub("G&ray", kImageWindow, true,
          {Cmd(4052), Cmd(4050), Cmd(4054), Cmd(4044), Cmd(4029), Cmd(4027), Cmd(4008)}),
      Sub("C&olor", kColorImage, true,
          {Cmd(4049), Cmd(4011), Cmd(4012), Cmd(4051), Cmd(4013), Cmd(4015), Cmd(4023), Cmd(4024),
           Cmd(4017), Cmd(4053)}),
      Sep(), Cmd(kCmdCopy), Cmd(kCmdNegative), Sep(), Cmd(4020), Cmd(4019), Cmd(4041),
      Sub("&Special Effects", kImageWindow, true,
          {Cmd(4040), Cmd(4042), Cmd(4043), Cmd(4014), Cmd(4045), Cmd(4048)}),
      Sep(), Cmd(4018), Cmd(4009), Cmd(4021), Cmd(4016), Cmd(4025), Cmd(4028)}},
    {"&Mask", {Special(MenuItem::Type::MaskSources)}},
    {"T&ools",
     {Cmd(kCmdReadout), Cmd(kCmdZoomTool), Cmd(kCmdClone), Cmd(kCmdPaint), Cmd(kCmdLineArrow),
      Cmd(kCmdMisc), Cmd(kCmdMagnifier)}},
    {"&Window",
     {Cmd(kCmdInfo),
      Cmd(kCmdHistogram),
      Cmd(kCmdGrid),
      Sep(),
      Cmd(kCmdExpand),
      Cmd(kCmdFit),
      Cmd(kCmdZoomIn),
      Cmd(kCmdZoomInResize),
      Cmd(kCmdZoomOut),
      Cmd(kCmdZoomActual),
      Cmd(kCmdZoomFactor),
      Sep(),
      Cmd(kCmdNoToolBar),
      Cmd(kCmdToolBarTop),
      Cmd(kCmdToolBarLeft),
      Sep(),
      Cmd(kCmdNext),
      Cmd(kCmdCascade),
      Cmd(kCmdArrangeIcons),
      Cmd(kCmdCloseAll),
      Sep(),
      Special(MenuItem::Type::WindowList)}},
    {"&Help",
     {Cmd(kCmdHelpContents), Cmd(kCmdHelpSearch), Cmd(kCmdHelpContext), Cmd(kCmdHelpGlossary),
      Sep(), Cmd(kCmdManual), Sep(), Cmd(kCmdAbout)}},
};

const std::vector<PopupItem> kPopup = {
    {200, "&Display Info", kCmdInfo},
    {201, "&Display Grid", kCmdGrid},
    {0, nullptr, 0},
    {202, "Zoom &In", kCmdZoomInResize},
    {203, "Zoom &Out", kCmdZoomOut},
    {204, "Zoom to &1:1", kCmdZoomActual},
};

// Window kind and help topic pairs.
constexpr int32_t kHelpTopics[][2] = {
    {3, 69},   {4, 75},   {5, 83},   {6, 167},  {7, 57},  {8, 56},   {9, 110},  {10, 82},
    {11, 77},  {13, 15},  {14, 31},  {15, 28},  {16, 28}, {17, 59},  {18, 17},  {19, 67},
    {20, 18},  {21, 156}, {22, 79},  {23, 71},  {24, 70}, {25, 53},  {26, 62},  {27, 63},
    {28, 166}, {29, 76},  {30, 30},  {31, 80},  {32, 65}, {33, 58},  {34, 92},  {35, 72},
    {37, 64},  {38, 54},  {39, 55},  {40, 86},  {41, 85}, {42, 87},  {43, 161}, {44, 24},
    {45, 100}, {46, 68},  {47, 61},  {48, 162}, {49, 78}, {50, 84},  {51, 88},  {52, 90},
    {53, 89},  {54, 163}, {56, 91},  {57, 165}, {58, 93}, {59, 169}, {60, 158}, {61, 168},
    {63, 170}, {64, 172}, {65, 173},
};

}  // namespace

const std::vector<Command>& CommandTable() { return kCommands; }

const Command* FindCommand(int32_t id)
{
    if (id >= kCmdRecentFirst && id <= kCmdRecentLast) {
        static const Command recent = {kCmdRecentFirst, "", kSpecialRule, N, nullptr, 0, Frame};
        return &recent;
    }
    if (id > kCmdMaskNew && id <= kCmdMaskLast) id = kCmdMaskNew;
    for (const Command& command : kCommands)
        if (command.id == id) return &command;
    return nullptr;
}

bool CommandBuilt(const Command& command)
{
    switch (command.owner) {
    case CommandOwner::Frame: return true;
    case CommandOwner::Module: return FindTransformByCommand(command.id) != nullptr;
    case CommandOwner::Later: return false;
    }
    return false;
}

int32_t PanelKindOf(int32_t commandId)
{
    const Command* command = FindCommand(commandId);
    return command ? command->panelKind : 0;
}

bool ConditionHolds(int32_t condition, const CommandState& s)
{
    const bool image = s.hasActiveChild && s.activeKind == kKindImage;
    const int32_t k = s.activeImageKind;
    switch (condition) {
    case kAlways: return true;
    case kActiveChild: return s.hasActiveChild;
    case kImageWindow: return image;
    case kColorImage: return image && k == kImageColor;
    case kGrayOrColorImage: return image && (k == kImageGray || k == kImageColor);
    case kBinaryOrGrayImage: return image && (k == kImageBinary || k == kImageGray);
    case kImageOrPreview:
        return s.hasActiveChild && (s.activeKind == kKindImage || s.activeKind == kKindPreview);
    case kGrayImage: return image && k == kImageGray;
    default: return false;
    }
}

bool CommandEnabled(int32_t id, const CommandState& s)
{
    const Command* command = FindCommand(id);
    if (!command) return false;
    if (id >= kCmdRecentFirst && id <= kCmdRecentLast) {
        const int32_t i = id - kCmdRecentFirst;
        return i < s.recentCount && s.recentPresent[i];
    }
    if (!CommandBuilt(*command)) return false;
    if (command->panelGreys && s.panelKind != 0) return false;
    switch (id) {
    case kCmdRevert:
        return s.hasActiveChild && s.panelKind == 0 && s.activeKind == kKindImage &&
               s.activeModified && s.activeHasFileName;
    case kCmdUndo:
    case kCmdUndoAll: return s.undoAvailable;
    case kCmdPaste: return s.clipboardHasImage;
    default: return ConditionHolds(command->condition, s);
    }
}

const std::vector<Menu>& MenuBar() { return kMenuBar; }

std::string RecentFileLabel(int32_t index, const std::string& name)
{
    if (name.empty()) return FormatText("&%d:", index + 1);
    if (index == 9) return FormatText("1&0: %s", name);
    return FormatText("&%d: %s", index + 1, name);
}

const std::vector<PopupItem>& ImageWindowPopup() { return kPopup; }

int32_t HelpTopic(int32_t windowKind)
{
    for (const auto& pair : kHelpTopics)
        if (pair[0] == windowKind) return pair[1];
    return 0;
}

std::string HelpPageName(int32_t windowKind, const std::string& helpDirectory)
{
    const int32_t topic = HelpTopic(windowKind);
    if (topic) {
        std::string page = FormatText("topic-%d.html", topic);
        if (FileExists(JoinPath(helpDirectory, page))) return page;
    }
    return "index.html";
}

// The Mask menu lists at most this many source windows.
constexpr size_t kMaskSourcesListed = 49;

MaskMenu BuildMaskMenu(bool maskToolBusy, int32_t activeKind, int32_t activeImageKind,
                       int32_t width, int32_t height, const void* activeWindow,
                       const std::vector<MaskCandidate>& candidates)
{
    MaskMenu menu;
    if (activeKind != kKindImage) return menu;
    menu.offerNew =
        !maskToolBusy && (activeImageKind == kImageGray || activeImageKind == kImageColor);
    for (size_t i = 0; i < candidates.size(); ++i) {
        const MaskCandidate& c = candidates[i];
        if (c.window == activeWindow || c.imageKind != kImageGray || c.width != width ||
            c.height != height)
            continue;
        if (menu.sources.size() == kMaskSourcesListed) break;
        menu.sources.push_back(i);
    }
    return menu;
}

}  // namespace lv
