#pragma once

#include <vector>

#include <QString>

#include <gtest/gtest.h>

#include "core/mesh/Mesh.h"

namespace test {

/// A mesh of one face with something in every place.
inline Mesh FilledMesh()
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{7, 0, 0}, {8, 0, 0}, {7, 1, 0}}, {{0, 1, 2}});
    mesh.GetTexCoordVecPtr()->assign(3, {0.5f, 0.25f});
    mesh.GetTextureFacesVecPtr()->assign(1, {2, 1, 0});
    mesh.PostProcess(false, false, true, true, nullptr, nullptr);
    mesh.SetVolume(77);
    mesh.SetObjectID(5);
    mesh.SetComponentsId(6);
    mesh.SetObjectName(QStringLiteral("part"));
    Matrix4<double> transform;
    transform.set(0, 3, 9);
    mesh.SetTransformMatrix(transform);
    return mesh;
}

/// What a load leaves alone also when it replaces the rest.
inline void ExpectIdentityOfFilledMesh(const Mesh& mesh)
{
    EXPECT_EQ(mesh.GetObjectID(), 5);
    EXPECT_EQ(mesh.GetComponentsId(), 6);
    EXPECT_EQ(mesh.GetObjectName(), QStringLiteral("part"));
    EXPECT_EQ(mesh.GetTransformMatrix().get(0, 3), 9);
}

/// What a load leaves that fails.
inline void ExpectFilledMesh(const Mesh& mesh)
{
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (std::vector<Vector3D<float>>{{7, 0, 0}, {8, 0, 0}, {7, 1, 0}}));
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (std::vector<TriangleFace>{{0, 1, 2}}));
    EXPECT_EQ(*mesh.GetTexCoordVecPtr(), std::vector<Vector2D<float>>(3, {0.5f, 0.25f}));
    EXPECT_EQ(*mesh.GetTextureFacesVecPtr(), (std::vector<TriangleFace>{{2, 1, 0}}));
    EXPECT_EQ(mesh.GetVertexNum(), 3);
    EXPECT_EQ(mesh.GetFaceNum(), 1);
    EXPECT_EQ(mesh.GetVolume(), 77);
    EXPECT_EQ(mesh.GetFaceNormals().size(), 1U);
    EXPECT_EQ(mesh.GetVertexNormals().size(), 3U);
    EXPECT_EQ(mesh.GetFaceNeighbours().size(), 1U);
    ExpectIdentityOfFilledMesh(mesh);
}

} // namespace test
