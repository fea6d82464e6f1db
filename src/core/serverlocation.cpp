#include "core/serverlocation.h"

#include "core/appcontext.h"
#include "core/appdefaults.h"
#include "core/command.h"
#include "core/listentry.h"
#include "platform/files.h"
#include "platform/local.h"
#include "security/rights.h"

#include <QFileInfo>

namespace tolmar {

ServerLocations::ServerLocations(AppContext& ctx) : m_ctx(ctx) {}

QString ServerLocations::keyDbPath() const { return m_ctx.homePath(QStringLiteral("key.db")); }

std::vector<Location> ServerLocations::all() const
{
    auto c = local::openKeyDb(keyDbPath());
    std::vector<Location> out;
    for (const auto& r : c->query(QStringLiteral("SELECT LocID,LocName FROM Locations")).rows)
        out.push_back({r.text(u"LocID"), r.text(u"LocName")});
    return out;
}

std::vector<Location> ServerLocations::distinctRows() const
{
    auto c = local::openKeyDb(keyDbPath());
    std::vector<Location> out;
    const auto rows = c->query(QStringLiteral(
        "select distinct LocName as Location , LocID as IP_Address from Locations"));
    for (const auto& r : rows.rows)
        out.push_back({r.text(u"IP_Address"), r.text(u"Location")});
    return out;
}

void ServerLocations::add(const QString& id, const QString& name)
{
    auto c = local::openKeyDb(keyDbPath());
    c->exec(QStringLiteral("INSERT INTO Locations (LocID, LocName) VALUES (?, ?)"),
            {id.trimmed(), name.trimmed()});
}

void ServerLocations::update(const QString& oldName, const QString& id, const QString& name)
{
    auto c = local::openKeyDb(keyDbPath());
    const int n = c->exec(
        QStringLiteral("UPDATE Locations SET LocID = ?, LocName = ? WHERE rowid = "
                       "(SELECT rowid FROM Locations WHERE LocName = ? ORDER BY rowid LIMIT 1)"),
        {listentry::stripBrackets(id), listentry::stripBrackets(name), oldName});
    if (n == 0)
        throw std::runtime_error(
            QStringLiteral("The location \"%1\" is no longer in the list.").arg(oldName)
                .toStdString());
}

void ServerLocations::remove(const QString& name)
{
    auto c = local::openKeyDb(keyDbPath());
    c->exec(QStringLiteral("delete from Locations where LocName = ?"), {name});
}

void ServerLocations::requireLocationRight()
{
    security::requireRole(
        m_ctx, security::kManagementRole,
        CheckFailed(QStringLiteral("You dont have Permission to Change App Location")));
}

void ServerLocations::switchTo(const QString& address)
{
    requireLocationRight();
    const QString made = m_ctx.homePath(QStringLiteral("made.sys"));
    if (!QFileInfo::exists(made))
        throw FatalCondition(QStringLiteral("A System file  required for Server Location is MISSING"),
                             kExitLocationFileMissing);
    // The lock test raises on a file we cannot even open (other than "held"), which is
    // better reported than overwritten. A file held by the launcher is still replaced: the
    // write goes to a new file renamed over the old, so its reader never sees half a file.
    files::isFileHeld(made);
    files::writeLines(made, {QStringLiteral("SVR=") + address.trimmed()});
}

}  // namespace tolmar
