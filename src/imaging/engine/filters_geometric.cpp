// Filters that map coordinates: each region pixel pulls its colour from a computed source
// position in the held image. A source inside the image gives its three channels; one
// outside gives black with the background flag and leaves the pixel as it is without.
// The spare byte always stays the destination's own.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"
#include "imaging/engine/wide_loops.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace tolmar::imaging {

namespace {

// The rounded constants the mapped angles are worked with.
constexpr double kDegrees = 0.017453288659453392;
constexpr float kTwoPi = 6.283184f;
constexpr double kPi = 3.141592;

// Centres, radii and the like are held to this size so that squares stay exact in 64 bits
// and in doubles: far beyond any picture, so it changes no real result.
constexpr int64_t kFar = int64_t(1) << 26;

int64_t held(int64_t v)
{
    return std::clamp(v, -kFar, kFar);
}

} // namespace

double cBitFilter::GetAngle(int64_t a, int64_t b)
{
    if (a == 0)
        return b < 1 ? -kPi / 2 : kPi / 2;
    if (a < 0)
        return std::atan(double(b) / double(a)) + kPi;
    return std::atan(double(b) / double(a));
}

namespace {

// Writes the pixel of the common rule: the source's three channels, black, or itself.
inline void pull(const BitsBuffer& bits, int32_t lastX, int32_t lastY, int64_t sx, int64_t sy,
                 bool background, const uint8_t* s, uint8_t* d)
{
    const uint32_t own = loadPixel(s);
    uint32_t v = own;
    if (sx >= 0 && sx <= lastX && sy >= 0 && sy <= lastY)
        v = (loadPixel(bits.pixel(int32_t(sx), int32_t(sy))) & ~kSpareMask) | (own & kSpareMask);
    else if (background)
        v = own & kSpareMask;
    storePixel(d, v);
}

} // namespace

BitsBuffer cBitFilter::Bend(int32_t amount, bool background)
{
    const double k = amount / 100.0 + 2;
    const int32_t cx = m_lastX / 2;
    const int32_t cy = m_lastY / 2;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int64_t dy = int64_t(y) - cy;
        for (int32_t i = 0; i < n; ++i) {
            const int64_t dx = int64_t(x0) + i - cx;
            const double rr = k * std::sqrt(double(dx * dx + dy * dy));
            float a = static_cast<float>(-GetAngle(dy, dx));
            if (dy < 0 || dx > 0)
                a += kTwoPi;
            const int64_t sx = roundEven(double(a) * m_lastX / double(kTwoPi));
            const int64_t sy = roundEven(m_lastY - rr);
            pull(m_bits, m_lastX, m_lastY, sx, sy, background, s + i * 4, d + i * 4);
        }
    });
}

BitsBuffer cBitFilter::Fold(int32_t amountX, int32_t amountY, bool background)
{
    const int32_t cx = m_lastX / 2;
    const int32_t cy = m_lastY / 2;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int32_t dy = y - cy;
        for (int32_t i = 0; i < n; ++i) {
            const int32_t dx = x0 + i - cx;
            // An image of one row or column has nothing to fold along: that term is 0.
            const double bx = m_lastY > 0 ? dy / 100.0 * amountY / m_lastY : 0.0;
            const double by = m_lastX > 0 ? dx / 100.0 * amountX / m_lastX : 0.0;
            const int64_t sx = roundEven((bx + 1) * dx + cx);
            const int64_t sy = roundEven((by + 1) * dy + cy);
            pull(m_bits, m_lastX, m_lastY, sx, sy, background, s + i * 4, d + i * 4);
        }
    });
}

