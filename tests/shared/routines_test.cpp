// The small shared routines: age text, amounts in words, the financial period check, the
// questions about a patient or payer, and the shared diagnosis list.
#include "support/workspace.h"

#include "core/age.h"
#include "core/diagnoses.h"
#include "core/financialperiod.h"
#include "core/numbertowords.h"
#include "core/patientinfo.h"
#include "core/screenhost.h"

#include <QDialog>
#include <QTimer>

using namespace tolmar;
using namespace tolmar::test;

namespace {

// --- age text ---------------------------------------------------------------------------

TEST(AgeText, CountsYearsMonthsAndDays)
{
    EXPECT_EQ(ageText(QDate(1992, 9, 12), QDate(2026, 11, 23)),
              QStringLiteral("34 yrs, 2 mths and 11 days"));
    EXPECT_EQ(ageText(QDate(2025, 10, 22), QDate(2026, 11, 23)),
              QStringLiteral("1 yr, 1 mth and 1 day"));
    // Every part is there, also at 0.
    EXPECT_EQ(ageText(QDate(2026, 11, 23), QDate(2026, 11, 23)),
              QStringLiteral("0 yrs, 0 mths and 0 days"));
    EXPECT_EQ(ageText(QDate(2016, 11, 23), QDate(2026, 11, 23)),
              QStringLiteral("10 yrs, 0 mths and 0 days"));
}

TEST(AgeText, DayOfMonthNotYetReachedTakesOneMonthLess)
{
    EXPECT_EQ(ageText(QDate(2000, 5, 25), QDate(2026, 11, 23)),
              QStringLiteral("26 yrs, 5 mths and 29 days"));
}

TEST(AgeText, BornOnThe31stWithAShortMonthBetween)
{
    // 31 Jan + 1 month is 28 Feb (the month's end): 1 month and 1 day on 1 March.
    EXPECT_EQ(ageText(QDate(2026, 1, 31), QDate(2026, 3, 1)),
              QStringLiteral("0 yrs, 1 mth and 1 day"));
    // Leap year: 31 Jan + 1 month is 29 Feb.
    EXPECT_EQ(ageText(QDate(2024, 1, 31), QDate(2024, 3, 1)),
              QStringLiteral("0 yrs, 1 mth and 1 day"));
    // 31 Oct + 1 month is 30 Nov; on 30 Nov a whole month has passed.
    EXPECT_EQ(ageText(QDate(2025, 10, 31), QDate(2026, 11, 30)),
              QStringLiteral("1 yr, 1 mth and 0 days"));
    // On 1 Dec, 31 Oct + 2 months (31 Dec) is ahead: one month less, and the days stay
    // non-negative.
    EXPECT_EQ(ageText(QDate(2025, 10, 31), QDate(2026, 12, 1)),
              QStringLiteral("1 yr, 1 mth and 1 day"));
}

TEST(AgeText, UsesTheWorkstationsDateNotTheServers)
{
    ScriptedPrompter prompter;
    FixedClock clock(QDateTime(QDate(2026, 11, 23), QTime(9, 0)),
                     QDateTime(QDate(2026, 12, 23), QTime(9, 0)));
    AppContext ctx(QString(), prompter, clock);
    EXPECT_EQ(ageText(ctx, QDate(2026, 11, 23)), QStringLiteral("0 yrs, 1 mth and 0 days"));
}

// --- amounts in words -------------------------------------------------------------------

TEST(Num2String, EdgesOfTheGroups)
{
    figToWrd w;
    EXPECT_EQ(w.Num2String(0), QStringLiteral(" Naria"));
    EXPECT_EQ(w.Num2String(100), QStringLiteral("One Hundred Naria"));
    EXPECT_EQ(w.Num2String(101), QStringLiteral("One Hundred And One Naria"));
    EXPECT_EQ(w.Num2String(21.5), QStringLiteral("Twenty One Naria and Fifty kobo only"));
    EXPECT_EQ(w.Num2String(40), QStringLiteral("Fourty Naria"));
    EXPECT_EQ(w.Num2String(7), QStringLiteral("Seven Naria"));
    EXPECT_EQ(w.Num2String(15), QStringLiteral("Fifteen Naria"));
    EXPECT_EQ(w.Num2String(17), QStringLiteral("Seventeen Naria"));
    EXPECT_EQ(w.Num2String(18), QStringLiteral("Eightteen Naria"));
    EXPECT_EQ(w.Num2String(999), QStringLiteral("Nine Hundred And Ninety Nine Naria"));
    EXPECT_EQ(w.Num2String(0.05), QStringLiteral(" Naria and Five kobo only"));
}

TEST(Num2String, ThousandsMillionsAndBillions)
{
    figToWrd w;
    EXPECT_EQ(w.Num2String(12500),
              QStringLiteral("Twelve Thousand, Five Hundred Naria"));
    // A whole thousand ends in the delimiter, which becomes a space.
    EXPECT_EQ(w.Num2String(1000), QStringLiteral("One Thousand  Naria"));
    EXPECT_EQ(w.Num2String(2001000),
              QStringLiteral("Two Million, One Thousand  Naria"));
    EXPECT_EQ(w.Num2String(3000000045.0),
              QStringLiteral("Three Billion, Fourty Five Naria"));
    EXPECT_EQ(w.Num2String(1250.75),
              QStringLiteral("One Thousand, Two Hundred And Fifty Naria and Seventy Five kobo "
                             "only"));
    EXPECT_EQ(w.Num2String(999999999999.98),
              QStringLiteral("Nine Hundred And Ninety Nine Billion, Nine Hundred And Ninety "
                             "Nine Million, Nine Hundred And Ninety Nine Thousand, Nine "
                             "Hundred And Ninety Nine Naria and Ninety Eight kobo only"));
    EXPECT_EQ(w.Num2String(999999999999.99), QStringLiteral("***"));
    EXPECT_EQ(w.Num2String(5e12), QStringLiteral("***"));
}

TEST(Num2String, KoboAreRoundedToTwoPlaces)
{
    figToWrd w;
    EXPECT_EQ(w.Num2String(0.29), QStringLiteral(" Naria and Twenty Nine kobo only"));
    EXPECT_EQ(w.Num2String(10.999), QStringLiteral("Eleven Naria"));
}

TEST(Num2String, CasePaddingAndDelimiter)
{
    figToWrd w;
    w.UseDelimiter = figToWrd::Space;
    EXPECT_EQ(w.Num2String(12500), QStringLiteral("Twelve Thousand Five Hundred Naria"));
    w.UseDelimiter = figToWrd::Dash;
    EXPECT_EQ(w.Num2String(12500), QStringLiteral("Twelve Thousand-Five Hundred Naria"));
    EXPECT_EQ(w.Num2String(5000), QStringLiteral("Five Thousand- Naria"));
    w.UseDelimiter = figToWrd::CommaSpace;
    w.UseCase = figToWrd::UpperCase;
    EXPECT_EQ(w.Num2String(21.5), QStringLiteral("TWENTY ONE NARIA AND FIFTY KOBO ONLY"));
    w.UseCase = figToWrd::LowerCase;
    w.UsePadding = figToWrd::OneStar;
    EXPECT_EQ(w.Num2String(100), QStringLiteral("*one hundred naria*"));
    w.UseCase = figToWrd::AsBuilt;
    w.UsePadding = figToWrd::ThreeStars;
    EXPECT_EQ(w.Num2String(100), QStringLiteral("***One Hundred Naria***"));
}

// --- database routines ------------------------------------------------------------------

class Routines : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk = std::make_unique<Desk>(*ws);
        desk->ctx.refreshServerClock();  // 23 Nov 2026
    }
    void TearDown() override
    {
        desk.reset();
        BackendTest::TearDown();
    }
    void postingOn(const QDate& closeDate, const QString& beyond = QStringLiteral("NO"),
                   const QString& below = QStringLiteral("NO"))
    {
        AppDefaults& d = desk->ctx.session().defaults;
        d.AcctPostOn = true;
        d.AcctPostLastPeriodCloseDate = closeDate;
        d.AcctPostBeyondCurrentCalendarMonth = beyond;
        d.AcctPostBelowLastPeriodClose = below;
    }
    QString refusal(const QDate& date)
    {
        try {
            GetFinancialPeriodForDate(desk->ctx, date);
        } catch (const FinancialPeriodError& e) {
            EXPECT_EQ(e.number(), -2147220505);
            return e.message();
        }
        return QString();
    }
    std::unique_ptr<Desk> desk;
};

