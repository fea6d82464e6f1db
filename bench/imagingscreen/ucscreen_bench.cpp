// The drawing control's scroll repaint on a 4000 x 3000 picture in an 800 x 600 view, at
// zoom 1 and 15: p95 of a repaint after each scroll step, beside a plain QPainter::drawImage
// of the same visible rectangle into an image of the view's size. Then BitsFill of the whole
// picture from one point, beside OpenCV's floodFill with four neighbours when it is there
// (medians of runs taken alternately).

#include "imaging/ucscreen.h"

#include <QApplication>
#include <QPainter>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#if TOLMAR_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

using namespace tolmar::imaging;

namespace {

double p95(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[std::min(v.size() - 1, v.size() * 95 / 100)];
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

template <class Fn>
double ms(Fn&& fn)
{
    const auto t0 = std::chrono::steady_clock::now();
    fn();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0)
        .count();
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QImage picture(4000, 3000, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgb(x * 255 / 4000, y * 255 / 3000, (x ^ y) & 255));
    ucScreen screen;
    screen.resize(816, 616);
    screen.setPicture(picture);
    std::printf("%-8s %12s %14s %8s\n", "zoom", "ucScreen p95", "drawImage p95", "ratio");
    for (int zoom : {1, 15}) {
        screen.setZoomFactor(zoom);
        QImage target(screen.viewport()->size(), QImage::Format_RGB32);
        std::vector<double> ours, plain;
        int hMax, vMax;
        screen.GetSBM(hMax, vMax);
        for (int i = 0; i < 300; ++i) {
            screen.Scroll(i * 37 % std::max(hMax, 1), i * 23 % std::max(vMax, 1));
            ours.push_back(ms([&] { screen.viewport()->render(&target); }));
            const QRect src = screen.visibleImageRect();
            int h, v;
            screen.GetSBV(h, v);
            plain.push_back(ms([&] {
                QPainter p(&target);
                p.drawImage(QRect(src.left() * zoom - h, src.top() * zoom - v,
                                  src.width() * zoom, src.height() * zoom),
                            picture, src);
            }));
        }
        std::printf("%-8d %12.2f %14.2f %8.2f\n", zoom, p95(ours), p95(plain),
                    p95(ours) / p95(plain));
    }

    // A flat picture, so that the fill reaches all twelve million pixels; the two fills run
    // alternately and the medians count.
    QImage plain(4000, 3000, QImage::Format_RGB32);
    plain.fill(qRgb(40, 80, 120));
    std::vector<double> ourFills, theirFills;
#if TOLMAR_BENCH_OPENCV
    cv::setNumThreads(1);
#endif
    for (int i = 0; i < 9; ++i) {
        screen.setPicture(plain);
        ourFills.push_back(ms([&] { screen.BitsFill(1999, 1499, 0xFF00FF, 255); }));
#if TOLMAR_BENCH_OPENCV
        // floodFill takes one or three channels, not four.
        cv::Mat m(3000, 4000, CV_8UC3, cv::Scalar(120, 80, 40));
        theirFills.push_back(ms([&] {
            cv::floodFill(m, cv::Point(1999, 1499), cv::Scalar(255, 0, 255), nullptr,
                          cv::Scalar(), cv::Scalar(), 4);
        }));
#endif
    }
    const double fill = median(ourFills);
    const double theirs = theirFills.empty() ? -1 : median(theirFills);
    std::printf("\n%-28s %10s %10s %8s\n", "fill of 12 MP", "ours ms", "other ms", "ratio");
    if (theirs > 0)
        std::printf("%-28s %10.1f %10.1f %8.2f\n", "BitsFill / floodFill 4", fill, theirs,
                    fill / theirs);
    else
        std::printf("%-28s %10.1f %10s %8s\n", "BitsFill", fill, "-", "-");
    return 0;
}
