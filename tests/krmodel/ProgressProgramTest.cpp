#include <unistd.h>

#include "tests/krmodel/ProgramSupport.h"
#include "tests/krmodel/Terminal.h"

namespace {

using test::Terminal;

/// Runs "convert" on a terminal. Its input comes through a pipe, so it is at work until the test lets it end.
class KrmodelProgressLine : public Krmodel {
protected:
    KrmodelProgressLine() { EXPECT_EQ(pipe(m_input), 0); }
    ~KrmodelProgressLine() override { close(m_input[0]); }

    /// @param option  one more, or ""
    std::function<int()> Converting(const char* option) const
    {
        return [this, option, directory = QFileInfo(Path("out.stl")).path().toUtf8()] {
            close(m_input[1]);
            if (chdir(directory.constData()) != 0 || dup2(m_input[0], STDIN_FILENO) < 0)
                return 100;
            const char* const program = KRMODEL_PROGRAM;
            execl(program, program, "convert", "-", "out.stl", "--from=stl", option, nullptr);
            return 101;
        };
    }
    void GiveInput() const
    {
        QFile sample(Sample("cube-inward.stl"));
        EXPECT_TRUE(sample.open(QIODevice::ReadOnly));
        const QByteArray bytes = sample.readAll();
        EXPECT_EQ(write(m_input[1], bytes.constData(), size_t(bytes.size())), bytes.size());
        close(m_input[1]);
    }

private:
    int m_input[2] = {-1, -1};
};

TEST_F(KrmodelProgressLine, ShowsOnATerminalAndIsGoneInTheEnd)
{
    Terminal terminal(Converting("--binary"));
    EXPECT_TRUE(terminal.Shows("standard input: reading, "));
    GiveInput();
    EXPECT_EQ(terminal.End(), Done);
    EXPECT_EQ(terminal.Screen(), "");
    EXPECT_EQ(QFile(Path("out.stl")).size(), 84 + 50 * 12);
}

TEST_F(KrmodelProgressLine, LeavesRoomForWhatTheProgramTells)
{
    Terminal terminal(Converting("--verbose"));
    EXPECT_TRUE(terminal.Shows("standard input: reading, "));
    GiveInput();
    EXPECT_EQ(terminal.End(), Done);
    EXPECT_TRUE(terminal.Screen().startsWith("krmodel: standard input: 12 facets written to out.stl, "));
    EXPECT_EQ(terminal.Screen().count('\n'), 1);
}

TEST_F(KrmodelProgressLine, DoesNotShowWithQuiet)
{
    Terminal terminal(Converting("--quiet"));
    usleep(600'000); // twice as long as nothing is shown anyway
    GiveInput();
    EXPECT_EQ(terminal.End(), Done);
    EXPECT_EQ(terminal.GetBytes(), "");
}

} // namespace
