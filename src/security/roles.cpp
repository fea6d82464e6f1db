#include "security/roles.h"

#include "core/appcontext.h"
#include "security/serverlog.h"

namespace tolmar::security {

namespace {

// Runs one operation on a connection of its own. A database error is written to the
// error log and the operation ends with `failed`: the screen stays as it is.
template <typename T, typename F>
T guarded(AppContext& ctx, T failed, F&& body)
{
    try {
        auto own = ctx.openConnection();
        return body(*own);
    } catch (const db::DbError& e) {
        logError(ctx, e);
        return failed;
    }
}

}  // namespace

Role::Outcome Role::Submit()
{
    return guarded(m_ctx, Outcome::Failed, [this](db::Connection& c) {
        if (c.queryOne(QStringLiteral("SELECT RoleID FROM Roles WHERE RoleID = ?"), {m_id})) {
            logActivity(m_ctx,
                        QStringLiteral("Attempted creating a RoleID %1 that already exists.")
                            .arg(m_id));
            return Outcome::Exists;
        }
        c.exec(QStringLiteral("INSERT INTO Roles (RoleID, LoginRole) VALUES (?, ?)"),
               {m_id, m_name});
        logActivity(m_ctx, QStringLiteral("Successfully created a new Role  %1").arg(m_id));
        return Outcome::Saved;
    });
}

Role::Outcome Role::Delete()
{
    return guarded(m_ctx, Outcome::Failed, [this](db::Connection& c) {
        if (!c.queryOne(QStringLiteral("SELECT RoleID FROM Roles WHERE RoleID = ?"), {m_id})) {
            logActivity(m_ctx,
                        QStringLiteral("Attempted to delete a non existing Role %1").arg(m_id));
            return Outcome::NotFound;
        }
        if (c.queryOne(QStringLiteral("SELECT RoleID FROM UserRoles WHERE RoleID = ? LIMIT 1"),
                       {m_id})) {
            logActivity(m_ctx, QStringLiteral("Attempted deleting the Role for %1that would "
                                              "lead to orphan User Accounts.")
                                   .arg(m_id));
            return Outcome::HasUsers;
        }
        c.exec(QStringLiteral("DELETE FROM Roles WHERE RoleID = ?"), {m_id});
        logActivity(m_ctx, QStringLiteral("Successfully deleted the Role for %1").arg(m_id));
        return Outcome::Deleted;
    });
}

QAbstractItemModel* Role::DisplayData(QObject* parent)
{
    return guarded(m_ctx, static_cast<QAbstractItemModel*>(nullptr), [&](db::Connection& c) {
        return c.gridModel(QStringLiteral("SELECT RoleID AS \"RoleID\", LoginRole AS "
                                          "\"LoginRole\", MinVer AS \"MinVer\" FROM Roles "
                                          "ORDER BY RoleID"),
                           {}, parent);
    });
}

UserRole::Event UserRole::Submit()
{
    if (m_id == 0)
        return Event::EmptyRoleID;
    if (m_user.trimmed().isEmpty())
        return Event::EmptyUsername;
    return guarded(m_ctx, Event::Failed, [this](db::Connection& c) {
        if (!c.queryOne(QStringLiteral("SELECT RoleID FROM Roles WHERE RoleID = ?"), {m_id}))
            return Event::InvalidRoleID;
        // The pair names the account as it is stored, whatever the case it was given in:
        // the views join on the name as stored.
        const auto user = c.queryOne(QStringLiteral("SELECT Username FROM ApplicationUsers "
                                                    "WHERE lower(Username) = lower(?)"),
                                     {m_user.trimmed()});
        if (!user)
            return Event::InvalidUsername;
        const QString name = user->text(u"Username");
        if (c.queryOne(QStringLiteral("SELECT RoleID FROM UserRoles WHERE RoleID = ? AND "
                                      "Username = ?"),
                       {m_id, name}))
            return Event::RecordExists;
        c.exec(QStringLiteral("INSERT INTO UserRoles (RoleID, Username) VALUES (?, ?)"),
               {m_id, name});
        return Event::AllocationComplete;
    });
}

std::vector<std::pair<qint32, QString>> UserRole::LoadData()
{
    using Pairs = std::vector<std::pair<qint32, QString>>;
    return guarded(m_ctx, Pairs{}, [](db::Connection& c) {
        Pairs out;
        for (const db::Row& r :
             c.query(QStringLiteral("SELECT RoleID, Username FROM UserRoles")).rows)
            out.emplace_back(r.toInt(u"RoleID"), r.text(u"Username"));
        return out;
    });
}

std::vector<UserRole::RoleEntry> UserRole::LoadRoleID()
{
    return guarded(m_ctx, std::vector<RoleEntry>{}, [](db::Connection& c) {
        std::vector<RoleEntry> out;
        for (const db::Row& r :
             c.query(QStringLiteral("SELECT RoleID, LoginRole FROM Roles ORDER BY RoleID")).rows)
            out.push_back({r.toInt(u"RoleID"), r.text(u"LoginRole")});
        return out;
    });
}

QStringList UserRole::LoadUsername()
{
    return guarded(m_ctx, QStringList{}, [](db::Connection& c) {
        QStringList out;
        for (const db::Row& r :
             c.query(QStringLiteral("SELECT Username FROM ApplicationUsers ORDER BY Username"))
                 .rows)
            out << r.text(u"Username");
        return out;
    });
}

std::vector<UserRole::Member> UserRole::UserRoleMatch(qint32 roleID)
{
    return guarded(m_ctx, std::vector<Member>{}, [roleID](db::Connection& c) {
        std::vector<Member> out;
        for (const db::Row& r :
             c.query(QStringLiteral("SELECT Username, Fullname, AccountStatus FROM qryUserRole "
                                    "WHERE RoleID = ? ORDER BY Username"),
                     {roleID})
                 .rows)
            out.push_back({r.text(u"Username"), r.text(u"Fullname"), r.text(u"AccountStatus")});
        return out;
    });
}

QString eventText(UserRole::Event e)
{
    switch (e) {
    case UserRole::Event::AllocationComplete: return QStringLiteral("Submission Successful.");
    case UserRole::Event::EmptyRoleID:
        return QStringLiteral("RoleID cannot be empty. Matching Record Exists.");
    case UserRole::Event::EmptyUsername: return QStringLiteral("Username cannot be empty.");
    case UserRole::Event::InvalidRoleID: return QStringLiteral("Invalid RoleID.");
    case UserRole::Event::InvalidUsername: return QStringLiteral("Invalid Username.");
    case UserRole::Event::RecordExists:
        return QStringLiteral("Submission Failed! Matching Record Exists.");
    case UserRole::Event::Failed: break;
    }
    return QString();
}

qint32 roleIdOfNode(const QString& text)
{
    const QString head = text.left(3);
    qsizetype n = 0;
    while (n < head.size() && head.at(n).isDigit() && head.at(n).unicode() < 128)
        ++n;
    return n == 0 ? 0 : head.left(n).toInt();
}

}  // namespace tolmar::security
