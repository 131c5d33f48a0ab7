#include <cmath>

#include <QProcess>

#include "core/mesh/Mesh.h"
#include "tests/krmodel/PackageBuilder.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using test::ItemText;
using test::ModelText;
using test::ObjectText;
using test::ReadPackage;

constexpr char kMovedBy2[] = "1 0 0 0 1 0 0 0 1 2 0 0";

class KrmodelConvert : public Krmodel {
protected:
    ProgramRun Quiet(const char* line) const { return Run(Words("convert --quiet") + Words(line)); }
    void ExpectDone(const char* line) const
    {
        const ProgramRun run = Quiet(line);
        EXPECT_EQ(run.exitCode, Done) << line;
        EXPECT_EQ(run.output + run.errors, QString()) << line;
    }
    /// Two tetrahedra, the second moved by 2 along x; in inches.
    void WriteTwo(const char* name) const
    {
        Write(name, test::Package(
                        ModelText("inch", ObjectText(1, "a") + ObjectText(2, "b"), ItemText(2, kMovedBy2)))
                        .Bytes());
    }
    QString CellOf(const char* fileName, const char* row) const
    {
        return Cell(Info(QLatin1String(fileName)), row);
    }

    /// Pours a sample into the program, as a shell's "<" does.
    ProgramRun RunWithInput(const QStringList& arguments, const QString& inputName,
                            const QString& outputName = {}) const
    {
        QProcess process;
        process.setWorkingDirectory(Path("."));
        process.setStandardInputFile(inputName);
        if (!outputName.isEmpty())
            process.setStandardOutputFile(outputName);
        process.start(QStringLiteral(KRMODEL_PROGRAM), arguments);
        ProgramRun run;
        if (process.waitForFinished(-1) && process.exitStatus() == QProcess::NormalExit)
            run.exitCode = process.exitCode();
        run.output = QString::fromLatin1(process.readAllStandardOutput());
        run.errors = QString::fromUtf8(process.readAllStandardError());
        return run;
    }
};

TEST_F(KrmodelConvert, WritesManyInputsBesideThem)
{
    for (const char* name : {"gear.stl", "knob.stl"})
        CopySample(name, name);
    ExpectDone("gear.stl knob.stl --to 3mf");
    EXPECT_EQ(AllFiles(), (Words("gear.3mf gear.stl knob.3mf knob.stl")));
    EXPECT_EQ(CellOf("gear.3mf", "facets"), QStringLiteral("3,600"));
}

TEST_F(KrmodelConvert, WritesManyInputsIntoADirectory)
{
    ASSERT_TRUE(QDir().mkdir(Path("out")));
    CopySample("knob.stl", "knob.stl");
    CopySample("gear.stl", "GEAR.v2.STL");
    ExpectDone("knob.stl GEAR.v2.STL --to stl --directory out");
    EXPECT_EQ(CellOf("out/knob.stl", "facets"), CellOf("knob.stl", "facets"));
    EXPECT_EQ(CellOf("out/GEAR.v2.stl", "facets"), QStringLiteral("3,600"));
}

TEST_F(KrmodelConvert, GoesOnAfterAnInputThatFailsAndEndsWithTheFirstFailure)
{
    CopySample("knob.stl", "knob.stl");
    Write("damaged.stl", "nothing of the kind");
    const ProgramRun run = Quiet("damaged.stl missing.stl knob.stl --to obj");
    EXPECT_EQ(run.exitCode, NotReadable);
    EXPECT_EQ(run.errors.count(QLatin1Char('\n')), 2) << run.errors.toStdString();
    EXPECT_TRUE(run.errors.contains(QStringLiteral("krmodel: missing.stl: cannot open")));
    EXPECT_EQ(AllFiles(), Words("damaged.stl knob.obj knob.stl"));
}

TEST_F(KrmodelConvert, RefusesWhatWouldOverwriteAnInputOrAnotherOutput)
{
    CopySample("knob.stl", "knob.stl");
    ASSERT_TRUE(QDir().mkdir(Path("other")));
    CopySample("gear.stl", "other/knob.stl");
    const QByteArray before = Bytes("knob.stl");
    EXPECT_EQ(Run("convert knob.stl --to stl").exitCode, Usage);
    EXPECT_EQ(Run("convert knob.stl other/knob.stl --to obj --directory .").exitCode, Usage);
    EXPECT_EQ(Bytes("knob.stl"), before);
    EXPECT_EQ(AllFiles(), Words("knob.stl"));
}

