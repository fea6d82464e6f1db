// Start-up to a shown main window: the start-up routine, the window's load (activity row,
// expiry sweep of cards) and the first paint, timed on a workspace of many generated
// patients with a few thousand private cards falling due, beside the same on an empty
// workspace. Runs on SQLite, and on PostgreSQL when TOLMAR_TEST_PG (or --pg) names a server.
//
//   startup_bench [--patients N] [--due N] [--runs N] [--pg HOST:PORT] [--dir DIR]
//
// The large workspace is kept under DIR (default /tmp/tolmar-bench) and reused by later runs
// of this and the other benchmarks.

#include "benchworkspace.h"

#include "core/appcontext.h"
#include "core/mditolmar.h"
#include "core/startup.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace tolmar;

namespace {

using bench::BenchWorkspace;
using bench::say;

// Puts `due` private cards back to falling due today, so the sweep has work to do.
int armDueCards(const BenchWorkspace& w, int due)
{
    db::Connection c(w.server, db::Database::Hospital);
    const QDate today =
        db::variantDateTime(c.scalar(QStringLiteral("select sysDT from qrySysDateTime"))).date();
    // The slice is the private patients with the lowest numbers; the same on every run.
    c.exec(QStringLiteral("update hPatients set expirydate = ?, expired = 0 where PNo in "
                          "(select PNo from hPatients where expirydate is not null "
                          "order by PNo LIMIT ?)"),
           {today, due});
    return c
        .scalar(QStringLiteral("select count(*) from hPatients where expired = 0 "
                               "and expirydate <= ?"),
                {today})
        .toInt();
}

struct Timing {
    double ms = 0;
    int swept = 0;
};

// One start of the program up to its main window on screen, in this process.
Timing startOnce(const BenchWorkspace& w)
{
    ScriptedPrompter prompter;
    Clock clock;
    QElapsedTimer t;
    t.start();
    Timing out;
    {
        AppContext ctx(w.home, prompter, clock);
        const auto r = runStartup(ctx);
        if (r.outcome != StartupResult::Ok) {
            say(QStringLiteral("start-up failed: %1").arg(r.message));
            return out;
        }
        MdiTolmar window(ctx);
        window.load();
        window.show();
        QApplication::processEvents();
        out.ms = double(t.nsecsElapsed()) / 1e6;
        const QStringList informs = prompter.informs();
        if (!informs.isEmpty())
            out.swept = informs.first().section(QLatin1Char(' '), 0, 0).toInt();
        ctx.endProcess = [](int) {};
        window.hide();
    }
    return out;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

void benchBackend(const QString& label, const QString& dir, const QString& pg, qint64 patients,
                  int due, int runs)
{
    const BenchWorkspace big = bench::prepareWorkspace(dir, pg, patients);
    const BenchWorkspace empty = bench::prepareWorkspace(dir, pg, 0);
    startOnce(empty);  // the first start warms the program's own caches (fonts, plugins)

    std::vector<double> bigRuns;
    std::vector<double> emptyRuns;
    int swept = 0;
    for (int i = 0; i < runs; ++i) {
        const int armed = armDueCards(big, due);
        const Timing b = startOnce(big);
        bigRuns.push_back(b.ms);
        swept = b.swept;
        if (b.swept != armed)
            say(QStringLiteral("  the sweep declared %1 cards, %2 were due")
                    .arg(b.swept)
                    .arg(armed));
        emptyRuns.push_back(startOnce(empty).ms);
    }
    const double m = median(bigRuns);
    const double e = median(emptyRuns);
    std::printf(
        "%-10s  %9lld patients, %5d cards swept: %8.1f ms   empty workspace: %7.1f ms"
        "   ratio %.2f   %s\n",
        qPrintable(label), static_cast<long long>(patients), swept, m, e, e > 0 ? m / e : 0.0,
        m <= 1000.0 ? "within 1 s" : "OVER 1 s");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser cl;
    cl.addHelpOption();
    const bench::WorkspaceOptions workspace;
    const QCommandLineOption due(QStringLiteral("due"), QStringLiteral("cards due today"),
                                 QStringLiteral("N"), QStringLiteral("3000"));
    const QCommandLineOption runs(QStringLiteral("runs"), QStringLiteral("timed starts"),
                                  QStringLiteral("N"), QStringLiteral("5"));
    workspace.addTo(cl);
    cl.addOptions({due, runs});
    cl.process(app);

    const qint64 n = cl.value(workspace.patients).toLongLong();
    const int d = cl.value(due).toInt();
    const int r = std::max(1, cl.value(runs).toInt());
    try {
        benchBackend(QStringLiteral("SQLite"), cl.value(workspace.dir), QString(), n, d, r);
        if (!cl.value(workspace.pg).isEmpty())
            benchBackend(QStringLiteral("PostgreSQL"), cl.value(workspace.dir),
                         cl.value(workspace.pg), n, d, r);
    } catch (const std::exception& e) {
        say(QStringLiteral("benchmark failed: %1").arg(QString::fromLocal8Bit(e.what())));
        return 1;
    }
    return 0;
}
