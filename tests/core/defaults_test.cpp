// Application defaults: each key from its own database, the absent-row defaults, the
// warnings that let the run go on, and the keys without which the run ends.
#include "support/workspace.h"

#include "core/appdefaults.h"
#include "core/startup.h"

using namespace tolmar;
using namespace tolmar::test;
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
    ws->exec(QStringLiteral("DELETE FROM AppDefaults WHERE ID <> ?"), {QStringLiteral("PRIVATE")});
    ws->exec(QStringLiteral("DELETE FROM AppDefaults"), {}, Database::SmsCenter);
    StartupResult r;
    auto d = run(&r);
    ASSERT_EQ(r.outcome, StartupResult::Ok) << r.message.toStdString();
    const AppDefaults& a = d->ctx.session().defaults;
    EXPECT_EQ(a.PVT_CONFEE_SNO, 0);
    EXPECT_EQ(a.PVT_REGFEE_SNO, 0);
    EXPECT_EQ(a.AUTO_CARD_NO, QStringLiteral("YES"));
    EXPECT_EQ(a.PIXLOC, QStringLiteral("DB"));
    EXPECT_EQ(a.Coy_Code, QStringLiteral("SHORT"));
    EXPECT_EQ(a.SendSMS, QStringLiteral("NO"));
    EXPECT_EQ(a.Revtype_Consult, QStringLiteral("CONSULTATION"));
    EXPECT_EQ(a.CoyID, QStringLiteral("0001"));
    EXPECT_FALSE(a.AcctPostOn);
    EXPECT_EQ(a.AppLocation, QStringLiteral("Lagos"));
    EXPECT_EQ(a.SearchValue, QStringLiteral("20"));
    EXPECT_EQ(a.SearchWaitTime, 3000);
    EXPECT_EQ(a.TimeLineVersion, QStringLiteral("OLD"));
    EXPECT_EQ(a.Clinic_Period, QStringLiteral("Between 10am - 3pm"));
    EXPECT_EQ(a.Admission_Limit_Exists, QStringLiteral("YES"));
    EXPECT_EQ(a.App_Location_Change, QStringLiteral("NO"));
    EXPECT_EQ(a.Assign_Doctors_to_Consulting_Rooms, QStringLiteral("NO"));
    EXPECT_EQ(a.Mail_Activated, QStringLiteral("No"));
    // The three warnings, in the order the keys are read; the run goes on after each.
    EXPECT_EQ(d->prompter.informs(),
              (QStringList{
                  QStringLiteral("System Default Value For Consultation Fee needed for Private "),
                  QStringLiteral("System Default Value For Registration Fee needed for Private "),
                  QStringLiteral("Clinic_PhoneNo Default Required to Send SMS Appointments")}));
}

TEST_P(Defaults, KeysAreReadFromTheirOwnDatabase)
{
    // SendFrom lives in SmsCenter: a HOSPITAL row of that name is not looked at.
    ws->setDefault(QStringLiteral("SendFrom"), QStringLiteral("WRONGDB"), Database::Hospital);
    ws->setDefault(QStringLiteral("SendFrom"), QStringLiteral("HOSP SMS"), Database::SmsCenter);
    auto d = run();
    EXPECT_EQ(d->ctx.session().defaults.SendFrom, QStringLiteral("HOSP SMS"));
}

