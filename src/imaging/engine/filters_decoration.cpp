// Filters that lay something over the image: gradients, a grid, a light spot, a texture
// and a tiled mask. Their per-pixel value depends on the position, not on a table.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace tolmar::imaging {

namespace {

struct Channels
{
    int32_t c[3]; // blue, green, red
    explicit Channels(Colour colour) : c{blueOf(colour), greenOf(colour), redOf(colour)} {}
};

int32_t positiveMod(int64_t v, int32_t m)
{
    const int64_t r = v % m;
    return static_cast<int32_t>(r < 0 ? r + m : r);
}

} // namespace

BitsBuffer cBitFilter::gradient(int32_t x1, int32_t y1, int32_t x2, int32_t y2, Colour c1,
                                Colour c2, double percent, int32_t mode, bool circular)
{
    const double dx = double(x2) - x1;
    const double dy = double(y2) - y1;
    const double dist = std::sqrt(dx * dx + dy * dy);
    if (dist == 0) {
        // Two equal points give no direction: nothing to draw.
        BitsBuffer out = takeResultBuffer();
        if (!m_bits.empty())
            std::memcpy(out.data(), m_bits.data(), m_bits.byteSize());
        reportDone();
        return out;
    }
    double angle = 0;
    if (dx == 0) {
        angle = dy > 0 ? std::numbers::pi / 2 : -std::numbers::pi / 2;
    } else {
        angle = std::atan(dy / dx);
        if (dx < 0)
            angle += std::numbers::pi;
    }
    const double cosA = std::cos(angle);
    const double sinA = std::sin(angle);
    const double bend = std::numbers::pi * percent / 100;
    const Channels from(c1);
    const Channels to(c2);
    return runFilter([&, x1, y1, mode, circular](const uint8_t* s, uint8_t* d, int32_t n,
                                                  int32_t x0, int32_t y) {
        const double py = double(y) - y1;
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const double px = double(x0 + i) - x1;
            double t = circular ? std::sqrt(px * px + py * py) / dist
                                : (px * cosA + py * sinA) / dist;
            if (mode == 1)
                t = std::sin(t * bend);
            t = std::clamp(t, 0.0, 1.0);
            for (int c = 0; c < 3; ++c)
                d[c] = clampByte(roundEven(from.c[c] + t * (to.c[c] - from.c[c])));
            d[3] = s[3];
        }
    });
}

BitsBuffer cBitFilter::GradientLinear(int32_t x1, int32_t y1, int32_t x2, int32_t y2,
                                      Colour colour1, Colour colour2, double percent,
                                      int32_t mode)
{
    return gradient(x1, y1, x2, y2, colour1, colour2, percent, mode, false);
}

BitsBuffer cBitFilter::GradientCircular(int32_t x1, int32_t y1, int32_t x2, int32_t y2,
                                        Colour colour1, Colour colour2, double percent,
                                        int32_t mode)
{
    return gradient(x1, y1, x2, y2, colour1, colour2, percent, mode, true);
}

BitsBuffer cBitFilter::Grid(int32_t stepX, int32_t stepY, bool both, Colour colour,
                            int32_t opacity)
{
    const double a = opacity / 255.0;
    const Channels col(colour);
    // One blended value per channel value and channel: the lines cost a lookup.
    std::array<std::array<uint8_t, 256>, 3> t{};
    for (int c = 0; c < 3; ++c)
        for (int v = 0; v < 256; ++v)
            t[c][v] = clampByte(roundEven((1 - a) * v + a * col.c[c]));
    return runFilter([&t, stepX, stepY, both](const uint8_t* s, uint8_t* d, int32_t n,
                                               int32_t x0, int32_t y) {
        auto blend = [&t](const uint8_t* sp, uint8_t* dp) {
            dp[0] = t[0][sp[0]];
            dp[1] = t[1][sp[1]];
            dp[2] = t[2][sp[2]];
            dp[3] = sp[3];
        };
        if (stepY > 0 && y % stepY == 0) {
            for (int32_t i = 0; i < n; ++i)
                blend(s + i * 4, d + i * 4);
            return;
        }
        // Off the horizontal lines only every stepX-th column changes.
        std::memcpy(d, s, std::size_t(n) * 4);
        if (!both || stepX <= 0)
            return;
        for (int32_t i = (stepX - x0 % stepX) % stepX; i < n; i += stepX)
            blend(s + i * 4, d + i * 4);
    });
}

