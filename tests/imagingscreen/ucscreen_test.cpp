// The drawing control driven as the screens and a user drive it: zoom, save, pixels,
// strokes under a selection, the flood fill on a large picture, the viewport, and a long
// filter that is cancelled or runs to its end.

#include "imaging/ucscreen.h"

#include <QApplication>
#include <QEventLoop>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <random>
#include <tuple>

using namespace tolmar::imaging;

namespace {

QImage noise(int w, int h, unsigned seed)
{
    QImage img(w, h, QImage::Format_RGB32);
    std::mt19937 rng(seed);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            img.setPixel(x, y, qRgb(int(rng() % 256), int(rng() % 256), int(rng() % 256)));
    return img;
}

QImage flat(int w, int h, QRgb c)
{
    QImage img(w, h, QImage::Format_RGB32);
    img.fill(c);
    return img;
}

// Waits for a filter job to end; false if it did not within the time.
bool waitForFilter(ucScreen& s, int ms = 20000)
{
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (!s.FilterRunning())
            loop.quit();
    });
    poll.start(5);
    loop.exec();
    return !s.FilterRunning();
}

} // namespace

TEST(ucScreen, ZoomStaysInTheTableAndTellsTheSelection)
{
    ucScreen s;
    s.resize(200, 150);
    s.setPicture(noise(50, 40, 1));
    struct Case
    {
        int start;
        std::function<void(ucScreen&)> op;
        int want;
    };
    const Case cases[] = {
        {15, [](ucScreen& u) { u.ZoomIn(); }, 15},  {1, [](ucScreen& u) { u.ZoomOut(); }, 1},
        {4, [](ucScreen& u) { u.ZoomIn(); }, 5},    {4, [](ucScreen& u) { u.ZoomOut(); }, 3},
        {7, [](ucScreen& u) { u.setZoomFactor(0); }, 1},
        {7, [](ucScreen& u) { u.setZoomFactor(-9); }, 1},
        {7, [](ucScreen& u) { u.setZoomFactor(99); }, 15},
    };
    for (const Case& c : cases) {
        s.setZoomFactor(c.start);
        c.op(s);
        EXPECT_EQ(s.ZoomFactor(), c.want) << "from " << c.start;
        EXPECT_EQ(s.Selection().ZoomFactor(), float(c.want));
        EXPECT_EQ(s.ZoomText(), QString::number(c.want) + ":1");
    }
    // The viewport is re-laid: at 15 the 50 x 40 picture overflows 200 x 150 both ways.
    int hm, vm;
    s.GetSBM(hm, vm);
    EXPECT_GT(hm, 0);
    EXPECT_GT(vm, 0);
    EXPECT_EQ(s.property("ZoomFactor").toInt(), 15);
}

TEST(ucScreen, SaveWritesABitmapUnderTheLastDot)
{
    QTemporaryDir dir;
    ucScreen s;
    const QImage pic = noise(13, 7, 2);
    EXPECT_EQ(s.Save(dir.filePath("none.jpg")), QString()); // no picture, nothing saved
    s.setPicture(pic);
    for (auto [given, want] : {std::pair{"a.b.jpg", "a.b.bmp"}, {"plain", "plain.bmp"},
                               {"x.bmp", "x.bmp"}}) {
        const QString saved = s.Save(dir.filePath(given));
        EXPECT_EQ(saved, dir.filePath(want));
        const QImage back(saved);
        EXPECT_EQ(back.convertToFormat(QImage::Format_RGB32), pic) << given;
    }
}

TEST(ucScreen, PixelsReadBackInTheFiltersColourOrder)
{
    ucScreen s;
    EXPECT_EQ(s.BitsGetPixel(0, 0), 0);
    s.setPicture(flat(4, 3, qRgb(10, 20, 30)));
    EXPECT_EQ(s.BitsGetPixel(3, 2), 10 | 20 << 8 | 30 << 16);
    for (auto [x, y] : {std::pair{-1, 0}, {0, -1}, {4, 0}, {0, 3}})
        EXPECT_EQ(s.BitsGetPixel(x, y), 0);
    s.CreateBlank(0, 5); // refused: the picture stays
    EXPECT_EQ(s.PictureWidth(), 4);
    s.CreateBlank(6, 2); // keeps what overlaps, white elsewhere
    EXPECT_EQ(s.BitsGetPixel(1, 1), 10 | 20 << 8 | 30 << 16);
    EXPECT_EQ(s.BitsGetPixel(5, 1), 0xFFFFFF);
    // Properties are found by their stored names.
    s.setProperty("BarsWidth", 21);
    s.setProperty("MouseScroll", false);
    EXPECT_EQ(s.BarsWidth(), 21);
    EXPECT_FALSE(s.MouseScroll());
}

