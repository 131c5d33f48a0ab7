#include "fileformat/stl/STLText_p.h"

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/stl/ByteDevices.h"
#include "tests/stl/LiteralReader.h"
#include "tests/stl/STLBuilders.h"

namespace {

using kr::BlockReader;
using kr::LineEnds;
using kr::stl::TriangleSoup;
using test::BitsOf;
using test::Bytes;
using test::kBlockSizes;
using test::Point;
using test::TextSTL;

std::optional<TriangleSoup> ReadText(const QByteArray& bytes,
                                     std::size_t blockSize = BlockReader::kUsualBlockSize,
                                     std::size_t expectedCorners = 3)
{
    Bytes device(bytes);
    BlockReader reader(device, LineEnds::WithoutCarriageReturns, blockSize);
    return kr::stl::ReadText(reader, expectedCorners);
}

std::optional<TriangleSoup> ReadTextThatFails(const QByteArray& bytes, std::size_t blockSize)
{
    test::FailingDevice device(bytes);
    BlockReader reader(device, LineEnds::WithoutCarriageReturns, blockSize);
    return kr::stl::ReadText(reader, 3);
}

std::vector<Point> Corners(const TriangleSoup& soup)
{
    return {soup.corners.data(), soup.corners.data() + soup.cornerCount};
}

} // namespace

TEST(STLText, ReadsTheSameAtEveryBlockSize)
{
    const QByteArray bytes = TextSTL().Facets(60).End();
    for (const std::size_t blockSize : kBlockSizes) {
        const auto soup = ReadText(bytes, blockSize);
        ASSERT_TRUE(soup) << blockSize;
        ASSERT_EQ(soup->cornerCount, 180U) << blockSize;
        EXPECT_EQ(soup->normalCount, 60U) << blockSize;
        EXPECT_EQ(soup->corners[3 * 59 + 1], Point(591, 0, 0)) << blockSize;
    }
}

TEST(STLText, TakesInMoreCornersThanExpected)
{
    const auto soup = ReadText(TextSTL().Facets(5000), BlockReader::kUsualBlockSize, 0);
    ASSERT_TRUE(soup);
    ASSERT_EQ(soup->cornerCount, 15000U);
    for (std::size_t i = 0; i < 5000; ++i)
        ASSERT_EQ(soup->corners[3 * i + 2], Point(static_cast<float>(10 * i), 1, 0));
}

TEST(STLText, PassesOverTheFirstLineWhateverItHolds)
{
    const auto soup = ReadText("vertex 1 2 3 normal 1 2\nvertex 4 5 6");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), std::vector<Point>{Point(4, 5, 6)});
}

TEST(STLText, EndsWhereReadingFailsAsAtTheEndOfTheFile)
{
    for (const char* const text : {"\nvertex 1 2 3 endsolid ab", "\nvertex 1 2 3 loop", "\nvertex 1 2 3\n"})
        for (const std::size_t blockSize : kBlockSizes) {
            const auto soup = ReadTextThatFails(text, blockSize);
            ASSERT_TRUE(soup) << text;
            EXPECT_EQ(Corners(*soup), std::vector<Point>{Point(1, 2, 3)}) << text;
        }
}

TEST(STLText, FailsWhereReadingFailsInsideThreeNumbers)
{
    for (const char* const text : {"\nvertex 4 5 6 vertex 1 2 ", "\nvertex 1", "\nvertex", "\nnormal 0 0 "})
        for (const std::size_t blockSize : kBlockSizes)
            EXPECT_FALSE(ReadTextThatFails(text, blockSize)) << text;
}

TEST(STLText, HoldsNothingWithoutASecondLine)
{
    for (const char* text : {"", "solid", "solid\n", "solid\r"}) {
        const auto soup = ReadText(text);
        ASSERT_TRUE(soup);
        EXPECT_EQ(soup->cornerCount, 0U);
    }
}

TEST(STLText, ComparesKeywordsWithoutRegardToCase)
{
    const auto soup = ReadText("\nFACET NORMAL 0 0 1 Outer Loop VerTex 1 2 3 ENDLOOP EndFacet ENDSOLID");
    ASSERT_TRUE(soup);
    EXPECT_EQ(soup->cornerCount, 1U);
    EXPECT_EQ(soup->normalCount, 1U);
}

