// Accounts: the account screen, the password change, enabling and disabling from the
// Security menu, the rights checks, and the one thing none of them may do: let a password
// out.
#include "mainwindow/mainwindowfixture.h"
#include "support/screenkit.h"

#include "core/command.h"
#include "core/serverlocation.h"
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

#include <cstdio>
#include <unistd.h>

using namespace tolmar;
using namespace tolmar::test;
using namespace tolmar::security;

namespace {

// The fixture's own child() finds the main window's controls; this one a screen's.
template <typename T>
T* ctl(QWidget* w, const char* name)
{
    return tolmar::test::child<T>(w, name);
}

class UserAccounts : public MainWindowTest {
protected:
    void SetUp() override
    {
        MainWindowTest::SetUp();
        desk->prompter.clear();
    }
    std::optional<db::Row> account(const QString& user) const
    {
        return ws->connect()->queryOne(QStringLiteral("SELECT * FROM Users WHERE Username = ?"),
                                       {user});
    }
    static QString stored(const QString& typed)
    {
        return PasswordTable::builtIn().transform(typed).text;
    }
    void setPassword(const QString& user, const QString& typed) const
    {
        ws->exec(QStringLiteral("UPDATE ApplicationUsers SET Password = ?, SaltedPass = ?, "
                                "PassHash = NULL WHERE Username = ?"),
                 {stored(typed), QStringLiteral("OLDSALT"), user});
    }
    int audits(const QString& action) const
    {
        return ws->scalar(QStringLiteral("SELECT count(*) FROM AuditTrail WHERE userAction = ?"),
                          {action})
            .toInt();
    }
    static void type(QWidget* s, const char* name, const QString& text)
    {
        QLineEdit* e = edit(s, name);
        e->clear();
        QTest::keyClicks(e, text);
    }
    static void fillAccount(frmUsers& s, const QString& user, const QString& password,
                            const QString& status, const QString& branch)
    {
        type(&s, "txtUsername", user);
        type(&s, "txtFullName", QStringLiteral("ADAOBI NWOSU"));
        type(&s, "txtPassword", password);
        type(&s, "txtConfirmPWD", password);
        combo(&s, "cboAcctStatus")->setCurrentIndex(combo(&s, "cboAcctStatus")->findText(status));
        combo(&s, "cboBranchCode")->setCurrentIndex(combo(&s, "cboBranchCode")->findText(branch));
    }
    static QStringList nodes(QWidget* s)
    {
        QStringList out;
        QTreeWidgetItem* root = ctl<QTreeWidget>(s, "TreeView1")->topLevelItem(0);
        for (int i = 0; root && i < root->childCount(); ++i)
            out << root->child(i)->text(0);
        return out;
    }
    static void changePassword(frmChngPwd& s, const QString& user, const QString& old,
                               const QString& fresh, const QString& confirm)
    {
        type(&s, "txtUser", user);
        type(&s, "txtPass", old);
        type(&s, "txtPassN", fresh);
        type(&s, "txtPassC", confirm);
        click(&s, "OKButton");
    }
};

}  // namespace