TEST(ucScreen, AStrokePaintsEachPixelOnceAndStaysInTheSelection)
{
    ucScreen s;
    s.setPicture(flat(20, 10, qRgb(200, 200, 200)));
    const Colour black = 0;
    // There and back along one row in one stroke: half opacity applied once.
    s.CreateDoneBitsTable();
    s.BitsLine(0, 5, 19, 5, black, 1, 128);
    s.BitsLine(19, 5, 0, 5, black, 1, 128);
    const int once = (200 * 127 + 127) / 255;
    EXPECT_EQ(s.BitsGetPixel(7, 5) & 0xFF, once);
    // A new stroke starts a new table and darkens again.
    s.CreateDoneBitsTable();
    s.BitsLine(0, 5, 19, 5, black, 1, 128);
    EXPECT_EQ(s.BitsGetPixel(7, 5) & 0xFF, (once * 127 + 127) / 255);

    // With a selection, nothing outside it changes; points off the picture are skipped.
    s.setPicture(flat(20, 10, qRgb(200, 200, 200)));
    s.Selection().CreateRect(5, 0, 10, 10, 5, true);
    s.UpdateRegion();
    s.CreateDoneBitsTable();
    s.BitsBrush(-2, 4, 9, 0xFF, 255);
    s.BitsRectangle(-5, -5, 30, 30, 0xFF, 3, 255);
    s.BitsLine(0, 2, 19, 2, 0xFF, 1, 255);
    for (int x = 0; x < 20; ++x)
        EXPECT_EQ(s.BitsGetPixel(x, 2), x >= 5 && x < 10 ? 0xFF : 0xC8C8C8) << x;
    EXPECT_EQ(s.BitsGetPixel(2, 4), 0xC8C8C8);
}

namespace {

// The fill written out plainly: a queue over four neighbours from the start, taking every
// pixel of the picture and the selection whose channels lie within the tolerance of the
// start's, each painted once with the blend of the documented opacity arithmetic.
QImage plainFill(const QImage& pic, const cBitRegion& sel, QPoint start, QRgb paint, int a,
                 int tolerance)
{
    QImage out = pic;
    auto inside = [&](QPoint p) {
        return pic.rect().contains(p) && (sel.IsEmptyRegion() || sel.PtInRegion(p.x(), p.y()));
    };
    if (!inside(start))
        return out;
    const QRgb key = pic.pixel(start);
    auto near = [&](QRgb c) {
        return std::abs(qRed(c) - qRed(key)) <= tolerance
            && std::abs(qGreen(c) - qGreen(key)) <= tolerance
            && std::abs(qBlue(c) - qBlue(key)) <= tolerance;
    };
    auto mix = [&](int c, int p) { return (c * (255 - a) + p * a + 127) / 255; };
    std::vector<char> seen(std::size_t(pic.width() * pic.height()), 0);
    auto visit = [&](QPoint q) {
        if (!inside(q) || seen[std::size_t(q.y() * pic.width() + q.x())] || !near(pic.pixel(q)))
            return false;
        return bool(seen[std::size_t(q.y() * pic.width() + q.x())] = 1);
    };
    std::vector<QPoint> queue{start};
    visit(start);
    for (std::size_t i = 0; i < queue.size(); ++i) {
        const QPoint p = queue[i];
        const QRgb c = pic.pixel(p);
        out.setPixel(p, qRgb(mix(qRed(c), qRed(paint)), mix(qGreen(c), qGreen(paint)),
                             mix(qBlue(c), qBlue(paint))));
        for (QPoint d : {QPoint(1, 0), QPoint(-1, 0), QPoint(0, 1), QPoint(0, -1)})
            if (visit(p + d))
                queue.push_back(p + d);
    }
    return out;
}

} // namespace

