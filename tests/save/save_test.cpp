// The registration Save driven through frmPatientsNew: the checks and their order, the rows
// one save leaves behind, what a failure in the middle leaves (nothing, and counters put
// right), and dependants.
#include "registration/registrationfixture.h"

#include "core/command.h"
#include "core/idgen.h"
#include "core/mditolmar.h"
#include "patients/registrationsave.h"

#include <QCheckBox>
#include <QTimer>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class RegistrationSave : public RegistrationTest {
protected:
    // A new private patient, every required field filled, attendance at GENERAL.
    frmPatientsNew& fillNewPrivate(const QString& surname = QStringLiteral("OKAFOR"))
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
        return ws->scalar(QStringLiteral("SELECT PNo FROM hPatients ORDER BY PNo DESC LIMIT 1"))
            .toString();
    }
    qint64 counter(const QString& series) const
    {
        return ws->scalar(QStringLiteral("SELECT id FROM idgen WHERE destName = ?"), {series})
            .toLongLong();
    }
    int count(const QString& table, const QString& pno) const
    {
        return ws->scalar(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE PNo = ?").arg(table),
                          {pno})
            .toInt();
    }
    std::optional<db::Row> row(const QString& sql, const db::Params& params) const
    {
        return ws->connect()->queryOne(sql, params);
    }
    QStringList audits(const QString& tranCode) const
    {
        QStringList out;
        for (const db::Row& r :
             ws->connect()
                 ->query(QStringLiteral("SELECT userAction FROM AuditTrail WHERE TranCode = ? "
                                        "ORDER BY userAction"),
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
    const qint64 patients = counter(kSeriesPatientNo);
    const qint64 visits = counter(kSeriesConsultID);
    const std::vector<CheckCase> cases{
        {"new or existing", [](auto& f) { f.newReg.clear(); },
         "Specify if Registration is new OR Existing", "cboNew"},
        {"title", [](auto& f) { f.title.clear(); }, "Specify Patient Title/Salutation",
         "cboTitle"},
        {"payer of spaces", [](auto& f) { f.company = QStringLiteral("  "); },
         " Company Name cannot be empty", "cboPat"},
        {"payer code too long", [](auto& f) { f.selectedRetainID = QStringLiteral("00000001"); },
         "Invalid Company Code", "cboPat"},
        {"enrollee of an HMO patient",
         [](auto& f) {
             f.selectedClientCat = QStringLiteral("NHIS");
             f.enrolleeNo.clear();
         },
         "HMO Enrolle No Needed", "txtEmp"},
        {"admission limit of an HMO patient",
         [](auto& f) {
             f.selectedClientCat = QStringLiteral("HMO");
             f.enrolleeNo = QStringLiteral("HY/123");
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
        {"maturity of one blank", [](auto& f) { f.maturity = QStringLiteral(" "); },
         " Patient Maturity  Cannot be Blank", "cboMat"},
        {"fee for service", [](auto& f) { f.feeForService.clear(); },
         "Fee for Service Field  Cannot be Blank", "cboRef"},
        {"hmo referral of one blank", [](auto& f) { f.hmoReferral = QStringLiteral(" "); },
         "HMO Referal Field  Cannot be Blank", "cboRefHmo"},
        {"area", [](auto& f) { f.area = QStringLiteral(" "); }, "Specify Patient Residential Area",
         "cboArea"},
        {"surname of spaces", [](auto& f) { f.surname = QStringLiteral("   "); },
         " Surname cannot be empty", "txtsurNAme"},
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
             f.purpose = QStringLiteral("APPOINTMENT");
             f.apptDate = QDate();
         },
         "Specify Appointment Date", "dtNext"},
        {"phone", [](auto& f) { f.phone = QStringLiteral(" "); },
         "Patient's Phone No Required! 11 Digits Onlt!! GSM Only. eg 08031234567", "txtPhone"},
        {"next of kin", [](auto& f) { f.nextOfKin.clear(); }, "Next of Kin Required", "txtKin"},
        {"next of kin phone", [](auto& f) { f.nokPhone = QStringLiteral("  "); },
         "Next of Kin Phone No Required", "txtNOKPhone"},
    };
    for (const CheckCase& c : cases) {
        SCOPED_TRACE(c.what);
        patients::RegistrationForm f = good;
        c.spoil(f);
        try {
            patients::saveRegistration(desk->ctx, f);
            ADD_FAILURE() << "saved in spite of " << c.what;
        } catch (const CheckFailed& e) {
            EXPECT_EQ(e.message(), c.message);
            EXPECT_EQ(e.focus(), c.focus);
        }
    }
    // Without the clinic and purpose boxes, an unticked attendance asks for neither.
    patients::RegistrationForm noVisit = good;
    noVisit.takeAttendance = false;
    noVisit.clinicName.clear();
    noVisit.purpose.clear();
    noVisit.nokPhone.clear();
    try {
        patients::saveRegistration(desk->ctx, noVisit);
        ADD_FAILURE() << "saved without a next of kin phone";
    } catch (const CheckFailed& e) {
        EXPECT_EQ(e.focus(), QStringLiteral("txtNOKPhone"));
    }
    EXPECT_TRUE(desk->prompter.messages().empty());  // not even "Check before save"
    EXPECT_EQ(counter(kSeriesPatientNo), patients);
    EXPECT_EQ(counter(kSeriesConsultID), visits);
}

TEST_P(RegistrationSave, FirstFailingCheckWinsAndEmptyPayerCodeIsCritical)
{
    fillNewPrivate();
    patients::RegistrationForm f = screen->gatherForm();
    f.nokPhone.clear();
    f.newReg.clear();
    EXPECT_THROW(
        {
            try {
                patients::saveRegistration(desk->ctx, f);
            } catch (const CheckFailed& e) {
                EXPECT_EQ(e.focus(), QStringLiteral("cboNew"));
                throw;
            }
        },
        CheckFailed);

    f = screen->gatherForm();
    f.selectedRetainID.clear();
    try {
        patients::saveRegistration(desk->ctx, f);
        ADD_FAILURE();
    } catch (const CheckFailed& e) {
        EXPECT_EQ(e.message(), QStringLiteral("Empty Company Code not Allowed"));
        EXPECT_EQ(e.title(), QStringLiteral(" Select Company Name"));
        EXPECT_EQ(e.icon(), Icon::Critical);
    }
}

TEST_P(RegistrationSave, ScreenShowsTheFailedCheckAndFocusesItsControl)
{
    frmPatientsNew& s = fillNewPrivate();
    edit(&s, "txtNOKPhone")->clear();
    click(&s, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Next of Kin Phone No Required"));
    EXPECT_EQ(s.focusWidget(), edit(&s, "txtNOKPhone"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE psurname = ?"),
                         {QStringLiteral("OKAFOR")})
                  .toInt(),
              0);
}

TEST_P(RegistrationSave, AnsweringNoLeavesThePatientOnScreenUnsaved)
{
    frmPatientsNew& s = fillNewPrivate();
    const qint64 before = counter(kSeriesPatientNo);
    save(false);
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("Check before save"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Are you sure to save"));
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("OKAFOR"));
    EXPECT_EQ(counter(kSeriesPatientNo), before);
}

// ---------------------------------------------------------------------------------------
// Add

TEST_P(RegistrationSave, NewPrivatePatientWithAttendanceWritesPatientVisitBillAndTimeline)
{
    ws->exec(QStringLiteral("UPDATE hRetainership SET RegAmount = 1500 WHERE retainID = '0001'"));
    fillNewPrivate();
    const qint64 patientsBefore = counter(kSeriesPatientNo);
    const qint64 visitsBefore = counter(kSeriesConsultID);
    save();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(counter(kSeriesPatientNo), patientsBefore + 1);
    EXPECT_EQ(counter(kSeriesConsultID), visitsBefore + 1);

    const QString pno = newestPNo();
    const auto p = row(QStringLiteral("SELECT * FROM hPatients WHERE PNo = ?"), {pno});
    const auto v = row(QStringLiteral("SELECT * FROM hRecords WHERE PNo = ?"), {pno});
    ASSERT_TRUE(p && v);
    const QString consultID = v->text(u"consultID");
    EXPECT_TRUE(consultID.startsWith(QStringLiteral("001")));
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
        QStringLiteral("SELECT drgName, Price, consultID FROM billAccum WHERE PNo = ? "
                       "ORDER BY drgName"),
        {pno});
    ASSERT_EQ(lines.size(), 2u);
    expectColumns(lines.rows[0], {"drgName=ATTENDANCE", "Price=0", "consultID=" + consultID});
    expectColumns(lines.rows[1], {"drgName=REGISTRATION", "Price=1500", "consultID=" + consultID});
    expectColumns(row(QStringLiteral("SELECT * FROM hPatientsTimeline WHERE PNo = ?"), {pno}),
                  {"consultID=" + consultID, "ServicePoint=ATTENDANCE", "EntryOrExit=ENTRY|EXIT"});

    EXPECT_EQ(audits(pno), (QStringList{"Insert Reg for OKAFOR [NGOZI]", "Reg Fee for OKAFOR [NGOZI]"}));
    EXPECT_EQ(audits(consultID).size(), 1);
    EXPECT_EQ(screen->mode(), frmPatientsNew::Mode::View);
    EXPECT_TRUE(edit(screen.get(), "txtsurNAme")->text().isEmpty());  // cleared for the next
}

TEST_P(RegistrationSave, ExistingPatientWithoutAttendanceWritesThePatientOnlyButDrawsAVisitNo)
{
    frmPatientsNew& s = fillNewPrivate();
    pick(&s, "cboNew", QStringLiteral("EXISTING"));
    child<QCheckBox>(&s, "chkReg")->setChecked(false);
    const qint64 visitsBefore = counter(kSeriesConsultID);
    save();
    const QString pno = newestPNo();
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT NewReg FROM hPatients WHERE PNo = ?"), {pno})
                  .toString(),
              QStringLiteral("NO"));
    EXPECT_EQ(count(QStringLiteral("hRecords"), pno), 0);
    EXPECT_EQ(count(QStringLiteral("billAccum"), pno), 0);  // no registration fee either
    EXPECT_EQ(count(QStringLiteral("hPatientsTimeline"), pno), 0);
    EXPECT_EQ(counter(kSeriesConsultID), visitsBefore + 1);
}

TEST_P(RegistrationSave, AppointmentMakesBothAnAppointmentAndAVisitOnOneNumber)
{
    fillNewPrivate();
    patients::RegistrationForm f = screen->gatherForm();
    f.purpose = QStringLiteral("APPOINTMENT");
    f.apptDate = kToday.addDays(7);
    f.apptTime = QStringLiteral("10:00 AM");
    desk->prompter.answerYes();
    const QString pno = patients::saveRegistration(desk->ctx, f);
    ASSERT_FALSE(pno.isEmpty());
    const auto a = row(QStringLiteral("SELECT * FROM happointment WHERE PNo = ?"), {pno});
    ASSERT_TRUE(a);
    EXPECT_EQ(a->text(u"Remarks"), QStringLiteral("GENERAL Appointment"));
    EXPECT_EQ(a->date(u"ApptDate"), kToday.addDays(7));
    EXPECT_EQ(a->toInt(u"attendedto"), 0);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT consultID FROM hRecords WHERE PNo = ?"), {pno})
                  .toString(),
              a->text(u"consultID"));
}

