// The held image, the progress report and the operations that change the image's size.

#include "imaging/engine/bit_filter.h"

#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"

#include <algorithm>
#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tolmar::imaging {

void cBitFilter::Bits(const BitsBuffer& bits)
{
    setImage(BitsBuffer(bits));
}

void cBitFilter::Bits(BitsBuffer&& bits)
{
    setImage(std::move(bits));
}

void cBitFilter::setImage(BitsBuffer&& bits)
{
    m_bits = std::move(bits);
    m_lastX = m_bits.empty() ? -1 : m_bits.highX() - 2;
    m_lastY = m_bits.empty() ? -1 : m_bits.highY() - 2;
}

BitsBuffer cBitFilter::takeResultBuffer()
{
    if (m_spare.sameShape(m_bits))
        return std::move(m_spare);
    return BitsBuffer::uninitialisedLike(m_bits);
}

void cBitFilter::reportRow(int32_t y)
{
    // One row of an image has nothing to report but the end.
    if (!m_progress || m_lastY <= 0)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now - m_lastReport > std::chrono::milliseconds(10)) {
        m_progress(static_cast<int32_t>(int64_t(y) * 100 / m_lastY));
        m_lastReport = now;
    }
}

void cBitFilter::reportDone()
{
    if (m_progress)
        m_progress(100);
}

double cBitFilter::NextRandom()
{
    return static_cast<double>(m_random() >> 11) * 0x1.0p-53;
}

void cBitFilter::BitsBlack()
{
    if (m_bits.empty() || !m_region || m_region->isEmpty())
        return;
    m_region->forEachSpan(0, m_lastY, 0, m_lastX, [this](int32_t y, int32_t x0, int32_t x1) {
        std::memset(m_bits.pixel(x0, y), 0, std::size_t(x1 - x0) * 4);
    });
}

void cBitFilter::cropInto(const BitsBuffer& src, int32_t left, int32_t top, int32_t right,
                          int32_t bottom, bool masked)
{
    if (src.empty())
        return;
    // The rectangle is cut to the held bounds, then to what the given array holds.
    const int32_t l = std::max({left, 0, src.lowX()});
    const int32_t t = std::max({top, 0, src.lowY()});
    const int32_t r = std::min<int64_t>({right, int64_t(m_lastX) + 1, int64_t(src.highX()) + 1});
    const int32_t b = std::min<int64_t>({bottom, int64_t(m_lastY) + 1, int64_t(src.highY()) + 1});
    if (l >= r || t >= b)
        return;
    BitsBuffer out(r - l, b - t);
    for (int32_t y = t; y < b; ++y) {
        uint8_t* d = out.pixel(0, y - t);
        std::memcpy(d, src.pixel(l, y), std::size_t(r - l) * 4);
        if (!masked)
            continue;
        for (int32_t x = l; x < r; ++x)
            if (!m_region || !m_region->contains(x, y))
                d[std::size_t(x - l) * 4 + 3] = 255;
    }
    setImage(std::move(out));
    reportDone();
}

void cBitFilter::BitsCrop(const BitsBuffer& src, int32_t left, int32_t top, int32_t right,
                          int32_t bottom)
{
    cropInto(src, left, top, right, bottom, false);
}

void cBitFilter::BitsCropMasked(const BitsBuffer& src, int32_t left, int32_t top,
                                int32_t right, int32_t bottom)
{
    cropInto(src, left, top, right, bottom, true);
}

void cBitFilter::BitsResize(const BitsBuffer& src, int32_t newWidth, int32_t newHeight)
{
    const int32_t oldW = src.highX() - 1;
    const int32_t oldH = src.highY() - 1;
    if (src.empty() || newWidth < 1 || newHeight < 1 || oldW < 1 || oldH < 1)
        return;
    const double sx = static_cast<double>(oldW) / newWidth;
    const double sy = static_cast<double>(oldH) / newHeight;
    std::vector<int32_t> xs(static_cast<std::size_t>(newWidth));
    for (int32_t x = 0; x < newWidth; ++x)
        xs[x] = static_cast<int32_t>(std::floor(x * sx));
    BitsBuffer out(newWidth, newHeight);
    for (int32_t y = 0; y < newHeight; ++y) {
        const auto* s = reinterpret_cast<const uint32_t*>(
            src.pixel(0, static_cast<int32_t>(std::floor(y * sy))));
        auto* d = reinterpret_cast<uint32_t*>(out.pixel(0, y));
        for (int32_t x = 0; x < newWidth; ++x)
            d[x] = s[xs[x]];
    }
    setImage(std::move(out));
}

