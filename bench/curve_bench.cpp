// Brightness Curve on a 24-megapixel colour picture, in RGB (a lookup per
// channel) and HSV (the value through the curve), beside a memcpy of the
// same bytes. bench/compare_curves.sh times the same work with libvips and
// ImageMagick.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "image/image.h"
#include "shell/tables.h"
#include "synthesis/test_card.h"
#include "tone/brightness_curve.h"
#include "tone/color_space.h"
#include "transform/registry.h"

namespace {

const lv::Image& Picture()
{
    static lv::Image image = [] {
        lv::InitEngineTables();
        lv::Image made;
        lv::MakeTestCard(made, lv::kImageColor, 6000, 4000);
        return made;
    }();
    return image;
}

void Run(benchmark::State& state, int32_t space)
{
    const lv::Image& in = Picture();
    lv::Image out;
    lv::ImageAlloc(out, lv::kImageColor, in.width, in.height, in.resolution);
    uint8_t table[256];
    for (int i = 0; i < 256; ++i)
        table[i] = static_cast<uint8_t>(255 - (255 - i) * (255 - i) / 255);
    for (auto _ : state) {
        for (int32_t y = 0; y < in.height; ++y)
            lv::ApplyCurveRow(in.rows[y], out.rows[y], in.width, 3, space, table);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t{in.width} * in.height);
}

void BM_CurveRgb(benchmark::State& state) { Run(state, lv::kColorSpaceRgb); }

// The whole worker as Apply runs it: on every core, Amount and all.
void RunModule(benchmark::State& state, const char* space)
{
    const lv::Image& in = Picture();
    const lv::TransformModule* module = lv::FindTransform("brightness-curve");
    auto params = lv::CreateParams(*module);
    std::string problem;
    lv::ParamSetText(*lv::FindParam(*module, "color-space"), *params, space, problem);
    auto& table = static_cast<lv::BrightnessCurveParams&>(*params).table;
    for (int i = 0; i < 256; ++i)
        table[i] = static_cast<uint8_t>(255 - (255 - i) * (255 - i) / 255);
    lv::Image out;
    for (auto _ : state) {
        lv::RunTransformToImage(*module, *params, &in, out);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t{in.width} * in.height);
}

void BM_WorkerCurveRgb(benchmark::State& state) { RunModule(state, "rgb"); }
void BM_WorkerCurveHsv(benchmark::State& state) { RunModule(state, "hsv"); }
void BM_CurveHsv(benchmark::State& state) { Run(state, lv::kColorSpaceHsv); }

void BM_CurveMemcpyLimit(benchmark::State& state)
{
    const lv::Image& in = Picture();
    std::vector<uint8_t> to(static_cast<size_t>(in.stride));
    lv::Image out;
    lv::ImageAlloc(out, lv::kImageColor, in.width, in.height, in.resolution);
    for (auto _ : state) {
        for (int32_t y = 0; y < in.height; ++y)
            std::memcpy(out.rows[y], in.rows[y], static_cast<size_t>(in.stride));
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * int64_t{in.width} * in.height);
}

}  // namespace

BENCHMARK(BM_CurveMemcpyLimit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CurveRgb)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CurveHsv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WorkerCurveRgb)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_WorkerCurveHsv)->Unit(benchmark::kMillisecond)->UseRealTime();
