#pragma once
// The workstation's list of server locations (key.db beside the program) and the switch of
// made.sys to another server. Used by the two location screens; no widget in here.

#include <QString>

#include <vector>

namespace tolmar {

class AppContext;

struct Location {
    QString id;    // LocID: the server's address or name, what made.sys receives
    QString name;  // LocName: a plain name for the place
};

class ServerLocations {
public:
    explicit ServerLocations(AppContext& ctx);

    QString keyDbPath() const;

    // Every row of Locations, in the order the file gives them.
    std::vector<Location> all() const;
    // One entry per distinct (name, address), for the list screen's grid.
    std::vector<Location> distinctRows() const;

    // New row from the fields as typed, trimmed; brackets stay (the list shows the key
    // between brackets, but an address rarely holds one and the old screen kept them).
    void add(const QString& id, const QString& name);
    // Rewrites the first row named oldName; brackets are removed from both fields.
    void update(const QString& oldName, const QString& id, const QString& name);
    // Removes every row of that name.
    void remove(const QString& name);

    // Points made.sys at the address: the whole file becomes the one line "SVR={address}".
    // Only a user who holds MANAGEMENT may (see requireLocationRight). Throws FatalCondition
    // when made.sys has gone; waits for nobody when it is held.
    void switchTo(const QString& address);
    // Refuses the session's user who does not hold MANAGEMENT, with the desk's message.
    void requireLocationRight();

private:
    AppContext& m_ctx;
};

}  // namespace tolmar
