#include <csignal>

#include <sys/stat.h>

#include <QDirIterator>
#include <QMap>

#include "tests/common/PictureFiles.h"
#include "tests/krmodel/Processes.h"

// Each option of each command in a run of the program that shows what it does. The program's own list, which
// the shells complete from, tells which options there are: a new one needs a row here.

namespace {

enum class Effect { Differs, None };

/// An option, a line without it or with another value, and a line with it: words behind the command.
struct OptionRow {
    const char* command;
    const char* option;
    const char* without;
    const char* with;
    int exitCode = Done; ///< with it
    Effect effect = Effect::Differs;
};

constexpr OptionRow kRows[] = {
    {"", "--version", "", "--version"},

    {"info", "--deflection", "bearing.step --angle 90 --deflection 100",
     "bearing.step --angle 90 --deflection 1"},
    {"info", "--angle", "bearing.step --angle 90 --deflection 100",
     "bearing.step --angle 45 --deflection 100"},
    {"info", "--no-prefix", "bearing.step --angle 90 --deflection 100",
     "bearing.step --angle 90 --deflection 100 --no-prefix"},
    {"info", "--json", "cube.stl", "cube.stl --json"},

    {"check", "--deflection", "bearing.step --json --angle 90 --deflection 100",
     "bearing.step --json --angle 90 --deflection 1"},
    {"check", "--angle", "bearing.step --json --angle 90 --deflection 100",
     "bearing.step --json --angle 45 --deflection 100"},
    {"check", "--no-prefix", "bearing.step --json --angle 90 --deflection 100",
     "bearing.step --json --angle 90 --deflection 100 --no-prefix"},
    {"check", "--json", "cube.stl", "cube.stl --json"},

    {"convert", "--to", "cube.stl", "cube.stl --to obj"},
    {"convert", "--directory", "cube.stl --to obj", "cube.stl --to obj --directory other"},
    {"convert", "--from", "- out.obj", "- out.obj --from stl"},
    {"convert", "--ascii", "cube.stl out.stl", "cube.stl out.stl --ascii"},
    {"convert", "--binary", "cube.stl out.obj", "cube.stl out.obj --binary", Usage},
    {"convert", "--deflection", "bearing.step out.3mf --quiet --angle 90 --deflection 100",
     "bearing.step out.3mf --quiet --angle 90 --deflection 1"},
    {"convert", "--angle", "bearing.step out.3mf --quiet --angle 90 --deflection 100",
     "bearing.step out.3mf --quiet --angle 45 --deflection 100"},
    {"convert", "--no-prefix", "bearing.step out.3mf --quiet --angle 90 --deflection 100",
     "bearing.step out.3mf --quiet --angle 90 --deflection 100 --no-prefix"},
    {"convert", "--unit", "cube.stl out.3mf", "cube.stl out.3mf --unit inch"},
    {"convert", "--apply-transform", "bolt.3mf out.3mf", "bolt.3mf out.3mf --apply-transform"},
    {"convert", "--no-apply-transform", "bolt.3mf out.stl", "bolt.3mf out.stl --no-apply-transform"},
    {"convert", "--merge", "bolt.3mf out.3mf", "bolt.3mf out.3mf --merge"},
    {"convert", "--split", "bolt.3mf out.3mf", "bolt.3mf out.3mf --split"},
    {"convert", "--normals", "cube.stl out.obj", "cube.stl out.obj --normals"},
    {"convert", "--quiet", "bolt.3mf out.stl", "bolt.3mf out.stl --quiet"},
    {"convert", "--verbose", "cube.stl out.obj", "cube.stl out.obj --verbose"},
    {"convert", "--json", "cube.stl out.obj", "cube.stl out.obj --json"},

    {"preview", "--size", "cube.stl out.png --size 64x64", "cube.stl out.png --size 64x48"},
    {"preview", "--view", "cube.stl out.png --size 64x64", "cube.stl out.png --size 64x64 --view top"},
    {"preview", "--any-name", "cube.stl out --size 64x64", "cube.stl out --size 64x64 --any-name"},
    {"preview", "--background", "cube.stl out.png --size 64x64",
     "cube.stl out.png --size 64x64 --background white"},
    {"preview", "--directory", "cube.stl out.png --size 64x64", "cube.stl --size 64x64 --directory other"},
    {"preview", "--thumbnail", "bolt.3mf out.png --size 64x64", "bolt.3mf out.png --size 64x64 --thumbnail"},
    {"preview", "--deflection", "bearing.step out.png --size 200x150 --angle 90 --deflection 100",
     "bearing.step out.png --size 200x150 --angle 90 --deflection 1"},
    {"preview", "--angle", "bearing.step out.png --size 200x150 --angle 90 --deflection 100",
     "bearing.step out.png --size 200x150 --angle 45 --deflection 100"},
    {"preview", "--no-prefix", "bearing.step out.png --size 200x150 --angle 90 --deflection 100",
     "bearing.step out.png --size 200x150 --angle 90 --deflection 100 --no-prefix", Done, Effect::None},

    {"relief", "--width", "noise.png out.stl", "noise.png out.stl --width 50"},
    {"relief", "--depth", "noise.png out.stl", "noise.png out.stl --depth 50"},
    {"relief", "--min-height", "noise.png out.stl", "noise.png out.stl --min-height 0.5"},
    {"relief", "--max-height", "noise.png out.stl", "noise.png out.stl --max-height 5"},
    {"relief", "--blur", "noise.png out.stl", "noise.png out.stl --blur 1"},
    {"relief", "--scale", "noise.png out.stl", "noise.png out.stl --scale 50"},
    {"relief", "--dark-is-high", "noise.png out.stl", "noise.png out.stl --dark-is-high"},
    {"relief", "--ascii", "noise.png out.stl", "noise.png out.stl --ascii"},
    {"relief", "--binary", "noise.png out.obj", "noise.png out.obj --binary", Usage},

    {"texture make", "--name", "noise.png out.texture", "noise.png out.texture --name oak"},
    {"texture make", "--namespace", "noise.png out.texture",
     "noise.png out.texture --namespace 6ba7b811-9dad-11d1-80b4-00c04fd430c8"},
    {"texture make", "--longest-side", "noise.png out.texture", "noise.png out.texture --longest-side 4"},
    {"texture make", "--wrap", "noise.png out.texture", "noise.png out.texture --wrap mirror"},
    {"texture make", "--border", "noise.png out.texture", "noise.png out.texture --border white"},
    {"texture make", "--offset", "noise.png out.texture", "noise.png out.texture --offset 0.5 0.5"},
    {"texture make", "--repeat", "noise.png out.texture", "noise.png out.texture --repeat 2 2"},
    {"texture make", "--rotation", "noise.png out.texture", "noise.png out.texture --rotation 30"},

    {"paths", "--picture", "gasket.path", "gasket.path --picture out.png"},
    {"paths", "--size", "gasket.path --picture out.png", "gasket.path --picture out.png --size 64x48"},

    // Without a terminal there is no progress that it could hide, see ProgressProgramTest.cpp.
    {"info", "--quiet", "cube.stl", "cube.stl --quiet", Done, Effect::None},
    {"check", "--quiet", "cube.stl", "cube.stl --quiet", Done, Effect::None},
    {"preview", "--quiet", "cube.stl out.png --size 64x64", "cube.stl out.png --size 64x64 --quiet", Done,
     Effect::None},
    {"relief", "--quiet", "noise.png out.stl", "noise.png out.stl --quiet", Done, Effect::None},
    {"texture make", "--quiet", "noise.png out.texture", "noise.png out.texture --quiet", Done, Effect::None},
    {"texture show", "--quiet", "weave.texture", "weave.texture --quiet", Done, Effect::None},
    {"texture extract", "--quiet", "weave.texture out.png", "weave.texture out.png --quiet", Done,
     Effect::None},
    {"paths", "--quiet", "gasket.path", "gasket.path --quiet", Done, Effect::None},
};

/// Commands with limits; they wait for somebody to write into the pipe.
constexpr const char* kLimitedLines[] = {
    "info pipe.obj",          "check pipe.obj",
    "convert pipe.obj a.stl", "preview pipe.obj a.png",
    "relief pipe.png a.stl",  "texture make pipe.png a.texture",
    "texture show pipe.png",  "texture extract pipe.png a.png",
    "paths pipe.path",
};

/// Commands that work on several files at a time, likewise.
constexpr const char* kLinesWithJobs[] = {
    "info pipe.obj pipe.obj pipe.obj",
    "check pipe.obj pipe.obj pipe.obj",
    "convert pipe.obj other/pipe.obj third/pipe.obj --to stl",
    "preview pipe.obj pipe2.obj pipe3.obj --directory other",
};

/// What a run did, as far as it is the same each time.
struct Traces {
    int exitCode = -1;
    QString output;
    QString errors;
    QMap<QString, QByteArray> files; ///< those that it wrote

