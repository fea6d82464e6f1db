// The start-up routine: settings files, the user, the version gate and the clock. Each
// fatal condition shows its message, says it on stderr and ends with its own status.
#include "support/workspace.h"

#include "core/appdefaults.h"
#include "core/startup.h"
#include "platform/schema.h"

#include <QDir>

using namespace tolmar;
using namespace tolmar::test;

class Startup : public BackendTest {
protected:
    StartupResult start(Desk& d) { return runStartup(d.ctx); }
};

TEST_P(Startup, ReadsSessionIdentityDefaultsAndServerClock)
{
    Desk d(*ws);
    ws->writeSettings();
    const auto r = start(d);
    ASSERT_EQ(r.outcome, StartupResult::Ok) << r.message.toStdString();
    const Session& s = d.ctx.session();
    EXPECT_EQ(s.userName, QStringLiteral("demo"));
    EXPECT_EQ(s.fullName, QStringLiteral("ADAEZE OKAFOR"));
    EXPECT_EQ(s.empID, QStringLiteral("EMP001"));
    EXPECT_EQ(s.hospID, QStringLiteral("001"));
    EXPECT_EQ(s.hospitalName, QStringLiteral("TOLMAR SPECIALIST HOSPITAL"));
    EXPECT_EQ(s.hospitalNo, QStringLiteral("001"));
    EXPECT_EQ(s.loginRole, QStringLiteral("RECORDS"));
    EXPECT_EQ(s.moduleNumber, 3);
    EXPECT_EQ(s.defaults.PRIVATE, QStringLiteral("0001"));
    EXPECT_EQ(s.defaults.AppLocation, QStringLiteral("Ikeja"));
    EXPECT_EQ(s.serverDate, QDate(2026, 11, 23));
    EXPECT_EQ(s.serverDateText, QStringLiteral("23/11/2026"));
    EXPECT_EQ(s.serverTimeText, QStringLiteral("9:30 AM"));
    // The reports folder is made one level deep under an existing Reports folder.
    EXPECT_TRUE(QDir(ws->homePath(QStringLiteral("Reports/RECORDS"))).exists());
    EXPECT_TRUE(d.prompter.messages().empty());
}

TEST_P(Startup, MissingMadeSysEndsTheRun)
{
    Desk d(*ws);
    ws->writeFile(QStringLiteral("sysdoc.sys"), {QStringLiteral("demo")});
    const auto r = start(d);
    EXPECT_EQ(r.outcome, StartupResult::Fatal);
    EXPECT_EQ(r.exitCode, kExitMadeSysMissing);
    EXPECT_TRUE(d.prompter.saw(
        QStringLiteral("A System inifile bAccum required for this Application is MISSING")));
}

TEST_P(Startup, MissingSysdocEndsTheRun)
{
    Desk d(*ws);
    ws->writeFile(QStringLiteral("made.sys"), {QStringLiteral("SVR=") + ws->serverName()});
    const auto r = start(d);
    EXPECT_EQ(r.outcome, StartupResult::Fatal);
    EXPECT_EQ(r.exitCode, kExitSysdocMissing);
    EXPECT_EQ(d.prompter.lastText(),
              QStringLiteral("A System file UserName required for this Application is MISSING"));
}

TEST_P(Startup, UnknownUserAndUserWithoutTheRoleGetTheSameRefusal)
{
    const QString refusal = QStringLiteral("Invalid Login OR session has expired!!! Please Re-login");
    for (const QString& user : {QStringLiteral("nobody"), QStringLiteral("cashier"), QString()}) {
        Desk d(*ws);
        ws->writeSettings(user);
        const auto r = start(d);
        EXPECT_EQ(r.outcome, StartupResult::Fatal) << user.toStdString();
        EXPECT_EQ(r.exitCode, kExitInvalidLogin);
        EXPECT_EQ(d.prompter.lastText(), refusal);
    }
}

TEST_P(Startup, LastLineOfSysdocIsTheUser)
{
    Desk d(*ws);
    ws->writeSettings();
    ws->writeFile(QStringLiteral("sysdoc.sys"),
                  {QStringLiteral("cashier"), QStringLiteral("manager")});
    ASSERT_EQ(start(d).outcome, StartupResult::Ok);
    EXPECT_EQ(d.ctx.session().fullName, QStringLiteral("TUNDE BALOGUN"));
}

