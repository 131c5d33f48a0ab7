#include <cmath>
#include <limits>

#include <QImage>

#include "fileformat/path/DXFPathFile.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

using Contours = std::vector<DXFPathFile::Contour>;

const DXFPathFile::Contour kSquare = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}};
const DXFPathFile::Contour kStroke = {{-5, 2}, {15, 2.5}};

class KrmodelPaths : public Krmodel {
protected:
    void WritePaths(const char* name, const DXFPathFile::Paths& paths,
                    const std::map<int, std::string>& names = {}) const
    {
        EXPECT_TRUE(DXFPathFile::WriteDXFPathFile(paths, names, Path(name)));
    }
};

TEST_F(KrmodelPaths, ShowsWhatAFileHolds)
{
    WritePaths("in.path", {{-3, {kSquare, kStroke}}, {7, {kStroke, {{1, 1}}, {}}}, {8, {}}},
               {{7, "Umri\xC3\x9F"}});
    const ProgramRun run = Run("paths in.path");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_TRUE(run.output.startsWith(QStringLiteral("in.path\n  path sets  3\n")));
    EXPECT_EQ(Cell(run, "contours"), QStringLiteral("5, 1 closed, 4 open"));
    EXPECT_EQ(Cell(run, "points"), QStringLiteral("10"));
    EXPECT_EQ(Cell(run, "unit"), QStringLiteral("none, the format names none"));
    EXPECT_EQ(Cell(run, "bounds"), QStringLiteral("minimum maximum size"));
    EXPECT_EQ(Cell(run, "x"), QStringLiteral("-5 15 20"));
    EXPECT_EQ(Cell(run, "y"), QStringLiteral("0 10 10"));
    EXPECT_EQ(Cell(run, "set"), QStringLiteral("name contours closed open points size"));
    EXPECT_EQ(Cell(run, " -3"), QStringLiteral("- 2 1 1 7 20 x 10"));
    EXPECT_EQ(Cell(run, "  7"), QString::fromUtf8("Umriß 3 0 3 3 20 x 1.5"));
    EXPECT_EQ(Cell(run, "  8"), QStringLiteral("- 0 0 0 0 -"));
}

TEST_F(KrmodelPaths, CallsAContourClosedThatEndsWhereItBeganAndEnclosesMoreThanAPoint)
{
    WritePaths("in.path", {{1, {{{0, 0}, {1, 0}, {0, 0}}}},
                           {2, {{{0, 0}, {0, 0}}}},
                           {3, {{{0, 0}, {1, 0}, {1, 1}, {0, 1e-9}}}},
                           {4, {{{0, 0}, {1, 1}, {-0.0, 0}}}}});
    EXPECT_EQ(Cell(Run("paths in.path"), "contours"), QStringLiteral("4, 2 closed, 2 open"));
    EXPECT_EQ(Cell(Run("paths in.path"), "  2"), QStringLiteral("- 1 0 1 2 0 x 0"));
    EXPECT_EQ(Cell(Run("paths in.path"), "  3"), QStringLiteral("- 1 0 1 4 1 x 1"));
    EXPECT_EQ(Cell(Run("paths in.path"), "  4"), QStringLiteral("- 1 1 0 3 1 x 1"));
}

TEST_F(KrmodelPaths, ShowsTheSample)
{
    const ProgramRun run = Run(Words("paths %1", Sample("gasket.path")));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(Cell(run, "contours"), QStringLiteral("19, 10 closed, 9 open"));
    EXPECT_EQ(Cell(run, "x"), QStringLiteral("-80 80 160"));
    EXPECT_EQ(Cell(run, "  1"), QStringLiteral("cut 10 10 0 452 160 x 64"));
}

TEST_F(KrmodelPaths, LeavesOutOfTheBoundsWhatIsNotFinite)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    WritePaths("in.path", {{1, {{{1, 2}, {kInfinity, 0}, {std::nan(""), 0}, {3, 5}}}}});
    EXPECT_EQ(Cell(Run("paths in.path"), "x"), QStringLiteral("1 3 2"));
    EXPECT_EQ(Cell(Run("paths in.path"), "y"), QStringLiteral("2 5 3"));
    WritePaths("none.path", {{1, {{{kInfinity, 0}}}}});
    const ProgramRun none = Run("paths none.path");
    EXPECT_EQ(none.exitCode, Done);
    EXPECT_EQ(Cell(none, "bounds"), QStringLiteral("none, no point is finite"));
}

