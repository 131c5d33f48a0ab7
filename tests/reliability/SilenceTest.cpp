#include <gtest/gtest.h>

#include <vector>

#include "tests/common/Directory.h"
#include "tests/common/MessageCounter.h"
#include "tests/common/OpenFiles.h"
#include "tests/common/UnreadableFile.h"
#include "tests/reliability/Formats.h"

// Nothing is printed, neither through Qt nor past it, and no file stays open, however a call ends.

namespace {

using namespace test;

/// Gathers what goes to the program's outputs while it lives. GoogleTest allows one at a time.
class Outputs {
public:
    Outputs()
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~Outputs()
    {
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
    Outputs(const Outputs&) = delete;
    Outputs& operator=(const Outputs&) = delete;

private:
    const MessageCounter m_messages;
};

class SilenceOfReader : public testing::TestWithParam<Reader> {
protected:
    QString Path() const { return m_directory.Path(QString::fromLatin1(GetParam().fileName)); }

    /// Whether the file is taken.
    bool Read() const
    {
        bool isRead = false;
        {
            const Outputs outputs;
            isRead = !GetParam().read(Path()).isEmpty();
        }
        EXPECT_FALSE(IsOpen(Path()));
        return isRead;
    }
    bool Read(const QByteArray& bytes) const
    {
        (void)m_directory.Write(bytes, QString::fromLatin1(GetParam().fileName));
        return Read();
    }

    Directory m_directory;
};

// Qt's picture readers say what they do not like about a picture.
class SilenceOfReaderWithoutPictures : public SilenceOfReader {};

std::vector<Reader> ReadersWithoutPictures()
{
    std::vector<Reader> readers;
    for (const Reader& reader : AllReaders()) {
        if (reader.work != Work::QtPictures)
            readers.push_back(reader);
    }
    return readers;
}

class SilenceOfWriter : public testing::TestWithParam<Writer> {};

INSTANTIATE_TEST_SUITE_P(All, SilenceOfReader, testing::ValuesIn(AllReaders()), NameOfFormat());
INSTANTIATE_TEST_SUITE_P(All, SilenceOfReaderWithoutPictures, testing::ValuesIn(ReadersWithoutPictures()),
                         NameOfFormat());
INSTANTIATE_TEST_SUITE_P(All, SilenceOfWriter, testing::ValuesIn(Writers()), NameOfFormat());

} // namespace

TEST_P(SilenceOfReader, IsKeptForAWholeFile)
{
    GetParam().writeSample(Path());
    EXPECT_TRUE(Read());
}

TEST_P(SilenceOfReader, IsKeptForWhatIsNoSuchFile)
{
    (void)Read(QByteArray());
    (void)Read(QByteArray(1, '\0'));
    (void)Read("no such file\n");
    (void)Read(QByteArray(100'000, 'x'));
}

TEST_P(SilenceOfReader, IsKeptForAFileOfWhichNoByteCanBeRead)
{
    ASSERT_NO_FATAL_FAILURE(LinkToAnUnreadableFile(Path()));
    (void)Read();
}

TEST_P(SilenceOfReaderWithoutPictures, IsKeptForAFileThatIsCutShort)
{
    GetParam().writeSample(Path());
    const QByteArray bytes = Directory::Read(Path());
    for (const int percent : {10, 50, 90, 99})
        (void)Read(bytes.left(bytes.size() * percent / 100));
}

TEST_P(SilenceOfWriter, IsKeptWhereverItWrites)
{
    const Directory directory;
    const QString path = directory.Path(QString::fromLatin1(GetParam().fileName));
    const QString full = QStringLiteral("/dev/full");
    {
        const Outputs outputs;
        EXPECT_TRUE(GetParam().write(path));
        (void)GetParam().write(full);
        EXPECT_FALSE(GetParam().write(path + QStringLiteral("/none")));
    }
    EXPECT_FALSE(IsOpen(path));
    EXPECT_FALSE(IsOpen(full));
}
