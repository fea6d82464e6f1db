// The program as a script or the launcher starts it: the options, the exit status of every
// fatal start-up condition and its line on stderr, and a whole demo workspace.
#include "support/program.h"
#include "support/workspace.h"

#include "core/appdefaults.h"

#include <QCoreApplication>
#include <QImage>

#include <functional>
#include <tuple>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

class Program : public BackendTest {
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("TOLMAR_BINARY"))
            GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
        BackendTest::SetUp();
    }
    Outcome start() { return runProgram({u"--home"_s, ws->home()}); }
};

TEST_P(Program, EachFatalConditionEndsWithItsStatusAndSaysWhy)
{
    // Each step breaks one more thing than the settings the one before left behind.
    const std::tuple<std::function<void()>, int, const char*> steps[] = {
        {[&] { ws->writeFile(u"sysdoc.sys"_s, {u"demo"_s}); }, kExitMadeSysMissing,
         "A System inifile bAccum required for this Application is MISSING"},
        {[&] {
             ws->writeSettings();
             QFile::remove(ws->homePath(u"sysdoc.sys"_s));
         },
         kExitSysdocMissing, "A System file UserName required for this Application is MISSING"},
        {[&] { ws->writeSettings(u"cashier"_s); }, kExitInvalidLogin,
         "Invalid Login OR session has expired!!! Please Re-login"},
        {[&] {
             ws->writeSettings();
             ws->setDefault(u"PRIVATE"_s, std::nullopt);
         },
         kExitRequiredDefault, "System Default Value needed for Private Tariff"},
        {[&] {
             ws->setDefault(u"PRIVATE"_s, u"0001"_s);
             ws->exec(u"UPDATE Roles SET MinVer = 30 WHERE LoginRole = 'RECORDS'"_s);
         },
         kExitOldVersion, "Only Versions 30 and Above are Allowed"},
    };
    for (const auto& [prepare, status, says] : steps) {
        prepare();
        const Outcome r = start();
        EXPECT_EQ(r.status, status) << says;
        EXPECT_TRUE(r.err.contains(QString::fromUtf8(says))) << r.err.toStdString();
    }
}

TOLMAR_INSTANTIATE_BACKENDS(Program);

TEST(ProgramDemo, InitDemoMakesAWorkspaceTheProgramStartsOn)
{
    if (qEnvironmentVariableIsEmpty("TOLMAR_BINARY"))
        GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
    QTemporaryDir dir;
    const QString demo = dir.filePath(u"demo"_s);
    Outcome r = runProgram({u"--init-demo"_s, demo, u"--patients"_s, u"250"_s});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    for (const char* f : {"made.sys", "sysdoc.sys", "key.db", "data/HOSPITAL.db",
                          "data/SmsCenter.db", "Reports/RECORDS"})
        EXPECT_TRUE(QFileInfo::exists(demo + QLatin1Char('/') + QString::fromLatin1(f))) << f;
    {
        auto cfg = db::ServerConfig::fromServerName(u"sqlite:"_s + demo + "/data");
        db::Connection c(cfg, db::Database::Hospital);
        EXPECT_EQ(c.scalar(u"SELECT count(*) FROM hPatients"_s).toInt(), 250);
        EXPECT_EQ(c.scalar(u"SELECT id FROM idgen WHERE destName = ?"_s, {u"PATIENT2"_s}).toInt(),
                  250);
    }
    // The main window comes up on it, as a picture of a real size.
    const QString shot = dir.filePath(u"shot.png"_s);
    r = runProgram({u"--home"_s, demo, u"--screenshot"_s, shot});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_GT(QImage(shot).width(), 400);
    EXPECT_GT(QImage(shot).height(), 300);
    // A second demo in the same place would mix with the first: refused.
    r = runProgram({u"--init-demo"_s, demo});
    EXPECT_NE(r.status, 0);
}

TEST(ProgramDemo, InitDemoOnPostgreSQL)
{
    const QString pg = qEnvironmentVariable("TOLMAR_TEST_PG");
    if (qEnvironmentVariableIsEmpty("TOLMAR_BINARY") || pg.isEmpty())
        GTEST_SKIP() << "needs TOLMAR_BINARY and TOLMAR_TEST_PG";
    QTemporaryDir dir;
    const QString dbName = u"tolmar_demo_%1"_s.arg(QCoreApplication::applicationPid());
    const QString server = pg + QLatin1Char('/') + dbName;
    Outcome r = runProgram(
        {u"--init-demo"_s, dir.path(), u"--server"_s, server, u"--patients"_s, u"120"_s});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    r = runProgram({u"--home"_s, dir.path(), u"--screenshot"_s, dir.filePath(u"shot.png"_s)});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    {
        db::Connection c(db::ServerConfig::fromServerName(server), db::Database::Hospital);
        EXPECT_EQ(c.scalar(u"SELECT count(*) FROM vwhpatients"_s).toInt(), 120);
    }
    db::Connection admin(db::ServerConfig::fromServerName(pg + u"/postgres"_s),
                         db::Database::Hospital);
    admin.execScript(u"DROP DATABASE IF EXISTS %1 WITH (FORCE)"_s.arg(dbName));
}
