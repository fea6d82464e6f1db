// The main window driven as a desk uses it, offscreen, on both backends: the menu tree, the
// load sequence with the expiry sweep, the timers, the button strip's checks, the debt
// panel, the Window menu, and the ways a run ends.
#include "mainwindowfixture.h"
#include "support/screenkit.h"

#include "core/idgen.h"
#include "platform/local.h"

#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPrintPreviewDialog>
#include <QPushButton>
#include <QLabel>
#include <QTest>

using namespace tolmar;
using namespace tolmar::test;

namespace {

// The menu bar, then the Attendance submenu of Report: each menu's name and caption, and its
// entries in order as "name=caption", "-" for a separator.
const char* const kMenus[][3] = {
    {"mnuFile", "&File",
     "mnuCust=Company Information|mnuCT=Clinic Types|mnuCDays=Clinic Days|"
     "mnuADTC=Assign Clinics to Doctors|mnuWards=Wards|"
     "mnuConRoom=Create Consulting Rooms|mnuUPFI=Upload Patient Files/Images|"
     "mnuDUPFI=Display Uploaded Files/Images|mnuHospEmp=Hospital Employees|"
     "mnuRR=Renew Registration|mnuEmp=Staff Attendance|mnuDept=Department|"
     "mnuDesig=Designation|-|mnuPRA=Patient Residential Areas|-|"
     "mnuUAID=Update Attendnace ID|mnuUPID=Update Patient ID|mnuRDef=Reload Defaults|"
     "-|mnuUDFHCI=Update DB for HMO Client Information|"
     "mnuGen=Refresh System ID Generator|mnuPrint=Print|mnuEPE=Log Off demo"},
    {"mnuDT", "Activities",
     "mnuNreg=Patient Attendance / Registration|mnuAuthCode=HMO Approval Code|"
     "mnuIHAFHP=In-house Approval for HMO Patients|"
     "mnuRFGPD=Referal From GP Doctor to Specialist|"
     "mnuADTCR=Assign Doctors to Consulting Rooms (By Shift)|-|"
     "mnuREc=Edit Atten&dance|mnuPANSE=Patients' Attendance Numerical Strngth Entries|"
     "mnuCons=Consultation/Treatment|mnuRef=Referral/Appointment|"
     "mnuPatDisch=Patient Discharge from Admission|-|"
     "mnuANR=Update Ante-Natal Information"},
    {"mnuFin", "Financials",
     "mnuPSITC=Billing|mnuPBill=Print Bill|-|mnuRct=Receipt|mnuRPtES=Print Receipt"},
    {"mnuVSF", "View",
     "mnuPBT=SMS Center / Birthdays|"
     "mnuPatAttTime=Patients' Movement Timeline / Activity Summary|"
     "mnuAppBook=Appointment/Referral Book|mnuPPEMB=Patients' Phone / Email Book|"
     "mnuRefBook=Referal Book|mnuVSII=Patient Information|"
     "mnuANPI=Ante Natal Patient Information|mnuEditArecord=&Display Entire Records|"
     "mnuEditFind=Search a Record |mnuRemnd=Reminders"},
    {"mnuTariff", "Tariff",
     "mnuTDrugs=Drugs|mnuTInv=Investigations|mnuTServ=Services"},
    {"mnuReport", "&Report",
     "mnuStatSummaries=Statistical Summaries|mnuAAFC=Attendance Analysis|"
     "mnuASBD=Attendance Seen by Doctor (By OPD, IPD)|"
     "mnuPRBGP=Patients' Referal by GP|mnuRptSB=Daily  Attendance|"
     "mnuAttend=Attendance Analysis|mnuDR=Daily Registration|"
     "mnuPOA=Patients Currently on Admission|-|mnuBFT=Bills for Today|"
     "mnuINC=Income for Today|mnuHMONHIS=HMO && NHIS Enrollees|"
     "mnuConDet=Consultation Details|mnuMRpts=More Reports....|-|mnuSendM=Send Mail"},
    {"mnuAttend", "",
     "mnuAttendCoy=By Company|mnuAttendClinic=By Clinic|mnuAttendDoc=By Doctor|"
     "mnuABNS=By Numerical Strength"},
    {"mnusecurity", "S&ecurity",
     "mnuUsers=&User Accounts|mnuUserRoles=&Assign Users To Roles|"
     "mnuChangePWD=Change &Password...|-|mnuCreateRoles=Create &Roles|"
     "mnuAcctEnable=&Enable Account...|mnuAcctDisable=&Disable Account...|-|"
     "mnuAuto=Auto ID Generator|mnuLR=Login Report"},
    {"mnuWindow", "&Window",
     "mnuWindowTV=Tile Vertical|mnuWindowTH=Tile Horizontal|mnuWindowCascade=Cascade"},
};

QColor backgroundOf(const QWidget* w)
{
    return w->palette().color(QPalette::Window);
}

const QColor kLightBlue(0x80, 0x80, 0xFF);
const QColor kRed(0xFF, 0x00, 0x00);

// ---------------------------------------------------------------------------------------

using MainWindowMenu = MainWindowTest;

TEST_P(MainWindowMenu, EveryEntryStandsInItsMenuWithItsCaptionInOrder)
{
    open();
    QStringList bar, top;
    for (const QAction* a : window->menuBar()->actions())
        bar << a->objectName() + QLatin1Char('=') + a->text();
    for (const auto& [menu, caption, entries] : kMenus) {
        const QString name = QString::fromUtf8(menu);
        if (*caption)
            top << name + QLatin1Char('=') + QString::fromUtf8(caption);
        QStringList want = QString::fromUtf8(entries).split(QLatin1Char('|')), got;
        const QMenu* m = child<QMenu>(name);
        ASSERT_NE(m, nullptr) << menu;
        for (const QAction* a : m->actions())
            got << (a->isSeparator() ? QStringLiteral("-")
                                     : a->objectName() + QLatin1Char('=') + a->text());
        // The Window menu lists the open windows after its own entries.
        EXPECT_EQ(got.mid(0, want.size()), want) << menu;
        if (name != u"mnuWindow")
            EXPECT_EQ(got.size(), want.size()) << menu;
    }
    EXPECT_EQ(bar, top);
}

TEST_P(MainWindowMenu, EntriesOfScreensNotYetBuiltDoNothing)
{
    open();
    for (const char* name : {"mnuHospEmp", "mnuPSITC", "mnuAttendCoy", "mnuAuto", "mnuLR",
                             "mnuPBill"}) {
        action(QString::fromLatin1(name))->trigger();
        EXPECT_TRUE(window->mdiArea()->subWindowList().isEmpty()) << name;
    }
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(desk->endedWith.empty());
}

TEST_P(MainWindowMenu, PayerEntriesOpenTheirScreens)
{
    open();
    const std::pair<const char*, const char*> entries[] = {
        {"mnuCust", "frmRetainership"},    {"mnuUDFHCI", "frmRetainershipUpdDB"},
        {"mnuPRA", "frmAreas"},            {"mnuTDrugs", "frmDrugPriceHMO"},
        {"mnuTInv", "frmLabPriceHMO"},     {"mnuTServ", "frmServPriceHMO"}};
    for (const auto& [menu, screen] : entries) {
        action(QString::fromLatin1(menu))->trigger();
        QMdiSubWindow* sub = window->mdiArea()->activeSubWindow();
        ASSERT_TRUE(sub) << menu;
        EXPECT_EQ(sub->widget()->objectName(), QString::fromLatin1(screen)) << menu;
    }
    EXPECT_EQ(window->mdiArea()->subWindowList().size(), 6);
}

TEST_P(MainWindowMenu, SendMailNeedsMailSwitchedOn)
{
    open();
    action(QStringLiteral("mnuSendM"))->trigger();
    ASSERT_EQ(desk->prompter.informs().size(), 1);
    EXPECT_EQ(desk->prompter.lastText(),
              QStringLiteral("Mail is NOT Activated for \r\nTOLMAR SPECIALIST HOSPITAL"));
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Warning);
}

