#include "payers/frmretainership.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/sheetexport.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "payers/retainership.h"

#include <QComboBox>
#include <QDoubleValidator>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmRetainership::frmRetainership(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Company Information"));
    ui::FormBuilder f(this);
    // Who the client is beside what it pays: the list below gets the height.
    f.sideBySide();
    f.section(QStringLiteral("Company Information"), QStringLiteral("fraClient"));
    m_name = f.text(QStringLiteral("txtName"), QStringLiteral("Company Name"));
    m_client = f.combo(QStringLiteral("cboClient"), QStringLiteral("Client Type"));
    m_contact = f.text(QStringLiteral("txtContact"), QStringLiteral("Contact Name"));
    m_address = f.text(QStringLiteral("txtAddress"), QStringLiteral("Address"));
    m_phone = f.text(QStringLiteral("txtPhone"), QStringLiteral("Phone"));
    m_email = f.text(QStringLiteral("txtEmail"), QStringLiteral("Email"));
    f.section(QStringLiteral("Terms"), QStringLiteral("fraTerms"));
    m_active = f.combo(QStringLiteral("cboYes"), QStringLiteral("Client Active?"));
    m_monthEnd = f.combo(QStringLiteral("cboNum"), QStringLiteral("Month Ending"));
    m_monthEnd->setToolTip(QStringLiteral("Specify 31 if not Required"));
    f.label(QStringLiteral("lblMonthNote"), QStringLiteral("Specify 31 if not Required"));
    m_con = f.text(QStringLiteral("txtCon"), QStringLiteral("Consultation Amount"));
    m_reg = f.text(QStringLiteral("txtReg"), QStringLiteral("Registration Amount"));
    m_renew = f.text(QStringLiteral("txtRenew"), QStringLiteral("Card Renewal Amount"));
    for (QLineEdit* amount : {m_con, m_reg, m_renew}) {
        auto* v = new QDoubleValidator(0, 1e12, 2, amount);
        v->setNotation(QDoubleValidator::StandardNotation);
        amount->setValidator(v);
    }
    auto* acct = new QWidget(this);
    auto* acctRow = new QHBoxLayout(acct);
    acctRow->setContentsMargins(0, 0, 0, 0);
    m_acctNo = new QLineEdit(acct);
    m_acctNo->setObjectName(QStringLiteral("txtAcctNo"));
    m_accts = new QPushButton(QStringLiteral("..."), acct);
    m_accts->setObjectName(QStringLiteral("cmdAccts"));
    m_accts->setAutoDefault(false);
    m_accts->setMaximumWidth(32);
    acctRow->addWidget(m_acctNo, 1);
    acctRow->addWidget(m_accts);
    f.field(acct, QStringLiteral("fraAcctNo"), QStringLiteral("Account No"));

    m_add = f.button(QStringLiteral("cmdAdd"), QStringLiteral("Add"));
    m_edit = f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    m_save = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    m_delete = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    m_cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Cancel"));
    auto* exportButton = f.button(QStringLiteral("cmdExportAttend"),
                                  QStringLiteral("Export to Excel"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));

    f.section();
    m_search = f.text(QStringLiteral("txtSearch"), QStringLiteral("Search"));
    m_grid = f.grid(QStringLiteral("grdData"));
    resize(980, 720);

    m_active->addItems({QStringLiteral("YES"), QStringLiteral("NO")});
    for (int day = 1; day <= 31; ++day)
        m_monthEnd->addItem(QString::number(day));
    runCommand(this, m_ctx, [this] { m_client->addItems(Retainership(m_ctx).clientTypes()); });

    connect(m_add, &QPushButton::clicked, this, [this] { setMode(Mode::Add); });
    connect(m_edit, &QPushButton::clicked, this, &frmRetainership::beginEdit);
    connect(m_grid, &QTableView::doubleClicked, this, &frmRetainership::beginEdit);
    connect(m_save, &QPushButton::clicked, this, &frmRetainership::save);
    connect(m_delete, &QPushButton::clicked, this, &frmRetainership::removeCurrent);
    connect(m_cancel, &QPushButton::clicked, this, [this] { setMode(Mode::View); });
    connect(exportButton, &QPushButton::clicked, this, &frmRetainership::exportList);
    connect(m_accts, &QPushButton::clicked, this, &frmRetainership::chooseAccount);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(m_search, &QLineEdit::textChanged, this, &frmRetainership::fillGrid);

    setMode(Mode::View);
    fillGrid();
}

void frmRetainership::fillGrid()
{
    runCommand(this, m_ctx, [this] {
        const QString filter = m_search->text();
        QAbstractItemModel* old = m_model;
        m_model = m_ctx.db().gridModel(Retainership::listSql(!filter.isEmpty()),
                                       Retainership::listParams(filter), this);
        m_grid->setModel(m_model);
        delete old;
        ui::fitColumns(m_grid, 120);
        const int name = grid::columnOf(m_model, QStringLiteral("ClientName"));
        if (name >= 0)
            m_grid->setColumnWidth(name, 300);
    });
}

void frmRetainership::clearFields()
{
    for (QLineEdit* e : {m_name, m_contact, m_address, m_phone, m_email, m_acctNo})
        e->clear();
    for (QComboBox* c : {m_client, m_active, m_monthEnd})
        c->setCurrentIndex(-1);
    for (QLineEdit* e : {m_con, m_reg, m_renew})
        e->setText(QStringLiteral("0"));
    m_editing.clear();
}

