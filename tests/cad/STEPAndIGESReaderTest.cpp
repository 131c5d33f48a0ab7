#include <gtest/gtest.h>

#include <QDir>

#include "tests/cad/CadFiles.h"
#include "tests/cad/CadLoadSupport.h"
#include "tests/common/Directory.h"

// Which shapes of a document become meshes, how they are named and where they lie, and what is refused.

namespace {

using namespace test;

QString Text(const char* text)
{
    return QString::fromUtf8(text);
}

QStringList Names(std::initializer_list<const char*> texts)
{
    QStringList names;
    for (const char* const text : texts)
        names.append(Text(text));
    return names;
}

/// Both formats of one model; every test file is written anew.
class STEPAndIGESReader : public testing::Test {
protected:
    QString STEP(const char* name, const std::vector<CadPartPointer>& parts) const
    {
        const QString path = m_directory.Path(Text(name) + Text(".step"));
        EXPECT_TRUE(WriteSTEP(path, parts));
        return path;
    }
    QString IGES(const char* name, const std::vector<CadPartPointer>& parts) const
    {
        const QString path = m_directory.Path(Text(name) + Text(".iges"));
        EXPECT_TRUE(WriteIGES(path, parts));
        return path;
    }
    QStringList Both(const char* name, const std::vector<CadPartPointer>& parts) const
    {
        return {STEP(name, parts), IGES(name, parts)};
    }
    QString WithText(const QString& path, const char* before, const char* after) const
    {
        QByteArray bytes = Directory::Read(path);
        EXPECT_TRUE(bytes.contains(before));
        return m_directory.Write(bytes.replace(before, after), QFileInfo(path).fileName());
    }
    /// The bytes of @p path in a file of another name.
    QString Copy(const QString& path, const char* name) const
    {
        return m_directory.Write(Directory::Read(path), Text(name));
    }

    Directory m_directory;
};

/// A load of @p path refuses it and leaves the caller's vector alone.
void ExpectRefused(const QString& path)
{
    Mesh other(0.03f);
    std::vector<Mesh*> meshes = {&other};
    EXPECT_FALSE(STEPAndIGESFile::LoadFile(path, meshes, kDeflection, kAngle)) << path.toStdString();
    EXPECT_EQ(meshes, std::vector<Mesh*>{&other});
}

/// A load of @p path finds no solid, shell or face and empties the caller's vector.
void ExpectNothingToMesh(const QString& path)
{
    Mesh other(0.03f);
    std::vector<Mesh*> meshes = {&other};
    EXPECT_FALSE(STEPAndIGESFile::LoadFile(path, meshes, kDeflection, kAngle)) << path.toStdString();
    EXPECT_TRUE(meshes.empty());
}

void ExpectBox(const Mesh& mesh, const Vector3D<float>& minimum, const Vector3D<float>& maximum)
{
    const MeshBoundingBox box = mesh.GetBoundingBox();
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(Coordinates(box.minimum)[i], Coordinates(minimum)[i], 1e-4) << i;
        EXPECT_NEAR(Coordinates(box.maximum)[i], Coordinates(maximum)[i], 1e-4) << i;
    }
}

CadShape BoxAt(double x)
{
    return Moved(Box(1, 2, 3), {x});
}

CadPartPointer Pin()
{
    return Part(Text("Pin"), Box(1, 2, 10));
}

} // namespace

// File names

TEST_F(STEPAndIGESReader, AcceptsExtensionsInAnyCase)
{
    const QString step = STEP("part", {Pin()}), iges = IGES("part", {Pin()});
    for (const char* const name : {"PART.STEP", "part.Step", "part.stp", "part.STP"})
        EXPECT_EQ(CadMeshes(Copy(step, name)).Count(), 1u) << name;
    for (const char* const name : {"part.Iges", "PART.IGES", "part.igs", "part.IgS"})
        EXPECT_EQ(CadMeshes(Copy(iges, name)).Count(), 1u) << name;
}

