#include "core/activitylog.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QDebug>

namespace tolmar {

void openActivityRow(AppContext& ctx, bool isLogout, bool autoLogoff, const QString& remarks)
{
    try {
        ctx.refreshServerClock();
        const Session& s = ctx.session();
        auto conn = ctx.openConnection(db::Database::Hospital);
        db::Transaction tx(*conn);
        const QVariant logoutDate = isLogout ? QVariant(s.serverDate) : QVariant();
        const QVariant logoutTime = isLogout ? QVariant(s.serverDateTime.time()) : QVariant();
        // The number comes back from the insert itself: reading "the newest row" afterwards
        // could, on a server where another desk commits in between, take that desk's row.
        const QVariant sno = conn->scalar(
            QStringLiteral("INSERT INTO UserActivities (Username, LoginDate, LoginTime, islogout, "
                           "AppVersion, LogoutDate, LogoutTime, AutoLogoff, Remarks) "
                           "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING SNO"),
            {s.userName, s.serverDate, s.serverDateTime.time(), isLogout,
             int(kVersionMajor), logoutDate, logoutTime, autoLogoff, remarks});
        if (!sno.isValid())
            throw db::DbError(QStringLiteral("The activity row was not added."));
        tx.commit();
        ctx.session().activitySNo = sno.toInt();
    } catch (const std::exception& e) {
        ctx.prompter().inform(describeError(e), QString(), Icon::Critical);
    }
}

void closeActivityRow(AppContext& ctx, bool isLogout, bool autoLogoff, const QString& remarks)
{
    ctx.session().autoLogoff = false;
    try {
        ctx.refreshServerClock();
        const Session& s = ctx.session();
        db::Connection& c = ctx.db(db::Database::Hospital);
        // One statement: a number that is no longer in the table simply matches no row.
        if (isLogout) {
            c.exec(QStringLiteral("UPDATE UserActivities SET islogout = ?, LogoutDate = ?, "
                                  "LogoutTime = ?, AutoLogoff = ?, Remarks = ? WHERE SNO = ?"),
                   {true, s.serverDate, s.serverDateTime.time(), autoLogoff, remarks,
                    s.activitySNo});
        } else {
            c.exec(QStringLiteral("UPDATE UserActivities SET islogout = ?, AutoLogoff = ?, "
                                  "Remarks = ? WHERE SNO = ?"),
                   {false, autoLogoff, remarks, s.activitySNo});
        }
    } catch (const std::exception& e) {
        qWarning().noquote() << "The activity row was not closed:" << describeError(e);
    }
}

}  // namespace tolmar
