#include "shell/stderr_frontend.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "image/progress.h"

namespace lv {

namespace {

constexpr int32_t kBarWidth = 30;

volatile std::sig_atomic_t gCancel = 0;
bool gBarsStopped = false;

}  // namespace

void StderrFrontEnd::Init()
{
    // LUMIVUE_SLOW_JOBS=N makes every step of a job take N more
    // milliseconds, to watch the bar or to interrupt a job in a test.
    if (const char* slow = std::getenv("LUMIVUE_SLOW_JOBS")) slowMilliseconds_ = std::atoi(slow);
}

void StderrFrontEnd::RequestCancel() { gCancel = 1; }

void StderrFrontEnd::StopBars() { gBarsStopped = true; }

bool StderrFrontEnd::CancelRequested() { return gCancel != 0; }

bool StderrFrontEnd::ProgressPump(const ProgressBox&)
{
    if (slowMilliseconds_ > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(slowMilliseconds_));
    return gCancel != 0;
}

void StderrFrontEnd::Draw(const ProgressBox& box, const char* timeText)
{
    if (!bars_ || gBarsStopped) return;
    const int32_t filled = ProgressBarPixel(box, box.current, 0, kBarWidth);
    std::string bar(static_cast<size_t>(filled), '#');
    bar.append(static_cast<size_t>(kBarWidth - filled), '.');
    std::fprintf(stream_, "\r%s [%s] %-19s", box.title.c_str(), bar.c_str(), timeText);
    std::fflush(stream_);
    ++redraws_;
}

void StderrFrontEnd::ProgressShow(const ProgressBox& box)
{
    // ProgressStep of the first value asks for the whole box again; the bar
    // is already on the line, so it is drawn once only.
    if (shown_) return;
    shown_ = true;
    Draw(box, "");
}

void StderrFrontEnd::ProgressTime(const ProgressBox& box, const std::string& text)
{
    Draw(box, text.c_str());
}

void StderrFrontEnd::ProgressHide(const ProgressBox& box)
{
    // The line is finished with the bar as far as the job got.
    if (shown_ && bars_ && !gBarsStopped) {
        Draw(box, "");
        std::fputc('\n', stream_);
    }
    shown_ = false;
}

int32_t StderrFrontEnd::MessageBox(const std::string& caption, int32_t mode,
                                   const std::string& text)
{
    std::fprintf(stream_, "%s: %s\n", caption.c_str(), text.c_str());
    return FrontEnd::MessageBox(caption, mode, text);
}

}  // namespace lv
