#include "core/utility/Utility.h"

#include "tests/utility/FileTestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A socket that has a name in the file system as long as this lives.
class NamedSocket {
public:
    explicit NamedSocket(const QString& path) : m_descriptor(socket(AF_UNIX, SOCK_STREAM, 0))
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path - 1);
        EXPECT_EQ(bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    ~NamedSocket() { close(m_descriptor); }
    NamedSocket(const NamedSocket&) = delete;
    NamedSocket& operator=(const NamedSocket&) = delete;

private:
    int m_descriptor;
};

/// What TestFileReadable() says to somebody who may not do everything, as root may. It asks for the real
/// user, whom only a process of its own can give up for good.
bool IsReadableToAnOrdinaryUser(const QString& path)
{
    constexpr uid_t kNobody = 65534;
    const pid_t child = fork();
    if (child == 0) {
        const bool isOrdinary = getuid() != 0 || setuid(kNobody) == 0;
        _exit(isOrdinary && Utility::TestFileReadable(path) ? 1 : 0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    return WEXITSTATUS(status) == 1;
}

} // namespace

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

TEST(UtilityReadable, RefusesASocketWhichCannotBeOpened)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("socket"));
    const NamedSocket socket(path);
    ASSERT_TRUE(QFileInfo::exists(path));
    EXPECT_FALSE(Utility::TestFileReadable(path));
}

TEST(UtilityReadable, RefusesAFileWithoutPermission)
{
    const QTemporaryDir directory;
    ASSERT_EQ(chmod(QFile::encodeName(directory.path()).constData(), 0755), 0);
    const QString file = directory.filePath(QStringLiteral("file"));
    const QString pipe = directory.filePath(QStringLiteral("pipe"));
    WriteFile(file, "x");
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path : {file, pipe}) {
        const QByteArray name = QFile::encodeName(path);
        ASSERT_EQ(chmod(name.constData(), 0444), 0);
        EXPECT_TRUE(IsReadableToAnOrdinaryUser(path)) << name.constData();
        ASSERT_EQ(chmod(name.constData(), 0), 0);
        EXPECT_FALSE(IsReadableToAnOrdinaryUser(path)) << name.constData();
    }
}
