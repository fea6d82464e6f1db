#include "patients/frmsearch.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"

#include <QAbstractItemModel>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmSearch::frmSearch(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("View Records"));
    ui::FormBuilder f(this);
    m_cboItem = f.combo(QStringLiteral("cboItem"), QStringLiteral("Records of"));
    m_cboItem->addItems(patients::recordItems());
    m_cboItem->setCurrentIndex(-1);
    m_cboItem->setMaximumWidth(m_cboItem->sizeHint().width());
    m_lblDisplay = f.label(QStringLiteral("lblDisplay"), QString());
    m_lblDisplay->setStyleSheet(QStringLiteral("font-weight: bold;"));
    m_grid = f.grid(QStringLiteral("grdData"));
    m_grid->installEventFilter(this);
    m_grid->setToolTip(QStringLiteral("Press Delete to remove the chosen row"));
    auto* refresh = f.button(QStringLiteral("cmdRefresh"), QStringLiteral("Refresh"));
    // Kept for the desk that looks for them; rows are deleted from the grid itself.
    f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    auto* close = f.button(QStringLiteral("cmdClose"), QStringLiteral("Close"));
    connect(m_cboItem, &QComboBox::currentIndexChanged, this, [this] { showItem(false); });
    connect(refresh, &QPushButton::clicked, this, [this] { showItem(true); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    resize(1000, 560);
}

void frmSearch::showItem(bool refresh)
{
    const QString item = m_cboItem->currentText();
    if (item.isEmpty())
        return;
    runCommand(this, m_ctx, [&] {
        patients::RecordTable shown;
        QAbstractItemModel* model =
            patients::listRecords(m_ctx.db(), item, refresh, shown, m_grid);
        grid::replaceModel(m_grid, model);
        m_shown = shown;
        m_refreshed = refresh;
        if (item == QLatin1String("ATTENDANCE"))
            grid::hideColumns(m_grid, {QStringLiteral("recID")});
        m_lblDisplay->setText(QStringLiteral("%1 Records").arg(item));
        ui::fitColumns(m_grid, 240);
    });
}

bool frmSearch::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_grid && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete) {
        deleteCurrentRow();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void frmSearch::deleteCurrentRow()
{
    if (!m_grid->model() || !m_grid->currentIndex().isValid())
        return;
    const QString key = grid::currentText(m_grid, m_shown.key);
    const QString name =
        QStringLiteral("%1 %2").arg(grid::currentText(m_grid, QStringLiteral("psurname")),
                                    grid::currentText(m_grid, QStringLiteral("pfirstName")));
    if (!m_ctx.prompter().ask(QStringLiteral("Are you sure to dalete"),
                              QStringLiteral("Delete is Irreversible")))
        return;
    const bool done = runCommand(this, m_ctx, [&] {
        patients::deleteRecord(m_ctx, m_shown, key, name.trimmed());
    });
    if (!done)
        return;
    showItem(m_refreshed);
    m_ctx.prompter().inform(QStringLiteral(" Record Deleted"));
}

TOLMAR_REGISTER_SCREEN(frmSearch)

}  // namespace tolmar
