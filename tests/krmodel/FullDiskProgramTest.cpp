#include <iostream>

#include <QImage>

#include "tests/common/PictureFiles.h"
#include "tests/krmodel/ProgramSupport.h"

namespace {

/// How the system is brought to refuse to take more of a file.
struct Means {
    const char* name;
    const char* script; ///< runs the words behind the first, with "disk" as the place for the output
};

// Of "old", the file that is to stay, the script prints what is in it; and all names that are there.
constexpr Means kFullDisk = {
    "a disk of 1 MiB that is nearly full",
    "exec unshare --map-root-user --mount sh -c '"
    "mount -t tmpfs -o size=1m none disk && printf old >disk/$0 && head -c 1000K /dev/zero >disk/.filler &&"
    " { \"$@\" >/dev/null; code=$?; rm disk/.filler; cat disk/$0; ls -A disk; exit $code; }' \"$@\""};
constexpr Means kFileSize = {
    "a limit on the size of files",
    "printf old >disk/$1; out=$1; shift; trap '' XFSZ;"
    " (ulimit -f 24; \"$@\" >/dev/null); code=$?; cat disk/$out; ls -A disk; rm -r disk; exit $code"};

class KrmodelFullDisk : public Krmodel {
protected:
    KrmodelFullDisk()
    {
        for (const char* name : {"bolt.3mf", "gasket.path", "gear.stl", "medal.png"})
            CopySample(name, name);
        EXPECT_TRUE(test::RandomPicture(120, 120).save(Path("noise.png")));
    }
    /// A user of a system, or of a container, may not be allowed to mount.
    bool CanMount() const
    {
        QDir().mkdir(Path("disk"));
        return RunScript("unshare --map-root-user --mount mount -t tmpfs none disk").exitCode == 0;
    }
    /// @param line  with "%1" for the output in the full place
    void ExpectOldFile(const Means& means, const char* line, const char* name) const
    {
        QDir().mkdir(Path("disk"));
        const QString output = QString::fromUtf8(name);
        const QStringList command = Words(line, QStringLiteral("disk/") + output);
        const ProgramRun run =
            RunScript(means.script, QStringList{output, QStringLiteral(KRMODEL_PROGRAM)} + command);
        EXPECT_EQ(run.exitCode, WriteFailed) << line << ": " << run.errors.toStdString();
        EXPECT_EQ(run.output, QStringLiteral("old%1\n").arg(output)) << line;
        EXPECT_EQ(run.errors.count(QStringLiteral("krmodel: disk/%1: ").arg(output)), 1)
            << line << ": " << run.errors.toStdString();
    }
    void ExpectOldFiles(const Means& means) const
    {
        ExpectOldFile(means, "convert gear.stl %1 --quiet", "out.stl");
        ExpectOldFile(means, "convert gear.stl %1 --quiet --ascii", "text.stl");
        ExpectOldFile(means, "convert gear.stl %1 --quiet", "out.obj");
        ExpectOldFile(means, "convert gear.stl %1 --quiet", "out.3mf");
        ExpectOldFile(means, "convert gear.stl --to stl --quiet --directory disk", "gear.stl");
        ExpectOldFile(means, "preview gear.stl %1 --size 640x480", "out.png");
        ExpectOldFile(means, "relief medal.png %1", "relief.stl");
        ExpectOldFile(means, "texture make noise.png %1", "out.texture");
        ExpectOldFile(means, "texture extract noise.texture %1", "noise.png");
        ExpectOldFile(means, "paths gasket.path --picture %1", "paths.png");
    }
};

TEST_F(KrmodelFullDisk, LeavesTheOldFileAndNothingElse)
{
    EXPECT_EQ(Run("texture make noise.png noise.texture").exitCode, Done);
    const bool canMount = CanMount();
    if (!canMount)
        std::cout << "nobody may mount a disk here: looking with " << kFileSize.name << " instead\n";
    ExpectOldFiles(canMount ? kFullDisk : kFileSize);
}

TEST_F(KrmodelFullDisk, LeavesTheOldFileWhenTheSystemTakesNoMoreOfIt)
{
    EXPECT_EQ(Run("texture make noise.png noise.texture").exitCode, Done);
    ExpectOldFiles(kFileSize);
}

TEST_F(KrmodelFullDisk, GoesOnWithFilesForWhichThereIsRoom)
{
    CopySample("cube-inward.stl", "small.stl");
    const ProgramRun run =
        RunScript("mkdir out; trap '' XFSZ; ulimit -f 24; "
                  "\"$0\" convert gear.stl small.stl --to obj --directory out --quiet --json");
    EXPECT_EQ(run.exitCode, WriteFailed);
    EXPECT_EQ(run.output.count(QLatin1Char('\n')), 2);
    EXPECT_EQ(QDir(Path("out")).entryList(QDir::Files | QDir::Hidden), Words("small.obj"));
}

TEST_F(KrmodelFullDisk, ReportsAFullDeviceOnStandardOutput)
{
    for (const char* line : {"convert gear.stl - --to stl", "convert gear.stl - --to 3mf"}) {
        const ProgramRun run = RunScript("\"$0\" \"$@\" --quiet >/dev/full", Words(line));
        EXPECT_EQ(run.exitCode, WriteFailed) << line;
        EXPECT_EQ(run.errors,
                  QStringLiteral("krmodel: standard output: cannot write: No space left on device\n"))
            << line;
    }
}

TEST_F(KrmodelFullDisk, ReportsThatWhatIsPrintedDoesNotArrive)
{
    for (const char* line :
         {"info gear.stl", "info gear.stl --json", "check gear.stl", "manual man", "--help", "--version"}) {
        const ProgramRun run = RunScript("\"$0\" \"$@\" >/dev/full", Words(line));
        EXPECT_EQ(run.exitCode, WriteFailed) << line;
        EXPECT_EQ(run.errors, QStringLiteral("krmodel: standard output: cannot write in full\n")) << line;
    }
}

} // namespace