TEST_P(RegistrationSave, NewPatientWithoutAttendanceIsBilledOnANumberNoVisitCarries)
{
    ws->exec(QStringLiteral("UPDATE hRetainership SET RegAmount = 2000 WHERE retainID = '0001'"));
    frmPatientsNew& s = fillNewPrivate();
    child<QCheckBox>(&s, "chkReg")->setChecked(false);
    save();
    const QString pno = newestPNo();
    const auto line = ws->connect()->query(
        QStringLiteral("SELECT drgName, Price, consultID, Category, revType FROM billAccum "
                       "WHERE PNo = ?"),
        {pno});
    ASSERT_EQ(line.size(), 1u);
    EXPECT_EQ(line.front().text(u"drgName"), QStringLiteral("REGISTRATION"));
    EXPECT_EQ(line.front().toDouble(u"Price"), 2000);
    EXPECT_EQ(line.front().text(u"Category"), QStringLiteral("REGISTRATION"));
    EXPECT_FALSE(line.front().text(u"consultID").isEmpty());
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hRecords WHERE consultID = ?"),
                         {line.front().text(u"consultID")})
                  .toInt(),
              0);
}

TEST_P(RegistrationSave, CarriedOverDebtOfANewPatientBecomesAnOpeningBalanceLine)
{
    frmPatientsNew& s = fillNewPrivate();
    desk->prompter.answerInput(QStringLiteral("750.50"));
    QTest::mouseDClick(child<QLabel>(&s, "lblDebt"), Qt::LeftButton);
    save();
    const QString pno = newestPNo();
    const auto v = row(QStringLiteral("SELECT consultID, Debt FROM hRecords WHERE PNo = ?"), {pno});
    ASSERT_TRUE(v);
    EXPECT_DOUBLE_EQ(v->toDouble(u"Debt"), 750.50);
    const auto debt = row(QStringLiteral("SELECT Price, SubTotal, consultID FROM billAccum "
                                         "WHERE PNo = ? AND drgName = 'OPENING_BALANCE_DEBT'"),
                          {pno});
    ASSERT_TRUE(debt);
    EXPECT_DOUBLE_EQ(debt->toDouble(u"Price"), 750.50);
    EXPECT_DOUBLE_EQ(debt->toDouble(u"SubTotal"), 750.50);
    EXPECT_EQ(debt->text(u"consultID"), v->text(u"consultID"));
}

