#include "security/userclinic.h"

#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/listentry.h"

namespace tolmar::security {

namespace {

const QString kTitle = QStringLiteral("Assign Clinics to Doctors");

void audit(AppContext& ctx, const QString& action, const QString& user)
{
    const Session& s = ctx.session();
    SpAudiTrail(ctx, s.userName, action, user, action, s.computerName);
}

QString requireUser(const QString& username, const QString& message)
{
    const QString user = username.trimmed();
    if (user.isEmpty())
        throw CheckFailed(message, QStringLiteral("txtUsername"));
    return user;
}

}  // namespace

QStringList doctorEntries(db::Connection& c)
{
    return listentry::fromRows(c.query(QStringLiteral("SELECT Username, Fullname FROM "
                                                      "vwUsersAndEmpDoctors ORDER BY Fullname"))
                                   .rows,
                               u"Fullname", u"Username");
}

std::optional<DoctorAccount> doctorAccount(db::Connection& c, const QString& username)
{
    const auto r = c.queryOne(QStringLiteral("SELECT Username, Fullname, EmpID, AccountStatus, "
                                             "BranchCode FROM vwUsersAndEmpDoctors "
                                             "WHERE Username = ?"),
                              {username});
    if (!r)
        return std::nullopt;
    return DoctorAccount{r->text(u"Username"), r->text(u"Fullname"), r->text(u"EmpID"),
                         r->text(u"AccountStatus"), r->text(u"BranchCode")};
}

QStringList clinicsOf(db::Connection& c, const QString& username)
{
    QStringList out;
    for (const db::Row& r :
         c.query(QStringLiteral("SELECT DISTINCT ClinicID FROM qryUserRoleClinic "
                                "WHERE username = ? ORDER BY ClinicID"),
                 {username})
             .rows)
        out << r.text(u"ClinicID");
    return out;
}

void assignClinics(AppContext& ctx, const QString& username, const QStringList& clinicIDs)
{
    const QString user = requireUser(username, QStringLiteral("Username cannot be empty"));
    if (clinicIDs.isEmpty())
        throw CheckFailed(QStringLiteral("No Item selected! Please Select one or more Clinics"),
                          QStringLiteral("LstDate"));
    // One after the other without a transaction, a failure half-way would leave the doctor
    // with some of his clinics gone.
    auto c = ctx.openConnection();
    db::Transaction tx(*c);
    c->exec(QStringLiteral("DELETE FROM userRoleClinic WHERE Username = ?"), {user});
    for (const QString& id : clinicIDs)
        c->exec(QStringLiteral("INSERT INTO userRoleClinic (Username, ClinicID) VALUES (?, ?)"),
                {user, id});
    tx.commit();
    ctx.prompter().inform(QStringLiteral("Clinics successfully Assigned."), kTitle);
    audit(ctx, QStringLiteral("Insert User  Assigned Clinics for: %1").arg(user), user);
}

bool deleteAssignedClinics(AppContext& ctx, const QString& username)
{
    const QString user = requireUser(username, QStringLiteral("Username cannot be empty"));
    if (!ctx.prompter().ask(QStringLiteral("About to Delete Assigned Clinics for %1").arg(user),
                            QStringLiteral("Delete")))
        return false;
    ctx.openConnection()->exec(QStringLiteral("DELETE FROM userRoleClinic WHERE Username = ?"),
                               {user});
    ctx.prompter().inform(QStringLiteral("Assigned Clinics successfully Deleted."), kTitle);
    audit(ctx, QStringLiteral(" Assigned Clinics Deleted for: %1").arg(user), user);
    return true;
}

bool deleteUser(AppContext& ctx, const QString& username)
{
    const QString user = requireUser(username, QStringLiteral("Specify Username to Delete"));
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                            QStringLiteral("Delete")))
        return false;
    auto c = ctx.openConnection();
    db::Transaction tx(*c);
    if (c->exec(QStringLiteral("INSERT INTO UsersArchive SELECT * FROM Users WHERE Username = ?"),
                {user}) == 0)
        throw CheckFailed(QStringLiteral("The user %1 is no longer on file: another desk has "
                                         "deleted it. Nothing was changed.")
                              .arg(user));
    // Names compare without regard to case, as the accounts' unique key does.
    c->exec(QStringLiteral("DELETE FROM userRoleClinic WHERE lower(Username) = lower(?)"),
            {user});
    c->exec(QStringLiteral("DELETE FROM UserRoles WHERE lower(Username) = lower(?)"), {user});
    c->exec(QStringLiteral("DELETE FROM Users WHERE Username = ?"), {user});
    tx.commit();
    ctx.prompter().inform(QStringLiteral(" Record successfully deleted "), kTitle);
    audit(ctx, QStringLiteral("Delete User "), user);
    return true;
}

}  // namespace tolmar::security
