// A command's own connection: kept for the next command when it comes back clean, closed
// when it saw an error, and never handed out dead.
#include "support/workspace.h"

#include "core/appcontext.h"
#include "platform/db.h"

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

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(OwnConnections);
