#pragma once
// The balance a patient brings to a visit: what the latest bill left open, counted only
// when that bill was the private client's. The routine writes it onto the patient and the
// session; the main window flashes it.

#include <QString>

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::billing {

struct DebtOutcome {
    double balance = 0;
    // "Debt: 1,250.50", "Credit: 1,250.50", or "" when the balance shows as 0.00.
    QString caption;
    bool shown() const { return !caption.isEmpty(); }
};

// The caption the main window shows for a balance; "" when it rounds to 0.00.
QString debtCaption(double balance);

// Reads the latest bill (highest ID) of the patient, keeps its balance when its client is
// the PRIVATE default, writes isRev, DebtBF and Debt on hPatients (also when 0), and sets
// the session's balance and debt flag. A patient with no bill at all owes `opening`: the
// debt carried over at registration. The screen that called it shows the outcome on the
// main window (billing/debtdisplay.h).
DebtOutcome ComputeDebtBroughtForward(AppContext& ctx, db::Connection& c, const QString& pno,
                                      double opening = 0);

}  // namespace tolmar::billing