TEST_P(Startup, VersionGateRefusesAnOlderProgram)
{
    struct Case {
        QVariant minVer;
        QString text;
        bool sqliteOnly;  // PostgreSQL keeps MinVer in 16 bits itself
    };
    const QString old22 =
        QStringLiteral("RECORDS Module is OLD!\r\nOnly Versions 22 and Above are Allowed");
    const Case cases[] = {
        {22, old22},
        {21.5, old22},  // a fraction is rounded, as a 16-bit number holds it
        // Beyond 16 bits no version could ever run; wrapped it would read as 21.
        {65557,
         QStringLiteral("RECORDS Module cannot check its version: MinVer 65557 in Roles is not "
                        "a version number (0 to 32767)."),
         true},
    };
    for (const Case& c : cases) {
        if (c.sqliteOnly && ws->backend() != db::Backend::Sqlite)
            continue;
        SCOPED_TRACE(c.minVer.toString().toStdString());
        ws->exec(QStringLiteral("UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"),
                 {c.minVer, QStringLiteral("RECORDS")});
        Desk d(*ws);
        ws->writeSettings();
        const auto r = start(d);
        EXPECT_EQ(r.outcome, StartupResult::Fatal);
        EXPECT_EQ(r.exitCode, kExitOldVersion);
        ASSERT_NE(d.prompter.last(), nullptr);
        EXPECT_EQ(d.prompter.last()->text, c.text);
        EXPECT_EQ(d.prompter.last()->title, QStringLiteral("Old Version 21.78 Not Allowed"));
        EXPECT_EQ(d.prompter.last()->icon, Icon::Critical);
    }
}

TEST_P(Startup, VersionGateOnlyRunsWhenLockedAndComparesTheMajorNumber)
{
    // The same major version passes; a higher one passes unless the lock is on.
    ws->exec(QStringLiteral("UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"),
             {21, QStringLiteral("RECORDS")});
    {
        Desk d(*ws);
        d.startUp();
    }
    ws->exec(QStringLiteral("UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"),
             {40, QStringLiteral("RECORDS")});
    ws->setDefault(QStringLiteral("LockOldVersion"), QStringLiteral("NO"));
    Desk d(*ws);
    d.startUp();
    // A NULL MinVer counts as 0.
    ws->exec(QStringLiteral("UPDATE Roles SET MinVer = NULL WHERE LoginRole = ?"),
             {QStringLiteral("RECORDS")});
    ws->setDefault(QStringLiteral("LockOldVersion"), QStringLiteral("YES"));
    Desk e(*ws);
    e.startUp();
}

TEST_P(Startup, ReportsFolderIsMadeOnlyOneLevelDeep)
{
    QDir(ws->home()).rmdir(QStringLiteral("Reports"));
    Desk d(*ws);
    ws->writeSettings();
    const auto r = start(d);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
    EXPECT_TRUE(r.message.contains(QStringLiteral("Reports")));
}

TEST_P(Startup, AServerThatCannotBeReachedIsReportedByTheErrorTrap)
{
    Desk d(*ws);
    ws->writeFile(QStringLiteral("made.sys"),
                  {ws->backend() == db::Backend::Sqlite
                       ? QStringLiteral("SVR=sqlite:") + ws->homePath(QStringLiteral("nowhere"))
                       : QStringLiteral("SVR=127.0.0.1:1")});
    ws->writeFile(QStringLiteral("sysdoc.sys"), {QStringLiteral("demo")});
    const auto r = start(d);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
    EXPECT_EQ(r.exitCode, kExitStartupError);
    EXPECT_FALSE(r.message.isEmpty());
    EXPECT_EQ(d.prompter.lastText(), r.message);
}

TEST_P(Startup, ReloadReadsTheUserAndDefaultsAgain)
{
    Desk d(*ws);
    d.startUp();
    ws->setDefault(QStringLiteral("AppLocation"), QStringLiteral("Victoria Island"));
    ws->writeFile(QStringLiteral("sysdoc.sys"), {QStringLiteral("manager")});
    ASSERT_EQ(runStartup(d.ctx).outcome, StartupResult::Ok);
    EXPECT_EQ(d.ctx.session().defaults.AppLocation, QStringLiteral("Victoria Island"));
    EXPECT_EQ(d.ctx.session().userName, QStringLiteral("manager"));
}

