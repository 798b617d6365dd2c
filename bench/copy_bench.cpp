// Whole-image copy and negative of a 24-megapixel colour picture, beside a
// plain memcpy of the same bytes: the memory bandwidth that bounds them.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "image/image.h"
#include "shell/tables.h"

namespace {

constexpr int32_t kWidth = 6000;
constexpr int32_t kHeight = 4000;

lv::Image& Source()
{
    static lv::Image image = [] {
        lv::InitEngineTables();
        lv::Image made;
        lv::ImageAlloc(made, lv::kImageColor, kWidth, kHeight, 300.0);
        for (int32_t y = 0; y < kHeight; ++y)
            for (int32_t i = 0; i < made.stride; ++i) made.rows[y][i] = static_cast<uint8_t>(y + i);
        return made;
    }();
    return image;
}

int64_t ImageBytes() { return int64_t{Source().stride} * kHeight; }

void BM_Memcpy(benchmark::State& state)
{
    std::vector<uint8_t> from(static_cast<size_t>(ImageBytes()), 1);
    std::vector<uint8_t> to(from.size());
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), from.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * ImageBytes());
}

void BM_ImageDuplicate(benchmark::State& state)
{
    lv::Image destination;
    for (auto _ : state) {
        lv::ImageDuplicate(Source(), destination);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * ImageBytes());
}

void BM_ImageNegative(benchmark::State& state)
{
    lv::Image destination;
    for (auto _ : state) {
        lv::ImageNegative(Source(), destination);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * ImageBytes());
}

}  // namespace

BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImageDuplicate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ImageNegative)->Unit(benchmark::kMillisecond);
BENCHMARK_MAIN();
