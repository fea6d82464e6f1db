#include "platform/schema.h"

#include "platform/sqlsplit.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <functional>

namespace tolmar::db {

namespace {

QString backendFolder(Backend b)
{
    return b == Backend::Sqlite ? QStringLiteral("sqlite") : QStringLiteral("postgres");
}

QString readResource(const QString& path)
{
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        throw DbError(QStringLiteral("Cannot read %1").arg(path));
    return QString::fromUtf8(f.readAll());
}

struct Section {
    Database db;
    QString text;
};

std::vector<Section> sections(const QString& text, Database defaultDb)
{
    static const QRegularExpression marker(QStringLiteral("^--@db\\s+(\\w+)\\s*$"),
                                           QRegularExpression::MultilineOption);
    std::vector<Section> out;
    Database current = defaultDb;
    qsizetype pos = 0;
    auto it = marker.globalMatch(text);
    while (it.hasNext()) {
        const auto m = it.next();
        const QString chunk = text.mid(pos, m.capturedStart() - pos);
        if (!chunk.trimmed().isEmpty())
            out.push_back({current, chunk});
        const auto db = databaseFromName(m.captured(1));
        if (!db)
            throw DbError(QStringLiteral("Unknown database in script: %1").arg(m.captured(1)));
        current = *db;
        pos = m.capturedEnd();
    }
    const QString tail = text.mid(pos);
    if (!tail.trimmed().isEmpty())
        out.push_back({current, tail});
    return out;
}

void runInOwnConnection(const QString& driver, const QString& name,
                        const std::function<void(QSqlDatabase&)>& setup,
                        const QStringList& statements)
{
    {
        QSqlDatabase d = QSqlDatabase::addDatabase(driver, name);
        setup(d);
        if (!d.open()) {
            const QString err = d.lastError().text();
            d = QSqlDatabase();
            QSqlDatabase::removeDatabase(name);
            throw DbError(err);
        }
        for (const QString& s : statements) {
            QSqlQuery q(d);
            if (!q.exec(s)) {
                const QString err = q.lastError().databaseText().isEmpty()
                                        ? q.lastError().text()
                                        : q.lastError().databaseText();
                q = QSqlQuery();
                d.close();
                d = QSqlDatabase();
                QSqlDatabase::removeDatabase(name);
                throw DbError(err, s);
            }
        }
        d.close();
    }
    QSqlDatabase::removeDatabase(name);
}

}  // namespace

std::vector<Migration> availableMigrations(Backend backend)
{
    const QString folder = QStringLiteral(":/db/schema/") + backendFolder(backend);
    std::vector<Migration> out;
    static const QRegularExpression re(QStringLiteral("^(\\d+)_(.+)\\.sql$"));
    for (const QString& f : QDir(folder).entryList({QStringLiteral("*.sql")}, QDir::Files)) {
        const auto m = re.match(f);
        if (!m.hasMatch())
            continue;
        out.push_back({m.captured(1).toInt(), m.captured(2), folder + QLatin1Char('/') + f});
    }
    std::sort(out.begin(), out.end(),
              [](const Migration& a, const Migration& b) { return a.version < b.version; });
    return out;
}

int latestSchemaVersion(Backend backend)
{
    const auto all = availableMigrations(backend);
    return all.empty() ? 0 : all.back().version;
}

void SchemaMigrator::createDatabases()
{
    if (m_config.backend == Backend::Sqlite) {
        QDir().mkpath(m_config.sqliteDir);
        for (Database d : kAllDatabases) {
            const QString file =
                QDir(m_config.sqliteDir).filePath(databaseName(d) + QStringLiteral(".db"));
            runInOwnConnection(
                QStringLiteral("QSQLITE"), QStringLiteral("tolmar-create-") + databaseName(d),
                [&](QSqlDatabase& db) { db.setDatabaseName(file); },
                // WAL lets the desks read while one of them writes; it stays on the file.
                {QStringLiteral("PRAGMA journal_mode=WAL")});
        }
        return;
    }
    // PostgreSQL: the database itself may have to be made first, from the maintenance db.
    ServerConfig maint = m_config;
    maint.pgDatabase = QStringLiteral("postgres");
    bool exists = false;
    {
        Connection c(maint, Database::Hospital);
        exists = c.queryOne(QStringLiteral("SELECT 1 FROM pg_database WHERE datname = ?"),
                            {m_config.pgDatabase})
                     .has_value();
        if (!exists) {
            static const QRegularExpression ok(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
            if (!ok.match(m_config.pgDatabase).hasMatch())
                throw DbError(QStringLiteral("Invalid database name: %1").arg(m_config.pgDatabase));
            c.execScript(QStringLiteral("CREATE DATABASE ") + m_config.pgDatabase);
        }
    }
    Connection c(m_config, Database::Hospital);
    for (Database d : kAllDatabases)
        c.execScript(QStringLiteral("CREATE SCHEMA IF NOT EXISTS ") + databaseName(d).toLower());
}

int SchemaMigrator::currentVersion()
{
    Connection c(m_config, Database::Hospital);
    const QString probe = m_config.backend == Backend::Sqlite
                              ? QStringLiteral("SELECT count(*) FROM main.sqlite_master "
                                               "WHERE type='table' AND name='schema_version'")
                              : QStringLiteral("SELECT count(*) FROM information_schema.tables "
                                               "WHERE table_schema='hospital' "
                                               "AND table_name='schema_version'");
    if (c.scalar(probe).toInt() == 0)
        return 0;
    return c.scalar(QStringLiteral("SELECT COALESCE(MAX(version),0) FROM schema_version")).toInt();
}

int SchemaMigrator::migrate(int upTo)
{
    {
        Connection c(m_config, Database::Hospital);
        c.execScript(QStringLiteral(
            "CREATE TABLE IF NOT EXISTS schema_version (version INTEGER PRIMARY KEY, "
            "name VARCHAR(200) NOT NULL, applied_at VARCHAR(30) NOT NULL)"));
    }
    const int current = currentVersion();
    int applied = 0;
    for (const Migration& m : availableMigrations(m_config.backend)) {
        if (m.version <= current)
            continue;
        if (upTo >= 0 && m.version > upTo)
            break;
        apply(m);
        ++applied;
    }
    return applied;
}

void SchemaMigrator::apply(const Migration& m)
{
    const QString text = readResource(m.resource);
    const auto parts = sections(text, Database::Hospital);
    auto record = [&](Connection& c) {
        c.exec(QStringLiteral("INSERT INTO schema_version (version, name, applied_at) "
                              "VALUES (?, ?, ?)"),
               {m.version, m.name,
                QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))});
    };
    try {
        if (m_config.backend == Backend::Postgres) {
            // One connection, one transaction for the whole file: DDL is transactional here.
            Connection c(m_config, Database::Hospital);
            Transaction tx(c);
            for (const Section& s : parts) {
                QStringList path{databaseName(s.db).toLower()};
                for (Database other : kAllDatabases)
                    if (other != s.db)
                        path << databaseName(other).toLower();
                path << QStringLiteral("public");
                c.execScript(QStringLiteral("SET LOCAL search_path TO ") + path.join(QLatin1Char(',')));
                c.execScript(s.text);
            }
            c.execScript(QStringLiteral("SET LOCAL search_path TO hospital,public"));
            record(c);
            tx.commit();
            return;
        }
        for (const Section& s : parts) {
            Connection c(m_config, s.db);
            Transaction tx(c);
            c.execScript(s.text);
            tx.commit();
        }
        Connection c(m_config, Database::Hospital);
        record(c);
    } catch (const DbError& e) {
        throw DbError(QStringLiteral("Migration %1 (%2) failed: %3")
                          .arg(m.version)
                          .arg(m.name, e.description()),
                      e.statement());
    }
}

void SchemaMigrator::runScript(const QString& text, Database defaultDb)
{
    for (const Section& s : sections(text, defaultDb)) {
        Connection c(m_config, s.db);
        Transaction tx(c);
        c.execScript(s.text);
        tx.commit();
    }
}

}  // namespace tolmar::db
