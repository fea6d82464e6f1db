// Latency of the registration Save (a new private patient, "NEW", attendance ticked) with
// 1, 4 and 16 desks saving at once on a PostgreSQL workspace of many patients, beside the
// same statements replayed by pgbench: what the server itself manages for that work.
//
//   save_bench [--patients N] [--saves N] [--desks 1,4,16] [--pg HOST:PORT] [--dir DIR]
//
// Each desk is a thread with its own AppContext and connections, started up as a desk
// starts in the morning, then timed save by save. The statements of one save are recorded
// as they go to the server (with their values) and written out as a pgbench script, the
// drawn numbers turned into variables so that every replayed save writes new rows.

#include "benchworkspace.h"

#include "core/appcontext.h"
#include "core/idgen.h"
#include "core/startup.h"
#include "patients/registrationform.h"
#include "patients/registrationsave.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QApplication>
#include <QCommandLineParser>
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
#include <vector>

using namespace tolmar;
using bench::say;

namespace {

patients::RegistrationForm newPrivatePatient(int desk, int n)
{
    patients::RegistrationForm f;
    f.newReg = QStringLiteral("NEW");
    f.title = QStringLiteral("MRS");
    f.company = QStringLiteral("(PRIVATE) [0001]");
    f.selectedRetainID = QStringLiteral("0001");
    f.selectedCoyName = QStringLiteral("(PRIVATE)");
    f.selectedRetainCode = QStringLiteral("PVT");
    f.selectedClientType = QStringLiteral("PRIVATE");
    f.selectedClientCat = QStringLiteral("PRIVATE");
    f.cardDuration = QStringLiteral("ONE YEAR");
    f.cardType = QStringLiteral("SINGLE");
    f.regDate = QDate::currentDate();
    f.expiryDate = f.regDate.addYears(1);
    f.maturity = QStringLiteral("ADULT");
    f.feeForService = QStringLiteral("YES");
    f.hmoReferral = QStringLiteral("NO");
    f.enrolleeNo = QStringLiteral("NIL");
    f.plan = QStringLiteral("NIL");
    f.area = QStringLiteral("IKEJA");
    f.surname = QStringLiteral("BENCH%1").arg(desk);
    f.firstName = QStringLiteral("O'NEIL %1").arg(n);
    f.phone = QStringLiteral("08031234567");
    f.nextOfKin = QStringLiteral("EMEKA OKAFOR");
    f.nokPhone = QStringLiteral("08035550000");
    f.clinicName = QStringLiteral("GENERAL");
    f.purpose = QStringLiteral("CONSULTATION");
    f.selectedPurpose = QStringLiteral("CONSULTATION");
    return f;
}

// One desk on its own thread: started up, then ready to save on demand.
class BenchDesk {
public:
    explicit BenchDesk(const QString& home) : m_ctx(home, m_prompter, m_clock)
    {
        m_ctx.endProcess = [](int) {};
        const auto r = runStartup(m_ctx);
        if (r.outcome != StartupResult::Ok)
            throw std::runtime_error("start-up failed: " + r.message.toStdString());
    }
    QString save(const patients::RegistrationForm& f)
    {
        m_prompter.answerYes();
        const QString pno = patients::saveRegistration(m_ctx, f);
        m_prompter.clear();
        if (pno.isEmpty())
            throw std::runtime_error("the save gave no patient number");
        return pno;
    }

private:
    ScriptedPrompter m_prompter;
    Clock m_clock;
    AppContext m_ctx;
};

// ---------------------------------------------------------------------------------------
// Recording one save and writing it out for pgbench

struct Recorded {
    db::Database database;
    QString sql;
    db::Params params;
};

class Recorder : public db::StatementObserver {
public:
    void statement(const db::Connection& c, const QString& sql, const db::Params& p) override
    {
        statements.push_back({c.database(), sql, p});
    }
    std::vector<Recorded> statements;
};

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

struct Script {
    QString text;
    int statements = 0;
};

// The recorded save as one pgbench transaction script. Connection set-up (search paths)
// is left out; the statements of another database than the hospital's run under that
// database's search path, set and put back around them.
Script pgbenchScript(const std::vector<Recorded>& recorded, const QString& pno,
                     const QString& consultID)
{
    const QHash<QString, QString> variables{{pno, QStringLiteral("pno")},
                                            {consultID, QStringLiteral("cid")}};
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
            const QString series = r.params.empty() ? QString() : r.params.front().toString();
            const QString name = series == kSeriesPatientNo ? QStringLiteral("pno")
                                                                      : QStringLiteral("cid");
            s.text += QStringLiteral(
                          "UPDATE idgen SET id = id + 1 WHERE destName = %1 RETURNING CASE "
                          "WHEN width > 0 THEN prefix || lpad(id::text, width, '0') ELSE "
                          "id::text END AS %2 \\gset\n")
                          .arg(literal(series), name);
            continue;
        }
        s.text += inlineValues(r, variables) + QStringLiteral(";\n");
    }
    use(db::Database::Hospital);
    return s;
}

// ---------------------------------------------------------------------------------------
// Figures

