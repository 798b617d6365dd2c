// Mirror/Rotate as a transformation: one of the eight orientations of the
// whole picture. It has no Amount, and its panel no preview of its own.
#include "geometry/mirror_rotate.h"
#include "image/display.h"
#include "shell/errors.h"
#include "transform/registry.h"

namespace lv {
namespace {

struct MirrorRotateParams : TransformParams {
    int32_t choice;  // the orientation's code less 200
};

int32_t OrientationOf(const TransformParams& params)
{
    return kOrientCopy + static_cast<const MirrorRotateParams&>(params).choice;
}

void OutputSize(const Image* source, const TransformParams& params, int32_t& width, int32_t& height)
{
    if (source)
        mirror_rotate_size(OrientationOf(params), source->width, source->height, width, height);
}

int32_t mirror_rotate_worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const int32_t orientation = OrientationOf(*args.params);
    if (args.toImage) {
        if (orientation == kOrientCopy) return ImageCopyBoxed(*source, *args.destination);
        return mirror_rotate(*source, *args.destination, orientation, true);
    }
    // Asked for a preview all the same: the whole result, then the part of
    // it in view, at the preview's zoom.
    Image whole;
    const Image* shown = source;
    if (orientation != kOrientCopy) {
        if (int32_t code = mirror_rotate(*source, whole, orientation, true)) return code;
        shown = &whole;
    }
    const int32_t h = args.outHeight;
    return DisplayUpdate(*shown, *args.outputTarget, nullptr, args.rectLeft,
                         h - 1 - args.rectBottom, args.rectRight, h - 1 - args.rectTop, true);
}

const TransformRegistration kMirrorRotate({
    .name = "mirror-rotate",
    .title = "Mirror/Rotate",
    .commandId = 4001,
    .hasAmount = false,
    .params = {{
        .name = "orientation",
        .type = ParamType::Choice,
        .field = Field(&MirrorRotateParams::choice),
        .defaultValue = 0,
        .choiceLabels = "Copy|Quarter Turn Clockwise|Half Turn|Quarter Turn Counter-Clockwise|"
                        "Left and Right Exchanged|Reflection in the Falling Diagonal|"
                        "Top and Bottom Exchanged|Reflection in the Rising Diagonal",
        .choices = "copy|cw|180|ccw|flip-horizontal|transpose|flip-vertical|transverse",
        .firstCode = kOrientCopy,
        .help = "where the picture goes: turned, or reflected left to right, top to bottom, in "
                "the diagonal from top left to bottom right (falling) or in the one from bottom "
                "left to top right (rising)",
        .inPanel = false,  // the panel shows the eight results as pictures
    }},
    .create = NewParams<MirrorRotateParams>,
    .outputSize = OutputSize,
    .worker = mirror_rotate_worker,
    .help = "Turns the picture by quarter turns or reflects it, moving every pixel whole.",
    .example = "--orientation cw",
});

}  // namespace
}  // namespace lv