TEST(ucScreen, FillReachesWhatAPlainFourWayFillReaches)
{
    // Pictures of a few colours scattered pixel by pixel: mazes of runs that wind up,
    // down and back, where a run-based fill can lose or repeat a run, and the selection's
    // edge stops it as an outline would.
    struct Case
    {
        const char* what;
        int colours;  // drawn per pixel from this many
        int grain;    // added to each channel, 0..grain
        int selection; // 0 none, 1 a rectangle, 2 an ellipse
        int tolerance;
        int opacity;
        bool paintTheKey; // paint with the start's own colour
    };
    const Case cases[] = {
        {"two colours, whole picture", 2, 0, 0, 0, 255, false},
        {"three colours, half opacity in an ellipse", 3, 0, 2, 0, 128, false},
        {"grainy colours within a tolerance, in a rectangle", 2, 12, 1, 14, 255, false},
        {"the start's own colour, which leaves every pixel a match", 2, 0, 0, 0, 255, true},
        {"opacity 0 in a rectangle", 2, 0, 1, 0, 0, false},
    };
    std::mt19937 rng(21);
    for (const Case& c : cases) {
        QImage pic(97, 61, QImage::Format_RGB32);
        const QRgb base[3] = {qRgb(30, 60, 90), qRgb(200, 180, 20), qRgb(5, 250, 120)};
        for (int y = 0; y < pic.height(); ++y)
            for (int x = 0; x < pic.width(); ++x) {
                const QRgb b = base[rng() % unsigned(c.colours)];
                auto g = [&] { return c.grain ? int(rng() % unsigned(c.grain + 1)) : 0; };
                pic.setPixel(x, y, qRgb(qRed(b) + g(), qGreen(b) + g(), qBlue(b) + g()));
            }
        for (QPoint start : {QPoint(48, 30), QPoint(0, 0), QPoint(96, 60), QPoint(13, 50)}) {
            ucScreen s;
            s.setPicture(pic);
            if (c.selection == 1)
                s.Selection().CreateRect(10, 5, 80, 55, 5, true);
            else if (c.selection == 2)
                s.Selection().CreateEllipse(3, 2, 90, 58, 5, true);
            const QRgb paint = c.paintTheKey ? pic.pixel(start) : qRgb(250, 0, 250);
            s.BitsFill(start.x(), start.y(), qRed(paint) | qGreen(paint) << 8 | qBlue(paint) << 16,
                       c.opacity, c.tolerance);
            const QImage want = plainFill(pic, s.Selection(), start, paint, c.opacity, c.tolerance);
            EXPECT_EQ(s.Picture(), want) << c.what << ", from " << start.x() << "," << start.y();
        }
    }
    // Twelve million pixels of one colour: no deep stack; a start off the picture does nothing.
    ucScreen s;
    s.setPicture(flat(4000, 3000, qRgb(1, 2, 3)));
    s.BitsFill(-1, 10, 0xFF, 255);
    EXPECT_EQ(s.BitsGetPixel(0, 10), 0x030201);
    s.BitsFill(1234, 2345, 0x00FF00, 255);
    EXPECT_EQ(s.BitsGetPixel(0, 0), 0x00FF00);
    EXPECT_EQ(s.BitsGetPixel(3999, 2999), 0x00FF00);
}

