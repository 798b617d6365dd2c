#include "image/row_ops.h"

#if defined(__x86_64__)
#include <tmmintrin.h>
#endif

namespace lv {

void SwapRedBluePlain(const uint8_t* in, uint8_t* out, size_t pixels)
{
    for (size_t x = 0; x < pixels; ++x, in += 3, out += 3) {
        const uint8_t first = in[0], second = in[1], third = in[2];
        out[0] = third;
        out[1] = second;
        out[2] = first;
    }
}

#if defined(__x86_64__)
namespace {

__attribute__((target("ssse3"))) void SwapRedBlueSsse3(const uint8_t* in, uint8_t* out,
                                                        size_t pixels)
{
    // Five whole pixels of each 16 bytes are exchanged; the sixteenth byte
    // belongs to the next pixel and is written again by the next step (the
    // loop stops while at least one pixel is left for the plain tail).
    const __m128i order = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
    size_t x = 0;
    for (; x + 6 <= pixels; x += 5) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x * 3));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x * 3), _mm_shuffle_epi8(v, order));
    }
    SwapRedBluePlain(in + x * 3, out + x * 3, pixels - x);
}

}  // namespace
#endif

void SwapRedBlue(const uint8_t* in, uint8_t* out, size_t pixels)
{
#if defined(__x86_64__)
    static const bool ssse3 = __builtin_cpu_supports("ssse3");
    if (ssse3) return SwapRedBlueSsse3(in, out, pixels);
#endif
    SwapRedBluePlain(in, out, pixels);
}

}  // namespace lv
