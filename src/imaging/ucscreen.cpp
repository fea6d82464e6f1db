#include "imaging/ucscreen.h"

#include "imaging/engine/pixel_math.h"

#include <QApplication>
#include <QClipboard>
#include <QMouseEvent>
#include <QPainter>
#include <QProgressDialog>
#include <QRubberBand>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>

namespace tolmar::imaging {

class ucScreen::View : public QWidget
{
public:
    explicit View(ucScreen* owner) : QWidget(owner), m_owner(owner)
    {
        setObjectName("iDst");
        setAttribute(Qt::WA_OpaquePaintEvent);
        setMouseTracking(true);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        m_owner->paintView(p);
    }

private:
    ucScreen* m_owner;
};

// A paint tool's rubber band: a dashed line, rectangle or ellipse between two picture
// points, laid over the view; it lets the mouse through to the view below.
class ucScreen::Band : public QWidget
{
public:
    Band(Shape kind, const char* name, QWidget* view) : QWidget(view), m_kind(kind)
    {
        setObjectName(name);
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
        hide();
    }
    Shape kind() const { return m_kind; }
    QPoint from, to; // picture coordinates
    bool shown = false;

    // Covers the two points' box at the zoom, a pixel's centre being where a point is.
    void place(int zoom, int h, int v)
    {
        auto at = [&](const QPoint& p) {
            return QPoint(p.x() * zoom - h + zoom / 2, p.y() * zoom - v + zoom / 2);
        };
        m_a = at(from);
        m_b = at(to);
        const QRect box = corners(m_a, m_b).adjusted(-1, -1, 1, 1);
        setGeometry(box);
        m_a -= box.topLeft();
        m_b -= box.topLeft();
        setVisible(shown);
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        // Black dashes over white: visible on any picture.
        for (const auto& [colour, style] :
             {std::pair{Qt::white, Qt::SolidLine}, {Qt::black, Qt::DashLine}}) {
            p.setPen(QPen(colour, 1, style));
            p.setBrush(Qt::NoBrush);
            const QRect r = corners(m_a, m_b);
            switch (m_kind) {
            case Shape::Line: p.drawLine(m_a, m_b); break;
            case Shape::Rectangle: p.drawRect(r); break;
            case Shape::Ellipse: p.drawEllipse(r); break;
            }
        }
    }

private:
    // The box with both points on it (QRect::normalized would move a reversed corner in).
    static QRect corners(QPoint a, QPoint b)
    {
        return QRect(QPoint(std::min(a.x(), b.x()), std::min(a.y(), b.y())),
                     QPoint(std::max(a.x(), b.x()), std::max(a.y(), b.y())));
    }

