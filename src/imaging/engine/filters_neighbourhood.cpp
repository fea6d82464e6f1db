// Filters whose result for a pixel depends on the pixels around it: blurs, edge finders,
// rank filters, a quadrant smoother, a block averager, a scatter and the general kernel.
// Every read goes to the held image, at most two pixels past the edge (the guard pixels).

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"
#include "imaging/engine/wide_loops.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace tolmar::imaging {

namespace {

using Stride = std::ptrdiff_t;

// floor(num / dv) for 0 <= num < 2^24 and dv >= 1: the float quotient is off by at most
// one either way, and the remainder puts it right. Vectorises, unlike an integer division.
inline int32_t exactQuotient(int32_t num, int32_t dv, float inv)
{
    int32_t q = static_cast<int32_t>(static_cast<float>(num) * inv);
    const int32_t r = num - q * dv;
    q += (r >= dv) - (r < 0);
    return q;
}

// Largest divisor for which the numerators of Soften and Sharpen stay below 2^24.
constexpr int64_t kFastDivisor = 16384;

TOLMAR_WIDE void softenRow(const uint8_t* __restrict s, uint8_t* __restrict d, int32_t n,
                           Stride st, int32_t w, int32_t dv, float inv)
{
    for (int32_t i = 0; i < n * 4; ++i) {
        // Only amounts 102 to 104 (a negative centre weight) can leave the byte range.
        const int32_t num = s[i] * w + s[i - 4] + s[i + 4] + s[i - st] + s[i + st];
        d[i] = static_cast<uint8_t>(std::clamp(exactQuotient(num, dv, inv), 0, 255));
    }
}

TOLMAR_WIDE void sharpenRow(const uint8_t* __restrict s, uint8_t* __restrict d, int32_t n,
                            Stride st, int32_t w, int32_t dv, float inv)
{
    for (int32_t i = 0; i < n * 4; ++i) {
        const int32_t ring = s[i - 4] + s[i + 4] + s[i - st] + s[i + st] + s[i - st - 4]
                           + s[i - st + 4] + s[i + st - 4] + s[i + st + 4];
        // A negative quotient (towards zero) clamps to 0 like a negative numerator does.
        const int32_t num = std::max(s[i] * w - 2 * ring, 0);
        d[i] = static_cast<uint8_t>(std::min(exactQuotient(num, dv, inv), 255));
    }
}

TOLMAR_WIDE void laplaceRow(const uint8_t* __restrict s, uint8_t* __restrict d, int32_t n,
                            Stride st)
{
    for (int32_t i = 0; i < n * 4; ++i) {
        const int32_t ring = s[i - 4] + s[i + 4] + s[i - st] + s[i + st] + s[i - st - 4]
                           + s[i - st + 4] + s[i + st - 4] + s[i + st + 4];
        d[i] = static_cast<uint8_t>(std::clamp(8 * s[i] - ring, 0, 255));
    }
}

// The centre and four neighbours at the given byte offsets.
TOLMAR_WIDE void minRow(const uint8_t* __restrict s, uint8_t* __restrict d, int32_t n, Stride a,
                        Stride b, Stride c, Stride e)
{
    for (int32_t i = 0; i < n * 4; ++i)
        d[i] = std::min({s[i], s[i + a], s[i + b], s[i + c], s[i + e]});
}

TOLMAR_WIDE void maxRow(const uint8_t* __restrict s, uint8_t* __restrict d, int32_t n, Stride a,
                        Stride b, Stride c, Stride e)
{
    for (int32_t i = 0; i < n * 4; ++i)
        d[i] = std::max({s[i], s[i + a], s[i + b], s[i + c], s[i + e]});
}

#ifdef TOLMAR_HAVE_AVX2_LOOPS
#define TOLMAR_AT(p) _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p))

__attribute__((target("avx2"))) inline __m256i rankPick(__m256i x, __m256i y, bool max)
{
    return max ? _mm256_max_epu8(x, y) : _mm256_min_epu8(x, y);
}

// The same rank over 32 bytes at a time, the spare bytes put back by a blend in the same
// pass.
template <bool Max>
__attribute__((target("avx2"))) void rankAvx2(const uint8_t* s, uint8_t* d, int32_t n,
                                              Stride a, Stride b, Stride c, Stride e)
{
    const __m256i spare = _mm256_set1_epi32(int32_t(kSpareMask));
    const int32_t bytes = n * 4;
    int32_t i = 0;
    for (; i + 32 <= bytes; i += 32) {
        const __m256i v = TOLMAR_AT(s + i);
        const __m256i r = rankPick(
            rankPick(rankPick(v, TOLMAR_AT(s + i + a), Max),
                     rankPick(TOLMAR_AT(s + i + b), TOLMAR_AT(s + i + c), Max), Max),
            TOLMAR_AT(s + i + e), Max);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_blendv_epi8(r, v, spare));
    }
    for (; i < bytes; ++i) {
        const uint8_t r = Max ? std::max({s[i], s[i + a], s[i + b], s[i + c], s[i + e]})
                              : std::min({s[i], s[i + a], s[i + b], s[i + c], s[i + e]});
        d[i] = i % 4 == 3 ? s[i] : r;
    }
}

