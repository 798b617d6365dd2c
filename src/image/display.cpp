#include "image/display.h"

#include <algorithm>
#include <cstring>

#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/frontend.h"

namespace lv {

namespace {

DisplayMode gDisplayMode = kDisplayTrueColor;

// ---- Dither data ------------------------------------------------------------------

// The 8 by 8 ordered matrix, row by row.
constexpr uint8_t kMatrix[64] = {
    1,  33, 9,  41, 3,  35, 11, 43,  //
    49, 17, 57, 25, 51, 19, 59, 27,  //
    13, 45, 5,  37, 15, 47, 7,  39,  //
    61, 29, 53, 21, 63, 31, 55, 23,  //
    4,  36, 12, 44, 2,  34, 10, 42,  //
    52, 20, 60, 28, 50, 18, 58, 26,  //
    16, 48, 8,  40, 14, 46, 6,  38,  //
    64, 32, 56, 24, 62, 30, 54, 22,  //
};

// The seven tables of the palette-mode dither (922 bytes). They depend on
// nothing but constants, so they are made once at compile time.
struct DitherTables {
    uint8_t grayLevel[256];  // v * 19 / 255: the ramp step at or below v
    uint8_t grayValue[20];   // i * 255 / 19: the value of ramp step i
    uint8_t cubeLevel[256];  // v * 5 / 255
    uint8_t cubeValue[6];    // i * 255 / 5
    uint8_t grayDither[64];  // matrix * 255 / 1216: thresholds within one ramp step
    uint8_t cubeDither[64];  // matrix * 255 / 320: thresholds within one cube step
    uint8_t times6[256];     // (i * 6) mod 256
};

constexpr DitherTables MakeDitherTables()
{
    DitherTables t{};
    for (int i = 0; i < 256; ++i) {
        t.grayLevel[i] = static_cast<uint8_t>(i * 19 / 255);
        t.cubeLevel[i] = static_cast<uint8_t>(i * 5 / 255);
        t.times6[i] = static_cast<uint8_t>((i * 6) % 256);
    }
    for (int i = 0; i < 20; ++i) t.grayValue[i] = static_cast<uint8_t>(i * 255 / 19);
    for (int i = 0; i < 6; ++i) t.cubeValue[i] = static_cast<uint8_t>(i * 255 / 5);
    for (int i = 0; i < 64; ++i) {
        t.grayDither[i] = static_cast<uint8_t>(kMatrix[i] * 255 / 1216);
        t.cubeDither[i] = static_cast<uint8_t>(kMatrix[i] * 255 / 320);
    }
    return t;
}

constexpr DitherTables kDither = MakeDitherTables();
static_assert(sizeof(DitherTables) == 922);

// Cube levels are at most 5 and a value never rises past the last step (its
// difference there is not positive), so the index stays within 20..235.
inline uint8_t CubeIndex(int32_t red, int32_t green, int32_t blue)
{
    return static_cast<uint8_t>(20 + red + kDither.times6[kDither.times6[blue] + green]);
}

inline int32_t MatrixRow(int32_t row) { return ((row % 8) + 8) % 8 * 8; }

// ---- Mapping display pixels to source pixels --------------------------------------

// A run of display pixels along a row: `count` source samples from column
// `col` stepping by `step`, each written `repeat` times.
struct Run {
    int32_t col, step, count, repeat;
};

int32_t ClampIndex(int64_t v, int32_t size)
{
    return static_cast<int32_t>(std::clamp<int64_t>(v, 0, size - 1));
}

int64_t CeilDiv(int64_t a, int64_t b) { return a <= 0 ? 0 : (a + b - 1) / b; }

// Display columns x0..x1 at zoom 1 (m = 1) or 1:m: column x shows source
// column left + x * m. Columns that fall off either side of the picture show
// its first or last column, so at most three runs result.
std::vector<Run> PlanStepped(int64_t left, int64_t m, int32_t x0, int32_t x1, int32_t width)
{
    std::vector<Run> runs;
    const int64_t s0 = left + x0 * m, s1 = left + x1 * m;
    const int64_t xa = std::min<int64_t>(x0 + CeilDiv(-s0, m), int64_t{x1} + 1);
    const int64_t xb = std::max<int64_t>(x1 - CeilDiv(s1 - (width - 1), m), int64_t{x0} - 1);
    if (xa > x0) runs.push_back({0, 0, static_cast<int32_t>(xa - x0), 1});
    if (xa <= xb)
        // A single sample needs no step; a longer run's step is below the width.
        runs.push_back({static_cast<int32_t>(left + xa * m), xb > xa ? static_cast<int32_t>(m) : 0,
                        static_cast<int32_t>(xb - xa + 1), 1});
    const int64_t xr = std::max<int64_t>(xb + 1, x0);
    if (xr <= x1) runs.push_back({width - 1, 0, static_cast<int32_t>(x1 - xr + 1), 1});
    return runs;
}

// Display columns x0..x1 at zoom n above 1: column x shows source column
// left + x / n, so each source pixel is one run written up to n times (the
// first and last may be cut by the rectangle).
std::vector<Run> PlanReplicated(int64_t left, int64_t n, int32_t x0, int32_t x1, int32_t width)
{
    std::vector<Run> runs;
    for (int64_t x = x0; x <= x1;) {
        const int64_t q = x / n;
        const int64_t end = std::min<int64_t>(x1, q * n + n - 1);
        const int32_t col = ClampIndex(left + q, width);
        const auto reps = static_cast<int32_t>(end - x + 1);
        if (!runs.empty() && runs.back().col == col)
            runs.back().repeat += reps;
        else
            runs.push_back({col, 0, 1, reps});
        x = end + 1;
    }
    return runs;
}

// ---- Pixel rules ------------------------------------------------------------------
//
// Each rule reads the source pixel (and the mask pixel) at a column and gives
// the display value; Put stores it. They are inlined into the row loop.

struct Rgb {
    uint8_t blue, green, red;
};

struct RgbOut {
    static void Put(uint8_t* row, int32_t x, Rgb v)
    {
        uint8_t* q = row + 3 * static_cast<ptrdiff_t>(x);
        q[0] = v.blue;
        q[1] = v.green;
        q[2] = v.red;
    }
};

struct BitCopy {
    int32_t Get(const uint8_t* s, const uint8_t*, int32_t col) const { return GetBit(s, col); }
    static void Put(uint8_t* row, int32_t x, int32_t v) { PutBit(row, x, v); }
};

struct ByteCopy {
    uint8_t Get(const uint8_t* s, const uint8_t*, int32_t col) const { return s[col]; }
    static void Put(uint8_t* row, int32_t x, uint8_t v) { row[x] = v; }
};

struct ColorThroughTables : RgbOut {
    const DisplayTables& t;
    Rgb Get(const uint8_t* s, const uint8_t*, int32_t col) const
    {
        const uint8_t* p = s + 3 * static_cast<ptrdiff_t>(col);
        return {t.blue[p[0]], t.green[p[1]], t.red[p[2]]};
    }
};

// The mask alone, as it is: a binary picture's overlay at opacity -1.
struct MaskRaw : RgbOut {
    Rgb Get(const uint8_t*, const uint8_t* m, int32_t col) const
    {
        const uint8_t p = m[col];
        return {p, p, p};
    }
};

// The mask alone, through the tables: a gray or colour picture's overlay at
// opacity -1.
struct MaskThroughTables : RgbOut {
    const DisplayTables& t;
    Rgb Get(const uint8_t*, const uint8_t* m, int32_t col) const
    {
        const uint8_t p = m[col];
        return {t.blue[p], t.green[p], t.red[p]};
    }
};

// The blend weight of one mask pixel and the overlay colour.
struct Overlay {
    int32_t opacity;  // 1..255
    Rgb color;
    uint8_t Weight(uint8_t p) const { return Mul8Table[p][opacity]; }
};

// Binary: black or white blended with the overlay colour; no tables.
struct BinaryBlend : RgbOut {
    Overlay o;
    Rgb Get(const uint8_t* s, const uint8_t* m, int32_t col) const
    {
        const uint8_t w = o.Weight(m[col]);
        const uint8_t v = GetBit(s, col) ? 255 : 0;
        return {Lerp8(v, o.color.blue, w), Lerp8(v, o.color.green, w), Lerp8(v, o.color.red, w)};
    }
};

// Gray: the tables first, then the blend.
struct GrayBlend : RgbOut {
    const DisplayTables& t;
    Overlay o;
    Rgb Get(const uint8_t* s, const uint8_t* m, int32_t col) const
    {
        const uint8_t w = o.Weight(m[col]);
        const uint8_t v = s[col];
        return {Lerp8(t.blue[v], o.color.blue, w), Lerp8(t.green[v], o.color.green, w),
                Lerp8(t.red[v], o.color.red, w)};
    }
};

// Colour: the blend first, then the tables.
struct ColorBlend : RgbOut {
    const DisplayTables& t;
    Overlay o;
    Rgb Get(const uint8_t* s, const uint8_t* m, int32_t col) const
    {
        const uint8_t w = o.Weight(m[col]);
        const uint8_t* p = s + 3 * static_cast<ptrdiff_t>(col);
        return {t.blue[Lerp8(p[0], o.color.blue, w)], t.green[Lerp8(p[1], o.color.green, w)],
                t.red[Lerp8(p[2], o.color.red, w)]};
    }
};

template <typename Rule>
void RenderRow(const Rule& rule, const uint8_t* s, const uint8_t* m, uint8_t* d, int32_t x,
               const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.repeat == 1) {
            int32_t col = run.col;
            for (int32_t i = 0; i < run.count; ++i, col += run.step)
                Rule::Put(d, x++, rule.Get(s, m, col));
        } else {
            const auto v = rule.Get(s, m, run.col);
            for (int32_t i = 0; i < run.repeat; ++i) Rule::Put(d, x++, v);
        }
    }
}

