#include "synthesis/random.h"

#include <cstdlib>

namespace lv {

namespace {

int32_t gState = 1234567;

}  // namespace

int32_t random_next(int32_t& state)
{
    const int32_t k = state / 51924;
    int32_t next = (state - k * 51924) * kRandomMultiplier - k * 10855;
    if (next < 0) next += kRandomModulus;
    state = next;
    return next;
}

double random_unit(int32_t& state) { return std::abs(random_next(state)) / 2147483648.0; }

int32_t random_next() { return random_next(gState); }

double random_unit() { return random_unit(gState); }

int32_t RandomStreamState(int32_t seed, int64_t stream)
{
    // The seed and the stream number mixed through a 64-bit finaliser, so
    // neighbouring rows or seeds land at unrelated places in the sequence.
    uint64_t z =
        (static_cast<uint64_t>(static_cast<uint32_t>(seed)) << 32) ^ static_cast<uint64_t>(stream);
    z += 0x9E3779B97F4A7C15ull;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    z ^= z >> 31;
    return static_cast<int32_t>(z % (kRandomModulus - 1)) + 1;
}

int32_t RandomJumpMultiplier(int64_t steps)
{
    // The period is the modulus less 1.
    steps %= kRandomModulus - 1;
    if (steps < 0) steps += kRandomModulus - 1;
    int64_t result = 1, base = kRandomMultiplier;
    while (steps > 0) {
        if (steps & 1) result = result * base % kRandomModulus;
        base = base * base % kRandomModulus;
        steps >>= 1;
    }
    return static_cast<int32_t>(result);
}

}  // namespace lv
