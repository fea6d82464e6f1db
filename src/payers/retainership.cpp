#include "payers/retainership.h"

#include "billing/chartofaccounts.h"
#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/likepattern.h"
#include "core/listentry.h"

#include <algorithm>

namespace tolmar {

namespace {

double amount(const QString& typed)
{
    // A blank or unreadable amount is no amount.
    bool ok = false;
    const double v = typed.trimmed().toDouble(&ok);
    return ok ? v : 0;
}

void audit(AppContext& ctx, const QString& action, const QString& tranCode)
{
    const Session& s = ctx.session();
    SpAudiTrail(ctx, s.userName, action, tranCode, QString(), s.computerName);
}

}  // namespace

Retainership::Retainership(AppContext& ctx) : m_ctx(ctx) {}

QString Retainership::genIDNoMain()
{
    // The highest four-digit ending; codes that do not end in four digits (a billing code
    // such as "NHIS") take no part in the count.
    int highest = 0;
    for (const db::Row& r :
         m_ctx.db().query(QStringLiteral("select retaincode from vwhRetainCode")).rows) {
        const QString tail = r.text(u"retaincode").trimmed().right(4);
        if (tail.size() != 4 || !std::all_of(tail.begin(), tail.end(),
                                             [](QChar c) { return c.isDigit(); }))
            continue;
        highest = std::max(highest, tail.toInt());
    }
    const QString four = (QStringLiteral("0000") + QString::number(highest + 1)).right(4);
    const Session& s = m_ctx.session();
    return s.defaults.Coy_Code == QLatin1String("LONG") ? s.hospID + four : four;
}

void Retainership::check(ClientFields& f)
{
    if (f.name.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Company Name cannot be empty"),
                          QStringLiteral("txtName"));
    if (f.clientType.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Client Type cannot be empty"),
                          QStringLiteral("cboClient"));
    if (f.address.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Company Address cannot be empty"),
                          QStringLiteral("txtAddress"));
    if (f.active.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Is Client Active? Please Specify"),
                          QStringLiteral("cboYes"));
    if (f.monthEnding.trimmed().isEmpty())
        f.monthEnding = QStringLiteral("31");
}

ClientAdded Retainership::add(ClientFields f)
{
    check(f);
    m_ctx.refreshServerClock();
    ClientAdded out;
    out.retainID = genIDNoMain();
    const QString name = listentry::blankBrackets(f.name);
    const QString type = f.clientType.trimmed();
    // Two desks adding at once draw the same code; the second learns it in plain words.
    const CheckFailed drawnTwice(
        QStringLiteral("Another desk has just saved a company under code %1. "
                       "Press Save again to take the next code.")
            .arg(out.retainID));
    refuseDuplicate(drawnTwice, [&] {
        m_ctx.openConnection()->exec(
            QStringLiteral("INSERT INTO hRetainership (retainCode, retainID, RetainDate, "
                           "retainName, AcctID, ClientType, clientCatID, Contact, Address, "
                           "PhoneNo, Email, Active, BillEndDate, ConAmount, RegAmount, "
                           "CardRenewAmount) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                           "?, ?)"),
            {out.retainID, out.retainID, m_ctx.session().serverDate, name, f.acctNo.trimmed(),
             type, type, f.contact.trimmed(), f.address.trimmed(), f.phone.trimmed(),
             f.email.trimmed(), f.active.trimmed(), f.monthEnding.trimmed(),
             amount(f.conAmount), amount(f.regAmount), amount(f.renewAmount)});
    });
    if (m_ctx.session().defaults.AcctPostOn && f.acctNo.trimmed().isEmpty()) {
        try {
            out.accountID =
                openReceivableAccount(m_ctx, out.retainID, name, type, f.address.trimmed());
        } catch (const std::exception& e) {
            out.accountError = describeError(e);
        }
    }
    audit(m_ctx, QStringLiteral("Add Client Info: ") + name, out.retainID);
    return out;
}

QString Retainership::codeOfName(const QString& name, const QString& except)
{
    const auto row = m_ctx.db().queryOne(
        QStringLiteral("select retainID from hRetainership where upper(retainName) = upper(?) "
                       "and retainID <> COALESCE(?, '') order by retainID LIMIT 1"),
        {listentry::blankBrackets(name), except});
    return row ? row->text(u"retainID") : QString();
}

void Retainership::edit(ClientFields f)
{
    check(f);
    const QString name = listentry::blankBrackets(f.name);
    const QString type = f.clientType.trimmed();
    const int n = m_ctx.openConnection()->exec(
        QStringLiteral("UPDATE hRetainership SET retainName = ?, clientCatID = ?, ClientType = ?, "
                       "Contact = ?, Address = ?, PhoneNo = ?, Email = ?, Active = ?, "
                       "BillEndDate = ?, ConAmount = ?, RegAmount = ?, CardRenewAmount = ? "
                       "WHERE retainID = ?"),
        {name, type, type, f.contact.trimmed(), f.address.trimmed(), f.phone.trimmed(),
         f.email.trimmed(), f.active.trimmed(), f.monthEnding.trimmed(), amount(f.conAmount),
         amount(f.regAmount), amount(f.renewAmount), f.retainID});
    if (n == 0)
        throw std::runtime_error(
            QStringLiteral("The client %1 is no longer on the list.").arg(f.retainID)
                .toStdString());
    audit(m_ctx, QStringLiteral("Edit Client Info: ") + name, f.retainID);
}

void Retainership::remove(const QString& retainID, bool withSchemeRows)
{
    auto conn = m_ctx.openConnection();
    // hPatients.CoyName holds the payer's code, not its name.
    if (conn->queryOne(QStringLiteral("select PNo from hPatients where CoyName = ? LIMIT 1"),
                       {retainID}))
        throw CheckFailed(QStringLiteral("Client Cannot be Deleted!!! Has Patient Information"));
    db::Transaction tx(*conn);
    conn->exec(QStringLiteral("delete from hRetainership where retainID = ?"), {retainID});
    if (withSchemeRows)
        conn->exec(QStringLiteral("delete from hRetainershipScheme where retainID = ?"),
                   {retainID});
    tx.commit();
}

QString Retainership::listSql(bool filtered)
{
    return QStringLiteral(
               "select distinct RetainCode AS \"RetainCode\", retainID AS \"retainID\", "
               "ClientName AS \"ClientName\", AccountNo AS \"AccountNo\", "
               "ClientType AS \"ClientType\", Category AS \"Category\", Address AS \"Address\", "
               "PhoneNo AS \"PhoneNo\", Email AS \"Email\", Contact AS \"Contact\", "
               "Active AS \"Active\", Debt AS \"Debt\", BillEndDate AS \"BillEndDate\", "
               "RegAmount AS \"RegAmount\", ConAmount AS \"ConAmount\", "
               "CardRenewAmount AS \"CardRenewAmount\" from vwhretainershipAll ") +
           (filtered ? QStringLiteral("where upper(ClientName) like ? escape '\\' ")
                     : QString()) +
           QStringLiteral("order by \"ClientName\"");
}

db::Params Retainership::listParams(const QString& filter)
{
    if (filter.isEmpty())
        return {};
    return {like::contains(filter)};
}

db::Result Retainership::exportRows()
{
    return m_ctx.db().query(QStringLiteral(
        "select ClientName AS \"ClientName\", RetainCode as \"ClientCode\", "
        "ClientType AS \"ClientType\", PhoneNo AS \"PhoneNo\", Contact AS \"Contact\" "
        "from vwhretainershipAll orDER BY ClientName"));
}

QString Retainership::hmoListSql()
{
    return QStringLiteral(
        "select RetainCode AS \"RetainCode\", retainID AS \"retainID\", "
        "retainName AS \"retainName\", ClientType AS \"ClientType\", "
        "ClientCatID AS \"ClientCatID\", Address AS \"Address\", PhoneNo AS \"PhoneNo\", "
        "Email AS \"Email\", Contact AS \"Contact\", Active AS \"Active\", Debt AS \"Debt\" "
        "from hretainership where clientType = ? order by retainName");
}

QStringList Retainership::categoriesOf(const QString& clientType)
{
    QStringList out;
    for (const db::Row& r :
         m_ctx.db()
             .query(QStringLiteral("select clientcat, clientcatID from billingprice "
                                   "where clientType = ? order by clientcatID"),
                    {clientType})
             .rows)
        out << listentry::make(r.text(u"clientcat"), r.text(u"clientcatID"));
    return out;
}

QStringList Retainership::clientTypes()
{
    QStringList out;
    for (const db::Row& r :
         m_ctx.db()
             .query(QStringLiteral("select distinct clientType from hClientType "
                                   "order by clientType"))
             .rows)
        out << r.text(u"clientType");
    return out;
}

int Retainership::updateSchemeRows()
{
    auto conn = m_ctx.openConnection();
    db::Transaction tx(*conn);
    // Saving twice must not leave two rows per scheme: the earlier rows of the three
    // schemes are replaced.
    const QString schemes[] = {QStringLiteral("HMO"), QStringLiteral("NHIS"),
                               QStringLiteral("FFS")};
    for (const QString& scheme : schemes) {
        conn->exec(QStringLiteral("delete from hRetainershipScheme where clientCatID = ? and "
                                  "retainID in (select retainID from hRetainership "
                                  "where ClientType = ?)"),
                   {scheme, kClientTypeHMO});
        conn->exec(QStringLiteral("insert into hRetainershipScheme (retainID, retainName, "
                                  "Contact, Address, PhoneNo, Email, Active, retainCode, "
                                  "clientCatID, ClientType) "
                                  "select retainID, retainName, Contact, Address, PhoneNo, "
                                  "Email, Active, retainCode, CAST(? AS VARCHAR(30)), "
                                  "CAST(? AS VARCHAR(20)) from hRetainership "
                                  "where ClientType = ?"),
                   {scheme, scheme, kClientTypeHMO});
    }
    const int hmos = conn->scalar(QStringLiteral("select count(*) from hRetainership "
                                                 "where ClientType = ?"),
                                  {kClientTypeHMO})
                         .toInt();
    tx.commit();
    return hmos;
}

}  // namespace tolmar
