// The panel controls' arithmetic: slider positions and ticks, the integer
// field's text rule, and popup lists' packed text.
#include <gtest/gtest.h>

#include <cstdlib>

#include "transform/controls/slider_math.h"

namespace lv {
namespace {

TEST(SliderMath, ValuesAndPixels)
{
    for (int32_t width : {9, 40, 108, 200, 1032, 1500}) {
        SCOPED_TRACE(width);
        EXPECT_EQ(SliderPixel(width, 0), 4);
        EXPECT_EQ(SliderPixel(width, 1024), width - 4);
        EXPECT_EQ(SliderValue(width, 4), 0);
        EXPECT_EQ(SliderValue(width, width - 4), 1024);
        // The pointer is kept on the track.
        EXPECT_EQ(SliderValue(width, -50), 0);
        EXPECT_EQ(SliderValue(width, width + 50), 1024);
        int32_t last = -1;
        for (int32_t p = 4; p <= width - 4; ++p) {
            const int32_t v = SliderValue(width, p);
            EXPECT_GE(v, last);
            last = v;
            // Truncation both ways loses at most one pixel, or one step of
            // the scale on tracks wider than 1024.
            EXPECT_LE(std::abs(SliderPixel(width, v) - p), (width - 8) / 1024 + 1);
        }
    }
    // A track of exactly 1024 pixels maps one to one.
    for (int32_t v = 0; v <= 1024; v += 7) EXPECT_EQ(SliderValue(1032, SliderPixel(1032, v)), v);
    EXPECT_EQ(SliderPixel(108, 512), 54);   // (100 * 512 >> 10) + 4
    EXPECT_EQ(SliderValue(108, 30), 266);   // 26 * 1024 / 100
    EXPECT_EQ(SliderPixel(100, 5000), 96);  // values beyond the scale stay on the track
}

TEST(SliderMath, NarrowSlidersAreSafe)
{
    for (int32_t width : {8, 5, 0, -3}) {
        EXPECT_EQ(SliderValue(width, 4), 0);
        EXPECT_EQ(SliderValue(width, 100), 0);
        EXPECT_EQ(SliderPixel(width, 1024), 4);
        EXPECT_TRUE(SliderTicks(width).empty());
    }
}

TEST(SliderMath, MarkerPick)
{
    EXPECT_EQ(SliderPickMarker(-1, 0), 1);  // one marker: always the first
    EXPECT_EQ(SliderPickMarker(-1, 17), 1);
    EXPECT_EQ(SliderPickMarker(1024, 8), 2);
    EXPECT_EQ(SliderPickMarker(0, 0), 2);
    EXPECT_EQ(SliderPickMarker(0, 9), 1);
    EXPECT_EQ(SliderPickMarker(512, 17), 1);
}

TEST(SliderMath, TickCountsAndLengths)
{
    struct Case {
        int32_t width, count, levels;
    };
    for (Case c : {Case{135, 17, 3}, Case{136, 33, 4}, Case{263, 33, 4}, Case{264, 65, 5},
                   Case{519, 65, 5}, Case{520, 129, 6}}) {
        SCOPED_TRACE(c.width);
        const std::vector<SliderTick> ticks = SliderTicks(c.width);
        ASSERT_EQ(static_cast<int32_t>(ticks.size()), c.count);
        EXPECT_EQ(ticks.front().x, 4);
        EXPECT_EQ(ticks.back().x, c.width - 4);
        int32_t top = 0;
        for (const SliderTick& t : ticks) top = std::max(top, t.level);
        EXPECT_EQ(top + 1, c.levels);
        EXPECT_EQ(ticks.front().level, top);
        EXPECT_EQ(ticks[(ticks.size() - 1) / 2].level, top);
        EXPECT_EQ(ticks[1].level, 0);
        EXPECT_EQ(ticks[2].level, 1);
        EXPECT_EQ(ticks[1].length + 1, ticks[2].length);
    }
    // Below 128 pixels of track: 17 ticks at w * i >> 4.
    const std::vector<SliderTick> small = SliderTicks(108);
    EXPECT_EQ(small[3].x, 4 + (100 * 3 >> 4));
    EXPECT_EQ(small[4].level, 2);
    EXPECT_EQ(small[6].level, 1);
    EXPECT_EQ(small[5].level, 0);
}

TEST(IntegerText, Rule)
{
    IntegerTextResult r = IntegerTextRule("42", 10, 0, 100);
    EXPECT_EQ(r.value, 42);
    EXPECT_TRUE(r.changed);
    EXPECT_FALSE(r.beep || r.rewrite);

    r = IntegerTextRule("10", 10, 0, 100);
    EXPECT_FALSE(r.changed || r.beep || r.rewrite);

    for (const char* bad : {"abc", "", "-", "4x", " 5"}) {
        SCOPED_TRACE(bad);
        r = IntegerTextRule(bad, 10, 0, 100);
        EXPECT_EQ(r.value, 10);
        EXPECT_TRUE(r.beep && r.rewrite);
        EXPECT_FALSE(r.changed);
    }

    r = IntegerTextRule("500", 50, 0, 100);
    EXPECT_EQ(r.value, 100);
    EXPECT_TRUE(r.beep && r.rewrite && r.changed);
    r = IntegerTextRule("-7", 50, 0, 100);
    EXPECT_EQ(r.value, 0);
    EXPECT_TRUE(r.beep && r.changed);
    r = IntegerTextRule("500", 100, 0, 100);  // clamped to what it was: no message
    EXPECT_TRUE(r.beep && r.rewrite);
    EXPECT_FALSE(r.changed);
    r = IntegerTextRule("-5", 0, -10, 10);
    EXPECT_EQ(r.value, -5);
    EXPECT_FALSE(r.beep);

    // Only the first 10 characters are read.
    r = IntegerTextRule("12345678901", 0, 0, 2000000000);
    EXPECT_EQ(r.value, 1234567890);
    EXPECT_FALSE(r.beep);
    // Beyond 32 bits the text is no number: the value returns.
    r = IntegerTextRule("99999999999", 5, 0, 10);
    EXPECT_EQ(r.value, 5);
    EXPECT_TRUE(r.beep && r.rewrite);
}

TEST(PopupText, PackedText)
{
    const std::string packed = PackPopupText("Mode:", {"Fast", "-Slow", "Best", "-"});
    EXPECT_EQ(packed, std::string("Mode:\0Fast\0-Slow\0Best\0-\0\x01", 25));
    PopupListText list = ParsePopupText(packed);
    EXPECT_EQ(list.label, "Mode:");
    ASSERT_EQ(list.entries.size(), 4u);
    EXPECT_EQ(list.entries[1], "Slow");
    EXPECT_EQ(list.entries[3], "");
    EXPECT_EQ(list.disabled, (std::vector<bool>{false, true, false, true}));

    list = ParsePopupText(std::string("\0One\0Two\0\x01ignored\0", 19));
    EXPECT_EQ(list.label, "");
    EXPECT_EQ(list.entries, (std::vector<std::string>{"One", "Two"}));

    // Truncated text ends the list where it ends.
    list = ParsePopupText(std::string("Lbl\0A\0B", 7));
    EXPECT_EQ(list.entries, (std::vector<std::string>{"A", "B"}));
    EXPECT_TRUE(ParsePopupText("").entries.empty());
    EXPECT_TRUE(ParsePopupText(std::string("L\0\x01", 3)).entries.empty());
}

TEST(PopupText, StepSkipsDisabled)
{
    const std::vector<bool> off{true, false, true, true, false, true};
    EXPECT_EQ(PopupStep(off, -1, 1), 1);  // Home
    EXPECT_EQ(PopupStep(off, 6, -1), 4);  // End
    EXPECT_EQ(PopupStep(off, 1, 1), 4);   // Down over two disabled entries
    EXPECT_EQ(PopupStep(off, 4, 1), 4);   // nothing further: stays
    EXPECT_EQ(PopupStep(off, 1, -1), 1);
    EXPECT_EQ(PopupStep({true, true}, -1, 1), -1);
}

}  // namespace
}  // namespace lv
