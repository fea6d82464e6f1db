// The desk's patient searches on a workspace of many generated patients, each kind timed
// as the screen runs it (to the rows first shown: 20 for a limited search, the first 50
// and the count for an unlimited one), beside the same search as a LIKE '%...%' scan with
// every index bypassed, measured in the same run.
//
//   search_bench [--patients N] [--texts N] [--scans N] [--pg HOST:PORT] [--dir DIR]
//
// Without --pg (or TOLMAR_TEST_PG) it runs on SQLite. The texts are drawn from the data
// with a fixed seed: surname prefixes, telephone fragments of 5 to 8 digits, patient and
// card numbers, parts of names, and the keys of the duplicate check.

#include "benchworkspace.h"
#include "pgreplay.h"

#include "core/appcontext.h"
#include "core/clock.h"
#include "patients/duplicatecheck.h"
#include "patients/patientrepo.h"
#include "patients/patientsearch.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QAbstractItemModel>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

using namespace tolmar;
using bench::say;

namespace {

struct Person {
    QString pno, surname, first, phone, card;
    QDate dob;
};

std::vector<double> timeEach(int n, const std::function<void(int)>& run)
{
    std::vector<double> ms;
    for (int i = 0; i < n; ++i) {
        QElapsedTimer t;
        t.start();
        run(i);
        ms.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    return ms;
}

// A search as the screen runs it; the rows are let go as the grid would let them go.
void search(AppContext& ctx, const QString& mode, int limit, const QString& text)
{
    const patients::SearchOutcome o = patients::searchPatients(ctx, mode, limit, text, nullptr);
    if (o.failed())
        throw std::runtime_error(o.error.toStdString());
    delete o.rows;
}

// The same search as a scan: a LIKE on an expression no index holds, the first rows shown
// (and, unlimited, the count), ordered by name as the screen orders them.
void scan(db::Connection& c, const QString& column, const QString& pattern, int limit)
{
    const QString where = QStringLiteral(" FROM vwhpatients WHERE COALESCE(%1, '') LIKE ?")
                              .arg(column);
    if (limit == 0)
        c.scalar(QStringLiteral("SELECT COUNT(*)") + where, {pattern});
    c.query(QStringLiteral("SELECT *") + where + QStringLiteral(" ORDER BY FullName LIMIT ?"),
            {pattern, limit == 0 ? 50 : limit});
}

QString lowerSome(QRandomGenerator& r, const QString& s)
{
    return r.bounded(2) ? s.toLower() : s;  // half the desk types in lower case
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCommandLineParser cl;
    cl.addHelpOption();
    bench::WorkspaceOptions wo;
    wo.addTo(cl);
    const QCommandLineOption textsOpt(QStringLiteral("texts"), QStringLiteral("texts per kind"),
                                      QStringLiteral("N"), QStringLiteral("1000"));
    const QCommandLineOption scansOpt(QStringLiteral("scans"),
                                      QStringLiteral("texts per kind for the scan baseline"),
                                      QStringLiteral("N"), QStringLiteral("20"));
    cl.addOptions({textsOpt, scansOpt});
    cl.process(app);
    const qint64 patients = cl.value(wo.patients).toLongLong();
    const int texts = cl.value(textsOpt).toInt();
    const int scans = cl.value(scansOpt).toInt();
    try {
        const bench::BenchWorkspace w =
            bench::prepareWorkspace(cl.value(wo.dir), cl.value(wo.pg), patients);
        ScriptedPrompter prompter;
        Clock clock;
        AppContext ctx(w.home, prompter, clock);
        ctx.setServer(w.server);
        db::Connection& c = ctx.db();
        say(QStringLiteral("Folded names still to write: %1").arg(patients::foldPendingNames(c)));
        // A freshly generated table has no statistics yet; a server at work has them from
        // autovacuum long before a million patients are on file.
        if (w.server.backend == db::Backend::Postgres)
            c.execScript(QStringLiteral("ANALYZE hPatients"));

        // The people the texts come from, drawn by number with a fixed seed.
        QRandomGenerator r(20261123);
        const qint64 total = c.scalar(QStringLiteral("SELECT COUNT(*) FROM hPatients")).toLongLong();
        const QString first = c.scalar(QStringLiteral("SELECT MIN(PNo) FROM hPatients")).toString();
        const QString prefix = first.left(first.indexOf(QLatin1Char('/')) + 1);
        std::vector<Person> people;
        while (int(people.size()) < texts) {
            const QString pno =
                prefix + QStringLiteral("%1").arg(1 + r.bounded(quint32(total)), 9, 10,
                                                  QLatin1Char('0'));
            const auto row = c.queryOne(
                QStringLiteral("SELECT PNo, psurname, pfirstName, pPhoneNo, oldPno, DOB "
                               "FROM hPatients WHERE PNo = ?"),
                {pno});
            if (row && row->text(u"pPhoneNo").size() >= 8)
                people.push_back({row->text(u"PNo"), row->text(u"psurname"),
                                  row->text(u"pfirstName"), row->text(u"pPhoneNo"),
                                  row->text(u"oldPno"), row->date(u"DOB")});
        }
        struct Kind {
            const char* name;
            std::function<void(int)> run;       // the i-th text, as the screen runs it
            std::function<void(int)> baseline;  // the i-th text as a scan
            double target;
        };
        std::vector<QString> prefixes, phones, parts;
        for (const Person& p : people) {
            prefixes.push_back(lowerSome(r, p.surname.left(3 + int(r.bounded(3)))));
            const int len = 5 + int(r.bounded(4));
            phones.push_back(p.phone.mid(int(r.bounded(quint32(p.phone.size() - len + 1))), len));
            const QString full = p.surname + QLatin1Char(' ') + p.first;
            const int plen = std::min(int(full.size()), 4 + int(r.bounded(3)));
            parts.push_back(lowerSome(
                r, full.mid(int(r.bounded(quint32(full.size() - plen + 1))), plen)));
        }
        const auto like = [](const QString& s) { return QLatin1Char('%') + s + QLatin1Char('%'); };
        using patients::kSearchCardNo, patients::kSearchName, patients::kSearchSysNo;
        const std::vector<Kind> kinds{
            {"surname prefix (20)",
             [&](int i) { search(ctx, kSearchName, 20, prefixes[size_t(i)]); },
             [&](int i) { scan(c, "upper(FullName)", like(prefixes[size_t(i)].toUpper()), 20); },
             15},
            {"phone fragment",
             [&](int i) { search(ctx, kSearchSysNo, 0, phones[size_t(i)]); },
             [&](int i) { scan(c, "PhoneNo", like(phones[size_t(i)]), 0); }, 15},
            {"PNo",
             [&](int i) { patients::readPatient(c, people[size_t(i)].pno); },
             [&](int i) { scan(c, "pno", like(people[size_t(i)].pno), 20); }, 15},
            {"part of a name (20)",
             [&](int i) { search(ctx, kSearchName, 20, parts[size_t(i)]); },
             [&](int i) { scan(c, "upper(FullName)", like(parts[size_t(i)].toUpper()), 20); },
             15},
            {"part of a name (all)",
             [&](int i) { search(ctx, kSearchName, 0, parts[size_t(i)]); },
             [&](int i) { scan(c, "upper(FullName)", like(parts[size_t(i)].toUpper()), 0); },
             15},
            {"card number",
             [&](int i) { search(ctx, kSearchCardNo, 0, people[size_t(i)].card); },
             [&](int i) { scan(c, "oldPno", like(people[size_t(i)].card), 0); }, 15},
            {"duplicate candidates",
             [&](int i) {
                 const Person& p = people[size_t(i)];
                 patients::likelyDuplicates(c, {p.first, p.surname, p.dob, p.phone});
             },
             [&](int i) {
                 const Person& p = people[size_t(i)];
                 c.query(QStringLiteral("SELECT PNo, psurname, pfirstName FROM hPatients "
                                        "WHERE COALESCE(DOB, DOB) = ? "
                                        "OR COALESCE(pPhoneNo, '') LIKE ?"),
                         {p.dob, like(p.phone)});
             },
             5},
        };
        const QString backend =
            w.server.backend == db::Backend::Sqlite ? QStringLiteral("SQLite") : QStringLiteral("PostgreSQL");
        std::printf("%s, %lld patients, %d texts per kind (%d for the scans)\n",
                    qPrintable(backend), static_cast<long long>(total), texts, scans);
        std::printf("%-24s %9s %9s %12s %9s %8s\n", "kind", "p50 ms", "p95 ms", "scan p95 ms",
                    "ratio", "target");
        bool met = true;
        for (const Kind& k : kinds) {
            say(QStringLiteral("  %1").arg(QLatin1String(k.name)));
            const auto ms = timeEach(texts, k.run);
            const auto base = timeEach(std::min(scans, texts), k.baseline);
            const double p95 = bench::percentileOf(ms, 95), b95 = bench::percentileOf(base, 95);
            if (qEnvironmentVariableIsSet("SEARCH_BENCH_SLOWEST")) {
                std::vector<int> order(ms.size());
                for (size_t i = 0; i < order.size(); ++i)
                    order[i] = int(i);
                std::sort(order.begin(), order.end(),
                          [&](int a, int b) { return ms[size_t(a)] > ms[size_t(b)]; });
                for (int i : std::vector<int>(order.begin(), order.begin() + 5))
                    say(QStringLiteral("    %1 ms: %2 / %3 / %4")
                            .arg(ms[size_t(i)], 0, 'f', 1)
                            .arg(prefixes[size_t(i)], phones[size_t(i)], parts[size_t(i)]));
            }
            const bool ok = p95 <= k.target && b95 >= 50 * p95;
            met = met && ok;
            std::printf("%-24s %9.2f %9.2f %12.1f %8.0fx %5.0f ms %s\n", k.name,
                        bench::percentileOf(ms, 50), p95, b95, b95 / std::max(p95, 1e-3), k.target,
                        ok ? "met" : "MISSED");
            std::fflush(stdout);
        }

        // The commonest fragment of three letters among the names: the worst an incremental
        // search meets, shown apart and with no target.
        QHash<QString, int> counts;
        for (const Person& p : people) {
            const QString full = patients::searchNameOf(p.surname, p.first);
            for (qsizetype i = 0; i + 3 <= full.size(); ++i)
                if (!full.mid(i, 3).contains(QLatin1Char(' ')))
                    ++counts[full.mid(i, 3)];
        }
        QString commonest;
        for (auto it = counts.cbegin(); it != counts.cend(); ++it)
            if (commonest.isEmpty() || it.value() > counts.value(commonest))
                commonest = it.key();
        for (int limit : {20, 0}) {
            const auto ms = timeEach(20, [&](int) { search(ctx, kSearchName, limit, commonest); });
            const auto o = patients::searchPatients(ctx, kSearchName, limit, commonest, nullptr);
            delete o.rows;
            std::printf("commonest fragment \"%s\" (%s): p95 %.1f ms, %lld found\n",
                        qPrintable(commonest), limit ? "20" : "all", bench::percentileOf(ms, 95),
                        static_cast<long long>(o.found));
        }
        std::printf("%s\n", met ? "all targets met" : "some targets missed");
    } catch (const std::exception& e) {
        say(QStringLiteral("search_bench: %1").arg(QString::fromUtf8(e.what())));
        return 1;
    }
    return 0;
}
