#include "fileformat/obj/OBJFile.h"

#include <cmath>
#include <limits>
#include <thread>

#include <QFile>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/common/FilledMesh.h"
#include "tests/common/GermanLocale.h"
#include "tests/common/OpenFiles.h"
#include "tests/common/UnreadableFile.h"
#include "tests/obj/OBJLoadSupport.h"

namespace {

using test::Directory;
using test::ExpectFilledMesh;
using test::ExpectIdentityOfFilledMesh;
using test::Faces;
using test::FilledMesh;
using test::Groups;
using test::LoadedObj;
using test::LoadObj;
using test::LoadObjFile;
using test::OpenFiles;
using test::Point;
using test::Points;
using test::TexCoord;
using test::TexCoords;
using test::VertexLines;

// A cube from (0, 0, 0) to (1, 1, 1) of quads, wound outwards.
const char kCube[] = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 0\nv 0 0 1\nv 1 0 1\nv 0 1 1\nv 1 1 1\n"
                     "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";

Points VerticesIn(const QByteArray& text)
{
    return LoadObj(text).Vertices();
}

// Faces between nine vertices.
Faces FacesOf(const QByteArray& text)
{
    return LoadObj(VertexLines(9) + text).ReadFaces();
}

Faces TextureFacesOf(const QByteArray& text)
{
    return LoadObj(VertexLines(9) + text).TextureFaces();
}

void ExpectToBeLoadedAsAnEmptyMesh(const QString& path)
{
    Mesh mesh = FilledMesh();
    Groups groups(1);
    EXPECT_TRUE(OBJFile::LoadFile(path, mesh, groups, false, 0));
    EXPECT_TRUE(mesh.GetVerticesVecPtr()->empty());
    EXPECT_TRUE(mesh.GetFacesVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTexCoordVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTextureFacesVecPtr()->empty());
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(groups.empty());
    EXPECT_EQ(mesh.GetVertexNum(), 0);
    EXPECT_EQ(mesh.GetFaceNum(), 0);
    EXPECT_EQ(mesh.GetVolume(), 0);
}

} // namespace

TEST(OBJReader, LoadsACube)
{
    const LoadedObj obj = LoadObj(kCube);
    EXPECT_EQ(obj.mesh.GetVertexNum(), 8);
    EXPECT_EQ(obj.mesh.GetFaceNum(), 12);
    EXPECT_EQ(obj.Vertices()[5], Point(1, 0, 1));
    EXPECT_EQ(obj.ReadFaces()[2], TriangleFace(4, 5, 7));
    EXPECT_EQ(obj.ReadFaces()[3], TriangleFace(4, 7, 6));
    EXPECT_DOUBLE_EQ(obj.mesh.GetVolume(), 1);
    EXPECT_TRUE(obj.groups.empty());
}

TEST(OBJReader, DividesAVertexByAFifthWord)
{
    EXPECT_EQ(VerticesIn("v 1 2 3 2\nv 1 2 3 -0.5\nv 1 2 3 1\n"),
              (Points{{0.5f, 1, 1.5f}, {-2, -4, -6}, {1, 2, 3}}));
}

TEST(OBJReader, DoesNotDivideByAFifthWordOfAMillionthOrLess)
{
    EXPECT_EQ(
        VerticesIn("v 1 2 3 0.0000001\nv 1 2 3 0.000001\nv 1 2 3 -1e-6\nv 1 2 3 0\nv 1 2 3 nan\nv 1 2 3 x\n"),
        Points(6, {1, 2, 3}));
    EXPECT_EQ(VerticesIn("v 1 2 3 0.00000100000000001\n"),
              (Points{{float(1 / 0.00000100000000001), float(2 / 0.00000100000000001),
                       float(3 / 0.00000100000000001)}}));
}

TEST(OBJReader, DividesInDoublePrecision)
{
    // As floats the first is 50331652, a third of which is nearer to 16777218.
    EXPECT_EQ(VerticesIn("v 50331651 0 0 3\n"), (Points{{16777216, 0, 0}}));
}

TEST(OBJReader, DividesByAnInfiniteFifthWord)
{
    EXPECT_EQ(VerticesIn("v 1 -2 3 inf\n"), (Points{{0, -0.0f, 0}}));
}

