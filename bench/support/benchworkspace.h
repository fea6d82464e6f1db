#pragma once
// A demo workspace of many generated patients, made once under a folder and reused by
// later runs of any benchmark: generating a million patients takes minutes.

#include "core/appcontext.h"
#include "core/clock.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>

namespace tolmar::bench {

struct BenchWorkspace {
    QString home;
    db::ServerConfig server;
};

// The workspace of `patients` generated patients under `dir`, on SQLite when `pgServer` is
// empty, else on that PostgreSQL server ("host:port") in a database of its own.
BenchWorkspace prepareWorkspace(const QString& dir, const QString& pgServer, qint64 patients);

// The folder shared by the benchmarks unless one is given.
QString defaultBenchDir();

// The options of every benchmark on a generated workspace: its size, the PostgreSQL server
// (TOLMAR_TEST_PG unless given) and the folder it is kept in.
struct WorkspaceOptions {
    QCommandLineOption patients{QStringLiteral("patients"), QStringLiteral("patients"),
                                QStringLiteral("N"), QStringLiteral("1000000")};
    QCommandLineOption pg{QStringLiteral("pg"), QStringLiteral("PostgreSQL HOST:PORT"),
                          QStringLiteral("HOST"), qEnvironmentVariable("TOLMAR_TEST_PG")};
    QCommandLineOption dir{QStringLiteral("dir"), QStringLiteral("workspace folder"),
                           QStringLiteral("DIR"), defaultBenchDir()};
    void addTo(QCommandLineParser& cl) const { cl.addOptions({patients, pg, dir}); }
};

// A desk on a workspace, started up as a desk starts in the morning, with a scripted person
// and the machine's clock. Throws when the start-up does not get through.
class BenchDesk {
public:
    explicit BenchDesk(const QString& home);
    AppContext& ctx() { return m_ctx; }
    ScriptedPrompter& prompter() { return m_prompter; }

private:
    ScriptedPrompter m_prompter;
    Clock m_clock;
    AppContext m_ctx;
};

// Progress and failures, on stderr so that stdout carries the figures only.
void say(const QString& line);

}  // namespace tolmar::bench
