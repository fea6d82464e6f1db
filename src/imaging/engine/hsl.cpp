#include "imaging/engine/hsl.h"

#include "imaging/engine/pixel_math.h"

#include <algorithm>
#include <cmath>

namespace tolmar::imaging {

Hsl RgbToHsl(int32_t r, int32_t g, int32_t b)
{
    const double R = r / 255.0;
    const double G = g / 255.0;
    const double B = b / 255.0;
    const double mx = std::max({R, G, B});
    const double mn = std::min({R, G, B});
    Hsl out;
    out.l = (mx + mn) / 2;
    if (mx == mn)
        return out;
    const double d = mx - mn;
    out.s = out.l <= 0.5 ? d / (mx + mn) : d / (2 - mx - mn);
    if (R == mx)
        out.h = (G - B) / d;
    else if (G == mx)
        out.h = 2 + (B - R) / d;
    else
        out.h = 4 + (R - G) / d;
    return out;
}

namespace {

double piece(double m1, double m2, double h)
{
    // fmod is exact, so a hue a few turns out lands where repeated steps of 6 would.
    h = std::fmod(h, 6.0);
    if (h < 0)
        h += 6;
    if (h >= 6)
        h -= 6;
    if (h < 1)
        return m1 + (m2 - m1) * h;
    if (h < 3)
        return m2;
    if (h < 4)
        return m1 + (m2 - m1) * (4 - h);
    return m1;
}

uint8_t toByte(double v)
{
    return clampByte(roundEven(v * 255));
}

} // namespace

Rgb HslToRgb(double h, double s, double l)
{
    if (s == 0) {
        const uint8_t v = toByte(l);
        return {v, v, v};
    }
    const double m2 = l <= 0.5 ? l * (1 + s) : l + s - l * s;
    const double m1 = 2 * l - m2;
    return {toByte(piece(m1, m2, h + 2)), toByte(piece(m1, m2, h)), toByte(piece(m1, m2, h - 2))};
}

} // namespace tolmar::imaging
