#pragma once
// Likely duplicates of a patient being registered: people on file born the same day or on
// the same telephone whose name reads much the same, case, accents and the order of the
// names aside. The desk only sees them listed: nothing is asked and nothing is refused, so
// a twin or a namesake is still registered as quickly as anyone.

#include <QDate>
#include <QString>

#include <vector>

namespace tolmar::db {
class Connection;
}

namespace tolmar::patients {

struct TypedPatient {
    QString surname;
    QString firstName;
    QDate dob;      // invalid when not given
    QString phone;  // as typed
};

struct DuplicateCandidate {
    QString pno;
    QString name;    // "SURNAME FIRSTNAME" as stored
    QString reason;  // "same DOB", "same phone" or both, joined by ", "
    double score = 0;
};

// How alike two names are, 0 to 1: the share of letter triples they have in common, with
// case and accents folded, and the better of the typed name as given and with its two
// parts swapped. A blank first name compares the surname alone.
double nameSimilarity(const TypedPatient& typed, const QString& surname,
                      const QString& firstName);

// A name at least this alike, on the same birthday or telephone, is listed.
inline constexpr double kLikelyDuplicate = 0.5;

// The candidates, most alike first, at most `limit`. Nothing without a name, or without
// a date of birth and a telephone of 7 characters or more.
std::vector<DuplicateCandidate> likelyDuplicates(db::Connection& c, const TypedPatient& typed,
                                                 int limit = 5);

}  // namespace tolmar::patients
