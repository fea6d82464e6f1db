#pragma once

// The drawing control: one picture in a scrollable viewport at a whole-number zoom, a
// selection with a marching outline, and a small set of paint operations. The picture is a
// bits buffer with guard pixels, the filters' own layout, so a filter's result can be
// swapped in without a conversion.
//
// Paint operations do nothing without a picture, stay inside the selection when there is
// one, and skip points outside the image. Opacity runs from 0 (nothing) to 255 (the colour
// entire): each channel becomes (c * (255 - a) + p * a + 127) / 255, in integers, so that
// 255 gives p exactly and 0 gives c exactly. A stroke (a line, a brush line) marks what it
// touched in the done table and never paints a pixel twice.

#include "imaging/engine/bit_filter.h"
#include "imaging/engine/bit_region.h"
#include "imaging/engine/bits_buffer.h"

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QWidget>

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <vector>

class QScrollBar;
class QTimer;
class QRubberBand;
class QProgressDialog;

namespace tolmar::imaging {

class ucScreen : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(bool Bars READ Bars WRITE setBars)
    Q_PROPERTY(int BarsWidth READ BarsWidth WRITE setBarsWidth)
    Q_PROPERTY(bool MouseScroll READ MouseScroll WRITE setMouseScroll)
    Q_PROPERTY(QColor BackColor READ BackColor WRITE setBackColor)
    Q_PROPERTY(int ZoomFactor READ ZoomFactor WRITE setZoomFactor)
    Q_PROPERTY(QImage Picture READ Picture)
    Q_PROPERTY(int PictureWidth READ PictureWidth)
    Q_PROPERTY(int PictureHeight READ PictureHeight)

public:
    static constexpr std::array<int, 15> kZoomTable = {1, 2, 3, 4, 5, 6, 7, 8,
                                                       9, 10, 11, 12, 13, 14, 15};

    explicit ucScreen(QWidget* parent = nullptr);
    ~ucScreen() override;

    // --- stored properties -----------------------------------------------------------
    bool Bars() const { return m_bars; }
    void setBars(bool on);
    int BarsWidth() const { return m_barsWidth; }
    void setBarsWidth(int width);
    bool MouseScroll() const { return m_mouseScroll; }
    void setMouseScroll(bool on) { m_mouseScroll = on; }
    QColor BackColor() const { return m_backColor; }
    void setBackColor(const QColor& colour);

    // --- picture and zoom --------------------------------------------------------------
    bool PictureExists() const { return m_pictureExists; }
    int ZoomFactor() const { return m_zoom; }
    // Held to the table: below 1 gives 1, above the last entry gives the last.
    void setZoomFactor(int zoom);
    void ZoomIn();
    void ZoomOut();
    // The zoom as the screens show it: "3:1".
    QString ZoomText() const;
    void CreateBlank(int width, int height);
    void Clear();
    // Loads a picture of any format Qt reads; false (and no change) for a null one.
    bool setPicture(const QImage& picture);
    QImage Picture() const;
    int PictureWidth() const { return m_pictureExists ? m_bits.columns() - 4 : 0; }
    int PictureHeight() const { return m_pictureExists ? m_bits.rows() - 4 : 0; }
    const BitsBuffer& Bits() const { return m_bits; }
    void setBits(const BitsBuffer& bits);
    void GetDimensions(int& imageWidth, int& imageHeight, int& viewWidth, int& viewHeight) const;
    void GetSBV(int& h, int& v) const;
    void GetSBM(int& h, int& v) const;
    void Scroll(int h, int v);
    // 0 without a picture or outside it; otherwise red in bits 0-7, green 8-15, blue 16-23.
    Colour BitsGetPixel(int x, int y) const;
    // Saves as a bitmap: whatever follows the last "." becomes "bmp". Returns the name used,
    // empty when nothing was saved.
    QString Save(const QString& fileName) const;
    void BitsCopyToClipboard() const;
    bool PasteFromClipboard();
    void UpdateImage();

    // --- selection ----------------------------------------------------------------------
    cBitRegion& Selection() { return m_selection; }
    // After the selection changed: the outline timer runs while it is not empty.
    void UpdateRegion();
    // The rubber bands, in picture coordinates: the selection's rectangle (shp), and the
    // paint tools' line, rectangle and ellipse (shpLine, shpRect, shpEllp) between two
    // points, drawn over the view at the zoom and scroll. HideShape hides them all.
    enum class Shape { Line, Rectangle, Ellipse };
    void ShowShape(const QRect& imageRect);
    void ShowShape(Shape kind, const QPoint& from, const QPoint& to);
    void HideShape();
    // Off, paint operations change the picture without repainting the view until
    // UpdateImage() or until it is turned on again: many strokes, one repaint.
    void SetAutoRedraw(bool on);
    bool AutoRedraw() const { return m_autoRedraw; }
    void StartTimer();
    void StopTimer();

