#pragma once
// The doctor's record of a visit (frmConsultation): the visits waiting for a doctor, the
// day's consultations, and the save that takes a visit off the waiting list.

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

// The waiting visits, by surname: "{pSurname} {pfirstName} @{recDate} [{consultID}]".
QString waitingVisitsSql();
QString waitingVisitEntry(const QString& surname, const QString& firstName, const QDate& date,
                          const QString& consultID);
// The day's consultations for the grid; values: the date.
QString consultationsSql();
// The doctors of the hospital, "{LastName} {FirstName} [{empID}]".
QStringList medicalStaffEntries(db::Connection& c);

struct VisitLabels {
    bool found = false;
    QString consultID;
    QString clientCat;
    QString pno;
    QString fullName;
};
VisitLabels lookUpVisit(db::Connection& c, const QString& consultID);

struct ConsultationFields {
    int id = 0;             // the row being edited; 0 for a new consultation
    QString patientEntry;   // the text of the patient box
    QString consultID;      // from the visit picked (lblBill)
    QString clientCat;      // lblClient
    QString pno;            // lblNo
    QDate date;
    QString time;           // short time, as the box shows it
    QString complaints;
    QString diagnosis;
    QString prescription;
    QString doctor;  // "{LastName} {FirstName} [{empID}]"
};

// Checks, asks "Are you sure to save?", writes. Returns the message shown after the write,
// or "" when the desk answered No. A new consultation marks its visit attended in the same
// transaction.
QString saveConsultation(AppContext& ctx, const ConsultationFields& f);
// Asks first; false on No. The visit stays as it was: seen once, it stays seen.
bool deleteConsultation(AppContext& ctx, int id);

}  // namespace tolmar::clinical
