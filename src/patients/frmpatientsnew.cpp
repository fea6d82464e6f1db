#include "patients/frmpatientsnew.h"

#include "billing/debtdisplay.h"
#include "clinical/doctorallocation.h"
#include "core/age.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"
#include "core/patientinfo.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "patients/cardrenewal.h"
#include "patients/duplicatecheck.h"
#include "patients/patientrecord.h"
#include "patients/patientrepo.h"
#include "patients/patientsearch.h"
#include "patients/registrationdesk.h"
#include "platform/db.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDebug>
#include <QKeyEvent>
#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QEvent>
#include <QFormLayout>
#include <QFocusEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTableView>
#include <QTimeEdit>
#include <QTimer>
#include <QVBoxLayout>

#include <tuple>

namespace tolmar {

using namespace patients;

namespace {

const QString kTitle = QStringLiteral("Patient Attendance / Registration");
const QString kNoPatient = QStringLiteral("No Patient! Please select a Patient");
// How often the doctors' queue is read again while the screen is open.
constexpr int kQueueRefreshMs = 60000;

enum Tab { TabRegistration = 0, TabPatients = 1, TabHistory = 2 };

// Selects the entry with this text; -1 (nothing) when the list does not hold it.
void choose(QComboBox* box, const QString& text)
{
    box->setCurrentIndex(text.isEmpty() ? -1 : box->findText(text));
}

// A control and a companion side by side on one form row.
QWidget* pair(QWidget* owner, QWidget* main, QWidget* beside)
{
    auto* row = new QWidget(owner);
    auto* h = new QHBoxLayout(row);
    h->setContentsMargins(0, 0, 0, 0);
    h->addWidget(main, 1);
    h->addWidget(beside);
    return row;
}

}  // namespace

frmPatientsNew::frmPatientsNew(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setObjectName(QStringLiteral("frmPatientsNew"));
    setWindowTitle(kTitle);
    buildForm();
    connectRules();

    // Load: the lists, then the fields locked, the day's registrations and the queues.
    runCommand(this, m_ctx, [this] {
        loadStaticLists();
        loadBoxes();
    });
    clearFields();
    m_dtExpDate->setDate(m_ctx.session().serverDate);
    setMode(Mode::View);
    fillGrid();
    getDocWaitList();
    m_timer1->start();
}

// ---------------------------------------------------------------------------------------
// Building the screen

void frmPatientsNew::buildForm()
{
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(6, 6, 6, 6);
    root->setSpacing(4);

    // The lookup stands beside the tabs so that it is at hand from every page, on the
    // line the tab bar takes anyway: the form needs every row of a laptop's height.
    auto* search = new QWidget(this);
    auto* searchRow = new QHBoxLayout(search);
    searchRow->setContentsMargins(0, 0, 4, 2);
    m_label5 = new QLabel(kTitle, search);
    m_label5->setObjectName(QStringLiteral("Label5"));
    auto* searchLabel = new QLabel(QStringLiteral("Quick Search "), search);
    m_txtName = new QLineEdit(search);
    m_txtName->setObjectName(QStringLiteral("txtName"));
    m_txtName->setPlaceholderText(QStringLiteral("Name, card or phone"));
    m_txtName->setMaximumWidth(220);
    searchLabel->setBuddy(m_txtName);
    auto searchButton = [&](const char* name, const char* caption) {
        auto* b = new QPushButton(QString::fromUtf8(caption), search);
        b->setObjectName(QString::fromUtf8(name));
        b->setAutoDefault(false);
        return b;
    };
    m_cmdOK = searchButton("cmdOK", "By Name");
    m_cmdCard = searchButton("cmdCard", "Card No");
    m_cmdSys = searchButton("cmdSys", "Tel No");
    m_lblFound = new QLabel(search);
    m_lblFound->setObjectName(QStringLiteral("lblFound"));
    m_lblFound->setMinimumWidth(110);
    searchRow->addWidget(m_label5);
    searchRow->addSpacing(12);
    for (QWidget* w : std::initializer_list<QWidget*>{searchLabel, m_txtName, m_cmdOK, m_cmdCard,
                                                       m_cmdSys, m_lblFound})
        searchRow->addWidget(w);

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("SSTab1"));
    m_tabs->setCornerWidget(search, Qt::TopRightCorner);
    root->addWidget(m_tabs, 1);

    // Four columns of at most thirteen rows: the whole form, its command row and the
    // doctors' queue fit a maximised window on a 1366 x 768 display. Below that size the
    // form scrolls, the command row and the queue stay.
    auto* reg = new QWidget;
    reg->setObjectName(QStringLiteral("tabRegistration"));
    auto* columns = new QHBoxLayout(reg);
    columns->setContentsMargins(4, 2, 4, 2);
    columns->setSpacing(8);
    QWidget* col[4];
    for (QWidget*& c : col) {
        c = new QWidget(reg);
        columns->addWidget(c, 1);
    }
    buildPersonal(col[0]);
    buildCardAndPayer(col[1]);
    buildKinAndAttendance(col[2], col[3]);
    for (auto* form : reg->findChildren<QFormLayout*>())
        form->setVerticalSpacing(2);
    for (auto* box : reg->findChildren<QComboBox*>())
        box->setMinimumContentsLength(10);
    auto* scroll = new QScrollArea(m_tabs);
    scroll->setObjectName(QStringLiteral("scrRegistration"));
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setWidget(reg);
    m_tabs->addTab(scroll, QStringLiteral("Registration"));

    buildGrids();

    auto* buttons = new QHBoxLayout;
    auto button = [this](QPushButton*& b, const char* name, const char* caption) {
        b = new QPushButton(QString::fromUtf8(caption), this);
        b->setObjectName(QString::fromLatin1(name));
        b->setAutoDefault(false);
        return b;
    };
    for (auto [b, name, caption] :
         {std::tuple{&m_cmdAdd, "cmdAdd", "&Add"}, {&m_cmdEdit, "cmdEdit", "&Edit"},
          {&m_okButton, "OKButton", "&Save"}, {&m_cmdCancel, "cmdCancel", "Ca&ncel"},
          {&m_cmdDel, "cmdDel", "&Delete"}, {&m_cmdRefresh, "cmdRefresh", "&Refresh"}})
        buttons->addWidget(button(*b, name, caption));
    buttons->addStretch(1);
    buttons->addWidget(button(m_cancelButton, "CancelButton", "&Close"));
    root->addLayout(buttons);

    // The patient's own file, beside the photograph in the first column.
    auto* file = new QGridLayout;
    file->setSpacing(4);
    // Row, column and span: the two long captions take a row each.
    for (auto [b, name, caption, row, col, span] :
         {std::tuple{&m_cmdRenew, "cmdRenew", "Renew Card", 0, 0, 1},
          {&m_cmdPatDep, "cmdPatDep", "Add Dependents", 0, 1, 1},
          {&m_cmdPix, "cmdPix", "Pictures", 1, 0, 1},
          {&m_cmdTake, "cmdTake", "Take Picture", 1, 1, 1},
          {&m_cmdComm, "cmdComm", "Consultation History", 2, 0, 2},
          {&m_cmdANC, "cmdANC", "Update Antenatal Information", 3, 0, 2},
          {&m_cmdClinic, "cmdClinic", "Add Patient to Other Clinic(s)", 4, 0, 2}}) {
        QPushButton* fileButton = button(*b, name, caption);
        fileButton->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        file->addWidget(fileButton, row, col, 1, span);
    }
    m_fileButtons->addLayout(file, 1);

    m_timer1 = new QTimer(this);
    m_timer1->setObjectName(QStringLiteral("Timer1"));
    m_timer1->setInterval(kQueueRefreshMs);
    resize(1340, 720);
}

