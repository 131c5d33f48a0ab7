#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/mesh/MeshBuilders.h"

namespace {

Points Moved(Points points, const Point& by)
{
    for (Point& point : points)
        point += by;
    return points;
}

Faces TurnedOver(Faces faces)
{
    for (TriangleFace& face : faces)
        std::swap(face.v[0], face.v[1]);
    return faces;
}

double VolumeOf(const Points& vertices, const Faces& faces)
{
    return MakeMesh(vertices, faces).CalcuateVolume();
}

// Splits random faces of a cube at a point outside of them: closed, whatever the points.
Mesh RandomClosedMesh(std::mt19937& random)
{
    Points vertices = CubeCorners();
    Faces faces = CubeFaces();
    for (int split = RandomInt(random, 0, 20); split > 0; --split) {
        const auto at = std::size_t(RandomInt(random, 0, int(faces.size()) - 1));
        const TriangleFace face = faces[at];
        const int apex = int(vertices.size());
        vertices.emplace_back(float(RandomInt(random, -8, 8)) / 4, float(RandomInt(random, -8, 8)) / 4,
                              float(RandomInt(random, -8, 8)) / 4);
        faces[at] = {face[0], face[1], apex};
        faces.emplace_back(face[1], face[2], apex);
        faces.emplace_back(face[2], face[0], apex);
    }
    return MakeMesh(vertices, faces);
}

long double OracleVolume(const Mesh& mesh)
{
    long double sum = 0;
    for (const TriangleFace& face : *mesh.GetFacesVecPtr()) {
        const Point& a = mesh.GetVerticesVecPtr()->at(std::size_t(face[0]));
        const Point& b = mesh.GetVerticesVecPtr()->at(std::size_t(face[1]));
        const Point& c = mesh.GetVerticesVecPtr()->at(std::size_t(face[2]));
        using Wide = long double;
        sum += Wide(a.x) * (Wide(b.y) * Wide(c.z) - Wide(b.z) * Wide(c.y)) +
               Wide(a.y) * (Wide(b.z) * Wide(c.x) - Wide(b.x) * Wide(c.z)) +
               Wide(a.z) * (Wide(b.x) * Wide(c.y) - Wide(b.y) * Wide(c.x));
    }
    return sum / 6;
}

} // namespace

TEST(MeshVolume, OfTheUnitCubeIsOne)
{
    EXPECT_EQ(Cube().CalcuateVolume(), 1);
}

TEST(MeshVolume, IsNegativeWhenTheFacesLookInward)
{
    EXPECT_EQ(VolumeOf(CubeCorners(), TurnedOver(CubeFaces())), -1);
}

TEST(MeshVolume, IsZeroWithoutFaces)
{
    EXPECT_EQ(Mesh(0.03f).CalcuateVolume(), 0);
    EXPECT_EQ(VolumeOf(CubeCorners(), {}), 0);
}

TEST(MeshVolume, IsExactFarFromTheOrigin)
{
    EXPECT_EQ(VolumeOf(Moved(CubeCorners(), {8388608, -8388608, 4194304}), CubeFaces()), 1);
}

TEST(MeshVolume, PassesOverFacesWithIndicesOutside)
{
    Faces faces = CubeFaces();
    faces.insert(faces.begin() + 3, {{-1, -1, -1}, {0, 1, 8}, {kLowestInt, 0, 1}, {0, kHighestInt, 1}});
    EXPECT_EQ(VolumeOf(CubeCorners(), faces), 1);
}

TEST(MeshVolume, PassesOverFacesWithACornerThatIsNotFinite)
{
    for (const float bad : {kNaN, kInfinity, -kInfinity})
        for (int axis = 0; axis < 3; ++axis)
            for (int corner = 0; corner < 3; ++corner) {
                Points vertices = CubeCorners();
                vertices.emplace_back(axis == 0 ? bad : 0.0f, axis == 1 ? bad : 0.0f, axis == 2 ? bad : 0.0f);
                Faces faces = CubeFaces();
                TriangleFace face(1, 2, 7);
                face[corner] = 8;
                faces.push_back(face);
                EXPECT_EQ(VolumeOf(vertices, faces), 1)
                    << bad << " on axis " << axis << ", corner " << corner;
            }
}

TEST(MeshVolume, DoesNotNeedAFiniteFirstVertex)
{
    Points vertices = CubeCorners();
    vertices.insert(vertices.begin(), Point(kNaN, kInfinity, 0));
    Faces faces = CubeFaces();
    for (TriangleFace& face : faces)
        face = {face[0] + 1, face[1] + 1, face[2] + 1};
    EXPECT_EQ(VolumeOf(vertices, faces), 1);
}

TEST(MeshVolume, FacesWithoutAreaAddNothing)
{
    Faces faces = CubeFaces();
    faces.insert(faces.end(), {{7, 7, 7}, {7, 1, 1}, {3, 5, 3}});
    EXPECT_EQ(VolumeOf(CubeCorners(), faces), 1);
}

TEST(MeshVolume, OfTheLargestCoordinatesIsFinite)
{
    const float size = std::numeric_limits<float>::max();
    const double volume = VolumeOf({{0, 0, 0}, {size, 0, 0}, {0, size, 0}, {0, 0, size}},
                                   {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}});
    EXPECT_NEAR(volume / std::pow(double(size), 3), 1.0 / 6, 1e-15);
}

TEST(MeshVolume, OfTheSmallestCoordinatesIsNotZero)
{
    const float size = 1e-40f;
    const double volume = VolumeOf({{0, 0, 0}, {size, 0, 0}, {0, size, 0}, {0, 0, size}},
                                   {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}});
    EXPECT_NEAR(volume / std::pow(double(size), 3), 1.0 / 6, 1e-15);
}

TEST(MeshVolume, WalksTheListWhateverTheCount)
{
    Mesh mesh = Cube();
    mesh.SetFaceNum(2);
    EXPECT_EQ(mesh.CalcuateVolume(), 1);
}

TEST(MeshVolume, IsStoredOnlyWhenSet)
{
    Mesh mesh = Cube();
    EXPECT_EQ(mesh.CalcuateVolume(), 1);
    EXPECT_EQ(mesh.GetVolume(), 0);
    mesh.SetVolume(2.5);
    EXPECT_EQ(mesh.GetVolume(), 2.5);
    EXPECT_EQ(mesh.CalcuateVolume(), 1);
}

TEST(MeshVolume, OfClosedMeshesMatchesTheOracleWhereverTheyLie)
{
    std::mt19937 random(7);
    for (int round = 0; round < 500; ++round) {
        Mesh mesh = RandomClosedMesh(random);
        const double expected = double(OracleVolume(mesh));
        EXPECT_NEAR(mesh.CalcuateVolume(), expected, 1e-12);
        for (Point& vertex : *mesh.GetVerticesVecPtr())
            vertex += Point(65536, -65536, 32768);
        EXPECT_NEAR(mesh.CalcuateVolume(), expected, 1e-12);
        for (TriangleFace& face : *mesh.GetFacesVecPtr())
            std::swap(face.v[1], face.v[2]);
        EXPECT_NEAR(mesh.CalcuateVolume(), -expected, 1e-12);
    }
}
