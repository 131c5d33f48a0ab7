#include <cerrno>
#include <csignal>
#include <memory>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include "tests/krmodel/Processes.h"
#include "tests/krmodel/Terminal.h"

namespace {

using test::RunningProgram;
using test::WaitUntil;

bool IsGone(pid_t process)
{
    return kill(process, 0) != 0 && errno == ESRCH;
}

bool IsStopped(pid_t process)
{
    return test::TextOfProcess(process, "stat").contains(") T ");
}

/// While it lives, orphans become the test's children: it hears how they end.
class Adoption {
public:
    Adoption() { EXPECT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }
    ~Adoption() { prctl(PR_SET_CHILD_SUBREAPER, 0); }
    Adoption(const Adoption&) = delete;
    Adoption& operator=(const Adoption&) = delete;
};

class KrmodelStop : public Krmodel {
protected:
    /// A file of which the reader waits for somebody to write.
    void MakePipe(const char* name) const { ASSERT_EQ(mkfifo(QFile::encodeName(Path(name)), 0600), 0); }
    void MakePipes() const
    {
        MakePipe("a.obj");
        MakePipe("b.obj");
        for (const char* name : {"a.stl", "b.stl"})
            Write(name, "old");
    }
    void ExpectOldFilesAndNothingElse() const
    {
        for (const char* name : {"a.stl", "b.stl"})
            EXPECT_EQ(Bytes(name), QByteArray("old"));
        EXPECT_EQ(AllFiles(), Words("a.obj a.stl b.obj b.stl"));
    }
    std::unique_ptr<RunningProgram> Start(const char* line) const
    {
        return std::make_unique<RunningProgram>(Words(line), Path("."));
    }
    /// What lies beside the target while it is written.
    QStringList PendingFiles() const
    {
        return QDir(Path(".")).entryList({QStringLiteral(".krmodel-*.stl")}, QDir::Files | QDir::Hidden);
    }
    /// Starts to write a.stl until half of it is there. The program is stopped then, as by somebody who holds
    /// it; it may have been quicker.
    std::unique_ptr<RunningProgram> StartWriting() const
    {
        auto program = Start("convert big.obj a.stl --ascii --quiet");
        const pid_t child = program->WaitForChildren(1).at(0);
        EXPECT_TRUE(WaitUntil([&] { return !PendingFiles().isEmpty() || IsGone(child); }));
        kill(child, SIGSTOP);
        EXPECT_TRUE(WaitUntil([&] { return IsGone(child) || IsStopped(child); }));
        return program;
    }
    /// @param act  gets the program and its child that is in the middle of its work
    template<class Act>
    void WhileItWrites(Act act) const
    {
        Write("big.obj",
              QByteArray("v 0 0 0\nv 1 0 0\nv 0 1 0\n") + QByteArray("f 1 2 3\n").repeated(200'000));
        for (int attempt = 0; attempt < 20; ++attempt) {
            Write("a.stl", "old");
            const auto program = StartWriting();
            const std::vector<pid_t> children = test::ChildrenOf(program->GetId());
            if (!PendingFiles().isEmpty() && children.size() == 1)
                return act(*program, children[0]);
            for (const pid_t child : children)
                kill(child, SIGCONT);
            program->WaitForEnd();
        }
        FAIL() << "it was always quicker";
    }
};

TEST_F(KrmodelStop, GoesOnAfterAChildThatSomebodyKilled)
{
    MakePipe("a.obj");
    Write("a.stl", "old");
    Write("it.obj", kTetrahedronObj);
    const auto program = Start("convert a.obj it.obj --to stl");
    kill(program->WaitForChildren(1).at(0), SIGKILL);
    const ProgramRun run = program->WaitForEnd();
    EXPECT_EQ(run.exitCode, Stopped);
    EXPECT_EQ(run.errors, QStringLiteral("krmodel: a.obj: stopped, its process was killed\n"));
    EXPECT_EQ(Bytes("a.stl"), QByteArray("old"));
    EXPECT_EQ(QFile(Path("it.stl")).size(), 84 + 4 * 50);
    EXPECT_EQ(AllFiles(), Words("a.obj a.stl it.obj it.stl"));
}

TEST_F(KrmodelStop, LeavesTheOldFileAndNothingElseWhenAChildIsKilledInTheMiddleOfItsOutput)
{
    WhileItWrites([&](RunningProgram& program, pid_t child) {
        EXPECT_EQ(Bytes("a.stl"), QByteArray("old"));
        kill(child, SIGKILL);
        EXPECT_EQ(program.WaitForEnd().exitCode, Stopped);
        EXPECT_EQ(Bytes("a.stl"), QByteArray("old"));
        EXPECT_EQ(AllFiles(), Words("a.stl big.obj"));
    });
}

TEST_F(KrmodelStop, LeavesNoChildWhenItIsKilledItself)
{
    MakePipes();
    const Adoption adoption;
    const auto program = Start("convert -j 2 a.obj b.obj --to stl");
    const std::vector<pid_t> children = program->WaitForChildren(2);
    kill(program->GetId(), SIGKILL);
    EXPECT_EQ(program->WaitForEnd().exitCode, -1);
    for (const pid_t child : children) {
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        // One that had hardly begun sees by itself that it is an orphan.
        EXPECT_TRUE(WIFSIGNALED(status) ? WTERMSIG(status) == SIGKILL : WEXITSTATUS(status) == Stopped);
    }
    ExpectOldFilesAndNothingElse();
}

TEST_F(KrmodelStop, LeavesTheOldFileAndHiddenOnesAtMostWhenItIsKilledInTheMiddleOfAnOutput)
{
    const Adoption adoption;
    WhileItWrites([&](RunningProgram& program, pid_t child) {
        kill(program.GetId(), SIGKILL);
        EXPECT_EQ(program.WaitForEnd().exitCode, -1);
        EXPECT_EQ(waitpid(child, nullptr, 0), child);
        EXPECT_EQ(Bytes("a.stl"), QByteArray("old"));
        EXPECT_EQ(Files(), Words("a.stl big.obj"));
        // The rest is of the name that the documentation tells.
        EXPECT_EQ(PendingFiles().size(), 1);
        EXPECT_EQ(AllFiles().size(), 3);
    });
}

TEST_F(KrmodelStop, EndsWith130AtEachSignalThatStopsProgramsAndLeavesNothing)
{
    MakePipes();
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const auto program = Start("convert -j 2 a.obj b.obj missing.obj --to stl");
        const std::vector<pid_t> children = program->WaitForChildren(2);
        kill(program->GetId(), signal);
        const ProgramRun run = program->WaitForEnd();
        EXPECT_EQ(run.exitCode, Interrupted) << signal;
        EXPECT_EQ(run.output + run.errors, QString());
        for (const pid_t child : children)
            EXPECT_TRUE(IsGone(child)) << signal;
        ExpectOldFilesAndNothingElse();
    }
}

TEST_F(KrmodelStop, PrintsOnlyWholeJsonLinesWhenInterrupted)
{
    MakePipe("a.obj");
    Write("it.obj", kTetrahedronObj);
    const auto program = Start("info --json it.obj a.obj it.obj");
    program->WaitForOutput();
    kill(program->GetId(), SIGINT);
    const ProgramRun run = program->WaitForEnd();
    EXPECT_EQ(run.exitCode, Interrupted);
    EXPECT_EQ(run.output.count(QLatin1Char('\n')), 1);
    EXPECT_TRUE(run.output.endsWith(QStringLiteral("}\n")));
}

TEST_F(KrmodelStop, LeavesTheTerminalAsItWasWhenInterruptedThere)
{
    MakePipes();
    test::Terminal terminal([directory = QFile::encodeName(Path("."))] {
        const char* const program = KRMODEL_PROGRAM;
        if (chdir(directory.constData()) == 0)
            execl(program, program, "convert", "-j", "2", "a.obj", "b.obj", "--to", "stl", nullptr);
        return 100;
    });
    const QByteArray before = terminal.GetModes();
    ASSERT_TRUE(WaitUntil([&] { return test::ChildrenOf(terminal.GetProcess()).size() == 2; }));
    ASSERT_TRUE(terminal.Shows("files done"));
    constexpr char kInterrupt = '\x03';
    terminal.Type(kInterrupt);
    EXPECT_EQ(terminal.End(), Interrupted);
    EXPECT_EQ(terminal.GetModes(), before);
    // A cursor that was hidden, another screen.
    EXPECT_FALSE(terminal.GetBytes().contains("\x1b[?")) << terminal.GetBytes().toStdString();
    ExpectOldFilesAndNothingElse();
}

} // namespace
