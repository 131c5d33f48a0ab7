#include "fileformat/stl/STLFile.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <locale>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include <QDir>
#include <QLocale>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/mesh/Mesh.h"
#include "tests/stl/LiteralReader.h"
#include "tests/stl/STLBuilders.h"

namespace {

using test::BinarySTL;
using test::Directory;
using test::LiteralReader;
using test::Point;
using test::TextSTL;

using Points = std::vector<Point>;
using Faces = std::vector<TriangleFace>;

// Adds the twelve facets of a cube from (0, 0, 0) to (size, size, size), wound outwards.
template<class Builder>
Builder Cube(Builder builder, float size)
{
    const auto corner = [=](int i) {
        return Point((i & 1) != 0 ? size : 0, (i & 2) != 0 ? size : 0, (i & 4) != 0 ? size : 0);
    };
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4},
                             {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& quad : quads) {
        builder.Facet(corner(quad[0]), corner(quad[1]), corner(quad[2]));
        builder.Facet(corner(quad[0]), corner(quad[2]), corner(quad[3]));
    }
    return builder;
}

Mesh OneFacet()
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{7, 0, 0}, {8, 0, 0}, {7, 1, 0}}, {{0, 1, 2}});
    return mesh;
}

struct LoadOptions {
    bool isLight = false;
    int headerSize = 80;
    bool forceBinary = false;
};

bool Load(const QByteArray& bytes, Mesh& mesh, LoadOptions options = {})
{
    const Directory directory;
    return STLFile::LoadFile(directory.Write(bytes), mesh, options.isLight, options.headerSize,
                             options.forceBinary);
}

bool Loads(const QByteArray& bytes, LoadOptions options = {})
{
    Mesh mesh(0.03f);
    return Load(bytes, mesh, options);
}

int FacesIn(const QByteArray& bytes, LoadOptions options = {})
{
    Mesh mesh(0.03f);
    return Load(bytes, mesh, options) ? mesh.GetFaceNum() : -1;
}

std::string MessageOfOutOfRange(const QByteArray& bytes, Mesh& mesh)
{
    try {
        (void)Load(bytes, mesh);
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "nothing thrown";
}

int OpenFiles()
{
    return static_cast<int>(QDir(QStringLiteral("/proc/self/fd"))
                                .entryList(QDir::NoDotAndDotDot | QDir::Files | QDir::System)
                                .size());
}

QByteArray BitsOf(const Points& points)
{
    return {reinterpret_cast<const char*>(points.data()), static_cast<int>(points.size() * sizeof(Point))};
}

// What a load ends with, however it ends.
struct Outcome {
    enum class Kind { Refused, Threw, Loaded };
    Kind kind = Kind::Refused;
    Faces faces;
    QByteArray vertices;

    friend bool operator==(const Outcome& a, const Outcome& b)
    {
        return a.kind == b.kind && a.faces == b.faces && a.vertices == b.vertices;
    }
};

Outcome LoadedOutcome(const Mesh& mesh)
{
    return {Outcome::Kind::Loaded, *mesh.GetFacesVecPtr(), BitsOf(*mesh.GetVerticesVecPtr())};
}

Outcome OutcomeOfLoad(const QString& path, LoadOptions options)
{
    Mesh mesh(0.03f);
    try {
        if (!STLFile::LoadFile(path, mesh, options.isLight, options.headerSize, options.forceBinary))
            return {};
    } catch (const std::out_of_range&) {
        return {Outcome::Kind::Threw, {}, {}};
    }
    return LoadedOutcome(mesh);
}

Outcome OutcomeOfLiteralReader(const QString& path, LoadOptions options)
{
    std::optional<test::LiteralSoup> soup =
        LiteralReader::Load(path, options.headerSize, options.forceBinary);
    if (!soup)
        return {};
    Mesh mesh(0.03f);
    try {
        STLFile::StitchTriangleSoup(soup->corners, soup->normals, *mesh.GetFacesVecPtr(),
                                    *mesh.GetVerticesVecPtr());
    } catch (const std::out_of_range&) {
        return {Outcome::Kind::Threw, {}, {}};
    }
    mesh.PostProcess(false, true, false, false, nullptr, nullptr);
    return LoadedOutcome(mesh);
}

::testing::AssertionResult AgreesWithLiteralReader(const Directory& directory, const QByteArray& bytes,
                                                   LoadOptions options = {})
{
    const QString path = directory.Write(bytes);
    const Outcome expected = OutcomeOfLiteralReader(path, options);
    const Outcome outcome = OutcomeOfLoad(path, options);
    if (outcome == expected)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "ended " << int(outcome.kind) << " with " << outcome.faces.size() << " faces, expected "
           << int(expected.kind) << " with " << expected.faces.size();
}

} // namespace

