#pragma once
// Versioned schema migrations compiled into the program, each step one file for both
// backends: db/schema/NNN_name.sql. A file is split into sections by lines "--@db NAME"
// (HOSPITAL, Accounting, ...); the statements of a section run in that database. A line
// "--@each-connection" marks the views after it (to the next "--@db") as reading another
// database: a view in the schema on PostgreSQL, a temporary view that every connection of
// that database makes on SQLite. A line "--@only sqlite" (or "postgres") marks the statements
// after it, to the next "--@db" or "--@end", as needed by that backend alone (SQLite's
// INSTEAD OF triggers, where PostgreSQL updates a simple view by itself; the search indexes,
// which are not the same kind of thing on the two). Where the backends spell a
// thing differently the file says $TOKEN (see expandSchema). "ALTER TABLE t ADD COLUMN IF
// NOT EXISTS c" works on both (SQLite's migrator looks the column up first), so a step can be
// written to run again over itself. The versions applied are recorded in HOSPITAL's
// schema_version.

#include "platform/db.h"

#include <QString>
#include <QStringList>
#include <vector>

namespace tolmar::db {

struct Migration {
    int version = 0;
    QString name;      // file name without the number and extension
    QString resource;  // where the text lives
};

// The migrations compiled into this program, by version.
std::vector<Migration> availableMigrations();
int latestSchemaVersion();

// A schema text for one backend: $ID (identity key), $SMALLINT, $REAL, $DATE, $TIMESTAMP,
// $BLOB, $TODAY, $NOW, $MONTHDAY(date) ("MM-DD"), $DAYS(later, earlier) (whole days)
// and $YEARS(later, earlier) (whole years)
// become that backend's words. Throws DbError on a token it does not know.
QString expandSchema(const QString& text, Backend backend);

// The statements an SQLite connection to this database runs as it opens (the views of
// "--@each-connection" sections, as temporary views).
const QStringList& eachConnectionStatements(Database db);

class SchemaMigrator {
public:
    explicit SchemaMigrator(const ServerConfig& config) : m_config(config) {}

    // Creates the databases (SQLite files, PostgreSQL database and schemas) where missing.
    void createDatabases();
    // 0 when the databases hold no schema yet.
    int currentVersion();
    // Applies every migration above the current version, in order; returns how many ran.
    int migrate(int upTo = -1);
    // Runs a script of plain statements, split by "--@db" sections (demo data, fixtures).
    void runScript(const QString& text, Database defaultDb = Database::Hospital);

private:
    void apply(const Migration& m);
    ServerConfig m_config;
};

}  // namespace tolmar::db
