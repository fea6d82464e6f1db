// The held image, the progress report and the operations that change the image's size.

#include "imaging/engine/bit_filter.h"

#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"

#include <algorithm>
#include <cstring>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
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

BitsBuffer cBitFilter::takeSizedBuffer(int32_t width, int32_t height)
{
    // Fresh memory costs a page fault per 4 KiB, more than the resize itself; a spare of
    // the right size is taken instead, and only the guard pixels need clearing.
    BitsBuffer out;
    if (!m_spare.empty() && m_spare.lowX() == -BitsBuffer::kGuard
        && m_spare.lowY() == -BitsBuffer::kGuard
        && m_spare.highX() == width - 1 + BitsBuffer::kGuard
        && m_spare.highY() == height - 1 + BitsBuffer::kGuard)
        out = std::move(m_spare);
    else
        out = BitsBuffer::uninitialised(width, height);
    out.clearGuards();
    return out;
}

bool cBitFilter::ScanBox(const ScanShape& shape, int32_t& left, int32_t& top, int32_t& right,
                         int32_t& bottom) const
{
    left = 0;
    top = 0;
    right = -1;
    bottom = -1;
    if (m_bits.empty() || !m_region || m_region->isEmpty())
        return false;
    const Rect box = m_region->box();
    const int64_t yStep = std::max<int32_t>(shape.yStep, 1);
    // The box is held to the image so that no filter writes past the guard pixels,
    // whatever region the caller hands in.
    const int64_t l = std::max<int64_t>({int64_t(box.left) + shape.marginLeft, 0, shape.minX});
    const int64_t r = std::min<int64_t>(
        {int64_t(box.right) - shape.marginRight - 1, m_lastX, shape.maxX});
    const int64_t b = std::min<int64_t>(
        {int64_t(box.bottom) - shape.marginBottom - 1, m_lastY, shape.maxY});
    // Rows above the image are skipped, but a stepping filter keeps the parity of the box's
    // own top row.
    int64_t first = int64_t(box.top) + shape.marginTop;
    const int64_t lowest = std::max<int64_t>(0, shape.minY);
    if (first < lowest)
        first += (lowest - first + yStep - 1) / yStep * yStep;
    if (l > r || first > b)
        return false;
    left = static_cast<int32_t>(l);
    right = static_cast<int32_t>(r);
    top = static_cast<int32_t>(first);
    bottom = static_cast<int32_t>(b);
    return true;
}

BitsBuffer cBitFilter::unchanged()
{
    BitsBuffer out = takeResultBuffer();
    m_cancelled = false;
    if (!m_bits.empty())
        std::memcpy(out.data(), m_bits.data(), m_bits.byteSize());
    reportDone();
    return out;
}

BitsBuffer cBitFilter::TakeBits()
{
    BitsBuffer out = std::move(m_bits);
    setImage(BitsBuffer());
    return out;
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
    BitsBuffer out = takeSizedBuffer(r - l, b - t);
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
    BitsBuffer out = takeSizedBuffer(newWidth, newHeight);
    for (int32_t y = 0; y < newHeight; ++y) {
        const auto* s = reinterpret_cast<const uint32_t*>(
            src.pixel(0, static_cast<int32_t>(std::floor(y * sy))));
        auto* d = reinterpret_cast<uint32_t*>(out.pixel(0, y));
        for (int32_t x = 0; x < newWidth; ++x)
            d[x] = s[xs[x]];
    }
    setImage(std::move(out));
}

namespace {

// Bilinear resampling in two passes: (1-fy) * (row mix) + fy * (row mix) is the formula
// as written, so each horizontally mixed source row is computed once and serves every
// output row that needs it. Mixes hold four doubles per pixel (the fourth unused) so that
// a pixel fills one AVX register.
struct ResampleColumns
{
    std::vector<int32_t> x0;
    std::vector<int32_t> x1;
    std::vector<double> fx;
    std::vector<double> gx;
};

void mixRowPlain(const uint8_t* s, const ResampleColumns& cols, double* m, std::size_t nw)
{
    for (std::size_t x = 0; x < nw; ++x) {
        const uint8_t* a = s + std::size_t(cols.x0[x]) * 4;
        const uint8_t* b = s + std::size_t(cols.x1[x]) * 4;
        for (int c = 0; c < 3; ++c)
            m[x * 4 + c] = cols.gx[x] * a[c] + cols.fx[x] * b[c];
    }
}

void blendRowPlain(const double* a, const double* b, double gy, double fy, const uint8_t* s,
                   const ResampleColumns& cols, uint8_t* d, std::size_t nw)
{
    for (std::size_t x = 0; x < nw; ++x) {
        for (int c = 0; c < 3; ++c)
            d[x * 4 + c] = clampByte(roundEven(gy * a[x * 4 + c] + fy * b[x * 4 + c]));
        d[x * 4 + 3] = s[std::size_t(cols.x0[x]) * 4 + 3];
    }
}

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define TOLMAR_HAVE_AVX2_PATH 1

__attribute__((target("avx2"))) void mixRowAvx2(const uint8_t* s, const ResampleColumns& cols,
                                                double* m, std::size_t nw)
{
    for (std::size_t x = 0; x < nw; ++x) {
        const __m256d a = _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(
            _mm_cvtsi32_si128(static_cast<int>(loadPixel(s + std::size_t(cols.x0[x]) * 4)))));
        const __m256d b = _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(
            _mm_cvtsi32_si128(static_cast<int>(loadPixel(s + std::size_t(cols.x1[x]) * 4)))));
        _mm256_storeu_pd(m + x * 4,
                         _mm256_add_pd(_mm256_mul_pd(_mm256_set1_pd(cols.gx[x]), a),
                                       _mm256_mul_pd(_mm256_set1_pd(cols.fx[x]), b)));
    }
}

