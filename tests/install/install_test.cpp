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
using namespace Qt::StringLiterals;

namespace {

const QString kPg = qEnvironmentVariable("TOLMAR_TEST_PG");
const QString kAdmin = u"o'neil.admin"_s;

void pgAdminExec(const QString& ddl)
{
    db::Connection(db::ServerConfig::fromServerName(kPg + u"/postgres"_s), db::Database::Hospital)
        .execScript(ddl);
}

QString plainFile(const QTemporaryDir& dir)
{
    const QString f = dir.filePath(u"plain-file"_s);
    files::writeLines(f, {u"x"_s});
    return f;
}

// One test's server: a folder of SQLite files, or a PostgreSQL database of its own.
struct Target {
    explicit Target(db::Backend backend)
    {
        static int n = 0;
        if (backend == db::Backend::Sqlite) {
            args = {u"sqlite:"_s + dir.filePath(u"data"_s)};
        } else {
            database = u"tolmar_inst_%1_%2"_s.arg(QCoreApplication::applicationPid()).arg(n++);
            args = {kPg, u"--database"_s, database};
        }
        config = install::serverConfig(args[0], database);
    }
    ~Target()
    {
        if (!database.isEmpty())
            pgAdminExec(u"DROP DATABASE IF EXISTS %1 WITH (FORCE)"_s.arg(database));
    }
    QVariant scalar(const QString& sql, const db::Params& p = {}) const
    {
        return db::Connection(config, db::Database::Hospital).scalar(sql, p);
    }
    Outcome initServer(const QStringList& more = {}) const
    {
        return runProgram(QStringList{u"--init-server"_s} + args +
                          QStringList{u"--hospital-number"_s, u"07B"_s, u"--hospital-name"_s,
                                      u"ST. ÀNNE'S [EAST] CLINIC"_s, u"--admin"_s, kAdmin} +
                          more);
    }
    Outcome initDesk(const QString& home, const QString& user) const
    {
        return runProgram(
            QStringList{u"--init-desk"_s, home, u"--server"_s, args[0], u"--user"_s, user} +
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
    EXPECT_TRUE(first.out.contains(u"administrator "_s + kAdmin));
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), db::latestSchemaVersion());
    EXPECT_EQ(target
                  ->scalar(u"SELECT count(*) FROM vwUsers WHERE Username = ? "
                           "AND HName = ? AND LoginRole IN (?, ?)"_s,
                           {kAdmin, u"ST. ÀNNE'S [EAST] CLINIC"_s, u"RECORDS"_s, u"MANAGEMENT"_s})
                  .toInt(),
              2);
    // The private payer and no invented one, no patients; numbers carry the hospital's.
    const QString state =
        u"SELECT (SELECT count(*) FROM hRetainership) || ' ' || (SELECT min(retainID) FROM "
        "hRetainership) || ' ' || (SELECT count(*) FROM hPatients) || ' ' || (SELECT prefix "
        "FROM idgen WHERE destName = 'PATIENT2') || ' ' || (SELECT count(*) FROM AppDefaults) "
        "|| ' ' || (SELECT count(*) FROM UserRoles)"_s;
    const QString before = target->scalar(state).toString();
    EXPECT_EQ(before.section(QLatin1Char(' '), 0, 3), u"1 0001 0 07B/"_s);

    const Outcome second = target->initServer();
    EXPECT_EQ(second.status, 0) << second.err.toStdString();
    EXPECT_TRUE(second.out.contains(u"nothing changed"_s));
    EXPECT_EQ(target->scalar(state).toString(), before);

    QTemporaryDir desks;
    const QString home = desks.filePath(u"desk"_s);
    Outcome r = target->initDesk(home, kAdmin.toUpper());
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(files::readLines(home + u"/made.sys"_s)->last(), u"HNO=07B"_s);
    r = runProgram({u"--home"_s, home, u"--screenshot"_s, desks.filePath(u"shot.png"_s)});
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
    EXPECT_TRUE(r.out.contains(u"%1 "_s.arg(latest, 3, 10, QLatin1Char('0'))));
    EXPECT_TRUE(r.err.contains(u"--upgrade"_s)) << r.err.toStdString();
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), previous);

    r = target->initServer({u"--upgrade"_s});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), latest);

    db::Connection(target->config, db::Database::Hospital)
        .exec(u"INSERT INTO schema_version VALUES (?, 'future', '2030-01-01')"_s, {latest + 1});
    r = target->initServer({u"--upgrade"_s});
    EXPECT_EQ(r.status, kExitSchema);
    EXPECT_TRUE(r.err.contains(newerSchemaMessage(latest + 1, latest).section('\r', 0, 0)));
}

