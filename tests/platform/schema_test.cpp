#include "support/workspace.h"

#include "platform/schema.h"
#include "platform/sqlsplit.h"

#include <map>

using namespace tolmar;
using namespace tolmar::test;

class Schema : public BackendTest {};

TEST_P(Schema, EveryMigrationIsRecordedOnce)
{
    db::SchemaMigrator m(ws->server());
    const int latest = db::latestSchemaVersion();
    EXPECT_GE(latest, 1);
    EXPECT_EQ(m.currentVersion(), latest);
    EXPECT_EQ(m.migrate(), 0);  // nothing left to do
    EXPECT_EQ(ws->scalar(QStringLiteral("SELECT count(*) FROM schema_version")).toInt(),
              int(db::availableMigrations().size()));
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

namespace {

// What a migrated workspace holds, by "database.table" in lower case: each table's columns
// with their broad kind, each view's columns in order (a view column's kind is not kept by
// SQLite, so only its name is compared).
using Catalogue = std::map<QString, QStringList>;

QString broadKind(QString type)
{
    type = type.toUpper();
    // SQLite's dates are ISO text declared DATE_TEXT / TIMESTAMP_TEXT.
    if (type.startsWith(u"TIMESTAMP"))
        return QStringLiteral("timestamp");
    if (type.startsWith(u"DATE"))
        return QStringLiteral("date");
    if (type.contains(u"INT"))
        return QStringLiteral("integer");
    if (type.contains(u"CHAR") || type.contains(u"TEXT"))
        return QStringLiteral("text");
    if (type.contains(u"REAL") || type.contains(u"DOUB") || type.contains(u"NUMERIC"))
        return QStringLiteral("real");
    if (type.contains(u"BLOB") || type.contains(u"BYTEA"))
        return QStringLiteral("blob");
    return QStringLiteral("?") + type;
}

Catalogue catalogue(const test::Workspace& w)
{
    Catalogue out;
    auto add = [&](const QString& db, const QString& kind, const QString& table,
                   const QString& column, const QString& type) {
        const QString key = kind + QLatin1Char(' ') + db.toLower() + QLatin1Char('.') +
                            table.toLower();
        out[key] << (kind == u"table" ? column.toLower() + QLatin1Char(':') + broadKind(type)
                                      : column.toLower());
    };
    for (db::Database d : db::kAllDatabases) {
        auto c = w.connect(d);
        const QString name = db::databaseName(d);
        if (w.backend() == db::Backend::Postgres) {
            const auto cols = c->query(
                QStringLiteral("SELECT t.table_type, c.table_name, c.column_name, c.data_type "
                               "FROM information_schema.columns c "
                               "JOIN information_schema.tables t ON t.table_schema = "
                               "c.table_schema AND t.table_name = c.table_name "
                               "WHERE c.table_schema = ? ORDER BY c.table_name, "
                               "c.ordinal_position"),
                {name.toLower()});
            for (const db::Row& r : cols.rows)
                add(name, r.text(u"table_type") == u"VIEW" ? QStringLiteral("view")
                                                           : QStringLiteral("table"),
                    r.text(u"table_name"), r.text(u"column_name"), r.text(u"data_type"));
            continue;
        }
        // Views that read another database are temporary ones of each connection. The
        // name search's trigram table (virtual, with its shadow tables) is SQLite's own.
        for (const QString schema : {QStringLiteral("main"), QStringLiteral("temp")}) {
            const auto objects = c->query(
                QStringLiteral("SELECT type, name FROM pragma_table_list WHERE schema = ? AND "
                               "type IN ('table', 'view') AND name NOT LIKE 'sqlite%' "
                               "ORDER BY name"),
                {schema});
            for (const db::Row& o : objects.rows) {
                const auto cols = c->query(
                    QStringLiteral("SELECT name, type FROM pragma_table_info(?, ?) ORDER BY cid"),
                    {o.text(u"name"), schema});
                for (const db::Row& r : cols.rows)
                    add(name, o.text(u"type"), o.text(u"name"), r.text(u"name"), r.text(u"type"));
            }
        }
    }
    return out;
}

// Every table, view or column found on one side only, or of another kind there.
QStringList differences(const Catalogue& lite, const Catalogue& pg)
{
    QStringList out;
    for (const auto& [object, cols] : lite) {
        const auto other = pg.find(object);
        if (other == pg.end()) {
            out << object + QStringLiteral(" only on SQLite");
            continue;
        }
        if (object.startsWith(u"view") && cols != other->second) {
            out << object + QStringLiteral(" columns: SQLite ") + cols.join(u',') +
                       QStringLiteral(", PostgreSQL ") + other->second.join(u',');
            continue;
        }
        for (const QString& c : cols)
            if (!other->second.contains(c))
                out << object + QLatin1Char('.') + c + QStringLiteral(" only on SQLite");
        for (const QString& c : other->second)
            if (!cols.contains(c))
                out << object + QLatin1Char('.') + c + QStringLiteral(" only on PostgreSQL");
    }
    for (const auto& [object, cols] : pg)
        if (!lite.contains(object))
            out << object + QStringLiteral(" only on PostgreSQL");
    return out;
}

}  // namespace

// Both backends are migrated from the same steps; what they hold must match, so that a
// table or column that one of them lacks shows here rather than at a desk.
TEST(Catalogue, BothBackendsHoldTheSameTablesColumnsAndViews)
{
    if (test::backends().size() < 2)
        GTEST_SKIP() << "needs TOLMAR_TEST_PG";
    test::Workspace lite(db::Backend::Sqlite), pg(db::Backend::Postgres);
    const Catalogue a = catalogue(lite), b = catalogue(pg);
    EXPECT_GT(a.size(), 100u);
    EXPECT_EQ(differences(a, b), QStringList());

    // A column added on one side only is named.
    lite.exec(QStringLiteral("ALTER TABLE hPatients ADD COLUMN Nickname VARCHAR(20)"));
    EXPECT_EQ(differences(catalogue(lite), b),
              QStringList{"table hospital.hpatients.nickname:text only on SQLite"});
}

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
