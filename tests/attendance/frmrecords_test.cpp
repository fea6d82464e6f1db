// frmRecords driven by control name: a whole visit to the rows it leaves, the Save checks,
// picking and the card, purposes, editing, split bills, deleting, and what a failure in
// the middle of a save leaves behind.
#include "mainwindow/mainwindowfixture.h"
#include "registration/registrationfixture.h"

#include "clinical/attendance.h"
#include "clinical/frmrecords.h"

#include "core/command.h"
#include "core/formats.h"
#include "core/idgen.h"
#include "core/ui/formbuilder.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QTableView>

#include <functional>

using namespace tolmar;
using namespace tolmar::test;

namespace {

const QString kAdebayo = QStringLiteral("001/000000001");

// A desk with frmRecords open, its clock on the database's own date (today's visits are the
// database's today), and an HMO patient on file.
class Attendance : public RegistrationTest {
protected:
    void SetUp() override
    {
        RegistrationTest::SetUp();
        addPatient({QStringLiteral("001/000000001"), QStringLiteral("ADEBAYO"),
                    QStringLiteral("TOLU"), QStringLiteral("0004"), QStringLiteral("HMO")});
        ws->exec(QStringLiteral("UPDATE hPatients SET empno = 'HY/77', policyType = 'NIL' "
                                "WHERE PNo = '001/000000001'"));
    }
    // Today's visit of the HMO patient, as another desk took it.
    void addTodaysVisit()
    {
        addVisit(kAdebayo, databaseToday(), QString());
        ws->exec(QStringLiteral("UPDATE hRecords SET clientCat = 'HMO', CoyName = '0004', "
                                "referal = 'NO', HmoRef = 'NO'"));
    }
    QDate databaseToday() const
    {
        return ws->scalar(ws->backend() == db::Backend::Sqlite
                              ? QStringLiteral("SELECT date('now', 'localtime')")
                              : QStringLiteral("SELECT CURRENT_DATE"))
            .toDate();
    }
    frmRecords& records(const QVariantMap& args = {})
    {
        desk->clock.setServer(QDateTime(databaseToday(), QTime(9, 30)));
        desk->startUp();
        rec = std::make_unique<frmRecords>(desk->ctx, args);
        rec->show();
        return *rec;
    }
    // Picks the patient in cboVehNo as the desk would from the search result.
    void pickPatient(const QString& pno)
    {
        QComboBox* box = combo(rec.get(), "cboVehNo");
        box->addItem(clinical::patientEntry(*ws->connect(), pno));
        box->setCurrentIndex(box->count() - 1);
    }
    void fillVisit(const QString& purpose = QStringLiteral("CONSULTATION"))
    {
        pick(rec.get(), "cboType", QStringLiteral("GENERAL"));
        pick(rec.get(), "cboPurpose", purpose);
    }
    void save() { click(rec.get(), "OKButton"); }
    QString focused() const
    {
        return rec->focusWidget() ? rec->focusWidget()->objectName() : QString();
    }
    int count(const QString& sql, const db::Params& params = {}) const
    {
        return ws->scalar(sql, params).toInt();
    }
    QTableView* visits() const { return child<QTableView>(rec.get(), "grdData"); }
    QString label(const char* name) const { return child<QLabel>(rec.get(), name)->text(); }
    std::unique_ptr<frmRecords> rec;
};

TEST_P(Attendance, AVisitFoundTakenAndSavedWritesItsRowItsLineAndClaimsWhatWaited)
{
    // A renewal billed at registration waits for the patient's next visit.
    ws->exec(QStringLiteral("INSERT INTO billAccum (dtDate, drgName, Price, PNo, consultID) "
                            "VALUES (?, 'CARD RENEWAL FEE', 1500, ?, '')"),
             {kToday, kAdebayo});
    frmRecords& s = records();
    edit(&s, "txtName")->setText(QStringLiteral("adeb"));
    click(&s, "cmdOK");
    EXPECT_EQ(label("lblFound"), QStringLiteral("1 Records Found"));
    EXPECT_EQ(items(combo(&s, "cboVehNo")), QStringList{"ADEBAYO TOLU [001/000000001]"});
    doubleClickRow(visits(), 0);  // a patient found: a new visit for that patient
    EXPECT_EQ(label("Label5"), QStringLiteral("ADEBAYO TOLU"));
    EXPECT_EQ(combo(&s, "cboPat")->currentText(), QStringLiteral("HYLOVA HMO [0004]"));
    EXPECT_EQ(combo(&s, "cboClient")->currentText(), QStringLiteral("HMO"));
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), QStringLiteral("NO"));  // NULL reads "NO"
    EXPECT_EQ(items(combo(&s, "txtPolicy")).mid(0, 2), (QStringList{"", "NIL"}));
    fillVisit();
    save();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));

    const auto visit = ws->connect()->queryOne(
        QStringLiteral("SELECT * FROM hRecords WHERE PNo = ?"), {kAdebayo});
    expectColumns(visit, {"recDate=" + databaseToday().toString(Qt::ISODate), "htime=9:30 AM",
                          "clinicType=GENERAL", "Remarks=CONSULTATION", "HmoRef=NO",
                          "referal=NO", "clientCat=HMO", "CoyName=0004", "attendedto=0",
                          "Debt=0", "DocAssigned="});
    const QString consultID = visit->text(u"consultID");
    EXPECT_EQ(consultID, QStringLiteral("001000000001"));
    expectColumns(ws->connect()->queryOne(
                      QStringLiteral("SELECT * FROM billAccum WHERE drgName = 'ATTENDANCE'")),
                  {"Price=0", "PNo=" + kAdebayo, "consultID=" + consultID, "billType=SERVICE",
                   "CoyName=0004", "billTo=HYLOVA", "revType=CONSULTATION", "AppVersion="});
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM billAccum WHERE consultID = ?"),
                    {consultID}),
              2);
    expectColumns(ws->connect()->queryOne(QStringLiteral("SELECT * FROM hPatients")),
                  {"ref=NO", "HmoRef=NO", "policyType=NIL", "empno=HY/77", "clientCatID=HMO"});
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AuditTrail WHERE TranCode = ? AND "
                                   "userAction IN ('Insert Attnd Fee for ADEBAYO TOLU "
                                   "[001/000000001]', 'Insert Attendance for ADEBAYO TOLU "
                                   "[001/000000001]')"),
                    {consultID}),
              2);
    // Back to the list, the visit on it, ready for the next patient.
    EXPECT_EQ(s.windowTitle(), QStringLiteral("ATTENDANCE FOR TODAY: 1"));
    EXPECT_EQ(cellText(visits(), 0, QStringLiteral("ConsultID")), consultID);
    EXPECT_TRUE(label("lblNo").isEmpty());
    EXPECT_EQ(focused(), QStringLiteral("txtName"));
}

