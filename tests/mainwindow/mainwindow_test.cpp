// The main window driven as a desk uses it, offscreen, on both backends: the menu tree, the
// load sequence with the expiry sweep, the timers, the button strip's checks, the debt
// panel, the Window menu, and the ways a run ends.
#include "mainwindowfixture.h"
#include "support/expect.h"
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
using namespace Qt::StringLiterals;

namespace {

// The menu bar, then the Attendance submenu of Report: each menu's name and caption, and its
// entries in order as "name=caption", "-" for a separator. An entry ending in ">screen" opens
// that screen; one ending in ">" belongs to a screen not built yet and does nothing.
const char* const kMenus[][3] = {
    {"mnuFile", "&File",
     "mnuCust=Company Information>frmRetainership|mnuCT=Clinic Types|mnuCDays=Clinic Days|"
     "mnuADTC=Assign Clinics to Doctors|mnuWards=Wards|"
     "mnuConRoom=Create Consulting Rooms|mnuUPFI=Upload Patient Files/Images|"
     "mnuDUPFI=Display Uploaded Files/Images|mnuHospEmp=Hospital Employees>|"
     "mnuRR=Renew Registration|mnuEmp=Staff Attendance|mnuDept=Department|"
     "mnuDesig=Designation|-|mnuPRA=Patient Residential Areas>frmAreas|-|"
     "mnuUAID=Update Attendnace ID|mnuUPID=Update Patient ID|mnuRDef=Reload Defaults|"
     "-|mnuUDFHCI=Update DB for HMO Client Information>frmRetainershipUpdDB|"
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
     "mnuPSITC=Billing>|mnuPBill=Print Bill>|-|mnuRct=Receipt|mnuRPtES=Print Receipt"},
    {"mnuVSF", "View",
     "mnuPBT=SMS Center / Birthdays|"
     "mnuPatAttTime=Patients' Movement Timeline / Activity Summary|"
     "mnuAppBook=Appointment/Referral Book|mnuPPEMB=Patients' Phone / Email Book|"
     "mnuRefBook=Referal Book|mnuVSII=Patient Information|"
     "mnuANPI=Ante Natal Patient Information|mnuEditArecord=&Display Entire Records|"
     "mnuEditFind=Search a Record |mnuRemnd=Reminders"},
    {"mnuTariff", "Tariff",
     "mnuTDrugs=Drugs>frmDrugPriceHMO|mnuTInv=Investigations>frmLabPriceHMO|"
     "mnuTServ=Services>frmServPriceHMO"},
    {"mnuReport", "&Report",
     "mnuStatSummaries=Statistical Summaries|mnuAAFC=Attendance Analysis|"
     "mnuASBD=Attendance Seen by Doctor (By OPD, IPD)|"
     "mnuPRBGP=Patients' Referal by GP|mnuRptSB=Daily  Attendance|"
     "mnuAttend=Attendance Analysis|mnuDR=Daily Registration|"
     "mnuPOA=Patients Currently on Admission|-|mnuBFT=Bills for Today|"
     "mnuINC=Income for Today|mnuHMONHIS=HMO && NHIS Enrollees|"
     "mnuConDet=Consultation Details|mnuMRpts=More Reports....|-|mnuSendM=Send Mail"},
    {"mnuAttend", "",
     "mnuAttendCoy=By Company>|mnuAttendClinic=By Clinic|mnuAttendDoc=By Doctor|"
     "mnuABNS=By Numerical Strength"},
    {"mnusecurity", "S&ecurity",
     "mnuUsers=&User Accounts>frmUsers|mnuUserRoles=&Assign Users To Roles>frmUserRole|"
     "mnuChangePWD=Change &Password...>frmChngPwd|-|mnuCreateRoles=Create &Roles>frmRole|"
     "mnuAcctEnable=&Enable Account...|mnuAcctDisable=&Disable Account...|-|"
     "mnuAuto=Auto ID Generator>|mnuLR=Login Report>"},
    {"mnuWindow", "&Window",
     "mnuWindowTV=Tile Vertical|mnuWindowTH=Tile Horizontal|mnuWindowCascade=Cascade"},
};

QColor backgroundOf(const QWidget* w)
{
    return w->palette().color(QPalette::Window);
}

const QColor kLightBlue(0x80, 0x80, 0xFF);
const QColor kRed(0xFF, 0x00, 0x00);

class MainWindowCase : public MainWindowTest {
protected:
    // Which of the watch's timers run, and the session's new-work flag, as "1" or "0" each.
    QString watch()
    {
        QString out;
        for (const char* t : {"tmrNotify", "tmrMDI", "tmrSound"})
            out += timer(QString::fromLatin1(t))->isActive() ? u'1' : u'0';
        return out + (desk->ctx.session().newWorkFlag ? u'1' : u'0');
    }
    // Two ticks of a flashing control show red and light blue, in either order.
    template <class Tick>
    bool flashes(const std::function<QColor()>& colour, Tick tick)
    {
        tick();
        const QRgb first = colour().rgb();
        tick();
        return QSet<QRgb>({first, colour().rgb()}) == QSet<QRgb>({kRed.rgb(), kLightBlue.rgb()});
    }
    // The run's activity row as "islogout AutoLogoff Remarks".
    QString activity()
    {
        const auto row = ws->connect()->queryOne(u"select * from UserActivities"_s);
        return row ? QStringLiteral("%1 %2 %3")
                         .arg(int(row->toBool(u"islogout")))
                         .arg(int(row->toBool(u"AutoLogoff")))
                         .arg(row->text(u"Remarks"))
                   : QString();
    }
};

// ---------------------------------------------------------------------------------------

using MainWindowMenu = MainWindowCase;

TEST_P(MainWindowMenu, EveryEntryStandsInItsMenuWithItsCaptionInOrderAndOpensItsScreen)
{
    open();
    QStringList bar, top;
    for (const QAction* a : window->menuBar()->actions())
        bar << a->objectName() + QLatin1Char('=') + a->text();
    int opened = 0;
    for (const auto& [menu, caption, entries] : kMenus) {
        const QString name = QString::fromUtf8(menu);
        if (*caption)
            top << name + QLatin1Char('=') + QString::fromUtf8(caption);
        QStringList want, got;
        const QMenu* m = child<QMenu>(name);
        ASSERT_NE(m, nullptr) << menu;
        for (const QAction* a : m->actions())
            got << (a->isSeparator() ? u"-"_s : a->objectName() + QLatin1Char('=') + a->text());
        for (const QString& entry : QString::fromUtf8(entries).split(QLatin1Char('|'))) {
            want << entry.section(QLatin1Char('>'), 0, 0);
            if (!entry.contains(QLatin1Char('>')))
                continue;
            const QString screen = entry.section(QLatin1Char('>'), 1);
            action(want.last().section(QLatin1Char('='), 0, 0))->trigger();
            opened += !screen.isEmpty();
            EXPECT_EQ(window->mdiArea()->subWindowList().size(), opened) << entry.toStdString();
            if (QMdiSubWindow* sub = window->mdiArea()->activeSubWindow(); !screen.isEmpty())
                EXPECT_EQ(sub ? sub->widget()->objectName() : QString(), screen)
                    << entry.toStdString();
        }
        // The Window menu lists the open windows after its own entries.
        EXPECT_EQ(got.mid(0, want.size()), want) << menu;
        if (name != u"mnuWindow")
            EXPECT_EQ(got.size(), want.size()) << menu;
    }
    EXPECT_EQ(bar, top);
    EXPECT_EQ(opened, 10);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(desk->endedWith.empty());
}

TEST_P(MainWindowMenu, SendMailNeedsMailSwitchedOn)
{
    open();
    action(u"mnuSendM"_s)->trigger();
    ASSERT_EQ(desk->prompter.informs().size(), 1);
    EXPECT_EQ(desk->prompter.lastText(),
              u"Mail is NOT Activated for \r\nTOLMAR SPECIALIST HOSPITAL"_s);
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Warning);
}

