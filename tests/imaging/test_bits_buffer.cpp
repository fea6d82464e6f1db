// The held image: its size rules, the size operations and the whole-image statistics.

#include "reference.h"

#include "imaging/engine/bit_filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <cstring>

using namespace tolmar::imaging;

TEST(BitsBuffer, GuardPixelsSurroundTheImage)
{
    BitsBuffer b(5, 3);
    EXPECT_EQ(b.lowX(), -2);
    EXPECT_EQ(b.highX(), 6);
    EXPECT_EQ(b.lowY(), -2);
    EXPECT_EQ(b.highY(), 4);
    b.at(2, -2, -2) = 7;
    b.at(1, 6, 4) = 9;
    EXPECT_EQ(b.data()[2], 7);
    EXPECT_EQ(b.data()[b.byteSize() - 3], 9);
    // Channel is the fastest index: one pixel's four bytes are adjacent.
    EXPECT_EQ(&b.at(3, 0, 0) - &b.at(0, 0, 0), 3);
    EXPECT_EQ(b.pixel(0, 1) - b.pixel(0, 0), static_cast<std::ptrdiff_t>(b.stride()));
}

TEST(HeldImage, SizeFollowsTheArraysUpperBounds)
{
    cBitFilter f;
    f.Bits(BitsBuffer(7, 4));
    EXPECT_EQ(f.BitsWidth(), 7); // upper bound 8, minus 1
    EXPECT_EQ(f.BitsHeight(), 4);
    EXPECT_EQ(f.Bounds(), (Rect{0, 0, 7, 4}));

    // A picture's pixels come without guard pixels and go through the same rule.
    std::vector<uint32_t> rows(10 * 6);
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = 0x01020304u * static_cast<uint32_t>(i + 1);
    f.BitsTakeFromPicture(rows.data(), 10, 6, 10 * 4);
    EXPECT_EQ(f.Bits().lowX(), 0);
    EXPECT_EQ(f.Bits().highX(), 9);
    EXPECT_EQ(f.BitsWidth(), 8);
    EXPECT_EQ(f.BitsHeight(), 4);
    uint32_t p;
    std::memcpy(&p, f.Bits().pixel(3, 2), 4);
    EXPECT_EQ(p, rows[2 * 10 + 3]);
}

TEST(HeldImage, BlackClearsAllFourBytesInsideTheRegionOnly)
{
    std::mt19937 rng(1);
    const BitsBuffer img = ref::randomImage(rng, 12, 9);
    const Region ell = Region::fromEllipse({-3, 2, 10, 14});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&ell);
    f.BitsBlack();
    for (int y = img.lowY(); y <= img.highY(); ++y)
        for (int x = img.lowX(); x <= img.highX(); ++x)
            for (int c = 0; c < 4; ++c) {
                const bool inside = x >= 0 && x < 12 && y >= 0 && y < 9 && ell.contains(x, y);
                ASSERT_EQ(f.Bits().at(c, x, y), inside ? 0 : img.at(c, x, y)) << x << "," << y;
            }
}

TEST(SizeOperations, CropTakesTheRectangleWithinTheBounds)
{
    std::mt19937 rng(2);
    const BitsBuffer img = ref::randomImage(rng, 10, 8);
    cBitFilter f;
    f.Bits(img);
    int last = -1;
    f.SetProgress([&](int p) { last = p; });
    f.BitsCrop(img, 6, -4, 40, 5); // cut to 6..9 by 0..4
    EXPECT_EQ(last, 100);
    ASSERT_EQ(f.BitsWidth(), 4);
    ASSERT_EQ(f.BitsHeight(), 5);
    for (int y = -2; y <= 6; ++y)
        for (int x = -2; x <= 5; ++x)
            for (int c = 0; c < 4; ++c) {
                const bool image = x >= 0 && x < 4 && y >= 0 && y < 5;
                ASSERT_EQ(f.Bits().at(c, x, y), image ? img.at(c, x + 6, y) : 0);
            }

    // A rectangle entirely outside leaves the image as it was.
    f.BitsCrop(img, 20, 20, 30, 30);
    EXPECT_EQ(f.BitsWidth(), 4);
}

TEST(SizeOperations, CropMaskedMarksPixelsOutsideTheRegion)
{
    std::mt19937 rng(3);
    const BitsBuffer img = ref::randomImage(rng, 10, 8);
    const Region ell = Region::fromEllipse({1, 1, 9, 7});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&ell);
    f.BitsCropMasked(img, 1, 1, 9, 7);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) {
            const uint8_t* p = f.Bits().pixel(x, y);
            const uint8_t* s = img.pixel(x + 1, y + 1);
            EXPECT_EQ(p[0], s[0]);
            EXPECT_EQ(p[2], s[2]);
            EXPECT_EQ(p[3], ell.contains(x + 1, y + 1) ? s[3] : 255);
        }
}

TEST(SizeOperations, ResizeCutsTheSourcePositionDown)
{
    std::mt19937 rng(4);
    for (auto [w, h, nw, nh] : {std::array{7, 5, 3, 9}, {9, 9, 9, 9}, {1, 1, 4, 3},
                                {13, 6, 5, 2}, {3, 7, 10, 10}}) {
        const BitsBuffer img = ref::randomImage(rng, w, h);
        cBitFilter f;
        f.BitsResize(img, nw, nh);
        f.Bits(img);
        f.BitsResize(img, nw, nh);
        ASSERT_EQ(f.BitsWidth(), nw);
        ASSERT_EQ(f.BitsHeight(), nh);
        for (int y = 0; y < nh; ++y)
            for (int x = 0; x < nw; ++x) {
                const int sx = static_cast<int>(std::floor(x * (double(w) / nw)));
                const int sy = static_cast<int>(std::floor(y * (double(h) / nh)));
                ASSERT_EQ(std::memcmp(f.Bits().pixel(x, y), img.pixel(sx, sy), 4), 0);
            }
        EXPECT_EQ(f.Bits().at(0, -1, 0), 0); // fresh guard pixels
    }
}

