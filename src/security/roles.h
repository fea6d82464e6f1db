#pragma once
// Roles (the modules of the suite) and the pairs of users and roles. Each operation works
// on a connection of its own; a database error goes to the server error log and comes
// back as Failed, never to the desk. What the old classes raised as events is the value
// an operation returns.

#include <QString>
#include <QStringList>

#include <utility>
#include <vector>

class QAbstractItemModel;
class QObject;

namespace tolmar {

class AppContext;

namespace security {

class Role {
public:
    enum class Outcome { Saved, Exists, Deleted, NotFound, HasUsers, Failed };

    explicit Role(AppContext& ctx) : m_ctx(ctx) {}
    qint32 RoleID() const { return m_id; }
    void setRoleID(qint32 id) { m_id = id; }
    const QString& RoleName() const { return m_name; }
    void setRoleName(const QString& name) { m_name = name; }

    // A new role; an id already on file changes nothing (the attempt is logged).
    Outcome Submit();
    // Refused, and logged, while users still hold the role.
    Outcome Delete();
    // Every role, for a grid; the model is owned by parent.
    QAbstractItemModel* DisplayData(QObject* parent);

private:
    AppContext& m_ctx;
    qint32 m_id = 0;
    QString m_name;
};

class UserRole {
public:
    enum class Event {
        AllocationComplete,
        EmptyRoleID,
        EmptyUsername,
        InvalidRoleID,
        InvalidUsername,
        RecordExists,
        Failed
    };

    explicit UserRole(AppContext& ctx) : m_ctx(ctx) {}
    qint32 RoleID() const { return m_id; }
    void setRoleID(qint32 id) { m_id = id; }
    const QString& Username() const { return m_user; }
    void setUsername(const QString& name) { m_user = name; }

    // Checks in order: no role, no user name, a role or a user not on file, a pair that
    // exists; then the pair is written.
    Event Submit();

    struct RoleEntry {
        qint32 id;
        QString name;
    };
    struct Member {
        QString username;
        QString fullname;
        QString status;
    };
    std::vector<std::pair<qint32, QString>> LoadData();  // every pair
    std::vector<RoleEntry> LoadRoleID();
    QStringList LoadUsername();
    std::vector<Member> UserRoleMatch(qint32 roleID);

private:
    AppContext& m_ctx;
    qint32 m_id = 0;
    QString m_user;
};

// The message the allocation screen shows for an outcome; empty for Failed.
QString eventText(UserRole::Event e);

// The role id a node of the roles tree stands for: the leading digits of the first three
// characters of its text ("5 : X" gives 5, "1234 : X" 123), 0 when there are none.
qint32 roleIdOfNode(const QString& text);

}  // namespace security
}  // namespace tolmar
