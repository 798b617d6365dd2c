// Emboss: relief from a directional difference. Each output row subtracts
// the picture shifted back along a direction from the picture shifted
// forward along it, by a radius, scaled by a height. "Normal" shows the
// difference around middle gray, "Shadow" adds it to the picture. A colour
// picture is worked on its HSV value or HSL lightness, keeping hue and
// saturation, or on each channel by itself.
#include <algorithm>
#include <atomic>
#include <cmath>

#include "geometry/samplers.h"
#include "image/lineio.h"
#include "image/memory.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "tone/color_space.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

enum EmbossMethod : int32_t { kNormal = 0, kShadow = 1 };

struct EmbossParams : TransformParams {
    double radius = 1.0;
    double angle = 135.0;  // degrees, clockwise from the right
    double height = 1.0;
    int32_t method = kNormal;
    int32_t colorSpace = kColorSpaceHsv;
};

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;
// What the shifted lines read beyond the picture.
constexpr uint8_t kBackground = 128;

// What a run works out once.
struct EmbossJob {
    const Image* image = nullptr;  // the input, a binary one made gray
    AmountPass pass;
    double dx = 0.0, dy = 0.0;  // the shift, on the samplers' 1/65536 grid
    int32_t heightScale = 1024;
    int32_t method = kNormal;
    int32_t space = kColorSpaceRgb;  // RGB for gray input
    int32_t bpp = 1;
};

// A shift on the grid of the fixed-point walk, to the nearest: added to a
// column or row it gives a position the walk holds exactly, so that a pixel
// reads the same fraction whether its row is computed whole, as a strip or
// reduced, the step of a row is exact, and a shift along an axis is whole.
double OnGrid(double v) { return RoundToInt(v * 65536.0) / 65536.0; }

int32_t Difference(const EmbossJob& job, int32_t a, int32_t b)
{
    const int32_t d = a - b;
    return job.heightScale == 1024 ? d : (d * job.heightScale) >> 10;
}

template <int32_t Method>
void ByteRow(const EmbossJob& job, const uint8_t* first, const uint8_t* second,
             const uint8_t* centre, uint8_t* out, int32_t count)
{
    for (int32_t i = 0; i < count; ++i) {
        const int32_t d = Difference(job, first[i], second[i]);
        out[i] = static_cast<uint8_t>(Method == kNormal ? Clamp8(d + 128) : Clamp8(centre[i] + d));
    }
}

template <int32_t Method, bool Hsl>
void LevelRow(const EmbossJob& job, const uint8_t* first, const uint8_t* second,
              const uint8_t* centre, uint8_t* out, int32_t width)
{
    auto level = [](const uint8_t* p) {
        return Hsl ? hsl_lightness(p[2], p[1], p[0]) : hsv_value(p[2], p[1], p[0]);
    };
    for (int32_t k = 0; k < width; ++k, first += 3, second += 3, centre += 3, out += 3) {
        const int32_t d = Difference(job, level(first), level(second));
        int32_t r = centre[2], g = centre[1], b = centre[0];
        const int32_t old = level(centre);
        const int32_t now = Method == kNormal ? Clamp8(d + 128) : Clamp8(old + d);
        if (Hsl)
            set_hsl_lightness(r, g, b, now);
        else
            set_hsv_value(r, g, b, old, now);
        out[0] = static_cast<uint8_t>(b), out[1] = static_cast<uint8_t>(g);
        out[2] = static_cast<uint8_t>(r);
    }
}

