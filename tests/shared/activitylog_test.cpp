// The activity row of a run and the audit entry, on both backends: what each path writes,
// the number the session keeps, and that neither ever fails the action that called it.
#include "support/expect.h"

#include "core/activitylog.h"
#include "core/audit.h"
#include "core/startup.h"

using namespace tolmar;
using namespace tolmar::test;
using namespace Qt::StringLiterals;

namespace {

class ActivityLog : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
        if (HasFatalFailure())
            return;
        desk->ctx.session().computerName = u"FRONTDESK-2"_s;
    }
    std::optional<db::Row> activityRow(int sno) const
    {
        return ws->connect()->queryOne(u"SELECT * FROM UserActivities WHERE SNO = ?"_s, {sno});
    }
    int count(const QString& table) const
    {
        return ws->scalar(u"SELECT count(*) FROM "_s + table).toInt();
    }
};

TEST_P(ActivityLog, OpenAndCloseWriteTheRowOfThePathTaken)
{
    const QString version = u"AppVersion=%1"_s.arg(kVersionMajor);
    const struct {
        bool openLoggedOut;
        bool close, logout, autoEnd;
        const char* remarks;
        QStringList want;
    } cases[] = {
        {false, false, false, false, "",
         {"Username=demo", "LoginDate=2026-11-23", "LoginTime=08:05", "islogout=0", version,
          "LogoutDate=", "LogoutTime=", "AutoLogoff=0", "Remarks=RECORDS"}},
        {true, false, false, false, "",
         {"islogout=1", "LogoutDate=2026-11-23", "LogoutTime=08:05"}},
        // What the open wrote stays as it was.
        {false, true, true, false, "RECORDS/SELF",
         {"Username=demo", "LoginTime=08:05", "islogout=1", "LogoutDate=2026-11-23",
          "LogoutTime=17:45", "AutoLogoff=0", "Remarks=RECORDS/SELF"}},
        {false, true, true, true, "RECORDS", {"AutoLogoff=1", "Remarks=RECORDS"}},
        {false, true, false, false, "STILL HERE",
         {"islogout=0", "LogoutDate=", "LogoutTime=", "Remarks=STILL HERE"}},
    };
    Session& s = desk->ctx.session();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.want.join(u' ').toStdString());
        s.activitySNo = 0;
        s.autoLogoff = true;
        desk->clock.setServer(QDateTime(QDate(2026, 11, 23), QTime(8, 5, 40)));
        openActivityRow(desk->ctx, c.openLoggedOut, false, s.loginRole);
        ASSERT_GT(s.activitySNo, 0);
        if (c.close) {
            desk->clock.setServer(QDateTime(QDate(2026, 11, 23), QTime(17, 45)));
            closeActivityRow(desk->ctx, c.logout, c.autoEnd, QString::fromLatin1(c.remarks));
            EXPECT_FALSE(s.autoLogoff);
        }
        expectColumns(activityRow(s.activitySNo), c.want);
    }
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(ActivityLog, EachDeskKeepsTheNumberOfItsOwnRow)
{
    Desk other(*ws);
    other.ctx.session().userName = u"manager"_s;
    openActivityRow(desk->ctx, false, false, u"RECORDS"_s);
    openActivityRow(other.ctx, false, false, u"RECORDS"_s);
    openActivityRow(desk->ctx, false, false, u"RECORDS"_s);
    const int mine = desk->ctx.session().activitySNo;
    const int theirs = other.ctx.session().activitySNo;
    EXPECT_NE(mine, theirs);
    EXPECT_EQ(activityRow(mine)->text(u"Username"), u"demo"_s);
    EXPECT_EQ(activityRow(theirs)->text(u"Username"), u"manager"_s);
}

TEST_P(ActivityLog, ReloadingTheDefaultsOpensNoSecondRow)
{
    openActivityRow(desk->ctx, false, false, u"RECORDS"_s);
    const int sno = desk->ctx.session().activitySNo;
    ASSERT_EQ(runStartup(desk->ctx).outcome, StartupResult::Ok);
    EXPECT_EQ(count(u"UserActivities"_s), 1);
    EXPECT_EQ(desk->ctx.session().activitySNo, sno);
}