TEST_P(Routines, PeriodCheckIsSilentWhilePostingIsOff)
{
    desk->ctx.session().defaults.AcctPostOn = false;
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2031, 1, 1)), QString());
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(1990, 1, 1)), QString());
}

TEST_P(Routines, PeriodOfADateInTheCurrentMonth)
{
    postingOn(QDate(2026, 10, 31));
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 11, 23)), QStringLiteral("NOV 2026"));
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 11, 1)), QStringLiteral("NOV 2026"));
}

TEST_P(Routines, LastDayOfTheMonthPassesAndTheNextDayIsRefused)
{
    postingOn(QDate(2026, 10, 31));
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 11, 30)), QStringLiteral("NOV 2026"));
    EXPECT_EQ(refusal(QDate(2026, 12, 1)), kTranDateBeyondCurrentPeriod);
    // Allowed beyond the month: the ledger's own periods decide.
    desk->ctx.session().defaults.AcctPostBeyondCurrentCalendarMonth = QStringLiteral("YES");
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 12, 1)), QStringLiteral("DEC 2026"));
}

TEST_P(Routines, MonthEndFollowsTheServersMonth)
{
    postingOn(QDate(2026, 1, 31));
    desk->clock.setServer(QDateTime(QDate(2028, 2, 10), QTime(9, 0)));
    desk->ctx.refreshServerClock();
    // February of a leap year ends on the 29th; no period exists there, so the ledger
    // refuses it, but not as "beyond the current period".
    EXPECT_EQ(refusal(QDate(2028, 2, 29)), kTranDateInClosedPeriod);
    EXPECT_EQ(refusal(QDate(2028, 3, 1)), kTranDateBeyondCurrentPeriod);
}

