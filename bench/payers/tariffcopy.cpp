// Copying a price list of 5,000 items to a new payer, and passing one price edit on to 50
// followers, each beside a small baseline measured the same way in the same run.
//
//   bench_payers [sqlite|postgres] [rounds]     (PostgreSQL: TOLMAR_TEST_PG=host:port)

#include "core/appcontext.h"
#include "core/demoworkspace.h"
#include "payers/tariff.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace tolmar;

namespace {

constexpr int kListSize = 5000;
constexpr int kFollowers = 50;
const QString kSource = QStringLiteral("0004");  // HYLOVA HMO, whose list everyone copies
const QString kSourceEntry = QStringLiteral("HYLOVA HMO [0004]");

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

QString payerCode(int i)
{
    return QStringLiteral("B%1").arg(i, 3, 10, QLatin1Char('0'));
}

class Bench {
public:
    Bench(const db::ServerConfig& server) : m_ctx(QString(), m_prompter, m_clock)
    {
        m_ctx.setServer(server);
        m_ctx.session().userName = QStringLiteral("bench");
    }

    // The source list holds n items, and m payers exist that have no list yet.
    void prepare(int n, int payers)
    {
        auto c = m_ctx.openConnection();
        db::Transaction tx(*c);
        // Exactly n items, and no followers but the bench's own.
        c->exec(QStringLiteral("DELETE FROM DrugNHIS WHERE Company = ?"), {kSource});
        c->exec(
            QStringLiteral("DELETE FROM DrugNHISListEntered WHERE useTariff = ? AND CoyID <> ?"),
            {kSource, kSource});
        for (int i = 0; i < n; ++i)
            c->exec(QStringLiteral("INSERT INTO DrugNHIS (drgName, drgCatName, Price, Company, "
                                   "CoyName, pharmCat, Remarks, Capitated, tariffStatus) "
                                   "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                    {QStringLiteral("BENCH ITEM %1").arg(i, 5, 10, QLatin1Char('0')),
                     QStringLiteral("GENERAL"), 100.0 + i, kSource, QStringLiteral("HYLOVA HMO"),
                     QStringLiteral("ORAL SOLIDS"), QStringLiteral("HMO"), QStringLiteral("NO"),
                     QStringLiteral("FIXED")});
        for (int i = 0; i < payers; ++i)
            c->exec(QStringLiteral("INSERT INTO hRetainership (retainID, retainCode, retainName, "
                                   "ClientType, clientCatID, Active) VALUES (?, ?, ?, ?, ?, ?)"),
                    {payerCode(i), payerCode(i), QStringLiteral("BENCH PAYER %1").arg(i),
                     QStringLiteral("HMO"), QStringLiteral("HMO"), QStringLiteral("YES")});
        tx.commit();
    }

    // One whole "Save" of the template section: the payer's list deleted and copied anew
    // from the source at 85%.
    double copyOnce(const QString& payer)
    {
        TariffList list(m_ctx, TariffKind::drugs());
        TemplateRequest r;
        r.payerEntry = QStringLiteral("BENCH PAYER [%1]").arg(payer);
        r.ownTariff = QStringLiteral("NO");
        r.sourceEntry = kSourceEntry;
        r.percentage = QStringLiteral("85");
        r.deleteExisting = true;
        m_prompter.answerYes();
        QElapsedTimer t;
        t.start();
        if (list.saveTemplate(r) != TemplateOutcome::Saved)
            throw std::runtime_error("the copy was not saved");
        return double(t.nsecsElapsed()) / 1e6;
    }

    double editOnce(int round)
    {
        TariffList list(m_ctx, TariffKind::drugs());
        const auto row = m_ctx.db().queryOne(
            QStringLiteral("SELECT SNo, drgName FROM DrugNHIS WHERE Company = ? ORDER BY SNo "
                           "LIMIT 1 OFFSET ?"),
            {kSource, round * 37});
        PriceEdit e;
        e.sno = row->toLongLong(u"SNo");
        e.coyID = kSource;
        e.item = row->text(u"drgName");
        e.price = QString::number(500 + round);
        e.capitated = QStringLiteral("NO");
        e.tariffStatus = QStringLiteral("FIXED");
        QElapsedTimer t;
        t.start();
        list.editPrice(e);
        const double ms = double(t.nsecsElapsed()) / 1e6;
        // Every follower must have taken the new price at its factor.
        const int passedOn =
            m_ctx.db()
                .scalar(QStringLiteral(
                            "SELECT count(*) FROM DrugNHIS WHERE drgName = ? AND Company <> ? "
                            "AND abs(Price - ?) < 0.001"),
                        {e.item, kSource, (500 + round) * 0.85})
                .toInt();
        if (passedOn != m_followers)
            throw std::runtime_error("the price edit did not reach every follower");
        return ms;
    }

