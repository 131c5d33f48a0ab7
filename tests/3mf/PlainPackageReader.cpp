#include "tests/3mf/PlainPackageReader.h"

#include <optional>

#include <JlCompress.h>
#include <quazipfile.h>

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

bool LoadPlainly(Model3MF& package, const QString& fileName)
{
    const QStringList names = JlCompress::getFileList(fileName);
    for (const QString& name : names) {
        if (!name.endsWith(QStringLiteral("[Content_Types].xml")))
            continue;
        const std::optional<QByteArray> bytes = ReadEntry(fileName, name);
        if (bytes && !package.LoadContentType(*bytes))
            return false;
    }
    for (const QString& name : names) {
        const std::optional<QByteArray> bytes = ReadEntry(fileName, name);
        if (!bytes)
            continue;
        if (name.endsWith(package.GetModelExtension())) {
            if (!package.LoadModel(*bytes))
                return false;
        } else if (IsImage(name)) {
            package.SetImage(*bytes, name);
        }
    }
    return true;
}

} // namespace test
