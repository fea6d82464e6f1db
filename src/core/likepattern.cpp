#include "core/likepattern.h"

namespace tolmar::like {

namespace {
QString escaped(const QString& typed)
{
    QString out;
    out.reserve(typed.size() + 2);
    for (const QChar c : typed.toUpper()) {
        if (c == QLatin1Char('%') || c == QLatin1Char('_') || c == QLatin1Char('\\'))
            out += QLatin1Char('\\');
        out += c;
    }
    return out;
}
}  // namespace

QString contains(const QString& typed)
{
    return QLatin1Char('%') + escaped(typed) + QLatin1Char('%');
}

QString startsWith(const QString& typed) { return escaped(typed) + QLatin1Char('%'); }

}  // namespace tolmar::like
