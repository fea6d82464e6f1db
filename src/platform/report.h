#pragma once
// The report seam: list reports laid out in the program, painted onto a printer, a PDF file
// or a print preview. A report is handed over ready to print: columns with their captions
// and share of the width, rows whose cells are already the text that is printed. Every page
// repeats the heading, the title, the caption and the column captions, and carries the
// print date and "Page n of m" at its foot.

#include <QString>
#include <QStringList>

#include <vector>

class QFontMetricsF;
class QPrinter;
class QWidget;

namespace tolmar::report {

enum class Align { Left, Right, Center };

struct Column {
    QString caption;
    double weight = 1.0;  // share of the printable width, relative to the other columns
    Align align = Align::Left;
};

struct ListDocument {
    QString heading;    // the hospital's name, above the title
    QString title;      // what the layout is ("Patients Attendance")
    QString caption;    // what the caller says about this print ("Patients Attendance for Today")
    QString printedOn;  // the date printed at the foot of every page
    std::vector<Column> columns;
    std::vector<QStringList> rows;  // one text per column
    QString summary;                // a closing line under the last row, if any
    bool landscape = false;
};

// The lines a cell prints in a column this wide: broken between words only, a word too long
// for the column shortened with "…" rather than split across two lines.
QStringList cellLines(const QString& text, const QFontMetricsF& metrics, double width);

// How the rows fall onto pages of this printer: the index of the first row of each page.
std::vector<int> pageStarts(const ListDocument& doc, QPrinter& printer);

// Paints every page onto the printer: a real printer, a PDF file or a preview's pages.
void paint(const ListDocument& doc, QPrinter& printer);

// Writes the report as a PDF file; throws std::runtime_error when it cannot be written.
void writePdf(const ListDocument& doc, const QString& path);

// Sets the page orientation the document asks for (before painting or previewing).
void preparePrinter(const ListDocument& doc, QPrinter& printer);

// The platform's print dialog, then the printer. False when the person cancels.
bool printWithDialog(const ListDocument& doc, QWidget* parent);

// "Print" of a window: a picture of it, fitted to the page, in a print preview that the
// person prints from or closes. The preview is not modal; it closes itself when done.
QWidget* previewWindowPrint(QWidget* window, QWidget* parent);

}  // namespace tolmar::report
