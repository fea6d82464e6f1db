#include "core/listentry.h"

namespace tolmar::listentry {

QString make(const QString& text, const QString& key)
{
    return text + QStringLiteral(" [") + key + QLatin1Char(']');
}

QStringList fromRows(const std::vector<db::Row>& rows, QStringView text, QStringView key)
{
    QStringList out;
    out.reserve(qsizetype(rows.size()));
    for (const db::Row& r : rows)
        out << make(r.text(text), r.text(key));
    return out;
}

QString key(const QString& entry)
{
    const qsizetype open = entry.indexOf(QLatin1Char('['));
    if (open < 0)
        return {};
    const qsizetype close = entry.indexOf(QLatin1Char(']'), open + 1);
    if (close < 0)
        return {};
    return entry.mid(open + 1, close - open - 1);
}

QString text(const QString& entry)
{
    const qsizetype open = entry.indexOf(QLatin1Char('['));
    return (open < 0 ? entry : entry.left(open)).trimmed();
}

QString stripBrackets(const QString& name)
{
    QString s = name;
    s.remove(QLatin1Char('[')).remove(QLatin1Char(']'));
    return s.trimmed();
}

QString blankBrackets(const QString& name)
{
    QString s = name;
    s.replace(QLatin1Char('['), QLatin1Char(' ')).replace(QLatin1Char(']'), QLatin1Char(' '));
    return s.trimmed();
}

}  // namespace tolmar::listentry