void frmPatientsNew::buildPersonal(QWidget* column)
{
    auto* v = new QVBoxLayout(column);
    v->setContentsMargins(0, 0, 0, 0);
    ui::FormBuilder f(column, v);
    f.section(QStringLiteral("Patient"), QStringLiteral("fraPatient"));
    m_cboNew = f.combo(QStringLiteral("cboNew"), QStringLiteral("New/Existing Reg"));
    m_cboTitle = f.combo(QStringLiteral("cboTitle"), QStringLiteral("Title"));
    m_txtSurname = f.text(QStringLiteral("txtsurNAme"), QStringLiteral("Surname"));
    m_txtFirstName = f.text(QStringLiteral("txtfirstNAme"), QStringLiteral("Othernames (two)"));
    m_txtHomeAddress = f.text(QStringLiteral("txtHomeAddress"), QStringLiteral("Home Address"));
    m_cboArea = f.combo(QStringLiteral("cboArea"), QStringLiteral("Area/Location"));
    m_txtOfficeAddress = f.text(QStringLiteral("txtOfficeAddress"), QStringLiteral("Office Name"));
    m_txtPhone = f.text(QStringLiteral("txtPhone"), QStringLiteral("Phone No"));
    m_txtPhone->setPlaceholderText(QStringLiteral("One GSM No ONLY"));
    m_txtPhone->setToolTip(QStringLiteral("One GSM No ONLY, eg 08031234567"));
    // Digits only: one GSM number, nothing else.
    m_txtPhone->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), m_txtPhone));
    m_txtEmail = f.text(QStringLiteral("txtEmail"), QStringLiteral("Email"));
    m_txtSex = f.combo(QStringLiteral("txtSex"), QStringLiteral("Sex"));
    m_dtDate = f.optionalDate(QStringLiteral("dtDate"), QStringLiteral("Date of Birth"));
    m_txtAge = f.text(QStringLiteral("txtAge"), QStringLiteral("Age (Yrs)"));
    m_txtAge->setToolTip(QStringLiteral("Type the age in years to set the date of birth"));
    m_cboMat = f.combo(QStringLiteral("cboMat"), QStringLiteral("Patient Maturity"));
    // Shown only while a new patient resembles someone on file.
    m_fraDuplicates = new QGroupBox(QStringLiteral("Likely duplicates"), column);
    m_fraDuplicates->setObjectName(QStringLiteral("fraDuplicates"));
    auto* dv = new QVBoxLayout(m_fraDuplicates);
    dv->setContentsMargins(4, 2, 4, 4);
    m_lstDuplicates = new QListWidget(m_fraDuplicates);
    m_lstDuplicates->setObjectName(QStringLiteral("lstDuplicates"));
    m_lstDuplicates->setMaximumHeight(72);
    m_lstDuplicates->setFocusPolicy(Qt::NoFocus);
    dv->addWidget(m_lstDuplicates);
    m_fraDuplicates->hide();
    v->addWidget(m_fraDuplicates);
    v->addStretch(1);
}

void frmPatientsNew::buildCardAndPayer(QWidget* column)
{
    auto* v = new QVBoxLayout(column);
    v->setContentsMargins(0, 0, 0, 0);
    ui::FormBuilder f(column, v);
    f.section(QStringLiteral("Card and Payer"), QStringLiteral("fraCard"));
    m_cboFile = f.combo(QStringLiteral("cboFile"), QStringLiteral("Card Duration"));
    m_cboCard = f.combo(QStringLiteral("cboCard"), QStringLiteral("Card Type"));
    m_txtSupp = f.text(QStringLiteral("txtSupp"), QStringLiteral("System  No"));
    m_txtSupp->setReadOnly(true);
    m_txtSupp->setFocusPolicy(Qt::ClickFocus);
    m_txtOLD = f.text(QStringLiteral("txtOLD"), QStringLiteral("Hospital Card No"));
    m_dtRegDate = f.date(QStringLiteral("dtRegDate"), QStringLiteral("Reg Date"));
    m_dtExpDate = f.optionalDate(QStringLiteral("dtExpDate"), QStringLiteral("Exp Date"));
    m_cboPat = f.combo(QStringLiteral("cboPat"), QStringLiteral("Company Name"));
    m_cboPat->installEventFilter(this);
    m_cboPat->view()->installEventFilter(this);

    m_cboClient = new QComboBox(column);
    m_cboClient->setObjectName(QStringLiteral("cboClient"));
    m_chkAll = new QCheckBox(QStringLiteral("Show All"), column);
    m_chkAll->setObjectName(QStringLiteral("chkAll"));
    f.field(pair(column, m_cboClient, m_chkAll), QStringLiteral("rowClient"),
            QStringLiteral("Billing Cat (Tariff)"));

    m_txtEmp = f.text(QStringLiteral("txtEmp"), QStringLiteral("Enrollee No"));
    m_txtPolicy = new QComboBox(column);
    m_txtPolicy->setObjectName(QStringLiteral("txtPolicy"));
    m_cmdPlan = new QPushButton(QStringLiteral("New..."), column);
    m_cmdPlan->setObjectName(QStringLiteral("cmdPlan"));
    m_cmdPlan->setAutoDefault(false);
    f.field(pair(column, m_txtPolicy, m_cmdPlan), QStringLiteral("rowPolicy"),
            QStringLiteral("HMO Enrollee Plan"));
    m_cboRef = f.combo(QStringLiteral("cboRef"), QStringLiteral("Fee for Service?"));
    m_cboRefHmo = f.combo(QStringLiteral("cboRefHmo"), QStringLiteral("HMO Referal?"));
    m_cboIntro = f.combo(QStringLiteral("cboIntro"), QStringLiteral("Introduced By"));
    v->addStretch(1);
}

void frmPatientsNew::buildKinAndAttendance(QWidget* column, QWidget* attendance)
{
    auto* v = new QVBoxLayout(column);
    v->setContentsMargins(0, 0, 0, 0);
    ui::FormBuilder f(column, v);
    f.section(QStringLiteral("Other Details and Next of Kin"), QStringLiteral("fraKin"));
    m_cboMStatus = f.combo(QStringLiteral("cboMStatus"), QStringLiteral("Marital Status"));
    m_txtBG = f.combo(QStringLiteral("txtBG"), QStringLiteral("Blood Group"));
    m_txtGeno = f.combo(QStringLiteral("txtGeno"), QStringLiteral("Genotype"));
    m_txtOccu = f.text(QStringLiteral("txtOccu"), QStringLiteral("Occupation"));
    m_cboStatus = f.combo(QStringLiteral("cboStatus"), QStringLiteral("Religion"));
    m_txtKin = f.text(QStringLiteral("txtKin"), QStringLiteral("Next of Kin (NOK)"));
    m_txtNOKPhone = f.text(QStringLiteral("txtNOKPhone"), QStringLiteral("NOK Phone"));
    m_txtKinRel = f.combo(QStringLiteral("txtKinRel"), QStringLiteral("NOK Relationship"));
    m_txtKinAddress = f.text(QStringLiteral("txtKinAddress"), QStringLiteral("Address of NOK"));
    m_txtAdmitLimit =
        f.text(QStringLiteral("txtAdmitLimit"), QStringLiteral("Admission Limit (in hrs)"));
    m_txtAdmitLimit->setPlaceholderText(QStringLiteral("enter 0 to ignore"));
    m_txtAdmitLimit->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]*")), m_txtAdmitLimit));

    // The caption is a control of its own: Add sets it back to "Carry Over Debt".
    m_lblDebtCap = new QLabel(QStringLiteral("Carry Over Debt"), column);
    m_lblDebtCap->setObjectName(QStringLiteral("lblDebtCap"));
    m_lblDebt = new QLabel(fmt::money(0), column);
    m_lblDebt->setObjectName(QStringLiteral("lblDebt"));
    m_lblDebt->setFrameShape(QFrame::StyledPanel);
    m_lblDebt->setToolTip(QStringLiteral("Double-click to enter a carry-over debt"));
    m_lblDebt->installEventFilter(this);
    f.row(m_lblDebtCap, m_lblDebt);
    m_chkReg = f.check(QStringLiteral("chkReg"), QStringLiteral("Automatic Attendance"));

    v->addStretch(1);

    // The visit, then the patient's photograph and own file under it.
    column = attendance;
    auto* av = new QVBoxLayout(column);
    av->setContentsMargins(0, 0, 0, 0);
    ui::FormBuilder a(column, av);
    m_fraAttd = a.section(QStringLiteral("   Take Attendance/Appointment"),
                          QStringLiteral("fraAttd"));
    m_cboClin = a.combo(QStringLiteral("cboClin"), QStringLiteral("Clinic"));
    m_cboPurpose = a.combo(QStringLiteral("cboPurpose"), QStringLiteral("Purpose"));
    // The fee of the purpose on a line of its own: beside the box it widened the column
    // past the laptop's screen as soon as it was filled in.
    m_lblAmount = new QLabel(column);
    m_lblAmount->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    a.field(m_lblAmount, QStringLiteral("lblAmount"), QStringLiteral("Fee"));
    m_cboDoc = a.combo(QStringLiteral("cboDoc"), QStringLiteral("Doctor"));
    m_dtNext = a.optionalDate(QStringLiteral("dtNext"), QStringLiteral("Ref/Appt Date"));
    m_dtRefTime = new QTimeEdit(column);
    m_dtRefTime->setDisplayFormat(fmt::kShortTime);
    a.field(m_dtRefTime, QStringLiteral("dtRefTime"), QStringLiteral("Time"));
    m_piX = new QLabel(column);
    m_piX->setObjectName(QStringLiteral("piX"));
    m_piX->setFixedSize(96, 116);
    m_piX->setFrameShape(QFrame::StyledPanel);
    m_piX->setAlignment(Qt::AlignCenter);
    m_piX->setScaledContents(true);
    m_fileButtons = new QHBoxLayout;
    m_fileButtons->addWidget(m_piX, 0, Qt::AlignTop);
    av->addLayout(m_fileButtons);
    av->addStretch(1);
}

