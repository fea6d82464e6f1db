#pragma once
// key.db: the workstation's own list of server locations, a local SQLite file beside the
// program with one table Locations(LocID, LocName).

#include "platform/db.h"

#include <memory>

namespace tolmar::local {

// Opens the file; a DbError names the file when it is missing.
std::unique_ptr<db::Connection> openKeyDb(const QString& path);
// Makes the file with its table when it does not exist yet.
void createKeyDb(const QString& path);

}  // namespace tolmar::local
