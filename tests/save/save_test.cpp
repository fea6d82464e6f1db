// The registration Save driven through frmPatientsNew: the checks and their order, the rows
// one save leaves behind, what a failure in the middle leaves (nothing, and counters put
// right), and dependants.
#include "registration/registrationfixture.h"
#include "support/expect.h"

#include "core/command.h"
#include "core/idgen.h"
#include "core/mditolmar.h"
#include "patients/registrationsave.h"

#include <QCheckBox>
#include <QTimer>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class RegistrationSave : public RegistrationTest {
protected:
    // A new private patient, every required field filled, attendance at GENERAL.
    frmPatientsNew& fillNewPrivate(const QString& surname = u"OKAFOR"_s)
    {
        frmPatientsNew& s = screen ? *screen : open();
        test::fillNewPrivate(&s, surname);
        return s;
    }
    // Presses Save and answers the question before it.
    void save(bool yes = true)
    {
        if (yes)
            desk->prompter.answerYes();
        else
            desk->prompter.answerNo();
        click(screen.get(), "OKButton");
    }
    QString newestPNo() const
    {
        return ws->scalar(u"SELECT PNo FROM hPatients ORDER BY PNo DESC LIMIT 1"_s).toString();
    }
    // The patient and visit counters, drawn from before a save and after it.
    std::pair<qint64, qint64> counters() const
    {
        return {counter(kSeriesPatientNo), counter(kSeriesConsultID)};
    }
    static std::pair<qint64, qint64> plusOne(std::pair<qint64, qint64> c)
    {
        return {c.first + 1, c.second + 1};
    }
    qint64 counter(const QString& series) const
    {
        return ws->scalar(u"SELECT id FROM idgen WHERE destName = ?"_s, {series}).toLongLong();
    }
    int count(const QString& table, const QString& pno) const
    {
        return ws->scalar(u"SELECT COUNT(*) FROM %1 WHERE PNo = ?"_s.arg(table), {pno}).toInt();
    }
    std::optional<db::Row> row(const QString& sql, const db::Params& params) const
    {
        return ws->connect()->queryOne(sql, params);
    }
    // The check a form fails, as "message|focus"; blank when it saves.
    QString refusal(const patients::RegistrationForm& f)
    {
        try {
            patients::saveRegistration(desk->ctx, f);
            return QString();
        } catch (const CheckFailed& e) {
            return e.message() + u'|' + e.focus();
        }
    }
    QStringList audits(const QString& tranCode) const
    {
        QStringList out;
        for (const db::Row& r : ws->connect()
                                    ->query(u"SELECT userAction FROM AuditTrail WHERE TranCode = ? "
                                            "ORDER BY userAction"_s,
                                            {tranCode})
                                    .rows)
            out << r.text(u"userAction");
        return out;
    }
};

// ---------------------------------------------------------------------------------------
// Checks

struct CheckCase {
    const char* what;
    std::function<void(patients::RegistrationForm&)> spoil;
    QString message;
    QString focus;
};

