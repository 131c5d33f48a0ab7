#include <cstddef>
#include <cstdint>

#include "fuzz/CadChild.h"
#include "fuzz/NamedMemoryFile.h"

// STEPAndIGESFile::LoadFile over any bytes of a STEP file. Each is loaded in a process of its own; see
// CadChild.h.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::NamedMemoryFile kFile(QStringLiteral("model.step"));
    static const bool kIsReady = (fuzz::PrepareForCadChildren(), true);
    static_cast<void>(kIsReady);
    kFile.Write(data, size);
    fuzz::RequireCadLoad(kFile.Name());
    return 0;
}