TEST(STLText, PassesOverEveryOtherToken)
{
    const auto soup =
        ReadText("\ncolor 1 2 3 vert 1 2 3 vertexx 1 2 3 xvertex 1 2 3 -vertex ver-tex vertex. facet\n"
                 "loop loops {vertex} 7 8 9");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), std::vector<Point>{Point(7, 8, 9)});
}

TEST(STLText, TakesCornersInOrderWhateverTheStructure)
{
    const auto soup =
        ReadText("\nvertex 1 0 0\nendfacet\nvertex 2 0 0 vertex 3 0 0 endloop outer vertex 4 0 0");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), (std::vector<Point>{{1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}}));
    EXPECT_EQ(soup->FacetCount(), 1U);
}

TEST(STLText, ReadsNumbersSpreadOverLines)
{
    const auto soup = ReadText("\nvertex\n1.5\n\n,2.5;\r\n(3.5)");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), std::vector<Point>{Point(1.5f, 2.5f, 3.5f)});
}

TEST(STLText, ReadsExponents)
{
    const auto soup = ReadText("\nvertex 1.5e+01 -2E-3 +.5e1");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), std::vector<Point>{Point(15, -0.002f, 5)});
}

TEST(STLText, ReadsATokenThatIsNoNumberAsZero)
{
    const auto soup = ReadText("\nvertex one 0x10 1.2.3 vertex 1-2 vertex endsolid");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), (std::vector<Point>{{0, 0, 0}, {0, 0, 0}}));
}

TEST(STLText, KeepsNumbersThatAreNotFinite)
{
    const auto soup = ReadText("\nvertex inf -inf 1e60 vertex nan 1 1");
    ASSERT_TRUE(soup);
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(soup->corners[0], Point(infinity, -infinity, infinity));
    EXPECT_TRUE(std::isnan(soup->corners[1].x));
}

TEST(STLText, ReadsLongNumbersUpTo254Characters)
{
    // The digits behind are cut off, so these are ones with zeros, a tenth with zeros, and too large a
    // number.
    const QByteArray one = "1." + QByteArray(252, '0');
    const QByteArray large = "1" + QByteArray(253, '0');
    for (const std::size_t blockSize : kBlockSizes) {
        const auto soup = ReadText("\nvertex " + one + "e9 " + one + "x 2 vertex " + large + " " + large +
                                       "0 " + large + "e5",
                                   blockSize);
        ASSERT_TRUE(soup);
        ASSERT_EQ(soup->cornerCount, 2U);
        EXPECT_EQ(soup->corners[0], Point(1, 1, 2));
        const float infinity = std::numeric_limits<float>::infinity();
        EXPECT_EQ(soup->corners[1], Point(infinity, infinity, infinity));
    }
}

TEST(STLText, RoundsToDoubleFirstAndThenToFloat)
{
    // Between two floats, and nearer to the upper one only by what no double shows.
    const auto soup = ReadText("\nvertex 1.00000005960464477539062500000000000001 0 0");
    ASSERT_TRUE(soup);
    EXPECT_EQ(soup->corners[0].x, 1.0f);
}

TEST(STLText, FailsWhenNumbersAreCutOff)
{
    for (const char* text : {"\nvertex", "\nvertex ", "\nvertex 1", "\nvertex 1 2", "\nvertex 1 2 ",
                             "\nnormal", "\nnormal 0 0", "\nvertex 1 2 3 normal 1 ,,,,", "\nVERTEX 1 2 ;"}) {
        for (const std::size_t blockSize : kBlockSizes)
            EXPECT_FALSE(ReadText(text, blockSize)) << text;
    }
}

TEST(STLText, AcceptsTheLastNumberAtTheVeryEnd)
{
    const auto soup = ReadText("\nvertex 1 2 3");
    ASSERT_TRUE(soup);
    EXPECT_EQ(soup->cornerCount, 1U);
}

TEST(STLText, CountsNormalsWhateverTheirTokens)
{
    const auto soup = ReadText("\nnormal a b c normal 1 2 3\nnormal normal normal normal");
    ASSERT_TRUE(soup);
    EXPECT_EQ(soup->normalCount, 3U);
}

