#include "fileformat/stl/STLFile.h"

#include <clocale>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <locale>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

#include <QDateTime>
#include <QRegularExpression>
#include <QTextStream>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"
#include "tests/common/EnvironmentVariable.h"
#include "tests/common/OpenFiles.h"
#include "tests/stl/STLBuilders.h"

namespace {

using test::Directory;
using test::Point;

// Two facets that share an edge: one in the plane z = 0 facing up, one standing on the y axis.
Mesh TwoFacets()
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{0, 0, 0}, {1.5f, 0, 0}, {0, 2, 0}, {0, 0, -1}}, {{0, 1, 2}, {0, 2, 3}});
    return mesh;
}

Mesh OneFacet(float offset)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{offset, 0, 0}, {offset + 1, 0, 0}, {offset, 1, 0}}, {{0, 1, 2}});
    return mesh;
}

const char kFirstFacet[] = "  facet normal 0.000000 0.000000 1.000000\n"
                           "    outer loop\n"
                           "      vertex 0.000000 0.000000 0.000000\n"
                           "      vertex 1.500000 0.000000 0.000000\n"
                           "      vertex 0.000000 2.000000 0.000000\n"
                           "    endloop\n"
                           "  endfacet\n";
const char kSecondFacet[] = "  facet normal -1.000000 0.000000 0.000000\n"
                            "    outer loop\n"
                            "      vertex 0.000000 0.000000 0.000000\n"
                            "      vertex 0.000000 2.000000 0.000000\n"
                            "      vertex 0.000000 0.000000 -1.000000\n"
                            "    endloop\n"
                            "  endfacet\n";

QByteArray TextOf(const Mesh& mesh)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    EXPECT_TRUE(STLFile::SaveFile(path, mesh, true, 80));
    return Directory::Read(path);
}

QByteArray BinaryOf(const Mesh& mesh, int headerSize = 80)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    EXPECT_TRUE(STLFile::SaveFile(path, mesh, false, headerSize));
    return Directory::Read(path);
}

std::uint32_t CountIn(const QByteArray& bytes, int headerSize = 80)
{
    std::uint32_t count = 0;
    std::memcpy(&count, bytes.constData() + headerSize, sizeof count);
    return count;
}

// Point 0 of a record is its normal.
Point PointIn(const QByteArray& bytes, int record, int point, int headerSize = 80)
{
    Point value;
    const int offset = headerSize + 4 + 50 * record + 12 * point;
    std::memcpy(static_cast<void*>(&value), bytes.constData() + offset, sizeof value);
    return value;
}

std::string MessageOfOutOfRange(const QString& path, const Mesh& mesh, bool ascii)
{
    try {
        (void)STLFile::SaveFile(path, mesh, ascii, 80);
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "nothing thrown";
}

Mesh RandomMesh(unsigned seed, int faceCount)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> coordinate(-300, 300);
    std::vector<Point> vertices;
    vertices.reserve(3 * static_cast<std::size_t>(faceCount));
    for (int i = 0; i < 3 * faceCount; ++i)
        vertices.emplace_back(coordinate(random), coordinate(random),
                              std::ldexp(coordinate(random), i % 40 - 20));
    std::vector<TriangleFace> faces;
    faces.reserve(static_cast<std::size_t>(faceCount));
    for (int i = 0; i < faceCount; ++i)
        faces.emplace_back(3 * i, 3 * i + 1, 3 * i + 2);
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces(vertices, faces);
    return mesh;
}

// The text as a text stream alone would write it.
QByteArray StreamedText(const Mesh& mesh)
{
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(6);
    stream << "solid model\n";
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        Point corners[3], normal;
        for (int c = 0; c < 3; ++c)
            corners[c] = mesh.GetVerticesVecPtr()->at(static_cast<std::size_t>(face[c]));
        Point::CalcNormal(corners[0], corners[1], corners[2], normal);
        stream << "  facet normal " << normal.x << " " << normal.y << " " << normal.z << "\n    outer loop\n";
        for (const Point& corner : corners)
            stream << "      vertex " << corner.x << " " << corner.y << " " << corner.z << "\n";
        stream << "    endloop\n  endfacet\n";
    }
    stream << "endsolid model\n";
    stream.flush();
    return bytes;
}

} // namespace

TEST(STLWriter, WritesTextLineByLine)
{
    EXPECT_EQ(TextOf(TwoFacets()),
              QByteArray("solid model\n") + kFirstFacet + kSecondFacet + "endsolid model\n");
}

