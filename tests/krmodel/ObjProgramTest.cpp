#include <QImage>

#include "core/mesh/Mesh.h"
#include "fileformat/obj/OBJFile.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

// A square of two triangles in the plane z = 0, the corners of its texture with it.
constexpr char kCorners[] = "v 0 0 0\nv 2 0 0\nv 2 2 0\nv 0 2 0\n";
constexpr char kTexture[] = "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n";

class KrmodelObj : public Krmodel {
protected:
    /// The lines that begin with a keyword.
    QList<QByteArray> Lines(const char* fileName, const QByteArray& keyword) const
    {
        QList<QByteArray> lines;
        for (const QByteArray& line : Bytes(fileName).split('\n'))
            if (line.startsWith(keyword + ' '))
                lines << line;
        return lines;
    }
    Mesh Loaded(const char* fileName) const
    {
        Mesh mesh(0.03F);
        std::vector<MeshTextureGroup> groups;
        EXPECT_TRUE(OBJFile::LoadFile(Path(fileName), mesh, groups, true, 0));
        return mesh;
    }
    void CopyBalloon() const
    {
        for (const char* name : {"balloon.obj", "balloon.mtl", "balloon.png"})
            CopySample(name, name);
    }
};

TEST_F(KrmodelObj, InfoPrintsTheSampleWithItsMaterials)
{
    const ProgramRun run = InfoOfSample("balloon.obj");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_EQ(Cell(run, "format"), QStringLiteral("OBJ"));
    EXPECT_EQ(Cell(run, "facets"), QStringLiteral("2,120"));
    EXPECT_EQ(Cell(run, "texture coordinates"), QStringLiteral("1,230"));
    EXPECT_EQ(Cell(run, "texture faces"), QStringLiteral("2,120"));
    EXPECT_EQ(Cell(run, "open edges"), QStringLiteral("0, closed"));
    EXPECT_EQ(Cell(run, "pieces"), QStringLiteral("8"));
    EXPECT_EQ(Cell(run, "material"), QStringLiteral("groups first face faces diffuse texture"));
    EXPECT_EQ(Cell(run, "envelope"), QStringLiteral("1 0 1,724 1 1 1 balloon.png 480 x 400"));
    EXPECT_EQ(Cell(run, "brass"), QStringLiteral("1 1,864 256 0.8 0.62 0.25"));
}

TEST_F(KrmodelObj, InfoSaysNothingOfMaterialsAndTexturesThatAreNotThere)
{
    Write("plain.obj", kCorners + QByteArray("f 1 2 3 4\n"));
    const ProgramRun run = Run("info plain.obj");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(Cell(run, "facets"), QStringLiteral("2"));
    EXPECT_FALSE(run.output.contains(QStringLiteral("texture")));
    EXPECT_FALSE(run.output.contains(QStringLiteral("material")));
}

TEST_F(KrmodelObj, InfoShowsThatALibraryOrAPictureIsMissing)
{
    CopySample("balloon.obj", "balloon.obj");
    EXPECT_EQ(Cell(Run("info balloon.obj"), "envelope"), QStringLiteral("1 0 1,724 not found"));
    CopySample("balloon.mtl", "balloon.mtl");
    EXPECT_EQ(Cell(Run("info balloon.obj"), "envelope"),
              QStringLiteral("1 0 1,724 1 1 1 balloon.png missing"));
}

TEST_F(KrmodelObj, InfoSaysWhenTextureFacesDoNotFit)
{
    Write("few.obj", kCorners + QByteArray(kTexture) + "f 1/1 2/2 3/3\nf 1 3 4\n");
    EXPECT_EQ(Cell(Run("info few.obj"), "texture faces"), QStringLiteral("1, do not fit the facets"));
}

TEST_F(KrmodelObj, ConvertsToStl)
{
    EXPECT_EQ(Run(Words("convert %1 balloon.stl", Sample("balloon.obj"))).exitCode, Done);
    const ProgramRun obj = InfoOfSample("balloon.obj"), stl = Run("info balloon.stl");
    EXPECT_EQ(Cell(stl, "format"), QStringLiteral("STL, binary"));
    for (const char* row : {"facets", "vertices", "x", "y", "z", "open edges", "pieces"})
        EXPECT_EQ(Cell(stl, row), Cell(obj, row)) << row;
    EXPECT_NEAR(Cell(stl, "volume").toDouble(), Cell(obj, "volume").toDouble(), 1);
}

