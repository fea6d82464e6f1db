#pragma once
// Which doctor a visit goes to: the doctors of a clinic today (from the clinics they may
// serve, or from the rooms they sit in when rooms are assigned), the one with the fewest
// patients, and the queues the desks watch.

#include "platform/db.h"

#include <QDate>
#include <QString>

#include <optional>
#include <vector>

namespace tolmar::clinical {

struct DoctorEntry {
    QString empID;
    QString doctor;
    QString roomNo;
    // "{Doctor} @ {RoomNo} [{empID}]", as the doctor box lists it.
    QString entry() const;
};

class DoctorAllocation {
public:
    // roomsAssigned: the Assign_Doctors_to_Consulting_Rooms default is "YES".
    DoctorAllocation(db::Connection& c, const QDate& today, bool roomsAssigned)
        : m_c(c), m_today(today), m_roomsAssigned(roomsAssigned)
    {
    }

    // Whether any doctor has been put in a room today.
    bool anyRoomAssignedToday();
    // The clinic's doctors for today, by name. With rooms assigned, only those sitting in a
    // room and not signed off; otherwise every doctor of the clinic, in room "RM XXX".
    std::vector<DoctorEntry> doctorsFor(const QString& clinicID);
    // The doctor of the clinic with the fewest patients today (ties: whichever comes first).
    std::optional<DoctorEntry> leastLoaded(const QString& clinicID);

    // The statement and values of the doctors' queue for today (grdDoc).
    static QString waitListSql();
    // The patients behind one doctor's count (frmDocWait); values: date, empID, clinic ID.
    static QString docWaitSql();
    // Assignments of past days are dropped whenever the queue is refreshed.
    int purgePastAssignments();

private:
    db::Connection& m_c;
    QDate m_today;
    bool m_roomsAssigned;
};

// The patient is on admission now (qryhAdmission).
bool isOnAdmission(db::Connection& c, const QString& pno);

// The clinic has days of its own (vwClinicDays), so an appointment picks one of them.
bool hasClinicDays(db::Connection& c, const QString& clinicID);

}  // namespace tolmar::clinical
