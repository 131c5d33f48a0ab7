#include "tests/krmodel/ProgramSupport.h"

namespace {

class KrmodelCad : public Krmodel {
protected:
    ProgramRun InfoOfBearing(const char* options = "") const
    {
        return Run(Words("info %1", Sample("bearing.step")) + Words(options));
    }
    /// Without the separators of thousands.
    static int Facets(const ProgramRun& run) { return Cell(run, "facets").remove(QLatin1Char(',')).toInt(); }
    /// A triangle with the count of its lines at the end, as IGES files have it.
    void WriteIges(const char* name, const char* terminate) const
    {
        const QByteArray start = QByteArray("a file without an entity").leftJustified(72) + "S      1\n";
        const QByteArray global =
            QByteArray("1H,,1H;,4Hnone,4Hnone,4Hnone,4Hnone,32,38,6,308,15,4Hnone,1.,"
                       "2,2HMM,1,")
                .leftJustified(72) +
            "G      1\n" +
            QByteArray("0.01,15H20260101.000000,1E-7,100.,4Hnone,4Hnone,11,0,;").leftJustified(72) +
            "G      2\n";
        Write(name, start + global + terminate);
    }
};

TEST_F(KrmodelCad, InfoListsTheObjectsOfAnAssemblyWithTheirNames)
{
    const ProgramRun run = InfoOfBearing();
    EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
    EXPECT_EQ(Cell(run, "format"), QStringLiteral("STEP"));
    EXPECT_EQ(Cell(run, "unit"), QStringLiteral("millimeter, 1 mm"));
    EXPECT_EQ(Cell(run, "objects"), QStringLiteral("5"));
    EXPECT_EQ(Cell(run, "x"), QStringLiteral("-32 32 64"));
    EXPECT_EQ(run.output.count(QStringLiteral("bearing - block")), 1);
    EXPECT_EQ(run.output.count(QStringLiteral("bearing - screw")), 4);
}

TEST_F(KrmodelCad, NamesObjectsWithoutTheFileWhenAskedTo)
{
    const ProgramRun run = InfoOfBearing("--no-prefix");
    EXPECT_EQ(run.output.count(QStringLiteral("-  block ")), 1);
    EXPECT_EQ(run.output.count(QStringLiteral("-  screw ")), 4);
}

TEST_F(KrmodelCad, MakesMoreFacetsForASmallerDeflectionAndForASmallerAngle)
{
    const int usual = Facets(InfoOfBearing());
    ASSERT_GT(usual, 0);
    EXPECT_GT(Facets(InfoOfBearing("--deflection 0.01")), usual);
    EXPECT_GT(Facets(InfoOfBearing("--angle 5")), usual);
    EXPECT_LT(Facets(InfoOfBearing("--deflection 10 --angle 45")), usual);
}

TEST_F(KrmodelCad, RefusesADeflectionOrAnAngleOfNothing)
{
    EXPECT_EQ(InfoOfBearing("--deflection 0").exitCode, Usage);
    EXPECT_EQ(InfoOfBearing("--angle 0").exitCode, Usage);
}

TEST_F(KrmodelCad, ConvertsToNamedObjectsAndToFacets)
{
    for (const char* name : {"bearing.3mf", "bearing.stl", "bearing.obj"}) {
        const ProgramRun run =
            Run(Words("convert %1", Sample("bearing.step")) + QStringList(QString::fromUtf8(name)));
        EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
    }
    const ProgramRun package = Run("info bearing.3mf");
    EXPECT_EQ(package.output.count(QStringLiteral("bearing - screw")), 4);
    EXPECT_EQ(Facets(package), Facets(InfoOfBearing()));
    EXPECT_EQ(Cell(Run("info bearing.stl"), "z"), QStringLiteral("-6 28 34"));
}

TEST_F(KrmodelCad, DrawsAPicture)
{
    const ProgramRun run =
        Run(Words("preview %1", Sample("bearing.step")) + Words("bearing.png --size 64x48 --angle 30"));
    EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
    EXPECT_TRUE(Bytes("bearing.png").startsWith("\x89PNG"));
}

TEST_F(KrmodelCad, DoesNotWriteCadFilesAndSaysWhatItWrites)
{
    const ProgramRun run = Run(Words("convert %1 out.step", Sample("gear.stl")));
    EXPECT_EQ(run.exitCode, Usage);
    EXPECT_EQ(run.errors, QStringLiteral("krmodel: out.step: STEP is read, not written; formats to write are "
                                         ".stl, .obj, .3mf\n"));
    EXPECT_EQ(Files(), QStringList());
}

TEST_F(KrmodelCad, ReportsAStepFileThatIsNone)
{
    Write("part.step", "solid part\n");
    const ProgramRun run = Run("info part.step");
    EXPECT_EQ(run.exitCode, NotReadable);
    EXPECT_EQ(run.errors, QStringLiteral("krmodel: part.step: not readable as STEP, it is damaged, cut short "
                                         "or of another format\n"));
}

TEST_F(KrmodelCad, ReportsAnIgesFileThatIsCutShort)
{
    WriteIges("cut.igs", "");
    EXPECT_EQ(Run("info cut.igs").exitCode, NotReadable);
}

TEST_F(KrmodelCad, ReportsADocumentWithoutShapesAsEmpty)
{
    CopySample("bearing.step", "bearing.step");
    QByteArray wires = Bytes("bearing.step");
    // Shells that are open surfaces' edges now: what the solids were made of is gone.
    wires.replace("MANIFOLD_SOLID_BREP", "SHAPE_REPRESENTATION_OF_NOTHING");
    Write("wires.step", wires);
    const ProgramRun run = Run("info wires.step");
    EXPECT_EQ(run.exitCode, Empty) << run.errors.toStdString();
    EXPECT_TRUE(
        run.errors.startsWith(QStringLiteral("krmodel: wires.step: holds no solid, shell or surface")))
        << run.errors.toStdString();
}

} // namespace
