#include <algorithm>
#include <initializer_list>
#include <memory>
#include <optional>
#include <utility>

#include <QXmlStreamReader>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/3mf/Placements_p.h"
#include "fileformat/3mf/SetAside_p.h"
#include "fileformat/3mf/Textures_p.h"
#include "fileformat/3mf/XmlWork_p.h"

namespace {

using kr::package3mf::ElementRow;
using kr::package3mf::Placements;
using kr::package3mf::SetAsideElements;
using kr::package3mf::XmlWork;

constexpr float kReaderMergeDistanceMm = 0.03f;

using Names = std::initializer_list<const char*>;

bool HasOneOfNames(const QXmlStreamReader& reader, Names names)
{
    return std::any_of(names.begin(), names.end(),
                       [&](const char* name) { return reader.name() == QLatin1String(name); });
}

// Goes on to a token with one of the names, be it a start or an end tag.
void AdvanceTo(QXmlStreamReader& reader, XmlWork& work, Names names)
{
    do {
        work.ReadNext(reader);
    } while (!reader.atEnd() && !HasOneOfNames(reader, names));
}

bool IsEndOf(const QXmlStreamReader& reader, const char* name)
{
    return reader.atEnd() || (reader.isEndElement() && reader.name() == QLatin1String(name));
}

bool IsStartOf(const QXmlStreamReader& reader, const char* name)
{
    return reader.isStartElement() && reader.name() == QLatin1String(name);
}

// The attributes of the current element by their names. Prefixes do not count, unless an attribute without
// one has the same name.
class Attributes {
public:
    explicit Attributes(const QXmlStreamReader& reader) : m_attributes(reader.attributes()) {}

    bool Has(const char* name) const { return Find(name) != m_attributes.end(); }
    // Empty or 0 for one that is missing.
    QString Text(const char* name) const { return Value(name).toString(); }
    int Integer(const char* name) const { return Value(name).toInt(); }
    double Number(const char* name) const { return Value(name).toDouble(); }

private:
    using Iterator = QXmlStreamAttributes::const_iterator;

    Iterator Find(const char* name) const
    {
        const auto find = [&](auto nameOf) {
            return std::find_if(m_attributes.begin(), m_attributes.end(), [&](const auto& attribute) {
                return (attribute.*nameOf)() == QLatin1String(name);
            });
        };
        const Iterator exact = find(&QXmlStreamAttribute::qualifiedName);
        return exact != m_attributes.end() ? exact : find(&QXmlStreamAttribute::name);
    }
    QStringRef Value(const char* name) const
    {
        const Iterator found = Find(name);
        return found != m_attributes.end() ? found->value() : QStringRef();
    }

    QXmlStreamAttributes m_attributes;
};

Vector3D<float> VertexFrom(const Attributes& attributes)
{
    return {static_cast<float>(attributes.Number("x")), static_cast<float>(attributes.Number("y")),
            static_cast<float>(attributes.Number("z"))};
}

TriangleFace FaceFrom(const Attributes& attributes)
{
    return {attributes.Integer("v1"), attributes.Integer("v2"), attributes.Integer("v3")};
}

// The first elements of a row have come from the reader as well.
template<class Element>
void AppendRow(std::vector<Element>& list, std::vector<Element>& row)
{
    if (row.empty())
        return;
    if (list.size() == SetAsideElements::kStaying)
        list.swap(row);
    else
        list.insert(list.end(), row.begin() + SetAsideElements::kStaying, row.end());
}

Matrix4<double> TransformFrom(const Attributes& attributes)
{
    return Model3MF::ConvertFrom3MFMatStrToMat(attributes.Text("transform"));
}

// Leaves the value as it is where the attribute is missing.
void ReadIfPresent(const Attributes& attributes, const char* name, double& value)
{
    if (attributes.Has(name))
        value = attributes.Number(name);
}

void ReadCoordinates(QXmlStreamReader& reader, Model3MF::TextureGroup& group)
{
    XmlWork work(XmlWork::kUnlimited);
    std::pair<double, double> coordinate(0.0, 0.0);
    AdvanceTo(reader, work, {"tex2coord", "texture2dgroup"});
    for (; !IsEndOf(reader, "texture2dgroup"); work.ReadNext(reader)) {
        if (!IsStartOf(reader, "tex2coord"))
            continue;
        const Attributes attributes(reader);
        ReadIfPresent(attributes, "u", coordinate.first);
        ReadIfPresent(attributes, "v", coordinate.second);
        group.coords.push_back(coordinate);
    }
}

} // namespace

bool Model3MF::LoadModel(const QByteArray& data)
{
    XmlWork work;
    return LoadModel(data, work);
}

bool Model3MF::LoadModel(const QByteArray& data, XmlWork& work)
{
    if (!work.Begin(data))
        return false;
    SetAsideElements setAside(data);
    QXmlStreamReader reader(setAside.Remainder());
    ReadModel(reader, work, setAside);
    if (reader.hasError())
        return false;
    ReadComponentsformId();
    return true;
}

