#include "fileformat/path/DXFPathFile.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include <QByteArray>
#include <QFile>

#include "core/common/LargePages_p.h"
#include "fileformat/common/PlainFile_p.h"
#include "fileformat/path/PathSource_p.h"

namespace {

using kr::path::PathSource;
using Point = Vector2D<double>;

struct Content {
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
};

constexpr std::size_t kLeastSetSize = 3 * sizeof(qint32); // id, no name, no contours
constexpr std::size_t kLeastContourSize = sizeof(qint32); // no points

std::optional<QString> ReadName(PathSource& source)
{
    const std::optional<std::size_t> size = source.Count(1);
    if (!size)
        return std::nullopt;
    QByteArray base64(static_cast<int>(*size), Qt::Uninitialized);
    if (!source.Read(base64.data(), *size))
        return std::nullopt;
    return DXFPathFile::GetUnicodeStringFromBase64String(base64);
}

bool ReadContour(PathSource& source, DXFPathFile::Contour& points)
{
    // A list sets its points to zero before they can be read. By pieces they are still in the cache then.
    constexpr std::size_t kPointsPerPiece = std::size_t(256) * 1024 / sizeof(Point);
    const std::optional<std::size_t> count = source.Count(sizeof(Point));
    if (!count)
        return false;
    kr::ReserveLarge(points, *count);
    while (points.size() < *count) {
        const std::size_t begin = points.size();
        const std::size_t size = std::min(*count - begin, kPointsPerPiece);
        points.resize(begin + size);
        if (!source.Read(points.data() + begin, size * sizeof(Point)))
            return false;
    }
    return true;
}

bool ReadSet(PathSource& source, Content& content)
{
    const std::optional<qint32> id = source.Integer();
    std::optional<QString> name = id ? ReadName(source) : std::nullopt;
    const std::optional<std::size_t> contourCount = name ? source.Count(kLeastContourSize) : std::nullopt;
    if (!contourCount)
        return false;
    content.names[*id] = std::move(*name);
    std::vector<DXFPathFile::Contour>& contours = content.paths[*id];
    contours.clear();
    for (std::size_t i = 0; i < *contourCount; ++i) {
        if (!ReadContour(source, contours.emplace_back()))
            return false;
    }
    return true;
}

std::optional<Content> ReadSets(PathSource source)
{
    const std::optional<std::size_t> setCount = source.Count(kLeastSetSize);
    if (!setCount)
        return std::nullopt;
    Content content;
    for (std::size_t i = 0; i < *setCount; ++i) {
        if (!ReadSet(source, content))
            return std::nullopt;
    }
    return content;
}

} // namespace

bool DXFPathFile::ReadDXFPathFile(Paths& paths, std::map<int, QString>& names, const QString& fileName)
{
    QFile file(fileName); // first of all, as the name may be one of the names
    paths.clear();
    names.clear();
    if (!kr::OpenForReading(file))
        return false;
    std::optional<Content> content = ReadSets(PathSource(file));
    if (!content)
        return false;
    paths.swap(content->paths);
    names.swap(content->names);
    return true;
}

QByteArray DXFPathFile::GetBase64StringFromUnicodeString(const QString& text)
{
    const auto* const bytes = reinterpret_cast<const char*>(text.utf16());
    return QByteArray::fromRawData(bytes, text.size() * int(sizeof(QChar))).toBase64();
}

QString DXFPathFile::GetUnicodeStringFromBase64String(const QByteArray& base64)
{
    const QByteArray bytes = QByteArray::fromBase64(base64);
    // Zeros first: an odd last byte fills half a unit.
    QString text((bytes.size() + 1) / int(sizeof(QChar)), QChar::Null);
    std::memcpy(static_cast<void*>(text.data()), bytes.constData(), static_cast<std::size_t>(bytes.size()));
    return text;
}
