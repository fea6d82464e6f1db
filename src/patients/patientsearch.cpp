#include "patients/patientsearch.h"

#include "core/appcontext.h"
#include "core/formats.h"
#include "core/likepattern.h"
#include "platform/db.h"

#include <QAbstractTableModel>
#include <QRegularExpression>

namespace tolmar::patients {

namespace {

// Rows an unlimited search reads at a time: enough to fill the grid, so that the first
// screenful shows at once however many patients match.
constexpr int kPage = 50;

// The rows of one search. The first page comes with the search; further pages are read
// on the desk's shared connection as the grid scrolls, each a finished statement, so no
// read stays open between them.
class SearchRows : public QAbstractTableModel {
public:
    SearchRows(AppContext& ctx, QString sql, db::Params params, qint64 total, db::Result first,
               QObject* parent)
        : QAbstractTableModel(parent), m_ctx(ctx), m_sql(std::move(sql)),
          m_params(std::move(params)), m_total(total), m_columns(first.columns),
          m_rows(std::move(first.rows))
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
        if (role == Qt::EditRole)
            return v;
        // Dates in the short form whichever way the backend hands them over.
        if (v.metaType().id() == QMetaType::QDate)
            return fmt::shortDate(v.toDate());
        static const QRegularExpression iso(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
        const QString s = db::variantText(v);
        return iso.match(s).hasMatch() ? fmt::shortDate(QDate::fromString(s, Qt::ISODate)) : s;
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
        db::Params params = m_params;
        params.push_back(kPage);
        params.push_back(qint64(m_rows.size()));
        db::Result more;
        try {
            more = m_ctx.db().query(m_sql + QStringLiteral(" LIMIT ? OFFSET ?"), params);
        } catch (const db::DbError&) {
            m_total = qint64(m_rows.size());  // the grid keeps what it has
            return;
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
    QString m_sql;
    db::Params m_params;
    qint64 m_total;
    std::shared_ptr<const db::Columns> m_columns;
    std::vector<db::Row> m_rows;
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

struct Filter {
    QString where;  // on vwhpatients
    QString count;  // the same rows counted on the indexed table alone
    db::Params params;
};

Filter filterFor(db::Backend backend, const QString& mode, const QString& text)
{
    const bool lite = backend == db::Backend::Sqlite;
    if (mode == kSearchCardNo)
        return {QStringLiteral("oldPno = ?"),
                QStringLiteral("SELECT COUNT(*) FROM hPatients WHERE oldPno = ?"), {text}};
    const bool phone = mode == kSearchSysNo;
    // The folded name begins with the surname, so its first letters are a prefix of it.
    const bool prefix = mode == kSearchSurname;
    if (!phone && !prefix && mode != kSearchName)
        throw db::DbError(QStringLiteral("Unknown search mode: %1").arg(mode));
    const QString column = phone ? QStringLiteral("pPhoneNo") : QStringLiteral("SearchName");
    const QString typed = phone ? text : foldName(text);
    if (lite) {
        const QString ftsColumn = phone ? QStringLiteral("PhoneNo") : column;
        const QString rows =
            QStringLiteral("hPatientsFts WHERE %1 GLOB ?").arg(ftsColumn);
        const QString glob = globContains(typed);
        return {QStringLiteral("pno IN (SELECT PNo FROM ") + rows + QLatin1Char(')'),
                QStringLiteral("SELECT COUNT(*) FROM ") + rows,
                {prefix ? glob.mid(1) : glob}};  // without the leading "*"
    }
    const QString rows = QStringLiteral("hPatients WHERE %1 LIKE ?").arg(column);
    return {QStringLiteral("pno IN (SELECT PNo FROM ") + rows + QLatin1Char(')'),
            QStringLiteral("SELECT COUNT(*) FROM ") + rows,
            {prefix ? like::startsWith(typed) : like::contains(typed)}};
}

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
        for (const db::Row& r : pending.rows) {
            // A name that folds to nothing still gets a value, or it would come back here.
            c.exec(QStringLiteral("UPDATE hPatients SET SearchName = ? WHERE PNo = ? "
                                  "AND SearchName IS NULL"),
                   {searchNameOf(r.text(u"psurname"), r.text(u"pfirstName")),
                    r.text(u"PNo")});
            ++folded;
        }
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
        out.rows = new SearchRows(ctx, QString(), {}, 0, {}, parent);
        return out;
    }
    try {
        db::Connection& c = ctx.db();
        if (mode == kSearchName || mode == kSearchSurname)
            foldPendingNames(c);
        const Filter f = filterFor(c.backend(), mode, t);
        const QString sql = QStringLiteral("SELECT * FROM vwhpatients WHERE ") + f.where +
                            QStringLiteral(" ORDER BY FullName, pno");
        db::Params params = f.params;
        db::Result first;
        if (limit > 0) {
            params.push_back(limit);
            first = c.query(sql + QStringLiteral(" LIMIT ?"), params);
            out.found = qint64(first.size());
        } else {
            out.found = c.scalar(f.count, f.params).toLongLong();
            if (out.found > 0) {
                params.push_back(kPage);
                first = c.query(sql + QStringLiteral(" LIMIT ?"), params);
            }
        }
        // A patient deleted between the count and the page: what shows is what counts.
        if (first.empty())
            out.found = 0;
        out.foundText = foundText(out.found);
        out.rows = new SearchRows(ctx, sql, f.params, out.found, std::move(first), parent);
    } catch (const db::DbError& e) {
        out = SearchOutcome{};
        out.error = e.description();
    }
    return out;
}

}  // namespace tolmar::patients
