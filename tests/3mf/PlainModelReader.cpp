#include "tests/3mf/PlainModelReader.h"

#include <cmath>
#include <cstring>

#include <QStringList>
#include <QXmlStreamReader>

namespace test {

namespace {

bool IsNamed(const QXmlStreamReader& reader, const char* name)
{
    return reader.name().toString() == QString::fromUtf8(name);
}

bool IsStart(const QXmlStreamReader& reader, const char* name)
{
    return reader.isStartElement() && IsNamed(reader, name);
}

bool IsEnd(const QXmlStreamReader& reader, const char* name)
{
    return reader.isEndElement() && IsNamed(reader, name);
}

// The attribute without a prefix, or else the first one with it; null if there is none.
QString Attribute(const QXmlStreamReader& reader, const char* name)
{
    const QString wanted = QString::fromUtf8(name);
    for (const QXmlStreamAttribute& attribute : reader.attributes()) {
        if (attribute.qualifiedName().toString() == wanted)
            return attribute.value().toString();
    }
    for (const QXmlStreamAttribute& attribute : reader.attributes()) {
        if (attribute.name().toString() == wanted)
            return attribute.value().toString();
    }
    return {};
}

bool HasAttribute(const QXmlStreamReader& reader, const char* name)
{
    for (const QXmlStreamAttribute& attribute : reader.attributes()) {
        if (attribute.name().toString() == QString::fromUtf8(name))
            return true;
    }
    return false;
}

int Integer(const QXmlStreamReader& reader, const char* name)
{
    bool isNumber = false;
    const int value = Attribute(reader, name).toInt(&isNumber, 10);
    return isNumber ? value : 0;
}

double Number(const QXmlStreamReader& reader, const char* name)
{
    return Attribute(reader, name).toDouble();
}

float Coordinate(const QXmlStreamReader& reader, const char* name)
{
    return static_cast<float>(Number(reader, name));
}

} // namespace

bool PlainModel::LoadModel(const QByteArray& data)
{
    QXmlStreamReader reader(data);
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement())
            ReadStart(reader);
    }
    if (reader.hasError())
        return false;
    ReadComponentsformId();
    return true;
}

void PlainModel::ReadStart(QXmlStreamReader& reader)
{
    if (IsNamed(reader, "model"))
        unit = Attribute(reader, "unit");
    else if (IsNamed(reader, "metadata"))
        ReadMetadata(reader);
    else if (IsNamed(reader, "basematerials"))
        materialId = Integer(reader, "id");
    else if (IsNamed(reader, "base"))
        colors.push_back(Attribute(reader, "displaycolor"));
    else if (IsNamed(reader, "object"))
        ParserObject(reader);
    else if (IsNamed(reader, "build"))
        ParserBuild(reader);
}

void PlainModel::ReadMetadata(QXmlStreamReader& reader)
{
    const QString name = Attribute(reader, "name");
    reader.readNext();
    if (reader.isCharacters())
        description.insert(name, reader.text().toString());
}

bool PlainModel::ParserObject(QXmlStreamReader& reader)
{
    const int objectId = Integer(reader, "id");
    const QString name = Attribute(reader, "name");
    reader.readNext();
    while (!IsNamed(reader, "components") && !IsNamed(reader, "mesh") && !IsNamed(reader, "object") &&
           !reader.atEnd())
        reader.readNext();
    if (IsNamed(reader, "components"))
        return ParserComponent(reader, objectId);

    objects.push_back(std::make_unique<Mesh>(0.03f));
    Mesh& mesh = *objects.back();
    mesh.SetObjectID(objectId);
    mesh.SetObjectName(name);
    std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
    std::vector<Vector3D<float>>& vertices = *mesh.GetVerticesVecPtr();
    while (!IsEnd(reader, "object") && !reader.atEnd()) {
        if (IsStart(reader, "vertex"))
            vertices.emplace_back(Coordinate(reader, "x"), Coordinate(reader, "y"), Coordinate(reader, "z"));
        if (IsStart(reader, "triangle"))
            faces.emplace_back(Integer(reader, "v1"), Integer(reader, "v2"), Integer(reader, "v3"));
        reader.readNext();
    }
    Mesh::ValidateVertexAndFaces(faces, vertices);
    mesh.SetFaceNum(static_cast<int>(faces.size()));
    mesh.SetVertexNum(static_cast<int>(vertices.size()));
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, true, true, nullptr, nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
    return true;
}

