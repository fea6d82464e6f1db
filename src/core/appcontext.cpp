#include "core/appcontext.h"

#include "core/formats.h"
#include "core/screenhost.h"

#include <QCoreApplication>
#include <QDir>

namespace tolmar {

AppContext::AppContext(QString homeDir, Prompter& prompter, Clock& clock)
    : m_home(std::move(homeDir)), m_prompter(&prompter), m_clock(&clock),
      m_screens(std::make_unique<ScreenHost>(*this))
{
    endProcess = [](int code) { QCoreApplication::exit(code); };
}

AppContext::~AppContext()
{
    m_screens.reset();
    resetConnections();
}

QString AppContext::homePath(const QString& file) const { return QDir(m_home).filePath(file); }

void AppContext::setServer(const db::ServerConfig& config)
{
    const auto& old = m_session.server;
    const bool same = old.backend == config.backend && old.sqliteDir == config.sqliteDir &&
                      old.host == config.host && old.port == config.port &&
                      old.pgDatabase == config.pgDatabase && old.user == config.user;
    m_session.server = config;
    if (!same)
        resetConnections();
}

db::Connection& AppContext::db(db::Database which)
{
    auto& slot = m_shared[which];
    if (!slot)
        slot = std::make_unique<db::Connection>(m_session.server, which);
    return *slot;
}

namespace {
// Idle connections kept per run: a command holding one may call a routine that takes
// another (an audit line, the activity row). Every one is a server process for as long as
// the desk runs, and a hospital has many desks, so no more are kept.
constexpr size_t kMaxIdleConnections = 2;
}  // namespace

AppContext::OwnConnection AppContext::openConnection(db::Database which)
{
    for (auto it = m_idle.rbegin(); it != m_idle.rend(); ++it) {
        if ((*it)->database() != which)
            continue;
        std::unique_ptr<db::Connection> c = std::move(*it);
        m_idle.erase(std::next(it).base());
        // A server restart or a dropped link leaves a kept connection dead without a word;
        // one round trip finds out before a command relies on it.
        if (c->backend() == db::Backend::Postgres) {
            try {
                c->scalar(QStringLiteral("SELECT 1"));
            } catch (const db::DbError&) {
                break;  // the others are likely gone too; a fresh one is opened below
            }
        }
        return OwnConnection(c.release(), ConnectionReturn{this});
    }
    return OwnConnection(new db::Connection(m_session.server, which), ConnectionReturn{this});
}

void AppContext::ConnectionReturn::operator()(db::Connection* c) const
{
    std::unique_ptr<db::Connection> owned(c);
    if (!owner || !c || c->inTransaction() || c->sawError())
        return;
    if (owner->m_idle.size() >= kMaxIdleConnections)
        owner->m_idle.erase(owner->m_idle.begin());
    owner->m_idle.push_back(std::move(owned));
}

db::Connection& AppContext::drawConnection()
{
    if (!m_draws)
        m_draws = std::make_unique<db::Connection>(m_session.server, db::Database::Hospital);
    return *m_draws;
}

void AppContext::resetConnections()
{
    m_idle.clear();
    m_shared.clear();
    m_draws.reset();
}

void AppContext::refreshServerClock()
{
    QDateTime now;
    if (auto fixed = m_clock->serverNow()) {
        now = *fixed;
    } else {
        const QVariant v = db::retryOnLostLink(
            [this] { return db().scalar(QStringLiteral("select sysDT from qrySysDateTime")); });
        now = db::variantDateTime(v);
    }
    if (!now.isValid())
        return;
    m_session.serverDateTime = now;
    m_session.serverDate = now.date();
    m_session.serverDateText = fmt::shortDate(now.date());
    m_session.serverTimeText = fmt::shortTime(now.time());
}

}  // namespace tolmar
