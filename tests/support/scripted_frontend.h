// A front end for tests: records what the engine asked it to show, answers
// questions from a script, runs a fake clock, and can press Cancel at a
// chosen step.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "image/progress.h"
#include "shell/frontend.h"

namespace lv::test {

class ScriptedFrontEnd : public FrontEnd {
public:
    // Cancel is pressed during the step whose value is this (-1: never).
    int32_t abortAtStep = -1;
    // The clock advances by this many milliseconds at each reading.
    uint64_t now = 1000;
    uint64_t tickPerRead = 0;
    // Answers to give to message boxes, in order; OK/Yes when it runs out.
    std::deque<int32_t> answers;

    // What happened.
    int32_t opens = 0, closes = 0, pumps = 0, fills = 0, waitCursors = 0, arrowCursors = 0;
    std::vector<std::string> titles;
    std::vector<std::string> timeTexts;
    std::vector<std::string> boxes;  // "caption|text" of each message box
    std::vector<int32_t> steps;      // the value of each step pumped

    void ProgressShow(const ProgressBox& box) override
    {
        if (!shown_) {
            ++opens;
            titles.push_back(box.title);
        }
        shown_ = true;
    }
    void ProgressFill(const ProgressBox&, int32_t, int32_t) override { ++fills; }
    void ProgressTime(const ProgressBox&, const std::string& text) override
    {
        timeTexts.push_back(text);
    }
    bool ProgressPump(const ProgressBox& box) override
    {
        ++pumps;
        steps.push_back(box.current);
        return abortAtStep >= 0 && box.current == abortAtStep;
    }
    void ProgressHide(const ProgressBox&) override
    {
        ++closes;
        shown_ = false;
    }
    void SetCursor(Cursor cursor) override
    {
        if (cursor == Cursor::Wait)
            ++waitCursors;
        else
            ++arrowCursors;
    }
    int32_t MessageBox(const std::string& caption, int32_t mode, const std::string& text) override
    {
        boxes.push_back(caption + "|" + text);
        if (answers.empty()) return FrontEnd::MessageBox(caption, mode, text);
        const int32_t answer = answers.front();
        answers.pop_front();
        return answer;
    }
    uint64_t TickCount() override
    {
        const uint64_t t = now;
        now += tickPerRead;
        return t;
    }

private:
    bool shown_ = false;
};

}  // namespace lv::test
