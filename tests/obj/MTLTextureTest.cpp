#include <cstring>
#include <thread>

#include <QDir>
#include <QImage>
#include <gtest/gtest.h>

#include "tests/common/OpenFiles.h"
#include "tests/obj/OBJLoadSupport.h"

namespace {

using test::Directory;
using test::LoadedObj;
using test::Materials;

// Libraries and pictures side by side in a directory that lives as long as the test.
class MTLTextures : public ::testing::Test {
protected:
    void WritePicture(const QString& name, QRgb color, int width = 3, int height = 2) const
    {
        QImage image(width, height, QImage::Format_RGB32);
        image.fill(color);
        ASSERT_TRUE(image.save(m_directory.Path(name)));
    }

    Materials Load(const QByteArray& text, int option = 0) const
    {
        Materials materials;
        EXPECT_TRUE(
            OBJFile::LoadMTLFile(m_directory.Write(text, QStringLiteral("lib.mtl")), materials, option));
        return materials;
    }
    MeshMaterialInfo MaterialOf(const QByteArray& statements, int option = 0) const
    {
        return Load("newmtl a\n" + statements, option).at(0);
    }
    QString Path(const char* name) const { return m_directory.Path(QString::fromUtf8(name)); }

    Directory m_directory;
};

constexpr QRgb kRed = qRgb(255, 0, 0);
constexpr QRgb kGreen = qRgb(0, 255, 0);
constexpr QRgb kBlue = qRgb(0, 0, 255);
constexpr QRgb kWhite = qRgb(255, 255, 255);

// The first pixel; 0 of an empty picture.
QRgb ColorOf(const MeshTextureInfo& picture)
{
    QRgb color = 0;
    if (picture.isValidSize())
        std::memcpy(&color, picture.pixels.constData(), sizeof color);
    return color;
}

} // namespace

TEST_F(MTLTextures, AreLoadedFromTheLibrarysDirectory)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    const MeshTextureInfo picture = MaterialOf("map_Kd red.png\n").diffuseTexture;
    EXPECT_EQ(picture.width, 3);
    EXPECT_EQ(picture.height, 2);
    EXPECT_EQ(picture.pixels.size(), 24);
    EXPECT_EQ(ColorOf(picture), kRed);
    EXPECT_EQ(picture.fileName, Path("red.png"));
}

TEST_F(MTLTextures, GoEachToItsPlace)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    WritePicture(QStringLiteral("green.png"), kGreen);
    WritePicture(QStringLiteral("blue.png"), kBlue);
    WritePicture(QStringLiteral("white.png"), kWhite);
    const MeshMaterialInfo material =
        MaterialOf("map_Kd red.png\nmap_Ke green.png\nmap_d blue.png\nmap_Bump white.png\n");
    EXPECT_EQ(ColorOf(material.diffuseTexture), kRed);
    EXPECT_EQ(ColorOf(material.emissiveTexture), kGreen);
    EXPECT_EQ(ColorOf(material.opacityTexture), kBlue);
    EXPECT_EQ(ColorOf(material.bumpTexture), kWhite);
}

TEST_F(MTLTextures, OfBumpAndMapBumpGoToTheSamePlace)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    WritePicture(QStringLiteral("green.png"), kGreen);
    EXPECT_EQ(ColorOf(MaterialOf("bump red.png\n").bumpTexture), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Bump red.png\nbump green.png\n").bumpTexture), kGreen);
    EXPECT_EQ(ColorOf(MaterialOf("bump red.png\nmap_Bump green.png\n").bumpTexture), kGreen);
    EXPECT_EQ(ColorOf(MaterialOf("bump red.png\nmap_bump green.png\n").bumpTexture), kRed);
}

TEST_F(MTLTextures, MayHaveOptionsAndAnyNumberOfWords)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    for (const char* const statement :
         {"map_Kd -clamp on red.png\n", "map_Kd -s 2 2 1 red.png\n", "map_Kd -bm 2 red.png\n",
          "map_Kd -s 1 1 1 -o 0 0 0 -mm 0 1 -clamp on red.png\n", "map_Kd   red.png  \n",
          "\tmap_Kd red.png\t\n", "map_Kd -blendu \\\n off red.png\n"})
        EXPECT_EQ(ColorOf(MaterialOf(statement).diffuseTexture), kRed) << statement;
}

TEST_F(MTLTextures, MayHaveBlanksInTheirNames)
{
    WritePicture(QStringLiteral("my red wood.png"), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd my red wood.png\n").diffuseTexture), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd \"my red wood.png\"\n").diffuseTexture), kRed);
}