TEST_P(RegistrationSave, AMissingVisitSeriesStopsTheSaveWithItsOwnMessage)
{
    frmPatientsNew& s = fillNewPrivate();
    ws->exec(QStringLiteral("DELETE FROM idgen WHERE destName = ?"), {kSeriesConsultID});
    save();
    EXPECT_EQ(desk->prompter.lastText(), kIdGenFailedConsultIDText);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE psurname = ?"),
                         {QStringLiteral("OKAFOR")})
                  .toInt(),
              0);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
}

TEST_P(RegistrationSave, QueuesTheAttendanceTextOrTheAppointmentWithItsReminder)
{
    ws->setDefault(QStringLiteral("SendSMS"), QStringLiteral("YES"));
    fillNewPrivate();
    save();
    const QString pno = newestPNo();
    auto sms = ws->connect(db::Database::SmsCenter);
    const auto attendance = sms->query(
        QStringLiteral("SELECT Remarks, Phone FROM MessageOut WHERE Code = ?"), {pno});
    ASSERT_EQ(attendance.size(), 1u);
    EXPECT_EQ(attendance.front().text(u"Remarks"), QStringLiteral("ATTENDANCE"));
    EXPECT_EQ(attendance.front().text(u"Phone"), QStringLiteral("2348031234567"));

    fillNewPrivate(QStringLiteral("ADEYEMI"));
    patients::RegistrationForm f = screen->gatherForm();
    f.purpose = QStringLiteral("APPOINTMENT");
    f.apptDate = kToday.addDays(3);
    f.apptTime = QStringLiteral("11:00 AM");
    desk->prompter.answerYes();
    const QString second = patients::saveRegistration(desk->ctx, f);
    const auto appt = sms->query(
        QStringLiteral("SELECT Remarks, SendDate FROM MessageOut WHERE Code = ? ORDER BY SendDate"),
        {second});
    ASSERT_EQ(appt.size(), 2u);  // the day itself and a reminder the day before
    EXPECT_EQ(appt.rows[0].text(u"Remarks"), QStringLiteral("APPOINTMENT"));
    EXPECT_EQ(appt.rows[0].date(u"SendDate"), kToday);
    EXPECT_EQ(appt.rows[1].date(u"SendDate"), kToday.addDays(2));
}

