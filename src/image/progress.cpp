#include "image/progress.h"

#include <memory>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/frontend.h"
#include "shell/text.h"

namespace lv {

namespace {

std::unique_ptr<ProgressBox> gBox;

}  // namespace

void ProgressOpen(int32_t first, int32_t last, const char* title, bool cancellable)
{
    if (gBox) ProgressClose();
    gBox = std::make_unique<ProgressBox>();
    FrontEnd& fe = CurrentFrontEnd();
    gBox->first = first;
    gBox->last = last;
    gBox->current = first;
    gBox->cancellable = cancellable;
    gBox->title = title ? title : "";
    gBox->startTick = fe.TickCount();
    SetWaitCursor();
    fe.ProgressShow(*gBox);
}

int32_t ProgressStep(int32_t value)
{
    if (!gBox) return kOk;
    ProgressBox& box = *gBox;
    FrontEnd& fe = CurrentFrontEnd();
    if (value == box.first) fe.ProgressShow(box);
    fe.ProgressFill(box, box.current, value);
    box.current = value;

    if (value != box.first) {
        // Time left is extrapolated from the time taken so far; a job that
        // runs past its last step shows zero rather than a negative time.
        const uint64_t ticks = fe.TickCount() - box.startTick;
        const double elapsed = static_cast<double>(ticks) * 0.001;
        const double total = static_cast<double>(box.last) - box.first;
        const double done = static_cast<double>(value) - box.first;
        double left = total * elapsed / done - elapsed;
        if (!(left > 0.0)) left = 0.0;
        const int32_t seconds = RoundToInt(left);
        const int32_t hours = seconds / 3600, minutes = seconds / 60 % 60, secs = seconds % 60;
        if (hours != box.shownHours || minutes != box.shownMinutes || secs != box.shownSeconds) {
            box.shownHours = hours;
            box.shownMinutes = minutes;
            box.shownSeconds = secs;
            fe.ProgressTime(box, ProgressTimeText(seconds));
        }
    }

    if (fe.ProgressPump(box) && box.cancellable) box.aborted = 1;
    return box.aborted ? kErrAborted : kOk;
}

void ProgressClose()
{
    if (!gBox) return;
    std::unique_ptr<ProgressBox> box = std::move(gBox);
    SetArrowCursor();
    CurrentFrontEnd().ProgressHide(*box);
}

const ProgressBox* ProgressCurrent() { return gBox.get(); }

int32_t ProgressBarPixel(const ProgressBox& box, int32_t value, int32_t left, int32_t right)
{
    if (box.last <= box.first) return left;
    const int64_t v = value < box.first ? box.first : (value > box.last ? box.last : value);
    return static_cast<int32_t>(left + (v - box.first) * (int64_t{right} - left) /
                                           (int64_t{box.last} - box.first));
}

std::string ProgressTimeText(int32_t seconds)
{
    return FormatText("Time left: %2d:%2d:%2d", seconds / 3600, seconds / 60 % 60, seconds % 60);
}

}  // namespace lv
