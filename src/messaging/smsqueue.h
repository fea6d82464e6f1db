#pragma once
// The SMS queue: messages composed on an event (an attendance, an appointment) and left in
// SmsCenter's MessageOut for the gateway that sends them. The queue never stands in the way
// of the desk: a failure is swallowed and the caller goes on.

#include <QDate>
#include <QString>
#include <QTime>

namespace tolmar {

class AppContext;

inline const QString kSmsAppointment = QStringLiteral("APPT");
inline const QString kSmsAttendance = QStringLiteral("ATTEND");

struct SmsRequest {
    QString clinic;
    QString pno;
    QString kind;       // kSmsAppointment or kSmsAttendance
    QString reference;  // Remarks2: for appointments the referral, so it can be found again
    QDate date;         // the appointment's day
    QTime time;         // the attendance's time
    QString fallbackPhone;
    QString code;
    // Rescheduling an appointment names the patient by the full salutation and leaves the
    // category column empty.
    bool rescheduling = false;
};

// A number of exactly 11 characters is local: its leading 0 becomes 234. Others go as they
// are. An empty recipient takes the fallback.
QString normalisePhone(const QString& recipient, const QString& fallback);

// Composes and queues the message (and, for an appointment after tomorrow, a reminder the
// day before). Returns the rows written; 0 when SMS is off or anything failed.
int composeSms(AppContext& ctx, const SmsRequest& request);

}  // namespace tolmar
