// Regions: shapes, combining, the selection object, its file format and the brush.

#include "imaging/engine/bit_region.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <random>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace tolmar::imaging;

namespace {

std::string tempFile(const std::string& name)
{
    return (std::filesystem::temp_directory_path() / ("tolmar_region_" + name)).string();
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

std::vector<uint8_t> readBytes(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>()};
}

std::vector<uint8_t> le(std::initializer_list<int32_t> ints)
{
    std::vector<uint8_t> out;
    for (int32_t v : ints)
        for (int i = 0; i < 4; ++i)
            out.push_back(static_cast<uint8_t>(static_cast<uint32_t>(v) >> (8 * i)));
    return out;
}

bool samePixels(const Region& a, const Region& b, int lo, int hi)
{
    for (int y = lo; y < hi; ++y)
        for (int x = lo; x < hi; ++x)
            if (a.contains(x, y) != b.contains(x, y))
                return false;
    return true;
}

} // namespace

TEST(RegionShapes, RectangleExcludesItsRightAndBottomEdges)
{
    const Region r = Region::fromRect({2, 3, 5, 4});
    EXPECT_TRUE(r.contains(2, 3));
    EXPECT_TRUE(r.contains(4, 3));
    EXPECT_FALSE(r.contains(5, 3));
    EXPECT_FALSE(r.contains(2, 4));
    EXPECT_EQ(r.box(), (Rect{2, 3, 5, 4}));
    EXPECT_EQ(Region::fromRect({5, 4, 2, 3}), r); // corners given the other way round
    EXPECT_TRUE(Region::fromRect({2, 3, 2, 9}).isEmpty());
}

TEST(RegionShapes, EllipseHoldsThePixelsWhoseCentresItHolds)
{
    const Rect box{-3, 2, 14, 9};
    const Region e = Region::fromEllipse(box);
    const double cx = 5.5, cy = 5.5, rx = 8.5, ry = 3.5;
    for (int y = -5; y < 15; ++y)
        for (int x = -6; x < 18; ++x) {
            const double dx = (x + 0.5 - cx) / rx, dy = (y + 0.5 - cy) / ry;
            ASSERT_EQ(e.contains(x, y), dx * dx + dy * dy <= 1) << x << "," << y;
        }
}

TEST(RegionShapes, PolygonFillsByWinding)
{
    // A five-pointed star drawn in one stroke: the centre pentagon is wound twice, so it
    // is inside by the winding rule (an even-odd fill would leave a hole).
    const std::vector<int32_t> star = {50, 0, 79, 90, 2, 35, 97, 35, 21, 90};
    const Region s = Region::fromPolygon(star);
    EXPECT_TRUE(s.contains(50, 50));
    EXPECT_TRUE(s.contains(50, 5));
    EXPECT_FALSE(s.contains(5, 80));
    EXPECT_FALSE(s.contains(50, 95));

    // An axis-aligned square as a polygon is exactly the rectangle.
    const std::vector<int32_t> sq = {1, 1, 6, 1, 6, 4, 1, 4};
    EXPECT_EQ(Region::fromPolygon(sq), Region::fromRect({1, 1, 6, 4}));
}

TEST(RegionShapes, CombineModesMatchTheirPixelRule)
{
    std::mt19937 rng(21);
    std::uniform_int_distribution<int> c(0, 30);
    for (int i = 0; i < 40; ++i) {
        const Region a = Region::combine(Region::fromEllipse({c(rng), c(rng), c(rng), c(rng)}),
                                         Region::fromRect({c(rng), c(rng), c(rng), c(rng)}),
                                         CombineMode::Or);
        const Region b = Region::fromEllipse({c(rng), c(rng), c(rng), c(rng)});
        for (int mode = 1; mode <= 5; ++mode) {
            const Region r = Region::combine(a, b, static_cast<CombineMode>(mode));
            for (int y = -1; y < 32; ++y)
                for (int x = -1; x < 32; ++x) {
                    const bool ia = a.contains(x, y), ib = b.contains(x, y);
                    const bool want = mode == 1 ? ia && ib
                                    : mode == 2 ? ia || ib
                                    : mode == 3 ? ia != ib
                                    : mode == 4 ? ia && !ib
                                                : ia;
                    ASSERT_EQ(r.contains(x, y), want) << "mode " << mode;
                }
            // Equal pixel sets have one form: rebuilding from the rectangles changes nothing.
            const std::vector<Rect> rects = r.rects();
            EXPECT_EQ(Region::fromRects(rects), r);
        }
    }
}