TEST_F(STEPAndIGESReader, RefusesOtherExtensions)
{
    const QString step = STEP("part", {Pin()}), iges = IGES("part", {Pin()});
    for (const char* const name : {"part.stpx", "part.step.bak", "part", "partstep", "part.stl"})
        ExpectRefused(Copy(step, name));
    for (const char* const name : {"part.igs.bak", "part.ige", "partigs"})
        ExpectRefused(Copy(iges, name));
}

TEST_F(STEPAndIGESReader, RefusesFilesWithoutABaseName)
{
    const QString step = STEP("part", {Pin()}), iges = IGES("part", {Pin()});
    for (const char* const name : {".step", ".stp", ".x.stp"})
        ExpectRefused(Copy(step, name));
    for (const char* const name : {".iges", ".IGS"})
        ExpectRefused(Copy(iges, name));
    ExpectRefused(QString());
}

TEST_F(STEPAndIGESReader, GoesByTheExtensionWhateverTheContent)
{
    ExpectRefused(Copy(STEP("part", {Pin()}), "other.iges"));
    ExpectRefused(Copy(IGES("part", {Pin()}), "other.step"));
}

TEST_F(STEPAndIGESReader, TheLastExtensionCounts)
{
    EXPECT_EQ(CadMeshes(Copy(STEP("part", {Pin()}), "part.igs.stp")).Count(), 1u);
    EXPECT_EQ(CadMeshes(Copy(IGES("part", {Pin()}), "part.step.igs")).Count(), 1u);
}

TEST_F(STEPAndIGESReader, RefusesWhatCannotBeRead)
{
    for (const char* const name : {"none.step", "none.iges"})
        ExpectRefused(m_directory.Path(Text(name)));
    for (const char* const name : {"directory.step", "directory.iges"}) {
        ASSERT_TRUE(QDir().mkdir(m_directory.Path(Text(name))));
        ExpectRefused(m_directory.Path(Text(name)));
    }
}

TEST_F(STEPAndIGESReader, RefusesEmptyFiles)
{
    ExpectRefused(m_directory.Write({}, Text("empty.step")));
    ExpectRefused(m_directory.Write({}, Text("empty.iges")));
}

TEST_F(STEPAndIGESReader, RefusesTextOfAnotherKind)
{
    const QByteArray text = "solid cube\nendsolid cube\n";
    ExpectRefused(m_directory.Write(text, Text("cube.step")));
    ExpectRefused(m_directory.Write(text, Text("cube.iges")));
}

TEST_F(STEPAndIGESReader, RefusesDocumentsWithoutAnEntity)
{
    const char* const step = "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('none'),'2;1');\n"
                             "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
                             "ENDSEC;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n";
    ExpectRefused(m_directory.Write(step, Text("none.step")));
    EXPECT_EQ(OpenDocumentCount(), 0);

    const QByteArray iges =
        QByteArray().leftJustified(72) + "S      1\n" +
        QByteArray("1H,,1H;,4Hnone,9Hnone.iges,4Hnone,4Hnone,32,38,6,308,15,4Hnone,1.,2,2HMM")
            .leftJustified(72)
            .left(72) +
        "G      1\n" +
        QByteArray("M,1,0.01,15H20200101.000000,1E-07,1.,4Hnone,4Hnone,11,0,15H20200101.000000;")
            .leftJustified(72)
            .left(72) +
        "G      2\n" + QByteArray("S      1G      2D      0P      0").leftJustified(72) + "T      1\n";
    ExpectRefused(m_directory.Write(iges, Text("none.iges")));
    EXPECT_EQ(OpenDocumentCount(), 0);
}

TEST_F(STEPAndIGESReader, ReadsFilesWithUnicodeNames)
{
    const char* const name = "Getriebe gr\xc3\xb6\xc3\x9f"
                             "er \xe6\xad\xaf\xe8\xbb\x8a";
    for (const QString& path : Both(name, {Pin()}))
        EXPECT_EQ(CadMeshes(path).Names(), QStringList(Text(name) + Text(" - Pin")));
}

