#include "security/frmchngpwd.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "security/accounts.h"

#include <QLineEdit>
#include <QPushButton>

namespace tolmar {

frmChngPwd::frmChngPwd(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Change Password"));
    ui::FormBuilder f(this);
    m_user = f.text(QStringLiteral("txtUser"), QStringLiteral("Username"));
    m_user->setMaxLength(50);
    m_old = f.password(QStringLiteral("txtPass"), QStringLiteral("Old Password"));
    m_new = f.password(QStringLiteral("txtPassN"), QStringLiteral("New Password"));
    m_confirm = f.password(QStringLiteral("txtPassC"), QStringLiteral("Confirm Password"));
    auto* ok = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    resize(420, 200);
    m_user->setText(m_ctx.session().userName);
    // The user is known: what is wanted first is the old password.
    if (!m_user->text().isEmpty())
        m_old->setFocus();
    connect(ok, &QPushButton::clicked, this, &frmChngPwd::save);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
}

void frmChngPwd::save()
{
    if (!runCommand(this, m_ctx, [this] {
            security::Accounts(m_ctx).changePassword(m_user->text(), m_old->text(),
                                                     m_new->text(), m_confirm->text());
            m_ctx.prompter().inform(QStringLiteral("Congrats! User Account's Password changed."),
                                    windowTitle());
        }))
        return;
    for (QLineEdit* e : {m_user, m_old, m_new, m_confirm})
        e->clear();
}

TOLMAR_REGISTER_SCREEN(frmChngPwd)

}  // namespace tolmar
