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

// The smooth turn's tiles: rows of a strip by columns.
constexpr int32_t kStripRows = 16;
constexpr int32_t kTileColumns = 128;

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

namespace {

// One pixel of the smooth turn as the blend is defined: the fractions of the single
// precision position, the mix in doubles, rounded to nearest with ties to even.
inline uint32_t smoothPixel(const uint8_t* origin, std::size_t stride, float px, float py,
                            uint32_t own)
{
    const float flx = std::floor(px);
    const float fly = std::floor(py);
    const double ffx = double(px - flx);
    const double ffy = double(py - fly);
    const double gx = 1 - ffx;
    const double gy = 1 - ffy;
    const uint8_t* p00 =
        origin + std::size_t(int32_t(fly)) * stride + std::size_t(int32_t(flx)) * 4;
    const uint8_t* p10 = p00 + 4;
    const uint8_t* p01 = p00 + stride;
    const uint8_t* p11 = p01 + 4;
    uint32_t v = own & kSpareMask;
    for (int ch = 0; ch < 3; ++ch) {
        const double m = gy * (gx * p00[ch] + ffx * p10[ch]) + ffy * (gx * p01[ch] + ffx * p11[ch]);
        v |= uint32_t(clampByte(roundEven(m))) << (8 * ch);
    }
    return v;
}

inline bool smoothInside(float px, float py, int32_t lastX, int32_t lastY)
{
    // All four neighbours must lie in the picture.
    const int32_t xa = static_cast<int32_t>(std::floor(px));
    const int32_t ya = static_cast<int32_t>(std::floor(py));
    return xa >= 0 && ya >= 0 && xa < lastX && ya < lastY;
}

#ifdef TOLMAR_HAVE_AVX2_LOOPS
// The left (or right) pixels of the pairs in `a` (pixels 0 to 3) and `b` (4 to 7), in order.
template <int Pick>
__attribute__((target("avx2"))) inline __m256i pairHalves(__m256i a, __m256i b)
{
    const __m256 m = _mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), Pick);
    return _mm256_permute4x64_epi64(_mm256_castps_si256(m), _MM_SHUFFLE(3, 1, 2, 0));
}

