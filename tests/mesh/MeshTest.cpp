#include "core/mesh/Mesh.h"

#include <memory>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/mesh/MeshBuilders.h"

namespace {

// A cube with everything set that a mesh keeps.
Mesh RichCube()
{
    Mesh mesh = Cube();
    *mesh.GetTexCoordVecPtr() = {{0, 0}, {1, 0}, {0, 1}};
    *mesh.GetTextureFacesVecPtr() = Faces(12, TriangleFace(0, 1, 2));
    mesh.PostProcess(false, true, true, true, nullptr, nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
    mesh.SetObjectID(5);
    mesh.SetComponentsId(6);
    mesh.SetObjectName(QStringLiteral("cube"));
    Matrix4<double> transform;
    transform.set(0, 3, 10);
    mesh.SetTransformMatrix(transform);
    return mesh;
}

void ExpectRichCube(const Mesh& mesh)
{
    ExpectCountsMatchLists(mesh, 8, 12);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), CubeCorners());
    EXPECT_EQ(*mesh.GetFacesVecPtr(), CubeFaces());
    EXPECT_EQ(mesh.GetTexCoordVecPtr()->size(), 3u);
    EXPECT_EQ(mesh.GetTextureFacesVecPtr()->size(), 12u);
    EXPECT_EQ(mesh.GetFaceNormals().size(), 12u);
    EXPECT_EQ(mesh.GetVertexNormals().size(), 8u);
    EXPECT_EQ(mesh.GetFaceNeighbours().size(), 12u);
    EXPECT_EQ(mesh.GetVolume(), 1);
    EXPECT_EQ(mesh.GetObjectID(), 5);
    EXPECT_EQ(mesh.GetComponentsId(), 6);
    EXPECT_EQ(mesh.GetObjectName(), QStringLiteral("cube"));
    EXPECT_EQ(mesh.GetTransformMatrix().get(0, 3), 10);
}

void ExpectNoGeometry(const Mesh& mesh)
{
    ExpectCountsMatchLists(mesh, 0, 0);
    EXPECT_TRUE(mesh.GetTexCoordVecPtr()->empty());
    EXPECT_TRUE(mesh.GetTextureFacesVecPtr()->empty());
    EXPECT_TRUE(mesh.GetFaceNormals().empty());
    EXPECT_TRUE(mesh.GetVertexNormals().empty());
    EXPECT_TRUE(mesh.GetFaceNeighbours().empty());
    EXPECT_EQ(mesh.GetVolume(), 0);
    EXPECT_EQ(mesh.CalcuateVolume(), 0);
    EXPECT_TRUE(mesh.GetBoundingBox().isEmpty);
}

// As any reader would after the mesh was emptied.
void ExpectUsable(Mesh& mesh)
{
    mesh.AddVertexAndFaces(CubeCorners(), CubeFaces());
    mesh.PostProcess(false, true, true, true, nullptr, nullptr);
    ExpectCountsMatchLists(mesh, 8, 12);
    EXPECT_EQ(mesh.GetFaceNeighbours().size(), 12u);
    EXPECT_EQ(mesh.CalcuateVolume(), 1);
}

} // namespace

TEST(Mesh, StartsEmpty)
{
    const Mesh mesh(0.03f);
    ExpectNoGeometry(mesh);
    EXPECT_EQ(mesh.GetObjectID(), -1);
    EXPECT_EQ(mesh.GetComponentsId(), -1);
    EXPECT_TRUE(mesh.GetObjectName().isEmpty());
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_EQ(mesh.GetTransformMatrix().get(row, column), row == column ? 1 : 0);
}

TEST(Mesh, ListsAreFilledInPlace)
{
    Mesh mesh(0.03f);
    mesh.GetVerticesVecPtr()->emplace_back(1.0f, 2.0f, 3.0f);
    mesh.GetFacesVecPtr()->emplace_back(0, 0, 0);
    mesh.GetTexCoordVecPtr()->emplace_back(0.5f, 0.25f);
    mesh.GetTextureFacesVecPtr()->emplace_back(1, 2, 3);
    const Mesh& read = mesh;
    EXPECT_EQ(read.GetVerticesVecPtr()->at(0), Point(1, 2, 3));
    EXPECT_EQ(read.GetFacesVecPtr()->at(0), TriangleFace(0, 0, 0));
    EXPECT_EQ(read.GetTexCoordVecPtr()->at(0), Vector2D<float>(0.5f, 0.25f));
    EXPECT_EQ(read.GetTextureFacesVecPtr()->at(0), TriangleFace(1, 2, 3));
}

TEST(Mesh, CountsStandApartFromTheLists)
{
    Mesh mesh(0.03f);
    mesh.GetVerticesVecPtr()->resize(3);
    EXPECT_EQ(mesh.GetVertexNum(), 0);
    mesh.SetVertexNum(7);
    mesh.SetFaceNum(9);
    EXPECT_EQ(mesh.GetVertexNum(), 7);
    EXPECT_EQ(mesh.GetFaceNum(), 9);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->size(), 3u);
    EXPECT_TRUE(mesh.GetFacesVecPtr()->empty());
}

