#pragma once
// The list of coded diagnoses (vwICD) that every clinical screen picks from. It is long,
// so it is read once a run and shared.

#include "platform/db.h"

#include <QString>

#include <vector>

namespace tolmar {

class AppContext;

// Code and DescICD of every disease, by description; read on first use, then kept for
// the rest of the run.
const db::Result& diagnosisList(AppContext& ctx);

// The entries whose description (or code) contains the text, in list order, as the
// diagnosis picker's search filters the shared list; case is ignored.
std::vector<const db::Row*> filterDiagnoses(const db::Result& list, const QString& text,
                                            bool byCode);

}  // namespace tolmar
