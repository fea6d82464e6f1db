#include "platform/db.h"

#include "platform/schema.h"
#include "platform/sqlsplit.h"

#include <QAtomicInteger>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QAbstractTableModel>
#include <QSqlRecord>
#include <QTime>

#include <atomic>

namespace tolmar::db {

namespace {

// The suite's own database login; an installation overrides the password through the
// environment or ~/.pgpass so that it never has to be written into a file of ours.
const QString kSuiteUser = QStringLiteral("vortl3");
const QString kSuitePassword = QStringLiteral("Bravo#%%645?");

QString nextConnectionName()
{
    static QAtomicInteger<quint64> counter;
    return QStringLiteral("tolmar-%1").arg(counter.fetchAndAddRelaxed(1) + 1);
}

QString sqlitePath(const QString& dir, Database db)
{
    return QDir(dir).filePath(databaseName(db) + QStringLiteral(".db"));
}

QString schemaName(Database db) { return databaseName(db).toLower(); }

bool pgpassHasEntry(const ServerConfig& c, const QString& user)
{
    QString file = qEnvironmentVariable("PGPASSFILE");
    if (file.isEmpty())
        file = QDir::home().filePath(QStringLiteral(".pgpass"));
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    auto matches = [](const QString& field, const QString& value) {
        return field == QLatin1String("*") || field == value;
    };
    while (!f.atEnd()) {
        const QString line = QString::fromUtf8(f.readLine()).trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const QStringList p = line.split(QLatin1Char(':'));
        if (p.size() >= 5 && matches(p[0], c.host) && matches(p[1], QString::number(c.port)) &&
            matches(p[2], c.pgDatabase) && matches(p[3], user))
            return true;
    }
    return false;
}

QVariant bindable(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return QVariant(QMetaType::fromType<QString>());
    switch (v.metaType().id()) {
    case QMetaType::QDate:
    case QMetaType::QDateTime:
    case QMetaType::QTime:
        // Both backends take the ISO text: SQLite stores it, PostgreSQL reads it as a date.
        return variantText(v);
    case QMetaType::Bool:
        return v.toBool() ? 1 : 0;
    default:
        return v;
    }
}

}  // namespace

// ---------------------------------------------------------------------------------------

QString databaseName(Database db)
{
    switch (db) {
    case Database::Hospital: return QStringLiteral("HOSPITAL");
    case Database::HospitalArchive: return QStringLiteral("HOSPITALArchive");
    case Database::Master: return QStringLiteral("Master");
    case Database::SmsCenter: return QStringLiteral("SmsCenter");
    case Database::Accounting: return QStringLiteral("Accounting");
    }
    return {};
}

std::optional<Database> databaseFromName(const QString& name)
{
    for (Database d : kAllDatabases)
        if (databaseName(d).compare(name, Qt::CaseInsensitive) == 0)
            return d;
    return std::nullopt;
}

ServerConfig ServerConfig::fromServerName(const QString& serverName, const QString& relativeTo)
{
    ServerConfig c;
    const QString name = serverName.trimmed();
    if (name.startsWith(QLatin1String("sqlite:"), Qt::CaseInsensitive)) {
        c.backend = Backend::Sqlite;
        QString dir = name.mid(7).trimmed();
        if (QDir::isRelativePath(dir) && !relativeTo.isEmpty())
            dir = QDir(relativeTo).filePath(dir);
        c.sqliteDir = QDir::cleanPath(dir);
        return c;
    }
    c.backend = Backend::Postgres;
    QString host = name.section(QLatin1Char('\\'), 0, 0);
    const int slash = host.indexOf(QLatin1Char('/'));
    if (slash >= 0) {
        c.pgDatabase = host.mid(slash + 1);
        host = host.left(slash);
    }
    const int colon = host.lastIndexOf(QLatin1Char(':'));
    if (colon > 0) {
        bool ok = false;
        const int port = host.mid(colon + 1).toInt(&ok);
        if (ok) {
            c.port = port;
            host = host.left(colon);
        }
    }
    c.host = host;
    return c;
}

QString ServerConfig::describe() const
{
    if (backend == Backend::Sqlite)
        return QStringLiteral("SQLite files in %1").arg(sqliteDir);
    return QStringLiteral("PostgreSQL %1:%2/%3").arg(host).arg(port).arg(pgDatabase);
}

DbError::DbError(const QString& description, const QString& statement,
                 const QString& nativeCode)
    : std::runtime_error(description.toStdString()), m_description(description),
      m_statement(statement), m_nativeCode(nativeCode)
{
}

bool DbError::isUniqueViolation() const
{
    // PostgreSQL names the case by its SQLSTATE; SQLite gives one code (19) for every kind
    // of constraint, and only its text tells a unique key from a NOT NULL or a CHECK.
    return m_nativeCode == QLatin1String("23505") ||
           m_description.contains(QLatin1String("UNIQUE constraint failed"));
}

bool DbError::linkLost() const { return isLinkFailure(m_nativeCode, m_description); }

bool isLinkFailure(const QString& sqlState, const QString& text)
{
    if (sqlState.startsWith(QLatin1String("08")) || sqlState == QLatin1String("57P01") ||
        sqlState == QLatin1String("57P02") || sqlState == QLatin1String("57P03"))
        return true;
    // What libpq and Qt say when there is no SQLSTATE to go by: no server answered, or the
    // one that did went away. Texts of a refused login (a wrong password, an unknown
    // database) are not among them: the desk must read those as they are.
    static const char* const kTexts[] = {
        "server closed the connection",
        "terminating connection due to administrator command",
        "the database system is shutting down",
        "the database system is starting up",
        "the database system is not yet accepting connections",
        "the database system is in recovery mode",
        "could not connect to server",
        "connection refused",
        "connection reset by peer",
        "connection timed out",
        "timeout expired",
        "no route to host",
        "network is unreachable",
        "could not translate host name",
        "no connection to the server",
        "could not send data to server",
        "could not receive data from server",
        "ssl syscall error",
        "ssl connection has been closed unexpectedly",
        "lost synchronization with server",
        "database not open",
    };
    for (const char* t : kTexts)
        if (text.contains(QLatin1String(t), Qt::CaseInsensitive))
            return true;
    return false;
}

// ---------------------------------------------------------------------------------------

Columns::Columns(QStringList names) : m_names(std::move(names))
{
    for (int i = 0; i < m_names.size(); ++i) {
        const QString key = m_names[i].toLower();
        if (!m_index.contains(key))
            m_index.insert(key, i);
    }
}

int Columns::indexOf(QStringView name) const
{
    return m_index.value(name.toString().toLower(), -1);
}

Row::Row(std::shared_ptr<const Columns> columns, std::vector<QVariant> values)
    : m_columns(std::move(columns)), m_values(std::move(values))
{
}

bool Row::has(QStringView column) const
{
    return m_columns && m_columns->indexOf(column) >= 0;
}

int Row::require(QStringView column) const
{
    const int i = m_columns ? m_columns->indexOf(column) : -1;
    if (i < 0)
        throw DbError(QStringLiteral("Item cannot be found in the collection corresponding to "
                                     "the requested name or ordinal: %1")
                          .arg(column.toString()));
    return i;
}

QVariant Row::value(QStringView column) const { return m_values[size_t(require(column))]; }

bool Row::isNull(QStringView column) const
{
    const QVariant& v = m_values[size_t(require(column))];
    return !v.isValid() || v.isNull();
}

QString variantText(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return QString();
    switch (v.metaType().id()) {
    case QMetaType::QDate:
        return v.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return v.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    case QMetaType::QTime:
        return v.toTime().toString(QStringLiteral("HH:mm"));
    case QMetaType::Double:
    case QMetaType::Float:
        return QString::number(v.toDouble(), 'g', 15);
    default:
        return v.toString();
    }
}

QDate variantDate(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return {};
    if (v.metaType().id() == QMetaType::QDate)
        return v.toDate();
    if (v.metaType().id() == QMetaType::QDateTime)
        return v.toDateTime().date();
    const QString s = v.toString().trimmed();
    QDate d = QDate::fromString(s.left(10), Qt::ISODate);
    if (!d.isValid())
        d = QDate::fromString(s, QStringLiteral("dd/MM/yyyy"));
    return d;
}

QDateTime variantDateTime(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return {};
    if (v.metaType().id() == QMetaType::QDateTime)
        return v.toDateTime();
    if (v.metaType().id() == QMetaType::QDate)
        return v.toDate().startOfDay();
    QString s = v.toString().trimmed();
    s.replace(QLatin1Char('T'), QLatin1Char(' '));
    for (const char* f : {"yyyy-MM-dd HH:mm:ss.zzz", "yyyy-MM-dd HH:mm:ss", "yyyy-MM-dd HH:mm",
                          "yyyy-MM-dd"}) {
        const QDateTime dt = QDateTime::fromString(s, QString::fromLatin1(f));
        if (dt.isValid())
            return dt;
    }
    return {};
}

QString Row::text(QStringView column) const { return variantText(value(column)); }

int Row::toInt(QStringView column) const { return int(toLongLong(column)); }

qint64 Row::toLongLong(QStringView column) const
{
    const QVariant v = value(column);
    if (!v.isValid() || v.isNull())
        return 0;
    bool ok = false;
    const qint64 n = v.toLongLong(&ok);
    return ok ? n : qint64(v.toDouble());
}

double Row::toDouble(QStringView column) const
{
    const QVariant v = value(column);
    return (!v.isValid() || v.isNull()) ? 0.0 : v.toDouble();
}

bool Row::toBool(QStringView column) const
{
    const QVariant v = value(column);
    if (!v.isValid() || v.isNull())
        return false;
    if (v.metaType().id() == QMetaType::QString) {
        const QString s = v.toString().trimmed();
        return s.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 ||
               (s.toLongLong() != 0);
    }
    return v.toBool();
}

QDate Row::date(QStringView column) const { return variantDate(value(column)); }
QDateTime Row::dateTime(QStringView column) const { return variantDateTime(value(column)); }

// ---------------------------------------------------------------------------------------

namespace {
thread_local StatementObserver* t_observer = nullptr;
}  // namespace

void observeStatements(StatementObserver* observer) { t_observer = observer; }

// Prepared statements by text, so a statement that runs a thousand times is parsed once.
struct Connection::Cache {
    QHash<QString, std::shared_ptr<QSqlQuery>> statements;
};

namespace {
constexpr int kMaxCachedStatements = 128;

// Link failures seen anywhere in the process: each kept connection compares the count with
// the one it last answered at, and checks itself once when it moved.
std::atomic<quint64> g_linkFailures{0};

// Qt refuses a statement on a closed connection without setting any error text.
const QString kNotOpenText = QStringLiteral("database not open");

QString errorText(const QSqlError& e)
{
    QString t = e.databaseText().trimmed();
    if (t.isEmpty())
        t = e.driverText().trimmed();
    if (t.isEmpty())
        t = e.text().trimmed();
    return t;
}

// A driver that gives no text still gets one: nobody can act on an empty message.
DbError toDbError(const QSqlError& e, const QString& sql, const QSqlDatabase& d)
{
    QString text = errorText(e);
    if (text.isEmpty())
        text = d.isOpen() ? QStringLiteral("The database driver failed without giving a reason")
                          : kNotOpenText;
    DbError err(text, sql, e.nativeErrorCode());
    if (err.linkLost())
        ++g_linkFailures;
    return err;
}
}  // namespace

DbError Connection::failure(const QSqlError& e, const QString& sql)
{
    m_sawError = true;
    DbError err = toDbError(e, sql, QSqlDatabase::database(m_name, false));
    if (err.linkLost()) {
        m_linkLost = true;
        m_linkFailuresSeen = g_linkFailures.load();
    }
    return err;
}

void Connection::restoreLink()
{
    if (m_local || m_txDepth > 0)
        return;
    const quint64 failures = g_linkFailures.load(std::memory_order_relaxed);
    if (!m_linkLost && m_linkFailuresSeen == failures)
        return;
    m_linkFailuresSeen = failures;
    if (!m_linkLost) {
        if (m_config.backend == Backend::Sqlite)
            return;
        QSqlQuery ping(QSqlDatabase::database(m_name, false));
        if (ping.exec(QStringLiteral("SELECT 1")))
            return;
        m_linkLost = true;
    }
    dropLink();
    m_linkLost = false;
    m_sawError = false;
    try {
        open();
    } catch (...) {
        m_linkLost = true;
        throw;
    }
}

Connection::Connection(const ServerConfig& config, Database db)
    : m_config(config), m_db(db), m_name(nextConnectionName()),
      m_linkFailuresSeen(g_linkFailures.load()), m_cache(std::make_unique<Cache>())
{
    try {
        open();
    } catch (...) {
        // No destructor runs for a connection that never opened: unregister it here, or
        // every failed attempt while the server is down would stay registered.
        m_linkLost = true;
        dropLink();
        throw;
    }
}

void Connection::open()
{
    if (m_config.backend == Backend::Sqlite)
        openSqlite();
    else
        openPostgres();
}

Connection::Connection(LocalTag, const QString& path, bool create)
    : m_db(Database::Hospital), m_name(nextConnectionName()), m_cache(std::make_unique<Cache>())
{
    m_config.backend = Backend::Sqlite;
    m_config.sqliteDir = QFileInfo(path).absolutePath();
    m_local = true;
    openLocal(path, create);
}

std::unique_ptr<Connection> Connection::openLocalFile(const QString& path, bool create)
{
    return std::unique_ptr<Connection>(new Connection(LocalTag{}, path, create));
}

void Connection::openLocal(const QString& path, bool create)
{
    if (!create && !QFileInfo::exists(path))
        throw DbError(QStringLiteral("Could not find file '%1'.").arg(path));
    QSqlDatabase d = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    d.setDatabaseName(path);
    d.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kSqliteBusyTimeoutMs));
    if (!d.open())
        throw DbError(errorText(d.lastError()));
}

