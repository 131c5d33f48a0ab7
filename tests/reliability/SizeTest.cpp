#include <gtest/gtest.h>

#include <cstdint>

#include <QFile>
#include <QtEndian>

#include "core/mesh/Mesh.h"
#include "fileformat/path/DXFPathFile.h"
#include "fileformat/stl/STLFile.h"
#include "tests/common/Directory.h"
#include "tests/common/FilledMesh.h"

// Sizes and counts beyond 32 bits, and counts that lie. The files are holes but for a few bytes.

namespace {

using namespace test;

/// Bytes that the process has asked to read so far.
qint64 BytesRead()
{
    const QByteArray counters = Directory::Read(QStringLiteral("/proc/self/io"));
    const int begin = counters.indexOf("rchar: ") + 7;
    return counters.mid(begin, counters.indexOf('\n') - begin).toLongLong();
}

QByteArray LittleEndian(std::uint32_t value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

class LargeFile : public testing::Test {
protected:
    QString Sparse(const QByteArray& beginning, qint64 size) const
    {
        const QString path = m_directory.Write(beginning);
        EXPECT_TRUE(QFile::resize(path, size));
        return path;
    }
    QString SparseStl(std::uint32_t count, qint64 size) const
    {
        return Sparse(QByteArray(80, 'h') + LittleEndian(count), size);
    }

    Directory m_directory;
};

constexpr qint64 kFiveGiB = 5LL << 30;
constexpr std::int64_t kFacets = (kFiveGiB - 84) / 50;

} // namespace

TEST_F(LargeFile, WithAWrongFacetCountIsRefusedUnread)
{
    const std::uint32_t counts[] = {1, kFacets - 1, kFacets + 1, 0x7fffffff, 0x80000000, 0x80000001,
                                    0xffffffff,
                                    // What is left of the size in 32 bits.
                                    std::uint32_t((kFiveGiB - 84) & 0xffffffff) / 50};
    for (const std::uint32_t count : counts) {
        const QString path = SparseStl(count, kFiveGiB);
        const qint64 before = BytesRead();
        Mesh mesh = FilledMesh();
        EXPECT_FALSE(STLFile::LoadFile(path, mesh, false, 80, false)) << count;
        ExpectFilledMesh(mesh);
        EXPECT_LT(BytesRead() - before, 1 << 20) << count;
    }
}

TEST_F(LargeFile, WithACountOf32BitsIsNoSmallerOneThatFits)
{
    // 2^32 + 1 facets are not 1.
    const QString path = SparseStl(1, 84 + 50 * ((1LL << 32) + 1));
    Mesh mesh = FilledMesh();
    EXPECT_FALSE(STLFile::LoadFile(path, mesh, false, 80, false));
    ExpectFilledMesh(mesh);
}

TEST_F(LargeFile, OfPathsEndsWhereItsCountsDo)
{
    // One set without contours; the hole behind it is passed over.
    const QString path =
        Sparse(LittleEndian(1) + LittleEndian(7) + LittleEndian(0) + LittleEndian(0), kFiveGiB);
    const qint64 before = BytesRead();
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
    EXPECT_TRUE(DXFPathFile::ReadDXFPathFile(paths, names, path));
    EXPECT_EQ(paths, (DXFPathFile::Paths{{7, {}}}));
    EXPECT_LT(BytesRead() - before, 2 << 20);
}