TEST_P(MainWindowMenu, IdentifierRepairsRunFromTheFileMenu)
{
    addPatient(QStringLiteral("001/000000041"), QStringLiteral("OKAFOR"), QStringLiteral("ADA"));
    addVisit(QStringLiteral("001/000000041"), QStringLiteral("001000000077"), QDate(2026, 11, 2),
             QStringLiteral("08:00"));
    open();
    action(QStringLiteral("mnuUPID"))->trigger();
    action(QStringLiteral("mnuUAID"))->trigger();
    EXPECT_TRUE(desk->prompter.messages().empty());
    // The next numbers follow the highest in use.
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesPatientNo), QStringLiteral("001/000000042"));
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesConsultID), QStringLiteral("001000000078"));
}

TEST_P(MainWindowMenu, ReloadDefaultsKeepsTheRunsActivityRow)
{
    open();
    const int sno = desk->ctx.session().activitySNo;
    ws->setDefault(QStringLiteral("AppLocation"), QStringLiteral("Yaba"));
    action(QStringLiteral("mnuRDef"))->trigger();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("RECORDS (Ver 21) : @Yaba"));
    EXPECT_EQ(desk->ctx.session().activitySNo, sno);
    EXPECT_EQ(ws->scalar(QStringLiteral("select count(*) from UserActivities")).toInt(), 1);
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowMenu);

