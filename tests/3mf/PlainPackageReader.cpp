#include "tests/3mf/PlainPackageReader.h"

#include <optional>

#include <JlCompress.h>
#include <quazipfile.h>
#include <quazipfileinfo.h>

namespace test {

namespace {

std::optional<QByteArray> ReadEntry(const QString& fileName, const QString& entryName)
{
    QuaZipFile entry(fileName, entryName, QuaZip::csDefault);
    if (!entry.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = entry.readAll();
    entry.close();
    return bytes;
}

bool IsImage(const QString& name)
{
    return (name.endsWith(QStringLiteral(".png")) || name.endsWith(QStringLiteral(".jpg")) ||
            name.endsWith(QStringLiteral(".jpeg"))) &&
           name.startsWith(QStringLiteral("Metadata/"));
}

} // namespace

bool PlainPackage::LoadFile(const QString& fileName)
{
    const QStringList names = JlCompress::getFileList(fileName);
    for (const QString& name : names) {
        if (!name.endsWith(QStringLiteral("[Content_Types].xml")))
            continue;
        const std::optional<QByteArray> bytes = ReadEntry(fileName, name);
        if (bytes && !contentTypes.LoadContentType(*bytes))
            return false;
    }
    for (const QString& name : names) {
        const std::optional<QByteArray> bytes = ReadEntry(fileName, name);
        if (!bytes)
            continue;
        if (name.endsWith(contentTypes.GetModelExtension())) {
            if (!model.LoadModel(*bytes))
                return false;
        } else if (IsImage(name)) {
            imageName = name;
            image = *bytes;
        }
    }
    return true;
}

bool PlainPackage::CanLoad(const QString& fileName)
{
    constexpr int kBzip2 = 12;
    QuaZip archive(fileName);
    if (!archive.open(QuaZip::mdUnzip))
        return true;
    // As far as the directory is whole.
    QuaZipFileInfo64 entry;
    for (bool isEntry = archive.goToFirstFile(); isEntry; isEntry = archive.goToNextFile()) {
        if (!archive.getCurrentFileInfo(&entry))
            continue;
        // By such a name QuaZip opens another entry than the one that has it.
        const bool isOdd = entry.name.isEmpty() || entry.name.startsWith(QLatin1Char('/'));
        if (isOdd || entry.method == kBzip2)
            return false;
    }
    return true;
}

std::string Difference(const PlainPackage& plain, const Model3MF& package)
{
    if (package.GetModelExtension() != plain.contentTypes.GetModelExtension() ||
        package.GetRelsExtension() != plain.contentTypes.GetRelsExtension())
        return "extensions";
    QString imageName;
    if (package.GetImage(imageName) != plain.image)
        return "image";
    if (imageName != plain.imageName)
        return "image name";
    return Difference(plain.model, package);
}

} // namespace test
