// The database seam on both backends: bound values, NULL as "", column names without
// case, transactions that roll back unless committed, and the five databases seen from
// each other.
#include "support/workspace.h"

#include "platform/db.h"

#include <thread>

using namespace tolmar;
using namespace tolmar::test;
using db::Database;

class DbSeam : public BackendTest {};

TEST_P(DbSeam, NamesWithQuotesBracketsAndAccentsRoundTripThroughTheView)
{
    const QString surname = QStringLiteral("O'Brien-Ọládipọ̀ \"Jr\"");
    const QString first = QStringLiteral("Ngozi; DROP TABLE hPatients; --");
    ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, pfirstName, CoyName, DOB) "
                            "VALUES (?, ?, ?, ?, ?)"),
             {QStringLiteral("001/000000042"), surname, first, QStringLiteral("0007"),
              QDate(1990, 2, 28)});
    auto c = ws->connect();
    const auto row = c->queryOne(QStringLiteral("SELECT * FROM vwhpatients WHERE pno = ?"),
                                 {QStringLiteral("001/000000042")});
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text(u"Surname"), surname);
    EXPECT_EQ(row->text(u"surname"), surname);
    EXPECT_EQ(row->text(u"Firstname"), first);
    EXPECT_EQ(row->text(u"FullName"), surname + QLatin1Char(' ') + first);
    EXPECT_EQ(row->text(u"fullname"), row->text(u"FullName"));
    EXPECT_EQ(row->text(u"Client"), QStringLiteral("O'DEX & SONS (NIG) LTD"));
    EXPECT_EQ(row->date(u"DOB"), QDate(1990, 2, 28));
    // The search a desk types finds the name as typed, quote and all.
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT count(*) FROM hPatients WHERE psurname LIKE ?"),
                        {QStringLiteral("O'Brien%")})
                  .toInt(),
              1);
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT count(*) FROM hPatients")).toInt(), 1);
}

TEST_P(DbSeam, NullReadsAsEmptyAndZero)
{
    ws->exec(QStringLiteral("INSERT INTO hPatients (PNo) VALUES (?)"),
             {QStringLiteral("001/000000001")});
    const auto row = ws->connect()->queryOne(
        QStringLiteral("SELECT Email, DOB, Debt, expirydate FROM hPatients WHERE PNo = ?"),
        {QStringLiteral("001/000000001")});
    ASSERT_TRUE(row);
    EXPECT_EQ(row->text(u"email"), QString());
    EXPECT_TRUE(row->isNull(u"DOB"));
    EXPECT_FALSE(row->date(u"dob").isValid());
    EXPECT_EQ(row->toDouble(u"Debt"), 0.0);
    EXPECT_EQ(row->text(u"EXPIRYDATE"), QString());
    EXPECT_THROW(row->value(u"NoSuchColumn"), db::DbError);
}

TEST_P(DbSeam, TransactionRollsBackUnlessCommitted)
{
    auto c = ws->connect();
    {
        db::Transaction tx(*c);
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("EPE")});
        EXPECT_TRUE(c->inTransaction());
    }
    EXPECT_FALSE(c->inTransaction());
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName = ?"),
                        {QStringLiteral("EPE")})
                  .toInt(),
              0);
    {
        db::Transaction tx(*c);
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("EPE")});
        tx.commit();
    }
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName = ?"),
                         {QStringLiteral("EPE")})
                  .toInt(),
              1);
}

namespace {
struct Seen : db::StatementObserver {
    void statement(const db::Connection&, const QString& sql, const db::Params& p) override
    {
        lines << sql;
        values.insert(values.end(), p.begin(), p.end());
    }
    QStringList lines;
    db::Params values;
};
}  // namespace

