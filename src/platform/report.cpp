#include "platform/report.h"

#include <QFileInfo>
#include <QFontMetricsF>
#include <QPageLayout>
#include <QPainter>
#include <QPixmap>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>

#include <algorithm>
#include <stdexcept>

namespace tolmar::report {

namespace {

const QString kFamily = QStringLiteral("DejaVu Sans");
const QColor kRule(0x60, 0x60, 0x60);
const QColor kHeaderFill(0xE4, 0xE8, 0xF0);
const QColor kStripe(0xF6, 0xF7, 0xF9);

QFont font(double points, bool bold = false)
{
    QFont f(kFamily);
    f.setPointSizeF(points);
    f.setBold(bold);
    return f;
}

// Everything that depends on the page: fonts measured on the printer, the column edges,
// and the height of each block. Measured once per paint, used by both passes.
struct Metrics {
    QRectF page;  // the printable area, in device pixels, origin at its top-left
    QFont heading = font(12, true);
    QFont title = font(10.5, true);
    QFont caption = font(9.5);
    QFont header = font(7.5, true);
    QFont body = font(7.5);
    QFont footer = font(7);
    double pad = 0;
    double headBlock = 0;  // heading, title, caption and the column captions
    double footBlock = 0;
    std::vector<double> left;   // left edge of each column
    std::vector<double> width;  // width of each column

    Metrics(const ListDocument& doc, QPrinter& printer)
    {
        page = printer.pageLayout().paintRectPixels(printer.resolution()).toRectF();
        page.moveTo(0, 0);
        pad = printer.resolution() / 36.0;  // about 0.7 mm
        double total = 0;
        for (const Column& c : doc.columns)
            total += std::max(0.05, c.weight);
        double x = 0;
        for (const Column& c : doc.columns) {
            const double w = total > 0 ? page.width() * std::max(0.05, c.weight) / total : 0;
            left.push_back(x);
            width.push_back(w);
            x += w;
        }
        headBlock = line(heading, printer) + line(title, printer) + pad * 2;
        if (!doc.caption.isEmpty())
            headBlock += line(caption, printer);
        headBlock += pad * 2 + columnCaptionHeight(doc, printer);
        footBlock = line(footer, printer) + pad * 3;
    }

    static double line(const QFont& f, QPrinter& printer)
    {
        return QFontMetricsF(f, &printer).lineSpacing();
    }

    QStringList lines(const QFont& f, QPrinter& printer, const QString& text, int col) const
    {
        return cellLines(text, QFontMetricsF(f, &printer),
                         std::max(1.0, width[size_t(col)] - 2 * pad));
    }

    double cellHeight(const QFont& f, QPrinter& printer, const QString& text, int col) const
    {
        const qsizetype n = std::max<qsizetype>(1, lines(f, printer, text, col).size());
        return double(n) * line(f, printer) + 2 * pad;
    }

    double columnCaptionHeight(const ListDocument& doc, QPrinter& printer) const
    {
        double h = line(header, printer) + 2 * pad;
        for (size_t c = 0; c < doc.columns.size(); ++c)
            h = std::max(h, cellHeight(header, printer, doc.columns[c].caption, int(c)));
        return h;
    }

    double rowHeight(const ListDocument& doc, QPrinter& printer, int row) const
    {
        double h = line(body, printer) + 2 * pad;
        const QStringList& cells = doc.rows[size_t(row)];
        for (int c = 0; c < int(doc.columns.size()) && c < cells.size(); ++c)
            h = std::max(h, cellHeight(body, printer, cells[c], c));
        return h;
    }

