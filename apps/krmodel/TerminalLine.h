#pragma once

#include <QString>

namespace krmodel {

/// A line at the end of standard error, which must be a terminal, that is rewritten in place. It never wraps,
/// and is gone with this object. In the background, where it would disturb what is typed, it does not show.
///
/// It is faint, by the only escape codes that are used, unless NO_COLOR is set and not empty or TERM is
/// "dumb" or not set.
class TerminalLine {
public:
    /// Whether standard error is a terminal.
    static bool IsThere();

    TerminalLine();
    ~TerminalLine() { Erase(); }
    TerminalLine(const TerminalLine&) = delete;
    TerminalLine& operator=(const TerminalLine&) = delete;

    /// @param text  one line, cut off where the terminal ends
    void Show(const QString& text);
    void Erase();

private:
    bool m_isColoured;
    QString m_shown;
    int m_columns = 0; ///< that may have to be erased
};

} // namespace krmodel
