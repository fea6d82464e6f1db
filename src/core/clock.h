#pragma once
// Time for the program. Business dates come from the server (qrySysDateTime); the
// workstation's own clock is asked only where a rule says so. Tests fix both.

#include <QDateTime>

#include <optional>

namespace tolmar {

class Clock {
public:
    virtual ~Clock() = default;
    virtual QDateTime workstationNow() const { return QDateTime::currentDateTime(); }
    // nullopt: read the server's clock from the database.
    virtual std::optional<QDateTime> serverNow() const { return std::nullopt; }
};

class FixedClock : public Clock {
public:
    explicit FixedClock(QDateTime server, QDateTime workstation = {})
        : m_server(std::move(server)), m_workstation(std::move(workstation))
    {
    }
    void setServer(const QDateTime& t) { m_server = t; }
    void setWorkstation(const QDateTime& t) { m_workstation = t; }
    QDateTime workstationNow() const override
    {
        return m_workstation.isValid() ? m_workstation : m_server;
    }
    // An invalid time leaves the server's own clock in charge.
    std::optional<QDateTime> serverNow() const override
    {
        return m_server.isValid() ? std::optional(m_server) : std::nullopt;
    }

private:
    QDateTime m_server;
    QDateTime m_workstation;
};

}  // namespace tolmar