TEST(Mesh, AddAppendsWithTheIndicesAsGiven)
{
    Mesh mesh(0.03f);
    mesh.AddVertexAndFaces({{0, 0, 0}, {1, 0, 0}}, {{0, 1, 1}});
    mesh.AddVertexAndFaces({{2, 0, 0}}, {{0, 1, 2}, {-1, 0, 9}});
    ExpectCountsMatchLists(mesh, 3, 3);
    EXPECT_EQ(*mesh.GetVerticesVecPtr(), (Points{{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}));
    EXPECT_EQ(*mesh.GetFacesVecPtr(), (Faces{{0, 1, 1}, {0, 1, 2}, {-1, 0, 9}}));
}

TEST(Mesh, AddSetsCountsThatDisagreed)
{
    Mesh mesh = Cube();
    mesh.SetFaceNum(1);
    mesh.SetVertexNum(1);
    mesh.AddVertexAndFaces({}, {});
    ExpectCountsMatchLists(mesh, 8, 12);
}

TEST(Mesh, CanBeAddedItsOwnLists)
{
    Mesh mesh = Cube();
    mesh.AddVertexAndFaces(*mesh.GetVerticesVecPtr(), *mesh.GetFacesVecPtr());
    ExpectCountsMatchLists(mesh, 16, 24);
    for (std::size_t i = 0; i < 16; ++i)
        EXPECT_EQ(mesh.GetVerticesVecPtr()->at(i), CubeCorners()[i % 8]);
    for (std::size_t i = 0; i < 24; ++i)
        EXPECT_EQ(mesh.GetFacesVecPtr()->at(i), CubeFaces()[i % 12]);
}

TEST(Mesh, CleanupEmptiesTheGeometryAndKeepsTheIdentity)
{
    Mesh mesh = RichCube();
    mesh.Cleanup();
    ExpectNoGeometry(mesh);
    EXPECT_EQ(mesh.GetObjectID(), 5);
    EXPECT_EQ(mesh.GetComponentsId(), 6);
    EXPECT_EQ(mesh.GetObjectName(), QStringLiteral("cube"));
    EXPECT_EQ(mesh.GetTransformMatrix().get(0, 3), 10);
    ExpectUsable(mesh);
}

TEST(Mesh, CleanupDropsWhatWasBuilt)
{
    Mesh mesh = RichCube();
    ExpectRichCube(mesh);
    mesh.Cleanup();
    ExpectNoGeometry(mesh);
}

TEST(Mesh, CopyIsAMeshOfItsOwn)
{
    Mesh source = RichCube();
    Mesh copy = source;
    ExpectRichCube(copy);
    copy.Cleanup();
    ExpectRichCube(source);
    copy = source;
    source.Cleanup();
    ExpectRichCube(copy);
}

TEST(Mesh, CopyTakesBuiltDataAlong)
{
    const Mesh source = RichCube();
    ExpectRichCube(source);
    const Mesh copy = source;
    EXPECT_NE(&copy.GetVertexNormals(), &source.GetVertexNormals());
    EXPECT_EQ(copy.GetVertexNormals(), source.GetVertexNormals());
    EXPECT_EQ(copy.GetFaceNeighbours(), source.GetFaceNeighbours());
}

TEST(Mesh, CopyKeepsCountsThatDisagreeWithTheLists)
{
    Mesh source = Cube();
    source.SetFaceNum(3);
    const Mesh copy = source;
    EXPECT_EQ(copy.GetFaceNum(), 3);
    EXPECT_EQ(source.GetFaceNum(), 3);
}

TEST(Mesh, MoveTakesEverything)
{
    Mesh source = RichCube();
    const Point* const storage = source.GetVerticesVecPtr()->data();
    Mesh moved = std::move(source);
    ExpectRichCube(moved);
    EXPECT_EQ(moved.GetVerticesVecPtr()->data(), storage);
    Mesh assigned(1);
    assigned = std::move(moved);
    ExpectRichCube(assigned);
}

TEST(Mesh, MovedFromMeshIsEmptyAndUsable)
{
    Mesh source = RichCube();
    ExpectRichCube(source); // with everything built
    Mesh moved = std::move(source);
    ExpectNoGeometry(source);
    EXPECT_TRUE(source.GetObjectName().isEmpty());
    ExpectUsable(source);

    Mesh assigned = RichCube();
    assigned = std::move(moved);
    ExpectNoGeometry(moved);
    ExpectUsable(moved);
    ExpectRichCube(assigned);
}

TEST(Mesh, MoveBeforeAnythingIsBuiltBuildsAtTheNewPlace)
{
    Mesh source = RichCube();
    const Mesh moved = std::move(source);
    EXPECT_EQ(moved.GetFaceNeighbours().size(), 12u);
    EXPECT_TRUE(source.GetFaceNeighbours().empty());
}

TEST(Mesh, MovedOntoItselfStaysConsistent)
{
    Mesh mesh = RichCube();
    Mesh& same = mesh;
    mesh = std::move(same);
    ExpectCountsMatchLists(mesh, mesh.GetVerticesVecPtr()->size(), mesh.GetFacesVecPtr()->size());
    mesh.Cleanup();
    ExpectUsable(mesh);
}

TEST(Mesh, MovesWithoutThrowing)
{
    // So that a list of meshes grows by moving them.
    EXPECT_TRUE(std::is_nothrow_move_constructible_v<Mesh>);
    EXPECT_TRUE(std::is_nothrow_move_assignable_v<Mesh>);
}

TEST(Mesh, CanLiveOnTheHeap)
{
    const auto mesh = std::make_unique<Mesh>(0.03f);
    ExpectUsable(*mesh);
}

TEST(Mesh, TransformIsHandedOutAsACopy)
{
    Mesh mesh(0.03f);
    Matrix4<double> transform = mesh.GetTransformMatrix();
    transform.set(1, 3, 4);
    EXPECT_EQ(mesh.GetTransformMatrix().get(1, 3), 0);
    mesh.SetTransformMatrix(transform);
    EXPECT_EQ(mesh.GetTransformMatrix().get(1, 3), 4);
}

TEST(Mesh, BoundingBoxEnclosesTheVertices)
{
    const Mesh mesh = MakeMesh({{1, -2, 3}, {-4, 5, 0}, {0, 0, 9}}, {});
    const MeshBoundingBox box = mesh.GetBoundingBox();
    EXPECT_FALSE(box.isEmpty);
    EXPECT_EQ(box.minimum, Point(-4, -2, 0));
    EXPECT_EQ(box.maximum, Point(1, 5, 9));
}

TEST(Mesh, BoundingBoxPassesOverVerticesThatAreNotFinite)
{
    const Mesh mesh =
        MakeMesh({{kNaN, 100, 100}, {1, 1, 1}, {100, kInfinity, 0}, {2, 3, 0}, {0, 0, -kInfinity}}, {});
    EXPECT_EQ(mesh.GetBoundingBox().minimum, Point(1, 1, 0));
    EXPECT_EQ(mesh.GetBoundingBox().maximum, Point(2, 3, 1));
}

TEST(Mesh, BoundingBoxWithoutFiniteVertexIsEmpty)
{
    const MeshBoundingBox box = MakeMesh({{kNaN, 1, 1}}, {}).GetBoundingBox();
    EXPECT_TRUE(box.isEmpty);
    EXPECT_EQ(box.minimum, Point(0, 0, 0));
    EXPECT_EQ(box.maximum, Point(0, 0, 0));
}

TEST(Mesh, BoundingBoxFollowsTheLists)
{
    Mesh mesh = MakeMesh({{1, 1, 1}}, {});
    EXPECT_EQ(mesh.GetBoundingBox().maximum, Point(1, 1, 1));
    mesh.GetVerticesVecPtr()->emplace_back(5.0f, 0.0f, 0.0f);
    EXPECT_EQ(mesh.GetBoundingBox().maximum, Point(5, 1, 1));
}

TEST(MeshValidate, DropsExactlyTheFacesWithIndicesOutside)
{
    const Points vertices(3);
    Faces faces = {{0, 1, 2}, {-1, 0, 1},         {2, 1, 0},           {0, -2, 1}, {0, 1, 3},
                   {1, 1, 1}, {0, kLowestInt, 0}, {kHighestInt, 0, 1}, {2, 2, 0}};
    Mesh::ValidateVertexAndFaces(faces, vertices);
    EXPECT_EQ(faces, (Faces{{0, 1, 2}, {2, 1, 0}, {1, 1, 1}, {2, 2, 0}}));
}

TEST(MeshValidate, DropsEveryFaceWhenThereIsNoVertex)
{
    Faces faces = {{0, 0, 0}, {-1, -1, -1}};
    Mesh::ValidateVertexAndFaces(faces, {});
    EXPECT_TRUE(faces.empty());
}

TEST(MeshValidate, LeavesGoodFacesAlone)
{
    Faces faces = CubeFaces();
    Mesh::ValidateVertexAndFaces(faces, CubeCorners());
    EXPECT_EQ(faces, CubeFaces());
}

TEST(MeshValidate, DropsTheUnresolvedRelativeIndicesOfAFace)
{
    Faces faces = {{-2, -3, -4}};
    Mesh::ValidateVertexAndFaces(faces, CubeCorners());
    EXPECT_TRUE(faces.empty());
}

TEST(MeshValidate, KeepsTheOrderOfTheOthers)
{
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        const int vertexCount = RandomInt(random, 0, 6);
        const Points vertices{std::size_t(vertexCount)};
        const Faces all = RandomFaces(random, RandomInt(random, 0, 20), -1, vertexCount);
        Faces expected;
        for (const TriangleFace& face : all)
            if (IsInList(face, vertices.size()))
                expected.push_back(face);
        Faces faces = all;
        Mesh::ValidateVertexAndFaces(faces, vertices);
        ASSERT_EQ(faces, expected);
    }
}