TEST_P(UserAccounts, CreateStoresTheTransformAndAHashNeverTheTypedText)
{
    frmUsers s(desk->ctx);
    s.show();
    QTreeWidget* tree = ctl<QTreeWidget>(&s, "TreeView1");
    EXPECT_EQ(tree->topLevelItem(0)->text(0), desk->ctx.session().hospitalName);
    EXPECT_EQ(nodes(&s).size(),
              ws->scalar(QStringLiteral("SELECT count(*) FROM ApplicationUsers")).toInt());
    EXPECT_EQ(items(combo(&s, "cboAcctStatus")),
              (QStringList{QStringLiteral("Enabled"), QStringLiteral("Disabled")}));
    EXPECT_EQ(items(combo(&s, "cboBranchCode")).first(), QStringLiteral("(GENERAL)"));
    auto* apply = ctl<QPushButton>(&s, "cmdApply");
    EXPECT_FALSE(apply->isEnabled());
    QTest::keyClicks(edit(&s, "txtUsername"), "   ");
    EXPECT_FALSE(apply->isEnabled());

    fillAccount(s, QStringLiteral("  adaobi "), QStringLiteral("Kel!a 9"),
                QStringLiteral("Enabled"), QStringLiteral("IKEJA"));
    EXPECT_TRUE(apply->isEnabled());
    click(&s, "cmdApply");
    EXPECT_EQ(desk->prompter.informs(), (QStringList{kInvalidCharacterText,
                                                     QStringLiteral("Account creation succeeded.")}));
    const auto row = account(QStringLiteral("adaobi"));
    expectColumns(row, {QStringLiteral("Fullname=ADAOBI NWOSU"),
                        QStringLiteral("Password=") + stored(QStringLiteral("Kel!a9")),
                        QStringLiteral("SaltedPass="), QStringLiteral("AccountStatus=Enabled"),
                        QStringLiteral("BranchCode=IKEJA"),
                        QStringLiteral("hospID=") + desk->ctx.session().hospID});
    EXPECT_TRUE(row->isNull(u"SaltedPass"));
    EXPECT_TRUE(hashMatches(row->text(u"PassHash"), QStringLiteral("Kel!a 9")));
    EXPECT_TRUE(nodes(&s).contains(QStringLiteral("ADAOBI NWOSU")));
    for (const char* name : {"txtUsername", "txtFullName", "txtPassword", "txtConfirmPWD"})
        EXPECT_TRUE(edit(&s, name)->text().isEmpty()) << name;
    EXPECT_EQ(combo(&s, "cboAcctStatus")->currentIndex(), -1);
    EXPECT_FALSE(apply->isEnabled());
    EXPECT_EQ(s.focusWidget(), edit(&s, "txtUsername"));
}

TEST_P(UserAccounts, SaveChecksInOrderAndAUsernameTakenInAnyCaseWritesNothing)
{
    frmUsers s(desk->ctx);
    s.show();
    fillAccount(s, QStringLiteral("demo"), QStringLiteral("pw"), QString(), QString());
    struct Step {
        QString message;
        const char* focus;
        Icon icon;
        std::function<void()> fix;
    };
    const Step steps[] = {
        {"Alert! Account Status is required.", "cboAcctStatus", Icon::Information,
         [&] { combo(&s, "cboAcctStatus")->setCurrentIndex(1); }},
        {"Alert! Branch Code is required.", "cboBranchCode", Icon::Information,
         [&] { pick(&s, "cboBranchCode", QStringLiteral("YABA")); }},
        {"Alert! Username already assigned to someone else.", "txtUsername", Icon::Critical,
         [&] { type(&s, "txtUsername", QStringLiteral("  DeMo ")); }},
        {"Alert! Username already assigned to someone else.", "txtUsername", Icon::Critical,
         [] {}},
    };
    const int before = ws->scalar(QStringLiteral("SELECT count(*) FROM Users")).toInt();
    for (const Step& st : steps) {
        SCOPED_TRACE(st.message.toStdString());
        desk->prompter.clear();
        click(&s, "cmdApply");
        ASSERT_EQ(desk->prompter.messages().size(), 1u);
        EXPECT_EQ(desk->prompter.lastText(), st.message);
        EXPECT_EQ(desk->prompter.last()->icon, st.icon);
        EXPECT_EQ(s.focusWidget()->objectName(), QString::fromLatin1(st.focus));
        st.fix();
    }
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM Users")).toInt(), before);
    EXPECT_EQ(account(QStringLiteral("demo"))->text(u"AccountStatus"), QStringLiteral("Enabled"));
}

TEST_P(UserAccounts, LeavingTheRetypedPasswordUnmatchedSendsTheFocusBack)
{
    frmUsers s(desk->ctx);
    s.show();
    s.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&s));
    type(&s, "txtPassword", QStringLiteral("abc"));
    type(&s, "txtConfirmPWD", QStringLiteral("abd"));
    edit(&s, "txtConfirmPWD")->setFocus(Qt::TabFocusReason);
    combo(&s, "cboAcctStatus")->setFocus(Qt::TabFocusReason);
    ASSERT_EQ(desk->prompter.messages().size(), 1u);
    EXPECT_EQ(desk->prompter.lastText(), kUnmatchedPasswordText);
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Critical);
    EXPECT_EQ(QApplication::focusWidget(), edit(&s, "txtConfirmPWD"));

    // Reset needs no matching password; a matching one leaves quietly.
    ctl<QPushButton>(&s, "cmdRefresh")->setFocus(Qt::TabFocusReason);
    type(&s, "txtPassword", QStringLiteral("abc"));
    type(&s, "txtConfirmPWD", QStringLiteral("abc"));
    edit(&s, "txtConfirmPWD")->setFocus(Qt::TabFocusReason);
    edit(&s, "txtUsername")->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(desk->prompter.messages().size(), 1u);
    EXPECT_EQ(QApplication::focusWidget(), edit(&s, "txtUsername"));
}