// Eight pixels at a time in single precision, each blend worked as a + f * (b - a) with
// one rounding per step: the result is within 2^-14 of the exact blend, and the defined
// double one within 2^-40. Wherever the float result lies farther than 2^-10 from a half,
// both round to the same byte; the few lanes that lie closer are done again the defined
// way. The bytes are those of smoothPixel everywhere.
__attribute__((target("avx2,fma"))) void smoothRowAvx2(const float* fx, const float* fy,
                                                       int32_t n, const uint8_t* origin,
                                                       std::size_t stride, int32_t lastX,
                                                       int32_t lastY, const uint8_t* s,
                                                       uint8_t* d, std::ptrdiff_t ahead,
                                                       std::ptrdiff_t later)
{
    const __m256 lo = _mm256_set1_ps(-1.0e9f);
    const __m256 hi = _mm256_set1_ps(1.0e9f);
    const __m256 nearHalf = _mm256_set1_ps(0.5f - 1.0f / 1024);
    const __m256 absMask = _mm256_castsi256_ps(_mm256_set1_epi32(0x7FFFFFFF));
    const __m256i limX = _mm256_set1_epi32(lastX);
    const __m256i limY = _mm256_set1_epi32(lastY);
    const __m256i minus1 = _mm256_set1_epi32(-1);
    const __m256i words = _mm256_set1_epi32(int32_t(stride / 4));
    const __m256i spare = _mm256_set1_epi32(int32_t(kSpareMask));
    // Byte c of each pixel into the low byte of its word, the rest zero.
    const __m256i lanes = _mm256_setr_epi32(0, 4, 8, 12, 0, 4, 8, 12);
    const __m256i pick[3] = {_mm256_add_epi32(_mm256_set1_epi32(int32_t(0x80808000u)), lanes),
                             _mm256_add_epi32(_mm256_set1_epi32(int32_t(0x80808001u)), lanes),
                             _mm256_add_epi32(_mm256_set1_epi32(int32_t(0x80808002u)), lanes)};
    auto pair = [origin](int32_t word) {
        uint64_t v;
        std::memcpy(&v, origin + std::size_t(word) * 4, 8);
        return static_cast<long long>(v);
    };
    int32_t i = 0;
    for (; i + 8 <= n; i += 8) {
        const __m256 px = _mm256_min_ps(_mm256_max_ps(_mm256_loadu_ps(fx + i), lo), hi);
        const __m256 py = _mm256_min_ps(_mm256_max_ps(_mm256_loadu_ps(fy + i), lo), hi);
        const __m256 flx = _mm256_floor_ps(px);
        const __m256 fly = _mm256_floor_ps(py);
        const __m256i xa = _mm256_cvttps_epi32(flx);
        const __m256i ya = _mm256_cvttps_epi32(fly);
        const __m256i in = _mm256_and_si256(
            _mm256_and_si256(_mm256_cmpgt_epi32(limX, xa), _mm256_cmpgt_epi32(xa, minus1)),
            _mm256_and_si256(_mm256_cmpgt_epi32(limY, ya), _mm256_cmpgt_epi32(ya, minus1)));
        const __m256i own = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + i * 4));
        if (_mm256_testz_si256(in, in)) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i * 4), own);
            continue;
        }
        // Lanes outside read pixel (0, 0) and its neighbours, which exist, and are dropped.
        alignas(32) int32_t at[8];
        const __m256i word = _mm256_add_epi32(_mm256_mullo_epi32(ya, words), xa);
        _mm256_store_si256(reinterpret_cast<__m256i*>(at), _mm256_and_si256(word, in));
        // A pixel and its right neighbour are one 64-bit load. Plain loads, not gathers:
        // a gather waits for all its lanes, and a turned row misses the cache at almost
        // every pixel.
        const int32_t w = int32_t(stride / 4);
        const __m256i t0 = _mm256_set_epi64x(pair(at[3]), pair(at[2]), pair(at[1]), pair(at[0]));
        const __m256i t1 = _mm256_set_epi64x(pair(at[7]), pair(at[6]), pair(at[5]), pair(at[4]));
        const __m256i b0 = _mm256_set_epi64x(pair(at[3] + w), pair(at[2] + w), pair(at[1] + w),
                                             pair(at[0] + w));
        const __m256i b1 = _mm256_set_epi64x(pair(at[7] + w), pair(at[6] + w), pair(at[5] + w),
                                             pair(at[4] + w));
        // Rows read at steep angles change at every pixel, in no stride the processor
        // foresees, and each load would wait in turn. So the rows that the tile's next row
        // and the next strip will read for these pixels are asked for now, `ahead` and
        // `later` bytes on (give or take a line), and their loads overlap.
        const auto base = reinterpret_cast<std::uintptr_t>(origin);
        for (int k = 0; k < 8; ++k) {
            const std::uintptr_t here = base + std::uintptr_t(at[k]) * 4;
            __builtin_prefetch(reinterpret_cast<const void*>(here + std::uintptr_t(ahead)));
            __builtin_prefetch(reinterpret_cast<const void*>(here + std::uintptr_t(later)));
        }
        const __m256i p00 = pairHalves<_MM_SHUFFLE(2, 0, 2, 0)>(t0, t1);
        const __m256i p10 = pairHalves<_MM_SHUFFLE(3, 1, 3, 1)>(t0, t1);
        const __m256i p01 = pairHalves<_MM_SHUFFLE(2, 0, 2, 0)>(b0, b1);
        const __m256i p11 = pairHalves<_MM_SHUFFLE(3, 1, 3, 1)>(b0, b1);
        const __m256 ffx = _mm256_sub_ps(px, flx);
        const __m256 ffy = _mm256_sub_ps(py, fly);
        __m256i v = _mm256_and_si256(own, spare);
        __m256 doubtful = _mm256_setzero_ps();
        for (int ch = 0; ch < 3; ++ch) {
            const __m256i a = _mm256_shuffle_epi8(p00, pick[ch]);
            const __m256i c = _mm256_shuffle_epi8(p01, pick[ch]);
            const __m256i ab = _mm256_sub_epi32(_mm256_shuffle_epi8(p10, pick[ch]), a);
            const __m256i cd = _mm256_sub_epi32(_mm256_shuffle_epi8(p11, pick[ch]), c);
            const __m256 top = _mm256_fmadd_ps(ffx, _mm256_cvtepi32_ps(ab), _mm256_cvtepi32_ps(a));
            const __m256 bot = _mm256_fmadd_ps(ffx, _mm256_cvtepi32_ps(cd), _mm256_cvtepi32_ps(c));
            const __m256 m = _mm256_fmadd_ps(ffy, _mm256_sub_ps(bot, top), top);
            const __m256i r = _mm256_cvtps_epi32(m); // to nearest, ties to even
            const __m256 off = _mm256_and_ps(_mm256_sub_ps(m, _mm256_cvtepi32_ps(r)), absMask);
            doubtful = _mm256_or_ps(doubtful, _mm256_cmp_ps(off, nearHalf, _CMP_GT_OQ));
            v = _mm256_or_si256(v, _mm256_sll_epi32(r, _mm_cvtsi32_si128(8 * ch)));
        }
        v = _mm256_blendv_epi8(own, v, in);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i * 4), v);
        for (int redo = _mm256_movemask_ps(_mm256_and_ps(doubtful, _mm256_castsi256_ps(in)));
             redo; redo &= redo - 1) {
            const int32_t k = i + __builtin_ctz(unsigned(redo));
            storePixel(d + k * 4, smoothPixel(origin, stride, std::clamp(fx[k], -1.0e9f, 1.0e9f),
                                              std::clamp(fy[k], -1.0e9f, 1.0e9f),
                                              loadPixel(s + k * 4)));
        }
    }
    for (; i < n; ++i) {
        const float px = std::clamp(fx[i], -1.0e9f, 1.0e9f);
        const float py = std::clamp(fy[i], -1.0e9f, 1.0e9f);
        const uint32_t own = loadPixel(s + i * 4);
        storePixel(d + i * 4, smoothInside(px, py, lastX, lastY)
                                  ? smoothPixel(origin, stride, px, py, own)
                                  : own);
    }
}
#endif

} // namespace