// Soften in 16-bit lanes for 0 <= w and dv <= 257, where the numerator stays below 2^16:
// q0 = num * floor(2^16 / dv) >> 16 is the quotient or one less, and the remainder
// settles which.
__attribute__((target("avx2"))) inline __m256i softenHalf(__m256i c, __m256i n4, __m256i vw,
                                                          __m256i vd, __m256i vdm1,
                                                          __m256i magic)
{
    const __m256i num = _mm256_add_epi16(_mm256_mullo_epi16(c, vw), n4);
    const __m256i q = _mm256_mulhi_epu16(num, magic);
    const __m256i r = _mm256_sub_epi16(num, _mm256_mullo_epi16(q, vd));
    // r >= dv, unsigned: max(r, dv - 1) differs from dv - 1 exactly when r > dv - 1; the
    // compare gives -1 where they are equal, so q - (equal ? 0 : -1).
    const __m256i equal = _mm256_cmpeq_epi16(_mm256_max_epu16(r, vdm1), vdm1);
    return _mm256_sub_epi16(q, _mm256_xor_si256(equal, _mm256_set1_epi16(-1)));
}

__attribute__((target("avx2"))) void softenAvx2(const uint8_t* s, uint8_t* d, int32_t n,
                                                Stride st, int32_t w, int32_t dv)
{
    const __m256i spare = _mm256_set1_epi32(int32_t(kSpareMask));
    const __m256i zero = _mm256_setzero_si256();
    const __m256i vw = _mm256_set1_epi16(int16_t(w));
    const __m256i vd = _mm256_set1_epi16(int16_t(dv));
    const __m256i vdm1 = _mm256_set1_epi16(int16_t(dv - 1));
    const __m256i magic = _mm256_set1_epi16(int16_t(uint16_t(65536 / dv)));
    const int32_t bytes = n * 4;
    int32_t i = 0;
    for (; i + 32 <= bytes; i += 32) {
        const __m256i v = TOLMAR_AT(s + i);
        const __m256i l = TOLMAR_AT(s + i - 4), r = TOLMAR_AT(s + i + 4);
        const __m256i u = TOLMAR_AT(s + i - st), b = TOLMAR_AT(s + i + st);
        const __m256i lo = _mm256_add_epi16(
            _mm256_add_epi16(_mm256_unpacklo_epi8(l, zero), _mm256_unpacklo_epi8(r, zero)),
            _mm256_add_epi16(_mm256_unpacklo_epi8(u, zero), _mm256_unpacklo_epi8(b, zero)));
        const __m256i hi = _mm256_add_epi16(
            _mm256_add_epi16(_mm256_unpackhi_epi8(l, zero), _mm256_unpackhi_epi8(r, zero)),
            _mm256_add_epi16(_mm256_unpackhi_epi8(u, zero), _mm256_unpackhi_epi8(b, zero)));
        const __m256i q = _mm256_packus_epi16(
            softenHalf(_mm256_unpacklo_epi8(v, zero), lo, vw, vd, vdm1, magic),
            softenHalf(_mm256_unpackhi_epi8(v, zero), hi, vw, vd, vdm1, magic));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i), _mm256_blendv_epi8(q, v, spare));
    }
    for (; i < bytes; ++i)
        d[i] = i % 4 == 3 ? s[i]
                          : uint8_t((s[i] * w + s[i - 4] + s[i + 4] + s[i - st] + s[i + st]) / dv);
}