TEST(OBJReader, TakesWordsBeyondTheFifthForColors)
{
    EXPECT_EQ(VerticesIn("v 1 2 3 2 0 0\nv 1 2 3 2 2 2 2\n"), Points(2, {1, 2, 3}));
}

TEST(OBJReader, ReadsNumbersInEverySpelling)
{
    EXPECT_EQ(VerticesIn("v +1.5 -.5 5.\nv 1e2 1E-2 -1.25e+1\nv 00012 1e-400 -0\n"),
              (Points{{1.5f, -0.5f, 5}, {100, 0.01f, -12.5f}, {12, 0, -0.0f}}));
}

TEST(OBJReader, ReadsWhatIsNoNumberAsZero)
{
    EXPECT_EQ(VerticesIn("v 1,5 0x10 2x\nv a -- 1e\nv 1.2.3 . 1_0\n"), Points(3, {0, 0, 0}));
}

TEST(OBJReader, ReadsInfinitiesAndNotANumber)
{
    const Points points = VerticesIn("v inf -inf nan\nv 1e400 -1e39 3e38\n");
    ASSERT_EQ(points.size(), 2U);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(points[0].x, kInfinity);
    EXPECT_EQ(points[0].y, -kInfinity);
    EXPECT_TRUE(std::isnan(points[0].z));
    EXPECT_EQ(points[1], Point(kInfinity, -kInfinity, 3e38f));
}

TEST(OBJReader, RoundsThroughDoublePrecision)
{
    // Just above the middle of two floats, but not of two doubles: the middle goes to the even float.
    EXPECT_EQ(VerticesIn("v 1.00000005960464477539063 0 0\n"), (Points{{1, 0, 0}}));
}

TEST(OBJReader, TakesTextureCoordinatesAsTheyStand)
{
    EXPECT_EQ(LoadObj("vt 0.25 0.75\nvt 0.25 0.75 0\nvt -1 2 3 4 5\nvt a 1\n").ReadTexCoords(),
              (TexCoords{{0.25f, 0.75f}, {0.25f, 0.75f}, {-1, 2}, {0, 1}}));
}

TEST(OBJReader, IgnoresStatementsWithTooFewWords)
{
    const LoadedObj obj =
        LoadObj(VertexLines(3) + "v\nv 1\nv 1 2\nvt\nvt 1\nf\nf 1\nf 1 2\nusemtl\nmtllib\n");
    EXPECT_EQ(obj.Vertices().size(), 3U);
    EXPECT_TRUE(obj.ReadTexCoords().empty());
    EXPECT_TRUE(obj.ReadFaces().empty());
    EXPECT_TRUE(obj.groups.empty());
}

TEST(OBJReader, IgnoresOtherStatements)
{
    const LoadedObj obj = LoadObj("vn 1 2 3\nvp 1 2 3\no a b c\ng a b c\ns 1 2 3\nl 1 2 3\np 1 2 3\n"
                                  "call a.obj 1 2\nend\nshow me what\nv1 2 3 4\nf1 2 3 4\n");
    EXPECT_TRUE(obj.Vertices().empty());
    EXPECT_TRUE(obj.ReadFaces().empty());
}

TEST(OBJReader, TellsKeywordsByTheirExactLetters)
{
    const LoadedObj obj =
        LoadObj("V 1 2 3\nVT 1 2\nvT 1 2\nF 1 1 1\nUSEMTL a\nUsemtl a\nvtt 1 2 3\nusemtll a\n");
    EXPECT_TRUE(obj.Vertices().empty());
    EXPECT_TRUE(obj.ReadTexCoords().empty());
    EXPECT_TRUE(obj.groups.empty());
}

TEST(OBJReader, ReadsStatementsBehindBlanks)
{
    EXPECT_EQ(VerticesIn("   v 1 2 3\n v   4  5 6   \n"), (Points{{1, 2, 3}, {4, 5, 6}}));
}

TEST(OBJReader, FansPolygonsAroundTheirFirstCorner)
{
    EXPECT_EQ(FacesOf("f 1 2 3\n"), (Faces{{0, 1, 2}}));
    EXPECT_EQ(FacesOf("f 1 2 3 4\n"), (Faces{{0, 1, 2}, {0, 2, 3}}));
    EXPECT_EQ(FacesOf("f 5 4 3 2 1\n"), (Faces{{4, 3, 2}, {4, 2, 1}, {4, 1, 0}}));
}