TEST(STLWriter, WritesOneSolidForEachMeshInText)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    const Mesh first = TwoFacets(), second = TwoFacets();
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<const Mesh*>{&first, &second}, true, 80));
    const QByteArray solid = QByteArray("solid model\n") + kFirstFacet + kSecondFacet + "endsolid model\n";
    EXPECT_EQ(Directory::Read(path), solid + solid);
}

TEST(STLWriter, TakesAListOfMeshesToBeChangedInTextToo)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    Mesh first = OneFacet(0), second = OneFacet(7);
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<Mesh*>{&first, &second}, true, 80));
    EXPECT_EQ(Directory::Read(path), TextOf(first) + TextOf(second));
}

TEST(STLWriter, WritesTextAsATextStreamWould)
{
    const Mesh mesh = RandomMesh(5, 4000);
    EXPECT_EQ(TextOf(mesh), StreamedText(mesh));
}

TEST(STLWriter, WritesNamesForVerticesThatAreNotFinite)
{
    const float infinity = std::numeric_limits<float>::infinity();
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{std::nanf(""), infinity, -infinity}, {1, -0.0f, 0}, {3.4e38f, -1e-9f, 0}},
                           {{0, 1, 2}});
    const QByteArray text = TextOf(mesh);
    EXPECT_TRUE(text.contains("facet normal 0.000000 0.000000 0.000000\n"));
    EXPECT_TRUE(text.contains("vertex nan inf -inf\n"));
    EXPECT_TRUE(text.contains("vertex 1.000000 0.000000 0.000000\n"));
    EXPECT_TRUE(text.contains("vertex 339999995214436424907732413799364296704.000000 -0.000000 0.000000\n"));
}

TEST(STLWriter, WritesAnEmptySolidForAMeshWithoutFaces)
{
    EXPECT_EQ(TextOf(Mesh(0.03f)), QByteArray("solid model\nendsolid model\n"));
}

TEST(STLWriter, WritesAnEmptyFileForNoMeshesInText)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<const Mesh*>(), true, 80));
    EXPECT_EQ(Directory::Read(path), QByteArray());
}

TEST(STLWriter, WritesHeaderCountAndRecordsInBinary)
{
    const QByteArray bytes = BinaryOf(TwoFacets());
    ASSERT_EQ(bytes.size(), 84 + 2 * 50);
    EXPECT_EQ(CountIn(bytes), 2U);
    EXPECT_EQ(PointIn(bytes, 0, 0), Point(0, 0, 1));
    EXPECT_EQ(PointIn(bytes, 0, 1), Point(0, 0, 0));
    EXPECT_EQ(PointIn(bytes, 0, 2), Point(1.5f, 0, 0));
    EXPECT_EQ(PointIn(bytes, 0, 3), Point(0, 2, 0));
    EXPECT_EQ(PointIn(bytes, 1, 0), Point(-1, 0, 0));
    EXPECT_EQ(PointIn(bytes, 1, 3), Point(0, 0, -1));
    EXPECT_EQ(bytes.mid(84 + 48, 2), QByteArray(2, '\0'));
    EXPECT_EQ(bytes.mid(84 + 98, 2), QByteArray(2, '\0'));
}

TEST(STLWriter, StoresCountAndNumbersLittleEndian)
{
    const QByteArray bytes = BinaryOf(TwoFacets());
    EXPECT_EQ(bytes.mid(80, 4), QByteArray("\x02\0\0\0", 4));
    // 1.5f is 3fc00000.
    EXPECT_EQ(bytes.mid(84 + 24, 4), QByteArray("\0\0\xc0\x3f", 4));
}

TEST(STLWriter, SumsTheCountsOfAllMeshesAndKeepsTheirOrderInBinary)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    Mesh first = OneFacet(10), empty(0.03f), second = OneFacet(20);
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<Mesh*>{&first, &empty, &second}, false, 80));
    const QByteArray bytes = Directory::Read(path);
    ASSERT_EQ(bytes.size(), 84 + 2 * 50);
    EXPECT_EQ(CountIn(bytes), 2U);
    EXPECT_EQ(PointIn(bytes, 0, 1), Point(10, 0, 0));
    EXPECT_EQ(PointIn(bytes, 1, 1), Point(20, 0, 0));
}

