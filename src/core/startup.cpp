#include "core/startup.h"

#include "core/appcontext.h"
#include "core/appdefaults.h"
#include "core/command.h"
#include "platform/files.h"
#include "platform/schema.h"
#include "platform/prompt.h"
#include "security/rights.h"

#include <QDir>
#include <QFileInfo>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace tolmar {

namespace {


void buildConnectionStrings(Session& s)
{
    const QString server = s.serverName.trimmed();
    for (db::Database d : db::kAllDatabases)
        s.connectionStrings[d] = QStringLiteral("Server=%1;Database=%2;UID=vortl3")
                                     .arg(server, db::databaseName(d));
}

void makeReportsDir(const QString& path)
{
    QDir dir(path);
    if (dir.exists())
        return;
    const QString parent = QFileInfo(path).absolutePath();
    // One level only: the Reports folder is part of an installation.
    if (!QDir(parent).exists() || !QDir(parent).mkdir(QFileInfo(path).fileName()))
        throw std::runtime_error(QStringLiteral("Path not found: %1").arg(path).toStdString());
}

void versionGate(AppContext& ctx)
{
    Session& s = ctx.session();
    if (!AppDefaults::isYes(s.defaults.LockOldVersion))
        return;
    const auto row = ctx.db().queryOne(
        QStringLiteral("select MinVer from Roles where lower(LoginRole) = lower(?)"),
        {s.loginRole});
    if (!row)
        return;
    // MinVer is a 16-bit whole number: a fraction goes to the nearest one, a tie to the
    // even one (the rule of every floating-point result here), and nothing beyond 16 bits
    // is a version; a wrapped value would let an old program in.
    const QString title =
        QStringLiteral("Old Version %1.%2 Not Allowed").arg(kVersionMajor).arg(kVersionRevision);
    const double rounded = std::nearbyint(row->toDouble(u"MinVer"));
    if (rounded > std::numeric_limits<qint16>::max() ||
        rounded < std::numeric_limits<qint16>::min())
        throw FatalCondition(
            QStringLiteral("%1 Module cannot check its version: MinVer %2 in Roles is not a "
                           "version number (0 to 32767).")
                .arg(s.loginRole, row->text(u"MinVer")),
            kExitOldVersion, title, Icon::Critical);
    const qint16 minVer = qint16(rounded);
    if (minVer > kVersionMajor) {
        throw FatalCondition(
            QStringLiteral("%1 Module is OLD!\r\nOnly Versions %2 and Above are Allowed")
                .arg(s.loginRole)
                .arg(minVer),
            kExitOldVersion, title, Icon::Critical);
    }
}

// The program refuses a database newer than itself and upgrades an older one when asked.
void checkSchema(AppContext& ctx)
{
    db::SchemaMigrator migrator(ctx.session().server);
    const int current = migrator.currentVersion();
    const int latest = db::latestSchemaVersion();
    if (current == latest)
        return;
    if (current > latest)
        throw FatalCondition(newerSchemaMessage(current, latest), kExitSchema,
                             QStringLiteral("Database Version"), Icon::Critical);
    const bool upgrade = ctx.prompter().ask(
        QStringLiteral("The database is of version %1 and this program needs version %2.\r\n"
                       "Upgrade the database now?")
            .arg(current)
            .arg(latest),
        QStringLiteral("Database Version"));
    if (!upgrade)
        throw FatalCondition(QStringLiteral("The database was not upgraded; the program ends."),
                             kExitSchema, QStringLiteral("Database Version"));
    ctx.resetConnections();
    migrator.migrate();
}

}  // namespace

QString newerSchemaMessage(int current, int latest)
{
    return QStringLiteral("The database is of version %1, newer than this program knows (%2).\r\n"
                          "Please install the current version of the program.")
        .arg(current)
        .arg(latest);
}

MadeSys parseMadeSys(const QStringList& lines)
{
    MadeSys m;
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1String("SVR")))
            m.serverName = line.mid(4);
        else if (line.startsWith(QLatin1String("HNO")))
            m.hospitalNo = line.mid(4);
    }
    return m;
}

QString serverHostOf(const QString& serverName)
{
    const qsizetype slash = serverName.indexOf(QLatin1Char('\\'));
    return slash < 0 ? serverName : serverName.left(slash);
}

StartupResult runStartup(AppContext& ctx)
{
    Session& s = ctx.session();
    try {
        // 1. Flags of the previous run, then made.sys.
        s.CardRenewedFlag = false;
        s.renewedPNo.clear();
        s.renewedExpiryDate = QDate();
        s.notificationFlag = false;
        const auto made = files::readLines(ctx.homePath(QStringLiteral("made.sys")));
        if (!made)
            throw FatalCondition(
                QStringLiteral("A System inifile bAccum required for this Application is MISSING"),
                kExitMadeSysMissing);
        const MadeSys settings = parseMadeSys(*made);
        // 2.
        s.serverName = settings.serverName.isEmpty() ? QStringLiteral("SERVER")
                                                     : settings.serverName;
        s.hospitalNo = settings.hospitalNo;
        // 3. and 4.
        buildConnectionStrings(s);
        s.serverHost = serverHostOf(s.serverName);
        s.moduleNumber = kModuleNumber;
        s.loginRole = kLoginRole;
        ctx.setServer(db::ServerConfig::fromServerName(s.serverName.trimmed(), ctx.homeDir()));
        // 5.
        s.reportsDir = QDir(ctx.homePath(QStringLiteral("Reports"))).filePath(s.loginRole);
        makeReportsDir(s.reportsDir);
        // 6.
        s.currentPNo.clear();
        s.currentPatientName.clear();
        s.patientsShare = QStringLiteral("\\\\") + s.serverHost + QStringLiteral("\\Patients\\");
        checkSchema(ctx);
        // 7.
        const auto sysdoc = files::readLines(ctx.homePath(QStringLiteral("sysdoc.sys")));
        if (!sysdoc)
            throw FatalCondition(
                QStringLiteral("A System file UserName required for this Application is MISSING"),
                kExitSysdocMissing);
        s.userName = sysdoc->isEmpty() ? QString() : sysdoc->last().trimmed();
        // 8. Names compare without regard to case, as the suite's sign-on does.
        const auto user = security::roleHolder(ctx.db(), s.userName, s.loginRole);
        if (!user)
            throw FatalCondition(
                QStringLiteral("Invalid Login OR session has expired!!! Please Re-login"),
                kExitInvalidLogin);
        s.hospID = user->text(u"hospID");
        s.hospitalName = user->text(u"HName");
        s.empID = user->text(u"EmpID");
        s.fullName = user->text(u"Fullname");
        s.userName = user->text(u"username");
        // 9.
        loadAppDefaults(ctx, [&ctx] { versionGate(ctx); });
        // 10.
        ctx.refreshServerClock();
        return {StartupResult::Ok, QString(), kExitOk};
    } catch (const FatalCondition& f) {
        reportFatal(ctx.prompter(), f.message(), f.title(), f.icon());
        return {StartupResult::Fatal, f.message(), f.exitCode()};
    } catch (const std::exception& e) {
        // The shared connections may be half-open after a failure; the next use reconnects.
        ctx.resetConnections();
        const QString message = describeError(e);
        reportFatal(ctx.prompter(), message, QString(), Icon::Critical);
        return {StartupResult::Failed, message, kExitStartupError};
    }
}

}  // namespace tolmar