TEST_F(KrmodelConvert, RefusesOptionsThatDoNotGoTogether)
{
    CopySample("knob.stl", "a.stl");
    for (const char* line :
         {"a.stl", "a.stl b.stl c.stl", "a.stl b.obj --directory .", "a.stl --to dwg", "a.stl --to step",
          "a.stl b.obj --from stl", "- b.obj", "a.stl -", "- - --to obj", "a.stl - --to obj --split",
          "a.stl b.3mf --normals", "a.stl b.stl --unit parsec", "a.stl b.stl --merge --split",
          "a.stl b.stl --quiet --verbose", "a.stl b.stl --apply-transform --no-apply-transform",
          "- - --from stl --to obj --directory x --split"}) {
        const ProgramRun run = Run(Words("convert") + Words(line));
        EXPECT_EQ(run.exitCode, Usage) << line;
        EXPECT_FALSE(run.errors.isEmpty()) << line;
    }
    EXPECT_EQ(AllFiles(), Words("a.stl"));
}

TEST_F(KrmodelConvert, TakesTheUnitForThatOfAnInputWithoutOne)
{
    CopySample("cube-inward.stl", "cube.stl");
    ExpectDone("cube.stl mm.stl --unit inch");
    EXPECT_TRUE(CellOf("mm.stl", "x").endsWith(QStringLiteral(" 508")));
    ExpectDone("cube.stl cube.3mf --unit centimeter");
    EXPECT_EQ(CellOf("cube.3mf", "unit"), QStringLiteral("centimeter, 10 mm"));
    EXPECT_EQ(CellOf("cube.3mf", "volume, mm³"), QStringLiteral("8000000"));
    const ReadPackage package(Path("cube.3mf"));
    EXPECT_EQ(package.meshes.at(0)->GetVolume(), 8000);
}

TEST_F(KrmodelConvert, WritesAPackageInTheUnitAskedFor)
{
    WriteTwo("in.3mf");
    ExpectDone("in.3mf out.3mf --unit millimeter");
    const ProgramRun before = Run("info in.3mf"), after = Run("info out.3mf");
    EXPECT_EQ(Cell(after, "unit"), QStringLiteral("millimeter, 1 mm"));
    for (const char* row : {"x", "y", "z", "facets"})
        EXPECT_EQ(Cell(after, row), Cell(before, row)) << row;
    EXPECT_EQ(Cell(after, "     2"), QStringLiteral("b 4 moved by 50.8 0 0"));
    ExpectDone("in.3mf inches.stl --unit inch");
    EXPECT_EQ(CellOf("inches.stl", "x"), QStringLiteral("0 3 3"));
    ExpectDone("in.3mf mm.stl");
    EXPECT_EQ(CellOf("mm.stl", "x"), QStringLiteral("0 76.2 76.2"));
}

TEST_F(KrmodelConvert, AppliesPlacementsOrLeavesThem)
{
    WriteTwo("in.3mf");
    ExpectDone("in.3mf kept.3mf");
    EXPECT_EQ(CellOf("kept.3mf", "     2"), QStringLiteral("b 4 moved by 2 0 0"));
    ExpectDone("in.3mf kept.3mf --no-apply-transform");
    EXPECT_EQ(CellOf("kept.3mf", "     2"), QStringLiteral("b 4 moved by 2 0 0"));
    ExpectDone("in.3mf applied.3mf --apply-transform");
    EXPECT_EQ(CellOf("applied.3mf", "     2"), QStringLiteral("b 4 none"));
    EXPECT_EQ(CellOf("applied.3mf", "x"), QStringLiteral("0 76.2 76.2"));
    EXPECT_EQ(CellOf("applied.3mf", "unit"), QStringLiteral("inch, 25.4 mm"));
    ExpectDone("in.3mf dropped.obj --no-apply-transform");
    EXPECT_EQ(CellOf("dropped.obj", "x"), QStringLiteral("0 25.4 25.4"));
    EXPECT_EQ(CellOf("dropped.obj", "facets"), QStringLiteral("8"));
}