// Names

TEST_F(STEPAndIGESReader, NamesAMeshAfterItsFileAndLabel)
{
    for (const QString& path : Both("base", {Part(Text("Bracket"), Box(1, 2, 3))}))
        EXPECT_EQ(CadMeshes(path).Names(), Names({"base - Bracket"}));
}

TEST_F(STEPAndIGESReader, TheShorterCallPutsTheFileNameInFront)
{
    for (const QString& path : Both("base", {Pin()})) {
        CadMeshes meshes;
        ASSERT_TRUE(STEPAndIGESFile::LoadFile(path, meshes.All(), kDeflection, kAngle));
        EXPECT_EQ(meshes.Names(), Names({"base - Pin"}));
    }
}

TEST_F(STEPAndIGESReader, NamesAMeshAfterItsLabelAloneWithoutThePrefix)
{
    for (const QString& path : Both("base", {Pin()}))
        EXPECT_EQ(CadMeshes(path, kDeflection, kAngle, false).Names(), Names({"Pin"}));
}

TEST_F(STEPAndIGESReader, ALabelEqualToTheFileNameGivesNoNameWithThePrefixAndItselfWithout)
{
    for (const QString& path : Both("Pin", {Pin()})) {
        EXPECT_EQ(CadMeshes(path).Names(), Names({""}));
        EXPECT_EQ(CadMeshes(path, kDeflection, kAngle, false).Names(), Names({"Pin"}));
    }
}

TEST_F(STEPAndIGESReader, ComparesLabelsWithTheFileNameByCase)
{
    for (const QString& path : Both("pin", {Pin()}))
        EXPECT_EQ(CadMeshes(path).Names(), Names({"pin - Pin"}));
}

TEST_F(STEPAndIGESReader, DropsTheFileNameFromItsFirstDotOn)
{
    const QString path = STEP("part.rev2", {Pin()});
    EXPECT_EQ(CadMeshes(path).Names(), Names({"part - Pin"}));
    EXPECT_EQ(CadMeshes(Copy(path, "Pin.old.step")).Names(), Names({""}));
}

TEST_F(STEPAndIGESReader, DropsBlanksAroundLabels)
{
    EXPECT_EQ(CadMeshes(STEP("base", {Part(Text("  long pin \t"), Box(1, 2, 3))})).Names(),
              Names({"base - long pin"}));
    EXPECT_EQ(CadMeshes(STEP("pin", {Part(Text(" pin "), Box(1, 2, 3))})).Names(), Names({""}));
}

TEST_F(STEPAndIGESReader, KeepsUnicodeLabels)
{
    const char* const label = "\xc3\x96se \xe6\xad\xaf\xe8\xbb\x8a \xf0\x9f\x94\xa9";
    const QString path = STEP("base", {Part(Text(label), Box(1, 2, 3))});
    EXPECT_EQ(CadMeshes(path, kDeflection, kAngle, false).Names(), Names({label}));
}

TEST_F(STEPAndIGESReader, ASolidWithoutLabelHasNoName)
{
    const QString blank = STEP("base", {Part(Text(" "), Box(1, 2, 3))});
    EXPECT_EQ(CadMeshes(blank).Names(), Names({""}));
    EXPECT_EQ(CadMeshes(blank, kDeflection, kAngle, false).Names(), Names({""}));
    const QString empty = WithText(STEP("base", {Pin()}), "PRODUCT('Pin','Pin'", "PRODUCT('',''");
    EXPECT_EQ(CadMeshes(empty).Names(), Names({""}));
}

