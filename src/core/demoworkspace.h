#pragma once
// A complete workspace for trying the program: the settings files, the local list of
// server locations, the five databases migrated and filled with demo data.

#include "platform/db.h"

#include <QString>

#include <functional>

namespace tolmar {

struct DemoOptions {
    QString dir;
    QString server;      // empty: SQLite files in DIR/data; otherwise HOST[:PORT][/DB]
    qint64 patients = 300;
    std::function<void(const QString&)> log;  // progress lines for the person waiting
};

// The demo's hospital, people, payers and price lists, over a migrated schema that holds the
// defaults every installation has.
void writeDemoData(const db::ServerConfig& config);

// Throws on failure (the description says what went wrong).
void createDemoWorkspace(const DemoOptions& options);

// The demo's sign-on name, left in sysdoc.sys.
inline const QString kDemoUser = QStringLiteral("demo");

}  // namespace tolmar
