#include <limits>
#include <locale>
#include <stdexcept>
#include <string>
#include <thread>

#include <QDir>
#include <QTextStream>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/common/Directory.h"
#include "tests/common/OpenFiles.h"

namespace {

using test::Directory;
using Point = Vector3D<float>;
using MeshList = std::vector<const Mesh*>;

const QByteArray kHeader = "# OBJ Model File\n"
                           "# Exported by Loftmaren\n"
                           "# File units = millimeters\n"
                           "\n"
                           "g Mesh1\n"
                           "\n";

/// A right-angled triangle in the plane z = 0, facing up, with a texture coordinate for each corner.
Mesh Triangle(float x = 0)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0}}, {{0, 1, 2}});
    *mesh.GetTexCoordVecPtr() = {{0, 0}, {1, 0}, {0, 0.5f}};
    *mesh.GetTextureFacesVecPtr() = {{0, 1, 2}};
    return mesh;
}

/// Two triangles of a square that share an edge, with the numbers of neither list in order of use.
Mesh Square()
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}, {{3, 0, 1}, {3, 1, 2}});
    *mesh.GetTexCoordVecPtr() = {{0, 0}, {0.25f, 0}, {0.25f, 0.75f}};
    *mesh.GetTextureFacesVecPtr() = {{2, 0, 1}, {2, 1, 0}};
    return mesh;
}

QByteArray FileOf(const MeshList& meshes, const std::vector<bool>& flags, bool withNormals)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.obj"));
    EXPECT_TRUE(OBJFile::SaveFile(path, meshes, flags, withNormals));
    return Directory::Read(path);
}

/// What follows the header of the file of one mesh.
QByteArray BodyOf(const Mesh& mesh, bool textured = false, bool withNormals = false)
{
    const QByteArray bytes = FileOf({&mesh}, {textured}, withNormals);
    EXPECT_TRUE(bytes.startsWith(kHeader));
    return bytes.mid(kHeader.size());
}

QByteArray BodyOf(const MeshList& meshes, const std::vector<bool>& flags, bool withNormals = false)
{
    return FileOf(meshes, flags, withNormals).mid(kHeader.size());
}

/// The file that an exception leaves behind, and what the exception says.
struct BrokenFile {
    QByteArray body;
    std::string message;
};

BrokenFile BrokenFileOf(const MeshList& meshes, const std::vector<bool>& flags, bool withNormals = true)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.obj"));
    BrokenFile result;
    try {
        (void)OBJFile::SaveFile(path, meshes, flags, withNormals);
    } catch (const std::out_of_range& error) {
        result.message = error.what();
    }
    result.body = Directory::Read(path).mid(kHeader.size());
    return result;
}

std::string OutOfRange(const std::string& index, std::size_t size)
{
    return "vector::_M_range_check: __n (which is " + index + ") >= this->size() (which is " +
           std::to_string(size) + ")";
}

const std::string kMinusOne = "18446744073709551615";

} // namespace

TEST(OBJWriter, WritesHeaderVerticesAndFaces)
{
    const Mesh mesh = Triangle();
    EXPECT_EQ(FileOf({&mesh}, {false}, false), kHeader + "v 0.000000 0.000000 0.000000\n"
                                                         "v 1.000000 0.000000 0.000000\n"
                                                         "v 0.000000 1.000000 0.000000\n"
                                                         "\n"
                                                         "\n"
                                                         "f 1 2 3\n");
}

TEST(OBJWriter, WritesTextureCoordinates)
{
    EXPECT_EQ(BodyOf(Triangle(), true), "v 0.000000 0.000000 0.000000\n"
                                        "v 1.000000 0.000000 0.000000\n"
                                        "v 0.000000 1.000000 0.000000\n"
                                        "\n"
                                        "vt 0.000000 0.000000\n"
                                        "vt 1.000000 0.000000\n"
                                        "vt 0.000000 0.500000\n"
                                        "\n"
                                        "f 1/1 2/2 3/3\n");
}

