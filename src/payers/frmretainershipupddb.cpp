#include "payers/frmretainershipupddb.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "payers/retainership.h"

#include <QItemSelectionModel>
#include <QListWidget>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmRetainershipUpdDB::frmRetainershipUpdDB(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Update DB for HMO Client Information"));
    ui::FormBuilder f(this);
    m_grid = f.grid(QStringLiteral("grdData"));
    m_categories = new QListWidget(this);
    m_categories->setMaximumHeight(110);
    f.field(m_categories, QStringLiteral("LstDate"), QStringLiteral("Categories"));
    auto* save = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    auto* remove = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    resize(900, 560);

    connect(save, &QPushButton::clicked, this, &frmRetainershipUpdDB::save);
    connect(remove, &QPushButton::clicked, this, &frmRetainershipUpdDB::removeCurrent);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    fillGrid();
}

void frmRetainershipUpdDB::fillGrid()
{
    runCommand(this, m_ctx, [this] {
        QAbstractItemModel* old = m_model;
        m_model = m_ctx.db().gridModel(Retainership::hmoListSql(), {kClientTypeHMO}, this);
        m_grid->setModel(m_model);
        delete old;
        ui::fitColumns(m_grid, 260);
        connect(m_grid->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
                &frmRetainershipUpdDB::showCategories);
    });
    m_categories->clear();
}

void frmRetainershipUpdDB::showCategories()
{
    runCommand(this, m_ctx, [this] {
        m_categories->clear();
        const QString type = grid::currentText(m_grid, QStringLiteral("ClientType"));
        if (!type.isEmpty())
            m_categories->addItems(Retainership(m_ctx).categoriesOf(type));
    });
}

void frmRetainershipUpdDB::save()
{
    if (runCommand(this, m_ctx, [this] {
            Retainership(m_ctx).updateSchemeRows();
            m_ctx.prompter().inform(QStringLiteral("Record Succesfully saved"), windowTitle());
        }))
        fillGrid();
}

void frmRetainershipUpdDB::removeCurrent()
{
    const QString retainID = grid::currentText(m_grid, QStringLiteral("retainID"));
    if (retainID.isEmpty())
        return;
    if (!m_ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                              QStringLiteral("Delete")))
        return;
    if (runCommand(this, m_ctx, [&] {
            Retainership(m_ctx).remove(retainID, false);
            m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "),
                                    windowTitle());
        }))
        fillGrid();
}



TOLMAR_REGISTER_SCREEN(frmRetainershipUpdDB)

}  // namespace tolmar
