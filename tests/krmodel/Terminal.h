#pragma once

#include <functional>

#include <QByteArray>

namespace test {

/// What a process is given and sees of its terminal.
struct TerminalSettings {
    unsigned short width = 80;
    const char* noColour = "";  ///< NO_COLOR
    const char* kind = "xterm"; ///< TERM
};

/// A terminal with a process of its own.
class Terminal {
public:
    /// @param work  what the process does; gives its exit code
    explicit Terminal(const std::function<int()>& work, const TerminalSettings& settings = {});
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Waits until the process has written @p text. @return false when it ended before, or a minute passed
    bool Shows(const QByteArray& text);
    void Type(char key) const;
    /// Waits for the process. @return its exit code; -1 when it did not end by itself
    int End();

    int GetProcess() const { return m_process; }
    /// How it treats what is typed and written: whether it echoes, for example.
    QByteArray GetModes() const;
    /// All that was written.
    const QByteArray& GetBytes() const { return m_bytes; }
    /// What is to be seen at the end, without colours and blanks at the ends of lines. Behind a character
    /// that is two columns wide stands a "#".
    QByteArray Screen() const;
    /// The columns of the longest line that was ever seen.
    int LongestLine() const;

private:
    bool ReadSome();

    int m_process = 0;
    int m_descriptor = -1;
    QByteArray m_bytes;
};

/// A pipe at which jobs wait.
class Gate {
public:
    Gate();
    ~Gate();
    Gate(const Gate&) = delete;
    Gate& operator=(const Gate&) = delete;

    /// Lets one job through, which waits or will.
    void Open() const;
    /// For jobs. Those whom nobody lets through end with the test.
    void Wait() const;

private:
    int m_ends[2];
};

} // namespace test
