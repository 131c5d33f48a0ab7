#include "tests/krmodel/Terminal.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <QRegularExpression>
#include <QStringList>

namespace test {

namespace {

constexpr int kMinuteMs = 60'000;

/// What the terminal shows, a character for each column. The only escape codes that are expected choose
/// colours: they end with an m.
QString InColumns(const QByteArray& bytes)
{
    constexpr ushort kFirstWide = 0x1100;
    const QString text = QString::fromUtf8(bytes);
    QString columns;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('\033'))
            i = text.indexOf(QLatin1Char('m'), i);
        else
            columns += text[i];
        if (text[i].unicode() >= kFirstWide)
            columns += QLatin1Char('#');
    }
    return columns;
}

/// What stands in a line when its carriage returns have been followed.
QString Overwritten(const QString& line)
{
    QString seen;
    for (const QString& text : line.split(QLatin1Char('\r')))
        seen = text + seen.mid(text.size());
    while (seen.endsWith(QLatin1Char(' ')))
        seen.chop(1);
    return seen;
}

} // namespace

Terminal::Terminal(const std::function<int()>& work, const TerminalSettings& settings)
{
    winsize size = {};
    size.ws_row = 24;
    size.ws_col = settings.width;
    m_process = forkpty(&m_descriptor, nullptr, nullptr, &size);
    if (m_process < 0)
        throw std::runtime_error("no terminal");
    if (m_process > 0)
        return;
    setenv("NO_COLOR", settings.noColour, 1);
    setenv("TERM", settings.kind, 1);
    _exit(work());
}

Terminal::~Terminal()
{
    if (m_process > 0)
        End();
    close(m_descriptor);
}

bool Terminal::ReadSome()
{
    char bytes[4096];
    pollfd here = {m_descriptor, POLLIN, 0};
    const ssize_t count = poll(&here, 1, kMinuteMs) == 1 ? read(m_descriptor, bytes, sizeof bytes) : -1;
    if (count > 0)
        m_bytes.append(bytes, int(count));
    return count > 0;
}

bool Terminal::Shows(const QByteArray& text)
{
    while (!m_bytes.contains(text))
        if (!ReadSome())
            return false;
    return true;
}

void Terminal::Type(char key) const
{
    if (write(m_descriptor, &key, 1) != 1)
        throw std::runtime_error("cannot type");
}

int Terminal::End()
{
    while (ReadSome()) {
    }
    int status = 0;
    kill(m_process, SIGHUP); // of no effect on one that has ended
    waitpid(m_process, &status, 0);
    m_process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

QByteArray Terminal::GetModes() const
{
    termios modes = {};
    if (tcgetattr(m_descriptor, &modes) != 0)
        throw std::runtime_error("no terminal");
    return {reinterpret_cast<const char*>(&modes), int(sizeof modes)};
}

QByteArray Terminal::Screen() const
{
    const QString text = InColumns(m_bytes).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    QStringList lines;
    for (const QString& line : text.split(QLatin1Char('\n')))
        lines << Overwritten(line);
    return lines.join(QLatin1Char('\n')).toUtf8();
}

int Terminal::LongestLine() const
{
    int longest = 0;
    for (const QString& line : InColumns(m_bytes).split(QRegularExpression(QStringLiteral("[\r\n]"))))
        longest = std::max(longest, line.size());
    return longest;
}

Gate::Gate()
{
    if (pipe(m_ends) != 0)
        throw std::runtime_error("no pipe");
}

Gate::~Gate()
{
    for (const int end : m_ends)
        close(end);
}

void Gate::Open() const
{
    if (write(m_ends[1], "x", 1) != 1)
        throw std::runtime_error("the gate is stuck");
}

void Gate::Wait() const
{
    // Were it open here too, the end of the test would not be noticed.
    close(m_ends[1]);
    char byte;
    while (read(m_ends[0], &byte, 1) < 0) {
    }
}

} // namespace test
