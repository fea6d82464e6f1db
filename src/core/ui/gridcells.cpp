#include "core/ui/gridcells.h"

#include <QAbstractItemModel>
#include <QStringList>
#include <QTableView>

namespace tolmar::grid {

int columnOf(const QAbstractItemModel* model, const QString& caption)
{
    if (!model)
        return -1;
    for (int c = 0; c < model->columnCount(); ++c)
        if (model->headerData(c, Qt::Horizontal)
                .toString()
                .compare(caption, Qt::CaseInsensitive) == 0)
            return c;
    return -1;
}

QString currentText(const QTableView* view, const QString& caption)
{
    const QModelIndex i = view->currentIndex();
    const int c = columnOf(view->model(), caption);
    if (!i.isValid() || c < 0)
        return {};
    return view->model()->index(i.row(), c).data(Qt::EditRole).toString();
}

void hideColumns(QTableView* view, const QStringList& captions)
{
    for (const QString& caption : captions) {
        const int c = columnOf(view->model(), caption);
        if (c >= 0)
            view->setColumnHidden(c, true);
    }
}

void replaceModel(QTableView* view, QAbstractItemModel* model)
{
    QAbstractItemModel* old = view->model();
    view->setModel(model);
    if (old && old != model)
        old->deleteLater();
    if (model)
        for (int c = 0; c < model->columnCount(); ++c)
            view->setColumnHidden(c, false);
}

}  // namespace tolmar::grid
