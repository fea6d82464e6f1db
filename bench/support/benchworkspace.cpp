#include "benchworkspace.h"

#include "core/demoworkspace.h"
#include "core/startup.h"
#include "platform/files.h"

#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace tolmar::bench {

void say(const QString& line)
{
    std::fprintf(stderr, "%s\n", qPrintable(line));
    std::fflush(stderr);
}

BenchDesk::BenchDesk(const QString& home) : m_ctx(home, m_prompter, m_clock)
{
    m_ctx.endProcess = [](int) {};
    const auto r = runStartup(m_ctx);
    if (r.outcome != StartupResult::Ok)
        throw std::runtime_error("start-up failed: " + r.message.toStdString());
}

QString defaultBenchDir() { return QStringLiteral("/tmp/tolmar-bench"); }

BenchWorkspace prepareWorkspace(const QString& dir, const QString& pgServer, qint64 patients)
{
    const QString tag =
        QStringLiteral("%1-%2").arg(pgServer.isEmpty() ? "sqlite" : "pg").arg(patients);
    BenchWorkspace w;
    w.home = QDir(dir).filePath(tag);
    const QString server = pgServer.isEmpty() ? QString()
                                              : pgServer + QStringLiteral("/tolmar_bench_") +
                                                    QString::number(patients);
    const QString serverName = server.isEmpty() ? QStringLiteral("sqlite:") +
                                                      QDir(w.home).filePath(QStringLiteral("data"))
                                                : server;
    w.server = db::ServerConfig::fromServerName(serverName, w.home);
    // Marked ready only once filled: a run stopped half-way is made again. A PostgreSQL
    // workspace also remembers its server, since a throwaway server takes its data along.
    const QString ready = QDir(w.home).filePath(QStringLiteral("bench-ready"));
    if (QFileInfo::exists(ready)) {
        if (w.server.backend == db::Backend::Sqlite)
            return w;
        try {
            db::Connection c(w.server, db::Database::Hospital);
            if (c.scalar(QStringLiteral("select count(*) from hPatients")).toLongLong() >=
                patients)
                return w;
        } catch (const db::DbError&) {
            // gone with an earlier server: made again below
        }
    }
    QDir(w.home).removeRecursively();
    if (w.server.backend == db::Backend::Postgres) {
        db::ServerConfig maintenance = w.server;
        maintenance.pgDatabase = QStringLiteral("postgres");
        db::Connection c(maintenance, db::Database::Hospital);
        c.execScript(QStringLiteral("DROP DATABASE IF EXISTS ") + w.server.pgDatabase);
    }
    say(QStringLiteral("Making the workspace %1 with %2 patients").arg(w.home).arg(patients));
    DemoOptions o;
    o.dir = w.home;
    o.server = server;
    o.patients = patients;
    o.log = [](const QString& line) { say(QStringLiteral("  ") + line); };
    createDemoWorkspace(o);
    // Earlier mornings have swept the cards that ran out before today.
    db::Connection c(w.server, db::Database::Hospital);
    const QDate today =
        db::variantDateTime(c.scalar(QStringLiteral("select sysDT from qrySysDateTime"))).date();
    c.exec(
        QStringLiteral("update hPatients set expired = 1 where expirydate <= ? and expired = 0"),
        {today});
    files::writeLines(ready, {QString::number(patients)});
    return w;
}

}  // namespace tolmar::bench
