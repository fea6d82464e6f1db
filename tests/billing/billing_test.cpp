// Charge lines, the fee by payer class, the balance brought forward and the instant fees,
// on real databases.
#include "support/expect.h"

#include "billing/chargelines.h"
#include "billing/debt.h"
#include "billing/debtdisplay.h"
#include "core/mditolmar.h"
#include "billing/frminstantfee.h"

#include <QLabel>
#include <QListWidget>
#include <QTimer>
#include <QPushButton>
#include <QTest>

using namespace tolmar;
using namespace tolmar::billing;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

const QDate kToday(2026, 11, 23);
const QString kPno = u"001/000000101"_s;

class Billing : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        conn = ws->connect();
    }
    db::Row onlyLine()
    {
        const db::Result r = conn->query(u"SELECT * FROM billAccum"_s);
        EXPECT_EQ(r.size(), 1u);
        return r.empty() ? db::Row() : r.front();
    }
    db::Result lines() { return conn->query(u"SELECT * FROM billAccum ORDER BY SNo"_s); }
    VisitBill bill() const
    {
        return {kToday, kPno, u"001000000077"_s, u"DANBURY FLOUR MILLS"_s, u"DANG"_s};
    }
    std::unique_ptr<db::Connection> conn;
};

}  // namespace

TEST_P(Billing, EachPayerClassPaysItsOwnColumn)
{
    const std::pair<const char*, double> expected[] = {
        {"PRIVATE", 3000}, {"DEFAULT", 3000}, {"HMO", 2500},   {"NHIS", 1500},
        {"MTHLY", 2800},   {"3MTHLY", 2700},  {"6MTHLY", 2600}, {"CBN", 2400},
        {"NEPA", 2200},    {"PHCN", 2200},    {"RETAINER", 3000}, {"", 3000}};
    for (const auto& [cat, fee] : expected)
        EXPECT_DOUBLE_EQ(serviceFee(*conn, u"CONSULTATION"_s, QString::fromLatin1(cat)), fee)
            << cat;
    EXPECT_EQ(feeColumnFor(u"PHCN"_s), u"NEPA"_s);
    EXPECT_EQ(feeColumnFor(u"SOMETHING ELSE"_s), u"Private"_s);
    // A service not on the list costs nothing rather than failing; a fee reads back as the
    // bill shows it, to the kobo.
    EXPECT_DOUBLE_EQ(serviceFee(*conn, u"PHYSIOTHERAPY"_s, u"HMO"_s), 0);
    conn->exec(u"UPDATE hServicePrices SET HMO = 812.3456 WHERE service = 'ATTENDANCE'"_s);
    EXPECT_DOUBLE_EQ(serviceFee(*conn, u"ATTENDANCE"_s, u"HMO"_s), 812.35);
}

TEST_P(Billing, RegistrationLineCarriesEveryColumnOfItsKind)
{
    EXPECT_DOUBLE_EQ(getServiceFeeForReg(*conn, bill(), u"0002"_s), 1000);
    // NULL reads as blank: "attendedto=0" says the column was written, and written 0.
    expectColumns(onlyLine(),
                  {"dtDate=2026-11-23", "drgName=REGISTRATION", "Price=1000", "Qty=1",
                   "SubTotal=1000", "PNo=" + kPno, "consultID=001000000077", "billType=SERVICE",
                   "ConID=", "Category=REGISTRATION", "CoyName=DANBURY FLOUR MILLS", "billTo=DANG",
                   "attendedto=0", "suppres=0", "Capitated=NO", "isbilled=0",
                   "revType=REGISTRATION", "AppVersion="});
}

TEST_P(Billing, ARegistrationFeeMissingOnThePayerIsZeroAndStillWritten)
{
    EXPECT_DOUBLE_EQ(getServiceFeeForReg(*conn, bill(), u"NOSUCH"_s), 0);
    conn->exec(u"UPDATE hRetainership SET RegAmount = NULL WHERE retainID = '0004'"_s);
    EXPECT_DOUBLE_EQ(getServiceFeeForReg(*conn, bill(), u"0004"_s), 0);
    EXPECT_EQ(lines().size(), 2u);
}

