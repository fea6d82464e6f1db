#pragma once

// The loop shared by every filter. Kept apart from bit_filter.h because only the engine's
// own filter files instantiate it.

#include "imaging/engine/bit_filter.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace tolmar::imaging {

template <class Kernel>
BitsBuffer cBitFilter::runFilter(Kernel&& kernel, int32_t margin, int32_t yStep)
{
    BitsBuffer out = takeResultBuffer();
    if (m_bits.empty())
        return out;
    m_lastReport = std::chrono::steady_clock::now();

    int32_t left = 0;
    int32_t right = -1;
    int32_t top = 0;
    int32_t bottom = -1;
    if (m_region && !m_region->isEmpty()) {
        const Rect box = m_region->box();
        // The box is held to the image so that no filter writes past the guard pixels,
        // whatever region the caller hands in.
        left = std::max<int64_t>(int64_t(box.left) + margin, 0);
        right = std::min<int64_t>(int64_t(box.right) - margin - 1, m_lastX);
        bottom = std::min<int64_t>(int64_t(box.bottom) - margin - 1, m_lastY);
        // Rows above the image are skipped, but a stepping filter keeps the parity of the
        // box's own top row.
        int64_t first = int64_t(box.top) + margin;
        if (first < 0)
            first += (-first + yStep - 1) / yStep * yStep;
        top = static_cast<int32_t>(std::min<int64_t>(first, int64_t(m_lastY) + 1));
    }

    const int32_t lowX = m_bits.lowX();
    const std::size_t stride = m_bits.stride();
    int32_t copiedTo = m_bits.lowY();
    auto copyRows = [&](int32_t untilY) {
        if (untilY > copiedTo)
            std::memcpy(out.row(copiedTo), m_bits.row(copiedTo),
                        stride * static_cast<std::size_t>(untilY - copiedTo));
        copiedTo = std::max(copiedTo, untilY);
    };

    if (left <= right && top <= bottom) {
        std::vector<Region::Span> spans;
        std::size_t hint = 0;
        for (int32_t y = top; y <= bottom; y += yStep) {
            m_region->rowSpans(y, left, right, hint, spans);
            if (spans.empty()) {
                reportRow(y);
                continue;
            }
            copyRows(y);
            const uint8_t* s = m_bits.row(y);
            uint8_t* d = out.row(y);
            int32_t x = lowX;
            for (const Region::Span& sp : spans) {
                std::memcpy(d + std::size_t(x - lowX) * 4, s + std::size_t(x - lowX) * 4,
                            std::size_t(sp.x0 - x) * 4);
                kernel(s + std::size_t(sp.x0 - lowX) * 4, d + std::size_t(sp.x0 - lowX) * 4,
                       sp.x1 - sp.x0, sp.x0, y);
                x = sp.x1;
            }
            std::memcpy(d + std::size_t(x - lowX) * 4, s + std::size_t(x - lowX) * 4,
                        stride - std::size_t(x - lowX) * 4);
            copiedTo = y + 1;
            reportRow(y);
        }
    }
    copyRows(m_bits.highY() + 1);
    reportDone();
    return out;
}

} // namespace tolmar::imaging
