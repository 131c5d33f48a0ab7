#include "apps/krmodel/StlFormat.h"

#include <algorithm>
#include <charconv>
#include <cstring>

#include "apps/krmodel/StlRecords.h"
#include "fileformat/stl/STLFile.h"

namespace krmodel::stl {

namespace {

constexpr float kReaderMergeDistanceMm = 0.03f;
constexpr char kTextEnd[] = "endsolid model\n";

// An empty text solid is two lines; more than this is not looked at.
constexpr qint64 kLongestEmptyText = 4096;

qint64 FacetCount(const Model& model)
{
    qint64 count = 0;
    for (const auto& mesh : model.meshes)
        count += mesh->GetFaceNum();
    return count;
}

/// The declared facets need just the bytes that are there; the last record's attribute word may be missing
/// and a broken record may follow. Bytes 80 to 83 of a text would stand for gigabytes.
bool IsBinary(QFile& file)
{
    const auto declared = DeclaredFacets(file);
    if (!declared)
        return false;
    const qint64 surplus = file.size() - kCountEnd - *declared * kRecordSize;
    return surplus >= -2 && surplus < kRecordSize;
}

bool IsEmptyText(QFile& file)
{
    if (file.size() > kLongestEmptyText || !file.seek(0))
        return false;
    const QByteArray text = file.readAll().simplified().toLower();
    return text.startsWith("solid") && text.contains("endsolid") && !text.contains("vertex");
}

/// As Save() writes them; the count has been looked at by IsComplete().
bool VisitCorners(QFile& file, const std::function<void(const Facet& facet)>& visit)
{
    static_assert(sizeof(Facet) == 9 * sizeof(float), "the corners of a record are copied as they lie");
    return VisitRecords(file, [&](const char* record) {
        Facet facet;
        std::memcpy(facet.data(), record + kCornerPlace, sizeof facet);
        visit(facet);
    });
}

const char* SkipBlanks(const char* position, const char* end)
{
    return std::find_if(position, end, [](char character) { return character != ' '; });
}

/// "vertex 1 2 3"; nothing for a line of another kind or with other numbers.
std::optional<Vector3D<float>> CornerOf(const QByteArray& line)
{
    constexpr char kKeyword[] = "vertex ";
    constexpr qint64 kKeywordSize = sizeof kKeyword - 1;
    const char* const end = line.constData() + line.size();
    const char* position = SkipBlanks(line.constData(), end);
    if (end - position < kKeywordSize || std::memcmp(position, kKeyword, kKeywordSize) != 0)
        return std::nullopt;
    position += kKeywordSize;
    float numbers[3];
    for (float& number : numbers) {
        const auto [behind, error] = std::from_chars(SkipBlanks(position, end), end, number);
        if (error != std::errc())
            return std::nullopt;
        position = behind;
    }
    return Vector3D<float>(numbers[0], numbers[1], numbers[2]);
}

bool VisitLoops(QFile& file, const std::function<void(const Facet& facet)>& visit)
{
    constexpr qint64 kLongestLine = 1024;
    Facet facet;
    size_t cornerCount = 0;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine(kLongestLine);
        if (const auto corner = CornerOf(line)) {
            if (cornerCount == facet.size())
                return false;
            facet[cornerCount++] = *corner;
        } else if (line.contains("endloop")) {
            if (cornerCount != facet.size())
                return false;
            visit(facet);
            cornerCount = 0;
        }
    }
    return cornerCount == 0;
}

/// The reader refuses a file that is of this format but declares no facet like a damaged one.
bool DeclaresNothing(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return (file.size() == kCountEnd && DeclaredFacets(file) == qint64{0}) || IsEmptyText(file);
}

} // namespace

std::optional<Refusal> Load(const QString& fileName, const ReadOptions&, Model& model)
{
    auto mesh = std::make_unique<Mesh>(kReaderMergeDistanceMm);
    if (!STLFile::LoadFile(fileName, *mesh, false, kHeaderSize, false))
        return DeclaresNothing(fileName) ? HoldsNoFacet() : NotReadableAs("STL");
    model.meshes.push_back(std::move(mesh));
    return std::nullopt;
}

bool Save(const QString& fileName, const Model& model, Encoding encoding)
{
    std::vector<const Mesh*> meshes;
    for (const auto& mesh : model.meshes)
        meshes.push_back(mesh.get());
    return STLFile::SaveFile(fileName, meshes, encoding == Encoding::Text, kHeaderSize);
}

bool IsComplete(const QString& fileName, const Model& model, Encoding encoding)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (encoding == Encoding::Binary)
        return file.size() == kCountEnd + FacetCount(model) * kRecordSize;
    const qint64 tail = qint64(sizeof kTextEnd) - 1;
    return file.size() >= tail && file.seek(file.size() - tail) && file.readAll() == kTextEnd;
}

bool VisitFacets(const QString& fileName, Encoding encoding,
                 const std::function<void(const Facet& facet)>& visit)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return encoding == Encoding::Binary ? VisitCorners(file, visit) : VisitLoops(file, visit);
}

QString Variant(const QString& fileName)
{
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly) && IsBinary(file))
        return QStringLiteral("binary");
    return QStringLiteral("text");
}

} // namespace krmodel::stl
