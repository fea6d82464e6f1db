#pragma once
// The database seam: the five logical databases on SQLite files or PostgreSQL schemas,
// connections that clean up after themselves, bound statements only, and rows that read
// NULL as "" the way every screen expects.

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

class QAbstractItemModel;
class QSqlError;
class QSqlQuery;
class QObject;

namespace tolmar::db {

enum class Database { Hospital, HospitalArchive, Master, SmsCenter, Accounting };
inline constexpr Database kAllDatabases[] = {Database::Hospital, Database::HospitalArchive,
                                             Database::Master, Database::SmsCenter,
                                             Database::Accounting};

// "HOSPITAL", "HOSPITALArchive", "Master", "SmsCenter", "Accounting".
QString databaseName(Database db);
std::optional<Database> databaseFromName(const QString& name);

// The schemas a PostgreSQL connection to `db` looks names up in, comma-separated.
QString pgSearchPath(Database db);

enum class Backend { Sqlite, Postgres };

// Where the five databases live. Built from the server name of made.sys:
//   "sqlite:DIR"            five SQLite files in DIR
//   "host", "host:port"     a PostgreSQL server; "host:port/dbname" picks the database
//   "host\INSTANCE"         the instance part is kept for the session and ignored here
struct ServerConfig {
    Backend backend = Backend::Sqlite;
    QString sqliteDir;
    QString host;
    int port = 5432;
    QString pgDatabase = QStringLiteral("tolmar");
    QString user;      // empty: TOLMAR_DB_USER or the suite's login
    QString password;  // empty: TOLMAR_DB_PASSWORD, ~/.pgpass, or the suite's password

    static ServerConfig fromServerName(const QString& serverName,
                                       const QString& relativeTo = QString());
    QString describe() const;  // for messages; never contains the password
};

// A failed statement or connection. description() is the driver's own text, never empty.
class DbError : public std::runtime_error {
public:
    DbError(const QString& description, const QString& statement = QString(),
            const QString& nativeCode = QString());
    const QString& description() const { return m_description; }
    const QString& statement() const { return m_statement; }
    // The driver's own code: the SQLSTATE on PostgreSQL, the result code on SQLite.
    const QString& nativeCode() const { return m_nativeCode; }
    // A row would have repeated a value that a primary or unique key holds already.
    bool isUniqueViolation() const;
    // The server could not be reached or dropped the connection (see isLinkFailure): the
    // statement is not at fault, and the same command may go through once the server is back.
    bool linkLost() const;

private:
    QString m_description;
    QString m_statement;
    QString m_nativeCode;
};

// Runs `f` once more when it failed for a lost link. The failure itself marked the
// connection, which reconnects for the second run: this is how the first statement on a kept
// connection gets through after a server restart that nobody saw. Only for work that does no
// harm when done twice (a read; a draw, which at worst skips a number).
template <typename F>
auto retryOnLostLink(F&& f) -> decltype(f())
{
    try {
        return f();
    } catch (const DbError& e) {
        if (!e.linkLost())
            throw;
    }
    return f();
}

// Whether an error is about the link to the server rather than the statement: SQLSTATE
// class 08, the server shutting down, restarting or ending the session (57P01-57P03), or
// one of the driver's own texts for a server that is not there. sqlState may be empty.
bool isLinkFailure(const QString& sqlState, const QString& text);

// Column names of a result, looked up without regard to case (PostgreSQL folds unquoted
// names to lower case, SQLite keeps them as declared).
class Columns {
public:
    explicit Columns(QStringList names);
    int indexOf(QStringView name) const;  // -1 when absent
    const QStringList& names() const { return m_names; }
    int count() const { return int(m_names.size()); }

private:
    QStringList m_names;
    QHash<QString, int> m_index;  // lower-case name -> first position
};

class Row {
public:
    Row() = default;
    Row(std::shared_ptr<const Columns> columns, std::vector<QVariant> values);

    bool has(QStringView column) const;
    QVariant value(QStringView column) const;  // throws DbError on an unknown column
    QVariant value(int index) const { return m_values.at(size_t(index)); }
    bool isNull(QStringView column) const;

    // NULL reads as "" (text), 0 (numbers), an invalid date, false.
    QString text(QStringView column) const;
    int toInt(QStringView column) const;
    qint64 toLongLong(QStringView column) const;
    double toDouble(QStringView column) const;
    bool toBool(QStringView column) const;
    QDate date(QStringView column) const;
    QDateTime dateTime(QStringView column) const;

