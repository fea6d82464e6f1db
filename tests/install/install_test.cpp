// A hospital set up the way its administrator does it, through the real program: the server
// without demo data, run twice, upgraded only when asked, refused when newer, and left
// untouched by a failure; a desk against it; a PostgreSQL dump restored and opened.
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

db::ServerConfig pgAdmin()
{
    return db::ServerConfig::fromServerName(kPg + QStringLiteral("/postgres"));
}

void pgAdminExec(const QString& ddl)
{
    db::Connection(pgAdmin(), db::Database::Hospital).execScript(ddl);
}

// Where one test puts its server: a folder of SQLite files, or a PostgreSQL database of its
// own on the test server (dropped at the end).
struct Target {
    explicit Target(db::Backend backend)
    {
        if (backend == db::Backend::Sqlite) {
            server = QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("data"));
            args = {server};
        } else {
            static int n = 0;
            database = QStringLiteral("tolmar_inst_%1_%2").arg(QCoreApplication::applicationPid()).arg(n++);
            server = kPg + QLatin1Char('/') + database;
            args = {kPg, QStringLiteral("--database"), database};
        }
        config = db::ServerConfig::fromServerName(server);
    }
    ~Target()
    {
        if (!database.isEmpty())
            pgAdminExec(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(database));
    }
    bool exists() const
    {
        if (database.isEmpty())
            return QFileInfo::exists(config.sqliteDir);
        return db::Connection(pgAdmin(), db::Database::Hospital)
            .queryOne(QStringLiteral("SELECT 1 FROM pg_database WHERE datname = ?"), {database})
            .has_value();
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
                                      QStringLiteral("--admin"), QStringLiteral("o'neil.admin")} +
                          more);
    }
    Outcome initDesk(const QString& home, const QString& user) const
    {
        QStringList a{QStringLiteral("--init-desk"), home, QStringLiteral("--server"), args[0],
                      QStringLiteral("--user"), user};
        return runProgram(a + args.mid(1));
    }
    // What a second run must leave as it was.
    QString fingerprint() const
    {
        QStringList counts;
        for (const char* t : {"AppDefaults", "ApplicationUsers", "UserRoles", "hRetainership",
                              "idgen", "hHospital", "schema_version", "hICDCodes"})
            counts << scalar(QStringLiteral("SELECT count(*) FROM %1").arg(QLatin1String(t))).toString();
        return counts.join(QLatin1Char(','));
    }

    QTemporaryDir dir;
    QString server, database;
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
    // A server left at an older version by an earlier program.
    void makeOlder(int version)
    {
        db::SchemaMigrator m(target->config);
        m.createDatabases();
        m.migrate(version);
        install::writeDefaults(m, 0, version);
    }
    std::unique_ptr<Target> target;
};

}  // namespace

TEST_P(InitServer, FreshServerHoldsDefaultsAndOneAdministratorThenADeskStartsOnIt)
{
    const Outcome first = target->initServer();
    ASSERT_EQ(first.status, 0) << first.err.toStdString();
    EXPECT_TRUE(first.out.contains(QStringLiteral("administrator o'neil.admin"))) << first.out.toStdString();
    const int latest = db::latestSchemaVersion();
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT max(version) FROM schema_version")).toInt(), latest);
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT count(*) FROM vwUsers WHERE Username = ? AND "
                                            "HName = ? AND LoginRole IN ('RECORDS', 'MANAGEMENT')"),
                             {QStringLiteral("o'neil.admin"), QStringLiteral("ST. ÀNNE'S [EAST] CLINIC")})
                  .toInt(),
              2);
    // The private payer and no invented one, no patients; numbers carry the hospital's.
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT count(*) FROM hRetainership")).toInt(), 1);
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT retainID FROM hRetainership")).toString(),
              QStringLiteral("0001"));
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT count(*) FROM hPatients")).toInt(), 0);
    EXPECT_EQ(target->scalar(QStringLiteral("SELECT prefix FROM idgen WHERE destName = 'PATIENT2'")).toString(),
              QStringLiteral("07B/"));

    const QString before = target->fingerprint();
    const Outcome second = target->initServer();
    EXPECT_EQ(second.status, 0) << second.err.toStdString();
    EXPECT_TRUE(second.out.contains(QStringLiteral("nothing changed"))) << second.out.toStdString();
    EXPECT_EQ(target->fingerprint(), before);

    QTemporaryDir desks;
    const QString home = desks.filePath(QStringLiteral("desk"));
    Outcome r = target->initDesk(home, QStringLiteral("O'NEIL.ADMIN"));
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(files::readLines(home + QStringLiteral("/made.sys"))->last(), QStringLiteral("HNO=07B"));
    r = runProgram({QStringLiteral("--home"), home, QStringLiteral("--screenshot"),
                    desks.filePath(QStringLiteral("shot.png"))});
    EXPECT_EQ(r.status, 0) << r.err.toStdString();
}

