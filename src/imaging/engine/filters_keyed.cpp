// Filters keyed on a colour: they act on pixels near the key colour, by the squared RGB
// distance measured against a tolerance threshold.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/hsl.h"
#include "imaging/engine/pixel_math.h"

#include <array>
#include <cmath>

namespace tolmar::imaging {

namespace {

// A tolerance in percent becomes a squared distance; the +1 lets a tolerance of 0 still
// match the key colour itself.
int64_t toleranceThreshold(double tolerance)
{
    const double q = tolerance * 127.5 / 100;
    return roundEven(q * q + 1);
}

struct Key
{
    int32_t c[3]; // buffer order: blue, green, red

    explicit Key(Colour colour) : c{blueOf(colour), greenOf(colour), redOf(colour)} {}

    int64_t distance2(const uint8_t* p) const
    {
        const int64_t d0 = p[0] - c[0];
        const int64_t d1 = p[1] - c[1];
        const int64_t d2 = p[2] - c[2];
        return d0 * d0 + d1 * d1 + d2 * d2;
    }
};

// The key colour stands entire at distance 0 and fades out towards the threshold.
inline void blendTowards(const uint8_t* s, uint8_t* d, const Key& to, int64_t d2, int64_t t)
{
    const double a = 1 - static_cast<double>(d2) / static_cast<double>(t);
    for (int c = 0; c < 3; ++c)
        d[c] = clampByte(roundEven(s[c] + a * (to.c[c] - s[c])));
}

enum class ReplaceKind { Plain, HueSaturation, Lightness };

} // namespace

BitsBuffer cBitFilter::Isolate(Colour key, Colour other, double tolerance)
{
    const Key k(key);
    const Key o(other);
    const int64_t t = toleranceThreshold(tolerance);
    return runFilter([&k, &o, t](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const bool far = k.distance2(s) >= t;
            for (int c = 0; c < 3; ++c)
                d[c] = far ? static_cast<uint8_t>(o.c[c]) : s[c];
            d[3] = s[3];
        }
    });
}

BitsBuffer cBitFilter::replaceKernel(Colour key, Colour newColour, double tolerance, int kind,
                                     double limitA, double limitB)
{
    const Key k(key);
    const Key to(newColour);
    const int64_t t = toleranceThreshold(tolerance);
    const auto how = static_cast<ReplaceKind>(kind);
    const Hsl keyHsl = RgbToHsl(k.c[2], k.c[1], k.c[0]);
    const int32_t keyLevel = (k.c[0] + k.c[1] + k.c[2]) / 3;
    return runFilter([&, t, how](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            d[0] = s[0];
            d[1] = s[1];
            d[2] = s[2];
            d[3] = s[3];
            int64_t d2 = 0;
            if (how == ReplaceKind::HueSaturation) {
                const Hsl p = RgbToHsl(s[2], s[1], s[0]);
                if (std::fabs(p.s - keyHsl.s) * 100 > limitA
                    || std::fabs(p.l - keyHsl.l) * 100 > limitB)
                    continue;
                // The hue distance, half a turn at most, on the same 0..255 scale as a
                // channel difference.
                double dh = std::fabs(p.h - keyHsl.h);
                if (dh > 3)
                    dh = 6 - dh;
                const double dist = dh / 3 * 255;
                d2 = roundEven(dist * dist);
            } else {
                if (how == ReplaceKind::Lightness) {
                    const int32_t level = (s[0] + s[1] + s[2]) / 3;
                    if (std::abs(level - keyLevel) > limitA * 2.55)
                        continue;
                }
                d2 = k.distance2(s);
            }
            if (d2 <= t)
                blendTowards(s, d, to, d2, t);
        }
    });
}

BitsBuffer cBitFilter::Replace(Colour key, Colour newColour, double tolerance)
{
    return replaceKernel(key, newColour, tolerance, int(ReplaceKind::Plain), 0, 0);
}

BitsBuffer cBitFilter::ReplaceHS(Colour key, Colour newColour, double tolerance,
                                 double saturationLimit, double lightnessLimit)
{
    return replaceKernel(key, newColour, tolerance, int(ReplaceKind::HueSaturation),
                         saturationLimit, lightnessLimit);
}

BitsBuffer cBitFilter::ReplaceL(Colour key, Colour newColour, double tolerance,
                                double lightnessPercent)
{
    return replaceKernel(key, newColour, tolerance, int(ReplaceKind::Lightness),
                         lightnessPercent, 0);
}

BitsBuffer cBitFilter::Shift(Colour key, int32_t amount, double tolerance)
{
    const Key k(key);
    const int64_t t = toleranceThreshold(tolerance);
    std::array<int32_t, 256> shifted{};
    for (int i = 0; i < 256; ++i)
        shifted[i] = clampByte(int64_t(i) + amount);
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const int64_t d2 = k.distance2(s);
            if (d2 < t) {
                const double a = 1 - static_cast<double>(d2) / static_cast<double>(t);
                for (int c = 0; c < 3; ++c)
                    d[c] = clampByte(roundEven(s[c] + a * (shifted[s[c]] - s[c])));
            } else {
                d[0] = s[0];
                d[1] = s[1];
                d[2] = s[2];
            }
            d[3] = s[3];
        }
    });
}

} // namespace tolmar::imaging
