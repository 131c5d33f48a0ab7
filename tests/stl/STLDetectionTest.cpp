#include <algorithm>
#include <limits>
#include <locale>

#include <QLocale>

#include <gtest/gtest.h>

#include "tests/stl/LoadSupport.h"

// What is taken for text and what for binary, and what each of them may look like.

namespace {

using test::BinarySTL;
using test::Cube;
using test::Directory;
using test::FacesIn;
using test::Load;
using test::Loads;
using test::Point;
using test::TextSTL;

using Points = std::vector<Point>;

} // namespace

TEST(STLDetection, TakesSolidInAnyCaseForText)
{
    for (const char* word : {"solid", "SOLID", "Solid", "sOlId", "solidname", "solid,"})
        EXPECT_EQ(FacesIn(word + QByteArray(TextSTL().Facets(3)).mid(5)), 3) << word;
}

TEST(STLDetection, FindsSolidBehindWhiteSpace)
{
    for (const int count : {1, 2, 4, 5, 6, 100, 20'000}) {
        EXPECT_EQ(FacesIn(QByteArray(count, ' ') + TextSTL().Facets(3)), 3) << count;
        EXPECT_EQ(FacesIn(QByteArray(count, '\n') + TextSTL().Facets(3)), 3) << count;
    }
}

TEST(STLDetection, FindsSolidBehindOtherBytes)
{
    EXPECT_EQ(FacesIn("# exported\n" + QByteArray(TextSTL().Facets(3))), 3);
    EXPECT_EQ(FacesIn("xsolid model\n" + QByteArray(TextSTL().Facets(3))), 3);
    EXPECT_EQ(FacesIn(QByteArray("\0\0", 2) + TextSTL().Facets(3)), 3);
}

TEST(STLDetection, DropsAByteOrderMark)
{
    EXPECT_EQ(FacesIn("\xef\xbb\xbf" + QByteArray(TextSTL().Facets(3))), 3);
    EXPECT_EQ(FacesIn("\xef\xbb\xbf\r\n" + QByteArray(TextSTL().Facets(3))), 3);
    EXPECT_EQ(FacesIn("\xef\xbb\xbf  " + QByteArray(TextSTL().Facets(3))), 3);
}

TEST(STLDetection, GivesUpTheSearchAfter10240Bytes)
{
    const QByteArray text = TextSTL().Facets(3);
    // The first five bytes are the probe and are not counted; the last letter of the word is the one that may
    // follow.
    const QByteArray inVain = QByteArray(5 + 10'240 - 4, 'x');
    EXPECT_EQ(FacesIn(inVain + text), 3);
    EXPECT_EQ(FacesIn(inVain + "   \n" + text), 3);
    EXPECT_EQ(FacesIn(inVain + "x" + text), -1);
    EXPECT_EQ(FacesIn(inVain + "x\n" + text), -1);
}

TEST(STLDetection, ReadsABinaryFileWhoseHeaderBeginsWithSolid)
{
    const QByteArray header = QByteArray("solid exported by a modeller").leftJustified(80, ' ');
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(Cube(BinarySTL().Header(header), 2), mesh));
    EXPECT_EQ(mesh.GetVertexNum(), 8);
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 8);
}

TEST(STLDetection, ReadsABinaryFileWithSolidSomewhere)
{
    EXPECT_EQ(FacesIn(BinarySTL().Header(QByteArray("a very Solid part").leftJustified(80, '\0')).Facets(4)),
              4);
    EXPECT_EQ(FacesIn(BinarySTL()
                          .Header(QByteArray("solid\nvertex 1 2 3 vertex 4 5 6 ").leftJustified(80, ' '))
                          .Facets(4)),
              4);
}

