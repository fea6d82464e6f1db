// Every pixel filter against its plain formula, on random images and random rectangular,
// elliptic and combined regions, compared byte for byte (guard pixels and the fourth byte
// included).

#include "filter_check.h"

#include "imaging/engine/hsl.h"

#include <cmath>
#include <numbers>

namespace {

// A trial whose formula maps each pixel on its own.
std::pair<EngineFn, RefFn> pixelwise(EngineFn e, std::function<void(const Px&, int o[3])> fn)
{
    return {e, [fn](const BitsBuffer& s, const Region* reg) {
                return ref::apply(s, reg, [&](int, int, const Px& p, int o[3]) { fn(p, o); });
            }};
}

// Pixel filters whose formula maps each channel on its own.
Trial perChannel(std::function<EngineFn(int)> engine, std::function<int(int c, int v, int p)> fn,
                 int lo, int hi, int yStep = 1)
{
    return [=](std::mt19937& rng) {
        const int p = std::uniform_int_distribution<int>(lo, hi)(rng);
        RefFn r = [=](const BitsBuffer& src, const Region* reg) {
            return ref::apply(
                src, reg,
                [&](int, int, const Px& px, int o[3]) {
                    o[0] = fn(0, px.b, p);
                    o[1] = fn(1, px.g, p);
                    o[2] = fn(2, px.r, p);
                },
                yStep);
        };
        return std::make_pair(engine(p), r);
    };
}

} // namespace

TEST(ToneFilters, BrightnessInvertShiftScanlinesMatchTheirTables)
{
    checkAgainstFormula(perChannel([](int a) { return [a](cBitFilter& f) { return f.Brightness(a); }; },
                                   [](int, int v, int a) { return ref::clamp255(v + a); }, -300, 300));
    checkAgainstFormula(perChannel([](int) { return [](cBitFilter& f) { return f.Invert(); }; },
                                   [](int, int v, int) { return 255 - v; }, 0, 0));
    checkAgainstFormula(perChannel([](int a) { return [a](cBitFilter& f) { return f.Scanlines(a); }; },
                                   [](int, int v, int a) { return ref::clamp255(v - a); }, -40, 300, 2));
    checkAgainstFormula(perChannel(
        [](int a) { return [a](cBitFilter& f) { return f.ShiftRGB(a, -a / 2, a / 3 - 20); }; },
        [](int c, int v, int a) {
            const int amount[3] = {a / 3 - 20, -a / 2, a};
            return ref::clamp255(v + amount[c]);
        },
        -200, 200));
}

TEST(ToneFilters, GammaFollowsThePowerCurveAndGoesBlackAtMinus100)
{
    checkAgainstFormula(perChannel(
        [](int p) { return [p](cBitFilter& f) { return f.GammaCorrection(p); }; },
        [](int, int v, int p) {
            const double g = (p + 100) / 100.0;
            return g > 0 ? ref::clamp255(ref::rint(255 * std::pow(v / 255.0, 1 / g))) : 0;
        },
        -150, 300));

    std::mt19937 rng(3);
    const BitsBuffer img = ref::randomImage(rng, 9, 7);
    const Region all = Region::fromRect({0, 0, 9, 7});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    const BitsBuffer out = f.GammaCorrection(-100);
    for (int y = 0; y < 7; ++y)
        for (int x = 0; x < 9; ++x) {
            EXPECT_EQ(out.pixel(x, y)[0] | out.pixel(x, y)[1] | out.pixel(x, y)[2], 0);
            EXPECT_EQ(out.pixel(x, y)[3], img.pixel(x, y)[3]);
        }
}

