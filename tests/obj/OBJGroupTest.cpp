#include <string>
#include <utility>

#include <QDir>

#include <gtest/gtest.h>

#include "tests/obj/OBJLoadSupport.h"

namespace {

using test::Directory;
using test::Groups;
using test::LoadedObj;
using test::LoadObj;
using test::LoadObjFile;
using test::Point;
using test::VertexLines;

using Names = std::vector<std::string>;
using Ranges = std::vector<std::pair<int, int>>;

Groups GroupsOf(const QByteArray& text)
{
    return LoadObj(VertexLines(9) + text).groups;
}

// First face and count of each group.
Ranges RangesOf(const QByteArray& text)
{
    Ranges ranges;
    for (const MeshTextureGroup& group : GroupsOf(text))
        ranges.emplace_back(group.firstFaceIndex, group.faceCount);
    return ranges;
}

// The illumination models of the groups' materials: small numbers that tell materials apart.
std::vector<int> ModelsOf(const Groups& groups)
{
    std::vector<int> models;
    for (const MeshTextureGroup& group : groups)
        models.push_back(group.material.illum);
    return models;
}

// Illumination models; 2 is that of a default material.
std::vector<int> ModelsOf(const QByteArray& text, const QByteArray& library)
{
    return ModelsOf(LoadObj(text, library).groups);
}

void ExpectDefaultMaterial(const MeshMaterialInfo& material)
{
    const MeshMaterialInfo usual;
    EXPECT_EQ(material.texCoordSet, 0);
    EXPECT_EQ(material.illum, usual.illum);
    EXPECT_EQ(material.opacity, usual.opacity);
    EXPECT_EQ(material.diffuse, usual.diffuse);
    EXPECT_FALSE(material.hasAmbient || material.hasDiffuse || material.hasSpecular || material.hasEmissive);
    EXPECT_TRUE(material.diffuseTexture.fileName.isEmpty());
}

} // namespace

TEST(OBJGroups, BeginAtEachUsemtl)
{
    EXPECT_EQ(LoadObj("usemtl b\nusemtl a\nusemtl c\n").GroupNames(), (Names{"b", "a", "c"}));
}

TEST(OBJGroups, OfOneNameStayApart)
{
    const QByteArray text = "usemtl a\nf 1 2 3\nusemtl b\nf 1 2 3\nusemtl a\nf 1 2 3 4\n";
    EXPECT_EQ(LoadObj(text).GroupNames(), (Names{"a", "b", "a"}));
    EXPECT_EQ(RangesOf(text), (Ranges{{0, 1}, {1, 1}, {2, 2}}));
}

TEST(OBJGroups, HaveNoRangeWithoutAFace)
{
    EXPECT_EQ(RangesOf("f 1 2 3\nusemtl a\nusemtl b\nf 1 2 3\n"), (Ranges{{-1, 0}, {1, 1}}));
}

TEST(OBJGroups, DoNotTakeFacesBeforeTheFirstUsemtl)
{
    EXPECT_EQ(RangesOf("f 1 2 3\nf 1 2 3 4\nusemtl a\nf 1 2 3\n"), (Ranges{{3, 1}}));
    EXPECT_TRUE(GroupsOf("f 1 2 3\n").empty());
}

TEST(OBJGroups, CountTheTrianglesOfPolygons)
{
    EXPECT_EQ(RangesOf("usemtl a\nf 1 2 3 4 5\nf 1 2 3\nf 1 2 3 4\nusemtl b\nf 1 2 3 4\n"),
              (Ranges{{0, 6}, {6, 2}}));
}

TEST(OBJGroups, CountTexturedPolygonsInTheListOfTextureFaces)
{
    EXPECT_EQ(
        RangesOf(
            "f 1 2 3\nf 1 2 3\nusemtl a\nf 1/1 2/2 3/3 4/4\nusemtl b\nf 1/1 2/2 3/3\nusemtl c\nf 1 2 3\n"),
        (Ranges{{0, 2}, {2, 1}, {5, 1}}));
}