TEST_P(RegistrationSave, EachCheckStopsWithItsMessageAndControlBeforeAnythingIsDrawn)
{
    fillNewPrivate();
    const patients::RegistrationForm good = screen->gatherForm();
    const auto before = counters();
    const std::vector<CheckCase> cases{
        {"new or existing", [](auto& f) { f.newReg.clear(); },
         "Specify if Registration is new OR Existing", "cboNew"},
        {"title", [](auto& f) { f.title.clear(); }, "Specify Patient Title/Salutation", "cboTitle"},
        {"payer of spaces", [](auto& f) { f.company = u"  "_s; }, " Company Name cannot be empty",
         "cboPat"},
        {"payer code too long", [](auto& f) { f.selectedRetainID = u"00000001"_s; },
         "Invalid Company Code", "cboPat"},
        {"enrollee of an HMO patient",
         [](auto& f) {
             f.selectedClientCat = u"NHIS"_s;
             f.enrolleeNo.clear();
         },
         "HMO Enrolle No Needed", "txtEmp"},
        {"admission limit of an HMO patient",
         [](auto& f) {
             f.selectedClientCat = u"HMO"_s;
             f.enrolleeNo = u"HY/123"_s;
             f.admissionLimit.clear();
         },
         "Specify Maximum No of hrs to Stay in Admission, if Admitted! (AdmissionLimit) Enter "
         "zero if Unlimited",
         "txtAdmitLimit"},
        {"card type", [](auto& f) { f.cardType.clear(); }, " Card Category cannot be empty",
         "cboCard"},
        {"private expiry", [](auto& f) { f.expiryDate = QDate(); },
         " Please Specify Expiration Date for this Private Patient", "dtExpDate"},
        {"registration date", [](auto& f) { f.regDate = QDate(); },
         " Please Specify Date Patient Registered", "dtRegDate"},
        {"card number on edit",
         [](auto& f) {
             f.isEdit = true;
             f.systemNo.clear();
         },
         " Patient Card No cannot be empty", "txtSupp"},
        {"maturity of one blank", [](auto& f) { f.maturity = u" "_s; },
         " Patient Maturity  Cannot be Blank", "cboMat"},
        {"fee for service", [](auto& f) { f.feeForService.clear(); },
         "Fee for Service Field  Cannot be Blank", "cboRef"},
        {"hmo referral of one blank", [](auto& f) { f.hmoReferral = u" "_s; },
         "HMO Referal Field  Cannot be Blank", "cboRefHmo"},
        {"area", [](auto& f) { f.area = u" "_s; }, "Specify Patient Residential Area", "cboArea"},
        {"surname of spaces", [](auto& f) { f.surname = u"   "_s; }, " Surname cannot be empty",
         "txtsurNAme"},
        {"first name", [](auto& f) { f.firstName.clear(); }, " Firstname cannot be empty",
         "txtfirstNAme"},
        {"billing category", [](auto& f) { f.selectedClientCat.clear(); },
         "Billing Cat (Client Tariff) cannot be empty", "cboClient"},
        {"clinic", [](auto& f) { f.clinicName.clear(); }, "Specify Clinic for Attendance",
         "cboClin"},
        {"purpose class", [](auto& f) { f.selectedPurpose.clear(); },
         "Specify Purpose of Attendance", "cboPurpose"},
        {"appointment without its date",
         [](auto& f) {
             f.purpose = u"APPOINTMENT"_s;
             f.apptDate = QDate();
         },
         "Specify Appointment Date", "dtNext"},
        {"phone", [](auto& f) { f.phone = u" "_s; },
         "Patient's Phone No Required! 11 Digits Onlt!! GSM Only. eg 08031234567", "txtPhone"},
        {"next of kin", [](auto& f) { f.nextOfKin.clear(); }, "Next of Kin Required", "txtKin"},
        {"next of kin phone", [](auto& f) { f.nokPhone = u"  "_s; },
         "Next of Kin Phone No Required", "txtNOKPhone"},
    };
    for (const CheckCase& c : cases) {
        SCOPED_TRACE(c.what);
        patients::RegistrationForm f = good;
        c.spoil(f);
        EXPECT_EQ(refusal(f), c.message + u'|' + c.focus);
    }
    // Without the clinic and purpose boxes, an unticked attendance asks for neither.
    patients::RegistrationForm noVisit = good;
    noVisit.takeAttendance = false;
    noVisit.clinicName.clear();
    noVisit.purpose.clear();
    noVisit.nokPhone.clear();
    EXPECT_EQ(refusal(noVisit).section(u'|', 1), u"txtNOKPhone"_s);
    EXPECT_TRUE(desk->prompter.messages().empty());  // not even "Check before save"
    EXPECT_EQ(counters(), before);
}

