#pragma once

namespace krmodel {

/// How the program ends. The numbers are documented and stay.
enum class ExitCode {
    Done = 0,
    Usage = 1,         ///< the command line cannot be understood
    CannotOpen = 2,    ///< an input is missing or may not be read
    NotReadable = 3,   ///< an input is not a file of its format, or is damaged
    Empty = 4,         ///< an input was read and holds no facet
    WriteFailed = 5,   ///< an output could not be written in full
    Stopped = 6,       ///< a limit was hit, or the process that worked on the file ended before its work
    Interrupted = 130, ///< the program was told to stop
};

} // namespace krmodel