TEST(STLReader, LoadsABinaryCube)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(Cube(BinarySTL(), 2), mesh));
    EXPECT_EQ(mesh.GetFaceNum(), 12);
    EXPECT_EQ(mesh.GetVertexNum(), 8);
    EXPECT_EQ(mesh.GetFacesVecPtr()->size(), 12U);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->size(), 8U);
    EXPECT_EQ((*mesh.GetVerticesVecPtr())[1], Point(0, 2, 0));
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 8);
}

TEST(STLReader, LoadsATextCube)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(Cube(TextSTL(), 2).End(), mesh));
    EXPECT_EQ(mesh.GetFaceNum(), 12);
    EXPECT_EQ(mesh.GetVertexNum(), 8);
    EXPECT_EQ((*mesh.GetVerticesVecPtr())[1], Point(0, 2, 0));
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 8);
}

TEST(STLReader, LoadsTheSameFromTextAndBinary)
{
    Mesh fromText(0.03f), fromBinary(0.03f);
    ASSERT_TRUE(Load(Cube(TextSTL(), 0.1f), fromText));
    ASSERT_TRUE(Load(Cube(BinarySTL(), 0.1f), fromBinary));
    EXPECT_EQ(*fromText.GetFacesVecPtr(), *fromBinary.GetFacesVecPtr());
    EXPECT_EQ(*fromText.GetVerticesVecPtr(), *fromBinary.GetVerticesVecPtr());
}

TEST(STLReader, LoadsTextWithCarriageReturns)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(Cube(TextSTL("\r\n"), 2).End(), mesh));
    EXPECT_EQ(mesh.GetVertexNum(), 8);
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 8);
}

TEST(STLReader, ProvidesNormalsAndNeighbours)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(Cube(BinarySTL(), 2), mesh));
    ASSERT_EQ(mesh.GetFaceNormals().size(), 12U);
    EXPECT_EQ(mesh.GetFaceNormals()[0], Point(0, 0, -1));
    EXPECT_EQ(mesh.GetVertexNormals().size(), 8U);
    ASSERT_EQ(mesh.GetFaceNeighbours().size(), 12U);
    EXPECT_EQ(mesh.GetFaceNeighbours()[0][2], 1);
}

TEST(STLReader, ProvidesNeitherWhenProcessingIsLight)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load(Cube(BinarySTL(), 2), mesh, {true, 80, false}));
    EXPECT_EQ(mesh.GetFaceNum(), 12);
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 8);
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
}

TEST(STLReader, ReplacesWhatTheMeshHeldButItsIdentity)
{
    Mesh mesh = OneFacet();
    mesh.GetTexCoordVecPtr()->assign(3, {});
    mesh.GetTextureFacesVecPtr()->assign(1, {});
    mesh.SetObjectID(5);
    mesh.SetComponentsId(6);
    mesh.SetObjectName(QStringLiteral("part"));
    Matrix4<double> transform;
    transform.set(0, 3, 9);
    mesh.SetTransformMatrix(transform);
    ASSERT_TRUE(Load(Cube(BinarySTL(), 2), mesh));
    EXPECT_EQ(mesh.GetFacesVecPtr()->size(), 12U);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->size(), 8U);
    EXPECT_TRUE(mesh.GetTexCoordVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTextureFacesVecPtr()->empty());
    EXPECT_EQ(mesh.GetObjectID(), 5);
    EXPECT_EQ(mesh.GetComponentsId(), 6);
    EXPECT_EQ(mesh.GetObjectName(), QStringLiteral("part"));
    EXPECT_EQ(mesh.GetTransformMatrix().get(0, 3), 9);
}

