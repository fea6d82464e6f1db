#include "core/appdefaults.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "core/formats.h"
#include "platform/prompt.h"

#include <QHash>

#include <cmath>
#include <limits>
#include <stdexcept>

namespace tolmar {

namespace {

using db::Database;

class DefaultsReader {
public:
    explicit DefaultsReader(AppContext& ctx) : m_ctx(ctx) {}

    // The raw value of a key; nullopt when its row is absent, "" when the value is NULL.
    std::optional<QString> raw(Database db, const QString& key)
    {
        auto it = m_tables.find(db);
        if (it == m_tables.end()) {
            QHash<QString, QString> table;
            const auto rows = m_ctx.db(db).query(QStringLiteral("select ID, idval from AppDefaults"));
            for (const auto& r : rows.rows)
                table.insert(r.text(u"ID"), r.text(u"idval"));
            it = m_tables.insert(db, table);
        }
        const auto v = it->constFind(key);
        if (v == it->constEnd())
            return std::nullopt;
        return *v;
    }

    QString text(Database db, const QString& key, const QString& absent,
                 const QString& absentMessage = QString())
    {
        if (auto v = raw(db, key))
            return *v;
        warn(absentMessage);
        return absent;
    }

    qint64 whole(Database db, const QString& key, qint64 absent, qint64 lo, qint64 hi,
                 const QString& absentMessage = QString())
    {
        const auto v = raw(db, key);
        if (!v) {
            warn(absentMessage);
            return absent;
        }
        bool ok = false;
        const double d = v->trimmed().toDouble(&ok);
        if (!ok)
            throw std::runtime_error(
                QStringLiteral("Type mismatch: the default %1 holds \"%2\", not a whole number")
                    .arg(key, *v)
                    .toStdString());
        const qint64 n = qint64(std::nearbyint(d));
        if (n < lo || n > hi)
            throw std::runtime_error(
                QStringLiteral("Overflow: the default %1 holds %2").arg(key, *v).toStdString());
        return n;
    }

