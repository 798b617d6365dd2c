#include "image/ui/tools.h"

#include "image/ui/image_window.h"
#include "image/window.h"
#include "shell/errors.h"

namespace lv {

namespace {

constexpr int32_t kToolCount = 23;

struct ToolEntry {
    ToolHandler handler = nullptr;
    ToolEnd end = nullptr;
};

ToolEntry gTools[kToolCount];
int32_t gCurrent = kToolNone;

// The tools that read or change the picture under the pointer, which a
// preview (a stand-in that changes with every parameter) cannot serve.
bool RefusesPreviews(int32_t tool)
{
    switch (tool) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case kToolProbe:
    case 14:
    case 17: return true;
    default: return false;
    }
}

}  // namespace

void RegisterTool(int32_t tool, ToolHandler handler, ToolEnd end)
{
    if (tool > 0 && tool < kToolCount) gTools[tool] = {handler, end};
}

int32_t CurrentTool() { return gCurrent; }

void ToolSwitch(int32_t tool)
{
    if (tool == gCurrent) return;
    const int32_t old = gCurrent;
    gCurrent = tool;
    if (old > 0 && old < kToolCount && gTools[old].end) gTools[old].end();
}

bool ToolMouse(ImageSubWindow& window, int32_t x, int32_t y, int32_t event)
{
    if (gCurrent <= 0 || gCurrent >= kToolCount || !gTools[gCurrent].handler) return false;
    if (window.record().windowKind == kWindowPreview) {
        if ((event == kToolDown || event == kToolShiftDown) && RefusesPreviews(gCurrent))
            ReportError(kErrToolOnPreview);
        return true;
    }
    gTools[gCurrent].handler(window, x, y, event);
    return true;
}

}  // namespace lv