TEST_F(STEPAndIGESReader, NumbersTheSolidsOfACompoundBehindItsName)
{
    const CadShape three = Compound({BoxAt(0), BoxAt(5), BoxAt(10)});
    for (const QString& path : Both("base", {Part(Text("Bracket"), three)})) {
        EXPECT_EQ(CadMeshes(path).Names(),
                  Names({"base - Bracket-1", "base - Bracket-2", "base - Bracket-3"}));
        EXPECT_EQ(CadMeshes(path, kDeflection, kAngle, false).Names(),
                  Names({"Bracket-1", "Bracket-2", "Bracket-3"}));
    }
}

TEST_F(STEPAndIGESReader, NumbersTheSolidsOfACompoundBehindItsLabelWhenThatIsTheFileName)
{
    for (const QString& path : Both("Bracket", {Part(Text("Bracket"), Compound({BoxAt(0), BoxAt(5)}))}))
        EXPECT_EQ(CadMeshes(path).Names(), Names({"Bracket-1", "Bracket-2"}));
}

TEST_F(STEPAndIGESReader, NumbersTheSolidsOfAnUnnamedCompoundAlone)
{
    const QString path = STEP("base", {Part(Text(" "), Compound({BoxAt(0), BoxAt(5)}))});
    EXPECT_EQ(CadMeshes(path).Names(), Names({"1", "2"}));
    EXPECT_EQ(CadMeshes(path, kDeflection, kAngle, false).Names(), Names({"1", "2"}));
}

TEST_F(STEPAndIGESReader, DoesNotPadTheNumbersOfSolids)
{
    std::vector<CadShape> boxes;
    for (int i = 0; i < 11; ++i)
        boxes.push_back(BoxAt(2 * i));
    const QStringList names = CadMeshes(STEP("base", {Part(Text("Row"), Compound(boxes))})).Names();
    ASSERT_EQ(names.size(), 11);
    EXPECT_EQ(names.at(0), Text("base - Row-1"));
    EXPECT_EQ(names.at(9), Text("base - Row-10"));
    EXPECT_EQ(names.at(10), Text("base - Row-11"));
}

TEST_F(STEPAndIGESReader, NumbersTheOnlySolidOfACompound)
{
    for (const QString& path : Both("base", {Part(Text("One"), Compound({BoxAt(0), PiercedFace(10, 1)}))}))
        EXPECT_EQ(CadMeshes(path).Names(), Names({"base - One-1"}));
}

// Shapes

TEST_F(STEPAndIGESReader, KeepsTheOrderOfFreeShapes)
{
    for (const QString& path : Both(
             "base", {Part(Text("C"), Box(1, 2, 3)), Part(Text("A"), BoxAt(5)), Part(Text("B"), BoxAt(9))})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Names(), Names({"base - C", "base - A", "base - B"}));
        ExpectBox(meshes[0], {0, 0, 0}, {1, 2, 3});
        ExpectBox(meshes[1], {5, 0, 0}, {6, 2, 3});
        ExpectBox(meshes[2], {9, 0, 0}, {10, 2, 3});
    }
}

TEST_F(STEPAndIGESReader, KeepsTheOrderOfSolidsInACompound)
{
    for (const QString& path : Both("base", {Part(Text("Row"), Compound({BoxAt(9), BoxAt(0), BoxAt(5)}))})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Count(), 3u);
        ExpectBox(meshes[0], {9, 0, 0}, {10, 2, 3});
        ExpectBox(meshes[1], {0, 0, 0}, {1, 2, 3});
        ExpectBox(meshes[2], {5, 0, 0}, {6, 2, 3});
    }
}

TEST_F(STEPAndIGESReader, FindsSolidsInNestedCompounds)
{
    const CadShape nested = Compound({BoxAt(0), Compound({BoxAt(5), Compound({BoxAt(10)})})});
    for (const QString& path : Both("base", {Part(Text("Nest"), nested)})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Names(), Names({"base - Nest-1", "base - Nest-2", "base - Nest-3"}));
        ExpectBox(meshes[2], {10, 0, 0}, {11, 2, 3});
    }
}