TEST_P(InitServer, AFailureHalfWayLeavesNothingItMade)
{
    // Something already there under a name a later step needs: the set-up gets that far,
    // fails, and takes away what it made, and only that.
    const bool lite = GetParam() == db::Backend::Sqlite;
    if (lite) {
        QDir().mkpath(target->config.sqliteDir + u"/SmsCenter.db"_s);
    } else {
        pgAdminExec(u"CREATE DATABASE "_s + target->database);
        db::Connection(target->config, db::Database::Hospital)
            .execScript(
                u"CREATE SCHEMA smscenter; "
                "CREATE SEQUENCE smscenter.messageout"_s);
    }
    const Outcome r = target->initServer();
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.err.contains(u"nothing was kept"_s)) << r.err.toStdString();
    if (lite)
        EXPECT_EQ(QDir(target->config.sqliteDir).entryList(QDir::Files), QStringList());
    else
        EXPECT_EQ(target
                      ->scalar(u"SELECT string_agg(nspname, ',') FROM pg_namespace WHERE "
                               "nspname IN ('hospital', 'hospitalarchive', 'master', "
                               "'smscenter', 'accounting')"_s)
                      .toString(),
                  u"smscenter"_s);
}

TOLMAR_INSTANTIATE_BACKENDS(InitServer);

TEST(InitServerRefuses, BadInputWithAClearMessageAndNothingMade)
{
    if (!haveBinary())
        GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
    QTemporaryDir dir;
    const QString lite = u"sqlite:"_s + dir.path();
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
        pgAdminExec(u"CREATE DATABASE "_s + foreign->database);
        db::Connection(foreign->config, db::Database::Hospital)
            .execScript(u"CREATE TABLE public.invoices (id integer)"_s);
        cases.push_back({kPg + "/x;drop", "007", "admin", {}, "not a database name"});
        cases.push_back({kPg + "/tolmar_never", "007", "admin", "no_role", "refused the login"});
        cases.push_back({kPg + "/" + foreign->database, "007", "admin", {}, "not this program's"});
    }
    for (const Case& c : cases) {
        QProcessEnvironment env;
        if (!c.dbUser.isEmpty())
            env.insert(u"TOLMAR_DB_USER"_s, c.dbUser);
        const Outcome r = runProgram(
            {u"--init-server"_s, c.server, u"--hospital-number"_s, c.hno, u"--admin"_s, c.admin},
            env);
        EXPECT_NE(r.status, 0) << c.says;
        EXPECT_TRUE(r.err.contains(QLatin1String(c.says))) << r.err.toStdString();
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{u"plain-file"_s});

    if (foreign)
        EXPECT_EQ(foreign
                      ->scalar(u"SELECT count(*) FROM pg_namespace "
                               "WHERE nspname = 'hospital'"_s)
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
    const QString good = dir.filePath(u"good"_s);
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
        const Outcome r =
            runProgram({u"--init-desk"_s, c.home, u"--server"_s, c.server, u"--user"_s, c.user});
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
    ws.exec(u"INSERT INTO hPatients (PNo, psurname) VALUES (?, ?)"_s,
            {u"001/000000042"_s, u"ÒKÉ-D'SOUZA"_s});
    Target restored(db::Backend::Postgres);
    QTemporaryDir dir;
    const QString dump = dir.filePath(u"tolmar.dump"_s);
    auto run = [&](const QString& tool, const QStringList& args) {
        QProcess p;
        p.start(bin + QLatin1Char('/') + tool,
                QStringList{u"-h"_s, ws.server().host, u"-p"_s, QString::number(ws.server().port),
                            u"-U"_s, qEnvironmentVariable("TOLMAR_DB_USER", u"postgres"_s)} +
                    args);
        p.waitForFinished(120000);
        return p.exitCode() == 0 ? QString()
                                 : tool + QString::fromLocal8Bit(p.readAllStandardError());
    };
    ASSERT_EQ(run(u"pg_dump"_s, {u"-Fc"_s, u"-f"_s, dump, ws.server().pgDatabase}), QString());
    pgAdminExec(u"CREATE DATABASE "_s + restored.database);
    ASSERT_EQ(run(u"pg_restore"_s,
                  {u"--no-owner"_s, u"--exit-on-error"_s, u"-d"_s, restored.database, dump}),
              QString());

    // Every table of the five schemas holds as many rows as the original.
    auto counts = [](const db::ServerConfig& c) {
        db::Connection h(c, db::Database::Hospital);
        QStringList out;
        for (const db::Row& t : h.query(u"SELECT table_schema || '.' || table_name AS t FROM "
                                        "information_schema.tables WHERE table_type = 'BASE TABLE' "
                                        "AND table_schema NOT IN ('pg_catalog', "
                                        "'information_schema') ORDER BY 1"_s)
                                    .rows)
            out << t.text(u"t") + QLatin1Char('=') +
                       h.scalar(u"SELECT count(*) FROM "_s + t.text(u"t")).toString();
        return out;
    };
    const QStringList original = counts(ws.server());
    EXPECT_GT(original.size(), 50);
    EXPECT_EQ(counts(restored.config), original);
    EXPECT_EQ(
        restored.scalar(u"SELECT psurname FROM hPatients WHERE PNo = ?"_s, {u"001/000000042"_s})
            .toString(),
        u"ÒKÉ-D'SOUZA"_s);

    const QString home = dir.filePath(u"desk"_s);
    Outcome r = restored.initDesk(home, u"demo"_s);
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    r = runProgram({u"--home"_s, home, u"--screenshot"_s, dir.filePath(u"shot.png"_s)});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
}
