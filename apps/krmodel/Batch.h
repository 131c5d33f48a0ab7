#pragma once

#include <functional>
#include <vector>

#include "apps/krmodel/Jobs.h"
#include "apps/krmodel/PendingFile.h"

namespace krmodel {

/// What is to be done with one input.
struct Task {
    QString input;
    Job work; ///< prints its result on standard output, with a line feed at its end, or nothing
    std::vector<PendingFile> outputs;
};

/// How the tasks of a command are done.
struct BatchOptions {
    size_t atOnce = 1; ///< tasks
    Limits limits = UsualLimits();
};

/// Does the tasks in processes of their own, several at a time if the options say so; prints what each
/// printed, in their order, with an empty line between two that are tables. Goes on after a failure. Nothing
/// is left of the outputs of a task that failed.
/// @return the first failure's code; Interrupted when the program was told to stop
ExitCode RunTasks(const std::vector<Task>& tasks, const BatchOptions& options);

} // namespace krmodel
