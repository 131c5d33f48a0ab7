#include <cmath>

#include <gtest/gtest.h>

#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/cad/PlainCadReader.h"
#include "tests/common/Directory.h"

// What the triangles of a shape are, given the controls of a load.

namespace {

using namespace test;

constexpr double kPi = 3.14159265358979323846;

/// One part a file; each is read back from both formats.
class CadTessellation : public testing::Test {
protected:
    QString STEP(const CadShape& shape) const
    {
        const QString path = m_directory.Path(QStringLiteral("part.step"));
        EXPECT_TRUE(WriteSTEP(path, {Part(QStringLiteral("Part"), shape)}));
        return path;
    }
    QString IGES(const CadShape& shape) const
    {
        const QString path = m_directory.Path(QStringLiteral("part.iges"));
        EXPECT_TRUE(WriteIGES(path, {Part(QStringLiteral("Part"), shape)}));
        return path;
    }
    QStringList Both(const CadShape& shape) const { return {STEP(shape), IGES(shape)}; }

    Directory m_directory;
};

std::vector<CadShape> CurvedAndFlatSolids()
{
    const CadShape turned = Moved(Cylinder(3, 8), {4, 5, 6, 33, 1, 2, 3});
    return {Box(10, 20, 30), Cylinder(5, 12), Sphere(7), Torus(10, 3), PiercedBox(20, 10, 5, 3), turned};
}

/// The directions of the corners on the circle of @p radius in the plane z = 0, ascending.
std::vector<double> RimAngles(const Mesh& mesh, double radius)
{
    std::vector<double> angles;
    for (const Vector3D<float>& vertex : *mesh.GetVerticesVecPtr())
        if (std::abs(vertex.z) < 1e-4 && std::hypot(vertex.x, vertex.y) > radius * 0.999)
            angles.push_back(std::atan2(vertex.y, vertex.x));
    std::sort(angles.begin(), angles.end());
    return angles;
}

/// How far the chords between neighbouring corners on that circle lie inside it, at most.
double LargestSagitta(const Mesh& mesh, double radius)
{
    const std::vector<double> angles = RimAngles(mesh, radius);
    double largest = 0;
    for (std::size_t i = 1; i < angles.size(); ++i)
        largest = std::max(largest, radius * (1 - std::cos((angles[i] - angles[i - 1]) / 2)));
    return largest;
}

std::size_t RimVertexCount(const Mesh& mesh, double radius)
{
    return RimAngles(mesh, radius).size();
}

} // namespace

// Solids and shells

TEST_F(CadTessellation, SolidsAreClosedAndOutwardAfterTheMerge)
{
    for (const CadShape& solid : CurvedAndFlatSolids())
        for (const QString& path : Both(solid)) {
            const CadMeshes meshes(path);
            ASSERT_EQ(meshes.Count(), 1u);
            EXPECT_TRUE(IsClosed(meshes[0]));
            EXPECT_GT(meshes[0].GetVolume(), 0);
            EXPECT_EQ(RepeatedVertexCount(*meshes[0].GetVerticesVecPtr()), 0u);
        }
}

TEST_F(CadTessellation, VolumesComeAsNearAsTheDeflectionAllows)
{
    for (const CadShape& solid : CurvedAndFlatSolids())
        for (const QString& path : Both(solid))
            for (const double deflection : {4.0, 1.0, 0.25}) {
                const PlainCad plain = ReadPlainCad(path, deflection, kAngle);
                ASSERT_EQ(plain.placed.size(), 1u);
                const PlainCadMesh& exact = plain.placed[0];
                const double distance = exact.size * deflection / 1000;
                const CadMeshes meshes(path, deflection);
                ASSERT_EQ(meshes.Count(), 1u);
                EXPECT_NEAR(meshes[0].GetVolume(), exact.exactVolume,
                            exact.exactArea * distance + 1e-4 * exact.exactVolume);
            }
}

