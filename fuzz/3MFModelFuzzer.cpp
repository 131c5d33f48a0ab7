#include <cstdint>

#include "fuzz/Require.h"
#include "tests/3mf/ModelSupport.h"
#include "tests/3mf/PlainModelReader.h"

// Model3MF::LoadModel over any bytes, twice into one object, compared with plain reading.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // No NUL ends these bytes.
    const auto document =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    test::OwnedModel model;
    test::PlainModel plain;
    for (int round = 0; round < 2; ++round) {
        fuzz::Require(model.LoadModel(document) == plain.LoadModel(document));
        fuzz::Require(Difference(plain, model).empty());
    }
    for (const Mesh* const mesh : model.GetObjects())
        fuzz::RequireWhole(*mesh);
    return 0;
}
