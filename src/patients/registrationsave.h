#pragma once
// Save of the registration screen: the checks in the desk's order, then the patient, the
// visit and its first bill lines in one transaction. Numbers are drawn before the
// transaction opens and the audit lines and SMS follow the commit, so a failed save leaves
// nothing behind but burnt numbers, which the two counter repairs put right at once.

#include "patients/registrationform.h"

#include <QString>

namespace tolmar {
class AppContext;
}

namespace tolmar::patients {

// The checks, first failure thrown as CheckFailed with its control. A payer that needs no
// admission limit and was given none gets "0" here, as the screen would show it.
void checkRegistration(const AppContext& ctx, RegistrationForm& form);

// Checks, asks "Check before save", saves and tells the desk. Returns the PNo saved, or ""
// when the desk answered No. The function the screen calls (see setRegistrationSave).
QString saveRegistration(AppContext& ctx, const RegistrationForm& form);

}  // namespace tolmar::patients
