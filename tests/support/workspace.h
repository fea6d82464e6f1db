#pragma once
// Test fixtures over real databases. Every test gets databases of its own, migrated and
// filled with the demo installation's data (no patients): SQLite files in a temporary
// folder, and, when TOLMAR_TEST_PG names a server (host:port), a PostgreSQL database made
// from a template.

#include "core/appcontext.h"
#include "core/clock.h"
#include "platform/db.h"
#include "platform/prompt.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace tolmar::test {

std::vector<db::Backend> backends();
std::string backendName(const testing::TestParamInfo<db::Backend>& info);
// Called once when the tests are over, while the application still stands.
void dropTemplates();

class Workspace {
public:
    explicit Workspace(db::Backend backend);
    // Databases of their own on the PostgreSQL server at `pgServer` (host:port), made from
    // nothing rather than from the process's template.
    explicit Workspace(const QString& pgServer);
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    db::Backend backend() const { return m_server.backend; }
    const db::ServerConfig& server() const { return m_server; }
    // What made.sys says to reach these databases.
    QString serverName() const { return m_serverName; }
    // The folder beside the program: made.sys, sysdoc.sys, key.db, Reports/.
    QString home() const { return m_home.path(); }
    QString homePath(const QString& file) const { return m_home.filePath(file); }

    void writeFile(const QString& name, const QStringList& lines);
    // made.sys pointing at these databases, sysdoc.sys naming the demo officer.
    void writeSettings(const QString& user = QStringLiteral("demo"));

    std::unique_ptr<db::Connection> connect(db::Database which = db::Database::Hospital) const;
    int exec(const QString& sql, const db::Params& params = {},
             db::Database which = db::Database::Hospital) const;
    QVariant scalar(const QString& sql, const db::Params& params = {},
                    db::Database which = db::Database::Hospital) const;
    // Sets (or, with nullopt, removes) one AppDefaults row.
    void setDefault(const QString& key, const std::optional<QString>& value,
                    db::Database which = db::Database::Hospital) const;

private:
    QTemporaryDir m_home;
    db::ServerConfig m_server;
    QString m_serverName;
    QString m_pgServer;
    QString m_pgDatabase;
};

// A PostgreSQL server of one test's own, for a test that stops and starts it: made by initdb
// in a temporary folder, on a free port of 127.0.0.1, and gone with the object. Runs the
// server's programs as `postgres` when the tests run as root.
class ScratchServer {
public:
    // nullptr when PostgreSQL's programs are not installed.
    static std::unique_ptr<ScratchServer> create();
    ~ScratchServer();
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_port); }
    // As an administrator stops it: every session is ended, and none is accepted.
    void stop();
    void start();

private:
    ScratchServer() = default;
    void run(const QString& program, const QStringList& args) const;
    QString m_bin;
    QTemporaryDir m_dir;
    int m_port = 0;
};

// A desk at work on a workspace: the context with a scripted person and a fixed clock.
struct Desk {
    explicit Desk(const Workspace& ws,
                  QDateTime serverNow = QDateTime(QDate(2026, 11, 23), QTime(9, 30)));
    // Writes made.sys and sysdoc.sys and runs the start-up routine, as a desk does every
    // morning; the test fails when it does not get through.
    void startUp();

    const Workspace& ws;
    ScriptedPrompter prompter;
    FixedClock clock;
    AppContext ctx;
    // Process ends asked for by screens, in order.
    std::vector<int> endedWith;
};

// Desks saving at the same moment, each on a thread of its own (a desk's connections belong
// to the thread that opened them), after one desk has started up and brought the databases
// up to date. `save(desk, d, n)` runs `saves` times at desk d and says whether the save went
// through; an exception fails the test. Returns how many saves did not go through.
int atManyDesks(const Workspace& ws, int desks, int saves,
                const std::function<bool(Desk&, int d, int n)>& save);

// The named columns of a row, each expected as "column=value" with the value as text (dates
// ISO, NULL empty, 1500.0 as "1500"); a failure lists them all side by side.
inline void expectColumns(const std::optional<db::Row>& row, const QStringList& want)
{
    ASSERT_TRUE(row);
    QStringList got;
    for (const QString& w : want) {
        const QString column = w.section(QLatin1Char('='), 0, 0);
        got << column + QLatin1Char('=') + row->text(column);
    }
    EXPECT_EQ(got, want);
}

// Fresh databases on the backend of the run, and a desk on them that has not started up.
class BackendTest : public testing::TestWithParam<db::Backend> {
protected:
    void SetUp() override
    {
        ws = std::make_unique<Workspace>(GetParam());
        desk = std::make_unique<Desk>(*ws);
    }
    // The workspace goes last, with the fixture itself, after the desk and whatever screens a
    // test keeps as members have closed their connections to it.
    std::unique_ptr<Workspace> ws;
    std::unique_ptr<Desk> desk;
};

}  // namespace tolmar::test

#define TOLMAR_INSTANTIATE_BACKENDS(Suite)                                               \
    INSTANTIATE_TEST_SUITE_P(Db, Suite, testing::ValuesIn(::tolmar::test::backends()),   \
                             ::tolmar::test::backendName)

// Readable failures for texts.
inline void PrintTo(const QString& s, std::ostream* os) { *os << '"' << s.toStdString() << '"'; }