TEST_P(DbSeam, ObserverSeesThisThreadsStatementsWithValuesAndTransactionVerbs)
{
    auto c = ws->connect();
    Seen seen;
    db::observeStatements(&seen);
    {
        db::Transaction tx(*c);
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("O'DUA")});
    }  // rolled back
    // Another thread's statements are its own business.
    std::thread([&] { ws->connect()->scalar(QStringLiteral("SELECT count(*) FROM idgen")); })
        .join();
    db::observeStatements(nullptr);
    c->scalar(QStringLiteral("SELECT 1"));

    ASSERT_EQ(seen.lines.size(), 3);
    EXPECT_TRUE(seen.lines[0].startsWith(QStringLiteral("BEGIN")));
    EXPECT_EQ(seen.lines[1], QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"));
    EXPECT_EQ(seen.lines[2], QStringLiteral("ROLLBACK"));
    ASSERT_EQ(seen.values.size(), 1u);
    EXPECT_EQ(seen.values[0].toString(), QStringLiteral("O'DUA"));
}

TEST_P(DbSeam, FailedStatementCarriesTheDriverTextAndTheStatement)
{
    auto c = ws->connect();
    try {
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("IKEJA")});  // already there: primary key
        FAIL() << "a duplicate key must fail";
    } catch (const db::DbError& e) {
        EXPECT_FALSE(e.description().isEmpty());
        EXPECT_TRUE(e.statement().contains(QStringLiteral("hPatientArea")));
    }
    // The connection is still usable after the failure.
    EXPECT_EQ(c->scalar(QStringLiteral("SELECT count(*) FROM hPatientArea")).toInt(), 10);
}

TEST_P(DbSeam, EachDatabaseSeesItsOwnAppDefaultsFirst)
{
    ws->setDefault(QStringLiteral("Probe"), QStringLiteral("hospital"), Database::Hospital);
    ws->setDefault(QStringLiteral("Probe"), QStringLiteral("sms"), Database::SmsCenter);
    ws->setDefault(QStringLiteral("Probe"), QStringLiteral("accounts"), Database::Accounting);
    const QString sql = QStringLiteral("SELECT idval FROM AppDefaults WHERE ID = ?");
    EXPECT_EQ(ws->scalar(sql, {QStringLiteral("Probe")}, Database::Hospital).toString(),
              QStringLiteral("hospital"));
    EXPECT_EQ(ws->scalar(sql, {QStringLiteral("Probe")}, Database::SmsCenter).toString(),
              QStringLiteral("sms"));
    EXPECT_EQ(ws->scalar(sql, {QStringLiteral("Probe")}, Database::Accounting).toString(),
              QStringLiteral("accounts"));
    // A table that only HOSPITAL has is still reachable from the others.
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM hRetainership"), {},
                         Database::SmsCenter)
                  .toInt(),
              ws->scalar(QStringLiteral("SELECT count(*) FROM hRetainership")).toInt());
}

TEST_P(DbSeam, ServerClockViewGivesOneDateTime)
{
    const QVariant v = ws->scalar(QStringLiteral("select sysDT from qrySysDateTime"));
    const QDateTime t = db::variantDateTime(v);
    ASSERT_TRUE(t.isValid());
    EXPECT_LT(std::abs(t.secsTo(QDateTime::currentDateTime())), 120);
}

TOLMAR_INSTANTIATE_BACKENDS(DbSeam);

TEST(ServerConfig, ReadsTheServerNameOfMadeSys)
{
    auto s = db::ServerConfig::fromServerName(QStringLiteral("sqlite:data"), QStringLiteral("/x"));
    EXPECT_EQ(s.backend, db::Backend::Sqlite);
    EXPECT_EQ(s.sqliteDir, QStringLiteral("/x/data"));

    auto p = db::ServerConfig::fromServerName(QStringLiteral("dbhost:6543\\SQLEXPRESS"));
    EXPECT_EQ(p.backend, db::Backend::Postgres);
    EXPECT_EQ(p.host, QStringLiteral("dbhost"));
    EXPECT_EQ(p.port, 6543);
    EXPECT_EQ(p.pgDatabase, QStringLiteral("tolmar"));

    auto q = db::ServerConfig::fromServerName(QStringLiteral("SERVER"));
    EXPECT_EQ(q.host, QStringLiteral("SERVER"));
    EXPECT_EQ(q.port, 5432);
    auto r = db::ServerConfig::fromServerName(QStringLiteral("10.0.0.5/records"));
    EXPECT_EQ(r.pgDatabase, QStringLiteral("records"));
    EXPECT_FALSE(r.describe().contains(QStringLiteral("Bravo")));
}