void frmPatientsNew::buildGrids()
{
    auto* patients = new QWidget(m_tabs);
    auto* pv = new QVBoxLayout(patients);
    ui::FormBuilder pf(patients, pv);
    m_grdData = pf.grid(QStringLiteral("grdData"));
    m_tabs->addTab(patients, QStringLiteral("Patients"));

    auto* history = new QWidget(m_tabs);
    auto* hv = new QVBoxLayout(history);
    ui::FormBuilder hf(history, hv);
    m_cmdAttend = hf.button(QStringLiteral("cmdAttend"), QStringLiteral("Click to View"));
    m_grdAttend = hf.grid(QStringLiteral("grdAttend"));
    m_tabs->addTab(history, QStringLiteral("Attendance History"));

    // The queues stay in sight under the form: the desk watches them while it works.
    auto* queue = new QGroupBox(
        QStringLiteral("Patients' Assigned to Doctors / Consulting Rooms (Automatic)"), this);
    queue->setObjectName(QStringLiteral("fraDoc"));
    auto* qv = new QVBoxLayout(queue);
    qv->setContentsMargins(4, 2, 4, 4);
    ui::FormBuilder qf(queue, qv);
    m_grdDoc = qf.grid(QStringLiteral("grdDoc"));
    // Three patients of the queue in sight at least, four at most: the form keeps the rest.
    const int rowHeight = m_grdDoc->verticalHeader()->defaultSectionSize();
    const int chrome = m_grdDoc->horizontalHeader()->sizeHint().height() +
                       2 * m_grdDoc->frameWidth();
    m_grdDoc->setMinimumHeight(chrome + 3 * rowHeight);
    m_grdDoc->setMaximumHeight(chrome + 4 * rowHeight);
    static_cast<QVBoxLayout*>(layout())->addWidget(queue);
}

void frmPatientsNew::loadStaticLists()
{
    ui::fillQuietly(m_cboNew, {QStringLiteral("NEW"), QStringLiteral("EXISTING")});
    ui::fillQuietly(m_cboTitle, titles());
    ui::fillQuietly(m_txtSex, {QStringLiteral("MALE"), QStringLiteral("FEMALE")});
    ui::fillQuietly(m_cboMat, maturities());
    ui::fillQuietly(m_cboFile, cardDurations());
    ui::fillQuietly(m_cboCard, {QStringLiteral("SINGLE"), QStringLiteral("FAMILY")});
    const QStringList yesNo{QStringLiteral("YES"), QStringLiteral("NO")};
    ui::fillQuietly(m_cboRef, yesNo);
    ui::fillQuietly(m_cboRefHmo, yesNo);
    ui::fillQuietly(m_cboMStatus, {QStringLiteral("SINGLE"), QStringLiteral("MARRIED")});
    ui::fillQuietly(m_txtBG, bloodGroups());
    ui::fillQuietly(m_txtGeno, genotypes());
    ui::fillQuietly(m_cboStatus, religions());
    ui::fillQuietly(m_txtKinRel, relations());
}

void frmPatientsNew::loadBoxes()
{
    db::Connection& c = m_ctx.db();
    ui::fillQuietly(m_cboArea, QStringList{QString()} + areaNames(c));
    ui::fillQuietly(m_cboPat, payerEntries(c, m_ctx.session().defaults.PRIVATE));
    ui::fillQuietly(m_cboIntro, introducerEntries(c));
    ui::fillQuietly(m_cboPurpose, purposes(c));
    const QSignalBlocker quiet(m_cboClin);
    m_cboClin->clear();
    for (const Clinic& clinic : attendanceClinics(c))
        m_cboClin->addItem(clinic.name, clinic.id);
    m_cboClin->setCurrentIndex(-1);
}

void frmPatientsNew::connectRules()
{
    connect(m_cmdAdd, &QPushButton::clicked, this, &frmPatientsNew::cmdAddClick);
    connect(m_cmdEdit, &QPushButton::clicked, this, &frmPatientsNew::cmdEditClick);
    connect(m_okButton, &QPushButton::clicked, this, &frmPatientsNew::okButtonClick);
    connect(m_cmdPatDep, &QPushButton::clicked, this, &frmPatientsNew::cmdPatDepClick);
    connect(m_cmdCancel, &QPushButton::clicked, this, &frmPatientsNew::cmdCancelClick);
    connect(m_cmdDel, &QPushButton::clicked, this, &frmPatientsNew::cmdDelClick);
    connect(m_cmdRefresh, &QPushButton::clicked, this, &frmPatientsNew::cmdRefreshClick);
    connect(m_cancelButton, &QPushButton::clicked, this, &QWidget::close);
    connect(m_cmdOK, &QPushButton::clicked, this, [this] {
        searchByButton(patients::kSearchName,
                       QStringLiteral("To locate a patient, Enter few Letters and click OK "
                                      "Button"));
    });
    connect(m_cmdCard, &QPushButton::clicked, this, &frmPatientsNew::cmdCardClick);
    connect(m_cmdSys, &QPushButton::clicked, this, [this] {
        searchByButton(patients::kSearchSysNo,
                       QStringLiteral("To locate a patient, Enter Patient Tel No and click "
                                      "'Tel No' Button"));
    });
    connect(m_txtName, &QLineEdit::returnPressed, this, &frmPatientsNew::cmdCardClick);
    connect(m_txtName, &QLineEdit::textChanged, this, &frmPatientsNew::txtNameChanged);
    connect(m_cmdAttend, &QPushButton::clicked, this, &frmPatientsNew::cmdAttendClick);
    connect(m_cmdANC, &QPushButton::clicked, this, &frmPatientsNew::cmdANCClick);
    connect(m_cmdComm, &QPushButton::clicked, this, &frmPatientsNew::cmdCommClick);
    connect(m_cmdRenew, &QPushButton::clicked, this, &frmPatientsNew::cmdRenewClick);
    connect(m_cmdPlan, &QPushButton::clicked, this, &frmPatientsNew::cmdPlanClick);
    connect(m_timer1, &QTimer::timeout, this, &frmPatientsNew::getDocWaitList);

    connect(m_cboPat, &QComboBox::currentIndexChanged, this, &frmPatientsNew::payerChosen);
    connect(m_cboClient, &QComboBox::currentIndexChanged, this,
            &frmPatientsNew::categoryChosen);
    connect(m_chkAll, &QCheckBox::toggled, this, &frmPatientsNew::fillCategories);
    connect(m_cboFile, &QComboBox::currentIndexChanged, this,
            &frmPatientsNew::cardDurationChosen);
    connect(m_cboRefHmo, &QComboBox::currentIndexChanged, this,
            &frmPatientsNew::hmoReferralChosen);
    connect(m_cboPurpose, &QComboBox::currentIndexChanged, this,
            &frmPatientsNew::purposeChosen);
    connect(m_cboClin, &QComboBox::currentIndexChanged, this, &frmPatientsNew::clinicChosen);
    connect(m_cboMat, &QComboBox::currentIndexChanged, this, &frmPatientsNew::maturityChosen);
    connect(m_txtAge, &QLineEdit::textEdited, this, &frmPatientsNew::ageTyped);
    connect(m_dtDate, &QDateEdit::dateChanged, this, &frmPatientsNew::dobChanged);
    connect(m_chkReg, &QCheckBox::toggled, this, &frmPatientsNew::attendanceTicked);
    connect(m_txtSurname, &QLineEdit::editingFinished, this, &frmPatientsNew::surnameLeft);
    for (QLineEdit* e : {m_txtSurname, m_txtFirstName, m_txtPhone, m_txtAge})
        connect(e, &QLineEdit::editingFinished, this, &frmPatientsNew::showLikelyDuplicates);
    connect(m_dtDate, &QDateEdit::editingFinished, this, &frmPatientsNew::showLikelyDuplicates);
    connect(m_grdData, &QTableView::doubleClicked, this, [this](const QModelIndex& i) {
        if (m_mode == Mode::View && i.isValid())
            grdDataDoubleClicked(i.row());
    });
    connect(m_grdDoc, &QTableView::doubleClicked, this, [this](const QModelIndex& i) {
        if (i.isValid())
            docGridDoubleClicked(i.row());
    });
}