TEST_P(Startup, ServerClockComesFromTheDatabaseWhenNotFixed)
{
    ws->writeSettings();
    ScriptedPrompter p;
    Clock real;
    AppContext ctx(ws->home(), p, real);
    ASSERT_EQ(runStartup(ctx).outcome, StartupResult::Ok);
    EXPECT_LT(std::abs(ctx.session().serverDateTime.secsTo(QDateTime::currentDateTime())), 120);
}

TEST_P(Startup, ANewerDatabaseIsRefusedAndAnOlderOneUpgradedWhenTheDeskAgrees)
{
    const int latest = db::latestSchemaVersion();
    const struct {
        int version;  // what the database says it is
        bool answer;
        StartupResult::Outcome outcome;
        const char* says;  // the start of the last message
    } cases[] = {
        {999, true, StartupResult::Fatal, "The database is of version 999, newer than this"},
        {latest - 1, false, StartupResult::Fatal, "The database was not upgraded"},
        // The question is the last thing said, and the missing step runs again.
        {latest - 1, true, StartupResult::Ok, "The database is of version"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.version);
        ws->exec(QStringLiteral("DELETE FROM schema_version WHERE version >= ?"),
                 {std::min(c.version, latest) + 1});
        if (c.version > latest)
            ws->exec(QStringLiteral("INSERT INTO schema_version (version, name, applied_at) "
                                    "VALUES (?, 'future', '2030-01-01 00:00:00')"),
                     {c.version});
        Desk d(*ws);
        ws->writeSettings();
        if (c.answer)
            d.prompter.answerYes();
        else
            d.prompter.answerNo();
        const auto r = start(d);
        EXPECT_EQ(r.outcome, c.outcome);
        EXPECT_TRUE(d.prompter.lastText().startsWith(QString::fromLatin1(c.says)))
            << d.prompter.lastText().toStdString();
        if (c.outcome == StartupResult::Fatal)
            EXPECT_EQ(r.exitCode, kExitSchema);
    }
    EXPECT_EQ(db::SchemaMigrator(ws->server()).currentVersion(), latest);
}

TOLMAR_INSTANTIATE_BACKENDS(Startup);

TEST(MadeSys, LaterLineWinsAndOtherLinesAreSkipped)
{
    const auto m = parseMadeSys({QStringLiteral("SVR=first"), QStringLiteral("; comment"),
                                 QStringLiteral("HNO=002"), QStringLiteral("SVRxsecond\\SQL2019"),
                                 QStringLiteral("svr=lower-case is not a key")});
    EXPECT_EQ(m.serverName, QStringLiteral("second\\SQL2019"));
    EXPECT_EQ(m.hospitalNo, QStringLiteral("002"));
    EXPECT_EQ(parseMadeSys({QStringLiteral("HNO=1")}).serverName, QString());
}

TEST(MadeSys, ServerHostDropsTheInstancePart)
{
    EXPECT_EQ(serverHostOf(QStringLiteral("DBSRV\\SQLEXPRESS")), QStringLiteral("DBSRV"));
    EXPECT_EQ(serverHostOf(QStringLiteral("10.0.0.4")), QStringLiteral("10.0.0.4"));
    EXPECT_EQ(serverHostOf(QStringLiteral("A\\B\\C")), QStringLiteral("A"));
}

TEST(MadeSys, NoServerLineMeansServerAndTheShareUsesTheHostOnly)
{
    QTemporaryDir home;
    QDir(home.path()).mkpath(QStringLiteral("Reports"));
    QFile f(home.filePath(QStringLiteral("made.sys")));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("HNO=001\r\n");
    f.close();
    ScriptedPrompter p;
    FixedClock clock(QDateTime(QDate(2026, 1, 1), QTime(8, 0)));
    AppContext ctx(home.path(), p, clock);
    runStartup(ctx);  // fails at the connection: there is no server called SERVER
    EXPECT_EQ(ctx.session().serverName, QStringLiteral("SERVER"));
    EXPECT_EQ(ctx.session().patientsShare, QStringLiteral("\\\\SERVER\\Patients\\"));
}
