// The neighbourhood, geometric and tone-reducing filters against their plain formulas: one
// row per filter (its call, the ranges its parameters are drawn from, the formula), each
// run on random images and regions and compared byte for byte. Parameter ranges reach past
// the meaningful ones (Soften 105, Sharpen 108, Stucki level 0, a halftone radius, block
// size or tile count of 0 or less, even and empty kernels, an empty palette), where the
// formula's answer is the image unchanged.

#include "filter_check.h"

#include <atomic>
#include <cmath>
#include <set>

namespace {

int draw(std::mt19937& g, int lo, int hi)
{
    return std::uniform_int_distribution<int>(lo, hi)(g);
}

int chan(const Px& p, int c)
{
    return c == 0 ? p.b : (c == 1 ? p.g : p.r);
}

int lastX(const BitsBuffer& s) { return ref::lastX(s); }
int lastY(const BitsBuffer& s) { return ref::lastY(s); }

long ring8(const BitsBuffer& s, int x, int y, int c)
{
    long sum = 0;
    for (int dy = -1; dy <= 1; ++dy)
        for (int dx = -1; dx <= 1; ++dx)
            if (dx || dy)
                sum += s.at(c, x + dx, y + dy);
    return sum;
}

// The common rule of the mapping filters.
void pull(const BitsBuffer& s, long sx, long sy, bool bg, const Px& own, int o[3])
{
    const bool in = sx >= 0 && sx <= lastX(s) && sy >= 0 && sy <= lastY(s);
    for (int c = 0; c < 3; ++c)
        o[c] = in ? s.at(c, int(sx), int(sy)) : (bg ? 0 : chan(own, c));
}

double angleOf(long a, long b)
{
    const double pi = 3.141592;
    if (a == 0)
        return b < 1 ? -pi / 2 : pi / 2;
    return a < 0 ? std::atan(double(b) / a) + pi : std::atan(double(b) / a);
}

const double kDeg = 0.017453288659453392;

// A row whose parameters `draw` gives; `call` runs the engine, `formula` the reference.
template <class Params, class Call, class Formula>
Trial row(Params params, Call call, Formula formula)
{
    return [=](std::mt19937& g) {
        const auto p = params(g);
        EngineFn e = [=](cBitFilter& f) { return call(f, p); };
        RefFn r = [=](const BitsBuffer& s, const Region* reg) { return formula(s, reg, p); };
        return std::make_pair(e, r);
    };
}

using P = std::vector<double>;

// Each channel of a region pixel by one formula, over the scan box of the margins.
template <class Fn>
BitsBuffer each(const BitsBuffer& s, const Region* reg, ref::Margins m, Fn fn)
{
    return ref::applyIn(s, reg, m, [&](int x, int y, const Px& p, int o[3]) {
        for (int c = 0; c < 3; ++c)
            o[c] = fn(x, y, p, c);
    });
}

BitsBuffer rank(const BitsBuffer& s, const Region* reg, int mode, bool diagonal)
{
    const int m = mode == 0 ? 1 : 0;
    return each(s, reg, {m, m, m, m}, [&](int x, int y, const Px&, int c) {
        int v = mode == 0 ? 255 : 0;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if ((std::abs(dx) == std::abs(dy)) == diagonal || (!dx && !dy)) {
                    if (mode == 0)
                        v = std::min<int>(v, s.at(c, x + dx, y + dy));
                    else if (mode == 1)
                        v = std::max<int>(v, s.at(c, x + dx, y + dy));
                }
        return v;
    });
}

BitsBuffer emboss(const BitsBuffer& s, const Region* reg, int amount, bool engrave)
{
    const double k = amount / 10.0;
    return each(s, reg, {}, [&](int x, int y, const Px&, int) {
        const int xx = x == lastX(s) ? x - 1 : x;
        const int yy = y == lastY(s) ? y - 1 : y;
        long sum = 0;
        for (int c = 0; c < 3; ++c) {
            const int d = s.at(c, xx, yy) - s.at(c, xx + 1, yy + 1);
            sum += ref::rint(std::fabs(k * (engrave ? -d : d) + 128));
        }
        return int(std::min(sum / 3, 255L));
    });
}

struct Mask
{
    int size;
    std::vector<int32_t> k;
    MaskFilterArgs a;
};

Mask drawMask(std::mt19937& g)
{
    const int sizes[] = {-1, 0, 1, 2, 3, 3, 5, 5, 7};
    Mask m{sizes[draw(g, 0, 8)], {}, {}};
    const int n = m.size > 0 ? m.size * m.size + (draw(g, 0, 12) == 0) : 0;
    for (int i = 0; i < n; ++i)
        m.k.push_back(draw(g, 0, 20) == 0 ? draw(g, -1, 1) << 30 : draw(g, -4, 4));
    m.a.offset = draw(g, -300, 300);
    if (draw(g, 0, 1))
        m.a = {draw(g, -3, 3), draw(g, -3, 3), m.a.offset, draw(g, 0, 1), draw(g, 0, 1),
               draw(g, 0, 7), draw(g, 0, 1), draw(g, 0, 1)};
    else
        m.a.holdInside = draw(g, 0, 1);
    return m;
}

// Kernels whose sums fit 16 bits, which have a wide loop of their own.
Mask drawSmallMask(std::mt19937& g)
{
    Mask m{draw(g, 0, 1) ? 3 : 5, {}, {}};
    for (int i = 0; i < m.size * m.size; ++i)
        m.k.push_back(draw(g, -4, 4));
    m.a.offset = draw(g, -300, 300);
    m.a.holdInside = draw(g, 0, 1);
    return m;
}

BitsBuffer maskFormula(const BitsBuffer& s, const Region* reg, const Mask& m)
{
    if (m.size < 1 || m.size % 2 == 0 || m.k.size() != std::size_t(m.size * m.size))
        return s;
    const int h = m.size / 2;
    ref::Margins box{h, h, h, h};
    if (m.a.holdInside)
        box = {0, 0, 0, 0, box.minX, box.minY, lastX(s) + 1L - h, lastY(s) + 1L - h};
    // No read past the guard pixels.
    box.minX = std::max(box.minX, h - 2L);
    box.minY = std::max(box.minY, h - 2L);
    box.maxX = std::min(box.maxX, lastX(s) + 2L - h);
    box.maxY = std::min(box.maxY, lastY(s) + 2L - h);
    return ref::applyIn(s, reg, box, [&](int x, int y, const Px& p, int o[3]) {
        int v[3];
        for (int c = 0; c < 3; ++c) {
            __int128 sum = 0;
            for (int j = 0; j < m.size; ++j)
                for (int i = 0; i < m.size; ++i)
                    sum += __int128(m.k[j * m.size + i]) * s.at(c, x + i - h, y + j - h);
            if (m.a.absolute && sum < 0)
                sum = -sum;
            const __int128 w = sum * m.a.scaleMul / (m.a.scaleDiv ? m.a.scaleDiv : 1) + m.a.offset;
            v[c] = w < 0 ? 0 : (w > 255 ? 255 : int(w));
            if (m.a.invert)
                v[c] = 255 - v[c];
        }
        if (m.a.grey)
            v[0] = v[1] = v[2] = (v[0] + v[1] + v[2]) / 3;
        for (int c = 0; c < 3; ++c)
            o[c] = m.a.channels & (1 << c) ? v[c] : chan(p, c);
    });
}

// The rotations' source position, in single precision.
void rotated(const BitsBuffer& s, double angle, int x, int y, float& fx, float& fy)
{
    const float rad = float(angle * kDeg);
    const float c = std::cos(rad), sn = std::sin(rad);
    const int cx = lastX(s) / 2, cy = lastY(s) / 2;
    const float dx = float(x - cx), dy = float(y - cy);
    fx = c * dx - sn * dy + float(cx);
    fy = sn * dx + c * dy + float(cy);
}

BitsBuffer halftone(const BitsBuffer& s, const Region* reg, int R, int diff, int density)
{
    BitsBuffer out = s;
    long l, t, r, b;
    if (R <= 0 || !ref::scanBox(s, reg, {}, l, t, r, b))
        return out;
    const double k = double(R + diff) / R, f = (density + 100) / 100.0;
    const long lim = ref::rint(k * R * R);
    for (long cy = t; cy <= b; cy += 2 * R)
        for (long cx = l; cx <= r; cx += 2 * R) {
            long sum[3] = {0, 0, 0}, n = 0;
            for (long y = cy; y < cy + 2 * R && y <= lastY(s); ++y)
                for (long x = cx; x < cx + 2 * R && x <= lastX(s); ++x)
                    if (reg->contains(int(x), int(y))) {
                        for (int c = 0; c < 3; ++c)
                            sum[c] += s.at(c, int(x), int(y));
                        ++n;
                    }
            const long q = f > 0 ? ref::rint(n / f) : 0;
            for (long dy = -R; dy <= R; ++dy)
                for (long dx = -R; dx <= R; ++dx) {
                    const long x = cx + R + dx, y = cy + R + dy, d2 = dx * dx + dy * dy;
                    if (x > lastX(s) || y > lastY(s) || !reg->contains(int(x), int(y)))
                        continue;
                    for (int c = 0; c < 3; ++c) {
                        const long col = q > 0 ? std::min(ref::rint(double(sum[c]) / q), 255L) : 0;
                        out.at(c, int(x), int(y)) = uint8_t(
                            lim > 0 && d2 <= lim ? ref::rint(col * (1 - double(d2) / lim)) : 0);
                    }
                }
        }
    return out;
}

BitsBuffer stucki(const BitsBuffer& s, const Region* reg, int level)
{
    if (level == 0)
        return s;
    long sum = 0;
    for (int y = 0; y <= lastY(s); ++y)
        for (int x = 0; x <= lastX(s); ++x)
            sum += (s.at(0, x, y) + s.at(1, x, y) + s.at(2, x, y)) / 3;
    const long mean = sum / ((lastX(s) + 1L) * (lastY(s) + 1L));
    std::vector<std::vector<long>> err(lastY(s) + 3, std::vector<long>(lastX(s) + 1));
    const int w[3][5] = {{0, 0, 0, 8, 4}, {2, 4, 8, 4, 2}, {1, 2, 4, 2, 1}};
    return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& p, int o[3]) {
        const long v = std::clamp((p.r + p.g + p.b) / 3 + err[y][x] * 10 / level, 0L, 255L);
        o[0] = o[1] = o[2] = v >= mean ? 255 : 0;
        for (int j = 0; j < 3; ++j)
            for (int i = -2; i <= 2; ++i)
                if (x + i >= 0 && x + i <= lastX(s))
                    err[y + j][x + i] += (v - o[0]) * w[j][i + 2] / 42;
    });
}

