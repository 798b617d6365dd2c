#include "geometry/crop.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "geometry/hit_tests.h"
#include "image/display.h"
#include "image/lineio.h"
#include "image/pixel.h"
#include "image/threads.h"
#include "shell/errors.h"
#include "transform/point_worker.h"

namespace lv {

namespace {

constexpr double kMillimetresPerInch = 25.40005;
constexpr double kCentimetresPerInch = 2.540005;

// Below this many pixels a second thread costs more than it saves.
constexpr int64_t kParallelPixels = 256 * 1024;

// The first pair of each entry after Square, the smaller side first.
struct Pair {
    double a, b;
};
constexpr Pair kFirstPairs[kProportionsCount - 3] = {
    {1, 2},    {1, 3}, {2, 3}, {2, 5},    {2.5, 3.5}, {3, 4},   {3, 5},   {3.5, 5},
    {3.5, 10}, {4, 5}, {5, 6}, {8.5, 11}, {9, 13},    {11, 14}, {11, 17}, {13, 18},
};

// Where a 1-bit row handed out by the line output starts: in the picture
// itself it begins at the byte of its first column, so the pixels start at
// that column's bit; a replicating output's own row starts at bit 0.
int32_t BitOffset(const LineOutput& out) { return out.row ? 0 : out.x0 & 7; }

}  // namespace

int32_t LengthToPixels(double value, int32_t units, double resolution)
{
    switch (units) {
    case kUnitsInches: return RoundToInt(value * resolution);
    case kUnitsMillimetres: return RoundToInt(value * resolution / kMillimetresPerInch);
    case kUnitsCentimetres: return RoundToInt(value * resolution / kCentimetresPerInch);
    default: return RoundToInt(value);
    }
}

double PixelsToLength(int32_t pixels, int32_t units, double resolution)
{
    if (units == kUnitsPixels) return pixels;
    if (!(resolution > 0.0)) return 0.0;
    switch (units) {
    case kUnitsInches: return pixels / resolution;
    case kUnitsMillimetres: return pixels * kMillimetresPerInch / resolution;
    case kUnitsCentimetres: return pixels * kCentimetresPerInch / resolution;
    default: return pixels;
    }
}

int32_t crop_handle_at(const CropBox& box, int32_t px, int32_t py)
{
    const int32_t xs[4] = {box.x1, box.x2, box.x2, box.x1};
    const int32_t ys[4] = {box.y1, box.y1, box.y2, box.y2};
    for (int32_t corner = 0; corner < 4; ++corner) {
        if (in_box(px, py, xs[corner] - 2, ys[corner] - 2, xs[corner] + 2, ys[corner] + 2))
            return corner;
    }
    const int64_t cx = (int64_t{box.x1} + box.x2) / 2;
    const int64_t cy = (int64_t{box.y1} + box.y2) / 2;
    if (in_box(px, py, static_cast<double>(cx - 4), static_cast<double>(cy - 4),
               static_cast<double>(cx + 4), static_cast<double>(cy + 4)))
        return kCropCenter;
    return kCropHandleNone;
}

double crop_ratio(int32_t proportions, int32_t orientation, double customWidth, double customHeight)
{
    if (proportions == kProportionsCustom)
        return customWidth > 0.0 && customHeight > 0.0 ? customWidth / customHeight : 0.0;
    if (proportions == kProportionsSquare) return 1.0;
    if (proportions <= kProportionsSquare || proportions >= kProportionsCount) return 0.0;
    const Pair& pair = kFirstPairs[proportions - 3];
    return orientation == kLandscape ? pair.b / pair.a : pair.a / pair.b;
}

CropBox crop_constrain(const CropBox& box, int32_t handle, double ratio)
{
    if (!(ratio > 0.0) || !std::isfinite(ratio) || handle < kCropCorner11 || handle > kCropCorner12)
        return box;
    // The dragged corner's coordinates are x2 for corners 21 and 22, y2 for
    // 22 and 12; the others stay.
    const bool dragX2 = handle == kCropCorner21 || handle == kCropCorner22;
    const bool dragY2 = handle == kCropCorner22 || handle == kCropCorner12;
    const int32_t fixedX = dragX2 ? box.x1 : box.x2, fixedY = dragY2 ? box.y1 : box.y2;
    const int32_t dragX = dragX2 ? box.x2 : box.x1, dragY = dragY2 ? box.y2 : box.y1;
    const double dx = static_cast<double>(dragX) - fixedX;
    const double dy = static_cast<double>(dragY) - fixedY;
    const double d = std::sqrt(dx * dx + dy * dy);
    const int32_t width = std::max(RoundToInt(ratio * d / std::sqrt(ratio * ratio + 1.0)), 1);
    const int32_t height = std::max(RoundToInt(width / ratio), 1);
    const int64_t newX = dx < 0 ? int64_t{fixedX} - width : int64_t{fixedX} + width;
    const int64_t newY = dy < 0 ? int64_t{fixedY} - height : int64_t{fixedY} + height;
    auto saturate = [](int64_t v) {
        return static_cast<int32_t>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX));
    };
    CropBox out = box;
    (dragX2 ? out.x2 : out.x1) = saturate(newX);
    (dragY2 ? out.y2 : out.y1) = saturate(newY);
    return out;
}