TEST_P(Billing, CardRenewalIsFiledByTheScreenThatTakesIt)
{
    EXPECT_DOUBLE_EQ(getCardRenewFee(*conn, bill(), u"0001"_s), 1500);
    getCardRenewFee(*conn, bill(), u"0001"_s, kCategoryRegistration);
    EXPECT_EQ(rowsOf(lines(), {"drgName", "revType", "Capitated", "SubTotal", "Category"}),
              (QStringList{"CARD RENEWAL FEE|REGISTRATION|NO|1500|CARD_RENEW",
                           "CARD RENEWAL FEE|REGISTRATION|NO|1500|REGISTRATION"}));
}

TEST_P(Billing, AVisitOnTheRegistrationScreenWritesItsLinesInOrder)
{
    VisitLines v;
    v.revTypeConsult = u"OPD-CONSULT"_s;
    v.appVersion = 21;
    v.instantFeePending = true;
    v.instantFeeItem = u"MEDICAL REPORT"_s;
    v.instantFeeAmount = 5000;
    v.carryOverDebt = 1250.5;
    writeVisitLines(*conn, bill(), v);
    // The attendance itself is always 0: the visit is charged later.
    const QStringList columns{"drgName",    "Price",    "SubTotal",  "revType",
                              "AppVersion", "Category", "Capitated", "suppres",
                              "billType",   "billTo",   "Qty"};
    EXPECT_EQ(rowsOf(lines(), columns),
              (QStringList{"ATTENDANCE|0|0|OPD-CONSULT|21||||SERVICE|DANG|1",
                           "MEDICAL REPORT|5000|5000|OPD-CONSULT|21||||SERVICE|DANG|1",
                           "OPENING_BALANCE_DEBT|1250.5|1250.5|OPD-CONSULT|21||||SERVICE|DANG|1"}));
}

TEST_P(Billing, AnEditedPatientNeverGetsAnOpeningBalanceAndNoDebtWritesNone)
{
    VisitLines v;
    v.revTypeConsult = u"CONSULTATION"_s;
    v.carryOverDebt = 900;
    v.isEdit = true;
    writeVisitLines(*conn, bill(), v);
    v.isEdit = false;
    v.carryOverDebt = 0;
    writeVisitLines(*conn, bill(), v);
    EXPECT_EQ(rowsOf(lines(), {"drgName", "AppVersion"}),
              (QStringList{"ATTENDANCE|", "ATTENDANCE|"}));
}

TEST_P(Billing, AttendanceScreenLineHasNoAppVersionAndScreeningVisitsAreKept)
{
    writeAttendanceLine(*conn, bill(), u"CONSULTATION"_s);
    EXPECT_TRUE(onlyLine().isNull(u"AppVersion"));
    recordScreeningVisit(*conn, kToday, u"001000000077"_s, u"SCREENING"_s);
    expectColumns(conn->queryOne(u"SELECT * FROM hhScreeningAttnd"_s),
                  {"recDate=2026-11-23", "Remarks=SCREENING"});
}

TEST_P(Billing, ConsultationAndAntenatalLinesSetOnlyTheirOwnColumns)
{
    writeConsultationLine(*conn, QDate(2026, 11, 20), kPno, u"001000000077"_s, u"55"_s, u"PHCN"_s);
    writeAntenatalLine(*conn, u"ANTENATAL"_s, kToday, kPno, u"001000000078"_s, u"HMO"_s);
    writeAntenatalLine(*conn, u"ATTENDANCE"_s, kToday, kPno, u"001000000078"_s, u"UNKNOWN"_s);
    // PHCN pays the NEPA price, an unknown class the private one; nothing else is set.
    const QStringList columns{"drgName",    "billType", "dtDate",    "Price",   "SubTotal",
                              "ConID",      "CoyName",  "billTo",    "revType", "Category",
                              "attendedto", "isbilled", "AppVersion"};
    EXPECT_EQ(rowsOf(lines(), columns),
              (QStringList{"CONSULTATION|CONSULTATION|2026-11-20|2200|2200|55|||||||",
                           "ANTENATAL|ANTENATAL|2026-11-23|12000|12000||||||||",
                           "ATTENDANCE|ATTENDANCE|2026-11-23|1000|1000||||||||"}));
}

