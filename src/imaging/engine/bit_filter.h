#pragma once

#include "imaging/engine/bits_buffer.h"
#include "imaging/engine/region.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>

namespace tolmar::imaging {

// Colours handed to filters: red in bits 0-7, green 8-15, blue 16-23.
using Colour = int32_t;

// The image-processing class of the imaging screens. It holds one image and one region and
// offers the filters; a filter reads the held image, never its own output, and returns a
// changed copy that the caller may load back with Bits(). Pixels outside the region come
// back byte for byte as they were, the fourth byte included.
class cBitFilter
{
public:
    using ProgressFn = std::function<void(int32_t percent)>;

    // --- the held image and its region -------------------------------------------------
    int32_t BitsWidth() const { return m_lastX + 1; }
    int32_t BitsHeight() const { return m_lastY + 1; }
    const BitsBuffer& Bits() const { return m_bits; }
    // The image size follows the array: two less than its upper bounds, as for a buffer
    // with guard pixels.
    void Bits(const BitsBuffer& bits);
    void Bits(BitsBuffer&& bits);
    // The region is the caller's and must outlive the filter calls; null means none.
    void BitsRegion(const Region* region) { m_region = region; }
    const Region* BitsRegion() const { return m_region; }
    Rect Bounds() const { return {0, 0, m_lastX + 1, m_lastY + 1}; }

    void SetProgress(ProgressFn fn) { m_progress = std::move(fn); }
    void SetRandomSeed(uint64_t seed) { m_random.seed(seed); }
    // Hands a finished result back so the next filter can write into it instead of
    // allocating; used only when its shape matches.
    void RecycleBuffer(BitsBuffer&& spare) { m_spare = std::move(spare); }
    // Moves the held image out, leaving none: the way to hand it back as a spare before
    // a size operation replaces it.
    BitsBuffer TakeBits();
    // Lets tests run the plain code where the machine would take the AVX2 one.
    void AllowWideVectors(bool allow) { m_allowWideVectors = allow; }

    // --- size operations: these change the held image ----------------------------------
    void BitsBlack();
    void BitsCrop(const BitsBuffer& src, int32_t left, int32_t top, int32_t right,
                  int32_t bottom);
    void BitsCropMasked(const BitsBuffer& src, int32_t left, int32_t top, int32_t right,
                        int32_t bottom);
    void BitsResample(const BitsBuffer& src, int32_t newWidth, int32_t newHeight);
    void BitsResize(const BitsBuffer& src, int32_t newWidth, int32_t newHeight);
    // A quarter turn clockwise.
    void BitsRotate90(const BitsBuffer& src);
    // Raw 32-bit top-down rows, blue, green, red, spare in memory order. The array is taken
    // as it stands, without guard pixels, and loaded through Bits().
    void BitsTakeFromPicture(const void* rows, int32_t width, int32_t height,
                             std::ptrdiff_t strideBytes);

    // --- tone ---------------------------------------------------------------------------
    BitsBuffer Brightness(int32_t amount);
    BitsBuffer Invert();
    BitsBuffer Contrast(int32_t percent);
    BitsBuffer GammaCorrection(int32_t percent);
    BitsBuffer GreyScale();
    BitsBuffer Threshold(int32_t level);
    BitsBuffer KillChannel(bool red, bool green, bool blue);
    // Each output channel (red, green, blue) reads the buffer channel given (0 blue, 1 green,
    // 2 red), may be inverted, and is then ANDed with the complement of its mask.
    BitsBuffer SwapRGB(int32_t srcRed, int32_t srcGreen, int32_t srcBlue, bool invRed,
                       bool invGreen, bool invBlue, int32_t maskRed, int32_t maskGreen,
                       int32_t maskBlue);
    BitsBuffer ShiftRGB(int32_t red, int32_t green, int32_t blue);
    BitsBuffer Scanlines(int32_t amount);
    BitsBuffer Saturation(int32_t percent);
    BitsBuffer Noise(int32_t level, bool monochrome);
    BitsBuffer Equalize();