// One output row: source row y, columns x, x + step, ... (`width` of them),
// `centre` the source pixels there. `first` and `second` take the two
// shifted lines.
void EmbossRow(const EmbossJob& job, int32_t y, int32_t x, int32_t step, int32_t width,
               const uint8_t* centre, uint8_t* out, const uint8_t* maskRow, uint8_t* first,
               uint8_t* second)
{
    const Image& image = *job.image;
    const double left = x, right = x + static_cast<double>(width - 1) * step;
    int32_t touchedFirst = 0, touchedLast = 0;
    auto scan = image.kind == kImageColor ? scan_color : scan_gray;
    scan(image, left + job.dx, y + job.dy, right + job.dx, y + job.dy, first, width, kBackground,
         touchedFirst, touchedLast);
    scan(image, left - job.dx, y - job.dy, right - job.dx, y - job.dy, second, width, kBackground,
         touchedFirst, touchedLast);
    const bool normal = job.method == kNormal;
    if (job.bpp == 1 || job.space == kColorSpaceRgb) {
        const int32_t count = width * job.bpp;
        if (normal)
            ByteRow<kNormal>(job, first, second, centre, out, count);
        else
            ByteRow<kShadow>(job, first, second, centre, out, count);
    } else if (job.space == kColorSpaceHsl) {
        if (normal)
            LevelRow<kNormal, true>(job, first, second, centre, out, width);
        else
            LevelRow<kShadow, true>(job, first, second, centre, out, width);
    } else {
        if (normal)
            LevelRow<kNormal, false>(job, first, second, centre, out, width);
        else
            LevelRow<kShadow, false>(job, first, second, centre, out, width);
    }
    if (job.pass.Blends()) AmountBlendRow(job.pass, centre, out, maskRow, width, job.bpp);
}

// A binary picture as gray levels 0 and 255, for the bilinear samplers.
int32_t GrayOfBinary(const Image& source, Image& gray)
{
    if (int32_t code = ImageAlloc(gray, kImageGray, source.width, source.height, source.resolution))
        return code;
    for (int32_t y = 0; y < source.height; ++y)
        for (int32_t x = 0; x < source.width; ++x)
            gray.rows[y][x] = GetBit(source.rows[y], x) ? 255 : 0;
    return kOk;
}

// A full result with its rows spread over the threads.
int32_t ParallelEmboss(const TransformArgs& args, const EmbossJob& job)
{
    const Image& image = *job.image;
    if (int32_t code = ImageAlloc(*args.destination, image.kind, args.outWidth, args.outHeight,
                                  image.resolution))
        return code;
    ClearImagePadding(*args.destination);
    const Image* mask = job.pass.UsesMask() ? args.params->amount.mask : nullptr;
    const auto rowBytes = static_cast<size_t>(args.width) * static_cast<size_t>(job.bpp);
    std::atomic<bool> shortOfMemory{false};
    WorkerBusy busy;
    busy.Open(args, "Emboss");
    int32_t result = ParallelRows(
        args.height,
        [&](int32_t y) {
            std::unique_ptr<uint8_t[]> lines = AllocBytes(2 * rowBytes);
            if (!lines) {
                shortOfMemory = true;
                return;
            }
            EmbossRow(job, y, 0, 1, args.width, image.rows[y], args.destination->rows[y],
                      mask ? mask->rows[y] : nullptr, lines.get(), lines.get() + rowBytes);
        },
        [&](int32_t done) {
            if (shortOfMemory) return int32_t{kErrOutOfMemory};
            return busy.Step(done);
        });
    busy.Close();
    if (!result && shortOfMemory) result = kErrOutOfMemory;
    return result;
}

