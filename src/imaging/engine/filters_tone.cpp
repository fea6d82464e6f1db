// Filters whose result for a channel depends on that pixel alone and mostly on one byte:
// each builds its tables once and then makes one pass.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tolmar::imaging {

namespace {

using Table = std::array<uint8_t, 256>;

Table clampedShiftTable(int64_t amount)
{
    Table t{};
    for (int i = 0; i < 256; ++i)
        t[i] = clampByte(i + amount);
    return t;
}

// round(0.222 R + 0.707 G + 0.071 B) without floating point: the weights are thousandths,
// so the exact sum is S / 1000 and only an exact half can round differently from the
// double expression; those rare pixels take the double expression itself.
inline uint8_t greyOf(uint32_t b, uint32_t g, uint32_t r)
{
    const uint32_t s = 222 * r + 707 * g + 71 * b;
    const uint32_t q = s / 1000;
    const uint32_t rem = s - q * 1000;
    if (rem != 500) [[likely]]
        return static_cast<uint8_t>(q + (rem > 500));
    return static_cast<uint8_t>(roundEven(0.222 * r + 0.707 * g + 0.071 * b));
}

// round(wr * R + wg * G + wb * B) for n pixels into out, as the double expression reads.
void weightedLevels(const uint8_t* s, int32_t n, double wr, double wg, double wb, int32_t* out)
{
    int32_t i = 0;
#if defined(__SSE2__)
    // Two pixels per register; cvtpd2dq rounds by the current mode, nearest with ties to
    // even, exactly as lrint does.
    const __m128d vr = _mm_set1_pd(wr);
    const __m128d vg = _mm_set1_pd(wg);
    const __m128d vb = _mm_set1_pd(wb);
    const __m128i low = _mm_set1_epi32(0xFF);
    for (; i + 4 <= n; i += 4) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i * 4));
        const __m128i b = _mm_and_si128(v, low);
        const __m128i g = _mm_and_si128(_mm_srli_epi32(v, 8), low);
        const __m128i r = _mm_and_si128(_mm_srli_epi32(v, 16), low);
        auto half = [&](__m128i bb, __m128i gg, __m128i rr) {
            return _mm_cvtpd_epi32(_mm_add_pd(_mm_add_pd(_mm_mul_pd(vr, _mm_cvtepi32_pd(rr)),
                                                         _mm_mul_pd(vg, _mm_cvtepi32_pd(gg))),
                                              _mm_mul_pd(vb, _mm_cvtepi32_pd(bb))));
        };
        const __m128i y01 = half(b, g, r);
        const __m128i y23 = half(_mm_shuffle_epi32(b, 0x0E), _mm_shuffle_epi32(g, 0x0E),
                                 _mm_shuffle_epi32(r, 0x0E));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi64(y01, y23));
    }
#endif
    for (; i < n; ++i) {
        const uint8_t* p = s + i * 4;
        out[i] = static_cast<int32_t>(roundEven(wr * p[2] + wg * p[1] + wb * p[0]));
    }
}

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define TOLMAR_HAVE_VBMI_PATH 1

// Byte tables held in registers: vpermi2b looks up 64 bytes at once in 128 entries, two
// of them and a blend on the top bit cover 256. A run of pixels costs a few instructions
// per 16 pixels, so the pass runs at memory speed.
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) inline __m512i
lookup256(const __m512i* t, __m512i x)
{
    const __m512i lo = _mm512_permutex2var_epi8(t[0], x, t[1]);
    const __m512i hi = _mm512_permutex2var_epi8(t[2], x, t[3]);
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(x), lo, hi);
}

