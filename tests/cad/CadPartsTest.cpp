#include <cmath>
#include <limits>

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <gp_Pln.hxx>

#include <gtest/gtest.h>

#include "fileformat/cad/SharedParts_p.h"
#include "fileformat/cad/Tessellation_p.h"

// The steps of an import, each by itself.

namespace {

using namespace kr::cad;

TopoDS_Shape Box(double x, double y, double z)
{
    return BRepPrimAPI_MakeBox(x, y, z).Shape();
}

TopoDS_Shape Compound(const std::vector<TopoDS_Shape>& shapes)
{
    TopoDS_Compound compound;
    BRep_Builder().MakeCompound(compound);
    for (const TopoDS_Shape& shape : shapes)
        BRep_Builder().Add(compound, shape);
    return compound;
}

TopoDS_Face EndlessFace()
{
    return BRepBuilderAPI_MakeFace(gp_Pln(gp::XOY())).Face();
}

/// The round face of a cylinder: its seam is two lines of nodes.
TopoDS_Face RoundFace()
{
    return TopoDS::Face(TopExp_Explorer(BRepPrimAPI_MakeCylinder(10, 20).Shape(), TopAbs_FACE).Current());
}

void Triangulate(const TopoDS_Shape& shape, double deflection, double angle)
{
    const BRepMesh_IncrementalMesh mesher(shape, deflection, false, angle);
}

Handle(Poly_Triangulation) TriangulationOf(const TopoDS_Face& face)
{
    TopLoc_Location location;
    return BRep_Tool::Triangulation(face, location);
}

TopoDS_Shape Extruded(const TopoDS_Shape& face, double z)
{
    return BRepPrimAPI_MakePrism(face, gp_Vec(0, 0, z)).Shape();
}

std::vector<PlacedShape> Placed(const std::vector<TopoDS_Shape>& shapes)
{
    std::vector<PlacedShape> placed;
    for (const TopoDS_Shape& shape : shapes)
        placed.push_back({shape, QString()});
    return placed;
}

std::vector<ShapeGroup> Groups(const std::vector<TopoDS_Shape>& shapes)
{
    return GroupsWithoutSharedParts(Placed(shapes));
}

TEST(CadShapeSize, IsFourTimesTheLongestSide)
{
    EXPECT_NEAR(ComputeShapeSize(Box(30, 10, 20)), 120, 1e-5);
    EXPECT_NEAR(ComputeShapeSize(Box(10, 30, 20)), 120, 1e-5);
    EXPECT_NEAR(ComputeShapeSize(Box(10, 20, 30)), 120, 1e-5);
}

TEST(CadShapeSize, IsOneWithoutABox)
{
    EXPECT_EQ(ComputeShapeSize(Compound({})), 1);
}

TEST(CadShapeSize, IsOneWithoutAFinitePart)
{
    const gp_Pln tilted(gp_Pnt(1, 2, 3), gp_Dir(1, 2, 3)); // open in all six directions
    EXPECT_EQ(ComputeShapeSize(BRepBuilderAPI_MakeFace(tilted).Face()), 1);
}

TEST(CadShapeSize, IsThatOfTheFinitePartOfAnOpenBox)
{
    EXPECT_NEAR(ComputeShapeSize(Compound({Box(10, 20, 30), EndlessFace()})), 120, 1e-5);
}

TEST(CadShapeSize, DoesNotCareForTriangles)
{
    const TopoDS_Shape ball = BRepPrimAPI_MakeSphere(10).Shape();
    const double size = ComputeShapeSize(ball);
    Triangulate(ball, 5, 2);
    EXPECT_EQ(ComputeShapeSize(ball), size);
    EXPECT_GE(size, 80);
}

TEST(CadFace, NullGivesNull)
{
    EXPECT_EQ(TessellateFace(TopoDS_Face(), {1, 0.3}), nullptr);
}

TEST(CadFace, WithoutTrianglesGivesNull)
{
    EXPECT_EQ(TessellateFace(EndlessFace(), {1, 0.3}), nullptr);
}

TEST(CadFace, TriangulatedFinerIsNotMeshedAgain)
{
    const TopoDS_Face face = RoundFace();
    Triangulate(face, 0.01, 0.1);
    const Handle(Poly_Triangulation) earlier = TriangulationOf(face);
    const std::unique_ptr<Mesh> mesh = TessellateFace(face, {1, 0.5});
    EXPECT_EQ(TriangulationOf(face), earlier);
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->GetFaceNum(), earlier->NbTriangles());
}

TEST(CadFace, TriangulatedAsFinelyAsAskedForIsNotMeshedAgain)
{
    for (const double allowance : {0.0, 0.9e-7}) {
        const TopoDS_Face face = RoundFace();
        Triangulate(face, 0.01, 0.1);
        const Handle(Poly_Triangulation) earlier = TriangulationOf(face);
        ASSERT_NE(TessellateFace(face, {earlier->Deflection() - allowance, 0.1}), nullptr);
        EXPECT_EQ(TriangulationOf(face), earlier) << allowance;
    }
}

