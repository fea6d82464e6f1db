// The ledger's two routines: how accounts are numbered and refused, and what the balance
// listing gives.
#include "support/workspace.h"

#include "billing/chartofaccounts.h"

using namespace tolmar;
using namespace tolmar::test;

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
        a.CoyID = QStringLiteral("0001");
        a.Period = QStringLiteral("NOV 2026");
        return a;
    }
    int accounts()
    {
        return acc->scalar(QStringLiteral("SELECT count(*) FROM ChartOfAccountMaster")).toInt();
    }
    std::unique_ptr<db::Connection> acc;
};

TEST_P(Ledger, TheLedgerNumbersWithinTheGroupOrTakesTheNumberGiven)
{
    EXPECT_EQ(
        ChartOfAccounts_INSERT(*acc, opening(QStringLiteral("2100"), QStringLiteral("MEDIPHARM"))),
        QStringLiteral("21000001"));
    EXPECT_EQ(
        ChartOfAccounts_INSERT(*acc, opening(QStringLiteral("2100"), QStringLiteral("EMZOR"))),
        QStringLiteral("21000002"));
    AccountOpening given = opening(QStringLiteral("2100"), QStringLiteral("FIDSON"));
    given.AccountNo = QStringLiteral("21005000");
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, given), QStringLiteral("21005000"));
    EXPECT_EQ(ChartOfAccounts_INSERT(
                  *acc, opening(QStringLiteral("2100"), QStringLiteral("MAY & BAKER"))),
              QStringLiteral("21005001"));
    EXPECT_EQ(
        acc->scalar(QStringLiteral("SELECT groupID FROM ChartOfAccounts WHERE AccountName = ?"),
                    {QStringLiteral("MAY & BAKER")})
            .toString(),
        QStringLiteral("2100"));
}

TEST_P(Ledger, RefusedOpeningsWriteNothing)
{
    const int before = accounts();
    AccountOpening taken = opening(QStringLiteral("1200"), QStringLiteral("TWICE"));
    taken.AccountNo = QStringLiteral("12000001");
    EXPECT_THROW(ChartOfAccounts_INSERT(*acc, taken), db::DbError);
    EXPECT_THROW(
        ChartOfAccounts_INSERT(*acc, opening(QStringLiteral("9999"), QStringLiteral("X"))),
        std::runtime_error);
    acc->exec(QStringLiteral("INSERT INTO AccountGroups (GroupID, GroupName, GroupMin, GroupMax) "
                             "VALUES (?, ?, ?, ?)"),
              {QStringLiteral("3000"), QStringLiteral("TINY"), 30000001, 30000001});
    EXPECT_EQ(ChartOfAccounts_INSERT(*acc, opening(QStringLiteral("3000"), QStringLiteral("ONE"))),
              QStringLiteral("30000001"));
    EXPECT_THROW(
        ChartOfAccounts_INSERT(*acc, opening(QStringLiteral("3000"), QStringLiteral("TWO"))),
        std::runtime_error);
    EXPECT_EQ(accounts(), before + 1);
    EXPECT_EQ(acc->scalar(QStringLiteral("SELECT count(*) FROM ChartOfAccounts")).toInt(),
              before + 1);
}

TEST_P(Ledger, BalancesByCompanyAndAccountName)
{
    const db::Result all =
        GetAccountsInfoByCash(*acc, QStringLiteral("0001"), QStringLiteral("NOV 2026"), QString());
    EXPECT_EQ(all.size(), 9u);
    const db::Result bank =
        GetAccountsInfoByCash(*acc, QStringLiteral("0001"), QStringLiteral("NOV 2026"),
                              QStringLiteral("zenith bank current account"));
    ASSERT_EQ(bank.size(), 1u);
    const db::Row& r = bank.front();
    EXPECT_EQ(r.text(u"AccountID"), QStringLiteral("11000002"));
    EXPECT_EQ(r.text(u"GroupID"), QStringLiteral("1100"));
    EXPECT_EQ(r.toLongLong(u"GroupMin"), 11000001);
    EXPECT_EQ(r.toLongLong(u"GroupMax"), 11009999);
    EXPECT_EQ(r.toInt(u"isContra"), 0);
    EXPECT_DOUBLE_EQ(r.toDouble(u"AccountClAmt"), 2500000);
    EXPECT_TRUE(r.has(u"SNO"));
    EXPECT_THROW(
        GetAccountsInfoByCash(*acc, QStringLiteral("0001"), QStringLiteral("NOV 1999"), QString()),
        std::runtime_error);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(Ledger);