Connection::~Connection()
{
    if (m_txDepth > 0) {
        QSqlDatabase d = QSqlDatabase::database(m_name, false);
        if (d.isOpen())
            d.rollback();
    }
    dropLink();
}

void Connection::dropLink()
{
    // Statements are freed on the server while the link stands; on a lost link the driver
    // goes first, or each of them would try the dead link and complain on stderr.
    if (!m_linkLost)
        m_cache->statements.clear();
    {
        QSqlDatabase d = QSqlDatabase::database(m_name, false);
        if (d.isValid())
            d.close();
    }
    QSqlDatabase::removeDatabase(m_name);
    m_cache->statements.clear();
}

void Connection::openSqlite()
{
    const QString dir = m_config.sqliteDir;
    for (Database d : kAllDatabases) {
        if (!QFileInfo::exists(sqlitePath(dir, d)))
            throw DbError(QStringLiteral("[DBNETLIB][ConnectionOpen] Database %1 not found in %2")
                              .arg(databaseName(d), dir));
    }
    QSqlDatabase d = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
    d.setDatabaseName(sqlitePath(dir, m_db));
    d.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kSqliteBusyTimeoutMs));
    if (!d.open())
        throw DbError(errorText(d.lastError()));
    // Case-insensitive LIKE is SQLite's default; the other pragmas trade nothing we need
    // for speed: WAL is set once on the file, synchronous=NORMAL is safe under WAL.
    execScript(QStringLiteral("PRAGMA synchronous=NORMAL; PRAGMA temp_store=MEMORY;"));
    // The own database is `main`; the other four are reachable under their names, found in
    // this order when a statement does not name its database.
    for (Database other : kAllDatabases) {
        if (other == m_db)
            continue;
        exec(QStringLiteral("ATTACH DATABASE ? AS %1").arg(databaseName(other)),
             {sqlitePath(dir, other)});
    }
    // Views that read across databases can only be temporary on SQLite.
    for (const QString& view : eachConnectionStatements(m_db))
        execScript(view);
}

