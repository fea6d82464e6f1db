#pragma once
// Rights: a user may run a module, or do the few things kept to managers, when the user
// holds the role for it (vwUsers; names and roles compared without regard to case). Every
// check is asked here, inside the operation it guards, so a screen opened by name or handed
// over from another meets the same refusal as one opened from its menu.

#include "platform/db.h"

#include <QString>

#include <optional>

namespace tolmar {

class AppContext;
class CheckFailed;

namespace security {

inline const QString kRecordsRole = QStringLiteral("RECORDS");
inline const QString kManagementRole = QStringLiteral("MANAGEMENT");
inline const QString kConsultingRole = QStringLiteral("CONSULTING");

// The user's row of vwUsers under that role; nullopt when the user does not hold it.
std::optional<db::Row> roleHolder(db::Connection& c, const QString& userName,
                                  const QString& role);
bool holdsRole(db::Connection& c, const QString& userName, const QString& role);

// Throws `refusal` unless the session's user holds the role.
void requireRole(AppContext& ctx, const QString& role, const CheckFailed& refusal);

}  // namespace security
}  // namespace tolmar
