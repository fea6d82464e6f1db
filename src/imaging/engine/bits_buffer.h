#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tolmar::imaging {

// The image store shared by every imaging class: channel by x by y bytes, i.e. rows of
// 32-bit pixels in blue, green, red, spare order. A buffer normally carries two guard pixels
// on every side so that neighbourhood filters may read past the edge without a test; a
// buffer taken straight from a picture has none. Coordinates are those of the array: x runs
// from lowX() to highX(), the image itself starts at 0.
class BitsBuffer
{
public:
    static constexpr int32_t kGuard = 2;

    BitsBuffer() = default;
    // A zeroed image of width by height pixels with the given guard on every side.
    BitsBuffer(int32_t width, int32_t height, int32_t guard = kGuard);

    BitsBuffer(const BitsBuffer& other);
    BitsBuffer& operator=(const BitsBuffer& other);
    BitsBuffer(BitsBuffer&& other) noexcept;
    BitsBuffer& operator=(BitsBuffer&& other) noexcept;

    // Same bounds as `shape`, contents left undefined: for results that are written whole.
    static BitsBuffer uninitialisedLike(const BitsBuffer& shape);
    // Contents left undefined; pair with clearGuards() when only the image is written.
    static BitsBuffer uninitialised(int32_t width, int32_t height, int32_t guard = kGuard);
    void clearGuards();

    // Copies raw 32-bit top-down rows (blue, green, red, spare in memory order) into a
    // buffer with the given guard; `strideBytes` is the distance between two source rows.
    static BitsBuffer fromRows(const void* rows, int32_t width, int32_t height,
                               std::ptrdiff_t strideBytes, int32_t guard);

    bool empty() const { return !m_data; }
    int32_t lowX() const { return m_lowX; }
    int32_t highX() const { return m_highX; }
    int32_t lowY() const { return m_lowY; }
    int32_t highY() const { return m_highY; }
    int32_t columns() const { return m_highX - m_lowX + 1; }
    int32_t rows() const { return m_highY - m_lowY + 1; }
    std::size_t stride() const { return m_stride; }
    std::size_t byteSize() const { return m_stride * static_cast<std::size_t>(rows()); }
    bool sameShape(const BitsBuffer& other) const;

    uint8_t* data() { return m_data.get(); }
    const uint8_t* data() const { return m_data.get(); }
    uint8_t* row(int32_t y) { return m_data.get() + offset(m_lowX, y); }
    const uint8_t* row(int32_t y) const { return m_data.get() + offset(m_lowX, y); }
    uint8_t* pixel(int32_t x, int32_t y) { return m_data.get() + offset(x, y); }
    const uint8_t* pixel(int32_t x, int32_t y) const { return m_data.get() + offset(x, y); }
    uint8_t& at(int32_t c, int32_t x, int32_t y) { return m_data[offset(x, y) + c]; }
    uint8_t at(int32_t c, int32_t x, int32_t y) const { return m_data[offset(x, y) + c]; }

    bool operator==(const BitsBuffer& other) const;

private:
    std::size_t offset(int32_t x, int32_t y) const
    {
        return static_cast<std::size_t>(y - m_lowY) * m_stride
             + static_cast<std::size_t>(x - m_lowX) * 4;
    }
    void allocate(int32_t lowX, int32_t highX, int32_t lowY, int32_t highY, bool zero);

    int32_t m_lowX = 0;
    int32_t m_highX = -1;
    int32_t m_lowY = 0;
    int32_t m_highY = -1;
    std::size_t m_stride = 0;
    std::unique_ptr<uint8_t[]> m_data;
};

} // namespace tolmar::imaging
