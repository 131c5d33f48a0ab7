#pragma once

#include <atomic>
#include <cstddef>

namespace krmodel {

/// What the work on a file is at.
enum class Stage : unsigned char {
    Loading, ///< at first
    Working,
    Drawing,
    Writing,
    Comparing,
};

/// Tells who looks on, if somebody does.
void EnterStage(Stage stage);

/// The stages of jobs, in memory that processes share.
class StageBoard {
public:
    /// @throws std::bad_alloc
    explicit StageBoard(size_t jobCount);
    ~StageBoard();
    StageBoard(const StageBoard&) = delete;
    StageBoard& operator=(const StageBoard&) = delete;

    Stage Get(size_t job) const { return m_stages[job]; }
    /// For the job's process: what it enters from now on is shown here.
    void BeginJob(size_t job) const;

private:
    size_t m_size;
    std::atomic<Stage>* m_stages;
};

} // namespace krmodel
