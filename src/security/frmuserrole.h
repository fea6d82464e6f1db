#pragma once
// "User Allocation To Roles": gives a user a role. The tree lists the roles; a click on one
// lists its users.

#include <QVariantMap>
#include <QWidget>

class QComboBox;
class QTreeWidget;
class QTreeWidgetItem;

namespace tolmar {

class AppContext;

class frmUserRole : public QWidget {
    Q_OBJECT
public:
    frmUserRole(AppContext& ctx, const QVariantMap& args = {}, QWidget* parent = nullptr);

private:
    void load();
    void listUsers(QTreeWidgetItem* node);
    void submit();

    AppContext& m_ctx;
    QComboBox* m_role;
    QComboBox* m_user;
    QTreeWidget* m_tree;
    QTreeWidget* m_list;
    QTreeWidgetItem* m_shown = nullptr;
};

}  // namespace tolmar
