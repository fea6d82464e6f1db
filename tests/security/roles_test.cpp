// Roles and the pairs of users and roles: the two screens, the classes' outcomes, and the
// two text logs beside made.sys.
#include "support/screenkit.h"
#include "support/workspace.h"

#include "security/frmrole.h"
#include "security/frmuserrole.h"
#include "security/roles.h"
#include "security/serverlog.h"

#include <QApplication>
#include <QEnterEvent>
#include <QFile>
#include <QStatusBar>
#include <QTreeWidget>

using namespace tolmar;
using namespace tolmar::test;
using namespace tolmar::security;

namespace {

class Roles : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
        desk->prompter.clear();
    }
    QStringList logLines(const QString& file) const
    {
        QFile f(ws->homePath(file));
        if (!f.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    QString roleName(int id) const
    {
        return ws->scalar(QStringLiteral("SELECT LoginRole FROM Roles WHERE RoleID = ?"), {id})
            .toString();
    }
    int pairs() const { return ws->scalar(QStringLiteral("SELECT count(*) FROM UserRoles")).toInt(); }
    static QTreeWidgetItem* node(QWidget* s, const QString& text)
    {
        const auto found =
            child<QTreeWidget>(s, "TreeView1")->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
        return found.isEmpty() ? nullptr : found.first();
    }
    static QStringList listed(QWidget* s)
    {
        QStringList out;
        auto* list = child<QTreeWidget>(s, "ListView1");
        for (int i = 0; i < list->topLevelItemCount(); ++i) {
            const QTreeWidgetItem* it = list->topLevelItem(i);
            out << QStringList{it->text(0), it->text(1), it->text(2)}.join(QLatin1Char('/'));
        }
        return out;
    }
};

}  // namespace

TEST_P(Roles, TheRoleIdTakesNineDigitsOnlyAndSaveWaitsForBothFields)
{
    frmRole s(desk->ctx);
    s.show();
    QLineEdit* id = edit(&s, "txtRID");
    auto* submit = child<QPushButton>(&s, "cmdSubmit");
    auto* status = child<QStatusBar>(&s, "StatusBar1");
    QTest::keyClicks(id, "1a2");
    EXPECT_EQ(id->text(), QStringLiteral("12"));
    EXPECT_EQ(status->currentMessage(), QStringLiteral("Numeric entries expected here."));
    QTest::keyClicks(id, "34567890123");
    EXPECT_EQ(id->text(), QStringLiteral("123456789"));
    EXPECT_FALSE(submit->isEnabled());
    QTest::keyClicks(edit(&s, "txtRName"), "  ");
    EXPECT_FALSE(submit->isEnabled());
    QTest::keyClicks(edit(&s, "txtRName"), "X");
    EXPECT_TRUE(submit->isEnabled());
    id->clear();
    EXPECT_FALSE(submit->isEnabled());
}

TEST_P(Roles, TheStatusBarSaysWhatTheFormWaitsFor)
{
    frmRole s(desk->ctx);
    s.show();
    s.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&s));
    const struct {
        const char* control;
        bool hover;
        QString text;
    } cases[] = {
        {"txtRID", false, "Accepting RoleID from demo..."},
        {"txtRName", false, "Accepting Role Name from demo..."},
        {"txtRID", true, "Waiting for demo to key in RoleID"},
        {"txtRName", true, "Waiting to Accept new Role Name from demo..."},
        {"cmdSubmit", true, "Ready to Submit New Role Profile."},
        {"cmdCancel", true, "Click here to unload the form."},
    };
    for (const auto& c : cases) {
        QWidget* w = s.findChild<QWidget*>(QString::fromLatin1(c.control));
        ASSERT_NE(w, nullptr) << c.control;
        if (c.hover) {
            QEnterEvent enter(QPointF(2, 2), QPointF(2, 2), QPointF(2, 2));
            QApplication::sendEvent(w, &enter);
        } else {
            w->setFocus(Qt::TabFocusReason);
        }
        EXPECT_EQ(child<QStatusBar>(&s, "StatusBar1")->currentMessage(), c.text) << c.control;
    }
}

