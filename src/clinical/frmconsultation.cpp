#include "clinical/frmconsultation.h"

#include "clinical/consultation.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"

#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimeEdit>

namespace tolmar {

namespace {
const QString kHeading = QStringLiteral("Consultation/Treatment");
}  // namespace

frmConsultation::frmConsultation(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Consultation"));
    ui::FormBuilder f(this);
    m_heading = f.label(QStringLiteral("lblHeading"), kHeading);
    QFont bold = m_heading->font();
    bold.setBold(true);
    m_heading->setFont(bold);
    f.sideBySide();
    f.section(QStringLiteral("Patient"), QStringLiteral("fraPatient"));
    // Editable so that an edit shows the patient's name in it, as the heading does.
    m_cboVehNo = f.combo(QStringLiteral("cboVehNo"), QStringLiteral("Patient Name"), true);
    m_lblBill = static_cast<QLabel*>(
        f.field(new QLabel(this), QStringLiteral("lblBill"), QStringLiteral("Consult No:")));
    m_lblClient = static_cast<QLabel*>(
        f.field(new QLabel(this), QStringLiteral("lblClient"), QStringLiteral("Client Cat:")));
    m_lblNo = static_cast<QLabel*>(
        f.field(new QLabel(this), QStringLiteral("lblNo"), QStringLiteral("Pat No:")));
    m_dtDate = f.date(QStringLiteral("dtDate"), QStringLiteral("Date"));
    m_dtTime = new QTimeEdit(this);
    m_dtTime->setDisplayFormat(fmt::kShortTime);
    f.field(m_dtTime, QStringLiteral("dtTime"), QStringLiteral("Time"));
    m_cboReason = f.combo(QStringLiteral("cboReason"), QStringLiteral("Doctor's Name"));
    f.section(QStringLiteral("Consultation"), QStringLiteral("fraConsult"));
    auto text = [&](const char* name, const char* caption) {
        auto* e = new QPlainTextEdit(this);
        e->setTabChangesFocus(true);
        e->setFixedHeight(e->fontMetrics().lineSpacing() * 3 + 12);
        f.field(e, QString::fromLatin1(name), QString::fromLatin1(caption));
        return e;
    };
    m_txtComp = text("txtComp", "Complaints");
    m_txtDiag = text("txtDiag", "Diagnosis");
    m_txtPresc = text("txtPresc", "Treatment");
    auto* add = f.button(QStringLiteral("cmdAdd"), QStringLiteral("New"));
    auto* edit = f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    auto* ok = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    auto* del = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    m_grdData = f.grid(QStringLiteral("grdData"));
    resize(1000, 600);

    connect(m_cboVehNo, &QComboBox::activated, this, &frmConsultation::patientPicked);
    connect(m_dtDate, &QDateEdit::dateChanged, this, &frmConsultation::fillGrid);
    connect(add, &QPushButton::clicked, this, [this] {
        clearFields();
        m_dtTime->setTime(m_ctx.clock().workstationNow().time());
    });
    connect(edit, &QPushButton::clicked, this, &frmConsultation::editRow);
    connect(m_grdData, &QTableView::doubleClicked, this, &frmConsultation::editRow);
    connect(ok, &QPushButton::clicked, this, &frmConsultation::save);
    connect(del, &QPushButton::clicked, this, [this] {
        const int id = grid::currentText(m_grdData, QStringLiteral("ID")).toInt();
        bool deleted = false;
        if (runCommand(this, m_ctx,
                       [&] { deleted = clinical::deleteConsultation(m_ctx, id); }) &&
            deleted) {
            m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "),
                                    windowTitle());
            clearFields();
            fillGrid();
        }
    });
    connect(close, &QPushButton::clicked, this, &QWidget::close);

    runCommand(this, m_ctx,
               [this] { m_cboReason->addItems(clinical::medicalStaffEntries(m_ctx.db())); });
    // The workstation's clock: the doctor records when he saw the patient at his desk.
    const QDateTime now = m_ctx.clock().workstationNow();
    m_dtDate->setDate(now.date());
    m_dtTime->setTime(now.time());
    clearFields();
    getPatList();
    fillGrid();
}

