#include <QImage>

#include "core/mesh/Mesh.h"
#include "fileformat/3mf/Model3MF.h"
#include "fileformat/image/ImageFile.h"
#include "fileformat/stl/STLFile.h"
#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using test::ReadPackage;

class KrmodelRelief : public Krmodel {
protected:
    /// A picture of grey levels, a digit a pixel: '0' black, '9' white.
    void WritePicture(const char* name, const QStringList& rows) const
    {
        QImage picture(rows.first().size(), rows.size(), QImage::Format_Grayscale8);
        for (int row = 0; row < picture.height(); ++row)
            for (int column = 0; column < picture.width(); ++column)
                picture.scanLine(row)[column] = uchar(rows[row][column].digitValue() * 255 / 9);
        EXPECT_TRUE(picture.save(Path(name)));
    }
    void WriteGrey(const char* name, QSize size) const
    {
        WritePicture(
            name,
            QStringList(QVector<QString>(size.height(), QString(size.width(), QLatin1Char('5'))).toList()));
    }
    /// The rows of info for a relief that was made so; the picture stands for the first word.
    ProgramRun InfoOfRelief(const char* pictureAndOptions) const
    {
        const QStringList words = Words(pictureAndOptions);
        const ProgramRun run = Run(Words("relief %1 out.stl", words.first()) + words.mid(1));
        EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
        EXPECT_EQ(run.output + run.errors, QString());
        return Run("info out.stl");
    }
    QString Size(const ProgramRun& info, const char* axis) const
    {
        return Cell(info, axis).section(QLatin1Char(' '), 2);
    }
};

TEST_F(KrmodelRelief, IsClosedOneHundredMillimetresWideAndInProportion)
{
    WritePicture("in.png", {QStringLiteral("0009"), QStringLiteral("0000")});
    const ProgramRun info = InfoOfRelief("in.png");
    EXPECT_EQ(Cell(info, "x"), QStringLiteral("0 100 100"));
    EXPECT_EQ(Cell(info, "y"), QStringLiteral("0 50 50"));
    EXPECT_EQ(Cell(info, "z"), QStringLiteral("0 3 3"));
    EXPECT_EQ(Cell(info, "open edges"), QStringLiteral("0, closed"));
    EXPECT_EQ(Cell(info, "vertices"), QStringLiteral("16"));
    EXPECT_EQ(Cell(info, "facets"), QStringLiteral("28"));
    EXPECT_GT(Cell(info, "volume").toDouble(), 0);
}

TEST_F(KrmodelRelief, HasTheExtentsAskedFor)
{
    WritePicture("in.png", {QStringLiteral("000"), QStringLiteral("090"), QStringLiteral("000")});
    const ProgramRun wide = InfoOfRelief("in.png --width 40.5");
    EXPECT_EQ(Cell(wide, "x"), QStringLiteral("0 40.5 40.5"));
    EXPECT_EQ(Cell(wide, "y"), QStringLiteral("0 40.5 40.5"));
    const ProgramRun deep = InfoOfRelief("in.png --width 10 --depth 25 --min-height 0.5 --max-height 12");
    EXPECT_EQ(Cell(deep, "x"), QStringLiteral("0 10 10"));
    EXPECT_EQ(Cell(deep, "y"), QStringLiteral("0 25 25"));
    EXPECT_EQ(Cell(deep, "z"), QStringLiteral("0 12 12"));
}

TEST_F(KrmodelRelief, LetsBrightOrDarkBeHigh)
{
    WritePicture("white.png", {QStringLiteral("99"), QStringLiteral("99")});
    WritePicture("black.png", {QStringLiteral("00"), QStringLiteral("00")});
    EXPECT_EQ(Size(InfoOfRelief("white.png"), "z"), QStringLiteral("3"));
    EXPECT_EQ(Size(InfoOfRelief("black.png"), "z"), QStringLiteral("1"));
    EXPECT_EQ(Size(InfoOfRelief("white.png --dark-is-high"), "z"), QStringLiteral("1"));
    EXPECT_EQ(Size(InfoOfRelief("black.png --dark-is-high"), "z"), QStringLiteral("3"));
    EXPECT_EQ(Size(InfoOfRelief("white.png --min-height 4 --max-height 2"), "z"), QStringLiteral("2"));
}

TEST_F(KrmodelRelief, HasThePicturesUpperEdgeAtTheBack)
{
    WritePicture("in.png", {QStringLiteral("90"), QStringLiteral("00"), QStringLiteral("00")});
    EXPECT_EQ(Run("relief in.png out.stl --width 2 --depth 2").exitCode, Done);
    Mesh mesh(0.03F);
    ASSERT_TRUE(STLFile::LoadFile(Path("out.stl"), mesh, false, 80, false));
    int high = 0;
    for (const Vector3D<float>& vertex : *mesh.GetVerticesVecPtr())
        if (vertex.z > 1) {
            EXPECT_EQ(vertex, Vector3D<float>(0, 2, 3));
            ++high;
        }
    EXPECT_EQ(high, 1);
}

