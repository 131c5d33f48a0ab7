#include <sys/stat.h>

#include <QImage>
#include <QTextCodec>

#include "core/mesh/Mesh.h"
#include "fileformat/stl/STLFile.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

bool Matches(const QString& text, const char* pattern)
{
    return text.contains(QRegularExpression(QLatin1String(pattern)));
}

class KrmodelPreview : public Krmodel {
protected:
    QByteArray Preview(const char* options) const
    {
        EXPECT_EQ(Run(Words("preview %1 picture.png", Sample("links.stl")) + Words(options)).exitCode, Done);
        return Bytes("picture.png");
    }
};

TEST_F(Krmodel, InfoPrintsWhatABinaryFileHolds)
{
    const ProgramRun run = InfoOfSample("gear.stl");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_TRUE(run.output.startsWith(Sample("gear.stl") + QLatin1Char('\n')));
    EXPECT_EQ(Cell(run, "format"), QStringLiteral("STL, binary"));
    EXPECT_EQ(Cell(run, "facets"), QStringLiteral("3,600"));
    EXPECT_EQ(Cell(run, "vertices"), QStringLiteral("1,800"));
    EXPECT_EQ(Cell(run, "bounds"), QStringLiteral("minimum maximum size"));
    EXPECT_EQ(Cell(run, "z"), QStringLiteral("0 16 16"));
    EXPECT_NEAR(Cell(run, "volume").toDouble(), 14333.4, 0.1);
    EXPECT_EQ(Cell(run, "open edges"), QStringLiteral("0, closed"));
    EXPECT_EQ(Cell(run, "pieces"), QStringLiteral("1"));
    EXPECT_TRUE(Matches(Cell(run, "read in"), "^\\d+\\.\\d+ m?s$"));
    EXPECT_TRUE(Matches(Cell(run, "peak memory"), "^\\d+\\.\\d MiB$"));
}

TEST_F(Krmodel, InfoCountsTheOpenEdgesOfASheetInText)
{
    const ProgramRun run = InfoOfSample("sheet.stl");
    EXPECT_EQ(Cell(run, "format"), QStringLiteral("STL, text"));
    EXPECT_EQ(Cell(run, "facets"), QStringLiteral("578"));
    EXPECT_EQ(Cell(run, "open edges"), QStringLiteral("68"));
    EXPECT_EQ(Cell(run, "x"), QStringLiteral("0 40 40"));
}

TEST_F(Krmodel, InfoCountsThePieces)
{
    EXPECT_EQ(Cell(InfoOfSample("links.stl"), "pieces"), QStringLiteral("2"));
}

TEST_F(Krmodel, InfoShowsAnInwardCubeTurnedOutward)
{
    EXPECT_EQ(Cell(InfoOfSample("cube-inward.stl"), "volume"), QStringLiteral("8000"));
}

TEST_F(Krmodel, InfoShowsAJitteredCubeClosed)
{
    const ProgramRun run = InfoOfSample("cube-jittered.stl");
    EXPECT_EQ(Cell(run, "open edges"), QStringLiteral("0, closed"));
    EXPECT_EQ(Cell(run, "pieces"), QStringLiteral("1"));
    EXPECT_EQ(Cell(run, "vertices"), QStringLiteral("218"));
}

TEST_F(Krmodel, InfoGoesOnAfterAFailureAndEndsWithTheFirstOne)
{
    Write("damaged.stl", "nothing of the kind");
    const ProgramRun run = Run(Words("info missing.stl %1 damaged.stl %1", Sample("knob.stl")));
    EXPECT_EQ(run.exitCode, CannotOpen);
    EXPECT_EQ(run.output.count(QStringLiteral("facets")), 2);
    EXPECT_EQ(run.errors.count(QLatin1Char('\n')), 2);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("missing.stl: cannot open")));
    EXPECT_TRUE(run.errors.contains(QStringLiteral("damaged.stl: not readable as STL")));
}

TEST_F(Krmodel, ReportsAMissingInputAndWritesNothing)
{
    for (const char* line : {"info missing.stl", "convert missing.stl o.stl", "preview missing.stl o.png"}) {
        const ProgramRun run = Run(line);
        EXPECT_EQ(run.exitCode, CannotOpen) << line;
        EXPECT_EQ(run.output, QString()) << line;
        EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: missing.stl: cannot open"))) << line;
    }
    EXPECT_EQ(Files(), QStringList());
}

