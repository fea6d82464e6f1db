// A hospital set up the way its administrator does it, through the real program: the server
// without demo data, run twice, upgraded only when asked, refused when newer, left as it was
// by a failure; desks against it; a PostgreSQL dump restored and opened.
#include "support/program.h"
#include "support/workspace.h"

#include "core/appdefaults.h"
#include "core/installation.h"
#include "core/startup.h"
#include "platform/files.h"
#include "platform/schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>

using namespace tolmar;
using namespace tolmar::test;

namespace {

const QString kPg = qEnvironmentVariable("TOLMAR_TEST_PG");
const QString kAdmin = QStringLiteral("o'neil.admin");

void pgAdminExec(const QString& ddl)
{
    db::Connection(db::ServerConfig::fromServerName(kPg + QStringLiteral("/postgres")),
                   db::Database::Hospital)
        .execScript(ddl);
}

QString plainFile(const QTemporaryDir& dir)
{
    const QString f = dir.filePath(QStringLiteral("plain-file"));
    files::writeLines(f, {QStringLiteral("x")});
    return f;
}

// One test's server: a folder of SQLite files, or a PostgreSQL database of its own.
struct Target {
    explicit Target(db::Backend backend)
    {
        static int n = 0;
        if (backend == db::Backend::Sqlite) {
            args = {QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("data"))};
        } else {
            database = QStringLiteral("tolmar_inst_%1_%2")
                           .arg(QCoreApplication::applicationPid())
                           .arg(n++);
            args = {kPg, QStringLiteral("--database"), database};
        }
        config = install::serverConfig(args[0], database);
    }
    ~Target()
    {
        if (!database.isEmpty())
            pgAdminExec(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(database));
    }
    QVariant scalar(const QString& sql, const db::Params& p = {}) const
    {
        return db::Connection(config, db::Database::Hospital).scalar(sql, p);
    }
    Outcome initServer(const QStringList& more = {}) const
    {
        return runProgram(QStringList{QStringLiteral("--init-server")} + args +
                          QStringList{QStringLiteral("--hospital-number"), QStringLiteral("07B"),
                                      QStringLiteral("--hospital-name"),
                                      QStringLiteral("ST. ÀNNE'S [EAST] CLINIC"),
                                      QStringLiteral("--admin"), kAdmin} +
                          more);
    }
    Outcome initDesk(const QString& home, const QString& user) const
    {
        return runProgram(QStringList{QStringLiteral("--init-desk"), home,
                                      QStringLiteral("--server"), args[0],
                                      QStringLiteral("--user"), user} +
                          args.mid(1));
    }

    QTemporaryDir dir;
    QString database;
    QStringList args;  // the server as --init-server and --init-desk take it
    db::ServerConfig config;
};

class InitServer : public testing::TestWithParam<db::Backend> {
protected:
    void SetUp() override
    {
        if (!haveBinary())
            GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
        target = std::make_unique<Target>(GetParam());
    }
    std::unique_ptr<Target> target;
};

}  // namespace

