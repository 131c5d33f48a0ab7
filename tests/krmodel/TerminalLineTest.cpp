#include "apps/krmodel/TerminalLine.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/krmodel/Terminal.h"

namespace {

using krmodel::TerminalLine;
using test::Terminal;
using test::TerminalSettings;

constexpr unsigned short kUnknownWidth = 0;

QString Copies(const char* text, int count)
{
    return QString::fromUtf8(text).repeated(count);
}

/// What is written of @p text before it is erased.
QByteArray Shown(const QString& text, unsigned short width)
{
    TerminalSettings settings;
    settings.noColour = "1";
    settings.width = width;
    Terminal terminal(
        [&] {
            TerminalLine().Show(text);
            return 0;
        },
        settings);
    EXPECT_EQ(terminal.End(), 0);
    const QByteArray bytes = terminal.GetBytes();
    return bytes.left(bytes.indexOf('\r'));
}

/// Does @p work in a process of its own, which belongs to another group once it has done @p leave.
template<class Leave, class Work>
int RunElsewhere(const Leave& leave, const Work& work)
{
    const pid_t child = fork();
    if (child == 0) {
        const bool hasLeft = leave() >= 0;
        if (hasLeft)
            work();
        _exit(hasLeft ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

TEST(TerminalLine, TakesATerminalOfUnknownWidthForOneOfEightyColumns)
{
    EXPECT_EQ(Shown(Copies("x", 100), kUnknownWidth), QByteArray(77, 'x'));
    EXPECT_EQ(Shown(Copies("x", 100), 100), QByteArray(97, 'x'));
}

TEST(TerminalLine, IsNotCutBetweenTheHalvesOfACharacter)
{
    // Each is two columns wide and two units long: of 7 columns the last one stays free.
    EXPECT_EQ(Shown(Copies("\xf0\x9f\x93\xa6", 9), 10), Copies("\xf0\x9f\x93\xa6", 3).toUtf8());
}

TEST(TerminalLine, IsNeitherShownNorErasedInTheBackground)
{
    Terminal terminal([] {
        TerminalLine line;
        line.Show(QStringLiteral("before"));
        const auto leave = [] { return setpgid(0, 0); };
        return RunElsewhere(leave, [&] {
            line.Show(QStringLiteral("behind"));
            line.Erase();
        });
    });
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_TRUE(terminal.GetBytes().contains("before"));
    EXPECT_FALSE(terminal.GetBytes().contains("behind"));
    EXPECT_EQ(terminal.GetBytes().count('\r'), 2) << "it is erased once, before the terminal's process ends";
}

TEST(TerminalLine, IsShownOnATerminalThatHasNoForeground)
{
    Terminal terminal([] {
        const auto leave = [] { return setsid(); };
        return RunElsewhere(leave, [] { TerminalLine().Show(QStringLiteral("seen")); });
    });
    EXPECT_EQ(terminal.End(), 0);
    EXPECT_TRUE(terminal.GetBytes().contains("seen"));
}

} // namespace
