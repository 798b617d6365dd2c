#include "image/lineio.h"

#include <algorithm>

#include "image/memory.h"
#include "image/pixel.h"
#include "shell/errors.h"

namespace lv {

namespace {

bool IsPicture(int32_t kind) { return kind >= kImageBinary && kind <= kImageColor; }

// Bytes a worker pixel takes: kinds 1 and 2 are read as one byte a pixel.
int32_t WorkerBytes(int32_t kind) { return kind == kImageColor ? 3 : 1; }

int32_t ClampIndex(int64_t v, int32_t count)
{
    return v < 0 ? 0 : (v >= count ? count - 1 : static_cast<int32_t>(v));
}

// Copies `count` pixels of a row starting at column `start`, one every `step`
// columns, with columns outside the picture taken from its edge. A 1-bit row
// is expanded to 0 and 255. A run that lies wholly inside is one byte copy.
void Gather(const Image& image, const uint8_t* row, int64_t start, int32_t step, int32_t count,
            uint8_t* out)
{
    const int32_t w = image.width;
    if (image.kind == kImageBinary) {
        for (int32_t i = 0; i < count; ++i)
            out[i] = GetBit(row, ClampIndex(start + int64_t{i} * step, w)) ? 255 : 0;
        return;
    }
    const int32_t bpp = WorkerBytes(image.kind);
    if (step == 1 && start >= 0 && start + count <= w) {
        CopyBytes(row + start * bpp, out, static_cast<size_t>(count) * bpp);
        return;
    }
    for (int32_t i = 0; i < count; ++i) {
        const uint8_t* p =
            row + static_cast<size_t>(ClampIndex(start + int64_t{i} * step, w)) * bpp;
        for (int32_t b = 0; b < bpp; ++b) out[i * bpp + b] = p[b];
    }
}

int32_t StepFor(int32_t zoom) { return zoom < 0 ? -zoom : 1; }

}  // namespace

// ---- LineInput --------------------------------------------------------------

void LineInputReset(LineInput& input)
{
    input.buffer.reset();
    input.scratch.reset();
    input.image = nullptr;
}

int32_t LineInputOpen(const Image& image, int32_t x, int32_t y, int32_t zoom, int32_t width,
                      LineInput& input)
{
    LineInputClose(input);
    if (!IsPicture(image.kind)) return kErrImageType;
    width = std::max(width, 0);
    input.image = &image;
    input.x = x;
    input.y = y;
    input.step = StepFor(zoom);
    input.width = width;
    input.scratch = AllocBytes(static_cast<size_t>(width));
    if (!input.scratch) return kErrOutOfMemory;
    // Rows are handed out in place when nothing needs gathering and the run
    // lies inside the picture; a run reaching outside is gathered with its
    // columns clamped, so a caller's slip never reads past a row.
    const bool inPlace = input.step == 1 && image.kind != kImageBinary && image.rows && x >= 0 &&
                         int64_t{x} + width <= image.width;
    if (inPlace) return kOk;
    input.buffer = AllocBytes(static_cast<size_t>(width) * WorkerBytes(image.kind));
    return input.buffer ? kOk : kErrOutOfMemory;
}

const uint8_t* LineInputNext(LineInput& input)
{
    const Image& image = *input.image;
    if (!image.rows) return input.scratch.get();
    const int32_t r = ClampIndex(input.y, image.height);
    input.y += input.step;
    const uint8_t* row = image.rows[r];
    if (!input.buffer) return row + static_cast<size_t>(input.x) * WorkerBytes(image.kind);
    Gather(image, row, input.x, input.step, input.width, input.buffer.get());
    return input.buffer.get();
}

void LineInputClose(LineInput& input) { LineInputReset(input); }

// ---- LineWindow -------------------------------------------------------------

void LineWindowReset(LineWindow& window)
{
    window.windowRows.reset();
    window.buffers.reset();
    window.image = nullptr;
}

int32_t LineWindowOpen(const Image& image, int32_t x, int32_t y, int32_t zoom, int32_t width,
                       int32_t radius, LineWindow& window)
{
    LineWindowClose(window);
    if (!IsPicture(image.kind)) return kErrImageType;
    width = std::max(width, 0);
    radius = std::max(radius, 0);
    const int32_t n = 2 * radius + 1;
    window.image = &image;
    window.x = x;
    window.y = y;
    window.step = StepFor(zoom);
    window.radius = radius;
    window.width = width;

    int64_t pixels = int64_t{width} * window.step + 2 * int64_t{radius};
    int64_t advance = window.step;
    const int64_t first = int64_t{x} - radius;
    if (image.kind != kImageBinary && image.rows && first >= 0 &&
        first + pixels - 1 <= image.width - 1) {
        window.mode = 0;
    } else if (window.step > n) {
        window.mode = 2;
        pixels = int64_t{width} * n;
        advance = n;
    } else {
        window.mode = 1;
    }
    const int32_t bpp = WorkerBytes(image.kind);
    if (pixels * bpp > INT32_MAX) return kErrOutOfMemory;
    window.rowBytes = static_cast<int32_t>(pixels * bpp);
    window.advance = static_cast<int32_t>(advance * bpp);

    window.windowRows.reset(new (std::nothrow) const uint8_t*[static_cast<size_t>(n)]);
    if (!window.windowRows) return kErrOutOfMemory;
    if (window.mode == 0) return kOk;
    window.buffers.reset(new (std::nothrow) std::unique_ptr<uint8_t[]>[static_cast<size_t>(n)]);
    if (!window.buffers) {
        LineWindowClose(window);
        return kErrOutOfMemory;
    }
    for (int32_t i = 0; i < n; ++i) {
        window.buffers[i] = AllocBytes(static_cast<size_t>(window.rowBytes));
        if (!window.buffers[i]) {
            LineWindowClose(window);
            return kErrOutOfMemory;
        }
        // An image with no rows reads as black rather than as stale memory.
        if (!image.rows) std::fill_n(window.buffers[i].get(), window.rowBytes, uint8_t{0});
        window.windowRows[i] = window.buffers[i].get();
    }
    return kOk;
}

const uint8_t* const* LineWindowNext(LineWindow& window)
{
    const Image& image = *window.image;
    if (!image.rows) return window.windowRows.get();
    const int32_t n = 2 * window.radius + 1;
    const int32_t center = ClampIndex(window.y, image.height);
    window.y += window.step;
    const int64_t first = int64_t{window.x} - window.radius;
    const int32_t bpp = WorkerBytes(image.kind);
    for (int32_t i = 0; i < n; ++i) {
        const uint8_t* row =
            image.rows[ClampIndex(int64_t{center} - window.radius + i, image.height)];
        if (window.mode == 0) {
            window.windowRows[i] = row + first * bpp;
        } else if (window.mode == 1) {
            Gather(image, row, first, 1, window.rowBytes / bpp, window.buffers[i].get());
        } else {
            uint8_t* out = window.buffers[i].get();
            for (int32_t k = 0; k < window.width; ++k)
                Gather(image, row, first + int64_t{k} * window.step, 1, n,
                       out + static_cast<size_t>(k) * n * bpp);
        }
    }
    return window.windowRows.get();
}

void LineWindowClose(LineWindow& window) { LineWindowReset(window); }

// ---- LineOutput -------------------------------------------------------------

void LineOutputReset(LineOutput& output)
{
    output.row.reset();
    output.spill.reset();
    output.image = nullptr;
}

int32_t LineOutputOpen(Image& image, int32_t zoom, int32_t x0, int32_t x1, int32_t y, int32_t raw,
                       LineOutput& output, const DisplayTables* tables)
{
    LineOutputClose(output);
    if (!IsPicture(image.kind)) return kErrImageType;
    output.image = &image;
    output.replicate = zoom < 2 ? 1 : zoom;
    output.x0 = std::max(x0, 0);
    output.x1 = std::min(x1, image.width - 1);
    output.stride = image.stride;
    output.y = y;
    output.byteOffset = image.kind == kImageBinary ? output.x0 / 8
                        : image.kind == kImageGray ? output.x0
                                                   : output.x0 * 3;
    output.raw = raw;
    output.tables = tables ? tables : &CurrentDisplayTables();
    const size_t rowSize = static_cast<size_t>(std::max(image.stride, 4));
    if (output.replicate != 1) {
        output.row = AllocBytes(rowSize);
        if (!output.row) return kErrOutOfMemory;
    }
    output.spill = AllocBytes(rowSize);
    return output.spill ? kOk : kErrOutOfMemory;
}

uint8_t* LineOutputRow(LineOutput& output)
{
    if (output.row) return output.row.get();
    const Image& image = *output.image;
    if (output.y < 0 || output.y >= image.height || !image.rows) return output.spill.get();
    return image.rows[output.y] + output.byteOffset;
}

namespace {

void ThroughTables(const DisplayTables& t, uint8_t* p, int32_t pixels)
{
    for (int32_t i = 0; i < pixels; ++i, p += 3) {
        p[0] = t.blue[p[0]];
        p[1] = t.green[p[1]];
        p[2] = t.red[p[2]];
    }
}

}  // namespace

void LineOutputFlush(LineOutput& output)
{
    Image& image = *output.image;
    if (output.y < 0 || output.y >= image.height || !image.rows) return;
    const int32_t y = output.y;
    output.y += output.replicate;
    uint8_t* dest = image.rows[y];
    const bool tables = image.kind == kImageColor && !output.raw;
    if (output.x1 < output.x0) return;

    if (!output.row) {
        if (tables)
            ThroughTables(*output.tables, dest + output.byteOffset, output.x1 - output.x0 + 1);
        return;
    }

    // Spread each worker pixel over `replicate` columns; a worker pixel index
    // never passes the last column of the destination.
    const int32_t rep = output.replicate;
    const uint8_t* src = output.row.get();
    const int32_t lastPixel = std::min((output.x1 - output.x0) / rep, image.width - 1);
    if (tables) ThroughTables(*output.tables, output.row.get(), lastPixel + 1);
    if (image.kind == kImageBinary) {
        for (int32_t c = output.x0; c <= output.x1; ++c) {
            PutBit(dest, c, GetBit(src, std::min((c - output.x0) / rep, image.width - 1)));
        }
    } else {
        const int32_t bpp = image.kind == kImageColor ? 3 : 1;
        uint8_t* out = dest + output.byteOffset;
        for (int32_t c = output.x0; c <= output.x1; ++c, out += bpp) {
            const uint8_t* p =
                src + static_cast<size_t>(std::min((c - output.x0) / rep, image.width - 1)) * bpp;
            for (int32_t b = 0; b < bpp; ++b) out[b] = p[b];
        }
    }

    // The rows that replicate this one are byte copies of it.
    int32_t count = image.kind == kImageBinary ? output.x1 / 8 - output.x0 / 8 + 1
                    : image.kind == kImageGray ? output.x1 - output.x0 + 1
                                               : 3 * (output.x1 - output.x0 + 1);
    count = std::min(count, output.stride - output.byteOffset);
    for (int32_t r = y + 1; r < y + rep && r < image.height; ++r)
        CopyBytes(dest + output.byteOffset, image.rows[r] + output.byteOffset,
                  static_cast<size_t>(count));
}

void LineOutputClose(LineOutput& output) { LineOutputReset(output); }

}  // namespace lv
