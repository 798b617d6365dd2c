// The command-line tool's front end: a progress bar on a stream (stderr),
// messages as lines, questions answered by their first button.
#pragma once

#include <cstdio>

#include "shell/frontend.h"

namespace lv {

class StderrFrontEnd : public FrontEnd {
public:
    // With `bars` false no bar is drawn: the command line draws them only
    // on a terminal, so that a script's captured errors hold only messages.
    explicit StderrFrontEnd(std::FILE* stream = stderr, bool bars = true)
        : stream_(stream), bars_(bars)
    {
        Init();
    }

    // The bar is drawn when the box opens and then only when the time shown
    // changes, so a fast job writes a handful of lines, not one per row.
    void ProgressShow(const ProgressBox& box) override;
    void ProgressTime(const ProgressBox& box, const std::string& text) override;
    void ProgressHide(const ProgressBox& box) override;
    int32_t MessageBox(const std::string& caption, int32_t mode, const std::string& text) override;
    // True once RequestCancel was called: the job stops at its next row as
    // at a click on Cancel.
    bool ProgressPump(const ProgressBox& box) override;

    // Asks the running job, and the command, to stop as Cancel would. Safe
    // to call from a signal handler: the command line calls it on SIGINT,
    // SIGTERM and SIGHUP.
    static void RequestCancel();
    static bool CancelRequested();
    // No bar from now on, in this process and those it starts (files done
    // side by side would draw over each other).
    static void StopBars();

    // How many times the bar has been drawn; the tests read it.
    int32_t redraws() const { return redraws_; }

private:
    void Init();
    void Draw(const ProgressBox& box, const char* timeText);

    std::FILE* stream_;
    bool bars_;
    int slowMilliseconds_ = 0;  // LUMIVUE_SLOW_JOBS: each step takes this much longer
    bool shown_ = false;
    int32_t redraws_ = 0;
};

}  // namespace lv