TEST_F(MTLTextures, MayBeNamedWithBackslashes)
{
    ASSERT_TRUE(QDir(m_directory.Path(QStringLiteral("."))).mkpath(QStringLiteral("wood")));
    WritePicture(QStringLiteral("wood/oak.png"), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd wood\\oak.png\n").diffuseTexture), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd wood\\\\oak.png\n").diffuseTexture), kRed);
}

TEST_F(MTLTextures, OfALaterStatementReplaceTheEarlier)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    WritePicture(QStringLiteral("green.png"), kGreen, 5, 5);
    const MeshTextureInfo picture = MaterialOf("map_Kd red.png\nmap_Kd green.png\n").diffuseTexture;
    EXPECT_EQ(ColorOf(picture), kGreen);
    EXPECT_EQ(picture.width, 5);
    EXPECT_EQ(picture.fileName, Path("green.png"));
}

TEST_F(MTLTextures, ThatAreMissingAreEmptyButForTheirName)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    const MeshMaterialInfo material = MaterialOf("map_Kd red.png\nmap_Kd missing.png\nNs 5\n");
    EXPECT_FALSE(material.diffuseTexture.isValidSize());
    EXPECT_TRUE(material.diffuseTexture.pixels.isEmpty());
    EXPECT_EQ(material.diffuseTexture.fileName, Path("missing.png"));
    EXPECT_EQ(material.specularExponent, 5);
}

TEST_F(MTLTextures, ThatAreNoPicturesAreEmptyButForTheirName)
{
    (void)m_directory.Write("no picture", QStringLiteral("text.png"));
    const MeshMaterialInfo material = MaterialOf("map_Kd text.png\nmap_d .\nNs 5\n");
    EXPECT_FALSE(material.diffuseTexture.isValidSize());
    EXPECT_EQ(material.diffuseTexture.fileName, Path("text.png"));
    EXPECT_FALSE(material.opacityTexture.isValidSize());
    EXPECT_EQ(material.specularExponent, 5);
}

TEST_F(MTLTextures, AreClosedWhetherTheyArePicturesOrNot)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    (void)m_directory.Write("no picture", QStringLiteral("text.png"));
    const MeshMaterialInfo material = MaterialOf("map_Kd red.png\nmap_d text.png\n");
    EXPECT_TRUE(material.diffuseTexture.isValidSize());
    EXPECT_FALSE(material.opacityTexture.isValidSize());
    EXPECT_FALSE(test::IsOpen(Path("red.png")));
    EXPECT_FALSE(test::IsOpen(Path("text.png")));
}

TEST_F(MTLTextures, WithoutANameAreIgnored)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd red.png\nmap_Kd\nbump\n").diffuseTexture), kRed);
}

TEST_F(MTLTextures, BelongToTheLatestMaterial)
{
    WritePicture(QStringLiteral("red.png"), kRed);
    WritePicture(QStringLiteral("green.png"), kGreen);
    const Materials materials =
        Load("map_Kd red.png\nnewmtl a\nmap_Kd green.png\nnewmtl b\nnewmtl c d\nmap_Kd red.png\n");
    ASSERT_EQ(materials.size(), 2U);
    EXPECT_EQ(ColorOf(materials[0].diffuseTexture), kGreen);
    EXPECT_EQ(ColorOf(materials[1].diffuseTexture), kRed);
}

TEST_F(MTLTextures, AreScaledDownToTheLongestSideAskedFor)
{
    WritePicture(QStringLiteral("red.png"), kRed, 64, 32);
    const auto widthFor = [this](int option) {
        return MaterialOf("map_Kd red.png\n", option).diffuseTexture.width;
    };
    EXPECT_EQ(widthFor(0), 64);
    EXPECT_EQ(widthFor(-1), 64);
    EXPECT_EQ(widthFor(100), 64);
    EXPECT_EQ(widthFor(16), 16);
    EXPECT_EQ(MaterialOf("map_Kd red.png\n", 16).diffuseTexture.height, 8);
}

TEST_F(MTLTextures, OfAnObjFileAreThoseOfItsLibrarysDirectory)
{
    ASSERT_TRUE(QDir(m_directory.Path(QStringLiteral("."))).mkpath(QStringLiteral("sub")));
    WritePicture(QStringLiteral("sub/wood.png"), kRed, 64, 32);
    WritePicture(QStringLiteral("wood.png"), kGreen);
    (void)m_directory.Write("newmtl a\nmap_Kd wood.png\n", QStringLiteral("sub/lib.mtl"));
    const QString path = m_directory.Write("mtllib sub/lib.mtl\nusemtl a\nusemtl a\n");
    const LoadedObj obj = test::LoadObjFile(path, 16);
    ASSERT_EQ(obj.groups.size(), 2U);
    for (const MeshTextureGroup& group : obj.groups) {
        EXPECT_EQ(ColorOf(group.material.diffuseTexture), kRed);
        EXPECT_EQ(group.material.diffuseTexture.width, 16);
    }
}

