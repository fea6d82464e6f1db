#pragma once

// The harness of the exactness tests: random images (guard bytes included) and random
// rectangular, elliptic and combined regions; the engine's result against the plain formula,
// byte for byte, on the wide loops and on the plain ones.

#include "reference.h"

#include "imaging/engine/bit_filter.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

using namespace tolmar::imaging;
using ref::Px;

inline std::string firstDifference(const BitsBuffer& a, const BitsBuffer& b)
{
    if (!a.sameShape(b))
        return "shapes differ";
    for (int y = a.lowY(); y <= a.highY(); ++y)
        for (int x = a.lowX(); x <= a.highX(); ++x)
            for (int c = 0; c < 4; ++c)
                if (a.at(c, x, y) != b.at(c, x, y))
                    return "channel " + std::to_string(c) + " at " + std::to_string(x) + ","
                         + std::to_string(y) + ": engine " + std::to_string(a.at(c, x, y))
                         + ", formula " + std::to_string(b.at(c, x, y));
    return "";
}

inline Region randomRegion(std::mt19937& rng, int w, int h, int kind)
{
    std::uniform_int_distribution<int> xs(-3, w + 2);
    std::uniform_int_distribution<int> ys(-3, h + 2);
    const Rect r{xs(rng), ys(rng), xs(rng), ys(rng)};
    const Rect e{xs(rng), ys(rng), xs(rng), ys(rng)};
    switch (kind % 3) {
    case 0: return Region::fromRect(r);
    case 1: return Region::fromEllipse(e);
    default:
        return Region::combine(Region::fromRect(r), Region::fromEllipse(e), CombineMode::Xor);
    }
}

using EngineFn = std::function<BitsBuffer(cBitFilter&)>;
using RefFn = std::function<BitsBuffer(const BitsBuffer&, const Region*)>;
// Each trial draws its parameters and returns the two sides to compare.
using Trial = std::function<std::pair<EngineFn, RefFn>(std::mt19937&)>;

inline void checkAgainstFormula(const Trial& trial, int trials = 36, uint32_t seed = 7)
{
    std::mt19937 rng(seed);
    std::uniform_int_distribution<int> size(1, 23);
    for (int i = 0; i < trials; ++i) {
        const int w = size(rng);
        const int h = size(rng);
        const BitsBuffer img = ref::randomImage(rng, w, h);
        const Region region = randomRegion(rng, w, h, i);
        auto [engine, reference] = trial(rng);
        cBitFilter f;
        f.Bits(img);
        f.BitsRegion(&region);
        const BitsBuffer got = engine(f);
        const BitsBuffer want = reference(img, &region);
        ASSERT_EQ(firstDifference(got, want), "") << "trial " << i << ", image " << w << "x"
                                                  << h;
        // Machines without the wide vector units take the plain loops: same bytes.
        cBitFilter plain;
        plain.AllowWideVectors(false);
        plain.Bits(img);
        plain.BitsRegion(&region);
        plain.SetRandomSeed(0x746f6c6d6172ULL);
        f.SetRandomSeed(0x746f6c6d6172ULL);
        ASSERT_EQ(firstDifference(engine(plain), engine(f)), "") << "plain loops, trial " << i;
        // The held image is the source of every read and must come out untouched.
        ASSERT_TRUE(f.Bits() == img);
    }
    // The small pictures carry long fractions. A photograph's size gives the short ones of
    // real use, whose float results land on a half often enough to catch a wide loop that
    // would round them its own way.
    const BitsBuffer big = ref::randomImage(rng, 613, 411);
    const Region oval = Region::fromEllipse({-40, 20, 500, 430});
    auto engine = trial(rng).first;
    cBitFilter wide, plain;
    plain.AllowWideVectors(false);
    for (cBitFilter* f : {&wide, &plain}) {
        f->Bits(big);
        f->BitsRegion(&oval);
    }
    ASSERT_EQ(firstDifference(engine(plain), engine(wide)), "") << "plain loops, 613x411";
}

inline int colourOf(std::mt19937& rng)
{
    return std::uniform_int_distribution<int>(0, 0xFFFFFF)(rng);
}

