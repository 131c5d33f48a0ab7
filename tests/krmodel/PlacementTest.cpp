#include "apps/krmodel/Placement.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "fileformat/3mf/Model3MF.h"
#include "tests/common/RunProgram.h"

namespace {

using krmodel::Model;
using krmodel::PlaceInMillimetres;
using krmodel::PlacementText;

using Point = Vector3D<float>;

/// As 3MF writes transforms: a column after the other, the translation last.
Matrix4<double> Transform(const char* text)
{
    return Model3MF::ConvertFrom3MFMatStrToMat(QString::fromLatin1(text));
}

/// A tetrahedron of volume 1 / 6 that faces outwards, with texture.
Model Tetrahedron(const char* transform, double unitMm = 1)
{
    Model model;
    model.meshes.push_back(std::make_unique<Mesh>(0.03F));
    Mesh& mesh = *model.meshes[0];
    const std::vector<TriangleFace> faces = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}};
    mesh.AddVertexAndFaces({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, faces);
    *mesh.GetTexCoordVecPtr() = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    *mesh.GetTextureFacesVecPtr() = faces;
    mesh.PostProcessFromVertexBuffer(nullptr, false, false, true, true, nullptr, nullptr);
    mesh.SetVolume(mesh.CalcuateVolume());
    mesh.SetTransformMatrix(Transform(transform));
    model.unit = {QStringLiteral("something"), unitMm};
    return model;
}

constexpr char kIdentity[] = "1 0 0 0 1 0 0 0 1 0 0 0";

TEST(Placement, LeavesAMeshInPlaceUntouched)
{
    Model model = Tetrahedron(kIdentity);
    Mesh& mesh = *model.meshes[0];
    mesh.SetVolume(42);
    EXPECT_TRUE(PlaceInMillimetres(model));
    EXPECT_EQ(mesh.GetVolume(), 42);
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(3), Point(0, 0, 1));
    EXPECT_EQ(model.unit.name, QStringLiteral("millimeter"));
}

TEST(Placement, ScalesVerticesAndTranslationByTheUnit)
{
    Model model = Tetrahedron("1 0 0 0 1 0 0 0 1 10 20 30", 25.4);
    EXPECT_TRUE(PlaceInMillimetres(model));
    const Mesh& mesh = *model.meshes[0];
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(0), Point(254, 508, 762));
    EXPECT_EQ(mesh.GetVerticesVecPtr()->at(1), Point(279.4F, 508, 762));
    EXPECT_NEAR(mesh.GetVolume(), 25.4 * 25.4 * 25.4 / 6, 0.01);
    EXPECT_EQ(model.unit.millimetres, 1);
}

TEST(Placement, HappensOnce)
{
    Model model = Tetrahedron("1 0 0 0 1 0 0 0 1 10 20 30", 25.4);
    PlaceInMillimetres(model);
    PlaceInMillimetres(model);
    EXPECT_EQ(model.meshes[0]->GetVerticesVecPtr()->at(0), Point(254, 508, 762));
    EXPECT_EQ(PlacementText(model.meshes[0]->GetTransformMatrix()), QStringLiteral("none"));
}

TEST(Placement, TurnsColumnVectors)
{
    Model model = Tetrahedron("0 1 0 -1 0 0 0 0 1 0 0 0");
    PlaceInMillimetres(model);
    const auto& vertices = *model.meshes[0]->GetVerticesVecPtr();
    EXPECT_EQ(vertices[1], Point(0, 1, 0));
    EXPECT_EQ(vertices[2], Point(-1, 0, 0));
}

TEST(Placement, KeepsTheOutsideOfAMirroredMeshOutside)
{
    for (const char* mirror :
         {"-1 0 0 0 1 0 0 0 1 5 0 0", "0 1 0 1 0 0 0 0 1 0 0 0", "-2 0 0 0 -2 0 0 0 -2 0 0 0"}) {
        Model model = Tetrahedron(mirror);
        PlaceInMillimetres(model);
        const Mesh& mesh = *model.meshes[0];
        EXPECT_GT(mesh.GetVolume(), 0.1) << mirror;
        for (size_t i = 0; i < mesh.GetFacesVecPtr()->size(); ++i)
            for (int corner = 0; corner < 3; ++corner)
                EXPECT_EQ((*mesh.GetTextureFacesVecPtr())[i][corner], (*mesh.GetFacesVecPtr())[i][corner]);
    }
}