    bool operator==(const Traces& other) const
    {
        return exitCode == other.exitCode && output == other.output && errors == other.errors &&
               files == other.files;
    }
};

/// A file without the times that writers put into the head of binary STL and before each entry of a package.
QByteArray WithoutTimes(QByteArray file)
{
    constexpr int kStlHeadSize = 80;
    if (file.startsWith("STL EXPORTED"))
        return file.mid(kStlHeadSize);
    const struct {
        const char* signature;
        int timeAt;
    } kZipRecords[] = {{"PK\x03\x04", 10}, {"PK\x01\x02", 12}};
    for (const auto& [signature, timeAt] : kZipRecords)
        for (int at = file.indexOf(signature); at >= 0; at = file.indexOf(signature, at + 1))
            file.replace(at + timeAt, 4, "time");
    return file;
}

/// The commands of the program, with their options: "convert" for example, and "texture make".
QMap<QString, QStringList> OptionsByCommand(const QString& bashCompletion)
{
    const QRegularExpression line(QStringLiteral("^    '(.*)'\\) commands='.*' options='(.*)' ;;$"),
                                  QRegularExpression::MultilineOption);
    QMap<QString, QStringList> options;
    for (auto match = line.globalMatch(bashCompletion); match.hasNext();) {
        const QRegularExpressionMatch command = match.next();
        options[command.captured(1).trimmed()] = command.captured(2).split(QLatin1Char(' '));
    }
    return options;
}

/// The words of a line up to the first operand.
QString CommandOf(const char* line)
{
    QStringList words = Words(line);
    return words[0] == QStringLiteral("texture") ? words[0] + QLatin1Char(' ') + words[1] : words[0];
}

class KrmodelOption : public Krmodel {
protected:
    KrmodelOption()
    {
        for (const char* name : {"bearing.step", "bolt.3mf", "gasket.path", "weave.texture"})
            CopySample(name, name);
        CopySample("cube-inward.stl", "cube.stl");
        EXPECT_TRUE(test::RandomPicture(8, 8).save(Path("noise.png")));
        for (const char* name : {"other", "third"})
            EXPECT_TRUE(QDir().mkdir(Path(name)));
        for (const char* name : {"pipe.obj", "pipe.png", "pipe.path", "other/pipe.obj", "third/pipe.obj",
                                 "pipe2.obj", "pipe3.obj"})
            EXPECT_EQ(mkfifo(QFile::encodeName(Path(name)), 0600), 0);
        m_inputs = Names();
    }
    QMap<QString, QStringList> Options() const { return OptionsByCommand(Run("manual bash").output); }

