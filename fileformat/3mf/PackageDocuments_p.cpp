#include "fileformat/3mf/PackageDocuments_p.h"

#include <QXmlStreamWriter>

namespace kr::package3mf {

namespace {

constexpr char kContentTypesNamespace[] = "http://schemas.openxmlformats.org/package/2006/content-types";
constexpr char kRelationshipsNamespace[] = "http://schemas.openxmlformats.org/package/2006/relationships";
constexpr char kModelType[] = "http://schemas.microsoft.com/3dmanufacturing/2013/01/3dmodel";
constexpr char kTextureType[] = "http://schemas.microsoft.com/3dmanufacturing/2013/01/3dtexture";
constexpr char kThumbnailType[] =
    "http://schemas.openxmlformats.org/package/2006/relationships/metadata/thumbnail";

struct ContentType {
    const char* extension;
    const char* type;
};

constexpr ContentType kContentTypes[] = {
    {"rels", "application/vnd.openxmlformats-package.relationships+xml"},
    {"model", "application/vnd.ms-package.3dmanufacturing-3dmodel+xml"},
    {"png", "image/png"},
    {"jpg", "image/jpeg"},
    {"jpeg", "image/jpeg"},
};

void WriteContentType(QXmlStreamWriter& writer, const ContentType& type)
{
    writer.writeStartElement(QStringLiteral("Default"));
    writer.writeAttribute(QStringLiteral("Extension"), QLatin1String(type.extension));
    writer.writeAttribute(QStringLiteral("ContentType"), QLatin1String(type.type));
    writer.writeEndElement();
}

void WriteRelationship(QXmlStreamWriter& writer, const QString& target, const QString& id, const char* type)
{
    writer.writeStartElement(QStringLiteral("Relationship"));
    writer.writeAttribute(QStringLiteral("Target"), target);
    writer.writeAttribute(QStringLiteral("Id"), id);
    writer.writeAttribute(QStringLiteral("Type"), QLatin1String(type));
    writer.writeEndElement();
}

// One XML document with its root element, whose content @p writeContent writes.
template<class WriteContent>
void BuildDocument(QByteArray& document, const char* root, const char* rootNamespace,
                   WriteContent writeContent)
{
    document.clear();
    QXmlStreamWriter writer(&document);
    writer.setAutoFormatting(true);
    writer.writeStartDocument();
    writer.writeStartElement(QLatin1String(root));
    writer.writeAttribute(QStringLiteral("xmlns"), QLatin1String(rootNamespace));
    writeContent(writer);
    writer.writeEndElement();
    writer.writeEndDocument();
}

} // namespace

void BuildContentTypes(QByteArray& document)
{
    BuildDocument(document, "Types", kContentTypesNamespace, [](QXmlStreamWriter& writer) {
        for (const ContentType& type : kContentTypes)
            WriteContentType(writer, type);
    });
}

void BuildPackageRelationships(bool hasImage, QByteArray& document)
{
    BuildDocument(document, "Relationships", kRelationshipsNamespace, [&](QXmlStreamWriter& writer) {
        WriteRelationship(writer, QStringLiteral("/3D/3dmodel.model"), QStringLiteral("rel0"), kModelType);
        // Whatever the image's name is.
        if (hasImage)
            WriteRelationship(writer, QStringLiteral("/Metadata/thumbnail.png"), QStringLiteral("rel1"),
                              kThumbnailType);
    });
}

void BuildTextureRelationships(const QMap<QString, QByteArray>& textureImages, QByteArray& document)
{
    BuildDocument(document, "Relationships", kRelationshipsNamespace, [&](QXmlStreamWriter& writer) {
        int number = 10;
        for (auto image = textureImages.begin(); image != textureImages.end(); ++image)
            WriteRelationship(writer, QLatin1Char('/') + image.key(), QStringLiteral("rel%1").arg(number++),
                              kTextureType);
    });
}

} // namespace kr::package3mf