// ---------------------------------------------------------------------------------------

using MainWindowLoad = MainWindowTest;

TEST_P(MainWindowLoad, TitlePanelsAndCaptionsComeFromTheSession)
{
    open();
    EXPECT_EQ(window->windowTitle(), QStringLiteral("RECORDS (Ver 21) : @Ikeja"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("SbrTolmarPanel1"))->text(), QStringLiteral("RECORDS"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("SbrTolmarPanel2"))->text(),
              QStringLiteral("ADAEZE OKAFOR"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("lblDebt"))->text(), QStringLiteral("Debt:"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("lblDate"))->text(), QStringLiteral("23/11/2026"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("lblTime"))->text(), QStringLiteral("9:30 AM"));
    EXPECT_FALSE(desk->ctx.session().debtShown);
    EXPECT_FALSE(desk->ctx.session().computerName.isEmpty());
    // The strip's buttons with their captions.
    const std::pair<const char*, const char*> buttons[] = {{"cmdExpired", "Expired Admission"},
                                                           {"cmdLoc", "Change Location"},
                                                           {"cmdPat", "Patients from Doctor"},
                                                           {"cmdView", "Patients for Referal"},
                                                           {"cmdRxn", "Comments"},
                                                           {"cmdFee", "ANC FEE"}};
    for (const auto& [name, caption] : buttons)
        EXPECT_EQ(child<QPushButton>(QString::fromLatin1(name))->text(),
                  QString::fromLatin1(caption));
}

TEST_P(MainWindowLoad, ButtonsShowByTheirDefaults)
{
    open();
    EXPECT_TRUE(child<QPushButton>(QStringLiteral("cmdExpired"))->isVisible());
    EXPECT_TRUE(child<QPushButton>(QStringLiteral("cmdLoc"))->isVisible());
    window.reset();

    ws->setDefault(QStringLiteral("Admission_Limit_Exists"), QStringLiteral("yes"));
    restartWith(QStringLiteral("App_Location_Change"), QStringLiteral("NO"));
    open();
    // Flags are the exact text "YES".
    EXPECT_FALSE(child<QPushButton>(QStringLiteral("cmdExpired"))->isVisible());
    EXPECT_FALSE(child<QPushButton>(QStringLiteral("cmdLoc"))->isVisible());
}

TEST_P(MainWindowLoad, OpensTheActivityRowOfTheRun)
{
    open();
    const int sno = desk->ctx.session().activitySNo;
    ASSERT_GT(sno, 0);
    const auto row = ws->connect()->queryOne(
        QStringLiteral("select * from UserActivities where SNO = ?"), {sno});
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text(u"Remarks"), QStringLiteral("RECORDS"));
    EXPECT_FALSE(row->toBool(u"islogout"));
    EXPECT_FALSE(row->toBool(u"AutoLogoff"));
}

TEST_P(MainWindowLoad, SweepDeclaresExactlyTheCardsDueTodayOrBefore)
{
    const QDate today(2026, 11, 23);
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"),
               QStringLiteral("0001"), today.addDays(-40));
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("O'CONNOR"), QStringLiteral("ÌFẸ́"),
               QStringLiteral("0001"), today);
    addPatient(QStringLiteral("001/000000003"), QStringLiteral("BELLO"), QStringLiteral("MUSA"),
               QStringLiteral("0001"), today.addDays(1));
    // Other payers' cards have no expiry date and never run out.
    addPatient(QStringLiteral("001/000000004"), QStringLiteral("EZE"), QStringLiteral("JOHN"),
               QStringLiteral("0004"), QVariant());
    // Declared on an earlier day: not counted again.
    addPatient(QStringLiteral("001/000000005"), QStringLiteral("YUSUF"), QStringLiteral("AISHA"),
               QStringLiteral("0001"), today.addDays(-400), 1);
    open();

    const auto rows =
        ws->connect()->query(QStringLiteral("select PNo, expired from hPatients order by PNo"));
    ASSERT_EQ(rows.size(), 5u);
    const int expected[] = {1, 1, 0, 0, 1};
    for (size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows.rows[i].toInt(u"expired"), expected[i])
            << rows.rows[i].text(u"PNo").toStdString();
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{QStringLiteral(
                  "2 Card(s) is/are due for Renewal and have been declared Expired")});
}

