#include "transform/frame.h"

#include "image/zoom.h"
#include "shell/errors.h"

namespace lv {

void FrameStart(TransformFrame& frame)
{
    frame.autoPreview = false;
    frame.previewStale = true;
    frame.applyPending = true;
    frame.cascadeCount = 0;
    const Image* input = frame.source ? &frame.source->image : nullptr;
    if (frame.module && frame.params)
        TransformOutputSize(*frame.module, input, *frame.params, frame.outputWidth,
                            frame.outputHeight);
    frame.outputResolution = input ? input->resolution : 0.0;
}

void PreparePreviewRecord(const TransformFrame& frame, ImageWindow& record, int32_t workspaceWidth,
                          int32_t workspaceHeight, int32_t frameWidth, int32_t frameHeight)
{
    record.windowKind = kWindowPreview;
    const int32_t w = frame.outputWidth, h = frame.outputHeight;
    ImageAlloc(record.image, kImageEmpty, w, h, frame.outputResolution);
    int32_t n = 1;
    int64_t shownW = w, shownH = h;
    while (n < -kMinZoom && (shownW + frameWidth > workspaceWidth / 2 ||
                             shownH + frameHeight > workspaceHeight / 2)) {
        ++n;
        shownW = (int64_t{w} + n - 1) / n;
        shownH = (int64_t{h} + n - 1) / n;
    }
    record.zoom = n >= 2 ? -n : 1;
    record.viewWidth = static_cast<int32_t>(shownW);
    record.viewHeight = static_cast<int32_t>(shownH);
    record.viewLeft = record.viewTop = 0;
    record.viewRight = record.viewWidth - 1;
    record.viewBottom = record.viewHeight - 1;
    record.scrollRangeX = record.scrollRangeY = 0;
    record.sourceLeft = record.sourceTop = 0;
    record.sourceRight = w - 1;
    record.sourceBottom = h - 1;
}

TransformArgs FrameArgs(const TransformFrame& frame, bool toImage, const ImageWindow& target,
                        const FrameRect* rect)
{
    TransformArgs args;
    args.source = frame.source ? &frame.source->image : nullptr;
    args.outputTarget = const_cast<ImageWindow*>(&target);
    args.params = frame.params.get();
    args.toImage = toImage;
    if (toImage) {
        args.destination = &const_cast<ImageWindow&>(target).image;
        args.outWidth = frame.outputWidth;
        args.outHeight = frame.outputHeight;
        args.zoom = 1;
        args.rectRight = frame.outputWidth - 1;
        args.rectBottom = frame.outputHeight - 1;
        args.width = frame.outputWidth;
        args.height = frame.outputHeight;
        return args;
    }
    args.destination = &const_cast<ImageWindow&>(target).display;
    args.outWidth = target.viewWidth;
    args.outHeight = target.viewHeight;
    args.zoom = target.zoom;
    const FrameRect whole{0, 0, target.viewWidth - 1, target.viewHeight - 1};
    const FrameRect r = rect ? *rect : whole;
    args.rectLeft = r.left;
    args.rectTop = r.top;
    args.rectRight = r.right;
    args.rectBottom = r.bottom;
    int32_t column, row;
    if (target.zoom >= 1) {
        column = r.left / target.zoom;
        row = r.top / target.zoom;
        args.width = (r.right - r.left + target.zoom) / target.zoom;
        args.height = (r.bottom - r.top + target.zoom) / target.zoom;
    } else {
        column = r.left * -target.zoom;
        row = r.top * -target.zoom;
        args.width = r.right - r.left + 1;
        args.height = r.bottom - r.top + 1;
    }
    args.sourceX = target.sourceLeft + column;
    args.sourceY = frame.outputHeight - 1 - target.sourceBottom + row;
    return args;
}

bool run_transform(TransformFrame& frame, bool toImage, const FrameRect* rect)
{
    frame.applyPending = true;
    if (!toImage && !frame.previewStale) return false;
    if (toImage && frame.preview) {
        frame.host->DestroyPreview(frame.preview);
        frame.preview = nullptr;
    }
    if (!frame.preview) {
        frame.preview = frame.host->CreatePreview(toImage);
        if (!frame.preview) {
            ReportError(kErrTooManyImages);
            return false;
        }
    }
    const TransformArgs args = FrameArgs(frame, toImage, *frame.preview, rect);
    ++frame.runs;
    int32_t code = frame.module->worker(args);
    if (code == kOk) {
        if (!toImage) {
            frame.host->PreviewShown(frame.preview, rect == nullptr);
        } else {
            if (frame.source) ++frame.cascadeCount;
            ReportError(frame.host->ResultShown(frame.preview, frame.cascadeCount));
        }
        frame.previewStale = false;
        if (frame.hasPreviewButton) frame.host->EnablePreviewButton(false);
        return false;
    }
    reset_preview(frame);
    ReportError(code);
    frame.host->ActivatePanel();
    return code == kErrAborted;
}

void params_changed(TransformFrame& frame)
{
    if (frame.autoPreview) {
        frame.previewStale = true;
        run_transform(frame, false, nullptr);
    } else if (!frame.previewStale) {
        if (frame.hasPreviewButton) frame.host->EnablePreviewButton(true);
        frame.previewStale = true;
    }
    frame.applyPending = true;
}

void reset_preview(TransformFrame& frame)
{
    if (frame.preview) {
        frame.host->DestroyPreview(frame.preview);
        frame.preview = nullptr;
    }
    if (frame.autoPreview && frame.hasPreviewButton) {
        frame.autoPreview = false;
        frame.host->SetAutoTicked(false);
    }
    frame.previewStale = true;
    if (frame.hasPreviewButton) frame.host->EnablePreviewButton(true);
}

void restart_preview(TransformFrame& frame)
{
    if (frame.autoPreview && frame.preview) {
        reset_preview(frame);
        params_changed(frame);
        frame.autoPreview = true;
        frame.host->SetAutoTicked(true);
        run_transform(frame, false, nullptr);
        frame.host->EnablePreviewButton(false);
    } else {
        reset_preview(frame);
        params_changed(frame);
    }
    frame.applyPending = true;
}

namespace {

void Close(TransformFrame& frame, bool activateSource, bool& closed)
{
    if (frame.source && activateSource) frame.host->ActivateSource();
    if (frame.preview) frame.host->DestroyPreview(frame.preview);
    frame.preview = nullptr;
    if (frame.source) UserRemove(frame.panel, frame.source->hWindow);
    frame.host->DestroyPanel();
    closed = true;
}

}  // namespace

bool panel_command(TransformFrame& frame, int32_t button, bool& closed)
{
    closed = false;
    switch (button) {
    case kButtonApply:
        reset_preview(frame);
        if (!run_transform(frame, true, nullptr) && frame.preview) {
            frame.host->ResultKept(frame.preview);
            frame.preview = nullptr;  // the next Apply makes another
        }
        frame.previewStale = true;
        if (frame.hasPreviewButton) frame.host->EnablePreviewButton(true);
        frame.applyPending = false;
        return true;
    case kButtonOk:
        reset_preview(frame);
        if (!frame.applyPending) {
            Close(frame, true, closed);
            return true;
        }
        // One full run; an abort or a failure keeps the panel open.
        if (run_transform(frame, true, nullptr) || !frame.preview) return true;
        frame.host->ResultKept(frame.preview);
        frame.preview = nullptr;
        Close(frame, false, closed);
        return true;
    case kButtonCancel: Close(frame, true, closed); return true;
    case kButtonAuto:
        frame.autoPreview = !frame.autoPreview;
        frame.host->SetAutoTicked(frame.autoPreview);
        if (frame.autoPreview) run_transform(frame, false, nullptr);
        frame.host->EnablePreviewButton(false);
        return true;
    case kButtonPreview: run_transform(frame, false, nullptr); return true;
    default: return false;
    }
}

void PreviewClosedByHand(TransformFrame& frame)
{
    frame.preview = nullptr;
    if (frame.autoPreview) {
        frame.autoPreview = false;
        frame.host->SetAutoTicked(false);
    }
    frame.previewStale = true;
    if (frame.hasPreviewButton) frame.host->EnablePreviewButton(true);
    frame.host->ActivatePanel();
}

}  // namespace lv
