// The life of a transformation: the state every panel shares (whether the
// preview is current, whether the settings have become a result yet, how
// many results it has made), the one routine that runs a module's worker for
// a preview or a full result, and the buttons Auto, Preview, Apply, OK and
// Cancel. The windows themselves are the front end's, reached through
// FrameHost, so that the whole state machine runs and is tested headlessly.
#pragma once

#include <cstdint>
#include <memory>

#include "image/window.h"
#include "transform/registry.h"

namespace lv {

// Identifiers of the button bar.
enum FrameButton : int32_t {
    kButtonOk = 0,
    kButtonCancel = 1,
    kButtonPreview = 2,
    kButtonAuto = 3,
    kButtonApply = 4
};

// What the frame asks of the windows.
class FrameHost {
public:
    virtual ~FrameHost() = default;
    // A new preview window (full: a result under construction) for an output
    // of the frame's size; its record's `image` holds the output size only.
    // Null when no window could be made.
    virtual ImageWindow* CreatePreview(bool full) = 0;
    virtual void DestroyPreview(ImageWindow* window) = 0;
    // A preview was computed: title, repaint (all of it when `whole`), and
    // make it the active window.
    virtual void PreviewShown(ImageWindow* window, bool whole) = 0;
    // A full result was computed: it becomes an ordinary image window at the
    // source's zoom, placed `cascade` steps from the source, displayed and
    // shown. Returns 0 or the display's error.
    virtual int32_t ResultShown(ImageWindow* window, int32_t cascade) = 0;
    // After Apply or OK: the result is activated, marked modified, its zoom
    // fitted to the workspace, titled; the frame forgets it.
    virtual void ResultKept(ImageWindow* window) = 0;
    virtual void SetAutoTicked(bool ticked) = 0;
    virtual void EnablePreviewButton(bool enabled) = 0;
    virtual void ActivatePanel() = 0;
    virtual void ActivateSource() = 0;
    // Closing: the panel window goes (the frame has already let go of the
    // preview and the source).
    virtual void DestroyPanel() = 0;
};

struct TransformFrame {
    const TransformModule* module = nullptr;
    std::unique_ptr<TransformParams> params;
    FrameHost* host = nullptr;
    WindowHandle panel = nullptr;
    ImageWindow* source = nullptr;   // the input's record, or null
    ImageWindow* preview = nullptr;  // the preview, or the result being built
    bool hasPreviewButton = true;    // false for the short bar
    bool autoPreview = false;
    bool previewStale = true;
    bool applyPending = true;
    int32_t cascadeCount = 0;
    int32_t outputWidth = 0, outputHeight = 0;
    double outputResolution = 0.0;
    int32_t runs = 0;  // workers called, for the tests and the curious
};

// The rectangle of a preview's display copy to compute, inclusive, rows
// bottom-up.
struct FrameRect {
    int32_t left, top, right, bottom;
};

// Resets the frame for a new bar (Auto off, stale, pending, no results) and
// takes the output size from the source (or the module's rule).
void FrameStart(TransformFrame& frame);
// Runs the worker: a preview (toImage false) into the preview's display,
// all of it or `rect`, or the full result into a new window. Returns true
// only when the user aborted.
bool run_transform(TransformFrame& frame, bool toImage, const FrameRect* rect);
void params_changed(TransformFrame& frame);
void reset_preview(TransformFrame& frame);
// The input changed: the preview is remade from scratch for the new size.
void restart_preview(TransformFrame& frame);
// A click on a button of the bar. Returns true when it handled it; sets
// `closed` when the panel closed.
bool panel_command(TransformFrame& frame, int32_t button, bool& closed);
// The preview window was closed by hand.
void PreviewClosedByHand(TransformFrame& frame);

// Readies a new preview's record: the output size kept in its `image`
// (nothing allocated), the least reduction 1, 1:2, 1:3 ... at which the
// output with the window's frame fits half the workspace each way, the view
// on the whole output, no scrolling.
void PreparePreviewRecord(const TransformFrame& frame, ImageWindow& record, int32_t workspaceWidth,
                          int32_t workspaceHeight, int32_t frameWidth, int32_t frameHeight);

// The arguments a run hands the worker, as the frame computes them.
TransformArgs FrameArgs(const TransformFrame& frame, bool toImage, const ImageWindow& target,
                        const FrameRect* rect);

}  // namespace lv
