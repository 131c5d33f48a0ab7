#pragma once

#include <functional>
#include <vector>

#include <sys/types.h>

#include <QByteArray>
#include <QString>

#include "apps/krmodel/ExitCode.h"

namespace krmodel {

/// What a job may use. 0 sets no limit.
struct Limits {
    qint64 memoryBytes = 0; ///< address space
    qint64 seconds = 0;     ///< of processor time, of all its threads together
    qint64 fileBytes = 0;   ///< the size of each file that it writes
};

/// Half of the computer's memory, ten minutes, 64 GiB.
Limits UsualLimits();

/// How a job ended.
struct JobEnd {
    ExitCode code = ExitCode::Done;
    QByteArray output; ///< what it printed on standard output
    QString death;     ///< why the process ended before the job did; empty when it ended by itself
};

/// Work that is done in a process of its own, so that no file can take the program down: its result is what
/// it prints, and the files that it writes.
using Job = std::function<ExitCode()>;

/// A job whose process is at work.
struct JobAtWork {
    size_t index = 0;
    pid_t process = 0;
};

/// Looks on while jobs are at work.
struct Onlooker {
    static constexpr int kLookIntervalMs = 100;
    /// Called at this interval, and when a job says something. The job that began first is the first one.
    std::function<void(const std::vector<JobAtWork>& atWork, size_t endedCount)> look;
    /// Gets what jobs print on standard error, in whole lines, which comes here instead.
    std::function<void(const QByteArray& lines)> takeErrors;
};

/// Carries out jobs in child processes, up to @p atOnce at a time. Call it from the only thread.
///
/// The children are silent on standard output; what they print there comes with their end. Standard error is
/// theirs too, unless somebody looks on. When the program is told to stop (by interrupt, termination or
/// hang-up), all children are killed, no further job begins, and further signals of these kinds are ignored
/// from then on: the program has nothing left to do but clear up and end.
/// @param onEnd  gets the index and the end of each job, in the order of the jobs
/// @param onlooker  null: nobody looks on
/// @return false when the program was told to stop; jobs without an end get none then
bool RunJobs(const std::vector<Job>& jobs, size_t atOnce, const Limits& limits,
             const std::function<void(size_t index, const JobEnd& end)>& onEnd,
             const Onlooker* onlooker = nullptr);

} // namespace krmodel
