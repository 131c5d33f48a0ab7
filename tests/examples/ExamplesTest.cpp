#include <algorithm>
#include <cmath>
#include <memory>

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/obj/OBJFile.h"
#include "fileformat/path/DXFPathFile.h"
#include "fileformat/stl/STLFile.h"
#include "fileformat/texture/TextureFile.h"
#include "tests/cad/CadFiles.h"
#include "tests/common/RunProgram.h"

namespace {

QString Sample(const char* name)
{
    return QStringLiteral(KRCORE_SAMPLES "/") + QLatin1String(name);
}

ProgramRun RunExample(const QString& name, const QStringList& arguments)
{
    return RunProgram(QStringLiteral(KRCORE_EXAMPLE_PROGRAMS "/") + name, arguments);
}

Mesh LoadedSTL(const QString& fileName)
{
    Mesh mesh(0.03F);
    EXPECT_TRUE(STLFile::LoadFile(fileName, mesh, false, 80, false)) << fileName.toStdString();
    return mesh;
}

bool IsClosed(const Mesh& mesh)
{
    const std::vector<TriangleFace>& neighbours = mesh.GetFaceNeighbours();
    return std::all_of(neighbours.begin(), neighbours.end(), [](const TriangleFace& across) {
        return across[0] >= 0 && across[1] >= 0 && across[2] >= 0;
    });
}

/// Runs the examples on files whose names have letters of all kinds.
class Examples : public ::testing::Test {
protected:
    QString Path(const char* name) const { return m_directory.filePath(QString::fromUtf8(name)); }

    /// The name of a copy of a sample.
    QString Copy(const char* sample, const char* name) const
    {
        EXPECT_TRUE(QFile::copy(Sample(sample), Path(name)));
        return Path(name);
    }