TEST_P(Defaults, SendFromIsReadOnlyWhenSmsIsOn)
{
    ws->setDefault(QStringLiteral("SendSMS"), QStringLiteral("Yes"));
    auto d = run();
    EXPECT_EQ(d->ctx.session().defaults.SendFrom, QString());
    ws->setDefault(QStringLiteral("SendSMS"), QStringLiteral("YES"));
    ws->setDefault(QStringLiteral("SendFrom"), std::nullopt, Database::SmsCenter);
    auto e = run();
    EXPECT_EQ(e->ctx.session().defaults.SendFrom, QStringLiteral("Corvane"));
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
            ws->setDefault(QStringLiteral("AcctPostOn"), QStringLiteral("True"));
            ws->setDefault(QStringLiteral("Acct_Receivable"), QStringLiteral("1200"));
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
    ws->setDefault(QStringLiteral("AcctPostOn"), std::nullopt);
    ws->setDefault(QStringLiteral("AcctPostLastPeriodCloseDate"), std::nullopt,
                   Database::Accounting);
    StartupResult r;
    auto d = run(&r);
    ASSERT_EQ(r.outcome, StartupResult::Ok);
    EXPECT_FALSE(d->ctx.session().defaults.AcctPostOn);
    EXPECT_FALSE(d->ctx.session().defaults.AcctPostLastPeriodCloseDate.isValid());

    ws->setDefault(QStringLiteral("AcctPostOn"), QStringLiteral("True"));
    ws->setDefault(QStringLiteral("AcctPostLastPeriodCloseDate"), QStringLiteral("2026-06-30"),
                   Database::Accounting);
    ws->setDefault(QStringLiteral("Acct_Receivable"), QStringLiteral("1200"));
    ws->setDefault(QStringLiteral("AcctPostBelowLastPeriodClose"), QStringLiteral("YES"),
                   Database::Accounting);
    auto e = run(&r);
    ASSERT_EQ(r.outcome, StartupResult::Ok) << r.message.toStdString();
    const AppDefaults& a = e->ctx.session().defaults;
    EXPECT_TRUE(a.AcctPostOn);
    EXPECT_EQ(a.AcctPostLastPeriodCloseDate, QDate(2026, 6, 30));
    EXPECT_EQ(a.Acct_Receivable, QStringLiteral("1200"));
    EXPECT_EQ(a.AcctPostBelowLastPeriodClose, QStringLiteral("YES"));
    EXPECT_EQ(a.AcctPostBeyondCurrentCalendarMonth, QStringLiteral("NO"));
}

TEST_P(Defaults, PostingFlagThatIsNotABooleanFailsTheRun)
{
    ws->setDefault(QStringLiteral("AcctPostOn"), QStringLiteral("maybe"));
    StartupResult r;
    auto d = run(&r);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
    EXPECT_TRUE(r.message.contains(QStringLiteral("AcctPostOn")));
}

TEST_P(Defaults, MailNeedsExactlyYes)
{
    ws->setDefault(QStringLiteral("Mail_Activated"), QStringLiteral("YES"));
    ws->setDefault(QStringLiteral("Mail_Server"), QStringLiteral("smtp.example.org"));
    auto d = run();
    EXPECT_FALSE(d->ctx.session().defaults.mailActivated());
    EXPECT_EQ(d->ctx.session().defaults.Mail_Server, QString());

    ws->setDefault(QStringLiteral("Mail_Activated"), QStringLiteral("Yes"));
    auto e = run();
    const AppDefaults& a = e->ctx.session().defaults;
    EXPECT_TRUE(a.mailActivated());
    EXPECT_EQ(a.Mail_Server, QStringLiteral("smtp.example.org"));
    EXPECT_EQ(a.Mail_Password, QStringLiteral("nimbl#482"));
    EXPECT_EQ(a.Mail_Client, QStringLiteral("TOLMAR SPECIALIST HOSPITAL"));
    EXPECT_EQ(a.Mail_SmtpPort, 8889);
    EXPECT_EQ(a.Mail_Subject, QStringLiteral("Client Mail"));
}

TEST_P(Defaults, NullValueReadsAsEmptyAndNumbersMustFit)
{
    ws->exec(QStringLiteral("UPDATE AppDefaults SET IDVal = NULL WHERE ID = ?"),
             {QStringLiteral("AppLocation")});
    auto d = run();
    EXPECT_EQ(d->ctx.session().defaults.AppLocation, QString());

    ws->setDefault(QStringLiteral("SearchWaitTime"), QStringLiteral("40000"));  // not 16-bit
    StartupResult r;
    run(&r);
    EXPECT_EQ(r.outcome, StartupResult::Failed);
}

TOLMAR_INSTANTIATE_BACKENDS(Defaults);
