// Lists the materials of an OBJ file with the area that each covers: ListMaterials MODEL.obj
#include <algorithm>
#include <cmath>
#include <cstdio>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"

namespace {

double Area(const Mesh& mesh, const TriangleFace& face)
{
    const std::vector<Vector3D<float>>& vertices = *mesh.GetVerticesVecPtr();
    const auto at = [&](int corner) { return vertices[std::size_t(face[corner])]; };
    const Vector3D<double> twice = CalcAreaVector(at(0), at(1), at(2));
    return std::hypot(twice.x, twice.y, twice.z) / 2;
}

double Area(const Mesh& mesh, const MeshTextureGroup& group)
{
    // Groups count the faces as they stand in the file; those that name no vertex were dropped after that.
    const std::vector<TriangleFace>& faces = *mesh.GetFacesVecPtr();
    const int end = std::min(group.firstFaceIndex + group.faceCount, int(faces.size()));
    double area = 0;
    for (int face = std::max(group.firstFaceIndex, 0); face < end; ++face)
        area += Area(mesh, faces[std::size_t(face)]);
    return area;
}

} // namespace

int main(int argc, char** argv)
{
    Mesh mesh(0.03F);
    std::vector<MeshTextureGroup> groups;
    constexpr int kLongestSide = 1024; // of the pictures
    if (argc != 2 || !OBJFile::LoadFile(QString::fromUtf8(argv[1]), mesh, groups, true, kLongestSide)) {
        std::fputs("ListMaterials MODEL.obj: the model cannot be opened\n", stderr);
        return 1;
    }
    for (const MeshTextureGroup& group : groups) {
        const MeshMaterialInfo& material = group.material;
        std::printf("%s: %d faces, %.1f mm2, colour %g %g %g", material.name.c_str(), group.faceCount,
                    Area(mesh, group), double(material.diffuse.x), double(material.diffuse.y),
                    double(material.diffuse.z));
        if (material.diffuseTexture.isValidSize())
            std::printf(", picture of %d x %d", material.diffuseTexture.width,
                        material.diffuseTexture.height);
        std::printf("\n");
    }
}
