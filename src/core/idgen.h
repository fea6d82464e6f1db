#pragma once
// Number series in idgen: the next patient number, visit number and so on, handed out by
// one atomic statement so that two desks never get the same value; and the two repairs
// that bring a series back into step with the data after a mishap.

#include <QString>

namespace tolmar {

class AppContext;
namespace db {
class Connection;
}

// The series this module draws from. Each row of idgen carries its own prefix and width.
inline const QString kSeriesPatientNo = QStringLiteral("PATIENT2");  // PNo: "001/" + 9 digits
inline const QString kSeriesConsultID = QStringLiteral("ConsultID2");  // "001" + 9 digits
inline const QString kSeriesPatient = QStringLiteral("Patient");       // the bare number

// What the callers say when a draw gives nothing.
inline const QString kIdGenFailedText =
    QStringLiteral("Unable to generate No!!! Function getIDNo Failed");
inline const QString kIdGenFailedConsultIDText =
    QStringLiteral("Unable to generate No!!! Function getIDNo Failed! ConsultID");

// prefix + the number padded with zeros to `width` digits; the bare number when width is
// 0. Empty when the number needs more digits than the width allows: an identifier that
// long would not fit its column (and a 13-character ConsultID means a split bill).
QString composeIdentifier(const QString& prefix, qint64 number, int width);

// Advances the series and gives its new value, composed; empty when the series does not
// exist. One statement in autocommit: the connection must not be inside a transaction, or
// a rollback would hand the same number out twice.
QString drawIdentifier(db::Connection& conn, const QString& destName);

// getIDNo: a draw on a connection of its own. The value also goes to the session's last
// identifier; "" when there is no such series. Database errors reach the caller. Draw
// before opening the save's transaction: on SQLite a draw waits for any open writer.
QString getIDNo(AppContext& ctx, const QString& destName);

// "Update Attendnace ID": the newest visit numbered "001..." decides the next ConsultID.
void updateAttendanceID(AppContext& ctx);
// "Update Patient ID": the highest PNo decides the next patient number.
void updatePatientID(AppContext& ctx);

}  // namespace tolmar
