#include <string>

#include <QFile>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/common/Bytes.h"
#include "tests/common/UnreadableFile.h"
#include "tests/obj/OBJLoadSupport.h"

namespace {

using test::Directory;
using test::LoadMtl;
using test::Materials;
using test::Point;

using Names = std::vector<std::string>;

constexpr int kLongestLine = 1'048'575;

Names NamesIn(const QByteArray& text)
{
    Names names;
    for (const MeshMaterialInfo& material : LoadMtl(text))
        names.push_back(material.name);
    return names;
}

// The one material of a library of "newmtl a" and the statements given.
MeshMaterialInfo MaterialOf(const QByteArray& statements)
{
    const Materials materials = LoadMtl("newmtl a\n" + statements);
    EXPECT_EQ(materials.size(), 1U);
    return materials.empty() ? MeshMaterialInfo() : materials[0];
}

bool HasAnyColor(const MeshMaterialInfo& material)
{
    return material.hasAmbient || material.hasDiffuse || material.hasSpecular || material.hasEmissive;
}

bool HasAnyMap(const MeshMaterialInfo& material)
{
    return !material.diffuseTexture.fileName.isEmpty() || !material.emissiveTexture.fileName.isEmpty() ||
           !material.opacityTexture.fileName.isEmpty() || !material.bumpTexture.fileName.isEmpty();
}

void ExpectUntouched(const MeshMaterialInfo& material)
{
    const MeshMaterialInfo usual;
    EXPECT_FALSE(HasAnyColor(material));
    EXPECT_FALSE(HasAnyMap(material));
    EXPECT_EQ(material.illum, usual.illum);
    EXPECT_EQ(material.specularExponent, usual.specularExponent);
    EXPECT_EQ(material.refractionIndex, usual.refractionIndex);
    EXPECT_EQ(material.opacity, usual.opacity);
}

} // namespace

TEST(MTLReader, ReadsAMaterialForEachNewmtl)
{
    EXPECT_EQ(NamesIn("newmtl b\nnewmtl a\nnewmtl b\nnewmtl W\xC3\xBCrfel\n"),
              (Names{"b", "a", "b", "W\xC3\xBCrfel"}));
}

TEST(MTLReader, GivesDefaultsToAMaterialWithoutStatements)
{
    ExpectUntouched(MaterialOf(""));
    EXPECT_EQ(MaterialOf("").texCoordSet, 0);
}

TEST(MTLReader, ReadsScalars)
{
    const MeshMaterialInfo material = MaterialOf("Ns 96.5\nNi 1.25\nd 0.5\nillum 7\n");
    EXPECT_EQ(material.specularExponent, 96.5f);
    EXPECT_EQ(material.refractionIndex, 1.25f);
    EXPECT_EQ(material.opacity, 0.5f);
    EXPECT_EQ(material.illum, 7);
    EXPECT_FALSE(HasAnyColor(material));
}