// `from` names, for blue, green and red of the result, the channel each is read from.
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) void
tablesVbmi(const uint8_t* s, uint8_t* d, int32_t n, const uint8_t* t0, const uint8_t* t1,
           const uint8_t* t2, const int32_t* from = nullptr)
{
    alignas(64) uint8_t order[64];
    for (int i = 0; i < 64; ++i)
        order[i] = static_cast<uint8_t>(i % 4 == 3 || !from ? i : (i & ~3) + from[i % 4]);
    const __m512i shuffle = _mm512_load_si512(order);
    const uint8_t* tabs[3] = {t0, t1, t2};
    __m512i t[3][4];
    for (int c = 0; c < 3; ++c)
        for (int k = 0; k < 4; ++k)
            t[c][k] = _mm512_loadu_si512(tabs[c] + 64 * k);
    const bool same = t0 == t1 && t1 == t2;
    // Byte lanes by channel: blue 0, green 1, red 2, spare 3 of every pixel.
    const __mmask64 green = 0x2222222222222222ull;
    const __mmask64 red = 0x4444444444444444ull;
    const __mmask64 spare = 0x8888888888888888ull;
    const std::size_t bytes = std::size_t(n) * 4;
    for (std::size_t i = 0; i < bytes; i += 64) {
        const std::size_t left = bytes - i;
        const __mmask64 m = left >= 64 ? ~0ull : (1ull << left) - 1;
        const __m512i raw = _mm512_maskz_loadu_epi8(m, s + i);
        const __m512i x = from ? _mm512_shuffle_epi8(raw, shuffle) : raw;
        __m512i out = lookup256(t[0], x);
        if (!same) {
            out = _mm512_mask_blend_epi8(green, out, lookup256(t[1], x));
            out = _mm512_mask_blend_epi8(red, out, lookup256(t[2], x));
        }
        out = _mm512_mask_blend_epi8(spare, out, raw);
        _mm512_mask_storeu_epi8(d + i, m, out);
    }
}

bool haveVbmi()
{
    static const bool yes = __builtin_cpu_supports("avx512vbmi")
                         && __builtin_cpu_supports("avx512bw");
    return yes;
}
#endif

} // namespace

BitsBuffer cBitFilter::applyTables(const uint8_t* t0, const uint8_t* t1, const uint8_t* t2,
                                   int32_t yStep)
{
    // Tables of whole pixel words: lookups ORed together and one store per pixel instead
    // of four byte stores. On a large image blue and green share one 64K-entry table, so
    // that a pixel costs two lookups; building it is worth it only past some 100K pixels.
#ifdef TOLMAR_HAVE_VBMI_PATH
    if (m_allowWideVectors && haveVbmi())
        return runFilter(
            [t0, t1, t2](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
                tablesVbmi(s, d, n, t0, t1, t2);
            },
            0, yStep);
#endif
    std::array<uint32_t, 256 * 3> w{};
    for (int i = 0; i < 256; ++i) {
        w[i] = t0[i];
        w[256 + i] = uint32_t(t1[i]) << 8;
        w[512 + i] = uint32_t(t2[i]) << 16;
    }
    std::vector<uint16_t> pair;
    if (m_region && !m_region->isEmpty()) {
        const Rect box = m_region->box();
        const int64_t area = std::min<int64_t>(int64_t(box.right) - box.left, m_lastX + 1)
                           * std::min<int64_t>(int64_t(box.bottom) - box.top, m_lastY + 1);
        if (area >= kPairTableMinPixels) {
            pair.resize(65536);
            for (int g = 0; g < 256; ++g)
                for (int b = 0; b < 256; ++b)
                    pair[g << 8 | b] = static_cast<uint16_t>(t0[b] | t1[g] << 8);
        }
    }
    const uint16_t* pt = pair.empty() ? nullptr : pair.data();
    return runFilter(
        [&w, pt](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
            const uint32_t* w0 = w.data();
            const uint32_t* w1 = w0 + 256;
            const uint32_t* w2 = w0 + 512;
            int32_t i = 0;
            if (pt) {
                for (; i + 2 <= n; i += 2) {
                    uint64_t p;
                    std::memcpy(&p, s + i * 4, 8);
                    const uint64_t lo = pt[p & 0xFFFF] | w2[(p >> 16) & 255];
                    const uint64_t hi = pt[(p >> 32) & 0xFFFF] | w2[(p >> 48) & 255];
                    const uint64_t o = lo | hi << 32 | (p & 0xFF000000FF000000ull);
                    std::memcpy(d + i * 4, &o, 8);
                }
            } else {
                for (; i + 2 <= n; i += 2) {
                    uint64_t p;
                    std::memcpy(&p, s + i * 4, 8);
                    const uint64_t lo = w0[p & 255] | w1[(p >> 8) & 255] | w2[(p >> 16) & 255];
                    const uint64_t hi = w0[(p >> 32) & 255] | w1[(p >> 40) & 255]
                                      | w2[(p >> 48) & 255];
                    const uint64_t o = lo | hi << 32 | (p & 0xFF000000FF000000ull);
                    std::memcpy(d + i * 4, &o, 8);
                }
            }
            for (; i < n; ++i) {
                const uint32_t p = loadPixel(s + i * 4);
                storePixel(d + i * 4, w0[p & 255] | w1[(p >> 8) & 255] | w2[(p >> 16) & 255]
                                          | (p & kSpareMask));
            }
        },
        0, yStep);
}

