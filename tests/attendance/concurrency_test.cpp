// Many desks taking visits for the same patients at the same moment. getIDNo keeps the
// numbers apart; the claim of the lines that wait for a visit must give each line to exactly
// one visit, and leave every visit its own "ATTENDANCE" line.
#include "support/workspace.h"

#include "clinical/attendance.h"


using namespace tolmar;
using namespace tolmar::test;

namespace {

class ConcurrentVisits : public BackendTest {};

clinical::AttendanceForm visitOf(const QString& pno)
{
    clinical::AttendanceForm f;
    f.pno = pno;
    f.patient = QStringLiteral("SHARED PATIENT [%1]").arg(pno);
    f.clientCat = QStringLiteral("CORPORATE");
    f.coyName = QStringLiteral("0002");
    f.billTo = QStringLiteral("DANG");
    f.clinic = QStringLiteral("GENERAL");
    f.purpose = f.purposeClass = QStringLiteral("CONSULTATION");
    f.feeForService = f.hmoReferral = QStringLiteral("NO");
    return f;
}

TEST_P(ConcurrentVisits, EveryVisitOnceWithItsLineAndEveryWaitingLineClaimedOnce)
{
    // PostgreSQL takes the full load; on SQLite the desks queue on the file's write lock.
    const bool pg = ws->backend() == db::Backend::Postgres;
    const int desks = pg ? 8 : 3;
    const int visits = pg ? 50 : 15;
    const QStringList patients{QStringLiteral("001/000000001"), QStringLiteral("001/000000002")};
    for (const QString& pno : patients)
        ws->exec(QStringLiteral("INSERT INTO hPatients (PNo, psurname, CoyName) "
                                "VALUES (?, 'SHARED', '0002')"),
                 {pno});
    const int failures = atManyDesks(*ws, desks, visits, [&](Desk& desk, int d, int n) {
        const QString pno = patients.at((d + n) % patients.size());
        // A registration line left waiting by another desk's save.
        desk.ctx.db().exec(QStringLiteral("INSERT INTO billAccum (drgName, PNo, consultID) "
                                          "VALUES ('REGISTRATION', ?, '')"),
                           {pno});
        return !clinical::saveAttendance(desk.ctx, visitOf(pno)).isEmpty();
    });
    EXPECT_EQ(failures, 0);

    auto c = ws->connect();
    auto number = [&](const char* sql) { return c->scalar(QString::fromLatin1(sql)).toInt(); };
    const int total = desks * visits;
    EXPECT_EQ(number("SELECT COUNT(DISTINCT consultID) FROM hRecords"), total);
    EXPECT_EQ(number("SELECT COUNT(*) FROM hRecords"), total);
    // A visit with anything but one attendance line.
    EXPECT_EQ(number("SELECT COUNT(*) FROM hRecords r WHERE (SELECT COUNT(*) FROM billAccum b "
                     "WHERE b.consultID = r.consultID AND b.drgName = 'ATTENDANCE') <> 1"),
              0);
    // Every waiting line went to a visit of its own patient; none is left or orphaned.
    EXPECT_EQ(number("SELECT COUNT(*) FROM billAccum b WHERE b.drgName = 'REGISTRATION' AND "
                     "EXISTS (SELECT 1 FROM hRecords r WHERE r.consultID = b.consultID AND "
                     "r.PNo = b.PNo)"),
              total);
    EXPECT_EQ(number("SELECT COUNT(*) FROM billAccum b WHERE NOT EXISTS (SELECT 1 FROM "
                     "hRecords r WHERE r.consultID = b.consultID)"),
              0);
}

}  // namespace

TOLMAR_INSTANTIATE_BACKENDS(ConcurrentVisits);
