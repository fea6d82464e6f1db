#pragma once
// Passwords as the suite stores them, and as this module also keeps them.
//
// The suite's modules read `Password`: the typed text put through a fixed substitution of
// the 94 printable characters. Anyone with the table can read it back, so every password
// this module sets also gets an Argon2id hash beside it (`PassHash`), from which the text
// can't be recovered; the weak column can then go one day without anyone retyping.

#include <QString>

namespace tolmar {

class AppContext;

namespace security {

// The file beside the program that holds the suite's table: its first line, the 94
// characters in the order that codes 33 to 126 are substituted by.
inline const QString kPasswordTableFile = QStringLiteral("pwdtable.sys");

class PasswordTable {
public:
    static constexpr int kSize = 94;

    // The permutation a demo installation runs with.
    static PasswordTable builtIn();
    // A table from its text. Throws CheckFailed, saying what is wrong but never the
    // table's characters, when it is not a permutation of the 94 printable characters.
    static PasswordTable fromText(const QString& text, const QString& source);
    // The installation's table, from the file beside the program; the built-in one when
    // there is no such file. A file that is there but wrong is refused (CheckFailed).
    static PasswordTable forInstallation(const AppContext& ctx);

    struct Result {
        QString text;
        int rejected = 0;  // characters left out: blanks, controls, anything beyond ASCII
    };
    // Each character with a code from 33 to 126 becomes its substitute; any other is left
    // out. A character beyond ASCII (é, or a pair of surrogates) counts once.
    Result transform(const QString& typed) const;

private:
    explicit PasswordTable(QString chars) : m_chars(std::move(chars)) {}
    QString m_chars;
};

inline const QString kInvalidCharacterText = QStringLiteral("Invalid character detected!");

// The transform as a desk sees it: "Invalid character detected!" once per character left
// out, in order.
QString transformPassword(AppContext& ctx, const PasswordTable& table, const QString& typed);

// Two transformed texts compared in time that does not depend on where they differ.
bool sameSecret(const QString& a, const QString& b);

// How much work a hash costs. Interactive is what a desk pays at a password change
// (libsodium's interactive limits); Minimum keeps the test suite quick.
enum class HashCost { Interactive, Minimum };
void setHashCost(HashCost cost);
HashCost hashCost();

// libsodium's text form of an Argon2id hash of the typed password, at the current cost.
QString hashPassword(const QString& typed);
bool hashMatches(const QString& hash, const QString& typed);
// A hash that is missing, not Argon2id, or weaker than the current cost.
bool hashNeedsRewrite(const QString& hash);

}  // namespace security
}  // namespace tolmar