TEST(STLWriter, WritesHeaderAndZeroCountForAMeshWithoutFaces)
{
    const QByteArray bytes = BinaryOf(Mesh(0.03f));
    ASSERT_EQ(bytes.size(), 84);
    EXPECT_EQ(CountIn(bytes), 0U);
}

TEST(STLWriter, WritesHeaderAndZeroCountForNoMeshes)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<const Mesh*>(), false, 80));
    const QByteArray bytes = Directory::Read(path);
    ASSERT_EQ(bytes.size(), 84);
    EXPECT_EQ(CountIn(bytes), 0U);
}

TEST(STLWriter, PassesOverANegativeFaceCount)
{
    Mesh none = TwoFacets();
    none.SetFaceNum(-5);
    EXPECT_EQ(TextOf(none), QByteArray("solid model\nendsolid model\n"));
    EXPECT_EQ(CountIn(BinaryOf(none)), 0U);
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    const Mesh two = TwoFacets();
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<const Mesh*>{&none, &two}, false, 80));
    const QByteArray bytes = Directory::Read(path);
    EXPECT_EQ(bytes.size(), 84 + 2 * 50);
    EXPECT_EQ(CountIn(bytes), 2U);
}

TEST(STLWriter, PutsDateAndTimeIntoTheHeader)
{
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    const QByteArray header = BinaryOf(Mesh(0.03f)).left(80);
    const QDateTime after = QDateTime::currentDateTime().addSecs(1);
    const QRegularExpression pattern(
        QStringLiteral("^STL EXPORTED BY LOFTMAREN\\. (\\d\\d-\\d\\d-\\d{4} \\d\\d:\\d\\d:\\d\\d)$"));
    const QRegularExpressionMatch match = pattern.match(QString::fromLatin1(header.left(46)));
    ASSERT_TRUE(match.hasMatch()) << header.toStdString();
    const QDateTime written = QDateTime::fromString(match.captured(1), QStringLiteral("dd-MM-yyyy HH:mm:ss"));
    EXPECT_GE(written, before);
    EXPECT_LE(written, after);
    EXPECT_EQ(header.mid(46), QByteArray(34, '\0'));
}

TEST(STLWriter, GivesTheHeaderExactlyItsSize)
{
    for (const int size : {0, 1, 26, 45, 46, 47, 80, 1024, 5000, 300'000}) {
        const QByteArray bytes = BinaryOf(OneFacet(7), size);
        ASSERT_EQ(bytes.size(), size + 4 + 50);
        EXPECT_TRUE(bytes.startsWith(QByteArray("STL EXPORTED BY LOFTMAREN. ").left(size))) << size;
        EXPECT_EQ(bytes.mid(46, std::max(size - 46, 0)), QByteArray(std::max(size - 46, 0), '\0')) << size;
        EXPECT_EQ(CountIn(bytes, size), 1U) << size;
        EXPECT_EQ(PointIn(bytes, 0, 1, size), Point(7, 0, 0)) << size;
    }
}

TEST(STLWriter, TakesANegativeHeaderSizeForNoHeader)
{
    const QByteArray bytes = BinaryOf(OneFacet(7), -5);
    ASSERT_EQ(bytes.size(), 4 + 50);
    EXPECT_EQ(CountIn(bytes, 0), 1U);
}

TEST(STLWriter, LetsNormalsFollowTheCornersNotTheMesh)
{
    Mesh mesh = OneFacet(0);
    Point down(0, 0, -1);
    const std::vector<Point*> normals(3, &down);
    mesh.PostProcess(false, false, true, true, &normals, nullptr);
    ASSERT_EQ(mesh.GetVertexNormals()[0], down);
    EXPECT_EQ(PointIn(BinaryOf(mesh), 0, 0), Point(0, 0, 1));
    std::swap((*mesh.GetFacesVecPtr())[0][0], (*mesh.GetFacesVecPtr())[0][1]);
    EXPECT_EQ(PointIn(BinaryOf(mesh), 0, 0), Point(0, 0, -1));
    EXPECT_TRUE(TextOf(mesh).contains("facet normal 0.000000 0.000000 -1.000000\n"));
}

TEST(STLWriter, AppliesNoTransform)
{
    Mesh mesh = OneFacet(3);
    Matrix4<double> transform;
    transform.set(0, 3, 100);
    mesh.SetTransformMatrix(transform);
    EXPECT_EQ(PointIn(BinaryOf(mesh), 0, 1), Point(3, 0, 0));
}

TEST(STLWriter, WalksTheFaceCountNotTheFaceList)
{
    Mesh mesh = TwoFacets();
    mesh.SetFaceNum(1);
    EXPECT_EQ(TextOf(mesh), QByteArray("solid model\n") + kFirstFacet + "endsolid model\n");
    const QByteArray bytes = BinaryOf(mesh);
    EXPECT_EQ(bytes.size(), 84 + 50);
    EXPECT_EQ(CountIn(bytes), 1U);
}

TEST(STLWriter, ThrowsForAnIndexBeyondTheVerticesAndLeavesTheFacetsBefore)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    Mesh mesh = TwoFacets();
    (*mesh.GetFacesVecPtr())[1][2] = 4;
    const std::string message = "vector::_M_range_check: __n (which is 4) >= this->size() (which is 4)";
    EXPECT_EQ(MessageOfOutOfRange(path, mesh, true), message);
    EXPECT_EQ(Directory::Read(path), QByteArray("solid model\n") + kFirstFacet);
    EXPECT_EQ(MessageOfOutOfRange(path, mesh, false), message);
    const QByteArray bytes = Directory::Read(path);
    ASSERT_EQ(bytes.size(), 84 + 50);
    EXPECT_EQ(CountIn(bytes), 2U);
    EXPECT_EQ(PointIn(bytes, 0, 2), Point(1.5f, 0, 0));
}

