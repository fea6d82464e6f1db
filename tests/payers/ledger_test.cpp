// The ledger's two routines: how accounts are numbered and refused, and what the balance
// listing gives.
#include "support/expect.h"

#include "billing/chartofaccounts.h"

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class Ledger : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        acc = ws->connect(db::Database::Accounting);
    }
    AccountOpening opening(const QString& group, const QString& name)
    {
        AccountOpening a;
        a.GroupID = group;
        a.AccountName = name;
        a.CoyID = u"0001"_s;
        a.Period = u"NOV 2026"_s;
        return a;
    }
    int accounts() { return acc->scalar(u"SELECT count(*) FROM ChartOfAccountMaster"_s).toInt(); }
    std::unique_ptr<db::Connection> acc;
};

TEST_P(Ledger, TheLedgerNumbersWithinTheGroupOrTakesTheNumberGiven)
{
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, opening(u"2100"_s, u"MEDIPHARM"_s)), u"21000001"_s);
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, opening(u"2100"_s, u"EMZOR"_s)), u"21000002"_s);
    AccountOpening given = opening(u"2100"_s, u"FIDSON"_s);
    given.AccountNo = u"21005000"_s;
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, given), u"21005000"_s);
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, opening(u"2100"_s, u"MAY & BAKER"_s)), u"21005001"_s);
    EXPECT_EQ(acc->scalar(u"SELECT groupID FROM ChartOfAccounts WHERE AccountName = ?"_s,
                          {u"MAY & BAKER"_s})
                  .toString(),
              u"2100"_s);
}

TEST_P(Ledger, RefusedOpeningsWriteNothing)
{
    const int before = accounts();
    AccountOpening taken = opening(u"1200"_s, u"TWICE"_s);
    taken.AccountNo = u"12000001"_s;
    EXPECT_THROW(ChartOfAccounts_INSERT(*acc, taken), db::DbError);
    EXPECT_THROW(ChartOfAccounts_INSERT(*acc, opening(u"9999"_s, u"X"_s)), std::runtime_error);
    acc->exec(
        u"INSERT INTO AccountGroups (GroupID, GroupName, GroupMin, GroupMax) "
        "VALUES (?, ?, ?, ?)"_s,
        {u"3000"_s, u"TINY"_s, 30000001, 30000001});
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, opening(u"3000"_s, u"ONE"_s)), u"30000001"_s);
    EXPECT_THROW(ChartOfAccounts_INSERT(*acc, opening(u"3000"_s, u"TWO"_s)), std::runtime_error);
    EXPECT_EQ(accounts(), before + 1);
    EXPECT_EQ(acc->scalar(u"SELECT count(*) FROM ChartOfAccounts"_s).toInt(), before + 1);
}

TEST_P(Ledger, BalancesByCompanyAndAccountName)
{
    const db::Result all = GetAccountsInfoByCash(*acc, u"0001"_s, u"NOV 2026"_s, QString());
    EXPECT_EQ(all.size(), 9u);
    const db::Result bank =
        GetAccountsInfoByCash(*acc, u"0001"_s, u"NOV 2026"_s, u"zenith bank current account"_s);
    ASSERT_EQ(bank.size(), 1u);
    expectColumns(bank.front(), {"AccountID=11000002", "GroupID=1100", "GroupMin=11000001",
                                 "GroupMax=11009999", "isContra=0", "AccountClAmt=2500000"});
    EXPECT_TRUE(bank.front().has(u"SNO"));
    EXPECT_THROW(GetAccountsInfoByCash(*acc, u"0001"_s, u"NOV 1999"_s, QString()),
                 std::runtime_error);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(Ledger);