// The general kernel in 16-bit lanes, the sum of each 32-byte run held in registers over
// all its taps: no accumulator row goes to memory and back. The caller guarantees that
// every partial sum, the offset included, stays within 16 bits, so the lanes add exactly
// what the plain loop adds, and the saturating pack is the clamp to 0..255.
__attribute__((target("avx2"))) void maskAvx2(const uint8_t* s, uint8_t* d, int32_t n,
                                              const Stride* at, const int16_t* k, int32_t taps,
                                              int16_t offset)
{
    const __m256i spare = _mm256_set1_epi32(int32_t(kSpareMask));
    const __m256i zero = _mm256_setzero_si256();
    const int32_t bytes = n * 4;
    int32_t i = 0;
    for (; i + 32 <= bytes; i += 32) {
        __m256i lo = _mm256_set1_epi16(offset);
        __m256i hi = lo;
        for (int32_t t = 0; t < taps; ++t) {
            const __m256i v = TOLMAR_AT(s + i + at[t]);
            const __m256i vl = _mm256_unpacklo_epi8(v, zero);
            const __m256i vh = _mm256_unpackhi_epi8(v, zero);
            // Weights of one either way, the common case, need no multiply.
            if (k[t] == 1) {
                lo = _mm256_add_epi16(lo, vl);
                hi = _mm256_add_epi16(hi, vh);
            } else if (k[t] == -1) {
                lo = _mm256_sub_epi16(lo, vl);
                hi = _mm256_sub_epi16(hi, vh);
            } else {
                const __m256i w = _mm256_set1_epi16(k[t]);
                lo = _mm256_add_epi16(lo, _mm256_mullo_epi16(vl, w));
                hi = _mm256_add_epi16(hi, _mm256_mullo_epi16(vh, w));
            }
        }
        const __m256i q = _mm256_packus_epi16(lo, hi);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + i),
                            _mm256_blendv_epi8(q, TOLMAR_AT(s + i), spare));
    }
    for (; i < bytes; ++i) {
        int32_t sum = offset;
        for (int32_t t = 0; t < taps; ++t)
            sum += k[t] * s[i + at[t]];
        d[i] = i % 4 == 3 ? s[i] : uint8_t(std::clamp(sum, 0, 255));
    }
}
#undef TOLMAR_AT
#endif

// One tap of the general kernel over a run of bytes.
TOLMAR_WIDE void addTap32(const uint8_t* __restrict s, int32_t* __restrict acc, int32_t bytes,
                          int32_t k)
{
    for (int32_t i = 0; i < bytes; ++i)
        acc[i] += k * s[i];
}

TOLMAR_WIDE void addTap64(const uint8_t* __restrict s, int64_t* __restrict acc, int32_t bytes,
                          int64_t k)
{
    for (int32_t i = 0; i < bytes; ++i)
        acc[i] += k * s[i];
}

TOLMAR_WIDE void addTap16(const uint8_t* __restrict s, int16_t* __restrict acc, int32_t bytes,
                          int16_t k)
{
    for (int32_t i = 0; i < bytes; ++i)
        acc[i] = static_cast<int16_t>(acc[i] + k * s[i]);
}

TOLMAR_WIDE void clampOffsetRow16(const int16_t* __restrict acc, uint8_t* __restrict d,
                                  int32_t bytes, int16_t offset)
{
    for (int32_t i = 0; i < bytes; ++i)
        d[i] = static_cast<uint8_t>(std::clamp(acc[i] + offset, 0, 255));
}

TOLMAR_WIDE void clampOffsetRow(const int32_t* __restrict acc, uint8_t* __restrict d,
                                int32_t bytes, int32_t offset)
{
    for (int32_t i = 0; i < bytes; ++i)
        d[i] = static_cast<uint8_t>(std::clamp(acc[i] + offset, 0, 255));
}

} // namespace