CropBox crop_box_of(const CropParams& params, int32_t width, int32_t height)
{
    auto column = [&](int32_t x) { return x == -1 ? width - 1 : x; };
    // Rows from the top become rows from the bottom.
    auto row = [&](int32_t y) {
        const int32_t fromTop = y == -1 ? height - 1 : y;
        return static_cast<int32_t>(
            std::clamp<int64_t>(int64_t{height} - 1 - fromTop, INT32_MIN, INT32_MAX));
    };
    CropBox box{column(params.x1), row(params.y1), column(params.x2), row(params.y2)};
    const double ratio =
        crop_ratio(params.proportions, params.orientation, params.customWidth, params.customHeight);
    return crop_constrain(box, kCropCorner22, ratio);
}

bool crop_clip(const CropBox& box, int32_t width, int32_t height, CropBox& inside)
{
    const int32_t left = std::max(std::min(box.x1, box.x2), 0);
    const int32_t right = std::min(std::max(box.x1, box.x2), width - 1);
    const int32_t bottom = std::max(std::min(box.y1, box.y2), 0);
    const int32_t top = std::min(std::max(box.y1, box.y2), height - 1);
    if (left > right || bottom > top) return false;
    inside = {left, bottom, right, top};
    return true;
}

CropMargins crop_margins(const CropBox& box, int32_t width, int32_t height)
{
    CropMargins m;
    m.left = std::min(box.x1, box.x2);
    m.right = width - 1 - std::max(box.x1, box.x2);
    m.bottom = std::min(box.y1, box.y2);
    m.top = height - 1 - std::max(box.y1, box.y2);
    return m;
}

namespace {

// One row of the crop: `pixels` bytes of gray, triples of colour, or for a
// 1-bit picture the bytes of the reader (below 128 a clear bit) written as
// bits from `bitOffset`.
void CropRow(const uint8_t* in, int32_t kind, int32_t pixels, uint8_t* out, int32_t bitOffset)
{
    if (kind == kImageBinary) {
        for (int32_t i = 0; i < pixels; ++i) PutBit(out, bitOffset + i, in[i] >= 128);
    } else {
        CopyBytes(in, out, static_cast<size_t>(pixels) * (kind == kImageColor ? 3 : 1));
    }
}

}  // namespace

int32_t crop_run(const TransformArgs& args, const CropBox& box)
{
    const Image& source = *args.source;
    if (source.kind < kImageBinary || source.kind > kImageColor) return kErrImageType;
    // The whole picture: nothing to cut.
    if (box.x1 == 0 && box.y1 == 0 && box.x2 == source.width - 1 && box.y2 == source.height - 1) {
        return RunShortWay(args);
    }
    const bool whole = WholeOutput(args);

    // A full result of a large picture: each output row is one source row,
    // so the rows can go to all the cores.
    if (args.toImage && whole && args.zoom == 1 && args.sourceX == 0 && args.sourceY == 0 &&
        args.width == box.x2 - box.x1 + 1 && args.height == box.y2 - box.y1 + 1 &&
        int64_t{args.width} * args.height >= kParallelPixels && ThreadCount() > 1) {
        if (int32_t code = ImageAlloc(*args.destination, source.kind, args.outWidth, args.outHeight,
                                      source.resolution))
            return code;
        const int32_t bpp = source.kind == kImageColor ? 3 : 1;
        WorkerBusy busy;
        busy.Open(args, "Crop");
        const int32_t result = ParallelRows(
            args.height,
            [&](int32_t y) {
                const uint8_t* in = source.rows[box.y1 + y];
                uint8_t* out = args.destination->rows[y];
                if (source.kind == kImageBinary) {
                    for (int32_t i = 0; i < args.width; ++i) PutBit(out, i, GetBit(in, box.x1 + i));
                } else {
                    CopyBytes(in + static_cast<size_t>(box.x1) * bpp, out,
                              static_cast<size_t>(args.width) * bpp);
                }
                ClearRowPadding(out, source.kind, args.width, args.destination->stride);
            },
            [&](int32_t done) { return busy.Step(done); });
        busy.Close();
        return result;
    }

    LineInput in;
    LineOutput out;
    LineInputReset(in);
    LineOutputReset(out);
    int32_t result = LineInputOpen(source, args.sourceX + box.x1, args.sourceY + box.y1, args.zoom,
                                   args.width, in);
    if (!result) result = WorkerOutputOpen(args, source.kind, out);
    if (!result) {
        WorkerBusy busy;
        busy.Open(args, "Crop");
        const int32_t bitOffset = BitOffset(out);
        for (int32_t line = 0; line < args.height && !result; ++line) {
            const uint8_t* row = LineInputNext(in);
            CropRow(row, source.kind, args.width, LineOutputRow(out), bitOffset);
            LineOutputFlush(out);
            result = busy.Step(line);
        }
        busy.Close();
    }
    LineInputClose(in);
    LineOutputClose(out);
    return result;
}

}  // namespace lv
