#include "transform/controls/compass_math.h"

#include <algorithm>
#include <cmath>

#include "image/pixel.h"

namespace lv {

namespace {

double Clamp01(double x)
{
    if (!(x > 0.0)) return 0.0;  // also catches NaN
    return x < 1.0 ? x : 1.0;
}

int32_t ToByte(double unit) { return Clamp8(RoundToInt(unit * 255.0)); }

}  // namespace

double CompassAngle(double dx, double dy)
{
    if (dx == 0.0 && dy == 0.0) return 0.0;
    if (std::isnan(dx) || std::isnan(dy)) return 0.0;
    return std::atan2(dy, dx);
}

int32_t CompassValueFromAngle(double angle)
{
    // Two's complement masking wraps negative steps onto the turn.
    return RoundToInt((angle - kCompassQuarterTurn) * kCompassStepsPerRadian) & (kCompassSteps - 1);
}

int32_t CompassValue(double dx, double dy) { return CompassValueFromAngle(CompassAngle(dx, dy)); }

double CompassAngleFromValue(int32_t value)
{
    return value * kCompassFullTurn / kCompassSteps + kCompassQuarterTurn;
}

double CompassRadius(int32_t width, int32_t height)
{
    const int32_t side = std::min(width, height);
    return side > 0 ? 0.4 * side : 0.0;
}

CompassPoint CompassNeedleEnd(double cx, double cy, double radius, double angle)
{
    CompassPoint p;
    p.x = cx + radius * std::cos(angle);
    p.y = cy + radius * std::sin(angle);
    return p;
}

HsvColor RgbToHsv(int32_t red, int32_t green, int32_t blue)
{
    const int32_t r = Clamp8(red), g = Clamp8(green), b = Clamp8(blue);
    const int32_t high = std::max({r, g, b});
    const int32_t low = std::min({r, g, b});
    HsvColor c;
    c.value = high / 255.0;
    if (high == 0 || high == low) return c;
    const double delta = high - low;
    c.saturation = delta / high;
    double hue;
    if (high == r)
        hue = 60.0 * (g - b) / delta;
    else if (high == g)
        hue = 120.0 + 60.0 * (b - r) / delta;
    else
        hue = 240.0 + 60.0 * (r - g) / delta;
    if (hue < 0.0) hue += 360.0;
    if (hue >= 360.0) hue -= 360.0;
    c.hue = hue;
    return c;
}

RgbColor HsvToRgb(double hue, double saturation, double value)
{
    const double s = Clamp01(saturation), v = Clamp01(value);
    double h = std::isfinite(hue) ? std::fmod(hue, 360.0) : 0.0;
    if (h < 0.0) h += 360.0;
    if (!(h < 360.0)) h = 0.0;  // a tiny negative hue can round up to 360
    const double sector = h / 60.0;
    const int32_t i = std::min(static_cast<int32_t>(sector), 5);
    const double f = sector - i;
    const double p = v * (1.0 - s);
    const double q = v * (1.0 - s * f);
    const double t = v * (1.0 - s * (1.0 - f));
    double r, g, b;
    switch (i) {
    case 0: r = v, g = t, b = p; break;
    case 1: r = q, g = v, b = p; break;
    case 2: r = p, g = v, b = t; break;
    case 3: r = p, g = q, b = v; break;
    case 4: r = t, g = p, b = v; break;
    default: r = v, g = p, b = q; break;
    }
    return RgbColor{ToByte(r), ToByte(g), ToByte(b)};
}

uint32_t PackRgb(const RgbColor& c)
{
    return static_cast<uint32_t>(Clamp8(c.red)) << 16 |
           static_cast<uint32_t>(Clamp8(c.green)) << 8 | static_cast<uint32_t>(Clamp8(c.blue));
}

RgbColor UnpackRgb(uint32_t packed)
{
    return RgbColor{static_cast<int32_t>((packed >> 16) & 255),
                    static_cast<int32_t>((packed >> 8) & 255), static_cast<int32_t>(packed & 255)};
}

}  // namespace lv