TEST_F(Krmodel, SaysThatAFileWithoutANameCannotBeOpened)
{
    for (const char* line :
         {"info %1", "check %1", "convert %1 a.stl", "preview %1 a.png", "relief %1 a.stl",
          "texture make %1 a.texture", "texture show %1", "texture extract %1 a.png", "paths %1"}) {
        const ProgramRun run = Run(Words(line, QString()));
        EXPECT_EQ(run.exitCode, CannotOpen) << line;
        EXPECT_EQ(run.errors, QStringLiteral("krmodel: cannot open a file without a name\n")) << line;
    }
}

TEST_F(Krmodel, ReportsADirectoryAsOneThatCannotBeOpened)
{
    EXPECT_TRUE(QDir().mkdir(Path("d.stl")));
    EXPECT_EQ(Run("info d.stl").exitCode, CannotOpen);
}

TEST_F(Krmodel, ReportsABinaryFileThatIsCutShort)
{
    QFile gear(Sample("gear.stl"));
    ASSERT_TRUE(gear.open(QIODevice::ReadOnly));
    Write("cut.stl", gear.read(84 + 50 * 1000));
    const ProgramRun run = Run("info cut.stl");
    EXPECT_EQ(run.exitCode, NotReadable);
    EXPECT_EQ(run.output, QString());
}

TEST_F(Krmodel, ReportsAFileWithoutBytesAsUnreadable)
{
    Write("zero.stl", QByteArray());
    EXPECT_EQ(Run("info zero.stl").exitCode, NotReadable);
}

TEST_F(Krmodel, ReportsATextWithoutNormals)
{
    Write("bare.stl",
          "solid x\nfacet\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
          "endsolid x\n");
    const ProgramRun run = Run("info bare.stl");
    EXPECT_EQ(run.exitCode, NotReadable);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("parts of it are missing")));
}

TEST_F(Krmodel, ReportsAnUnknownSuffixAndNamesTheKnownOnes)
{
    Write("model.xyz", "solid");
    const ProgramRun run = Run("info model.xyz");
    EXPECT_EQ(run.exitCode, NotReadable);
    EXPECT_TRUE(run.errors.contains(QStringLiteral(".stl")));
}

TEST_F(Krmodel, ReportsAnEmptyTextSolid)
{
    Write("empty.stl", "solid nothing\nendsolid nothing\n");
    const ProgramRun run = Run("info empty.stl");
    EXPECT_EQ(run.exitCode, Empty);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("holds no facet")));
}

TEST_F(Krmodel, ReportsABinaryFileOfNoFacets)
{
    Write("empty.stl", QByteArray(84, '\0'));
    EXPECT_EQ(Run("info empty.stl").exitCode, Empty);
}

TEST_F(Krmodel, ReportsAFileOfNothingButDegenerateFacetsAsEmpty)
{
    const std::vector<Vector3D<float>> corners(3, {1, 2, 3});
    ASSERT_TRUE(STLFile::SaveFile(Path("degenerate.stl"), corners, false, 80));
    EXPECT_EQ(Run("info degenerate.stl").exitCode, Empty);
}

TEST_F(Krmodel, ConvertsToTextAndToBinary)
{
    EXPECT_EQ(Run(Words("convert %1 text.stl --ascii", Sample("gear.stl"))).exitCode, Done);
    EXPECT_EQ(Run("convert text.stl binary.stl --binary").exitCode, Done);
    EXPECT_EQ(QFile(Path("binary.stl")).size(), 84 + 50 * 3600);
    const ProgramRun text = Run("info text.stl"), binary = Run("info binary.stl");
    EXPECT_EQ(Cell(text, "format"), QStringLiteral("STL, text"));
    EXPECT_EQ(Cell(binary, "format"), QStringLiteral("STL, binary"));
    for (const char* row : {"facets", "vertices", "x", "y", "z", "volume", "open edges", "pieces"})
        EXPECT_EQ(Cell(text, row), Cell(binary, row)) << row;
    EXPECT_EQ(Cell(binary, "facets"), QStringLiteral("3,600"));
    EXPECT_EQ(Cell(binary, "open edges"), QStringLiteral("0, closed"));
}

TEST_F(Krmodel, ConvertsToBinaryUnlessToldOtherwiseAndSaysNothing)
{
    const ProgramRun run = Run(Words("convert %1 KNOB.STL", Sample("knob.stl")));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output + run.errors, QString());
    EXPECT_EQ(Cell(Run("info KNOB.STL"), "format"), QStringLiteral("STL, binary"));
}

