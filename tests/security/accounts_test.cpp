// Accounts: the account screen, the password change, enabling and disabling from the
// Security menu, the rights checks, and what none of them may do: let a password out.
#include "mainwindow/mainwindowfixture.h"
#include "support/screenkit.h"

#include "core/command.h"
#include "core/serverlocation.h"
#include "platform/files.h"
#include "security/accounts.h"
#include "security/frmchngpwd.h"
#include "security/frmrole.h"
#include "security/frmusers.h"
#include "security/password.h"
#include "security/rights.h"
#include "security/roles.h"
#include "security/serverlog.h"

#include <QClipboard>
#include <QFile>
#include <QTemporaryFile>
#include <QTreeWidget>

#include <unistd.h>

using namespace tolmar;
using namespace tolmar::test;
using namespace tolmar::security;

namespace {

QString stored(const QString& typed) { return PasswordTable::builtIn().transform(typed).text; }

// Types each text into its box, as a person would.
void type(QWidget* s, std::initializer_list<std::pair<const char*, QString>> boxes)
{
    for (const auto& [name, text] : boxes) {
        edit(s, name)->clear();
        QTest::keyClicks(edit(s, name), text);
    }
}

void fillAccount(QWidget* s, const QString& user, const QString& password, int status)
{
    type(s, {{"txtUsername", user}, {"txtFullName", "ADAOBI NWOSU"}, {"txtPassword", password},
             {"txtConfirmPWD", password}});
    combo(s, "cboAcctStatus")->setCurrentIndex(status);
    pick(s, "cboBranchCode", QStringLiteral("YABA"));
}

void changePassword(QWidget* s, const QString& user, const QString& old, const QString& fresh,
                    const QString& confirm)
{
    type(s, {{"txtUser", user}, {"txtPass", old}, {"txtPassN", fresh}, {"txtPassC", confirm}});
    click(s, "OKButton");
}

class UserAccounts : public MainWindowTest {
protected:
    std::optional<db::Row> account(const QString& user) const
    {
        return ws->connect()->queryOne(QStringLiteral("SELECT * FROM Users WHERE Username = ?"),
                                       {user});
    }
    int audits(const QString& action) const
    {
        return ws->scalar(QStringLiteral("SELECT count(*) FROM AuditTrail WHERE userAction = ?"),
                          {action})
            .toInt();
    }
};

}  // namespace

TEST_P(UserAccounts, CreateStoresTheTransformAndAHashAndANodeShowsTheFirstOfItsName)
{
    desk->prompter.clear();
    frmUsers s(desk->ctx);
    s.show();
    const int before = test::child<QTreeWidget>(&s, "TreeView1")->topLevelItem(0)->childCount();
    auto* apply = test::child<QPushButton>(&s, "cmdApply");
    QTest::keyClicks(edit(&s, "txtUsername"), "   ");
    EXPECT_FALSE(apply->isEnabled());
    // Two accounts of one name: "amy" sorts first whatever node is clicked.
    for (const QString user : {QStringLiteral(" zed "), QStringLiteral("amy")}) {
        fillAccount(&s, user, QStringLiteral("Kel!a 9"), user == u"amy");
        EXPECT_TRUE(apply->isEnabled());
        click(&s, "cmdApply");
        EXPECT_EQ(desk->prompter.informs().mid(0, 2),
                  (QStringList{kInvalidCharacterText, "Account creation succeeded."}));
        EXPECT_FALSE(apply->isEnabled());
        EXPECT_EQ(s.focusWidget(), edit(&s, "txtUsername"));
        desk->prompter.clear();
    }
    const auto row = account(QStringLiteral("zed"));
    expectColumns(row, {"Fullname=ADAOBI NWOSU", "Password=" + stored("Kel!a9"), "SaltedPass=",
                        "AccountStatus=Enabled", "BranchCode=YABA",
                        "hospID=" + desk->ctx.session().hospID});
    EXPECT_TRUE(row->isNull(u"SaltedPass"));
    EXPECT_TRUE(hashMatches(row->text(u"PassHash"), QStringLiteral("Kel!a 9")));
    EXPECT_EQ(combo(&s, "cboAcctStatus")->currentIndex(), -1);  // the fields cleared

    ws->exec(QStringLiteral("UPDATE ApplicationUsers SET AccountStatus = 'DISABLED' WHERE "
                            "Username = 'amy'"));
    QTreeWidget* tree = test::child<QTreeWidget>(&s, "TreeView1");
    ASSERT_EQ(tree->topLevelItem(0)->childCount(), before + 2);
    const auto same = tree->findItems("ADAOBI NWOSU", Qt::MatchExactly | Qt::MatchRecursive);
    ASSERT_EQ(same.size(), 2);
    for (QTreeWidgetItem* node : same) {
        type(&s, {{"txtPassword", "typed"}});
        emit tree->itemClicked(node, 0);
        EXPECT_EQ(edit(&s, "txtUsername")->text(), QStringLiteral("amy"));
        EXPECT_EQ(combo(&s, "cboAcctStatus")->currentText(), QStringLiteral("Disabled"));
        EXPECT_TRUE(edit(&s, "txtPassword")->text().isEmpty());  // never the stored one
    }
    // The clinics screen deletes an account through Users.
    ws->exec(QStringLiteral("DELETE FROM Users WHERE Username = 'zed'"));
    EXPECT_FALSE(ws->connect()->queryOne(QStringLiteral("SELECT Username FROM ApplicationUsers "
                                                        "WHERE Username = 'zed'")));
}

