#include "core/mainwatch.h"

#include "core/appcontext.h"

#include <QStringList>

namespace tolmar {

void addNoticeLine(QString& notice, const QString& line)
{
    if (!notice.isEmpty() && !notice.endsWith(QLatin1Char('\n')))
        notice += QLatin1Char('\n');
    notice += line;
}

bool MainWatch::sameDayReferralsWaiting(const QDate& serverDate)
{
    return !m_ctx.db()
                .query(QStringLiteral("select ID,pSurname,pFirstname,consultID,apptDate,ReferTo "
                                      "from qryhreferal where attendedToByRec = 0 "
                                      "and apptDate = refDate and apptDate = ? LIMIT 1"),
                       {serverDate})
                .empty();
}

ExpiredAdmissionSignal MainWatch::expiredAdmissions(const QDateTime& serverNow)
{
    static const QStringList limited{QStringLiteral("NHIS"), QStringLiteral("PHIS"),
                                     QStringLiteral("HMO")};
    const auto rows = m_ctx.db().query(
        QStringLiteral("select ClientCat,ExtendAdmissionLimitTo from qryhAdmission "
                       "where COALESCE(ExtendAdmissionLimitTo, ?) <= ?"),
        {serverNow, serverNow});
    // Walking the rows, each other kind stops the flashing and the first limited kind
    // starts it for good: so any limited row wins, and rows of other kinds alone stop it.
    if (rows.empty())
        return ExpiredAdmissionSignal::Unchanged;
    for (const auto& row : rows.rows)
        if (limited.contains(row.text(u"ClientCat")))
            return ExpiredAdmissionSignal::Start;
    return ExpiredAdmissionSignal::Stop;
}

bool MainWatch::referralBookDue(const QDate& serverDate)
{
    return !m_ctx.db()
                .query(QStringLiteral("select * from vwHReferal "
                                      "where ApptDate = ? and AttendedToByRec = ? LIMIT 1"),
                       {serverDate, QStringLiteral("NO")})
                .empty();
}

void MainWatch::verifyApptDate(QString& notice, const QDate& today)
{
    if (!m_ctx.db()
             .query(QStringLiteral("select * from qryhAppt where ApptDate = ? LIMIT 1"), {today})
             .empty())
        addNoticeLine(notice, QStringLiteral("--Some Patients Appt Date is Due Today--"));
}

void MainWatch::verifyDueDelivery(QString& notice, const QDate& today)
{
    if (!m_ctx.db()
             .query(QStringLiteral("select * from qryhVisits where recdate = ? LIMIT 1"), {today})
             .empty())
        addNoticeLine(notice, QStringLiteral("--There are Visits to the clinic Today--"));
}

void MainWatch::verifyAdmissionWaitList(QString& notice)
{
    if (!m_ctx.db()
             .query(QStringLiteral("select Refdate as Date,reftime as Time,Fullname,Sex,Age,"
                                   "Coyname,DocName,RoomNo from vwAdmissionWaitList LIMIT 1"))
             .empty())
        addNoticeLine(notice, QStringLiteral("--Some Patients have been sent on Admission--"));
}

}  // namespace tolmar