void Connection::openPostgres()
{
    QSqlDatabase d = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_name);
    d.setHostName(m_config.host);
    d.setPort(m_config.port);
    d.setDatabaseName(m_config.pgDatabase);
    QString user = m_config.user;
    if (user.isEmpty())
        user = qEnvironmentVariable("TOLMAR_DB_USER", kSuiteUser);
    d.setUserName(user);
    QString password = m_config.password;
    if (password.isEmpty())
        password = qEnvironmentVariable("TOLMAR_DB_PASSWORD");
    if (password.isEmpty() && !pgpassHasEntry(m_config, user))
        password = kSuitePassword;
    d.setPassword(password);
    d.setConnectOptions(QStringLiteral("connect_timeout=10;application_name=tolmar-records"));
    if (!d.open()) {
        const DbError e = failure(d.lastError(), QString());
        throw DbError(QStringLiteral("%1 (%2)").arg(e.description(), m_config.describe()),
                      QString(), e.nativeCode());
    }
    execScript(QStringLiteral("SET search_path TO ") + pgSearchPath(m_db));
}

QString pgSearchPath(Database db)
{
    // Own schema first, then the others: an unqualified name resolves the way it does on
    // SQLite, where the own file is `main` and the others are attached in this order.
    QStringList path{schemaName(db)};
    for (Database other : kAllDatabases)
        if (other != db)
            path << schemaName(other);
    path << QStringLiteral("public");
    return path.join(QLatin1Char(','));
}

