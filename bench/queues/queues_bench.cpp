// The doctors' queues on a day of 5,000 visits across 50 doctors in 10 clinics, on a
// workspace of many generated patients: first with that day alone, then with a year of
// visits before it. Timed, as p50 and p95 over many runs:
//   - the doctor part of choosing a clinic (the list and the least-loaded doctor), with
//     and without doctors assigned to rooms;
//   - the registration screen's queue grid (grdDoc), read whole;
//   - one doctor's waiting list (frmDocWait);
//   - the consultation screen's list of waiting visits (cboVehNo);
//   - one consultation saved;
// beside the plain count of the day's visits by doctor, measured in the same run.
//
//   queues_bench [--patients N] [--history-per-day N] [--runs N] [--pg HOST:PORT] [--dir DIR]

#include "benchworkspace.h"
#include "pgreplay.h"

#include "clinical/consultation.h"
#include "clinical/doctorallocation.h"
#include "core/appcontext.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace tolmar;

namespace {

using bench::say;

constexpr int kDoctors = 50;
constexpr int kClinics = 10;
constexpr int kBenchDay = 5000;

struct Figures {
    double p50 = 0;
    double p95 = 0;
};

Figures timeRuns(int runs, const std::function<void()>& once)
{
    once();  // warm the statement caches as a desk's first minute does
    std::vector<double> ms;
    ms.reserve(size_t(runs));
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        once();
        ms.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    return {bench::percentileOf(ms, 50), bench::percentileOf(ms, 95)};
}

// Ten clinics with five doctors each, every doctor in a room today.
void setUpClinics(db::Connection& c, const QDate& today)
{
    if (c.scalar(QStringLiteral("SELECT COUNT(*) FROM clinicTypes WHERE ClinicID = 'Q1'")).toInt())
        return;
    const QVariant role = c.scalar(
        QStringLiteral("SELECT RoleID FROM Roles WHERE LoginRole = 'CONSULTING' LIMIT 1"));
    db::Transaction tx(c);
    for (int k = 1; k <= kClinics; ++k)
        c.exec(QStringLiteral("INSERT INTO clinicTypes (ClinicID, clinicName, regfee, ConFee) "
                              "VALUES (?, ?, 0, 0)"),
               {QStringLiteral("Q%1").arg(k), QStringLiteral("QUEUE CLINIC %1").arg(k)});
    for (int d = 1; d <= kDoctors; ++d) {
        const QString user = QStringLiteral("qdoc%1").arg(d);
        c.exec(QStringLiteral("INSERT INTO ApplicationUsers (Username, Fullname, Password, "
                              "AccountStatus, EmpID, hospID) VALUES (?, ?, '', 'Enabled', ?, "
                              "'001')"),
               {user, QStringLiteral("DR QUEUE %1").arg(d, 2, 10, QLatin1Char('0')),
                QStringLiteral("QD%1").arg(d)});
        c.exec(QStringLiteral("INSERT INTO UserRoles (RoleID, Username) VALUES (?, ?)"),
               {role, user});
        c.exec(QStringLiteral("INSERT INTO userRoleClinic (Username, ClinicID) VALUES (?, ?)"),
               {user, QStringLiteral("Q%1").arg(d % kClinics + 1)});
    }
    tx.commit();
    Q_UNUSED(today);
}

void assignRooms(db::Connection& c, const QDate& today)
{
    c.exec(QStringLiteral("DELETE FROM hConRoomAssign WHERE docNo LIKE 'QD%'"));
    for (int d = 1; d <= kDoctors; ++d)
        c.exec(QStringLiteral("INSERT INTO hConRoomAssign (schdDate, ConRoomNo, docNo, isOff) "
                              "VALUES (?, ?, ?, 0)"),
               {today, QStringLiteral("QRM %1").arg(d), QStringLiteral("QD%1").arg(d)});
}

// `count` visits on `day`, patient i to doctor i % 50 + 1 at that doctor's clinic; a visit is
// still waiting when `waitingEvery` divides i (0: none waits).
void addVisits(db::Connection& c, const QDate& day, int count, const QString& tag,
               int waitingEvery)
{
    c.exec(QStringLiteral(
               "INSERT INTO hRecords (recDate, htime, PNo, consultID, clinicType, Remarks, "
               "DocAssigned, PatVal, attendedto, CoyName, clientCat) "
               "SELECT ?, '9:00 AM', p.PNo, CAST(? AS VARCHAR(12)) || CAST(p.i AS VARCHAR(6)), "
               "'QUEUE CLINIC ' || ((p.i % 50 + 1) % 10 + 1), 'CONSULTATION', "
               "'QD' || (p.i % 50 + 1), 1, "
               "CASE WHEN ? > 0 AND p.i % ? = 0 THEN 0 ELSE 1 END, '0001', 'PRIVATE' "
               "FROM bench_pats p WHERE p.i <= ?"),
           {day, tag + day.toString(QStringLiteral("yyMMdd-")), waitingEvery,
            std::max(waitingEvery, 1), count});
}

// Statistics as a night's maintenance leaves them, and on SQLite the log folded back into
// the file: a desk's reads do not wade through a write-ahead log of a million new rows.
void analyze(db::Connection& c)
{
    c.execScript(QStringLiteral("ANALYZE"));
    if (c.backend() == db::Backend::Sqlite)
        c.execScript(QStringLiteral("PRAGMA main.wal_checkpoint(TRUNCATE)"));
}

struct Row {
    const char* what;
    Figures none;
    Figures year;
};

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser cl;
    bench::WorkspaceOptions wo;
    wo.addTo(cl);
    const QCommandLineOption historyOpt(QStringLiteral("history-per-day"),
                                        QStringLiteral("visits a day in the year before"),
                                        QStringLiteral("N"), QStringLiteral("5000"));
    const QCommandLineOption runsOpt(QStringLiteral("runs"), QStringLiteral("runs per figure"),
                                     QStringLiteral("N"), QStringLiteral("200"));
    cl.addOptions({historyOpt, runsOpt});
    cl.addHelpOption();
    cl.process(app);
    const int perDay = cl.value(historyOpt).toInt();
    const int runs = cl.value(runsOpt).toInt();