    // --- colour (HSL); hues are in sixths of a turn, -1 to 5 --------------------------
    BitsBuffer Colorize(double hue, double saturation, double lightnessScale);
    BitsBuffer RotateH(double hueShift, int32_t saturationPercent);
    BitsBuffer RotateL(double frequency, double phase);
    BitsBuffer StretchH(double hueOffset, double saturationPercent, double frequency);

    // --- colour-keyed -------------------------------------------------------------------
    BitsBuffer Isolate(Colour key, Colour other, double tolerance);
    BitsBuffer Replace(Colour key, Colour newColour, double tolerance);
    BitsBuffer ReplaceHS(Colour key, Colour newColour, double tolerance,
                         double saturationLimit, double lightnessLimit);
    BitsBuffer ReplaceL(Colour key, Colour newColour, double tolerance,
                        double lightnessPercent);
    BitsBuffer Shift(Colour key, int32_t amount, double tolerance);

    // --- gradients and decoration ---------------------------------------------------
    // mode 0 is a straight ramp; mode 1 bends it by sin(t * pi * percent / 100).
    BitsBuffer GradientLinear(int32_t x1, int32_t y1, int32_t x2, int32_t y2, Colour colour1,
                              Colour colour2, double percent, int32_t mode);
    BitsBuffer GradientCircular(int32_t x1, int32_t y1, int32_t x2, int32_t y2,
                                Colour colour1, Colour colour2, double percent, int32_t mode);
    // Horizontal lines every stepY rows; with `both` also vertical lines every stepX columns.
    BitsBuffer Grid(int32_t stepX, int32_t stepY, bool both, Colour colour, int32_t opacity);
    BitsBuffer Light(double x, double y, double radius, double percent, double level);
    BitsBuffer Texturize(const BitsBuffer& texture);
    // The mask is tiled from the offset and mixed in by the opacity; with `useColour` the
    // mask's grey level decides how much of `colour` is laid on instead.
    BitsBuffer TileMask(const BitsBuffer& mask, int32_t offsetX, int32_t offsetY,
                        bool useColour, double opacityPercent, Colour colour);

    // --- statistics over the whole image, not the region -------------------------------
    int32_t GetLMax() const;
    int32_t GetLMin() const;
    int32_t GetLMed() const;

    // Runs `kernel(src, dst, n, x, y)` on every span of region pixels in the scan box;
    // everything else is copied. `src` points into the held image, so a kernel may read
    // the neighbourhood (up to the guard pixels), `dst` into the result.
    template <class Kernel>
    BitsBuffer runFilter(Kernel&& kernel, int32_t margin = 0, int32_t yStep = 1);

    // From this many pixels on, table filters build a two-channel table (tests use it).
    static constexpr int64_t kPairTableMinPixels = 100000;

    // A uniform number in [0, 1), drawn in scan order; exposed for neighbourhood filters.
    double NextRandom();

private:
    BitsBuffer takeResultBuffer();
    BitsBuffer takeSizedBuffer(int32_t width, int32_t height);
    void reportRow(int32_t y);
    void reportDone();
    BitsBuffer applyTables(const uint8_t* t0, const uint8_t* t1, const uint8_t* t2,
                           int32_t yStep = 1);
    BitsBuffer replaceKernel(Colour key, Colour newColour, double tolerance, int kind,
                             double limitA, double limitB);
    BitsBuffer gradient(int32_t x1, int32_t y1, int32_t x2, int32_t y2, Colour c1, Colour c2,
                        double percent, int32_t mode, bool circular);
    void cropInto(const BitsBuffer& src, int32_t left, int32_t top, int32_t right,
                  int32_t bottom, bool masked);
    void setImage(BitsBuffer&& bits);

    BitsBuffer m_bits;
    BitsBuffer m_spare;
    int32_t m_lastX = -1;
    int32_t m_lastY = -1;
    const Region* m_region = nullptr;
    ProgressFn m_progress;
    std::chrono::steady_clock::time_point m_lastReport;
    std::mt19937_64 m_random{0x746f6c6d6172ULL};
    bool m_allowWideVectors = true;
};

} // namespace tolmar::imaging
