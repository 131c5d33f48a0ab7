#include <cstddef>
#include <cstdint>

#include "fuzz/MemoryFile.h"
#include "fuzz/Require.h"
#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainPackageReader.h"

// Model3MF::LoadFile over any bytes, compared with plain reading.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile kFile;
    static const QString kName = kFile.Name();
    kFile.Write(data, size);
    test::OwnedModel package;
    const bool isLoaded = package.LoadFile(kName);
    for (const Mesh* const mesh : package.GetObjects())
        fuzz::RequireWhole(*mesh);
    if (!test::PlainPackage::CanLoad(kName))
        return 0;
    test::PlainPackage plain;
    fuzz::Require(isLoaded == plain.LoadFile(kName));
    fuzz::Require(Difference(plain, package).empty());
    return 0;
}
