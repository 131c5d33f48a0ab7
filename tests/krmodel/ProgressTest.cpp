#include "apps/krmodel/Progress.h"

#include <csignal>
#include <cstdio>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>

#include "apps/krmodel/Batch.h"
#include "apps/krmodel/Guard.h"
#include "tests/krmodel/Terminal.h"

namespace {

using krmodel::BatchOptions;
using krmodel::BytesRead;
using krmodel::EnterStage;
using krmodel::ExitCode;
using krmodel::Form;
using krmodel::Job;
using krmodel::Progress;
using krmodel::RunTasks;
using krmodel::Stage;
using krmodel::StageBoard;
using krmodel::Task;
using test::Gate;
using test::Terminal;
using test::TerminalSettings;

/// Twice as long as nothing is shown.
constexpr unsigned kLongEnough = 600'000;

BatchOptions InLines(size_t atOnce = 1)
{
    BatchOptions options;
    options.form = Form::Lines;
    options.atOnce = atOnce;
    return options;
}

/// Makes files of 1,000 bytes and runs jobs on a terminal.
class KrmodelProgress : public ::testing::Test {
protected:
    QString MakeFile(const char* name) const
    {
        const QString fileName = m_directory.filePath(QString::fromUtf8(name));
        QFile file(fileName);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QByteArray(1000, 'x')) == 1000);
        return fileName;
    }

    /// Reads 450 bytes of the file, waits, closes it, waits again.
    Job ReadSlowly(const QString& fileName) const
    {
        return [this, fileName] {
            QFile file(fileName);
            const bool isRead =
                file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.read(450).size() == 450;
            m_gate.Wait();
            file.close();
            m_gate.Wait();
            return isRead ? ExitCode::Done : ExitCode::NotReadable;
        };
    }
    Job Wait() const
    {
        return [this] {
            m_gate.Wait();
            return ExitCode::Done;
        };
    }

    static std::function<int()> Running(const std::vector<Task>& tasks,
                                        const BatchOptions& options = InLines())
    {
        return [=] { return int(RunTasks(tasks, options)); };
    }
    /// What a job at work on "part.stl" leaves.
    QByteArray BytesOnTerminal(const TerminalSettings& settings) const
    {
        Terminal terminal(Running({{MakeFile("part.stl"), Wait(), {}}}), settings);
        EXPECT_TRUE(terminal.Shows("part.stl: reading"));
        m_gate.Open();
        EXPECT_EQ(terminal.End(), 0);
        EXPECT_EQ(terminal.Screen(), "");
        return terminal.GetBytes();
    }

    Gate m_gate;

private:
    QTemporaryDir m_directory;
};

TEST_F(KrmodelProgress, ShowsHowMuchOfAFileIsReadAndIsGoneInTheEnd)
{
    const QString part = MakeFile("part.stl");
    Terminal terminal(Running({{part, ReadSlowly(part), {}}}));
    EXPECT_TRUE(terminal.Shows("part.stl: 45 % of 1.0 kB read"));
    m_gate.Open();
    EXPECT_TRUE(terminal.Shows("part.stl: read, building, "));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_EQ(terminal.Screen(), "");
}

TEST_F(KrmodelProgress, TellsThatACadFileIsTessellatedOnceItIsRead)
{
    const QString part = MakeFile("part.step");
    Terminal terminal(Running({{part, ReadSlowly(part), {}}}));
    EXPECT_TRUE(terminal.Shows("part.step: 45 % of 1.0 kB read"));
    m_gate.Open();
    EXPECT_TRUE(terminal.Shows("part.step: read, tessellating, "));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), 0);
}

