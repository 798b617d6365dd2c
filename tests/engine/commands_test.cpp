#include "shell/commands.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "image/image.h"

namespace lv {
namespace {

CommandState ImageActive(int32_t imageKind)
{
    CommandState s;
    s.hasActiveChild = true;
    s.activeKind = kKindImage;
    s.activeImageKind = imageKind;
    return s;
}

TEST(Commands, TableIsConsistentWithTheMenus)
{
    std::set<int32_t> ids;
    for (const Command& c : CommandTable()) EXPECT_TRUE(ids.insert(c.id).second) << c.id;
    // Every command of a menu is in the table, once.
    std::set<int32_t> inMenus;
    std::function<void(const std::vector<MenuItem>&)> walk =
        [&](const std::vector<MenuItem>& items) {
            for (const MenuItem& item : items) {
                if (item.type == MenuItem::Type::Command) {
                    EXPECT_NE(FindCommand(item.id), nullptr) << item.id;
                    EXPECT_TRUE(inMenus.insert(item.id).second) << item.id;
                }
                walk(item.items);
            }
        };
    for (const Menu& menu : MenuBar()) walk(menu.items);
    for (int32_t id : ids) {
        if (id == kCmdMaskNew) continue;  // the Mask menu is built when it opens
        EXPECT_TRUE(inMenus.count(id)) << id << " is in no menu";
    }

    // The places the enable rules and the workspace rely on.
    ASSERT_GE(MenuBar().size(), 6u);
    EXPECT_STREQ(MenuBar()[5].title, "&Window");
    const auto& transformation = MenuBar()[2].items;
    EXPECT_STREQ(transformation[0].label, "&Geometry");
    EXPECT_STREQ(transformation[1].label, "G&ray");
    EXPECT_STREQ(transformation[2].label, "C&olor");
    EXPECT_STREQ(transformation[10].label, "&Special Effects");
    EXPECT_EQ(transformation[2].condition, kColorImage);

    EXPECT_STREQ(FindCommand(kCmdInfo)->shortcut, "Ctrl+W");
    EXPECT_STREQ(FindCommand(kCmdSaveAs)->shortcut, "Ctrl+Shift+S");
    EXPECT_STREQ(FindCommand(kCmdUndo)->shortcut, "Ctrl+Z");
    EXPECT_STREQ(FindCommand(kCmdHelpContext)->shortcut, "F1");
    EXPECT_STREQ(FindCommand(kCmdNext)->shortcut, "Ins");
    EXPECT_STREQ(FindCommand(kCmdZoomIn)->shortcut, "Num+*");
    EXPECT_EQ(FindCommand(4050)->panelKind, kKindBrightnessCurve);
    EXPECT_EQ(FindCommand(4999), nullptr);
}

TEST(Commands, EnableRulesFollowTheActiveWindow)
{
    CommandState none;
    EXPECT_TRUE(CommandEnabled(kCmdExit, none));
    EXPECT_FALSE(CommandEnabled(kCmdClose, none));
    EXPECT_FALSE(CommandEnabled(kCmdInfo, none));
    EXPECT_FALSE(CommandEnabled(kCmdZoomIn, none));
    EXPECT_FALSE(CommandEnabled(kCmdNegative, none));

    CommandState gray = ImageActive(kImageGray);
    EXPECT_TRUE(CommandEnabled(kCmdInfo, gray));
    EXPECT_TRUE(CommandEnabled(kCmdNegative, gray));
    EXPECT_TRUE(CommandEnabled(kCmdZoomOut, gray));
    EXPECT_TRUE(ConditionHolds(kGrayImage, gray));
    EXPECT_FALSE(ConditionHolds(kColorImage, gray));
    EXPECT_TRUE(ConditionHolds(kBinaryOrGrayImage, gray));
    EXPECT_FALSE(ConditionHolds(kBinaryOrGrayImage, ImageActive(kImageColor)));
    EXPECT_FALSE(ConditionHolds(kGrayOrColorImage, ImageActive(kImageBinary)));

    // A preview zooms but is not an image window.
    CommandState preview = gray;
    preview.activeKind = kKindPreview;
    EXPECT_TRUE(CommandEnabled(kCmdZoomIn, preview));
    EXPECT_FALSE(CommandEnabled(kCmdInfo, preview));
    EXPECT_FALSE(CommandEnabled(kCmdNegative, preview));

    // While a transformation is open the others are grey, zoom and closing
    // still work.
    CommandState busy = gray;
    busy.panelKind = kKindBrightnessCurve;
    EXPECT_FALSE(CommandEnabled(kCmdNegative, busy));
    EXPECT_FALSE(CommandEnabled(kCmdCopy, busy));
    EXPECT_TRUE(CommandEnabled(kCmdZoomIn, busy));
    EXPECT_TRUE(CommandEnabled(kCmdClose, busy));

    // Modules not in this build are grey whatever the window.
    EXPECT_FALSE(CommandEnabled(4049, gray));  // Color Curves, still to come
    EXPECT_TRUE(CommandEnabled(4050, gray));   // Brightness Curve has its panel
    EXPECT_FALSE(CommandEnabled(kCmdCalibrate, none));
    EXPECT_FALSE(CommandEnabled(9999, gray));
}

TEST(Commands, SpecialRules)
{
    CommandState s = ImageActive(kImageColor);
    EXPECT_FALSE(CommandEnabled(kCmdUndo, s));
    s.undoAvailable = true;
    EXPECT_TRUE(CommandEnabled(kCmdUndo, s));
    EXPECT_TRUE(CommandEnabled(kCmdUndoAll, s));
    // Recent files: only places within the count that hold a name.
    s.recentCount = 2;
    s.recentPresent[0] = s.recentPresent[2] = true;
    EXPECT_TRUE(CommandEnabled(kCmdRecentFirst, s));
    EXPECT_FALSE(CommandEnabled(kCmdRecentFirst + 1, s));
    EXPECT_FALSE(CommandEnabled(kCmdRecentFirst + 2, s));

    EXPECT_EQ(RecentFileLabel(0, "/a.tif"), "&1: /a.tif");
    EXPECT_EQ(RecentFileLabel(9, "/j.tif"), "1&0: /j.tif");
    EXPECT_EQ(RecentFileLabel(2, ""), "&3:");

    EXPECT_EQ(ImageWindowPopup()[3].command, kCmdZoomInResize);  // the popup's zoom-in resizes
    EXPECT_EQ(HelpTopic(4), 75);
    EXPECT_EQ(HelpTopic(0), 0);
    EXPECT_EQ(HelpPageName(0, "/nonexistent"), "index.html");
    EXPECT_EQ(HelpPageName(4, "/nonexistent"), "index.html");
}

TEST(Commands, MaskMenuOffersGrayImagesOfTheSameSize)
{
    int a = 0, b = 0, c = 0, d = 0;
    std::vector<MaskCandidate> windows = {
        {&a, kImageColor, 100, 80, "active"},
        {&b, kImageGray, 100, 80, "mask"},
        {&c, kImageGray, 100, 81, "other size"},
        {&d, kImageColor, 100, 80, "colour"},
    };
    MaskMenu menu = BuildMaskMenu(false, kKindImage, kImageColor, 100, 80, &a, windows);
    EXPECT_TRUE(menu.offerNew);
    EXPECT_EQ(menu.sources, std::vector<size_t>{1});
    EXPECT_FALSE(BuildMaskMenu(true, kKindImage, kImageColor, 100, 80, &a, windows).offerNew);
    EXPECT_FALSE(BuildMaskMenu(false, kKindImage, kImageBinary, 100, 80, &a, windows).offerNew);
    EXPECT_TRUE(
        BuildMaskMenu(false, kKindPreview, kImageColor, 100, 80, &a, windows).sources.empty());
    std::vector<MaskCandidate> many(60, MaskCandidate{&b, kImageGray, 100, 80, "m"});
    EXPECT_EQ(BuildMaskMenu(false, kKindImage, kImageColor, 100, 80, &a, many).sources.size(), 49u);
}

}  // namespace
}  // namespace lv
