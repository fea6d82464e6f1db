#include "patients/patientsearch.h"

#include "core/appcontext.h"
#include "core/likepattern.h"
#include "platform/db.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QStringList>

#include <algorithm>

namespace tolmar::patients {

namespace {

// Rows an unlimited search reads at a time: enough to fill the grid, so that the first
// screenful shows at once however many patients match.
constexpr int kPage = 50;

// Up to this many matches a search sorts what the trigram index finds; beyond it the text
// is common enough that walking the patients in name order finds a page sooner (about
// 20 x patients / matches rows read), so that neither way reads much more than a page.
constexpr int kFewMatches = 1000;

// How one search finds its patients: the numbers of a page in name order, then the rows of
// vwhpatients for those numbers. Both backends order by the folded name (capitals, accents
// dropped), which is the view's FullName order for names kept in capitals and puts "Ö"
// with "O" where a byte order would put it after "Z".
struct Plan {
    QString keys;  // "SELECT PNo ... ORDER BY SearchName, PNo", without LIMIT
    QString count;
    db::Params params;       // of keys
    db::Params countParams;  // of count
};

// GLOB is how SQLite's trigram table takes a pattern with a bound value: its LIKE with an
// ESCAPE clause never reaches the index. "*", "?" and "[" typed are matched as themselves.
QString globContains(const QString& folded)
{
    QString out = QStringLiteral("*");
    for (const QChar c : folded) {
        if (c == QLatin1Char('*') || c == QLatin1Char('?') || c == QLatin1Char('['))
            out += QLatin1Char('[') + c + QLatin1Char(']');
        else
            out += c;
    }
    return out + QLatin1Char('*');
}

Plan planFor(db::Connection& c, const QString& mode, const QString& text)
{
    if (mode == kSearchCardNo)
        return {QStringLiteral("SELECT PNo FROM hPatients WHERE oldPno = ? "
                               "ORDER BY SearchName, PNo"),
                QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE oldPno = ?"),
                {text}, {text}};
    if (mode == kSearchPNo)
        return {QStringLiteral("SELECT PNo FROM hPatients WHERE PNo = ? ORDER BY SearchName, PNo"),
                QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE PNo = ?"), {text}, {text}};
    if (mode == kSearchSurname) {
        // The folded name begins with the surname, so the surname's first letters are a
        // prefix, and the names that begin with it lie together in the name index: the range
        // reads just them, in order, however common or rare the text; the pattern keeps the
        // result exact whatever the server's collation.
        const QString from = foldName(text);
        const QString name = c.backend() == db::Backend::Sqlite
                                 ? QStringLiteral("SearchName")
                                 : QStringLiteral("(SearchName || '')");
        const QString where =
            QStringLiteral("FROM hPatients WHERE %1 >= ? AND %1 < ? AND %1 LIKE ? ESCAPE '\\'")
                .arg(name);
        const db::Params params{from, from + QChar(0xFFFF), like::startsWith(from)};
        return {QStringLiteral("SELECT PNo ") + where + QStringLiteral(" ORDER BY ") + name +
                    QStringLiteral(", PNo"),
                QStringLiteral("SELECT COUNT(*) ") + where, params, params};
    }
    const bool phone = mode == kSearchSysNo;
    if (!phone && mode != kSearchName)
        throw db::DbError(QStringLiteral("Unknown search mode: %1").arg(mode));
    const bool lite = c.backend() == db::Backend::Sqlite;
    const QString column = phone ? QStringLiteral("pPhoneNo") : QStringLiteral("SearchName");
    const QString typed = phone ? text : foldName(text);
    const QVariant pattern = lite ? globContains(typed) : like::contains(typed);
    // The matches as the trigram index gives them: the FTS5 table on SQLite (which keeps
    // the folded name too), the GIN index on PostgreSQL. On SQLite a text of three letters
    // or more is a phrase of trigrams, which the table answers from its positions alone; a
    // GLOB would read every candidate's text again. PostgreSQL's name index is on
    // "SearchName || ''" (see the schema): a plain LIKE can only go to the trigrams, and
    // the walk below names that expression to go to the name index.
    QString indexed = QStringLiteral("FROM hPatients WHERE %1 LIKE ?").arg(column);
    QVariant indexPattern = pattern;
    if (lite) {
        const QString ftsColumn = phone ? QStringLiteral("PhoneNo") : column;
        if (typed.size() >= 3) {
            indexed = QStringLiteral("FROM hPatientsFts WHERE hPatientsFts MATCH ?");
            indexPattern = ftsColumn + QStringLiteral(" : \"") +
                           QString(typed).replace(u'"', QStringLiteral("\"\"")) +
                           QLatin1Char('"');
        } else {
            indexed = QStringLiteral("FROM hPatientsFts WHERE %1 GLOB ?").arg(ftsColumn);
        }
    }
    const QString sortIndexed = lite ? QStringLiteral(" ORDER BY SearchName, PNo")
                                     : QStringLiteral(" ORDER BY SearchName || '', PNo");
    const qint64 probe =
        c.scalar(QStringLiteral("SELECT COUNT(*) FROM (SELECT 1 ") + indexed +
                     QStringLiteral(" LIMIT ?) m"),
                 {indexPattern, kFewMatches})
            .toLongLong();
    const QString count = QStringLiteral("SELECT COUNT(*) ") + indexed;
    if (probe < kFewMatches)
        return {QStringLiteral("SELECT PNo ") + indexed + sortIndexed, count, {indexPattern},
                {indexPattern}};
    // A common text: the name index in order, each entry tested, until the page is full.
    const QString walk =
        lite ? QStringLiteral("SELECT PNo FROM hPatients INDEXED BY ix_hpatients_searchname "
                              "WHERE %1 GLOB ? ORDER BY SearchName, PNo")
             : QStringLiteral("SELECT PNo FROM hPatients WHERE (%1 || '') LIKE ? "
                              "ORDER BY SearchName || '', PNo");
    return {walk.arg(column), count, {pattern}, {indexPattern}};
}

// The rows of vwhpatients for a page of numbers, in the page's order.
db::Result rowsOf(db::Connection& c, const Plan& plan, int limit, qint64 offset)
{
    db::Params params = plan.params;
    params.push_back(limit);
    params.push_back(offset);
    const db::Result keys = c.query(plan.keys + QStringLiteral(" LIMIT ? OFFSET ?"), params);
    db::Params pnos;
    QHash<QString, int> order;
    for (const db::Row& k : keys.rows) {
        order.insert(k.text(u"PNo"), int(pnos.size()));
        pnos.push_back(k.text(u"PNo"));
    }
    if (pnos.empty())
        return {};
    const QString marks = QStringList(int(pnos.size()), QStringLiteral("?")).join(u',');
    db::Result rows =
        c.query(QStringLiteral("SELECT * FROM vwhpatients WHERE pno IN (%1)").arg(marks), pnos);
    std::sort(rows.rows.begin(), rows.rows.end(), [&](const db::Row& a, const db::Row& b) {
        return order.value(a.text(u"pno")) < order.value(b.text(u"pno"));
    });
    return rows;
}

// The rows of one search. The first page comes with the search; further pages are read
// on the desk's shared connection as the grid scrolls, each a finished statement, so no
// read stays open between them.
class SearchRows : public QAbstractTableModel {
public:
    SearchRows(AppContext& ctx, Plan plan, qint64 total, db::Result first, QObject* parent)
        : QAbstractTableModel(parent), m_ctx(ctx), m_plan(std::move(plan)), m_total(total),
          m_columns(first.columns), m_rows(std::move(first.rows))
    {
    }
    int rowCount(const QModelIndex& p = {}) const override
    {
        return p.isValid() ? 0 : int(m_rows.size());
    }
    int columnCount(const QModelIndex& p = {}) const override
    {
        return p.isValid() || !m_columns ? 0 : m_columns->count();
    }
    QVariant data(const QModelIndex& i, int role) const override
    {
        if (!i.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole))
            return {};
        const QVariant v = m_rows[size_t(i.row())].value(i.column());
        return role == Qt::EditRole ? v : db::displayValue(v);
    }
    QVariant headerData(int section, Qt::Orientation o, int role) const override
    {
        if (o == Qt::Horizontal && role == Qt::DisplayRole && m_columns &&
            section < m_columns->count())
            return m_columns->names().at(section);
        return QAbstractTableModel::headerData(section, o, role);
    }
    bool canFetchMore(const QModelIndex& p) const override
    {
        return !p.isValid() && qint64(m_rows.size()) < m_total;
    }
    void fetchMore(const QModelIndex& p) override
    {
        if (!canFetchMore(p))
            return;
        db::Result more;
        try {
            more = rowsOf(m_ctx.db(), m_plan, kPage, qint64(m_rows.size()));
        } catch (const db::DbError&) {
            // The grid keeps what it has.
        }
        if (more.rows.empty()) {
            m_total = qint64(m_rows.size());
            return;
        }
        const int from = int(m_rows.size());
        beginInsertRows({}, from, from + int(more.rows.size()) - 1);
        for (db::Row& r : more.rows)
            m_rows.push_back(std::move(r));
        endInsertRows();
    }

private:
    AppContext& m_ctx;
    Plan m_plan;
    qint64 m_total;
    std::shared_ptr<const db::Columns> m_columns;
    std::vector<db::Row> m_rows;
};

QString foundText(qint64 n) { return QStringLiteral("%1 Records Found").arg(n); }

}  // namespace

QString foldName(const QString& name)
{
    QString out;
    const QString decomposed = name.normalized(QString::NormalizationForm_KD);
    out.reserve(decomposed.size());
    for (const QChar c : decomposed)
        if (c.category() != QChar::Mark_NonSpacing && c.category() != QChar::Mark_Enclosing &&
            c.category() != QChar::Mark_SpacingCombining)
            out += c;
    return out.toUpper().simplified();
}

QString searchNameOf(const QString& surname, const QString& firstName)
{
    return foldName(surname + QLatin1Char(' ') + firstName);
}

int foldPendingNames(db::Connection& c)
{
    int folded = 0;
    for (;;) {
        const db::Result pending = c.query(
            QStringLiteral("SELECT PNo, psurname, pfirstName FROM hPatients "
                           "WHERE SearchName IS NULL LIMIT 500"));
        if (pending.empty())
            return folded;
        // One commit for the lot: a script that wrote thousands leaves them to one search.
        db::Transaction tx(c);
        for (const db::Row& r : pending.rows) {
            // A name that folds to nothing still gets a value, or it would come back here.
            c.exec(QStringLiteral("UPDATE hPatients SET SearchName = ? WHERE PNo = ? "
                                  "AND SearchName IS NULL"),
                   {searchNameOf(r.text(u"psurname"), r.text(u"pfirstName")),
                    r.text(u"PNo")});
            ++folded;
        }
        tx.commit();
    }
}

int searchLimit(const QString& searchValue)
{
    bool ok = false;
    const int n = searchValue.trimmed().toInt(&ok);
    return ok && n > 0 ? n : 0;
}

bool startsIncrementalSearch(const QString& text)
{
    const QString t = text.trimmed();
    return t.size() >= 3 && !t.contains(QLatin1Char('0')) && !t.contains(QLatin1Char('1'));
}

SearchOutcome searchPatients(AppContext& ctx, const QString& mode, int limit,
                             const QString& text, QObject* parent)
{
    SearchOutcome out;
    const QString t = text.trimmed();
    if (t.isEmpty()) {
        out.foundText = foundText(0);
        out.rows = new SearchRows(ctx, {}, 0, {}, parent);
        return out;
    }
    try {
        db::Connection& c = ctx.db();
        foldPendingNames(c);
        const Plan plan = planFor(c, mode, t);
        db::Result first = rowsOf(c, plan, limit > 0 ? limit : kPage, 0);
        if (limit > 0 || first.size() < size_t(kPage))
            out.found = qint64(first.size());
        else
            out.found = c.scalar(plan.count, plan.countParams).toLongLong();
        out.foundText = foundText(out.found);
        out.rows = new SearchRows(ctx, plan, out.found, std::move(first), parent);
    } catch (const db::DbError& e) {
        out = SearchOutcome{};
        out.error = e.description();
    }
    return out;
}

}  // namespace tolmar::patients
