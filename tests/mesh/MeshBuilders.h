#pragma once

#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"

using Point = Vector3D<float>;
using Points = std::vector<Point>;
using Faces = std::vector<TriangleFace>;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr int kHighestInt = std::numeric_limits<int>::max();

/// Corners of the unit cube, number x + 2 y + 4 z.
inline Points CubeCorners()
{
    Points corners;
    for (int i = 0; i < 8; ++i)
        corners.emplace_back(float(i & 1), float(i >> 1 & 1), float(i >> 2));
    return corners;
}

/// Its sides as two faces each, wound outward.
inline Faces CubeFaces()
{
    return {{0, 2, 3}, {0, 3, 1}, {4, 5, 7}, {4, 7, 6}, {0, 1, 5}, {0, 5, 4},
            {2, 6, 7}, {2, 7, 3}, {0, 4, 6}, {0, 6, 2}, {1, 3, 7}, {1, 7, 5}};
}

inline Mesh MakeMesh(const Points& vertices, const Faces& faces, float mergeDistance = 0.03f)
{
    Mesh mesh(mergeDistance);
    mesh.AddVertexAndFaces(vertices, faces);
    return mesh;
}

inline Mesh Cube()
{
    return MakeMesh(CubeCorners(), CubeFaces());
}

inline int RandomInt(std::mt19937& random, int first, int last)
{
    return std::uniform_int_distribution<int>(first, last)(random);
}

/// Faces with indices from `first` to `last`, all equally likely.
inline Faces RandomFaces(std::mt19937& random, int count, int first, int last)
{
    Faces faces;
    for (int i = 0; i < count; ++i) {
        const int a = RandomInt(random, first, last), b = RandomInt(random, first, last);
        faces.emplace_back(a, b, RandomInt(random, first, last));
    }
    return faces;
}

/// Vertices on a lattice of `side`^3 places, so that equal and near ones are common.
inline Points RandomPoints(std::mt19937& random, int count, int side, float spacing)
{
    Points points;
    for (int i = 0; i < count; ++i) {
        const int x = RandomInt(random, 0, side - 1), y = RandomInt(random, 0, side - 1);
        points.emplace_back(float(x) * spacing, float(y) * spacing,
                            float(RandomInt(random, 0, side - 1)) * spacing);
    }
    return points;
}

inline bool IsInList(const TriangleFace& face, std::size_t vertexCount)
{
    for (const int index : face.v)
        if (index < 0 || std::size_t(index) >= vertexCount)
            return false;
    return true;
}

inline void ExpectCountsMatchLists(const Mesh& mesh, std::size_t vertexCount, std::size_t faceCount)
{
    EXPECT_EQ(mesh.GetVerticesVecPtr()->size(), vertexCount);
    EXPECT_EQ(mesh.GetFacesVecPtr()->size(), faceCount);
    EXPECT_EQ(mesh.GetVertexNum(), int(vertexCount));
    EXPECT_EQ(mesh.GetFaceNum(), int(faceCount));
}
