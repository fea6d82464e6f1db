#include "core/age.h"

#include "core/appcontext.h"

namespace tolmar {

namespace {
QString counted(int n, const char* unit)
{
    return QStringLiteral("%1 %2%3").arg(n).arg(QLatin1String(unit)).arg(
        n == 1 ? QString() : QStringLiteral("s"));
}
}  // namespace

QString ageText(const QDate& dob, const QDate& today)
{
    // Calendar months first, then the days left over. Adding months to the 31st lands on a
    // month's last day, which can overshoot today; one month less keeps the days positive.
    int months = (today.year() - dob.year()) * 12 + (today.month() - dob.month());
    qint64 days = dob.addMonths(months).daysTo(today);
    if (days < 0) {
        --months;
        days = dob.addMonths(months).daysTo(today);
    }
    return counted(months / 12, "yr") + QStringLiteral(", ") + counted(months % 12, "mth") +
           QStringLiteral(" and ") + counted(int(days), "day");
}

QString ageText(AppContext& ctx, const QDate& dob)
{
    return ageText(dob, ctx.clock().workstationNow().date());
}

}  // namespace tolmar
