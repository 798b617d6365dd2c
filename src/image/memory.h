// Allocation that reports failure instead of throwing, for the engine's
// out-of-memory path (code 1).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace lv {

// An uninitialised byte block, or null when memory is short.
inline std::unique_ptr<uint8_t[]> AllocBytes(size_t count)
{
    return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[count > 0 ? count : 1]);
}

inline int64_t ImageRowBytes64(int64_t n) { return (n + 3) & ~int64_t{3}; }

}  // namespace lv
