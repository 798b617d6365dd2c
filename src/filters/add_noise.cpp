// Add Noise: each pixel moved by a random offset, uniform over +-strength
// or Gaussian with a standard deviation of half the strength (so that 95% of
// its offsets fall in the same +-strength), the same offset on the three
// channels (monochrome) or one a channel.
//
// The offsets come from the program's generator run on a state of the
// job's own: each row's state is made from the seed and the row's number,
// and a pixel's numbers lie a fixed count further on. So a pixel's noise
// depends only on the seed and where it is: the same on one thread or many,
// in a preview at any zoom or strip as in the full result. The command
// line's --seed picks the seed (1 unless given); in the editor the panel
// draws one from the program's generator when it opens, and its preview and
// every Apply use it, so what the preview shows is what Apply makes.
#include <cmath>

#include "image/pixel.h"
#include "shell/errors.h"
#include "synthesis/random.h"
#include "transform/point_worker.h"

namespace lv {
namespace {

struct AddNoiseParams : TransformParams {
    int32_t strength;
    int32_t distribution;  // 0 uniform, 1 Gaussian
    int32_t monochrome;
    int32_t seed;
};

constexpr double kTwoPi = 6.2831853072;

// Where a row's noise comes from: the numbers a pixel takes and the jump
// from one computed pixel to the next.
struct NoiseRun {
    const AddNoiseParams* params = nullptr;
    int32_t perPixel = 1;  // generator numbers per pixel
    int32_t values = 1;    // offsets per pixel: 1, or 3 for colour noise per channel
    int32_t x0 = 0;        // the picture's column of the first pixel computed
    int32_t step = 1;      // picture columns and rows from one computed pixel to the next
    int32_t stepJump = 1;  // the multiplier that moves the state `step` pixels on
};

NoiseRun NoiseRunFor(const AddNoiseParams& params, int32_t channels, int32_t x0, int32_t zoom)
{
    NoiseRun run;
    run.params = &params;
    run.values = channels == 3 && !params.monochrome ? 3 : 1;
    run.perPixel = run.values * (params.distribution == 1 ? 2 : 1);
    run.x0 = x0;
    run.step = zoom < 0 ? -zoom : 1;
    run.stepJump = RandomJumpMultiplier(int64_t{run.step} * run.perPixel);
    return run;
}

// One offset, in levels.
int32_t Offset(const AddNoiseParams& params, int32_t& state)
{
    const double u = random_unit(state);
    if (params.distribution == 0) return RoundToInt((2.0 * u - 1.0) * params.strength);
    // Box and Muller: u is above 0, so the logarithm is finite.
    const double z = std::sqrt(-2.0 * std::log(u)) * std::cos(kTwoPi * random_unit(state));
    return RoundToInt(z * params.strength * 0.5);
}

// The noisy row `y` of the picture: `pixels` pixels from column x0 on.
void NoiseRow(const NoiseRun& run, int32_t y, const uint8_t* in, uint8_t* out, int32_t pixels,
              int32_t channels)
{
    int32_t state = RandomJump(RandomStreamState(run.params->seed, y),
                               RandomJumpMultiplier(int64_t{run.x0} * run.perPixel));
    for (int32_t k = 0; k < pixels; ++k) {
        int32_t local = state;
        int32_t offset = 0;
        for (int32_t c = 0; c < channels; ++c) {
            if (c < run.values) offset = Offset(*run.params, local);
            const int32_t i = k * channels + c;
            out[i] = static_cast<uint8_t>(Clamp8(in[i] + offset));
        }
        state = RandomJump(state, run.stepJump);
    }
}

int32_t Worker(const TransformArgs& args)
{
    const auto& params = static_cast<const AddNoiseParams&>(*args.params);
    const Image* source = args.source;
    if (!source || source->kind < kImageBinary || source->kind > kImageColor) return kErrImageType;
    const AmountBlock& a = params.amount;
    if (params.strength == 0 || (a.amount == 0 && (a.amount2 == -1 || a.amount2 == 0)))
        return RunShortWay(args);
    // A pixel's noise follows from the seed and its place alone, so a full
    // result on any number of threads and every preview show the same grain.
    const NoiseRun run =
        NoiseRunFor(params, source->kind == kImageColor ? 3 : 1, args.sourceX, args.zoom);

    return RunPlacedPointWorker(
        args, "Add Noise",
        [&run](const uint8_t* in, uint8_t* out, int32_t pixels, int32_t channels,
               const RowPlace& place) { NoiseRow(run, place.y, in, out, pixels, channels); });
}

const TransformRegistration kAddNoise({
    .name = "add-noise",
    .title = "Add Noise",
    .commandId = 4043,
    .params = {{
                   .name = "strength",
                   .type = ParamType::Int,
                   .field = Field(&AddNoiseParams::strength),
                   .minimum = 0,
                   .maximum = 255,
                   .defaultValue = 32,
                   .label = "Strength:",
                   .help = "the spread of the offsets in levels: uniform noise moves a level by "
                           "up to this much, Gaussian noise by a standard deviation of half of it",
               },
               {
                   .name = "distribution",
                   .type = ParamType::Choice,
                   .field = Field(&AddNoiseParams::distribution),
                   .defaultValue = 0,
                   .choiceLabels = "Uniform|Gaussian",
                   .label = "Distribution:",
                   .help = "how the offsets are spread: evenly, or bell-shaped",
               },
               {
                   .name = "monochrome",
                   .type = ParamType::Flag,
                   .field = Field(&AddNoiseParams::monochrome),
                   .defaultValue = 0,
                   .label = "Monochrome",
                   .help = "for colour, the same offset on red, green and blue, so the noise "
                           "has no colour of its own",
               },
               {
                   .name = "seed",
                   .type = ParamType::Int,
                   .field = Field(&AddNoiseParams::seed),
                   .minimum = 0,
                   .maximum = 2147483647,
                   .defaultValue = 1,
                   .help = "where the random numbers start: the same seed and settings give the "
                           "same picture (the editor draws one when its panel opens)",
                   .inPanel = false,
               }},
    .create = NewParams<AddNoiseParams>,
    .worker = Worker,
    .help = "Adds random noise, uniform or Gaussian, monochrome or on each channel.",
    .example = "--strength 20 --distribution gaussian --monochrome --seed 7",
});

}  // namespace
}  // namespace lv