int32_t Worker(const TransformArgs& args)
{
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const auto& params = static_cast<const EmbossParams&>(*args.params);
    EmbossJob job;
    job.pass = AmountPassFor(params.amount);
    if (job.pass.level == 0 && (job.pass.level2 == -1 || job.pass.level2 == 0))
        return RunShortWay(args);
    Image gray;
    job.image = source;
    if (source->kind == kImageBinary) {
        if (int32_t code = GrayOfBinary(*source, gray)) return code;
        job.image = &gray;
    }
    // The angle runs against the mathematical direction.
    const double radians = params.angle * -0.01745329252;
    job.dx = OnGrid(params.radius * std::cos(radians));
    job.dy = OnGrid(params.radius * std::sin(radians));
    job.heightScale = RoundToInt(params.height * 1024.0);
    job.method = params.method;
    job.bpp = source->kind == kImageColor ? 3 : 1;
    job.space = job.bpp == 3 ? params.colorSpace : kColorSpaceRgb;

    if (args.toImage && WholeOutput(args) && args.zoom == 1 && args.sourceX == 0 &&
        args.sourceY == 0 && args.width == source->width && args.height == source->height &&
        int64_t{args.width} * args.height >= kParallelPixels && ThreadCount() > 1)
        return ParallelEmboss(args, job);

    const int32_t step = args.zoom < 0 ? -args.zoom : 1;
    const auto rowBytes = static_cast<size_t>(args.width) * static_cast<size_t>(job.bpp);
    LineInput in, mask;
    LineOutput out;
    LineInputReset(in);
    LineInputReset(mask);
    LineOutputReset(out);
    std::unique_ptr<uint8_t[]> lines = AllocBytes(2 * rowBytes);
    int32_t result = lines ? kOk : kErrOutOfMemory;
    if (!result)
        result = LineInputOpen(*job.image, args.sourceX, args.sourceY, args.zoom, args.width, in);
    if (!result && job.pass.UsesMask())
        result = LineInputOpen(*args.params->amount.mask, args.sourceX, args.sourceY, args.zoom,
                               args.width, mask);
    if (!result) result = WorkerOutputOpen(args, job.image->kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, "Emboss");
        for (int32_t line = 0; line < args.height && !result; ++line) {
            const int32_t y =
                std::min(int64_t{args.sourceY} + int64_t{line} * step, int64_t{source->height - 1});
            const uint8_t* centre = LineInputNext(in);
            uint8_t* output = LineOutputRow(out);
            EmbossRow(job, static_cast<int32_t>(y), args.sourceX, step, args.width, centre, output,
                      job.pass.UsesMask() ? LineInputNext(mask) : nullptr, lines.get(),
                      lines.get() + rowBytes);
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineInputClose(in);
    LineInputClose(mask);
    LineOutputClose(out);
    return result;
}

const TransformRegistration kEmboss({
    .name = "emboss",
    .title = "Emboss",
    .commandId = 4040,
    .params =
        {
            {
                .name = "radius",
                .type = ParamType::Real,
                .field = Field(&EmbossParams::radius),
                .minimum = 0.0,
                .maximum = 10.0,
                .defaultValue = 1.0,
                .decimals = 1,
                .label = "Radius:",
                .help = "how far, in pixels, the picture is shifted each way",
                .inPanel = false,
            },
            {
                .name = "method",
                .type = ParamType::Choice,
                .field = Field(&EmbossParams::method),
                .defaultValue = kNormal,
                .choiceLabels = "Normal|Shadow",
                .label = "Method:",
                .help = "the relief around middle gray, or added to the picture as shadows "
                        "and lights",
            },
            {
                .name = "angle",
                .type = ParamType::Real,
                .field = Field(&EmbossParams::angle),
                .minimum = 0.0,
                .maximum = 360.0,
                .defaultValue = 135.0,
                .decimals = 1,
                .label = "Angle:",
                .help = "the direction of the relief, in degrees clockwise from the right",
                .inPanel = false,
            },
            {
                .name = "height",
                .type = ParamType::Real,
                .field = Field(&EmbossParams::height),
                .minimum = 0.0,
                .maximum = 10.0,
                .defaultValue = 1.0,
                .decimals = 1,
                .label = "Height:",
                .help = "the factor on the difference: higher gives a steeper relief",
                .inPanel = false,
            },
            {
                .name = "color-space",
                .type = ParamType::Choice,
                .field = Field(&EmbossParams::colorSpace),
                .defaultValue = kColorSpaceHsv,
                .choiceLabels = "HSV|HSL|RGB",
                .choices = "hsv|hsl|rgb",
                .label = "Color Space:",
                .help = "for colour: the HSV value or HSL lightness alone, keeping hue and "
                        "saturation, or each channel by itself",
            },
        },
    .create = NewParams<EmbossParams>,
    .worker = Worker,
    .help = "Turns the picture into a relief: the difference between the picture shifted "
            "forward and back along a direction.",
    .example = "--radius 2 --angle 45 --method shadow",
});

}  // namespace
}  // namespace lv