BitsBuffer cBitFilter::Lens(float x, float y, float radius, int32_t refraction)
{
    const int64_t cx = held(roundEven(double(x) * m_lastX));
    const int64_t cy = held(roundEven(double(y) * m_lastY));
    const int64_t r = held(roundEven(double(radius) * std::min(m_lastX, m_lastY)));
    const float s = float(150 - int64_t(refraction)) * float(r) / 150.0f;
    const int64_t h2 = roundEven(double(r) * double(r) - double(s) * double(s));
    return runFilter([&](const uint8_t* src, uint8_t* d, int32_t n, int32_t x0, int32_t yy) {
        const int64_t dy = yy - cy;
        for (int32_t i = 0; i < n; ++i) {
            const int64_t dx = x0 + i - cx;
            const uint8_t* p = src + i * 4;
            // Outside the disc (or with no radius at all) the pixel is not touched.
            if (r < 0 || dx < -r || dx > r || dy < -r || dy > r || dx * dx + dy * dy >= h2) {
                storePixel(d + i * 4, loadPixel(p));
                continue;
            }
            const int64_t z = roundEven(std::sqrt(double(r * r - dx * dx - dy * dy)));
            const int64_t sx = cx + roundEven(double(s) * double(dx)) / z;
            const int64_t sy = cy + roundEven(double(s) * double(dy)) / z;
            // A centre off the picture can send the source off it too: then the pixel
            // stays as it is.
            pull(m_bits, m_lastX, m_lastY, sx, sy, false, p, d + i * 4);
        }
    });
}

BitsBuffer cBitFilter::Twirl(int32_t twist, int32_t angle, bool background)
{
    const int32_t cx = m_lastX / 2;
    const int32_t cy = m_lastY / 2;
    // A picture of one or two columns has no radius to twist over.
    const float k = cx > 0 ? (float(twist) / 10.0f) / float(cx) : 0.0f;
    const double a0 = angle * kDegrees;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int64_t dy = int64_t(y) - cy;
        for (int32_t i = 0; i < n; ++i) {
            const int64_t dx = int64_t(x0) + i - cx;
            const int64_t r = roundEven(std::sqrt(double(dx * dx + dy * dy)));
            if (r == 0) {
                storePixel(d + i * 4, loadPixel(s + i * 4));
                continue;
            }
            const float a = float(GetAngle(dx, dy)) - k * float(r);
            const int64_t sx = roundEven(double(r) * std::cos(double(a) + a0) + cx);
            const int64_t sy = roundEven(double(r) * std::sin(double(a) + a0) + cy);
            pull(m_bits, m_lastX, m_lastY, sx, sy, background, s + i * 4, d + i * 4);
        }
    });
}

BitsBuffer cBitFilter::Waves(int32_t waveLength, int32_t amplitude, int32_t phase)
{
    std::vector<int64_t> table(static_cast<std::size_t>(std::max(m_lastY + 1, 0)));
    for (int32_t y = 0; y <= m_lastY; ++y)
        table[y] = roundEven(0.25 * amplitude
                                 * std::sin((double(waveLength) * y + phase) * kDegrees)
                             + y);
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int64_t sy = table[y];
        if (sy < 0 || sy > m_lastY) {
            std::memcpy(d, s, std::size_t(n) * 4);
            return;
        }
        const uint8_t* from = m_bits.pixel(x0, int32_t(sy));
        for (int32_t i = 0; i < n; ++i)
            storePixel(d + i * 4, (loadPixel(from + i * 4) & ~kSpareMask)
                                      | (loadPixel(s + i * 4) & kSpareMask));
    });
}

namespace {

// A turn about the image centre, its cosine and sine in single precision.
struct Turn
{
    float c;
    float sn;
    int32_t cx;
    int32_t cy;
    Turn(double angle, int32_t lastX, int32_t lastY)
        : c(std::cos(static_cast<float>(angle * kDegrees))),
          sn(std::sin(static_cast<float>(angle * kDegrees))), cx(lastX / 2), cy(lastY / 2)
    {
    }
};

// The source positions of one row of a rotation, in single precision as the angle is:
// sx = cos * dx - sin * dy + cx, sy = sin * dx + cos * dy + cy.
TOLMAR_WIDE void rotatedRow(float c, float sn, float dy, float cx, float cy, int32_t dx0,
                            int32_t n, float* __restrict fx, float* __restrict fy)
{
    const float sdy = sn * dy;
    const float cdy = c * dy;
    for (int32_t i = 0; i < n; ++i) {
        const float dx = static_cast<float>(dx0 + i);
        fx[i] = c * dx - sdy + cx;
        fy[i] = sn * dx + cdy + cy;
    }
}

TOLMAR_WIDE void nearestRow(const float* __restrict fx, const float* __restrict fy, int32_t n,
                            int32_t* __restrict ix, int32_t* __restrict iy)
{
    // lrintf rounds to nearest with ties to even; positions past 2^30 are off the picture
    // anyway and are held there.
    for (int32_t i = 0; i < n; ++i) {
        ix[i] = static_cast<int32_t>(std::nearbyint(std::clamp(fx[i], -1.0e9f, 1.0e9f)));
        iy[i] = static_cast<int32_t>(std::nearbyint(std::clamp(fy[i], -1.0e9f, 1.0e9f)));
    }
}

} // namespace

