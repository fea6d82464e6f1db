#include "security/password.h"

#include "core/appcontext.h"
#include "core/command.h"
#include "platform/files.h"

#include <QFileInfo>

#include <sodium.h>

#include <atomic>
#include <stdexcept>

namespace tolmar::security {

namespace {

constexpr char32_t kFirst = 33;  // "!"
constexpr char32_t kLast = 126;  // "~"

void initSodium()
{
    static const bool ready = sodium_init() >= 0;
    if (!ready)
        throw std::runtime_error("The password library could not be started.");
}

std::atomic<HashCost> g_cost{HashCost::Interactive};

}  // namespace

PasswordTable PasswordTable::builtIn()
{
    // An affine shuffle of the 94 codes: 29 shares no factor with 94 (2 x 47), so every
    // character has one substitute and no two share one. The demo only needs some
    // permutation; a hospital gets the suite's own table in the file.
    QString chars;
    for (int i = 0; i < kSize; ++i)
        chars += QChar(char16_t(kFirst + (i * 29 + 17) % kSize));
    return PasswordTable(chars);
}

PasswordTable PasswordTable::fromText(const QString& text, const QString& source)
{
    const QString line = text.section(QLatin1Char('\n'), 0, 0).trimmed();
    auto refuse = [&](const QString& why) {
        return CheckFailed(QStringLiteral("The password table in %1 is not a permutation of "
                                          "the 94 printable characters (%2). No password was "
                                          "set or changed; ask for the suite's table.")
                               .arg(source, why),
                           QString(), QString(), Icon::Critical);
    };
    const QList<uint> codes = line.toUcs4();
    if (codes.size() != kSize)
        throw refuse(QStringLiteral("it holds %1 characters").arg(codes.size()));
    bool seen[kSize] = {};
    for (uint c : codes) {
        if (c < kFirst || c > kLast)
            throw refuse(QStringLiteral("it holds a character outside \"!\" to \"~\""));
        if (seen[c - kFirst])
            throw refuse(QStringLiteral("a character appears twice"));
        seen[c - kFirst] = true;
    }
    return PasswordTable(line);
}

PasswordTable PasswordTable::forInstallation(const AppContext& ctx)
{
    const QString path = ctx.homePath(kPasswordTableFile);
    if (!QFileInfo::exists(path))
        return builtIn();
    const auto lines = files::readLines(path);
    if (!lines)
        throw CheckFailed(QStringLiteral("The password table %1 cannot be read. No password "
                                         "was set or changed.")
                              .arg(path),
                          QString(), QString(), Icon::Critical);
    return fromText(lines->join(QLatin1Char('\n')), path);
}

PasswordTable::Result PasswordTable::transform(const QString& typed) const
{
    Result out;
    for (uint c : typed.toUcs4()) {
        if (c < kFirst || c > kLast) {
            ++out.rejected;
            continue;
        }
        out.text += m_chars.at(int(c - kFirst));
    }
    return out;
}

QString transformPassword(AppContext& ctx, const PasswordTable& table, const QString& typed)
{
    const auto r = table.transform(typed);
    for (int i = 0; i < r.rejected; ++i)
        ctx.prompter().inform(kInvalidCharacterText);
    return r.text;
}

bool sameSecret(const QString& a, const QString& b)
{
    initSodium();
    // Digests of equal length, so that neither the length nor the first difference shows
    // in the time the comparison takes.
    auto digest = [](const QString& s) {
        const QByteArray bytes = s.toUtf8();
        QByteArray d(crypto_generichash_BYTES, '\0');
        crypto_generichash(reinterpret_cast<unsigned char*>(d.data()), size_t(d.size()),
                           reinterpret_cast<const unsigned char*>(bytes.constData()),
                           size_t(bytes.size()), nullptr, 0);
        return d;
    };
    const QByteArray da = digest(a), db = digest(b);
    return sodium_memcmp(da.constData(), db.constData(), size_t(da.size())) == 0;
}

void setHashCost(HashCost cost) { g_cost = cost; }
HashCost hashCost() { return g_cost; }

namespace {

unsigned long long opsLimit()
{
    return hashCost() == HashCost::Minimum ? crypto_pwhash_OPSLIMIT_MIN
                                           : crypto_pwhash_OPSLIMIT_INTERACTIVE;
}

size_t memLimit()
{
    return hashCost() == HashCost::Minimum ? crypto_pwhash_MEMLIMIT_MIN
                                           : crypto_pwhash_MEMLIMIT_INTERACTIVE;
}

}  // namespace

QString hashPassword(const QString& typed)
{
    initSodium();
    const QByteArray bytes = typed.toUtf8();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(out, bytes.constData(), size_t(bytes.size()), opsLimit(),
                          memLimit()) != 0)
        throw std::runtime_error(
            "The password could not be protected: the workstation is short of memory.");
    return QString::fromLatin1(out);
}

bool hashMatches(const QString& hash, const QString& typed)
{
    initSodium();
    if (hash.isEmpty())
        return false;
    const QByteArray h = hash.toLatin1();
    const QByteArray bytes = typed.toUtf8();
    return crypto_pwhash_str_verify(h.constData(), bytes.constData(), size_t(bytes.size())) == 0;
}

bool hashNeedsRewrite(const QString& hash)
{
    initSodium();
    if (hash.isEmpty())
        return true;
    const QByteArray h = hash.toLatin1();
    return crypto_pwhash_str_needs_rehash(h.constData(), opsLimit(), memLimit()) != 0;
}

}  // namespace tolmar::security
