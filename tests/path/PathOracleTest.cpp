#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include "tests/common/Directory.h"
#include "tests/path/PlainPathFile.h"

namespace {

using test::Directory;
using Names = std::map<int, std::string>;
using Point = Vector2D<double>;

/// Random content of path files, and random damage.
class RandomPaths {
public:
    explicit RandomPaths(unsigned seed) : m_random(seed) {}

    int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    bool Chance(int percent) { return Below(100) < percent; }

    int Id() { return Chance(70) ? Below(12) - 4 : static_cast<int>(m_random()); }

    DXFPathFile::Paths Paths()
    {
        DXFPathFile::Paths paths;
        for (int left = Below(5); left > 0; --left) {
            auto& contours = paths[Id()];
            contours.resize(static_cast<std::size_t>(Below(5)));
            for (DXFPathFile::Contour& contour : contours)
                contour = Contour();
        }
        return paths;
    }

    Names NamesFor(const DXFPathFile::Paths& paths)
    {
        Names names;
        for (const auto& set : paths)
            if (Chance(70))
                names[set.first] = Name();
        if (Chance(30))
            names[Id()] = Name();
        return names;
    }

    QByteArray Damaged(QByteArray bytes)
    {
        for (int left = 1 + Below(3); left > 0 && !bytes.isEmpty(); --left) {
            const int place = Below(bytes.size());
            if (Chance(20))
                bytes.truncate(place);
            else if (Chance(20))
                bytes.remove(place, 1 + Below(8));
            else if (Chance(20))
                bytes.insert(place, QByteArray(1 + Below(8), static_cast<char>(Below(3) - 1)));
            else
                bytes[place] = static_cast<char>(m_random());
        }
        return bytes;
    }

private:
    double Number()
    {
        if (Chance(80))
            return Below(2000) / 8.0 - 100;
        const std::uint64_t bits = std::uint64_t(m_random()) << 32 | m_random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    DXFPathFile::Contour Contour()
    {
        DXFPathFile::Contour contour(static_cast<std::size_t>(Chance(3) ? Below(9000) : Below(6)));
        for (Point& point : contour)
            point = Point(Number(), Number());
        return contour;
    }

    std::string Name()
    {
        static const char* const kPieces[] = {"a",    "Z", "\xC3\x84", "\xE6\xA8\xA1", "\xF0\x9F\xA7\x8A",
                                              "\xFF", " "};
        std::string name;
        for (int left = Chance(3) ? Below(9000) : Below(6); left > 0; --left)
            name += kPieces[Below(7)];
        return name;
    }

    std::mt19937 m_random;
};

} // namespace

TEST(PathOracle, WritesTheBytesOfAPlainWriter)
{
    RandomPaths random(1);
    const Directory directory;
    for (int round = 0; round < 3000; ++round) {
        const DXFPathFile::Paths paths = random.Paths();
        const Names names = random.NamesFor(paths);
        // A new name each time would fill the disk; an old file is emptied.
        const QString path = directory.Path(QStringLiteral("out.path"));
        QFile::remove(path);
        ASSERT_TRUE(DXFPathFile::WriteDXFPathFile(paths, names, path));
        ASSERT_EQ(Directory::Read(path), test::WritePathsPlainly(paths, names)) << round;
    }
}

TEST(PathOracle, ReadsWhatAPlainReaderReadsWholeOrDamaged)
{
    RandomPaths random(2);
    const Directory directory;
    int readCount = 0, refusedCount = 0;
    for (int round = 0; round < 5000; ++round) {
        const DXFPathFile::Paths written = random.Paths();
        QByteArray bytes = test::WritePathsPlainly(written, random.NamesFor(written));
        if (random.Chance(70))
            bytes = random.Damaged(bytes);
        const auto expected = test::ReadPathsPlainly(bytes);
        DXFPathFile::Paths paths;
        std::map<int, QString> names;
        const bool isRead = DXFPathFile::ReadDXFPathFile(paths, names, directory.Write(bytes));
        ASSERT_EQ(isRead, expected.has_value()) << round;
        ASSERT_TRUE(test::HaveSameBits(paths, expected ? expected->paths : DXFPathFile::Paths())) << round;
        ASSERT_EQ(names, expected ? expected->names : (std::map<int, QString>())) << round;
        ++(isRead ? readCount : refusedCount);
    }
    EXPECT_GT(readCount, 1000);
    EXPECT_GT(refusedCount, 1000);
}
