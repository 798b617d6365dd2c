// Tables that pixel code would otherwise recompute, built once by
// InitEngineTables before anything else runs: the editor, the command-line
// tool, the benchmarks and the tests all make that one call.
#pragma once

#include <cstdint>

namespace lv {

// The default display gamma, 1 / 0.45, until a calibration replaces it.
inline constexpr double kDefaultDisplayGamma = 2.2222222222222223;

// The gamma that GammaToLinear and LinearToGamma were built with.
extern double monitor_gamma;

// Lifts an 8-bit level to the 12-bit scale where 4096 is 1.0: i * 4096 / 255.
extern uint16_t Level12[256];
// Brings a 12-bit value back to 8 bits: i * 255 >> 12, so entry 4096 is 255.
extern uint8_t Level8[4097];
// Byte to linear light on the 12-bit scale: RoundToInt(pow(i / 255, 1 / g) * 4096).
extern uint16_t GammaToLinear[256];
// Linear light back to a byte: RoundToInt(pow(i / 4096, g) * 255).
extern uint8_t LinearToGamma[4097];

// The colour-cube tables, 511 entries for indices -255..255, with arithmetic
// shifts on negatives: (v * 3547 + 2048) >> 12 and (v * 4730 + 2048) >> 12.
extern int16_t CubeTable3547[511];
extern int16_t CubeTable4730[511];
inline int32_t Cube3547(int32_t v) { return CubeTable3547[v + 255]; }
inline int32_t Cube4730(int32_t v) { return CubeTable4730[v + 255]; }

// Builds every table above and Mul8Table. Safe to call more than once; the
// tables are static, so it cannot fail.
void InitEngineTables();

// Rebuilds the two gamma tables for another gamma (a loaded calibration).
void SetMonitorGamma(double gamma);

}  // namespace lv
