#include "tests/3mf/PlainPackageWriter.h"

#include <QXmlStreamWriter>

#include "core/mesh/Mesh.h"

namespace test {

namespace {

QString Number(double value)
{
    return QStringLiteral("%1").arg(value, 0, 'g', -1);
}

class PlainWriter {
public:
    explicit PlainWriter(QByteArray& document) : m_xml(&document)
    {
        m_xml.setAutoFormatting(true);
        m_xml.writeStartDocument();
    }

    void Start(const char* name) { m_xml.writeStartElement(QString::fromLatin1(name)); }
    void End() { m_xml.writeEndElement(); }
    void EndDocument() { m_xml.writeEndDocument(); }
    void Text(const QString& text) { m_xml.writeCharacters(text); }
    void Attribute(const char* name, const QString& value)
    {
        m_xml.writeAttribute(QString::fromLatin1(name), value);
    }

    void Vertex(const Vector3D<float>& vertex)
    {
        Start("vertex");
        Attribute("x", Number(static_cast<double>(vertex.x)));
        Attribute("y", Number(static_cast<double>(vertex.y)));
        Attribute("z", Number(static_cast<double>(vertex.z)));
        End();
    }
    void Triangle(const TriangleFace& face)
    {
        Start("triangle");
        Attribute("v1", QString::number(face[0]));
        Attribute("v2", QString::number(face[1]));
        Attribute("v3", QString::number(face[2]));
        End();
    }
    void Object(const Model3MF::ModelObjectInfo& object, int id)
    {
        Start("object");
        Attribute("id", QString::number(id));
        Attribute("name", object.name);
        Attribute("type", QStringLiteral("model"));
        Start("mesh");
        Start("vertices");
        for (const Vector3D<float>& vertex : *object.mesh->GetVerticesVecPtr())
            Vertex(vertex);
        End();
        Start("triangles");
        for (const TriangleFace& face : *object.mesh->GetFacesVecPtr())
            Triangle(face);
        End();
        End();
        End();
    }
    void Material(const Model3MF::BaseMaterial& material)
    {
        Start("basematerials");
        Attribute("id", QString::number(material.id));
        for (std::size_t i = 0; i < material.colors.size(); ++i) {
            Start("base");
            Attribute("name", QStringLiteral("color%1").arg(i));
            Attribute("displaycolor", material.colors[i]);
            End();
        }
        End();
    }
    void Item(const Model3MF::ModelObjectInfo& object, const Vector3D<float>& offset, int id)
    {
        // Three numbers for each column, the sums for the last one.
        QString transform;
        for (int column = 0; column < 3; ++column)
            for (int row = 0; row < 3; ++row)
                transform += Number(object.transform.get(row, column)) + QLatin1Char(' ');
        const float x = object.position.x + object.offset.x + offset.x;
        const float y = object.position.y + object.offset.y + offset.y;
        const float z = object.position.z + object.offset.z + offset.z;
        transform += Number(static_cast<double>(x)) + QLatin1Char(' ') + Number(static_cast<double>(y)) +
                     QLatin1Char(' ') + Number(static_cast<double>(z));
        Start("item");
        Attribute("objectid", QString::number(id));
        Attribute("transform", transform);
        End();
    }

private:
    QXmlStreamWriter m_xml;
};

} // namespace

QByteArray WriteModelPlainly(const Model3MF& package, const std::vector<Model3MF::ModelObjectInfo>& objects,
                             const Vector3D<float>& offset)
{
    QByteArray document;
    PlainWriter writer(document);
    writer.Start("model");
    writer.Attribute("unit", package.GetUnit());
    writer.Attribute("xml:lang", QStringLiteral("en-US"));
    writer.Attribute("xmlns:m",
                     QStringLiteral("http://schemas.microsoft.com/3dmanufacturing/material/2015/02"));
    writer.Attribute("xmlns", QStringLiteral("http://schemas.microsoft.com/3dmanufacturing/core/2015/02"));
    const QMap<QString, QString> description = package.GetDescription();
    for (const QString& name : description.keys()) {
        writer.Start("metadata");
        writer.Attribute("name", name);
        writer.Text(description.value(name));
        writer.End();
    }
    writer.Start("resources");
    if (package.GetMaterial().id >= 0)
        writer.Material(package.GetMaterial());
    for (std::size_t i = 0; i < objects.size(); ++i)
        writer.Object(objects[i], static_cast<int>(i) + 1);
    writer.End();
    writer.Start("build");
    for (std::size_t i = 0; i < objects.size(); ++i)
        writer.Item(objects[i], offset, static_cast<int>(i) + 1);
    writer.End();
    writer.End();
    writer.EndDocument();
    return document;
}

} // namespace test
