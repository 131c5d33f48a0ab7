#include "apps/krmodel/Batch.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <utility>

#include <QFileInfo>

#include "apps/krmodel/Failure.h"
#include "apps/krmodel/Guard.h"
#include "apps/krmodel/Json.h"
#include "apps/krmodel/Progress.h"
#include "apps/krmodel/Texts.h"

namespace krmodel {

namespace {

void Discard(const Task& task)
{
    for (const PendingFile& output : task.outputs)
        output.Discard();
}

void Print(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
    std::fflush(stdout);
}

/// Before anything of it is read, so that what is too large costs no time.
void RequireSize(const QString& input, qint64 most)
{
    const qint64 size = QFileInfo(input).size();
    if (most > 0 && size > most)
        throw Failure(ExitCode::Stopped,
                      QStringLiteral("%1: not read, its %2 bytes are more than the %3 that it may have")
                          .arg(input, CountText(size), CountText(most)));
}

/// A failure is told to the person, and to the program that reads the lines.
ExitCode WorkWithJson(const QString& input, const Job& work)
{
    QString error;
    const ExitCode code = Guard(work, [&](const QString& sentence) {
        PrintError(sentence);
        error = sentence;
    });
    if (!error.isEmpty())
        Print(JsonFailure(input, code, error));
    return code;
}

Job JobOf(const Task& task, const BatchOptions& options)
{
    Job work = [&task, most = options.inputBytes] {
        RequireSize(task.input, most);
        return task.work();
    };
    if (options.form != Form::Json)
        return work;
    return [&task, work] { return WorkWithJson(task.input, work); };
}

/// A terminal where progress is shown, or none.
using MaybeProgress = std::optional<Progress>;

void BeginProgress(const std::vector<Task>& tasks, const BatchOptions& options, MaybeProgress& progress)
{
    if (options.isQuiet || !TerminalLine::IsThere())
        return;
    std::vector<QString> inputs;
    for (const Task& task : tasks)
        inputs.push_back(task.input);
    progress.emplace(std::move(inputs));
}

Onlooker OnlookerOf(Progress& progress)
{
    return {[&progress](const auto& atWork, size_t endedCount) { progress.Look(atWork, endedCount); },
            [&progress](const QByteArray& lines) {
                progress.Erase();
                std::fwrite(lines.constData(), 1, size_t(lines.size()), stderr);
            }};
}

std::vector<Job> JobsOf(const std::vector<Task>& tasks, const BatchOptions& options,
                        const MaybeProgress& progress)
{
    std::vector<Job> jobs;
    for (const Task& task : tasks)
        jobs.push_back([work = JobOf(task, options), &progress, index = jobs.size()] {
            if (progress)
                progress->BeginJob(index);
            return work();
        });
    return jobs;
}

Limits LimitsOfOne(const BatchOptions& options)
{
    Limits limits = options.limits;
    if (options.sharesMemory)
        limits.memoryBytes /= qint64(std::max<size_t>(options.atOnce, 1));
    return limits;
}

/// A library may end the process that it works in, with any code. Whoever waits for a line is to get one.
JobEnd WithAWord(const JobEnd& end, Form form)
{
    if (form != Form::Json || !end.death.isEmpty() || !end.output.isEmpty())
        return end;
    return {ExitCode::Stopped, {}, QStringLiteral("stopped, its process told no result")};
}

/// Prints what tasks leave, one after the other.
class Printer {
public:
    explicit Printer(Form form) : m_form(form) {}

    void Take(const Task& task, const JobEnd& end)
    {
        if (!end.death.isEmpty())
            PrintError(task.input + QStringLiteral(": ") + end.death);
        if (m_form == Form::Json)
            // What a dead process had printed may be cut short.
            Print(end.death.isEmpty() ? end.output : JsonFailure(task.input, end.code, end.death));
        else if (end.death.isEmpty() && !end.output.isEmpty())
            PrintText(end.output);
    }

private:
    void PrintText(const QByteArray& text)
    {
        Print(m_hasPrinted && m_form == Form::Tables ? '\n' + text : text);
        m_hasPrinted = true;
    }

    Form m_form;
    bool m_hasPrinted = false;
};

} // namespace

ExitCode RunTasks(const std::vector<Task>& tasks, const BatchOptions& options)
{
    ExitCode firstFailure = ExitCode::Done;
    Printer printer(options.form);
    MaybeProgress progress;
    BeginProgress(tasks, options, progress);
    const auto onEnd = [&](size_t index, const JobEnd& asEnded) {
        if (progress)
            progress->Erase();
        const JobEnd end = WithAWord(asEnded, options.form);
        printer.Take(tasks[index], end);
        firstFailure = firstFailure == ExitCode::Done ? end.code : firstFailure;
        // At once: what a full disk has of it is room for the next one.
        Discard(tasks[index]);
    };
    const Onlooker onlooker = progress ? OnlookerOf(*progress) : Onlooker();
    const bool isThrough = RunJobs(JobsOf(tasks, options, progress), options.atOnce, LimitsOfOne(options),
                                   onEnd, progress ? &onlooker : nullptr);
    progress.reset();
    if (isThrough)
        return firstFailure;
    for (const Task& task : tasks)
        Discard(task);
    return ExitCode::Interrupted;
}

} // namespace krmodel