TEST(Placement, LeavesTheWindingOfATurnedMesh)
{
    Model model = Tetrahedron("-1 0 0 0 -1 0 0 0 1 0 0 0");
    PlaceInMillimetres(model);
    EXPECT_EQ(model.meshes[0]->GetFacesVecPtr()->at(0)[1], 2);
    EXPECT_NEAR(model.meshes[0]->GetVolume(), 1.0 / 6, 1e-9);
}

TEST(Placement, ProvidesNormalsAndNeighboursOfTheNewPlaces)
{
    Model model = Tetrahedron("1 0 0 0 0 1 0 -1 0 0 0 0");
    ASSERT_EQ(model.meshes[0]->GetFaceNormals().at(0), Point(0, 0, -1));
    PlaceInMillimetres(model);
    EXPECT_EQ(model.meshes[0]->GetFaceNormals().at(0), Point(0, 1, 0));
    EXPECT_EQ(model.meshes[0]->GetFaceNeighbours().size(), 4U);
}

TEST(Placement, TellsWhenACoordinateLeavesTheRangeOfItsNumbers)
{
    Model tooFar = Tetrahedron("1 0 0 0 1 0 0 0 1 1e38 0 0", 1000);
    EXPECT_FALSE(PlaceInMillimetres(tooFar));
    Model notANumber = Tetrahedron("nan 0 0 0 1 0 0 0 1 0 0 0");
    EXPECT_FALSE(PlaceInMillimetres(notANumber));
    Model wasInfinite = Tetrahedron("2 0 0 0 2 0 0 0 2 0 0 0");
    wasInfinite.meshes[0]->GetVerticesVecPtr()->at(0).x = std::numeric_limits<float>::infinity();
    EXPECT_TRUE(PlaceInMillimetres(wasInfinite));
}

TEST(PlacementText, SaysWhatATransformDoes)
{
    const struct {
        const char *transform, *text;
    } kTexts[] = {
        {kIdentity, "none"},
        {"1 0 0 0 1 0 0 0 1 0 -2.5 1000", "moved by 0 -2.5 1000"},
        {"0 1 0 -1 0 0 0 0 1 0 0 0", "rotated by 90° about z"},
        {"0 -1 0 1 0 0 0 0 1 0 0 0", "rotated by -90° about z"},
        {"-1 0 0 0 1 0 0 0 -1 0 0 0", "rotated by 180° about y"},
        {"0 1 0 0 0 1 1 0 0 0 0 0", "rotated by 120°"},
        {"0.866025 0.5 0 -0.5 0.866025 0 0 0 1 0 0 0", "rotated by 30° about z"},
        {"2 0 0 0 2 0 0 0 2 0 0 0", "scaled by 2"},
        {"1 0 0 0 1 0 0 0 0.5 0 0 0", "scaled by 1 1 0.5"},
        {"-1 0 0 0 1 0 0 0 1 0 0 0", "mirrored"},
        {"0 2 0 -2 0 0 0 0 -2 1 2 3", "moved by 1 2 3, rotated by 90° about z, scaled by 2, mirrored"},
        {"1 0 0 0.5 1 0 0 0 1 0 0 0", "skewed"},
        {"1 0 0 0 1 0 0 0 0 0 0 4", "moved by 0 0 4, flattened"},
        {"0 0 0 0 0 0 0 0 0 0 0 0", "flattened"},
        {"nan 0 0 0 1 0 0 0 1 0 0 0", "not finite"},
        {"1 0 0 0 1 0 0 0 1 inf 0 0", "not finite"},
    };
    for (const auto& example : kTexts)
        EXPECT_EQ(PlacementText(Transform(example.transform)), QString::fromUtf8(example.text))
            << example.transform;
}

TEST(PlacementText, TakesTheLastWrittenDigitForRounding)
{
    EXPECT_EQ(PlacementText(Transform("1.000001 0 0 0 0.999999 0 0 0.000001 1 0 0 0")),
              QStringLiteral("none"));
}

} // namespace
