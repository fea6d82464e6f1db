#pragma once
// Which clinics a doctor may attend to (frmUserClinic), and the deletion of a doctor's
// account from the same screen.

#include <QString>
#include <QStringList>

#include <optional>

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::security {

// The doctors as the list shows them, "{Fullname} [{Username}]".
QStringList doctorEntries(db::Connection& c);

// What the screen shows of an account. The stored password is never read: it has no
// business in a widget.
struct DoctorAccount {
    QString username;
    QString fullName;
    QString empID;
    QString accountStatus;
    QString branchCode;
};
std::optional<DoctorAccount> doctorAccount(db::Connection& c, const QString& username);
// The IDs of the clinics the user serves now.
QStringList clinicsOf(db::Connection& c, const QString& username);

// Replaces the user's clinics by these, all or nothing, and audits it.
void assignClinics(AppContext& ctx, const QString& username, const QStringList& clinicIDs);
// Each asks first; false on No.
bool deleteAssignedClinics(AppContext& ctx, const QString& username);
// Archives the account, then deletes it with its roles and clinics, in one transaction:
// an account made later under the same name starts with nothing.
bool deleteUser(AppContext& ctx, const QString& username);

}  // namespace tolmar::security
