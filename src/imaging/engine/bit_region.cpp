#include "imaging/engine/bit_region.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace tolmar::imaging {

namespace {

constexpr std::array<uint8_t, 8> kStripes = {240, 120, 60, 30, 15, 135, 195, 225};

// Files are little-endian whatever the machine.
void putLe32(std::vector<char>& out, int32_t v)
{
    const auto u = static_cast<uint32_t>(v);
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<char>((u >> (8 * i)) & 0xFF));
}

int32_t getLe32(const uint8_t* p)
{
    const uint32_t u = uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16
                     | uint32_t(p[3]) << 24;
    return static_cast<int32_t>(u);
}

// Only a regular file is opened: a folder fails in the middle of the read, and a FIFO or a
// device would block on open or feed memory without end. The read stops one byte past the
// limit, so a file that grew after the size check is refused too.
bool readRegionFile(const std::string& fileName, std::vector<uint8_t>& bytes)
{
    std::error_code ec;
    if (!std::filesystem::is_regular_file(fileName, ec) || ec)
        return false;
    const std::uintmax_t size = std::filesystem::file_size(fileName, ec);
    if (ec || size > cBitRegion::kMaxFileBytes)
        return false;
    std::ifstream f(fileName, std::ios::binary);
    if (!f)
        return false;
    bytes.resize(static_cast<std::size_t>(size) + 1);
    // istream::read turns a failing read into the stream state instead of an exception.
    f.read(reinterpret_cast<char*>(bytes.data()), std::streamsize(bytes.size()));
    if (f.bad() || static_cast<std::uintmax_t>(f.gcount()) > cBitRegion::kMaxFileBytes)
        return false;
    bytes.resize(static_cast<std::size_t>(f.gcount()));
    return true;
}

} // namespace

cBitRegion::cBitRegion()
{
    for (int32_t phase = 0; phase < 8; ++phase)
        for (int32_t row = 0; row < 8; ++row)
            m_brushes[phase][row] = std::rotr(kStripes[row], phase);
}

void cBitRegion::Init(int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    Clear();
    m_bounds = Region::fromRect({left, top, right, bottom});
}

void cBitRegion::Clear()
{
    m_bounds.reset();
    m_main.reset();
    m_scaled.reset();
    m_data.clear();
    m_scaledData.clear();
}

void cBitRegion::addShape(Region shape, int32_t mode, bool clip)
{
    if (mode < 1 || mode > 5)
        return;
    if (clip && m_bounds)
        shape = Region::combine(shape, *m_bounds, CombineMode::And);
    const auto cm = static_cast<CombineMode>(mode);
    if (m_main) {
        // Copy takes the new shape: a selection tool that "replaces" the selection.
        if (cm == CombineMode::Copy)
            m_main = std::move(shape);
        else
            m_main = Region::combine(*m_main, shape, cm);
    } else if (cm != CombineMode::Diff) {
        // Nothing to subtract from; anything else starts the selection.
        m_main = std::move(shape);
    } else {
        return;
    }
    refresh();
}

void cBitRegion::CreateRect(int32_t left, int32_t top, int32_t right, int32_t bottom,
                            int32_t mode, bool clip)
{
    addShape(Region::fromRect({left, top, right, bottom}), mode, clip);
}

void cBitRegion::CreateEllipse(int32_t left, int32_t top, int32_t right, int32_t bottom,
                               int32_t mode, bool clip)
{
    addShape(Region::fromEllipse({left, top, right, bottom}), mode, clip);
}

void cBitRegion::CreatePolygon(std::span<const int32_t> points, int32_t mode, bool clip)
{
    if (points.size() < 3)
        return;
    addShape(Region::fromPolygon(points), mode, clip);
}

void cBitRegion::Invert()
{
    if (!m_main || !m_bounds)
        return;
    m_main = Region::combine(*m_main, *m_bounds, CombineMode::Xor);
    refresh();
}

void cBitRegion::Crop()
{
    if (!m_main || !m_bounds)
        return;
    m_main = Region::combine(*m_main, *m_bounds, CombineMode::And);
    refresh();
}

void cBitRegion::Offset(int32_t x, int32_t y)
{
    if (!m_main)
        return;
    m_main->offset(x, y);
    refresh();
}

void cBitRegion::refresh()
{
    m_data = m_main ? ToData(*m_main) : std::vector<int32_t>{};
    rebuildScaled();
}

void cBitRegion::rebuildScaled()
{
    m_scaledData = m_data;
    m_scaled.reset();
    if (m_data.empty())
        return;
    if (m_zoom > 0) {
        // Scaling each rectangle on its own keeps the scaled selection exact.
        for (std::size_t i = 4; i < m_scaledData.size(); ++i) {
            const double v = std::nearbyint(static_cast<double>(m_scaledData[i]) * m_zoom);
            m_scaledData[i] = v >= 2147483647.0    ? 2147483647
                            : v <= -2147483648.0 ? -2147483647 - 1
                                                   : static_cast<int32_t>(v);
        }
    }
    m_scaled = FromData(m_scaledData);
}

