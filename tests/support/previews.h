// A module's full result against its previews: the same bytes on one thread
// and on two, and every preview the frame makes (whole at 1:3, 1:2, 2:1 and
// 1:1, and a strip at 1:1) showing the full result's pixels.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>

#include "image/image.h"
#include "image/threads.h"
#include "image/window.h"
#include "support/pictures.h"
#include "transform/frame.h"
#include "transform/registry.h"

namespace lv::test {

// A fresh record of the module's parameters, as the test sets them.
using ParamsMaker = std::function<std::unique_ptr<TransformParams>()>;

// Previews `source` as the frame does and expects every displayed pixel to
// be the one of `full` it stands for. The strip (columns from 3 on, the top
// three rows, over a cleared display) can be left out for a module whose
// rows depend on where a run starts.
inline void ExpectPreviewsShow(const char* name, const Image& source, const ParamsMaker& make,
                               const Image& full, bool withStrip = true)
{
    TransformFrame frame;
    ImageWindow input, target;
    frame.module = FindTransform(name);
    ASSERT_NE(frame.module, nullptr) << name;
    frame.params = make();
    ASSERT_EQ(ImageDuplicate(source, input.image), 0);
    frame.source = &input;
    FrameStart(frame);
    PreparePreviewRecord(frame, target, 100000, 100000, 0, 0);
    const Image& d = target.display;
    auto run = [&](int32_t zoom, const FrameRect* rect) {
        const int32_t n = zoom < 0 ? -zoom : 1, m = zoom > 1 ? zoom : 1;
        target.zoom = zoom;
        target.viewWidth = (frame.outputWidth + n - 1) / n * m;
        target.viewHeight = (frame.outputHeight + n - 1) / n * m;
        EXPECT_EQ(frame.module->worker(FrameArgs(frame, false, target, rect)), 0);
    };
    for (int32_t zoom : {-3, -2, 2, 1}) {
        run(zoom, nullptr);
        ASSERT_EQ(d.kind, full.kind) << name;
        int32_t wrong = 0;
        for (int32_t r = 0; r < d.height; ++r)
            for (int32_t c = 0; c < d.width; ++c) {
                const int32_t x = zoom < 0 ? c * -zoom : c / zoom;
                const int32_t y = zoom < 0 ? r * -zoom : r / zoom;
                if (Pixel(d, c, r) != Pixel(full, x, y)) ++wrong;
            }
        EXPECT_EQ(wrong, 0) << name << " zoom " << zoom << " kind " << source.kind;
    }
    if (!withStrip) return;
    const int32_t top = d.height - 1;
    for (int32_t y = top - 2; y <= top; ++y)
        std::memset(d.rows[y], 0, static_cast<size_t>(d.stride));
    const FrameRect strip{3, top - 2, d.width - 1, top};
    run(1, &strip);
    for (int32_t y = top - 2; y <= top; ++y)
        for (int32_t x = 0; x < d.width; ++x)
            EXPECT_EQ(Pixel(d, x, y), x < 3 ? 0u : Pixel(full, x, y)) << name << " strip";
}

// The full result on one thread and on two, the same bytes expected, then
// its previews; returns the result.
inline Image FullAndPreviews(const char* name, const Image& source, const ParamsMaker& make,
                             bool withStrip = true)
{
    Image one, two;
    for (int32_t threads : {1, 2}) {
        SetThreadCount(threads);
        EXPECT_EQ(
            RunTransformToImage(*FindTransform(name), *make(), &source, threads == 1 ? one : two),
            0)
            << name;
    }
    SetThreadCount(0);
    EXPECT_EQ(Bytes(one), Bytes(two)) << name << " kind " << source.kind;
    ExpectPreviewsShow(name, source, make, one, withStrip);
    return one;
}

}  // namespace lv::test
