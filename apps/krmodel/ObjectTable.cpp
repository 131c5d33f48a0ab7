#include "apps/krmodel/ObjectTable.h"

#include <algorithm>

#include "apps/krmodel/Placement.h"
#include "apps/krmodel/TextTable.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

bool IsPartOfOther(const Mesh& mesh)
{
    return mesh.GetComponentsId() >= 0;
}

QStringList Cells(const Mesh& mesh, bool showsComponents)
{
    QStringList cells = {mesh.GetObjectID() < 0 ? QStringLiteral("-") : QString::number(mesh.GetObjectID())};
    if (showsComponents)
        cells << (IsPartOfOther(mesh) ? QString::number(mesh.GetComponentsId()) : QStringLiteral("-"));
    cells << TextOrDash(NameText(mesh.GetObjectName())) << CountText(mesh.GetFaceNum())
          << PlacementText(mesh.GetTransformMatrix());
    return cells;
}

} // namespace

QString ObjectTable(const Model& model)
{
    const bool showsComponents = std::any_of(model.meshes.begin(), model.meshes.end(),
                                             [](const auto& mesh) { return IsPartOfOther(*mesh); });
    TextTable table(showsComponents ? "rrlrl" : "rlrl");
    QStringList head = {QStringLiteral("object"), QStringLiteral("name"), QStringLiteral("facets"),
                        QStringLiteral("placement")};
    if (showsComponents)
        head.insert(1, QStringLiteral("part of"));
    table.AddRow(head);
    for (size_t i = 0; i < std::min(model.meshes.size(), kMostLines); ++i)
        table.AddRow(Cells(*model.meshes[i], showsComponents));
    return table.ToString() + MoreText(model.meshes.size());
}

QString MetadataTable(const Model& model)
{
    if (model.metadata.isEmpty())
        return {};
    TextTable table;
    table.AddRow({QStringLiteral("metadata"), QStringLiteral("text")});
    size_t shown = 0;
    for (auto entry = model.metadata.begin(); entry != model.metadata.end() && shown < kMostLines; ++entry) {
        table.AddRow({TextOrDash(NameText(entry.key())), TextOrDash(NameText(entry.value()))});
        ++shown;
    }
    return table.ToString() + MoreText(size_t(model.metadata.size()));
}

} // namespace krmodel
