#pragma once
#include <QString>
#include <QStringList>

namespace tolmar::db {

// Splits a script into statements at top-level semicolons. Quotes, comments, PostgreSQL
// dollar-quoted bodies and SQLite trigger bodies (BEGIN ... END) keep their semicolons.
// Empty statements and comment-only pieces are dropped.
QStringList splitSqlStatements(const QString& script);

}  // namespace tolmar::db