TEST(STLReader, LeavesTheMeshAloneWhenItFails)
{
    const QByteArray cut = QByteArray(TextSTL().Facets(3)) + "vertex 1 2";
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("soli"), cut, QByteArray(BinarySTL().Facets(3).Count(4))}) {
        Mesh mesh = OneFacet();
        mesh.GetTexCoordVecPtr()->assign(3, {});
        mesh.GetTextureFacesVecPtr()->assign(1, {});
        mesh.PostProcess(false, false, true, true, nullptr, nullptr);
        mesh.SetVolume(77);
        ASSERT_FALSE(Load(bytes, mesh));
        EXPECT_EQ(*mesh.GetFacesVecPtr(), *OneFacet().GetFacesVecPtr());
        EXPECT_EQ(*mesh.GetVerticesVecPtr(), *OneFacet().GetVerticesVecPtr());
        EXPECT_EQ(mesh.GetTexCoordVecPtr()->size(), 3U);
        EXPECT_EQ(mesh.GetTextureFacesVecPtr()->size(), 1U);
        EXPECT_EQ(mesh.GetFaceNum(), 1);
        EXPECT_EQ(mesh.GetVertexNum(), 3);
        EXPECT_EQ(mesh.GetVolume(), 77);
        EXPECT_EQ(mesh.GetFaceNormals().size(), 1U);
    }
}

TEST(STLReader, ThrowsForFewerNormalsThanFacetsAndLeavesTheMeshAlone)
{
    Mesh mesh = OneFacet();
    mesh.SetVolume(77);
    const QByteArray bytes = QByteArray(TextSTL().Facets(2)) + "vertex 100 0 0 vertex 101 0 0 vertex 100 1 0";
    EXPECT_EQ(MessageOfOutOfRange(bytes, mesh),
              "vector::_M_range_check: __n (which is 2) >= this->size() (which is 2)");
    EXPECT_EQ(*mesh.GetFacesVecPtr(), *OneFacet().GetFacesVecPtr());
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), *OneFacet().GetVerticesVecPtr());
    EXPECT_EQ(mesh.GetVolume(), 77);
}

TEST(STLReader, TakesOneNormalOffForEachFacetThatIsRemoved)
{
    Mesh mesh(0.03f);
    const QByteArray flat("normal 0 0 1 vertex 5 5 5 vertex 5 5 5 vertex 6 6 6\n");
    const QByteArray withoutNormal("vertex 100 0 0 vertex 101 0 0 vertex 100 1 0\n");
    EXPECT_EQ(FacesIn(QByteArray(TextSTL().Facets(2)) + flat), 2);
    EXPECT_EQ(MessageOfOutOfRange(QByteArray(TextSTL().Facets(2)) + flat + withoutNormal, mesh),
              "vector::_M_range_check: __n (which is 2) >= this->size() (which is 2)");
    EXPECT_EQ(FacesIn("solid\nvertex 5 5 5 vertex 5 5 5 vertex 6 6 6\n"), 0);
}

TEST(STLReader, AcceptsMoreNormalsThanFacets)
{
    EXPECT_EQ(FacesIn(QByteArray(TextSTL().Facets(2)) + "normal 0 0 1\nnormal 0 0 1\n"), 2);
}

TEST(STLReader, SucceedsWhenEveryFacetIsRemoved)
{
    Mesh mesh = OneFacet();
    ASSERT_TRUE(Load(TextSTL().Facet({1, 1, 1}, {1, 1, 1}, {2, 2, 2}), mesh));
    EXPECT_EQ(mesh.GetFaceNum(), 0);
    EXPECT_EQ(mesh.GetVertexNum(), 0);
    EXPECT_TRUE(mesh.GetFacesVecPtr()->empty());
    EXPECT_TRUE(mesh.GetVerticesVecPtr()->empty());
    EXPECT_EQ(mesh.GetVolume(), 0);
    EXPECT_EQ(FacesIn(BinarySTL().Facet({1, 1, 1}, {1, 1, 1}, {2, 2, 2})), 0);
}

TEST(STLReader, IgnoresTheNormalsOfTheFile)
{
    Mesh mesh(0.03f);
    ASSERT_TRUE(Load("solid\nfacet normal 1 0 0\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n", mesh));
    EXPECT_EQ(mesh.GetFaceNormals(), Points{Point(0, 0, 1)});
    EXPECT_EQ((*mesh.GetFacesVecPtr())[0], TriangleFace(0, 1, 2));
}

TEST(STLReader, IgnoresCornersThatMakeNoFacet)
{
    EXPECT_EQ(FacesIn(TextSTL().Facets(2).Vertex({9, 9, 9}).Vertex({8, 8, 8})), 2);
}

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

