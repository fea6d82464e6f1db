#pragma once
#include <functional>

namespace tolmar {

class AppContext;

// Reads every key of AppDefaults into the session, in the fixed order of the installation
// guide, each from its database. Keys that must be present end the run with a
// FatalCondition; a value that cannot be read as its kind raises std::runtime_error, which
// the start-up's error trap reports. `versionGate` runs right after LockOldVersion is read.
void loadAppDefaults(AppContext& ctx, const std::function<void()>& versionGate);

// Exit statuses of the fatal start-up conditions.
enum ExitStatus : int {
    kExitOk = 0,
    kExitMadeSysMissing = 2,
    kExitSysdocMissing = 3,
    kExitInvalidLogin = 4,
    kExitOldVersion = 5,
    kExitRequiredDefault = 6,
    kExitStartupError = 7,
    kExitLocationFileMissing = 8,
    kExitSchema = 9,
};

}  // namespace tolmar
