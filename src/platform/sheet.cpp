#include "platform/sheet.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

#include <xlsxwriter.h>

#include <algorithm>
#include <stdexcept>

namespace tolmar::sheet {

namespace {

constexpr int kMaxCellText = 32767;  // the format's own limit
constexpr double kMaxColumnWidth = 60;

bool isNumber(const QVariant& v)
{
    switch (v.metaType().id()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

void check(lxw_error e, const char* what)
{
    if (e != LXW_NO_ERROR)
        throw std::runtime_error(std::string(what) + ": " + lxw_strerror(e));
}

}  // namespace

void writeWorkbook(const QString& path, const QStringList& header,
                   const std::vector<std::vector<QVariant>>& rows)
{
    if (rows.size() + 1 > LXW_ROW_MAX)
        throw std::runtime_error("Too many rows for one sheet");
    if (header.size() > LXW_COL_MAX)
        throw std::runtime_error("Too many columns for one sheet");
    const QByteArray file = path.toUtf8();
    lxw_workbook* wb = workbook_new(file.constData());
    if (!wb)
        throw std::runtime_error("Cannot create the workbook " + file.toStdString());
    lxw_worksheet* ws = workbook_add_worksheet(wb, "Sheet1");
    lxw_format* bold = workbook_add_format(wb);
    format_set_bold(bold);

    std::vector<int> widths(size_t(header.size()), 0);
    auto writeText = [&](lxw_row_t r, lxw_col_t c, const QString& text, lxw_format* f) {
        const QByteArray utf8 = text.left(kMaxCellText).toUtf8();
        check(worksheet_write_string(ws, r, c, utf8.constData(), f), "write");
        widths[c] = std::max(widths[c], int(text.size()));
    };
    try {
        for (int c = 0; c < header.size(); ++c)
            writeText(0, lxw_col_t(c), header[c], bold);
        for (size_t r = 0; r < rows.size(); ++r) {
            const auto& row = rows[r];
            const size_t n = std::min(row.size(), size_t(header.size()));
            for (size_t c = 0; c < n; ++c) {
                const QVariant& v = row[c];
                if (!v.isValid() || v.isNull())
                    continue;
                if (isNumber(v)) {
                    check(worksheet_write_number(ws, lxw_row_t(r + 1), lxw_col_t(c),
                                                 v.toDouble(), nullptr),
                          "write");
                    widths[c] = std::max(widths[c], int(v.toString().size()));
                } else {
                    writeText(lxw_row_t(r + 1), lxw_col_t(c), v.toString(), nullptr);
                }
            }
        }
        for (size_t c = 0; c < widths.size(); ++c)
            worksheet_set_column(ws, lxw_col_t(c), lxw_col_t(c),
                                 std::min(kMaxColumnWidth, widths[c] + 2.0), nullptr);
    } catch (...) {
        workbook_close(wb);
        throw;
    }
    check(workbook_close(wb), "Cannot save the workbook");
}

bool hasDesktop()
{
    const QString platform = QGuiApplication::platformName();
    if (platform.isEmpty() || platform == QLatin1String("offscreen") ||
        platform == QLatin1String("minimal"))
        return false;
#if defined(Q_OS_LINUX)
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        return false;
#endif
    return true;
}

bool openWithDesktop(const QString& path)
{
    if (!hasDesktop())
        return false;
    return QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

}  // namespace tolmar::sheet
