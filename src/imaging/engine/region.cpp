#include "imaging/engine/region.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tolmar::imaging {

namespace {

int32_t saturate32(double v)
{
    constexpr double lo = std::numeric_limits<int32_t>::min();
    constexpr double hi = std::numeric_limits<int32_t>::max();
    if (!(v >= lo))
        return std::numeric_limits<int32_t>::min();
    if (v > hi)
        return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(v);
}

bool applyMode(bool inA, bool inB, CombineMode mode)
{
    switch (mode) {
    case CombineMode::And: return inA && inB;
    case CombineMode::Or: return inA || inB;
    case CombineMode::Xor: return inA != inB;
    case CombineMode::Diff: return inA && !inB;
    case CombineMode::Copy: return inA;
    }
    return false;
}

// Sorts spans and melts overlapping or touching ones, so that equal pixel sets always have
// the same span list.
void normaliseSpans(std::vector<Region::Span>& spans)
{
    std::sort(spans.begin(), spans.end(),
              [](const Region::Span& a, const Region::Span& b) { return a.x0 < b.x0; });
    std::size_t n = 0;
    for (const Region::Span& s : spans) {
        if (s.x0 >= s.x1)
            continue;
        if (n > 0 && s.x0 <= spans[n - 1].x1)
            spans[n - 1].x1 = std::max(spans[n - 1].x1, s.x1);
        else
            spans[n++] = s;
    }
    spans.resize(n);
}

void mergeSpans(const Region::Span* a, std::size_t na, const Region::Span* b, std::size_t nb,
                CombineMode mode, std::vector<Region::Span>& out)
{
    out.clear();
    std::size_t ia = 0;
    std::size_t ib = 0;
    bool inA = false;
    bool inB = false;
    bool inside = false;
    int32_t start = 0;
    // Walk every edge of both lists in x order; between two edges the membership of
    // either side is constant, so the result changes only at edges.
    while (ia < na * 2 || ib < nb * 2) {
        const int32_t xa = ia < na * 2 ? (ia % 2 ? a[ia / 2].x1 : a[ia / 2].x0)
                                       : std::numeric_limits<int32_t>::max();
        const int32_t xb = ib < nb * 2 ? (ib % 2 ? b[ib / 2].x1 : b[ib / 2].x0)
                                       : std::numeric_limits<int32_t>::max();
        const int32_t x = std::min(xa, xb);
        if (xa == x) {
            inA = !inA;
            ++ia;
        }
        if (xb == x) {
            inB = !inB;
            ++ib;
        }
        const bool now = applyMode(inA, inB, mode);
        if (now && !inside)
            start = x;
        else if (!now && inside)
            out.push_back({start, x});
        inside = now;
    }
}

} // namespace

class Region::Builder
{
public:
    void addBand(int32_t top, int32_t bottom, const std::vector<Span>& spans)
    {
        if (spans.empty() || top >= bottom)
            return;
        if (!m_r.m_bands.empty()) {
            Band& last = m_r.m_bands.back();
            if (last.bottom == top && last.count == spans.size()
                && std::equal(spans.begin(), spans.end(), m_r.m_spans.begin() + last.first)) {
                last.bottom = bottom;
                return;
            }
        }
        m_r.m_bands.push_back({top, bottom, static_cast<uint32_t>(m_r.m_spans.size()),
                               static_cast<uint32_t>(spans.size())});
        m_r.m_spans.insert(m_r.m_spans.end(), spans.begin(), spans.end());
    }
    Region finish()
    {
        m_r.computeBox();
        return std::move(m_r);
    }

private:
    Region m_r;
};

void Region::computeBox()
{
    if (m_bands.empty()) {
        m_box = {};
        return;
    }
    m_box.top = m_bands.front().top;
    m_box.bottom = m_bands.back().bottom;
    m_box.left = std::numeric_limits<int32_t>::max();
    m_box.right = std::numeric_limits<int32_t>::min();
    for (const Band& b : m_bands) {
        m_box.left = std::min(m_box.left, m_spans[b.first].x0);
        m_box.right = std::max(m_box.right, m_spans[b.first + b.count - 1].x1);
    }
}

Region Region::fromRect(const Rect& r)
{
    // A rectangle given corner-swapped means the same pixels.
    const Rect n{std::min(r.left, r.right), std::min(r.top, r.bottom),
                 std::max(r.left, r.right), std::max(r.top, r.bottom)};
    Builder b;
    if (!n.isEmpty())
        b.addBand(n.top, n.bottom, {{n.left, n.right}});
    return b.finish();
}