TEST(OBJGroups, BeginWhereTheListOfTheirFirstPolygonStands)
{
    EXPECT_EQ(RangesOf("f 1 2 3\nf 1/1 2/2 3/3\nusemtl a\nf 1 2 3\nf 1/1 2/2 3/3\n"), (Ranges{{2, 2}}));
    EXPECT_EQ(RangesOf("f 1 2 3\nf 1/1 2/2 3/3\nusemtl a\nf 1/1 2/2 3/3\nf 1 2 3\n"), (Ranges{{1, 2}}));
}

TEST(OBJGroups, CountByTextureFacesWhenAPolygonHasFewerOfThem)
{
    EXPECT_EQ(RangesOf("usemtl a\nf 1/1 2/2 3/3 4 5\n"), (Ranges{{0, 1}}));
    EXPECT_EQ(RangesOf("f 1 2 3\nusemtl a\nf 1/1 2/2 3 4 5\n"), (Ranges{{1, 3}}));
}

TEST(OBJGroups, CountFacesThatAreDroppedLater)
{
    const LoadedObj obj =
        LoadObj(VertexLines(3) + "f 1 2 9\nusemtl a\nf 1 2 9\nf 1 2 3\nusemtl b\nf 3 2 1\n");
    EXPECT_EQ(obj.mesh.GetFaceNum(), 2);
    ASSERT_EQ(obj.groups.size(), 2U);
    EXPECT_EQ(obj.groups[0].firstFaceIndex, 1);
    EXPECT_EQ(obj.groups[0].faceCount, 2);
    EXPECT_EQ(obj.groups[1].firstFaceIndex, 3);
    EXPECT_EQ(obj.groups[1].faceCount, 1);
}

TEST(OBJGroups, GoOnAfterAUsemtlOfTwoNames)
{
    EXPECT_EQ(RangesOf("usemtl a\nf 1 2 3\nusemtl b c\nf 1 2 3\nusemtl\nf 1 2 3\n"), (Ranges{{0, 3}}));
}

TEST(OBJGroups, GoOnAcrossOtherStatements)
{
    EXPECT_EQ(RangesOf("usemtl a\nf 1 2 3\no x\ng y\nmtllib missing.mtl\nf 1 2 3\n"), (Ranges{{0, 2}}));
}

TEST(OBJGroups, KeepADefaultMaterialWithTheirNameWithoutALibrary)
{
    const Groups groups = LoadObj("usemtl \xC3\xA4\n").groups;
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups[0].material.name, "\xC3\xA4");
    ExpectDefaultMaterial(groups[0].material);
    EXPECT_FALSE(groups[0].isHidden || groups[0].isSelected);
}

TEST(OBJGroups, KeepADefaultMaterialWithTheirNameWhenTheLibraryLacksIt)
{
    for (const char* const library :
         {"", "newmtl b\nKd 1 0 0\n", "newmtl A\nKd 1 0 0\n", "newmtl aa\nKd 1 0 0\n"}) {
        const Groups groups = LoadObj("mtllib lib.mtl\nusemtl a\n", library).groups;
        ASSERT_EQ(groups.size(), 1U);
        EXPECT_EQ(groups[0].material.name, "a");
        ExpectDefaultMaterial(groups[0].material);
    }
}

TEST(OBJGroups, TakeTheWholeMaterial)
{
    const Groups groups = LoadObj("mtllib lib.mtl\nusemtl a\n",
                                  "newmtl a\nNs 10\nNi 1.5\nd 0.5\nillum 4\nKa 1 2 3\nKd 4 5 6\nKs 7 8 9\n"
                                  "Ke 10 11 12\nmap_Kd a.png\nmap_Ke b.png\nmap_d c.png\nbump d.png\n")
                              .groups;
    ASSERT_EQ(groups.size(), 1U);
    const MeshMaterialInfo& material = groups[0].material;
    EXPECT_EQ(material.name, "a");
    EXPECT_EQ(material.texCoordSet, 0);
    EXPECT_EQ(material.specularExponent, 10);
    EXPECT_EQ(material.refractionIndex, 1.5f);
    EXPECT_EQ(material.opacity, 0.5f);
    EXPECT_EQ(material.illum, 4);
    EXPECT_EQ(material.ambient, Point(1, 2, 3));
    EXPECT_EQ(material.diffuse, Point(4, 5, 6));
    EXPECT_EQ(material.specular, Point(7, 8, 9));
    EXPECT_EQ(material.emissive, Point(10, 11, 12));
    EXPECT_TRUE(material.hasAmbient && material.hasDiffuse && material.hasSpecular && material.hasEmissive);
    EXPECT_TRUE(material.diffuseTexture.fileName.endsWith(QStringLiteral("/a.png")));
    EXPECT_TRUE(material.emissiveTexture.fileName.endsWith(QStringLiteral("/b.png")));
    EXPECT_TRUE(material.opacityTexture.fileName.endsWith(QStringLiteral("/c.png")));
    EXPECT_TRUE(material.bumpTexture.fileName.endsWith(QStringLiteral("/d.png")));
}

