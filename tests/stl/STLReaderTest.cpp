#include "fileformat/stl/STLFile.h"

#include <ctime>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "core/mesh/Mesh.h"
#include "tests/common/EnvironmentVariable.h"
#include "tests/common/FilledMesh.h"
#include "tests/common/OpenFiles.h"
#include "tests/common/UnreadableFile.h"
#include "tests/stl/LoadSupport.h"
#include "tests/stl/PlainStitcher.h"
#include "tests/stl/SoupBuilder.h"

namespace {

using test::BinarySTL;
using test::Cube;
using test::Directory;
using test::ExpectFilledMesh;
using test::ExpectIdentityOfFilledMesh;
using test::FacesIn;
using test::FilledMesh;
using test::Load;
using test::OpenFiles;
using test::Point;
using test::TextSTL;

using Points = std::vector<Point>;

std::string MessageOfOutOfRange(const QByteArray& bytes, Mesh& mesh)
{
    try {
        (void)Load(bytes, mesh);
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "nothing thrown";
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
    Mesh mesh = FilledMesh();
    ASSERT_TRUE(Load(Cube(BinarySTL(), 2), mesh));
    EXPECT_EQ(mesh.GetFacesVecPtr()->size(), 12U);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->size(), 8U);
    EXPECT_TRUE(mesh.GetTexCoordVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTextureFacesVecPtr()->empty());
    ExpectIdentityOfFilledMesh(mesh);
}

TEST(STLReader, LeavesTheMeshAloneWhenItFails)
{
    const QByteArray cut = QByteArray(TextSTL().Facets(3)) + "vertex 1 2";
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("soli"), cut, QByteArray(BinarySTL().Facets(3).Count(4))}) {
        Mesh mesh = FilledMesh();
        ASSERT_FALSE(Load(bytes, mesh));
        ExpectFilledMesh(mesh);
    }
}

TEST(STLReader, ThrowsForFewerNormalsThanFacetsAndLeavesTheMeshAlone)
{
    Mesh mesh = FilledMesh();
    const QByteArray bytes = QByteArray(TextSTL().Facets(2)) + "vertex 100 0 0 vertex 101 0 0 vertex 100 1 0";
    EXPECT_EQ(MessageOfOutOfRange(bytes, mesh),
              "vector::_M_range_check: __n (which is 2) >= this->size() (which is 2)");
    ExpectFilledMesh(mesh);
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
    Mesh mesh = FilledMesh();
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

// Stitching hands its own volume over; with files of every sort it must be the mesh's own to the last bit.
TEST(STLReader, StoresTheVolumeThatTheMeshCalculates)
{
    Random random(31);
    const Directory directory;
    int turned = 0, kept = 0;
    for (int i = 0; i < 1000; ++i) {
        const SoupCorners soup = RandomSoup(random);
        const QString path = directory.Path(QStringLiteral("soup.stl"));
        ASSERT_TRUE(STLFile::SaveFile(path, soup, false, 80));
        Mesh mesh(0.03f);
        ASSERT_TRUE(STLFile::LoadFile(path, mesh, true, 80, false));
        EXPECT_EQ(mesh.GetVolume(), mesh.CalcuateVolume());
        (StitchPlainly(soup, NoNormals(soup)).wasTurnedOver ? turned : kept) += 1;
    }
    EXPECT_GT(turned, 30);
    EXPECT_GT(kept, 30);
}

TEST(STLReader, IgnoresCornersThatMakeNoFacet)
{
    EXPECT_EQ(FacesIn(TextSTL().Facets(2).Vertex({9, 9, 9}).Vertex({8, 8, 8})), 2);
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

TEST(STLReader, FailsForAFileOfWhichNoByteCanBeReadAndLeavesTheMeshAlone)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("unreadable.stl"));
    ASSERT_NO_FATAL_FAILURE(test::LinkToAnUnreadableFile(path));
    for (const bool forceBinary : {false, true}) {
        Mesh mesh = FilledMesh();
        EXPECT_FALSE(STLFile::LoadFile(path, mesh, false, 80, forceBinary)) << forceBinary;
        ExpectFilledMesh(mesh);
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
    EXPECT_EQ(*fromText.GetFacesVecPtr(), *fromBinary.GetFacesVecPtr());
    EXPECT_EQ(*fromText.GetVerticesVecPtr(), *fromBinary.GetVerticesVecPtr());
    EXPECT_EQ(fromText.GetFaceNum(), 20'000);
}

TEST(STLReaderThreads, LoadAndSaveDifferentFilesAtOnce)
{
    // Without a named time zone the C library copies the default's name again for each header that is
    // written, under a lock of its own that the thread sanitizer cannot see.
    const test::EnvironmentVariable timeZone("TZ", "UTC");
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
