#include "clinical/frmdocwait.h"

#include "clinical/doctorallocation.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"

#include <QAbstractItemModel>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmDocWait::frmDocWait(AppContext& ctx, const QVariantMap& args, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Waiting List Details"));
    setModal(true);
    ui::FormBuilder f(this);
    m_grid = f.grid(QStringLiteral("dGexp"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    resize(760, 360);
    runCommand(this, m_ctx, [&] {
        m_grid->setModel(m_ctx.db().gridModel(
            clinical::DoctorAllocation::docWaitSql(),
            {args.value(QStringLiteral("Date")).toDate(),
             args.value(QStringLiteral("EmpID")).toString(),
             args.value(QStringLiteral("ClinicID")).toString()},
            m_grid));
        ui::fitColumns(m_grid, 260);
    });
}

void frmDocWait::done(int result)
{
    // The rows go with the window.
    if (QAbstractItemModel* m = m_grid->model()) {
        m_grid->setModel(nullptr);
        delete m;
    }
    QDialog::done(result);
}

TOLMAR_REGISTER_SCREEN(frmDocWait)

}  // namespace tolmar
