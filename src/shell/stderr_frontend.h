// The command-line tool's front end: a progress bar on a stream (stderr),
// messages as lines, questions answered by their first button.
#pragma once

#include <cstdio>

#include "shell/frontend.h"

namespace lv {

class StderrFrontEnd : public FrontEnd {
public:
    explicit StderrFrontEnd(std::FILE* stream = stderr) : stream_(stream) {}

    // The bar is drawn when the box opens and then only when the time shown
    // changes, so a fast job writes a handful of lines, not one per row.
    void ProgressShow(const ProgressBox& box) override;
    void ProgressTime(const ProgressBox& box, const std::string& text) override;
    void ProgressHide(const ProgressBox& box) override;
    int32_t MessageBox(const std::string& caption, int32_t mode, const std::string& text) override;

    // How many times the bar has been drawn; the tests read it.
    int32_t redraws() const { return redraws_; }

private:
    void Draw(const ProgressBox& box, const char* timeText);

    std::FILE* stream_;
    bool shown_ = false;
    int32_t redraws_ = 0;
};

}  // namespace lv