TEST_P(RegistrationSave, FirstFailingCheckWinsAndEmptyPayerCodeIsCritical)
{
    fillNewPrivate();
    patients::RegistrationForm f = screen->gatherForm();
    f.nokPhone.clear();
    f.newReg.clear();
    EXPECT_EQ(refusal(f).section(u'|', 1), u"cboNew"_s);

    f = screen->gatherForm();
    f.selectedRetainID.clear();
    try {
        patients::saveRegistration(desk->ctx, f);
        ADD_FAILURE();
    } catch (const CheckFailed& e) {
        EXPECT_EQ(e.message(), u"Empty Company Code not Allowed"_s);
        EXPECT_EQ(e.title(), u" Select Company Name"_s);
        EXPECT_EQ(e.icon(), Icon::Critical);
    }
}

TEST_P(RegistrationSave, ScreenShowsTheFailedCheckAndFocusesItsControl)
{
    frmPatientsNew& s = fillNewPrivate();
    edit(&s, "txtNOKPhone")->clear();
    click(&s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Next of Kin Phone No Required"_s);
    EXPECT_EQ(s.focusWidget(), edit(&s, "txtNOKPhone"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(
        ws->scalar(u"SELECT COUNT(*) FROM hPatients WHERE psurname = ?"_s, {u"OKAFOR"_s}).toInt(),
        0);
}

TEST_P(RegistrationSave, AnsweringNoLeavesThePatientOnScreenUnsaved)
{
    frmPatientsNew& s = fillNewPrivate();
    const qint64 before = counter(kSeriesPatientNo);
    save(false);
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->title, u"Check before save"_s);
    EXPECT_EQ(desk->prompter.lastText(), u"Are you sure to save"_s);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), u"OKAFOR"_s);
    EXPECT_EQ(counter(kSeriesPatientNo), before);
}

// ---------------------------------------------------------------------------------------
// Add

TEST_P(RegistrationSave, NewPrivatePatientWithAttendanceWritesPatientVisitBillAndTimeline)
{
    ws->exec(u"UPDATE hRetainership SET RegAmount = 1500 WHERE retainID = '0001'"_s);
    fillNewPrivate();
    const auto before = counters();
    save();
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    EXPECT_EQ(counters(), plusOne(before));

    const QString pno = newestPNo();
    const auto p = row(u"SELECT * FROM hPatients WHERE PNo = ?"_s, {pno});
    const auto v = row(u"SELECT * FROM hRecords WHERE PNo = ?"_s, {pno});
    ASSERT_TRUE(p && v);
    const QString consultID = v->text(u"consultID");
    EXPECT_TRUE(consultID.startsWith(u"001"_s));
    // The first name loses its brackets; introducedby waits for the first edit.
    expectColumns(p, {"Principal=" + pno, "pCatID=PRINCIPAL",
                      "Username=" + desk->ctx.session().empID, "pfirstName=NGOZI",
                      "pPhoneNo=08031234567",
                      "oldPno=" + desk->ctx.session().hospID + "/26/" + pno.right(6),
                      "expirydate=2027-11-23", "CoyName=0001", "clientCatID=PRIVATE",
                      "NewReg=YES", "AdmissionDaysLimit=0", "DOB=", "introducedby=",
                      "LastConsultID=" + consultID});
    // A first visit has no previous one.
    expectColumns(v, {"clinicType=GENERAL", "Remarks=CONSULTATION", "recDate=2026-11-23",
                      "CoyName=0001", "LastConsultID="});

    const auto lines = ws->connect()->query(
        u"SELECT drgName, Price, consultID FROM billAccum WHERE PNo = ? "
        "ORDER BY drgName"_s,
        {pno});
    ASSERT_EQ(lines.size(), 2u);
    expectColumns(lines.rows[0], {"drgName=ATTENDANCE", "Price=0", "consultID=" + consultID});
    expectColumns(lines.rows[1], {"drgName=REGISTRATION", "Price=1500", "consultID=" + consultID});
    expectColumns(row(u"SELECT * FROM hPatientsTimeline WHERE PNo = ?"_s, {pno}),
                  {"consultID=" + consultID, "ServicePoint=ATTENDANCE", "EntryOrExit=ENTRY|EXIT"});

    EXPECT_EQ(audits(pno), (QStringList{"Insert Reg for OKAFOR [NGOZI]", "Reg Fee for OKAFOR [NGOZI]"}));
    EXPECT_EQ(audits(consultID).size(), 1);
    EXPECT_EQ(screen->mode(), frmPatientsNew::Mode::View);
    EXPECT_TRUE(edit(screen.get(), "txtsurNAme")->text().isEmpty());  // cleared for the next
}