TEST_P(InitServer, OlderSchemaIsUpgradedOnlyWhenAskedAndNewerIsRefused)
{
    const int latest = db::latestSchemaVersion();
    makeOlder(latest - 1);
    Outcome r = target->initServer();
    EXPECT_EQ(r.status, kExitSchema);
    EXPECT_TRUE(r.out.contains(QStringLiteral("%1 ").arg(latest, 3, 10, QLatin1Char('0'))))
        << r.out.toStdString();
    EXPECT_TRUE(r.err.contains(QStringLiteral("--upgrade"))) << r.err.toStdString();
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), latest - 1);

    r = target->initServer({QStringLiteral("--upgrade")});
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(db::SchemaMigrator(target->config).currentVersion(), latest);

    db::Connection(target->config, db::Database::Hospital)
        .exec(QStringLiteral("INSERT INTO schema_version (version, name, applied_at) VALUES (?, ?, ?)"),
              {latest + 1, QStringLiteral("future"), QStringLiteral("2030-01-01 00:00:00")});
    r = target->initServer({QStringLiteral("--upgrade")});
    EXPECT_EQ(r.status, kExitSchema);
    EXPECT_TRUE(r.err.contains(newerSchemaMessage(latest + 1, latest).section(QLatin1Char('\r'), 0, 0)))
        << r.err.toStdString();
}

TEST_P(InitServer, AFailureHalfWayLeavesNothingItMade)
{
    // Something already there under the name a later step needs: the set-up gets that far,
    // fails, and takes away what it made, and only that.
    if (GetParam() == db::Backend::Sqlite) {
        QDir().mkpath(target->config.sqliteDir + QStringLiteral("/SmsCenter.db"));
    } else {
        pgAdminExec(QStringLiteral("CREATE DATABASE ") + target->database);
        db::Connection(target->config, db::Database::Hospital)
            .execScript(QStringLiteral("CREATE SCHEMA smscenter; CREATE SEQUENCE smscenter.messageout"));
    }
    const Outcome r = target->initServer();
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.err.contains(QStringLiteral("nothing was kept"))) << r.err.toStdString();
    if (GetParam() == db::Backend::Sqlite) {
        EXPECT_EQ(QDir(target->config.sqliteDir).entryList(QDir::Files), QStringList());
    } else {
        EXPECT_EQ(target->scalar(QStringLiteral("SELECT string_agg(nspname, ',') FROM pg_namespace "
                                                "WHERE nspname IN ('hospital', 'master', "
                                                "'smscenter', 'accounting', 'hospitalarchive')"))
                      .toString(),
                  QStringLiteral("smscenter"));
    }
}

TOLMAR_INSTANTIATE_BACKENDS(InitServer);

