#pragma once
// The audit entry: one row per noteworthy action of a screen, written on a connection of
// its own outside any transaction of the caller.

#include <QString>

#include <vector>

namespace tolmar {

class AppContext;

// Sizes of the routine's text parameters; longer values are cut to fit.
inline constexpr int kAuditUserNameSize = 50;
inline constexpr int kAuditActionSize = 1000;
inline constexpr int kAuditTranCodeSize = 50;
inline constexpr int kAuditRemarksSize = 1000;
inline constexpr int kAuditSrcSize = 100;

// Records who did what: user, action and remarks in the caller's words, the transaction
// code (a PNo, a ConsultID), the server's date and time, and "{computer}: from {role}".
// The action it records has already happened, so a failure here is never the caller's:
// it goes to stderr and the call returns normally.
void SpAudiTrail(AppContext& ctx, const QString& userName, const QString& action,
                 const QString& tranCode, const QString& remarks, const QString& computerName);

struct AuditEntry {
    QString action;
    QString tranCode;
    QString remarks;
};
// Several entries of one command at one moment, in order, written by one statement: a
// save that leaves three lines waits for the server once instead of three times.
void SpAudiTrail(AppContext& ctx, const QString& userName, const std::vector<AuditEntry>& entries,
                 const QString& computerName);

}  // namespace tolmar
