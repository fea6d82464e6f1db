// The activity row of a run and the audit entry, on both backends: what each path writes,
// the number the session keeps, and that neither ever fails the action that called it.
#include "support/workspace.h"

#include "core/activitylog.h"
#include "core/audit.h"
#include "core/startup.h"

using namespace tolmar;
using namespace tolmar::test;

namespace {

class ActivityLog : public BackendTest {
protected:
    void SetUp() override
    {
        BackendTest::SetUp();
        desk->startUp();
        if (HasFatalFailure())
            return;
        desk->ctx.session().computerName = QStringLiteral("FRONTDESK-2");
    }
    std::optional<db::Row> activityRow(int sno) const
    {
        return ws->connect()->queryOne(QStringLiteral("SELECT * FROM UserActivities WHERE SNO = ?"),
                                       {sno});
    }
    int count(const QString& table) const
    {
        return ws->scalar(QStringLiteral("SELECT count(*) FROM ") + table).toInt();
    }
};

TEST_P(ActivityLog, OpenAndCloseWriteTheRowOfThePathTaken)
{
    const QString version = QStringLiteral("AppVersion=%1").arg(kVersionMajor);
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
    other.ctx.session().userName = QStringLiteral("manager");
    openActivityRow(desk->ctx, false, false, QStringLiteral("RECORDS"));
    openActivityRow(other.ctx, false, false, QStringLiteral("RECORDS"));
    openActivityRow(desk->ctx, false, false, QStringLiteral("RECORDS"));
    const int mine = desk->ctx.session().activitySNo;
    const int theirs = other.ctx.session().activitySNo;
    EXPECT_NE(mine, theirs);
    EXPECT_EQ(activityRow(mine)->text(u"Username"), QStringLiteral("demo"));
    EXPECT_EQ(activityRow(theirs)->text(u"Username"), QStringLiteral("manager"));
}

TEST_P(ActivityLog, ReloadingTheDefaultsOpensNoSecondRow)
{
    openActivityRow(desk->ctx, false, false, QStringLiteral("RECORDS"));
    const int sno = desk->ctx.session().activitySNo;
    ASSERT_EQ(runStartup(desk->ctx).outcome, StartupResult::Ok);
    EXPECT_EQ(count(QStringLiteral("UserActivities")), 1);
    EXPECT_EQ(desk->ctx.session().activitySNo, sno);
}

TEST_P(ActivityLog, CloseOfANumberNoLongerInTheTableDoesNothing)
{
    Session& s = desk->ctx.session();
    openActivityRow(desk->ctx, false, false, s.loginRole);
    ws->exec(QStringLiteral("DELETE FROM UserActivities"));
    closeActivityRow(desk->ctx, true, false, s.loginRole);
    EXPECT_EQ(count(QStringLiteral("UserActivities")), 0);
    EXPECT_TRUE(desk->prompter.messages().empty());
}

TEST_P(ActivityLog, FailedOpenIsShownAndKeepsTheNumberTheRunHad)
{
    Session& s = desk->ctx.session();
    s.activitySNo = 41;
    ws->connect()->execScript(QStringLiteral("DROP TABLE UserActivities"));
    openActivityRow(desk->ctx, false, false, s.loginRole);
    EXPECT_EQ(s.activitySNo, 41);
    ASSERT_EQ(desk->prompter.messages().size(), 1u);
    EXPECT_FALSE(desk->prompter.lastText().isEmpty());
}

TEST_P(ActivityLog, FailedCloseNeverReachesTheCaller)
{
    Session& s = desk->ctx.session();
    openActivityRow(desk->ctx, false, false, s.loginRole);
    ws->connect()->execScript(QStringLiteral("DROP TABLE UserActivities"));
    EXPECT_NO_THROW(closeActivityRow(desk->ctx, true, false, s.loginRole));
    EXPECT_TRUE(desk->prompter.messages().empty());
}

// ---------------------------------------------------------------------------------------

using Audit = ActivityLog;

TEST_P(Audit, EntryHoldsTheSevenValuesInOrder)
{
    desk->clock.setServer(QDateTime(QDate(2026, 11, 24), QTime(14, 7)));
    SpAudiTrail(desk->ctx, QStringLiteral("demo"), QStringLiteral("Change Password "),
                QStringLiteral("001/000000007"), QStringLiteral("O'Neil's card [old]"),
                QStringLiteral("FRONTDESK-2"));
    const auto rows = ws->connect()->query(QStringLiteral(
        "SELECT userName, userAction, ActionDate, ActionTime, TranCode, Remarks, Src "
        "FROM AuditTrail"));
    ASSERT_EQ(rows.size(), 1u);
    expectColumns(rows.front(), {"userName=demo", "userAction=Change Password ",
                                 "ActionDate=2026-11-24", "ActionTime=14:07",
                                 "TranCode=001/000000007", "Remarks=O'Neil's card [old]",
                                 "Src=FRONTDESK-2: from RECORDS"});
}

TEST_P(Audit, EntriesOfOneCommandGoInTogetherInTheirOrder)
{
    desk->clock.setServer(QDateTime(QDate(2026, 11, 24), QTime(9, 41)));
    SpAudiTrail(desk->ctx, QStringLiteral("demo"),
                {{QStringLiteral("Insert Reg for O'NEIL ADA"), QStringLiteral("001/000000009"), {}},
                 {QStringLiteral("Insert Attendance for O'NEIL ADA"), QStringLiteral("0010000042"),
                  QStringLiteral("PRIVATE/GENERAL/CONSULTATION/(PRIVATE)")},
                 {QStringLiteral("Reg Fee for O'NEIL ADA"), QStringLiteral("001/000000009"), {}}},
                QStringLiteral("FRONTDESK-2"));
    const auto rows = ws->connect()->query(QStringLiteral(
        "SELECT userAction, TranCode, Remarks, ActionDate, ActionTime, Src FROM AuditTrail "
        "ORDER BY SNo"));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows.rows[0].text(u"userAction"), QStringLiteral("Insert Reg for O'NEIL ADA"));
    EXPECT_EQ(rows.rows[1].text(u"TranCode"), QStringLiteral("0010000042"));
    EXPECT_EQ(rows.rows[1].text(u"Remarks"),
              QStringLiteral("PRIVATE/GENERAL/CONSULTATION/(PRIVATE)"));
    EXPECT_EQ(rows.rows[2].text(u"userAction"), QStringLiteral("Reg Fee for O'NEIL ADA"));
    for (const db::Row& r : rows.rows) {
        EXPECT_EQ(r.date(u"ActionDate"), QDate(2026, 11, 24));
        EXPECT_EQ(r.text(u"ActionTime"), QStringLiteral("09:41"));
        EXPECT_EQ(r.text(u"Src"), QStringLiteral("FRONTDESK-2: from RECORDS"));
    }
    // Nothing to record writes nothing.
    SpAudiTrail(desk->ctx, QStringLiteral("demo"), std::vector<AuditEntry>{},
                QStringLiteral("FRONTDESK-2"));
    EXPECT_EQ(count(QStringLiteral("AuditTrail")), 3);
}

