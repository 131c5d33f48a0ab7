#pragma once

#include <functional>
#include <vector>

#include "apps/krmodel/Jobs.h"
#include "apps/krmodel/PendingFile.h"

namespace krmodel {

/// What is to be done with one input.
struct Task {
    QString input;
    Job work; ///< prints its result on standard output, in the batch's form, or nothing but in Form::Json
    std::vector<PendingFile> outputs;
};

/// What tasks print. Each line has its line feed.
enum class Form {
    Tables, ///< an empty line stands between those of two tasks
    Lines,
    Json, ///< a line with an object, as JsonLine() makes it; a task that fails prints none and gets one
};

/// How the tasks of a command are done.
struct BatchOptions {
    size_t atOnce = 1; ///< tasks
    Limits limits = UsualLimits();
    qint64 inputBytes = 0;    ///< the largest input that is read; 0 sets no limit
    bool sharesMemory = true; ///< whether the limit on memory is one for all tasks at work together
    Form form = Form::Tables;
    bool isQuiet = false; ///< shows no progress, which else is shown where standard error is a terminal
};

/// Does the tasks in processes of their own, several at a time if the options say so; prints what each
/// printed, in their order. Goes on after a failure, which is told on standard error. Nothing is left of the
/// outputs of a task that failed.
/// @return the first failure's code; Interrupted when the program was told to stop
ExitCode RunTasks(const std::vector<Task>& tasks, const BatchOptions& options);

} // namespace krmodel
