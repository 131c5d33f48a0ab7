#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/cad/CadLoadSupport.h"

namespace test {

/// All that a load gives, to be compared bit by bit.
struct CadSummary {
    struct Entry {
        QString name;
        std::vector<std::uint32_t> bits; ///< of vertices, faces and volume
        bool operator==(const Entry& other) const { return name == other.name && bits == other.bits; }
    };

    bool isLoaded = false;
    std::vector<Entry> meshes;
    bool operator==(const CadSummary& other) const
    {
        return isLoaded == other.isLoaded && meshes == other.meshes;
    }
};

/// Appends the bits of objects that have no padding.
template<class Object>
void AppendBits(const Object* objects, std::size_t count, std::vector<std::uint32_t>& bits)
{
    static_assert(sizeof(Object) % sizeof(std::uint32_t) == 0);
    const std::size_t wordCount = count * sizeof(Object) / sizeof(std::uint32_t), before = bits.size();
    bits.resize(before + wordCount);
    if (wordCount > 0)
        std::memcpy(&bits[before], objects, count * sizeof(Object));
}

inline CadSummary LoadSummary(const QString& fileName, double deflection = kDeflection, double angle = kAngle)
{
    const CadMeshes meshes(fileName, deflection, angle);
    CadSummary summary;
    summary.isLoaded = meshes.IsLoaded();
    for (const Mesh* const mesh : meshes.All()) {
        CadSummary::Entry entry;
        entry.name = mesh->GetObjectName();
        AppendBits(mesh->GetVerticesVecPtr()->data(), mesh->GetVerticesVecPtr()->size(), entry.bits);
        AppendBits(mesh->GetFacesVecPtr()->data(), mesh->GetFacesVecPtr()->size(), entry.bits);
        const double volume = mesh->GetVolume();
        AppendBits(&volume, 1, entry.bits);
        summary.meshes.push_back(std::move(entry));
    }
    return summary;
}

} // namespace test