TEST_P(ActivityLog, CloseOfANumberNoLongerInTheTableDoesNothing)
{
    Session& s = desk->ctx.session();
    openActivityRow(desk->ctx, false, false, s.loginRole);
    ws->exec(u"DELETE FROM UserActivities"_s);
    closeActivityRow(desk->ctx, true, false, s.loginRole);
    EXPECT_EQ(count(u"UserActivities"_s), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(ActivityLog, FailedOpenIsShownAndKeepsTheNumberTheRunHad)
{
    Session& s = desk->ctx.session();
    s.activitySNo = 41;
    ws->connect()->execScript(u"DROP TABLE UserActivities"_s);
    openActivityRow(desk->ctx, false, false, s.loginRole);
    EXPECT_EQ(s.activitySNo, 41);
    ASSERT_EQ(desk->prompter.messages().size(), 1u);
    EXPECT_FALSE(desk->prompter.lastText().isEmpty());
}

TEST_P(ActivityLog, FailedCloseNeverReachesTheCaller)
{
    Session& s = desk->ctx.session();
    openActivityRow(desk->ctx, false, false, s.loginRole);
    ws->connect()->execScript(u"DROP TABLE UserActivities"_s);
    EXPECT_NO_THROW(closeActivityRow(desk->ctx, true, false, s.loginRole));
    EXPECT_TRUE(desk->prompter.messages().empty());
}

// ---------------------------------------------------------------------------------------

using Audit = ActivityLog;

TEST_P(Audit, EntryHoldsTheSevenValuesInOrder)
{
    desk->clock.setServer(QDateTime(QDate(2026, 11, 24), QTime(14, 7)));
    SpAudiTrail(desk->ctx, u"demo"_s, u"Change Password "_s, u"001/000000007"_s,
                u"O'Neil's card [old]"_s, u"FRONTDESK-2"_s);
    const auto rows = ws->connect()->query(
        u"SELECT userName, userAction, ActionDate, ActionTime, TranCode, Remarks, Src "
        "FROM AuditTrail"_s);
    ASSERT_EQ(rows.size(), 1u);
    expectColumns(rows.front(), {"userName=demo", "userAction=Change Password ",
                                 "ActionDate=2026-11-24", "ActionTime=14:07",
                                 "TranCode=001/000000007", "Remarks=O'Neil's card [old]",
                                 "Src=FRONTDESK-2: from RECORDS"});
}

TEST_P(Audit, EntriesOfOneCommandGoInTogetherInTheirOrder)
{
    desk->clock.setServer(QDateTime(QDate(2026, 11, 24), QTime(9, 41)));
    SpAudiTrail(desk->ctx, u"demo"_s,
                {{u"Insert Reg for O'NEIL ADA"_s, u"001/000000009"_s, {}},
                 {u"Insert Attendance for O'NEIL ADA"_s, u"0010000042"_s,
                  u"PRIVATE/GENERAL/CONSULTATION/(PRIVATE)"_s},
                 {u"Reg Fee for O'NEIL ADA"_s, u"001/000000009"_s, {}}},
                u"FRONTDESK-2"_s);
    const auto rows = ws->connect()->query(
        u"SELECT userAction, TranCode, Remarks, ActionDate, ActionTime, Src FROM AuditTrail "
        "ORDER BY SNo"_s);
    const QString when = u"2026-11-24|09:41|FRONTDESK-2: from RECORDS"_s;
    EXPECT_EQ(
        rowsOf(rows, {"userAction", "TranCode", "Remarks", "ActionDate", "ActionTime", "Src"}),
        (QStringList{"Insert Reg for O'NEIL ADA|001/000000009||" + when,
                     "Insert Attendance for O'NEIL ADA|0010000042|"
                     "PRIVATE/GENERAL/CONSULTATION/(PRIVATE)|" +
                         when,
                     "Reg Fee for O'NEIL ADA|001/000000009||" + when}));
    // Nothing to record writes nothing.
    SpAudiTrail(desk->ctx, u"demo"_s, std::vector<AuditEntry>{}, u"FRONTDESK-2"_s);
    EXPECT_EQ(count(u"AuditTrail"_s), 3);
}

TEST_P(Audit, OverlongValuesAreCutToTheirSizes)
{
    const QString longName(80, QLatin1Char('u'));
    const QString longAction(1500, QLatin1Char('a'));
    const QString longComputer(150, QLatin1Char('c'));
    SpAudiTrail(desk->ctx, longName, longAction, QString(60, QLatin1Char('t')),
                QString(1200, QLatin1Char('r')), longComputer);
    const auto r = ws->connect()->queryOne(u"SELECT * FROM AuditTrail"_s);
    ASSERT_TRUE(r);
    EXPECT_EQ((std::vector<qsizetype>{r->text(u"userName").size(), r->text(u"userAction").size(),
                                      r->text(u"TranCode").size(), r->text(u"Remarks").size()}),
              (std::vector<qsizetype>{kAuditUserNameSize, kAuditActionSize, kAuditTranCodeSize,
                                      kAuditRemarksSize}));
    EXPECT_EQ(r->text(u"Src"), longComputer.left(kAuditSrcSize));
}

TEST_P(Audit, FailedEntryNeverFailsTheAction)
{
    ws->connect()->execScript(u"DROP TABLE AuditTrail"_s);
    EXPECT_NO_THROW(SpAudiTrail(desk->ctx, u"demo"_s, u"Registration"_s, u"001/000000001"_s,
                                QString(), u"FRONTDESK-2"_s));
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(Audit, EntryStandsWhenTheCallersTransactionRollsBack)
{
    // Only a server lets a second connection write while a transaction is open; on SQLite
    // the callers write their audit entries after the commit.
    if (GetParam() != db::Backend::Postgres)
        GTEST_SKIP() << "needs a server";
    auto save = desk->ctx.openConnection();
    {
        db::Transaction tx(*save);
        save->exec(u"INSERT INTO hPatientArea (AreaName) VALUES (?)"_s, {u"AUDIT TEST AREA"_s});
        SpAudiTrail(desk->ctx, u"demo"_s, u"Registration"_s, u"001/000000001"_s, QString(),
                    u"FRONTDESK-2"_s);
    }
    EXPECT_EQ(count(u"hPatientArea WHERE AreaName = 'AUDIT TEST AREA'"_s), 0);
    EXPECT_EQ(count(u"AuditTrail"_s), 1);
}

TOLMAR_INSTANTIATE_BACKENDS(ActivityLog);
TOLMAR_INSTANTIATE_BACKENDS(Audit);

}  // namespace
