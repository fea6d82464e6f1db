// The start-up routine: settings files, the user, the version gate and the clock. Each
// fatal condition shows its message, says it on stderr and ends with its own status.
#include "support/workspace.h"

#include "core/appdefaults.h"
#include "core/startup.h"
#include "platform/schema.h"

#include <QDir>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

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
    EXPECT_EQ(
        (QStringList{s.userName, s.fullName, s.empID, s.hospID, s.hospitalName, s.hospitalNo,
                     s.loginRole, QString::number(s.moduleNumber), s.defaults.PRIVATE,
                     s.defaults.AppLocation, s.serverDate.toString(Qt::ISODate), s.serverDateText,
                     s.serverTimeText}),
        (QStringList{"demo", "ADAEZE OKAFOR", "EMP001", "001", "TOLMAR SPECIALIST HOSPITAL", "001",
                     "RECORDS", "3", "0001", "Ikeja", "2026-11-23", "23/11/2026", "9:30 AM"}));
    // The reports folder is made one level deep under an existing Reports folder.
    EXPECT_TRUE(QDir(ws->homePath(u"Reports/RECORDS"_s)).exists());
    EXPECT_TRUE(d.prompter.messages().empty());
}

TEST_P(Startup, MissingFilesAndAUserWhoMayNotRunItEndTheRun)
{
    // Whether made.sys is there, the user sysdoc.sys names (none: no file), the status and
    // the message. An unknown user and one without the role get the same refusal.
    const QString refusal = u"Invalid Login OR session has expired!!! Please Re-login"_s;
    const struct {
        bool madeSys;
        const char* user;
        int status;
        QString says;
    } cases[] = {
        {false, "demo", kExitMadeSysMissing,
         u"A System inifile bAccum required for this Application is MISSING"_s},
        {true, nullptr, kExitSysdocMissing,
         u"A System file UserName required for this Application is MISSING"_s},
        {true, "nobody", kExitInvalidLogin, refusal},
        {true, "cashier", kExitInvalidLogin, refusal},
        {true, "", kExitInvalidLogin, refusal},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.status);
        QFile::remove(ws->homePath(u"made.sys"_s));
        QFile::remove(ws->homePath(u"sysdoc.sys"_s));
        if (c.madeSys)
            ws->writeFile(u"made.sys"_s, {u"SVR="_s + ws->serverName(), u"HNO=001"_s});
        if (c.user)
            ws->writeFile(u"sysdoc.sys"_s, {QString::fromLatin1(c.user)});
        Desk d(*ws);
        const auto r = start(d);
        EXPECT_EQ(r.outcome, StartupResult::Fatal);
        EXPECT_EQ(r.exitCode, c.status);
        EXPECT_TRUE(d.prompter.saw(c.says)) << d.prompter.lastText().toStdString();
    }
}

TEST_P(Startup, LastLineOfSysdocIsTheUser)
{
    Desk d(*ws);
    ws->writeSettings();
    ws->writeFile(u"sysdoc.sys"_s, {u"cashier"_s, u"manager"_s});
    ASSERT_EQ(start(d).outcome, StartupResult::Ok);
    EXPECT_EQ(d.ctx.session().fullName, u"TUNDE BALOGUN"_s);
}

TEST_P(Startup, VersionGateRefusesAnOlderProgram)
{
    struct Case {
        QVariant minVer;
        QString text;
        bool sqliteOnly;  // PostgreSQL keeps MinVer in 16 bits itself
    };
    const QString old22 = u"RECORDS Module is OLD!\r\nOnly Versions 22 and Above are Allowed"_s;
    const Case cases[] = {
        {22, old22},
        {21.5, old22},  // a fraction is rounded, as a 16-bit number holds it
        // Beyond 16 bits no version could ever run; wrapped it would read as 21.
        {65557,
         u"RECORDS Module cannot check its version: MinVer 65557 in Roles is not "
         "a version number (0 to 32767)."_s,
         true},
    };
    for (const Case& c : cases) {
        if (c.sqliteOnly && ws->backend() != db::Backend::Sqlite)
            continue;
        SCOPED_TRACE(c.minVer.toString().toStdString());
        ws->exec(u"UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"_s, {c.minVer, u"RECORDS"_s});
        Desk d(*ws);
        ws->writeSettings();
        const auto r = start(d);
        EXPECT_EQ(r.outcome, StartupResult::Fatal);
        EXPECT_EQ(r.exitCode, kExitOldVersion);
        ASSERT_NE(d.prompter.last(), nullptr);
        EXPECT_EQ(d.prompter.last()->text, c.text);
        EXPECT_EQ(d.prompter.last()->title, u"Old Version 21.78 Not Allowed"_s);
        EXPECT_EQ(d.prompter.last()->icon, Icon::Critical);
    }
}

