#include "billing/frmrevacctselect.h"

#include "billing/chartofaccounts.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

namespace tolmar {

frmRevAcctSelect::frmRevAcctSelect(AppContext& ctx, const QVariantMap& args, QWidget* parent)
    : QDialog(parent), m_ctx(ctx), m_caller(args.value(QStringLiteral("caller")).toString()),
      m_group(args.value(QStringLiteral("group")).toString()),
      m_callerWidget(args.value(QStringLiteral("callerWidget")).value<QObject*>())
{
    setWindowTitle(QStringLiteral("Select an Account"));
    setModal(true);
    if (!m_callerWidget && !m_caller.isEmpty())
        m_callerWidget = ctx.screens().find(m_caller);
    if (m_group.isEmpty() && m_caller == QLatin1String("frmRetainership"))
        m_group = ctx.session().defaults.Acct_Receivable;
    ui::FormBuilder f(this);
    m_list = new QListWidget(this);
    f.field(m_list, QStringLiteral("LstDate"), QString());
    m_show = f.label(QStringLiteral("lblShow"), QStringLiteral("Select one Account at a time"));
    auto* ok = f.button(QStringLiteral("cmdProcess"), QStringLiteral("OK"));
    auto* cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Close"));
    resize(460, 520);

    connect(m_list, &QListWidget::itemChanged, this, &frmRevAcctSelect::ticked);
    connect(ok, &QPushButton::clicked, this, &frmRevAcctSelect::process);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    fillList();
}

void frmRevAcctSelect::fillList()
{
    runCommand(this, m_ctx, [this] {
        const bool oneGroup = m_caller == QLatin1String("frmRevCat") ||
                              m_caller == QLatin1String("frmRetainership") ||
                              m_caller == QLatin1String("frmSupplers");
        const auto rows =
            accountsForPicker(m_ctx.db(db::Database::Accounting),
                              oneGroup ? std::optional<QString>(m_group) : std::nullopt);
        const QSignalBlocker quiet(m_list);
        m_list->clear();
        for (const db::Row& r : rows.rows) {
            auto* item = new QListWidgetItem(
                listentry::make(r.text(u"AccountName"), r.text(u"AccountID")), m_list);
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
            item->setCheckState(Qt::Unchecked);
            item->setData(Qt::UserRole, r.toLongLong(u"SNo"));
        }
    });
}

void frmRevAcctSelect::ticked(QListWidgetItem* item)
{
    if (item->checkState() != Qt::Checked)
        return;
    for (int i = 0; i < m_list->count(); ++i) {
        QListWidgetItem* other = m_list->item(i);
        if (other != item && other->checkState() == Qt::Checked) {
            const QSignalBlocker quiet(m_list);
            item->setCheckState(Qt::Unchecked);
            m_ctx.prompter().inform(QStringLiteral("Only one Account at a time"), windowTitle());
            return;
        }
    }
    m_show->setText(listentry::text(item->text()));
}

void frmRevAcctSelect::process()
{
    for (int i = 0; i < m_list->count(); ++i) {
        const QListWidgetItem* item = m_list->item(i);
        if (item->checkState() != Qt::Checked)
            continue;
        // The number is the last bracketed part: an account's name may hold brackets.
        const QString entry = item->text();
        const qsizetype open = entry.lastIndexOf(QLatin1Char('['));
        QString number = entry.mid(open + 1);
        number.chop(1);
        const QString name = entry.left(open).trimmed();
        if (m_callerWidget) {
            if (auto* acct = m_callerWidget->findChild<QLineEdit*>(QStringLiteral("txtAcctNo")))
                acct->setText(number);
            if (auto* nameBox = m_callerWidget->findChild<QLineEdit*>(QStringLiteral("txtName")))
                nameBox->setText(name);
        }
        break;
    }
    accept();
}

TOLMAR_REGISTER_SCREEN(frmRevAcctSelect)

}  // namespace tolmar