TEST_F(STEPAndIGESReader, ACompoundOfFacesGivesNothing)
{
    for (const QString& path : Both("base", {Part(Text("Faces"), Compound(FacesOf(Box(1, 2, 3))))}))
        ExpectNothingToMesh(path);
}

TEST_F(STEPAndIGESReader, DropsLooseFacesAndShellsOfACompound)
{
    const CadShape shell = PieceOf(Box(4, 4, 4), CadPiece::Shell);
    for (const QString& path :
         Both("base", {Part(Text("Mixed"), Compound({shell, BoxAt(5), PiercedFace(9, 1)}))})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Names(), Names({"base - Mixed-1"}));
        ExpectBox(meshes[0], {5, 0, 0}, {6, 2, 3});
    }
}

TEST_F(STEPAndIGESReader, ACompSolidOfAnIGESFileGivesItsSolids)
{
    const CadMeshes meshes(IGES("base", {Part(Text("Cells"), CompSolid({BoxAt(0), BoxAt(1)}))}));
    ASSERT_EQ(meshes.Names(), Names({"base - Cells-1", "base - Cells-2"}));
    ExpectBox(meshes[1], {1, 0, 0}, {2, 2, 3});
}

// STEP has no such thing: its solids become parts of an assembly.
TEST_F(STEPAndIGESReader, ACompSolidWrittenToASTEPFileGivesItsSolids)
{
    const CadMeshes meshes(STEP("base", {Part(Text("Cells"), CompSolid({BoxAt(0), BoxAt(1)}))}));
    ASSERT_EQ(meshes.Count(), 2u);
    ExpectBox(meshes[1], {1, 0, 0}, {2, 2, 3});
}

TEST_F(STEPAndIGESReader, AShellIsOneMesh)
{
    for (const QString& path : Both("base", {Part(Text("Skin"), PieceOf(Box(1, 2, 3), CadPiece::Shell))})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Names(), Names({"base - Skin"}));
        EXPECT_EQ(meshes[0].GetFaceNum(), 12);
        EXPECT_EQ(meshes[0].GetVertexNum(), 8);
    }
}

TEST_F(STEPAndIGESReader, AFaceIsOneMesh)
{
    for (const QString& path : Both("base", {Part(Text("Sheet"), PiercedFace(10, 1))})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Names(), Names({"base - Sheet"}));
        ExpectBox(meshes[0], {-5, -5, 0}, {5, 5, 0});
    }
}

TEST_F(STEPAndIGESReader, SolidsWrittenAsIGESSurfacesGiveTheFacesOfNoCompound)
{
    const QString path = m_directory.Path(Text("base.iges"));
    // A box becomes a compound of six faces, a sphere one face.
    ASSERT_TRUE(WriteIGES(path, {Part(Text("Box"), Box(1, 2, 3)), Part(Text("Ball"), Sphere(2))},
                          IGESSolids::AsFaces));
    EXPECT_EQ(CadMeshes(path).Names(), Names({"base - Ball"}));
}

TEST_F(STEPAndIGESReader, WiresEdgesAndVerticesGiveNothing)
{
    for (const CadPiece piece : {CadPiece::Wire, CadPiece::Edge, CadPiece::Vertex})
        for (const QString& path : Both("base", {Part(Text("Piece"), PieceOf(Box(1, 2, 3), piece))}))
            ExpectNothingToMesh(path);
}

TEST_F(STEPAndIGESReader, PassesOverWiresBesideSolids)
{
    const CadPartPointer wire = Part(Text("Wire"), PieceOf(Box(1, 2, 3), CadPiece::Wire));
    for (const QString& path : Both("base", {wire, Pin(), wire}))
        EXPECT_EQ(CadMeshes(path).Names(), Names({"base - Pin"}));
}

TEST_F(STEPAndIGESReader, AShapeWithoutTrianglesGivesSuccessAndNoMesh)
{
    for (const QString& path : Both("base", {Part(Text("Line"), CollapsedFace())})) {
        const CadMeshes meshes(path);
        EXPECT_TRUE(meshes.IsLoaded());
        EXPECT_EQ(meshes.Count(), 0u);
    }
}