TEST(OBJReader, TakesTheVertexPartOfEveryCorner)
{
    for (const char* const face : {"f 1/1 2/2 3/3\n", "f 1//1 2//2 3//3\n", "f 1/1/1 2/2/2 3/3/3\n",
                                   "f 1/ 2// 3/4/5/6\n", "f 1///9 2/x +3\n"})
        EXPECT_EQ(FacesOf(face), (Faces{{0, 1, 2}})) << face;
}

TEST(OBJReader, MakesTextureFacesOfTheTextureParts)
{
    EXPECT_EQ(TextureFacesOf("f 1/4 2/5 3/6\n"), (Faces{{3, 4, 5}}));
    EXPECT_EQ(TextureFacesOf("f 1/4/7 2/5/8 3/6/9 4/1/1\n"), (Faces{{3, 4, 5}, {3, 5, 0}}));
}

TEST(OBJReader, MakesNoTextureFacesWithoutTextureParts)
{
    EXPECT_EQ(TextureFacesOf("f 1 2 3\nf 1//1 2//2 3//3\n"), Faces());
}

TEST(OBJReader, MakesTextureFacesOfTheCornersThatHaveATexturePart)
{
    EXPECT_EQ(TextureFacesOf("f 1/1 2 3/3 4//9 5/5\n"), (Faces{{0, 2, 4}}));
    EXPECT_EQ(TextureFacesOf("f 1/1 2 3/3 4\n"), Faces());
    EXPECT_EQ(FacesOf("f 1/1 2 3/3 4\n"), (Faces{{0, 1, 2}, {0, 2, 3}}));
}

TEST(OBJReader, TakesAnEmptyTexturePartForNoNumber)
{
    EXPECT_EQ(TextureFacesOf("f 1/ 2/5 3/\n"), (Faces{{-1, 4, -1}}));
}

// With two slashes together anywhere the corner is split there and nowhere else.
TEST(OBJReader, SplitsACornerAtDoubleSlashesFirst)
{
    EXPECT_EQ(FacesOf("f 1/2//3 2 3\nf 1 2//3/4 3\nf //1 2 3\nf /// 2 3\nf / 2 3\n"), (Faces{{0, 1, 2}}));
    EXPECT_EQ(TextureFacesOf("f 1/2//3 2/3//4 3/4//5\n"), Faces());
    EXPECT_EQ(TextureFacesOf("f /1 /2 /3\n"), (Faces{{0, 1, 2}}));
}

TEST(OBJReader, DropsFacesWithoutAVertexForEveryCorner)
{
    EXPECT_EQ(FacesOf("f 1 2 10\nf 0 1 2\nf -1 -2 -3\nf 7 8 9\nf 1 2 x\nf 1.5 2 3\nf 1e0 2 3\n"
                      "f 2147483647 1 2\nf -2147483648 1 2\nf 2147483648 1 2\nf 99999999999999999999 1 2\n"),
              (Faces{{6, 7, 8}}));
}

TEST(OBJReader, DropsTrianglesOfAPolygonOneByOne)
{
    EXPECT_EQ(FacesOf("f 1 2 3 99 4 5\n"), (Faces{{0, 1, 2}, {0, 3, 4}}));
}

TEST(OBJReader, KeepsFacesThatNameAVertexTwice)
{
    EXPECT_EQ(FacesOf("f 1 1 1\nf 1 2 1\n"), (Faces{{0, 0, 0}, {0, 1, 0}}));
}

TEST(OBJReader, ReadsIndicesWithSignsAndZeros)
{
    EXPECT_EQ(FacesOf("f +1 002 00000000000000000003\n"), (Faces{{0, 1, 2}}));
}

TEST(OBJReader, AllowsFacesBeforeTheirVertices)
{
    EXPECT_EQ(LoadObj("f 1 2 3\n" + VertexLines(3)).ReadFaces(), (Faces{{0, 1, 2}}));
}

TEST(OBJReader, DoesNotCheckTextureFaces)
{
    EXPECT_EQ(TextureFacesOf("f 1/0 2/-1 3/99\nf 1/x 2/2147483647 3/-2147483648\n"),
              (Faces{{-1, -2, 98}, {-1, 2147483646, std::numeric_limits<int>::min()}}));
}