TEST_P(UserAccounts, SaveChecksInOrderAndAUsernameTakenInAnyCaseWritesNothing)
{
    desk->prompter.clear();
    frmUsers s(desk->ctx);
    s.show();
    fillAccount(&s, QStringLiteral("demo"), QStringLiteral("pw"), -1);
    combo(&s, "cboBranchCode")->setCurrentIndex(-1);
    const struct {
        QString message;
        const char* focus;
        std::function<void()> fix;
    } steps[] = {
        {"Alert! Account Status is required.", "cboAcctStatus",
         [&] { combo(&s, "cboAcctStatus")->setCurrentIndex(1); }},
        {"Alert! Branch Code is required.", "cboBranchCode",
         [&] { pick(&s, "cboBranchCode", QStringLiteral("YABA")); }},
        {"Alert! Username already assigned to someone else.", "txtUsername",
         [&] { type(&s, {{"txtUsername", "  DeMo "}}); }},
        {"Alert! Username already assigned to someone else.", "txtUsername", [] {}},
    };
    const QVariant before = ws->scalar(QStringLiteral("SELECT count(*) FROM Users"));
    for (const auto& st : steps) {
        desk->prompter.clear();
        click(&s, "cmdApply");
        EXPECT_EQ(desk->prompter.informs(), QStringList{st.message});
        EXPECT_EQ(desk->prompter.last()->icon,
                  qstrcmp(st.focus, "txtUsername") == 0 ? Icon::Critical : Icon::Information);
        EXPECT_EQ(s.focusWidget()->objectName(), QString::fromLatin1(st.focus));
        st.fix();
    }
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM Users")), before);

    // Leaving the retyped password unmatched, and only then, sends the focus back.
    desk->prompter.clear();
    s.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&s));
    for (const char* confirm : {"pw", "pX"}) {
        type(&s, {{"txtConfirmPWD", QString::fromLatin1(confirm)}});
        edit(&s, "txtConfirmPWD")->setFocus(Qt::TabFocusReason);
        combo(&s, "cboAcctStatus")->setFocus(Qt::TabFocusReason);
    }
    EXPECT_EQ(desk->prompter.informs(), QStringList{kUnmatchedPasswordText});
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Critical);
    EXPECT_EQ(QApplication::focusWidget(), edit(&s, "txtConfirmPWD"));
}

TEST_P(UserAccounts, TheInstallationsTableIsUsedAndABadOneChangesNoPassword)
{
    QString backwards;  // "abc" becomes ">=<", "xyz" "'&%"
    for (char16_t c = 126; c >= 33; --c)
        backwards += QChar(c);
    ws->exec(QStringLiteral("UPDATE ApplicationUsers SET Password = '>=<' WHERE Username = 'demo'"));
    frmChngPwd change(desk->ctx);
    for (const QString& table : {QStringLiteral("~}|") + QString(91, u'!'), backwards}) {
        const bool good = table == backwards;
        ws->writeFile(kPasswordTableFile, {table});
        desk->prompter.clear();
        changePassword(&change, QStringLiteral("demo"), QStringLiteral("abc"),
                       QStringLiteral("xyz"), QStringLiteral("xyz"));
        EXPECT_EQ(desk->prompter.informs().size(), 1);
        EXPECT_EQ(desk->prompter.lastText().contains(u"is not a permutation"), !good);
        EXPECT_EQ(account(QStringLiteral("demo"))->text(u"Password"), good ? "'&%" : ">=<");
    }
}