TEST_P(MainWindowMenu, IdentifierRepairsAndReloadRunFromTheFileMenu)
{
    addPatient(u"001/000000041"_s, u"OKAFOR"_s, u"ADA"_s);
    addVisit(u"001/000000041"_s, u"001000000077"_s, QDate(2026, 11, 2), u"08:00"_s);
    open();
    action(u"mnuUPID"_s)->trigger();
    action(u"mnuUAID"_s)->trigger();
    EXPECT_TRUE(desk->prompter.messages().empty());
    // The next numbers follow the highest in use.
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesPatientNo), u"001/000000042"_s);
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesConsultID), u"001000000078"_s);

    // Reloading the defaults keeps the run's activity row.
    const int sno = desk->ctx.session().activitySNo;
    ws->setDefault(u"AppLocation"_s, u"Yaba"_s);
    action(u"mnuRDef"_s)->trigger();
    EXPECT_EQ(window->windowTitle(), u"RECORDS (Ver 21) : @Yaba"_s);
    EXPECT_EQ(desk->ctx.session().activitySNo, sno);
    EXPECT_EQ(ws->scalar(u"select count(*) from UserActivities"_s).toInt(), 1);
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowMenu);

// ---------------------------------------------------------------------------------------

using MainWindowLoad = MainWindowCase;