TEST(OBJReader, KeepsTheTextureFacesOfFacesThatAreDropped)
{
    const LoadedObj obj = LoadObj(VertexLines(3) + "f 1/1 2/2 9/3\nf 1/1 3/3 2/2\n");
    EXPECT_EQ(obj.ReadFaces(), (Faces{{0, 2, 1}}));
    EXPECT_EQ(obj.TextureFaces(), (Faces{{0, 1, 2}, {0, 2, 1}}));
}

TEST(OBJReader, ProvidesNormalsAndNeighbours)
{
    const LoadedObj obj = LoadObj(kCube);
    ASSERT_EQ(obj.mesh.GetFaceNormals().size(), 12U);
    EXPECT_EQ(obj.mesh.GetFaceNormals()[0], Point(0, 0, -1));
    EXPECT_EQ(obj.mesh.GetVertexNormals().size(), 8U);
    ASSERT_EQ(obj.mesh.GetFaceNeighbours().size(), 12U);
    EXPECT_EQ(obj.mesh.GetFaceNeighbours()[0][2], 1);
}

TEST(OBJReader, ProvidesNeitherWhenTheFlagsAreCleared)
{
    const Directory directory;
    Mesh mesh = FilledMesh();
    Groups groups;
    ASSERT_TRUE(OBJFile::LoadFile(directory.Write(kCube), mesh, groups, true, 0));
    EXPECT_EQ(mesh.GetFaceNum(), 12);
    EXPECT_DOUBLE_EQ(mesh.GetVolume(), 1);
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
}

TEST(OBJReader, ReplacesWhatTheMeshHeldButItsIdentity)
{
    const Directory directory;
    Mesh mesh = FilledMesh();
    Groups groups(3);
    ASSERT_TRUE(OBJFile::LoadFile(directory.Write(kCube + QByteArray("usemtl a\n")), mesh, groups, false, 0));
    EXPECT_EQ(mesh.GetVerticesVecPtr()->size(), 8U);
    EXPECT_EQ(mesh.GetFacesVecPtr()->size(), 12U);
    EXPECT_TRUE(mesh.GetTexCoordVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTextureFacesVecPtr()->empty());
    EXPECT_EQ(mesh.GetFaceNormals().size(), 12U);
    EXPECT_EQ(groups.size(), 1U);
    ExpectIdentityOfFilledMesh(mesh);
}

TEST(OBJReader, EmptiesTheMeshForAFileWithoutStatements)
{
    const Directory directory;
    for (const char* const text : {"", "\n", "# nothing\n", "\xFF\xD8\xFF\xE0", "\\"}) {
        SCOPED_TRACE(text);
        ExpectToBeLoadedAsAnEmptyMesh(directory.Write(text));
    }
}

TEST(OBJReader, EmptiesTheMeshForAFileOfWhichNoByteCanBeRead)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("unreadable.obj"));
    ASSERT_NO_FATAL_FAILURE(test::LinkToAnUnreadableFile(path));
    ExpectToBeLoadedAsAnEmptyMesh(path);
}

TEST(OBJReader, LeavesTheMeshAloneButEmptiesTheGroupsWhenItFails)
{
    const Directory directory;
    Mesh mesh = FilledMesh();
    Groups groups(2);
    EXPECT_FALSE(OBJFile::LoadFile(directory.Path(QStringLiteral("missing.obj")), mesh, groups, true, 0));
    EXPECT_TRUE(groups.empty());
    ExpectFilledMesh(mesh);
}

