// Charge lines, the fee by payer class, the balance brought forward and the instant fees,
// on real databases.
#include "support/workspace.h"

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

namespace {

const QDate kToday(2026, 11, 23);
const QString kPno = QStringLiteral("001/000000101");

class Billing : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        conn = ws->connect();
    }
    db::Row onlyLine()
    {
        const db::Result r = conn->query(QStringLiteral("SELECT * FROM billAccum"));
        EXPECT_EQ(r.size(), 1u);
        return r.empty() ? db::Row() : r.front();
    }
    db::Result lines()
    {
        return conn->query(QStringLiteral("SELECT * FROM billAccum ORDER BY SNo"));
    }
    VisitBill bill() const
    {
        return {kToday, kPno, QStringLiteral("001000000077"), QStringLiteral("DANBURY FLOUR MILLS"),
                QStringLiteral("DANG")};
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
        EXPECT_DOUBLE_EQ(
            serviceFee(*conn, QStringLiteral("CONSULTATION"), QString::fromLatin1(cat)), fee)
            << cat;
    EXPECT_EQ(feeColumnFor(QStringLiteral("PHCN")), QStringLiteral("NEPA"));
    EXPECT_EQ(feeColumnFor(QStringLiteral("SOMETHING ELSE")), QStringLiteral("Private"));
    // A service not on the list costs nothing rather than failing.
    EXPECT_DOUBLE_EQ(serviceFee(*conn, QStringLiteral("PHYSIOTHERAPY"), QStringLiteral("HMO")), 0);
}

TEST_P(Billing, FeesReadBackAsTheBillShowsThem)
{
    conn->exec(QStringLiteral(
        "UPDATE hServicePrices SET HMO = 812.3456 WHERE service = 'ATTENDANCE'"));
    EXPECT_DOUBLE_EQ(serviceFee(*conn, QStringLiteral("ATTENDANCE"), QStringLiteral("HMO")),
                     812.35);
}

TEST_P(Billing, RegistrationLineCarriesEveryColumnOfItsKind)
{
    EXPECT_DOUBLE_EQ(getServiceFeeForReg(*conn, bill(), QStringLiteral("0002")), 1000);
    const db::Row l = onlyLine();
    EXPECT_EQ(l.date(u"dtDate"), kToday);
    EXPECT_EQ(l.text(u"drgName"), QStringLiteral("REGISTRATION"));
    EXPECT_DOUBLE_EQ(l.toDouble(u"Price"), 1000);
    EXPECT_DOUBLE_EQ(l.toDouble(u"Qty"), 1);
    EXPECT_DOUBLE_EQ(l.toDouble(u"SubTotal"), 1000);
    EXPECT_EQ(l.text(u"PNo"), kPno);
    EXPECT_EQ(l.text(u"consultID"), QStringLiteral("001000000077"));
    EXPECT_EQ(l.text(u"billType"), QStringLiteral("SERVICE"));
    EXPECT_TRUE(l.isNull(u"ConID"));
    EXPECT_EQ(l.text(u"Category"), QStringLiteral("REGISTRATION"));
    EXPECT_EQ(l.text(u"CoyName"), QStringLiteral("DANBURY FLOUR MILLS"));
    EXPECT_EQ(l.text(u"billTo"), QStringLiteral("DANG"));
    EXPECT_FALSE(l.isNull(u"attendedto"));
    EXPECT_EQ(l.toInt(u"attendedto"), 0);
    EXPECT_EQ(l.toInt(u"suppres"), 0);
    EXPECT_FALSE(l.isNull(u"suppres"));
    EXPECT_EQ(l.text(u"Capitated"), QStringLiteral("NO"));
    EXPECT_EQ(l.toInt(u"isbilled"), 0);
    EXPECT_EQ(l.text(u"revType"), QStringLiteral("REGISTRATION"));
    EXPECT_TRUE(l.isNull(u"AppVersion"));
}