TEST_F(KrmodelProgress, NamesTheStageOfTheWork)
{
    const struct {
        Stage stage;
        const char* text;
    } cases[] = {{Stage::Working, "part: working, "},
                 {Stage::Drawing, "part: drawing, "},
                 {Stage::Writing, "part: writing, "},
                 {Stage::Comparing, "part: reading what was written, "}};
    for (const auto& [stage, text] : cases) {
        const Job work = [this, entered = stage] {
            EnterStage(entered);
            m_gate.Wait();
            return ExitCode::Done;
        };
        Terminal terminal(Running({{QStringLiteral("part"), work, {}}}));
        EXPECT_TRUE(terminal.Shows(text)) << text;
        m_gate.Open();
        EXPECT_EQ(terminal.End(), 0);
    }
}

TEST_F(KrmodelProgress, CountsSecondsWhereItKnowsNothingBetter)
{
    Terminal terminal(Running({{QStringLiteral("part"), Wait(), {}}}));
    EXPECT_TRUE(terminal.Shows("part: reading, 1 s"));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), 0);
}

TEST_F(KrmodelProgress, CountsTheFilesThatAreDone)
{
    const Job done = [] { return ExitCode::Done; };
    Terminal terminal(Running({{QStringLiteral("a.stl"), done, {}}, {QStringLiteral("b.stl"), Wait(), {}}}));
    EXPECT_TRUE(terminal.Shows("1 of 2 files done; b.stl: reading, "));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_EQ(terminal.Screen(), "");
}

TEST_F(KrmodelProgress, CountsTheFilesAtWorkAndShowsTheOneThatBeganFirst)
{
    Terminal terminal(
        Running({{QStringLiteral("a.stl"), Wait(), {}}, {QStringLiteral("b.stl"), Wait(), {}}}, InLines(2)));
    EXPECT_TRUE(terminal.Shows("0 of 2 files done, 2 at work; a.stl: reading, "));
    m_gate.Open();
    m_gate.Open();
    EXPECT_EQ(terminal.End(), 0);
}

TEST_F(KrmodelProgress, IsErasedBeforeOtherLinesOfBothStreams)
{
    const Job tell = [this] {
        m_gate.Wait();
        krmodel::PrintError(QStringLiteral("half a model"));
        m_gate.Wait();
        std::puts("its report");
        return ExitCode::Empty;
    };
    Terminal terminal(Running({{QStringLiteral("a.stl"), tell, {}}, {QStringLiteral("b.stl"), Wait(), {}}}));
    EXPECT_TRUE(terminal.Shows("0 of 2 files done; a.stl: reading"));
    m_gate.Open();
    EXPECT_TRUE(terminal.Shows("half a model"));
    m_gate.Open();
    EXPECT_TRUE(terminal.Shows("1 of 2 files done; b.stl: reading"));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), int(ExitCode::Empty));
    EXPECT_EQ(terminal.Screen(), "krmodel: half a model\nits report\n");
}

TEST_F(KrmodelProgress, IsErasedBeforeAPrematureEndIsTold)
{
    const Job die = [this]() -> ExitCode {
        m_gate.Wait();
        std::fputs("no line feed", stderr);
        std::raise(SIGKILL);
        return ExitCode::Done;
    };
    Terminal terminal(Running({{QStringLiteral("a.stl"), die, {}}}));
    EXPECT_TRUE(terminal.Shows("a.stl: reading"));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), int(ExitCode::Stopped));
    EXPECT_EQ(terminal.Screen(), "no line feedkrmodel: a.stl: stopped, its process was killed\n");
}

TEST_F(KrmodelProgress, IsGoneAfterAnInterruptThatWasTyped)
{
    constexpr char kInterrupt = '\003';
    Terminal terminal(Running({{QStringLiteral("a.stl"), Wait(), {}}}));
    EXPECT_TRUE(terminal.Shows("a.stl: reading"));
    terminal.Type(kInterrupt);
    EXPECT_EQ(terminal.End(), int(ExitCode::Interrupted));
    EXPECT_EQ(terminal.Screen(), "");
}

