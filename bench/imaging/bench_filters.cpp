// Times every filter on one large image, one thread, and sets the matching OpenCV
// operations beside them when OpenCV is there. The median of several runs: the machine is
// shared, and a median is steadier against other people's builds than a best or a mean.

#include "imaging/engine/bit_filter.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <random>
#include <string>

#if TOLMAR_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

using namespace tolmar::imaging;

namespace {

constexpr int kRuns = 11;

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2;
}

double timeOnce(const std::function<void()>& fn)
{
    const auto t0 = std::chrono::steady_clock::now();
    fn();
    const auto t1 = std::chrono::steady_clock::now();
    return std::chrono::duration<double, std::milli>(t1 - t0).count();
}

double medianMs(const std::function<void()>& fn)
{
    fn(); // the first run pays the page faults
    std::vector<double> t;
    for (int i = 0; i < kRuns; ++i)
        t.push_back(timeOnce(fn));
    return median(t);
}

BitsBuffer testImage(int w, int h)
{
    // A smooth picture with some grain: closer to a photograph than pure noise.
    BitsBuffer b(w, h);
    std::mt19937 rng(42);
    std::uniform_int_distribution<int> grain(-12, 12);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            uint8_t* p = b.pixel(x, y);
            p[0] = static_cast<uint8_t>(std::clamp(x * 255 / w + grain(rng), 0, 255));
            p[1] = static_cast<uint8_t>(std::clamp(y * 255 / h + grain(rng), 0, 255));
            p[2] = static_cast<uint8_t>(std::clamp((x + y) * 127 / (w + h) + 64 + grain(rng), 0, 255));
            p[3] = 255;
        }
    return b;
}

struct Row
{
    std::string name;
    double reused;
    double fresh;
    double theirs; // < 0: no match
    std::string theirName;
};

} // namespace