TEST_P(UserAccounts, ANodeShowsTheFirstAccountOfItsNameButNoPassword)
{
    const struct {
        const char* user;
        const char* status;
        const char* branch;
    } rows[] = {{"zed", "Enabled", "LEKKI"}, {"amy", "DISABLED", "YABA"}};
    for (const auto& r : rows)
        ws->exec(QStringLiteral("INSERT INTO ApplicationUsers (Username, Fullname, Password, "
                                "AccountStatus, BranchCode) VALUES (?, 'SAME NAME', 'x', ?, ?)"),
                 {QString::fromLatin1(r.user), QString::fromLatin1(r.status),
                  QString::fromLatin1(r.branch)});
    frmUsers s(desk->ctx);
    s.show();
    QTreeWidgetItem* root = ctl<QTreeWidget>(&s, "TreeView1")->topLevelItem(0);
    QList<QTreeWidgetItem*> same;
    for (int i = 0; i < root->childCount(); ++i)
        if (root->child(i)->text(0) == u"SAME NAME")
            same << root->child(i);
    ASSERT_EQ(same.size(), 2);
    for (QTreeWidgetItem* node : same) {
        type(&s, "txtPassword", QStringLiteral("typed"));
        emit ctl<QTreeWidget>(&s, "TreeView1")->itemClicked(node, 0);
        EXPECT_EQ(edit(&s, "txtUsername")->text(), QStringLiteral("amy"));
        EXPECT_EQ(combo(&s, "cboAcctStatus")->currentText(), QStringLiteral("Disabled"));
        EXPECT_EQ(combo(&s, "cboBranchCode")->currentText(), QStringLiteral("YABA"));
        EXPECT_TRUE(edit(&s, "txtPassword")->text().isEmpty());
    }
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(UserAccounts, TheInstallationsTableIsUsedAndABadOneChangesNoPassword)
{
    QString table;
    for (char16_t c = 126; c >= 33; --c)
        table += QChar(c);
    const struct {
        QString file;
        QString stored;  // empty: refused
    } cases[] = {{table, QStringLiteral(">=<")}, {table.left(90), QString()},
                 {QString(table).replace(3, 1, QLatin1Char('a')), QString()}};
    int n = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file.toStdString());
        ws->writeFile(kPasswordTableFile, {c.file});
        setPassword(QStringLiteral("demo"), QStringLiteral("old"));
        const QString user = QStringLiteral("user%1").arg(++n);
        frmUsers users(desk->ctx);
        fillAccount(users, user, QStringLiteral("abc"), QStringLiteral("Enabled"),
                    QStringLiteral("YABA"));
        click(&users, "cmdApply");
        frmChngPwd change(desk->ctx);
        changePassword(change, QStringLiteral("demo"), QStringLiteral("old"),
                       QStringLiteral("abc"), QStringLiteral("abc"));
        if (c.stored.isEmpty()) {
            EXPECT_FALSE(account(user));
            EXPECT_EQ(account(QStringLiteral("demo"))->text(u"Password"),
                      stored(QStringLiteral("old")));
            EXPECT_TRUE(desk->prompter.lastText().contains(u"is not a permutation"));
            EXPECT_EQ(desk->prompter.informs().size(), 2);
        } else {
            EXPECT_EQ(account(user)->text(u"Password"), c.stored);
            // "old" went through the installation's table, not the built-in one: no match.
            EXPECT_EQ(desk->prompter.lastText(), kUserNotFoundText);
        }
        desk->prompter.clear();
    }
}