TEST(OBJWriter, WritesFaceNormals)
{
    EXPECT_EQ(BodyOf(Triangle(), false, true), "v 0.000000 0.000000 0.000000\n"
                                               "v 1.000000 0.000000 0.000000\n"
                                               "v 0.000000 1.000000 0.000000\n"
                                               "\n"
                                               "\n"
                                               "vn 0.000000 0.000000 1.000000\n"
                                               "\n"
                                               "f 1//1 2//1 3//1\n");
}

TEST(OBJWriter, WritesTextureCoordinatesAndFaceNormals)
{
    EXPECT_EQ(BodyOf(Triangle(), true, true), "v 0.000000 0.000000 0.000000\n"
                                              "v 1.000000 0.000000 0.000000\n"
                                              "v 0.000000 1.000000 0.000000\n"
                                              "\n"
                                              "vt 0.000000 0.000000\n"
                                              "vt 1.000000 0.000000\n"
                                              "vt 0.000000 0.500000\n"
                                              "\n"
                                              "vn 0.000000 0.000000 1.000000\n"
                                              "\n"
                                              "f 1/1/1 2/2/1 3/3/1\n");
}

TEST(OBJWriter, NumbersSharedVerticesInTheOrderOfTheirFirstUse)
{
    EXPECT_EQ(BodyOf(Square(), true, true), "v 0.000000 2.000000 0.000000\n"
                                            "v 0.000000 0.000000 0.000000\n"
                                            "v 2.000000 0.000000 0.000000\n"
                                            "v 2.000000 2.000000 0.000000\n"
                                            "\n"
                                            "vt 0.250000 0.750000\n"
                                            "vt 0.000000 0.000000\n"
                                            "vt 0.250000 0.000000\n"
                                            "\n"
                                            "vn 0.000000 0.000000 1.000000\n"
                                            "vn 0.000000 0.000000 1.000000\n"
                                            "\n"
                                            "f 1/1/1 2/2/1 3/3/1\n"
                                            "f 1/1/2 3/3/2 4/2/2\n");
}

TEST(OBJWriter, LeavesOutVerticesThatNoFaceUses)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{9, 9, 9}, {0, 0, 1}, {9, 9, 9}, {0, 1, 0}, {1, 0, 0}, {9, 9, 9}}, {{4, 1, 3}});
    EXPECT_EQ(BodyOf(mesh), "v 1.000000 0.000000 0.000000\n"
                            "v 0.000000 0.000000 1.000000\n"
                            "v 0.000000 1.000000 0.000000\n"
                            "\n\n"
                            "f 1 2 3\n");
}

TEST(OBJWriter, LeavesOutTextureCoordinatesThatNoTextureFaceUses)
{
    Mesh mesh = Triangle();
    *mesh.GetTexCoordVecPtr() = {{9, 9}, {0.5f, 1}, {9, 9}};
    *mesh.GetTextureFacesVecPtr() = {{1, 1, 1}};
    EXPECT_EQ(BodyOf(mesh, true).mid(3 * 29), "\nvt 0.500000 1.000000\n\nf 1/1 2/1 3/1\n");
}

TEST(OBJWriter, KeepsVerticesInTheSamePlaceApart)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{1, 0, 0}, {1, 0, 0}, {1, 0, 0}}, {{0, 1, 2}});
    const QByteArray line = "v 1.000000 0.000000 0.000000\n";
    EXPECT_EQ(BodyOf(mesh), line + line + line + "\n\nf 1 2 3\n");
}

TEST(OBJWriter, ContinuesAllNumbersFromMeshToMesh)
{
    const Mesh first = Square(), second = Triangle(5);
    EXPECT_EQ(BodyOf({&first, &second}, {true, true}, true), "v 0.000000 2.000000 0.000000\n"
                                                             "v 0.000000 0.000000 0.000000\n"
                                                             "v 2.000000 0.000000 0.000000\n"
                                                             "v 2.000000 2.000000 0.000000\n"
                                                             "v 5.000000 0.000000 0.000000\n"
                                                             "v 6.000000 0.000000 0.000000\n"
                                                             "v 5.000000 1.000000 0.000000\n"
                                                             "\n"
                                                             "vt 0.250000 0.750000\n"
                                                             "vt 0.000000 0.000000\n"
                                                             "vt 0.250000 0.000000\n"
                                                             "vt 0.000000 0.000000\n"
                                                             "vt 1.000000 0.000000\n"
                                                             "vt 0.000000 0.500000\n"
                                                             "\n"
                                                             "vn 0.000000 0.000000 1.000000\n"
                                                             "vn 0.000000 0.000000 1.000000\n"
                                                             "vn 0.000000 0.000000 1.000000\n"
                                                             "\n"
                                                             "f 1/1/1 2/2/1 3/3/1\n"
                                                             "f 1/1/2 3/3/2 4/2/2\n"
                                                             "f 5/4/3 6/5/3 7/6/3\n");
}

