#include "core/utility/Utility.h"

#include "tests/utility/FileTestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>

TEST(UtilityReadable, AcceptsAnExistingFile)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("part.stl"));
    WriteFile(path, "solid");
    EXPECT_TRUE(Utility::TestFileReadable(path));
    EXPECT_EQ(ReadFile(path), "solid");
}

TEST(UtilityReadable, AcceptsAnEmptyFile)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("empty"));
    WriteFile(path, "");
    EXPECT_TRUE(Utility::TestFileReadable(path));
}

TEST(UtilityReadable, AcceptsUnicodeNamesAndLinks)
{
    const QTemporaryDir directory;
    const QString path =
        directory.filePath(QString::fromUtf8("\xE6\xA8\xA1\xE5\x9E\x8B \xF0\x9F\xA7\x8A.stl"));
    const QString link = directory.filePath(QStringLiteral("link"));
    WriteFile(path, "x");
    ASSERT_TRUE(QFile::link(path, link));
    EXPECT_TRUE(Utility::TestFileReadable(path));
    EXPECT_TRUE(Utility::TestFileReadable(link));
}

TEST(UtilityReadable, RefusesWhatIsNoFile)
{
    const test::MessageCounter messages;
    const QTemporaryDir directory;
    const QString link = directory.filePath(QStringLiteral("dangling"));
    ASSERT_TRUE(QFile::link(directory.filePath(QStringLiteral("gone")), link));
    EXPECT_FALSE(Utility::TestFileReadable(directory.path()));
    EXPECT_FALSE(Utility::TestFileReadable(directory.filePath(QStringLiteral("missing"))));
    EXPECT_FALSE(Utility::TestFileReadable(link));
    EXPECT_FALSE(Utility::TestFileReadable(QString()));
    EXPECT_FALSE(Utility::TestFileReadable(QString(QChar(0))));
    EXPECT_EQ(messages.Count(), 0);
}

TEST(UtilityReadable, DoesNotWaitForAPipe)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("pipe"));
    ASSERT_EQ(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    EXPECT_TRUE(Utility::TestFileReadable(path));
}
