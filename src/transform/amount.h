// The Amount: how strongly a transformation's result replaces its input,
// over the whole picture or varied by a gray mask. This is the engine half:
// the block a module shares with its Amount control, the mapping to 8-bit
// levels, the control's text, and the blend pass every worker calls.
#pragma once

#include <cstdint>
#include <string>

#include "image/image.h"
#include "image/window.h"

namespace lv {

struct AmountBlock {
    const Image* mask = nullptr;  // borrowed from the mask's window, kept alive by its lock
    int32_t amount = 1024;        // 0..1024; with a mask, the strength where it is black
    int32_t amount2 = -1;         // 0..1024 where the mask is white; -1 when no mask
    int32_t bipolar = 0;          // non-zero: the scale reads -100% to +100%
    std::string label = "Amount: ";
    int32_t reserved = 0;
    WindowHandle maskWindow = nullptr;
};

// (value * 255 + 512) / 1024: the control's scale to an 8-bit level.
int32_t amount_level(int32_t value);

// The control's text: "Amount: 75%", or "Amount: 0% .. 100%" with a mask.
std::string AmountText(const AmountBlock& block);

// A mask is chosen: with an ordinary scale the effect follows the mask (0 and
// 1024); with a bipolar one both markers sit at 512.
void AmountSetMask(AmountBlock& block, const Image* mask, WindowHandle window);
// "No Mask": one marker at 1024.
void AmountClearMask(AmountBlock& block);

// What a worker works out once, before its pixel loop.
struct AmountPass {
    int32_t level = 255;
    int32_t level2 = -1;
    // True when rows need blending at all: below full strength, or a mask
    // whose markers are not both at full strength.
    bool Blends() const { return !(level == 255 && (level2 == -1 || level2 == 255)); }
    bool UsesMask() const { return level2 != -1; }
};
AmountPass AmountPassFor(const AmountBlock& block);

// Blends one row: each channel of `output` (the worker's plain result)
// becomes Lerp8(input, output, k), k being the level, or with a mask
// Lerp8(level, level2, mask pixel). `channels` is 1 or 3; `maskRow` is the
// mask's row read at the same positions, or null without a mask.
void AmountBlendRow(const AmountPass& pass, const uint8_t* input, uint8_t* output,
                    const uint8_t* maskRow, int32_t pixels, int32_t channels);

}  // namespace lv
