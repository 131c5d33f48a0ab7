#pragma once

#if defined(__SANITIZE_THREAD__)
#define KRCORE_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KRCORE_THREAD_SANITIZER
#endif
#endif

#ifdef KRCORE_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
#endif

namespace kr::cad {

/// Tells the thread sanitizer what it cannot see, as TBB is not built for it: tasks begin after their parent
/// has started them, and it goes on after they have ended. Of tasks among each other nothing is said. Costs
/// nothing elsewhere.
class TaskOrder {
public:
    TaskOrder() { Release(m_beginning); }
    ~TaskOrder() { Acquire(m_end); }
    TaskOrder(const TaskOrder&) = delete;
    TaskOrder& operator=(const TaskOrder&) = delete;

    /// Stands in a task as long as it runs.
    class Task {
    public:
        explicit Task(TaskOrder& order) : m_order(order) { Acquire(m_order.m_beginning); }
        ~Task() { Release(m_order.m_end); }
        Task(const Task&) = delete;
        Task& operator=(const Task&) = delete;

    private:
        TaskOrder& m_order;
    };

private:
#ifdef KRCORE_THREAD_SANITIZER
    static void Acquire(char& address)
    {
        __tsan_acquire(&address);
    }
    static void Release(char& address)
    {
        __tsan_release(&address);
    }
#else
    static void Acquire(char&) {}
    static void Release(char&) {}
#endif

    char m_beginning = 0;
    char m_end = 0;
};

} // namespace kr::cad
