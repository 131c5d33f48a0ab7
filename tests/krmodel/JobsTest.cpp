#include "apps/krmodel/Jobs.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

namespace {

using krmodel::ExitCode;
using krmodel::Job;
using krmodel::JobAtWork;
using krmodel::JobEnd;
using krmodel::Limits;
using krmodel::Onlooker;
using krmodel::RunJobs;

constexpr size_t kOneAtATime = 1;

struct Ends {
    std::vector<size_t> order;
    std::vector<JobEnd> ends;
    bool isThrough = false;
};

Ends RunAll(const std::vector<Job>& jobs, size_t atOnce = kOneAtATime, const Limits& limits = {})
{
    Ends ends;
    ends.isThrough = RunJobs(jobs, atOnce, limits, [&](size_t index, const JobEnd& end) {
        ends.order.push_back(index);
        ends.ends.push_back(end);
    });
    return ends;
}

JobEnd RunOne(const Job& job, const Limits& limits = {})
{
    const Ends ends = RunAll({job}, kOneAtATime, limits);
    EXPECT_TRUE(ends.isThrough);
    EXPECT_EQ(ends.ends.size(), 1U);
    return ends.ends.at(0);
}

Job Print(const char* text, ExitCode code = ExitCode::Done)
{
    return [=] {
        std::fputs(text, stdout);
        return code;
    };
}

[[noreturn]] void UseProcessorForever()
{
    for (volatile unsigned i = 0;; i = i + 1) {
    }
}

TEST(Jobs, BringWhatTheyPrintedAndTheirCode)
{
    const JobEnd end = RunOne(Print("seen\n", ExitCode::Empty));
    EXPECT_EQ(end.code, ExitCode::Empty);
    EXPECT_EQ(end.output, QByteArray("seen\n"));
    EXPECT_EQ(end.death, QString());
}

TEST(Jobs, BringAllOfALongOutput)
{
    const QByteArray text(3 << 20, 'x');
    const JobEnd end = RunOne([&] {
        std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
        return ExitCode::Done;
    });
    EXPECT_EQ(end.output, text);
}

TEST(Jobs, EndInTheirOrderHoweverManyRunAtOnce)
{
    const Job slow = [] {
        usleep(50'000);
        return ExitCode::Done;
    };
    const Ends ends = RunAll({slow, Print("b"), Print("c"), slow, Print("e")}, 3);
    EXPECT_TRUE(ends.isThrough);
    EXPECT_EQ(ends.order, (std::vector<size_t>{0, 1, 2, 3, 4}));
    EXPECT_EQ(ends.ends[4].output, QByteArray("e"));
}

TEST(Jobs, RunAtTheSameTime)
{
    // Each of the two waits for the other's byte.
    int there[2], back[2];
    ASSERT_EQ(pipe(there) + pipe(back), 0);
    const auto meet = [](int from, int to) {
        char byte = 'x';
        alarm(30);
        return write(to, &byte, 1) == 1 && read(from, &byte, 1) == 1 ? ExitCode::Done : ExitCode::Empty;
    };
    const Ends ends =
        RunAll({[&] { return meet(there[0], back[1]); }, [&] { return meet(back[0], there[1]); }}, 2);
    EXPECT_EQ(ends.ends[0].code, ExitCode::Done);
    EXPECT_EQ(ends.ends[1].code, ExitCode::Done);
    for (const int end : {there[0], there[1], back[0], back[1]})
        close(end);
}

TEST(Jobs, LeaveTheProgramAsItIs)
{
    int value = 1;
    RunOne([&] {
        value = 2;
        return ExitCode::Done;
    });
    EXPECT_EQ(value, 1);
}

TEST(Jobs, GoOnAfterOneThatCrashed)
{
    const Ends ends = RunAll({[]() -> ExitCode {
                                  std::signal(SIGSEGV, SIG_DFL);
                                  std::raise(SIGSEGV);
                                  return ExitCode::Done;
                              },
                              Print("b")});
    EXPECT_TRUE(ends.isThrough);
    EXPECT_EQ(ends.ends[0].code, ExitCode::Stopped);
    EXPECT_EQ(ends.ends[0].death, QStringLiteral("stopped, its process ended by signal 11"));
    EXPECT_EQ(ends.ends[1].output, QByteArray("b"));
}

TEST(Jobs, GoOnAfterOneThatWasKilled)
{
    const JobEnd end = RunOne([]() -> ExitCode {
        std::raise(SIGKILL);
        return ExitCode::Done;
    });
    EXPECT_EQ(end.code, ExitCode::Stopped);
    EXPECT_EQ(end.death, QStringLiteral("stopped, its process was killed"));
}

TEST(Jobs, AreStoppedWhenTheyLeaveWithACodeOfNoMeaning)
{
    const JobEnd end = RunOne([]() -> ExitCode { _exit(77); });
    EXPECT_EQ(end.code, ExitCode::Stopped);
    EXPECT_EQ(end.death, QStringLiteral("stopped, its process ended with 77"));
}

TEST(Jobs, AreStoppedAtTheLimitOfProcessorTime)
{
    Limits limits;
    limits.seconds = 1;
    const JobEnd end = RunOne([]() -> ExitCode { UseProcessorForever(); }, limits);
    EXPECT_EQ(end.code, ExitCode::Stopped);
    EXPECT_EQ(end.death, QStringLiteral("stopped, it takes more than 1 s of processor time"));
}

TEST(Jobs, AreStoppedAtTheLimitOfAFilesSize)
{
    const QTemporaryDir directory;
    const QString name = directory.filePath(QStringLiteral("long"));
    Limits limits;
    limits.fileBytes = 1000;
    const JobEnd end = RunOne(
        [&] {
            QFile file(name);
            return file.open(QIODevice::WriteOnly) && file.write(QByteArray(5000, 'x')) == 5000
                       ? ExitCode::Done
                       : ExitCode::WriteFailed;
        },
        limits);
    EXPECT_EQ(end.code, ExitCode::Stopped);
    EXPECT_EQ(end.death, QStringLiteral("stopped, it writes a file of more than 1,000 bytes"));
    EXPECT_LE(QFile(name).size(), 1000);
}

// The address space of a sanitized program cannot be limited.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(Jobs, AreStoppedAtTheLimitOfMemory)
{
    Limits limits;
    limits.memoryBytes = qint64(1) << 30;
    ::testing::internal::CaptureStderr();
    const JobEnd end = RunOne(
        [] {
            const std::vector<char> bytes(size_t(2) << 30);
            return bytes.back() == 0 ? ExitCode::Done : ExitCode::Empty;
        },
        limits);
    EXPECT_EQ(end.code, ExitCode::Stopped);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "krmodel: needs more memory than it may have\n");
}
#endif

TEST(Jobs, LeaveNoChildAndGetNoEndWhenTheProgramIsToldToStop)
{
    const Job interrupt = [] {
        kill(getppid(), SIGINT);
        sleep(600);
        return ExitCode::Done;
    };
    QElapsedTimer clock;
    clock.start();
    const Ends ends = RunAll({Print("a"), interrupt, Print("c")}, 1);
    EXPECT_FALSE(ends.isThrough);
    EXPECT_EQ(ends.order, std::vector<size_t>{0});
    EXPECT_LT(clock.elapsed(), 300'000) << "waited for the child";
    EXPECT_EQ(waitpid(-1, nullptr, 0), -1) << "left a child";
}

TEST(Jobs, LetNoSecondSignalEndTheProgramWhileItClearsUp)
{
    const Job interrupt = [] {
        kill(getppid(), SIGINT);
        sleep(600);
        return ExitCode::Done;
    };
    EXPECT_FALSE(RunAll({interrupt}, 1).isThrough);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::raise(signal);
        EXPECT_EQ(std::signal(signal, SIG_DFL), SIG_IGN);
    }
}

TEST(Jobs, AreInterruptedWhenTheSignalEndsTheChildToo)
{
    const Job interruptBoth = [] {
        kill(getppid(), SIGINT);
        std::raise(SIGINT);
        return ExitCode::Done;
    };
    for (int i = 0; i < 20; ++i) {
        const Ends ends = RunAll({interruptBoth}, 1);
        EXPECT_FALSE(ends.isThrough);
        EXPECT_EQ(ends.order, std::vector<size_t>());
        std::signal(SIGINT, SIG_DFL);
    }
}

TEST(Jobs, PutBackHowSignalsWereHandled)
{
    std::signal(SIGTERM, SIG_IGN);
    RunOne(Print(""));
    EXPECT_EQ(std::signal(SIGTERM, SIG_DFL), SIG_IGN);
}

TEST(Jobs, AreSilentOnStandardErrorWhileSomebodyLooksOn)
{
    QByteArray errors;
    std::vector<pid_t> seen;
    const Onlooker onlooker = {[&](const std::vector<JobAtWork>& atWork, size_t) {
                                   for (const JobAtWork& job : atWork)
                                       seen.push_back(job.process);
                               },
                               [&](const QByteArray& lines) { errors += lines + '|'; }};
    const Job tell = [] {
        std::fputs("a\nb", stderr);
        usleep(500'000);
        std::fputs("c\nd", stderr);
        return ExitCode::Done;
    };
    ::testing::internal::CaptureStderr();
    QByteArray errorsAtEnd;
    EXPECT_TRUE(RunJobs(
        {tell}, 1, {}, [&](size_t, const JobEnd&) { errorsAtEnd = errors; }, &onlooker));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(errorsAtEnd, "a\n|bc\n|d|");
    EXPECT_EQ(errors, errorsAtEnd);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(std::count(seen.begin(), seen.end(), seen[0]), std::ptrdiff_t(seen.size()));
}

TEST(Jobs, KeepNoLineWithoutEndOnStandardErrorForWhoLooksOn)
{
    int longest = 0, all = 0;
    const Onlooker onlooker = {[](const std::vector<JobAtWork>&, size_t) {},
                               [&](const QByteArray& lines) {
                                   longest = std::max(longest, lines.size());
                                   all += lines.size();
                               }};
    constexpr int kSize = 4 << 20;
    const Job tell = [] {
        std::fputs(std::string(kSize, 'a').c_str(), stderr);
        return ExitCode::Done;
    };
    EXPECT_TRUE(RunJobs(
        {tell}, 1, {}, [](size_t, const JobEnd&) {}, &onlooker));
    EXPECT_EQ(all, kSize);
    EXPECT_LE(longest, 2 << 16);
}

TEST(Jobs, AreCountedForWhoLooksOn)
{
    size_t mostAtWork = 0, mostEnded = 0;
    const Onlooker onlooker = {[&](const std::vector<JobAtWork>& atWork, size_t endedCount) {
                                   mostAtWork = std::max(mostAtWork, atWork.size());
                                   mostEnded = std::max(mostEnded, endedCount);
                               },
                               [](const QByteArray&) {}};
    const Job slow = [] {
        usleep(300'000);
        return ExitCode::Done;
    };
    EXPECT_TRUE(RunJobs(
        {slow, slow, slow}, 2, {}, [](size_t, const JobEnd&) {}, &onlooker));
    EXPECT_EQ(mostAtWork, 2U);
    EXPECT_EQ(mostEnded, 3U);
}

TEST(Jobs, OfNoNumberAreThrough)
{
    EXPECT_TRUE(RunAll({}).isThrough);
}

TEST(Jobs, UsuallyMayUseHalfOfTheMemoryTenMinutesAnd64GiB)
{
    const Limits limits = krmodel::UsualLimits();
    EXPECT_EQ(limits.memoryBytes, sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGESIZE) / 2);
    EXPECT_EQ(limits.seconds, 600);
    EXPECT_EQ(limits.fileBytes, qint64(64) << 30);
}

} // namespace
