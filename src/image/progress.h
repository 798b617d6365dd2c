// The progress box of a long job.
//
// A job runs on the caller's stack. It opens the box, reports each line with
// ProgressStep, and stops at the first non-zero result (11: the user pressed
// Cancel), so a worker only ever stops at a line boundary. The engine keeps
// the box's record and does its arithmetic; the installed front end
// (shell/frontend.h) shows it and serves its events, and only its events,
// while the job runs.
#pragma once

#include <cstdint>
#include <string>

namespace lv {

struct ProgressBox {
    int32_t first = 0;    // value of the first step
    int32_t last = 0;     // value of the last step
    int32_t current = 0;  // last reported step
    int32_t shownHours = -1;
    int32_t shownMinutes = -1;
    int32_t shownSeconds = -1;
    bool cancellable = false;
    int32_t aborted = 0;  // set by a click on Cancel
    uint64_t startTick = 0;
    std::string title;  // the command's name
};

// Opens the box; with `cancellable` it has a Cancel button. Sets the wait
// cursor. A box still open is closed first: boxes never nest.
void ProgressOpen(int32_t first, int32_t last, const char* title, bool cancellable);
// Reports a step. Returns 0 to go on, 11 once the user has aborted (and on
// every later call). Without an open box it returns 0.
int32_t ProgressStep(int32_t value);
// Closes the box and restores the arrow cursor.
void ProgressClose();

// The open box, or null.
const ProgressBox* ProgressCurrent();

// The pixel at which the filled part of a bar from `left` to `right` ends
// for `value`, with value clamped to first..last; `left` when first equals
// last.
int32_t ProgressBarPixel(const ProgressBox& box, int32_t value, int32_t left, int32_t right);

// The time line for a number of seconds left: "Time left: 00:01:07".
std::string ProgressTimeText(int32_t seconds);

}  // namespace lv
