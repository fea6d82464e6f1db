#include "core/idgen.h"

#include "core/appcontext.h"
#include "platform/db.h"

#include <limits>
#include <stdexcept>

namespace tolmar {

QString composeIdentifier(const QString& prefix, qint64 number, int width)
{
    const QString digits = QString::number(number);
    if (width <= 0)
        return digits;
    if (number < 0 || digits.size() > width)
        return QString();
    return prefix + digits.rightJustified(width, QLatin1Char('0'));
}

QString drawIdentifier(db::Connection& conn, const QString& destName)
{
    if (conn.inTransaction())
        throw std::logic_error("getIDNo must not run inside a transaction");
    // The counter holds the last number handed out; taking and advancing it is this one
    // statement, so the server (or SQLite's write lock) keeps two desks apart.
    const auto row = conn.queryOne(
        QStringLiteral("UPDATE idgen SET id = id + 1 WHERE destName = ? "
                       "RETURNING id, prefix, width"),
        {destName});
    if (!row)
        return QString();
    return composeIdentifier(row->text(u"prefix"), row->toLongLong(u"id"), row->toInt(u"width"));
}

QString getIDNo(AppContext& ctx, const QString& destName)
{
    ctx.session().lastIdentifier.clear();
    // The statement either ran whole or not at all, so a second try never hands out a
    // number twice.
    const QString value =
        db::retryOnLostLink([&] { return drawIdentifier(ctx.drawConnection(), destName); });
    ctx.session().lastIdentifier = value;
    return value;
}

namespace {

// The running number after an identifier's prefix, read the way the old client read it:
// a whole 32-bit number, 0 for nothing; anything else is an error of the data.
int runningNumber(const QString& tail)
{
    const QString t = tail.trimmed();
    if (t.isEmpty())
        return 0;
    bool ok = false;
    const qint64 n = t.toLongLong(&ok);
    if (!ok)
        throw std::runtime_error("Type mismatch");
    if (n > std::numeric_limits<qint32>::max() || n < std::numeric_limits<qint32>::min())
        throw std::runtime_error("Overflow");
    return int(n);
}

// `next` is the number the series must hand out next; the counter keeps the one before.
void resetSeries(db::Connection& c, const QString& destName, qint64 next)
{
    c.exec(QStringLiteral("UPDATE idgen SET id = ? WHERE destName = ?"), {next - 1, destName});
}

}  // namespace

void updateAttendanceID(AppContext& ctx)
{
    db::Connection& c = ctx.db(db::Database::Hospital);
    const auto row = c.queryOne(QStringLiteral(
        "SELECT ConsultID FROM hRecords WHERE substr(consultID, 1, 3) = ? "
        "ORDER BY recID DESC LIMIT 1"), {QStringLiteral("001")});
    if (!row)
        return;
    const qint64 next = qint64(runningNumber(row->text(u"ConsultID").mid(3))) + 1;
    resetSeries(c, kSeriesConsultID, next);
}

void updatePatientID(AppContext& ctx)
{
    db::Connection& c = ctx.db(db::Database::Hospital);
    const auto row =
        c.queryOne(QStringLiteral("SELECT PNo FROM hPatients ORDER BY PNo DESC LIMIT 1"));
    if (!row)
        return;
    const qint64 next = qint64(runningNumber(row->text(u"PNo").mid(4))) + 1;
    resetSeries(c, kSeriesPatientNo, next);
}

}  // namespace tolmar
