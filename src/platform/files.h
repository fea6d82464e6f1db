#pragma once
// Files outside the databases: the settings files beside the program and the patients share.

#include <QString>
#include <QStringList>

#include <optional>

namespace tolmar::files {

// Every line of a text file, without line ends; nullopt when the file does not exist.
std::optional<QStringList> readLines(const QString& path);

// Replaces the whole file with the given lines; throws std::runtime_error on failure.
void writeLines(const QString& path, const QStringList& lines);

// Whether another process holds the file open for its own exclusive use. A missing file is
// free. Other failures to test the lock are reported by an exception.
bool isFileHeld(const QString& path);

}  // namespace tolmar::files