TEST(OBJWriter, WritesAMeshTwiceThatIsListedTwice)
{
    const Mesh mesh = Triangle();
    const QByteArray vertices = "v 0.000000 0.000000 0.000000\n"
                                "v 1.000000 0.000000 0.000000\n"
                                "v 0.000000 1.000000 0.000000\n";
    EXPECT_EQ(BodyOf({&mesh, &mesh}, {false, false}), vertices + vertices + "\n\nf 1 2 3\nf 4 5 6\n");
}

TEST(OBJWriter, WritesOneGroupHoweverManyMeshes)
{
    const Mesh mesh = Triangle();
    const QByteArray bytes = FileOf({&mesh, &mesh, &mesh}, {false, false, false}, false);
    EXPECT_EQ(bytes.count("g "), 1);
    EXPECT_EQ(bytes.indexOf("\ng Mesh1\n\nv "), bytes.indexOf("\ng "));
    EXPECT_FALSE(bytes.contains("mtl"));
}

TEST(OBJWriter, PassesOverAMeshWithoutFaces)
{
    const Mesh first = Triangle(), last = Triangle(5);
    Mesh loose = Triangle(9);
    loose.GetFacesVecPtr()->clear();
    loose.GetTextureFacesVecPtr()->clear();
    loose.SetFaceNum(0);
    EXPECT_EQ(BodyOf({&first, &loose, &last}, {true, true, true}, true),
              BodyOf({&first, &last}, {true, true}, true));
}

TEST(OBJWriter, PassesOverANegativeFaceCount)
{
    Mesh mesh = Triangle();
    mesh.SetFaceNum(-1);
    EXPECT_EQ(BodyOf(mesh, true, true), "\n\n\n");
}

TEST(OBJWriter, WritesTheBlankLinesAloneForNoMeshes)
{
    EXPECT_EQ(FileOf({}, {}, false), kHeader + "\n\n");
    EXPECT_EQ(FileOf({}, {}, true), kHeader + "\n\n\n");
}

TEST(OBJWriter, WritesAMeshUntexturedWhoseTextureFacesDoNotMatchItsFaces)
{
    for (const std::size_t textureFaceCount : {0U, 1U, 3U}) {
        Mesh mesh = Square();
        const QByteArray plain = BodyOf(mesh), withNormals = BodyOf(mesh, false, true);
        mesh.GetTextureFacesVecPtr()->resize(textureFaceCount);
        EXPECT_EQ(BodyOf(mesh, true), plain) << textureFaceCount;
        EXPECT_EQ(BodyOf(mesh, true, true), withNormals) << textureFaceCount;
        EXPECT_TRUE(withNormals.endsWith("f 1//1 2//1 3//1\nf 1//2 3//2 4//2\n"));
    }
}

TEST(OBJWriter, NumbersTextureCoordinatesOfTexturedMeshesAlone)
{
    const Mesh mesh = Triangle();
    Mesh unmatched = Triangle();
    unmatched.GetTextureFacesVecPtr()->clear();
    const QByteArray body = BodyOf({&mesh, &unmatched, &mesh, &mesh}, {true, true, false, true});
    EXPECT_EQ(body.count("vt "), 6);
    EXPECT_TRUE(body.endsWith("\n\nf 1/1 2/2 3/3\nf 4 5 6\nf 7 8 9\nf 10/4 11/5 12/6\n"))
        << body.toStdString();
}