TEST_P(RegistrationSave, ExistingPatientWithoutAttendanceWritesThePatientOnlyButDrawsAVisitNo)
{
    frmPatientsNew& s = fillNewPrivate();
    pick(&s, "cboNew", u"EXISTING"_s);
    child<QCheckBox>(&s, "chkReg")->setChecked(false);
    const qint64 visitsBefore = counter(kSeriesConsultID);
    save();
    const QString pno = newestPNo();
    EXPECT_EQ(ws->scalar(u"SELECT NewReg FROM hPatients WHERE PNo = ?"_s, {pno}).toString(),
              u"NO"_s);
    EXPECT_EQ(count(u"hRecords"_s, pno), 0);
    EXPECT_EQ(count(u"billAccum"_s, pno), 0);  // no registration fee either
    EXPECT_EQ(count(u"hPatientsTimeline"_s, pno), 0);
    EXPECT_EQ(counter(kSeriesConsultID), visitsBefore + 1);
}

TEST_P(RegistrationSave, AppointmentMakesBothAnAppointmentAndAVisitOnOneNumber)
{
    fillNewPrivate();
    patients::RegistrationForm f = screen->gatherForm();
    f.purpose = u"APPOINTMENT"_s;
    f.apptDate = kToday.addDays(7);
    f.apptTime = u"10:00 AM"_s;
    desk->prompter.answerYes();
    const QString pno = patients::saveRegistration(desk->ctx, f);
    ASSERT_FALSE(pno.isEmpty());
    expectColumns(
        row(u"SELECT * FROM happointment WHERE PNo = ?"_s, {pno}),
        {"Remarks=GENERAL Appointment", "ApptDate=2026-11-30", "attendedto=0",
         "consultID=" +
             ws->scalar(u"SELECT consultID FROM hRecords WHERE PNo = ?"_s, {pno}).toString()});
}

TEST_P(RegistrationSave, NewPatientWithoutAttendanceIsBilledOnANumberNoVisitCarries)
{
    ws->exec(u"UPDATE hRetainership SET RegAmount = 2000 WHERE retainID = '0001'"_s);
    frmPatientsNew& s = fillNewPrivate();
    child<QCheckBox>(&s, "chkReg")->setChecked(false);
    save();
    const QString pno = newestPNo();
    const auto lines = ws->connect()->query(u"SELECT * FROM billAccum WHERE PNo = ?"_s, {pno});
    EXPECT_EQ(rowsOf(lines, {"drgName", "Price", "Category"}),
              QStringList{"REGISTRATION|2000|REGISTRATION"});
    const QString number = lines.empty() ? QString() : lines.front().text(u"consultID");
    EXPECT_FALSE(number.isEmpty());
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hRecords WHERE consultID = ?"_s, {number}).toInt(),
              0);
}

