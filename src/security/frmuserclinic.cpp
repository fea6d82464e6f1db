#include "security/frmuserclinic.h"

#include "clinical/clinicsetup.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "security/userclinic.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tolmar {

namespace {

QLineEdit* masked(QLineEdit* e)
{
    e->setEchoMode(QLineEdit::Password);
    e->setContextMenuPolicy(Qt::NoContextMenu);
    return e;
}

}  // namespace

frmUserClinic::frmUserClinic(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Assign Clinics to Doctors"));
    ui::FormBuilder f(this);
    f.sideBySide();
    f.section(QStringLiteral("Doctor"), QStringLiteral("fraUser"));
    m_cboSys = f.combo(QStringLiteral("cboSys"), QStringLiteral("Doctor"));
    m_txtUsername = f.text(QStringLiteral("txtUsername"), QStringLiteral("Username:"));
    m_txtFullName = f.text(QStringLiteral("txtFullName"), QStringLiteral("Fullname:"));
    m_txtFullName1 = f.text(QStringLiteral("txtFullName1"), QStringLiteral("Display Name:"));
    m_lblEmpID = static_cast<QLabel*>(
        f.field(new QLabel(this), QStringLiteral("lblEmpID"), QStringLiteral("EmpNo:")));
    m_cboAcctStatus = f.combo(QStringLiteral("cboAcctStatus"), QStringLiteral("Account Status:"));
    m_cboAcctStatus->addItems({QStringLiteral("ENABLED"), QStringLiteral("DISABLED")});
    m_cboBranchCode = f.combo(QStringLiteral("cboBranchCode"), QStringLiteral("User Previlege:"));
    m_cboBranchCode->addItems({QStringLiteral("(GENERAL)"), QStringLiteral("ADMINISTRATOR")});
    m_txtPassword = masked(f.text(QStringLiteral("txtPassword"), QStringLiteral("Password:")));
    m_txtConfirmPWD =
        masked(f.text(QStringLiteral("txtConfirmPWD"), QStringLiteral("Retype Password:")));
    m_frame = f.section(QStringLiteral("Assigned Clinics"), QStringLiteral("fraClinics"));
    m_lstDate = new QListWidget(this);
    f.field(m_lstDate, QStringLiteral("LstDate"), QString());
    auto* all = f.button(QStringLiteral("cmdAll"), QStringLiteral("Select All"));
    auto* none = f.button(QStringLiteral("cmdDeSelect"), QStringLiteral("Deselect All"));
    auto* add = f.button(QStringLiteral("cmdAdd"), QStringLiteral("Save"));
    auto* delClinics =
        f.button(QStringLiteral("cmdDelClinics"), QStringLiteral("Delete Assigned Clinics"));
    auto* del = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    auto* refreshButton = f.button(QStringLiteral("cmdRefresh"), QStringLiteral("Refresh"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    f.layout()->addStretch(1);
    resize(900, 470);

    connect(m_cboSys, &QComboBox::activated, this, &frmUserClinic::doctorChosen);
    connect(all, &QPushButton::clicked, this, [this] { tickAll(true); });
    connect(none, &QPushButton::clicked, this, [this] { tickAll(false); });
    connect(m_txtConfirmPWD, &QLineEdit::editingFinished, this,
            &frmUserClinic::checkConfirmation);
    connect(add, &QPushButton::clicked, this, [this] {
        runCommand(this, m_ctx, [this] {
            security::assignClinics(m_ctx, m_txtUsername->text(), tickedClinics());
        });
    });
    connect(delClinics, &QPushButton::clicked, this, [this] {
        bool done = false;
        if (runCommand(this, m_ctx, [&] {
                done = security::deleteAssignedClinics(m_ctx, m_txtUsername->text());
            }) &&
            done)
            doctorChosen();
    });
    connect(del, &QPushButton::clicked, this, [this] {
        bool done = false;
        if (runCommand(this, m_ctx,
                       [&] { done = security::deleteUser(m_ctx, m_txtUsername->text()); }) &&
            done)
            refresh();
    });
    connect(refreshButton, &QPushButton::clicked, this, &frmUserClinic::refresh);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    refresh();
}

void frmUserClinic::refresh()
{
    clearFields();
    runCommand(this, m_ctx, [this] {
        m_cboSys->clear();
        m_cboSys->addItems(security::doctorEntries(m_ctx.db()));
        m_cboSys->setCurrentIndex(-1);
        m_lstDate->clear();
        for (const QString& entry : clinical::clinicEntries(m_ctx.db())) {
            auto* item = new QListWidgetItem(entry, m_lstDate);
            item->setCheckState(Qt::Unchecked);
        }
    });
}

void frmUserClinic::clearFields()
{
    for (QLineEdit* e :
         {m_txtUsername, m_txtFullName, m_txtFullName1, m_txtPassword, m_txtConfirmPWD})
        e->clear();
    m_lblEmpID->clear();
    m_cboAcctStatus->setCurrentIndex(-1);
    m_cboBranchCode->setCurrentIndex(-1);
    m_frame->setTitle(QStringLiteral("Assigned Clinics"));
    for (int i = 0; i < m_lstDate->count(); ++i)
        m_lstDate->item(i)->setCheckState(Qt::Unchecked);
}

void frmUserClinic::doctorChosen()
{
    const QString user = listentry::key(m_cboSys->currentText());
    runCommand(this, m_ctx, [&] {
        const auto account = security::doctorAccount(m_ctx.db(), user);
        if (!account)
            return;
        m_txtUsername->setText(account->username);
        m_txtFullName->setText(account->fullName);
        m_txtFullName1->setText(account->fullName);
        m_lblEmpID->setText(account->empID);
        // "Enabled" on the accounts screen, "ENABLED" here: the same status.
        m_cboAcctStatus->setCurrentIndex(
            m_cboAcctStatus->findText(account->accountStatus, Qt::MatchFixedString));
        m_cboBranchCode->setCurrentIndex(
            m_cboBranchCode->findText(account->branchCode, Qt::MatchFixedString));
        const QStringList mine = security::clinicsOf(m_ctx.db(), account->username);
        for (int i = 0; i < m_lstDate->count(); ++i) {
            QListWidgetItem* item = m_lstDate->item(i);
            item->setCheckState(mine.contains(listentry::key(item->text())) ? Qt::Checked
                                                                            : Qt::Unchecked);
        }
        m_frame->setTitle(QStringLiteral("Assigned Clinics for: %1").arg(account->username));
    });
}

void frmUserClinic::tickAll(bool on)
{
    if (m_lstDate->count() == 0) {
        m_ctx.prompter().inform(on ? QStringLiteral("No Item to select")
                                   : QStringLiteral("No Item to Deselect"),
                                windowTitle());
        return;
    }
    for (int i = 0; i < m_lstDate->count(); ++i)
        m_lstDate->item(i)->setCheckState(on ? Qt::Checked : Qt::Unchecked);
}

void frmUserClinic::checkConfirmation()
{
    if (m_txtConfirmPWD->text() == m_txtPassword->text())
        return;
    m_ctx.prompter().inform(QStringLiteral("Alert! Unmatched password. Kindly re-type to go on."),
                            windowTitle(), Icon::Critical);
    m_txtConfirmPWD->setFocus();
}

QStringList frmUserClinic::tickedClinics() const
{
    QStringList out;
    for (int i = 0; i < m_lstDate->count(); ++i)
        if (m_lstDate->item(i)->checkState() == Qt::Checked)
            out << listentry::key(m_lstDate->item(i)->text());
    return out;
}

TOLMAR_REGISTER_SCREEN(frmUserClinic)

}  // namespace tolmar
