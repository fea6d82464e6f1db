#pragma once

#include "imaging/engine/bits_buffer.h"
#include "imaging/engine/region.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace tolmar::imaging {

// Colours handed to filters: red in bits 0-7, green 8-15, blue 16-23.
using Colour = int32_t;

// How a filter's scan box is taken from the region's bounding box: moved inward by a
// margin on each side, then held to the image and to the given inclusive limits (which a
// filter uses to keep its reads within the guard pixels).
struct ScanShape
{
    int32_t marginLeft = 0;
    int32_t marginTop = 0;
    int32_t marginRight = 0;
    int32_t marginBottom = 0;
    int32_t yStep = 1;
    int64_t minX = INT32_MIN;
    int64_t minY = INT32_MIN;
    int64_t maxX = INT32_MAX;
    int64_t maxY = INT32_MAX;

    static ScanShape margin(int32_t m, int32_t yStep = 1)
    {
        ScanShape s;
        s.marginLeft = s.marginTop = s.marginRight = s.marginBottom = m;
        s.yStep = yStep;
        return s;
    }
};

// The further arguments of MaskFilter, in the order the call takes them. Each channel's
// sum of kernel times pixels becomes
//     v = (absolute ? |sum| : sum) * scaleMul / scaleDiv + offset
// (exact integers, the division towards zero), clamped to 0..255, then 255 - v if
// `invert`. With `grey` the three clamped values are averaged (integer division by 3) and
// all three channels take that. Channels whose bit in `channels` (1 blue, 2 green, 4 red)
// is clear keep their value. A scaleDiv of 0 is taken as 1.
struct MaskFilterArgs
{
    int32_t scaleMul = 1;
    int32_t scaleDiv = 1;
    int32_t offset = 0;
    int32_t holdInside = 0; // the scan box is held inside the image instead of shrunk
    int32_t absolute = 0;
    int32_t channels = 7;
    int32_t invert = 0;
    int32_t grey = 0;
};

// One palette entry for PaletteApply.
struct PaletteEntry
{
    int32_t red = 0;
    int32_t green = 0;
    int32_t blue = 0;
};

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
    // A flag another thread may raise to stop the running filter; checked once per row.
    // The flag is the caller's (one per job) and must outlive the filter calls; null means
    // none. A stopped filter returns the held image unchanged and Cancelled() says so.
    void SetCancelFlag(const std::atomic<bool>* flag) { m_cancel = flag; }
    // Whether the last filter was stopped by the cancel flag.
    bool Cancelled() const { return m_cancelled; }
    void SetRandomSeed(uint64_t seed) { m_random.seed(seed); }
    // Hands a finished result back so the next filter can write into it instead of
    // allocating; used only when its shape matches.
    void RecycleBuffer(BitsBuffer&& spare) { m_spare = std::move(spare); }
    // Moves the held image out, leaving none: the way to hand it back as a spare before
    // a size operation replaces it.
    BitsBuffer TakeBits();
    // Lets tests run the plain code where the machine would take the AVX2 one.
    void AllowWideVectors(bool allow) { m_allowWideVectors = allow; }
    bool WideVectorsAllowed() const { return m_allowWideVectors; }

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

    // --- neighbourhood -----------------------------------------------------------------
    // Amounts of 105 and more (Soften) and 108 and more (Sharpen) would divide by zero or
    // flip the weights: the image comes back unchanged.
    BitsBuffer Soften(int32_t amount, bool smallerBox);
    BitsBuffer Sharpen(int32_t amount);
    BitsBuffer Emboss(int32_t amount);
    BitsBuffer Engrave(int32_t amount);
    BitsBuffer Contour(int32_t level, Colour colour);
    BitsBuffer Sketch(int32_t level, bool blackAndWhite, Colour colour);
    BitsBuffer RankFilterN4(int32_t mode);
    BitsBuffer RankFilterND(int32_t mode);
    BitsBuffer Dissolve();
    BitsBuffer Pixelize(int32_t size);
    BitsBuffer Diffuse(int32_t width, int32_t height);
    // `kernel` holds size * size weights row by row: kernel[j * size + i] weighs the pixel
    // at (x + i - size / 2, y + j - size / 2). An even, empty, mismatched or wider than
    // kMaxMaskSize kernel leaves the image unchanged.
    BitsBuffer MaskFilter(const std::vector<int32_t>& kernel, int32_t size,
                          const MaskFilterArgs& args = {});
    static constexpr int32_t kMaxMaskSize = 255;

    // --- geometric ------------------------------------------------------------------------
    static double GetAngle(int64_t a, int64_t b);
    BitsBuffer Bend(int32_t amount, bool background);
    BitsBuffer Fold(int32_t amountX, int32_t amountY, bool background);
    BitsBuffer Lens(float x, float y, float radius, int32_t refraction);
    BitsBuffer Twirl(int32_t twist, int32_t angle, bool background);
    BitsBuffer Waves(int32_t waveLength, int32_t amplitude, int32_t phase);
    BitsBuffer Rotate(double angle, bool background);
    BitsBuffer RotateSmooth(double angle);
    BitsBuffer Stretch(int32_t amountX, int32_t amountY, bool background);
    BitsBuffer Flip(bool horizontal, bool vertical);
    BitsBuffer Tile(int32_t count);

    // --- dithering, palette and reduction ----------------------------------------------
    BitsBuffer StuckiBW(int32_t level);
    BitsBuffer Halftone(int32_t radius, int32_t difference, int32_t density);
    BitsBuffer Reduction(int32_t level);
    // The palette belongs to this filter object; an empty one makes PaletteApply return
    // the image unchanged.
    void SetPalette(std::vector<PaletteEntry> palette) { m_palette = std::move(palette); }
    const std::vector<PaletteEntry>& Palette() const { return m_palette; }
    BitsBuffer PaletteApply();

    // --- statistics over the whole image, not the region -------------------------------
    int32_t GetLMax() const;
    int32_t GetLMin() const;
    int32_t GetLMed() const;

    // Runs `kernel(src, dst, n, x, y)` on every span of region pixels in the scan box;
    // everything else is copied. `src` points into the held image, so a kernel may read
    // the neighbourhood (up to the guard pixels), `dst` into the result.
    template <class Kernel>
    BitsBuffer runFilter(Kernel&& kernel, int32_t margin = 0, int32_t yStep = 1)
    {
        return runFilter(std::forward<Kernel>(kernel), ScanShape::margin(margin, yStep));
    }
    template <class Kernel>
    BitsBuffer runFilter(Kernel&& kernel, const ScanShape& shape);
    // The scan box of `shape` (inclusive); false when it is empty or there is no region.
    bool ScanBox(const ScanShape& shape, int32_t& left, int32_t& top, int32_t& right,
                 int32_t& bottom) const;

    // From this many pixels on, table filters build a two-channel table (tests use it).
    static constexpr int64_t kPairTableMinPixels = 100000;

    // A uniform number in [0, 1), drawn in scan order; exposed for neighbourhood filters.
    double NextRandom();

private:
    // The held image as it is: the answer to parameters that have no meaning.
    BitsBuffer unchanged();
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
    const std::atomic<bool>* m_cancel = nullptr;
    bool m_cancelled = false;
    std::vector<PaletteEntry> m_palette;
    std::chrono::steady_clock::time_point m_lastReport;
    std::mt19937_64 m_random{0x746f6c6d6172ULL};
    bool m_allowWideVectors = true;
};

} // namespace tolmar::imaging