TEST_P(UserAccounts, PasswordChangeChecksInOrder)
{
    frmChngPwd s(desk->ctx);
    s.show();
    EXPECT_EQ(edit(&s, "txtUser")->text(), QStringLiteral("demo"));
    for (const char* name : {"txtPass", "txtPassN", "txtPassC"})
        EXPECT_EQ(edit(&s, name)->echoMode(), QLineEdit::Password) << name;
    const struct {
        const char* user;
        const char* old;
        const char* fresh;
        const char* confirm;
        QString message;
        const char* focus;
    } cases[] = {
        {" ", "a", "b", "b", "Alert! Username can't be empty.", "txtUser"},
        {"demo", "  ", "b", "b", "Alert! Old Account password can't be empty.", "txtPass"},
        {"demo", "a", " ", " ", "Alert! New Password can't be empty.", "txtPassN"},
        {"demo", "a", "b", "c", kUnmatchedPasswordText, "txtPassC"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.focus);
        desk->prompter.clear();
        changePassword(s, c.user, c.old, c.fresh, c.confirm);
        EXPECT_EQ(desk->prompter.informs(), QStringList{c.message});
        EXPECT_EQ(s.focusWidget()->objectName(), QString::fromLatin1(c.focus));
    }
    EXPECT_EQ(desk->prompter.last()->icon, Icon::Critical);
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM AuditTrail")).toInt(), 0);
}

TEST_P(UserAccounts, AWrongOldPasswordIsAuditedAndAGoodOneReplacesPasswordAndHash)
{
    setPassword(QStringLiteral("demo"), QStringLiteral("Old#1"));
    frmChngPwd s(desk->ctx);
    s.show();
    for (const char* user : {"demo", "nobody"}) {
        changePassword(s, user, QStringLiteral("old#1"), QStringLiteral("New#2"),
                       QStringLiteral("New#2"));
        EXPECT_EQ(desk->prompter.lastText(), kUserNotFoundText);
    }
    EXPECT_EQ(audits(QStringLiteral("Change Password Attempt Failed ")), 2);
    EXPECT_EQ(account(QStringLiteral("demo"))->text(u"Password"), stored(QStringLiteral("Old#1")));

    desk->prompter.clear();
    changePassword(s, QStringLiteral("DEMO"), QStringLiteral("Old#1"), QStringLiteral("New#2 x"),
                   QStringLiteral("New#2 x"));
    EXPECT_EQ(desk->prompter.informs(),
              (QStringList{kInvalidCharacterText,
                           QStringLiteral("Congrats! User Account's Password changed.")}));
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
        QString message;
        Icon icon;
        const char* user;
        const char* status;
    } cases[] = {
        {"mnuAcctDisable", std::nullopt, QString(), Icon::None, "cashier", "Enabled"},
        {"mnuAcctDisable", QStringLiteral("  "), "Alert! Username can't be empty.",
         Icon::Warning, "cashier", "Enabled"},
        {"mnuAcctEnable", QStringLiteral("nobody"), kUserNotFoundText, Icon::Information,
         "cashier", "Enabled"},
        {"mnuAcctDisable", QStringLiteral(" CASHIER "), kAccountDisabledText,
         Icon::Information, "cashier", "Disabled"},
        {"mnuAcctEnable", QStringLiteral("cashier"), kAccountEnabledText, Icon::Information,
         "cashier", "Enabled"},
        // The desk's own account: the run goes on, and so does a reload of its defaults.
        {"mnuAcctDisable", QStringLiteral("demo"), kAccountDisabledText, Icon::Information,
         "demo", "Disabled"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.entry);
        desk->prompter.clear();
        desk->prompter.answerInput(c.answer);
        action(QString::fromLatin1(c.entry))->trigger();
        EXPECT_EQ(desk->prompter.informs(),
                  c.message.isEmpty() ? QStringList{} : QStringList{c.message});
        if (!c.message.isEmpty())
            EXPECT_EQ(desk->prompter.last()->icon, c.icon);
        EXPECT_EQ(account(QString::fromLatin1(c.user))->text(u"AccountStatus"),
                  QString::fromLatin1(c.status));
    }
    desk->prompter.clear();
    action(QStringLiteral("mnuRDef"))->trigger();
    EXPECT_TRUE(desk->endedWith.empty());
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(desk->ctx.session().fullName, QStringLiteral("ADAEZE OKAFOR"));
}

