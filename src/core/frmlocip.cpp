#include "core/frmlocip.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"
#include "core/screenhost.h"
#include "core/serverlocation.h"
#include "core/ui/formbuilder.h"

#include <QComboBox>
#include <QPushButton>

namespace tolmar {

frmLocIP::frmLocIP(AppContext& ctx, const QVariantMap&, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Server Location"));
    ui::FormBuilder f(this);
    m_list = f.combo(QStringLiteral("cboVehNo"), QStringLiteral("Server Name"));
    m_list->setMinimumContentsLength(32);
    auto* ok = f.button(QStringLiteral("cmdOK"), QStringLiteral("Connect"));
    auto* refresh = f.button(QStringLiteral("cmdRefresh"), QStringLiteral("Refresh"));
    auto* add = f.button(QStringLiteral("cmdNew"), QStringLiteral("New"));
    auto* cancel = f.button(QStringLiteral("cmdCancel"), QStringLiteral("Exit"));
    ok->setDefault(true);

    connect(m_list, &QComboBox::currentIndexChanged, this, &frmLocIP::onSelected);
    connect(ok, &QPushButton::clicked, this, &frmLocIP::connectToServer);
    connect(refresh, &QPushButton::clicked, this, &frmLocIP::reloadList);
    connect(add, &QPushButton::clicked, this, [this] {
        // The list steps aside for the edit screen: left up, modal, it would block every
        // control there. The edit screen's Close brings the list back.
        AppContext& ctx = m_ctx;
        reject();
        ctx.screens().open(QStringLiteral("frmLocNew"));
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    reloadList();
}

void frmLocIP::reloadList()
{
    runCommand(this, m_ctx, [this] {
        const auto rows = ServerLocations(m_ctx).all();
        m_list->blockSignals(true);
        m_list->clear();
        for (const Location& l : rows)
            m_list->addItem(listentry::make(l.name, l.id));
        m_list->setCurrentIndex(-1);
        m_list->blockSignals(false);
        m_address.clear();
        m_name.clear();
    });
}

void frmLocIP::onSelected(int index)
{
    if (index < 0)
        return;
    const QString entry = m_list->itemText(index);
    m_address = listentry::key(entry);
    m_name = listentry::text(entry);
}

void frmLocIP::connectToServer()
{
    runCommand(this, m_ctx, [this] {
        if (m_list->currentIndex() < 0)
            throw CheckFailed(QStringLiteral("Specify Server Name"), QStringLiteral("cboVehNo"));
        auto busy = m_ctx.prompter().busy();
        ServerLocations(m_ctx).switchTo(m_address);
        accept();
        if (m_ctx.rerunStartup)
            m_ctx.rerunStartup();
    });
}

TOLMAR_REGISTER_SCREEN(frmLocIP)

}  // namespace tolmar
