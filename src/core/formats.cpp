#include "core/formats.h"

#include <QLocale>

namespace tolmar::fmt {

QString shortDate(const QDate& d) { return d.isValid() ? d.toString(kShortDate) : QString(); }

QString shortTime(const QTime& t)
{
    return t.isValid() ? QLocale::c().toString(t, kShortTime) : QString();
}

QString money(double amount) { return QLocale(QLocale::English).toString(amount, 'f', 2); }

QDate parseDate(const QString& text)
{
    const QString s = text.trimmed();
    QDate d = QDate::fromString(s, kShortDate);
    if (!d.isValid())
        d = QDate::fromString(s, QStringLiteral("d/M/yyyy"));
    if (!d.isValid())
        d = QDate::fromString(s.left(10), Qt::ISODate);
    return d;
}

}  // namespace tolmar::fmt
