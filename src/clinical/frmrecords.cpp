#include "clinical/frmrecords.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "patients/cardrenewal.h"
#include "patients/patientrepo.h"
#include "patients/patientsearch.h"
#include "patients/registrationdesk.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

#include <tuple>

namespace tolmar {

namespace {

const QString kHeading = QStringLiteral("PATIENT ATTENDANCE");
const QString kCaption = QStringLiteral("ATTENDANCE FOR TODAY:");
const QString kNoVisitChosen =
    QStringLiteral("No attendance is selected! Click a visit on the list first");
// How often the doctors' queue is read again while the screen is open.
constexpr int kQueueRefreshMs = 60000;
constexpr int kFlashMs = 500;

void replaceModel(QTableView* grid, QAbstractItemModel* model)
{
    QAbstractItemModel* old = grid->model();
    grid->setModel(model);
    delete old;
}

}  // namespace

frmRecords::frmRecords(AppContext& ctx, const QVariantMap& args, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setObjectName(QStringLiteral("frmRecords"));
    setWindowTitle(QStringLiteral("ATTENDANCE FOR TODAY :"));
    buildForm();
    connectRules();
    runCommand(this, m_ctx, [this] { loadLists(); });
    clearFields();
    setEntry(false);
    fillGrid();
    getDocWaitList();
    m_timer1->start();
    m_tmrBill->start();

    const QString pno = args.value(QStringLiteral("PNo")).toString().trimmed();
    if (!pno.isEmpty()) {
        QString entry;
        runCommand(this, m_ctx, [&] { entry = clinical::patientEntry(m_ctx.db(), pno); });
        if (!entry.isEmpty()) {
            {
                const QSignalBlocker quiet(m_cboVehNo);
                m_cboVehNo->clear();
                m_cboVehNo->addItem(entry);
            }
            pickPatient(entry);
        }
    }
    m_refConsultID = args.value(QStringLiteral("RefConsultID")).toString();
}

// ---------------------------------------------------------------------------------------
// Building the screen

void frmRecords::buildForm()
{
    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(6, 6, 6, 6);
    root->setSpacing(4);

    m_label5 = new QLabel(kHeading, this);
    m_label5->setObjectName(QStringLiteral("Label5"));
    QFont big = m_label5->font();
    big.setPointSize(big.pointSize() + 4);
    big.setBold(true);
    m_label5->setFont(big);
    root->addWidget(m_label5);

    // The finding row: the text, its three searches and what they found.
    auto* search = new QHBoxLayout;
    auto* searchLabel = new QLabel(QStringLiteral("Patient Name (search)"), this);
    m_txtName = new QLineEdit(this);
    m_txtName->setObjectName(QStringLiteral("txtName"));
    m_txtName->setMaximumWidth(320);
    searchLabel->setBuddy(m_txtName);
    search->addWidget(searchLabel);
    search->addWidget(m_txtName, 1);
    for (auto [b, name, caption] :
         {std::tuple{&m_cmdOK, "cmdOK", "Surname"}, {&m_cmdCard, "cmdCard", "Card No"},
          {&m_cmdSys, "cmdSys", "System No"}}) {
        *b = new QPushButton(QString::fromLatin1(caption), this);
        (*b)->setObjectName(QString::fromLatin1(name));
        (*b)->setAutoDefault(false);
        search->addWidget(*b);
    }
    m_lblFound = new QLabel(this);
    m_lblFound->setObjectName(QStringLiteral("lblFound"));
    search->addWidget(m_lblFound);
    search->addStretch(1);
    root->addLayout(search);

    // The patient, the photograph, the visit, the payer: four columns side by side.
    auto* band = new QHBoxLayout;
    band->setSpacing(8);
    root->addLayout(band);
    auto column = [&](const QString& title, const QString& name) {
        auto* box = new QGroupBox(title, this);
        box->setObjectName(name);
        band->addWidget(box, 1, Qt::AlignTop);
        auto* v = new QVBoxLayout(box);
        v->setContentsMargins(6, 4, 6, 4);
        return std::pair{box, v};
    };
    {
        auto [box, v] = column(QStringLiteral("Patient"), QStringLiteral("fraPatient"));
        ui::FormBuilder f(box, v);
        m_cboVehNo = f.combo(QStringLiteral("cboVehNo"), QStringLiteral("Search result"), true);
        m_cboVehNo->setMinimumContentsLength(22);
        auto shown = [&](QLabel*& l, const char* name, const char* caption) {
            l = new QLabel(box);
            l->setFrameShape(QFrame::StyledPanel);
            l->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
            l->setMinimumWidth(120);
            f.field(l, QString::fromLatin1(name), QString::fromLatin1(caption));
        };
        shown(m_lblNo, "lblNo", "System No");
        shown(m_lblOld, "lblOld", "Card No");
        shown(m_lblOccup, "LblOccup", "Occupation");
        shown(m_lblPolicy, "lblPolicy", "Plan");
        shown(m_lblExpire, "lblExpire", "Card Expires");
        shown(m_lblBill, "lblBill", "Bill No");
    }
    m_piX = new QLabel(this);
    m_piX->setObjectName(QStringLiteral("piX"));
    m_piX->setFixedSize(96, 116);
    m_piX->setFrameShape(QFrame::StyledPanel);
    m_piX->setScaledContents(true);
    band->addWidget(m_piX, 0, Qt::AlignTop);
    {
        auto [box, v] = column(QStringLiteral("Visit"), QStringLiteral("fraVisit"));
        ui::FormBuilder f(box, v);
        m_cboType = f.combo(QStringLiteral("cboType"), QStringLiteral("Clinic/Referal/Appt"));
        m_cboPurpose = f.combo(QStringLiteral("cboPurpose"), QStringLiteral("Purpose"));
        m_cboPat = f.combo(QStringLiteral("cboPat"), QStringLiteral("Company Name"));
        m_cboClient = f.combo(QStringLiteral("cboClient"), QStringLiteral("Billing Cat (Tariff)"));
        m_dtDate = f.date(QStringLiteral("dtDate"), QStringLiteral("Date"));
        for (QComboBox* b : {m_cboType, m_cboPurpose, m_cboPat, m_cboClient})
            b->setMinimumContentsLength(18);
    }
    {
        auto [box, v] = column(QStringLiteral("Payer"), QStringLiteral("fraPayer"));
        ui::FormBuilder f(box, v);
        m_txtPolicy = f.combo(QStringLiteral("txtPolicy"), QStringLiteral("HMO Enrollee Plan"));
        m_txtPolicy->setMinimumContentsLength(16);
        m_txtEmp = f.text(QStringLiteral("txtEmp"), QStringLiteral("Enrollee No"));
        m_cboRef = f.combo(QStringLiteral("cboRef"), QStringLiteral("FeeForService?"));
        m_cboRefHmo = f.combo(QStringLiteral("cboRefHmo"), QStringLiteral("Referal?"));
        m_dtNext = f.optionalDate(QStringLiteral("dtNext"), QStringLiteral("Next Appt Date"));
        for (QComboBox* b : {m_cboRef, m_cboRefHmo})
            b->setMinimumContentsLength(6);
    }
    for (auto* form : findChildren<QFormLayout*>())
        form->setVerticalSpacing(2);

    // Today's visits, and the doctors' queues beside them.
    auto* grids = new QHBoxLayout;
    root->addLayout(grids, 1);
    auto* visits = new QVBoxLayout;
    grids->addLayout(visits, 3);
    ui::FormBuilder vf(this, visits);
    m_grdData = vf.grid(QStringLiteral("grdData"));
    auto* queue = new QGroupBox(QStringLiteral("Doctors' waiting List : Double click  an Item on "
                                               "the List to View Details"),
                                this);
    queue->setObjectName(QStringLiteral("fraDoc"));
    auto* qv = new QVBoxLayout(queue);
    qv->setContentsMargins(4, 2, 4, 4);
    ui::FormBuilder qf(queue, qv);
    m_grdDoc = qf.grid(QStringLiteral("grdDoc"));
    grids->addWidget(queue, 2);

    ui::FormBuilder bf(this, root);
    m_cmdRenew = bf.button(QStringLiteral("cmdRenew"), QStringLiteral("Renew Card"));
    m_cmdAdd = bf.button(QStringLiteral("cmdAdd"), QStringLiteral("&Add"));
    m_cmdEdit = bf.button(QStringLiteral("cmdEdit"), QStringLiteral("&Edit"));
    m_okButton = bf.button(QStringLiteral("OKButton"), QStringLiteral("&Save"));
    m_cmdCancel = bf.button(QStringLiteral("cmdCancel"), QStringLiteral("Ca&ncel"));
    m_cmdDel = bf.button(QStringLiteral("cmdDel"), QStringLiteral("&Delete"));
    m_cancelButton = bf.button(QStringLiteral("CancelButton"), QStringLiteral("&Close"));

    m_timer1 = new QTimer(this);
    m_timer1->setObjectName(QStringLiteral("Timer1"));
    m_timer1->setInterval(kQueueRefreshMs);
    m_tmrBill = new QTimer(this);
    m_tmrBill->setObjectName(QStringLiteral("tmrBill"));
    m_tmrBill->setInterval(kFlashMs);
    resize(1340, 640);
}

void frmRecords::loadLists()
{
    db::Connection& c = m_ctx.db();
    {
        const QSignalBlocker quiet(m_cboType);
        m_cboType->clear();
        for (const patients::Clinic& clinic : patients::attendanceClinics(c))
            m_cboType->addItem(clinic.name, clinic.id);
        m_cboType->setCurrentIndex(-1);
    }
    ui::fillQuietly(m_cboPurpose, patients::purposes(c));
    ui::fillQuietly(m_cboPat, patients::payerEntries(c, QString()));
    const QStringList choice{QString(), QStringLiteral("YES"), QStringLiteral("NO")};
    ui::fillQuietly(m_cboRef, choice);
    ui::fillQuietly(m_cboRefHmo, choice);
}

void frmRecords::connectRules()
{
    // Enter in the search box is the name search, the one the desk uses most.
    for (auto [signalOf, mode] :
         {std::pair{m_cmdOK, patients::kSearchSurname},
          {m_cmdCard, patients::kSearchCardNo}, {m_cmdSys, patients::kSearchPNo}})
        connect(signalOf, &QPushButton::clicked, this, [this, m = mode] { find(m); });
    connect(m_txtName, &QLineEdit::returnPressed, this,
            [this] { find(patients::kSearchSurname); });
    connect(m_cboVehNo, &QComboBox::currentIndexChanged, this, [this](int i) {
        if (!m_loading && i >= 0)
            pickPatient(m_cboVehNo->itemText(i));
    });
    connect(m_cboVehNo->lineEdit(), &QLineEdit::returnPressed, this, [this] {
        if (!m_loading)
            pickPatient(m_cboVehNo->currentText());
    });
    connect(m_cboType, &QComboBox::currentIndexChanged, this, &frmRecords::clinicChosen);
    connect(m_cboPurpose, &QComboBox::currentIndexChanged, this, &frmRecords::purposeChosen);
    connect(m_cboPat, &QComboBox::currentIndexChanged, this, &frmRecords::payerChosen);
    connect(m_dtDate, &QDateEdit::dateChanged, this, &frmRecords::getDocWaitList);
    connect(m_grdData, &QTableView::doubleClicked, this, [this](const QModelIndex& i) {
        if (i.isValid())
            cmdEditClick();
    });
    connect(m_cmdAdd, &QPushButton::clicked, this, &frmRecords::cmdAddClick);
    connect(m_cmdEdit, &QPushButton::clicked, this, &frmRecords::cmdEditClick);
    connect(m_okButton, &QPushButton::clicked, this, &frmRecords::okButtonClick);
    connect(m_cmdCancel, &QPushButton::clicked, this, &frmRecords::cmdCancelClick);
    connect(m_cmdDel, &QPushButton::clicked, this, &frmRecords::cmdDelClick);
    connect(m_cmdRenew, &QPushButton::clicked, this, &frmRecords::cmdRenewClick);
    connect(m_cancelButton, &QPushButton::clicked, this, &QWidget::close);
    connect(m_timer1, &QTimer::timeout, this, &frmRecords::getDocWaitList);
    connect(m_tmrBill, &QTimer::timeout, this, &frmRecords::flashHeading);
}

// ---------------------------------------------------------------------------------------
// States

void frmRecords::setEntry(bool entry)
{
    m_cmdAdd->setEnabled(!entry);
    m_cmdDel->setEnabled(!entry);
}

void frmRecords::clearFields()
{
    m_loading = true;
    {
        const QSignalBlocker quiet(m_cboVehNo);
        m_cboVehNo->setCurrentIndex(-1);
        m_cboVehNo->clearEditText();
    }
    for (QLabel* l : {m_lblNo, m_lblOld, m_lblOccup, m_lblPolicy, m_lblExpire, m_lblBill})
        l->clear();
    for (QComboBox* b : {m_cboType, m_cboPurpose, m_cboPat, m_cboRef, m_cboRefHmo})
        ui::chooseQuietly(b, QString());
    ui::fillQuietly(m_cboClient, {});
    ui::fillQuietly(m_txtPolicy, {});
    m_txtEmp->clear();
    m_dtDate->setDate(m_ctx.session().serverDate);
    ui::setBlank(m_dtNext);
    m_piX->clear();
    m_loading = false;

    m_patient = clinical::PickedPatient{};
    m_recID.clear();
    m_consultID.clear();
    m_refConsultID.clear();
    m_purposeClass.clear();
    m_consultFee = 0;
    m_screeningFee = 0;
    Session& session = m_ctx.session();
    session.CardRenewedFlag = false;
    session.renewedPNo.clear();
    session.renewedExpiryDate = QDate();
    m_cmdRenew->setEnabled(false);
}

void frmRecords::cmdAddClick()
{
    m_debtToCarry = 0;
    setEntry(true);
    m_isFound = false;
    m_isEdit = false;
    fillGrid();
}

void frmRecords::cmdCancelClick()
{
    m_label5->setText(kHeading);
    clearFields();
    m_isEdit = false;
    m_isFound = false;
    setEntry(false);
    fillGrid();
}

// ---------------------------------------------------------------------------------------
// Grids

void frmRecords::fillGrid()
{
    runCommand(this, m_ctx, [this] {
        db::Connection& c = m_ctx.db();
        replaceModel(m_grdData, clinical::visitsForToday(c, m_grdData));
        grid::hideColumns(m_grdData, {QStringLiteral("recID"), QStringLiteral("attendedTo"),
                                      QStringLiteral("Surname"), QStringLiteral("empID")});
        ui::fitColumns(m_grdData, 220);
        const int n = clinical::visitsForTodayCount(c);
        setWindowTitle(n > 0 ? QStringLiteral("%1 %2").arg(kCaption).arg(n) : kCaption);
    });
}

void frmRecords::getDocWaitList()
{
    runTimerCommand(this, m_ctx, [this] {
        replaceModel(m_grdDoc, clinical::doctorsQueue(m_ctx.db(), m_dtDate->date(), m_grdDoc));
        ui::fitColumns(m_grdDoc);
    });
}

QString frmRecords::cell(const QString& caption) const
{
    return grid::currentText(m_grdData, caption);
}

// ---------------------------------------------------------------------------------------
// Finding and picking a patient

void frmRecords::find(const QString& mode)
{
    QString text = m_txtName->text().trimmed();
    QString searchMode = patients::kSearchCardNo;
    if (mode == patients::kSearchSurname || mode == patients::kSearchCardNo) {
        if (text.isEmpty()) {
            m_ctx.prompter().inform(
                mode == patients::kSearchCardNo
                    ? QStringLiteral("To locate a patient, Enter Card No and click 'Card No' "
                                     "Button")
                    : QStringLiteral("To locate a patient, Enter few Letters and click OK "
                                     "Button"));
            m_txtName->setFocus();
            return;
        }
        searchMode = mode;
    } else {
        if (!runCommand(this, m_ctx, [&] {
                text = clinical::completeSystemNo(m_ctx.session().hospitalNo, text);
            }))
            return;
        m_txtName->setText(text);
        searchMode = patients::kSearchPNo;
    }
    auto busy = m_ctx.prompter().busy();
    const patients::SearchOutcome found =
        patients::searchPatients(m_ctx, searchMode, 0, text, m_grdData);
    if (found.failed()) {
        m_ctx.prompter().inform(found.error);
        return;
    }
    QAbstractItemModel* rows = found.rows;
    QStringList entries;
    const int name = grid::columnOf(rows, QStringLiteral("FullName"));
    const int pno = grid::columnOf(rows, QStringLiteral("pno"));
    for (int r = 0; r < rows->rowCount(); ++r)
        entries << listentry::make(rows->index(r, name).data(Qt::EditRole).toString().trimmed(),
                                   rows->index(r, pno).data(Qt::EditRole).toString());
    m_loading = true;
    ui::fillQuietly(m_cboVehNo, entries);
    m_loading = false;
    m_isFound = true;
    if (m_isEdit) {
        delete rows;  // while a visit is edited the list stays on today's visits
        return;
    }
    replaceModel(m_grdData, rows);
    grid::hideColumns(m_grdData, {QStringLiteral("expired"), QStringLiteral("coyname"),
                                  QStringLiteral("fullname")});
    ui::fitColumns(m_grdData, 220);
    m_lblFound->setText(found.foundText);
}

void frmRecords::pickPatient(const QString& entry)
{
    clinical::PickedPatient p;
    const bool ok = runCommand(this, m_ctx, [&] { clinical::pickPatient(m_ctx, entry, p); });
    if (p.clearScreen) {
        clearFields();
        m_label5->setText(kHeading);
        return;
    }
    m_refConsultID.clear();
    m_label5->setText(p.fullName.isEmpty() ? kHeading : p.fullName);
    m_lblNo->setText(p.found ? p.pno : QString());
    m_lblOld->setText(p.oldPno);
    m_lblOccup->setText(p.occupation);
    m_lblPolicy->setText(p.policyType);
    m_lblExpire->setText(p.expiryDate.isValid() ? fmt::shortDate(p.expiryDate) : QString());
    m_cmdRenew->setEnabled(p.renewEnabled);
    // A patient refused here is no patient for Save.
    m_patient = ok && p.found ? p : clinical::PickedPatient{};
    if (!ok || !p.found)
        return;
    m_loading = true;
    ui::chooseKeyQuietly(m_cboPat, p.coyName);
    runCommand(this, m_ctx, [&] {
        fillCategories(patients::payerChoice(m_ctx.db(), listentry::make(p.client, p.coyName))
                           .clientType);
        fillPlans();
    });
    ui::chooseQuietly(m_cboClient, p.billingCat);
    if (!p.policyType.isEmpty() && m_txtPolicy->findText(p.policyType) < 0)
        m_txtPolicy->addItem(p.policyType);
    ui::chooseQuietly(m_txtPolicy, p.policyType);
    m_txtEmp->setText(p.enrolleeNo);
    ui::chooseQuietly(m_cboRef, p.feeForService);
    ui::chooseQuietly(m_cboRefHmo, p.hmoReferral);
    m_loading = false;
    showPhoto(p.pno);
}

void frmRecords::showPhoto(const QString& pno)
{
    m_piX->clear();
    if (m_ctx.session().defaults.PIXLOC == QLatin1String("FILE"))
        return;
    runCommand(this, m_ctx, [&] {
        QPixmap photo;
        if (photo.loadFromData(patients::storedPhoto(m_ctx.db(), pno)))
            m_piX->setPixmap(photo);
    });
}

// ---------------------------------------------------------------------------------------
// Rules of the fields

void frmRecords::clinicChosen()
{
    if (m_loading || m_cboType->currentIndex() < 0)
        return;
    bool renew = m_cmdRenew->isEnabled();
    const bool ok =
        runCommand(this, m_ctx, [&] { clinical::checkClinicChoice(m_ctx, m_patient, renew); });
    m_cmdRenew->setEnabled(renew);
    if (!ok)
        ui::chooseQuietly(m_cboType, QString());
}

void frmRecords::purposeChosen()
{
    if (m_loading)
        return;
    clinical::PurposeChoice choice;
    runCommand(this, m_ctx, [&] {
        clinical::choosePurpose(m_ctx, m_cboPurpose->currentText(), m_patient.coyName,
                                m_cboType->currentText(), choice);
    });
    m_purposeClass = choice.purposeClass;
    m_consultFee = choice.consultationFee;
    m_screeningFee = choice.screeningFee;
}

void frmRecords::payerChosen()
{
    if (m_loading)
        return;
    runCommand(this, m_ctx, [this] {
        const patients::PayerChoice payer =
            patients::payerChoice(m_ctx.db(), m_cboPat->currentText());
        m_patient.coyName = payer.retainID;
        m_patient.billTo = payer.retainCode;
        fillCategories(payer.clientType);
        fillPlans();
    });
}

void frmRecords::fillCategories(const QString& clientType)
{
    ui::fillQuietly(m_cboClient, patients::billingCategories(m_ctx.db(), clientType, false));
}

void frmRecords::fillPlans()
{
    ui::fillQuietly(m_txtPolicy, patients::planEntries(m_ctx.db(), m_patient.coyName,
                                                       patients::PlanList::Attendance));
}

// ---------------------------------------------------------------------------------------
// Commands

void frmRecords::cmdEditClick()
{
    const QString consultID = cell(QStringLiteral("ConsultID"));
    if (clinical::isSplitBill(consultID)) {
        m_ctx.prompter().inform(QStringLiteral("This ConsultID Cannot be edited! Split Bill"),
                                QStringLiteral("Split Bill Not Editable"), Icon::Information);
        return;
    }
    if (m_isEdit) {
        m_ctx.prompter().inform(QStringLiteral("Already in Edit Mode Click 'Cancel Button' to "
                                               "cancel the currrent Editing"));
        return;
    }
    if (m_isFound) {
        const QString pno = cell(QStringLiteral("pno"));
        if (pno.isEmpty()) {
            m_ctx.prompter().inform(kNoVisitChosen);
            return;
        }
        // A patient found: a new visit for that patient.
        const QString entry = listentry::make(cell(QStringLiteral("FullName")).trimmed(), pno);
        {
            const QSignalBlocker quiet(m_cboVehNo);
            if (m_cboVehNo->findText(entry) < 0)
                m_cboVehNo->addItem(entry);
            m_cboVehNo->setCurrentIndex(m_cboVehNo->findText(entry));
        }
        pickPatient(entry);
        m_isFound = false;
        cmdAddClick();
        return;
    }
    m_recID = cell(QStringLiteral("recID"));
    if (m_recID.isEmpty()) {
        m_ctx.prompter().inform(kNoVisitChosen);
        return;
    }
    m_isEdit = true;
    m_consultID = consultID;
    const QString pno = cell(QStringLiteral("PatNo"));
    const QString entry = listentry::make(cell(QStringLiteral("Fullname")).trimmed(), pno);
    runCommand(this, m_ctx, [&] { m_patient = clinical::readPatient(m_ctx.db(), pno); });
    m_patient.fullName = listentry::text(entry);
    m_patient.coyName = cell(QStringLiteral("RetainID"));
    m_loading = true;
    {
        const QSignalBlocker quiet(m_cboVehNo);
        if (m_cboVehNo->findText(entry) < 0)
            m_cboVehNo->addItem(entry);
        m_cboVehNo->setCurrentIndex(m_cboVehNo->findText(entry));
    }
    m_label5->setText(m_patient.fullName);
    m_lblNo->setText(pno);
    m_lblOld->setText(m_patient.oldPno);
    m_lblOccup->setText(m_patient.occupation);
    m_lblPolicy->setText(m_patient.policyType);
    m_lblExpire->setText(m_patient.expiryDate.isValid() ? fmt::shortDate(m_patient.expiryDate)
                                                        : QString());
    const QString purpose = cell(QStringLiteral("Remarks"));
    ui::chooseQuietly(m_cboPurpose, purpose);
    ui::chooseQuietly(m_cboType, cell(QStringLiteral("ClinicType")));
    m_lblBill->setText(consultID);
    ui::chooseQuietly(m_cboRef, cell(QStringLiteral("FeeForService")));
    ui::chooseQuietly(m_cboRefHmo, cell(QStringLiteral("Referal")));
    m_dtDate->setDate(fmt::parseDate(cell(QStringLiteral("Date"))));
    ui::chooseKeyQuietly(m_cboPat, m_patient.coyName);
    const QString plan = cell(QStringLiteral("PolicyType"));
    runCommand(this, m_ctx, [&] {
        const patients::PayerChoice payer =
            patients::payerChoice(m_ctx.db(), m_cboPat->currentText());
        m_patient.billTo = payer.retainCode;
        fillCategories(payer.clientType);
        fillPlans();
        // The class of a purpose already taken; no question is asked of a loaded visit.
        m_purposeClass =
            patients::purposeFees(m_ctx.db(), purpose, m_patient.coyName).purposeClass;
    });
    const QString category = cell(QStringLiteral("BillingCat"));
    if (!category.isEmpty() && m_cboClient->findText(category) < 0)
        m_cboClient->addItem(category);
    ui::chooseQuietly(m_cboClient, category);
    if (!plan.isEmpty() && m_txtPolicy->findText(plan) < 0)
        m_txtPolicy->addItem(plan);
    ui::chooseQuietly(m_txtPolicy, plan);
    m_txtEmp->setText(cell(QStringLiteral("EnrolleNo")));
    m_loading = false;
    setEntry(true);
    showPhoto(pno);
}

void frmRecords::cmdDelClick()
{
    const QString recID = m_isFound ? QString() : cell(QStringLiteral("recID"));
    if (recID.isEmpty()) {
        m_ctx.prompter().inform(kNoVisitChosen);
        return;
    }
    bool deleted = false;
    if (!runCommand(this, m_ctx, [&] {
            deleted = clinical::deleteAttendance(m_ctx, recID, cell(QStringLiteral("Fullname")),
                                                 cell(QStringLiteral("ConsultID")));
        }) ||
        !deleted)
        return;
    m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "));
    fillGrid();
}

void frmRecords::cmdRenewClick()
{
    Session& s = m_ctx.session();
    s.renewedPNo.clear();
    s.renewedExpiryDate = QDate();
    m_ctx.screens().openModal(QStringLiteral("frmRenew"),
                              {{QStringLiteral("PNo"), m_patient.pno},
                               {QStringLiteral("name"), m_patient.fullName},
                               {QStringLiteral("tag"), patients::kRenewFromAttendance}});
    if (m_patient.pno.isEmpty() || s.renewedPNo != m_patient.pno ||
        !s.renewedExpiryDate.isValid())
        return;
    // The card now runs to the new date: a clinic can be chosen again.
    m_patient.expiryDate = s.renewedExpiryDate;
    m_lblExpire->setText(fmt::shortDate(s.renewedExpiryDate));
    m_cmdRenew->setEnabled(false);
}

void frmRecords::okButtonClick()
{
    const clinical::AttendanceForm form = attendanceForm();
    // A failed save leaves every field as it was, so Save can simply be pressed again.
    if (!runCommand(this, m_ctx, [&] { clinical::saveAttendance(m_ctx, form); }))
        return;
    fillGrid();
    clearFields();
    m_label5->setText(kHeading);
    m_isEdit = false;
    m_isFound = false;
    setEntry(false);
    m_txtName->setFocus();
}

void frmRecords::flashHeading()
{
    m_flashOn = !m_flashOn;
    QPalette p = m_label5->palette();
    p.setColor(QPalette::WindowText, m_flashOn ? QColor(255, 0, 0) : QColor(0, 0, 0));
    m_label5->setPalette(p);
}

clinical::AttendanceForm frmRecords::attendanceForm() const
{
    clinical::AttendanceForm f;
    f.isEdit = m_isEdit;
    f.recID = m_recID;
    f.consultID = m_consultID;
    f.pno = m_patient.pno;
    f.patient = m_cboVehNo->currentText();
    f.clientCat = m_cboClient->currentText();
    f.coyName = m_patient.coyName;
    f.billTo = m_patient.billTo;
    f.clinic = m_cboType->currentText();
    f.purpose = m_cboPurpose->currentText();
    f.purposeClass = m_purposeClass;
    f.feeForService = m_cboRef->currentText();
    f.hmoReferral = m_cboRefHmo->currentText();
    f.plan = m_txtPolicy->currentText();
    f.enrolleeNo = m_txtEmp->text();
    f.refConsultID = m_refConsultID;
    f.debtToCarry = m_debtToCarry;
    // Only the card of the patient on the screen: a renewal left over from another patient
    // is not this visit's to bill.
    const Session& s = m_ctx.session();
    f.cardRenewed = s.CardRenewedFlag && s.renewedPNo == m_patient.pno;
    return f;
}

TOLMAR_REGISTER_SCREEN(frmRecords)

}  // namespace tolmar
