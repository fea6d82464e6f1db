#include "core/installation.h"

#include "core/appdefaults.h"
#include "core/session.h"
#include "core/startup.h"
#include "platform/files.h"
#include "platform/local.h"
#include "platform/schema.h"
#include "security/rights.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>

namespace tolmar::install {

namespace {

constexpr int kExitFailed = 1;

void say(const SetupLog& log, const QString& line)
{
    if (log)
        log(line);
}

QString readResource(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw SetupError(QStringLiteral("Cannot read %1").arg(path));
    return QString::fromUtf8(f.readAll());
}

QString sqliteFile(const db::ServerConfig& c, db::Database d)
{
    return QDir(c.sqliteDir).filePath(db::databaseName(d) + QStringLiteral(".db"));
}

// The nearest folder of `path` that does not exist yet and would be made for it, or "" when
// the path is there already: what to remove if the set-up fails half-way.
QString firstMissingFolder(const QString& path)
{
    QString missing;
    for (QString p = QDir::cleanPath(QDir(path).absolutePath()); !QFileInfo::exists(p);
         p = QFileInfo(p).absolutePath()) {
        missing = p;
        if (QFileInfo(p).absolutePath() == p)
            break;
    }
    return missing;
}

void checkName(const QString& value, const QRegularExpression& pattern, const QString& what)
{
    if (!pattern.match(value).hasMatch())
        throw SetupError(what.arg(value));
}

// A PostgreSQL server's maintenance database: it answers whether the server is reachable,
// the login accepted and the database there, before anything is made.
db::ServerConfig maintenance(const db::ServerConfig& c)
{
    db::ServerConfig m = c;
    m.pgDatabase = QStringLiteral("postgres");
    return m;
}

std::unique_ptr<db::Connection> connectOrExplain(const db::ServerConfig& c)
{
    try {
        return std::make_unique<db::Connection>(c, db::Database::Hospital);
    } catch (const db::DbError& e) {
        throw SetupError(QStringLiteral("Cannot reach the database server %1:%2 or it refused "
                                        "the login: %3")
                             .arg(c.host)
                             .arg(c.port)
                             .arg(e.description()));
    }
}

bool pgDatabaseExists(const db::ServerConfig& c)
{
    auto m = connectOrExplain(maintenance(c));
    return m->queryOne(QStringLiteral("SELECT 1 FROM pg_database WHERE datname = ?"),
                       {c.pgDatabase})
        .has_value();
}

// What a server holds before the set-up touches it.
struct Survey {
    bool databaseExists = false;        // PostgreSQL database, or all five SQLite files
    QStringList existingSchemas;        // PostgreSQL: ours among them
    int version = 0;
    bool foreignData = false;           // tables or views that are not ours
};

Survey survey(const db::ServerConfig& c)
{
    Survey s;
    if (c.backend == db::Backend::Sqlite) {
        int present = 0;
        for (db::Database d : db::kAllDatabases)
            present += QFileInfo(sqliteFile(c, d)).isFile() ? 1 : 0;
        if (present == 0)
            return s;
        if (present < int(std::size(db::kAllDatabases)))
            throw SetupError(QStringLiteral("%1 holds only some of the five database files; "
                                            "it is not a database of this program.")
                                 .arg(c.sqliteDir));
        s.databaseExists = true;
        s.version = db::SchemaMigrator(c).currentVersion();
        if (s.version == 0) {
            db::Connection h(c, db::Database::Hospital);
            s.foreignData = h.scalar(QStringLiteral("SELECT count(*) FROM main.sqlite_master "
                                                    "WHERE type IN ('table', 'view')"))
                                .toInt() > 0;
        }
        return s;
    }
    s.databaseExists = pgDatabaseExists(c);
    if (!s.databaseExists)
        return s;
    auto h = connectOrExplain(c);
    for (const db::Row& r : h->query(QStringLiteral("SELECT nspname FROM pg_namespace")).rows)
        s.existingSchemas << r.text(u"nspname");
    s.version = db::SchemaMigrator(c).currentVersion();
    if (s.version == 0)
        s.foreignData = h->scalar(QStringLiteral(
                                      "SELECT count(*) FROM information_schema.tables WHERE "
                                      "table_schema NOT IN ('pg_catalog', 'information_schema')"))
                            .toInt() > 0;
    return s;
}

// Takes away what a failed first set-up made, and only that.
void undoFreshSetup(const db::ServerConfig& c, const Survey& before, const QString& madeFolder)
{
    if (c.backend == db::Backend::Sqlite) {
        if (!madeFolder.isEmpty()) {
            QDir(madeFolder).removeRecursively();
            return;
        }
        for (db::Database d : db::kAllDatabases)
            for (const char* suffix : {"", "-wal", "-shm", "-journal"})
                QFile::remove(sqliteFile(c, d) + QLatin1String(suffix));
        return;
    }
    auto m = connectOrExplain(maintenance(c));
    if (!before.databaseExists) {
        // The name was checked before the database was made (DDL takes no bound names).
        m->execScript(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(c.pgDatabase));
        return;
    }
    db::Connection h(c, db::Database::Hospital);
    for (db::Database d : db::kAllDatabases) {
        const QString schema = db::databaseName(d).toLower();
        if (!before.existingSchemas.contains(schema))
            h.execScript(QStringLiteral("DROP SCHEMA IF EXISTS %1 CASCADE").arg(schema));
    }
}

void addAdministrator(const db::ServerConfig& c, const QString& user, const QString& hospID)
{
    db::Connection h(c, db::Database::Hospital);
    db::Transaction tx(h);
    h.exec(QStringLiteral("INSERT INTO ApplicationUsers (Username, Fullname, Password, "
                          "AccountStatus, EmpID, hospID) VALUES (?, ?, '', 'Enabled', ?, ?)"),
           // The desks sign what they register with the employee id.
           {user, QStringLiteral("ADMINISTRATOR"), QStringLiteral("ADMIN"), hospID});
    h.exec(QStringLiteral("INSERT INTO UserRoles (RoleID, Username) SELECT RoleID, ? FROM Roles "
                          "WHERE LoginRole IN (?, ?)"),
           {user, kLoginRole, QStringLiteral("MANAGEMENT")});
    tx.commit();
}

QString stepList(const QList<int>& versions)
{
    QStringList lines;
    for (const db::Migration& m : db::availableMigrations())
        if (versions.contains(m.version))
            lines << QStringLiteral("  %1 %2").arg(m.version, 3, 10, QLatin1Char('0')).arg(m.name);
    return lines.join(QLatin1Char('\n'));
}

QList<int> stepsAbove(int version)
{
    QList<int> out;
    for (const db::Migration& m : db::availableMigrations())
        if (m.version > version)
            out << m.version;
    return out;
}

// SQLite applies a step database by database; a copy of the five files taken before the
// upgrade puts them back whole if a step fails.
class SqliteSnapshot {
public:
    explicit SqliteSnapshot(const db::ServerConfig& c) : m_config(c)
    {
        m_dir = QDir(c.sqliteDir).filePath(QStringLiteral(".before-upgrade"));
        QDir(m_dir).removeRecursively();
        if (!QDir().mkpath(m_dir))
            throw SetupError(QStringLiteral("Cannot write in %1").arg(c.sqliteDir));
        for (db::Database d : db::kAllDatabases)
            if (!QFile::copy(sqliteFile(c, d), QDir(m_dir).filePath(db::databaseName(d))))
                throw SetupError(QStringLiteral("Cannot copy %1 before the upgrade")
                                     .arg(sqliteFile(c, d)));
    }
    ~SqliteSnapshot() { QDir(m_dir).removeRecursively(); }
    void restore()
    {
        for (db::Database d : db::kAllDatabases) {
            const QString file = sqliteFile(m_config, d);
            for (const char* suffix : {"", "-wal", "-shm"})
                QFile::remove(file + QLatin1String(suffix));
            QFile::copy(QDir(m_dir).filePath(db::databaseName(d)), file);
        }
    }

private:
    db::ServerConfig m_config;
    QString m_dir;
};

void upgrade(const db::ServerConfig& c, int from, const ServerSetup& setup)
{
    std::unique_ptr<SqliteSnapshot> snapshot;
    if (c.backend == db::Backend::Sqlite)
        snapshot = std::make_unique<SqliteSnapshot>(c);
    db::SchemaMigrator migrator(c);
    try {
        migrateWithDefaults(migrator, from, setup.log);
    } catch (const std::exception& e) {
        QString where;
        if (snapshot) {
            snapshot->restore();
            where = QStringLiteral("the files are as they were, at version %1").arg(from);
        } else {
            where = QStringLiteral("the database stays at version %1, the last step that "
                                   "completed").arg(migrator.currentVersion());
        }
        throw SetupError(QStringLiteral("The upgrade failed (%1): %2")
                             .arg(where, QString::fromLocal8Bit(e.what())));
    }
    say(setup.log, QStringLiteral("Upgraded %1 to version %2.")
                       .arg(c.describe())
                       .arg(db::latestSchemaVersion()));
}

void createFresh(const db::ServerConfig& c, const Survey& before, const ServerSetup& setup)
{
    const QString madeFolder =
        c.backend == db::Backend::Sqlite ? firstMissingFolder(c.sqliteDir) : QString();
    try {
        if (c.backend == db::Backend::Sqlite && !QDir().mkpath(c.sqliteDir))
            throw SetupError(QStringLiteral("Cannot create the folder %1").arg(c.sqliteDir));
        db::SchemaMigrator migrator(c);
        migrator.createDatabases();
        migrateWithDefaults(migrator, 0);
        writeHospital(c, setup.hospital);
        addAdministrator(c, setup.admin, setup.hospital.number);
    } catch (const std::exception& e) {
        const QString why = QString::fromLocal8Bit(e.what());
        try {
            undoFreshSetup(c, before, madeFolder);
        } catch (const std::exception& cleanup) {
            throw SetupError(QStringLiteral("The set-up failed: %1\nWhat it made could not all "
                                            "be removed: %2")
                                 .arg(why, QString::fromLocal8Bit(cleanup.what())));
        }
        throw SetupError(QStringLiteral("The set-up failed and nothing was kept: %1").arg(why));
    }
    say(setup.log, QStringLiteral("Made on %1:").arg(c.describe()));
    say(setup.log, QStringLiteral("  the five databases HOSPITAL, HOSPITALArchive, Master, "
                                  "SmsCenter, Accounting at schema version %1")
                       .arg(db::latestSchemaVersion()));
    say(setup.log, QStringLiteral("  the settings, lists and private payer every installation "
                                  "starts from (db/defaults)"));
    say(setup.log,
        QStringLiteral("  hospital %1, %2").arg(setup.hospital.number, setup.hospital.name));
    say(setup.log, QStringLiteral("  administrator %1 holding RECORDS and MANAGEMENT")
                       .arg(setup.admin));
}

}  // namespace

db::ServerConfig serverConfig(const QString& server, const QString& database)
{
    db::ServerConfig c = db::ServerConfig::fromServerName(server, QDir::currentPath());
    if (c.backend == db::Backend::Postgres && !database.isEmpty())
        c.pgDatabase = database;
    // Database and schema names go into DDL, which cannot bind them: letters, digits and
    // underscore only.
    static const QRegularExpression ok(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]{0,62}$"));
    if (c.backend == db::Backend::Postgres) {
        checkName(c.pgDatabase, ok,
                  QStringLiteral("\"%1\" is not a database name this program makes: use "
                                 "letters, digits and underscore."));
        if (c.host.isEmpty())
            throw SetupError(QStringLiteral("No server named: give HOST[:PORT] or sqlite:DIR."));
    }
    return c;
}

QList<int> migrateWithDefaults(db::SchemaMigrator& migrator, int from, const SetupLog& log)
{
    // Each step begins with CREATE TABLE IF NOT EXISTS schema_version, and the server's
    // notice about it, once a step, would bury the summary the administrator reads.
    if (qEnvironmentVariableIsEmpty("PGOPTIONS"))
        qputenv("PGOPTIONS", "-c client_min_messages=warning");
    const QList<int> steps = stepsAbove(from);
    int done = from;
    for (int v : steps) {
        migrator.migrate(v);
        writeDefaults(migrator, done, v);
        say(log, QStringLiteral("  step %1 applied").arg(v, 3, 10, QLatin1Char('0')));
        done = v;
    }
    return steps;
}

void writeDefaults(db::SchemaMigrator& migrator, int from, int to)
{
    static const QRegularExpression number(QStringLiteral("^(\\d+)_"));
    QDir dir(QStringLiteral(":/db/defaults"));
    for (const QString& f : dir.entryList({QStringLiteral("*.sql")}, QDir::Files, QDir::Name)) {
        const int v = number.match(f).captured(1).toInt();
        if (v > from && v <= to)
            migrator.runScript(readResource(dir.filePath(f)));
    }
}

void writeHospital(const db::ServerConfig& config, const HospitalInfo& h)
{
    db::Connection c(config, db::Database::Hospital);
    db::Transaction tx(c);
    c.exec(QStringLiteral("INSERT INTO hHospital (hospID, HName, HNo, Address, PhoneNo) "
                          "VALUES (?, ?, ?, ?, ?)"),
           {h.number, h.name, h.number, h.address, h.phone});
    // Patient numbers are the hospital number and a slash, then digits; visit numbers the
    // hospital number, then digits. The counters hold the last number handed out.
    c.exec(QStringLiteral("INSERT INTO idgen (destName, id, prefix, width) VALUES "
                          "('PATIENT2', 0, ?, 9), ('ConsultID2', 0, ?, 9), ('Patient', 0, '', 0)"),
           {h.number + QLatin1Char('/'), h.number});
    tx.commit();
}

void initServer(const ServerSetup& setup)
{
    static const QRegularExpression hno(QStringLiteral("^[A-Za-z0-9]{3}$"));
    checkName(setup.hospital.number, hno,
              QStringLiteral("The hospital number \"%1\" must be three letters or digits "
                             "(it starts every patient number)."));
    const QString admin = setup.admin.trimmed();
    if (admin.isEmpty() || admin.size() > 50 || admin.contains(QLatin1Char('\n')) ||
        admin.contains(QLatin1Char('\r')))
        throw SetupError(QStringLiteral("The administrator's user name must be one line of "
                                        "1 to 50 characters."));
    ServerSetup s = setup;
    s.admin = admin;
    if (s.hospital.name.trimmed().isEmpty())
        s.hospital.name = QStringLiteral("HOSPITAL %1").arg(s.hospital.number);

    const db::ServerConfig c = serverConfig(setup.server, setup.database);
    Survey before;
    try {
        before = survey(c);
    } catch (const db::DbError& e) {
        throw SetupError(QStringLiteral("Cannot read %1: %2").arg(c.describe(), e.description()));
    }
    const int latest = db::latestSchemaVersion();
    if (before.version > latest)
        throw SetupError(newerSchemaMessage(before.version, latest), kExitSchema);
    if (before.version == latest) {
        say(setup.log, QStringLiteral("%1 is already set up at schema version %2; nothing "
                                      "changed.")
                           .arg(c.describe())
                           .arg(latest));
        return;
    }
    if (before.version > 0) {
        const QList<int> steps = stepsAbove(before.version);
        say(setup.log, QStringLiteral("%1 is at schema version %2; this program needs %3. "
                                      "The steps to run, each in its own transaction:\n%4")
                           .arg(c.describe())
                           .arg(before.version)
                           .arg(latest)
                           .arg(stepList(steps)));
        if (!setup.upgrade)
            throw SetupError(QStringLiteral("Nothing was changed. Stop every desk, back the "
                                            "database up, and run again with --upgrade."),
                             kExitSchema);
        upgrade(c, before.version, s);
        return;
    }
    if (before.foreignData)
        throw SetupError(QStringLiteral("%1 already holds tables that are not this program's; "
                                        "nothing was changed. Name another database.")
                             .arg(c.describe()));
    createFresh(c, before, s);
}

void initDesk(const DeskSetup& setup)
{
    if (setup.dir.trimmed().isEmpty())
        throw SetupError(QStringLiteral("--init-desk needs the desk's folder."));
    if (setup.server.trimmed().isEmpty())
        throw SetupError(QStringLiteral("--init-desk needs --server HOST[:PORT] (or sqlite:DIR)."));
    const QString user = setup.user.trimmed();
    if (user.isEmpty())
        throw SetupError(QStringLiteral("No user name: give --user NAME."));
    const QDir dir(QDir(setup.dir).absolutePath());
    if (QFileInfo::exists(dir.filePath(QStringLiteral("made.sys"))))
        throw SetupError(QStringLiteral("%1 is already a desk's folder (it holds made.sys); "
                                        "nothing was changed.")
                             .arg(dir.path()));

    // The server first: a desk that cannot start is not worth writing.
    const db::ServerConfig c = serverConfig(setup.server, setup.database);
    QString hospitalNumber = setup.hospitalNumber;
    try {
        if (c.backend == db::Backend::Postgres && !pgDatabaseExists(c))
            throw SetupError(QStringLiteral("The database %1 does not exist on %2:%3; set the "
                                            "server up first with --init-server.")
                                 .arg(c.pgDatabase, c.host)
                                 .arg(c.port));
        const int version = db::SchemaMigrator(c).currentVersion();
        if (version == 0)
            throw SetupError(QStringLiteral("%1 is not set up; run --init-server first.")
                                 .arg(c.describe()));
        db::Connection h(c, db::Database::Hospital);
        const auto row = security::roleHolder(h, user, kLoginRole);
        if (!row)
            throw SetupError(QStringLiteral("The user %1 does not exist on %2 or does not hold "
                                            "the %3 role.")
                                 .arg(user, c.describe(), kLoginRole));
        if (hospitalNumber.isEmpty())
            hospitalNumber = h.scalar(QStringLiteral("SELECT HNo FROM hHospital WHERE hospID = ?"),
                                      {row->text(u"hospID")})
                                 .toString();
    } catch (const db::DbError& e) {
        throw SetupError(QStringLiteral("Cannot read %1: %2").arg(c.describe(), e.description()));
    }

    const QString made = firstMissingFolder(dir.path());
    const QString reportsMade = firstMissingFolder(dir.filePath(QStringLiteral("Reports/RECORDS")));
    QStringList written;
    try {
        if (!QDir().mkpath(dir.filePath(QStringLiteral("Reports/RECORDS"))))
            throw SetupError(QStringLiteral("Cannot create %1").arg(dir.path()));
        if (!reportsMade.isEmpty())
            written << reportsMade;
        // A relative SQLite folder was meant from here, not from the desk's folder, where
        // the start-up resolves it.
        QString serverName = c.backend == db::Backend::Sqlite
                                 ? QStringLiteral("sqlite:") + c.sqliteDir
                                 : setup.server.trimmed();
        if (c.backend == db::Backend::Postgres && !setup.database.isEmpty())
            serverName += QLatin1Char('/') + setup.database;
        for (const QString& f : {QStringLiteral("made.sys"), QStringLiteral("sysdoc.sys"),
                                 QStringLiteral("key.db")})
            written << dir.filePath(f);
        files::writeLines(dir.filePath(QStringLiteral("made.sys")),
                          {QStringLiteral("SVR=") + serverName,
                           QStringLiteral("HNO=") + hospitalNumber});
        files::writeLines(dir.filePath(QStringLiteral("sysdoc.sys")), {user});
        local::createKeyDb(dir.filePath(QStringLiteral("key.db")));
        local::openKeyDb(dir.filePath(QStringLiteral("key.db")))
            ->exec(QStringLiteral("INSERT INTO Locations (LocID, LocName) VALUES (?, ?)"),
                   {serverName, QStringLiteral("MAIN SERVER")});
    } catch (const std::exception& e) {
        if (!made.isEmpty()) {
            QDir(made).removeRecursively();
        } else {
            for (const QString& f : written) {
                QFile::remove(f);
                QDir(f).removeRecursively();
            }
        }
        throw SetupError(QStringLiteral("The desk could not be set up in %1, and nothing was "
                                        "kept: %2")
                             .arg(dir.path(), QString::fromLocal8Bit(e.what())));
    }
    say(setup.log, QStringLiteral("Desk set up in %1 for %2 on %3 (hospital %4): made.sys, "
                                  "sysdoc.sys, key.db, Reports/RECORDS.")
                       .arg(dir.path(), user, c.describe(), hospitalNumber));
}

QString helpText()
{
    return QStringLiteral(
        "Records and front desk of the hospital.\n\n"
        "Setting a hospital up:\n"
        "  --init-server HOST[:PORT] [--database NAME] --hospital-number HNO --admin USER\n"
        "      once, for the server (or --init-server sqlite:DIR for a single desk);\n"
        "      run again with --upgrade after installing a newer program.\n"
        "  --init-desk DIR --server HOST[:PORT] [--user NAME]   once per desk.\n\n"
        "Backups (see /usr/share/doc/tolmar-records/backup.md):\n"
        "  PostgreSQL: pg_dump -Fc -h HOST -d tolmar -f tolmar.dump takes all five schemas;\n"
        "      pg_restore -h HOST -d NEWDB tolmar.dump into an empty database brings them back.\n"
        "  SQLite: copy the five .db files of the folder while no desk runs, or\n"
        "      sqlite3 DIR/HOSPITAL.db \".backup HOSPITAL.db\" (and the other four) while\n"
        "      they run.");
}

QString defaultHome(const QString& programDir)
{
    if (QFileInfo::exists(QDir(programDir).filePath(QStringLiteral("made.sys"))))
        return programDir;
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("tolmar-records"));
}

}  // namespace tolmar::install
