// Reads an STL file, text or binary, joins its triangles, measures them and writes them as text.
#include <cstdio>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

int main(int argc, char** argv)
{
    Mesh mesh(0.03F);
    if (argc != 3 || !STLFile::LoadFile(QString::fromUtf8(argv[1]), mesh, false, 80, false))
        return 1;
    std::printf("%d facets, %d vertices, volume %.2f\n", mesh.GetFaceNum(), mesh.GetVertexNum(),
                mesh.GetVolume());
    return STLFile::SaveFile(QString::fromUtf8(argv[2]), mesh, true, 80) ? 0 : 1;
}
