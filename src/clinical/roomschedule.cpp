#include "clinical/roomschedule.h"

#include "clinical/clinicsetup.h"
#include "core/appcontext.h"
#include "core/command.h"
#include "core/listentry.h"

namespace tolmar::clinical {

namespace {

const QString kAssignment = QStringLiteral("assignment");

void requirePicked(int sno)
{
    if (sno <= 0)
        throw CheckFailed(QStringLiteral("No Record selected. Double click an Assignment in the "
                                         "list first"),
                          QStringLiteral("grdData"));
}

}  // namespace

QString assignmentsSql()
{
    return QStringLiteral("SELECT DISTINCT SNO AS \"SNO\", \"Date\", DocName AS \"DocName\", "
                          "RoomNo AS \"RoomNo\", Location AS \"Location\", empID AS \"empID\" "
                          "FROM vwdocAssign WHERE \"Date\" = ? ORDER BY \"DocName\"");
}

QStringList roomNames(db::Connection& c)
{
    QStringList out;
    for (const db::Row& r :
         c.query(QStringLiteral("SELECT DISTINCT ConRmName FROM hConsultingRooms "
                                "ORDER BY ConRmName"))
             .rows)
        out << r.text(u"ConRmName");
    return out;
}

QStringList clinicDoctorEntries(db::Connection& c)
{
    return listentry::fromRows(c.query(QStringLiteral("SELECT DISTINCT EmpID, Fullname FROM "
                                                      "qryUserRoleClinic ORDER BY Fullname"))
                                   .rows,
                               u"Fullname", u"EmpID");
}

QString saveAssignment(AppContext& ctx, const RoomAssignment& a)
{
    if (a.room.trimmed().isEmpty())
        throw CheckFailed(QStringLiteral("Please specify Consulting Room"),
                          QStringLiteral("cboVehNo"));
    const QString doctor = listentry::key(a.doctor).trimmed();
    if (doctor.isEmpty())
        throw CheckFailed(QStringLiteral("Please specify Name of Doctor"),
                          QStringLiteral("cboReason"));
    if (!a.date.isValid())
        throw CheckFailed(QStringLiteral("Please specify Date"), QStringLiteral("dtDate"));
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to save?"),
                            QStringLiteral("About to save")))
        return {};
    auto c = ctx.openConnection();
    if (a.sno == 0) {
        c->exec(QStringLiteral("INSERT INTO hConRoomAssign (schdDate, ConRoomNo, docNo, isOff) "
                               "VALUES (?, ?, ?, 0)"),
                {a.date, a.room.trimmed(), doctor});
        return QStringLiteral("Record Succesfully saved");
    }
    if (c->exec(QStringLiteral("UPDATE hConRoomAssign SET schdDate = ?, ConRoomNo = ?, "
                               "docNo = ? WHERE SNO = ?"),
                {a.date, a.room.trimmed(), doctor, a.sno}) == 0)
        throw CheckFailed(goneMessage(kAssignment));
    return QStringLiteral("Record Succesfully Updated");
}

bool removeAssignment(AppContext& ctx, int sno)
{
    requirePicked(sno);
    if (!ctx.prompter().ask(QStringLiteral("Are you sure to Delete Record"),
                            QStringLiteral("Delete")))
        return false;
    if (ctx.openConnection()->exec(QStringLiteral("DELETE FROM hConRoomAssign WHERE SNO = ?"),
                                   {sno}) == 0)
        throw CheckFailed(goneMessage(kAssignment));
    ctx.prompter().inform(QStringLiteral(" Record successfully deleted "),
                          QStringLiteral("Assign Doctors"));
    return true;
}

bool signOffDoctor(AppContext& ctx, int sno, const QString& docName)
{
    requirePicked(sno);
    if (!ctx.prompter().ask(
            QStringLiteral("Are you sure Dr %1 has Closed for the Day").arg(docName),
            QStringLiteral("End of Shift")))
        return false;
    if (ctx.openConnection()->exec(
            QStringLiteral("UPDATE hConRoomAssign SET isOff = 1 WHERE SNO = ?"), {sno}) == 0)
        throw CheckFailed(goneMessage(kAssignment));
    ctx.prompter().inform(QStringLiteral(" Record successfully Updated "),
                          QStringLiteral("Assign Doctors"));
    return true;
}

}  // namespace tolmar::clinical
