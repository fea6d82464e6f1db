#pragma once
// The activity row of a run in UserActivities: opened when the main window loads, closed
// when the run ends (log off, closing the window). The row's number lives in the session.

#include <QString>

namespace tolmar {

class AppContext;

// Adds this run's row and keeps its SNO in the session. A failure is shown to the user
// and commits nothing; the run keeps the number it had.
void openActivityRow(AppContext& ctx, bool isLogout, bool autoLogoff, const QString& remarks);

// Marks this run's row as ended. Never fails the caller: the process is about to end, so a
// failure is only written to stderr. A number that is no longer in the table is no error.
void closeActivityRow(AppContext& ctx, bool isLogout, bool autoLogoff, const QString& remarks);

}  // namespace tolmar
