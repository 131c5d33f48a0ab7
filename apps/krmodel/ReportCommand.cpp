#include "apps/krmodel/ReportCommand.h"

#include <cstdio>
#include <memory>

namespace krmodel {

namespace {

struct Options {
    QStringList inputs;
    ReadOptions reading;
    BatchOptions batch;
};

ExitCode Print(const QString& fileName, const Options& options, Report report)
{
    LoadedModel loaded = LoadModel(fileName, options.reading);
    const QByteArray text = report(fileName, loaded, options.batch.form);
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    return ExitCode::Done;
}

ExitCode Run(const Options& options, Report report)
{
    std::vector<Task> tasks;
    for (const QString& fileName : options.inputs)
        tasks.push_back({fileName, [&, report] { return Print(fileName, options, report); }, {}});
    return RunTasks(tasks, options.batch);
}

} // namespace

CLI::App& AddReport(CLI::App& app, const char* name, const char* help, Form usualForm, Report report,
                    Command& command)
{
    const auto options = std::make_shared<Options>();
    options->batch.form = usualForm;
    CLI::App& verb = AddVerb(app, name, help, command, [options, report] { return Run(*options, report); });
    AddFileNames(verb, options->inputs, "model files to read");
    AddReading(verb, options->reading);
    AddJson(verb, options->batch);
    AddJobs(verb, options->batch);
    AddQuiet(verb, options->batch);
    AddLimits(verb, options->batch);
    return verb;
}

} // namespace krmodel
