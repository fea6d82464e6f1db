#include "platform/files.h"

#include <QFile>
#include <QSaveFile>
#include <QTextStream>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/file.h>
#include <unistd.h>

namespace tolmar::files {

std::optional<QStringList> readLines(const QString& path)
{
    QFile f(path);
    if (!f.exists())
        return std::nullopt;
    if (!f.open(QIODevice::ReadOnly | QIODevice::Text))
        throw std::runtime_error(QStringLiteral("Permission denied: %1").arg(path).toStdString());
    QStringList lines;
    QTextStream in(&f);
    while (!in.atEnd())
        lines << in.readLine();
    return lines;
}

void writeLines(const QString& path, const QStringList& lines)
{
    QSaveFile f(path);
    if (!f.open(QIODevice::WriteOnly | QIODevice::Text))
        throw std::runtime_error(
            QStringLiteral("Cannot write %1: %2").arg(path, f.errorString()).toStdString());
    QTextStream out(&f);
    for (const QString& l : lines)
        out << l << "\r\n";
    out.flush();
    if (!f.commit())
        throw std::runtime_error(
            QStringLiteral("Cannot write %1: %2").arg(path, f.errorString()).toStdString());
}

bool isFileHeld(const QString& path)
{
    const QByteArray p = QFile::encodeName(path);
    const int fd = ::open(p.constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT)
            return false;
        if (errno == EACCES)
            return true;
        throw std::runtime_error(std::strerror(errno));
    }
    const int rc = ::flock(fd, LOCK_EX | LOCK_NB);
    const int err = errno;
    if (rc == 0)
        ::flock(fd, LOCK_UN);
    ::close(fd);
    if (rc == 0)
        return false;
    if (err == EWOULDBLOCK)
        return true;
    throw std::runtime_error(std::strerror(err));
}

}  // namespace tolmar::files
