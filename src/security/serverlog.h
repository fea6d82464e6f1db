#pragma once
// The two text logs of the role classes, beside made.sys: ServerUserActivities.txt (what
// was attempted and done) and ServerErrorLog.txt (the database's errors, which these
// classes never put in front of the desk). Fields are joined by "  |  ". A missing file is
// created: losing the record of an attempt is worse than a new file beside the program.

#include <QString>

namespace tolmar {

class AppContext;

namespace db {
class DbError;
}

namespace security {

inline const QString kActivityLogFile = QStringLiteral("ServerUserActivities.txt");
inline const QString kErrorLogFile = QStringLiteral("ServerErrorLog.txt");

// "{date time}  |  {user}  |  {computer}  |  {text}".
void logActivity(AppContext& ctx, const QString& text);
// "{number}  |  {description}  |  {source}  |  {date time}".
void logError(AppContext& ctx, const db::DbError& error);

}  // namespace security
}  // namespace tolmar