BitsBuffer cBitFilter::Rotate(double angle, bool background)
{
    const Turn t(angle, m_lastX, m_lastY);
    std::vector<float> fx, fy;
    std::vector<int32_t> ix, iy;
    const uint32_t lastX = static_cast<uint32_t>(m_lastX);
    const uint32_t lastY = static_cast<uint32_t>(m_lastY);
    const std::size_t stride = m_bits.stride();
    const uint8_t* origin = m_bits.pixel(0, 0);
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        fx.resize(std::size_t(n));
        fy.resize(std::size_t(n));
        ix.resize(std::size_t(n));
        iy.resize(std::size_t(n));
        rotatedRow(t.c, t.sn, float(y - t.cy), float(t.cx), float(t.cy), x0 - t.cx, n,
                   fx.data(), fy.data());
        nearestRow(fx.data(), fy.data(), n, ix.data(), iy.data());
        for (int32_t i = 0; i < n; ++i) {
            const uint32_t own = loadPixel(s + i * 4);
            uint32_t v = background ? own & kSpareMask : own;
            // One unsigned compare tests both ends.
            if (uint32_t(ix[i]) <= lastX && uint32_t(iy[i]) <= lastY)
                v = (loadPixel(origin + std::size_t(iy[i]) * stride + std::size_t(ix[i]) * 4)
                     & ~kSpareMask)
                  | (own & kSpareMask);
            storePixel(d + i * 4, v);
        }
    });
}

BitsBuffer cBitFilter::RotateSmooth(double angle)
{
    const Turn t(angle, m_lastX, m_lastY);
    std::vector<float> fx, fy;
    const std::size_t stride = m_bits.stride();
    const uint8_t* origin = m_bits.pixel(0, 0);
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        fx.resize(std::size_t(n));
        fy.resize(std::size_t(n));
        rotatedRow(t.c, t.sn, float(y - t.cy), float(t.cx), float(t.cy), x0 - t.cx, n,
                   fx.data(), fy.data());
        for (int32_t i = 0; i < n; ++i) {
            const uint32_t own = loadPixel(s + i * 4);
            const float px = std::clamp(fx[i], -1.0e9f, 1.0e9f);
            const float py = std::clamp(fy[i], -1.0e9f, 1.0e9f);
            const float flx = std::floor(px);
            const float fly = std::floor(py);
            const int32_t xa = static_cast<int32_t>(flx);
            const int32_t ya = static_cast<int32_t>(fly);
            // All four neighbours must lie in the picture, else the pixel stays.
            if (xa < 0 || ya < 0 || xa >= m_lastX || ya >= m_lastY) {
                storePixel(d + i * 4, own);
                continue;
            }
            const double ffx = double(px - flx);
            const double ffy = double(py - fly);
            const double gx = 1 - ffx;
            const double gy = 1 - ffy;
            const uint8_t* p00 = origin + std::size_t(ya) * stride + std::size_t(xa) * 4;
            const uint8_t* p10 = p00 + 4;
            const uint8_t* p01 = p00 + stride;
            const uint8_t* p11 = p01 + 4;
            uint32_t v = own & kSpareMask;
            for (int ch = 0; ch < 3; ++ch) {
                const double m = gy * (gx * p00[ch] + ffx * p10[ch])
                               + ffy * (gx * p01[ch] + ffx * p11[ch]);
                v |= uint32_t(clampByte(roundEven(m))) << (8 * ch);
            }
            storePixel(d + i * 4, v);
        }
    });
}

