#include "reports/datareportview.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/ui/formbuilder.h"
#include "platform/prompt.h"

#include <QAbstractScrollArea>
#include <QLabel>
#include <QScrollBar>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>
#include <QVBoxLayout>

namespace tolmar {

DataReportView::DataReportView(AppContext& ctx, const QString& layoutName,
                               report::ListDocument document, QWidget* parent)
    : QWidget(parent),
      m_ctx(ctx),
      m_doc(std::move(document)),
      m_printer(std::make_unique<QPrinter>(QPrinter::ScreenResolution))
{
    setObjectName(layoutName);
    setWindowTitle(m_doc.caption.trimmed().isEmpty() ? m_doc.title : m_doc.caption);
    report::preparePrinter(m_doc, *m_printer);

    ui::FormBuilder f(this);
    auto* pages = new QLabel(this);
    pages->setObjectName(QStringLiteral("lblPages"));
    auto* print = f.button(QStringLiteral("cmdPrint"), QStringLiteral("&Print..."));
    auto* pdf = f.button(QStringLiteral("cmdPdf"), QStringLiteral("Export to P&DF..."));
    auto* zoomIn = f.button(QStringLiteral("cmdZoomIn"), QStringLiteral("Zoom &In"));
    auto* zoomOut = f.button(QStringLiteral("cmdZoomOut"), QStringLiteral("Zoom &Out"));
    auto* close = f.button(QStringLiteral("cmdClose"), QStringLiteral("&Close"));
    // The page count stands at the left end of the button row.
    if (auto* row = qobject_cast<QHBoxLayout*>(f.layout()->itemAt(0)->layout()))
        row->insertWidget(0, pages);

    m_preview = new QPrintPreviewWidget(m_printer.get(), this);
    m_preview->setObjectName(QStringLiteral("prvReport"));
    f.layout()->addWidget(m_preview, 1);
    connect(m_preview, &QPrintPreviewWidget::paintRequested, this,
            [this](QPrinter* printer) { report::paint(m_doc, *printer); });
    connect(m_preview, &QPrintPreviewWidget::previewChanged, this, [this, pages] {
        // The first page in view once the pages are laid out, whatever the zoom did.
        if (!m_shownFirstPage) {
            m_shownFirstPage = true;
            QTimer::singleShot(0, m_preview, [this] {
                if (auto* view = m_preview->findChild<QAbstractScrollArea*>())
                    view->verticalScrollBar()->setValue(0);
            });
        }
        pages->setText(QStringLiteral("%1 page(s), %2 record(s)")
                           .arg(m_preview->pageCount())
                           .arg(m_doc.rows.size()));
    });
    connect(print, &QPushButton::clicked, this, &DataReportView::printReport);
    connect(pdf, &QPushButton::clicked, this, &DataReportView::exportPdf);
    connect(zoomIn, &QPushButton::clicked, m_preview, [this] { m_preview->zoomIn(); });
    connect(zoomOut, &QPushButton::clicked, m_preview, [this] { m_preview->zoomOut(); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    m_preview->fitToWidth();
    resize(900, 640);
}

DataReportView::~DataReportView() = default;

int DataReportView::pageCount() const
{
    return int(report::pageStarts(m_doc, *m_printer).size());
}

void DataReportView::printReport()
{
    runCommand(this, m_ctx, [this] { report::printWithDialog(m_doc, this); });
}

void DataReportView::exportPdf()
{
    runCommand(this, m_ctx, [this] {
        QString suggested = windowTitle().trimmed();
        suggested.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9 _-]")), QString());
        const QString path = m_ctx.prompter().saveFile(
            QStringLiteral("Export to PDF"), QStringLiteral("PDF files (*.pdf)"),
            suggested.isEmpty() ? QStringLiteral("report.pdf")
                                : suggested + QStringLiteral(".pdf"));
        if (path.isEmpty())
            return;
        auto busy = m_ctx.prompter().busy();
        report::writePdf(m_doc, path);
    });
}

}  // namespace tolmar