void Model3MF::ReadModel(QXmlStreamReader& reader, XmlWork& work, SetAsideElements& setAside)
{
    Placements placements(m_objects);
    while (!reader.atEnd()) {
        if (work.ReadNext(reader) != QXmlStreamReader::StartElement)
            continue;
        const Attributes attributes(reader);
        if (reader.name() == QLatin1String("model"))
            m_unit = attributes.Text("unit");
        else if (reader.name() == QLatin1String("metadata"))
            ReadMetadata(reader, work);
        else if (reader.name() == QLatin1String("basematerials"))
            m_material.id = attributes.Integer("id");
        else if (reader.name() == QLatin1String("base"))
            m_material.colors.push_back(attributes.Text("displaycolor"));
        else if (reader.name() == QLatin1String("object"))
            ReadObject(reader, work, setAside, placements);
        else if (reader.name() == QLatin1String("build"))
            ReadBuild(reader, work, placements);
    }
}

void Model3MF::ReadMetadata(QXmlStreamReader& reader, XmlWork& work)
{
    const QString name = Attributes(reader).Text("name");
    if (work.ReadNext(reader) == QXmlStreamReader::Characters)
        AddDescription(name, reader.text().toString());
}

bool Model3MF::ParserObject(QXmlStreamReader& reader)
{
    XmlWork work(XmlWork::kUnlimited);
    SetAsideElements nothing;
    Placements placements(m_objects);
    ReadObject(reader, work, nothing, placements);
    return true;
}

void Model3MF::ReadObject(QXmlStreamReader& reader, XmlWork& work, SetAsideElements& setAside,
                          Placements& placements)
{
    const Attributes attributes(reader);
    const int id = attributes.Integer("id");
    const QString name = attributes.Text("name");
    AdvanceTo(reader, work, {"components", "mesh", "object"});
    if (reader.name() == QLatin1String("components")) {
        ReadComponents(reader, work, id, placements);
        return;
    }
    auto mesh = std::make_unique<Mesh>(kReaderMergeDistanceMm);
    mesh->SetObjectID(id);
    mesh->SetObjectName(name);
    ReadMesh(reader, work, setAside, *mesh);
    m_objects.push_back(mesh.get());
    (void)mesh.release();
}

void Model3MF::ReadMesh(QXmlStreamReader& reader, XmlWork& work, SetAsideElements& setAside, Mesh& mesh)
{
    std::vector<Vector3D<float>>& vertices = *mesh.GetVerticesVecPtr();
    std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
    for (; !IsEndOf(reader, "object"); work.ReadNext(reader)) {
        if (IsStartOf(reader, "vertex"))
            vertices.push_back(VertexFrom(Attributes(reader)));
        else if (IsStartOf(reader, "triangle"))
            faces.push_back(FaceFrom(Attributes(reader)));
        else if (ElementRow* const row = setAside.Take(reader)) {
            AppendRow(vertices, row->vertices);
            AppendRow(faces, row->faces);
        }
    }
    Mesh::ValidateVertexAndFaces(faces, vertices);
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, true, true, nullptr, nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
}

bool Model3MF::ParserComponent(QXmlStreamReader& reader, int componentsId)
{
    XmlWork work(XmlWork::kUnlimited);
    Placements placements(m_objects);
    ReadComponents(reader, work, componentsId, placements);
    return true;
}

void Model3MF::ReadComponents(QXmlStreamReader& reader, XmlWork& work, int componentsId,
                              Placements& placements)
{
    AdvanceTo(reader, work, {"component", "components"});
    for (; !IsEndOf(reader, "object"); work.ReadNext(reader)) {
        if (!IsStartOf(reader, "component"))
            continue;
        const Attributes attributes(reader);
        std::optional<Matrix4<double>> transform;
        if (attributes.Has("transform"))
            transform = TransformFrom(attributes);
        placements.PutIntoComponents(attributes.Integer("objectid"), componentsId,
                                     transform ? &*transform : nullptr);
    }
}

bool Model3MF::ParserBuild(QXmlStreamReader& reader)
{
    XmlWork work(XmlWork::kUnlimited);
    Placements placements(m_objects);
    ReadBuild(reader, work, placements);
    return true;
}

void Model3MF::ReadBuild(QXmlStreamReader& reader, XmlWork& work, Placements& placements)
{
    AdvanceTo(reader, work, {"item", "build"});
    for (; !IsEndOf(reader, "build"); work.ReadNext(reader)) {
        const Attributes attributes(reader);
        if (!IsStartOf(reader, "item") || !attributes.Has("transform"))
            continue;
        placements.Multiply(attributes.Integer("objectid"), TransformFrom(attributes));
    }
}

bool Model3MF::ParserTexture(QXmlStreamReader& reader)
{
    const Attributes attributes(reader);
    if (!attributes.Has("id"))
        return false;
    TextureGroup group;
    group.id = attributes.Integer("id");
    group.texture = kr::package3mf::FindTexture(m_textures, attributes.Integer("texid"));
    ReadCoordinates(reader, group);
    m_textureGroups.push_back(std::move(group));
    return true;
}
