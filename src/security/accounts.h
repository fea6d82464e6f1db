#pragma once
// The accounts of the suite: creating one, enabling or disabling it, changing a password.
// Every password this module sets is stored transformed, as the suite reads it, with its
// Argon2id hash beside it; the text as typed is never stored, logged or shown.

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tolmar {

class AppContext;

namespace security {

struct AccountFields {
    QString username;
    QString fullname;
    QString password;
    QString confirm;
    QString status;  // "Enabled" or "Disabled"
    QString branch;  // a BranchCode of LagosBranches
};

struct AccountNode {
    QString username;
    QString fullname;
};

inline const QString kUnmatchedPasswordText =
    QStringLiteral("Alert! Unmatched password. Kindly re-type to go on.");
inline const QString kUserNotFoundText =
    QStringLiteral("Alert! Indicated username not found in the list of accredited users.");

class Accounts {
public:
    explicit Accounts(AppContext& ctx) : m_ctx(ctx) {}

    QStringList branches();
    std::vector<AccountNode> all();
    // The first account of that full name, by user name; its password is not read.
    std::optional<AccountFields> firstByFullname(const QString& fullname);

    // The account screen's save, its checks in order (CheckFailed with the control to
    // focus); the user name is trimmed and compared without regard to case.
    void create(const AccountFields& f);

    // The password change: the old password is checked through the transform, the new
    // one stored transformed and hashed, SaltedPass cleared. Both ends audited. Throws
    // CheckFailed for a refusal; the caller shows the success.
    void changePassword(const QString& user, const QString& oldPassword,
                        const QString& newPassword, const QString& confirm);

private:
    AppContext& m_ctx;
};

// The Security menu's "Enable Account..." and "Disable Account...": asks for the user name
// and sets the account's status on a connection of its own. A cancelled question does
// nothing; an empty or unknown name is refused (CheckFailed).
void setAccountStatus(AppContext& ctx, bool enable);

inline const QString kAccountEnabledText =
    QStringLiteral("Congrats! User Account Enabled successfully.");
inline const QString kAccountDisabledText =
    QStringLiteral("Congrats! User Account diasbled successfully.");

}  // namespace security
}  // namespace tolmar
