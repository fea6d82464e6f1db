#pragma once
// "Change Password": the session's user (or another whose old password is known) sets a
// new password.

#include <QVariantMap>
#include <QWidget>

class QLineEdit;

namespace tolmar {

class AppContext;

class frmChngPwd : public QWidget {
    Q_OBJECT
public:
    frmChngPwd(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

private:
    void save();

    AppContext& m_ctx;
    QLineEdit* m_user;
    QLineEdit* m_old;
    QLineEdit* m_new;
    QLineEdit* m_confirm;
};

}  // namespace tolmar
