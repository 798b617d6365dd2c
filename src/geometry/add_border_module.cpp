// Add Border as a transformation: margins given in pixels, inches,
// millimetres or centimetres at the input's resolution, in one colour. It
// has no Amount.
#include "geometry/add_border.h"
#include "geometry/crop.h"
#include "shell/errors.h"

namespace lv {
namespace {

void OutputSize(const Image* source, const TransformParams& params, int32_t& width, int32_t& height)
{
    if (!source) return;
    const BorderMargins m =
        border_margins(static_cast<const BorderParams&>(params), source->resolution);
    border_output_size(source->width, source->height, m, width, height);
}

int32_t border_worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const auto& p = static_cast<const BorderParams&>(*args.params);
    return border_run(args, border_margins(p, source->resolution), p.red, p.green, p.blue);
}

ParamDecl Margin(const char* name, double BorderParams::*field, const char* label, const char* help)
{
    return {.name = name,
            .type = ParamType::Real,
            .field = Field(field),
            .minimum = 0,
            .maximum = 999999,
            .defaultValue = 0,
            .decimals = 2,
            .label = label,
            .help = help};
}

ParamDecl Channel(const char* name, int32_t BorderParams::*field, const char* help)
{
    return {.name = name,
            .type = ParamType::Int,
            .field = Field(field),
            .minimum = 0,
            .maximum = 255,
            .defaultValue = 255,
            .help = help,
            .inPanel = false};
}

const TransformRegistration kAddBorder({
    .name = "add-border",
    .title = "Add Border",
    .commandId = 4022,
    .hasAmount = false,
    .params =
        {
            Channel("red", &BorderParams::red, "the red of the border colour"),
            Channel("green", &BorderParams::green, "the green of the border colour"),
            Channel("blue", &BorderParams::blue, "the blue of the border colour"),
            {
                .name = "color",
                .type = ParamType::Group,
                .members = "red|green|blue",
                .help = "the border colour's red, green and blue at once",
                .inPanel = false,
            },
            Margin("left", &BorderParams::left, "Left:", "the margin at the left, in --units"),
            Margin("right", &BorderParams::right, "Right:", "the margin at the right"),
            Margin("top", &BorderParams::top, "Top:", "the margin at the top"),
            Margin("bottom", &BorderParams::bottom, "Bottom:", "the margin at the bottom"),
            {
                .name = "units",
                .type = ParamType::Choice,
                .field = Field(&BorderParams::units),
                .defaultValue = kUnitsPixels,
                .choiceLabels = "pixels|in|mm|cm",
                .label = "Units:",
                .help = "the unit of the margins; a length becomes whole pixels at the "
                        "picture's resolution, rounded to the nearest",
            },
        },
    .create = NewParams<BorderParams>,
    .outputSize = OutputSize,
    .worker = border_worker,
    .help = "Grows the picture by a margin of one colour on each side; white or black keeps a "
            "binary picture binary, another gray makes it gray, any other colour colour.",
    .example = "--left 5 --right 5 --top 5 --bottom 10 --units mm --color 0,0,0",
});

}  // namespace
}  // namespace lv
