// Slices a closed model into layers, one path set for each: SliceModel MODEL.stl LAYER OUT.path (mm)
#include <cstdio>

#include "core/mesh/Mesh.h"
#include "core/utility/Utility.h"
#include "fileformat/path/DXFPathFile.h"
#include "fileformat/stl/STLFile.h"

namespace {

/// Walks around the surface at one height, from face to face, leaving each by the edge that runs down.
std::vector<DXFPathFile::Contour> Slice(const Mesh& mesh, double z)
{
    std::vector<bool> isDone(mesh.GetFacesVecPtr()->size());
    const auto cross = [&](int face, DXFPathFile::Contour& contour) {
        const TriangleFace& corners = mesh.GetFacesVecPtr()->at(std::size_t(face));
        for (int edge = 0; edge < 3; ++edge) {
            const Vector3D<float> a = (*mesh.GetVerticesVecPtr())[std::size_t(corners[edge])];
            const Vector3D<float> b = (*mesh.GetVerticesVecPtr())[std::size_t(corners[(edge + 1) % 3])];
            if (double(a.z) < z || double(b.z) >= z)
                continue;
            const double t = (z - double(a.z)) / (double(b.z) - double(a.z));
            contour.emplace_back(a.x + t * double(b.x - a.x), a.y + t * double(b.y - a.y));
            isDone[std::size_t(face)] = true;
            return mesh.GetFaceNeighbours()[std::size_t(face)][edge];
        }
        return -1;
    };
    std::vector<DXFPathFile::Contour> contours;
    for (int start = 0; start < mesh.GetFaceNum(); ++start) {
        DXFPathFile::Contour contour;
        for (int face = start; face >= 0 && !isDone[std::size_t(face)];)
            face = cross(face, contour);
        if (!contour.empty()) {
            contour.push_back(contour.front()); // that is what closes it
            contours.push_back(contour);
        }
    }
    return contours;
}

} // namespace

int main(int argc, char** argv)
{
    Mesh mesh(0.03F);
    const double layer = Utility::ConvertBufferToDouble(argc == 4 ? argv[2] : nullptr);
    if (!(layer > 0) || !STLFile::LoadFile(QString::fromUtf8(argv[1]), mesh, false, 80, false)) {
        std::fputs("SliceModel MODEL.stl LAYER OUT.path: a model, and the height of a layer in mm\n", stderr);
        return 1;
    }
    DXFPathFile::Paths paths;
    const MeshBoundingBox box = mesh.GetBoundingBox();
    const auto height = [&](int index) { return double(box.minimum.z) + (index + 0.5) * layer; };
    for (int index = 0; height(index) < double(box.maximum.z); ++index)
        paths[index + 1] = Slice(mesh, height(index));
    return DXFPathFile::WriteDXFPathFile(paths, {}, QString::fromUtf8(argv[3])) ? 0 : 1;
}
