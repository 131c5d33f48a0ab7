#include "apps/krmodel/MeshReport.h"

#include <algorithm>

#include "apps/krmodel/Materials.h"

namespace krmodel {

namespace {

qint64 CountOpenEdges(const std::vector<TriangleFace>& neighbours)
{
    qint64 count = 0;
    for (const TriangleFace& across : neighbours)
        count += std::count(std::begin(across.v), std::end(across.v), -1);
    return count;
}

/// Visits each piece from its first facet on; every facet is put on the list once, so the walk ends.
qint64 CountPieces(const std::vector<TriangleFace>& neighbours)
{
    std::vector<bool> isSeen(neighbours.size(), false);
    std::vector<int> open;
    qint64 pieces = 0;
    const auto visit = [&](int facet) {
        if (facet < 0 || isSeen[size_t(facet)])
            return false;
        isSeen[size_t(facet)] = true;
        open.push_back(facet);
        return true;
    };
    for (size_t first = 0; first < neighbours.size(); ++first) {
        pieces += visit(int(first)) ? 1 : 0;
        while (!open.empty()) {
            const TriangleFace across = neighbours[size_t(open.back())];
            open.pop_back();
            for (const int facet : across.v)
                visit(facet);
        }
    }
    return pieces;
}

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
    for (const auto& mesh : model.meshes) {
        report.facets += mesh->GetFaceNum();
        report.vertices += mesh->GetVertexNum();
        AddTexture(report, *mesh);
        report.volume += mesh->GetVolume();
        Extend(report.bounds, mesh->GetBoundingBox());
        const std::vector<TriangleFace>& neighbours = mesh->GetFaceNeighbours();
        report.openEdges += CountOpenEdges(neighbours);
        report.pieces += CountPieces(neighbours);
    }
    return report;
}

} // namespace krmodel