TEST_P(UserAccounts, APasswordChangeChecksInOrderAuditsAWrongOldOneAndReplacesTheHash)
{
    ws->exec(QStringLiteral("UPDATE ApplicationUsers SET Password = ?, SaltedPass = 'SALT' "
                            "WHERE Username = 'demo'"),
             {stored(QStringLiteral("Old#1"))});
    desk->prompter.clear();
    frmChngPwd s(desk->ctx);
    s.show();
    EXPECT_EQ(edit(&s, "txtUser")->text(), QStringLiteral("demo"));
    EXPECT_EQ(edit(&s, "txtPassN")->echoMode(), QLineEdit::Password);
    const struct {
        const char* user;
        const char* old;
        const char* fresh;
        const char* confirm;
        QString message;
        const char* focus;
        int failedAudits;
    } cases[] = {
        {" ", "a", "b", "b", "Alert! Username can't be empty.", "txtUser", 0},
        {"demo", "  ", "b", "b", "Alert! Old Account password can't be empty.", "txtPass", 0},
        {"demo", "a", " ", " ", "Alert! New Password can't be empty.", "txtPassN", 0},
        {"demo", "a", "b", "c", kUnmatchedPasswordText, "txtPassC", 0},
        {"demo", "old#1", "New#2", "New#2", kUserNotFoundText, "txtPass", 1},
        {"nobody", "Old#1", "New#2", "New#2", kUserNotFoundText, "txtPass", 2},
    };
    for (const auto& c : cases) {
        desk->prompter.clear();
        changePassword(&s, c.user, c.old, c.fresh, c.confirm);
        EXPECT_EQ(desk->prompter.informs(), QStringList{c.message}) << c.focus;
        EXPECT_EQ(s.focusWidget()->objectName(), QString::fromLatin1(c.focus));
        EXPECT_EQ(audits(QStringLiteral("Change Password Attempt Failed ")), c.failedAudits);
    }
    EXPECT_EQ(account(QStringLiteral("demo"))->text(u"Password"), stored("Old#1"));

    desk->prompter.clear();
    changePassword(&s, QStringLiteral("DEMO"), QStringLiteral("Old#1"), QStringLiteral("New#2 x"),
                   QStringLiteral("New#2 x"));
    EXPECT_EQ(desk->prompter.informs(),
              (QStringList{kInvalidCharacterText, "Congrats! User Account's Password changed."}));
    const auto row = account(QStringLiteral("demo"));
    EXPECT_EQ(row->text(u"Password"), stored(QStringLiteral("New#2x")));
    EXPECT_TRUE(row->isNull(u"SaltedPass"));
    EXPECT_TRUE(hashMatches(row->text(u"PassHash"), QStringLiteral("New#2 x")));
    EXPECT_FALSE(hashMatches(row->text(u"PassHash"), QStringLiteral("Old#1")));
    EXPECT_EQ(audits(QStringLiteral("Change Password ")), 1);
    for (const char* name : {"txtUser", "txtPass", "txtPassN", "txtPassC"})
        EXPECT_TRUE(edit(&s, name)->text().isEmpty()) << name;
}

TEST_P(UserAccounts, TheSecurityMenuEnablesAndDisablesWithoutTouchingARunningSession)
{
    open();
    const struct {
        const char* entry;
        std::optional<QString> answer;
        QString message;  // empty: nothing said
        Icon icon;
        const char* user;
        const char* status;
    } cases[] = {
        {"mnuAcctDisable", std::nullopt, "", Icon::None, "cashier", "Enabled"},
        {"mnuAcctDisable", "  ", "Alert! Username can't be empty.", Icon::Warning, "cashier",
         "Enabled"},
        {"mnuAcctEnable", "nobody", kUserNotFoundText, Icon::Information, "cashier", "Enabled"},
        {"mnuAcctDisable", " CASHIER ", kAccountDisabledText, Icon::Information, "cashier",
         "Disabled"},
        {"mnuAcctEnable", "cashier", kAccountEnabledText, Icon::Information, "cashier", "Enabled"},
        // The desk's own account: the run goes on, and so does a reload of its defaults.
        {"mnuAcctDisable", "demo", kAccountDisabledText, Icon::Information, "demo", "Disabled"},
    };
    for (const auto& c : cases) {
        desk->prompter.clear();
        desk->prompter.answerInput(c.answer);
        action(QString::fromLatin1(c.entry))->trigger();
        EXPECT_EQ(desk->prompter.informs().join(""), c.message) << c.entry;
        if (!c.message.isEmpty())
            EXPECT_EQ(desk->prompter.last()->icon, c.icon);
        EXPECT_EQ(account(c.user)->text(u"AccountStatus"), QString::fromLatin1(c.status));
    }
    desk->prompter.clear();
    action(QStringLiteral("mnuRDef"))->trigger();
    EXPECT_TRUE(desk->endedWith.empty());
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(desk->ctx.session().fullName, QStringLiteral("ADAEZE OKAFOR"));
}