BitsBuffer cBitFilter::Brightness(int32_t amount)
{
    const Table t = clampedShiftTable(amount);
    const int32_t mag = amount < 0 ? (amount < -255 ? 255 : -amount) : (amount > 255 ? 255 : amount);
    const bool up = amount >= 0;
    return runFilter([&t, mag, up](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        int32_t i = 0;
#if defined(__SSE2__)
        // A clamped add of one amount is exactly a saturating byte add; the spare byte gets 0.
        const __m128i k = _mm_set1_epi32(mag | mag << 8 | mag << 16);
        for (; i + 4 <= n; i += 4) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i * 4));
            const __m128i r = up ? _mm_adds_epu8(v, k) : _mm_subs_epu8(v, k);
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i * 4), r);
        }
#endif
        for (; i < n; ++i) {
            d[i * 4] = t[s[i * 4]];
            d[i * 4 + 1] = t[s[i * 4 + 1]];
            d[i * 4 + 2] = t[s[i * 4 + 2]];
            d[i * 4 + 3] = s[i * 4 + 3];
        }
    });
}

BitsBuffer cBitFilter::Invert()
{
    return runFilter([](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        // 255 - c is c with its bits flipped; the spare byte is left alone.
        for (int32_t i = 0; i < n; ++i)
            storePixel(d + i * 4, loadPixel(s + i * 4) ^ 0x00FFFFFFu);
    });
}

