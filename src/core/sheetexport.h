#pragma once
// Export of a result to a spreadsheet: the field names in row 1, the rows in order below,
// dates in short form, then the workbook opens in the desktop's spreadsheet program.

#include "platform/db.h"

#include <QString>

namespace tolmar {

class AppContext;

inline const QString kExportNoRowsText = QStringLiteral("No MarginAnalysis OR \r\n");

// The value a cell gets: null blank, dates (also ISO date text) in short form, numbers as
// numbers, text as text, and "Array Field" for what can't be a cell (binary, lists).
QVariant sheetCell(const QVariant& value);

// Writes the workbook (to `path`, or a new file in the temporary folder) and opens it when
// there is a desktop; returns the file written. A result without rows writes nothing: the
// desk is told "No MarginAnalysis OR" and the last error's description, and "" returned.
QString exportToSheet(AppContext& ctx, const db::Result& rs, const QString& path = QString(),
                      const QString& lastError = QString());

}  // namespace tolmar