TEST_P(InitServer, FreshServerHoldsDefaultsAndOneAdministratorThenADeskStartsOnIt)
{
    const Outcome first = target->initServer();
    ASSERT_EQ(first.status, 0) << first.err.toStdString();
    EXPECT_TRUE(first.out.contains(QStringLiteral("administrator ") + kAdmin));
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), db::latestSchemaVersion());
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT count(*) FROM vwUsers WHERE Username = ? "
                                            "AND HName = ? AND LoginRole IN (?, ?)"),
                             {kAdmin, QStringLiteral("ST. ÀNNE'S [EAST] CLINIC"),
                              QStringLiteral("RECORDS"), QStringLiteral("MANAGEMENT")})
                  .toInt(),
              2);
    // The private payer and no invented one, no patients; numbers carry the hospital's.
    const QString state = QStringLiteral(
        "SELECT (SELECT count(*) FROM hRetainership) || ' ' || (SELECT min(retainID) FROM "
        "hRetainership) || ' ' || (SELECT count(*) FROM hPatients) || ' ' || (SELECT prefix "
        "FROM idgen WHERE destName = 'PATIENT2') || ' ' || (SELECT count(*) FROM AppDefaults) "
        "|| ' ' || (SELECT count(*) FROM UserRoles)");
    const QString before = target->scalar(state).toString();
    EXPECT_EQ(before.section(QLatin1Char(' '), 0, 3), QStringLiteral("1 0001 0 07B/"));

    const Outcome second = target->initServer();
    EXPECT_EQ(second.status, 0) << second.err.toStdString();
    EXPECT_TRUE(second.out.contains(QStringLiteral("nothing changed")));
    EXPECT_EQ(target->scalar(state).toString(), before);

    QTemporaryDir desks;
    const QString home = desks.filePath(QStringLiteral("desk"));
    Outcome r = target->initDesk(home, kAdmin.toUpper());
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(files::readLines(home + QStringLiteral("/made.sys"))->last(),
              QStringLiteral("HNO=07B"));
    r = runProgram({QStringLiteral("--home"), home, QStringLiteral("--screenshot"),
                    desks.filePath(QStringLiteral("shot.png"))});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
}

TEST_P(InitServer, OlderSchemaIsUpgradedOnlyWhenAskedAndNewerIsRefused)
{
    const int latest = db::latestSchemaVersion();
    // The step before the last: numbers may leave gaps where a step was given up.
    const auto steps = db::availableMigrations();
    ASSERT_GE(steps.size(), 2u);
    const int previous = steps[steps.size() - 2].version;
    {
        db::SchemaMigrator m(target->config);
        m.createDatabases();
        m.migrate(previous);
        install::writeDefaults(m, 0, previous);
    }
    Outcome r = target->initServer();
    EXPECT_EQ(r.status, kExitSchema);
    EXPECT_TRUE(r.out.contains(QStringLiteral("%1 ").arg(latest, 3, 10, QLatin1Char('0'))));
    EXPECT_TRUE(r.err.contains(QStringLiteral("--upgrade"))) << r.err.toStdString();
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), previous);

    r = target->initServer({QStringLiteral("--upgrade")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), latest);

    db::Connection(target->config, db::Database::Hospital)
        .exec(QStringLiteral("INSERT INTO schema_version VALUES (?, 'future', '2030-01-01')"),
              {latest + 1});
    r = target->initServer({QStringLiteral("--upgrade")});
    EXPECT_EQ(r.status, kExitSchema);
    EXPECT_TRUE(r.err.contains(newerSchemaMessage(latest + 1, latest).section('\r', 0, 0)));
}

TEST_P(InitServer, AFailureHalfWayLeavesNothingItMade)
{
    // Something already there under a name a later step needs: the set-up gets that far,
    // fails, and takes away what it made, and only that.
    const bool lite = GetParam() == db::Backend::Sqlite;
    if (lite) {
        QDir().mkpath(target->config.sqliteDir + QStringLiteral("/SmsCenter.db"));
    } else {
        pgAdminExec(QStringLiteral("CREATE DATABASE ") + target->database);
        db::Connection(target->config, db::Database::Hospital)
            .execScript(QStringLiteral("CREATE SCHEMA smscenter; "
                                       "CREATE SEQUENCE smscenter.messageout"));
    }
    const Outcome r = target->initServer();
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.err.contains(QStringLiteral("nothing was kept"))) << r.err.toStdString();
    if (lite)
        EXPECT_EQ(QDir(target->config.sqliteDir).entryList(QDir::Files), QStringList());
    else
        EXPECT_EQ(target->scalar(QStringLiteral(
                                     "SELECT string_agg(nspname, ',') FROM pg_namespace WHERE "
                                     "nspname IN ('hospital', 'hospitalarchive', 'master', "
                                     "'smscenter', 'accounting')"))
                      .toString(),
                  QStringLiteral("smscenter"));
}

TOLMAR_INSTANTIATE_BACKENDS(InitServer);