TEST(OBJReader, RefusesWhatIsNoPlainFile)
{
    const Directory directory;
    const QString pipe = directory.Path(QStringLiteral("pipe.obj"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path :
         {pipe, directory.Path(QStringLiteral("missing.obj")), directory.Path(QStringLiteral(".")), QString(),
          QStringLiteral("/dev/zero"), QStringLiteral("/dev/null")}) {
        Mesh mesh = FilledMesh();
        Groups groups(1);
        EXPECT_FALSE(OBJFile::LoadFile(path, mesh, groups, false, 0)) << path.toStdString();
        EXPECT_TRUE(groups.empty());
        EXPECT_EQ(mesh.GetFaceNum(), 1);
    }
}

TEST(OBJReader, FollowsLinks)
{
    const Directory directory;
    const QString link = directory.Path(QStringLiteral("link.obj"));
    ASSERT_TRUE(QFile::link(directory.Write(kCube), link));
    EXPECT_EQ(LoadObjFile(link).mesh.GetFaceNum(), 12);
}

TEST(OBJReader, ReadsUnicodeFileNames)
{
    const Directory directory;
    const QString name = QString::fromUtf8("W\xc3\xbcrfel \xe7\xab\x8b\xe6\x96\xb9 \xf0\x9f\x93\xa6.obj");
    EXPECT_EQ(LoadObjFile(directory.Write(kCube, name)).mesh.GetFaceNum(), 12);
}

TEST(OBJReader, DoesNotCareForTheExtension)
{
    const Directory directory;
    EXPECT_EQ(LoadObjFile(directory.Write(kCube, QStringLiteral("cube.stl"))).mesh.GetFaceNum(), 12);
}

TEST(OBJReader, ClosesItsFiles)
{
    const QByteArray text = QByteArray("mtllib lib.mtl\nmtllib missing.mtl\nmtllib lib.mtl\n") + kCube;
    (void)LoadObj(text, "newmtl a\n");
    const int before = OpenFiles();
    ASSERT_GT(before, 0);
    for (int i = 0; i < 3; ++i)
        (void)LoadObj(text, "newmtl a\n");
    EXPECT_EQ(OpenFiles(), before);
}

TEST(OBJReader, GivesTheSameTwice)
{
    const Directory directory;
    const QString path = directory.Write(kCube + QByteArray("usemtl a\nf 1/1 2/2 3/3\n"));
    Mesh mesh(0.03f);
    Groups groups;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(OBJFile::LoadFile(path, mesh, groups, false, 0));
        EXPECT_EQ(mesh.GetVertexNum(), 8);
        EXPECT_EQ(mesh.GetFaceNum(), 13);
        EXPECT_EQ(mesh.GetTextureFacesVecPtr()->size(), 1U);
        ASSERT_EQ(groups.size(), 1U);
        EXPECT_EQ(groups[0].faceCount, 1);
    }
}

TEST(OBJReader, ReadsAPolygonOfManyCorners)
{
    QByteArray polygon("f");
    for (int i = 1; i <= 100'000; ++i)
        polygon += " " + QByteArray::number(i);
    const Faces faces = LoadObj(VertexLines(100'000) + polygon).ReadFaces();
    ASSERT_EQ(faces.size(), 99'998U);
    EXPECT_EQ(faces.back(), TriangleFace(0, 99'998, 99'999));
}

TEST(OBJReader, ReadsAPointUnderAnyCLocale)
{
    const test::GermanLocale locale;
    EXPECT_EQ(VerticesIn("v 1.5 2,5 -0.25\n"), (Points{{1.5f, 0, -0.25f}}));
    EXPECT_EQ(test::LoadMtl("newmtl a\nNs 1.5\nNi 2,5\n")[0].specularExponent, 1.5f);
}

TEST(OBJReaderThreads, LoadDifferentFilesAtOnce)
{
    const Directory directory;
    QString paths[8];
    for (int i = 0; i < 8; ++i) {
        const QByteArray number = QByteArray::number(i);
        (void)directory.Write("newmtl a\nillum " + number + "\n", QStringLiteral("%1.mtl").arg(i));
        paths[i] = directory.Write("mtllib " + number + ".mtl\n" + VertexLines(100 + i) + "usemtl a\n" +
                                       QByteArray("f 1 2 3\n").repeated(200 + i),
                                   QStringLiteral("%1.obj").arg(i));
    }
    std::size_t normals[8] = {};
    int illum[8] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&paths, &normals, &illum, i] {
            for (int repeat = 0; repeat < 5; ++repeat) {
                const LoadedObj obj = LoadObjFile(paths[i]);
                normals[i] = obj.mesh.GetVertexNormals().size() * 1000 + obj.mesh.GetFaceNormals().size();
                illum[i] = obj.groups.size() == 1 ? obj.groups[0].material.illum : -1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(normals[i], std::size_t(100 + i) * 1000 + std::size_t(200 + i));
        EXPECT_EQ(illum[i], i);
    }
}
