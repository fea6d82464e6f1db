#pragma once
// List entries read "{display text} [{key}]": the key is what lies between the brackets,
// which is why "[" and "]" are stripped from names before they are stored.

#include "platform/db.h"

#include <QString>
#include <QStringList>

namespace tolmar::listentry {

QString make(const QString& text, const QString& key);
// One entry per row: the text column, the key column.
QStringList fromRows(const std::vector<db::Row>& rows, QStringView text, QStringView key);
// The text between the first "[" and the following "]"; "" when there is none.
QString key(const QString& entry);
// The trimmed text before the first "["; the whole trimmed entry when there is none.
QString text(const QString& entry);
// Removes every "[" and "]" and trims.
QString stripBrackets(const QString& name);
// Turns every "[" and "]" into a blank and trims: "ACME[NIG]LTD" stays three words.
QString blankBrackets(const QString& name);

}  // namespace tolmar::listentry