TEST_P(Roles, ANewRoleIsSavedAndAnExistingIdChangesNothingButTheLog)
{
    ASSERT_FALSE(QFile::exists(ws->homePath(kActivityLogFile)));
    frmRole s(desk->ctx);
    s.show();
    const int rows = child<QTableView>(&s, "DataGrid1")->model()->rowCount();
    const struct {
        const char* id;
        const char* name;
        int roleID;
        const char* stands;
        QString logged;
    } cases[] = {
        {"77", " RADIOLOGY ", 77, "RADIOLOGY", "Successfully created a new Role  77"},
        {"1", "SOMETHING", 1, "RECORDS", "Attempted creating a RoleID 1 that already exists."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.id);
        QTest::keyClicks(edit(&s, "txtRID"), c.id);
        QTest::keyClicks(edit(&s, "txtRName"), c.name);
        click(&s, "cmdSubmit");
        EXPECT_TRUE(desk->prompter.messages().empty());
        EXPECT_EQ(roleName(c.roleID), QString::fromLatin1(c.stands));
        EXPECT_TRUE(edit(&s, "txtRID")->text().isEmpty());
        EXPECT_TRUE(edit(&s, "txtRName")->text().isEmpty());
        const QStringList fields = logLines(kActivityLogFile).last().split(QStringLiteral("  |  "));
        ASSERT_EQ(fields.size(), 4);
        EXPECT_EQ(fields.at(1), QStringLiteral("demo"));
        EXPECT_EQ(fields.at(3), c.logged);
    }
    EXPECT_EQ(child<QTableView>(&s, "DataGrid1")->model()->rowCount(), rows + 1);
    EXPECT_TRUE(logLines(kErrorLogFile).isEmpty());
}

TEST_P(Roles, ARoleStillHeldIsNotDeleted)
{
    const struct {
        qint32 id;
        Role::Outcome outcome;
        QString logged;
        bool stays;
    } cases[] = {
        {1, Role::Outcome::HasUsers,
         "Attempted deleting the Role for 1that would lead to orphan User Accounts.", true},
        {4, Role::Outcome::Deleted, "Successfully deleted the Role for 4", false},
        {999, Role::Outcome::NotFound, "Attempted to delete a non existing Role 999", false},
    };
    for (const auto& c : cases) {
        Role role(desk->ctx);
        role.setRoleID(c.id);
        EXPECT_EQ(role.Delete(), c.outcome) << c.id;
        EXPECT_TRUE(logLines(kActivityLogFile).last().endsWith(c.logged)) << c.id;
        EXPECT_EQ(!roleName(c.id).isEmpty(), c.stays) << c.id;
    }
}

