#include "messaging/smsqueue.h"

#include "core/appcontext.h"
#include "core/formats.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QDebug>

namespace tolmar {

namespace {

const QString kEndOfDay = QStringLiteral("11:59 PM");

struct Fragments {
    int sNoCat = 0;
    QString fullname;
    QString fullname2;
    QString details;
    QString recipient;
};

Fragments readFragments(db::Connection& c, const SmsRequest& r)
{
    const QString view = r.kind == kSmsAppointment ? QStringLiteral("vwFullnamePatAppt")
                                                   : QStringLiteral("vwFullnamePatAttend");
    // The rescheduling form has no use for the short salutation and does not ask for it.
    const QString columns = r.rescheduling
                                ? QStringLiteral("SNoCat, Fullname, Details, Details2, Remarks, "
                                                 "PhoneNo AS Recipient")
                                : QStringLiteral("SNoCat, Fullname, Fullname2, Details, Details2, "
                                                 "Remarks, PhoneNo AS Recipient");
    Fragments f;
    const auto row = c.queryOne(QStringLiteral("SELECT %1 FROM %2 WHERE pno = ? AND Category = ? "
                                               "LIMIT 1")
                                    .arg(columns, view),
                                {r.pno, r.kind});
    if (!row)
        return f;  // a patient the view does not know is still sent what we have
    f.sNoCat = row->toInt(u"SNoCat");
    f.fullname = row->text(u"Fullname");
    if (!r.rescheduling)
        f.fullname2 = row->text(u"Fullname2");
    f.details = row->text(u"Details");
    f.recipient = row->text(u"Recipient");
    return f;
}

struct OutRow {
    QString message;
    QDate sendDate;
    QString sendTime;
};

}  // namespace

QString normalisePhone(const QString& recipient, const QString& fallback)
{
    const QString phone = recipient.isEmpty() ? fallback : recipient;
    if (phone.size() == 11)
        return QStringLiteral("234") + phone.mid(1);
    return phone;
}

int composeSms(AppContext& ctx, const SmsRequest& r)
{
    const Session& s = ctx.session();
    // Only "YES" queues: any other value, "NO" included, leaves the queue alone.
    if (!AppDefaults::isYes(s.defaults.SendSMS))
        return 0;
    auto busy = ctx.prompter().busy();
    try {
        db::Connection& c = ctx.db(db::Database::SmsCenter);
        QString designation;
        if (!r.clinic.isEmpty()) {
            const auto row = c.queryOne(
                QStringLiteral("SELECT Designation FROM vwClinicTypesForSMS WHERE ClinicName = ?"),
                {r.clinic});
            if (row)
                designation = row->text(u"Designation");
        }
        const Fragments f = readFragments(c, r);
        // The name as the message opens with it: the short salutation, or the full one when
        // rescheduling, which does not read the short one.
        const QString greeting = r.rescheduling ? f.fullname : f.fullname2;

        std::vector<OutRow> rows;
        QString remark;
        if (r.kind == kSmsAppointment) {
            const QString tail =
                QStringLiteral("\r\nDate: %1\r\nTime: %2\r\nResponse: %3")
                    .arg(fmt::shortDate(r.date), s.defaults.Clinic_Period, s.defaults.Clinic_PhoneNo);
            const QString text =
                designation.isEmpty()
                    ? QStringLiteral("%1\r\n%2 You have %3 Clinic APPOINTMENT")
                          .arg(s.hospitalName, f.fullname, r.clinic)
                    : QStringLiteral("%1\r\n%2 You have an APPOINTMENT with the %3")
                          .arg(s.hospitalName, f.fullname, designation);
            remark = QStringLiteral("APPOINTMENT");
            // An appointment further off than tomorrow is announced again the evening before.
            if (r.date > s.serverDate.addDays(1))
                rows.push_back({text + tail, r.date.addDays(-1), kEndOfDay});
            rows.push_back({text + tail, s.serverDate, kEndOfDay});
        } else {
            remark = QStringLiteral("ATTENDANCE");
            rows.push_back({QStringLiteral("%1\r\n%2 %3").arg(s.hospitalName, greeting, f.details),
                            s.serverDate, fmt::shortTime(r.time)});
        }

        const QString phone = normalisePhone(f.recipient, r.fallbackPhone);
        QString name = f.fullname;
        name.remove(QStringLiteral("Dear "));
        const QVariant catName = r.rescheduling ? QVariant() : QVariant(r.kind);
        for (const OutRow& o : rows)
            c.exec(QStringLiteral("INSERT INTO MessageOut (Date, Message, Phone, isSent, SNoCat, "
                                  "SendDate, SendTime, Remarks, Remarks2, Catname, fullName, Code) "
                                  "VALUES (?, ?, ?, 0, ?, ?, ?, ?, ?, ?, ?, ?)"),
                   {s.serverDate, o.message, phone, f.sNoCat, o.sendDate, o.sendTime, remark,
                    r.reference, catName, name, r.code});
        return int(rows.size());
    } catch (const std::exception& e) {
        // The visit is saved whatever happens here; the gateway simply has nothing to send.
        qWarning().noquote() << "SMS not queued for" << r.pno << ":" << e.what();
        return 0;
    }
}

}  // namespace tolmar
