#pragma once
// Which doctor sits in which consulting room on a day (frmSchedDoctor): the assignments
// the doctor lists read when rooms are assigned, and the sign-off at the end of a shift.

#include <QDate>
#include <QString>
#include <QStringList>

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::clinical {

struct RoomAssignment {
    int sno = 0;  // 0 for a new assignment
    QDate date;
    QString room;
    QString doctor;  // "{fullName} [{empID}]"
};

// The day's assignments for the grid, by doctor's name; values: the date.
QString assignmentsSql();
QStringList roomNames(db::Connection& c);
// The doctors who serve a clinic, "{fullName} [{empID}]".
QStringList clinicDoctorEntries(db::Connection& c);

// Checks, asks, writes. Returns the message shown after the write, or "" when the desk
// answered No.
QString saveAssignment(AppContext& ctx, const RoomAssignment& a);
// Each asks first; false when the desk answered No. An assignment another desk removed
// meanwhile is refused with a message, and nothing is written.
bool removeAssignment(AppContext& ctx, int sno);
bool signOffDoctor(AppContext& ctx, int sno, const QString& docName);

}  // namespace tolmar::clinical
