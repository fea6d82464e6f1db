#include "patients/patientlists.h"

#include "core/appcontext.h"
#include "patients/registrationdesk.h"

namespace tolmar::patients {

namespace {
struct Item {
    const char* name;
    const char* sql;
    RecordTable table;
};
const Item& itemFor(const QString& name)
{
    static const Item kItems[] = {
        {"PATIENT", "SELECT * FROM hPatients ORDER BY psurname", {"hPatients", "PNo"}},
        {"OPERATION NOTES", "SELECT * FROM hSurgery", {"hSurgery", "ID"}},
        {"ATTENDANCE", "SELECT * FROM hRecords ORDER BY htime DESC", {"hRecords", "recID"}},
    };
    for (const Item& i : kItems)
        if (name == QLatin1String(i.name))
            return i;
    throw std::invalid_argument("unknown record list");
}

const QString kPhoneBook = QStringLiteral(
    "SELECT DISTINCT Fullname AS \"FullName\", PhoneNo AS \"PhoneNo\", Email AS \"Email\", "
    "DOB AS \"DOB\", Age AS \"Age\", Company AS \"Company\", Clinic AS \"Clinic\" "
    "FROM qryhPhoneBook WHERE \"date\" BETWEEN ? AND ? ORDER BY \"FullName\"");
}  // namespace

QStringList recordItems()
{
    return {QStringLiteral("PATIENT"), QStringLiteral("OPERATION NOTES"),
            QStringLiteral("ATTENDANCE")};
}

bool RecordTable::isPatient() const { return table == QLatin1String("hPatients"); }

QAbstractItemModel* listRecords(db::Connection& c, const QString& item, bool refresh,
                                RecordTable& shown, QObject* parent)
{
    const Item& i = itemFor(item);
    QString sql = QString::fromLatin1(i.sql);
    RecordTable table = i.table;
    if (refresh && !table.isPatient()) {
        sql = QStringLiteral("SELECT * FROM hBilling");
        table = {QStringLiteral("hBilling"), QStringLiteral("ID")};
    } else if (refresh) {
        sql = QStringLiteral("SELECT * FROM hPatients");
    }
    QAbstractItemModel* model = c.gridModel(sql, {}, parent);
    shown = table;
    return model;
}

void deleteRecord(AppContext& ctx, const RecordTable& shown, const QString& key,
                  const QString& name)
{
    if (shown.isPatient()) {
        removePatient(ctx, key, name);
        return;
    }
    // The table and its key come from the list above, never from what was typed.
    ctx.db().exec(QStringLiteral("DELETE FROM %1 WHERE %2 = ?").arg(shown.table, shown.key),
                  {key});
}

QAbstractItemModel* phoneBook(db::Connection& c, const QDate& from, const QDate& to,
                              QObject* parent)
{
    return c.gridModel(kPhoneBook, {from, to}, parent);
}

db::Result phoneBookRows(db::Connection& c, const QDate& from, const QDate& to)
{
    return c.query(kPhoneBook, {from, to});
}

QAbstractItemModel* referralBook(db::Connection& c, const QDate& from, const QDate& to,
                                 QObject* parent)
{
    return c.gridModel(QStringLiteral("SELECT * FROM vwHReferal WHERE refDate BETWEEN ? AND ?"),
                       {from, to}, parent);
}

}  // namespace tolmar::patients
