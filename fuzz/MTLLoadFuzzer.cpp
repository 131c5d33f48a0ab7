#include <cstddef>
#include <cstdint>
#include <vector>

#include <QString>

#include "fileformat/obj/OBJFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "tests/obj/ObjDifference.h"

// OBJFile::LoadMTLFile over any bytes, compared with plain reading now and then.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile kFile;
    static const QString kName = kFile.Name();
    kFile.Write(data, size);
    std::vector<MeshMaterialInfo> materials;
    fuzz::Require(OBJFile::LoadMTLFile(kName, materials, 0));
    if (fuzz::IsOneOfEight(data, size)) {
        const auto expected = test::ReadPlainMtl(kName, 0);
        fuzz::Require(expected && test::DifferenceOf(materials, *expected).empty());
    }
    return 0;
}