TEST_P(MainWindowLoad, TitlePanelsCaptionsAndTheActivityRowComeFromTheSession)
{
    open();
    EXPECT_EQ(window->windowTitle(), u"RECORDS (Ver 21) : @Ikeja"_s);
    expectControls(window.get(), {"SbrTolmarPanel1=RECORDS", "SbrTolmarPanel2=ADAEZE OKAFOR",
                                  "lblDebt=Debt:", "lblDate=23/11/2026", "lblTime=9:30 AM"});
    // The strip's buttons with their captions.
    QStringList captions;
    for (const char* b : {"cmdExpired", "cmdLoc", "cmdPat", "cmdView", "cmdRxn", "cmdFee"})
        captions << child<QPushButton>(QString::fromLatin1(b))->text();
    EXPECT_EQ(captions, (QStringList{"Expired Admission", "Change Location", "Patients from Doctor",
                                     "Patients for Referal", "Comments", "ANC FEE"}));
    EXPECT_FALSE(desk->ctx.session().debtShown);
    EXPECT_FALSE(desk->ctx.session().computerName.isEmpty());
    const int sno = desk->ctx.session().activitySNo;
    ASSERT_GT(sno, 0);
    EXPECT_EQ(ws->scalar(u"select SNO from UserActivities"_s).toInt(), sno);
    EXPECT_EQ(activity(), u"0 0 RECORDS"_s);
}

TEST_P(MainWindowLoad, ButtonsShowByTheirDefaults)
{
    open();
    EXPECT_TRUE(child<QPushButton>(u"cmdExpired"_s)->isVisible());
    EXPECT_TRUE(child<QPushButton>(u"cmdLoc"_s)->isVisible());
    window.reset();

    ws->setDefault(u"Admission_Limit_Exists"_s, u"yes"_s);
    restartWith(u"App_Location_Change"_s, u"NO"_s);
    open();
    // Flags are the exact text "YES".
    EXPECT_FALSE(child<QPushButton>(u"cmdExpired"_s)->isVisible());
    EXPECT_FALSE(child<QPushButton>(u"cmdLoc"_s)->isVisible());
}

TEST_P(MainWindowLoad, SweepDeclaresExactlyTheCardsDueTodayOrBefore)
{
    const QDate today(2026, 11, 23);
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s, u"0001"_s, today.addDays(-40));
    addPatient(u"001/000000002"_s, u"O'CONNOR"_s, u"ÌFẸ́"_s, u"0001"_s, today);
    addPatient(u"001/000000003"_s, u"BELLO"_s, u"MUSA"_s, u"0001"_s, today.addDays(1));
    // Other payers' cards have no expiry date and never run out.
    addPatient(u"001/000000004"_s, u"EZE"_s, u"JOHN"_s, u"0004"_s, QVariant());
    // Declared on an earlier day: not counted again.
    addPatient(u"001/000000005"_s, u"YUSUF"_s, u"AISHA"_s, u"0001"_s, today.addDays(-400), 1);
    open();
    EXPECT_EQ(
        rowsOf(ws->connect()->query(u"select expired from hPatients order by PNo"_s), {"expired"}),
        (QStringList{"1", "1", "0", "0", "1"}));
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{u"2 Card(s) is/are due for Renewal and have been declared Expired"_s});
}