TEST(OBJGroups, TakeTheFirstMaterialOfTheirName)
{
    EXPECT_EQ(ModelsOf("mtllib lib.mtl\nusemtl a\nusemtl b\nusemtl a\n",
                       "newmtl b\nillum 5\nnewmtl a\nillum 6\nnewmtl a\nillum 7\nnewmtl b\nillum 8\n"),
              (std::vector<int>{6, 5, 6}));
}

TEST(OBJGroups, FindTheirMaterialByItsBytes)
{
    EXPECT_EQ(ModelsOf("mtllib lib.mtl\nusemtl \xC3\xA4\nusemtl a\\b\nusemtl a\xCC\x88\n",
                       "newmtl \xC3\xA4\nillum 5\nnewmtl a\\b\nillum 6\n"),
              (std::vector<int>{5, 6, 2}));
    // What is no UTF-8 becomes the same replacement in both files.
    EXPECT_EQ(ModelsOf("mtllib lib.mtl\nusemtl \xFF\n", "newmtl \xFE\nillum 5\n"), (std::vector<int>{5}));
}

TEST(OBJGroups, TakeMaterialsOfALibraryNamedBehindThem)
{
    EXPECT_EQ(ModelsOf("usemtl a\nf 1 1 1\nmtllib lib.mtl\n", "newmtl a\nillum 5\n"), (std::vector<int>{5}));
}

TEST(OBJGroups, TakeMaterialsOfTheLastLibraryAlone)
{
    const Directory directory;
    (void)directory.Write("newmtl a\nillum 5\nnewmtl b\nillum 5\n", QStringLiteral("one.mtl"));
    (void)directory.Write("newmtl a\nillum 6\n", QStringLiteral("two.mtl"));
    const QString path =
        directory.Write("mtllib one.mtl\nusemtl a\nusemtl b\nmtllib two.mtl\nusemtl a\nusemtl b\n");
    EXPECT_EQ(ModelsOf(LoadObjFile(path).groups), (std::vector<int>{6, 2, 6, 2}));
}

TEST(OBJGroups, HaveDefaultMaterialsWhenTheLastLibraryIsMissing)
{
    EXPECT_EQ(ModelsOf("mtllib lib.mtl\nusemtl a\nmtllib missing.mtl\n", "newmtl a\nillum 5\n"),
              (std::vector<int>{2}));
    EXPECT_EQ(ModelsOf("mtllib lib.mtl\nusemtl a\nmtllib .\n", "newmtl a\nillum 5\n"), (std::vector<int>{2}));
}

TEST(OBJGroups, TakeMaterialsWhenOnlyAnEarlierLibraryIsMissing)
{
    EXPECT_EQ(ModelsOf("mtllib missing.mtl\nusemtl a\nmtllib lib.mtl\n", "newmtl a\nillum 5\n"),
              (std::vector<int>{5}));
}

TEST(OBJGroups, DoNotKnowALibraryWhoseNameHasABlank)
{
    const Directory directory;
    (void)directory.Write("newmtl a\nillum 5\n", QStringLiteral("my lib.mtl"));
    (void)directory.Write("newmtl a\nillum 6\n", QStringLiteral("lib.mtl"));
    const QString path = directory.Write("usemtl a\nmtllib my lib.mtl\n");
    EXPECT_EQ(ModelsOf(LoadObjFile(path).groups), (std::vector<int>{2}));
}

TEST(OBJGroups, DoNotKnowSeveralLibrariesInOneStatement)
{
    EXPECT_EQ(ModelsOf("mtllib lib.mtl\nusemtl a\nmtllib missing.mtl lib.mtl\n", "newmtl a\nillum 5\n"),
              (std::vector<int>{5}));
}

