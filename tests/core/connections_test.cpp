// A command's own connection: kept for the next command when it comes back clean, closed
// when it saw an error, and never handed out dead; every kept connection comes back by
// itself once the server does.
#include "support/workspace.h"

#include "core/appcontext.h"
#include "platform/db.h"

#include <tuple>

using namespace tolmar;
using namespace tolmar::test;

namespace {

class OwnConnections : public BackendTest {};

TEST_P(OwnConnections, CleanOneIsKeptForTheNextCommandOfTheSameDatabase)
{
    QString first;
    {
        auto c = desk->ctx.openConnection();
        first = c->connectionName();
        db::Transaction tx(*c);
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("OJO'TA")});
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
    EXPECT_EQ(again->scalar(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName = ?"),
                            {QStringLiteral("OJO'TA")})
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
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("EPE")});
        EXPECT_THROW(c->exec(QStringLiteral("INSERT INTO NoSuchTable (x) VALUES (?)"), {1}),
                     db::DbError);
        EXPECT_TRUE(c->sawError());
    }
    auto next = desk->ctx.openConnection();
    EXPECT_NE(next->connectionName(), failed);
    EXPECT_EQ(next->scalar(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName = ?"),
                           {QStringLiteral("EPE")})
                  .toInt(),
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
        pid = c->scalar(QStringLiteral("SELECT pg_backend_pid()")).toLongLong();
    }
    // What a server restart does to every kept connection.
    ws->connect()->scalar(QStringLiteral("SELECT pg_terminate_backend(?)"), {pid});
    auto c = desk->ctx.openConnection();
    EXPECT_NE(c->connectionName(), kept);
    EXPECT_NE(c->scalar(QStringLiteral("SELECT pg_backend_pid()")).toLongLong(), pid);
    db::Transaction tx(*c);
    EXPECT_EQ(c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                      {QStringLiteral("OKE-AFA [NEW]")}),
              1);
    tx.commit();
}

TEST_P(OwnConnections, TransactionWhoseLinkWasCutFailsAtCommitAndTheConnectionComesBack)
{
    if (ws->backend() != db::Backend::Postgres)
        GTEST_SKIP() << "a server connection to cut exists on PostgreSQL only";
    auto c = desk->ctx.openConnection();
    db::Connection& shared = desk->ctx.db();
    const QString pidSql = QStringLiteral("SELECT pg_backend_pid()");
    const qint64 pid = c->scalar(pidSql).toLongLong();
    const QString cut = QStringLiteral("SELECT pg_terminate_backend(?)");
    {
        db::Transaction tx(*c);
        c->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                {QStringLiteral("IWAYA")});
        // Both links die, and the shared connection finds out first: that sends every kept
        // connection to check its own, but a COMMIT must not go out on a new one.
        ws->connect()->scalar(cut, {pid});
        ws->connect()->scalar(cut, {shared.scalar(pidSql)});
        EXPECT_THROW(shared.scalar(QStringLiteral("SELECT 1")), db::DbError);
        try {
            tx.commit();
            ADD_FAILURE() << "committed although the transaction's link was gone";
        } catch (const db::DbError& e) {
            EXPECT_TRUE(e.linkLost()) << e.description().toStdString();
        }
    }
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM hPatientArea WHERE AreaName = ?"),
                         {QStringLiteral("IWAYA")})
                  .toInt(),
              0);
    EXPECT_NE(c->scalar(pidSql).toLongLong(), pid);
    EXPECT_EQ(shared.scalar(QStringLiteral("SELECT 1")).toInt(), 1);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(OwnConnections);

TEST(LinkFailure, TheServerBeingGoneIsToldApartFromARefusedLoginOrStatement)
{
    const QString at = QStringLiteral("connection to server at \"127.0.0.1\", port 5432 failed: ");
    const std::tuple<const char*, QString, bool> cases[] = {
        {"57P01", QStringLiteral("FATAL:  terminating connection due to administrator command"),
         true},
        {"57P03", QStringLiteral("FATAL:  the database system is starting up"), true},
        {"08006", QString(), true},
        {"", QStringLiteral("server closed the connection unexpectedly"), true},
        {"", at + QStringLiteral("Connection refused"), true},
        {"", QStringLiteral("no connection to the server"), true},
        {"", QStringLiteral("database not open"), true},
        {"28P01", at + QStringLiteral("FATAL:  password authentication failed for user \"x\""),
         false},
        {"", at + QStringLiteral("FATAL:  database \"tolmar\" does not exist"), false},
        {"23505", QStringLiteral("duplicate key value violates unique constraint"), false},
        {"42P01", QStringLiteral("relation \"nosuchtable\" does not exist"), false},
    };
    for (const auto& [state, text, lost] : cases)
        EXPECT_EQ(db::isLinkFailure(QString::fromLatin1(state), text), lost)
            << state << " " << text.toStdString();
}