__attribute__((target("avx2"))) void blendRowAvx2(const double* a, const double* b, double gy,
                                                  double fy, const uint8_t* s,
                                                  const ResampleColumns& cols, uint8_t* d,
                                                  std::size_t nw)
{
    const __m256d vgy = _mm256_set1_pd(gy);
    const __m256d vfy = _mm256_set1_pd(fy);
    for (std::size_t x = 0; x < nw; ++x) {
        const __m256d v = _mm256_add_pd(_mm256_mul_pd(vgy, _mm256_loadu_pd(a + x * 4)),
                                        _mm256_mul_pd(vfy, _mm256_loadu_pd(b + x * 4)));
        // cvtpd2dq rounds by the current mode, nearest with ties to even, as lrint does.
        const __m128i q = _mm256_cvtpd_epi32(v);
        const __m128i bytes = _mm_packus_epi16(_mm_packs_epi32(q, q), _mm_setzero_si128());
        const uint32_t rgb = static_cast<uint32_t>(_mm_cvtsi128_si32(bytes)) & 0x00FFFFFFu;
        storePixel(d + x * 4, rgb | (loadPixel(s + std::size_t(cols.x0[x]) * 4) & kSpareMask));
    }
}

bool haveAvx2()
{
    static const bool yes = __builtin_cpu_supports("avx2");
    return yes;
}
#endif

} // namespace

void cBitFilter::BitsResample(const BitsBuffer& src, int32_t newWidth, int32_t newHeight)
{
    const int32_t oldW = src.highX() - 1;
    const int32_t oldH = src.highY() - 1;
    if (src.empty() || newWidth < 1 || newHeight < 1 || oldW < 1 || oldH < 1)
        return;
    const double sx = static_cast<double>(oldW) / newWidth;
    const double sy = static_cast<double>(oldH) / newHeight;
    const auto nw = static_cast<std::size_t>(newWidth);
    ResampleColumns cols{std::vector<int32_t>(nw), std::vector<int32_t>(nw),
                         std::vector<double>(nw), std::vector<double>(nw)};
    for (int32_t x = 0; x < newWidth; ++x) {
        const double p = x * sx;
        cols.x0[x] = static_cast<int32_t>(std::floor(p));
        cols.fx[x] = p - cols.x0[x];
        cols.gx[x] = 1 - cols.fx[x];
        // The last column is its own right-hand neighbour.
        cols.x1[x] = cols.x0[x] >= oldW - 1 ? cols.x0[x] : cols.x0[x] + 1;
    }
    // Both paths give the same bytes. (Wider AVX-512 and gather variants measured no
    // faster: the mixing is bound by the scattered source reads, not the arithmetic.)
    bool wide = false;
#ifdef TOLMAR_HAVE_AVX2_PATH
    wide = m_allowWideVectors && haveAvx2();
#endif
    auto mixRow = [&](int32_t row, std::vector<double>& into) {
#ifdef TOLMAR_HAVE_AVX2_PATH
        if (wide)
            return mixRowAvx2(src.pixel(0, row), cols, into.data(), nw);
#endif
        mixRowPlain(src.pixel(0, row), cols, into.data(), nw);
    };
    std::vector<double> mixA(nw * 4);
    std::vector<double> mixB(nw * 4);
    int32_t rowA = -1;
    int32_t rowB = -1;
    BitsBuffer out = takeSizedBuffer(newWidth, newHeight);
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
#ifdef TOLMAR_HAVE_AVX2_PATH
        if (wide) {
            blendRowAvx2(mixA.data(), mixB.data(), gy, fy, src.pixel(0, y0), cols,
                         out.pixel(0, y), nw);
            continue;
        }
#endif
        blendRowPlain(mixA.data(), mixB.data(), gy, fy, src.pixel(0, y0), cols, out.pixel(0, y),
                      nw);
    }
    setImage(std::move(out));
}

void cBitFilter::BitsRotate90(const BitsBuffer& src)
{
    const int32_t oldW = src.highX() - 1;
    const int32_t oldH = src.highY() - 1;
    if (src.empty() || oldW < 1 || oldH < 1)
        return;
    BitsBuffer out = takeSizedBuffer(oldH, oldW);
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
