#include <cstddef>
#include <cstdint>
#include <vector>

#include <QString>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "fuzz/NamedMemoryFile.h"
#include "fuzz/Require.h"
#include "tests/obj/ObjDifference.h"

// OBJFile::LoadFile over any bytes, compared with plain reading now and then. "mtllib 100" names the file
// itself: statements and materials stand in the same bytes. Nothing else stands in its directory.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::NamedMemoryFile kFile(QStringLiteral("100"));
    static const QString kName = kFile.Name();
    kFile.Write(data, size);
    Mesh mesh(0.03f);
    std::vector<MeshTextureGroup> groups;
    fuzz::Require(OBJFile::LoadFile(kName, mesh, groups, false, 0));
    fuzz::RequireWhole(mesh);
    if (fuzz::IsOneOfEight(data, size)) {
        const auto expected = test::ReadPlainObj(kName, 0);
        fuzz::Require(expected && test::DifferenceOf(mesh, groups, *expected).empty());
    }
    return 0;
}