TEST(STLText, ReadsSeveralSolidsAsOne)
{
    const QByteArray bytes = TextSTL().Facets(3).End().Line("solid other").Facets(2).End();
    for (const std::size_t blockSize : kBlockSizes) {
        const auto soup = ReadText(bytes, blockSize);
        ASSERT_TRUE(soup);
        EXPECT_EQ(soup->FacetCount(), 5U);
        EXPECT_EQ(soup->normalCount, 5U);
    }
}

TEST(STLText, StopsBehindTheLastSolid)
{
    const auto soup = ReadText("\nvertex 1 2 3 endsolid model vertex 4 5 6 vertex");
    ASSERT_TRUE(soup);
    EXPECT_EQ(soup->cornerCount, 1U);
}

TEST(STLText, FindsTheNextSolidWithinOtherBytes)
{
    // The name of the solid that ends contains the word already.
    const auto soup =
        ReadText("\nvertex 1 2 3 endsolid mysolidpart vertex 4 5 6 endsolid (solid vertex 7 8 9");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), (std::vector<Point>{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}));
}

TEST(STLText, ReadsWordsThatTouchTheNextSolid)
{
    const auto soup = ReadText("\nendsolid solidvertex 1 2 3 endsolid solid_vertex 4 5 6");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), (std::vector<Point>{{1, 2, 3}, {4, 5, 6}}));
}

TEST(STLText, ReadsTheNameOfAFurtherSolidAsWords)
{
    const auto soup = ReadText("\nendsolid solid normal facet normal 0 0 1 vertex 1 2 3");
    ASSERT_TRUE(soup);
    // "normal facet normal 0" is the first statement; the words "0 1" behind it mean nothing.
    EXPECT_EQ(soup->normalCount, 1U);
    EXPECT_EQ(soup->cornerCount, 1U);
}

TEST(STLText, GivesUpTheNextSolidAfter10240Bytes)
{
    const QByteArray beginning("\nvertex 1 2 3 endsolid ");
    const QByteArray end("solid vertex 4 5 6");
    EXPECT_EQ(ReadText(beginning + QByteArray(10236, 'x') + end)->cornerCount, 2U);
    EXPECT_EQ(ReadText(beginning + QByteArray(10237, 'x') + end)->cornerCount, 1U);
}

TEST(STLText, DropsCarriageReturnsEvenInsideWords)
{
    for (const std::size_t blockSize : kBlockSizes) {
        const auto soup = ReadText("\r\nver\rtex 1\r2 3 4\r\nendsolid so\rlid vertex 5 6 7\r", blockSize);
        ASSERT_TRUE(soup);
        EXPECT_EQ(Corners(*soup), (std::vector<Point>{{12, 3, 4}, {5, 6, 7}}));
    }
}

TEST(STLText, TakesLineFeedsAloneForLineEnds)
{
    const auto soup = ReadText("solid\rvertex 1 2 3\rvertex 4 5 6\n vertex 7 8 9");
    ASSERT_TRUE(soup);
    EXPECT_EQ(Corners(*soup), std::vector<Point>{Point(7, 8, 9)});
}

TEST(STLText, ReadsOnWhenTheLayoutChanges)
{
    // Facets are recognised by what stood between the numbers of the one before; nothing may hang on it.
    QByteArray bytes("solid\n");
    std::size_t facets = 0;
    for (const char* gap : {" ", "\n", "\t\t", " loop ", "\nendfacet\n", ";", "\nouter vertexes "}) {
        for (int i = 0; i < 4; ++i, ++facets) {
            const QByteArray g(gap);
            bytes += "facet" + g + "normal 0 0 1" + g + "vertex\t" + QByteArray::number(int(facets)) +
                     " 0 0" + g + "VERTEX  1  2\t3" + g + "vertex 1 1e0 -1" + g;
        }
    }
    for (const std::size_t blockSize : kBlockSizes) {
        const auto soup = ReadText(bytes, blockSize);
        ASSERT_TRUE(soup);
        EXPECT_EQ(soup->normalCount, facets);
        ASSERT_EQ(soup->FacetCount(), facets);
        for (std::size_t i = 0; i < facets; ++i) {
            ASSERT_EQ(soup->corners[3 * i], Point(static_cast<float>(i), 0, 0));
            ASSERT_EQ(soup->corners[3 * i + 1], Point(1, 2, 3));
            ASSERT_EQ(soup->corners[3 * i + 2], Point(1, 1, -1));
        }
    }
}

