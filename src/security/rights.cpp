#include "security/rights.h"

#include "core/appcontext.h"
#include "core/command.h"

namespace tolmar::security {

std::optional<db::Row> roleHolder(db::Connection& c, const QString& userName,
                                  const QString& role)
{
    return c.queryOne(QStringLiteral("SELECT hospID, HName, empID, Fullname, Username, "
                                     "LoginRole, AccountStatus, BranchCode FROM vwUsers "
                                     "WHERE lower(Username) = lower(?) "
                                     "AND lower(LoginRole) = lower(?) LIMIT 1"),
                      {userName, role});
}

bool holdsRole(db::Connection& c, const QString& userName, const QString& role)
{
    return roleHolder(c, userName, role).has_value();
}

void requireRole(AppContext& ctx, const QString& role, const CheckFailed& refusal)
{
    if (!holdsRole(ctx.db(), ctx.session().userName, role))
        throw refusal;
}

}  // namespace tolmar::security