TEST(OBJWriter, TakesAMissingFlagForFalseAndIgnoresFurtherOnes)
{
    const Mesh mesh = Triangle();
    EXPECT_EQ(BodyOf({&mesh, &mesh}, {true}), BodyOf({&mesh, &mesh}, {true, false}));
    EXPECT_EQ(BodyOf({&mesh, &mesh}, {}), BodyOf({&mesh, &mesh}, {false, false}));
    EXPECT_EQ(BodyOf({&mesh}, {false, true}), BodyOf({&mesh}, {false}));
}

TEST(OBJWriter, LetsNormalsFollowTheCornersNotTheMesh)
{
    Mesh mesh = Triangle();
    Point sideways(1, 0, 0);
    const std::vector<Point*> normals(3, &sideways);
    mesh.PostProcess(false, false, true, false, &normals, nullptr);
    ASSERT_EQ(mesh.GetVertexNormals()[0], sideways);
    EXPECT_TRUE(BodyOf(mesh, false, true).contains("\nvn 0.000000 0.000000 1.000000\n"));
    *mesh.GetFacesVecPtr() = {{0, 2, 1}};
    EXPECT_TRUE(BodyOf(mesh, false, true).contains("\nvn 0.000000 0.000000 -1.000000\n"));
}

TEST(OBJWriter, WritesAZeroNormalForAFaceWithoutArea)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{1, 1, 1}, {2, 2, 2}, {0, 0, 1}}, {{0, 0, 1}, {0, 1, 2}});
    EXPECT_TRUE(BodyOf(mesh, false, true)
                    .endsWith("\n\n\n"
                              "vn 0.000000 0.000000 0.000000\n"
                              "vn 0.707107 -0.707107 0.000000\n"
                              "\n"
                              "f 1//1 1//1 2//1\n"
                              "f 1//2 2//2 3//2\n"));
}

TEST(OBJWriter, WritesSixFixedDecimalsWhateverTheSize)
{
    Mesh mesh(0.03f);
    const float infinity = std::numeric_limits<float>::infinity();
    mesh.AddVertexAndFaces({{0, -1.25f, 10},
                            {1e-9f, -1e-9f, -0.0f},
                            {3.4e38f, 1234567.8f, 0.0078125f},
                            {NAN, infinity, -infinity}},
                           {{0, 1, 2}, {3, 3, 3}});
    *mesh.GetTexCoordVecPtr() = {{-1e-9f, 1e10f}};
    *mesh.GetTextureFacesVecPtr() = {{0, 0, 0}, {0, 0, 0}};
    EXPECT_EQ(BodyOf(mesh, true), "v 0.000000 -1.250000 10.000000\n"
                                  "v 0.000000 -0.000000 0.000000\n"
                                  "v 339999995214436424907732413799364296704.000000 1234567.750000 0.007813\n"
                                  "v nan inf -inf\n"
                                  "\n"
                                  "vt -0.000000 10000000000.000000\n"
                                  "\n"
                                  "f 1/1 2/1 3/1\n"
                                  "f 4/1 4/1 4/1\n");
}

TEST(OBJWriter, AppliesNoTransform)
{
    Mesh mesh = Triangle();
    const QByteArray expected = BodyOf(mesh);
    Matrix4<double> transform;
    transform.set(0, 3, 100);
    mesh.SetTransformMatrix(transform);
    EXPECT_EQ(BodyOf(mesh), expected);
}

TEST(OBJWriter, WalksTheFaceCountNotTheFaceList)
{
    Mesh mesh = Square();
    mesh.GetTextureFacesVecPtr()->pop_back();
    mesh.SetFaceNum(1);
    EXPECT_EQ(BodyOf(mesh, true, true), "v 0.000000 2.000000 0.000000\n"
                                        "v 0.000000 0.000000 0.000000\n"
                                        "v 2.000000 0.000000 0.000000\n"
                                        "\n"
                                        "vt 0.250000 0.750000\n"
                                        "vt 0.000000 0.000000\n"
                                        "vt 0.250000 0.000000\n"
                                        "\n"
                                        "vn 0.000000 0.000000 1.000000\n"
                                        "\n"
                                        "f 1/1/1 2/2/1 3/3/1\n");
}

