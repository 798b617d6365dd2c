// The arithmetic behind two panel controls that needs no window: the
// Compass's angle and value (4096 steps to a turn, 0 with the needle pointing
// down the screen), and the colour picker's conversions between red, green
// and blue bytes and hue, saturation and value.
#pragma once

#include <cstdint>

namespace lv {

// The constants of the compass, kept exactly as the dial has always used them.
constexpr double kCompassQuarterTurn = 1.5707963268;
constexpr double kCompassFullTurn = 6.2831853072;
constexpr double kCompassStepsPerRadian = 651.8986469022853;
constexpr int32_t kCompassSteps = 4096;

// The angle of a pointer offset (dx, dy) from the dial's centre, in screen
// coordinates (y down): atan2(dy, dx), and 0 at the exact centre.
double CompassAngle(double dx, double dy);

// The value 0..4095 of an angle: the nearest step of (angle - a quarter turn),
// wrapped to one turn. 0 points down, 1024 left, 2048 up, 3072 right.
int32_t CompassValueFromAngle(double angle);

// CompassValueFromAngle(CompassAngle(dx, dy)).
int32_t CompassValue(double dx, double dy);

// The angle the dial stores for a value: value * a turn / 4096 + a quarter.
double CompassAngleFromValue(int32_t value);

// The dial's radius: 0.4 of the smaller client side (0 for empty sizes).
double CompassRadius(int32_t width, int32_t height);

struct CompassPoint {
    double x = 0.0;
    double y = 0.0;
};

// Where the needle ends for a centre, a radius and a stored angle (y down).
CompassPoint CompassNeedleEnd(double cx, double cy, double radius, double angle);

// A colour as hue in degrees (0 up to but excluding 360), saturation and
// value from 0 to 1.
struct HsvColor {
    double hue = 0.0;
    double saturation = 0.0;
    double value = 0.0;
};

struct RgbColor {
    int32_t red = 0;
    int32_t green = 0;
    int32_t blue = 0;
};

// Bytes to hue, saturation and value. Out-of-range bytes are clamped. A gray
// has hue 0 and saturation 0; black has value 0 as well.
HsvColor RgbToHsv(int32_t red, int32_t green, int32_t blue);

// Hue, saturation and value to the nearest bytes. The hue wraps around 360
// degrees; saturation and value are clamped to 0..1; values that are not
// numbers count as 0.
RgbColor HsvToRgb(double hue, double saturation, double value);
inline RgbColor HsvToRgb(const HsvColor& c) { return HsvToRgb(c.hue, c.saturation, c.value); }

// A colour as the value of a colour message: 0xRRGGBB.
uint32_t PackRgb(const RgbColor& c);
RgbColor UnpackRgb(uint32_t packed);

}  // namespace lv