    const bench::BenchWorkspace w = bench::prepareWorkspace(
        cl.value(wo.dir), cl.value(wo.pg), cl.value(wo.patients).toLongLong());
    db::Connection c(w.server, db::Database::Hospital);
    c.tuneForBulkLoad();
    const QDate today =
        db::variantDateTime(c.scalar(QStringLiteral("SELECT sysDT FROM qrySysDateTime"))).date();
    setUpClinics(c, today);
    assignRooms(c, today);
    say(QStringLiteral("Clearing earlier bench visits"));
    c.execScript(QStringLiteral("DROP TABLE IF EXISTS bench_pats"));
    c.execScript(QStringLiteral("CREATE TABLE bench_pats AS SELECT ROW_NUMBER() OVER (ORDER BY "
                                "PNo) AS i, PNo FROM (SELECT PNo FROM hPatients ORDER BY PNo "
                                "LIMIT 5000) x"));
    c.exec(QStringLiteral("DELETE FROM hConsulting WHERE consultID LIKE 'B%'"));
    c.exec(QStringLiteral("DELETE FROM hRecords WHERE DocAssigned LIKE 'QD%' AND PatVal = 1"));
    addVisits(c, today, kBenchDay, QStringLiteral("B"), 3);
    analyze(c);

    int saved = 0;
    // Each phase is a desk of its own, started after the data is in place and gone before
    // more is loaded, as desks come and go around a night's load.
    auto measure = [&](std::vector<Figures>& out) {
        ScriptedPrompter prompter;
        FixedClock clock(QDateTime(today, QTime(10, 0)));
        AppContext ctx(w.home, prompter, clock);
        ctx.setServer(w.server);
        db::Connection& shared = ctx.db();
        const QString clinic = QStringLiteral("Q3");
        out.push_back(timeRuns(runs, [&] {
            shared.query(QStringLiteral("SELECT DocAssigned, COUNT(*) FROM hRecords WHERE "
                                        "recDate = ? AND PatVal = 1 GROUP BY DocAssigned"),
                         {today});
        }));
        for (bool rooms : {false, true})
            out.push_back(timeRuns(runs, [&] {
                clinical::DoctorAllocation a(shared, today, rooms);
                if (a.doctorsFor(clinic).empty() || !a.leastLoaded(clinic))
                    throw std::runtime_error("no doctor");
            }));
        out.push_back(timeRuns(runs, [&] {
            shared.query(clinical::DoctorAllocation::waitListSql(), {today});
        }));
        out.push_back(timeRuns(runs, [&] {
            shared.query(clinical::DoctorAllocation::docWaitSql(),
                         {today, QStringLiteral("QD2"), clinic});
        }));
        out.push_back(timeRuns(runs, [&] { shared.query(clinical::waitingVisitsSql()); }));
        const auto waiting = shared.query(clinical::waitingVisitsSql());
        out.push_back(timeRuns(std::min(runs, 100), [&] {
            const db::Row& v = waiting.rows.at(size_t(saved++) % waiting.size());
            clinical::ConsultationFields f;
            f.patientEntry = v.text(u"pSurname");
            f.consultID = v.text(u"consultID");
            f.pno = v.text(u"pno");
            f.date = today;
            f.time = QStringLiteral("10:00 AM");
            f.complaints = f.diagnosis = f.prescription = QStringLiteral("0");
            f.doctor = QStringLiteral("DR QUEUE 02 [QD2]");
            prompter.answerYes();
            if (clinical::saveConsultation(ctx, f).isEmpty())
                throw std::runtime_error("not saved");
        }));
    };

    std::vector<Figures> none, year;
    say(QStringLiteral("Timing with the bench day alone"));
    measure(none);
    say(QStringLiteral("Adding a year of %1 visits a day").arg(perDay));
    {
        db::Transaction tx(c);
        for (int d = 1; d <= 365; ++d)
            addVisits(c, today.addDays(-d), perDay, QStringLiteral("H"), 0);
        tx.commit();
    }
    analyze(c);
    say(QStringLiteral("Timing with a year of history"));
    measure(year);
    c.execScript(QStringLiteral("DROP TABLE IF EXISTS bench_pats"));

    const char* names[] = {"baseline: count by doctor",
                           "chooseClinic doctors, no rooms",
                           "chooseClinic doctors, rooms",
                           "grdDoc whole",
                           "frmDocWait one doctor",
                           "cboVehNo fill",
                           "consultation Save"};
    std::printf("%s, %s patients, bench day %d visits, %d doctors, %d clinics, history %d/day\n",
                w.server.backend == db::Backend::Sqlite ? "SQLite" : "PostgreSQL",
                qPrintable(cl.value(wo.patients)), kBenchDay, kDoctors, kClinics, perDay);
    std::printf("%-34s %10s %10s %10s %10s %8s\n", "ms", "p50 none", "p95 none", "p50 year",
                "p95 year", "x base");
    for (size_t i = 0; i < none.size(); ++i)
        std::printf("%-34s %10.2f %10.2f %10.2f %10.2f %8.1f\n", names[i], none[i].p50,
                    none[i].p95, year[i].p50, year[i].p95, year[i].p95 / year[0].p95);
    return 0;
}