    Shape m_kind;
    QPoint m_a, m_b;
};

// A filter running on a copy of the picture: the worker owns the copy, the filter and the
// result until it hands them back on the UI thread.
struct ucScreen::Job
{
    cBitFilter filter;
    Region region;
    std::atomic<bool> cancel{false};
    std::atomic<int> percent{0};
    BitsBuffer result;
    bool cancelled = false;
    std::thread worker;
    QPointer<QProgressDialog> dialog;
    QTimer* poll = nullptr;
    std::function<void(bool)> done;
};

ucScreen::ucScreen(QWidget* parent) : QWidget(parent)
{
    setObjectName("ucScreen");
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_view = new View(this);
    m_hSB = new QScrollBar(Qt::Horizontal, this);
    m_hSB->setObjectName("hSB");
    m_vSB = new QScrollBar(Qt::Vertical, this);
    m_vSB->setObjectName("vSB");
    m_tmrSelection = new QTimer(this);
    m_tmrSelection->setObjectName("tmrSelection");
    m_tmrSelection->setInterval(120);
    m_shp = new QRubberBand(QRubberBand::Rectangle, m_view);
    m_shp->setObjectName("shp");
    m_shp->hide();
    m_shpLine = new Band(Shape::Line, "shpLine", m_view);
    m_shpRect = new Band(Shape::Rectangle, "shpRect", m_view);
    m_shpEllp = new Band(Shape::Ellipse, "shpEllp", m_view);
    // Both bars' change and scroll signals end in the same repaint.
    connect(m_hSB, &QScrollBar::valueChanged, this, [this] { placeBands(); m_view->update(); });
    connect(m_vSB, &QScrollBar::valueChanged, this, [this] { placeBands(); m_view->update(); });
    connect(m_tmrSelection, &QTimer::timeout, this, [this] {
        if (m_selection.IsEmptyRegion())
            return;
        m_selection.RotateBrush();
        m_view->update();
    });
    m_view->installEventFilter(this);
    m_selection.ZoomFactor(1.0f);
    relayout();
}

ucScreen::~ucScreen()
{
    if (m_job) {
        m_job->cancel = true;
        if (m_job->worker.joinable())
            m_job->worker.join();
    }
}

void ucScreen::setBars(bool on)
{
    m_bars = on;
    relayout();
}

void ucScreen::setBarsWidth(int width)
{
    m_barsWidth = std::max(width, 0);
    relayout();
}

void ucScreen::setBackColor(const QColor& colour)
{
    m_backColor = colour;
    m_view->update();
}

void ucScreen::setZoomFactor(int zoom)
{
    const int z = std::clamp(zoom, kZoomTable.front(), kZoomTable.back());
    // Keep the point in the middle of the view where it was.
    const QPointF middle((m_hSB->value() + m_view->width() / 2.0) / m_zoom,
                         (m_vSB->value() + m_view->height() / 2.0) / m_zoom);
    m_zoom = z;
    m_selection.ZoomFactor(static_cast<float>(z));
    relayout();
    m_hSB->setValue(int(middle.x() * z - m_view->width() / 2.0));
    m_vSB->setValue(int(middle.y() * z - m_view->height() / 2.0));
    emit ZoomChanged(z);
}

void ucScreen::ZoomIn()
{
    const auto it = std::find(kZoomTable.begin(), kZoomTable.end(), m_zoom);
    if (it != kZoomTable.end() && it + 1 != kZoomTable.end())
        setZoomFactor(*(it + 1));
}

void ucScreen::ZoomOut()
{
    const auto it = std::find(kZoomTable.begin(), kZoomTable.end(), m_zoom);
    if (it != kZoomTable.end() && it != kZoomTable.begin())
        setZoomFactor(*(it - 1));
}

QString ucScreen::ZoomText() const
{
    return QString::number(m_zoom) + ":1";
}

void ucScreen::CreateBlank(int width, int height)
{
    if (width < 1 || height < 1)
        return;
    BitsBuffer fresh(width, height);
    for (int y = 0; y < height; ++y)
        std::memset(fresh.pixel(0, y), 0xFF, std::size_t(width) * 4);
    // What the old picture held where the new one overlaps it stays.
    if (m_pictureExists) {
        const int w = std::min(width, PictureWidth());
        const int h = std::min(height, PictureHeight());
        for (int y = 0; y < h; ++y)
            std::memcpy(fresh.pixel(0, y), m_bits.pixel(0, y), std::size_t(w) * 4);
    }
    setBits(fresh);
}

void ucScreen::Clear()
{
    m_bits = BitsBuffer();
    m_pictureExists = false;
    m_done.clear();
    m_selection.Clear();
    StopTimer();
    relayout();
}

bool ucScreen::setPicture(const QImage& picture)
{
    if (picture.isNull() || picture.width() < 1 || picture.height() < 1)
        return false;
    const QImage rgb = picture.convertToFormat(QImage::Format_RGB32);
    if (rgb.isNull())
        return false;
    setBits(BitsBuffer::fromRows(rgb.constBits(), rgb.width(), rgb.height(), rgb.bytesPerLine(),
                                 BitsBuffer::kGuard));
    return true;
}

QImage ucScreen::Picture() const
{
    if (!m_pictureExists)
        return {};
    const QImage view(m_bits.pixel(0, 0), PictureWidth(), PictureHeight(),
                      qsizetype(m_bits.stride()), QImage::Format_RGB32);
    return view.copy();
}

void ucScreen::setBits(const BitsBuffer& bits)
{
    // Only a buffer with guard pixels is taken: the filters read past the edges.
    if (bits.empty() || bits.lowX() != -BitsBuffer::kGuard || bits.lowY() != -BitsBuffer::kGuard
        || bits.columns() < 5 || bits.rows() < 5)
        return;
    m_bits = bits;
    m_pictureExists = true;
    m_done.clear();
    m_selection.Init(0, 0, PictureWidth(), PictureHeight());
    m_selection.ZoomFactor(static_cast<float>(m_zoom));
    relayout();
}

void ucScreen::GetDimensions(int& imageWidth, int& imageHeight, int& viewWidth,
                             int& viewHeight) const
{
    imageWidth = PictureWidth();
    imageHeight = PictureHeight();
    viewWidth = m_view->width();
    viewHeight = m_view->height();
}

void ucScreen::GetSBV(int& h, int& v) const
{
    h = m_hSB->value();
    v = m_vSB->value();
}

void ucScreen::GetSBM(int& h, int& v) const
{
    h = m_hSB->maximum();
    v = m_vSB->maximum();
}

void ucScreen::Scroll(int h, int v)
{
    m_hSB->setValue(h);
    m_vSB->setValue(v);
}

Colour ucScreen::BitsGetPixel(int x, int y) const
{
    if (!m_pictureExists || x < 0 || y < 0 || x >= PictureWidth() || y >= PictureHeight())
        return 0;
    const uint8_t* p = m_bits.pixel(x, y);
    return p[2] | p[1] << 8 | p[0] << 16;
}

QString ucScreen::Save(const QString& fileName) const
{
    if (!m_pictureExists || fileName.isEmpty())
        return {};
    const int dot = fileName.lastIndexOf('.');
    const QString name = dot < 0 ? fileName + ".bmp" : fileName.left(dot + 1) + "bmp";
    return Picture().save(name, "BMP") ? name : QString();
}

void ucScreen::BitsCopyToClipboard() const
{
    if (m_pictureExists)
        QApplication::clipboard()->setImage(Picture());
}

bool ucScreen::PasteFromClipboard()
{
    return setPicture(QApplication::clipboard()->image());
}

void ucScreen::UpdateImage()
{
    m_view->update();
}

void ucScreen::UpdateRegion()
{
    if (m_selection.IsEmptyRegion())
        StopTimer();
    else
        StartTimer();
    m_view->update();
}

void ucScreen::ShowShape(const QRect& imageRect)
{
    m_shpArea = imageRect.normalized();
    m_shpShown = true;
    placeBands();
}

void ucScreen::ShowShape(Shape kind, const QPoint& from, const QPoint& to)
{
    for (Band* b : {m_shpLine, m_shpRect, m_shpEllp})
        if (b->kind() == kind) {
            b->from = from;
            b->to = to;
            b->shown = true;
        }
    placeBands();
}

void ucScreen::HideShape()
{
    m_shpShown = false;
    m_shp->hide();
    for (Band* b : {m_shpLine, m_shpRect, m_shpEllp}) {
        b->shown = false;
        b->hide();
    }
}

void ucScreen::placeBands()
{
    const int h = m_hSB->value();
    const int v = m_vSB->value();
    if (m_shpShown) {
        m_shp->setGeometry(m_shpArea.left() * m_zoom - h, m_shpArea.top() * m_zoom - v,
                           m_shpArea.width() * m_zoom, m_shpArea.height() * m_zoom);
        m_shp->show();
    }
    for (Band* b : {m_shpLine, m_shpRect, m_shpEllp})
        if (b->shown)
            b->place(m_zoom, h, v);
}

void ucScreen::SetAutoRedraw(bool on)
{
    m_autoRedraw = on;
    if (on)
        m_view->update();
}

void ucScreen::redraw()
{
    if (m_autoRedraw)
        m_view->update();
}

void ucScreen::StartTimer()
{
    m_tmrSelection->start();
}

void ucScreen::StopTimer()
{
    m_tmrSelection->stop();
}

QRect ucScreen::visibleImageRect() const
{
    if (!m_pictureExists)
        return {};
    const int x0 = m_hSB->value() / m_zoom;
    const int y0 = m_vSB->value() / m_zoom;
    const int x1 = std::min(PictureWidth(), (m_hSB->value() + m_view->width()) / m_zoom + 1);
    const int y1 = std::min(PictureHeight(), (m_vSB->value() + m_view->height()) / m_zoom + 1);
    return QRect(QPoint(x0, y0), QPoint(x1 - 1, y1 - 1));
}

void ucScreen::resizeEvent(QResizeEvent*)
{
    relayout();
}

void ucScreen::relayout()
{
    const int zw = PictureWidth() * m_zoom;
    const int zh = PictureHeight() * m_zoom;
    const int bw = m_bars ? m_barsWidth : 0;
    // A bar takes room only when the picture overflows that way, and taking that room can
    // make the other one needed too.
    bool needH = false;
    bool needV = false;
    for (int i = 0; i < 2; ++i) {
        needH = m_bars && zw > width() - (needV ? bw : 0);
        needV = m_bars && zh > height() - (needH ? bw : 0);
    }
    const int vw = std::max(width() - (needV ? bw : 0), 0);
    const int vh = std::max(height() - (needH ? bw : 0), 0);
    m_view->setGeometry(0, 0, vw, vh);
    m_hSB->setGeometry(0, vh, vw, bw);
    m_vSB->setGeometry(vw, 0, bw, vh);
    m_hSB->setVisible(needH);
    m_vSB->setVisible(needV);
    m_hSB->setRange(0, std::max(zw - vw, 0));
    m_vSB->setRange(0, std::max(zh - vh, 0));
    m_hSB->setPageStep(std::max(vw, 1));
    m_vSB->setPageStep(std::max(vh, 1));
    m_hSB->setSingleStep(std::max(m_zoom * 8, 8));
    m_vSB->setSingleStep(std::max(m_zoom * 8, 8));
    // The grab hand while there is somewhere to drag to.
    const bool scrolls = m_hSB->maximum() > 0 || m_vSB->maximum() > 0;
    m_view->setCursor(scrolls ? (m_grabbing ? Qt::ClosedHandCursor : Qt::OpenHandCursor)
                              : Qt::ArrowCursor);
    placeBands();
    m_view->update();
}

void ucScreen::paintView(QPainter& painter)
{
    // The back colour shows only where the picture does not reach.
    const bool covered = m_pictureExists
                      && PictureWidth() * m_zoom - m_hSB->value() >= m_view->width()
                      && PictureHeight() * m_zoom - m_vSB->value() >= m_view->height();
    if (!covered)
        painter.fillRect(m_view->rect(), m_backColor);
    if (!m_pictureExists)
        return;
    // Only the visible part is drawn, scaled on the way: never a zoomed copy of the whole.
    const QRect src = visibleImageRect();
    if (src.isEmpty())
        return;
    const int h = m_hSB->value();
    const int v = m_vSB->value();
    if (m_zoom == 1) {
        const QImage whole(m_bits.pixel(0, 0), PictureWidth(), PictureHeight(),
                           qsizetype(m_bits.stride()), QImage::Format_RGB32);
        painter.drawImage(QPoint(src.left() - h, src.top() - v), whole, src);
    } else {
        // Whole-number zoom is a repeat of pixels: each view row copies words from one
        // picture row through a table of columns, far cheaper than a general scaling.
        const int w = std::min(m_view->width(), PictureWidth() * m_zoom - h);
        const int ht = std::min(m_view->height(), PictureHeight() * m_zoom - v);
        if (w <= 0 || ht <= 0)
            return;
        if (m_frame.width() < w || m_frame.height() < ht)
            m_frame = QImage(m_view->width(), m_view->height(), QImage::Format_RGB32);
        m_columns.resize(std::size_t(w));
        for (int x = 0; x < w; ++x)
            m_columns[x] = (x + h) / m_zoom;
        for (int y = 0; y < ht; ++y) {
            auto* out = reinterpret_cast<uint32_t*>(m_frame.scanLine(y));
            const uint8_t* row = m_bits.pixel(0, (y + v) / m_zoom);
            if (y > 0 && (y + v) / m_zoom == (y - 1 + v) / m_zoom) {
                std::memcpy(out, m_frame.constScanLine(y - 1), std::size_t(w) * 4);
                continue;
            }
            for (int x = 0; x < w; ++x)
                out[x] = loadPixel(row + std::size_t(m_columns[x]) * 4) | kSpareMask;
        }
        painter.drawImage(QPoint(0, 0), m_frame, QRect(0, 0, w, ht));
    }

    const Region* scaled = m_selection.RegionScaled();
    if (!scaled || m_selection.IsEmptyRegion())
        return;
    // The marching outline: the stripe brush of the current phase over the scaled frame.
    const auto rows = m_selection.BrushPattern(m_selection.BrushPhase());
    QImage tile(8, 8, QImage::Format_RGB32);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x)
            tile.setPixel(x, y, rows[y] & (0x80 >> x) ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    QBrush brush(tile);
    painter.setBrushOrigin(-m_hSB->value(), -m_vSB->value());
    const QRect visible = m_view->rect().translated(m_hSB->value(), m_vSB->value());
    for (const Rect& r : m_selection.ScaledOutline().rects()) {
        const QRect q(QPoint(r.left, r.top), QPoint(r.right - 1, r.bottom - 1));
        if (q.intersects(visible))
            painter.fillRect(q.translated(-m_hSB->value(), -m_vSB->value()), brush);
    }
}

bool ucScreen::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_view)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::Wheel: {
        if (!m_mouseScroll)
            break;
        auto* e = static_cast<QWheelEvent*>(event);
        const QPoint d = e->angleDelta();
        if (e->modifiers() & Qt::ShiftModifier)
            m_hSB->setValue(m_hSB->value() - d.y());
        else {
            m_vSB->setValue(m_vSB->value() - d.y());
            m_hSB->setValue(m_hSB->value() - d.x());
        }
        return true;
    }
    case QEvent::MouseButtonPress: {
        auto* e = static_cast<QMouseEvent*>(event);
        if (e->button() == Qt::LeftButton && (m_hSB->maximum() > 0 || m_vSB->maximum() > 0)) {
            m_grabbing = true;
            m_grabFrom = e->position().toPoint();
            m_view->setCursor(Qt::ClosedHandCursor);
            return true;
        }
        break;
    }
    case QEvent::MouseMove: {
        auto* e = static_cast<QMouseEvent*>(event);
        if (m_grabbing) {
            const QPoint now = e->position().toPoint();
            Scroll(m_hSB->value() - (now.x() - m_grabFrom.x()),
                   m_vSB->value() - (now.y() - m_grabFrom.y()));
            m_grabFrom = now;
            return true;
        }
        break;
    }
    case QEvent::MouseButtonRelease:
        if (m_grabbing) {
            m_grabbing = false;
            m_view->setCursor(Qt::OpenHandCursor);
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

// --- painting ------------------------------------------------------------------------------

bool ucScreen::canPaint(int x, int y) const
{
    if (!m_pictureExists || x < 0 || y < 0 || x >= PictureWidth() || y >= PictureHeight())
        return false;
    return m_selection.IsEmptyRegion() || m_selection.PtInRegion(x, y);
}

void ucScreen::CreateDoneBitsTable()
{
    if (!m_pictureExists)
        return;
    m_done.assign(std::size_t(PictureWidth() + 2) * std::size_t(PictureHeight() + 2), 0);
}

void ucScreen::blend(int x, int y, Colour colour, int opacity)
{
    if (!canPaint(x, y))
        return;
    if (!m_done.empty()) {
        uint16_t& mark = m_done[std::size_t(y + 1) * std::size_t(PictureWidth() + 2) + (x + 1)];
        if (mark)
            return;
        mark = 1;
    }
    const int a = std::clamp(opacity, 0, 255);
    const int paint[3] = {blueOf(colour), greenOf(colour), redOf(colour)};
    uint8_t* p = m_bits.pixel(x, y);
    for (int c = 0; c < 3; ++c)
        p[c] = static_cast<uint8_t>((p[c] * (255 - a) + paint[c] * a + 127) / 255);
}

void ucScreen::stamp(int cx, int cy, int size, Colour colour, int opacity)
{
    if (size <= 1) {
        blend(cx, cy, colour, opacity);
        return;
    }
    const double r = size * 0.5;
    const int reach = int(std::ceil(r));
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx)
            if (dx * dx + dy * dy <= r * r)
                blend(cx + dx, cy + dy, colour, opacity);
}