    /// Runs an example that is to succeed; what it prints.
    static QString Output(const char* name, const QStringList& arguments)
    {
        const ProgramRun run = RunExample(QLatin1String(name), arguments);
        EXPECT_EQ(run.exitCode, 0) << run.errors.toStdString();
        EXPECT_EQ(run.errors, QString());
        return run.output;
    }

private:
    QTemporaryDir m_directory{QDir::tempPath() + QStringLiteral("/Prüfung 零件 XXXXXX")};
};

TEST_F(Examples, AreListedInFull)
{
    const QStringList sources =
        QDir(QStringLiteral(KRCORE_EXAMPLES)).entryList({QStringLiteral("*.cpp")}, QDir::Files, QDir::Name);
    EXPECT_EQ(sources.join(QLatin1Char(' ')).remove(QStringLiteral(".cpp")),
              QStringLiteral(KRCORE_EXAMPLE_NAMES));
}

TEST_F(Examples, HaveLessThan60LinesEach)
{
    for (const QString& name : QStringLiteral(KRCORE_EXAMPLE_NAMES).split(QLatin1Char(' '))) {
        QFile file(QStringLiteral(KRCORE_EXAMPLES "/%1.cpp").arg(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_LT(file.readAll().count('\n'), 60) << name.toStdString();
    }
}

TEST_F(Examples, FailWithoutArguments)
{
    for (const QString& name : QStringLiteral(KRCORE_EXAMPLE_NAMES).split(QLatin1Char(' '))) {
        const ProgramRun run = RunExample(name, {});
        EXPECT_EQ(run.exitCode, 1) << name.toStdString();
        EXPECT_EQ(run.output, QString()) << name.toStdString();
    }
}

TEST_F(Examples, FailWhenTheirInputIsNotThere)
{
    const struct {
        const char* name;
        QStringList further;
    } kReaders[] = {{"CutTime", {QStringLiteral("10")}},
                    {"DrapePicture", {Path("out")}},
                    {"ExtractPicture", {Path("out")}},
                    {"FindHoles", {}},
                    {"ListMaterials", {}},
                    {"ListParts", {}},
                    {"MakeLithophane", {QStringLiteral("10"), Path("out")}},
                    {"MakeTexture", {QStringLiteral("1"), Path("out")}},
                    {"SliceModel", {QStringLiteral("1"), Path("out")}},
                    {"StitchAndMeasure", {Path("out")}}};
    for (const auto& [name, further] : kReaders) {
        const ProgramRun run = RunExample(QLatin1String(name), QStringList(Path("missing")) + further);
        EXPECT_EQ(run.exitCode, 1) << name;
        EXPECT_EQ(run.output, QString()) << name;
        EXPECT_FALSE(QFile::exists(Path("out"))) << name;
    }
}

TEST_F(Examples, FailWhenTheirOutputCannotBeOpened)
{
    const QString out = Path("missing/out"), one = QStringLiteral("1");
    const struct {
        const char* name;
        QStringList arguments;
    } kWriters[] = {{"DrapePicture", {Sample("sheet.stl"), out}},
                    {"ExtractPicture", {Sample("weave.texture"), out + QStringLiteral(".png")}},
                    {"MakeLithophane", {Sample("medal.png"), one, out}},
                    {"MakeSpacer", {QStringLiteral("2"), one, one, out}},
                    {"MakeTexture", {Sample("medal.png"), one, out}},
                    {"PackPlate", {out, Sample("gear.stl")}},
                    {"SliceModel", {Sample("gear.stl"), one, out}},
                    {"StitchAndMeasure", {Sample("gear.stl"), out}}};
    for (const auto& [name, arguments] : kWriters)
        EXPECT_EQ(RunExample(QLatin1String(name), arguments).exitCode, 1) << name;
}

TEST_F(Examples, StitchAndMeasurePrintsAndWritesWhatItRead)
{
    EXPECT_EQ(Output("StitchAndMeasure", {Copy("gear.stl", "Zahnrad ä.stl"), Path("齿轮.stl")}),
              QStringLiteral("3600 facets, 1800 vertices, volume 14333.37\n"));
    EXPECT_EQ(LoadedSTL(Path("齿轮.stl")).GetFaceNum(), 3600);
}

TEST_F(Examples, FindHolesTellsTheBorderOfASheetAndNothingOfAGear)
{
    EXPECT_EQ(Output("FindHoles", {Copy("sheet.stl", "Blech.stl")}),
              QStringLiteral("68 edges, 165.02 mm, from 0 0 10\n"));
    EXPECT_EQ(Output("FindHoles", {Sample("gear.stl")}), QString());
}

TEST_F(Examples, MakeSpacerWritesAClosedTube)
{
    EXPECT_EQ(Output("MakeSpacer",
                     {QStringLiteral("8"), QStringLiteral("3.2"), QStringLiteral("10"), Path("Hülse.stl")}),
              QString());
    const Mesh tube = LoadedSTL(Path("Hülse.stl"));
    EXPECT_TRUE(IsClosed(tube));
    EXPECT_EQ(tube.GetFaceNum(), 8 * 96);
    const double discs = 96 / 2 * std::sin(2 * std::acos(-1.0) / 96); // pi, but for the corners
    EXPECT_NEAR(tube.GetVolume(), discs * (4 * 4 - 1.6 * 1.6) * 10, 0.001);
}

TEST_F(Examples, MakeSpacerRefusesATubeWithoutAWall)
{
    for (const char* const inner : {"8", "9", "0", "-1", "wide"})
        EXPECT_EQ(RunExample(QStringLiteral("MakeSpacer"), {QStringLiteral("8"), QLatin1String(inner),
                                                            QStringLiteral("10"), Path("out.stl")})
                      .exitCode,
                  1)
            << inner;
    EXPECT_FALSE(QFile::exists(Path("out.stl")));
}

TEST_F(Examples, ListMaterialsTellsTheAreaOfEach)
{
    EXPECT_EQ(Output("ListMaterials", {Sample("balloon.obj")}),
              QStringLiteral("envelope: 1724 faces, 12238.9 mm2, colour 1 1 1, picture of 480 x 400\n"
                             "wicker: 28 faces, 805.2 mm2, colour 0.72 0.53 0.3\n"
                             "leather: 32 faces, 164.3 mm2, colour 0.4 0.22 0.12\n"
                             "rope: 80 faces, 149.8 mm2, colour 0.85 0.8 0.68\n"
                             "brass: 256 faces, 189.2 mm2, colour 0.8 0.62 0.25\n"));
}

TEST_F(Examples, DrapePictureGivesEachVertexItsPlaceInThePicture)
{
    Output("DrapePicture", {Sample("sheet.stl"), Path("Blech.obj")});
    Mesh mesh(0.03F);
    std::vector<MeshTextureGroup> groups;
    ASSERT_TRUE(OBJFile::LoadFile(Path("Blech.obj"), mesh, groups, true, 0));
    const auto& vertices = *mesh.GetVerticesVecPtr();
    ASSERT_EQ(mesh.GetTextureFacesVecPtr()->size(), 578U);
    ASSERT_EQ(mesh.GetTexCoordVecPtr()->size(), vertices.size());
    for (std::size_t face = 0; face < 578; ++face)
        for (int corner = 0; corner < 3; ++corner) {
            const auto& vertex = vertices.at(std::size_t((*mesh.GetFacesVecPtr())[face][corner]));
            const auto& place =
                mesh.GetTexCoordVecPtr()->at(std::size_t((*mesh.GetTextureFacesVecPtr())[face][corner]));
            ASSERT_NEAR(place.x, vertex.x / 40, 1e-5);
            ASSERT_NEAR(place.y, vertex.y / 40, 1e-5);
        }
}

TEST_F(Examples, ListPartsTellsSizesAndPlacesInMillimetres)
{
    EXPECT_EQ(Output("ListParts", {Copy("bolt.3mf", "Schraube é.3mf")}),
              QStringLiteral("Description: Hexagon, without the thread\n"
                             "Title: Half-inch bolt and nut\n"
                             "bolt, 19.05 x 22.00 x 46.04 mm, at 19.05 19.05 0\n"
                             "nut, 19.05 x 22.00 x 11.11 mm, at 50.8 19.05 0\n"));
}

TEST_F(Examples, PackPlatePutsPartsSideBySide)
{
    Output("PackPlate",
           {Path("Platte.3mf"), Copy("gear.stl", "Zahnrad ä.stl"), Copy("knob.stl", "旋钮.stl")});
    EXPECT_EQ(Output("ListParts", {Path("Platte.3mf")}),
              QStringLiteral("Title: Plate of 2\n"
                             "Zahnrad ä, 48.04 x 48.04 x 16.00 mm, at 24.0186 24.0186 0\n"
                             "旋钮, 37.30 x 38.35 x 17.40 mm, at 70.3354 19.1752 0\n"));
    Model3MF package;
    ASSERT_TRUE(package.LoadFile(Path("Platte.3mf")));
    for (Mesh* const mesh : package.GetObjects())
        delete mesh;
    EXPECT_EQ(package.GetMaterial().colors.size(), 2U);
    EXPECT_EQ(package.GetUnit(), QStringLiteral("millimeter"));
}

TEST_F(Examples, PackPlateWritesNothingWhenAPartCannotBeRead)
{
    const ProgramRun run =
        RunExample(QStringLiteral("PackPlate"), {Path("out.3mf"), Sample("gear.stl"), Path("missing.stl")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, Path("missing.stl") + QStringLiteral(" cannot be read\n"));
    EXPECT_FALSE(QFile::exists(Path("out.3mf")));
}

TEST_F(Examples, BillOfMaterialsCountsThePartsOfFilesReadAtOnce)
{
    const QString first = Copy("bearing.step", "Lager.step"), second = Copy("bearing.step", "轴承.stp");
    EXPECT_EQ(Output("BillOfMaterials", {first, second}),
              QStringLiteral("%1: 1 x block, 29.30 cm3 in all\n%1: 4 x screw, 2.22 cm3 in all\n"
                             "%2: 1 x block, 29.30 cm3 in all\n%2: 4 x screw, 2.22 cm3 in all\n")
                  .arg(first, second));
}

TEST_F(Examples, BillOfMaterialsReadsIGESToo)
{
    const QString file = Path("Kiste.igs");
    ASSERT_TRUE(test::WriteIGES(file, {test::Part(QStringLiteral("box"), test::Box(10, 20, 30))}));
    EXPECT_EQ(Output("BillOfMaterials", {file}), file + QStringLiteral(": 1 x box, 6.00 cm3 in all\n"));
}

TEST_F(Examples, BillOfMaterialsGoesOnAfterAFileThatCannotBeRead)
{
    const ProgramRun run = RunExample(QStringLiteral("BillOfMaterials"),
                                      {Path("missing.iges"), Sample("gear.stl"), Sample("bearing.step")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, QStringLiteral("%1: cannot be read\n%2: cannot be read\n")
                              .arg(Path("missing.iges"), Sample("gear.stl")));
    EXPECT_EQ(run.output.count(QLatin1Char('\n')), 2);
}

TEST_F(Examples, MakeLithophaneWritesASolidThatIsThickWhereThePictureIsDark)
{
    QImage picture(300, 200, QImage::Format_RGB32);
    picture.fill(Qt::black);
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 150; ++x)
            picture.setPixel(x, y, qRgb(255, 255, 255));
    ASSERT_TRUE(picture.save(Path("Bild.png")));
    Output("MakeLithophane", {Path("Bild.png"), QStringLiteral("30"), Path("licht.stl")});
    const Mesh solid = LoadedSTL(Path("licht.stl"));
    EXPECT_TRUE(IsClosed(solid));
    const MeshBoundingBox box = solid.GetBoundingBox();
    EXPECT_FLOAT_EQ(box.maximum.x - box.minimum.x, 30);
    EXPECT_FLOAT_EQ(box.maximum.y - box.minimum.y, 20);
    EXPECT_FLOAT_EQ(box.maximum.z, 3);
    EXPECT_NEAR(solid.GetVolume(), 20 * 15 * (0.6 + 3), 10); // the slope is symmetric
    EXPECT_EQ(solid.GetVertexNum(), 2 * 150 * 100);          // 0.2 mm a pixel
}

TEST_F(Examples, MakeLithophaneTellsWhatIsNoPicture)
{
    const ProgramRun run = RunExample(QStringLiteral("MakeLithophane"),
                                      {Sample("gear.stl"), QStringLiteral("30"), Path("out.stl")});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.errors, Sample("gear.stl") + QStringLiteral(": no picture, or too large\n"));
}

TEST_F(Examples, MakeTextureWritesWhatExtractPictureReads)
{
    Output("MakeTexture", {Copy("medal.png", "Münze.png"), QStringLiteral("3"), Path("Münze.texture")});
    EXPECT_EQ(Output("ExtractPicture", {Path("Münze.texture"), Path("硬币.png")}),
              QStringLiteral("Münze: 160 x 160 pixels, 3 x 3 in a unit, turned by 0 degrees\n"));
    EXPECT_EQ(QImage(Path("硬币.png")).convertToFormat(QImage::Format_RGB32),
              QImage(Sample("medal.png")).convertToFormat(QImage::Format_RGB32));
    TextureFile texture;
    ASSERT_TRUE(texture.LoadFile(Path("Münze.texture")));
    EXPECT_EQ(texture.GetParameters().wrapS, MeshMaterialParameters::Mirror);
    EXPECT_EQ(texture.GetPatternID().size(), 36);
}

TEST_F(Examples, SliceModelWritesClosedContoursForEachLayer)
{
    ASSERT_EQ(Output("SliceModel", {Sample("gear.stl"), QStringLiteral("4"), Path("Schichten.path")}),
              QString());
    DXFPathFile::Paths paths;
    std::map<int, QString> names;
    ASSERT_TRUE(DXFPathFile::ReadDXFPathFile(paths, names, Path("Schichten.path")));
    ASSERT_EQ(paths.size(), 4U);
    for (const auto& [id, contours] : paths) {
        ASSERT_EQ(contours.size(), 2U) << id; // the outside and the bore
        for (const DXFPathFile::Contour& contour : contours) {
            EXPECT_GT(contour.size(), 3U);
            EXPECT_EQ(contour.front(), contour.back());
        }
    }
}

TEST_F(Examples, CutTimeTellsTheLengthOfEachSet)
{
    EXPECT_EQ(Output("CutTime", {Copy("gasket.path", "Dichtung ø.path"), QStringLiteral("20")}),
              QStringLiteral("1 cut: 10 contours, 777.4 mm, 38.9 s\n"
                             "2 centre marks: 6 contours, 72.0 mm, 3.6 s\n"
                             "3 sealant Ø 38: 3 contours, 322.1 mm, 16.1 s\n"));
}

} // namespace