TEST(ucScreen, CopiesMasksSprayAndBrightness)
{
    ucScreen s;
    const QRgb grey = qRgb(100, 100, 100);
    // A 3 x 2 source: one pixel is the key, one is masked out by its fourth byte.
    BitsBuffer src(3, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x)
            src.at(2, x, y) = 250; // red
    src.at(0, 1, 0) = 7;           // blue 7: the key below
    src.at(2, 1, 0) = 0;
    src.at(3, 2, 1) = 255;
    BitsBuffer mask(3, 3);
    mask.at(0, 1, 1) = 255; // full opacity at the centre, nothing around it
    BitsBuffer texture(2, 1);
    texture.at(1, 1, 0) = 255; // black, green
    struct Case
    {
        const char* what;
        std::function<void(ucScreen&)> op;
        std::vector<std::pair<QPoint, QRgb>> want;
    };
    const std::vector<Case> cases = {
        {"paint with a key and off the picture",
         [&](ucScreen& u) { u.BitsPaint(-1, 0, src, 7 << 16, 255); },
         {{{0, 0}, grey}, {{1, 0}, qRgb(250, 0, 0)}, {{0, 1}, qRgb(250, 0, 0)}}},
        {"paint pre-masked", [&](ucScreen& u) { u.BitsPaintPreMasked(0, 0, src, -1, 255); },
         {{{1, 0}, qRgb(0, 0, 7)}, {{2, 1}, grey}, {{1, 1}, qRgb(250, 0, 0)}}},
        {"polygon corners", [](ucScreen& u) { u.BitsPolygon({1, 1, 6, 1, 3, 5}, 0xFF, 1); },
         {{{1, 1}, qRgb(255, 0, 0)}, {{6, 1}, qRgb(255, 0, 0)}, {{3, 5}, qRgb(255, 0, 0)},
          {{3, 3}, grey}}},
        {"airbrush of density 0", [](ucScreen& u) { u.BitsAirbrush(4, 4, 6, 0xFF, 255, 0); },
         {{{4, 4}, grey}}},
        {"airbrush of density 100", [](ucScreen& u) { u.BitsAirbrush(4, 4, 2, 0xFF, 255, 100); },
         {{{4, 4}, qRgb(255, 0, 0)}, {{5, 4}, qRgb(255, 0, 0)}, {{6, 4}, grey}}},
        {"brightness once per stroke",
         [](ucScreen& u) {
             u.CreateDoneBitsTable();
             u.BitsBrightness(4, 4, 3, 50, true);
             u.BitsBrightness(4, 4, 3, 50, true);
         },
         {{{4, 4}, qRgb(150, 150, 150)}, {{7, 4}, grey}}},
        {"stamp through a mask", [&](ucScreen& u) { u.BitsMasked(4, 4, mask, 0xFF, 255); },
         {{{4, 4}, qRgb(255, 0, 0)}, {{5, 4}, grey}}},
        {"fill with a texture", [&](ucScreen& u) { u.BitsFillTexture(3, 3, texture, 255); },
         {{{0, 0}, qRgb(0, 0, 0)}, {{1, 0}, qRgb(0, 255, 0)}, {{8, 7}, qRgb(0, 0, 0)}}},
    };
    for (const Case& c : cases) {
        s.setPicture(flat(9, 8, grey));
        c.op(s);
        for (const auto& [at, colour] : c.want)
            EXPECT_EQ(s.Picture().pixel(at), colour) << c.what << " at " << at.x() << "," << at.y();
    }
    ucScreen::BitsBWMask(src);
    EXPECT_EQ(src.at(0, 2, 1), 255);
    EXPECT_EQ(src.at(1, 0, 0), 0);
}

TEST(ucScreen, SoftenAndSharpenDabsChangeOnlyTheirCircle)
{
    ucScreen s;
    s.setPicture(flat(30, 30, qRgb(90, 150, 210)));
    const QImage before = s.Picture();
    s.BitsSoften(15, 15, 9, 100);
    s.BitsSharpen(3, 3, 9, 50);
    EXPECT_EQ(s.Picture(), before); // a flat colour has nothing to soften or sharpen

    s.setPicture(noise(30, 30, 3));
    const QImage noisy = s.Picture();
    s.BitsSoften(15, 15, 8, 100);
    int changed = 0;
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 30; ++x) {
            const bool inside = (x - 15) * (x - 15) + (y - 15) * (y - 15) <= 16;
            if (s.Picture().pixel(x, y) != noisy.pixel(x, y)) {
                EXPECT_TRUE(inside) << x << "," << y;
                ++changed;
            }
        }
    EXPECT_GT(changed, 30);
}

TEST(ucScreen, TheViewportShowsTheScrolledPartAtTheZoom)
{
    ucScreen s;
    s.resize(120, 90);
    const QImage pic = noise(200, 150, 4);
    s.setPicture(pic);
    s.setZoomFactor(3);
    s.Scroll(61, 95);
    const QRect visible = s.visibleImageRect();
    EXPECT_EQ(visible.topLeft(), QPoint(20, 31));
    EXPECT_LE(visible.width(), 120 / 3 + 2);
    const QImage shown = s.viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    // View pixel (x, y) shows picture pixel ((x + 61) / 3, (y + 95) / 3).
    for (auto [x, y] : {std::pair{0, 0}, {2, 1}, {3, 3}, {50, 40}, {shown.width() - 1, 10}})
        EXPECT_EQ(shown.pixel(x, y), pic.pixel((x + 61) / 3, (y + 95) / 3)) << x << "," << y;
}

