#include <algorithm>
#include <memory>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/stl/STLFile.h"
#include "fileformat/texture/TextureFile.h"
#include "tests/common/RunProgram.h"

namespace {

QString Sample(const QString& name)
{
    return QStringLiteral(KRCORE_SAMPLES "/") + name;
}

QStringList SampleNames(const QString& directory)
{
    const QStringList kinds = {QStringLiteral("*.stl"),    QStringLiteral("*.obj"), QStringLiteral("*.mtl"),
                               QStringLiteral("*.png"),    QStringLiteral("*.3mf"), QStringLiteral("*.path"),
                               QStringLiteral("*.texture")};
    return QDir(directory).entryList(kinds, QDir::Files, QDir::Name);
}

QByteArray Bytes(const QString& fileName)
{
    QFile file(fileName);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << fileName.toStdString();
    return file.readAll();
}

QByteArray Pixels(QImage image)
{
    image = image.convertToFormat(QImage::Format_RGB32);
    EXPECT_FALSE(image.isNull());
    return QByteArray(reinterpret_cast<const char*>(image.constBits()), int(image.sizeInBytes()));
}

/// A package with the meshes that it does not delete itself.
struct LoadedPackage {
    explicit LoadedPackage(const QString& fileName)
    {
        EXPECT_TRUE(package.LoadFile(fileName)) << fileName.toStdString();
        for (Mesh* const mesh : package.GetObjects())
            meshes.emplace_back(mesh);
    }

    Model3MF package;
    std::vector<std::unique_ptr<Mesh>> meshes;
};

template<class Element>
QByteArray BytesOf(const std::vector<Element>& list)
{
    return QByteArray(reinterpret_cast<const char*>(list.data()), int(list.size() * sizeof(Element)));
}

/// All that a package tells: the archive itself holds the time of writing.
QByteArray PackageContents(const QString& fileName)
{
    const LoadedPackage loaded(fileName);
    QByteArray contents = loaded.package.GetUnit().toUtf8();
    for (const auto& mesh : loaded.meshes)
        contents += mesh->GetObjectName().toUtf8() +
                    Model3MF::ConvertFromMatTo3MFMatStr(mesh->GetTransformMatrix()).toUtf8() +
                    BytesOf(*mesh->GetVerticesVecPtr()) + BytesOf(*mesh->GetFacesVecPtr());
    for (const QString& text : loaded.package.GetDescription())
        contents += text.toUtf8();
    for (const QString& colour : loaded.package.GetMaterial().colors)
        contents += colour.toUtf8();
    QString name;
    return contents + Pixels(QImage::fromData(loaded.package.GetImage(name))) + name.toUtf8();
}

/// All that a texture file tells: its picture is packed.
QByteArray TextureContents(const QString& fileName)
{
    TextureFile texture;
    EXPECT_TRUE(texture.LoadFile(fileName)) << fileName.toStdString();
    QJsonObject object;
    texture.GetSaveObject(object);
    object.remove(QStringLiteral("image_data"));
    return QJsonDocument(object).toJson() + Pixels(texture.GetImage());
}

/// What must not differ when a sample is made anew.
QByteArray Contents(const QString& fileName)
{
    // Pixels: each release of the compressor packs them in its own way.
    if (fileName.endsWith(QStringLiteral(".png")))
        return Pixels(QImage(fileName));
    if (fileName.endsWith(QStringLiteral(".3mf")))
        return PackageContents(fileName);
    if (fileName.endsWith(QStringLiteral(".texture")))
        return TextureContents(fileName);
    const QByteArray bytes = Bytes(fileName);
    // The header of a binary file holds the time of writing.
    const bool isBinary = fileName.endsWith(QStringLiteral(".stl")) && !bytes.startsWith("solid");
    return isBinary ? bytes.mid(80) : bytes;
}

Mesh Loaded(const QString& fileName)
{
    Mesh mesh(0.03F);
    std::vector<MeshTextureGroup> groups;
    EXPECT_TRUE(fileName.endsWith(QStringLiteral(".obj"))
                    ? OBJFile::LoadFile(fileName, mesh, groups, false, 0)
                    : STLFile::LoadFile(fileName, mesh, false, 80, false))
        << fileName.toStdString();
    return mesh;
}

TEST(Samples, AreWhatTheirMakerMakes)
{
    const QTemporaryDir directory;
    ASSERT_EQ(RunProgram(QStringLiteral(KRCORE_MAKE_SAMPLES), {directory.path()}).exitCode, 0);
    const QStringList names = SampleNames(QStringLiteral(KRCORE_SAMPLES));
    EXPECT_EQ(names, SampleNames(directory.path()));
    for (const QString& name : names) {
        const QByteArray kept = Contents(Sample(name)), made = Contents(directory.filePath(name));
        EXPECT_EQ(kept, made) << name.toStdString();
        EXPECT_LT(QFile(Sample(name)).size(), 200'000) << name.toStdString();
    }
}

bool IsClosed(const Mesh& mesh)
{
    const std::vector<TriangleFace>& neighbours = mesh.GetFaceNeighbours();
    return std::all_of(neighbours.begin(), neighbours.end(), [](const TriangleFace& across) {
        return across[0] >= 0 && across[1] >= 0 && across[2] >= 0;
    });
}

TEST(Samples, HoldTwoClosedObjectsInThePackage)
{
    const LoadedPackage bolt(Sample(QStringLiteral("bolt.3mf")));
    ASSERT_EQ(bolt.meshes.size(), 2U);
    for (const auto& mesh : bolt.meshes) {
        EXPECT_TRUE(IsClosed(*mesh)) << mesh->GetObjectName().toStdString();
        EXPECT_GT(mesh->GetVolume(), 0) << mesh->GetObjectName().toStdString();
        EXPECT_EQ(mesh->GetTransformMatrix().get(1, 3), 0.75);
    }
    EXPECT_EQ(bolt.package.GetUnit(), QStringLiteral("inch"));
}

TEST(Samples, AreClosedButForTheSheet)
{
    const QStringList models =
        SampleNames(QStringLiteral(KRCORE_SAMPLES)).filter(QRegularExpression(QStringLiteral("(stl|obj)$")));
    EXPECT_EQ(models.size(), 8);
    for (const QString& name : models) {
        const Mesh mesh = Loaded(Sample(name));
        EXPECT_EQ(IsClosed(mesh), name != QStringLiteral("sheet.stl")) << name.toStdString();
        EXPECT_GT(mesh.GetVolume(), 0) << name.toStdString();
    }
}

} // namespace
