#include "security/accounts.h"

#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "platform/prompt.h"
#include "security/password.h"

namespace tolmar::security {

namespace {

const QString kUsernameEmptyText = QStringLiteral("Alert! Username can't be empty.");

CheckFailed duplicateUsername()
{
    return CheckFailed(QStringLiteral("Alert! Username already assigned to someone else."),
                       QStringLiteral("txtUsername"), QString(), Icon::Critical);
}

}  // namespace

QStringList Accounts::branches()
{
    QStringList out;
    for (const db::Row& r :
         m_ctx.db()
             .query(QStringLiteral("SELECT BranchCode FROM LagosBranches ORDER BY BranchCode ASC"))
             .rows)
        out << r.text(u"BranchCode");
    return out;
}

std::vector<AccountNode> Accounts::all()
{
    std::vector<AccountNode> out;
    for (const db::Row& r : m_ctx.db()
                                .query(QStringLiteral("SELECT DISTINCT Username, Fullname FROM "
                                                      "ApplicationUsers ORDER BY Fullname, "
                                                      "Username"))
                                .rows)
        out.push_back({r.text(u"Username"), r.text(u"Fullname")});
    return out;
}

std::optional<AccountFields> Accounts::firstByFullname(const QString& fullname)
{
    const auto r = m_ctx.db().queryOne(
        QStringLiteral("SELECT Username, Fullname, AccountStatus, BranchCode FROM "
                       "ApplicationUsers WHERE Fullname = ? ORDER BY Username LIMIT 1"),
        {fullname});
    if (!r)
        return std::nullopt;
    AccountFields f;
    f.username = r->text(u"Username");
    f.fullname = r->text(u"Fullname");
    f.status = r->text(u"AccountStatus");
    f.branch = r->text(u"BranchCode");
    return f;
}

void Accounts::create(const AccountFields& f)
{
    const QString username = f.username.trimmed();
    if (f.status.isEmpty())
        throw CheckFailed(QStringLiteral("Alert! Account Status is required."),
                          QStringLiteral("cboAcctStatus"));
    if (f.branch.isEmpty())
        throw CheckFailed(QStringLiteral("Alert! Branch Code is required."),
                          QStringLiteral("cboBranchCode"));
    if (username.isEmpty())
        throw CheckFailed(kUsernameEmptyText, QStringLiteral("txtUsername"));
    // Leaving the retyped box already says so; a click on Save straight from it must not
    // store a password nobody typed twice.
    if (f.password != f.confirm)
        throw CheckFailed(kUnmatchedPasswordText, QStringLiteral("txtConfirmPWD"), QString(),
                          Icon::Critical);
    db::Connection& c = m_ctx.db();
    // As the unique index on lower(Username) sees it, so the desk reads this sentence and
    // not the driver's.
    if (c.queryOne(QStringLiteral("SELECT Username FROM ApplicationUsers "
                                  "WHERE lower(Username) = lower(?)"),
                   {username}))
        throw duplicateUsername();
    const PasswordTable table = PasswordTable::forInstallation(m_ctx);
    const QString stored = transformPassword(m_ctx, table, f.password);
    QString hash;
    {
        auto busy = m_ctx.prompter().busy();
        hash = hashPassword(f.password);
    }
    const Session& s = m_ctx.session();
    // Another desk may take the name between the look and the write.
    refuseDuplicate(duplicateUsername(), [&] {
        auto own = m_ctx.openConnection();
        own->exec(QStringLiteral("INSERT INTO ApplicationUsers (Username, Fullname, Password, "
                                 "SaltedPass, AccountStatus, BranchCode, hospID, PassHash) "
                                 "VALUES (?, ?, ?, NULL, ?, ?, ?, ?)"),
                  {username, f.fullname, stored, f.status, f.branch,
                   s.hospID.isEmpty() ? QVariant() : QVariant(s.hospID), hash});
    });
}

void Accounts::changePassword(const QString& user, const QString& oldPassword,
                              const QString& newPassword, const QString& confirm)
{
    const QString name = user.trimmed();
    if (name.isEmpty())
        throw CheckFailed(kUsernameEmptyText, QStringLiteral("txtUser"));
    if (oldPassword.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Alert! Old Account password can't be empty."),
                          QStringLiteral("txtPass"));
    if (newPassword.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Alert! New Password can't be empty."),
                          QStringLiteral("txtPassN"));
    if (newPassword != confirm)
        throw CheckFailed(kUnmatchedPasswordText, QStringLiteral("txtPassC"), QString(),
                          Icon::Critical);
    const PasswordTable table = PasswordTable::forInstallation(m_ctx);
    const QString oldStored = transformPassword(m_ctx, table, oldPassword);
    const QString newStored = transformPassword(m_ctx, table, newPassword);

    const Session& s = m_ctx.session();
    auto audit = [&](const QString& action) {
        SpAudiTrail(m_ctx, s.userName, action, name, action, s.computerName);
    };
    auto own = m_ctx.openConnection();
    // The stored text is read and compared here, in constant time, rather than matched by
    // the database, whose comparison stops at the first differing character.
    const auto row = own->queryOne(
        QStringLiteral("SELECT Username, Password FROM Users WHERE lower(Username) = lower(?)"),
        {name});
    if (!row || !sameSecret(row->text(u"Password"), oldStored)) {
        audit(QStringLiteral("Change Password Attempt Failed "));
        throw CheckFailed(kUserNotFoundText, QStringLiteral("txtPass"));
    }
    // A fresh hash of the new password also replaces one that was missing, stale (the
    // password changed elsewhere) or made at a lower cost.
    QString hash;
    {
        auto busy = m_ctx.prompter().busy();
        hash = hashPassword(newPassword);
    }
    own->exec(QStringLiteral("UPDATE Users SET SaltedPass = NULL, Password = ?, PassHash = ? "
                             "WHERE Username = ?"),
              {newStored, hash, row->text(u"Username")});
    audit(QStringLiteral("Change Password "));
}

void setAccountStatus(AppContext& ctx, bool enable)
{
    const auto answer =
        ctx.prompter().input(QStringLiteral("Kindly indicate the Account's Username."),
                             enable ? QStringLiteral("Enable Account")
                                    : QStringLiteral("Disable Account"));
    if (!answer)
        return;
    const QString name = answer->trimmed();
    if (name.isEmpty())
        throw CheckFailed(kUsernameEmptyText, QString(), QString(), Icon::Warning);
    auto own = ctx.openConnection();
    const auto row = own->queryOne(QStringLiteral("SELECT Username, AccountStatus FROM "
                                                  "ApplicationUsers WHERE lower(Username) = "
                                                  "lower(?)"),
                                   {name});
    if (!row)
        throw CheckFailed(kUserNotFoundText);
    own->exec(QStringLiteral("UPDATE ApplicationUsers SET AccountStatus = ? WHERE Username = ?"),
              {enable ? QStringLiteral("Enabled") : QStringLiteral("Disabled"),
               row->text(u"Username")});
    ctx.prompter().inform(enable ? kAccountEnabledText : kAccountDisabledText);
}

}  // namespace tolmar::security