TEST_F(KrmodelPaths, ShowsTheFirstSetsOfVeryMany)
{
    DXFPathFile::Paths paths;
    for (int id = 1; id <= 32; ++id)
        paths[id] = {kStroke};
    WritePaths("in.path", paths);
    const ProgramRun run = Run("paths in.path");
    EXPECT_EQ(Cell(run, " 30"), QStringLiteral("- 1 0 1 2 20 x 0.5"));
    EXPECT_EQ(Cell(run, " 31"), QString());
    EXPECT_TRUE(run.output.endsWith(QStringLiteral("  and 2 more\n")));
}

TEST_F(KrmodelPaths, ShowsNothingThatSteersATerminal)
{
    WritePaths("in.path", {{1, {kStroke}}}, {{1, "a\x1b[2Jb"}});
    EXPECT_TRUE(Cell(Run("paths in.path"), "  1").startsWith(QStringLiteral("a?[2Jb ")));
}

TEST_F(KrmodelPaths, DrawsInsteadOfPrinting)
{
    WritePaths("in.path", {{1, {kSquare}}});
    const ProgramRun run = Run("paths in.path --picture out.png");
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.output + run.errors, QString());
    EXPECT_EQ(QImage::fromData(Bytes("out.png"), "PNG").size(), QSize(800, 600));
    EXPECT_EQ(Run("paths in.path --picture small.PNG --size 120x90").exitCode, Done);
    EXPECT_EQ(QImage::fromData(Bytes("small.PNG"), "PNG").size(), QSize(120, 90));
}

TEST_F(KrmodelPaths, DrawsTheSameEachTimeAndWithoutADisplay)
{
    const QStringList line = Words("paths %1 --size 200x120 --picture", Sample("gasket.path"));
    EXPECT_EQ(Run(line + Words("a.png")).exitCode, Done);
    const ProgramRun run =
        Run(line + Words("b.png"), Words("DISPLAY= WAYLAND_DISPLAY= QT_QPA_PLATFORM=none-such"));
    EXPECT_EQ(run.exitCode, Done);
    EXPECT_EQ(run.errors, QString());
    EXPECT_EQ(Bytes("a.png"), Bytes("b.png"));
}

TEST_F(KrmodelPaths, SaysWhyAFileGivesNothing)
{
    WritePaths("whole.path", {{1, {kSquare}}});
    Write("cut.path", Bytes("whole.path").left(60));
    Write("zero.path", QByteArray());
    Write("text.path", "no path file");
    WritePaths("none.path", {});
    WritePaths("bare.path", {{1, {{}, {}}}, {2, {}}});
    EXPECT_TRUE(QDir().mkdir(Path("directory")));
    ExpectFailures(
        {
            {"missing.path", CannotOpen, "cannot open"},
            {"directory", CannotOpen, "cannot open"},
            {"cut.path", NotReadable, "not readable as a path file"},
            {"zero.path", NotReadable, "not readable as a path file"},
            {"text.path", NotReadable, "not readable as a path file"},
            {"none.path", Empty, "holds no point"},
            {"bare.path", Empty, "holds no point"},
        },
        {"paths %1", "paths %1 --picture out.png"});
}

TEST_F(KrmodelPaths, LeavesTheOldPictureAndNothingElseWhenItFails)
{
    Write("text.path", "no path file");
    Write("out.png", "old");
    EXPECT_EQ(Run("paths text.path --picture out.png").exitCode, NotReadable);
    EXPECT_EQ(Bytes("out.png"), QByteArray("old"));
    EXPECT_EQ(AllFiles(), Words("out.png text.path"));
}

TEST_F(KrmodelPaths, ReportsAPictureThatCannotBeWritten)
{
    WritePaths("in.path", {{1, {kSquare}}});
    ExpectUnwritable("png", {"paths in.path --picture %1"});
}

TEST_F(KrmodelPaths, RefusesWhatMakesNoSense)
{
    WritePaths("in.path", {{1, {kSquare}}});
    ExpectUsageErrors({"paths", "paths in.path in.path", "paths in.path --size 100x100",
                       "paths in.path --picture", "paths in.path --picture out.jpg",
                       "paths in.path --picture out.png --size 100", "paths in.path --view top"});
}

TEST_F(KrmodelPaths, HelpTellsHowToDraw)
{
    const ProgramRun run = Run("paths --help");
    EXPECT_EQ(run.exitCode, Done);
    for (const char* text : {"krmodel paths [OPTIONS] FILE", "--picture OUT.png", "--size WxH=800x600"})
        EXPECT_TRUE(run.output.contains(QLatin1String(text))) << run.output.toStdString();
}

} // namespace
