// Filters that reduce tones: Stucki dithering to black and white, halftone dots,
// posterisation and mapping to the filter's palette with error diffusion.
//
// The two diffusing filters carry their error in state of their own (accumulator rows, a
// working copy of the image) that later pixels read; the held image stays untouched, as
// after every other filter, and the scan stays the shared one.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/filter_frame.h"
#include "imaging/engine/pixel_math.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace tolmar::imaging {

namespace {

// The mean of (R + G + B) / 3 over the whole image, in integer division.
int32_t meanLevel(const BitsBuffer& bits, int32_t lastX, int32_t lastY)
{
    if (lastX < 0 || lastY < 0)
        return 0;
    std::array<int32_t, 766> third{};
    for (int i = 0; i < 766; ++i)
        third[i] = i / 3;
    int64_t sum = 0;
    for (int32_t y = 0; y <= lastY; ++y) {
        const uint8_t* p = bits.pixel(0, y);
        for (int32_t x = 0; x <= lastX; ++x, p += 4)
            sum += third[p[0] + p[1] + p[2]];
    }
    return static_cast<int32_t>(sum / (int64_t(lastX + 1) * (lastY + 1)));
}

// Stucki's weights, in the order of the error tables: this row x+1, x+2; the next row
// x-2..x+2; the row after x-2..x+2.
constexpr std::array<int32_t, 12> kStucki = {8, 4, 2, 4, 8, 4, 2, 1, 2, 4, 2, 1};

} // namespace

BitsBuffer cBitFilter::StuckiBW(int32_t level)
{
    if (level == 0)
        return unchanged();
    const int32_t mean = meanLevel(m_bits, m_lastX, m_lastY);
    // errors[e + 255][k]: e * weight k / 42 towards zero.
    std::vector<std::array<int32_t, 12>> errors(511);
    for (int32_t e = -255; e <= 255; ++e)
        for (std::size_t k = 0; k < 12; ++k)
            errors[std::size_t(e + 255)][k] = e * kStucki[k] / 42;
    // Three accumulator rows, with two spare columns each side so that the spread needs no
    // test; what lands there (off the picture) is never read.
    const std::size_t width = static_cast<std::size_t>(std::max(m_lastX + 1, 0)) + 4;
    std::array<std::vector<int32_t>, 3> rows;
    for (auto& r : rows)
        r.assign(width, 0);
    int64_t rowOf0 = -1;
    const int32_t lastX = m_lastX;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        // Rows the scan passed without a region pixel still moved the accumulators on.
        if (rowOf0 < 0)
            rowOf0 = y;
        while (rowOf0 < y) {
            std::rotate(rows.begin(), rows.begin() + 1, rows.end());
            std::fill(rows[2].begin(), rows[2].end(), 0);
            ++rowOf0;
        }
        int32_t* r0 = rows[0].data() + 2;
        int32_t* r1 = rows[1].data() + 2;
        int32_t* r2 = rows[2].data() + 2;
        for (int32_t i = 0; i < n; ++i) {
            const int32_t x = x0 + i;
            const uint8_t* p = s + i * 4;
            const int32_t g = (p[0] + p[1] + p[2]) / 3;
            const int64_t v = std::clamp<int64_t>(g + int64_t(r0[x]) * 10 / level, 0, 255);
            const int32_t out = v >= mean ? 255 : 0;
            storePixel(d + i * 4, (out ? 0xFFFFFFu : 0u) | (loadPixel(p) & kSpareMask));
            const auto& t = errors[std::size_t(v - out + 255)];
            // Columns off the picture are skipped: their cells are the spare ones.
            const bool r1ok = x + 1 <= lastX;
            const bool r2ok = x + 2 <= lastX;
            const bool l1ok = x >= 1;
            const bool l2ok = x >= 2;
            if (r1ok)
                r0[x + 1] += t[0];
            if (r2ok)
                r0[x + 2] += t[1];
            if (l2ok)
                r1[x - 2] += t[2], r2[x - 2] += t[7];
            if (l1ok)
                r1[x - 1] += t[3], r2[x - 1] += t[8];
            r1[x] += t[4];
            r2[x] += t[9];
            if (r1ok)
                r1[x + 1] += t[5], r2[x + 1] += t[10];
            if (r2ok)
                r1[x + 2] += t[6], r2[x + 2] += t[11];
        }
    });
}