// ---------------------------------------------------------------------------------------
// States

void frmPatientsNew::setMode(Mode mode)
{
    m_mode = mode;
    const bool editing = mode != Mode::View;
    for (QPushButton* b : {m_cmdAdd, m_cmdEdit, m_cmdDel})
        b->setEnabled(!editing);
    m_okButton->setEnabled(editing);
    m_cmdCancel->setEnabled(editing);
    EnableFields(!editing);
}

void frmPatientsNew::EnableFields(bool lock)
{
    QWidget* form = page(TabRegistration);
    for (QLineEdit* e : form->findChildren<QLineEdit*>()) {
        // The date boxes' own editors follow their box.
        if (qobject_cast<QAbstractSpinBox*>(e->parentWidget()) || e == m_txtSupp)
            continue;
        if (qobject_cast<QComboBox*>(e->parentWidget()))
            continue;
        e->setReadOnly(lock);
    }
    for (QComboBox* c : form->findChildren<QComboBox*>())
        c->setEnabled(!lock);
    for (QAbstractSpinBox* d : form->findChildren<QAbstractSpinBox*>())
        d->setEnabled(!lock);
    m_cmdPlan->setEnabled(!lock);
    m_chkAll->setEnabled(!lock);
}

void frmPatientsNew::clearFields()
{
    m_isLoadingRow = true;
    for (QLineEdit* e : page(TabRegistration)->findChildren<QLineEdit*>()) {
        if (qobject_cast<QAbstractSpinBox*>(e->parentWidget()) ||
            qobject_cast<QComboBox*>(e->parentWidget()))
            continue;
        e->clear();
    }
    for (QComboBox* c : page(TabRegistration)->findChildren<QComboBox*>()) {
        const QSignalBlocker quiet(c);
        c->setCurrentIndex(-1);
    }
    {
        const QSignalBlocker quiet(m_cboClient);
        m_cboClient->clear();
    }
    {
        const QSignalBlocker quiet(m_txtPolicy);
        m_txtPolicy->clear();
    }
    m_cboDoc->clear();
    ui::setBlank(m_dtDate);
    ui::setBlank(m_dtExpDate);
    ui::setBlank(m_dtNext);
    m_dtRegDate->setDate(m_ctx.session().serverDate);
    m_lblDebt->setText(fmt::money(0));
    m_lblAmount->clear();
    m_piX->clear();
    m_isLoadingRow = false;

    m_selectedRetainID.clear();
    m_selectedCoyName.clear();
    m_selectedRetainCode.clear();
    m_selectedClientType.clear();
    m_selectedClientCat.clear();
    m_loadedRetainID.clear();
    m_loadedCoyName.clear();
    m_loadedPatCat.clear();
    m_selectedPurpose.clear();
    m_principalPNo.clear();
    m_pendingCardRenewal = false;
    m_isAddingDependant = false;
    m_carryOverDebt = 0;
    m_screeningAmount = 0;
    m_consultationAmount = 0;
    Session& s = m_ctx.session();
    s.instantFeePending = false;
    s.instantFeeItem.clear();
    s.pendingFee = 0;
    s.apptDate = QDate();
    s.apptTime.clear();
    billing::clearDebtDisplay(m_ctx);
    m_cmdANC->setEnabled(false);
    m_cmdRenew->setEnabled(false);
    m_cmdPatDep->setEnabled(false);
    m_lstDuplicates->clear();
    m_fraDuplicates->hide();
}

void frmPatientsNew::cmdAddClick()
{
    const Session& s = m_ctx.session();
    if (!m_isAddingDependant) {
        clearFields();
        m_selectedRetainID.clear();
    }
    // An HMO patient must be given a limit when limits are kept; otherwise it is "0".
    m_txtAdmitLimit->setText(AppDefaults::isYes(s.defaults.Admission_Limit_Exists)
                                 ? QString()
                                 : QStringLiteral("0"));
    m_lblDebtCap->setText(QStringLiteral("Carry Over Debt"));
    m_lblDebt->setText(fmt::money(0));
    setWindowTitle(kTitle);
    m_isAddingDependant = false;
    m_carryOverDebt = 0;
    m_isEdit = false;
    showTab(TabRegistration);
    m_dtRegDate->setDate(s.serverDate);
    setMode(Mode::Add);
    ui::chooseQuietly(m_cboRefHmo, QStringLiteral("NO"));
    m_txtSupp->clear();
    m_chkReg->setChecked(true);
    ui::setBlank(m_dtDate);
    if (AppDefaults::isYes(s.defaults.AUTO_CARD_NO) && m_txtOLD->text().trimmed().isEmpty())
        m_txtOLD->setText(
            QStringLiteral("%1/%2/").arg(s.hospID, s.serverDate.toString(QStringLiteral("yy"))));
    m_cboNew->setFocus();
}

void frmPatientsNew::cmdEditClick()
{
    if (m_txtSupp->text().trimmed().isEmpty()) {
        showTab(TabRegistration);
        runCommand(this, m_ctx, [] {
            throw CheckFailed(QStringLiteral("Specify Patient Info to Edit by Searching"),
                              QStringLiteral("txtName"));
        });
        return;
    }
    m_editPNo = m_txtSupp->text().trimmed();
    showTab(TabRegistration);
    m_isEdit = true;
    editVal(m_editPNo);
    setMode(Mode::Edit);
    m_chkReg->setChecked(true);
    m_cboNew->setFocus();
}

void frmPatientsNew::cmdCancelClick()
{
    m_isEdit = false;
    m_editPNo.clear();
    clearFields();
    setMode(Mode::View);
}

void frmPatientsNew::cmdRefreshClick()
{
    runCommand(this, m_ctx, [this] { loadBoxes(); });
    fillGrid();
    getDocWaitList();
}

void frmPatientsNew::okButtonClick()
{
    const RegistrationSave& save = registrationSave();
    if (!save)
        return;
    const RegistrationForm form = gatherForm();
    QString pno;
    // A failed save leaves every field as it was, so Save can simply be pressed again.
    if (!runCommand(this, m_ctx, [&] { pno = save(m_ctx, form); }) || pno.isEmpty())
        return;
    // The balance of the patient just saved stays on the main window after the fields are
    // cleared, until the desk turns to the next patient.
    const billing::DebtOutcome debt =
        form.takeAttendance ? billing::lastDebt(m_ctx) : billing::DebtOutcome{};
    m_isEdit = false;
    m_editPNo.clear();
    showTab(TabRegistration);
    setMode(Mode::View);
    fillGrid();
    getDocWaitList();
    if (form.isAddingDependant &&
        m_ctx.prompter().ask(QStringLiteral("Any other Dependant?"),
                             QStringLiteral("Addtional Dependant"))) {
        addDependantOf(form.principalPNo);
        return;
    }
    clearFields();
    billing::showDebtOnMainWindow(m_ctx, debt);
}

