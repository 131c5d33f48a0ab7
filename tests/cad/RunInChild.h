#pragma once

#include <functional>

namespace test {

/// How a child process ended.
enum class ChildEnd {
    Done,              ///< by itself, and what was called returned true
    Failed,            ///< what was called returned false, or died in code of this project's
    DiedInOpenCascade, ///< ended by a signal, or by a limit, while OpenCASCADE was at work
    KilledFromOutside  ///< or could not be started: the system is short of something
};

/// Calls @p call in a process of its own, which has the memory of this one but none of its other threads: TBB
/// must not have started any. OpenCASCADE crashes on some damaged files, follows null pointers mostly; what
/// it cannot survive ends there, and its place on the stack tells it from a crash of ours. The child may use
/// @p processorSeconds.
ChildEnd RunInChild(const std::function<bool()>& call, unsigned processorSeconds);

} // namespace test
