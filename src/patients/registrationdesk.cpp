#include "patients/registrationdesk.h"

#include "billing/chargelines.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/audit.h"
#include "core/listentry.h"
#include "core/patientinfo.h"
#include "patients/patientrecord.h"
#include "security/rights.h"

namespace tolmar::patients {

namespace {

QStringList column(const db::Result& r, QStringView name)
{
    QStringList out;
    out.reserve(qsizetype(r.size()));
    for (const db::Row& row : r.rows)
        out << row.text(name);
    return out;
}

}  // namespace

PayerChoice payerChoice(db::Connection& c, const QString& entry)
{
    PayerChoice p;
    p.retainID = listentry::key(entry).trimmed();
    p.coyName = listentry::text(entry);
    if (p.retainID.isEmpty())
        return p;
    if (const auto row = c.queryOne(QStringLiteral("SELECT ClientType, retainCode FROM "
                                                   "hRetainership WHERE retainID = ?"),
                                    {p.retainID})) {
        p.clientType = row->text(u"ClientType");
        p.retainCode = row->text(u"retainCode");
    }
    return p;
}

QStringList payerEntries(db::Connection& c, const QString& privateRetainID)
{
    QStringList out;
    if (!privateRetainID.isEmpty())
        out << listentry::make(QStringLiteral("(PRIVATE)"), privateRetainID);
    const db::Result r = c.query(QStringLiteral(
        "SELECT DISTINCT RetainID, ClientName FROM vwhRetainerShip ORDER BY ClientName"));
    for (const db::Row& row : r.rows)
        out << listentry::make(row.text(u"ClientName"), row.text(u"RetainID"));
    return out;
}

QStringList planEntries(db::Connection& c, const QString& retainID, PlanList shape)
{
    const db::Result r = c.query(QStringLiteral("SELECT DISTINCT PlanName, PlanID FROM vwhmoPlan "
                                                "WHERE retainID = ? ORDER BY PlanName"),
                                 {retainID});
    QStringList out;
    for (const db::Row& row : r.rows)
        out << listentry::make(row.text(u"PlanName"), row.text(u"PlanID"));
    if (shape == PlanList::Attendance)
        return QStringList{QString(), QStringLiteral("NIL")} + out;
    if (out.isEmpty())
        out << QStringLiteral("NIL");
    return out;
}

QStringList introducerEntries(db::Connection& c)
{
    const db::Result r = c.query(QStringLiteral(
        "SELECT DISTINCT empID, lastname, firstname FROM employees ORDER BY lastname, firstname"));
    QStringList out;
    for (const db::Row& row : r.rows)
        out << listentry::make(
            QStringLiteral("%1 %2").arg(row.text(u"lastname"), row.text(u"firstname")).trimmed(),
            row.text(u"empID"));
    return out;
}

QStringList areaNames(db::Connection& c)
{
    return column(c.query(QStringLiteral(
                      "SELECT DISTINCT AreaName FROM hPatientArea ORDER BY AreaName")),
                  u"AreaName");
}

QStringList purposes(db::Connection& c)
{
    return column(c.query(QStringLiteral(
                      "SELECT DISTINCT Purpose FROM hClinicPurpose ORDER BY Purpose")),
                  u"Purpose");
}

std::vector<Clinic> attendanceClinics(db::Connection& c)
{
    const db::Result r = c.query(QStringLiteral(
        "SELECT DISTINCT clinicName, ClinicID FROM clinicTypes "
        "WHERE clinicName NOT IN ('(IN-PATIENT)', 'IN-PATIENT') ORDER BY clinicName"));
    std::vector<Clinic> out;
    for (const db::Row& row : r.rows)
        out.push_back({row.text(u"clinicName"), row.text(u"ClinicID")});
    return out;
}

QDate expiryForDuration(const QString& duration, const QDate& regDate)
{
    if (duration == QLatin1String("ONE YEAR"))
        return regDate.addYears(1);
    if (duration == QLatin1String("TILL END OF YEAR"))
        return QDate(regDate.year(), 12, 31);
    return {};
}

QDate dobFromAge(const QString& ageText, const QDate& today)
{
    bool ok = false;
    const int years = ageText.trimmed().toInt(&ok);
    if (!ok || years < 0 || years > 150)
        return {};
    return today.addYears(-years);
}

double parseAmount(const QString& text)
{
    bool ok = false;
    const double v = QString(text).remove(QLatin1Char(',')).trimmed().toDouble(&ok);
    return ok ? v : 0.0;
}

PurposeFees purposeFees(db::Connection& c, const QString& purpose, const QString& retainID,
                        std::optional<int> consultationService)
{
    PurposeFees f;
    if (purpose == QLatin1String("SCREENING") || purpose == QLatin1String("EXEC-SCREENING") ||
        purpose == QLatin1String("PRE-EMPLOYMENT")) {
        f.purposeClass = QStringLiteral("SCREENING");
        f.screening = billing::screeningAmount(c, retainID);
        return f;
    }
    f.purposeClass = purpose;
    if (purpose == QLatin1String("CONSULTATION") || purpose == QLatin1String("(CONSULTATION)"))
        f.consultation = consultationService
                             ? billing::serviceAmount(c, *consultationService)
                             : billing::consultationAmount(c, retainID);
    return f;
}

bool cardRunOut(db::Connection& c, const QString& pno, const QDate& expiry, const QDate& today)
{
    if (!expiry.isValid() || expiry > today)
        return false;
    if (!pno.isEmpty())
        c.exec(QStringLiteral("UPDATE hPatients SET expired = 1 WHERE PNo = ?"), {pno});
    return true;
}

void chooseClinic(AppContext& ctx, const ClinicRequest& req, ClinicChoice& out)
{
    out = ClinicChoice{};
    const Session& s = ctx.session();
    const AppDefaults& d = s.defaults;
    db::Connection& c = ctx.db();
    const QString clinicBox = QStringLiteral("cboClin");

    const bool rooms = AppDefaults::isYes(d.Assign_Doctors_to_Consulting_Rooms);
    clinical::DoctorAllocation doctors(c, s.serverDate, rooms);
    if (rooms && !doctors.anyRoomAssignedToday()) {
        out.scheduleDoctors = true;
        throw CheckFailed(QStringLiteral("Please Assign Doctors to Consulting Rooms before "
                                         "Attendance can be Taken"),
                          clinicBox, QStringLiteral("OK"));
    }

    out.doctors = doctors.doctorsFor(req.clinicID);
    if (!out.doctors.empty()) {
        out.preselected = 0;
        if (const auto least = doctors.leastLoaded(req.clinicID)) {
            for (size_t i = 0; i < out.doctors.size(); ++i)
                if (out.doctors[i].empID == least->empID) {
                    out.preselected = int(i);
                    break;
                }
        }
    }

    if (AppDefaults::isYes(d.LockAttendanceForInPatients) && !req.pno.isEmpty() &&
        clinical::isOnAdmission(c, req.pno))
        throw CheckFailed(QStringLiteral("This Patient is Still On Admission!! Discharge "
                                         "Patient Before Attendance can be Taken"),
                          clinicBox, QStringLiteral("LockAttendanceForInPatients"));

    if (AppDefaults::isYes(d.LockMultipleAttendnace) && !req.pno.isEmpty() &&
        visitedToday(ctx, req.pno))
        throw CheckFailed(QStringLiteral("Patient Attendance already Taken! Duplicate not "
                                         "allowed!! Proceed to see Nurse/Doctor"),
                          clinicBox, QStringLiteral("LockMultipleAttendnace"));

    if (!isPrivatePayer(req.retainID, d.PRIVATE))
        return;
    if (!req.expiryDate.isValid())
        throw CheckFailed(QStringLiteral(" Please Specify Expiration Date for this Private "
                                         "Patient"),
                          QStringLiteral("dtExpDate"));
    if (cardRunOut(c, req.pno, req.expiryDate, s.serverDate)) {
        out.renewEnabled = true;
        throw CheckFailed(QStringLiteral("Patient's Card has Expired"), clinicBox);
    }
}

bool deletePatient(AppContext& ctx, const QString& pno, const QString& name)
{
    db::Connection& c = ctx.db();
    const Session& s = ctx.session();
    security::requireRole(ctx, security::kManagementRole,
                          CheckFailed(QStringLiteral("You dont have Permission to Reverse an "
                                                     "Entry")));
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                            QStringLiteral("Delete")))
        return false;
    if (c.queryOne(QStringLiteral("SELECT PNo FROM hPreConsult WHERE PNo = ? LIMIT 1"), {pno}))
        throw CheckFailed(
            QStringLiteral("Patient Cannot be Deleted!!! Has Vital Signs Information"));
    if (c.queryOne(QStringLiteral("SELECT PNo FROM hConsulting WHERE PNo = ? LIMIT 1"), {pno}))
        throw CheckFailed(
            QStringLiteral("Patient Cannot be Deleted!!! Has Consultation Information"));

    removePatient(ctx, pno, name);
    return true;
}