TEST(InitServerRefuses, BadInputWithAClearMessageAndNothingMade)
{
    if (!haveBinary())
        GTEST_SKIP() << "TOLMAR_BINARY is not set (run through ctest)";
    QTemporaryDir dir;
    const QString aFile = dir.filePath(QStringLiteral("plain-file"));
    files::writeLines(aFile, {QStringLiteral("x")});
    struct Case {
        const char* name;
        QString server;
        QString hno;
        QString admin;
        QString dbUser;  // the PostgreSQL login, when the case is about it
        const char* says;
    };
    std::vector<Case> cases = {
        {"short hospital number", QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("a")),
         QStringLiteral("07"), QStringLiteral("admin"), {}, "three letters or digits"},
        {"no administrator", QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("b")),
         QStringLiteral("007"), QStringLiteral(" "), {}, "1 to 50 characters"},
        {"folder not writable", QStringLiteral("sqlite:") + aFile + QStringLiteral("/data"),
         QStringLiteral("007"), QStringLiteral("admin"), {}, "Cannot create the folder"},
    };
    if (!kPg.isEmpty()) {
        cases.push_back({"database name is not a plain name", kPg + QStringLiteral("/x;drop"),
                         QStringLiteral("007"), QStringLiteral("admin"), {}, "not a database name"});
        cases.push_back({"login refused", kPg + QStringLiteral("/tolmar_never_made"),
                         QStringLiteral("007"), QStringLiteral("admin"),
                         QStringLiteral("no_such_role"), "refused the login"});
    }
    for (const Case& c : cases) {
        QProcessEnvironment env;
        if (!c.dbUser.isEmpty())
            env.insert(QStringLiteral("TOLMAR_DB_USER"), c.dbUser);
        const Outcome r = runProgram({QStringLiteral("--init-server"), c.server,
                                      QStringLiteral("--hospital-number"), c.hno,
                                      QStringLiteral("--admin"), c.admin},
                                     env);
        EXPECT_NE(r.status, 0) << c.name;
        EXPECT_TRUE(r.err.contains(QLatin1String(c.says))) << c.name << ": " << r.err.toStdString();
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("plain-file")});

    if (kPg.isEmpty())
        GTEST_SKIP() << "the database that is not ours needs TOLMAR_TEST_PG";
    Target other(db::Backend::Postgres);
    pgAdminExec(QStringLiteral("CREATE DATABASE ") + other.database);
    db::Connection(other.config, db::Database::Hospital)
        .execScript(QStringLiteral("CREATE TABLE public.invoices (id integer)"));
    const Outcome r = other.initServer();
    EXPECT_NE(r.status, 0);
    EXPECT_TRUE(r.err.contains(QStringLiteral("not this program's"))) << r.err.toStdString();
    EXPECT_EQ(other.scalar(QStringLiteral("SELECT count(*) FROM pg_namespace WHERE nspname = 'hospital'")).toInt(), 0);
}

// A desk against a running server with the demo's users: the folder is written only when the
// server answers and the user may run the module.
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
    const QString aFile = dir.filePath(QStringLiteral("plain-file"));
    files::writeLines(aFile, {QStringLiteral("x")});
    const bool pg = GetParam() == db::Backend::Postgres;
    struct Case {
        const char* name;
        QString server;
        QString user;
        QString home;
        const char* says;  // nullptr: it succeeds
    };
    const std::vector<Case> cases = {
        {"good", ws->serverName(), QStringLiteral("demo"), dir.filePath(QStringLiteral("good")), nullptr},
        {"unknown user", ws->serverName(), QStringLiteral("nobody"), dir.filePath(QStringLiteral("u")),
         "does not exist"},
        {"user without the module's role", ws->serverName(), QStringLiteral("cashier"),
         dir.filePath(QStringLiteral("c")), "does not hold the RECORDS role"},
        {"folder not writable", ws->serverName(), QStringLiteral("demo"), aFile + QStringLiteral("/desk"),
         "could not be set up"},
        {"database missing",
         pg ? kPg + QStringLiteral("/tolmar_never_made") : QStringLiteral("sqlite:") + dir.filePath(QStringLiteral("none")),
         QStringLiteral("demo"), dir.filePath(QStringLiteral("m")), pg ? "does not exist on" : "not found"},
        {"server unreachable", pg ? QStringLiteral("127.0.0.1:1") : QString(), QStringLiteral("demo"),
         dir.filePath(QStringLiteral("r")), pg ? "Cannot reach the database server" : "needs --server"},
    };
    for (const Case& c : cases) {
        const Outcome r = runProgram({QStringLiteral("--init-desk"), c.home, QStringLiteral("--server"),
                                      c.server, QStringLiteral("--user"), c.user});
        if (!c.says) {
            ASSERT_EQ(r.status, 0) << c.name << ": " << r.err.toStdString();
            for (const char* f : {"made.sys", "sysdoc.sys", "key.db", "Reports/RECORDS"})
                EXPECT_TRUE(QFileInfo::exists(c.home + QLatin1Char('/') + QLatin1String(f))) << f;
            const Outcome again = runProgram({QStringLiteral("--init-desk"), c.home,
                                              QStringLiteral("--server"), c.server});
            EXPECT_NE(again.status, 0) << "a desk's folder is not written over";
            continue;
        }
        EXPECT_NE(r.status, 0) << c.name;
        EXPECT_TRUE(r.err.contains(QLatin1String(c.says))) << c.name << ": " << r.err.toStdString();
        EXPECT_FALSE(QFileInfo::exists(c.home)) << c.name << ": a half-made folder is left";
    }
}