void frmPatientsNew::cmdPatDepClick()
{
    // One level only: a dependant's dependants would have no principal of their own.
    if (m_loadedPatCat == patients::kDependant) {
        m_ctx.prompter().inform(
            QStringLiteral("Select a Principal Patient! Cannot Add Dependants to existing "
                           "Dependant!!"));
        showTab(TabRegistration);
        clearFields();
        return;
    }
    const QString principal =
        m_principalPNo.isEmpty() ? m_txtSupp->text().trimmed() : m_principalPNo;
    if (principal.isEmpty()) {
        m_ctx.prompter().inform(QStringLiteral("Select Principal Patient to add Dependants to"));
        return;
    }
    addDependantOf(principal);
}

void frmPatientsNew::addDependantOf(const QString& principal)
{
    m_principalPNo = principal;
    // What is the person's own goes; surname, address, payer, card and next of kin stay,
    // which is what a dependant inherits from the principal.
    for (QLineEdit* e : {m_txtFirstName, m_txtAge, m_txtPhone, m_txtEmail, m_txtOccu,
                         m_txtOfficeAddress})
        e->clear();
    ui::setBlank(m_dtDate);
    for (QComboBox* c : {m_txtSex, m_cboMat, m_cboNew}) {
        const QSignalBlocker quiet(c);
        c->setCurrentIndex(-1);
    }
    for (QComboBox* c : {m_txtKinRel, m_cboTitle}) {
        const QSignalBlocker quiet(c);
        c->setCurrentIndex(c->count() > 0 ? 0 : -1);
    }
    billing::clearDebtDisplay(m_ctx);  // the principal's balance is not the dependant's
    m_isAddingDependant = true;        // tells the Add command to keep the payer
    cmdAddClick();
    m_isAddingDependant = true;
    m_isEdit = false;
}

void frmPatientsNew::cmdDelClick()
{
    const QString pno = currentPNo();
    if (pno.isEmpty()) {
        m_ctx.prompter().inform(kNoPatient, kTitle);
        return;
    }
    const QString name = (m_txtSurname->text() + QLatin1Char(' ') + m_txtFirstName->text())
                             .trimmed();
    bool deleted = false;
    if (!runCommand(this, m_ctx, [&] { deleted = deletePatient(m_ctx, pno, name); }) ||
        !deleted)
        return;
    m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "), kTitle);
    clearFields();
    setMode(Mode::View);
    // Back to the search the desk was working through, less the patient just deleted.
    if (m_lastSearchText.isEmpty())
        fillGrid();
    else
        runSearch(m_searchMode, m_lastSearchLimit, m_lastSearchText);
}

// ---------------------------------------------------------------------------------------
// Grids

void frmPatientsNew::fillGrid()
{
    m_lastSearchText.clear();
    runCommand(this, m_ctx, [this] {
        QAbstractItemModel* old = m_grdData->model();
        m_grdData->setModel(
            patients::registrationsOf(m_ctx.db(), m_ctx.session().serverDate, m_grdData));
        delete old;
        grid::hideColumns(m_grdData, {QStringLiteral("expired"), QStringLiteral("coyname")});
        ui::fitColumns(m_grdData, 220);
    });
}

void frmPatientsNew::getDocWaitList()
{
    runTimerCommand(this, m_ctx, [this] {
        const QDate today = m_ctx.session().serverDate;
        QAbstractItemModel* old = m_grdDoc->model();
        m_grdDoc->setModel(m_ctx.db().gridModel(clinical::DoctorAllocation::waitListSql(),
                                                {today}, m_grdDoc));
        delete old;
        grid::hideColumns(m_grdDoc, {QStringLiteral("EmpID")});
        ui::fitColumns(m_grdDoc);
        const int doctor = grid::columnOf(m_grdDoc->model(), QStringLiteral("Doctor"));
        if (doctor >= 0)
            m_grdDoc->setColumnWidth(doctor, 280);
        clinical::DoctorAllocation(m_ctx.db(), today, false).purgePastAssignments();
    });
}

void frmPatientsNew::docGridDoubleClicked(int row)
{
    if (gridValue(m_grdDoc, row, QStringLiteral("NumOfPat")).toInt() <= 0) {
        m_ctx.prompter().inform(QStringLiteral("This Doctor has No Patients on Queue"), kTitle);
        return;
    }
    m_ctx.screens().openModal(
        QStringLiteral("frmDocWait"),
        {{QStringLiteral("Date"), fmt::parseDate(gridValue(m_grdDoc, row, QStringLiteral("Date")))},
         {QStringLiteral("EmpID"), gridValue(m_grdDoc, row, QStringLiteral("EmpID"))},
         {QStringLiteral("ClinicID"), gridValue(m_grdDoc, row, QStringLiteral("ClinicID"))}});
}

void frmPatientsNew::cmdAttendClick()
{
    const QString pno = currentPNo();
    if (pno.isEmpty()) {
        m_ctx.prompter().inform(kNoPatient, kTitle);
        return;
    }
    runCommand(this, m_ctx, [&] {
        QAbstractItemModel* old = m_grdAttend->model();
        m_grdAttend->setModel(patients::attendanceHistory(m_ctx.db(), pno, m_grdAttend));
        delete old;
        ui::fitColumns(m_grdAttend);
    });
}

void frmPatientsNew::searchByButton(const QString& mode, const QString& blankMessage)
{
    const QString text = m_txtName->text().trimmed();
    if (text.isEmpty()) {
        m_ctx.prompter().inform(blankMessage, kTitle);
        m_txtName->setFocus();
        return;
    }
    ++m_searchGeneration;  // what typing had on the way would come after, and replace, this
    runSearch(mode, 0, text);
}

void frmPatientsNew::cmdCardClick()
{
    searchByButton(patients::kSearchCardNo,
                   QStringLiteral("To locate a patient, Enter Card No and click 'Card No' "
                                  "Button"));
}

void frmPatientsNew::txtNameChanged(const QString& text)
{
    const QString typed = text.trimmed();
    if (typed.isEmpty()) {
        runSearch(patients::kSearchName, 0, typed);
        return;
    }
    if (!patients::startsIncrementalSearch(typed))
        return;
    // Each change waits on a timer of its own rather than in a nested event loop, where the
    // newest search would finish first and an older text would have the last word.
    if (m_pendingSearches++ == 0)
        m_searchBusy.emplace(&m_ctx.prompter());
    auto* wait = new QTimer(this);
    wait->setSingleShot(true);
    connect(wait, &QTimer::timeout, this, [this, wait, typed, generation = ++m_searchGeneration] {
        wait->deleteLater();
        // Typed over or searched by a button since: the grid must not end on a text that is
        // gone from the box, nor a limited list replace what a button asked for.
        if (generation == m_searchGeneration && typed == m_txtName->text().trimmed()) {
            m_label5->setText(QStringLiteral("Retrieving data...Please wait"));
            m_label5->repaint();
            runSearch(patients::kSearchName,
                      patients::searchLimit(m_ctx.session().defaults.SearchValue), typed);
            m_label5->setText(kTitle);
        }
        if (--m_pendingSearches == 0)
            m_searchBusy.reset();
    });
    wait->start(std::max(0, m_ctx.session().defaults.SearchWaitTime));
}

void frmPatientsNew::grdDataDoubleClicked(int row)
{
    const QString pno = gridValue(m_grdData, row, QStringLiteral("pno"));
    if (pno.isEmpty())
        return;
    editVal(pno);
    m_cmdPatDep->setEnabled(true);
    cmdEditClick();
    showPatientNote(m_ctx, pno);
}

void frmPatientsNew::runSearch(const QString& mode, int limit, const QString& text)
{
    runCommand(this, m_ctx, [&] {
        const auto busy = m_ctx.prompter().busy();
        const patients::SearchOutcome found =
            patients::searchPatients(m_ctx, mode, limit, text, m_grdData);
        // The grid stays as it was; the description goes to the desk.
        if (found.failed())
            throw db::DbError(found.error);
        m_searchMode = mode;
        m_lastSearchText = text.trimmed();
        m_lastSearchLimit = limit;
        m_lblFound->setText(found.foundText);
        QAbstractItemModel* old = m_grdData->model();
        m_grdData->setModel(found.rows);
        delete old;
        if (found.found > 0) {
            grid::hideColumns(m_grdData, {QStringLiteral("expired"), QStringLiteral("coyname"),
                                          QStringLiteral("fullname")});
            ui::fitColumns(m_grdData, 220);
            // 2880 twips: the surname column shows a long name whole.
            const int surname = grid::columnOf(found.rows, QStringLiteral("Surname"));
            if (surname >= 0)
                m_grdData->setColumnWidth(surname, 192);
            m_grdData->selectRow(0);
            showTab(TabPatients);
        }
    });
}