TEST_P(Roles, AllocationTellsEachOutcome)
{
    frmUserRole s(desk->ctx);
    s.show();
    EXPECT_TRUE(items(combo(&s, "cboRoleID")).contains(QStringLiteral("RECORDS [1]")));
    EXPECT_EQ(items(combo(&s, "cboUsername")).mid(0, 2),
              (QStringList{QStringLiteral("cashier"), QStringLiteral("demo")}));
    QTreeWidgetItem* records = node(&s, QStringLiteral("1 : RECORDS"));
    ASSERT_NE(records, nullptr);
    EXPECT_EQ(records->parent()->text(0), QStringLiteral("Available Roles"));
    EXPECT_EQ(records->data(0, Qt::UserRole).toString(), QStringLiteral("1abc"));

    const int before = pairs();
    const struct {
        const char* role;  // nullptr: nothing chosen
        const char* user;
        QString message;
    } cases[] = {
        {nullptr, "demo", "Please enter values into both fields above"},
        {"RECORDS", nullptr, "Please enter values into both fields above"},
        {"RECORDS", "demo", "Submission Failed! Matching Record Exists."},
        {"PHARMACY", "cashier", "Submission Successful."},
    };
    for (const auto& c : cases) {
        desk->prompter.clear();
        combo(&s, "cboRoleID")->setCurrentIndex(-1);
        combo(&s, "cboUsername")->setCurrentIndex(-1);
        if (c.role)
            pick(&s, "cboRoleID", QString::fromLatin1(c.role));
        if (c.user)
            pick(&s, "cboUsername", QString::fromLatin1(c.user));
        click(&s, "cmdSubmit");
        EXPECT_EQ(desk->prompter.informs(), QStringList{c.message});
    }
    EXPECT_EQ(pairs(), before + 1);

    // What the screen never sends, the class still refuses.
    const struct {
        qint32 id;
        const char* user;
        UserRole::Event event;
        QString text;
    } events[] = {
        {0, "demo", UserRole::Event::EmptyRoleID, "RoleID cannot be empty. Matching Record Exists."},
        {1, " ", UserRole::Event::EmptyUsername, "Username cannot be empty."},
        {999, "demo", UserRole::Event::InvalidRoleID, "Invalid RoleID."},
        {1, "ghost", UserRole::Event::InvalidUsername, "Invalid Username."},
        {3, "DEMO", UserRole::Event::AllocationComplete, "Submission Successful."},
    };
    for (const auto& e : events) {
        UserRole pair(desk->ctx);
        pair.setRoleID(e.id);
        pair.setUsername(QString::fromLatin1(e.user));
        const auto got = pair.Submit();
        EXPECT_EQ(got, e.event) << e.id << e.user;
        EXPECT_EQ(eventText(got), e.text);
    }
    // The pair names the account as stored, so vwUsers finds it.
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM vwUsers WHERE Username = 'demo' "
                                        "AND LoginRole = 'ACCOUNTS'"))
                  .toInt(),
              1);
}

TEST_P(Roles, TheTreePickIsCutToThreeDigits)
{
    ws->exec(QStringLiteral("INSERT INTO Roles (RoleID, LoginRole) VALUES (123, 'LAB'), "
                            "(1234, 'XRAY')"));
    ws->exec(QStringLiteral("INSERT INTO UserRoles (RoleID, Username) VALUES (123, 'manager'), "
                            "(1234, 'cashier')"));
    frmUserRole s(desk->ctx);
    s.show();
    auto* tree = child<QTreeWidget>(&s, "TreeView1");
    const struct {
        const char* node;
        QStringList users;
    } cases[] = {
        {"1234 : XRAY", {"manager/TUNDE BALOGUN/Enabled"}},
        {"1 : RECORDS", {"demo/ADAEZE OKAFOR/Enabled", "manager/TUNDE BALOGUN/Enabled"}},
        {"Available Roles", {}},
    };
    for (const auto& c : cases) {
        QTreeWidgetItem* n = node(&s, QString::fromLatin1(c.node));
        ASSERT_NE(n, nullptr) << c.node;
        emit tree->itemClicked(n, 0);
        EXPECT_EQ(listed(&s), c.users) << c.node;
    }
}

TEST_P(Roles, ADatabaseErrorGoesToTheErrorLogAndTheScreenStays)
{
    frmUserRole s(desk->ctx);
    s.show();
    pick(&s, "cboRoleID", QStringLiteral("PHARMACY"));
    pick(&s, "cboUsername", QStringLiteral("cashier"));
    ws->connect()->execScript(QStringLiteral("ALTER TABLE UserRoles RENAME TO UserRolesAway"));
    click(&s, "cmdSubmit");
    EXPECT_TRUE(desk->prompter.messages().empty());
    const QStringList lines = logLines(kErrorLogFile);
    ASSERT_EQ(lines.size(), 1);
    const QStringList fields = lines.first().split(QStringLiteral("  |  "));
    ASSERT_EQ(fields.size(), 4);
    EXPECT_TRUE(fields.at(1).contains(u"userroles", Qt::CaseInsensitive)) << fields.at(1).toStdString();
    EXPECT_EQ(fields.at(2), QStringLiteral("HOSPITAL"));
    EXPECT_EQ(combo(&s, "cboUsername")->currentText(), QStringLiteral("cashier"));
    EXPECT_TRUE(logLines(kActivityLogFile).isEmpty());
}

TOLMAR_INSTANTIATE_BACKENDS(Roles);