TEST_P(MainWindowLoad, NoCardDueSaysNothing)
{
    addPatient(QStringLiteral("001/000000003"), QStringLiteral("BELLO"), QStringLiteral("MUSA"),
               QStringLiteral("0001"), QDate(2027, 1, 1));
    open();
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(ws->scalar(QStringLiteral("select sum(expired) from hPatients")).toInt(), 0);
}

TEST_P(MainWindowLoad, TimersHaveTheirIntervalsAndStartStates)
{
    open();
    const std::tuple<const char*, int, bool> timers[] = {
        {"Timer1", 60000, true},    {"Timer3", 60000, true},    {"tmrWait", 60000, true},
        {"tmrNotify", 500, false},  {"tmrExpired", 500, false}, {"tmrMDI", 500, false},
        {"tmrSound", 60000, false}, {"Timer2", 1000, false},    {"tmrIdle", 10000, false}};
    for (const auto& [name, interval, running] : timers) {
        QTimer* t = timer(QString::fromLatin1(name));
        ASSERT_NE(t, nullptr);
        EXPECT_EQ(t->interval(), interval) << name;
        EXPECT_EQ(t->isActive(), running) << name;
    }
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowLoad);

// ---------------------------------------------------------------------------------------

using MainWindowTimers = MainWindowTest;

TEST_P(MainWindowTimers, SameDayReferralStartsTheNoticeAndTheBell)
{
    const QDate today(2026, 11, 23);
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"));
    // Booked for another day, or already handled: neither is new work.
    addReferral(QStringLiteral("001/000000001"), QStringLiteral("001000000001"), today.addDays(-1),
                today);
    addReferral(QStringLiteral("001/000000001"), QStringLiteral("001000000002"), today, today, 1);
    open();
    window->timer1Tick();
    EXPECT_FALSE(timer(QStringLiteral("tmrNotify"))->isActive());
    EXPECT_FALSE(timer(QStringLiteral("tmrSound"))->isActive());
    EXPECT_FALSE(desk->ctx.session().newWorkFlag);

    addReferral(QStringLiteral("001/000000001"), QStringLiteral("001000000003"), today, today);
    window->timer1Tick();
    EXPECT_TRUE(timer(QStringLiteral("tmrNotify"))->isActive());
    EXPECT_TRUE(timer(QStringLiteral("tmrSound"))->isActive());
    EXPECT_TRUE(desk->ctx.session().newWorkFlag);

    auto* view = child<QPushButton>(QStringLiteral("cmdView"));
    window->tmrNotifyTick();
    const QColor first = view->palette().color(QPalette::Button);
    window->tmrNotifyTick();
    const QColor second = view->palette().color(QPalette::Button);
    EXPECT_EQ(QSet<QRgb>({first.rgb(), second.rgb()}), QSet<QRgb>({kRed.rgb(), kLightBlue.rgb()}));

    ws->exec(QStringLiteral("update hreferal set attendedToByRec = 1"));
    window->timer1Tick();
    EXPECT_FALSE(timer(QStringLiteral("tmrNotify"))->isActive());
    EXPECT_FALSE(timer(QStringLiteral("tmrSound"))->isActive());
    EXPECT_FALSE(desk->ctx.session().newWorkFlag);
}

TEST_P(MainWindowTimers, ExpiredAdmissionOfALimitedPayerFlashes)
{
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"),
               QStringLiteral("0004"));
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("BELLO"), QStringLiteral("MUSA"));
    open();
    QTimer* flash = timer(QStringLiteral("tmrExpired"));

    // A limit still ahead: nothing has expired, the flashing stays as it was.
    addAdmission(QStringLiteral("001/000000001"), QStringLiteral("001000000001"),
                 QStringLiteral("HMO"), QDateTime(QDate(2026, 11, 23), QTime(9, 31)));
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());

    // A private patient past the limit stops it.
    addAdmission(QStringLiteral("001/000000002"), QStringLiteral("001000000002"),
                 QStringLiteral("PRIVATE"), QDateTime(QDate(2026, 11, 22), QTime(8, 0)));
    flash->start();
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());

    // An HMO stay without a limit counts as expired at once.
    addAdmission(QStringLiteral("001/000000001"), QStringLiteral("001000000003"),
                 QStringLiteral("HMO"), QVariant());
    window->timer1Tick();
    EXPECT_TRUE(flash->isActive());

    // Discharged patients are off the list.
    ws->exec(QStringLiteral("update hAdmission set isDischarged = 1 where clientCat = ?"),
             {QStringLiteral("HMO")});
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());
}