TEST(OBJWriter, ThrowsForAnIndexBeyondTheVerticesAndLeavesTheLinesBefore)
{
    const Mesh first = Triangle();
    Mesh second = Square();
    (*second.GetFacesVecPtr())[1][2] = 4;
    const BrokenFile broken = BrokenFileOf({&first, &second, &first}, {true, true, true});
    EXPECT_EQ(broken.message, OutOfRange("4", 4));
    EXPECT_EQ(broken.body, "v 0.000000 0.000000 0.000000\n"
                           "v 1.000000 0.000000 0.000000\n"
                           "v 0.000000 1.000000 0.000000\n"
                           "v 0.000000 2.000000 0.000000\n"
                           "v 0.000000 0.000000 0.000000\n"
                           "v 2.000000 0.000000 0.000000\n");
}

TEST(OBJWriter, ThrowsForANegativeIndex)
{
    Mesh mesh = Triangle();
    (*mesh.GetFacesVecPtr())[0][1] = -1;
    const BrokenFile broken = BrokenFileOf({&mesh}, {false});
    EXPECT_EQ(broken.message, OutOfRange(kMinusOne, 3));
    EXPECT_EQ(broken.body, "v 0.000000 0.000000 0.000000\n");
    (*mesh.GetFacesVecPtr())[0][1] = std::numeric_limits<int>::min();
    EXPECT_EQ(BrokenFileOf({&mesh}, {false}).message, OutOfRange("18446744071562067968", 3));
}

TEST(OBJWriter, TakesANegativeIndexForNoVertexOfTheMeshBefore)
{
    const Mesh first = Triangle();
    Mesh second = Triangle();
    *second.GetFacesVecPtr() = {{-1, -2, -3}};
    const BrokenFile broken = BrokenFileOf({&first, &second}, {false, false});
    EXPECT_EQ(broken.message, OutOfRange(kMinusOne, 3));
    EXPECT_EQ(broken.body.count("v "), 3);
}

TEST(OBJWriter, ThrowsForAnIndexBeyondTheTextureCoordinatesAndLeavesTheLinesBefore)
{
    Mesh mesh = Triangle();
    for (const int index : {-1, 3}) {
        (*mesh.GetTextureFacesVecPtr())[0][2] = index;
        const BrokenFile broken = BrokenFileOf({&mesh}, {true});
        EXPECT_EQ(broken.message, OutOfRange(index < 0 ? kMinusOne : "3", 3));
        EXPECT_EQ(broken.body, "v 0.000000 0.000000 0.000000\n"
                               "v 1.000000 0.000000 0.000000\n"
                               "v 0.000000 1.000000 0.000000\n"
                               "\n"
                               "vt 0.000000 0.000000\n"
                               "vt 1.000000 0.000000\n");
    }
}

TEST(OBJWriter, LooksAtNoTextureFacesThatItDoesNotWrite)
{
    Mesh mesh = Triangle();
    const QByteArray expected = BodyOf(mesh);
    *mesh.GetTextureFacesVecPtr() = {{-5, 99, 7}};
    EXPECT_EQ(BodyOf(mesh, false), expected);
    mesh.GetTextureFacesVecPtr()->resize(2);
    EXPECT_EQ(BodyOf(mesh, true), expected);
}

TEST(OBJWriter, ThrowsForACountBeyondTheFacesAndLeavesTheirVertices)
{
    Mesh mesh = Triangle();
    mesh.SetFaceNum(2);
    const BrokenFile broken = BrokenFileOf({&mesh}, {true});
    EXPECT_EQ(broken.message, OutOfRange("1", 1));
    EXPECT_EQ(broken.body, "v 0.000000 0.000000 0.000000\n"
                           "v 1.000000 0.000000 0.000000\n"
                           "v 0.000000 1.000000 0.000000\n");
}

TEST(OBJWriter, ThrowsForAFaceOfAMeshWithoutVertices)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({}, {{0, 0, 0}});
    EXPECT_EQ(BrokenFileOf({&mesh}, {false}).message, OutOfRange("0", 0));
    EXPECT_EQ(BrokenFileOf({&mesh}, {false}).body, "");
}