BitsBuffer cBitFilter::Stretch(int32_t amountX, int32_t amountY, bool background)
{
    const double fx = amountX / 100.0 + 1;
    const double fy = amountY / 100.0 + 1;
    const int32_t cx = m_lastX / 2;
    const int32_t cy = m_lastY / 2;
    // Sources are held into -1..last + 1, which keeps in and out apart and fits 32 bits.
    std::vector<int32_t> tx(static_cast<std::size_t>(std::max(m_lastX + 1, 0)));
    std::vector<int32_t> ty(static_cast<std::size_t>(std::max(m_lastY + 1, 0)));
    for (int32_t i = 0; i <= m_lastX; ++i)
        tx[i] = int32_t(std::clamp<int64_t>(roundEven((i - cx) * fx + cx), -1, m_lastX + 1));
    for (int32_t j = 0; j <= m_lastY; ++j)
        ty[j] = int32_t(std::clamp<int64_t>(roundEven((j - cy) * fy + cy), -1, m_lastY + 1));
    const uint32_t lastX = static_cast<uint32_t>(m_lastX);
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int32_t sy = ty[y];
        if (sy < 0 || sy > m_lastY) {
            for (int32_t i = 0; i < n; ++i) {
                const uint32_t own = loadPixel(s + i * 4);
                storePixel(d + i * 4, background ? own & kSpareMask : own);
            }
            return;
        }
        const uint8_t* row = m_bits.pixel(0, sy);
        const int32_t* t = tx.data() + x0;
        for (int32_t i = 0; i < n; ++i) {
            const uint32_t own = loadPixel(s + i * 4);
            uint32_t v = background ? own & kSpareMask : own;
            if (uint32_t(t[i]) <= lastX)
                v = (loadPixel(row + std::size_t(t[i]) * 4) & ~kSpareMask) | (own & kSpareMask);
            storePixel(d + i * 4, v);
        }
    });
}

BitsBuffer cBitFilter::Flip(bool horizontal, bool vertical)
{
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int32_t sy = vertical ? m_lastY - y : y;
        if (!horizontal) {
            const uint8_t* from = m_bits.pixel(x0, sy);
            for (int32_t i = 0; i < n; ++i)
                storePixel(d + i * 4, (loadPixel(from + i * 4) & ~kSpareMask)
                                          | (loadPixel(s + i * 4) & kSpareMask));
            return;
        }
        const uint8_t* from = m_bits.pixel(m_lastX - x0, sy);
        for (int32_t i = 0; i < n; ++i)
            storePixel(d + i * 4, (loadPixel(from - i * 4) & ~kSpareMask)
                                      | (loadPixel(s + i * 4) & kSpareMask));
    });
}

BitsBuffer cBitFilter::Tile(int32_t count)
{
    if (count < 1)
        return unchanged();
    int32_t left, top, right, bottom;
    if (!ScanBox({}, left, top, right, bottom))
        return unchanged();
    const int64_t tw = std::max<int64_t>(roundEven(double(m_lastX + 1) / count), 1);
    const int64_t th = std::max<int64_t>(roundEven(double(m_lastY + 1) / count), 1);
    const float fx = float(m_lastX + 1) / float(tw);
    const float fy = float(m_lastY + 1) / float(th);
    // The source column of every cell column, worked out once.
    std::vector<int64_t> sxOf(static_cast<std::size_t>(std::min<int64_t>(tw, m_lastX + 1)));
    for (std::size_t i = 0; i < sxOf.size(); ++i)
        sxOf[i] = roundEven(double(float(i) * fx));
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int64_t sy = roundEven(double(float((y - top) % th) * fy));
        for (int32_t i = 0; i < n; ++i) {
            const int64_t sx = sxOf[std::size_t((x0 + i - left) % tw)];
            pull(m_bits, m_lastX, m_lastY, sx, sy, false, s + i * 4, d + i * 4);
        }
    });
}

} // namespace tolmar::imaging
