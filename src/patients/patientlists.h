#pragma once
// The lists of the View menu: every record of a kind ("Display Entire Records", with the
// deletion of a row) and the patients' contact book over a span of days.

#include <QDate>
#include <QString>
#include <QStringList>

class QAbstractItemModel;
class QObject;

namespace tolmar {
class AppContext;
namespace db {
class Connection;
struct Result;
}
}  // namespace tolmar

namespace tolmar::patients {

// The kinds frmSearch offers, in its list's order.
QStringList recordItems();

// The table a grid shows and the column its rows are deleted by.
struct RecordTable {
    QString table;
    QString key;
    bool isPatient() const;
};

// Every row of the item's table, read lazily (owned by parent); `shown` tells what is on
// show. Refresh reads the patients again, or the bills for any other item.
QAbstractItemModel* listRecords(db::Connection& c, const QString& item, bool refresh,
                                RecordTable& shown, QObject* parent);

// Deletes one row of the table on show by its key. A patient goes through the archive, as
// every deletion of a patient does; `name` is for its audit line.
void deleteRecord(AppContext& ctx, const RecordTable& shown, const QString& key,
                  const QString& name);

// The contact book of the patients who came between the two days (none when the days are
// the wrong way round), for the grid and for the export.
QAbstractItemModel* phoneBook(db::Connection& c, const QDate& from, const QDate& to,
                              QObject* parent);
db::Result phoneBookRows(db::Connection& c, const QDate& from, const QDate& to);
// The referrals and appointments given between the two days.
QAbstractItemModel* referralBook(db::Connection& c, const QDate& from, const QDate& to,
                                 QObject* parent);

}  // namespace tolmar::patients