TEST(OBJWriter, TakesOneMeshOrAListOfMeshesToBeChanged)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.obj"));
    Mesh first = Triangle(), second = Square();
    for (const bool textured : {false, true}) {
        for (const bool withNormals : {false, true}) {
            ASSERT_TRUE(OBJFile::SaveFile(path, first, textured, withNormals));
            EXPECT_EQ(Directory::Read(path), FileOf({&first}, {textured}, withNormals));
            ASSERT_TRUE(OBJFile::SaveFile(path, std::vector<Mesh*>{&first, &second}, {textured, !textured},
                                          withNormals));
            EXPECT_EQ(Directory::Read(path), FileOf({&first, &second}, {textured, !textured}, withNormals));
        }
    }
}

TEST(OBJWriter, ReplacesAnExistingFile)
{
    const Directory directory;
    const QString path = directory.Write(QByteArray(100'000, 'x'));
    ASSERT_TRUE(OBJFile::SaveFile(path, Triangle(), false, false));
    EXPECT_EQ(Directory::Read(path), kHeader + BodyOf(Triangle()));
}

TEST(OBJWriter, WritesToUnicodeFileNames)
{
    const Directory directory;
    const QString path =
        directory.Path(QString::fromUtf8("gr\xc3\xb6\xc3\x9f\x65 \xe6\xa8\xa1\xe5\x9e\x8b.obj"));
    ASSERT_TRUE(OBJFile::SaveFile(path, Triangle(), false, false));
    EXPECT_EQ(Directory::Read(path), kHeader + BodyOf(Triangle()));
}

TEST(OBJWriter, FailsWhenTheFileCannotBeOpenedAndMakesNone)
{
    const Directory directory;
    const QString file = directory.Write("kept");
    const QString unusable[] = {QString(), QStringLiteral(""), directory.Path(QString()),
                                directory.Path(QStringLiteral("none/out.obj")),
                                file + QStringLiteral("/out.obj")};
    for (const QString& path : unusable) {
        Mesh mesh = Triangle();
        EXPECT_FALSE(OBJFile::SaveFile(path, mesh, true, true)) << path.toStdString();
        EXPECT_FALSE(OBJFile::SaveFile(path, MeshList{&mesh}, {true}, true));
        EXPECT_FALSE(OBJFile::SaveFile(path, std::vector<Mesh*>{&mesh}, {true}, true));
    }
    EXPECT_EQ(QDir(directory.Path(QString())).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList{QStringLiteral("model")});
    EXPECT_EQ(Directory::Read(file), "kept");
}

TEST(OBJWriter, LooksAtNoMeshWhenTheFileCannotBeOpened)
{
    Mesh mesh = Triangle();
    mesh.SetFaceNum(1000);
    EXPECT_FALSE(OBJFile::SaveFile(QStringLiteral("/none/out.obj"), mesh, true, true));
}

TEST(OBJWriter, DoesNotReportWriteErrorsAndClosesTheFile)
{
    const int openBefore = test::OpenFiles();
    for (const char* const name : {"/dev/full", "/dev/null"}) {
        const QString path = QString::fromLatin1(name);
        ASSERT_TRUE(QFile::exists(path));
        EXPECT_TRUE(OBJFile::SaveFile(path, Square(), true, true));
    }
    EXPECT_EQ(test::OpenFiles(), openBefore);
}

TEST(OBJWriter, ClosesTheFileWhenItThrows)
{
    Mesh mesh = Triangle();
    mesh.SetFaceNum(2);
    const int openBefore = test::OpenFiles();
    EXPECT_THROW((void)OBJFile::SaveFile(QStringLiteral("/dev/null"), mesh, false, false), std::out_of_range);
    EXPECT_EQ(test::OpenFiles(), openBefore);
}

TEST(OBJWriter, WritesTheSameInEveryLocale)
{
    // Digits are grouped and commas stand for points in this one, as far as C++ streams and locales go.
    struct Commas : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    const Mesh mesh = Triangle(1234567);
    const MeshList list(10, &mesh);
    const QByteArray expected = BodyOf(list, {true, true}, true);
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    QLocale::setDefault(QLocale(QLocale::German));
    const QByteArray body = BodyOf(list, {true, true}, true);
    QLocale::setDefault(QLocale::c());
    std::locale::global(before);
    EXPECT_EQ(body, expected);
    EXPECT_TRUE(expected.endsWith("f 28//10 29//10 30//10\n"));
}

TEST(OBJWriter, WritesOneMeshFromSeveralThreads)
{
    const Mesh mesh = Square();
    const QByteArray expected = FileOf({&mesh, &mesh}, {true, false}, true);
    QByteArray files[4];
    std::vector<std::thread> threads;
    for (QByteArray& bytes : files) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i)
                bytes = FileOf({&mesh, &mesh}, {true, false}, true);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const QByteArray& bytes : files)
        EXPECT_EQ(bytes, expected);
}