BitsBuffer paletteFormula(const BitsBuffer& s, const Region* reg,
                          const std::vector<PaletteEntry>& pal)
{
    if (pal.empty())
        return s;
    BitsBuffer work = s;
    return ref::applyIn(s, reg, {}, [&](int x, int y, const Px&, int o[3]) {
        const Px p = ref::at(work, x, y);
        long best = -1;
        int e[3] = {0, 0, 0};
        for (const PaletteEntry& k : pal) {
            const int b = std::clamp(k.blue, 0, 255), g = std::clamp(k.green, 0, 255),
                      r = std::clamp(k.red, 0, 255);
            const long d = std::abs(p.b - b) + std::abs(p.g - g) + std::abs(p.r - r);
            if (best < 0 || d < best) {
                best = d;
                e[0] = b, e[1] = g, e[2] = r;
            }
        }
        const int err[3] = {p.b - e[0], p.g - e[1], p.r - e[2]};
        for (int c = 0; c < 3; ++c)
            o[c] = e[c];
        if (std::abs(err[0]) + std::abs(err[1]) + std::abs(err[2]) < 4)
            return;
        for (int c = 0; c < 3; ++c) {
            if (x < lastX(work))
                work.at(c, x + 1, y) = uint8_t(ref::clamp255(work.at(c, x + 1, y) + err[c] * 7 / 16));
            if (y < lastY(work) && x > 0 && x < lastX(work))
                work.at(c, x, y + 1) = uint8_t(ref::clamp255(work.at(c, x, y + 1) + err[c] * 4 / 16));
        }
    });
}