// A form field set to a value, and the refusal it meets.
struct CheckCase {
    QString clinical::AttendanceForm::*field;
    const char* value;
    const char* message;
    const char* focus;
};

TEST_P(Attendance, EachSaveCheckStopsWithItsMessageAndControlBeforeANumberIsDrawn)
{
    frmRecords& s = records();
    save();  // nobody picked
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" please specify Name of Patient"));
    EXPECT_EQ(focused(), QStringLiteral("cboVehNo"));

    pickPatient(kAdebayo);
    fillVisit();
    const clinical::AttendanceForm good = s.attendanceForm();
    using F = clinical::AttendanceForm;
    const char* category =
        " Billing Category cannot be empty! Invalid Client Tariff or Billing Category";
    const CheckCase cases[] = {
        {&F::pno, "", " please specify Name of Patient", "cboVehNo"},
        {&F::clientCat, "", category, "cboClient"},
        {&F::clientCat, "SERVICES", category, "cboClient"},
        {&F::clinic, "", " please specify clinic for Patient", "cboType"},
        {&F::purpose, "", " please specify Purpose of Visit for Patient", "cboPurpose"},
        {&F::purposeClass, "", "Specify Purpose of Attendance", "cboPurpose"},
        {&F::enrolleeNo, "", "HMO Enrolle No Needed OR enter NIL if No Enrolle Num ", "txtEmp"},
        {&F::feeForService, "", " please specify Whether Patient is FeeForService", "cboRef"},
        {&F::hmoReferral, "", " please specify Whether Patient is a Referal", "cboRefHmo"},
    };
    for (const CheckCase& c : cases) {
        SCOPED_TRACE(c.message);
        clinical::AttendanceForm f = good;
        f.*c.field = QString::fromLatin1(c.value);
        try {
            clinical::saveAttendance(desk->ctx, f);
            ADD_FAILURE() << "saved";
        } catch (const CheckFailed& e) {
            EXPECT_EQ(e.message(), QString::fromLatin1(c.message));
            EXPECT_EQ(e.focus(), QString::fromLatin1(c.focus));
            EXPECT_NE(s.findChild<QWidget*>(e.focus()), nullptr);
        }
    }
    // Through the screen as well: the control named is the one that gets the focus.
    edit(&s, "txtEmp")->clear();
    save();
    EXPECT_EQ(focused(), QStringLiteral("txtEmp"));
    EXPECT_EQ(count(QStringLiteral("SELECT id FROM idgen WHERE destName = 'ConsultID2'")), 0);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hRecords")), 0);
}

