#include "apps/krmodel/Jobs.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "apps/krmodel/Guard.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

// The address space of a sanitized program is many times the memory that it uses.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kCanLimitMemory = false;
#else
constexpr bool kCanLimitMemory = true;
#endif

constexpr int kStopSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t stopSignal = 0;

void NoteStop(int signal)
{
    stopSignal = signal;
}

[[noreturn]] void ThrowSystemError(const char* what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

/// While it lives, the signals that stop the program are noted, and arrive only while Children::Wait() waits:
/// none can slip in between looking and waiting.
class StopWatch {
public:
    StopWatch()
    {
        stopSignal = 0;
        struct sigaction action = {};
        action.sa_handler = NoteStop;
        sigset_t blocked;
        sigemptyset(&blocked);
        for (size_t i = 0; i < std::size(kStopSignals); ++i) {
            sigaction(kStopSignals[i], &action, &m_before[i]);
            sigaddset(&blocked, kStopSignals[i]);
        }
        sigprocmask(SIG_BLOCK, &blocked, &m_mask);
    }
    ~StopWatch()
    {
        // People and process groups send such signals twice. The second must not end the program while it
        // clears up, which is all that is left to do.
        if (IsStopped())
            Ignore();
        else
            Restore();
    }
    StopWatch(const StopWatch&) = delete;
    StopWatch& operator=(const StopWatch&) = delete;

    /// As it was before, also for a child that is to be stopped as any program.
    void Restore() const
    {
        for (size_t i = 0; i < std::size(kStopSignals); ++i)
            sigaction(kStopSignals[i], &m_before[i], nullptr);
        sigprocmask(SIG_SETMASK, &m_mask, nullptr);
    }
    const sigset_t& GetMask() const { return m_mask; }
    /// One that waits to arrive counts: a child that got it too may have ended before.
    static bool IsStopped()
    {
        sigset_t waiting;
        sigemptyset(&waiting);
        sigpending(&waiting);
        return stopSignal != 0 || std::any_of(std::begin(kStopSignals), std::end(kStopSignals),
                                              [&](int signal) { return sigismember(&waiting, signal) == 1; });
    }

private:
    void Ignore() const
    {
        for (const int signal : kStopSignals)
            ::signal(signal, SIG_IGN);
        sigprocmask(SIG_SETMASK, &m_mask, nullptr);
    }

    struct sigaction m_before[std::size(kStopSignals)] = {};
    sigset_t m_mask = {};
};

void Limit(decltype(RLIMIT_AS) resource, qint64 most, qint64 grace = 0)
{
    rlimit limit = {};
    if (most <= 0 || getrlimit(resource, &limit) != 0)
        return;
    // A limit that stands already may be lower.
    limit.rlim_max = std::min(limit.rlim_max, rlim_t(most + grace));
    limit.rlim_cur = std::min(limit.rlim_max, rlim_t(most));
    setrlimit(resource, &limit);
}

void SetLimits(const Limits& limits)
{
    constexpr qint64 kSecondsToDie = 5;
    if (kCanLimitMemory)
        Limit(RLIMIT_AS, limits.memoryBytes);
    Limit(RLIMIT_CPU, limits.seconds, kSecondsToDie);
    Limit(RLIMIT_FSIZE, limits.fileBytes);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

/// Both ends are closed in the end, the child's one as soon as the child has it.
class Pipe {
public:
    Pipe()
    {
        if (pipe2(m_ends, O_CLOEXEC) != 0)
            ThrowSystemError("no pipe to a child process");
    }
    ~Pipe()
    {
        for (const int end : m_ends)
            if (end >= 0)
                close(end);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int GetWriteEnd() const { return m_ends[1]; }
    /// It is the caller's from then on.
    int TakeReadEnd() { return std::exchange(m_ends[0], -1); }

private:
    int m_ends[2] = {-1, -1};
};

struct Child {
    size_t index = 0; ///< of the job
    pid_t process = 0;
    int pipe = -1;
    int errorPipe = -1; ///< none when nobody looks on, and once it has come to its end
    QByteArray output;
    QByteArray errors;       ///< the begin of a line
    bool isFlooding = false; ///< it was killed for printing too much
};

/// What the program keeps of a child's output. It is a report; more than this is no report any more.
constexpr qint64 kMostOutput = qint64(256) << 20;

/// The end of the child: never returns into the program that was copied.
/// @param errorPipe  -1: standard error stays
[[noreturn]] void LiveAsChild(const Job& job, const Limits& limits, int pipe, int errorPipe, pid_t parent)
{
    // Nobody would take the result.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent || dup2(pipe, STDOUT_FILENO) < 0 ||
        (errorPipe >= 0 && dup2(errorPipe, STDERR_FILENO) < 0))
        _exit(int(ExitCode::Stopped));
    SetLimits(limits);
    const ExitCode code = Guard(job);
    std::fflush(stdout);
    std::exit(int(code));
}

Child Begin(size_t index, const Job& job, const Limits& limits, const StopWatch& watch, bool takesErrors)
{
    Pipe output;
    std::optional<Pipe> errors;
    if (takesErrors)
        errors.emplace();
    // What waits in a buffer would be printed twice.
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t process = fork();
    if (process == 0) {
        watch.Restore();
        LiveAsChild(job, limits, output.GetWriteEnd(), errors ? errors->GetWriteEnd() : -1, parent);
    }
    if (process < 0)
        ThrowSystemError("no child process");
    return {index, process, output.TakeReadEnd(), errors ? errors->TakeReadEnd() : -1, {}, {}};
}

QString DeathText(int signal, const Limits& limits)
{
    switch (signal) {
    case SIGXCPU:
        return QStringLiteral("stopped, it takes more than %1 s of processor time").arg(limits.seconds);
    case SIGXFSZ:
        return QStringLiteral("stopped, it writes a file of more than %1 bytes")
            .arg(CountText(limits.fileBytes));
    case SIGKILL:
        return QStringLiteral("stopped, its process was killed");
    default:
        return QStringLiteral("stopped, its process ended by signal %1").arg(signal);
    }
}

JobEnd EndOf(const Child& child, int status, const Limits& limits)
{
    if (child.isFlooding)
        return {ExitCode::Stopped,
                {},
                QStringLiteral("stopped, it prints more than %1 bytes").arg(CountText(kMostOutput))};
    if (!WIFEXITED(status))
        return {ExitCode::Stopped, child.output, DeathText(WTERMSIG(status), limits)};
    const int code = WEXITSTATUS(status);
    if (code <= int(ExitCode::Stopped))
        return {ExitCode(code), child.output, {}};
    return {ExitCode::Stopped, child.output, QStringLiteral("stopped, its process ended with %1").arg(code)};
}

int WaitFor(pid_t process)
{
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// What is there to be read from a pipe, up to 64 KiB; nothing at its end.
std::optional<QByteArray> ReadFrom(int pipe)
{
    char bytes[1 << 16];
    const ssize_t count = read(pipe, bytes, sizeof bytes);
    if (count < 0 && errno == EINTR)
        return QByteArray();
    return count > 0 ? std::make_optional(QByteArray(bytes, int(count))) : std::nullopt;
}

/// The children at work.
class Children {
public:
    Children(const Limits& limits, const StopWatch& watch, const Onlooker* onlooker)
        : m_limits(limits), m_watch(watch), m_onlooker(onlooker)
    {}
    ~Children() { Kill(); }
    Children(const Children&) = delete;
    Children& operator=(const Children&) = delete;

    size_t GetCount() const { return m_children.size(); }
    void Add(size_t index, const Job& job)
    {
        m_children.push_back(Begin(index, job, m_limits, m_watch, m_onlooker != nullptr));
    }

    /// Waits until a child says something or ends, the onlooker wants to look, or the program is told to
    /// stop.
    /// @param onEnd  gets index and end of each child that ended
    template<class OnEnd>
    void Wait(const OnEnd& onEnd)
    {
        constexpr timespec kInterval = {0, Onlooker::kLookIntervalMs * 1'000'000};
        const size_t count = m_children.size();
        std::vector<pollfd> pipes;
        for (const Child& child : m_children)
            pipes.push_back({child.pipe, POLLIN, 0});
        for (const Child& child : m_children)
            pipes.push_back({child.errorPipe, POLLIN, 0}); // passed over when below 0
        if (ppoll(pipes.data(), pipes.size(), m_onlooker ? &kInterval : nullptr, &m_watch.GetMask()) < 0)
            return;
        for (size_t i = count; i-- > 0;) {
            if (pipes[count + i].revents != 0)
                TakeErrors(m_children[i]);
            if (pipes[i].revents != 0 && !Take(m_children[i]))
                Bury(i, onEnd);
        }
    }

    void LetLook(size_t begunCount) const
    {
        if (!m_onlooker)
            return;
        std::vector<JobAtWork> atWork;
        for (const Child& child : m_children)
            atWork.push_back({child.index, child.process});
        m_onlooker->look(atWork, begunCount - atWork.size());
    }

private:
    /// @return false when the child's output has come to its end
    static bool Take(Child& child)
    {
        const std::optional<QByteArray> bytes = ReadFrom(child.pipe);
        if (!bytes)
            return false;
        child.isFlooding = child.output.size() + bytes->size() > kMostOutput;
        if (child.isFlooding)
            kill(child.process, SIGKILL);
        else
            child.output.append(*bytes);
        return !child.isFlooding;
    }

    /// Two children's lines must not mix, so what is no whole line yet waits, but for what will hardly be
    /// one.
    /// @return false when there will be no more
    bool TakeErrors(Child& child) const
    {
        constexpr int kLongestLine = 1 << 16;
        const std::optional<QByteArray> bytes = ReadFrom(child.errorPipe);
        child.errors += bytes.value_or(QByteArray());
        const bool waits = bytes && child.errors.size() < kLongestLine;
        const int whole = waits ? child.errors.lastIndexOf('\n') + 1 : child.errors.size();
        if (whole > 0)
            m_onlooker->takeErrors(child.errors.left(whole));
        child.errors.remove(0, whole);
        if (!bytes)
            close(std::exchange(child.errorPipe, -1));
        return bytes.has_value();
    }

    template<class OnEnd>
    void Bury(size_t i, const OnEnd& onEnd)
    {
        Child child = m_children[i];
        m_children.erase(m_children.begin() + std::ptrdiff_t(i));
        close(child.pipe);
        // What it told of its end comes before its end.
        while (child.errorPipe >= 0 && TakeErrors(child)) {
        }
        onEnd(child.index, EndOf(child, WaitFor(child.process), m_limits));
    }

    void Kill()
    {
        for (const Child& child : m_children)
            kill(child.process, SIGKILL);
        for (const Child& child : m_children) {
            for (const int pipe : {child.pipe, child.errorPipe})
                if (pipe >= 0)
                    close(pipe);
            WaitFor(child.process);
        }
    }

    const Limits& m_limits;
    const StopWatch& m_watch;
    const Onlooker* m_onlooker;
    std::vector<Child> m_children;
};

} // namespace

Limits UsualLimits()
{
    constexpr qint64 kTenMinutes = 600;
    constexpr qint64 kLargestFile = qint64(64) << 30;
    const qint64 pages = sysconf(_SC_PHYS_PAGES), pageSize = sysconf(_SC_PAGESIZE);
    return {std::max(pages * pageSize / 2, qint64(0)), kTenMinutes, kLargestFile};
}

bool RunJobs(const std::vector<Job>& jobs, size_t atOnce, const Limits& limits,
             const std::function<void(size_t index, const JobEnd& end)>& onEnd, const Onlooker* onlooker)
{
    const StopWatch watch;
    Children children(limits, watch, onlooker);
    std::map<size_t, JobEnd> ended; // out of order
    size_t begun = 0, told = 0;
    while (told < jobs.size() && !StopWatch::IsStopped()) {
        while (begun < jobs.size() && children.GetCount() < std::max<size_t>(atOnce, 1)) {
            children.Add(begun, jobs[begun]);
            ++begun;
        }
        children.Wait([&](size_t index, JobEnd end) { ended.emplace(index, std::move(end)); });
        for (auto next = ended.find(told); next != ended.end() && !StopWatch::IsStopped();
             next = ended.find(told)) {
            onEnd(told++, next->second);
            ended.erase(next);
        }
        children.LetLook(begun);
    }
    return told == jobs.size();
}

} // namespace krmodel
