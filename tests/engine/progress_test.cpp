#include "image/progress.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "shell/errors.h"
#include "shell/stderr_frontend.h"
#include "support/scripted_frontend.h"

namespace lv {
namespace {

TEST(Progress, TimeLeftIsExtrapolatedAndShownOnlyWhenItChanges)
{
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    fe.now = 5000;
    ProgressOpen(0, 100, "Negative", true);
    EXPECT_EQ(fe.waitCursors, 1);
    EXPECT_EQ(ProgressStep(0), 0);
    EXPECT_TRUE(fe.timeTexts.empty());  // the first step shows no time

    fe.now = 15000;  // 10 s for 10 of 100 steps: 90 s to go
    EXPECT_EQ(ProgressStep(10), 0);
    ASSERT_EQ(fe.timeTexts.size(), 1u);
    EXPECT_EQ(fe.timeTexts[0], "Time left: 00:01:30");

    fe.now = 15000;  // 10 s for 20 steps... still 40 s: a new text
    EXPECT_EQ(ProgressStep(20), 0);
    EXPECT_EQ(fe.timeTexts.back(), "Time left: 00:00:40");
    EXPECT_EQ(ProgressStep(20), 0);  // same time on show: nothing redrawn
    EXPECT_EQ(fe.timeTexts.size(), 2u);

    fe.now = 5000 + 1000ull * 3600 * 100;  // 100 h for one step: the hours overflow
    EXPECT_EQ(ProgressStep(1), 0);
    EXPECT_EQ(fe.timeTexts.back(), "Time left: **:00:00");
    ProgressClose();
    EXPECT_EQ(fe.arrowCursors, 1);
    EXPECT_EQ(ProgressCurrent(), nullptr);
    EXPECT_EQ(ProgressStep(3), 0);  // no box: nothing to abort
}

TEST(Progress, FirstEqualToLastNeverDividesByZero)
{
    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    ProgressOpen(7, 7, "Copy", true);
    EXPECT_EQ(ProgressStep(7), 0);
    const ProgressBox* box = ProgressCurrent();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(ProgressBarPixel(*box, 7, 10, 290), 10);
    EXPECT_TRUE(fe.timeTexts.empty());
    ProgressClose();

    ProgressOpen(0, 9, "Copy", true);
    box = ProgressCurrent();
    EXPECT_EQ(ProgressBarPixel(*box, 0, 10, 110), 10);
    EXPECT_EQ(ProgressBarPixel(*box, 9, 10, 110), 110);
    EXPECT_EQ(ProgressBarPixel(*box, 4, 10, 110), 10 + 4 * 100 / 9);
    EXPECT_EQ(ProgressBarPixel(*box, 50, 10, 110), 110);  // clamped to last
    ProgressClose();
}

TEST(Progress, CancelStopsAtTheNextStepAndStaysAborted)
{
    test::ScriptedFrontEnd fe;
    fe.abortAtStep = 3;
    ScopedFrontEnd installed(fe);
    ProgressOpen(0, 10, "Copy", true);
    EXPECT_EQ(ProgressStep(0), 0);
    EXPECT_EQ(ProgressStep(1), 0);
    EXPECT_EQ(ProgressStep(2), 0);
    EXPECT_EQ(ProgressStep(3), kErrAborted);
    EXPECT_EQ(ProgressStep(4), kErrAborted);
    ProgressClose();

    // Without a Cancel button nothing aborts, but the box is still served.
    ProgressOpen(0, 10, "Area", false);
    for (int32_t i = 0; i <= 10; ++i) EXPECT_EQ(ProgressStep(i), 0);
    ProgressClose();
    EXPECT_EQ(fe.pumps, 5 + 11);

    // A new box while one is open replaces it rather than nesting.
    ProgressOpen(0, 1, "One", true);
    ProgressOpen(0, 1, "Two", true);
    EXPECT_EQ(ProgressCurrent()->title, "Two");
    ProgressClose();
    EXPECT_EQ(fe.opens, fe.closes);
}

TEST(Progress, StderrBarRedrawsOnlyWhenTheTimeChanges)
{
    std::FILE* stream = std::tmpfile();
    ASSERT_NE(stream, nullptr);
    struct ClockedStderr : StderrFrontEnd {
        using StderrFrontEnd::StderrFrontEnd;
        uint64_t now = 0;
        uint64_t TickCount() override { return now; }
    } fe(stream);
    ScopedFrontEnd installed(fe);

    ProgressOpen(0, 999, "Negative", true);
    for (int32_t i = 0; i < 1000; ++i) {
        fe.now = static_cast<uint64_t>(i) * 10;  // 10 s in all: the time changes ten times
        ASSERT_EQ(ProgressStep(i), 0);
    }
    ProgressClose();
    EXPECT_LE(fe.redraws(), 13);  // the opening, at most eleven times (10 s to 0 s), the close
    EXPECT_GE(fe.redraws(), 2);

    ReportError(kErrImageType);
    std::rewind(stream);
    std::string text(4096, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), stream));
    std::fclose(stream);
    EXPECT_NE(text.find("Negative ["), std::string::npos);
    EXPECT_NE(text.find("Time left: 00:00:0"), std::string::npos);
    EXPECT_NE(text.find("Error: Illegal input image type\n"), std::string::npos);
}

TEST(Errors, TextsCaptionsAndTheBox)
{
    EXPECT_STREQ(ErrorText(0), "OK");
    EXPECT_STREQ(ErrorText(11), "Operation Aborted");
    EXPECT_STREQ(ErrorText(46), "");
    EXPECT_STREQ(ErrorText(86), "Display is set to 256 colors but palette is disabled");
    EXPECT_STREQ(ErrorText(95), "Illegal page layout file");
    EXPECT_STREQ(ErrorText(96), "Unrecognized Error");
    EXPECT_STREQ(ErrorText(-1), "Unrecognized Error");

    test::ScriptedFrontEnd fe;
    ScopedFrontEnd installed(fe);
    ReportError(0);
    EXPECT_TRUE(fe.boxes.empty());
    ReportError(kErrAborted);
    ReportError(kErrOutOfMemory);
    ASSERT_EQ(fe.boxes.size(), 2u);
    EXPECT_EQ(fe.boxes[0], "Attention|Operation Aborted");
    EXPECT_EQ(fe.boxes[1], "Error|Out of memory");
    EXPECT_EQ(fe.arrowCursors, 2);  // a box always comes up with the arrow

    fe.answers = {kAnswerNo};
    EXPECT_EQ(MessageBoxShow(std::string(100, 'c'), kBoxYesNo, std::string(400, 't')), kAnswerNo);
    EXPECT_EQ(fe.boxes.back().size(), 80u + 1 + 340u);
}

}  // namespace
}  // namespace lv