void removePatient(AppContext& ctx, const QString& pno, const QString& name)
{
    const Session& s = ctx.session();
    auto conn = ctx.openConnection();
    db::Transaction tx(*conn);
    conn->exec(QStringLiteral("INSERT INTO hpatientsArchive SELECT * FROM hPatients "
                              "WHERE PNo = ?"),
               {pno});
    conn->exec(QStringLiteral("DELETE FROM hPatients WHERE PNo = ?"), {pno});
    tx.commit();
    SpAudiTrail(ctx, s.userName, QStringLiteral("Delete Patient: %1 ").arg(name), pno,
                QStringLiteral("Delete Patient: %1 ").arg(name), s.computerName);
}

QAbstractItemModel* registrationsOf(db::Connection& c, const QDate& day, QObject* parent)
{
    return c.gridModel(
        QStringLiteral("SELECT * FROM vwhpatients WHERE regDate = ? ORDER BY FullName"), {day},
        parent);
}

QAbstractItemModel* attendanceHistory(db::Connection& c, const QString& pno, QObject* parent)
{
    return c.gridModel(
        QStringLiteral("SELECT DISTINCT recDate AS \"Date\", htime AS \"AttendTime\", "
                       "FullName, ClinicType AS \"Clinic\", Remarks AS \"Purpose\", "
                       "RetainName AS \"Company\", ConsultID FROM vwhRecords "
                       "WHERE pno = ? ORDER BY \"Date\" DESC"),
        {pno}, parent);
}

bool surnameTaken(db::Connection& c, const QString& surname)
{
    return c.queryOne(QStringLiteral("SELECT PNo FROM hPatients WHERE psurname = ? LIMIT 1"),
                      {surname})
        .has_value();
}

QAbstractItemModel* surnameMatches(db::Connection& c, const QString& surname, QObject* parent)
{
    return c.gridModel(
        QStringLiteral("SELECT DISTINCT psurname AS \"Surname\", pfirstname AS \"Firstname\", "
                       "pno AS \"NewFileNo\", oldpno AS \"Old FileNo\", homeAddress "
                       "FROM hpatients WHERE psurname = ? ORDER BY 2"),
        {surname}, parent);
}

QByteArray storedPhoto(db::Connection& c, const QString& pno)
{
    const QVariant bytes =
        c.scalar(QStringLiteral("SELECT patPix FROM hPatients WHERE PNo = ?"), {pno});
    return bytes.isValid() && !bytes.isNull() ? bytes.toByteArray() : QByteArray();
}

}  // namespace tolmar::patients
