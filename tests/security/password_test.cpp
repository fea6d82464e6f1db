// The suite's password transform and the hash kept beside it: no database.
#include "support/workspace.h"

#include "core/command.h"
#include "security/password.h"
#include "security/roles.h"

#include <QElapsedTimer>
#include <QSet>

#include <algorithm>
#include <cstdio>

using namespace tolmar;
using namespace tolmar::security;

namespace {

// "!" to "~" in order, and the same backwards: a table whose substitutes can be read off.
QString printable()
{
    QString s;
    for (char16_t c = 33; c <= 126; ++c)
        s += QChar(c);
    return s;
}

QString reversed(QString s)
{
    std::reverse(s.begin(), s.end());
    return s;
}

}  // namespace

TEST(PasswordTransform, EachCharacterGoesThroughTheTableAndTheRestIsLeftOut)
{
    const PasswordTable table = PasswordTable::fromText(reversed(printable()), "test");
    struct Case {
        QString typed;
        QString stored;
        int rejected;
    };
    const Case cases[] = {
        {"abc", ">=<", 0},
        {"!~", "~!", 0},
        {printable(), reversed(printable()), 0},
        {"a b", ">=", 1},
        {"a\tb", ">=", 1},
        {QStringLiteral("caf\u00e9"), "<>9", 1},
        {QString::fromUtf8("x\xF0\x9F\x98\x80y"), "'&", 1},  // a pair of surrogates is one
        {QString::fromUtf8("\x7F"), "", 1},
        {"", "", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.typed.toStdString());
        const auto r = table.transform(c.typed);
        EXPECT_EQ(r.text, c.stored);
        EXPECT_EQ(r.rejected, c.rejected);
        EXPECT_EQ(table.transform(c.typed).text, r.text);  // the same every time
    }
}

TEST(PasswordTransform, TheBuiltInTableIsAPermutationThatMovesCharacters)
{
    const PasswordTable table = PasswordTable::builtIn();
    const QString all = table.transform(printable()).text;
    ASSERT_EQ(all.size(), PasswordTable::kSize);
    EXPECT_EQ(QSet<QChar>(all.begin(), all.end()).size(), PasswordTable::kSize);
    EXPECT_NO_THROW(PasswordTable::fromText(all, "test"));
    EXPECT_NE(all, printable());
}

TEST(PasswordTransform, ATableThatIsNotAPermutationIsRefusedWithoutShowingIt)
{
    const QString good = reversed(printable());
    const QString bad[] = {
        good.left(93),
        good + QLatin1Char('!'),
        QString(good).replace(0, 1, QLatin1Char('!')),  // "!" twice, "~" missing
        QString(good).replace(5, 1, QLatin1Char(' ')),
        QString(good).replace(5, 1, QChar(0xE9)),
        QString(),
    };
    for (const QString& t : bad) {
        SCOPED_TRACE(t.toStdString());
        try {
            PasswordTable::fromText(t, "pwdtable.sys");
            ADD_FAILURE() << "accepted";
        } catch (const CheckFailed& e) {
            EXPECT_TRUE(e.message().contains(u"not a permutation of the 94 printable"));
            EXPECT_TRUE(e.message().contains(u"pwdtable.sys"));
            EXPECT_FALSE(e.message().contains(good.mid(10, 8)));
        }
    }
}

TEST(PasswordHash, ChecksThePasswordAndTellsAWeakOrMissingHash)
{
    const QString hash = hashPassword("Zq9#m");
    EXPECT_TRUE(hash.startsWith(u"$argon2id$"));
    EXPECT_FALSE(hash.contains(u"Zq9#m"));
    EXPECT_TRUE(hashMatches(hash, "Zq9#m"));
    EXPECT_FALSE(hashMatches(hash, "Zq9#M"));
    EXPECT_FALSE(hashMatches(QString(), ""));
    EXPECT_NE(hashPassword("Zq9#m"), hash);  // salted
    EXPECT_FALSE(hashNeedsRewrite(hash));
    EXPECT_TRUE(hashNeedsRewrite(QString()));
    EXPECT_TRUE(hashNeedsRewrite(QStringLiteral("plain")));

    // What a desk pays per password change, measured here once.
    setHashCost(HashCost::Interactive);
    QElapsedTimer t;
    t.start();
    const QString strong = hashPassword("Zq9#m");
    const qint64 ms = t.elapsed();
    EXPECT_TRUE(hashMatches(strong, "Zq9#m"));
    EXPECT_FALSE(hashNeedsRewrite(strong));
    EXPECT_TRUE(hashNeedsRewrite(hash));  // made at the test suite's minimum cost
    setHashCost(HashCost::Minimum);
    RecordProperty("interactive_hash_ms", int(ms));
    std::printf("interactive Argon2id hash: %lld ms\n", static_cast<long long>(ms));
}

TEST(PasswordHash, SecretsCompareWhole)
{
    EXPECT_TRUE(sameSecret(">=<", ">=<"));
    EXPECT_FALSE(sameSecret(">=<", ">=;"));
    EXPECT_FALSE(sameSecret(">=<", ">=<<"));
    EXPECT_FALSE(sameSecret("", ">"));
    EXPECT_TRUE(sameSecret("", ""));
}

TEST(RolesTree, ANodeStandsForTheLeadingDigitsOfItsFirstThreeCharacters)
{
    const std::pair<const char*, qint32> cases[] = {
        {"5 : LAB", 5}, {"12 : X", 12}, {"123 : X", 123}, {"1234 : X", 123},
        {"Available Roles", 0}, {"", 0},
    };
    for (const auto& [text, id] : cases)
        EXPECT_EQ(roleIdOfNode(QString::fromLatin1(text)), id) << text;
}
