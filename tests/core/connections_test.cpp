// A command's own connection: kept for the next command when it comes back clean, closed
// when it saw an error, and never handed out dead; every kept connection comes back by
// itself once the server does.
#include "support/workspace.h"

#include "core/appcontext.h"
#include "platform/db.h"

#include <tuple>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class OwnConnections : public BackendTest {};

TEST_P(OwnConnections, CleanOneIsKeptForTheNextCommandOfTheSameDatabase)
{
    QString first;
    {
        auto c = desk->ctx.openConnection();
        first = c->connectionName();
        db::Transaction tx(*c);
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"OJO'TA"_s});
        tx.commit();
    }
    {
        // Another database does not get the hospital's connection.
        auto sms = desk->ctx.openConnection(db::Database::SmsCenter);
        EXPECT_NE(sms->connectionName(), first);
        EXPECT_EQ(sms->database(), db::Database::SmsCenter);
    }
    auto again = desk->ctx.openConnection();
    EXPECT_EQ(again->connectionName(), first);
    EXPECT_FALSE(again->inTransaction());
    EXPECT_EQ(
        again->scalar(u"SELECT count(*) FROM hPatientArea WHERE AreaName = ?"_s, {u"OJO'TA"_s})
            .toInt(),
        1);
    // Two at once are two connections.
    auto second = desk->ctx.openConnection();
    EXPECT_NE(second->connectionName(), again->connectionName());
}

TEST_P(OwnConnections, OneThatSawAnErrorIsClosedAndItsWorkRolledBack)
{
    QString failed;
    {
        auto c = desk->ctx.openConnection();
        failed = c->connectionName();
        db::Transaction tx(*c);
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"EPE"_s});
        EXPECT_THROW(c->exec(u"INSERT INTO NoSuchTable (x) VALUES (?)"_s, {1}), db::DbError);
        EXPECT_TRUE(c->sawError());
    }
    auto next = desk->ctx.openConnection();
    EXPECT_NE(next->connectionName(), failed);
    EXPECT_EQ(
        next->scalar(u"SELECT count(*) FROM hPatientArea WHERE AreaName = ?"_s, {u"EPE"_s}).toInt(),
        0);
}

TEST_P(OwnConnections, KeptConnectionCutByTheServerIsReplacedBeforeUse)
{
    if (ws->backend() != db::Backend::Postgres)
        GTEST_SKIP() << "a server connection to cut exists on PostgreSQL only";
    qint64 pid = 0;
    QString kept;
    {
        auto c = desk->ctx.openConnection();
        kept = c->connectionName();
        pid = c->scalar(u"SELECT pg_backend_pid()"_s).toLongLong();
    }
    // What a server restart does to every kept connection.
    ws->connect()->scalar(u"SELECT pg_terminate_backend(?)"_s, {pid});
    auto c = desk->ctx.openConnection();
    EXPECT_NE(c->connectionName(), kept);
    EXPECT_NE(c->scalar(u"SELECT pg_backend_pid()"_s).toLongLong(), pid);
    db::Transaction tx(*c);
    EXPECT_EQ(c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"OKE-AFA [NEW]"_s}),
              1);
    tx.commit();
}

TEST_P(OwnConnections, TransactionWhoseLinkWasCutFailsAtCommitAndTheConnectionComesBack)
{
    if (ws->backend() != db::Backend::Postgres)
        GTEST_SKIP() << "a server connection to cut exists on PostgreSQL only";
    auto c = desk->ctx.openConnection();
    db::Connection& shared = desk->ctx.db();
    const QString pidSql = u"SELECT pg_backend_pid()"_s;
    const qint64 pid = c->scalar(pidSql).toLongLong();
    const QString cut = u"SELECT pg_terminate_backend(?)"_s;
    {
        db::Transaction tx(*c);
        c->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"IWAYA"_s});
        // Both links die, and the shared connection finds out first: that sends every kept
        // connection to check its own, but a COMMIT must not go out on a new one.
        ws->connect()->scalar(cut, {pid});
        ws->connect()->scalar(cut, {shared.scalar(pidSql)});
        EXPECT_THROW(shared.scalar(u"SELECT 1"_s), db::DbError);
        try {
            tx.commit();
            ADD_FAILURE() << "committed although the transaction's link was gone";
        } catch (const db::DbError& e) {
            EXPECT_TRUE(e.linkLost()) << e.description().toStdString();
        }
    }
    EXPECT_EQ(
        ws->scalar(u"SELECT count(*) FROM hPatientArea WHERE AreaName = ?"_s, {u"IWAYA"_s}).toInt(),
        0);
    EXPECT_NE(c->scalar(pidSql).toLongLong(), pid);
    EXPECT_EQ(shared.scalar(u"SELECT 1"_s).toInt(), 1);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(OwnConnections);

TEST(LinkFailure, TheServerBeingGoneIsToldApartFromARefusedLoginOrStatement)
{
    const QString at = u"connection to server at \"127.0.0.1\", port 5432 failed: "_s;
    const std::tuple<const char*, QString, bool> cases[] = {
        {"57P01", u"FATAL:  terminating connection due to administrator command"_s, true},
        {"57P03", u"FATAL:  the database system is starting up"_s, true},
        {"08006", QString(), true},
        {"", u"server closed the connection unexpectedly"_s, true},
        {"", at + u"Connection refused"_s, true},
        {"", u"no connection to the server"_s, true},
        {"", u"database not open"_s, true},
        {"28P01", at + u"FATAL:  password authentication failed for user \"x\""_s, false},
        {"", at + u"FATAL:  database \"tolmar\" does not exist"_s, false},
        {"23505", u"duplicate key value violates unique constraint"_s, false},
        {"42P01", u"relation \"nosuchtable\" does not exist"_s, false},
    };
    for (const auto& [state, text, lost] : cases)
        EXPECT_EQ(db::isLinkFailure(QString::fromLatin1(state), text), lost)
            << state << " " << text.toStdString();
}
