#include "security/frmuserrole.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "security/roles.h"

#include <QComboBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>

namespace tolmar {

frmUserRole::frmUserRole(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("User Allocation To Roles"));
    ui::FormBuilder f(this);
    m_role = f.combo(QStringLiteral("cboRoleID"), QStringLiteral("Role ID:"));
    m_user = f.combo(QStringLiteral("cboUsername"), QStringLiteral("Username:"));
    f.sideBySide();
    f.section(QStringLiteral("Roles"));
    m_tree = new QTreeWidget(this);
    m_tree->setHeaderHidden(true);
    m_tree->setMinimumSize(240, 260);
    f.field(m_tree, QStringLiteral("TreeView1"), QString());
    f.section(QStringLiteral("Users of the Role"));
    m_list = new QTreeWidget(this);
    m_list->setRootIsDecorated(false);
    m_list->setHeaderLabels(
        {QStringLiteral("Username"), QStringLiteral("Fullname"), QStringLiteral("Status")});
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->setMinimumSize(360, 260);
    f.field(m_list, QStringLiteral("ListView1"), QString());
    auto* submit = f.button(QStringLiteral("cmdSubmit"), QStringLiteral("&Save"));
    auto* cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("&Close"));
    resize(720, 440);

    connect(m_tree, &QTreeWidget::itemClicked, this, &frmUserRole::listUsers);
    connect(submit, &QPushButton::clicked, this, &frmUserRole::submit);
    connect(cancel, &QPushButton::clicked, this, &QWidget::close);
    load();
}

void frmUserRole::load()
{
    security::UserRole data(m_ctx);
    m_role->clear();
    m_tree->clear();
    m_shown = nullptr;
    auto* root = new QTreeWidgetItem(m_tree, {QStringLiteral("Available Roles")});
    for (const auto& r : data.LoadRoleID()) {
        m_role->addItem(listentry::make(r.name, QString::number(r.id)));
        auto* node = new QTreeWidgetItem(root, {QStringLiteral("%1 : %2").arg(r.id).arg(r.name)});
        node->setData(0, Qt::UserRole, QStringLiteral("%1abc").arg(r.id));
    }
    root->setExpanded(true);
    m_role->setCurrentIndex(-1);
    m_user->clear();
    m_user->addItems(data.LoadUsername());
    m_user->setCurrentIndex(-1);
}

void frmUserRole::listUsers(QTreeWidgetItem* node)
{
    m_list->clear();
    m_shown = node;
    // The id is read from the node's text, as the tree has always been read: an id of
    // more than three digits is cut to three.
    for (const auto& m :
         security::UserRole(m_ctx).UserRoleMatch(security::roleIdOfNode(node->text(0))))
        new QTreeWidgetItem(m_list, {m.username, m.fullname, m.status});
}

void frmUserRole::submit()
{
    if (m_role->currentIndex() < 0 || m_user->currentIndex() < 0) {
        m_ctx.prompter().inform(QStringLiteral("Please enter values into both fields above"),
                                windowTitle());
        return;
    }
    security::UserRole pair(m_ctx);
    pair.setRoleID(listentry::key(m_role->currentText()).toInt());
    pair.setUsername(m_user->currentText());
    const auto event = pair.Submit();
    const QString text = security::eventText(event);
    if (!text.isEmpty())
        m_ctx.prompter().inform(text, windowTitle());
    if (event == security::UserRole::Event::AllocationComplete && m_shown)
        listUsers(m_shown);
}

TOLMAR_REGISTER_SCREEN(frmUserRole)

}  // namespace tolmar
