#pragma once

#include <cstdint>

namespace tolmar::imaging {

// Hue in sixths of a turn: red 0, yellow 1, green 2, cyan 3, blue 4, magenta 5 (or -1).
// Saturation and lightness run from 0 to 1.
struct Hsl
{
    double h = 0;
    double s = 0;
    double l = 0;
};

struct Rgb
{
    uint8_t r = 0;
    uint8_t g = 0;
    uint8_t b = 0;
    bool operator==(const Rgb&) const = default;
};

Hsl RgbToHsl(int32_t r, int32_t g, int32_t b);
// Channels are rounded to nearest, ties to even, and held to 0..255 for saturations above 1.
Rgb HslToRgb(double h, double s, double l);

} // namespace tolmar::imaging