std::shared_ptr<QSqlQuery> Connection::run(const QString& sql, const Params& params)
{
    restoreLink();
    // A statement that runs a thousand times is parsed once; the cache is bounded because
    // some callers compose statements of varying length (IN lists, multi-row inserts).
    if (!m_cache->statements.contains(sql) &&
        m_cache->statements.size() >= kMaxCachedStatements)
        m_cache->statements.clear();
    auto& slot = m_cache->statements[sql];
    if (!slot) {
        slot = std::make_shared<QSqlQuery>(QSqlDatabase::database(m_name, false));
        slot->setForwardOnly(true);
        slot->setNumericalPrecisionPolicy(QSql::LowPrecisionDouble);
        if (!slot->prepare(sql)) {
            const QSqlError err = slot->lastError();
            m_cache->statements.remove(sql);
            throw failure(err, sql);
        }
    }
    std::shared_ptr<QSqlQuery> q = slot;
    for (int i = 0; i < int(params.size()); ++i)
        q->bindValue(i, bindable(params[size_t(i)]));
    if (t_observer) {
        const QVariantList bound = q->boundValues();
        t_observer->statement(*this, sql, Params(bound.begin(), bound.end()));
    }
    if (!q->exec()) {
        const QSqlError err = q->lastError();
        q->finish();
        // A connection that broke mid-way must not keep a statement prepared on it.
        m_cache->statements.remove(sql);
        throw failure(err, sql);
    }
    return q;
}

