#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/common/OpenFiles.h"
#include "tests/reliability/Formats.h"

// Small files cut at every byte and changed at every byte. That each gives what a plain reader gives is
// tested with the formats that have one; here, that every reader keeps what it promises whatever the file
// holds: Reader::read checks.

namespace {

using namespace test;

class Damage : public testing::TestWithParam<Reader> {
protected:
    void SetUp() override
    {
        GetParam().writeSample(m_path);
        m_bytes = Directory::Read(m_path);
        ASSERT_FALSE(GetParam().read(m_path).isEmpty());
    }
    void Read(const QByteArray& bytes) const
    {
        m_directory.Write(bytes, QString::fromLatin1(GetParam().fileName));
        static_cast<void>(GetParam().read(m_path));
        EXPECT_FALSE(IsOpen(m_path));
    }

    Directory m_directory;
    QString m_path = m_directory.Path(QString::fromLatin1(GetParam().fileName));
    QByteArray m_bytes;
};

INSTANTIATE_TEST_SUITE_P(Reader, Damage,
                         testing::Values(ReaderNamed("Mtl"), ReaderNamed("ReliefOfPng"),
                                         ReaderNamed("ReliefOfJpg"), ReaderNamed("ReliefOfBmp"),
                                         ReaderNamed("ReliefOfTiff"), ReaderNamed("Texture")),
                         NameOfFormat());

} // namespace

TEST_P(Damage, AFileCutAtAnyByteIsReadWholeOrRefused)
{
    for (int size = 0; size < m_bytes.size() && !HasFailure(); ++size) {
        SCOPED_TRACE(size);
        Read(m_bytes.left(size));
    }
}

TEST_P(Damage, AFileWithAnyByteChangedIsReadWholeOrRefused)
{
    for (int at = 0; at < m_bytes.size() && !HasFailure(); ++at) {
        const auto byte = static_cast<unsigned char>(m_bytes[at]);
        for (const int changed : {0, 0xff, byte + 1, byte ^ 0x80}) {
            SCOPED_TRACE(testing::Message() << "byte " << at << " as " << changed);
            QByteArray bytes = m_bytes;
            bytes[at] = static_cast<char>(changed);
            Read(bytes);
        }
    }
}