TEST(OBJGroups, FindTheirLibraryBesideTheObjFile)
{
    const Directory directory;
    ASSERT_TRUE(QDir(directory.Path(QStringLiteral("."))).mkpath(QStringLiteral("models/sub")));
    (void)directory.Write("newmtl a\nillum 5\n", QStringLiteral("models/lib.mtl"));
    (void)directory.Write("newmtl a\nillum 6\n", QStringLiteral("models/sub/lib.mtl"));
    (void)directory.Write("newmtl a\nillum 7\n", QStringLiteral("lib.mtl"));
    (void)directory.Write("newmtl a\nillum 8\n", QStringLiteral("models/sub\\lib.mtl"));
    const std::pair<const char*, int> libraries[] = {
        {"lib.mtl", 5},  {"sub/lib.mtl", 6},  {"../lib.mtl", 7}, {"./lib.mtl", 5},
        {"/lib.mtl", 5}, {"sub\\lib.mtl", 8}, {"LIB.mtl", 2}};
    for (const auto& [name, model] : libraries) {
        const QString path =
            directory.Write(QByteArray("usemtl a\nmtllib ") + name, QStringLiteral("models/x.obj"));
        EXPECT_EQ(ModelsOf(LoadObjFile(path).groups), (std::vector<int>{model})) << name;
    }
}

TEST(OBJGroups, FindTheLibraryOfAnObjFileNamedWithoutDirectory)
{
    const Directory directory;
    (void)directory.Write("newmtl a\nillum 5\n", QStringLiteral("lib.mtl"));
    (void)directory.Write("usemtl a\nmtllib lib.mtl\n", QStringLiteral("x.obj"));
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(directory.Path(QStringLiteral("."))));
    EXPECT_EQ(ModelsOf(LoadObjFile(QStringLiteral("x.obj")).groups), (std::vector<int>{5}));
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST(OBJGroups, FindALibraryWithAUnicodeName)
{
    const Directory directory;
    (void)directory.Write("newmtl a\nillum 5\n", QString::fromUtf8("W\xc3\xbcrfel\xf0\x9f\x93\xa6.mtl"));
    const QString path = directory.Write("usemtl a\nmtllib W\xc3\xbcrfel\xf0\x9f\x93\xa6.mtl\n");
    EXPECT_EQ(ModelsOf(LoadObjFile(path).groups), (std::vector<int>{5}));
}

TEST(OBJGroups, MayTakeTheirMaterialsFromTheirOwnFile)
{
    const Directory directory;
    const QString path =
        directory.Write("mtllib x.obj\nusemtl a\nnewmtl a\nillum 5\n", QStringLiteral("x.obj"));
    EXPECT_EQ(ModelsOf(LoadObjFile(path).groups), (std::vector<int>{5}));
}

TEST(OBJGroups, FindTheirMaterialsAmongVeryMany)
{
    constexpr int kCount = 100'000;
    QByteArray text("mtllib lib.mtl\n"), library;
    for (int i = 0; i < kCount; ++i) {
        library += "newmtl m" + QByteArray::number(i) + "\nillum " + QByteArray::number(i) + '\n';
        text += "usemtl m" + QByteArray::number(kCount + 9 - i) + '\n';
    }
    const Groups groups = LoadObj(text, library + "newmtl m7\nillum -1\n").groups;
    ASSERT_EQ(groups.size(), std::size_t(kCount));
    for (int i = 0; i < kCount; ++i)
        ASSERT_EQ(groups[std::size_t(i)].material.illum, i < 10 ? 2 : kCount + 9 - i);
}

TEST(OBJGroups, OfOneNameByTheHundredThousandTakeOneMaterial)
{
    const Groups groups = LoadObj("mtllib lib.mtl\n" + QByteArray("usemtl a\n").repeated(100'000),
                                  "newmtl a\nillum 5\n" + QByteArray("newmtl b\n").repeated(100'000))
                              .groups;
    ASSERT_EQ(groups.size(), 100'000U);
    for (const MeshTextureGroup& group : groups)
        ASSERT_EQ(group.material.illum, 5);
}