struct PickCase {
    const char* what;
    const char* coy;
    QVariant expiry;
    const char* message;  // "" for none
    bool picked;          // the patient stands for Save
    bool renew;
    int expired;
};

TEST_P(Attendance, PickingRefusesWhatRegistrationLeftOutAndWarnsOfAnExpiredCard)
{
    const QDate today = databaseToday();
    const PickCase cases[] = {
        {"payer not on file", "0099", {},
         "BillTo Value Cannot be Empty!!! Check your Client Information", false, false, 0},
        {"no payer", "", {},
         "Registration Incomplete! Company Name Required!! Go to Registration Page", false,
         false, 0},
        {"card due today", "0001", today, "Patient's Card has Expired", true, true, 1},
        {"card due tomorrow", "0001", today.addDays(1), "", true, false, 0},
        {"card with no expiry", "0001", {}, "", true, false, 0},
    };
    frmRecords& s = records();
    int n = 0;
    for (const PickCase& c : cases) {
        SCOPED_TRACE(c.what);
        const QString pno = QStringLiteral("001/00000010%1").arg(++n);
        addPatient({pno, QStringLiteral("CASE%1").arg(n), QStringLiteral("ADA"),
                    QString::fromLatin1(c.coy), QStringLiteral("PRIVATE"), c.expiry});
        desk->prompter.clear();
        click(&s, "cmdCancel");
        pickPatient(pno);
        EXPECT_EQ(desk->prompter.lastText(), QString::fromLatin1(c.message));
        EXPECT_EQ(s.attendanceForm().pno, c.picked ? pno : QString());
        EXPECT_EQ(child<QPushButton>(&s, "cmdRenew")->isEnabled(), c.renew);
        EXPECT_EQ(count(QStringLiteral("SELECT expired FROM hPatients WHERE PNo = ?"), {pno}),
                  c.expired);
    }
    // The private patient with no expiry date cannot go to a clinic, nor the expired one.
    pick(&s, "cboType", QStringLiteral("GENERAL"));
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral(" Please Specify Expiration Date for this Private Patient (GO TO "
                             "REGISTRATION PAGE)"));
    EXPECT_EQ(combo(&s, "cboType")->currentIndex(), -1);
    click(&s, "cmdCancel");
    pickPatient(QStringLiteral("001/000000103"));
    pick(&s, "cboType", QStringLiteral("GENERAL"));
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Patient's Card has Expired"));
    EXPECT_EQ(combo(&s, "cboType")->currentIndex(), -1);
    // Typed without brackets: no patient, and nothing said.
    desk->prompter.clear();
    combo(&s, "cboVehNo")->setEditText(QStringLiteral("CASE4 ADA"));
    QTest::keyClick(combo(&s, "cboVehNo")->lineEdit(), Qt::Key_Return);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(s.attendanceForm().pno.isEmpty());
}

