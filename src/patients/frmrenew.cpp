#include "patients/frmrenew.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/screenhost.h"
#include "core/ui/formbuilder.h"
#include "patients/cardrenewal.h"

#include <QAbstractItemModel>
#include <QDateEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace tolmar {

frmRenew::frmRenew(AppContext& ctx, const QVariantMap& args, QWidget* parent)
    : QDialog(parent), m_ctx(ctx)
{
    setWindowTitle(QStringLiteral("Patient Card Renewal"));
    m_pno = args.value(QStringLiteral("PNo")).toString().trimmed();
    m_name = args.value(QStringLiteral("name")).toString().trimmed();
    m_tag = args.value(QStringLiteral("tag")).toString();

    ui::FormBuilder f(this);
    f.sideBySide();
    f.section(QStringLiteral("Card on File"));
    m_txtFull = f.text(QStringLiteral("txtFull"), QStringLiteral("Patient Name"));
    m_txtCat = f.text(QStringLiteral("txtCat"), QStringLiteral("Category"));
    m_txtNo = f.text(QStringLiteral("txtNo"), QStringLiteral("System No"));
    m_txtOldNo = f.text(QStringLiteral("txtOldNo"), QStringLiteral("Card No"));
    m_txtRegDate = f.text(QStringLiteral("txtRegDate"), QStringLiteral("Reg. Date"));
    m_txtExpiry = f.text(QStringLiteral("txtExpiry"), QStringLiteral("Expiry Date"));
    m_txtDuration = f.text(QStringLiteral("txtDuration"), QStringLiteral("Card Duration"));
    for (QLineEdit* e : {m_txtFull, m_txtCat, m_txtNo, m_txtOldNo, m_txtRegDate, m_txtExpiry,
                         m_txtDuration})
        e->setReadOnly(true);
    f.section(QStringLiteral("Renewal"));
    m_DTPicker1 = f.date(QStringLiteral("DTPicker1"), QStringLiteral("Renewal Date"));
    m_dtExpDate = f.date(QStringLiteral("dtExpDate"), QStringLiteral("New Expiry Date"));
    m_grid = f.grid(QStringLiteral("grdData"));
    auto* renew = f.button(QStringLiteral("cmdRenew"), QStringLiteral("Renew Card"));
    auto* close = f.button(QStringLiteral("cmdClose"), QStringLiteral("Close"));
    renew->setDefault(true);
    connect(renew, &QPushButton::clicked, this, &frmRenew::cmdRenewClick);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    // The new year counts from the renewal day, not from the old expiry.
    connect(m_DTPicker1, &QDateEdit::dateChanged, this,
            [this](const QDate& d) { m_dtExpDate->setDate(d.addYears(1)); });
    resize(760, 420);
    load();
}

void frmRenew::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    m_ctx.screens().centreOverFrame(this);
}

void frmRenew::load()
{
    const QDate today = m_ctx.session().serverDate;
    m_DTPicker1->setDate(today);
    m_dtExpDate->setDate(today.addYears(1));
    runCommand(this, m_ctx, [this] {
        if (m_pno.isEmpty())
            return;
        db::Connection& c = m_ctx.db();
        if (const auto card = patients::expiredCard(c, m_pno)) {
            m_txtFull->setText(card->fullName);
            m_txtCat->setText(card->pCatID);
            m_txtNo->setText(card->pno);
            m_txtRegDate->setText(fmt::shortDate(card->regDate));
            m_txtExpiry->setText(fmt::shortDate(card->expiryDate));
            m_txtDuration->setText(card->fileDuration);
            m_txtOldNo->setText(card->oldPno);
            m_numval = card->numval;
        }
        m_grid->setModel(patients::expiredCardGrid(c, m_pno, m_grid));
        ui::fitColumns(m_grid, 260);
    });
}

void frmRenew::cmdRenewClick()
{
    patients::Renewal r;
    r.pno = m_txtNo->text().trimmed();
    r.name = m_name.isEmpty() ? m_txtFull->text().trimmed() : m_name;
    r.tag = m_tag;
    r.newExpiry = m_dtExpDate->date();
    r.oldCardNo = m_txtOldNo->text();
    r.expiryText = m_txtExpiry->text();
    r.regDateText = m_txtRegDate->text();
    bool renewed = false;
    runCommand(this, m_ctx, [&] { renewed = patients::renewCard(m_ctx, r); });
    if (renewed)
        clearFields();
}

void frmRenew::clearFields()
{
    for (QLineEdit* e : {m_txtFull, m_txtCat, m_txtNo, m_txtOldNo, m_txtRegDate, m_txtExpiry,
                         m_txtDuration})
        e->clear();
    m_numval = 0;
    m_dtExpDate->setDate(m_ctx.session().serverDate);
}

TOLMAR_REGISTER_SCREEN(frmRenew)

}  // namespace tolmar
