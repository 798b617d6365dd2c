#include "shell/frontend.h"

#include <chrono>

namespace lv {

namespace {

FrontEnd gSilent;
FrontEnd* gCurrent = &gSilent;

constexpr size_t kBoxTextLimit = 340;
constexpr size_t kBoxCaptionLimit = 80;

}  // namespace

int32_t FrontEnd::MessageBox(const std::string& caption, int32_t mode, const std::string& text)
{
    (void)caption, (void)text;
    return mode == kBoxYesNo || mode == kBoxYesNoCancel ? kAnswerYes : kAnswerOk;
}

uint64_t FrontEnd::TickCount()
{
    using namespace std::chrono;
    return static_cast<uint64_t>(
        duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

FrontEnd& CurrentFrontEnd() { return *gCurrent; }

void InstallFrontEnd(FrontEnd* frontEnd) { gCurrent = frontEnd ? frontEnd : &gSilent; }

ScopedFrontEnd::ScopedFrontEnd(FrontEnd& frontEnd) : previous_(gCurrent) { gCurrent = &frontEnd; }

ScopedFrontEnd::~ScopedFrontEnd() { gCurrent = previous_; }

void SetWaitCursor() { gCurrent->SetCursor(Cursor::Wait); }

void SetArrowCursor() { gCurrent->SetCursor(Cursor::Arrow); }

int32_t MessageBoxShow(const std::string& caption, int32_t mode, const std::string& text)
{
    // A box always comes up with the ordinary pointer, whatever a job left.
    SetArrowCursor();
    return gCurrent->MessageBox(caption.substr(0, kBoxCaptionLimit), mode,
                                text.substr(0, kBoxTextLimit));
}

}  // namespace lv
