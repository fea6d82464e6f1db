#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace tolmar::imaging {

// Floating results become integers by rounding to nearest with ties to even: lrint under
// the default rounding mode, never std::round (which sends halves away from zero).
inline int64_t roundEven(double v)
{
    if (!(v > -9.0e18 && v < 9.0e18))
        return v > 0 ? std::numeric_limits<int64_t>::max() / 2
                     : std::numeric_limits<int64_t>::min() / 2;
    return std::llrint(v);
}

inline uint8_t clampByte(int64_t v)
{
    return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

inline int32_t redOf(int32_t colour) { return colour & 0xFF; }
inline int32_t greenOf(int32_t colour) { return (colour >> 8) & 0xFF; }
inline int32_t blueOf(int32_t colour) { return (colour >> 16) & 0xFF; }

} // namespace tolmar::imaging

#include <bit>
#include <cstring>

namespace tolmar::imaging {

// Pixels are handled as 32-bit words where that saves byte stores: blue is the low byte
// on the little-endian machines this program runs on.
static_assert(std::endian::native == std::endian::little,
              "the pixel word layout assumes a little-endian machine");

inline uint32_t loadPixel(const uint8_t* p)
{
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

inline void storePixel(uint8_t* p, uint32_t v)
{
    std::memcpy(p, &v, 4);
}

constexpr uint32_t kSpareMask = 0xFF000000u;

} // namespace tolmar::imaging
