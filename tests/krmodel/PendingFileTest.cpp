#include "apps/krmodel/PendingFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "apps/krmodel/Failure.h"
#include "tests/common/Directory.h"

namespace {

using krmodel::ExitCode;
using krmodel::Failure;
using krmodel::PendingFile;

class PendingFileTest : public ::testing::Test {
protected:
    QString Path(const char* name) const { return m_directory.Path(QString::fromUtf8(name)); }
    QStringList Names() const { return QDir(Path(".")).entryList(QDir::Files | QDir::Hidden | QDir::System); }
    static void Write(const QString& fileName, const QByteArray& bytes)
    {
        QFile file(fileName);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }
    static QByteArray Bytes(const QString& fileName) { return test::Directory::Read(fileName); }

private:
    test::Directory m_directory;
};

TEST_F(PendingFileTest, CreatesNothingByItself)
{
    const PendingFile pending(Path("a.stl"));
    EXPECT_EQ(Names(), QStringList());
    EXPECT_EQ(pending.GetTarget(), Path("a.stl"));
}

TEST_F(PendingFileTest, LiesBesideTheTargetWithItsSuffixUnderAHiddenNameOfItsOwn)
{
    const PendingFile first(Path("a.stl")), second(Path("a.stl"));
    EXPECT_EQ(QFileInfo(first.GetName()).path(), QFileInfo(first.GetTarget()).path());
    EXPECT_TRUE(first.GetName().endsWith(QStringLiteral(".stl")));
    EXPECT_TRUE(QFileInfo(first.GetName()).fileName().startsWith(QLatin1Char('.')));
    EXPECT_NE(first.GetName(), second.GetName());
}

TEST_F(PendingFileTest, TakesThePlaceOfTheTarget)
{
    Write(Path("a.stl"), "old");
    const PendingFile pending(Path("a.stl"));
    Write(pending.GetName(), "new");
    EXPECT_EQ(Bytes(Path("a.stl")), QByteArray("old"));
    pending.Commit();
    EXPECT_EQ(Bytes(Path("a.stl")), QByteArray("new"));
    EXPECT_EQ(Names(), QStringList(QStringLiteral("a.stl")));
}

TEST_F(PendingFileTest, LeavesTheTargetWhenDiscarded)
{
    Write(Path("a.stl"), "old");
    const PendingFile pending(Path("a.stl"));
    Write(pending.GetName(), "half");
    pending.Discard();
    pending.Discard();
    EXPECT_EQ(Bytes(Path("a.stl")), QByteArray("old"));
    EXPECT_EQ(Names(), QStringList(QStringLiteral("a.stl")));
}

TEST_F(PendingFileTest, KeepsTheRightsOfTheFileThatItReplaces)
{
    Write(Path("a.stl"), "old");
    ASSERT_EQ(chmod(QFile::encodeName(Path("a.stl")), 0640), 0);
    const PendingFile pending(Path("a.stl"));
    Write(pending.GetName(), "new");
    pending.Commit();
    struct stat state = {};
    ASSERT_EQ(stat(QFile::encodeName(Path("a.stl")), &state), 0);
    EXPECT_EQ(state.st_mode & 07777, 0640U);
}

TEST_F(PendingFileTest, ReplacesTheFileThatALinkLeadsTo)
{
    ASSERT_TRUE(QDir(QFileInfo(Path("a")).path()).mkdir(QStringLiteral("far")));
    Write(Path("far/real.stl"), "old");
    ASSERT_TRUE(QFile::link(Path("far/real.stl"), Path("link.stl")));
    const PendingFile pending(Path("link.stl"));
    EXPECT_EQ(QFileInfo(pending.GetName()).path(), QFileInfo(Path("far/real.stl")).path());
    Write(pending.GetName(), "new");
    pending.Commit();
    EXPECT_EQ(Bytes(Path("far/real.stl")), QByteArray("new"));
    EXPECT_TRUE(QFileInfo(Path("link.stl")).isSymLink());
}

TEST_F(PendingFileTest, CreatesTheFileThatALinkLeadsToInVain)
{
    ASSERT_EQ(symlink("real.stl", QFile::encodeName(Path("link.stl"))), 0);
    const PendingFile pending(Path("link.stl"));
    Write(pending.GetName(), "new");
    pending.Commit();
    EXPECT_EQ(Bytes(Path("real.stl")), QByteArray("new"));
    EXPECT_TRUE(QFileInfo(Path("link.stl")).isSymLink());
}

TEST_F(PendingFileTest, ServesNamesAsLongAsTheyMayBe)
{
    const QByteArray name = QByteArray(251, 'n') + ".stl";
    const PendingFile pending(Path(name));
    Write(pending.GetName(), "new");
    pending.Commit();
    EXPECT_EQ(Bytes(Path(name)), QByteArray("new"));
}

TEST_F(PendingFileTest, FailsWithoutAnythingToCommit)
{
    Write(Path("a.stl"), "old");
    const PendingFile pending(Path("a.stl"));
    try {
        pending.Commit();
        FAIL() << "committed";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.GetCode(), ExitCode::WriteFailed);
        EXPECT_EQ(failure.what(), Path("a.stl").toStdString() + ": cannot write: No such file or directory");
    }
    EXPECT_EQ(Bytes(Path("a.stl")), QByteArray("old"));
}

TEST_F(PendingFileTest, PoursIntoAPipeWhatCannotReplaceIt)
{
    ASSERT_EQ(mkfifo(QFile::encodeName(Path("pipe.stl")), 0600), 0);
    // Open for both, so that neither end waits for the other.
    QFile pipe(Path("pipe.stl"));
    ASSERT_TRUE(pipe.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    const PendingFile pending(Path("pipe.stl"));
    EXPECT_NE(QFileInfo(pending.GetName()).path(), QFileInfo(Path("a")).path());
    Write(pending.GetName(), "new");
    pending.Commit();
    EXPECT_EQ(pipe.read(3), QByteArray("new"));
    EXPECT_FALSE(QFile::exists(pending.GetName()));
    EXPECT_EQ(Names(), QStringList(QStringLiteral("pipe.stl")));
}

TEST_F(PendingFileTest, ReportsADeviceThatIsFull)
{
    const PendingFile pending(QStringLiteral("/dev/full"));
    Write(pending.GetName(), "new");
    EXPECT_THROW(pending.Commit(), Failure);
    pending.Discard();
    EXPECT_FALSE(QFile::exists(pending.GetName()));
}

} // namespace
