#include <string_view>

#include <QXmlStreamWriter>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/DocumentDevice_p.h"
#include "fileformat/3mf/GeneralNumber_p.h"
#include "fileformat/3mf/PackageArchive_p.h"
#include "fileformat/3mf/PackageDocuments_p.h"

namespace kr::package3mf {

namespace {

using Object = Model3MF::ModelObjectInfo;

constexpr char kCoreNamespace[] = "http://schemas.microsoft.com/3dmanufacturing/core/2015/02";
constexpr char kMaterialNamespace[] = "http://schemas.microsoft.com/3dmanufacturing/material/2015/02";

bool IsXmlCharacter(uint character)
{
    if (character < 0x20)
        return character == '\t' || character == '\n' || character == '\r';
    return character != 0xFFFE && character != 0xFFFF;
}

// The XML writer must not meet a character that XML cannot hold: it would write no names and no values from
// there on, without a word.
QString Writable(const QString& text)
{
    QString writable;
    for (const uint character : text.toUcs4()) {
        if (IsXmlCharacter(character))
            writable += QString::fromUcs4(&character, 1);
    }
    return writable;
}

char* Put(char* out, std::string_view text)
{
    std::memcpy(out, text.data(), text.size());
    return out + text.size();
}

char* PutInteger(char* out, int value)
{
    *out = '-';
    out += value < 0;
    const auto wide = static_cast<std::int64_t>(value);
    return FormatInteger(out, static_cast<std::uint64_t>(wide < 0 ? -wide : wide));
}

// Rows of elements stand where the XML writer would put them: it indents by four blanks, and they are five
// levels deep.

char* PutElement(char* out, const Vector3D<float>& vertex)
{
    out = FormatGeneral6(Put(out, "\n                    <vertex x=\""), vertex.x);
    out = FormatGeneral6(Put(out, "\" y=\""), vertex.y);
    out = FormatGeneral6(Put(out, "\" z=\""), vertex.z);
    return Put(out, "\"/>");
}

char* PutElement(char* out, const TriangleFace& face)
{
    out = PutInteger(Put(out, "\n                    <triangle v1=\""), face[0]);
    out = PutInteger(Put(out, "\" v2=\""), face[1]);
    out = PutInteger(Put(out, "\" v3=\""), face[2]);
    return Put(out, "\"/>");
}

// An element with the row in it. The XML writer would take ten times as long as the compression does.
template<class Element>
void WriteRow(QXmlStreamWriter& writer, DocumentDevice& document, const QString& name,
              const std::vector<Element>& row)
{
    constexpr int kElementCapacity = 60 + 3 * kGeneral6Capacity;
    writer.writeStartElement(name);
    if (!row.empty()) {
        // Closes the start tag; and text inside keeps the writer from beginning a line before the end tag.
        writer.writeCharacters(QString());
        for (const Element& element : row)
            document.Commit(PutElement(document.Reserve(kElementCapacity), element));
        document.Commit(Put(document.Reserve(kElementCapacity), "\n                "));
    }
    writer.writeEndElement();
}

void WriteMetadata(QXmlStreamWriter& writer, const QMap<QString, QString>& description)
{
    for (auto entry = description.begin(); entry != description.end(); ++entry) {
        writer.writeStartElement(QStringLiteral("metadata"));
        writer.writeAttribute(QStringLiteral("name"), Writable(entry.key()));
        writer.writeCharacters(Writable(entry.value()));
        writer.writeEndElement();
    }
}

void WriteMaterial(QXmlStreamWriter& writer, const Model3MF::BaseMaterial& material)
{
    if (material.id < 0)
        return;
    writer.writeStartElement(QStringLiteral("basematerials"));
    writer.writeAttribute(QStringLiteral("id"), QString::number(material.id));
    int number = 0;
    for (const QString& color : material.colors) {
        writer.writeStartElement(QStringLiteral("base"));
        writer.writeAttribute(QStringLiteral("name"), QStringLiteral("color%1").arg(number++));
        writer.writeAttribute(QStringLiteral("displaycolor"), Writable(color));
        writer.writeEndElement();
    }
    writer.writeEndElement();
}

// Whole lists, as they are: the counts of the mesh do not matter here, and no index is followed.
void WriteObject(QXmlStreamWriter& writer, DocumentDevice& document, const Object& object, int id)
{
    writer.writeStartElement(QStringLiteral("object"));
    writer.writeAttribute(QStringLiteral("id"), QString::number(id));
    writer.writeAttribute(QStringLiteral("name"), Writable(object.name));
    writer.writeAttribute(QStringLiteral("type"), QStringLiteral("model"));
    writer.writeStartElement(QStringLiteral("mesh"));
    WriteRow(writer, document, QStringLiteral("vertices"), *object.mesh->GetVerticesVecPtr());
    WriteRow(writer, document, QStringLiteral("triangles"), *object.mesh->GetFacesVecPtr());
    writer.writeEndElement();
    writer.writeEndElement();
}

Matrix4<double> PlacementOf(const Object& object, const Vector3D<float>& offset)
{
    Vector3D<float> translation = object.position;
    translation += object.offset;
    translation += offset;
    Matrix4<double> placement = object.transform;
    placement.set(0, 3, static_cast<double>(translation.x));
    placement.set(1, 3, static_cast<double>(translation.y));
    placement.set(2, 3, static_cast<double>(translation.z));
    return placement;
}

void WriteItem(QXmlStreamWriter& writer, const Matrix4<double>& placement, int id)
{
    writer.writeStartElement(QStringLiteral("item"));
    writer.writeAttribute(QStringLiteral("objectid"), QString::number(id));
    writer.writeAttribute(QStringLiteral("transform"), Model3MF::ConvertFromMatTo3MFMatStr(placement));
    writer.writeEndElement();
}

void WriteResources(QXmlStreamWriter& writer, DocumentDevice& document, const Model3MF& package,
                    const std::vector<Object>& objects)
{
    writer.writeStartElement(QStringLiteral("resources"));
    WriteMaterial(writer, package.GetMaterial());
    int id = 0;
    for (const Object& object : objects)
        WriteObject(writer, document, object, ++id);
    writer.writeEndElement();
}

void WriteBuild(QXmlStreamWriter& writer, const std::vector<Object>& objects, const Vector3D<float>& offset)
{
    writer.writeStartElement(QStringLiteral("build"));
    int id = 0;
    for (const Object& object : objects)
        WriteItem(writer, PlacementOf(object, offset), ++id);
    writer.writeEndElement();
}

// Generous, as room that is not used costs nothing, while growing does.
qint64 ExpectedSize(const std::vector<Object>& objects)
{
    constexpr std::size_t kObjectSize = 1024;
    constexpr std::size_t kElementSize = 80;
    std::size_t size = kObjectSize;
    for (const Object& object : objects)
        size += kObjectSize + kElementSize * (object.mesh->GetVerticesVecPtr()->size() +
                                              object.mesh->GetFacesVecPtr()->size());
    return static_cast<qint64>(size);
}

} // namespace

void BuildModel(const Model3MF& package, const std::vector<Object>& objects, const Vector3D<float>& offset,
                QByteArray& document)
{
    DocumentDevice device(ExpectedSize(objects), kLargestByteArray);
    QXmlStreamWriter writer(&device);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(QStringLiteral("model"));
    writer.writeAttribute(QStringLiteral("unit"), Writable(package.GetUnit()));
    writer.writeAttribute(QStringLiteral("xml:lang"), QStringLiteral("en-US"));
    writer.writeAttribute(QStringLiteral("xmlns:m"), QLatin1String(kMaterialNamespace));
    writer.writeAttribute(QStringLiteral("xmlns"), QLatin1String(kCoreNamespace));
    WriteMetadata(writer, package.GetDescription());
    WriteResources(writer, device, package, objects);
    WriteBuild(writer, objects, offset);
    writer.writeEndElement();
    writer.writeEndDocument();
    document = device.Take();
}

} // namespace kr::package3mf
