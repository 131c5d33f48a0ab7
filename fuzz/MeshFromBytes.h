#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#include "core/mesh/Mesh.h"

namespace fuzz {

/// Makes what a host might hand to a writer, wrong indices and counts included.
class MeshFromBytes {
public:
    explicit MeshFromBytes(FuzzedDataProvider& bytes) : m_bytes(bytes) {}

    /// Any bits, or a number as models have them.
    float Coordinate()
    {
        if (m_bytes.ConsumeBool())
            return float(m_bytes.ConsumeIntegral<std::int16_t>()) / 64;
        const auto bits = m_bytes.ConsumeIntegral<std::uint32_t>();
        float value;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    Vector3D<float> Point()
    {
        const float x = Coordinate();
        const float y = Coordinate();
        return {x, y, Coordinate()};
    }

    /// @param leastIndex  of its faces; below 0 for indices that name nothing
    void Fill(Mesh& mesh, int leastIndex)
    {
        const std::size_t vertexCount = m_bytes.ConsumeIntegralInRange<std::size_t>(0, 12);
        std::vector<Vector3D<float>> vertices(vertexCount);
        for (Vector3D<float>& vertex : vertices)
            vertex = Point();
        const std::vector<TriangleFace> faces = Faces(vertexCount, leastIndex);
        mesh.AddVertexAndFaces(vertices, faces);
        if (m_bytes.ConsumeBool()) {
            const std::size_t coordCount = m_bytes.ConsumeIntegralInRange<std::size_t>(1, 6);
            for (std::size_t i = 0; i < coordCount; ++i)
                mesh.GetTexCoordVecPtr()->push_back({Coordinate(), Coordinate()});
            *mesh.GetTextureFacesVecPtr() = Faces(coordCount, leastIndex);
        }
        // Now and then a count that is not that of the list.
        if (m_bytes.ConsumeIntegral<std::uint8_t>() < 32)
            mesh.SetFaceNum(m_bytes.ConsumeIntegralInRange<int>(-2, 20));
    }

private:
    std::vector<TriangleFace> Faces(std::size_t entryCount, int leastIndex)
    {
        // One index in many lies beyond the list.
        const int mostIndex = int(entryCount) - (m_bytes.ConsumeIntegral<std::uint8_t>() < 224 ? 1 : 0);
        std::vector<TriangleFace> faces(
            mostIndex < leastIndex ? 0 : m_bytes.ConsumeIntegralInRange<std::size_t>(0, 16));
        for (TriangleFace& face : faces) {
            for (int& index : face.v)
                index = m_bytes.ConsumeIntegralInRange<int>(leastIndex, mostIndex);
        }
        return faces;
    }

    FuzzedDataProvider& m_bytes;
};

} // namespace fuzz
