#include "patients/patientgenerator.h"

#include "patients/patientrecord.h"
#include "patients/patientsearch.h"

#include <QRandomGenerator>
#include <QSet>

#include <algorithm>
#include <array>
#include <cmath>

namespace tolmar::patients {

namespace {

// Names are made from syllables, so that a million people carry tens of thousands of
// surnames, and drawn with skewed frequencies, as a real register has them: the commonest
// surname is about 1% of all patients, most are rare. A few carry "O'" or tone marks, as
// real ones do, and the search must find them from plain letters.
const std::array kOnsets{"A",  "BA", "DE", "O",  "KA", "NWO", "CHU", "I",  "BO", "OLU",
                         "SE", "MU", "EZ", "TI", "YE", "NNA", "GBE", "FA", "LA", "RO",
                         "E",  "ZI", "AKIN", "OGUN", "ABU", "EKE", "UDO", "ADE", "IFE", "OKO"};
const std::array kMiddles{"DE", "BA", "YO", "KA", "LA", "MI", "NI", "WA", "SU", "RI",
                          "TO", "KWU", "GBO", "LU", "NA", "JU", "YI", "BI", "FO", "DI",
                          "CHE", "MA", "WO", "KE", "SA", "TU", "RA", "LE", "GO", "NDU"};
const std::array kEnds{"YI",  "FOR", "LLO", "EMI", "HIM", "GWU", "MA", "DU",  "LA",  "KE",
                       "WALE", "BO", "SI",  "NNA", "YO",  "RIN", "TU", "ZE",  "KPO", "DO",
                       "MU",  "NA",  "RE",  "JI",  "BA",  "NDE", "CHI", "GUN", "TOLA", "SA"};
const std::array kMarked{"Ọ", "Ẹ", "À", "É", "Ò", "Ú"};

// Ranked names and the cumulative weights of a Zipf law over their ranks.
struct NameBook {
    QStringList names;
    std::vector<double> cumulative;
    QString draw(QRandomGenerator& r) const
    {
        const double u = r.generateDouble() * cumulative.back();
        const auto it = std::upper_bound(cumulative.begin(), cumulative.end(), u);
        return names[int(std::min<size_t>(size_t(it - cumulative.begin()), names.size() - 1))];
    }
};

NameBook makeBook(quint32 seed, int count, double exponent, int minSyllables)
{
    QRandomGenerator r(seed);
    auto syllable = [&](const auto& from) { return QString::fromUtf8(from[r.bounded(quint32(from.size()))]); };
    NameBook book;
    QSet<QString> seen;
    while (book.names.size() < count) {
        QString name = syllable(kOnsets);
        const int middles = minSyllables - 2 + int(r.bounded(3u));
        for (int i = 0; i < middles; ++i)
            name += syllable(kMiddles);
        name += syllable(kEnds);
        if (r.bounded(60u) == 0)
            name = QStringLiteral("O'") + name;
        else if (r.bounded(40u) == 0)
            name.insert(int(r.bounded(quint32(name.size()))), syllable(kMarked));
        if (seen.contains(name))
            continue;
        seen.insert(name);
        book.names << name;
    }
    double sum = 0;
    for (int k = 1; k <= count; ++k)
        book.cumulative.push_back(sum += std::pow(double(k), -exponent));
    return book;
}

// 20,000 surnames at exponent 0.65: the first is drawn about 1.1% of the time.
const NameBook& surnames()
{
    static const NameBook b = makeBook(17, 20000, 0.65, 2);
    return b;
}
const NameBook& firstNames(bool male)
{
    static const NameBook m = makeBook(29, 4000, 0.8, 2);
    static const NameBook f = makeBook(31, 4000, 0.8, 2);
    return male ? m : f;
}

const std::array kAreas{"IKEJA", "SURULERE", "YABA", "LEKKI", "IKOYI", "MUSHIN", "APAPA",
                        "AGEGE", "OSHODI", "FESTAC"};
const std::array kStreets{"ALLEN AVENUE", "ADEOLA ODEKU ST", "HERBERT MACAULAY WAY",
                          "AWOLOWO RD", "BODE THOMAS ST", "ISAAC JOHN ST", "OBA AKRAN AVE"};
const std::array kOccupations{"TRADER", "TEACHER", "CIVIL SERVANT", "ENGINEER", "STUDENT",
                              "BANKER", "DRIVER", "NURSE", "ARTISAN", "FARMER", "RETIRED"};

template <typename A>
QString pick(QRandomGenerator& r, const A& a)
{
    return QString::fromUtf8(a[r.bounded(quint32(a.size()))]);
}

struct Payer {
    QString retainID;
    QString category;
    QString clientType;
};

// The columns the generator fills; the rest keep their defaults.
const QStringList kColumns{
    "PNo", "oldPno", "Principal", "pCatID", "Username", "Title", "psurname", "pfirstName",
    "homeAddress", "officeAddress", "Area", "pPhoneNo", "Email", "sex", "DOB", "Maturity",
    "MStatus", "bloodGroup", "genotype", "religion", "occupation", "nextOfKin", "NOKPhone",
    "relationToKin", "CoyName", "coyType", "clientCatID", "empno", "policyType", "ref",
    "HmoRef", "CardType", "fileduration", "regDate", "expirydate", "expired", "NewReg",
    "AdmissionDaysLimit", "Debt", "DebtBF", "hospID", "SearchName"};

QString insertStatement(int rows)
{
    QString placeholders = QStringLiteral("(") +
                           QStringList(kColumns.size(), QStringLiteral("?")).join(',') +
                           QStringLiteral(")");
    QStringList all(rows, placeholders);
    return QStringLiteral("INSERT INTO hPatients (") + kColumns.join(QStringLiteral(", ")) +
           QStringLiteral(") VALUES ") + all.join(QStringLiteral(", "));
}

QString phone(QRandomGenerator& r)
{
    static const std::array prefixes{"0803", "0805", "0806", "0807", "0813", "0816", "0703",
                                     "0706", "0810", "0902"};
    return QString::fromLatin1(prefixes[r.bounded(quint32(prefixes.size()))]) +
           QStringLiteral("%1").arg(r.bounded(10000000u), 7, 10, QLatin1Char('0'));
}

}  // namespace

qint64 generatePatients(const db::ServerConfig& server, const GeneratorOptions& o)
{
    db::Connection c(server, db::Database::Hospital);
    c.tuneForBulkLoad();
    std::vector<Payer> payers;
    for (const auto& row : c.query(QStringLiteral(
                                "SELECT r.retainID, r.clientCatID, b.clientType FROM hRetainership r "
                                "LEFT JOIN billingPrice b ON b.clientCatID = r.clientCatID "
                                "ORDER BY r.retainID"))
                               .rows)
        payers.push_back({row.text(u"retainID"), row.text(u"clientCatID"),
                          row.text(u"clientType")});
    if (payers.empty())
        payers.push_back({QStringLiteral("0001"), QStringLiteral("PRIVATE"), QString()});

    const QString highest = c.scalar(QStringLiteral("SELECT MAX(PNo) FROM hPatients")).toString();
    qint64 next = highest.isEmpty() ? 1 : highest.mid(o.pnoPrefix.size()).toLongLong() + 1;
    const QDate today = o.today.isValid() ? o.today : QDate::currentDate();

    QRandomGenerator r(o.seed ^ quint32(next));
    const int batch = std::max(1, o.rowsPerStatement);
    const QString fullStatement = insertStatement(batch);
    qint64 written = 0;

    db::Transaction tx(c);
    db::Params params;
    params.reserve(size_t(batch) * size_t(kColumns.size()));
    while (written < o.count) {
        const int rows = int(std::min<qint64>(batch, o.count - written));
        params.clear();
        for (int i = 0; i < rows; ++i, ++next) {
            const QString pno = o.pnoPrefix + QStringLiteral("%1").arg(next, 9, 10, QLatin1Char('0'));
            const bool male = r.bounded(2) == 0;
            // Mostly the private client, as at a real desk; the rest spread over the payers.
            const Payer& payer = r.bounded(100) < 55 ? payers.front()
                                                     : payers[r.bounded(quint32(payers.size()))];
            const bool isPrivate = payer.category == QLatin1String("PRIVATE");
            const QDate regDate = today.addDays(-qint64(r.bounded(3650)));
            const QDate dob = today.addDays(-qint64(r.bounded(365 * 85)));
            const int age = dob.daysTo(today) / 365;
            const QString surname = surnames().draw(r);
            const QString first = firstNames(male).draw(r);
            const QString title = age < 16 ? (male ? QStringLiteral("MASTER") : QStringLiteral("MISS"))
                                           : (male ? QStringLiteral("MR") : QStringLiteral("MRS"));
            const QString maturity = age < 1    ? QStringLiteral("NEONATE")
                                     : age < 12 ? QStringLiteral("CHILD")
                                     : age < 18 ? QStringLiteral("ADOLESCENT")
                                                : QStringLiteral("ADULT");
            const QString area = pick(r, kAreas);
            params.insert(params.end(), {
                pno,
                cardNumber(QStringLiteral("YES"), o.hospID, regDate, pno, QString()),
                pno, kPrincipal, QStringLiteral("EMP001"), title, surname, first,
                QStringLiteral("%1 %2, %3").arg(r.bounded(1, 200)).arg(pick(r, kStreets), area),
                isPrivate ? QString() : QStringLiteral("HEAD OFFICE"), area, phone(r),
                QString(), male ? QStringLiteral("MALE") : QStringLiteral("FEMALE"), dob,
                maturity, age < 25 ? QStringLiteral("SINGLE") : QStringLiteral("MARRIED"),
                bloodGroups()[int(r.bounded(quint32(bloodGroups().size())))],
                genotypes()[int(r.bounded(quint32(genotypes().size())))],
                religions()[int(r.bounded(quint32(religions().size())))],
                pick(r, kOccupations),
                surnames().draw(r) + QLatin1Char(' ') + firstNames(true).draw(r),
                phone(r), relations()[int(r.bounded(quint32(relations().size())))],
                payer.retainID, coyTypeOf(payer.clientType), payer.category,
                isPrivate ? QStringLiteral("NIL") : QStringLiteral("EN%1").arg(r.bounded(1000000u)),
                QStringLiteral("NIL"), isPrivate ? QStringLiteral("YES") : QStringLiteral("NO"),
                QStringLiteral("NO"), QStringLiteral("SINGLE"),
                isPrivate ? QStringLiteral("ONE YEAR") : QStringLiteral("WHILE STILL IN SERVICE"),
                regDate, isPrivate ? QVariant(regDate.addYears(1)) : QVariant(),
                0, QStringLiteral("YES"), 0, 0.0, 0.0, o.hospID, searchNameOf(surname, first)});
        }
        c.exec(rows == batch ? fullStatement : insertStatement(rows), params);
        written += rows;
        if (o.progress && (written % 50000 < rows || written == o.count))
            o.progress(written);
    }
    // The counter holds the last number handed out.
    c.exec(QStringLiteral("UPDATE idgen SET id = ? WHERE destName = ?"),
           {next - 1, QStringLiteral("PATIENT2")});
    tx.commit();
    return written;
}

}  // namespace tolmar::patients
