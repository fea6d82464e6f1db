#include "imaging/engine/bits_buffer.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace tolmar::imaging {

BitsBuffer::BitsBuffer(int32_t width, int32_t height, int32_t guard)
{
    if (width < 1 || height < 1 || guard < 0)
        throw std::invalid_argument("BitsBuffer: the image needs at least one pixel");
    allocate(-guard, width - 1 + guard, -guard, height - 1 + guard, true);
}

void BitsBuffer::allocate(int32_t lowX, int32_t highX, int32_t lowY, int32_t highY, bool zero)
{
    m_lowX = lowX;
    m_highX = highX;
    m_lowY = lowY;
    m_highY = highY;
    m_stride = static_cast<std::size_t>(columns()) * 4;
    // Plain new[] leaves the bytes untouched: a result buffer is written whole anyway, and
    // zero-filling 48 MB first would cost as much as the filter itself.
    m_data.reset(new uint8_t[byteSize()]);
    if (zero)
        std::memset(m_data.get(), 0, byteSize());
}

BitsBuffer::BitsBuffer(const BitsBuffer& other)
{
    *this = other;
}

BitsBuffer& BitsBuffer::operator=(const BitsBuffer& other)
{
    if (this == &other)
        return *this;
    if (other.empty()) {
        *this = BitsBuffer();
        return *this;
    }
    if (!sameShape(other))
        allocate(other.m_lowX, other.m_highX, other.m_lowY, other.m_highY, false);
    std::memcpy(m_data.get(), other.m_data.get(), byteSize());
    return *this;
}

BitsBuffer::BitsBuffer(BitsBuffer&& other) noexcept
{
    *this = std::move(other);
}

BitsBuffer& BitsBuffer::operator=(BitsBuffer&& other) noexcept
{
    if (this == &other)
        return *this;
    m_lowX = other.m_lowX;
    m_highX = other.m_highX;
    m_lowY = other.m_lowY;
    m_highY = other.m_highY;
    m_stride = other.m_stride;
    m_data = std::move(other.m_data);
    other.m_lowX = other.m_lowY = 0;
    other.m_highX = other.m_highY = -1;
    other.m_stride = 0;
    return *this;
}

BitsBuffer BitsBuffer::uninitialisedLike(const BitsBuffer& shape)
{
    BitsBuffer out;
    if (!shape.empty())
        out.allocate(shape.m_lowX, shape.m_highX, shape.m_lowY, shape.m_highY, false);
    return out;
}

BitsBuffer BitsBuffer::uninitialised(int32_t width, int32_t height, int32_t guard)
{
    if (width < 1 || height < 1 || guard < 0)
        throw std::invalid_argument("BitsBuffer: the image needs at least one pixel");
    BitsBuffer out;
    out.allocate(-guard, width - 1 + guard, -guard, height - 1 + guard, false);
    return out;
}

void BitsBuffer::clearGuards()
{
    if (empty())
        return;
    const int32_t guardX = -m_lowX;
    const int32_t guardY = -m_lowY;
    const int32_t height = rows() - 2 * guardY;
    std::memset(m_data.get(), 0, m_stride * static_cast<std::size_t>(guardY));
    std::memset(m_data.get() + m_stride * static_cast<std::size_t>(guardY + height), 0,
                m_stride * static_cast<std::size_t>(guardY));
    const std::size_t side = static_cast<std::size_t>(guardX) * 4;
    for (int32_t y = 0; y < height; ++y) {
        uint8_t* r = m_data.get() + m_stride * static_cast<std::size_t>(guardY + y);
        std::memset(r, 0, side);
        std::memset(r + m_stride - side, 0, side);
    }
}

BitsBuffer BitsBuffer::fromRows(const void* rows, int32_t width, int32_t height,
                                std::ptrdiff_t strideBytes, int32_t guard)
{
    BitsBuffer out(width, height, guard);
    const auto* src = static_cast<const uint8_t*>(rows);
    for (int32_t y = 0; y < height; ++y)
        std::memcpy(out.pixel(0, y), src + y * strideBytes, static_cast<std::size_t>(width) * 4);
    return out;
}

bool BitsBuffer::sameShape(const BitsBuffer& other) const
{
    return !empty() && !other.empty() && m_lowX == other.m_lowX && m_highX == other.m_highX
        && m_lowY == other.m_lowY && m_highY == other.m_highY;
}

bool BitsBuffer::operator==(const BitsBuffer& other) const
{
    if (empty() || other.empty())
        return empty() == other.empty();
    return sameShape(other) && std::memcmp(m_data.get(), other.m_data.get(), byteSize()) == 0;
}

} // namespace tolmar::imaging