TEST_F(STEPAndIGESReader, AFaceWithoutBoundsGivesSuccessAndNoMesh)
{
    const CadMeshes meshes(IGES("base", {Part(Text("Plane"), EndlessFace())}));
    EXPECT_TRUE(meshes.IsLoaded());
    EXPECT_EQ(meshes.Count(), 0u);
}

TEST_F(STEPAndIGESReader, LeavesOutShapesWithoutTrianglesAmongOthers)
{
    const CadPartPointer line = Part(Text("Line"), CollapsedFace());
    for (const QString& path : Both("base", {line, Pin(), line, Part(Text("Last"), BoxAt(5))})) {
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Names(), Names({"base - Pin", "base - Last"}));
        ExpectBox(meshes[1], {5, 0, 0}, {6, 2, 3});
    }
}

TEST_F(STEPAndIGESReader, LengthsAreMillimetresWhateverTheUnit)
{
    const QString step = STEP("base", {Part(Text("Block"), Box(1, 2, 3))});
    const CadMeshes metresOfSTEP(WithText(step, "SI_UNIT(.MILLI.,.METRE.)", "SI_UNIT($,.METRE.)"));
    ASSERT_EQ(metresOfSTEP.Count(), 1u);
    ExpectBox(metresOfSTEP[0], {0, 0, 0}, {1000, 2000, 3000});
    const QString iges = IGES("base", {Part(Text("Block"), Box(1, 2, 3))});
    const CadMeshes metresOfIGES(WithText(iges, ",1.,2,2HMM,1,", ",1.,6,1HM,1 ,"));
    ASSERT_EQ(metresOfIGES.Count(), 1u);
    ExpectBox(metresOfIGES[0], {0, 0, 0}, {1000, 2000, 3000});
}

// Assemblies

TEST_F(STEPAndIGESReader, EachInstanceIsAMeshAtItsPlaceNamedAfterThePart)
{
    const CadPartPointer pin = Pin();
    const QString path =
        STEP("x", {Assembly(Text("Asm"), {{pin, {1, 2, 3}}, {pin, {20, 0, 0, 90, 1, 0, 0}}})});
    const CadMeshes meshes(Copy(path, "x.stp"));
    ASSERT_EQ(meshes.Names(), Names({"x - Pin", "x - Pin"}));
    ExpectBox(meshes[0], {1, 2, 3}, {2, 4, 13});
    ExpectBox(meshes[1], {20, -10, 0}, {21, 0, 2});
    EXPECT_NEAR(meshes[1].GetVolume(), 20, 1e-3);
}

TEST_F(STEPAndIGESReader, InstancePlacementsMultiplyDownTheTree)
{
    const CadPartPointer pin = Pin();
    // Moved by 10 along x first, then turned by 90 degrees about z, then moved by 100 along x.
    const CadPartPointer low = Assembly(Text("Low"), {{pin, {10, 0, 0}}});
    const CadPartPointer middle = Assembly(Text("Middle"), {{low, {0, 0, 0, 90}}});
    const CadMeshes meshes(STEP("x", {Assembly(Text("High"), {{middle, {100, 0, 0}}})}));
    ASSERT_EQ(meshes.Names(), Names({"x - Pin"}));
    ExpectBox(meshes[0], {98, 10, 0}, {100, 11, 10});
}

TEST_F(STEPAndIGESReader, AssembliesGiveNoNames)
{
    const CadPartPointer pin = Pin();
    const CadPartPointer low = Assembly(Text("Low"), {{pin, {}}, {pin, {5, 0, 0}}});
    const CadPartPointer plate = Part(Text("Plate"), Moved(Box(9, 9, 1), {50, 0, 0}));
    const QString path =
        STEP("x", {Assembly(Text("High"), {{low, {0, 0, 5}}, {low, {0, 50, 0}}, {plate, {}}})});
    EXPECT_EQ(CadMeshes(path).Names(), Names({"x - Pin", "x - Pin", "x - Pin", "x - Pin", "x - Plate"}));
    EXPECT_EQ(CadMeshes(path, kDeflection, kAngle, false).Names(),
              Names({"Pin", "Pin", "Pin", "Pin", "Plate"}));
}

