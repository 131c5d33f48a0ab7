#include "apps/krmodel/Json.h"

#include <cmath>
#include <initializer_list>
#include <utility>

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include "apps/krmodel/Materials.h"

namespace krmodel {

namespace {

QJsonObject Members(std::initializer_list<std::pair<const char*, QJsonValue>> members)
{
    QJsonObject object;
    for (const auto& [name, value] : members)
        object.insert(QLatin1String(name), value);
    return object;
}

QJsonArray JsonPoint(const Vector3D<float>& point)
{
    return {JsonNumber(double(point.x)), JsonNumber(double(point.y)), JsonNumber(double(point.z))};
}

QJsonValue JsonText(const QString& text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QJsonValue JsonId(int id)
{
    return id < 0 ? QJsonValue() : QJsonValue(id);
}

/// Row by row; the fourth column is the translation.
QJsonArray JsonMatrix(const Matrix4<double>& matrix)
{
    QJsonArray rows;
    for (int row = 0; row < 4; ++row) {
        QJsonArray numbers;
        for (int column = 0; column < 4; ++column)
            numbers.append(JsonNumber(matrix.get(row, column)));
        rows.append(numbers);
    }
    return rows;
}

QJsonObject JsonObjectOf(const Mesh& mesh)
{
    return Members({
        {"id", JsonId(mesh.GetObjectID())},
        {"components", JsonId(mesh.GetComponentsId())},
        {"name", JsonText(mesh.GetObjectName())},
        {"facets", mesh.GetFaceNum()},
        {"vertices", mesh.GetVertexNum()},
        {"placement", JsonMatrix(mesh.GetTransformMatrix())},
    });
}

QJsonValue JsonBounds(const MeshBoundingBox& bounds)
{
    if (bounds.isEmpty)
        return {};
    return Members({{"minimum", JsonPoint(bounds.minimum)}, {"maximum", JsonPoint(bounds.maximum)}});
}

QJsonValue JsonThumbnail(const Thumbnail& thumbnail)
{
    if (thumbnail.bytes.isEmpty())
        return {};
    return Members({{"name", thumbnail.name}, {"bytes", thumbnail.bytes.size()}});
}

QJsonObject JsonTexture(const MaterialTexture& texture, const QDir& directory)
{
    const MeshTextureInfo& info = *texture.texture;
    const auto side = [&](int pixels) { return info.isValidSize() ? QJsonValue(pixels) : QJsonValue(); };
    return Members({
        {"kind", QLatin1String(texture.kind)},
        {"file", directory.relativeFilePath(QFileInfo(info.fileName).absoluteFilePath())},
        {"width", side(info.width)},
        {"height", side(info.height)},
    });
}

QJsonObject JsonMaterial(const MaterialUse& use, const QDir& directory)
{
    const MeshMaterialInfo& material = *use.material;
    QJsonArray textures;
    for (const MaterialTexture& texture : TexturesOf(material))
        textures.append(JsonTexture(texture, directory));
    return Members({
        {"name", QString::fromStdString(material.name)},
        {"groups", use.groupCount},
        {"firstFace", use.firstFaceIndex ? QJsonValue(*use.firstFaceIndex) : QJsonValue()},
        {"faces", use.faceCount},
        {"diffuse", IsDescribed(material) ? JsonPoint(material.diffuse) : QJsonValue()},
        {"textures", textures},
    });
}

QJsonArray JsonMaterials(const Model& model, const QString& fileName)
{
    const QDir directory = QFileInfo(fileName).absoluteDir();
    QJsonArray list;
    for (const MaterialUse& use : SumUpByName(model))
        list.append(JsonMaterial(use, directory));
    return list;
}

QJsonArray JsonRemarks(const std::vector<Remark>& remarks)
{
    QJsonArray list;
    for (const Remark& remark : remarks) {
        QJsonArray points;
        for (const Vector3D<float>& point : remark.first.first)
            points.append(JsonPoint(point));
        list.append(Members({
            {"kind", QLatin1String(remark.kind)},
            {"count", remark.count},
            {"text", remark.text},
            {"object", remark.first.count > 0 ? QJsonValue(int(remark.first.object)) : QJsonValue()},
            {"at", points},
        }));
    }
    return list;
}

QByteArray Line(QJsonObject content, const QString& fileName, ExitCode code)
{
    content[QLatin1String("krmodel-json")] = kJsonVersion;
    content[QLatin1String("file")] = fileName;
    content[QLatin1String("exit")] = int(code);
    return QJsonDocument(content).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

QJsonValue JsonNumber(double number)
{
    return std::isfinite(number) ? QJsonValue(number) : QJsonValue();
}

QJsonObject DescribeModel(const LoadedModel& loaded, const QString& fileName)
{
    const Format& format = *loaded.format;
    const Model& model = loaded.model;
    QJsonArray objects, colours;
    for (const auto& mesh : model.meshes)
        objects.append(JsonObjectOf(*mesh));
    for (const QString& colour : model.colours.texts)
        colours.append(colour);
    QJsonObject metadata;
    for (auto entry = model.metadata.begin(); entry != model.metadata.end(); ++entry)
        metadata[entry.key()] = entry.value();
    return Members({
        {"format", QLatin1String(format.name)},
        {"variant", format.variant ? JsonText(format.variant(fileName)) : QJsonValue()},
        {"unit",
         Members({{"name", JsonText(model.unit.name)}, {"millimetres", JsonNumber(model.unit.millimetres)}})},
        {"objects", objects},
        {"metadata", metadata},
        {"colours", colours},
        {"materials", JsonMaterials(model, fileName)},
        {"thumbnail", JsonThumbnail(model.thumbnail)},
        {"losses", DescribeLosses(format.scan(fileName, model))},
    });
}

QJsonArray DescribeLosses(const std::vector<Loss>& losses)
{
    QJsonArray list;
    for (const Loss& loss : losses)
        list.append(Members({{"kind", loss.kind}, {"count", loss.count}, {"text", loss.text}}));
    return list;
}

QJsonObject DescribeSurface(const MeshReport& report)
{
    const Topology& topology = report.topology;
    return Members({
        {"facets", report.facets},
        {"vertices", report.vertices},
        {"bounds", JsonBounds(report.bounds)},
        {"volume", JsonNumber(report.volume)},
        {"openEdges", topology.openEdges.count},
        {"crowdedEdges", topology.crowdedEdges.count},
        {"twistedEdges", topology.twistedEdges.count},
        {"degenerateFacets", topology.degenerateFacets.count},
        {"pieces", topology.pieces},
        {"inwardPieces", topology.inwardPieces.count},
        {"cavities", topology.cavities.count},
        {"strayVertices", topology.strayVertices.count},
        {"emptyObjects", topology.emptyObjects.count},
    });
}

QJsonObject DescribeVerdict(const Verdict& verdict)
{
    return Members({
        {"printable", verdict.IsPrintable()},
        {"reasons", JsonRemarks(verdict.reasons)},
        {"remarks", JsonRemarks(verdict.remarks)},
    });
}

QJsonObject Merged(QJsonObject object, const QJsonObject& more)
{
    for (auto member = more.begin(); member != more.end(); ++member)
        object.insert(member.key(), member.value());
    return object;
}

QByteArray JsonLine(const QString& fileName, const QJsonObject& content)
{
    return Line(content, fileName, ExitCode::Done);
}

QByteArray JsonFailure(const QString& fileName, ExitCode code, const QString& error)
{
    // Behind the file's name it would be said twice.
    const QString prefix = fileName + QStringLiteral(": ");
    const QString reason = error.startsWith(prefix) ? error.mid(prefix.size()) : error;
    return Line(Members({{"error", reason}}), fileName, code);
}

} // namespace krmodel
