#pragma once
// Declaring cards expired by date, once per start of the main window: the only place a card
// runs out on its own. A card whose expiry date is today counts as expired.

#include <QDate>
#include <QString>

namespace tolmar {

class AppContext;

// Marks every card due on or before `today` and not yet expired, in one statement, and
// returns how many it marked.
int declareExpiredCards(AppContext& ctx, const QDate& today);

// The notice shown after the sweep; empty when no card was due.
QString expiredCardsNotice(int count);

}  // namespace tolmar