TEST(STLWriter, ThrowsForANegativeIndex)
{
    const Directory directory;
    Mesh mesh = OneFacet(0);
    (*mesh.GetFacesVecPtr())[0][0] = -1;
    const std::string message =
        "vector::_M_range_check: __n (which is 18446744073709551615) >= this->size() (which is 3)";
    EXPECT_EQ(MessageOfOutOfRange(directory.Path(QStringLiteral("out.stl")), mesh, true), message);
    EXPECT_EQ(MessageOfOutOfRange(directory.Path(QStringLiteral("out.stl")), mesh, false), message);
}

TEST(STLWriter, ThrowsForACountBeyondTheFacesAndLeavesThem)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    Mesh mesh = TwoFacets();
    mesh.SetFaceNum(3);
    const std::string message = "vector::_M_range_check: __n (which is 2) >= this->size() (which is 2)";
    EXPECT_EQ(MessageOfOutOfRange(path, mesh, true), message);
    EXPECT_EQ(Directory::Read(path), QByteArray("solid model\n") + kFirstFacet + kSecondFacet);
    EXPECT_EQ(MessageOfOutOfRange(path, mesh, false), message);
    EXPECT_EQ(Directory::Read(path).size(), 84 + 2 * 50);
}

TEST(STLWriter, WritesASoupByTriples)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    const std::vector<Point> corners = {{0, 0, 0}, {1.5f, 0, 0}, {0, 2, 0}, {0, 0, 0}, {0, 2, 0}, {0, 0, -1}};
    ASSERT_TRUE(STLFile::SaveFile(path, corners, true, 80));
    EXPECT_EQ(Directory::Read(path),
              QByteArray("solid model\n") + kFirstFacet + kSecondFacet + "endsolid model\n");
    ASSERT_TRUE(STLFile::SaveFile(path, corners, false, 80));
    EXPECT_EQ(Directory::Read(path).mid(80), BinaryOf(TwoFacets()).mid(80));
}

TEST(STLWriter, LeavesOutTheIncompleteLastTripleOfASoup)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    for (const std::size_t surplus : {1U, 2U}) {
        std::vector<Point> corners = {{0, 0, 0}, {1.5f, 0, 0}, {0, 2, 0}};
        corners.resize(3 + surplus, Point(9, 9, 9));
        ASSERT_TRUE(STLFile::SaveFile(path, corners, true, 80));
        EXPECT_EQ(Directory::Read(path), QByteArray("solid model\n") + kFirstFacet + "endsolid model\n");
        ASSERT_TRUE(STLFile::SaveFile(path, corners, false, 80));
        EXPECT_EQ(Directory::Read(path).size(), 84 + 50);
        EXPECT_EQ(CountIn(Directory::Read(path)), 1U);
    }
}

TEST(STLWriter, WritesAnEmptySoup)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<Point>(), true, 80));
    EXPECT_EQ(Directory::Read(path), QByteArray("solid model\nendsolid model\n"));
    ASSERT_TRUE(STLFile::SaveFile(path, std::vector<Point>(2), false, 80));
    EXPECT_EQ(Directory::Read(path).size(), 84);
}