TEST_P(Billing, LinesMadeBeforeTheVisitAreClaimedByIt)
{
    VisitBill early = bill();
    early.consultID.clear();
    getServiceFeeForReg(*conn, early, u"0002"_s);
    getCardRenewFee(*conn, bill(), u"0002"_s);
    EXPECT_EQ(updateRegInBillAccum(*conn, kPno, u"001000000099"_s), 1);
    EXPECT_EQ(rowsOf(lines(), {"consultID"}), (QStringList{"001000000099", "001000000077"}));
}

// The balance brought forward.

namespace {

class DebtBroughtForward : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        ws->exec(
            u"INSERT INTO hPatients (PNo, psurname, CoyName) "
            "VALUES (?, 'ADE', '0001')"_s,
            {kPno});
        desk->startUp();
    }
    void addBill(const QString& client, double billed, double debtBF, double discount,
                 double paid)
    {
        ws->exec(
            u"INSERT INTO Billing (billNo, PNo, ClientID, AmountBilled, "
            "DebtBF, Discount, AmountPaid) VALUES (?, ?, ?, ?, ?, ?, ?)"_s,
            {u"B%1"_s.arg(++m_bills), kPno, client, billed, debtBF, discount, paid});
    }
    DebtOutcome compute()
    {
        return ComputeDebtBroughtForward(desk->ctx, desk->ctx.db(), kPno);
    }
    double patient(const char* column)
    {
        return ws
            ->scalar(u"SELECT %1 FROM hPatients WHERE PNo = ?"_s.arg(QLatin1String(column)), {kPno})
            .toDouble();
    }

private:
    int m_bills = 0;
};

}  // namespace