QString frmPatientsNew::gridValue(QTableView* grid, int row, const QString& column) const
{
    const QAbstractItemModel* model = grid->model();
    const int c = grid::columnOf(model, column);
    return c < 0 ? QString() : model->index(row, c).data().toString();
}

// ---------------------------------------------------------------------------------------
// Loading a patient

void frmPatientsNew::editVal(const QString& pno)
{
    billing::clearDebtDisplay(m_ctx);  // another patient: the last one's balance goes
    runCommand(this, m_ctx, [&] {
        db::Connection& c = m_ctx.db();
        const auto found = readPatient(c, pno);
        if (!found)
            return;
        const db::Row& r = *found;
        m_isLoadingRow = true;
        struct Done {
            bool& flag;
            ~Done() { flag = false; }
        } done{m_isLoadingRow};

        ui::chooseQuietly(m_cboNew, r.text(u"newReg") == QLatin1String("YES")
                                    ? QStringLiteral("NEW")
                                    : QStringLiteral("EXISTING"));
        ui::chooseQuietly(m_cboTitle, r.text(u"title"));
        m_txtSurname->setText(r.text(u"Surname"));
        m_lastSurnameChecked = r.text(u"Surname");
        m_txtFirstName->setText(r.text(u"Firstname"));
        m_txtHomeAddress->setText(r.text(u"homeAddress"));
        ui::chooseQuietly(m_cboArea, r.text(u"Area"));
        m_txtOfficeAddress->setText(r.text(u"OfficeAddress"));
        m_txtPhone->setText(r.text(u"PhoneNo"));
        m_txtEmail->setText(r.text(u"email"));
        ui::chooseQuietly(m_txtSex, r.text(u"Sex"));
        if (r.date(u"DOB").isValid()) {
            m_dtDate->setDate(r.date(u"DOB"));
        } else {
            ui::setBlank(m_dtDate);
            m_txtAge->clear();
        }
        if (!r.text(u"Maturity").isEmpty())
            ui::chooseQuietly(m_cboMat, r.text(u"Maturity"));
        if (!r.text(u"fileDuration").isEmpty())
            ui::chooseQuietly(m_cboFile, r.text(u"fileDuration"));
        ui::chooseQuietly(m_cboCard, r.text(u"CardType"));
        m_txtSupp->setText(r.text(u"pno"));
        m_txtOLD->setText(r.text(u"oldPno"));
        m_dtRegDate->setDate(r.date(u"regDate").isValid() ? r.date(u"regDate")
                                                          : m_ctx.session().serverDate);
        ui::setDateOrBlank(m_dtExpDate, r.date(u"ExpiryDate"));

        m_loadedRetainID = r.text(u"coyname");
        m_loadedCoyName = r.text(u"Client");
        m_loadedPatCat = r.text(u"patcat");
        {
            const QSignalBlocker quiet(m_cboPat);
            if (!r.text(u"client").isEmpty())
                ui::chooseKeyQuietly(m_cboPat, m_loadedRetainID);
            else
                m_cboPat->setCurrentIndex(-1);
        }
        const PayerChoice payer = payerChoice(c, listentry::make(m_loadedCoyName,
                                                                 m_loadedRetainID));
        m_selectedRetainID = payer.retainID;
        m_selectedCoyName = payer.coyName;
        m_selectedClientType = payer.clientType;
        m_selectedRetainCode = payer.retainCode;
        fillCategories();
        if (!r.text(u"BillingCat").isEmpty()) {
            {
                const QSignalBlocker quiet(m_cboClient);
                if (m_cboClient->findText(r.text(u"BillingCat")) < 0)
                    m_cboClient->addItem(r.text(u"BillingCat"));
                choose(m_cboClient, r.text(u"BillingCat"));
            }
            categoryChosen();
        }
        {
            const QSignalBlocker quiet(m_txtPolicy);
            const QString plan = r.text(u"policyType");
            if (!plan.isEmpty() && m_txtPolicy->findText(plan) < 0)
                m_txtPolicy->addItem(plan);
            choose(m_txtPolicy, plan);
        }
        m_txtEmp->setText(r.text(u"empNo"));
        ui::chooseQuietly(m_cboRef, r.text(u"ref").isEmpty() ? QStringLiteral("NO") : r.text(u"ref"));
        ui::chooseQuietly(m_cboRefHmo,
                      r.text(u"HmoRef").isEmpty() ? QStringLiteral("NO") : r.text(u"HmoRef"));
        {
            const QSignalBlocker quiet(m_cboIntro);
            ui::chooseKeyQuietly(m_cboIntro, r.text(u"introducedBy"));
        }
        ui::chooseQuietly(m_cboMStatus, r.text(u"Marital"));
        ui::chooseQuietly(m_txtBG, r.text(u"bloodGroup"));
        ui::chooseQuietly(m_txtGeno, r.text(u"genotype"));
        m_txtOccu->setText(r.text(u"occupation"));
        ui::chooseQuietly(m_cboStatus, r.text(u"religion"));
        m_txtKin->setText(r.text(u"nextOfKin"));
        m_txtNOKPhone->setText(r.text(u"nokPhone"));
        ui::chooseQuietly(m_txtKinRel, r.text(u"relationToKin"));
        m_txtKinAddress->setText(r.text(u"kinAddress"));
        // No limit on file is not a limit of 0 ("no limit"): a blank goes back as NULL.
        m_txtAdmitLimit->setText(r.isNull(u"AdmissionDaysLimit")
                                     ? QString()
                                     : QString::number(r.toDouble(u"AdmissionDaysLimit")));
        m_cmdANC->setEnabled(r.text(u"Sex") == QLatin1String("FEMALE"));
        m_principalPNo = r.text(u"pno");
        m_cmdPatDep->setEnabled(true);
        showPhoto(r.text(u"pno"));
    });
}

void frmPatientsNew::showPhoto(const QString& pno)
{
    m_piX->clear();
    if (m_ctx.session().defaults.PIXLOC == QLatin1String("FILE"))
        return;
    QPixmap photo;
    if (photo.loadFromData(patients::storedPhoto(m_ctx.db(), pno)))
        m_piX->setPixmap(photo);
}

// ---------------------------------------------------------------------------------------
// Rules of the fields

void frmPatientsNew::payerChosen()
{
    if (m_isLoadingRow)
        return;
    runCommand(this, m_ctx, [this] {
        ui::setBlank(m_dtExpDate);
        const PayerChoice payer = payerChoice(m_ctx.db(), m_cboPat->currentText());
        m_selectedRetainID = payer.retainID;
        m_selectedCoyName = payer.coyName;
        m_selectedClientType = payer.clientType;
        m_selectedRetainCode = payer.retainCode;
        fillCategories();
        const PayerPreset p = payerPreset(payer.retainID, m_ctx.session().defaults.PRIVATE);
        // The duration comes first so that its date rule sets the private card's expiry.
        choose(m_cboFile, p.cardDuration);
        choose(m_cboClient, p.billingCategory);
        m_txtEmp->setText(p.enrolleeNo);
        if (p.plan.isEmpty()) {
            const QSignalBlocker quiet(m_txtPolicy);
            m_txtPolicy->clear();
        } else {
            choose(m_txtPolicy, p.plan);
        }
        choose(m_cboRef, p.feeForService);
        choose(m_cboRefHmo, p.hmoReferral);
        choose(m_cboCard, p.cardType);
        if (p.clearsExpiry)
            ui::setBlank(m_dtExpDate);
    });
}