TEST(STLWriter, ReplacesAnExistingFile)
{
    const Directory directory;
    const QString path = directory.Write(QByteArray(100'000, 'x'));
    ASSERT_TRUE(STLFile::SaveFile(path, OneFacet(0), false, 80));
    EXPECT_EQ(Directory::Read(path).size(), 134);
    directory.Write(QByteArray(100'000, 'x'));
    ASSERT_TRUE(STLFile::SaveFile(path, TwoFacets(), true, 80));
    EXPECT_TRUE(Directory::Read(path).endsWith("endsolid model\n"));
    EXPECT_FALSE(Directory::Read(path).contains('x' + QByteArray(1, 'x')));
}

TEST(STLWriter, WritesToUnicodeFileNames)
{
    const Directory directory;
    const QString path =
        directory.Path(QString::fromUtf8("gr\xc3\xb6\xc3\x9f\x65 \xe6\xa8\xa1\xe5\x9e\x8b.stl"));
    ASSERT_TRUE(STLFile::SaveFile(path, OneFacet(0), false, 80));
    EXPECT_EQ(Directory::Read(path).size(), 134);
}

TEST(STLWriter, FailsWhenTheFileCannotBeOpened)
{
    const Directory directory;
    const Mesh mesh = OneFacet(0);
    for (const bool ascii : {true, false}) {
        EXPECT_FALSE(STLFile::SaveFile(directory.Path(QStringLiteral("none/out.stl")), mesh, ascii, 80));
        EXPECT_FALSE(STLFile::SaveFile(directory.Path(QString()), mesh, ascii, 80));
        EXPECT_FALSE(STLFile::SaveFile(QString(), mesh, ascii, 80));
        EXPECT_FALSE(STLFile::SaveFile(QString(), std::vector<Point>(3), ascii, 80));
    }
}

TEST(STLWriter, DoesNotReportWriteErrors)
{
    const QString full = QStringLiteral("/dev/full");
    ASSERT_TRUE(QFile::exists(full));
    EXPECT_TRUE(STLFile::SaveFile(full, TwoFacets(), true, 80));
    EXPECT_TRUE(STLFile::SaveFile(full, TwoFacets(), false, 80));
    EXPECT_TRUE(STLFile::SaveFile(full, RandomMesh(1, 20'000), false, 80));
}

TEST(STLWriter, ClosesTheFileHoweverItEnds)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("out.stl"));
    Mesh bad = TwoFacets();
    bad.SetFaceNum(3);
    const int openBefore = test::OpenFiles();
    for (const bool ascii : {true, false}) {
        EXPECT_TRUE(STLFile::SaveFile(path, TwoFacets(), ascii, 80));
        EXPECT_TRUE(STLFile::SaveFile(QStringLiteral("/dev/full"), TwoFacets(), ascii, 80));
        EXPECT_THROW((void)STLFile::SaveFile(path, bad, ascii, 80), std::out_of_range);
    }
    EXPECT_EQ(test::OpenFiles(), openBefore);
}

TEST(STLWriter, WritesTheSameInEveryLocale)
{
    // Digits are grouped and commas stand for points in this one, as far as C++ streams and locales go.
    struct Commas : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    const Mesh mesh = RandomMesh(9, 50);
    const QByteArray expected = TextOf(mesh);
    const std::locale before = std::locale::global(std::locale(std::locale(), new Commas));
    QLocale::setDefault(QLocale(QLocale::German));
    const QByteArray text = TextOf(mesh);
    QLocale::setDefault(QLocale::c());
    std::locale::global(before);
    EXPECT_EQ(text, expected);
}

TEST(STLWriter, WritesLargeMeshesInWholeBlocks)
{
    const Mesh mesh = RandomMesh(3, 20'000);
    const QByteArray bytes = BinaryOf(mesh);
    ASSERT_EQ(bytes.size(), 84 + 20'000 * 50);
    const std::vector<Point>& vertices = *mesh.GetVerticesVecPtr();
    for (int i = 0; i < 20'000; ++i) {
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(PointIn(bytes, i, 1 + c), vertices[static_cast<std::size_t>(3 * i + c)]) << i;
    }
}

TEST(STLWriterThreads, WriteOneMeshAtOnce)
{
    // For the thread sanitizer, as in STLReaderThreads.
    const test::EnvironmentVariable timeZone("TZ", "UTC");
    tzset();
    const Mesh mesh = RandomMesh(11, 5000);
    const QByteArray text = TextOf(mesh), records = BinaryOf(mesh).mid(80);
    int differences[4] = {};
    std::vector<std::thread> threads;
    for (int& count : differences) {
        threads.emplace_back([&] {
            for (int i = 0; i < 10; ++i) {
                count += TextOf(mesh) == text ? 0 : 1;
                count += BinaryOf(mesh).mid(80) == records ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const int count : differences)
        EXPECT_EQ(count, 0);
}

TEST(STLWriterParts, WritesTheFacetsOfAMeshIntoACallersStream)
{
    QString text;
    QTextStream stream(&text);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    stream.setRealNumberPrecision(6);
    stream << "before\n";
    EXPECT_TRUE(STLFile::WriteMeshAscii(stream, TwoFacets()));
    stream << "behind";
    stream.flush();
    EXPECT_EQ(text.toStdString(), std::string("before\n") + kFirstFacet + kSecondFacet + "behind");
}

TEST(STLWriterParts, KeepsTheNotationAndPrecisionOfTheStream)
{
    QString text;
    QTextStream stream(&text);
    stream.setRealNumberPrecision(3);
    EXPECT_TRUE(STLFile::WriteFaceAscii(stream, {0, 0, 0}, {1.23456f, 0, 0}, {0, 1e10f, 0}));
    stream.setRealNumberNotation(QTextStream::ScientificNotation);
    stream.setRealNumberPrecision(2);
    EXPECT_TRUE(STLFile::WriteFaceAscii(stream, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}));
    stream.flush();
    EXPECT_EQ(text.toStdString(), "  facet normal 0 0 1\n    outer loop\n"
                                  "      vertex 0 0 0\n      vertex 1.23 0 0\n      vertex 0 1e+10 0\n"
                                  "    endloop\n  endfacet\n"
                                  "  facet normal 0.00e+00 0.00e+00 1.00e+00\n    outer loop\n"
                                  "      vertex 0.00e+00 0.00e+00 0.00e+00\n"
                                  "      vertex 1.00e+00 0.00e+00 0.00e+00\n"
                                  "      vertex 0.00e+00 1.00e+00 0.00e+00\n"
                                  "    endloop\n  endfacet\n");
}

TEST(STLWriterParts, ThrowsFromAStreamAsFromAFile)
{
    Mesh mesh = TwoFacets();
    (*mesh.GetFacesVecPtr())[1][0] = 99;
    QString text;
    QTextStream stream(&text);
    stream.setRealNumberNotation(QTextStream::FixedNotation);
    EXPECT_THROW(STLFile::WriteMeshAscii(stream, mesh), std::out_of_range);
    stream.flush();
    EXPECT_EQ(text.toStdString(), kFirstFacet);
}

TEST(STLWriterParts, WritesRecordsWhereTheFileStands)
{
    const Directory directory;
    QFile file(directory.Path(QStringLiteral("out.bin")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    file.write("12345678");
    ASSERT_TRUE(file.seek(4));
    EXPECT_TRUE(STLFile::WriteMeshBinary(file, TwoFacets()));
    EXPECT_EQ(file.pos(), 4 + 100);
    EXPECT_TRUE(STLFile::WriteFaceBinary(file, {0, 0, 0}, {0, 1, 0}, {1, 0, 0}, 0xabcd));
    file.close();
    const QByteArray bytes = Directory::Read(file.fileName());
    ASSERT_EQ(bytes.size(), 4 + 150);
    EXPECT_EQ(bytes.left(4), QByteArray("1234"));
    EXPECT_EQ(PointIn(bytes, 0, 2, 0), Point(1.5f, 0, 0));
    EXPECT_EQ(PointIn(bytes, 1, 0, 0), Point(-1, 0, 0));
    EXPECT_EQ(PointIn(bytes, 2, 0, 0), Point(0, 0, -1));
    EXPECT_EQ(PointIn(bytes, 2, 2, 0), Point(0, 1, 0));
    EXPECT_EQ(bytes.right(2), QByteArray("\xcd\xab"));
}

TEST(STLWriterParts, LeavesTheRecordsBeforeABadFaceInTheFile)
{
    const Directory directory;
    Mesh mesh = TwoFacets();
    (*mesh.GetFacesVecPtr())[1][0] = -7;
    QFile file(directory.Path(QStringLiteral("out.bin")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_THROW(STLFile::WriteMeshBinary(file, mesh), std::out_of_range);
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(file.pos(), 50);
}