Result Connection::query(const QString& sql, const Params& params)
{
    const std::shared_ptr<QSqlQuery> q = run(sql, params);
    Result r;
    if (q->isSelect()) {
        const QSqlRecord rec = q->record();
        QStringList names;
        names.reserve(rec.count());
        for (int i = 0; i < rec.count(); ++i)
            names << rec.fieldName(i);
        r.columns = std::make_shared<const Columns>(names);
        const int n = rec.count();
        while (q->next()) {
            std::vector<QVariant> values(static_cast<size_t>(n));
            for (int i = 0; i < n; ++i)
                if (!q->isNull(i))
                    values[size_t(i)] = q->value(i);
            r.rows.emplace_back(r.columns, std::move(values));
        }
    } else {
        r.columns = std::make_shared<const Columns>(QStringList{});
    }
    q->finish();
    return r;
}

std::optional<Row> Connection::queryOne(const QString& sql, const Params& params)
{
    Result r = query(sql, params);
    if (r.rows.empty())
        return std::nullopt;
    return std::move(r.rows.front());
}

QVariant Connection::scalar(const QString& sql, const Params& params)
{
    Result r = query(sql, params);
    if (r.rows.empty() || r.rows.front().columnCount() == 0)
        return {};
    return r.rows.front().value(0);
}

