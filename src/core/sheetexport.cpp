#include "core/sheetexport.h"

#include "core/appcontext.h"
#include "core/formats.h"
#include "platform/prompt.h"
#include "platform/sheet.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryFile>

namespace tolmar {

QVariant sheetCell(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return {};
    switch (v.metaType().id()) {
    case QMetaType::QDate:
        return fmt::shortDate(v.toDate());
    case QMetaType::QDateTime:
        return fmt::shortDate(v.toDateTime().date());
    case QMetaType::QTime:
        return fmt::shortTime(v.toTime());
    case QMetaType::QByteArray:
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return QStringLiteral("Array Field");
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Bool:
        return v;
    default:
        break;
    }
    // SQLite keeps dates as ISO text; they are shown like any other date.
    static const QRegularExpression isoDate(
        QStringLiteral("^(\\d{4}-\\d{2}-\\d{2})(?:[ T]\\d{2}:\\d{2}(?::\\d{2}(?:\\.\\d+)?)?)?$"));
    const QString s = v.toString();
    const auto m = isoDate.match(s);
    if (m.hasMatch()) {
        const QDate d = QDate::fromString(m.captured(1), Qt::ISODate);
        if (d.isValid())
            return fmt::shortDate(d);
    }
    return s;
}

QString exportToSheet(AppContext& ctx, const db::Result& rs, const QString& path,
                      const QString& lastError)
{
    if (rs.empty()) {
        ctx.prompter().inform(kExportNoRowsText + lastError);
        return QString();
    }
    auto busy = ctx.prompter().busy();
    QString file = path;
    if (file.isEmpty()) {
        QTemporaryFile t(QDir::temp().filePath(QStringLiteral("Tolmar-XXXXXX.xlsx")));
        t.setAutoRemove(false);
        if (!t.open())
            throw std::runtime_error("Cannot create a file in the temporary folder");
        file = t.fileName();
    }
    const QStringList header = rs.columns ? rs.columns->names() : QStringList();
    std::vector<std::vector<QVariant>> rows;
    rows.reserve(rs.rows.size());
    for (const db::Row& r : rs.rows) {
        std::vector<QVariant> cells;
        cells.reserve(r.values().size());
        for (const QVariant& v : r.values())
            cells.push_back(sheetCell(v));
        rows.push_back(std::move(cells));
    }
    sheet::writeWorkbook(file, header, rows);
    // Like the workbook the desks used to get, it stays with the person to save or drop.
    sheet::openWithDesktop(file);
    return file;
}

}  // namespace tolmar
