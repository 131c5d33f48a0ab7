#include "tests/cad/RunInChild.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <execinfo.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#if defined(__SANITIZE_ADDRESS__)
#define KRCORE_HAS_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KRCORE_HAS_ADDRESS_SANITIZER
#endif
#endif
#ifdef KRCORE_HAS_ADDRESS_SANITIZER
#include <sanitizer/common_interface_defs.h>
#endif

namespace test {

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kDiedInOpenCascade = 2;
constexpr int kMostFrames = 200;
constexpr int kCrashSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGXCPU};
// Signal handlers run on a stack of their own: recursion without end is one of the ways to die.
constexpr std::size_t kHandlerStackSize = std::size_t(1) << 20;

const char* FileNameOf(const char* path)
{
    const char* const slash = std::strrchr(path, '/');
    return slash != nullptr ? slash + 1 : path;
}

// OpenCASCADE never calls us, so it is at work if its frame is met before any of ours. The C and C++
// libraries, the sanitizers' runtime and TBB are passed over.
bool IsOpenCascadeAtWork()
{
    void* frames[kMostFrames];
    const int count = backtrace(frames, kMostFrames);
    Dl_info self;
    const bool isKnown = dladdr(reinterpret_cast<void*>(&IsOpenCascadeAtWork), &self) != 0;
    for (int i = 0; isKnown && i < count; ++i) {
        Dl_info info;
        if (dladdr(frames[i], &info) == 0)
            continue;
        const char* const file = FileNameOf(info.dli_fname);
        if (std::strncmp(file, "libTK", 5) == 0)
            return true;
        if (std::strncmp(file, "libKRCore", 9) == 0)
            return false;
    }
    return false;
}

[[noreturn]] void EndByWhoIsAtWork()
{
    _exit(IsOpenCascadeAtWork() ? kDiedInOpenCascade : kFailed);
}

void OnSignal(int)
{
    EndByWhoIsAtWork();
}

void CatchSignals()
{
    static char handlerStack[kHandlerStackSize];
    stack_t stack = {};
    stack.ss_sp = handlerStack;
    stack.ss_size = sizeof handlerStack;
    sigaltstack(&stack, nullptr);
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_ONSTACK;
    for (const int signal : kCrashSignals)
        sigaction(signal, &action, nullptr);
#ifdef KRCORE_HAS_ADDRESS_SANITIZER
    __sanitizer_set_death_callback(EndByWhoIsAtWork);
#endif
}

void LimitProcessorTime(unsigned seconds)
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    rlimit limit{};
    limit.rlim_cur = static_cast<rlim_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) + seconds;
    limit.rlim_max = limit.rlim_cur + seconds;
    setrlimit(RLIMIT_CPU, &limit);
}

[[noreturn]] void RunAsChild(const std::function<bool()>& call, unsigned processorSeconds)
{
    CatchSignals();
    LimitProcessorTime(processorSeconds);
    const bool isFine = call();
    // Nothing of the parent's is to be written or destroyed here.
    _exit(isFine ? kDone : kFailed);
}

bool IsCrash(int signal)
{
    return std::find(std::begin(kCrashSignals), std::end(kCrashSignals), signal) != std::end(kCrashSignals);
}

// A child that crashes tells who was at work, or ends by one of these signals if it cannot.
ChildEnd EndOf(int status)
{
    if (WIFSIGNALED(status))
        return IsCrash(WTERMSIG(status)) ? ChildEnd::Failed : ChildEnd::KilledFromOutside;
    switch (WEXITSTATUS(status)) {
    case kDone:
        return ChildEnd::Done;
    case kDiedInOpenCascade:
        return ChildEnd::DiedInOpenCascade;
    default:
        return ChildEnd::Failed;
    }
}

// The first walk along a stack allocates, which a handler must not.
void GetReadyToWalkTheStack()
{
    static const bool kIsReady = (IsOpenCascadeAtWork(), true);
    static_cast<void>(kIsReady);
}

// The fuzzer's clock sends signals meanwhile.
bool HasEnded(pid_t child, int& status)
{
    pid_t ended = -1;
    do
        ended = waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    return ended == child;
}

} // namespace

ChildEnd RunInChild(const std::function<bool()>& call, unsigned processorSeconds)
{
    GetReadyToWalkTheStack();
    const pid_t child = fork();
    if (child == 0)
        RunAsChild(call, processorSeconds);
    int status = 0;
    if (child < 0 || !HasEnded(child, status))
        return ChildEnd::KilledFromOutside;
    const ChildEnd end = EndOf(status);
    if (end == ChildEnd::Failed)
        std::fprintf(stderr, "the child failed with the wait status 0x%x\n", static_cast<unsigned>(status));
    return end;
}

} // namespace test
