#include "patients/frmphonebook.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/sheetexport.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"
#include "patients/patientlists.h"

#include <QDateEdit>
#include <QLabel>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

namespace {
const QString kPhoneBookTitle = QStringLiteral("Patients' Phone / Email Book");
}

frmPhoneBook::frmPhoneBook(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(kPhoneBookTitle);
    ui::FormBuilder f(this);
    m_dtStart = f.date(QStringLiteral("dtStart"), QStringLiteral("From"));
    m_dtEnd = f.date(QStringLiteral("dtEnd"), QStringLiteral("To"));
    for (QDateEdit* d : {m_dtStart, m_dtEnd})
        d->setMaximumWidth(d->sizeHint().width() + 40);
    m_lblShow = f.label(QStringLiteral("lblShow"), kPhoneBookTitle);
    m_lblShow->setStyleSheet(QStringLiteral("font-weight: bold; color: #1b4f9c;"));
    m_grid = f.grid(QStringLiteral("grdData"));
    auto* reorder =
        f.button(QStringLiteral("cmdReorder"), QStringLiteral("View Phone / Email Book"));
    auto* expected = f.button(QStringLiteral("cmdExpected"), QStringLiteral("Referal Book"));
    auto* excel = f.button(QStringLiteral("cmdExcel"), QStringLiteral("Export to Excel"));
    auto* close = f.button(QStringLiteral("cmdClose"), QStringLiteral("Close"));
    connect(reorder, &QPushButton::clicked, this, &frmPhoneBook::cmdReorderClick);
    connect(expected, &QPushButton::clicked, this, &frmPhoneBook::cmdExpectedClick);
    connect(excel, &QPushButton::clicked, this, &frmPhoneBook::cmdExcelClick);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    resize(980, 560);

    const QDate today = m_ctx.session().serverDate;
    m_dtStart->setDate(today);
    m_dtEnd->setDate(today);
    cmdReorderClick();
}

void frmPhoneBook::cmdReorderClick()
{
    runCommand(this, m_ctx, [this] {
        grid::replaceModel(m_grid, patients::phoneBook(m_ctx.db(), m_dtStart->date(),
                                                       m_dtEnd->date(), m_grid));
        m_lblShow->setText(kPhoneBookTitle);
        ui::fitColumns(m_grid, 200);
        const int name = grid::columnOf(m_grid->model(), QStringLiteral("FullName"));
        if (name >= 0)
            m_grid->setColumnWidth(name, 280);
    });
}

void frmPhoneBook::cmdExpectedClick()
{
    runCommand(this, m_ctx, [this] {
        grid::replaceModel(m_grid, patients::referralBook(m_ctx.db(), m_dtStart->date(),
                                                          m_dtEnd->date(), m_grid));
        grid::hideColumns(m_grid, {QStringLiteral("AttendedTo"), QStringLiteral("ID")});
        m_lblShow->setText(QStringLiteral("Appointment/Referal Book"));
        ui::fitColumns(m_grid, 200);
    });
}

void frmPhoneBook::cmdExcelClick()
{
    runCommand(this, m_ctx, [this] {
        const db::Result rows =
            patients::phoneBookRows(m_ctx.db(), m_dtStart->date(), m_dtEnd->date());
        if (rows.empty()) {
            m_ctx.prompter().inform(QStringLiteral("No Records between specified Dates"));
            return;
        }
        exportToSheet(m_ctx, rows);
    });
}

TOLMAR_REGISTER_SCREEN(frmPhoneBook)

}  // namespace tolmar
