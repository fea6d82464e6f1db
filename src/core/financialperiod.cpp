#include "core/financialperiod.h"

#include "core/appcontext.h"
#include "platform/db.h"

namespace tolmar {

FinancialPeriodError::FinancialPeriodError(const QString& message)
    : std::runtime_error(message.toStdString()), m_message(message)
{
}

QString udf_GetFinancialPeriod(db::Connection& accounting, const QDate& date,
                               const QString& coyID)
{
    // Where periods overlap (a mistake of the ledger), the one that began last wins.
    const auto row = accounting.queryOne(
        QStringLiteral("SELECT PeriodName FROM FinancialPeriods WHERE CoyID = ? "
                       "AND StartDate <= ? AND EndDate >= ? ORDER BY StartDate DESC LIMIT 1"),
        {coyID, date, date});
    return row ? row->text(u"PeriodName") : QString();
}

QString GetFinancialPeriodForDate(AppContext& ctx, const QDate& tranDate)
{
    if (!ctx.session().defaults.AcctPostOn)
        return QString();
    return GetFinancialPeriodForDate(ctx, ctx.db(db::Database::Accounting), tranDate);
}

QString GetFinancialPeriodForDate(AppContext& ctx, db::Connection& accounting,
                                  const QDate& tranDate)
{
    const AppDefaults& d = ctx.session().defaults;
    if (!d.AcctPostOn)
        return QString();
    if (!ctx.session().serverDate.isValid())
        ctx.refreshServerClock();
    const QDate today = ctx.session().serverDate;
    const QDate monthEnd = QDate(today.year(), today.month(), 1).addMonths(1).addDays(-1);
    if (d.AcctPostBeyondCurrentCalendarMonth == QLatin1String("NO") && tranDate > monthEnd)
        throw FinancialPeriodError(kTranDateBeyondCurrentPeriod);
    const QDate closed = d.AcctPostLastPeriodCloseDate;
    if (d.AcctPostBelowLastPeriodClose == QLatin1String("NO") && closed.isValid() &&
        tranDate <= closed)
        throw FinancialPeriodError(kTranDateInClosedPeriod);
    const QString period = udf_GetFinancialPeriod(accounting, tranDate, d.CoyID);
    if (period.isEmpty())
        throw FinancialPeriodError(kTranDateInClosedPeriod);
    return period;
}

}  // namespace tolmar
