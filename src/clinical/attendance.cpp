#include "clinical/attendance.h"

#include "billing/chargelines.h"
#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/idgen.h"
#include "core/listentry.h"
#include "patients/patientrecord.h"
#include "patients/patientrepo.h"
#include "patients/registrationdesk.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QRegularExpression>

#include <vector>

namespace tolmar::clinical {

namespace {

const QString kScreening = QStringLiteral("SCREENING");
const QString kCardExpired = QStringLiteral("Patient's Card has Expired");

bool isPrivate(const AppContext& ctx, const QString& coyName)
{
    return patients::isPrivatePayer(coyName, ctx.session().defaults.PRIVATE);
}

QString orNo(const QString& v) { return v.isEmpty() ? QStringLiteral("NO") : v; }

}  // namespace

bool isSplitBill(const QString& consultID)
{
    return consultID.size() == 13 && consultID.mid(3, 3) != QLatin1String("OFL");
}

QString completeSystemNo(const QString& hospitalNo, const QString& typed)
{
    const QString text = typed.trimmed();
    if (text.contains(QLatin1Char('/')))
        return text;
    static const QRegularExpression digits(QStringLiteral("^[0-9]{1,9}$"));
    if (!digits.match(text).hasMatch())
        throw CheckFailed(QStringLiteral("Type the digits of the System No (9 at most), or the "
                                         "whole number with its \"/\""),
                          QStringLiteral("txtName"));
    return QStringLiteral("%1/%2").arg(hospitalNo, text.rightJustified(9, QLatin1Char('0')));
}

QString patientEntry(db::Connection& c, const QString& pno)
{
    const auto row = patients::readPatient(c, pno);
    return row ? listentry::make(row->text(u"FullName").trimmed(), row->text(u"pno")) : QString();
}

PickedPatient readPatient(db::Connection& c, const QString& pno)
{
    PickedPatient out;
    out.pno = pno;
    const auto r = c.queryOne(
        QStringLiteral("SELECT FullName, coyname, BillingCat, Client, occupation, oldPno, "
                       "policyType, ref, HmoRef, empNo, ExpiryDate FROM vwhpatients "
                       "WHERE pno = ?"),
        {pno});
    if (!r)
        return out;
    out.found = true;
    out.fullName = r->text(u"FullName").trimmed();
    out.coyName = r->text(u"coyname").trimmed();
    out.billingCat = r->text(u"BillingCat");
    out.client = r->text(u"Client");
    out.occupation = r->text(u"occupation");
    out.oldPno = r->text(u"oldPno");
    out.policyType = r->text(u"policyType");
    out.feeForService = orNo(r->text(u"ref"));
    out.hmoReferral = orNo(r->text(u"HmoRef"));
    out.enrolleeNo = r->text(u"empNo");
    out.expiryDate = r->date(u"ExpiryDate");
    if (const auto payer = c.queryOne(
            QStringLiteral("SELECT retainCode FROM hRetainership WHERE retainID = ?"),
            {out.coyName}))
        out.billTo = payer->text(u"retainCode");
    return out;
}

void pickPatient(AppContext& ctx, const QString& entry, PickedPatient& out)
{
    out = PickedPatient{};
    if (!entry.contains(QLatin1Char('[')))
        return;  // typed, not picked: no patient
    // The key runs to the closing bracket, or to the end when the entry lost it.
    QString pno = listentry::key(entry).trimmed();
    if (pno.isEmpty())
        pno = entry.section(QLatin1Char('['), 1).trimmed();
    db::Connection& c = ctx.db();
    out = readPatient(c, pno);
    out.fullName = listentry::text(entry);
    if (!out.found)
        return;  // no such patient: nothing to refuse, nothing to show
    // With no payer code the payer cannot be found either; what the desk must do about it is
    // register the payer, so that is what it is told.
    if (out.coyName.isEmpty()) {
        out.clearScreen = true;
        throw CheckFailed(QStringLiteral("Registration Incomplete! Company Name Required!! Go "
                                         "to Registration Page"),
                          QStringLiteral("cboVehNo"));
    }
    if (out.billTo.isEmpty() &&
        !c.queryOne(QStringLiteral("SELECT retainID FROM hRetainership WHERE retainID = ?"),
                    {out.coyName}))
        throw CheckFailed(QStringLiteral("BillTo Value Cannot be Empty!!! Check your Client "
                                         "Information"),
                          QStringLiteral("cboVehNo"));

    const Session& s = ctx.session();
    if (out.expiryDate.isValid() && isPrivate(ctx, out.coyName) &&
        patients::cardRunOut(c, out.pno, out.expiryDate, s.serverDate)) {
        out.renewEnabled = true;
        ctx.prompter().inform(kCardExpired);
    }
}

void checkClinicChoice(AppContext& ctx, const PickedPatient& patient, bool& renewEnabled)
{
    if (!isPrivate(ctx, patient.coyName))
        return;
    renewEnabled = false;
    if (!patient.expiryDate.isValid())
        throw CheckFailed(QStringLiteral(" Please Specify Expiration Date for this Private "
                                         "Patient (GO TO REGISTRATION PAGE)"),
                          QStringLiteral("cboType"));
    if (patients::cardRunOut(ctx.db(), patient.pno, patient.expiryDate,
                             ctx.session().serverDate)) {
        renewEnabled = true;
        throw CheckFailed(kCardExpired, QStringLiteral("cboType"));
    }
}

void choosePurpose(AppContext& ctx, const QString& purpose, const QString& coyName,
                   const QString& clinic, PurposeChoice& out)
{
    out = PurposeChoice{};
    if (purpose.isEmpty())
        return;
    const patients::PurposeFees fees =
        patients::purposeFees(ctx.db(), purpose, coyName,
                              ctx.session().defaults.PVT_CONFEE_SNO);
    out.purposeClass = fees.purposeClass;
    out.screeningFee = fees.screening;
    out.consultationFee = fees.consultation;
    if (purpose == QLatin1String("APPOINTMENT") && clinic.isEmpty())
        throw CheckFailed(QStringLiteral("Specify Clinic"), QStringLiteral("cboType"));
}

void checkAttendance(const AttendanceForm& f)
{
    auto fail = [](const char* message, const char* focus) {
        throw CheckFailed(QString::fromLatin1(message), QString::fromLatin1(focus));
    };
    if (f.pno.isEmpty() || f.patient.trimmed().isEmpty())
        fail(" please specify Name of Patient", "cboVehNo");
    if (f.clientCat.isEmpty() || f.clientCat == QLatin1String("SERVICES"))
        fail(" Billing Category cannot be empty! Invalid Client Tariff or Billing Category",
             "cboClient");
    if (f.clinic.isEmpty())
        fail(" please specify clinic for Patient", "cboType");
    if (f.purpose.isEmpty())
        fail(" please specify Purpose of Visit for Patient", "cboPurpose");
    if (f.purposeClass.isEmpty())
        fail("Specify Purpose of Attendance", "cboPurpose");
    if (patients::isInsuranceCategory(f.clientCat) && f.enrolleeNo.isEmpty())
        fail("HMO Enrolle No Needed OR enter NIL if No Enrolle Num ", "txtEmp");
    if (f.feeForService.isEmpty())
        fail(" please specify Whether Patient is FeeForService", "cboRef");
    if (f.hmoReferral.isEmpty())
        fail(" please specify Whether Patient is a Referal", "cboRefHmo");
}

namespace {

class AttendanceSave {
public:
    AttendanceSave(AppContext& ctx, const AttendanceForm& f) : m_ctx(ctx), m_f(f) {}