TEST_P(UserAccounts, RightsAreAskedOfTheUsersRolesWithoutRegardToCase)
{
    const struct {
        const char* user;
        const char* role;
        bool holds;
    } cases[] = {{"demo", "records", true},   {"DEMO", "Management", true},
                 {"cashier", "RECORDS", false}, {"cashier", "accounts", true},
                 {"nobody", "RECORDS", false}};
    for (const auto& c : cases)
        EXPECT_EQ(holdsRole(desk->ctx.db(), c.user, c.role), c.holds) << c.user << c.role;

    // The location switch refuses by itself, whoever opened the screen that asks for it.
    desk->ctx.session().userName = QStringLiteral("cashier");
    try {
        ServerLocations(desk->ctx).switchTo(QStringLiteral("10.9.9.9"));
        ADD_FAILURE() << "switched";
    } catch (const CheckFailed& e) {
        EXPECT_EQ(e.message(), QStringLiteral("You dont have Permission to Change App Location"));
    }
    QFile made(ws->homePath(QStringLiteral("made.sys")));
    ASSERT_TRUE(made.open(QIODevice::ReadOnly));
    EXPECT_FALSE(made.readAll().contains("10.9.9.9"));
}

TEST_P(UserAccounts, NoPasswordTypedOrStoredShowsAnywhereElse)
{
    const QString first = QStringLiteral("Qx7!Leak pw"), second = QStringLiteral("Wv3$Leak2"),
                  wrong = QStringLiteral("Rt5%Leak3");
    QTemporaryFile err;
    ASSERT_TRUE(err.open());
    std::fflush(stderr);
    const int saved = dup(2);
    dup2(err.handle(), 2);
    {
        frmUsers users(desk->ctx);
        users.show();
        fillAccount(users, QStringLiteral("leaky"), first, QStringLiteral("Enabled"),
                    QStringLiteral("YABA"));
        QLineEdit* box = edit(&users, "txtPassword");
        QApplication::clipboard()->clear();
        box->selectAll();
        box->copy();
        EXPECT_FALSE(QApplication::clipboard()->text().contains(u"Leak"));
        click(&users, "cmdApply");
        frmChngPwd change(desk->ctx);
        changePassword(change, QStringLiteral("leaky"), wrong, second, second);
        changePassword(change, QStringLiteral("leaky"), first, second, second);
        ASSERT_EQ(desk->prompter.lastText(), QStringLiteral("Congrats! User Account's Password changed."));
        for (QWidget* w : {static_cast<QWidget*>(&users), static_cast<QWidget*>(&change)})
            EXPECT_FALSE(w->windowTitle().contains(u"Leak"));
        // Both logs written: an activity and a failing statement.
        frmRole role(desk->ctx);
        type(&role, "txtRID", QStringLiteral("88"));
        type(&role, "txtRName", QStringLiteral("AUDIT"));
        click(&role, "cmdSubmit");
        ws->connect()->execScript(QStringLiteral("ALTER TABLE UserRoles RENAME TO UserRolesAway"));
        UserRole pair(desk->ctx);
        pair.setRoleID(88);
        pair.setUsername(QStringLiteral("leaky"));
        EXPECT_EQ(pair.Submit(), UserRole::Event::Failed);
        std::fprintf(stderr, "stderr captured\n");
    }
    std::fflush(stderr);
    dup2(saved, 2);
    ::close(saved);

    QStringList places;
    for (const QString& f : {kActivityLogFile, kErrorLogFile}) {
        QFile log(ws->homePath(f));
        ASSERT_TRUE(log.open(QIODevice::ReadOnly)) << f.toStdString();
        places << QString::fromUtf8(log.readAll());
    }
    err.seek(0);
    places << QString::fromUtf8(err.readAll());
    EXPECT_TRUE(places.last().contains(u"stderr captured"));
    for (const char* table : {"AuditTrail", "UserActivities"})
        for (const db::Row& r :
             ws->connect()->query(QStringLiteral("SELECT * FROM %1").arg(QLatin1String(table))).rows)
            for (const QVariant& v : r.values())
                places << db::variantText(v);
    for (const auto& m : desk->prompter.messages())
        places << m.text + m.title;
    EXPECT_GE(audits(QStringLiteral("Change Password Attempt Failed ")), 1);
    const QString all = places.join(QLatin1Char('\n'));
    for (const QString& secret : {first, second, wrong})
        for (const QString& form : {secret, stored(secret)}) {
            EXPECT_FALSE(all.contains(form)) << form.toStdString();
            EXPECT_FALSE(all.contains(form.left(6))) << form.toStdString();
        }
}

TOLMAR_INSTANTIATE_BACKENDS(UserAccounts);