TEST_P(RegistrationSave, CarriedOverDebtOfANewPatientBecomesAnOpeningBalanceLine)
{
    frmPatientsNew& s = fillNewPrivate();
    desk->prompter.answerInput(u"750.50"_s);
    QTest::mouseDClick(child<QLabel>(&s, "lblDebt"), Qt::LeftButton);
    save();
    const QString pno = newestPNo();
    const auto v = row(u"SELECT consultID, Debt FROM hRecords WHERE PNo = ?"_s, {pno});
    ASSERT_TRUE(v);
    EXPECT_DOUBLE_EQ(v->toDouble(u"Debt"), 750.50);
    expectColumns(
        row(u"SELECT * FROM billAccum WHERE PNo = ? AND drgName = 'OPENING_BALANCE_DEBT'"_s, {pno}),
        {"Price=750.5", "SubTotal=750.5", "consultID=" + v->text(u"consultID")});
}

TEST_P(RegistrationSave, AMissingVisitSeriesStopsTheSaveWithItsOwnMessage)
{
    frmPatientsNew& s = fillNewPrivate();
    ws->exec(u"DELETE FROM idgen WHERE destName = ?"_s, {kSeriesConsultID});
    save();
    EXPECT_EQ(desk->prompter.lastText(), kIdGenFailedConsultIDText);
    EXPECT_EQ(
        ws->scalar(u"SELECT COUNT(*) FROM hPatients WHERE psurname = ?"_s, {u"OKAFOR"_s}).toInt(),
        0);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
}

TEST_P(RegistrationSave, QueuesTheAttendanceTextOrTheAppointmentWithItsReminder)
{
    ws->setDefault(u"SendSMS"_s, u"YES"_s);
    fillNewPrivate();
    save();
    const QString pno = newestPNo();
    auto sms = ws->connect(db::Database::SmsCenter);
    EXPECT_EQ(rowsOf(sms->query(u"SELECT * FROM MessageOut WHERE Code = ?"_s, {pno}),
                     {"Remarks", "Phone"}),
              QStringList{"ATTENDANCE|2348031234567"});

    fillNewPrivate(u"ADEYEMI"_s);
    patients::RegistrationForm f = screen->gatherForm();
    f.purpose = u"APPOINTMENT"_s;
    f.apptDate = kToday.addDays(3);
    f.apptTime = u"11:00 AM"_s;
    desk->prompter.answerYes();
    const QString second = patients::saveRegistration(desk->ctx, f);
    // Sent the day it is made, and a reminder the day before.
    const auto appt = sms->query(
        u"SELECT Remarks, SendDate FROM MessageOut WHERE Code = ? ORDER BY SendDate"_s, {second});
    ASSERT_EQ(appt.size(), 2u);
    EXPECT_EQ(appt.rows[0].text(u"Remarks"), u"APPOINTMENT"_s);
    EXPECT_EQ(appt.rows[0].date(u"SendDate"), kToday);
    EXPECT_EQ(appt.rows[1].date(u"SendDate"), kToday.addDays(2));
}

// ---------------------------------------------------------------------------------------
// Failure in the middle

TEST_P(RegistrationSave, FailureMidSaveLeavesNoRowsRepairsCountersAndKeepsThePatient)
{
    fillNewPrivate(u"FIRST"_s);
    save();
    const QString first = newestPNo();
    ASSERT_FALSE(first.isEmpty());
    const auto before = counters();

    // The timeline row is the last write of the transaction: everything before it must go.
    refuseTimelineRows(*ws, true);
    frmPatientsNew& s = fillNewPrivate(u"SECOND"_s);
    save();
    EXPECT_TRUE(desk->prompter.lastText().contains(u"hPatientsTimeline refused"_s))
        << desk->prompter.lastText().toStdString();
    EXPECT_EQ(newestPNo(), first);
    for (const char* table : {"hRecords", "billAccum", "hPatientsTimeline"})
        EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM %1 WHERE PNo > ?"_s.arg(QLatin1String(table)),
                             {first})
                      .toInt(),
                  0)
            << table;
    // Both numbers were burnt, and both counters are back where the data says.
    EXPECT_EQ(counters(), before);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), u"SECOND"_s);

    refuseTimelineRows(*ws, false);
    save();  // the same screen, pressed again
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    EXPECT_EQ(counters(), plusOne(before));  // the burnt numbers, reused
    EXPECT_EQ(
        ws->scalar(u"SELECT psurname FROM hPatients WHERE PNo = ?"_s, {newestPNo()}).toString(),
        u"SECOND"_s);
}