BitsBuffer cBitFilter::Halftone(int32_t radius, int32_t difference, int32_t density)
{
    if (radius <= 0)
        return unchanged();
    int32_t left, top, right, bottom;
    if (!ScanBox({}, left, top, right, bottom))
        return unchanged();
    const int64_t r = radius;
    const int64_t pitch = 2 * r;
    const double k = double(r + difference) / double(r);
    const double f = (density + 100) / 100.0;
    const int64_t t = roundEven(k * double(r) * double(r));
    const int64_t cellsX = (int64_t(right) - left) / pitch + 1;
    const int64_t cellsY = (int64_t(bottom) - top) / pitch + 1;
    // The colour of every cell first: the cells' sums read only the held image.
    std::vector<uint32_t> colours(static_cast<std::size_t>(cellsX * cellsY));
    for (int64_t cy = 0; cy < cellsY; ++cy) {
        const int64_t y0 = top + cy * pitch;
        const int64_t y1 = std::min<int64_t>(y0 + pitch - 1, bottom);
        for (int64_t cx = 0; cx < cellsX; ++cx) {
            const int64_t x0 = left + cx * pitch;
            const int64_t x1 = std::min<int64_t>(x0 + pitch - 1, right);
            int64_t sum[3] = {0, 0, 0};
            int64_t count = 0;
            std::vector<Region::Span> spans;
            std::size_t hint = 0;
            for (int64_t y = y0; y <= y1; ++y) {
                m_region->rowSpans(int32_t(y), int32_t(x0), int32_t(x1), hint, spans);
                for (const Region::Span& sp : spans)
                    for (int32_t x = sp.x0; x < sp.x1; ++x) {
                        const uint8_t* p = m_bits.pixel(x, int32_t(y));
                        sum[0] += p[0];
                        sum[1] += p[1];
                        sum[2] += p[2];
                        ++count;
                    }
            }
            // The count scaled by the density; a density of -100 or less leaves no count.
            const int64_t q = f > 0 ? roundEven(double(count) / f) : 0;
            uint32_t colour = 0;
            if (q > 0)
                for (int c = 0; c < 3; ++c)
                    colour |= uint32_t(std::min<int64_t>(roundEven(double(sum[c]) / double(q)),
                                                         255))
                           << (8 * c);
            colours[std::size_t(cy * cellsX + cx)] = colour;
        }
    }
    // Each pixel takes the dot of the last cell to paint it: the cell it lies in, since a
    // dot reaches one pixel into the next cell, which paints over it.
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        const int64_t cy = (y - top) / pitch;
        const int64_t dy = y - (top + cy * pitch + r);
        for (int32_t i = 0; i < n; ++i) {
            const int64_t x = x0 + i;
            const int64_t cx = (x - left) / pitch;
            const int64_t dx = x - (left + cx * pitch + r);
            const int64_t d2 = dx * dx + dy * dy;
            const uint32_t colour = colours[std::size_t(cy * cellsX + cx)];
            uint32_t v = loadPixel(s + i * 4) & kSpareMask;
            // A dot limit of 0 or less leaves no dot at all.
            if (t > 0 && d2 <= t) {
                const double a = 1 - double(d2) / double(t);
                for (int c = 0; c < 3; ++c)
                    v |= uint32_t(roundEven(((colour >> (8 * c)) & 255) * a)) << (8 * c);
            }
            storePixel(d + i * 4, v);
        }
    });
}

BitsBuffer cBitFilter::Reduction(int32_t level)
{
    // Steps of level + 1; a level below 1 has no step to make.
    if (level <= 0)
        return unchanged();
    const double step = double(level) + 1;
    std::array<uint8_t, 256> table{};
    for (int i = 0; i < 256; ++i)
        table[i] = clampByte(int64_t(double(roundEven(i / step)) * step));
    return applyTables(table.data(), table.data(), table.data());
}

BitsBuffer cBitFilter::PaletteApply()
{
    if (m_palette.empty())
        return unchanged();
    std::vector<std::array<int32_t, 3>> entries; // blue, green, red, held to bytes
    entries.reserve(m_palette.size());
    for (const PaletteEntry& e : m_palette)
        entries.push_back({std::clamp(e.blue, 0, 255), std::clamp(e.green, 0, 255),
                           std::clamp(e.red, 0, 255)});
    // The error spreads into a working copy that later pixels read.
    BitsBuffer work(m_bits);
    const int32_t lastX = m_lastX;
    const int32_t lastY = m_lastY;
    return runFilter([&](const uint8_t* s, uint8_t* d, int32_t n, int32_t x0, int32_t y) {
        for (int32_t i = 0; i < n; ++i) {
            const int32_t x = x0 + i;
            uint8_t* p = work.pixel(x, y);
            // Nearest entry by city-block distance: the first of equals, an exact match
            // ends the search.
            std::size_t best = 0;
            int32_t bestDist = INT32_MAX;
            for (std::size_t k = 0; k < entries.size(); ++k) {
                const auto& e = entries[k];
                const int32_t dist = std::abs(p[0] - e[0]) + std::abs(p[1] - e[1])
                                   + std::abs(p[2] - e[2]);
                if (dist < bestDist) {
                    bestDist = dist;
                    best = k;
                    if (dist == 0)
                        break;
                }
            }
            const auto& e = entries[best];
            storePixel(d + i * 4, uint32_t(e[0]) | uint32_t(e[1]) << 8 | uint32_t(e[2]) << 16
                                      | (loadPixel(s + i * 4) & kSpareMask));
            const int32_t err[3] = {p[0] - e[0], p[1] - e[1], p[2] - e[2]};
            if (std::abs(err[0]) + std::abs(err[1]) + std::abs(err[2]) < 4)
                continue;
            if (x < lastX) {
                uint8_t* q = work.pixel(x + 1, y);
                for (int c = 0; c < 3; ++c)
                    q[c] = clampByte(q[c] + err[c] * 7 / 16);
            }
            if (y < lastY && x > 0 && x < lastX) {
                uint8_t* q = work.pixel(x, y + 1);
                for (int c = 0; c < 3; ++c)
                    q[c] = clampByte(q[c] + err[c] * 4 / 16);
            }
        }
    });
}

} // namespace tolmar::imaging
