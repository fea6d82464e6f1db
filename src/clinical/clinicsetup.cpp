#include "clinical/clinicsetup.h"

#include "core/appcontext.h"
#include "core/audit.h"
#include "core/command.h"
#include "core/formats.h"
#include "core/listentry.h"

#include <QRegularExpression>
#include <QTime>

#include <cmath>
#include <optional>

namespace tolmar::clinical {

namespace {

std::optional<double> amount(const QString& typed)
{
    bool ok = false;
    const double v = QString(typed).remove(QLatin1Char(',')).trimmed().toDouble(&ok);
    return ok ? std::optional<double>(v) : std::nullopt;
}

// A row that another desk removed while this one had it on screen: nothing is written.
void requireChanged(int rows, const QString& what)
{
    if (rows == 0)
        throw CheckFailed(goneMessage(what));
}

}  // namespace

QAbstractItemModel* roomsModel(db::Connection& c, QObject* parent)
{
    return c.gridModel(QStringLiteral("SELECT ConRmName AS \"RoomNo\", Location AS \"Location\" "
                                      "FROM hConsultingRooms ORDER BY ConRmName"),
                       {}, parent);
}

QAbstractItemModel* clinicsModel(db::Connection& c, QObject* parent)
{
    return c.gridModel(
        QStringLiteral("SELECT ClinicID AS \"ClinicID\", ClinicName AS \"ClinicName\", "
                       "Consultant AS \"Consultant\", Designation AS \"Designation\", "
                       "EmpID AS \"EmpID\", RegFee AS \"RegFee\", "
                       "ConFee AS \"ConsultationFee\" FROM vwClinicTypes ORDER BY ClinicName"),
        {}, parent);
}

QAbstractItemModel* clinicDaysModel(db::Connection& c, const QString& clinicID, QObject* parent)
{
    const QString columns = QStringLiteral(
        "SELECT SNo AS \"SNo\", Clinic AS \"Clinic\", ClinicDay AS \"ClinicDay\", "
        "ClinicTime AS \"ClinicTime\", PatLimit AS \"PatLimit\" FROM vwClinicDays ");
    if (clinicID.isEmpty())
        return c.gridModel(columns + QStringLiteral("ORDER BY Clinic, SNoID"), {}, parent);
    return c.gridModel(columns + QStringLiteral("WHERE Clinic = ? ORDER BY SNoID"), {clinicID},
                       parent);
}

QAbstractItemModel* attendItemsModel(db::Connection& c, QObject* parent)
{
    return c.gridModel(QStringLiteral("SELECT DISTINCT Description AS \"ItemName\" FROM "
                                      "hrecordsMonitor WHERE Remarks = 'SEED' "
                                      "ORDER BY \"ItemName\""),
                       {}, parent);
}

QStringList clinicEntries(db::Connection& c)
{
    return listentry::fromRows(c.query(QStringLiteral("SELECT DISTINCT clinicID, ClinicName FROM "
                                                      "clinicTypes ORDER BY ClinicName"))
                                   .rows,
                               u"ClinicName", u"clinicID");
}

QStringList consultantEntries(db::Connection& c)
{
    return listentry::fromRows(
        c.query(QStringLiteral("SELECT DISTINCT empID, fullname FROM vwUsersDoctor WHERE "
                               "upper(loginRole) = 'CONSULTING' AND upper(AccountStatus) = "
                               "'ENABLED' ORDER BY fullname"))
            .rows,
        u"fullname", u"empID");
}

QStringList weekdays(db::Connection& c)
{
    QStringList out;
    for (const db::Row& r :
         c.query(QStringLiteral("SELECT DISTINCT WkDay, SNo FROM Weekdays ORDER BY SNo")).rows)
        out << r.text(u"WkDay");
    return out;
}

QString goneMessage(const QString& what)
{
    return QStringLiteral("This %1 is no longer on file: another desk has changed or deleted "
                          "it. Nothing was saved. Click Refresh and try again.")
        .arg(what);
}

void saveRoom(AppContext& ctx, const QString& oldName, const QString& name,
              const QString& location)
{
    const QString room = listentry::stripBrackets(name);
    if (room.isEmpty())
        throw CheckFailed(QStringLiteral("Specify  Room Name"), QStringLiteral("txtID"));
    if (location.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Specify  Room Location"),
                          QStringLiteral("txtLocation"));
    auto c = ctx.openConnection();
    const CheckFailed taken(QStringLiteral("A Consulting Room named %1 already exists").arg(room),
                            QStringLiteral("txtID"));
    refuseDuplicate(taken, [&] {
        if (oldName.isEmpty())
            c->exec(QStringLiteral("INSERT INTO hConsultingRooms (ConRmName, Location) "
                                   "VALUES (?, ?)"),
                    {room, location.trimmed()});
        else
            requireChanged(c->exec(QStringLiteral("UPDATE hConsultingRooms SET ConRmName = ?, "
                                                  "Location = ? WHERE ConRmName = ?"),
                                   {room, location.trimmed(), oldName}),
                           QStringLiteral("Consulting Room"));
    });
}

void removeRoom(AppContext& ctx, const QString& name)
{
    ctx.openConnection()->exec(QStringLiteral("DELETE FROM hConsultingRooms WHERE ConRmName = ?"),
                               {name});
}

void saveClinic(AppContext& ctx, const QString& oldName, const ClinicFields& f)
{
    const QString name = listentry::stripBrackets(f.name);
    if (name.isEmpty())
        throw CheckFailed(QStringLiteral("Clinic Name field cannot be empty"),
                          QStringLiteral("txtName"));
    const auto conFee = amount(f.conFee);
    if (!conFee)
        throw CheckFailed(QStringLiteral("Consultation Fee field cannot be empty! Specify zero "
                                         "if Fee is not charged"),
                          QStringLiteral("txtConFee"));
    const auto regFee = amount(f.regFee);
    if (!regFee)
        throw CheckFailed(QStringLiteral("Registration Fee field cannot be empty! Specify zero "
                                         "if Fee is not charged"),
                          QStringLiteral("txtRegFee"));
    const QString consultant = listentry::key(f.consultant).trimmed();
    if (consultant.isEmpty())
        throw CheckFailed(QStringLiteral(" please specify Name of Consultant"),
                          QStringLiteral("cboRef"));

    auto c = ctx.openConnection();
    const CheckFailed taken(QStringLiteral("A Clinic named %1 already exists").arg(name),
                            QStringLiteral("txtName"));
    const db::Params values{name, name, *regFee, *conFee, f.designation.trimmed(), consultant};
    if (oldName.isEmpty()) {
        refuseDuplicate(taken, [&] {
            c->exec(QStringLiteral("INSERT INTO clinicTypes (ClinicID, clinicName, regfee, "
                                   "ConFee, Designation, empID) VALUES (?, ?, ?, ?, ?, ?)"),
                    values);
        });
        return;
    }
    // The clinic's doctors and days are keyed by its ID, which follows the name: they move
    // with it in the same transaction, or a doctor would be left serving a clinic that no
    // longer exists.
    db::Transaction tx(*c);
    const auto old = c->queryOne(
        QStringLiteral("SELECT ClinicID FROM clinicTypes WHERE clinicName = ?"), {oldName});
    if (!old)
        throw CheckFailed(goneMessage(QStringLiteral("Clinic")));
    const QString oldID = old->text(u"ClinicID");
    refuseDuplicate(taken, [&] {
        db::Params p = values;
        p.push_back(oldName);
        c->exec(QStringLiteral("UPDATE clinicTypes SET ClinicID = ?, clinicName = ?, regfee = ?, "
                               "ConFee = ?, Designation = ?, empID = ? WHERE clinicName = ?"),
                p);
        if (oldID != name) {
            c->exec(QStringLiteral("UPDATE userRoleClinic SET ClinicID = ? WHERE ClinicID = ?"),
                    {name, oldID});
            c->exec(QStringLiteral("UPDATE clinicDays SET ClinicID = ? WHERE ClinicID = ?"),
                    {name, oldID});
        }
    });
    tx.commit();
}

void removeClinic(AppContext& ctx, const QString& name)
{
    ctx.openConnection()->exec(QStringLiteral("DELETE FROM clinicTypes WHERE clinicName = ?"),
                               {name});
}

int patientLimit(const QString& typed)
{
    // Digits and one "." are all the box lets through; whatever else reaches here (an empty
    // box, a lone ".") means no limit.
    static const QRegularExpression number(QStringLiteral("^\\d*\\.?\\d*$"));
    const QString t = typed.trimmed();
    bool ok = false;
    const double v = number.match(t).hasMatch() ? t.toDouble(&ok) : 0;
    return ok && v < 1e9 ? int(std::trunc(v)) : 0;
}

QString saveClinicDays(AppContext& ctx, int sno, const ClinicDayFields& f)
{
    if (f.clinicID.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Clinic Type field cannot be empty"),
                          QStringLiteral("cboCon"));
    if (f.days.isEmpty())
        throw CheckFailed(QStringLiteral("No Day is selected"), QStringLiteral("lstDays"));
    const int limit = patientLimit(f.limit);
    QTime t = QTime::fromString(f.time.trimmed(), fmt::kShortTime);
    if (!t.isValid())
        t = QTime::fromString(f.time.trimmed(), QStringLiteral("H:mm"));
    if (!t.isValid())
        throw CheckFailed(QStringLiteral("Specify Clinic Time"), QStringLiteral("txtTime"));
    const QString time = fmt::shortTime(t);

    const Session& s = ctx.session();
    auto c = ctx.openConnection();
    std::vector<AuditEntry> audits;
    if (sno == 0) {
        db::Transaction tx(*c);
        for (const QString& day : f.days) {
            c->exec(QStringLiteral("INSERT INTO clinicDays (ClinicDay, StartTime, ClinicID, "
                                   "NumOfPat) VALUES (?, ?, ?, ?)"),
                    {day, time, f.clinicID, limit});
            const QString action =
                QStringLiteral("Add ClinicDay %1 (%2) %3").arg(f.clinicID, time, day);
            audits.push_back({action, f.clinicID, QString()});
        }
        tx.commit();
        SpAudiTrail(ctx, s.userName, audits, s.computerName);
        return QStringLiteral("Record Succesfully saved");
    }
    requireChanged(c->exec(QStringLiteral("UPDATE clinicDays SET ClinicDay = ?, StartTime = ?, "
                                          "ClinicID = ?, NumOfPat = ? WHERE SNo = ?"),
                           {f.days.front(), time, f.clinicID, limit, sno}),
                   QStringLiteral("Clinic Day"));
    SpAudiTrail(ctx, s.userName, QStringLiteral("Edit Clinic %1").arg(f.clinicID), f.clinicID,
                QString(), s.computerName);
    return QStringLiteral("Record Succesfully Updated");
}

void removeClinicDay(AppContext& ctx, int sno)
{
    ctx.openConnection()->exec(QStringLiteral("DELETE FROM clinicDays WHERE SNo = ?"), {sno});
}

void saveAttendItem(AppContext& ctx, const QString& oldName, const QString& name)
{
    const QString item = listentry::stripBrackets(name);
    if (item.isEmpty())
        throw CheckFailed(QStringLiteral("Specify Item ame"), QStringLiteral("txtName"));
    auto c = ctx.openConnection();
    const CheckFailed taken(QStringLiteral("An Item named %1 already exists").arg(item),
                            QStringLiteral("txtName"));
    if (oldName.isEmpty()) {
        refuseDuplicate(taken, [&] {
            c->exec(QStringLiteral("INSERT INTO hrecordsMonitor (Description, dtDate, numCount, "
                                   "Remarks) VALUES (?, ?, 0, 'SEED')"),
                    {item, ctx.session().serverDate});
        });
        return;
    }
    // The counts already taken under the old name follow it, or they would be orphaned.
    db::Transaction tx(*c);
    refuseDuplicate(taken, [&] {
        requireChanged(c->exec(QStringLiteral("UPDATE hrecordsMonitor SET Description = ? "
                                              "WHERE Description = ?"),
                               {item, oldName}),
                       QStringLiteral("Item"));
        c->exec(QStringLiteral("UPDATE hrecordsMonitorDetails SET Description = ? "
                               "WHERE Description = ?"),
                {item, oldName});
    });
    tx.commit();
}

void removeAttendItem(AppContext& ctx, const QString& name)
{
    ctx.openConnection()->exec(QStringLiteral("DELETE FROM hrecordsMonitor WHERE Description = ?"),
                               {name});
}

}  // namespace tolmar::clinical