TEST_P(Routines, DateEqualToTheCloseDateIsRefused)
{
    postingOn(QDate(2026, 10, 31));
    EXPECT_EQ(refusal(QDate(2026, 10, 31)), kTranDateInClosedPeriod);
    EXPECT_EQ(refusal(QDate(2026, 10, 2)), kTranDateInClosedPeriod);
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 11, 1)), QStringLiteral("NOV 2026"));
}

TEST_P(Routines, BelowTheCloseDateTheLedgerDecidesWhenAllowed)
{
    postingOn(QDate(2026, 10, 31), QStringLiteral("NO"), QStringLiteral("YES"));
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 10, 31)), QStringLiteral("OCT 2026"));
    // A date the ledger has no period for.
    EXPECT_EQ(refusal(QDate(2019, 6, 1)), kTranDateInClosedPeriod);
}

TEST_P(Routines, PeriodsBelongToTheirCompany)
{
    postingOn(QDate(2026, 10, 31));
    ws->exec(QStringLiteral("INSERT INTO FinancialPeriods (CoyID, PeriodName, StartDate, EndDate) "
                            "VALUES (?, ?, ?, ?)"),
             {QStringLiteral("0002"), QStringLiteral("FY26 P8"), QDate(2026, 11, 1),
              QDate(2026, 11, 30)},
             db::Database::Accounting);
    desk->ctx.session().defaults.CoyID = QStringLiteral("0002");
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 11, 5)), QStringLiteral("FY26 P8"));
    desk->ctx.session().defaults.CoyID = QStringLiteral("0009");
    EXPECT_EQ(refusal(QDate(2026, 11, 5)), kTranDateInClosedPeriod);
}

