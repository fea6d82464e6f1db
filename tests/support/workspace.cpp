#include "workspace.h"

#include "core/demoworkspace.h"
#include "core/installation.h"
#include "core/startup.h"
#include "platform/schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QDirIterator>
#include <QProcess>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tolmar::test {

namespace {

// The five databases of a new installation with the demo data, at `config`.
void buildDatabases(const db::ServerConfig& config)
{
    db::SchemaMigrator m(config);
    m.createDatabases();
    install::migrateWithDefaults(m, 0);
    writeDemoData(config);
}

QString pgServer() { return qEnvironmentVariable("TOLMAR_TEST_PG"); }

std::unique_ptr<db::Connection> maintenance(const QString& server)
{
    return std::make_unique<db::Connection>(
        db::ServerConfig::fromServerName(server + QStringLiteral("/postgres")),
        db::Database::Hospital);
}

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
            maintenance(pgServer())->execScript(QStringLiteral("DROP DATABASE IF EXISTS ") +
                                                pgTemplate + QStringLiteral(" WITH (FORCE)"));
        } catch (...) {
        }
        pgTemplate.clear();
    }

    QString sqliteTemplate()
    {
        std::call_once(sqliteOnce, [this] {
            sqliteDir = std::make_unique<QTemporaryDir>();
            buildDatabases(db::ServerConfig::fromServerName(QStringLiteral("sqlite:") +
                                                            sqliteDir->path()));
        });
        return sqliteDir->path();
    }

    QString postgresTemplate()
    {
        std::call_once(pgOnce, [this] {
            const QString name =
                QStringLiteral("tolmar_tmpl_%1").arg(QCoreApplication::applicationPid());
            maintenance(pgServer())->execScript(QStringLiteral("DROP DATABASE IF EXISTS ") + name);
            buildDatabases(db::ServerConfig::fromServerName(pgServer() + QLatin1Char('/') + name));
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
        m_pgServer = pgServer();
        m_pgDatabase = QStringLiteral("tolmar_t_%1_%2")
                           .arg(QCoreApplication::applicationPid())
                           .arg(templates().counter.fetch_add(1));
        maintenance(m_pgServer)->execScript(
            QStringLiteral("CREATE DATABASE %1 TEMPLATE %2").arg(m_pgDatabase, tmpl));
        m_serverName = m_pgServer + QLatin1Char('/') + m_pgDatabase;
    }
    m_server = db::ServerConfig::fromServerName(m_serverName);
}

Workspace::Workspace(const QString& pgServer)
    : m_serverName(pgServer + QStringLiteral("/tolmar_own")), m_pgServer(pgServer),
      m_pgDatabase(QStringLiteral("tolmar_own"))
{
    QDir(m_home.path()).mkpath(QStringLiteral("Reports"));
    m_server = db::ServerConfig::fromServerName(m_serverName);
    buildDatabases(m_server);
}

Workspace::~Workspace()
{
    if (m_pgDatabase.isEmpty())
        return;
    try {
        maintenance(m_pgServer)->execScript(
            QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(m_pgDatabase));
    } catch (...) {
    }
}

// ---------------------------------------------------------------------------------------

namespace {

// A port nobody listens on now: the one the system gives a socket bound to port 0.
int freePort()
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof a;
    int port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len) == 0)
        port = ntohs(a.sin_port);
    ::close(fd);
    return port;
}

}  // namespace

std::unique_ptr<ScratchServer> ScratchServer::create()
{
    QStringList bins = QDir(QStringLiteral("/usr/lib/postgresql"))
                           .entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    std::sort(bins.begin(), bins.end(),
              [](const QString& a, const QString& b) { return a.toInt() < b.toInt(); });
    if (bins.isEmpty())
        return nullptr;
    std::unique_ptr<ScratchServer> s(new ScratchServer);
    s->m_bin = QStringLiteral("/usr/lib/postgresql/%1/bin/").arg(bins.last());
    if (::geteuid() == 0) {
        const passwd* pg = ::getpwnam("postgres");
        if (!pg || ::chown(QFile::encodeName(s->m_dir.path()).constData(), pg->pw_uid,
                           pg->pw_gid) != 0)
            throw std::runtime_error("cannot hand the scratch server's folder to postgres");
    }
    s->m_port = freePort();
    s->run(QStringLiteral("initdb"),
           {QStringLiteral("-D"), s->m_dir.filePath(QStringLiteral("data")), QStringLiteral("-A"),
            QStringLiteral("trust"), QStringLiteral("-U"), QStringLiteral("postgres"),
            QStringLiteral("-E"), QStringLiteral("UTF8"), QStringLiteral("--locale=C.UTF-8"),
            QStringLiteral("--no-sync")});
    s->start();
    return s;
}

ScratchServer::~ScratchServer()
{
    try {
        run(QStringLiteral("pg_ctl"), {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")),
                                       QStringLiteral("-m"), QStringLiteral("immediate"),
                                       QStringLiteral("stop")});
    } catch (...) {
    }
}

void ScratchServer::start()
{
    run(QStringLiteral("pg_ctl"),
        {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")), QStringLiteral("-l"),
         m_dir.filePath(QStringLiteral("server.log")), QStringLiteral("-w"), QStringLiteral("-o"),
         QStringLiteral("-p %1 -k %2 -c listen_addresses=127.0.0.1 -c fsync=off "
                        "-c synchronous_commit=off -c full_page_writes=off")
             .arg(m_port)
             .arg(m_dir.path()),
         QStringLiteral("start")});
}

void ScratchServer::stop()
{
    run(QStringLiteral("pg_ctl"), {QStringLiteral("-D"), m_dir.filePath(QStringLiteral("data")),
                                   QStringLiteral("-m"), QStringLiteral("fast"),
                                   QStringLiteral("-w"), QStringLiteral("stop")});
}

void ScratchServer::run(const QString& program, const QStringList& args) const
{
    QStringList command{m_bin + program};
    command << args;
    if (::geteuid() == 0)
        command = QStringList{QStringLiteral("-u"), QStringLiteral("postgres"),
                              QStringLiteral("--")} + command;
    QProcess p;
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(::geteuid() == 0 ? QStringLiteral("runuser") : command.takeFirst(), command);
    if (!p.waitForFinished(120000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        throw std::runtime_error((program + QStringLiteral(" failed: ") +
                                  QString::fromLocal8Bit(p.readAll()))
                                     .toStdString());
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

int atManyDesks(const Workspace& ws, int desks, int saves,
                const std::function<bool(Desk&, int d, int n)>& save)
{
    { Desk warm(ws); warm.startUp(); }  // migrations once, before the desks race
    std::atomic<int> failures{0};
    std::vector<std::unique_ptr<QThread>> threads;
    for (int d = 0; d < desks; ++d) {
        threads.emplace_back(QThread::create([&, d] {
            // The settings files were written once above; rewriting them from every thread
            // would let one desk read another's half-written file.
            Desk desk(ws);
            if (runStartup(desk.ctx).outcome != StartupResult::Ok) {
                failures += saves;
                ADD_FAILURE() << "desk " << d << " did not start";
                return;
            }
            for (int n = 0; n < saves; ++n) {
                try {
                    if (!save(desk, d, n))
                        ++failures;
                } catch (const std::exception& e) {
                    ++failures;
                    ADD_FAILURE() << "desk " << d << ": " << e.what();
                }
            }
        }));
        threads.back()->start();
    }
    for (auto& t : threads)
        t->wait();
    return failures.load();
}

}  // namespace tolmar::test