BitsBuffer cBitFilter::Contrast(int32_t percent)
{
    // The mean is the whole image's, whatever the region.
    int64_t sum = 0;
    for (int32_t y = 0; y <= m_lastY; ++y) {
        const uint8_t* p = m_bits.pixel(0, y);
        for (int32_t x = 0; x <= m_lastX; ++x, p += 4)
            sum += (p[0] + p[1] + p[2]) / 3;
    }
    const int64_t pixels = int64_t(m_lastX + 1) * (m_lastY + 1);
    const int64_t mean = pixels > 0 ? sum / pixels : 0;
    const double k = (percent + 100) / 100.0;
    // Table values are held within 2^29 so that the repair below cannot overflow; only a
    // percent in the millions reaches that bound.
    constexpr int64_t bound = int64_t(1) << 29;
    std::array<int32_t, 256> t{};
    std::array<uint8_t, 256> fits{};
    std::array<uint32_t, 256> w{};
    for (int i = 0; i < 256; ++i) {
        t[i] = static_cast<int32_t>(std::clamp(roundEven((i - mean) * k + mean), -bound, bound));
        fits[i] = t[i] >= 0 && t[i] <= 255;
        w[i] = fits[i] ? static_cast<uint32_t>(t[i]) : 0;
    }

    return runFilter([&t, &fits, &w](const uint8_t* s, uint8_t* d, int32_t n, int32_t,
                                     int32_t) {
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            const uint32_t p = loadPixel(s);
            // Most pixels need no repair: all three table values already in range.
            if (fits[p & 255] & fits[(p >> 8) & 255] & fits[(p >> 16) & 255]) {
                storePixel(d, w[p & 255] | w[(p >> 8) & 255] << 8 | w[(p >> 16) & 255] << 16
                                  | (p & kSpareMask));
                continue;
            }
            int32_t v0 = t[p & 255];
            int32_t v1 = t[(p >> 8) & 255];
            int32_t v2 = t[(p >> 16) & 255];
            // Out-of-range channels hand half their excess to the others until all fit,
            // which keeps the hue where a clamp would bleach it. Each round halves the
            // excess, so the loop ends. A negative value reads as a huge unsigned one.
            while ((uint32_t(v0) | uint32_t(v1) | uint32_t(v2)) > 255) {
                if (v0 < 1 && v1 < 1 && v2 < 1) {
                    v0 = v1 = v2 = 0;
                    break;
                }
                if (v0 >= 255 && v1 >= 255 && v2 >= 255) {
                    v0 = v1 = v2 = 255;
                    break;
                }
                if (uint32_t(v0) > 255) {
                    const int32_t limit = v0 < 0 ? 0 : 255;
                    const int32_t half = (v0 - limit) / 2;
                    v0 = limit;
                    v1 += half;
                    v2 += half;
                } else if (uint32_t(v1) > 255) {
                    const int32_t limit = v1 < 0 ? 0 : 255;
                    const int32_t half = (v1 - limit) / 2;
                    v1 = limit;
                    v0 += half;
                    v2 += half;
                } else {
                    const int32_t limit = v2 < 0 ? 0 : 255;
                    const int32_t half = (v2 - limit) / 2;
                    v2 = limit;
                    v0 += half;
                    v1 += half;
                }
            }
            storePixel(d, uint32_t(v0) | uint32_t(v1) << 8 | uint32_t(v2) << 16
                              | (p & kSpareMask));
        }
    });
}

BitsBuffer cBitFilter::GammaCorrection(int32_t percent)
{
    const double g = (percent + 100) / 100.0;
    Table t{};
    // A gamma of zero or below has no curve: everything goes black.
    if (g > 0)
        for (int i = 0; i < 256; ++i)
            t[i] = clampByte(roundEven(255 * std::pow(i / 255.0, 1 / g)));
    return applyTables(t.data(), t.data(), t.data());
}

BitsBuffer cBitFilter::GreyScale()
{
    return runFilter([](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        int32_t i = 0;
#if defined(__SSE2__)
        // The very double expression, two pixels per register; cvtpd2dq rounds by the
        // current mode, nearest with ties to even, exactly as lrint does.
        const __m128d wr = _mm_set1_pd(0.222);
        const __m128d wg = _mm_set1_pd(0.707);
        const __m128d wb = _mm_set1_pd(0.071);
        const __m128i low = _mm_set1_epi32(0xFF);
        const __m128i spare = _mm_set1_epi32(static_cast<int32_t>(kSpareMask));
        for (; i + 4 <= n; i += 4) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s + i * 4));
            const __m128i b = _mm_and_si128(v, low);
            const __m128i g = _mm_and_si128(_mm_srli_epi32(v, 8), low);
            const __m128i r = _mm_and_si128(_mm_srli_epi32(v, 16), low);
            auto half = [&](__m128i bb, __m128i gg, __m128i rr) {
                const __m128d y = _mm_add_pd(_mm_add_pd(_mm_mul_pd(wr, _mm_cvtepi32_pd(rr)),
                                                        _mm_mul_pd(wg, _mm_cvtepi32_pd(gg))),
                                             _mm_mul_pd(wb, _mm_cvtepi32_pd(bb)));
                return _mm_cvtpd_epi32(y);
            };
            const __m128i y01 = half(b, g, r);
            const __m128i y23 = half(_mm_shuffle_epi32(b, 0x0E), _mm_shuffle_epi32(g, 0x0E),
                                     _mm_shuffle_epi32(r, 0x0E));
            const __m128i y = _mm_unpacklo_epi64(y01, y23);
            const __m128i grey = _mm_or_si128(_mm_or_si128(y, _mm_slli_epi32(y, 8)),
                                              _mm_slli_epi32(y, 16));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i * 4),
                             _mm_or_si128(grey, _mm_and_si128(v, spare)));
        }