void frmConsultation::getPatList()
{
    runCommand(this, m_ctx, [this] {
        m_cboVehNo->clear();
        for (const db::Row& r : m_ctx.db().query(clinical::waitingVisitsSql()).rows)
            m_cboVehNo->addItem(clinical::waitingVisitEntry(r.text(u"pSurname"),
                                                            r.text(u"pfirstname"),
                                                            r.date(u"recdate"),
                                                            r.text(u"consultID")));
        m_cboVehNo->setCurrentIndex(-1);
    });
}

void frmConsultation::fillGrid()
{
    runCommand(this, m_ctx, [this] {
        grid::replaceModel(m_grdData,
                           m_ctx.db().gridModel(clinical::consultationsSql(), {m_dtDate->date()},
                                                m_grdData),
                           {QStringLiteral("ID")});
    });
}

void frmConsultation::patientPicked()
{
    runCommand(this, m_ctx, [this] {
        const auto v =
            clinical::lookUpVisit(m_ctx.db(), listentry::key(m_cboVehNo->currentText()));
        m_lblBill->setText(v.consultID);
        m_lblClient->setText(v.clientCat);
        m_lblNo->setText(v.pno);
        m_heading->setText(v.found
                               ? QStringLiteral("Patient Referal/Appt for : %1").arg(v.fullName)
                               : QStringLiteral("Patient Referal"));
    });
}

void frmConsultation::editRow()
{
    const QString id = grid::currentText(m_grdData, QStringLiteral("ID"));
    if (!runCommand(this, m_ctx, [&] {
            if (id.isEmpty())
                throw CheckFailed(QStringLiteral("No Record selected. Double click a "
                                                 "Consultation in the list first"),
                                  QStringLiteral("grdData"));
        }))
        return;
    m_id = id.toInt();
    const QString name = grid::currentText(m_grdData, QStringLiteral("Fullname"));
    m_cboVehNo->setCurrentIndex(-1);
    m_cboVehNo->setEditText(name);
    m_heading->setText(QStringLiteral("Patient Referal/Appt for : %1").arg(name));
    m_txtComp->setPlainText(grid::currentText(m_grdData, QStringLiteral("Complaints")));
    m_txtDiag->setPlainText(grid::currentText(m_grdData, QStringLiteral("Diagnosis")));
    m_txtPresc->setPlainText(grid::currentText(m_grdData, QStringLiteral("Prescription")));
    m_dtTime->setTime(QTime::fromString(grid::currentText(m_grdData, QStringLiteral("Time")),
                                        fmt::kShortTime));
}

void frmConsultation::clearFields()
{
    m_id = 0;
    m_cboVehNo->setCurrentIndex(-1);
    m_cboVehNo->setEditText(QString());
    for (QLabel* l : {m_lblBill, m_lblClient, m_lblNo})
        l->clear();
    for (QPlainTextEdit* e : {m_txtComp, m_txtDiag, m_txtPresc})
        e->clear();
    m_cboReason->setCurrentIndex(-1);
    m_heading->setText(kHeading);
}

void frmConsultation::save()
{
    clinical::ConsultationFields f;
    f.id = m_id;
    f.patientEntry = m_cboVehNo->currentText();
    f.consultID = m_lblBill->text();
    f.clientCat = m_lblClient->text();
    f.pno = m_lblNo->text();
    f.date = m_dtDate->date();
    f.time = fmt::shortTime(m_dtTime->time());
    f.complaints = m_txtComp->toPlainText();
    f.diagnosis = m_txtDiag->toPlainText();
    f.prescription = m_txtPresc->toPlainText();
    f.doctor = m_cboReason->currentText();
    QString done;
    if (!runCommand(this, m_ctx, [&] { done = clinical::saveConsultation(m_ctx, f); }) ||
        done.isEmpty())
        return;
    m_ctx.prompter().inform(done, windowTitle());
    clearFields();
    fillGrid();
    getPatList();
}

TOLMAR_REGISTER_SCREEN(frmConsultation)

}  // namespace tolmar
