// "Display Entire Records" on a workspace of many generated patients, with a visit each:
// the time until a grid holds its first page of each list, beside the time to read the
// whole list (what a grid that loads everything before showing anything would cost),
// measured in the same run.
//
//   lists_bench [--patients N] [--pg HOST:PORT] [--dir DIR]

#include "benchworkspace.h"

#include "patients/patientlists.h"
#include "platform/db.h"

#include <QAbstractItemModel>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <memory>

using namespace tolmar;
using bench::say;

namespace {

double msSince(const QElapsedTimer& t) { return double(t.nsecsElapsed()) / 1e6; }

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser cl;
    bench::WorkspaceOptions ws;
    ws.addTo(cl);
    cl.addHelpOption();
    cl.process(app);
    try {
        const auto w = bench::prepareWorkspace(cl.value(ws.dir), cl.value(ws.pg),
                                               cl.value(ws.patients).toLongLong());
        db::Connection c(w.server, db::Database::Hospital);
        if (c.scalar(QStringLiteral("SELECT COUNT(*) FROM hRecords")).toLongLong() == 0) {
            say(QStringLiteral("writing a visit per patient"));
            c.exec(QStringLiteral("INSERT INTO hRecords (recDate, htime, PNo, clinicType) "
                                  "SELECT regDate, substr(PNo, length(PNo) - 3, 2) || ':' || "
                                  "substr(PNo, length(PNo) - 1, 2), PNo, 'GENERAL' "
                                  "FROM hPatients"));
            c.execScript(QStringLiteral("ANALYZE"));
        }
        std::printf("%-12s %-16s %12s %12s %8s\n", "backend", "list", "first page", "whole list",
                    "ratio");
        for (const QString& item : patients::recordItems()) {
            patients::RecordTable shown;
            std::vector<double> first;
            int rows = 0;
            for (int i = 0; i < 5; ++i) {
                QElapsedTimer t;
                t.start();
                std::unique_ptr<QAbstractItemModel> m(
                    patients::listRecords(c, item, false, shown, nullptr));
                rows = m->rowCount();
                first.push_back(msSince(t));
            }
            std::sort(first.begin(), first.end());
            // The same list read to its end before anything is shown.
            QElapsedTimer t;
            t.start();
            std::unique_ptr<QAbstractItemModel> all(
                patients::listRecords(c, item, false, shown, nullptr));
            while (all->canFetchMore({}))
                all->fetchMore({});
            const double whole = msSince(t);
            std::printf("%-12s %-16s %9.1f ms %9.1f ms %7.0fx   (%d of %d rows)\n",
                        c.backend() == db::Backend::Sqlite ? "SQLite" : "PostgreSQL",
                        item.toUtf8().constData(), first[2], whole,
                        first[2] > 0 ? whole / first[2] : 0.0, rows, all->rowCount());
        }
    } catch (const std::exception& e) {
        say(QStringLiteral("failed: %1").arg(QString::fromUtf8(e.what())));
        return 1;
    }
    return 0;
}
