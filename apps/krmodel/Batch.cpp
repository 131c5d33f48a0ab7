#include "apps/krmodel/Batch.h"

#include <algorithm>
#include <cstdio>

#include "apps/krmodel/Guard.h"
#include "apps/krmodel/Json.h"

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

/// A failure is told to the person, and to the program that reads the lines.
ExitCode WorkWithJson(const Task& task)
{
    QString error;
    const ExitCode code = Guard(task.work, [&](const QString& sentence) {
        PrintError(sentence);
        error = sentence;
    });
    if (!error.isEmpty())
        Print(JsonFailure(task.input, code, error));
    return code;
}

std::vector<Job> JobsOf(const std::vector<Task>& tasks, Form form)
{
    std::vector<Job> jobs;
    for (const Task& task : tasks)
        jobs.push_back(form == Form::Json ? [&task] { return WorkWithJson(task); } : task.work);
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
    const auto onEnd = [&](size_t index, const JobEnd& asEnded) {
        const JobEnd end = WithAWord(asEnded, options.form);
        printer.Take(tasks[index], end);
        firstFailure = firstFailure == ExitCode::Done ? end.code : firstFailure;
        // At once: what a full disk has of it is room for the next one.
        Discard(tasks[index]);
    };
    const bool isThrough = RunJobs(JobsOf(tasks, options.form), options.atOnce, LimitsOfOne(options), onEnd);
    if (isThrough)
        return firstFailure;
    for (const Task& task : tasks)
        Discard(task);
    return ExitCode::Interrupted;
}

} // namespace krmodel