BitsBuffer cBitFilter::Soften(int32_t amount, bool smallerBox)
{
    // (c * (101 - amount) + N + S + W + E) / (105 - amount): at 105 and above the divisor
    // is zero or negative.
    if (amount >= 105)
        return unchanged();
    const int64_t w = 101 - int64_t(amount);
    const int64_t dv = 105 - int64_t(amount);
    ScanShape shape = ScanShape::margin(1);
    if (smallerBox)
        shape.marginRight = shape.marginBottom = 3;
    const Stride st = static_cast<Stride>(m_bits.stride());
#ifdef TOLMAR_HAVE_AVX2_LOOPS
    if (w >= 0 && dv >= 2 && dv <= 257 && m_allowWideVectors && cpuHasAvx2())
        return runFilter(
            [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
                softenAvx2(s, d, n, st, int32_t(w), int32_t(dv));
            },
            shape);
#endif
    if (dv <= kFastDivisor) {
        const float inv = 1.0f / static_cast<float>(dv);
        return runFilter(
            [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
                inChunks(s, d, n, [&](const uint8_t* a, uint8_t* b, int32_t m) {
                    softenRow(a, b, m, st, int32_t(w), int32_t(dv), inv);
                });
            },
            shape);
    }
    return runFilter(
        [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
            for (int32_t i = 0; i < n * 4; ++i)
                if (i % 4 != 3)
                    d[i] = clampByte((s[i] * w + s[i - 4] + s[i + 4] + s[i - st] + s[i + st])
                                     / dv);
                else
                    d[i] = s[i];
        },
        shape);
}

BitsBuffer cBitFilter::Sharpen(int32_t amount)
{
    // (c * (124 - amount) - 2 * ring) / (108 - amount), clamped.
    if (amount >= 108)
        return unchanged();
    const int64_t w = 124 - int64_t(amount);
    const int64_t dv = 108 - int64_t(amount);
    const Stride st = static_cast<Stride>(m_bits.stride());
    if (dv + 16 <= kFastDivisor) {
        const float inv = 1.0f / static_cast<float>(dv);
        return runFilter(
            [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
                inChunks(s, d, n, [&](const uint8_t* a, uint8_t* b, int32_t m) {
                    sharpenRow(a, b, m, st, int32_t(w), int32_t(dv), inv);
                });
            },
            1);
    }
    return runFilter(
        [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
            for (int32_t i = 0; i < n * 4; ++i) {
                if (i % 4 == 3) {
                    d[i] = s[i];
                    continue;
                }
                const int64_t ring = s[i - 4] + s[i + 4] + s[i - st] + s[i + st]
                                   + s[i - st - 4] + s[i - st + 4] + s[i + st - 4]
                                   + s[i + st + 4];
                d[i] = clampByte((s[i] * w - 2 * ring) / dv);
            }
        },
        1);
}

namespace {

// The grey of Emboss and Engrave at (x, y) of the held image.
inline uint8_t embossAt(const BitsBuffer& b, int32_t x, int32_t y, double k, bool engrave)
{
    const uint8_t* p = b.pixel(x, y);
    const uint8_t* q = b.pixel(x + 1, y + 1);
    int64_t sum = 0;
    for (int c = 0; c < 3; ++c) {
        const int32_t diff = engrave ? q[c] - p[c] : p[c] - q[c];
        sum += roundEven(std::fabs(k * diff + 128));
    }
    return clampByte(sum / 3);
}

} // namespace

namespace {

// The last column and row are not computed: they repeat the result of the column or row
// before them (the corner that of its diagonal neighbour).
BitsBuffer relief(cBitFilter& f, int32_t amount, bool engrave)
{
    const double k = amount / 10.0;
    const int32_t lastX = f.BitsWidth() - 1;
    const int32_t lastY = f.BitsHeight() - 1;
    const BitsBuffer& bits = f.Bits();
    return f.runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int32_t yy = y == lastY ? y - 1 : y;
        for (int32_t i = 0; i < n; ++i) {
            const int32_t x = x0 + i;
            const uint8_t g = embossAt(bits, x == lastX ? x - 1 : x, yy, k, engrave);
            storePixel(d + i * 4, g * 0x010101u | (loadPixel(s + i * 4) & kSpareMask));
        }
    });
}

} // namespace

BitsBuffer cBitFilter::Emboss(int32_t amount)
{
    return relief(*this, amount, false);
}

BitsBuffer cBitFilter::Engrave(int32_t amount)
{
    return relief(*this, amount, true);
}

BitsBuffer cBitFilter::Contour(int32_t level, Colour colour)
{
    const Stride st = static_cast<Stride>(m_bits.stride());
    const uint32_t paint = uint32_t(blueOf(colour)) | uint32_t(greenOf(colour)) << 8
                         | uint32_t(redOf(colour)) << 16;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        inChunks(s, d, n, [&](const uint8_t* a, uint8_t* b, int32_t m) {
            laplaceRow(a, b, m, st);
            for (int32_t i = 0; i < m; ++i) {
                uint8_t* e = b + i * 4;
                if ((e[0] + e[1] + e[2]) / 3 >= level)
                    storePixel(e, paint);
            }
        });
    });
}

