#include "patients/frmfind.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "patients/patientsearch.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#include <tuple>

namespace tolmar {

frmFind::frmFind(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Find a Record "));
    ui::FormBuilder f(this);
    // Each box with its own OK beside it: the desk types and presses the one next to it.
    auto boxWithOk = [&](const QString& box, const QString& button, const QString& label) {
        auto* row = new QWidget(this);
        auto* h = new QHBoxLayout(row);
        h->setContentsMargins(0, 0, 0, 0);
        auto* edit = new QLineEdit(row);
        edit->setObjectName(box);
        auto* ok = new QPushButton(QStringLiteral("OK"), row);
        ok->setObjectName(button);
        ok->setAutoDefault(false);  // Enter presses the OK beside the box, not the first one
        h->addWidget(edit, 1);
        h->addWidget(ok);
        f.field(row, QStringLiteral("fra") + button, label);
        connect(edit, &QLineEdit::returnPressed, ok, &QPushButton::click);
        return std::pair{edit, ok};
    };
    QPushButton* byName = nullptr;
    QPushButton* byCard = nullptr;
    std::tie(m_txtName, byName) = boxWithOk(QStringLiteral("txtName"), QStringLiteral("cmdName"),
                                            QStringLiteral("Surname:Enter the first few letters"));
    std::tie(m_TxtID, byCard) = boxWithOk(QStringLiteral("TxtID"), QStringLiteral("cmdID"),
                                          QStringLiteral("Enter Card No and click OK"));
    m_grid = f.grid(QStringLiteral("grdData"));
    auto* close = f.button(QStringLiteral("cmdClose"), QStringLiteral("Close"));
    close->setAutoDefault(false);
    connect(byName, &QPushButton::clicked, this,
            [this] { find(patients::kSearchSurname, m_txtName->text()); });
    connect(byCard, &QPushButton::clicked, this,
            [this] { find(patients::kSearchCardNo, m_TxtID->text()); });
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    resize(860, 440);
}

void frmFind::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_ctx.screens().centreOverFrame(this);
}

void frmFind::find(const QString& mode, const QString& text)
{
    const patients::SearchOutcome found = patients::searchPatients(m_ctx, mode, 0, text, this);
    runCommand(this, m_ctx, [&] {
        if (found.failed())
            throw std::runtime_error(found.error.toStdString());
        const QList<QPair<QString, QString>> columns{
            {QStringLiteral("Surname"), QStringLiteral("Surname")},
            {QStringLiteral("Firstname"), QStringLiteral("Firstname")},
            {QStringLiteral("pno"), QStringLiteral("SysNo")},
            {QStringLiteral("oldPno"), QStringLiteral("CardNo")},
            {QStringLiteral("homeAddress"), QStringLiteral("homeAddress")}};
        grid::replaceModel(m_grid, grid::captioned(found.rows, columns));
        ui::fitColumns(m_grid, 280);
    });
}

TOLMAR_REGISTER_SCREEN(frmFind)

}  // namespace tolmar
