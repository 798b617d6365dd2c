// Whole-row conversions that the codecs and workers share, each with a plain
// loop and, where the processor allows, a vector path that gives the same
// bytes. The plain forms are public so that the tests can hold the vector
// paths to them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace lv {

// Three-byte pixels with their first and third bytes exchanged: red, green,
// blue to the record's blue, green, red, and back. `in` and `out` do not
// overlap.
void SwapRedBlue(const uint8_t* in, uint8_t* out, size_t pixels);
void SwapRedBluePlain(const uint8_t* in, uint8_t* out, size_t pixels);

}  // namespace lv