TEST_P(Billing, ARegistrationFeeMissingOnThePayerIsZeroAndStillWritten)
{
    EXPECT_DOUBLE_EQ(getServiceFeeForReg(*conn, bill(), QStringLiteral("NOSUCH")), 0);
    conn->exec(QStringLiteral("UPDATE hRetainership SET RegAmount = NULL WHERE retainID = '0004'"));
    EXPECT_DOUBLE_EQ(getServiceFeeForReg(*conn, bill(), QStringLiteral("0004")), 0);
    EXPECT_EQ(lines().size(), 2u);
}

TEST_P(Billing, CardRenewalIsFiledByTheScreenThatTakesIt)
{
    EXPECT_DOUBLE_EQ(getCardRenewFee(*conn, bill(), QStringLiteral("0001")), 1500);
    getCardRenewFee(*conn, bill(), QStringLiteral("0001"), kCategoryRegistration);
    const db::Result r = lines();
    ASSERT_EQ(r.size(), 2u);
    for (const db::Row& l : r.rows) {
        EXPECT_EQ(l.text(u"drgName"), QStringLiteral("CARD RENEWAL FEE"));
        EXPECT_EQ(l.text(u"revType"), QStringLiteral("REGISTRATION"));
        EXPECT_EQ(l.text(u"Capitated"), QStringLiteral("NO"));
        EXPECT_DOUBLE_EQ(l.toDouble(u"SubTotal"), 1500);
    }
    EXPECT_EQ(r.rows[0].text(u"Category"), QStringLiteral("CARD_RENEW"));
    EXPECT_EQ(r.rows[1].text(u"Category"), QStringLiteral("REGISTRATION"));
}

TEST_P(Billing, AVisitOnTheRegistrationScreenWritesItsLinesInOrder)
{
    VisitLines v;
    v.revTypeConsult = QStringLiteral("OPD-CONSULT");
    v.appVersion = 21;
    v.instantFeePending = true;
    v.instantFeeItem = QStringLiteral("MEDICAL REPORT");
    v.instantFeeAmount = 5000;
    v.carryOverDebt = 1250.5;
    writeVisitLines(*conn, bill(), v);
    const db::Result r = lines();
    ASSERT_EQ(r.size(), 3u);
    const db::Row& att = r.rows[0];
    EXPECT_EQ(att.text(u"drgName"), QStringLiteral("ATTENDANCE"));
    EXPECT_DOUBLE_EQ(att.toDouble(u"Price"), 0);  // always 0: the visit is charged later
    EXPECT_EQ(att.text(u"revType"), QStringLiteral("OPD-CONSULT"));
    EXPECT_EQ(att.toInt(u"AppVersion"), 21);
    EXPECT_TRUE(att.isNull(u"Category"));
    EXPECT_TRUE(att.isNull(u"Capitated"));
    EXPECT_TRUE(att.isNull(u"suppres"));
    EXPECT_EQ(r.rows[1].text(u"drgName"), QStringLiteral("MEDICAL REPORT"));
    EXPECT_DOUBLE_EQ(r.rows[1].toDouble(u"SubTotal"), 5000);
    EXPECT_EQ(r.rows[1].toInt(u"AppVersion"), 21);
    EXPECT_EQ(r.rows[2].text(u"drgName"), QStringLiteral("OPENING_BALANCE_DEBT"));
    EXPECT_DOUBLE_EQ(r.rows[2].toDouble(u"Price"), 1250.5);
    for (const db::Row& l : r.rows) {
        EXPECT_EQ(l.text(u"billType"), QStringLiteral("SERVICE"));
        EXPECT_EQ(l.text(u"billTo"), QStringLiteral("DANG"));
        EXPECT_DOUBLE_EQ(l.toDouble(u"Qty"), 1);
    }
}

TEST_P(Billing, AnEditedPatientNeverGetsAnOpeningBalanceAndNoDebtWritesNone)
{
    VisitLines v;
    v.revTypeConsult = QStringLiteral("CONSULTATION");
    v.carryOverDebt = 900;
    v.isEdit = true;
    writeVisitLines(*conn, bill(), v);
    v.isEdit = false;
    v.carryOverDebt = 0;
    writeVisitLines(*conn, bill(), v);
    const db::Result r = lines();
    ASSERT_EQ(r.size(), 2u);
    for (const db::Row& l : r.rows)
        EXPECT_EQ(l.text(u"drgName"), QStringLiteral("ATTENDANCE"));
    EXPECT_TRUE(r.rows[0].isNull(u"AppVersion"));
}