Region Region::fromEllipse(const Rect& r)
{
    const int32_t left = std::min(r.left, r.right);
    const int32_t right = std::max(r.left, r.right);
    const int32_t top = std::min(r.top, r.bottom);
    const int32_t bottom = std::max(r.top, r.bottom);
    Builder b;
    if (left >= right || top >= bottom)
        return b.finish();
    // A pixel belongs to the ellipse inscribed in the box when its centre does.
    const double cx = (static_cast<double>(left) + right) / 2.0;
    const double cy = (static_cast<double>(top) + bottom) / 2.0;
    const double rx = (static_cast<double>(right) - left) / 2.0;
    const double ry = (static_cast<double>(bottom) - top) / 2.0;
    std::vector<Span> spans(1);
    for (int32_t y = top; y < bottom; ++y) {
        const double dy = (y + 0.5 - cy) / ry;
        const double dy2 = dy * dy;
        if (dy2 > 1.0)
            continue;
        auto inside = [&](int64_t x) {
            const double dx = (static_cast<double>(x) + 0.5 - cx) / rx;
            return dx * dx + dy2 <= 1.0;
        };
        // Start from the closed form, then let the exact test settle the last pixel.
        const double half = rx * std::sqrt(1.0 - dy2);
        int64_t xa = std::clamp<int64_t>(static_cast<int64_t>(std::ceil(cx - half - 0.5)),
                                         left, right);
        while (xa > left && inside(xa - 1))
            --xa;
        while (xa < right && !inside(xa))
            ++xa;
        int64_t xb = std::clamp<int64_t>(static_cast<int64_t>(std::floor(cx + half - 0.5)) + 1,
                                         xa, right);
        while (xb < right && inside(xb))
            ++xb;
        while (xb > xa && !inside(xb - 1))
            --xb;
        if (xa < xb) {
            spans[0] = {static_cast<int32_t>(xa), static_cast<int32_t>(xb)};
            b.addBand(y, y + 1, spans);
        }
    }
    return b.finish();
}

Region Region::fromPolygon(std::span<const int32_t> xy)
{
    Builder b;
    const std::size_t n = xy.size() / 2;
    if (n < 3)
        return b.finish();
    int32_t minY = std::numeric_limits<int32_t>::max();
    int32_t maxY = std::numeric_limits<int32_t>::min();
    for (std::size_t i = 0; i < n; ++i) {
        minY = std::min(minY, xy[2 * i + 1]);
        maxY = std::max(maxY, xy[2 * i + 1]);
    }
    struct Crossing
    {
        double x;
        int dir;
    };
    std::vector<Crossing> cross;
    std::vector<Span> spans;
    for (int64_t y = minY; y < maxY; ++y) {
        // Rows are sampled through pixel centres, which never meet an integer vertex.
        const double yc = static_cast<double>(y) + 0.5;
        cross.clear();
        for (std::size_t i = 0; i < n; ++i) {
            const std::size_t j = (i + 1) % n;
            const double x0 = xy[2 * i];
            const double y0 = xy[2 * i + 1];
            const double x1 = xy[2 * j];
            const double y1 = xy[2 * j + 1];
            if ((y0 < yc) == (y1 < yc))
                continue;
            cross.push_back({x0 + (yc - y0) * (x1 - x0) / (y1 - y0), y1 > y0 ? 1 : -1});
        }
        std::sort(cross.begin(), cross.end(),
                  [](const Crossing& a, const Crossing& c) { return a.x < c.x; });
        spans.clear();
        int winding = 0;
        double start = 0;
        for (const Crossing& c : cross) {
            const int before = winding;
            winding += c.dir;
            if (before == 0 && winding != 0) {
                start = c.x;
            } else if (before != 0 && winding == 0) {
                const int32_t x0 = saturate32(std::ceil(start - 0.5));
                const int32_t x1 = saturate32(std::ceil(c.x - 0.5));
                if (x0 < x1)
                    spans.push_back({x0, x1});
            }
        }
        normaliseSpans(spans);
        b.addBand(static_cast<int32_t>(y), static_cast<int32_t>(y + 1), spans);
    }
    return b.finish();
}

Region Region::fromRects(std::span<const Rect> rects)
{
    std::vector<Rect> sorted;
    sorted.reserve(rects.size());
    std::vector<int32_t> ys;
    for (const Rect& r : rects) {
        if (r.isEmpty())
            continue;
        sorted.push_back(r);
        ys.push_back(r.top);
        ys.push_back(r.bottom);
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const Rect& a, const Rect& b) { return a.top < b.top; });
    std::sort(ys.begin(), ys.end());
    ys.erase(std::unique(ys.begin(), ys.end()), ys.end());

    Builder b;
    std::vector<const Rect*> active;
    std::vector<Span> spans;
    std::size_t next = 0;
    for (std::size_t k = 0; k + 1 < ys.size(); ++k) {
        const int32_t y0 = ys[k];
        const int32_t y1 = ys[k + 1];
        std::erase_if(active, [y0](const Rect* r) { return r->bottom <= y0; });
        while (next < sorted.size() && sorted[next].top <= y0)
            active.push_back(&sorted[next++]);
        spans.clear();
        for (const Rect* r : active)
            spans.push_back({r->left, r->right});
        normaliseSpans(spans);
        b.addBand(y0, y1, spans);
    }
    return b.finish();
}