TEST(MTLReader, ReadsColors)
{
    const MeshMaterialInfo material = MaterialOf("Ka 0.1 0.2 0.3\nKd 0.8 0.1 0.1\nKs 1 2 -3\nKe 1e-1 .5 7\n");
    EXPECT_EQ(material.ambient, Point(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(material.diffuse, Point(0.8f, 0.1f, 0.1f));
    EXPECT_EQ(material.specular, Point(1, 2, -3));
    EXPECT_EQ(material.emissive, Point(0.1f, 0.5f, 7));
    EXPECT_TRUE(material.hasAmbient && material.hasDiffuse && material.hasSpecular && material.hasEmissive);
}

TEST(MTLReader, SaysWhichColorsWereSet)
{
    EXPECT_TRUE(MaterialOf("Ka 1 1 1\n").hasAmbient);
    EXPECT_TRUE(MaterialOf("Kd 1 1 1\n").hasDiffuse);
    EXPECT_TRUE(MaterialOf("Ks 1 1 1\n").hasSpecular);
    EXPECT_TRUE(MaterialOf("Ke 1 1 1\n").hasEmissive);
    EXPECT_FALSE(MaterialOf("Kd 1 1 1\n").hasAmbient);
}

TEST(MTLReader, TakesTheLastStatementOfAKind)
{
    const MeshMaterialInfo material =
        MaterialOf("Ns 1\nKd 1 1 1\nillum 1\nd 0.1\nNs 2\nKd 2 3 4\nillum 5\nd 0.2\nNi 3\nNi 4\n");
    EXPECT_EQ(material.specularExponent, 2);
    EXPECT_EQ(material.diffuse, Point(2, 3, 4));
    EXPECT_EQ(material.illum, 5);
    EXPECT_EQ(material.opacity, 0.2f);
    EXPECT_EQ(material.refractionIndex, 4);
}

TEST(MTLReader, GivesStatementsToTheLatestMaterial)
{
    const Materials materials = LoadMtl("newmtl a\nillum 5\nnewmtl b\nillum 6\nnewmtl a\nillum 7\n");
    ASSERT_EQ(materials.size(), 3U);
    EXPECT_EQ(materials[0].illum, 5);
    EXPECT_EQ(materials[1].illum, 6);
    EXPECT_EQ(materials[2].illum, 7);
}

TEST(MTLReader, IgnoresStatementsBeforeTheFirstMaterial)
{
    EXPECT_TRUE(LoadMtl("Ns 5\nKd 1 1 1\nillum 7\nmap_Kd a.png\nmap_Kd -clamp on a.png\nKa 1 2\n").empty());
    ExpectUntouched(LoadMtl("Ns 5\nKd 1 1 1\nillum 7\nbump a.png\nnewmtl a\n").at(0));
}

TEST(MTLReader, IgnoresANewmtlOfAnyOtherNumberOfWords)
{
    const Materials materials = LoadMtl("newmtl a\nnewmtl b c\nillum 5\nnewmtl\nnewmtl b c d\nNs 6\n");
    ASSERT_EQ(materials.size(), 1U);
    EXPECT_EQ(materials[0].name, "a");
    EXPECT_EQ(materials[0].illum, 5);
    EXPECT_EQ(materials[0].specularExponent, 6);
}

TEST(MTLReader, MayNameAMaterialLikeAKeyword)
{
    EXPECT_EQ(NamesIn("newmtl newmtl\nnewmtl Kd\nnewmtl #\n"), (Names{"newmtl", "Kd", "#"}));
}

TEST(MTLReader, IgnoresScalarsOfAnyOtherNumberOfWords)
{
    ExpectUntouched(MaterialOf("Ns\nNs 1 2\nNi 3 4 5\nd\nd -halo 0.5\nillum 1 2\nillum 5 6 7 8\n"));
}

TEST(MTLReader, IgnoresColorsOfAnyOtherNumberOfWords)
{
    ExpectUntouched(
        MaterialOf("Ka 0.5\nKd 0.8\nKs 1 2\nKe\nKa 1 2 3 4\nKd 1 2 3 4 5\nKd spectral a.rfl 1 2\n"));
}

TEST(MTLReader, TakesAnyThreeWordsForAColor)
{
    EXPECT_EQ(MaterialOf("Kd spectral a.rfl 5\n").diffuse, Point(0, 0, 5));
}

TEST(MTLReader, IgnoresOtherStatements)
{
    ExpectUntouched(
        MaterialOf("Tr 0.5\nTf 1 1 1\nmap_Ka a.png\nmap_Ks a.png\nmap_Ns a.png\ndisp a.png\nrefl a.png\n"
                   "decal a.png\nsharpness 60\nPr 0.5\nnorm a.png\nv 1 2 3\nusemtl b\n"));
}

TEST(MTLReader, TellsKeywordsByTheirExactLetters)
{
    ExpectUntouched(
        MaterialOf("NS 1\nns 1\nNI 1\nD 0.5\nIllum 5\nKA 1 1 1\nkd 1 1 1\nKD 1 1 1\nmap_kd a.png\n"
                   "MAP_KD a.png\nmap_KD a.png\nmap_D a.png\nBump a.png\nmap_bump a.png\nNsx 1\nN 1\n"));
    EXPECT_EQ(NamesIn("Newmtl a\nNEWMTL a\nnewmtl_ a\n"), Names());
}

TEST(MTLReader, ReadsLinesIndentedByTabsAndBlanks)
{
    const MeshMaterialInfo material = MaterialOf("\tKd 1 2 3\n \t Ns 5 \t\n\t\tillum 6\t\r\n");
    EXPECT_EQ(material.diffuse, Point(1, 2, 3));
    EXPECT_EQ(material.specularExponent, 5);
    EXPECT_EQ(material.illum, 6);
    EXPECT_EQ(NamesIn("\tnewmtl a\t\n"), (Names{"a"}));
}

TEST(MTLReader, TrimsEverySpaceCharacterOfALine)
{
    EXPECT_EQ(NamesIn("\x0B\x0C\xC2\xA0newmtl a\xE2\x80\x89\xC2\x85\n"), (Names{"a"}));
}

TEST(MTLReader, IgnoresLinesSeparatedByTabs)
{
    ExpectUntouched(MaterialOf("Kd\t1\t2\t3\nNs\t5\nillum\t5\n"));
    EXPECT_EQ(NamesIn("newmtl\ta\n"), Names());
}

TEST(MTLReader, TakesATabBetweenWordsForAPartOfThem)
{
    EXPECT_EQ(NamesIn("newmtl a\tb\n"), (Names{"a\tb"}));
    EXPECT_EQ(MaterialOf("Kd 1\t 2 3\n").diffuse, Point(1, 2, 3));
}

// A hash behind blanks begins a word, so the line is a statement of its own.
TEST(MTLReader, TakesALineForACommentBeforeItTrims)
{
    EXPECT_EQ(NamesIn("#newmtl a\n# newmtl b\n\xEF\xBB\xBF#newmtl c\n"), Names());
    EXPECT_EQ(MaterialOf("\t# c\n # Kd 1 2 3\nillum 5\n").illum, 5);
    ExpectUntouched(MaterialOf("Ns 5 # shiny\nd 0.5 #\n"));
    EXPECT_EQ(MaterialOf("#Ns 5\\\nillum 5\nillum 6\n").illum, 6);
}

TEST(MTLReader, ReadsWhatIsNoNumberAsZero)
{
    const MeshMaterialInfo material = MaterialOf("Ns x\nNi 1,5\nd 0x1\nillum 2.5\nKd a 1 b\n");
    EXPECT_EQ(material.specularExponent, 0);
    EXPECT_EQ(material.refractionIndex, 0);
    EXPECT_EQ(material.opacity, 0);
    EXPECT_EQ(material.illum, 0);
    EXPECT_EQ(material.diffuse, Point(0, 1, 0));
}

TEST(MTLReader, ReadsIlluminationModelsOfTheIntegerRange)
{
    EXPECT_EQ(MaterialOf("illum 2147483647\n").illum, 2147483647);
    EXPECT_EQ(MaterialOf("illum -1\n").illum, -1);
    EXPECT_EQ(MaterialOf("illum 2147483648\n").illum, 0);
}

TEST(MTLReader, JoinsLinesAndEndsThemAsTheObjReader)
{
    EXPECT_EQ(MaterialOf("Kd 1 \\\n 2 \\\r\n 3\n").diffuse, Point(1, 2, 3));
    EXPECT_EQ(NamesIn(test::Bytes("newmtl a\0newmtl b\r\nnewmtl c\\d\nnewmtl e\\\nf")),
              (Names{"a", "b", "c\\d", "e\\f"}));
    EXPECT_EQ(NamesIn("\xEF\xBB\xBFnewmtl a\n"), (Names{"a"}));
}

TEST(MTLReader, EndsAtALineThatIsTooLong)
{
    const auto library = [](int size) {
        return "newmtl a\n" + QByteArray("newmtl b").leftJustified(size, ' ') + "\nnewmtl c\n";
    };
    EXPECT_EQ(NamesIn(library(kLongestLine)), (Names{"a", "b", "c"}));
    EXPECT_EQ(NamesIn(library(kLongestLine + 1)), (Names{"a"}));
}

TEST(MTLReader, LoadsAnEmptyLibrary)
{
    EXPECT_TRUE(LoadMtl("").empty());
    EXPECT_TRUE(LoadMtl("# nothing\n\n").empty());
}

TEST(MTLReader, ReplacesTheListOfMaterials)
{
    const Directory directory;
    Materials materials(3);
    ASSERT_TRUE(OBJFile::LoadMTLFile(directory.Write("newmtl a\n"), materials, 0));
    ASSERT_EQ(materials.size(), 1U);
    EXPECT_EQ(materials[0].name, "a");
    ASSERT_TRUE(OBJFile::LoadMTLFile(directory.Write(""), materials, 0));
    EXPECT_TRUE(materials.empty());
}

TEST(MTLReader, EmptiesTheListAndFailsForWhatIsNoPlainFile)
{
    const Directory directory;
    const QString pipe = directory.Path(QStringLiteral("pipe.mtl"));
    ASSERT_EQ(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    for (const QString& path :
         {pipe, directory.Path(QStringLiteral("missing.mtl")), directory.Path(QStringLiteral(".")), QString(),
          QStringLiteral("/dev/zero")}) {
        Materials materials(2);
        EXPECT_FALSE(OBJFile::LoadMTLFile(path, materials, 0)) << path.toStdString();
        EXPECT_TRUE(materials.empty());
    }
}

TEST(MTLReader, EmptiesTheListForAFileOfWhichNoByteCanBeRead)
{
    const Directory directory;
    const QString path = directory.Path(QStringLiteral("unreadable.mtl"));
    ASSERT_NO_FATAL_FAILURE(test::LinkToAnUnreadableFile(path));
    Materials materials(2);
    EXPECT_TRUE(OBJFile::LoadMTLFile(path, materials, 0));
    EXPECT_TRUE(materials.empty());
}

TEST(MTLReader, LoadsTensOfThousandsOfMaterials)
{
    QByteArray text;
    for (int i = 0; i < 50'000; ++i)
        text += "newmtl m" + QByteArray::number(i) + "\nNs " + QByteArray::number(i) + "\n";
    const Materials materials = LoadMtl(text);
    ASSERT_EQ(materials.size(), 50'000U);
    EXPECT_EQ(materials[49'999].name, "m49999");
    EXPECT_EQ(materials[49'999].specularExponent, 49'999);
}