TEST(InitServerRefuses, BadInputWithAClearMessageAndNothingMade)
{
    if (!haveBinary())
        GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
    QTemporaryDir dir;
    const QString lite = QStringLiteral("sqlite:") + dir.path();
    struct Case {
        QString server, hno, admin, dbUser;
        const char* says;
    };
    std::vector<Case> cases = {
        {lite + "/a", "07", "admin", {}, "three letters or digits"},
        {lite + "/b", "007", " ", {}, "1 to 50 characters"},
        {"sqlite:" + plainFile(dir) + "/data", "007", "admin", {}, "Cannot create the folder"},
    };
    std::unique_ptr<Target> foreign;  // a database with a table of somebody else's
    if (!kPg.isEmpty()) {
        foreign = std::make_unique<Target>(db::Backend::Postgres);
        pgAdminExec(QStringLiteral("CREATE DATABASE ") + foreign->database);
        db::Connection(foreign->config, db::Database::Hospital)
            .execScript(QStringLiteral("CREATE TABLE public.invoices (id integer)"));
        cases.push_back({kPg + "/x;drop", "007", "admin", {}, "not a database name"});
        cases.push_back({kPg + "/tolmar_never", "007", "admin", "no_role", "refused the login"});
        cases.push_back({kPg + "/" + foreign->database, "007", "admin", {}, "not this program's"});
    }
    for (const Case& c : cases) {
        QProcessEnvironment env;
        if (!c.dbUser.isEmpty())
            env.insert(QStringLiteral("TOLMAR_DB_USER"), c.dbUser);
        const Outcome r = runProgram({QStringLiteral("--init-server"), c.server,
                                      QStringLiteral("--hospital-number"), c.hno,
                                      QStringLiteral("--admin"), c.admin},
                                     env);
        EXPECT_NE(r.status, 0) << c.says;
        EXPECT_TRUE(r.err.contains(QLatin1String(c.says))) << r.err.toStdString();
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("plain-file")});

    if (foreign)
        EXPECT_EQ(foreign->scalar(QStringLiteral("SELECT count(*) FROM pg_namespace "
                                                 "WHERE nspname = 'hospital'"))
                      .toInt(),
                  0);
}

// A desk against a running server with the demo's users: the folder is written only when
// the server answers and the user may run the module, and never over another desk's.
class InitDesk : public BackendTest {
protected:
    void SetUp() override
    {
        if (!haveBinary())
            GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
        BackendTest::SetUp();
    }
};

TEST_P(InitDesk, WritesTheFolderOnlyForAServerThatAnswersAndAUserWhoMayRunIt)
{
    QTemporaryDir dir;
    const bool pg = GetParam() == db::Backend::Postgres;
    const QString ours = ws->serverName();
    const QString good = dir.filePath(QStringLiteral("good"));
    struct Case {
        QString server, user, home;
        const char* says;  // nullptr: it succeeds
    };
    const std::vector<Case> cases = {
        {ours, "demo", good, nullptr},
        {ours, "demo", good, "already a desk's folder"},
        {ours, "nobody", dir.filePath("u"), "does not exist"},
        {ours, "cashier", dir.filePath("c"), "does not hold the RECORDS role"},
        {ours, "demo", plainFile(dir) + "/desk", "could not be set up"},
        {pg ? kPg + "/tolmar_never" : "sqlite:" + dir.filePath("none"), "demo", dir.filePath("m"),
         pg ? "does not exist on" : "not found"},
        {pg ? "127.0.0.1:1" : "", "demo", dir.filePath("r"),
         pg ? "Cannot reach the database server" : "needs --server"},
    };
    for (const Case& c : cases) {
        const Outcome r = runProgram({QStringLiteral("--init-desk"), c.home,
                                      QStringLiteral("--server"), c.server,
                                      QStringLiteral("--user"), c.user});
        if (!c.says) {
            ASSERT_EQ(r.status, 0) << r.err.toStdString();
            for (const char* f : {"made.sys", "sysdoc.sys", "key.db", "Reports/RECORDS"})
                EXPECT_TRUE(QFileInfo::exists(c.home + QLatin1Char('/') + QLatin1String(f)));
            continue;
        }
        EXPECT_NE(r.status, 0) << c.says;
        EXPECT_TRUE(r.err.contains(QLatin1String(c.says))) << r.err.toStdString();
        EXPECT_EQ(QFileInfo::exists(c.home), c.home == good) << c.says;
    }
}