namespace {

// Every point of the line from (x1, y1) to (x2, y2), both ends included.
template <class Fn>
void walkLine(int x1, int y1, int x2, int y2, Fn&& fn)
{
    const int dx = std::abs(x2 - x1);
    const int dy = -std::abs(y2 - y1);
    const int sx = x1 < x2 ? 1 : -1;
    const int sy = y1 < y2 ? 1 : -1;
    int err = dx + dy;
    for (;;) {
        fn(x1, y1);
        if (x1 == x2 && y1 == y2)
            return;
        const int e2 = 2 * err;
        if (e2 >= dy) {
            err += dy;
            x1 += sx;
        }
        if (e2 <= dx) {
            err += dx;
            y1 += sy;
        }
    }
}

} // namespace

void ucScreen::BitsLine(int x1, int y1, int x2, int y2, Colour colour, int width, int opacity)
{
    if (!m_pictureExists)
        return;
    walkLine(x1, y1, x2, y2, [&](int x, int y) { stamp(x, y, width, colour, opacity); });
    redraw();
}

void ucScreen::BitsRectangle(int x1, int y1, int x2, int y2, Colour colour, int width,
                             int opacity)
{
    BitsLine(x1, y1, x2, y1, colour, width, opacity);
    BitsLine(x2, y1, x2, y2, colour, width, opacity);
    BitsLine(x2, y2, x1, y2, colour, width, opacity);
    BitsLine(x1, y2, x1, y1, colour, width, opacity);
}

