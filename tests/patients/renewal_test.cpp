// Renewing a card on frmRenew as each opener hands it over, and what the renewal leaves in
// the patient row, the card's history and the session's hand-back.
#include "registration/registrationfixture.h"

#include "core/formats.h"
#include "patients/frmrenew.h"

using namespace tolmar;
using namespace tolmar::test;

namespace {

const QString kPno = QStringLiteral("001/000000042");

class Renewal : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
    }
};

TEST_P(Renewal, RenewsFromTheRenewalDayAndHandsTheDateBackToItsOpener)
{
    const QDate t = kToday;
    const QString confirm = QStringLiteral("Are you sure to Renew O'BRIEN ADA");
    const QString congrats =
        QStringLiteral("Congrats!!! Your Card(s) has been renewed for another year");
    struct Case {
        const char* what;
        QString tag;
        QString payer;  // the PRIVATE default is 0001
        QVariant expiry;
        int expired;
        QDate regDate;
        int pickerDays;     // the renewal day, counted from today
        bool yes;           // to the question
        bool historyFails;  // the card's history row is refused
        QStringList said;   // the messages, in order
        int cardYear;       // 0: no history row
    };
    const std::vector<Case> cases{
        {"REG: a card running out today counts", "REG", "0001", t, 0, QDate(2025, 11, 23), 0,
         true, false, {confirm, congrats}, 2026},
        {"RECORDS: a card that ran out long ago gets a year from the renewal day", "RECORDS",
         "0001", QDate(2025, 3, 1), 1, QDate(2024, 3, 1), 3, true, false, {confirm, congrats},
         2025},
        {"menu: declared expired without a date: the year of registration", "", "0001",
         QVariant(), 1, QDate(2019, 5, 2), 0, true, false, {confirm, congrats}, 2019},
        {"No keeps the card as it was", "REG", "0001", QDate(2026, 1, 9), 1, QDate(2025, 1, 9),
         0, false, false, {confirm}, 0},
        {"the history refused: the new date stands", "RECORDS", "0001", QDate(2026, 2, 1), 1,
         QDate(2025, 2, 1), 0, true, true, {confirm, congrats, "hPatientsOldCardNoHist refused"}, 0},
        {"an HMO patient is never listed", "REG", "0002", QDate(2025, 1, 1), 1,
         QDate(2024, 1, 1), 0, true, false, {"Invalid patient System No"}, 0},
        {"a private card not yet due is not listed", "REG", "0001", QDate(2099, 1, 1), 0,
         QDate(2024, 1, 1), 0, true, false, {"Invalid patient System No"}, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ws->exec(QStringLiteral("DELETE FROM hPatients"));
        ws->exec(QStringLiteral("DELETE FROM hPatientsOldCardNoHist"));
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, oldPno, psurname, pfirstName, "
                                "CoyName, regDate, expirydate, expired) VALUES (?, 'C/26/042', "
                                "'O''BRIEN', 'ADA', ?, ?, ?, ?)"),
                 {kPno, c.payer, c.regDate, c.expiry, c.expired});
        if (c.historyFails)
            refuseRows(*ws, QStringLiteral("hPatientsOldCardNoHist"), true);
        Session& s = desk->ctx.session();
        s.CardRenewedFlag = false;
        s.renewedExpiryDate = QDate();
        desk->prompter.clear();

        frmRenew screen(desk->ctx, {{"name", "O'BRIEN ADA"}, {"PNo", kPno}, {"tag", c.tag}});
        const bool listed = c.said.first() == confirm;
        EXPECT_EQ(edit(&screen, "txtNo")->text(), listed ? kPno : QString());
        EXPECT_EQ(edit(&screen, "txtExpiry")->text(),
                  listed ? fmt::shortDate(c.expiry.toDate()) : QString());
        EXPECT_EQ(rowCount(child<QTableView>(&screen, "grdData")), listed ? 1 : 0);
        if (listed && c.expiry.isValid())
            EXPECT_EQ(screen.numval(), c.expiry.toDate().daysTo(QDate::currentDate()));
        const QDate day = t.addDays(c.pickerDays);
        dateBox(&screen, "DTPicker1")->setDate(day);
        EXPECT_EQ(dateBox(&screen, "dtExpDate")->date(), day.addYears(1));

        c.yes ? desk->prompter.answerYes() : desk->prompter.answerNo();
        click(&screen, "cmdRenew");
        QStringList said;
        for (const auto& m : desk->prompter.messages())
            said << m.text;
        ASSERT_EQ(said.size(), c.said.size()) << said.join(" / ").toStdString();
        for (int i = 0; i < said.size(); ++i)
            EXPECT_TRUE(said[i].contains(c.said[i])) << said[i].toStdString();

        const bool renewed = c.said.contains(congrats);
        const auto p = ws->connect()->queryOne(
            QStringLiteral("SELECT expirydate, expired, oldPno FROM hPatients"));
        EXPECT_EQ(p->date(u"expirydate"), renewed ? day.addYears(1) : c.expiry.toDate());
        EXPECT_EQ(p->toInt(u"expired"), renewed ? 0 : c.expired);
        EXPECT_EQ(p->text(u"oldPno"), QStringLiteral("C/26/042"));
        EXPECT_EQ(ws->scalar(QStringLiteral("SELECT MAX(CardYear) FROM hPatientsOldCardNoHist "
                                            "WHERE OldCardNo = 'C/26/042'"))
                      .toInt(),
                  c.cardYear);
        const bool handedBack = renewed && !c.tag.isEmpty();
        EXPECT_EQ(s.CardRenewedFlag, handedBack);
        EXPECT_EQ(s.renewedExpiryDate, handedBack ? day.addYears(1) : QDate());
        if (c.historyFails)
            refuseRows(*ws, QStringLiteral("hPatientsOldCardNoHist"), false);
    }
}

TOLMAR_INSTANTIATE_BACKENDS(Renewal);

}  // namespace
