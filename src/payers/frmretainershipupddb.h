#pragma once
// "Update DB for HMO Client Information": the HMOs and the scheme rows written for them.

#include "platform/db.h"

#include <QVariantMap>
#include <QWidget>

#include <memory>

class QAbstractItemModel;
class QListWidget;
class QTableView;

namespace tolmar {

class AppContext;

class frmRetainershipUpdDB : public QWidget {
    Q_OBJECT
public:
    frmRetainershipUpdDB(AppContext& ctx, const QVariantMap& args = {},
                         QWidget* parent = nullptr);

public slots:
    void fillGrid();

private:
    void showCategories();
    void save();
    void removeCurrent();

    // The grid reads on a connection of its own: on SQLite a grid that has not fetched
    // all its rows holds a read snapshot, and the commands' reads must not see through it.
    AppContext& m_ctx;
    QTableView* m_grid;
    QAbstractItemModel* m_model = nullptr;
    QListWidget* m_categories;
};

}  // namespace tolmar