TEST_P(Attendance, FindingAnswersEveryTextClearly)
{
    struct Case {
        QString typed;
        const char* button;
        QString message;  // "" when the search runs
        QString shownAfter;
        int found;
    };
    frmRecords& s = records();
    const QString digitsOnly = QStringLiteral(
        "Type the digits of the System No (9 at most), or the whole number with its \"/\"");
    for (const Case& c :
         {Case{"", "cmdOK", "To locate a patient, Enter few Letters and click OK Button", "", 0},
          {"", "cmdCard", "To locate a patient, Enter Card No and click 'Card No' Button", "", 0},
          {"ab1", "cmdSys", digitsOnly, "ab1", 0},
          {"12345678901", "cmdSys", digitsOnly, "12345678901", 0},
          {"1", "cmdSys", "", "001/000000001", 1},
          {"001/26/000001", "cmdCard", "", "001/26/000001", 1},
          {"TOLU", "cmdOK", "", "TOLU", 0}}) {
        SCOPED_TRACE(c.typed.toStdString() + " " + c.button);
        desk->prompter.clear();
        edit(&s, "txtName")->setText(c.typed);
        click(&s, c.button);
        EXPECT_EQ(desk->prompter.lastText(), c.message);
        EXPECT_EQ(edit(&s, "txtName")->text(), c.shownAfter);
        if (c.message.isEmpty())
            EXPECT_EQ(label("lblFound"), QStringLiteral("%1 Records Found").arg(c.found));
    }
    EXPECT_TRUE(s.isFound());
}

TEST_P(Attendance, PurposesSetTheirClassAndAScreeningVisitIsRecorded)
{
    ws->exec(QStringLiteral("INSERT INTO hClinicPurpose (Purpose) VALUES ('(CONSULTATION)'), "
                            "('PRE-EMPLOYMENT')"));
    struct Case {
        QString purpose;
        bool clinic;
        QString purposeClass;
        QString message;
    };
    ws->exec(QStringLiteral("INSERT INTO hreferal (consultID, PNo, referto) "
                            "VALUES ('001000000077', ?, 'GENERAL')"),
             {kAdebayo});
    // Opened from a referral for the patient: the visit honours it.
    frmRecords& s = records({{"PNo", kAdebayo}, {"RefConsultID", "001000000077"}});
    for (const Case& c : {Case{"(CONSULTATION)", true, "(CONSULTATION)", ""},
                          Case{"APPOINTMENT", false, "APPOINTMENT", "Specify Clinic"},
                          Case{"PRE-EMPLOYMENT", true, "SCREENING", ""},
                          Case{"SCREENING", true, "SCREENING", ""}}) {
        SCOPED_TRACE(c.purpose.toStdString());
        desk->prompter.clear();
        ui::chooseQuietly(combo(&s, "cboType"), c.clinic ? QStringLiteral("GENERAL") : QString());
        pick(&s, "cboPurpose", c.purpose);
        EXPECT_EQ(s.purposeClass(), c.purposeClass);
        EXPECT_EQ(desk->prompter.lastText(), c.message);
    }
    save();
    EXPECT_EQ(count(QStringLiteral("SELECT attendedto FROM hreferal")), 1);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hhScreeningAttnd h JOIN hRecords r ON "
                                   "r.consultID = h.consultID WHERE h.Remarks = 'SCREENING'")),
              1);
}

