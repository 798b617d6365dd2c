// The tool switch: which tool receives the mouse events of image windows.
// A tool registers a handler and, when it leaves marks or an owner behind,
// an end function that the switch calls when another tool takes over.
#pragma once

#include <cstdint>

namespace lv {

class ImageSubWindow;

// The events a tool's handler receives, with the client position.
enum ToolEvent : int32_t {
    kToolShiftDown = 0,   // left button down with Shift
    kToolDown = 1,        // left button down
    kToolMove = 2,        // a move without Shift
    kToolUp = 3,          // left button up
    kToolWindowGone = 4,  // the window is being destroyed
    kToolOverlay = 5,     // take a drawn overlay off or put it back
    kToolShiftMove = 6,   // a move with Shift
};

enum ToolKind : int32_t {
    kToolNone = 0,
    kToolProbe = 7,  // shared by every probe
    kToolCrop = 8,   // the crop box over Crop's input
};

using ToolHandler = void (*)(ImageSubWindow& window, int32_t x, int32_t y, int32_t event);
using ToolEnd = void (*)();

void RegisterTool(int32_t tool, ToolHandler handler, ToolEnd end);
int32_t CurrentTool();
// Makes `tool` the current one; the old tool's end function runs first.
void ToolSwitch(int32_t tool);
// Hands one mouse event of an image window to the current tool. False when
// no tool takes image windows' events, so the window goes on as usual.
bool ToolMouse(ImageSubWindow& window, int32_t x, int32_t y, int32_t event);

}  // namespace lv
