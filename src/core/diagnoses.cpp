#include "core/diagnoses.h"

#include "core/appcontext.h"

namespace tolmar {

const db::Result& diagnosisList(AppContext& ctx)
{
    auto& list = ctx.session().diagnosisList;
    if (!list)
        list = std::make_shared<const db::Result>(ctx.db().query(
            QStringLiteral("SELECT Code, DescICD FROM vwICD ORDER BY DescICD")));
    return *list;
}

std::vector<const db::Row*> filterDiagnoses(const db::Result& list, const QString& text,
                                            bool byCode)
{
    std::vector<const db::Row*> found;
    const QStringView column = byCode ? QStringView(u"Code") : QStringView(u"DescICD");
    for (const db::Row& r : list.rows)
        if (r.text(column).contains(text, Qt::CaseInsensitive))
            found.push_back(&r);
    return found;
}

}  // namespace tolmar
