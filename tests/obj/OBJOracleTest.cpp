#include <gtest/gtest.h>

#include "fileformat/common/BlockReader_p.h"
#include "tests/obj/OBJLoadSupport.h"
#include "tests/obj/ObjDifference.h"
#include "tests/obj/RandomObjText.h"

// Files of every sort, each loaded by the library and by the plain readers: both must end alike.

namespace {

using test::Directory;
using test::LoadedObj;
using test::Materials;
using test::RandomObjText;

constexpr int kRandomTexts = 50'000;
constexpr int kLongestLine = 1'048'575;

std::string DifferenceOfObj(const Directory& directory, const QByteArray& text)
{
    const QString path = directory.Write(text);
    const LoadedObj obj = test::LoadObjFile(path);
    const auto expected = test::ReadPlainObj(path, 0);
    if (!obj.isLoaded || !expected)
        return "not loaded";
    return test::DifferenceOf(obj.mesh, obj.groups, *expected);
}

std::string DifferenceOfMtl(const Directory& directory, const QByteArray& text)
{
    const QString path = directory.Write(text);
    Materials materials;
    const auto expected = test::ReadPlainMtl(path, 0);
    if (!OBJFile::LoadMTLFile(path, materials, 0) || !expected)
        return "not loaded";
    return test::DifferenceOf(materials, *expected);
}

void WriteLibraries(const Directory& directory)
{
    (void)directory.Write("newmtl a\nKd 1 0 0\nnewmtl wood\nNs 5\nnewmtl a\nillum 9\n",
                          QStringLiteral("lib.mtl"));
    (void)directory.Write("newmtl b\nKe 1 2 3\nnewmtl \xC3\xA4\nd 0.5\n", QStringLiteral("other.mtl"));
}

QByteArray ObjSample()
{
    return "# sample\nmtllib lib.mtl\nv 1 2 3\nv -1.5 0.25 1e1\r\nv 4 5 6 2\nv 7 8 9 1 0 0\n"
           "vt 0.5 0.25\nvt 1 0 0\nvt 0 1\nusemtl wood\nf 1/1 2/2 3/3 4/1\nusemtl a\\b\n"
           "f 1//1 2//2 3//3\nf 4 3 \\\n 2\nusemtl \xC3\xA4\nf -1 2 3/\n";
}

QByteArray MtlSample()
{
    return "# sample\nKd 9 9 9\nnewmtl a\n\tKd 0.5 0.25 1e-1 \r\nKa 1 2 3\nNs 10\nillum 2\nnewmtl \xC3\xA4\n"
           "map_Kd -s 2 2 1 missing.png\nd 0.\\\n5\nKs 1 \\\n 2 3\nbump b.png\nKe 1 1 1\nNi 1.5\n";
}

using Difference = std::string (*)(const Directory&, const QByteArray&);

void ExpectSameAtEveryTruncation(const QByteArray& sample, Difference differenceOf)
{
    const Directory directory;
    WriteLibraries(directory);
    for (int size = 0; size <= sample.size(); ++size)
        ASSERT_EQ(differenceOf(directory, sample.left(size)), "") << size;
}

void ExpectSameWithEveryChangedByte(const QByteArray& sample, Difference differenceOf)
{
    const Directory directory;
    WriteLibraries(directory);
    for (int i = 0; i < sample.size(); ++i) {
        const char byte = sample[i];
        for (const int changed : {0, 0xff, byte + 1, byte ^ 0x80, int('\\'), int('\n'), int('\r'), int(' '),
                                  int('\t'), int('/'), int('#')}) {
            QByteArray text = sample;
            text[i] = static_cast<char>(changed);
            ASSERT_EQ(differenceOf(directory, text), "") << i << ' ' << changed;
        }
    }
}

// Repeats `filler` up to `size` bytes in all and fills the rest up with carriage returns, which count for
// nothing but their place.
QByteArray Filled(const QByteArray& filler, int size)
{
    QByteArray text = filler.repeated(size / filler.size());
    return text + QByteArray(size - text.size(), '\r');
}

// The sample at every place around the end of the reader's first block.
void ExpectSameAtEveryBorder(const QByteArray& sample, const QByteArray& filler, Difference differenceOf)
{
    const Directory directory;
    WriteLibraries(directory);
    const auto border = int(kr::BlockReader::kUsualBlockSize);
    for (int before = 0; before <= sample.size() + 1; ++before) {
        const QByteArray text = Filled(filler, border - before) + sample;
        ASSERT_EQ(differenceOf(directory, text), "") << before;
    }
}

} // namespace

