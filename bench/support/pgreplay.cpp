#include "pgreplay.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <barrier>
#include <cmath>
#include <cstdio>
#include <memory>
#include <mutex>

namespace tolmar::bench {

namespace {

// A value as a literal of the script; the recorder sees values as the driver gets them,
// so dates are already text. pgbench reads ":name" as a variable even inside quotes, so a
// colon goes in as its octal escape.
QString literal(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return QStringLiteral("NULL");
    switch (v.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return v.toString();
    default:
        break;
    }
    QString s = v.toString();
    s.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    s.replace(QLatin1Char('\''), QStringLiteral("''"));
    s.replace(QLatin1Char(':'), QStringLiteral("\\072"));
    return QStringLiteral("E'") + s + QLatin1Char('\'');
}

// The statement with each "?" outside quotes replaced by its value, or by a variable for
// the values that a replayed save must draw afresh.
QString inlineValues(const Recorded& r, const QHash<QString, QString>& variables)
{
    QString out;
    size_t next = 0;
    bool quoted = false;
    for (const QChar ch : r.sql) {
        if (ch == QLatin1Char('\''))
            quoted = !quoted;
        if (ch != QLatin1Char('?') || quoted) {
            out += ch;
            continue;
        }
        const QVariant v = next < r.params.size() ? r.params[next] : QVariant();
        ++next;
        const auto var = variables.constFind(v.toString());
        out += var != variables.constEnd() && v.typeId() == QMetaType::QString
                   ? QLatin1Char(':') + *var
                   : literal(v);
    }
    return out;
}

}  // namespace

// Connection set-up (search paths) is left out; the statements of another database than the hospital's run under that
// database's search path, set and put back around them.
Script pgbenchScript(const std::vector<Recorded>& recorded,
                     const QHash<QString, QString>& variables,
                     const QHash<QString, QString>& series)
{
    Script s;
    db::Database current = db::Database::Hospital;
    auto use = [&](db::Database db) {
        if (db == current)
            return;
        s.text += QStringLiteral("SET search_path TO %1;\n").arg(db::pgSearchPath(db));
        current = db;
    };
    for (const Recorded& r : recorded) {
        if (r.sql.startsWith(QLatin1String("SET search_path"), Qt::CaseInsensitive))
            continue;
        use(r.database);
        ++s.statements;
        if (r.sql.startsWith(QLatin1String("UPDATE idgen SET id = id + 1"))) {
            const QString drawn = r.params.empty() ? QString() : r.params.front().toString();
            const QString name = series.value(drawn, QStringLiteral("drawn"));
            s.text += QStringLiteral(
                          "UPDATE idgen SET id = id + 1 WHERE destName = %1 RETURNING CASE "
                          "WHEN width > 0 THEN prefix || lpad(id::text, width, '0') ELSE "
                          "id::text END AS %2 \\gset\n")
                          .arg(literal(drawn), name);
            continue;
        }
        s.text += inlineValues(r, variables) + QStringLiteral(";\n");
    }
    use(db::Database::Hospital);
    return s;
}

bool writeScript(const Script& script, const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly) && f.write(script.text.toUtf8()) >= 0;
}

double percentile(const std::vector<double>& sorted, double p)
{
    if (sorted.empty())
        return 0;
    const size_t rank = size_t(std::ceil(p / 100.0 * double(sorted.size())));
    return sorted[std::min(sorted.size() - 1, rank == 0 ? 0 : rank - 1)];
}

double percentileOf(std::vector<double> ms, double p)
{
    std::sort(ms.begin(), ms.end());
    return percentile(ms, p);
}

Figures summarise(std::vector<double> ms, double seconds)
{
    std::sort(ms.begin(), ms.end());
    Figures f;
    f.saves = int(ms.size());
    f.seconds = seconds;
    f.p50 = percentile(ms, 50);
    f.p95 = percentile(ms, 95);
    f.p99 = percentile(ms, 99);
    return f;
}

