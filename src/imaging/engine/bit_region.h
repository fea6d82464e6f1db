#pragma once

#include "imaging/engine/bits_buffer.h"
#include "imaging/engine/region.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tolmar::imaging {

// The selection of the drawing screen: a main region, a copy scaled by the zoom for
// drawing, the rotating stripe brush of the outline, and the region file format.
class cBitRegion
{
public:
    static constexpr int32_t kHeaderInts = 8;
    static constexpr int32_t kHeaderBytes = kHeaderInts * 4;
    static constexpr int32_t kRectanglesType = 1;
    // A million rectangles: far more bands and pieces than any selection drawn on a picture
    // this program opens; a larger file is not region data of ours.
    static constexpr std::uintmax_t kMaxFileBytes = 16u << 20;

    cBitRegion();

    void Init(int32_t left, int32_t top, int32_t right, int32_t bottom);
    void CreateRect(int32_t left, int32_t top, int32_t right, int32_t bottom, int32_t mode,
                    bool clip);
    void CreateEllipse(int32_t left, int32_t top, int32_t right, int32_t bottom, int32_t mode,
                       bool clip);
    void CreatePolygon(std::span<const int32_t> points, int32_t mode, bool clip);
    void Invert();
    void Crop();
    void Offset(int32_t x, int32_t y);
    void Clear();

    // Paints the outline of the scaled region into `target` at the offset, black where the
    // current brush phase has a set bit and white elsewhere; the fourth byte is kept.
    void DrawToBits(BitsBuffer& target, int32_t x, int32_t y) const;
    // The one-pixel frame of the scaled region, for a screen that paints it itself.
    Region ScaledOutline() const;
    void RotateBrush();
    int32_t BrushPhase() const { return m_phase; }
    // The 8 rows of the given phase, most significant bit leftmost.
    std::array<uint8_t, 8> BrushPattern(int32_t phase) const;
    bool BrushBit(int32_t x, int32_t y) const;

    bool BoundRect(int32_t& left, int32_t& top, int32_t& right, int32_t& bottom) const;
    bool IsEmptyRegion() const { return !m_main.has_value(); }
    bool PtInRegion(int32_t x, int32_t y) const { return m_main && m_main->contains(x, y); }

    bool SaveToFile(const std::string& fileName) const;
    // False, leaving no main region, when the file is missing, is not a regular file, is
    // larger than kMaxFileBytes or is not region data.
    bool LoadFromFile(const std::string& fileName);
    bool LoadFromBytes(std::span<const uint8_t> bytes);

    const std::vector<int32_t>& GetData() const { return m_data; }
    std::size_t GetDataCount() const { return m_data.size(); }
    const std::vector<int32_t>& GetScaledData() const { return m_scaledData; }

    float ZoomFactor() const { return m_zoom; }
    void ZoomFactor(float zoom);

    const Region* RegionMain() const { return m_main ? &*m_main : nullptr; }
    const Region* RegionScaled() const { return m_scaled ? &*m_scaled : nullptr; }
    const Region* Bounds() const { return m_bounds ? &*m_bounds : nullptr; }
    // Takes a copy through the data array, as a loaded file would be.
    void SetRegion(const Region& region);

    // The file layout: a header of eight integers, then four per rectangle.
    static std::vector<int32_t> ToData(const Region& region);
    static std::optional<Region> FromData(std::span<const int32_t> data);

private:
    void addShape(Region shape, int32_t mode, bool clip);
    void refresh();
    void rebuildScaled();

    std::optional<Region> m_bounds;
    std::optional<Region> m_main;
    std::optional<Region> m_scaled;
    float m_zoom = 1.0f;
    std::vector<int32_t> m_data;
    std::vector<int32_t> m_scaledData;
    std::array<std::array<uint8_t, 8>, 8> m_brushes{};
    int32_t m_phase = 0;
};

} // namespace tolmar::imaging