TEST_F(Krmodel, ConvertsAFileOntoItself)
{
    CopySample("knob.stl", "knob.stl");
    EXPECT_EQ(Run("convert knob.stl knob.stl").exitCode, Done);
    EXPECT_EQ(Cell(Run("info knob.stl"), "facets"), Cell(InfoOfSample("knob.stl"), "facets"));
}

TEST_F(Krmodel, RefusesAnUnknownOutputSuffixBeforeReading)
{
    const ProgramRun run = Run("convert missing.stl out.xyz");
    EXPECT_EQ(run.exitCode, Usage);
    EXPECT_TRUE(run.errors.contains(QStringLiteral("out.xyz")));
}

TEST_F(Krmodel, ReportsAnOutputThatCannotBeOpened)
{
    for (const char* line : {"convert %1 no/such/place.stl", "preview %1 no/such/place.png"}) {
        const ProgramRun run = Run(Words(line, Sample("cube-inward.stl")));
        EXPECT_EQ(run.exitCode, WriteFailed) << line;
        EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: no/such/place"))) << line;
    }
}

TEST_F(Krmodel, ReportsAFullDisk)
{
    for (const char* name : {"full.stl", "full.png"})
        ASSERT_TRUE(QFile::link(QStringLiteral("/dev/full"), Path(name)));
    for (const char* line :
         {"convert %1 full.stl", "convert %1 full.stl --ascii", "preview %1 full.png --size 64x48"}) {
        const ProgramRun run = Run(Words(line, Sample("gear.stl")));
        EXPECT_EQ(run.exitCode, WriteFailed) << line;
        EXPECT_TRUE(run.errors.startsWith(QStringLiteral("krmodel: full."))) << line;
    }
}

TEST_F(Krmodel, LeavesTheOldFileAndNothingElseWhenTheInputIsDamaged)
{
    Write("cut.stl", QByteArray(100, 'x'));
    Write("out.stl", "old");
    EXPECT_EQ(Run("convert cut.stl out.stl").exitCode, NotReadable);
    EXPECT_EQ(Bytes("out.stl"), QByteArray("old"));
    EXPECT_EQ(AllFiles(), (QStringList{QStringLiteral("cut.stl"), QStringLiteral("out.stl")}));
}

TEST_F(Krmodel, EndsWith130WhenInterruptedAndLeavesTheOldFileAndNothingElse)
{
    // Its reader waits for somebody to write into the pipe.
    ASSERT_EQ(mkfifo(QFile::encodeName(Path("pipe.obj")), 0600), 0);
    Write("out.stl", "old");
    const ProgramRun run =
        RunProgram(QStringLiteral("timeout"),
                   Words("--preserve-status --signal=INT 1") + QStringList(QStringLiteral(KRMODEL_PROGRAM)) +
                       Words("convert pipe.obj out.stl"),
                   Path("."));
    EXPECT_EQ(run.exitCode, Interrupted);
    EXPECT_EQ(Bytes("out.stl"), QByteArray("old"));
    EXPECT_EQ(AllFiles(), (QStringList{QStringLiteral("out.stl"), QStringLiteral("pipe.obj")}));
}

TEST_F(Krmodel, ReadsAndWritesUnicodeNamesWithoutALocale)
{
    CopySample("cube-inward.stl", "Größe 模型 №1.stl");
    const QString name = QString::fromUtf8("Größe 模型 №1.stl"), copy = QString::fromUtf8("Кубик.stl");
    for (const QString& locale : {QStringLiteral("LC_ALL=C"), QStringLiteral("LC_ALL=C.UTF-8")}) {
        const ProgramRun run = Run({QStringLiteral("info"), name}, {locale});
        EXPECT_EQ(run.exitCode, Done);
        EXPECT_TRUE(run.output.startsWith(name + QLatin1Char('\n')));
        EXPECT_EQ(Run({QStringLiteral("convert"), name, copy}, {locale}).exitCode, Done);
        EXPECT_EQ(QFile(Path("Кубик.stl")).size(), 84 + 50 * 12);
        EXPECT_TRUE(QFile::remove(Path("Кубик.stl")));
    }
}

TEST_F(Krmodel, TakesNamesWithALeadingDashBehindTwoDashes)
{
    CopySample("cube-inward.stl", "-x.stl");
    EXPECT_EQ(Run("info -- -x.stl").exitCode, Done);
    EXPECT_EQ(Run("convert --ascii -- -x.stl -y.stl").exitCode, Done);
    EXPECT_EQ(Cell(Run("info ./-y.stl"), "format"), QStringLiteral("STL, text"));
    EXPECT_EQ(Run("preview --size 64x48 -- -x.stl -x.png").exitCode, Done);
    EXPECT_EQ(Run("info -x.stl").exitCode, Usage);
}

