#pragma once
// The ledger's side of a new client: the chart of accounts on the Accounting database, the
// two routines the accounting module offers (opening an account, listing accounts with
// their balances), and the opening of a client's receivable account.
//
// The ledger's rules, kept deliberately plain:
// - An account belongs to one group of AccountGroups. Asked for the number "XXXXXXX", the
//   ledger numbers it itself: one above the highest number of the group, from GroupMin,
//   never beyond GroupMax. Any other number is taken as given; a number already in use is
//   refused by the database.
// - Every account opened gets a row in ChartOfAccountMaster (the register, in the order
//   opened) and its row in ChartOfAccounts, in one transaction.
// - The front desk posts nothing, so the balances are what the account was opened with.

#include "platform/db.h"

#include <QDateTime>
#include <QString>

#include <optional>

namespace tolmar {

class AppContext;

// The number that asks the ledger to number a new account itself.
inline const QString kLedgerAssignsNumber = QStringLiteral("XXXXXXX");

// The parameters of ChartOfAccounts_INSERT, in the routine's order.
struct AccountOpening {
    QString AccountNo = kLedgerAssignsNumber;
    QString GroupID;
    QString AccountName;
    double AccountOpAmt = 0;
    double AccountClAmt = 0;
    QString AccountCat;
    QString AccountDesc;
    QString AccountAddress;
    QString AccountSalesTaxNo;
    QString Period;
    QString CoyID;
    QString UserName;
    QString ExtID;
    QString ExtIDType;
    QDateTime OpenedOn;  // the register's date of opening (the server's clock)
};

// Opens the account on the Accounting connection; returns its number. Throws on an
// unknown or full group and on a number already in use; nothing is written then.
QString ChartOfAccounts_INSERT(db::Connection& accounting, const AccountOpening& a);

// The accounts of a company with their group's bounds and balances: SNO, AccountID,
// AccountName, GroupID, GroupName, GroupMin, GroupMax, isContra, AccountOpAmt,
// AccountClAmt. A blank account name gives every account. The period must be one of the
// company's periods (the balances don't differ by period in this ledger).
db::Result GetAccountsInfoByCash(db::Connection& accounting, const QString& coyID,
                                 const QString& period, const QString& accountName);

// A new client's receivable account: the period of the server's date, the account in the
// group of Acct_Receivable, and its number written to the client's AcctID. Returns the
// number. Errors (a refused period, the ledger's refusal) reach the caller; the client
// row is then left as it was.
// The accounts a picker offers, by name: those of one group, or every account.
db::Result accountsForPicker(db::Connection& accounting, const std::optional<QString>& groupID);

QString openReceivableAccount(AppContext& ctx, const QString& retainID, const QString& name,
                              const QString& category, const QString& address);

}  // namespace tolmar
