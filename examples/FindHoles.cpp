// Tells where the surface of an STL file is open, each hole or border on a line: FindHoles MODEL.stl
#include <cmath>
#include <cstdio>
#include <map>
#include <vector>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

namespace {

double Length(const Vector3D<float>& from, const Vector3D<float>& to)
{
    return std::hypot(double(to.x) - double(from.x), double(to.y) - double(from.y),
                      double(to.z) - double(from.z));
}

/// The edges that only one face has, end by start, as they run along the border.
std::multimap<int, int> BorderEdges(const Mesh& mesh)
{
    std::multimap<int, int> edges;
    for (std::size_t face = 0; face < mesh.GetFaceNeighbours().size(); ++face)
        for (int edge = 0; edge < 3; ++edge)
            if (mesh.GetFaceNeighbours()[face][edge] < 0) {
                const TriangleFace& corners = (*mesh.GetFacesVecPtr())[face];
                edges.emplace(corners[edge], corners[(edge + 1) % 3]);
            }
    return edges;
}

} // namespace

int main(int argc, char** argv)
{
    Mesh mesh(0.03F);
    if (argc != 2 || !STLFile::LoadFile(QString::fromUtf8(argv[1]), mesh, false, 80, false)) {
        std::fputs("FindHoles MODEL.stl: the model cannot be read\n", stderr);
        return 1;
    }
    const std::vector<Vector3D<float>>& vertices = *mesh.GetVerticesVecPtr();
    std::multimap<int, int> edges = BorderEdges(mesh);
    while (!edges.empty()) {
        int edgeCount = 0;
        double length = 0;
        const Vector3D<float> start = vertices[std::size_t(edges.begin()->first)];
        for (auto edge = edges.begin(); edge != edges.end(); ++edgeCount) {
            const int end = edge->second;
            length += Length(vertices[std::size_t(edge->first)], vertices[std::size_t(end)]);
            edges.erase(edge);
            edge = edges.find(end);
        }
        std::printf("%d edges, %.2f mm, from %g %g %g\n", edgeCount, length, double(start.x), double(start.y),
                    double(start.z));
    }
}
