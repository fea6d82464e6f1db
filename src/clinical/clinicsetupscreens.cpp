#include "clinical/clinicsetupscreens.h"

#include "clinical/clinicsetup.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "core/ui/gridcells.h"

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QRegularExpressionValidator>
#include <QTableView>

namespace tolmar {

namespace {

QString cell(const QTableView* list, const char* caption)
{
    return grid::currentText(list, QString::fromLatin1(caption));
}

void selectKey(QComboBox* box, const QString& key)
{
    int at = -1;
    for (int i = 0; i < box->count() && at < 0; ++i)
        if (listentry::key(box->itemText(i)) == key)
            at = i;
    box->setCurrentIndex(at);
}

}  // namespace

// Consulting rooms.

frmConRoom::frmConRoom(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : ListEditScreen(ctx, QStringLiteral("Consulting Rooms"), parent)
{
    m_txtID = form().text(QStringLiteral("txtID"), QStringLiteral("Room Name"),
                          ui::LetterCase::Upper);
    m_txtLocation = form().text(QStringLiteral("txtLocation"), QStringLiteral("Location"),
                                ui::LetterCase::Upper);
    m_txtLocation->setPlaceholderText(QStringLiteral("GRD FLR, 1ST FLR, 2ND FLR, ..."));
    finish(QStringLiteral("RoomNo"));
}

QAbstractItemModel* frmConRoom::listModel(QObject* parent)
{
    return clinical::roomsModel(m_ctx.db(), parent);
}

void frmConRoom::loadRow()
{
    m_txtID->setText(cell(m_list, "RoomNo"));
    m_txtLocation->setText(cell(m_list, "Location"));
}

void frmConRoom::clearFields()
{
    m_txtID->clear();
    m_txtLocation->clear();
}

QString frmConRoom::saveRow(const QString& oldKey)
{
    clinical::saveRoom(m_ctx, oldKey, m_txtID->text(), m_txtLocation->text());
    return QStringLiteral("Record Succesfully saved");
}

void frmConRoom::removeRow(const QString& key) { clinical::removeRoom(m_ctx, key); }

// Clinics.

frmClinicTypes::frmClinicTypes(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : ListEditScreen(ctx, QStringLiteral("Clinics"), parent)
{
    ui::FormBuilder& f = form();
    m_txtName = f.text(QStringLiteral("txtName"), QStringLiteral("Clinic Name"),
                       ui::LetterCase::Upper);
    m_txtConFee = f.text(QStringLiteral("txtConFee"), QStringLiteral("Consultation Fee"));
    m_txtRegFee = f.text(QStringLiteral("txtRegFee"), QStringLiteral("Registration Fee"));
    m_txtDesig = f.text(QStringLiteral("txtDesig"), QStringLiteral("Designation"),
                        ui::LetterCase::Upper);
    m_cboRef = f.combo(QStringLiteral("cboRef"), QStringLiteral("Consultant"));
    runCommand(this, m_ctx,
               [this] { m_cboRef->addItems(clinical::consultantEntries(m_ctx.db())); });
    finish(QStringLiteral("ClinicName"));
    clearFields();
}

QAbstractItemModel* frmClinicTypes::listModel(QObject* parent)
{
    return clinical::clinicsModel(m_ctx.db(), parent);
}

void frmClinicTypes::loadRow()
{
    m_txtName->setText(cell(m_list, "ClinicName"));
    m_txtConFee->setText(cell(m_list, "ConsultationFee"));
    m_txtRegFee->setText(cell(m_list, "RegFee"));
    m_txtDesig->setText(cell(m_list, "Designation"));
    selectKey(m_cboRef, cell(m_list, "EmpID"));
}

void frmClinicTypes::clearFields()
{
    for (QLineEdit* e : {m_txtName, m_txtConFee, m_txtRegFee, m_txtDesig})
        e->clear();
    m_cboRef->setCurrentIndex(-1);
}

QString frmClinicTypes::saveRow(const QString& oldKey)
{
    clinical::saveClinic(m_ctx, oldKey,
                         {m_txtName->text(), m_txtConFee->text(), m_txtRegFee->text(),
                          m_txtDesig->text(), m_cboRef->currentText()});
    return QStringLiteral("Record Succesfully saved");
}

void frmClinicTypes::removeRow(const QString& key) { clinical::removeClinic(m_ctx, key); }

// Clinic days.

frmClinicDays::frmClinicDays(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : ListEditScreen(ctx, QStringLiteral("Clinic Days"), parent)
{
    ui::FormBuilder& f = form();
    m_cboCon = f.combo(QStringLiteral("cboCon"), QStringLiteral("Clinic"));
    m_lstDays = new QListWidget(this);
    m_lstDays->setMaximumHeight(130);
    f.field(m_lstDays, QStringLiteral("lstDays"), QStringLiteral("Days"));
    m_txtTime = f.text(QStringLiteral("txtTime"), QStringLiteral("Clinic Time"));
    m_txtTime->setPlaceholderText(QStringLiteral("9:00 AM"));
    m_txtCon = f.text(QStringLiteral("txtCon"), QStringLiteral("Patient Max Limit"));
    m_txtCon->setPlaceholderText(QStringLiteral("Enter Zero if No Limit"));
    m_txtCon->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("\\d*\\.?\\d*")), m_txtCon));
    runCommand(this, m_ctx, [this] {
        m_cboCon->addItems(clinical::clinicEntries(m_ctx.db()));
        for (const QString& day : clinical::weekdays(m_ctx.db()))
            (new QListWidgetItem(day, m_lstDays))->setCheckState(Qt::Unchecked);
    });
    m_cboCon->setCurrentIndex(-1);
    finish(QStringLiteral("SNo"), {QStringLiteral("SNo")});
    clearFields();
    // While adding, a clinic picked narrows the list to its days.
    connect(m_cboCon, &QComboBox::currentIndexChanged, this, [this] {
        if (m_oldKey.isEmpty())
            fillList();
    });
}

QAbstractItemModel* frmClinicDays::listModel(QObject* parent)
{
    return clinical::clinicDaysModel(
        m_ctx.db(), m_oldKey.isEmpty() ? ui::currentKey(m_cboCon) : QString(), parent);
}

void frmClinicDays::loadRow()
{
    {
        const QSignalBlocker quiet(m_cboCon);
        selectKey(m_cboCon, cell(m_list, "Clinic"));
    }
    const QString day = cell(m_list, "ClinicDay");
    for (int i = 0; i < m_lstDays->count(); ++i)
        m_lstDays->item(i)->setCheckState(
            m_lstDays->item(i)->text().compare(day, Qt::CaseInsensitive) == 0 ? Qt::Checked
                                                                                : Qt::Unchecked);
    m_txtTime->setText(cell(m_list, "ClinicTime"));
    m_txtCon->setText(cell(m_list, "PatLimit"));
}

void frmClinicDays::clearFields()
{
    for (int i = 0; i < m_lstDays->count(); ++i)
        m_lstDays->item(i)->setCheckState(Qt::Unchecked);
    m_txtTime->clear();
    m_txtCon->setText(QStringLiteral("0"));
}

QString frmClinicDays::saveRow(const QString& oldKey)
{
    clinical::ClinicDayFields f{ui::currentKey(m_cboCon), {}, m_txtTime->text(), m_txtCon->text()};
    for (int i = 0; i < m_lstDays->count(); ++i)
        if (m_lstDays->item(i)->checkState() == Qt::Checked)
            f.days << m_lstDays->item(i)->text();
    return clinical::saveClinicDays(m_ctx, oldKey.toInt(), f);
}

void frmClinicDays::removeRow(const QString& key)
{
    clinical::removeClinicDay(m_ctx, key.toInt());
}

QString frmClinicDays::deleteQuestion() const
{
    return QStringLiteral("Are you sure to Delete Clinic Day");
}

// Attendance items.

frmAttendItems::frmAttendItems(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : ListEditScreen(ctx, QStringLiteral(" Patients Attendance Items "), parent)
{
    m_txtName = form().text(QStringLiteral("txtName"), QStringLiteral("Item Name"));
    finish(QStringLiteral("ItemName"));
}

QAbstractItemModel* frmAttendItems::listModel(QObject* parent)
{
    return clinical::attendItemsModel(m_ctx.db(), parent);
}

void frmAttendItems::loadRow() { m_txtName->setText(cell(m_list, "ItemName")); }

void frmAttendItems::clearFields() { m_txtName->clear(); }

QString frmAttendItems::saveRow(const QString& oldKey)
{
    clinical::saveAttendItem(m_ctx, oldKey, m_txtName->text());
    return QStringLiteral("Record Succesfully saved");
}

void frmAttendItems::removeRow(const QString& key) { clinical::removeAttendItem(m_ctx, key); }

TOLMAR_REGISTER_SCREEN(frmConRoom)
TOLMAR_REGISTER_SCREEN(frmClinicTypes)
TOLMAR_REGISTER_SCREEN(frmClinicDays)
TOLMAR_REGISTER_SCREEN(frmAttendItems)

}  // namespace tolmar