TEST_P(MainWindowTimers, WithoutAdmissionLimitTimer1NeverTouchesTmrExpired)
{
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"),
               QStringLiteral("0004"));
    addPatient(QStringLiteral("001/000000002"), QStringLiteral("BELLO"), QStringLiteral("MUSA"));
    addAdmission(QStringLiteral("001/000000001"), QStringLiteral("001000000001"),
                 QStringLiteral("NHIS"), QVariant());
    restartWith(QStringLiteral("Admission_Limit_Exists"), QStringLiteral("NO"));
    open();
    QTimer* flash = timer(QStringLiteral("tmrExpired"));
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());

    // Started by hand and then only a private stay past its limit: still left alone.
    ws->exec(QStringLiteral("update hAdmission set isDischarged = 1"));
    addAdmission(QStringLiteral("001/000000002"), QStringLiteral("001000000002"),
                 QStringLiteral("PRIVATE"), QVariant());
    flash->start();
    window->timer1Tick();
    EXPECT_TRUE(flash->isActive());
    // The expired-admission button does nothing either.
    child<QPushButton>(QStringLiteral("cmdExpired"))->click();
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(MainWindowTimers, AFailingTickIsQuietAndLeavesTheTimers)
{
    open();
    timer(QStringLiteral("tmrNotify"))->start();
    ws->connect()->execScript(QStringLiteral("drop view qryhreferal"));
    window->timer1Tick();
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(timer(QStringLiteral("tmrNotify"))->isActive());
    EXPECT_TRUE(timer(QStringLiteral("Timer1"))->isActive());
}

TEST_P(MainWindowTimers, ReferralBookDueTodayFlashesTheStrip)
{
    const QDate today(2026, 11, 23);
    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"));
    addReferral(QStringLiteral("001/000000001"), QStringLiteral("001000000001"), today.addDays(-7),
                today);
    open();
    window->timer3Tick();
    EXPECT_TRUE(timer(QStringLiteral("tmrMDI"))->isActive());
    EXPECT_TRUE(timer(QStringLiteral("tmrSound"))->isActive());
    EXPECT_TRUE(desk->ctx.session().newWorkFlag);
    // Until the book exists nothing opens, and nothing is said.
    EXPECT_TRUE(desk->prompter.messages().empty());

    auto* strip = child<QFrame>(QStringLiteral("Picture1"));
    window->tmrMDITick();
    const QRgb a = backgroundOf(strip).rgb();
    window->tmrMDITick();
    EXPECT_EQ(QSet<QRgb>({a, backgroundOf(strip).rgb()}),
              QSet<QRgb>({kRed.rgb(), kLightBlue.rgb()}));

    ws->exec(QStringLiteral("update hreferal set attendedToByRec = 1"));
    window->timer3Tick();
    EXPECT_FALSE(timer(QStringLiteral("tmrMDI"))->isActive());
    EXPECT_FALSE(timer(QStringLiteral("tmrSound"))->isActive());
    EXPECT_FALSE(desk->ctx.session().newWorkFlag);
}

TEST_P(MainWindowTimers, TheBellIsSilentAndHarmlessWithoutAudio)
{
    open();
    EXPECT_EQ(window->ringFile(), QStringLiteral(":/assets/ring1.wav"));
    EXPECT_TRUE(QFile(window->ringFile()).open(QIODevice::ReadOnly));
    window->tmrSoundTick();
    window->tmrWaitTick();
    EXPECT_TRUE(desk->prompter.messages().empty());

    // A ring1.wav beside the settings is the one that plays.
    QFile::copy(QStringLiteral(":/assets/ring1.wav"), ws->homePath(QStringLiteral("ring1.wav")));
    EXPECT_EQ(window->ringFile(), ws->homePath(QStringLiteral("ring1.wav")));
}

TEST_P(MainWindowTimers, NoticeHelpersAddTheirLinesWhenThereIsWork)
{
    const QDate today(2026, 11, 23);
    open();
    QString notice;
    window->VerifyApptDate(notice);
    window->VerifyDueDelivery(notice);
    window->VerifyAdmissionWaitList(notice);
    window->VerifyDueDischDate(notice);
    EXPECT_EQ(notice, QString());

    addPatient(QStringLiteral("001/000000001"), QStringLiteral("ADEYEMI"), QStringLiteral("TOLU"));
    addVisit(QStringLiteral("001/000000001"), QStringLiteral("001000000001"), today,
             QStringLiteral("09:00"));
    addReferral(QStringLiteral("001/000000001"), QStringLiteral("001000000001"), today, today, 0,
                QStringLiteral("IN-PATIENT"));
    ws->exec(QStringLiteral("insert into happointment (consultID, PNo, clinicType, ApptDate, "
                            "ApptTime, attendedto) values (?, ?, ?, ?, ?, 0)"),
             {QStringLiteral("001000000001"), QStringLiteral("001/000000001"),
              QStringLiteral("EYE CLINIC"), today, QStringLiteral("11:00")});
    notice = QStringLiteral("Prompts:");
    window->VerifyApptDate(notice);
    window->VerifyDueDelivery(notice);
    window->VerifyAdmissionWaitList(notice);
    EXPECT_EQ(notice, QStringLiteral("Prompts:\n--Some Patients Appt Date is Due Today--\n"
                                     "--There are Visits to the clinic Today--\n"
                                     "--Some Patients have been sent on Admission--"));

    window->getCompName(4);
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("XXXX"));
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowTimers);

