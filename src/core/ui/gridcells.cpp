#include "core/ui/gridcells.h"

#include "core/ui/formbuilder.h"

#include <QAbstractItemModel>
#include <QIdentityProxyModel>
#include <QStringList>
#include <QTableView>

#include <algorithm>
#include <vector>

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

namespace {
// Columns picked by position; rows pass through as they are, fetched as the source fetches.
class Captioned : public QIdentityProxyModel {
public:
    Captioned(QAbstractItemModel* source, std::vector<int> picked, QStringList captions)
        : m_picked(std::move(picked)), m_captions(std::move(captions))
    {
        setSourceModel(source);
        source->setParent(this);
    }
    int columnCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_picked.size());
    }
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override
    {
        return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
    }
    QModelIndex mapToSource(const QModelIndex& proxy) const override
    {
        if (!proxy.isValid())
            return {};
        return sourceModel()->index(proxy.row(), m_picked[size_t(proxy.column())]);
    }
    QModelIndex mapFromSource(const QModelIndex& source) const override
    {
        const auto at = std::find(m_picked.begin(), m_picked.end(), source.column());
        if (!source.isValid() || at == m_picked.end())
            return {};
        return createIndex(source.row(), int(at - m_picked.begin()));
    }
    QVariant headerData(int section, Qt::Orientation o, int role) const override
    {
        if (o == Qt::Horizontal && role == Qt::DisplayRole && section < m_captions.size())
            return m_captions.at(section);
        return QIdentityProxyModel::headerData(section, o, role);
    }

private:
    std::vector<int> m_picked;
    QStringList m_captions;
};
}  // namespace

QAbstractItemModel* captioned(QAbstractItemModel* source,
                              const QList<QPair<QString, QString>>& columns)
{
    std::vector<int> picked;
    QStringList captions;
    for (const auto& [column, caption] : columns) {
        const int at = columnOf(source, column);
        if (at < 0)
            continue;
        picked.push_back(at);
        captions << caption;
    }
    QObject* owner = source->parent();
    auto* view = new Captioned(source, std::move(picked), std::move(captions));
    view->setParent(owner);
    return view;
}

void replaceModel(QTableView* view, QAbstractItemModel* model, const QStringList& hidden)
{
    QAbstractItemModel* old = view->model();
    view->setModel(model);
    if (old != model)
        delete old;  // at once: a grid's own connection must not outlive its rows
    if (model)
        for (int c = 0; c < model->columnCount(); ++c)
            view->setColumnHidden(c, false);
    hideColumns(view, hidden);
    ui::fitColumns(view);
}

}  // namespace tolmar::grid
