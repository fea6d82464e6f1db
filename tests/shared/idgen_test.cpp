// The identifier generator on both backends: the composed values of each series, what a
// missing series gives, many desks drawing at once (threads and separate processes), and
// the two repairs closing the gap that a rolled-back save leaves.
#include "support/workspace.h"

#include "core/idgen.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>

#include <thread>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class IdGen : public BackendTest {
protected:
    qint64 counter(const QString& series) const
    {
        return ws->scalar(u"SELECT id FROM idgen WHERE destName = ?"_s, {series}).toLongLong();
    }
    void addVisit(db::Connection& c, const QString& consultID) const
    {
        c.exec(u"INSERT INTO hRecords (recDate, PNo, consultID) VALUES (?, ?, ?)"_s,
               {QDate(2026, 11, 23), u"001/000000001"_s, consultID});
    }
};

TEST(ComposeIdentifier, PadsToTheWidthOrGivesTheBareNumber)
{
    EXPECT_EQ(composeIdentifier(u"001/"_s, 7, 9), u"001/000000007"_s);
    EXPECT_EQ(composeIdentifier(u"001"_s, 123456789, 9), u"001123456789"_s);
    EXPECT_EQ(composeIdentifier(QString(), 42, 0), u"42"_s);
    EXPECT_EQ(composeIdentifier(u"X"_s, 42, 0), u"42"_s);
    // A number that outgrows its width would make a 13-character ConsultID (a split bill)
    // or a PNo too long for its column: no identifier at all.
    EXPECT_EQ(composeIdentifier(u"001"_s, 1000000000, 9), QString());
}

TEST_P(IdGen, EachSeriesGivesItsOwnShapeAndAdvances)
{
    Session& s = desk->ctx.session();
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesPatientNo), u"001/000000001"_s);
    EXPECT_EQ(s.lastIdentifier, u"001/000000001"_s);
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesPatientNo), u"001/000000002"_s);

    const QString consult = getIDNo(desk->ctx, kSeriesConsultID);
    EXPECT_EQ(consult, u"001000000001"_s);
    EXPECT_EQ(consult.size(), 12);
    EXPECT_EQ(s.lastIdentifier, consult);

    EXPECT_EQ(getIDNo(desk->ctx, kSeriesPatient), u"1"_s);
    EXPECT_EQ(counter(kSeriesPatientNo), 2);
    EXPECT_EQ(counter(kSeriesConsultID), 1);
}

TEST_P(IdGen, TheSeriesNameIsMatchedExactly)
{
    // "Patient" and "PATIENT2" are different series; a near miss is no series at all.
    getIDNo(desk->ctx, kSeriesPatient);
    EXPECT_EQ(counter(kSeriesPatientNo), 0);
    EXPECT_EQ(getIDNo(desk->ctx, u"patient2"_s), QString());
    EXPECT_EQ(counter(kSeriesPatientNo), 0);
}

TEST_P(IdGen, MissingSeriesGivesNothingAndClearsTheLastIdentifier)
{
    Session& s = desk->ctx.session();
    getIDNo(desk->ctx, kSeriesPatientNo);
    ASSERT_FALSE(s.lastIdentifier.isEmpty());
    EXPECT_EQ(getIDNo(desk->ctx, u"NoSuchSeries"_s), QString());
    EXPECT_EQ(s.lastIdentifier, QString());
}

TEST_P(IdGen, PrefixAndWidthComeFromTheDatabase)
{
    ws->exec(u"UPDATE idgen SET prefix = ?, width = ?, id = ? WHERE destName = ?"_s,
             {u"014/"_s, 9, 41, kSeriesPatientNo});
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesPatientNo), u"014/000000042"_s);
}

TEST_P(IdGen, ExhaustedSeriesGivesNothing)
{
    ws->exec(u"UPDATE idgen SET id = ? WHERE destName = ?"_s, {999999999, kSeriesConsultID});
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesConsultID), QString());
}

TEST_P(IdGen, DrawInsideATransactionIsRefused)
{
    auto c = ws->connect();
    db::Transaction tx(*c);
    EXPECT_THROW(drawIdentifier(*c, kSeriesPatientNo), std::logic_error);
}

TEST_P(IdGen, DatabaseFailureReachesTheCaller)
{
    ws->connect()->execScript(u"DROP TABLE idgen"_s);
    EXPECT_THROW(getIDNo(desk->ctx, kSeriesPatientNo), db::DbError);
    EXPECT_EQ(desk->ctx.session().lastIdentifier, QString());
}

TEST_P(IdGen, ManyConnectionsDrawingAtOnceNeverShareOrLoseANumber)
{
    constexpr int kThreads = 8;
    constexpr int kDraws = 150;
    std::vector<QStringList> drawn(kThreads);
    std::vector<std::string> errors(kThreads);
    std::vector<std::thread> threads;
    const db::ServerConfig server = ws->server();
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            try {
                db::Connection c(server, db::Database::Hospital);
                for (int i = 0; i < kDraws; ++i)
                    drawn[size_t(t)] << drawIdentifier(c, kSeriesConsultID);
            } catch (const std::exception& e) {
                errors[size_t(t)] = e.what();
            }
        });
    }
    for (auto& th : threads)
        th.join();
    QSet<QString> all;
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(errors[size_t(t)], "");
        // Each connection sees its own values rise.
        for (int i = 1; i < drawn[size_t(t)].size(); ++i)
            EXPECT_LT(drawn[size_t(t)][i - 1], drawn[size_t(t)][i]);
        for (const QString& v : drawn[size_t(t)])
            all.insert(v);
    }
    ASSERT_EQ(all.size(), kThreads * kDraws);
    for (int n = 1; n <= kThreads * kDraws; ++n)
        EXPECT_TRUE(all.contains(composeIdentifier(u"001"_s, n, 9))) << n;
    EXPECT_EQ(counter(kSeriesConsultID), kThreads * kDraws);
}