TEST_F(KrmodelConvert, MergesAllObjectsIntoOne)
{
    WriteTwo("in.3mf");
    ExpectDone("in.3mf one.3mf --merge");
    const ProgramRun run = Run("info one.3mf");
    EXPECT_EQ(Cell(run, "objects"), QStringLiteral("1"));
    EXPECT_EQ(Cell(run, "     1"), QStringLiteral("a 8 none"));
    EXPECT_EQ(Cell(run, "x"), QStringLiteral("0 76.2 76.2"));
    EXPECT_EQ(Cell(run, "pieces"), QStringLiteral("2"));
    const ReadPackage package(Path("one.3mf"));
    EXPECT_NEAR(package.meshes.at(0)->GetVolume(), 2.0 / 6, 1e-6);
    ExpectDone("in.3mf one.stl --merge --ascii");
    EXPECT_EQ(Bytes("one.stl").count("endsolid"), 1);
}

TEST_F(KrmodelConvert, SplitsObjectsIntoNumberedFiles)
{
    WriteTwo("in.3mf");
    ASSERT_TRUE(QDir().mkdir(Path("out")));
    ExpectDone("in.3mf part.stl --split");
    ExpectDone("in.3mf --to 3mf --directory out --split");
    EXPECT_EQ(AllFiles(), Words("in.3mf part-1.stl part-2.stl"));
    EXPECT_EQ(CellOf("part-1.stl", "x"), QStringLiteral("0 25.4 25.4"));
    EXPECT_EQ(CellOf("part-2.stl", "x"), QStringLiteral("50.8 76.2 25.4"));
    EXPECT_EQ(CellOf("out/in-2.3mf", "     1"), QStringLiteral("b 4 moved by 2 0 0"));
}

TEST_F(KrmodelConvert, LeavesNoPartOfASplitBehindThatFails)
{
    WriteTwo("in.3mf");
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), Path("part-2.stl")));
    const ProgramRun run = Quiet("in.3mf part.stl --split");
    EXPECT_EQ(run.exitCode, WriteFailed);
    EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: part-2.stl: cannot write")));
    EXPECT_EQ(AllFiles(), Words("in.3mf part-1.stl part-2.stl"));
}

TEST_F(KrmodelConvert, WritesNormalsOfFacetsOnRequest)
{
    CopySample("cube-inward.stl", "cube.stl");
    ExpectDone("cube.stl bare.obj");
    EXPECT_FALSE(Bytes("bare.obj").contains("vn "));
    ExpectDone("cube.stl normals.obj --normals");
    EXPECT_EQ(Bytes("normals.obj").count("\nvn "), 12);
    EXPECT_TRUE(Bytes("normals.obj").contains("//12"));
    ExpectDone("cube.stl always.stl --normals");
}

TEST_F(KrmodelConvert, TellsOfEachFileWhenVerbose)
{
    CopySample("cube-inward.stl", "cube.stl");
    const ProgramRun run = Run("convert cube.stl cube.obj --verbose");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_TRUE(run.errors.contains(QRegularExpression(
        QStringLiteral("^krmodel: cube.stl: 12 facets written to cube.obj, read back and compared, in "
                       "\\d+\\.\\d\\d s\n$"))))
        << run.errors.toStdString();
}

TEST_F(KrmodelConvert, ReadsStandardInput)
{
    const QStringList arguments = Words("convert - out.3mf --from stl --quiet");
    const ProgramRun run = RunWithInput(arguments, Sample("gear.stl"));
    EXPECT_EQ(run.exitCode, Done) << run.errors.toStdString();
    EXPECT_EQ(run.output + run.errors, QString());
    EXPECT_EQ(CellOf("out.3mf", "     1"), QStringLiteral("stdin 3,600 none"));
    const ProgramRun many = RunWithInput(Words("convert - --from stl --to obj --quiet"), Sample("gear.stl"));
    EXPECT_EQ(many.exitCode, Done) << many.errors.toStdString();
    EXPECT_EQ(CellOf("stdin.obj", "facets"), QStringLiteral("3,600"));
}