bool PlainModel::ParserComponent(QXmlStreamReader& reader, int componentsId)
{
    reader.readNext();
    while (!IsNamed(reader, "component") && !IsNamed(reader, "components") && !reader.atEnd())
        reader.readNext();
    while (!IsEnd(reader, "object") && !reader.atEnd()) {
        if (IsStart(reader, "component")) {
            const int objectId = Integer(reader, "objectid");
            for (const auto& mesh : objects) {
                if (mesh->GetObjectID() != objectId)
                    continue;
                mesh->SetComponentsId(componentsId);
                if (HasAttribute(reader, "transform"))
                    mesh->SetTransformMatrix(MatrixFrom(Attribute(reader, "transform")));
            }
        }
        reader.readNext();
    }
    return true;
}

bool PlainModel::ParserBuild(QXmlStreamReader& reader)
{
    reader.readNext();
    while (!IsNamed(reader, "item") && !IsNamed(reader, "build") && !reader.atEnd())
        reader.readNext();
    while (!IsEnd(reader, "build") && !reader.atEnd()) {
        if (IsStart(reader, "item") && HasAttribute(reader, "transform")) {
            const int itemId = Integer(reader, "objectid");
            const Matrix4<double> transform = MatrixFrom(Attribute(reader, "transform"));
            for (const auto& mesh : objects) {
                if (mesh->GetComponentsId() == itemId || mesh->GetObjectID() == itemId)
                    mesh->SetTransformMatrix(mesh->GetTransformMatrix() * transform);
            }
        }
        reader.readNext();
    }
    return true;
}

bool PlainModel::ParserTexture(QXmlStreamReader& reader)
{
    Model3MF::TextureGroup group;
    if (!HasAttribute(reader, "id"))
        return false;
    // There never is a texture to be found.
    group.id = Integer(reader, "id");
    double u = 0, v = 0;
    reader.readNext();
    while (!IsNamed(reader, "tex2coord") && !IsNamed(reader, "texture2dgroup") && !reader.atEnd())
        reader.readNext();
    while (!IsEnd(reader, "texture2dgroup") && !reader.atEnd()) {
        if (IsStart(reader, "tex2coord")) {
            if (HasAttribute(reader, "u"))
                u = Number(reader, "u");
            if (HasAttribute(reader, "v"))
                v = Number(reader, "v");
            group.coords.emplace_back(u, v);
        }
        reader.readNext();
    }
    textureGroups.push_back(group);
    return true;
}

void PlainModel::ReadComponentsformId()
{
    for (const auto& mesh : objects)
        componentMembers[mesh->GetComponentsId()].push_back(mesh->GetObjectID());
}

Matrix4<double> PlainModel::MatrixFrom(const QString& text)
{
    Matrix4<double> matrix;
    matrix.m[3] = matrix.m[7] = matrix.m[11] = 0;
    matrix.m[15] = 1;
    int k = 0;
    for (const QString& part : text.split(QLatin1Char(' '), Qt::KeepEmptyParts, Qt::CaseSensitive)) {
        if (part.isEmpty())
            continue;
        matrix.set(k % 3, k / 3, part.toDouble());
        ++k;
    }
    return matrix;
}

QString PlainModel::TextFrom(const Matrix4<double>& matrix)
{
    QString text;
    for (int column = 0; column < 4; ++column) {
        for (int row = 0; row < 3; ++row) {
            if (row + column > 0)
                text += QLatin1Char(' ');
            text += QStringLiteral("%1").arg(matrix.get(row, column), 0, 'g', -1);
        }
    }
    return text;
}