void ucScreen::BitsEllipse(int x1, int y1, int x2, int y2, Colour colour, int width,
                           int opacity)
{
    if (!m_pictureExists)
        return;
    const double cx = (x1 + x2) / 2.0;
    const double cy = (y1 + y2) / 2.0;
    const double a = std::abs(x2 - x1) / 2.0;
    const double b = std::abs(y2 - y1) / 2.0;
    // Enough steps that neighbouring points touch; joined by lines in case they don't.
    const int steps = std::max(8, int(4 * (a + b)));
    int px = int(std::lrint(cx + a));
    int py = int(std::lrint(cy));
    for (int i = 1; i <= steps; ++i) {
        const double t = 2 * 3.14159265358979323846 * i / steps;
        const int x = int(std::lrint(cx + a * std::cos(t)));
        const int y = int(std::lrint(cy + b * std::sin(t)));
        walkLine(px, py, x, y, [&](int u, int v) { stamp(u, v, width, colour, opacity); });
        px = x;
        py = y;
    }
    redraw();
}

void ucScreen::BitsBrush(int x, int y, int size, Colour colour, int opacity)
{
    if (!m_pictureExists)
        return;
    stamp(x, y, size, colour, opacity);
    redraw();
}

void ucScreen::BitsBrushLine(int x1, int y1, int x2, int y2, int size, Colour colour,
                             int opacity)
{
    BitsLine(x1, y1, x2, y2, colour, std::max(size, 1), opacity);
}