struct FilterRow
{
    const char* name;
    Trial trial;
};

// Amounts mostly in the meaningful range, now and then far out of it.
auto amount(int lo, int hi, int far)
{
    return [=](std::mt19937& g) { return P{double(draw(g, 0, 5) ? draw(g, lo, hi) : far - draw(g, 0, 9))}; };
}

const std::vector<FilterRow>& rows()
{
    static const std::vector<FilterRow> table = {
        {"Soften", row([](std::mt19937& g) {
                           // Each of the engine's paths: 16-bit lanes, the float quotient, wide sums.
                           const int pick[5] = {draw(g, -30, 110), draw(g, 95, 104), -1000 - draw(g, 0, 99), -30000, draw(g, 105, 9999)};
                           return P{double(pick[draw(g, 0, 4)]), double(draw(g, 0, 1))};
                       },
                       [](cBitFilter& f, P p) { return f.Soften(int(p[0]), p[1] != 0); },
                       [](const BitsBuffer& s, const Region* reg, P p) {
                           const long a = long(p[0]);
                           const int rb = p[1] != 0 ? 3 : 1;
                           if (a >= 105)
                               return s;
                           return each(s, reg, {1, 1, rb, rb}, [&](int x, int y, const Px& px, int c) {
                               const long n4 = s.at(c, x - 1, y) + s.at(c, x + 1, y) + s.at(c, x, y - 1) + s.at(c, x, y + 1);
                               return ref::clamp255((chan(px, c) * (101 - a) + n4) / (105 - a));
                           });
                       })},
        {"Sharpen", row([](std::mt19937& g) { return P{double(draw(g, 0, 3) ? draw(g, -40, 107) : (draw(g, 0, 1) ? -30000 : draw(g, 108, 9999)))}; }, [](cBitFilter& f, P p) { return f.Sharpen(int(p[0])); },
                        [](const BitsBuffer& s, const Region* reg, P p) {
                            const long a = long(p[0]);
                            if (a >= 108)
                                return s;
                            return each(s, reg, {1, 1, 1, 1}, [&](int x, int y, const Px& px, int c) {
                                return ref::clamp255((chan(px, c) * (124 - a) - 2 * ring8(s, x, y, c)) / (108 - a));
                            });
                        })},
        {"Emboss", row(amount(-200, 200, 0), [](cBitFilter& f, P p) { return f.Emboss(int(p[0])); },
                       [](const BitsBuffer& s, const Region* reg, P p) { return emboss(s, reg, int(p[0]), false); })},
        {"Engrave", row(amount(-200, 200, 0), [](cBitFilter& f, P p) { return f.Engrave(int(p[0])); },
                        [](const BitsBuffer& s, const Region* reg, P p) { return emboss(s, reg, int(p[0]), true); })},
        {"Contour", row([](std::mt19937& g) { return P{double(draw(g, -10, 260)), double(colourOf(g))}; },
                        [](cBitFilter& f, P p) { return f.Contour(int(p[0]), int(p[1])); },
                        [](const BitsBuffer& s, const Region* reg, P p) {
                            const int col = int(p[1]), paint[3] = {col >> 16 & 255, col >> 8 & 255, col & 255};
                            return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                                for (int c = 0; c < 3; ++c)
                                    o[c] = ref::clamp255(8 * chan(px, c) - ring8(s, x, y, c));
                                if ((o[0] + o[1] + o[2]) / 3 >= int(p[0]))
                                    std::copy(paint, paint + 3, o);
                            });
                        })},
        {"Sketch", row([](std::mt19937& g) { return P{double(draw(g, -600, 800)), double(draw(g, 0, 1)), double(colourOf(g))}; },
                       [](cBitFilter& f, P p) { return f.Sketch(int(p[0]), p[1] != 0, int(p[2])); },
                       [](const BitsBuffer& s, const Region* reg, P p) {
                           const int col = int(p[2]), paint[3] = {col >> 16 & 255, col >> 8 & 255, col & 255};
                           return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                               long sum = 0;
                               for (int c = 0; c < 3; ++c)
                                   sum += 8 * chan(px, c) - ring8(s, x, y, c) + 255;
                               const bool bg = sum / 3 > long(p[0]);
                               for (int c = 0; c < 3; ++c)
                                   o[c] = p[1] != 0 ? (bg ? 255 : 0) : (bg ? paint[c] : chan(px, c));
                           });
                       })},
        {"RankFilterN4", row(amount(-1, 2, 99), [](cBitFilter& f, P p) { return f.RankFilterN4(int(p[0])); },
                             [](const BitsBuffer& s, const Region* reg, P p) { return rank(s, reg, int(p[0]), false); })},
        {"RankFilterND", row(amount(-1, 2, 99), [](cBitFilter& f, P p) { return f.RankFilterND(int(p[0])); },
                             [](const BitsBuffer& s, const Region* reg, P p) { return rank(s, reg, int(p[0]), true); })},
        {"Dissolve", row([](std::mt19937&) { return P{}; }, [](cBitFilter& f, P) { return f.Dissolve(); },
                         [](const BitsBuffer& s, const Region* reg, P) {
                             return ref::applyIn(s, reg, {}, [&](int x, int y, const Px&, int o[3]) {
                                 long best = -1;
                                 for (int w = 0; w < 4; ++w) {
                                     const int wx = w % 2 ? x : x - 2, wy = w < 2 ? y - 2 : y;
                                     int mean[3];
                                     long dev = 0;
                                     for (int c = 0; c < 3; ++c) {
                                         int sum = 0;
                                         for (int j = 0; j < 9; ++j)
                                             sum += s.at(c, wx + j % 3, wy + j / 3);
                                         mean[c] = sum / 9;
                                         for (int j = 0; j < 9; ++j)
                                             dev += std::abs(s.at(c, wx + j % 3, wy + j / 3) - mean[c]);
                                     }
                                     if (best < 0 || dev < best)
                                         best = dev, std::copy(mean, mean + 3, o);
                                 }
                             });
                         })},
        {"Pixelize", row(amount(-1, 9, 1 << 30), [](cBitFilter& f, P p) { return f.Pixelize(int(p[0])); },
                         [](const BitsBuffer& s, const Region* reg, P p) {
                             const long n = long(p[0]);
                             if (n <= 0)
                                 return s;
                             return each(s, reg, {}, [&](int x, int y, const Px&, int c) {
                                 long sum = 0, count = 0;
                                 for (long yy = y / n * n; yy < y / n * n + n && yy <= lastY(s); ++yy)
                                     for (long xx = x / n * n; xx < x / n * n + n && xx <= lastX(s); ++xx)
                                         sum += s.at(c, int(xx), int(yy)), ++count;
                                 return int(sum / count);
                             });
                         })},
        {"Diffuse", row([](std::mt19937& g) { return P{double(draw(g, -6, 12)), double(draw(g, -6, 12)), double(g())}; },
                        [](cBitFilter& f, P p) { f.SetRandomSeed(uint64_t(p[2])); return f.Diffuse(int(p[0]), int(p[1])); },
                        [](const BitsBuffer& s, const Region* reg, P p) {
                            std::mt19937_64 gen{uint64_t(p[2])};
                            auto next = [&] { return double(gen() >> 11) * 0x1.0p-53; };
                            return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                                const double r1 = next(), r2 = next();
                                pull(s, ref::rint(r1 * p[0] + x - p[0] / 2), ref::rint(r2 * p[1] + y - p[1] / 2), false, px, o);
                            });
                        })},
        {"MaskFilter", row(drawMask, [](cBitFilter& f, const Mask& m) { return f.MaskFilter(m.k, m.size, m.a); }, maskFormula)},
        {"MaskFilterSmall", row(drawSmallMask, [](cBitFilter& f, const Mask& m) { return f.MaskFilter(m.k, m.size, m.a); }, maskFormula)},
        {"Bend", row([](std::mt19937& g) { return P{double(draw(g, -300, 300)), double(draw(g, 0, 1))}; },
                     [](cBitFilter& f, P p) { return f.Bend(int(p[0]), p[1] != 0); },
                     [](const BitsBuffer& s, const Region* reg, P p) {
                         const double k = p[0] / 100 + 2;
                         return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                             const long dx = x - lastX(s) / 2, dy = y - lastY(s) / 2;
                             float a = float(-angleOf(dy, dx));
                             if (dy < 0 || dx > 0)
                                 a += 6.283184f;
                             pull(s, ref::rint(double(a) * lastX(s) / double(6.283184f)),
                                  ref::rint(lastY(s) - k * std::sqrt(double(dx * dx + dy * dy))), p[1] != 0, px, o);
                         });
                     })},
        {"Fold", row([](std::mt19937& g) { return P{double(draw(g, -300, 300)), double(draw(g, -300, 300)), double(draw(g, 0, 1))}; },
                     [](cBitFilter& f, P p) { return f.Fold(int(p[0]), int(p[1]), p[2] != 0); },
                     [](const BitsBuffer& s, const Region* reg, P p) {
                         return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                             const int cx = lastX(s) / 2, cy = lastY(s) / 2, dx = x - cx, dy = y - cy;
                             const double bx = lastY(s) ? dy / 100.0 * p[1] / lastY(s) : 0;
                             const double by = lastX(s) ? dx / 100.0 * p[0] / lastX(s) : 0;
                             pull(s, ref::rint((bx + 1) * dx + cx), ref::rint((by + 1) * dy + cy), p[2] != 0, px, o);
                         });
                     })},
        {"Lens", row([](std::mt19937& g) {
                         std::uniform_real_distribution<float> u(-0.5f, 1.5f);
                         return std::vector<float>{u(g), u(g), u(g) * 0.8f, float(draw(g, -20, 170))};
                     },
                     [](cBitFilter& f, std::vector<float> p) { return f.Lens(p[0], p[1], p[2], int(p[3])); },
                     [](const BitsBuffer& s, const Region* reg, std::vector<float> p) {
                         const long cx = ref::rint(double(p[0]) * lastX(s)), cy = ref::rint(double(p[1]) * lastY(s));
                         const long R = ref::rint(double(p[2]) * std::min(lastX(s), lastY(s)));
                         const float sr = float(150 - long(p[3])) * float(R) / 150.0f;
                         const long h2 = ref::rint(double(R) * R - double(sr) * sr);
                         return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                             const long dx = x - cx, dy = y - cy;
                             pull(s, x, y, false, px, o);
                             if (R < 0 || std::abs(dx) > R || std::abs(dy) > R || dx * dx + dy * dy >= h2)
                                 return;
                             const long z = ref::rint(std::sqrt(double(R * R - dx * dx - dy * dy)));
                             pull(s, cx + ref::rint(double(sr) * dx) / z, cy + ref::rint(double(sr) * dy) / z, false, px, o);
                         });
                     })},
        {"Twirl", row([](std::mt19937& g) { return P{double(draw(g, -500, 500)), double(draw(g, -720, 720)), double(draw(g, 0, 1))}; },
                      [](cBitFilter& f, P p) { return f.Twirl(int(p[0]), int(p[1]), p[2] != 0); },
                      [](const BitsBuffer& s, const Region* reg, P p) {
                          const int cx = lastX(s) / 2, cy = lastY(s) / 2;
                          const float k = cx > 0 ? (float(p[0]) / 10.0f) / float(cx) : 0.0f;
                          return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                              const long dx = x - cx, dy = y - cy, r = ref::rint(std::sqrt(double(dx * dx + dy * dy)));
                              const float a = float(angleOf(dx, dy)) - k * float(r);
                              const double t = double(a) + p[1] * kDeg;
                              pull(s, r ? ref::rint(r * std::cos(t) + cx) : x, r ? ref::rint(r * std::sin(t) + cy) : y, p[2] != 0, px, o);
                          });
                      })},
        {"Waves", row([](std::mt19937& g) { return P{double(draw(g, -40, 40)), double(draw(g, -80, 80)), double(draw(g, -360, 360))}; },
                      [](cBitFilter& f, P p) { return f.Waves(int(p[0]), int(p[1]), int(p[2])); },
                      [](const BitsBuffer& s, const Region* reg, P p) {
                          return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                              pull(s, x, ref::rint(0.25 * p[1] * std::sin((p[0] * y + p[2]) * kDeg) + y), false, px, o);
                          });
                      })},
        {"Rotate", row([](std::mt19937& g) { return P{draw(g, 0, 2) ? draw(g, -4000, 4000) / 10.0 : 90.0 * draw(g, -4, 4), double(draw(g, 0, 1))}; },
                       [](cBitFilter& f, P p) { return f.Rotate(p[0], p[1] != 0); },
                       [](const BitsBuffer& s, const Region* reg, P p) {
                           return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                               float fx, fy;
                               rotated(s, p[0], x, y, fx, fy);
                               pull(s, ref::rint(fx), ref::rint(fy), p[1] != 0, px, o);
                           });
                       })},
        {"RotateSmooth", row([](std::mt19937& g) { return P{draw(g, -4000, 4000) / 10.0}; },
                             [](cBitFilter& f, P p) { return f.RotateSmooth(p[0]); },
                             [](const BitsBuffer& s, const Region* reg, P p) {
                                 return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                                     float fx, fy;
                                     rotated(s, p[0], x, y, fx, fy);
                                     const int x0 = int(std::floor(fx)), y0 = int(std::floor(fy));
                                     pull(s, x, y, false, px, o);
                                     if (x0 < 0 || y0 < 0 || x0 + 1 > lastX(s) || y0 + 1 > lastY(s))
                                         return;
                                     const double ax = double(fx) - x0, ay = double(fy) - y0;
                                     for (int c = 0; c < 3; ++c)
                                         o[c] = ref::clamp255(ref::rint(
                                             (1 - ay) * ((1 - ax) * s.at(c, x0, y0) + ax * s.at(c, x0 + 1, y0))
                                             + ay * ((1 - ax) * s.at(c, x0, y0 + 1) + ax * s.at(c, x0 + 1, y0 + 1))));
                                 });
                             })},
        {"Stretch", row([](std::mt19937& g) { return P{double(draw(g, -150, 300)), double(draw(g, -150, 300)), double(draw(g, 0, 1))}; },
                        [](cBitFilter& f, P p) { return f.Stretch(int(p[0]), int(p[1]), p[2] != 0); },
                        [](const BitsBuffer& s, const Region* reg, P p) {
                            const int cx = lastX(s) / 2, cy = lastY(s) / 2;
                            return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                                pull(s, ref::rint((x - cx) * (p[0] / 100 + 1) + cx), ref::rint((y - cy) * (p[1] / 100 + 1) + cy), p[2] != 0, px, o);
                            });
                        })},
        {"Flip", row([](std::mt19937& g) { return P{double(draw(g, 0, 1)), double(draw(g, 0, 1))}; },
                     [](cBitFilter& f, P p) { return f.Flip(p[0] != 0, p[1] != 0); },
                     [](const BitsBuffer& s, const Region* reg, P p) {
                         return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                             pull(s, p[0] != 0 ? lastX(s) - x : x, p[1] != 0 ? lastY(s) - y : y, false, px, o);
                         });
                     })},
        {"Tile", row(amount(-1, 6, 0), [](cBitFilter& f, P p) { return f.Tile(int(p[0])); },
                     [](const BitsBuffer& s, const Region* reg, P p) {
                         const long n = long(p[0]);
                         long l, t, r, b;
                         if (n < 1 || !ref::scanBox(s, reg, {}, l, t, r, b))
                             return s;
                         const long tw = std::max(ref::rint(double(lastX(s) + 1) / n), 1L);
                         const long th = std::max(ref::rint(double(lastY(s) + 1) / n), 1L);
                         const float fx = float(lastX(s) + 1) / float(tw), fy = float(lastY(s) + 1) / float(th);
                         return ref::applyIn(s, reg, {}, [&](int x, int y, const Px& px, int o[3]) {
                             pull(s, ref::rint(float((x - l) % tw) * fx), ref::rint(float((y - t) % th) * fy), false, px, o);
                         });
                     })},
        {"StuckiBW", row(amount(-20, 40, 0), [](cBitFilter& f, P p) { return f.StuckiBW(int(p[0])); },
                         [](const BitsBuffer& s, const Region* reg, P p) { return stucki(s, reg, int(p[0])); })},
        {"Halftone", row([](std::mt19937& g) { return P{double(draw(g, -1, 6)), double(draw(g, -8, 8)), double(draw(g, -150, 150))}; },
                         [](cBitFilter& f, P p) { return f.Halftone(int(p[0]), int(p[1]), int(p[2])); },
                         [](const BitsBuffer& s, const Region* reg, P p) { return halftone(s, reg, int(p[0]), int(p[1]), int(p[2])); })},
        {"Reduction", row(amount(-2, 255, 0), [](cBitFilter& f, P p) { return f.Reduction(int(p[0])); },
                          [](const BitsBuffer& s, const Region* reg, P p) {
                              const double step = p[0] + 1;
                              if (p[0] <= 0)
                                  return s;
                              return each(s, reg, {}, [&](int, int, const Px& px, int c) {
                                  return int(std::min(ref::rint(chan(px, c) / step) * step, 255.0));
                              });
                          })},
        {"PaletteApply", row([](std::mt19937& g) {
                                 std::vector<PaletteEntry> pal(std::size_t(draw(g, 0, 3) ? draw(g, 1, 8) : 0));
                                 for (auto& e : pal)
                                     e = {draw(g, -20, 275), draw(g, 0, 255), draw(g, 0, 255)};
                                 return pal;
                             },
                             [](cBitFilter& f, std::vector<PaletteEntry> pal) { f.SetPalette(pal); return f.PaletteApply(); },
                             paletteFormula)},
    };
    return table;
}