    double bodyHeight() const { return page.height() - headBlock - footBlock; }
};

Qt::Alignment alignmentOf(Align a)
{
    switch (a) {
    case Align::Right: return Qt::AlignRight | Qt::AlignTop;
    case Align::Center: return Qt::AlignHCenter | Qt::AlignTop;
    case Align::Left: break;
    }
    return Qt::AlignLeft | Qt::AlignTop;
}

// One cell's lines, top down, each aligned within the cell.
void paintCell(QPainter& p, const Metrics& m, QPrinter& printer, const QFont& f, int col,
               double y, const QString& text, Align align)
{
    const double h = Metrics::line(f, printer);
    const double x = m.left[size_t(col)] + m.pad;
    const double w = m.width[size_t(col)] - 2 * m.pad;
    for (const QString& l : m.lines(f, printer, text, col)) {
        p.drawText(QRectF(x, y + m.pad, w, h), alignmentOf(align), l);
        y += h;
    }
}

std::vector<int> paginate(const ListDocument& doc, QPrinter& printer, const Metrics& m,
                          std::vector<double>& heights)
{
    heights.clear();
    std::vector<int> starts{0};
    double used = 0;
    const double room = std::max(1.0, m.bodyHeight());
    for (int r = 0; r < int(doc.rows.size()); ++r) {
        const double h = m.rowHeight(doc, printer, r);
        heights.push_back(h);
        // A row taller than a page gets a page to itself and is cut at its foot.
        if (used > 0 && used + h > room) {
            starts.push_back(r);
            used = 0;
        }
        used += h;
    }
    if (!doc.summary.isEmpty()) {
        const double h = Metrics::line(m.body, printer) + 2 * m.pad;
        if (used > 0 && used + h > room)
            starts.push_back(int(doc.rows.size()));
    }
    return starts;
}

double paintHead(QPainter& p, const ListDocument& doc, const Metrics& m, QPrinter& printer)
{
    double y = 0;
    auto centred = [&](const QFont& f, const QString& text) {
        p.setFont(f);
        const double h = Metrics::line(f, printer);
        p.drawText(QRectF(0, y, m.page.width(), h), Qt::AlignHCenter | Qt::AlignVCenter, text);
        y += h;
    };
    centred(m.heading, doc.heading);
    centred(m.title, doc.title);
    if (!doc.caption.isEmpty())
        centred(m.caption, doc.caption);
    y += m.pad * 2;

    const double h = m.columnCaptionHeight(doc, printer);
    p.fillRect(QRectF(0, y, m.page.width(), h), kHeaderFill);
    p.setFont(m.header);
    for (size_t c = 0; c < doc.columns.size(); ++c)
        paintCell(p, m, printer, m.header, int(c), y, doc.columns[c].caption,
                  doc.columns[c].align);
    p.setPen(QPen(kRule, 0));
    p.drawLine(QPointF(0, y), QPointF(m.page.width(), y));
    p.drawLine(QPointF(0, y + h), QPointF(m.page.width(), y + h));
    p.setPen(Qt::black);
    return y + h;
}

void paintFoot(QPainter& p, const ListDocument& doc, const Metrics& m, QPrinter& printer,
               int pageNo, int pages)
{
    const double h = Metrics::line(m.footer, printer);
    const double y = m.page.height() - h;
    p.setPen(QPen(kRule, 0));
    p.drawLine(QPointF(0, y - m.pad), QPointF(m.page.width(), y - m.pad));
    p.setPen(Qt::black);
    p.setFont(m.footer);
    p.drawText(QRectF(0, y, m.page.width() / 2, h), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("Printed: %1").arg(doc.printedOn));
    p.drawText(QRectF(m.page.width() / 2, y, m.page.width() / 2, h),
               Qt::AlignRight | Qt::AlignVCenter,
               QStringLiteral("Page %1 of %2").arg(pageNo).arg(pages));
}

}  // namespace

QStringList cellLines(const QString& text, const QFontMetricsF& metrics, double width)
{
    QStringList out;
    for (const QString& paragraph : text.split(QLatin1Char('\n'))) {
        QString current;
        for (const QString& word : paragraph.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            const QString fitted = metrics.horizontalAdvance(word) <= width
                                       ? word
                                       : metrics.elidedText(word, Qt::ElideRight, width);
            const QString joined = current.isEmpty() ? fitted : current + QLatin1Char(' ') + fitted;
            if (current.isEmpty() || metrics.horizontalAdvance(joined) <= width) {
                current = joined;
            } else {
                out << current;
                current = fitted;
            }
        }
        out << current;
    }
    return out;
}

void preparePrinter(const ListDocument& doc, QPrinter& printer)
{
    printer.setPageOrientation(doc.landscape ? QPageLayout::Landscape : QPageLayout::Portrait);
    printer.setPageMargins(QMarginsF(12, 12, 12, 12), QPageLayout::Millimeter);
    printer.setDocName(doc.caption.isEmpty() ? doc.title : doc.caption);
}

std::vector<int> pageStarts(const ListDocument& doc, QPrinter& printer)
{
    const Metrics m(doc, printer);
    std::vector<double> heights;
    return paginate(doc, printer, m, heights);
}

void paint(const ListDocument& doc, QPrinter& printer)
{
    const Metrics m(doc, printer);
    std::vector<double> heights;
    const std::vector<int> starts = paginate(doc, printer, m, heights);
    QPainter p;
    if (!p.begin(&printer))
        throw std::runtime_error("The printer could not be started.");
    const int pages = int(starts.size());
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            printer.newPage();
        double y = paintHead(p, doc, m, printer);
        const int first = starts[size_t(page)];
        const int end = page + 1 < pages ? starts[size_t(page) + 1] : int(doc.rows.size());
        p.save();
        p.setClipRect(QRectF(0, 0, m.page.width(), m.page.height() - m.footBlock));
        p.setFont(m.body);
        for (int r = first; r < end; ++r) {
            const double h = heights[size_t(r)];
            if ((r - first) % 2 == 1)
                p.fillRect(QRectF(0, y, m.page.width(), h), kStripe);
            const QStringList& cells = doc.rows[size_t(r)];
            for (int c = 0; c < int(doc.columns.size()) && c < cells.size(); ++c)
                paintCell(p, m, printer, m.body, c, y, cells[c], doc.columns[size_t(c)].align);
            y += h;
        }
        if (page == pages - 1 && !doc.summary.isEmpty()) {
            p.setPen(QPen(kRule, 0));
            p.drawLine(QPointF(0, y), QPointF(m.page.width(), y));
            p.setPen(Qt::black);
            p.setFont(m.header);
            p.drawText(QRectF(m.pad, y + m.pad, m.page.width() - 2 * m.pad,
                              Metrics::line(m.header, printer)),
                       Qt::AlignLeft | Qt::AlignVCenter, doc.summary);
        }
        p.restore();
        paintFoot(p, doc, m, printer, page + 1, pages);
    }
    p.end();
}

