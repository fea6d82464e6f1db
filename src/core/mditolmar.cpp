#include "core/mditolmar.h"

#include "core/activitylog.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/idgen.h"
#include "core/mainwatch.h"
#include "core/screenhost.h"
#include "core/serverlocation.h"
#include "patients/cardexpiry.h"
#include "platform/report.h"
#include "platform/sound.h"
#include "reports/menureports.h"
#include "security/accounts.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPushButton>
#include <QStatusBar>
#include <QSysInfo>
#include <QTimer>
#include <QVBoxLayout>

namespace tolmar {

namespace {

// Colours of the flashes: light blue and red, and cyan for the expired admissions.
const QColor kLightBlue(0x80, 0x80, 0xFF);
const QColor kRed(0xFF, 0x00, 0x00);
const QColor kCyan(0x00, 0xFF, 0xFF);
const QColor kWhite(0xFF, 0xFF, 0xFF);

// A button flashes its face; a strip or a label its background. Setting only the role
// that shows keeps the strip's colour from spreading to the buttons on it.
void setBackground(QWidget* w, const QColor& c)
{
    QPalette p = w->palette();
    p.setColor(qobject_cast<QAbstractButton*>(w) ? QPalette::Button : QPalette::Window, c);
    w->setPalette(p);
    w->setAutoFillBackground(true);
}

void setForeground(QWidget* w, const QColor& c)
{
    QPalette p = w->palette();
    p.setColor(QPalette::WindowText, c);
    w->setPalette(p);
}

// Back to the style's own colours (a button that has stopped flashing).
void restoreColours(QWidget* w)
{
    w->setPalette(QPalette());
    w->setAutoFillBackground(false);
}

}  // namespace

MdiTolmar::MdiTolmar(AppContext& ctx, QWidget* parent)
    : QMainWindow(parent), m_ctx(ctx), m_watch(std::make_unique<MainWatch>(ctx)),
      m_sound(std::make_unique<SoundPlayer>())
{
    setObjectName(QStringLiteral("MdiTolmar"));
    auto* centre = new QWidget(this);
    auto* column = new QVBoxLayout(centre);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    buildStrip();
    column->addWidget(m_picture1);
    m_area = new QMdiArea(centre);
    m_area->setObjectName(QStringLiteral("mdiArea"));
    m_area->setBackground(QColor(0x80, 0x80, 0x80));
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_area->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    column->addWidget(m_area, 1);
    setCentralWidget(centre);
    m_ctx.screens().setFrame(m_area);

    buildMenus();
    buildTimers();

    statusBar()->setObjectName(QStringLiteral("SbrTolmar"));
    m_rolePanel = new QLabel(this);
    m_rolePanel->setObjectName(QStringLiteral("SbrTolmarPanel1"));
    m_rolePanel->setMinimumWidth(140);
    m_userPanel = new QLabel(this);
    m_userPanel->setObjectName(QStringLiteral("SbrTolmarPanel2"));
    statusBar()->addWidget(m_rolePanel);
    statusBar()->addWidget(m_userPanel, 1);
    resize(1200, 800);
    applySession();
}

MdiTolmar::~MdiTolmar() { m_ctx.screens().setFrame(nullptr); }

// ---------------------------------------------------------------------------------------
// Building the frame

QAction* MdiTolmar::entry(QMenu* menu, const QString& name, const QString& caption,
                          std::function<void()> does)
{
    QAction* a = menu->addAction(caption);
    a->setObjectName(name);
    // Entries without an action of their own are there, and do nothing.
    if (does)
        connect(a, &QAction::triggered, this, [this, does] { command(does); });
    return a;
}

QAction* MdiTolmar::screenEntry(QMenu* menu, const QString& name, const QString& caption,
                                const QString& screen, const QVariantMap& args)
{
    return entry(menu, name, caption, [this, screen, args] { openScreen(screen, args); });
}

void MdiTolmar::buildMenus()
{
    auto top = [this](const QString& name, const QString& caption) {
        QMenu* m = menuBar()->addMenu(caption);
        m->setObjectName(name);
        m->menuAction()->setObjectName(name);
        return m;
    };
    using S = QString;

    QMenu* file = top(S("mnuFile"), S("&File"));
    screenEntry(file, S("mnuCust"), S("Company Information"), S("frmRetainership"));
    screenEntry(file, S("mnuCT"), S("Clinic Types"), S("frmClinicTypes"));
    screenEntry(file, S("mnuCDays"), S("Clinic Days"), S("frmClinicDays"));
    screenEntry(file, S("mnuADTC"), S("Assign Clinics to Doctors"), S("frmUserClinic"));
    screenEntry(file, S("mnuWards"), S("Wards"), S("frmWards"));
    screenEntry(file, S("mnuConRoom"), S("Create Consulting Rooms"), S("frmConRoom"));
    screenEntry(file, S("mnuUPFI"), S("Upload Patient Files/Images"), S("frmPatList2"));
    screenEntry(file, S("mnuDUPFI"), S("Display Uploaded Files/Images"),
                S("frmPatListDisplayImages"));
    entry(file, S("mnuHospEmp"), S("Hospital Employees"));
    screenEntry(file, S("mnuRR"), S("Renew Registration"), S("frmRenew"));
    screenEntry(file, S("mnuEmp"), S("Staff Attendance"), S("frmEmpAttendance"));
    entry(file, S("mnuDept"), S("Department"));
    entry(file, S("mnuDesig"), S("Designation"));
    file->addSeparator();
    screenEntry(file, S("mnuPRA"), S("Patient Residential Areas"), S("frmAreas"));
    file->addSeparator();
    entry(file, S("mnuUAID"), S("Update Attendnace ID"), [this] { updateAttendanceID(m_ctx); });
    entry(file, S("mnuUPID"), S("Update Patient ID"), [this] { updatePatientID(m_ctx); });
    entry(file, S("mnuRDef"), S("Reload Defaults"), [this] {
        if (m_ctx.rerunStartup)
            m_ctx.rerunStartup();
    });
    file->addSeparator();
    screenEntry(file, S("mnuUDFHCI"), S("Update DB for HMO Client Information"),
                S("frmRetainershipUpdDB"));
    entry(file, S("mnuGen"), S("Refresh System ID Generator"));
    entry(file, S("mnuPrint"), S("Print"), [this] { printActiveWindow(); });
    m_logOff = entry(file, S("mnuEPE"), S("Log off"), [this] { logOff(); });

    QMenu* act = top(S("mnuDT"), S("Activities"));
    screenEntry(act, S("mnuNreg"), S("Patient Attendance / Registration"), S("frmPatientsNew"));
    screenEntry(act, S("mnuAuthCode"), S("HMO Approval Code"), S("frmApprvCode"));
    screenEntry(act, S("mnuIHAFHP"), S("In-house Approval for HMO Patients"), S("frmApprv"));
    screenEntry(act, S("mnuRFGPD"), S("Referal From GP Doctor to Specialist"), S("frmReferal"));
    screenEntry(act, S("mnuADTCR"), S("Assign Doctors to Consulting Rooms (By Shift)"),
                S("frmSchedDoctor"));
    act->addSeparator();
    screenEntry(act, S("mnuREc"), S("Edit Atten&dance"), S("frmRecords"));
    screenEntry(act, S("mnuPANSE"), S("Patients' Attendance Numerical Strngth Entries"),
                S("frmPatAttendStrength"));
    screenEntry(act, S("mnuCons"), S("Consultation/Treatment"), S("frmConsultation"));
    screenEntry(act, S("mnuRef"), S("Referral/Appointment"), S("frmReferalEdit"));
    screenEntry(act, S("mnuPatDisch"), S("Patient Discharge from Admission"), S("frmDischarge"));
    act->addSeparator();
    screenEntry(act, S("mnuANR"), S("Update Ante-Natal Information"), S("frmAnteNatalReg"));

    QMenu* fin = top(S("mnuFin"), S("Financials"));
    entry(fin, S("mnuPSITC"), S("Billing"));
    screenEntry(fin, S("mnuPBill"), S("Print Bill"), S("rptPanelSummary"),
                {{S("printKind"), S("Bill")}, {S("caption"), S("select a bill No")}});
    fin->addSeparator();
    entry(fin, S("mnuRct"), S("Receipt"));
    screenEntry(fin, S("mnuRPtES"), S("Print Receipt"), S("rptPanelSummary"),
                {{S("printKind"), S("Receipt")}, {S("caption"), S("select a receipt No")}});

    QMenu* view = top(S("mnuVSF"), S("View"));
    screenEntry(view, S("mnuPBT"), S("SMS Center / Birthdays"), S("frmBirthday"));
    screenEntry(view, S("mnuPatAttTime"), S("Patients' Movement Timeline / Activity Summary"),
                S("frmTimeLine"));
    screenEntry(view, S("mnuAppBook"), S("Appointment/Referral Book"), S("frmBook"));
    screenEntry(view, S("mnuPPEMB"), S("Patients' Phone / Email Book"), S("frmPhoneBook"));
    screenEntry(view, S("mnuRefBook"), S("Referal Book"), S("frmBook"));
    screenEntry(view, S("mnuVSII"), S("Patient Information"), S("frmPatientInfo"));
    screenEntry(view, S("mnuANPI"), S("Ante Natal Patient Information"), S("frmPatientANCInfo"));
    screenEntry(view, S("mnuEditArecord"), S("&Display Entire Records"), S("frmSearch"));
    screenEntry(view, S("mnuEditFind"), S("Search a Record "), S("frmFind"));
    screenEntry(view, S("mnuRemnd"), S("Reminders"), S("frmReminder"));

    QMenu* tariff = top(S("mnuTariff"), S("Tariff"));
    screenEntry(tariff, S("mnuTDrugs"), S("Drugs"), S("frmDrugPriceHMO"));
    screenEntry(tariff, S("mnuTInv"), S("Investigations"), S("frmLabPriceHMO"));
    screenEntry(tariff, S("mnuTServ"), S("Services"), S("frmServPriceHMO"));

    using R = reports::MenuReport;
    QMenu* rep = top(S("mnuReport"), S("&Report"));
    screenEntry(rep, S("mnuStatSummaries"), S("Statistical Summaries"),
                S("FrmRptStatSummaries"));
    screenEntry(rep, S("mnuAAFC"), S("Attendance Analysis"), S("FrmRptAttend"));
    screenEntry(rep, S("mnuASBD"), S("Attendance Seen by Doctor (By OPD, IPD)"),
                S("FrmRptAttendBydoctor"));
    screenEntry(rep, S("mnuPRBGP"), S("Patients' Referal by GP"), S("FrmRptReferalBydoctor"));
    entry(rep, S("mnuRptSB"), S("Daily  Attendance"),
          [this] { menuReport(R::DailyAttendance); });
    QMenu* attend = rep->addMenu(S("Attendance Analysis"));
    attend->setObjectName(S("mnuAttend"));
    attend->menuAction()->setObjectName(S("mnuAttend"));
    screenEntry(attend, S("mnuAttendCoy"), S("By Company"), S("FrmRptAttendByCoy"));
    screenEntry(attend, S("mnuAttendClinic"), S("By Clinic"), S("FrmRptAttendByClinic"));
    screenEntry(attend, S("mnuAttendDoc"), S("By Doctor"), S("FrmRptAttendBydoctor"));
    screenEntry(attend, S("mnuABNS"), S("By Numerical Strength"), S("FrmRptAttendByStrength"));
    entry(rep, S("mnuDR"), S("Daily Registration"),
          [this] { menuReport(R::DailyRegistration); });
    entry(rep, S("mnuPOA"), S("Patients Currently on Admission"),
          [this] { menuReport(R::OnAdmission); });
    rep->addSeparator();
    entry(rep, S("mnuBFT"), S("Bills for Today"));
    entry(rep, S("mnuINC"), S("Income for Today"),
          [this] { menuReport(R::IncomeForToday); });
    entry(rep, S("mnuHMONHIS"), S("HMO && NHIS Enrollees"),
          [this] { menuReport(R::HmoEnrollees); });
    screenEntry(rep, S("mnuConDet"), S("Consultation Details"), S("rptPanelCon"));
    screenEntry(rep, S("mnuMRpts"), S("More Reports...."), S("rptPanelRec"));
    rep->addSeparator();
    entry(rep, S("mnuSendM"), S("Send Mail"), [this] { sendMail(); });

    QMenu* sec = top(S("mnusecurity"), S("S&ecurity"));
    screenEntry(sec, S("mnuUsers"), S("&User Accounts"), S("frmUsers"));
    screenEntry(sec, S("mnuUserRoles"), S("&Assign Users To Roles"), S("frmUserRole"));
    screenEntry(sec, S("mnuChangePWD"), S("Change &Password..."), S("frmChngPwd"));
    sec->addSeparator();
    screenEntry(sec, S("mnuCreateRoles"), S("Create &Roles"), S("frmRole"));
    entry(sec, S("mnuAcctEnable"), S("&Enable Account..."),
          [this] { security::setAccountStatus(m_ctx, true); });
    entry(sec, S("mnuAcctDisable"), S("&Disable Account..."),
          [this] { security::setAccountStatus(m_ctx, false); });
    sec->addSeparator();
    entry(sec, S("mnuAuto"), S("Auto ID Generator"));
    entry(sec, S("mnuLR"), S("Login Report"));

    m_windowMenu = top(S("mnuWindow"), S("&Window"));
    connect(m_windowMenu, &QMenu::aboutToShow, this, &MdiTolmar::fillWindowMenu);
    fillWindowMenu();
}

void MdiTolmar::buildStrip()
{
    m_picture1 = new QFrame(this);
    m_picture1->setObjectName(QStringLiteral("Picture1"));
    m_picture1->setFrameShape(QFrame::StyledPanel);
    m_picture1->setCursor(Qt::PointingHandCursor);
    m_picture1->setToolTip(QStringLiteral("Click to show or hide the patient's debt"));
    m_picture1->installEventFilter(this);
    setBackground(m_picture1, kLightBlue);
    auto* row = new QHBoxLayout(m_picture1);
    row->setContentsMargins(8, 6, 8, 6);
    row->setSpacing(6);

    auto button = [this, row](const QString& name, const QString& caption) {
        auto* b = new QPushButton(caption, m_picture1);
        b->setObjectName(name);
        b->setCursor(Qt::ArrowCursor);
        b->setMinimumHeight(30);
        row->addWidget(b);
        return b;
    };
    m_cmdExpired = button(QStringLiteral("cmdExpired"), QStringLiteral("Expired Admission"));
    m_cmdLoc = button(QStringLiteral("cmdLoc"), QStringLiteral("Change Location"));
    auto* cmdPat = button(QStringLiteral("cmdPat"), QStringLiteral("Patients from Doctor"));
    m_cmdView = button(QStringLiteral("cmdView"), QStringLiteral("Patients for Referal"));
    auto* cmdRxn = button(QStringLiteral("cmdRxn"), QStringLiteral("Comments"));
    auto* cmdFee = button(QStringLiteral("cmdFee"), QStringLiteral("ANC FEE"));

    // Frame1 sits in the middle of what the buttons leave of the strip.
    row->addStretch(1);
    m_frame1 = new QFrame(m_picture1);
    m_frame1->setObjectName(QStringLiteral("Frame1"));
    m_frame1->setFrameShape(QFrame::StyledPanel);
    setBackground(m_frame1, QColor(0xF4, 0xF6, 0xFB));
    auto* clock = new QHBoxLayout(m_frame1);
    clock->setContentsMargins(10, 4, 10, 4);
    clock->setSpacing(8);
    auto label = [this, clock](const QString& name, const QString& text, bool bold) {
        auto* l = new QLabel(text, m_frame1);
        l->setObjectName(name);
        if (bold) {
            QFont f = l->font();
            f.setBold(true);
            l->setFont(f);
        }
        clock->addWidget(l);
        return l;
    };
    label(QStringLiteral("lblServer"), QStringLiteral("Server Date & Time: "), false);
    m_lblDate = label(QStringLiteral("lblDate"), QString(), true);
    m_lblTime = label(QStringLiteral("lblTime"), QString(), true);
    m_lblDebt = label(QStringLiteral("lblDebt"), QStringLiteral("Debt:"), true);
    m_lblDebt->setMinimumWidth(150);
    m_lblDebt->setContentsMargins(6, 0, 6, 0);
    row->addWidget(m_frame1);
    row->addStretch(1);

    connect(m_cmdExpired, &QPushButton::clicked, this, [this] {
        command([this] {
            if (AppDefaults::isYes(m_ctx.session().defaults.Admission_Limit_Exists))
                openScreen(QStringLiteral("frmFlashExpire"));
        });
    });
    connect(m_cmdLoc, &QPushButton::clicked, this, [this] { command([this] { cmdLocClick(); }); });
    connect(cmdPat, &QPushButton::clicked, this,
            [this] { command([this] { openScreen(QStringLiteral("frmFlash")); }); });
    connect(m_cmdView, &QPushButton::clicked, this,
            [this] { command([this] { openScreen(QStringLiteral("frmReferal")); }); });
    connect(cmdFee, &QPushButton::clicked, this,
            [this] { command([this] { cmdFeeClick(QStringLiteral("frmInstantFee")); }); });
    connect(cmdRxn, &QPushButton::clicked, this,
            [this] { command([this] { cmdFeeClick(QStringLiteral("frmCommentsPMH")); }); });
}

QTimer* MdiTolmar::timer(const QString& name, int interval, bool running)
{
    auto* t = new QTimer(this);
    t->setObjectName(name);
    t->setInterval(interval);
    if (running)
        t->start();
    return t;
}

void MdiTolmar::buildTimers()
{
    m_timer1 = timer(QStringLiteral("Timer1"), 60000, true);
    m_timer3 = timer(QStringLiteral("Timer3"), 60000, true);
    QTimer* wait = timer(QStringLiteral("tmrWait"), 60000, true);
    m_tmrNotify = timer(QStringLiteral("tmrNotify"), 500, false);
    m_tmrExpired = timer(QStringLiteral("tmrExpired"), 500, false);
    m_tmrMDI = timer(QStringLiteral("tmrMDI"), 500, false);
    m_tmrSound = timer(QStringLiteral("tmrSound"), 60000, false);
    m_timer2 = timer(QStringLiteral("Timer2"), 1000, false);
    // There is no idle log-off in this module: the timer stands, off, and does nothing.
    timer(QStringLiteral("tmrIdle"), 10000, false);

    connect(m_timer1, &QTimer::timeout, this, &MdiTolmar::timer1Tick);
    connect(m_timer3, &QTimer::timeout, this, &MdiTolmar::timer3Tick);
    connect(wait, &QTimer::timeout, this, &MdiTolmar::tmrWaitTick);
    connect(m_tmrNotify, &QTimer::timeout, this, &MdiTolmar::tmrNotifyTick);
    connect(m_tmrExpired, &QTimer::timeout, this, &MdiTolmar::tmrExpiredTick);
    connect(m_tmrMDI, &QTimer::timeout, this, &MdiTolmar::tmrMDITick);
    connect(m_tmrSound, &QTimer::timeout, this, &MdiTolmar::tmrSoundTick);
    connect(m_timer2, &QTimer::timeout, this, &MdiTolmar::timer2Tick);
}

// ---------------------------------------------------------------------------------------
// Load

void MdiTolmar::applySession()
{
    const Session& s = m_ctx.session();
    setWindowTitle(QStringLiteral("%1 (Ver %2) : @%3")
                       .arg(s.loginRole)
                       .arg(kVersionMajor)
                       .arg(s.defaults.AppLocation));
    m_rolePanel->setText(s.loginRole);
    m_userPanel->setText(s.fullName);
}

void MdiTolmar::load()
{
    Session& s = m_ctx.session();
    // 1. and 2.
    applySession();
    m_lblDebt->setText(QStringLiteral("Debt:"));
    s.debtShown = false;
    m_lblDate->setText(s.serverDateText);
    m_lblTime->setText(s.serverTimeText);
    // 3.
    m_cmdExpired->setVisible(AppDefaults::isYes(s.defaults.Admission_Limit_Exists));
    m_cmdLoc->setVisible(AppDefaults::isYes(s.defaults.App_Location_Change));
    // 4. Once per run: "Reload Defaults" runs the start-up routine, not this load.
    openActivityRow(m_ctx, false, false, s.loginRole);
    // 5.
    m_logOff->setText(QStringLiteral("Log Off %1").arg(s.userName));
    // 6.
    declareExpiredCards();
    // 7.
    readWorkstationNames();
}

void MdiTolmar::declareExpiredCards()
{
    command([this] {
        const int count = tolmar::declareExpiredCards(m_ctx, m_ctx.session().serverDate);
        if (count > 0)
            m_ctx.prompter().inform(expiredCardsNotice(count), windowTitle());
    });
}

void MdiTolmar::readWorkstationNames()
{
    Session& s = m_ctx.session();
    s.computerName = qEnvironmentVariable("COMPUTERNAME");
    if (s.computerName.isEmpty())
        s.computerName = QSysInfo::machineHostName();
    s.windowsUser = qEnvironmentVariable("USERNAME");
    if (s.windowsUser.isEmpty())
        s.windowsUser = qEnvironmentVariable("USER");
}

// ---------------------------------------------------------------------------------------
// Helpers

void MdiTolmar::VerifyApptDate(QString& notice)
{
    m_watch->verifyApptDate(notice, m_ctx.session().serverDate);
}

void MdiTolmar::VerifyDueDelivery(QString& notice)
{
    m_watch->verifyDueDelivery(notice, m_ctx.session().serverDate);
}

void MdiTolmar::VerifyAdmissionWaitList(QString& notice)
{
    m_watch->verifyAdmissionWaitList(notice);
}

void MdiTolmar::VerifyDueDischDate(QString&) {}

void MdiTolmar::getCompName(int count)
{
    m_ctx.prompter().inform(QString(std::max(0, count), QLatin1Char('X')));
}

void MdiTolmar::refreshServerClock()
{
    m_ctx.refreshServerClock();
    const Session& s = m_ctx.session();
    if (s.serverDateTime.isValid()) {
        m_lblDate->setText(s.serverDateText);
        m_lblTime->setText(s.serverTimeText);
    }
}

QString MdiTolmar::ringFile() const
{
    const QString name = QStringLiteral("ring1.wav");
    for (const QString& dir : {QCoreApplication::applicationDirPath(), m_ctx.homeDir()}) {
        const QString path = QDir(dir).filePath(name);
        if (QFileInfo::exists(path))
            return path;
    }
    return QStringLiteral(":/assets/ring1.wav");
}

// ---------------------------------------------------------------------------------------
// Timers

void MdiTolmar::watchTick(const char* timerName, const std::function<void()>& body)
{
    // A failed tick ends quietly and leaves the timers as they were: a message box every
    // minute while the network is down would bury the desk, and the next tick tries again.
    try {
        body();
    } catch (const std::exception& e) {
        qWarning("%s: %s", timerName, qPrintable(describeError(e)));
    }
}

void MdiTolmar::timer1Tick()
{
    watchTick("Timer1", [this] {
        refreshServerClock();
        Session& s = m_ctx.session();
        if (m_watch->sameDayReferralsWaiting(s.serverDate)) {
            s.newWorkFlag = true;
            m_tmrNotify->start();
            m_tmrSound->start();
        } else {
            s.newWorkFlag = false;
            m_tmrNotify->stop();
            m_tmrSound->stop();
            restoreColours(m_cmdView);
        }
        if (!AppDefaults::isYes(s.defaults.Admission_Limit_Exists))
            return;
        switch (m_watch->expiredAdmissions(s.serverDateTime)) {
        case ExpiredAdmissionSignal::Start: m_tmrExpired->start(); break;
        case ExpiredAdmissionSignal::Stop:
            m_tmrExpired->stop();
            restoreColours(m_cmdExpired);
            break;
        case ExpiredAdmissionSignal::Unchanged: break;
        }
    });
}

void MdiTolmar::timer3Tick()
{
    watchTick("Timer3", [this] {
        Session& s = m_ctx.session();
        if (!m_watch->referralBookDue(s.serverDate)) {
            m_tmrSound->stop();
            m_tmrMDI->stop();
            setBackground(m_picture1, kLightBlue);
            s.newWorkFlag = false;
            return;
        }
        s.newWorkFlag = true;
        QWidget* book = m_ctx.screens().open(QStringLiteral("frmBook"));
        if (book) {
            if (auto* flash = book->findChild<QTimer*>(QStringLiteral("tmrDoc")))
                flash->start();
        }
        m_tmrMDI->start();
        m_tmrSound->start();
        // The book brings its lists up to date when asked; it is then in front.
        if (book && book->metaObject()->indexOfMethod("refresh()") >= 0)
            QMetaObject::invokeMethod(book, "refresh");
    });
}

void MdiTolmar::tmrNotifyTick()
{
    m_notifyPhase = !m_notifyPhase;
    setBackground(m_cmdView, m_notifyPhase ? kRed : kLightBlue);
}

void MdiTolmar::tmrExpiredTick()
{
    m_expiredPhase = !m_expiredPhase;
    setBackground(m_cmdExpired, m_expiredPhase ? kRed : kCyan);
}

void MdiTolmar::tmrMDITick()
{
    m_mdiPhase = !m_mdiPhase;
    setBackground(m_picture1, m_mdiPhase ? kLightBlue : kRed);
}

void MdiTolmar::tmrSoundTick() { m_sound->play(ringFile()); }

void MdiTolmar::tmrWaitTick()
{
    // A pause of 59 rounds of the event loop; nothing comes of it.
    for (int i = 0; i < 59; ++i)
        QCoreApplication::processEvents();
}

// ---------------------------------------------------------------------------------------
// The debt panel

void MdiTolmar::timer2Tick()
{
    if (m_ctx.session().debtShown) {
        m_debtPhase = !m_debtPhase;
        const QColor c = m_debtPhase ? kRed : kLightBlue;
        setBackground(m_picture1, c);
        setBackground(m_lblDebt, c);
        setForeground(m_lblDebt, kWhite);
        return;
    }
    quietDebt();
}

void MdiTolmar::togglePicture1()
{
    Session& s = m_ctx.session();
    s.debtShown = !s.debtShown;
    if (s.debtShown) {
        m_timer2->start();
    } else {
        quietDebt();
    }
}

void MdiTolmar::showDebt(const QString& caption)
{
    m_ctx.session().debtShown = true;
    m_lblDebt->setText(caption);
    m_timer2->start();
}

void MdiTolmar::clearDebt()
{
    m_ctx.session().debtShown = false;
    m_lblDebt->setText(QStringLiteral("Debt:"));
    quietDebt();
}

void MdiTolmar::quietDebt()
{
    // At rest the panel looks as it did when the window opened: a blue strip and the
    // caption readable on the clock's own panel, never a bar painted over in one colour.
    m_timer2->stop();
    m_debtPhase = false;
    setBackground(m_picture1, kLightBlue);
    restoreColours(m_lblDebt);
}

bool MdiTolmar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_picture1 && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton) {
        togglePicture1();
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

// ---------------------------------------------------------------------------------------
// Commands

void MdiTolmar::command(const std::function<void()>& body) { runCommand(this, m_ctx, body); }

void MdiTolmar::openScreen(const QString& screen, const QVariantMap& args)
{
    m_ctx.screens().open(screen, args);
}

void MdiTolmar::cmdLocClick()
{
    ServerLocations(m_ctx).requireLocationRight();
    m_ctx.screens().openModal(QStringLiteral("frmLocIP"));
}

void MdiTolmar::requirePatientOnScreen()
{
    QWidget* active = m_ctx.screens().activeScreen();
    if (!active)
        throw CheckFailed(QStringLiteral("No Patient Name is Selected"));
    if (active->objectName() == QLatin1String("frmPatientsNew")) {
        auto* surname = active->findChild<QLineEdit*>(QStringLiteral("txtsurNAme"));
        if (!surname || surname->text().trimmed().isEmpty())
            throw CheckFailed(QStringLiteral("Specify a Patient Name"));
    }
}

void MdiTolmar::cmdFeeClick(const QString& screen)
{
    requirePatientOnScreen();
    openScreen(screen);
}

void MdiTolmar::sendMail()
{
    const Session& s = m_ctx.session();
    if (!s.defaults.mailActivated())
        throw CheckFailed(QStringLiteral("Mail is NOT Activated for \r\n%1").arg(s.hospitalName),
                          QString(), QString(), Icon::Warning);
    openScreen(QStringLiteral("frmMail"));
}

void MdiTolmar::menuReport(reports::MenuReport which)
{
    const auto found = reports::runMenuReport(m_ctx, which);
    reports::showListReport(m_ctx, found.layout, found.rows, found.caption);
}

void MdiTolmar::printActiveWindow()
{
    QMdiSubWindow* sub = m_area->activeSubWindow();
    if (!sub)
        sub = m_area->currentSubWindow();
    if (sub)
        report::previewWindowPrint(sub, this);
}

// ---------------------------------------------------------------------------------------
// The Window menu

void MdiTolmar::fillWindowMenu()
{
    m_windowMenu->clear();
    auto* tv = m_windowMenu->addAction(QStringLiteral("Tile Vertical"), this,
                                       [this] { tileWindows(Qt::Horizontal); });
    tv->setObjectName(QStringLiteral("mnuWindowTV"));
    auto* th = m_windowMenu->addAction(QStringLiteral("Tile Horizontal"), this,
                                       [this] { tileWindows(Qt::Vertical); });
    th->setObjectName(QStringLiteral("mnuWindowTH"));
    auto* cascade = m_windowMenu->addAction(QStringLiteral("Cascade"), m_area,
                                            &QMdiArea::cascadeSubWindows);
    cascade->setObjectName(QStringLiteral("mnuWindowCascade"));

    const QList<QMdiSubWindow*> open = m_area->subWindowList();
    if (open.isEmpty())
        return;
    m_windowMenu->addSeparator();
    QMdiSubWindow* active = m_area->activeSubWindow();
    for (int i = 0; i < open.size(); ++i) {
        QMdiSubWindow* sub = open[i];
        const QString text = i < 9 ? QStringLiteral("&%1 %2").arg(i + 1).arg(sub->windowTitle())
                                   : QStringLiteral("%1 %2").arg(i + 1).arg(sub->windowTitle());
        QAction* a = m_windowMenu->addAction(text, this, [this, sub] {
            sub->showNormal();
            m_area->setActiveSubWindow(sub);
        });
        a->setObjectName(QStringLiteral("mnuWindowList%1").arg(i + 1));
        a->setCheckable(true);
        a->setChecked(sub == active);
    }
}

// Side by side (columns) for "Tile Vertical", one above the other for "Tile Horizontal".
void MdiTolmar::tileWindows(Qt::Orientation along)
{
    QList<QMdiSubWindow*> open;
    for (QMdiSubWindow* sub : m_area->subWindowList())
        if (!sub->isMinimized() && sub->isVisible())
            open << sub;
    if (open.isEmpty())
        return;
    const QRect area = m_area->viewport()->rect();
    const int n = int(open.size());
    for (int i = 0; i < n; ++i) {
        open[i]->showNormal();
        if (along == Qt::Horizontal) {
            const int w = area.width() / n;
            open[i]->setGeometry(i * w, 0, i == n - 1 ? area.width() - i * w : w, area.height());
        } else {
            const int h = area.height() / n;
            open[i]->setGeometry(0, i * h, area.width(), i == n - 1 ? area.height() - i * h : h);
        }
    }
}

// ---------------------------------------------------------------------------------------
// Ending the run

void MdiTolmar::endRun(bool autoLogoff, const QString& remarks)
{
    closeActivityRow(m_ctx, true, autoLogoff, remarks);
    m_ending = true;
    m_ctx.endProcess(0);
}

void MdiTolmar::logOff()
{
    endRun(false, m_ctx.session().loginRole + QStringLiteral("/SELF"));
    close();
}

void MdiTolmar::closeEvent(QCloseEvent* event)
{
    if (m_ending) {
        event->accept();
        return;
    }
    const Session& s = m_ctx.session();
    if (s.autoLogoff) {
        endRun(true, s.loginRole);
        event->accept();
        return;
    }
    if (!m_ctx.prompter().ask(QStringLiteral(" Do you want to Exit the Application?"),
                              QStringLiteral("Exit Application"))) {
        event->ignore();
        return;
    }
    endRun(false, s.loginRole);
    event->accept();
}

}  // namespace tolmar