TEST_F(KrmodelObj, ConvertsStlToObj)
{
    const ProgramRun run = Run(Words("convert %1 GEAR.OBJ", Sample("gear.stl")));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output + run.errors, QString());
    const ProgramRun stl = InfoOfSample("gear.stl"), obj = Run("info GEAR.OBJ");
    for (const char* row : {"facets", "vertices", "x", "y", "z", "open edges", "pieces"})
        EXPECT_EQ(Cell(obj, row), Cell(stl, row)) << row;
    EXPECT_EQ(Cell(obj, "format"), QStringLiteral("OBJ"));
    EXPECT_EQ(Lines("GEAR.OBJ", "vt"), QList<QByteArray>());
    EXPECT_EQ(Lines("GEAR.OBJ", "vn"), QList<QByteArray>());
}

TEST_F(KrmodelObj, KeepsTextureCoordinatesFromObjToObj)
{
    Write("in.obj", kCorners + QByteArray(kTexture) + "f 1/4 2/3 3/2 4/1\n");
    EXPECT_EQ(Run("convert in.obj out.obj").exitCode, Done);
    const Mesh in = Loaded("in.obj"), out = Loaded("out.obj");
    ASSERT_EQ(out.GetFaceNum(), 2);
    ASSERT_EQ(out.GetTextureFacesVecPtr()->size(), 2U);
    const auto place = [](const Mesh& mesh, size_t face, int corner) {
        return mesh.GetTexCoordVecPtr()->at(size_t(mesh.GetTextureFacesVecPtr()->at(face)[corner]));
    };
    for (size_t face = 0; face < 2; ++face)
        for (int corner = 0; corner < 3; ++corner) {
            EXPECT_EQ(place(out, face, corner).x, place(in, face, corner).x);
            EXPECT_EQ(place(out, face, corner).y, place(in, face, corner).y);
        }
    EXPECT_EQ(place(out, 0, 0).x, 0.0F);
    EXPECT_EQ(place(out, 0, 0).y, 1.0F);
}

TEST_F(KrmodelObj, WritesNoTextureForTextureIndicesOutsideTheirList)
{
    for (const char* hostile : {"0", "-1", "5", "2147483647", "-2147483648", "99999999999", "x"}) {
        Write("in.obj", kCorners + QByteArray(kTexture) + "f 1/1 2/" + hostile + " 3/3\n");
        const ProgramRun run = Run("convert in.obj out.obj");
        EXPECT_EQ(run.exitCode, Done) << hostile << run.errors.toStdString();
        EXPECT_EQ(Lines("out.obj", "f"), QList<QByteArray>{"f 1 2 3"}) << hostile;
        EXPECT_EQ(Lines("out.obj", "vt"), QList<QByteArray>()) << hostile;
        EXPECT_EQ(Run("preview in.obj out.png --size 64x48").exitCode, Done) << hostile;
        EXPECT_EQ(Cell(Run("info in.obj"), "texture faces"), QStringLiteral("1, do not fit the facets"))
            << hostile;
    }
}

TEST_F(KrmodelObj, WritesNoTextureWhenAFaceWasDropped)
{
    Write("in.obj", kCorners + QByteArray(kTexture) + "f 1/1 2/2 9/3\nf 1/1 2/2 3/3\n");
    EXPECT_EQ(Run("convert in.obj out.obj").exitCode, Done);
    EXPECT_EQ(Lines("out.obj", "f"), QList<QByteArray>{"f 1 2 3"});
}

TEST_F(KrmodelObj, SkipsBadVertexIndicesInEachCommand)
{
    Write("in.obj", kCorners + QByteArray("f 1 2 3\nf 0 1 2\nf -1 -2 -3\nf 1 2 5\nf a b c\n"));
    EXPECT_EQ(Cell(Run("info in.obj"), "facets"), QStringLiteral("1"));
    for (const char* line : {"convert in.obj out.stl", "convert in.obj out.obj", "preview in.obj o.png"})
        EXPECT_EQ(Run(line).exitCode, Done) << line;
}

TEST_F(KrmodelObj, TakesTextForGrantedAndRefusesBinary)
{
    EXPECT_EQ(Run(Words("convert %1 text.obj --ascii", Sample("gear.stl"))).exitCode, Done);
    const ProgramRun run = Run("convert missing.stl binary.obj --binary");
    EXPECT_EQ(run.exitCode, Usage);
    EXPECT_EQ(run.errors, QStringLiteral("krmodel: binary.obj: OBJ has no binary variant\n"));
    EXPECT_EQ(Files(), QStringList{QStringLiteral("text.obj")});
}

