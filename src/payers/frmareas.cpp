#include "payers/frmareas.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "payers/patientareas.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace tolmar {

frmAreas::frmAreas(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QWidget(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Address Locations/Areas"));
    ui::FormBuilder f(this);
    m_list = new QListWidget(this);
    f.field(m_list, QStringLiteral("lstAreas"), QString());
    m_name = f.text(QStringLiteral("txtName"), QStringLiteral("Area"));
    m_add = f.button(QStringLiteral("cmdAdd"), QStringLiteral("Add"));
    m_edit = f.button(QStringLiteral("cmdEdit"), QStringLiteral("Edit"));
    m_save = f.button(QStringLiteral("OKButton"), QStringLiteral("Save"));
    m_delete = f.button(QStringLiteral("cmdDel"), QStringLiteral("Delete"));
    m_cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Cancel"));
    auto* close = f.button(QStringLiteral("CancelButton"), QStringLiteral("Close"));
    resize(440, 480);

    connect(m_add, &QPushButton::clicked, this, [this] { setEditing(true); });
    connect(m_edit, &QPushButton::clicked, this, [this] {
        if (runCommand(this, m_ctx, [this] { requirePickedArea(QStringLiteral("Edit")); }))
            setEditing(true, m_list->currentItem()->text());
    });
    connect(m_save, &QPushButton::clicked, this, &frmAreas::save);
    connect(m_delete, &QPushButton::clicked, this, &frmAreas::removeCurrent);
    connect(m_cancel, &QPushButton::clicked, this, [this] { setEditing(false); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    setEditing(false);
    fillList();
}

void frmAreas::fillList()
{
    runCommand(this, m_ctx, [this] {
        m_list->clear();
        m_list->addItems(PatientAreas(m_ctx).all());
    });
}

void frmAreas::setEditing(bool on, const QString& oldName)
{
    m_editing = on;
    m_oldName = oldName;
    m_name->setText(oldName);
    m_name->setReadOnly(!on);
    m_save->setEnabled(on);
    m_cancel->setEnabled(on);
    for (QPushButton* b : {m_add, m_edit, m_delete})
        b->setEnabled(!on);
    m_list->setEnabled(!on);
    if (on)
        m_name->setFocus();
}

void frmAreas::save()
{
    if (!runCommand(this, m_ctx, [this] {
            PatientAreas(m_ctx).save(m_oldName, m_name->text());
            m_ctx.prompter().inform(QStringLiteral("Record Succesfully saved"), windowTitle());
        }))
        return;
    setEditing(false);
    fillList();
}

// Edit and Delete work on the area picked in the list: without one the desk is told what
// to pick, instead of a button that seems dead.
void frmAreas::requirePickedArea(const QString& action) const
{
    if (!m_list->currentItem() || !m_list->currentItem()->isSelected())
        throw CheckFailed(
            QStringLiteral("No Area to %1. Select an Area in the list first").arg(action),
            QStringLiteral("lstAreas"));
}

void frmAreas::removeCurrent()
{
    if (!runCommand(this, m_ctx, [this] { requirePickedArea(QStringLiteral("Delete")); }))
        return;
    const QString name = m_list->currentItem()->text();
    if (!m_ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                              QStringLiteral("Delete")))
        return;
    if (runCommand(this, m_ctx, [&] {
            PatientAreas(m_ctx).remove(name);
            m_ctx.prompter().inform(QStringLiteral(" Record successfully deleted "),
                                    windowTitle());
        }))
        fillList();
}

TOLMAR_REGISTER_SCREEN(frmAreas)

}  // namespace tolmar
