#include <gtest/gtest.h>

#include <map>
#include <string>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include "tests/common/Directory.h"
#include "tests/common/OpenFiles.h"
#include "tests/common/OrdinaryUser.h"
#include "tests/reliability/Formats.h"

// Writing where nothing can be written.

namespace {

using namespace test;

class WriteFailure : public testing::TestWithParam<Writer> {
protected:
    QString Path(const char* name) const { return m_directory.Path(QString::fromLatin1(name)); }
    void TearDown() override { EXPECT_EQ(OpenFiles(), m_openFiles); }

    Directory m_directory;
    int m_openFiles = OpenFiles();
};

INSTANTIATE_TEST_SUITE_P(EveryWriter, WriteFailure, testing::ValuesIn(Writers()), NameOfFormat());

} // namespace

// The writers of models and paths report no write errors; a texture file is whole or is not there.
TEST_P(WriteFailure, OfAFullDeviceIsReportedByTheTextureFileAlone)
{
    const bool isReported = GetParam().name == std::string("Texture");
    EXPECT_EQ(GetParam().write(QStringLiteral("/dev/full")), !isReported);
    EXPECT_TRUE(QFileInfo(QStringLiteral("/dev/full")).exists());
}

TEST_P(WriteFailure, OfAMissingFolderIsReported)
{
    EXPECT_FALSE(GetParam().write(Path("missing/model")));
    EXPECT_FALSE(QFileInfo::exists(Path("missing")));
}

TEST_P(WriteFailure, OfAFolderInItsPlaceIsReportedAndTheFolderStays)
{
    ASSERT_TRUE(QDir().mkdir(Path("folder")));
    EXPECT_FALSE(GetParam().write(Path("folder")));
    EXPECT_TRUE(QFileInfo(Path("folder")).isDir());
}

TEST_P(WriteFailure, OfAnEmptyNameIsReported)
{
    EXPECT_FALSE(GetParam().write(QString()));
}

TEST_P(WriteFailure, OfAReadOnlyFolderIsReportedAndNothingIsThere)
{
    ASSERT_TRUE(QDir().mkdir(Path("locked")));
    ASSERT_EQ(chmod(Path("").toUtf8().constData(), 0755), 0);
    ASSERT_EQ(chmod(Path("locked").toUtf8().constData(), 0555), 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(GetParam().write(Path("locked/model")));
    }
    EXPECT_TRUE(QDir(Path("locked")).isEmpty());
}

TEST_P(WriteFailure, OfAReadOnlyFileIsReportedAndTheFileStays)
{
    const QString path = m_directory.Write("as it was", QStringLiteral("locked"));
    ASSERT_EQ(chmod(Path("").toUtf8().constData(), 0755), 0);
    ASSERT_EQ(chmod(path.toUtf8().constData(), 0444), 0);
    {
        const OrdinaryUser user;
        EXPECT_FALSE(GetParam().write(path));
    }
    EXPECT_EQ(Directory::Read(path), "as it was");
}