#endif
        for (; i < n; ++i) {
            const uint32_t p = loadPixel(s + i * 4);
            const uint32_t y = greyOf(p & 255, (p >> 8) & 255, (p >> 16) & 255);
            storePixel(d + i * 4, y * 0x010101u | (p & kSpareMask));
        }
    });
}

BitsBuffer cBitFilter::Threshold(int32_t level)
{
    std::array<uint32_t, 766> t{};
    for (int sum = 0; sum < 766; ++sum)
        t[sum] = sum / 3 > level ? 0x00FFFFFFu : 0;
    return runFilter([&t](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i) {
            const uint32_t p = loadPixel(s + i * 4);
            storePixel(d + i * 4, t[(p & 255) + ((p >> 8) & 255) + ((p >> 16) & 255)]
                                      | (p & kSpareMask));
        }
    });
}

BitsBuffer cBitFilter::KillChannel(bool red, bool green, bool blue)
{
    Table keep{};
    for (int i = 0; i < 256; ++i)
        keep[i] = static_cast<uint8_t>(i);
    const Table zero{};
    return applyTables(blue ? zero.data() : keep.data(), green ? zero.data() : keep.data(),
                       red ? zero.data() : keep.data());
}

BitsBuffer cBitFilter::SwapRGB(int32_t srcRed, int32_t srcGreen, int32_t srcBlue, bool invRed,
                               bool invGreen, bool invBlue, int32_t maskRed,
                               int32_t maskGreen, int32_t maskBlue)
{
    // Indexed by output channel: 0 blue, 1 green, 2 red.
    const int32_t src[3] = {std::clamp(srcBlue, 0, 3), std::clamp(srcGreen, 0, 3),
                            std::clamp(srcRed, 0, 3)};
    const bool inv[3] = {invBlue, invGreen, invRed};
    const int32_t mask[3] = {maskBlue, maskGreen, maskRed};
#ifdef TOLMAR_HAVE_VBMI_PATH
    if (m_allowWideVectors && haveVbmi()) {
        std::array<Table, 3> bt{};
        for (int c = 0; c < 3; ++c)
            for (int i = 0; i < 256; ++i)
                bt[c][i] = static_cast<uint8_t>((inv[c] ? 255 - i : i) & ~mask[c]);
        return runFilter([&bt, &src](const uint8_t* s, uint8_t* d, int32_t n, int32_t,
                                     int32_t) {
            tablesVbmi(s, d, n, bt[0].data(), bt[1].data(), bt[2].data(), src);
        });
    }
#endif
    // Word tables already shifted to their output byte.
    std::array<std::array<uint32_t, 256>, 3> t{};
    for (int c = 0; c < 3; ++c)
        for (int i = 0; i < 256; ++i)
            t[c][i] = static_cast<uint32_t>(static_cast<uint8_t>((inv[c] ? 255 - i : i) & ~mask[c]))
                   << (8 * c);
    const int sh0 = 8 * src[0];
    const int sh1 = 8 * src[1];
    const int sh2 = 8 * src[2];
    return runFilter([&t, sh0, sh1, sh2](const uint8_t* s, uint8_t* d, int32_t n, int32_t,
                                         int32_t) {
        for (int32_t i = 0; i < n; ++i) {
            const uint32_t p = loadPixel(s + i * 4);
            storePixel(d + i * 4, t[0][(p >> sh0) & 255] | t[1][(p >> sh1) & 255]
                                      | t[2][(p >> sh2) & 255] | (p & kSpareMask));
        }
    });
}

BitsBuffer cBitFilter::ShiftRGB(int32_t red, int32_t green, int32_t blue)
{
    const Table tb = clampedShiftTable(blue);
    const Table tg = clampedShiftTable(green);
    const Table tr = clampedShiftTable(red);
    return applyTables(tb.data(), tg.data(), tr.data());
}