// Copies bits x0..x1 of a 1-bit row, whole bytes where it can, leaving the
// other bits of the edge bytes alone.
void CopyBits(const uint8_t* s, uint8_t* d, int32_t x0, int32_t x1)
{
    int32_t x = x0;
    for (; x <= x1 && (x & 7); ++x) PutBit(d, x, GetBit(s, x));
    const int32_t bytes = (x1 + 1 - x) / 8;
    if (bytes > 0) {
        CopyBytes(s + x / 8, d + x / 8, static_cast<size_t>(bytes));
        x += bytes * 8;
    }
    for (; x <= x1; ++x) PutBit(d, x, GetBit(s, x));
}

// Copies columns x0..x1 of one display row to another.
void CopySpan(Image& display, int32_t from, int32_t to, int32_t x0, int32_t x1)
{
    const uint8_t* s = display.rows[from];
    uint8_t* d = display.rows[to];
    switch (display.kind) {
    case kImageBinary: CopyBits(s, d, x0, x1); break;
    case kImageGray: CopyBytes(s + x0, d + x0, static_cast<size_t>(x1 - x0 + 1)); break;
    default:
        CopyBytes(s + 3 * static_cast<ptrdiff_t>(x0), d + 3 * static_cast<ptrdiff_t>(x0),
                  3 * static_cast<size_t>(x1 - x0 + 1));
        break;
    }
}