TEST_P(MainWindowLoad, NoCardDueSaysNothing)
{
    addPatient(u"001/000000003"_s, u"BELLO"_s, u"MUSA"_s, u"0001"_s, QDate(2027, 1, 1));
    open();
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(ws->scalar(u"select sum(expired) from hPatients"_s).toInt(), 0);
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

using MainWindowTimers = MainWindowCase;

TEST_P(MainWindowTimers, SameDayReferralStartsTheNoticeAndTheBell)
{
    const QDate today(2026, 11, 23);
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s);
    // Booked for another day, or already handled: neither is new work.
    addReferral(u"001/000000001"_s, u"001000000001"_s, today.addDays(-1), today);
    addReferral(u"001/000000001"_s, u"001000000002"_s, today, today, 1);
    open();
    window->timer1Tick();
    EXPECT_EQ(watch(), u"0000"_s);  // notice, strip, bell, new work

    addReferral(u"001/000000001"_s, u"001000000003"_s, today, today);
    window->timer1Tick();
    EXPECT_EQ(watch(), u"1011"_s);
    auto* view = child<QPushButton>(u"cmdView"_s);
    EXPECT_TRUE(flashes([&] { return view->palette().color(QPalette::Button); },
                        [&] { window->tmrNotifyTick(); }));

    ws->exec(u"update hreferal set attendedToByRec = 1"_s);
    window->timer1Tick();
    EXPECT_EQ(watch(), u"0000"_s);
}

TEST_P(MainWindowTimers, ExpiredAdmissionOfALimitedPayerFlashes)
{
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s, u"0004"_s);
    addPatient(u"001/000000002"_s, u"BELLO"_s, u"MUSA"_s);
    open();
    QTimer* flash = timer(u"tmrExpired"_s);

    // A limit still ahead: nothing has expired, the flashing stays as it was.
    addAdmission(u"001/000000001"_s, u"001000000001"_s, u"HMO"_s,
                 QDateTime(QDate(2026, 11, 23), QTime(9, 31)));
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());

    // A private patient past the limit stops it.
    addAdmission(u"001/000000002"_s, u"001000000002"_s, u"PRIVATE"_s,
                 QDateTime(QDate(2026, 11, 22), QTime(8, 0)));
    flash->start();
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());

    // An HMO stay without a limit counts as expired at once.
    addAdmission(u"001/000000001"_s, u"001000000003"_s, u"HMO"_s, QVariant());
    window->timer1Tick();
    EXPECT_TRUE(flash->isActive());

    // Discharged patients are off the list.
    ws->exec(u"update hAdmission set isDischarged = 1 where clientCat = ?"_s, {u"HMO"_s});
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());
}

TEST_P(MainWindowTimers, WithoutAdmissionLimitTimer1NeverTouchesTmrExpired)
{
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s, u"0004"_s);
    addPatient(u"001/000000002"_s, u"BELLO"_s, u"MUSA"_s);
    addAdmission(u"001/000000001"_s, u"001000000001"_s, u"NHIS"_s, QVariant());
    restartWith(u"Admission_Limit_Exists"_s, u"NO"_s);
    open();
    QTimer* flash = timer(u"tmrExpired"_s);
    window->timer1Tick();
    EXPECT_FALSE(flash->isActive());

    // Started by hand and then only a private stay past its limit: still left alone.
    ws->exec(u"update hAdmission set isDischarged = 1"_s);
    addAdmission(u"001/000000002"_s, u"001000000002"_s, u"PRIVATE"_s, QVariant());
    flash->start();
    window->timer1Tick();
    EXPECT_TRUE(flash->isActive());
    // The expired-admission button does nothing either.
    child<QPushButton>(u"cmdExpired"_s)->click();
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(MainWindowTimers, AFailingTickIsQuietAndLeavesTheTimers)
{
    open();
    timer(u"tmrNotify"_s)->start();
    ws->connect()->execScript(u"drop view qryhreferal"_s);
    window->timer1Tick();
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_TRUE(timer(u"tmrNotify"_s)->isActive());
    EXPECT_TRUE(timer(u"Timer1"_s)->isActive());
}

TEST_P(MainWindowTimers, ReferralBookDueTodayFlashesTheStrip)
{
    const QDate today(2026, 11, 23);
    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s);
    addReferral(u"001/000000001"_s, u"001000000001"_s, today.addDays(-7), today);
    open();
    window->timer3Tick();
    EXPECT_EQ(watch(), u"0111"_s);
    // Until the book exists nothing opens, and nothing is said.
    EXPECT_TRUE(desk->prompter.messages().empty());
    auto* strip = child<QFrame>(u"Picture1"_s);
    EXPECT_TRUE(flashes([&] { return backgroundOf(strip); }, [&] { window->tmrMDITick(); }));

    ws->exec(u"update hreferal set attendedToByRec = 1"_s);
    window->timer3Tick();
    EXPECT_EQ(watch(), u"0000"_s);
}