    // A boolean the way the old settings were read: True/False or a number.
    bool boolean(Database db, const QString& key, bool absent)
    {
        const auto v = raw(db, key);
        if (!v)
            return absent;
        const QString s = v->trimmed();
        if (s.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
            return true;
        if (s.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
            return false;
        bool ok = false;
        const double d = s.toDouble(&ok);
        if (ok)
            return d != 0;
        throw std::runtime_error(
            QStringLiteral("Type mismatch: the default %1 holds \"%2\", not True or False")
                .arg(key, *v)
                .toStdString());
    }

private:
    void warn(const QString& message)
    {
        if (!message.isEmpty())
            m_ctx.prompter().inform(message, QString(), Icon::Information);
    }

    AppContext& m_ctx;
    QHash<Database, QHash<QString, QString>> m_tables;
};

[[noreturn]] void fatal(const QString& message)
{
    throw FatalCondition(message, kExitRequiredDefault);
}

}  // namespace

void loadAppDefaults(AppContext& ctx, const std::function<void()>& versionGate)
{
    constexpr auto H = Database::Hospital;
    constexpr auto A = Database::Accounting;
    constexpr auto S = Database::SmsCenter;
    constexpr qint64 i32lo = std::numeric_limits<qint32>::min();
    constexpr qint64 i32hi = std::numeric_limits<qint32>::max();
    constexpr qint64 i16lo = std::numeric_limits<qint16>::min();
    constexpr qint64 i16hi = std::numeric_limits<qint16>::max();

    DefaultsReader r(ctx);
    AppDefaults& d = ctx.session().defaults;

    d.PVT_CONFEE_SNO = int(r.whole(H, QStringLiteral("PVT_CONFEE_SNO"), 0, i32lo, i32hi,
        QStringLiteral("System Default Value For Consultation Fee needed for Private ")));
    d.PVT_REGFEE_SNO = int(r.whole(H, QStringLiteral("PVT_REGFEE_SNO"), 0, i32lo, i32hi,
        QStringLiteral("System Default Value For Registration Fee needed for Private ")));
    if (auto v = r.raw(H, QStringLiteral("PRIVATE")))
        d.PRIVATE = *v;
    else {
        d.PRIVATE.clear();
        fatal(QStringLiteral("System Default Value needed for Private Tariff"));
    }
    d.AUTO_CARD_NO = r.text(H, QStringLiteral("AUTO_CARD_NO"), QStringLiteral("YES"));
    d.PIXLOC = r.text(H, QStringLiteral("PIXLOC"), QStringLiteral("DB"));
    d.Coy_Code = r.text(H, QStringLiteral("Coy_Code"), QStringLiteral("SHORT"));
    d.SendSMS = r.text(H, QStringLiteral("SendSMS"), QStringLiteral("NO"));
    if (AppDefaults::isYes(d.SendSMS))
        d.SendFrom = r.text(S, QStringLiteral("SendFrom"), QStringLiteral("Corvane"));
    d.Revtype_Consult = r.text(H, QStringLiteral("Revtype_Consult"), QStringLiteral("CONSULTATION"));
    if (auto v = r.raw(H, QStringLiteral("CoyID"))) {
        if (v->isEmpty())
            fatal(QStringLiteral("CoyID needed for Posting"));
        d.CoyID = *v;
    } else {
        d.CoyID = QStringLiteral("0001");
    }
    d.AcctPostOn = r.boolean(H, QStringLiteral("AcctPostOn"), false);
    if (d.AcctPostOn) {
        const auto close = r.raw(A, QStringLiteral("AcctPostLastPeriodCloseDate"));
        if (!close)
            fatal(QStringLiteral("AcctPostLastPeriodCloseDate needed for Posting"));
        const QDate closeDate = fmt::parseDate(*close);
        if (!closeDate.isValid())
            throw std::runtime_error(
                QStringLiteral("Type mismatch: the default AcctPostLastPeriodCloseDate holds "
                               "\"%1\", not a date")
                    .arg(*close)
                    .toStdString());
        d.AcctPostLastPeriodCloseDate = closeDate;
        const auto receivable = r.raw(H, QStringLiteral("Acct_Receivable"));
        if (!receivable)
            fatal(QStringLiteral("Acct_Receivable Acct Group Required"));
        d.Acct_Receivable = *receivable;
        d.AcctPostBeyondCurrentCalendarMonth =
            r.text(A, QStringLiteral("AcctPostBeyondCurrentCalendarMonth"), QStringLiteral("NO"));
        d.AcctPostBelowLastPeriodClose =
            r.text(A, QStringLiteral("AcctPostBelowLastPeriodClose"), QStringLiteral("NO"));
    }
    d.LockOldVersion = r.text(H, QStringLiteral("LockOldVersion"), QStringLiteral("NO"));
    if (versionGate)
        versionGate();
    d.AppLocation = r.text(H, QStringLiteral("AppLocation"), QStringLiteral("Lagos"));
    d.LockAttendanceForInPatients =
        r.text(H, QStringLiteral("LockAttendanceForInPatients"), QStringLiteral("YES"));
    d.LockMultipleAttendnace =
        r.text(H, QStringLiteral("LockMultipleAttendnace"), QStringLiteral("YES"));
    d.CallDefaults = r.text(H, QStringLiteral("CallDefaults"), QStringLiteral("HOURLY"));
    d.shutDown = r.text(H, QStringLiteral("shutDown"), QStringLiteral("NO"));
    d.SearchValue = r.text(H, QStringLiteral("SearchValue"), QStringLiteral("20"));
    d.EnableDOBExport = r.text(H, QStringLiteral("EnableDOBExport"), QStringLiteral("NO"));
    d.SearchWaitTime = int(r.whole(H, QStringLiteral("SearchWaitTime"), 3000, i16lo, i16hi));
    d.TimeLineVersion = r.text(H, QStringLiteral("TimeLineVersion"), QStringLiteral("OLD"));
    d.Clinic_PhoneNo = r.text(H, QStringLiteral("Clinic_PhoneNo"), QString(),
        QStringLiteral("Clinic_PhoneNo Default Required to Send SMS Appointments"));
    d.Clinic_Period =
        r.text(H, QStringLiteral("Clinic_Period"), QStringLiteral("Between 10am - 3pm"));
    d.Apologies = r.text(H, QStringLiteral("Apologies"), QString());
    d.CalcDebtByPNo = r.text(H, QStringLiteral("CalcDebtByPNo"), QStringLiteral("YES"));
    d.Admission_Limit_Exists =
        r.text(H, QStringLiteral("Admission_Limit_Exists"), QStringLiteral("YES"));
    d.App_Location_Change = r.text(H, QStringLiteral("App_Location_Change"), QStringLiteral("NO"));
    d.Database_Upgraded = r.text(H, QStringLiteral("Database_Upgraded"), QStringLiteral("NO"));
    d.Show_Diagnosis_In_Con_Hist_Page =
        r.text(H, QStringLiteral("Show_Diagnosis_In_Con_Hist_Page"), QStringLiteral("YES"));
    d.Show_New_Con_Hist_Page =
        r.text(H, QStringLiteral("Show_New_Con_Hist_Page"), QStringLiteral("YES"));
    d.Assign_Doctors_to_Consulting_Rooms =
        r.text(H, QStringLiteral("Assign_Doctors_to_Consulting_Rooms"), QStringLiteral("NO"));
    d.Assign_Patients_to_Doctors =
        r.text(H, QStringLiteral("Assign_Patients_to_Doctors"), QStringLiteral("YES"));
    d.Private_Client_Only = r.text(H, QStringLiteral("Private_Client_Only"), QStringLiteral("NO"));
    d.Intercept_HMO_Treatment =
        r.text(H, QStringLiteral("Intercept_HMO_Treatment"), QStringLiteral("YES"));
    d.Mail_Activated = r.text(H, QStringLiteral("Mail_Activated"), QStringLiteral("No"));
    if (d.mailActivated()) {
        // The installation supplies the real mail host and sender; these only keep a
        // half-configured desk from sending anywhere but the machine itself.
        d.Mail_Server = r.text(H, QStringLiteral("Mail_Server"), QStringLiteral("localhost"));
        d.Mail_UserFrom =
            r.text(H, QStringLiteral("Mail_UserFrom"), QStringLiteral("noreply@localhost"));
        d.Mail_Password = r.text(H, QStringLiteral("Mail_Password"), QStringLiteral("nimbl#482"));
        d.Mail_Client = r.text(H, QStringLiteral("Mail_Client"), ctx.session().hospitalName);
        d.Mail_SmtpPort = int(r.whole(H, QStringLiteral("Mail_SmtpPort"), 8889, i16lo, i16hi));
        d.Mail_Subject = r.text(H, QStringLiteral("Mail_Subject"), QStringLiteral("Client Mail"));
    }
}

}  // namespace tolmar
