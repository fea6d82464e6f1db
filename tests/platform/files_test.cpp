#include "platform/files.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace tolmar;
using namespace Qt::StringLiterals;

TEST(Files, ReadLinesTellsAMissingFileFromAnEmptyOne)
{
    QTemporaryDir dir;
    EXPECT_FALSE(files::readLines(dir.filePath(u"none.sys"_s)).has_value());
    files::writeLines(dir.filePath(u"empty.sys"_s), {});
    const auto empty = files::readLines(dir.filePath(u"empty.sys"_s));
    ASSERT_TRUE(empty.has_value());
    EXPECT_TRUE(empty->isEmpty());
    files::writeLines(dir.filePath(u"two.sys"_s), {u"SVR=A"_s, u"HNO=Ọ̀"_s});
    EXPECT_EQ(*files::readLines(dir.filePath(u"two.sys"_s)), (QStringList{u"SVR=A"_s, u"HNO=Ọ̀"_s}));
}

TEST(Files, HeldFileIsSeenAsHeldUntilReleased)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"made.sys"_s);
    EXPECT_FALSE(files::isFileHeld(path));  // missing counts as free
    files::writeLines(path, {u"SVR=X"_s});
    EXPECT_FALSE(files::isFileHeld(path));
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::flock(fd, LOCK_EX), 0);
    EXPECT_TRUE(files::isFileHeld(path));
    ::flock(fd, LOCK_UN);
    ::close(fd);
    EXPECT_FALSE(files::isFileHeld(path));
}