    int columnCount() const { return m_columns ? m_columns->count() : 0; }
    QString columnName(int index) const { return m_columns->names().at(index); }
    const std::vector<QVariant>& values() const { return m_values; }

private:
    int require(QStringView column) const;
    std::shared_ptr<const Columns> m_columns;
    std::vector<QVariant> m_values;
};

// Text form of a stored value: dates ISO, NULL "", numbers without a trailing ".0".
QString variantText(const QVariant& v);
QDate variantDate(const QVariant& v);
// A value as a grid shows it: NULL blank, dates (and ISO date texts) in the short form.
QVariant displayValue(const QVariant& v);
QDateTime variantDateTime(const QVariant& v);

using Params = std::vector<QVariant>;

struct Result {
    std::shared_ptr<const Columns> columns;
    std::vector<Row> rows;
    bool empty() const { return rows.empty(); }
    size_t size() const { return rows.size(); }
    const Row& front() const { return rows.front(); }
};

// One open connection to one logical database; closed and unregistered on destruction.
// Not shared between threads.
class Connection {
public:
    Connection(const ServerConfig& config, Database db);
    // A lone local SQLite file (the workstation's own key.db), nothing attached.
    static std::unique_ptr<Connection> openLocalFile(const QString& path, bool create);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Backend backend() const { return m_config.backend; }
    Database database() const { return m_db; }
    const ServerConfig& config() const { return m_config; }

    Result query(const QString& sql, const Params& params = {});
    std::optional<Row> queryOne(const QString& sql, const Params& params = {});
    // The first column of the first row; an invalid QVariant when there is no row.
    QVariant scalar(const QString& sql, const Params& params = {});
    // Returns the number of rows affected.
    int exec(const QString& sql, const Params& params = {});
    // Statements without values (DDL, PRAGMA); never for data.
    void execScript(const QString& sql);

    bool inTransaction() const { return m_txDepth > 0; }
    // A statement failed here since the connection opened: it may be dead or half-way
    // through something, and is not handed on to another command.
    bool sawError() const { return m_sawError; }

    // For loaders that write hundreds of thousands of rows on this connection: a page
    // cache large enough to keep the indexes in memory (SQLite), no wait for the log flush
    // at commit (PostgreSQL). Nothing about the data's safety once committed changes.
    void tuneForBulkLoad();

    // A read-only grid model over a statement that fetches rows as the view scrolls, on a
    // connection the model opens for itself (so it never holds this one's reads back).
    // The model is owned by parent.
    QAbstractItemModel* gridModel(const QString& sql, const Params& params, QObject* parent);

    QString connectionName() const { return m_name; }

private:
    friend class Transaction;
    void begin();
    void commit();
    void rollback();
    // Prepares (once) and executes a statement with its values bound.
    std::shared_ptr<QSqlQuery> run(const QString& sql, const Params& params);
    void open();
    void openSqlite();
    void openPostgres();
    void openLocal(const QString& path, bool create);
    void dropLink();
    // Before a statement outside a transaction: reconnects when this connection lost its
    // link, and when another connection of the process lost its link since this one last
    // answered, asks the server once whether this one still stands. A healthy desk pays
    // nothing here.
    void restoreLink();
    // The error to throw for a failed statement; a link failure marks this connection for
    // reconnecting and tells the others to check theirs.
    DbError failure(const QSqlError& e, const QString& sql);
    struct LocalTag {};
    Connection(LocalTag, const QString& path, bool create);
    struct Cache;
    ServerConfig m_config;
    Database m_db;
    QString m_name;
    int m_txDepth = 0;
    bool m_local = false;
    bool m_sawError = false;
    bool m_linkLost = false;
    quint64 m_linkFailuresSeen = 0;
    std::unique_ptr<Cache> m_cache;
};

// Rolls back unless commit() was called. On SQLite the write lock is taken at once, so two
// desks saving together wait for each other instead of failing half-way.
class Transaction {
public:
    explicit Transaction(Connection& c);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();
    void rollback();
    bool active() const { return m_active; }

private:
    Connection& m_conn;
    bool m_active = true;
};

// Sees every statement that connections on the calling thread run, with the values as
// they go to the driver (dates as ISO text, true as 1), transaction verbs included. The
// save benchmark records a desk's statements with it to replay them through pgbench. Not
// owned; nullptr stops it.
class StatementObserver {
public:
    virtual ~StatementObserver() = default;
    virtual void statement(const Connection& c, const QString& sql, const Params& params) = 0;
};
void observeStatements(StatementObserver* observer);

// How long a SQLite connection waits for another desk's write lock before giving up.
inline constexpr int kSqliteBusyTimeoutMs = 60000;

}  // namespace tolmar::db