TEST_F(KrmodelConvert, WritesStandardOutputToAFileOrAPipe)
{
    CopySample("cube-inward.stl", "cube.stl");
    ExpectDone("cube.stl cube.obj");
    const ProgramRun piped = Quiet("cube.stl - --to obj");
    EXPECT_EQ(piped.exitCode, Done) << piped.errors.toStdString();
    EXPECT_EQ(piped.output.toLatin1(), Bytes("cube.obj"));
    const ProgramRun both =
        RunWithInput(Words("convert - - --from stl --to stl --quiet"), Sample("gear.stl"), Path("out.stl"));
    EXPECT_EQ(both.exitCode, Done) << both.errors.toStdString();
    EXPECT_EQ(CellOf("out.stl", "facets"), QStringLiteral("3,600"));
}

TEST_F(KrmodelConvert, WritesNothingToStandardOutputWhenTheInputIsDamaged)
{
    Write("damaged.stl", "nothing of the kind");
    const ProgramRun run = RunWithInput(Words("convert - - --from stl --to obj"), Path("damaged.stl"));
    EXPECT_EQ(run.exitCode, NotReadable);
    EXPECT_EQ(run.output, QString());
    EXPECT_EQ(run.errors,
              QStringLiteral("krmodel: standard input: not readable as STL, it is damaged, cut short "
                             "or of another format\n"));
}

TEST_F(KrmodelConvert, ReadsNoMoreOfStandardInputThanItMayHave)
{
    const QStringList arguments = Words("convert - out.obj --from stl --max-input 1");
    EXPECT_EQ(RunWithInput(arguments + Words("--quiet"), Sample("gear.stl")).exitCode, Done);
    const ProgramRun run = RunWithInput(arguments, QStringLiteral("/dev/zero"));
    EXPECT_EQ(run.exitCode, Stopped);
    EXPECT_EQ(run.errors, QStringLiteral("krmodel: standard input: not read further, it has more than "
                                         "1,048,576 bytes\n"));
}

TEST_F(KrmodelConvert, ReportsAFullStandardOutput)
{
    const ProgramRun run = RunWithInput(Words("convert - - --from stl --to obj"), Sample("gear.stl"),
                                        QStringLiteral("/dev/full"));
    EXPECT_EQ(run.exitCode, WriteFailed);
    EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: standard output: cannot write: ")))
        << run.errors.toStdString();
}

TEST_F(KrmodelConvert, LeavesNoTemporaryFileOfStandardInputAndOutput)
{
    ASSERT_TRUE(QDir().mkdir(Path("tmp")));
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment() +
                           QStringList(QStringLiteral("TMPDIR=") + Path("tmp")));
    process.setStandardInputFile(Sample("gear.stl"));
    process.start(QStringLiteral(KRMODEL_PROGRAM), Words("convert - - --from stl --to obj"));
    EXPECT_TRUE(process.waitForFinished(-1));
    EXPECT_EQ(process.exitCode(), Done);
    EXPECT_EQ(QDir(Path("tmp")).entryList(QDir::Files | QDir::Hidden), QStringList());
}

TEST_F(KrmodelConvert, LeavesNoTemporaryFileWhenInterrupted)
{
    ASSERT_TRUE(QDir().mkdir(Path("tmp")));
    // Nobody closes the pipe that is its standard input.
    const ProgramRun run =
        RunProgram(QStringLiteral("timeout"),
                   Words("--preserve-status --signal=INT 1") + QStringList(QStringLiteral(KRMODEL_PROGRAM)) +
                       Words("convert - out.obj --from stl"),
                   Path("."), QStringList(QStringLiteral("TMPDIR=") + Path("tmp")));
    EXPECT_EQ(run.exitCode, Interrupted);
    EXPECT_EQ(QDir(Path("tmp")).entryList(QDir::Files | QDir::Hidden), QStringList());
    EXPECT_EQ(AllFiles(), QStringList());
}

TEST_F(KrmodelConvert, HelpNamesEveryOption)
{
    const ProgramRun run = Run("convert --help");
    for (const char* option :
         {"--to", "--directory", "--from", "--unit", "--apply-transform", "--no-apply-transform", "--merge",
          "--split", "--normals", "--quiet", "--verbose", "--ascii", "--binary", "--deflection", "--angle"})
        EXPECT_TRUE(run.output.contains(QStringLiteral("\n  ") + QLatin1String(option))) << option;
}

} // namespace
