#pragma once
// Reading a grid's cells by column caption (any case).

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

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
// Shows another list in the grid (a refresh): the old model and its rows go at once, no
// column stays hidden from the list before but the named ones, and the rest are fitted.
void replaceModel(QTableView* view, QAbstractItemModel* model,
                  const QStringList& hidden = {});

}  // namespace tolmar::grid