TEST(RegionShapes, OutlineIsTheInnerOnePixelFrame)
{
    const Region frame = Region::fromRect({0, 0, 5, 4}).outline();
    int count = 0;
    for (const Rect& r : frame.rects())
        count += (r.right - r.left) * (r.bottom - r.top);
    EXPECT_EQ(count, 5 * 4 - 3 * 2);
    EXPECT_TRUE(frame.contains(0, 0));
    EXPECT_FALSE(frame.contains(2, 2));
}

TEST(Selection, CreateCombinesIntoTheMainRegion)
{
    cBitRegion sel;
    sel.Init(0, 0, 20, 10);
    EXPECT_TRUE(sel.IsEmptyRegion());
    sel.CreateRect(2, 2, 8, 8, 4, false); // nothing to subtract from yet
    EXPECT_TRUE(sel.IsEmptyRegion());
    sel.CreateRect(2, 2, 8, 8, 1, false); // the first shape starts the selection
    EXPECT_TRUE(sel.PtInRegion(2, 2));
    sel.CreateRect(6, 2, 12, 8, 2, false);
    EXPECT_TRUE(sel.PtInRegion(10, 3));
    sel.CreateRect(4, 4, 6, 6, 4, false);
    EXPECT_FALSE(sel.PtInRegion(5, 5));
    sel.CreateRect(15, -5, 30, 3, 2, true); // clipped to the bounds
    int l, t, r, b;
    ASSERT_TRUE(sel.BoundRect(l, t, r, b));
    EXPECT_EQ((Rect{l, t, r, b}), (Rect{2, 0, 20, 8}));
    sel.CreateRect(0, 0, 3, 3, 5, false); // copy replaces the selection
    EXPECT_EQ(*sel.RegionMain(), Region::fromRect({0, 0, 3, 3}));

    sel.CreatePolygon(std::vector<int32_t>{1, 2}, 2, false); // fewer than three integers
    EXPECT_EQ(*sel.RegionMain(), Region::fromRect({0, 0, 3, 3}));
}

TEST(Selection, InvertCropAndOffset)
{
    cBitRegion sel;
    sel.Init(0, 0, 10, 10);
    sel.Invert(); // no selection: nothing to invert
    EXPECT_TRUE(sel.IsEmptyRegion());
    sel.CreateEllipse(-4, -4, 6, 6, 2, false);
    sel.Invert();
    EXPECT_FALSE(sel.PtInRegion(1, 1));
    EXPECT_TRUE(sel.PtInRegion(9, 9));
    EXPECT_TRUE(sel.PtInRegion(-3, 0)); // exclusive or: what stuck out stays selected
    sel.Crop();
    EXPECT_FALSE(sel.PtInRegion(-3, 0));
    sel.Offset(100, 0);
    EXPECT_TRUE(sel.PtInRegion(109, 9));
    EXPECT_FALSE(sel.PtInRegion(9, 9));
}

TEST(Selection, OffsetStopsAtTheIntegerLimitsInsteadOfWrapping)
{
    cBitRegion sel;
    sel.CreateRect(0, 0, 10, 10, 2, false);
    sel.Offset(2147483640, 0);
    int l, t, r, b;
    ASSERT_TRUE(sel.BoundRect(l, t, r, b));
    EXPECT_EQ(l, 2147483640);
    EXPECT_EQ(r, 2147483647); // cut at the limit, not wrapped to a negative coordinate
    EXPECT_FALSE(sel.PtInRegion(5, 5));
}