TEST_P(MainWindowTimers, TheBellIsSilentAndHarmlessWithoutAudio)
{
    open();
    EXPECT_EQ(window->ringFile(), u":/assets/ring1.wav"_s);
    EXPECT_TRUE(QFile(window->ringFile()).open(QIODevice::ReadOnly));
    window->tmrSoundTick();
    window->tmrWaitTick();
    EXPECT_TRUE(desk->prompter.messages().empty());

    // A ring1.wav beside the settings is the one that plays.
    QFile::copy(u":/assets/ring1.wav"_s, ws->homePath(u"ring1.wav"_s));
    EXPECT_EQ(window->ringFile(), ws->homePath(u"ring1.wav"_s));
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

    addPatient(u"001/000000001"_s, u"ADEYEMI"_s, u"TOLU"_s);
    addVisit(u"001/000000001"_s, u"001000000001"_s, today, u"09:00"_s);
    addReferral(u"001/000000001"_s, u"001000000001"_s, today, today, 0, u"IN-PATIENT"_s);
    ws->exec(
        u"insert into happointment (consultID, PNo, clinicType, ApptDate, "
        "ApptTime, attendedto) values (?, ?, ?, ?, ?, 0)"_s,
        {u"001000000001"_s, u"001/000000001"_s, u"EYE CLINIC"_s, today, u"11:00"_s});
    notice = u"Prompts:"_s;
    window->VerifyApptDate(notice);
    window->VerifyDueDelivery(notice);
    window->VerifyAdmissionWaitList(notice);
    EXPECT_EQ(notice,
              u"Prompts:\n--Some Patients Appt Date is Due Today--\n"
              "--There are Visits to the clinic Today--\n"
              "--Some Patients have been sent on Admission--"_s);

    window->getCompName(4);
    EXPECT_EQ(desk->prompter.lastText(), u"XXXX"_s);
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowTimers);

// ---------------------------------------------------------------------------------------

using MainWindowStrip = MainWindowCase;