TEST_F(KrmodelProgress, IsFaintUnlessColourIsUnwantedOrTheTerminalIsDumb)
{
    EXPECT_TRUE(BytesOnTerminal({}).contains("\033[2mpart.stl"));
    EXPECT_FALSE(BytesOnTerminal({80, "1", "xterm"}).contains('\033'));
    EXPECT_FALSE(BytesOnTerminal({80, "", "dumb"}).contains('\033'));
    EXPECT_FALSE(BytesOnTerminal({80, "", ""}).contains('\033'));
}

TEST_F(KrmodelProgress, NeverReachesTheEndOfALine)
{
    TerminalSettings narrow;
    narrow.width = 20;
    for (const char* name : {"a name of many words", "模型模型模型模型模型模型"}) {
        Terminal terminal(Running({{QString::fromUtf8(name), Wait(), {}}}), narrow);
        EXPECT_TRUE(terminal.Shows(QString::fromUtf8(name).left(8).toUtf8()));
        m_gate.Open();
        EXPECT_EQ(terminal.End(), 0);
        EXPECT_GT(terminal.LongestLine(), 10);
        EXPECT_LT(terminal.LongestLine(), 20);
        EXPECT_EQ(terminal.Screen(), "");
    }
}

TEST_F(KrmodelProgress, KeepsQuietWhenToldTo)
{
    BatchOptions quiet = InLines();
    quiet.isQuiet = true;
    const Job sleepAndTell = [] {
        usleep(kLongEnough);
        krmodel::PrintError(QStringLiteral("told"));
        return ExitCode::Done;
    };
    Terminal terminal(Running({{QStringLiteral("a.stl"), sleepAndTell, {}}}, quiet));
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_EQ(terminal.GetBytes(), "krmodel: told\r\n");
}

TEST_F(KrmodelProgress, ShowsNothingWhereStandardErrorIsNoTerminal)
{
    const Job sleep = [] {
        usleep(kLongEnough);
        return ExitCode::Done;
    };
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(RunTasks({{QStringLiteral("a.stl"), sleep, {}}}, InLines()), ExitCode::Done);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(KrmodelProgress, ShowsNothingAtFirst)
{
    Terminal terminal([] {
        Progress progress({QStringLiteral("a.stl")});
        progress.Look({{0, getpid()}}, 0);
        return 0;
    });
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_EQ(terminal.GetBytes(), "");
}

TEST_F(KrmodelProgress, ReplacesWhatWouldSteerTheTerminal)
{
    Terminal terminal(Running({{QStringLiteral("a\033[2Jb\n.stl"), Wait(), {}}}), {80, "1", "xterm"});
    EXPECT_TRUE(terminal.Shows("a?[2Jb?.stl: reading"));
    m_gate.Open();
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_FALSE(terminal.GetBytes().contains('\033'));
}

TEST_F(KrmodelProgress, KnowsWhereAProcessStandsInAFile)
{
    QFile file(MakeFile("part.stl"));
    EXPECT_EQ(BytesRead(getpid(), file.fileName()), std::nullopt);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    EXPECT_EQ(BytesRead(getpid(), file.fileName()), 0);
    ASSERT_EQ(file.read(700).size(), 700);
    EXPECT_EQ(BytesRead(getpid(), file.fileName()), 700);
    EXPECT_EQ(BytesRead(getpid(), QStringLiteral("no such file")), std::nullopt);
    EXPECT_EQ(BytesRead(getpid(), QStringLiteral("/dev/null")), std::nullopt);
}

TEST(StageBoard, ShowsWhatOtherProcessesEnter)
{
    const StageBoard board(2);
    EnterStage(Stage::Writing); // nobody looks on
    const pid_t child = fork();
    if (child == 0) {
        board.BeginJob(1);
        EnterStage(Stage::Drawing);
        _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(board.Get(0), Stage::Loading);
    EXPECT_EQ(board.Get(1), Stage::Drawing);
}

} // namespace
