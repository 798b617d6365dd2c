// Crop as a transformation: the box of the record, refitted to its
// proportions, cut to the picture and copied out. It has no Amount.
#include <string>

#include "geometry/crop.h"
#include "shell/errors.h"
#include "shell/text.h"

namespace lv {
namespace {

// The box to copy, ordered and inside the picture; false when none of it
// lies there.
bool BoxInside(const Image& source, const TransformParams& params, CropBox& inside)
{
    const CropBox box =
        crop_box_of(static_cast<const CropParams&>(params), source.width, source.height);
    return crop_clip(box, source.width, source.height, inside);
}

void OutputSize(const Image* source, const TransformParams& params, int32_t& width, int32_t& height)
{
    CropBox inside;
    if (!source || !BoxInside(*source, params, inside)) {
        width = height = 0;
        return;
    }
    width = inside.x2 - inside.x1 + 1;
    height = inside.y2 - inside.y1 + 1;
}

int32_t crop_worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    CropBox inside;
    if (!BoxInside(*source, *args.params, inside)) {
        // A box wholly outside the picture, as a rectangle copy refuses it.
        const auto& p = static_cast<const CropParams&>(*args.params);
        SetErrorDetail(FormatText("the box from %d,%d to %d,%d lies outside the %d x %d picture",
                                  p.x1, p.y1, p.x2, p.y2, source->width, source->height));
        return 73;
    }
    return crop_run(args, inside);
}

// The box's corners on the command line: columns from the left and rows
// from the top, -1 for the last.
ParamDecl Corner(const char* name, int32_t CropParams::*field, int32_t defaultValue,
                 const char* help)
{
    return {.name = name,
            .type = ParamType::Int,
            .field = Field(field),
            .minimum = -1,
            .maximum = 999999,
            .defaultValue = static_cast<double>(defaultValue),
            .help = help,
            .inPanel = false};
}

const TransformRegistration kCrop({
    .name = "crop",
    .title = "Crop",
    .commandId = 4002,
    .hasAmount = false,
    .params =
        {
            {
                .name = "box",
                .type = ParamType::Group,
                .members = "x1|y1|x2|y2",
                .help = "the box's two corners at once, inclusive, in either order",
                .inPanel = false,
            },
            Corner("x1", &CropParams::x1, 0,
                   "the column of one corner of the box, from 0 at the left; -1 is the last"),
            Corner("y1", &CropParams::y1, 0,
                   "the row of that corner, from 0 at the top; -1 is the bottom row"),
            Corner("x2", &CropParams::x2, -1,
                   "the column of the opposite corner, which the proportions move"),
            Corner("y2", &CropParams::y2, -1, "the row of the opposite corner"),
            {
                .name = "proportions",
                .type = ParamType::Choice,
                .field = Field(&CropParams::proportions),
                .defaultValue = kProportionsArbitrary,
                .choiceLabels = "Arbitrary|Custom|Square|1x2, 6x12|1x3, 4x12|"
                                "2x3, 4x6, 6x9, 8x12, 10x15, 20x30|2x5, 4x10|"
                                "2.5x3.5, 5x7, 15x21, 20x28|3x4, 4.5x6, 6x8, 9x12, 15x20|"
                                "3x5, 6x10|3.5x5, 7x10, 21x30|3.5x10|4x5, 8x10, 16x20, 20x25|"
                                "5x6, 15x18|8.5x11, 17x22|9x13|11x14|11x17|13x18",
                .choices = "arbitrary|custom|square|1x2|1x3|2x3|2x5|5x7|3x4|3x5|7x10|7x20|4x5|"
                           "5x6|17x22|9x13|11x14|11x17|13x18",
                .label = "Proportions:",
                .help = "the proportions the box is refitted to, keeping its diagonal and the "
                        "first corner; each pair is the short side by the long",
            },
            {
                .name = "orientation",
                .type = ParamType::Choice,
                .field = Field(&CropParams::orientation),
                .defaultValue = kPortrait,
                .choiceLabels = "Portrait|Landscape",
                .help = "whether the long side of the proportions is the height or the width",
            },
            {
                .name = "custom-width",
                .type = ParamType::Real,
                .field = Field(&CropParams::customWidth),
                .minimum = 0.001,
                .maximum = 999999,
                .defaultValue = 1,
                .decimals = 3,
                .label = "Width/Height:",
                .help =
                    "the width of the Custom proportions, taken as given whatever the orientation",
            },
            {
                .name = "custom-height",
                .type = ParamType::Real,
                .field = Field(&CropParams::customHeight),
                .minimum = 0.001,
                .maximum = 999999,
                .defaultValue = 1,
                .decimals = 3,
                .help = "the height of the custom proportions",
            },
        },
    .create = NewParams<CropParams>,
    .outputSize = OutputSize,
    .worker = crop_worker,
    .help = "Cuts a rectangle out of the picture; a box reaching past the picture is cut at its "
            "edges.",
    .example = "--box 10,20,209,169",
});

}  // namespace
}  // namespace lv
