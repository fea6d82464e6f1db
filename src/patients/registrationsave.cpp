#include "patients/registrationsave.h"

#include "billing/chargelines.h"
#include "billing/debt.h"
#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/idgen.h"
#include "messaging/smsqueue.h"
#include "patients/patientrecord.h"
#include "patients/patientsearch.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QDebug>

#include <functional>
#include <vector>

namespace tolmar::patients {

namespace {

const QString kAppointment = QStringLiteral("APPOINTMENT");

bool blank(const QString& s) { return s.isEmpty(); }
bool blankTrimmed(const QString& s) { return s.trimmed().isEmpty(); }
// A list left on its blank entry reads as one space on some of the boxes.
bool blankOrSpace(const QString& s) { return s.isEmpty() || s == QLatin1String(" "); }

QVariant dateOrNull(const QDate& d) { return d.isValid() ? QVariant(d) : QVariant(); }

// What the desk typed as a limit; a blank one stays NULL on Edit.
QVariant limitOrNull(const QString& typed)
{
    const QString t = typed.trimmed();
    return t.isEmpty() ? QVariant() : QVariant(t.toDouble());
}

class SaveRun {
public:
    SaveRun(AppContext& ctx, const RegistrationForm& f) : m_ctx(ctx), m_f(f) {}

    QString run();

private:
    QString fullName() const
    {
        return m_f.surname.trimmed() + QLatin1Char(' ') + m_f.firstName.trimmed();
    }
    QString retainID() const { return m_f.selectedRetainID.trimmed(); }
    billing::VisitBill bill() const
    {
        return {m_ctx.session().serverDate, m_pno, m_consultID, retainID(),
                m_f.selectedRetainCode};
    }
    void drawConsultID();
    void insertPatient(db::Connection& c);
    void updatePatient(db::Connection& c);
    void getAttendance(db::Connection& c);
    void afterCommit();
    void repairCounters();

