#include "apps/krmodel/MaterialTable.h"

#include <algorithm>

#include <QDir>
#include <QFileInfo>

#include "apps/krmodel/Materials.h"
#include "apps/krmodel/TextTable.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

QString DiffuseText(const MeshMaterialInfo& material)
{
    if (!IsDescribed(material))
        return QStringLiteral("not found");
    const Vector3D<float>& colour = material.diffuse;
    return QStringLiteral("%1 %2 %3")
        .arg(double(colour.x), 0, 'g', 3)
        .arg(double(colour.y), 0, 'g', 3)
        .arg(double(colour.z), 0, 'g', 3);
}

QString SizeText(const MeshTextureInfo& texture)
{
    if (texture.isValidSize())
        return QStringLiteral("%1 x %2").arg(texture.width).arg(texture.height);
    return QFileInfo(texture.fileName).isFile() ? QStringLiteral("not a picture") : QStringLiteral("missing");
}

/// "wood.png 64 x 64, bump wood-grain.png missing"
QString TexturesText(const MeshMaterialInfo& material, const QDir& directory)
{
    QStringList texts;
    for (const auto& [kind, texture] : TexturesOf(material)) {
        const bool isUsual = texture == &material.diffuseTexture;
        const QString label = isUsual ? QString() : QLatin1String(kind) + QLatin1Char(' ');
        const QString path = QFileInfo(texture->fileName).absoluteFilePath();
        texts << label + NameText(directory.relativeFilePath(path)) + QLatin1Char(' ') + SizeText(*texture);
    }
    return texts.join(QStringLiteral(", "));
}

QString FirstFaceText(const MaterialUse& use)
{
    if (use.faceCount == 0)
        return QStringLiteral("none");
    return use.firstFaceIndex ? CountText(*use.firstFaceIndex) : QStringLiteral("unknown");
}

QStringList Cells(const MaterialUse& use, const QDir& directory)
{
    return {NameText(QString::fromStdString(use.material->name)),
            CountText(use.groupCount),
            FirstFaceText(use),
            CountText(use.faceCount),
            DiffuseText(*use.material),
            TexturesText(*use.material, directory)};
}

} // namespace

QString MaterialTable(const Model& model, const QString& fileName)
{
    const std::vector<MaterialUse> uses = SumUpByName(model);
    if (uses.empty())
        return {};
    const QDir directory = QFileInfo(fileName).absoluteDir();
    const size_t shown = std::min(uses.size(), kMostLines);
    TextTable table("lrrrll");
    table.AddRow({QStringLiteral("material"), QStringLiteral("groups"), QStringLiteral("first face"),
                  QStringLiteral("faces"), QStringLiteral("diffuse"), QStringLiteral("texture")});
    for (size_t i = 0; i < shown; ++i)
        table.AddRow(Cells(uses[i], directory));
    return table.ToString() + MoreText(uses.size());
}

} // namespace krmodel
