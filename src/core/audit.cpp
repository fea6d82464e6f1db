#include "core/audit.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "platform/db.h"

#include <QDebug>

namespace tolmar {

void SpAudiTrail(AppContext& ctx, const QString& userName, const QString& action,
                 const QString& tranCode, const QString& remarks, const QString& computerName)
{
    try {
        ctx.refreshServerClock();
        const Session& s = ctx.session();
        const QString src = QStringLiteral("%1: from %2").arg(computerName, s.loginRole);
        auto conn = ctx.openConnection(db::Database::Hospital);
        conn->exec(QStringLiteral("INSERT INTO AuditTrail (userName, userAction, ActionDate, "
                                  "ActionTime, TranCode, Remarks, Src) "
                                  "VALUES (?, ?, ?, ?, ?, ?, ?)"),
                   {userName.left(kAuditUserNameSize), action.left(kAuditActionSize),
                    s.serverDate, s.serverDateTime.time(), tranCode.left(kAuditTranCodeSize),
                    remarks.left(kAuditRemarksSize), src.left(kAuditSrcSize)});
    } catch (const std::exception& e) {
        qWarning().noquote() << "The audit entry" << action << tranCode
                             << "was not recorded:" << describeError(e);
    }
}

}  // namespace tolmar