    /// Runs a line with a model as standard input, and takes away what it wrote.
    Traces TracesOf(const char* command, const char* words) const
    {
        const ProgramRun run = RunScript("\"$0\" \"$@\" <cube.stl", Words(command) + Words(words));
        const QRegularExpression varying(
            QStringLiteral("(?m)^  (read in|peak memory) .*\n|, in \\d+\\.\\d\\d s$"));
        Traces traces = {
            run.exitCode, QString(run.output).remove(varying), QString(run.errors).remove(varying), {}};
        for (const QString& name : Names())
            if (!m_inputs.contains(name)) {
                traces.files[name] = WithoutTimes(Bytes(name.toUtf8().constData()));
                QFile::remove(Path(name.toUtf8().constData()));
            }
        return traces;
    }

private:
    QStringList Names() const
    {
        const QDir top(Path("."));
        QStringList names;
        for (QDirIterator files(top.path(), QDir::Files | QDir::Hidden | QDir::System,
                                QDirIterator::Subdirectories);
             files.hasNext();)
            names << top.relativeFilePath(files.next());
        return names;
    }

    QStringList m_inputs;
};

TEST_F(KrmodelOption, HasARowForEachOptionOfEachCommand)
{
    QMap<QString, QStringList> shown;
    for (const OptionRow& row : kRows)
        shown[QLatin1String(row.command)] << QLatin1String(row.option);
    for (const char* line : kLimitedLines)
        shown[CommandOf(line)] += Words("--max-memory --max-time --max-input --max-output");
    for (const char* line : kLinesWithJobs)
        shown[CommandOf(line)] += Words("-j --jobs");
    const auto options = Options();
    EXPECT_EQ(options.size(), 13);
    for (auto command = options.begin(); command != options.end(); ++command)
        for (const QString& option : command.value())
            EXPECT_TRUE(shown[command.key()].contains(option) || Words("-h --help").contains(option))
                << "krmodel " << command.key().toStdString() << ": no row for " << option.toStdString();
}

TEST_F(KrmodelOption, ExplainsEachCommandByBothNamesOfHelp)
{
    const auto options = Options();
    for (auto command = options.begin(); command != options.end(); ++command) {
        const QStringList words = command.key().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        const ProgramRun help = Run(words + Words("--help")), shortHelp = Run(words + Words("-h"));
        EXPECT_EQ(help.exitCode, Done);
        EXPECT_TRUE(help.output.contains(
            QStringLiteral("\nUsage: %1 [OPTIONS]").arg((Words("krmodel") + words).join(QLatin1Char(' ')))))
            << help.output.toStdString();
        EXPECT_EQ(shortHelp.output, help.output);
    }
}

TEST_F(KrmodelOption, ShowsInWhatARunDoes)
{
    QMap<QString, Traces> tracesWithout;
    for (const OptionRow& row : kRows) {
        const QString line = QStringLiteral("%1 %2").arg(QLatin1String(row.command), QLatin1String(row.with));
        ASSERT_TRUE(Words(row.with).contains(QLatin1String(row.option))) << line.toStdString();
        const QString key = QLatin1String(row.command) + QLatin1Char(' ') + QLatin1String(row.without);
        if (!tracesWithout.contains(key))
            tracesWithout[key] = TracesOf(row.command, row.without);
        const Traces with = TracesOf(row.command, row.with);
        EXPECT_EQ(with.exitCode, row.exitCode) << line.toStdString() << ": " << with.errors.toStdString();
        EXPECT_EQ(with == tracesWithout[key], row.effect == Effect::None) << line.toStdString();
    }
}

TEST_F(KrmodelOption, LimitsWhatTheProcessOfAFileMayUse)
{
    for (const char* line : kLimitedLines) {
        test::RunningProgram program(Words(line) + Words("--max-memory 100000 --max-time 77 --max-output 99"),
                                     Path("."));
        const pid_t child = program.WaitForChildren(1).at(0);
        const auto hasLimit = [&](const char* pattern) {
            const QString limits = QString::fromLatin1(test::TextOfProcess(child, "limits"));
            return limits.contains(QRegularExpression(QLatin1String(pattern)));
        };
        // The child may only just have begun.
        EXPECT_TRUE(test::WaitUntil([&] { return hasLimit("\nMax cpu time +77 "); })) << line;
        EXPECT_TRUE(test::WaitUntil([&] { return hasLimit("\nMax file size +103809024 "); })) << line;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
        EXPECT_TRUE(hasLimit("\nMax address space +104857600000 ")) << line;
#endif
        kill(program.GetId(), SIGTERM);
        EXPECT_EQ(program.WaitForEnd().exitCode, Interrupted) << line;
    }
}

TEST_F(KrmodelOption, LimitsWhatACommandReads)
{
    for (const char* name : {"large.obj", "large.png", "large.path"})
        WriteHole(name, (1 << 20) + 1);
    for (const char* line : kLimitedLines) {
        const QStringList words =
            Words(line).replaceInStrings(QStringLiteral("pipe."), QStringLiteral("large."));
        EXPECT_EQ(Run(words + Words("--max-input 1")).exitCode, Stopped) << line;
        EXPECT_NE(Run(words + Words("--max-input 2")).exitCode, Stopped) << line;
    }
}

TEST_F(KrmodelOption, JobsAreAsManyAsAskedFor)
{
    for (const char* line : kLinesWithJobs)
        for (const char* jobs : {"-j 2", "--jobs 3"}) {
            test::RunningProgram program(Words(line) + Words(jobs), Path("."));
            program.WaitForChildren(jobs == QByteArray("-j 2") ? 2 : 3);
            kill(program.GetId(), SIGTERM);
            EXPECT_EQ(program.WaitForEnd().exitCode, Interrupted) << line;
        }
}

} // namespace