TEST(STLReader, RefusesWhatIsNoPlainFile)
{
    const Directory directory;
    Mesh mesh(0.03f);
    const QString pipe = directory.Path(QStringLiteral("pipe.stl"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path :
         {pipe, directory.Path(QStringLiteral("missing.stl")), directory.Path(QStringLiteral(".")), QString(),
          QStringLiteral("/dev/zero"), QStringLiteral("/dev/null")}) {
        EXPECT_FALSE(STLFile::LoadFile(path, mesh, false, 80, false)) << path.toStdString();
        EXPECT_FALSE(STLFile::LoadFile(path, mesh, false, 80, true)) << path.toStdString();
    }
}

TEST(STLReader, FollowsLinks)
{
    const Directory directory;
    const QString link = directory.Path(QStringLiteral("link.stl"));
    ASSERT_TRUE(QFile::link(directory.Write(BinarySTL().Facets(2)), link));
    Mesh mesh(0.03f);
    EXPECT_TRUE(STLFile::LoadFile(link, mesh, false, 80, false));
    EXPECT_EQ(mesh.GetFaceNum(), 2);
}

TEST(STLReader, ReadsUnicodeFileNames)
{
    const Directory directory;
    const QString name = QString::fromUtf8("W\xc3\xbcrfel \xe7\xab\x8b\xe6\x96\xb9 \xf0\x9f\x93\xa6.stl");
    Mesh mesh(0.03f);
    EXPECT_TRUE(STLFile::LoadFile(directory.Write(BinarySTL().Facets(2), name), mesh, false, 80, false));
    EXPECT_TRUE(STLFile::LoadFile(directory.Write(TextSTL().Facets(2), name), mesh, false, 80, false));
}

TEST(STLReader, DoesNotCareForTheExtension)
{
    const Directory directory;
    Mesh mesh(0.03f);
    EXPECT_TRUE(STLFile::LoadFile(directory.Write(BinarySTL().Facets(2), QStringLiteral("x.txt")), mesh,
                                  false, 80, false));
}

TEST(STLReader, ClosesTheFileHoweverItEnds)
{
    Mesh mesh(0.03f);
    (void)Load(BinarySTL().Facets(1), mesh);
    const int before = OpenFiles();
    ASSERT_GT(before, 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(Load(BinarySTL().Facets(1), mesh));
        EXPECT_FALSE(Load(BinarySTL().Facets(1).Count(2), mesh));
        EXPECT_FALSE(Load("solid\nvertex", mesh));
        EXPECT_THROW((void)Load("solid\nvertex 0 0 0 vertex 1 0 0 vertex 0 1 0", mesh), std::out_of_range);
    }
    EXPECT_EQ(OpenFiles(), before);
}

TEST(STLReader, LoadsWhatItSaved)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    Mesh first(0.03f), second(0.03f);
    ASSERT_TRUE(Load(Cube(BinarySTL(), 2.5f), first));
    for (const bool ascii : {true, false}) {
        ASSERT_TRUE(STLFile::SaveFile(path, first, ascii, 80));
        ASSERT_TRUE(STLFile::LoadFile(path, second, false, 80, false));
        EXPECT_EQ(*second.GetFacesVecPtr(), *first.GetFacesVecPtr());
        EXPECT_EQ(*second.GetVerticesVecPtr(), *first.GetVerticesVecPtr());
    }
    for (const int headerSize : {0, 3, 46, 1024}) {
        ASSERT_TRUE(STLFile::SaveFile(path, first, false, headerSize));
        ASSERT_TRUE(STLFile::LoadFile(path, second, false, headerSize, false)) << headerSize;
        EXPECT_EQ(*second.GetFacesVecPtr(), *first.GetFacesVecPtr());
    }
}

