#include "apps/krmodel/StlFormat.h"

#include <QFile>
#include <QtEndian>

#include "fileformat/stl/STLFile.h"

namespace krmodel::stl {

namespace {

constexpr float kReaderMergeDistanceMm = 0.03f;
constexpr int kHeaderSize = 80;
constexpr qint64 kCountEnd = kHeaderSize + 4;
constexpr qint64 kRecordSize = 50;
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

/// The facets that a binary file declares; negative for a file too short for a count.
qint64 DeclaredFacets(QFile& file)
{
    char count[4];
    if (!file.seek(kHeaderSize) || file.read(count, sizeof count) != qint64(sizeof count))
        return -1;
    return qFromLittleEndian<quint32>(count);
}

/// The declared facets need just the bytes that are there; the last record's attribute word may be missing
/// and a broken record may follow. Bytes 80 to 83 of a text would stand for gigabytes.
bool IsBinary(QFile& file)
{
    const qint64 declared = DeclaredFacets(file);
    const qint64 surplus = file.size() - kCountEnd - declared * kRecordSize;
    return declared >= 0 && surplus >= -2 && surplus < kRecordSize;
}

bool IsEmptyText(QFile& file)
{
    if (file.size() > kLongestEmptyText || !file.seek(0))
        return false;
    const QByteArray text = file.readAll().simplified().toLower();
    return text.startsWith("solid") && text.contains("endsolid") && !text.contains("vertex");
}

/// The reader refuses a file that is of this format but declares no facet like a damaged one.
bool DeclaresNothing(const QString& fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return (file.size() == kCountEnd && DeclaredFacets(file) == 0) || IsEmptyText(file);
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

QString Variant(const QString& fileName)
{
    QFile file(fileName);
    if (file.open(QIODevice::ReadOnly) && IsBinary(file))
        return QStringLiteral("binary");
    return QStringLiteral("text");
}

} // namespace krmodel::stl