void frmPatientsNew::fillCategories()
{
    runCommand(this, m_ctx, [this] {
        const QString keep = m_cboClient->currentText();
        const QSignalBlocker quiet(m_cboClient);
        m_cboClient->clear();
        if (m_selectedRetainID.isEmpty() && !m_chkAll->isChecked())
            return;
        m_cboClient->addItems(
            billingCategories(m_ctx.db(), m_selectedClientType, m_chkAll->isChecked()));
        choose(m_cboClient, keep);
    });
}

void frmPatientsNew::categoryChosen()
{
    m_selectedClientCat = m_cboClient->currentText();
    runCommand(this, m_ctx, [this] {
        m_selectedClientType = m_selectedClientCat.isEmpty()
                                   ? QString()
                                   : clientTypeOfCategory(m_ctx.db(), m_selectedClientCat);
        fillPlans();
    });
}

void frmPatientsNew::fillPlans()
{
    const QSignalBlocker quiet(m_txtPolicy);
    m_txtPolicy->clear();
    if (m_selectedClientCat.isEmpty())
        return;
    const QStringList plans = opensPlanList(m_selectedClientCat)
                                  ? planEntries(m_ctx.db(), m_selectedRetainID)
                                  : QStringList{QStringLiteral("NIL")};
    m_txtPolicy->addItems(plans);
    // A single "NIL" is the answer; a real list waits for the person to pick.
    m_txtPolicy->setCurrentIndex(plans == QStringList{QStringLiteral("NIL")} ? 0 : -1);
}

void frmPatientsNew::cardDurationChosen()
{
    if (m_isLoadingRow || m_cboFile->currentIndex() < 0)
        return;
    if (m_mode == Mode::Edit) {
        m_dtExpDate->setDate(m_ctx.session().serverDate);
        return;
    }
    ui::setDateOrBlank(m_dtExpDate,
                       expiryForDuration(m_cboFile->currentText(), m_dtRegDate->date()));
}

void frmPatientsNew::hmoReferralChosen()
{
    if (m_isLoadingRow)
        return;
    if (m_selectedClientType == QLatin1String("HMO") &&
        m_cboRefHmo->currentText() == QLatin1String("YES"))
        choose(m_cboRef, QStringLiteral("YES"));
}

void frmPatientsNew::purposeChosen()
{
    const QString purpose = m_cboPurpose->currentText();
    m_screeningAmount = 0;
    m_consultationAmount = 0;
    m_lblAmount->clear();
    if (purpose.isEmpty()) {
        m_selectedPurpose.clear();
        return;
    }
    runCommand(this, m_ctx, [&] {
        const PurposeFees fees = purposeFees(m_ctx.db(), purpose, m_selectedRetainID);
        m_selectedPurpose = fees.purposeClass;
        m_screeningAmount = fees.screening;
        m_consultationAmount = fees.consultation;
        if (fees.purposeClass == QLatin1String("SCREENING"))
            m_lblAmount->setText(QStringLiteral("Screening Fee: ") + fmt::money(fees.screening));
        else if (fees.consultation > 0)
            m_lblAmount->setText(QStringLiteral("Consultation Fee: ") +
                                 fmt::money(fees.consultation));
        if (purpose != QLatin1String("APPOINTMENT"))
            return;
        const QString clinic = m_cboClin->currentData().toString();
        if (clinic.isEmpty() || !clinical::hasClinicDays(m_ctx.db(), clinic))
            throw CheckFailed(QStringLiteral("Specify Clinic"), QStringLiteral("cboClin"));
        Session& s = m_ctx.session();
        s.apptDate = QDate();
        s.apptTime.clear();
        m_ctx.screens().openModal(QStringLiteral("frmClinicDates"),
                                  {{QStringLiteral("ClinicID"), clinic}});
        if (s.apptDate.isValid()) {
            m_dtNext->setDate(s.apptDate);
            m_dtRefTime->setTime(QTime::fromString(s.apptTime, fmt::kShortTime));
        }
    });
}

void frmPatientsNew::clinicChosen()
{
    m_cboDoc->clear();
    if (m_cboClin->currentIndex() < 0)
        return;
    ClinicRequest req;
    req.clinicID = m_cboClin->currentData().toString();
    req.pno = currentPNo();
    req.retainID = m_selectedRetainID;
    req.expiryDate = ui::dateOf(m_dtExpDate);
    ClinicChoice choice;
    const bool ok = runCommand(this, m_ctx, [&] { chooseClinic(m_ctx, req, choice); });
    m_cmdRenew->setEnabled(choice.renewEnabled);
    if (!ok) {
        {
            const QSignalBlocker quiet(m_cboClin);
            m_cboClin->setCurrentIndex(-1);
        }
        if (choice.scheduleDoctors)
            m_ctx.screens().openModal(QStringLiteral("frmSchedDoctor"));
        return;
    }
    for (const clinical::DoctorEntry& d : choice.doctors)
        m_cboDoc->addItem(d.entry(), d.empID);
    m_cboDoc->setCurrentIndex(choice.preselected);
}

void frmPatientsNew::maturityChosen()
{
    if (m_isLoadingRow)
        return;
    if (m_cboMat->currentText() == QLatin1String("NEONATE")) {
        // The admission clinic is not on the attendance list, so this holds only where a
        // desk's list can show it.
        const int i = m_cboClin->findText(QStringLiteral("(IN-PATIENT)"));
        if (i >= 0)
            m_cboClin->setCurrentIndex(i);
    } else {
        m_cboClin->setCurrentIndex(-1);
    }
}

void frmPatientsNew::ageTyped()
{
    const QDate dob = dobFromAge(m_txtAge->text(), m_ctx.session().serverDate);
    if (!dob.isValid())
        return;
    m_ageTyping = true;
    m_dtDate->setDate(dob);
    m_ageTyping = false;
}

void frmPatientsNew::dobChanged()
{
    if (m_ageTyping)
        return;
    const QDate dob = ui::dateOf(m_dtDate);
    if (!dob.isValid()) {
        m_txtAge->clear();
        return;
    }
    m_txtAge->setText(ageText(m_ctx, dob));
}

void frmPatientsNew::attendanceTicked(bool on)
{
    m_fraAttd->setVisible(on);
    if (!on) {
        m_cboClin->setCurrentIndex(-1);
        m_cboPurpose->setCurrentIndex(-1);
    }
}

void frmPatientsNew::debtDoubleClicked()
{
    if (m_isEdit) {
        m_ctx.prompter().inform(QStringLiteral("Debt Information Cannot be Edited Here! Only "
                                               "Carry Over Debt can be Entered"),
                                kTitle);
        return;
    }
    const auto answer = m_ctx.prompter().input(QStringLiteral("Carry Over Debt"),
                                               QStringLiteral("Debt"), QStringLiteral("0"));
    if (!answer)
        return;
    m_carryOverDebt = parseAmount(*answer);
    m_ctx.session().currentBalance = m_carryOverDebt;
    m_lblDebt->setText(fmt::money(m_carryOverDebt));
}

void frmPatientsNew::showLikelyDuplicates()
{
    m_lstDuplicates->clear();
    std::vector<patients::DuplicateCandidate> found;
    if (m_mode == Mode::Add && !m_isLoadingRow) {
        // A failure here costs the desk nothing but the list: no box in the middle of typing.
        try {
            found = patients::likelyDuplicates(
                m_ctx.db(), {m_txtSurname->text(), m_txtFirstName->text(), ui::dateOf(m_dtDate),
                             m_txtPhone->text()});
        } catch (const db::DbError& e) {
            qWarning().noquote() << "likely duplicates not looked for:" << e.description();
        }
    }
    for (const auto& d : found)
        m_lstDuplicates->addItem(QStringLiteral("%1 (%2): %3").arg(d.name, d.pno, d.reason));
    m_fraDuplicates->setVisible(!found.empty());
}

void frmPatientsNew::surnameLeft()
{
    const QString surname = m_txtSurname->text().trimmed();
    if (m_mode == Mode::View || surname.isEmpty() || surname == m_lastSurnameChecked)
        return;
    m_lastSurnameChecked = surname;
    runCommand(this, m_ctx, [&] {
        if (!patients::surnameTaken(m_ctx.db(), surname))
            return;
        m_ctx.prompter().inform(
            QStringLiteral("One or more Surnames match !!! Please Confirm for Duplicates"),
            kTitle);
        m_ctx.screens().openModal(QStringLiteral("frmVerify"),
                                  {{QStringLiteral("Surname"), surname}});
    });
}

