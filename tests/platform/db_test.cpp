// The database seam on both backends: bound values, NULL as "", column names without
// case, transactions that roll back unless committed, and the five databases seen from
// each other.
#include "support/expect.h"

#include "platform/db.h"

#include <thread>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;
using db::Database;

class DbSeam : public BackendTest {};

TEST_P(DbSeam, NamesWithQuotesBracketsAndAccentsRoundTripThroughTheView)
{
    const QString surname = u"O'Brien-Ọládipọ̀ \"Jr\""_s;
    const QString first = u"Ngozi; DROP TABLE hPatients; --"_s;
    ws->exec(
        u"INSERT INTO hPatients (PNo, psurname, pfirstName, CoyName, DOB) "
        "VALUES (?, ?, ?, ?, ?)"_s,
        {u"001/000000042"_s, surname, first, u"0007"_s, QDate(1990, 2, 28)});
    auto c = ws->connect();
    // Column names in any case.
    expectColumns(c->queryOne(u"SELECT * FROM vwhpatients WHERE pno = '001/000000042'"_s),
                  {"Surname=" + surname, "surname=" + surname, "Firstname=" + first,
                   "FullName=" + surname + ' ' + first, "fullname=" + surname + ' ' + first,
                   "Client=O'DEX & SONS (NIG) LTD", "DOB=1990-02-28"});
    // The search a desk types finds the name as typed, quote and all.
    EXPECT_EQ(c->scalar(u"SELECT count(*) FROM hPatients WHERE psurname LIKE ?"_s, {u"O'Brien%"_s})
                  .toInt(),
              1);
    EXPECT_EQ(c->scalar(u"SELECT count(*) FROM hPatients"_s).toInt(), 1);
}

TEST_P(DbSeam, NullReadsAsEmptyAndZero)
{
    ws->exec(u"INSERT INTO hPatients (PNo) VALUES (?)"_s, {u"001/000000001"_s});
    const auto row = ws->connect()->queryOne(
        u"SELECT Email, DOB, Debt, expirydate FROM hPatients WHERE PNo = ?"_s,
        {u"001/000000001"_s});
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
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"EPE"_s});
        EXPECT_TRUE(c->inTransaction());
    }
    EXPECT_FALSE(c->inTransaction());
    EXPECT_EQ(
        c->scalar(u"SELECT count(*) FROM hPatientArea WHERE AreaName = ?"_s, {u"EPE"_s}).toInt(),
        0);
    {
        db::Transaction tx(*c);
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"EPE"_s});
        tx.commit();
    }
    EXPECT_EQ(
        ws->scalar(u"SELECT count(*) FROM hPatientArea WHERE AreaName = ?"_s, {u"EPE"_s}).toInt(),
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
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"O'DUA"_s});
    }  // rolled back
    // Another thread's statements are its own business.
    std::thread([&] { ws->connect()->scalar(u"SELECT count(*) FROM idgen"_s); }).join();
    db::observeStatements(nullptr);
    c->scalar(u"SELECT 1"_s);

    ASSERT_EQ(seen.lines.size(), 3);
    EXPECT_TRUE(seen.lines[0].startsWith(u"BEGIN"_s));
    EXPECT_EQ(seen.lines[1], u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s);
    EXPECT_EQ(seen.lines[2], u"ROLLBACK"_s);
    ASSERT_EQ(seen.values.size(), 1u);
    EXPECT_EQ(seen.values[0].toString(), u"O'DUA"_s);
}

TEST_P(DbSeam, FailedStatementCarriesTheDriverTextAndTheStatement)
{
    auto c = ws->connect();
    try {
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s,
                {u"IKEJA"_s});  // already there: primary key
        FAIL() << "a duplicate key must fail";
    } catch (const db::DbError& e) {
        EXPECT_FALSE(e.description().isEmpty());
        EXPECT_TRUE(e.statement().contains(u"hPatientArea"_s));
    }
    // The connection is still usable after the failure.
    EXPECT_EQ(c->scalar(u"SELECT count(*) FROM hPatientArea"_s).toInt(), 10);
}

TEST_P(DbSeam, EachDatabaseSeesItsOwnAppDefaultsFirst)
{
    ws->setDefault(u"Probe"_s, u"hospital"_s, Database::Hospital);
    ws->setDefault(u"Probe"_s, u"sms"_s, Database::SmsCenter);
    ws->setDefault(u"Probe"_s, u"accounts"_s, Database::Accounting);
    const QString sql = u"SELECT idval FROM AppDefaults WHERE ID = ?"_s;
    EXPECT_EQ(ws->scalar(sql, {u"Probe"_s}, Database::Hospital).toString(), u"hospital"_s);
    EXPECT_EQ(ws->scalar(sql, {u"Probe"_s}, Database::SmsCenter).toString(), u"sms"_s);
    EXPECT_EQ(ws->scalar(sql, {u"Probe"_s}, Database::Accounting).toString(), u"accounts"_s);
    // A table that only HOSPITAL has is still reachable from the others.
    EXPECT_EQ(ws->scalar(u"SELECT count(*) FROM hRetainership"_s, {}, Database::SmsCenter).toInt(),
              ws->scalar(u"SELECT count(*) FROM hRetainership"_s).toInt());
}

TEST_P(DbSeam, ServerClockViewGivesOneDateTime)
{
    const QVariant v = ws->scalar(u"select sysDT from qrySysDateTime"_s);
    const QDateTime t = db::variantDateTime(v);
    ASSERT_TRUE(t.isValid());
    EXPECT_LT(std::abs(t.secsTo(QDateTime::currentDateTime())), 120);
}

TOLMAR_INSTANTIATE_BACKENDS(DbSeam);

TEST(ServerConfig, ReadsTheServerNameOfMadeSys)
{
    auto s = db::ServerConfig::fromServerName(u"sqlite:data"_s, u"/x"_s);
    EXPECT_EQ(s.backend, db::Backend::Sqlite);
    EXPECT_EQ(s.sqliteDir, u"/x/data"_s);

    auto p = db::ServerConfig::fromServerName(u"dbhost:6543\\SQLEXPRESS"_s);
    EXPECT_EQ(p.backend, db::Backend::Postgres);
    EXPECT_EQ(p.host, u"dbhost"_s);
    EXPECT_EQ(p.port, 6543);
    EXPECT_EQ(p.pgDatabase, u"tolmar"_s);

    auto q = db::ServerConfig::fromServerName(u"SERVER"_s);
    EXPECT_EQ(q.host, u"SERVER"_s);
    EXPECT_EQ(q.port, 5432);
    auto r = db::ServerConfig::fromServerName(u"10.0.0.5/records"_s);
    EXPECT_EQ(r.pgDatabase, u"records"_s);
    EXPECT_FALSE(r.describe().contains(u"Bravo"_s));
}
