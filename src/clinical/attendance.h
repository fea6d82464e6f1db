#pragma once
// The day's attendance at the desk (frmRecords) without its widgets: what picking a patient
// reads and refuses, the card and purpose rules, the reads of the screen's grids, and the
// Save of a new or an edited visit with its bill lines.
//
// A visit's number is drawn before its transaction opens and the audit lines follow the
// commit, so a failed save leaves nothing behind but a burnt number.

#include <QDate>
#include <QString>

class QAbstractItemModel;
class QObject;

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::clinical {

// What a visit number looks like to the desk: 13 characters without "OFL" at positions 4
// to 6 is a split bill made by the billing module, and may not be edited here.
bool isSplitBill(const QString& consultID);

// The patient picked in cboVehNo, as the labels and the Save need it.
struct PickedPatient {
    QString pno;
    QString fullName;    // the entry's text before "["
    QString coyName;     // the payer's code (retainID), not its name
    QString billTo;      // the payer's retainCode
    QString billingCat;
    QString client;      // the payer's name
    QString occupation;
    QString oldPno;
    QString policyType;
    QString feeForService;  // ref, "NO" when null
    QString hmoReferral;    // HmoRef, "NO" when null
    QString enrolleeNo;
    QDate expiryDate;       // invalid when the patient has none
    bool found = false;     // the patient is on file
    bool renewEnabled = false;
    bool clearScreen = false;  // registration incomplete: the screen starts again
};

// The "System No" search text: typed without "/", it is completed to the hospital number,
// "/" and the number padded with zeros to nine digits. Letters, or more than nine digits,
// name no System No and are refused.
QString completeSystemNo(const QString& hospitalNo, const QString& typed);

// The patient's details and the payer's billing code, with no checks: what an edited visit
// loads. found stays false when there is no such patient.
PickedPatient readPatient(db::Connection& c, const QString& pno);

// Picks the patient of a list entry "{fullName} [{PNo}]". The refusals throw CheckFailed
// after filling `out` as far as it got: an entry without brackets names no patient (nothing
// is read), a payer that is not on file, a patient with no payer (out.clearScreen). A
// private card due on or before the server date is told and marked expired at once, and
// makes renewal the way on.
void pickPatient(AppContext& ctx, const QString& entry, PickedPatient& out);

// The list entry of a patient on file, "{fullName} [{PNo}]"; "" when there is none.
QString patientEntry(db::Connection& c, const QString& pno);

// Choosing a clinic for a private patient: no expiry date, or one that has run out, is
// refused (the clinic is to be cleared); renewEnabled says whether cmdRenew should be on.
void checkClinicChoice(AppContext& ctx, const PickedPatient& patient, bool& renewEnabled);

// The purpose chosen: its class ("SCREENING" for the screening purposes), and the fees the
// screen shows for information. "APPOINTMENT" with no clinic chosen is refused after `out`
// is filled.
struct PurposeChoice {
    QString purposeClass;
    double screeningFee = 0;
    double consultationFee = 0;
};
void choosePurpose(AppContext& ctx, const QString& purpose, const QString& coyName,
                   const QString& clinic, PurposeChoice& out);

// Everything the Save needs, as the screen holds it when Save is pressed.
struct AttendanceForm {
    bool isEdit = false;
    QString recID;      // the visit being edited
    QString consultID;  // the visit being edited (lblBill)
    QString pno;
    QString patient;    // the cboVehNo entry, as the audit names the patient
    QString clientCat;  // cboClient
    QString coyName;    // the payer's code
    QString billTo;
    QString clinic;     // cboType
    QString purpose;    // cboPurpose
    QString purposeClass;
    QString feeForService;  // cboRef
    QString hmoReferral;    // cboRefHmo
    QString plan;           // txtPolicy
    QString enrolleeNo;     // txtEmp
    QString refConsultID;   // the referral this visit honours, if any
    double debtToCarry = 0;
    bool cardRenewed = false;  // a renewal to bill with this visit
};

// The checks in the desk's order; the first failure is thrown as CheckFailed with its
// control.
void checkAttendance(const AttendanceForm& form);

// Checks and saves; tells the desk. Returns the visit's number.
QString saveAttendance(AppContext& ctx, const AttendanceForm& form);

// What the desk is told when the visit being edited was deleted at another desk meanwhile.
inline const QString kVisitGoneText =
    QStringLiteral("This attendance is no longer on file: it was deleted at another desk. "
                   "Nothing was saved.");

// Deletes one visit row after the question; false when the desk answered No. Nothing else
// of the visit is touched.
bool deleteAttendance(AppContext& ctx, const QString& recID, const QString& fullName,
                      const QString& consultID);

// Grids, read lazily on connections of their own; owned by parent.
// Today's visits by the database's own date, newest first.
QAbstractItemModel* visitsForToday(db::Connection& c, QObject* parent);
int visitsForTodayCount(db::Connection& c);
// The doctors' queue on a day.
QAbstractItemModel* doctorsQueue(db::Connection& c, const QDate& day, QObject* parent);

}  // namespace tolmar::clinical