TEST_F(KrmodelRelief, IsWhatTheLibraryMakesButAtTheOrigin)
{
    WritePicture("in.png", {QStringLiteral("0123"), QStringLiteral("4567"), QStringLiteral("8901")});
    EXPECT_EQ(Run("relief in.png out.stl --width 8 --depth 4 --min-height 2 --max-height 6 --blur 1 "
                  "--dark-is-high --scale 75")
                  .exitCode,
              Done);
    Mesh made(0.03F), expected(0.03F);
    ASSERT_TRUE(STLFile::LoadFile(Path("out.stl"), made, false, 80, false));
    ASSERT_TRUE(ImageFile::LoadFile(Path("in.png"), expected, 8, 4, 1, false, 2, 6, 75));
    ASSERT_EQ(made.GetFaceNum(), expected.GetFaceNum());
    for (int i = 0; i < made.GetFaceNum(); ++i)
        for (int corner = 0; corner < 3; ++corner) {
            const auto at = [=](const Mesh& mesh) {
                return mesh.GetVerticesVecPtr()->at(size_t(mesh.GetFacesVecPtr()->at(size_t(i))[corner]));
            };
            const Vector3D<float> place = at(expected);
            EXPECT_EQ(at(made), Vector3D<float>(place.x - 4, place.y - 2, place.z)) << i;
        }
}

TEST_F(KrmodelRelief, IsLowerWhereItIsBlurred)
{
    WritePicture("in.png", {QStringLiteral("00000"), QStringLiteral("00000"), QStringLiteral("00900"),
                            QStringLiteral("00000"), QStringLiteral("00000")});
    EXPECT_EQ(Size(InfoOfRelief("in.png --blur 0"), "z"), QStringLiteral("3"));
    const double one = Size(InfoOfRelief("in.png --blur 1"), "z").toDouble();
    const double two = Size(InfoOfRelief("in.png --blur 2"), "z").toDouble();
    EXPECT_NEAR(one, 1.5, 0.01); // 2 of 4 parts in each direction
    EXPECT_LT(two, one);
    EXPECT_GT(two, 1);
}

TEST_F(KrmodelRelief, UsesThePictureAtTheScaleAskedFor)
{
    WriteGrey("in.png", {40, 20});
    EXPECT_EQ(Cell(InfoOfRelief("in.png --scale 100"), "vertices"), QStringLiteral("1,600"));
    EXPECT_EQ(Cell(InfoOfRelief("in.png --scale 50"), "vertices"), QStringLiteral("400"));
    EXPECT_EQ(Cell(InfoOfRelief("in.png --scale 10"), "vertices"), QStringLiteral("16"));
    EXPECT_EQ(Cell(InfoOfRelief("in.png --scale 10"), "x"), QStringLiteral("0 100 100"));
}

TEST_F(KrmodelRelief, LeavesOutWhatIsTooFineToPrintUnlessToldOtherwise)
{
    WriteGrey("in.png", {100, 50});
    // 100 pixels of 0.2 mm are 20 mm.
    EXPECT_EQ(Cell(InfoOfRelief("in.png --width 20"), "vertices"), QStringLiteral("10,000"));
    EXPECT_EQ(Cell(InfoOfRelief("in.png --width 5"), "vertices"), QStringLiteral("576")); // 24 x 12 pixels
    EXPECT_EQ(Cell(InfoOfRelief("in.png --width 5 --scale 100"), "vertices"), QStringLiteral("10,000"));
    // Coarse enough along y.
    EXPECT_EQ(Cell(InfoOfRelief("in.png --width 5 --depth 10"), "vertices"), QStringLiteral("10,000"));
}

TEST_F(KrmodelRelief, LeavesANarrowStripItsPixels)
{
    WriteGrey("in.png", {300, 3});
    EXPECT_EQ(Cell(InfoOfRelief("in.png --width 1"), "vertices"), QStringLiteral("800")); // 200 x 2 pixels
    EXPECT_EQ(Run("relief in.png out.stl --width 1 --scale 60").exitCode, Empty);
}

TEST_F(KrmodelRelief, IsWrittenInEachFormat)
{
    WriteGrey("height map.v2.png", {3, 3});
    const QStringList toPackage = {QStringLiteral("relief"), QStringLiteral("height map.v2.png"),
                                   QStringLiteral("out.3mf")};
    EXPECT_EQ(Run(toPackage).exitCode, Done);
    const ReadPackage read(Path("out.3mf"));
    ASSERT_EQ(read.meshes.size(), 1U);
    EXPECT_EQ(read.meshes[0]->GetObjectName(), QStringLiteral("height map.v2"));
    EXPECT_EQ(read.package.GetUnit(), QStringLiteral("millimeter"));
    const ProgramRun package = Run("info out.3mf");
    EXPECT_EQ(Cell(package, "x"), QStringLiteral("0 100 100"));
    EXPECT_TRUE(Cell(package, "     1").endsWith(QStringLiteral(" none"))) << package.output.toStdString();

    WriteGrey("in.png", {3, 3});
    EXPECT_EQ(Run("relief in.png out.obj").exitCode, Done);
    EXPECT_EQ(Cell(Run("info out.obj"), "facets"), QStringLiteral("32"));
    EXPECT_EQ(Run("relief in.png out.stl --ascii").exitCode, Done);
    EXPECT_EQ(Cell(Run("info out.stl"), "format"), QStringLiteral("STL, text"));
    EXPECT_EQ(Run("relief in.png out.stl --binary").exitCode, Done);
    EXPECT_EQ(Cell(Run("info out.stl"), "format"), QStringLiteral("STL, binary"));
}