TEST_F(CadTessellation, StoresTheVolumeAndProvidesNormalsAndNeighbours)
{
    for (const QString& path : Both(PiercedBox(20, 10, 5, 3))) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Count(), 1u);
        const auto faceCount = static_cast<std::size_t>(meshes[0].GetFaceNum());
        EXPECT_EQ(meshes[0].GetVolume(), meshes[0].CalcuateVolume());
        EXPECT_EQ(meshes[0].GetFacesVecPtr()->size(), faceCount);
        EXPECT_EQ(meshes[0].GetFaceNormals().size(), faceCount);
        EXPECT_EQ(meshes[0].GetFaceNeighbours().size(), faceCount);
        EXPECT_EQ(meshes[0].GetVertexNormals().size(), static_cast<std::size_t>(meshes[0].GetVertexNum()));
        for (const TriangleFace& neighbours : meshes[0].GetFaceNeighbours())
            for (const int neighbour : neighbours.v)
                EXPECT_GE(neighbour, 0);
    }
}

// A cylinder 50 long and 50 wide at a deflection of 1: a fifth of a millimetre.
TEST_F(CadTessellation, DeflectionIsInThousandthsOfFourTimesTheLongestSide)
{
    for (const QString& path : Both(Cylinder(25, 50))) {
        // The angle leaves the deflection alone to decide.
        const CadMeshes meshes(path, 1, 80);
        ASSERT_EQ(meshes.Count(), 1u);
        EXPECT_LE(LargestSagitta(meshes[0], 25), 0.2 * 1.001);
        EXPECT_GT(LargestSagitta(meshes[0], 25), 0.2 / 4);
    }
}

TEST_F(CadTessellation, TheLongestSideCountsInEachDirection)
{
    // 100 long along each axis in turn, so the same deflection each time: 0.4 mm.
    for (const CadPlacement& placement :
         {CadPlacement{}, CadPlacement{0, 0, 0, 90, 1, 0, 0}, CadPlacement{0, 0, 0, 90, 0, 1, 0}}) {
        const CadMeshes meshes(STEP(Moved(Cylinder(25, 100), placement)), 1, 80);
        ASSERT_EQ(meshes.Count(), 1u);
        const CadMeshes half(STEP(Moved(Cylinder(25, 100), placement)), 0.5, 80);
        EXPECT_EQ(meshes[0].GetFaceNum(), CadMeshes(STEP(Cylinder(25, 100)), 1, 80)[0].GetFaceNum());
        EXPECT_GT(half[0].GetFaceNum(), meshes[0].GetFaceNum());
    }
}

TEST_F(CadTessellation, SolidsOfAnySizeHaveTheSameTriangles)
{
    const int faceCount = CadMeshes(STEP(Torus(10, 4)))[0].GetFaceNum();
    for (const double scale : {0.1, 3.0, 100.0})
        EXPECT_EQ(CadMeshes(STEP(Torus(10 * scale, 4 * scale)))[0].GetFaceNum(), faceCount) << scale;
}

TEST_F(CadTessellation, SolidsOfOneFileHaveEachADeflectionOfTheirOwn)
{
    const CadShape small = Torus(10, 4);
    const CadShape both = Compound({small, Moved(Torus(1000, 400), {5000})});
    std::vector<int> faceCounts;
    for (const QString& path : Both(small))
        faceCounts.push_back(CadMeshes(path)[0].GetFaceNum());
    const QStringList paths = Both(both);
    for (std::size_t i = 0; i < faceCounts.size(); ++i) {
        const CadMeshes meshes(paths[int(i)]);
        ASSERT_EQ(meshes.Count(), 2u) << i;
        EXPECT_EQ(meshes[0].GetFaceNum(), faceCounts[i]);
        EXPECT_EQ(meshes[1].GetFaceNum(), faceCounts[i]);
    }
}

TEST_F(CadTessellation, AngleOfASolidIsInDegrees)
{
    for (const QString& path : Both(Cylinder(25, 50))) {
        // The deflection alone would leave fewer; OpenCASCADE takes up to twice as many as it must.
        const std::size_t ten = RimVertexCount(CadMeshes(path, 1, 10)[0], 25);
        const std::size_t five = RimVertexCount(CadMeshes(path, 1, 5)[0], 25);
        EXPECT_GE(ten, 360 / 10);
        EXPECT_LE(ten, 2 * 360 / 10);
        EXPECT_GE(five, 360 / 5);
        EXPECT_LE(five, 2 * 360 / 5);
        EXPECT_LT(RimVertexCount(CadMeshes(path, 1, 80)[0], 25), ten);
    }
}

