#pragma once
// What every command is given: the session, the databases, the person at the desk (through
// the prompter), the clock and the screen host. One per process; passed by reference.

#include "core/clock.h"
#include "core/session.h"
#include "platform/db.h"

#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace tolmar {

class Prompter;
class ScreenHost;

class AppContext {
public:
    // homeDir: where made.sys, sysdoc.sys, key.db, Reports/ and logs stand.
    AppContext(QString homeDir, Prompter& prompter, Clock& clock);
    ~AppContext();
    AppContext(const AppContext&) = delete;
    AppContext& operator=(const AppContext&) = delete;

    Session& session() { return m_session; }
    const Session& session() const { return m_session; }
    Prompter& prompter() { return *m_prompter; }
    void setPrompter(Prompter& p) { m_prompter = &p; }
    Clock& clock() { return *m_clock; }
    ScreenHost& screens() { return *m_screens; }
    const QString& homeDir() const { return m_home; }
    QString homePath(const QString& file) const;

    // Points the program at a server; shared connections to the old one are closed.
    void setServer(const db::ServerConfig& config);
    // The run's shared connection to a database, for lists and grids; opened on first use.
    db::Connection& db(db::Database which = db::Database::Hospital);
    // A connection of its own for a command that writes, for as long as the handle lives.
    // Opening a server connection costs more than a whole save, so a handle given back with
    // no transaction open and no failed statement is kept for the next command; one that
    // saw an error is closed. A kept connection is checked before it is handed out again.
    struct ConnectionReturn {
        AppContext* owner = nullptr;
        void operator()(db::Connection* c) const;
    };
    using OwnConnection = std::unique_ptr<db::Connection, ConnectionReturn>;
    OwnConnection openConnection(db::Database which = db::Database::Hospital);
    // The connection identifier draws run on: its own, kept for the run, never inside a
    // transaction, so a draw commits at once whatever the desk's save is doing.
    db::Connection& drawConnection();
    // Drops the shared connections (after a failure the next use reconnects).
    void resetConnections();

    // Server date and time into the session; unchanged when the server gives nothing.
    void refreshServerClock();

    // Set by the program's entry: runs the start-up routine again (Reload Defaults, a new
    // server location).
    std::function<void()> rerunStartup;
    // Ends the process with a status (a fatal condition met by a screen). The default
    // leaves every event loop, so the program's entry returns the status.
    std::function<void(int)> endProcess;

    // Set once a timer has told the desk that the server cannot be reached, so the other
    // ticks of the same outage stay quiet; a tick that goes through clears it.
    bool outageTold = false;

private:
    QString m_home;
    Prompter* m_prompter;
    Clock* m_clock;
    Session m_session;
    std::unique_ptr<ScreenHost> m_screens;
    std::map<db::Database, std::unique_ptr<db::Connection>> m_shared;
    std::unique_ptr<db::Connection> m_draws;
    std::vector<std::unique_ptr<db::Connection>> m_idle;  // given back by openConnection's users
};

}  // namespace tolmar
