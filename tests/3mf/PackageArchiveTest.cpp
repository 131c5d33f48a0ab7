#include <gtest/gtest.h>

#include "fileformat/3mf/PackageArchive_p.h"
#include "tests/3mf/ZipBuilder.h"
#include "tests/common/Directory.h"

namespace {

using kr::package3mf::PackageArchive;
using test::ZipBuilder;
using test::ZipEntry;
using Outcome = PackageArchive::Outcome;

constexpr quint16 kMethods[] = {0, Z_DEFLATED};

/// What reading the only entry gives when no more than @p largest bytes are wanted.
struct ReadOnly {
    Outcome outcome;
    QByteArray bytes;

    ReadOnly(const ZipEntry& entry, int largest)
    {
        const test::Directory directory;
        PackageArchive archive(directory.Write(ZipBuilder().Add(entry).Bytes()), largest);
        outcome = archive.Read(archive.Entries().at(0), bytes);
    }
};

QByteArray TenThousandBytes()
{
    QByteArray bytes;
    for (int i = 0; i < 2500; ++i)
        bytes += QByteArray::number(1000 + i);
    return bytes;
}

} // namespace

TEST(PackageArchive, ReadsEntryOfTheLargestSize)
{
    const QByteArray content = TenThousandBytes();
    for (const quint16 method : kMethods) {
        const ReadOnly read(ZipEntry{"a", content, method}, content.size());
        EXPECT_EQ(read.outcome, Outcome::Complete);
        EXPECT_EQ(read.bytes, content);
    }
}

TEST(PackageArchive, DoesNotReadLargerEntry)
{
    for (const quint16 method : kMethods)
        EXPECT_EQ(ReadOnly(ZipEntry{"a", TenThousandBytes(), method}, 9'999).outcome, Outcome::TooLarge);
}

TEST(PackageArchive, DoesNotReadEntryThatIsLargerThanThatBeforeItIsInflated)
{
    EXPECT_EQ(ReadOnly(ZipEntry{"a", TenThousandBytes(), Z_DEFLATED}, 100).outcome, Outcome::TooLarge);
}

TEST(PackageArchive, OpensNoEntryOnceTheFileIsEmptied)
{
    const test::Directory directory;
    const QString path = directory.Write(ZipBuilder().Add(ZipEntry{"a", TenThousandBytes(), 0}).Bytes());
    PackageArchive archive(path);
    const PackageArchive::Entry entry = archive.Entries().at(0);
    ASSERT_TRUE(QFile::resize(path, 0));
    QByteArray bytes;
    EXPECT_EQ(archive.Read(entry, bytes), Outcome::NotOpened);
}

TEST(PackageArchive, JudgesByWhatComesOutNotByDeclaredSize)
{
    ZipEntry entry{"a", TenThousandBytes()};
    entry.inflatedSize = 2'000'000'000;
    const ReadOnly read(entry, 10'000);
    EXPECT_EQ(read.outcome, Outcome::Complete);
    EXPECT_EQ(read.bytes, entry.content);
}

TEST(PackageArchive, ListsNamesInOrder)
{
    const test::Directory directory;
    const PackageArchive archive(
        directory.Write(ZipBuilder().Add("b", "1").Add("a", "2").Add("b", "3").Bytes()));
    ASSERT_EQ(archive.Entries().size(), 3u);
    EXPECT_EQ(archive.Entries()[0].name, QStringLiteral("b"));
    EXPECT_EQ(archive.Entries()[1].name, QStringLiteral("a"));
    EXPECT_EQ(archive.Entries()[2].name, QStringLiteral("b"));
}
