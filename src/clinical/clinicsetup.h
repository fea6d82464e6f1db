#pragma once
// The lists the clinics run on: consulting rooms, clinics with their fees and consultant,
// the days each clinic sits, and the attendance items the desk counts. Each save checks
// its fields in the screen's order and refuses a name already on the list with a sentence
// the desk can act on, not the driver's text.

#include <QDate>
#include <QString>
#include <QStringList>

class QAbstractItemModel;
class QObject;

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::clinical {

// The lists of the screens, as grid models owned by `parent`.
QAbstractItemModel* roomsModel(db::Connection& c, QObject* parent);
QAbstractItemModel* clinicsModel(db::Connection& c, QObject* parent);
// All clinics' days, or one clinic's when `clinicID` is given.
QAbstractItemModel* clinicDaysModel(db::Connection& c, const QString& clinicID,
                                    QObject* parent);
QAbstractItemModel* attendItemsModel(db::Connection& c, QObject* parent);
// "{ClinicName} [{ClinicID}]", by name.
QStringList clinicEntries(db::Connection& c);
// The consultants a clinic may have: enabled doctors, "{fullName} [{empID}]".
QStringList consultantEntries(db::Connection& c);
QStringList weekdays(db::Connection& c);

// Consulting rooms (frmConRoom). oldName empty: a new room.
void saveRoom(AppContext& ctx, const QString& oldName, const QString& name,
              const QString& location);
void removeRoom(AppContext& ctx, const QString& name);

struct ClinicFields {
    QString name;
    QString conFee;  // as typed
    QString regFee;
    QString designation;
    QString consultant;  // "{fullName} [{empID}]"
};
// Clinics (frmClinicTypes). The ID is the name, as typed and trimmed; a renamed clinic
// takes its doctors and its days along, while visits keep the name they were taken under.
void saveClinic(AppContext& ctx, const QString& oldName, const ClinicFields& f);
void removeClinic(AppContext& ctx, const QString& name);

struct ClinicDayFields {
    QString clinicID;
    QStringList days;  // ticked, in the week's order
    QString time;      // as typed
    QString limit;     // as typed: "Patient Max Limit"
};
// The patient limit as stored: a number, cut to whole patients; anything else is 0.
int patientLimit(const QString& typed);
// Clinic days (frmClinicDays): sno 0 adds one row per ticked day; otherwise that row takes
// the first ticked day. Returns the message the desk is shown.
QString saveClinicDays(AppContext& ctx, int sno, const ClinicDayFields& f);
void removeClinicDay(AppContext& ctx, int sno);

// Attendance items (frmAttendItems). A renamed item carries its counted details along.
void saveAttendItem(AppContext& ctx, const QString& oldName, const QString& name);
void removeAttendItem(AppContext& ctx, const QString& name);

// The message for an edit of a row another desk has removed meanwhile.
QString goneMessage(const QString& what);

}  // namespace tolmar::clinical
