#pragma once
// Reads of the patient record that every screen shares: one patient through vwhpatients,
// and the lists behind the billing-category rules.

#include "platform/db.h"

#include <QStringList>

#include <optional>

namespace tolmar::patients {

// The patient's row of vwhpatients; nullopt when there is no such PNo.
std::optional<db::Row> readPatient(db::Connection& c, const QString& pno);

// The categories offered for a payer's client type; all categories when the type has none
// or when the person ticks "Show All".
QStringList billingCategories(db::Connection& c, const QString& clientType, bool showAll);

// The client type recorded with a category: "COMPANY" when the category gives none.
QString clientTypeOfCategory(db::Connection& c, const QString& clientCatID);

}  // namespace tolmar::patients
