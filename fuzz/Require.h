#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "core/mesh/Mesh.h"

namespace fuzz {

/// Ends the run as a finding when what must hold does not.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

/// What holds for every mesh that a reader filled: counts as the lists are long, faces of vertices there are.
inline void RequireWhole(const Mesh& mesh)
{
    const std::size_t vertexCount = mesh.GetVerticesVecPtr()->size();
    Require(static_cast<std::size_t>(mesh.GetVertexNum()) == vertexCount);
    Require(static_cast<std::size_t>(mesh.GetFaceNum()) == mesh.GetFacesVecPtr()->size());
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        for (const int index : face.v)
            Require(index >= 0 && static_cast<std::size_t>(index) < vertexCount);
    }
}

/// About one input in eight, the same ones each time. What compares only these tries several times as many
/// inputs: the plain side of a comparison takes most of the time.
inline bool IsOneOfEight(const std::uint8_t* data, std::size_t size)
{
    std::uint32_t hash = 0;
    for (std::size_t i = 0; i < size; ++i)
        hash = (hash ^ data[i]) * 0x01000193;
    return hash >> 29 == 0;
}

} // namespace fuzz
