// The probe tool (tool 7), shared by every probe: one owner at a time.
// While the left button is down on an image window it sends its owner 1054
// at the press and 1056 at each move, and 1055 at the release; a new owner,
// or another tool, tells the former owner 1057. The owner reads the colour
// under the pointer with `ProbeRead`.
#pragma once

#include <QObject>
#include <cstdint>

#include "shell/messages.h"

namespace lv {

class ImageSubWindow;

// Makes `owner` the probe's owner and the probe the current tool.
void StartProbe(QObject* owner);
// Ends the probe when `owner` holds it: no owner, and no current tool.
void EndProbe(QObject* owner);
QObject* ProbeOwner();

// The colour under the pointer of the last 1054 or 1056, over a square of
// half size `half` (0 to 4). False when the window holds no picture the
// probe can read, or the pointer is off it.
bool ProbeRead(int32_t half, int32_t& r, int32_t& g, int32_t& b);

}  // namespace lv
