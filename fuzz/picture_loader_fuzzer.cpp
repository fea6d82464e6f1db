// libFuzzer target for the drawing control's loader: the bytes are a picture file or a
// clipboard image in whatever format Qt recognises (or none), of any size. Loading must
// either leave no picture or give one whose pixels read back as the decoded image's, and
// the control must zoom, paint and fill it without a fault.

#include "imaging/ucscreen.h"

#include <QApplication>
#include <QClipboard>
#include <QImageReader>

#include <cstddef>
#include <cstdint>

using namespace tolmar::imaging;

namespace {

QApplication* app()
{
    static int argc = 1;
    static char name[] = "picture_loader_fuzzer";
    static char* argv[] = {name, nullptr};
    static QApplication* a = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        // Pictures larger than a real photograph are refused by Qt's own allocation limit.
        QImageReader::setAllocationLimit(64);
        return new QApplication(argc, argv);
    }();
    return a;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    app();
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QImage decoded = QImage::fromData(bytes);
    ucScreen screen;
    screen.resize(64, 48);
    const bool byFile = size % 2 == 0;
    bool loaded;
    if (byFile) {
        loaded = screen.setPicture(decoded);
    } else {
        QApplication::clipboard()->setImage(decoded);
        loaded = screen.PasteFromClipboard();
    }
    if (loaded != (!decoded.isNull() && decoded.width() > 0 && decoded.height() > 0))
        __builtin_trap();
    if (!loaded)
        return 0;
    const QImage rgb = decoded.convertToFormat(QImage::Format_RGB32);
    if (screen.PictureWidth() != rgb.width() || screen.PictureHeight() != rgb.height())
        __builtin_trap();
    const int x = int(size % unsigned(rgb.width()));
    const int y = int((size / 7) % unsigned(rgb.height()));
    const QRgb p = rgb.pixel(x, y);
    if (screen.BitsGetPixel(x, y) != (qRed(p) | qGreen(p) << 8 | qBlue(p) << 16))
        __builtin_trap();
    screen.setZoomFactor(int(size % 17));
    screen.Scroll(x * 3, y * 3);
    (void)screen.viewport()->grab();
    screen.CreateDoneBitsTable();
    screen.BitsBrushLine(-3, -3, rgb.width() + 2, y, 5, 0xFF, 128);
    screen.BitsFill(x, y, 0xFF00, 200, 10);
    screen.BitsSoften(x, y, 6, 100);
    return 0;
}