TEST_P(Startup, VersionGateOnlyRunsWhenLockedAndComparesTheMajorNumber)
{
    // The same major version passes; a higher one passes unless the lock is on.
    ws->exec(u"UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"_s, {21, u"RECORDS"_s});
    {
        Desk d(*ws);
        d.startUp();
    }
    ws->exec(u"UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"_s, {40, u"RECORDS"_s});
    ws->setDefault(u"LockOldVersion"_s, u"NO"_s);
    Desk d(*ws);
    d.startUp();
    // A NULL MinVer counts as 0.
    ws->exec(u"UPDATE Roles SET MinVer = NULL WHERE LoginRole = ?"_s, {u"RECORDS"_s});
    ws->setDefault(u"LockOldVersion"_s, u"YES"_s);
    Desk e(*ws);
    e.startUp();
}

TEST_P(Startup, ReportsFolderIsMadeOnlyOneLevelDeep)
{
    QDir(ws->home()).rmdir(u"Reports"_s);
    Desk d(*ws);
    ws->writeSettings();
    const auto r = start(d);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
    EXPECT_TRUE(r.message.contains(u"Reports"_s));
}

TEST_P(Startup, AServerThatCannotBeReachedIsReportedByTheErrorTrap)
{
    Desk d(*ws);
    ws->writeFile(u"made.sys"_s, {ws->backend() == db::Backend::Sqlite
                                      ? u"SVR=sqlite:"_s + ws->homePath(u"nowhere"_s)
                                      : u"SVR=127.0.0.1:1"_s});
    ws->writeFile(u"sysdoc.sys"_s, {u"demo"_s});
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
    ws->setDefault(u"AppLocation"_s, u"Victoria Island"_s);
    ws->writeFile(u"sysdoc.sys"_s, {u"manager"_s});
    ASSERT_EQ(runStartup(d.ctx).outcome, StartupResult::Ok);
    EXPECT_EQ(d.ctx.session().defaults.AppLocation, u"Victoria Island"_s);
    EXPECT_EQ(d.ctx.session().userName, u"manager"_s);
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
        ws->exec(u"DELETE FROM schema_version WHERE version >= ?"_s,
                 {std::min(c.version, latest) + 1});
        if (c.version > latest)
            ws->exec(
                u"INSERT INTO schema_version (version, name, applied_at) "
                "VALUES (?, 'future', '2030-01-01 00:00:00')"_s,
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

TEST(MadeSys, LaterLineWinsOtherLinesAreSkippedAndTheHostDropsTheInstance)
{
    const auto m = parseMadeSys({u"SVR=first"_s, u"; comment"_s, u"HNO=002"_s,
                                 u"SVRxsecond\\SQL2019"_s, u"svr=lower-case is not a key"_s});
    EXPECT_EQ(m.serverName, u"second\\SQL2019"_s);
    EXPECT_EQ(m.hospitalNo, u"002"_s);
    EXPECT_EQ(parseMadeSys({u"HNO=1"_s}).serverName, QString());
    EXPECT_EQ(serverHostOf(u"DBSRV\\SQLEXPRESS"_s), u"DBSRV"_s);
    EXPECT_EQ(serverHostOf(u"10.0.0.4"_s), u"10.0.0.4"_s);
    EXPECT_EQ(serverHostOf(u"A\\B\\C"_s), u"A"_s);
}

TEST(MadeSys, NoServerLineMeansServerAndTheShareUsesTheHostOnly)
{
    QTemporaryDir home;
    QDir(home.path()).mkpath(u"Reports"_s);
    QFile f(home.filePath(u"made.sys"_s));
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("HNO=001\r\n");
    f.close();
    ScriptedPrompter p;
    FixedClock clock(QDateTime(QDate(2026, 1, 1), QTime(8, 0)));
    AppContext ctx(home.path(), p, clock);
    runStartup(ctx);  // fails at the connection: there is no server called SERVER
    EXPECT_EQ(ctx.session().serverName, u"SERVER"_s);
    EXPECT_EQ(ctx.session().patientsShare, u"\\\\SERVER\\Patients\\"_s);
}