    AppContext& m_ctx;
    const RegistrationForm& m_f;
    QString m_pno;
    QString m_consultID;
    bool m_feeBilled = false;
    // Audit lines wait for the commit: written earlier, they would tell of rows that a
    // rollback may yet take back.
    std::vector<AuditEntry> m_audits;
};

void SaveRun::drawConsultID()
{
    m_consultID = getIDNo(m_ctx, kSeriesConsultID);
    if (m_consultID.isEmpty())
        throw CheckFailed(kIdGenFailedConsultIDText);
}

QString SaveRun::run()
{
    AppContext& ctx = m_ctx;
    auto busy = ctx.prompter().busy();
    try {
        ctx.refreshServerClock();
        // Both numbers come first: on SQLite a draw would wait for our own open writer.
        if (m_f.isEdit) {
            m_pno = m_f.systemNo.trimmed();
            if (m_f.takeAttendance)
                drawConsultID();
        } else {
            m_pno = getIDNo(ctx, kSeriesPatientNo);
            if (m_pno.isEmpty())
                throw CheckFailed(kIdGenFailedText);
            drawConsultID();  // always: a registration fee is billed on it
        }

        {
            auto conn = ctx.openConnection();
            db::Transaction tx(*conn);
            if (m_f.isEdit) {
                updatePatient(*conn);
                if (m_f.takeAttendance)
                    getAttendance(*conn);
                if (m_f.pendingCardRenewal) {
                    billing::getCardRenewFee(*conn, bill(), retainID());
                    m_audits.push_back({QStringLiteral("Card Renew Fee for %1").arg(fullName()),
                                        m_pno, QString()});
                }
            } else {
                insertPatient(*conn);
                if (m_f.takeAttendance)
                    getAttendance(*conn);
                if (m_f.newReg == QLatin1String("NEW")) {
                    billing::getServiceFeeForReg(*conn, bill(), retainID());
                    m_audits.push_back(
                        {QStringLiteral("Reg Fee for %1").arg(fullName()), m_pno, QString()});
                }
            }
            tx.commit();
        }
        // Only a committed bill uses the fee up; after a failure it waits for the next Save.
        if (m_feeBilled) {
            Session& s = ctx.session();
            s.instantFeePending = false;
            s.instantFeeItem.clear();
            s.pendingFee = 0;
        }
    } catch (const CheckFailed&) {
        throw;  // a number not given: nothing was written, and no counter ran ahead
    } catch (...) {
        // The transaction and its connection are gone by now; put the counters back in step
        // before the desk reads the message, so the next Save draws good numbers.
        repairCounters();
        throw;
    }
    afterCommit();
    ctx.prompter().inform(m_f.isEdit ? QStringLiteral("Record Succesfully Edited and Updated")
                                     : QStringLiteral("Record Succesfully saved"));
    return m_pno;
}

void SaveRun::repairCounters()
{
    // A repair that fails too must not hide the error the desk has to see.
    for (const auto& repair : {std::function<void()>([this] { updateAttendanceID(m_ctx); }),
                               std::function<void()>([this] { updatePatientID(m_ctx); })}) {
        try {
            repair();
        } catch (const std::exception& e) {
            qWarning().noquote() << "counter repair after a failed save:" << e.what();
        }
    }
}

void SaveRun::insertPatient(db::Connection& c)
{
    const Session& s = m_ctx.session();
    const bool dependant = m_f.isAddingDependant;
    const QString limit = m_f.admissionLimit.trimmed();
    c.exec(QStringLiteral(
               "INSERT INTO hPatients (Principal, pCatID, Username, Title, PNo, oldPno, "
               "fileduration, regDate, expirydate, psurname, pfirstName, homeAddress, Area, "
               "officeAddress, pPhoneNo, DOB, Email, sex, Maturity, ref, HmoRef, clientCatID, "
               "coyType, CoyName, empno, policyType, CardType, MStatus, bloodGroup, genotype, "
               "occupation, religion, nextOfKin, NOKPhone, relationToKin, kinAddress, "
               "AdmissionDaysLimit, NewReg, Debt, DebtBF, SearchName) VALUES (?, ?, ?, ?, ?, ?, "
               "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
               "?, ?, ?, ?, ?, ?, ?, ?)"),
           {dependant ? m_f.principalPNo : m_pno, dependant ? kDependant : kPrincipal, s.empID,
            m_f.title, m_pno,
            cardNumber(s.defaults.AUTO_CARD_NO, s.hospID, s.serverDate, m_pno, m_f.cardNo),
            m_f.cardDuration, m_f.regDate,
            storesExpiryDate(m_f.selectedClientCat) ? dateOrNull(m_f.expiryDate) : QVariant(),
            cleanName(m_f.surname), cleanName(m_f.firstName), m_f.homeAddress, m_f.area,
            m_f.officeAddress, m_f.phone.trimmed(), dateOrNull(m_f.dob), m_f.email, m_f.sex,
            m_f.maturity, m_f.feeForService, m_f.hmoReferral, m_f.selectedClientCat,
            coyTypeOf(m_f.selectedClientType), retainID(), m_f.enrolleeNo.trimmed(), m_f.plan,
            m_f.cardType, m_f.maritalStatus, m_f.bloodGroup, m_f.genotype, m_f.occupation,
            m_f.religion, m_f.nextOfKin, m_f.nokPhone.trimmed(), m_f.nokRelationship,
            m_f.nokAddress, limit.isEmpty() ? 0.0 : limit.toDouble(),
            m_f.newReg == QLatin1String("NEW") ? QStringLiteral("YES") : QStringLiteral("NO"),
            m_f.carryOverDebt, m_f.carryOverDebt,
            searchNameOf(cleanName(m_f.surname), cleanName(m_f.firstName))});
}

void SaveRun::updatePatient(db::Connection& c)
{
    // Membership, the user who registered, NewReg and Debt belong to the first save.
    QStringList sets{"Title", "PNo", "oldPno", "fileduration", "regDate"};
    db::Params values{m_f.title, m_pno, m_f.cardNo.trimmed(), m_f.cardDuration, m_f.regDate};
    if (m_f.expiryDate.isValid()) {
        sets << QStringLiteral("expirydate");
        values.push_back(m_f.expiryDate);
    }
    sets << QStringList{"psurname", "pfirstName", "SearchName", "homeAddress", "Area",
                        "officeAddress", "pPhoneNo"};
    for (const QVariant& v :
         {QVariant(cleanName(m_f.surname)), QVariant(cleanName(m_f.firstName)),
          QVariant(searchNameOf(cleanName(m_f.surname), cleanName(m_f.firstName))),
          QVariant(m_f.homeAddress), QVariant(m_f.area), QVariant(m_f.officeAddress),
          QVariant(m_f.phone.trimmed())})
        values.push_back(v);
    if (m_f.dob.isValid()) {
        sets << QStringLiteral("DOB");
        values.push_back(m_f.dob);
    }
    sets << QStringList{"Maturity",   "ref",         "HmoRef",     "Email",         "sex",
                        "clientCatID", "coyType",    "CoyName",    "empno",         "introducedby",
                        "policyType", "CardType",    "MStatus",    "bloodGroup",    "genotype",
                        "occupation", "religion",    "nextOfKin",  "NOKPhone",      "relationToKin",
                        "kinAddress", "AdmissionDaysLimit"};
    for (const QVariant& v :
         {QVariant(m_f.maturity), QVariant(m_f.feeForService), QVariant(m_f.hmoReferral),
          QVariant(m_f.email), QVariant(m_f.sex), QVariant(m_f.selectedClientCat),
          QVariant(coyTypeOf(m_f.selectedClientType)), QVariant(retainID()),
          QVariant(m_f.enrolleeNo.trimmed()), QVariant(m_f.introducedBy), QVariant(m_f.plan),
          QVariant(m_f.cardType), QVariant(m_f.maritalStatus), QVariant(m_f.bloodGroup),
          QVariant(m_f.genotype), QVariant(m_f.occupation), QVariant(m_f.religion),
          QVariant(m_f.nextOfKin), QVariant(m_f.nokPhone.trimmed()),
          QVariant(m_f.nokRelationship), QVariant(m_f.nokAddress),
          limitOrNull(m_f.admissionLimit)})
        values.push_back(v);
    values.push_back(m_f.editPNo);
    // Only column names, all fixed above, are joined into the text; every value is bound.
    const int n = c.exec(QStringLiteral("UPDATE hPatients SET %1 = ? WHERE PNo = ?")
                             .arg(sets.join(QStringLiteral(" = ?, "))),
                         values);
    if (n == 0)
        throw db::DbError(QStringLiteral("Patient %1 is no longer on file").arg(m_f.editPNo));
}

void SaveRun::getAttendance(db::Connection& c)
{
    m_ctx.refreshServerClock();
    const Session& s = m_ctx.session();
    const QDate today = s.serverDate;
    const QString now = s.serverTimeText;
    const QString name = fullName();
    const QString clinic = m_f.clinicName;

    if (m_f.purpose == kAppointment) {
        c.exec(QStringLiteral("INSERT INTO happointment (consultID, clientCat, clinicType, "
                              "ApptDate, ApptTime, Remarks, PNo, entryDate, entryTime, "
                              "attendedto) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, 0)"),
               {m_consultID, m_f.selectedClientCat, clinic, dateOrNull(m_f.apptDate),
                m_f.apptTime, QStringLiteral("%1 Appointment").arg(clinic), m_pno, today, now});
        m_audits.push_back({QStringLiteral("Insert Appt for: %1").arg(name), m_consultID, clinic});
    }
    // The previous visit is read after the patient's own copy is overwritten: from here on
    // only hRecords keeps the history.
    c.exec(QStringLiteral("UPDATE hPatients SET LastPurpose = ?, LastClinicVisited = ?, "
                          "LastAttndDate = ?, LastConsultID = ? WHERE PNo = ?"),
           {m_f.purpose, clinic, today, m_consultID, m_pno});
    const auto previous = c.queryOne(
        QStringLiteral("SELECT ConsultID, recDate, clinicType, Remarks FROM hRecords "
                       "WHERE PNo = ? ORDER BY recID DESC LIMIT 1"),
        {m_pno});

    const bool doctor = !m_f.doctorEmpID.isEmpty();
    c.exec(QStringLiteral(
               "INSERT INTO hRecords (recDate, PNo, consultID, empID, clinicType, Remarks, "
               "htime, HmoRef, referal, DocAssigned, PatVal, suppres, attendedto, "
               "attendedtoByDoc, attendedToByNurse, BillDate, clientCat, CoyName, Debt, "
               "LastConsultID, LastAttndDate, LastClinicVisited, LastPurpose) VALUES (?, ?, ?, "
               "?, ?, ?, ?, ?, ?, ?, ?, 0, 0, 0, 0, ?, ?, ?, ?, ?, ?, ?, ?)"),
           {today, m_pno, m_consultID, s.empID, clinic, m_f.purpose, now, m_f.hmoReferral,
            m_f.feeForService, doctor ? QVariant(m_f.doctorEmpID) : QVariant(),
            doctor ? 1 : 0, today, m_f.selectedClientCat, retainID(), m_f.carryOverDebt,
            previous ? previous->value(u"ConsultID") : QVariant(),
            previous ? previous->value(u"recDate") : QVariant(),
            previous ? previous->value(u"clinicType") : QVariant(),
            previous ? previous->value(u"Remarks") : QVariant()});

    billing::VisitLines lines;
    lines.revTypeConsult = s.defaults.Revtype_Consult;
    lines.appVersion = kVersionMajor;
    lines.instantFeePending = m_f.instantFeePending;
    lines.instantFeeItem = m_f.instantFeeItem;
    lines.instantFeeAmount = m_f.instantFeeAmount;
    lines.carryOverDebt = m_f.carryOverDebt;
    lines.isEdit = m_f.isEdit;
    billing::writeVisitLines(c, bill(), lines);
    m_feeBilled = m_f.instantFeePending;
    // A new patient has no bill yet: what the desk carried over is what the patient owes.
    billing::ComputeDebtBroughtForward(m_ctx, c, m_pno, m_f.isEdit ? 0.0 : m_f.carryOverDebt);

    c.exec(QStringLiteral("INSERT INTO hPatientsTimeline (PNo, consultID, ServicePoint, "
                          "EntryOrExit, EntryDate, EntryTime, Username) "
                          "VALUES (?, ?, 'ATTENDANCE', 'ENTRY|EXIT', ?, ?, ?)"),
           {m_pno, m_consultID, today, now, s.userName});
    m_audits.push_back({QStringLiteral("Insert Attendance for %1").arg(name), m_consultID,
                        QStringLiteral("%1/%2/%3/%4")
                            .arg(m_f.selectedClientCat, clinic, m_f.purpose,
                                 m_f.selectedCoyName)});
}

void SaveRun::afterCommit()
{
    const Session& s = m_ctx.session();
    const QString name = fullName();
    if (m_f.isEdit) {
        const QString text =
            m_f.selectedRetainID != m_f.loadedRetainID
                ? QStringLiteral("Edit Reg: %1:Changed Company from %2:%3 to %4:%5")
                      .arg(name, m_f.loadedRetainID, m_f.loadedCoyName, m_f.selectedCoyName,
                           m_f.selectedRetainID)
                : QStringLiteral("Edit Reg for %1").arg(name);
        m_audits.insert(m_audits.begin(), AuditEntry{text, m_pno, QString()});
    } else {
        m_audits.insert(m_audits.begin(),
                        AuditEntry{QStringLiteral("Insert Reg for %1").arg(name), m_pno, QString()});
    }
    SpAudiTrail(m_ctx, s.userName, m_audits, s.computerName);

    if (!m_f.takeAttendance)
        return;
    SmsRequest sms;
    sms.clinic = m_f.clinicName;
    sms.pno = m_pno;
    sms.fallbackPhone = m_f.phone.trimmed();
    sms.code = m_pno;
    if (m_f.purpose == kAppointment) {
        sms.kind = kSmsAppointment;
        sms.reference = QStringLiteral("%1 Clinic Appt").arg(m_f.clinicName);
        sms.date = m_f.apptDate;
        sms.time = QTime::fromString(m_f.apptTime, fmt::kShortTime);
    } else {
        sms.kind = kSmsAttendance;
        sms.date = s.serverDate;
        sms.time = s.serverDateTime.time();
    }
    composeSms(m_ctx, sms);
}

}  // namespace

void checkRegistration(const AppContext& ctx, RegistrationForm& f)
{
    const AppDefaults& d = ctx.session().defaults;
    auto fail = [](const char* message, const char* focus) {
        throw CheckFailed(QString::fromLatin1(message), QString::fromLatin1(focus));
    };
    const QString cat = f.selectedClientCat;

    if (blank(f.newReg))
        fail("Specify if Registration is new OR Existing", "cboNew");
    if (blank(f.title))
        fail("Specify Patient Title/Salutation", "cboTitle");
    if (blankTrimmed(f.company))
        fail(" Company Name cannot be empty", "cboPat");
    if (blank(f.selectedRetainID))
        throw CheckFailed(QStringLiteral("Empty Company Code not Allowed"),
                          QStringLiteral("cboPat"), QStringLiteral(" Select Company Name"),
                          Icon::Critical);
    if (f.selectedRetainID.trimmed().size() > kMaxRetainIdLength)
        throw CheckFailed(QStringLiteral("Invalid Company Code"), QStringLiteral("cboPat"),
                          QStringLiteral(" Re-Select Company Name"), Icon::Critical);
    if (needsEnrolleeNo(cat) && blank(f.enrolleeNo))
        fail("HMO Enrolle No Needed", "txtEmp");
    if (needsAdmissionLimit(cat, d.Admission_Limit_Exists) && blank(f.admissionLimit))
        fail("Specify Maximum No of hrs to Stay in Admission, if Admitted! (AdmissionLimit) "
             "Enter zero if Unlimited",
             "txtAdmitLimit");
    if (!isInsuranceCategory(cat) && blank(f.admissionLimit))
        f.admissionLimit = QStringLiteral("0");
    if (blank(f.cardType))
        fail(" Card Category cannot be empty", "cboCard");
    if (!f.expiryDate.isValid() && isPrivatePayer(f.selectedRetainID, d.PRIVATE))
        fail(" Please Specify Expiration Date for this Private Patient", "dtExpDate");
    if (!f.regDate.isValid())
        fail(" Please Specify Date Patient Registered", "dtRegDate");
    if (!f.isEdit)
        f.systemNo.clear();  // a new patient's number is drawn by the save
    else if (blank(f.systemNo))
        fail(" Patient Card No cannot be empty", "txtSupp");
    if (blankOrSpace(f.maturity))
        fail(" Patient Maturity  Cannot be Blank", "cboMat");
    if (!f.isEdit && blank(f.newReg))
        fail(" Specify Registration type 'NEW/OLD'", "cboNew");
    if (blank(f.feeForService))
        fail("Fee for Service Field  Cannot be Blank", "cboRef");
    if (blankOrSpace(f.hmoReferral))
        fail("HMO Referal Field  Cannot be Blank", "cboRefHmo");
    if (blankTrimmed(f.area))
        fail("Specify Patient Residential Area", "cboArea");
    if (blankTrimmed(f.surname))
        fail(" Surname cannot be empty", "txtsurNAme");
    if (blankTrimmed(f.firstName))
        fail(" Firstname cannot be empty", "txtfirstNAme");
    if (blank(f.company))
        fail(" Company Name cannot be empty", "cboPat");
    if (blank(cat))
        fail("Billing Cat (Client Tariff) cannot be empty", "cboClient");
    if (f.takeAttendance && blank(f.clinicName))
        fail("Specify Clinic for Attendance", "cboClin");
    if (f.takeAttendance && (blank(f.purpose) || blank(f.selectedPurpose)))
        fail("Specify Purpose of Attendance", "cboPurpose");
    // An appointment without its day would be booked for nobody knows when, and its SMS
    // would tell the patient an empty date.
    if (f.takeAttendance && f.purpose == kAppointment && !f.apptDate.isValid())
        fail("Specify Appointment Date", "dtNext");
    if (blankTrimmed(f.phone))
        fail("Patient's Phone No Required! 11 Digits Onlt!! GSM Only. eg 08031234567",
             "txtPhone");
    if (blankTrimmed(f.nextOfKin))
        fail("Next of Kin Required", "txtKin");
    if (blankTrimmed(f.nokPhone))
        fail("Next of Kin Phone No Required", "txtNOKPhone");
}

QString saveRegistration(AppContext& ctx, const RegistrationForm& form)
{
    RegistrationForm f = form;
    checkRegistration(ctx, f);
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to save"),
                            QStringLiteral("Check before save")))
        return QString();
    return SaveRun(ctx, f).run();
}

namespace {
// The screen finds its save here; the object library keeps this initialiser in every program.
const bool kRegistered = [] {
    setRegistrationSave(&saveRegistration);
    return true;
}();
}  // namespace

}  // namespace tolmar::patients