TEST(STLDetection, FailsABinaryFileThatBreaksOffAsText)
{
    // Three numbers must follow, whatever the file is.
    EXPECT_FALSE(Loads("solid\nvertex 1 2"));
    QByteArray bytes = BinarySTL().Header(QByteArray("solid\nnormal").leftJustified(80, '\0')).Facets(1);
    ASSERT_EQ(FacesIn(bytes, {false, 80, true}), 1);
    bytes.replace(84, 50, QByteArray(50, '\0'));
    EXPECT_FALSE(Loads(bytes));
    EXPECT_EQ(FacesIn(bytes, {false, 80, true}), 0);
}

TEST(STLDetection, PrefersTextWhenThereAreThreeCorners)
{
    const QByteArray header =
        QByteArray("solid\nnormal 0 0 1 vertex 0 0 0 vertex 1 0 0 vertex 0 1 0").leftJustified(80, ' ');
    EXPECT_EQ(FacesIn(BinarySTL().Header(header).Facets(4)), 1);
    EXPECT_EQ(FacesIn(BinarySTL().Header(header).Facets(4), {false, 80, true}), 4);
}

TEST(STLDetection, RefusesTextWithFewerThanThreeCorners)
{
    EXPECT_FALSE(Loads("solid model\nendsolid model\n"));
    EXPECT_FALSE(Loads("solid model\nvertex 0 0 0 vertex 1 1 1\n" + QByteArray(100, ' ')));
}

TEST(STLDetection, RefusesFilesUnderFiveBytes)
{
    for (const char* bytes : {"", "s", "soli", "    "})
        EXPECT_FALSE(Loads(bytes)) << bytes;
    EXPECT_FALSE(Loads("solid"));
}

TEST(STLDetection, ForcedBinaryDoesNotLook)
{
    const QByteArray header = QByteArray("solid model\n").leftJustified(80, ' ');
    EXPECT_EQ(FacesIn(BinarySTL().Header(header).Facets(3), {false, 80, true}), 3);
    EXPECT_FALSE(Loads(TextSTL().Facets(30), {false, 80, true}));
    EXPECT_FALSE(Loads("abc", {false, 80, true}));
}

TEST(STLBinaryFile, AcceptsLastRecordWithoutAttributeWord)
{
    EXPECT_EQ(FacesIn(BinarySTL().Facets(3).Count(3).CutLast(2)), 3);
    EXPECT_FALSE(Loads(BinarySTL().Facets(3).Count(3).CutLast(1)));
    EXPECT_FALSE(Loads(BinarySTL().Facets(3).Count(3).CutLast(3)));
}

TEST(STLBinaryFile, RefusesALoneRecordWithoutAttributeWord)
{
    EXPECT_FALSE(Loads(BinarySTL().Facets(1).Count(1).CutLast(2)));
    EXPECT_EQ(FacesIn(BinarySTL().Facets(1)), 1);
}

TEST(STLBinaryFile, AcceptsSurplusBytesButFor48)
{
    for (int surplus = 0; surplus < 50; ++surplus)
        EXPECT_EQ(Loads(BinarySTL().Facets(2).Count(2).Surplus(surplus)), surplus != 48) << surplus;
    EXPECT_FALSE(Loads(BinarySTL().Facets(2).Count(2).Surplus(50)));
}

TEST(STLBinaryFile, RefusesACountThatDisagreesWithTheSize)
{
    for (const std::uint32_t count : {0U, 1U, 3U, 0x80000002U, 0xffffffffU, 0x7fffffffU, 715'827'882U})
        EXPECT_FALSE(Loads(BinarySTL().Facets(2).Count(count))) << count;
    EXPECT_FALSE(Loads(BinarySTL()));
}

TEST(STLBinaryFile, HonoursTheHeaderSize)
{
    for (const int size : {0, 1, 2, 3, 4, 5, 6, 79, 81, 500, 1024}) {
        const QByteArray bytes = BinarySTL().Header(QByteArray(size, 'h')).Facets(3);
        EXPECT_EQ(FacesIn(bytes, {false, size, false}), 3) << size;
        EXPECT_EQ(FacesIn(bytes, {false, size, true}), 3) << size;
    }
    EXPECT_FALSE(Loads(BinarySTL().Facets(3), {false, 84, false}));
}

