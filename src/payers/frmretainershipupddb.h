#pragma once
// "Update DB for HMO Client Information": the HMOs and the scheme rows written for them.

#include <QVariantMap>
#include <QWidget>

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

    AppContext& m_ctx;
    QTableView* m_grid;
    QAbstractItemModel* m_model = nullptr;
    QListWidget* m_categories;
};

}  // namespace tolmar
