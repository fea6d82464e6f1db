#pragma once
// Versioned schema migrations, one folder per backend, compiled into the program:
//   db/schema/sqlite/NNN_name.sql, db/schema/postgres/NNN_name.sql
// A file is split into sections by lines "--@db NAME" (HOSPITAL, Accounting, ...); the
// statements of a section run in that database. The versions applied are recorded in
// HOSPITAL's schema_version table.

#include "platform/db.h"

#include <QString>
#include <vector>

namespace tolmar::db {

struct Migration {
    int version = 0;
    QString name;      // file name without the number and extension
    QString resource;  // where the text lives
};

// The migrations compiled into this program for a backend, by version.
std::vector<Migration> availableMigrations(Backend backend);
int latestSchemaVersion(Backend backend);

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
