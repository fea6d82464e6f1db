#include "support/workspace.h"

#include "platform/schema.h"
#include "platform/sqlsplit.h"

#include <map>

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

class Schema : public BackendTest {};

TEST_P(Schema, EveryMigrationIsRecordedOnce)
{
    db::SchemaMigrator m(ws->server());
    const int latest = db::latestSchemaVersion();
    EXPECT_GE(latest, 1);
    EXPECT_EQ(m.currentVersion(), latest);
    EXPECT_EQ(m.migrate(), 0);  // nothing left to do
    EXPECT_EQ(ws->scalar(u"SELECT count(*) FROM schema_version"_s).toInt(),
              int(db::availableMigrations().size()));
}

TEST_P(Schema, ArchiveHasEveryColumnOfThePatientTable)
{
    // The archive copy before a delete is "insert ... select *": the columns must line up.
    ws->exec(u"INSERT INTO hPatients (PNo, psurname) VALUES (?, ?)"_s,
             {u"001/000000007"_s, u"EZE"_s});
    ws->exec(u"insert into hpatientsArchive select * from hpatients where pno = ?"_s,
             {u"001/000000007"_s});
    EXPECT_EQ(
        ws->scalar(u"SELECT psurname FROM hpatientsArchive WHERE PNo = ?"_s, {u"001/000000007"_s})
            .toString(),
        u"EZE"_s);
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
        return u"timestamp"_s;
    if (type.startsWith(u"DATE"))
        return u"date"_s;
    if (type.contains(u"INT"))
        return u"integer"_s;
    if (type.contains(u"CHAR") || type.contains(u"TEXT"))
        return u"text"_s;
    if (type.contains(u"REAL") || type.contains(u"DOUB") || type.contains(u"NUMERIC"))
        return u"real"_s;
    if (type.contains(u"BLOB") || type.contains(u"BYTEA"))
        return u"blob"_s;
    return u"?"_s + type;
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
                u"SELECT t.table_type, c.table_name, c.column_name, c.data_type "
                "FROM information_schema.columns c "
                "JOIN information_schema.tables t ON t.table_schema = "
                "c.table_schema AND t.table_name = c.table_name "
                "WHERE c.table_schema = ? ORDER BY c.table_name, "
                "c.ordinal_position"_s,
                {name.toLower()});
            for (const db::Row& r : cols.rows)
                add(name, r.text(u"table_type") == u"VIEW" ? u"view"_s : u"table"_s,
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
                const auto cols =
                    c->query(u"SELECT name, type FROM pragma_table_info(?, ?) ORDER BY cid"_s,
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
            out << object + u" only on SQLite"_s;
            continue;
        }
        if (object.startsWith(u"view") && cols != other->second) {
            out << object + u" columns: SQLite "_s + cols.join(u',') + u", PostgreSQL "_s +
                       other->second.join(u',');
            continue;
        }
        for (const QString& c : cols)
            if (!other->second.contains(c))
                out << object + QLatin1Char('.') + c + u" only on SQLite"_s;
        for (const QString& c : other->second)
            if (!cols.contains(c))
                out << object + QLatin1Char('.') + c + u" only on PostgreSQL"_s;
    }
    for (const auto& [object, cols] : pg)
        if (!lite.contains(object))
            out << object + u" only on PostgreSQL"_s;
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
    lite.exec(u"ALTER TABLE hPatients ADD COLUMN Nickname VARCHAR(20)"_s);
    EXPECT_EQ(differences(catalogue(lite), b),
              QStringList{"table hospital.hpatients.nickname:text only on SQLite"});
}

TEST(SqlSplit, KeepsSemicolonsInsideQuotesCommentsAndBodies)
{
    const auto parts = db::splitSqlStatements(
        u"CREATE TABLE a (x TEXT DEFAULT 'a;b'); -- a comment; with semicolon\n"
        "CREATE TRIGGER t AFTER INSERT ON a BEGIN UPDATE a SET x = 'y'; END;\n"
        "CREATE FUNCTION f() RETURNS int AS $$ BEGIN RETURN 1; END; $$ LANGUAGE plpgsql;\n"
        "/* only a comment; */ ;"_s);
    ASSERT_EQ(parts.size(), 3);
    EXPECT_TRUE(parts[0].contains(u"'a;b'"_s));
    EXPECT_TRUE(parts[1].contains(u"END"_s));
    EXPECT_TRUE(parts[2].contains(u"LANGUAGE plpgsql"_s));
}