BitsBuffer cBitFilter::Sketch(int32_t level, bool blackAndWhite, Colour colour)
{
    const Stride st = static_cast<Stride>(m_bits.stride());
    const uint32_t paint = uint32_t(blueOf(colour)) | uint32_t(greenOf(colour)) << 8
                         | uint32_t(redOf(colour)) << 16;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i) {
            const uint8_t* p = s + i * 4;
            int32_t sum = 0;
            for (int c = 0; c < 3; ++c) {
                const int32_t ring = p[c - 4] + p[c + 4] + p[c - st] + p[c + st]
                                   + p[c - st - 4] + p[c - st + 4] + p[c + st - 4]
                                   + p[c + st + 4];
                sum += 8 * p[c] - ring + 255;
            }
            const bool background = sum / 3 > level;
            const uint32_t spare = loadPixel(p) & kSpareMask;
            uint32_t v = loadPixel(p);
            if (blackAndWhite)
                v = (background ? 0xFFFFFFu : 0u) | spare;
            else if (background)
                v = paint | spare;
            storePixel(d + i * 4, v);
        }
    });
}

namespace {

template <bool Diagonal>
BitsBuffer rankFilter(cBitFilter& f, int32_t mode, Stride st)
{
    const bool wide = f.WideVectorsAllowed() && cpuHasAvx2();
    // Mode 0 takes the minimum and keeps off the box's edge; mode 1 takes the maximum over
    // the whole box. Any other mode writes the starting value, 0.
    const Stride o[4] = {Diagonal ? -st - 4 : -4, Diagonal ? -st + 4 : 4,
                         Diagonal ? st - 4 : -st, Diagonal ? st + 4 : st};
    if (mode == 0 || mode == 1)
        return f.runFilter(
            [&o, mode, wide](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
#ifdef TOLMAR_HAVE_AVX2_LOOPS
                if (wide)
                    return mode == 0 ? rankAvx2<false>(s, d, n, o[0], o[1], o[2], o[3])
                                     : rankAvx2<true>(s, d, n, o[0], o[1], o[2], o[3]);
#endif
                (void)wide;
                inChunks(s, d, n, [&o, mode](const uint8_t* a, uint8_t* b, int32_t m) {
                    if (mode == 0)
                        minRow(a, b, m, o[0], o[1], o[2], o[3]);
                    else
                        maxRow(a, b, m, o[0], o[1], o[2], o[3]);
                });
            },
            1 - mode);
    return f.runFilter(
        [](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
            for (int32_t i = 0; i < n; ++i)
                storePixel(d + i * 4, loadPixel(s + i * 4) & kSpareMask);
        },
        0);
}

} // namespace

BitsBuffer cBitFilter::RankFilterN4(int32_t mode)
{
    return rankFilter<false>(*this, mode, static_cast<Stride>(m_bits.stride()));
}

BitsBuffer cBitFilter::RankFilterND(int32_t mode)
{
    return rankFilter<true>(*this, mode, static_cast<Stride>(m_bits.stride()));
}

BitsBuffer cBitFilter::Dissolve()
{
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        for (int32_t i = 0; i < n; ++i) {
            const int32_t x = x0 + i;
            int32_t bestDev = -1;
            int32_t best[3] = {0, 0, 0};
            for (int w = 0; w < 4; ++w) {
                const int32_t wx = w % 2 == 0 ? x - 2 : x;
                const int32_t wy = w < 2 ? y - 2 : y;
                int32_t sum[3] = {0, 0, 0};
                for (int32_t j = 0; j < 3; ++j)
                    for (int32_t k = 0; k < 3; ++k) {
                        const uint8_t* p = m_bits.pixel(wx + k, wy + j);
                        sum[0] += p[0];
                        sum[1] += p[1];
                        sum[2] += p[2];
                    }
                const int32_t mean[3] = {sum[0] / 9, sum[1] / 9, sum[2] / 9};
                int32_t dev = 0;
                for (int32_t j = 0; j < 3; ++j)
                    for (int32_t k = 0; k < 3; ++k) {
                        const uint8_t* p = m_bits.pixel(wx + k, wy + j);
                        dev += std::abs(p[0] - mean[0]) + std::abs(p[1] - mean[1])
                             + std::abs(p[2] - mean[2]);
                    }
                if (bestDev < 0 || dev < bestDev) {
                    bestDev = dev;
                    std::copy(mean, mean + 3, best);
                }
            }
            storePixel(d + i * 4, uint32_t(best[0]) | uint32_t(best[1]) << 8
                                      | uint32_t(best[2]) << 16
                                      | (loadPixel(s + i * 4) & kSpareMask));
        }
    });
}

