#include "support/workspace.h"

#include "platform/schema.h"
#include "platform/sqlsplit.h"

using namespace tolmar;
using namespace tolmar::test;

class Schema : public BackendTest {};

TEST_P(Schema, EveryMigrationIsRecordedOnce)
{
    db::SchemaMigrator m(ws->server());
    const int latest = db::latestSchemaVersion(ws->backend());
    EXPECT_GE(latest, 1);
    EXPECT_EQ(m.currentVersion(), latest);
    EXPECT_EQ(m.migrate(), 0);  // nothing left to do
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM schema_version")).toInt(),
              int(db::availableMigrations(ws->backend()).size()));
}

TEST_P(Schema, BothBackendsShipTheSameMigrations)
{
    const auto a = db::availableMigrations(db::Backend::Sqlite);
    const auto b = db::availableMigrations(db::Backend::Postgres);
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].version, b[i].version);
        EXPECT_EQ(a[i].name, b[i].name);
    }
}

TEST_P(Schema, ArchiveHasEveryColumnOfThePatientTable)
{
    // The archive copy before a delete is "insert ... select *": the columns must line up.
    ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname) VALUES (?, ?)"),
             {QStringLiteral("001/000000007"), QStringLiteral("EZE")});
    ws->exec(QStringLiteral("insert into hpatientsArchive select * from hpatients where pno = ?"),
             {QStringLiteral("001/000000007")});
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT psurname FROM hpatientsArchive WHERE PNo = ?"),
                         {QStringLiteral("001/000000007")})
                  .toString(),
              QStringLiteral("EZE"));
}

TOLMAR_INSTANTIATE_BACKENDS(Schema);

TEST(SqlSplit, KeepsSemicolonsInsideQuotesCommentsAndBodies)
{
    const auto parts = db::splitSqlStatements(QStringLiteral(
        "CREATE TABLE a (x TEXT DEFAULT 'a;b'); -- a comment; with semicolon\n"
        "CREATE TRIGGER t AFTER INSERT ON a BEGIN UPDATE a SET x = 'y'; END;\n"
        "CREATE FUNCTION f() RETURNS int AS $$ BEGIN RETURN 1; END; $$ LANGUAGE plpgsql;\n"
        "/* only a comment; */ ;"));
    ASSERT_EQ(parts.size(), 3);
    EXPECT_TRUE(parts[0].contains(QStringLiteral("'a;b'")));
    EXPECT_TRUE(parts[1].contains(QStringLiteral("END")));
    EXPECT_TRUE(parts[2].contains(QStringLiteral("LANGUAGE plpgsql")));
}
