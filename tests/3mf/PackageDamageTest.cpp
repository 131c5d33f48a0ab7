#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "fuzz/MemoryFile.h"
#include "tests/3mf/PackageSupport.h"
#include "tests/3mf/PlainPackageReader.h"

// Damaged archives, and such that lie, load as by a reader that does it all plainly.

namespace {

using test::ModelPart;
using test::OwnedPackage;
using test::UsualPackage;
using test::ZipBuilder;
using test::ZipEntry;

class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    int Below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_engine); }
    bool OneIn(int count) { return Below(count) == 0; }
    template<class List>
    auto AnyOf(const List& list)
    {
        return list[static_cast<std::size_t>(Below(static_cast<int>(std::size(list))))];
    }

private:
    std::mt19937 m_engine;
};

/// Compares the two readers on one archive after the other, and counts what they found.
class Comparison {
public:
    void Add(const QByteArray& archive)
    {
        m_file.Write(reinterpret_cast<const std::uint8_t*>(archive.constData()),
                     static_cast<std::size_t>(archive.size()));
        const QString path = m_file.Name();
        if (!test::PlainPackage::CanLoad(path))
            return;
        OwnedPackage package;
        test::PlainPackage plain;
        const bool isLoaded = package.LoadFile(path);
        ASSERT_EQ(isLoaded, plain.LoadFile(path));
        ASSERT_EQ(Difference(plain, package), "");
        ++m_compared;
        m_failed += isLoaded ? 0 : 1;
        m_withObjects += package.GetObjects().empty() ? 0 : 1;
        m_withImage += package.Image().isEmpty() ? 0 : 1;
    }

    int Compared() const { return m_compared; }
    int Failed() const { return m_failed; }
    int WithObjects() const { return m_withObjects; }
    int WithImage() const { return m_withImage; }

private:
    fuzz::MemoryFile m_file;
    int m_compared = 0;
    int m_failed = 0;
    int m_withObjects = 0;
    int m_withImage = 0;
};

// About 40 KB of text, so that it is read in several pieces.
QByteArray LongModelPart()
{
    QByteArray vertices;
    Random random(1);
    for (int i = 0; i < 1000; ++i)
        vertices += "<vertex x=\"" + QByteArray::number(random.Below(100'000)) + "\" y=\"0\" z=\"1\"/>\n";
    return ModelPart(4).replace("<vertices>", "<vertices>" + vertices);
}

ZipBuilder PackageOfEverything()
{
    ZipEntry stored{"Metadata/b.png", "stored picture", 0};
    ZipEntry said{"Metadata/c.jpg", "picture", 8, test::kIsEncrypted};
    return UsualPackage()
        .Add("_rels/.rels", "<Relationships/>")
        .Add("Metadata/a.png", "picture")
        .Add("3D/first.model", ModelPart(1))
        .Add(stored)
        .Add("3D/", "")
        .Add("3D/first.model", ModelPart(2))
        .Add("a/b/second.model", LongModelPart())
        .Add(said)
        .Add("other.bin", QByteArray(500, 'x'));
}

} // namespace

TEST(PackageDamage, CutArchivesLoadAsByPlainReader)
{
    const QByteArray archive = PackageOfEverything().Bytes();
    ASSERT_GT(archive.size(), 5000);
    Comparison comparison;
    for (int size = 0; size <= archive.size(); size += 16)
        comparison.Add(archive.left(size));
    for (int begin = 16; begin < archive.size(); begin += 16)
        comparison.Add(archive.mid(begin));
    comparison.Add(archive);
    EXPECT_GT(comparison.Compared(), 600);
    EXPECT_GE(comparison.WithObjects(), 1);
}

TEST(PackageDamage, ChangedBytesLoadAsByPlainReader)
{
    const QByteArray archive = PackageOfEverything().Bytes("comment");
    Random random(7);
    Comparison comparison;
    for (int i = 0; i < 1500; ++i) {
        QByteArray changed = archive;
        for (int left = 1 + random.Below(3); left > 0; --left) {
            // Half of the changes go to the directory at the end, where they matter most.
            const int fromEnd = random.Below(random.OneIn(2) ? 800 : archive.size());
            changed[archive.size() - 1 - fromEnd] = static_cast<char>(random.Below(256));
        }
        ASSERT_NO_FATAL_FAILURE(comparison.Add(changed)) << i;
    }
    EXPECT_GT(comparison.Compared(), 1200);
    EXPECT_GT(comparison.Failed(), 50);
    EXPECT_GT(comparison.WithObjects(), 500);
    EXPECT_GT(comparison.WithImage(), 500);
}

TEST(PackageDamage, EntriesThatLieLoadAsByPlainReader)
{
    Random random(11);
    const QByteArray contents[] = {ModelPart(3), LongModelPart(), "", "picture", test::ContentTypes(), "<"};
    const char* const names[] = {
        "a.model", "b.model", "Metadata/a.png", "Metadata/b.png", "[Content_Types].xml", "x"};
    const quint16 methods[] = {8, 8, 8, 8, 0, 0, 9, 1};
    const auto lie = [&](qint64 truth) -> std::optional<quint32> {
        const qint64 lies[] = {truth,     truth,     truth,  truth - 1,   truth + 1,   0,          1,
                               truth / 2, 2 * truth, 20'000, 0x7FFF'FFFF, 0x8000'0000, 0xFFFF'FFFE};
        return static_cast<quint32>(std::max<qint64>(random.AnyOf(lies), 0));
    };
    Comparison comparison;
    for (int i = 0; i < 3000; ++i) {
        ZipBuilder builder = random.OneIn(4) ? ZipBuilder() : UsualPackage();
        for (int left = random.Below(5); left > 0; --left) {
            ZipEntry entry{random.AnyOf(names), random.AnyOf(contents), random.AnyOf(methods)};
            entry.flags = static_cast<quint16>(random.OneIn(3) ? random.Below(16) : 0);
            entry.inflatedSize = lie(entry.content.size());
            if (random.OneIn(4))
                entry.compressedSize = lie(test::Deflate(entry.content).size());
            builder.Add(entry);
        }
        ASSERT_NO_FATAL_FAILURE(comparison.Add(builder.Bytes())) << i;
    }
    EXPECT_EQ(comparison.Compared(), 3000);
    EXPECT_GT(comparison.Failed(), 300);
    EXPECT_GT(comparison.WithObjects(), 300);
    EXPECT_GT(comparison.WithImage(), 300);
}