TOLMAR_INSTANTIATE_BACKENDS(InitDesk);

// The backup the notes tell the administrator to take: pg_dump of the one database, restored
// with pg_restore into a new one, holds every row and starts a desk.
TEST(Backup, PgDumpRestoredIntoANewDatabaseOpensInTheProgram)
{
    if (!haveBinary() || kPg.isEmpty())
        GTEST_SKIP() << "needs TOLMAR_BINARY and TOLMAR_TEST_PG (PostgreSQL)";
    QString bin = qEnvironmentVariable("TOLMAR_PG_BIN");
    if (bin.isEmpty()) {
        QStringList versions = QDir(QStringLiteral("/usr/lib/postgresql")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        std::sort(versions.begin(), versions.end(),
                  [](const QString& a, const QString& b) { return a.toDouble() < b.toDouble(); });
        ASSERT_FALSE(versions.isEmpty()) << "no PostgreSQL under /usr/lib/postgresql";
        bin = QStringLiteral("/usr/lib/postgresql/%1/bin").arg(versions.last());
    }
    Workspace ws(db::Backend::Postgres);
    ws.exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName) VALUES (?, ?, ?)"),
            {QStringLiteral("001/000000042"), QStringLiteral("ÒKÉ-D'SOUZA"), QStringLiteral("ÀDÁ")});
    Target restored(db::Backend::Postgres);
    QTemporaryDir dir;
    const QString dump = dir.filePath(QStringLiteral("tolmar.dump"));
    const QString host = ws.server().host, port = QString::number(ws.server().port);
    const QString user = qEnvironmentVariable("TOLMAR_DB_USER", QStringLiteral("postgres"));
    auto run = [&](const QString& tool, const QStringList& args) {
        QProcess p;
        p.start(bin + QLatin1Char('/') + tool,
                QStringList{QStringLiteral("-h"), host, QStringLiteral("-p"), port,
                            QStringLiteral("-U"), user} + args);
        p.waitForFinished(120000);
        return p.exitCode() == 0 ? QString() : QString::fromLocal8Bit(p.readAllStandardError()) + tool;
    };
    ASSERT_EQ(run(QStringLiteral("pg_dump"), {QStringLiteral("-Fc"), QStringLiteral("-d"),
                                              ws.server().pgDatabase, QStringLiteral("-f"), dump}),
              QString());
    pgAdminExec(QStringLiteral("CREATE DATABASE ") + restored.database);
    ASSERT_EQ(run(QStringLiteral("pg_restore"), {QStringLiteral("--no-owner"), QStringLiteral("--exit-on-error"),
                                                 QStringLiteral("-d"), restored.database, dump}),
              QString());

    // Every table of the five schemas holds as many rows as the original.
    auto counts = [](const db::ServerConfig& c) {
        db::Connection h(c, db::Database::Hospital);
        QStringList out;
        for (const db::Row& t : h.query(QStringLiteral(
                                          "SELECT table_schema || '.' || table_name AS t FROM "
                                          "information_schema.tables WHERE table_type = 'BASE TABLE' "
                                          "AND table_schema <> 'pg_catalog' AND table_schema <> "
                                          "'information_schema' ORDER BY 1"))
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