TEST(OBJWriterStream, WritesTheBodyWhereTheStreamStands)
{
    const Mesh mesh = Square();
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(6);
    stream << "before\n";
    OBJFile::writeMesh(stream, {&mesh}, {true}, true);
    stream << "behind";
    stream.flush();
    EXPECT_EQ(bytes, "before\n" + BodyOf(mesh, true, true) + "behind");
}

TEST(OBJWriterStreamThreads, WriteOneMeshIntoDifferentStreamsAtOnce)
{
    const Mesh mesh = Square();
    QByteArray bodies[4];
    std::vector<std::thread> threads;
    for (QByteArray& bytes : bodies) {
        threads.emplace_back([&] {
            QTextStream stream(&bytes);
            stream.setRealNumberNotation(QTextStream::FixedNotation);
            stream.setRealNumberPrecision(6);
            for (int i = 0; i < 20; ++i)
                OBJFile::writeMesh(stream, {&mesh}, {true}, true);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const QByteArray& bytes : bodies)
        EXPECT_EQ(bytes, BodyOf(mesh, true, true).repeated(20));
}

TEST(OBJWriterStream, KeepsTheNotationAndPrecisionOfTheStream)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{0, 0, 0}, {1.23456f, 0, 0}, {0, 1e10f, 0}}, {{0, 1, 2}});
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream.setRealNumberPrecision(3);
    OBJFile::writeMesh(stream, {&mesh}, {false}, false);
    stream.setRealNumberNotation(QTextStream::ScientificNotation);
    stream.setRealNumberPrecision(2);
    OBJFile::writeMesh(stream, {&mesh}, {false}, true);
    EXPECT_EQ(stream.realNumberNotation(), QTextStream::ScientificNotation);
    EXPECT_EQ(stream.realNumberPrecision(), 2);
    stream.flush();
    EXPECT_EQ(bytes, "v 0 0 0\nv 1.23 0 0\nv 0 1e+10 0\n\n\nf 1 2 3\n"
                     "v 0.00e+00 0.00e+00 0.00e+00\n"
                     "v 1.23e+00 0.00e+00 0.00e+00\n"
                     "v 0.00e+00 1.00e+10 0.00e+00\n"
                     "\n\n"
                     "vn 0.00e+00 0.00e+00 1.00e+00\n"
                     "\n"
                     "f 1//1 2//1 3//1\n");
}

TEST(OBJWriterStream, WritesIndicesInDecimalWhateverTheBaseAndLocaleOfTheStream)
{
    const Mesh mesh = Triangle();
    const MeshList list(500, &mesh);
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream.setIntegerBase(16);
    stream.setNumberFlags(QTextStream::ShowBase);
    stream.setLocale(QLocale(QLocale::German));
    OBJFile::writeMesh(stream, list, std::vector<bool>(500, true), true);
    stream.flush();
    EXPECT_TRUE(bytes.endsWith("\nf 1498/1498/500 1499/1499/500 1500/1500/500\n"))
        << bytes.right(60).toStdString();
    EXPECT_EQ(stream.integerBase(), 16);
}

TEST(OBJWriterStream, LeavesTheLinesBeforeWhenItThrows)
{
    Mesh mesh = Triangle();
    (*mesh.GetFacesVecPtr())[0][2] = 7;
    QByteArray bytes;
    QTextStream stream(&bytes);
    EXPECT_THROW(OBJFile::writeMesh(stream, {&mesh}, {false}, false), std::out_of_range);
    stream.flush();
    EXPECT_EQ(bytes, "v 0 0 0\nv 1 0 0\n");
}