TEST_P(MainWindowStrip, ChangeLocationIsForManagementOnly)
{
    // A records officer outside MANAGEMENT still sees the button, and is refused.
    ws->exec(
        u"insert into ApplicationUsers (Username, Fullname, EmpID, hospID) "
        "values (?, ?, ?, ?)"_s,
        {u"clerk"_s, u"MARY O'NEIL"_s, u"EMP009"_s, u"001"_s});
    ws->exec(u"insert into UserRoles (RoleID, Username) values (1, ?)"_s, {u"clerk"_s});
    ws->writeSettings(u"clerk"_s);
    ASSERT_EQ(runStartup(desk->ctx).outcome, StartupResult::Ok);
    open();
    auto* loc = child<QPushButton>(u"cmdLoc"_s);
    ASSERT_TRUE(loc->isVisible());
    loc->click();
    EXPECT_EQ(desk->prompter.informs(),
              QStringList{u"You dont have Permission to Change App Location"_s});
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_P(MainWindowStrip, ManagementGetsTheLocationScreenModally)
{
    local::createKeyDb(ws->homePath(u"key.db"_s));
    open();
    QString seen;
    QTimer::singleShot(0, [&] {
        if (QWidget* modal = QApplication::activeModalWidget()) {
            seen = modal->objectName();
            modal->close();
        }
    });
    child<QPushButton>(u"cmdLoc"_s)->click();
    EXPECT_EQ(seen, u"frmLocIP"_s);
    EXPECT_TRUE(desk->prompter.messages().empty()) << desk->prompter.lastText().toStdString();
}

TEST_P(MainWindowStrip, NewLocationPutsTheListAsideAndItsCloseBringsTheListBack)
{
    local::createKeyDb(ws->homePath(u"key.db"_s));
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
    child<QPushButton>(u"cmdLoc"_s)->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(leftModal, QString());
    EXPECT_EQ(desk->ctx.screens().find(u"frmLocIP"_s), nullptr);
    QWidget* edit = desk->ctx.screens().find(u"frmLocNew"_s);
    ASSERT_NE(edit, nullptr);
    // Its controls take the mouse and the keys: a location is added through them.
    click(edit, "cmdAdd");
    QTest::keyClicks(tolmar::test::edit(edit, "txtID"), u"10.0.0.9"_s);
    QTest::keyClicks(tolmar::test::edit(edit, "txtName"), u"annex"_s);
    click(edit, "OKButton");
    EXPECT_EQ(desk->prompter.lastText(), u"Record Succesfully saved"_s);

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
    EXPECT_EQ(back, u"frmLocIP"_s);
    EXPECT_EQ(entries, 1);
}

TEST_P(MainWindowStrip, FeeAndCommentsNeedAPatientOnScreen)
{
    open();
    for (const char* name : {"cmdFee", "cmdRxn"}) {
        desk->prompter.clear();
        child<QPushButton>(QString::fromLatin1(name))->click();
        EXPECT_EQ(desk->prompter.informs(), QStringList{u"No Patient Name is Selected"_s}) << name;
    }

    // The registration screen in front, its surname blank, then filled.
    auto* registration = new QWidget;
    registration->setObjectName(u"frmPatientsNew"_s);
    auto* surname = new QLineEdit(registration);
    surname->setObjectName(u"txtsurNAme"_s);
    desk->ctx.screens().show(registration);
    for (const char* name : {"cmdFee", "cmdRxn"}) {
        desk->prompter.clear();
        child<QPushButton>(QString::fromLatin1(name))->click();
        EXPECT_EQ(desk->prompter.informs(), QStringList{u"Specify a Patient Name"_s}) << name;
    }
    surname->setText(u"ADEÒYÉ"_s);
    desk->prompter.clear();
    child<QPushButton>(u"cmdFee"_s)->click();
    child<QPushButton>(u"cmdRxn"_s)->click();
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(MainWindowStrip, Picture1ClickTogglesTheDebtFlash)
{
    open();
    auto* strip = child<QFrame>(u"Picture1"_s);
    auto* debt = child<QLabel>(u"lblDebt"_s);
    QTimer* flash = timer(u"Timer2"_s);

    QTest::mouseClick(strip, Qt::LeftButton, {}, QPoint(strip->width() - 3, 3));
    EXPECT_TRUE(desk->ctx.session().debtShown);
    EXPECT_TRUE(flash->isActive());
    EXPECT_TRUE(flashes([&] { return backgroundOf(strip); },
                        [&] {
                            window->timer2Tick();
                            EXPECT_EQ(backgroundOf(debt), backgroundOf(strip));
                            EXPECT_EQ(debt->palette().color(QPalette::WindowText),
                                      QColor(Qt::white));
                        }));

    QTest::mouseClick(strip, Qt::LeftButton, {}, QPoint(strip->width() - 3, 3));
    EXPECT_FALSE(desk->ctx.session().debtShown);
    EXPECT_FALSE(flash->isActive());
    EXPECT_EQ(backgroundOf(strip), kLightBlue);
}

TEST_P(MainWindowStrip, DebtFlashEndsWhenTheFlagGoes)
{
    open();
    auto* debt = child<QLabel>(u"lblDebt"_s);
    window->showDebt(u"Debt: 12,500.00"_s);
    EXPECT_EQ(debt->text(), u"Debt: 12,500.00"_s);
    EXPECT_TRUE(timer(u"Timer2"_s)->isActive());

    // Another screen clears the flag: the next tick puts the panel to rest and stops.
    desk->ctx.session().debtShown = false;
    window->timer2Tick();
    EXPECT_FALSE(timer(u"Timer2"_s)->isActive());
    // At rest the strip is light blue and the caption reads on the clock's panel again.
    EXPECT_EQ(backgroundOf(child<QFrame>(u"Picture1"_s)), kLightBlue);
    EXPECT_FALSE(debt->autoFillBackground());
    EXPECT_NE(debt->palette().color(QPalette::WindowText), kLightBlue);

    window->showDebt(u"Credit: 300.00"_s);
    window->clearDebt();
    EXPECT_FALSE(desk->ctx.session().debtShown);
    EXPECT_FALSE(timer(u"Timer2"_s)->isActive());
    EXPECT_EQ(debt->text(), u"Debt:"_s);
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowStrip);

// ---------------------------------------------------------------------------------------

using MainWindowFrame = MainWindowCase;

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
    QMenu* menu = child<QMenu>(u"mnuWindow"_s);
    emit menu->aboutToShow();
    QStringList listed;
    for (QAction* a : menu->actions())
        if (a->objectName().startsWith(QLatin1String("mnuWindowList")))
            listed << a->text();
    EXPECT_EQ(listed, (QStringList{u"&1 First"_s, u"&2 Second"_s}));

    const auto subs = window->mdiArea()->subWindowList();
    ASSERT_EQ(subs.size(), 2);
    action(u"mnuWindowTV"_s)->trigger();
    EXPECT_EQ(subs[0]->geometry().top(), subs[1]->geometry().top());
    EXPECT_LT(subs[0]->geometry().right(), subs[1]->geometry().left());
    action(u"mnuWindowTH"_s)->trigger();
    EXPECT_EQ(subs[0]->geometry().left(), subs[1]->geometry().left());
    EXPECT_LT(subs[0]->geometry().bottom(), subs[1]->geometry().top());
    action(u"mnuWindowCascade"_s)->trigger();
    EXPECT_NE(subs[0]->geometry().topLeft(), subs[1]->geometry().topLeft());

    // Picking a listed window brings it forward.
    emit menu->aboutToShow();
    window->mdiArea()->setActiveSubWindow(subs[1]);
    emit menu->aboutToShow();
    action(u"mnuWindowList1"_s)->trigger();
    EXPECT_EQ(window->mdiArea()->activeSubWindow(), subs[0]);
}

TEST_P(MainWindowFrame, PrintShowsTheActiveWindowInAPreview)
{
    open();
    action(u"mnuPrint"_s)->trigger();
    EXPECT_EQ(window->findChild<QPrintPreviewDialog*>(), nullptr);

    auto* w = new QWidget;
    w->setWindowTitle(u"Patient Information"_s);
    w->resize(300, 200);
    desk->ctx.screens().show(w);
    action(u"mnuPrint"_s)->trigger();
    auto* preview = window->findChild<QPrintPreviewDialog*>(u"dlgPrintWindow"_s);
    ASSERT_NE(preview, nullptr);
    EXPECT_TRUE(preview->windowTitle().contains(u"Patient Information"_s));
    preview->close();
}

TEST_P(MainWindowFrame, EachWayOfEndingClosesTheActivityRowItsOwnWay)
{
    // How the run ends, whether the window closes, and the activity row it leaves as
    // "islogout AutoLogoff Remarks". Only a desk's own close asks first.
    const struct {
        const char* how;
        bool closes;
        const char* row;
    } cases[] = {
        {"answered no", false, "0 0 RECORDS"},
        {"answered yes", true, "1 0 RECORDS"},
        {"auto log-off", true, "1 1 RECORDS"},
        {"log off", true, "1 0 RECORDS/SELF"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.how);
        const QString how = QString::fromLatin1(c.how);
        ws->exec(u"delete from UserActivities"_s);
        desk->prompter.clear();
        desk->endedWith.clear();
        open();
        desk->ctx.session().autoLogoff = how == u"auto log-off";
        if (how == u"log off") {
            action(u"mnuEPE"_s)->trigger();
        } else {
            how == u"answered no" ? desk->prompter.answerNo() : desk->prompter.answerYes();
            EXPECT_EQ(window->close(), c.closes);
        }
        EXPECT_EQ(window->isVisible(), !c.closes);
        EXPECT_EQ(desk->endedWith, c.closes ? std::vector<int>{0} : std::vector<int>{});
        EXPECT_EQ(activity(), QString::fromLatin1(c.row));
        if (how.startsWith(u"answered")) {
            ASSERT_NE(desk->prompter.last(), nullptr);
            EXPECT_EQ(desk->prompter.last()->kind, ScriptedPrompter::Message::Ask);
            EXPECT_EQ(lastBox(desk->prompter),
                      u" Do you want to Exit the Application?|Exit Application"_s);
        } else {
            EXPECT_TRUE(desk->prompter.messages().empty());
        }
        if (how == u"answered yes")
            EXPECT_EQ(
                ws->connect()->queryOne(u"select * from UserActivities"_s)->date(u"LogoutDate"),
                QDate(2026, 11, 23));
        desk->prompter.answerYes();  // for the window of this round closing at the next open()
        desk->ctx.session().autoLogoff = true;
        window.reset();
    }
}

TOLMAR_INSTANTIATE_BACKENDS(MainWindowFrame);

}  // namespace