Region Region::combine(const Region& a, const Region& b, CombineMode mode)
{
    if (mode == CombineMode::Copy)
        return a;
    std::vector<int32_t> ys;
    ys.reserve((a.m_bands.size() + b.m_bands.size()) * 2);
    for (const Band& band : a.m_bands) {
        ys.push_back(band.top);
        ys.push_back(band.bottom);
    }
    for (const Band& band : b.m_bands) {
        ys.push_back(band.top);
        ys.push_back(band.bottom);
    }
    std::sort(ys.begin(), ys.end());
    ys.erase(std::unique(ys.begin(), ys.end()), ys.end());

    Builder out;
    std::vector<Span> spans;
    std::size_t ia = 0;
    std::size_t ib = 0;
    for (std::size_t k = 0; k + 1 < ys.size(); ++k) {
        const int32_t y0 = ys[k];
        while (ia < a.m_bands.size() && a.m_bands[ia].bottom <= y0)
            ++ia;
        while (ib < b.m_bands.size() && b.m_bands[ib].bottom <= y0)
            ++ib;
        const Span* sa = nullptr;
        std::size_t na = 0;
        if (ia < a.m_bands.size() && a.m_bands[ia].top <= y0) {
            sa = a.m_spans.data() + a.m_bands[ia].first;
            na = a.m_bands[ia].count;
        }
        const Span* sb = nullptr;
        std::size_t nb = 0;
        if (ib < b.m_bands.size() && b.m_bands[ib].top <= y0) {
            sb = b.m_spans.data() + b.m_bands[ib].first;
            nb = b.m_bands[ib].count;
        }
        mergeSpans(sa, na, sb, nb, mode, spans);
        out.addBand(y0, ys[k + 1], spans);
    }
    return out.finish();
}

bool Region::contains(int32_t x, int32_t y) const
{
    auto band = std::upper_bound(m_bands.begin(), m_bands.end(), y,
                                 [](int32_t v, const Band& b) { return v < b.bottom; });
    if (band == m_bands.end() || band->top > y)
        return false;
    const Span* first = m_spans.data() + band->first;
    const Span* last = first + band->count;
    const Span* s = std::upper_bound(first, last, x,
                                     [](int32_t v, const Span& sp) { return v < sp.x1; });
    return s != last && s->x0 <= x;
}

void Region::offset(int32_t dx, int32_t dy)
{
    // Coordinates saturate at the ends of the integer range; a region pushed that far is
    // off any image anyway, and what matters is that nothing wraps round.
    auto move = [](int32_t v, int32_t by) {
        return saturate32(static_cast<double>(int64_t(v) + by));
    };
    if (dx == 0 && dy == 0)
        return;
    std::vector<Rect> moved = rects();
    for (Rect& r : moved)
        r = {move(r.left, dx), move(r.top, dy), move(r.right, dx), move(r.bottom, dy)};
    *this = fromRects(moved);
}

Region Region::scaled(double zoom) const
{
    if (!(zoom > 0))
        return *this;
    auto scale = [zoom](int32_t v) { return saturate32(std::nearbyint(v * zoom)); };
    std::vector<Rect> out;
    out.reserve(m_spans.size());
    for (const Rect& r : rects())
        out.push_back({scale(r.left), scale(r.top), scale(r.right), scale(r.bottom)});
    return fromRects(out);
}

Region Region::outline() const
{
    Region inner = *this;
    const int32_t moves[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
    for (const auto& m : moves) {
        Region moved = *this;
        moved.offset(m[0], m[1]);
        inner = combine(inner, moved, CombineMode::And);
    }
    return combine(*this, inner, CombineMode::Diff);
}

std::vector<Rect> Region::rects() const
{
    std::vector<Rect> out;
    out.reserve(m_spans.size());
    for (const Band& b : m_bands)
        for (uint32_t i = 0; i < b.count; ++i) {
            const Span& s = m_spans[b.first + i];
            out.push_back({s.x0, b.top, s.x1, b.bottom});
        }
    return out;
}

std::size_t Region::rectCount() const
{
    return m_spans.size();
}

void Region::rowSpans(int32_t y, int32_t left, int32_t right, std::size_t& hint,
                      std::vector<Span>& out) const
{
    out.clear();
    if (hint > m_bands.size() || (hint < m_bands.size() && m_bands[hint].top > y))
        hint = 0;
    while (hint < m_bands.size() && m_bands[hint].bottom <= y)
        ++hint;
    if (hint >= m_bands.size() || m_bands[hint].top > y)
        return;
    const Band& band = m_bands[hint];
    for (uint32_t i = 0; i < band.count; ++i) {
        const Span& s = m_spans[band.first + i];
        const int32_t x0 = std::max(s.x0, left);
        const int32_t x1 = std::min<int64_t>(s.x1, static_cast<int64_t>(right) + 1);
        if (x0 < x1)
            out.push_back({x0, x1});
    }
}

} // namespace tolmar::imaging
