#include "transform/controls/ui/probe_tool.h"

#include <QPointer>

#include "image/probe.h"
#include "image/ui/image_window.h"
#include "image/ui/tools.h"
#include "image/window.h"
#include "image/zoom.h"
#include "transform/controls/ui/control_event.h"

namespace lv {

namespace {

QPointer<QObject> gOwner;
QPointer<ImageSubWindow> gWindow;  // under the pointer while the button is down
int32_t gX = 0, gY = 0;            // client position there

void Tell(int32_t message)
{
    if (gOwner) SendControlMessage(gOwner, message, 0, 0);
}

void Handle(ImageSubWindow& window, int32_t x, int32_t y, int32_t event)
{
    switch (event) {
    case kToolDown:
    case kToolShiftDown:
        gWindow = &window;
        gX = x;
        gY = y;
        Tell(kMsgProbeRead);
        break;
    case kToolMove:
    case kToolShiftMove:
        if (gWindow != &window) return;  // a move with no press on this window
        gX = x;
        gY = y;
        Tell(kMsgProbeMove);
        break;
    case kToolUp:
        if (gWindow != &window) return;
        gWindow = nullptr;
        Tell(kMsgProbeEnd);
        break;
    case kToolWindowGone:
        if (gWindow != &window) return;
        gWindow = nullptr;
        Tell(kMsgProbeEnd);
        break;
    default: break;
    }
}

// Another tool took over: the owner lets go of its Probe button.
void End()
{
    gWindow = nullptr;
    Tell(kMsgProbeLost);
    gOwner = nullptr;
}

void Register()
{
    static const bool registered = (RegisterTool(kToolProbe, Handle, End), true);
    (void)registered;
}

}  // namespace

void StartProbe(QObject* owner)
{
    Register();
    if (gOwner && gOwner != owner) Tell(kMsgProbeLost);
    gOwner = owner;
    gWindow = nullptr;
    ToolSwitch(kToolProbe);
}

void EndProbe(QObject* owner)
{
    if (!owner || gOwner != owner) return;
    gOwner = nullptr;
    gWindow = nullptr;
    if (CurrentTool() == kToolProbe) ToolSwitch(kToolNone);
}

QObject* ProbeOwner() { return gOwner; }

bool ProbeRead(int32_t half, int32_t& r, int32_t& g, int32_t& b)
{
    ImageSubWindow* window = gWindow;
    if (!window || window->record().windowKind != kWindowImage) return false;
    const ImageWindow& record = window->record();
    const QWidget* client = window->view()->viewport();
    int32_t x = 0, y = 0;
    ClientToImage(record, ZoomSubjectOf(record), client->width(), client->height(),
                  window->Metrics(), gX, gY, x, y, false);
    return ProbeColor(record.image, x, y, half, r, g, b);
}

}  // namespace lv
