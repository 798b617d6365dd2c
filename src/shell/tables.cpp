#include "shell/tables.h"

#include <cmath>

#include "image/pixel.h"

namespace lv {

uint8_t Mul8Table[256][256];
double monitor_gamma = kDefaultDisplayGamma;
uint16_t Level12[256];
uint8_t Level8[4097];
uint16_t GammaToLinear[256];
uint8_t LinearToGamma[4097];
int16_t CubeTable3547[511];
int16_t CubeTable4730[511];

void SetMonitorGamma(double gamma)
{
    monitor_gamma = gamma;
    for (int i = 0; i < 256; ++i)
        GammaToLinear[i] =
            static_cast<uint16_t>(RoundToInt(std::pow(i / 255.0, 1.0 / gamma) * 4096.0));
    for (int i = 0; i <= 4096; ++i)
        LinearToGamma[i] = static_cast<uint8_t>(RoundToInt(std::pow(i / 4096.0, gamma) * 255.0));
}

void InitEngineTables()
{
    for (int a = 0; a < 256; ++a)
        for (int b = 0; b < 256; ++b) Mul8Table[a][b] = static_cast<uint8_t>((a * b + 127) / 255);
    for (int v = -255; v <= 255; ++v) {
        CubeTable3547[v + 255] = static_cast<int16_t>((v * 3547 + 2048) >> 12);
        CubeTable4730[v + 255] = static_cast<int16_t>((v * 4730 + 2048) >> 12);
    }
    for (int i = 0; i < 256; ++i) Level12[i] = static_cast<uint16_t>(i * 4096 / 255);
    for (int i = 0; i <= 4096; ++i) Level8[i] = static_cast<uint8_t>(i * 255 >> 12);
    SetMonitorGamma(kDefaultDisplayGamma);
}

}  // namespace lv