    QString run()
    {
        m_ctx.refreshServerClock();  // once: every date and time of the save is this one
        const Session& s = m_ctx.session();
        m_today = s.serverDate;
        m_now = s.serverTimeText;
        m_consultID = m_f.consultID;
        if (!m_f.isEdit) {
            // Drawn before the transaction: on SQLite a draw would wait for our own writer.
            m_consultID = getIDNo(m_ctx, kSeriesConsultID);
            if (m_consultID.isEmpty())
                throw CheckFailed(kIdGenFailedConsultIDText);
        }
        {
            auto conn = m_ctx.openConnection();
            db::Transaction tx(*conn);
            if (m_f.isEdit)
                editVisit(*conn);
            else
                newVisit(*conn);
            tx.commit();
        }
        // Audit lines wait for the commit: earlier, they would tell of rows a rollback may
        // yet take back.
        SpAudiTrail(m_ctx, s.userName, m_audits, s.computerName);
        m_ctx.prompter().inform(m_f.isEdit ? QStringLiteral("Record Succesfully Edited and Updated")
                                           : QStringLiteral("Record Succesfully saved"));
        return m_consultID;
    }

private:
    QString details() const
    {
        return QStringLiteral("%1/%2/%3/%4")
            .arg(m_consultID, m_f.clientCat, m_f.clinic, m_f.purpose);
    }

    void updatePatient(db::Connection& c)
    {
        c.exec(QStringLiteral("UPDATE hPatients SET ref = ?, HmoRef = ?, policyType = ?, "
                              "empno = ?, clientCatID = ?, CoyName = ? WHERE PNo = ?"),
               {m_f.feeForService, m_f.hmoReferral, m_f.plan, m_f.enrolleeNo, m_f.clientCat,
                m_f.coyName, m_f.pno});
    }

    void editVisit(db::Connection& c)
    {
        // Only what the desk may change: a doctor's "attended" mark stays as it is.
        const int n = c.exec(
            QStringLiteral("UPDATE hRecords SET clientCat = ?, clinicType = ?, Remarks = ?, "
                           "HmoRef = ?, referal = ?, empID = ?, CoyName = ?, "
                           "attendedtoByDoc = 0 WHERE recID = ?"),
            {m_f.clientCat, m_f.clinic, m_f.purpose, m_f.hmoReferral, m_f.feeForService,
             m_ctx.session().empID, m_f.coyName, m_f.recID.toLongLong()});
        if (n == 0)
            throw CheckFailed(kVisitGoneText, QString(), QString(), Icon::Warning);
        updatePatient(c);
        m_audits.push_back({QStringLiteral("Edit Attendance for %1").arg(m_f.patient),
                            m_consultID, details()});
    }

