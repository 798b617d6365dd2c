// The arithmetic of Resize's panel: a table of the input's numbers (Current)
// and the result's (New), in the units the user picks, with a Preserve
// choice that says which quantity stays fixed while the others follow an
// entry. Everything the panel shows and every rule of its boxes is here; the
// window only shows the texts and forwards what is typed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "geometry/crop.h"  // LengthUnits: "pixels", "in", "mm", "cm"

namespace lv {

// The Preserve popup.
enum ResizePreserve : int32_t {
    kPreserveProportions = 0,  // "Proportions"
    kPreserveFileSize = 1,     // "File Size and Proportions"
    kPreserveImageSize = 2,    // "Image Size and Proportions"
    kPreserveNone = 3,         // "None"
};

// The units of the resolution; the value itself is always held in dots per
// inch.
enum ResolutionUnits : int32_t {
    kResolutionDpi = 0,   // "dpi"
    kResolutionDpmm = 1,  // "dpmm"
    kResolutionDpcm = 2,  // "dpcm"
};

// The largest side and resolution the panel gives the result: the range of
// the module's record.
inline constexpr int32_t kResizeMaxSide = 999999;
inline constexpr double kResizeMaxResolution = 999999.0;

struct ResizePanel {
    int32_t kind = 0;  // the input's, for the file sizes
    int32_t currentWidth = 0, currentHeight = 0;
    double currentResolution = 0.0;  // dots per inch
    int32_t targetWidth = 0, targetHeight = 0;
    double targetResolution = 0.0;
    int32_t preserve = kPreserveProportions;
    int32_t sizeUnits = kUnitsPixels;
    int32_t resolutionUnits = kResolutionDpi;
    int32_t method = 0;  // 0 smooth, 1 nearest neighbour
};

// What must be shown again after a change.
enum ResizeShow : uint32_t {
    kResizeShowWidth = 1,         // the New column's Width box
    kResizeShowHeight = 2,        // its Height box
    kResizeShowResolution = 4,    // its Resolution box
    kResizeShowFileSize = 8,      // its File Size
    kResizeShowProportions = 16,  // its Proportions
    kResizeShowCurrent = 32,      // the whole Current column
    kResizeShowAll = 63,
};

struct ResizeEntry {
    uint32_t show = 0;  // ResizeShow bits
    bool beep = false;  // the entry was refused or limited
};

// Takes an input of `kind`, `width` by `height` at `resolution` dots per
// inch into both columns; the popups keep their choices. An input without a
// resolution (not above 0) is taken at `fallbackResolution`, the default of
// the preferences.
void ResizePanelLoad(ResizePanel& panel, int32_t kind, int32_t width, int32_t height,
                     double resolution, double fallbackResolution);

// A width or height in `units`: "%d" pixels, or "%2f" of the length in
// inches, millimetres or centimetres at `resolution` (25.40005 mm and
// 2.540005 cm to the inch).
std::string ResizeSizeText(int32_t pixels, int32_t units, double resolution);
// A resolution given in dots per inch: "%2f" dpi, "%1f" dpmm, "%2f" dpcm.
std::string ResizeResolutionText(double dpi, int32_t units);
// The memory of a picture: height times the bytes of a row ((width + 7) / 8
// binary, width gray, 3 width colour) in megabytes of 1000000 bytes, "%3fMB",
// or "***" from 10000.0 up.
std::string ResizeFileSizeText(int32_t kind, int32_t width, int32_t height);
// "%2f:1.00" of width / height when the width is at most the height, else
// "1.00:%2f" of height / width.
std::string ResizeProportionsText(int32_t width, int32_t height);

// What typing in the Width box does. The text is read as a number in the
// size units and rounded to pixels at the New resolution. Text that isn't a
// number, or a negative one, beeps and the box shows the New width again; 0
// becomes 1 without a word; above kResizeMaxSide beeps and takes the limit.
// Unless nothing is preserved the height follows in the input's proportions
// (integer arithmetic, at least 1).
ResizeEntry ResizeWidthEntry(ResizePanel& panel, std::string_view text);
// The same for the Height box, the width following.
ResizeEntry ResizeHeightEntry(ResizePanel& panel, std::string_view text);
// What typing in the Resolution box does: the value, in the resolution
// units, must be above 0, else a beep and the box shows the New resolution
// again. Then by Preserve: Proportions and Image Size scale the input's size
// to the new resolution (the printed size stays); File Size brings back the
// input's pixels; None changes nothing else in pixel units and keeps the
// printed size in the others.
ResizeEntry ResizeResolutionEntry(ResizePanel& panel, std::string_view text);
// A choice in the Preserve popup: the New column returns to the input's.
ResizeEntry ResizePreserveChosen(ResizePanel& panel, int32_t preserve);
// Whether the Width and Height boxes take entries under `preserve`: only
// with Proportions and None, since otherwise the resolution alone is free.
bool ResizeSizeBoxesEnabled(int32_t preserve);
// A choice in the units popups.
ResizeEntry ResizeSizeUnitsChosen(ResizePanel& panel, int32_t units);
ResizeEntry ResizeResolutionUnitsChosen(ResizePanel& panel, int32_t units);

}  // namespace lv