BitsBuffer cBitFilter::Light(double x, double y, double radius, double percent, double level)
{
    const int64_t cx = roundEven(x * m_lastX);
    const int64_t cy = roundEven(y * m_lastY);
    const int64_t r = roundEven(radius * std::min(m_lastX, m_lastY));
    const double fade = 1 - percent / 100;
    return runFilter([=](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t py) {
        const double dy = double(py - cy);
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const double dx = double(x0 + i - cx);
            const double dist = std::sqrt(dx * dx + dy * dy);
            // A radius of 0 lights nothing rather than dividing by it.
            if (r > 0 && dist <= double(r)) {
                const int64_t amount = roundEven((1 - fade * dist / double(r)) * level);
                for (int c = 0; c < 3; ++c)
                    d[c] = clampByte(s[c] + amount);
            } else {
                d[0] = s[0];
                d[1] = s[1];
                d[2] = s[2];
            }
            d[3] = s[3];
        }
    });
}

BitsBuffer cBitFilter::Texturize(const BitsBuffer& texture)
{
    const int32_t tw = texture.highX() - 1;
    const int32_t th = texture.highY() - 1;
    if (texture.empty() || tw < 1 || th < 1)
        return runFilter([](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
            std::memcpy(d, s, std::size_t(n) * 4);
        });
    // c * t / 128 rounded half to even, clamped, for every pair of bytes: 64 KiB.
    std::vector<uint8_t> product(256 * 256);
    for (uint32_t t = 0; t < 256; ++t)
        for (uint32_t c = 0; c < 256; ++c) {
            const uint32_t p = c * t;
            const uint32_t q = p >> 7;
            const uint32_t rem = p & 127;
            product[t * 256 + c] = clampByte(q + (rem > 64 || (rem == 64 && (q & 1))));
        }
    return runFilter([&texture, &product, tw, th](const uint8_t* s, uint8_t* d, int32_t n,
                                                   int32_t x0, int32_t y) {
        const uint8_t* row = texture.pixel(0, positiveMod(y, th));
        const uint8_t* pt = product.data();
        int32_t tx = positiveMod(x0, tw);
        for (int32_t i = 0; i < n; ++i) {
            const uint32_t p = loadPixel(s + i * 4);
            const uint32_t t = loadPixel(row + std::size_t(tx) * 4);
            storePixel(d + i * 4, uint32_t(pt[(t & 255) << 8 | (p & 255)])
                                      | uint32_t(pt[(t & 0xFF00) | ((p >> 8) & 255)]) << 8
                                      | uint32_t(pt[((t >> 8) & 0xFF00) | ((p >> 16) & 255)]) << 16
                                      | (p & kSpareMask));
            if (++tx == tw)
                tx = 0;
        }
    });
}

BitsBuffer cBitFilter::TileMask(const BitsBuffer& mask, int32_t offsetX, int32_t offsetY,
                                bool useColour, double opacityPercent, Colour colour)
{
    const int32_t mw = mask.highX() - 1;
    const int32_t mh = mask.highY() - 1;
    const double a = opacityPercent / 100;
    const Channels col(colour);
    const bool usable = !mask.empty() && mw >= 1 && mh >= 1;
    return runFilter([&, usable](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0,
                                 int32_t y) {
        if (!usable) {
            std::memcpy(d, s, std::size_t(n) * 4);
            return;
        }
        const uint8_t* row = mask.pixel(0, positiveMod(int64_t(y) + offsetY, mh));
        int32_t mx = positiveMod(int64_t(x0) + offsetX, mw);
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const uint8_t* m = row + std::size_t(mx) * 4;
            if (useColour) {
                const double w = a * ((m[0] + m[1] + m[2]) / 3) / 255.0;
                for (int c = 0; c < 3; ++c)
                    d[c] = clampByte(roundEven(s[c] + w * (col.c[c] - s[c])));
            } else {
                for (int c = 0; c < 3; ++c)
                    d[c] = clampByte(roundEven((1 - a) * s[c] + a * m[c]));
            }
            d[3] = s[3];
            if (++mx == mw)
                mx = 0;
        }
    });
}

} // namespace tolmar::imaging