void ucScreen::neighbourhoodStamp(int x, int y, int size, bool sharpen, int amount)
{
    if (!m_pictureExists)
        return;
    // The engine's own filter on a small crop around the circle. The region is the circle
    // (inside the picture's inner frame and the selection) plus a ring one pixel outside
    // its box: the filter's one-pixel margin then falls on that ring, and the whole circle
    // is computed from real neighbours.
    const int reach = std::max(int(std::ceil(size * 0.5)), 0);
    const int l = std::max(x - reach - 2, 0);
    const int t = std::max(y - reach - 2, 0);
    const int r = std::min(x + reach + 3, PictureWidth());
    const int b = std::min(y + reach + 3, PictureHeight());
    if (l >= r || t >= b)
        return;
    std::vector<Rect> circle;
    const double rr = size * 0.5;
    for (int py = std::max(y - reach, 1); py <= std::min(y + reach, PictureHeight() - 2); ++py)
        for (int px = std::max(x - reach, 1); px <= std::min(x + reach, PictureWidth() - 2); ++px)
            if ((px - x) * (px - x) + (py - y) * (py - y) <= rr * rr && canPaint(px, py))
                circle.push_back({px - l, py - t, px - l + 1, py - t + 1});
    if (circle.empty())
        return;
    Region inside = Region::fromRects(circle);
    const Rect box = inside.box();
    const Rect ringRects[4] = {{box.left - 1, box.top - 1, box.right + 1, box.top},
                               {box.left - 1, box.bottom, box.right + 1, box.bottom + 1},
                               {box.left - 1, box.top, box.left, box.bottom},
                               {box.right, box.top, box.right + 1, box.bottom}};
    const Region region = Region::combine(inside, Region::fromRects(ringRects), CombineMode::Or);
    // The crop's guard pixels are zero; every pixel of the circle has its neighbours in
    // the crop, because the crop reaches two pixels past the circle inside the picture.
    BitsBuffer crop(r - l, b - t);
    for (int py = t; py < b; ++py)
        std::memcpy(crop.pixel(0, py - t), m_bits.pixel(l, py), std::size_t(r - l) * 4);
    cBitFilter f;
    f.Bits(std::move(crop));
    f.BitsRegion(&region);
    const BitsBuffer out = sharpen ? f.Sharpen(amount) : f.Soften(amount, false);
    for (const Rect& c : circle)
        std::memcpy(m_bits.pixel(c.left + l, c.top + t), out.pixel(c.left, c.top), 4);
    redraw();
}