BitsBuffer cBitFilter::Pixelize(int32_t size)
{
    if (size <= 1)
        return unchanged();
    int32_t left, top, right, bottom;
    if (!ScanBox({}, left, top, right, bottom))
        return unchanged();
    // Every region pixel takes the mean of its block; the block counts all of its image
    // pixels, in the region or not. Means are worked out one row of blocks at a time, as
    // the scan reaches it.
    const int64_t firstBlock = left / size;
    const int64_t blocks = right / size - firstBlock + 1;
    std::vector<uint32_t> means(static_cast<std::size_t>(blocks));
    int64_t meansRow = -1;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int64_t by = y / size;
        if (by != meansRow) {
            meansRow = by;
            const int64_t y0 = by * size;
            const int64_t y1 = std::min<int64_t>(y0 + size - 1, m_lastY);
            for (int64_t b = 0; b < blocks; ++b) {
                const int64_t xa = (firstBlock + b) * size;
                const int64_t xb = std::min<int64_t>(xa + size - 1, m_lastX);
                int64_t sum[3] = {0, 0, 0};
                for (int64_t yy = y0; yy <= y1; ++yy) {
                    const uint8_t* p = m_bits.pixel(int32_t(xa), int32_t(yy));
                    for (int64_t xx = xa; xx <= xb; ++xx, p += 4) {
                        sum[0] += p[0];
                        sum[1] += p[1];
                        sum[2] += p[2];
                    }
                }
                const int64_t count = (xb - xa + 1) * (y1 - y0 + 1);
                means[b] = uint32_t(sum[0] / count) | uint32_t(sum[1] / count) << 8
                         | uint32_t(sum[2] / count) << 16;
            }
        }
        for (int32_t i = 0; i < n; ++i)
            storePixel(d + i * 4, means[(x0 + i) / size - firstBlock]
                                      | (loadPixel(s + i * 4) & kSpareMask));
    });
}

BitsBuffer cBitFilter::Diffuse(int32_t width, int32_t height)
{
    const double halfW = width / 2.0;
    const double halfH = height / 2.0;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        for (int32_t i = 0; i < n; ++i) {
            // Both numbers are drawn for every pixel, in scan order, whatever they hit.
            const double r1 = NextRandom();
            const double r2 = NextRandom();
            const int64_t sx = roundEven(r1 * width + (x0 + i) - halfW);
            const int64_t sy = roundEven(r2 * height + y - halfH);
            uint32_t v = loadPixel(s + i * 4);
            if (sx >= 0 && sx <= m_lastX && sy >= 0 && sy <= m_lastY)
                v = (loadPixel(m_bits.pixel(int32_t(sx), int32_t(sy))) & ~kSpareMask)
                  | (v & kSpareMask);
            storePixel(d + i * 4, v);
        }
    });
}

