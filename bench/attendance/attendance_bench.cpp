// The attendance desk on a workspace of many patients with a year of visits behind it and
// a busy day in front of it:
//
//   attendance_bench [--patients N] [--pg HOST:PORT] [--dir DIR] [--runs N] [--saves N]
//                    [--desks 1,8] [--per-day N] [--today N]
//
// - today's list (grdData) to its first page and its count, beside a plain indexed read of
//   today's visit rows on a kept connection;
// - picking a patient: every read of the pick, the photograph included;
// - on PostgreSQL, the new-visit Save with 1 and 8 desks beside pgbench replaying the
//   statements of one recorded Save (a random patient each time, numbers drawn afresh).

#include "benchworkspace.h"
#include "pgreplay.h"

#include "clinical/attendance.h"
#include "core/idgen.h"
#include "core/listentry.h"
#include "patients/registrationdesk.h"
#include "platform/db.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

using namespace tolmar;
using namespace tolmar::bench;

namespace {

// A new visit for a patient of a company, as the desk saves it.
QString saveVisit(BenchDesk& desk, const QString& pno)
{
    clinical::AttendanceForm f;
    f.pno = pno;
    f.patient = listentry::make(QStringLiteral("BENCH PATIENT"), pno);
    f.clientCat = QStringLiteral("CORPORATE");
    f.coyName = QStringLiteral("0002");
    f.billTo = QStringLiteral("DANG");
    f.clinic = QStringLiteral("GENERAL");
    f.purpose = f.purposeClass = QStringLiteral("CONSULTATION");
    f.feeForService = f.hmoReferral = QStringLiteral("NO");
    f.plan = f.enrolleeNo = QStringLiteral("NIL");
    const QString consultID = clinical::saveAttendance(desk.ctx(), f);
    desk.prompter().clear();
    return consultID;
}

QString pnoOf(qint64 n) { return QStringLiteral("001/%1").arg(n, 9, 10, QLatin1Char('0')); }

QDate databaseToday(db::Connection& c)
{
    return db::variantDateTime(c.scalar(QStringLiteral("select sysDT from qrySysDateTime")))
        .date();
}

// A year of visits before today at `perDay`, and `today` visits today, written once per
// workspace (a marker file remembers it).
void addVisits(const BenchWorkspace& w, qint64 patients, int perDay, int today)
{
    const QString ready = QDir(w.home).filePath(QStringLiteral("visits-ready"));
    if (QFileInfo::exists(ready))
        return;
    say(QStringLiteral("Writing a year of visits (%1 a day) and %2 today").arg(perDay).arg(today));
    db::Connection c(w.server, db::Database::Hospital);
    c.tuneForBulkLoad();
    const QDate now = databaseToday(c);
    QRandomGenerator rng(20261123);
    constexpr int kRows = 250;
    qint64 number = 800000000;
    for (int day = 365; day >= 0; --day) {
        const QDate date = now.addDays(-day);
        const int visits = day == 0 ? today : perDay;
        db::Transaction tx(c);
        for (int done = 0; done < visits; done += kRows) {
            const int rows = std::min(kRows, visits - done);
            QStringList values;
            db::Params params;
            for (int i = 0; i < rows; ++i) {
                values << QStringLiteral("(?, ?, ?, ?, 'EMP001', 'GENERAL', 'CONSULTATION', "
                                         "'NO', 'NO', ?, 'CORPORATE', '0002')");
                const int minute = 8 * 60 + (done + i) * 600 / std::max(1, visits);
                params.insert(params.end(),
                              {date, QTime(minute / 60, minute % 60).toString(QStringLiteral("h:mm AP")),
                               pnoOf(1 + qint64(rng.bounded(quint32(patients)))),
                               QStringLiteral("001%1").arg(++number, 9, 10, QLatin1Char('0')),
                               date});
            }
            c.exec(QStringLiteral("INSERT INTO hRecords (recDate, htime, PNo, consultID, empID, "
                                  "clinicType, Remarks, HmoRef, referal, BillDate, clientCat, "
                                  "CoyName) VALUES ") +
                       values.join(QStringLiteral(", ")),
                   params);
        }
        tx.commit();
    }
    if (c.backend() == db::Backend::Postgres)
        c.execScript(QStringLiteral("ANALYZE hRecords"));
    QFile f(ready);
    f.open(QIODevice::WriteOnly);
}

struct Timing {
    std::vector<double> ms;
    void add(const QElapsedTimer& t) { ms.push_back(double(t.nsecsElapsed()) / 1e6); }
    double p95() const { return percentileOf(ms, 95); }
    double p50() const { return percentileOf(ms, 50); }
};

void printTiming(const char* what, const Timing& t)
{
    std::printf("%-34s p50 %7.2f ms   p95 %7.2f ms\n", what, t.p50(), t.p95());
}

}  // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QCommandLineParser cl;
    cl.addHelpOption();
    const WorkspaceOptions workspace;
    auto option = [](const char* name, const char* help, const char* value) {
        return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(help),
                                  QStringLiteral("N"), QString::fromLatin1(value));
    };
    const QCommandLineOption runsOpt = option("runs", "timed reads of each kind", "300");
    const QCommandLineOption savesOpt = option("saves", "saves per desk", "100");
    const QCommandLineOption desksOpt = option("desks", "desk counts", "1,8");
    const QCommandLineOption perDayOpt = option("per-day", "visits a day in the past year", "1000");
    const QCommandLineOption todayOpt = option("today", "visits today", "5000");
    workspace.addTo(cl);
    cl.addOptions({runsOpt, savesOpt, desksOpt, perDayOpt, todayOpt});
    cl.process(app);
    const int runs = std::max(10, cl.value(runsOpt).toInt());
    const int saves = std::max(1, cl.value(savesOpt).toInt());
    const qint64 patients = cl.value(workspace.patients).toLongLong();

    try {
        const BenchWorkspace w =
            prepareWorkspace(cl.value(workspace.dir), cl.value(workspace.pg), patients);
        addVisits(w, patients, cl.value(perDayOpt).toInt(), cl.value(todayOpt).toInt());
        BenchDesk desk(w.home);
        db::Connection& c = desk.ctx().db();
        const QDate today = databaseToday(c);
        std::printf("%lld patients, %lld visits, %lld today, on %s\n",
                    c.scalar(QStringLiteral("select count(*) from hPatients")).toLongLong(),
                    c.scalar(QStringLiteral("select count(*) from hRecords")).toLongLong(),
                    c.scalar(QStringLiteral("select count(*) from hRecords where recDate = ?"),
                             {today})
                        .toLongLong(),
                    c.backend() == db::Backend::Sqlite ? "SQLite" : "PostgreSQL");

        // Today's list, as the screen fills it, beside the plain read of the day's rows.
        Timing grid, plain;
        QElapsedTimer t;
        for (int i = 0; i < runs + 5; ++i) {
            t.start();
            std::unique_ptr<QAbstractItemModel> m(clinical::visitsForToday(c, nullptr));
            const int shown = m->rowCount();
            const int count = clinical::visitsForTodayCount(c);
            if (i >= 5)  // the first runs warm the caches
                grid.add(t);
            t.start();
            const db::Result r = c.query(
                QStringLiteral("SELECT recID, recDate, htime, PNo, consultID, clinicType, "
                               "Remarks, clientCat, CoyName FROM hRecords WHERE recDate = ?"),
                {today});
            if (i >= 5)
                plain.add(t);
            if (shown == 0 || count == 0 || r.empty())
                throw std::runtime_error("no visits today");
        }
        printTiming("grdData, first page and count", grid);
        printTiming("baseline: today's hRecords rows", plain);
        std::printf("%-34s %.2f x\n", "grdData / baseline (p95)", grid.p95() / plain.p95());

        // Picking: random patients, all the reads of the six steps.
        Timing pickTimes;
        int onFile = 0;
        QRandomGenerator rng(7);
        for (int i = 0; i < runs; ++i) {
            const QString pno = pnoOf(1 + qint64(rng.bounded(quint32(patients))));
            const QString entry = listentry::make(QStringLiteral("BENCH PATIENT"), pno);
            t.start();
            clinical::PickedPatient picked;
            try {
                clinical::pickPatient(desk.ctx(), entry, picked);
            } catch (const std::exception&) {
                // a refusal is a pick too: its reads are done
            }
            patients::storedPhoto(c, pno);
            pickTimes.add(t);
            onFile += picked.found ? 1 : 0;
        }
        printTiming("picking a patient", pickTimes);
        std::printf("%-34s %d of %d\n", "patients picked that were on file", onFile, runs);

        if (c.backend() != db::Backend::Postgres)
            return 0;
        // One Save recorded on its way to the server, for pgbench to replay on a random
        // patient with a freshly drawn number.
        saveVisit(desk, pnoOf(1));
        std::vector<Recorded> recorded;
        QString cid;
        {
            Recorder rec;
            cid = saveVisit(desk, pnoOf(2));
            recorded = std::move(rec.statements);
        }
        Script script = pgbenchScript(
            recorded, {{pnoOf(2), QStringLiteral("pno")}, {cid, QStringLiteral("cid")}},
            {{kSeriesConsultID, QStringLiteral("cid")}});
        script.text = QStringLiteral("\\set n random(1, %1)\nSELECT '001/' || "
                                     "lpad(:n::text, 9, '0') AS pno \\gset\n")
                          .arg(patients) +
                      script.text;
        QTemporaryDir dir;
        const QString scriptPath = dir.filePath(QStringLiteral("attendance.sql"));
        if (!writeScript(script, scriptPath))
            throw std::runtime_error("cannot write the pgbench script");
        if (qEnvironmentVariableIsSet("TOLMAR_BENCH_SHOW_SCRIPT"))
            say(script.text);
        std::printf("one Save is %d statements\n", script.statements);
        printFiguresHeader();
        for (const QString& n : cl.value(desksOpt).split(QLatin1Char(','), Qt::SkipEmptyParts)) {
            const int desks = std::max(1, n.toInt());
            const Figures ours = runDesks(desks, saves, [&](int d) -> DeskWork {
                auto own = std::make_shared<BenchDesk>(w.home);
                auto pick = std::make_shared<QRandomGenerator>(quint32(100 + d));
                return [own, pick, patients](int) {
                    saveVisit(*own, pnoOf(1 + qint64(pick->bounded(quint32(patients)))));
                };
            });
            const Figures base = runPgbench(w, scriptPath, desks, saves);
            printFigures("Save", desks, ours);
            printFigures("pgbench", desks, base);
            std::printf("         throughput %.0f%% of pgbench; p95 %.2f x pgbench's\n",
                        base.perSecond() > 0 ? 100 * ours.perSecond() / base.perSecond() : 0,
                        base.p95 > 0 ? ours.p95 / base.p95 : 0);
            std::fflush(stdout);
        }
    } catch (const std::exception& e) {
        say(QStringLiteral("benchmark failed: %1").arg(QString::fromLocal8Bit(e.what())));
        return 1;
    }
    return 0;
}