// ---------------------------------------------------------------------------------------
// Failure in the middle

TEST_P(RegistrationSave, FailureMidSaveLeavesNoRowsRepairsCountersAndKeepsThePatient)
{
    fillNewPrivate(QStringLiteral("FIRST"));
    save();
    const QString first = newestPNo();
    ASSERT_FALSE(first.isEmpty());
    const qint64 patients = counter(kSeriesPatientNo);
    const qint64 visits = counter(kSeriesConsultID);

    // The timeline row is the last write of the transaction: everything before it must go.
    refuseTimelineRows(*ws, true);
    frmPatientsNew& s = fillNewPrivate(QStringLiteral("SECOND"));
    save();
    EXPECT_TRUE(desk->prompter.lastText().contains(QStringLiteral("hPatientsTimeline refused")))
        << desk->prompter.lastText().toStdString();
    EXPECT_EQ(newestPNo(), first);
    for (const char* table : {"hRecords", "billAccum", "hPatientsTimeline"})
        EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM %1 WHERE PNo > ?")
                                 .arg(QLatin1String(table)),
                             {first})
                      .toInt(),
                  0)
            << table;
    // Both numbers were burnt, and both counters are back where the data says.
    EXPECT_EQ(counter(kSeriesPatientNo), patients);
    EXPECT_EQ(counter(kSeriesConsultID), visits);
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("SECOND"));

    refuseTimelineRows(*ws, false);
    save();  // the same screen, pressed again
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(counter(kSeriesPatientNo), patients + 1);  // the burnt number, reused
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT psurname FROM hPatients WHERE PNo = ?"),
                         {newestPNo()})
                  .toString(),
              QStringLiteral("SECOND"));
}