    int m_followers = 0;

private:
    ScriptedPrompter m_prompter;
    Clock m_clock;
    AppContext m_ctx;
};

db::ServerConfig makeDatabase(const QString& backend, const QString& tag, QTemporaryDir& dir,
                              QString* pgName)
{
    DemoOptions o;
    o.dir = dir.filePath(tag);
    o.patients = 0;
    if (backend == QLatin1String("postgres")) {
        const QString pg = qEnvironmentVariable("TOLMAR_TEST_PG");
        if (pg.isEmpty())
            throw std::runtime_error("set TOLMAR_TEST_PG=host:port for PostgreSQL");
        *pgName = QStringLiteral("tolmar_bench_payers_%1_%2")
                      .arg(tag)
                      .arg(QCoreApplication::applicationPid());
        o.server = pg + QLatin1Char('/') + *pgName;
        createDemoWorkspace(o);
        return db::ServerConfig::fromServerName(o.server);
    }
    createDemoWorkspace(o);
    return db::ServerConfig::fromServerName(QStringLiteral("sqlite:") + o.dir +
                                            QStringLiteral("/data"));
}

void dropDatabase(const QString& pgName)
{
    if (pgName.isEmpty())
        return;
    db::Connection admin(db::ServerConfig::fromServerName(qEnvironmentVariable("TOLMAR_TEST_PG") +
                                                          QStringLiteral("/postgres")),
                         db::Database::Hospital);
    admin.execScript(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(pgName));
}

struct Figures {
    double copyMs;
    double editMs;
};

Figures run(const QString& backend, const QString& tag, QTemporaryDir& dir, int listSize,
            int followers, int rounds)
{
    QString pgName;
    const db::ServerConfig server = makeDatabase(backend, tag, dir, &pgName);
    Figures f{};
    try {
        Bench b(server);
        b.prepare(listSize, followers);
        std::vector<double> copies;
        for (int i = 0; i < rounds; ++i)
            copies.push_back(b.copyOnce(payerCode(followers - 1)));  // the same payer, anew
        f.copyMs = median(copies);
        // The payer copied above follows the source too.
        for (int i = 0; i < followers - 1; ++i)
            b.copyOnce(payerCode(i));
        b.m_followers = followers;
        std::vector<double> edits;
        for (int i = 0; i < rounds; ++i)
            edits.push_back(b.editOnce(i));
        f.editMs = median(edits);
    } catch (...) {
        dropDatabase(pgName);
        throw;
    }
    dropDatabase(pgName);
    return f;
}

}  // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    const QString backend = args.size() > 1 ? args[1] : QStringLiteral("sqlite");
    const int rounds = args.size() > 2 ? std::max(1, args[2].toInt()) : 5;
    QTemporaryDir dir;
    try {
        const Figures base = run(backend, QStringLiteral("base"), dir, 500, 1, rounds);
        const Figures big =
            run(backend, QStringLiteral("big"), dir, kListSize, kFollowers, rounds);
        std::printf("backend %s, median of %d rounds\n", backend.toUtf8().constData(), rounds);
        std::printf(
            "copy of a list:  baseline 500 items %.1f ms; %d items %.1f ms "
            "(ratio %.2f for 10x the rows)\n",
            base.copyMs, kListSize, big.copyMs, big.copyMs / base.copyMs);
        std::printf(
            "price pass-on:   baseline 1 follower %.1f ms; %d followers of %d items "
            "%.1f ms (ratio %.2f)\n",
            base.editMs, kFollowers, kListSize, big.editMs, big.editMs / base.editMs);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "failed: %s\n", e.what());
        return 1;
    }
    return 0;
}