TEST_F(KrmodelObj, ReportsAMissingFile)
{
    EXPECT_EQ(Run("info missing.obj").exitCode, CannotOpen);
}

TEST_F(KrmodelObj, ReportsVerticesWithoutFacesAsEmpty)
{
    Write("points.obj", kCorners);
    const ProgramRun run = Run("info points.obj");
    EXPECT_EQ(run.exitCode, Empty);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("holds no facet")));
}

TEST_F(KrmodelObj, ReportsAFileWithoutAStatementAsUnreadable)
{
    CopySample("gear.stl", "binary.obj");
    CopySample("sheet.stl", "text.obj");
    Write("zero.obj", QByteArray());
    Write("remarks.obj", "# nothing\n\n");
    for (const char* line : {"info binary.obj", "info text.obj", "info zero.obj", "info remarks.obj"}) {
        const ProgramRun run = Run(line);
        EXPECT_EQ(run.exitCode, NotReadable) << line;
        EXPECT_TRUE(run.errors.contains(QStringLiteral("not readable as OBJ"))) << line;
    }
}

TEST_F(KrmodelObj, ReportsAFullDisk)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), Path("full.obj")));
    const ProgramRun run = Run(Words("convert %1 full.obj", Sample("gear.stl")));
    EXPECT_EQ(run.exitCode, WriteFailed);
    EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: full.obj: ")));
}

TEST_F(KrmodelObj, ReadsAndWritesNamesWithBlanksAndAccents)
{
    CopySample("balloon.obj", "Fesselballon über Île №1.obj");
    const QString name = QString::fromUtf8("Fesselballon über Île №1.obj");
    const QString copy = QString::fromUtf8("la copie abîmée.obj");
    for (const QString& locale : {QStringLiteral("LC_ALL=C"), QStringLiteral("LC_ALL=C.UTF-8")}) {
        EXPECT_EQ(Run({QStringLiteral("info"), name}, {locale}).exitCode, Done);
        EXPECT_EQ(Run({QStringLiteral("convert"), name, copy}, {locale}).exitCode, Done);
        EXPECT_EQ(Lines("la copie abîmée.obj", "f").size(), 2120);
        EXPECT_TRUE(QFile::remove(Path("la copie abîmée.obj")));
    }
}

TEST_F(KrmodelObj, FindsALibraryOfAnAccentedNameAndAPictureOfOneWithBlanks)
{
    Write("in.obj", "mtllib Möbel.mtl\n" + QByteArray(kCorners) + "usemtl Käse\nf 1 2 3 4\n");
    Write("Möbel.mtl", "newmtl Käse\nKd 1 0.9 0.1\nmap_Kd großes Loch.png\n");
    ASSERT_TRUE(QImage(8, 4, QImage::Format_RGB32).save(Path("großes Loch.png")));
    EXPECT_EQ(Cell(Run("info in.obj"), "Käse"), QString::fromUtf8("1 0 2 1 0.9 0.1 großes Loch.png 8 x 4"));
}

TEST_F(KrmodelObj, PreviewShowsColoursAndTextures)
{
    CopyBalloon();
    EXPECT_EQ(Run("preview balloon.obj with.png --size 160x120").exitCode, Done);
    EXPECT_TRUE(QFile::remove(Path("balloon.png")));
    EXPECT_EQ(Run("preview balloon.obj without.png --size 160x120").exitCode, Done);
    EXPECT_TRUE(QFile::remove(Path("balloon.mtl")));
    EXPECT_EQ(Run("preview balloon.obj plain.png --size 160x120").exitCode, Done);
    const auto countRed = [this](const char* name) {
        const QImage image(Path(name));
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) {
                const QColor colour = image.pixelColor(x, y);
                count += colour.red() > colour.green() + 60 && colour.red() > colour.blue() + 60 ? 1 : 0;
            }
        return count;
    };
    EXPECT_GT(countRed("with.png"), 1000);
    EXPECT_LT(countRed("without.png"), 300);
    EXPECT_EQ(countRed("plain.png"), 0);
}

TEST_F(KrmodelObj, HelpNamesTheFormat)
{
    EXPECT_TRUE(Run("--help").output.contains(QStringLiteral("\n  OBJ (.obj): ")));
}

} // namespace
