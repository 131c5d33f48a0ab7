#pragma once

#include <functional>
#include <vector>

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

/// Carries out jobs in child processes, up to @p atOnce at a time. Call it from the only thread.
///
/// The children are silent on standard output; what they print there comes with their end. Standard error is
/// theirs too. When the program is told to stop (by interrupt, termination or hang-up), all children are
/// killed, no further job begins, and further signals of these kinds are ignored from then on: the program
/// has nothing left to do but clear up and end.
/// @param onEnd  gets the index and the end of each job, in the order of the jobs
/// @return false when the program was told to stop; jobs without an end get none then
bool RunJobs(const std::vector<Job>& jobs, size_t atOnce, const Limits& limits,
             const std::function<void(size_t index, const JobEnd& end)>& onEnd);

} // namespace krmodel