TEST_P(RegistrationSave, ConnectionCutMidSaveLeavesNothingAndTheNextSaveGoesThrough)
{
    if (ws->backend() != db::Backend::Postgres)
        GTEST_SKIP() << "a server connection to cut exists on PostgreSQL only";
    fillNewPrivate(u"FIRST"_s);
    save();
    const QString first = newestPNo();
    const auto before = counters();

    // The server ends the save's own backend just as the timeline row goes in: the patient,
    // visit and bill rows are written but not committed when the line goes dead.
    ws->connect()->execScript(
        u"CREATE FUNCTION cut_save() RETURNS trigger AS $$ BEGIN "
        "PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NEW; END $$ LANGUAGE plpgsql; "
        "CREATE TRIGGER cut_save BEFORE INSERT ON hPatientsTimeline FOR EACH ROW "
        "EXECUTE FUNCTION cut_save();"_s);
    frmPatientsNew& s = fillNewPrivate(u"SECOND"_s);
    save();
    EXPECT_NE(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    EXPECT_FALSE(desk->prompter.lastText().isEmpty());
    EXPECT_EQ(newestPNo(), first);
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM billAccum WHERE PNo > ?"_s, {first}).toInt(), 0);
    EXPECT_EQ(counters(), before);
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), u"SECOND"_s);

    ws->connect()->execScript(u"DROP TRIGGER cut_save ON hPatientsTimeline;"_s);
    save();
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    EXPECT_EQ(
        ws->scalar(u"SELECT psurname FROM hPatients WHERE PNo = ?"_s, {newestPNo()}).toString(),
        u"SECOND"_s);
}

// A server stopped and started again under one running desk: every connection the desk
// keeps (the shared ones behind the server clock and the timers, the draws', the idle ones)
// must come back by itself.
class ServerRestart : public RegistrationSave {
protected:
    void SetUp() override
    {
        if (GetParam() != db::Backend::Postgres)
            GTEST_SKIP() << "only a database server can be stopped under a running desk";
        server = ScratchServer::create();
        if (!server)
            GTEST_SKIP() << "PostgreSQL's programs are not installed";
        ws = std::make_unique<Workspace>(server->address());
        desk = std::make_unique<Desk>(*ws, QDateTime());  // the server's own clock
    }
    void TearDown() override
    {
        RegistrationSave::TearDown();
        ws.reset();
        server.reset();
    }
    std::unique_ptr<ScratchServer> server;
};

TEST_P(ServerRestart, SaveDuringTheOutageLeavesNothingAndTheFirstSaveAfterItGoesThrough)
{
    fillNewPrivate(u"FIRST"_s);
    MdiTolmar window(desk->ctx);
    window.load();
    auto* waitList = screen->findChild<QTimer*>(u"Timer1"_s);
    ASSERT_NE(waitList, nullptr);
    save();
    ASSERT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    const QString first = newestPNo();
    const auto before = counters();
    Session& session = desk->ctx.session();
    const auto tickAll = [&] {
        window.timer1Tick();
        window.timer3Tick();
        QMetaObject::invokeMethod(waitList, "timeout");
    };

    fillNewPrivate(u"SECOND"_s);
    server->stop();
    save();
    EXPECT_TRUE(desk->prompter.lastText().startsWith(kServerUnreachableText + "\n\n"))
        << desk->prompter.lastText().toStdString();
    // Two minutes of every timer: one box at most among them all.
    const size_t boxes = desk->prompter.messages().size();
    session.newWorkFlag = true;
    tickAll();
    tickAll();
    EXPECT_LE(desk->prompter.messages().size(), boxes + 1);
    EXPECT_TRUE(session.newWorkFlag);  // the main window's watch did not get through

    server->start();
    save();  // the same screen, pressed again
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);
    EXPECT_EQ(ws->scalar(u"SELECT psurname FROM hPatients WHERE PNo > ?"_s, {first}).toString(),
              u"SECOND"_s);
    for (const char* table : {"hPatients", "hRecords", "hPatientsTimeline"})
        EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM %1"_s.arg(QLatin1String(table))).toInt(), 2)
            << table;
    EXPECT_EQ(counters(), plusOne(before));
    // The timers are back at work, and quiet.
    const size_t settled = desk->prompter.messages().size();
    tickAll();
    EXPECT_FALSE(session.newWorkFlag);
    EXPECT_FALSE(desk->ctx.outageTold);
    EXPECT_EQ(desk->prompter.messages().size(), settled);
    for (const auto& m : desk->prompter.messages())
        EXPECT_FALSE(m.text.trimmed().isEmpty());
}

