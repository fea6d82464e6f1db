#pragma once
// The main window's debt panel as the billing steps drive it.

#include "billing/debt.h"

namespace tolmar {
class AppContext;
}

namespace tolmar::billing {

// Quiet for no balance; otherwise the caption flashes (Timer2). The session's debt flag
// follows, also when no main window is open.
void showDebtOnMainWindow(AppContext& ctx, const DebtOutcome& outcome);
// Clearing a desk screen drops the balance: session to 0, flag off, panel quiet.
void clearDebtDisplay(AppContext& ctx);
// The balance the debt routine last left in the session, as the panel would show it.
DebtOutcome lastDebt(const AppContext& ctx);

}  // namespace tolmar::billing
