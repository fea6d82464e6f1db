#include "billing/debt.h"

#include "core/appcontext.h"
#include "core/formats.h"

#include <cmath>

namespace tolmar::billing {

QString debtCaption(double balance)
{
    // The test is on the amount as shown: 0.004 is stored but shows, and counts, as 0.00.
    if (fmt::money(std::abs(balance)) == fmt::money(0))
        return {};
    return (balance > 0 ? QStringLiteral("Debt: ") : QStringLiteral("Credit: ")) +
           fmt::money(std::abs(balance));
}

DebtOutcome ComputeDebtBroughtForward(AppContext& ctx, db::Connection& c, const QString& pno,
                                      double opening)
{
    Session& s = ctx.session();
    const auto latest = c.queryOne(
        QStringLiteral("SELECT ClientID, (COALESCE(AmountBilled, 0) + COALESCE(DebtBF, 0)) - "
                       "(COALESCE(Discount, 0) + COALESCE(AmountPaid, 0)) AS Balance "
                       "FROM Billing WHERE PNo = ? ORDER BY ID DESC LIMIT 1"),
        {pno});
    DebtOutcome out;
    // Only the private client's bills carry a balance over; a company settles its own.
    if (!latest)
        out.balance = opening;
    else if (latest->text(u"ClientID") == s.defaults.PRIVATE)
        out.balance = latest->toDouble(u"Balance");
    c.exec(QStringLiteral("UPDATE hPatients SET isRev = 1, DebtBF = ?, Debt = ? WHERE PNo = ?"),
           {out.balance, out.balance, pno});
    out.caption = debtCaption(out.balance);
    s.currentBalance = out.balance;
    s.debtShown = out.shown();
    return out;
}

}  // namespace tolmar::billing