TEST_P(RegistrationSave, ConnectionCutMidSaveLeavesNothingAndTheNextSaveGoesThrough)
{
    if (ws->backend() != db::Backend::Postgres)
        GTEST_SKIP() << "a server connection to cut exists on PostgreSQL only";
    fillNewPrivate(QStringLiteral("FIRST"));
    save();
    const QString first = newestPNo();
    const qint64 patients = counter(kSeriesPatientNo);
    const qint64 visits = counter(kSeriesConsultID);

    // The server ends the save's own backend just as the timeline row goes in: the patient,
    // visit and bill rows are written but not committed when the line goes dead.
    ws->connect()->execScript(QStringLiteral(
        "CREATE FUNCTION cut_save() RETURNS trigger AS $$ BEGIN "
        "PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NEW; END $$ LANGUAGE plpgsql; "
        "CREATE TRIGGER cut_save BEFORE INSERT ON hPatientsTimeline FOR EACH ROW "
        "EXECUTE FUNCTION cut_save();"));
    frmPatientsNew& s = fillNewPrivate(QStringLiteral("SECOND"));
    save();
    EXPECT_NE(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_FALSE(desk->prompter.lastText().isEmpty());
    EXPECT_EQ(newestPNo(), first);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM billAccum WHERE PNo > ?"), {first})
                  .toInt(),
              0);
    EXPECT_EQ(counter(kSeriesPatientNo), patients);
    EXPECT_EQ(counter(kSeriesConsultID), visits);
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("SECOND"));

    ws->connect()->execScript(QStringLiteral("DROP TRIGGER cut_save ON hPatientsTimeline;"));
    save();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT psurname FROM hPatients WHERE PNo = ?"),
                         {newestPNo()})
                  .toString(),
              QStringLiteral("SECOND"));
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
    fillNewPrivate(QStringLiteral("FIRST"));
    MdiTolmar window(desk->ctx);
    window.load();
    auto* waitList = screen->findChild<QTimer*>(QStringLiteral("Timer1"));
    ASSERT_NE(waitList, nullptr);
    save();
    ASSERT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    const QString first = newestPNo();
    const qint64 patients = counter(kSeriesPatientNo);
    const qint64 visits = counter(kSeriesConsultID);
    Session& session = desk->ctx.session();
    const auto tickAll = [&] {
        window.timer1Tick();
        window.timer3Tick();
        QMetaObject::invokeMethod(waitList, "timeout");
    };

    fillNewPrivate(QStringLiteral("SECOND"));
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
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT psurname FROM hPatients WHERE PNo > ?"), {first})
                  .toString(),
              QStringLiteral("SECOND"));
    for (const char* table : {"hPatients", "hRecords", "hPatientsTimeline"})
        EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM %1").arg(QLatin1String(table)))
                      .toInt(),
                  2)
            << table;
    EXPECT_EQ(counter(kSeriesPatientNo), patients + 1);
    EXPECT_EQ(counter(kSeriesConsultID), visits + 1);
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
    ws->setDefault(QStringLiteral("LockMultipleAttendnace"), QStringLiteral("NO"));
    fillNewPrivate();
    save();
    const QString pno = newestPNo();
    const QString firstVisit =
        ws->scalar(QStringLiteral("SELECT consultID FROM hRecords WHERE PNo = ?"), {pno})
            .toString();

    editPatient(pno);
    frmPatientsNew& s = *screen;
    pick(&s, "cboPat", QStringLiteral("DANBURY"));
    pick(&s, "cboClient", QStringLiteral("CORPORATE"));
    pick(&s, "cboFile", QStringLiteral("ONE YEAR"));
    pick(&s, "cboCard", QStringLiteral("SINGLE"));
    pick(&s, "cboRef", QStringLiteral("NO"));
    pick(&s, "cboRefHmo", QStringLiteral("NO"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    pick(&s, "cboPurpose", QStringLiteral("REVIEW"));
    desk->prompter.clear();
    save();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully Edited and Updated"))
        << desk->prompter.informs().join(QStringLiteral(" | ")).toStdString();

    const auto p = row(QStringLiteral("SELECT * FROM hPatients WHERE PNo = ?"), {pno});
    ASSERT_TRUE(p);
    EXPECT_EQ(p->text(u"CoyName"), QStringLiteral("0002"));
    EXPECT_EQ(p->text(u"pCatID"), QStringLiteral("PRINCIPAL"));  // not touched by Edit
    const auto v = row(QStringLiteral("SELECT * FROM hRecords WHERE PNo = ? AND Remarks = ?"),
                       {pno, QStringLiteral("REVIEW")});
    ASSERT_TRUE(v);
    EXPECT_EQ(v->text(u"LastConsultID"), firstVisit);
    EXPECT_EQ(v->text(u"LastPurpose"), QStringLiteral("CONSULTATION"));
    EXPECT_EQ(v->text(u"CoyName"), QStringLiteral("0002"));
    // An edited patient brings no opening balance and no second registration fee.
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM billAccum WHERE consultID = ?"),
                         {v->text(u"consultID")})
                  .toInt(),
              1);
    EXPECT_TRUE(audits(pno).contains(
        QStringLiteral("Edit Reg: OKAFOR NGOZI:Changed Company from 0001:PRIVATE PATIENTS to "
                       "DANBURY FLOUR MILLS:0002")))
        << audits(pno).join(QStringLiteral(" | ")).toStdString();
}

