// The hooks through which the engine talks to whoever runs it.
//
// The engine never draws, never waits for a click and never reads a clock on
// its own: it reports progress, asks for the wait cursor, shows errors and
// asks questions through one installed FrontEnd. The editor installs one that
// drives the modal progress box and message boxes, the command-line tool one
// that draws a bar on stderr, and tests a scripted one. With none installed
// the silent front end is used.
#pragma once

#include <cstdint>
#include <string>

namespace lv {

struct ProgressBox;
struct ImageWindow;
using WindowHandle = const void*;

enum class Cursor : int32_t { Arrow, Wait };

// Answers of a message box, as the standard box numbers them.
enum BoxAnswer : int32_t { kAnswerOk = 1, kAnswerCancel = 2, kAnswerYes = 6, kAnswerNo = 7 };

// Button sets of a message box: 0 OK, 1 OK and Cancel, 3 Yes, No and
// Cancel, 4 Yes and No.
enum BoxMode : int32_t { kBoxOk = 0, kBoxOkCancel = 1, kBoxYesNoCancel = 3, kBoxYesNo = 4 };

class FrontEnd {
public:
    virtual ~FrontEnd() = default;

    // The progress box. The engine keeps the box's record (progress.h) and
    // does all of its arithmetic; these calls only show it.
    virtual void ProgressShow(const ProgressBox& box) { (void)box; }
    // The bar has been filled from step `from` to step `to`.
    virtual void ProgressFill(const ProgressBox& box, int32_t from, int32_t to)
    {
        (void)box, (void)from, (void)to;
    }
    // The time line changed; `text` is the whole line to show.
    virtual void ProgressTime(const ProgressBox& box, const std::string& text)
    {
        (void)box, (void)text;
    }
    // Serves the box's own events. Returns true when the user clicked Cancel
    // since the last call. Called once per step.
    virtual bool ProgressPump(const ProgressBox& box)
    {
        (void)box;
        return false;
    }
    virtual void ProgressHide(const ProgressBox& box) { (void)box; }

    virtual void SetCursor(Cursor cursor) { (void)cursor; }

    // A message box; returns one of BoxAnswer. The silent front end answers
    // as if the first button had been pressed (OK or Yes).
    virtual int32_t MessageBox(const std::string& caption, int32_t mode, const std::string& text);

    // Delivers a private message (1058 image changed, 1063 renamed, 1066 view
    // changed, ...) to a window, saying which image window it is about.
    virtual void SendToWindow(WindowHandle to, int32_t message, WindowHandle about)
    {
        (void)to, (void)message, (void)about;
    }

    // The pixels of the inclusive rectangle (image coordinates, bottom-up) of
    // a window's image changed behind its back (an undo): the front end
    // refreshes that part of the display copy and repaints it.
    virtual void ImageRegionChanged(ImageWindow& record, int32_t x0, int32_t y0, int32_t x1,
                                    int32_t y1)
    {
        (void)record, (void)x0, (void)y0, (void)x1, (void)y1;
    }

    // Milliseconds from any fixed origin; the progress box measures time
    // left with it. Tests replace it with a scripted clock.
    virtual uint64_t TickCount();
};

// The installed front end; never null (the silent one when nothing else is
// installed). Installing null goes back to the silent one.
FrontEnd& CurrentFrontEnd();
void InstallFrontEnd(FrontEnd* frontEnd);

// Installs a front end for the life of a scope and puts back the one before.
class ScopedFrontEnd {
public:
    explicit ScopedFrontEnd(FrontEnd& frontEnd);
    ~ScopedFrontEnd();
    ScopedFrontEnd(const ScopedFrontEnd&) = delete;
    ScopedFrontEnd& operator=(const ScopedFrontEnd&) = delete;

private:
    FrontEnd* previous_;
};

// Shorthands the engine uses.
void SetWaitCursor();
void SetArrowCursor();

// The program's one message box: caption, button mode and text. Text is cut
// at 340 characters and the caption at 80, as the box has always done.
int32_t MessageBoxShow(const std::string& caption, int32_t mode, const std::string& text);

}  // namespace lv
