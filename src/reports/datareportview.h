#pragma once
// A list report on screen: the pages as they will print, with Print, Export to PDF and zoom.
// It opens as a child window of the main window, one per layout: printing the same list
// again replaces the window that shows the older rows.

#include "platform/report.h"

#include <QWidget>

#include <memory>

class QPrinter;
class QPrintPreviewWidget;

namespace tolmar {

class AppContext;

class DataReportView : public QWidget {
    Q_OBJECT
public:
    // The window's object name is the layout's name; its title is the caption, or the
    // layout's title when the caller gave none.
    DataReportView(AppContext& ctx, const QString& layoutName, report::ListDocument document,
                   QWidget* parent = nullptr);
    ~DataReportView() override;

    const report::ListDocument& document() const { return m_doc; }
    int pageCount() const;

public slots:
    void printReport();
    void exportPdf();

private:
    AppContext& m_ctx;
    report::ListDocument m_doc;
    std::unique_ptr<QPrinter> m_printer;
    QPrintPreviewWidget* m_preview;
    bool m_shownFirstPage = false;
};

}  // namespace tolmar
