#pragma once
// The start-up routine: settings files, connections, the user, the defaults, the version
// gate and the server clock. It opens no window; the caller shows the main window when the
// routine succeeds. The same routine runs again for "Reload Defaults" and after the server
// location changes.

#include <QString>

namespace tolmar {

class AppContext;

struct StartupResult {
    enum Outcome {
        Ok,      // go on to the main window
        Fatal,   // the message was shown; the process must end with exitCode
        Failed,  // the error trap stopped the routine; description shown
    } outcome = Ok;
    QString message;
    int exitCode = 0;
};

// Runs the routine. Messages go through the context's prompter. On Fatal and Failed the
// message has already been shown (and written to stderr when nobody can see it).
StartupResult runStartup(AppContext& ctx);

// Settings of made.sys: the later line wins; lines other than SVR and HNO are skipped.
struct MadeSys {
    QString serverName;  // "" when no SVR line
    QString hospitalNo;
};
MadeSys parseMadeSys(const QStringList& lines);

// Why the program refuses a database whose schema is newer than it knows.
QString newerSchemaMessage(int current, int latest);

// The server name up to, not including, its first backslash.
QString serverHostOf(const QString& serverName);

}  // namespace tolmar
