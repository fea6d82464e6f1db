#include "platform/files.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace tolmar;

TEST(Files, ReadLinesTellsAMissingFileFromAnEmptyOne)
{
    QTemporaryDir dir;
    EXPECT_FALSE(files::readLines(dir.filePath(QStringLiteral("none.sys"))).has_value());
    files::writeLines(dir.filePath(QStringLiteral("empty.sys")), {});
    const auto empty = files::readLines(dir.filePath(QStringLiteral("empty.sys")));
    ASSERT_TRUE(empty.has_value());
    EXPECT_TRUE(empty->isEmpty());
    files::writeLines(dir.filePath(QStringLiteral("two.sys")),
                      {QStringLiteral("SVR=A"), QStringLiteral("HNO=Ọ̀")});
    EXPECT_EQ(*files::readLines(dir.filePath(QStringLiteral("two.sys"))),
              (QStringList{QStringLiteral("SVR=A"), QStringLiteral("HNO=Ọ̀")}));
}

TEST(Files, HeldFileIsSeenAsHeldUntilReleased)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("made.sys"));
    EXPECT_FALSE(files::isFileHeld(path));  // missing counts as free
    files::writeLines(path, {QStringLiteral("SVR=X")});
    EXPECT_FALSE(files::isFileHeld(path));
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::flock(fd, LOCK_EX), 0);
    EXPECT_TRUE(files::isFileHeld(path));
    ::flock(fd, LOCK_UN);
    ::close(fd);
    EXPECT_FALSE(files::isFileHeld(path));
}