// pgbench running the script with `clients` connections, `perClient` transactions each;
// latencies from its per-transaction log.
Figures runPgbench(const BenchWorkspace& w, const QString& scriptPath, int clients,
                   int perClient)
{
    QTemporaryDir logs;
    const QString pgbench = [] {
        for (const QString& dir : QDir(QStringLiteral("/usr/lib/postgresql"))
                                      .entryList(QDir::Dirs | QDir::NoDotAndDotDot,
                                                 QDir::Name | QDir::Reversed)) {
            const QString p = QStringLiteral("/usr/lib/postgresql/%1/bin/pgbench").arg(dir);
            if (QFile::exists(p))
                return p;
        }
        return QStringLiteral("pgbench");
    }();
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("PGOPTIONS"),
               QStringLiteral("-c search_path=") + db::pgSearchPath(db::Database::Hospital));
    p.setProcessEnvironment(env);
    p.setWorkingDirectory(logs.path());
    const QString user = !w.server.user.isEmpty() ? w.server.user
                         : qEnvironmentVariableIsSet("TOLMAR_DB_USER")
                             ? qEnvironmentVariable("TOLMAR_DB_USER")
                             : QStringLiteral("postgres");
    QStringList args{QStringLiteral("-n"), QStringLiteral("-M"), QStringLiteral("prepared"),
                     QStringLiteral("-f"), scriptPath, QStringLiteral("-c"),
                     QString::number(clients), QStringLiteral("-j"),
                     QString::number(std::min(clients, 2)), QStringLiteral("-t"),
                     QString::number(perClient), QStringLiteral("-l"),
                     QStringLiteral("--log-prefix=tx"), QStringLiteral("-h"), w.server.host,
                     QStringLiteral("-p"), QString::number(w.server.port), QStringLiteral("-U"),
                     user, w.server.pgDatabase};
    p.start(pgbench, args);
    p.waitForFinished(-1);
    const QString out = QString::fromLocal8Bit(p.readAllStandardOutput());
    if (p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0) {
        say(QStringLiteral("pgbench failed:\n%1\n%2")
                .arg(out, QString::fromLocal8Bit(p.readAllStandardError())));
        return {};
    }
    // "tps = 812.3 (without initial connection time)": the rate of the timed part.
    double tps = 0;
    for (const QString& line : out.split(QLatin1Char('\n')))
        if (line.startsWith(QLatin1String("tps = ")))
            tps = line.section(QLatin1Char(' '), 2, 2).toDouble();
    std::vector<double> ms;
    for (const QString& name : QDir(logs.path()).entryList({QStringLiteral("tx.*")})) {
        QFile f(QDir(logs.path()).filePath(name));
        if (!f.open(QIODevice::ReadOnly))
            continue;
        // client_id transaction_no time_us script_no epoch epoch_us
        while (!f.atEnd()) {
            const QList<QByteArray> parts = f.readLine().simplified().split(' ');
            if (parts.size() >= 3)
                ms.push_back(parts[2].toDouble() / 1000.0);
        }
    }
    const double seconds = tps > 0 ? double(ms.size()) / tps : 0;
    return summarise(std::move(ms), seconds);
}

Figures runDesks(int desks, int saves, const std::function<DeskWork(int desk)>& start)
{
    std::mutex lock;
    std::vector<double> all;
    std::atomic<int> failed{0};
    std::barrier ready(desks + 1);
    std::vector<std::unique_ptr<QThread>> threads;
    for (int d = 0; d < desks; ++d) {
        threads.emplace_back(QThread::create([&, d] {
            DeskWork desk;
            try {
                desk = start(d);
            } catch (const std::exception& e) {
                say(QStringLiteral("desk %1: %2").arg(d).arg(QString::fromLocal8Bit(e.what())));
                failed += saves;
            }
            ready.arrive_and_wait();  // every desk up before the clock starts
            ready.arrive_and_wait();
            if (!desk)
                return;
            std::vector<double> mine;
            mine.reserve(size_t(saves));
            QElapsedTimer t;
            for (int n = 0; n < saves; ++n) {
                t.start();
                try {
                    desk(n);
                    mine.push_back(double(t.nsecsElapsed()) / 1e6);
                } catch (const std::exception& e) {
                    ++failed;
                    say(QStringLiteral("desk %1: %2").arg(d).arg(QString::fromLocal8Bit(e.what())));
                }
            }
            std::lock_guard g(lock);
            all.insert(all.end(), mine.begin(), mine.end());
        }));
        threads.back()->start();
    }
    ready.arrive_and_wait();
    QElapsedTimer wall;
    wall.start();
    ready.arrive_and_wait();
    for (auto& t : threads)
        t->wait();
    const double seconds = double(wall.nsecsElapsed()) / 1e9;
    if (failed)
        say(QStringLiteral("%1 saves failed with %2 desks").arg(failed.load()).arg(desks));
    return summarise(std::move(all), seconds);
}

void printFiguresHeader()
{
    std::printf("%-8s %5s %7s %9s %8s %8s %8s %10s\n", "", "desks", "saves", "seconds",
                "p50 ms", "p95 ms", "p99 ms", "saves/s");
}

void printFigures(const char* what, int desks, const Figures& f)
{
    std::printf("%-8s %5d %7d %9.1f %8.2f %8.2f %8.2f %10.1f\n", what, desks, f.saves,
                f.seconds, f.p50, f.p95, f.p99, f.perSecond());
}

}  // namespace tolmar::bench
