// Gives a model texture coordinates that lay a picture on it from above: DrapePicture MODEL.stl MODEL.obj
#include <algorithm>
#include <cstdio>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/stl/STLFile.h"

int main(int argc, char** argv)
{
    Mesh mesh(0.03F);
    if (argc != 3 || !STLFile::LoadFile(QString::fromUtf8(argv[1]), mesh, true, 80, false)) {
        std::fputs("DrapePicture MODEL.stl MODEL.obj: the model cannot be read\n", stderr);
        return 1;
    }
    const MeshBoundingBox box = mesh.GetBoundingBox();
    // Square pixels: the longer side of the model is as wide as the picture.
    const float side = std::max(box.maximum.x - box.minimum.x, box.maximum.y - box.minimum.y);
    const float picturesPerMm = side > 0 ? 1 / side : 0;
    for (const Vector3D<float>& vertex : *mesh.GetVerticesVecPtr())
        mesh.GetTexCoordVecPtr()->emplace_back((vertex.x - box.minimum.x) * picturesPerMm,
                                               (vertex.y - box.minimum.y) * picturesPerMm);
    // A coordinate for each vertex: the faces name the one as they name the other.
    *mesh.GetTextureFacesVecPtr() = *mesh.GetFacesVecPtr();
    return OBJFile::SaveFile(QString::fromUtf8(argv[2]), mesh, true, true) ? 0 : 1;
}
