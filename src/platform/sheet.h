#pragma once
// The spreadsheet seam: writes a real .xlsx workbook (one sheet, "Sheet1") and hands it to
// the desktop's default application. The only place that knows libxlsxwriter.

#include <QString>
#include <QStringList>
#include <QVariant>

#include <vector>

namespace tolmar::sheet {

// Row 1 holds the header, then one row per entry of `rows`. A cell is written by its value's
// type: numbers (and true/false as 1/0) as numbers, an invalid or null value as a blank
// cell, anything else as its text. Columns are widened to their longest text.
// Throws std::runtime_error with the library's description when the file can't be made.
void writeWorkbook(const QString& path, const QStringList& header,
                   const std::vector<std::vector<QVariant>>& rows);

// Whether a person sits at a screen to look at the workbook (not offscreen, not headless).
bool hasDesktop();
// Opens the file with the desktop's default application; false when there is no desktop
// or the desktop refused.
bool openWithDesktop(const QString& path);

}  // namespace tolmar::sheet
