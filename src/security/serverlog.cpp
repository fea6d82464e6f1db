#include "security/serverlog.h"

#include "core/appcontext.h"
#include "platform/db.h"

#include <QFile>
#include <QStringList>

#include <cstdio>

namespace tolmar::security {

namespace {

const QString kSeparator = QStringLiteral("  |  ");

QString stamp(AppContext& ctx)
{
    return ctx.clock().workstationNow().toString(QStringLiteral("dd/MM/yyyy HH:mm:ss"));
}

// A log that cannot be written must not turn a done thing into a failure on the desk: the
// line goes to stderr instead.
void append(AppContext& ctx, const QString& file, const QStringList& fields)
{
    QString line = fields.join(kSeparator);
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    QFile f(ctx.homePath(file));
    if (f.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text) &&
        f.write((line + QLatin1Char('\n')).toUtf8()) > 0)
        return;
    std::fprintf(stderr, "%s: %s\n", qPrintable(file), qPrintable(line));
}

}  // namespace

void logActivity(AppContext& ctx, const QString& text)
{
    const Session& s = ctx.session();
    append(ctx, kActivityLogFile, {stamp(ctx), s.userName, s.computerName, text});
}

void logError(AppContext& ctx, const db::DbError& error)
{
    // The source is the database the role classes work on: they never touch another.
    append(ctx, kErrorLogFile,
           {error.nativeCode(), error.description(), db::databaseName(db::Database::Hospital),
            stamp(ctx)});
}

}  // namespace tolmar::security
