#include "core/numbertowords.h"

#include <cmath>

namespace tolmar {

namespace {

const char* const kUnits[] = {"",     "One",   "Two",   "Three", "Four",
                              "Five", "Six",   "Seven", "Eight", "Nine"};
const char* const kTens[] = {"",      "",      "Twenty",  "Thirty", "Fourty",
                             "Fifty", "Sixty", "Seventy", "Eighty", "Ninety"};
const char* const kTeens[] = {"Ten", "Eleven", "Twelve", "Thirteen", "Fourteen", "Fifteen"};

QString twoDigits(int n)
{
    if (n < 10)
        return QLatin1String(kUnits[n]);
    if (n < 16)
        return QLatin1String(kTeens[n - 10]);
    if (n < 20)
        return QLatin1String(kUnits[n - 10]) + QStringLiteral("teen");
    QString s = QLatin1String(kTens[n / 10]);
    if (n % 10)
        s += QLatin1Char(' ') + QLatin1String(kUnits[n % 10]);
    return s;
}

QString threeDigits(int n)
{
    const int hundreds = n / 100;
    const int rest = n % 100;
    if (hundreds == 0)
        return twoDigits(rest);
    QString s = QLatin1String(kUnits[hundreds]) + QStringLiteral(" Hundred");
    if (rest)
        s += QStringLiteral(" And ") + twoDigits(rest);
    return s;
}

}  // namespace

QString figToWrd::Num2String(double amount) const
{
    if (amount >= 999999999999.99)
        return QStringLiteral("***");
    // Kobo are whole: the amount is rounded to two places before it is split.
    const qint64 totalKobo = qint64(std::llround(amount * 100.0));
    const qint64 whole = totalKobo / 100;
    const int kobo = int(totalKobo % 100);

    const QString delimiter = UseDelimiter == Space  ? QStringLiteral(" ")
                              : UseDelimiter == Dash ? QStringLiteral("-")
                                                     : QStringLiteral(", ");
    QString text;
    const struct {
        qint64 size;
        const char* word;
    } groups[] = {{1000000000, " Billion"}, {1000000, " Million"}, {1000, " Thousand"}};
    qint64 rest = whole;
    for (const auto& g : groups) {
        const int n = int(rest / g.size);
        rest %= g.size;
        if (n > 0)
            text += threeDigits(n) + QLatin1String(g.word) + delimiter;
    }
    if (rest > 0)
        text += threeDigits(int(rest));

    if (text.endsWith(QLatin1Char(',')))
        text.chop(1);
    if (text.startsWith(QLatin1Char(',')))
        text.remove(0, 1);

    if (kobo > 0) {
        text += QStringLiteral(" Naria and ") + twoDigits(kobo) + QStringLiteral(" kobo only");
    } else {
        if (text.endsWith(QLatin1String(", ")))
            text = text.left(text.size() - 2) + QLatin1Char(' ');
        text += QStringLiteral(" Naria");
    }

    if (UseCase == UpperCase)
        text = text.toUpper();
    else if (UseCase == LowerCase)
        text = text.toLower();
    if (UsePadding == OneStar)
        text = QLatin1Char('*') + text + QLatin1Char('*');
    else if (UsePadding == ThreeStars)
        text = QStringLiteral("***") + text + QStringLiteral("***");
    return text;
}

}  // namespace tolmar