TEST_P(Audit, OverlongValuesAreCutToTheirSizes)
{
    const QString longName(80, QLatin1Char('u'));
    const QString longAction(1500, QLatin1Char('a'));
    const QString longComputer(150, QLatin1Char('c'));
    SpAudiTrail(desk->ctx, longName, longAction, QString(60, QLatin1Char('t')),
                QString(1200, QLatin1Char('r')), longComputer);
    const auto r = ws->connect()->queryOne(QStringLiteral("SELECT * FROM AuditTrail"));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->text(u"userName").size(), kAuditUserNameSize);
    EXPECT_EQ(r->text(u"userAction").size(), kAuditActionSize);
    EXPECT_EQ(r->text(u"TranCode").size(), kAuditTranCodeSize);
    EXPECT_EQ(r->text(u"Remarks").size(), kAuditRemarksSize);
    EXPECT_EQ(r->text(u"Src"), longComputer.left(kAuditSrcSize));
}

TEST_P(Audit, FailedEntryNeverFailsTheAction)
{
    ws->connect()->execScript(QStringLiteral("DROP TABLE AuditTrail"));
    EXPECT_NO_THROW(SpAudiTrail(desk->ctx, QStringLiteral("demo"), QStringLiteral("Registration"),
                                QStringLiteral("001/000000001"), QString(),
                                QStringLiteral("FRONTDESK-2")));
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
        save->exec(QStringLiteral("INSERT INTO hPatientArea (AreaName) VALUES (?)"),
                   {QStringLiteral("AUDIT TEST AREA")});
        SpAudiTrail(desk->ctx, QStringLiteral("demo"), QStringLiteral("Registration"),
                    QStringLiteral("001/000000001"), QString(), QStringLiteral("FRONTDESK-2"));
    }
    EXPECT_EQ(count(QStringLiteral("hPatientArea WHERE AreaName = 'AUDIT TEST AREA'")), 0);
    EXPECT_EQ(count(QStringLiteral("AuditTrail")), 1);
}

TOLMAR_INSTANTIATE_BACKENDS(ActivityLog);
TOLMAR_INSTANTIATE_BACKENDS(Audit);

}  // namespace
