#include "apps/krmodel/Batch.h"

#include <cstdio>

namespace krmodel {

namespace {

void Discard(const Task& task)
{
    for (const PendingFile& output : task.outputs)
        output.Discard();
}

void PrintDeath(const Task& task, const QString& death)
{
    std::fprintf(stderr, "krmodel: %s: %s\n", qUtf8Printable(task.input), qUtf8Printable(death));
}

} // namespace

ExitCode RunTasks(const std::vector<Task>& tasks, const BatchOptions& options)
{
    std::vector<Job> jobs;
    for (const Task& task : tasks)
        jobs.push_back(task.work);

    ExitCode firstFailure = ExitCode::Done;
    bool hasPrinted = false;
    const auto onEnd = [&](size_t index, const JobEnd& end) {
        if (!end.death.isEmpty()) {
            PrintDeath(tasks[index], end.death);
        } else if (!end.output.isEmpty()) {
            std::fputs(hasPrinted ? "\n" : "", stdout);
            std::fwrite(end.output.constData(), 1, size_t(end.output.size()), stdout);
            std::fflush(stdout);
            hasPrinted = true;
        }
        firstFailure = firstFailure == ExitCode::Done ? end.code : firstFailure;
    };
    const bool isThrough = RunJobs(jobs, options.atOnce, options.limits, onEnd);
    for (const Task& task : tasks)
        Discard(task);
    return isThrough ? firstFailure : ExitCode::Interrupted;
}

} // namespace krmodel
