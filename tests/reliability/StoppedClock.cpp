#include "tests/reliability/StoppedClock.h"

#include <atomic>
#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

// The program's own definitions stand before those of the C library, for shared libraries too, which see what
// is not hidden.

namespace {

constexpr std::time_t kMoment = 1614834367;

std::atomic<bool> isStopped{false};

} // namespace

#pragma GCC visibility push(default)
extern "C" {

int clock_gettime(clockid_t clock, timespec* result) noexcept
{
    if (clock == CLOCK_REALTIME && isStopped) {
        *result = {kMoment, 0};
        return 0;
    }
    return static_cast<int>(syscall(SYS_clock_gettime, clock, result));
}

int gettimeofday(timeval* result, void*) noexcept
{
    timespec now = {};
    const int status = clock_gettime(CLOCK_REALTIME, &now);
    *result = {now.tv_sec, now.tv_nsec / 1000};
    return status;
}

std::time_t time(std::time_t* result) noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result != nullptr)
        *result = now.tv_sec;
    return now.tv_sec;
}
}
#pragma GCC visibility pop

namespace test {

StoppedClock::StoppedClock()
{
    isStopped = true;
}

StoppedClock::~StoppedClock()
{
    isStopped = false;
}

} // namespace test