BitsBuffer cBitFilter::RotateSmooth(double angle)
{
    const Turn t(angle, m_lastX, m_lastY);
    const std::size_t stride = m_bits.stride();
    const uint8_t* origin = m_bits.pixel(0, 0);
#ifdef TOLMAR_HAVE_AVX2_LOOPS
    // The wide loop indexes words from pixel (0, 0) in 32 bits, and a lane that is dropped
    // still reads pixel (1, 1).
    const bool wide = WideVectorsAllowed() && cpuHasAvx2Fma() && m_lastX >= 1 && m_lastY >= 1
                   && double(stride / 4) * (m_lastY + 2) < double(INT32_MAX);
#endif
    std::vector<float> fx(kTileColumns), fy(kTileColumns);
    // One row down in the result is (-sin, cos) in the picture: the pair of rows read
    // moves down by at most one (up by at most one for a cosine below 0), and a strip
    // further on lies kStripRows times as far.
    const auto rowBytes = std::ptrdiff_t(stride);
    const std::ptrdiff_t ahead =
        (t.c >= 0 ? 2 : -1) * rowBytes + std::ptrdiff_t(std::lrint(-t.sn)) * 4;
    const std::ptrdiff_t later = std::ptrdiff_t(std::lrint(kStripRows * double(t.c))) * rowBytes
                               + std::ptrdiff_t(std::lrint(-kStripRows * double(t.sn))) * 4;
    auto part = [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        rotatedRow(t.c, t.sn, float(y - t.cy), float(t.cx), float(t.cy), x0 - t.cx, n,
                   fx.data(), fy.data());
#ifdef TOLMAR_HAVE_AVX2_LOOPS
        if (wide) {
            smoothRowAvx2(fx.data(), fy.data(), n, origin, stride, m_lastX, m_lastY, s, d,
                          ahead, later);
            return;
        }
#endif
        for (int32_t i = 0; i < n; ++i) {
            const float px = std::clamp(fx[i], -1.0e9f, 1.0e9f);
            const float py = std::clamp(fy[i], -1.0e9f, 1.0e9f);
            const uint32_t own = loadPixel(s + i * 4);
            storePixel(d + i * 4, smoothInside(px, py, m_lastX, m_lastY)
                                      ? smoothPixel(origin, stride, px, py, own)
                                      : own);
        }
    };
    // A turned row reads along a slant through the picture, touching a new cache line at
    // almost every pixel. Rows are therefore worked out a strip at a time, in tiles, whose
    // sources lie close together, and each row is then copied from its strip.
    int32_t left, top, right, bottom;
    ScanBox({}, left, top, right, bottom);
    const int32_t width = std::max(right - left + 1, 0);
    std::vector<uint8_t> strip;
    int32_t stripTop = 0;
    int32_t stripRows = 0;
    return runFilter([&](const uint8_t*, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        if (y >= stripTop + stripRows) {
            stripTop = y;
            stripRows = std::min(kStripRows, bottom - y + 1);
            strip.resize(std::size_t(stripRows) * std::size_t(width) * 4);
            for (int32_t c = left; c <= right; c += kTileColumns)
                for (int32_t r = 0; r < stripRows; ++r)
                    part(m_bits.pixel(c, y + r),
                         strip.data() + (std::size_t(r) * width + std::size_t(c - left)) * 4,
                         std::min(kTileColumns, right - c + 1), c, y + r);
        }
        const std::size_t from = std::size_t(y - stripTop) * width + std::size_t(x0 - left);
        std::memcpy(d, strip.data() + from * 4, std::size_t(n) * 4);
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