    void newVisit(db::Connection& c)
    {
        const Session& s = m_ctx.session();
        c.exec(QStringLiteral(
                   "INSERT INTO hRecords (recDate, PNo, consultID, empID, clinicType, Remarks, "
                   "htime, HmoRef, referal, suppres, attendedto, attendedtoByDoc, "
                   "attendedToByNurse, BillDate, clientCat, CoyName, Debt) "
                   "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0, 0, 0, ?, ?, ?, ?)"),
               {m_today, m_f.pno, m_consultID, s.empID, m_f.clinic, m_f.purpose, m_now,
                m_f.hmoReferral, m_f.feeForService, m_today, m_f.clientCat, m_f.coyName,
                m_f.debtToCarry});
        const billing::VisitBill bill{m_today, m_f.pno, m_consultID, m_f.coyName, m_f.billTo};
        if (m_f.cardRenewed) {
            billing::getCardRenewFee(c, bill, m_f.coyName, billing::kCategoryRegistration);
            m_audits.push_back(
                {QStringLiteral("Card Renew Fee for %1").arg(m_f.patient), m_consultID, {}});
        }
        updatePatient(c);
        billing::writeAttendanceLine(c, bill, QStringLiteral("CONSULTATION"));
        if (m_f.purposeClass == kScreening)
            billing::recordScreeningVisit(c, m_today, m_consultID, m_f.purposeClass);
        m_audits.push_back(
            {QStringLiteral("Insert Attnd Fee for %1").arg(m_f.patient), m_consultID, {}});
        // On PostgreSQL a second desk's claim waits for this one's commit and then finds the
        // lines taken, so each waiting line goes to exactly one visit.
        billing::updateRegInBillAccum(c, m_f.pno, m_consultID);
        if (!m_f.refConsultID.isEmpty())
            c.exec(QStringLiteral("UPDATE hreferal SET attendedto = 1 WHERE consultID = ?"),
                   {m_f.refConsultID});
        m_audits.push_back({QStringLiteral("Insert Attendance for %1").arg(m_f.patient),
                            m_consultID, details()});
    }

    AppContext& m_ctx;
    const AttendanceForm& m_f;
    QDate m_today;
    QString m_now;
    QString m_consultID;
    std::vector<AuditEntry> m_audits;
};

}  // namespace

QString saveAttendance(AppContext& ctx, const AttendanceForm& form)
{
    checkAttendance(form);
    auto busy = ctx.prompter().busy();
    return AttendanceSave(ctx, form).run();
}

bool deleteAttendance(AppContext& ctx, const QString& recID, const QString& fullName,
                      const QString& consultID)
{
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                            QStringLiteral("Delete")))
        return false;
    ctx.db().exec(QStringLiteral("DELETE FROM hRecords WHERE recID = ?"), {recID.toLongLong()});
    const Session& s = ctx.session();
    const QString action = QStringLiteral("Delete Patient: %1").arg(fullName);
    SpAudiTrail(ctx, s.userName, action, consultID, action, s.computerName);
    return true;
}

QAbstractItemModel* visitsForToday(db::Connection& c, QObject* parent)
{
    // recID is in every row, so DISTINCT would change nothing but the cost: without it the
    // rows stream from the day's index in recID order and the grid's first page comes at
    // once on a busy day.
    return c.gridModel(
        QStringLiteral("SELECT Fullname AS \"Fullname\", RecDate AS \"Date\", \"Time\", "
                       "CoyName AS \"Client\", ClientCat AS \"BillingCat\", "
                       "ClinicType AS \"ClinicType\", recID AS \"recID\", "
                       "Surname AS \"Surname\", pNO AS \"PatNo\", empID AS \"empID\", "
                       "Remarks AS \"Remarks\", attendedTo AS \"attendedTo\", "
                       "ConsultID AS \"ConsultID\", Referal AS \"FeeForService\", "
                       "HMORef AS \"Referal\", RetainID AS \"RetainID\", "
                       "PolicyType AS \"PolicyType\", EmpNo AS \"EnrolleNo\" "
                       "FROM qryhVisitsForToday ORDER BY \"recID\" DESC"),
        {}, parent);
}

int visitsForTodayCount(db::Connection& c)
{
    return c.scalar(QStringLiteral("SELECT Visits FROM qryhVisitsForTodayCount")).toInt();
}

QAbstractItemModel* doctorsQueue(db::Connection& c, const QDate& day, QObject* parent)
{
    return c.gridModel(QStringLiteral("SELECT DISTINCT \"Date\", RoomNo AS \"RoomNo\", "
                                      "DocName AS \"DocName\", NumOfPat AS \"NumOfPat\" "
                                      "FROM vwDocWaitingListGrouped WHERE \"Date\" = ? "
                                      "ORDER BY \"DocName\""),
                       {day}, parent);
}

}  // namespace tolmar::clinical
