#include "reference.h"

#include <algorithm>
#include <cmath>

namespace ref {

int lastX(const BitsBuffer& b) { return b.highX() - 2; }
int lastY(const BitsBuffer& b) { return b.highY() - 2; }

Px at(const BitsBuffer& b, int x, int y)
{
    return {b.at(0, x, y), b.at(1, x, y), b.at(2, x, y), b.at(3, x, y)};
}

BitsBuffer apply(const BitsBuffer& src, const Region* region, const PixelFn& fn, int yStep)
{
    BitsBuffer out = src;
    if (!region || region->isEmpty())
        return out;
    const auto box = region->box();
    for (int y = box.top; y <= box.bottom - 1; y += yStep) {
        if (y < 0 || y > lastY(src))
            continue;
        for (int x = box.left; x <= box.right - 1; ++x) {
            if (x < 0 || x > lastX(src) || !region->contains(x, y))
                continue;
            int o[3];
            fn(x, y, at(src, x, y), o);
            for (int c = 0; c < 3; ++c)
                out.at(c, x, y) = static_cast<uint8_t>(o[c]);
        }
    }
    return out;
}

bool scanBox(const BitsBuffer& src, const Region* region, const Margins& m, long& l, long& t,
             long& r, long& b)
{
    if (!region || region->isEmpty())
        return false;
    const auto box = region->box();
    l = std::max({long(box.left) + m.l, 0L, m.minX});
    t = std::max({long(box.top) + m.t, 0L, m.minY});
    r = std::min({long(box.right) - m.r - 1, long(lastX(src)), m.maxX});
    b = std::min({long(box.bottom) - m.b - 1, long(lastY(src)), m.maxY});
    return l <= r && t <= b;
}

BitsBuffer applyIn(const BitsBuffer& src, const Region* region, const Margins& m,
                   const PixelFn& fn)
{
    BitsBuffer out = src;
    long l, t, r, b;
    if (!scanBox(src, region, m, l, t, r, b))
        return out;
    for (long y = t; y <= b; ++y)
        for (long x = l; x <= r; ++x) {
            if (!region->contains(int(x), int(y)))
                continue;
            int o[3];
            fn(int(x), int(y), at(src, int(x), int(y)), o);
            for (int c = 0; c < 3; ++c)
                out.at(c, int(x), int(y)) = static_cast<uint8_t>(o[c]);
        }
    return out;
}

long rint(double v)
{
    return std::lrint(v);
}

int clamp255(long v)
{
    return v < 0 ? 0 : (v > 255 ? 255 : static_cast<int>(v));
}

Hsl toHsl(int r, int g, int b)
{
    const double R = r / 255.0, G = g / 255.0, B = b / 255.0;
    const double mx = std::max({R, G, B}), mn = std::min({R, G, B});
    const double l = (mx + mn) / 2;
    if (mx == mn)
        return {0, 0, l};
    const double s = l <= 0.5 ? (mx - mn) / (mx + mn) : (mx - mn) / (2 - mx - mn);
    double h;
    if (R == mx)
        h = (G - B) / (mx - mn);
    else if (G == mx)
        h = 2 + (B - R) / (mx - mn);
    else
        h = 4 + (R - G) / (mx - mn);
    return {h, s, l};
}

static double hue(double m1, double m2, double h)
{
    while (h < 0)
        h += 6;
    while (h >= 6)
        h -= 6;
    if (h < 1)
        return m1 + (m2 - m1) * h;
    if (h < 3)
        return m2;
    if (h < 4)
        return m1 + (m2 - m1) * (4 - h);
    return m1;
}

void fromHsl(double h, double s, double l, int& r, int& g, int& b)
{
    if (s == 0) {
        r = g = b = clamp255(rint(l * 255));
        return;
    }
    const double m2 = l <= 0.5 ? l * (1 + s) : l + s - l * s;
    const double m1 = 2 * l - m2;
    r = clamp255(rint(hue(m1, m2, h + 2) * 255));
    g = clamp255(rint(hue(m1, m2, h) * 255));
    b = clamp255(rint(hue(m1, m2, h - 2) * 255));
}

int grey(const Px& p)
{
    return static_cast<int>(rint(0.222 * p.r + 0.707 * p.g + 0.071 * p.b));
}

BitsBuffer randomImage(std::mt19937& rng, int w, int h)
{
    BitsBuffer b(w, h);
    std::uniform_int_distribution<int> byte(0, 255);
    for (std::size_t i = 0; i < b.byteSize(); ++i)
        b.data()[i] = static_cast<uint8_t>(byte(rng));
    return b;
}

} // namespace ref