TEST_F(CadTessellation, VerticesOfSharedEdgesAreMerged)
{
    const CadMeshes meshes(STEP(Box(1, 2, 3)));
    ASSERT_EQ(meshes.Count(), 1u);
    EXPECT_EQ(meshes[0].GetVertexNum(), 8);
    EXPECT_EQ(meshes[0].GetVerticesVecPtr()->size(), 8u);
    EXPECT_EQ(meshes[0].GetFaceNum(), 12);
    EXPECT_EQ(meshes[0].GetVolume(), 6);
}

TEST_F(CadTessellation, TrianglesOfReversedFacesAreTurnedRoundAndNoOthers)
{
    for (const QString& path : {STEP(PiercedBox(20, 10, 5, 3)), IGES(PiercedBox(20, 10, 5, 3))}) {
        const PlainCad plain = ReadPlainCad(path, kDeflection, kAngle);
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Count(), 1u);
        ASSERT_EQ(plain.placed.size(), 1u);
        const std::vector<PlainCadFace>& pieces = plain.placed[0].pieces;
        EXPECT_EQ(
            std::count_if(pieces.begin(), pieces.end(), [](const auto& piece) { return piece.isReversed; }),
            4);
        std::size_t next = 0;
        for (const PlainCadFace& piece : pieces)
            for (const auto& triangle : piece.triangles) {
                const TriangleFace& face = meshes[0].GetFacesVecPtr()->at(next++);
                const auto corner = [&](int i) {
                    return meshes[0].GetVerticesVecPtr()->at(static_cast<std::size_t>(face[i]));
                };
                ASSERT_EQ(corner(0), triangle[0]);
                ASSERT_EQ(corner(1), triangle[piece.isReversed ? 2 : 1]);
                ASSERT_EQ(corner(2), triangle[piece.isReversed ? 1 : 2]);
            }
        EXPECT_EQ(next, meshes[0].GetFacesVecPtr()->size());
    }
}

TEST_F(CadTessellation, AShellWhoseFacesAllFailLeavesNoMesh)
{
    const QString path = STEP(CollapsedFace());
    const PlainCad plain = ReadPlainCad(path, kDeflection, kAngle);
    ASSERT_EQ(plain.placed.size(), 1u);
    EXPECT_EQ(plain.placed[0].kind, PlacedKind::Shell);
    const CadMeshes meshes(path);
    EXPECT_TRUE(meshes.IsLoaded());
    EXPECT_EQ(meshes.Count(), 0u);
}

TEST_F(CadTessellation, ADeflectionOrAngleOfZeroThrowsForASolid)
{
    for (const QString& path : Both(Box(1, 2, 3)))
        for (const double zero : {0.0, -1.0}) {
            EXPECT_TRUE(EndsInStandardFailure([&] { const CadMeshes meshes(path, zero, kAngle); }));
            EXPECT_TRUE(EndsInStandardFailure([&] { const CadMeshes meshes(path, kDeflection, zero); }));
        }
}

// Loose faces

TEST_F(CadTessellation, OnlyIGESFilesGiveLooseFaces)
{
    for (const CadShape& face : {CylinderFace(3, 5), PiercedFace(10, 1)}) {
        EXPECT_EQ(ReadPlainCad(STEP(face), kDeflection, kAngle).placed.at(0).kind, PlacedKind::Shell);
        EXPECT_EQ(ReadPlainCad(IGES(face), kDeflection, kAngle).placed.at(0).kind, PlacedKind::Face);
    }
}

TEST_F(CadTessellation, DeflectionOfAFaceIsALength)
{
    const double angle = 1.5;
    for (const double radius : {5.0, 50.0})
        for (const double deflection : {0.5, 0.05}) {
            const CadMeshes meshes(IGES(CylinderFace(radius, 5)), deflection, angle);
            ASSERT_EQ(meshes.Count(), 1u);
            EXPECT_LE(LargestSagitta(meshes[0], radius), deflection * 1.001);
            EXPECT_GT(LargestSagitta(meshes[0], radius), deflection / 4);
        }
}

