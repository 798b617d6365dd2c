// Building a window's display copy from a 24-megapixel colour picture: the
// work of every zoom, scroll and repaint after a change, at 1:1, 1:4 and 3:1
// for a 1600 by 1000 view.
#include <benchmark/benchmark.h>

#include "image/display.h"
#include "image/window.h"
#include "shell/tables.h"
#include "synthesis/test_card.h"

namespace {

lv::ImageWindow& Window(int32_t zoom)
{
    static lv::ImageWindow window = [] {
        lv::InitEngineTables();
        lv::ImageWindow made;
        lv::MakeTestCard(made.image, lv::kImageColor, 6000, 4000);
        return made;
    }();
    window.zoom = zoom;
    window.viewWidth = 1600;
    window.viewHeight = 1000;
    window.sourceLeft = 1000;
    window.sourceTop = 1000;
    window.sourceRight = window.sourceLeft + (zoom > 0 ? 1600 / zoom : 1600 * -zoom) - 1;
    window.sourceBottom = window.sourceTop + (zoom > 0 ? 1000 / zoom : 1000 * -zoom) - 1;
    return window;
}

void BM_DisplayUpdate(benchmark::State& state)
{
    lv::ImageWindow& window = Window(static_cast<int32_t>(state.range(0)));
    for (auto _ : state) {
        lv::DisplayUpdateAll(window, nullptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 1600 * 1000);
}

}  // namespace

BENCHMARK(BM_DisplayUpdate)->Arg(1)->Arg(-4)->Arg(3)->Unit(benchmark::kMillisecond);