TEST_F(MTLTextures, OfOneFileShareTheirPixels)
{
    WritePicture(QStringLiteral("wood.png"), kRed, 256, 256);
    WritePicture(QStringLiteral("other.png"), kGreen);
    QByteArray text;
    for (int i = 0; i < 1000; ++i)
        text += "newmtl m\nmap_Kd wood.png\nmap_Ke wood.png\nmap_d -clamp on wood.png\nbump -bm 2 wood.png\n";
    const Materials materials = Load(text + "newmtl o\nmap_Kd other.png\nmap_Ke wood.png\n");
    ASSERT_EQ(materials.size(), 1001U);
    const char* const pixels = materials[0].diffuseTexture.pixels.constData();
    for (int i = 0; i < 1000; ++i) {
        const MeshMaterialInfo& material = materials[std::size_t(i)];
        for (const MeshTextureInfo* picture : {&material.diffuseTexture, &material.emissiveTexture,
                                               &material.opacityTexture, &material.bumpTexture}) {
            ASSERT_EQ(picture->pixels.constData(), pixels);
            ASSERT_EQ(picture->width, 256);
            ASSERT_EQ(picture->fileName, Path("wood.png"));
        }
    }
    EXPECT_EQ(ColorOf(materials[1000].diffuseTexture), kGreen);
    EXPECT_EQ(materials[1000].emissiveTexture.pixels.constData(), pixels);
}

TEST_F(MTLTextures, ThatShareTheirPixelsAreFreeToChangeAlone)
{
    WritePicture(QStringLiteral("wood.png"), kRed);
    MeshMaterialInfo material = MaterialOf("map_Kd wood.png\nmap_Ke wood.png\n");
    material.diffuseTexture.pixels.fill('\0');
    EXPECT_EQ(ColorOf(material.emissiveTexture), kRed);
}

TEST_F(MTLTextures, OfGroupsShareTheirPixels)
{
    WritePicture(QStringLiteral("wood.png"), kRed);
    (void)m_directory.Write("newmtl a\nmap_Kd wood.png\n", QStringLiteral("lib.mtl"));
    const QString path =
        m_directory.Write("mtllib lib.mtl\n" + QByteArray("usemtl a\nf 1 1 1\n").repeated(2000));
    const LoadedObj obj = test::LoadObjFile(path);
    ASSERT_EQ(obj.groups.size(), 2000U);
    for (const MeshTextureGroup& group : obj.groups)
        ASSERT_EQ(group.material.diffuseTexture.pixels.constData(),
                  obj.groups[0].material.diffuseTexture.pixels.constData());
}

TEST_F(MTLTextures, AreLoadedAnewByEachCall)
{
    WritePicture(QStringLiteral("wood.png"), kRed);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd wood.png\n").diffuseTexture), kRed);
    WritePicture(QStringLiteral("wood.png"), kGreen);
    EXPECT_EQ(ColorOf(MaterialOf("map_Kd wood.png\n").diffuseTexture), kGreen);
}

TEST_F(MTLTextures, AreReadByEveryFormatOfTheLibrary)
{
    for (const char* const name : {"wood.png", "wood.bmp", "wood.ppm"}) {
        WritePicture(QString::fromLatin1(name), kRed);
        EXPECT_EQ(ColorOf(MaterialOf(QByteArray("map_Kd ") + name).diffuseTexture), kRed) << name;
    }
}

using MTLTexturesThreads = MTLTextures;

TEST_F(MTLTexturesThreads, LoadFromOneDirectoryAtOnce)
{
    WritePicture(QStringLiteral("wood.png"), kRed, 40, 30);
    const QString path = m_directory.Write("newmtl a\nmap_Kd wood.png\nbump wood.png\n");
    QRgb colors[8] = {};
    std::vector<std::thread> threads;
    for (QRgb& color : colors) {
        threads.emplace_back([&path, &color] {
            Materials materials;
            if (OBJFile::LoadMTLFile(path, materials, 20) && materials.size() == 1)
                color = ColorOf(materials[0].bumpTexture);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    for (const QRgb color : colors)
        EXPECT_EQ(color, kRed);
}
