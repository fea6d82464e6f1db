#pragma once
// LIKE patterns from what a person typed: "%", "_" and "\" are matched as themselves. Use
// with "... LIKE ? ESCAPE '\'" and compare upper(column) with the pattern so that both
// backends find names without regard to case.

#include <QString>

namespace tolmar::like {

QString contains(const QString& typed);
QString startsWith(const QString& typed);

}  // namespace tolmar::like