bool IsSameNumber(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

bool HaveSameNumbers(const Matrix4<double>& a, const Matrix4<double>& b)
{
    bool isSame = true;
    for (int i = 0; i < 16; ++i)
        isSame = isSame && IsSameNumber(a.m[i], b.m[i]);
    return isSame;
}

namespace {

bool AreSame(const Model3MF::TextureGroup& a, const Model3MF::TextureGroup& b)
{
    bool isSame = a.id == b.id && a.coords.size() == b.coords.size() && a.texture.id == b.texture.id &&
                  a.texture.path == b.texture.path && a.texture.contentType == b.texture.contentType &&
                  a.texture.tileStyleU == b.texture.tileStyleU &&
                  a.texture.tileStyleV == b.texture.tileStyleV;
    for (std::size_t i = 0; isSame && i < a.coords.size(); ++i)
        isSame = IsSameNumber(a.coords[i].first, b.coords[i].first) &&
                 IsSameNumber(a.coords[i].second, b.coords[i].second);
    return isSame;
}

template<class T>
bool HaveSameBytes(const std::vector<T>& a, const std::vector<T>& b)
{
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

const char* Difference(const Mesh& a, const Mesh& b)
{
    const struct {
        bool isSame;
        const char* what;
    } checks[] = {
        {a.GetObjectID() == b.GetObjectID(), "object id"},
        {a.GetComponentsId() == b.GetComponentsId(), "components id"},
        {a.GetObjectName() == b.GetObjectName(), "name"},
        {HaveSameNumbers(a.GetTransformMatrix(), b.GetTransformMatrix()), "matrix"},
        {HaveSameBytes(*a.GetVerticesVecPtr(), *b.GetVerticesVecPtr()), "vertices"},
        {HaveSameBytes(*a.GetFacesVecPtr(), *b.GetFacesVecPtr()), "faces"},
        {a.GetVertexNum() == b.GetVertexNum(), "vertex count"},
        {a.GetFaceNum() == b.GetFaceNum(), "face count"},
        {IsSameNumber(a.GetVolume(), b.GetVolume()), "volume"},
        {a.GetFaceNormals().size() == b.GetFaceNormals().size(), "normals"},
        {a.GetFaceNeighbours().size() == b.GetFaceNeighbours().size(), "neighbours"},
    };
    for (const auto& check : checks) {
        if (!check.isSame)
            return check.what;
    }
    return nullptr;
}

std::string DifferenceOfMeshes(const PlainModel& plain, const std::vector<Mesh*>& meshes)
{
    if (plain.objects.size() != meshes.size())
        return std::to_string(meshes.size()) + " meshes instead of " + std::to_string(plain.objects.size());
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        if (const char* const what = Difference(*plain.objects[i], *meshes[i]))
            return std::string(what) + " of mesh " + std::to_string(i);
    }
    return {};
}

bool AreSame(const std::vector<Model3MF::TextureGroup>& a, const std::vector<Model3MF::TextureGroup>& b)
{
    bool isSame = a.size() == b.size();
    for (std::size_t i = 0; isSame && i < a.size(); ++i)
        isSame = AreSame(a[i], b[i]);
    return isSame;
}

} // namespace

std::string Difference(const PlainModel& plain, const Model3MF& model)
{
    if (plain.unit != model.GetUnit())
        return "unit";
    if (plain.description != model.GetDescription())
        return "metadata";
    if (plain.materialId != model.GetMaterial().id)
        return "material id";
    if (plain.colors != model.GetMaterial().colors)
        return "colours";
    if (plain.componentMembers != model.GetComponentMembers())
        return "component members";
    if (!AreSame(plain.textureGroups, model.GetTextureGroups()))
        return "texture groups";
    return DifferenceOfMeshes(plain, model.GetObjects());
}

} // namespace test