// Where a rectangle of display rows and columns comes from.
struct Mapping {
    int64_t zoom;        // n >= 1
    int64_t step;        // m >= 1 for 1:m, 1 otherwise
    int64_t sourceTop;   // the image row (from the top) at the top of the view
    int64_t viewHeight;  // display rows
    int32_t x0, x1;      // display columns
    int32_t r0, r1;      // display rows, bottom-up
    std::vector<Run> runs;
};

// The view is laid from its top edge, as the mouse maps it: the display row
// at y from the top shows the image row sourceTop + y (1:1), + y * m (1:m) or
// + y / n (n:1), counted from the top of the picture and limited to it. A
// row that repeats the one below it (zoomed in, or at the picture's edge) is
// a copy of that row's span rather than rendered again.
template <typename Rule>
void Render(const Rule& rule, const Image& image, const Image* mask, Image& display,
            const Mapping& map)
{
    int32_t lastRow = -1, lastRendered = -1;
    for (int32_t r = map.r0; r <= map.r1; ++r) {
        const int64_t y = map.viewHeight - 1 - r;
        const int64_t fromTop = map.sourceTop + (map.zoom > 1 ? y / map.zoom : y * map.step);
        const int32_t row = ClampIndex(int64_t{image.height} - 1 - fromTop, image.height);
        if (row == lastRow) {
            CopySpan(display, lastRendered, r, map.x0, map.x1);
            continue;
        }
        RenderRow(rule, image.rows[row], mask ? mask->rows[row] : nullptr, display.rows[r], map.x0,
                  map.runs);
        lastRow = row;
        lastRendered = r;
    }
}

bool UsableMask(const Image* mask, const Image& image, const ImageWindow& record)
{
    return mask && mask != &record.display && mask->kind == kImageGray &&
           mask->width == image.width && mask->height == image.height && mask->rows;
}

}  // namespace

DisplayMode CurrentDisplayMode() { return gDisplayMode; }

void SetDisplayMode(DisplayMode mode)
{
    gDisplayMode = mode == kDisplayPalette ? kDisplayPalette : kDisplayTrueColor;
}

void DisplayTablesSet(const uint8_t red[256], const uint8_t green[256], const uint8_t blue[256])
{
    if (!red || !green || !blue) return;
    DisplayTables& t = CurrentDisplayTables();
    std::memcpy(t.red, red, 256);
    std::memcpy(t.green, green, 256);
    std::memcpy(t.blue, blue, 256);
    ScreenPalette();  // the gray ramp depends on the tables
}