void ucScreen::BitsSoften(int x, int y, int size, int amount)
{
    neighbourhoodStamp(x, y, size, false, amount);
}

void ucScreen::BitsSharpen(int x, int y, int size, int amount)
{
    neighbourhoodStamp(x, y, size, true, amount);
}

namespace {

// Bit `x` of a row of 64-bit words.
inline bool bitAt(const uint64_t* row, int x)
{
    return (row[x >> 6] >> (x & 63)) & 1;
}

// Sets (or clears) bits x0..x1 of a row, both ends included.
void markBits(uint64_t* row, int x0, int x1, bool on)
{
    for (int w = x0 >> 6; w <= x1 >> 6; ++w) {
        const int lo = std::max(x0, w * 64) - w * 64;
        const int hi = std::min(x1, w * 64 + 63) - w * 64;
        const uint64_t bits = (hi == 63 ? ~0ull : ((1ull << (hi + 1)) - 1)) & ~((1ull << lo) - 1);
        row[w] = on ? row[w] | bits : row[w] & ~bits;
    }
}

} // namespace

void ucScreen::flood(int x, int y, int tolerance, bool paintEndsMatch,
                     const std::function<void(int y, int x0, int x1)>& paint)
{
    if (!canPaint(x, y))
        return;
    const int w = PictureWidth();
    const int h = PictureHeight();
    const std::size_t stride = m_bits.stride();
    const uint8_t* origin = m_bits.pixel(0, 0);
    const uint32_t key = loadPixel(m_bits.pixel(x, y)) & ~kSpareMask;
    const bool exact = tolerance <= 0;
    const bool anywhere = m_selection.IsEmptyRegion();
    // Pixels a fill has reached, and those outside the selection, are marked in a bitmap;
    // a fill whose paint turns every pixel it reaches away from the key needs none.
    const bool marks = !(paintEndsMatch && exact && anywhere);
    const std::size_t words = std::size_t(w + 63) / 64;
    std::vector<uint64_t> blocked;
    if (marks) {
        blocked.assign(words * std::size_t(h), anywhere ? 0 : ~0ull);
        if (!anywhere)
            m_selection.RegionMain()->forEachSpan(
                0, h - 1, 0, w - 1, [&](int32_t ry, int32_t x0, int32_t x1) {
                    markBits(&blocked[std::size_t(ry) * words], x0, x1 - 1, false);
                });
    }
    auto matches = [&](const uint8_t* p) {
        const uint32_t v = loadPixel(p) & ~kSpareMask;
        if (exact)
            return v == key;
        for (int c = 0; c < 24; c += 8)
            if (std::abs(int((v >> c) & 255) - int((key >> c) & 255)) > tolerance)
                return false;
        return true;
    };
    auto open = [&](const uint8_t* row, const uint64_t* bits, int px) {
        return (!bits || !bitAt(bits, px)) && matches(row + std::size_t(px) * 4);
    };
    auto rowBits = [&](int py) { return marks ? &blocked[std::size_t(py) * words] : nullptr; };
    auto take = [&](int py, int x0, int x1) {
        if (marks)
            markBits(&blocked[std::size_t(py) * words], x0, x1, true);
        paint(py, x0, x1);
    };

    // A run found from the row y - dy, whose run was pl..pr: the next row is searched over
    // the whole run, the row it came from only beyond its parent, which is filled already.
    struct Run
    {
        int y, l, r, dy, pl, pr;
    };
    std::vector<Run> stack;
    auto search = [&](const Run& from, int ny, int a, int b) {
        if (ny < 0 || ny >= h || a > b)
            return;
        const uint8_t* row = origin + std::size_t(ny) * stride;
        const uint64_t* bits = rowBits(ny);
        for (int px = a; px <= b; ++px) {
            if (!open(row, bits, px))
                continue;
            int l = px;
            if (px == a)
                while (l > 0 && open(row, bits, l - 1))
                    --l;
            int r = px;
            while (r + 1 < w && open(row, bits, r + 1))
                ++r;
            take(ny, l, r);
            stack.push_back({ny, l, r, ny - from.y, from.l, from.r});
            px = r + 1;
        }
    };

    {
        const uint8_t* row = origin + std::size_t(y) * stride;
        const uint64_t* bits = rowBits(y);
        int l = x;
        int r = x;
        while (l > 0 && open(row, bits, l - 1))
            --l;
        while (r + 1 < w && open(row, bits, r + 1))
            ++r;
        take(y, l, r);
        // The start has no parent: both neighbouring rows are searched whole.
        stack.push_back({y, l, r, 1, r + 1, r});
    }
    while (!stack.empty()) {
        const Run run = stack.back();
        stack.pop_back();
        search(run, run.y + run.dy, run.l, run.r);
        search(run, run.y - run.dy, run.l, std::min(run.r, run.pl - 1));
        search(run, run.y - run.dy, std::max(run.l, run.pr + 1), run.r);
    }
}

