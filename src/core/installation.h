#pragma once
// Setting a hospital up as its administrator does: the server's databases with the settings
// every installation starts from and a first administrator, then the folder of each desk.
// Nothing here shows a window; progress and results go to the log callback.

#include "platform/db.h"

#include <QString>

#include <functional>
#include <stdexcept>

namespace tolmar {

namespace db {
class SchemaMigrator;
}

struct HospitalInfo {
    QString number;  // three letters or digits: the prefix of its patient and visit numbers
    QString name;
    QString address;
    QString phone;
};

using SetupLog = std::function<void(const QString&)>;

struct ServerSetup {
    QString server;    // HOST[:PORT] for PostgreSQL, sqlite:DIR for SQLite files
    QString database;  // PostgreSQL database; empty: the one the server name gives
    HospitalInfo hospital;
    QString admin;
    bool upgrade = false;  // an older schema is upgraded only when this is set
    SetupLog log;
};

struct DeskSetup {
    QString dir;
    QString server;
    QString database;
    QString hospitalNumber;  // empty: the number of the user's hospital on the server
    QString user;
    SetupLog log;
};

// A refusal or failure the administrator reads on stderr, with the status the process ends on.
class SetupError : public std::runtime_error {
public:
    SetupError(const QString& message, int exitCode = 1)
        : std::runtime_error(message.toStdString()), m_message(message), m_exitCode(exitCode)
    {
    }
    const QString& message() const { return m_message; }
    int exitCode() const { return m_exitCode; }

private:
    QString m_message;
    int m_exitCode;
};

namespace install {

// Where the databases of a server name and an optional PostgreSQL database live.
db::ServerConfig serverConfig(const QString& server, const QString& database);

// Applies the migrations above `from`, each followed by the settings and lists of
// db/defaults that belong to that step; returns the versions applied.
QList<int> migrateWithDefaults(db::SchemaMigrator& migrator, int from, const SetupLog& log = {});
// The settings and lists of db/defaults for the steps above `from` up to `to`.
void writeDefaults(db::SchemaMigrator& migrator, int from, int to);
// The hospital's row and its number series, which carry the hospital number.
void writeHospital(const db::ServerConfig& config, const HospitalInfo& hospital);

// Throws SetupError; a failed first set-up leaves nothing behind.
void initServer(const ServerSetup& setup);
void initDesk(const DeskSetup& setup);

// The program's --help description: what it is, how a hospital is set up and backed up.
QString helpText();

// The folder a desk reads when none is named: the program's own folder when it holds
// made.sys (a copy unpacked by hand), else the user's data folder, where --init-desk puts
// it for an installed program.
QString defaultHome(const QString& programDir);

}  // namespace install
}  // namespace tolmar