TEST_P(UserAccounts, RightsAreAskedOfTheUsersRolesWithoutRegardToCase)
{
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"demo", "records", true},      {"DEMO", "Management", true}, {"cashier", "RECORDS", false},
        {"cashier", "accounts", true}, {"nobody", "RECORDS", false}};
    for (const auto& [user, role, holds] : cases)
        EXPECT_EQ(holdsRole(desk->ctx.db(), user, role), holds) << user << role;
    // The location switch refuses by itself, whoever opened the screen that asks for it.
    desk->ctx.session().userName = QStringLiteral("cashier");
    EXPECT_THROW(ServerLocations(desk->ctx).switchTo(QStringLiteral("10.9.9.9")), CheckFailed);
    EXPECT_NE(files::readLines(ws->homePath("made.sys"))->first(), QStringLiteral("SVR=10.9.9.9"));
}

TEST_P(UserAccounts, NoPasswordTypedOrStoredShowsAnywhereElse)
{
    const QString first = "Qx7!Leak pw", second = "Wv3$Leak2", wrong = "Rt5%Leak3";
    QTemporaryFile err;
    ASSERT_TRUE(err.open());
    std::fflush(stderr);
    const int saved = dup(2);
    dup2(err.handle(), 2);
    {
        frmUsers users(desk->ctx);
        fillAccount(&users, QStringLiteral("leaky"), first, 0);
        QApplication::clipboard()->clear();
        edit(&users, "txtPassword")->selectAll();
        edit(&users, "txtPassword")->copy();
        EXPECT_FALSE(QApplication::clipboard()->text().contains(u"Leak"));
        click(&users, "cmdApply");
        frmChngPwd change(desk->ctx);
        changePassword(&change, QStringLiteral("leaky"), wrong, second, second);
        changePassword(&change, QStringLiteral("leaky"), first, second, second);
        EXPECT_EQ(desk->prompter.lastText(), "Congrats! User Account's Password changed.");
        // Both logs written: an activity, and a statement that fails.
        frmRole role(desk->ctx);
        type(&role, {{"txtRID", "88"}, {"txtRName", "AUDIT"}});
        click(&role, "cmdSubmit");
        ws->connect()->execScript(QStringLiteral("ALTER TABLE UserRoles RENAME TO Gone"));
        UserRole pair(desk->ctx);
        pair.setRoleID(88);
        pair.setUsername(QStringLiteral("leaky"));
        EXPECT_EQ(pair.Submit(), UserRole::Event::Failed);
        std::fprintf(stderr, "stderr captured\n");
        std::fflush(stderr);
    }
    dup2(saved, 2);
    ::close(saved);
    err.seek(0);  // the descriptor stderr shared has moved the offset to the end
    QStringList places{QString::fromUtf8(err.readAll())};
    EXPECT_TRUE(places.first().contains(u"stderr captured"));
    for (const QString& f : {kActivityLogFile, kErrorLogFile}) {
        QFile log(ws->homePath(f));
        ASSERT_TRUE(log.open(QIODevice::ReadOnly)) << f.toStdString();
        places << QString::fromUtf8(log.readAll());
    }
    for (const char* table : {"AuditTrail", "UserActivities"})
        for (const db::Row& r : ws->connect()->query(QStringLiteral("SELECT * FROM ") + table).rows)
            for (const QVariant& v : r.values())
                places << db::variantText(v);
    for (const auto& m : desk->prompter.messages())
        places << m.text + m.title;
    EXPECT_EQ(audits(QStringLiteral("Change Password Attempt Failed ")), 1);
    const QString all = places.join(QLatin1Char('\n'));
    for (const QString& secret : {first, second, wrong})
        for (const QString& form : {secret, stored(secret)})
            EXPECT_FALSE(all.contains(form.left(6))) << form.toStdString();
}

TOLMAR_INSTANTIATE_BACKENDS(UserAccounts);
