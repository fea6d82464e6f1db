// The suite's password transform and the hash kept beside it: no database.
#include "core/command.h"
#include "security/password.h"

#include <QElapsedTimer>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

using namespace tolmar;
using namespace tolmar::security;

namespace {

// "!" to "~" in order; backwards, a table whose substitutes can be read off: c -> 159 - c.
QString printable(bool backwards = false)
{
    QString s;
    for (char16_t c = 33; c <= 126; ++c)
        s += QChar(c);
    if (backwards)
        std::reverse(s.begin(), s.end());
    return s;
}

}  // namespace

TEST(PasswordTransform, EachCharacterGoesThroughTheTableAndTheRestIsLeftOut)
{
    const PasswordTable table = PasswordTable::fromText(printable(true), "test");
    const std::tuple<QString, QString, int> cases[] = {
        {"abc", ">=<", 0},
        {printable(), printable(true), 0},
        {"a b", ">=", 1},
        {"a\tb", ">=", 1},
        {QStringLiteral("caf\u00e9"), "<>9", 1},
        {QString::fromUtf8("x\xF0\x9F\x98\x80y"), "'&", 1},  // a pair of surrogates is one
        {QString::fromUtf8("\x7F"), "", 1},
    };
    for (const auto& [typed, stored, rejected] : cases) {
        const auto r = table.transform(typed);
        EXPECT_EQ(r.text, stored) << typed.toStdString();
        EXPECT_EQ(r.rejected, rejected) << typed.toStdString();
        EXPECT_EQ(table.transform(typed).text, r.text);  // the same every time
    }
    // The demo's own table is a permutation too, and not the identity.
    const QString all = PasswordTable::builtIn().transform(printable()).text;
    EXPECT_EQ(QSet<QChar>(all.begin(), all.end()).size(), PasswordTable::kSize);
    EXPECT_NE(all, printable());
}

TEST(PasswordTransform, ATableThatIsNotAPermutationIsRefusedWithoutShowingIt)
{
    const QString good = printable(true);
    for (const QString& bad :
         {good.left(93), good + QLatin1Char('!'), QString(good).replace(0, 1, u'!'),
          QString(good).replace(5, 1, u' '), QString(good).replace(5, 1, QChar(0xE9)), QString()}) {
        try {
            PasswordTable::fromText(bad, "pwdtable.sys");
            ADD_FAILURE() << "accepted " << bad.toStdString();
        } catch (const CheckFailed& e) {
            EXPECT_TRUE(e.message().contains(u"pwdtable.sys is not a permutation of the 94"));
            EXPECT_FALSE(e.message().contains(good.mid(10, 8)));
        }
    }
}

TEST(PasswordHash, ChecksThePasswordTellsAWeakOrMissingHashAndComparesWhole)
{
    const QString hash = hashPassword("Zq9#m");
    EXPECT_TRUE(hash.startsWith(u"$argon2id$"));
    EXPECT_TRUE(hashMatches(hash, "Zq9#m"));
    EXPECT_FALSE(hashMatches(hash, "Zq9#M"));
    EXPECT_FALSE(hashMatches(QString(), ""));
    EXPECT_NE(hashPassword("Zq9#m"), hash);  // salted
    EXPECT_FALSE(hashNeedsRewrite(hash));
    EXPECT_TRUE(hashNeedsRewrite(QString()));
    EXPECT_TRUE(hashNeedsRewrite("plain"));

    // What a desk pays per password change, measured here once.
    setHashCost(HashCost::Interactive);
    QElapsedTimer t;
    t.start();
    const QString strong = hashPassword("Zq9#m");
    std::printf("interactive Argon2id hash: %lld ms\n", static_cast<long long>(t.elapsed()));
    EXPECT_TRUE(hashMatches(strong, "Zq9#m"));
    EXPECT_TRUE(hashNeedsRewrite(hash));  // made at the test suite's minimum cost
    setHashCost(HashCost::Minimum);

    EXPECT_TRUE(sameSecret(">=<", ">=<"));
    for (const char* other : {">=;", ">=<<", ""})
        EXPECT_FALSE(sameSecret(">=<", other)) << other;
}
