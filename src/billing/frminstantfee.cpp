#include "billing/frminstantfee.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "patients/registrationdesk.h"

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tolmar {

frmInstantFee::frmInstantFee(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Fees"));
    ui::FormBuilder f(this);
    auto* heading = f.label(QStringLiteral("lblShow"), QStringLiteral("Instant Fees"));
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    m_list = new QListWidget(this);
    f.field(m_list, QStringLiteral("LstDate"), QStringLiteral("Select an Item"));
    auto* process = f.button(QStringLiteral("cmdProcess"), QStringLiteral("Save"));
    auto* cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Close"));
    resize(420, 320);

    runCommand(this, m_ctx, [this] {
        const db::Result r = m_ctx.db().query(QStringLiteral(
            "SELECT DISTINCT SNo, ItemName, Amount FROM hInstantFee WHERE itemType = 'RECORDS' "
            "ORDER BY ItemName"));
        for (const db::Row& row : r.rows) {
            auto* item = new QListWidgetItem(
                QStringLiteral("%1   [%2]").arg(row.text(u"ItemName"), row.text(u"Amount")),
                m_list);
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
            item->setCheckState(Qt::Unchecked);
            item->setData(Qt::UserRole, row.toInt(u"SNo"));
        }
    });
    connect(m_list, &QListWidget::itemChanged, this, &frmInstantFee::itemTicked);
    connect(process, &QPushButton::clicked, this, &frmInstantFee::cmdProcessClick);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

void frmInstantFee::itemTicked(QListWidgetItem* item)
{
    if (m_unticking || item->checkState() != Qt::Checked)
        return;
    for (int i = 0; i < m_list->count(); ++i) {
        QListWidgetItem* other = m_list->item(i);
        if (other != item && other->checkState() == Qt::Checked) {
            m_unticking = true;
            item->setCheckState(Qt::Unchecked);
            m_unticking = false;
            m_ctx.prompter().inform(QStringLiteral("Only one Appointment at a time"),
                                    windowTitle());
            return;
        }
    }
}

void frmInstantFee::cmdProcessClick()
{
    Session& s = m_ctx.session();
    for (int i = 0; i < m_list->count(); ++i) {
        const QListWidgetItem* item = m_list->item(i);
        if (item->checkState() != Qt::Checked)
            continue;
        const QString text = item->text();
        s.instantFeePending = true;
        s.instantFeeItem = text.left(text.indexOf(QLatin1Char('['))).trimmed();
        s.pendingFee = patients::parseAmount(listentry::key(text));
    }
    // Said whether or not an entry was ticked: the desk has always been told this.
    m_ctx.prompter().inform(QStringLiteral("Item will be added to Bill"), windowTitle());
    accept();
}

TOLMAR_REGISTER_SCREEN(frmInstantFee)

}  // namespace tolmar
