// The program as a script or the launcher starts it: the options, the exit status of every
// fatal start-up condition and its line on stderr, and a whole demo workspace.
#include "support/program.h"
#include "support/workspace.h"

#include "core/appdefaults.h"

#include <QCoreApplication>
#include <QImage>

using namespace tolmar;
using namespace tolmar::test;

class Program : public BackendTest {
protected:
    void SetUp() override
    {
        if (qEnvironmentVariableIsEmpty("TOLMAR_BINARY"))
            GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
        BackendTest::SetUp();
    }
    Outcome start() { return runProgram({QStringLiteral("--home"), ws->home()}); }
};

TEST_P(Program, EachFatalConditionEndsWithItsStatusAndSaysWhy)
{
    ws->writeFile(QStringLiteral("sysdoc.sys"), {QStringLiteral("demo")});
    Outcome r = start();
    EXPECT_EQ(r.status, kExitMadeSysMissing);
    EXPECT_TRUE(r.err.contains(
        QStringLiteral("A System inifile bAccum required for this Application is MISSING")));

    ws->writeSettings();
    QFile::remove(ws->homePath(QStringLiteral("sysdoc.sys")));
    r = start();
    EXPECT_EQ(r.status, kExitSysdocMissing);
    EXPECT_TRUE(r.err.contains(
        QStringLiteral("A System file UserName required for this Application is MISSING")));

    ws->writeSettings(QStringLiteral("cashier"));
    r = start();
    EXPECT_EQ(r.status, kExitInvalidLogin);
    EXPECT_TRUE(r.err.contains(
        QStringLiteral("Invalid Login OR session has expired!!! Please Re-login")));

    ws->writeSettings();
    ws->setDefault(QStringLiteral("PRIVATE"), std::nullopt);
    r = start();
    EXPECT_EQ(r.status, kExitRequiredDefault);
    EXPECT_TRUE(r.err.contains(QStringLiteral("System Default Value needed for Private Tariff")));

    ws->setDefault(QStringLiteral("PRIVATE"), QStringLiteral("0001"));
    ws->exec(QStringLiteral("UPDATE Roles SET MinVer = ? WHERE LoginRole = ?"),
             {30, QStringLiteral("RECORDS")});
    r = start();
    EXPECT_EQ(r.status, kExitOldVersion);
    EXPECT_TRUE(r.err.contains(QStringLiteral("Only Versions 30 and Above are Allowed")));
}

TEST_P(Program, ScreenshotOfTheMainWindow)
{
    ws->writeSettings();
    const QString shot = ws->homePath(QStringLiteral("main.png"));
    const Outcome r = runProgram({QStringLiteral("--home"), ws->home(), QStringLiteral("--screenshot"), shot});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    const QImage image(shot);
    EXPECT_GT(image.width(), 400);
    EXPECT_GT(image.height(), 300);
}

TOLMAR_INSTANTIATE_BACKENDS(Program);

TEST(ProgramDemo, InitDemoMakesAWorkspaceTheProgramStartsOn)
{
    if (qEnvironmentVariableIsEmpty("TOLMAR_BINARY"))
        GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
    QTemporaryDir dir;
    const QString demo = dir.filePath(QStringLiteral("demo"));
    Outcome r = runProgram({QStringLiteral("--init-demo"), demo, QStringLiteral("--patients"),
                        QStringLiteral("250")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    for (const char* f : {"made.sys", "sysdoc.sys", "key.db", "data/HOSPITAL.db",
                          "data/SmsCenter.db", "Reports/RECORDS"})
        EXPECT_TRUE(QFileInfo::exists(demo + QLatin1Char('/') + QString::fromLatin1(f))) << f;
    {
        auto cfg = db::ServerConfig::fromServerName(QStringLiteral("sqlite:") + demo + "/data");
        db::Connection c(cfg, db::Database::Hospital);
        EXPECT_EQ(c.scalar(QStringLiteral("SELECT count(*) FROM hPatients")).toInt(), 250);
        EXPECT_EQ(c.scalar(QStringLiteral("SELECT id FROM idgen WHERE destName = ?"),
                           {QStringLiteral("PATIENT2")})
                      .toInt(),
                  250);
    }
    r = runProgram({QStringLiteral("--home"), demo, QStringLiteral("--screenshot"),
                    dir.filePath(QStringLiteral("shot.png"))});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    // A second demo in the same place would mix with the first: refused.
    r = runProgram({QStringLiteral("--init-demo"), demo});
    EXPECT_NE(r.status, 0);
}

TEST(ProgramDemo, InitDemoOnPostgreSQL)
{
    const QString pg = qEnvironmentVariable("TOLMAR_TEST_PG");
    if (qEnvironmentVariableIsEmpty("TOLMAR_BINARY") || pg.isEmpty())
        GTEST_SKIP() << "needs TOLMAR_BINARY and TOLMAR_TEST_PG";
    QTemporaryDir dir;
    const QString dbName = QStringLiteral("tolmar_demo_%1").arg(QCoreApplication::applicationPid());
    const QString server = pg + QLatin1Char('/') + dbName;
    Outcome r = runProgram({QStringLiteral("--init-demo"), dir.path(), QStringLiteral("--server"),
                        server, QStringLiteral("--patients"), QStringLiteral("120")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    r = runProgram({QStringLiteral("--home"), dir.path(), QStringLiteral("--screenshot"),
                    dir.filePath(QStringLiteral("shot.png"))});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
    {
        db::Connection c(db::ServerConfig::fromServerName(server), db::Database::Hospital);
        EXPECT_EQ(c.scalar(QStringLiteral("SELECT count(*) FROM vwhpatients")).toInt(), 120);
    }
    db::Connection admin(db::ServerConfig::fromServerName(pg + QStringLiteral("/postgres")),
                         db::Database::Hospital);
    admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(dbName));
}