TEST(CadFace, TriangulatedCoarserIsMeshedAgain)
{
    const TopoDS_Face face = RoundFace();
    Triangulate(face, 5, 1);
    const int earlierCount = TriangulationOf(face)->NbTriangles();
    const std::unique_ptr<Mesh> mesh = TessellateFace(face, {0.01, 0.1});
    ASSERT_NE(mesh, nullptr);
    EXPECT_GT(mesh->GetFaceNum(), earlierCount);
    EXPECT_EQ(mesh->GetFaceNum(), TriangulationOf(face)->NbTriangles());
}

TEST(CadFace, HasADeflectionOfATenThousandthAtLeast)
{
    const TopoDS_Face face = RoundFace();
    Triangulate(face, 0.0001, 0.1);
    const Handle(Poly_Triangulation) earlier = TriangulationOf(face);
    ASSERT_NE(TessellateFace(face, {0, 0.1}), nullptr);
    EXPECT_EQ(TriangulationOf(face), earlier);
}

TEST(CadFace, KeepsVerticesApartThatAShellMerges)
{
    const std::unique_ptr<Mesh> mesh = TessellateFace(RoundFace(), {0.01, 0.1});
    const int vertexCount = mesh->GetVertexNum();
    mesh->PostProcessMergeRawVertexBuffer();
    EXPECT_LT(mesh->GetVertexNum(), vertexCount);
}

TEST(CadFace, StandsWhereItsLocationPutsIt)
{
    gp_Trsf move;
    move.SetTranslation(gp_Vec(100, 200, 300));
    const std::unique_ptr<Mesh> mesh =
        TessellateFace(TopoDS::Face(RoundFace().Moved(TopLoc_Location(move))), {0.01, 0.1});
    const MeshBoundingBox box = mesh->GetBoundingBox();
    EXPECT_FLOAT_EQ(box.minimum.z, 300);
    EXPECT_FLOAT_EQ(box.maximum.z, 320);
    EXPECT_FLOAT_EQ(box.maximum.x, 110);
}

TEST(CadShape, CarriesItsName)
{
    const std::unique_ptr<Mesh> solid = TessellateShape({Box(1, 2, 3), QStringLiteral("Box")}, {1, 20});
    EXPECT_EQ(solid->GetObjectName(), QStringLiteral("Box"));
    const std::unique_ptr<Mesh> face = TessellateShape({RoundFace(), QStringLiteral("Face")}, {1, 0.5});
    EXPECT_EQ(face->GetObjectName(), QStringLiteral("Face"));
}

TEST(CadShape, CountsWhatTheMergeLeft)
{
    const std::unique_ptr<Mesh> mesh = TessellateShape({Box(1, 2, 3), QString()}, {1, 20});
    EXPECT_EQ(mesh->GetVertexNum(), 8);
    EXPECT_EQ(mesh->GetFaceNum(), 12);
    EXPECT_EQ(mesh->GetVerticesVecPtr()->size(), 8u);
    EXPECT_EQ(mesh->GetFacesVecPtr()->size(), 12u);
}

TEST(CadShape, HasTheMergeDistanceOfItsMesh)
{
    for (const TopoDS_Shape& shape : {Box(1, 2, 3), TopoDS_Shape(RoundFace())}) {
        const std::unique_ptr<Mesh> mesh = TessellateShape({shape, QString()}, {1, 20});
        mesh->GetFacesVecPtr()->clear();
        mesh->GetVerticesVecPtr()->assign({{0, 0, 0}, {0.02f, 0, 0}, {1, 0, 0}, {1.04f, 0, 0}});
        mesh->PostProcess(true, false, false, false, nullptr, nullptr);
        EXPECT_EQ(mesh->GetVertexNum(), 3);
    }
}

TEST(CadShape, OfAReversedSolidIsTurnedInsideOut)
{
    std::unique_ptr<Mesh> mesh = TessellateShape({Box(1, 2, 3), QString()}, {1, 20});
    EXPECT_DOUBLE_EQ(mesh->CalcuateVolume(), 6);
    mesh = TessellateShape({Box(1, 2, 3).Reversed(), QString()}, {1, 20});
    EXPECT_DOUBLE_EQ(mesh->CalcuateVolume(), -6);
}

TEST(CadShape, WithoutTrianglesGivesNullInItsPlace)
{
    const MeshList meshes = TessellateShapes(Placed({Box(1, 1, 1), EndlessFace(), Box(2, 2, 2)}), {1, 20});
    ASSERT_EQ(meshes.size(), 3u);
    EXPECT_NE(meshes[0], nullptr);
    EXPECT_EQ(meshes[1], nullptr);
    EXPECT_NE(meshes[2], nullptr);
}