    // --- paint operations ---------------------------------------------------------------
    void CreateDoneBitsTable();
    void BitsLine(int x1, int y1, int x2, int y2, Colour colour, int width, int opacity = 255);
    void BitsRectangle(int x1, int y1, int x2, int y2, Colour colour, int width,
                       int opacity = 255);
    void BitsEllipse(int x1, int y1, int x2, int y2, Colour colour, int width,
                     int opacity = 255);
    void BitsBrush(int x, int y, int size, Colour colour, int opacity);
    void BitsBrushLine(int x1, int y1, int x2, int y2, int size, Colour colour, int opacity);
    void BitsSoften(int x, int y, int size, int amount);
    void BitsSharpen(int x, int y, int size, int amount);
    // Four-way flood fill of the pixels equal to the start pixel, with a stack of spans
    // rather than recursion; `tolerance` widens "equal" per channel.
    void BitsFill(int x, int y, Colour colour, int opacity = 255, int tolerance = 0);
    // The same, each pixel taking the texture's pixel at its position repeated.
    void BitsFillTexture(int x, int y, const BitsBuffer& texture, int opacity = 255,
                         int tolerance = 0);
    // Copies `source` (a buffer with guard pixels) with its top left at (x, y). Pixels equal
    // to `key` (a colour, or -1 for none) are left out; with `preMasked` so are those whose
    // fourth byte is 255, the mark a masked crop leaves outside its region.
    void BitsPaint(int x, int y, const BitsBuffer& source, Colour key, int opacity,
                   bool preMasked = false);
    void BitsPaintPreMasked(int x, int y, const BitsBuffer& source, Colour key, int opacity)
    {
        BitsPaint(x, y, source, key, opacity, true);
    }
    // Turns a pre-masked buffer into a visible mask: white where masked out, black elsewhere.
    static void BitsBWMask(BitsBuffer& buffer);
    // Closed outline through the points, given as x, y pairs.
    void BitsPolygon(const std::vector<int>& points, Colour colour, int width,
                     int opacity = 255);
    // Radius size * 0.5; each point of the circle is painted where a draw in [0, 100)
    // falls below `density`.
    void BitsAirbrush(int x, int y, int size, Colour colour, int opacity, int density);
    // Adds `amount` to every channel inside the circle, clamped; with `once` the stroke's
    // done table keeps a pixel from being changed twice.
    void BitsBrightness(int x, int y, int size, int amount, bool once);
    // A stamp through a mask centred on (x, y): the mask's grey (its blue byte) scales the
    // opacity, 255 the full opacity and 0 nothing.
    void BitsMasked(int x, int y, const BitsBuffer& mask, Colour colour, int opacity);
    void BitsMaskedLine(int x1, int y1, int x2, int y2, const BitsBuffer& mask, Colour colour,
                        int opacity);

    // --- whole-image filters ------------------------------------------------------------
    using FilterCall = std::function<BitsBuffer(cBitFilter&)>;
    // Runs the filter on a worker thread over the selection (the whole picture without
    // one), with a progress dialog and Cancel; the result replaces the picture only when
    // the filter finished. `done(true)` when it did, `done(false)` when cancelled.
    void RunFilter(const FilterCall& call, std::function<void(bool)> done = {});
    bool FilterRunning() const { return m_job != nullptr; }
    void CancelFilter();

    QWidget* viewport() const { return m_view; }
    // A picture control takes what room a form gives it; this is only where it starts.
    QSize sizeHint() const override { return QSize(320, 240); }
    QRect visibleImageRect() const;

signals:
    void ZoomChanged(int zoom);
    void Progress(int percent);

protected:
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class View;
    class Band;
    struct Job;

    void relayout();
    void redraw();
    void placeBands();
    void paintView(QPainter& painter);
    bool canPaint(int x, int y) const;
    void blend(int x, int y, Colour colour, int opacity);
    void stamp(int cx, int cy, int size, Colour colour, int opacity);
    void neighbourhoodStamp(int x, int y, int size, bool sharpen, int amount);
    void finishJob();
    // Hands `paint` each run of pixels a fill from (x, y) reaches, as soon as it is found;
    // nothing when it starts off the picture or outside the selection. `paintEndsMatch`
    // says the paint leaves no reached pixel equal to the start's colour.
    void flood(int x, int y, int tolerance, bool paintEndsMatch,
               const std::function<void(int y, int x0, int x1)>& paint);
    void blendPixel(int x, int y, uint32_t bgr, int opacity);

    QWidget* m_view = nullptr;
    QScrollBar* m_hSB = nullptr;
    QScrollBar* m_vSB = nullptr;
    QTimer* m_tmrSelection = nullptr;
    QRubberBand* m_shp = nullptr;
    Band* m_shpLine = nullptr;
    Band* m_shpRect = nullptr;
    Band* m_shpEllp = nullptr;
    QRect m_shpArea; // the selection band's picture rectangle
    bool m_shpShown = false;
    bool m_autoRedraw = true;

    cBitRegion m_selection;
    BitsBuffer m_bits;
    bool m_pictureExists = false;
    int m_zoom = 1;
    std::vector<uint16_t> m_done;
    bool m_bars = true;
    int m_barsWidth = 16;
    bool m_mouseScroll = true;
    QColor m_backColor = QColor(128, 128, 128);
    QPoint m_grabFrom;
    bool m_grabbing = false;

    QImage m_frame; // the zoomed view, reused from paint to paint
    std::vector<int> m_columns;
    std::unique_ptr<Job> m_job;
    uint64_t m_airbrushState = 0x9E3779B97F4A7C15ull;
};

} // namespace tolmar::imaging