TEST_P(Attendance, SplitBillsAreRefusedAndAnEditKeepsTheDoctorsMark)
{
    frmRecords& s = records();
    addTodaysVisit();
    ws->exec(QStringLiteral("UPDATE hRecords SET attendedto = 1, attendedtoByDoc = 1, "
                            "referal = 'YES', HmoRef = 'NO'"));
    // 13 characters without "OFL" at 4 to 6: a split bill. The last is the one edited.
    for (const char* id : {"001SPL0000001", "0010000000001", "001OFL0000001"}) {
        SCOPED_TRACE(id);
        ws->exec(QStringLiteral("UPDATE hRecords SET consultID = ?"), {QString::fromLatin1(id)});
        s.fillGrid();
        desk->prompter.clear();
        doubleClickRow(visits(), 0);
        const bool split = QByteArray(id).mid(3, 3) != "OFL";
        EXPECT_EQ(s.isEdit(), !split);
        if (split)
            EXPECT_EQ(desk->prompter.last()->title + "/" + desk->prompter.lastText(),
                      "Split Bill Not Editable/This ConsultID Cannot be edited! Split Bill");
    }
    ASSERT_TRUE(s.isEdit());
    EXPECT_EQ(combo(&s, "cboType")->currentText(), QStringLiteral("GENERAL"));
    EXPECT_EQ(combo(&s, "cboPurpose")->currentText(), QStringLiteral("CONSULTATION"));
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), QStringLiteral("YES"));
    EXPECT_EQ(combo(&s, "cboPat")->currentText(), QStringLiteral("HYLOVA HMO [0004]"));
    EXPECT_EQ(edit(&s, "txtEmp")->text(), QStringLiteral("HY/77"));
    EXPECT_EQ(label("lblBill"), QStringLiteral("001OFL0000001"));
    doubleClickRow(visits(), 0);
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Already in Edit Mode Click 'Cancel Button' to cancel the "
                             "currrent Editing"));

    pick(&s, "cboType", QStringLiteral("EYE CLINIC"));
    pick(&s, "cboPurpose", QStringLiteral("REVIEW"));
    pick(&s, "cboRefHmo", QStringLiteral("YES"));
    save();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully Edited and Updated"));
    expectColumns(ws->connect()->queryOne(QStringLiteral("SELECT * FROM hRecords")),
                  {"clinicType=EYE CLINIC", "Remarks=REVIEW", "HmoRef=YES", "attendedto=1",
                   "attendedtoByDoc=0", "empID=" + desk->ctx.session().empID});
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hRecords")), 1);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM billAccum")), 0);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT HmoRef FROM hPatients")).toString(), "YES");
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT Remarks FROM AuditTrail WHERE userAction = "
                                        "'Edit Attendance for ADEBAYO TOLU [001/000000001]'"))
                  .toString(),
              QStringLiteral("001OFL0000001/HMO/EYE CLINIC/REVIEW"));
    EXPECT_FALSE(s.isEdit());
}

TEST_P(Attendance, NoNumberOrAFailureMidSaveWritesNothingAndTheNextSaveGoesThrough)
{
    frmRecords& s = records();
    ws->exec(QStringLiteral("UPDATE idgen SET destName = 'ConsultIDX' "
                            "WHERE destName = 'ConsultID2'"));
    pickPatient(kAdebayo);
    fillVisit(QStringLiteral("SCREENING"));
    save();
    EXPECT_EQ(desk->prompter.lastText(), kIdGenFailedConsultIDText);
    ws->exec(QStringLiteral("UPDATE idgen SET destName = 'ConsultID2' "
                            "WHERE destName = 'ConsultIDX'"));

    refuseRows(*ws, QStringLiteral("hhScreeningAttnd"), true);
    save();
    EXPECT_EQ(desk->prompter.lastText().contains(QStringLiteral("refused")), true);
    refuseRows(*ws, QStringLiteral("hhScreeningAttnd"), false);
    for (const char* table : {"hRecords", "billAccum", "hhScreeningAttnd"})
        EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM %1").arg(table)), 0) << table;
    EXPECT_EQ(s.attendanceForm().pno, kAdebayo);  // the fields stay for another try
    save();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT consultID FROM hRecords")).toString(),
              QStringLiteral("001000000002"));  // the first number was burnt
}

