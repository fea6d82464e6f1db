// Filters that work through hue, saturation and lightness. Where the result depends only on
// the channel sum, the conversion runs once per possible sum instead of once per pixel.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/hsl.h"
#include "imaging/engine/pixel_math.h"

#include <array>
#include <cmath>

namespace tolmar::imaging {

namespace {

// Pixel words (without the spare byte) indexed by the channel sum.
using SumTable = std::array<uint32_t, 766>;

template <class Fn>
SumTable sumTable(Fn&& fn)
{
    SumTable t{};
    for (int sum = 0; sum < 766; ++sum) {
        const Rgb c = fn(sum);
        t[sum] = uint32_t(c.b) | uint32_t(c.g) << 8 | uint32_t(c.r) << 16;
    }
    return t;
}

void applySumTable(const SumTable& t, const uint8_t* s, uint8_t* d, int32_t n)
{
    for (int32_t i = 0; i < n; ++i) {
        const uint32_t p = loadPixel(s + i * 4);
        storePixel(d + i * 4,
                   t[(p & 255) + ((p >> 8) & 255) + ((p >> 16) & 255)] | (p & kSpareMask));
    }
}

} // namespace

BitsBuffer cBitFilter::Colorize(double hue, double saturation, double lightnessScale)
{
    const SumTable t = sumTable([&](int sum) {
        return HslToRgb(hue, saturation, sum / 765.0 * lightnessScale);
    });
    return runFilter([&t](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        applySumTable(t, s, d, n);
    });
}

BitsBuffer cBitFilter::RotateH(double hueShift, int32_t saturationPercent)
{
    const double k = saturationPercent / 100.0;
    return runFilter([hueShift, k](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        // Neighbouring pixels are often equal; remember the last conversion.
        uint32_t lastKey = 0xFFFFFFFF;
        Rgb last;
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const uint32_t key = uint32_t(s[0]) | uint32_t(s[1]) << 8 | uint32_t(s[2]) << 16;
            if (key != lastKey) {
                Hsl h = RgbToHsl(s[2], s[1], s[0]);
                if (h.s > 0) {
                    h.h += hueShift;
                    h.s *= k;
                }
                last = HslToRgb(h.h, h.s, h.l);
                lastKey = key;
            }
            d[0] = last.b;
            d[1] = last.g;
            d[2] = last.r;
            d[3] = s[3];
        }
    });
}

BitsBuffer cBitFilter::RotateL(double frequency, double phase)
{
    // The grey level moves along a sine; every channel moves by the same step and wraps
    // round into 0..255.
    std::array<int32_t, 256> step{};
    for (int y = 0; y < 256; ++y) {
        const double t = std::sin(y / 255.0 * frequency + phase);
        step[y] = static_cast<int32_t>(roundEven(127.5 * t + 127.5)) - y;
    }
    return runFilter([&step](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const uint32_t w = 222u * s[2] + 707u * s[1] + 71u * s[0];
            uint32_t y = w / 1000;
            const uint32_t rem = w - y * 1000;
            if (rem == 500)
                y = static_cast<uint32_t>(roundEven(0.222 * s[2] + 0.707 * s[1] + 0.071 * s[0]));
            else
                y += rem > 500;
            const int32_t k = step[y];
            for (int c = 0; c < 3; ++c) {
                int32_t v = s[c] + k;
                if (v > 255)
                    v -= 255;
                else if (v < 0)
                    v += 255;
                d[c] = static_cast<uint8_t>(v);
            }
            d[3] = s[3];
        }
    });
}

BitsBuffer cBitFilter::StretchH(double hueOffset, double saturationPercent, double frequency)
{
    // 16.67 units make a sixth, so 100 units turn the hue once round.
    const double o = hueOffset / 16.67;
    const double sat = saturationPercent / 100;
    const double f = frequency / 10;
    const SumTable t = sumTable([&](int sum) {
        const double l = sum / 765.0;
        double h = 3 * std::sin(f * l) + o;
        if (!(std::fabs(h) < 1e6))
            h = std::isfinite(h) ? std::fmod(h, 6.0) : 0.0;
        while (h < -1)
            h += 6;
        while (h > 5)
            h -= 6;
        return HslToRgb(h, sat, l);
    });
    return runFilter([&t](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        applySumTable(t, s, d, n);
    });
}

} // namespace tolmar::imaging