BitsBuffer cBitFilter::Scanlines(int32_t amount)
{
    const Table t = clampedShiftTable(-int64_t(amount));
    return applyTables(t.data(), t.data(), t.data(), 2);
}

BitsBuffer cBitFilter::Saturation(int32_t percent)
{
    const double k = percent / 100.0;
    // Indexed by the pixel's mean level and the channel: 64 KiB, built once per call.
    std::vector<uint8_t> t(256 * 256);
    for (int l = 0; l < 256; ++l)
        for (int c = 0; c < 256; ++c)
            t[l * 256 + c] = clampByte(roundEven(c + k * (c - l)));
    return runFilter([&t](const uint8_t* s, uint8_t* d, int32_t n, int32_t, int32_t) {
        int32_t i = 0;
        for (; i < n; ++i) {
            const uint32_t p = loadPixel(s + i * 4);
            const uint32_t b = p & 255;
            const uint32_t g = (p >> 8) & 255;
            const uint32_t r = (p >> 16) & 255;
            const uint8_t* row = t.data() + ((b + g + r) / 3) * 256;
            storePixel(d + i * 4, uint32_t(row[b]) | uint32_t(row[g]) << 8
                                      | uint32_t(row[r]) << 16 | (p & kSpareMask));
        }
    });
}

BitsBuffer cBitFilter::Noise(int32_t level, bool monochrome)
{
    const double spread = 2.0 * level + 1;
    return runFilter([this, level, spread, monochrome](const uint8_t* s, uint8_t* d, int32_t n,
                                                        int32_t, int32_t) {
        for (int32_t i = 0; i < n; ++i, s += 4, d += 4) {
            double r = NextRandom();
            for (int c = 0; c < 3; ++c) {
                if (c > 0 && !monochrome)
                    r = NextRandom();
                d[c] = clampByte(roundEven(s[c] + r * spread - level));
            }
            d[3] = s[3];
        }
    });
}

BitsBuffer cBitFilter::Equalize()
{
    // Four histograms taken in turn: neighbouring pixels often share a level, and one
    // counter would make each increment wait for the last.
    std::array<std::array<int64_t, 256>, 4> parts{};
    const std::size_t width = static_cast<std::size_t>(std::max(m_lastX + 1, 0));
    std::vector<int32_t> levels(width);
    for (int32_t y = 0; y <= m_lastY; ++y) {
        weightedLevels(m_bits.pixel(0, y), m_lastX + 1, 0.301, 0.586, 0.113, levels.data());
        std::size_t x = 0;
        for (; x + 4 <= width; x += 4) {
            ++parts[0][levels[x]];
            ++parts[1][levels[x + 1]];
            ++parts[2][levels[x + 2]];
            ++parts[3][levels[x + 3]];
        }
        for (; x < width; ++x)
            ++parts[0][levels[x]];
    }
    std::array<int64_t, 256> hist{};
    for (int i = 0; i < 256; ++i)
        hist[i] = parts[0][i] + parts[1][i] + parts[2][i] + parts[3][i];
    const int64_t half = int64_t(m_lastX + 1) * (m_lastY + 1) / 2;
    int32_t m = 255;
    int64_t running = 0;
    for (int32_t level = 0; level < 256; ++level) {
        running += hist[level];
        if (running > half) {
            m = level;
            break;
        }
    }
    // When most of the median level's own pixels lie below the half mark, the stretch
    // pivots one level lower. An image of one value keeps that value as its median.
    if (m > 0 && hist[m] > 2 * (running - half))
        --m;

    Table t{};
    for (int c = 0; c < 256; ++c) {
        if (c <= m)
            t[c] = m == 0 ? 0 : clampByte(roundEven(c * (127.0 / m)));
        else
            t[c] = clampByte(roundEven((c - m) * (127.0 / (255 - m)) + 128));
    }
    return applyTables(t.data(), t.data(), t.data());
}

} // namespace tolmar::imaging