TEST_F(KrmodelRelief, IsMadeFromPicturesOfAnyFormat)
{
    for (const char* format : {"JPG", "PNG", "BMP"}) {
        Write("picture", test::Picture({6, 4}, format));
        EXPECT_EQ(Cell(InfoOfRelief("picture"), "vertices"), QStringLiteral("48")) << format;
    }
}

TEST_F(KrmodelRelief, ShowsTheSample)
{
    const ProgramRun run = Run(Words("relief %1 out.stl --width 60 --scale 100", Sample("medal.png")));
    EXPECT_EQ(run.exitCode, Done);
    const ProgramRun info = Run("info out.stl");
    EXPECT_EQ(Cell(info, "facets"), QStringLiteral("102,396"));
    EXPECT_EQ(Cell(info, "z"), QStringLiteral("0 3 3"));
    EXPECT_EQ(Cell(info, "open edges"), QStringLiteral("0, closed"));
}

TEST_F(KrmodelRelief, ReportsAPictureThatIsMissingOrNone)
{
    Write("none.png", "no picture");
    Write("cut.png", test::Picture({60, 40}, "PNG").left(30));
    EXPECT_TRUE(QDir().mkdir(Path("directory")));
    ExpectFailures({{"missing.png", CannotOpen, "cannot open"},
                    {"directory", CannotOpen, "cannot open"},
                    {"none.png", NotReadable, "not readable as a picture"},
                    {"cut.png", NotReadable, "not readable as a picture"}},
                   {"relief %1 out.stl"});
}

TEST_F(KrmodelRelief, ReportsAPictureThatIsTooSmall)
{
    WriteGrey("line.png", {1, 9});
    const ProgramRun line = Run("relief line.png out.stl");
    EXPECT_EQ(line.exitCode, Empty);
    EXPECT_TRUE(line.errors.contains(QStringLiteral("there are 1 x 9, used at 100 percent")));
    WriteGrey("in.png", {30, 30});
    const ProgramRun scaled = Run("relief in.png out.stl --scale 6");
    EXPECT_EQ(scaled.exitCode, Empty);
    EXPECT_TRUE(scaled.errors.contains(QStringLiteral("there are 30 x 30, used at 6 percent")));
    EXPECT_FALSE(Files().contains(QStringLiteral("out.stl")));
}

TEST_F(KrmodelRelief, LeavesTheOldFileAndNothingElseWhenItFails)
{
    Write("none.png", "no picture");
    Write("out.stl", "old");
    EXPECT_EQ(Run("relief none.png out.stl").exitCode, NotReadable);
    EXPECT_EQ(Bytes("out.stl"), QByteArray("old"));
    EXPECT_EQ(AllFiles(), Words("none.png out.stl"));
}

TEST_F(KrmodelRelief, ReportsAnOutputThatCannotBeWritten)
{
    WriteGrey("in.png", {30, 30});
    ExpectUnwritable("stl", {"relief in.png %1"});
}

TEST_F(KrmodelRelief, RefusesWhatMakesNoSense)
{
    WriteGrey("in.png", {4, 4});
    ExpectUsageErrors({
        "relief",
        "relief in.png",
        "relief in.png out.xyz",
        "relief in.png out.obj --binary",
        "relief in.png out.3mf --ascii",
        "relief in.png out.stl --width 0",
        "relief in.png out.stl --width -3",
        "relief in.png out.stl --width nan",
        "relief in.png out.stl --width inf",
        "relief in.png out.stl --width 10mm",
        "relief in.png out.stl --depth 0",
        "relief in.png out.stl --min-height -1",
        "relief in.png out.stl --max-height -1",
        "relief in.png out.stl --blur -1",
        "relief in.png out.stl --blur 1.5",
        "relief in.png out.stl --scale 0",
        "relief in.png out.stl --scale 101",
        "relief in.png out.stl --ascii --binary",
    });
}

TEST_F(KrmodelRelief, HelpTellsUnitsAndDefaults)
{
    const ProgramRun run = Run("relief --help");
    EXPECT_EQ(run.exitCode, Done);
    for (const char* text :
         {"krmodel relief [OPTIONS] PICTURE OUT", "--width MM=100", "--depth MM", "--min-height MM=1",
          "--max-height MM=3", "--blur PIXELS=0", "--scale PERCENT", "--dark-is-high", "--ascii", "--binary"})
        EXPECT_TRUE(run.output.contains(QLatin1String(text))) << text;
}

} // namespace
