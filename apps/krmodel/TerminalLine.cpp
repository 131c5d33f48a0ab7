#include "apps/krmodel/TerminalLine.h"

#include <algorithm>

#include <sys/ioctl.h>
#include <unistd.h>

namespace krmodel {

namespace {

constexpr int kUsualWidth = 80;
/// What a terminal shows of an interrupt that is typed: "^C".
constexpr int kEchoWidth = 2;

constexpr char kFaint[] = "\033[2m", kUsual[] = "\033[0m";

/// https://no-color.org
bool WantsColour()
{
    const QByteArray terminal = qgetenv("TERM");
    return qEnvironmentVariableIsEmpty("NO_COLOR") && !terminal.isEmpty() && terminal != "dumb";
}

/// Asked for each time: windows change their size.
int TerminalWidth()
{
    winsize size = {};
    const bool isKnown = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : kUsualWidth;
}

/// A terminal that is not the controlling one has no foreground and shows all.
bool IsInForeground()
{
    const pid_t group = tcgetpgrp(STDERR_FILENO);
    return group < 0 || group == getpgrp();
}

/// At most: from Hangul on many characters are wide, and halves of pairs are one each.
int ColumnsOf(QChar character)
{
    constexpr ushort kFirstWide = 0x1100;
    return character.unicode() < kFirstWide || character.isSurrogate() ? 1 : 2;
}

/// The last column stays free: a character there may begin a new line.
QString Fitting(const QString& text, int& columns)
{
    const int most = std::max(0, TerminalWidth() - kEchoWidth - 1);
    columns = 0;
    for (int i = 0; i < text.size(); ++i) {
        if (columns + ColumnsOf(text[i]) > most) {
            // Not between the halves of a pair.
            const bool splitsPair = i > 0 && text[i].isLowSurrogate();
            columns -= splitsPair ? 1 : 0;
            return text.left(splitsPair ? i - 1 : i);
        }
        columns += ColumnsOf(text[i]);
    }
    return text;
}

/// At once, so that nobody sees half of it. Of a terminal that takes nothing more nothing is expected.
void Write(const QByteArray& bytes)
{
    [[maybe_unused]] const ssize_t count = write(STDERR_FILENO, bytes.constData(), size_t(bytes.size()));
}

QByteArray ErasingBytes(int columns)
{
    if (columns == 0)
        return {};
    return '\r' + QByteArray(std::min(columns + kEchoWidth, TerminalWidth() - 1), ' ') + '\r';
}

} // namespace

bool TerminalLine::IsThere()
{
    return isatty(STDERR_FILENO) == 1;
}

TerminalLine::TerminalLine() : m_isColoured(WantsColour()) {}

void TerminalLine::Show(const QString& text)
{
    int columns = 0;
    const QString fitting = Fitting(text, columns);
    if (fitting == m_shown || !IsInForeground())
        return;
    const QByteArray bytes = fitting.toUtf8();
    Write(ErasingBytes(m_columns) + (m_isColoured ? kFaint + bytes + kUsual : bytes));
    m_shown = fitting;
    m_columns = columns;
}

void TerminalLine::Erase()
{
    if (m_columns > 0 && IsInForeground())
        Write(ErasingBytes(m_columns));
    m_shown.clear();
    m_columns = 0;
}

} // namespace krmodel