TEST(ucScreen, RubberBandsFollowZoomAndScrollAndDrawInTheirBox)
{
    ucScreen s;
    s.resize(200, 150);
    s.setPicture(noise(100, 80, 6));
    s.show();
    s.setZoomFactor(3);
    s.Scroll(30, 12);
    const QImage bare = s.viewport()->grab().toImage();
    // A picture point stands at the centre of its zoomed pixel, x * 3 - 30 + 1; the box
    // reaches one pixel past both points.
    const QRect box(QPoint(12 * 3 - 30, 10 * 3 - 12), QPoint(20 * 3 - 30 + 2, 30 * 3 - 12 + 2));
    for (auto [kind, name] : {std::pair{ucScreen::Shape::Line, "shpLine"},
                              {ucScreen::Shape::Rectangle, "shpRect"},
                              {ucScreen::Shape::Ellipse, "shpEllp"}}) {
        s.ShowShape(kind, QPoint(20, 10), QPoint(12, 30));
        const auto* band = s.findChild<QWidget*>(name);
        ASSERT_NE(band, nullptr) << name;
        EXPECT_EQ(band->geometry(), box) << name;
        const QImage shown = s.viewport()->grab().toImage();
        int changed = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                changed += shown.pixel(x, y) != bare.pixel(x, y);
        EXPECT_GT(changed, 20) << name;
        s.Scroll(0, 0);
        EXPECT_EQ(band->geometry(), box.translated(30, 12)) << name;
        s.HideShape();
        EXPECT_TRUE(band->isHidden()) << name;
        s.Scroll(30, 12);
    }
    s.ShowShape(QRect(5, 6, 10, 4));
    EXPECT_EQ(s.findChild<QWidget*>("shp")->geometry(), QRect(5 * 3 - 30, 6 * 3 - 12, 30, 12));
}

TEST(ucScreen, WithoutAutoRedrawPaintWaitsForUpdateImage)
{
    struct PaintCount : QObject
    {
        int n = 0;
        bool eventFilter(QObject*, QEvent* e) override
        {
            n += e->type() == QEvent::Paint;
            return false;
        }
    } paints;
    ucScreen s;
    s.resize(120, 90);
    s.setPicture(flat(50, 40, qRgb(9, 9, 9)));
    s.show();
    s.viewport()->installEventFilter(&paints);
    // Auto redraw, then what follows the strokes, then whether the view was repainted.
    const std::tuple<bool, std::function<void(ucScreen&)>, bool> cases[] = {
        {true, [](ucScreen&) {}, true},
        {false, [](ucScreen&) {}, false},
        {false, [](ucScreen& u) { u.UpdateImage(); }, true},
        {false, [](ucScreen& u) { u.SetAutoRedraw(true); }, true},
    };
    for (const auto& [autoRedraw, after, repainted] : cases) {
        s.SetAutoRedraw(autoRedraw);
        QApplication::processEvents();
        paints.n = 0;
        s.BitsLine(1, 1, 30, 20, 0xFF, 2);
        s.BitsFill(40, 30, 0xFF00, 255);
        after(s);
        QApplication::processEvents();
        EXPECT_EQ(paints.n > 0, repainted) << "auto redraw " << autoRedraw;
        EXPECT_EQ(s.BitsGetPixel(40, 30), 0xFF00); // the picture changed either way
    }
}

TEST(ucScreen, ALongFilterCanBeCancelledAndOtherwiseReplacesThePicture)
{
    ucScreen s;
    s.setPicture(noise(1500, 1200, 5));
    const QImage before = s.Picture();
    int outcome = -1;
    s.RunFilter([](cBitFilter& f) { return f.Dissolve(); }, [&](bool done) { outcome = done; });
    ASSERT_TRUE(s.FilterRunning());
    s.CancelFilter();
    ASSERT_TRUE(waitForFilter(s));
    EXPECT_EQ(outcome, 0);
    EXPECT_EQ(s.Picture(), before);

    s.RunFilter([](cBitFilter& f) { return f.Invert(); }, [&](bool done) { outcome = done; });
    ASSERT_TRUE(waitForFilter(s));
    EXPECT_EQ(outcome, 1);
    const QRgb p = before.pixel(7, 9);
    EXPECT_EQ(s.Picture().pixel(7, 9), qRgb(255 - qRed(p), 255 - qGreen(p), 255 - qBlue(p)));
}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