TEST(OBJOracle, RandomTextsAreReadAsByThePlainReader)
{
    const Directory directory;
    WriteLibraries(directory);
    RandomObjText random(11);
    std::size_t faces = 0, dropped = 0, textureFaces = 0, groups = 0, materials = 0;
    for (int i = 0; i < kRandomTexts; ++i) {
        const QByteArray text = random.Obj();
        const QString path = directory.Write(text);
        const LoadedObj obj = test::LoadObjFile(path);
        const auto expected = test::ReadPlainObj(path, 0);
        ASSERT_TRUE(obj.isLoaded && expected);
        ASSERT_EQ(test::DifferenceOf(obj.mesh, obj.groups, *expected), "") << i << '\n' << text.constData();
        faces += obj.ReadFaces().size();
        dropped += expected->faces.size() - obj.ReadFaces().size();
        textureFaces += obj.TextureFaces().size();
        groups += obj.groups.size();
        for (const MeshTextureGroup& group : obj.groups)
            materials += group.material.hasDiffuse || group.material.hasEmissive;
    }
    // Each kind must have been seen often.
    EXPECT_GT(faces, 50'000U);
    EXPECT_GT(dropped, 20'000U);
    EXPECT_GT(textureFaces, 10'000U);
    EXPECT_GT(groups, 20'000U);
    EXPECT_GT(materials, 500U);
}

TEST(OBJOracle, RandomLibrariesAreReadAsByThePlainReader)
{
    const Directory directory;
    RandomObjText random(12);
    int materials = 0, colors = 0, maps = 0;
    for (int i = 0; i < kRandomTexts; ++i) {
        const QByteArray text = random.Mtl();
        const QString path = directory.Write(text);
        Materials loaded;
        ASSERT_TRUE(OBJFile::LoadMTLFile(path, loaded, 0));
        const auto expected = test::ReadPlainMtl(path, 0);
        ASSERT_TRUE(expected);
        ASSERT_EQ(test::DifferenceOf(loaded, *expected), "") << i << '\n' << text.constData();
        materials += int(loaded.size());
        for (const MeshMaterialInfo& material : loaded) {
            colors += material.hasAmbient + material.hasDiffuse + material.hasSpecular + material.hasEmissive;
            maps += !material.diffuseTexture.fileName.isEmpty() + !material.bumpTexture.fileName.isEmpty();
        }
    }
    EXPECT_GT(materials, 20'000);
    EXPECT_GT(colors, 20'000);
    EXPECT_GT(maps, 1'000);
}

TEST(OBJOracle, EveryTruncationIsReadAsByThePlainReader)
{
    ExpectSameAtEveryTruncation(ObjSample(), DifferenceOfObj);
    ExpectSameAtEveryTruncation(MtlSample(), DifferenceOfMtl);
}

TEST(OBJOracle, EveryChangedByteIsReadAsByThePlainReader)
{
    ExpectSameWithEveryChangedByte(ObjSample(), DifferenceOfObj);
    ExpectSameWithEveryChangedByte(MtlSample(), DifferenceOfMtl);
}

TEST(OBJOracle, StatementsAcrossABlockBorderAreReadAsByThePlainReader)
{
    for (const QByteArray& filler :
         {QByteArray("v 1.25 2 3\n"), QByteArray(20'000, '#') + '\n', QByteArray("\r")})
        ExpectSameAtEveryBorder(ObjSample(), filler, DifferenceOfObj);
    ExpectSameAtEveryBorder(MtlSample(), "Kd 1.25 2 3\n", DifferenceOfMtl);
}

TEST(OBJOracle, LineEndsAcrossABlockBorderAreReadAsByThePlainReader)
{
    for (const char* const joint : {"\\\n", "\\\r\n ", "\\\n\\\n", " \\ \t\n", "\\\\\\x", "\xC3\xA4\\\xC3\n",
                                    "\r\n\r\n", "\xEF\xBB\xBF", "\n\xEF\xBB\xBFv 9 9 9\n", "\\\n#"}) {
        const QByteArray sample = QByteArray("usemtl a") + joint + "b\nv 1 2 " + joint + "3\n";
        ExpectSameAtEveryBorder(sample, "v 1.25 2 3\n", DifferenceOfObj);
    }
}

// Large enough for samples to be taken before it is read.
TEST(OBJOracle, LargeFilesAreReadAsByThePlainReader)
{
    const Directory directory;
    WriteLibraries(directory);
    RandomObjText random(13);
    QByteArray mixed;
    while (mixed.size() < 5'000'000)
        mixed += random.Obj();
    const QByteArray vertices = QByteArray("v 1 2 3\r\n").repeated(250'000);
    const QByteArray polygons = QByteArray("f 1/2/3 2//1 3/4 4\n").repeated(150'000);
    const QByteArray returns(5'000'000, '\r');
    const QByteArray oneWord = QByteArray(5'000'000, 'f');
    for (const QByteArray& text :
         {mixed, vertices + polygons, polygons + vertices, returns + vertices, oneWord + vertices,
          vertices + "usemtl a\n" + polygons + "usemtl b\n" + polygons})
        ASSERT_EQ(DifferenceOfObj(directory, text), "");
}

// A name longer than a block, so that a line begins in one block and ends in another but the next.
TEST(OBJOracle, LinesLongerThanABlockAreReadAsByThePlainReader)
{
    const Directory directory;
    for (const int size : {1000, 1001, 65'535, 131'071, 131'072, 131'073, 300'000, 1'000'000}) {
        for (const char* const middle : {"", " ", "\\\n", "\\", "\r", "\xC3\xA4"}) {
            const QByteArray half(size / 2, 'n');
            ASSERT_EQ(DifferenceOfObj(directory, "usemtl " + half + middle + half + "\nv 1 2 3\n"), "");
            ASSERT_EQ(DifferenceOfObj(directory, "v 0." + QByteArray(size, '1') + middle + " 2 3\nv 1 2 3\n"),
                      "");
        }
        QByteArray polygon("f");
        for (int i = 0; i < size / 4; ++i)
            polygon += " 1/" + QByteArray::number(i % 10);
        ASSERT_EQ(DifferenceOfObj(directory, "v 1 2 3\nusemtl a\n" + polygon + '\n' + polygon), "");
        ASSERT_EQ(DifferenceOfMtl(directory, "newmtl " + QByteArray(size, 'n') + "\nKd 1 2 3\n"), "");
    }
}

TEST(OBJOracle, LinesNearTheLongestAreReadAsByThePlainReader)
{
    const Directory directory;
    const QByteArray ends[] = {"\n",    "\r\n",    "\\\n\n",     "\\\nx\n",
                               "\\x\n", "\\\\ \n", "\xC3\xA4\n", QByteArray("\0", 1)};
    for (const QByteArray& end : ends) {
        for (int less = 0; less <= 3; ++less) {
            const QByteArray line = QByteArray("v 7 8 9").leftJustified(kLongestLine + 1 - less, ' ');
            const QByteArray text = "v 1 2 3\n" + line + end + "v 4 5 6\n";
            ASSERT_EQ(DifferenceOfObj(directory, text), "") << end.constData() << less;
        }
    }
}
