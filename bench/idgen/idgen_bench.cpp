// How many identifiers per second the series hands out: on one kept connection (the
// statement alone), on several connections drawing at once (the desks of a busy morning),
// and through getIDNo at a desk (what a save really pays). Ratios are
// against one kept connection on the same backend in the same run.
#include "core/appcontext.h"
#include "core/idgen.h"
#include "platform/prompt.h"
#include "platform/db.h"
#include "platform/schema.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

using namespace tolmar;

namespace {

constexpr int kMillis = 1500;
const QString kSeries = QStringLiteral("BENCH");

struct Rate {
    double perSecond = 0;
    qint64 draws = 0;
};

// `connections` threads, each on a connection of its own, draw for kMillis.
Rate drawOnKeptConnections(const db::ServerConfig& server, int connections)
{
    std::atomic<qint64> total{0};
    std::atomic<bool> go{false}, stop{false};
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < connections; ++i) {
        threads.emplace_back([&] {
            db::Connection c(server, db::Database::Hospital);
            drawIdentifier(c, kSeries);  // the statement is prepared before the clock runs
            ++ready;
            while (!go)
                std::this_thread::yield();
            qint64 n = 0;
            while (!stop) {
                if (drawIdentifier(c, kSeries).isEmpty())
                    std::abort();
                ++n;
            }
            total += n;
        });
    }
    while (ready < connections)
        std::this_thread::yield();
    QElapsedTimer t;
    t.start();
    go = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(kMillis));
    stop = true;
    for (auto& th : threads)
        th.join();
    const double secs = t.nsecsElapsed() / 1e9;
    return {total / secs, total};
}

// getIDNo itself, through a desk's context: the draw connection is opened once and kept
// for the run, as at a real desk, so what a save pays is the statement and its round trip.
Rate drawThroughGetIDNo(const db::ServerConfig& server)
{
    ScriptedPrompter prompter;
    Clock clock;
    AppContext ctx(QDir::tempPath(), prompter, clock);
    ctx.setServer(server);
    QElapsedTimer t;
    t.start();
    qint64 n = 0;
    while (t.elapsed() < kMillis) {
        if (getIDNo(ctx, kSeries).isEmpty())
            std::abort();
        ++n;
    }
    return {n / (t.nsecsElapsed() / 1e9), n};
}

void prepare(const db::ServerConfig& server)
{
    db::SchemaMigrator m(server);
    m.createDatabases();
    m.migrate();
    db::Connection c(server, db::Database::Hospital);
    c.exec(QStringLiteral("INSERT INTO idgen (destName, id, prefix, width) VALUES (?, 0, ?, 9)"),
           {kSeries, QStringLiteral("001")});
}

void run(const char* name, const db::ServerConfig& server)
{
    prepare(server);
    qint64 drawn = 0;
    const Rate base = drawOnKeptConnections(server, 1);
    std::printf("%-11s %-32s %8.0f draws/s  (x1.00)\n", name, "1 kept connection",
                base.perSecond);
    drawn += base.draws + 1;
    for (int n : {2, 4, 8}) {
        const Rate r = drawOnKeptConnections(server, n);
        drawn += r.draws + n;
        const QString label = QStringLiteral("%1 connections at once").arg(n);
        std::printf("%-11s %-32s %8.0f draws/s  (x%.2f)\n", name, qPrintable(label),
                    r.perSecond, r.perSecond / base.perSecond);
    }
    const Rate own = drawThroughGetIDNo(server);
    drawn += own.draws;
    std::printf("%-11s %-32s %8.0f draws/s  (x%.2f)\n", name, "getIDNo at a desk",
                own.perSecond, own.perSecond / base.perSecond);
    // Every draw must have left its mark on the counter: nothing shared, nothing lost.
    db::Connection c(server, db::Database::Hospital);
    const qint64 last =
        c.scalar(QStringLiteral("SELECT id FROM idgen WHERE destName = ?"), {kSeries}).toLongLong();
    std::printf("%-11s counter at %lld after %lld draws: %s\n", name,
                static_cast<long long>(last), static_cast<long long>(drawn),
                last == drawn ? "none shared, none lost" : "MISMATCH");
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    std::printf("getIDNo draw rate, %d ms per measurement, %u hardware threads\n", kMillis,
                std::thread::hardware_concurrency());
    try {
        QTemporaryDir dir;
        run("SQLite", db::ServerConfig::fromServerName(QStringLiteral("sqlite:") + dir.path()));

        const QString pg = qEnvironmentVariable("TOLMAR_TEST_PG");
        if (pg.isEmpty()) {
            std::printf("PostgreSQL  skipped (TOLMAR_TEST_PG names no server)\n");
            return 0;
        }
        const QString name =
            QStringLiteral("tolmar_bench_idgen_%1").arg(QCoreApplication::applicationPid());
        run("PostgreSQL", db::ServerConfig::fromServerName(pg + QLatin1Char('/') + name));
        db::Connection admin(db::ServerConfig::fromServerName(pg + QStringLiteral("/postgres")),
                             db::Database::Hospital);
        admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(name));
    } catch (const db::DbError& e) {
        std::fprintf(stderr, "%s\n", qPrintable(e.description()));
        return 1;
    }
    return 0;
}
