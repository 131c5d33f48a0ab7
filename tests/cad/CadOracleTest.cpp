#include <gtest/gtest.h>

#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/cad/PlainCadReader.h"
#include "tests/cad/RandomCad.h"
#include "tests/common/Directory.h"

// Whole loads beside plain reading: names, vertices, faces and volumes, in order and to the last bit.

namespace {

using namespace test;

constexpr int kRandomDocuments = 120;

struct Controls {
    double deflection = kDeflection;
    double angle = kAngle;
    bool prefixFileName = true;
};

void ExpectPlainResult(const QString& path, const Controls& controls, int& meshCount)
{
    const PlainCad plain = ReadPlainCad(path, controls.deflection, controls.angle, controls.prefixFileName);
    const CadMeshes meshes(path, controls.deflection, controls.angle, controls.prefixFileName);
    ASSERT_EQ(meshes.IsLoaded(), plain.isLoaded) << path.toStdString();
    ASSERT_EQ(Difference(plain, meshes.All()), "") << path.toStdString();
    meshCount += static_cast<int>(meshes.Count());
}

Controls RandomControls(std::mt19937& random)
{
    constexpr double kDeflections[] = {0.5, 1, 2, 5};
    constexpr double kAngles[] = {10, 15, 20, 30};
    Controls controls;
    controls.deflection = kDeflections[random() % 4];
    controls.angle = kAngles[random() % 4];
    controls.prefixFileName = random() % 2 == 0;
    return controls;
}

struct NamedShape {
    const char* name;
    CadShape shape;
};

std::vector<NamedShape> AllKindsOfShapes()
{
    const CadShape box = Box(10, 20, 30);
    const std::vector<CadShape> faces = FacesOf(box);
    const CadShape apart = Compound({Box(1, 1, 1), Moved(Sphere(1), {9, 0, 0})});
    return {
        {"box", box},
        {"cylinder", Cylinder(5, 12)},
        {"sphere", Sphere(7)},
        {"torus", Torus(10, 3)},
        {"pierced box", PiercedBox(20, 10, 5, 3)},
        {"turned", Moved(PiercedBox(20, 10, 5, 3), {4, 5, 6, 33, 1, 2, 3})},
        {"tiny", Sphere(0.001)},
        {"far away", Moved(Cylinder(5, 12), {1e5, -1e5, 3})},
        {"reversed solid", Reversed(Cylinder(5, 12))},
        {"compound", apart},
        {"nested compound", Compound({box, Compound({apart, Compound({})})})},
        {"same solid twice", Compound({box, box, Moved(box, {50, 0, 0})})},
        {"compound of faces", Compound(faces)},
        {"cells", CompSolid({Box(1, 1, 1), Moved(Box(1, 1, 1), {1, 0, 0})})},
        {"closed shell", PieceOf(box, CadPiece::Shell)},
        {"open shell", ShellOf({faces[0], faces[2], faces[4]})},
        {"solid of an open shell", SolidOf(ShellOf({faces[0], faces[2], faces[4]}))},
        {"face", faces[0]},
        {"reversed face", Reversed(PiercedFace(10, 1))},
        {"pierced face", PiercedFace(10, 1)},
        {"cylinder face", CylinderFace(3, 5)},
        {"face with a seam", PieceOf(Cylinder(3, 5), CadPiece::Face)},
        {"sphere face", PieceOf(Sphere(3), CadPiece::Face)},
        {"collapsed face", CollapsedFace()},
        {"wire", PieceOf(box, CadPiece::Wire)},
        {"vertex", PieceOf(box, CadPiece::Vertex)},
    };
}

QString PathOf(const Directory& directory, const NamedShape& shape, const char* extension)
{
    return directory.Path(QString::fromLatin1(shape.name) + QString::fromLatin1(extension));
}

} // namespace

TEST(CadOracle, EveryKindOfShapeInASTEPFileGivesThePlainResult)
{
    const Directory directory;
    int meshCount = 0;
    for (const NamedShape& shape : AllKindsOfShapes()) {
        const QString path = PathOf(directory, shape, ".step");
        ASSERT_TRUE(WriteSTEP(path, {Part(QStringLiteral("Label"), shape.shape)}));
        ExpectPlainResult(path, {}, meshCount);
        ExpectPlainResult(path, {0.3, 7, false}, meshCount);
    }
    EXPECT_GT(meshCount, 40);
}

TEST(CadOracle, EveryKindOfShapeInAnIGESFileGivesThePlainResult)
{
    const Directory directory;
    int meshCount = 0;
    for (const IGESSolids solids : {IGESSolids::AsSolids, IGESSolids::AsFaces})
        for (const NamedShape& shape : AllKindsOfShapes()) {
            const QString path = PathOf(directory, shape, ".iges");
            ASSERT_TRUE(WriteIGES(path, {Part(QStringLiteral("Label"), shape.shape)}, solids));
            ExpectPlainResult(path, {}, meshCount);
            // Millimetres and radians for faces, of which a solid would have millions.
            const bool holdsFaces = solids == IGESSolids::AsFaces;
            ExpectPlainResult(path, holdsFaces ? Controls{0.02, 0.3, false} : Controls{0.3, 7, false},
                              meshCount);
        }
    EXPECT_GT(meshCount, 60);
}

TEST(CadOracle, RandomDocumentsInSTEPFilesGiveThePlainResult)
{
    const Directory directory;
    std::mt19937 random(51);
    const QString path = directory.Path(QStringLiteral("model.step"));
    int meshCount = 0;
    for (int i = 0; i < kRandomDocuments; ++i) {
        ASSERT_TRUE(WriteSTEP(path, RandomCadDocument(random, QStringLiteral("model"))));
        ExpectPlainResult(path, RandomControls(random), meshCount);
    }
    EXPECT_GT(meshCount, 2 * kRandomDocuments);
}

TEST(CadOracle, RandomDocumentsInIGESFilesGiveThePlainResult)
{
    const Directory directory;
    std::mt19937 random(52);
    const QString path = directory.Path(QStringLiteral("model.iges"));
    int meshCount = 0;
    for (int i = 0; i < kRandomDocuments; ++i) {
        const IGESSolids solids = i % 4 == 0 ? IGESSolids::AsFaces : IGESSolids::AsSolids;
        // Nothing of a wire alone or of an empty compound is written.
        if (WriteIGES(path, RandomCadDocument(random, QStringLiteral("model")), solids))
            ExpectPlainResult(path, RandomControls(random), meshCount);
    }
    EXPECT_GT(meshCount, kRandomDocuments);
}