TEST_P(RegistrationSave, EditStoresABlankLimitAsTypedAndBillsAPendingCardRenewal)
{
    ws->setDefault(QStringLiteral("Admission_Limit_Exists"), QStringLiteral("NO"));
    ws->exec(QStringLiteral("UPDATE hRetainership SET CardRenewAmount = 800 WHERE retainID = '0004'"));
    fillNewPrivate();
    save();
    const QString pno = newestPNo();
    editPatient(pno);
    patients::RegistrationForm f = screen->gatherForm();
    f.selectedRetainID = QStringLiteral("0004");
    f.selectedCoyName = QStringLiteral("HYLOVA HMO");
    f.selectedClientCat = QStringLiteral("HMO");
    f.enrolleeNo = QStringLiteral("HY/0042");
    f.admissionLimit.clear();
    f.takeAttendance = false;
    f.pendingCardRenewal = true;
    desk->prompter.answerYes();
    ASSERT_EQ(patients::saveRegistration(desk->ctx, f), pno);
    const auto p = row(QStringLiteral("SELECT * FROM hPatients WHERE PNo = ?"), {pno});
    ASSERT_TRUE(p);
    EXPECT_TRUE(p->isNull(u"AdmissionDaysLimit"));  // Add would have stored 0
    EXPECT_EQ(p->text(u"empno"), QStringLiteral("HY/0042"));
    // Loaded again the limit is still blank, not "0", and saved as loaded it stays NULL.
    editPatient(pno);
    EXPECT_EQ(edit(screen.get(), "txtAdmitLimit")->text(), QString());
    child<QCheckBox>(screen.get(), "chkReg")->setChecked(false);
    save();
    EXPECT_TRUE(row(QStringLiteral("SELECT AdmissionDaysLimit FROM hPatients WHERE PNo = ?"),
                    {pno})
                    ->isNull(u"AdmissionDaysLimit"))
        << desk->prompter.lastText().toStdString();
    const auto renew = row(QStringLiteral("SELECT Price, Category, consultID FROM billAccum "
                                          "WHERE PNo = ? AND drgName = 'CARD RENEWAL FEE'"),
                           {pno});
    ASSERT_TRUE(renew);
    EXPECT_DOUBLE_EQ(renew->toDouble(u"Price"), 800);
    EXPECT_EQ(renew->text(u"Category"), QStringLiteral("CARD_RENEW"));
    EXPECT_TRUE(renew->text(u"consultID").isEmpty());  // claimed by the next visit
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
    EXPECT_TRUE(edit(&s, "txtfirstNAme")->text().isEmpty());
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("OKAFOR"));
    EXPECT_EQ(combo(&s, "cboTitle")->currentIndex(), 0);
    EXPECT_EQ(combo(&s, "cboMat")->currentIndex(), -1);
    edit(&s, "txtfirstNAme")->setText(QStringLiteral("CHIDI"));
    edit(&s, "txtPhone")->setText(QStringLiteral("08030000001"));
    pick(&s, "cboNew", QStringLiteral("NEW"));
    pick(&s, "cboMat", QStringLiteral("CHILD"));
    pick(&s, "txtSex", QStringLiteral("MALE"));
    pick(&s, "cboClin", QStringLiteral("GENERAL"));
    pick(&s, "cboPurpose", QStringLiteral("CONSULTATION"));
    desk->prompter.answerYes();  // Check before save
    desk->prompter.answerNo();   // Any other Dependant?
    click(&s, "OKButton");
    EXPECT_TRUE(desk->prompter.saw(QStringLiteral("Any other Dependant?")));

    const QString dependant = newestPNo();
    ASSERT_NE(dependant, principal);
    const auto d = row(QStringLiteral("SELECT * FROM hPatients WHERE PNo = ?"), {dependant});
    ASSERT_TRUE(d);
    EXPECT_EQ(d->text(u"pCatID"), QStringLiteral("DEPENDANT"));
    EXPECT_EQ(d->text(u"Principal"), principal);
    EXPECT_EQ(d->text(u"CoyName"), QStringLiteral("0001"));
    EXPECT_EQ(d->text(u"psurname"), QStringLiteral("OKAFOR"));
    EXPECT_EQ(d->text(u"nextOfKin"), QStringLiteral("EMEKA OKAFOR"));
    EXPECT_EQ(count(QStringLiteral("billAccum"), dependant), 2);  // its own registration fee

    // Yes to "Any other Dependant?" starts the next one of the same principal.
    click(&s, "cmdCancel");
    s.editVal(principal);
    click(&s, "cmdPatDep");
    edit(&s, "txtfirstNAme")->setText(QStringLiteral("ADA"));
    edit(&s, "txtPhone")->setText(QStringLiteral("08030000002"));
    pick(&s, "cboNew", QStringLiteral("EXISTING"));
    pick(&s, "cboMat", QStringLiteral("CHILD"));
    child<QCheckBox>(&s, "chkReg")->setChecked(false);
    desk->prompter.answerYes(2);
    click(&s, "OKButton");
    EXPECT_EQ(s.mode(), frmPatientsNew::Mode::Add);
    EXPECT_TRUE(edit(&s, "txtfirstNAme")->text().isEmpty());
    EXPECT_EQ(edit(&s, "txtsurNAme")->text(), QStringLiteral("OKAFOR"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE Principal = ? "
                                        "AND pCatID = 'DEPENDANT'"),
                         {principal})
                  .toInt(),
              2);
    click(&s, "cmdCancel");

    desk->prompter.clear();
    s.editVal(dependant);
    click(&s, "cmdPatDep");
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Select a Principal Patient! Cannot Add Dependants to existing "
                             "Dependant!!"));
    EXPECT_TRUE(edit(&s, "txtsurNAme")->text().isEmpty());
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(RegistrationSave);
TOLMAR_INSTANTIATE_BACKENDS(ServerRestart);