BitsBuffer cBitFilter::MaskFilter(const std::vector<int32_t>& kernel, int32_t size,
                                  const MaskFilterArgs& args)
{
    if (size < 1 || size % 2 == 0 || size > kMaxMaskSize
        || kernel.size() != std::size_t(size) * std::size_t(size))
        return unchanged();
    const int32_t half = size / 2;
    ScanShape shape = ScanShape::margin(args.holdInside ? 0 : half);
    if (args.holdInside) {
        shape.maxX = int64_t(m_lastX) + 1 - half;
        shape.maxY = int64_t(m_lastY) + 1 - half;
    }
    // Whatever the box, no read goes past the guard pixels.
    shape.minX = std::max<int64_t>(shape.minX, half - BitsBuffer::kGuard);
    shape.minY = std::max<int64_t>(shape.minY, half - BitsBuffer::kGuard);
    shape.maxX = std::min<int64_t>(shape.maxX, int64_t(m_lastX) + BitsBuffer::kGuard - half);
    shape.maxY = std::min<int64_t>(shape.maxY, int64_t(m_lastY) + BitsBuffer::kGuard - half);

    int64_t weight = 0;
    for (int32_t k : kernel)
        weight += std::abs(int64_t(k));
    // A plain kernel (no scale, no flags) whose sums fit 32 bits takes the narrow path.
    const bool plain = args.scaleMul == 1 && (args.scaleDiv == 1 || args.scaleDiv == 0)
                    && !args.absolute && args.channels == 7 && !args.invert && !args.grey;
    const bool narrow = weight * 255 + std::abs(int64_t(args.offset)) < (int64_t(1) << 31);
    const Stride st = static_cast<Stride>(m_bits.stride());
    const int64_t div = args.scaleDiv == 0 ? 1 : args.scaleDiv;

    // A plain kernel sums in the narrowest accumulator its weights allow: 16 bits give
    // twice the lanes of 32.
    auto plainSums = [&]<typename Acc>(void (*addTap)(const uint8_t*, Acc*, int32_t, Acc),
                                       void (*clampRow)(const Acc*, uint8_t*, int32_t, Acc)) {
        std::vector<Acc> acc;
        return runFilter(
            [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
                inChunks(s, d, n, [&](const uint8_t* a, uint8_t* b, int32_t m) {
                    acc.assign(std::size_t(m) * 4, 0);
                    for (int32_t j = 0; j < size; ++j)
                        for (int32_t i = 0; i < size; ++i)
                            if (const int32_t k = kernel[std::size_t(j) * size + i])
                                addTap(a + (j - half) * st + (i - half) * 4, acc.data(), m * 4,
                                       Acc(k));
                    clampRow(acc.data(), b, m * 4, Acc(args.offset));
                });
            },
            shape);
    };
    const bool fits16 = plain && weight * 255 + std::abs(int64_t(args.offset)) < (1 << 15);
#ifdef TOLMAR_HAVE_AVX2_LOOPS
    if (fits16 && WideVectorsAllowed() && cpuHasAvx2()) {
        std::vector<Stride> at;
        std::vector<int16_t> k;
        for (int32_t j = 0; j < size; ++j)
            for (int32_t i = 0; i < size; ++i)
                if (const int32_t w = kernel[std::size_t(j) * size + i]) {
                    at.push_back((j - half) * st + (i - half) * 4);
                    k.push_back(int16_t(w));
                }
        return runFilter(
            [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
                maskAvx2(s, d, n, at.data(), k.data(), int32_t(k.size()), int16_t(args.offset));
            },
            shape);
    }
#endif
    if (fits16)
        return plainSums(&addTap16, &clampOffsetRow16);
    if (plain && narrow)
        return plainSums(&addTap32, &clampOffsetRow);
    std::vector<int64_t> acc;
    return runFilter(
        [&](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
            acc.assign(std::size_t(n) * 4, 0);
            for (int32_t j = 0; j < size; ++j)
                for (int32_t i = 0; i < size; ++i)
                    if (const int32_t k = kernel[std::size_t(j) * size + i])
                        addTap64(s + (j - half) * st + (i - half) * 4, acc.data(), n * 4, k);
            for (int32_t p = 0; p < n; ++p) {
                int32_t v[3];
                for (int c = 0; c < 3; ++c) {
                    int64_t sum = acc[std::size_t(p) * 4 + c];
                    if (args.absolute)
                        sum = std::abs(sum);
                    // |sum| < 2^48 and |scaleMul| <= 2^31: the product needs 128 bits.
                    const __int128 scaled = __int128(sum) * args.scaleMul / div + args.offset;
                    v[c] = scaled < 0 ? 0 : (scaled > 255 ? 255 : int32_t(scaled));
                    if (args.invert)
                        v[c] = 255 - v[c];
                }
                if (args.grey)
                    v[0] = v[1] = v[2] = (v[0] + v[1] + v[2]) / 3;
                uint8_t* o = d + p * 4;
                const uint8_t* q = s + p * 4;
                for (int c = 0; c < 3; ++c)
                    o[c] = args.channels & (1 << c) ? uint8_t(v[c]) : q[c];
                o[3] = q[3];
            }
        },
        shape);
}

} // namespace tolmar::imaging
