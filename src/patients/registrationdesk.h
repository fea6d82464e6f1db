#pragma once
// The rules of the registration screen that are not about widgets: the lists it offers,
// what a payer, a category, a card duration and a purpose bring with them, the checks of
// choosing a clinic, and the deletion of a patient.

#include "clinical/doctorallocation.h"
#include "patients/registrationform.h"

#include <QDate>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class QAbstractItemModel;
class QObject;

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::patients {

// The chosen payer as the screen keeps it.
struct PayerChoice {
    QString retainID;   // between the brackets of the entry
    QString coyName;    // before " [", trimmed
    QString clientType;
    QString retainCode;
};
PayerChoice payerChoice(db::Connection& c, const QString& entry);

// The payer list: "(PRIVATE) [{private code}]" first when a private code is given, then
// every client by name.
QStringList payerEntries(db::Connection& c, const QString& privateRetainID);
// The payer's plans, "{PlanName} [{PlanID}]". The registration screen offers "NIL" alone when
// the payer has none; the attendance screen always offers "" and "NIL" before the plans.
enum class PlanList { Registration, Attendance };
QStringList planEntries(db::Connection& c, const QString& retainID,
                        PlanList shape = PlanList::Registration);
// "{LastName} {FirstName} [{empID}]" for every employee.
QStringList introducerEntries(db::Connection& c);
QStringList areaNames(db::Connection& c);
QStringList purposes(db::Connection& c);
struct Clinic {
    QString name;
    QString id;
};
// The clinics a visit may go to; the admission clinics are left out.
std::vector<Clinic> attendanceClinics(db::Connection& c);

// The expiry a card duration gives a new card; invalid for "WHILE STILL IN SERVICE" and
// for anything unknown.
QDate expiryForDuration(const QString& duration, const QDate& regDate);

// The date of birth an age in years gives; invalid when the text is not a whole number.
QDate dobFromAge(const QString& ageText, const QDate& today);

// The amount typed as a carry-over debt; 0 when it is not a number.
double parseAmount(const QString& text);

// The purpose class and the fees shown for information.
struct PurposeFees {
    QString purposeClass;
    double screening = 0;
    double consultation = 0;
};
// The consultation fee is the payer's ConAmount, or, given a service number, the price of
// that service (the attendance screen's PVT_CONFEE_SNO).
PurposeFees purposeFees(db::Connection& c, const QString& purpose, const QString& retainID,
                        std::optional<int> consultationService = std::nullopt);

// Whether a card has run out by `today` (an expiry of today counts). One that has is marked
// expired on the patient at once, whether or not anything is saved afterwards.
bool cardRunOut(db::Connection& c, const QString& pno, const QDate& expiry, const QDate& today);

// Choosing a clinic for a visit.
struct ClinicRequest {
    QString clinicID;
    QString pno;        // "" for a patient not yet saved
    QString retainID;   // the payer chosen on the screen
    QDate expiryDate;   // the screen's expiry box; invalid when blank
};
struct ClinicChoice {
    std::vector<clinical::DoctorEntry> doctors;
    int preselected = -1;         // index into doctors
    bool renewEnabled = false;    // the card has expired: renewal is the way on
    bool scheduleDoctors = false; // nobody is in a room today: the rooms screen should open
};
// Runs the checks in order; a refusal throws CheckFailed (after setting `out`, so that the
// screen can still enable renewal or open the rooms screen). An expired private card is
// marked expired on the patient at once, whether or not anything is saved afterwards.
void chooseClinic(AppContext& ctx, const ClinicRequest& req, ClinicChoice& out);

// Grids of the desk, read lazily; owned by parent.
QAbstractItemModel* registrationsOf(db::Connection& c, const QDate& day, QObject* parent);
QAbstractItemModel* attendanceHistory(db::Connection& c, const QString& pno, QObject* parent);
// Whether a patient with this surname is on file already, and those rows, for the person
// to check for a duplicate before going on.
bool surnameTaken(db::Connection& c, const QString& surname);
QAbstractItemModel* surnameMatches(db::Connection& c, const QString& surname, QObject* parent);
// The photograph kept in the patient's row; empty when there is none.
QByteArray storedPhoto(db::Connection& c, const QString& pno);

// Deletes a patient after the permission check and the question; false when the person
// answered No. The row is archived first, and the deletion audited.
bool deletePatient(AppContext& ctx, const QString& pno, const QString& name);
// The deletion itself, for every screen that deletes a patient: the row is copied to the
// archive and deleted in one transaction, then audited.
void removePatient(AppContext& ctx, const QString& pno, const QString& name);

}  // namespace tolmar::patients