void writePdf(const ListDocument& doc, const QString& path)
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    printer.setPageSize(QPageSize(QPageSize::A4));
    preparePrinter(doc, printer);
    paint(doc, printer);
    if (!QFileInfo(path).isFile() || QFileInfo(path).size() == 0)
        throw std::runtime_error(
            QStringLiteral("The file %1 could not be written.").arg(path).toStdString());
}

bool printWithDialog(const ListDocument& doc, QWidget* parent)
{
    QPrinter printer(QPrinter::HighResolution);
    preparePrinter(doc, printer);
    QPrintDialog dialog(&printer, parent);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    paint(doc, printer);
    return true;
}

QWidget* previewWindowPrint(QWidget* window, QWidget* parent)
{
    const QPixmap picture = window->grab();
    auto* dialog = new QPrintPreviewDialog(parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("dlgPrintWindow"));
    dialog->setWindowTitle(QStringLiteral("Print: %1").arg(window->windowTitle()));
    dialog->printer()->setPageOrientation(picture.width() > picture.height()
                                              ? QPageLayout::Landscape
                                              : QPageLayout::Portrait);
    QObject::connect(dialog, &QPrintPreviewDialog::paintRequested, dialog,
                     [picture](QPrinter* printer) {
                         QPainter p(printer);
                         const QRect page = p.viewport();
                         const QSize fitted = picture.size().scaled(page.size(),
                                                                    Qt::KeepAspectRatio);
                         // A small window is not blown up past its own size on paper.
                         const double dotsPerPixel = printer->resolution() / 96.0;
                         const QSize natural(int(picture.width() * dotsPerPixel),
                                             int(picture.height() * dotsPerPixel));
                         const QSize size = natural.width() <= fitted.width() ? natural : fitted;
                         p.drawPixmap(QRect(QPoint(0, 0), size), picture);
                     });
    dialog->open();
    return dialog;
}

}  // namespace tolmar::report