// A worker process for the test below: draws from a series and writes what it got.
TEST(IdGenWorker, Draw)
{
    const QString server = qEnvironmentVariable("TOLMAR_IDGEN_WORKER_SERVER");
    if (server.isEmpty())
        GTEST_SKIP() << "run by SeparateProcessesNeverShareOrLoseANumber";
    const int draws = qEnvironmentVariableIntValue("TOLMAR_IDGEN_WORKER_DRAWS");
    db::Connection c(db::ServerConfig::fromServerName(server), db::Database::Hospital);
    QStringList got;
    for (int i = 0; i < draws; ++i)
        got << drawIdentifier(c, kSeriesPatientNo);
    QFile out(qEnvironmentVariable("TOLMAR_IDGEN_WORKER_OUT"));
    ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
    out.write(got.join(QLatin1Char('\n')).toUtf8());
}

TEST_P(IdGen, SeparateProcessesNeverShareOrLoseANumber)
{
    constexpr int kProcesses = 4;
    constexpr int kDraws = 100;
    QTemporaryDir outDir;
    std::vector<std::unique_ptr<QProcess>> workers;
    for (int p = 0; p < kProcesses; ++p) {
        auto proc = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"TOLMAR_IDGEN_WORKER_SERVER"_s, ws->serverName());
        env.insert(u"TOLMAR_IDGEN_WORKER_DRAWS"_s, QString::number(kDraws));
        env.insert(u"TOLMAR_IDGEN_WORKER_OUT"_s, outDir.filePath(QString::number(p)));
        env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        proc->setProcessEnvironment(env);
        proc->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        proc->start(QCoreApplication::applicationFilePath(),
                    {u"--gtest_filter=IdGenWorker.Draw"_s});
        workers.push_back(std::move(proc));
    }
    QSet<QString> all;
    for (int p = 0; p < kProcesses; ++p) {
        ASSERT_TRUE(workers[size_t(p)]->waitForFinished(120000));
        EXPECT_EQ(workers[size_t(p)]->exitCode(), 0);
        QFile f(outDir.filePath(QString::number(p)));
        ASSERT_TRUE(f.open(QIODevice::ReadOnly));
        const QStringList got = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
        EXPECT_EQ(got.size(), kDraws);
        for (const QString& v : got)
            all.insert(v);
    }
    ASSERT_EQ(all.size(), kProcesses * kDraws);
    for (int n = 1; n <= kProcesses * kDraws; ++n)
        EXPECT_TRUE(all.contains(composeIdentifier(u"001/"_s, n, 9))) << n;
}

TEST_P(IdGen, RepairClosesTheGapOfARolledBackVisit)
{
    // A visit saved, then one whose save rolls back after drawing its number.
    const QString first = getIDNo(desk->ctx, kSeriesConsultID);
    {
        auto c = desk->ctx.openConnection();
        db::Transaction tx(*c);
        addVisit(*c, first);
        tx.commit();
    }
    const QString burned = getIDNo(desk->ctx, kSeriesConsultID);
    {
        auto c = desk->ctx.openConnection();
        db::Transaction tx(*c);
        addVisit(*c, burned);
    }  // rolled back
    EXPECT_EQ(counter(kSeriesConsultID), 2);

    updateAttendanceID(desk->ctx);
    EXPECT_TRUE(desk->prompter.messages().empty());
    EXPECT_EQ(getIDNo(desk->ctx, kSeriesConsultID), burned);
}

TEST_P(IdGen, RepairsFollowTheNewestVisitAndTheHighestPatient)
{
    const struct {
        QString series;
        QStringList rows;  // visits in order, or patients
        const char* next;  // nullptr: the repair is refused
    } cases[] = {
        // Newest by recID, though lower; another series' number is no ordinary visit.
        {kSeriesConsultID, {"001000000950", "OFL000000999", "001000000017"}, "001000000018"},
        {kSeriesConsultID, {}, "001000000078"},  // nothing to follow: the counter stays
        {kSeriesConsultID, {"001"}, "001000000001"},  // numbered by its prefix only
        {kSeriesConsultID, {"001OFL0000012"}, nullptr},
        {kSeriesPatientNo, {"001/000000003", "001/000000120", "001/000000045"}, "001/000000121"},
        {kSeriesPatientNo, {}, "001/000000078"},
    };
    for (const auto& k : cases) {
        const QString& series = k.series;
        const bool visits = series == kSeriesConsultID;
        SCOPED_TRACE(k.rows.join(u' ').toStdString());
        ws->exec(u"DELETE FROM hRecords"_s);
        ws->exec(u"DELETE FROM hPatients"_s);
        ws->exec(u"UPDATE idgen SET id = 77 WHERE destName = ?"_s, {series});
        auto c = ws->connect();
        for (const QString& r : k.rows) {
            if (visits)
                addVisit(*c, r);
            else
                c->exec(u"INSERT INTO hPatients (PNo) VALUES (?)"_s, {r});
        }
        auto repair = [&] { visits ? updateAttendanceID(desk->ctx) : updatePatientID(desk->ctx); };
        if (!k.next) {
            EXPECT_THROW(repair(), std::runtime_error);
            EXPECT_EQ(counter(series), 77);
            continue;
        }
        repair();
        EXPECT_TRUE(desk->prompter.messages().empty());
        EXPECT_EQ(getIDNo(desk->ctx, series), QString::fromLatin1(k.next));
    }
}

TOLMAR_INSTANTIATE_BACKENDS(IdGen);

}  // namespace
