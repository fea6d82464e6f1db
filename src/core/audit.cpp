#include "core/audit.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "platform/db.h"

#include <QDebug>

namespace tolmar {

void SpAudiTrail(AppContext& ctx, const QString& userName, const QString& action,
                 const QString& tranCode, const QString& remarks, const QString& computerName)
{
    SpAudiTrail(ctx, userName, {AuditEntry{action, tranCode, remarks}}, computerName);
}

void SpAudiTrail(AppContext& ctx, const QString& userName, const std::vector<AuditEntry>& entries,
                 const QString& computerName)
{
    if (entries.empty())
        return;
    try {
        ctx.refreshServerClock();
        const Session& s = ctx.session();
        const QString src = QStringLiteral("%1: from %2").arg(computerName, s.loginRole);
        QStringList rows;
        db::Params values;
        for (const AuditEntry& e : entries) {
            rows << QStringLiteral("(?, ?, ?, ?, ?, ?, ?)");
            values.insert(values.end(),
                          {userName.left(kAuditUserNameSize), e.action.left(kAuditActionSize),
                           s.serverDate, s.serverDateTime.time(),
                           e.tranCode.left(kAuditTranCodeSize), e.remarks.left(kAuditRemarksSize),
                           src.left(kAuditSrcSize)});
        }
        auto conn = ctx.openConnection(db::Database::Hospital);
        conn->exec(QStringLiteral("INSERT INTO AuditTrail (userName, userAction, ActionDate, "
                                  "ActionTime, TranCode, Remarks, Src) VALUES ") +
                       rows.join(QStringLiteral(", ")),
                   values);
    } catch (const std::exception& e) {
        QStringList what;
        for (const AuditEntry& a : entries)
            what << a.action + QLatin1Char(' ') + a.tranCode;
        qWarning().noquote() << "The audit entries" << what.join(QStringLiteral("; "))
                             << "were not recorded:" << describeError(e);
    }
}

}  // namespace tolmar
