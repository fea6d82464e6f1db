#include "patients/patientrepo.h"

#include "patients/patientrecord.h"

namespace tolmar::patients {

std::optional<db::Row> readPatient(db::Connection& c, const QString& pno)
{
    return c.queryOne(QStringLiteral("SELECT * FROM vwhpatients WHERE pno = ?"), {pno});
}

QStringList billingCategories(db::Connection& c, const QString& clientType, bool showAll)
{
    auto collect = [](const db::Result& r) {
        QStringList out;
        for (const auto& row : r.rows)
            out << row.text(u"clientCatID");
        return out;
    };
    if (!showAll) {
        const QStringList own = collect(c.query(
            QStringLiteral("select distinct clientCatID from billingPrice where clientType = ? "
                           "order by clientCatID"),
            {clientType}));
        if (!own.isEmpty())
            return own;
    }
    return collect(c.query(
        QStringLiteral("select distinct clientCatID from billingPrice order by clientCatID")));
}

QString clientTypeOfCategory(db::Connection& c, const QString& clientCatID)
{
    const auto row = c.queryOne(
        QStringLiteral("select distinct clientType from billingPrice where clientCatID = ?"),
        {clientCatID});
    return coyTypeOf(row ? row->text(u"clientType") : QString());
}

}  // namespace tolmar::patients
