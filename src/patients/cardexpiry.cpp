#include "patients/cardexpiry.h"

#include "core/appcontext.h"

namespace tolmar {

int declareExpiredCards(AppContext& ctx, const QDate& today)
{
    // One set-based statement: a desk may start against a million patients, and the
    // partial index on (expirydate) WHERE expired = 0 keeps this to the few cards due.
    // A single statement commits on its own, so the run's shared connection serves and
    // the start saves opening another.
    return ctx.db().exec(QStringLiteral("update hPatients set expired = 1 "
                                  "where expirydate <= ? and expired = 0"),
                   {today});
}

QString expiredCardsNotice(int count)
{
    if (count <= 0)
        return QString();
    return QStringLiteral("%1 Card(s) is/are due for Renewal and have been declared Expired")
        .arg(count);
}

}  // namespace tolmar
