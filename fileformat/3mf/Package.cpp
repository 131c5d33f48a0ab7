#include <algorithm>
#include <functional>
#include <vector>

#include "fileformat/3mf/Model3MF.h"
#include "fileformat/3mf/PackageArchive_p.h"
#include "fileformat/3mf/XmlWork_p.h"

namespace {

using kr::package3mf::PackageArchive;
using kr::package3mf::XmlWork;
using Outcome = PackageArchive::Outcome;

bool IsContentTypes(const QString& name)
{
    return name.endsWith(QLatin1String("[Content_Types].xml"));
}

bool IsImage(const QString& name)
{
    const bool hasSuffix = name.endsWith(QLatin1String(".png")) || name.endsWith(QLatin1String(".jpg")) ||
                           name.endsWith(QLatin1String(".jpeg"));
    return hasSuffix && name.startsWith(QLatin1String("Metadata/"));
}

using Load = std::function<bool(const QByteArray& part)>;

// Reads the part and hands it over. True also when there is nothing to hand over.
bool LoadPart(PackageArchive& archive, const PackageArchive::Entry& entry, const Load& load)
{
    QByteArray bytes;
    const Outcome outcome = archive.Read(entry, bytes);
    return outcome == Outcome::NotOpened || (outcome == Outcome::Complete && load(bytes));
}

bool LoadAllContentTypes(PackageArchive& archive, const Load& load)
{
    for (const PackageArchive::Entry& entry : archive.Entries()) {
        if (IsContentTypes(entry.name) && !LoadPart(archive, entry, load))
            return false;
    }
    return true;
}

// Collects the images on the way.
bool LoadAllModels(PackageArchive& archive, const QString& extension, const Load& load,
                   std::vector<PackageArchive::Entry>& images)
{
    for (const PackageArchive::Entry& entry : archive.Entries()) {
        // Also when no extension is known, and so every name ends with it.
        if (entry.name.endsWith(extension)) {
            if (!LoadPart(archive, entry, load))
                return false;
        } else if (IsImage(entry.name)) {
            images.push_back(entry);
        }
    }
    return true;
}

// The last one that can be read: the others need not be inflated.
void KeepLastImage(PackageArchive& archive, const std::vector<PackageArchive::Entry>& images,
                   Model3MF& package)
{
    QByteArray bytes;
    const auto last = std::find_if(images.rbegin(), images.rend(), [&](const PackageArchive::Entry& image) {
        return archive.Read(image, bytes) == Outcome::Complete;
    });
    if (last != images.rend())
        package.SetImage(bytes, last->name);
}

} // namespace

bool Model3MF::LoadFile(const QString& fileName)
{
    PackageArchive archive(fileName);
    XmlWork work;
    if (!LoadAllContentTypes(archive, [&](const QByteArray& part) { return LoadContentType(part, work); }))
        return false;
    std::vector<PackageArchive::Entry> images;
    const bool isLoaded = LoadAllModels(
        archive, m_modelExtension, [&](const QByteArray& part) { return LoadModel(part, work); }, images);
    // Those in front of a model part that failed count.
    KeepLastImage(archive, images, *this);
    return isLoaded;
}

bool Model3MF::LoadContentType(const QByteArray& data)
{
    XmlWork work;
    return LoadContentType(data, work);
}

bool Model3MF::LoadContentType(const QByteArray& data, XmlWork& work)
{
    if (!work.Begin(data))
        return false;
    QXmlStreamReader reader(data);
    while (!reader.atEnd()) {
        work.ReadNext(reader);
        const bool isType =
            reader.name() == QLatin1String("Default") || reader.name() == QLatin1String("Override");
        if (!reader.isStartElement() || !isType)
            continue;
        const QXmlStreamAttributes attributes = reader.attributes();
        const QString extension = attributes.value(QLatin1String("Extension")).toString();
        const QStringRef type = attributes.value(QLatin1String("ContentType"));
        if (type.contains(QLatin1String("package.relationships+xml")))
            m_relsExtension = extension;
        else if (type.contains(QLatin1String("package.3dmanufacturing-3dmodel+xml")))
            m_modelExtension = extension;
    }
    return !reader.hasError();
}
