#include "apps/krmodel/Batch.h"

#include <csignal>
#include <cstdio>
#include <new>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QJsonDocument>
#include <QJsonObject>

#include "apps/krmodel/Failure.h"

namespace {

using krmodel::BatchOptions;
using krmodel::ExitCode;
using krmodel::Failure;
using krmodel::Form;
using krmodel::Job;
using krmodel::RunTasks;
using krmodel::Task;

struct Outcome {
    ExitCode code;
    QByteArray output;
    QByteArray errors;
};

Outcome RunAll(const std::vector<Job>& jobs, const BatchOptions& options)
{
    std::vector<Task> tasks;
    for (const Job& job : jobs)
        tasks.push_back({QStringLiteral("file \"%1\"\n").arg(tasks.size()), job, {}});
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const ExitCode code = RunTasks(tasks, options);
    std::fflush(stdout);
    const std::string output = ::testing::internal::GetCapturedStdout();
    return {code, QByteArray::fromStdString(output),
            QByteArray::fromStdString(::testing::internal::GetCapturedStderr())};
}

BatchOptions InForm(Form form)
{
    BatchOptions options;
    options.form = form;
    return options;
}

Job Print(const char* text)
{
    return [=] {
        std::fputs(text, stdout);
        return ExitCode::Done;
    };
}

/// The only line.
QJsonObject JsonOf(const Job& job, const BatchOptions& options = InForm(Form::Json))
{
    const Outcome outcome = RunAll({job}, options);
    EXPECT_EQ(outcome.output.count('\n'), 1);
    EXPECT_TRUE(outcome.output.endsWith('\n'));
    const QJsonObject object = QJsonDocument::fromJson(outcome.output).object();
    EXPECT_EQ(object.value(QLatin1String("krmodel-json")).toInt(), 1);
    EXPECT_EQ(object.value(QLatin1String("file")).toString(), QStringLiteral("file \"0\"\n"));
    EXPECT_EQ(object.value(QLatin1String("exit")).toInt(), int(outcome.code));
    return object;
}

QString ErrorOf(const Job& job, const BatchOptions& options = InForm(Form::Json))
{
    return JsonOf(job, options).value(QLatin1String("error")).toString();
}

TEST(Batch, PutsAnEmptyLineBetweenTables)
{
    EXPECT_EQ(RunAll({Print("a\n"), Print(""), Print("b\n")}, InForm(Form::Tables)).output, "a\n\nb\n");
}

TEST(Batch, PutsNothingBetweenLines)
{
    EXPECT_EQ(RunAll({Print("a\n"), Print("b\n")}, InForm(Form::Lines)).output, "a\nb\n");
}

TEST(Batch, PassesJsonLinesOn)
{
    EXPECT_EQ(RunAll({Print("{}\n"), Print("[]\n")}, InForm(Form::Json)).output, "{}\n[]\n");
}

TEST(Batch, WritesAJsonLineForAFailureAndTellsThePersonToo)
{
    const Job fail = []() -> ExitCode { throw Failure(ExitCode::Empty, QStringLiteral("nothing in it")); };
    EXPECT_EQ(ErrorOf(fail), QStringLiteral("nothing in it"));
    EXPECT_EQ(JsonOf(fail).value(QLatin1String("exit")).toInt(), int(ExitCode::Empty));
    EXPECT_EQ(RunAll({fail}, InForm(Form::Json)).errors, "krmodel: nothing in it\n");
}

TEST(Batch, WritesAJsonLineWhenMemoryRunsOut)
{
    const QString error = ErrorOf([]() -> ExitCode { throw std::bad_alloc(); });
    EXPECT_EQ(error, QStringLiteral("needs more memory than it may have"));
}

TEST(Batch, WritesAJsonLineForAProcessThatWasKilledAndDropsItsHalfLine)
{
    const auto die = []() -> ExitCode {
        std::fputs("{\"half\":", stdout);
        std::fflush(stdout);
        std::raise(SIGKILL);
        return ExitCode::Done;
    };
    EXPECT_EQ(ErrorOf(die), QStringLiteral("stopped, its process was killed"));
}

TEST(Batch, WritesAJsonLineForAProcessThatEndedWithoutAWord)
{
    const auto leave = []() -> ExitCode { _exit(0); };
    EXPECT_EQ(ErrorOf(leave), QStringLiteral("stopped, its process told no result"));
}

TEST(Batch, StopsAProcessThatPrintsWithoutEnd)
{
    const auto flood = []() -> ExitCode {
        for (const std::string text(1 << 20, 'x');;)
            std::fputs(text.c_str(), stdout);
    };
    EXPECT_EQ(ErrorOf(flood), QStringLiteral("stopped, it prints more than 268,435,456 bytes"));
}

// The address space of a sanitized program cannot be limited.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
/// Prints the limit on the address space.
ExitCode PrintMemoryLimit()
{
    rlimit limit = {};
    getrlimit(RLIMIT_AS, &limit);
    std::printf("%llu\n", static_cast<unsigned long long>(limit.rlim_cur));
    return ExitCode::Done;
}

TEST(Batch, SharesTheMemoryAmongTheTasksAtWork)
{
    BatchOptions options = InForm(Form::Lines);
    options.limits.memoryBytes = qint64(1) << 40;
    options.atOnce = 4;
    EXPECT_EQ(RunAll({PrintMemoryLimit}, options).output, "274877906944\n");
}

TEST(Batch, GivesEachTaskTheMemoryThatWasAskedForEach)
{
    BatchOptions options = InForm(Form::Lines);
    options.limits.memoryBytes = qint64(1) << 40;
    options.sharesMemory = false;
    options.atOnce = 4;
    EXPECT_EQ(RunAll({PrintMemoryLimit}, options).output, "1099511627776\n");
}
#endif

} // namespace