void DisplayTablesGet(uint8_t red[256], uint8_t green[256], uint8_t blue[256])
{
    if (!red || !green || !blue) return;
    const DisplayTables& t = CurrentDisplayTables();
    std::memcpy(red, t.red, 256);
    std::memcpy(green, t.green, 256);
    std::memcpy(blue, t.blue, 256);
}

uint32_t DisplayColor(int32_t red, int32_t green, int32_t blue)
{
    const DisplayTables& t = CurrentDisplayTables();
    return uint32_t{t.red[Clamp8(red)]} << 16 | uint32_t{t.green[Clamp8(green)]} << 8 |
           t.blue[Clamp8(blue)];
}

int32_t DisplayUpdate(const Image& image, ImageWindow& record, const Image* mask, int32_t x0,
                      int32_t y0, int32_t x1, int32_t y1, bool wait)
{
    if (image.kind < kImageBinary || image.kind > kImageColor || image.width <= 0 ||
        image.height <= 0 || !image.rows || &image == &record.display)
        return kOk;
    const int32_t viewWidth = record.viewWidth, viewHeight = record.viewHeight;
    if (viewWidth <= 0 || viewHeight <= 0) return kOk;

    const bool overlay = record.maskOpacity != 0 && UsableMask(mask, image, record);
    const int32_t kind = overlay ? kImageColor : image.kind;
    Image& display = record.display;

    // A part can only be refreshed in a display copy of the right shape;
    // anything else rebuilds the whole view.
    bool whole = x0 <= 0 && y0 <= 0 && x1 >= viewWidth - 1 && y1 >= viewHeight - 1;
    if (!whole && (display.kind != kind || display.width != viewWidth ||
                   display.height != viewHeight || !display.rows))
        whole = true;
    if (whole) {
        x0 = y0 = 0;
        x1 = viewWidth - 1;
        y1 = viewHeight - 1;
    } else {
        x0 = std::max(x0, 0);
        y0 = std::max(y0, 0);
        x1 = std::min(x1, viewWidth - 1);
        y1 = std::min(y1, viewHeight - 1);
        if (x0 > x1 || y0 > y1) return kOk;
    }

    if (wait) SetWaitCursor();
    int32_t result = kOk;
    if (whole) result = ImageAlloc(display, kind, viewWidth, viewHeight, 100.0);
    if (result == kOk && display.rows) {
        // Zoom 0 and -1 never occur; treat them as actual size.
        const int64_t zoom = record.zoom == 0 || record.zoom == -1 ? 1 : record.zoom;
        Mapping map;
        map.zoom = zoom > 1 ? zoom : 1;
        map.step = zoom < 0 ? -zoom : 1;
        map.sourceTop = record.sourceTop;
        map.viewHeight = viewHeight;
        map.x0 = x0;
        map.x1 = x1;
        map.r0 = viewHeight - 1 - y1;
        map.r1 = viewHeight - 1 - y0;
        map.runs = map.zoom > 1 ? PlanReplicated(record.sourceLeft, map.zoom, x0, x1, image.width)
                                : PlanStepped(record.sourceLeft, map.step, x0, x1, image.width);

        const DisplayTables& t = CurrentDisplayTables();
        const Image* m = overlay ? mask : nullptr;
        const bool alone = record.maskOpacity < 0;
        const Overlay o{std::min(record.maskOpacity, 255),
                        {static_cast<uint8_t>(Clamp8(record.overlayBlue)),
                         static_cast<uint8_t>(Clamp8(record.overlayGreen)),
                         static_cast<uint8_t>(Clamp8(record.overlayRed))}};
        switch (image.kind) {
        case kImageBinary:
            if (!overlay)
                Render(BitCopy{}, image, m, display, map);
            else if (alone)
                Render(MaskRaw{}, image, m, display, map);
            else
                Render(BinaryBlend{{}, o}, image, m, display, map);
            break;
        case kImageGray:
            if (!overlay)
                Render(ByteCopy{}, image, m, display, map);
            else if (alone)
                Render(MaskThroughTables{{}, t}, image, m, display, map);
            else
                Render(GrayBlend{{}, t, o}, image, m, display, map);
            break;
        default:
            if (!overlay)
                Render(ColorThroughTables{{}, t}, image, m, display, map);
            else if (alone)
                Render(MaskThroughTables{{}, t}, image, m, display, map);
            else
                Render(ColorBlend{{}, t, o}, image, m, display, map);
            break;
        }
    }
    if (wait) SetArrowCursor();
    return result;
}

