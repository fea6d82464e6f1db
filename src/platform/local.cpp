#include "platform/local.h"

namespace tolmar::local {

std::unique_ptr<db::Connection> openKeyDb(const QString& path)
{
    return db::Connection::openLocalFile(path, false);
}

void createKeyDb(const QString& path)
{
    auto c = db::Connection::openLocalFile(path, true);
    c->execScript(QStringLiteral(
        "CREATE TABLE IF NOT EXISTS Locations (LocID VARCHAR(100), LocName VARCHAR(100))"));
}

}  // namespace tolmar::local
