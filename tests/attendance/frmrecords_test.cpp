// frmRecords driven by control name: a whole visit to the rows it leaves, the Save checks,
// picking and the card, purposes, editing, split bills, deleting, and what a failure in
// the middle of a save leaves behind.
#include "attendancefixture.h"
#include "mainwindow/mainwindowfixture.h"

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

class Attendance : public AttendanceTest {
protected:
    void SetUp() override
    {
        AttendanceTest::SetUp();
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
    QTableView* visits() const { return child<QTableView>(rec.get(), "grdData"); }
    QString label(const char* name) const { return child<QLabel>(rec.get(), name)->text(); }
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
    EXPECT_FALSE(s.isFound());
    EXPECT_EQ(label("Label5"), QStringLiteral("ADEBAYO TOLU"));
    EXPECT_EQ(label("lblNo"), kAdebayo);
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

struct CheckCase {
    const char* what;
    std::function<void(clinical::AttendanceForm&)> spoil;
    QString message;
    QString focus;
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
    const std::vector<CheckCase> cases{
        {"no patient", [](auto& f) { f.pno.clear(); }, " please specify Name of Patient",
         "cboVehNo"},
        {"category", [](auto& f) { f.clientCat.clear(); },
         " Billing Category cannot be empty! Invalid Client Tariff or Billing Category",
         "cboClient"},
        {"SERVICES", [](auto& f) { f.clientCat = QStringLiteral("SERVICES"); },
         " Billing Category cannot be empty! Invalid Client Tariff or Billing Category",
         "cboClient"},
        {"clinic", [](auto& f) { f.clinic.clear(); }, " please specify clinic for Patient",
         "cboType"},
        {"purpose", [](auto& f) { f.purpose.clear(); },
         " please specify Purpose of Visit for Patient", "cboPurpose"},
        {"purpose class", [](auto& f) { f.purposeClass.clear(); },
         "Specify Purpose of Attendance", "cboPurpose"},
        {"enrollee of PHIS",
         [](auto& f) {
             f.clientCat = QStringLiteral("PHIS");
             f.enrolleeNo.clear();
         },
         "HMO Enrolle No Needed OR enter NIL if No Enrolle Num ", "txtEmp"},
        {"fee for service", [](auto& f) { f.feeForService.clear(); },
         " please specify Whether Patient is FeeForService", "cboRef"},
        {"referral", [](auto& f) { f.hmoReferral.clear(); },
         " please specify Whether Patient is a Referal", "cboRefHmo"},
    };
    for (const CheckCase& c : cases) {
        SCOPED_TRACE(c.what);
        clinical::AttendanceForm f = good;
        c.spoil(f);
        try {
            clinical::saveAttendance(desk->ctx, f);
            ADD_FAILURE() << "saved in spite of " << c.what;
        } catch (const CheckFailed& e) {
            EXPECT_EQ(e.message(), c.message);
            EXPECT_NE(s.findChild<QWidget*>(e.focus()), nullptr) << e.focus().toStdString();
            EXPECT_EQ(e.focus(), c.focus);
        }
    }
    // Through the screen as well: the control named is the one that gets the focus.
    QLineEdit* enrollee = edit(&s, "txtEmp");
    enrollee->clear();
    save();
    EXPECT_EQ(focused(), QStringLiteral("txtEmp"));
    EXPECT_EQ(count(QStringLiteral("SELECT id FROM idgen WHERE destName = 'ConsultID2'")), 0);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hRecords")), 0);
}

struct PickCase {
    const char* what;
    QString coy;
    QVariant expiry;
    QString message;      // "" for none
    bool picked;          // the patient stands for Save
    bool renew;
    int expired;
};

TEST_P(Attendance, PickingRefusesWhatRegistrationLeftOutAndWarnsOfAnExpiredCard)
{
    const QDate today = databaseToday();
    const std::vector<PickCase> cases{
        {"payer not on file", QStringLiteral("0099"), {},
         QStringLiteral("BillTo Value Cannot be Empty!!! Check your Client Information"), false,
         false, 0},
        {"no payer", QString(), {},
         QStringLiteral("Registration Incomplete! Company Name Required!! Go to Registration "
                        "Page"),
         false, false, 0},
        {"private card due today", QStringLiteral("0001"), today,
         QStringLiteral("Patient's Card has Expired"), true, true, 1},
        {"private card due tomorrow", QStringLiteral("0001"), today.addDays(1), QString(), true,
         false, 0},
        {"private card with no expiry", QStringLiteral("0001"), {}, QString(), true, false, 0},
    };
    frmRecords& s = records();
    int n = 0;
    for (const PickCase& c : cases) {
        SCOPED_TRACE(c.what);
        const QString pno = QStringLiteral("001/00000010%1").arg(++n);
        addPatient({pno, QStringLiteral("CASE%1").arg(n), QStringLiteral("ADA"), c.coy,
                    QStringLiteral("PRIVATE"), c.expiry});
        desk->prompter.clear();
        click(&s, "cmdCancel");
        pickPatient(pno);
        EXPECT_EQ(desk->prompter.lastText(), c.message);
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
    const QString digitsOnly =
        QStringLiteral("Type the digits of the System No (9 at most), or the whole number with "
                       "its \"/\"");
    for (const Case& c :
         {Case{"", "cmdOK", "To locate a patient, Enter few Letters and click OK Button", "", 0},
          Case{"", "cmdCard", "To locate a patient, Enter Card No and click 'Card No' Button",
               "", 0},
          Case{"ab1", "cmdSys", digitsOnly, "ab1", 0},
          Case{"12345678901", "cmdSys", digitsOnly, "12345678901", 0},
          Case{"1", "cmdSys", "", "001/000000001", 1},
          Case{"001/26/000001", "cmdCard", "", "001/26/000001", 1},
          Case{"TOLU", "cmdOK", "", "TOLU", 0}}) {
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
    ws->exec(QStringLiteral("UPDATE hServiceNHIS SET Price = 4200 WHERE SNo = 2"));
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

TEST_P(Attendance, EditRewritesWhatTheDeskMayChangeAndKeepsTheDoctorsMark)
{
    frmRecords& s = records();
    addTodaysVisit();
    ws->exec(QStringLiteral("UPDATE hRecords SET attendedto = 1, attendedtoByDoc = 1, "
                            "referal = 'YES', HmoRef = 'NO'"));
    s.fillGrid();
    doubleClickRow(visits(), 0);
    ASSERT_TRUE(s.isEdit());
    EXPECT_EQ(combo(&s, "cboType")->currentText(), QStringLiteral("GENERAL"));
    EXPECT_EQ(combo(&s, "cboPurpose")->currentText(), QStringLiteral("CONSULTATION"));
    EXPECT_EQ(combo(&s, "cboRef")->currentText(), QStringLiteral("YES"));
    EXPECT_EQ(combo(&s, "cboPat")->currentText(), QStringLiteral("HYLOVA HMO [0004]"));
    EXPECT_EQ(edit(&s, "txtEmp")->text(), QStringLiteral("HY/77"));
    EXPECT_EQ(label("lblBill"), QStringLiteral("001000000001"));
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
              QStringLiteral("001000000001/HMO/EYE CLINIC/REVIEW"));
    EXPECT_FALSE(s.isEdit());
}

TEST_P(Attendance, OnlySplitBillsWithoutOflAreRefusedForEditing)
{
    frmRecords& s = records();
    addTodaysVisit();
    struct Case {
        QString consultID;
        bool editable;
    };
    for (const Case& c : {Case{"001OFL0000001", true}, Case{"001SPL0000001", false},
                          Case{"0010000000001", false}, Case{"001000000001", true}}) {
        SCOPED_TRACE(c.consultID.toStdString());
        ws->exec(QStringLiteral("UPDATE hRecords SET consultID = ?"), {c.consultID});
        click(&s, "cmdCancel");
        desk->prompter.clear();
        doubleClickRow(visits(), 0);
        EXPECT_EQ(s.isEdit(), c.editable);
        if (!c.editable) {
            ASSERT_NE(desk->prompter.last(), nullptr);
            EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("Split Bill Not Editable"));
            EXPECT_EQ(desk->prompter.lastText(),
                      QStringLiteral("This ConsultID Cannot be edited! Split Bill"));
        }
    }
}

TEST_P(Attendance, DeleteAsksAndTakesTheVisitRowOnly)
{
    frmRecords& s = records();
    addTodaysVisit();
    ws->exec(QStringLiteral("INSERT INTO billAccum (drgName, PNo, consultID) "
                            "VALUES ('ATTENDANCE', ?, '001000000001')"),
             {kAdebayo});
    s.fillGrid();
    for (const bool yes : {false, true}) {
        visits()->selectRow(0);
        yes ? desk->prompter.answerYes() : desk->prompter.answerNo();
        click(&s, "cmdDel");
        EXPECT_EQ(desk->prompter.messages().at(0).title, QStringLiteral("Delete"));
        EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hRecords")), yes ? 0 : 1);
    }
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral(" Record successfully deleted "));
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM billAccum")), 1);
    EXPECT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM AuditTrail WHERE userAction = "
                                   "'Delete Patient: ADEBAYO TOLU'")),
              1);
    EXPECT_EQ(s.windowTitle(), QStringLiteral("ATTENDANCE FOR TODAY:"));
    // Nothing left to edit or delete: told so, nothing breaks.
    desk->prompter.clear();
    click(&s, "cmdEdit");
    click(&s, "cmdDel");
    EXPECT_EQ(desk->prompter.informs().size(), 2);
}

TEST_P(Attendance, NoNumberOrAFailureMidSaveWritesNothingAndTheNextSaveGoesThrough)
{
    frmRecords& s = records();
    ws->exec(QStringLiteral("UPDATE idgen SET destName = 'ConsultIDX' "
                            "WHERE destName = 'ConsultID2'"));
    pickPatient(kAdebayo);
    fillVisit(QStringLiteral("GENERAL"), QStringLiteral("SCREENING"));
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

TEST_P(Attendance, ADeskEditingAVisitAnotherDeskDeletedIsToldAndWritesNothing)
{
    frmRecords& a = records();
    addTodaysVisit();
    a.fillGrid();
    doubleClickRow(visits(), 0);
    pick(&a, "cboRefHmo", QStringLiteral("YES"));

    Desk other(*ws, QDateTime(databaseToday(), QTime(9, 31)));
    other.startUp();
    frmRecords b(other.ctx);
    child<QTableView>(&b, "grdData")->selectRow(0);
    other.prompter.answerYes();
    click(&b, "cmdDel");  // the newest visit is the current row there
    ASSERT_EQ(count(QStringLiteral("SELECT COUNT(*) FROM hRecords")), 0);

    save();
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
