#include "geometry/resize_panel.h"

#include <algorithm>

#include "image/image.h"
#include "image/pixel.h"
#include "shell/errors.h"
#include "shell/text.h"

namespace lv {
namespace {

constexpr double kMillimetresPerInch = 25.40005;
constexpr double kCentimetresPerInch = 2.540005;

// A side the result can have: at least 1, at most the record's limit.
int32_t Side(int64_t pixels)
{
    return static_cast<int32_t>(std::clamp<int64_t>(pixels, 1, kResizeMaxSide));
}

// `given` times num / den in integer arithmetic, at least 1.
int32_t Proportional(int32_t given, int32_t num, int32_t den)
{
    if (den <= 0) return 1;
    return Side(int64_t{given} * num / den);
}

// Dots per inch from a value in the resolution units.
double ToDpi(double value, int32_t units)
{
    switch (units) {
    case kResolutionDpmm: return value * kMillimetresPerInch;
    case kResolutionDpcm: return value * kCentimetresPerInch;
    default: return value;
    }
}

// A length in inches at the New resolution; 0 without one.
double Inches(int32_t pixels, double resolution)
{
    return resolution > 0.0 ? pixels / resolution : 0.0;
}

// Width and height share one rule; `width` says which box was typed in.
ResizeEntry SideEntry(ResizePanel& panel, std::string_view text, bool width)
{
    int32_t& side = width ? panel.targetWidth : panel.targetHeight;
    int32_t& other = width ? panel.targetHeight : panel.targetWidth;
    const uint32_t sideBox = width ? kResizeShowWidth : kResizeShowHeight;
    const uint32_t otherBox = width ? kResizeShowHeight : kResizeShowWidth;
    ResizeEntry entry;
    double value = 0.0;
    if (ParseReal(text, value) != kOk || value < 0.0) {
        entry.beep = true;
        entry.show = sideBox;
        return entry;
    }
    int32_t pixels = LengthToPixels(value, panel.sizeUnits, panel.targetResolution);
    if (pixels > kResizeMaxSide) {
        pixels = kResizeMaxSide;
        entry.beep = true;
        entry.show |= sideBox;
    }
    // 0 is taken as 1 and the box keeps what is being typed ("0.5" in
    // inches passes through "0").
    side = std::max(pixels, 1);
    if (panel.preserve != kPreserveNone) {
        other = width ? Proportional(side, panel.currentHeight, panel.currentWidth)
                      : Proportional(side, panel.currentWidth, panel.currentHeight);
        entry.show |= otherBox;
    }
    entry.show |= kResizeShowFileSize | kResizeShowProportions;
    return entry;
}

}  // namespace

void ResizePanelLoad(ResizePanel& panel, int32_t kind, int32_t width, int32_t height,
                     double resolution, double fallbackResolution)
{
    panel.kind = kind;
    panel.currentWidth = std::max(width, 0);
    panel.currentHeight = std::max(height, 0);
    panel.currentResolution = resolution > 0.0 ? resolution : fallbackResolution;
    panel.targetWidth = panel.currentWidth;
    panel.targetHeight = panel.currentHeight;
    panel.targetResolution = panel.currentResolution;
}

std::string ResizeSizeText(int32_t pixels, int32_t units, double resolution)
{
    if (units == kUnitsPixels) return FormatText("%d", pixels);
    return FormatText("%2f", PixelsToLength(pixels, units, resolution));
}

std::string ResizeResolutionText(double dpi, int32_t units)
{
    switch (units) {
    case kResolutionDpmm: return FormatText("%1f", dpi / kMillimetresPerInch);
    case kResolutionDpcm: return FormatText("%2f", dpi / kCentimetresPerInch);
    default: return FormatText("%2f", dpi);
    }
}

std::string ResizeFileSizeText(int32_t kind, int32_t width, int32_t height)
{
    const int64_t w = std::max(width, 0);
    const int64_t rowBytes = kind == kImageBinary ? (w + 7) / 8 : kind == kImageColor ? 3 * w : w;
    const double megabytes = static_cast<double>(std::max(height, 0) * rowBytes) / 1000000.0;
    if (megabytes >= 10000.0) return "***";
    return FormatText("%3fMB", megabytes);
}

std::string ResizeProportionsText(int32_t width, int32_t height)
{
    if (width <= height)
        return FormatText("%2f:1.00", height > 0 ? static_cast<double>(width) / height : 0.0);
    return FormatText("1.00:%2f", static_cast<double>(height) / width);
}

ResizeEntry ResizeWidthEntry(ResizePanel& panel, std::string_view text)
{
    return SideEntry(panel, text, true);
}

ResizeEntry ResizeHeightEntry(ResizePanel& panel, std::string_view text)
{
    return SideEntry(panel, text, false);
}

ResizeEntry ResizeResolutionEntry(ResizePanel& panel, std::string_view text)
{
    ResizeEntry entry;
    double value = 0.0;
    if (ParseReal(text, value) != kOk || !(value > 0.0)) {
        entry.beep = true;
        entry.show = kResizeShowResolution;
        return entry;
    }
    // The printed size before the change.
    const double oldWidth = Inches(panel.targetWidth, panel.targetResolution);
    const double oldHeight = Inches(panel.targetHeight, panel.targetResolution);
    double resolution = ToDpi(value, panel.resolutionUnits);
    if (resolution > kResizeMaxResolution) {
        resolution = kResizeMaxResolution;
        entry.beep = true;
        entry.show |= kResizeShowResolution;
    }
    panel.targetResolution = resolution;
    switch (panel.preserve) {
    case kPreserveFileSize:
        panel.targetWidth = panel.currentWidth;
        panel.targetHeight = panel.currentHeight;
        break;
    case kPreserveNone:
        if (panel.sizeUnits == kUnitsPixels) return entry;
        panel.targetWidth = Side(RoundToInt(oldWidth * resolution));
        panel.targetHeight = Side(RoundToInt(oldHeight * resolution));
        break;
    default:
        // The input's printed size at the new resolution.
        panel.targetWidth =
            Side(RoundToInt(panel.currentWidth * resolution / panel.currentResolution));
        panel.targetHeight =
            Side(RoundToInt(panel.currentHeight * resolution / panel.currentResolution));
        break;
    }
    entry.show |=
        kResizeShowWidth | kResizeShowHeight | kResizeShowFileSize | kResizeShowProportions;
    return entry;
}

ResizeEntry ResizePreserveChosen(ResizePanel& panel, int32_t preserve)
{
    panel.preserve = preserve;
    panel.targetWidth = panel.currentWidth;
    panel.targetHeight = panel.currentHeight;
    panel.targetResolution = panel.currentResolution;
    return {.show = kResizeShowAll};
}

bool ResizeSizeBoxesEnabled(int32_t preserve)
{
    return preserve == kPreserveProportions || preserve == kPreserveNone;
}

ResizeEntry ResizeSizeUnitsChosen(ResizePanel& panel, int32_t units)
{
    panel.sizeUnits = units;
    return {.show = kResizeShowWidth | kResizeShowHeight | kResizeShowCurrent};
}

ResizeEntry ResizeResolutionUnitsChosen(ResizePanel& panel, int32_t units)
{
    panel.resolutionUnits = units;
    return {.show = kResizeShowResolution | kResizeShowCurrent};
}

}  // namespace lv
