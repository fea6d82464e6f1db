#pragma once
// Small questions every desk asks about a patient or a payer.

#include <QString>

namespace tolmar {

class AppContext;

// The patient's medical note (ANCInfo) when there is one worth showing: "" when the
// patient is unknown or the note is blank, "NIL" or "NONE".
QString patientNote(AppContext& ctx, const QString& pno);
// Shows the note on its screen (frmPatientANCInfo, modal) when there is one; true if shown.
bool showPatientNote(AppContext& ctx, const QString& pno);

// The billing category of a payer; "DEFAULT" when the payer is not on the list.
QString clientCategory(AppContext& ctx, const QString& retainID);

// Whether the patient already stands in today's visits.
bool visitedToday(AppContext& ctx, const QString& pno);

}  // namespace tolmar