// ---------------------------------------------------------------------------------------

using MainWindowStrip = MainWindowTest;

TEST_P(MainWindowStrip, ChangeLocationIsForManagementOnly)
{
    // A records officer outside MANAGEMENT still sees the button, and is refused.
    ws->exec(QStringLiteral("insert into ApplicationUsers (Username, Fullname, EmpID, hospID) "
                            "values (?, ?, ?, ?)"),
             {QStringLiteral("clerk"), QStringLiteral("MARY O'NEIL"), QStringLiteral("EMP009"),
              QStringLiteral("001")});
    ws->exec(QStringLiteral("insert into UserRoles (RoleID, Username) values (1, ?)"),
             {QStringLiteral("clerk")});
    ws->writeSettings(QStringLiteral("clerk"));
    ASSERT_EQ(runStartup(desk->ctx).outcome, StartupResult::Ok);
    open();
    auto* loc = child<QPushButton>(QStringLiteral("cmdLoc"));
    ASSERT_TRUE(loc->isVisible());
    loc->click();
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{QStringLiteral("You dont have Permission to Change App Location")});
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_P(MainWindowStrip, ManagementGetsTheLocationScreenModally)
{
    local::createKeyDb(ws->homePath(QStringLiteral("key.db")));
    open();
    QString seen;
    QTimer::singleShot(0, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            seen = modal->objectName();
            modal->close();
        }
    });
    child<QPushButton>(QStringLiteral("cmdLoc"))->click();
    EXPECT_EQ(seen, QStringLiteral("frmLocIP"));
    EXPECT_TRUE(desk->prompter.messages().empty()) << desk->prompter.lastText().toStdString();
}

TEST_P(MainWindowStrip, NewLocationPutsTheListAsideAndItsCloseBringsTheListBack)
{
    local::createKeyDb(ws->homePath(QStringLiteral("key.db")));
    open();
    // New on the list of servers: the list goes, the edit screen comes, nothing modal stays
    // over it. (Closed here if it did stay, so that the test fails instead of waiting.)
    QString leftModal;
    QTimer::singleShot(0, [&] {
        if (QWidget* list = QApplication::activeModalWidget())
            click(list, "cmdNew");
        if (QWidget* modal = QApplication::activeModalWidget()) {
            leftModal = modal->objectName();
            modal->close();
        }
    });
    child<QPushButton>(QStringLiteral("cmdLoc"))->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(leftModal, QString());
    EXPECT_EQ(desk->ctx.screens().find(QStringLiteral("frmLocIP")), nullptr);
    QWidget* edit = desk->ctx.screens().find(QStringLiteral("frmLocNew"));
    ASSERT_NE(edit, nullptr);
    // Its controls take the mouse and the keys: a location is added through them.
    click(edit, "cmdAdd");
    QTest::keyClicks(tolmar::test::edit(edit, "txtID"), QStringLiteral("10.0.0.9"));
    QTest::keyClicks(tolmar::test::edit(edit, "txtName"), QStringLiteral("annex"));
    click(edit, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Record Succesfully saved"));

    // Close: the list of servers comes back, modally, with the new entry.
    QString back;
    int entries = -1;
    click(edit, "CancelButton");
    QTimer::singleShot(0, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            back = modal->objectName();
            entries = combo(modal, "cboVehNo")->count();
            modal->close();
        }
    });
    QTest::qWait(20);
    EXPECT_EQ(back, QStringLiteral("frmLocIP"));
    EXPECT_EQ(entries, 1);
}