void ucScreen::blendPixel(int x, int y, uint32_t bgr, int opacity)
{
    blend(x, y, int32_t(((bgr >> 16) & 255) | (bgr & 0xFF00) | ((bgr & 255) << 16)), opacity);
}

void ucScreen::BitsFill(int x, int y, Colour colour, int opacity, int tolerance)
{
    if (!canPaint(x, y))
        return;
    // A fill is not a stroke: every pixel it reaches is painted, through one table per
    // channel since the colour and the opacity are the same for all of them.
    const int a = std::clamp(opacity, 0, 255);
    const int paint[3] = {blueOf(colour), greenOf(colour), redOf(colour)};
    std::array<uint32_t, 256 * 3> table;
    for (int c = 0; c < 3; ++c)
        for (int v = 0; v < 256; ++v)
            table[c * 256 + v] = uint32_t((v * (255 - a) + paint[c] * a + 127) / 255) << (8 * c);
    auto painted = [&](uint32_t v) {
        return table[v & 255] | table[256 + ((v >> 8) & 255)] | table[512 + ((v >> 16) & 255)];
    };
    const uint32_t key = loadPixel(m_bits.pixel(x, y)) & ~kSpareMask;
    const uint32_t whole = painted(key);
    flood(x, y, tolerance, painted(key) != key, [&](int py, int x0, int x1) {
        uint8_t* p = m_bits.pixel(x0, py);
        const int n = x1 - x0 + 1;
        if (a == 255) {
            for (int i = 0; i < n; ++i)
                storePixel(p + i * 4, (loadPixel(p + i * 4) & kSpareMask) | whole);
            return;
        }
        for (int i = 0; i < n; ++i) {
            const uint32_t v = loadPixel(p + i * 4);
            storePixel(p + i * 4, painted(v) | (v & kSpareMask));
        }
    });
    redraw();
}

void ucScreen::BitsFillTexture(int x, int y, const BitsBuffer& texture, int opacity,
                               int tolerance)
{
    if (texture.empty() || texture.columns() <= 4 || texture.rows() <= 4)
        return;
    const int tw = texture.columns() - 4;
    const int th = texture.rows() - 4;
    std::vector<uint16_t> keep;
    keep.swap(m_done);
    flood(x, y, tolerance, false, [&](int py, int x0, int x1) {
        for (int px = x0; px <= x1; ++px)
            blendPixel(px, py, loadPixel(texture.pixel(px % tw, py % th)), opacity);
    });
    keep.swap(m_done);
    redraw();
}

void ucScreen::BitsPaint(int x, int y, const BitsBuffer& source, Colour key, int opacity,
                         bool preMasked)
{
    if (!m_pictureExists || source.empty() || source.lowX() != -BitsBuffer::kGuard)
        return;
    const uint32_t keyBgr = key < 0 ? 0xFFFFFFFFu
                                    : uint32_t(blueOf(key)) | uint32_t(greenOf(key)) << 8
                                          | uint32_t(redOf(key)) << 16;
    for (int sy = 0; sy < source.rows() - 4; ++sy)
        for (int sx = 0; sx < source.columns() - 4; ++sx) {
            const uint32_t p = loadPixel(source.pixel(sx, sy));
            if ((p & ~kSpareMask) == keyBgr || (preMasked && (p & kSpareMask) == kSpareMask))
                continue;
            blendPixel(x + sx, y + sy, p & ~kSpareMask, opacity);
        }
    redraw();
}

void ucScreen::BitsBWMask(BitsBuffer& buffer)
{
    for (int y = buffer.lowY(); y <= buffer.highY(); ++y)
        for (int x = buffer.lowX(); x <= buffer.highX(); ++x) {
            uint8_t* p = buffer.pixel(x, y);
            const uint8_t v = p[3] == 255 ? 255 : 0;
            p[0] = p[1] = p[2] = v;
        }
}

void ucScreen::BitsPolygon(const std::vector<int>& points, Colour colour, int width,
                           int opacity)
{
    const std::size_t n = points.size() / 2;
    if (!m_pictureExists || n == 0)
        return;
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t j = (i + 1) % n;
        walkLine(points[2 * i], points[2 * i + 1], points[2 * j], points[2 * j + 1],
                 [&](int u, int v) { stamp(u, v, width, colour, opacity); });
    }
    redraw();
}

