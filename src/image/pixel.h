// Small arithmetic shared by all pixel code: the one rounding, the one 8-bit
// blend, clamping, bit access for 1-bit rows and the byte copy.
#pragma once

#include <cstdint>
#include <cstring>

namespace lv {

// The program's one rounding: halves go away from zero. Every other
// conversion from floating point truncates. Values beyond the 32-bit range
// saturate and NaN gives 0, so no caller can reach undefined behaviour.
inline int32_t RoundToInt(double x)
{
    double r = x >= 0.0 ? x + 0.5 : x - 0.5;
    if (!(r == r)) return 0;
    if (r >= 2147483647.0) return INT32_MAX;
    if (r <= -2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(r);
}

inline int32_t Clamp8(int32_t v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

// Entry [a][b] is (a * b + 127) / 255. Built once by InitEngineTables.
extern uint8_t Mul8Table[256][256];

// Blends a toward b by t in 0..255.
inline uint8_t Lerp8(uint8_t a, uint8_t b, uint8_t t)
{
    return b < a ? static_cast<uint8_t>(a - Mul8Table[a - b][t])
                 : static_cast<uint8_t>(a + Mul8Table[b - a][t]);
}

// Bits of a 1-bit row: the most significant bit of each byte is the leftmost
// pixel.
inline int32_t GetBit(const uint8_t* row, int32_t x) { return (row[x >> 3] >> (7 - (x & 7))) & 1; }
inline void SetBit(uint8_t* row, int32_t x)
{
    row[x >> 3] |= static_cast<uint8_t>(0x80 >> (x & 7));
}
inline void ClearBit(uint8_t* row, int32_t x)
{
    row[x >> 3] &= static_cast<uint8_t>(~(0x80 >> (x & 7)));
}
inline void FlipBit(uint8_t* row, int32_t x)
{
    row[x >> 3] ^= static_cast<uint8_t>(0x80 >> (x & 7));
}

// Sets or clears bit x as `bit` says.
inline void PutBit(uint8_t* row, int32_t x, int32_t bit)
{
    if (bit)
        SetBit(row, x);
    else
        ClearBit(row, x);
}

// The byte copy of the whole program, source first; overlapping ranges are
// safe.
inline void CopyBytes(const void* source, void* destination, size_t count)
{
    if (count) std::memmove(destination, source, count);
}

// The shared luminance of a red, green, blue triple.
inline uint8_t luminance(int32_t r, int32_t g, int32_t b)
{
    return static_cast<uint8_t>((306 * r + 601 * g + 117 * b) >> 10);
}

}  // namespace lv
