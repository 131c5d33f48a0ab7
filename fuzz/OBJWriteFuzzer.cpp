#include <cstddef>
#include <cstdint>
#include <list>
#include <stdexcept>
#include <vector>

#include <QByteArray>
#include <QString>

#include "fileformat/obj/OBJFile.h"
#include "fuzz/MemoryFile.h"
#include "fuzz/MeshFromBytes.h"
#include "fuzz/Require.h"
#include "tests/obj/LiteralOBJWriter.h"
#include "tests/obj/ObjDifference.h"

// OBJFile::SaveFile of any meshes, compared with literal writing; and what was written is read as a plain
// reader does.

using fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile kFile;
    static const QString kName = kFile.Name();
    FuzzedDataProvider bytes(data, size);
    std::list<Mesh> meshes;
    std::vector<const Mesh*> list;
    std::vector<bool> flags;
    for (int left = bytes.ConsumeIntegralInRange<int>(0, 3); left > 0; --left) {
        fuzz::MeshFromBytes(bytes).Fill(meshes.emplace_back(0.03f), 0);
        list.push_back(&meshes.back());
        flags.push_back(bytes.ConsumeBool());
    }
    const bool withNormals = bytes.ConsumeBool();
    kFile.Write(nullptr, 0);
    try {
        Require(OBJFile::SaveFile(kName, list, flags, withNormals));
    } catch (const std::out_of_range&) {
        // The promised answer to an index that names nothing. What comes before it is written.
    }
    Require(kFile.Read() == test::LiteralOBJ(list, flags, withNormals));
    Mesh mesh(0.03f);
    std::vector<MeshTextureGroup> groups;
    Require(OBJFile::LoadFile(kName, mesh, groups, false, 0));
    fuzz::RequireWhole(mesh);
    const auto plain = test::ReadPlainObj(kName, 0);
    Require(plain && test::DifferenceOf(mesh, groups, *plain).empty());
    return 0;
}