class FilterTable : public testing::TestWithParam<std::size_t>
{
};

} // namespace

TEST_P(FilterTable, MatchesItsFormulaByteForByte)
{
    checkAgainstFormula(rows()[GetParam()].trial, 40, 1000 + uint32_t(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Filters, FilterTable, testing::Range<std::size_t>(0, rows().size()),
                         [](const testing::TestParamInfo<std::size_t>& info) {
                             return std::string(rows()[info.param].name);
                         });

namespace {

BitsBuffer flat(int w, int h, int b, int g, int r)
{
    BitsBuffer img(w, h); // guard pixels 0, as after BitsCrop
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            img.at(0, x, y) = uint8_t(b), img.at(1, x, y) = uint8_t(g), img.at(2, x, y) = uint8_t(r);
    return img;
}

BitsBuffer run(const BitsBuffer& img, const std::function<BitsBuffer(cBitFilter&)>& call)
{
    const Region all = Region::fromRect({0, 0, ref::lastX(img) + 1, ref::lastY(img) + 1});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    return call(f);
}

} // namespace

TEST(FilterEdges, FlatColoursStayFlatAndEmbossGivesGrey128)
{
    const BitsBuffer img = flat(9, 7, 30, 140, 220);
    for (auto call : std::vector<EngineFn>{
             [](cBitFilter& f) { return f.Soften(100, false); },
             [](cBitFilter& f) { return f.Sharpen(0); },
             [](cBitFilter& f) { return f.RankFilterN4(0); },
             [](cBitFilter& f) { return f.RankFilterN4(1); },
             [](cBitFilter& f) { return f.RankFilterND(0); },
             [](cBitFilter& f) { return f.RankFilterND(1); },
             [](cBitFilter& f) { return f.Pixelize(4); },
             [](cBitFilter& f) { return f.Pixelize(1); },
             [](cBitFilter& f) { return f.Dissolve(); },
             [](cBitFilter& f) { return f.Diffuse(0, 0); },
             [](cBitFilter& f) { return f.Rotate(0, true); },
             [](cBitFilter& f) { return f.Stretch(0, 0, true); },
             [](cBitFilter& f) { return f.Reduction(0); }})
        EXPECT_TRUE(run(img, call) == img);
    const BitsBuffer grey = run(img, [](cBitFilter& f) { return f.Emboss(37); });
    EXPECT_TRUE(grey == flat(9, 7, 128, 128, 128));
}

TEST(FilterEdges, GeometryThatReturnsTheImage)
{
    std::mt19937 rng(5);
    const BitsBuffer img = ref::randomImage(rng, 11, 8);
    const Region all = Region::fromRect({0, 0, 11, 8});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    for (auto [h, v] : {std::pair{true, false}, {false, true}, {true, true}}) {
        cBitFilter twice;
        twice.Bits(f.Flip(h, v));
        twice.BitsRegion(&all);
        EXPECT_TRUE(twice.Flip(h, v) == img);
    }
    // Refraction 150: no bend at all, every source collapses to the centre.
    const BitsBuffer lens = f.Lens(0.5f, 0.5f, 0.4f, 150);
    const int cx = 5, cy = 4;
    int touched = 0;
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 11; ++x)
            if ((x - cx) * (x - cx) + (y - cy) * (y - cy) < 9) {
                EXPECT_EQ(lens.at(1, x, y), img.at(1, cx, cy));
                ++touched;
            }
    EXPECT_EQ(touched, 25);
}

TEST(FilterEdges, ToneReductionCases)
{
    // Stucki on flat grey: a pattern around the image's own mean, about half white.
    const BitsBuffer grey = run(flat(40, 30, 128, 128, 128), [](cBitFilter& f) { return f.StuckiBW(10); });
    int white = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            white += grey.at(0, x, y) == 255;
    EXPECT_GT(white, 1200 * 4 / 10);
    EXPECT_LT(white, 1200 * 6 / 10);

    BitsBuffer ramp(256, 1);
    for (int x = 0; x < 256; ++x)
        ramp.at(0, x, 0) = ramp.at(1, x, 0) = ramp.at(2, x, 0) = uint8_t(x);
    const BitsBuffer steps = run(ramp, [](cBitFilter& f) { return f.Reduction(127); });
    std::set<int> values;
    for (int x = 0; x < 256; ++x)
        values.insert(steps.at(2, x, 0));
    EXPECT_EQ(values, (std::set<int>{0, 128, 255}));

    // A colour of the palette is kept, with no error passed on.
    const BitsBuffer img = flat(6, 5, 10, 20, 30);
    const BitsBuffer same = run(img, [](cBitFilter& f) {
        f.SetPalette({{0, 0, 0}, {30, 20, 10}, {255, 255, 255}});
        return f.PaletteApply();
    });
    EXPECT_TRUE(same == img);

    // Difference 0: the dot fills the inscribed circle and the cell's corners are black.
    const BitsBuffer dots = run(flat(8, 8, 200, 200, 200), [](cBitFilter& f) { return f.Halftone(2, 0, 0); });
    EXPECT_EQ(dots.at(0, 0, 0), 0);
    EXPECT_EQ(dots.at(0, 2, 2), 200);
    EXPECT_EQ(dots.at(0, 4, 0), 0);
}

TEST(FilterFrame, ACancelledFilterHandsBackTheHeldImage)
{
    std::mt19937 rng(12);
    const BitsBuffer img = ref::randomImage(rng, 700, 700);
    const Region all = Region::fromRect({0, 0, 700, 700});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    std::atomic<bool> stop{false};
    f.SetCancelFlag(&stop);
    // Raised at the first report, some way down the image: the rest is never filtered.
    int reports = 0;
    f.SetProgress([&](int percent) {
        ++reports;
        if (percent < 100)
            stop = true;
    });
    const BitsBuffer out = f.Dissolve();
    EXPECT_TRUE(f.Cancelled());
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(firstDifference(out, img), "");
    // A flag raised before the start stops at the first row; lowered, the filter runs.
    EXPECT_TRUE(f.Invert() == img);
    stop = false;
    f.SetProgress({});
    EXPECT_FALSE(f.Invert() == img);
    EXPECT_FALSE(f.Cancelled());
}
