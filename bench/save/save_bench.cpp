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
#include "pgreplay.h"

#include "core/appcontext.h"
#include "core/idgen.h"
#include "patients/registrationform.h"
#include "patients/registrationsave.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

using namespace tolmar;
using namespace tolmar::bench;

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

// The registration Save at a desk, its question answered Yes.
QString save(BenchDesk& desk, const patients::RegistrationForm& f)
{
    desk.prompter().answerYes();
    const QString pno = patients::saveRegistration(desk.ctx(), f);
    desk.prompter().clear();
    if (pno.isEmpty())
        throw std::runtime_error("the save gave no patient number");
    return pno;
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
            save(desk, newPrivatePatient(0, -1));  // prepared caches and pages warm
            std::vector<Recorded> recorded;
            QString pno;
            {
                Recorder rec;
                pno = save(desk, newPrivatePatient(0, 0));
                recorded = std::move(rec.statements);
            }
            db::Connection c(w.server, db::Database::Hospital);
            const QString cid =
                c.scalar(QStringLiteral("select LastConsultID from hPatients where PNo = ?"),
                         {pno})
                    .toString();
            script = pgbenchScript(
                recorded, {{pno, QStringLiteral("pno")}, {cid, QStringLiteral("cid")}},
                {{kSeriesPatientNo, QStringLiteral("pno")},
                 {kSeriesConsultID, QStringLiteral("cid")}});
        }
        QTemporaryDir dir;
        const QString scriptPath = dir.filePath(QStringLiteral("save.sql"));
        if (!writeScript(script, scriptPath))
            throw std::runtime_error("cannot write the pgbench script");
        if (qEnvironmentVariableIsSet("TOLMAR_BENCH_SHOW_SCRIPT"))
            say(script.text);
        {
            db::Connection c(w.server, db::Database::Hospital);
            std::printf("%lld patients on PostgreSQL %s; one save is %d statements\n",
                        c.scalar(QStringLiteral("select count(*) from hPatients")).toLongLong(),
                        qPrintable(cl.value(workspace.pg)), script.statements);
        }
        printFiguresHeader();
        int round = 1;
        for (int desks : deskCounts) {
            const int r = round++;
            const Figures ours = runDesks(desks, saves, [&](int d) -> DeskWork {
                auto desk = std::make_shared<BenchDesk>(w.home);
                return [desk, d, r](int n) { save(*desk, newPrivatePatient(r * 100 + d, n)); };
            });
            const Figures base = runPgbench(w, scriptPath, desks, saves);
            printFigures("Save", desks, ours);
            printFigures("pgbench", desks, base);
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