TOLMAR_INSTANTIATE_BACKENDS(InitDesk);

// The backup the notes tell the administrator to take: pg_dump of the one database, restored
// by pg_restore into a new one, holds every row and starts a desk.
TEST(Backup, PgDumpRestoredIntoANewDatabaseOpensInTheProgram)
{
    if (!haveBinary() || kPg.isEmpty())
        GTEST_SKIP() << "needs TOLMAR_BINARY and TOLMAR_TEST_PG (PostgreSQL)";
    // ./test names the bin folder of the server it started: the tools must match it.
    const QString bin = qEnvironmentVariable("TOLMAR_PG_BIN");
    if (bin.isEmpty())
        GTEST_SKIP() << "TOLMAR_PG_BIN (pg_dump and pg_restore of the test server) is not set";
    Workspace ws(db::Backend::Postgres);
    ws.exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname) VALUES (?, ?)"),
            {QStringLiteral("001/000000042"), QStringLiteral("ÒKÉ-D'SOUZA")});
    Target restored(db::Backend::Postgres);
    QTemporaryDir dir;
    const QString dump = dir.filePath(QStringLiteral("tolmar.dump"));
    auto run = [&](const QString& tool, const QStringList& args) {
        QProcess p;
        p.start(bin + QLatin1Char('/') + tool,
                QStringList{QStringLiteral("-h"), ws.server().host, QStringLiteral("-p"),
                            QString::number(ws.server().port), QStringLiteral("-U"),
                            qEnvironmentVariable("TOLMAR_DB_USER", QStringLiteral("postgres"))} +
                    args);
        p.waitForFinished(120000);
        return p.exitCode() == 0 ? QString()
                                 : tool + QString::fromLocal8Bit(p.readAllStandardError());
    };
    ASSERT_EQ(run(QStringLiteral("pg_dump"), {QStringLiteral("-Fc"), QStringLiteral("-f"), dump,
                                              ws.server().pgDatabase}),
              QString());
    pgAdminExec(QStringLiteral("CREATE DATABASE ") + restored.database);
    ASSERT_EQ(run(QStringLiteral("pg_restore"), {QStringLiteral("--no-owner"),
                                                 QStringLiteral("--exit-on-error"),
                                                 QStringLiteral("-d"), restored.database, dump}),
              QString());

    // Every table of the five schemas holds as many rows as the original.
    auto counts = [](const db::ServerConfig& c) {
        db::Connection h(c, db::Database::Hospital);
        QStringList out;
        for (const db::Row& t :
             h.query(QStringLiteral("SELECT table_schema || '.' || table_name AS t FROM "
                                    "information_schema.tables WHERE table_type = 'BASE TABLE' "
                                    "AND table_schema NOT IN ('pg_catalog', "
                                    "'information_schema') ORDER BY 1"))
                 .rows)
            out << t.text(u"t") + QLatin1Char('=') +
                       h.scalar(QStringLiteral("SELECT count(*) FROM ") + t.text(u"t")).toString();
        return out;
    };
    const QStringList original = counts(ws.server());
    EXPECT_GT(original.size(), 50);
    EXPECT_EQ(counts(restored.config), original);
    EXPECT_EQ(restored.scalar(QStringLiteral("SELECT psurname FROM hPatients WHERE PNo = ?"),
                              {QStringLiteral("001/000000042")})
                  .toString(),
              QStringLiteral("ÒKÉ-D'SOUZA"));

    const QString home = dir.filePath(QStringLiteral("desk"));
    Outcome r = restored.initDesk(home, QStringLiteral("demo"));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    r = runProgram({QStringLiteral("--home"), home, QStringLiteral("--screenshot"),
                    dir.filePath(QStringLiteral("shot.png"))});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
}
