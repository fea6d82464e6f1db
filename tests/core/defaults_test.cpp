// Application defaults: each key from its own database, the absent-row defaults, the
// warnings that let the run go on, and the keys without which the run ends.
#include "support/workspace.h"

#include "core/appdefaults.h"
#include "core/startup.h"

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;
using db::Database;

class Defaults : public BackendTest {
protected:
    // Runs the start-up routine on a desk and hands it back.
    std::unique_ptr<Desk> run(StartupResult* result = nullptr)
    {
        auto d = std::make_unique<Desk>(*ws);
        ws->writeSettings();
        const auto r = runStartup(d->ctx);
        if (result)
            *result = r;
        return d;
    }
};

TEST_P(Defaults, AbsentRowsTakeTheirDefaults)
{
    // Leave only the key the run cannot do without.
    ws->exec(u"DELETE FROM AppDefaults WHERE ID <> ?"_s, {u"PRIVATE"_s});
    ws->exec(u"DELETE FROM AppDefaults"_s, {}, Database::SmsCenter);
    StartupResult r;
    auto d = run(&r);
    ASSERT_EQ(r.outcome, StartupResult::Ok) << r.message.toStdString();
    const AppDefaults& a = d->ctx.session().defaults;
    EXPECT_EQ(a.PVT_CONFEE_SNO, 0);
    EXPECT_EQ(a.PVT_REGFEE_SNO, 0);
    EXPECT_EQ(a.SearchWaitTime, 3000);
    EXPECT_FALSE(a.AcctPostOn);
    EXPECT_EQ((QStringList{a.AUTO_CARD_NO, a.PIXLOC, a.Coy_Code, a.SendSMS, a.Revtype_Consult,
                           a.CoyID, a.AppLocation, a.SearchValue, a.TimeLineVersion,
                           a.Clinic_Period, a.Admission_Limit_Exists, a.App_Location_Change,
                           a.Assign_Doctors_to_Consulting_Rooms, a.Mail_Activated}),
              (QStringList{"YES", "DB", "SHORT", "NO", "CONSULTATION", "0001", "Lagos", "20", "OLD",
                           "Between 10am - 3pm", "YES", "NO", "NO", "No"}));
    // The three warnings, in the order the keys are read; the run goes on after each.
    EXPECT_EQ(d->prompter.informs(),
              (QStringList{u"System Default Value For Consultation Fee needed for Private "_s,
                           u"System Default Value For Registration Fee needed for Private "_s,
                           u"Clinic_PhoneNo Default Required to Send SMS Appointments"_s}));
}

TEST_P(Defaults, KeysAreReadFromTheirOwnDatabase)
{
    // SendFrom lives in SmsCenter: a HOSPITAL row of that name is not looked at.
    ws->setDefault(u"SendFrom"_s, u"WRONGDB"_s, Database::Hospital);
    ws->setDefault(u"SendFrom"_s, u"HOSP SMS"_s, Database::SmsCenter);
    auto d = run();
    EXPECT_EQ(d->ctx.session().defaults.SendFrom, u"HOSP SMS"_s);
}

TEST_P(Defaults, SendFromIsReadOnlyWhenSmsIsOn)
{
    ws->setDefault(u"SendSMS"_s, u"Yes"_s);
    auto d = run();
    EXPECT_EQ(d->ctx.session().defaults.SendFrom, QString());
    ws->setDefault(u"SendSMS"_s, u"YES"_s);
    ws->setDefault(u"SendFrom"_s, std::nullopt, Database::SmsCenter);
    auto e = run();
    EXPECT_EQ(e->ctx.session().defaults.SendFrom, u"Corvane"_s);
}

