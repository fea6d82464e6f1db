#pragma once
// What the Save benchmarks share: a desk's statements recorded on their way to the server,
// written out as a pgbench script that draws its numbers afresh, pgbench run over it, and
// the latency figures of either.

#include "benchworkspace.h"

#include "platform/db.h"

#include <QHash>
#include <QString>

#include <functional>
#include <vector>

namespace tolmar::bench {

struct Recorded {
    db::Database database;
    QString sql;
    db::Params params;
};

// Records every statement of the calling thread while it lives.
class Recorder : public db::StatementObserver {
public:
    Recorder() { db::observeStatements(this); }
    ~Recorder() override { db::observeStatements(nullptr); }
    void statement(const db::Connection& c, const QString& sql, const db::Params& p) override
    {
        statements.push_back({c.database(), sql, p});
    }
    std::vector<Recorded> statements;
};

struct Script {
    QString text;
    int statements = 0;
};

// The recorded work as one pgbench transaction script. `variables` maps a recorded text value
// to the variable that stands for it; `series` maps each idgen series drawn to the variable
// its fresh draw sets (\gset), so that every replay writes new rows.
Script pgbenchScript(const std::vector<Recorded>& recorded,
                     const QHash<QString, QString>& variables,
                     const QHash<QString, QString>& series);
// Writes the script to a file; false when it cannot.
bool writeScript(const Script& script, const QString& path);

struct Figures {
    int saves = 0;
    double seconds = 0;
    double p50 = 0, p95 = 0, p99 = 0;  // ms
    double perSecond() const { return seconds > 0 ? saves / seconds : 0; }
};
double percentile(const std::vector<double>& sorted, double p);
// The same of timings in any order.
double percentileOf(std::vector<double> ms, double p);
Figures summarise(std::vector<double> ms, double seconds);

// Desks saving at once, each on a thread of its own: start(desk) runs on that thread and
// gives what one save of the desk does (given its number); the clock starts once every desk
// is up, and each save is timed.
using DeskWork = std::function<void(int n)>;
Figures runDesks(int desks, int saves, const std::function<DeskWork(int desk)>& start);

// pgbench running the script with `clients` connections, `perClient` transactions each;
// latencies from its per-transaction log. Empty figures when pgbench failed.
Figures runPgbench(const BenchWorkspace& w, const QString& scriptPath, int clients,
                   int perClient);

void printFiguresHeader();
void printFigures(const char* what, int desks, const Figures& f);

}  // namespace tolmar::bench