TEST_P(DebtBroughtForward, TheLatestBillsBalanceIsStoredAndShownWhenItMatters)
{
    struct Bill {
        const char* client;
        QVariant billed, debtBF, discount, paid;
    };
    const struct {
        std::vector<Bill> bills;  // oldest first
        double balance;
        const char* caption;
    } cases[] = {
        {{}, 0, ""},
        // Older bills do not count.
        {{{"0001", 9999, 0, 0, 0}, {"0001", 2000, 500, 100, 1149.5}}, 1250.5, "Debt: 1,250.50"},
        {{{"0001", 1000, 0, 0, 2250.5}}, -1250.5, "Credit: 1,250.50"},
        // The latest bill is a company's: nothing is carried.
        {{{"0001", 5000, 0, 0, 0}, {"0002", 3000, 0, 0, 0}}, 0, ""},
        {{{"0001", 100, 0, 0, 100}}, 0, ""},
        {{{"0001", 0.004, 0, 0, 0}}, 0.004, ""},  // stored, too small to show
        {{{"0001", 700, QVariant(), QVariant(), QVariant()}}, 700, "Debt: 700.00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.balance);
        ws->exec(u"DELETE FROM Billing"_s);
        ws->exec(u"UPDATE hPatients SET Debt = 77, DebtBF = 77, isRev = 0"_s);
        for (const Bill& b : c.bills)
            ws->exec(
                u"INSERT INTO Billing (billNo, PNo, ClientID, AmountBilled, "
                "DebtBF, Discount, AmountPaid) VALUES (?, ?, ?, ?, ?, ?, ?)"_s,
                {u"B%1"_s.arg(&b - c.bills.data()), kPno, QString::fromLatin1(b.client), b.billed,
                 b.debtBF, b.discount, b.paid});
        const DebtOutcome d = compute();
        EXPECT_DOUBLE_EQ(d.balance, c.balance);
        EXPECT_EQ(d.caption, QString::fromLatin1(c.caption));
        EXPECT_EQ(d.shown(), *c.caption != 0);
        EXPECT_EQ(desk->ctx.session().debtShown, *c.caption != 0);
        EXPECT_DOUBLE_EQ(desk->ctx.session().currentBalance, c.balance);
        EXPECT_DOUBLE_EQ(patient("Debt"), c.balance);
        EXPECT_DOUBLE_EQ(patient("DebtBF"), c.balance);
        EXPECT_EQ(patient("isRev"), 1);
    }
}

TEST_P(DebtBroughtForward, TheMainWindowFlashesADebtAndGoesQuietForNone)
{
    MdiTolmar window(desk->ctx);
    auto* caption = window.findChild<QLabel*>(u"lblDebt"_s);
    auto* timer2 = window.findChild<QTimer*>(u"Timer2"_s);
    ASSERT_TRUE(caption && timer2);

    addBill(u"0001"_s, 1000, 0, 0, 2250.5);
    showDebtOnMainWindow(desk->ctx, compute());
    EXPECT_EQ(caption->text(), u"Credit: 1,250.50"_s);
    EXPECT_TRUE(timer2->isActive());
    EXPECT_TRUE(desk->ctx.session().debtShown);

    addBill(u"0002"_s, 400, 0, 0, 0);
    showDebtOnMainWindow(desk->ctx, compute());
    // Quiet reads as the window opened: the caption, readable, not a bar of one colour.
    EXPECT_EQ(caption->text(), u"Debt:"_s);
    EXPECT_NE(caption->palette().color(QPalette::WindowText), QColor(0x80, 0x80, 0xFF));
    EXPECT_FALSE(timer2->isActive());
    EXPECT_FALSE(desk->ctx.session().debtShown);

    addBill(u"0001"_s, 300, 0, 0, 0);
    showDebtOnMainWindow(desk->ctx, compute());
    clearDebtDisplay(desk->ctx);  // the desk screen was cleared
    EXPECT_FALSE(timer2->isActive());
    EXPECT_DOUBLE_EQ(desk->ctx.session().currentBalance, 0);
}

// The instant fees.

namespace {

class InstantFee : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
        screen = std::make_unique<frmInstantFee>(desk->ctx);
        list = screen->findChild<QListWidget*>(u"LstDate"_s);
        ASSERT_NE(list, nullptr);
    }
    void process()
    {
        QTest::mouseClick(screen->findChild<QPushButton*>(u"cmdProcess"_s), Qt::LeftButton);
    }
    std::unique_ptr<frmInstantFee> screen;
    QListWidget* list = nullptr;
};

}  // namespace

TEST_P(InstantFee, ListsTheDesksItemsAndTakesOneTick)
{
    EXPECT_EQ(screen->windowTitle(), u"Fees"_s);
    ASSERT_EQ(list->count(), 3);  // the radiology item is not the desk's
    EXPECT_EQ(list->item(0)->text(), u"CARD REPRINT   [500]"_s);
    EXPECT_EQ(list->item(2)->text(), u"MEDICAL REPORT   [5000]"_s);

    list->item(2)->setCheckState(Qt::Checked);
    list->item(0)->setCheckState(Qt::Checked);
    EXPECT_EQ(desk->prompter.lastText(), u"Only one Appointment at a time"_s);
    EXPECT_EQ(list->item(0)->checkState(), Qt::Unchecked);

    process();
    EXPECT_EQ(desk->prompter.lastText(), u"Item will be added to Bill"_s);
    const Session& s = desk->ctx.session();
    EXPECT_TRUE(s.instantFeePending);
    EXPECT_EQ(s.instantFeeItem, u"MEDICAL REPORT"_s);
    EXPECT_DOUBLE_EQ(s.pendingFee, 5000);
    EXPECT_EQ(screen->result(), QDialog::Accepted);
}

TEST_P(InstantFee, SavingWithNothingTickedSaysSoButAddsNothing)
{
    process();
    EXPECT_EQ(desk->prompter.lastText(), u"Item will be added to Bill"_s);
    EXPECT_FALSE(desk->ctx.session().instantFeePending);
}

TOLMAR_INSTANTIATE_BACKENDS(Billing);
TOLMAR_INSTANTIATE_BACKENDS(DebtBroughtForward);
TOLMAR_INSTANTIATE_BACKENDS(InstantFee);