TEST(SizeOperations, ResampleMixesTheFourNeighbours)
{
    std::mt19937 rng(5);
    for (auto [w, h, nw, nh] : {std::array{8, 6, 6, 4}, {5, 5, 12, 9}, {1, 3, 4, 4},
                                {17, 11, 13, 7}, {4, 4, 4, 4}}) {
        const BitsBuffer img = ref::randomImage(rng, w, h);
        cBitFilter f;
        f.BitsResample(img, nw, nh);
        ASSERT_EQ(f.BitsWidth(), nw);
        // The wide-vector path and the plain one agree to the byte.
        cBitFilter plain;
        plain.AllowWideVectors(false);
        plain.BitsResample(img, nw, nh);
        ASSERT_TRUE(plain.Bits() == f.Bits());
        for (int y = 0; y < nh; ++y)
            for (int x = 0; x < nw; ++x) {
                const double px = x * (double(w) / nw), py = y * (double(h) / nh);
                const int x0 = int(std::floor(px)), y0 = int(std::floor(py));
                const double fx = px - x0, fy = py - y0;
                const int x1 = x0 == w - 1 ? x0 : x0 + 1, y1 = y0 == h - 1 ? y0 : y0 + 1;
                for (int c = 0; c < 3; ++c) {
                    const double v = (1 - fy) * ((1 - fx) * img.at(c, x0, y0) + fx * img.at(c, x1, y0))
                                   + fy * ((1 - fx) * img.at(c, x0, y1) + fx * img.at(c, x1, y1));
                    ASSERT_EQ(f.Bits().at(c, x, y), ref::rint(v)) << x << "," << y << " c" << c;
                }
                ASSERT_EQ(f.Bits().at(3, x, y), img.at(3, x0, y0));
            }
    }
}

TEST(SizeOperations, RotateTurnsClockwiseAndFourTurnsComeHome)
{
    std::mt19937 rng(6);
    BitsBuffer img = ref::randomImage(rng, 7, 4);
    // Guard pixels of a fresh image are zero; keep them so for the comparison at the end.
    cBitFilter f;
    f.Bits(img);
    f.BitsCrop(img, 0, 0, 7, 4);
    img = f.Bits();
    f.BitsRotate90(img);
    ASSERT_EQ(f.BitsWidth(), 4);
    ASSERT_EQ(f.BitsHeight(), 7);
    EXPECT_EQ(f.Bounds(), (Rect{0, 0, 4, 7}));
    // The top-left pixel goes to the top-right corner.
    EXPECT_EQ(std::memcmp(f.Bits().pixel(3, 0), img.pixel(0, 0), 4), 0);
    EXPECT_EQ(std::memcmp(f.Bits().pixel(0, 6), img.pixel(6, 3), 4), 0);
    for (int i = 0; i < 3; ++i)
        f.BitsRotate90(BitsBuffer(f.Bits()));
    EXPECT_TRUE(f.Bits() == img);
}

TEST(Statistics, LuminosityOverTheWholeImageNotTheRegion)
{
    std::mt19937 rng(8);
    const BitsBuffer img = ref::randomImage(rng, 11, 6);
    int mx = 0, mn = 255;
    long sum = 0;
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 11; ++x) {
            const ref::Px p = ref::at(img, x, y);
            const int l = (p.r + p.g + p.b) / 3;
            mx = std::max(mx, l);
            mn = std::min(mn, l);
            sum += l;
        }
    const Region corner = Region::fromRect({0, 0, 1, 1});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&corner);
    EXPECT_EQ(f.GetLMax(), mx);
    EXPECT_EQ(f.GetLMin(), mn);
    EXPECT_EQ(f.GetLMed(), sum / 66);
}

TEST(SizeOperations, ASpareBufferGivesTheSameImageWithCleanGuards)
{
    std::mt19937 rng(10);
    const BitsBuffer img = ref::randomImage(rng, 13, 9);
    using Op = std::function<void(cBitFilter&)>;
    const std::vector<std::pair<Op, std::pair<int, int>>> ops = {
        {[&](cBitFilter& f) { f.BitsResize(img, 6, 5); }, {6, 5}},
        {[&](cBitFilter& f) { f.BitsResample(img, 6, 5); }, {6, 5}},
        {[&](cBitFilter& f) { f.BitsRotate90(img); }, {9, 13}},
        {[&](cBitFilter& f) { f.BitsCrop(img, 2, 1, 8, 6); }, {6, 5}},
    };
    for (const auto& [op, size] : ops) {
        cBitFilter fresh;
        fresh.Bits(img);
        op(fresh);
        cBitFilter reused;
        reused.Bits(img);
        // Garbage everywhere, guard pixels included.
        reused.RecycleBuffer(ref::randomImage(rng, size.first, size.second));
        op(reused);
        EXPECT_TRUE(reused.Bits() == fresh.Bits());
        EXPECT_EQ(reused.Bits().at(2, -1, 0), 0);
        EXPECT_EQ(reused.Bits().at(0, size.first + 1, size.second + 1), 0);
    }
}
