#include "apps/krmodel/Jobs.h"

#include <cstdio>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using krmodel::ExitCode;
using krmodel::Job;
using krmodel::JobAtWork;
using krmodel::JobEnd;
using krmodel::Onlooker;
using krmodel::RunJobs;

/// While it lives, the process can open nothing more.
class NoDescriptors {
public:
    NoDescriptors()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit none = m_before;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit m_before = {};
};

// The undefined behaviour sanitizer looks at objects through a pipe of its own.
#ifndef __SANITIZE_ADDRESS__
TEST(JobPipes, ThatCannotBeMadeAreAnErrorOfTheSystem)
{
    const Job job = [] { return ExitCode::Done; };
    int ended = 0;
    try {
        const NoDescriptors limit;
        RunJobs({job}, 1, {}, [&](size_t, const JobEnd&) { ++ended; });
        ADD_FAILURE() << "there were pipes";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::too_many_files_open);
    }
    EXPECT_EQ(ended, 0);
}
#endif

TEST(JobPipes, OfErrorsAreReadToTheirEndBeforeTheJobsEndIsTold)
{
    const Job job = [] {
        close(STDOUT_FILENO);
        std::fputs("first\n", stderr);
        std::fputs("second, without an end", stderr);
        return ExitCode::Empty;
    };
    QByteArray told;
    const Onlooker onlooker = {[](const std::vector<JobAtWork>&, size_t) {},
                               [&](const QByteArray& lines) { told += lines; }};
    EXPECT_TRUE(RunJobs(
        {job}, 1, {},
        [&](size_t, const JobEnd& end) {
            EXPECT_EQ(end.code, ExitCode::Empty);
            told += " END";
        },
        &onlooker));
    EXPECT_EQ(told, QByteArray("first\nsecond, without an end END"));
}

} // namespace