// ---------------------------------------------------------------------------------------
// Edit

TEST_P(RegistrationSave, EditWithANewPayerAndAVisitKeepsHistoryAndNamesBothPayers)
{
    // The second visit falls on the same day as the first.
    ws->setDefault(u"LockMultipleAttendnace"_s, u"NO"_s);
    fillNewPrivate();
    save();
    const QString pno = newestPNo();
    const QString firstVisit =
        ws->scalar(u"SELECT consultID FROM hRecords WHERE PNo = ?"_s, {pno}).toString();

    editPatient(pno);
    frmPatientsNew& s = *screen;
    fillIn(&s, {"cboPat=DANBURY", "cboClient=CORPORATE", "cboFile=ONE YEAR", "cboCard=SINGLE",
                "cboRef=NO", "cboRefHmo=NO", "cboClin=GENERAL", "cboPurpose=REVIEW"});
    desk->prompter.clear();
    save();
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully Edited and Updated"_s)
        << desk->prompter.informs().join(u" | "_s).toStdString();

    // The category is not touched by Edit.
    expectColumns(row(u"SELECT * FROM hPatients WHERE PNo = ?"_s, {pno}),
                  {"CoyName=0002", "pCatID=PRINCIPAL"});
    const auto v =
        row(u"SELECT * FROM hRecords WHERE PNo = ? AND Remarks = ?"_s, {pno, u"REVIEW"_s});
    ASSERT_TRUE(v);
    expectColumns(v, {"LastConsultID=" + firstVisit, "LastPurpose=CONSULTATION", "CoyName=0002"});
    // An edited patient brings no opening balance and no second registration fee.
    EXPECT_EQ(
        ws->scalar(u"SELECT COUNT(*) FROM billAccum WHERE consultID = ?"_s, {v->text(u"consultID")})
            .toInt(),
        1);
    EXPECT_TRUE(audits(pno).contains(
        u"Edit Reg: OKAFOR NGOZI:Changed Company from 0001:PRIVATE PATIENTS to "
        "DANBURY FLOUR MILLS:0002"_s))
        << audits(pno).join(u" | "_s).toStdString();
}