int main(int argc, char** argv)
{
    const int w = argc > 2 ? std::atoi(argv[1]) : 4000;
    const int h = argc > 2 ? std::atoi(argv[2]) : 3000;
    const double mp = w * double(h) / 1e6;
    const BitsBuffer img = testImage(w, h);
    const Region all = Region::fromRect({0, 0, w, h});
    const BitsBuffer texture = testImage(64, 64);

    cBitFilter f;
    f.Bits(img);
    f.BitsRegion(&all);

    using Filter = std::function<BitsBuffer()>;
    const std::vector<std::pair<std::string, Filter>> filters = {
        {"Brightness", [&] { return f.Brightness(40); }},
        {"Invert", [&] { return f.Invert(); }},
        {"Contrast", [&] { return f.Contrast(40); }},
        {"GammaCorrection", [&] { return f.GammaCorrection(50); }},
        {"GreyScale", [&] { return f.GreyScale(); }},
        {"Threshold", [&] { return f.Threshold(128); }},
        {"KillChannel", [&] { return f.KillChannel(true, false, false); }},
        {"SwapRGB", [&] { return f.SwapRGB(0, 1, 2, false, true, false, 0, 0, 15); }},
        {"ShiftRGB", [&] { return f.ShiftRGB(10, -20, 30); }},
        {"Scanlines", [&] { return f.Scanlines(60); }},
        {"Saturation", [&] { return f.Saturation(50); }},
        {"Colorize", [&] { return f.Colorize(1.0, 0.6, 1.0); }},
        {"RotateH", [&] { return f.RotateH(1.5, 100); }},
        {"RotateL", [&] { return f.RotateL(6.0, 0.5); }},
        {"StretchH", [&] { return f.StretchH(20, 80, 30); }},
        {"Noise", [&] { return f.Noise(20, false); }},
        {"Equalize", [&] { return f.Equalize(); }},
        {"Isolate", [&] { return f.Isolate(0x808080, 0, 40); }},
        {"Replace", [&] { return f.Replace(0x808080, 0xFF, 40); }},
        {"ReplaceHS", [&] { return f.ReplaceHS(0x808080, 0xFF, 40, 30, 30); }},
        {"ReplaceL", [&] { return f.ReplaceL(0x808080, 0xFF, 40, 30); }},
        {"Shift", [&] { return f.Shift(0x808080, 40, 40); }},
        {"GradientLinear", [&] { return f.GradientLinear(0, 0, w, h, 0xFF, 0xFF00, 100, 0); }},
        {"GradientCircular", [&] { return f.GradientCircular(w / 2, h / 2, w, h, 0xFF, 0xFF00, 100, 0); }},
        {"Grid", [&] { return f.Grid(16, 16, true, 0xFFFFFF, 128); }},
        {"Light", [&] { return f.Light(0.5, 0.5, 0.4, 20, 80); }},
        {"Texturize", [&] { return f.Texturize(texture); }},
        {"TileMask", [&] { return f.TileMask(texture, 3, 5, false, 40, 0); }},
        {"Emboss", [&] { return f.Emboss(30); }},
        {"Engrave", [&] { return f.Engrave(30); }},
        {"Sketch", [&] { return f.Sketch(300, false, 0xFFFFFF); }},
        {"Dissolve", [&] { return f.Dissolve(); }},
        {"Pixelize 8", [&] { return f.Pixelize(8); }},
        {"Diffuse 5 5", [&] { return f.Diffuse(5, 5); }},
        {"Bend", [&] { return f.Bend(50, true); }},
        {"Fold", [&] { return f.Fold(40, 40, true); }},
        {"Lens", [&] { return f.Lens(0.5f, 0.5f, 0.45f, 60); }},
        {"Twirl", [&] { return f.Twirl(50, 20, true); }},
        {"Waves", [&] { return f.Waves(5, 40, 0); }},
        {"Tile 3", [&] { return f.Tile(3); }},
        {"StuckiBW", [&] { return f.StuckiBW(10); }},
        {"Halftone 4", [&] { return f.Halftone(4, 1, 0); }},
        {"PaletteApply 16", [&] {
             std::vector<PaletteEntry> pal;
             for (int i = 0; i < 16; ++i)
                 pal.push_back({i * 17, 255 - i * 17, (i * 53) % 256});
             f.SetPalette(pal);
             return f.PaletteApply();
         }},
    };

    // A name part of "matched" runs only the pairs with a counterpart.
    const std::string only = argc > 3 ? argv[3] : "";
    const bool matchedOnly = only == "matched";
    std::vector<Row> rows;
    for (const auto& entry : filters) {
        const std::string& name = entry.first;
        const Filter& fn = entry.second;
        if (matchedOnly || name.find(only) == std::string::npos)
            continue;
        BitsBuffer keep;
        const double fresh = medianMs([&] { keep = fn(); });
        const double reused = medianMs([&] {
            f.RecycleBuffer(std::move(keep));
            keep = fn();
        });
        rows.push_back({name, reused, fresh, -1, ""});
    }
    // The floor for a filter with no match elsewhere: one copy of the image.
    {
        BitsBuffer copy = BitsBuffer::uninitialisedLike(img);
        const double ms = medianMs([&] { std::memcpy(copy.data(), img.data(), img.byteSize()); });
        rows.push_back({"(memcpy)", ms, ms, -1, "the floor for unmatched filters"});
    }

    // Matched operations run alternately with their OpenCV counterpart, so that a busy
    // machine slows both sides alike; the median of each side counts.
    struct Match
    {
        std::string name;
        std::function<void()> ours;
        std::function<void()> theirs;
        std::string theirName;
    };
    std::vector<Match> matches;
    BitsBuffer keep;
    [[maybe_unused]] auto reuse = [&](const std::function<BitsBuffer()>& fn) {
        return [&f, &keep, fn] {
            f.RecycleBuffer(std::move(keep));
            keep = fn();
        };
    };
    cBitFilter sizer;
    // The previous result goes back as the spare, as OpenCV reuses its destination.
    matches.push_back({"BitsResize 1/2",
                       [&] {
                           sizer.RecycleBuffer(sizer.TakeBits());
                           sizer.BitsResize(img, w / 2, h / 2);
                       },
                       {}, ""});
    matches.push_back({"BitsResample 3/4",
                       [&] {
                           sizer.RecycleBuffer(sizer.TakeBits());
                           sizer.BitsResample(img, w * 3 / 4, h * 3 / 4);
                       },
                       {}, ""});
#if TOLMAR_BENCH_OPENCV
    cv::setNumThreads(1);
    const cv::Mat src(h, w, CV_8UC4, const_cast<uint8_t*>(img.pixel(0, 0)), img.stride());
    cv::Mat dst(h, w, CV_8UC4);
    cv::Mat lut(1, 256, CV_8UC4);
    for (int i = 0; i < 256; ++i)
        lut.at<cv::Vec4b>(0, i) = cv::Vec4b(cv::saturate_cast<uint8_t>(i + 40),
                                            cv::saturate_cast<uint8_t>(i + 40),
                                            cv::saturate_cast<uint8_t>(i + 40), uint8_t(i));
    const cv::Matx44f grey(0.071f, 0.707f, 0.222f, 0, 0.071f, 0.707f, 0.222f, 0, 0.071f,
                           0.707f, 0.222f, 0, 0, 0, 0, 1);
    cv::Mat half;
    cv::Mat three;
    matches[0].theirs = [&] { cv::resize(src, half, cv::Size(w / 2, h / 2), 0, 0, cv::INTER_NEAREST); };
    matches[0].theirName = "resize NEAREST";
    matches[1].theirs = [&] {
        cv::resize(src, three, cv::Size(w * 3 / 4, h * 3 / 4), 0, 0, cv::INTER_LINEAR);
    };
    matches[1].theirName = "resize LINEAR";
    matches.push_back({"Brightness", reuse([&] { return f.Brightness(40); }),
                       [&] { cv::add(src, cv::Scalar(40, 40, 40, 0), dst); }, "add"});
    matches.push_back({"Brightness", reuse([&] { return f.Brightness(40); }),
                       [&] { cv::LUT(src, lut, dst); }, "LUT"});
    matches.push_back({"GreyScale", reuse([&] { return f.GreyScale(); }),
                       [&] { cv::transform(src, dst, grey); }, "transform"});
    matches.push_back({"Invert", reuse([&] { return f.Invert(); }),
                       [&] { cv::bitwise_not(src, dst); }, "bitwise_not"});

    // Neighbourhood and geometric filters against their counterparts, with OpenCV's own
    // border handling; the kernels are the same sums.
    const cv::Mat cross = cv::getStructuringElement(cv::MORPH_CROSS, cv::Size(3, 3));
    const cv::Mat ex = (cv::Mat_<uint8_t>(3, 3) << 1, 0, 1, 0, 1, 0, 1, 0, 1);
    const cv::Mat soft = (cv::Mat_<float>(3, 3) << 0, 1, 0, 1, 1, 1, 0, 1, 0) / 5.0f;
    const cv::Mat sharp = (cv::Mat_<float>(3, 3) << -2, -2, -2, -2, 24, -2, -2, -2, -2) / 8.0f;
    const cv::Mat laplace = (cv::Mat_<float>(3, 3) << -1, -1, -1, -1, 8, -1, -1, -1, -1);
    const std::vector<int32_t> k3 = {0, -1, 0, -1, 5, -1, 0, -1, 0};
    const cv::Mat m3 = (cv::Mat_<float>(3, 3) << 0, -1, 0, -1, 5, -1, 0, -1, 0);
    std::vector<int32_t> k5(25, 0);
    cv::Mat m5 = cv::Mat::zeros(5, 5, CV_32F);
    for (int j = 0; j < 5; ++j)
        for (int i = 0; i < 5; ++i) {
            const int v = (i == 2 && j == 2) ? 9 : ((i + j) % 2 ? -1 : 0);
            k5[j * 5 + i] = v;
            m5.at<float>(j, i) = float(v);
        }
    const cv::Point2f centre(float(w - 1) / 2, float(h - 1) / 2);
    const cv::Mat turn = cv::getRotationMatrix2D(centre, 30, 1.0);
    // Stretch by 50 %: the source lies 1.5 times as far from the centre.
    const cv::Mat scale = (cv::Mat_<double>(2, 3) << 1.5, 0, centre.x - 1.5 * centre.x, 0, 1.5,
                           centre.y - 1.5 * centre.y);
    cv::Mat steps(1, 256, CV_8UC4);
    for (int i = 0; i < 256; ++i) {
        const uint8_t v = uint8_t(std::min(255.0, std::nearbyint(i / 32.0) * 32));
        steps.at<cv::Vec4b>(0, i) = cv::Vec4b(v, v, v, uint8_t(i));
    }
    matches.push_back({"RankFilterN4 0", reuse([&] { return f.RankFilterN4(0); }),
                       [&] { cv::erode(src, dst, cross); }, "erode cross 3x3"});
    matches.push_back({"RankFilterN4 1", reuse([&] { return f.RankFilterN4(1); }),
                       [&] { cv::dilate(src, dst, cross); }, "dilate cross 3x3"});
    matches.push_back({"RankFilterND 0", reuse([&] { return f.RankFilterND(0); }),
                       [&] { cv::erode(src, dst, ex); }, "erode X 3x3"});
    matches.push_back({"RankFilterND 1", reuse([&] { return f.RankFilterND(1); }),
                       [&] { cv::dilate(src, dst, ex); }, "dilate X 3x3"});
    matches.push_back({"Soften 100", reuse([&] { return f.Soften(100, false); }),
                       [&] { cv::filter2D(src, dst, -1, soft); }, "filter2D 5-point"});
    matches.push_back({"Sharpen 100", reuse([&] { return f.Sharpen(100); }),
                       [&] { cv::filter2D(src, dst, -1, sharp); }, "filter2D 3x3"});
    matches.push_back({"Contour", reuse([&] { return f.Contour(300, 0xFF); }),
                       [&] { cv::filter2D(src, dst, -1, laplace); }, "filter2D Laplacian"});
    matches.push_back({"MaskFilter 3x3", reuse([&] { return f.MaskFilter(k3, 3); }),
                       [&] { cv::filter2D(src, dst, -1, m3); }, "filter2D 3x3"});
    matches.push_back({"MaskFilter 5x5", reuse([&] { return f.MaskFilter(k5, 5); }),
                       [&] { cv::filter2D(src, dst, -1, m5); }, "filter2D 5x5"});
    matches.push_back({"Rotate 30", reuse([&] { return f.Rotate(30, true); }),
                       [&] { cv::warpAffine(src, dst, turn, src.size(), cv::INTER_NEAREST); },
                       "warpAffine NEAREST"});
    matches.push_back({"RotateSmooth 30", reuse([&] { return f.RotateSmooth(30); }),
                       [&] { cv::warpAffine(src, dst, turn, src.size(), cv::INTER_LINEAR); },
                       "warpAffine LINEAR"});
    matches.push_back({"Flip", reuse([&] { return f.Flip(true, false); }),
                       [&] { cv::flip(src, dst, 1); }, "flip"});
    matches.push_back({"Stretch 50", reuse([&] { return f.Stretch(50, 50, true); }),
                       [&] {
                           cv::warpAffine(src, dst, scale, src.size(),
                                          cv::INTER_NEAREST | cv::WARP_INVERSE_MAP);
                       },
                       "warpAffine NEAREST"});
    matches.push_back({"Reduction 31", reuse([&] { return f.Reduction(31); }),
                       [&] { cv::LUT(src, steps, dst); }, "LUT"});
#endif
    for (const Match& m : matches) {
        if (!matchedOnly && m.name.find(only) == std::string::npos)
            continue;
        std::vector<double> ours, theirs;
        m.ours();
        if (m.theirs)
            m.theirs();
        for (int i = 0; i < kRuns * 2; ++i) {
            ours.push_back(timeOnce(m.ours));
            if (m.theirs)
                theirs.push_back(timeOnce(m.theirs));
        }
        const double o = median(ours);
        rows.push_back({m.name + " *", o, o, m.theirs ? median(theirs) : -1, m.theirName});
    }

    std::printf("%d x %d (%.1f MP), one thread, median of %d (matched: %d); * = run "
                "alternately with the OpenCV op (result reused)\n",
                w, h, mp, kRuns, kRuns * 2);
    std::printf("%-18s %10s %10s %10s %9s %8s  %s\n", "filter", "ours ms", "fresh ms",
                "other ms", "MP/s", "ratio", "matched with");
    for (const Row& r : rows) {
        char other[32] = "-";
        char ratio[32] = "-";
        if (r.theirs >= 0) {
            std::snprintf(other, sizeof other, "%.2f", r.theirs);
            std::snprintf(ratio, sizeof ratio, "%.2f", r.reused / r.theirs);
        }
        std::printf("%-18s %10.2f %10.2f %10s %9.0f %8s  %s\n", r.name.c_str(), r.reused, r.fresh,
                    other, mp / (r.reused / 1000), ratio, r.theirName.c_str());
    }
    return 0;
}
