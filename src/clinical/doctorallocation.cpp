#include "clinical/doctorallocation.h"

#include "core/listentry.h"

namespace tolmar::clinical {

QString DoctorEntry::entry() const
{
    return listentry::make(QStringLiteral("%1 @ %2").arg(doctor, roomNo), empID);
}

bool DoctorAllocation::anyRoomAssignedToday()
{
    return m_c.queryOne(QStringLiteral("SELECT docNo FROM hConRoomAssign WHERE schdDate = ? "
                                       "LIMIT 1"),
                        {m_today})
        .has_value();
}

std::vector<DoctorEntry> DoctorAllocation::doctorsFor(const QString& clinicID)
{
    const db::Result r =
        m_roomsAssigned
            ? m_c.query(QStringLiteral("SELECT DISTINCT EmpID, Doctor, ConRoomNo AS RoomNo "
                                       "FROM vwDocClinicAndPatAssignedAll WHERE IsOff = 0 AND "
                                       "\"Date\" = ? AND ClinicID = ? ORDER BY Doctor"),
                        {m_today, clinicID})
            : m_c.query(QStringLiteral("SELECT DISTINCT EmpID, Doctor, 'RM XXX' AS RoomNo "
                                       "FROM qryUserRoleClinic WHERE ClinicID = ? "
                                       "ORDER BY Doctor"),
                        {clinicID});
    std::vector<DoctorEntry> out;
    out.reserve(r.size());
    for (const db::Row& row : r.rows)
        out.push_back({row.text(u"EmpID"), row.text(u"Doctor"), row.text(u"RoomNo")});
    return out;
}

std::optional<DoctorEntry> DoctorAllocation::leastLoaded(const QString& clinicID)
{
    const auto row = m_c.queryOne(
        QStringLiteral("SELECT EmpID, Doctor, RoomNo FROM vwDocMinNumOfPat WHERE IsOff = 0 AND "
                       "\"Date\" = ? AND ClinicID = ? ORDER BY NumOfPat LIMIT 1"),
        {m_today, clinicID});
    if (!row)
        return std::nullopt;
    return DoctorEntry{row->text(u"EmpID"), row->text(u"Doctor"), row->text(u"RoomNo")};
}

QString DoctorAllocation::waitListSql()
{
    // The grid shows the names as its captions: quoted, PostgreSQL keeps their case.
    return QStringLiteral("SELECT DISTINCT \"Date\", RoomNo AS \"RoomNo\", "
                          "ClinicID AS \"ClinicID\", Doctor AS \"Doctor\", "
                          "NumOfPat AS \"NumOfPat\", EmpID AS \"EmpID\" "
                          "FROM vwDocWaitingListGrouped WHERE \"Date\" = ? ORDER BY \"Doctor\"");
}

QString DoctorAllocation::docWaitSql()
{
    return QStringLiteral("SELECT DISTINCT \"Date\", RoomNo AS \"RoomNo\", "
                          "ClinicName AS \"ClinicName\", Doctor AS \"Doctor\", "
                          "Patient AS \"Patient\" FROM vwDocWaitingList "
                          "WHERE \"Date\" = ? AND empID = ? AND ClinicID = ? "
                          "ORDER BY \"Patient\"");
}

int DoctorAllocation::purgePastAssignments()
{
    return m_c.exec(QStringLiteral("DELETE FROM hConRoomAssign WHERE schdDate < ?"), {m_today});
}

bool isOnAdmission(db::Connection& c, const QString& pno)
{
    return c.queryOne(QStringLiteral("SELECT pno FROM qryhAdmission WHERE pno = ? LIMIT 1"),
                      {pno})
        .has_value();
}

bool hasClinicDays(db::Connection& c, const QString& clinicID)
{
    return c.queryOne(QStringLiteral("SELECT Clinic FROM vwClinicDays WHERE Clinic = ? LIMIT 1"),
                      {clinicID})
        .has_value();
}

}  // namespace tolmar::clinical