TEST(ToneFilters, KillAndSwapChannels)
{
    checkAgainstFormula([](std::mt19937& rng) {
        const int flags = std::uniform_int_distribution<int>(0, 7)(rng);
        return pixelwise([flags](cBitFilter& f) {
            return f.KillChannel(flags & 4, flags & 2, flags & 1);
        },
                         [=](const Px& p, int o[3]) {
            o[2] = flags & 4 ? 0 : p.r;
            o[1] = flags & 2 ? 0 : p.g;
            o[0] = flags & 1 ? 0 : p.b;
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_int_distribution<int> ch(0, 2);
        std::uniform_int_distribution<int> bit(0, 1);
        std::uniform_int_distribution<int> mask(-1, 255);
        const int src[3] = {ch(rng), ch(rng), ch(rng)}; // for red, green, blue
        const bool inv[3] = {bool(bit(rng)), bool(bit(rng)), bool(bit(rng))};
        const int m[3] = {mask(rng), mask(rng), mask(rng)};
        return pixelwise([=](cBitFilter& f) {
            return f.SwapRGB(src[0], src[1], src[2], inv[0], inv[1], inv[2], m[0], m[1], m[2]);
        },
                         [=](const Px& p, int o[3]) {
            const int byIndex[3] = {p.b, p.g, p.r};
            for (int k = 0; k < 3; ++k) { // k: red, green, blue
                int v = byIndex[src[k]];
                if (inv[k])
                    v = 255 - v;
                o[2 - k] = v & ~m[k];
            }
        });
    });
}

TEST(ToneFilters, GreyScaleThresholdAndSaturation)
{
    checkAgainstFormula([](std::mt19937&) {
        return pixelwise([](cBitFilter& f) { return f.GreyScale(); },
                         [=](const Px& p, int o[3]) {
            o[0] = o[1] = o[2] = ref::grey(p);
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        const int level = std::uniform_int_distribution<int>(-5, 260)(rng);
        return pixelwise([level](cBitFilter& f) { return f.Threshold(level); },
                         [=](const Px& p, int o[3]) {
            o[0] = o[1] = o[2] = (p.r + p.g + p.b) / 3 > level ? 255 : 0;
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        const int pc = std::uniform_int_distribution<int>(-150, 250)(rng);
        return pixelwise([pc](cBitFilter& f) { return f.Saturation(pc); },
                         [=](const Px& p, int o[3]) {
            const double k = pc / 100.0;
            const int l = (p.r + p.g + p.b) / 3;
            const int in[3] = {p.b, p.g, p.r};
            for (int c = 0; c < 3; ++c)
                o[c] = ref::clamp255(ref::rint(in[c] + k * (in[c] - l)));
        });
    });
}

TEST(ToneFilters, GreyScaleRoundsExactHalvesAsTheDoubleFormulaDoes)
{
    // 222 R + 707 G + 71 B ending in 500 is a half in exact arithmetic; check every such
    // pixel of one green plane against the formula.
    BitsBuffer img(256, 256);
    for (int r = 0; r < 256; ++r)
        for (int b = 0; b < 256; ++b) {
            uint8_t* p = img.pixel(b, r);
            p[0] = static_cast<uint8_t>(b);
            p[1] = 100;
            p[2] = static_cast<uint8_t>(r);
        }
    const Region all = Region::fromRect({0, 0, 256, 256});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    const BitsBuffer out = f.GreyScale();
    int halves = 0;
    for (int r = 0; r < 256; ++r)
        for (int b = 0; b < 256; ++b) {
            halves += (222 * r + 707 * 100 + 71 * b) % 1000 == 500;
            ASSERT_EQ(out.pixel(b, r)[0], ref::grey({b, 100, r, 0})) << r << "," << b;
        }
    EXPECT_GT(halves, 10);
}

namespace {

void contrastRepair(long v[3])
{
    for (;;) {
        bool ok = true;
        for (int c = 0; c < 3; ++c)
            ok = ok && v[c] >= 0 && v[c] <= 255;
        if (ok)
            return;
        if (v[0] < 1 && v[1] < 1 && v[2] < 1 && !(v[0] > 0 || v[1] > 0 || v[2] > 0)) {
            v[0] = v[1] = v[2] = 0;
            return;
        }
        if (v[0] >= 255 && v[1] >= 255 && v[2] >= 255) {
            v[0] = v[1] = v[2] = 255;
            return;
        }
        for (int c = 0; c < 3; ++c) {
            if (v[c] < 0 || v[c] > 255) {
                const long limit = v[c] < 0 ? 0 : 255;
                const long excess = v[c] - limit;
                v[c] = limit;
                v[(c + 1) % 3] += excess / 2;
                v[(c + 2) % 3] += excess / 2;
                break;
            }
        }
    }
}

} // namespace

TEST(ToneFilters, ContrastStretchesAroundTheImageMeanAndRedistributesOverflow)
{
    checkAgainstFormula([](std::mt19937& rng) {
        const int pc = std::uniform_int_distribution<int>(-100, 400)(rng);
        EngineFn e = [pc](cBitFilter& f) { return f.Contrast(pc); };
        RefFn r = [pc](const BitsBuffer& s, const Region* reg) {
            long sum = 0;
            for (int y = 0; y <= ref::lastY(s); ++y)
                for (int x = 0; x <= ref::lastX(s); ++x) {
                    const Px p = ref::at(s, x, y);
                    sum += (p.r + p.g + p.b) / 3;
                }
            const long mean = sum / ((ref::lastX(s) + 1L) * (ref::lastY(s) + 1L));
            const double k = (pc + 100) / 100.0;
            return ref::apply(s, reg, [&](int, int, const Px& p, int o[3]) {
                long v[3] = {ref::rint((p.b - mean) * k + mean), ref::rint((p.g - mean) * k + mean),
                             ref::rint((p.r - mean) * k + mean)};
                contrastRepair(v);
                for (int c = 0; c < 3; ++c)
                    o[c] = static_cast<int>(v[c]);
            });
        };
        return std::make_pair(e, r);
    });
}

TEST(ToneFilters, ContrastMinus100TurnsTheRegionIntoOneGrey)
{
    std::mt19937 rng(11);
    const BitsBuffer img = ref::randomImage(rng, 12, 10);
    const Region all = Region::fromRect({0, 0, 12, 10});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    const int mean = f.GetLMed();
    const BitsBuffer out = f.Contrast(-100);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 12; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(out.at(c, x, y), mean);
}

TEST(ToneFilters, ContrastHandsOverflowToTheOtherChannels)
{
    // One bright red pixel in a dark image: doubled contrast pushes red past 255, and half
    // the excess goes to green and blue where a clamp would have dropped it.
    BitsBuffer img(4, 1);
    for (int x = 0; x < 4; ++x)
        img.pixel(x, 0)[0] = img.pixel(x, 0)[1] = img.pixel(x, 0)[2] = 10;
    img.pixel(0, 0)[0] = 60;  // blue
    img.pixel(0, 0)[1] = 60;  // green
    img.pixel(0, 0)[2] = 250; // red
    const Region all = Region::fromRect({0, 0, 4, 1});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    const BitsBuffer out = f.Contrast(100);
    // mean (123 + 3 * 10) / 4 = 38; red 462 -> 255 with 207 over, green and blue
    // 82 + 103 = 185.
    EXPECT_EQ(out.pixel(0, 0)[2], 255);
    EXPECT_EQ(out.pixel(0, 0)[1], 185);
    EXPECT_EQ(out.pixel(0, 0)[0], 185);
    // 2 * (10 - 38) + 38 = -18 on every channel: all below 1, all to 0.
    EXPECT_EQ(out.pixel(1, 0)[0], 0);
    EXPECT_EQ(out.pixel(1, 0)[2], 0);
}

TEST(ToneFilters, EqualizeStretchesAroundTheMedian)
{
    checkAgainstFormula([](std::mt19937&) {
        EngineFn e = [](cBitFilter& f) { return f.Equalize(); };
        RefFn r = [](const BitsBuffer& s, const Region* reg) {
            long hist[256] = {};
            for (int y = 0; y <= ref::lastY(s); ++y)
                for (int x = 0; x <= ref::lastX(s); ++x) {
                    const Px p = ref::at(s, x, y);
                    ++hist[ref::rint(0.301 * p.r + 0.586 * p.g + 0.113 * p.b)];
                }
            const long half = (ref::lastX(s) + 1L) * (ref::lastY(s) + 1L) / 2;
            long run = 0;
            int m = 255;
            for (int i = 0; i < 256; ++i) {
                run += hist[i];
                if (run > half) {
                    m = i;
                    break;
                }
            }
            if (m > 0 && hist[m] / 2.0 > run - half)
                --m;
            return ref::apply(s, reg, [&](int, int, const Px& p, int o[3]) {
                const int in[3] = {p.b, p.g, p.r};
                for (int c = 0; c < 3; ++c)
                    o[c] = in[c] <= m ? (m == 0 ? 0 : ref::clamp255(ref::rint(in[c] * (127.0 / m))))
                                      : ref::clamp255(ref::rint((in[c] - m) * (127.0 / (255 - m)) + 128));
            });
        };
        return std::make_pair(e, r);
    });
}

TEST(ToneFilters, EqualizeOfOneValueMapsItToTheMiddle)
{
    for (int v : {1, 77, 200, 254}) {
        for (int w : {3, 4}) { // odd and even pixel counts
            BitsBuffer img(w, 3);
            for (int y = 0; y < 3; ++y)
                for (int x = 0; x < w; ++x)
                    img.pixel(x, y)[0] = img.pixel(x, y)[1] = img.pixel(x, y)[2] = uint8_t(v);
            const Region all = Region::fromRect({0, 0, w, 3});
            cBitFilter f;
            f.Bits(img);
            f.BitsRegion(&all);
            // The median is the value itself, and c * (127 / M) puts it at 127.
            EXPECT_EQ(f.Equalize().pixel(1, 1)[1], 127) << "value " << v << " width " << w;
        }
    }
}

TEST(ToneFilters, NoiseDrawsInScanOrder)
{
    for (bool mono : {false, true}) {
        checkAgainstFormula([mono](std::mt19937& rng) {
            const int level = std::uniform_int_distribution<int>(0, 90)(rng);
            const uint64_t seed = rng();
            EngineFn e = [=](cBitFilter& f) {
                f.SetRandomSeed(seed);
                return f.Noise(level, mono);
            };
            RefFn r = [=](const BitsBuffer& s, const Region* reg) {
                std::mt19937_64 gen(seed);
                auto next = [&] { return static_cast<double>(gen() >> 11) * 0x1.0p-53; };
                const double spread = 2.0 * level + 1;
                return ref::apply(s, reg, [&](int, int, const Px& p, int o[3]) {
                    const int in[3] = {p.b, p.g, p.r};
                    double rnd = next();
                    for (int c = 0; c < 3; ++c) {
                        if (c > 0 && !mono)
                            rnd = next();
                        o[c] = ref::clamp255(ref::rint(in[c] + rnd * spread - level));
                    }
                });
            };
            return std::make_pair(e, r);
        });
    }
}

TEST(ColourFilters, HslRoundTripsEveryGreyAndPrimary)
{
    for (int v = 0; v < 256; ++v) {
        const Hsl h = RgbToHsl(v, v, v);
        EXPECT_EQ(h.s, 0);
        EXPECT_EQ(HslToRgb(h.h, h.s, h.l), (Rgb{uint8_t(v), uint8_t(v), uint8_t(v)}));
    }
    EXPECT_DOUBLE_EQ(RgbToHsl(255, 0, 0).h, 0);
    EXPECT_DOUBLE_EQ(RgbToHsl(0, 255, 0).h, 2);
    EXPECT_DOUBLE_EQ(RgbToHsl(0, 0, 255).h, 4);
    EXPECT_DOUBLE_EQ(RgbToHsl(255, 0, 255).h, -1); // magenta sits at the bottom end
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> byte(0, 255);
    for (int i = 0; i < 2000; ++i) {
        const int r = byte(rng), g = byte(rng), b = byte(rng);
        const Hsl h = RgbToHsl(r, g, b);
        EXPECT_EQ(HslToRgb(h.h, h.s, h.l), (Rgb{uint8_t(r), uint8_t(g), uint8_t(b)}));
    }
}

TEST(ColourFilters, ColorizeRotateAndStretchFollowTheHslFormulas)
{
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_real_distribution<double> u(0, 1);
        const double hue = u(rng) * 6 - 1, sat = u(rng), scale = 0.5 + u(rng);
        return pixelwise([=](cBitFilter& f) { return f.Colorize(hue, sat, scale); },
                         [=](const Px& p, int o[3]) {
            ref::fromHsl(hue, sat, (p.r + p.g + p.b) / 765.0 * scale, o[2], o[1], o[0]);
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        const double shift = std::uniform_real_distribution<double>(-7, 7)(rng);
        const int pc = std::uniform_int_distribution<int>(0, 200)(rng);
        return pixelwise([=](cBitFilter& f) { return f.RotateH(shift, pc); },
                         [=](const Px& p, int o[3]) {
            ref::Hsl h = ref::toHsl(p.r, p.g, p.b);
            if (h.s > 0) {
                h.h += shift;
                h.s *= pc / 100.0;
            }
            ref::fromHsl(h.h, h.s, h.l, o[2], o[1], o[0]);
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_real_distribution<double> u(0, 1);
        const double off = u(rng) * 300 - 100, pc = u(rng) * 100, freq = u(rng) * 80;
        return pixelwise([=](cBitFilter& f) { return f.StretchH(off, pc, freq); },
                         [=](const Px& p, int o[3]) {
            const double l = (p.r + p.g + p.b) / 765.0;
            double h = 3 * std::sin(freq / 10 * l) + off / 16.67;
            while (h < -1)
                h += 6;
            while (h > 5)
                h -= 6;
            ref::fromHsl(h, pc / 100, l, o[2], o[1], o[0]);
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_real_distribution<double> u(0, 1);
        const double freq = u(rng) * 20, phase = u(rng) * 6;
        return pixelwise([=](cBitFilter& f) { return f.RotateL(freq, phase); },
                         [=](const Px& p, int o[3]) {
            const int y = ref::grey(p);
            const long v = ref::rint(127.5 * std::sin(y / 255.0 * freq + phase) + 127.5);
            const int in[3] = {p.b, p.g, p.r};
            for (int c = 0; c < 3; ++c) {
                long n = in[c] + (v - y);
                if (n > 255)
                    n -= 255;
                if (n < 0)
                    n += 255;
                o[c] = static_cast<int>(n);
            }
        });
    });
}

namespace {

long threshold(double tol)
{
    return ref::rint(std::pow(tol * 127.5 / 100, 2) + 1);
}

long dist2(const Px& p, int key)
{
    const long dr = p.r - (key & 255), dg = p.g - ((key >> 8) & 255), db = p.b - ((key >> 16) & 255);
    return dr * dr + dg * dg + db * db;
}

void blend(const Px& p, int colour, double a, int o[3])
{
    const int to[3] = {(colour >> 16) & 255, (colour >> 8) & 255, colour & 255};
    const int in[3] = {p.b, p.g, p.r};
    for (int c = 0; c < 3; ++c)
        o[c] = ref::clamp255(ref::rint(in[c] + a * (to[c] - in[c])));
}

// Keys taken from the image itself, so that some pixels sit inside the tolerance.
int keyFrom(std::mt19937& rng)
{
    return std::uniform_int_distribution<int>(0, 0xFFFFFF)(rng) & 0xF0F0F0;
}

} // namespace

TEST(KeyedFilters, IsolateReplaceAndShiftUseTheSquaredDistance)
{
    checkAgainstFormula([](std::mt19937& rng) {
        const int key = keyFrom(rng), other = colourOf(rng);
        const double tol = std::uniform_real_distribution<double>(0, 120)(rng);
        return pixelwise([=](cBitFilter& f) { return f.Isolate(key, other, tol); },
                         [=](const Px& p, int o[3]) {
            o[0] = p.b, o[1] = p.g, o[2] = p.r;
            if (dist2(p, key) >= threshold(tol))
                blend(p, other, 1.0, o);
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        const int key = keyFrom(rng), to = colourOf(rng);
        const double tol = std::uniform_real_distribution<double>(0, 150)(rng);
        return pixelwise([=](cBitFilter& f) { return f.Replace(key, to, tol); },
                         [=](const Px& p, int o[3]) {
            o[0] = p.b, o[1] = p.g, o[2] = p.r;
            const long d = dist2(p, key), t = threshold(tol);
            if (d <= t)
                blend(p, to, 1 - double(d) / double(t), o);
        });
    });
    checkAgainstFormula([](std::mt19937& rng) {
        const int key = keyFrom(rng);
        const int amount = std::uniform_int_distribution<int>(-200, 200)(rng);
        const double tol = std::uniform_real_distribution<double>(0, 150)(rng);
        return pixelwise([=](cBitFilter& f) { return f.Shift(key, amount, tol); },
                         [=](const Px& p, int o[3]) {
            const int in[3] = {p.b, p.g, p.r};
            const long d = dist2(p, key), t = threshold(tol);
            for (int c = 0; c < 3; ++c) {
                o[c] = in[c];
                if (d < t) {
                    const double a = 1 - double(d) / double(t);
                    const int shifted = ref::clamp255(in[c] + amount);
                    o[c] = ref::clamp255(ref::rint(in[c] + a * (shifted - in[c])));
                }
            }
        });
    });
}

TEST(KeyedFilters, ReplaceLAndReplaceHSRespectTheirLimits)
{
    checkAgainstFormula([](std::mt19937& rng) {
        const int key = keyFrom(rng), to = colourOf(rng);
        const double tol = std::uniform_real_distribution<double>(20, 150)(rng);
        const double lim = std::uniform_real_distribution<double>(0, 40)(rng);
        EngineFn e = [=](cBitFilter& f) { return f.ReplaceL(key, to, tol, lim); };
        RefFn r = [=](const BitsBuffer& s, const Region* reg) {
            const int keyLevel = ((key & 255) + ((key >> 8) & 255) + ((key >> 16) & 255)) / 3;
            return ref::apply(s, reg, [&](int, int, const Px& p, int o[3]) {
                o[0] = p.b, o[1] = p.g, o[2] = p.r;
                if (std::abs((p.r + p.g + p.b) / 3 - keyLevel) > lim * 2.55)
                    return;
                const long d = dist2(p, key), t = threshold(tol);
                if (d <= t)
                    blend(p, to, 1 - double(d) / double(t), o);
            });
        };
        return std::make_pair(e, r);
    });
    checkAgainstFormula([](std::mt19937& rng) {
        const int key = keyFrom(rng), to = colourOf(rng);
        std::uniform_real_distribution<double> u(0, 1);
        const double tol = 20 + u(rng) * 100, sLim = u(rng) * 60, lLim = u(rng) * 60;
        EngineFn e = [=](cBitFilter& f) { return f.ReplaceHS(key, to, tol, sLim, lLim); };
        RefFn r = [=](const BitsBuffer& s, const Region* reg) {
            const ref::Hsl k = ref::toHsl(key & 255, (key >> 8) & 255, (key >> 16) & 255);
            return ref::apply(s, reg, [&](int, int, const Px& p, int o[3]) {
                o[0] = p.b, o[1] = p.g, o[2] = p.r;
                const ref::Hsl h = ref::toHsl(p.r, p.g, p.b);
                if (std::fabs(h.s - k.s) * 100 > sLim || std::fabs(h.l - k.l) * 100 > lLim)
                    return;
                const double dh = std::min(std::fabs(h.h - k.h), 6 - std::fabs(h.h - k.h));
                const long d = ref::rint(std::pow(dh / 3 * 255, 2)), t = threshold(tol);
                if (d <= t)
                    blend(p, to, 1 - double(d) / double(t), o);
            });
        };
        return std::make_pair(e, r);
    });
}

TEST(KeyedFilters, ReplaceWithToleranceZeroChangesOnlyTheExactKey)
{
    BitsBuffer img(3, 1);
    const uint8_t px[3][3] = {{30, 20, 10}, {30, 20, 11}, {31, 20, 10}}; // blue, green, red
    for (int x = 0; x < 3; ++x)
        for (int c = 0; c < 3; ++c)
            img.pixel(x, 0)[c] = px[x][c];
    const Region all = Region::fromRect({0, 0, 3, 1});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    const Colour key = 10 | 20 << 8 | 30 << 16;
    const BitsBuffer out = f.Replace(key, 0xFFFFFF, 0);
    // T = 1: the key itself has d2 = 0 and takes the new colour entire; a neighbour one
    // step away has d2 = 1 = T and a blend factor of 0.
    EXPECT_EQ(out.pixel(0, 0)[0], 255);
    EXPECT_EQ(out.pixel(0, 0)[2], 255);
    EXPECT_EQ(out.pixel(1, 0)[2], 11);
    EXPECT_EQ(out.pixel(2, 0)[0], 31);
}

TEST(DecorationFilters, GradientsFollowTheProjectionAndTheDistance)
{
    for (bool circular : {false, true}) {
        checkAgainstFormula([circular](std::mt19937& rng) {
            std::uniform_int_distribution<int> pos(-5, 28);
            const int x1 = pos(rng), y1 = pos(rng), x2 = pos(rng), y2 = pos(rng);
            const int c1 = colourOf(rng), c2 = colourOf(rng);
            const int mode = std::uniform_int_distribution<int>(0, 1)(rng);
            const double pc = std::uniform_real_distribution<double>(10, 200)(rng);
            EngineFn e = [=](cBitFilter& f) {
                return circular ? f.GradientCircular(x1, y1, x2, y2, c1, c2, pc, mode)
                                : f.GradientLinear(x1, y1, x2, y2, c1, c2, pc, mode);
            };
            RefFn r = [=](const BitsBuffer& s, const Region* reg) {
                const double dx = x2 - x1, dy = y2 - y1, dist = std::sqrt(dx * dx + dy * dy);
                if (dist == 0)
                    return s;
                double a = dx == 0 ? (dy > 0 ? std::numbers::pi / 2 : -std::numbers::pi / 2)
                                   : std::atan(dy / dx);
                if (dx < 0)
                    a += std::numbers::pi;
                return ref::apply(s, reg, [&](int x, int y, const Px&, int o[3]) {
                    const double px = double(x) - x1, py = double(y) - y1;
                    double t = circular ? std::sqrt(px * px + py * py) / dist
                                        : (px * std::cos(a) + py * std::sin(a)) / dist;
                    if (mode == 1)
                        t = std::sin(t * (std::numbers::pi * pc / 100));
                    t = std::clamp(t, 0.0, 1.0);
                    const int from[3] = {(c1 >> 16) & 255, (c1 >> 8) & 255, c1 & 255};
                    const int to[3] = {(c2 >> 16) & 255, (c2 >> 8) & 255, c2 & 255};
                    for (int c = 0; c < 3; ++c)
                        o[c] = ref::clamp255(ref::rint(from[c] + t * (to[c] - from[c])));
                });
            };
            return std::make_pair(e, r);
        });
    }
}

TEST(DecorationFilters, GridAndLight)
{
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_int_distribution<int> step(0, 6);
        const int sx = step(rng), sy = step(rng), colour = colourOf(rng);
        const bool both = rng() & 1;
        const int opacity = std::uniform_int_distribution<int>(0, 255)(rng);
        EngineFn e = [=](cBitFilter& f) { return f.Grid(sx, sy, both, colour, opacity); };
        RefFn r = [=](const BitsBuffer& s, const Region* reg) {
            const double a = opacity / 255.0;
            const int col[3] = {(colour >> 16) & 255, (colour >> 8) & 255, colour & 255};
            return ref::apply(s, reg, [&](int x, int y, const Px& p, int o[3]) {
                const int in[3] = {p.b, p.g, p.r};
                const bool on = (sy > 0 && y % sy == 0) || (both && sx > 0 && x % sx == 0);
                for (int c = 0; c < 3; ++c)
                    o[c] = on ? ref::clamp255(ref::rint((1 - a) * in[c] + a * col[c])) : in[c];
            });
        };
        return std::make_pair(e, r);
    });
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_real_distribution<double> u(0, 1);
        const double lx = u(rng), ly = u(rng), rad = u(rng), pc = u(rng) * 100;
        const double level = u(rng) * 400 - 200;
        EngineFn e = [=](cBitFilter& f) { return f.Light(lx, ly, rad, pc, level); };
        RefFn r = [=](const BitsBuffer& s, const Region* reg) {
            const long cx = ref::rint(lx * ref::lastX(s)), cy = ref::rint(ly * ref::lastY(s));
            const long R = ref::rint(rad * std::min(ref::lastX(s), ref::lastY(s)));
            return ref::apply(s, reg, [&](int x, int y, const Px& p, int o[3]) {
                const int in[3] = {p.b, p.g, p.r};
                const double d = std::sqrt(double(x - cx) * (x - cx) + double(y - cy) * (y - cy));
                for (int c = 0; c < 3; ++c) {
                    o[c] = in[c];
                    if (R > 0 && d <= R)
                        o[c] = ref::clamp255(in[c] + ref::rint((1 - (1 - pc / 100) * d / R) * level));
                }
            });
        };
        return std::make_pair(e, r);
    });
}

TEST(DecorationFilters, TexturizeAndTileMaskRepeatTheirPattern)
{
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_int_distribution<int> size(1, 7);
        auto tex = std::make_shared<BitsBuffer>(ref::randomImage(rng, size(rng), size(rng)));
        EngineFn e = [tex](cBitFilter& f) { return f.Texturize(*tex); };
        RefFn r = [tex](const BitsBuffer& s, const Region* reg) {
            const int tw = ref::lastX(*tex) + 1, th = ref::lastY(*tex) + 1;
            return ref::apply(s, reg, [&](int x, int y, const Px& p, int o[3]) {
                const Px t = ref::at(*tex, x % tw, y % th);
                o[0] = ref::clamp255(ref::rint(p.b * t.b / 128.0));
                o[1] = ref::clamp255(ref::rint(p.g * t.g / 128.0));
                o[2] = ref::clamp255(ref::rint(p.r * t.r / 128.0));
            });
        };
        return std::make_pair(e, r);
    });
    checkAgainstFormula([](std::mt19937& rng) {
        std::uniform_int_distribution<int> size(1, 7);
        auto mask = std::make_shared<BitsBuffer>(ref::randomImage(rng, size(rng), size(rng)));
        std::uniform_int_distribution<int> off(-20, 20);
        const int ox = off(rng), oy = off(rng), colour = colourOf(rng);
        const bool useColour = rng() & 1;
        const double pc = std::uniform_real_distribution<double>(0, 100)(rng);
        EngineFn e = [=](cBitFilter& f) { return f.TileMask(*mask, ox, oy, useColour, pc, colour); };
        RefFn r = [=](const BitsBuffer& s, const Region* reg) {
            const int mw = ref::lastX(*mask) + 1, mh = ref::lastY(*mask) + 1;
            const double a = pc / 100;
            const int col[3] = {(colour >> 16) & 255, (colour >> 8) & 255, colour & 255};
            return ref::apply(s, reg, [&](int x, int y, const Px& p, int o[3]) {
                const Px m = ref::at(*mask, ((x + ox) % mw + mw) % mw, ((y + oy) % mh + mh) % mh);
                const int in[3] = {p.b, p.g, p.r}, mc[3] = {m.b, m.g, m.r};
                for (int c = 0; c < 3; ++c) {
                    if (useColour) {
                        const double w = a * ((m.r + m.g + m.b) / 3) / 255.0;
                        o[c] = ref::clamp255(ref::rint(in[c] + w * (col[c] - in[c])));
                    } else {
                        o[c] = ref::clamp255(ref::rint((1 - a) * in[c] + a * mc[c]));
                    }
                }
            });
        };
        return std::make_pair(e, r);
    });
}

TEST(FilterFrame, NoRegionOrAnEmptyOneLeavesTheImageAlone)
{
    std::mt19937 rng(9);
    const BitsBuffer img = ref::randomImage(rng, 8, 6);
    const Region empty;
    const Region outside = Region::fromRect({20, 20, 30, 30});
    for (const Region* r : {static_cast<const Region*>(nullptr), &empty, &outside}) {
        cBitFilter f;
        f.Bits(img);
        f.BitsRegion(r);
        EXPECT_TRUE(f.Invert() == img);
        EXPECT_TRUE(f.Brightness(50) == img);
        EXPECT_TRUE(f.GradientLinear(0, 0, 5, 5, 0, 0xFFFFFF, 100, 0) == img);
    }
}

TEST(FilterFrame, ARecycledResultBufferGivesTheSameResult)
{
    std::mt19937 rng(13);
    const BitsBuffer img = ref::randomImage(rng, 17, 9);
    const Region ell = Region::fromEllipse({-2, 1, 15, 12});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&ell);
    const BitsBuffer fresh = f.Saturation(70);
    BitsBuffer junk = ref::randomImage(rng, 17, 9);
    f.RecycleBuffer(std::move(junk));
    EXPECT_TRUE(f.Saturation(70) == fresh);
}

TEST(FilterFrame, ProgressIsReportedPerRowAndEndsAt100)
{
    BitsBuffer img(3000, 400);
    const Region all = Region::fromRect({0, 0, 3000, 400});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);
    std::vector<int> seen;
    f.SetProgress([&](int p) { seen.push_back(p); });
    // RotateH converts every pixel: slow enough to pass the 10 ms mark several times.
    for (int i = 0; i < 3; ++i)
        f.RotateH(1.5, 80 + i);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.back(), 100);
    for (int p : seen)
        EXPECT_TRUE(p >= 0 && p <= 100);

    // One row: no division by a zero last row, only the final report.
    BitsBuffer line(50, 1);
    const Region lineRegion = Region::fromRect({0, 0, 50, 1});
    f.Bits(line);
    f.BitsRegion(&lineRegion);
    seen.clear();
    f.Invert();
    EXPECT_EQ(seen, std::vector<int>{100});
}

TEST(ToneFilters, LargeImagesTakeTheTwoChannelTableAndGiveTheSameBytes)
{
    // Past kPairTableMinPixels the table filters switch to a blue-green pair table.
    std::mt19937 rng(17);
    const int w = 400, h = 260;
    ASSERT_GE(int64_t(w) * h, cBitFilter::kPairTableMinPixels);
    const BitsBuffer img = ref::randomImage(rng, w, h);
    const Region ell = Region::fromEllipse({-10, -5, w + 3, h + 8});
    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&ell);
    const BitsBuffer shifted = ref::apply(img, &ell, [](int, int, const Px& p, int o[3]) {
        o[0] = ref::clamp255(p.b - 70);
        o[1] = ref::clamp255(p.g + 20);
        o[2] = ref::clamp255(p.r + 90);
    });
    EXPECT_EQ(firstDifference(f.ShiftRGB(90, 20, -70), shifted), "");
    const BitsBuffer gamma = ref::apply(img, &ell, [](int, int, const Px& p, int o[3]) {
        const int in[3] = {p.b, p.g, p.r};
        for (int c = 0; c < 3; ++c)
            o[c] = ref::clamp255(ref::rint(255 * std::pow(in[c] / 255.0, 1 / 1.7)));
    });
    EXPECT_EQ(firstDifference(f.GammaCorrection(70), gamma), "");
    f.AllowWideVectors(false);
    EXPECT_EQ(firstDifference(f.ShiftRGB(90, 20, -70), shifted), "");
    EXPECT_EQ(firstDifference(f.GammaCorrection(70), gamma), "");
}
