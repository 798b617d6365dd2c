#include "filters/neighbourhood.h"

#include <algorithm>
#include <atomic>

#include "image/lineio.h"
#include "image/memory.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {

namespace {

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

}  // namespace

void KeepTenLargest(const uint32_t counts[256], uint8_t held[10])
{
    uint32_t all[256];
    std::copy_n(counts, 256, all);
    for (int32_t i = 0; i < 10; ++i) ++all[held[i]];
    int32_t kept = 0;
    for (int32_t v = 255; v >= 0 && kept < 10; --v)
        for (uint32_t k = 0; k < all[v] && kept < 10; ++k)
            held[9 - kept++] = static_cast<uint8_t>(v);
}

int32_t RunWindowFilter(const TransformArgs& args, const WindowFilter& filter)
{
    const Image& source = *args.source;
    const AmountPass pass = AmountPassFor(args.params->amount);
    const Image* mask = pass.UsesMask() ? args.params->amount.mask : nullptr;
    const int32_t ch = source.kind == kImageColor ? 3 : 1;
    const int32_t kind = ch == 3 ? kImageColor : kImageGray;
    const int32_t width = args.width, height = args.height;

    // A full result of a large picture: each row from a window of its own,
    // straight into its place, on all the cores.
    const bool direct = args.toImage && WholeOutput(args) && args.zoom == 1 && args.sourceX == 0 &&
                        args.sourceY == 0 && width == source.width && height == source.height &&
                        (!mask || mask->kind == kImageGray) &&
                        int64_t{width} * height >= kParallelPixels && ThreadCount() > 1;
    if (direct) {
        if (int32_t code = ImageAlloc(*args.destination, kind, args.outWidth, args.outHeight,
                                      source.resolution))
            return code;
        ClearImagePadding(*args.destination);
        std::atomic<bool> shortOfMemory{false};
        // Row j's window, handed to `use`; false when memory ran short.
        auto withRow = [&](int32_t j, uint8_t* slots, uint8_t* out, auto use) {
            LineWindow window;
            LineWindowReset(window);
            if (LineWindowOpen(source, 0, j, 1, width, filter.radius, window)) {
                shortOfMemory = true;
                return;
            }
            WindowRow row;
            row.rows = LineWindowNext(window);
            row.advance = window.advance;
            row.mask = mask ? mask->rows[j] : nullptr;
            row.out = out;
            row.width = width;
            row.channels = ch;
            row.slots = slots;
            use(row);
        };
        WorkerBusy busy;
        busy.Open(args, filter.title);
        int32_t result = kOk;
        std::unique_ptr<uint8_t[]> starts;
        if (filter.loads) {
            // The slots each row starts from: the ten largest bytes that all
            // rows before it put in, over ten zeros.
            starts = AllocBytes(static_cast<size_t>(height) * 10);
            if (!starts) result = kErrOutOfMemory;
            if (!result)
                result = ParallelRows(
                    height,
                    [&](int32_t j) {
                        uint8_t* ten = starts.get() + static_cast<size_t>(j) * 10;
                        std::fill_n(ten, 10, uint8_t{0});
                        withRow(j, nullptr, nullptr, [&](const WindowRow& row) {
                            uint32_t counts[256] = {};
                            filter.loads(row, counts);
                            KeepTenLargest(counts, ten);
                        });
                    },
                    [&](int32_t done) {
                        if (shortOfMemory) return int32_t{kErrOutOfMemory};
                        return busy.Step(done / 8);
                    });
            uint8_t held[10] = {};
            for (int32_t j = 0; j < height && !result; ++j) {
                uint8_t* ten = starts.get() + static_cast<size_t>(j) * 10;
                uint32_t counts[256] = {};
                for (int32_t i = 0; i < 10; ++i) ++counts[ten[i]];
                std::copy_n(held, 10, ten);
                KeepTenLargest(counts, held);
            }
        }
        const int32_t first = filter.loads ? (height - 1) / 8 : 0;
        if (!result)
            result = ParallelRows(
                height,
                [&](int32_t j) {
                    uint8_t slots[25] = {};
                    if (starts)
                        std::copy_n(starts.get() + static_cast<size_t>(j) * 10, 10, slots + 15);
                    withRow(j, slots, args.destination->rows[j], filter.row);
                },
                [&](int32_t done) {
                    if (shortOfMemory) return int32_t{kErrOutOfMemory};
                    return busy.Step(filter.loads ? first + done - done / 8 : done);
                });
        if (!result && shortOfMemory) result = kErrOutOfMemory;
        busy.Close();
        return result;
    }

    LineWindow window;
    LineInput maskIn;
    LineOutput out;
    LineWindowReset(window);
    LineInputReset(maskIn);
    LineOutputReset(out);
    int32_t result =
        LineWindowOpen(source, args.sourceX, args.sourceY, args.zoom, width, filter.radius, window);
    if (!result && mask)
        result = LineInputOpen(*mask, args.sourceX, args.sourceY, args.zoom, width, maskIn);
    if (!result) result = WorkerOutputOpen(args, kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, filter.title);
        uint8_t slots[25] = {};  // Median 5x5's, for the whole run
        for (int32_t j = 0; j < height && !result; ++j) {
            WindowRow row;
            row.rows = LineWindowNext(window);
            row.advance = window.advance;
            row.mask = mask ? LineInputNext(maskIn) : nullptr;
            row.out = LineOutputRow(out);
            row.width = width;
            row.channels = ch;
            row.slots = slots;
            filter.row(row);
            LineOutputFlush(out);
            result = busy.Step(j);
        }
        busy.Close();
    }
    LineWindowClose(window);
    LineInputClose(maskIn);
    LineOutputClose(out);
    return result;
}

}  // namespace lv
