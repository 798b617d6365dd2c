// Resize's panel: its texts in every unit, and what an entry in each box
// does under each Preserve choice, with values worked out by hand.
#include "geometry/resize_panel.h"

#include <gtest/gtest.h>

#include "image/image.h"

namespace lv {
namespace {

// 640 by 480 colour at 200 dpi: 3.20 by 2.40 inches.
ResizePanel Photo(int32_t preserve = kPreserveProportions, int32_t sizeUnits = kUnitsPixels)
{
    ResizePanel panel;
    ResizePanelLoad(panel, kImageColor, 640, 480, 200.0, 150.0);
    panel.preserve = preserve;
    panel.sizeUnits = sizeUnits;
    return panel;
}

constexpr uint32_t kSizesShown =
    kResizeShowWidth | kResizeShowHeight | kResizeShowFileSize | kResizeShowProportions;

TEST(ResizePanelTexts, EveryUnitFileSizeAndProportions)
{
    // 640 / 200 in; 640 * 2.540005 / 200 = 8.128016 cm.
    EXPECT_EQ(ResizeSizeText(640, kUnitsPixels, 200.0), "640");
    EXPECT_EQ(ResizeSizeText(640, kUnitsInches, 200.0), "3.20");
    EXPECT_EQ(ResizeSizeText(640, kUnitsCentimetres, 200.0), "8.13");
    // 200 / 25.40005 = 7.874 dpmm, with one decimal; 200 / 2.540005 = 78.740 dpcm.
    EXPECT_EQ(ResizeResolutionText(200.0, kResolutionDpmm), "7.9");
    EXPECT_EQ(ResizeResolutionText(200.0, kResolutionDpcm), "78.74");

    // 480 rows of 1920 bytes; 1000 rows of (641 + 7) / 8 = 81.
    EXPECT_EQ(ResizeFileSizeText(kImageColor, 640, 480), "0.922MB");
    EXPECT_EQ(ResizeFileSizeText(kImageBinary, 641, 1000), "0.081MB");
    // 100000 by 33334 colour is 10000.2 MB; one row fewer 9999.9 MB.
    EXPECT_EQ(ResizeFileSizeText(kImageColor, 100000, 33334), "***");
    EXPECT_EQ(ResizeFileSizeText(kImageColor, 100000, 33333), "9999.900MB");

    EXPECT_EQ(ResizeProportionsText(640, 480), "1.00:0.75");
}

TEST(ResizePanelSizeEntries, TheOtherSideFollowsUnlessNothingIsPreserved)
{
    ResizePanel panel = Photo();
    ResizeEntry entry = ResizeWidthEntry(panel, "321");  // 321 * 480 / 640 = 240.75
    EXPECT_EQ(panel.targetHeight, 240);
    EXPECT_FALSE(entry.beep);
    EXPECT_EQ(entry.show, kSizesShown & ~kResizeShowWidth);
    ResizeWidthEntry(panel, "1");  // 1 * 480 / 640 = 0.75, raised to 1
    EXPECT_EQ(panel.targetHeight, 1);

    // A length at the New resolution: 1.5 in at 200 dpi.
    panel = Photo(kPreserveProportions, kUnitsInches);
    ResizeWidthEntry(panel, "1.5");
    EXPECT_EQ(panel.targetHeight, 225);

    panel = Photo(kPreserveNone);
    entry = ResizeWidthEntry(panel, "100");
    EXPECT_EQ(panel.targetHeight, 480);
    EXPECT_EQ(entry.show, uint32_t{kResizeShowFileSize | kResizeShowProportions});
}

TEST(ResizePanelSizeEntries, RefusedZeroAndTooLargeEntries)
{
    ResizePanel panel = Photo();
    ResizeWidthEntry(panel, "320");
    for (const char* text : {"abc", "-5", "", "-0.3"}) {
        const ResizeEntry entry = ResizeWidthEntry(panel, text);
        EXPECT_TRUE(entry.beep) << text;
        EXPECT_EQ(entry.show, uint32_t{kResizeShowWidth}) << text;  // shows 320 again
        EXPECT_EQ(panel.targetWidth, 320) << text;
    }
    // 0, and 0.4 rounding to 0, become 1 quietly, and the box keeps the text.
    for (const char* text : {"0", "0.4"}) {
        const ResizeEntry entry = ResizeHeightEntry(panel, text);
        EXPECT_FALSE(entry.beep) << text;
        EXPECT_EQ(entry.show & kResizeShowHeight, 0u) << text;
        EXPECT_EQ(panel.targetHeight, 1) << text;
    }
    const ResizeEntry entry = ResizeWidthEntry(panel, "5000000");
    EXPECT_TRUE(entry.beep);
    EXPECT_EQ(entry.show, kSizesShown);
    EXPECT_EQ(panel.targetWidth, kResizeMaxSide);
    EXPECT_EQ(panel.targetHeight, 749999);  // 999999 * 480 / 640 = 749999.25
}

TEST(ResizePanelResolutionEntry, EachPreserveChoice)
{
    // Proportions, in dpcm: 40 dpcm is 101.6002 dpi, and the input's printed
    // size stays, whatever was typed: 640 * 101.6002 / 200 = 325.12 and
    // 480 * 101.6002 / 200 = 243.84.
    ResizePanel panel = Photo();
    panel.resolutionUnits = kResolutionDpcm;
    ResizeWidthEntry(panel, "100");
    EXPECT_EQ(ResizeResolutionEntry(panel, "40").show, kSizesShown);
    EXPECT_DOUBLE_EQ(panel.targetResolution, 101.6002);
    EXPECT_EQ(panel.targetWidth, 325);
    EXPECT_EQ(panel.targetHeight, 244);

    // File Size: the pixels stay.
    panel = Photo(kPreserveFileSize);
    panel.targetWidth = 10;
    ResizeResolutionEntry(panel, "72");
    EXPECT_EQ(panel.targetWidth, 640);
    EXPECT_EQ(panel.targetHeight, 480);

    // None in pixels: nothing else changes and nothing is shown again.
    panel = Photo(kPreserveNone);
    ResizeWidthEntry(panel, "100");
    const ResizeEntry entry = ResizeResolutionEntry(panel, "300");
    EXPECT_EQ(panel.targetWidth, 100);
    EXPECT_EQ(entry.show, 0u);
    EXPECT_FALSE(entry.beep);

    // None in inches: the New printed size, 0.5 by 2.4 in, stays.
    panel = Photo(kPreserveNone, kUnitsInches);
    ResizeWidthEntry(panel, "0.5");
    ResizeResolutionEntry(panel, "301");
    EXPECT_EQ(panel.targetWidth, 151);   // 150.5, halves away from zero
    EXPECT_EQ(panel.targetHeight, 722);  // 722.4

    for (const char* text : {"0", "-72", "x"}) {
        panel = Photo();
        const ResizeEntry refused = ResizeResolutionEntry(panel, text);
        EXPECT_TRUE(refused.beep) << text;
        EXPECT_EQ(refused.show, uint32_t{kResizeShowResolution}) << text;
        EXPECT_EQ(panel.targetResolution, 200.0) << text;
    }
}

}  // namespace
}  // namespace lv
