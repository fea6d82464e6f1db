#pragma once
// Reading a grid's cells by column caption (any case).

#include <QList>
#include <QPair>
#include <QString>

class QAbstractItemModel;
class QTableView;

namespace tolmar::grid {

// -1 when the model has no such column.
int columnOf(const QAbstractItemModel* model, const QString& caption);
// The text of the current row's cell under that caption; "" without a current row.
QString currentText(const QTableView* view, const QString& caption);
// Hides the named columns.
void hideColumns(QTableView* view, const QStringList& captions);
// A grid's view of `source` with only the named columns, in the order given, under the
// screen's own captions ({column, caption}); the view takes the source's owner and owns
// the source.
QAbstractItemModel* captioned(QAbstractItemModel* source,
                              const QList<QPair<QString, QString>>& columns);
// Shows another list in the grid: the old rows are let go and no column stays hidden
// from the list before.
void replaceModel(QTableView* view, QAbstractItemModel* model);

}  // namespace tolmar::grid