TEST(STLText, FailsInAUsualFacetThatIsCutOff)
{
    const QByteArray whole =
        QByteArray(TextSTL().Facets(6)) + "facet normal 0 0 1\n outer loop\n vertex 1 2 3";
    ASSERT_TRUE(ReadText(whole));
    EXPECT_FALSE(ReadText(whole.left(whole.size() - 1)));
    EXPECT_FALSE(ReadText(whole.left(whole.size() - 2)));
}

namespace {

// Text with all that the rules speak of, in likely and unlikely places.
class RandomText {
public:
    explicit RandomText(unsigned seed) : m_engine(seed) {}

    QByteArray Make()
    {
        QByteArray text = Pick({"solid model\n", "solid\r\n", "", "SOLID x", "\n"});
        const std::size_t pieces = Below(60);
        const bool isTidy = Chance(50);
        for (std::size_t i = 0; i < pieces; ++i)
            text += isTidy && !Chance(3) ? Facet() : Noise();
        return Chance(20) ? text.left(static_cast<int>(Below(std::size_t(text.size()) + 1))) : text;
    }

private:
    std::size_t Below(std::size_t limit) { return m_engine() % limit; }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    QByteArray Pick(std::initializer_list<const char*> choices)
    {
        return choices.begin()[Below(choices.size())];
    }

    QByteArray Number()
    {
        if (Chance(90))
            return QByteArray::number((double(Below(2'000'000)) - 1e6) / 1000, Chance(50) ? 'f' : 'e', 6);
        return Pick({"nan", "inf", "1e400", "12345678901234567890.5", "-", "1e", "vertex", "0x1", "1.0e-30",
                     ".", "00000000000000000000001.5", "endsolid", "-0", "9007199254740993"});
    }
    QByteArray Facet()
    {
        QByteArray text =
            "  facet normal " + Number() + ' ' + Number() + ' ' + Number() + "\n    outer loop\n";
        for (int i = 0; i < 3; ++i)
            text += "      vertex " + Number() + ' ' + Number() + ' ' + Number() + '\n';
        return text + "    endloop\n  endfacet\n";
    }
    QByteArray Noise()
    {
        switch (Below(8)) {
        case 0:
            return Pick({"endsolid ", "endsolid\n", "ENDSOLID(", "endsolid x\nsolid y\n", "endsolid solid "});
        case 1:
            return QByteArray(static_cast<int>(Below(300)), Pick({"a", "1", "-", "."})[0]);
        case 2:
            return QByteArray(1, static_cast<char>(Below(256)));
        case 3:
            return Pick({"\r", "\r\n", "\n", " ", "\t\v\f", ",;", "solid", "so\rlid"});
        case 4:
            return "vertex " + Number() + ' ';
        case 5:
            return "normal" + QByteArray(1, static_cast<char>(Below(256))) + Number() + ' ' + Number();
        case 6:
            return QByteArray(static_cast<int>(Below(Chance(10) ? 12'000 : 100)), Chance(50) ? 'x' : ' ');
        default:
            return Facet();
        }
    }

    std::mt19937_64 m_engine;
};

} // namespace

TEST(STLText, ReadsRandomTextsAsALiteralReaderDoes)
{
    const test::Directory directory;
    RandomText random(11);
    std::size_t whole = 0;
    for (int i = 0; i < 20'000; ++i) {
        const QByteArray text = random.Make();
        bool isBroken = false;
        const test::LiteralSoup expected = test::LiteralReader::ReadText(directory.Write(text), isBroken);
        const std::size_t blockSize = kBlockSizes[std::size_t(i) % std::size(kBlockSizes)];
        const auto soup = ReadText(text, blockSize);
        ASSERT_EQ(soup.has_value(), !isBroken) << i << ' ' << text.toStdString();
        if (!soup)
            continue;
        ++whole;
        ASSERT_EQ(soup->normalCount, expected.normals.size()) << i << ' ' << text.toStdString();
        ASSERT_EQ(BitsOf(soup->corners.data(), soup->cornerCount),
                  BitsOf(expected.corners.data(), expected.corners.size()))
            << i << ' ' << text.toStdString();
    }
    // Both outcomes must have been seen often.
    EXPECT_GT(whole, 5'000U);
    EXPECT_LT(whole, 19'000U);
}