int Connection::exec(const QString& sql, const Params& params)
{
    const std::shared_ptr<QSqlQuery> q = run(sql, params);
    const int n = q->numRowsAffected();
    q->finish();
    return n;
}

void Connection::execScript(const QString& sql)
{
    restoreLink();
    QSqlDatabase d = QSqlDatabase::database(m_name, false);
    for (const QString& stmt : splitSqlStatements(sql)) {
        if (t_observer)
            t_observer->statement(*this, stmt, {});
        QSqlQuery q(d);
        if (!q.exec(stmt))
            throw failure(q.lastError(), stmt);
    }
}

void Connection::tuneForBulkLoad()
{
    if (m_config.backend == Backend::Sqlite)
        execScript(QStringLiteral("PRAGMA main.cache_size=-262144"));
    else
        execScript(QStringLiteral("SET synchronous_commit TO off"));
}

void Connection::begin()
{
    if (m_txDepth > 0) {
        ++m_txDepth;
        throw DbError(QStringLiteral("A transaction is already open on this connection"));
    }
    restoreLink();
    m_txDepth = 1;
    try {
        execScript(m_config.backend == Backend::Sqlite ? QStringLiteral("BEGIN IMMEDIATE")
                                                       : QStringLiteral("BEGIN"));
    } catch (...) {
        m_txDepth = 0;
        throw;
    }
}

void Connection::commit()
{
    // Still inside the transaction while COMMIT runs, so that a lost link is not restored
    // first: COMMIT on a new connection would report success for work that is gone.
    try {
        execScript(QStringLiteral("COMMIT"));
    } catch (...) {
        m_txDepth = 0;
        throw;
    }
    m_txDepth = 0;
}

void Connection::rollback()
{
    m_txDepth = 0;
    m_cache->statements.clear();
    QSqlDatabase d = QSqlDatabase::database(m_name, false);
    if (t_observer)
        t_observer->statement(*this, QStringLiteral("ROLLBACK"), {});
    QSqlQuery q(d);
    q.exec(QStringLiteral("ROLLBACK"));
}

