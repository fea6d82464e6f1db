#include "platform/sqlsplit.h"

#include <QRegularExpression>

namespace tolmar::db {

namespace {

bool isWordChar(QChar c) { return c.isLetterOrNumber() || c == QLatin1Char('_'); }

// True when `piece` holds something other than blanks and comments.
bool hasCode(const QString& piece)
{
    static const QRegularExpression comments(QStringLiteral("--[^\n]*|/\\*.*?\\*/"),
                                             QRegularExpression::DotMatchesEverythingOption);
    QString s = piece;
    s.remove(comments);
    return !s.trimmed().isEmpty();
}

}  // namespace

QStringList splitSqlStatements(const QString& script)
{
    QStringList out;
    const int n = int(script.size());
    int start = 0;
    int i = 0;
    int beginDepth = 0;      // BEGIN ... END nesting inside a trigger body
    bool inTrigger = false;  // current statement is CREATE [TEMP] TRIGGER
    QString word;            // the current bare word, for BEGIN/END/CASE tracking
    int caseDepth = 0;

    auto flushWord = [&]() {
        if (word.isEmpty())
            return;
        const QString w = word.toUpper();
        if (inTrigger) {
            if (w == QLatin1String("CASE"))
                ++caseDepth;
            else if (w == QLatin1String("BEGIN"))
                ++beginDepth;
            else if (w == QLatin1String("END")) {
                if (caseDepth > 0)
                    --caseDepth;
                else if (beginDepth > 0)
                    --beginDepth;
            }
        }
        word.clear();
    };

    auto statementIsTrigger = [&](int from, int to) {
        static const QRegularExpression re(
            QStringLiteral("^\\s*(--[^\n]*\n\\s*)*CREATE\\s+(TEMP\\s+|TEMPORARY\\s+)?TRIGGER\\b"),
            QRegularExpression::CaseInsensitiveOption);
        return re.match(script.mid(from, to - from)).hasMatch();
    };

    while (i < n) {
        const QChar c = script[i];
        if (c == QLatin1Char('-') && i + 1 < n && script[i + 1] == QLatin1Char('-')) {
            flushWord();
            while (i < n && script[i] != QLatin1Char('\n'))
                ++i;
            continue;
        }
        if (c == QLatin1Char('/') && i + 1 < n && script[i + 1] == QLatin1Char('*')) {
            flushWord();
            const int e = script.indexOf(QLatin1String("*/"), i + 2);
            i = e < 0 ? n : e + 2;
            continue;
        }
        if (c == QLatin1Char('\'') || c == QLatin1Char('"')) {
            flushWord();
            ++i;
            while (i < n) {
                if (script[i] == c) {
                    if (i + 1 < n && script[i + 1] == c) {
                        i += 2;
                        continue;
                    }
                    break;
                }
                ++i;
            }
            ++i;
            continue;
        }
        if (c == QLatin1Char('$')) {
            static const QRegularExpression tag(QStringLiteral("\\$[A-Za-z_]*\\$"));
            const auto m = tag.match(script, i, QRegularExpression::NormalMatch,
                                     QRegularExpression::AnchorAtOffsetMatchOption);
            if (m.hasMatch() && (i == 0 || !isWordChar(script[i - 1]))) {
                flushWord();
                const int e = script.indexOf(m.captured(0), i + int(m.capturedLength()));
                i = e < 0 ? n : e + int(m.capturedLength());
                continue;
            }
        }
        if (isWordChar(c)) {
            word += c;
            ++i;
            continue;
        }
        flushWord();
        if (c == QLatin1Char(';')) {
            if (!inTrigger)
                inTrigger = statementIsTrigger(start, i);
            if (!inTrigger || beginDepth == 0) {
                const QString piece = script.mid(start, i - start);
                if (hasCode(piece))
                    out << piece.trimmed();
                start = i + 1;
                inTrigger = false;
                beginDepth = 0;
                caseDepth = 0;
            }
        }
        ++i;
        if (!inTrigger && beginDepth == 0 && c.isSpace())
            inTrigger = statementIsTrigger(start, i);
    }
    flushWord();
    const QString tail = script.mid(start);
    if (hasCode(tail))
        out << tail.trimmed();
    return out;
}

}  // namespace tolmar::db