TEST_P(Defaults, FatalKeysEndTheRunWithTheirMessage)
{
    struct Case {
        const char* key;
        std::optional<QString> value;
        Database db;
        const char* message;
        bool posting;
    };
    const Case cases[] = {
        {"PRIVATE", std::nullopt, Database::Hospital,
         "System Default Value needed for Private Tariff", false},
        {"CoyID", QString(""), Database::Hospital, "CoyID needed for Posting", false},
        {"AcctPostLastPeriodCloseDate", std::nullopt, Database::Accounting,
         "AcctPostLastPeriodCloseDate needed for Posting", true},
        {"Acct_Receivable", std::nullopt, Database::Hospital,
         "Acct_Receivable Acct Group Required", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        ws = std::make_unique<Workspace>(GetParam());
        if (c.posting) {
            ws->setDefault(u"AcctPostOn"_s, u"True"_s);
            ws->setDefault(u"Acct_Receivable"_s, u"1200"_s);
        }
        ws->setDefault(QString::fromLatin1(c.key), c.value, c.db);
        StartupResult r;
        auto d = run(&r);
        EXPECT_EQ(r.outcome, StartupResult::Fatal);
        EXPECT_EQ(r.exitCode, kExitRequiredDefault);
        EXPECT_EQ(d->prompter.lastText(), QString::fromLatin1(c.message));
    }
}

TEST_P(Defaults, PostingKeysAreReadOnlyWhilePostingIsOn)
{
    // Without AcctPostOn nothing about posting is asked for, not even its fatal keys.
    ws->setDefault(u"AcctPostOn"_s, std::nullopt);
    ws->setDefault(u"AcctPostLastPeriodCloseDate"_s, std::nullopt, Database::Accounting);
    StartupResult r;
    auto d = run(&r);
    ASSERT_EQ(r.outcome, StartupResult::Ok);
    EXPECT_FALSE(d->ctx.session().defaults.AcctPostOn);
    EXPECT_FALSE(d->ctx.session().defaults.AcctPostLastPeriodCloseDate.isValid());

    ws->setDefault(u"AcctPostOn"_s, u"True"_s);
    ws->setDefault(u"AcctPostLastPeriodCloseDate"_s, u"2026-06-30"_s, Database::Accounting);
    ws->setDefault(u"Acct_Receivable"_s, u"1200"_s);
    ws->setDefault(u"AcctPostBelowLastPeriodClose"_s, u"YES"_s, Database::Accounting);
    auto e = run(&r);
    ASSERT_EQ(r.outcome, StartupResult::Ok) << r.message.toStdString();
    const AppDefaults& a = e->ctx.session().defaults;
    EXPECT_TRUE(a.AcctPostOn);
    EXPECT_EQ((QStringList{a.AcctPostLastPeriodCloseDate.toString(Qt::ISODate), a.Acct_Receivable,
                           a.AcctPostBelowLastPeriodClose, a.AcctPostBeyondCurrentCalendarMonth}),
              (QStringList{"2026-06-30", "1200", "YES", "NO"}));
}

TEST_P(Defaults, PostingFlagThatIsNotABooleanFailsTheRun)
{
    ws->setDefault(u"AcctPostOn"_s, u"maybe"_s);
    StartupResult r;
    auto d = run(&r);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
    EXPECT_TRUE(r.message.contains(u"AcctPostOn"_s));
}

TEST_P(Defaults, MailNeedsExactlyYes)
{
    ws->setDefault(u"Mail_Activated"_s, u"YES"_s);
    ws->setDefault(u"Mail_Server"_s, u"smtp.example.org"_s);
    auto d = run();
    EXPECT_FALSE(d->ctx.session().defaults.mailActivated());
    EXPECT_EQ(d->ctx.session().defaults.Mail_Server, QString());

    ws->setDefault(u"Mail_Activated"_s, u"Yes"_s);
    auto e = run();
    const AppDefaults& a = e->ctx.session().defaults;
    EXPECT_TRUE(a.mailActivated());
    EXPECT_EQ((QStringList{a.Mail_Server, a.Mail_Password, a.Mail_Client,
                           QString::number(a.Mail_SmtpPort), a.Mail_Subject}),
              (QStringList{"smtp.example.org", "nimbl#482", "TOLMAR SPECIALIST HOSPITAL", "8889",
                           "Client Mail"}));
}

TEST_P(Defaults, NullValueReadsAsEmptyAndNumbersMustFit)
{
    ws->exec(u"UPDATE AppDefaults SET IDVal = NULL WHERE ID = ?"_s, {u"AppLocation"_s});
    auto d = run();
    EXPECT_EQ(d->ctx.session().defaults.AppLocation, QString());

    ws->setDefault(u"SearchWaitTime"_s, u"40000"_s);  // not 16-bit
    StartupResult r;
    run(&r);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
}

TOLMAR_INSTANTIATE_BACKENDS(Defaults);
