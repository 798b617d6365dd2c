// The program's one random generator: the multiplicative congruential
// generator with multiplier 41358 and modulus 2147483647, computed by
// Schrage's decomposition so that no product leaves 32 bits. The shared
// state starts at 1234567 when the program starts and is never reseeded.
//
// A job that must give the same pixels for the same settings, whatever the
// thread count or the part of the picture it computes, runs the same
// generator on a state of its own: `random_next(state)`, with the jumps
// below to reach any place in its sequence at once.
#pragma once

#include <cstdint>

namespace lv {

inline constexpr int32_t kRandomModulus = 2147483647;
inline constexpr int32_t kRandomMultiplier = 41358;

// The next number of the shared sequence, 1 to 2147483646.
int32_t random_next();
// |random_next()| / 2147483648.0: above 0 and below 1.
double random_unit();

// The same two on a caller's state (1 to 2147483646; 0 would stay 0).
int32_t random_next(int32_t& state);
double random_unit(int32_t& state);

// A state for `seed` (any value) and a stream number: two streams of one
// seed start far apart in the sequence, and a seed of its own gives each a
// different place. Never 0.
int32_t RandomStreamState(int32_t seed, int64_t stream);

// The multiplier that moves a state `steps` numbers on: 41358^steps modulo
// the modulus. RandomJump(state, RandomJumpMultiplier(n)) is the state after
// n calls of random_next(state).
int32_t RandomJumpMultiplier(int64_t steps);
inline int32_t RandomJump(int32_t state, int32_t multiplier)
{
    return static_cast<int32_t>(int64_t{state} * multiplier % kRandomModulus);
}

}  // namespace lv
