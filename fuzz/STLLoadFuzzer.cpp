#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include <QFile>
#include <QString>

#include <sys/mman.h>
#include <unistd.h>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"

// STLFile::LoadFile over any bytes. The last byte also chooses how it is called, so that every STL file is a
// seed.

namespace {

// A file in memory: readers take names, and nothing has to touch a disk.
class MemoryFile {
public:
    MemoryFile() : m_descriptor(memfd_create("fuzz", 0)) { Require(m_descriptor >= 0); }

    void Write(const std::uint8_t* data, std::size_t size) const
    {
        Require(ftruncate(m_descriptor, 0) == 0);
        Require(pwrite(m_descriptor, data, size, 0) == static_cast<ssize_t>(size));
    }
    QString Name() const { return QStringLiteral("/proc/self/fd/%1").arg(m_descriptor); }

    static void Require(bool holds)
    {
        if (!holds)
            std::abort();
    }

private:
    int m_descriptor;
};

void RequireWhole(const Mesh& mesh)
{
    const std::size_t vertexCount = mesh.GetVerticesVecPtr()->size();
    MemoryFile::Require(static_cast<std::size_t>(mesh.GetVertexNum()) == vertexCount);
    MemoryFile::Require(static_cast<std::size_t>(mesh.GetFaceNum()) == mesh.GetFacesVecPtr()->size());
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        for (const int index : face.v)
            MemoryFile::Require(index >= 0 && static_cast<std::size_t>(index) < vertexCount);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const MemoryFile kFile;
    static const QString kName = kFile.Name();
    constexpr int kHeaderSizes[] = {80, 80, 80, 0, 5, 84, -1, 1025};
    kFile.Write(data, size);
    const unsigned choice = size > 0 ? data[size - 1] : 0;
    Mesh mesh(0.03f);
    bool isLoaded = false;
    try {
        isLoaded =
            STLFile::LoadFile(kName, mesh, (choice & 8) != 0, kHeaderSizes[choice & 7], (choice & 16) != 0);
    } catch (const std::out_of_range&) {
        // The promised answer to a text with fewer normals than facets.
    }
    MemoryFile::Require(isLoaded || (mesh.GetVerticesVecPtr()->empty() && mesh.GetFacesVecPtr()->empty()));
    RequireWhole(mesh);
    return 0;
}
