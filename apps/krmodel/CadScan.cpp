#include <QFile>

#include "apps/krmodel/ByteStream.h"
#include "apps/krmodel/CadFormat.h"
#include "apps/krmodel/LossList.h"

namespace krmodel::cad {

namespace {

/// "#12 = STYLED_ITEM('',(#13),#14)": the keyword and what stands behind its parenthesis.
struct Entity {
    QByteArray keyword;
    QByteArray parameters;
};

Entity EntityOf(const QByteArray& statement)
{
    const int equals = statement.indexOf('=');
    const int parenthesis = statement.indexOf('(', equals + 1);
    if (equals < 0 || parenthesis < 0)
        return {};
    return {statement.mid(equals + 1, parenthesis - equals - 1).trimmed(),
            statement.mid(parenthesis + 1).trimmed()};
}

bool HasName(const Entity& entity)
{
    return entity.parameters.startsWith('\'') && !entity.parameters.startsWith("''");
}

struct Counts {
    qint64 coloured = 0;
    qint64 layers = 0;
    qint64 namedSolids = 0;
};

void TakeStatement(Counts& counts, const QByteArray& statement)
{
    const Entity entity = EntityOf(statement);
    if (entity.keyword == "STYLED_ITEM" || entity.keyword == "OVER_RIDING_STYLED_ITEM")
        ++counts.coloured;
    else if (entity.keyword == "PRESENTATION_LAYER_ASSIGNMENT")
        ++counts.layers;
    else if (entity.keyword == "MANIFOLD_SOLID_BREP" || entity.keyword == "BREP_WITH_VOIDS")
        counts.namedSolids += HasName(entity) ? 1 : 0;
}

/// Two lines of 80 characters make an entry of the directory, each with ten fields of eight.
class Directory {
public:
    void Take(const QByteArray& line)
    {
        constexpr int kSectionPlace = 72, kLevelField = 4, kColourField = 2;
        if (line.size() <= kSectionPlace || line[kSectionPlace] != 'D')
            return;
        m_isSecondLine = !m_isSecondLine;
        if (m_isSecondLine)
            m_counts.layers += Field(line, kLevelField) != 0 ? 1 : 0;
        else
            m_counts.coloured += Field(line, kColourField) != 0 ? 1 : 0;
    }
    const Counts& GetCounts() const { return m_counts; }

private:
    static int Field(const QByteArray& line, int field) { return line.mid(8 * field, 8).trimmed().toInt(); }

    Counts m_counts;
    bool m_isSecondLine = false;
};

} // namespace

std::vector<Loss> ScanStep(const QString& fileName, const Model&)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    Counts counts;
    VisitPieces(file, ';', [&](const QByteArray& statement) { TakeStatement(counts, statement); });
    LossList losses;
    losses.Add("colours", counts.coloured, "the colours and styles of %1 {item|items}");
    losses.Add("layers", counts.layers, "%1 {layer|layers}");
    losses.Add("solid-names", counts.namedSolids,
               "the {name|names} of %1 {solid|solids}: objects are named by the assembly");
    return losses.Get();
}

std::vector<Loss> ScanIges(const QString& fileName, const Model&)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    Directory directory;
    VisitPieces(file, '\n', [&](const QByteArray& line) { directory.Take(line); });
    LossList losses;
    losses.Add("colours", directory.GetCounts().coloured, "the {colour|colours} of %1 {entity|entities}");
    losses.Add("layers", directory.GetCounts().layers,
               "the {level|levels} that %1 {entity is|entities are} on");
    return losses.Get();
}

} // namespace krmodel::cad