TEST_P(Attendance, DeleteTakesTheVisitRowOnlyAndTheDeskStillEditingItIsTold)
{
    frmRecords& a = records();
    addTodaysVisit();
    ws->exec(QStringLiteral("INSERT INTO billAccum (drgName, PNo, consultID) "
                            "VALUES ('ATTENDANCE', ?, '001000000001')"),
             {kAdebayo});
    a.fillGrid();
    doubleClickRow(visits(), 0);  // desk A edits the visit
    pick(&a, "cboRefHmo", QStringLiteral("YES"));

    Desk other(*ws, QDateTime(databaseToday(), QTime(9, 31)));
    other.startUp();
    frmRecords b(other.ctx);
    for (const bool yes : {false, true}) {
        child<QTableView>(&b, "grdData")->selectRow(0);
        yes ? other.prompter.answerYes() : other.prompter.answerNo();
        click(&b, "cmdDel");
        EXPECT_EQ(other.prompter.messages().at(0).title, QStringLiteral("Delete"));
        EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hRecords")), yes ? 0 : 1);
    }
    EXPECT_EQ(other.prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM billAccum")), 1);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AuditTrail WHERE userAction = "
                                   "'Delete Patient: ADEBAYO TOLU'")),
              1);
    EXPECT_EQ(b.windowTitle(), QStringLiteral("ATTENDANCE FOR TODAY:"));
    // Nothing left there to edit or delete: told so, nothing breaks.
    other.prompter.clear();
    click(&b, "cmdEdit");
    click(&b, "cmdDel");
    EXPECT_EQ(other.prompter.informs().size(), 2);

    save();  // desk A, on the visit gone
    EXPECT_EQ(desk->prompter.lastText(), clinical::kVisitGoneText);
    EXPECT_TRUE(ws->scalar(QStringLiteral("SELECT HmoRef FROM hPatients")).toString().isEmpty());
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(Attendance);

namespace {

// From the main window's menu to the bill: the renewal hand-over of frmRenew.
class AttendanceRoad : public MainWindowTest {};

TEST_P(AttendanceRoad, ACardRenewedFromTheVisitIsBilledOnceUnderRegistration)
{
    const QString pno = QStringLiteral("001/000000005");
    addPatient(pno, QStringLiteral("OKORO"), QStringLiteral("EMEKA"), QStringLiteral("0001"),
               today().addDays(-3));
    open();
    window->resize(kDeskLaptop);
    desk->prompter.clear();  // the morning's sweep of expired cards
    action(QStringLiteral("mnuREc"))->trigger();
    QWidget* s = desk->ctx.screens().find(QStringLiteral("frmRecords"));
    ASSERT_NE(s, nullptr);
    auto takeVisit = [&] {
        edit(s, "txtName")->setText(QStringLiteral("okoro"));
        click(s, "cmdOK");
        pick(s, "cboVehNo", QStringLiteral("OKORO EMEKA"));
        pick(s, "cboType", QStringLiteral("GENERAL"));
        pick(s, "cboPurpose", QStringLiteral("CONSULTATION"));
    };
    takeVisit();
    EXPECT_EQ(desk->prompter.informs(),
              (QStringList{"Patient's Card has Expired", "Patient's Card has Expired"}));
    QTimer::singleShot(0, [&] {
        QWidget* renewal = QApplication::activeModalWidget();
        ASSERT_NE(renewal, nullptr);
        desk->prompter.answerYes();
        click(renewal, "cmdRenew");
        click(renewal, "cmdClose");
    });
    click(s, "cmdRenew");
    EXPECT_EQ(child<QLabel>(QStringLiteral("lblExpire"))->text(),
              fmt::shortDate(today().addYears(1)));
    pick(s, "cboType", QStringLiteral("GENERAL"));  // the card is good again
    pick(s, "cboPurpose", QStringLiteral("CONSULTATION"));
    saveScreenshot(window.get(), QStringLiteral("attendance-renewed"));
    click(s, "OKButton");
    takeVisit();  // the next visit of the same patient
    click(s, "OKButton");

    const db::Result lines = ws->connect()->query(
        QStringLiteral("SELECT b.drgName, b.Category, b.Price, b.revType FROM billAccum b JOIN "
                       "hRecords r ON r.consultID = b.consultID WHERE b.PNo = ? "
                       "ORDER BY r.recID, b.drgName"),
        {pno});
    QStringList got;
    for (const db::Row& r : lines.rows)
        got << QStringLiteral("%1/%2/%3/%4").arg(r.text(u"drgName"), r.text(u"Category"),
                                                 r.text(u"Price"), r.text(u"revType"));
    EXPECT_EQ(got, (QStringList{"ATTENDANCE//0/CONSULTATION",
                                "CARD RENEWAL FEE/REGISTRATION/1500/REGISTRATION",
                                "ATTENDANCE//0/CONSULTATION"}));
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(AttendanceRoad);
