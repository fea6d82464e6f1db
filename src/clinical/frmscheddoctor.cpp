#include "clinical/frmscheddoctor.h"

#include "clinical/doctorallocation.h"
#include "clinical/roomschedule.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"

#include <QComboBox>
#include <QDateEdit>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmSchedDoctor::frmSchedDoctor(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Assign Doctors"));
    ui::FormBuilder f(this);
    m_dtDate = f.date(QStringLiteral("dtDate"), QStringLiteral("Date"));
    m_cboVehNo = f.combo(QStringLiteral("cboVehNo"), QStringLiteral("Consulting Room"));
    m_cboReason = f.combo(QStringLiteral("cboReason"), QStringLiteral("Doctor's Name"));
    auto* ok = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    auto* fresh = f.button(QStringLiteral("cmdAdd"), QStringLiteral("New"));
    auto* del = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    auto* off = f.button(QStringLiteral("cmdOff"), QStringLiteral("Sign Off Doctor"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    m_grdData = f.grid(QStringLiteral("grdData"));
    resize(680, 480);

    m_dtDate->setDate(m_ctx.session().serverDate);
    connect(m_dtDate, &QDateEdit::dateChanged, this, &frmSchedDoctor::fillGrid);
    connect(ok, &QPushButton::clicked, this, &frmSchedDoctor::save);
    connect(fresh, &QPushButton::clicked, this, &frmSchedDoctor::clearFields);
    connect(del, &QPushButton::clicked, this, [this] {
        if (runCommand(this, m_ctx, [this] { clinical::removeAssignment(m_ctx, currentSno()); }))
            fillGrid();
    });
    connect(off, &QPushButton::clicked, this, [this] {
        if (runCommand(this, m_ctx, [this] {
                clinical::signOffDoctor(m_ctx, currentSno(),
                                        grid::currentText(m_grdData, QStringLiteral("DocName")));
            }))
            fillGrid();
    });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(m_grdData, &QTableView::doubleClicked, this, &frmSchedDoctor::editRow);
    fillLists();
    fillGrid();
}

void frmSchedDoctor::fillLists()
{
    runCommand(this, m_ctx, [this] {
        m_cboVehNo->clear();
        m_cboVehNo->addItems(clinical::roomNames(m_ctx.db()));
        m_cboReason->clear();
        m_cboReason->addItems(clinical::clinicDoctorEntries(m_ctx.db()));
        m_cboVehNo->setCurrentIndex(-1);
        m_cboReason->setCurrentIndex(-1);
    });
}

void frmSchedDoctor::fillGrid()
{
    runCommand(this, m_ctx, [this] {
        grid::replaceModel(m_grdData,
                           m_ctx.db().gridModel(clinical::assignmentsSql(), {m_dtDate->date()},
                                                m_grdData),
                           {QStringLiteral("SNO"), QStringLiteral("empID")});
        // Yesterday's rooms are of no use to anyone: every refresh clears them.
        clinical::DoctorAllocation(m_ctx.db(), m_ctx.session().serverDate, false)
            .purgePastAssignments();
    });
}

int frmSchedDoctor::currentSno() const
{
    return grid::currentText(m_grdData, QStringLiteral("SNO")).toInt();
}

void frmSchedDoctor::editRow()
{
    m_sno = currentSno();
    m_dtDate->blockSignals(true);
    m_dtDate->setDate(fmt::parseDate(grid::currentText(m_grdData, QStringLiteral("Date"))));
    m_dtDate->blockSignals(false);
    m_cboVehNo->setCurrentIndex(
        m_cboVehNo->findText(grid::currentText(m_grdData, QStringLiteral("RoomNo"))));
    m_cboReason->setCurrentIndex(m_cboReason->findText(
        listentry::make(grid::currentText(m_grdData, QStringLiteral("DocName")),
                        grid::currentText(m_grdData, QStringLiteral("empID")))));
}

void frmSchedDoctor::clearFields()
{
    m_sno = 0;
    m_cboVehNo->setCurrentIndex(-1);
    m_cboReason->setCurrentIndex(-1);
}

void frmSchedDoctor::save()
{
    clinical::RoomAssignment a;
    a.sno = m_sno;
    a.date = m_dtDate->date();
    a.room = m_cboVehNo->currentText();
    a.doctor = m_cboReason->currentText();
    QString done;
    if (!runCommand(this, m_ctx, [&] { done = clinical::saveAssignment(m_ctx, a); }) ||
        done.isEmpty())
        return;
    m_ctx.prompter().inform(done, windowTitle());
    clearFields();
    fillGrid();
}

TOLMAR_REGISTER_SCREEN(frmSchedDoctor)

}  // namespace tolmar