void ucScreen::BitsAirbrush(int x, int y, int size, Colour colour, int opacity, int density)
{
    if (!m_pictureExists)
        return;
    const double r = size * 0.5;
    const int reach = int(std::ceil(r));
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
            if (dx * dx + dy * dy > r * r)
                continue;
            // A small generator of the control's own: the spray differs stroke to stroke.
            m_airbrushState ^= m_airbrushState << 13;
            m_airbrushState ^= m_airbrushState >> 7;
            m_airbrushState ^= m_airbrushState << 17;
            if (int(m_airbrushState % 100) < density)
                blend(x + dx, y + dy, colour, opacity);
        }
    redraw();
}

void ucScreen::BitsBrightness(int x, int y, int size, int amount, bool once)
{
    if (!m_pictureExists)
        return;
    const double r = std::max(size, 1) * 0.5;
    const int reach = int(std::ceil(r));
    for (int dy = -reach; dy <= reach; ++dy)
        for (int dx = -reach; dx <= reach; ++dx) {
            const int px = x + dx;
            const int py = y + dy;
            if (dx * dx + dy * dy > r * r || !canPaint(px, py))
                continue;
            if (once && !m_done.empty()) {
                uint16_t& mark = m_done[std::size_t(py + 1) * (PictureWidth() + 2) + (px + 1)];
                if (mark)
                    continue;
                mark = 1;
            }
            uint8_t* p = m_bits.pixel(px, py);
            for (int c = 0; c < 3; ++c)
                p[c] = clampByte(int64_t(p[c]) + amount);
        }
    redraw();
}

void ucScreen::BitsMasked(int x, int y, const BitsBuffer& mask, Colour colour, int opacity)
{
    if (!m_pictureExists || mask.empty() || mask.lowX() != -BitsBuffer::kGuard)
        return;
    const int mw = mask.columns() - 4;
    const int mh = mask.rows() - 4;
    for (int my = 0; my < mh; ++my)
        for (int mx = 0; mx < mw; ++mx) {
            const int grey = mask.pixel(mx, my)[0];
            if (grey)
                blend(x - mw / 2 + mx, y - mh / 2 + my, colour,
                      (std::clamp(opacity, 0, 255) * grey + 127) / 255);
        }
    redraw();
}

void ucScreen::BitsMaskedLine(int x1, int y1, int x2, int y2, const BitsBuffer& mask,
                              Colour colour, int opacity)
{
    if (!m_pictureExists)
        return;
    walkLine(x1, y1, x2, y2, [&](int u, int v) { BitsMasked(u, v, mask, colour, opacity); });
}

// --- whole-image filters ---------------------------------------------------------------------

void ucScreen::RunFilter(const FilterCall& call, std::function<void(bool)> done)
{
    if (!m_pictureExists || m_job)
        return;
    m_job = std::make_unique<Job>();
    Job& job = *m_job;
    job.done = std::move(done);
    job.region = m_selection.IsEmptyRegion()
                   ? Region::fromRect({0, 0, PictureWidth(), PictureHeight()})
                   : *m_selection.RegionMain();
    job.filter.Bits(m_bits);
    job.filter.BitsRegion(&job.region);
    job.filter.SetCancelFlag(&job.cancel);
    job.filter.SetProgress([&job](int32_t percent) { job.percent = percent; });

    auto* dialog = new QProgressDialog(tr("Applying the filter…"), tr("Cancel"), 0, 100, this);
    dialog->setObjectName("dlgFilterProgress");
    dialog->setWindowModality(Qt::WindowModal);
    dialog->setMinimumDuration(300);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    job.dialog = dialog;
    connect(dialog, &QProgressDialog::canceled, this, [this] { CancelFilter(); });
    job.poll = new QTimer(this);
    job.poll->setInterval(50);
    connect(job.poll, &QTimer::timeout, this, [this] {
        if (m_job && m_job->dialog)
            m_job->dialog->setValue(m_job->percent.load());
        if (m_job)
            emit Progress(m_job->percent.load());
    });
    job.poll->start();

    job.worker = std::thread([this, &job, call] {
        job.result = call(job.filter);
        job.cancelled = job.filter.Cancelled();
        QMetaObject::invokeMethod(this, [this] { finishJob(); }, Qt::QueuedConnection);
    });
}

void ucScreen::CancelFilter()
{
    if (m_job)
        m_job->cancel = true;
}

void ucScreen::finishJob()
{
    if (!m_job)
        return;
    std::unique_ptr<Job> job = std::move(m_job);
    job->worker.join();
    job->poll->stop();
    job->poll->deleteLater();
    if (job->dialog) {
        job->dialog->close();
        job->dialog->deleteLater();
    }
    // The picture changes only when the filter ran to its end.
    const bool finished = !job->cancelled && !job->cancel;
    if (finished) {
        m_bits = std::move(job->result);
        m_view->update();
    }
    if (job->done)
        job->done(finished);
}

} // namespace tolmar::imaging
