#include "payers/patientareas.h"

#include "core/appcontext.h"
#include "core/command.h"

namespace tolmar {

PatientAreas::PatientAreas(AppContext& ctx) : m_ctx(ctx) {}

QStringList PatientAreas::all()
{
    QStringList out;
    for (const db::Row& r :
         m_ctx.db()
             .query(QStringLiteral("select Distinct AreaName from hPatientArea order by AreaName"))
             .rows)
        out << r.text(u"AreaName");
    return out;
}

void PatientAreas::save(const QString& oldName, const QString& name)
{
    const QString area = name.trimmed();
    if (area.isEmpty())
        throw CheckFailed(QStringLiteral("Specify Patient Residential Area"),
                          QStringLiteral("txtName"));
    auto conn = m_ctx.openConnection();
    const CheckFailed taken(QStringLiteral("That area already exists"),
                            QStringLiteral("txtName"));
    if (oldName.isEmpty()) {
        refuseDuplicate(taken, [&] {
            conn->exec(QStringLiteral("insert into hPatientArea (AreaName) values (?)"), {area});
        });
        return;
    }
    int renamed = 0;
    refuseDuplicate(taken, [&] {
        renamed = conn->exec(
            QStringLiteral("update hPatientArea set AreaName = ? where AreaName = ?"),
            {area, oldName});
    });
    if (renamed == 0)
        throw std::runtime_error(
            QStringLiteral("The area %1 is no longer on the list.").arg(oldName).toStdString());
}

void PatientAreas::remove(const QString& name)
{
    m_ctx.openConnection()->exec(QStringLiteral("delete from hPatientArea where AreaName = ?"),
                                 {name});
}

}  // namespace tolmar