TEST_F(CadTessellation, DeflectionOfAFaceIsATenThousandthAtLeast)
{
    const QString path = IGES(CylinderFace(3, 5));
    const int least = CadMeshes(path, 0.0001)[0].GetFaceNum();
    for (const double deflection : {0.0, -5.0, 0.00001})
        EXPECT_EQ(CadMeshes(path, deflection)[0].GetFaceNum(), least) << deflection;
    EXPECT_LT(CadMeshes(path, 0.001)[0].GetFaceNum(), least);
}

TEST_F(CadTessellation, AngleOfAFaceIsInRadians)
{
    // Two radians of a cylinder's side; the deflection alone would leave fewer corners.
    const QString path = IGES(CylinderFace(25, 50));
    const std::size_t tenth = RimVertexCount(CadMeshes(path, 5, 0.1)[0], 25);
    EXPECT_GE(tenth, 1 + 20u);
    EXPECT_LE(tenth, 2 * (1 + 20u));
    EXPECT_LT(RimVertexCount(CadMeshes(path, 5, 1.5)[0], 25), tenth);
}

TEST_F(CadTessellation, VerticesOfAFaceAreNotMerged)
{
    // The whole side of a cylinder meets itself in a seam.
    const CadShape side = PieceOf(Cylinder(3, 5), CadPiece::Face);
    const CadMeshes face(IGES(side), 0.1, 0.3);
    ASSERT_EQ(face.Count(), 1u);
    EXPECT_EQ(RepeatedVertexCount(*face[0].GetVerticesVecPtr()), 2u);
    const CadMeshes shell(STEP(side), 1, 20);
    ASSERT_EQ(shell.Count(), 1u);
    EXPECT_EQ(RepeatedVertexCount(*shell[0].GetVerticesVecPtr()), 0u);
}

// The same face, once loose and once in a shell, with controls that mean the same: nothing but the merge is
// left.
TEST_F(CadTessellation, FacesDifferFromShellsByDeflectionAngleAndMergeAlone)
{
    for (const CadShape& shape :
         {CylinderFace(3, 5), PieceOf(Cylinder(3, 5), CadPiece::Face), PiercedFace(10, 1)}) {
        const QString iges = IGES(shape), step = STEP(shape);
        const double deflection = 0.02, angle = 0.23;
        const double size = ReadPlainCad(step, kDeflection, kAngle).placed.at(0).size;
        const PlainCad shell = ReadPlainCad(step, 1000 * deflection / size, angle * 180 / kPi);
        const CadMeshes face(iges, deflection, angle);
        ASSERT_EQ(face.Count(), 1u);
        const std::vector<Vector3D<float>>& raw = shell.placed.at(0).rawVertices;
        const std::vector<Vector3D<float>>& vertices = *face[0].GetVerticesVecPtr();
        ASSERT_EQ(vertices.size(), raw.size());
        EXPECT_EQ(face[0].GetFacesVecPtr()->size(), shell.placed.at(0).faces.size());
        for (std::size_t i = 0; i < raw.size(); ++i)
            ASSERT_EQ(Coordinates(vertices[i]), Coordinates(raw[i])) << i;
    }
}

TEST_F(CadTessellation, FacesKeepTheirHoles)
{
    const double area = 100 - 2 * kPi;
    EXPECT_NEAR(AreaOf(CadMeshes(STEP(PiercedFace(10, 1)), 0.1, 5)[0]), area, 0.05);
    EXPECT_NEAR(AreaOf(CadMeshes(IGES(PiercedFace(10, 1)), 0.001, 0.1)[0]), area, 0.05);
}

TEST_F(CadTessellation, AReversedFaceFacesTheOtherWay)
{
    const auto normalZ = [](const QString& path) {
        const CadMeshes meshes(path);
        return meshes[0].GetFaceNormals().at(0).z;
    };
    EXPECT_EQ(normalZ(STEP(PiercedFace(10, 1))), 1);
    EXPECT_EQ(normalZ(STEP(Reversed(PiercedFace(10, 1)))), -1);
    EXPECT_EQ(normalZ(IGES(PiercedFace(10, 1))), 1);
}

TEST_F(CadTessellation, AnAngleOfZeroThrowsForAFaceButADeflectionOfZeroDoesNot)
{
    const QString path = IGES(CylinderFace(3, 5));
    EXPECT_TRUE(EndsInStandardFailure([&] { const CadMeshes meshes(path, kDeflection, 0); }));
    EXPECT_TRUE(CadMeshes(path, 0).IsLoaded());
}
