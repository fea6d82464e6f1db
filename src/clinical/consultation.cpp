#include "clinical/consultation.h"

#include "clinical/clinicsetup.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"

namespace tolmar::clinical {

namespace {

const QString kConsultation = QStringLiteral("consultation");

void require(bool ok, const char* message, const char* focus)
{
    if (!ok)
        throw CheckFailed(QString::fromUtf8(message), QString::fromLatin1(focus));
}

}  // namespace

QString waitingVisitsSql()
{
    return QStringLiteral("SELECT DISTINCT recdate, pSurname, pfirstname, pno, consultID "
                          "FROM qryhPatListForDoc ORDER BY pSurname");
}

QString waitingVisitEntry(const QString& surname, const QString& firstName, const QDate& date,
                          const QString& consultID)
{
    return listentry::make(
        QStringLiteral("%1 %2 @%3").arg(surname, firstName, fmt::shortDate(date)), consultID);
}

QString consultationsSql()
{
    return QStringLiteral("SELECT DISTINCT ID AS \"ID\", Fullname AS \"Fullname\", "
                          "cdate AS \"Date\", ctime AS \"Time\", Complaints AS \"Complaints\", "
                          "Diagnosis AS \"Diagnosis\", Prescription AS \"Prescription\" "
                          "FROM qryhConsulting WHERE cdate = ? ORDER BY \"ID\"");
}

QStringList medicalStaffEntries(db::Connection& c)
{
    QStringList out;
    for (const db::Row& r :
         c.query(QStringLiteral("SELECT empID, lastname, firstname FROM qryemployees "
                                "WHERE deptID = 'MEDICALS' ORDER BY lastname"))
             .rows)
        out << listentry::make(
            QStringLiteral("%1 %2").arg(r.text(u"lastname"), r.text(u"firstname")),
            r.text(u"empID"));
    return out;
}

VisitLabels lookUpVisit(db::Connection& c, const QString& consultID)
{
    VisitLabels v;
    const auto row = c.queryOne(QStringLiteral("SELECT consultID, clientcat, fullname, pno FROM "
                                               "qryhVisits WHERE consultID = ? LIMIT 1"),
                                {consultID});
    if (!row)
        return v;
    v.found = true;
    v.consultID = row->text(u"consultID");
    v.clientCat = row->text(u"clientcat");
    v.pno = row->text(u"pno");
    v.fullName = row->text(u"fullname");
    return v;
}

QString saveConsultation(AppContext& ctx, const ConsultationFields& f)
{
    const bool isNew = f.id == 0;
    require(!f.patientEntry.isEmpty(), "Please specify Patient Name", "cboVehNo");
    require(f.date.isValid(), "Please specify  Date", "dtDate");
    require(!f.time.trimmed().isEmpty(), "Please specify  Time of Entry", "dtTime");
    require(!isNew || !f.patientEntry.trimmed().isEmpty(),
            "Select a Patient for this Consultation", "cboVehNo");
    require(!f.complaints.trimmed().isEmpty(), "Specify Patient's Complaints Enter Zero if none",
            "txtComp");
    require(!f.diagnosis.trimmed().isEmpty(), "Specify Diagnosis Enter Zero if none", "txtDiag");
    require(!f.prescription.trimmed().isEmpty(), "Specify Treatment Enter Zero if none",
            "txtPresc");
    const QString doctor = listentry::key(f.doctor).trimmed();
    require(!f.doctor.trimmed().isEmpty() && !doctor.isEmpty(), "Specify Doctor's name",
            "cboReason");
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to save?"),
                            QStringLiteral("About to save")))
        return {};

    auto c = ctx.openConnection();
    db::Transaction tx(*c);
    if (isNew) {
        c->exec(QStringLiteral("INSERT INTO hConsulting (consultID, clientCat, CDate, PNo, "
                               "Complaints, preScription, diagnosis, cTime, treatedBy, "
                               "attendedto) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0)"),
                {f.consultID, f.clientCat, f.date, f.pno, f.complaints, f.prescription,
                 f.diagnosis, f.time.trimmed(), doctor});
        c->exec(QStringLiteral("UPDATE hRecords SET attendedto = 1 WHERE consultID = ?"),
                {f.consultID});
        tx.commit();
        return QStringLiteral("Record Succesfully saved");
    }
    if (c->exec(QStringLiteral("UPDATE hConsulting SET Complaints = ?, preScription = ?, "
                               "diagnosis = ?, treatedBy = ? WHERE ID = ?"),
                {f.complaints, f.prescription, f.diagnosis, doctor, f.id}) == 0)
        throw CheckFailed(goneMessage(kConsultation));
    tx.commit();
    return QStringLiteral("Record Succesfully updated");
}

bool deleteConsultation(AppContext& ctx, int id)
{
    if (id <= 0)
        throw CheckFailed(QStringLiteral("No Record selected. Double click a Consultation in the "
                                         "list first"),
                          QStringLiteral("grdData"));
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                            QStringLiteral("Delete from Clinic")))
        return false;
    if (ctx.openConnection()->exec(QStringLiteral("DELETE FROM hConsulting WHERE ID = ?"),
                                   {id}) == 0)
        throw CheckFailed(goneMessage(kConsultation));
    return true;
}

}  // namespace tolmar::clinical