TEST_F(Krmodel, CallsACommandLineThatItCannotUnderstandAUsageError)
{
    const char* lines[] = {
        "",
        "fly %1",
        "info",
        "info --loud %1",
        "convert %1",
        "convert %1 a.stl b.stl",
        "convert %1 a.stl --ascii --binary",
        "preview %1 a.jpg",
        "preview %1 a.png --size big",
        "preview %1 a.png --size 15x100",
        "preview %1 a.png --size 100x4097",
        "preview %1 a.png --view inside",
    };
    for (const char* line : lines) {
        const ProgramRun run = Run(Words(line, Sample("gear.stl")));
        EXPECT_EQ(run.exitCode, Usage) << line;
        EXPECT_FALSE(run.errors.isEmpty()) << line;
        EXPECT_EQ(run.output, QString()) << line;
    }
    EXPECT_EQ(Files(), QStringList());
}

TEST_F(Krmodel, HelpNamesEveryCommandFormatAndExitCode)
{
    const ProgramRun run = Run("--help");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    for (const char* verb :
         {"info", "check", "convert", "preview", "relief", "texture", "paths", "formats", "manual"})
        EXPECT_TRUE(run.output.contains(QStringLiteral("\n  %1 ").arg(QLatin1String(verb)))) << verb;
    EXPECT_TRUE(run.output.contains(QStringLiteral("\n  STL (.stl): ")));
    for (int code = Done; code <= Stopped; ++code)
        EXPECT_TRUE(run.output.contains(QStringLiteral("\n  %1  ").arg(code))) << code;
}

TEST_F(Krmodel, EachCommandHasHelp)
{
    const struct {
        const char *line, *usage, *detail;
    } kHelp[] = {
        {"info --help", "krmodel info [OPTIONS] FILE...", "open edges"},
        {"check --help", "krmodel check [OPTIONS] FILE...", "--json"},
        {"convert --help", "krmodel convert [OPTIONS] FILE...", "--ascii"},
        {"preview --help", "krmodel preview [OPTIONS] FILE...", "800x600"},
        {"preview --help", "krmodel preview", "three-quarter, front, right, back, left, top, bottom, iso"},
    };
    for (const auto& help : kHelp) {
        const ProgramRun run = Run(help.line);
        EXPECT_EQ(run.exitCode, Done) << help.line;
        EXPECT_TRUE(run.output.contains(QLatin1String(help.usage))) << run.output.toStdString();
        EXPECT_TRUE(run.output.contains(QLatin1String(help.detail))) << run.output.toStdString();
    }
}

TEST_F(Krmodel, PrintsItsVersion)
{
    const ProgramRun run = Run("--version");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output, QStringLiteral("krmodel " KRMODEL_VERSION "\n"));
}

TEST_F(KrmodelPreview, DrawsAPictureOfTheSizeAskedFor)
{
    EXPECT_EQ(QImage::fromData(Preview(""), "PNG").size(), QSize(800, 600));
    const QImage small = QImage::fromData(Preview("--size 64x160"), "PNG");
    EXPECT_EQ(small.size(), QSize(64, 160));
    int blue = 0;
    for (int x = 0; x < small.width(); ++x)
        blue += qBlue(small.pixel(x, 80)) > qRed(small.pixel(x, 80)) + 30 ? 1 : 0;
    EXPECT_GT(blue, small.width() / 2);
}

TEST_F(KrmodelPreview, IsTheSameEachTime)
{
    EXPECT_EQ(Preview("--size 160x120"), Preview("--size 160x120"));
}

TEST_F(KrmodelPreview, LooksFromEachSideNamed)
{
    QList<QByteArray> pictures;
    for (const char* view : {"three-quarter", "front", "right", "top", "bottom"}) {
        const QByteArray picture = Preview(("--size 80x60 --view " + QByteArray(view)).constData());
        EXPECT_FALSE(pictures.contains(picture)) << view;
        pictures << picture;
    }
}

TEST_F(KrmodelPreview, NeedsNoDisplay)
{
    const ProgramRun run = Run(Words("preview %1 picture.png --size 64x48", Sample("gear.stl")),
                               Words("DISPLAY= WAYLAND_DISPLAY= QT_QPA_PLATFORM=none-such"));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
}

} // namespace

int main(int argc, char** argv)
{
    // The tests' own file names are UTF-8 whatever the locale.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
