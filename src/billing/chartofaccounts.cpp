#include "billing/chartofaccounts.h"

#include "core/appcontext.h"
#include "core/financialperiod.h"

#include <stdexcept>

namespace tolmar {

namespace {

QString nextNumberInGroup(db::Connection& accounting, const QString& groupID, qint64 min,
                          qint64 max)
{
    qint64 highest = min - 1;
    const auto rows = accounting.query(
        QStringLiteral("SELECT AccountID FROM ChartOfAccounts WHERE groupID = ?"), {groupID});
    for (const db::Row& r : rows.rows) {
        bool ok = false;
        const qint64 n = r.text(u"AccountID").trimmed().toLongLong(&ok);
        if (ok && n >= min && n <= max && n > highest)
            highest = n;
    }
    if (highest >= max)
        throw std::runtime_error(QStringLiteral("Account group %1 has no account numbers left")
                                     .arg(groupID)
                                     .toStdString());
    return QString::number(highest + 1);
}

}  // namespace

QString ChartOfAccounts_INSERT(db::Connection& accounting, const AccountOpening& a)
{
    db::Transaction tx(accounting);
    const auto group = accounting.queryOne(
        QStringLiteral("SELECT GroupMin, GroupMax FROM AccountGroups WHERE GroupID = ?"),
        {a.GroupID});
    if (!group)
        throw std::runtime_error(
            QStringLiteral("Account group %1 does not exist").arg(a.GroupID).toStdString());
    const QString number =
        a.AccountNo.trimmed().isEmpty() || a.AccountNo == kLedgerAssignsNumber
            ? nextNumberInGroup(accounting, a.GroupID, group->toLongLong(u"GroupMin"),
                                group->toLongLong(u"GroupMax"))
            : a.AccountNo.trimmed();
    accounting.exec(QStringLiteral("INSERT INTO ChartOfAccountMaster (AccountID, CoyID, "
                                   "CreatedBy, CreatedOn) VALUES (?, ?, ?, ?)"),
                    {number, a.CoyID, a.UserName, a.OpenedOn});
    accounting.exec(
        QStringLiteral("INSERT INTO ChartOfAccounts (AccountID, AccountName, groupID, "
                       "AccountOpAmt, AccountClAmt, AccountCat, AccountDesc, AccountAddress, "
                       "AccountSalesTaxNo, Period, CoyID, UserName, ExtID, ExtIDType) "
                       "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        {number, a.AccountName.left(1000), a.GroupID, a.AccountOpAmt, a.AccountClAmt, a.AccountCat,
         a.AccountDesc.left(100), a.AccountAddress, a.AccountSalesTaxNo, a.Period.left(100),
         a.CoyID.left(100), a.UserName.left(100), a.ExtID.left(100), a.ExtIDType.left(100)});
    tx.commit();
    return number;
}

db::Result GetAccountsInfoByCash(db::Connection& accounting, const QString& coyID,
                                 const QString& period, const QString& accountName)
{
    const QVariant known = accounting.scalar(
        QStringLiteral("SELECT PeriodName FROM FinancialPeriods WHERE CoyID = ? AND "
                       "PeriodName = ? LIMIT 1"),
        {coyID, period});
    if (!known.isValid())
        throw std::runtime_error(QStringLiteral("Period %1 does not exist for company %2")
                                     .arg(period, coyID)
                                     .toStdString());
    return accounting.query(
        QStringLiteral(
            "SELECT a.SNo AS SNO, a.AccountID, a.AccountName, g.GroupID, "
            "g.GroupName, g.GroupMin, g.GroupMax, g.isContra, a.AccountOpAmt, "
            "a.AccountClAmt FROM ChartOfAccounts a "
            "JOIN AccountGroups g ON g.GroupID = a.groupID "
            "WHERE a.CoyID = ? AND (COALESCE(?, '') = '' OR upper(a.AccountName) = upper(?)) "
            "ORDER BY a.AccountID"),
        {coyID, accountName.trimmed(), accountName.trimmed()});
}

QString openReceivableAccount(AppContext& ctx, const QString& retainID, const QString& name,
                              const QString& category, const QString& address)
{
    auto accounting = ctx.openConnection(db::Database::Accounting);
    ctx.refreshServerClock();
    const Session& s = ctx.session();
    AccountOpening a;
    a.GroupID = s.defaults.Acct_Receivable;
    a.AccountName = name;
    a.AccountCat = category;
    a.AccountDesc = QStringLiteral("CLIENT");
    a.AccountAddress = address;
    a.Period = GetFinancialPeriodForDate(ctx, *accounting, s.serverDate);
    a.CoyID = s.defaults.CoyID;
    a.UserName = s.userName;
    a.ExtID = retainID;
    a.ExtIDType = QStringLiteral("RECEIVABLE");
    a.OpenedOn = s.serverDateTime;
    // The routine tells us the number it gave; asking the register for its newest account
    // instead could pick up another desk's account opened a moment later.
    const QString number = ChartOfAccounts_INSERT(*accounting, a);
    ctx.openConnection()->exec(
        QStringLiteral("update hRetainership set AcctID = ? where retainID = ?"),
        {number, retainID});
    return number;
}

db::Result accountsForPicker(db::Connection& accounting, const std::optional<QString>& groupID)
{
    if (!groupID)
        return accounting.query(QStringLiteral(
            "select SNo, AccountID, AccountName from ChartOfAccounts order by AccountName"));
    return accounting.query(QStringLiteral("select SNo, AccountID, AccountName from "
                                           "ChartOfAccounts where groupID = ? "
                                           "order by AccountName"),
                            {*groupID});
}

}  // namespace tolmar