QVariant displayValue(const QVariant& v)
{
    if (!v.isValid() || v.isNull())
        return QString();
    if (v.metaType().id() == QMetaType::QDate)
        return v.toDate().toString(QStringLiteral("dd/MM/yyyy"));
    if (v.metaType().id() == QMetaType::QDateTime)
        return v.toDateTime().toString(QStringLiteral("dd/MM/yyyy h:mm AP"));
    if (v.metaType().id() == QMetaType::QString) {
        static const QRegularExpression iso(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
        const QString s = v.toString();
        if (iso.match(s).hasMatch())
            return QDate::fromString(s, Qt::ISODate).toString(QStringLiteral("dd/MM/yyyy"));
    }
    return v;
}

namespace {
// Grids show what the statement gives, but NULL as blank and dates in the short form.
// The model reads on a connection of its own: rows are fetched as the view scrolls, and on
// SQLite an unfinished read pins its connection to the moment it began, so a grid on a
// shared connection would keep every later statement there from seeing new rows.
// The read goes forward only and the model keeps what it has read: PostgreSQL then streams
// the rows (single-row mode) instead of handing the whole result over at once, so a list of
// a million patients shows its first page as soon as the server has it.
class GridModel : public QAbstractTableModel {
public:
    GridModel(std::unique_ptr<Connection> own, QObject* parent)
        : QAbstractTableModel(parent), m_own(std::move(own))
    {
    }
    void start(QSqlQuery q)
    {
        m_query = std::move(q);
        m_record = m_query.record();
        fetchPage();
    }
    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }
    int columnCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : m_record.count();
    }
    QVariant headerData(int section, Qt::Orientation o, int role) const override
    {
        if (o == Qt::Horizontal && role == Qt::DisplayRole && section < m_record.count())
            return m_record.fieldName(section);
        return QAbstractTableModel::headerData(section, o, role);
    }
    bool canFetchMore(const QModelIndex& parent) const override
    {
        return !parent.isValid() && !m_atEnd;
    }
    void fetchMore(const QModelIndex& parent) override
    {
        if (!parent.isValid())
            fetchPage();
    }
    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid() || index.row() >= rowCount() || index.column() >= columnCount())
            return {};
        const QVariant& v = m_rows[size_t(index.row())][size_t(index.column())];
        if (role == Qt::EditRole)
            return v;
        if (role != Qt::DisplayRole)
            return {};
        return displayValue(v);
    }

private:
    void fetchPage()
    {
        // As many rows as a few screens show; the view asks for more as it scrolls.
        constexpr int kPage = 256;
        std::vector<std::vector<QVariant>> page;
        while (int(page.size()) < kPage && m_query.next()) {
            std::vector<QVariant> row(size_t(m_record.count()));
            for (int c = 0; c < m_record.count(); ++c)
                row[size_t(c)] = m_query.value(c);
            page.push_back(std::move(row));
        }
        if (int(page.size()) < kPage) {
            m_atEnd = true;
            m_query.finish();
        }
        if (page.empty())
            return;
        beginInsertRows({}, int(m_rows.size()), int(m_rows.size() + page.size()) - 1);
        for (auto& r : page)
            m_rows.push_back(std::move(r));
        endInsertRows();
    }

    std::unique_ptr<Connection> m_own;  // declared first: the query goes before it
    QSqlQuery m_query;
    QSqlRecord m_record;
    std::vector<std::vector<QVariant>> m_rows;
    bool m_atEnd = false;
};
}  // namespace

QAbstractItemModel* Connection::gridModel(const QString& sql, const Params& params,
                                          QObject* parent)
{
    std::unique_ptr<Connection> own;
    if (!m_local)
        own = std::make_unique<Connection>(m_config, m_db);
    QSqlDatabase d = QSqlDatabase::database(own ? own->m_name : m_name, false);
    QSqlQuery q(d);
    q.setForwardOnly(true);
    // A statement without values runs as it is: PostgreSQL's driver streams such a read
    // row by row, where a prepared one comes back whole before the first row shows.
    if (params.empty()) {
        if (!q.exec(sql))
            throw toDbError(q.lastError(), sql, d);
    } else {
        if (!q.prepare(sql))
            throw toDbError(q.lastError(), sql, d);
        for (int i = 0; i < int(params.size()); ++i)
            q.bindValue(i, bindable(params[size_t(i)]));
        if (!q.exec())
            throw toDbError(q.lastError(), sql, d);
    }
    auto* model = new GridModel(std::move(own), parent);
    model->start(std::move(q));
    return model;
}

// ---------------------------------------------------------------------------------------

Transaction::Transaction(Connection& c) : m_conn(c) { m_conn.begin(); }

Transaction::~Transaction()
{
    if (m_active)
        m_conn.rollback();
}

void Transaction::commit()
{
    if (!m_active)
        return;
    m_active = false;
    m_conn.commit();
}

void Transaction::rollback()
{
    if (!m_active)
        return;
    m_active = false;
    m_conn.rollback();
}

}  // namespace tolmar::db