TEST_P(Routines, PatientNoteIsShownOnlyWhenThereIsOne)
{
    auto add = [&](const char* pno, const QVariant& note) {
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, ANCInfo) VALUES (?, ?)"),
                 {QString::fromLatin1(pno), note});
    };
    add("001/000000001", QStringLiteral("Allergic to penicillin"));
    add("001/000000002", QStringLiteral("NIL"));
    add("001/000000003", QStringLiteral("NONE"));
    add("001/000000004", QVariant());
    add("001/000000005", QStringLiteral("   "));
    EXPECT_EQ(patientNote(desk->ctx, QStringLiteral("001/000000001")),
              QStringLiteral("Allergic to penicillin"));
    for (const char* pno : {"001/000000002", "001/000000003", "001/000000004", "001/000000005",
                            "001/000000099"})
        EXPECT_EQ(patientNote(desk->ctx, QString::fromLatin1(pno)), QString()) << pno;
    EXPECT_FALSE(showPatientNote(desk->ctx, QStringLiteral("001/000000002")));

    // The information screen that shows the note is built elsewhere; a stand-in under its
    // name records which patient the note hands it, and closes.
    static QString handedPNo;
    ScreenHost::registerFactory(QStringLiteral("frmPatientANCInfo"),
                                [](AppContext&, const QVariantMap& args) -> QWidget* {
                                    handedPNo = args.value(QStringLiteral("PNo")).toString();
                                    auto* d = new QDialog;
                                    QTimer::singleShot(0, d, &QDialog::accept);
                                    return d;
                                });
    EXPECT_TRUE(showPatientNote(desk->ctx, QStringLiteral("001/000000001")));
    EXPECT_EQ(handedPNo, QStringLiteral("001/000000001"));
}

TEST_P(Routines, ClientCategoryOrDefault)
{
    ws->exec(QStringLiteral("INSERT INTO hRetainership (retainID, retainName, clientCatID) "
                            "VALUES (?, ?, ?)"),
             {QStringLiteral("9001"), QStringLiteral("ACME [NIG] LTD"), QStringLiteral("HMO")});
    EXPECT_EQ(clientCategory(desk->ctx, QStringLiteral("9001")), QStringLiteral("HMO"));
    EXPECT_EQ(clientCategory(desk->ctx, QStringLiteral("NOT-A-PAYER")), QStringLiteral("DEFAULT"));
}

TEST_P(Routines, VisitedTodayByTheServersDate)
{
    // The view reads the database's own clock, so the visits are dated by it.
    const QDate today =
        db::variantDate(ws->scalar(QStringLiteral("SELECT sysDT FROM qrySysDateTime")));
    auto visit = [&](const char* pno, const QDate& d) {
        ws->exec(QStringLiteral("INSERT INTO hRecords (recDate, PNo, consultID) VALUES (?, ?, ?)"),
                 {d, QString::fromLatin1(pno), QStringLiteral("001000000001")});
    };
    visit("001/000000001", today);
    visit("001/000000002", today.addDays(-1));
    EXPECT_TRUE(visitedToday(desk->ctx, QStringLiteral("001/000000001")));
    EXPECT_FALSE(visitedToday(desk->ctx, QStringLiteral("001/000000002")));
    EXPECT_FALSE(visitedToday(desk->ctx, QStringLiteral("001/000000003")));
}

TEST_P(Routines, DiagnosisListIsReadOnceAndShared)
{
    const db::Result& list = diagnosisList(desk->ctx);
    ASSERT_GT(list.size(), 20u);
    EXPECT_TRUE(list.front().has(u"Code"));
    EXPECT_TRUE(list.front().has(u"DescICD"));
    for (size_t i = 1; i < list.size(); ++i)
        EXPECT_LE(list.rows[i - 1].text(u"DescICD"), list.rows[i].text(u"DescICD"));
    // A code added later in the run does not show: the list was read once.
    ws->exec(QStringLiteral("INSERT INTO hICDCodes (Code, DescICD) VALUES (?, ?)"),
             {QStringLiteral("Z99.9"), QStringLiteral("Dependence on unspecified device")});
    EXPECT_EQ(&diagnosisList(desk->ctx), &list);
    EXPECT_EQ(diagnosisList(desk->ctx).size(), list.size());

    const auto malaria = filterDiagnoses(list, QStringLiteral("malaria"), false);
    ASSERT_EQ(malaria.size(), 2u);
    EXPECT_EQ(malaria[0]->text(u"Code"), QStringLiteral("B50.9"));
    const auto byCode = filterDiagnoses(list, QStringLiteral("j18"), true);
    ASSERT_EQ(byCode.size(), 1u);
    EXPECT_EQ(byCode[0]->text(u"DescICD"), QStringLiteral("Pneumonia, unspecified"));
    EXPECT_TRUE(filterDiagnoses(list, QStringLiteral("no such disease"), false).empty());
}

TOLMAR_INSTANTIATE_BACKENDS(Routines);

}  // namespace