TEST(STLReader, LoadsALargeTextAsTheSameBinary)
{
    TextSTL text;
    BinarySTL binary;
    std::mt19937 random(3);
    std::uniform_real_distribution<float> coordinate(-100, 100);
    for (int i = 0; i < 20'000; ++i) {
        Point corners[3];
        for (Point& corner : corners)
            corner = {coordinate(random), coordinate(random), coordinate(random)};
        text.Facet(corners[0], corners[1], corners[2]);
        binary.Facet(corners[0], corners[1], corners[2]);
    }
    Mesh fromText(0.03f), fromBinary(0.03f);
    ASSERT_TRUE(Load(text, fromText));
    ASSERT_TRUE(Load(binary, fromBinary));
    EXPECT_TRUE(LoadedOutcome(fromText) == LoadedOutcome(fromBinary));
    EXPECT_EQ(fromText.GetFaceNum(), 20'000);
}

TEST(STLReaderThreads, LoadAndSaveDifferentFilesAtOnce)
{
    // Without a named time zone the C library copies the default's name again for each header that is
    // written, under a lock of its own that the thread sanitizer cannot see.
    qputenv("TZ", "UTC");
    tzset();
    const Directory directory;
    QString paths[8];
    int facets[8] = {};
    for (int i = 0; i < 8; ++i) {
        const QByteArray bytes =
            i % 2 == 0 ? QByteArray(BinarySTL().Facets(100 + i)) : QByteArray(TextSTL().Facets(100 + i));
        paths[i] = directory.Write(bytes, QStringLiteral("%1.stl").arg(i));
    }
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&paths, &facets, i] {
            for (int repeat = 0; repeat < 5; ++repeat) {
                Mesh mesh(0.03f);
                if (STLFile::LoadFile(paths[i], mesh, false, 80, false) &&
                    STLFile::SaveFile(paths[i], mesh, i % 3 == 0, 80))
                    facets[i] = static_cast<int>(mesh.GetFaceNormals().size());
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(facets[i], 100 + i);
}

TEST(STLReaderRobustness, EveryTruncationIsReadAsByTheLiteralReader)
{
    const Directory directory;
    const QByteArray samples[] = {
        Cube(BinarySTL(), 2), TextSTL().Facets(2).End().Line("solid b").Facets(1).End(),
        TextSTL("\r\n").Facets(2),
        BinarySTL().Header(QByteArray("solid x").leftJustified(80, '\n')).Facets(2)};
    for (const QByteArray& sample : samples) {
        for (int size = 0; size <= sample.size(); ++size) {
            ASSERT_TRUE(AgreesWithLiteralReader(directory, sample.left(size))) << size;
            ASSERT_TRUE(AgreesWithLiteralReader(directory, sample.left(size), {true, 80, true})) << size;
        }
    }
}

TEST(STLReaderRobustness, EveryChangedByteIsReadAsByTheLiteralReader)
{
    const Directory directory;
    const QByteArray samples[] = {BinarySTL().Facets(3),
                                  TextSTL().Facets(2).End().Line("solid b").Facets(1).End()};
    for (const QByteArray& sample : samples) {
        for (int i = 0; i < sample.size(); ++i) {
            const char byte = sample[i];
            for (const int changed :
                 {0, 0xff, byte ^ 0xff, byte ^ 0x20, byte ^ 1, int('\r'), int('\n'), int('e')}) {
                QByteArray bytes = sample;
                bytes[i] = static_cast<char>(changed);
                ASSERT_TRUE(AgreesWithLiteralReader(directory, bytes)) << i << ' ' << changed;
            }
        }
    }
}

TEST(STLReaderRobustness, RandomBinariesAreReadAsByTheLiteralReader)
{
    const Directory directory;
    std::mt19937 random(17);
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    int loaded = 0;
    for (int i = 0; i < 20'000; ++i) {
        const int headers[] = {80, 80, 80, 0, 3, 5, 200, 1024, 1025, -1};
        const int headerSize = headers[below(10)];
        BinarySTL builder;
        QByteArray header(std::max(headerSize, 0), below(4) == 0 ? ' ' : 'h');
        const char* const words[] = {
            "", "", "solid", "x\nsolid ", "solid\nvertex 1 2 3 ", "SOLID\nendsolid", "solid\n normal 1"};
        header.replace(0, 20, words[below(7)]);
        builder.Header(header.leftJustified(std::max(headerSize, 0), '\0', true));
        for (int facets = below(6); facets > 0; --facets) {
            const auto coordinate = [&] { return static_cast<float>(below(3)); };
            builder.Facet({coordinate(), coordinate(), coordinate()},
                          {coordinate(), coordinate(), coordinate()},
                          {coordinate(), coordinate(), coordinate()});
        }
        const QByteArray whole = builder;
        if (below(3) == 0)
            builder.Count(static_cast<std::uint32_t>(below(6)));
        else
            builder.Count(static_cast<std::uint32_t>((whole.size() - std::max(headerSize, 0)) / 50));
        if (below(3) == 0)
            builder.Surplus(below(60));
        if (below(3) == 0)
            builder.CutLast(below(5));
        const LoadOptions options{below(2) == 0, headerSize, below(4) == 0};
        ASSERT_TRUE(AgreesWithLiteralReader(directory, builder, options)) << i;
        loaded +=
            OutcomeOfLoad(directory.Path(QStringLiteral("model.stl")), options).kind == Outcome::Kind::Loaded;
    }
    // Both outcomes must have been seen often.
    EXPECT_GT(loaded, 4'000);
    EXPECT_LT(loaded, 16'000);
}

TEST(STLSkipWhiteSpace, FindsTheWordAndStandsBehindIt)
{
    const Directory directory;
    QFile file(directory.Write("  x Solid rest"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 1);
    EXPECT_EQ(probe, QByteArray("Solid"));
    EXPECT_EQ(file.pos(), 9);
    EXPECT_EQ(file.readAll(), QByteArray(" rest"));
}

TEST(STLSkipWhiteSpace, ContinuesAProbe)
{
    const Directory directory;
    QFile file(directory.Write("d"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe("xsoli");
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 1);
    EXPECT_EQ(probe, QByteArray("solid"));
}

TEST(STLSkipWhiteSpace, ReportsTheEndOfTheFileAndOfTheSearch)
{
    const Directory directory;
    QFile file(directory.Write("ab c" + QByteArray(20'000, 'x')));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(file.pos(), 10'241 + 1);
    EXPECT_EQ(probe, QByteArray("xxxxx"));
    ASSERT_TRUE(file.seek(file.size() - 2));
    probe.clear();
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(probe, QByteArray("xx"));
    EXPECT_TRUE(file.atEnd());
}

TEST(STLSkipWhiteSpace, WhiteSpaceEmptiesTheProbe)
{
    const Directory directory;
    QFile file(directory.Write("so \tli"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QByteArray probe("abcde");
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(probe, QByteArray("li"));
}

TEST(STLSkipWhiteSpace, ReportsAFailedRead)
{
    // A directory opens like a file at the level of the system, and no read from it succeeds.
    const Directory directory;
    const int descriptor =
        ::open(QFile::encodeName(directory.Path(QStringLiteral("."))).constData(), O_RDONLY | O_DIRECTORY);
    ASSERT_GE(descriptor, 0);
    QFile file;
    ASSERT_TRUE(
        file.open(descriptor, QIODevice::ReadOnly | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 0);
}

TEST(STLSkipWhiteSpace, EndsAtCarriageReturnsThatTextModeDrops)
{
    const Directory directory;
    QFile file(directory.Write("a\r\r"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Text));
    QByteArray probe;
    EXPECT_EQ(STLFile::skipWhiteSpace(file, probe, 5), 2);
    EXPECT_EQ(probe, QByteArray("a"));
}

TEST(STLNextToken, FillsTheBufferWithZerosAndTheToken)
{
    const Directory directory;
    QFile file(directory.Write(" ,ver.tex+1;;x"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    char buffer[16];
    std::memset(buffer, '?', sizeof buffer);
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_EQ(QByteArray(buffer, sizeof buffer), QByteArray("ver.tex+1").leftJustified(16, '\0'));
    EXPECT_EQ(file.pos(), 12);
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_STREQ(buffer, "x");
    STLFile::getNextToken(file, buffer, sizeof buffer);
    EXPECT_EQ(QByteArray(buffer, sizeof buffer), QByteArray(16, '\0'));
}

TEST(STLNextToken, CutsALongTokenOffButReadsItWhole)
{
    const Directory directory;
    QFile file(directory.Write(QByteArray(1000, 'a') + " b"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    char buffer[256];
    std::memset(buffer, '?', sizeof buffer);
    STLFile::getNextToken(file, buffer, 255);
    EXPECT_EQ(QByteArray(buffer), QByteArray(254, 'a'));
    EXPECT_EQ(buffer[255], '?');
    STLFile::getNextToken(file, buffer, 255);
    EXPECT_STREQ(buffer, "b");
}

TEST(STLNextToken, TouchesNothingWithoutABuffer)
{
    const Directory directory;
    QFile file(directory.Write("abc"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    char buffer[2] = {'?', '?'};
    STLFile::getNextToken(file, buffer, 0);
    STLFile::getNextToken(file, buffer, -3);
    EXPECT_EQ(buffer[0], '?');
    EXPECT_EQ(file.pos(), 0);
    STLFile::getNextToken(file, buffer, 1);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], '?');
}
