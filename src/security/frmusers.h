#pragma once
// "Application Users": creates an account of the suite. The tree lists every account by
// full name under the hospital's name; a click shows the account (never its password).

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QLineEdit;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

namespace tolmar {

class AppContext;

class frmUsers : public QWidget {
    Q_OBJECT
public:
    frmUsers(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void fillTree();
    void showAccount(QTreeWidgetItem* item);
    void clearFields();
    void apply();

    AppContext& m_ctx;
    QTreeWidget* m_tree;
    QLineEdit* m_username;
    QLineEdit* m_fullname;
    QLineEdit* m_password;
    QLineEdit* m_confirm;
    QComboBox* m_status;
    QComboBox* m_branch;
    QPushButton* m_apply;
    QPushButton* m_refresh;
    QPushButton* m_cancel;
};

}  // namespace tolmar