TEST(RegionFile, HeaderAndRectanglesAreLittleEndianIntegers)
{
    cBitRegion sel;
    sel.Init(0, 0, 50, 50);
    sel.CreateRect(1, 2, 4, 3, 2, false);
    sel.CreateRect(10, 2, 12, 5, 2, false);
    const std::string path = tempFile("format.rgn");
    ASSERT_TRUE(sel.SaveToFile(path));
    // Bands: row 2 holds both rectangles, rows 3-4 only the second.
    EXPECT_EQ(readBytes(path), le({32, 1, 3, 48, 1, 2, 12, 5,
                                   1, 2, 4, 3,
                                   10, 2, 12, 3,
                                   10, 3, 12, 5}));
    EXPECT_EQ(sel.GetDataCount(), 20u);
    std::remove(path.c_str());
}

TEST(RegionFile, SavedAndReloadedRegionCoversTheSamePixels)
{
    cBitRegion sel;
    sel.Init(0, 0, 60, 60);
    sel.CreateEllipse(3, 5, 50, 41, 2, false);
    sel.CreatePolygon(std::vector<int32_t>{0, 0, 59, 10, 20, 59}, 3, true);
    const std::string path = tempFile("roundtrip.rgn");
    ASSERT_TRUE(sel.SaveToFile(path));
    cBitRegion back;
    back.ZoomFactor(2.0f);
    ASSERT_TRUE(back.LoadFromFile(path));
    EXPECT_TRUE(samePixels(*back.RegionMain(), *sel.RegionMain(), -2, 62));
    EXPECT_EQ(back.GetData(), sel.GetData());
    // The reload also rebuilt the scaled copy at the loader's zoom.
    ASSERT_NE(back.RegionScaled(), nullptr);
    EXPECT_EQ(back.RegionScaled()->box().right, sel.RegionMain()->box().right * 2);
    std::remove(path.c_str());
}

TEST(RegionFile, DataThatIsNotARegionGivesNoRegion)
{
    const std::string path = tempFile("bad.rgn");
    const std::vector<std::vector<uint8_t>> bad = {
        {},                                                   // empty file
        {1, 2, 3},                                            // shorter than one integer
        le({32, 1, 1, 16, 0, 0, 5, 5}),                       // count 1 but no rectangle
        le({32, 1, 1, 16, 0, 0, 5, 5, 0, 0, 5}),              // truncated rectangle
        le({32, 1, 0x7FFFFFFF, 16, 0, 0, 5, 5, 0, 0, 5, 5}),  // huge count
        le({32, 1, -1, 16, 0, 0, 5, 5, 0, 0, 5, 5}),          // negative count
        le({40, 1, 1, 16, 0, 0, 5, 5, 0, 0, 5, 5}),           // wrong header size
        le({32, 2, 1, 16, 0, 0, 5, 5, 0, 0, 5, 5}),           // wrong type
        le({32, 1, 1, 16, 0, 0, 5, 5, 5, 0, 0, 5}),           // rectangle inside out
    };
    for (std::size_t i = 0; i < bad.size(); ++i) {
        writeBytes(path, bad[i]);
        cBitRegion sel;
        sel.Init(0, 0, 10, 10);
        sel.CreateRect(0, 0, 3, 3, 2, false);
        EXPECT_FALSE(sel.LoadFromFile(path)) << "case " << i;
        EXPECT_TRUE(sel.IsEmptyRegion()) << "case " << i;
        EXPECT_EQ(sel.RegionScaled(), nullptr);
    }
    // A stray odd byte after good data is ignored, as whole integers are what is read.
    std::vector<uint8_t> odd = le({32, 1, 1, 16, 0, 0, 5, 5, 0, 0, 5, 5});
    odd.push_back(0xAB);
    writeBytes(path, odd);
    cBitRegion sel;
    EXPECT_TRUE(sel.LoadFromFile(path));
    EXPECT_TRUE(sel.PtInRegion(4, 4));
    std::remove(path.c_str());
    EXPECT_FALSE(sel.LoadFromFile(tempFile("missing.rgn")));
    EXPECT_TRUE(sel.IsEmptyRegion());
}

