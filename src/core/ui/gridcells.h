#pragma once
// Reading a grid's cells by column caption (any case).

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
// Shows a fresh model (a refresh), hides the named columns and fits the rest; the old
// model and its rows go at once.
void replaceModel(QTableView* view, QAbstractItemModel* model,
                  const QStringList& hidden = {});

}  // namespace tolmar::grid
