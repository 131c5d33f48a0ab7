#include "fileformat/path/PathSource_p.h"

#include <memory>
#include <vector>

#include <QFile>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"

namespace {

using kr::path::PathSource;
using test::Directory;

/// A file that was longer when its size was asked for.
class ShorterFile : public QFile {
public:
    using QFile::QFile;
    qint64 size() const override { return QFile::size() + 1'000'000; }
};

class PathSourceOf : public testing::Test {
protected:
    template<class File>
    PathSource Open(const QByteArray& bytes)
    {
        m_file = std::make_unique<File>(m_directory.Write(bytes));
        EXPECT_TRUE(m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered));
        return PathSource(*m_file);
    }

    Directory m_directory;
    std::unique_ptr<QFile> m_file;
};

QByteArray Numbered(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 256);
    return bytes;
}

} // namespace

TEST_F(PathSourceOf, SmallAndLargePiecesGivesTheBytesInOrder)
{
    const QByteArray bytes = Numbered(1'000'000);
    for (const int size : {1, 3, 4, 1000, 131'071, 131'072, 131'073, 200'000, 1'000'000}) {
        PathSource source = Open<QFile>(bytes);
        QByteArray piece(size, '\0');
        int position = 0;
        for (; position + size <= bytes.size(); position += size) {
            ASSERT_TRUE(source.Read(piece.data(), static_cast<std::size_t>(size)));
            ASSERT_TRUE(piece == bytes.mid(position, size)) << size << ' ' << position;
        }
        EXPECT_FALSE(source.Read(piece.data(), static_cast<std::size_t>(bytes.size() - position + 1)));
    }
}

TEST_F(PathSourceOf, MixedPiecesGivesTheBytesInOrder)
{
    const QByteArray bytes = Numbered(1'000'000);
    PathSource source = Open<QFile>(bytes);
    int position = 0;
    for (const int size : {4, 140'000, 1, 131'068, 131'072, 4, 200'000, 3, 0, 300'000}) {
        QByteArray piece(size, '\0');
        ASSERT_TRUE(source.Read(piece.data(), static_cast<std::size_t>(size)));
        ASSERT_TRUE(piece == bytes.mid(position, size)) << position;
        position += size;
    }
}

TEST_F(PathSourceOf, AFileThatBecameShorterEnds)
{
    for (const int size : {1, 100'000}) {
        PathSource source = Open<ShorterFile>(Numbered(10));
        std::vector<char> piece(static_cast<std::size_t>(size) + 10);
        EXPECT_FALSE(source.Read(piece.data(), piece.size()));
    }
    PathSource source = Open<ShorterFile>(QByteArray());
    EXPECT_FALSE(source.Integer());
    EXPECT_FALSE(source.Count(1));
}

TEST_F(PathSourceOf, CountsAreComparedWithTheBytesLeft)
{
    const QByteArray counted = QByteArray("\x02\0\0\0", 4) + QByteArray(8, 'x');
    EXPECT_EQ(Open<QFile>(counted).Count(4), std::size_t(2));
    EXPECT_EQ(Open<QFile>(counted).Count(5), std::nullopt);
    EXPECT_EQ(Open<QFile>(QByteArray(4, '\xff')).Count(1), std::size_t(0)) << "-1";
    EXPECT_EQ(Open<QFile>(QByteArray(3, '\0')).Count(1), std::nullopt);
}
