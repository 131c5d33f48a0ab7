#include "apps/krmodel/ThreeMfFormat.h"

#include <algorithm>

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include "apps/krmodel/Picture.h"
#include "fileformat/3mf/Model3MF.h"

namespace krmodel::threemf {

namespace {

constexpr char kThumbnailName[] = "Metadata/thumbnail.png";

bool BeginsLikeArchive(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) && file.read(2) == "PK";
}

/// The record that ends an archive is written last. Readers get along with a part of it.
bool HasArchiveEnd(const QString& fileName)
{
    constexpr qint64 kEndSize = 22;
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) && file.size() >= kEndSize && file.seek(file.size() - kEndSize) &&
           file.read(4) == QByteArray("PK\x05\x06");
}

/// The meshes are ours from then on, also when the package failed half-way.
void TakeMeshes(const Model3MF& package, Model& model)
{
    const std::vector<Mesh*> meshes = package.GetObjects();
    model.meshes.reserve(meshes.size());
    for (Mesh* const mesh : meshes)
        model.meshes.emplace_back(mesh);
}

bool ReadPackage(const QString& fileName, Model3MF& package, Model& model)
{
    const auto atEnd = qScopeGuard([&] { TakeMeshes(package, model); });
    return package.LoadFile(fileName);
}

Refusal NotReadable(const char* reason)
{
    return {ExitCode::NotReadable, QStringLiteral("not readable as 3MF, ") + QLatin1String(reason)};
}

/// Why the package failed. Without an extension for models every entry is taken for one.
Refusal WhyDamaged(const Model3MF& package)
{
    if (!package.GetModelExtension().isEmpty())
        return NotReadable("its content types or a model in it are no well-formed XML, or cut short");
    return NotReadable("its content types are missing, damaged or do not tell by which suffix to know a "
                       "model (an Override has none): every entry was taken for one, and one is no "
                       "well-formed XML");
}

Refusal WhyWithoutObjects(const QString& fileName, const Model3MF& package)
{
    if (!package.GetModelExtension().isEmpty())
        return {ExitCode::Empty, QStringLiteral("holds no facet, the package has no mesh object")};
    if (!BeginsLikeArchive(fileName))
        return NotReadable("it is no zip archive");
    if (package.GetRelsExtension().isEmpty())
        return NotReadable("the zip archive is damaged, or neither declares nor holds a model");
    return NotReadable("its content types do not tell by which suffix to know a model, and no entry is one");
}

Model3MF::ModelObjectInfo ObjectOf(Mesh& mesh)
{
    Model3MF::ModelObjectInfo object;
    object.mesh = &mesh;
    object.name = mesh.GetObjectName();
    object.transform = mesh.GetTransformMatrix();
    // The writer takes an object's translation from here, not from its transform.
    const auto translation = [&](int row) { return float(object.transform.get(row, 3)); };
    object.position = {translation(0), translation(1), translation(2)};
    return object;
}

/// Nothing but the writer's relationships refers to the picture, nothing at all to the colours: what has to
/// have another name or id in a valid package may get it.
Thumbnail PngThumbnail(const Thumbnail& thumbnail)
{
    const QString name = QLatin1String(kThumbnailName);
    if (thumbnail.bytes.isEmpty() || IsPng(thumbnail.bytes))
        return {name, thumbnail.bytes};
    const QImage picture = DecodePicture(thumbnail.bytes);
    return {name, picture.isNull() ? thumbnail.bytes : EncodePng(picture)};
}

Model3MF::BaseMaterial MaterialOf(const Model& model)
{
    Model3MF::BaseMaterial material;
    material.colors = model.colours.texts;
    if (model.colours.id >= 0)
        material.id = std::max(model.colours.id, int(model.meshes.size()) + 1);
    return material;
}

} // namespace

std::optional<Refusal> Load(const QString& fileName, const ReadOptions&, Model& model)
{
    Model3MF package;
    if (!ReadPackage(fileName, package, model))
        return WhyDamaged(package);
    if (model.meshes.empty())
        return WhyWithoutObjects(fileName, package);
    model.unit = {package.GetUnit(), package.GetUnitScale()};
    model.metadata = package.GetDescription();
    const Model3MF::BaseMaterial material = package.GetMaterial();
    model.colours = {material.id, material.colors};
    model.thumbnail.bytes = package.GetImage(model.thumbnail.name);
    return std::nullopt;
}

bool Save(const QString& fileName, const Model& model, Encoding)
{
    Model3MF package;
    if (!model.unit.name.isEmpty())
        package.SetUnit(model.unit.name);
    package.SetDescription(model.metadata);
    package.SetMaterial(MaterialOf(model));
    const Thumbnail thumbnail = PngThumbnail(model.thumbnail);
    package.SetImage(thumbnail.bytes, thumbnail.name);
    std::vector<Model3MF::ModelObjectInfo> objects;
    for (const auto& mesh : model.meshes)
        objects.push_back(ObjectOf(*mesh));
    return package.SaveFile(fileName, objects, {});
}

bool IsComplete(const QString& fileName, const Model&, Encoding)
{
    // A device has no end to look for a directory at.
    return QFileInfo(fileName).isFile() && HasArchiveEnd(fileName);
}

} // namespace krmodel::threemf