TEST_P(RegistrationSave, EditStoresABlankLimitAsTypedAndBillsAPendingCardRenewal)
{
    ws->setDefault(u"Admission_Limit_Exists"_s, u"NO"_s);
    ws->exec(u"UPDATE hRetainership SET CardRenewAmount = 800 WHERE retainID = '0004'"_s);
    fillNewPrivate();
    save();
    const QString pno = newestPNo();
    editPatient(pno);
    patients::RegistrationForm f = screen->gatherForm();
    f.selectedRetainID = u"0004"_s;
    f.selectedCoyName = u"HYLOVA HMO"_s;
    f.selectedClientCat = u"HMO"_s;
    f.enrolleeNo = u"HY/0042"_s;
    f.admissionLimit.clear();
    f.takeAttendance = false;
    f.pendingCardRenewal = true;
    desk->prompter.answerYes();
    ASSERT_EQ(patients::saveRegistration(desk->ctx, f), pno);
    // Add would have stored 0.
    expectColumns(row(u"SELECT * FROM hPatients WHERE PNo = ?"_s, {pno}),
                  {"AdmissionDaysLimit=", "empno=HY/0042"});
    // Loaded again the limit is still blank, not "0", and saved as loaded it stays NULL.
    editPatient(pno);
    EXPECT_EQ(edit(screen.get(), "txtAdmitLimit")->text(), QString());
    child<QCheckBox>(screen.get(), "chkReg")->setChecked(false);
    save();
    EXPECT_TRUE(row(u"SELECT AdmissionDaysLimit FROM hPatients WHERE PNo = ?"_s, {pno})
                    ->isNull(u"AdmissionDaysLimit"))
        << desk->prompter.lastText().toStdString();
    // Its number is left for the next visit to claim.
    expectColumns(
        row(u"SELECT * FROM billAccum WHERE PNo = ? AND drgName = 'CARD RENEWAL FEE'"_s, {pno}),
        {"Price=800", "Category=CARD_RENEW", "consultID="});
}

// ---------------------------------------------------------------------------------------
// Dependants

TEST_P(RegistrationSave, DependantInheritsThePayerAndADependantCannotHaveDependants)
{
    fillNewPrivate();
    save();
    const QString principal = newestPNo();

    frmPatientsNew& s = *screen;
    s.editVal(principal);
    click(&s, "cmdPatDep");
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(combo(&s, "cboTitle")->currentIndex(), 0);
    expectControls(&s, {"txtfirstNAme=", "txtsurNAme=OKAFOR", "cboMat="});
    fillIn(&s, {"txtfirstNAme=CHIDI", "txtPhone=08030000001", "cboNew=NEW", "cboMat=CHILD",
                "txtSex=MALE", "cboClin=GENERAL", "cboPurpose=CONSULTATION"});
    desk->prompter.answerYes();  // Check before save
    desk->prompter.answerNo();   // Any other Dependant?
    click(&s, "OKButton");
    EXPECT_TRUE(desk->prompter.saw(u"Any other Dependant?"_s));

    const QString dependant = newestPNo();
    ASSERT_NE(dependant, principal);
    expectColumns(row(u"SELECT * FROM hPatients WHERE PNo = ?"_s, {dependant}),
                  {"pCatID=DEPENDANT", "Principal=" + principal, "CoyName=0001", "psurname=OKAFOR",
                   "nextOfKin=EMEKA OKAFOR"});
    EXPECT_EQ(count(u"billAccum"_s, dependant), 2);  // its own registration fee

    // Yes to "Any other Dependant?" starts the next one of the same principal.
    click(&s, "cmdCancel");
    s.editVal(principal);
    click(&s, "cmdPatDep");
    fillIn(&s, {"txtfirstNAme=ADA", "txtPhone=08030000002", "cboNew=EXISTING", "cboMat=CHILD",
                "chkReg=0"});
    desk->prompter.answerYes(2);
    click(&s, "OKButton");
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    expectControls(&s, {"txtfirstNAme=", "txtsurNAme=OKAFOR"});
    EXPECT_EQ(ws->scalar(u"SELECT COUNT(*) FROM hPatients WHERE Principal = ? "
                         "AND pCatID = 'DEPENDANT'"_s,
                         {principal})
                  .toInt(),
              2);
    click(&s, "cmdCancel");

    desk->prompter.clear();
    s.editVal(dependant);
    click(&s, "cmdPatDep");
    EXPECT_EQ(desk->prompter.lastText(),
              u"Select a Principal Patient! Cannot Add Dependants to existing "
              "Dependant!!"_s);
    EXPECT_TRUE(edit(&s, "txtsurNAme")->text().isEmpty());
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(RegistrationSave);
TOLMAR_INSTANTIATE_BACKENDS(ServerRestart);
