#include "security/frmusers.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "security/accounts.h"

#include <QApplication>
#include <QComboBox>
#include <QFocusEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

namespace tolmar {

frmUsers::frmUsers(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Application Users"));
    ui::FormBuilder f(this);
    f.sideBySide();
    f.section(QStringLiteral("Accounts"));
    m_tree = new QTreeWidget(this);
    m_tree->setHeaderHidden(true);
    m_tree->setMinimumSize(260, 300);
    f.field(m_tree, QStringLiteral("TreeView1"), QString());
    f.section(QStringLiteral("New Account"));
    m_username = f.text(QStringLiteral("txtUsername"), QStringLiteral("Username:"));
    m_username->setMaxLength(50);
    m_fullname = f.text(QStringLiteral("txtFullName"), QStringLiteral("Fullname:"));
    m_fullname->setMaxLength(150);
    m_password = f.password(QStringLiteral("txtPassword"), QStringLiteral("Password:"));
    m_confirm = f.password(QStringLiteral("txtConfirmPWD"), QStringLiteral("Retype Password:"));
    m_status = f.combo(QStringLiteral("cboAcctStatus"), QStringLiteral("Account Status:"));
    m_status->addItems({QStringLiteral("Enabled"), QStringLiteral("Disabled")});
    m_branch = f.combo(QStringLiteral("cboBranchCode"), QStringLiteral("User Category:"));
    m_apply = f.button(QStringLiteral("cmdApply"), QStringLiteral("&Save"));
    m_refresh = f.button(QStringLiteral("cmdRefresh"), QStringLiteral("&Reset"));
    m_cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("&Close"));
    resize(720, 420);

    m_confirm->installEventFilter(this);
    connect(m_username, &QLineEdit::textChanged, this,
            [this](const QString& t) { m_apply->setEnabled(!t.trimmed().isEmpty()); });
    connect(m_tree, &QTreeWidget::itemClicked, this, &frmUsers::showAccount);
    connect(m_apply, &QPushButton::clicked, this, &frmUsers::apply);
    connect(m_refresh, &QPushButton::clicked, this, &frmUsers::clearFields);
    connect(m_cancel, &QPushButton::clicked, this, &QWidget::close);

    runCommand(this, m_ctx, [this] {
        m_branch->addItems(security::Accounts(m_ctx).branches());
        fillTree();
    });
    clearFields();
}

void frmUsers::fillTree()
{
    m_tree->clear();
    auto* root = new QTreeWidgetItem(m_tree, {m_ctx.session().hospitalName});
    for (const security::AccountNode& a : security::Accounts(m_ctx).all())
        new QTreeWidgetItem(root, {a.fullname});
    root->setExpanded(true);
}

void frmUsers::showAccount(QTreeWidgetItem* item)
{
    if (!item || !item->parent())
        return;
    runCommand(this, m_ctx, [&] {
        const auto a = security::Accounts(m_ctx).firstByFullname(item->text(0));
        if (!a)
            return;
        m_username->setText(a->username);
        m_fullname->setText(a->fullname);
        // The stored password stays where it is: the boxes are for a new one.
        m_password->clear();
        m_confirm->clear();
        // Other modules write "ENABLED".
        m_status->setCurrentIndex(m_status->findText(a->status, Qt::MatchFixedString));
        m_branch->setCurrentIndex(m_branch->findText(a->branch, Qt::MatchFixedString));
    });
}

void frmUsers::clearFields()
{
    for (QLineEdit* e : {m_username, m_fullname, m_password, m_confirm})
        e->clear();
    m_status->setCurrentIndex(-1);
    m_branch->setCurrentIndex(-1);
    m_apply->setEnabled(false);
}

bool frmUsers::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_confirm && event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // A message box or a menu taking the focus is not the desk leaving the box, and
        // Reset or Close need no matching password.
        QWidget* next = QApplication::focusWidget();
        const bool leaving = reason != Qt::ActiveWindowFocusReason &&
                             reason != Qt::PopupFocusReason && next != m_refresh &&
                             next != m_cancel;
        if (leaving && m_confirm->text() != m_password->text()) {
            m_ctx.prompter().inform(security::kUnmatchedPasswordText, windowTitle(),
                                    Icon::Critical);
            m_confirm->setFocus();
        }
    }
    return QWidget::eventFilter(watched, event);
}

void frmUsers::apply()
{
    security::AccountFields a;
    a.username = m_username->text();
    a.fullname = m_fullname->text();
    a.password = m_password->text();
    a.confirm = m_confirm->text();
    a.status = m_status->currentIndex() < 0 ? QString() : m_status->currentText();
    a.branch = m_branch->currentIndex() < 0 ? QString() : m_branch->currentText();
    if (!runCommand(this, m_ctx, [&] {
            security::Accounts(m_ctx).create(a);
            m_ctx.prompter().inform(QStringLiteral("Account creation succeeded."),
                                    windowTitle());
        }))
        return;
    runCommand(this, m_ctx, [this] { fillTree(); });
    clearFields();
    m_username->setFocus();
}

TOLMAR_REGISTER_SCREEN(frmUsers)

}  // namespace tolmar