TEST_P(MainWindowStrip, FeeAndCommentsNeedAPatientOnScreen)
{
    open();
    for (const char* name : {"cmdFee", "cmdRxn"}) {
        desk->prompter.clear();
        child<QPushButton>(QString::fromLatin1(name))->click();
        EXPECT_EQ(desk->prompter.informs(),
                  QStringList{QStringLiteral("No Patient Name is Selected")})
            << name;
    }

    // The registration screen in front, its surname blank, then filled.
    auto* registration = new QWidget;
    registration->setObjectName(QStringLiteral("frmPatientsNew"));
    auto* surname = new QLineEdit(registration);
    surname->setObjectName(QStringLiteral("txtsurNAme"));
    desk->ctx.screens().show(registration);
    for (const char* name : {"cmdFee", "cmdRxn"}) {
        desk->prompter.clear();
        child<QPushButton>(QString::fromLatin1(name))->click();
        EXPECT_EQ(desk->prompter.informs(), QStringList{QStringLiteral("Specify a Patient Name")})
            << name;
    }
    surname->setText(QStringLiteral("ADEÒYÉ"));
    desk->prompter.clear();
    child<QPushButton>(QStringLiteral("cmdFee"))->click();
    child<QPushButton>(QStringLiteral("cmdRxn"))->click();
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(MainWindowStrip, Picture1ClickTogglesTheDebtFlash)
{
    open();
    auto* strip = child<QFrame>(QStringLiteral("Picture1"));
    auto* debt = child<QLabel>(QStringLiteral("lblDebt"));
    QTimer* flash = timer(QStringLiteral("Timer2"));

    QTest::mouseClick(strip, Qt::LeftButton, {}, QPoint(strip->width() - 3, 3));
    EXPECT_TRUE(desk->ctx.session().debtShown);
    EXPECT_TRUE(flash->isActive());
    window->timer2Tick();
    const QRgb first = backgroundOf(strip).rgb();
    EXPECT_EQ(backgroundOf(debt).rgb(), first);
    EXPECT_EQ(debt->palette().color(QPalette::WindowText), QColor(Qt::white));
    window->timer2Tick();
    EXPECT_EQ(QSet<QRgb>({first, backgroundOf(strip).rgb()}),
              QSet<QRgb>({kRed.rgb(), kLightBlue.rgb()}));

    QTest::mouseClick(strip, Qt::LeftButton, {}, QPoint(strip->width() - 3, 3));
    EXPECT_FALSE(desk->ctx.session().debtShown);
    EXPECT_FALSE(flash->isActive());
    EXPECT_EQ(backgroundOf(strip), kLightBlue);
}

TEST_P(MainWindowStrip, DebtFlashEndsWhenTheFlagGoes)
{
    open();
    auto* debt = child<QLabel>(QStringLiteral("lblDebt"));
    window->showDebt(QStringLiteral("Debt: 12,500.00"));
    EXPECT_EQ(debt->text(), QStringLiteral("Debt: 12,500.00"));
    EXPECT_TRUE(timer(QStringLiteral("Timer2"))->isActive());

    // Another screen clears the flag: the next tick puts the panel to rest and stops.
    desk->ctx.session().debtShown = false;
    window->timer2Tick();
    EXPECT_FALSE(timer(QStringLiteral("Timer2"))->isActive());
    // At rest the strip is light blue and the caption reads on the clock's panel again.
    EXPECT_EQ(backgroundOf(child<QFrame>(QStringLiteral("Picture1"))), kLightBlue);
    EXPECT_FALSE(debt->autoFillBackground());
    EXPECT_NE(debt->palette().color(QPalette::WindowText), kLightBlue);

    window->showDebt(QStringLiteral("Credit: 300.00"));
    window->clearDebt();
    EXPECT_FALSE(desk->ctx.session().debtShown);
    EXPECT_FALSE(timer(QStringLiteral("Timer2"))->isActive());
    EXPECT_EQ(debt->text(), QStringLiteral("Debt:"));
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowStrip);

// ---------------------------------------------------------------------------------------

using MainWindowFrame = MainWindowTest;

TEST_P(MainWindowFrame, WindowMenuArrangesAndListsTheOpenWindows)
{
    open();
    window->resize(1000, 700);
    QList<QWidget*> screens;
    for (const char* title : {"First", "Second"}) {
        auto* w = new QWidget;
        w->setWindowTitle(QString::fromLatin1(title));
        w->resize(200, 150);
        desk->ctx.screens().show(w);
        screens << w;
    }
    QMenu* menu = child<QMenu>(QStringLiteral("mnuWindow"));
    emit menu->aboutToShow();
    QStringList listed;
    for (QAction* a : menu->actions())
        if (a->objectName().startsWith(QLatin1String("mnuWindowList")))
            listed << a->text();
    EXPECT_EQ(listed, (QStringList{QStringLiteral("&1 First"), QStringLiteral("&2 Second")}));

    const auto subs = window->mdiArea()->subWindowList();
    ASSERT_EQ(subs.size(), 2);
    action(QStringLiteral("mnuWindowTV"))->trigger();
    EXPECT_EQ(subs[0]->geometry().top(), subs[1]->geometry().top());
    EXPECT_LT(subs[0]->geometry().right(), subs[1]->geometry().left());
    action(QStringLiteral("mnuWindowTH"))->trigger();
    EXPECT_EQ(subs[0]->geometry().left(), subs[1]->geometry().left());
    EXPECT_LT(subs[0]->geometry().bottom(), subs[1]->geometry().top());
    action(QStringLiteral("mnuWindowCascade"))->trigger();
    EXPECT_NE(subs[0]->geometry().topLeft(), subs[1]->geometry().topLeft());

    // Picking a listed window brings it forward.
    emit menu->aboutToShow();
    window->mdiArea()->setActiveSubWindow(subs[1]);
    emit menu->aboutToShow();
    action(QStringLiteral("mnuWindowList1"))->trigger();
    EXPECT_EQ(window->mdiArea()->activeSubWindow(), subs[0]);
}

TEST_P(MainWindowFrame, PrintShowsTheActiveWindowInAPreview)
{
    open();
    action(QStringLiteral("mnuPrint"))->trigger();
    EXPECT_EQ(window->findChild<QPrintPreviewDialog*>(), nullptr);

    auto* w = new QWidget;
    w->setWindowTitle(QStringLiteral("Patient Information"));
    w->resize(300, 200);
    desk->ctx.screens().show(w);
    action(QStringLiteral("mnuPrint"))->trigger();
    auto* preview = window->findChild<QPrintPreviewDialog*>(QStringLiteral("dlgPrintWindow"));
    ASSERT_NE(preview, nullptr);
    EXPECT_TRUE(preview->windowTitle().contains(QStringLiteral("Patient Information")));
    preview->close();
}

TEST_P(MainWindowFrame, ClosingAnsweredNoKeepsTheWindow)
{
    open();
    desk->prompter.answerNo();
    EXPECT_FALSE(window->close());
    EXPECT_TRUE(window->isVisible());
    ASSERT_NE(desk->prompter.last(), nullptr);
    EXPECT_EQ(desk->prompter.last()->kind, ScriptedPrompter::Message::Ask);
    EXPECT_EQ(desk->prompter.last()->text,
              QStringLiteral(" Do you want to Exit the Application?"));
    EXPECT_EQ(desk->prompter.last()->title, QStringLiteral("Exit Application"));
    EXPECT_TRUE(desk->endedWith.empty());
    EXPECT_EQ(ws->scalar(QStringLiteral("select islogout from UserActivities")).toInt(), 0);
}

TEST_P(MainWindowFrame, ClosingAnsweredYesClosesTheRowAndEnds)
{
    open();
    desk->prompter.answerYes();
    EXPECT_TRUE(window->close());
    EXPECT_EQ(desk->endedWith, std::vector<int>{0});
    const auto row = ws->connect()->queryOne(QStringLiteral("select * from UserActivities"));
    ASSERT_TRUE(row);
    EXPECT_TRUE(row->toBool(u"islogout"));
    EXPECT_FALSE(row->toBool(u"AutoLogoff"));
    EXPECT_EQ(row->text(u"Remarks"), QStringLiteral("RECORDS"));
    EXPECT_EQ(row->date(u"LogoutDate"), QDate(2026, 11, 23));
}

TEST_P(MainWindowFrame, AutoLogoffClosesWithoutAsking)
{
    open();
    desk->ctx.session().autoLogoff = true;
    EXPECT_TRUE(window->close());
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(desk->endedWith, std::vector<int>{0});
    const auto row = ws->connect()->queryOne(QStringLiteral("select * from UserActivities"));
    ASSERT_TRUE(row);
    EXPECT_TRUE(row->toBool(u"islogout"));
    EXPECT_TRUE(row->toBool(u"AutoLogoff"));
    EXPECT_EQ(row->text(u"Remarks"), QStringLiteral("RECORDS"));
}

TEST_P(MainWindowFrame, LogOffClosesTheRowAsTheUsersOwnWithoutAsking)
{
    open();
    action(QStringLiteral("mnuEPE"))->trigger();
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(desk->endedWith, std::vector<int>{0});
    EXPECT_FALSE(window->isVisible());
    const auto row = ws->connect()->queryOne(QStringLiteral("select * from UserActivities"));
    ASSERT_TRUE(row);
    EXPECT_TRUE(row->toBool(u"islogout"));
    EXPECT_FALSE(row->toBool(u"AutoLogoff"));
    EXPECT_EQ(row->text(u"Remarks"), QStringLiteral("RECORDS/SELF"));
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowFrame);

}  // namespace
