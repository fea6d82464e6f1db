#include "patients/frmverify.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "patients/registrationdesk.h"

#include <QAbstractItemModel>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmVerify::frmVerify(AppContext& ctx, const QVariantMap& args, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Verify a Record"));
    setModal(true);
    ui::FormBuilder f(this);
    m_grid = f.grid(QStringLiteral("grdData"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    close->setDefault(true);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    resize(720, 320);
    const QString surname = args.value(QStringLiteral("Surname")).toString();
    runCommand(this, m_ctx, [&] {
        m_grid->setModel(patients::surnameMatches(m_ctx.db(), surname, m_grid));
        ui::fitColumns(m_grid, 260);
    });
}

void frmVerify::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_ctx.screens().centreOverFrame(this);
}

void frmVerify::done(int result)
{
    // The rows go with the window: nothing of them lingers on the shared connection.
    if (QAbstractItemModel* m = m_grid->model()) {
        m_grid->setModel(nullptr);
        delete m;
    }
    QDialog::done(result);
}

TOLMAR_REGISTER_SCREEN(frmVerify)

}  // namespace tolmar