// ---------------------------------------------------------------------------------------
// Commands that lead elsewhere

void frmPatientsNew::cmdANCClick()
{
    if (m_txtSex->currentText() != QLatin1String("FEMALE")) {
        m_ctx.prompter().inform(QStringLiteral("Patient Sex has to be female"), kTitle);
        return;
    }
    if (currentPNo().isEmpty()) {
        m_ctx.prompter().inform(
            QStringLiteral("Patient System No Required! Please select a Patient"), kTitle);
        return;
    }
    m_ctx.screens().open(QStringLiteral("frmAnteNatalReg"),
                         {{QStringLiteral("PNo"), currentPNo()}});
}

void frmPatientsNew::cmdCommClick()
{
    if (currentPNo().isEmpty()) {
        m_ctx.prompter().inform(QStringLiteral("No Patient is specified"), kTitle);
        return;
    }
    m_ctx.screens().open(
        QStringLiteral("frmConsultInfo"),
        {{QStringLiteral("PNo"), currentPNo()},
         {QStringLiteral("NewPage"),
          AppDefaults::isYes(m_ctx.session().defaults.Show_New_Con_Hist_Page)}});
}

void frmPatientsNew::cmdRenewClick()
{
    const QString pno = currentPNo();
    const QString name = QStringLiteral("%1 %2").arg(m_txtSurname->text().trimmed(),
                                                     m_txtFirstName->text().trimmed());
    // Asked for is enough: the next edit save bills the fee even if the desk leaves the
    // renewal screen without renewing (the card may be renewed at the cashier's).
    m_pendingCardRenewal = true;
    Session& s = m_ctx.session();
    s.CardRenewedFlag = false;
    m_ctx.screens().openModal(QStringLiteral("frmRenew"),
                              {{QStringLiteral("name"), name.trimmed()},
                               {QStringLiteral("PNo"), pno},
                               {QStringLiteral("tag"), patients::kRenewFromRegistration}});
    // The hand-back is taken here: this screen bills through pendingCardRenewal, and a flag
    // left in the session would bill the attendance screen's next save as well.
    if (s.CardRenewedFlag && s.renewedPNo == pno)
        m_dtExpDate->setDate(s.renewedExpiryDate);
    s.CardRenewedFlag = false;
    s.renewedPNo.clear();
    s.renewedExpiryDate = QDate();
}

void frmPatientsNew::cmdPlanClick()
{
    const QStringList before = [this] {
        QStringList l;
        for (int i = 0; i < m_txtPolicy->count(); ++i)
            l << m_txtPolicy->itemText(i);
        return l;
    }();
    if (!m_ctx.screens().openModal(QStringLiteral("frmPlan"),
                                   {{QStringLiteral("retainID"), m_selectedRetainID}}))
        return;
    runCommand(this, m_ctx, [&] {
        fillPlans();
        for (int i = 0; i < m_txtPolicy->count(); ++i)
            if (!before.contains(m_txtPolicy->itemText(i)))
                m_txtPolicy->setCurrentIndex(i);
    });
}

// ---------------------------------------------------------------------------------------

bool frmPatientsNew::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_lblDebt && event->type() == QEvent::MouseButtonDblClick) {
        debtDoubleClicked();
        return true;
    }
    if (watched == m_cboPat && event->type() == QEvent::FocusIn && m_cboPat->isEnabled()) {
        // Coming onto the payer, by key or by mouse, opens its list: the desk picks by
        // typing the first letters.
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
            reason == Qt::MouseFocusReason || reason == Qt::ShortcutFocusReason)
            QTimer::singleShot(0, m_cboPat, [this] {
                if (!m_cboPat->view()->isVisible())
                    m_cboPat->showPopup();
            });
    }
    if ((watched == m_cboPat || watched == m_cboPat->view()) &&
        event->type() == QEvent::KeyPress) {
        // The payers are listed in capitals; a letter typed in lower case finds them too.
        auto* key = static_cast<QKeyEvent*>(event);
        const QString upper = key->text().toUpper();
        if (upper != key->text()) {
            QKeyEvent raised(key->type(), key->key(), key->modifiers(), upper,
                             key->isAutoRepeat(), ushort(key->count()));
            QCoreApplication::sendEvent(watched, &raised);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frmPatientsNew::closeEvent(QCloseEvent* event)
{
    // The balance on the main window belonged to this desk's patient.
    billing::clearDebtDisplay(m_ctx);
    QWidget::closeEvent(event);
}

patients::RegistrationForm frmPatientsNew::gatherForm() const
{
    RegistrationForm f;
    f.isEdit = m_isEdit;
    f.isAddingDependant = m_isAddingDependant;
    f.editPNo = m_editPNo;
    f.principalPNo = m_principalPNo;
    f.selectedRetainID = m_selectedRetainID;
    f.selectedCoyName = m_selectedCoyName;
    f.selectedRetainCode = m_selectedRetainCode;
    f.selectedClientType = m_selectedClientType;
    f.selectedClientCat = m_selectedClientCat;
    f.loadedRetainID = m_loadedRetainID;
    f.loadedCoyName = m_loadedCoyName;
    f.selectedPurpose = m_selectedPurpose;
    f.carryOverDebt = m_carryOverDebt;
    f.pendingCardRenewal = m_pendingCardRenewal;
    const Session& s = m_ctx.session();
    f.instantFeePending = s.instantFeePending;
    f.instantFeeItem = s.instantFeeItem;
    f.instantFeeAmount = s.pendingFee;
    f.screeningAmount = m_screeningAmount;
    f.consultationAmount = m_consultationAmount;

    f.newReg = m_cboNew->currentText();
    f.title = m_cboTitle->currentText();
    f.surname = m_txtSurname->text();
    f.firstName = m_txtFirstName->text();
    f.homeAddress = m_txtHomeAddress->text();
    f.area = m_cboArea->currentText();
    f.officeAddress = m_txtOfficeAddress->text();
    f.phone = m_txtPhone->text();
    f.email = m_txtEmail->text();
    f.sex = m_txtSex->currentText();
    f.dob = ui::dateOf(m_dtDate);
    f.maturity = m_cboMat->currentText();
    f.cardDuration = m_cboFile->currentText();
    f.cardType = m_cboCard->currentText();
    f.systemNo = m_txtSupp->text().trimmed();
    f.cardNo = m_txtOLD->text();
    f.regDate = m_dtRegDate->date();
    f.expiryDate = ui::dateOf(m_dtExpDate);
    f.company = m_cboPat->currentText();
    f.enrolleeNo = m_txtEmp->text();
    f.plan = m_txtPolicy->currentText();
    f.feeForService = m_cboRef->currentText();
    f.hmoReferral = m_cboRefHmo->currentText();
    f.introducedBy = ui::currentKey(m_cboIntro);
    f.maritalStatus = m_cboMStatus->currentText();
    f.bloodGroup = m_txtBG->currentText();
    f.genotype = m_txtGeno->currentText();
    f.occupation = m_txtOccu->text();
    f.religion = m_cboStatus->currentText();
    f.nextOfKin = m_txtKin->text();
    f.nokPhone = m_txtNOKPhone->text();
    f.nokRelationship = m_txtKinRel->currentText();
    f.nokAddress = m_txtKinAddress->text();
    f.admissionLimit = m_txtAdmitLimit->text();

    f.takeAttendance = m_chkReg->isChecked();
    f.clinicID = m_cboClin->currentData().toString();
    f.clinicName = m_cboClin->currentText();
    f.purpose = m_cboPurpose->currentText();
    f.doctorEmpID = m_cboDoc->currentIndex() < 0 ? QString() : ui::currentKey(m_cboDoc);
    f.apptDate = ui::dateOf(m_dtNext);
    f.apptTime = fmt::shortTime(m_dtRefTime->time());
    return f;
}

QString frmPatientsNew::currentPNo() const { return m_txtSupp->text().trimmed(); }

QWidget* frmPatientsNew::page(int index) const { return m_tabs->widget(index); }

void frmPatientsNew::showTab(int index) { m_tabs->setCurrentIndex(index); }

TOLMAR_REGISTER_SCREEN(frmPatientsNew)

}  // namespace tolmar
