#pragma once

// The loop shared by every filter. Kept apart from bit_filter.h because only the engine's
// own filter files instantiate it.

#include "imaging/engine/bit_filter.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace tolmar::imaging {

template <class Kernel>
BitsBuffer cBitFilter::runFilter(Kernel&& kernel, const ScanShape& shape)
{
    BitsBuffer out = takeResultBuffer();
    m_cancelled = false;
    if (m_bits.empty())
        return out;
    m_lastReport = std::chrono::steady_clock::now();

    int32_t left = 0;
    int32_t right = -1;
    int32_t top = 0;
    int32_t bottom = -1;
    ScanBox(shape, left, top, right, bottom);
    const int32_t yStep = shape.yStep;

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
            // A stopped filter hands back the held image whole: no half-filtered result.
            if (m_cancel && m_cancel->load(std::memory_order_relaxed)) {
                std::memcpy(out.data(), m_bits.data(), m_bits.byteSize());
                m_cancelled = true;
                return out;
            }
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