void cBitFilter::BitsResample(const BitsBuffer& src, int32_t newWidth, int32_t newHeight)
{
    const int32_t oldW = src.highX() - 1;
    const int32_t oldH = src.highY() - 1;
    if (src.empty() || newWidth < 1 || newHeight < 1 || oldW < 1 || oldH < 1)
        return;
    const double sx = static_cast<double>(oldW) / newWidth;
    const double sy = static_cast<double>(oldH) / newHeight;
    const auto nw = static_cast<std::size_t>(newWidth);
    std::vector<int32_t> x0(nw);
    std::vector<int32_t> x1(nw);
    std::vector<double> fx(nw);
    std::vector<double> gx(nw);
    for (int32_t x = 0; x < newWidth; ++x) {
        const double p = x * sx;
        x0[x] = static_cast<int32_t>(std::floor(p));
        fx[x] = p - x0[x];
        gx[x] = 1 - fx[x];
        x1[x] = x0[x] >= oldW - 1 ? x0[x] : x0[x] + 1;
    }
    // The blend is (1-fy) * (row mix) + fy * (row mix): each horizontally mixed source row
    // is computed once and serves every output row that needs it.
    std::vector<double> mixA(nw * 3);
    std::vector<double> mixB(nw * 3);
    int32_t rowA = -1;
    int32_t rowB = -1;
    auto mixRow = [&](int32_t sy0, std::vector<double>& into) {
        const uint8_t* s = src.pixel(0, sy0);
        double* m = into.data();
        for (std::size_t x = 0; x < nw; ++x) {
            const uint8_t* a = s + std::size_t(x0[x]) * 4;
            const uint8_t* b = s + std::size_t(x1[x]) * 4;
            for (int c = 0; c < 3; ++c)
                m[x * 3 + c] = gx[x] * a[c] + fx[x] * b[c];
        }
    };
    std::vector<int32_t> rowValues(nw * 3);
    BitsBuffer out(newWidth, newHeight);
    for (int32_t y = 0; y < newHeight; ++y) {
        const double p = y * sy;
        const auto y0 = static_cast<int32_t>(std::floor(p));
        const double fy = p - y0;
        const double gy = 1 - fy;
        const int32_t y1 = y0 >= oldH - 1 ? y0 : y0 + 1;
        if (rowA != y0) {
            if (rowB == y0) {
                std::swap(mixA, mixB);
                std::swap(rowA, rowB);
            } else {
                mixRow(y0, mixA);
                rowA = y0;
            }
        }
        if (rowB != y1) {
            mixRow(y1, mixB);
            rowB = y1;
        }
        const double* a = mixA.data();
        const double* b = mixB.data();
        uint8_t* d = out.pixel(0, y);
        const uint8_t* s = src.pixel(0, y0);
        // The vertical blend over the whole row at once, so that it vectorises; the
        // values are mixes of bytes and stay within 0..255.
        const std::size_t count = nw * 3;
        std::size_t i = 0;
#if defined(__SSE2__)
        const __m128d vgy = _mm_set1_pd(gy);
        const __m128d vfy = _mm_set1_pd(fy);
        for (; i + 2 <= count; i += 2) {
            const __m128d v = _mm_add_pd(_mm_mul_pd(vgy, _mm_loadu_pd(a + i)),
                                         _mm_mul_pd(vfy, _mm_loadu_pd(b + i)));
            const __m128i q = _mm_cvtpd_epi32(v); // nearest, ties to even, like lrint
            rowValues[i] = _mm_cvtsi128_si32(q);
            rowValues[i + 1] = _mm_cvtsi128_si32(_mm_shuffle_epi32(q, 1));
        }
#endif
        for (; i < count; ++i)
            rowValues[i] = static_cast<int32_t>(roundEven(gy * a[i] + fy * b[i]));
        for (std::size_t x = 0; x < nw; ++x) {
            for (int c = 0; c < 3; ++c)
                d[x * 4 + c] = clampByte(rowValues[x * 3 + c]);
            d[x * 4 + 3] = s[std::size_t(x0[x]) * 4 + 3];
        }
    }
    setImage(std::move(out));
}

void cBitFilter::BitsRotate90(const BitsBuffer& src)
{
    const int32_t oldW = src.highX() - 1;
    const int32_t oldH = src.highY() - 1;
    if (src.empty() || oldW < 1 || oldH < 1)
        return;
    BitsBuffer out(oldH, oldW);
    for (int32_t y = 0; y < oldW; ++y) {
        auto* d = reinterpret_cast<uint32_t*>(out.pixel(0, y));
        for (int32_t x = 0; x < oldH; ++x)
            std::memcpy(d + x, src.pixel(y, oldH - 1 - x), 4);
    }
    setImage(std::move(out));
}

void cBitFilter::BitsTakeFromPicture(const void* rows, int32_t width, int32_t height,
                                     std::ptrdiff_t strideBytes)
{
    if (!rows || width < 1 || height < 1)
        return;
    Bits(BitsBuffer::fromRows(rows, width, height, strideBytes, 0));
}

namespace {

template <class Fn>
void forEachImagePixel(const BitsBuffer& bits, int32_t lastX, int32_t lastY, Fn&& fn)
{
    for (int32_t y = 0; y <= lastY; ++y) {
        const uint8_t* p = bits.pixel(0, y);
        for (int32_t x = 0; x <= lastX; ++x, p += 4)
            fn(p);
    }
}

} // namespace

int32_t cBitFilter::GetLMax() const
{
    int32_t best = 0;
    forEachImagePixel(m_bits, m_lastX, m_lastY, [&](const uint8_t* p) {
        best = std::max(best, (p[0] + p[1] + p[2]) / 3);
    });
    return best;
}

int32_t cBitFilter::GetLMin() const
{
    int32_t best = 255;
    forEachImagePixel(m_bits, m_lastX, m_lastY, [&](const uint8_t* p) {
        best = std::min(best, (p[0] + p[1] + p[2]) / 3);
    });
    return best;
}

int32_t cBitFilter::GetLMed() const
{
    if (m_lastX < 0 || m_lastY < 0)
        return 0;
    int64_t sum = 0;
    forEachImagePixel(m_bits, m_lastX, m_lastY,
                      [&](const uint8_t* p) { sum += (p[0] + p[1] + p[2]) / 3; });
    return static_cast<int32_t>(sum / (int64_t(m_lastX + 1) * (m_lastY + 1)));
}

} // namespace tolmar::imaging
