// Roles and the pairs of users and roles: the two screens, the classes' outcomes, and the
// two text logs beside made.sys.
#include "support/screenkit.h"
#include "support/workspace.h"

#include "security/frmrole.h"
#include "security/frmuserrole.h"
#include "security/roles.h"
#include "security/serverlog.h"

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
};

}  // namespace

TEST_P(Roles, ANewRoleIsSavedAndAnExistingIdChangesNothingButTheLog)
{
    ASSERT_FALSE(QFile::exists(ws->homePath(kActivityLogFile)));
    frmRole s(desk->ctx);
    s.show();
    QLineEdit* id = edit(&s, "txtRID");
    QTest::keyClicks(id, "7a7");
    EXPECT_EQ(child<QStatusBar>(&s, "StatusBar1")->currentMessage(),
              QStringLiteral("Numeric entries expected here."));
    QTest::keyClicks(id, "1234567890");
    EXPECT_EQ(id->text(), QStringLiteral("771234567"));  // nine digits at most
    id->clear();
    const int rows = child<QTableView>(&s, "DataGrid1")->model()->rowCount();
    const struct {
        const char* id;
        const char* name;
        const char* stands;
        QString logged;
    } cases[] = {
        {"77", " RADIOLOGY ", "RADIOLOGY", "Successfully created a new Role  77"},
        {"1", "SOMETHING", "RECORDS", "Attempted creating a RoleID 1 that already exists."},
    };
    for (const auto& c : cases) {
        QTest::keyClicks(id, c.id);
        EXPECT_FALSE(child<QPushButton>(&s, "cmdSubmit")->isEnabled());
        QTest::keyClicks(edit(&s, "txtRName"), c.name);
        click(&s, "cmdSubmit");
        EXPECT_TRUE(desk->prompter.messages().empty());
        EXPECT_EQ(roleName(QString::fromLatin1(c.id).toInt()), QString::fromLatin1(c.stands));
        EXPECT_TRUE(id->text().isEmpty() && edit(&s, "txtRName")->text().isEmpty());
        const QStringList fields = logLines(kActivityLogFile).last().split(QStringLiteral("  |  "));
        EXPECT_EQ(fields.mid(1), (QStringList{"demo", desk->ctx.session().computerName, c.logged}));
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

TEST_P(Roles, TheTreeListsARolesUsersAndAllocationTellsEachOutcome)
{
    ws->exec(QStringLiteral("INSERT INTO Roles (RoleID, LoginRole) VALUES (123, 'LAB'), "
                            "(1234, 'XRAY')"));
    ws->exec(QStringLiteral("INSERT INTO UserRoles (RoleID, Username) VALUES (123, 'manager'), "
                            "(1234, 'cashier')"));
    frmUserRole s(desk->ctx);
    s.show();
    EXPECT_EQ(items(combo(&s, "cboUsername")).mid(0, 2), (QStringList{"cashier", "demo"}));
    auto* tree = child<QTreeWidget>(&s, "TreeView1");
    auto* list = child<QTreeWidget>(&s, "ListView1");
    // A pick reads the first three characters of the node: "1234 : XRAY" lists role 123.
    const std::pair<const char*, QStringList> picks[] = {
        {"1234 : XRAY", {"manager TUNDE BALOGUN Enabled"}},
        {"1 : RECORDS", {"demo ADAEZE OKAFOR Enabled", "manager TUNDE BALOGUN Enabled"}},
        {"Available Roles", {}},
    };
    for (const auto& [text, users] : picks) {
        const auto n = tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
        ASSERT_EQ(n.size(), 1) << text;
        emit tree->itemClicked(n.first(), 0);
        QStringList got;
        for (int i = 0; i < list->topLevelItemCount(); ++i)
            for (int col = 0; col < 3; ++col)
                got << list->topLevelItem(i)->text(col);
        EXPECT_EQ(got.join(' '), users.join(' ')) << text;
    }
    EXPECT_EQ(tree->topLevelItem(0)->child(0)->data(0, Qt::UserRole), QStringLiteral("1abc"));
    const auto pairs = [&] { return ws->scalar(QStringLiteral("SELECT count(*) FROM UserRoles")); };
    const int before = pairs().toInt();
    const struct {
        const char* role;  // nullptr: nothing chosen
        const char* user;
        QString message;
    } cases[] = {
        {nullptr, "demo", "Please enter values into both fields above"},
        {"RECORDS [1]", nullptr, "Please enter values into both fields above"},
        {"RECORDS [1]", "demo", "Submission Failed! Matching Record Exists."},
        {"PHARMACY [4]", "cashier", "Submission Successful."},
    };
    for (const auto& c : cases) {
        desk->prompter.clear();
        for (const char* box : {"cboRoleID", "cboUsername"})
            combo(&s, box)->setCurrentIndex(-1);
        if (c.role)
            pick(&s, "cboRoleID", QString::fromLatin1(c.role));
        if (c.user)
            pick(&s, "cboUsername", QString::fromLatin1(c.user));
        click(&s, "cmdSubmit");
        EXPECT_EQ(desk->prompter.informs(), QStringList{c.message});
    }
    EXPECT_EQ(pairs().toInt(), before + 1);

    // What the screen never sends, the class still refuses.
    const struct {
        qint32 id;
        const char* user;
        QString text;
    } events[] = {
        {0, "demo", "RoleID cannot be empty. Matching Record Exists."},
        {1, " ", "Username cannot be empty."},
        {999, "demo", "Invalid RoleID."},
        {1, "ghost", "Invalid Username."},
        {3, "DEMO", "Submission Successful."},
    };
    for (const auto& e : events) {
        UserRole pair(desk->ctx);
        pair.setRoleID(e.id);
        pair.setUsername(QString::fromLatin1(e.user));
        EXPECT_EQ(eventText(pair.Submit()), e.text) << e.id << e.user;
    }
    // The pair names the account as stored, so vwUsers finds it.
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT Username FROM vwUsers WHERE LoginRole = ?"),
                         {QStringLiteral("ACCOUNTS")})
                  .toString(),
              QStringLiteral("cashier"));
    EXPECT_EQ(pairs().toInt(), before + 2);
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
    EXPECT_TRUE(fields.at(1).contains(u"userroles", Qt::CaseInsensitive)) << lines.first().toStdString();
    EXPECT_EQ(fields.at(2), QStringLiteral("HOSPITAL"));
    EXPECT_EQ(combo(&s, "cboUsername")->currentText(), QStringLiteral("cashier"));
}

TOLMAR_INSTANTIATE_BACKENDS(Roles);
