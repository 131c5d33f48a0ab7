#include <cstdint>
#include <stdexcept>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"

// STLFile::LoadFile over any bytes. The last byte also chooses how it is called, so that every STL file is a
// seed.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile kFile;
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
    fuzz::Require(isLoaded || (mesh.GetVerticesVecPtr()->empty() && mesh.GetFacesVecPtr()->empty()));
    fuzz::RequireWhole(mesh);
    return 0;
}