TEST_P(Billing, AttendanceScreenLineHasNoAppVersionAndScreeningVisitsAreKept)
{
    writeAttendanceLine(*conn, bill(), QStringLiteral("CONSULTATION"));
    EXPECT_TRUE(onlyLine().isNull(u"AppVersion"));
    recordScreeningVisit(*conn, kToday, QStringLiteral("001000000077"),
                         QStringLiteral("SCREENING"));
    const auto row = conn->queryOne(QStringLiteral("SELECT * FROM hhScreeningAttnd"));
    ASSERT_TRUE(row);
    EXPECT_EQ(row->date(u"recDate"), kToday);
    EXPECT_EQ(row->text(u"Remarks"), QStringLiteral("SCREENING"));
}

TEST_P(Billing, ConsultationAndAntenatalLinesSetOnlyTheirOwnColumns)
{
    writeConsultationLine(*conn, QDate(2026, 11, 20), kPno, QStringLiteral("001000000077"),
                          QStringLiteral("55"), QStringLiteral("PHCN"));
    writeAntenatalLine(*conn, QStringLiteral("ANTENATAL"), kToday, kPno,
                       QStringLiteral("001000000078"), QStringLiteral("HMO"));
    writeAntenatalLine(*conn, QStringLiteral("ATTENDANCE"), kToday, kPno,
                       QStringLiteral("001000000078"), QStringLiteral("UNKNOWN"));
    const db::Result r = lines();
    ASSERT_EQ(r.size(), 3u);
    const db::Row& con = r.rows[0];
    EXPECT_EQ(con.text(u"drgName"), QStringLiteral("CONSULTATION"));
    EXPECT_EQ(con.text(u"billType"), QStringLiteral("CONSULTATION"));
    EXPECT_EQ(con.date(u"dtDate"), QDate(2026, 11, 20));
    EXPECT_DOUBLE_EQ(con.toDouble(u"Price"), 2200);  // PHCN pays the NEPA price
    EXPECT_EQ(con.text(u"ConID"), QStringLiteral("55"));
    EXPECT_EQ(r.rows[1].text(u"billType"), QStringLiteral("ANTENATAL"));
    EXPECT_DOUBLE_EQ(r.rows[1].toDouble(u"SubTotal"), 12000);
    EXPECT_EQ(r.rows[2].text(u"billType"), QStringLiteral("ATTENDANCE"));
    EXPECT_DOUBLE_EQ(r.rows[2].toDouble(u"Price"), 1000);  // unknown pays Private
    for (const db::Row& l : r.rows)
        for (const char* unset : {"CoyName", "billTo", "revType", "Category", "attendedto",
                                  "isbilled", "AppVersion"})
            EXPECT_TRUE(l.isNull(QString::fromLatin1(unset))) << unset;
}

TEST_P(Billing, LinesMadeBeforeTheVisitAreClaimedByIt)
{
    VisitBill early = bill();
    early.consultID.clear();
    getServiceFeeForReg(*conn, early, QStringLiteral("0002"));
    getCardRenewFee(*conn, bill(), QStringLiteral("0002"));
    EXPECT_EQ(updateRegInBillAccum(*conn, kPno, QStringLiteral("001000000099")), 1);
    const db::Result r = lines();
    EXPECT_EQ(r.rows[0].text(u"consultID"), QStringLiteral("001000000099"));
    EXPECT_EQ(r.rows[1].text(u"consultID"), QStringLiteral("001000000077"));
}

// The balance brought forward.