TEST_F(STEPAndIGESReader, AnAssemblyNamedAsItsFileChangesNothing)
{
    const QString path = STEP("Asm", {Assembly(Text("Asm"), {{Pin(), {1, 2, 3}}})});
    EXPECT_EQ(CadMeshes(path).Names(), Names({"Asm - Pin"}));
}

TEST_F(STEPAndIGESReader, CompoundsInAssembliesAreNumberedAtEachInstance)
{
    const CadPartPointer pair = Part(Text("Pair"), Compound({BoxAt(0), BoxAt(5)}));
    const QString path = STEP("x", {Assembly(Text("Asm"), {{pair, {0, 0, 10}}, {pair, {0, 0, 20}}})});
    const CadMeshes meshes(path);
    ASSERT_EQ(meshes.Names(), Names({"x - Pair-1", "x - Pair-2", "x - Pair-1", "x - Pair-2"}));
    ExpectBox(meshes[3], {5, 0, 20}, {6, 2, 23});
}

// IGES has no assemblies: an OpenCASCADE that writes one makes a compound of it.
TEST_F(STEPAndIGESReader, AnAssemblyWrittenToAnIGESFileIsACompound)
{
    const CadPartPointer pin = Pin();
    const CadMeshes meshes(
        IGES("x", {Assembly(Text("Asm"), {{pin, {1, 2, 3}}, {pin, {20, 0, 0, 90, 1, 0, 0}}})}));
    ASSERT_EQ(meshes.Names(), Names({"x - Asm-1", "x - Asm-2"}));
    ExpectBox(meshes[1], {20, -10, 0}, {21, 0, 2});
}

// What a call leaves behind

TEST_F(STEPAndIGESReader, ClosesItsDocumentWhateverTheResult)
{
    const QStringList paths =
        Both("base", {Pin()}) + Both("wire", {Part(Text("W"), PieceOf(Box(1, 1, 1), CadPiece::Wire))});
    for (const QString& path : paths) {
        {
            const CadMeshes meshes(path);
        }
        EXPECT_EQ(OpenDocumentCount(), 0) << path.toStdString();
    }
    ExpectRefused(m_directory.Write("nothing", Text("damaged.step")));
    ExpectRefused(m_directory.Write("nothing", Text("damaged.iges")));
    EXPECT_EQ(OpenDocumentCount(), 0);
}

TEST_F(STEPAndIGESReader, AnExceptionReachesTheCallerAndLeavesNothingOpen)
{
    for (const QString& path : Both("base", {Pin(), Part(Text("Ball"), Sphere(3))}))
        for (const auto& [deflection, angle] : {std::pair(0.0, kAngle), std::pair(kDeflection, 0.0)}) {
            Mesh other(0.03f);
            std::vector<Mesh*> meshes = {&other};
            const double deflectionNow = deflection, angleNow = angle;
            EXPECT_TRUE(EndsInStandardFailure([&] {
                static_cast<void>(STEPAndIGESFile::LoadFile(path, meshes, deflectionNow, angleNow));
            }));
            EXPECT_TRUE(meshes.empty());
            EXPECT_EQ(OpenDocumentCount(), 0);
        }
}

TEST_F(STEPAndIGESReader, LoadsAsBeforeAfterAnException)
{
    for (const QString& path : Both("base", {Pin()})) {
        EXPECT_TRUE(EndsInStandardFailure([&] { const CadMeshes meshes(path, 0); }));
        const CadMeshes meshes(path);
        ASSERT_EQ(meshes.Count(), 1u);
        EXPECT_EQ(meshes[0].GetFaceNum(), 12);
    }
}
