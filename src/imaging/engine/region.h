#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace tolmar::imaging {

// Right and bottom are exclusive, as everywhere in the imaging code.
struct Rect
{
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
    bool operator==(const Rect&) const = default;
};

enum class CombineMode : int32_t {
    And = 1,  // intersection
    Or = 2,   // union
    Xor = 3,  // exclusive or
    Diff = 4, // first minus second
    Copy = 5,
};

// A set of pixels kept as y-x bands: horizontal bands of equal height, each holding sorted,
// disjoint, non-touching x intervals, bands sorted top to bottom and no two touching bands
// alike. That canonical form makes equality a plain comparison and lets a filter walk a row
// as a few spans instead of testing every pixel.
class Region
{
public:
    struct Span
    {
        int32_t x0;
        int32_t x1; // exclusive
    };

    Region() = default;
    static Region fromRect(const Rect& r);
    static Region fromEllipse(const Rect& box);
    // Points as x, y pairs; the winding rule decides what is inside.
    static Region fromPolygon(std::span<const int32_t> xy);
    // Union of arbitrary (possibly overlapping, unsorted) rectangles; empty ones are skipped.
    static Region fromRects(std::span<const Rect> rects);

    static Region combine(const Region& a, const Region& b, CombineMode mode);

    bool isEmpty() const { return m_bands.empty(); }
    Rect box() const { return m_box; }
    bool contains(int32_t x, int32_t y) const;
    void offset(int32_t dx, int32_t dy);
    // The region with every rectangle's coordinates multiplied by `zoom`, rounded to
    // nearest with ties to even, so that the scaled outline stays exact.
    Region scaled(double zoom) const;
    // Pixels of the region that have a 4-neighbour outside it: a one-pixel inner frame.
    Region outline() const;
    std::vector<Rect> rects() const;
    std::size_t rectCount() const;

    // Calls fn(y, x0, x1) for every span of rows top..bottom (inclusive) clipped to
    // left..right (inclusive), row by row. Rows without a span are not reported.
    template <class Fn>
    void forEachSpan(int32_t top, int32_t bottom, int32_t left, int32_t right, Fn&& fn) const;
    // The spans of one row, clipped to left..right (inclusive); `hint` speeds up a walk
    // down the rows and may start at 0.
    void rowSpans(int32_t y, int32_t left, int32_t right, std::size_t& hint,
                  std::vector<Span>& out) const;

    bool operator==(const Region& other) const
    {
        return m_bands == other.m_bands && m_spans == other.m_spans;
    }

private:
    struct Band
    {
        int32_t top;
        int32_t bottom; // exclusive
        uint32_t first; // index into m_spans
        uint32_t count;
        bool operator==(const Band&) const = default;
    };
    friend bool operator==(const Span& a, const Span& b) { return a.x0 == b.x0 && a.x1 == b.x1; }

    class Builder;
    void computeBox();

    std::vector<Band> m_bands;
    std::vector<Span> m_spans;
    Rect m_box;
};

template <class Fn>
void Region::forEachSpan(int32_t top, int32_t bottom, int32_t left, int32_t right,
                         Fn&& fn) const
{
    std::size_t b = 0;
    while (b < m_bands.size() && m_bands[b].bottom <= top)
        ++b;
    for (; b < m_bands.size() && m_bands[b].top <= bottom; ++b) {
        const Band& band = m_bands[b];
        const int32_t y0 = band.top > top ? band.top : top;
        const int32_t y1 = band.bottom - 1 < bottom ? band.bottom - 1 : bottom;
        for (int32_t y = y0; y <= y1; ++y) {
            for (uint32_t i = 0; i < band.count; ++i) {
                const Span& s = m_spans[band.first + i];
                const int32_t x0 = s.x0 > left ? s.x0 : left;
                const int32_t x1 = s.x1 - 1 < right ? s.x1 : right + 1;
                if (x0 < x1)
                    fn(y, x0, x1);
            }
        }
    }
}

} // namespace tolmar::imaging