TEST(RegionFile, OnlyARegularFileWithinTheSizeLimitIsRead)
{
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / "tolmar_region_kinds";
    fs::remove_all(dir);
    fs::create_directories(dir);
    const std::vector<uint8_t> good = le({32, 1, 1, 16, 0, 0, 5, 5, 0, 0, 5, 5});
    // Sparse: the zeros after the region cost no disk, and trailing data is ignored.
    const auto padded = [&good](std::uintmax_t size) {
        return [&good, size](const fs::path& p) {
            writeBytes(p.string(), good);
            fs::resize_file(p, size);
        };
    };
    struct Case
    {
        const char* name;
        std::function<void(const fs::path&)> make;
        bool loads;
    };
    const Case cases[] = {
        {"folder", [](const fs::path& p) { fs::create_directory(p); }, false},
        {"fifo", [](const fs::path& p) { ASSERT_EQ(::mkfifo(p.c_str(), 0600), 0); }, false},
        {"at_limit", padded(cBitRegion::kMaxFileBytes), true},
        {"over_limit", padded(cBitRegion::kMaxFileBytes + 1), false},
    };
    for (const Case& c : cases) {
        const fs::path path = dir / c.name;
        c.make(path);
        cBitRegion sel;
        sel.Init(0, 0, 10, 10);
        sel.CreateRect(0, 0, 3, 3, 2, false);
        auto loaded = std::async(std::launch::async, [&] { return sel.LoadFromFile(path); });
        if (loaded.wait_for(std::chrono::seconds(10)) == std::future_status::timeout) {
            // A loader that opened the FIFO waits for a writer: give it one so the test ends.
            ::close(::open(path.c_str(), O_WRONLY | O_NONBLOCK));
            ADD_FAILURE() << c.name << ": the loader blocked";
        }
        EXPECT_EQ(loaded.get(), c.loads) << c.name;
        EXPECT_EQ(sel.IsEmptyRegion(), !c.loads) << c.name;
    }
    fs::remove_all(dir);
}

TEST(Zoom, EachRectangleScalesWithTiesToEven)
{
    cBitRegion sel;
    sel.Init(0, 0, 100, 100);
    sel.CreateRect(3, 4, 4, 5, 2, false);
    sel.ZoomFactor(2.0f);
    EXPECT_EQ(*sel.RegionScaled(), Region::fromRect({6, 8, 8, 10})); // 2 by 2
    sel.ZoomFactor(0.5f);
    // 1.5 -> 2, 2 -> 2, 2.5 -> 2: the pixel vanishes at half size rather than growing.
    EXPECT_EQ(sel.GetScaledData()[8], 2);
    EXPECT_EQ(sel.GetScaledData()[9], 2);
    EXPECT_TRUE(sel.RegionScaled()->isEmpty());
    sel.ZoomFactor(0.0f); // no zoom: the scaled copy is the region itself
    EXPECT_EQ(*sel.RegionScaled(), *sel.RegionMain());
}

TEST(Brush, EightPhasesOfDiagonalStripes)
{
    cBitRegion sel;
    const auto first = sel.BrushPattern(0);
    EXPECT_EQ(first, (std::array<uint8_t, 8>{240, 120, 60, 30, 15, 135, 195, 225}));
    for (int p = 1; p < 8; ++p) {
        const auto pat = sel.BrushPattern(p);
        for (int row = 0; row < 8; ++row) // each phase moves the stripes one column on
            EXPECT_EQ(pat[row], uint8_t((first[row] >> p) | (first[row] << (8 - p))));
        EXPECT_NE(pat, first);
    }
    const bool bit00 = sel.BrushBit(0, 0);
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(sel.BrushPhase(), i);
        sel.RotateBrush();
    }
    EXPECT_EQ(sel.BrushPhase(), 0);
    EXPECT_EQ(sel.BrushBit(0, 0), bit00);
}

TEST(Brush, OutlineIsDrawnWithTheCurrentPhase)
{
    cBitRegion sel;
    sel.Init(0, 0, 20, 20);
    sel.CreateRect(2, 2, 10, 10, 2, false);
    BitsBuffer target(20, 20);
    for (std::size_t i = 0; i < target.byteSize(); ++i)
        target.data()[i] = 77;
    sel.DrawToBits(target, 1, 0);
    EXPECT_EQ(target.at(1, 3, 2), sel.BrushBit(2, 2) ? 0 : 255);
    EXPECT_EQ(target.at(3, 3, 2), 77);           // the fourth byte is kept
    EXPECT_EQ(target.at(0, 6, 6), 77);           // inside, not on the frame
    EXPECT_EQ(target.at(0, 2, 2), 77);           // left of the moved frame
}
