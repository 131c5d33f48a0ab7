#pragma once

#include <map>
#include <optional>
#include <vector>

#include <QElapsedTimer>

#include "apps/krmodel/Jobs.h"
#include "apps/krmodel/Stage.h"
#include "apps/krmodel/TerminalLine.h"

namespace krmodel {

/// How many bytes of the file the process has read, by where it stands in it; nothing when it does not have
/// it open.
std::optional<qint64> BytesRead(pid_t process, const QString& fileName);

/// What a person sees on a terminal of jobs that take their time:
///
///   part.stl: 45 % of 27.3 MB read
///   3 of 12 files done, 2 at work; part.step: read, tessellating, 14 s
///
/// Readers are looked at from outside and know nothing of it. Who prints something else calls Erase() before.
class Progress {
public:
    /// @param inputs  file names by the index of their jobs
    explicit Progress(std::vector<QString> inputs);

    /// For the job's process.
    void BeginJob(size_t job) const { m_stages.BeginJob(job); }
    void Look(const std::vector<JobAtWork>& atWork, size_t endedCount);
    void Erase() { m_line.Erase(); }

private:
    /// What is known of a job from earlier looks.
    struct Seen {
        qint64 beginMs = 0;
        bool wasOpen = false;
    };

    QString Counts(size_t atWorkCount, size_t endedCount) const;
    QString StateOf(const JobAtWork& job);
    QString LoadingState(const JobAtWork& job);
    QString SecondsOf(const JobAtWork& job) const;

    std::vector<QString> m_inputs;
    StageBoard m_stages;
    TerminalLine m_line;
    QElapsedTimer m_clock;
    qint64 m_nextLookMs;
    std::map<size_t, Seen> m_seen; ///< by job
};

} // namespace krmodel
