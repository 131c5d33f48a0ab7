#include "apps/krmodel/MeshReport.h"

#include <algorithm>

#include "apps/krmodel/Materials.h"

namespace krmodel {

namespace {

void Extend(MeshBoundingBox& bounds, const MeshBoundingBox& other)
{
    if (other.isEmpty)
        return;
    if (bounds.isEmpty) {
        bounds = other;
        return;
    }
    const auto extend = [](float& low, float& high, float otherLow, float otherHigh) {
        low = std::min(low, otherLow);
        high = std::max(high, otherHigh);
    };
    extend(bounds.minimum.x, bounds.maximum.x, other.minimum.x, other.maximum.x);
    extend(bounds.minimum.y, bounds.maximum.y, other.minimum.y, other.maximum.y);
    extend(bounds.minimum.z, bounds.maximum.z, other.minimum.z, other.maximum.z);
}

void AddTexture(MeshReport& report, const Mesh& mesh)
{
    const auto textureFaces = qint64(mesh.GetTextureFacesVecPtr()->size());
    report.textureCoordinates += qint64(mesh.GetTexCoordVecPtr()->size());
    report.textureFaces += textureFaces;
    report.isTextureGood = report.isTextureGood && (textureFaces == 0 || HoldsTexture(mesh));
}

} // namespace

MeshReport Measure(const Model& model)
{
    MeshReport report;
    for (size_t i = 0; i < model.meshes.size(); ++i) {
        const auto& mesh = model.meshes[i];
        report.facets += mesh->GetFaceNum();
        report.vertices += mesh->GetVertexNum();
        AddTexture(report, *mesh);
        report.volume += mesh->GetVolume();
        Extend(report.bounds, mesh->GetBoundingBox());
        Add(report.topology, Examine(*mesh), i);
    }
    return report;
}

} // namespace krmodel
