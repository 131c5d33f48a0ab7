#include "apps/krmodel/Stage.h"

#include <new>

#include <sys/mman.h>

namespace krmodel {

namespace {

// Only such a value may be shared by processes.
static_assert(std::atomic<Stage>::is_always_lock_free);

std::atomic<Stage>* ownStage = nullptr;

} // namespace

void EnterStage(Stage stage)
{
    if (ownStage)
        *ownStage = stage;
}

StageBoard::StageBoard(size_t jobCount) : m_size(jobCount + 1) // no job is a job count too, no byte is none
{
    void* const memory = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    m_stages = static_cast<std::atomic<Stage>*>(memory);
    for (size_t job = 0; job < jobCount; ++job)
        new (&m_stages[job]) std::atomic<Stage>(Stage::Loading);
}

StageBoard::~StageBoard()
{
    munmap(m_stages, m_size);
}

void StageBoard::BeginJob(size_t job) const
{
    ownStage = &m_stages[job];
}

} // namespace krmodel