TEST(CadShape, ExceptionsOfWorkersReachTheCaller)
{
    const std::vector<PlacedShape> shapes = Placed(std::vector<TopoDS_Shape>(100, Box(1, 1, 1)));
    EXPECT_THROW(TessellateShapes(shapes, {0, 20}), Standard_Failure);
    EXPECT_THROW(TessellateShapes(shapes, {1, 0}), Standard_Failure);
    EXPECT_EQ(TessellateShapes(shapes, {1, 20}).size(), 100u);
}

TEST(CadMesh, IsFinishedWithItsVolumeNormalsAndNeighbours)
{
    MeshList meshes = TessellateShapes(Placed({Box(1, 2, 3), Box(2, 2, 2)}), {1, 20});
    EXPECT_EQ(meshes[0]->GetVolume(), 0);
    EXPECT_TRUE(meshes[0]->GetFaceNormals().empty());
    FinishMeshes(meshes);
    EXPECT_DOUBLE_EQ(meshes[0]->GetVolume(), 6);
    EXPECT_DOUBLE_EQ(meshes[1]->GetVolume(), 8);
    EXPECT_EQ(meshes[0]->GetFaceNormals().size(), 12u);
    EXPECT_EQ(meshes[0]->GetVertexNormals().size(), 8u);
    EXPECT_EQ(meshes[0]->GetFaceNeighbours().size(), 12u);
}

using GroupList = std::vector<ShapeGroup>;

TEST(CadSharedParts, ShapesThatShareNothingStandAlone)
{
    EXPECT_EQ(Groups({}), GroupList());
    EXPECT_EQ(Groups({Box(1, 1, 1), Box(1, 1, 1)}), GroupList({{0}, {1}}));
}

TEST(CadSharedParts, SolidsWithACommonFaceStandTogether)
{
    const TopoDS_Shape face = TopExp_Explorer(Box(1, 1, 1), TopAbs_FACE).Current();
    const TopoDS_Shape up = Extruded(face, 2), down = Extruded(face, -2);
    EXPECT_EQ(Groups({up, Box(1, 1, 1), down}), GroupList({{0, 2}, {1}}));
}

TEST(CadSharedParts, SolidsWithACommonEdgeStandTogether)
{
    const TopoDS_Shape edge = TopExp_Explorer(Box(1, 1, 1), TopAbs_EDGE).Current();
    const TopoDS_Shape near = BRepPrimAPI_MakePrism(edge, gp_Vec(1, 2, 3)).Shape();
    const TopoDS_Shape far = BRepPrimAPI_MakePrism(edge, gp_Vec(-1, 2, 3)).Shape();
    EXPECT_EQ(Groups({Box(1, 1, 1), near, far}), GroupList({{0}, {1, 2}}));
}

TEST(CadSharedParts, TheSameSolidTwiceStandsTogether)
{
    gp_Trsf move;
    move.SetTranslation(gp_Vec(10, 0, 0));
    const TopoDS_Shape box = Box(1, 1, 1);
    EXPECT_EQ(Groups({box, box.Moved(TopLoc_Location(move))}), GroupList({{0, 1}}));
}

TEST(CadSharedParts, WhatIsCommonWithTwoJoinsThem)
{
    const TopoDS_Shape first = Box(1, 1, 1), second = Box(2, 2, 2), third = Box(3, 3, 3);
    EXPECT_EQ(
        Groups({first, second, third, Compound({second, third}), Compound({third, first}), Box(4, 4, 4)}),
        GroupList({{0, 1, 2, 3, 4}, {5}}));
}

TEST(CadSharedParts, AreMeshedInTheOrderOfTheShapes)
{
    // The common ball is wanted finer and finer, then coarser again: a face keeps the finest triangles that
    // it had.
    const auto vertexCounts = [] {
        const TopoDS_Shape ball = BRepPrimAPI_MakeSphere(10).Shape();
        std::vector<TopoDS_Shape> shapes;
        for (const double height : {400, 200, 100, 50, 20, 20, 100, 200, 400})
            shapes.push_back(Compound({ball, Box(10, 10, height)}));
        std::vector<int> counts;
        for (const std::unique_ptr<Mesh>& mesh : TessellateShapes(Placed(shapes), {1, 60}))
            counts.push_back(mesh->GetVertexNum());
        return counts;
    };
    const std::vector<int> counts = vertexCounts();
    for (std::size_t i = 1; i < counts.size(); ++i)
        EXPECT_GE(counts[i], counts[i - 1]);
    EXPECT_GT(counts[4], counts[0]);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(vertexCounts(), counts);
}

} // namespace
