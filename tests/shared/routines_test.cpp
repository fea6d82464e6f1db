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
using namespace Qt::StringLiterals;

namespace {

// --- age text ---------------------------------------------------------------------------

TEST(AgeText, CountsYearsMonthsAndDays)
{
    const struct {
        QDate born, today;
        const char* text;
    } cases[] = {
        {{1992, 9, 12}, {2026, 11, 23}, "34 yrs, 2 mths and 11 days"},
        {{2025, 10, 22}, {2026, 11, 23}, "1 yr, 1 mth and 1 day"},
        // Every part is there, also at 0.
        {{2026, 11, 23}, {2026, 11, 23}, "0 yrs, 0 mths and 0 days"},
        {{2016, 11, 23}, {2026, 11, 23}, "10 yrs, 0 mths and 0 days"},
        // The day of the month not yet reached: one month less.
        {{2000, 5, 25}, {2026, 11, 23}, "26 yrs, 5 mths and 29 days"},
        // 31 Jan + 1 month is the month's end (28 or 29 Feb): 1 month and 1 day on 1 March.
        {{2026, 1, 31}, {2026, 3, 1}, "0 yrs, 1 mth and 1 day"},
        {{2024, 1, 31}, {2024, 3, 1}, "0 yrs, 1 mth and 1 day"},
        // 31 Oct + 1 month is 30 Nov; on 1 Dec, 31 Oct + 2 months is still ahead.
        {{2025, 10, 31}, {2026, 11, 30}, "1 yr, 1 mth and 0 days"},
        {{2025, 10, 31}, {2026, 12, 1}, "1 yr, 1 mth and 1 day"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(ageText(c.born, c.today), QString::fromLatin1(c.text)) << c.text;
}

TEST(AgeText, UsesTheWorkstationsDateNotTheServers)
{
    ScriptedPrompter prompter;
    FixedClock clock(QDateTime(QDate(2026, 11, 23), QTime(9, 0)),
                     QDateTime(QDate(2026, 12, 23), QTime(9, 0)));
    AppContext ctx(QString(), prompter, clock);
    EXPECT_EQ(ageText(ctx, QDate(2026, 11, 23)), u"0 yrs, 1 mth and 0 days"_s);
}

// --- amounts in words -------------------------------------------------------------------

TEST(Num2String, GroupsKoboAndLimits)
{
    const std::pair<double, const char*> cases[] = {
        {0, " Naria"},
        {100, "One Hundred Naria"},
        {101, "One Hundred And One Naria"},
        {21.5, "Twenty One Naria and Fifty kobo only"},
        {40, "Fourty Naria"},
        {7, "Seven Naria"},
        {15, "Fifteen Naria"},
        {17, "Seventeen Naria"},
        {18, "Eightteen Naria"},
        {999, "Nine Hundred And Ninety Nine Naria"},
        {0.05, " Naria and Five kobo only"},
        {0.29, " Naria and Twenty Nine kobo only"},
        {10.999, "Eleven Naria"},  // kobo are rounded to two places
        {12500, "Twelve Thousand, Five Hundred Naria"},
        // A whole thousand ends in the delimiter, which becomes a space.
        {1000, "One Thousand  Naria"},
        {2001000, "Two Million, One Thousand  Naria"},
        {3000000045.0, "Three Billion, Fourty Five Naria"},
        {1250.75, "One Thousand, Two Hundred And Fifty Naria and Seventy Five kobo only"},
        {999999999999.98, "Nine Hundred And Ninety Nine Billion, Nine Hundred And Ninety Nine "
                          "Million, Nine Hundred And Ninety Nine Thousand, Nine Hundred And "
                          "Ninety Nine Naria and Ninety Eight kobo only"},
        {999999999999.99, "***"},
        {5e12, "***"},
    };
    figToWrd w;
    for (const auto& [n, words] : cases)
        EXPECT_EQ(w.Num2String(n), QString::fromLatin1(words)) << n;
}

TEST(Num2String, CasePaddingAndDelimiter)
{
    figToWrd w;
    w.UseDelimiter = figToWrd::Space;
    EXPECT_EQ(w.Num2String(12500), u"Twelve Thousand Five Hundred Naria"_s);
    w.UseDelimiter = figToWrd::Dash;
    EXPECT_EQ(w.Num2String(12500), u"Twelve Thousand-Five Hundred Naria"_s);
    EXPECT_EQ(w.Num2String(5000), u"Five Thousand- Naria"_s);
    w.UseDelimiter = figToWrd::CommaSpace;
    w.UseCase = figToWrd::UpperCase;
    EXPECT_EQ(w.Num2String(21.5), u"TWENTY ONE NARIA AND FIFTY KOBO ONLY"_s);
    w.UseCase = figToWrd::LowerCase;
    w.UsePadding = figToWrd::OneStar;
    EXPECT_EQ(w.Num2String(100), u"*one hundred naria*"_s);
    w.UseCase = figToWrd::AsBuilt;
    w.UsePadding = figToWrd::ThreeStars;
    EXPECT_EQ(w.Num2String(100), u"***One Hundred Naria***"_s);
}

// --- database routines ------------------------------------------------------------------

class Routines : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->ctx.refreshServerClock();  // 23 Nov 2026
    }
    void postingOn(const QDate& closeDate, const QString& beyond = u"NO"_s,
                   const QString& below = u"NO"_s)
    {
        AppDefaults& d = desk->ctx.session().defaults;
        d.AcctPostOn = true;
        d.AcctPostLastPeriodCloseDate = closeDate;
        d.AcctPostBeyondCurrentCalendarMonth = beyond;
        d.AcctPostBelowLastPeriodClose = below;
    }
    // The period's name, or the refusal's message.
    QString refusal(const QDate& date)
    {
        try {
            return GetFinancialPeriodForDate(desk->ctx, date);
        } catch (const FinancialPeriodError& e) {
            EXPECT_EQ(e.number(), -2147220505);
            return e.message();
        }
    }
};

TEST_P(Routines, PeriodOfADateAgainstTheCloseDateAndTheMonth)
{
    const QDate close(2026, 10, 31);
    const struct {
        bool on;
        const char *beyond, *below;
        QDate date;
        QString outcome;
    } cases[] = {
        // Posting off: no check at all.
        {false, "NO", "NO", {2031, 1, 1}, ""},
        {false, "NO", "NO", {1990, 1, 1}, ""},
        {true, "NO", "NO", {2026, 11, 23}, "NOV 2026"},
        {true, "NO", "NO", {2026, 11, 1}, "NOV 2026"},
        {true, "NO", "NO", {2026, 11, 30}, "NOV 2026"},
        {true, "NO", "NO", {2026, 12, 1}, kTranDateBeyondCurrentPeriod},
        // Allowed beyond the month: the ledger's own periods decide.
        {true, "YES", "NO", {2026, 12, 1}, "DEC 2026"},
        // The close date itself is closed.
        {true, "NO", "NO", {2026, 10, 31}, kTranDateInClosedPeriod},
        {true, "NO", "NO", {2026, 10, 2}, kTranDateInClosedPeriod},
        // Below the close date the ledger decides when allowed; 2019 has no period.
        {true, "NO", "YES", {2026, 10, 31}, "OCT 2026"},
        {true, "NO", "YES", {2019, 6, 1}, kTranDateInClosedPeriod},
    };
    for (const auto& c : cases) {
        postingOn(close, QString::fromLatin1(c.beyond), QString::fromLatin1(c.below));
        desk->ctx.session().defaults.AcctPostOn = c.on;
        EXPECT_EQ(refusal(c.date), c.outcome) << c.date.toString(Qt::ISODate).toStdString();
    }
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

TEST_P(Routines, PeriodsBelongToTheirCompany)
{
    postingOn(QDate(2026, 10, 31));
    ws->exec(
        u"INSERT INTO FinancialPeriods (CoyID, PeriodName, StartDate, EndDate) "
        "VALUES (?, ?, ?, ?)"_s,
        {u"0002"_s, u"FY26 P8"_s, QDate(2026, 11, 1), QDate(2026, 11, 30)},
        db::Database::Accounting);
    desk->ctx.session().defaults.CoyID = u"0002"_s;
    EXPECT_EQ(GetFinancialPeriodForDate(desk->ctx, QDate(2026, 11, 5)), u"FY26 P8"_s);
    desk->ctx.session().defaults.CoyID = u"0009"_s;
    EXPECT_EQ(refusal(QDate(2026, 11, 5)), kTranDateInClosedPeriod);
}

TEST_P(Routines, PatientNoteIsShownOnlyWhenThereIsOne)
{
    auto add = [&](const char* pno, const QVariant& note) {
        ws->exec(u"INSERT INTO hPatients (PNo, ANCInfo) VALUES (?, ?)"_s,
                 {QString::fromLatin1(pno), note});
    };
    add("001/000000001", u"Allergic to penicillin"_s);
    add("001/000000002", u"NIL"_s);
    add("001/000000003", u"NONE"_s);
    add("001/000000004", QVariant());
    add("001/000000005", u"   "_s);
    EXPECT_EQ(patientNote(desk->ctx, u"001/000000001"_s), u"Allergic to penicillin"_s);
    for (const char* pno : {"001/000000002", "001/000000003", "001/000000004", "001/000000005",
                            "001/000000099"})
        EXPECT_EQ(patientNote(desk->ctx, QString::fromLatin1(pno)), QString()) << pno;
    EXPECT_FALSE(showPatientNote(desk->ctx, u"001/000000002"_s));

    // The information screen that shows the note is built elsewhere; a stand-in under its
    // name records which patient the note hands it, and closes.
    static QString handedPNo;
    ScreenHost::registerFactory(u"frmPatientANCInfo"_s,
                                [](AppContext&, const QVariantMap& args) -> QWidget* {
                                    handedPNo = args.value(u"PNo"_s).toString();
                                    auto* d = new QDialog;
                                    QTimer::singleShot(0, d, &QDialog::accept);
                                    return d;
                                });
    EXPECT_TRUE(showPatientNote(desk->ctx, u"001/000000001"_s));
    EXPECT_EQ(handedPNo, u"001/000000001"_s);
}

TEST_P(Routines, ClientCategoryOrDefault)
{
    ws->exec(
        u"INSERT INTO hRetainership (retainID, retainName, clientCatID) "
        "VALUES (?, ?, ?)"_s,
        {u"9001"_s, u"ACME [NIG] LTD"_s, u"HMO"_s});
    EXPECT_EQ(clientCategory(desk->ctx, u"9001"_s), u"HMO"_s);
    EXPECT_EQ(clientCategory(desk->ctx, u"NOT-A-PAYER"_s), u"DEFAULT"_s);
}

TEST_P(Routines, VisitedTodayByTheServersDate)
{
    // The view reads the database's own clock, so the visits are dated by it.
    const QDate today = db::variantDate(ws->scalar(u"SELECT sysDT FROM qrySysDateTime"_s));
    auto visit = [&](const char* pno, const QDate& d) {
        ws->exec(u"INSERT INTO hRecords (recDate, PNo, consultID) VALUES (?, ?, ?)"_s,
                 {d, QString::fromLatin1(pno), u"001000000001"_s});
    };
    visit("001/000000001", today);
    visit("001/000000002", today.addDays(-1));
    EXPECT_TRUE(visitedToday(desk->ctx, u"001/000000001"_s));
    EXPECT_FALSE(visitedToday(desk->ctx, u"001/000000002"_s));
    EXPECT_FALSE(visitedToday(desk->ctx, u"001/000000003"_s));
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
    ws->exec(u"INSERT INTO hICDCodes (Code, DescICD) VALUES (?, ?)"_s,
             {u"Z99.9"_s, u"Dependence on unspecified device"_s});
    EXPECT_EQ(&diagnosisList(desk->ctx), &list);
    EXPECT_EQ(diagnosisList(desk->ctx).size(), list.size());

    const auto malaria = filterDiagnoses(list, u"malaria"_s, false);
    ASSERT_EQ(malaria.size(), 2u);
    EXPECT_EQ(malaria[0]->text(u"Code"), u"B50.9"_s);
    const auto byCode = filterDiagnoses(list, u"j18"_s, true);
    ASSERT_EQ(byCode.size(), 1u);
    EXPECT_EQ(byCode[0]->text(u"DescICD"), u"Pneumonia, unspecified"_s);
    EXPECT_TRUE(filterDiagnoses(list, u"no such disease"_s, false).empty());
}

TOLMAR_INSTANTIATE_BACKENDS(Routines);

}  // namespace
