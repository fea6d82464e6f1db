#pragma once
// The accounting period a transaction date belongs to, and the two refusals that keep
// postings out of closed periods and out of the future. Only while AcctPostOn is set.

#include <QDate>
#include <QString>

#include <stdexcept>

namespace tolmar {

class AppContext;
namespace db {
class Connection;
}

inline const QString kTranDateBeyondCurrentPeriod =
    QStringLiteral("Tran Date Cannot be greater than Current Period");
inline const QString kTranDateInClosedPeriod =
    QStringLiteral("Invalid Tran Date. Falls within a Closed Period OR Non Existent Period");

// A refused transaction date. The number is the one the accounting module has always
// raised (object error 999), so callers that test it keep working.
class FinancialPeriodError : public std::runtime_error {
public:
    static constexpr int kNumber = -2147220505;  // 0x800403E7
    explicit FinancialPeriodError(const QString& message);
    const QString& message() const { return m_message; }
    int number() const { return kNumber; }

private:
    QString m_message;
};

// udf_GetFinancialPeriod on the Accounting database: the name of the company's period
// that holds the date, or "" when none does.
QString udf_GetFinancialPeriod(db::Connection& accounting, const QDate& date,
                               const QString& coyID);

// The period text of a transaction date; "" while posting is off. Throws
// FinancialPeriodError with one of the two texts above when the date is refused.
QString GetFinancialPeriodForDate(AppContext& ctx, const QDate& tranDate);
QString GetFinancialPeriodForDate(AppContext& ctx, db::Connection& accounting,
                                  const QDate& tranDate);

}  // namespace tolmar
