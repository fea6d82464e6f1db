#pragma once

// Slow, obvious versions of the filters, written straight from their formulas: one pixel at
// a time, a point test per pixel, doubles everywhere. The engine must match them byte for
// byte.

#include "imaging/engine/bits_buffer.h"
#include "imaging/engine/region.h"

#include <cstdint>
#include <functional>
#include <random>

namespace ref {

using tolmar::imaging::BitsBuffer;
using tolmar::imaging::Region;

struct Px
{
    int b, g, r, a;
};

// out receives blue, green, red; the fourth byte is never touched by a filter.
using PixelFn = std::function<void(int x, int y, const Px& p, int out[3])>;

int lastX(const BitsBuffer& b);
int lastY(const BitsBuffer& b);
Px at(const BitsBuffer& b, int x, int y);

// Copies `src`, then applies `fn` to every region pixel of the image, rows stepping by
// `yStep` from the region's top row.
BitsBuffer apply(const BitsBuffer& src, const Region* region, const PixelFn& fn, int yStep = 1);

// As apply(), over a scan box: the region's bounding box moved in by the margins (left,
// top, right, bottom), then held to the image and to the inclusive limits.
struct Margins
{
    int l = 0, t = 0, r = 0, b = 0;
    long minX = -(1L << 40), minY = -(1L << 40), maxX = 1L << 40, maxY = 1L << 40;
};
BitsBuffer applyIn(const BitsBuffer& src, const Region* region, const Margins& m,
                   const PixelFn& fn);
// The same box, for filters that need it: false when empty.
bool scanBox(const BitsBuffer& src, const Region* region, const Margins& m, long& l, long& t,
             long& r, long& b);

long rint(double v);
int clamp255(long v);

struct Hsl
{
    double h, s, l;
};
Hsl toHsl(int r, int g, int b);
void fromHsl(double h, double s, double l, int& r, int& g, int& b);

int grey(const Px& p);

// Random images with random guard bytes, so that a stray write anywhere shows.
BitsBuffer randomImage(std::mt19937& rng, int w, int h);

} // namespace ref
