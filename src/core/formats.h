#pragma once
// The one place that decides how dates, times and money look on screen and in reports.

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>

namespace tolmar::fmt {

inline const QString kShortDate = QStringLiteral("dd/MM/yyyy");
inline const QString kShortTime = QStringLiteral("h:mm AP");

QString shortDate(const QDate& d);
QString shortTime(const QTime& t);
QString money(double amount);  // 2 decimals, thousands separated: 12,500.00
// Accepts the short form and ISO; an invalid date when neither fits.
QDate parseDate(const QString& text);

}  // namespace tolmar::fmt