void frmRetainership::setMode(Mode mode)
{
    m_mode = mode;
    const bool editing = mode != Mode::View;
    for (QLineEdit* e : {m_name, m_contact, m_address, m_phone, m_email, m_con, m_reg, m_renew})
        e->setReadOnly(!editing);
    for (QComboBox* c : {m_client, m_active, m_monthEnd})
        c->setEnabled(editing);
    // The account is given when the client is made; an edit does not write it.
    m_acctNo->setReadOnly(mode != Mode::Add);
    m_accts->setEnabled(mode == Mode::Add);
    m_save->setEnabled(editing);
    m_cancel->setEnabled(editing);
    for (QPushButton* b : {m_add, m_edit, m_delete})
        b->setEnabled(!editing);
    m_grid->setEnabled(!editing);
    if (mode != Mode::Edit)
        clearFields();
    if (editing)
        m_name->setFocus();
}

QString frmRetainership::currentCell(const QString& column) const
{
    return grid::currentText(m_grid, column);
}

// Edit and Delete work on the row picked in the list: without one the desk is told what to
// pick, instead of a button that seems dead.
void frmRetainership::requirePickedRow(const QString& action) const
{
    if (!m_grid->currentIndex().isValid())
        throw CheckFailed(
            QStringLiteral("No Company to %1. Select a Company in the list first").arg(action),
            QStringLiteral("grdData"));
}

void frmRetainership::beginEdit()
{
    if (m_mode != Mode::View ||
        !runCommand(this, m_ctx, [this] { requirePickedRow(QStringLiteral("Edit")); }))
        return;
    setMode(Mode::Edit);
    m_editing = currentCell(QStringLiteral("retainID"));
    m_name->setText(currentCell(QStringLiteral("ClientName")));
    m_client->setCurrentIndex(m_client->findText(currentCell(QStringLiteral("ClientType"))));
    m_contact->setText(currentCell(QStringLiteral("Contact")));
    m_address->setText(currentCell(QStringLiteral("Address")));
    m_phone->setText(currentCell(QStringLiteral("PhoneNo")));
    m_email->setText(currentCell(QStringLiteral("Email")));
    m_active->setCurrentIndex(m_active->findText(currentCell(QStringLiteral("Active"))));
    m_monthEnd->setCurrentIndex(
        m_monthEnd->findText(currentCell(QStringLiteral("BillEndDate")).trimmed()));
    m_con->setText(currentCell(QStringLiteral("ConAmount")));
    m_reg->setText(currentCell(QStringLiteral("RegAmount")));
    m_renew->setText(currentCell(QStringLiteral("CardRenewAmount")));
    m_acctNo->setText(currentCell(QStringLiteral("AccountNo")));
}

void frmRetainership::save()
{
    bool declined = false;
    const bool done = runCommand(this, m_ctx, [&] {
        ClientFields f;
        f.retainID = m_editing;
        f.name = m_name->text();
        f.clientType = m_client->currentText();
        f.contact = m_contact->text();
        f.address = m_address->text();
        f.phone = m_phone->text();
        f.email = m_email->text();
        f.active = m_active->currentText();
        f.monthEnding = m_monthEnd->currentText();
        f.conAmount = m_con->text();
        f.regAmount = m_reg->text();
        f.renewAmount = m_renew->text();
        f.acctNo = m_acctNo->text();
        Retainership::check(f);
        m_monthEnd->setCurrentText(f.monthEnding);
        Retainership clients(m_ctx);
        // Nothing in the table keeps two clients from one name, but it is nearly always a
        // company typed in twice: the desk decides.
        const QString sameName = clients.codeOfName(f.name, f.retainID);
        if (!sameName.isEmpty() &&
            !m_ctx.prompter().ask(
                QStringLiteral("A company with this name already exists (code %1). "
                               "Save another?")
                    .arg(sameName),
                windowTitle())) {
            declined = true;  // the form stays as typed, nothing is saved
            return;
        }
        if (m_mode == Mode::Edit) {
            clients.edit(f);
            m_ctx.prompter().inform(QStringLiteral("Record Succesfully Updated"), windowTitle());
            return;
        }
        const ClientAdded added = clients.add(f);
        // The client is saved whatever became of its account; the desk learns why there
        // is none and can choose one later in the accounts module.
        if (!added.accountError.isEmpty())
            m_ctx.prompter().inform(added.accountError, windowTitle(), Icon::Critical);
        m_ctx.prompter().inform(QStringLiteral("Record Succesfully saved"), windowTitle());
    });
    if (!done || declined)
        return;
    setMode(Mode::View);
    fillGrid();
}

void frmRetainership::removeCurrent()
{
    if (!runCommand(this, m_ctx, [this] { requirePickedRow(QStringLiteral("Delete")); }))
        return;
    const QString retainID = currentCell(QStringLiteral("retainID"));
    if (retainID.isEmpty())
        return;
    if (!m_ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                              QStringLiteral("Delete")))
        return;
    if (runCommand(this, m_ctx, [&] {
            Retainership(m_ctx).remove(retainID);
            m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "),
                                    windowTitle());
        }))
        fillGrid();
}

void frmRetainership::exportList()
{
    runCommand(this, m_ctx, [this] { exportToSheet(m_ctx, Retainership(m_ctx).exportRows()); });
}

void frmRetainership::chooseAccount()
{
    m_ctx.screens().openModal(
        QStringLiteral("frmRevAcctSelect"),
        {{QStringLiteral("caller"), QStringLiteral("frmRetainership")},
         {QStringLiteral("callerWidget"), QVariant::fromValue<QObject*>(this)},
         {QStringLiteral("group"), m_ctx.session().defaults.Acct_Receivable}});
}



TOLMAR_REGISTER_SCREEN(frmRetainership)

}  // namespace tolmar
