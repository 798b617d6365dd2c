#include "transform/amount.h"

#include "image/pixel.h"
#include "shell/text.h"

namespace lv {

int32_t amount_level(int32_t value) { return (value * 255 + 512) / 1024; }

std::string AmountText(const AmountBlock& block)
{
    // The two scales round differently on purpose: 513 on the bipolar scale
    // reads 0%.
    auto percent = [&](int32_t v) {
        return block.bipolar ? (v - 512) * 200 / 1024 : (v * 100 + 512) / 1024;
    };
    if (block.amount2 == -1) return FormatText("%s%d\\%", block.label, percent(block.amount));
    return FormatText("%s%d\\% .. %d\\%", block.label, percent(block.amount),
                      percent(block.amount2));
}

void AmountSetMask(AmountBlock& block, const Image* mask, WindowHandle window)
{
    block.mask = mask;
    block.maskWindow = window;
    if (block.bipolar) {
        block.amount = block.amount2 = 512;
    } else {
        block.amount = 0;
        block.amount2 = 1024;
    }
}

void AmountClearMask(AmountBlock& block)
{
    block.mask = nullptr;
    block.maskWindow = nullptr;
    block.amount = 1024;
    block.amount2 = -1;
}

AmountPass AmountPassFor(const AmountBlock& block)
{
    AmountPass pass;
    pass.level = amount_level(block.amount);
    pass.level2 = block.amount2 == -1 || !block.mask ? -1 : amount_level(block.amount2);
    return pass;
}

void AmountBlendRow(const AmountPass& pass, const uint8_t* input, uint8_t* output,
                    const uint8_t* maskRow, int32_t pixels, int32_t channels)
{
    if (!pass.Blends()) return;
    const auto level = static_cast<uint8_t>(pass.level);
    const auto level2 = static_cast<uint8_t>(pass.level2);
    for (int32_t x = 0; x < pixels; ++x) {
        const uint8_t k = pass.UsesMask() && maskRow ? Lerp8(level, level2, maskRow[x]) : level;
        for (int32_t c = 0; c < channels; ++c) {
            const int32_t i = x * channels + c;
            output[i] = Lerp8(input[i], output[i], k);
        }
    }
}

}  // namespace lv