namespace {

class DebtBroughtForward : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, CoyName) "
                                "VALUES (?, 'ADE', '0001')"),
                 {kPno});
        desk->startUp();
    }
    void addBill(const QString& client, double billed, double debtBF, double discount,
                 double paid)
    {
        ws->exec(QStringLiteral("INSERT INTO Billing (billNo, PNo, ClientID, AmountBilled, "
                                "DebtBF, Discount, AmountPaid) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                 {QStringLiteral("B%1").arg(++m_bills), kPno, client, billed, debtBF, discount,
                  paid});
    }
    DebtOutcome compute()
    {
        return ComputeDebtBroughtForward(desk->ctx, desk->ctx.db(), kPno);
    }
    double patient(const char* column)
    {
        return ws->scalar(QStringLiteral("SELECT %1 FROM hPatients WHERE PNo = ?")
                              .arg(QLatin1String(column)),
                          {kPno})
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
        ws->exec(QStringLiteral("DELETE FROM Billing"));
        ws->exec(QStringLiteral("UPDATE hPatients SET Debt = 77, DebtBF = 77, isRev = 0"));
        for (const Bill& b : c.bills)
            ws->exec(QStringLiteral("INSERT INTO Billing (billNo, PNo, ClientID, AmountBilled, "
                                    "DebtBF, Discount, AmountPaid) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                     {QStringLiteral("B%1").arg(&b - c.bills.data()), kPno,
                      QString::fromLatin1(b.client), b.billed, b.debtBF, b.discount, b.paid});
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
    auto* caption = window.findChild<QLabel*>(QStringLiteral("lblDebt"));
    auto* timer2 = window.findChild<QTimer*>(QStringLiteral("Timer2"));
    ASSERT_TRUE(caption && timer2);

    addBill(QStringLiteral("0001"), 1000, 0, 0, 2250.5);
    showDebtOnMainWindow(desk->ctx, compute());
    EXPECT_EQ(caption->text(), QStringLiteral("Credit: 1,250.50"));
    EXPECT_TRUE(timer2->isActive());
    EXPECT_TRUE(desk->ctx.session().debtShown);

    addBill(QStringLiteral("0002"), 400, 0, 0, 0);
    showDebtOnMainWindow(desk->ctx, compute());
    // Quiet reads as the window opened: the caption, readable, not a bar of one colour.
    EXPECT_EQ(caption->text(), QStringLiteral("Debt:"));
    EXPECT_NE(caption->palette().color(QPalette::WindowText), QColor(0x80, 0x80, 0xFF));
    EXPECT_FALSE(timer2->isActive());
    EXPECT_FALSE(desk->ctx.session().debtShown);

    addBill(QStringLiteral("0001"), 300, 0, 0, 0);
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
        list = screen->findChild<QListWidget*>(QStringLiteral("LstDate"));
        ASSERT_NE(list, nullptr);
    }
    void process()
    {
        QTest::mouseClick(screen->findChild<QPushButton*>(QStringLiteral("cmdProcess")),
                          Qt::LeftButton);
    }
    std::unique_ptr<frmInstantFee> screen;
    QListWidget* list = nullptr;
};

}  // namespace

TEST_P(InstantFee, ListsTheDesksItemsAndTakesOneTick)
{
    EXPECT_EQ(screen->windowTitle(), QStringLiteral("Fees"));
    ASSERT_EQ(list->count(), 3);  // the radiology item is not the desk's
    EXPECT_EQ(list->item(0)->text(), QStringLiteral("CARD REPRINT   [500]"));
    EXPECT_EQ(list->item(2)->text(), QStringLiteral("MEDICAL REPORT   [5000]"));

    list->item(2)->setCheckState(Qt::Checked);
    list->item(0)->setCheckState(Qt::Checked);
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Only one Appointment at a time"));
    EXPECT_EQ(list->item(0)->checkState(), Qt::Unchecked);

    process();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Item will be added to Bill"));
    const Session& s = desk->ctx.session();
    EXPECT_TRUE(s.instantFeePending);
    EXPECT_EQ(s.instantFeeItem, QStringLiteral("MEDICAL REPORT"));
    EXPECT_DOUBLE_EQ(s.pendingFee, 5000);
    EXPECT_EQ(screen->result(), QDialog::Accepted);
}

TEST_P(InstantFee, SavingWithNothingTickedSaysSoButAddsNothing)
{
    process();
    EXPECT_EQ(desk->prompter.lastText(), QStringLiteral("Item will be added to Bill"));
    EXPECT_FALSE(desk->ctx.session().instantFeePending);
}

TOLMAR_INSTANTIATE_BACKENDS(Billing);
TOLMAR_INSTANTIATE_BACKENDS(DebtBroughtForward);
TOLMAR_INSTANTIATE_BACKENDS(InstantFee);