TEST(STLBinaryFile, RefusesHeaderSizesBelowZeroAndAbove1024)
{
    for (const int size :
         {-1, -4, -80, 1025, 100'000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const QByteArray bytes = BinarySTL().Header(QByteArray(std::clamp(size, 0, 200'000), 'h')).Facets(3);
        EXPECT_FALSE(Loads(bytes, {false, size, false})) << size;
        EXPECT_FALSE(Loads(bytes, {false, size, true})) << size;
    }
}

TEST(STLBinaryFile, HeaderSizeDoesNotMatterInText)
{
    for (const int size : {-80, 0, 5000})
        EXPECT_EQ(FacesIn(TextSTL().Facets(3), {false, size, false}), 3);
}

TEST(STLBinaryFile, RefusesAHeaderThatIsCutShort)
{
    const QByteArray bytes = BinarySTL().Facets(1);
    for (const int size : {5, 79, 80, 83, 84})
        EXPECT_FALSE(Loads(bytes.left(size))) << size;
}

TEST(STLBinaryFile, IgnoresAttributeWordsAndNormals)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(BinarySTL().Facet({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, 0xffff), mesh));
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}));
    EXPECT_EQ(mesh.GetFaceNormals(), Points{Point(0, 0, 1)});
}

TEST(STLBinaryFile, RefusesMoreFacetsThanCanBeStitched)
{
    const Directory directory;
    const std::uint32_t count = 715'827'883;
    QFile file(directory.Write(QByteArray(BinarySTL().Count(count))));
    // A file with a hole in it: large to look at, a block on the disk.
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(84 + qint64(count) * 50));
    file.close();
    Mesh mesh(0.03f);
    EXPECT_FALSE(STLFile::LoadFile(file.fileName(), mesh, false, 80, false));
    EXPECT_FALSE(STLFile::LoadFile(file.fileName(), mesh, false, 80, true));
}

TEST(STLTextFile, ReadsAllSolidsIntoOneMesh)
{
    EXPECT_EQ(
        FacesIn(TextSTL().Facets(2).End().Line("solid b").Facet({50, 0, 0}, {51, 0, 0}, {50, 1, 0}).End()),
        3);
}

TEST(STLTextFile, IgnoresWhatFollowsTheLastSolid)
{
    EXPECT_EQ(FacesIn(TextSTL().Facets(2).End().Line("vertex 1 2").Line("normal")), 2);
}

TEST(STLTextFile, FailsWhenTheLastNumbersAreMissing)
{
    EXPECT_FALSE(Loads(TextSTL().Facets(2).Line("vertex 1 2")));
    EXPECT_FALSE(Loads(TextSTL().Facets(2).Line("facet normal 0 0")));
    EXPECT_FALSE(Loads(TextSTL().Facets(2).Line("VERTEX")));
}

TEST(STLTextFile, ReadsExponents)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(
        Load("solid\nnormal 0 0 1e+00 vertex 1.5e+01 0 0 vertex 2E1 0.0e0 0 vertex 0 -.5e-1 0", mesh));
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{15, 0, 0}, {20, 0, 0}, {0, -0.05f, 0}}));
}

TEST(STLTextFile, ReadsNumbersAlikeInEveryLocale)
{
    struct Commas : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    Mesh mesh(0.03f);
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    QLocale::setDefault(QLocale(QLocale::German));
    const bool isLoaded = Load("solid\nnormal 0 0 1 vertex 0.5 0 0 vertex 1.5 0 0 vertex 0 2.25 0", mesh);
    QLocale::setDefault(QLocale::c());
    std::locale::global(before);
    ASSERT_TRUE(isLoaded);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0.5f, 0, 0}, {1.5f, 0, 0}, {0, 2.25f, 0}}));
}
