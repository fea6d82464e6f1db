#pragma once
// The one patient search of the desk: the registration screen's quick and incremental
// search, the attendance screens and the small find screens all call it. Names are matched
// on a folded copy of "surname firstname" that the program keeps in hPatients.SearchName,
// so that lower case and letters outside ASCII find the stored capitals on both backends;
// the folded column carries a trigram index (pg_trgm on PostgreSQL, an FTS5 trigram table
// on SQLite), so that "part of a name" is an index lookup and not a scan of every patient.

#include <QString>

class QAbstractItemModel;
class QObject;

namespace tolmar {
class AppContext;
namespace db {
class Connection;
}
}  // namespace tolmar

namespace tolmar::patients {

// The modes a screen keeps between searches.
inline const QString kSearchName = QStringLiteral("Name");
inline const QString kSearchCardNo = QStringLiteral("CardNo");
inline const QString kSearchSysNo = QStringLiteral("SysNo");  // the telephone search
// The first letters of the surname, as "Find a Record" looks a patient up.
inline const QString kSearchSurname = QStringLiteral("Surname");
// One System No exactly, as the attendance screen looks a patient up by it.
inline const QString kSearchPNo = QStringLiteral("PNo");

struct SearchOutcome {
    // The rows of vwhpatients found, ordered by FullName, for a grid; owned by the parent
    // given. Empty (no rows) for blank text or nothing found; nullptr after a failure, when
    // the grid keeps what it had.
    QAbstractItemModel* rows = nullptr;
    // Every row that matched; with a limit, at most the limit. The model fetches the rest
    // of an unlimited search as the grid scrolls.
    qint64 found = 0;
    // "{n} Records Found", for lblFound; empty after a failure.
    QString foundText;
    // The failure's own description; empty when the search ran.
    QString error;
    bool failed() const { return !error.isEmpty(); }
};

// Searches by mode ("Name", "CardNo", "SysNo", "Surname" or "PNo") for the trimmed text, at
// most `limit` rows (0: no limit). Blank text finds nothing and reads "0 Records Found". Never throws:
// a failure comes back in `error`.
SearchOutcome searchPatients(AppContext& ctx, const QString& mode, int limit,
                             const QString& text, QObject* parent);

// The limit SearchValue asks for: a positive whole number, else 0 (no limit).
int searchLimit(const QString& searchValue);

// Whether a change of the search box starts an incremental name search: at least three
// characters once trimmed, and neither "0" nor "1" (a card or telephone number being typed).
bool startsIncrementalSearch(const QString& text);

// A name as the search and the duplicate check compare it: accents dropped, capitals,
// blanks collapsed. "Öztürk  ada" -> "OZTURK ADA".
QString foldName(const QString& name);
// The folded "surname firstname" kept in hPatients.SearchName.
QString searchNameOf(const QString& surname, const QString& firstName);

// Folds the names of patients written without one (by another program, a script, or an
// update of the name that left the folded copy behind: the database clears it then).
// Returns how many it folded. Cheap when there is nothing to do: one indexed probe.
int foldPendingNames(db::Connection& c);

}  // namespace tolmar::patients
