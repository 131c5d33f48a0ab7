#include "apps/krmodel/Guard.h"

#include <new>

#include <gtest/gtest.h>

#include "apps/krmodel/Failure.h"

namespace {

using krmodel::ExitCode;
using krmodel::Failure;
using krmodel::Guard;

struct Outcome {
    ExitCode code;
    std::string errors;
};

template<class Work>
Outcome Guarded(Work work)
{
    ::testing::internal::CaptureStderr();
    const ExitCode code = Guard(work);
    return {code, ::testing::internal::GetCapturedStderr()};
}

TEST(Guard, PassesTheCodeOnAndSaysNothing)
{
    const Outcome outcome = Guarded([] { return ExitCode::Empty; });
    EXPECT_EQ(outcome.code, ExitCode::Empty);
    EXPECT_EQ(outcome.errors, "");
}

TEST(Guard, EndsAFailureWithItsOwnCodeAndSentence)
{
    const Outcome outcome =
        Guarded([]() -> ExitCode { throw Failure(ExitCode::WriteFailed, QStringLiteral("a.stl: no room")); });
    EXPECT_EQ(outcome.code, ExitCode::WriteFailed);
    EXPECT_EQ(outcome.errors, "krmodel: a.stl: no room\n");
}

TEST(Guard, EndsWhenMemoryRunsOut)
{
    const Outcome outcome = Guarded([]() -> ExitCode { throw std::bad_alloc(); });
    EXPECT_EQ(outcome.code, ExitCode::Stopped);
    EXPECT_EQ(outcome.errors, "krmodel: needs more memory than it may have\n");
}

TEST(Guard, EndsAnyOtherExceptionWithACodeAndASentence)
{
    const Outcome outcome = Guarded([]() -> ExitCode { throw std::out_of_range("index 7"); });
    EXPECT_EQ(outcome.code, ExitCode::Stopped);
    EXPECT_EQ(outcome.errors, "krmodel: stopped by an unexpected error: index 7\n");
}

TEST(Guard, EndsWhatIsNoStandardExceptionToo)
{
    const Outcome outcome = Guarded([]() -> ExitCode { throw 7; });
    EXPECT_EQ(outcome.code, ExitCode::Stopped);
    EXPECT_EQ(outcome.errors, "krmodel: stopped by an unexpected error\n");
}

} // namespace
