#include "core/frmlocnew.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/serverlocation.h"
#include "core/ui/formbuilder.h"

#include <QLineEdit>
#include <QMetaObject>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QTimer>

namespace tolmar {

frmLocNew::frmLocNew(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Server Locations"));
    ui::FormBuilder f(this);
    m_grid = f.grid(QStringLiteral("grdData"));
    m_model = new QStandardItemModel(0, 2, this);
    m_model->setHorizontalHeaderLabels({QStringLiteral("Location"), QStringLiteral("IP_Address")});
    m_grid->setModel(m_model);
    m_id = f.text(QStringLiteral("txtID"), QStringLiteral("IP Address"), ui::LetterCase::Upper);
    m_name = f.text(QStringLiteral("txtName"), QStringLiteral("Name"), ui::LetterCase::Upper);
    m_add = f.button(QStringLiteral("cmdAdd"), QStringLiteral("Add"));
    m_edit = f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    m_save = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    m_delete = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    m_cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Cancel"));
    m_refresh = f.button(QStringLiteral("cmdRefresh"), QStringLiteral("Refresh"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    resize(520, 420);

    connect(m_add, &QPushButton::clicked, this, [this] { setMode(Mode::Add); m_id->setFocus(); });
    connect(m_edit, &QPushButton::clicked, this, &frmLocNew::beginEdit);
    connect(m_grid, &QTableView::doubleClicked, this, &frmLocNew::beginEdit);
    connect(m_save, &QPushButton::clicked, this, &frmLocNew::save);
    connect(m_delete, &QPushButton::clicked, this, &frmLocNew::removeCurrent);
    connect(m_cancel, &QPushButton::clicked, this, [this] { setMode(Mode::View); });
    connect(m_refresh, &QPushButton::clicked, this, &frmLocNew::fillGrid);
    connect(close, &QPushButton::clicked, this, &frmLocNew::closeScreen);

    setMode(Mode::View);
    fillGrid();
}

void frmLocNew::fillGrid()
{
    runCommand(this, m_ctx, [this] {
        const auto rows = ServerLocations(m_ctx).distinctRows();
        m_model->removeRows(0, m_model->rowCount());
        for (const Location& l : rows)
            m_model->appendRow({new QStandardItem(l.name), new QStandardItem(l.id)});
        ui::fitColumns(m_grid);
        if (m_model->rowCount() > 0)
            m_grid->selectRow(0);
    });
}

void frmLocNew::setMode(Mode mode)
{
    m_mode = mode;
    const bool editing = mode != Mode::View;
    m_id->setReadOnly(!editing);
    m_name->setReadOnly(!editing);
    m_save->setEnabled(editing);
    m_cancel->setEnabled(editing);
    for (QPushButton* b : {m_add, m_edit, m_delete, m_refresh})
        b->setEnabled(!editing);
    m_grid->setEnabled(!editing);
    if (!editing) {
        m_id->clear();
        m_name->clear();
        m_oldName.clear();
    }
}

QString frmLocNew::currentCell(int column) const
{
    const QModelIndex i = m_grid->currentIndex();
    if (!i.isValid())
        return {};
    return m_model->index(i.row(), column).data().toString();
}

void frmLocNew::beginEdit()
{
    if (m_mode != Mode::View || !m_grid->currentIndex().isValid())
        return;
    setMode(Mode::Edit);
    m_oldName = currentCell(0);
    m_id->setText(currentCell(1));
    m_name->setText(m_oldName);
    m_id->setFocus();
}

void frmLocNew::save()
{
    const bool done = runCommand(this, m_ctx, [this] {
        if (m_id->text().trimmed().isEmpty())
            throw CheckFailed(QStringLiteral("Specify Ip Address of new Server Location"),
                              QStringLiteral("txtID"));
        if (m_name->text().trimmed().isEmpty())
            throw CheckFailed(QStringLiteral("Specify Name of new Server Location"),
                              QStringLiteral("txtName"));
        ServerLocations locations(m_ctx);
        if (m_mode == Mode::Edit)
            locations.update(m_oldName, m_id->text(), m_name->text());
        else
            locations.add(m_id->text(), m_name->text());
        m_ctx.prompter().inform(QStringLiteral("Record Succesfully saved"), windowTitle());
    });
    if (!done)
        return;
    setMode(Mode::View);
    fillGrid();
    if (QWidget* list = m_ctx.screens().find(QStringLiteral("frmLocIP")))
        QMetaObject::invokeMethod(list, "reloadList");
}

void frmLocNew::removeCurrent()
{
    const QString name = currentCell(0);
    if (!m_grid->currentIndex().isValid())
        return;
    if (!m_ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                              QStringLiteral("Delete")))
        return;
    if (runCommand(this, m_ctx, [&] {
            ServerLocations(m_ctx).remove(name);
            m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "),
                                    windowTitle());
        }))
        fillGrid();
}

void frmLocNew::closeScreen()
{
    close();
    // The list screen was left for this one; the person goes back to choosing a server.
    AppContext& ctx = m_ctx;
    QTimer::singleShot(0, [&ctx] {
        const QString list = QStringLiteral("frmLocIP");
        if (ctx.screens().find(list))
            ctx.screens().open(list);
        else
            ctx.screens().openModal(list);
    });
}

TOLMAR_REGISTER_SCREEN(frmLocNew)

}  // namespace tolmar
