#include "patients/duplicatecheck.h"

#include "messaging/smsqueue.h"
#include "patients/patientrecord.h"
#include "patients/patientsearch.h"
#include "platform/db.h"

#include <QSet>

#include <algorithm>
#include <map>

namespace tolmar::patients {

namespace {

// Letter triples of the folded name, padded at the start and end as pg_trgm pads a word,
// but taken across the blank between the names too: the order of the names then counts,
// and the swapped order is tried on its own.
QSet<QString> triples(const QString& folded)
{
    QSet<QString> out;
    const QString padded = QStringLiteral("  ") + folded + QLatin1Char(' ');
    for (qsizetype i = 0; i + 3 <= padded.size(); ++i)
        out.insert(padded.mid(i, 3));
    return out;
}

double jaccard(const QSet<QString>& a, const QSet<QString>& b)
{
    if (a.isEmpty() || b.isEmpty())
        return 0;
    qsizetype common = 0;
    for (const QString& t : a)
        common += b.contains(t);
    return double(common) / double(a.size() + b.size() - common);
}

// The forms a number may be stored in: as typed, and local and international (234...).
QStringList phoneForms(const QString& typed)
{
    QStringList forms{typed, normalisePhone(typed, QString())};
    if (typed.size() == 13 && typed.startsWith(QLatin1String("234")))
        forms << QLatin1Char('0') + typed.mid(3);
    forms.removeDuplicates();
    while (forms.size() < 3)  // one statement whatever the number looks like
        forms << forms.front();
    return forms;
}

}  // namespace

double nameSimilarity(const TypedPatient& typed, const QString& surname,
                      const QString& firstName)
{
    // Brackets typed into a name never reach the record, so they do not count here either.
    const QString s = foldName(cleanName(typed.surname));
    const QString f = foldName(cleanName(typed.firstName));
    if (s.isEmpty() && f.isEmpty())
        return 0;
    if (f.isEmpty() || s.isEmpty()) {
        const auto one = triples(s.isEmpty() ? f : s);
        return std::max(jaccard(one, triples(foldName(surname))),
                        jaccard(one, triples(foldName(firstName))));
    }
    const auto stored = triples(searchNameOf(surname, firstName));
    return std::max(jaccard(triples(s + QLatin1Char(' ') + f), stored),
                    jaccard(triples(f + QLatin1Char(' ') + s), stored));
}

std::vector<DuplicateCandidate> likelyDuplicates(db::Connection& c, const TypedPatient& typed,
                                                 int limit)
{
    std::vector<DuplicateCandidate> out;
    if (typed.surname.trimmed().isEmpty() && typed.firstName.trimmed().isEmpty())
        return out;
    const QString phone = typed.phone.trimmed();
    std::map<QString, DuplicateCandidate> byPno;
    auto consider = [&](const db::Result& rows, const QString& reason) {
        for (const db::Row& r : rows.rows) {
            const QString pno = r.text(u"PNo");
            const double score = nameSimilarity(typed, r.text(u"psurname"), r.text(u"pfirstName"));
            if (score < kLikelyDuplicate)
                continue;
            auto [it, fresh] = byPno.try_emplace(pno);
            DuplicateCandidate& d = it->second;
            if (fresh)
                d = {pno, (r.text(u"psurname") + QLatin1Char(' ') + r.text(u"pfirstName")).trimmed(),
                     reason, score};
            else
                d.reason += QStringLiteral(", ") + reason;
        }
    };
    // Both lookups are on an index; a birthday that thousands share (a default date put in
    // for people who did not know theirs) is cut short rather than read whole.
    const QString columns = QStringLiteral("SELECT PNo, psurname, pfirstName FROM hPatients ");
    if (typed.dob.isValid())
        consider(c.query(columns + QStringLiteral("WHERE DOB = ? LIMIT 2000"), {typed.dob}),
                 QStringLiteral("same DOB"));
    if (phone.size() >= 7) {
        const QStringList forms = phoneForms(phone);
        consider(c.query(columns + QStringLiteral("WHERE pPhoneNo IN (?, ?, ?) LIMIT 200"),
                         {forms[0], forms[1], forms[2]}),
                 QStringLiteral("same phone"));
    }
    for (auto& [pno, d] : byPno)
        out.push_back(std::move(d));
    std::sort(out.begin(), out.end(), [](const auto& a, const auto& b) {
        return a.score != b.score ? a.score > b.score : a.name < b.name;
    });
    if (int(out.size()) > limit)
        out.resize(size_t(limit));
    return out;
}

}  // namespace tolmar::patients