void cBitRegion::ZoomFactor(float zoom)
{
    m_zoom = zoom;
    rebuildScaled();
}

void cBitRegion::SetRegion(const Region& region)
{
    m_data = ToData(region);
    m_main = FromData(m_data);
    rebuildScaled();
}

void cBitRegion::RotateBrush()
{
    m_phase = (m_phase + 1) % 8;
}

std::array<uint8_t, 8> cBitRegion::BrushPattern(int32_t phase) const
{
    return m_brushes[static_cast<std::size_t>(phase) & 7];
}

bool cBitRegion::BrushBit(int32_t x, int32_t y) const
{
    const uint8_t row = m_brushes[m_phase][static_cast<uint32_t>(y) & 7];
    return (row >> (7 - (static_cast<uint32_t>(x) & 7))) & 1;
}

Region cBitRegion::ScaledOutline() const
{
    return m_scaled ? m_scaled->outline() : Region{};
}

void cBitRegion::DrawToBits(BitsBuffer& target, int32_t x, int32_t y) const
{
    if (!m_scaled || target.empty())
        return;
    const Region frame = m_scaled->outline();
    for (const Rect& r : frame.rects()) {
        for (int32_t py = r.top; py < r.bottom; ++py) {
            const int64_t ty = int64_t(py) + y;
            if (ty < 0 || ty > target.highY() - 1)
                continue;
            for (int32_t px = r.left; px < r.right; ++px) {
                const int64_t tx = int64_t(px) + x;
                if (tx < 0 || tx > target.highX() - 1)
                    continue;
                uint8_t* p = target.pixel(static_cast<int32_t>(tx), static_cast<int32_t>(ty));
                const uint8_t v = BrushBit(px, py) ? 0 : 255;
                p[0] = p[1] = p[2] = v;
            }
        }
    }
}

bool cBitRegion::BoundRect(int32_t& left, int32_t& top, int32_t& right, int32_t& bottom) const
{
    if (!m_main)
        return false;
    const Rect b = m_main->box();
    left = b.left;
    top = b.top;
    right = b.right;
    bottom = b.bottom;
    return true;
}

std::vector<int32_t> cBitRegion::ToData(const Region& region)
{
    const std::vector<Rect> rects = region.rects();
    const Rect box = region.box();
    std::vector<int32_t> data;
    data.reserve(kHeaderInts + rects.size() * 4);
    data.insert(data.end(), {kHeaderBytes, kRectanglesType, static_cast<int32_t>(rects.size()),
                             static_cast<int32_t>(rects.size() * 16), box.left, box.top,
                             box.right, box.bottom});
    for (const Rect& r : rects)
        data.insert(data.end(), {r.left, r.top, r.right, r.bottom});
    return data;
}

std::optional<Region> cBitRegion::FromData(std::span<const int32_t> data)
{
    // The header's own size and type are the only marks the format has; a rectangle count
    // that the data cannot hold, or a rectangle turned inside out, means it is not ours.
    if (data.size() < static_cast<std::size_t>(kHeaderInts))
        return std::nullopt;
    if (data[0] != kHeaderBytes || data[1] != kRectanglesType || data[2] < 0)
        return std::nullopt;
    const auto count = static_cast<std::size_t>(data[2]);
    if (count > (data.size() - kHeaderInts) / 4)
        return std::nullopt;
    std::vector<Rect> rects;
    rects.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const int32_t* p = data.data() + kHeaderInts + 4 * i;
        const Rect r{p[0], p[1], p[2], p[3]};
        if (r.left > r.right || r.top > r.bottom)
            return std::nullopt;
        rects.push_back(r);
    }
    return Region::fromRects(rects);
}

bool cBitRegion::SaveToFile(const std::string& fileName) const
{
    std::vector<char> bytes;
    bytes.reserve(m_data.size() * 4);
    for (int32_t v : m_data)
        putLe32(bytes, v);
    std::ofstream f(fileName, std::ios::binary | std::ios::trunc);
    if (!f)
        return false;
    f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return static_cast<bool>(f);
}

bool cBitRegion::LoadFromFile(const std::string& fileName)
{
    std::vector<uint8_t> bytes;
    if (!readRegionFile(fileName, bytes)) {
        m_main.reset();
        refresh();
        return false;
    }
    return LoadFromBytes(bytes);
}

bool cBitRegion::LoadFromBytes(std::span<const uint8_t> bytes)
{
    // A trailing part of an integer is dropped, as the length in whole integers says.
    std::vector<int32_t> data(bytes.size() / 4);
    for (std::size_t i = 0; i < data.size(); ++i)
        data[i] = getLe32(bytes.data() + 4 * i);
    m_main = FromData(data);
    if (!m_main) {
        m_data.clear();
        rebuildScaled();
        return false;
    }
    m_data = std::move(data);
    rebuildScaled();
    return true;
}

} // namespace tolmar::imaging