int32_t DisplayUpdateAll(ImageWindow& record, const Image* mask)
{
    return DisplayUpdate(record.image, record, mask, 0, 0, record.viewWidth - 1,
                         record.viewHeight - 1, true);
}

const std::vector<uint32_t>& ScreenPalette()
{
    static std::vector<uint32_t> palette = [] {
        std::vector<uint32_t> p(236);
        for (uint32_t b = 0; b < 6; ++b)
            for (uint32_t g = 0; g < 6; ++g)
                for (uint32_t r = 0; r < 6; ++r)
                    p[20 + r + 6 * g + 36 * b] =
                        (r * 255 / 5) << 16 | (g * 255 / 5) << 8 | b * 255 / 5;
        return p;
    }();
    // The ramp follows the tables in force; the cube does not, because colour
    // display copies have been through them already.
    const DisplayTables& t = CurrentDisplayTables();
    for (int i = 0; i < 20; ++i) {
        const int v = i * 255 / 19;
        palette[i] = uint32_t{t.red[v]} << 16 | uint32_t{t.green[v]} << 8 | t.blue[v];
    }
    return palette;
}

void DitherGrayRow(const uint8_t* pixels, int32_t width, int32_t row, uint8_t* indices)
{
    if (!pixels || !indices) return;
    const uint8_t* d = kDither.grayDither + MatrixRow(row);
    for (int32_t x = 0; x < width; ++x) {
        const uint8_t v = pixels[x];
        uint8_t level = kDither.grayLevel[v];
        if (v - kDither.grayValue[level] > d[x & 7]) ++level;
        indices[x] = level;
    }
}

void DitherColorRow(const uint8_t* pixels, int32_t width, int32_t row, uint8_t* indices)
{
    if (!pixels || !indices) return;
    const uint8_t* d = kDither.cubeDither + MatrixRow(row);
    const uint8_t* p = pixels;
    for (int32_t x = 0; x < width; ++x, p += 3) {
        const int32_t threshold = d[x & 7];
        int32_t level[3];  // blue, green, red
        for (int c = 0; c < 3; ++c) {
            level[c] = kDither.cubeLevel[p[c]];
            if (p[c] - kDither.cubeValue[level[c]] > threshold) ++level[c];
        }
        indices[x] = CubeIndex(level[2], level[1], level[0]);
    }
}

bool DitherFillCell(uint32_t rgb, uint8_t cell[64])
{
    rgb &= 0xFFFFFF;
    if (rgb == 0x000000 || rgb == 0x808080 || rgb == 0xC0C0C0 || rgb == 0xFFFFFF || !cell)
        return false;
    const int32_t c[3] = {static_cast<int32_t>(rgb >> 16), static_cast<int32_t>((rgb >> 8) & 0xFF),
                          static_cast<int32_t>(rgb & 0xFF)};
    for (int i = 0; i < 64; ++i) {
        int32_t level[3];  // red, green, blue
        for (int k = 0; k < 3; ++k) {
            level[k] = kDither.cubeLevel[c[k]];
            if (kDither.cubeDither[i] < c[k] - kDither.cubeValue[level[k]]) ++level[k];
        }
        cell[i] = CubeIndex(level[0], level[1], level[2]);
    }
    return true;
}

std::vector<HistogramLine> HistogramLines(Image& histogram, int32_t clientWidth,
                                          int32_t clientHeight)
{
    std::vector<HistogramLine> lines;
    if (histogram.kind != kImageHistogram || !histogram.rows || histogram.stride < 1028 ||
        !histogram.rows[0])
        return lines;
    uint8_t* row = histogram.rows[0];
    uint32_t peak = 0;
    std::memcpy(&peak, row, 4);
    if (peak == 0) {
        peak = 1;
        std::memcpy(row, &peak, 4);
    }
    const int64_t w = int64_t{clientWidth} - 8, h = int64_t{clientHeight} - 8;
    if (w < 1 || h < 1) return lines;
    lines.reserve(256);
    for (int64_t i = 0; i < 256; ++i) {
        uint32_t count = 0;
        std::memcpy(&count, row + 4 + 4 * i, 4);
        // A bin above the recorded peak is drawn to the top, not beyond it.
        const int64_t c = std::min(count, peak);
        lines.push_back({static_cast<int32_t>((w - 1) * i / 255 + 4), static_cast<int32_t>(h + 3),
                         static_cast<int32_t>(h - (h - 1) * c / peak + 3)});
    }
    return lines;
}

}  // namespace lv
