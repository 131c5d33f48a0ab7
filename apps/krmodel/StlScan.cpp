#include "apps/krmodel/ByteStream.h"
#include "apps/krmodel/LossList.h"
#include "apps/krmodel/StlFormat.h"
#include "apps/krmodel/StlRecords.h"

namespace krmodel::stl {

namespace {

/// Some programs keep a colour there.
qint64 CountAttributeWords(QFile& file)
{
    qint64 count = 0;
    VisitRecords(file, [&](const char* record) {
        count += qFromLittleEndian<quint16>(record + kAttributePlace) != 0 ? 1 : 0;
    });
    return count;
}

/// What the reader leaves out for want of an area.
qint64 CountDropped(QFile& file, const Model& model)
{
    qint64 dropped = DeclaredFacets(file).value_or(0);
    for (const auto& mesh : model.meshes)
        dropped -= mesh->GetFaceNum();
    return dropped;
}

struct TextCounts {
    qint64 solids = 0;
    qint64 facets = 0;
};

TextCounts CountTexts(QFile& file)
{
    TextCounts counts;
    VisitPieces(file, '\n', [&](const QByteArray& line) {
        const QByteArray statement = line.trimmed().left(8).toLower();
        counts.solids += statement.startsWith("solid") ? 1 : 0;
        counts.facets += statement.startsWith("facet") ? 1 : 0;
    });
    return counts;
}

void AddBinary(LossList& losses, QFile& file, const Model& model)
{
    losses.Add("degenerate-facets", CountDropped(file, model),
               "%1 {facet that is no triangle|facets that are no triangles}");
    losses.Add("attributes", CountAttributeWords(file),
               "the attribute {word (colour) of %1 facet|words (colours) of %1 facets}");
    if (file.seek(0))
        losses.Add("header-colour", file.read(kHeaderSize).contains("COLOR=") ? 1 : 0,
                   "the colour in the header");
}

void AddText(LossList& losses, QFile& file, const Model& model)
{
    const TextCounts counts = CountTexts(file);
    losses.Add("degenerate-facets", counts.facets - model.meshes.at(0)->GetFaceNum(),
               "%1 {facet that is no triangle|facets that are no triangles}");
    losses.Add("parts", counts.solids > 1 ? counts.solids : 0, "the division into %1 solids");
}

} // namespace

std::vector<Loss> Scan(const QString& fileName, const Model& model)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    LossList losses;
    const bool isBinary = Variant(fileName) == QStringLiteral("binary");
    (isBinary ? AddBinary : AddText)(losses, file, model);
    return losses.Get();
}

} // namespace krmodel::stl
