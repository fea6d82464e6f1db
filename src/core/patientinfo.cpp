#include "core/patientinfo.h"

#include "core/appcontext.h"
#include "core/screenhost.h"
#include "platform/db.h"

#include <QVariantMap>

namespace tolmar {

QString patientNote(AppContext& ctx, const QString& pno)
{
    const auto row = ctx.db().queryOne(
        QStringLiteral("SELECT ANCInfo FROM hPatients WHERE PNo = ? LIMIT 1"), {pno});
    if (!row)
        return QString();
    const QString note = row->text(u"ANCInfo");
    const QString t = note.trimmed();
    if (t.isEmpty() || t == QLatin1String("NIL") || t == QLatin1String("NONE"))
        return QString();
    return note;
}

bool showPatientNote(AppContext& ctx, const QString& pno)
{
    if (patientNote(ctx, pno).isEmpty())
        return false;
    return ctx.screens().openModal(QStringLiteral("frmPatientANCInfo"),
                                   {{QStringLiteral("PNo"), pno}});
}

QString clientCategory(AppContext& ctx, const QString& retainID)
{
    const auto row = ctx.db().queryOne(
        QStringLiteral("SELECT clientCatID FROM hRetainership WHERE retainID = ?"), {retainID});
    return row ? row->text(u"clientCatID") : QStringLiteral("DEFAULT");
}

bool visitedToday(AppContext& ctx, const QString& pno)
{
    return ctx.db()
        .queryOne(QStringLiteral("SELECT pno FROM qryhVisitsForToday WHERE pno = ? LIMIT 1"),
                  {pno})
        .has_value();
}

}  // namespace tolmar
