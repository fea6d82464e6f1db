#include "workspace.h"

#include "core/demoworkspace.h"
#include "core/installation.h"
#include "core/startup.h"
#include "platform/schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QDirIterator>

#include <atomic>
#include <mutex>

namespace tolmar::test {

namespace {

QString pgServer() { return qEnvironmentVariable("TOLMAR_TEST_PG"); }

// One migrated copy per process and backend; each test copies it, which is far quicker
// than migrating again.
struct Templates {
    std::once_flag sqliteOnce, pgOnce;
    std::unique_ptr<QTemporaryDir> sqliteDir;
    QString pgTemplate;
    std::atomic<int> counter{0};

    void dropPostgres()
    {
        if (pgTemplate.isEmpty())
            return;
        try {
            auto c = db::ServerConfig::fromServerName(pgServer() + QStringLiteral("/postgres"));
            db::Connection admin(c, db::Database::Hospital);
            admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS ") + pgTemplate +
                             QStringLiteral(" WITH (FORCE)"));
        } catch (...) {
        }
        pgTemplate.clear();
    }

    QString sqliteTemplate()
    {
        std::call_once(sqliteOnce, [this] {
            sqliteDir = std::make_unique<QTemporaryDir>();
            auto config = db::ServerConfig::fromServerName(QStringLiteral("sqlite:") +
                                                           sqliteDir->path());
            db::SchemaMigrator m(config);
            m.createDatabases();
            install::migrateWithDefaults(m, 0);
            writeDemoData(config);
        });
        return sqliteDir->path();
    }

    QString postgresTemplate()
    {
        std::call_once(pgOnce, [this] {
            const QString name =
                QStringLiteral("tolmar_tmpl_%1").arg(QCoreApplication::applicationPid());
            auto config = db::ServerConfig::fromServerName(pgServer() + QLatin1Char('/') + name);
            {
                db::Connection admin(
                    db::ServerConfig::fromServerName(pgServer() + QStringLiteral("/postgres")),
                    db::Database::Hospital);
                admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS ") + name);
            }
            db::SchemaMigrator m(config);
            m.createDatabases();
            install::migrateWithDefaults(m, 0);
            writeDemoData(config);
            pgTemplate = name;
        });
        return pgTemplate;
    }
};

Templates& templates()
{
    static Templates t;
    return t;
}

}  // namespace

void dropTemplates() { templates().dropPostgres(); }

std::vector<db::Backend> backends()
{
    std::vector<db::Backend> b{db::Backend::Sqlite};
    if (!pgServer().isEmpty())
        b.push_back(db::Backend::Postgres);
    return b;
}

std::string backendName(const testing::TestParamInfo<db::Backend>& info)
{
    return info.param == db::Backend::Sqlite ? "SQLite" : "PostgreSQL";
}

Workspace::Workspace(db::Backend backend)
{
    if (!m_home.isValid())
        throw std::runtime_error("no temporary folder");
    QDir(m_home.path()).mkpath(QStringLiteral("Reports"));
    if (backend == db::Backend::Sqlite) {
        const QString from = templates().sqliteTemplate();
        const QString data = m_home.filePath(QStringLiteral("data"));
        QDir().mkpath(data);
        for (db::Database d : db::kAllDatabases) {
            const QString file = db::databaseName(d) + QStringLiteral(".db");
            if (!QFile::copy(QDir(from).filePath(file), QDir(data).filePath(file)))
                throw std::runtime_error("cannot copy the template database");
        }
        m_serverName = QStringLiteral("sqlite:") + data;
    } else {
        const QString tmpl = templates().postgresTemplate();
        m_pgDatabase = QStringLiteral("tolmar_t_%1_%2")
                           .arg(QCoreApplication::applicationPid())
                           .arg(templates().counter.fetch_add(1));
        db::Connection admin(
            db::ServerConfig::fromServerName(pgServer() + QStringLiteral("/postgres")),
            db::Database::Hospital);
        admin.execScript(QStringLiteral("CREATE DATABASE %1 TEMPLATE %2").arg(m_pgDatabase, tmpl));
        m_serverName = pgServer() + QLatin1Char('/') + m_pgDatabase;
    }
    m_server = db::ServerConfig::fromServerName(m_serverName);
}

Workspace::~Workspace()
{
    if (m_pgDatabase.isEmpty())
        return;
    try {
        db::Connection admin(
            db::ServerConfig::fromServerName(pgServer() + QStringLiteral("/postgres")),
            db::Database::Hospital);
        admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(m_pgDatabase));
    } catch (...) {
    }
}

void Workspace::writeFile(const QString& name, const QStringList& lines)
{
    QFile f(m_home.filePath(name));
    if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("cannot write " + name.toStdString());
    for (const QString& l : lines)
        f.write((l + QStringLiteral("\r\n")).toUtf8());
}

void Workspace::writeSettings(const QString& user)
{
    writeFile(QStringLiteral("made.sys"),
              {QStringLiteral("SVR=") + m_serverName, QStringLiteral("HNO=001")});
    writeFile(QStringLiteral("sysdoc.sys"), {user});
}

std::unique_ptr<db::Connection> Workspace::connect(db::Database which) const
{
    return std::make_unique<db::Connection>(m_server, which);
}

int Workspace::exec(const QString& sql, const db::Params& params, db::Database which) const
{
    return connect(which)->exec(sql, params);
}

QVariant Workspace::scalar(const QString& sql, const db::Params& params,
                           db::Database which) const
{
    return connect(which)->scalar(sql, params);
}

void Workspace::setDefault(const QString& key, const std::optional<QString>& value,
                           db::Database which) const
{
    auto c = connect(which);
    c->exec(QStringLiteral("DELETE FROM AppDefaults WHERE ID = ?"), {key});
    if (value)
        c->exec(QStringLiteral("INSERT INTO AppDefaults (ID, IDVal) VALUES (?, ?)"),
                {key, value->isNull() ? QVariant() : QVariant(*value)});
}

Desk::Desk(const Workspace& w, QDateTime serverNow)
    : ws(w), clock(serverNow), ctx(w.home(), prompter, clock)
{
    ctx.setServer(w.server());
    ctx.endProcess = [this](int code) { endedWith.push_back(code); };
}

void Desk::startUp()
{
    const_cast<Workspace&>(ws).writeSettings();
    const auto r = runStartup(ctx);
    ASSERT_EQ(r.outcome, StartupResult::Ok) << r.message.toStdString();
}

}  // namespace tolmar::test