struct Figures {
    int saves = 0;
    double seconds = 0;
    double p50 = 0, p95 = 0, p99 = 0;  // ms
    double perSecond() const { return seconds > 0 ? saves / seconds : 0; }
};

double percentile(const std::vector<double>& sorted, double p)
{
    if (sorted.empty())
        return 0;
    const size_t rank = size_t(std::ceil(p / 100.0 * double(sorted.size())));
    return sorted[std::min(sorted.size() - 1, rank == 0 ? 0 : rank - 1)];
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

Figures runDesks(const QString& home, int desks, int saves, int round)
{
    std::mutex lock;
    std::vector<double> all;
    std::atomic<int> failed{0};
    std::barrier ready(desks + 1);
    std::vector<std::unique_ptr<QThread>> threads;
    for (int d = 0; d < desks; ++d) {
        threads.emplace_back(QThread::create([&, d] {
            std::unique_ptr<BenchDesk> desk;
            try {
                desk = std::make_unique<BenchDesk>(home);
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
                const auto form = newPrivatePatient(round * 100 + d, n);
                t.start();
                try {
                    desk->save(form);
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

// pgbench running the script with `clients` connections, `perClient` transactions each;
// latencies from its per-transaction log.
Figures runPgbench(const bench::BenchWorkspace& w, const QString& scriptPath, int clients,
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

void printRow(const char* what, int desks, const Figures& f)
{
    std::printf("%-8s %5d %7d %9.1f %8.2f %8.2f %8.2f %10.1f\n", what, desks, f.saves,
                f.seconds, f.p50, f.p95, f.p99, f.perSecond());
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
    const QCommandLineOption savesOpt(QStringLiteral("saves"), QStringLiteral("saves per desk"),
                                      QStringLiteral("N"), QStringLiteral("100"));
    const QCommandLineOption desksOpt(QStringLiteral("desks"), QStringLiteral("desk counts"),
                                      QStringLiteral("LIST"), QStringLiteral("1,4,16"));
    workspace.addTo(cl);
    cl.addOptions({savesOpt, desksOpt});
    cl.process(app);
    if (cl.value(workspace.pg).isEmpty()) {
        say(QStringLiteral("save_bench needs a PostgreSQL server: --pg HOST:PORT or "
                           "TOLMAR_TEST_PG"));
        return 2;
    }
    const int saves = std::max(1, cl.value(savesOpt).toInt());
    std::vector<int> deskCounts;
    for (const QString& n : cl.value(desksOpt).split(QLatin1Char(','), Qt::SkipEmptyParts))
        deskCounts.push_back(std::max(1, n.toInt()));

    try {
        const auto w = bench::prepareWorkspace(cl.value(workspace.dir), cl.value(workspace.pg),
                                               cl.value(workspace.patients).toLongLong());
        // One save recorded on its way to the server, for pgbench to replay.
        Script script;
        {
            BenchDesk desk(w.home);
            desk.save(newPrivatePatient(0, -1));  // prepared caches and pages warm
            Recorder rec;
            db::observeStatements(&rec);
            const QString pno = desk.save(newPrivatePatient(0, 0));
            db::observeStatements(nullptr);
            db::Connection c(w.server, db::Database::Hospital);
            const QString cid =
                c.scalar(QStringLiteral("select LastConsultID from hPatients where PNo = ?"),
                         {pno})
                    .toString();
            script = pgbenchScript(rec.statements, pno, cid);
        }
        QTemporaryDir dir;
        const QString scriptPath = dir.filePath(QStringLiteral("save.sql"));
        {
            QFile f(scriptPath);
            if (!f.open(QIODevice::WriteOnly))
                throw std::runtime_error("cannot write the pgbench script");
            f.write(script.text.toUtf8());
        }
        if (qEnvironmentVariableIsSet("TOLMAR_BENCH_SHOW_SCRIPT"))
            say(script.text);
        {
            db::Connection c(w.server, db::Database::Hospital);
            std::printf("%lld patients on PostgreSQL %s; one save is %d statements\n",
                        c.scalar(QStringLiteral("select count(*) from hPatients")).toLongLong(),
                        qPrintable(cl.value(workspace.pg)), script.statements);
        }
        std::printf("%-8s %5s %7s %9s %8s %8s %8s %10s\n", "", "desks", "saves", "seconds",
                    "p50 ms", "p95 ms", "p99 ms", "saves/s");
        int round = 1;
        for (int desks : deskCounts) {
            const Figures ours = runDesks(w.home, desks, saves, round++);
            const Figures base = runPgbench(w, scriptPath, desks, saves);
            printRow("Save", desks, ours);
            printRow("pgbench", desks, base);
            const double ratio = base.perSecond() > 0 ? ours.perSecond() / base.perSecond() : 0;
            std::printf("         throughput %.0f%% of pgbench; p95 %.1f ms\n", ratio * 100,
                        ours.p95);
            std::fflush(stdout);
        }
    } catch (const std::exception& e) {
        say(QStringLiteral("benchmark failed: %1").arg(QString::fromLocal8Bit(e.what())));
        return 1;
    }
    return 0;
}
